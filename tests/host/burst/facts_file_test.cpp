// Exact class: facts files, and what is wrong with them with its line.
#include "burst/facts_file.hpp"

#include <fstream>

#include <gtest/gtest.h>

#include "host/burst/scratch_directory.hpp"

namespace {

using namespace orvik;

class FactsFile : public testing::Test {
protected:
    test::ScratchDirectory directory;
    std::string path = directory.file("deployment.toml");

    void expectMessage(const std::string &text, const std::vector<std::string> &parts) const {
        std::ofstream(path) << text;
        std::string message = "no error";
        try {
            readFacts(path);
        } catch (const UserError &error) {
            message = error.what();
        }
        for (const std::string &part : parts) {
            EXPECT_NE(message.find(part), std::string::npos) << part << " in " << message;
        }
    }
};

TEST_F(FactsFile, NumbersAndListsKeepTheirDigits) {
    std::ofstream(path) << "# a comment\ncell_range = 7.4\nheading = 12\npitch = -0.1\n"
                           "beam_azimuth = [0, 119.5, 240.25]\nacoustic_frequency = 1e6\n";
    const Overrides facts = readFacts(path);
    EXPECT_EQ(overrideNumbers(facts, "cell_range"), std::vector<double>{7.4});
    EXPECT_EQ(overrideNumbers(facts, "heading"), std::vector<double>{12.0});
    EXPECT_EQ(overrideNumbers(facts, "pitch"), std::vector<double>{-0.1});
    EXPECT_EQ(overrideNumbers(facts, "beam_azimuth"), (std::vector<double>{0.0, 119.5, 240.25}));
    EXPECT_EQ(overrideNumbers(facts, "acoustic_frequency"), std::vector<double>{1e6});
    checkOverrides(facts);
}

// As TOML knows dates, in quotes, and in seconds.
TEST_F(FactsFile, AStartMayBeADate) {
    for (const char *text : {"1600000000", "2020-09-13T12:26:40Z", "2020-09-13 12:26:40",
                             "\"2020-09-13T12:26:40Z\"", "2020-09-13T12:26:40+00:00"}) {
        std::ofstream(path) << "time = " << text << '\n';
        const Overrides facts = readFacts(path);
        checkOverrides(facts);
        EXPECT_EQ(overrideNumbers(facts, "time"), std::vector<double>{1.6e9}) << text;
    }
    EXPECT_EQ(overrideNumbers({{"time", "2020-09-13T12:26:40.5Z"}}, "time"),
              std::vector<double>{1600000000.5});
    expectMessage("time = \"noon\"\n", {path + " line 1: time must be a date of UTC such as"});
    expectMessage("time = 2020-09-13T12:26:40+02:00\n", {path + " line 1: time must be a date"});
    expectMessage("heading = 2020-09-13T12:26:40Z\n", {path + " line 1: heading must be a number"});
    EXPECT_THROW(checkOverrides({{"time", "2020-09-33T12:26:40Z"}}), UsageError);
    EXPECT_THROW(checkOverrides({{"heading", "2020-09-13T12:26:40Z"}}), UsageError);
}

TEST_F(FactsFile, WhatIsWrongIsSaidWithItsLine) {
    expectMessage("cell_range = 7\ncell_rang = 7\n", {path + " line 2", "cell_rang", "cell_range"});
    expectMessage("\n\ncell_range = \"7 m\"\n", {path + " line 3", "cell_range", "number"});
    expectMessage("cell_range = [7]\n", {path + " line 1", "one number"});
    expectMessage("cell_range = true\n", {path + " line 1", "number"});
    expectMessage("cell_range = nan\n", {path + " line 1", "number"});
    expectMessage("beam_azimuth = 7\n", {path + " line 1", "list of 3 to 4 numbers"});
    expectMessage("beam_azimuth = [1, 2]\n", {path + " line 1", "list of 3 to 4 numbers"});
    expectMessage("beam_azimuth = [1, 2, \"3\"]\n", {path + " line 1", "number"});
    expectMessage("[instrument]\nheading = 1\n", {path + " line 1", "instrument"});
    expectMessage("heading = 1\nheading = = 2\n", {path + " line 2"});
}

TEST_F(FactsFile, AMissingFileIsNamed) {
    try {
        readFacts(path);
        FAIL();
    } catch (const UserError &error) {
        EXPECT_NE(std::string(error.what()).find(path), std::string::npos) << error.what();
    }
}

// Every fact's example is one that a facts file takes.
TEST_F(FactsFile, ExamplesAreGood) {
    std::ofstream file(path);
    for (const Fact &fact : factTable()) {
        file << fact.name << " = " << fact.example << '\n';
    }
    file.close();
    const Overrides facts = readFacts(path);
    EXPECT_EQ(facts.size(), factTable().size());
    checkOverrides(facts);
}

} // namespace
