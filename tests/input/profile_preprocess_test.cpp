#include "input/profile_preprocess.hpp"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <cstring>
#include <limits>
#include <memory>
#include <numbers>
#include <vector>

#include <gtest/gtest.h>

#include "frame/process.hpp"
#include "input/profile_noise.hpp"
#include "orvikbase/orvikbase.h"
#include "support/record_ptr.hpp"

namespace {

constexpr int kSamples = 1024;
constexpr int kCells = 30;
constexpr double kDegree = std::numbers::pi / 180.0;

// A level head 10 m below the surface: cells of 0.5 m along beams of 25 degrees, 0.4 m of blanking.
class ProfilePreProcess : public ::testing::Test {
protected:
    ProfilePreProcess() {
        OVRecord &rec = *record_;
        rec.instrumentType = 16;
        rec.processingMethod = 3;
        rec.samplingRate = 2;
        rec.burstSamples = kSamples;
        rec.burstLength = kSamples;
        rec.sampleCursor = kSamples;
        rec.slantAngle = 25.0F;
        rec.sensorHeight = 0.5F;
        rec.sensorDepth = 0.4F;
        rec.nCells = kCells;
        rec.beamCount = 4;
        rec.acousticFrequency = 1.0e6F;
        rec.lagParameter = 1.0F;
        rec.pingsPerSample = 8;
        rec.levelOffset = 0.75;
        rec.profileParamA = 90.0F;
        for (int i = 0; i < kSamples; ++i) {
            rec.pressureSeries[i] = pressureAt(i);
            rec.astSeries[i] = distanceAt(i);
            for (int b = 0; b < 4; ++b) {
                for (int c = 0; c < kCells; ++c) {
                    rec.profileVelocityStore[b][i][c] = velocityAt(b, i, c);
                    rec.profileAmplitudeStore[b][i][c] = static_cast<std::uint8_t>(60 + 10 * b + c);
                    rec.profileCorrelationStore[b][i][c] = static_cast<std::uint8_t>(90 - b);
                }
            }
            for (int a = 0; a < 3; ++a) {
                rec.attitudeSeries[a][i] = 0.0F;
            }
        }
    }

    static float pressureAt(int i) { return 10.0F + 0.5F * static_cast<float>(std::sin(0.05 * i)); }
    // Crests and troughs of 1 m on a surface that rises by half a metre during the burst.
    static float distanceAt(int i) {
        return 10.0F + static_cast<float>(std::sin(0.3 * i)) +
               0.5F * static_cast<float>(i) / kSamples;
    }
    static std::int16_t velocityAt(int beam, int i, int cell) {
        return static_cast<std::int16_t>(1000 * beam - 1500 + (i % 97) - 11 * cell);
    }

    void setCorrelation(int beam, int cell, std::uint8_t value, int from = 0, int to = kSamples) {
        for (int i = from; i < to; ++i) {
            record_->profileCorrelationStore[beam][i][cell] = value;
        }
    }

    // The cell by the plain reading of the rule: the far end of the cell furthest out that stays below the troughs.
    static int cellFor(double trough, double cosine, int cells = kCells) {
        int cell = 0;
        for (int c = 1; c < cells; ++c) {
            if (trough - ((c + 2) * 0.5 + static_cast<double>(0.4F)) * cosine > 0.0) {
                cell = c;
            }
        }
        return cell;
    }

    OVPreProcessOutput &run() {
        EXPECT_EQ(VELTAPreProcess_ptr(record_.get(), 0, output_.get()), 0);
        return *output_;
    }

    orvik::test::RecordPtr record_ = orvik::test::makeRecord();
    std::unique_ptr<OVPreProcessOutput> output_ = std::make_unique<OVPreProcessOutput>();
};

// ---- Reset and rejection

TEST_F(ProfilePreProcess, ARejectedBurstShowsNothingOfAnEarlierOne) {
    OVRecord &rec = *record_;
    rec.sampleCursor = kSamples - 103;
    rec.qualityFlags = OV_FLAG_TILT;
    rec.astSpikeCount = 4;
    rec.astInitialBadCount = 5;
    rec.astBadCount = 6;
    rec.surfaceTrackValid = 1;
    rec.selectedCell = 7;
    std::fill(std::begin(rec.waveParameters), std::end(rec.waveParameters), 1.0F);
    float *const single[] = {&rec.astLevel,         &rec.astLevelEven,  &rec.instrumentDepth,
                             &rec.energyPeriod,     &rec.checkedHeight, &rec.checkedMeanPeriod,
                             &rec.aliasingFrequency};
    for (float *result : single) {
        *result = 1.0F;
    }
    output_->done = 1;
    output_->sampleCount = 77;
    const OVPreProcessOutput &output = run();
    EXPECT_EQ(output.done, 0);
    EXPECT_EQ(output.sampleCount, 77);
    EXPECT_EQ(rec.readyFlag, 0);
    EXPECT_EQ(rec.missingSampleCount, 103);
    EXPECT_EQ(rec.qualityFlags, 0);
    EXPECT_EQ(rec.astSpikeCount, 0);
    EXPECT_EQ(rec.astInitialBadCount, 0);
    EXPECT_EQ(rec.astBadCount, 0);
    EXPECT_EQ(rec.surfaceTrackValid, 0);
    EXPECT_EQ(rec.selectedCell, 0);
    for (const float value : rec.waveParameters) {
        EXPECT_EQ(value, -9.0F);
    }
    for (const float *result : single) {
        EXPECT_EQ(*result, -9.0F);
    }
}

TEST_F(ProfilePreProcess, ATenthOfTheBurstMayBeMissingAndIsRepeated) {
    OVRecord &rec = *record_;
    rec.sampleCursor = kSamples - 102;
    const int last = rec.sampleCursor - 1;
    rec.attitudeSeries[1][last] = 2.5F;
    rec.profileVelocityStore[2][last][5] = 1234;
    rec.profileAmplitudeStore[2][last][5] = 201;
    rec.profileCorrelationStore[2][last][5] = 99;
    EXPECT_EQ(run().done, 1);
    EXPECT_EQ(rec.missingSampleCount, 102);
    for (int i = last; i < kSamples; ++i) {
        ASSERT_EQ(rec.attitudeSeries[1][i], 2.5F) << i;
        ASSERT_EQ(rec.profileVelocityStore[2][i][5], 1234) << i;
        ASSERT_EQ(rec.profileAmplitudeStore[2][i][5], 201) << i;
        ASSERT_EQ(rec.profileCorrelationStore[2][i][5], 99) << i;
    }
}

TEST_F(ProfilePreProcess, NullPointersAreRefused) {
    EXPECT_EQ(VELTAPreProcess_ptr(nullptr, 0, output_.get()), -1);
    EXPECT_EQ(VELTAPreProcess_ptr(record_.get(), 0, nullptr), -1);
    EXPECT_EQ(record_->readyFlag, 0);
}

// ---- Pressure

TEST_F(ProfilePreProcess, Method1WritesThePressureBeforeItsLevelIsKnown) {
    record_->processingMethod = 1;
    const OVPreProcessOutput &output = run();
    for (int i = 0; i < kSamples; ++i) {
        const float ast = output.rows[i].astOut;
        const float pressure = output.rows[i].pressureOut;
        ASSERT_EQ(ast, pressureAt(i)) << i;
        ASSERT_EQ(pressure, pressureAt(i) - 9.0F) << i;
    }
    EXPECT_NEAR(record_->instrumentDepth, 10.0F, 0.05F);
}

TEST_F(ProfilePreProcess, Method3WritesNoPressure) {
    const OVPreProcessOutput &output = run();
    const float pressure = output.rows[3].pressureOut;
    EXPECT_EQ(pressure, 0.0F);
}

TEST_F(ProfilePreProcess, FindsTheLeastPressureBeforeSpikesAreRemoved) {
    record_->pressureSeries[500] = 3.0F;
    run();
    EXPECT_EQ(record_->minPressure, 3.0F);
    EXPECT_GT(record_->pressureSeries[500], -1.0F); // repaired and without its mean
}

TEST_F(ProfilePreProcess, WaterDepthAddsTheSensorsHeight) {
    run();
    const OVRecord &rec = *record_;
    EXPECT_EQ(rec.waterDepth, static_cast<float>(static_cast<double>(rec.instrumentDepth) + 0.75));
}

// ---- Surface track

TEST_F(ProfilePreProcess, TheTrackHasTheSampleRate) {
    for (const int method : {2, 4}) {
        record_->readyFlag = 0;
        record_->processingMethod = method;
        record_->samplingRate = method;
        run();
        EXPECT_EQ(record_->astLength, kSamples);
        EXPECT_EQ(record_->astSamplingRate, static_cast<float>(method));
    }
}

TEST_F(ProfilePreProcess, ACleanTrackIsValidAndReportedWithThePressure) {
    record_->processingMethod = 4;
    output_->astValidOut = 7;
    const OVPreProcessOutput &output = run();
    EXPECT_EQ(record_->surfaceTrackValid, 1);
    EXPECT_EQ(output.astValidOut, 1);
    EXPECT_NEAR(record_->astLevel, 10.25F, 0.02F);
    for (const int i : {0, 511, 1023}) {
        const float ast = output.rows[i].astOut;
        const float pressure = output.rows[i].pressureOut;
        EXPECT_EQ(ast, record_->astSeries[i]);
        EXPECT_EQ(pressure, record_->pressureSeries[i] + record_->instrumentDepth);
    }
    const float beyond = output.rows[kSamples].astOut;
    EXPECT_EQ(beyond, 0.0F);
}

TEST_F(ProfilePreProcess, CleaningCanBeLeftOut) {
    record_->processingMethod = 4;
    output_->skipAstCleaning = 1;
    output_->astValidOut = 7;
    const OVPreProcessOutput &output = run();
    EXPECT_EQ(output.astValidOut, 7);
    EXPECT_EQ(record_->surfaceTrackValid, 0);
    const float ast = output.rows[100].astOut;
    EXPECT_EQ(ast, distanceAt(100));
}

TEST_F(ProfilePreProcess, TheWindowHoldsForOneBurstOnly) {
    OVRecord &rec = *record_;
    rec.processingMethod = 4;
    output_->useWindow = 1;
    output_->windowBelow = -2.0F;
    output_->windowAbove = 3.0F;
    run();
    EXPECT_EQ(rec.useAstWindow, 1);
    EXPECT_EQ(rec.astWindowBelow, 2.0F);
    EXPECT_EQ(rec.astWindowAbove, 3.0F);
    output_->useWindow = 2; // only 1 asks for it
    run();
    EXPECT_EQ(rec.useAstWindow, 0);
}

TEST_F(ProfilePreProcess, MethodsWithoutATrackHaveNoneEvenAfterOneThatHad) {
    OVRecord &rec = *record_;
    rec.processingMethod = 4;
    run();
    ASSERT_EQ(rec.surfaceTrackValid, 1);
    rec.processingMethod = 3;
    run();
    EXPECT_EQ(rec.surfaceTrackValid, 0);
    EXPECT_EQ(rec.astLevel, -9.0F);
}

// ---- Choice of the cell

TEST_F(ProfilePreProcess, WithoutATrackTheCellLiesBelowFourFifthsOfTheLeastPressure) {
    run();
    const double trough = 0.8 * static_cast<double>(record_->minPressure);
    EXPECT_EQ(record_->selectedCell, cellFor(trough, std::cos(25.0 * kDegree)));
    EXPECT_EQ(record_->selectedCell,
              13); // its far end at 7.16 m, the next one at 7.61 m: the troughs are at 7.6 m
}

TEST_F(ProfilePreProcess, AnInvalidTrackCountsAsNone) {
    run();
    const int without = record_->selectedCell;
    record_->readyFlag = 0;
    record_->processingMethod = 4;
    for (int i = 0; i < kSamples; ++i) {
        record_->pressureSeries[i] = pressureAt(i);
        record_->astSeries[i] = i % 2 == 0 ? 0.0F : distanceAt(i);
    }
    run();
    EXPECT_EQ(record_->surfaceTrackValid, 0);
    EXPECT_EQ(record_->selectedCell, without);
}

TEST_F(ProfilePreProcess, WithATrackTheCellLiesBelowTheTroughsOfTheTrackWithItsTrend) {
    OVRecord &rec = *record_;
    rec.processingMethod = 4;
    for (const float margin : {60.0F, 75.0F, 90.0F, 100.0F}) {
        rec.readyFlag = 0;
        rec.profileParamA = margin;
        for (int i = 0; i < kSamples; ++i) {
            rec.pressureSeries[i] = pressureAt(i);
            rec.astSeries[i] = distanceAt(i);
        }
        run();
        ASSERT_EQ(rec.surfaceTrackValid, 1);
        // Residual, level and trend again give the distance, taken once more relative to the mean.
        double least = 1.0e9;
        for (int i = 0; i < kSamples; ++i) {
            least = std::min(least, static_cast<double>(distanceAt(i)));
        }
        const double relative =
            least + static_cast<double>(rec.astLevel) - static_cast<double>(rec.instrumentDepth);
        const double trough = static_cast<double>(margin) / 100.0 * relative;
        EXPECT_EQ(rec.selectedCell, cellFor(trough, std::cos(25.0 * kDegree))) << margin;
    }
}

TEST_F(ProfilePreProcess, TheTiltThatCountsIsTheLargestOfTheBurst) {
    OVRecord &rec = *record_;
    rec.attitudeSeries[1][100] = -8.0F;
    rec.attitudeSeries[2][kSamples - 1] = 6.0F;
    rec.attitudeSeries[2][500] = -5.0F;
    rec.attitudeSeries[0][50] = 300.0F;          // a heading is no tilt
    rec.attitudeSeries[1][kSamples + 1] = 80.0F; // past the burst
    run();
    const double tilt = std::acos(std::cos(8.0 * kDegree) * std::cos(6.0 * kDegree));
    const double cosine = std::cos(25.0 * kDegree - tilt);
    const double trough = 0.8 * static_cast<double>(rec.minPressure);
    EXPECT_EQ(rec.selectedCell, cellFor(trough, cosine));
    EXPECT_LT(rec.selectedCell, cellFor(trough, std::cos(25.0 * kDegree)));
}

TEST_F(ProfilePreProcess, ACellThatReachesTheTroughsExactlyIsNotTaken) {
    OVRecord &rec = *record_;
    rec.slantAngle = 0.0F;
    rec.sensorHeight = 1.0F;
    rec.sensorDepth = 0.0F;
    rec.processingMethod = 3;
    // 0.8 times 10 m is exactly the far end of cell 6.
    std::fill_n(rec.pressureSeries, kSamples, 10.0F);
    ASSERT_EQ(0.8 * 10.0, 8.0);
    run();
    EXPECT_EQ(rec.selectedCell, 5);
    rec.readyFlag = 0;
    std::fill_n(rec.pressureSeries, kSamples, std::nextafter(10.0F, 11.0F));
    run();
    EXPECT_EQ(rec.selectedCell, 6);
}

TEST_F(ProfilePreProcess, OfCellsThatLieEquallyFarOutTheLowerOneWins) {
    record_->sensorHeight = 0.0F; // every cell at the blanking distance
    run();
    EXPECT_EQ(record_->selectedCell, 0);
}

TEST_F(ProfilePreProcess, NoCellBelowTheTroughsMeansTheFirst) {
    std::fill_n(record_->pressureSeries, kSamples, 1.0F);
    run();
    EXPECT_EQ(record_->selectedCell, 0);
}

TEST_F(ProfilePreProcess, OnlyCellsInUseAreChosen) {
    OVRecord &rec = *record_;
    for (const std::uint32_t cells : {0U, 1U, 2U, 8U}) {
        rec.readyFlag = 0;
        std::fill_n(rec.pressureSeries, kSamples, 100.0F);
        rec.nCells = cells;
        run();
        EXPECT_EQ(rec.selectedCell, static_cast<int>(std::max(cells, 1U)) - 1);
    }
    rec.readyFlag = 0;
    rec.nCells = 0xFFFFFFFFU;
    for (int i = 0; i < kSamples; ++i) {
        rec.pressureSeries[i] = 1000.0F;
        for (auto &beam : rec.profileCorrelationStore) {
            beam[i][255] = 90;
        }
    }
    run();
    EXPECT_EQ(rec.selectedCell, 255);
}

TEST_F(ProfilePreProcess, AWeakCellIsReplacedByTheOneBelow) {
    run();
    const int chosen = record_->selectedCell;
    ASSERT_EQ(chosen, 13);
    // A mean of 50 - 1/1024 percent in the weakest beam; at 50 the cell stays.
    for (const bool weak : {false, true}) {
        record_->readyFlag = 0;
        for (int i = 0; i < kSamples; ++i) {
            record_->pressureSeries[i] = pressureAt(i);
        }
        setCorrelation(2, chosen, 50);
        setCorrelation(2, chosen, weak ? 49 : 50, 0, 1);
        run();
        EXPECT_EQ(record_->selectedCell, weak ? chosen - 1 : chosen);
    }
}

TEST_F(ProfilePreProcess, ACellWithAMeanCorrelationOf49Point9IsReplacedByTheOneBelow) {
    setCorrelation(0, 13, 50);
    setCorrelation(0, 13, 49, 0, kSamples / 10 + 1);
    run();
    EXPECT_EQ(record_->selectedCell, 12);
}

TEST_F(ProfilePreProcess, TheWeakestBeamOfEverySampleCounts) {
    // Each beam alone has a mean of 70 percent, but in every sample one of two beams has 40.
    setCorrelation(0, 13, 100);
    setCorrelation(1, 13, 100);
    setCorrelation(0, 13, 40, 0, kSamples / 2);
    setCorrelation(1, 13, 40, kSamples / 2);
    run();
    EXPECT_EQ(record_->selectedCell, 12);
}

TEST_F(ProfilePreProcess, OnlyBeamsInUseAreAsked) {
    setCorrelation(3, 13, 0);
    setCorrelation(2, 12, 0);
    setCorrelation(2, 13, 0);
    for (const auto &[beams, cell] :
         {std::pair<std::int16_t, int>{1, 13}, {2, 13}, {3, 11}, {4, 11}}) {
        record_->readyFlag = 0;
        for (int i = 0; i < kSamples; ++i) {
            record_->pressureSeries[i] = pressureAt(i);
        }
        record_->beamCount = beams;
        run();
        EXPECT_EQ(record_->selectedCell, cell) << beams;
    }
}

TEST_F(ProfilePreProcess, WithoutAnyGoodCellTheSearchEndsAtTheFirst) {
    for (int c = 0; c < kCells; ++c) {
        setCorrelation(1, c, 10);
    }
    run();
    EXPECT_EQ(record_->selectedCell, 0);
}

// ---- What the burst becomes

TEST_F(ProfilePreProcess, TheChosenCellBecomesTheVelocitySeriesAndTheRows) {
    OVRecord &rec = *record_;
    for (int i = 0; i < kSamples; ++i) {
        rec.attitudeSeries[0][i] = 200.0F + static_cast<float>(i % 5);
        rec.attitudeSeries[1][i] = 1.0F + static_cast<float>(i % 3);
        rec.attitudeSeries[2][i] = -1.0F - static_cast<float>(i % 2);
    }
    const OVPreProcessOutput &output = run();
    const int cell = rec.selectedCell;
    for (const int i : {0, 1, 500, kSamples - 1}) {
        const OVPreProcessRow row = output.rows[i];
        const float *const series[] = {rec.velocitySeries[0], rec.velocitySeries[1],
                                       rec.velocitySeries[2], rec.astDistance2Series};
        for (int b = 0; b < 4; ++b) {
            const auto expected = static_cast<float>(velocityAt(b, i, cell) / 1000.0);
            EXPECT_EQ(series[b][i], expected);
            const float velocity = row.velocity[b];
            EXPECT_EQ(velocity, expected);
            EXPECT_EQ(row.amplitude[b], 60 + 10 * b + cell);
            EXPECT_EQ(row.correlation[b], 90 - b);
        }
        const float attitude[3] = {row.attitude[0], row.attitude[1], row.attitude[2]};
        EXPECT_EQ(attitude[0], rec.attitudeSeries[0][i]);
        EXPECT_EQ(attitude[1], rec.attitudeSeries[2][i]); // roll before pitch
        EXPECT_EQ(attitude[2], rec.attitudeSeries[1][i]);
    }
    EXPECT_EQ(output.done, 1);
    EXPECT_EQ(output.sampleCount, kSamples);
}

TEST_F(ProfilePreProcess, TheCellsRangeIsRoundedOnce) {
    OVRecord &rec = *record_;
    rec.sensorHeight = 0.55168897F; // 0.5 m over the cosine of 25 degrees
    rec.sensorDepth = 0.77236456F;
    const OVPreProcessOutput &output = run();
    const double range = (rec.selectedCell + 1) * static_cast<double>(0.55168897F) +
                         static_cast<double>(0.77236456F);
    EXPECT_EQ(rec.headerDepth, static_cast<float>(range));
    const float vertical = output.cellVerticalRange;
    EXPECT_EQ(vertical,
              static_cast<float>(std::cos(25.0 * kDegree) * static_cast<double>(rec.headerDepth)));
}

TEST_F(ProfilePreProcess, TheNoiseIsThatOfTheCellAndOutlivesTheRunsOwn) {
    OVRecord &rec = *record_;
    run();
    EXPECT_EQ(rec.velocityNoise, ov::profileVelocityNoise(rec));
    EXPECT_GT(rec.velocityNoise, 0.0F);
    EXPECT_EQ(rec.velocityNoiseMps, rec.velocityNoise / 100.0F);
    const float noise = rec.velocityNoise;
    ov::prepareRun(rec);
    EXPECT_EQ(rec.velocityNoise, noise);
}

TEST_F(ProfilePreProcess, AFullBurstsLastPressureIsRepairedWithoutAnEarlierBurst) {
    // A spike at the very end aims at the element behind the burst; after the header that element reads 0.
    const auto repairedEnd = [](float earlier) {
        const orvik::test::RecordPtr record = orvik::test::makeRecord();
        OVProfileInstrumentConfig config{};
        config.instrumentType = 16;
        VELTASetInstrumentConfig_ptr(record.get(), &config);
        record->velocitySeries[0][0] = earlier;
        OVProfileWaveHeader header{};
        header.nSamples = 16384;
        header.nCells = 1;
        VELTASetWaveHeader_ptr(record.get(), &header);
        const auto sample = std::make_unique<OVWaveSampleProfile>();
        for (int i = 0; i < 16384; ++i) {
            sample->valid = 1;
            sample->pressure = i == 16383 ? 500.0F : pressureAt(i);
            VELTASetWaveSampleProfile_ptr(record.get(), sample.get());
        }
        const auto output = std::make_unique<OVPreProcessOutput>();
        VELTAPreProcess_ptr(record.get(), 0, output.get());
        EXPECT_EQ(output->done, 1);
        return record->pressureSeries[16383];
    };
    EXPECT_EQ(repairedEnd(30.0F), repairedEnd(0.0F));
}

TEST_F(ProfilePreProcess, TiltsThatAreNoNumbersAreSkipped) {
    run();
    const int level = record_->selectedCell;
    record_->readyFlag = 0;
    for (int i = 0; i < kSamples; ++i) {
        record_->pressureSeries[i] = pressureAt(i);
    }
    record_->attitudeSeries[1][7] = std::numeric_limits<float>::quiet_NaN();
    run();
    EXPECT_EQ(record_->selectedCell, level);
}

} // namespace
