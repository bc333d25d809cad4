#include "config/wave_header.hpp"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <cstring>
#include <limits>

#include <gtest/gtest.h>

#include "support/record_ptr.hpp"

namespace {

using orvik::test::makeRecord;
using orvik::test::RecordPtr;

RecordPtr recordOf(std::int32_t type, float acousticFrequency, std::int16_t cellSizeCounts = 100) {
    RecordPtr record = makeRecord();
    record->instrumentType = type;
    record->acousticFrequency = acousticFrequency;
    record->cellSizeCounts = static_cast<std::uint16_t>(cellSizeCounts);
    return record;
}

// ---- Burst length

TEST(WaveHeader, BurstsAbove512AreRoundedDownToAPowerOfTwo) {
    struct Row {
        std::uint16_t given, used;
    };
    constexpr Row kRows[] = {
        {0, 0},        {1, 1},         {300, 300},     {511, 511},     {512, 512},
        {513, 512},    {600, 512},     {1023, 512},    {1024, 1024},   {1025, 1024},
        {2047, 1024},  {2048, 2048},   {2049, 2048},   {2400, 2048},   {4095, 2048},
        {4096, 4096},  {4097, 4096},   {8191, 4096},   {8192, 8192},   {8193, 8192},
        {16383, 8192}, {16384, 16384}, {16385, 16384}, {20000, 16384}, {65535, 16384}};
    const RecordPtr record = recordOf(3, 1.0e6F);
    for (const Row &row : kRows) {
        OVWaveHeader header{};
        header.nSamples = row.given;
        ov::setWaveHeader(*record, header);
        EXPECT_EQ(record->burstLength, row.used) << row.given;
        EXPECT_EQ(record->burstSamples, row.used) << row.given;
        EXPECT_EQ(header.nSamples, row.used) << row.given;
    }
}

TEST(WaveHeader, EveryLengthIsTheGreatestAllowedOneNotAboveIt) {
    for (int n = 0; n <= 65535; ++n) {
        const int used = ov::usableBurstLength(n);
        if (n <= 512) {
            ASSERT_EQ(used, n);
            continue;
        }
        ASSERT_EQ(used & (used - 1), 0) << n;
        ASSERT_LE(used, n);
        ASSERT_TRUE(used == 16384 || 2 * used > n) << n;
    }
}

// ---- Fields

TEST(WaveHeader, CopiesTheReadings) {
    const RecordPtr record = recordOf(3, 1.0e6F);
    OVWaveHeader header{};
    header.headerValueA = 1.5F;
    header.headerValueB = 99.0F;
    header.heading = -10.5F;
    header.pitch = 3.25F;
    header.roll = -4.75F;
    header.headerValueC = 2.5F;
    header.headerWords[0] = 1;
    header.headerWords[1] = 0xFFFF;
    header.headerWords[2] = 40000;
    header.headerFlag = 200;
    header.nCells = 0xFFFFFFFF;
    header.surfaceTimeOffset = -32768;
    ov::setWaveHeader(*record, header);
    EXPECT_EQ(record->headerValueA, 1.5F);
    EXPECT_EQ(record->heading, -10.5F);
    EXPECT_EQ(record->pitch, 3.25F);
    EXPECT_EQ(record->roll, -4.75F);
    EXPECT_EQ(record->headerValueC, 2.5F);
    EXPECT_EQ(record->headerWords[0], 1);
    EXPECT_EQ(record->headerWords[1], 0xFFFF);
    EXPECT_EQ(record->headerWords[2], 40000);
    EXPECT_EQ(record->headerFlag, 200);
    EXPECT_EQ(record->nCells, 0xFFFFFFFFU);
    EXPECT_EQ(record->surfaceTimeOffset, -32768); // widened with its sign
}

TEST(WaveHeader, OnlyType3AtExactly400kHzHasADepthOffset) {
    struct Row {
        std::int32_t type;
        float frequency;
        float used;
    };
    const Row rows[] = {{3, 400000.0F, 0.75F},
                        {3, std::nextafter(400000.0F, 0.0F), 0.0F},
                        {3, std::nextafter(400000.0F, 1.0e9F), 0.0F},
                        {3, 1.0e6F, 0.0F},
                        {1, 400000.0F, 0.0F},
                        {16, 400000.0F, 0.0F},
                        {0, 400000.0F, 0.0F}};
    for (const Row &row : rows) {
        const RecordPtr record = recordOf(row.type, row.frequency);
        record->depthOffset = 5.0F;
        OVWaveHeader header{};
        header.depthOffset = 0.75F;
        ov::setWaveHeader(*record, header);
        EXPECT_EQ(record->depthOffset, row.used) << row.type << ' ' << row.frequency;
    }
}

TEST(WaveHeader, TheProfileInstrumentsDepthsAreTakenAsGiven) {
    const RecordPtr record = recordOf(16, 600000.0F);
    OVWaveHeader header{};
    header.pressureCounts = 500;
    header.distanceCounts = 500;
    header.directDepth = 0.7F;
    header.directHeight = 0.1F;
    ov::setWaveHeader(*record, header);
    EXPECT_EQ(record->sensorDepth, 0.7F);
    EXPECT_EQ(record->sensorHeight, 0.1F);
    EXPECT_EQ(record->headerDepth, 0.1F + 0.7F);
}

// ---- Heights and depths from counts.
// The reference works in whole numbers: every floor is an exact integer division, so that a row near a boundary cannot
// be decided by the rounding of the reference.

std::int64_t floorDivide(std::int64_t a, std::int64_t b) {
    return a / b - ((a % b != 0 && (a < 0) != (b < 0)) ? 1 : 0);
}

// ulp: the stored value is one rounding of hundredths times powers of two, +-1 for the products with 0.01.
void expectWithinUlp(float stored, long double exact, const char *what, int counts) {
    const auto nearest = static_cast<float>(exact);
    EXPECT_TRUE(stored == nearest || stored == std::nextafter(nearest, 1.0e9F) ||
                stored == std::nextafter(nearest, -1.0e9F))
        << what << " of " << counts << ": " << stored << " for " << nearest;
}

TEST(WaveHeader, Type1HeightIsRoundedDownInTenThousandthsOfAMetreTimes256) {
    const RecordPtr record = recordOf(1, 1.0e6F);
    for (const int counts : {-32768, -1001, -1, 0, 1, 2, 3, 77, 1000, 32767}) {
        OVWaveHeader header{};
        header.distanceCounts = static_cast<std::int16_t>(counts);
        ov::setWaveHeader(*record, header);
        // d * 100 * 750 / 480000 * 100 = d * 15.625
        const std::int64_t floored = floorDivide(std::int64_t{counts} * 125, 8);
        expectWithinUlp(record->sensorHeight, static_cast<long double>(floored) / 10000.0L / 256.0L,
                        "height", counts);
    }
}

TEST(WaveHeader, OtherTypesHeightIsRoundedDownInHundredthsOfAMetreTimes256) {
    const RecordPtr record = recordOf(3, 1.0e6F);
    for (const int counts : {-32768, -1001, -1, 1, 3, 77, 1000, 32767}) {
        OVWaveHeader header{};
        header.distanceCounts = static_cast<std::int16_t>(counts);
        ov::setWaveHeader(*record, header);
        // 750 / (1e6 * 4 / 255) * d * 100 = d * 4.78125
        const std::int64_t floored = floorDivide(std::int64_t{counts} * 153, 32);
        expectWithinUlp(record->sensorHeight, static_cast<long double>(floored) / 100.0L / 256.0L,
                        "height", counts);
    }
}

TEST(WaveHeader, Type1DepthIsThePressureLessTheCellInTenThousandthsOfAMetre) {
    const RecordPtr record = recordOf(1, 1.0e6F, 100);
    for (const int counts : {-32768, -1, 0, 1, 371, 1000, 32767}) {
        OVWaveHeader header{};
        header.pressureCounts = static_cast<std::int16_t>(counts);
        ov::setWaveHeader(*record, header);
        // Pressure 2.288818359375 cm a count, 100 cell counts 20 cm. The hundredth of a centimetre is the unit.
        const std::int64_t wide = std::int64_t{counts} * 2288818359375LL; // 1e-12 cm
        const std::int64_t floored = floorDivide(wide - 20LL * 1000000000000LL, 10000000000LL);
        expectWithinUlp(record->sensorDepth, static_cast<long double>(floored) / 10000.0L, "depth",
                        counts);
    }
}

TEST(WaveHeader, Type3DepthIsThePressureLessTheUnroundedHeight) {
    const RecordPtr record = recordOf(3, 1.0e6F, 100);
    for (const int counts : {-32768, -1, 1, 371, 1000, 32767}) {
        OVWaveHeader header{};
        header.pressureCounts = static_cast<std::int16_t>(counts);
        header.distanceCounts = 1000;
        ov::setWaveHeader(*record, header);
        const std::int64_t heightUnits = floorDivide(1000LL * 153, 32);       // 1 / 256 cm
        const std::int64_t pressure = std::int64_t{counts} * 2288818359375LL; // 1e-12 cm
        const std::int64_t height =
            heightUnits * 1000000000000LL / 256; // exact: 1e12 is a multiple of 256
        const std::int64_t floored = floorDivide(pressure - height, 1000000000000LL);
        expectWithinUlp(record->sensorDepth, static_cast<long double>(floored) / 100.0L, "depth",
                        counts);
    }
}

// The height is narrowed only when it is stored: at this count the float would move the depth by a centimetre.
TEST(WaveHeader, Type3DepthUsesTheHeightBeforeItIsNarrowed) {
    const RecordPtr record = recordOf(3, 1.0e6F, 100);
    int differing = 0;
    for (int distance = 1; distance <= 32767; ++distance) {
        const double height =
            std::floor(750.0 / (1.0e6 * 4.0 / 255.0) * (distance * 100.0)) * 0.01 * 0.00390625;
        const auto narrowed = static_cast<double>(static_cast<float>(height));
        const std::int16_t pressure = 16384; // 37500 cm exactly
        const double wide = std::floor(37500.0 - height * 100) * 0.01;
        if (wide == std::floor(37500.0 - narrowed * 100) * 0.01) {
            continue;
        }
        ++differing;
        OVWaveHeader header{};
        header.pressureCounts = pressure;
        header.distanceCounts = static_cast<std::int16_t>(distance);
        ov::setWaveHeader(*record, header);
        ASSERT_EQ(record->sensorDepth, static_cast<float>(wide)) << distance;
    }
    EXPECT_GT(differing, 0);
}

TEST(WaveHeader, OtherTypesDepthIsThePressureLessTheCell) {
    const RecordPtr record = recordOf(2, 1.0e6F, 77); // 92.4 cm: floored to 92
    for (const int counts : {-32768, -1, 0, 1, 371, 1000, 32767}) {
        OVWaveHeader header{};
        header.pressureCounts = static_cast<std::int16_t>(counts);
        ov::setWaveHeader(*record, header);
        const std::int64_t pressure = std::int64_t{counts} * 2288818359375LL;
        const std::int64_t floored =
            floorDivide(pressure - 92LL * 1000000000000LL, 1000000000000LL);
        expectWithinUlp(record->sensorDepth, static_cast<long double>(floored) / 100.0L, "depth",
                        counts);
    }
}

TEST(WaveHeader, ANegativeCellCountIsNegative) {
    const RecordPtr record = recordOf(2, 1.0e6F, -100);
    OVWaveHeader header{};
    ov::setWaveHeader(*record, header);
    EXPECT_EQ(record->sensorDepth, 1.2F);
}

TEST(WaveHeader, CellDistanceIsTheSinglePrecisionSumOfHeightAndDepth) {
    for (const std::int32_t type : {1, 2, 3}) {
        const RecordPtr record = recordOf(type, 600000.0F);
        OVWaveHeader header{};
        header.pressureCounts = 371;
        header.distanceCounts = 333;
        ov::setWaveHeader(*record, header);
        EXPECT_EQ(record->headerDepth, record->sensorHeight + record->sensorDepth);
        EXPECT_NE(record->sensorHeight, 0.0F);
        EXPECT_NE(record->sensorDepth, 0.0F);
    }
}

TEST(WaveHeader, WithoutAnAcousticFrequencyTheDepthIsNoNumber) {
    const RecordPtr record = recordOf(2, 0.0F);
    OVWaveHeader header{};
    header.distanceCounts = 1;
    ov::setWaveHeader(*record, header);
    EXPECT_EQ(record->sensorHeight, std::numeric_limits<float>::infinity());
    EXPECT_EQ(record->sensorDepth, -std::numeric_limits<float>::infinity());
    EXPECT_TRUE(std::isnan(record->headerDepth));
}

// ---- Opening the burst

TEST(WaveHeader, OpensTheBurst) {
    for (const std::uint16_t n : {std::uint16_t{300}, std::uint16_t{1024}, std::uint16_t{2400}}) {
        const RecordPtr record = recordOf(3, 1.0e6F);
        record->readyFlag = 1;
        record->sampleCursor = 77;
        record->missingSampleCount = 5;
        record->qualityFlags = 0x0FFF;
        OVWaveHeader header{};
        header.nSamples = n;
        ov::setWaveHeader(*record, header);
        EXPECT_EQ(record->readyFlag, 0);
        EXPECT_EQ(record->sampleCursor, 0);
        EXPECT_EQ(record->missingSampleCount, 0);
        EXPECT_EQ(record->qualityFlags, 0);
    }
}

TEST(WaveHeader, KeepsTheResultsOfTheLastRun) {
    const RecordPtr record = recordOf(3, 1.0e6F);
    record->processedFlag = 1;
    record->waveParameters[OV_HM0] = 1.5F;
    record->instrumentDepth = 12.0F;
    OVWaveHeader header{};
    header.nSamples = 1024;
    ov::setWaveHeader(*record, header);
    EXPECT_EQ(record->processedFlag, 1);
    EXPECT_EQ(record->waveParameters[OV_HM0], 1.5F);
    EXPECT_EQ(record->instrumentDepth, 12.0F);
}

// Repair of a fault at the very end of a series aims at the element behind it: not at an earlier, longer burst's.
TEST(WaveHeader, ClearsTheElementsBehindTheBurstThatRepairReads) {
    const RecordPtr record = recordOf(3, 1.0e6F);
    std::fill_n(record->pressureSeries, ov::kMaxSamples, 5.0F);
    std::fill_n(record->astSeries, ov::kMaxTrack, 5.0F);
    OVWaveHeader header{};
    header.nSamples = 512;
    ov::setWaveHeader(*record, header);
    EXPECT_EQ(record->pressureSeries[511], 5.0F);
    EXPECT_EQ(record->pressureSeries[512], 0.0F);
    EXPECT_EQ(record->pressureSeries[513], 5.0F);
    EXPECT_EQ(record->astSeries[510], 5.0F);
    for (int i = 511; i < ov::kMaxTrack; ++i) {
        ASSERT_EQ(record->astSeries[i], 0.0F) << i;
    }
}

// A full pressure series is followed by the velocities, which are the samples' to fill; the track by nothing of its own.
TEST(WaveHeader, BehindAFullBurstOnlyTheNextElementIsCleared) {
    const RecordPtr record = recordOf(3, 1.0e6F);
    record->velocitySeries[0][0] = 5.0F;
    record->velocitySeries[0][1] = 6.0F;
    record->astSampleRateSeries[0] = 7.0F;
    OVWaveHeader header{};
    header.nSamples = 16384;
    ov::setWaveHeader(*record, header);
    EXPECT_EQ(record->velocitySeries[0][0], 0.0F);
    EXPECT_EQ(record->velocitySeries[0][1], 6.0F);
    EXPECT_EQ(record->astSampleRateSeries[0], 7.0F);
}

} // namespace
