#include "frame/process.hpp"

#include <algorithm>
#include <cmath>
#include <cstring>
#include <iterator>
#include <limits>

#include <gtest/gtest.h>

#include "support/record_ptr.hpp"
#include "support/synthetic_burst.hpp"

namespace {

using orvik::test::makeRecord;
using orvik::test::RecordPtr;

constexpr float kStale = 7.25F; // what an earlier burst left behind

template <class Array> void makeStale(Array &array) {
    std::fill(std::begin(array), std::end(array), kStale);
}

template <class Array> bool allEqual(const Array &array, double value) {
    return std::all_of(std::begin(array), std::end(array),
                       [value](auto x) { return static_cast<double>(x) == value; });
}

// Fills every per-frequency series that a run accumulates into.
void makeSpectraStale(OVRecord &rec) {
    makeStale(rec.spectrumVel);
    makeStale(rec.spectrumPrs);
    makeStale(rec.bandSpectrum);
    makeStale(rec.meanDirection);
    makeStale(rec.directionalSpread);
    makeStale(rec.fourierA1);
    makeStale(rec.fourierB1);
    makeStale(rec.fourierA2);
    makeStale(rec.fourierB2);
    makeStale(rec.spectraUsed);
    makeStale(rec.bandSpectrumFine);
    makeStale(rec.checkRatio);
    for (auto &bin : rec.beamElevSpectrum) {
        makeStale(bin);
    }
    for (auto &row : rec.dirSpectrum) {
        makeStale(row);
    }
}

void expectSpectraZero(const OVRecord &rec) {
    EXPECT_TRUE(allEqual(rec.spectrumVel, 0.0));
    EXPECT_TRUE(allEqual(rec.spectrumPrs, 0.0));
    EXPECT_TRUE(allEqual(rec.bandSpectrum, 0.0));
    EXPECT_TRUE(allEqual(rec.meanDirection, 0.0));
    EXPECT_TRUE(allEqual(rec.directionalSpread, 0.0));
    EXPECT_TRUE(allEqual(rec.fourierA1, 0.0));
    EXPECT_TRUE(allEqual(rec.fourierB1, 0.0));
    EXPECT_TRUE(allEqual(rec.fourierA2, 0.0));
    EXPECT_TRUE(allEqual(rec.fourierB2, 0.0));
    EXPECT_TRUE(allEqual(rec.spectraUsed, 0.0));
    EXPECT_TRUE(allEqual(rec.bandSpectrumFine, 0.0));
    EXPECT_TRUE(allEqual(rec.checkRatio, 0.0));
    for (const auto &bin : rec.beamElevSpectrum) {
        EXPECT_TRUE(allEqual(bin, 0.0));
    }
}

void makeScalarsStale(OVRecord &rec) {
    makeStale(rec.waveParameters);
    rec.energyPeriod = kStale;
    rec.checkedHeight = kStale;
    rec.checkedMeanPeriod = kStale;
    rec.aliasingFrequency = kStale;
    rec.lastValidFreqIndex = 17;
    rec.processedFlag = 1;
}

void expectScalarsMissing(const OVRecord &rec) {
    EXPECT_TRUE(allEqual(rec.waveParameters, -9.0));
    EXPECT_EQ(rec.energyPeriod, -9.0F);
    EXPECT_EQ(rec.checkedHeight, -9.0F);
    EXPECT_EQ(rec.checkedMeanPeriod, -9.0F);
    EXPECT_EQ(rec.aliasingFrequency, -9.0F);
    EXPECT_EQ(rec.lastValidFreqIndex, 200); // every bin, until the aliasing limit says otherwise
    EXPECT_EQ(rec.processedFlag, 0);
}

// ---- Preparation of a run

TEST(PrepareRun, ClearsEverySeriesThatARunAccumulatesInto) {
    const RecordPtr record = makeRecord();
    makeSpectraStale(*record);
    makeScalarsStale(*record);
    ov::prepareRun(*record);
    expectSpectraZero(*record);
    expectScalarsMissing(*record);
    for (const auto &row : record->dirSpectrum) {
        EXPECT_TRUE(
            allEqual(row, 0.0)); // the directions beyond nDirections too: 0 of them are in use here
    }
}

TEST(PrepareRun, LeavesTheInputsAlone) {
    const RecordPtr record = makeRecord();
    makeStale(record->frequencies);
    makeStale(record->fineFreqAxis);
    makeStale(record->pressureSeries);
    makeStale(record->astSeries);
    record->instrumentDepth = kStale;
    record->waterDepth = kStale;
    record->astLevel = kStale;
    record->selectedCell = 3;
    ov::prepareRun(*record);
    EXPECT_TRUE(allEqual(record->frequencies, 7.25));
    EXPECT_TRUE(allEqual(record->fineFreqAxis, 7.25));
    EXPECT_TRUE(allEqual(record->pressureSeries, 7.25));
    EXPECT_TRUE(allEqual(record->astSeries, 7.25));
    EXPECT_EQ(record->instrumentDepth, kStale);
    EXPECT_EQ(record->waterDepth, kStale);
    EXPECT_EQ(record->astLevel, kStale);
    EXPECT_EQ(record->selectedCell, 3);
}

// The samples set it; every other bit is found again by the run.
TEST(PrepareRun, KeepsOfTheFlagsOnlyTheWeakAmplitude) {
    const RecordPtr record = makeRecord();
    record->qualityFlags = 0x0FFF;
    ov::prepareRun(*record);
    EXPECT_EQ(record->qualityFlags, OV_FLAG_WEAK_AMPLITUDE);
    record->qualityFlags = 0x0FFF & ~OV_FLAG_WEAK_AMPLITUDE;
    ov::prepareRun(*record);
    EXPECT_EQ(record->qualityFlags, 0);
}

TEST(PrepareRun, SamplingRateIsTheCodeOrThreeQuartersOfAHertzAt400kHz) {
    struct Row {
        std::int32_t code;
        float acousticFrequency;
        float rate;
    };
    const Row rows[] = {
        {0, 400000.0F, 0.75F},
        {0, std::nextafter(400000.0F, 0.0F), 0.0F},
        {0, std::nextafter(400000.0F, 1.0e9F), 0.0F},
        {0, 1.0e6F, 0.0F},
        {1, 400000.0F, 1.0F},
        {2, 1.0e6F, 2.0F},
        {-3, 400000.0F, -3.0F},
    };
    const RecordPtr record = makeRecord();
    for (const Row &row : rows) {
        record->samplingRate = row.code;
        record->acousticFrequency = row.acousticFrequency;
        ov::prepareRun(*record);
        EXPECT_EQ(record->samplingRateHz, row.rate) << row.code << " at " << row.acousticFrequency;
    }
}

// exact: 562.5 / (sqrt(64) * 120) and 562.5 / (sqrt(1) * 0.5) need no rounding beyond the stored one.
TEST(PrepareRun, VelocityNoiseFallsWithPingsAndCellSize) {
    const RecordPtr record = makeRecord();
    record->pingsPerSample = 64;
    record->cellSize = 120.0F;
    ov::prepareRun(*record);
    EXPECT_EQ(record->velocityNoise, 0.5859375F);
    EXPECT_EQ(record->velocityNoiseMps, 0.5859375F / 100.0F);
    record->pingsPerSample = 1;
    record->cellSize = 0.5F;
    ov::prepareRun(*record);
    EXPECT_EQ(record->velocityNoise, 1125.0F);
    EXPECT_EQ(record->velocityNoiseMps, 11.25F);
}

// ulp: the root and the quotient are formed in double, rounded once.
TEST(PrepareRun, VelocityNoiseIsRoundedOnce) {
    const RecordPtr record = makeRecord();
    for (const std::uint32_t pings : {2U, 3U, 60U, 12345U, 4294967295U}) {
        record->pingsPerSample = pings;
        record->cellSize = 33.7F;
        ov::prepareRun(*record);
        const long double exact = 562.5L / (std::sqrt(static_cast<long double>(pings)) *
                                            static_cast<long double>(record->cellSize));
        EXPECT_EQ(record->velocityNoise, static_cast<float>(exact)) << pings;
        EXPECT_EQ(record->velocityNoiseMps, record->velocityNoise / 100.0F) << pings;
    }
}

TEST(PrepareRun, VelocityNoiseOfAProfileInstrumentComesWithItsCell) {
    const RecordPtr record = makeRecord();
    record->instrumentType = 16;
    record->pingsPerSample = 64;
    record->cellSize = 120.0F;
    record->velocityNoise = kStale;
    record->velocityNoiseMps = kStale;
    ov::prepareRun(*record);
    EXPECT_EQ(record->velocityNoise, kStale);
    EXPECT_EQ(record->velocityNoiseMps, kStale);
}

TEST(PrepareRun, WithoutPingsOrCellTheNoiseIsInfinite) {
    const RecordPtr record = makeRecord();
    ov::prepareRun(*record);
    EXPECT_EQ(record->velocityNoise, std::numeric_limits<float>::infinity());
}

TEST(PrepareRun, StartsFromTheHostsChoicesNotFromTheLastRuns) {
    const RecordPtr record = makeRecord();
    record->processingMethod = 4;
    record->activeMethod = 3;
    record->configuredInputMode = 2;
    record->directionalInputMode = 0;
    record->configuredEstimateMask = 15;
    record->estimateMask = 7;
    record->trackVerdict = 1;
    record->surfaceTrackValid = 0;
    ov::prepareRun(*record);
    EXPECT_EQ(record->activeMethod, 4);
    EXPECT_EQ(record->directionalInputMode, 2);
    EXPECT_EQ(record->estimateMask, 15);
    EXPECT_EQ(record->surfaceTrackValid, 1);
}

TEST(PrepareRun, SetsTheEstimatorsStoppingRuleAndTwoPasses) {
    const RecordPtr record = makeRecord();
    ov::prepareRun(*record);
    EXPECT_EQ(record->convergenceTolerance, 1.0e-5F);
    EXPECT_EQ(record->iterationLimit, 3);
    EXPECT_EQ(record->firstRunFlag, 1);
}

// ---- Reset of the results

TEST(ResetResults, MakesEveryResultMissing) {
    const RecordPtr record = makeRecord();
    makeScalarsStale(*record);
    record->instrumentDepth = kStale;
    record->astLevel = kStale;
    record->astLevelEven = kStale;
    record->qualityFlags = 0x0FFF;
    record->spectrumSource = OV_SOURCE_SURFACE_TRACK;
    ov::resetResults(*record);
    expectScalarsMissing(*record);
    EXPECT_EQ(record->instrumentDepth, -9.0F);
    EXPECT_EQ(record->astLevel, -9.0F);
    EXPECT_EQ(record->astLevelEven, -9.0F);
    EXPECT_EQ(record->qualityFlags, OV_FLAG_NO_RESULT);
    EXPECT_EQ(record->spectrumSource, OV_SOURCE_PRESSURE);
}

TEST(ResetResults, ClearsTheSpectra) {
    const RecordPtr record = makeRecord();
    makeSpectraStale(*record);
    ov::resetResults(*record);
    expectSpectraZero(*record);
}

TEST(ResetResults, ClearsWhatGettersWouldReportOfAnEarlierBurst) {
    const RecordPtr record = makeRecord();
    makeStale(record->meanVelocity);
    record->meanCurrentSpeed = kStale;
    record->meanCurrentDirection = kStale;
    record->selectedCell = 5;
    record->velocitySeriesCount = 3;
    record->surfaceTrackValid = 1;
    ov::resetResults(*record);
    EXPECT_TRUE(allEqual(record->meanVelocity, 0.0));
    EXPECT_EQ(record->meanCurrentSpeed, 0.0F);
    EXPECT_EQ(record->meanCurrentDirection, 0.0F);
    EXPECT_EQ(record->selectedCell, 0);
    EXPECT_EQ(record->velocitySeriesCount, 0);
    EXPECT_EQ(record->surfaceTrackValid, 0);
}

TEST(ResetResults, DirectionsBeyondTheCountInUseKeepTheirContents) {
    for (const int inUse : {0, 1, 36, 89, 90}) {
        const RecordPtr record = makeRecord();
        makeSpectraStale(*record);
        record->nDirections = inUse;
        ov::resetResults(*record);
        for (int f = 0; f < ov::kMaxFreq; ++f) {
            for (int d = 0; d < ov::kMaxDir; ++d) {
                ASSERT_EQ(record->dirSpectrum[f][d], d < inUse ? 0.0 : 7.25)
                    << inUse << ' ' << f << ' ' << d;
            }
        }
    }
}

TEST(ResetResults, ANegativeDirectionCountClearsNoDirection) {
    const RecordPtr record = makeRecord();
    makeSpectraStale(*record);
    record->nDirections = -5;
    ov::resetResults(*record);
    EXPECT_EQ(record->dirSpectrum[0][0], 7.25);
    EXPECT_EQ(record->dirSpectrum[199][89], 7.25);
}

TEST(ResetResults, ClearsTheUpperHalfOfTheTransformWorkAreaAndNoMore) {
    const RecordPtr record = makeRecord();
    makeStale(record->fftWork);
    makeStale(record->astSpecIm);
    ov::resetResults(*record);
    static_assert(sizeof record->fftWork == 2 * 131072U);
    for (int i = 0; i < ov::kMaxTrack; ++i) {
        ASSERT_EQ(record->fftWork[i], kStale) << i;
        ASSERT_EQ(record->fftWork[ov::kMaxTrack + i], 0.0F) << i;
    }
    EXPECT_TRUE(allEqual(record->astSpecIm, 7.25));
    EXPECT_EQ(record->profileVelocityStore[0][0][0], 0); // what follows the work area
}

TEST(ResetResults, KeepsTheBurstAndTheConfiguration) {
    const RecordPtr record = makeRecord();
    makeStale(record->pressureSeries);
    makeStale(record->frequencies);
    record->instrumentType = 3;
    record->processingMethod = 4;
    record->nFrequencies = 47;
    record->missingSampleCount = 12;
    ov::resetResults(*record);
    EXPECT_TRUE(allEqual(record->pressureSeries, 7.25));
    EXPECT_TRUE(allEqual(record->frequencies, 7.25));
    EXPECT_EQ(record->instrumentType, 3);
    EXPECT_EQ(record->processingMethod, 4);
    EXPECT_EQ(record->nFrequencies, 47);
    EXPECT_EQ(record->missingSampleCount, 12);
}

// ---- The sequence

RecordPtr preProcessed(int method, bool faulty = false) {
    const auto burst =
        orvik::test::makeSyntheticBurst({.method = method, .nSamples = 512, .faulty = faulty});
    RecordPtr record = makeRecord();
    orvik::test::openBurst(record.get(), burst);
    orvik::test::sendSamples(record.get(), burst);
    const auto output = std::make_unique<OVPreProcessOutput>();
    OVPreProcess_ptr(record.get(), 0, output.get());
    return record;
}

TEST(ProcessBurst, WithoutAReadyBurstEveryResultIsMissing) {
    const RecordPtr record = makeRecord();
    makeScalarsStale(*record);
    makeSpectraStale(*record);
    EXPECT_FALSE(ov::processBurst(*record));
    expectScalarsMissing(*record);
    expectSpectraZero(*record);
    EXPECT_EQ(record->qualityFlags, OV_FLAG_NO_RESULT);
}

TEST(ProcessBurst, AReadyBurstGivesResults) {
    for (int method = 1; method <= 4; ++method) {
        const RecordPtr record = preProcessed(method);
        ASSERT_EQ(record->readyFlag, 1);
        EXPECT_TRUE(ov::processBurst(*record)) << method;
        EXPECT_EQ(record->processedFlag, 1) << method;
        EXPECT_GT(record->waveParameters[OV_HM0], 0.0F) << method;
        EXPECT_EQ(record->qualityFlags & OV_FLAG_NO_RESULT, 0) << method;
    }
}

// exact: nothing is accumulated and no input is consumed.
TEST(ProcessBurst, ASecondRunOnTheSameBurstLeavesTheSameRecord) {
    for (int method = 1; method <= 4; ++method) {
        const RecordPtr record = preProcessed(method, true);
        ASSERT_TRUE(ov::processBurst(*record));
        const RecordPtr first = makeRecord();
        std::memcpy(first.get(), record.get(), sizeof(OVRecord));
        ASSERT_TRUE(ov::processBurst(*record));
        EXPECT_EQ(std::memcmp(first.get(), record.get(), sizeof(OVRecord)), 0)
            << "method " << method;
    }
}

// exact: a host may change parameters and process the burst again.
TEST(ProcessBurst, LeavesTheBurstsSeriesAsPreProcessingLeftThem) {
    for (int method = 1; method <= 4; ++method) {
        const RecordPtr record = preProcessed(method, true);
        const RecordPtr before = makeRecord();
        std::memcpy(before.get(), record.get(), sizeof(OVRecord));
        ASSERT_TRUE(ov::processBurst(*record));
        constexpr std::size_t kFrom = offsetof(OVRecord, pressureSeries);
        constexpr std::size_t kTo = offsetof(OVRecord, seriesSpecRe);
        EXPECT_EQ(std::memcmp(reinterpret_cast<const char *>(before.get()) + kFrom,
                              reinterpret_cast<const char *>(record.get()) + kFrom, kTo - kFrom),
                  0)
            << "method " << method;
    }
}

TEST(ProcessBurst, AHeaderAfterARunClosesTheBurst) {
    const RecordPtr record = preProcessed(3);
    ASSERT_TRUE(ov::processBurst(*record));
    OVWaveHeader header{};
    header.nSamples = 512;
    ASSERT_EQ(OVSetWaveHeader_ptr(record.get(), &header), 1);
    EXPECT_EQ(record->processedFlag, 1); // results stay until the next run
    EXPECT_GT(record->waveParameters[OV_HM0], 0.0F);
    EXPECT_FALSE(ov::processBurst(*record));
    expectScalarsMissing(*record);
}

} // namespace
