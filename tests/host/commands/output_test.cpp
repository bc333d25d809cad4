// Outputs that are no plain files: devices, pipes, links, and a standard output that takes nothing.
#include <filesystem>

#include <gtest/gtest.h>

#include <csignal>
#include <sys/stat.h>

#include "host/burst/scratch_directory.hpp"
#include "host/commands/program.hpp"

namespace {

namespace fs = std::filesystem;

using orvik::test::contentOf;
using orvik::test::holds;
using orvik::test::orvik;
using orvik::test::Outcome;

class Output : public testing::Test {
protected:
    static Outcome simulate(const std::string &output) {
        return orvik({"simulate", "-o", output, "--bursts", "3", "--samples", "64"});
    }

    ::orvik::test::ScratchDirectory directory;
    std::string sea = directory.file("sea.nc");
    std::string result = directory.file("waves.nc");
};

TEST_F(Output, APipeIsNotReplaced) {
    const std::string pipe = directory.file("pipe");
    ASSERT_EQ(mkfifo(pipe.c_str(), 0600), 0);
    const std::string link = directory.file("link");
    fs::create_symlink("pipe", link);
    for (const std::string &name : {pipe, link}) {
        const Outcome outcome = simulate(name);
        EXPECT_EQ(outcome.exitCode, 1);
        EXPECT_TRUE(holds(outcome.errors, "cannot write " + name + ": it is a device or a pipe"))
            << outcome.errors;
        EXPECT_TRUE(fs::is_fifo(name));
    }
    EXPECT_EQ(directory.names().size(), 2U);
}

// Before hours of work, not after.
TEST_F(Output, ADeviceIsNoExport) {
    const std::string pipe = directory.file("pipe");
    ASSERT_EQ(mkfifo(pipe.c_str(), 0600), 0);
    ASSERT_EQ(simulate(sea).exitCode, 0);
    EXPECT_EQ(orvik({"process", sea, "-o", result, "--method", "1", "--csv", pipe}).exitCode, 1);
    EXPECT_TRUE(fs::is_fifo(pipe));
    EXPECT_FALSE(fs::exists(result));
}

TEST_F(Output, ALinkGoesOnPointingToWhatIsWritten) {
    fs::create_directory(directory.file("disk"));
    fs::create_symlink("disk/there.nc", directory.file("near.nc"));
    fs::create_symlink(directory.file("near.nc"), directory.file("far.nc"));
    for (int times = 0; times < 2; ++times) { // what it points to is new, then there
        ASSERT_EQ(simulate(directory.file("far.nc")).exitCode, 0);
        EXPECT_TRUE(fs::is_symlink(directory.file("far.nc")));
        EXPECT_TRUE(fs::is_symlink(directory.file("near.nc")));
        EXPECT_TRUE(fs::is_regular_file(fs::symlink_status(directory.file("disk/there.nc"))));
    }
    EXPECT_EQ(directory.names().size(), 3U);
    ASSERT_EQ(simulate(sea).exitCode, 0);
    EXPECT_EQ(contentOf(directory.file("disk/there.nc")), contentOf(sea));
}

TEST_F(Output, ALinkToItselfIsRefused) {
    fs::create_symlink("sea.nc", sea);
    const Outcome outcome = simulate(sea);
    EXPECT_EQ(outcome.exitCode, 1);
    EXPECT_TRUE(holds(outcome.errors, "a link that leads to itself")) << outcome.errors;
}

// The table is written line by line, so that the last write may have nothing left that could fail.
TEST_F(Output, ATableThatIsLostIsAFailure) {
    ASSERT_EQ(simulate(sea).exitCode, 0);
    const Outcome outcome = orvik({"process", sea, "-o", result, "--method", "1"},
                                  [] { dup2(open("/dev/full", O_WRONLY), STDOUT_FILENO); });
    EXPECT_EQ(outcome.exitCode, 1);
    EXPECT_TRUE(holds(outcome.errors, "cannot write to standard output")) << outcome.errors;
}

TEST_F(Output, ATableThatNobodyReadsOnIsNone) {
    ASSERT_EQ(simulate(sea).exitCode, 0);
    const Outcome outcome = orvik({"process", sea, "-o", result, "--method", "1"}, [] {
        int ends[2] = {-1, -1};
        if (pipe(ends) == 0) {
            close(ends[0]);
            dup2(ends[1], STDOUT_FILENO);
        }
    });
    EXPECT_EQ(outcome.exitCode, 0) << outcome.errors;
    EXPECT_TRUE(fs::exists(result));
}

} // namespace
