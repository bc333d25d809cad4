// Plain and packed structures field by field, by values that occur only once; and what the plain ones start out with.
#include <cmath>
#include <limits>
#include <numeric>

#include "face/both_sides.hpp"

namespace {

using namespace orvik::test;

// Bytes 1, 2, 3, ...: every field differs from every other.
template <class Packed> Packed counted() {
    std::array<unsigned char, sizeof(Packed)> bytes;
    for (std::size_t i = 0; i < bytes.size(); ++i) {
        bytes[i] = static_cast<unsigned char>(1 + i % 126);
    }
    return std::bit_cast<Packed>(bytes);
}

TEST(FacePacking, Configurations) {
    const auto point = counted<OVInstrumentConfig>();
    EXPECT_EQ(bytesOf(orvikbase::detail::packed(faceConfig(point))), bytesOf(point));
    const auto profile = counted<OVProfileInstrumentConfig>();
    EXPECT_EQ(bytesOf(orvikbase::detail::packed(faceConfig(profile))), bytesOf(profile));
}

TEST(FacePacking, ParametersThereAndBack) {
    auto parameters = counted<OVProcessingParameters>();
    parameters.reverseDirections = 1;
    parameters.profileParamB = 1;
    EXPECT_EQ(bytesOf(orvikbase::detail::packed(faceParameters(parameters))), bytesOf(parameters));
    EXPECT_EQ(bytesOf(orvikbase::detail::packed(orvikbase::detail::unpacked(parameters))),
              bytesOf(parameters));
    parameters.reverseDirections = 0;
    parameters.profileParamB = 0;
    EXPECT_EQ(bytesOf(orvikbase::detail::packed(faceParameters(parameters))), bytesOf(parameters));
    EXPECT_EQ(bytesOf(orvikbase::detail::packed(orvikbase::detail::unpacked(parameters))),
              bytesOf(parameters));
}

TEST(FacePacking, HeadersAndSamples) {
    auto header = counted<OVWaveHeader>();
    header.reserved = 0; // has no plain field
    EXPECT_EQ(bytesOf(orvikbase::detail::packed(faceHeader(header))), bytesOf(header));
    auto sample = counted<OVWaveSample>();
    sample.valid = 1;
    EXPECT_EQ(bytesOf(orvikbase::detail::packed(faceSample(sample))), bytesOf(sample));
    sample.valid = 0;
    EXPECT_EQ(bytesOf(orvikbase::detail::packed(faceSample(sample))), bytesOf(sample));
}

TEST(FacePacking, WaveParametersSlotBySlot) {
    const auto packed = counted<OVWaveParameterSet>();
    const WaveParameters waves = orvikbase::detail::unpacked(packed);
    const auto slot = [&](OVWaveParameter which) { return packed.waveParameters[which]; };
    EXPECT_EQ(waves.meanPeriod, slot(OV_TM02));
    EXPECT_EQ(waves.peakPeriod, slot(OV_TP));
    EXPECT_EQ(waves.peakDirection, slot(OV_PEAK_DIRECTION));
    EXPECT_EQ(waves.peakSpread, slot(OV_PEAK_SPREAD));
    EXPECT_EQ(waves.meanDirection, slot(OV_MEAN_DIRECTION));
    EXPECT_EQ(waves.resultantLength, slot(OV_RESULTANT_LENGTH));
    EXPECT_EQ(waves.significantHeight, slot(OV_HM0));
    EXPECT_EQ(waves.thirdHeight, slot(OV_H_THIRD));
    EXPECT_EQ(waves.thirdPeriod, slot(OV_T_THIRD));
    EXPECT_EQ(waves.tenthHeight, slot(OV_H_TENTH));
    EXPECT_EQ(waves.tenthPeriod, slot(OV_T_TENTH));
    EXPECT_EQ(waves.maxHeight, slot(OV_H_MAX));
    EXPECT_EQ(waves.maxPeriod, slot(OV_T_MAX));
    EXPECT_EQ(waves.crossingPeriod, slot(OV_T_CROSSING));
    EXPECT_EQ(waves.instrumentDepth, copyOf(packed.instrumentDepth));
    EXPECT_EQ(waves.trackBadCount, copyOf(packed.astInitialBadCount));
    EXPECT_EQ(waves.trackSpikeCount, copyOf(packed.astSpikeCount));
    EXPECT_EQ(waves.qualityFlags, copyOf(packed.qualityFlags));
    EXPECT_EQ(static_cast<std::int32_t>(waves.spectrumSource), copyOf(packed.spectrumSource));
    EXPECT_EQ(waves.trackLevel, copyOf(packed.astLevel));
    EXPECT_EQ(waves.trackLevelEven, copyOf(packed.astLevelEven));
    EXPECT_EQ(waves.aliasingFrequency, copyOf(packed.aliasingFrequency));
    EXPECT_EQ(waves.checkedHeight, copyOf(packed.checkedHeight));
    EXPECT_EQ(waves.checkedMeanPeriod, copyOf(packed.checkedMeanPeriod));
    EXPECT_EQ(waves.cellVerticalRange, copyOf(packed.cellVerticalRange));
    EXPECT_EQ(waves.energyPeriod, copyOf(packed.energyPeriod));
    EXPECT_EQ(waves.selectedCell, copyOf(packed.selectedCell));
}

TEST(FacePacking, RowsFieldByField) {
    const auto packed = counted<OVPreProcessRow>();
    const CleanedRow row = orvikbase::detail::unpacked(packed);
    EXPECT_EQ(row.attitude[2], copyOf(packed.attitude[2]));
    EXPECT_EQ(row.track, copyOf(packed.astOut));
    EXPECT_EQ(row.pressure, copyOf(packed.pressureOut));
    EXPECT_EQ(row.velocity[3], copyOf(packed.velocity[3]));
    EXPECT_EQ(row.amplitude[1], copyOf(packed.amplitude[1]));
    EXPECT_EQ(row.correlation[1], copyOf(packed.correlation[1]));
}

TEST(FaceValues, MissingIsTheMarkerOrNoNumber) {
    EXPECT_TRUE(isMissing(kMissing));
    EXPECT_TRUE(isMissing(std::numeric_limits<float>::quiet_NaN()));
    EXPECT_TRUE(isMissing(std::bit_cast<float>(std::int32_t{OV_MISSING_INTEGER})));
    EXPECT_FALSE(isMissing(0.0F));
    EXPECT_FALSE(isMissing(9.0F));
    EXPECT_FALSE(isMissing(std::nextafter(kMissing, 0.0F)));
}

TEST(FaceValues, FlagsAreAskedByName) {
    WaveParameters waves;
    EXPECT_TRUE(waves.has(QualityFlag::noResult));
    waves.qualityFlags = OV_FLAG_TILT | OV_FLAG_CLEARANCE;
    EXPECT_TRUE(waves.has(QualityFlag::tilt));
    EXPECT_TRUE(waves.has(QualityFlag::clearance));
    EXPECT_FALSE(waves.has(QualityFlag::noResult));
}

// What a host gets that sets nothing: 2 Hz axes without any correction.
TEST(FaceValues, DefaultParametersNeedNoCorrectionAtTwoHertz) {
    Record record;
    record.configure(InstrumentConfig{});
    const ProcessingParameters inUse = record.setProcessing({});
    EXPECT_EQ(bytesOf(orvikbase::detail::packed(inUse)),
              bytesOf(orvikbase::detail::packed(ProcessingParameters{})));
    EXPECT_EQ(record.energySpectrum().size(), 98U);
    EXPECT_NEAR(inUse.frequency(0), 0.02, 1e-8);
    EXPECT_NEAR(inUse.frequency(97), 0.99, 1e-6);
    EXPECT_NEAR(inUse.fineFrequency(197), 1.99, 1e-6);
}

TEST(FaceValues, ScaledEnergyComesBackWithin16Bits) {
    Record record;
    record.configure(InstrumentConfig{});
    record.setProcessing({});
    std::vector<float> energy(98);
    std::iota(energy.begin(), energy.end(), 1.0F);
    record.setSpectrumUsed(energy);
    const ScaledSpectrum scaled = record.scaledSpectrum();
    EXPECT_EQ(scaled.scaleMax, 980000U);
    for (std::size_t i = 0; i < energy.size(); ++i) {
        EXPECT_NEAR(scaled.energy(i), energy[i], 98.0 / 65535.0) << i; // a step of the scale
    }
}

} // namespace
