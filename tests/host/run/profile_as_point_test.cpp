// Physical class: a three-beam profile made into a point instrument's burst is what a point instrument with its cell in
// that place records of the same sea.
#include "run/profile_as_point.hpp"

#include <algorithm>
#include <cmath>

#include <gtest/gtest.h>

#include "burst/geometry.hpp"
#include "run/burst_runner.hpp"
#include "run/profile_front_end.hpp"
#include "simulate/sea.hpp"

namespace {

using namespace orvik;

constexpr std::size_t kSamples = 2048;
constexpr SensorFaults kNoFaults{0.0, 0.0, 0.0, 0.0, 0.0, 0.0};

Instrument profiler() {
    Instrument instrument;
    instrument.samplingRate = 2.0;
    instrument.trackSamplingRate = 2.0;
    instrument.instrumentType = 16;
    instrument.beamAzimuth = {0.0, 120.0, 240.0};
    instrument.cellSize = 0.5;
    instrument.pressureHeight = 0.5;
    instrument.profile = ProfileFacts{40, 0.5, 0.4, 2.5};
    return instrument;
}

// Swell: between two values a second the surface goes nearly straight.
SeaState sea() {
    SeaState state;
    WaveSystem waves;
    waves.peakPeriod = 11.0;
    waves.direction = 305.0;
    state.systems = {waves};
    state.heading = 137.0;
    state.pitch = 3.0;
    state.roll = -2.0;
    return state;
}

struct AsPoint {
    Instrument instrument;
    Burst burst;
    double cellHeight = 0.0;
};

AsPoint asPoint(const Instrument &instrument, const Burst &burst) {
    orvikbase::Record record;
    orvikbase::CleanedBurst cleaned;
    const ProfileFrontEnd frontEnd(instrument);
    frontEnd.configure(record);
    orvikbase::ProcessingParameters parameters;
    parameters.method = orvikbase::Method{4};
    parameters.estimateMask = frontEnd.estimateMask(true);
    parameters.troughMargin = 90.0F;
    record.setProcessing(parameters);
    frontEnd.send(record, burst, presentSamples(burst), cleaned);
    const auto height = static_cast<double>(cleaned.cellVerticalRange());
    return {asPointInstrument(instrument, height), asPointBurst(instrument, burst, cleaned),
            height};
}

double deviation(const std::vector<float> &series) {
    double sum = 0.0;
    double squares = 0.0;
    for (const float value : series) {
        sum += static_cast<double>(value);
        squares += static_cast<double>(value) * static_cast<double>(value);
    }
    const auto count = static_cast<double>(series.size());
    return std::sqrt(squares / count - sum * sum / (count * count));
}

// Of the difference, as a share of what there is; the ends, where interpolation has no neighbours, left out.
double unlikeness(const std::vector<float> &found, const std::vector<float> &expected) {
    std::vector<float> difference;
    for (std::size_t i = 20; i + 20 < std::min(found.size(), expected.size()); ++i) {
        difference.push_back(found[i] - expected[i]);
    }
    return deviation(difference) / deviation(expected);
}

class ProfileAsPoint : public testing::TestWithParam<VelocitySystem> {};

TEST_P(ProfileAsPoint, EverySeriesIsAPointInstruments) {
    const Instrument instrument = profiler();
    const Burst profile =
        simulateBurst(instrument, sea(), kNoFaults, kSamples, GetParam(), 7).burst;
    const AsPoint found = asPoint(instrument, profile);
    EXPECT_NEAR(found.instrument.cellRange * std::cos(25.0 * kRadiansPerDegree), found.cellHeight,
                1e-6);
    const Burst expected =
        simulateBurst(found.instrument, sea(), kNoFaults, kSamples, VelocitySystem::beam, 7).burst;
    ASSERT_EQ(found.burst.surfaceTrack.size(), 2 * kSamples);
    EXPECT_LT(unlikeness(found.burst.pressure, expected.pressure), 0.02);
    EXPECT_LT(unlikeness(found.burst.surfaceTrack, expected.surfaceTrack), 0.02);
    for (std::size_t b = 0; b < 3; ++b) {
        EXPECT_LT(unlikeness(found.burst.velocity[b], expected.velocity[b]), 0.02) << b;
    }
}

INSTANTIATE_TEST_SUITE_P(Systems, ProfileAsPoint,
                         testing::Values(VelocitySystem::beam, VelocitySystem::xyz,
                                         VelocitySystem::enu));

// The noise that the library takes away of a point instrument falls with the number of pings; of a profile it is another's.
TEST(ProfileAsPoint, NoPointInstrumentsNoiseIsTakenAway) {
    Instrument many = profiler();
    many.pingsPerSample = 10000;
    Instrument one = many;
    one.pingsPerSample = 1;
    const Burst burst =
        simulateBurst(many, sea(), kNoFaults, kSamples, VelocitySystem::beam, 7).burst;
    ProcessingChoices choices;
    choices.method = 3;
    const BurstResult expected = BurstRunner(many, choices).run(burst);
    const BurstResult result = BurstRunner(one, choices).run(burst);
    for (std::size_t f = 5; f < 20; ++f) {
        const auto density = static_cast<double>(expected.spectra.velocityEnergy()[f]);
        EXPECT_NEAR(static_cast<double>(result.spectra.velocityEnergy()[f]), density,
                    1e-3 * density)
            << f;
    }
}

} // namespace
