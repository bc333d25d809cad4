// One burst through the driver: what it settles, in which order results arise, and what survives.
#include "frame/driver.hpp"

#include <algorithm>
#include <cmath>
#include <complex>
#include <iterator>
#include <memory>

#include <gtest/gtest.h>

#include "frame/process.hpp"
#include "support/record_ptr.hpp"
#include "support/synthetic_burst.hpp"

namespace {

using orvik::test::makeRecord;
using orvik::test::RecordPtr;

// A record with nothing but a head of three beams: enough for what is settled before any sample counts.
RecordPtr emptyBurst(int method, int type = 3) {
    RecordPtr rec = makeRecord();
    rec->activeMethod = method;
    rec->instrumentType = type;
    rec->attitudeMode = OV_VELOCITY_BEAM;
    rec->beamCount = 3;
    rec->slantAngle = 25.0F;
    for (const int i : {0, 4, 8}) {
        rec->transformMatrix[i] = 4096;
    }
    rec->estimateMask = 7;
    rec->samplingRateHz = 2.0F;
    rec->astSamplingRate = 4.0F;
    rec->firstRunFlag = 1;
    return rec;
}

// A burst that is ready for the driver.
RecordPtr prepared(const orvik::test::SyntheticChoice &choice) {
    RecordPtr rec = makeRecord();
    const orvik::test::SyntheticBurst burst = orvik::test::makeSyntheticBurst(choice);
    orvik::test::openBurst(rec.get(), burst);
    orvik::test::sendSamples(rec.get(), burst);
    const auto output = std::make_unique<OVPreProcessOutput>();
    OVPreProcess_ptr(rec.get(), 0, output.get());
    ov::prepareRun(*rec);
    return rec;
}

orvik::test::SyntheticChoice burstOf(int method) {
    orvik::test::SyntheticChoice choice;
    choice.method = method;
    choice.nSamples = 1024;
    return choice;
}

TEST(DriverHeading, IsBroughtIntoTheClosedCircleOnce) {
    const struct {
        float heading;
        double offset;
        float expected;
    } cases[] = {{350.0F, 15.0, 5.0F}, {-20.0F, 0.0, 340.0F},   {350.0F, 10.0, 360.0F},
                 {0.0F, 0.0, 0.0F},    {350.0F, 400.0, 390.0F}, {-350.0F, -20.0, -10.0F},
                 {359.5F, 0.75, 0.25F}};
    for (const auto &[heading, offset, expected] : cases) {
        const RecordPtr rec = emptyBurst(3);
        rec->heading = heading;
        rec->headingOffset = offset;
        ov::runDriver(*rec);
        EXPECT_EQ(rec->directionOffset, expected) << heading << " + " << offset;
    }
}

struct Settled {
    int method;
    int mode;
    int mask;
};

Settled settle(int method, int type, int mode, int mask) {
    const RecordPtr rec = emptyBurst(method, type);
    rec->directionalInputMode = mode;
    rec->estimateMask = mask;
    rec->surfaceTrackValid = 0;
    ov::runDriver(*rec);
    return {rec->activeMethod, rec->directionalInputMode, rec->estimateMask};
}

TEST(DriverMethod, FourWithoutTrackInputRunsAsThreeWithTheBeamsAlone) {
    for (const int mode : {0, 1}) {
        const Settled profile = settle(4, 16, mode, 31);
        EXPECT_EQ(profile.method, 3);
        EXPECT_EQ(profile.mask, 15);
        EXPECT_EQ(profile.mode, mode);
        const Settled point = settle(4, 3, mode, 15);
        EXPECT_EQ(point.method, 3);
        EXPECT_EQ(point.mask, 7);
    }
}

TEST(DriverMethod, TwoWithoutTrackInputRunsAsOneFromPressure) {
    for (const int mode : {0, 1}) {
        const Settled settled = settle(2, 3, mode, 15);
        EXPECT_EQ(settled.method, 1);
        EXPECT_EQ(settled.mode, 0);
    }
}

TEST(DriverMethod, OneTakesPressureWhateverTheHostChose) {
    EXPECT_EQ(settle(1, 3, 2, 7).mode, 0);
    EXPECT_EQ(settle(3, 3, 2, 7).mode, 2); // three does not
}

TEST(DriverMethod, WithTrackInputButNoUsableTrackTheMaskStays) {
    const Settled four = settle(4, 3, 2, 15);
    EXPECT_EQ(four.method, 3);
    EXPECT_EQ(four.mask, 15);
    EXPECT_EQ(four.mode, 2);
    EXPECT_EQ(settle(2, 3, 2, 15).method, 1);
}

TEST(DriverTrack, WithoutAUsableOneIsFlaggedAndItsStatisticsAreMissing) {
    for (const int method : {2, 4}) {
        const RecordPtr rec = emptyBurst(method);
        rec->directionalInputMode = 2;
        rec->estimateMask = 15;
        std::fill(std::begin(rec->waveParameters), std::end(rec->waveParameters), 1.0F);
        ov::runDriver(*rec);
        EXPECT_NE(rec->qualityFlags & OV_FLAG_NO_TRACK, 0);
        for (const int slot : {OV_H_THIRD, OV_T_THIRD, OV_T_TENTH, OV_T_MAX, OV_T_CROSSING}) {
            EXPECT_EQ(rec->waveParameters[slot], -9.0F) << slot;
        }
    }
    const RecordPtr rec = emptyBurst(3); // a method that does not want one
    ov::runDriver(*rec);
    EXPECT_EQ(rec->qualityFlags & OV_FLAG_NO_TRACK, 0);
}

TEST(DriverTrack, AProfileInstrumentsSeriesLosesItsPlaceWithTheTrack) {
    const RecordPtr with = emptyBurst(4, 16);
    const RecordPtr without = emptyBurst(4, 16);
    for (const RecordPtr *rec : {&with, &without}) {
        (*rec)->directionalInputMode = 2;
        (*rec)->estimateMask = 23; // three beams and the track
    }
    without->estimateMask = 7;
    ov::runDriver(*with);
    ov::runDriver(*without);
    EXPECT_EQ(with->activeMethod, 3);
    EXPECT_EQ(with->nMlmSeries, 3);
    EXPECT_EQ(with->seriesCount, 5); // the entry itself stays in the list
}

TEST(DriverSource, FollowsInputModeDepthAndInstrument) {
    const struct {
        int type, mode;
        float depth;
        int source;
    } cases[] = {{3, 0, 50.0F, 0}, {3, 1, 5.0F, 1},   {3, 2, 20.0F, 0}, {3, 2, 20.01F, 1},
                 {16, 2, 5.0F, 1}, {16, 0, 50.0F, 0}, {16, 1, 5.0F, 1}, {3, 3, 50.0F, 0}};
    for (const auto &[type, mode, depth, source] : cases) {
        const RecordPtr rec = emptyBurst(3, type);
        rec->directionalInputMode = mode;
        rec->instrumentDepth = depth;
        ov::runDriver(*rec);
        EXPECT_EQ(rec->spectrumSource, source)
            << "type " << type << ", mode " << mode << ", " << depth << " m";
    }
}

TEST(DriverSource, MethodOneIsAlwaysPressure) {
    const RecordPtr rec = emptyBurst(2); // falls back to 1 at the track: the mode stays 2
    rec->directionalInputMode = 2;
    rec->instrumentDepth = 50.0F;
    ov::runDriver(*rec);
    EXPECT_EQ(rec->activeMethod, 1);
    EXPECT_EQ(rec->directionalInputMode, 2);
    EXPECT_EQ(rec->spectrumSource, OV_SOURCE_PRESSURE);
}

TEST(DriverPasses, AreTwoOnAFirstRun) {
    const RecordPtr rec = emptyBurst(3);
    ov::runDriver(*rec);
    EXPECT_EQ(rec->passCount, 2);
    rec->firstRunFlag = 0;
    ov::runDriver(*rec);
    EXPECT_EQ(rec->passCount, 1);
    const RecordPtr run = prepared(burstOf(3)); // what the prepare step asks for
    ov::runDriver(*run);
    EXPECT_EQ(run->passCount, 2);
}

TEST(DriverPasses, TheSecondSeesTheCurrentOfTheFirst) {
    const RecordPtr one = prepared(burstOf(3));
    const RecordPtr two = prepared(burstOf(3));
    for (const RecordPtr *rec : {&one, &two}) {
        for (int i = 0; i < (*rec)->burstLength; ++i) {
            (*rec)->velocitySeries[0][i] +=
                0.4F; // beam 1 looks north: the current is oblique to the waves
        }
    }
    one->firstRunFlag = 0;
    ov::runDriver(*one);
    ov::runDriver(*two);
    // After one pass the coefficients still belong to the wavenumbers of still water.
    double difference = 0.0;
    for (int f = 5; f < 30; ++f) {
        difference = std::max(difference, std::fabs(static_cast<double>(one->dirSpectrum[f][20]) -
                                                    two->dirSpectrum[f][20]));
    }
    EXPECT_GT(difference, 1e-4);
}

TEST(DriverCurrent, HasItsSpeedAndCompassDirection) {
    const struct {
        float east, north;
        double offset, degrees;
    } cases[] = {{0.3F, 0.4F, 0.0, 36.8699},
                 {-0.3F, 0.4F, 0.0, 323.1301},
                 {0.3F, 0.4F, -50.0, 346.8699},
                 {-0.3F, 0.4F, 50.0, 13.1301},
                 {0.3F, -0.4F, 0.0, 143.1301}};
    for (const auto &[east, north, offset, degrees] : cases) {
        const RecordPtr rec = emptyBurst(1);
        rec->attitudeMode = OV_VELOCITY_ENU;
        rec->burstLength = 512;
        rec->headingOffset = offset;
        std::fill_n(rec->velocitySeries[0], 512, east);
        std::fill_n(rec->velocitySeries[1], 512, north);
        ov::runDriver(*rec);
        EXPECT_NEAR(rec->meanCurrentSpeed, 0.5, 1e-5);
        EXPECT_NEAR(rec->meanCurrentDirection, degrees * M_PI / 180.0, 1e-5)
            << east << ' ' << north << ' ' << offset;
    }
}

TEST(DriverCurrent, AlongTheWavesIsOneValueForAllBinsInTheEnd) {
    const RecordPtr rec = prepared(burstOf(3));
    ov::runDriver(*rec);
    ASSERT_GT(rec->meanCurrentSpeed, 0.0F);
    for (const float along : rec->currentAlongWave) {
        ASSERT_EQ(along, rec->currentAlongWave[0]);
    }
    EXPECT_LE(std::fabs(rec->currentAlongWave[0]), rec->meanCurrentSpeed);
}

TEST(DriverCurrent, IsTakenAgainstTheDirectionTurnedRound) {
    const RecordPtr rec = prepared(burstOf(3));
    rec->nFrequencies = 20; // to 0.22 Hz: no amplified noise in the direction that the passes see
    for (int i = 0; i < rec->burstLength; ++i) {
        rec->velocitySeries[2][i] += 0.3F;
    }
    ov::runDriver(*rec);
    const double waves =
        static_cast<double>(rec->waveParameters[OV_MEAN_DIRECTION]) * M_PI / 180.0 - M_PI;
    const double along = std::cos(static_cast<double>(rec->meanCurrentDirection) - waves) *
                         static_cast<double>(rec->meanCurrentSpeed);
    // The mean direction was taken once more since, over a slightly different spectrum.
    EXPECT_NEAR(rec->currentAlongWave[0], along, 0.02 * static_cast<double>(rec->meanCurrentSpeed));
}

TEST(DriverCurrent, WithoutADirectionIsNoneAndTheHeightSurvives) {
    const RecordPtr rec = prepared(burstOf(1));
    for (auto &series : rec->velocitySeries) {
        std::fill_n(series, rec->burstLength, 0.0F); // no directional input
    }
    ov::runDriver(*rec);
    EXPECT_EQ(rec->currentAlongWave[0], 0.0F);
    EXPECT_GT(rec->waveParameters[OV_HM0], 1.0F);
    EXPECT_GT(rec->waveParameters[OV_TP], 5.0F);
    EXPECT_GT(rec->energyPeriod, 5.0F);
    EXPECT_EQ(rec->waveParameters[OV_MEAN_DIRECTION], -9.0F);
    EXPECT_NE(rec->qualityFlags & OV_FLAG_INVALID_PARAMETERS, 0);
}

TEST(DriverSpectra, PressureIsFinallyReferredToTheSurfaceWithoutTheGainFloor) {
    const RecordPtr rec = prepared(burstOf(3));
    ov::runDriver(*rec);
    int floored = 0;
    for (int f = 0; f < rec->validFreqCount; ++f) {
        const double k = rec->waveNumbers[f];
        const double h = rec->waterDepth;
        const double a =
            std::cosh(k * (h - static_cast<double>(rec->instrumentDepth))) / std::cosh(k * h);
        const double pressure = rec->lastPairCross[3][f] / 1000.0;
        EXPECT_NEAR(rec->depthAttenuation[f], a, 2e-5 * a);
        EXPECT_NEAR(rec->spectrumPrsWide[f], pressure / (a * a), 1e-4 * pressure / (a * a)) << f;
        floored += a < std::exp(-8.0) ? 1 : 0;
    }
    EXPECT_GT(floored, 3); // the axis does reach the floor
}

TEST(DriverSpectra, TheLastPairIsThatOfTrackAndPressure) {
    const RecordPtr rec = prepared(burstOf(4));
    ov::runDriver(*rec);
    const int last = rec->validFreqCount - 1; // its matrix is still there
    const auto &c = rec->crossSpectralMatrix;
    const int b = rec->seriesCount - 1;
    EXPECT_EQ(rec->lastPairCross[0][last], static_cast<double>(c[b - 1][b - 1]) * 1000.0);
    EXPECT_EQ(rec->lastPairCross[1][last], static_cast<double>(c[b - 1][b]) * 1000.0);
    EXPECT_EQ(rec->lastPairCross[2][last], static_cast<double>(c[b][b - 1]) * 1000.0);
    EXPECT_EQ(rec->lastPairCross[3][last], static_cast<double>(c[b][b]) * 1000.0);
}

TEST(DriverSpectra, TheTrackBecomesASeriesOfItsOwn) {
    const RecordPtr rec = prepared(burstOf(4));
    ASSERT_EQ(rec->surfaceTrackValid, 1);
    ov::runDriver(*rec);
    const int slot = rec->nMlmSeries - 1;
    ASSERT_EQ(rec->seriesType[slot], 1);
    for (int b = 2; b < rec->burstLength / 2;
         b += 37) { // brought to the instant of the first velocity
        const std::complex<double> track(rec->astSpecRe[b], rec->astSpecIm[b]);
        const auto turned =
            track * std::polar(1.0, 2.0 * M_PI * b * 2.0 / rec->burstLength * 0.1875);
        const double tolerance = 1e-6 * std::abs(track) + 1e-9;
        EXPECT_NEAR(rec->seriesSpecRe[slot][b], turned.real(), tolerance);
        EXPECT_NEAR(rec->seriesSpecIm[slot][b], turned.imag(), tolerance);
    }
    EXPECT_EQ(rec->spectrumSource, OV_SOURCE_SURFACE_TRACK);
    EXPECT_EQ(rec->paramFrequencies[150], rec->fineFreqAxis[150]);
    EXPECT_EQ(rec->spectraUsed[50], rec->bandSpectrumFine[50]);
    EXPECT_NE(rec->spectraUsed[50], 0.0F);
}

TEST(DriverSpectra, ATrackOutOfRangeIsNotUsed) {
    const RecordPtr rec = prepared(burstOf(4));
    rec->waterDepth = 1.5F; // the waves would break
    rec->instrumentDepth = 1.2F;
    ov::runDriver(*rec);
    EXPECT_NE(rec->qualityFlags & OV_FLAG_TRACK_RANGE, 0);
    EXPECT_EQ(rec->qualityFlags & OV_FLAG_NO_TRACK, 0);
    EXPECT_EQ(rec->surfaceTrackValid, 0);
    EXPECT_EQ(rec->activeMethod, 3);
    EXPECT_EQ(rec->waveParameters[OV_H_THIRD], -9.0F);
    EXPECT_EQ(rec->spectraUsed[40], rec->spectrumPrs[40]);
}

TEST(DriverDistribution, OfMethodsThreeAndFourFillsItsRowsAndThoseOfOneAndTwoNone) {
    for (const int method : {1, 2, 3, 4}) {
        const RecordPtr rec = prepared(burstOf(method));
        ov::runDriver(*rec);
        ASSERT_EQ(rec->activeMethod, method);
        for (int f = 0; f < rec->validFreqCount; ++f) {
            double sum = 0.0;
            for (const double value : rec->dirSpectrum[f]) {
                sum += value;
            }
            EXPECT_NEAR(sum * 2.0 * M_PI / 90.0, method >= 3 ? 1.0 : 0.0, 1e-6)
                << method << ' ' << f;
        }
        EXPECT_EQ(rec->dirSpectrum[rec->validFreqCount][0], 0.0);
    }
}

TEST(DriverDistribution, LeavesWhatLiesBeyondItsDirections) {
    const RecordPtr rec = prepared(burstOf(3));
    rec->nDirections = 36;
    rec->dirSpectrum[4][36] = 5.5;
    ov::runDriver(*rec);
    EXPECT_EQ(rec->dirSpectrum[4][36], 5.5);
    EXPECT_GT(rec->dirSpectrum[4][35], 0.0);
}

TEST(DriverAliasing, MakesTheCoefficientsOfShortWavesMissingExceptForMethodOne) {
    for (const int method : {1, 3, 4}) {
        const RecordPtr rec = prepared(burstOf(method));
        ov::runDriver(*rec);
        if (method == 1) {
            EXPECT_EQ(rec->lastValidFreqIndex, 200);
            EXPECT_NE(rec->fourierA1[rec->validFreqCount - 1], -9.0F);
            continue;
        }
        ASSERT_GT(rec->lastValidFreqIndex, 10);
        ASSERT_LT(rec->lastValidFreqIndex, rec->validFreqCount);
        for (int f = 0; f < 200; ++f) {
            const bool missing = f >= rec->lastValidFreqIndex && f < rec->validFreqCount;
            EXPECT_EQ(rec->fourierA1[f] == -9.0F, missing) << f;
            EXPECT_EQ(rec->fourierB1[f] == -9.0F, missing) << f;
            EXPECT_EQ(rec->fourierA2[f] == -9.0F, missing) << f;
            EXPECT_EQ(rec->fourierB2[f] == -9.0F, missing) << f;
        }
        EXPECT_EQ(rec->aliasingFrequency, rec->frequencies[rec->lastValidFreqIndex]);
    }
}

TEST(DriverHeights, WithoutATrackFollowFromTheSignificantOne) {
    for (const int method : {1, 3}) {
        const RecordPtr rec = prepared(burstOf(method));
        ov::runDriver(*rec);
        const double height = rec->waveParameters[OV_HM0];
        EXPECT_EQ(rec->waveParameters[OV_H_TENTH], static_cast<float>(1.27 * height));
        EXPECT_EQ(rec->waveParameters[OV_H_MAX], static_cast<float>(1.67 * height));
        EXPECT_EQ(rec->checkedHeight, rec->waveParameters[OV_HM0]);
        EXPECT_EQ(rec->checkedMeanPeriod, rec->waveParameters[OV_TM02]);
    }
}

TEST(DriverHeights, WithATrackAreThoseOfTheTrack) {
    for (const int method : {2, 4}) {
        const RecordPtr rec = prepared(burstOf(method));
        ov::runDriver(*rec);
        const float *const w = rec->waveParameters;
        EXPECT_NE(w[OV_H_TENTH], static_cast<float>(1.27 * static_cast<double>(w[OV_HM0])));
        EXPECT_GT(w[OV_H_TENTH], w[OV_H_THIRD]);
        EXPECT_GT(w[OV_H_MAX], w[OV_H_TENTH]);
        EXPECT_EQ(rec->checkedHeight, w[OV_HM0]);
        EXPECT_EQ(rec->checkedMeanPeriod, -9.0F); // the companion belongs to the other ending
    }
}

TEST(DriverHeights, MethodThreeAlwaysEndsWithSpectralHeightsEvenWithAValidTrack) {
    const RecordPtr rec = prepared(burstOf(3));
    rec->surfaceTrackValid = 1;
    rec->directionalInputMode = 2;
    ov::runDriver(*rec);
    EXPECT_EQ(rec->waveParameters[OV_H_MAX],
              static_cast<float>(1.67 * static_cast<double>(rec->waveParameters[OV_HM0])));
}

TEST(DriverChecks, ASilentBurstHasNoSignalNoShapeAndNoParameters) {
    const RecordPtr rec = prepared(burstOf(1));
    std::fill_n(rec->pressureSeries, rec->burstLength, 0.0F);
    ov::runDriver(*rec);
    const int expected = OV_FLAG_NO_SIGNAL | OV_FLAG_FLAT_SPECTRUM | OV_FLAG_INVALID_PARAMETERS |
                         OV_FLAG_RISING_SPECTRUM;
    EXPECT_EQ(rec->qualityFlags, expected);
    EXPECT_EQ(rec->waveParameters[OV_TP], -9.0F);
}

TEST(DriverChecks, ASoundBurstHasNoFlag) {
    for (const int method : {1, 2, 3, 4}) {
        const RecordPtr rec = prepared(burstOf(method));
        ov::runDriver(*rec);
        EXPECT_EQ(rec->qualityFlags, 0) << method;
    }
}

TEST(DriverChecks, ShallowInstrumentAndTiltAreFlagged) {
    const RecordPtr rec = emptyBurst(3);
    rec->instrumentDepth = 0.9F;
    rec->pitch = 8.0F;
    rec->roll = 7.0F;
    ov::runDriver(*rec);
    EXPECT_NE(rec->qualityFlags & OV_FLAG_SHALLOW, 0);
    EXPECT_NE(rec->qualityFlags & OV_FLAG_TILT, 0);
    EXPECT_NEAR(rec->tiltAngle, 10.615, 1e-3);
    rec->qualityFlags = 0;
    rec->instrumentDepth = 1.0F;
    rec->pitch = 0.0F;
    ov::runDriver(*rec);
    EXPECT_EQ(rec->qualityFlags & (OV_FLAG_SHALLOW | OV_FLAG_TILT), 0);
}

// physical: a long-crested sea of 1.6 m towards compass 28 to 74 degrees.
TEST(DriverResult, IsTheSeaThatWasMeasuredWithEveryMethod) {
    for (const int method : {1, 2, 3, 4}) {
        const RecordPtr rec = prepared(burstOf(method));
        ov::runDriver(*rec);
        const float *const w = rec->waveParameters;
        EXPECT_NEAR(w[OV_HM0], 1.6, 0.25) << method;
        EXPECT_NEAR(w[OV_TP], 9.3, 1.2) << method;
        EXPECT_NEAR(w[OV_MEAN_DIRECTION], 52.0, 10.0) << method;
        EXPECT_GT(w[OV_RESULTANT_LENGTH], 0.8F) << method;
        EXPECT_LT(w[OV_TM02], rec->energyPeriod) << method;
    }
}

TEST(DriverResult, TurnsRoundWhenDirectionsSayWhereWavesComeFrom) {
    const RecordPtr going = prepared(burstOf(1));
    const RecordPtr coming = prepared(burstOf(1));
    coming->reverseDirections = 1;
    ov::runDriver(*going);
    ov::runDriver(*coming);
    EXPECT_NEAR(coming->waveParameters[OV_MEAN_DIRECTION],
                going->waveParameters[OV_MEAN_DIRECTION] + 180.0F, 0.5);
    EXPECT_NEAR(coming->waveParameters[OV_PEAK_DIRECTION],
                going->waveParameters[OV_PEAK_DIRECTION] + 180.0F, 0.5);
}

TEST(DriverResult, LeavesTheBurstsSamplesBitForBit) {
    for (const int method : {1, 2, 3, 4}) {
        const RecordPtr rec = prepared(burstOf(method));
        const RecordPtr before = prepared(burstOf(method));
        ov::runDriver(*rec);
        const auto samples = static_cast<std::size_t>(rec->burstLength);
        EXPECT_TRUE(
            std::equal(rec->pressureSeries, rec->pressureSeries + samples, before->pressureSeries));
        for (int c = 0; c < 3; ++c) {
            EXPECT_TRUE(std::equal(rec->velocitySeries[c], rec->velocitySeries[c] + samples,
                                   before->velocitySeries[c]));
        }
        EXPECT_TRUE(std::equal(rec->astSeries, rec->astSeries + 2 * samples, before->astSeries));
    }
}

TEST(DriverResult, ShowsNothingOfAnEarlierBurstsGains) {
    const RecordPtr rec = prepared(burstOf(3));
    std::fill(std::begin(rec->vertVelGainSq), std::end(rec->vertVelGainSq), 5.0F);
    std::fill(std::begin(rec->waveNumbers), std::end(rec->waveNumbers), 5.0F);
    std::fill(std::begin(rec->pressureGain), std::end(rec->pressureGain), 5.0F);
    ov::runDriver(*rec);
    for (int f = rec->validFreqCount; f < 200; ++f) {
        ASSERT_EQ(rec->vertVelGainSq[f], 0.0F);
        ASSERT_EQ(rec->waveNumbers[f], 0.0F);
        ASSERT_EQ(rec->pressureGain[f], 0.0F);
    }
}

} // namespace
