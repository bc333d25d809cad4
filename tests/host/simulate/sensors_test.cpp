// One plane wave at a time, against closed forms written out by hand: places, instants, signs and the current.
#include "simulate/sensors.hpp"

#include <gtest/gtest.h>

#include <cmath>

#include "burst/geometry.hpp"
#include "simulate/wave_theory.hpp"
#include "user_error.hpp"

namespace orvik {
namespace {

constexpr std::size_t kSamples = 256;
constexpr double kRounding = 1e-9;

// Slants in the ratio 3:4:5, one beam along X, one along Y and one along minus X.
Instrument testInstrument() {
    Instrument instrument;
    instrument.samplingRate = 2.0;
    instrument.slantAngle = std::atan2(3.0, 4.0) / kRadiansPerDegree;
    instrument.beamAzimuth = {0.0, 90.0, 180.0};
    instrument.cellRange = 5.0;
    instrument.pressureHeight = 1.0;
    return instrument;
}

SeaState testSea() {
    SeaState sea;
    sea.waterDepth = 13.0;
    return sea;
}

struct PlaneWave {
    WaveComponent component;
    double omega = 0.0;
    double kx = 0.0;
    double ky = 0.0;
    double phase = 0.0;
    double amplitude = 0.0;

    // Argument of the cosine that is the elevation.
    [[nodiscard]] double argument(double x, double y, double t) const {
        return kx * x + ky * y - omega * t + phase;
    }
};

// A wave from `from` degrees in the current of the sea, at the grid line nearest to `frequency`.
PlaneWave planeWave(const FrequencyGrid &grid, const SeaState &sea, double frequency, double from) {
    PlaneWave wave;
    const double to = (from + 180.0) * kRadiansPerDegree;
    const double along = sea.currentSpeed * std::cos(to - sea.currentDirection * kRadiansPerDegree);
    wave.component.line = static_cast<std::size_t>(std::lround(frequency / grid.width));
    wave.omega = kTwoPi * grid.frequency(wave.component.line);
    wave.component.wavenumber = *solveWavenumber(wave.omega, sea.waterDepth, along);
    wave.component.toEast = std::sin(to);
    wave.component.toNorth = std::cos(to);
    wave.kx = wave.component.wavenumber * wave.component.toEast;
    wave.ky = wave.component.wavenumber * wave.component.toNorth;
    wave.phase = 0.7;
    wave.amplitude = 0.8;
    wave.component.amplitude = std::polar(wave.amplitude, wave.phase);
    return wave;
}

struct Orbit {
    double east, north, up;
};

// Orbital velocity with the intrinsic frequency, plus the current.
Orbit orbit(const PlaneWave &wave, const SeaState &sea, const Vector3 &place, double t) {
    const double k = wave.component.wavenumber;
    const double to = sea.currentDirection * kRadiansPerDegree;
    const double u = sea.currentSpeed * std::sin(to);
    const double v = sea.currentSpeed * std::cos(to);
    const double sigma = wave.omega - wave.kx * u - wave.ky * v;
    const double scale = wave.amplitude * sigma / std::sinh(k * sea.waterDepth);
    const double argument = wave.argument(place[0], place[1], t);
    const double height = k * (place[2] + sea.waterDepth);
    const double forward = scale * std::cosh(height) * std::cos(argument);
    return {u + forward * wave.component.toEast, v + forward * wave.component.toNorth,
            scale * std::sinh(height) * std::sin(argument)};
}

// Compares every series of one plane wave with the closed forms. `axes` are X, Y, Z on the earth.
void expectClosedForms(const Instrument &instrument, const SeaState &sea,
                       const std::array<Vector3, 3> &axes, double frequency, double from,
                       double pressureLag) {
    const FrequencyGrid grid = frequencyGrid(instrument, kSamples);
    const PlaneWave wave = planeWave(grid, sea, frequency, from);
    const SensorSeries series = recordComponents(instrument, sea, grid, {wave.component}, kSamples);
    const double k = wave.component.wavenumber;
    const double headZ = 1.0 - sea.waterDepth;
    const double rate = instrument.samplingRate;
    const double signs[3][2] = {{0.6, 0.0}, {0.0, 0.6}, {-0.6, 0.0}};
    for (std::size_t b = 0; b < 3; ++b) {
        Vector3 beam{};
        for (std::size_t c = 0; c < 3; ++c) {
            beam[c] = signs[b][0] * axes[0][c] + signs[b][1] * axes[1][c] + 0.8 * axes[2][c];
        }
        const Vector3 cell{5.0 * beam[0], 5.0 * beam[1], headZ + 5.0 * beam[2]};
        for (std::size_t i = 0; i < kSamples; ++i) {
            const double t = static_cast<double>(i) / rate - 0.0625 * static_cast<double>(b);
            const Orbit water = orbit(wave, sea, cell, t);
            const double along = beam[0] * water.east + beam[1] * water.north + beam[2] * water.up;
            ASSERT_NEAR(series.beam[b][i], along, kRounding) << "beam " << b << " sample " << i;
        }
    }
    const double gain = std::cosh(k * 1.0) / std::cosh(k * sea.waterDepth);
    for (std::size_t i = 0; i < kSamples; ++i) {
        const double t = static_cast<double>(i) / rate - pressureLag;
        const double expected =
            -headZ + gain * wave.amplitude * std::cos(wave.argument(0.0, 0.0, t));
        ASSERT_NEAR(series.pressure[i], expected, kRounding) << "pressure, sample " << i;
    }
    const Vector3 &z = axes[2];
    for (std::size_t m = 0; m < 2 * kSamples; ++m) {
        const double t = static_cast<double>(m) / (2.0 * rate);
        const double reach = -headZ / z[2];
        const double surface =
            wave.amplitude * std::cos(wave.argument(reach * z[0], reach * z[1], t - 0.1875));
        ASSERT_NEAR(series.track[m], (surface - headZ) / z[2], kRounding) << "track, element " << m;
        ASSERT_NEAR(series.elevation[m], wave.amplitude * std::cos(wave.argument(0.0, 0.0, t)),
                    kRounding);
    }
}

TEST(Sensors, LevelHeadingNorth) {
    const std::array<Vector3, 3> axes{Vector3{0, 1, 0}, Vector3{-1, 0, 0}, Vector3{0, 0, 1}};
    for (const double from : {0.0, 90.0, 180.0, 270.0, 233.0}) {
        SCOPED_TRACE(from);
        expectClosedForms(testInstrument(), testSea(), axes, 0.11, from, 0.17);
    }
}

TEST(Sensors, LevelHeadingEast) {
    SeaState sea = testSea();
    sea.heading = 90.0;
    const std::array<Vector3, 3> axes{Vector3{1, 0, 0}, Vector3{0, 1, 0}, Vector3{0, 0, 1}};
    expectClosedForms(testInstrument(), sea, axes, 0.16, 300.0, 0.17);
}

TEST(Sensors, TheDeclinationTurnsTheCompassHeading) {
    SeaState sea = testSea();
    sea.heading = 78.0;
    Instrument instrument = testInstrument();
    instrument.declination = 12.0;
    const std::array<Vector3, 3> axes{Vector3{1, 0, 0}, Vector3{0, 1, 0}, Vector3{0, 0, 1}};
    expectClosedForms(instrument, sea, axes, 0.16, 300.0, 0.17);
}

TEST(Sensors, TiltMovesCellsAndTrack) {
    SeaState sea = testSea();
    sea.heading = 90.0;
    const double s = std::sin(9.0 * kRadiansPerDegree);
    const double c = std::cos(9.0 * kRadiansPerDegree);
    sea.pitch = 9.0;
    const std::array<Vector3, 3> pitched{Vector3{c, 0, s}, Vector3{0, 1, 0}, Vector3{-s, 0, c}};
    expectClosedForms(testInstrument(), sea, pitched, 0.13, 270.0, 0.17);
    sea.pitch = 0.0;
    sea.roll = 9.0;
    const std::array<Vector3, 3> rolled{Vector3{1, 0, 0}, Vector3{0, c, s}, Vector3{0, -s, c}};
    expectClosedForms(testInstrument(), sea, rolled, 0.13, 200.0, 0.17);
}

TEST(Sensors, CurrentShiftsWavesAndMovesTheWater) {
    const std::array<Vector3, 3> axes{Vector3{0, 1, 0}, Vector3{-1, 0, 0}, Vector3{0, 0, 1}};
    SeaState sea = testSea();
    sea.currentSpeed = 0.9;
    for (const double direction :
         {90.0, 270.0, 20.0}) { // with, against and across a wave from the west
        SCOPED_TRACE(direction);
        sea.currentDirection = direction;
        expectClosedForms(testInstrument(), sea, axes, 0.18, 270.0, 0.17);
    }
}

struct DelayCase {
    int type;
    double rate;
    double pressureLag;
};

TEST(Sensors, PressureDelays) {
    const std::array<Vector3, 3> axes{Vector3{0, 1, 0}, Vector3{-1, 0, 0}, Vector3{0, 0, 1}};
    const DelayCase cases[] = {{3, 2.0, 0.17},  {3, 1.0, 0.42},  {3, 0.75, 0.587}, {1, 2.0, 0.125},
                               {1, 1.0, 0.125}, {0, 0.75, 0.32}, {0, 2.0, 0.32}};
    for (const DelayCase &row : cases) {
        SCOPED_TRACE(::testing::Message() << "type " << row.type << " rate " << row.rate);
        Instrument instrument = testInstrument();
        instrument.instrumentType = row.type;
        instrument.samplingRate = row.rate;
        expectClosedForms(instrument, testSea(), axes, 0.09, 315.0, row.pressureLag);
    }
}

TEST(Sensors, WavesAboveTheSamplesNyquistFold) {
    const std::array<Vector3, 3> axes{Vector3{0, 1, 0}, Vector3{-1, 0, 0}, Vector3{0, 0, 1}};
    Instrument instrument = testInstrument();
    instrument.samplingRate = 1.0; // samples resolve 0.5 Hz, the track 1 Hz
    SeaState shallow = testSea();
    shallow.waterDepth = 6.0;
    expectClosedForms(instrument, shallow, axes, 0.56, 250.0, 0.42);
}

// The same as the closed forms, told as an observer would.
TEST(Sensors, UnderACrestFromTheWestWaterGoesEast) {
    Instrument instrument = testInstrument();
    const SeaState sea = testSea();
    const FrequencyGrid grid = frequencyGrid(instrument, kSamples);
    const PlaneWave wave = planeWave(grid, sea, 0.1, 270.0);
    const SensorSeries series = recordComponents(instrument, sea, grid, {wave.component}, kSamples);
    // Heading 0: beam 1 along Y leans west, so it sees water that goes east come towards the head.
    double pressureTimesBeam = 0.0;
    double beamLead = 0.0;
    for (std::size_t i = 1; i + 1 < kSamples; ++i) {
        const double crest = series.pressure[i] - 12.0;
        pressureTimesBeam += crest * series.beam[1][i];
        // Beams 0 and 2 lean north and south, across the wave: only the vertical velocity is in their sum.
        const double rising = series.pressure[i + 1] - series.pressure[i - 1];
        beamLead += rising * (series.beam[0][i] + series.beam[2][i]);
    }
    EXPECT_LT(pressureTimesBeam, 0.0);
    EXPECT_GT(beamLead, 0.0) << "water rises while the surface rises";
}

TEST(Sensors, TurningHeadingAndSeaTogetherChangesNothing) {
    const Instrument instrument = testInstrument();
    const FrequencyGrid grid = frequencyGrid(instrument, kSamples);
    SeaState sea = testSea();
    sea.heading = 20.0;
    sea.pitch = 5.0;
    sea.roll = -7.0;
    const auto record = [&](double turn) {
        SeaState turned = sea;
        turned.heading += turn;
        const PlaneWave wave = planeWave(grid, turned, 0.12, 250.0 + turn);
        return recordComponents(instrument, turned, grid, {wave.component}, kSamples);
    };
    const SensorSeries plain = record(0.0);
    const SensorSeries turned = record(133.0);
    for (std::size_t i = 0; i < kSamples; ++i) {
        for (std::size_t b = 0; b < 3; ++b) {
            ASSERT_NEAR(plain.beam[b][i], turned.beam[b][i], kRounding);
        }
        ASSERT_NEAR(plain.track[i], turned.track[i], kRounding);
    }
}

TEST(Sensors, RefuseDryPlaces) {
    Instrument instrument = testInstrument();
    SeaState sea = testSea();
    EXPECT_NO_THROW(checkPlaces(instrument, sea));
    sea.waterDepth = 1.0;
    EXPECT_THROW(checkPlaces(instrument, sea), UserError); // head at the surface
    sea.waterDepth = 5.0;
    EXPECT_THROW(checkPlaces(instrument, sea), UserError); // cell 4 m above the head at the surface
    sea.waterDepth = 5.01;
    EXPECT_NO_THROW(checkPlaces(instrument, sea));
    sea.pitch = 60.0; // the beam along minus X points down now, and from this far reaches the bed
    sea.waterDepth = 40.0;
    EXPECT_NO_THROW(checkPlaces(instrument, sea));
    instrument.cellRange = 20.0;
    EXPECT_THROW(checkPlaces(instrument, sea), UserError);
}

} // namespace
} // namespace orvik
