// A host in a control loop counts on it: between the header and the last getter nothing is allocated.
#include <cstring>
#include <memory>

#include <gtest/gtest.h>

#include "allocation_counter.hpp"
#include "exports/burst_results.hpp"
#include "exports/current_record.hpp"
#include "support/record_ptr.hpp"

namespace {

using namespace orvik::test;

TEST(Allocation, TheCounterCounts) {
    const AllocationCounter counter;
    const auto something = std::make_unique<volatile int>(1);
    EXPECT_GE(counter.count(), 1U) << *something;
}

TEST(Allocation, NoneFromConfigurationToTheLastGetter) {
    for (const int instrumentType : {1, 3, 0, kProfileType}) {
        for (int method = 1; method <= 4; ++method) {
            const SyntheticBurst burst = makeSyntheticBurst({.method = method,
                                                             .instrumentType = instrumentType,
                                                             .nSamples = 512,
                                                             .faulty = true});
            const RecordPtr record = makeRecord();
            const auto host = std::make_unique<HostBuffers>();
            std::memset(static_cast<void *>(host.get()), 0, sizeof *host);
            const AllocationCounter counter;
            sendBurst(record.get(), burst);
            const bool results = runBurst(record.get(), instrumentType == kProfileType, *host);
            readResults(record.get(), *host);
            EXPECT_EQ(counter.count(), 0U) << "type " << instrumentType << ", method " << method;
            EXPECT_TRUE(results);
        }
    }
}

TEST(Allocation, NoneForTheSuvFormNorForTheFlattenedOnes) {
    const SyntheticBurst burst = makeSyntheticBurst({.method = 4, .nSamples = 512});
    const RecordPtr record = makeRecord();
    const auto output = std::make_unique<OVPreProcessOutputSUV>();
    const auto track = std::make_unique<float[]>(OV_MAX_TRACK_SAMPLES);
    OVRecord *const before = ov::currentRecord;
    VELTASetWaveVariablesPointer(record.get());
    const AllocationCounter counter;
    openBurst(record.get(), burst);
    for (const OVWaveSample &point : burst.samples) {
        OVWaveSampleSUV sample{};
        sample.valid = point.valid;
        std::memcpy(&sample.pressure, &point.pressure, sizeof point - 1);
        OVSetWaveSampleSUV(&sample);
    }
    OVPreProcessSUV(0, output.get());
    EXPECT_TRUE(OVProcess());
    OVPreProcessLV(0, track.get(), 0.0F, 0.0F, 0, 0, 0, 0);
    EXPECT_EQ(OVProcessReturnIntLV(), 1);
    EXPECT_EQ(counter.count(), 0U);
    VELTASetWaveVariablesPointer(before);
}

// Work areas of a full burst are too large for a caller's thread stack to be taken for granted.
TEST(Allocation, NoneForAFullBurst) {
    const SyntheticBurst burst = makeSyntheticBurst({.method = 4, .nSamples = 16384});
    const RecordPtr record = makeRecord();
    const auto host = std::make_unique<HostBuffers>();
    std::memset(static_cast<void *>(host.get()), 0, sizeof *host);
    const AllocationCounter counter;
    sendBurst(record.get(), burst);
    const bool results = runBurst(record.get(), false, *host);
    EXPECT_EQ(counter.count(), 0U);
    EXPECT_TRUE(results);
}

} // namespace
