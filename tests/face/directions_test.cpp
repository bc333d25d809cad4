// Coefficients and spectra that the host brings.
#include "face/both_sides.hpp"

namespace {

using namespace orvik::test;

class Directions : public BothSides {
protected:
    void SetUp() override {
        processPointBurst(makeSyntheticBurst({.method = 4, .nSamples = 1024}));
    }
};

std::vector<FourierCoefficients> coefficients() {
    std::vector<FourierCoefficients> bins;
    for (int i = 0; i < 30; ++i) {
        const float step = 0.01F * static_cast<float>(i);
        bins.push_back({0.3F + step, -0.2F - step, 0.1F - step, 0.05F + step});
    }
    bins[4] = {};                           // missing
    bins[7] = {0.5F, kMissing, 0.1F, 0.1F}; // half missing
    bins[9] = {kMissing, 0.5F, 0.1F, 0.1F};
    return bins;
}

TEST_F(Directions, OfLoadedCoefficients) {
    const std::vector<FourierCoefficients> bins = coefficients();
    const auto block = std::make_unique<OVFourierCoefficientSpectra>();
    block->count = static_cast<std::int32_t>(bins.size());
    for (std::size_t i = 0; i < bins.size(); ++i) {
        block->coefP[i] = bins[i].b1 == kMissing ? kMissing : -bins[i].b1;
        block->coefQ[i] = bins[i].a1 == kMissing ? kMissing : -bins[i].a1;
        block->coefR[i] = -bins[i].a2;
        block->coefS[i] = bins[i].b2;
    }
    OVSetFourierCoefficientSpectra_ptr(c(), block.get());
    std::vector<DirectionAndSpread> out(bins.size());
    EXPECT_TRUE(face.setFourierCoefficients(bins, out));
    for (std::size_t i = 0; i < bins.size(); ++i) {
        EXPECT_EQ(out[i].direction, copyOf(block->direction[i])) << i;
        EXPECT_EQ(out[i].spread, copyOf(block->spread[i])) << i;
    }
    for (const std::size_t missing : {4U, 7U, 9U}) {
        EXPECT_TRUE(isMissing(out[missing].direction));
    }
    EXPECT_FALSE(isMissing(out[5].direction));
    expectSameRecords("coefficients");
    EXPECT_TRUE(face.setFourierCoefficients(bins)); // without asking back
    expectSameRecords("coefficients again");
}

TEST_F(Directions, AreWrittenAsFarAsThereIsRoom) {
    const std::vector<FourierCoefficients> bins = coefficients();
    std::vector<DirectionAndSpread> out(3);
    EXPECT_TRUE(face.setFourierCoefficients(bins, std::span(out).first(2)));
    EXPECT_FALSE(isMissing(out[1].direction));
    EXPECT_TRUE(isMissing(out[2].direction));
    const std::vector<FourierCoefficients> tooMany(kMaxFrequencies + 9,
                                                   FourierCoefficients{1, 0, 1, 0});
    std::vector<DirectionAndSpread> longer(tooMany.size());
    EXPECT_TRUE(face.setFourierCoefficients(tooMany, longer));
    EXPECT_FALSE(isMissing(longer[kMaxFrequencies - 1].direction));
    EXPECT_TRUE(isMissing(longer[kMaxFrequencies].direction));
}

TEST_F(Directions, OfCoefficientsThatTheRecordDoesNotKeep) {
    const std::vector<FourierCoefficients> bins = coefficients();
    const auto block = std::make_unique<OVFourierCoefficientSpectra>();
    for (std::size_t i = 0; i < bins.size(); ++i) {
        block->coefP[i] = bins[i].a1;
        block->coefQ[i] = bins[i].b1;
    }
    OVGetDirectionalSpectrum_ptr(c(), block.get());
    std::vector<DirectionAndSpread> out(bins.size());
    EXPECT_TRUE(face.directionsOf(bins, out));
    for (std::size_t i = 0; i < bins.size(); ++i) {
        EXPECT_EQ(out[i].direction, copyOf(block->direction[i])) << i;
        EXPECT_EQ(out[i].spread, copyOf(block->spread[i])) << i;
    }
    expectSameRecords("directions");
}

// What the getter shows goes back in as it came out: the record's coefficients stay as they are.
TEST_F(Directions, CoefficientsGoRound) {
    const auto before = std::make_unique<Spectra>();
    face.readSpectra(*before);
    std::vector<FourierCoefficients> bins;
    for (std::size_t i = 0; i < before->count(); ++i) {
        const FourierCoefficients bin = before->coefficients(i);
        const OVFourierCoefficientSpectra &packed = *before->get();
        if (!isMissing(bin.a1)) {
            EXPECT_EQ(bin.a1, -copyOf(packed.coefQ[i]));
            EXPECT_EQ(bin.b1, -copyOf(packed.coefP[i]));
            EXPECT_EQ(bin.a2, -copyOf(packed.coefR[i]));
            EXPECT_EQ(bin.b2, copyOf(packed.coefS[i]));
        }
        bins.push_back(bin);
    }
    const auto after = std::make_unique<Spectra>();
    face.setFourierCoefficients(bins);
    face.readSpectra(*after);
    for (std::size_t i = 0; i < bins.size(); ++i) {
        EXPECT_EQ(bytesOf(after->coefficients(i)), bytesOf(bins[i])) << i;
    }
    EXPECT_FALSE(isMissing(bins[5].a1));
    EXPECT_TRUE(isMissing(bins.back().a1)); // beyond the spatial-aliasing limit
}

// Method 1 shows every bin, the missing marker turned with the sign; to a reader of coefficients it is the marker still.
TEST(FaceCoefficients, AMissingBinIsMissingWhicheverSignItsMarkerHas) {
    Spectra spectra;
    OVFourierCoefficientSpectra &packed = *spectra.get();
    for (const float marker : {kMissing, -kMissing}) {
        packed.coefP[0] = marker;
        packed.coefQ[0] = marker;
        packed.coefR[0] = marker;
        packed.coefS[0] = kMissing;
        EXPECT_EQ(bytesOf(spectra.coefficients(0)), bytesOf(FourierCoefficients{}));
    }
}

TEST_F(Directions, ASpectrumFromTheHost) {
    OVSpectraUsedInput input{};
    std::vector<float> values;
    for (int i = 0; i < OV_MAX_FREQUENCIES_FINE + 20; ++i) {
        values.push_back(0.5F + 0.01F * static_cast<float>(i));
    }
    input.count1 = OV_MAX_FREQUENCIES_FINE;
    std::memcpy(input.values, values.data(), sizeof input.values);
    OVSetSpectraUsed_ptr(c(), &input);
    EXPECT_TRUE(face.setSpectrumUsed(values)); // the last 20 have no place
    expectSameRecords("400 values");
    input.count1 = 0;
    OVSetSpectraUsed_ptr(c(), &input);
    EXPECT_TRUE(face.setSpectrumUsed({}));
    expectSameRecords("none");
    EXPECT_EQ(face.energySpectrum()[3], values[3]);
}

} // namespace
