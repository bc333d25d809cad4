// Exact class: what a terminal shows while a deployment is processed.
#include <sstream>
#include <vector>

#include <gtest/gtest.h>
#include <pty.h>
#include <sys/wait.h>
#include <unistd.h>

#include "host/burst/scratch_directory.hpp"
#include "host/commands/program.hpp"

namespace {

using orvik::test::orvik;

// All that the program writes to a terminal of `columns`.
std::string shownOn(unsigned short columns, std::vector<std::string> arguments) {
    arguments.insert(arguments.begin(), ORVIK_PROGRAM);
    winsize size{24, columns, 0, 0};
    int terminal = -1;
    const pid_t child = forkpty(&terminal, nullptr, nullptr, &size);
    if (child == 0) {
        std::vector<char *> argv;
        for (std::string &argument : arguments) {
            argv.push_back(argument.data());
        }
        argv.push_back(nullptr);
        execv(argv.front(), argv.data());
        _exit(127);
    }
    std::string shown;
    char buffer[4096];
    for (ssize_t count = 0; (count = read(terminal, buffer, sizeof buffer)) > 0;) {
        shown.append(buffer, static_cast<std::size_t>(count));
    }
    close(terminal);
    waitpid(child, nullptr, 0);
    return shown;
}

// Between two carriage returns, without the code that clears the rest of the line.
std::vector<std::string> drawings(const std::string &shown) {
    std::vector<std::string> lines;
    std::istringstream text(shown);
    for (std::string line; std::getline(text, line, '\r');) {
        const std::string clear = "\x1b[K";
        if (const auto at = line.find(clear); at != std::string::npos) {
            line.erase(at, clear.size());
        }
        lines.push_back(line);
    }
    return lines;
}

TEST(Terminal, TheBarFitsItsWidth) {
    const ::orvik::test::ScratchDirectory directory;
    const std::string sea = directory.file("sea.nc");
    ASSERT_EQ(orvik({"simulate", "-o", sea, "--bursts", "201", "--samples", "64"}).exitCode, 0);
    for (const unsigned short columns : std::vector<unsigned short>{30, 60, 120}) {
        const auto lines = drawings(
            shownOn(columns, {"process", sea, "-o", directory.file("waves.nc"), "--method", "1"}));
        bool drawn = false;
        for (const std::string &line : lines) {
            if (line.find("of 201 bursts") != std::string::npos) {
                drawn = true;
                EXPECT_LT(line.size(), columns) << line;
                EXPECT_EQ(line.front() == '[', columns == 120) << line;
            }
        }
        EXPECT_TRUE(drawn) << columns;
    }
}

// As with `| head`: what is shown has no reader any more.
TEST(Terminal, AReaderThatGoesAwayLeavesNoPartOfAFile) {
    const ::orvik::test::ScratchDirectory directory;
    const std::string sea = directory.file("sea.nc");
    const std::string result = directory.file("waves.nc");
    ASSERT_EQ(orvik({"simulate", "-o", sea, "--bursts", "201", "--samples", "64"}).exitCode, 0);
    const auto outcome = orvik({"process", sea, "-o", result, "--method", "1"}, [] {
        int ends[2] = {-1, -1};
        if (pipe(ends) == 0) {
            close(ends[0]);
            dup2(ends[1], STDERR_FILENO);
        }
    });
    EXPECT_EQ(outcome.exitCode, 1);
    for (const std::string &name : directory.names()) {
        EXPECT_EQ(name.find(".part"), std::string::npos) << name;
    }
    EXPECT_EQ(orvik({"process", sea, "-o", result, "--method", "1", "--resume"}).exitCode, 0);
}

} // namespace
