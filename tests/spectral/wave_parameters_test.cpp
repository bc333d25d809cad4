// Spectral wave parameters: moments, mean and peak direction, the fine peak and the spatial-aliasing limit.
#include "spectral/wave_parameters.hpp"

#include <algorithm>
#include <cmath>
#include <iterator>
#include <limits>

#include <gtest/gtest.h>

#include "support/record_ptr.hpp"

namespace {

using orvik::test::makeRecord;
using orvik::test::RecordPtr;

constexpr int kBins = 60;

// A single-peaked spectrum from pressure (method 1) on 60 bins from 0.03 Hz, travelling towards compass 30 degrees.
RecordPtr burst() {
    RecordPtr rec = makeRecord();
    rec->activeMethod = 1;
    rec->spectrumSource = OV_SOURCE_PRESSURE;
    rec->nFrequencies = kBins;
    rec->freqStep = static_cast<double>(0.01F);
    rec->freqMax = static_cast<double>(0.62F);
    rec->fineFreqMin = static_cast<double>(0.03F);
    rec->lastValidFreqIndex = 200;
    for (int i = 0; i < kBins; ++i) {
        const double f = 0.03 + 0.01 * i;
        rec->frequencies[i] = static_cast<float>(f);
        rec->spectrumPrs[i] = static_cast<float>(2.0 * std::pow(f / 0.1, -5.0) *
                                                 std::exp(-1.25 * std::pow(f / 0.1, -4.0)));
        rec->spectrumVel[i] = 0.5F * rec->spectrumPrs[i];
        rec->fourierA1[i] = static_cast<float>(0.8 * std::cos(M_PI / 3.0));
        rec->fourierB1[i] = static_cast<float>(0.8 * std::sin(M_PI / 3.0));
        rec->meanDirection[i] = 30.0F;
        rec->directionalSpread[i] = 20.0F;
    }
    std::fill(std::begin(rec->waveParameters), std::end(rec->waveParameters), -9.0F);
    return rec;
}

TEST(SpectralMoments, GiveHeightAndPeriodsOfTheMoments) {
    const RecordPtr rec = burst();
    ov::spectralMoments(*rec);
    long double m0 = 0.0L;
    long double inverse = 0.0L;
    long double m2 = 0.0L;
    for (int i = 0; i < kBins; ++i) {
        const long double s = rec->spectrumPrs[i];
        const long double f = rec->frequencies[i];
        m0 += s;
        inverse += s / f;
        m2 += s * f * f;
    }
    EXPECT_FLOAT_EQ(
        rec->waveParameters[OV_HM0],
        static_cast<float>(4.0L * std::sqrt(m0 * static_cast<long double>(rec->freqStep))));
    EXPECT_FLOAT_EQ(rec->waveParameters[OV_TM02], static_cast<float>(std::sqrt(m0 / m2)));
    EXPECT_FLOAT_EQ(rec->energyPeriod, static_cast<float>(inverse / m0));
    EXPECT_GT(rec->energyPeriod, rec->waveParameters[OV_TM02]); // the moments' order
}

TEST(SpectralMoments, OfALineAreTheLine) {
    const RecordPtr rec = burst();
    std::fill_n(rec->spectrumPrs, kBins, 0.0F);
    rec->spectrumPrs[7] = 25.0F; // 0.25 m^2 at 0.1 Hz
    ov::spectralMoments(*rec);
    EXPECT_FLOAT_EQ(rec->waveParameters[OV_HM0], 2.0F);
    EXPECT_FLOAT_EQ(rec->waveParameters[OV_TM02], 10.0F);
    EXPECT_FLOAT_EQ(rec->energyPeriod, 10.0F);
}

// exact: the product with the squared frequency is a single-precision one.
TEST(SpectralMoments, TheSecondMomentTakesSinglePrecisionProducts) {
    int differing = 0;
    for (int trial = 0; trial < 50; ++trial) {
        const RecordPtr rec = burst();
        rec->nFrequencies = 2 + trial % 5; // few terms: their rounding does not average out
        for (int i = 0; i < kBins; ++i) {
            rec->spectrumPrs[i] = 1.0F + 0.0371F * static_cast<float>((trial + 1) * (i + 3));
        }
        ov::spectralMoments(*rec);
        double m0 = 0.0;
        double m2 = 0.0;
        double wide = 0.0;
        for (int i = 0; i < rec->nFrequencies; ++i) {
            const float s = rec->spectrumPrs[i];
            const float f = rec->frequencies[i];
            m0 += static_cast<double>(s) * rec->freqStep;
            m2 += static_cast<double>(s * f * f) * rec->freqStep;
            wide += static_cast<double>(s) * static_cast<double>(f) * static_cast<double>(f) *
                    rec->freqStep;
        }
        ASSERT_EQ(rec->waveParameters[OV_TM02], static_cast<float>(std::sqrt(m0 / m2)));
        differing +=
            static_cast<float>(std::sqrt(m0 / wide)) != rec->waveParameters[OV_TM02] ? 1 : 0;
    }
    EXPECT_GT(differing, 0); // the trials do tell the two apart
}

TEST(SpectralMoments, WithoutEnergyTheHeightIsZeroAndThePeriodsAreMissing) {
    const RecordPtr rec = burst();
    std::fill_n(rec->spectrumPrs, kBins, 0.0F);
    ov::spectralMoments(*rec);
    EXPECT_EQ(rec->waveParameters[OV_HM0], 0.0F);
    EXPECT_EQ(rec->waveParameters[OV_TM02], -9.0F);
    EXPECT_EQ(rec->energyPeriod, -9.0F);
    EXPECT_EQ(rec->waveParameters[OV_MEAN_DIRECTION], 0.0F);
    EXPECT_EQ(rec->waveParameters[OV_RESULTANT_LENGTH], 0.0F);
}

TEST(SpectralMoments, TheSourceSelectsTheSpectrumAndClearsWhatLiesBeyondTheMainAxis) {
    const RecordPtr rec = burst();
    std::fill(std::begin(rec->spectraUsed), std::end(rec->spectraUsed), 5.0F);
    ov::spectralMoments(*rec);
    EXPECT_EQ(rec->spectraUsed[10], rec->spectrumPrs[10]);
    EXPECT_EQ(rec->paramFrequencies[10], rec->frequencies[10]);
    EXPECT_EQ(rec->spectraUsed[200], 0.0F);
    EXPECT_EQ(rec->spectraUsed[399], 0.0F);
    const float height = rec->waveParameters[OV_HM0];
    rec->spectrumSource = OV_SOURCE_VELOCITY;
    ov::spectralMoments(*rec);
    EXPECT_EQ(rec->spectraUsed[10], rec->spectrumVel[10]);
    EXPECT_FLOAT_EQ(rec->waveParameters[OV_HM0], height * std::sqrt(0.5F));
    rec->spectrumSource = OV_SOURCE_SURFACE_TRACK; // copies neither
    rec->spectraUsed[10] = 3.25F;
    ov::spectralMoments(*rec);
    EXPECT_EQ(rec->spectraUsed[10], 3.25F);
}

TEST(SpectralMoments, AValidTrackUsesTheFineSpectrumAsItStands) {
    const RecordPtr rec = burst();
    rec->activeMethod = 4;
    rec->nMlmSeries = 1;
    rec->surfaceTrackValid = 1;
    rec->spectrumSource = OV_SOURCE_SURFACE_TRACK;
    rec->nFrequenciesFine = 400;
    std::fill_n(rec->paramFrequencies, 400, 0.25F);
    rec->spectraUsed[399] = 25.0F; // 0.25 m^2 in the last fine bin
    ov::spectralMoments(*rec);
    EXPECT_FLOAT_EQ(rec->waveParameters[OV_HM0], 2.0F);
    EXPECT_FLOAT_EQ(rec->waveParameters[OV_TM02], 4.0F);
    rec->surfaceTrackValid = 0; // no longer: the main axis again
    rec->spectrumSource = OV_SOURCE_PRESSURE;
    ov::spectralMoments(*rec);
    EXPECT_EQ(rec->spectraUsed[5], rec->spectrumPrs[5]);
}

TEST(SpectralMoments, MethodThreeTakesTheMainAxisWhateverTheTrack) {
    const RecordPtr rec = burst();
    rec->activeMethod = 3;
    rec->nMlmSeries = 1;
    rec->surfaceTrackValid = 1;
    ov::spectralMoments(*rec);
    EXPECT_EQ(rec->spectraUsed[5], rec->spectrumPrs[5]);
}

TEST(MeanDirection, IsNauticalAndItsLengthOneForParallelWaves) {
    const RecordPtr rec = burst();
    ov::spectralMoments(*rec);
    EXPECT_NEAR(rec->waveParameters[OV_MEAN_DIRECTION], 30.0, 1e-5);
    EXPECT_NEAR(rec->waveParameters[OV_RESULTANT_LENGTH], 1.0, 1e-6);
}

TEST(MeanDirection, EveryQuadrantComesOutBetweenZeroAnd360) {
    for (const double direction : {10.0, 80.0, 100.0, 170.0, 190.0, 260.0, 280.0, 350.0}) {
        for (const bool reverse : {false, true}) {
            const RecordPtr rec = burst();
            rec->reverseDirections = reverse ? 1 : 0;
            const double angle = (90.0 - direction) * M_PI / 180.0;
            std::fill_n(rec->fourierA1, kBins, static_cast<float>(0.6 * std::cos(angle)));
            std::fill_n(rec->fourierB1, kBins, static_cast<float>(0.6 * std::sin(angle)));
            ov::spectralMoments(*rec);
            const double expected = reverse ? std::fmod(direction + 180.0, 360.0) : direction;
            EXPECT_NEAR(rec->waveParameters[OV_MEAN_DIRECTION], expected, 2e-5);
        }
    }
}

TEST(MeanDirection, WeighsUnitVectorsWithTheEnergyWhateverTheirSpread) {
    const RecordPtr rec = burst();
    std::fill_n(rec->spectrumPrs, kBins, 0.0F);
    rec->spectrumPrs[3] = 3.0F;
    rec->spectrumPrs[9] = 1.0F;
    rec->fourierA1[3] = 0.6F; // (0.6, 0.8)
    rec->fourierB1[3] = 0.8F;
    rec->fourierA1[9] = 0.08F; // (0.8, -0.6) with a tenth of the length
    rec->fourierB1[9] = -0.06F;
    ov::spectralMoments(*rec);
    const double east = (3.0 * 0.6 + 0.8) / 4.0;
    const double north = (3.0 * 0.8 - 0.6) / 4.0;
    EXPECT_NEAR(rec->waveParameters[OV_MEAN_DIRECTION],
                90.0 - std::atan2(north, east) * 180.0 / M_PI, 1e-4);
    EXPECT_NEAR(rec->waveParameters[OV_RESULTANT_LENGTH], std::hypot(east, north), 1e-6);
}

TEST(MeanDirection, WithoutAnEastOrANorthPartThereIsNone) {
    for (const bool east : {false, true}) {
        for (const bool reverse : {false, true}) {
            const RecordPtr rec = burst();
            rec->reverseDirections = reverse ? 1 : 0;
            std::fill_n(east ? rec->fourierA1 : rec->fourierB1, kBins, 0.0F);
            ov::spectralMoments(*rec);
            EXPECT_EQ(rec->waveParameters[OV_MEAN_DIRECTION], reverse ? 180.0F : 0.0F);
            EXPECT_EQ(rec->waveParameters[OV_RESULTANT_LENGTH], 0.0F);
        }
    }
}

TEST(MeanDirection, LeavesOutAliasedBinsExceptForMethodOne) {
    for (const int method : {1, 2, 3, 4}) {
        const RecordPtr rec = burst();
        rec->activeMethod = method;
        rec->nMlmSeries = 2;
        rec->seriesX[1] = 10.0F; // waves shorter than 20 m are ambiguous
        for (int i = 0; i < kBins; ++i) {
            rec->waveNumbers[i] = i < 20 ? 0.3F : 0.32F; // 20.9 m and 19.6 m
            if (i >= 20) {
                rec->fourierB1[i] = -rec->fourierB1[i]; // compass 150 degrees
            }
        }
        ov::spectralMoments(*rec);
        if (method == 1) {
            EXPECT_GT(rec->waveParameters[OV_MEAN_DIRECTION], 31.0F);
            EXPECT_EQ(rec->lastValidFreqIndex, 200);
        } else {
            EXPECT_NEAR(rec->waveParameters[OV_MEAN_DIRECTION], 30.0, 1e-5);
            EXPECT_EQ(rec->lastValidFreqIndex, 20);
        }
    }
}

TEST(MeanDirection, ThatIsNotANumberLeavesTheHeight) {
    const RecordPtr rec = burst();
    rec->fourierA1[4] = std::numeric_limits<float>::quiet_NaN();
    ov::spectralMoments(*rec);
    EXPECT_TRUE(std::isnan(rec->waveParameters[OV_MEAN_DIRECTION]));
    EXPECT_GT(rec->waveParameters[OV_HM0], 0.0F);
}

// Selected spectrum on the main axis: zero except for what a test puts there.
RecordPtr emptyPeak() {
    RecordPtr rec = burst();
    std::copy_n(rec->frequencies, kBins, rec->paramFrequencies);
    for (int i = 0; i < kBins; ++i) {
        rec->meanDirection[i] = static_cast<float>(i);
        rec->directionalSpread[i] = 20.0F + static_cast<float>(i);
    }
    return rec;
}

TEST(Peak, IsTheVertexOfTheParabolaThroughThreeBins) {
    const RecordPtr rec = emptyPeak();
    const double vertex = 0.1137;
    for (int i = 7; i <= 10; ++i) { // 0.1 .. 0.13 Hz
        const double distance = static_cast<double>(rec->paramFrequencies[i]) - vertex;
        rec->spectraUsed[i] = static_cast<float>(5.0 - 4000.0 * distance * distance);
    }
    ov::peakParameters(*rec);
    EXPECT_NEAR(rec->waveParameters[OV_TP], 1.0 / vertex, 1e-4);
}

TEST(Peak, TakesTheFirstOfEqualMaxima) {
    const RecordPtr rec = emptyPeak();
    rec->spectraUsed[7] = 2.0F;
    rec->spectraUsed[20] = 2.0F;
    ov::peakParameters(*rec);
    EXPECT_NEAR(rec->waveParameters[OV_TP], 10.0, 1e-4);
}

TEST(Peak, InTheFirstOrLastBinIsThatBinWithoutInterpolation) {
    for (const int bin : {0, kBins - 1}) {
        const RecordPtr rec = emptyPeak();
        rec->freqMax = 0.0; // directions at the peak are not interpolated either
        rec->spectraUsed[bin] = 2.0F;
        ov::peakParameters(*rec);
        EXPECT_EQ(rec->waveParameters[OV_TP], 1.0F / rec->frequencies[bin]);
        EXPECT_EQ(rec->waveParameters[OV_PEAK_DIRECTION], rec->meanDirection[bin]);
        EXPECT_EQ(rec->waveParameters[OV_PEAK_SPREAD], rec->directionalSpread[bin]);
    }
}

TEST(Peak, InTheFirstBinBelowTheUpperFrequencyTakesDirectionAndCoefficientsOfThatBin) {
    const RecordPtr rec = emptyPeak();
    rec->spectraUsed[0] = 2.0F;
    rec->meanDirection[0] = 77.0F;
    ov::peakParameters(*rec);
    EXPECT_EQ(rec->waveParameters[OV_PEAK_DIRECTION], 77.0F);
    EXPECT_NEAR(rec->waveParameters[OV_PEAK_SPREAD], std::sqrt(2.0 * (1.0 - 0.8)) * 180.0 / M_PI,
                1e-4);
}

TEST(Peak, OfASpectrumOfZerosIsMissingAndFlagged) {
    const RecordPtr rec = emptyPeak();
    ov::peakParameters(*rec);
    EXPECT_EQ(rec->waveParameters[OV_TP], -9.0F);
    EXPECT_EQ(rec->waveParameters[OV_PEAK_SPREAD], -9.0F);
    EXPECT_EQ(rec->qualityFlags, OV_FLAG_INVALID_PARAMETERS);
}

TEST(Peak, OfASpectrumWithEnergyIsNotFlagged) {
    const RecordPtr rec = emptyPeak();
    rec->spectraUsed[0] = 1e-30F;
    ov::peakParameters(*rec);
    EXPECT_EQ(rec->qualityFlags, 0);
}

TEST(Peak, OfANegativeSpectrumHasNoPeriod) {
    const RecordPtr rec = emptyPeak();
    std::fill_n(rec->spectraUsed, kBins, -2.0F);
    rec->spectraUsed[9] = -1.0F;
    ov::peakParameters(*rec);
    EXPECT_EQ(rec->waveParameters[OV_TP], 0.0F);
}

// A peak a fraction of a bin above (or below) bin 7; returns the fraction.
double tiltedPeak(OVRecord &rec, bool above) {
    rec.spectraUsed[6] = above ? 1.0F : 2.0F;
    rec.spectraUsed[7] = 4.0F;
    rec.spectraUsed[8] = above ? 2.0F : 1.0F;
    // Vertex of a parabola through (-1, l), (0, c), (1, r): (l - r) / (2 (l - 2c + r)).
    return above ? 0.1 : -0.1;
}

TEST(PeakDirection, IsInterpolatedTowardsTheNeighbourOnThePeaksSide) {
    for (const bool above : {true, false}) {
        const RecordPtr rec = emptyPeak();
        const double fraction = tiltedPeak(*rec, above);
        rec->meanDirection[6] = 100.0F;
        rec->meanDirection[7] = 110.0F;
        rec->meanDirection[8] = 140.0F;
        ov::peakParameters(*rec);
        const double expected = above ? 110.0 + fraction * 30.0 : 110.0 + fraction * 10.0;
        EXPECT_NEAR(rec->waveParameters[OV_PEAK_DIRECTION], expected, 1e-3);
        EXPECT_NEAR(rec->waveParameters[OV_TP], 1.0 / (0.1 + 0.01 * fraction), 1e-4);
    }
}

TEST(PeakDirection, GoesTheShortWayThroughNorth) {
    const struct {
        float at, next;
        double expected;
    } cases[] = {{358.0F, 8.0F, 359.0},
                 {2.0F, 352.0F, 1.0},
                 {359.5F, 19.5F, 1.5},
                 {0.5F, 340.5F, 358.5},
                 {10.0F, 189.0F, 27.9}};
    for (const auto &[at, next, expected] : cases) {
        const RecordPtr rec = emptyPeak();
        tiltedPeak(*rec, true);
        rec->meanDirection[7] = at;
        rec->meanDirection[8] = next;
        ov::peakParameters(*rec);
        EXPECT_NEAR(rec->waveParameters[OV_PEAK_DIRECTION], expected, 1e-3) << at << " to " << next;
    }
}

TEST(PeakDirection, OppositeNeighboursCountAsWrapped) {
    const RecordPtr rec = emptyPeak();
    tiltedPeak(*rec, true);
    rec->meanDirection[7] = 10.0F;
    rec->meanDirection[8] = 190.0F; // exactly 180 degrees apart: turns the other way
    ov::peakParameters(*rec);
    EXPECT_NEAR(rec->waveParameters[OV_PEAK_DIRECTION], 10.0 - 0.1 * 180.0 + 360.0, 1e-3);
}

TEST(PeakSpread, TakesTheSlopeOfTheCoefficientsAsPositive) {
    for (const bool above : {true, false}) {
        for (const float next : {0.5F, 0.9F}) { // falling and rising coefficients
            const RecordPtr rec = emptyPeak();
            const double fraction = tiltedPeak(*rec, above);
            std::fill_n(rec->fourierB1, kBins, 0.0F);
            rec->fourierA1[7] = 0.7F;
            rec->fourierA1[above ? 8 : 6] = next;
            ov::peakParameters(*rec);
            const double r = 0.7 + 0.2 * fraction;
            EXPECT_NEAR(rec->waveParameters[OV_PEAK_SPREAD],
                        std::sqrt(2.0 * (1.0 - r)) * 180.0 / M_PI, 1e-3);
        }
    }
}

TEST(PeakSpread, InconsistentCoefficientsHaveNone) {
    const RecordPtr rec = emptyPeak();
    tiltedPeak(*rec, true);
    std::fill_n(rec->fourierA1, kBins, 0.9F);
    std::fill_n(rec->fourierB1, kBins, 0.9F);
    ov::peakParameters(*rec);
    EXPECT_EQ(rec->waveParameters[OV_PEAK_SPREAD], 0.0F);
}

TEST(PeakDirection, FromTheUpperFrequencyOnStaysAsItWas) {
    const RecordPtr rec = emptyPeak();
    tiltedPeak(*rec, true);
    rec->freqMax = 0.05;
    rec->waveParameters[OV_PEAK_DIRECTION] = 123.0F;
    rec->waveParameters[OV_PEAK_SPREAD] = 45.0F;
    ov::peakParameters(*rec);
    EXPECT_EQ(rec->waveParameters[OV_PEAK_DIRECTION], 123.0F);
    EXPECT_EQ(rec->waveParameters[OV_PEAK_SPREAD], 45.0F);
}

TEST(Peak, AxesOfNoAndOneBinStayInside) {
    const RecordPtr rec = emptyPeak();
    rec->nFrequencies = 0;
    ov::peakParameters(*rec);
    EXPECT_EQ(rec->waveParameters[OV_TP], -9.0F);
    rec->nFrequencies = 1;
    rec->spectraUsed[0] = 1.0F;
    ov::peakParameters(*rec);
    EXPECT_EQ(rec->waveParameters[OV_TP], 1.0F / rec->frequencies[0]);
}

RecordPtr finePeak(int bins) {
    RecordPtr rec = makeRecord();
    rec->nFrequenciesFine = bins;
    for (int i = 0; i < bins; ++i) {
        rec->fineFreqAxis[i] = 0.02F + 0.005F * static_cast<float>(i);
    }
    rec->waveParameters[OV_TP] = 3.5F;
    return rec;
}

TEST(FinePeak, IsTheVertexOfTheParabolaThroughThreeBins) {
    const RecordPtr rec = finePeak(100);
    const double vertex = 0.1215;
    for (int i = 19; i <= 22; ++i) {
        const double distance = static_cast<double>(rec->fineFreqAxis[i]) - vertex;
        rec->bandSpectrumFine[i] = static_cast<float>(5.0 - 8000.0 * distance * distance);
    }
    ov::findFinePeak(*rec);
    EXPECT_NEAR(rec->waveParameters[OV_TP], 1.0 / vertex, 2e-3); // single precision throughout
}

TEST(FinePeak, InTheFirstBinIsThatBinAndInTheLastOneNothingChanges) {
    const RecordPtr rec = finePeak(100);
    rec->bandSpectrumFine[99] = 1.0F;
    ov::findFinePeak(*rec);
    EXPECT_EQ(rec->waveParameters[OV_TP], 3.5F);
    rec->bandSpectrumFine[0] = 1.0F; // equal: the first counts
    ov::findFinePeak(*rec);
    EXPECT_EQ(rec->waveParameters[OV_TP], 1.0F / rec->fineFreqAxis[0]);
}

TEST(FinePeak, WithoutPositiveEnergyHasNoPeriod) {
    const RecordPtr rec = finePeak(100);
    std::fill_n(rec->bandSpectrumFine, 100, -2.0F);
    rec->bandSpectrumFine[50] = -1.0F;
    ov::findFinePeak(*rec);
    EXPECT_EQ(rec->waveParameters[OV_TP], 0.0F);
}

TEST(FinePeak, WithoutBinsNothingChanges) {
    const RecordPtr rec = finePeak(0);
    ov::findFinePeak(*rec);
    EXPECT_EQ(rec->waveParameters[OV_TP], 3.5F);
}

// Four series on a line: 3, 4 and 5 m apart, the last 12 m from the first.
RecordPtr spacedSeries(int method) {
    RecordPtr rec = burst();
    rec->activeMethod = method;
    rec->nMlmSeries = 4;
    const float x[] = {0.0F, 3.0F, 7.0F, 12.0F};
    std::copy(std::begin(x), std::end(x), rec->seriesX);
    for (int i = 0; i < kBins; ++i) {
        rec->waveNumbers[i] = 0.05F * static_cast<float>(i + 1);
    }
    rec->aliasingFrequency = -9.0F;
    return rec;
}

TEST(AliasingLimit, IsTheFirstBinShorterThanTwiceTheLeastSpacing) {
    for (const int method : {2, 3, 4}) {
        const RecordPtr rec = spacedSeries(method);
        ov::aliasingLimit(*rec, 1); // pi / k < 3 m from k = 1.0472 on: bin 20 holds 1.05
        EXPECT_EQ(rec->lastValidFreqIndex, 20);
        EXPECT_EQ(rec->aliasingFrequency, rec->frequencies[20]);
    }
}

TEST(AliasingLimit, ClosesTheRingAndMeasuresInThePlane) {
    const RecordPtr rec = spacedSeries(3);
    rec->seriesX[3] = 0.6F; // 1 m from the first
    rec->seriesY[3] = 0.8F;
    ov::aliasingLimit(*rec, 1); // pi / k < 1 m from k = 3.1416 on: beyond the axis
    EXPECT_EQ(rec->lastValidFreqIndex, 200);
    rec->waveNumbers[59] = 3.15F;
    ov::aliasingLimit(*rec, 1);
    EXPECT_EQ(rec->lastValidFreqIndex, 59);
}

TEST(AliasingLimit, HalfAWavelengthExactlyIsStillUsable) {
    const RecordPtr rec = spacedSeries(3);
    std::fill_n(rec->waveNumbers, kBins, 0.01F);
    rec->waveNumbers[10] = 1.0471976F; // just above pi / 3: shorter than 6 m
    rec->waveNumbers[5] = 1.0471975F;  // just below
    ov::aliasingLimit(*rec, 1);
    EXPECT_EQ(rec->lastValidFreqIndex, 10);
}

TEST(AliasingLimit, MethodOneHasNone) {
    const RecordPtr rec = spacedSeries(1);
    rec->lastValidFreqIndex = 3;
    ov::aliasingLimit(*rec, 1);
    EXPECT_EQ(rec->lastValidFreqIndex, 200);
    EXPECT_EQ(rec->aliasingFrequency, -9.0F);
}

TEST(AliasingLimit, WithoutAliasingEveryBinIsUsable) {
    const RecordPtr rec = spacedSeries(3);
    std::fill_n(rec->waveNumbers, kBins, 0.01F);
    ov::aliasingLimit(*rec, 1);
    EXPECT_EQ(rec->lastValidFreqIndex, 200);
    EXPECT_EQ(rec->aliasingFrequency, -9.0F);
}

TEST(AliasingLimit, ABlockedBinIsNotAnAliasedOne) {
    const RecordPtr rec = spacedSeries(3);
    std::fill_n(rec->waveNumbers, kBins, 0.0F);
    ov::aliasingLimit(*rec, 1);
    EXPECT_EQ(rec->lastValidFreqIndex, 200);
}

TEST(AliasedPeak, IsFlaggedAndItsBinReturned) {
    const RecordPtr rec = spacedSeries(3);
    rec->waveParameters[OV_TP] = 1.0F / 0.2351F; // bin 20.5: rounded down
    EXPECT_EQ(ov::aliasingLimit(*rec, 0), 20);
    EXPECT_EQ(rec->qualityFlags, OV_FLAG_ALIASED_PEAK);
    EXPECT_EQ(rec->lastValidFreqIndex, 200); // that is the other mode's
}

TEST(AliasedPeak, ALongerOneIsNot) {
    const RecordPtr rec = spacedSeries(3);
    rec->waveParameters[OV_TP] = 1.0F / 0.2251F;
    EXPECT_EQ(ov::aliasingLimit(*rec, 0), 19);
    EXPECT_EQ(rec->qualityFlags, 0);
}

TEST(AliasedPeak, RoundsUpOnlyWhenTheRemainderReachesHalfAHertz) {
    const RecordPtr rec = spacedSeries(3);
    rec->freqStep = 0.8;
    rec->fineFreqMin = 0.1;
    rec->waveParameters[OV_TP] = 1.0F / 0.52F; // 0.525 steps
    EXPECT_EQ(ov::aliasingLimit(*rec, 0), 1);
    rec->waveParameters[OV_TP] = 1.0F / 0.48F; // 0.475 steps
    EXPECT_EQ(ov::aliasingLimit(*rec, 0), 0);
}

TEST(AliasedPeak, AMissingOrImpossiblePeriodStaysInside) {
    for (const float period : {-9.0F, 0.0F, 1e-30F, std::numeric_limits<float>::quiet_NaN()}) {
        const RecordPtr rec = spacedSeries(3);
        rec->waveParameters[OV_TP] = period;
        ov::aliasingLimit(*rec, 0);
        EXPECT_EQ(rec->qualityFlags, 0);
    }
}

TEST(AliasingLimit, ListsOfNoOneAndTooManySeriesStayInside) {
    for (const int n : {-1, 0, 1, 7}) {
        const RecordPtr rec = spacedSeries(3);
        rec->nMlmSeries = n;
        ov::aliasingLimit(*rec, 1);
        // None: no spacing limits the axis to waves longer than 200 km. One and a coinciding pair: no limit at all.
        EXPECT_EQ(rec->lastValidFreqIndex, n <= 0 ? 0 : 200);
    }
}

} // namespace
