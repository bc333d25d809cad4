// A profile instrument's burst through the face and through the C interface.
#include "face/both_sides.hpp"

namespace {

using namespace orvik::test;

constexpr std::size_t kCells = kProfileCells;

// A profile's cells as a host may have them: beam by beam, no longer than needed.
struct HostProfile {
    std::array<std::vector<std::int16_t>, kMaxBeams> velocity;
    std::array<std::vector<std::uint8_t>, kMaxBeams> amplitude;
    std::array<std::vector<std::uint8_t>, kMaxBeams> correlation;
    ProfileSample sample;

    explicit HostProfile(const OVWaveSampleProfile &packed, std::size_t cells = kCells) {
        sample.valid = packed.valid != 0;
        sample.pressure = packed.pressure;
        sample.distance1 = packed.astDistance1;
        sample.distance2 = packed.astDistance2;
        sample.heading = packed.attitude[0];
        sample.pitch = packed.attitude[1];
        sample.roll = packed.attitude[2];
        for (std::size_t b = 0; b < kMaxBeams; ++b) {
            for (std::size_t cell = 0; cell < cells; ++cell) {
                velocity[b].push_back(packed.profileVelocity[b][cell]);
                amplitude[b].push_back(packed.profileAmplitude[b][cell]);
                correlation[b].push_back(packed.profileCorrelation[b][cell]);
            }
        }
    }
    ProfileSample view() const {
        ProfileSample result = sample;
        for (std::size_t b = 0; b < kMaxBeams; ++b) {
            result.beams[b] = {velocity[b], amplitude[b], correlation[b]};
        }
        return result;
    }
};

class ProfileBurst : public BothSides, public testing::WithParamInterface<int> {
protected:
    // Everything before the first sample, on either side.
    void open(const SyntheticBurst &burst) {
        const OVProfileInstrumentConfig config = makeProfileConfig(burst.config);
        OVProcessingParameters parameters = burst.parameters;
        parameters.profileParamA = 90.0F;
        parameters.profileParamB = 1;
        OVProfileWaveHeader header = makeProfileHeader(burst.header);
        VELTASetInstrumentConfig_ptr(c(), &config);
        EXPECT_TRUE(face.configureProfile(faceConfig(config)));
        expectSameRecords("configuration");
        face.setProcessing(faceParameters(parameters));
        VELTASetProcPar_ptr(c(), &parameters);
        expectSameRecords("parameters");
        const ProfileBurstHeader faceHead{.samples = header.nSamples,
                                          .heading = header.heading,
                                          .pitch = header.pitch,
                                          .roll = header.roll,
                                          .cellSize = header.directHeight,
                                          .blanking = header.directDepth,
                                          .cells = header.nCells,
                                          .surfaceTimeOffset = header.surfaceTimeOffset};
        header.pressureCounts = 0; // a profile's cells have their place from size and blanking
        VELTASetWaveHeader_ptr(c(), &header);
        EXPECT_EQ(face.openProfileBurst(faceHead), 512);
        expectSameRecords("header");
    }
};

TEST_P(ProfileBurst, EveryStepLeavesTheSameRecord) {
    const SyntheticBurst burst =
        makeSyntheticBurst({.method = GetParam(), .nSamples = 512, .faulty = true});
    open(burst);
    std::vector<HostProfile> profiles;
    for (const OVWaveSample &point : burst.samples) {
        OVWaveSampleProfile sample = makeProfileSample(point);
        profiles.emplace_back(sample);
        VELTASetWaveSampleProfile_ptr(c(), &sample);
    }
    std::vector<ProfileSample> samples;
    for (const HostProfile &profile : profiles) {
        samples.push_back(profile.view());
    }
    EXPECT_TRUE(face.addProfile(samples.front()));
    EXPECT_TRUE(face.addProfile(std::span(samples).subspan(1)));
    expectSameRecords("samples");

    const auto output = std::make_unique<OVPreProcessOutput>();
    VELTAPreProcess_ptr(c(), 0, output.get());
    EXPECT_TRUE(face.preProcessProfile(cleaned));
    EXPECT_EQ(bytesOf(*cleaned.get()), bytesOf(*output));
    EXPECT_EQ(cleaned.sampleCount(), 512);
    EXPECT_EQ(cleaned.cellVerticalRange(), output->cellVerticalRange);
    EXPECT_EQ(cleaned.row(3).correlation[2], output->rows[3].correlation[2]);
    EXPECT_EQ(cleaned.row(3).velocity[1], output->rows[3].velocity[1]);
    EXPECT_EQ(cleaned.row(3).attitude[0], 12.0F);

    EXPECT_TRUE(OVProcess_ptr(c()));
    EXPECT_TRUE(face.process());
    expectSameRecords("processing");
    OVWaveParameterSet waves;
    OVGetWavePar_ptr(c(), &waves);
    EXPECT_EQ(bytesOf(face.waveParameters()), bytesOf(waves));
    EXPECT_GE(face.waveParameters().selectedCell, 1);
}

INSTANTIATE_TEST_SUITE_P(Methods, ProfileBurst, testing::Values(1, 2, 3, 4));

using ProfileCells = ProfileBurst;

// Beams of different lengths, shorter ones after longer ones, and one that is longer than a profile can be.
TEST_P(ProfileCells, BeyondASpanCountAsZero) {
    const SyntheticBurst burst = makeSyntheticBurst({.method = GetParam(), .nSamples = 512});
    open(burst);
    const OVWaveSampleProfile full = makeProfileSample(burst.samples[0]);
    std::vector<HostProfile> profiles;
    for (const std::size_t cells :
         {kCells, std::size_t{5}, kCells, std::size_t{0}, std::size_t{7}}) {
        OVWaveSampleProfile sample = full;
        for (std::size_t b = 0; b < kMaxBeams; ++b) {
            for (std::size_t cell = cells; cell < kCells; ++cell) {
                sample.profileVelocity[b][cell] = 0;
                sample.profileAmplitude[b][cell] = 0;
                sample.profileCorrelation[b][cell] = 0;
            }
        }
        profiles.emplace_back(full, cells);
        VELTASetWaveSampleProfile_ptr(c(), &sample);
    }
    std::vector<ProfileSample> samples;
    for (const HostProfile &profile : profiles) {
        samples.push_back(profile.view());
    }
    EXPECT_TRUE(face.addProfile(samples));
    expectSameRecords("shorter beams");
}

TEST_P(ProfileCells, BeyondTheCapacityAreNotTaken) {
    orvikbase::detail::ProfilePacker packer;
    const std::vector<std::int16_t> velocity(kMaxCells + 50, std::int16_t{-7});
    const std::vector<std::uint8_t> counts(kMaxCells + 50, std::uint8_t{9});
    ProfileSample sample{.pressure = 1.0F};
    sample.beams[3] = {velocity, counts, counts};
    const OVWaveSampleProfile &packed = *packer.packed(sample);
    EXPECT_EQ(packed.profileVelocity[3][kMaxCells - 1], -7);
    EXPECT_EQ(packed.profileAmplitude[0][0], 0);
    EXPECT_EQ(packed.profileAmplitude[3][kMaxCells - 1], 9);
    EXPECT_EQ(packed.profileCorrelation[3][kMaxCells - 1], 9);
    EXPECT_EQ(packed.attitude[0], 0.0F); // what follows the last beam
    const OVWaveSampleProfile &empty = *packer.packed(ProfileSample{});
    EXPECT_EQ(empty.profileVelocity[3][kMaxCells - 1], 0);
    EXPECT_EQ(empty.profileCorrelation[3][kMaxCells - 1], 0);
}

INSTANTIATE_TEST_SUITE_P(OneMethod, ProfileCells, testing::Values(3));

} // namespace
