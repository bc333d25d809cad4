// A profile instrument's burst through the face and through the C interface.
#include "face/both_sides.hpp"

namespace {

using namespace orvik::test;

constexpr std::size_t kCells = kProfileCells;

// With its first `cells` cells.
ProfileSample faceProfile(const OVWaveSampleProfile &packed, std::size_t cells = kCells) {
    ProfileSample sample;
    sample.valid = packed.valid != 0;
    sample.pressure = packed.pressure;
    sample.distance1 = packed.astDistance1;
    sample.distance2 = packed.astDistance2;
    sample.heading = packed.attitude[0];
    sample.pitch = packed.attitude[1];
    sample.roll = packed.attitude[2];
    for (std::size_t b = 0; b < kMaxBeams; ++b) {
        std::vector<std::int16_t> velocity;
        std::vector<std::uint8_t> amplitude;
        std::vector<std::uint8_t> correlation;
        for (std::size_t cell = 0; cell < cells; ++cell) {
            velocity.push_back(copyOf(packed.profileVelocity[b][cell]));
            amplitude.push_back(packed.profileAmplitude[b][cell]);
            correlation.push_back(packed.profileCorrelation[b][cell]);
        }
        sample.setBeam(b, velocity, amplitude, correlation);
    }
    return sample;
}

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
        makeSyntheticBurst({.method = GetParam(), .nSamples = 512, .tilted = true, .faulty = true});
    open(burst);
    std::vector<ProfileSample> samples;
    for (const OVWaveSample &point : burst.samples) {
        OVWaveSampleProfile sample = makeProfileSample(point);
        samples.push_back(faceProfile(sample));
        VELTASetWaveSampleProfile_ptr(c(), &sample);
    }
    EXPECT_TRUE(face.addProfile(samples.front()));
    EXPECT_TRUE(face.addProfile(std::span(samples).subspan(1)));
    expectSameRecords("samples");

    const auto output = std::make_unique<OVPreProcessOutput>();
    VELTAPreProcess_ptr(c(), 0, output.get());
    EXPECT_TRUE(face.preProcessProfile(cleaned));
    EXPECT_EQ(bytesOf(*cleaned.get()), bytesOf(*output));
    EXPECT_EQ(cleaned.sampleCount(), 512);
    EXPECT_EQ(cleaned.cellVerticalRange(), copyOf(output->cellVerticalRange));
    EXPECT_EQ(cleaned.row(3).correlation[2], copyOf(output->rows[3].correlation[2]));
    EXPECT_EQ(cleaned.row(3).velocity[1], copyOf(output->rows[3].velocity[1]));
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

// The library marks what it has taken as valid; the host's sample stays what it was.
TEST_P(ProfileBurst, AMissingSampleIsMissingEachTimeItIsAdded) {
    const SyntheticBurst burst = makeSyntheticBurst({.method = GetParam(), .nSamples = 512});
    open(burst);
    OVWaveSampleProfile packed = makeProfileSample(burst.samples[0]);
    ProfileSample sample = faceProfile(packed);
    for (int i = 0; i < 3; ++i) {
        packed.valid = i == 0 ? 1 : 0;
        sample.valid = i == 0;
        VELTASetWaveSampleProfile_ptr(c(), &packed);
        EXPECT_TRUE(face.addProfile(sample));
        EXPECT_EQ(sample.valid, i == 0);
    }
    EXPECT_TRUE(face.addProfile(sample));
    packed.valid = 0;
    VELTASetWaveSampleProfile_ptr(c(), &packed);
    expectSameRecords("missing samples");
}

// ---- The sample itself

TEST(FaceProfileSample, PacksEveryField) {
    OVWaveSampleProfile packed{};
    auto *const bytes = reinterpret_cast<unsigned char *>(&packed);
    for (std::size_t i = 0; i < sizeof packed; ++i) {
        bytes[i] = static_cast<unsigned char>(1 + i % 125);
    }
    packed.valid = 1;
    packed.reserved[0] = 0; // have no plain field
    packed.reserved[1] = 0;
    ProfileSample sample = faceProfile(packed, kMaxCells);
    EXPECT_EQ(bytesOf(*sample.packed()), bytesOf(packed));
}

TEST(FaceProfileSample, TakesNoMoreCellsThanAProfileHas) {
    const std::vector<std::int16_t> velocity(kMaxCells + 50, std::int16_t{-7});
    const std::vector<std::uint8_t> counts(kMaxCells + 50, std::uint8_t{9});
    ProfileSample sample;
    sample.setBeam(0, velocity, counts, counts);
    sample.setBeam(3, velocity, counts, counts);
    const OVWaveSampleProfile &packed = *sample.packed();
    EXPECT_EQ(copyOf(packed.profileVelocity[3][kMaxCells - 1]), -7);
    EXPECT_EQ(copyOf(packed.profileCorrelation[3][kMaxCells - 1]), 9);
    EXPECT_EQ(copyOf(packed.profileVelocity[1][0]), 0); // the beam after the first
    EXPECT_EQ(copyOf(packed.profileAmplitude[1][0]), 0);
    EXPECT_EQ(copyOf(packed.attitude[0]), 0.0F); // what follows the last one
}

TEST(FaceProfileSample, TakesTheCellsThatAllThreeSpansHaveAndKeepsTheRest) {
    const std::array<std::int16_t, 3> velocity{1, 2, 3};
    const std::array<std::uint8_t, 3> counts{4, 5, 6};
    ProfileSample sample;
    sample.setBeam(2, velocity, counts, counts);
    sample.setBeam(2, std::span(velocity).last(1), std::span(counts).last(2), counts);
    sample.setBeam(2, velocity, {}, counts);
    sample.setBeam(2, {}, counts, counts);
    sample.setBeam(2, velocity, counts, {});
    const OVWaveSampleProfile &packed = *sample.packed();
    EXPECT_EQ(copyOf(packed.profileVelocity[2][0]), 3);
    EXPECT_EQ(copyOf(packed.profileVelocity[2][1]), 2);
    EXPECT_EQ(copyOf(packed.profileAmplitude[2][0]), 5);
    EXPECT_EQ(copyOf(packed.profileAmplitude[2][1]), 5);
    EXPECT_EQ(copyOf(packed.profileCorrelation[2][0]), 4);
    EXPECT_EQ(copyOf(packed.profileCorrelation[2][2]), 6);
    EXPECT_EQ(copyOf(packed.profileVelocity[2][3]), 0);
}

} // namespace
