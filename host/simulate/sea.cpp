#include "simulate/sea.hpp"

#include <algorithm>
#include <cmath>
#include <limits>

#include "burst/geometry.hpp"
#include "simulate/components.hpp"
#include "simulate/sensors.hpp"
#include "simulate/wave_theory.hpp"

namespace orvik {

namespace {

// A spike leaves the true value by this much [m, dbar], either way.
constexpr double kSmallestSpike = 2.0;
constexpr double kGreatestSpike = 6.0;
constexpr double kShortestDistance = 0.1; // [m] an echo from nearer would be the head's own ringing

// Echo strength [counts] of a healthy beam.
constexpr double kLowestAmplitude = 120.0;
constexpr double kHighestAmplitude = 180.0;

constexpr float kMissing = std::numeric_limits<float>::quiet_NaN();

// The sea and each of the instrument's faults draw from streams of their own, so that the same sea can be recorded with
// other faults.
enum Stream : std::uint64_t {
    seaStream,
    pressureNoiseStream,
    pressureSpikeStream,
    trackNoiseStream,
    trackSpikeStream,
    amplitudeStream,
    missingStream,
    trackDropStream,
    velocityNoiseStream // and the two after it: one for each beam
};

RandomSource stream(std::uint64_t seed, std::uint64_t which) {
    return RandomSource(mixedSeed(seed, which));
}

std::vector<float> asFloats(const std::vector<double> &values) {
    return {values.begin(), values.end()};
}

double realisedHeight(const std::vector<double> &elevation) {
    const auto count = static_cast<double>(elevation.size());
    double sum = 0.0;
    double squares = 0.0;
    for (const double z : elevation) {
        sum += z;
        squares += z * z;
    }
    return 4.0 * std::sqrt(std::max(0.0, squares / count - sum * sum / (count * count)));
}

void addNoise(std::vector<double> &series, double deviation, RandomSource random) {
    for (double &value : series) {
        value += deviation * random.normal();
    }
}

void addSpikes(std::vector<double> &series, double share, RandomSource random) {
    for (double &value : series) {
        const bool spiked = random.uniform() < share;
        const double size = kSmallestSpike + (kGreatestSpike - kSmallestSpike) * random.uniform();
        const bool upward = random.uniform() < 0.5;
        if (spiked) {
            value = std::max(value + (upward ? size : -size), kShortestDistance);
        }
    }
}

void addFaults(SensorSeries &series, const SensorFaults &faults, std::uint64_t seed) {
    addNoise(series.pressure, faults.pressureNoise, stream(seed, pressureNoiseStream));
    addSpikes(series.pressure, faults.spikeFraction, stream(seed, pressureSpikeStream));
    addNoise(series.track, faults.trackNoise, stream(seed, trackNoiseStream));
    addSpikes(series.track, faults.spikeFraction, stream(seed, trackSpikeStream));
    for (std::size_t b = 0; b < 3; ++b) {
        addNoise(series.beam[b], faults.velocityNoise, stream(seed, velocityNoiseStream + b));
    }
}

void drawAmplitudes(Burst &burst, std::size_t samples, RandomSource random) {
    for (auto &amplitude : burst.amplitude) {
        amplitude.resize(samples);
        for (auto &counts : amplitude) {
            counts = static_cast<std::uint16_t>(
                kLowestAmplitude + (kHighestAmplitude - kLowestAmplitude) * random.uniform());
        }
    }
}

// Velocities as the instrument stores them: turned from its beams with its own compass and tilt sensor.
void storeVelocities(const Instrument &instrument, const SensorSeries &series, Burst &burst) {
    if (burst.velocitySystem == VelocitySystem::none) {
        return;
    }
    Matrix3 turn{1.0, 0.0, 0.0, 0.0, 1.0, 0.0, 0.0, 0.0, 1.0};
    if (burst.velocitySystem != VelocitySystem::beam) {
        turn = beamToXyzMatrix(instrument);
    }
    if (burst.velocitySystem == VelocitySystem::enu) {
        turn = product(xyzToEnuMatrix(burst.heading, burst.pitch, burst.roll), turn);
    }
    for (std::size_t i = 0; i < series.pressure.size(); ++i) {
        const Vector3 stored =
            product(turn, Vector3{series.beam[0][i], series.beam[1][i], series.beam[2][i]});
        for (std::size_t c = 0; c < 3; ++c) {
            burst.velocity[c].push_back(static_cast<float>(stored[c]));
        }
    }
}

// A missing sample is missing in every series.
void loseSample(Burst &burst, std::size_t index) {
    burst.valid[index] = 0;
    burst.pressure[index] = kMissing;
    burst.surfaceTrack[kTrackPerSample * index] = kMissing;
    burst.surfaceTrack[kTrackPerSample * index + 1] = kMissing;
    for (auto &component : burst.velocity) {
        if (!component.empty()) {
            component[index] = kMissing;
        }
    }
}

void loseSamples(Burst &burst, const SensorFaults &faults, std::uint64_t seed) {
    RandomSource missing = stream(seed, missingStream);
    burst.valid.assign(burst.pressure.size(), 1);
    for (std::size_t i = 0; i < burst.pressure.size(); ++i) {
        if (missing.uniform() < faults.missingFraction) {
            loseSample(burst, i);
        }
    }
    RandomSource lost = stream(seed, trackDropStream);
    for (float &distance : burst.surfaceTrack) {
        if (lost.uniform() < faults.trackDropFraction) {
            distance = kMissing;
        }
    }
}

} // namespace

SimulatedBurst simulateBurst(const Instrument &instrument, const SeaState &sea,
                             const SensorFaults &faults, std::size_t samples, VelocitySystem system,
                             std::uint64_t seed) {
    const FrequencyGrid grid = frequencyGrid(instrument, samples);
    RandomSource random = stream(seed, seaStream);
    const auto components = drawComponents(sea, grid, random);
    SensorSeries series = recordComponents(instrument, sea, grid, components, samples);

    SimulatedBurst simulated;
    Truth &truth = simulated.truth;
    describeSpectrum(sea, grid, components, truth);
    truth.realisedHeight = realisedHeight(series.elevation);
    truth.currentSpeed = sea.currentSpeed;
    truth.currentDirection = sea.currentDirection;
    truth.waterDepth = sea.waterDepth;

    Burst &burst = simulated.burst;
    burst.heading = sea.heading;
    burst.pitch = sea.pitch;
    burst.roll = sea.roll;
    burst.velocitySystem = system;
    addFaults(series, faults, seed);
    burst.pressure = asFloats(series.pressure);
    burst.surfaceTrack = asFloats(series.track);
    storeVelocities(instrument, series, burst);
    drawAmplitudes(burst, samples, stream(seed, amplitudeStream));
    loseSamples(burst, faults, seed);
    return simulated;
}

} // namespace orvik
