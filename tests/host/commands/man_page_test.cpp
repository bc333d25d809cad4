// Exact class: manual pages are made from --help; what is a line of its own there stays one.
#include <filesystem>
#include <sstream>

#include <gtest/gtest.h>

#include "host/commands/program.hpp"

namespace {

using orvik::test::contentOf;
using orvik::test::holds;

// troff joins lines of text that follow one another.
TEST(ManPage, ExamplesAreLinesOfTheirOwn) {
    const std::string folder = ORVIK_MAN_PAGES;
    if (!std::filesystem::exists(folder + "/orvik-process.1")) {
        GTEST_SKIP() << "no manual pages are made here: that needs help2man";
    }
    for (const auto &[command, least] :
         {std::pair{"process", 5}, std::pair{"init", 2}, std::pair{"simulate", 4}}) {
        std::istringstream page(contentOf(folder + "/orvik-" + command + ".1"));
        int examples = 0;
        std::string before;
        while (std::getline(page, before) && !holds(before, ".SH EXAMPLES")) {
        }
        for (std::string line; std::getline(page, line); before = line) {
            if (holds(line, "orvik " + std::string(command) + " ")) {
                ++examples;
                EXPECT_EQ(before.rfind('.', 0), 0U) << before << '\n' << line;
            }
        }
        EXPECT_GE(examples, least) << command;
    }
}

} // namespace
