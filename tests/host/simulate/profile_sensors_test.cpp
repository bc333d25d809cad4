// A profile's cells are point cells: what they hold is compared with a point instrument's cell at the same place.
#include "simulate/profile_sensors.hpp"

#include <algorithm>
#include <cmath>

#include <gtest/gtest.h>

#include "burst/profile_geometry.hpp"
#include "simulate/head_sensors.hpp"
#include "simulate/sensors.hpp"
#include "user_error.hpp"

namespace orvik {
namespace {

constexpr std::size_t kSamples = 256;

Instrument profiler(std::size_t beams) {
    Instrument instrument;
    instrument.samplingRate = 2.0;
    instrument.instrumentType = 16;
    instrument.beams = beams;
    instrument.beamAzimuth = beams == 4 ? std::vector<double>{0.0, 90.0, 180.0, 270.0}
                                        : std::vector<double>{0.0, 120.0, 240.0};
    instrument.cellSize = 0.75;
    instrument.pressureHeight = 1.0;
    instrument.profile = ProfileFacts{20, 0.5, 0.15, 2.0};
    return instrument;
}

SeaState sea() {
    SeaState state;
    state.systems = {WaveSystem{}};
    state.waterDepth = 14.0;
    state.heading = 73.0;
    state.pitch = 4.0;
    state.roll = -3.0;
    state.currentSpeed = 0.3;
    state.currentDirection = 40.0;
    return state;
}

struct Recorded {
    FrequencyGrid grid;
    std::vector<WaveComponent> components;
    ProfileRecording profile;
};

Recorded record(const Instrument &instrument, const SeaState &state) {
    Recorded recorded;
    recorded.grid = frequencyGrid(instrument, kSamples);
    RandomSource random(5);
    recorded.components = drawComponents(state, recorded.grid, random);
    recorded.profile = recordProfile(instrument, state, recorded.grid, recorded.components,
                                     kSamples, RandomSource(9));
    return recorded;
}

double meanCorrelation(const Profile &profile, std::size_t beam, std::size_t cell) {
    double sum = 0.0;
    for (std::size_t i = 0; i < kSamples; ++i) {
        sum += profile.correlation[profile.at(i, beam, cell)];
    }
    return sum / static_cast<double>(kSamples);
}

TEST(ProfileSensors, CellsHoldWhatAPointInstrumentWouldMeasureThere) {
    const Instrument instrument = profiler(3);
    const Recorded recorded = record(instrument, sea());
    for (const std::size_t cell : {std::size_t{0}, std::size_t{6}, std::size_t{12}}) {
        Instrument point = instrument;
        point.profile.reset();
        point.instrumentType = 3;
        const double height = 0.5 + 0.75 * static_cast<double>(cell + 1);
        point.cellRange = height / std::cos(25.0 * kRadiansPerDegree);
        const SensorSeries series =
            recordComponents(point, sea(), recorded.grid, recorded.components, kSamples);
        const Profile &profile = recorded.profile.profile;
        for (std::size_t i = 0; i < kSamples; ++i) {
            // The first beam of a point instrument is taken at the nominal instant.
            EXPECT_NEAR(static_cast<double>(profile.velocity[profile.at(i, 0, cell)]),
                        series.beam[0][i], 1e-6);
        }
    }
}

TEST(ProfileSensors, FourBeamsSeeOppositeHorizontalMotionAndTheSameVertical) {
    Instrument instrument = profiler(4);
    SeaState state = sea();
    state.pitch = 0.0;
    state.roll = 0.0;
    state.systems[0].significantHeight = 0.0001; // the current alone
    const Profile profile = record(instrument, state).profile.profile;
    const auto velocity = [&profile](std::size_t beam) {
        return static_cast<double>(profile.velocity[profile.at(7, beam, 3)]);
    };
    // X points to 73 degrees, Y to the left of it; the current goes to 40.
    const double along =
        0.3 * std::cos(33.0 * kRadiansPerDegree) * std::sin(25.0 * kRadiansPerDegree);
    const double left =
        0.3 * std::sin(33.0 * kRadiansPerDegree) * std::sin(25.0 * kRadiansPerDegree);
    EXPECT_NEAR(velocity(0), along, 1e-4);
    EXPECT_NEAR(velocity(1), left, 1e-4);
    EXPECT_NEAR(velocity(2), -along, 1e-4);
    EXPECT_NEAR(velocity(3), -left, 1e-4);
}

TEST(ProfileSensors, TrackAndPressureComeLaterThanTheVelocities) {
    Instrument instrument = profiler(3);
    const Recorded late = record(instrument, sea());
    instrument.profile->trackTimeOffset = 0.15 - 1.0 / instrument.samplingRate;
    const Recorded early = record(instrument, sea());
    ASSERT_EQ(late.profile.track.size(), kSamples);
    for (std::size_t i = 0; i + 1 < kSamples; ++i) {
        EXPECT_NEAR(late.profile.track[i], early.profile.track[i + 1], 1e-9);
        EXPECT_NEAR(late.profile.pressure[i], early.profile.pressure[i + 1], 1e-9);
    }
}

TEST(ProfileSensors, CorrelationFallsTowardsTheSurfaceAndIsGoneAboveIt) {
    const Profile profile = record(profiler(3), sea()).profile.profile;
    const double low = meanCorrelation(profile, 1, 1);
    const double high = meanCorrelation(profile, 1, 13);
    const double above = meanCorrelation(profile, 1, 19);
    EXPECT_GT(low, 90.0);
    EXPECT_LT(high, low - 5.0);
    EXPECT_GT(high, 50.0);
    EXPECT_LT(above, 20.0);
}

TEST(ProfileSensors, AHeadThatLooksDownHasNoTrackAndCellsBelowIt) {
    Instrument instrument = profiler(3);
    instrument.rollOffset = 180.0;
    instrument.pressureHeight = 8.0;
    const Recorded recorded = record(instrument, sea());
    EXPECT_TRUE(std::isnan(recorded.profile.track[0]));
    EXPECT_GT(meanCorrelation(recorded.profile.profile, 0, 2), 90.0);
    EXPECT_LT(meanCorrelation(recorded.profile.profile, 0, 19), 20.0); // in the bed
}

TEST(ProfileSensors, TheFirstCellMustBeInTheWater) {
    Instrument instrument = profiler(3);
    EXPECT_NO_THROW(checkProfilePlaces(instrument, sea()));
    instrument.profile->blanking = 13.0;
    EXPECT_THROW(checkProfilePlaces(instrument, sea()), UserError);
}

TEST(ProfileGeometry, ComponentsOfFourBeamsComeBackAsBeams) {
    const Instrument instrument = profiler(4);
    const SquareMatrix toAxes = beamsToAxes(instrument);
    const std::vector<Vector3> directions = allBeamDirections(instrument);
    const Vector3 motion{0.4, -0.7, 0.2};
    std::vector<double> along;
    for (const Vector3 &direction : directions) {
        along.push_back(direction[0] * motion[0] + direction[1] * motion[1] +
                        direction[2] * motion[2]);
    }
    const double expected[] = {0.4, -0.7, 0.2, 0.2};
    for (std::size_t row = 0; row < 4; ++row) {
        double sum = 0.0;
        for (std::size_t b = 0; b < 4; ++b) {
            sum += toAxes.at(row, b) * along[b];
        }
        EXPECT_NEAR(sum, expected[row], 1e-12);
    }
    const SquareMatrix one = product(toAxes, inverse(toAxes, "test"));
    for (std::size_t i = 0; i < 16; ++i) {
        EXPECT_NEAR(one.values[i], i % 5 == 0 ? 1.0 : 0.0, 1e-12);
    }
    Instrument flat = instrument;
    flat.beamAzimuth = {0.0, 0.0, 180.0, 180.0};
    EXPECT_THROW(beamsToAxes(flat), UserError);
}

// Still water and no current: what moves in a cell under the surface is the surface's own echo.
TEST(ProfileSensors, TheSurfacesEchoShakesTheCellsItReaches) {
    SeaState still = sea();
    still.systems[0].significantHeight = 0.0001;
    still.currentSpeed = 0.0;
    Instrument instrument = profiler(3);
    instrument.cellSize = 0.25;
    instrument.profile = ProfileFacts{50, 0.5, 0.15, 2.0};
    const Profile profile = record(instrument, still).profile.profile;
    std::size_t reached = 0;
    for (std::size_t cell = 0; cell < 50; ++cell) {
        double most = 0.0;
        for (std::size_t i = 0; i < kSamples; ++i) {
            most = std::max(
                most, std::abs(static_cast<double>(profile.velocity[profile.at(i, 0, cell)])));
        }
        const double correlation = meanCorrelation(profile, 0, cell);
        if (correlation > 70.0) {
            EXPECT_LT(most, 0.001) << cell;
        } else if (correlation > 20.0) {
            EXPECT_GT(most, 0.05) << cell;
            ++reached;
        }
    }
    EXPECT_GT(reached, 0U);
}

} // namespace
} // namespace orvik
