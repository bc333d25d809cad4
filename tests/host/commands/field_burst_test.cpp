// Physical class: real bursts from the field, against values that were computed independently of this library.
#include <cmath>
#include <cstdlib>
#include <filesystem>

#include <gtest/gtest.h>

#include "host/burst/scratch_directory.hpp"
#include "host/commands/program.hpp"
#include "netcdf/nc_file.hpp"

namespace {

using orvik::NcReader;
using orvik::test::holds;
using orvik::test::orvik;
using orvik::test::Outcome;

class FieldBurst : public testing::Test {
protected:
    ::orvik::test::ScratchDirectory directory;
    std::string result = directory.file("result.nc");
    std::string folder;

    void SetUp() override {
        const char *given = std::getenv("ORVIK_FIELD_DATA");
        folder = given != nullptr ? given : ORVIK_FIELD_DATA;
        if (!std::filesystem::is_directory(folder)) {
            GTEST_SKIP() << "no field bursts in " << folder;
        }
    }

    Outcome process(const std::string &name, std::vector<std::string> more) const {
        std::vector<std::string> arguments{
            "process", (std::filesystem::path(folder) / name).string(), "-o", result};
        arguments.insert(arguments.end(), more.begin(), more.end());
        return orvik(arguments);
    }

    [[nodiscard]] std::vector<double> values(const std::string &name) const {
        const NcReader file(result);
        return file.readAll(*file.find(name));
    }
};

constexpr const char *kTrackBurst = "burst_three_beam_surface_track_2008.nc";
const std::vector<std::string> kTrackFacts{"--set", "heading=0", "--set", "pitch=0",
                                           "--set", "roll=0",    "--set", "cell_range=8.2"};

// Off an open coast: 999 samples at 1 Hz in 13 m. The surface track's own spectrum gives 1.55 m.
TEST_F(FieldBurst, SurfaceTrackHeight) {
    std::vector<std::string> options = kTrackFacts;
    options.insert(options.end(), {"--method", "4", "--freq-min", "0.03", "--freq-max", "0.5"});
    const Outcome outcome = process(kTrackBurst, options);
    ASSERT_EQ(outcome.exitCode, 0) << outcome.errors;
    EXPECT_NEAR(values("hm0")[0], 1.55, 0.05 * 1.55);
    EXPECT_NEAR(1.0 / values("tp")[0], 1.0 / 11.1, 0.01);
    EXPECT_EQ(values("spectrum_source")[0], 3.0);
    EXPECT_EQ(values("quality_flag")[0], 0.0);
}

// Pressure in the band that reaches the sensor gives 1.51 m. With heading 0 beam 1 looks north; the waves go its way.
TEST_F(FieldBurst, PressureHeightAndDirection) {
    std::vector<std::string> options = kTrackFacts;
    options.insert(options.end(), {"--freq-min", "0.03", "--freq-max", "0.22", "--going-to"});
    for (const char *method : {"1", "3"}) {
        auto all = options;
        all.insert(all.end(), {"--method", method});
        const Outcome outcome = process(kTrackBurst, all);
        ASSERT_EQ(outcome.exitCode, 0) << outcome.errors;
        EXPECT_NEAR(values("hm0")[0], 1.51, 0.08 * 1.51) << method;
        EXPECT_NEAR(1.0 / values("tp")[0], 1.0 / 11.1, 0.01) << method;
        EXPECT_NEAR(std::remainder(values("peak_direction")[0], 360.0), 0.0, 20.0) << method;
    }
}

TEST_F(FieldBurst, FactsThatTheSourceDoesNotTellAreAskedFor) {
    const Outcome outcome = process(kTrackBurst, {});
    EXPECT_EQ(outcome.exitCode, 1);
    EXPECT_TRUE(holds(outcome.errors, "cell_range is missing")) << outcome.errors;
    EXPECT_TRUE(holds(outcome.errors, "--set cell_range=METRES")) << outcome.errors;
    EXPECT_TRUE(directory.names().empty());
}

// Pressure and horizontal velocity off Florida: 0.80 m from pressure below 0.22 Hz, from 97 degrees.
TEST_F(FieldBurst, PressureAndVelocity) {
    const Outcome outcome = process("burst_puv_profiler_first_cell_2018.nc",
                                    {"--method", "1", "--freq-min", "0.03", "--freq-max", "0.22"});
    ASSERT_EQ(outcome.exitCode, 0) << outcome.errors;
    EXPECT_NEAR(values("hm0")[0], 0.80, 0.08);
    EXPECT_NEAR(values("mean_direction")[0], 97.0, 10.0);
}

// Pressure alone at 10 Hz in 1.1 m of water, with the heights and peak periods that its authors published.
TEST_F(FieldBurst, PressureAlone) {
    const Outcome outcome = process("bursts_pressure_only_shallow_10hz.nc",
                                    {"--set", "pressure_sensor_height_above_bed=0.05"});
    ASSERT_EQ(outcome.exitCode, 0) << outcome.errors;
    EXPECT_TRUE(holds(outcome.errors, "only the first 8192 of 10240 samples"));
    EXPECT_TRUE(holds(outcome.errors, "no velocities"));
    const NcReader published(
        (std::filesystem::path(folder) / "bursts_pressure_only_shallow_10hz.nc").string());
    const auto height = published.readAll(*published.find("published_hm0"));
    const auto period = published.readAll(*published.find("published_tp"));
    for (std::size_t i = 0; i < height.size(); ++i) {
        EXPECT_NEAR(values("hm0")[i], height[i], 0.15 * height[i]) << i;
        EXPECT_NEAR(1.0 / values("tp")[i], 1.0 / period[i], 0.02) << i;
        EXPECT_TRUE(std::isnan(values("mean_direction")[i])) << i;
    }
}

// In the surf of a beach, the head looking down from 0.31 m above the bed: bursts 2 to 6 are good, the others are in air
// or in hand. The pressure's zero drifts with temperature, so the depth is an assumption.
TEST_F(FieldBurst, ProfilesInTheSurf) {
    const double height[] = {0.40, 0.39, 0.36, 0.34, 0.27};
    for (const char *method : {"1", "3"}) {
        const Outcome outcome =
            process("bursts_three_beam_profiler_beach_2025.nc",
                    {"--method", method, "--velocities", "enu", "--freq-max", "0.6", "--set",
                     "roll_offset=180", "--set", "pressure_sensor_height_above_bed=0.31", "--set",
                     "pressure_mean=0.44"});
        ASSERT_EQ(outcome.exitCode, 0) << outcome.errors;
        const std::vector<double> hm0 = values("hm0");
        const std::vector<double> flags = values("quality_flag");
        ASSERT_EQ(hm0.size(), 11U);
        for (std::size_t burst = 0; burst < hm0.size(); ++burst) {
            if (burst < 2 || burst > 6) {
                EXPECT_TRUE(std::isnan(hm0[burst])) << burst;
                EXPECT_EQ(flags[burst], 32.0) << burst;
                EXPECT_TRUE(
                    holds(outcome.errors, "burst " + std::to_string(burst) + " has no results"));
                continue;
            }
            EXPECT_NEAR(hm0[burst], height[burst - 2], 0.25 * height[burst - 2]) << burst;
            // From 338 to 345 degrees by pressure and velocity alone.
            EXPECT_NEAR(std::remainder(values("mean_direction")[burst] - 342.0, 360.0), 0.0, 12.0)
                << burst;
            EXPECT_NEAR(values("tm02")[burst], 2.9, 0.6) << burst;
        }
    }
}

} // namespace
