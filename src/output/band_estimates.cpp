#include "output/band_estimates.hpp"

#include <algorithm>
#include <cmath>
#include <cstdlib>

#include "frame/constants.hpp"
#include "spectral/wave_parameters.hpp"

namespace ov {
namespace {

// Bins low <= i < high of the axis behind the wave parameters.
struct BinRange {
    int low;
    int high;
};

// Directional sums over a band, in single precision.
struct DirectionalSums {
    float energy = 0.0F;
    float east = 0.0F;
    float north = 0.0F;
};

struct PeakCoefficients {
    double a1;
    double b1;
    bool equalB1; // the neighbour has the same b1
};

void setMissing(OVBandEstimate &band) {
    band.bandHm0 = kMissing;
    band.bandTm02 = kMissing;
    band.bandZero = kMissing;
    band.bandPeakDirection = kMissing;
    band.bandMeanDirection = kMissing;
    band.bandPeakSpread = kMissing;
    band.bandMeanSpread = kMissing;
    band.bandStatus = 0;
    band.bandSpectrumSource = 0;
}

void setDirectionsMissing(OVBandEstimate &band) {
    band.bandPeakDirection = kMissing;
    band.bandMeanDirection = kMissing;
    band.bandPeakSpread = kMissing;
    band.bandMeanSpread = kMissing;
}

BinRange bandBins(const WaveVariables &rec, float fLow, float fHigh) {
    const int fine = fineBinCount(rec);
    BinRange range{0, mainBinCount(rec)};
    for (int i = 0; i < fine - 1; ++i) {
        if (rec.paramFrequencies[i] >= fLow) {
            range.low = i;
            break;
        }
    }
    for (int i = 1; i < fine; ++i) {
        const double f = rec.paramFrequencies[i];
        if (f + rec.freqStep / 3.0 > static_cast<double>(fHigh)) {
            range.high = i;
            break;
        }
    }
    return range;
}

// 4 sqrt(m0) and sqrt(m0 / m2); returns m0.
float heightAndPeriod(const WaveVariables &rec, const BinRange &range, OVBandEstimate &band) {
    const auto df = static_cast<float>(rec.freqStep);
    float m0 = 0.0F;
    float m2 = 0.0F;
    for (int i = range.low; i < range.high; ++i) {
        const float s = rec.spectraUsed[i];
        const float f = rec.paramFrequencies[i];
        m0 += s * df;
        m2 += s * f * f * df;
    }
    band.bandHm0 = static_cast<float>(4.0 * std::sqrt(static_cast<double>(m0)));
    band.bandTm02 = static_cast<float>(std::sqrt(static_cast<double>(m0 / m2)));
    return m0;
}

DirectionalSums directionalSums(const WaveVariables &rec, int low, int high) {
    const auto df = static_cast<float>(rec.freqStep);
    DirectionalSums sums;
    for (int i = low; i < high; ++i) {
        const float s = rec.spectraUsed[i];
        sums.energy += s * df;
        sums.east += s * rec.fourierA1[i] * df;
        sums.north += s * rec.fourierB1[i] * df;
    }
    return sums;
}

double turned(double degrees, bool reverse) {
    if (!reverse) {
        return degrees;
    }
    const double back = degrees - 180.0;
    return back < 0.0 ? back + 360.0 : back;
}

// Direction of the energy-weighted coefficients. They are not normalised bin by bin here, unlike the burst's own mean.
void meanDirectionAndSpread(const WaveVariables &rec, const DirectionalSums &sums,
                            OVBandEstimate &band) {
    const float a = sums.east / sums.energy;
    const float b = sums.north / sums.energy;
    double direction =
        (kHalfPi - std::atan2(static_cast<double>(b), static_cast<double>(a))) * 180.0 / kPi;
    if (direction < 0.0) {
        direction += 360.0;
    }
    if (direction > 360.0) {
        direction -= 360.0;
    }
    direction = std::fmod(direction, 360.0);
    band.bandMeanDirection = static_cast<float>(turned(direction, rec.reverseDirections != 0));
    const auto length = static_cast<float>(std::sqrt(static_cast<double>(a * a + b * b)));
    const float twice = (1.0F - length) * 2.0F;
    band.bandMeanSpread = static_cast<float>(std::sqrt(static_cast<double>(twice)) * 180.0 / kPi);
}

// The band's upper bin is searched for the peak too.
int peakBinOf(const WaveVariables &rec, const BinRange &range) {
    int peak = std::min(range.low, kMaxFreqFine - 1);
    for (int i = peak + 1; i <= std::min(range.high, kMaxFreqFine - 1); ++i) {
        if (rec.spectraUsed[i] > rec.spectraUsed[peak]) {
            peak = i;
        }
    }
    return peak;
}

float peakFrequency(const WaveVariables &rec, const BinRange &range, int j) {
    const float *const s = rec.spectraUsed;
    const float *const f = rec.paramFrequencies;
    if (!(range.low < j && j < range.high)) {
        return f[j];
    }
    const float d1 = (s[j] - s[j - 1]) / (f[j] - f[j - 1]);
    const float d2 = (s[j + 1] - s[j]) / (f[j + 1] - f[j]);
    const float c = (d1 - d2) / (f[j - 1] - f[j + 1]);
    return (d1 - (f[j] + f[j - 1]) * c) / (-2.0F * c);
}

// First-order coefficients at `fp` between bin j and its neighbour; at j itself where the axis ends.
PeakCoefficients coefficientsAt(const WaveVariables &rec, int j, float fp) {
    const float *const f = rec.frequencies;
    const int neighbour = fp > f[j] ? j + 1 : j - 1;
    if (neighbour < 0 || neighbour >= mainBinCount(rec)) {
        return {static_cast<double>(rec.fourierA1[j]), static_cast<double>(rec.fourierB1[j]), true};
    }
    const double here = f[j];
    const double distance = static_cast<double>(fp) - here;
    const double spacing = std::abs(here - static_cast<double>(f[neighbour]));
    const auto at = [=](const float *coefficient) {
        const double own = coefficient[j];
        return std::abs(own - static_cast<double>(coefficient[neighbour])) * distance / spacing +
               own;
    };
    return {at(rec.fourierA1), at(rec.fourierB1), rec.fourierB1[j] == rec.fourierB1[neighbour]};
}

void peakDirectionAndSpread(const WaveVariables &rec, const BinRange &range, OVBandEstimate &band) {
    const int j = peakBinOf(rec, range);
    const float fp = peakFrequency(rec, range, j);
    band.bandZero = 0.0F;
    if (j >= mainBinCount(rec)) {
        return; // beyond the main axis there are no directions
    }
    band.bandPeakDirection = 0.0F;
    const PeakCoefficients peak = coefficientsAt(rec, j, fp);
    if (peak.a1 == 0.0 && peak.equalB1) {
        return;
    }
    double angle = kHalfPi - std::atan2(peak.b1, peak.a1);
    if (angle < 0.0) {
        angle += kTwoPi;
    }
    double direction = angle * 180.0 / kPi;
    if (direction < 0.0) {
        direction += 360.0;
    }
    direction = std::fmod(direction, 360.0);
    band.bandPeakDirection = static_cast<float>(turned(direction, rec.reverseDirections != 0));
    const double r = std::sqrt(peak.a1 * peak.a1 + peak.b1 * peak.b1 + 1e-20);
    // Coefficients that are no numbers leave a spread that is none, not a spread of 0.
    band.bandPeakSpread =
        static_cast<float>(std::sqrt((1.0 - std::min(r, 1.0)) * 2.0) * 180.0 / kPi);
}

float numberOrMissing(float value) { return std::isnan(value) ? kMissing : value; }

void applyMasks(const WaveVariables &rec, const BinRange &range, float m0, float directionalEnergy,
                OVBandEstimate &band) {
    if (rec.activeMethod != 1 && range.low >= rec.lastValidFreqIndex) {
        setDirectionsMissing(band);
    }
    if (!(directionalEnergy > 0.0F)) {
        setDirectionsMissing(band);
    }
    if (!(m0 > 0.0F)) {
        band.bandTm02 = kMissing;
    }
    band.bandPeakDirection = numberOrMissing(band.bandPeakDirection);
    band.bandMeanDirection = numberOrMissing(band.bandMeanDirection);
    band.bandPeakSpread = numberOrMissing(band.bandPeakSpread);
    band.bandMeanSpread = numberOrMissing(band.bandMeanSpread);
}

} // namespace

bool estimateBand(WaveVariables &rec, OVBandEstimate &band) {
    setMissing(band);
    if (rec.processedFlag == 0) {
        band.bandStatus = OV_FLAG_NO_RESULT;
        return false;
    }
    const BinRange range = bandBins(rec, band.fLow, band.fHigh);
    const float m0 = heightAndPeriod(rec, range, band);
    int high = range.high;
    if (rec.activeMethod >= 2 && rec.activeMethod <= 4) {
        // The limit starts from the whole axis again, so that the directional sums run on beyond the band.
        rec.lastValidFreqIndex = range.high;
        high = aliasingLimit(rec, 1);
    }
    const DirectionalSums sums = directionalSums(rec, range.low, high);
    meanDirectionAndSpread(rec, sums, band);
    peakDirectionAndSpread(rec, range, band);
    applyMasks(rec, range, m0, sums.energy, band);
    band.bandSpectrumSource = static_cast<std::uint16_t>(rec.spectrumSource);
    return true;
}

} // namespace ov
