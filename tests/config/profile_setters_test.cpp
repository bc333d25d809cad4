// Configuration, parameters and header of a profile instrument.
#include <cmath>
#include <cstdint>
#include <cstring>
#include <initializer_list>
#include <numbers>

#include <gtest/gtest.h>

#include "orvikbase/orvikbase.h"
#include "support/record_ptr.hpp"

namespace {

using orvik::test::makeRecord;
using orvik::test::RecordPtr;

OVProfileInstrumentConfig plainConfig() {
    OVProfileInstrumentConfig config{};
    config.instrumentType = 16;
    config.acousticFrequency = 1.0e6F;
    config.slantAngle = 25.0F;
    config.beamCount = 4;
    return config;
}

RecordPtr configuredRecord(float slant = 25.0F) {
    RecordPtr record = makeRecord();
    OVProfileInstrumentConfig config = plainConfig();
    config.slantAngle = slant;
    VELTASetInstrumentConfig_ptr(record.get(), &config);
    return record;
}

// ---- Configuration

TEST(ProfileConfig, FillsTheCommonFieldsAsThePointSetterDoes) {
    OVProfileInstrumentConfig config = plainConfig();
    config.pingsPerSample = 12;
    config.samplingRate = 4;
    config.burstSamples = 4096;
    config.attitudeMode = OV_VELOCITY_XYZ;
    for (int i = 0; i < 16; ++i) {
        config.transformMatrix[i] = static_cast<std::int16_t>(257 * i - 2000);
    }
    config.cellSizeCounts = -1;
    config.configFlags = 0x0020;
    OVInstrumentConfig common;
    std::memcpy(&common, &config, sizeof common);

    const RecordPtr profile = makeRecord();
    const RecordPtr point = makeRecord();
    EXPECT_EQ(VELTASetInstrumentConfig_ptr(profile.get(), &config), 0);
    EXPECT_EQ(OVSetInstrumentConfig_ptr(point.get(), &common), 0);
    EXPECT_EQ(profile->pingsPerSample, 12U);
    EXPECT_EQ(profile->splitEstimateFlag, 1);
    EXPECT_EQ(profile->cellSizeCounts, 0xFFFF);
    EXPECT_LT(profile->cellSize, 0.0F);
    point->beamCount = 4;
    EXPECT_EQ(std::memcmp(profile.get(), point.get(), offsetof(OVRecord, processingMethod)), 0);
}

TEST(ProfileConfig, KeepsBeamsAndLagAsGiven) {
    for (const std::int16_t beams : std::initializer_list<std::int16_t>{-3, 0, 1, 3, 4, 9}) {
        const RecordPtr record = makeRecord();
        OVProfileInstrumentConfig config = plainConfig();
        const float azimuths[4] = {0.5F, 90.25F, -170.0F, 270.0F};
        std::memcpy(config.beamAzimuth, azimuths, sizeof azimuths);
        config.beamCount = beams;
        config.lagParameter = 1.75F;
        VELTASetInstrumentConfig_ptr(record.get(), &config);
        EXPECT_EQ(std::memcmp(record->beamAzimuth, azimuths, sizeof azimuths), 0);
        EXPECT_EQ(record->beamCount, beams);
        EXPECT_EQ(record->lagParameter, 1.75F);
    }
}

TEST(ProfileConfig, TheInstrumentTypeIsTheHosts) {
    const RecordPtr record = makeRecord();
    OVProfileInstrumentConfig config = plainConfig();
    config.instrumentType = 3;
    VELTASetInstrumentConfig_ptr(record.get(), &config);
    EXPECT_EQ(record->instrumentType, 3);
}

TEST(ProfileConfig, TakesAStructureAtAnyAddress) {
    const RecordPtr record = makeRecord();
    alignas(8) unsigned char room[sizeof(OVProfileInstrumentConfig) + 1];
    OVProfileInstrumentConfig config = plainConfig();
    config.lagParameter = 0.3F;
    std::memcpy(room + 1, &config, sizeof config);
    VELTASetInstrumentConfig_ptr(record.get(),
                                 reinterpret_cast<OVProfileInstrumentConfig *>(room + 1));
    EXPECT_EQ(record->lagParameter, 0.3F);
    EXPECT_EQ(record->acousticFrequency, 1.0e6F);
}

// ---- Processing parameters

TEST(ProfileParameters, KeepTheTroughMarginAndTheChoiceOfTrack) {
    const RecordPtr record = configuredRecord();
    OVProfileProcessingParameters parameters{};
    parameters.processingMethod = 4;
    parameters.estimateMask = 31;
    parameters.freqMax = 0.45F;
    parameters.profileParamA = 87.5F;
    parameters.profileParamB = 0xFFFFFFFFU;
    EXPECT_EQ(VELTASetProcPar_ptr(record.get(), &parameters), 0);
    EXPECT_EQ(record->profileParamA, 87.5F);
    EXPECT_EQ(record->profileParamB, 0xFFFFFFFFU);
    EXPECT_EQ(record->processingMethod, 4);
    const float margin = parameters.profileParamA; // copies: the structure is packed
    const std::uint32_t choice = parameters.profileParamB;
    EXPECT_EQ(margin, 87.5F);
    EXPECT_EQ(choice, 0xFFFFFFFFU);
}

// ---- Header

struct HeaderResult {
    std::int32_t status;
    OVProfileWaveHeader header;
};

HeaderResult setHeader(OVRecord &record, float cell, float blanking, std::uint16_t samples = 1024) {
    OVProfileWaveHeader header{};
    header.nSamples = samples;
    header.directHeight = cell;
    header.directDepth = blanking;
    header.nCells = 40;
    const std::int32_t status = VELTASetWaveHeader_ptr(&record, &header);
    return {status, header};
}

// exact: one division in double precision, one rounding.
TEST(ProfileHeader, VerticalSizesAreTurnedAlongTheBeams) {
    for (const float slant : {0.0F, 20.0F, 25.0F, 60.0F}) {
        const RecordPtr record = configuredRecord(slant);
        setHeader(*record, 0.5F, 0.7F);
        const double cosine = std::cos(static_cast<double>(slant) * std::numbers::pi / 180.0);
        EXPECT_EQ(record->sensorHeight, static_cast<float>(0.5 / cosine)) << slant;
        EXPECT_EQ(record->sensorDepth, static_cast<float>(static_cast<double>(0.7F) / cosine))
            << slant;
        EXPECT_EQ(record->headerDepth, record->sensorHeight + record->sensorDepth) << slant;
    }
}

TEST(ProfileHeader, ASlantOf60DegreesDoublesThem) {
    const RecordPtr record = configuredRecord(60.0F);
    setHeader(*record, 0.5F, 0.75F);
    EXPECT_FLOAT_EQ(record->sensorHeight, 1.0F);
    EXPECT_FLOAT_EQ(record->sensorDepth, 1.5F);
    EXPECT_FLOAT_EQ(record->headerDepth, 2.5F);
}

TEST(ProfileHeader, ReturnsOneAndNotZero) {
    const RecordPtr record = configuredRecord();
    EXPECT_EQ(setHeader(*record, 0.5F, 0.5F).status, 1);
    OVProfileWaveHeader header{};
    EXPECT_EQ(VELTASetWaveHeader_ptr(nullptr, &header), -1);
    EXPECT_EQ(VELTASetWaveHeader_ptr(record.get(), nullptr), -1);
}

TEST(ProfileHeader, BurstsAbove512AreRoundedDownToAPowerOfTwo) {
    struct Row {
        std::uint16_t given, used;
    };
    constexpr Row kRows[] = {
        {0, 0},       {300, 300},   {512, 512},    {513, 512},     {1023, 512},    {1024, 1024},
        {1025, 1024}, {2047, 1024}, {2048, 2048},  {2049, 2048},   {4096, 4096},   {4097, 4096},
        {8192, 8192}, {8193, 8192}, {16383, 8192}, {16384, 16384}, {16385, 16384}, {65535, 16384}};
    const RecordPtr record = configuredRecord();
    for (const Row &row : kRows) {
        const HeaderResult result = setHeader(*record, 0.5F, 0.5F, row.given);
        EXPECT_EQ(record->burstLength, row.used) << row.given;
        EXPECT_EQ(record->burstSamples, row.used) << row.given;
        EXPECT_EQ(result.header.nSamples, row.used) << row.given;
    }
}

TEST(ProfileHeader, OpensTheBurst) {
    const RecordPtr record = configuredRecord();
    record->readyFlag = 1;
    record->sampleCursor = 77;
    record->missingSampleCount = 5;
    record->qualityFlags = OV_FLAG_TILT | OV_FLAG_WEAK_AMPLITUDE;
    setHeader(*record, 0.5F, 0.5F);
    EXPECT_EQ(record->readyFlag, 0);
    EXPECT_EQ(record->sampleCursor, 0);
    EXPECT_EQ(record->missingSampleCount, 0);
    EXPECT_EQ(record->qualityFlags, 0);
}

TEST(ProfileHeader, CopiesReadingsCellsAndDelayAndHasNoDepthOffset) {
    const RecordPtr record = configuredRecord();
    record->depthOffset = 3.0F;
    OVProfileWaveHeader header{};
    header.nSamples = 1024;
    header.heading = 123.5F;
    header.pitch = -1.5F;
    header.roll = 2.25F;
    header.depthOffset = 0.75F;
    header.nCells = 256;
    header.surfaceTimeOffset = -1250;
    VELTASetWaveHeader_ptr(record.get(), &header);
    EXPECT_EQ(record->heading, 123.5F);
    EXPECT_EQ(record->pitch, -1.5F);
    EXPECT_EQ(record->roll, 2.25F);
    EXPECT_EQ(record->depthOffset, 0.0F);
    EXPECT_EQ(record->nCells, 256U);
    EXPECT_EQ(record->surfaceTimeOffset, -1250);
}

TEST(ProfileHeader, ClearsWhatRepairAndPaddingReadPastTheBurst) {
    const RecordPtr record = configuredRecord();
    const auto spoil = [&record] {
        record->velocitySeries[0][0] = 9.0F;
        for (float *series : {record->pressureSeries, record->astSeries}) {
            for (int i = 0; i < ov::kMaxSamples; ++i) {
                series[i] = 9.0F;
            }
        }
    };
    spoil();
    setHeader(*record, 0.5F, 0.5F, 1024);
    EXPECT_EQ(record->pressureSeries[1023], 9.0F);
    EXPECT_EQ(record->pressureSeries[1024], 0.0F);
    EXPECT_EQ(record->astSeries[1022], 9.0F);
    for (int i = 1023; i < ov::kMaxTrack; ++i) {
        ASSERT_EQ(record->astSeries[i], 0.0F) << i;
    }
    EXPECT_EQ(record->velocitySeries[0][0], 9.0F);
    // A full burst's pressure is followed by the first velocity, which no profile sample writes.
    spoil();
    setHeader(*record, 0.5F, 0.5F, 16384);
    EXPECT_EQ(record->pressureSeries[16383], 9.0F);
    EXPECT_EQ(record->velocitySeries[0][0], 0.0F);
}

} // namespace
