// `orvik show`: burst files and result files at a glance.
#include <gtest/gtest.h>
#include <sys/resource.h>

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

TEST(Show, TimesOfAnotherCalendarHideNothingElse) {
    const ::orvik::test::ScratchDirectory directory;
    const std::string path = directory.file("a.nc");
    {
        NcSketch file(path);
        file.dimension("time", 2).dimension("sample", 2);
        file.variable("time", {"time"}, "days since 1970-01-01", {0.0, 1.0});
        file.textOf("time", "calendar", "noleap");
        file.variable("pressure", {"time", "sample"}, "dbar", {10.0, 12.0, 14.0, 16.0});
        file.variable("hm0", {"time"}, "m", {1.0, 2.0});
        file.variable("quality_flag", {"time"}, "1", {0.0, 0.0});
    }
    const Outcome outcome = orvik({"show", path});
    EXPECT_EQ(outcome.exitCode, 0) << outcome.errors;
    EXPECT_TRUE(holds(outcome.output, "no times: ") && holds(outcome.output, "noleap"))
        << outcome.output;
    EXPECT_TRUE(holds(outcome.output, "pressure  ")) << outcome.output;
}

TEST(Show, ScalarsHaveAllTheirDigits) {
    const ::orvik::test::ScratchDirectory directory;
    const std::string path = directory.file("a.nc");
    {
        NcSketch file(path);
        file.scalar("start", "s", 1730764800.0).scalar("latitude", "degree_north", -53.123456);
        file.variable("cell_size", {}, "m", {0.1}, NC_FLOAT);
    }
    const Outcome outcome = orvik({"show", path});
    EXPECT_EQ(outcome.exitCode, 0) << outcome.errors;
    EXPECT_TRUE(holds(outcome.output, "  1730764800 s\n")) << outcome.output;
    EXPECT_TRUE(holds(outcome.output, "  -53.123456 degree_north\n")) << outcome.output;
    EXPECT_TRUE(holds(outcome.output, "  0.1 m\n")) << outcome.output;
}

// 40 million times are 320 MB; the first and the last one are shown.
TEST(Show, ALongRecordTakesNoMemory) {
    const ::orvik::test::ScratchDirectory directory;
    const std::string path = directory.file("a.nc");
    const std::size_t samples = 40'000'000;
    NcSketch(path)
        .dimension("time", samples)
        .packed({{"time", 65536}})
        .variable("time", {"time"}, "seconds since 1970-01-01 00:00:00", {});
    int file = -1;
    ASSERT_EQ(nc_open(path.c_str(), NC_WRITE, &file), NC_NOERR);
    for (const std::size_t place : {std::size_t{0}, samples - 1}) {
        const auto time = static_cast<double>(place);
        ASSERT_EQ(nc_put_var1_double(file, 0, &place, &time), NC_NOERR);
    }
    ASSERT_EQ(nc_close(file), NC_NOERR);
    const Outcome outcome = orvik({"show", path});
    EXPECT_TRUE(holds(outcome.output, "from 1970-01-01 00:00:00 to 1971-04-08 23:06:39 UTC"))
        << outcome.output;
    rusage usage{};
    ASSERT_EQ(getrusage(RUSAGE_CHILDREN, &usage), 0);
    EXPECT_LT(usage.ru_maxrss, 200 * 1024); // [KiB]
}

TEST(Show, MissingFile) {
    const Outcome outcome = orvik({"show", "/nowhere/a.nc"});
    EXPECT_EQ(outcome.exitCode, 1);
    EXPECT_TRUE(holds(outcome.errors, "orvik: error: cannot open /nowhere/a.nc"));
}

} // namespace
