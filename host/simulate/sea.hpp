// Linear random seas as an instrument on the bed would record them.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "burst/burst.hpp"

namespace orvik {

struct WaveSystem {
    enum class Shape { jonswap, piersonMoskowitz };
    Shape shape = Shape::jonswap;
    double significantHeight = 2.0; // [m]
    double peakPeriod = 8.0;        // [s]
    double peakEnhancement = 3.3;   // JONSWAP gamma
    double direction = 270.0;       // [degrees] where the waves come from, true north
    double spread = 25.0;           // [degrees] sqrt(2 (1 - r1)); cos^2s with the s that gives it
};

// One burst's sea and sensors. Velocities are positive along x = east, y = north, z = up.
struct SeaState {
    std::vector<WaveSystem> systems;
    double waterDepth = 15.0;      // [m]
    double currentSpeed = 0.0;     // [m/s] the same at every depth
    double currentDirection = 0.0; // [degrees] where it goes
    double heading = 0.0;          // [degrees]
    double pitch = 0.0;            // [degrees]
    double roll = 0.0;             // [degrees]
};

struct SensorFaults {
    double pressureNoise = 0.001;   // [dbar] standard deviation
    double velocityNoise = 0.006;   // [m/s] standard deviation, along the beam
    double trackNoise = 0.01;       // [m] standard deviation
    double spikeFraction = 0.0;     // share of surface-track and pressure samples that are spikes
    double missingFraction = 0.0;   // share of samples that are missing
    double trackDropFraction = 0.0; // share of surface-track samples that are lost
};

struct SimulatedBurst {
    Burst burst;
    Truth truth;
};

// A burst of `samples` samples. The same arguments give the same burst.
SimulatedBurst simulateBurst(const Instrument &instrument, const SeaState &sea,
                             const SensorFaults &faults, std::size_t samples, VelocitySystem system,
                             std::uint64_t seed);

} // namespace orvik
