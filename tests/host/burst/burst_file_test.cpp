// Burst files come back as they were written.
#include "burst/burst_file.hpp"

#include <cmath>
#include <cstring>

#include <gtest/gtest.h>

#include "host/burst/scratch_directory.hpp"

namespace {

using namespace orvik;

constexpr std::size_t kSamples = 24;

Instrument testInstrument() {
    Instrument instrument;
    instrument.samplingRate = 1.0;
    instrument.trackSamplingRate = 2.0;
    instrument.acousticFrequency = 600000.0;
    instrument.instrumentType = 1;
    instrument.slantAngle = 22.5;
    instrument.beamAzimuth = {10.0, 130.0, 250.0};
    instrument.beamToXyz = {1.5, -0.75, -0.75, 0.0, 1.25, -1.25, 0.35, 0.36, 0.37};
    instrument.cellRange = 6.25;
    instrument.cellSize = 0.8;
    instrument.pingsPerSample = 12;
    instrument.pressureHeight = 0.4;
    instrument.declination = -3.5;
    return instrument;
}

Burst testBurst(VelocitySystem system, float seed) {
    Burst burst;
    burst.startTime = 1.7e9 + static_cast<double>(seed);
    burst.heading = 123.0;
    burst.pitch = -2.0;
    burst.roll = 1.5;
    burst.velocitySystem = system;
    burst.valid.assign(kSamples, 1);
    for (std::size_t i = 0; i < kSamples; ++i) {
        const float x = static_cast<float>(i) + seed;
        burst.pressure.push_back(10.0F + 0.1F * x);
        burst.surfaceTrack.push_back(9.0F + 0.01F * x);
        burst.surfaceTrack.push_back(9.5F + 0.01F * x);
        for (std::size_t row = 0; row < 3; ++row) {
            if (system != VelocitySystem::none) {
                burst.velocity[row].push_back(0.5F * static_cast<float>(row) - 0.02F * x);
                burst.amplitude[row].push_back(static_cast<std::uint16_t>(100 + 10 * row + i));
            }
        }
    }
    burst.valid[5] = 0;
    burst.pressure[5] = std::nanf("");
    burst.surfaceTrack[7] = std::nanf("");
    return burst;
}

void expectSameSeries(const std::vector<float> &read, const std::vector<float> &written) {
    ASSERT_EQ(read.size(), written.size());
    for (std::size_t i = 0; i < read.size(); ++i) {
        EXPECT_TRUE(read[i] == written[i] || (std::isnan(read[i]) && std::isnan(written[i])))
            << "at " << i;
    }
}

class RoundTrip : public testing::TestWithParam<VelocitySystem> {};

TEST_P(RoundTrip, BurstsComeBackExactly) {
    const test::ScratchDirectory directory;
    const std::string path = directory.file("a.nc");
    Truth truth;
    truth.significantHeight = 2.5;
    truth.currentDirection = 77.0;
    {
        BurstFileWriter writer(path, testInstrument(), GetParam(), kSamples, 2 * kSamples,
                               {{"title", "a test"}});
        writer.append(testBurst(GetParam(), 0.0F), truth);
        writer.append(testBurst(GetParam(), 3.0F), truth);
        writer.commit();
    }
    const BurstFileReader reader(path, {});
    ASSERT_EQ(reader.burstCount(), 2U);
    EXPECT_EQ(reader.sampleCount(), kSamples);
    EXPECT_EQ(reader.velocitySystem(), GetParam());
    EXPECT_TRUE(reader.hasTrack());
    for (std::size_t index = 0; index < 2; ++index) {
        const Burst written = testBurst(GetParam(), index == 0 ? 0.0F : 3.0F);
        const Burst read = reader.readBurst(index);
        EXPECT_EQ(read.startTime, written.startTime);
        EXPECT_NEAR(read.heading, written.heading, 1e-9);
        EXPECT_NEAR(read.pitch, written.pitch, 1e-9);
        EXPECT_NEAR(read.roll, written.roll, 1e-9);
        EXPECT_EQ(read.velocitySystem, written.velocitySystem);
        EXPECT_EQ(read.valid, written.valid);
        expectSameSeries(read.pressure, written.pressure);
        expectSameSeries(read.surfaceTrack, written.surfaceTrack);
        for (std::size_t row = 0; row < 3; ++row) {
            expectSameSeries(read.velocity[row], written.velocity[row]);
            EXPECT_EQ(read.amplitude[row], written.amplitude[row]);
        }
        const auto readTruth = reader.readTruth(index);
        ASSERT_TRUE(readTruth.has_value());
        EXPECT_EQ(readTruth->significantHeight, 2.5);
        EXPECT_EQ(readTruth->currentDirection, 77.0);
        EXPECT_TRUE(std::isnan(readTruth->peakPeriod));
    }
}

INSTANTIATE_TEST_SUITE_P(Systems, RoundTrip,
                         testing::Values(VelocitySystem::beam, VelocitySystem::xyz,
                                         VelocitySystem::enu, VelocitySystem::none));

TEST(BurstFile, InstrumentComesBackExactly) {
    const test::ScratchDirectory directory;
    const std::string path = directory.file("a.nc");
    const Instrument written = testInstrument();
    {
        BurstFileWriter writer(path, written, VelocitySystem::beam, kSamples, 2 * kSamples, {});
        writer.append(testBurst(VelocitySystem::beam, 0.0F), {});
        writer.commit();
    }
    const BurstFileReader reader(path, {});
    const Instrument &read = reader.instrument();
    EXPECT_EQ(read.samplingRate, written.samplingRate);
    EXPECT_EQ(read.trackSamplingRate, written.trackSamplingRate);
    EXPECT_EQ(read.acousticFrequency, written.acousticFrequency);
    EXPECT_EQ(read.instrumentType, written.instrumentType);
    EXPECT_EQ(read.slantAngle, written.slantAngle);
    EXPECT_EQ(read.beamAzimuth, written.beamAzimuth);
    EXPECT_EQ(read.beamToXyz, written.beamToXyz);
    EXPECT_EQ(read.cellRange, written.cellRange);
    EXPECT_EQ(read.cellSize, written.cellSize);
    EXPECT_EQ(read.pingsPerSample, written.pingsPerSample);
    EXPECT_EQ(read.pressureHeight, written.pressureHeight);
    EXPECT_EQ(read.declination, written.declination);
}

TEST(BurstFile, WithoutTrackAndAmplitude) {
    const test::ScratchDirectory directory;
    const std::string path = directory.file("a.nc");
    Burst burst = testBurst(VelocitySystem::enu, 0.0F);
    burst.surfaceTrack.clear();
    burst.amplitude = {};
    {
        BurstFileWriter writer(path, testInstrument(), VelocitySystem::enu, kSamples, 0, {});
        writer.append(burst, {});
        writer.commit();
    }
    const BurstFileReader reader(path, {});
    EXPECT_FALSE(reader.hasTrack());
    const Burst read = reader.readBurst(0);
    EXPECT_TRUE(read.surfaceTrack.empty());
    EXPECT_EQ(read.amplitude[2], std::vector<std::uint16_t>(kSamples, kUnknownAmplitude));
}

TEST(BurstFile, UserValuesReplaceTheFiles) {
    const test::ScratchDirectory directory;
    const std::string path = directory.file("a.nc");
    {
        BurstFileWriter writer(path, testInstrument(), VelocitySystem::beam, kSamples, 2 * kSamples,
                               {});
        writer.append(testBurst(VelocitySystem::beam, 0.0F), {});
        writer.commit();
    }
    const BurstFileReader reader(path, {{"cell_range", "8.2"},
                                        {"heading", "10"},
                                        {"pings_per_sample", "1"},
                                        {"time", "86400"},
                                        {"beam_azimuth", "0,-120,120"},
                                        {"beam_to_xyz", "1,2,3,4,5,6,7,8,9"}});
    EXPECT_EQ(reader.instrument().cellRange, 8.2);
    EXPECT_EQ(reader.instrument().pingsPerSample, 1U);
    EXPECT_EQ(reader.instrument().beamAzimuth, (std::vector<double>{0.0, -120.0, 120.0}));
    EXPECT_EQ(reader.instrument().beamToXyz, (std::array<double, 9>{1, 2, 3, 4, 5, 6, 7, 8, 9}));
    const Burst burst = reader.readBurst(0);
    EXPECT_EQ(burst.heading, 10.0);
    EXPECT_NEAR(burst.pitch, -2.0, 1e-9);
    EXPECT_EQ(burst.startTime, 86400.0);
}

} // namespace
