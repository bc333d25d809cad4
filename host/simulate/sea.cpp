#include "simulate/sea.hpp"

#include <algorithm>
#include <cmath>
#include <limits>

#include "burst/geometry.hpp"
#include "burst/profile_geometry.hpp"
#include "simulate/components.hpp"
#include "simulate/profile_sensors.hpp"
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
    velocityNoiseStream, // and the two after it: one for each beam
    profileEchoStream = velocityNoiseStream + 3,
    profileNoiseStream
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

void addHeadFaults(std::vector<double> &pressure, std::vector<double> &track,
                   const SensorFaults &faults, std::uint64_t seed) {
    addNoise(pressure, faults.pressureNoise, stream(seed, pressureNoiseStream));
    addSpikes(pressure, faults.spikeFraction, stream(seed, pressureSpikeStream));
    addNoise(track, faults.trackNoise, stream(seed, trackNoiseStream));
    addSpikes(track, faults.spikeFraction, stream(seed, trackSpikeStream));
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
        turn = product(
            xyzToEnuMatrix(burst.heading, burst.pitch, burst.roll + instrument.rollOffset), turn);
    }
    for (std::size_t i = 0; i < series.pressure.size(); ++i) {
        const Vector3 stored =
            product(turn, Vector3{series.beam[0][i], series.beam[1][i], series.beam[2][i]});
        for (std::size_t c = 0; c < 3; ++c) {
            burst.velocity[c].push_back(static_cast<float>(stored[c]));
        }
    }
}

// The same of every cell of a profile.
void storeProfile(const Instrument &instrument, const Profile &alongBeams, Burst &burst) {
    burst.profile = alongBeams;
    if (burst.velocitySystem == VelocitySystem::beam) {
        return;
    }
    SquareMatrix turn = beamsToAxes(instrument);
    if (burst.velocitySystem == VelocitySystem::enu) {
        turn = product(axesToEarth(instrument.beams, burst.heading, burst.pitch,
                                   burst.roll + instrument.rollOffset),
                       turn);
    }
    Profile &profile = *burst.profile;
    for (std::size_t i = 0; i < burst.pressure.size(); ++i) {
        for (std::size_t cell = 0; cell < profile.cells; ++cell) {
            for (std::size_t row = 0; row < profile.beams; ++row) {
                double sum = 0.0;
                for (std::size_t b = 0; b < profile.beams; ++b) {
                    sum += turn.at(row, b) *
                           static_cast<double>(alongBeams.velocity[profile.at(i, b, cell)]);
                }
                profile.velocity[profile.at(i, row, cell)] = static_cast<float>(sum);
            }
        }
    }
}

// A missing sample is missing in every series.
void loseSample(Burst &burst, std::size_t index) {
    burst.valid[index] = 0;
    burst.pressure[index] = kMissing;
    const std::size_t perSample = burst.surfaceTrack.size() / burst.pressure.size();
    std::fill_n(burst.surfaceTrack.begin() + static_cast<std::ptrdiff_t>(perSample * index),
                perSample, kMissing);
    if (burst.profile) {
        Profile &profile = *burst.profile;
        std::fill_n(profile.velocity.begin() + static_cast<std::ptrdiff_t>(profile.at(index, 0, 0)),
                    profile.beams * profile.cells, kMissing);
    }
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

// Pressure, track and velocities of a point instrument, its own faults among them.
void recordPoint(const Instrument &instrument, const SeaState &sea, const FrequencyGrid &grid,
                 const std::vector<WaveComponent> &components, const SensorFaults &faults,
                 std::uint64_t seed, SimulatedBurst &simulated, std::size_t samples) {
    SensorSeries series = recordComponents(instrument, sea, grid, components, samples);
    simulated.truth.realisedHeight = realisedHeight(series.elevation);
    addHeadFaults(series.pressure, series.track, faults, seed);
    for (std::size_t b = 0; b < 3; ++b) {
        addNoise(series.beam[b], faults.velocityNoise, stream(seed, velocityNoiseStream + b));
    }
    simulated.burst.pressure = asFloats(series.pressure);
    simulated.burst.surfaceTrack = asFloats(series.track);
    storeVelocities(instrument, series, simulated.burst);
    drawAmplitudes(simulated.burst, samples, stream(seed, amplitudeStream));
}

// The same of a profile instrument.
void recordProfileBurst(const Instrument &instrument, const SeaState &sea,
                        const FrequencyGrid &grid, const std::vector<WaveComponent> &components,
                        const SensorFaults &faults, std::uint64_t seed, SimulatedBurst &simulated,
                        std::size_t samples) {
    ProfileRecording recording =
        recordProfile(instrument, sea, grid, components, samples, stream(seed, profileEchoStream));
    simulated.truth.realisedHeight = realisedHeight(recording.elevation);
    addHeadFaults(recording.pressure, recording.track, faults, seed);
    RandomSource random = stream(seed, profileNoiseStream);
    for (float &velocity : recording.profile.velocity) {
        velocity += static_cast<float>(faults.velocityNoise * random.normal());
    }
    simulated.burst.pressure = asFloats(recording.pressure);
    simulated.burst.surfaceTrack = asFloats(recording.track);
    storeProfile(instrument, recording.profile, simulated.burst);
}

} // namespace

SimulatedBurst simulateBurst(const Instrument &instrument, const SeaState &sea,
                             const SensorFaults &faults, std::size_t samples, VelocitySystem system,
                             std::uint64_t seed) {
    const FrequencyGrid grid = frequencyGrid(instrument, samples);
    RandomSource random = stream(seed, seaStream);
    const auto components = drawComponents(sea, grid, random);
    SimulatedBurst simulated;
    Truth &truth = simulated.truth;
    describeSpectrum(sea, grid, components, truth);
    truth.currentSpeed = sea.currentSpeed;
    truth.currentDirection = sea.currentDirection;
    truth.waterDepth = sea.waterDepth;

    Burst &burst = simulated.burst;
    burst.heading = sea.heading;
    burst.pitch = sea.pitch;
    burst.roll = sea.roll;
    burst.velocitySystem = system;
    const auto record = instrument.profile ? recordProfileBurst : recordPoint;
    record(instrument, sea, grid, components, faults, seed, simulated, samples);
    loseSamples(burst, faults, seed);
    return simulated;
}

} // namespace orvik
