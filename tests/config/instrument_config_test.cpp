#include "config/instrument_config.hpp"

#include <algorithm>
#include <cmath>
#include <cstring>
#include <iterator>
#include <limits>

#include <gtest/gtest.h>

#include "support/record_ptr.hpp"

namespace {

using orvik::test::makeRecord;
using orvik::test::RecordPtr;

OVInstrumentConfig plainConfig() {
    OVInstrumentConfig config{};
    config.instrumentType = 3;
    config.acousticFrequency = 1.0e6F;
    config.cellSizeCounts = 100;
    return config;
}

float cellSizeOf(std::int32_t type, float acousticFrequency, std::int16_t counts) {
    const RecordPtr record = makeRecord();
    OVInstrumentConfig config = plainConfig();
    config.instrumentType = type;
    config.acousticFrequency = acousticFrequency;
    config.cellSizeCounts = counts;
    ov::setInstrumentConfig(*record, config);
    return record->cellSize;
}

TEST(InstrumentConfig, CopiesEveryField) {
    const RecordPtr record = makeRecord();
    OVInstrumentConfig config{};
    config.pingsPerSample = 4000000000U;
    config.samplingRate = -4;
    config.burstSamples = 3000000000U;
    config.acousticFrequency = 600000.0F;
    config.slantAngle = 25.5F;
    config.instrumentType = 3;
    config.attitudeMode = OV_VELOCITY_BEAM;
    for (int i = 0; i < 16; ++i) {
        config.transformMatrix[i] = static_cast<std::int16_t>(i % 2 == 0 ? 1000 * i : -1000 * i);
    }
    config.cellSizeCounts = 77;
    ov::setInstrumentConfig(*record, config);
    EXPECT_EQ(record->pingsPerSample, 4000000000U);
    EXPECT_EQ(record->samplingRate, -4);
    EXPECT_EQ(record->burstSamples, 3000000000U);
    EXPECT_EQ(record->acousticFrequency, 600000.0F);
    EXPECT_EQ(record->slantAngle, 25.5F);
    EXPECT_EQ(record->instrumentType, 3);
    EXPECT_EQ(record->attitudeMode, OV_VELOCITY_BEAM);
    EXPECT_EQ(std::memcmp(record->transformMatrix, config.transformMatrix, 32), 0);
    EXPECT_EQ(record->cellSizeCounts, 77);
}

// exact: 16 periods of a 6 MHz clock at 750 m/s are 0.2 cm.
TEST(InstrumentConfig, Type1CountsAreFifthsOfACentimetreWhateverTheFrequency) {
    for (const float frequency : {0.0F, 400000.0F, 1.0e6F, 6.0e6F}) {
        EXPECT_EQ(cellSizeOf(1, frequency, 100), 20.0F) << frequency;
    }
    EXPECT_EQ(cellSizeOf(1, 1.0e6F, 32767), 6553.4F);
}

// exact: 16 acoustic periods at 750 m/s are 1.2 cm at 1 MHz.
TEST(InstrumentConfig, OtherTypesCountSixteenAcousticPeriods) {
    EXPECT_EQ(cellSizeOf(3, 1.0e6F, 100), 120.0F);
    EXPECT_EQ(cellSizeOf(3, 2.0e6F, 100), 60.0F);
    EXPECT_EQ(cellSizeOf(16, 1.0e6F, 100), 120.0F);
    EXPECT_EQ(cellSizeOf(0, 2.0e6F, 100), 60.0F);
    EXPECT_EQ(cellSizeOf(-1, 2.0e6F, 100), 60.0F);
}

// ulp: one rounding to single precision at the end; frequencies that single precision does not hold exactly included.
TEST(InstrumentConfig, CellSizeIsRoundedOnce) {
    for (const float frequency : {250000.0F, 400000.0F, 600000.0F, 1234567.0F, 2.0e6F}) {
        for (const std::int16_t counts :
             {std::int16_t{1}, std::int16_t{7}, std::int16_t{333}, std::int16_t{-12345}}) {
            const long double exact = 750.0L * 16.0L * 100.0L * static_cast<long double>(counts) /
                                      static_cast<long double>(frequency);
            const float size = cellSizeOf(3, frequency, counts);
            EXPECT_NEAR(size, static_cast<float>(exact),
                        1.0e-7 * std::abs(static_cast<double>(exact)))
                << frequency << ' ' << counts;
        }
    }
}

TEST(InstrumentConfig, ACountOfAllBitsSetIsMinusOne) {
    const RecordPtr record = makeRecord();
    OVInstrumentConfig config = plainConfig();
    config.cellSizeCounts = -1;
    ov::setInstrumentConfig(*record, config);
    EXPECT_EQ(record->cellSizeCounts, 0xFFFF);
    EXPECT_EQ(record->cellSize, -1.2F);
    EXPECT_EQ(cellSizeOf(1, 0.0F, -1), -0.2F);
    EXPECT_EQ(cellSizeOf(1, 0.0F, -32768), -6553.6F);
}

TEST(InstrumentConfig, WithoutAnAcousticFrequencyTheCellIsInfinite) {
    EXPECT_EQ(cellSizeOf(3, 0.0F, 1), std::numeric_limits<float>::infinity());
    EXPECT_EQ(cellSizeOf(3, 0.0F, -1), -std::numeric_limits<float>::infinity());
    EXPECT_TRUE(std::isnan(cellSizeOf(3, 0.0F, 0)));
    EXPECT_TRUE(std::isnan(cellSizeOf(3, std::nanf(""), 100)));
    EXPECT_EQ(cellSizeOf(3, std::numeric_limits<float>::infinity(), 100), 0.0F);
}

TEST(InstrumentConfig, OnlyBit5OfTheOptionsAsksForTwoEstimates) {
    const RecordPtr record = makeRecord();
    OVInstrumentConfig config = plainConfig();
    for (unsigned bit = 0; bit < 16; ++bit) {
        config.configFlags = static_cast<std::uint16_t>(1U << bit);
        ov::setInstrumentConfig(*record, config);
        EXPECT_EQ(record->splitEstimateFlag, bit == 5 ? 1 : 0) << "bit " << bit;
    }
    config.configFlags = 0xFFFF;
    ov::setInstrumentConfig(*record, config);
    EXPECT_EQ(record->splitEstimateFlag, 1);
    config.configFlags = 0xFFDF;
    ov::setInstrumentConfig(*record, config);
    EXPECT_EQ(record->splitEstimateFlag, 0);
}

TEST(InstrumentConfig, MayComeAtAnyTimeAndClearsNoResult) {
    const RecordPtr record = makeRecord();
    record->readyFlag = 1;
    record->processedFlag = 1;
    record->waveParameters[OV_HM0] = 1.5F;
    record->burstLength = 1024;
    record->sampleCursor = 9;
    ov::setInstrumentConfig(*record, plainConfig());
    EXPECT_EQ(record->readyFlag, 1);
    EXPECT_EQ(record->processedFlag, 1);
    EXPECT_EQ(record->waveParameters[OV_HM0], 1.5F);
    EXPECT_EQ(record->burstLength, 1024);
    EXPECT_EQ(record->sampleCursor, 9);
}

} // namespace
