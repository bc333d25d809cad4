#include "spectral/wave_parameters.hpp"

#include <algorithm>
#include <cmath>
#include <iterator>

#include "frame/checked_convert.hpp"
#include "frame/constants.hpp"

namespace ov {
namespace {

bool usesTrackSpectrum(const WaveVariables &rec) {
    return rec.activeMethod != 1 && rec.activeMethod != 3 && rec.surfaceTrackValid != 0;
}

void copyMain(const float *from, float *to) {
    std::copy_n(from, kMaxFreq, to);
    std::fill_n(to + kMaxFreq, kMaxFreqFine - kMaxFreq, 0.0F);
}

// Makes spectraUsed and its axis the ones that the parameters use; returns the number of bins.
int selectSpectrum(WaveVariables &rec) {
    if (usesTrackSpectrum(rec)) {
        return fineBinCount(rec); // the driver put the surface-track spectrum there
    }
    copyMain(rec.frequencies, rec.paramFrequencies);
    if (rec.spectrumSource == OV_SOURCE_PRESSURE) {
        copyMain(rec.spectrumPrs, rec.spectraUsed);
    } else if (rec.spectrumSource == OV_SOURCE_VELOCITY) {
        copyMain(rec.spectrumVel, rec.spectraUsed);
    }
    return mainBinCount(rec);
}

// m0 = sum S df, m-1 = sum S df / f, m2 = sum S f^2 df.
void heightsAndPeriods(WaveVariables &rec, int bins) {
    double m0 = 0.0;
    double inverse = 0.0;
    double m2 = 0.0;
    for (int i = 0; i < bins; ++i) {
        const float s = rec.spectraUsed[i];
        const float f = rec.paramFrequencies[i];
        const double energy = static_cast<double>(s) * rec.freqStep;
        m0 += energy;
        inverse += energy / static_cast<double>(f);
        m2 += static_cast<double>(s * f * f) * rec.freqStep;
    }
    rec.waveParameters[OV_HM0] = static_cast<float>(4.0 * std::sqrt(m0));
    if (m2 > 0.0) {
        rec.waveParameters[OV_TM02] = static_cast<float>(std::sqrt(m0 / m2));
    }
    // Without energy there is no period: missing, not a quotient of zeros.
    rec.energyPeriod = m0 > 0.0 ? static_cast<float>(inverse / m0) : kMissing;
}

// Energy-weighted mean of the bins' unit direction vectors.
void meanDirectionOf(WaveVariables &rec, int bins) {
    double energy = 0.0;
    double east = 0.0;
    double north = 0.0;
    for (int i = 0; i < bins; ++i) {
        const float a1 = rec.fourierA1[i];
        const float b1 = rec.fourierB1[i];
        const double s = rec.spectraUsed[i];
        const double r = std::sqrt(static_cast<double>(a1 * a1 + b1 * b1) + 1e-20);
        energy += s;
        east += s * static_cast<double>(a1) / r;
        north += s * static_cast<double>(b1) / r;
    }
    double direction = 0.0;
    rec.waveParameters[OV_RESULTANT_LENGTH] = 0.0F;
    if (!(energy == 0.0 || east * north == 0.0)) {
        east /= energy;
        north /= energy;
        direction = (kHalfPi - std::atan2(north, east)) * 180.0 / kPi;
        if (direction < 0.0) {
            direction += 360.0;
        }
        if (direction > 360.0) {
            direction -= 360.0;
        }
        rec.waveParameters[OV_RESULTANT_LENGTH] =
            static_cast<float>(std::sqrt(east * east + north * north));
    }
    if (direction < 0.0) {
        direction += 360.0;
    }
    direction = std::fmod(direction, 360.0);
    if (rec.reverseDirections != 0) {
        direction -= 180.0;
        if (direction < 0.0) {
            direction += 360.0;
        }
    }
    rec.waveParameters[OV_MEAN_DIRECTION] = static_cast<float>(direction);
}

int largestBin(const float *spectrum, int n) {
    int peak = 0;
    for (int i = 1; i < n; ++i) {
        if (spectrum[i] > spectrum[peak]) {
            peak = i;
        }
    }
    return peak;
}

// Vertex of the parabola through bins p - 1, p, p + 1.
double parabolaVertex(const float *s, const float *f, int p) {
    const double f0 = f[p - 1];
    const double f1 = f[p];
    const double f2 = f[p + 1];
    const double s0 = s[p - 1];
    const double s1 = s[p];
    const double s2 = s[p + 1];
    const double a = (s1 - s0) / (f1 - f0);
    const double b = (a - (s2 - s1) / (f2 - f1)) / (f0 - f2);
    return (a - (f1 + f0) * b) / (-2.0 * b);
}

// Change of direction from `from` to `to` [degrees], the short way round, times `weight`.
double directionChange(double from, double to, double weight) {
    const double change = to - from;
    if (std::abs(change) < 180.0) {
        return weight * change;
    }
    return to > from ? weight * -(from - to + 360.0) : weight * -(from - to - 360.0);
}

// Direction and spread at frequency `fp` between bin p and its neighbour. The slope of the coefficients enters with its
// absolute value, whatever its sign. Without a neighbour on the axis the values at p stand.
void directionAtPeak(WaveVariables &rec, int p, double fp, int n) {
    const double f = rec.frequencies[p];
    int q = fp > f ? p + 1 : p - 1;
    if (q < 0 || q >= n) {
        q = p;
    }
    const double df = q == p ? 1.0 : std::abs(f - static_cast<double>(rec.frequencies[q]));
    const double distance = fp - f;
    const auto interpolated = [=](const float *coefficient) {
        const double at = coefficient[p];
        return std::abs(at - static_cast<double>(coefficient[q])) * distance / df + at;
    };
    const double a1 = interpolated(rec.fourierA1);
    const double b1 = interpolated(rec.fourierB1);
    const double from = rec.meanDirection[p];
    const double to = rec.meanDirection[q];
    double direction = directionChange(from, to, std::abs(distance)) / df + from;
    if (direction < 0.0) {
        direction += 360.0;
    }
    rec.waveParameters[OV_PEAK_DIRECTION] = static_cast<float>(std::fmod(direction, 360.0));
    const double r = std::sqrt(b1 * b1 + a1 * a1 + 1e-20);
    rec.waveParameters[OV_PEAK_SPREAD] =
        static_cast<float>(std::sqrt(2.0 * (1.0 - std::min(r, 1.0))) * 180.0 / kPi);
}

// A peak in the first or last bin stands as it is.
double peakAtEdge(WaveVariables &rec, int p) {
    const double fp = rec.paramFrequencies[p];
    rec.waveParameters[OV_TP] = static_cast<float>(1.0 / fp);
    rec.waveParameters[OV_PEAK_DIRECTION] = rec.meanDirection[p];
    rec.waveParameters[OV_PEAK_SPREAD] = rec.directionalSpread[p];
    return fp;
}

double peakInside(WaveVariables &rec, int p) {
    const double fp = parabolaVertex(rec.spectraUsed, rec.paramFrequencies, p);
    rec.waveParameters[OV_TP] = rec.spectraUsed[p] > 0.0F ? static_cast<float>(1.0 / fp) : 0.0F;
    return fp;
}

// Least horizontal distance [m] between neighbours in the series list, the last and first included.
double leastSpacing(const WaveVariables &rec) {
    double least = 100000.0;
    const int n = std::clamp(rec.nMlmSeries, 0, kMaxSeries);
    const auto include = [&](int a, int b) {
        const double dx = static_cast<double>(rec.seriesX[b] - rec.seriesX[a]);
        const double dy = static_cast<double>(rec.seriesY[b] - rec.seriesY[a]);
        least = std::min(least, std::sqrt(dx * dx + dy * dy));
    };
    for (int s = 0; s + 1 < n; ++s) {
        include(s, s + 1);
    }
    if (n > 0) {
        include(0, n - 1);
    }
    return least;
}

bool tooShortFor(double spacing, float waveNumber) {
    return spacing > 0.5 * kTwoPi / static_cast<double>(waveNumber);
}

// Bin of the peak period. The remainder is compared with 0.5, not with half a bin: with steps below 0.5 Hz the bin is
// always the lower one.
int peakBin(const WaveVariables &rec) {
    const double peak = static_cast<double>(1.0F / rec.waveParameters[OV_TP]);
    const double place = (peak - rec.fineFreqMin) / rec.freqStep;
    const bool up = std::fmod(peak, rec.freqStep) >= 0.5;
    return truncateToInt(up ? std::ceil(place) : std::floor(place));
}

} // namespace

void spectralMoments(WaveVariables &rec) {
    const int bins = selectSpectrum(rec);
    heightsAndPeriods(rec, bins);
    int directionBins = bins;
    if (rec.activeMethod >= 2 && rec.activeMethod <= 4) {
        aliasingLimit(rec, 1);
        directionBins = rec.lastValidFreqIndex;
    }
    meanDirectionOf(rec, directionBins);
}

void peakParameters(WaveVariables &rec) {
    const int n = mainBinCount(rec);
    if (n < 1) {
        return;
    }
    const int p = largestBin(rec.spectraUsed, n);
    const double fp = p == 0 || p == n - 1 ? peakAtEdge(rec, p) : peakInside(rec, p);
    if (fp < rec.freqMax) {
        rec.waveParameters[OV_PEAK_DIRECTION] = 0.0F;
        rec.waveParameters[OV_PEAK_SPREAD] = 0.0F;
        directionAtPeak(rec, p, fp, n);
    }
    if (p == 0 && rec.spectraUsed[0] == 0.0F) {
        rec.qualityFlags |= OV_FLAG_INVALID_PARAMETERS;
        rec.waveParameters[OV_TP] = kMissing;
        rec.waveParameters[OV_PEAK_SPREAD] = kMissing;
    }
}

void findFinePeak(WaveVariables &rec) {
    const int n = fineBinCount(rec);
    if (n < 1) {
        return;
    }
    const float *const s = rec.bandSpectrumFine;
    const float *const f = rec.fineFreqAxis;
    const int j = largestBin(s, n);
    float &peakPeriod = rec.waveParameters[OV_TP];
    if (j == 0) {
        peakPeriod = 1.0F / f[0];
    } else if (j < n - 1) {
        peakPeriod = 0.0F;
        const float d1 = (s[j] - s[j - 1]) / (f[j] - f[j - 1]);
        const float d2 = (s[j + 1] - s[j]) / (f[j + 1] - f[j]);
        const float c = (d1 - d2) / (f[j - 1] - f[j + 1]);
        if (s[j] > 0.0F) {
            const float vertex = (d1 - (f[j] + f[j - 1]) * c) / (-2.0F * c);
            peakPeriod = static_cast<float>(1.0 / static_cast<double>(vertex));
        }
    }
}

int aliasingLimit(WaveVariables &rec, int mode) {
    const double spacing = leastSpacing(rec);
    if (mode == 0) {
        const int bin = peakBin(rec);
        if (tooShortFor(spacing, rec.waveNumbers[std::clamp(bin, 0, kMaxFreq - 1)])) {
            rec.qualityFlags |= OV_FLAG_ALIASED_PEAK;
        }
        return bin;
    }
    rec.lastValidFreqIndex = kMaxFreq;
    if (rec.activeMethod < 2 || rec.activeMethod > 4) {
        return rec.lastValidFreqIndex;
    }
    for (int i = 0; i < mainBinCount(rec); ++i) {
        if (tooShortFor(spacing, rec.waveNumbers[i])) {
            rec.lastValidFreqIndex = i;
            rec.aliasingFrequency = rec.frequencies[i];
            break;
        }
    }
    return rec.lastValidFreqIndex;
}

} // namespace ov
