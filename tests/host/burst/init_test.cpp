// `orvik init`, filled in, makes `orvik process` run, with the values of the burst file that the data come from.
#include <cmath>
#include <filesystem>
#include <sstream>

#include <gtest/gtest.h>

#include "host/burst/layout_writers.hpp"
#include "host/burst/scratch_directory.hpp"
#include "host/commands/program.hpp"
#include "netcdf/nc_file.hpp"

namespace {

using orvik::NcReader;
using orvik::test::contentOf;
using orvik::test::Deployment;
using orvik::test::holds;
using orvik::test::orvik;
using orvik::test::Outcome;

class Init : public testing::Test {
protected:
    ::orvik::test::ScratchDirectory directory;
    std::string bursts = directory.file("bursts.nc");
    std::string data = directory.file("data.nc");
    std::string facts = directory.file("deployment.toml");

    void simulate(const std::vector<std::string> &more) const {
        std::vector<std::string> arguments{"simulate", "-o",        bursts, "--bursts",
                                           "2",        "--samples", "1024", "--pressure-height",
                                           "0.8"};
        arguments.insert(arguments.end(), more.begin(), more.end());
        const Outcome outcome = orvik(arguments);
        ASSERT_EQ(outcome.exitCode, 0) << outcome.errors;
    }

    // "# name = anything" becomes "name = value".
    void fillIn(const std::string &name, const std::string &value) const {
        std::istringstream lines(contentOf(facts));
        std::ostringstream filled;
        bool found = false;
        for (std::string line; std::getline(lines, line);) {
            const bool here = line.rfind("# " + name + " = ", 0) == 0;
            found = found || here;
            filled << (here ? name + " = " + value : line) << '\n';
        }
        EXPECT_TRUE(found) << name;
        std::ofstream(facts) << filled.str();
    }

    [[nodiscard]] static std::vector<double> values(const std::string &file, const char *name) {
        const NcReader reader(file);
        return reader.readAll(*reader.find(name));
    }
};

TEST_F(Init, FilledInItProcesses) {
    simulate({});
    writeFields(data, Deployment(bursts));
    const Outcome init = orvik({"init", data, "-o", facts});
    ASSERT_EQ(init.exitCode, 0) << init.errors;
    EXPECT_TRUE(holds(init.output, "2 missing (cell_range, beam_azimuth)")) << init.output;
    const std::string text = contentOf(facts);
    EXPECT_TRUE(holds(text, "attribute sample_interval of " + data)) << text;
    const std::string result = directory.file("result.nc");
    EXPECT_EQ(orvik({"process", data, "--facts", facts, "-o", result}).exitCode, 1)
        << "nothing is filled in";
    const NcReader truth(bursts);
    std::ostringstream range;
    range.precision(17);
    range << truth.readAll(*truth.find("cell_range")).front();
    fillIn("cell_range", range.str());
    fillIn("beam_azimuth", "[0, 120, 240]");
    fillIn("simultaneous_sampling", "0");
    const Outcome process = orvik({"process", data, "--facts", facts, "-o", result, "--quiet"});
    ASSERT_EQ(process.exitCode, 0) << process.errors;
    const std::string expected = directory.file("expected.nc");
    ASSERT_EQ(orvik({"process", bursts, "-o", expected, "--quiet"}).exitCode, 0);
    for (const char *name : {"hm0", "tp", "peak_direction"}) {
        const auto left = values(result, name);
        const auto right = values(expected, name);
        ASSERT_EQ(left.size(), 2U);
        for (std::size_t i = 0; i < 2; ++i) {
            EXPECT_NEAR(left[i], right[i], 1e-3 * std::abs(right[i])) << name;
        }
    }
}

TEST_F(Init, CompleteDataLackNothing) {
    simulate({});
    const Outcome init = orvik({"init", bursts, "-o", "-"});
    ASSERT_EQ(init.exitCode, 0) << init.errors;
    EXPECT_TRUE(holds(init.output, "Nothing is missing")) << init.output;
    EXPECT_TRUE(holds(init.output, "# cell_range = ")) << init.output;
    EXPECT_TRUE(holds(init.output, "variable cell_range of " + bursts)) << init.output;
}

// A mean of angles comes out from -180 to 180.
TEST_F(Init, HeadingsAreToldAsACompassShowsThem) {
    simulate({"--heading", "350"});
    EXPECT_TRUE(holds(orvik({"init", bursts, "-o", "-"}).output, "# heading = 350\n"));
    const std::string result = directory.file("result.nc");
    ASSERT_EQ(orvik({"process", bursts, "-o", result, "--quiet"}).exitCode, 0);
    EXPECT_EQ(values(result, "heading"), (std::vector<double>{350.0, 350.0}));
}

TEST_F(Init, WhatIsThereIsNotOverwritten) {
    simulate({});
    std::ofstream(facts) << "heading = 1\n";
    const Outcome init = orvik({"init", bursts, "-o", facts});
    EXPECT_EQ(init.exitCode, 2);
    EXPECT_TRUE(holds(init.errors, facts)) << init.errors;
    EXPECT_EQ(contentOf(facts), "heading = 1\n");
}

TEST_F(Init, WhatIsNoDataIsSaid) {
    const Outcome init = orvik({"init", directory.file("none.nc"), "-o", facts});
    EXPECT_EQ(init.exitCode, 1);
    EXPECT_TRUE(holds(init.errors, "none.nc")) << init.errors;
    EXPECT_FALSE(std::filesystem::exists(facts));
}

} // namespace
