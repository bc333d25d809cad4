// Physical class: what was not measured is no number in a result, and heights do not rest on it.
#include <cmath>
#include <fstream>
#include <sstream>

#include <gtest/gtest.h>

#include "burst/burst.hpp"
#include "host/burst/scratch_directory.hpp"
#include "host/commands/program.hpp"
#include "netcdf/nc_file.hpp"
#include "run/spectrum_tail.hpp"

namespace {

using orvik::NcReader;
using orvik::test::holds;
using orvik::test::orvik;
using orvik::test::Outcome;

class Unmeasured : public testing::Test {
protected:
    ::orvik::test::ScratchDirectory directory;
    std::string sea = directory.file("sea.nc");
    std::string result = directory.file("result.nc");

    void simulate(std::vector<std::string> options) const {
        options.insert(options.begin(), {"simulate", "-o", sea, "--bursts", "2", "--height", "2",
                                         "--tide-amplitude", "0"});
        const Outcome outcome = orvik(options);
        ASSERT_EQ(outcome.exitCode, 0) << outcome.errors;
    }
    [[nodiscard]] Outcome process(std::vector<std::string> options,
                                  const std::string &input = "") const {
        options.insert(options.begin(), {"process", input.empty() ? sea : input, "-o", result});
        return orvik(options);
    }
    [[nodiscard]] std::string explained() const {
        std::istringstream words(orvik({"explain", result, "--burst", "0"}).output);
        std::string text;
        for (std::string word; words >> word;) {
            text += (text.empty() ? "" : " ") + word;
        }
        return text;
    }
    [[nodiscard]] std::vector<double> values(const std::string &name) const {
        const NcReader file(result);
        return file.readAll(*file.find(name));
    }
    [[nodiscard]] bool isMissing(const std::string &name) const {
        for (const double value : values(name)) {
            if (std::isfinite(value)) {
                return false;
            }
        }
        return true;
    }
};

// In 32 m of water a cell 7 m above the bed sees (7/32)^2 of the vertical motion at most: less than the tenth below
// which the library replaces the velocity spectrum by its tail. 15 % is what two bursts of waves scatter by.
TEST_F(Unmeasured, HeightsOfAnUnseenVelocitySpectrum) {
    simulate({"--depth", "32", "--period", "9", "--track-drop", "1"});
    const std::vector<std::vector<std::string>> ways{{}, {"--method", "3", "--source", "velocity"}};
    for (const auto &way : ways) {
        const Outcome outcome = process(way);
        ASSERT_EQ(outcome.exitCode, 0) << outcome.errors;
        EXPECT_TRUE(holds(outcome.errors, "the velocity cell is too near to the bed or too deep"))
            << outcome.errors;
        for (const double height : values("hm0")) {
            EXPECT_NEAR(height, 2.0, 0.15 * 2.0);
        }
        EXPECT_EQ(values("spectrum_source"), (std::vector<double>{0.0, 0.0}));
        EXPECT_TRUE(isMissing("variance_density_velocity"));
        EXPECT_TRUE(isMissing("velocity_cutoff_frequency"));
        EXPECT_FALSE(isMissing("peak_direction"));
        EXPECT_TRUE(holds(explained(), "tells directions but no heights")) << explained();
    }
}

// All of it may lie below the noise, and be taken away with it.
TEST_F(Unmeasured, HeightsOfAVelocitySpectrumOfNothing) {
    simulate({"--depth", "25", "--period", "4"});
    ASSERT_EQ(process({"--method", "3", "--source", "velocity"}).exitCode, 0);
    EXPECT_EQ(values("spectrum_source"), (std::vector<double>{0.0, 0.0}));
    for (const double height : values("hm0")) {
        EXPECT_GT(height, 0.1);
    }
}

TEST_F(Unmeasured, AVelocitySpectrumThatIsSeenStays) {
    simulate({"--depth", "18", "--period", "12"});
    const Outcome outcome = process({"--method", "3", "--source", "velocity"});
    ASSERT_EQ(outcome.exitCode, 0) << outcome.errors;
    EXPECT_EQ(values("spectrum_source"), (std::vector<double>{1.0, 1.0}));
    EXPECT_FALSE(isMissing("variance_density_velocity"));
    EXPECT_FALSE(isMissing("velocity_cutoff_frequency"));
}

// Nothing is wrong with a pressure sensor without velocities: no flag, and its mean period is there.
TEST_F(Unmeasured, PressureAlone) {
    const std::string table = directory.file("pressure.csv");
    {
        std::ofstream file(table);
        file << "pressure\n";
        for (int i = 0; i < 2048; ++i) {
            const double t = 0.5 * i;
            double pressure = 8.0;
            for (int j = 60; j < 180; ++j) { // 0.06 to 0.18 Hz
                pressure += 0.02 * std::cos(6.283185307 * j * t / 1024.0 + 0.9 * j * j);
            }
            file << pressure << "\n";
        }
    }
    const Outcome outcome = process({"--set", "sampling_rate=2"}, table);
    ASSERT_EQ(outcome.exitCode, 0) << outcome.errors;
    EXPECT_EQ(values("quality_flag"), std::vector<double>{0.0});
    EXPECT_GT(values("tm02").at(0), 5.0);
    EXPECT_LT(values("tm02").at(0), 14.0);
    for (const char *name :
         {"peak_direction", "mean_direction", "peak_spread", "resultant_length", "cell_height",
          "current_speed", "direction", "a1", "efth", "variance_density_velocity", "check_ratio"}) {
        EXPECT_TRUE(isMissing(name)) << name;
    }
}

constexpr const char *kHeightNote = "much of the height is a tail that was not measured";

// Pressure 24 m deep sees nothing of waves of 4 s: what it makes of them is noise at the cut-off and the tail above it.
TEST_F(Unmeasured, AHeightOfShortWavesUnderDeepWaterIsNotVouchedFor) {
    simulate({"--depth", "25", "--period", "4"});
    for (const char *method : {"1", "3"}) {
        const Outcome outcome = process({"--method", method});
        ASSERT_EQ(outcome.exitCode, 0) << outcome.errors;
        EXPECT_TRUE(holds(outcome.errors, kHeightNote)) << outcome.errors;
        EXPECT_LT(values("hm0").at(0), 1.0);
        const std::string text = explained();
        EXPECT_TRUE(holds(text, "s did not reach the sensor: ")) << text;
        EXPECT_TRUE(holds(text, "% of the variance behind this height is a tail")) << text;
        EXPECT_TRUE(holds(text, "flags none, but the height rests on waves that were not measured"))
            << text;
        EXPECT_TRUE(holds(text, kHeightNote)) << text;
        EXPECT_FALSE(holds(text, "In 95 of 100 cases")) << text;
        EXPECT_FALSE(holds(text, "nothing speaks against")) << text;
    }
    for (const char *method : {"2", "4"}) { // the surface track sees them
        const Outcome outcome = process({"--method", method});
        EXPECT_FALSE(holds(outcome.errors, kHeightNote)) << outcome.errors;
        EXPECT_TRUE(holds(explained(), "In 95 of 100 cases")) << explained();
    }
}

TEST_F(Unmeasured, AHeightOfWavesThatReachTheSensorIsVouchedFor) {
    for (const auto &[depth, period] : {std::pair{"12", "7"}, {"12", "9"}, {"25", "13"}}) {
        simulate({"--depth", depth, "--period", period});
        for (const char *method : {"1", "3"}) {
            const Outcome outcome = process({"--method", method});
            EXPECT_FALSE(holds(outcome.errors, kHeightNote)) << depth << " m " << outcome.errors;
            const std::string text = explained();
            EXPECT_TRUE(holds(text, "In 95 of 100 cases")) << depth << " m " << text;
            EXPECT_TRUE(holds(text, "nothing speaks against")) << depth << " m " << text;
        }
    }
}

// Exact: three equal bins below the cut-off and tails of known size above it.
TEST(UnmeasuredHeight, IsAPeakAtTheCutoffOrAQuarterOfTheVariance) {
    const std::vector<double> frequencies{0.05, 0.06, 0.07, 0.08, 0.09, 0.10};
    const auto of = [&](const std::vector<double> &density, double cutoff) {
        return ::orvik::unmeasuredHeight(density, frequencies, cutoff);
    };
    EXPECT_FALSE(of({3, 9, 3, 3, 3, 3}, 0.08)); // the tail is a quarter
    const auto more = of({3, 8, 3, 2, 4, 4}, 0.08);
    ASSERT_TRUE(more);
    EXPECT_DOUBLE_EQ(more->share, 8.0 / 24.0);
    EXPECT_EQ(more->frequency, 0.08);
    EXPECT_TRUE(of({0, 3, 9, 3, 0, 0}, 0.08)); // a bin below the cut-off
    EXPECT_FALSE(of({3, 9, 3, 3, 0, 0}, 0.08));
    EXPECT_FALSE(of({3, 9, 3, 3, 9, 9}, ::orvik::kUnknown)); // all was measured
    EXPECT_FALSE(of({0, 0, 0, 0, 0, 0}, 0.08));
}

constexpr double kTilt = 2048.0;

// Roll 180 is how such a head stands, not a tilt.
TEST_F(Unmeasured, TiltOfAHeadThatLooksDown) {
    const std::vector<std::string> head{"--instrument-type", "16", "--roll-offset",     "180",
                                        "--depth",           "8",  "--pressure-height", "6"};
    for (const auto &[pitch, flag] : {std::pair{"9", 0.0}, std::pair{"11", kTilt}}) {
        std::vector<std::string> options = head;
        options.insert(options.end(), {"--roll", "0", "--pitch", pitch});
        simulate(options);
        const Outcome outcome = process({"--method", "1"});
        ASSERT_EQ(outcome.exitCode, 0) << outcome.errors;
        for (const double flags : values("quality_flag")) {
            EXPECT_EQ(std::fmod(std::floor(flags / kTilt), 2.0) * kTilt, flag) << pitch;
        }
    }
}

TEST_F(Unmeasured, ACellInTheAirIsTold) {
    simulate({});
    const Outcome outcome = process({"--set", "cell_range=300"});
    EXPECT_TRUE(holds(outcome.errors, "the velocity cell, 271.9 m above the head, is out of the "
                                      "water: correct cell_range"))
        << outcome.errors;
    EXPECT_FALSE(holds(process({}).errors, "out of the water"));
}

// Exact: a rise S ~ f^10 up to the bin that a tail S ~ f^-4.5 hangs on, and nothing else.
TEST(NothingButTail, RiseAndTail) {
    std::vector<double> frequencies;
    std::vector<float> density;
    for (int i = 0; i < 50; ++i) {
        const double f = 0.02 + 0.01 * i;
        frequencies.push_back(f);
        density.push_back(static_cast<float>(std::pow(f / 0.08, i < 6 ? 10.0 : -4.5)));
    }
    EXPECT_TRUE(::orvik::isNothingButTail(density, frequencies));
    density[3] *= 1.01F;
    EXPECT_FALSE(::orvik::isNothingButTail(density, frequencies));
    density.assign(50, 1.0F);
    EXPECT_FALSE(::orvik::isNothingButTail(density, frequencies));
    EXPECT_TRUE(::orvik::isNothingButTail(std::vector<float>(density.size(), 0.0F), frequencies));
}

} // namespace
