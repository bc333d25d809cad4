// Elevation spectra of one bin, their check ratio, and the cut and tail of the whole axis.
#include "spectral/elevation_spectra.hpp"

#include <algorithm>
#include <cmath>
#include <iterator>
#include <limits>

#include <gtest/gtest.h>

#include "support/record_ptr.hpp"

namespace {

using orvik::test::makeRecord;
using orvik::test::RecordPtr;

constexpr float kLeast = 1e-5F;

RecordPtr horizontalBin() {
    RecordPtr rec = makeRecord();
    rec->activeMethod = 1;
    rec->seriesCount = 4;
    rec->crossSpectralMatrix[0][0] = 0.31F;
    rec->crossSpectralMatrix[1][1] = 0.17F;
    rec->crossSpectralMatrix[2][2] = 0.83F;
    rec->crossSpectralMatrix[3][3] = 0.41F;
    rec->horizVelGain[0] = 0.73F;
    rec->velocityNoiseMps = 0.021F;
    rec->bandSpectrum[5] = 0.38F;
    rec->pressureGain[5] = 0.62F;
    return rec;
}

TEST(ElevationFromHorizontal, AddsBothComponentsWithoutTheirNoise) {
    const RecordPtr rec = horizontalBin();
    ov::elevationSpectraFromHorizontal(*rec, 5);
    const double gain = static_cast<double>(0.73F * 0.73F);
    const double noise = static_cast<double>(0.021F) * static_cast<double>(0.021F);
    EXPECT_FLOAT_EQ(
        rec->spectrumVel[5],
        static_cast<float>((static_cast<double>(0.31F) + static_cast<double>(0.17F) - 2.0 * noise) /
                           gain));
    EXPECT_FLOAT_EQ(rec->spectrumPrs[5], 0.38F / (0.62F * 0.62F));
    EXPECT_EQ(rec->spectrumVel[4], 0.0F);
    EXPECT_EQ(rec->spectrumVel[6], 0.0F);
}

TEST(ElevationFromHorizontal, BelowTheNoiseTheSpectrumIsTheLeastOne) {
    const RecordPtr rec = horizontalBin();
    rec->velocityNoiseMps = 1.0F;
    ov::elevationSpectraFromHorizontal(*rec, 5);
    EXPECT_EQ(rec->spectrumVel[5], kLeast);
    rec->crossSpectralMatrix[0][0] = 1.0F; // exactly the noise: zero stays zero
    rec->crossSpectralMatrix[1][1] = 1.0F;
    ov::elevationSpectraFromHorizontal(*rec, 5);
    EXPECT_EQ(rec->spectrumVel[5], 0.0F);
}

TEST(ElevationFromPressure, WithoutAGainThereIsNone) {
    for (const float gain : {0.0F, -0.5F, std::numeric_limits<float>::quiet_NaN()}) {
        const RecordPtr rec = horizontalBin();
        rec->pressureGain[5] = gain;
        rec->spectrumPrs[5] = 3.0F;
        ov::elevationSpectraFromHorizontal(*rec, 5);
        EXPECT_EQ(rec->spectrumPrs[5], 0.0F);
    }
}

RecordPtr beamBin() {
    RecordPtr rec = makeRecord();
    rec->activeMethod = 4;
    rec->seriesCount = 5;
    rec->velocitySeriesCount = 3;
    for (int s = 0; s < 5; ++s) {
        rec->crossSpectralMatrix[s][s] = 0.11F * static_cast<float>(s + 1);
        rec->mlmMatrix[s][s] = 0.37 + 0.1 * s;
    }
    rec->velocityNoiseMps = 0.03F;
    rec->pressureGain[7] = 0.44F;
    rec->bandSpectrum[7] = 99.0F; // not read here
    return rec;
}

double beamElevation(const OVRecord &rec, int s) {
    const double noise =
        static_cast<double>(rec.velocityNoiseMps) * static_cast<double>(rec.velocityNoiseMps);
    return (static_cast<double>(rec.crossSpectralMatrix[s][s]) - noise) / rec.mlmMatrix[s][s];
}

TEST(ElevationPerBeam, IsTheMeanOfTheBeams) {
    const RecordPtr rec = beamBin();
    ov::elevationSpectraPerBeam(*rec, 7);
    double sum = 0.0;
    for (int s = 0; s < 3; ++s) {
        EXPECT_EQ(rec->beamElevSpectrum[7][s], static_cast<float>(beamElevation(*rec, s)));
        sum += beamElevation(*rec, s);
    }
    EXPECT_EQ(rec->beamElevSpectrum[7][3], 0.0F); // the track is no velocity
    EXPECT_EQ(rec->spectrumVel[7], static_cast<float>(sum / 3.0));
    EXPECT_FLOAT_EQ(rec->spectrumPrs[7], rec->crossSpectralMatrix[4][4] / (0.44F * 0.44F));
}

// exact: values for which a sum of narrowed terms would come out one ulp lower.
TEST(ElevationPerBeam, NarrowsTheMeanAndNotItsTerms) {
    const RecordPtr rec = makeRecord();
    rec->seriesCount = 4;
    rec->velocitySeriesCount = 3;
    int differing = 0;
    for (int trial = 1; trial <= 200; ++trial) {
        double exact = 0.0;
        float narrowed = 0.0F;
        double ofNarrowed = 0.0;
        for (int s = 0; s < 3; ++s) {
            rec->crossSpectralMatrix[s][s] = 1.0F + 0.013F * static_cast<float>(trial * (s + 1));
            rec->mlmMatrix[s][s] = 3.0 + 0.7 * s;
            exact += beamElevation(*rec, s);
            narrowed = static_cast<float>(beamElevation(*rec, s));
            ofNarrowed += static_cast<double>(narrowed);
        }
        ov::elevationSpectraPerBeam(*rec, 0);
        ASSERT_EQ(rec->spectrumVel[0], static_cast<float>(exact / 3.0));
        differing += static_cast<float>(ofNarrowed / 3.0) != rec->spectrumVel[0] ? 1 : 0;
    }
    EXPECT_GT(differing, 0); // the trials do tell the two apart
}

TEST(ElevationPerBeam, ABeamBelowItsNoiseIsKeptNegativeButCountsAsNothing) {
    const RecordPtr rec = beamBin();
    rec->crossSpectralMatrix[1][1] = 0.0F;
    ov::elevationSpectraPerBeam(*rec, 7);
    EXPECT_LT(rec->beamElevSpectrum[7][1], 0.0F);
    EXPECT_FLOAT_EQ(rec->spectrumVel[7],
                    static_cast<float>((beamElevation(*rec, 0) + beamElevation(*rec, 2)) / 3.0));
    for (int s = 0; s < 3; ++s) {
        rec->crossSpectralMatrix[s][s] = 0.0F;
    }
    ov::elevationSpectraPerBeam(*rec, 7);
    EXPECT_EQ(rec->spectrumVel[7], 0.0F);
}

TEST(CheckRatio, ComparesVelocityWithTrackOrPressureByMethod) {
    const RecordPtr rec = horizontalBin();
    const double velocity = static_cast<double>(0.17F + 0.31F) / static_cast<double>(0.73F * 0.73F);
    const double track = rec->crossSpectralMatrix[2][2];
    const double pressure =
        static_cast<double>(0.41F) / (static_cast<double>(0.62F) * static_cast<double>(0.62F));
    ov::checkRatioAtBin(*rec, 5);
    EXPECT_DOUBLE_EQ(rec->checkRatio[5], std::sqrt(velocity / pressure));
    rec->activeMethod = 2;
    ov::checkRatioAtBin(*rec, 5);
    EXPECT_DOUBLE_EQ(rec->checkRatio[5], std::sqrt(velocity / track));
    rec->activeMethod = 4;
    rec->spectrumVel[5] = 1.7F;
    ov::checkRatioAtBin(*rec, 5);
    EXPECT_DOUBLE_EQ(rec->checkRatio[5], std::sqrt(static_cast<double>(1.7F) / track));
}

TEST(CheckRatio, MethodThreeWritesNone) {
    const RecordPtr rec = horizontalBin();
    rec->activeMethod = 3;
    rec->checkRatio[5] = 4.5;
    ov::checkRatioAtBin(*rec, 5);
    EXPECT_EQ(rec->checkRatio[5], 4.5);
}

TEST(CheckRatio, KeepsTheVelocityNoise) {
    const RecordPtr quiet = horizontalBin();
    const RecordPtr noisy = horizontalBin();
    noisy->velocityNoiseMps = 0.5F;
    ov::checkRatioAtBin(*quiet, 5);
    ov::checkRatioAtBin(*noisy, 5);
    EXPECT_EQ(quiet->checkRatio[5], noisy->checkRatio[5]);
}

TEST(CutThresholds, FollowTheDepth) {
    const struct {
        float depth, ratio, pressureFreq, velocityFreq;
    } cases[] = {
        {4.999F, 0.1F, 0.35F, 0.2F},  {5.0F, 0.1F, 0.3F, 0.15F},   {9.999F, 0.1F, 0.3F, 0.15F},
        {10.0F, 0.1F, 0.2F, 0.1F},    {24.99F, 0.1F, 0.2F, 0.1F},  {25.0F, 0.15F, 0.18F, 0.1F},
        {29.99F, 0.15F, 0.18F, 0.1F}, {30.01F, 0.2F, 0.15F, 0.1F}, {-1.0F, 0.1F, 0.35F, 0.2F}};
    for (const auto &[depth, ratio, pressureFreq, velocityFreq] : cases) {
        const RecordPtr rec = makeRecord();
        rec->instrumentDepth = depth;
        ov::cutAndTailSpectra(*rec);
        EXPECT_EQ(rec->pressureCutRatio, ratio) << depth;
        EXPECT_EQ(rec->velocityCutGain, 0.1F) << depth;
        EXPECT_EQ(rec->pressureCutMinFreq, pressureFreq) << depth;
        EXPECT_EQ(rec->velocityCutMinFreq, velocityFreq) << depth;
    }
}

TEST(CutThresholds, AtExactlyThirtyMetresTheyStay) {
    const RecordPtr rec = makeRecord();
    rec->pressureCutRatio = 0.77F;
    rec->velocityCutGain = 0.66F;
    rec->pressureCutMinFreq = 0.55F;
    rec->velocityCutMinFreq = 0.44F;
    rec->instrumentDepth = 30.0F;
    ov::cutAndTailSpectra(*rec);
    EXPECT_EQ(rec->pressureCutRatio, 0.77F);
    EXPECT_EQ(rec->velocityCutGain, 0.66F);
    EXPECT_EQ(rec->pressureCutMinFreq, 0.55F);
    EXPECT_EQ(rec->velocityCutMinFreq, 0.44F);
}

// 40 bins from 0.1 Hz, a first run at 110 m depth: nothing is cut before the last bin.
RecordPtr uncutAxis() {
    RecordPtr rec = makeRecord();
    rec->instrumentType = 3;
    rec->instrumentDepth = 110.0F; // waves above 0.0842 Hz are deep-water ones
    rec->firstRunFlag = 1;
    rec->nFrequencies = 40;
    for (int i = 0; i < 40; ++i) {
        rec->frequencies[i] = 0.1F + 0.01F * static_cast<float>(i);
        rec->waveNumbers[i] = 1e-4F * static_cast<float>(i + 1);
        rec->pressureGain[i] = 1.0F;
        rec->vertVelGainSq[i] = 1.0F;
        rec->spectrumPrs[i] = 2.0F;
        rec->spectrumVel[i] = 3.0F;
    }
    return rec;
}

// First bin of the tail. The bins before it keep their value; the tail falls with f^-4.5.
int tailOf(const float *spectrum, const float *f, int n, float level) {
    int cut = 0;
    while (cut + 1 < n && spectrum[cut + 1] == level) {
        ++cut;
    }
    for (int i = cut; i < n; ++i) {
        const double expected =
            static_cast<double>(level) *
            std::pow(static_cast<double>(f[i]) / static_cast<double>(f[cut]), -4.5);
        EXPECT_NEAR(spectrum[i], expected, 1e-6 * expected) << i;
    }
    return cut;
}
int pressureTail(const OVRecord &rec) {
    return tailOf(rec.spectrumPrs, rec.frequencies, rec.nFrequencies, 2.0F);
}
int velocityTail(const OVRecord &rec) {
    return tailOf(rec.spectrumVel, rec.frequencies, rec.nFrequencies, 3.0F);
}

TEST(CutAndTail, WithoutAReasonNothingIsCut) {
    const RecordPtr rec = uncutAxis();
    ov::cutAndTailSpectra(*rec);
    EXPECT_EQ(pressureTail(*rec), 39);
    EXPECT_EQ(velocityTail(*rec), 39);
}

TEST(CutAndTail, PressureIsCutWhereAFirstRunsGainFallsBelowAQuarter) {
    const RecordPtr rec = uncutAxis();
    rec->pressureGain[20] = 0.25F; // not below
    rec->pressureGain[25] = 0.2499F;
    ov::cutAndTailSpectra(*rec);
    EXPECT_EQ(pressureTail(*rec), 25);
    EXPECT_EQ(velocityTail(*rec), 39);
}

TEST(CutAndTail, PressureIsCutWhereTheGainOverOmegaFallsBelowTheRatio) {
    const RecordPtr rec = uncutAxis();
    // 0.2 > 1 / (2 pi f) from 0.796 Hz on: doubling the axis brings that to its bin 30.
    for (int i = 0; i < 40; ++i) {
        rec->frequencies[i] *= 2.0F;
    }
    ov::cutAndTailSpectra(*rec);
    EXPECT_EQ(pressureTail(*rec), 30);
}

TEST(CutAndTail, OnAFirstRunTheGainDecidesAlone) {
    const RecordPtr rec = uncutAxis();
    for (int i = 0; i < 40; ++i) {
        rec->frequencies[i] *= 2.0F; // the ratio would cut at bin 30
    }
    rec->pressureGain[35] = 0.1F;
    ov::cutAndTailSpectra(*rec);
    EXPECT_EQ(pressureTail(*rec), 35);
    const RecordPtr later = uncutAxis();
    later->firstRunFlag = 0;
    later->pressureGain[20] =
        0.2499F; // 0.2499 / (2 pi 0.3) is below the ratio as well, but bin 10 is not
    later->pressureGain[10] = 0.2499F; // 0.199 at 0.2 Hz: below 0.2
    later->pressureGain[5] = 0.2499F;  // 0.265 at 0.15 Hz
    ov::cutAndTailSpectra(*later);
    EXPECT_EQ(pressureTail(*later), 10);
}

TEST(CutAndTail, VelocityIsCutWhereItsVerticalResponseFallsBelowATenth) {
    const RecordPtr rec = uncutAxis();
    rec->vertVelGainSq[12] = 0.1F; // not below
    rec->vertVelGainSq[17] = 0.0999F;
    ov::cutAndTailSpectra(*rec);
    EXPECT_EQ(velocityTail(*rec), 17);
    EXPECT_EQ(pressureTail(*rec), 39);
}

TEST(CutAndTail, WavesShorterThanTwiceTheDepthEndBothSpectra) {
    const RecordPtr rec = uncutAxis();
    rec->waveNumbers[21] = 3.142F / 110.0F;
    rec->waveNumbers[22] = 3.143F / 110.0F;
    ov::cutAndTailSpectra(*rec);
    EXPECT_EQ(pressureTail(*rec), 20);
    EXPECT_EQ(velocityTail(*rec), 20);
}

TEST(CutAndTail, AFallingWavenumberEndsTheAxisTwoBinsEarlier) {
    const RecordPtr rec = uncutAxis();
    rec->waveNumbers[30] = 0.0F; // blocked
    ov::cutAndTailSpectra(*rec);
    EXPECT_EQ(pressureTail(*rec), 27);
    EXPECT_EQ(velocityTail(*rec), 27);
}

TEST(CutAndTail, OnlyAFirstRunHasAnUpperLimit) {
    const RecordPtr rec = uncutAxis();
    rec->firstRunFlag = 0;
    rec->waveNumbers[30] = 0.0F;
    ov::cutAndTailSpectra(*rec);
    EXPECT_EQ(pressureTail(*rec), 39);
    EXPECT_EQ(velocityTail(*rec), 39);
}

TEST(CutAndTail, TheUpperLimitStartsAboveEightHundredthsOfAHertz) {
    const RecordPtr rec = uncutAxis();
    for (int i = 0; i < 40; ++i) {
        rec->frequencies[i] = 0.0005F * static_cast<float>(i + 1) + 0.07F; // bin 19 is 0.08 Hz
    }
    std::fill_n(rec->waveNumbers, 40, 1.0F); // far too short, everywhere
    ov::cutAndTailSpectra(*rec);
    EXPECT_EQ(velocityTail(*rec), rec->frequencies[19] > 0.08F ? 18 : 19);
}

TEST(CutAndTail, AProfileInstrumentsVelocityIgnoresTheUpperLimit) {
    const RecordPtr rec = uncutAxis();
    rec->instrumentType = 16;
    rec->waveNumbers[30] = 0.0F;
    ov::cutAndTailSpectra(*rec);
    EXPECT_EQ(pressureTail(*rec), 27);
    EXPECT_EQ(velocityTail(*rec), 39);
}

TEST(CutAndTail, TheLastBinTooLongForDeepWaterReplacesThePressureCut) {
    for (const float gain :
         {1.0F, 0.01F}) { // whether the response would cut at bin 3 or not at all
        const RecordPtr rec = uncutAxis();
        rec->instrumentDepth = 29.0F; // sqrt(1.56 / 58) = 0.164 Hz: bin 6 is 0.16 Hz
        rec->pressureGain[3] = gain;
        ov::cutAndTailSpectra(*rec);
        EXPECT_EQ(pressureTail(*rec), 6) << gain;
    }
}

// exact: a depth for which the frequency comes out differently in double precision.
TEST(CutAndTail, TheDeepWaterFrequencyIsASinglePrecisionOne) {
    int differing = 0;
    for (int trial = 0; trial < 400 && differing < 5; ++trial) {
        const float depth = 20.0F + 0.01F * static_cast<float>(trial);
        const float single = std::sqrt(1.56F / (2.0F * depth));
        const auto wide = static_cast<float>(std::sqrt(1.56 / (2.0 * static_cast<double>(depth))));
        if (single == wide) {
            continue;
        }
        ++differing;
        const RecordPtr rec = uncutAxis();
        rec->instrumentDepth = depth;
        for (int i = 0; i < 40; ++i) {
            rec->frequencies[i] = 0.01F * static_cast<float>(i + 1) + (i < 15 ? -0.005F : 0.5F);
        }
        rec->frequencies[15] = std::min(single, wide); // too long by the greater of the two alone
        ov::cutAndTailSpectra(*rec);
        EXPECT_EQ(pressureTail(*rec), single > wide ? 15 : 14) << depth;
    }
    EXPECT_GT(differing, 0);
}

TEST(CutAndTail, BelowTheLeastLowBinTheVelocitySpectrumRisesWithTheTenthPower) {
    const RecordPtr rec = uncutAxis();
    for (int i = 0; i < 40; ++i) {
        rec->frequencies[i] = 0.02F + 0.01F * static_cast<float>(i);
    }
    rec->instrumentDepth = 2000.0F;
    rec->waterDepth = 2001.0F;
    std::fill_n(rec->waveNumbers, 40, 1e-6F);
    rec->spectrumVel[4] = 0.5F; // 0.06 Hz
    rec->spectrumVel[5] = 0.5F; // as low: the first counts
    rec->spectrumVel[7] = 0.1F; // 0.09 Hz: not looked at
    ov::cutAndTailSpectra(*rec);
    for (int j = 0; j < 4; ++j) {
        const double f = rec->frequencies[j];
        const double expected = 0.5 * std::pow(f / static_cast<double>(rec->frequencies[4]), 10.0);
        EXPECT_NEAR(rec->spectrumVel[j], expected, 1e-6 * expected);
    }
    EXPECT_EQ(rec->spectrumVel[4], 0.5F);
    EXPECT_EQ(rec->spectrumVel[6], 3.0F);
    EXPECT_EQ(rec->spectrumPrs[0], 2.0F);
}

TEST(CutAndTail, ALeastFirstBinLeavesTheLowEndAlone) {
    const RecordPtr rec = uncutAxis();
    for (int i = 0; i < 40; ++i) {
        rec->frequencies[i] = 0.02F + 0.01F * static_cast<float>(i);
    }
    rec->spectrumVel[0] = 0.5F;
    ov::cutAndTailSpectra(*rec);
    EXPECT_EQ(rec->spectrumVel[0], 0.5F);
    EXPECT_EQ(rec->spectrumVel[1], 3.0F);
}

TEST(CutAndTail, TheLongestOfTheFirstEightBinsTakeThePressureSpectrum) {
    const RecordPtr rec = uncutAxis();
    for (int i = 0; i < 40; ++i) {
        rec->frequencies[i] = 0.01F * static_cast<float>(i + 1); // bin 3 is 0.04 Hz
        rec->spectraUsed[i] = 7.0F;
    }
    rec->frequencies[3] = 0.040005F; // the limit lies a hundred-thousandth above 0.04 Hz
    rec->frequencies[4] = 0.040015F;
    rec->instrumentDepth = 1e6F;
    std::fill_n(rec->waveNumbers, 40, 0.0F);
    ov::cutAndTailSpectra(*rec);
    for (int i = 0; i < 8; ++i) {
        EXPECT_EQ(rec->spectraUsed[i], i <= 3 ? 2.0F : 7.0F) << i;
    }
    std::fill_n(rec->frequencies, 40, 0.03F);
    ov::cutAndTailSpectra(*rec);
    EXPECT_EQ(rec->spectraUsed[7], rec->spectrumPrs[7]);
    EXPECT_EQ(rec->spectraUsed[8], 7.0F);
}

TEST(CutAndTail, AxesOfNoOneAndTwoBinsStayInside) {
    for (const int n : {-1, 0, 1, 2, 3, 200, 300}) {
        const RecordPtr rec = uncutAxis();
        rec->nFrequencies = n;
        rec->spectrumPrs[0] = 2.0F;
        rec->currentAlongWave[199] = 6.0F;
        ov::cutAndTailSpectra(*rec);
        EXPECT_EQ(rec->spectrumPrs[0], 2.0F);
        EXPECT_EQ(rec->currentAlongWave[199], 6.0F);
    }
}

} // namespace
