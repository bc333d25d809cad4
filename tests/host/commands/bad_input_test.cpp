// What goes wrong is said in words, with its exit code, and leaves no half-written file.
#include <csignal>
#include <filesystem>
#include <fstream>

#include <sys/mount.h>
#include <sys/resource.h>

#include <gtest/gtest.h>

#include "host/burst/nc_sketch.hpp"
#include "host/burst/scratch_directory.hpp"
#include "host/commands/program.hpp"

namespace {

using orvik::test::holds;
using orvik::test::NcSketch;
using orvik::test::orvik;
using orvik::test::Outcome;

class BadInput : public testing::Test {
protected:
    ::orvik::test::ScratchDirectory directory;
    std::string sea = directory.file("sea.nc");
    std::string result = directory.file("result.nc");

    void SetUp() override {
        ASSERT_EQ(orvik({"simulate", "-o", sea, "--bursts", "3", "--samples", "1024"}).exitCode, 0);
    }

    void expectFailure(const Outcome &outcome, int exitCode,
                       const std::vector<std::string> &parts) const {
        EXPECT_EQ(outcome.exitCode, exitCode) << outcome.errors;
        EXPECT_TRUE(outcome.output.empty() || exitCode == 1) << outcome.output;
        for (const std::string &part : parts) {
            EXPECT_TRUE(holds(outcome.errors, part))
                << "\"" << part << "\" in \"" << outcome.errors << "\"";
        }
        EXPECT_EQ(directory.names(), std::vector<std::string>{"sea.nc"});
    }
};

TEST_F(BadInput, MissingFile) {
    expectFailure(orvik({"process", directory.file("none.nc"), "-o", result}), 1,
                  {"orvik: error: cannot open", "none.nc", "No such file"});
}

TEST_F(BadInput, TruncatedFile) {
    const auto size = std::filesystem::file_size(sea);
    for (const auto keep : {size / 4, size / 2, size - 100}) {
        std::filesystem::resize_file(sea, keep);
        expectFailure(orvik({"process", sea, "-o", result}), 1, {"orvik: error: ", sea});
    }
}

TEST_F(BadInput, ResultsAreNoBursts) {
    ASSERT_EQ(orvik({"process", sea, "-o", result, "--quiet"}).exitCode, 0);
    const Outcome outcome = orvik({"process", result, "-o", directory.file("again.nc")});
    std::filesystem::remove(result);
    expectFailure(outcome, 1, {"orvik: error: ", result, "is a result file", "orvik show"});
}

TEST_F(BadInput, VelocitiesThatTheFileLacks) {
    for (const std::string system : {"xyz", "enu"}) {
        expectFailure(orvik({"process", sea, "-o", result, "--velocities", system}), 1,
                      {"--velocities " + system, sea, "has no velocities"});
    }
}

TEST_F(BadInput, UnknownValueName) {
    expectFailure(orvik({"process", sea, "-o", result, "--set", "cellrange=8"}), 2,
                  {"--set cellrange", "cell_range"});
}

TEST_F(BadInput, MalformedValues) {
    expectFailure(orvik({"process", sea, "-o", result, "--set", "cell_range"}), 2,
                  {"--set cell_range", "name=value"});
    expectFailure(orvik({"process", sea, "-o", result, "--set", "=3"}), 2, {"name=value"});
    expectFailure(orvik({"process", sea, "-o", result, "--set", "cell_range=far"}), 2,
                  {"\"far\" is not a number"});
}

TEST_F(BadInput, UsageErrors) {
    expectFailure(orvik({}), 2, {"which command?"});
    expectFailure(orvik({"prozess"}), 2, {});
    expectFailure(orvik({"process", sea}), 2, {"--output"});
    expectFailure(orvik({"process", sea, "-o", result, "--method", "5"}), 2, {"--method"});
    expectFailure(orvik({"process", sea, "-o", result, "--freq-min", "0.5", "--freq-max", "0.2"}),
                  2, {"--freq-min"});
    expectFailure(orvik({"process", sea, "-o", result, "--freq-step", "x"}), 2, {"--freq-step"});
    expectFailure(orvik({"process", sea, "-o", sea}), 2, {"--output", "input file"});
}

TEST_F(BadInput, UnwritablePlaces) {
    expectFailure(orvik({"process", sea, "-o", directory.file("none/result.nc")}), 1,
                  {"cannot create", "none/result.nc"});
    expectFailure(orvik({"process", sea, "-o", sea + "/result.nc"}), 1, {"cannot create"});
    expectFailure(orvik({"process", sea, "-o", "/proc/result.nc"}), 1,
                  {"cannot create", "/proc/result.nc"});
}

TEST_F(BadInput, MissingFactsNameFileAndOption) {
    const std::string bare = directory.file("bare.nc");
    {
        NcSketch file(bare);
        file.dimension("time", 1).dimension("sample", 1024).dimension("beam", 3);
        file.scalar("sampling_rate", "Hz", 2.0).scalar("cell_range", "m", 5.0);
        file.variable("pressure", {"time", "sample"}, "dbar", std::vector<double>(1024, 10.0));
        file.variable("velocity_beam", {"time", "sample", "beam"}, "m s-1",
                      std::vector<double>(3 * 1024, 0.0));
    }
    const Outcome first = orvik({"process", bare, "-o", result});
    EXPECT_EQ(first.exitCode, 1);
    EXPECT_TRUE(holds(first.errors,
                      "heading is missing in " + bare + ": give it with --set heading=DEGREES"));
    const Outcome second = orvik({"process", bare, "-o", result, "--set", "heading=0", "--set",
                                  "pitch=0", "--set", "roll=0"});
    EXPECT_EQ(second.exitCode, 1);
    EXPECT_TRUE(holds(second.errors, "beam_azimuth is missing")) << second.errors;
    EXPECT_TRUE(holds(second.errors, "--set beam_azimuth"));
    EXPECT_FALSE(std::filesystem::exists(result));
}

TEST_F(BadInput, RatesThatCannotBeProcessed) {
    expectFailure(orvik({"process", sea, "-o", result, "--set", "sampling_rate=1.5", "--set",
                         "surface_track_sampling_rate=3"}),
                  1, {sea + ": sampling_rate 1.5 Hz cannot be processed", "whole number"});
    expectFailure(orvik({"process", sea, "-o", result, "--set", "cell_range=5000"}), 1,
                  {sea + ": cell_range 5000 m is out of an instrument's reach"});
}

// Every size at which a write may fail: header, data, and the last flush when the file is closed.
TEST_F(BadInput, FileSizeLimitReadsLikeAFullDisk) {
    ASSERT_EQ(orvik({"process", sea, "-o", result, "--quiet"}).exitCode, 0);
    const auto size = std::filesystem::file_size(result);
    std::filesystem::remove(result);
    for (const auto allowed : {size_t{1000}, size / 4, size / 2, 3 * size / 4, size - 1}) {
        const auto limit = [allowed] {
            const rlimit most{allowed, allowed};
            setrlimit(RLIMIT_FSIZE, &most);
        };
        const std::vector<std::string> command{"process", sea, "-o", result, "--quiet"};
        const Outcome outcome = orvik(command, limit);
        std::filesystem::remove(result + ".unfinished"); // the bursts that were finished
        expectFailure(outcome, 1, {"orvik: error: cannot", result});
    }
}

TEST_F(BadInput, FactsFilesAreWholeOrNotThere) {
    const Outcome outcome = orvik({"init", sea, "-o", directory.file("facts.toml")}, [] {
        const rlimit most{100, 100};
        setrlimit(RLIMIT_FSIZE, &most);
    });
    expectFailure(outcome, 1, {"cannot write", "facts.toml", "is the disk full?"});
}

TEST_F(BadInput, FullDisk) {
    const std::string disk = directory.file("disk");
    std::filesystem::create_directory(disk);
    if (mount("tmpfs", disk.c_str(), "tmpfs", 0, "size=64k") != 0) {
        GTEST_SKIP() << "no right to mount a small disk";
    }
    for (const std::string command : {"process", "simulate"}) {
        std::vector<std::string> arguments{command, "-o", disk + "/result.nc"};
        if (command == "process") {
            arguments.insert(arguments.begin() + 1, sea);
        }
        const Outcome outcome = orvik(arguments);
        EXPECT_EQ(outcome.exitCode, 1);
        EXPECT_TRUE(holds(outcome.errors, "orvik: error: cannot write")) << outcome.errors;
        EXPECT_TRUE(std::filesystem::is_empty(disk)) << command;
    }
    umount(disk.c_str());
}

} // namespace
