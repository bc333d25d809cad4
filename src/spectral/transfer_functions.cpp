#include "spectral/transfer_functions.hpp"

#include <algorithm>
#include <cmath>

#include "frame/constants.hpp"

namespace ov {
namespace {

struct Gains {
    double horizontal;
    double vertical;
};

// Orbital-velocity gains omega cosh(k (h - d)) / sinh(k h) and omega sinh(k (h - d)) / sinh(k h) at depth d. Where
// sinh(k h) overflows, both have the limit omega exp(-k d).
Gains orbitalGains(double omega, float waveNumber, float waterDepth, double depth) {
    const double k = waveNumber;
    const double sinhDepth = std::sinh(static_cast<double>(waveNumber * waterDepth));
    if (std::isinf(sinhDepth)) {
        const double limit = std::exp(-k * depth) * omega;
        return {limit, limit};
    }
    const double above = (static_cast<double>(waterDepth) - depth) * k;
    return {std::cosh(above) * omega / sinhDepth, std::sinh(above) * omega / sinhDepth};
}

double raisedToFloor(double gain) { return gain < kGainFloor ? kGainFloor : gain; }

// Delay [s] of series j against the first velocity; `previous` is that of the series before it.
double samplingDelay(const WaveVariables &rec, int j, double previous) {
    const int type = rec.seriesType[j];
    if (rec.instrumentType == kProfileInstrument) {
        if (type == kVelocitySeries) {
            return 0.0;
        }
        if (type == kSurfaceTrackSeries || type == kPressureSeries) {
            return static_cast<double>(-(static_cast<float>(rec.surfaceTimeOffset) / 10000.0F));
        }
        return previous;
    }
    if (type == kVelocitySeries) {
        return 0.0625 * j; // the beams are sampled one after another
    }
    if (type == kSurfaceTrackSeries) {
        return 0.1875;
    }
    if (type != kPressureSeries || rec.instrumentType == 1) {
        return previous;
    }
    if (rec.instrumentType == 0) {
        return 0.32;
    }
    switch (rec.samplingRate) {
    case 2:
        return 0.17;
    case 1:
        return 0.42;
    case 0:
        return 0.587;
    default:
        return previous;
    }
}

// Transfer function of series s for direction (cos theta, sin theta); false leaves `re`, `im` as they are.
void seriesTransfer(const WaveVariables &rec, int i, int s, double cosTheta, double sinTheta,
                    double &re, double &im) {
    const double k = rec.waveNumbers[i];
    const double x = rec.seriesX[s];
    const double y = rec.seriesY[s];
    const double phase = k * (x * cosTheta + y * sinTheta);
    switch (rec.seriesType[s]) {
    case kSurfaceTrackSeries:
        re = std::cos(phase);
        im = std::sin(phase);
        break;
    case kVelocitySeries: {
        const double dirX = rec.beamDirX[s];
        const double dirY = rec.beamDirY[s];
        const double dirZ = rec.beamDirZ[s];
        const double across =
            static_cast<double>(rec.horizVelGain[s]) * (dirX * cosTheta + dirY * sinTheta);
        const double up = -static_cast<double>(rec.vertVelGain[s]) * dirZ;
        const double c = std::cos(phase);
        const double sn = std::sin(phase);
        re = across * c - up * sn;
        im = across * sn + up * c;
        break;
    }
    case kPressureSeries:
        re = rec.pressureGain[i];
        im = 0.0;
        break;
    default: // keeps the value computed last
        break;
    }
}

} // namespace

double pressureAttenuation(float waveNumber, float waterDepth, double depth) {
    const double k = waveNumber;
    const double coshDepth = std::cosh(static_cast<double>(waveNumber * waterDepth));
    if (std::isinf(coshDepth)) {
        return std::exp(-k * depth);
    }
    return std::cosh(k * (static_cast<double>(waterDepth) - depth)) / coshDepth;
}

void linearTransferGains(WaveVariables &rec, int i) {
    const double omega = kTwoPi * static_cast<double>(rec.frequencies[i]);
    const float k = rec.waveNumbers[i];
    for (int s = 0; s < rec.seriesCount; ++s) {
        const double depth = std::abs(static_cast<double>(rec.seriesDepth[s]));
        const Gains gains = orbitalGains(omega, k, rec.waterDepth, depth);
        rec.horizVelGain[s] = static_cast<float>(raisedToFloor(gains.horizontal));
        rec.vertVelGain[s] =
            static_cast<float>(gains.vertical); // no floor: it passes through 0 at the bed
    }
    const double attenuation = static_cast<double>(rec.vertVelGain[0]) / omega;
    rec.vertVelGainSq[i] = static_cast<float>(attenuation * attenuation);
    const double depth = std::abs(static_cast<double>(rec.instrumentDepth));
    rec.pressureGain[i] =
        static_cast<float>(raisedToFloor(pressureAttenuation(k, rec.waterDepth, depth)));
}

void buildTransferMatrix(WaveVariables &rec, const DirectionTable &table, int i) {
    linearTransferGains(rec, i);
    double re = 0.0;
    double im = 0.0;
    for (int m = 0; m < table.directions; ++m) {
        const auto at = static_cast<std::size_t>(m);
        for (int s = 0; s < rec.seriesCount; ++s) {
            seriesTransfer(rec, i, s, table.waveCos[at], table.waveSin[at], re, im);
            rec.transferRe[s][m] = re;
            rec.transferIm[s][m] = im;
        }
    }
}

// The place in the packed spectrum itself counts as the harmonic number here.
void alignSeriesPhases(WaveVariables &rec) {
    const int half = std::min(rec.burstLength / 2, kSlotBins);
    double delay = 0.0;
    for (int j = 0; j < rec.seriesCount; ++j) {
        delay = samplingDelay(rec, j, delay);
        for (int b = 0; b < half; ++b) {
            const float frequency =
                static_cast<float>(b) * rec.samplingRateHz / static_cast<float>(rec.burstLength);
            const double x = static_cast<double>(frequency) * static_cast<double>(kTwoPiF) * delay;
            const double c = std::cos(x);
            const double s = std::sin(x);
            const double re = rec.seriesSpecRe[j][b];
            const double im = rec.seriesSpecIm[j][b];
            rec.seriesSpecRe[j][b] = static_cast<float>(re * c - im * s);
            rec.seriesSpecIm[j][b] = static_cast<float>(re * s + im * c);
        }
    }
}

} // namespace ov
