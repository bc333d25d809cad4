// Exact class: what a user reads after a mistake names it and says what to do.
#include <filesystem>
#include <fstream>

#include <gtest/gtest.h>

#include "host/burst/scratch_directory.hpp"
#include "host/commands/program.hpp"

namespace {

using orvik::test::contentOf;
using orvik::test::holds;
using orvik::test::orvik;
using orvik::test::Outcome;

class Messages : public testing::Test {
protected:
    ::orvik::test::ScratchDirectory directory;
    std::string sea = directory.file("sea.nc");
    std::string result = directory.file("waves.nc");
    std::string facts = directory.file("facts.toml");

    void SetUp() override {
        ASSERT_EQ(orvik({"simulate", "-o", sea, "--bursts", "1", "--samples", "512"}).exitCode, 0);
    }
    static void expect(const std::vector<std::string> &arguments, int exitCode,
                       const std::string &text) {
        const Outcome outcome = orvik(arguments);
        EXPECT_EQ(outcome.exitCode, exitCode);
        EXPECT_TRUE(holds(outcome.errors, "orvik: error: " + text)) << outcome.errors;
    }
};

TEST_F(Messages, MisspeltOptionsAreNamed) {
    expect({"process", sea, "-o", result, "--metod", "4"}, 2,
           "orvik process has no option --metod; 'orvik process --help' lists the options");
    // Not that --output is missing.
    expect({"process", sea, "--outputt", result}, 2, "orvik process has no option --outputt");
    expect({"--verbos"}, 2, "orvik has no option --verbos");
    expect({"process", sea}, 2, "--output is required; 'orvik process --help'");
}

TEST_F(Messages, SourceIsRefusedWhereItWouldDoNothing) {
    expect({"process", sea, "-o", result, "--method", "1", "--source", "velocity"}, 2,
           "--source velocity is for methods 2 to 4");
}

TEST_F(Messages, WhatIsReadIsNotOverwritten) {
    std::ofstream(facts) << "roll_offset = 0\n";
    for (const std::vector<std::string> &outputs :
         {std::vector<std::string>{"-o", sea}, std::vector<std::string>{"-o", facts},
          std::vector<std::string>{"-o", result, "--ww3", sea},
          std::vector<std::string>{"-o", result, "--csv", facts}}) {
        std::vector<std::string> call{"process", sea, "--facts", facts};
        call.insert(call.end(), outputs.begin(), outputs.end());
        EXPECT_EQ(orvik(call).exitCode, 2) << outputs.back();
    }
    EXPECT_EQ(orvik({"show", sea}).exitCode, 0);
    EXPECT_FALSE(std::filesystem::exists(result));
}

TEST_F(Messages, FineStepsEndTheAxes) {
    const Outcome fine = orvik({"process", sea, "-o", result, "--freq-step", "0.001"});
    EXPECT_EQ(fine.exitCode, 0);
    EXPECT_TRUE(holds(fine.errors, "note: --freq-step 0.001 ends the spectra at 0.219 Hz, after "
                                   "200 bins"))
        << fine.errors;
    EXPECT_TRUE(holds(fine.errors, "surface track's spectrum at 0.419 Hz, after 400 bins"));
    const Outcome asked =
        orvik({"process", sea, "-o", result, "--freq-step", "0.001", "--freq-max", "0.2"});
    EXPECT_EQ(asked.exitCode, 0);
    EXPECT_FALSE(holds(asked.errors, "ends the")) << asked.errors;
}

TEST_F(Messages, ATableWithoutRows) {
    const std::string table = directory.file("a.csv");
    std::ofstream(table) << "time,pressure\n";
    expect({"process", table, "-o", result}, 1, table + " has no rows under its header line");
}

TEST_F(Messages, DecimalCommas) {
    const std::string table = directory.file("a.csv");
    {
        std::ofstream file(table);
        file << "pressure;velocity_east;velocity_north\n";
        for (int i = 0; i < 64; ++i) {
            file << "10,5;0;0\n";
        }
    }
    const Outcome outcome = orvik(
        {"process", table, "-o", result, "--set", "sampling_rate=2", "--set", "cell_range=1"});
    EXPECT_TRUE(holds(outcome.errors, "\"10,5\" in column pressure is not a number: numbers are "
                                      "written with a decimal point"))
        << outcome.errors;
}

TEST_F(Messages, WhatOfTheInputIsNotUsedIsNoted) {
    const std::string table = directory.file("a.csv");
    {
        std::ofstream file(table);
        file << "pressure,velocity_east,velocity_north\n";
        for (int i = 0; i < 1030; ++i) {
            file << 10.0 + 0.02 * (i * 7 % 11) << ",0.1,0.1\n";
        }
    }
    const Outcome outcome =
        orvik({"process", table, "-o", result, "--set", "sampling_rate=2", "--set", "cell_range=1",
               "--burst-length", "1024", "--method", "1", "--quiet"});
    EXPECT_EQ(outcome.exitCode, 0) << outcome.errors;
    EXPECT_TRUE(holds(outcome.errors, "orvik: note: 6 samples of " + table + " are left out"))
        << outcome.errors;
}

TEST_F(Messages, BurstsAreCountedFrom0) {
    ASSERT_EQ(orvik({"process", sea, "-o", result, "--quiet"}).exitCode, 0);
    expect({"explain", result, "--burst", "-1"}, 2, "--burst -1: bursts are counted from 0");
    expect({"explain", result, "--burst", "1"}, 2, "--burst 1: " + result + " has 1 burst,");
}

TEST_F(Messages, ShowTellsWhoLooksAtOtherKinds) {
    const std::string folder = std::filesystem::path(sea).parent_path().string();
    expect({"show", folder}, 1, folder + " is a folder: name one of its files");
    for (const std::string name : {"a.csv", "A.CSV"}) {
        expect({"show", name}, 1,
               name + ": orvik show looks at netCDF files; 'orvik init " + name + " -o -'");
    }
}

TEST_F(Messages, ValuesOfTheFactsFileAreNotThoseOfTheCommandLine) {
    std::ofstream(facts) << "cell_range = -1\n";
    expect({"process", sea, "-o", result, "--facts", facts}, 1,
           "cell_range in " + facts + " must be more than 0");
    expect({"process", sea, "-o", result, "--facts", facts, "--set", "cell_range=-2"}, 1,
           "cell_range (given with --set) must be more than 0");
    std::ofstream(facts) << "velocity_cell = 1\n";
    expect({"process", sea, "-o", result, "--facts", facts}, 2,
           "velocity_cell in " + facts + " is not for burst files");
}

// What files tell burst by burst is not said to be missing, and what they do not take is not offered.
TEST_F(Messages, InitKnowsWhatIsToldBurstByBurst) {
    const Outcome outcome = orvik({"init", sea, "-o", "-"});
    ASSERT_EQ(outcome.exitCode, 0) << outcome.errors;
    const std::string &text = outcome.output;
    EXPECT_TRUE(holds(text, "a deployment of 1 burst lack")) << text;
    EXPECT_TRUE(holds(text, "told for every burst, in burst 0 it is 137\n# heading = 137\n"))
        << text;
    EXPECT_LT(text.find("# heading = "), text.find("# Not in the data"));
    EXPECT_EQ(text.find("# heading = "), text.rfind("# heading = "));
    EXPECT_FALSE(holds(text, "velocity_cell"));
    EXPECT_TRUE(holds(text, "# longitude = "));
}

// A line of the facts file says what the data say once its # is taken away.
TEST_F(Messages, InitTellsTheStartToTheSecond) {
    ASSERT_EQ(orvik({"simulate", "-o", sea, "--bursts", "1", "--samples", "512", "--start",
                     "2008-09-08T12:34:56Z"})
                  .exitCode,
              0);
    EXPECT_TRUE(holds(orvik({"init", sea, "-o", "-"}).output,
                      "in burst 0 it is 1220877296\n# time = 1220877296\n"));
}

} // namespace
