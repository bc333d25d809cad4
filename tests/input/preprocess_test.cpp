#include "input/preprocess.hpp"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstring>
#include <limits>
#include <memory>
#include <utility>
#include <vector>

#include "frame/constants.hpp"
#include "orvikbase/orvikbase.h"
#include "support/record_ptr.hpp"

namespace {

constexpr float kUntouched = 777.0F;
constexpr float kEarlierDepth = 3.25F;

float pressureAt(int i) { return 12.0F + 0.5F * static_cast<float>(std::sin(0.05 * i)); }
float distanceAt(int i) { return 12.5F + 0.3F * static_cast<float>(std::sin(0.025 * i)); }

class PreProcess : public ::testing::Test {
protected:
    // A burst of `samples` of which `received` arrived, whatever they held before this library ran.
    void receive(int samples, int received, int instrumentType = 3) {
        OVRecord &rec = *record_;
        rec.instrumentType = instrumentType;
        rec.processingMethod = 4;
        rec.samplingRate = 2;
        rec.burstSamples = static_cast<std::uint32_t>(samples);
        rec.burstLength = samples;
        rec.levelOffset = 1.0;
        rec.instrumentDepth = kEarlierDepth;
        rec.sampleCursor = received;
        for (int i = 0; i < received; ++i) {
            rec.pressureSeries[i] = pressureAt(i);
            rec.astDistance2Series[i] = 40.0F + static_cast<float>(i);
            for (int c = 0; c < 3; ++c) {
                rec.velocitySeries[c][i] = static_cast<float>(c) + 0.001F * static_cast<float>(i);
            }
        }
        const int trackElements =
            instrumentType == ov::kProfileInstrument ? received : 2 * received;
        for (int i = 0; i < trackElements; ++i) {
            rec.astSeries[i] = distanceAt(i);
        }
    }

    OVPreProcessOutput &run() {
        std::memset(output_->rows, 0, sizeof output_->rows);
        for (auto &row : output_->rows) {
            row.astOut = kUntouched;
            row.pressureOut = kUntouched;
        }
        ov::preProcess(*record_, *output_);
        return *output_;
    }

    float astRow(int i) const { return output_->rows[i].astOut; }
    float pressureRow(int i) const { return output_->rows[i].pressureOut; }

    orvik::test::RecordPtr record_ = orvik::test::makeRecord();
    std::unique_ptr<OVPreProcessOutput> output_ = std::make_unique<OVPreProcessOutput>();
};

// ---- Completion of the burst

TEST_F(PreProcess, BurstThatMissesATenthIsPaddedAndProcessed) {
    receive(1024, 1024 - 102);
    EXPECT_EQ(run().done, 1);
    EXPECT_EQ(record_->readyFlag, 1);
    EXPECT_EQ(record_->missingSampleCount, 102);
    EXPECT_EQ(record_->sampleCursor, 1024);
}

TEST_F(PreProcess, BurstThatMissesMoreThanATenthIsRejected) {
    receive(1024, 1024 - 103);
    EXPECT_EQ(run().done, 0);
    EXPECT_EQ(record_->readyFlag, 0);
    EXPECT_EQ(record_->missingSampleCount, 103);
    EXPECT_EQ(record_->sampleCursor, 1024 - 103);
}

TEST_F(PreProcess, InvalidAndAbsentSamplesCountTogether) {
    receive(1024, 1024 - 60);
    record_->missingSampleCount = 42;
    EXPECT_EQ(run().done, 1);
    EXPECT_EQ(record_->missingSampleCount, 102);

    receive(1024, 1024 - 60);
    record_->readyFlag = 0;
    record_->missingSampleCount = 43;
    EXPECT_EQ(run().done, 0);
    EXPECT_EQ(record_->missingSampleCount, 103);
}

TEST_F(PreProcess, TenthOfTheBurstIsRoundedDown) {
    struct Row {
        int samples;
        int absent;
        int done;
    };
    for (const Row row :
         {Row{9, 0, 1}, Row{9, 1, 0}, Row{10, 1, 1}, Row{10, 2, 0}, Row{19, 1, 1}, Row{19, 2, 0},
          Row{512, 51, 1}, Row{512, 52, 0}, Row{16384, 1638, 1}, Row{16384, 1639, 0}}) {
        record_->readyFlag = 0;
        record_->missingSampleCount = 0;
        receive(row.samples, row.samples - row.absent);
        EXPECT_EQ(run().done, row.done) << row.samples << " without " << row.absent;
    }
}

TEST_F(PreProcess, PaddingRepeatsTheLastSampleOfEverySeries) {
    receive(100, 93);
    OVRecord &rec = *record_;
    ov::completeBurst(rec);
    for (int i = 93; i < 100; ++i) {
        EXPECT_EQ(rec.pressureSeries[i], pressureAt(92));
        for (int c = 0; c < 3; ++c) {
            EXPECT_EQ(rec.velocitySeries[c][i], rec.velocitySeries[c][92]);
        }
        EXPECT_EQ(rec.astDistance2Series[i], 132.0F);
        EXPECT_EQ(rec.astSeries[2 * i], distanceAt(184));
        EXPECT_EQ(rec.astSeries[2 * i + 1], distanceAt(185));
    }
    EXPECT_EQ(rec.pressureSeries[100], 0.0F);
    EXPECT_EQ(rec.astSeries[200], 0.0F);
    EXPECT_EQ(rec.velocitySeries[0][92], 0.001F * 92.0F);
}

TEST_F(PreProcess, ProfilePaddingRepeatsCellsAndAttitudeAndTakesTheTrackFromDoubleRatePlaces) {
    receive(100, 90, ov::kProfileInstrument);
    OVRecord &rec = *record_;
    rec.nCells = 3;
    rec.astSeries[178] = 55.0F; // element 2 * 90 - 2
    for (int b = 0; b < ov::kMaxBeams; ++b) {
        for (int c = 0; c < 4; ++c) {
            rec.profileVelocityStore[b][89][c] = static_cast<std::int16_t>(100 * b + c + 1);
            rec.profileAmplitudeStore[b][89][c] = static_cast<std::uint8_t>(10 * b + c + 1);
            rec.profileCorrelationStore[b][89][c] = static_cast<std::uint8_t>(20 * b + c + 1);
        }
    }
    for (int a = 0; a < 3; ++a) {
        rec.attitudeSeries[a][89] = 5.0F * static_cast<float>(a + 1);
    }
    rec.velocitySeries[0][90] = kUntouched;
    ov::completeBurst(rec);
    EXPECT_EQ(rec.readyFlag, 1);
    EXPECT_EQ(rec.pressureSeries[99], pressureAt(89));
    EXPECT_EQ(rec.astSeries[90], 55.0F);
    EXPECT_EQ(rec.astSeries[91], 0.0F); // element 180 was never filled
    for (const int i : {90, 99}) {
        for (int b = 0; b < ov::kMaxBeams; ++b) {
            for (int c = 0; c < 3; ++c) {
                EXPECT_EQ(rec.profileVelocityStore[b][i][c], 100 * b + c + 1);
                EXPECT_EQ(rec.profileAmplitudeStore[b][i][c], 10 * b + c + 1);
                EXPECT_EQ(rec.profileCorrelationStore[b][i][c], 20 * b + c + 1);
            }
            EXPECT_EQ(rec.profileVelocityStore[b][i][3], 0); // beyond the cells in use
        }
        for (int a = 0; a < 3; ++a) {
            EXPECT_EQ(rec.attitudeSeries[a][i], 5.0F * static_cast<float>(a + 1));
        }
    }
    EXPECT_EQ(rec.velocitySeries[0][90], kUntouched);
}

TEST_F(PreProcess, ConfiguredLengthBeyondTheCapacityCountsAsTheCapacity) {
    receive(ov::kMaxSamples, ov::kMaxSamples - 1638);
    record_->burstSamples = 4000000000U;
    ov::completeBurst(*record_);
    EXPECT_EQ(record_->readyFlag, 1);
    EXPECT_EQ(record_->sampleCursor, ov::kMaxSamples);
    EXPECT_EQ(record_->missingSampleCount, 1638);

    receive(ov::kMaxSamples, ov::kMaxSamples - 1639);
    record_->burstSamples = 4000000000U;
    record_->readyFlag = 0;
    record_->missingSampleCount = 0;
    ov::completeBurst(*record_);
    EXPECT_EQ(record_->readyFlag, 0);
    EXPECT_EQ(record_->missingSampleCount, 1639);
}

TEST_F(PreProcess, CompletedBurstIsNotCompletedAgain) {
    receive(1024, 1000);
    run();
    record_->sampleCursor = 0;
    EXPECT_EQ(run().done, 1);
    EXPECT_EQ(record_->missingSampleCount, 24);
    EXPECT_EQ(record_->sampleCursor, 0);
}

TEST_F(PreProcess, SamplesPastTheEndDoNoHarm) {
    receive(1024, 1024);
    record_->sampleCursor = 1500;
    EXPECT_EQ(run().done, 1);
    EXPECT_EQ(record_->missingSampleCount, 0);
    EXPECT_EQ(record_->sampleCursor, 1500);
}

TEST_F(PreProcess, EmptyBurstEnds) {
    for (const int method : {1, 2, 3, 4}) {
        receive(0, 0);
        record_->readyFlag = 0;
        record_->processingMethod = method;
        EXPECT_EQ(run().done, 1);
        EXPECT_EQ(record_->instrumentDepth, 0.0F);
        EXPECT_EQ(record_->surfaceTrackValid, 0);
    }
}

TEST_F(PreProcess, RejectedBurstShowsNothingOfAnEarlierOneAndStaysAsItIs) {
    OVRecord &rec = *record_;
    receive(1024, 800);
    rec.surfaceTrackValid = 1;
    rec.trackVerdict = 1;
    rec.astBadCount = rec.astSpikeCount = rec.astInitialBadCount = 5;
    rec.selectedCell = 7;
    rec.astLevel = rec.astLevelEven = 11.0F;
    output_->done = 1;
    output_->astValidOut = 9;
    EXPECT_EQ(run().done, 0);
    EXPECT_EQ(rec.surfaceTrackValid, 0);
    EXPECT_EQ(rec.trackVerdict, 0);
    EXPECT_EQ(rec.astBadCount, 0);
    EXPECT_EQ(rec.astSpikeCount, 0);
    EXPECT_EQ(rec.astInitialBadCount, 0);
    EXPECT_EQ(rec.selectedCell, 0);
    EXPECT_EQ(rec.astLevel, ov::kMissing);
    EXPECT_EQ(rec.astLevelEven, ov::kMissing);
    EXPECT_EQ(output_->astValidOut, 9);
    EXPECT_EQ(rec.instrumentDepth, kEarlierDepth);
    EXPECT_EQ(rec.pressureSeries[100], pressureAt(100));
    EXPECT_EQ(astRow(0), kUntouched);
}

// ---- Pressure

TEST_F(PreProcess, PressureLosesItsTrendAndLeavesItsMeanAsInstrumentDepth) {
    receive(1024, 1024);
    double mean = 0.0;
    for (int i = 0; i < 1024; ++i) {
        mean += pressureAt(i) / 1024.0;
    }
    record_->levelOffset = 0.7;
    run();
    EXPECT_NEAR(record_->instrumentDepth, mean, 1e-6);
    EXPECT_EQ(record_->waterDepth,
              static_cast<float>(static_cast<double>(record_->instrumentDepth) + 0.7));
    double remaining = 0.0;
    for (int i = 0; i < 1024; ++i) {
        remaining += record_->pressureSeries[i];
    }
    EXPECT_NEAR(remaining / 1024.0, 0.0, 1e-6);
}

TEST_F(PreProcess, SpikeIsGoneBeforeTheTrendIsTaken) {
    receive(1024, 1024);
    record_->pressureSeries[500] = 500.0F;
    run();
    EXPECT_NEAR(record_->instrumentDepth, 12.0, 0.1);
    EXPECT_NEAR(record_->pressureSeries[500] + record_->instrumentDepth, pressureAt(500), 0.02);
}

TEST_F(PreProcess, SmallestPressureIsTakenBeforeDespikingAndForProfileInstrumentsOnly) {
    for (const int type : {3, ov::kProfileInstrument}) {
        receive(1024, 1024, type);
        record_->readyFlag = 0;
        record_->minPressure = kUntouched;
        record_->pressureSeries[500] = -80.0F;
        run();
        EXPECT_EQ(record_->minPressure, type == ov::kProfileInstrument ? -80.0F : kUntouched);
    }
}

TEST_F(PreProcess, PressureMethodWritesTheDespikedPressureOnTheEarlierDepth) {
    receive(1024, 1024);
    record_->processingMethod = 1;
    record_->pressureSeries[500] = 500.0F;
    EXPECT_EQ(run().done, 1);
    for (int i = 0; i < 1024; ++i) {
        const float expected = i == 500 ? astRow(500) : pressureAt(i);
        ASSERT_EQ(astRow(i), expected) << i;
        ASSERT_EQ(pressureRow(i), expected + kEarlierDepth) << i;
    }
    EXPECT_NEAR(astRow(500), pressureAt(500), 0.02);
    EXPECT_EQ(astRow(1024), kUntouched);

    const float depth = record_->instrumentDepth;
    receive(1024, 1024);
    record_->processingMethod = 1;
    record_->instrumentDepth = depth; // that of the burst before, from here on
    run();
    EXPECT_EQ(pressureRow(3), pressureAt(3) + depth);
}

TEST_F(PreProcess, MethodsWithoutRowsWriteNone) {
    for (const int method : {3, 0, 5, -1}) {
        receive(1024, 1024);
        record_->readyFlag = 0;
        record_->processingMethod = method;
        output_->done = 0;
        EXPECT_EQ(run().done, 1);
        EXPECT_EQ(astRow(0), kUntouched) << method;
        EXPECT_EQ(pressureRow(0), kUntouched) << method;
        EXPECT_NE(record_->instrumentDepth, kEarlierDepth) << method;
    }
}

TEST_F(PreProcess, MethodsWithoutASurfaceTrackHaveNoValidOne) {
    for (const int method : {1, 3}) {
        receive(1024, 1024);
        record_->readyFlag = 0;
        record_->processingMethod = method;
        record_->surfaceTrackValid = 1;
        output_->astValidOut = 9;
        run();
        EXPECT_EQ(record_->surfaceTrackValid, 0) << method;
        EXPECT_EQ(output_->astValidOut, 9) << method;
    }
}

// ---- Surface track

TEST_F(PreProcess, TrackSamplingFollowsTheSamplingRate) {
    struct Row {
        int instrumentType;
        int samplingRate;
        int length;
        float hertz;
    };
    for (const Row row : {Row{3, 0, 2048, 1.5F}, Row{3, 1, 2048, 2.0F}, Row{3, 2, 2048, 4.0F},
                          Row{1, 8, 2048, 4.0F}, Row{ov::kProfileInstrument, 1, 1024, 1.0F},
                          Row{ov::kProfileInstrument, 8, 1024, 8.0F}}) {
        for (const int method : {2, 4}) {
            receive(1024, 1024, row.instrumentType);
            record_->readyFlag = 0;
            record_->processingMethod = method;
            record_->samplingRate = row.samplingRate;
            run();
            EXPECT_EQ(record_->astLength, row.length) << row.samplingRate;
            EXPECT_EQ(record_->astSamplingRate, row.hertz) << row.samplingRate;
        }
    }
}

TEST_F(PreProcess, CleanedTrackAndItsVerdictGoOut) {
    receive(1024, 1024);
    record_->astSeries[500] = 0.0F;
    run();
    EXPECT_EQ(output_->astValidOut, 1);
    EXPECT_EQ(record_->surfaceTrackValid, 1);
    EXPECT_EQ(record_->trackVerdict, 1);
    EXPECT_EQ(record_->astInitialBadCount, 1);
    for (int i = 0; i < 2048; ++i) {
        ASSERT_EQ(astRow(i), record_->astSeries[i]) << i;
        ASSERT_NEAR(astRow(i), distanceAt(i), 0.05) << i;
    }
    EXPECT_EQ(astRow(2048), kUntouched);
}

TEST_F(PreProcess, UnusableTrackIsStillWrittenOut) {
    receive(1024, 1024);
    record_->astSeries[0] = record_->astSeries[1] = 0.0F;
    output_->astValidOut = 9;
    EXPECT_EQ(run().done, 1);
    EXPECT_EQ(output_->astValidOut, 0);
    EXPECT_EQ(record_->surfaceTrackValid, 0);
    EXPECT_EQ(record_->trackVerdict, 0);
    EXPECT_EQ(astRow(700), record_->astSeries[700]);
}

TEST_F(PreProcess, SkippedCleaningCopiesTheTrackAndKeepsTheHostsVerdict) {
    receive(1024, 1024);
    record_->astSeries[500] = 0.0F;
    output_->skipAstCleaning = 1;
    output_->astValidOut = 9;
    EXPECT_EQ(run().done, 1);
    EXPECT_EQ(output_->astValidOut, 9);
    EXPECT_EQ(record_->surfaceTrackValid, 0);
    EXPECT_EQ(record_->astLevel, ov::kMissing);
    EXPECT_EQ(astRow(500), 0.0F);
    EXPECT_EQ(astRow(2047), distanceAt(2047));
}

TEST_F(PreProcess, OnlyTheValueOneSkipsOrUsesTheWindow) {
    receive(1024, 1024);
    output_->skipAstCleaning = 2;
    output_->useWindow = 2;
    output_->windowAbove = 0.001F;
    run();
    EXPECT_EQ(output_->astValidOut, 1);
    EXPECT_EQ(record_->useAstWindow, 0);
    EXPECT_EQ(record_->astWindowAbove, 0.0F);
}

TEST_F(PreProcess, WindowOnceAskedForStaysForLaterBursts) {
    receive(1024, 1024);
    output_->useWindow = 1;
    output_->windowBelow = -2.0F; // the sign does not matter
    output_->windowAbove = -3.0F;
    run();
    EXPECT_EQ(record_->useAstWindow, 1);
    EXPECT_EQ(record_->astWindowBelow, 2.0F);
    EXPECT_EQ(record_->astWindowAbove, 3.0F);

    receive(1024, 1024);
    output_->useWindow = 0;
    output_->windowAbove = 9.0F;
    run();
    EXPECT_EQ(record_->useAstWindow, 1);
    EXPECT_EQ(record_->astWindowAbove, 3.0F);
}

TEST_F(PreProcess, WindowTooNarrowForTheWavesCostsTheVerdict) {
    receive(1024, 1024);
    output_->useWindow = 1;
    output_->windowBelow = 5.0F;
    output_->windowAbove = 0.3F; // the surface stands half a metre above the sensor's mean depth
    run();
    EXPECT_EQ(record_->surfaceTrackValid, 0);
    EXPECT_EQ(output_->astValidOut, 0);
}

TEST_F(PreProcess, PressureOfTrackRowsIsTheDetrendedOneWithItsLevel) {
    receive(1024, 1024);
    run();
    for (int i = 0; i < 1024; ++i) {
        ASSERT_EQ(pressureRow(i), record_->pressureSeries[i] + record_->instrumentDepth) << i;
        ASSERT_NEAR(pressureRow(i), pressureAt(i), 0.05) << i;
    }
}

TEST_F(PreProcess, PressureBehindAFullBurstReadsOnIntoTheVelocities) {
    receive(ov::kMaxSamples, ov::kMaxSamples);
    run();
    EXPECT_EQ(record_->astLength, ov::kMaxTrack);
    for (const int i : {0, 1, ov::kMaxSamples - 1}) {
        EXPECT_EQ(pressureRow(ov::kMaxSamples + i),
                  record_->velocitySeries[0][i] + record_->instrumentDepth)
            << i;
    }
}

TEST_F(PreProcess, SecondRunDetrendsTheDetrendedSeries) {
    receive(1024, 1024);
    run();
    const float trackBefore = record_->astSeries[100];
    run();
    EXPECT_NEAR(record_->instrumentDepth, 0.0F, 1e-5);
    EXPECT_NEAR(record_->astSeries[100], trackBefore, 1e-4);
    // The track now stands 12.5 m from where the pressure seems to be.
    EXPECT_EQ(record_->surfaceTrackValid, 0);
}

TEST_F(PreProcess, VelocitiesStayAsTheyCame) {
    receive(1024, 1024);
    run();
    for (int c = 0; c < 3; ++c) {
        for (int i = 0; i < 1024; ++i) {
            ASSERT_EQ(record_->velocitySeries[c][i],
                      static_cast<float>(c) + 0.001F * static_cast<float>(i));
        }
    }
    EXPECT_EQ(record_->astDistance2Series[1000], 1040.0F);
}

TEST_F(PreProcess, PressureThatIsNoNumberEndsWithoutADepth) {
    receive(1024, 1024);
    record_->pressureSeries[500] = std::numeric_limits<float>::quiet_NaN();
    EXPECT_EQ(run().done, 1);
    EXPECT_TRUE(std::isnan(record_->instrumentDepth));
    EXPECT_TRUE(std::isnan(record_->waterDepth));
    EXPECT_EQ(record_->surfaceTrackValid, 0);
}

// ---- The other two output forms

TEST_F(PreProcess, TwoArrayFormGivesTheSameTrackAndPressure) {
    receive(1024, 1024);
    record_->astSeries[500] = 0.0F;
    run();
    const orvik::test::RecordPtr second = std::move(record_);
    record_ = orvik::test::makeRecord();
    receive(1024, 1024);
    record_->astSeries[500] = 0.0F;
    const auto arrays = std::make_unique<OVPreProcessOutputSUV>();
    ov::preProcessSuv(*record_, *arrays);
    EXPECT_EQ(arrays->done, 1);
    EXPECT_EQ(arrays->astValidOut, 1);
    for (int i = 0; i < 2048; ++i) {
        ASSERT_EQ(arrays->astOut[i], astRow(i)) << i;
        ASSERT_EQ(arrays->pressureOut[i], pressureRow(i)) << i;
    }
    EXPECT_EQ(arrays->astOut[2048], 0.0F);
    EXPECT_EQ(0, std::memcmp(second->astSeries, record_->astSeries, sizeof record_->astSeries));
}

TEST_F(PreProcess, TwoArrayFormHasNoPressureRowsAndNoSmallestPressure) {
    receive(1024, 1024, ov::kProfileInstrument);
    record_->processingMethod = 1;
    record_->minPressure = kUntouched;
    const auto arrays = std::make_unique<OVPreProcessOutputSUV>();
    arrays->astOut[0] = kUntouched;
    arrays->pressureOut[0] = kUntouched;
    ov::preProcessSuv(*record_, *arrays);
    EXPECT_EQ(arrays->done, 1);
    EXPECT_EQ(arrays->astOut[0], kUntouched);
    EXPECT_EQ(arrays->pressureOut[0], kUntouched);
    EXPECT_EQ(record_->minPressure, kUntouched);
}

TEST_F(PreProcess, TwoArrayFormReportsARejectedBurst) {
    receive(1024, 800);
    const auto arrays = std::make_unique<OVPreProcessOutputSUV>();
    arrays->done = 1;
    ov::preProcessSuv(*record_, *arrays);
    EXPECT_EQ(arrays->done, 0);
}

TEST_F(PreProcess, FlattenedFormGivesTheSameTrackAndZerosBehindIt) {
    receive(1024, 1024);
    run();
    record_ = orvik::test::makeRecord();
    receive(1024, 1024);
    std::vector<float> track(ov::kMaxTrack, kUntouched);
    ov::preProcessFlat(*record_, {0.0F, 0.0F, false, false}, track.data());
    for (int i = 0; i < ov::kMaxTrack; ++i) {
        ASSERT_EQ(track[static_cast<std::size_t>(i)], i < 2048 ? astRow(i) : 0.0F) << i;
    }
    EXPECT_EQ(record_->surfaceTrackValid, 1);
}

TEST_F(PreProcess, FlattenedFormPassesTheWindowAndTheSkip) {
    receive(1024, 1024);
    std::vector<float> track(ov::kMaxTrack, kUntouched);
    ov::preProcessFlat(*record_, {-4.0F, 5.0F, true, true}, track.data());
    EXPECT_EQ(record_->useAstWindow, 1);
    EXPECT_EQ(record_->astWindowBelow, 4.0F);
    EXPECT_EQ(record_->astWindowAbove, 5.0F);
    EXPECT_EQ(record_->astLevel, ov::kMissing);
    EXPECT_EQ(track[100], distanceAt(100));
}

TEST_F(PreProcess, NullArgumentsTouchNothing) {
    receive(1024, 1024);
    output_->done = 9;
    EXPECT_EQ(OVPreProcess_ptr(nullptr, 0, output_.get()), -1);
    EXPECT_EQ(OVPreProcess_ptr(record_.get(), 0, nullptr), -1);
    EXPECT_EQ(OVPreProcessSUV_ptr(record_.get(), 0, nullptr), -1);
    EXPECT_EQ(output_->done, 9);
    EXPECT_EQ(record_->readyFlag, 0);
    EXPECT_EQ(OVPreProcess_ptr(record_.get(), 12345, output_.get()), 0);
    EXPECT_EQ(output_->done, 1);
}

} // namespace
