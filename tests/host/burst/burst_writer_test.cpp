// Finished files appear at once; unfinished ones leave nothing.
#include "burst/burst_file.hpp"

#include <csignal>
#include <filesystem>
#include <fstream>

#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <gtest/gtest.h>

#include "host/burst/scratch_directory.hpp"
#include "user_error.hpp"

namespace {

using namespace orvik;

constexpr std::size_t kSamples = 2048;

Instrument plainInstrument() {
    Instrument instrument;
    instrument.samplingRate = 2.0;
    instrument.trackSamplingRate = 4.0;
    instrument.cellRange = 5.0;
    return instrument;
}

// Values that deflate badly, so that the file grows with every burst.
Burst noisyBurst() {
    Burst burst;
    unsigned state = 1;
    for (std::size_t i = 0; i < kSamples; ++i) {
        state = state * 1664525U + 1013904223U;
        burst.pressure.push_back(static_cast<float>(state));
    }
    return burst;
}

void writeBursts(const std::string &path, int count, bool commit) {
    BurstFileWriter writer(path, plainInstrument(), VelocitySystem::none, kSamples, 0, {});
    for (int i = 0; i < count; ++i) {
        writer.append(noisyBurst(), {});
    }
    if (commit) {
        writer.commit();
    }
}

TEST(BurstWriter, NothingIsThereBeforeCommit) {
    const test::ScratchDirectory directory;
    writeBursts(directory.file("a.nc"), 2, false);
    EXPECT_TRUE(directory.names().empty());
}

TEST(BurstWriter, CommitReplacesAnOlderFileAtOnce) {
    const test::ScratchDirectory directory;
    const std::string path = directory.file("a.nc");
    std::ofstream(path) << "older";
    writeBursts(path, 1, false);
    EXPECT_EQ(std::filesystem::file_size(path), 5U);
    writeBursts(path, 1, true);
    EXPECT_EQ(directory.names(), std::vector<std::string>{"a.nc"});
    EXPECT_EQ(BurstFileReader(path, {}).burstCount(), 1U);
}

TEST(BurstWriter, BadPlacesAreNamed) {
    const test::ScratchDirectory directory;
    std::filesystem::create_directory(directory.file("folder"));
    std::ofstream(directory.file("plain")) << "x";
    for (const std::string name : {"none/a.nc", "plain/a.nc", "folder"}) {
        try {
            writeBursts(directory.file(name), 1, true);
            ADD_FAILURE() << name;
        } catch (const UserError &error) {
            EXPECT_NE(std::string(error.what()).find(directory.file(name)), std::string::npos)
                << error.what();
        }
    }
    EXPECT_EQ(directory.names().size(), 2U);
}

// A limit on file sizes makes writes fail as a full disk does. In a process of its own, for the limit stays.
TEST(BurstWriter, FailedWritesLeaveNothing) {
    const test::ScratchDirectory directory;
    const std::string path = directory.file("a.nc");
    const pid_t child = fork();
    ASSERT_GE(child, 0);
    if (child == 0) {
        std::signal(SIGXFSZ, SIG_IGN);
        const rlimit limit{200000, 200000};
        setrlimit(RLIMIT_FSIZE, &limit);
        try {
            writeBursts(path, 200, true);
            _exit(3);
        } catch (const UserError &error) {
            _exit(std::string(error.what()).find(path) != std::string::npos ? 1 : 2);
        }
    }
    int status = 0;
    ASSERT_EQ(waitpid(child, &status, 0), child);
    ASSERT_TRUE(WIFEXITED(status));
    EXPECT_EQ(WEXITSTATUS(status), 1);
    EXPECT_TRUE(directory.names().empty());
}

} // namespace
