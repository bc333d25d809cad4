// Calls out of order: whatever a host does, the library stays inside its memory and says when there is no result.
#include <algorithm>
#include <bit>
#include <cstring>
#include <iterator>
#include <limits>
#include <random>

#include <gtest/gtest.h>

#include "exports/hostile_host.hpp"

namespace {

using namespace orvik::test;

constexpr float kNan = std::numeric_limits<float>::quiet_NaN();
constexpr float kInfinity = std::numeric_limits<float>::infinity();
constexpr float kHuge = std::numeric_limits<float>::max();
constexpr std::int32_t kIntMin = std::numeric_limits<std::int32_t>::min();
constexpr std::int32_t kIntMax = std::numeric_limits<std::int32_t>::max();

TEST_F(HostileBurst, GettersOnAFreshRecord) {
    readEverything(record(), host());
    EXPECT_EQ(+host().results->qualityFlags, OV_FLAG_NO_RESULT);
}

TEST_F(HostileBurst, ProcessingBeforeAnything) {
    EXPECT_FALSE(process());
    OVPreProcess_ptr(record(), 0, host().preProcess.get());
    process();
    VELTAPreProcess_ptr(record(), 0, host().preProcess.get());
    process();
    OVPreProcessSUV_ptr(record(), 0, host().preProcessSuv.get());
    process();
}

TEST_F(HostileBurst, SamplesWithoutAHeaderAreDropped) {
    const SyntheticBurst burst = smallBurst(4);
    OVSetInstrumentConfig_ptr(record(), &burst.config);
    sendSamples(record(), burst);
    EXPECT_EQ(record()->pressureSeries[0], 0.0F);
    EXPECT_EQ(record()->sampleCursor, 128);
    finish();
}

TEST_F(HostileBurst, AConfigurationAfterTheHeaderMayClaimAnyLength) {
    for (const std::uint32_t length :
         {0xFFFFFFFFU, 0x80000000U, 16385U, 16384U, 140U, 129U, 1U, 0U}) {
        for (int method = 1; method <= 4; ++method) {
            for (const int instrumentType : {3, 16}) {
                SyntheticBurst burst = smallBurst(method, instrumentType);
                openBurst(record(), burst);
                burst.config.burstSamples = length;
                OVSetInstrumentConfig_ptr(record(), &burst.config);
                sendSamples(record(), burst);
                finish();
                VELTAPreProcess_ptr(record(), 0, host().preProcess.get());
                process();
            }
        }
    }
    expectReservedZero(*record());
}

TEST_F(HostileBurst, AnotherInstrumentBetweenHeaderAndProcessing) {
    constexpr int kTypes[] = {1, 3, 16};
    for (const int first : kTypes) {
        for (const int second : kTypes) {
            for (int method = 1; method <= 4; ++method) {
                SyntheticBurst burst = smallBurst(method, first);
                openBurst(record(), burst);
                sendSamples(record(), burst);
                burst.config.instrumentType = second;
                OVSetInstrumentConfig_ptr(record(), &burst.config);
                OVPreProcess_ptr(record(), 0, host().preProcess.get());
                burst.config.instrumentType = first;
                OVSetInstrumentConfig_ptr(record(), &burst.config);
                process();
            }
        }
    }
}

TEST_F(HostileBurst, OtherParametersBetweenPreProcessingAndProcessing) {
    for (int method = 1; method <= 4; ++method) {
        for (int other = 1; other <= 4; ++other) {
            SyntheticBurst burst = smallBurst(method);
            run(burst);
            OVProcessingParameters parameters = smallBurst(other).parameters;
            parameters.nDirections = 90;
            OVSetProcPar_ptr(record(), &parameters);
            process();
        }
    }
}

TEST_F(HostileBurst, PreProcessingAgainAndAgain) {
    for (int method = 1; method <= 4; ++method) {
        run(smallBurst(method));
        for (int i = 0; i < 3; ++i) {
            finish();
        }
        OVPreProcessSUV_ptr(record(), 0, host().preProcessSuv.get());
        process();
        VELTAPreProcess_ptr(record(), 0, host().preProcess.get());
        process();
    }
}

TEST_F(HostileBurst, CoefficientsFromTheHostOfEveryKind) {
    run(smallBurst(4));
    for (const float value : {kNan, kInfinity, -kInfinity, kHuge, -9.0F, 0.0F, 1.0F, 2.0F}) {
        for (const std::int32_t count : {kIntMin, -1, 0, 1, 200, 201, kIntMax}) {
            OVFourierCoefficientSpectra &block = *host().spectra.get();
            for (int i = 0; i < OV_MAX_FREQUENCIES; ++i) {
                block.coefP[i] = value;
                block.coefQ[i] = value;
                block.coefR[i] = value;
                block.coefS[i] = value;
            }
            block.count = count;
            OVSetFourierCoefficientSpectra_ptr(record(), &block);
            OVSpectraUsedInput &input = *host().spectraUsed.get();
            for (int i = 0; i < OV_MAX_FREQUENCIES_FINE; ++i) {
                input.values[i] = value;
            }
            for (const std::uint32_t selector : {0U, 1U, 2U, 0xFFFFFFFFU}) {
                input.selector = selector;
                input.count1 = count;
                input.count2 = -count / 2;
                OVSetSpectraUsed_ptr(record(), &input);
            }
            host().band->fLow = value;
            host().band->fHigh = 0.3F;
            readEverything(record(), host());
        }
    }
    expectReservedZero(*record());
}

// ---- Any calls in any order

class Stream {
public:
    explicit Stream(std::uint32_t seed)
        : random_(seed),
          memory_(OV_RECORD_BYTES, seed % 2 == 0 ? GuardedEdge::back : GuardedEdge::front),
          usual_(smallBurst(1 + static_cast<int>(seed % 4), seed % 3 == 0 ? 16 : 3, 96)) {}

    void run(int calls) {
        // Most streams begin sensibly, so that the calls after it find something to spoil.
        if (below(4) != 0) {
            sendBurst(record(), usual_);
        }
        for (int i = 0; i < calls; ++i) {
            call();
        }
        expectReservedZero(*record());
    }

private:
    OVRecord *record() { return memory_.as<OVRecord>(); }
    std::uint32_t word() { return static_cast<std::uint32_t>(random_()); }
    std::uint32_t below(std::uint32_t n) { return word() % n; }

    float anyFloat() {
        constexpr float kValues[] = {kNan,     kInfinity, -kInfinity, kHuge, -kHuge, 0.0F,
                                     -0.0F,    1.0e-40F,  1.0F,       -1.0F, 12.0F,  1.0e30F,
                                     1.0e-30F, 0.5F,      -9.0F,      180.0F};
        if (below(8) == 0) {
            return std::bit_cast<float>(word());
        }
        return kValues[below(static_cast<std::uint32_t>(std::size(kValues)))];
    }
    std::int32_t anyInteger() {
        constexpr std::int32_t kValues[] = {kIntMin, kIntMax, -1, 0,  1,   2,   3,    4,
                                            16,      31,      32, 90, 200, 512, 65535};
        return kValues[below(static_cast<std::uint32_t>(std::size(kValues)))];
    }

    // Spoils a few bytes, floats or integers of a structure and leaves the rest.
    template <class Structure> void spoil(const Guarded<Structure> &guarded) {
        auto *const bytes = reinterpret_cast<unsigned char *>(guarded.get());
        for (std::uint32_t i = below(3); i > 0; --i) {
            const std::size_t at = word() % (sizeof(Structure) - 3);
            const std::uint32_t word = below(2) == 0 ? std::bit_cast<std::uint32_t>(anyFloat())
                                                     : static_cast<std::uint32_t>(anyInteger());
            std::memcpy(bytes + at, &word, sizeof word);
        }
    }

    void configure() {
        host_.config.set(usual_.config);
        spoil(host_.config);
        OVSetInstrumentConfig_ptr(record(), host_.config.get());
        host_.profileConfig.set(makeProfileConfig(usual_.config));
        spoil(host_.profileConfig);
        if (below(3) == 0) {
            VELTASetInstrumentConfig_ptr(record(), host_.profileConfig.get());
        }
    }

    void choose() {
        host_.parameters.set(usual_.parameters);
        host_.parameters->processingMethod = static_cast<std::int32_t>(below(6));
        host_.parameters->estimateMask = static_cast<std::int32_t>(below(32));
        spoil(host_.parameters);
        OVSetProcPar_ptr(record(), host_.parameters.get());
    }

    void open() {
        host_.header.set(below(2) == 0 ? usual_.header : makeProfileHeader(usual_.header));
        spoil(host_.header);
        // Long bursts cost time: few of them.
        if (host_.header->nSamples > 600 && below(20) != 0) {
            host_.header->nSamples = static_cast<std::uint16_t>(below(200));
        }
        if (below(2) == 0) {
            OVSetWaveHeader_ptr(record(), host_.header.get());
        } else {
            VELTASetWaveHeader_ptr(record(), host_.header.get());
        }
    }

    void sample() {
        const std::uint32_t form = below(4);
        const auto wanted = static_cast<std::uint32_t>(std::max(record()->burstLength, 0));
        const std::uint32_t count = wanted + 5 - below(std::min(wanted, 20U) + 6);
        for (std::uint32_t i = 0; i < count; ++i) {
            const OVWaveSample &point = usual_.samples[i % usual_.samples.size()];
            const bool spoiled = below(50) == 0;
            if (form == 0) {
                host_.profileSample.set(makeProfileSample(point));
                spoiled ? spoil(host_.profileSample) : void();
                VELTASetWaveSampleProfile_ptr(record(), host_.profileSample.get());
            } else if (form == 1) {
                std::memcpy(&host_.sampleSuv->pressure, &point.pressure, sizeof point - 1);
                host_.sampleSuv->valid = 1;
                spoiled ? spoil(host_.sampleSuv) : void();
                OVSetWaveSampleSUV_ptr(record(), host_.sampleSuv.get());
            } else {
                host_.sample.set(point);
                spoiled ? spoil(host_.sample) : void();
                OVSetWaveSample_ptr(record(), host_.sample.get());
            }
        }
    }

    void preProcess() {
        host_.preProcess->useWindow = static_cast<std::uint8_t>(below(3));
        host_.preProcess->skipAstCleaning = static_cast<std::uint8_t>(below(3));
        host_.preProcess->windowAbove = anyFloat();
        host_.preProcess->windowBelow = anyFloat();
        switch (below(3)) {
        case 0:
            OVPreProcess_ptr(record(), word(), host_.preProcess.get());
            break;
        case 1:
            VELTAPreProcess_ptr(record(), word(), host_.preProcess.get());
            break;
        default:
            host_.preProcessSuv->useWindow = static_cast<std::uint8_t>(below(3));
            OVPreProcessSUV_ptr(record(), word(), host_.preProcessSuv.get());
            break;
        }
    }

    void handIn() {
        spoil(host_.spectra);
        OVSetFourierCoefficientSpectra_ptr(record(), host_.spectra.get());
        spoil(host_.spectraUsed);
        OVSetSpectraUsed_ptr(record(), host_.spectraUsed.get());
    }

    void call() {
        switch (below(9)) {
        case 0:
            configure();
            break;
        case 1:
            choose();
            break;
        case 2:
            open();
            sample();
            break;
        case 3:
            sample();
            break;
        case 4:
        case 5:
            preProcess();
            expectResultsOrFlags(record(), OVProcess_ptr(record()), host_);
            break;
        case 6:
            expectResultsOrFlags(record(), OVProcess_ptr(record()), host_);
            break;
        case 7:
            spoil(host_.band);
            readEverything(record(), host_);
            break;
        default:
            handIn();
            break;
        }
    }

    std::mt19937 random_;
    GuardedMemory memory_;
    Host host_;
    SyntheticBurst usual_;
};

TEST(HostileStream, AnyCallsInAnyOrder) {
    constexpr std::uint32_t kStreams = 600;
    constexpr int kCalls = 40;
    for (std::uint32_t seed = 0; seed < kStreams; ++seed) {
        SCOPED_TRACE(testing::Message() << "seed " << seed);
        Stream(seed).run(kCalls);
        ASSERT_FALSE(HasFailure()) << "the seed repeats it";
    }
}

} // namespace
