// Band-averaged cross-spectra against the plain double sum, and their densities against known waves.
#include "directional/cross_spectra.hpp"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <iterator>
#include <limits>

#include <gtest/gtest.h>

#include "support/record_ptr.hpp"

namespace {

using orvik::test::makeRecord;
using orvik::test::RecordPtr;

constexpr int kSamples = 1024;
constexpr double kStep = 2.0 / kSamples; // [Hz] between harmonics at 2 Hz

// Spectra of `count` series filled with repeatable numbers.
RecordPtr spectra(int count) {
    RecordPtr rec = makeRecord();
    rec->samplingRateHz = 2.0F;
    rec->burstLength = kSamples;
    rec->dirBandWidth = 32;
    rec->specBandWidth = 32;
    rec->seriesCount = count;
    rec->nFrequencies = 1;
    std::uint32_t state = 7;
    const auto next = [&state] {
        state = state * 1664525U + 1013904223U;
        return static_cast<float>(state >> 8) / 8388608.0F - 1.0F;
    };
    for (int s = 0; s < count; ++s) {
        for (int b = 0; b < kSamples / 2; ++b) {
            rec->seriesSpecRe[s][b] = next();
            rec->seriesSpecIm[s][b] = next();
        }
    }
    return rec;
}

struct Density {
    double co;
    double quad;
};

Density plainDensity(const OVRecord &rec, float frequency, int bandWidth, int i, int j) {
    const int nb = std::max(1, bandWidth / 4);
    const double df = static_cast<double>(rec.samplingRateHz / static_cast<float>(rec.burstLength));
    const double norm = static_cast<double>(rec.samplingRateHz) * 2.0 / rec.burstLength;
    const double f = frequency;
    const int k0 = static_cast<int>(std::floor(f / df - nb + 2.0));
    const double w = (f - (nb * 0.5 + k0 - 1.5) * df) / (nb * df);
    const auto product = [&](int b, bool quad) {
        const float *const ri = rec.seriesSpecRe[i];
        const float *const ii = rec.seriesSpecIm[i];
        const float *const rj = rec.seriesSpecRe[j];
        const float *const ij = rec.seriesSpecIm[j];
        return static_cast<double>(quad ? ii[b] * rj[b] - ri[b] * ij[b]
                                        : ri[b] * rj[b] + ii[b] * ij[b]);
    };
    double result[2];
    for (const bool quad : {false, true}) {
        double lower = 0.0;
        double upper = 0.0;
        for (int m = 0; m < nb; ++m) {
            lower += product(std::max(k0 + m, 2), quad);
            upper += product(std::min(k0 + nb + m, rec.burstLength / 2 - 1), quad);
        }
        result[quad ? 1 : 0] = (lower / nb * (1.0 - w) + upper / nb * w) / norm;
    }
    return {result[0], result[1]};
}

TEST(CrossSpectra, AreTheInterpolatedMeansOfTwoBandsInEveryPlace) {
    for (const int width : {1, 7, 8, 32, 128, 512}) {
        const RecordPtr rec = spectra(5);
        rec->dirBandWidth = width;
        for (const float frequency : {0.003F, 0.02F, 0.1F, 0.1234F, 0.49F, 0.95F, 0.999F}) {
            rec->frequencies[3] = frequency;
            ov::computeCrossSpectra(*rec, 3);
            for (int j = 0; j < 5; ++j) {
                for (int i = 0; i <= j; ++i) {
                    const Density expected = plainDensity(*rec, frequency, width, i, j);
                    ASSERT_EQ(rec->crossSpectralMatrix[j][i], static_cast<float>(expected.co));
                    if (i != j) {
                        ASSERT_EQ(rec->crossSpectralMatrix[i][j],
                                  static_cast<float>(expected.quad));
                    }
                }
            }
        }
    }
}

// exact: with a length that is no power of two the harmonic step rounds.
TEST(CrossSpectra, TheHarmonicStepIsASinglePrecisionNumber) {
    const RecordPtr rec = spectra(1);
    int differing = 0;
    for (int samples = 301; samples <= 511; samples += 7) {
        rec->burstLength = samples;
        rec->samplingRateHz = 0.75F;
        rec->dirBandWidth = 8;
        rec->frequencies[0] = 0.2F;
        ov::computeCrossSpectra(*rec, 0);
        const float inSingle = rec->crossSpectralMatrix[0][0];
        ASSERT_EQ(inSingle, static_cast<float>(plainDensity(*rec, 0.2F, 8, 0, 0).co));
        const double wideStep = static_cast<double>(0.75F) / samples;
        differing += static_cast<double>(0.75F / static_cast<float>(samples)) != wideStep ? 1 : 0;
    }
    EXPECT_GT(differing, 0);
}

TEST(CrossSpectra, BelowAWidthOfEightLieBetweenTwoNeighbouringPlaces) {
    for (const int width : {1, 4, 7}) {
        const RecordPtr rec = spectra(1);
        rec->dirBandWidth = width;
        rec->frequencies[0] =
            static_cast<float>(40.25 * kStep); // harmonics 40 and 41 in places 41 and 42
        ov::computeCrossSpectra(*rec, 0);
        const auto power = [&rec](int b) {
            return std::pow(static_cast<double>(rec->seriesSpecRe[0][b]), 2.0) +
                   std::pow(static_cast<double>(rec->seriesSpecIm[0][b]), 2.0);
        };
        const double expected = (0.75 * power(41) + 0.25 * power(42)) / (2.0 * kStep);
        EXPECT_NEAR(rec->crossSpectralMatrix[0][0], expected, 1e-5 * expected) << width;
    }
}

TEST(CrossSpectra, ReachingBelowTheAxisRepeatsPlaceTwo) {
    const RecordPtr rec = spectra(1);
    std::fill_n(rec->seriesSpecRe[0], kSamples / 2, 0.0F);
    std::fill_n(rec->seriesSpecIm[0], kSamples / 2, 0.0F);
    rec->seriesSpecRe[0][0] = rec->seriesSpecRe[0][1] =
        1e6F; // mean and Nyquist: never part of a band
    rec->seriesSpecRe[0][2] = 1.0F;
    rec->frequencies[0] = static_cast<float>(1.25 * kStep);
    ov::computeCrossSpectra(
        *rec, 0); // 8 places from -5: the lower band repeats place 2, the upper one holds 3 to 10
    const Density expected = plainDensity(*rec, rec->frequencies[0], 32, 0, 0);
    EXPECT_EQ(rec->crossSpectralMatrix[0][0], static_cast<float>(expected.co));
    const double weight = (1.25 - (4.0 - 5.0 - 1.5)) / 8.0;
    EXPECT_NEAR(rec->crossSpectralMatrix[0][0], (1.0 - weight) / (2.0 * kStep), 1e-3);
}

TEST(CrossSpectra, ReachingAboveTheAxisRepeatsTheLastPlace) {
    const RecordPtr rec = spectra(1);
    std::fill_n(rec->seriesSpecRe[0], kSamples / 2, 0.0F);
    std::fill_n(rec->seriesSpecIm[0], kSamples / 2, 0.0F);
    rec->seriesSpecRe[0][kSamples / 2 - 1] = 1.0F;
    rec->frequencies[0] =
        static_cast<float>(511.5 * kStep); // lower band from 505 to 512, upper from 513
    std::fill_n(rec->seriesSpecRe[0] + kSamples / 2, 1000, 0.0F);
    ov::computeCrossSpectra(*rec, 0);
    const double weight = (511.5 - (4.0 + 505.0 - 1.5)) / 8.0;
    const double expected = ((1.0 - weight) / 8.0 + weight) / (2.0 * kStep);
    EXPECT_NEAR(rec->crossSpectralMatrix[0][0], expected, 1e-4 * expected);
}

TEST(CrossSpectra, OfACosineHoldItsVariance) {
    const RecordPtr rec = spectra(1);
    std::fill_n(rec->seriesSpecRe[0], kSamples / 2, 0.0F);
    std::fill_n(rec->seriesSpecIm[0], kSamples / 2, 0.0F);
    rec->seriesSpecRe[0][101] = 0.6F; // harmonic 100, amplitude 1 m
    rec->seriesSpecIm[0][101] = -0.8F;
    double variance = 0.0;
    for (int bin = 50; bin < 150; ++bin) {
        rec->frequencies[0] = static_cast<float>(bin * kStep);
        ov::computeCrossSpectra(*rec, 0);
        variance += static_cast<double>(rec->crossSpectralMatrix[0][0]) * kStep;
    }
    EXPECT_NEAR(variance, 0.5, 1e-3);
}

TEST(CrossSpectra, TheQuadSpectrumIsPositiveWhereTheEarlierSeriesHasTheGreaterAngle) {
    const RecordPtr rec = spectra(2);
    for (int b = 0; b < kSamples / 2; ++b) {
        rec->seriesSpecRe[0][b] = 0.0F;
        rec->seriesSpecIm[0][b] = 1.0F;
        rec->seriesSpecRe[1][b] = 2.0F;
        rec->seriesSpecIm[1][b] = 0.0F;
    }
    rec->frequencies[0] = 0.2F;
    ov::computeCrossSpectra(*rec, 0);
    EXPECT_NEAR(rec->crossSpectralMatrix[1][0], 0.0, 1e-6);
    EXPECT_NEAR(rec->crossSpectralMatrix[0][1], 2.0 / (2.0 * kStep), 1e-3);
}

TEST(BandSpectra, OfPressureAreTheLastSeriesDiagonal) {
    const RecordPtr rec = spectra(4);
    rec->dirBandWidth = 16;
    rec->specBandWidth = 16;
    rec->nFrequencies = 90;
    for (int f = 0; f < 90; ++f) {
        rec->frequencies[f] = 0.01F * static_cast<float>(f + 1);
    }
    ov::computeBandSpectra(*rec);
    for (int f = 0; f < 90; ++f) {
        ov::computeCrossSpectra(*rec, f);
        ASSERT_EQ(rec->bandSpectrum[f], rec->crossSpectralMatrix[3][3]) << f;
    }
    EXPECT_EQ(rec->bandSpectrum[90], 0.0F);
}

TEST(BandSpectra, HaveABandWidthOfTheirOwn) {
    const RecordPtr rec = spectra(2);
    rec->frequencies[0] = 0.2F;
    rec->specBandWidth = 256;
    rec->dirBandWidth = 4;
    ov::computeBandSpectra(*rec);
    EXPECT_EQ(rec->bandSpectrum[0], static_cast<float>(plainDensity(*rec, 0.2F, 256, 1, 1).co));
}

TEST(BandSpectra, OfTheTrackHaveItsRateAndLength) {
    const RecordPtr rec = spectra(1);
    rec->nFrequenciesFine = 150;
    rec->astSamplingRate = 2.0F;
    rec->astLength = kSamples;
    std::copy_n(rec->seriesSpecRe[0], kSamples / 2, rec->astSpecRe);
    std::copy_n(rec->seriesSpecIm[0], kSamples / 2, rec->astSpecIm);
    rec->samplingRateHz = 1.0F; // not read by this one
    rec->burstLength = 4;
    for (int f = 0; f < 150; ++f) {
        rec->fineFreqAxis[f] = 0.006F * static_cast<float>(f + 1);
    }
    ov::computeBandSpectraFine(*rec);
    rec->samplingRateHz = 2.0F;
    rec->burstLength = kSamples;
    for (int f = 0; f < 150; ++f) {
        ASSERT_EQ(rec->bandSpectrumFine[f],
                  static_cast<float>(plainDensity(*rec, rec->fineFreqAxis[f], 32, 0, 0).co));
    }
    EXPECT_EQ(rec->bandSpectrumFine[150], 0.0F);
}

TEST(CrossSpectra, BandsOutsideTheStorageReadNothingBesideIt) {
    constexpr float kNone = std::numeric_limits<float>::quiet_NaN();
    const RecordPtr rec = spectra(1);
    // What lies before and behind the slots of series 0 must not enter.
    std::fill_n(rec->attitudeSeries[2], OV_MAX_SAMPLES, kNone);
    std::fill_n(rec->seriesSpecRe[1], OV_MAX_SAMPLES / 2, kNone);
    std::fill_n(rec->seriesSpecRe[5], OV_MAX_SAMPLES / 2, kNone);
    std::fill_n(rec->seriesSpecIm[1], OV_MAX_SAMPLES / 2, kNone);
    rec->dirBandWidth = 512;
    for (const int samples : {2, 3, 40, 16384, 40000}) {
        for (const float frequency : {-5.0F, 0.0F, 0.5F, 1e9F, 1e30F}) {
            rec->burstLength = samples;
            rec->frequencies[0] = frequency;
            ov::computeCrossSpectra(*rec, 0);
            EXPECT_FALSE(std::isnan(rec->crossSpectralMatrix[0][0])) << samples << ' ' << frequency;
        }
    }
}

} // namespace
