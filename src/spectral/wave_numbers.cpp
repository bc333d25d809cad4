#include "spectral/wave_numbers.hpp"

#include <cmath>

#include "frame/constants.hpp"

namespace ov {
namespace {

constexpr int kMaxNewtonSteps = 20;
constexpr double kNewtonTolerance = 1e-5;
constexpr double kFourTimesTwoPi = 25.132741228718345;

// Root k of F(k) = omega^2/g - 2 omega k U/g + U^2 k^2/g - k tanh(k h), by Newton's method from `k`.
double newtonWaveNumber(double omega, double depth, float current, double k) {
    const double u = current;
    const double currentSquared = current * current; // single precision
    for (int step = 0; step < kMaxNewtonSteps; ++step) {
        const double x = k * depth;
        const double tanhX = std::tanh(x);
        const double coshX = std::cosh(x);
        const double value = omega * omega / kGravity - 2.0 * omega * k * u / kGravity +
                             currentSquared * k * k / kGravity - k * tanhX;
        const double slope = 2.0 * k * currentSquared / kGravity - 2.0 * omega * u / kGravity -
                             tanhX - x / (coshX * coshX);
        const double next = k - value / slope;
        const double change = std::abs((k - next) / next);
        k = next;
        if (change < kNewtonTolerance) {
            break;
        }
    }
    return k;
}

} // namespace

// Wavenumber k [rad/m] of every bin for waves on a current U [m/s, positive along the wave]:
//
//     (omega - k U)^2 = g k tanh(k h)
//
// from the larger of the deep-water limit k0 = omega^2/g and the shallow-water limit sqrt(k0/h). A current that blocks
// the wave (-4 omega U > g) ends the usable axis there; the bins above keep what they held.
void solveWaveNumbers(WaveVariables &rec) {
    const double depth = std::abs(static_cast<double>(rec.waterDepth));
    for (int i = 0; i < mainBinCount(rec); ++i) {
        const double f = rec.frequencies[i];
        const float current = rec.currentAlongWave[i];
        if (-kFourTimesTwoPi * f * static_cast<double>(current) / kGravity > 1.0) {
            rec.waveNumbers[i] = 0.0F;
            rec.validFreqCount = i;
            return;
        }
        const double deep = f * kTwoPi * 2.0 * kPi * f / kGravity;
        const double shallow = std::sqrt(deep / depth);
        const bool startShallow = static_cast<float>(shallow) > static_cast<float>(deep);
        rec.waveNumbers[i] = static_cast<float>(
            newtonWaveNumber(kTwoPi * f, depth, current, startShallow ? shallow : deep));
    }
}

} // namespace ov
