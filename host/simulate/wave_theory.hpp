// Linear waves over a flat bed in a uniform current, and the shapes of wind seas.
#pragma once

#include <optional>
#include <vector>

#include "simulate/sea.hpp"

namespace orvik {

inline constexpr double kGravity = 9.81; // [m/s^2]
inline constexpr double kTwoPi = 6.28318530717958647692;

// k of (omega - k U)^2 = g k tanh(k h), U the current along the wave's way. Nothing when the current stops the wave.
std::optional<double> solveWavenumber(double omega, double waterDepth, double currentAlongWave);

// What is left of a wave of elevation amplitude 1 at height z (negative: below the mean surface).
struct DepthFactors {
    double
        horizontal;  // cosh k(z+h) / sinh kh: horizontal orbital velocity over intrinsic frequency
    double vertical; // sinh k(z+h) / sinh kh: vertical orbital velocity over intrinsic frequency
    double pressure; // cosh k(z+h) / cosh kh: pressure in metres of water
};
DepthFactors depthFactors(double wavenumber, double waterDepth, double z);

// Shape of the energy spectrum at `frequency` [Hz], of no particular scale.
double spectrumShape(const WaveSystem &system, double frequency);

// Length of the mean direction vector of a spreading function whose spread is sqrt(2 (1 - r1)).
double firstMoment(double spread);

// Quantiles of D(theta) ~ cos^2s(theta / 2), theta from the mean direction, with s = r1 / (1 - r1).
class SpreadingQuantiles {
public:
    explicit SpreadingQuantiles(double spread);

    // The angle [radians] below which the share `probability` (0 to 1) of the energy lies.
    [[nodiscard]] double angle(double probability) const;

private:
    double halfWidth_ = 0.0;
    std::vector<double>
        share_; // energy below each of evenly spaced angles, 0 to 1; empty: no spread at all
};

} // namespace orvik
