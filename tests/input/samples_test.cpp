#include "input/samples.hpp"

#include <cstring>
#include <limits>
#include <type_traits>

#include <gtest/gtest.h>

#include "support/record_ptr.hpp"

namespace {

using orvik::test::makeRecord;
using orvik::test::RecordPtr;

constexpr float kStale = -77.5F; // what an earlier burst left behind

RecordPtr openRecord(int burstLength) {
    RecordPtr record = makeRecord();
    record->burstLength = burstLength;
    return record;
}

// Sample number `at`, every field its own value.
OVWaveSample numberedSample(int at, std::uint8_t valid = 1) {
    const auto base = static_cast<float>(at) * 10.0F;
    OVWaveSample sample{};
    sample.valid = valid;
    sample.pressure = base + 1.0F;
    sample.astDistance1 = base + 2.0F;
    sample.velocity[0] = base + 3.0F;
    sample.velocity[1] = base + 4.0F;
    sample.velocity[2] = base + 5.0F;
    sample.astDistance2 = base + 6.0F;
    for (int beam = 0; beam < 4; ++beam) {
        sample.amplitude[beam] = 100;
    }
    return sample;
}

OVWaveSampleSUV numberedSuv(int at, std::uint8_t valid = 1) {
    const OVWaveSample point = numberedSample(at, valid);
    OVWaveSampleSUV sample{};
    sample.valid = point.valid;
    sample.spare = 12345.0F;
    sample.suvChannel1 = static_cast<float>(at) * 10.0F + 7.0F;
    sample.suvChannel2 = static_cast<float>(at) * 10.0F + 8.0F;
    sample.pressure = point.pressure;
    sample.astDistance1 = point.astDistance1;
    std::memcpy(sample.velocity, point.velocity, sizeof sample.velocity);
    sample.astDistance2 = point.astDistance2;
    std::memcpy(sample.amplitude, point.amplitude, sizeof sample.amplitude);
    return sample;
}

// What both forms share runs once for each of them.
struct PointForm {
    static OVWaveSample make(int at, std::uint8_t valid) { return numberedSample(at, valid); }
    static void store(OVRecord &rec, OVWaveSample &sample) { ov::storeSample(rec, sample); }
};
struct SuvForm {
    static OVWaveSampleSUV make(int at, std::uint8_t valid) { return numberedSuv(at, valid); }
    static void store(OVRecord &rec, OVWaveSampleSUV &sample) { ov::storeSampleSuv(rec, sample); }
};

template <class Form> class SampleForms : public testing::Test {
protected:
    static void send(OVRecord &rec, int at, bool valid = true) {
        auto sample = Form::make(at, valid ? 1 : 0);
        Form::store(rec, sample);
        EXPECT_EQ(sample.valid, 1); // reads 1 afterwards, also when it was 0
    }
};
using Forms = testing::Types<PointForm, SuvForm>;
TYPED_TEST_SUITE(SampleForms, Forms);

void expectSampleAt(const OVRecord &rec, int i, int number) {
    const auto base = static_cast<float>(number) * 10.0F;
    EXPECT_EQ(rec.pressureSeries[i], base + 1.0F) << i;
    EXPECT_EQ(rec.velocitySeries[0][i], base + 3.0F) << i;
    EXPECT_EQ(rec.velocitySeries[1][i], base + 4.0F) << i;
    EXPECT_EQ(rec.velocitySeries[2][i], base + 5.0F) << i;
    EXPECT_EQ(rec.astDistance2Series[i], base + 6.0F) << i;
    EXPECT_EQ(rec.astSeries[2 * i], base + 2.0F) << i;
    EXPECT_EQ(rec.astSeries[2 * i + 1], base + 6.0F) << i;
}

void expectZeroAt(const OVRecord &rec, int i) {
    EXPECT_EQ(rec.pressureSeries[i], 0.0F);
    for (const auto &velocity : rec.velocitySeries) {
        EXPECT_EQ(velocity[i], 0.0F);
    }
    EXPECT_EQ(rec.astDistance2Series[i], 0.0F);
    EXPECT_EQ(rec.astSeries[2 * i], 0.0F);
    EXPECT_EQ(rec.astSeries[2 * i + 1], 0.0F);
}

void makeStaleAt(OVRecord &rec, int i) {
    rec.pressureSeries[i] = kStale;
    for (auto &velocity : rec.velocitySeries) {
        velocity[i] = kStale;
    }
    rec.astDistance2Series[i] = kStale;
    rec.astSeries[2 * i] = kStale;
    rec.astSeries[2 * i + 1] = kStale;
    rec.astSampleRateSeries[i] = kStale;
    rec.suvChannel1Series[i] = kStale;
    rec.suvChannel2Series[i] = kStale;
}

TYPED_TEST(SampleForms, StoresEachSampleAtTheCursor) {
    const RecordPtr record = openRecord(4);
    for (int i = 0; i < 4; ++i) {
        this->send(*record, i);
        EXPECT_EQ(record->sampleCursor, i + 1);
    }
    for (int i = 0; i < 4; ++i) {
        expectSampleAt(*record, i, i);
    }
    EXPECT_EQ(record->missingSampleCount, 0);
    EXPECT_EQ(record->qualityFlags, 0);
}

TYPED_TEST(SampleForms, TheSampleRateTrackComesFromTheEvenSamples) {
    const RecordPtr record = openRecord(4);
    for (int i = 0; i < 4; ++i) {
        this->send(*record, i);
    }
    EXPECT_EQ(record->astSampleRateSeries[0], 2.0F);
    EXPECT_EQ(record->astSampleRateSeries[1], 6.0F); // the second distance of sample 0
    EXPECT_EQ(record->astSampleRateSeries[2], 22.0F);
    EXPECT_EQ(record->astSampleRateSeries[3], 26.0F);
}

TYPED_TEST(SampleForms, AMissingFirstSampleReadsZero) {
    const RecordPtr record = openRecord(4);
    makeStaleAt(*record, 0);
    record->missingSampleCount = 3;
    this->send(*record, 0, false);
    expectZeroAt(*record, 0);
    EXPECT_EQ(record->missingSampleCount, 4);
    EXPECT_EQ(record->sampleCursor, 1);
}

TYPED_TEST(SampleForms, MissingSamplesRepeatTheLastGoodOne) {
    const RecordPtr record = openRecord(8);
    this->send(*record, 0);
    this->send(*record, 1);
    for (int i = 2; i < 5; ++i) {
        makeStaleAt(*record, i);
        this->send(*record, i, false);
    }
    this->send(*record, 5);
    for (int i = 1; i < 5; ++i) {
        expectSampleAt(*record, i, 1);
    }
    expectSampleAt(*record, 5, 5);
    EXPECT_EQ(record->missingSampleCount, 3);
}

TYPED_TEST(SampleForms, AMissingSampleLeavesTheSampleRateTrackAlone) {
    const RecordPtr record = openRecord(8);
    for (int i = 0; i < 8; ++i) {
        makeStaleAt(*record, i);
    }
    this->send(*record, 0);
    this->send(*record, 1);
    this->send(*record, 2, false);
    this->send(*record, 3); // odd: writes nothing there either
    EXPECT_EQ(record->astSampleRateSeries[1], 6.0F);
    EXPECT_EQ(record->astSampleRateSeries[2], kStale);
    EXPECT_EQ(record->astSampleRateSeries[3], kStale);
}

TYPED_TEST(SampleForms, AnyValidByteButZeroMeansAGoodSample) {
    const RecordPtr record = openRecord(4);
    auto sample = TypeParam::make(0, 255);
    TypeParam::store(*record, sample);
    expectSampleAt(*record, 0, 0);
    EXPECT_EQ(record->missingSampleCount, 0);
    EXPECT_EQ(sample.valid, 1);
}

TYPED_TEST(SampleForms, TheLastPlaceOfAFullBurstIsUsable) {
    const RecordPtr record = openRecord(ov::kMaxSamples);
    record->sampleCursor = ov::kMaxSamples - 2;
    this->send(*record, 1);
    this->send(*record, 2);
    expectSampleAt(*record, ov::kMaxSamples - 2, 1);
    expectSampleAt(*record, ov::kMaxSamples - 1, 2);
    EXPECT_EQ(record->astSampleRateSeries[ov::kMaxSamples - 1], 16.0F);
    EXPECT_EQ(record->suvChannel1Series[0], 0.0F); // what follows astSampleRateSeries
}

TYPED_TEST(SampleForms, AnEchoOf17CountsOrLessIsWeak) {
    struct Row {
        std::uint16_t amplitude;
        bool weak;
    };
    constexpr Row kRows[] = {{0, true}, {16, true}, {17, true}, {18, false}, {65535, false}};
    for (const Row &row : kRows) {
        for (int beam = 0; beam < 4; ++beam) {
            const RecordPtr record = openRecord(4);
            record->qualityFlags = OV_FLAG_TILT;
            auto sample = TypeParam::make(0, 1);
            sample.amplitude[beam] = row.amplitude;
            TypeParam::store(*record, sample);
            const bool expected = row.weak && beam < 3; // the fourth is spare
            EXPECT_EQ(record->qualityFlags, OV_FLAG_TILT | (expected ? OV_FLAG_WEAK_AMPLITUDE : 0))
                << row.amplitude << " on beam " << beam;
        }
    }
}

TYPED_TEST(SampleForms, AMissingSamplesEchoCounts) {
    const RecordPtr record = openRecord(4);
    auto sample = TypeParam::make(0, 0);
    sample.amplitude[1] = 17;
    TypeParam::store(*record, sample);
    EXPECT_EQ(record->qualityFlags, OV_FLAG_WEAK_AMPLITUDE);
}

// Rounded once, from the double-precision sum: in single precision 10.0F + -0.1F + 0.5F is the next float up.
TYPED_TEST(SampleForms, OffsetsAreAddedInDoublePrecisionAndRoundedOnce) {
    const RecordPtr record = openRecord(4);
    record->pressureOffset = -0.1;
    record->depthOffset = 0.5F;
    auto sample = TypeParam::make(0, 1);
    sample.pressure = 10.0F;
    sample.astDistance1 = 9.0F;
    sample.astDistance2 = 9.25F;
    TypeParam::store(*record, sample);
    EXPECT_EQ(record->pressureSeries[0], 10.4F);
    EXPECT_EQ(record->astSeries[0], 9.5F);
    EXPECT_EQ(record->astSeries[1], 9.75F);
    EXPECT_EQ(record->astSampleRateSeries[0], 9.5F);
    EXPECT_EQ(record->astSampleRateSeries[1], 9.75F);
    EXPECT_EQ(record->astDistance2Series[0], 9.25F); // as given
    EXPECT_EQ(record->velocitySeries[0][0], 3.0F);   // as given

    // 2^24 + 1 - 1 + 0.5: lost one by one in single precision, kept in the sum.
    record->pressureOffset = 3.0;
    record->depthOffset = -1.0F;
    auto large = TypeParam::make(1, 1);
    large.pressure = 16777216.0F;
    TypeParam::store(*record, large);
    EXPECT_EQ(record->pressureSeries[1], 16777218.0F);
}

TYPED_TEST(SampleForms, ValuesThatAreNoNumberAreStored) {
    const RecordPtr record = openRecord(4);
    auto sample = TypeParam::make(0, 1);
    sample.pressure = std::numeric_limits<float>::quiet_NaN();
    sample.astDistance1 = std::numeric_limits<float>::infinity();
    sample.velocity[2] = -std::numeric_limits<float>::infinity();
    TypeParam::store(*record, sample);
    EXPECT_TRUE(record->pressureSeries[0] != record->pressureSeries[0]);
    EXPECT_EQ(record->astSeries[0], std::numeric_limits<float>::infinity());
    EXPECT_EQ(record->velocitySeries[2][0], -std::numeric_limits<float>::infinity());
}

// ---- Past the end the two forms differ: the standard one goes on counting and testing.

TEST(Samples, PastTheBurstNothingIsStoredButTheCursorAndTheEchoTestGoOn) {
    const RecordPtr record = openRecord(2);
    for (int i = 0; i < 2; ++i) {
        OVWaveSample sample = numberedSample(i);
        ov::storeSample(*record, sample);
    }
    makeStaleAt(*record, 2);
    OVWaveSample late = numberedSample(2, 0);
    late.amplitude[2] = 17;
    ov::storeSample(*record, late);
    EXPECT_EQ(late.valid, 1);
    EXPECT_EQ(record->sampleCursor, 3);
    EXPECT_EQ(record->missingSampleCount, 0);
    EXPECT_EQ(record->qualityFlags, OV_FLAG_WEAK_AMPLITUDE);
    EXPECT_EQ(record->pressureSeries[2], kStale);
    EXPECT_EQ(record->astSeries[4], kStale);
    EXPECT_EQ(record->astSampleRateSeries[2], kStale);
}

TEST(Samples, TheCursorStopsBeforeItOverflows) {
    const RecordPtr record = openRecord(2);
    record->sampleCursor = std::numeric_limits<std::int32_t>::max() - 1;
    for (int i = 0; i < 3; ++i) {
        OVWaveSample sample = numberedSample(0);
        ov::storeSample(*record, sample);
    }
    EXPECT_EQ(record->sampleCursor, std::numeric_limits<std::int32_t>::max());
    EXPECT_EQ(record->pressureSeries[0], 0.0F);
}

TEST(SamplesSuv, PastTheBurstNothingChangesAtAll) {
    const RecordPtr record = openRecord(1);
    OVWaveSampleSUV first = numberedSuv(0);
    ov::storeSampleSuv(*record, first);
    const RecordPtr before = makeRecord();
    std::memcpy(before.get(), record.get(), sizeof(OVRecord));
    OVWaveSampleSUV late = numberedSuv(1, 0);
    late.amplitude[0] = 0;
    ov::storeSampleSuv(*record, late);
    EXPECT_EQ(late.valid, 0);
    EXPECT_EQ(std::memcmp(before.get(), record.get(), sizeof(OVRecord)), 0);
}

// ---- The extra channels

TEST(SamplesSuv, ChannelsAreStoredHeldAndZeroedLikeTheOtherSeries) {
    const RecordPtr record = openRecord(4);
    for (int i = 0; i < 4; ++i) {
        makeStaleAt(*record, i);
    }
    const bool valid[] = {false, true, false, true};
    for (int i = 0; i < 4; ++i) {
        OVWaveSampleSUV sample = numberedSuv(i, valid[i] ? 1 : 0);
        ov::storeSampleSuv(*record, sample);
    }
    const float first[] = {0.0F, 17.0F, 17.0F, 37.0F};
    const float second[] = {0.0F, 18.0F, 18.0F, 38.0F};
    for (int i = 0; i < 4; ++i) {
        EXPECT_EQ(record->suvChannel1Series[i], first[i]) << i;
        EXPECT_EQ(record->suvChannel2Series[i], second[i]) << i;
    }
}

TEST(Samples, TheStandardFormLeavesTheExtraChannelsAlone) {
    const RecordPtr record = openRecord(2);
    makeStaleAt(*record, 0);
    OVWaveSample sample = numberedSample(0);
    ov::storeSample(*record, sample);
    EXPECT_EQ(record->suvChannel1Series[0], kStale);
    EXPECT_EQ(record->suvChannel2Series[0], kStale);
}

// exact: apart from the channels both forms leave the same record.
TEST(SamplesSuv, LeavesTheSameRecordAsTheStandardForm) {
    const RecordPtr point = openRecord(6);
    const RecordPtr suv = openRecord(6);
    for (OVRecord *record : {point.get(), suv.get()}) {
        record->pressureOffset = 0.3;
        record->depthOffset = -0.7F;
    }
    for (int i = 0; i < 6; ++i) {
        const std::uint8_t valid = i % 3 == 1 ? 0 : 1;
        OVWaveSample sample = numberedSample(i, valid);
        OVWaveSampleSUV wide = numberedSuv(i, valid);
        sample.amplitude[0] = wide.amplitude[0] = static_cast<std::uint16_t>(20 - i);
        ov::storeSample(*point, sample);
        ov::storeSampleSuv(*suv, wide);
    }
    EXPECT_NE(suv->suvChannel1Series[0], 0.0F);
    std::memset(suv->suvChannel1Series, 0, sizeof suv->suvChannel1Series);
    std::memset(suv->suvChannel2Series, 0, sizeof suv->suvChannel2Series);
    EXPECT_EQ(std::memcmp(point.get(), suv.get(), sizeof(OVRecord)), 0);
}

// ---- Mixed use with a profile instrument

void makeProfileStale(OVRecord &rec, int i) {
    for (int b = 0; b < ov::kMaxBeams; ++b) {
        for (int cell = 0; cell < ov::kMaxCells; ++cell) {
            rec.profileVelocityStore[b][i][cell] = 123;
            rec.profileAmplitudeStore[b][i][cell] = 45;
            rec.profileCorrelationStore[b][i][cell] = 67;
        }
    }
    for (auto &attitude : rec.attitudeSeries) {
        attitude[i] = kStale;
    }
}

TEST(Samples, OnAProfileInstrumentAPointSampleHasAnEmptyProfile) {
    struct Row {
        std::uint32_t cells;
        int cleared;
    };
    constexpr Row kRows[] = {{0, 1}, {1, 1}, {20, 20}, {256, 256}, {257, 256}, {0xFFFFFFFF, 256}};
    for (const Row &row : kRows) {
        const RecordPtr record = openRecord(2);
        record->instrumentType = 16;
        record->nCells = row.cells;
        makeProfileStale(*record, 0);
        OVWaveSample sample = numberedSample(0);
        ov::storeSample(*record, sample);
        for (int b = 0; b < ov::kMaxBeams; ++b) {
            for (int cell = 0; cell < ov::kMaxCells; ++cell) {
                const bool cleared = cell < row.cleared;
                ASSERT_EQ(record->profileVelocityStore[b][0][cell], cleared ? 0 : 123)
                    << row.cells << ' ' << cell;
                ASSERT_EQ(record->profileAmplitudeStore[b][0][cell], cleared ? 0 : 45)
                    << row.cells << ' ' << cell;
                ASSERT_EQ(record->profileCorrelationStore[b][0][cell], cleared ? 0 : 67)
                    << row.cells << ' ' << cell;
            }
        }
        for (const auto &attitude : record->attitudeSeries) {
            EXPECT_EQ(attitude[0], 0.0F);
        }
    }
}

// Their pages cost memory as soon as they are touched.
TEST(Samples, OtherInstrumentsNeverTouchTheProfiles) {
    const RecordPtr record = openRecord(2);
    record->instrumentType = 3;
    record->nCells = 20;
    makeProfileStale(*record, 0);
    OVWaveSample sample = numberedSample(0);
    ov::storeSample(*record, sample);
    EXPECT_EQ(record->profileVelocityStore[0][0][0], 123);
    EXPECT_EQ(record->profileCorrelationStore[3][0][19], 67);
    EXPECT_EQ(record->attitudeSeries[0][0], kStale);
}

} // namespace
