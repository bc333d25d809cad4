// Physical class: whole bursts of a simulated sea through the library, in every way a burst file may hold them.
#include "run/burst_runner.hpp"

#include <cmath>
#include <cstring>

#include <gtest/gtest.h>

#include "burst/geometry.hpp"
#include "run/front_end.hpp"
#include "simulate/sea.hpp"
#include "user_error.hpp"

namespace {

using namespace orvik;

Instrument bedInstrument() {
    Instrument instrument;
    instrument.samplingRate = 2.0;
    instrument.trackSamplingRate = 4.0;
    instrument.beamAzimuth = {0.0, 120.0, 240.0};
    instrument.cellRange = 7.0;
    return instrument;
}

SimulatedBurst sea(std::size_t samples = 2048, double trackDrop = 0.0,
                   VelocitySystem system = VelocitySystem::beam) {
    SeaState state;
    WaveSystem waves;
    waves.direction = 305.0;
    state.systems = {waves};
    state.heading = 137.0;
    state.pitch = 3.0;
    state.roll = -2.0;
    SensorFaults faults;
    faults.trackDropFraction = trackDrop;
    return simulateBurst(bedInstrument(), state, faults, samples, system, 7);
}

ProcessingChoices method(int number) {
    ProcessingChoices choices;
    choices.method = number;
    return choices;
}

BurstResult run(const Burst &burst, const ProcessingChoices &choices) {
    return BurstRunner(bedInstrument(), choices).run(burst);
}

float wave(const BurstResult &result, float orvikbase::WaveParameters::*value) {
    return result.waves.*value;
}

// The same velocities in another system, each sample for itself.
Burst turnedTo(const Burst &source, VelocitySystem system) {
    Burst burst = source;
    burst.velocitySystem = system;
    Matrix3 matrix = beamToXyzMatrix(bedInstrument());
    if (system == VelocitySystem::enu) {
        matrix = product(xyzToEnuMatrix(source.heading, source.pitch, source.roll), matrix);
    }
    for (std::size_t i = 0; i < source.pressure.size(); ++i) {
        const Vector3 vector = product(
            matrix, Vector3{source.velocity[0][i], source.velocity[1][i], source.velocity[2][i]});
        for (std::size_t axis = 0; axis < 3; ++axis) {
            burst.velocity[axis][i] = static_cast<float>(vector[axis]);
        }
    }
    return burst;
}

class Methods : public testing::TestWithParam<int> {};

TEST_P(Methods, FindTheSea) {
    const SimulatedBurst simulated = sea();
    const BurstResult result = run(simulated.burst, method(GetParam()));
    ASSERT_TRUE(result.processed) << result.reason;
    EXPECT_TRUE(result.notes.empty());
    EXPECT_EQ(+result.waves.qualityFlags, 0);
    EXPECT_NEAR(wave(result, &orvikbase::WaveParameters::significantHeight),
                simulated.truth.realisedHeight, 0.08 * simulated.truth.realisedHeight);
    EXPECT_NEAR(wave(result, &orvikbase::WaveParameters::peakPeriod), simulated.truth.peakPeriod,
                0.8);
    EXPECT_NEAR(std::remainder(wave(result, &orvikbase::WaveParameters::meanDirection) -
                                   simulated.truth.meanDirection,
                               360.0),
                0.0, 8.0);
}

TEST_P(Methods, GoingToIsTheOtherWay) {
    const Burst burst = sea().burst;
    ProcessingChoices choices = method(GetParam());
    const BurstResult from = run(burst, choices);
    choices.comingFrom = false;
    const BurstResult to = run(burst, choices);
    const auto expectOpposite = [](float one, float other) {
        EXPECT_NEAR(std::remainder(static_cast<double>(one - other) - 180.0, 360.0), 0.0, 1e-3);
    };
    expectOpposite(from.waves.meanDirection, to.waves.meanDirection);
    expectOpposite(from.waves.peakDirection, to.waves.peakDirection);
    expectOpposite(from.spectra.direction()[10], to.spectra.direction()[10]);
    // The coefficients keep their one convention.
    EXPECT_EQ(float{from.spectra.get()->coefP[10]}, float{to.spectra.get()->coefP[10]});
    EXPECT_EQ(float{from.spectra.get()->coefQ[10]}, float{to.spectra.get()->coefQ[10]});
    EXPECT_EQ(wave(from, &orvikbase::WaveParameters::significantHeight),
              wave(to, &orvikbase::WaveParameters::significantHeight));
    for (std::size_t k = 0; k < 45; ++k) {
        EXPECT_NEAR(from.directionWeights[10 * 90 + k], to.directionWeights[10 * 90 + k + 45],
                    1e-4F);
    }
}

INSTANTIATE_TEST_SUITE_P(All, Methods, testing::Values(1, 2, 3, 4));

// Along-beam methods undo the conversion, so nothing but single-precision rounding may remain of it.
TEST(BurstRunner, BeamXyzAndEarthVelocitiesGiveOneAnswer) {
    const Burst beams = sea().burst;
    for (const int number : {3, 4}) {
        const BurstResult expected = run(beams, method(number));
        for (const VelocitySystem system : {VelocitySystem::xyz, VelocitySystem::enu}) {
            const BurstResult result = run(turnedTo(beams, system), method(number));
            EXPECT_NEAR(wave(result, &orvikbase::WaveParameters::significantHeight),
                        wave(expected, &orvikbase::WaveParameters::significantHeight), 1e-3);
            EXPECT_NEAR(wave(result, &orvikbase::WaveParameters::meanDirection),
                        wave(expected, &orvikbase::WaveParameters::meanDirection), 0.1);
            EXPECT_NEAR(result.currentSpeed, expected.currentSpeed, 1e-4);
        }
    }
    const BurstResult xyz = run(turnedTo(beams, VelocitySystem::xyz), method(1));
    const BurstResult enu = run(turnedTo(beams, VelocitySystem::enu), method(1));
    EXPECT_NEAR(wave(xyz, &orvikbase::WaveParameters::meanDirection),
                wave(enu, &orvikbase::WaveParameters::meanDirection), 0.01);
}

// A head mounted askew and a head that rolls are the same thing.
TEST(BurstRunner, ARollOffsetIsPartOfTheRoll) {
    Instrument askew = bedInstrument();
    askew.rollOffset = 7.5;
    for (const VelocitySystem system : {VelocitySystem::beam, VelocitySystem::enu}) {
        const Burst rolling = sea(2048, 0.0, system).burst;
        Burst offset = rolling;
        offset.roll -= 7.5;
        for (int number = 1; number <= 4; ++number) {
            const BurstResult expected = run(rolling, method(number));
            const BurstResult result = BurstRunner(askew, method(number)).run(offset);
            EXPECT_EQ(std::memcmp(&result.waves, &expected.waves, sizeof result.waves), 0)
                << number;
        }
    }
}

// A burst without a usable track does not decide how those after it are processed.
TEST(BurstRunner, ATrackIsUsedAgainAfterABurstWithoutOne) {
    const Burst good = sea().burst;
    const Burst blind = sea(2048, 0.5).burst;
    for (const int number : {2, 4}) {
        BurstRunner runner(bedInstrument(), method(number));
        const BurstResult before = runner.run(good);
        runner.run(blind);
        const BurstResult after = runner.run(good);
        EXPECT_EQ(static_cast<int>(after.parameters.method), number);
        EXPECT_EQ(std::memcmp(&after.waves, &before.waves, sizeof after.waves), 0) << number;
    }
}

TEST(BurstRunner, DeclinationTurnsEveryDirection) {
    const Burst burst = sea().burst;
    for (const int number : {1, 2, 3, 4}) {
        Instrument turned = bedInstrument();
        turned.declination = 20.0;
        const BurstResult plain = run(burst, method(number));
        const BurstResult result = BurstRunner(turned, method(number)).run(burst);
        EXPECT_NEAR(wave(result, &orvikbase::WaveParameters::meanDirection) -
                        wave(plain, &orvikbase::WaveParameters::meanDirection),
                    20.0, 1.0)
            << number;
    }
}

TEST(BurstRunner, TheDistributionPointsWhereTheWavesComeFrom) {
    const SimulatedBurst simulated = sea();
    const BurstResult result = run(simulated.burst, method(4));
    ASSERT_EQ(result.directionWeights.size(), result.energy.size() * 90);
    const std::size_t peak = 11; // 0.13 Hz, near the peak of an 8 s sea
    double east = 0.0;
    double north = 0.0;
    double sum = 0.0;
    for (std::size_t k = 0; k < 90; ++k) {
        const double weight = result.directionWeights[peak * 90 + k];
        const double angle = static_cast<double>(k) * 4.0 * kRadiansPerDegree;
        east += weight * std::sin(angle);
        north += weight * std::cos(angle);
        sum += weight;
    }
    EXPECT_NEAR(sum, 1.0, 1e-4);
    const double direction = std::atan2(east, north) / kRadiansPerDegree;
    EXPECT_NEAR(
        std::remainder(direction - static_cast<double>(result.spectra.direction()[peak]), 360.0),
        0.0, 2.0);
    EXPECT_NEAR(std::remainder(direction - simulated.truth.peakDirection, 360.0), 0.0, 15.0);
    EXPECT_NEAR(north, static_cast<double>(float{result.spectra.get()->coefP[peak]}), 0.02);
    EXPECT_NEAR(east, static_cast<double>(float{result.spectra.get()->coefQ[peak]}), 0.02);
}

TEST(BurstRunner, BadBurstsSayWhyAndLeaveNoTrace) {
    const Burst good = sea().burst;
    BurstRunner runner(bedInstrument(), method(4));
    const BurstResult before = runner.run(good);
    Burst holed = good;
    for (std::size_t i = 0; i < 206; ++i) { // 10 % of 2048 are 204
        holed.pressure[9 * i] = std::nanf("");
    }
    const BurstResult rejected = runner.run(holed);
    EXPECT_FALSE(rejected.processed);
    EXPECT_EQ(rejected.reason, "more than 10 % of the samples are missing");
    EXPECT_EQ(+rejected.waves.qualityFlags, OV_FLAG_NO_RESULT);
    EXPECT_EQ(wave(rejected, &orvikbase::WaveParameters::significantHeight), OV_MISSING);
    Burst lost = good;
    lost.pitch = kUnknown;
    const BurstResult unoriented = runner.run(lost);
    EXPECT_FALSE(unoriented.processed);
    EXPECT_EQ(unoriented.reason, "heading, pitch or roll is missing");
    EXPECT_EQ(wave(unoriented, &orvikbase::WaveParameters::significantHeight), OV_MISSING);
    const BurstResult after = runner.run(good);
    EXPECT_EQ(std::memcmp(&after.waves, &before.waves, sizeof after.waves), 0);
    EXPECT_EQ(
        std::memcmp(after.spectra.get(), before.spectra.get(), sizeof(OVFourierCoefficientSpectra)),
        0);
}

TEST(BurstRunner, AFewMissingSamplesDoNotMatter) {
    const SimulatedBurst simulated = sea();
    Burst burst = simulated.burst;
    for (std::size_t i = 0; i < 100; ++i) {
        burst.valid[20 * i + 3] = 0;
        burst.velocity[i % 3][20 * i + 3] = std::nanf("");
    }
    burst.valid[13] = 0; // marked, whatever its values say
    EXPECT_EQ(std::count(burst.valid.begin(), burst.valid.end(), 0), 101);
    EXPECT_EQ(presentSamples(burst), burst.valid);
    for (const int number : {1, 4}) {
        const BurstResult result = run(burst, method(number));
        ASSERT_TRUE(result.processed);
        EXPECT_NEAR(wave(result, &orvikbase::WaveParameters::significantHeight),
                    simulated.truth.realisedHeight, 0.08 * simulated.truth.realisedHeight);
    }
}

// A track that cannot be used must not be felt: the burst is what the method without it makes of it.
TEST(BurstRunner, AnUnusableTrackIsAsGoodAsNone) {
    const Burst dropped = sea(2048, 0.5).burst;
    Burst without = dropped;
    without.surfaceTrack.clear();
    for (const int number : {2, 4}) {
        ProcessingChoices plain = method(number - 1);
        plain.directionalInputMode = number == 2 ? 0 : 2;
        const BurstResult expected = run(dropped, plain);
        for (const Burst &burst : {dropped, without}) {
            const BurstResult result = run(burst, method(number));
            ASSERT_TRUE(result.processed);
            EXPECT_EQ(+result.waves.qualityFlags, OV_FLAG_NO_TRACK);
            EXPECT_EQ(static_cast<int>(result.parameters.method), number - 1);
            EXPECT_EQ(wave(result, &orvikbase::WaveParameters::significantHeight),
                      wave(expected, &orvikbase::WaveParameters::significantHeight));
            EXPECT_EQ(wave(result, &orvikbase::WaveParameters::meanDirection),
                      wave(expected, &orvikbase::WaveParameters::meanDirection));
            EXPECT_EQ(result.directionWeights, expected.directionWeights);
        }
        EXPECT_EQ(run(without, method(number)).notes.size(), 1U);
    }
}

// With its gaps at the end it would be rejected as a whole, and is not as half.
TEST(BurstRunner, BurstsJustShortOfAPowerOfTwoWithGapsAreCut) {
    Burst burst = sea(1000).burst;
    std::fill_n(burst.pressure.end() - 90, 90, std::nanf(""));
    const BurstResult result = run(burst, method(4));
    ASSERT_TRUE(result.processed) << result.reason;
    ASSERT_EQ(result.notes.size(), 1U);
    EXPECT_EQ(result.notes.front(), "only the first 512 of 1000 samples of a burst are used");
}

TEST(BurstRunner, AWeakEchoIsFlagged) {
    Burst burst = sea().burst;
    EXPECT_EQ(+run(burst, method(4)).waves.qualityFlags, 0);
    burst.amplitude[1][500] = 17;
    EXPECT_EQ(+run(burst, method(4)).waves.qualityFlags, OV_FLAG_WEAK_AMPLITUDE);
}

// Roughness: how much a series goes up and down from bin to bin, as a share of its values.
double roughness(std::span<const float> series) {
    double steps = 0.0;
    double sum = 0.0;
    for (std::size_t f = 6; f < 30; ++f) {
        steps += std::abs(static_cast<double>(series[f + 1] - series[f]));
        sum += static_cast<double>(series[f]);
    }
    return steps / sum;
}

TEST(BurstRunner, EachBandWidthSmoothsItsOwnSpectra) {
    const Burst burst = sea().burst;
    ProcessingChoices sharp = method(1);
    sharp.specBandWidth = 4;
    ProcessingChoices sharpDirections = method(1);
    sharpDirections.dirBandWidth = 4;
    const BurstResult smooth = run(burst, method(1));
    const BurstResult energy = run(burst, sharp);
    const BurstResult directions = run(burst, sharpDirections);
    EXPECT_GT(roughness(energy.energy), 1.5 * roughness(smooth.energy));
    EXPECT_GT(roughness(directions.spectra.spread()), 1.5 * roughness(smooth.spectra.spread()));
    EXPECT_NEAR(roughness(directions.energy), roughness(smooth.energy), 1e-3);
    EXPECT_NEAR(roughness(energy.spectra.spread()), roughness(smooth.spectra.spread()), 1e-3);
}

TEST(BurstRunner, LongerBurstsAreCutWithANote) {
    const SimulatedBurst simulated = sea(1500);
    const BurstResult result = run(simulated.burst, method(4));
    ASSERT_TRUE(result.processed);
    ASSERT_EQ(result.notes.size(), 1U);
    EXPECT_EQ(result.notes.front(), "only the first 1024 of 1500 samples of a burst are used");
}

TEST(BurstRunner, PressureAloneGivesHeightAndPeriod) {
    const SimulatedBurst simulated = sea();
    Burst burst = simulated.burst;
    burst.velocitySystem = VelocitySystem::none;
    burst.velocity = {};
    burst.heading = kUnknown;
    Instrument instrument = bedInstrument();
    instrument.cellRange = kUnknown;
    const BurstResult result = BurstRunner(instrument, method(1)).run(burst);
    ASSERT_TRUE(result.processed);
    EXPECT_NEAR(wave(result, &orvikbase::WaveParameters::significantHeight),
                simulated.truth.realisedHeight, 0.1 * simulated.truth.realisedHeight);
    EXPECT_EQ(wave(result, &orvikbase::WaveParameters::meanDirection), OV_MISSING);
    EXPECT_TRUE(std::isnan(result.currentSpeed));
    EXPECT_THROW(BurstRunner(instrument, method(3)).run(burst), UserError);
}

TEST(BurstRunner, EarthVelocitiesNeedNoAttitudeForMoments) {
    EXPECT_FALSE(needsAttitude(bedInstrument(), 1, VelocitySystem::enu));
    EXPECT_FALSE(needsAttitude(bedInstrument(), 2, VelocitySystem::enu));
    EXPECT_TRUE(needsAttitude(bedInstrument(), 3, VelocitySystem::enu));
    EXPECT_TRUE(needsAttitude(bedInstrument(), 1, VelocitySystem::beam));
    EXPECT_FALSE(needsAttitude(bedInstrument(), 1, VelocitySystem::none));
    EXPECT_TRUE(needsBeams(bedInstrument(), 1, VelocitySystem::beam));
    EXPECT_FALSE(needsBeams(bedInstrument(), 1, VelocitySystem::xyz));
    EXPECT_TRUE(needsBeams(bedInstrument(), 4, VelocitySystem::xyz));
    Instrument profile = bedInstrument();
    profile.profile = ProfileFacts{40, 0.5, 0.0, kUnknown};
    EXPECT_TRUE(needsAttitude(profile, 1, VelocitySystem::enu)); // it places the beams
    EXPECT_TRUE(needsBeams(profile, 1, VelocitySystem::enu));
    const SimulatedBurst simulated = sea(2048, 0.0, VelocitySystem::enu);
    Burst burst = simulated.burst;
    burst.heading = burst.pitch = burst.roll = kUnknown;
    const BurstResult result = run(burst, method(2));
    ASSERT_TRUE(result.processed);
    EXPECT_NEAR(std::remainder(wave(result, &orvikbase::WaveParameters::meanDirection) -
                                   simulated.truth.meanDirection,
                               360.0),
                0.0, 8.0);
}

TEST(BurstRunner, SamplingRatesThatTheLibraryKnows) {
    Instrument instrument = bedInstrument();
    for (const double rate : {1.5, 0.5, 0.75, 2.25}) {
        instrument.samplingRate = rate;
        EXPECT_THROW(BurstRunner(instrument, method(4)), UserError) << rate;
    }
    instrument.acousticFrequency = 400000.0;
    instrument.samplingRate = 0.75;
    const BurstRunner slow(instrument, method(4));
    EXPECT_FLOAT_EQ(+slow.parameters().freqMax, 0.375F);
    instrument.samplingRate = 10.0;
    EXPECT_FLOAT_EQ(+BurstRunner(instrument, method(1)).parameters().freqMax, 0.99F);
}

TEST(BurstRunner, UnusableInstrumentsAreRefused) {
    Instrument profile = bedInstrument();
    profile.instrumentType = 16;
    EXPECT_THROW(BurstRunner(profile, method(4)), UserError);
    Instrument flat = bedInstrument();
    flat.beamToXyz = std::array<double, 9>{1, 2, 3, 2, 4, 6, 3, 6, 9};
    EXPECT_THROW(BurstRunner(flat, method(4)), UserError);
    Instrument far = bedInstrument();
    far.cellRange = 5000.0;
    EXPECT_THROW(BurstRunner(far, method(4)), UserError);
    EXPECT_THROW(BurstRunner(bedInstrument(), method(5)), UsageError);
}

TEST(BurstRunner, AxesAreThoseOfTheLibrary) {
    ProcessingChoices choices = method(4);
    choices.freqMin = choices.fineFreqMin = 0.03;
    choices.freqMax = 0.5;
    choices.fineFreqMax = 0.8;
    const BurstRunner runner(bedInstrument(), choices);
    const auto axis = runner.frequencies();
    ASSERT_EQ(axis.size(), 48U);
    EXPECT_NEAR(axis.front(), 0.03, 1e-6);
    EXPECT_NEAR(axis.back(), 0.5, 1e-6);
    EXPECT_NEAR(runner.fineFrequencies().front(), 0.03, 1e-6);
    EXPECT_NEAR(runner.fineFrequencies().back(), 0.8, 1e-6);
}

// 0.45 Hz and others are, in single precision, a little less than a whole number of steps above the lowest frequency.
TEST(BurstRunner, AnAxisReachesItsUpperLimit) {
    const SimulatedBurst simulated = sea();
    for (const double step : {0.01, 0.005}) {
        for (int hundredths = 9; hundredths < 99; hundredths += 6) {
            ProcessingChoices choices = method(1);
            choices.freqStep = step;
            choices.freqMax = hundredths / 100.0;
            choices.fineFreqMax = choices.freqMax;
            const BurstResult result = run(simulated.burst, choices);
            ASSERT_TRUE(result.processed) << result.reason;
            const double steps = (choices.freqMax - choices.freqMin) / step;
            EXPECT_EQ(result.energy.size(),
                      std::min<std::size_t>(OV_MAX_FREQUENCIES,
                                            static_cast<std::size_t>(std::lround(steps)) + 1))
                << choices.freqMax;
        }
    }
    ProcessingChoices choices = method(1);
    choices.freqMax = 0.454; // between two bins: the lower one is the last
    EXPECT_EQ(run(simulated.burst, choices).energy.size(), 44U);
}

} // namespace
