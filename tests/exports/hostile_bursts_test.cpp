// One thing wrong with an otherwise sound burst: the library stays inside its memory and says when there is no result.
#include <algorithm>
#include <limits>

#include <gtest/gtest.h>

#include "exports/hostile_host.hpp"

namespace {

using namespace orvik::test;

constexpr float kNan = std::numeric_limits<float>::quiet_NaN();
constexpr float kInfinity = std::numeric_limits<float>::infinity();
constexpr float kHuge = std::numeric_limits<float>::max();
constexpr std::int32_t kIntMin = std::numeric_limits<std::int32_t>::min();
constexpr std::int32_t kIntMax = std::numeric_limits<std::int32_t>::max();

TEST_F(HostileBurst, EveryCombinationOfMethodTypeMaskAndAttitudeMode) {
    for (const int method : {-1, 0, 1, 2, 3, 4, 5}) {
        for (const int instrumentType : {0, 1, 3, 16}) {
            for (int mask = 0; mask < 32; ++mask) {
                SyntheticBurst burst =
                    smallBurst(method == 4 ? 4 : std::clamp(method, 1, 3), instrumentType, 64);
                burst.parameters.processingMethod = method;
                burst.parameters.directionalInputMode = method % 2 == 0 ? 2 : mask % 4;
                burst.parameters.estimateMask = mask;
                burst.config.attitudeMode = mask % 5 - 1;
                SCOPED_TRACE(testing::Message() << "method " << method << ", type "
                                                << instrumentType << ", mask " << mask);
                EXPECT_TRUE(run(burst));
                if (instrumentType == 16) {
                    EXPECT_TRUE(runProfile(burst));
                }
            }
        }
    }
    expectReservedZero(*record());
}

TEST_F(HostileBurst, EveryAttitudeModeWithEveryMethod) {
    for (int method = 1; method <= 4; ++method) {
        for (const std::int32_t mode : {kIntMin, -1, 0, 1, 2, 3, kIntMax}) {
            for (const std::int32_t input : {kIntMin, -1, 0, 1, 2, 3, 4, kIntMax}) {
                SyntheticBurst burst = smallBurst(method);
                burst.config.attitudeMode = mode;
                burst.parameters.directionalInputMode = input;
                run(burst);
                runProfile(burst);
            }
        }
    }
    expectReservedZero(*record());
}

TEST_F(HostileBurst, SamplesThatAreNoNumbers) {
    for (int method = 1; method <= 4; ++method) {
        for (const float value :
             {kNan, kInfinity, -kInfinity, kHuge, -kHuge, 0.0F, 1.0e-40F, -9.0F}) {
            for (int field = 0; field < 7; ++field) {
                SyntheticBurst burst = smallBurst(method);
                forEverySample(burst, [=](OVWaveSample &sample) {
                    if (field == 0 || field == 6) {
                        sample.pressure = value;
                    }
                    if (field == 1 || field == 6) {
                        sample.astDistance1 = value;
                    }
                    if (field == 2 || field == 6) {
                        sample.astDistance2 = value;
                    }
                    for (int b = 0; b < 3; ++b) {
                        if (field == 3 + b || field == 6) {
                            sample.velocity[b] = value;
                        }
                    }
                });
                SCOPED_TRACE(testing::Message()
                             << "method " << method << ", value " << value << ", field " << field);
                run(burst);
                if (field == 6) {
                    // Nothing but one value: no wave can have come out of it.
                    EXPECT_NE(record()->qualityFlags &
                                  (OV_FLAG_INVALID_PARAMETERS | OV_FLAG_NO_RESULT),
                              0);
                }
            }
        }
    }
    expectReservedZero(*record());
}

TEST_F(HostileBurst, OneSampleThatIsNoNumber) {
    for (int method = 1; method <= 4; ++method) {
        for (const float value : {kNan, kInfinity, -kHuge}) {
            for (const std::size_t at :
                 {std::size_t{0}, std::size_t{1}, std::size_t{63}, std::size_t{127}}) {
                SyntheticBurst burst = smallBurst(method);
                OVWaveSample &sample = burst.samples[at];
                sample.pressure = value;
                sample.astDistance1 = value;
                sample.velocity[1] = value;
                run(burst);
            }
        }
    }
}

TEST_F(HostileBurst, BurstsOfEveryLength) {
    for (int method = 1; method <= 4; ++method) {
        for (const int n : {0, 1, 2, 3, 4, 5, 7, 24, 25, 26, 49, 50, 51, 100, 511, 512, 513}) {
            SyntheticBurst burst = smallBurst(method, 3, std::max(n, 1));
            burst.header.nSamples = static_cast<std::uint16_t>(n);
            burst.samples.resize(static_cast<std::size_t>(n));
            SCOPED_TRACE(testing::Message() << "method " << method << ", " << n << " samples");
            run(burst);
            runProfile(burst);
            if (n < 3) {
                EXPECT_NE(record()->qualityFlags, 0); // no wave fits in
            }
        }
    }
    expectReservedZero(*record());
}

TEST_F(HostileBurst, TheLongestBurstAndSamplesBeyondIt) {
    for (const int method : {2, 4}) {
        SyntheticBurst burst = smallBurst(method, 3, 16384);
        burst.header.nSamples = 65535;
        burst.samples.resize(16390, burst.samples.front());
        EXPECT_TRUE(run(burst));
        EXPECT_EQ(record()->burstLength, 16384);
        burst.samples.back().valid = 0;
        EXPECT_TRUE(runProfile(burst));
    }
    expectReservedZero(*record());
}

TEST_F(HostileBurst, AbsurdAxes) {
    struct Axis {
        float low, high, step;
        std::int32_t directions;
    };
    constexpr Axis kAxes[] = {
        {0.6F, 0.4F, 0.01F, 12},    {0.02F, 0.99F, 0.0999F, -1},  {0.02F, 0.99F, 0.05F, 0},
        {0.02F, 0.99F, 0.05F, 1},   {0.02F, 0.99F, 0.05F, 2},     {0.02F, 0.99F, 0.05F, kIntMin},
        {0.5F, 0.5F, 0.1F, 12},     {0.5F, 0.52F, 0.01F, 12},     {1.0e-30F, 0.99F, 0.05F, 12},
        {0.9999F, 0.2F, 0.05F, 12}, {kNan, 0.99F, 0.05F, 12},     {0.02F, kNan, 0.05F, 12},
        {0.02F, 0.99F, kNan, 12},   {0.02F, 0.99F, 1.0e-30F, 12}, {0.02F, kInfinity, 0.05F, 12},
        {0.02F, 0.99F, 0.001F, 90}};
    for (const std::int32_t rate : {kIntMin, -1, 0, 1, 2, 8, 1000000, kIntMax}) {
        for (const Axis &axis : kAxes) {
            SyntheticBurst burst = smallBurst(4, 3, 64);
            burst.config.samplingRate = rate;
            burst.parameters.freqMin = burst.parameters.fineFreqMin = axis.low;
            burst.parameters.freqMax = burst.parameters.fineFreqMax = axis.high;
            burst.parameters.freqStep = axis.step;
            burst.parameters.nDirections = axis.directions;
            SCOPED_TRACE(testing::Message()
                         << "rate " << rate << ", axis " << axis.low << " to " << axis.high);
            run(burst);
            burst.parameters.processingMethod = 2;
            run(burst);
        }
    }
    expectReservedZero(*record());
}

TEST_F(HostileBurst, ExtremeBandWidths) {
    for (int method = 1; method <= 4; ++method) {
        for (const std::int32_t width : {1, 3, 4, 511, 512, 0, kIntMin}) {
            for (const int n : {2, 16, 128, 1024}) {
                SyntheticBurst burst = smallBurst(method, 3, n);
                burst.parameters.dirBandWidth = width;
                burst.parameters.specBandWidth = width;
                run(burst);
            }
        }
    }
}

TEST_F(HostileBurst, ExtremeInstruments) {
    for (int method = 1; method <= 4; ++method) {
        for (const float value : {kNan, kInfinity, -kInfinity, kHuge, 0.0F, -1.0F, 1.0e-30F}) {
            for (int field = 0; field < 10; ++field) {
                SyntheticBurst burst = smallBurst(method);
                switch (field) {
                case 0:
                    burst.config.acousticFrequency = value;
                    break;
                case 1:
                    burst.config.slantAngle = value;
                    break;
                case 2:
                    burst.header.heading = value;
                    break;
                case 3:
                    burst.header.pitch = value;
                    break;
                case 4:
                    burst.header.roll = value;
                    break;
                case 5:
                    burst.parameters.levelOffset = value;
                    break;
                case 6:
                    burst.parameters.headingOffset = value;
                    break;
                case 7:
                    burst.parameters.pressureOffset = value;
                    break;
                case 8:
                    burst.header.depthOffset = value;
                    burst.config.acousticFrequency = 400000.0F;
                    break;
                default:
                    burst.parameters.profileParamA = value;
                    break;
                }
                SCOPED_TRACE(testing::Message()
                             << "method " << method << ", value " << value << ", field " << field);
                run(burst);
                runProfile(burst);
            }
        }
    }
    expectReservedZero(*record());
}

TEST_F(HostileBurst, ExtremeCounts) {
    for (const int method : {1, 4}) {
        for (const int counts : {-32768, -1, 0, 1, 32767}) {
            SyntheticBurst burst = smallBurst(method);
            burst.header.pressureCounts = static_cast<std::int16_t>(counts);
            burst.header.distanceCounts = static_cast<std::int16_t>(counts);
            burst.header.surfaceTimeOffset = static_cast<std::int16_t>(counts);
            burst.config.cellSizeCounts = static_cast<std::int16_t>(counts);
            burst.config.pingsPerSample = static_cast<std::uint32_t>(counts);
            for (int i = 0; i < 16; ++i) {
                burst.config.transformMatrix[i] = static_cast<std::int16_t>(counts);
            }
            run(burst);
            runProfile(burst);
        }
    }
}

TEST_F(HostileBurst, ProfilesOfEveryCellAndBeamCount) {
    for (const std::uint32_t cells : {0U, 1U, 2U, 255U, 256U, 257U, 0xFFFFFFFFU}) {
        for (const int beams : {-32768, -1, 0, 1, 2, 3, 4, 5, 32767}) {
            const SyntheticBurst burst = smallBurst(4, 16, 64);
            OVProfileInstrumentConfig config = makeProfileConfig(burst.config);
            config.beamCount = static_cast<std::int16_t>(beams);
            config.lagParameter = cells == 1U ? 0.0F : cells == 2U ? kNan : 1.5F;
            for (int b = 0; b < 4; ++b) {
                config.beamAzimuth[b] = cells == 255U ? kNan : 90.0F * static_cast<float>(b);
            }
            OVProfileWaveHeader header = makeProfileHeader(burst.header);
            header.nCells = cells;
            header.directHeight = beams == 2 ? 0.0F : 0.7F;
            host().profileConfig.set(config);
            host().parameters.set(burst.parameters);
            host().header.set(header);
            VELTASetInstrumentConfig_ptr(record(), host().profileConfig.get());
            VELTASetProcPar_ptr(record(), host().parameters.get());
            VELTASetWaveHeader_ptr(record(), host().header.get());
            for (const OVWaveSample &sample : burst.samples) {
                host().profileSample.set(makeProfileSample(sample));
                VELTASetWaveSampleProfile_ptr(record(), host().profileSample.get());
            }
            VELTAPreProcess_ptr(record(), 0, host().preProcess.get());
            process();
        }
    }
    expectReservedZero(*record());
}

} // namespace
