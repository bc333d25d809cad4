// `orvik report`: what it writes, and what it says when it cannot.
#include <sys/resource.h>

#include <gtest/gtest.h>

#include "host/burst/nc_sketch.hpp"
#include "host/burst/scratch_directory.hpp"
#include "host/commands/program.hpp"
#include "report/page.hpp"

namespace {

using orvik::test::contentOf;
using orvik::test::holds;
using orvik::test::NcSketch;
using orvik::test::orvik;
using orvik::test::Outcome;
using orvik::test::ScratchDirectory;

class Report : public testing::Test {
protected:
    void SetUp() override {
        if (::orvik::reportPage().empty()) {
            GTEST_SKIP() << ::orvik::reportPageMissing();
        }
    }

    // A result file of two bursts.
    std::string result() {
        const std::string sea = directory_.file("sea.nc");
        const std::string path = directory_.file("waves.nc");
        EXPECT_EQ(orvik({"simulate", "-o", sea, "--bursts", "2", "--samples", "512"}).exitCode, 0);
        EXPECT_EQ(orvik({"process", sea, "-o", path}).exitCode, 0);
        return path;
    }

    ScratchDirectory directory_;
};

TEST_F(Report, IsOnePageWithTheFilesData) {
    const std::string page = directory_.file("report.html");
    const Outcome outcome = orvik({"report", result(), "-o", page});
    EXPECT_EQ(outcome.exitCode, 0) << outcome.errors;
    const std::string text = contentOf(page);
    EXPECT_TRUE(holds(text, "<!doctype html>"));
    EXPECT_TRUE(holds(text, "\"burst_file\":\"sea.nc\""));
    EXPECT_FALSE(holds(text, std::string(::orvik::kDataMark)));
    EXPECT_EQ(directory_.names().size(), 3U) << "nothing but sea, waves and page";
}

TEST_F(Report, SameFileSamePage) {
    const std::string path = result();
    for (const char *name : {"a.html", "b.html"}) {
        ASSERT_EQ(orvik({"report", path, "-o", directory_.file(name)}).exitCode, 0);
    }
    EXPECT_EQ(contentOf(directory_.file("a.html")), contentOf(directory_.file("b.html")));
}

TEST_F(Report, MissingFile) {
    const Outcome outcome = orvik({"report", "/nowhere/a.nc", "-o", directory_.file("a.html")});
    EXPECT_EQ(outcome.exitCode, 1);
    EXPECT_TRUE(holds(outcome.errors, "cannot open /nowhere/a.nc")) << outcome.errors;
    EXPECT_TRUE(directory_.names().empty());
}

TEST_F(Report, NoNetcdf) {
    const std::string path = directory_.file("a.nc");
    std::ofstream(path) << "no netCDF";
    const Outcome outcome = orvik({"report", path, "-o", directory_.file("a.html")});
    EXPECT_EQ(outcome.exitCode, 1);
    EXPECT_TRUE(holds(outcome.errors, "cannot open " + path)) << outcome.errors;
}

TEST_F(Report, BurstFileNamesWhatIsMissing) {
    const std::string sea = directory_.file("sea.nc");
    ASSERT_EQ(orvik({"simulate", "-o", sea, "--bursts", "1", "--samples", "512"}).exitCode, 0);
    const Outcome outcome = orvik({"report", sea, "-o", directory_.file("a.html")});
    EXPECT_EQ(outcome.exitCode, 1);
    EXPECT_TRUE(holds(outcome.errors, "sea.nc is no result file: it has no freq, dir, hm0, tp, "))
        << outcome.errors;
    EXPECT_TRUE(holds(outcome.errors, "'orvik process'")) << outcome.errors;
    EXPECT_EQ(directory_.names().size(), 1U);
}

TEST_F(Report, OtherDimensionsAreNamed) {
    const std::string path = directory_.file("a.nc");
    {
        NcSketch file(path);
        file.dimension("time", 1).dimension("freq", 1).dimension("dir", 1);
        file.variable("time", {"time"}, "seconds since 1970-01-01 00:00:00", {0.0});
        for (const char *name : {"hm0", "tp", "peak_direction", "mean_direction", "quality_flag"}) {
            file.variable(name, {"time"}, "1", {0.0});
        }
        file.variable("freq", {"freq"}, "Hz", {0.1});
        file.variable("dir", {"dir"}, "degree", {0.0});
        file.variable("variance_density", {"time", "freq"}, "m2 s", {0.0});
        file.variable("efth", {"time", "dir"}, "m2 s degree-1", {0.0});
    }
    const Outcome outcome = orvik({"report", path, "-o", directory_.file("a.html")});
    EXPECT_EQ(outcome.exitCode, 1);
    EXPECT_TRUE(holds(outcome.errors, "variable efth of " + path +
                                          " has the dimensions (time, dir) "
                                          "instead of (time, freq, dir)"))
        << outcome.errors;
}

TEST_F(Report, OutputThatCannotBe) {
    const std::string path = result();
    Outcome outcome = orvik({"report", path, "-o", "/nowhere/a.html"});
    EXPECT_EQ(outcome.exitCode, 1);
    EXPECT_TRUE(holds(outcome.errors, "/nowhere/a.html")) << outcome.errors;
    outcome = orvik({"report", path, "-o", directory_.file("")});
    EXPECT_EQ(outcome.exitCode, 1);
    EXPECT_TRUE(holds(outcome.errors, "it is a directory")) << outcome.errors;
    outcome = orvik({"report", path, "-o", path});
    EXPECT_EQ(outcome.exitCode, 2);
    EXPECT_TRUE(holds(outcome.errors, "give the page another name")) << outcome.errors;
}

TEST_F(Report, FullDiskLeavesThePageBefore) {
    const std::string path = result();
    const std::string page = directory_.file("report.html");
    std::ofstream(page) << "the page before";
    const Outcome outcome = orvik({"report", path, "-o", page}, [] {
        const rlimit limit{100000, 100000};
        setrlimit(RLIMIT_FSIZE, &limit);
    });
    EXPECT_EQ(outcome.exitCode, 1);
    EXPECT_TRUE(holds(outcome.errors, "cannot write " + page)) << outcome.errors;
    EXPECT_EQ(contentOf(page), "the page before");
    EXPECT_EQ(directory_.names().size(), 3U) << "no temporary file stays";
}

TEST_F(Report, NeedsAnOutput) {
    const Outcome outcome = orvik({"report", "waves.nc"});
    EXPECT_EQ(outcome.exitCode, 2);
    EXPECT_TRUE(holds(outcome.errors + outcome.output, "--output")) << outcome.errors;
}

} // namespace
