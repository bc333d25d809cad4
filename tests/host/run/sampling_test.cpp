// Physical class: bursts that are sampled faster, at other instants or for less long than the library takes them.
#include <cmath>
#include <complex>

#include <gtest/gtest.h>

#include "burst/geometry.hpp"
#include "run/beam_timing.hpp"
#include "run/burst_runner.hpp"
#include "run/completion.hpp"
#include "run/track_rate.hpp"
#include "simulate/sea.hpp"

namespace {

using namespace orvik;

Instrument bedInstrument(double rate) {
    Instrument instrument;
    instrument.samplingRate = rate;
    instrument.trackSamplingRate = 2.0 * rate;
    instrument.beamAzimuth = {0.0, 120.0, 240.0};
    instrument.cellRange = 7.0;
    return instrument;
}

SimulatedBurst sea(double rate, std::size_t samples, std::uint64_t seed = 7) {
    SeaState state;
    WaveSystem waves;
    waves.direction = 305.0;
    state.systems = {waves};
    state.heading = 137.0;
    state.currentSpeed = 0.2;
    state.currentDirection = 60.0;
    return simulateBurst(bedInstrument(rate), state, {}, samples, VelocitySystem::beam, seed);
}

BurstResult run(double rate, const Burst &burst, int method) {
    ProcessingChoices choices;
    choices.method = method;
    return BurstRunner(bedInstrument(rate), choices).run(burst);
}

double turn(float one, double other) {
    return std::remainder(static_cast<double>(one) - other, 360.0);
}

class FastBursts : public testing::TestWithParam<double> {};

TEST_P(FastBursts, FindTheSeaWithASurfaceTrack) {
    const auto samples = static_cast<std::size_t>(1024.0 * GetParam());
    SimulatedBurst simulated = sea(GetParam(), samples);
    simulated.burst.surfaceTrack[7] = std::nanf("");
    for (const int method : {2, 4}) {
        const BurstResult result = run(GetParam(), simulated.burst, method);
        ASSERT_TRUE(result.processed) << result.reason;
        EXPECT_EQ(+result.waves.qualityFlags, 0);
        ASSERT_EQ(result.notes.size(), 1U);
        EXPECT_NE(result.notes[0].find(" Hz: taken at 2 Hz"), std::string::npos);
        EXPECT_NEAR(+result.waves.significantHeight, simulated.truth.realisedHeight,
                    0.05 * simulated.truth.realisedHeight);
        EXPECT_NEAR(+result.waves.peakPeriod, simulated.truth.peakPeriod, 0.8);
        EXPECT_NEAR(turn(result.waves.meanDirection, simulated.truth.meanDirection), 0.0, 5.0);
        EXPECT_NEAR(result.currentSpeed, 0.2, 0.02);
    }
}

INSTANTIATE_TEST_SUITE_P(Rates, FastBursts, testing::Values(3.0, 4.0, 5.0, 8.0));

// A wave far below half the new rate keeps its height and phase, one above it is gone.
TEST(TrackRate, SeriesAreLowPassed) {
    std::vector<float> slow;
    std::vector<float> fast;
    for (int i = 0; i < 4000; ++i) {
        slow.push_back(static_cast<float>(std::sin(0.1 * i)));
        fast.push_back(static_cast<float>(std::sin(1.5 * i)));
    }
    const std::vector<float> kept = lowPassed(slow, 4.0, 0.25, 1000);
    const std::vector<float> gone = lowPassed(fast, 4.0, 0.25, 1000);
    ASSERT_EQ(kept.size(), 1000U);
    for (std::size_t m = 10; m < 990; ++m) {
        const double at = 4.0 * static_cast<double>(m) + 0.25;
        EXPECT_NEAR(static_cast<double>(kept[m]), std::sin(0.1 * at), 2e-3) << m;
        EXPECT_NEAR(static_cast<double>(gone[m]), 0.0, 2e-3) << m;
    }
}

// At 4 Hz the library takes pressure for 0.1875 s late, at 2 Hz for 0.17 s.
TEST(TrackRate, PressureComesToItsInstantAtTheNewRate) {
    Burst burst;
    for (int i = 0; i < 400; ++i) {
        burst.pressure.push_back(static_cast<float>(i)); // [quarters of a second]
    }
    burst.surfaceTrack.assign(800, 20.0F);
    const Burst slower = atTrackRate(bedInstrument(4.0), burst, std::vector<std::uint8_t>(400, 1));
    for (std::size_t m = 20; m < 180; ++m) {
        EXPECT_NEAR(static_cast<double>(slower.pressure[m]),
                    2.0 * static_cast<double>(m) + 4.0 * (0.1875 - 0.17), 1e-3);
    }
}

// A spike is not spread over its neighbours, where it could no longer be told from waves.
TEST(TrackRate, MissesAndSpikesOfTheTrackRemain) {
    Burst burst;
    burst.pressure.assign(400, 10.0F);
    burst.surfaceTrack.assign(800, 20.0F);
    burst.surfaceTrack[40] = 90.0F;
    burst.surfaceTrack[60] = std::nanf("");
    std::vector<std::uint8_t> present(400, 1);
    present[100] = 0;
    const Burst slower = atTrackRate(bedInstrument(4.0), burst, present);
    ASSERT_EQ(slower.surfaceTrack.size(), 400U);
    for (std::size_t m = 0; m < 400; ++m) {
        const float value = slower.surfaceTrack[m];
        EXPECT_TRUE(m == 20 ? value == 90.0F : m == 30 ? std::isnan(value) : value == 20.0F) << m;
    }
    EXPECT_EQ(std::count(slower.valid.begin(), slower.valid.end(), 0), 1);
    EXPECT_EQ(slower.valid[50], 0);
    EXPECT_EQ(slower.pressure[50], 10.0F);
}

// Components are mixed into beams, and beams into components, as they were at one instant.
TEST(VelocitiesAtOnce, GiveOneAnswerInEverySystem) {
    const SimulatedBurst simulated = sea(2.0, 4096);
    Burst beams = simulated.burst;
    for (std::size_t b = 0; b < 3; ++b) {
        beams.velocity[b] =
            shiftedSeries(beams.velocity[b], kBeamInterval * static_cast<double>(b) * 2.0);
    }
    beams.velocitiesAtOnce = true;
    const Matrix3 toXyz = beamToXyzMatrix(bedInstrument(2.0));
    const Matrix3 toEnu = product(xyzToEnuMatrix(beams.heading, beams.pitch, beams.roll), toXyz);
    for (const int method : {1, 2, 3, 4}) {
        const BurstResult expected = run(2.0, simulated.burst, method);
        for (const VelocitySystem system :
             {VelocitySystem::beam, VelocitySystem::xyz, VelocitySystem::enu}) {
            Burst burst = beams;
            burst.velocitySystem = system;
            for (std::size_t i = 0; system != VelocitySystem::beam && i < 4096; ++i) {
                const Vector3 vector = product(
                    system == VelocitySystem::xyz ? toXyz : toEnu,
                    Vector3{beams.velocity[0][i], beams.velocity[1][i], beams.velocity[2][i]});
                for (std::size_t axis = 0; axis < 3; ++axis) {
                    burst.velocity[axis][i] = static_cast<float>(vector[axis]);
                }
            }
            const BurstResult result = run(2.0, burst, method);
            EXPECT_NEAR(turn(result.waves.peakDirection, expected.waves.peakDirection), 0.0, 0.3)
                << method;
            EXPECT_NEAR(+result.waves.peakSpread, +expected.waves.peakSpread, 0.3) << method;
        }
    }
}

TEST(VelocitiesAtOnce, PressureIsAsLateAsItsInstrumentTakesIt) {
    for (const auto &[type, delay] :
         {std::pair{0, 0.32}, std::pair{1, 0.125}, std::pair{3, 0.17}}) {
        Instrument instrument = bedInstrument(2.0);
        instrument.instrumentType = type;
        EXPECT_EQ(pressureDelay(instrument, false), delay);
    }
    EXPECT_EQ(pressureDelay(bedInstrument(4.0), true), kTrackDelay);
}

std::complex<double> currentOf(const BurstResult &result) {
    return std::polar(result.currentSpeed, result.currentDirection * kRadiansPerDegree);
}

Burst cutTo(std::size_t samples, Burst burst) {
    burst.pressure.resize(samples);
    burst.surfaceTrack.resize(2 * samples);
    for (std::size_t b = 0; b < 3; ++b) {
        burst.velocity[b].resize(samples);
        burst.amplitude[b].resize(burst.amplitude[b].empty() ? 0 : samples);
    }
    burst.valid.resize(burst.valid.empty() ? 0 : samples);
    return burst;
}

// One burst's height may change with what is left out; a still end would lower all of them, and slow the current.
TEST(ShortBursts, AreCompletedFromWithin) {
    for (const int method : {1, 2, 3, 4}) {
        double ratio = 0.0;
        for (const std::uint64_t seed : {7U, 8U, 9U, 10U}) {
            const SimulatedBurst simulated = sea(2.0, 2048, seed);
            const BurstResult whole = run(2.0, simulated.burst, method);
            const BurstResult result = run(2.0, cutTo(1860, simulated.burst), method);
            ASSERT_TRUE(result.processed) << result.reason;
            ASSERT_EQ(result.notes.size(), 1U);
            EXPECT_EQ(result.notes[0],
                      "bursts of 1860 samples are made 2048 long with 188 more from within them");
            EXPECT_LT(std::abs(currentOf(result) - currentOf(whole)), 0.004) << method;
            ratio += static_cast<double>(result.waves.significantHeight) /
                     static_cast<double>(whole.waves.significantHeight) / 4.0;
        }
        EXPECT_NEAR(ratio, 1.0, 0.02) << method;
    }
}

TEST(ShortBursts, TheStretchGoesOnWhereTheBurstEnds) {
    Burst burst;
    for (int i = 0; i < 1900; ++i) {
        burst.pressure.push_back(10.0F +
                                 static_cast<float>(std::sin(0.3 * i) * std::cos(0.002 * i)));
        burst.surfaceTrack.push_back(static_cast<float>(2 * i));
        burst.surfaceTrack.push_back(static_cast<float>(2 * i + 1));
    }
    std::vector<std::uint8_t> present(1900, 1);
    ASSERT_EQ(completedLength(1900, 0), 2048U);
    const Burst whole = completed(burst, present, 2048);
    ASSERT_EQ(whole.pressure.size(), 2048U);
    ASSERT_EQ(whole.surfaceTrack.size(), 4096U);
    const double step = whole.pressure[1900] - whole.pressure[1899];
    const double before = whole.pressure[1899] - whole.pressure[1898];
    EXPECT_NEAR(step, before, 0.12);
    // All series repeat the same samples.
    const auto from = static_cast<std::size_t>(whole.surfaceTrack[3800]) / 2;
    for (std::size_t i = 0; i < 148; ++i) {
        EXPECT_EQ(whole.pressure[1900 + i], burst.pressure[from + i]);
        EXPECT_EQ(whole.surfaceTrack[3800 + 2 * i + 1], burst.surfaceTrack[2 * (from + i) + 1]);
    }
    // Rather than a stretch with gaps another one is taken.
    present[from + 3] = 0;
    const Burst other = completed(burst, present, 2048);
    const auto elsewhere = static_cast<std::size_t>(other.surfaceTrack[3800]) / 2;
    EXPECT_TRUE(elsewhere > from + 3 || elsewhere + 148 <= from + 3);
}

TEST(ShortBursts, OnlyThoseThatLackATenthAreCompleted) {
    EXPECT_EQ(completedLength(2048, 0), 2048U);
    EXPECT_EQ(completedLength(1844, 0), 2048U);
    EXPECT_EQ(completedLength(1843, 0), 1843U);
    EXPECT_EQ(completedLength(1900, 57), 1900U);
    EXPECT_EQ(completedLength(500, 0), 500U);
    EXPECT_EQ(completedLength(16000, 0), 16384U);
    EXPECT_EQ(completedLength(16385, 0), 16385U);
}

} // namespace
