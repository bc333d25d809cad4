// Exact class: files packed in chunks that hold many bursts give the bursts of those that are not packed.
#include <gtest/gtest.h>

#include "burst/deployment.hpp"
#include "host/burst/layout_writers.hpp"
#include "host/burst/scratch_directory.hpp"
#include "host/commands/program.hpp"

namespace {

using namespace orvik;
using test::Deployment;

class PackedLayouts : public testing::Test {
protected:
    test::ScratchDirectory directory;
    std::string plain = directory.file("plain.nc");
    std::string packed = directory.file("packed.nc");

    [[nodiscard]] Deployment simulated(std::vector<std::string> more) const {
        const std::string file = directory.file("burst.nc");
        std::vector<std::string> arguments{"simulate", "-o", file, "--interval", "3600"};
        arguments.insert(arguments.end(), more.begin(), more.end());
        const test::Outcome outcome = test::orvik(arguments);
        EXPECT_EQ(outcome.exitCode, 0) << outcome.errors;
        return Deployment(file);
    }

    void expectSame() const {
        const DeploymentOptions options{.overrides = {{"beam_azimuth", "0,120,240"},
                                                      {"beam_slant_angle", "25"},
                                                      {"cell_size", "0.5"},
                                                      {"blanking_distance", "0.5"},
                                                      {"cell_range", "5"}}};
        const auto left = openDeployment({plain}, options);
        const auto right = openDeployment({packed}, options);
        ASSERT_EQ(left->burstCount(), right->burstCount());
        ASSERT_GT(left->burstCount(), 1U);
        for (std::size_t i = 0; i < left->burstCount(); ++i) {
            const Burst one = left->readBurst(i);
            const Burst other = right->readBurst(i);
            EXPECT_EQ(one.startTime, other.startTime);
            EXPECT_EQ(one.pressure, other.pressure);
            EXPECT_EQ(one.surfaceTrack, other.surfaceTrack);
            EXPECT_EQ(one.velocity, other.velocity);
            EXPECT_EQ(one.attitude, other.attitude);
            ASSERT_EQ(one.profile.has_value(), other.profile.has_value());
            if (one.profile) {
                EXPECT_EQ(one.profile->velocity, other.profile->velocity);
                EXPECT_EQ(one.profile->correlation, other.profile->correlation);
                EXPECT_FALSE(other.profile->correlation.empty());
            }
        }
    }
};

TEST_F(PackedLayouts, ProfilesInContinuousFiles) {
    const Deployment truth = simulated(
        {"--instrument-type", "16", "--cells", "20", "--bursts", "5", "--samples", "1024"});
    test::writeContinuous(plain, truth);
    test::writeContinuous(packed, truth, {{"dir", 1}, {"beam", 2}, {"range", 7}, {"time", 3000}});
    expectSame();
}

TEST_F(PackedLayouts, ProfilesInFilesOfFields) {
    const Deployment truth = simulated(
        {"--instrument-type", "16", "--cells", "20", "--bursts", "5", "--samples", "1024"});
    test::writeFields(plain, truth);
    test::writeFields(packed, truth, {{"time", 3}, {"z", 7}});
    expectSame();
}

// The altimeter's own times are searched near the burst only; each of its values still goes to the burst that it was
// written from.
TEST_F(PackedLayouts, LongSurfaceTracks) {
    const Deployment truth = simulated({"--bursts", "4", "--samples", "4096"});
    test::writeContinuous(plain, truth);
    test::writeContinuous(packed, truth, {{"time", 10000}, {"time_alt", 20000}});
    expectSame();
    const DeploymentOptions options{.overrides = {{"beam_azimuth", "0,120,240"},
                                                  {"cell_range", "5"},
                                                  {"simultaneous_sampling", "0"}}};
    for (const std::string &file : {plain, packed}) {
        const auto source = openDeployment({file}, options);
        ASSERT_EQ(source->burstCount(), truth.bursts.size());
        for (std::size_t i = 0; i < truth.bursts.size(); ++i) {
            EXPECT_EQ(source->readBurst(i).surfaceTrack, truth.bursts[i].surfaceTrack) << i;
        }
    }
}

} // namespace
