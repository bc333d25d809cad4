// Real-time processing: files renamed into a folder become rows of the result file, across stops and kills.
#include <filesystem>
#include <fstream>

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
        std::vector<std::string> arguments{"simulate",       "-o",        hidden,
                                           "--bursts",       "2",         "--start",
                                           "2024-11-" + day, "--samples", "512"};
        arguments.insert(arguments.end(), more.begin(), more.end());
        ASSERT_EQ(orvik(arguments).exitCode, 0);
        fs::rename(hidden, folder + "/" + name);
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
