// Records, the current record, and the library's identity.
#include <cstring>
#include <string>

#include <gtest/gtest.h>

#include "exports/current_record.hpp"
#include "orvikbase/orvikbase.h"
#include "support/record_ptr.hpp"

namespace {

using orvik::test::makeRecord;
using orvik::test::RecordPtr;

// Puts the current record back, so that the tests do not depend on their order.
class Records : public testing::Test {
protected:
    void TearDown() override { VELTASetWaveVariablesPointer(before_); }

private:
    OVRecord *before_ = ov::currentRecord;
};

// Windows tells a dynamic library that it is loaded; this program has the static one.
#if !defined(_WIN32)
TEST_F(Records, LoadingMadeARecordCurrent) { EXPECT_NE(ov::currentRecord, nullptr); }
#endif

TEST_F(Records, AnAllocatedRecordIsZeroedAndCurrent) {
    OVRecord *const record = OVAllocateVarPtr();
    ASSERT_NE(record, nullptr);
    EXPECT_EQ(ov::currentRecord, record);
    const RecordPtr zeros = makeRecord();
    EXPECT_EQ(std::memcmp(record, zeros.get(), sizeof(OVRecord)), 0);
    OVFreeVarPtr(record);
}

// The host must choose another record itself.
TEST_F(Records, FreeingTheCurrentRecordLeavesItsAddressCurrent) {
    OVRecord *const record = OVAllocateVarPtr();
    OVFreeVarPtr(record);
    EXPECT_EQ(ov::currentRecord, record);
}

TEST_F(Records, FreeingNothingDoesNothing) {
    OVRecord *const current = ov::currentRecord;
    OVFreeVarPtr(nullptr);
    EXPECT_EQ(ov::currentRecord, current);
}

TEST_F(Records, FreeingAnotherRecordLeavesTheCurrentOneUsable) {
    OVRecord *const first = OVAllocateVarPtr();
    OVRecord *const second = OVAllocateVarPtr();
    EXPECT_NE(first, second);
    OVFreeVarPtr(first);
    EXPECT_EQ(ov::currentRecord, second);
    OVWaveParameterSet parameters{};
    EXPECT_EQ(OVGetWavePar(&parameters), 0);
    OVFreeVarPtr(second);
}

TEST_F(Records, AHostsRecordBecomesCurrentUncheckedAndUncleared) {
    const RecordPtr record = makeRecord();
    record->headerValueA = 3.5F;
    VELTASetWaveVariablesPointer(record.get());
    EXPECT_EQ(ov::currentRecord, record.get());
    EXPECT_EQ(record->headerValueA, 3.5F);
    VELTASetWaveVariablesPointer(nullptr);
    EXPECT_EQ(ov::currentRecord, nullptr);
}

TEST_F(Records, TheSizeIsTheRecords) { EXPECT_EQ(VELTAGetWaveVariableNbytes(), 69003224U); }

TEST_F(Records, WithoutACurrentRecordOperationsAnswerForANullRecord) {
    VELTASetWaveVariablesPointer(nullptr);
    OVWaveParameterSet parameters{};
    EXPECT_EQ(OVGetWavePar(&parameters), -1);
    EXPECT_TRUE(OVProcess());
    EXPECT_EQ(OVProcessReturnInt(), -1);
    EXPECT_EQ(OVProcessReturnIntLV(), -1);
    EXPECT_TRUE(VELTAWaveProcess(nullptr));
}

TEST_F(Records, ProcessingWithoutABurstSaysNoAndFlagsIt) {
    const RecordPtr record = makeRecord();
    VELTASetWaveVariablesPointer(record.get());
    EXPECT_FALSE(OVProcess());
    EXPECT_EQ(OVProcessReturnInt(), 0);
    EXPECT_EQ(OVProcessReturnIntLV(), 0);
    EXPECT_FALSE(OVProcess_ptr(record.get()));
    EXPECT_EQ(OVProcessReturnInt_ptr(record.get()), 0);
    for (const float parameter : record->waveParameters) {
        EXPECT_EQ(parameter, -9.0F);
    }
    EXPECT_EQ(record->qualityFlags, OV_FLAG_NO_RESULT);
}

void hookThatMustNotRun() { ADD_FAILURE() << "the hook was called"; }

TEST_F(Records, TheHookIsKeptAndNeverCalled) {
    const RecordPtr record = makeRecord();
    VELTASetWaveVariablesPointer(record.get());
    void *const hook = reinterpret_cast<void *>(&hookThatMustNotRun);
    EXPECT_FALSE(VELTAWaveProcess(hook));
    EXPECT_EQ(ov::processingHook, hook);
    int other = 0;
    EXPECT_FALSE(VELTAWaveProcess_ptr(record.get(), &other));
    EXPECT_EQ(ov::processingHook, &other);
    EXPECT_TRUE(VELTAWaveProcess_ptr(nullptr, nullptr));
    EXPECT_EQ(ov::processingHook, nullptr);
}

// ---- Version

// `length` characters asked for; returns the buffer, which was full of x.
std::string versionBuffer(std::int16_t length) {
    char buffer[64];
    std::memset(buffer, 'x', sizeof buffer);
    EXPECT_EQ(OVGetOrvikBaseVer(buffer, length), 0);
    return std::string(buffer, sizeof buffer);
}

std::string expectedBuffer(const std::string &start) {
    return start + std::string(64 - start.size(), 'x');
}

TEST(Version, IsCopiedToTheLengthOfTheBuffer) {
    EXPECT_EQ(versionBuffer(10), expectedBuffer(std::string("4.15\0\0\0\0\0\0", 10)));
    EXPECT_EQ(versionBuffer(5), expectedBuffer(std::string("4.15\0", 5)));
    EXPECT_EQ(versionBuffer(64), std::string("4.15") + std::string(60, '\0'));
}

TEST(Version, AShortBufferHasNoTerminatingZero) {
    EXPECT_EQ(versionBuffer(4), expectedBuffer("4.15"));
    EXPECT_EQ(versionBuffer(3), expectedBuffer("4.1"));
    EXPECT_EQ(versionBuffer(1), expectedBuffer("4"));
}

TEST(Version, NoLengthCopiesNothing) {
    EXPECT_EQ(versionBuffer(0), expectedBuffer(""));
    EXPECT_EQ(versionBuffer(-1), expectedBuffer(""));
    EXPECT_EQ(versionBuffer(-32768), expectedBuffer(""));
}

TEST(Version, TheLongestBufferIsFilled) {
    const std::string filled(32767, 'x');
    std::string buffer = filled;
    EXPECT_EQ(OVGetOrvikBaseVer(buffer.data(), 32767), 0);
    EXPECT_EQ(buffer.substr(0, 4), "4.15");
    EXPECT_EQ(buffer.find_first_not_of('\0', 4), std::string::npos);
}

} // namespace
