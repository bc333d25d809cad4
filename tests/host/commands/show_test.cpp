// `orvik show`: burst files and result files at a glance.
#include <gtest/gtest.h>

#include "host/burst/nc_sketch.hpp"
#include "host/burst/scratch_directory.hpp"
#include "host/commands/program.hpp"

namespace {

using orvik::test::holds;
using orvik::test::NcSketch;
using orvik::test::orvik;
using orvik::test::Outcome;

TEST(Show, BurstFile) {
    const ::orvik::test::ScratchDirectory directory;
    const std::string path = directory.file("a.nc");
    {
        NcSketch file(path);
        file.dimension("time", 2).dimension("sample", 2);
        file.variable("time", {"time"}, "seconds since 1970-01-01 00:00:00", {0.0, 3600.0});
        file.scalar("sampling_rate", "Hz", 2.0);
        file.variable("pressure", {"time", "sample"}, "dbar", {10.0, 12.0, 14.0, -1.0}, NC_FLOAT,
                      {{"_FillValue", -1.0}});
    }
    const Outcome outcome = orvik({"show", path});
    EXPECT_EQ(outcome.exitCode, 0) << outcome.errors;
    EXPECT_TRUE(holds(outcome.output, path + ": burst file"));
    EXPECT_TRUE(holds(outcome.output, "from 1970-01-01 00:00:00 to 1970-01-01 01:00:00 UTC"));
    EXPECT_TRUE(holds(outcome.output, "sampling_rate"));
    EXPECT_TRUE(
        holds(outcome.output,
              "pressure                                  12          10          14    25.00 %"))
        << outcome.output;
}

TEST(Show, ResultFileIsTheTableOfItsProcessing) {
    const ::orvik::test::ScratchDirectory directory;
    const std::string sea = directory.file("sea.nc");
    const std::string result = directory.file("result.nc");
    ASSERT_EQ(orvik({"simulate", "-o", sea, "--bursts", "2"}).exitCode, 0);
    ASSERT_EQ(orvik({"process", sea, "-o", result}).exitCode, 0);
    const Outcome outcome = orvik({"show", result});
    EXPECT_EQ(outcome.exitCode, 0) << outcome.errors;
    EXPECT_TRUE(holds(outcome.output, "result file"));
    EXPECT_TRUE(holds(outcome.output, "    1  2024-11-05 01:00:00")) << outcome.output;
    EXPECT_TRUE(holds(outcome.output, "track"));
}

TEST(Show, MissingFile) {
    const Outcome outcome = orvik({"show", "/nowhere/a.nc"});
    EXPECT_EQ(outcome.exitCode, 1);
    EXPECT_TRUE(holds(outcome.errors, "orvik: error: cannot open /nowhere/a.nc"));
}

} // namespace
