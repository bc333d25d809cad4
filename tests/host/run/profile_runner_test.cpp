// Physical class: whole bursts of a profile instrument through the library.
#include <cmath>
#include <cstring>

#include <gtest/gtest.h>

#include "burst/geometry.hpp"
#include "run/burst_runner.hpp"
#include "simulate/sea.hpp"
#include "user_error.hpp"

namespace {

using namespace orvik;

constexpr double kFrom = 305.0;
constexpr double kDepth = 15.0;

Instrument profiler(std::size_t beams, std::size_t cells = 40) {
    Instrument instrument;
    instrument.samplingRate = 2.0;
    instrument.trackSamplingRate = 2.0;
    instrument.instrumentType = 16;
    instrument.beams = beams;
    instrument.beamAzimuth = beams == 4 ? std::vector<double>{0.0, 90.0, 180.0, 270.0}
                                        : std::vector<double>{0.0, 120.0, 240.0};
    instrument.cellSize = 20.0 / static_cast<double>(cells);
    instrument.pressureHeight = 0.5;
    instrument.profile = ProfileFacts{cells, 0.5, 0.12, 2.5};
    return instrument;
}

SimulatedBurst sea(const Instrument &instrument, VelocitySystem system = VelocitySystem::beam,
                   double trackDrop = 0.0) {
    SeaState state;
    WaveSystem waves;
    waves.direction = kFrom;
    state.systems = {waves};
    state.waterDepth = kDepth;
    state.heading = 137.0;
    state.pitch = 3.0;
    state.roll = -2.0;
    SensorFaults faults;
    faults.trackDropFraction = trackDrop;
    return simulateBurst(instrument, state, faults, 2048, system, 7);
}

ProcessingChoices method(int number) {
    ProcessingChoices choices;
    choices.method = number;
    return choices;
}

double turn(float direction, double from) {
    return std::remainder(static_cast<double>(direction) - from, 360.0);
}

struct Case {
    std::size_t beams;
    VelocitySystem system;
};

class EveryHead : public testing::TestWithParam<Case> {};

TEST_P(EveryHead, GivesTheSeaBackInEveryMethod) {
    const Instrument instrument = profiler(GetParam().beams);
    const SimulatedBurst simulated = sea(instrument, GetParam().system);
    for (int number = 1; number <= 4; ++number) {
        const BurstResult result = BurstRunner(instrument, method(number)).run(simulated.burst);
        ASSERT_TRUE(result.processed) << result.reason;
        const double height = static_cast<double>(result.waves.significantHeight);
        EXPECT_NEAR(height, simulated.truth.realisedHeight, 0.05 * simulated.truth.realisedHeight)
            << number;
        EXPECT_NEAR(turn(result.waves.meanDirection, kFrom), 0.0, 8.0) << number;
        EXPECT_NEAR(1.0 / static_cast<double>(result.waves.peakPeriod), 0.125, 0.012) << number;
        EXPECT_EQ(static_cast<int>(result.parameters.method), number);
        EXPECT_EQ(result.waves.qualityFlags, 0) << number;
        EXPECT_TRUE(result.notes.empty()) << number;
        const double cell = result.waves.selectedCell; // from 1
        EXPECT_NEAR(static_cast<double>(result.waves.cellVerticalRange),
                    0.5 + cell * instrument.cellSize, 0.02)
            << number;
        EXPECT_EQ(result.spectra.fineCount(),
                  BurstRunner(instrument, method(number)).fineFrequencies().size())
            << number;
    }
}

INSTANTIATE_TEST_SUITE_P(Heads, EveryHead,
                         testing::Values(Case{3, VelocitySystem::beam},
                                         Case{3, VelocitySystem::xyz}, Case{3, VelocitySystem::enu},
                                         Case{4, VelocitySystem::beam},
                                         Case{4, VelocitySystem::xyz},
                                         Case{4, VelocitySystem::enu}));

// The cell whose far end is just below 90 % of the deepest trough's distance, with no more than a cell to spare.
TEST(ProfileRunner, TheCellJustBelowTheTroughsIsUsed) {
    for (const std::size_t cells : {std::size_t{20}, std::size_t{80}, std::size_t{256}}) {
        const Instrument instrument = profiler(4, cells);
        const SimulatedBurst simulated = sea(instrument);
        const float trough = *std::min_element(simulated.burst.surfaceTrack.begin(),
                                               simulated.burst.surfaceTrack.end());
        for (const int number : {2, 4}) {
            const BurstResult result = BurstRunner(instrument, method(number)).run(simulated.burst);
            const double cell = result.waves.selectedCell; // from 1
            // The tilt raises the steepest beam: k = cos(slant - tilt) instead of cos(slant).
            const double tilt =
                std::acos(std::cos(3.0 * kRadiansPerDegree) * std::cos(2.0 * kRadiansPerDegree));
            const double steep =
                std::cos(25.0 * kRadiansPerDegree - tilt) / std::cos(25.0 * kRadiansPerDegree);
            const double farEnd = (0.5 + (cell + 1.0) * instrument.cellSize) * steep;
            EXPECT_LT(farEnd, 0.9 * static_cast<double>(trough) + 0.05) << cells;
            EXPECT_GT(farEnd + instrument.cellSize * steep,
                      0.9 * static_cast<double>(trough) - 0.05)
                << cells;
            EXPECT_NEAR(static_cast<double>(result.waves.cellVerticalRange),
                        0.5 + cell * instrument.cellSize, 0.02);
        }
    }
}

TEST(ProfileRunner, AWiderMarginTakesALowerCell) {
    for (const std::size_t beams : {std::size_t{3}, std::size_t{4}}) {
        const Instrument instrument = profiler(beams);
        const Burst burst = sea(instrument).burst;
        for (const int number : {2, 4}) {
            ProcessingChoices wide = method(number);
            wide.troughMargin = 45.0;
            const double usual =
                BurstRunner(instrument, method(number)).run(burst).waves.selectedCell;
            const double lower = BurstRunner(instrument, wide).run(burst).waves.selectedCell;
            // Far ends, 0.5 m of blanking and a cell more than its centre, at half of what they were.
            EXPECT_NEAR(1.0 + (lower + 1.0) * instrument.cellSize * 2.0,
                        0.5 + (usual + 1.0) * instrument.cellSize, 2.0 * instrument.cellSize)
                << beams << " beams, method " << number;
        }
    }
}

TEST(ProfileRunner, WithoutATrackTheCellFollowsFromThePressure) {
    for (const std::size_t beams : {std::size_t{3}, std::size_t{4}}) {
        const Instrument instrument = profiler(beams);
        SimulatedBurst simulated = sea(instrument, VelocitySystem::beam, 1.0);
        for (const int number : {2, 4}) {
            const BurstResult result = BurstRunner(instrument, method(number)).run(simulated.burst);
            ASSERT_TRUE(result.processed);
            EXPECT_EQ(static_cast<int>(result.parameters.method), number - 1);
            EXPECT_TRUE(result.notes.empty()); // there was a track, of which nothing could be used
            EXPECT_EQ(result.waves.qualityFlags & OV_FLAG_NO_TRACK, OV_FLAG_NO_TRACK);
            const float lowest =
                *std::min_element(simulated.burst.pressure.begin(), simulated.burst.pressure.end());
            EXPECT_LT(static_cast<double>(result.waves.cellVerticalRange),
                      0.8 * static_cast<double>(lowest));
            EXPECT_NEAR(turn(result.waves.meanDirection, kFrom), 0.0, 8.0);
        }
    }
}

TEST(ProfileRunner, AHeadThatLooksDownFromMidWater) {
    for (const VelocitySystem system : {VelocitySystem::beam, VelocitySystem::enu}) {
        Instrument instrument = profiler(3);
        instrument.rollOffset = 180.0;
        instrument.pressureHeight = 10.0;
        instrument.profile->cells = 16;
        const SimulatedBurst simulated = sea(instrument, system);
        for (const int number : {1, 3}) {
            const BurstResult result = BurstRunner(instrument, method(number)).run(simulated.burst);
            ASSERT_TRUE(result.processed);
            EXPECT_EQ(result.waves.selectedCell,
                      1); // the library knows cells above the head: it stays at the first
            const double height = static_cast<double>(result.waves.significantHeight);
            EXPECT_NEAR(height, simulated.truth.realisedHeight,
                        0.06 * simulated.truth.realisedHeight)
                << number;
            EXPECT_NEAR(turn(result.waves.meanDirection, kFrom), 0.0, 8.0) << number;
        }
    }
}

// A head mounted askew and a head that rolls are the same thing.
TEST(ProfileRunner, ARollOffsetIsPartOfTheRoll) {
    for (const std::size_t beams : {std::size_t{3}, std::size_t{4}}) {
        for (const VelocitySystem system : {VelocitySystem::beam, VelocitySystem::enu}) {
            const Instrument straight = profiler(beams);
            const Burst rolling = sea(straight, system).burst;
            Instrument askew = straight;
            askew.rollOffset = 7.5;
            Burst offset = rolling;
            offset.roll -= 7.5;
            for (int number = 1; number <= 4; ++number) {
                const BurstResult expected = BurstRunner(straight, method(number)).run(rolling);
                const BurstResult result = BurstRunner(askew, method(number)).run(offset);
                EXPECT_EQ(std::memcmp(&result.waves, &expected.waves, sizeof result.waves), 0)
                    << beams << " beams, method " << number;
            }
        }
    }
}

// Track and pressure taken late tell of the same sea once the library knows how late.
TEST(ProfileRunner, ALateTrackChangesNothing) {
    for (const std::size_t beams : {std::size_t{3}, std::size_t{4}}) {
        Instrument prompt = profiler(beams);
        prompt.profile->trackTimeOffset = 0.0;
        Instrument late = prompt;
        late.profile->trackTimeOffset = 0.5;
        const Burst promptBurst = sea(prompt).burst;
        const Burst lateBurst = sea(late).burst;
        for (int number = 1; number <= 4; ++number) {
            const BurstResult expected = BurstRunner(prompt, method(number)).run(promptBurst);
            const BurstResult result = BurstRunner(late, method(number)).run(lateBurst);
            EXPECT_NEAR(
                turn(result.waves.meanDirection, static_cast<double>(expected.waves.meanDirection)),
                0.0, 1.0)
                << beams << " beams, method " << number;
            EXPECT_NEAR(static_cast<double>(result.waves.peakSpread),
                        static_cast<double>(expected.waves.peakSpread), 1.0)
                << beams << " beams, method " << number;
        }
    }
}

TEST(ProfileRunner, WithoutCorrelationsEveryCellIsTrusted) {
    const Instrument instrument = profiler(4);
    Burst burst = sea(instrument).burst;
    Burst silent = burst;
    silent.profile->correlation.clear();
    for (std::uint8_t &correlation : burst.profile->correlation) {
        correlation = 100;
    }
    for (const int number : {1, 4}) {
        const BurstResult expected = BurstRunner(instrument, method(number)).run(burst);
        const BurstResult result = BurstRunner(instrument, method(number)).run(silent);
        ASSERT_TRUE(result.processed) << result.reason;
        EXPECT_EQ(std::memcmp(&result.waves, &expected.waves, sizeof result.waves), 0) << number;
    }
}

// The echo of what has no velocity may be as good as it likes.
TEST(ProfileRunner, CellsThatLackVelocitiesAreNotUsed) {
    const Instrument instrument = profiler(4);
    const Burst whole = sea(instrument).burst;
    const std::int32_t usual = BurstRunner(instrument, method(2)).run(whole).waves.selectedCell;
    Burst holed = whole;
    for (std::size_t i = 0; i < holed.pressure.size(); ++i) {
        if (i % 4 != 0) {
            holed.profile->velocity[holed.profile->at(i, 2, static_cast<std::size_t>(usual) - 1)] =
                std::nanf("");
        }
    }
    const BurstResult result = BurstRunner(instrument, method(2)).run(holed);
    ASSERT_TRUE(result.processed);
    EXPECT_EQ(result.waves.selectedCell, usual - 1);
}

TEST(ProfileRunner, KnownNoiseOfVelocitiesIsTakenAway) {
    Instrument known = profiler(4);
    known.pingsPerSample = 1;
    Instrument unknown = known;
    unknown.profile->ambiguityVelocity = kUnknown;
    const Burst burst = sea(known).burst;
    const BurstResult with = BurstRunner(known, method(1)).run(burst);
    const BurstResult without = BurstRunner(unknown, method(1)).run(burst);
    for (std::size_t f = 14; f < 20; ++f) {
        EXPECT_LT(with.spectra.velocityEnergy()[f], without.spectra.velocityEnergy()[f]) << f;
    }
}

TEST(ProfileRunner, BurstsInAirOrInHandAreNoWaves) {
    for (const std::size_t beams : {std::size_t{3}, std::size_t{4}}) {
        const Instrument instrument = profiler(beams);
        const Burst good = sea(instrument).burst;
        Burst air = good;
        for (std::uint8_t &correlation : air.profile->correlation) {
            correlation = 14;
        }
        Burst hand = good;
        for (std::size_t i = 0; i < hand.pressure.size(); ++i) {
            hand.attitude[0].push_back(137.0F + 25.0F * std::sin(0.1F * static_cast<float>(i)));
        }
        for (int number = 1; number <= 4; ++number) {
            BurstRunner runner(instrument, method(number));
            const BurstResult before = runner.run(good);
            for (const Burst &bad : {air, hand}) {
                const BurstResult result = runner.run(bad);
                EXPECT_FALSE(result.processed);
                EXPECT_EQ(result.waves.qualityFlags, OV_FLAG_NO_RESULT);
            }
            EXPECT_NE(runner.run(air).reason.find("no echoes"), std::string::npos);
            EXPECT_NE(runner.run(hand).reason.find("does not stand still"), std::string::npos);
            const BurstResult after = runner.run(good);
            EXPECT_EQ(std::memcmp(&after.waves, &before.waves, sizeof after.waves), 0) << number;
        }
    }
}

TEST(ProfileRunner, MissingSamplesAndCells) {
    const Instrument instrument = profiler(3);
    const SimulatedBurst simulated = sea(instrument);
    Burst gaps = simulated.burst;
    for (std::size_t i = 5; i < gaps.pressure.size(); i += 40) {
        for (std::size_t at = gaps.profile->at(i, 0, 0); at < gaps.profile->at(i + 1, 0, 0); ++at) {
            gaps.profile->velocity[at] = std::nanf("");
        }
    }
    Burst most = gaps;
    for (std::size_t i = 0; i < most.pressure.size(); i += 7) {
        most.pressure[i] = std::nanf("");
    }
    for (const int number : {1, 3}) {
        BurstRunner runner(instrument, method(number));
        const BurstResult result = runner.run(gaps);
        ASSERT_TRUE(result.processed);
        EXPECT_NEAR(turn(result.waves.meanDirection, kFrom), 0.0, 8.0);
        const BurstResult rejected = runner.run(most);
        EXPECT_FALSE(rejected.processed);
        EXPECT_EQ(rejected.reason, "more than 10 % of the samples are missing");
    }
}

TEST(ProfileRunner, WhatCannotBeToldToTheLibraryIsRefused) {
    Instrument slow = profiler(3);
    slow.samplingRate = 0.75;
    EXPECT_THROW(BurstRunner(slow, method(1)), UserError);
    Instrument late = profiler(3);
    late.profile->trackTimeOffset = 4.0;
    EXPECT_THROW(BurstRunner(late, method(1)), UserError);
    Instrument bare = profiler(3);
    bare.profile.reset();
    EXPECT_THROW(BurstRunner(bare, method(1)), UserError);
}

} // namespace
