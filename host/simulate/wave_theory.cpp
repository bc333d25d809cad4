#include "simulate/wave_theory.hpp"

#include <algorithm>
#include <cmath>

#include "burst/geometry.hpp"

namespace orvik {

namespace {

constexpr int kMostIterations = 100;
constexpr double kWavenumberTolerance = 1e-13;

// Beyond this k |z| nothing is left that a 32-bit float beside it could show.
constexpr double kDeepestDecay = 60.0;

constexpr std::size_t kSpreadingSteps = 2048;

double shareOfStep(double lower, double upper, double exponent) {
    const auto density = [exponent](double angle) {
        return std::pow(std::max(std::cos(0.5 * angle), 0.0), exponent);
    };
    return (density(lower) + 4.0 * density(0.5 * (lower + upper)) + density(upper)) / 6.0;
}

} // namespace

// Newton's method on G(k) = omega - k U - sqrt(g k tanh kh). G is convex, and the start, at most the wavenumber without
// current, keeps every iterate positive; from the first or second on they go up to the first root without passing it.
// Where G has stopped falling there is no root: the wave's energy cannot travel against the current.
std::optional<double> solveWavenumber(double omega, double waterDepth, double currentAlongWave) {
    double k = std::max(omega * omega / kGravity, omega / std::sqrt(kGravity * waterDepth));
    for (int i = 0; i < kMostIterations; ++i) {
        const double decay = std::exp(-2.0 * k * waterDepth);
        const double tanhKh = (1.0 - decay) / (1.0 + decay);
        const double sigma = std::sqrt(kGravity * k * tanhKh);
        const double slope =
            kGravity * (tanhKh + k * waterDepth * (1.0 - tanhKh * tanhKh)) / (2.0 * sigma) +
            currentAlongWave;
        if (slope <= 0.0) {
            return std::nullopt;
        }
        const double step = (omega - k * currentAlongWave - sigma) / slope;
        k += step;
        if (std::abs(step) <= kWavenumberTolerance * k) {
            return k;
        }
    }
    return std::nullopt;
}

// Written with decaying exponentials: cosh and sinh of a deep sea overflow.
DepthFactors depthFactors(double wavenumber, double waterDepth, double z) {
    if (-wavenumber * z > kDeepestDecay) {
        return {0.0, 0.0, 0.0};
    }
    const double decay = std::exp(wavenumber * z);
    const double fromBed = std::exp(-2.0 * wavenumber * (z + waterDepth));
    const double wholeDepth = std::exp(-2.0 * wavenumber * waterDepth);
    return {decay * (1.0 + fromBed) / (1.0 - wholeDepth),
            decay * (1.0 - fromBed) / (1.0 - wholeDepth),
            decay * (1.0 + fromBed) / (1.0 + wholeDepth)};
}

// Hasselmann et al. (1973); with gamma 1 it is the spectrum of Pierson and Moskowitz (1964).
double spectrumShape(const WaveSystem &system, double frequency) {
    if (frequency <= 0.0) {
        return 0.0;
    }
    const double ratio = frequency * system.peakPeriod;
    const double base = std::pow(ratio, -5.0) * std::exp(-1.25 * std::pow(ratio, -4.0));
    if (system.shape == WaveSystem::Shape::piersonMoskowitz) {
        return base;
    }
    const double width = ratio <= 1.0 ? 0.07 : 0.09;
    const double fromPeak = (ratio - 1.0) / width;
    return base * std::pow(system.peakEnhancement, std::exp(-0.5 * fromPeak * fromPeak));
}

double firstMoment(double spread) {
    const double radians = spread * kRadiansPerDegree;
    return 1.0 - 0.5 * radians * radians;
}

// Longuet-Higgins, Cartwright and Smith (1963).
SpreadingQuantiles::SpreadingQuantiles(double spread) {
    if (spread <= 0.0) {
        return;
    }
    const double r1 = firstMoment(spread);
    const double exponent = 2.0 * r1 / (1.0 - r1);
    // Narrow distributions end long before the half circle; there the table would waste its steps.
    halfWidth_ = std::min(0.5 * kTwoPi, 10.0 * spread * kRadiansPerDegree);
    const double step = 2.0 * halfWidth_ / static_cast<double>(kSpreadingSteps);
    share_.assign(kSpreadingSteps + 1, 0.0);
    for (std::size_t i = 0; i < kSpreadingSteps; ++i) {
        const double lower = -halfWidth_ + step * static_cast<double>(i);
        share_[i + 1] = share_[i] + shareOfStep(lower, lower + step, exponent);
    }
    const double total = share_.back();
    for (double &share : share_) {
        share /= total;
    }
}

double SpreadingQuantiles::angle(double probability) const {
    if (share_.empty()) {
        return 0.0;
    }
    const auto above = std::upper_bound(share_.begin() + 1, share_.end() - 1, probability);
    const double below = *(above - 1);
    const double within = (probability - below) / (*above - below);
    const double index = static_cast<double>(above - share_.begin() - 1) + within;
    return halfWidth_ * (2.0 * index / static_cast<double>(kSpreadingSteps) - 1.0);
}

} // namespace orvik
