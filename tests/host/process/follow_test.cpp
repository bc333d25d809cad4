// Real-time processing: files renamed into a folder become rows of the result file, across stops and kills.
#include <algorithm>
#include <filesystem>
#include <fstream>
#include <sstream>

#include <gtest/gtest.h>

#include "host/burst/scratch_directory.hpp"
#include "host/commands/program.hpp"
#include "host/process/running_program.hpp"
#include "netcdf/nc_file.hpp"

namespace {

using orvik::NcReader;
using orvik::test::contentOf;
using orvik::test::holds;
using orvik::test::orvik;
using orvik::test::RunningProgram;
namespace fs = std::filesystem;

class Follow : public testing::Test {
protected:
    ::orvik::test::ScratchDirectory directory;
    std::string folder = directory.file("incoming");
    std::string result = directory.file("waves.nc");
    std::string log = directory.file("log");

    void SetUp() override { fs::create_directory(folder); }

    // As a logger does it: written elsewhere, then renamed.
    void arrive(const std::string &name, const std::string &day,
                const std::vector<std::string> &more = {}) const {
        const std::string hidden = folder + "/." + name;
        std::vector<std::string> arguments{"simulate",       "-o",        hidden, "--start",
                                           "2024-11-" + day, "--samples", "512"};
        if (std::find(more.begin(), more.end(), "--bursts") == more.end()) {
            arguments.insert(arguments.end(), {"--bursts", "2"});
        }
        arguments.insert(arguments.end(), more.begin(), more.end());
        ASSERT_EQ(orvik(arguments).exitCode, 0);
        fs::rename(hidden, folder + "/" + name);
    }
    // The same with one fact of the instrument of its own.
    void arriveWith(const std::string &name, const std::string &day, const std::string &fact,
                    double value) const {
        arrive("." + name, day);
        int file = -1;
        int variable = -1;
        ASSERT_EQ(nc_open((folder + "/." + name).c_str(), NC_WRITE, &file), NC_NOERR);
        if (nc_inq_varid(file, fact.c_str(), &variable) != NC_NOERR) {
            ASSERT_EQ(nc_redef(file), NC_NOERR);
            ASSERT_EQ(nc_def_var(file, fact.c_str(), NC_DOUBLE, 0, nullptr, &variable), NC_NOERR);
            ASSERT_EQ(nc_put_att_text(file, variable, "units", 6, "degree"), NC_NOERR);
        }
        const std::size_t first = 0;
        ASSERT_EQ(nc_put_var1_double(file, variable, &first, &value), NC_NOERR);
        ASSERT_EQ(nc_close(file), NC_NOERR);
        fs::rename(folder + "/." + name, folder + "/" + name);
    }
    [[nodiscard]] std::vector<double> values(const std::string &name) const {
        const NcReader file(result);
        return file.readAll(*file.find(name));
    }
    [[nodiscard]] std::size_t rows() const {
        return fs::exists(result) ? *NcReader(result).dimensionLength("time") : 0;
    }
    std::vector<std::string> arguments(std::vector<std::string> more = {}) const {
        more.insert(more.begin(), {"process", "--follow", folder, "-o", result});
        return more;
    }
};

TEST_F(Follow, FilesBecomeRowsAsTheyArrive) {
    arrive("a.nc", "05");
    RunningProgram program(arguments(), log);
    ASSERT_TRUE(RunningProgram::until([this] { return rows() == 2; })) << contentOf(log);
    arrive("b.nc", "06");
    ASSERT_TRUE(RunningProgram::until([this] { return rows() == 4; })) << contentOf(log);
    std::ofstream(folder + "/.junk") << "junk";
    fs::rename(folder + "/.junk", folder + "/junk.nc");
    arrive("other.nc", "07", {"--slant", "20"});
    arrive("c.nc", "08");
    ASSERT_TRUE(RunningProgram::until([this] { return rows() == 6; })) << contentOf(log);
    program.signal(SIGTERM);
    EXPECT_EQ(program.wait(), 0);
    EXPECT_TRUE(holds(contentOf(log), "junk.nc is left out")) << contentOf(log);
    EXPECT_TRUE(holds(contentOf(log), "other.nc is left out: it is of another instrument"))
        << contentOf(log);
    EXPECT_EQ(rows(), 6U);
}

TEST_F(Follow, AGoodFileInThePlaceOfABadOneIsTaken) {
    arrive("a.nc", "05");
    RunningProgram program(arguments(), log);
    ASSERT_TRUE(RunningProgram::until([this] { return rows() == 2; })) << contentOf(log);
    std::ofstream(folder + "/.b.nc") << "half of it";
    fs::rename(folder + "/.b.nc", folder + "/b.nc");
    ASSERT_TRUE(RunningProgram::until([this] { return holds(contentOf(log), "b.nc is left out"); }))
        << contentOf(log);
    arrive("b.nc", "06");
    EXPECT_TRUE(RunningProgram::until([this] { return rows() == 4; })) << contentOf(log);
    program.signal(SIGTERM);
    EXPECT_EQ(program.wait(), 0);
}

TEST_F(Follow, ResumedAfterAKillNothingIsLostOrDoubled) {
    arrive("a.nc", "05");
    {
        RunningProgram program(arguments(), log);
        ASSERT_TRUE(RunningProgram::until([this] { return rows() == 2; })) << contentOf(log);
        program.signal(SIGKILL);
        program.wait();
    }
    arrive("b.nc", "06");
    RunningProgram program(arguments({"--resume"}), log);
    ASSERT_TRUE(RunningProgram::until([this] { return rows() == 4; })) << contentOf(log);
    program.signal(SIGTERM);
    EXPECT_EQ(program.wait(), 0);
    const NcReader file(result);
    const auto time = file.readAll(*file.find("time"));
    ASSERT_EQ(time.size(), 4U);
    EXPECT_LT(time[1], time[2]);
    // One count through all files, so that a number names one burst.
    EXPECT_EQ(values("burst"), (std::vector<double>{0.0, 1.0, 2.0, 3.0}));
    const ::orvik::test::Outcome last = orvik({"explain", result, "--burst", "3"});
    EXPECT_TRUE(holds(last.output, "burst 3 of " + result + ", 2024-11-06 01:00:00"))
        << last.output << last.errors;
}

TEST_F(Follow, StoppedInTheMiddleOfAFileItGoesOnBehindTheLastBurst) {
    arrive("a.nc", "05");
    arrive("b.nc", "06", {"--bursts", "150"});
    {
        RunningProgram program(arguments(), log);
        ASSERT_TRUE(RunningProgram::until([this] { return rows() == 2; })) << contentOf(log);
        program.signal(SIGTERM);
        EXPECT_EQ(program.wait(), 0);
    }
    const std::size_t before = rows();
    EXPECT_LT(before, 152U); // else it was not in the middle
    RunningProgram program(arguments({"--resume"}), log);
    ASSERT_TRUE(RunningProgram::until([this] { return rows() >= 152; })) << contentOf(log);
    arrive("c.nc", "20");
    ASSERT_TRUE(RunningProgram::until([this] { return rows() >= 154; })) << contentOf(log);
    program.signal(SIGTERM);
    EXPECT_EQ(program.wait(), 0);
    const std::vector<double> time = values("time");
    ASSERT_EQ(time.size(), 154U);
    for (std::size_t i = 1; i < time.size(); ++i) {
        EXPECT_GT(time[i], time[i - 1]) << i;
    }
}

// By name: what was there before it began says nothing of when it arrived.
TEST_F(Follow, FilesThatAreThereComeInTheOrderOfTheirNames) {
    arrive("c.nc", "09");
    arrive("b.nc", "07");
    arrive("a.nc", "05");
    RunningProgram program(arguments({"--csv", directory.file("waves.csv")}), log);
    ASSERT_TRUE(RunningProgram::until([this] { return rows() == 6; })) << contentOf(log);
    program.signal(SIGINT);
    EXPECT_EQ(program.wait(), 0);
    const std::vector<double> time = values("time");
    EXPECT_TRUE(std::is_sorted(time.begin(), time.end()));
    const std::string csv = contentOf(directory.file("waves.csv"));
    EXPECT_EQ(std::count(csv.begin(), csv.end(), '\n'), 7); // written at the end
}

TEST_F(Follow, FilesThatAreNoNewBurstsAreLeftAlone) {
    result = folder + "/waves.nc"; // beside the bursts
    std::ofstream(folder + "/.partial.nc") << "still being written";
    arrive("a.nc", "05");
    RunningProgram program(arguments(), log);
    ASSERT_TRUE(RunningProgram::until([this] { return rows() == 2; })) << contentOf(log);
    arrive("a.nc", "05"); // once more
    std::ofstream(folder + "/.notes") << "text";
    fs::rename(folder + "/.notes", folder + "/notes.txt");
    std::ofstream(folder + "/.junk") << "junk";
    fs::rename(folder + "/.junk", folder + "/a.nc"); // all of its bursts are done
    arrive("b.nc", "06", {"--bursts", "3"});
    ASSERT_TRUE(RunningProgram::until([this] { return rows() >= 5; })) << contentOf(log);
    program.signal(SIGTERM);
    EXPECT_EQ(program.wait(), 0);
    EXPECT_EQ(rows(), 5U);
    EXPECT_FALSE(holds(contentOf(log), "is left out")) << contentOf(log);
}

// Who has the result file open while it is replaced reads the one before to its end.
TEST_F(Follow, ReadersOfTheResultsNeverSeeHalfAFile) {
    arrive("a.nc", "05");
    RunningProgram program(arguments(), log);
    ASSERT_TRUE(RunningProgram::until([this] { return rows() == 2; })) << contentOf(log);
    const std::string before = contentOf(result);
    std::ifstream reader(result, std::ios::binary);
    arrive("b.nc", "06");
    ASSERT_TRUE(RunningProgram::until([this] { return rows() == 4; })) << contentOf(log);
    std::ostringstream text;
    text << reader.rdbuf();
    EXPECT_TRUE(text.str() == before);
}

TEST_F(Follow, AFullDiskEndsIt) {
    arrive("a.nc", "05");
    RunningProgram program(arguments(), log);
    ASSERT_TRUE(RunningProgram::until([this] { return rows() == 2; })) << contentOf(log);
    program.limitFiles(1000);
    arrive("b.nc", "06");
    ASSERT_TRUE(RunningProgram::until([&] { return program.hasEnded(); })) << contentOf(log);
    EXPECT_EQ(program.wait(), 1);
    EXPECT_EQ(rows(), 2U);
}

TEST_F(Follow, ASecondRunOnTheSameResultsEnds) {
    arrive("a.nc", "05");
    arrive("b.nc", "06");
    RunningProgram program(arguments(), log);
    ASSERT_TRUE(RunningProgram::until([this] { return rows() == 4; })) << contentOf(log);
    const ::orvik::test::Outcome second = orvik(arguments());
    EXPECT_EQ(second.exitCode, 1) << second.output;
    EXPECT_TRUE(holds(second.errors, "another run is writing " + result)) << second.errors;
    EXPECT_EQ(rows(), 4U);
}

TEST_F(Follow, ResumesWithTheSameOptionsOnly) {
    arrive("a.nc", "05");
    {
        RunningProgram program(arguments(), log);
        ASSERT_TRUE(RunningProgram::until([this] { return rows() == 2; })) << contentOf(log);
        program.signal(SIGTERM);
        EXPECT_EQ(program.wait(), 0);
    }
    for (const std::vector<std::string> &changed :
         {std::vector<std::string>{"--resume", "--going-to"},
          std::vector<std::string>{"--resume", "--method", "1"},
          std::vector<std::string>{"--resume", "--set", "heading=3"}}) {
        const ::orvik::test::Outcome outcome = orvik(arguments(changed));
        EXPECT_EQ(outcome.exitCode, 1) << outcome.output;
        EXPECT_TRUE(holds(outcome.errors, "other input, options or program version"))
            << outcome.errors;
    }
    EXPECT_EQ(rows(), 2U);
}

TEST_F(Follow, ALargerFileInThePlaceOfAFinishedOneAddsItsFurtherBursts) {
    arrive("a.nc", "05");
    RunningProgram program(arguments(), log);
    ASSERT_TRUE(RunningProgram::until([this] { return rows() == 2; })) << contentOf(log);
    arrive("a.nc", "05", {"--bursts", "3"});
    ASSERT_TRUE(RunningProgram::until([this] { return rows() >= 3; })) << contentOf(log);
    program.signal(SIGTERM);
    EXPECT_EQ(program.wait(), 0);
    EXPECT_EQ(rows(), 3U);
    const std::vector<double> time = values("time");
    EXPECT_GT(time[2], time[1]);
}

TEST_F(Follow, OptionsThatSuitNoFileEndIt) {
    arrive("a.nc", "05");
    for (const std::vector<std::string> &wrong :
         {std::vector<std::string>{"--set", "foo=1"}, std::vector<std::string>{"--dry-run"},
          std::vector<std::string>{"--timing"},
          std::vector<std::string>{"--csv", folder + "/w.csv"}}) {
        EXPECT_EQ(orvik(arguments(wrong)).exitCode, 2) << wrong.front();
    }
    EXPECT_FALSE(fs::exists(result));
}

TEST_F(Follow, ABurstFileIsNotReplacedByResults) {
    arrive("a.nc", "05");
    result = folder + "/a.nc";
    const std::string before = contentOf(result);
    const ::orvik::test::Outcome outcome = orvik(arguments());
    EXPECT_EQ(outcome.exitCode, 2);
    EXPECT_TRUE(holds(outcome.errors, "holds no results")) << outcome.errors;
    EXPECT_EQ(contentOf(result), before);
}

TEST_F(Follow, AFolderThatGoesAwayEndsIt) {
    arrive("a.nc", "05");
    RunningProgram program(arguments(), log);
    ASSERT_TRUE(RunningProgram::until([this] { return rows() == 2; })) << contentOf(log);
    fs::remove_all(folder);
    ASSERT_TRUE(RunningProgram::until([&] { return program.hasEnded(); })) << contentOf(log);
    EXPECT_EQ(program.wait(), 1);
    EXPECT_TRUE(holds(contentOf(log), folder + " is no longer there")) << contentOf(log);
    EXPECT_EQ(rows(), 2U);
}

TEST_F(Follow, AFolderThatIsRenamedEndsIt) {
    arrive("a.nc", "05");
    RunningProgram program(arguments(), log);
    ASSERT_TRUE(RunningProgram::until([this] { return rows() == 2; })) << contentOf(log);
    fs::rename(folder, folder + ".old");
    ASSERT_TRUE(RunningProgram::until([&] { return program.hasEnded(); })) << contentOf(log);
    EXPECT_EQ(program.wait(), 1);
    EXPECT_TRUE(holds(contentOf(log), folder + " is no longer there")) << contentOf(log);
}

// What turns every direction, and what no text of the instrument tells.
TEST_F(Follow, EveryFactOfTheInstrumentCounts) {
    arrive("a.nc", "05");
    {
        RunningProgram program(arguments(), log);
        ASSERT_TRUE(RunningProgram::until([this] { return rows() == 2; })) << contentOf(log);
        arriveWith("turned.nc", "06", "beam_azimuth", 77.0);
        arriveWith("nearly.nc", "07", "beam_slant_angle", 25.00004);
        ASSERT_TRUE(RunningProgram::until([this] {
            return holds(contentOf(log), "nearly.nc is left out: ");
        })) << contentOf(log);
        program.signal(SIGTERM);
        EXPECT_EQ(program.wait(), 0);
    }
    EXPECT_TRUE(holds(contentOf(log), "turned.nc is left out: it is of another instrument or "
                                      "setting than the files before it: beam_azimuth differs"))
        << contentOf(log);
    EXPECT_EQ(rows(), 2U);
    fs::remove(folder + "/a.nc"); // the first file is another one now
    const ::orvik::test::Outcome outcome = orvik(arguments({"--resume"}));
    EXPECT_EQ(outcome.exitCode, 1) << outcome.output;
    EXPECT_TRUE(holds(outcome.errors, "cannot be resumed")) << outcome.errors;
}

// A receiver finds an instrument a little elsewhere each time.
TEST_F(Follow, FilesOfOnePlaceAreTaken) {
    arriveWith("a.nc", "05", "longitude", 179.999);
    RunningProgram program(arguments(), log);
    ASSERT_TRUE(RunningProgram::until([this] { return rows() == 2; })) << contentOf(log);
    arriveWith("b.nc", "06", "longitude", -179.999);
    arrive("c.nc", "07");
    ASSERT_TRUE(RunningProgram::until([this] { return rows() == 6; })) << contentOf(log);
    program.signal(SIGTERM);
    EXPECT_EQ(program.wait(), 0);
}

TEST_F(Follow, NeedsAFolderAndNothingElse) {
    std::ofstream(directory.file("file.nc")) << "x";
    EXPECT_EQ(orvik({"process", "--follow", directory.file("file.nc"), "-o", result}).exitCode, 1);
    EXPECT_EQ(
        orvik({"process", directory.file("file.nc"), "--follow", folder, "-o", result}).exitCode,
        2);
    EXPECT_EQ(orvik({"process", "-o", result}).exitCode, 2);
}

} // namespace
