#include "input/profile_noise.hpp"

#include <algorithm>
#include <cmath>

#include "frame/checked_convert.hpp"
#include "frame/constants.hpp"

namespace ov {
namespace {

// An empirical model of a coded-pulse instrument with a relative bandwidth of 0.25.
constexpr double kSoundSpeed = 1500.0;     // [m/s]
constexpr double kSignalToNoise = 10.0;    // [dB]
constexpr double kWidebandLimit = 56000.0; // [Hz] slower samplers work at the wideband rate instead
constexpr double kWidebandSampling = 62500.0; // [Hz]

double beamAngleDegrees(int kiloHertz) {
    switch (kiloHertz) {
    case 55:
    case 60:
    case 75:
    case 100:
    case 250:
        return 20.0;
    default:
        return 25.0;
    }
}

double samplingFrequency(int kiloHertz) {
    double fs = kiloHertz * 1000.0;
    if (kiloHertz == 55) {
        fs = 55555.555;
    } else if (kiloHertz == 75) {
        fs = 76923.08;
    }
    return fs < kWidebandLimit ? kWidebandSampling : fs;
}

// Lag in samples of sound travel, a multiple of four.
double lagLength(double ambiguityVelocity) {
    const int rounded = truncateToInt(std::round(kSoundSpeed / (4.0 * ambiguityVelocity)));
    return rounded - (rounded & 3);
}

} // namespace

float profileVelocityNoise(const WaveVariables &rec) {
    const int kiloHertz =
        truncateToInt(std::round(static_cast<double>(rec.acousticFrequency) / 1000.0));
    const double cosine =
        rec.beamCount < 2 ? 1.0 : std::cos(beamAngleDegrees(kiloHertz) * kPi / 180.0);
    const double cell = static_cast<double>(rec.sensorHeight) / cosine;
    const double fs = samplingFrequency(kiloHertz);

    const double lag = lagLength(static_cast<double>(rec.lagParameter));
    const double samples = 2.0 * fs * cell / kSoundSpeed;
    const double n = std::max(std::round(std::round(samples) / lag), 2.0);
    const double r = samples / lag + 1.0;

    const double a = 1.0 - std::exp(kSignalToNoise / -2.9097133);
    const double q = a * (n * r - r - n + 1.0) / (n * r);
    const double g = std::sqrt(1.0 / (q * q) - 1.0);
    const double e = std::exp(g / -0.6617104);
    const double h = kSoundSpeed / (4.0 * lag);
    const double u = (1.0 - e) * (-0.004005719 * h - 0.007303981 * h * h) +
                     (0.008954944 * h * h + 0.015155957 * h) * g;
    const double perPing = 0.76152247805698 * u - 0.12499659825021 * u * u - 0.00213577104738;
    const double noise = perPing / std::sqrt(static_cast<double>(rec.pingsPerSample));
    return std::isfinite(noise) ? static_cast<float>(noise) : 0.0F;
}

} // namespace ov
