// A burst's results depend on the burst alone: not on what the record went through before.
#include <cstring>
#include <memory>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "exports/burst_results.hpp"
#include "support/record_ptr.hpp"

namespace {

using namespace orvik::test;
using Bytes = std::vector<unsigned char>;

struct Case {
    const char *name;
    int method;
    int instrumentType;
    int nSamples;
    bool faulty;
};

constexpr Case kCases[] = {
    {"Method1", 1, 3, 512, false},        {"Method2", 2, 3, 512, false},
    {"Method3", 3, 3, 512, false},        {"Method4", 4, 3, 512, false},
    {"Method4Faulty", 4, 3, 1024, true},  {"Method3Type1", 3, 1, 512, true},
    {"Method2General", 2, 0, 512, true},  {"Method4OddLength", 4, 3, 301, false},
    {"ProfileMethod1", 1, 16, 512, true}, {"ProfileMethod2", 2, 16, 512, false},
    {"ProfileMethod3", 3, 16, 512, true}, {"ProfileMethod4", 4, 16, 512, false},
};

// A faulty burst ends in faults too: their repair looks behind the burst.
SyntheticBurst burstOf(const Case &c) {
    SyntheticBurst burst = makeSyntheticBurst({.method = c.method,
                                               .instrumentType = c.instrumentType,
                                               .nSamples = c.nSamples,
                                               .tilted = c.faulty,
                                               .faulty = c.faulty});
    if (c.faulty) {
        burst.samples.back().pressure = 60.0F;
        burst.samples.back().astDistance1 = 0.0F;
        burst.samples.back().astDistance2 = 0.0F;
    }
    return burst;
}

// The whole burst, and the bytes of every getter.
Bytes resultsOf(OVRecord *record, const SyntheticBurst &burst, bool expectResults = true) {
    const auto host = std::make_unique<HostBuffers>();
    std::memset(static_cast<void *>(host.get()), 0, sizeof *host);
    sendBurst(record, burst);
    const bool profile = burst.config.instrumentType == kProfileType;
    EXPECT_EQ(runBurst(record, profile, *host), expectResults);
    readResults(record, *host);
    // The rows of method 1 show the pressure with the level of the burst before.
    const bool rowsAreTheBursts = burst.parameters.processingMethod != 1 || profile;
    return resultBytes(*host, rowsAreTheBursts ? burst.header.nSamples : 0);
}

// Another burst that leaves as much as possible behind: longer, other waves, wider axes, tilted, every array filled.
void runSomethingElse(OVRecord *record, int method, int instrumentType, bool reverse) {
    SyntheticBurst other = makeSyntheticBurst({.method = method,
                                               .instrumentType = instrumentType,
                                               .nSamples = 2048,
                                               .seed = 77,
                                               .tilted = true,
                                               .faulty = true});
    other.parameters.freqMax = 0.99F;
    other.parameters.fineFreqMax = 1.99F;
    other.parameters.freqStep = 0.005F;
    other.parameters.headingOffset = 30.0F;
    other.parameters.reverseDirections = reverse ? 1 : 0;
    other.config.configFlags = 32;
    for (OVWaveSample &sample : other.samples) {
        sample.velocity[0] += 0.4F; // a mean current
        sample.amplitude[0] = 10;   // weak
    }
    resultsOf(record, other);
}

std::string nameOf(const testing::TestParamInfo<Case> &info) { return info.param.name; }

class Repeatability : public testing::TestWithParam<Case> {};

INSTANTIATE_TEST_SUITE_P(Bursts, Repeatability, testing::ValuesIn(kCases), nameOf);

// exact
TEST_P(Repeatability, TheSameBurstTwiceInARecord) {
    const SyntheticBurst burst = burstOf(GetParam());
    const RecordPtr record = makeRecord();
    const Bytes first = resultsOf(record.get(), burst);
    EXPECT_EQ(resultsOf(record.get(), burst), first);
}

// exact
TEST_P(Repeatability, AfterADifferentBurst) {
    const SyntheticBurst burst = burstOf(GetParam());
    const Bytes fresh = resultsOf(makeRecord().get(), burst);
    for (const int instrumentType : {3, kProfileType}) {
        for (int method = 1; method <= 4; ++method) {
            const RecordPtr record = makeRecord();
            runSomethingElse(record.get(), method, instrumentType, method % 2 == 0);
            EXPECT_EQ(resultsOf(record.get(), burst), fresh)
                << "after method " << method << " of instrument type " << instrumentType;
        }
    }
}

// exact: of a burst with too few samples nothing remains either, and it shows nothing of the burst before.
TEST_P(Repeatability, RejectedBurstsLeaveNothingAndShowNothing) {
    const SyntheticBurst burst = burstOf(GetParam());
    SyntheticBurst poor = burst;
    poor.samples.resize(poor.samples.size() / 2);
    const Bytes fresh = resultsOf(makeRecord().get(), burst);
    const Bytes freshPoor = resultsOf(makeRecord().get(), poor, false);
    const RecordPtr record = makeRecord();
    EXPECT_EQ(resultsOf(record.get(), burst), fresh);
    EXPECT_EQ(resultsOf(record.get(), poor, false), freshPoor);
    EXPECT_EQ(resultsOf(record.get(), burst), fresh);
}

// exact: a burst that lost its end is padded from itself alone, and its first sample may be missing.
TEST_P(Repeatability, PaddedBurstsTakeNothingFromAnEarlierOne) {
    SyntheticBurst shortened = burstOf(GetParam());
    shortened.samples.resize(shortened.samples.size() * 97 / 100);
    shortened.samples[0].valid = 0;
    shortened.samples[40].valid = 0;
    for (OVWaveSample &sample : shortened.samples) {
        sample.amplitude[3] = 0;
    }
    const bool results = !GetParam().faulty || GetParam().nSamples > 100;
    const Bytes fresh = resultsOf(makeRecord().get(), shortened, results);
    const RecordPtr record = makeRecord();
    runSomethingElse(record.get(), 4, GetParam().instrumentType, false);
    EXPECT_EQ(resultsOf(record.get(), shortened, results), fresh);
}

// exact: processing is repeatable without sending the burst again.
TEST_P(Repeatability, ProcessingTwiceWithGettersInBetween) {
    const SyntheticBurst burst = burstOf(GetParam());
    const bool profile = burst.config.instrumentType == kProfileType;
    const RecordPtr record = makeRecord();
    const auto host = std::make_unique<HostBuffers>();
    std::memset(static_cast<void *>(host.get()), 0, sizeof *host);
    sendBurst(record.get(), burst);
    ASSERT_TRUE(runBurst(record.get(), profile, *host));
    readResults(record.get(), *host);
    const Bytes first = resultBytes(*host, 0);
    ASSERT_TRUE(OVProcess_ptr(record.get()));
    readResults(record.get(), *host);
    EXPECT_EQ(resultBytes(*host, 0), first);
}

// exact: other parameters in between leave no trace.
TEST_P(Repeatability, ProcessingWithOtherParametersInBetween) {
    const SyntheticBurst burst = burstOf(GetParam());
    const bool profile = burst.config.instrumentType == kProfileType;
    const RecordPtr record = makeRecord();
    const auto host = std::make_unique<HostBuffers>();
    std::memset(static_cast<void *>(host.get()), 0, sizeof *host);
    sendBurst(record.get(), burst);
    ASSERT_TRUE(runBurst(record.get(), profile, *host));
    readResults(record.get(), *host);
    const Bytes first = resultBytes(*host, 0);

    OVProcessingParameters other = burst.parameters;
    other.processingMethod = burst.parameters.processingMethod == 3 ? 1 : 3;
    other.directionalInputMode = 1;
    other.estimateMask = 7;
    other.freqMax = 0.7F;
    ASSERT_EQ(OVSetProcPar_ptr(record.get(), &other), 0);
    ASSERT_TRUE(OVProcess_ptr(record.get()));
    OVProcessingParameters same = burst.parameters;
    if (profile) {
        same.profileParamA = 90.0F;
    }
    ASSERT_EQ(OVSetProcPar_ptr(record.get(), &same), 0);
    ASSERT_TRUE(OVProcess_ptr(record.get()));
    readResults(record.get(), *host);
    EXPECT_EQ(resultBytes(*host, 0), first);
}

} // namespace
