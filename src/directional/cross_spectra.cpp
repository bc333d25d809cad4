#include "directional/cross_spectra.hpp"

#include <algorithm>
#include <cmath>
#include <cstdint>

#include "frame/checked_convert.hpp"

namespace ov {
namespace {

// Two neighbouring bands of transform places and the weight of the upper one: the average is interpolated between them
// to the wanted frequency.
struct Bands {
    std::int64_t start; // first place of the lower band
    int width;          // places in a band
    int lastUpper;      // the upper band repeats this place beyond it
    int slotLast;       // no place lies beyond the storage
    double weight;      // of the upper band
    double norm;        // turns a squared amplitude into a density

    // Near the ends of the axis a place repeats instead of the band shrinking.
    [[nodiscard]] int lower(int m) const {
        return static_cast<int>(std::clamp<std::int64_t>(start + m, 2, slotLast));
    }
    [[nodiscard]] int upper(int m) const {
        return static_cast<int>(std::clamp<std::int64_t>(
            std::min<std::int64_t>(start + width + m, lastUpper), 0, slotLast));
    }
    // Density from the sums over both bands.
    [[nodiscard]] double density(double lowerSum, double upperSum) const {
        const double places = width;
        return ((lowerSum / places) * (1.0 - weight) + (upperSum / places) * weight) / norm;
    }
};

// Bands for frequency `f` [Hz] of a transform of n samples at rate fs. The first place of a harmonic is one above it,
// and density = amplitude^2 / (2 fs/n).
Bands bandsAt(float f, float fs, int n, int bandWidth, int slotPlaces) {
    const double df = static_cast<double>(fs / static_cast<float>(n));
    const int width = std::max(1, bandWidth / 4);
    const double places = width;
    const double frequency = f;
    Bands bands{};
    bands.start = truncateToInt(std::floor(frequency / df - places + 2.0));
    bands.width = width;
    bands.lastUpper = n / 2 - 1;
    bands.slotLast = slotPlaces - 1;
    bands.weight =
        (frequency - (places * 0.5 + static_cast<double>(bands.start) - 1.5) * df) / (places * df);
    bands.norm = static_cast<double>(fs) * 2.0 / n;
    return bands;
}

// Auto-spectral density of one transformed series.
float autoDensity(const Bands &bands, const float *re, const float *im) {
    const auto power = [re, im](int place) {
        return static_cast<double>(re[place] * re[place] + im[place] * im[place]);
    };
    double lower = 0.0;
    double upper = 0.0;
    for (int m = 0; m < bands.width; ++m) {
        lower += power(bands.lower(m));
        upper += power(bands.upper(m));
    }
    return static_cast<float>(bands.density(lower, upper));
}

} // namespace

void computeCrossSpectra(WaveVariables &rec, int f) {
    const Bands bands = bandsAt(rec.frequencies[f], rec.samplingRateHz, rec.burstLength,
                                rec.dirBandWidth, kSlotBins);
    for (int j = 0; j < rec.seriesCount; ++j) {
        const float *const reJ = rec.seriesSpecRe[j];
        const float *const imJ = rec.seriesSpecIm[j];
        for (int i = 0; i <= j; ++i) {
            const float *const reI = rec.seriesSpecRe[i];
            const float *const imI = rec.seriesSpecIm[i];
            const auto co = [=](int b) {
                return static_cast<double>(reI[b] * reJ[b] + imI[b] * imJ[b]);
            };
            const auto quad = [=](int b) {
                return static_cast<double>(imI[b] * reJ[b] - reI[b] * imJ[b]);
            };
            double coLower = 0.0;
            double coUpper = 0.0;
            double quadLower = 0.0;
            double quadUpper = 0.0;
            for (int m = 0; m < bands.width; ++m) {
                const int a = bands.lower(m);
                const int b = bands.upper(m);
                coLower += co(a);
                coUpper += co(b);
                quadLower += quad(a);
                quadUpper += quad(b);
            }
            rec.crossSpectralMatrix[j][i] = static_cast<float>(bands.density(coLower, coUpper));
            if (i != j) {
                rec.crossSpectralMatrix[i][j] =
                    static_cast<float>(bands.density(quadLower, quadUpper));
            }
        }
    }
}

void computeBandSpectra(WaveVariables &rec) {
    const int pressure = std::max(rec.seriesCount - 1, 0);
    for (int f = 0; f < mainBinCount(rec); ++f) {
        const Bands bands = bandsAt(rec.frequencies[f], rec.samplingRateHz, rec.burstLength,
                                    rec.specBandWidth, kSlotBins);
        rec.bandSpectrum[f] =
            autoDensity(bands, rec.seriesSpecRe[pressure], rec.seriesSpecIm[pressure]);
    }
}

void computeBandSpectraFine(WaveVariables &rec) {
    for (int f = 0; f < fineBinCount(rec); ++f) {
        const Bands bands = bandsAt(rec.fineFreqAxis[f], rec.astSamplingRate, rec.astLength,
                                    rec.specBandWidth, kMaxSamples);
        rec.bandSpectrumFine[f] = autoDensity(bands, rec.astSpecRe, rec.astSpecIm);
    }
}

} // namespace ov
