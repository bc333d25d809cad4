#include "input/profile_samples.hpp"

#include <cstdint>
#include <cstring>
#include <memory>

#include <gtest/gtest.h>

#include "input/samples.hpp"
#include "orvikbase/orvikbase.h"
#include "support/record_ptr.hpp"

namespace {

using orvik::test::makeRecord;
using orvik::test::RecordPtr;

constexpr std::uint32_t kCells = 20;

RecordPtr openRecord(std::uint32_t cells = kCells, int burstLength = 16) {
    RecordPtr record = makeRecord();
    record->instrumentType = 16;
    record->burstLength = burstLength;
    record->nCells = cells;
    return record;
}

std::int16_t velocityOf(int at, int beam, int cell) {
    return static_cast<std::int16_t>(1000 * at - 300 * beam + cell - 128);
}
std::uint8_t amplitudeOf(int at, int beam, int cell) {
    return static_cast<std::uint8_t>(50 * at + 7 * beam + cell);
}
std::uint8_t correlationOf(int at, int beam, int cell) {
    return static_cast<std::uint8_t>(200 - 20 * at - 3 * beam - cell);
}

// Sample number `at`, every field its own value.
std::unique_ptr<OVWaveSampleProfile> numberedSample(int at) {
    auto sample = std::make_unique<OVWaveSampleProfile>();
    sample->valid = 1;
    sample->pressure = 10.0F + static_cast<float>(at);
    sample->astDistance1 = 20.0F + static_cast<float>(at);
    sample->astDistance2 = 30.0F + static_cast<float>(at);
    for (int b = 0; b < 4; ++b) {
        for (int c = 0; c < OV_MAX_CELLS; ++c) {
            sample->profileVelocity[b][c] = velocityOf(at, b, c);
            sample->profileAmplitude[b][c] = amplitudeOf(at, b, c);
            sample->profileCorrelation[b][c] = correlationOf(at, b, c);
        }
    }
    for (int a = 0; a < 3; ++a) {
        sample->attitude[a] = static_cast<float>(100 * a + at) + 0.5F;
    }
    return sample;
}

void send(OVRecord &record, int at, bool valid = true) {
    const auto sample = numberedSample(at);
    sample->valid = valid ? 1 : 0;
    EXPECT_EQ(VELTASetWaveSampleProfile_ptr(&record, sample.get()), 0);
    EXPECT_EQ(sample->valid, 1); // reads 1 afterwards, also when it was 0
}

void expectProfileAt(const OVRecord &record, int i, int number, int cells) {
    for (int b = 0; b < 4; ++b) {
        for (int c = 0; c < cells; ++c) {
            ASSERT_EQ(record.profileVelocityStore[b][i][c], velocityOf(number, b, c))
                << b << ' ' << c;
            ASSERT_EQ(record.profileAmplitudeStore[b][i][c], amplitudeOf(number, b, c))
                << b << ' ' << c;
            ASSERT_EQ(record.profileCorrelationStore[b][i][c], correlationOf(number, b, c))
                << b << ' ' << c;
        }
    }
    for (int a = 0; a < 3; ++a) {
        EXPECT_EQ(record.attitudeSeries[a][i], static_cast<float>(100 * a + number) + 0.5F);
    }
}

// Marks everything a sample writes, so that a value left alone shows.
void spoil(OVRecord &record, int i, int cells) {
    for (float *series : {record.pressureSeries, record.astSeries, record.astSampleRateSeries}) {
        series[i] = -77.5F;
    }
    for (int b = 0; b < 4; ++b) {
        for (int c = 0; c < cells; ++c) {
            record.profileVelocityStore[b][i][c] = -777;
            record.profileAmplitudeStore[b][i][c] = 77;
            record.profileCorrelationStore[b][i][c] = 77;
        }
    }
    for (auto &attitude : record.attitudeSeries) {
        attitude[i] = -77.5F;
    }
}

void expectZeroAt(const OVRecord &record, int i, int cells) {
    EXPECT_EQ(record.pressureSeries[i], 0.0F);
    EXPECT_EQ(record.astSeries[i], 0.0F);
    EXPECT_EQ(record.astSampleRateSeries[i], 0.0F);
    for (int b = 0; b < 4; ++b) {
        for (int c = 0; c < cells; ++c) {
            ASSERT_EQ(record.profileVelocityStore[b][i][c], 0);
            ASSERT_EQ(record.profileAmplitudeStore[b][i][c], 0);
            ASSERT_EQ(record.profileCorrelationStore[b][i][c], 0);
        }
    }
    for (const auto &attitude : record.attitudeSeries) {
        EXPECT_EQ(attitude[i], 0.0F);
    }
}

TEST(ProfileSamples, TheLayoutIsThatOfTheInstrument) {
    EXPECT_EQ(sizeof(OVWaveSampleProfile), 4123U);
    EXPECT_EQ(offsetof(OVWaveSampleProfile, pressure), 3U);
    EXPECT_EQ(offsetof(OVWaveSampleProfile, astDistance1), 7U);
    EXPECT_EQ(offsetof(OVWaveSampleProfile, astDistance2), 11U);
    EXPECT_EQ(offsetof(OVWaveSampleProfile, profileVelocity), 15U);
    EXPECT_EQ(offsetof(OVWaveSampleProfile, profileAmplitude), 2063U);
    EXPECT_EQ(offsetof(OVWaveSampleProfile, profileCorrelation), 3087U);
    EXPECT_EQ(offsetof(OVWaveSampleProfile, attitude), 4111U);
}

TEST(ProfileSamples, StoreEveryCellInUseOfEveryBeam) {
    const RecordPtr record = openRecord();
    spoil(*record, 1, static_cast<int>(kCells) + 1);
    send(*record, 0);
    send(*record, 1);
    expectProfileAt(*record, 0, 0, kCells);
    expectProfileAt(*record, 1, 1, kCells);
    EXPECT_EQ(record->profileVelocityStore[3][1][kCells], -777); // past the cells in use: untouched
    EXPECT_EQ(record->profileCorrelationStore[0][1][kCells], 77);
    EXPECT_EQ(record->sampleCursor, 2);
    EXPECT_EQ(record->missingSampleCount, 0);
}

TEST(ProfileSamples, MoreCellsThanThereAreCountAsAllOfThem) {
    for (const std::uint32_t cells : {255U, 256U, 257U, 0xFFFFFFFFU}) {
        const RecordPtr record = openRecord(cells);
        send(*record, 2);
        expectProfileAt(*record, 0, 2, cells < 256U ? 255 : 256);
        EXPECT_EQ(record->profileVelocityStore[0][1][0], 0); // the next sample's row
        EXPECT_EQ(record->profileVelocityStore[0][0][255],
                  cells < 256U ? 0 : velocityOf(2, 0, 255));
    }
}

TEST(ProfileSamples, WithoutCellsTheFirstOneReadsZero) {
    const RecordPtr record = openRecord(0);
    spoil(*record, 0, 2);
    send(*record, 3);
    EXPECT_EQ(record->profileVelocityStore[2][0][0], 0);
    EXPECT_EQ(record->profileCorrelationStore[2][0][0], 0);
    EXPECT_EQ(record->profileVelocityStore[2][0][1], -777);
    EXPECT_EQ(record->attitudeSeries[1][0], 103.5F);
}

TEST(ProfileSamples, TheTrackIsSingleRateAndTheHostChoosesWhichDistance) {
    for (const std::uint32_t choice : {0U, 1U, 0x80000000U}) {
        const RecordPtr record = openRecord();
        record->depthOffset = 0.25F;
        record->profileParamB = choice;
        for (int at = 0; at < 3; ++at) {
            send(*record, at);
            const float n = static_cast<float>(at);
            EXPECT_EQ(record->astSeries[at], (choice == 0 ? 20.0F : 30.0F) + n + 0.25F);
            EXPECT_EQ(record->astSampleRateSeries[at], 30.0F + n + 0.25F);
        }
        EXPECT_EQ(record->astSeries[3], 0.0F);
    }
}

// exact: the sum is formed in double precision and rounded once.
TEST(ProfileSamples, PressureTakesBothOffsetsInOneRounding) {
    const RecordPtr record = openRecord();
    record->pressureOffset = -0.1;
    record->depthOffset = 0.5F;
    send(*record, 0);
    EXPECT_EQ(record->pressureSeries[0], static_cast<float>(10.0 - 0.1 + 0.5));
}

TEST(ProfileSamples, AMissingFirstSampleReadsZeroThroughout) {
    const RecordPtr record = openRecord();
    spoil(*record, 0, kCells);
    send(*record, 4, false);
    expectZeroAt(*record, 0, kCells);
    EXPECT_EQ(record->missingSampleCount, 1);
    EXPECT_EQ(record->sampleCursor, 1);
}

TEST(ProfileSamples, MissingSamplesRepeatTheLastGoodOne) {
    const RecordPtr record = openRecord();
    record->depthOffset = 0.5F;
    for (int i = 0; i < 5; ++i) {
        spoil(*record, i, kCells);
    }
    send(*record, 1);
    for (int at = 2; at < 5; ++at) {
        send(*record, at, false);
    }
    for (int i = 0; i < 4; ++i) {
        expectProfileAt(*record, i, 1, kCells);
        EXPECT_EQ(record->pressureSeries[i], 11.5F);
        EXPECT_EQ(record->astSeries[i], 21.5F);
        EXPECT_EQ(record->astSampleRateSeries[i], 31.5F);
    }
    EXPECT_EQ(record->missingSampleCount, 3);
    EXPECT_EQ(record->pressureSeries[4], -77.5F);
}

TEST(ProfileSamples, PastTheBurstNothingChangesNotEvenTheValidityByte) {
    const RecordPtr record = openRecord(kCells, 2);
    send(*record, 0);
    send(*record, 1);
    const auto sample = numberedSample(5);
    sample->valid = 0;
    EXPECT_EQ(VELTASetWaveSampleProfile_ptr(record.get(), sample.get()), 0);
    EXPECT_EQ(sample->valid, 0);
    EXPECT_EQ(record->sampleCursor, 2);
    EXPECT_EQ(record->missingSampleCount, 0);
    EXPECT_EQ(record->pressureSeries[2], 0.0F);
    EXPECT_EQ(record->profileVelocityStore[0][2][0], 0);
}

TEST(ProfileSamples, WeakEchoesRaiseNoFlag) {
    const RecordPtr record = openRecord();
    const auto sample = numberedSample(0);
    std::memset(sample->profileAmplitude, 0, sizeof sample->profileAmplitude);
    VELTASetWaveSampleProfile_ptr(record.get(), sample.get());
    EXPECT_EQ(record->qualityFlags, 0);
}

TEST(ProfileSamples, TakeAStructureAtAnyAddress) {
    const RecordPtr record = openRecord();
    const auto sample = numberedSample(3);
    const auto room = std::make_unique<unsigned char[]>(sizeof(OVWaveSampleProfile) + 3);
    std::memcpy(room.get() + 3, sample.get(), sizeof(OVWaveSampleProfile));
    VELTASetWaveSampleProfile_ptr(record.get(),
                                  reinterpret_cast<OVWaveSampleProfile *>(room.get() + 3));
    expectProfileAt(*record, 0, 3, kCells);
    EXPECT_EQ(record->pressureSeries[0], 13.0F);
}

TEST(ProfileSamples, APointSampleOnAProfileInstrumentShowsNoEarlierProfile) {
    const RecordPtr record = openRecord();
    spoil(*record, 0, kCells);
    OVWaveSample point{};
    point.valid = 1;
    ov::storeSample(*record, point);
    expectZeroAt(*record, 0, kCells);
}

TEST(ProfileSamples, ANullRecordOrSampleIsRefused) {
    const RecordPtr record = openRecord();
    const auto sample = numberedSample(0);
    sample->valid = 0;
    EXPECT_EQ(VELTASetWaveSampleProfile_ptr(nullptr, sample.get()), -1);
    EXPECT_EQ(sample->valid, 0);
    EXPECT_EQ(VELTASetWaveSampleProfile_ptr(record.get(), nullptr), -1);
    EXPECT_EQ(record->sampleCursor, 0);
}

} // namespace
