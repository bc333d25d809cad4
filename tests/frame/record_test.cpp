#include "frame/record.hpp"

#include <cstddef>
#include <cstring>
#include <type_traits>

#include <gtest/gtest.h>

#include "support/record_ptr.hpp"
#include "support/synthetic_burst.hpp"

namespace {

using orvik::test::makeRecord;
using orvik::test::RecordPtr;

// A host allocates records by this size; it cannot follow a change.
TEST(Record, IsOneFlatBlockOfTheSizeHostsAllocate) {
    EXPECT_EQ(sizeof(OVRecord), 69003224U);
    EXPECT_TRUE(std::is_trivially_copyable_v<OVRecord>);
    EXPECT_TRUE(std::is_standard_layout_v<OVRecord>);
    EXPECT_TRUE(std::is_aggregate_v<OVRecord>);
}

TEST(Record, EndsInTheTwoBytesThatTellWhetherThereAreResults) {
    EXPECT_EQ(offsetof(OVRecord, processedFlag), 69003222U);
    EXPECT_EQ(offsetof(OVRecord, surfaceTrackValid), 69003223U);
}

// 1 MiB pages of a profile: a point instrument must not pay for them, whatever it does.
TEST(Record, SamplesAndResultsArePartedFromTheProfilesByAddress) {
    EXPECT_LT(offsetof(OVRecord, fftWork), offsetof(OVRecord, profileVelocityStore));
    EXPECT_LT(offsetof(OVRecord, dirSpectrum), offsetof(OVRecord, pressureSeries));
}

TEST(Record, PressureStorageRunsOnIntoTheVelocities) {
    const RecordPtr record = makeRecord();
    record->pressureSeries[ov::kMaxSamples - 1] = 1.0F;
    record->velocitySeries[0][0] = 2.0F;
    record->velocitySeries[0][ov::kMaxSamples - 1] = 3.0F;
    record->velocitySeries[1][0] = 4.0F;
    EXPECT_EQ(ov::pressureStorage(*record, ov::kMaxSamples - 1), 1.0F);
    EXPECT_EQ(ov::pressureStorage(*record, ov::kMaxSamples), 2.0F);
    EXPECT_EQ(ov::pressureStorage(*record, 2 * ov::kMaxSamples - 1), 3.0F);
    EXPECT_EQ(ov::pressureStorage(*record, 2 * ov::kMaxSamples), 4.0F);
}

TEST(Record, TheSecondDistanceIsTheFourthVelocitySeries) {
    const RecordPtr record = makeRecord();
    EXPECT_EQ(ov::velocitySeriesData(*record, 0), record->velocitySeries[0]);
    EXPECT_EQ(ov::velocitySeriesData(*record, 2), record->velocitySeries[2]);
    EXPECT_EQ(ov::velocitySeriesData(*record, 3), record->astDistance2Series);
}

TEST(Record, CountsForLoopsStayInsideTheirArrays) {
    struct Row {
        int count, main, fine, directions;
    };
    constexpr Row kRows[] = {
        {-2147483647, 0, 0, 0}, {-1, 0, 0, 0},       {0, 0, 0, 0},
        {1, 1, 1, 1},           {89, 89, 89, 89},    {90, 90, 90, 90},
        {91, 91, 91, 90},       {200, 200, 200, 90}, {201, 200, 201, 90},
        {400, 200, 400, 90},    {401, 200, 400, 90}, {2147483647, 200, 400, 90},
    };
    const RecordPtr record = makeRecord();
    for (const Row &row : kRows) {
        record->nFrequencies = row.count;
        record->nFrequenciesFine = row.count;
        record->nDirections = row.count;
        EXPECT_EQ(ov::mainBinCount(*record), row.main) << row.count;
        EXPECT_EQ(ov::fineBinCount(*record), row.fine) << row.count;
        EXPECT_EQ(ov::directionCount(*record), row.directions) << row.count;
    }
}

// exact: no pointer inside, so that a copy made in the middle of a burst continues like the original.
TEST(Record, AByteCopyContinuesLikeTheOriginal) {
    const auto burst =
        orvik::test::makeSyntheticBurst({.method = 4, .nSamples = 512, .faulty = true});
    const RecordPtr original = makeRecord();
    const RecordPtr copy = makeRecord();
    orvik::test::openBurst(original.get(), burst);
    orvik::test::sendSamples(original.get(), burst);
    std::memcpy(copy.get(), original.get(), sizeof(OVRecord));

    const auto output = std::make_unique<OVPreProcessOutput>();
    for (OVRecord *record : {original.get(), copy.get()}) {
        ASSERT_EQ(OVPreProcess_ptr(record, 0, output.get()), 0);
        ASSERT_TRUE(OVProcess_ptr(record));
    }
    EXPECT_EQ(std::memcmp(original.get(), copy.get(), sizeof(OVRecord)), 0);
}

} // namespace
