// Getters with one pointer a field: which value comes out where, told by values that occur only once.
#include <array>
#include <bit>
#include <cstdint>
#include <cstring>
#include <limits>
#include <memory>
#include <vector>

#include <gtest/gtest.h>

#include "exports/current_record.hpp"
#include "orvikbase/orvikbase.h"
#include "support/record_ptr.hpp"

namespace {

using namespace orvik::test;

constexpr float kUntouched = 12345.0F;

class Flattened : public testing::Test {
protected:
    void SetUp() override { VELTASetWaveVariablesPointer(record_.get()); }
    void TearDown() override { VELTASetWaveVariablesPointer(before_); }
    OVRecord &rec() const { return *record_; }

private:
    RecordPtr record_ = makeRecord();
    OVRecord *before_ = ov::currentRecord;
};

// ---- Wave parameters

struct ParameterSlots {
    std::array<float, 14> parameters;
    float depth, level, levelEven, aliasing, height, meanPeriod, range, energyPeriod;
    std::int32_t bad, spikes, flags, source, cell;

    std::int32_t get() {
        return OVGetWaveParLV(parameters.data(), &depth, &bad, &spikes, &flags, &source, &level,
                              &levelEven, &aliasing, &height, &meanPeriod, &range, &energyPeriod,
                              &cell);
    }
};

TEST_F(Flattened, WaveParametersInTheOrderOfTheSlots) {
    rec().processedFlag = 1;
    for (int i = 0; i < OV_WAVE_PARAMETERS; ++i) {
        rec().waveParameters[i] = 100.0F + static_cast<float>(i);
    }
    rec().instrumentDepth = 114.0F;
    rec().astInitialBadCount = 115;
    rec().astSpikeCount = 116;
    rec().qualityFlags = 117;
    rec().spectrumSource = 118;
    rec().astLevel = 119.0F;
    rec().astLevelEven = 120.0F;
    rec().aliasingFrequency = 121.0F;
    rec().checkedHeight = 122.0F;
    rec().checkedMeanPeriod = 123.0F;
    rec().headerDepth = 248.0F;
    rec().slantAngle = 60.0F; // half of it vertically
    rec().energyPeriod = 125.0F;
    rec().selectedCell = 125;
    ParameterSlots slots{};
    ASSERT_EQ(slots.get(), 0);
    for (std::size_t i = 0; i < slots.parameters.size(); ++i) {
        EXPECT_EQ(slots.parameters[i], 100.0F + static_cast<float>(i));
    }
    EXPECT_EQ(slots.depth, 114.0F);
    EXPECT_EQ(slots.bad, 115);
    EXPECT_EQ(slots.spikes, 116);
    EXPECT_EQ(slots.flags, 117);
    EXPECT_EQ(slots.source, 118);
    EXPECT_EQ(slots.level, 119.0F);
    EXPECT_EQ(slots.levelEven, 120.0F);
    EXPECT_EQ(slots.aliasing, 121.0F);
    EXPECT_EQ(slots.height, 122.0F);
    EXPECT_EQ(slots.meanPeriod, 123.0F);
    EXPECT_FLOAT_EQ(slots.range, 124.0F);
    EXPECT_EQ(slots.energyPeriod, 125.0F);
    EXPECT_EQ(slots.cell, 126);
}

TEST_F(Flattened, WaveParametersWithoutResultsAreMissing) {
    rec().missingSampleCount = 4;
    ParameterSlots slots{};
    ASSERT_EQ(slots.get(), 0);
    for (const float value : slots.parameters) {
        EXPECT_EQ(value, -9.0F);
    }
    EXPECT_EQ(slots.flags, 32);
    EXPECT_EQ(slots.spikes, 4);
    EXPECT_EQ(std::bit_cast<std::int32_t>(slots.height), -9) << "an integer, unlike the others";
}

// ---- Spectra

TEST_F(Flattened, SpectraInTheOrderOfTheBlock) {
    rec().surfaceTrackValid = 1;
    rec().nFrequencies = 3;
    rec().nFrequenciesFine = 5;
    rec().velocitySeriesCount = 3;
    rec().lastValidFreqIndex = 2;
    for (int i = 0; i < 5; ++i) {
        rec().bandSpectrumFine[i] = 300.0F + static_cast<float>(i);
    }
    for (int i = 0; i < 3; ++i) {
        const auto at = static_cast<float>(i);
        rec().spectrumPrs[i] = 100.0F + at;
        rec().spectrumVel[i] = 200.0F + at;
        rec().meanDirection[i] = 400.0F + at;
        rec().directionalSpread[i] = 500.0F + at;
        rec().fourierB1[i] = 600.0F + at;
        rec().fourierA1[i] = 700.0F + at;
        rec().fourierA2[i] = 800.0F + at;
        rec().fourierB2[i] = 900.0F + at;
        rec().checkRatio[i] = 1000.0 + i;
        for (int s = 0; s < 3; ++s) {
            rec().beamElevSpectrum[i][s] = 10.0F * (1.0F + static_cast<float>(s)) + at;
        }
    }
    std::uint8_t kind = 0;
    std::int32_t count = 0;
    std::int32_t fineCount = 0;
    std::vector<std::uint32_t> beams(800, 77);
    std::vector<float> fine(400, kUntouched);
    std::vector<std::vector<float>> s(9, std::vector<float>(200, kUntouched));
    ASSERT_EQ(OVGetWaveSpectrumLV(&kind, &count, &fineCount, s[0].data(), beams.data(), s[1].data(),
                                  fine.data(), s[2].data(), s[3].data(), s[4].data(), s[5].data(),
                                  s[6].data(), s[7].data(), s[8].data()),
              0);
    EXPECT_EQ(kind, 15);
    EXPECT_EQ(count, 3);
    EXPECT_EQ(fineCount, 5);
    EXPECT_EQ(fine[4], 304.0F);
    EXPECT_EQ(fine[5], 0.0F);
    const float inBin1[] = {101.0F,  201.0F,  401.0F, 501.0F, -601.0F,
                            -701.0F, -801.0F, 901.0F, 1001.0F};
    for (std::size_t i = 0; i < s.size(); ++i) {
        EXPECT_EQ(s[i][1], inBin1[i]) << i;
        EXPECT_EQ(s[i][2], i < 4 ? inBin1[i] + 1.0F : -9.0F) << i; // beyond the aliasing limit
        EXPECT_EQ(s[i][3], 0.0F) << i;
        EXPECT_EQ(s[i][199], 0.0F) << i;
    }
    EXPECT_EQ(std::bit_cast<float>(beams[4]), 11.0F);
    EXPECT_EQ(std::bit_cast<float>(beams[6]), 31.0F);
    EXPECT_EQ(beams[7], 77U) << "no fourth beam: the place stays the host's";
    EXPECT_EQ(beams[12], 0U);
    EXPECT_EQ(beams[799], 77U);
    EXPECT_EQ(rec().meanDirection[2], -9.0F) << "seen once";
}

TEST_F(Flattened, EachSpectrumCanBeAskedForAlone) {
    rec().nFrequencies = 1;
    rec().lastValidFreqIndex = 1;
    rec().spectrumVel[0] = 2.0F;
    rec().fourierB2[0] = 0.25F;
    std::vector<float> values(200, kUntouched);
    ASSERT_EQ(OVGetWaveSpectrumLV(nullptr, nullptr, nullptr, nullptr, nullptr, values.data(),
                                  nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr,
                                  nullptr),
              0);
    EXPECT_EQ(values[0], 2.0F);
    ASSERT_EQ(OVGetWaveSpectrumLV(nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr,
                                  nullptr, nullptr, nullptr, nullptr, nullptr, values.data(),
                                  nullptr),
              0);
    EXPECT_EQ(values[0], 0.25F);
}

// ---- Band estimate

struct BandValues {
    std::array<float, 6> values;
    std::uint32_t meanSpreadBits;
    std::uint16_t status;

    std::int32_t get() {
        return OVGetBandEstLV(&values[0], &values[1], &values[2], &values[3], &values[4],
                              &values[5], &meanSpreadBits, &status);
    }
};

// The peak's bin has other directions than its neighbours, so that no two values are the same.
TEST_F(Flattened, BandEstimateInTheOrderOfTheFields) {
    rec().processedFlag = 1;
    rec().activeMethod = 1;
    rec().nFrequencies = 3;
    rec().nFrequenciesFine = 3;
    rec().freqStep = 0.125;
    for (int i = 0; i < 3; ++i) {
        rec().frequencies[i] = 0.125F * static_cast<float>(i + 1);
        rec().paramFrequencies[i] = rec().frequencies[i];
        rec().spectraUsed[i] = i == 1 ? 2.0F : 1.0F;
        rec().fourierA1[i] = i == 1 ? 0.3F : 0.5F;
        rec().fourierB1[i] = i == 1 ? 0.4F : 0.0F;
    }
    BandValues band{};
    ASSERT_EQ(band.get(), 0);
    EXPECT_FLOAT_EQ(band.values[0], 2.8284271F); // 4 sqrt(4 / 8)
    EXPECT_FLOAT_EQ(band.values[1], 3.7712362F); // sqrt(64 / 4.5)
    EXPECT_EQ(band.values[2], 0.0F);
    EXPECT_NEAR(band.values[3], 36.869898F, 1e-4F); // peak direction, of (0.3, 0.4)
    EXPECT_NEAR(band.values[4], 63.434949F, 1e-4F); // mean direction, of (0.4, 0.2)
    EXPECT_NEAR(band.values[5], 57.295780F, 1e-4F); // peak spread
    EXPECT_NEAR(std::bit_cast<float>(band.meanSpreadBits), 60.244348F, 1e-4F);
    EXPECT_EQ(band.status, 0);
}

TEST_F(Flattened, BandEstimateTakesInTheFirstAndTheLastBin) {
    rec().processedFlag = 1;
    rec().activeMethod = 1;
    rec().nFrequencies = 200;
    rec().nFrequenciesFine = 400;
    rec().freqStep = 0.125;
    for (int i = 0; i < 400; ++i) {
        rec().paramFrequencies[i] = 0.125F * static_cast<float>(i);
    }
    rec().spectraUsed[0] = 1.0F;
    rec().spectraUsed[199] = 1.0F;
    BandValues band{};
    ASSERT_EQ(band.get(), 0);
    EXPECT_FLOAT_EQ(band.values[0], 2.0F);
}

TEST_F(Flattened, BandEstimateWithoutResults) {
    BandValues band{};
    EXPECT_EQ(band.get(), 1);
    for (const float value : band.values) {
        EXPECT_EQ(value, -9.0F);
    }
    EXPECT_EQ(std::bit_cast<float>(band.meanSpreadBits), -9.0F);
    EXPECT_EQ(band.status, 32);
}

// ---- Scaled spectra of every kind

class ScaledKinds : public Flattened {
protected:
    void SetUp() override {
        Flattened::SetUp();
        rec().nFrequencies = 3;
        rec().nFrequenciesFine = 6;
        rec().spectrumSource = OV_SOURCE_PRESSURE;
        for (int i = 0; i < 6; ++i) {
            const auto at = static_cast<float>(i + 1);
            if (i < 4) { // one more than the main axis has
                rec().spectrumPrs[i] = at;
                rec().spectrumVel[i] = 10.0F * at;
            }
            rec().bandSpectrumFine[i] = 100.0F * at;
            rec().spectraUsed[i] = 1000.0F * at;
        }
    }
    const OVScaledEnergySpectrum &get(std::int32_t kind) {
        std::memset(static_cast<void *>(&out_), 0x5A, sizeof out_);
        EXPECT_EQ(OVGetScaledEnergySpecAllType(kind, &out_), 0);
        return out_;
    }
    // bins from largest / bins upwards in equal steps, nothing behind them up to the fine axis
    static void expectRamp(const OVScaledEnergySpectrum &out, float largest, int bins) {
        EXPECT_EQ(+out.scaleMax, static_cast<std::uint32_t>(largest * 10000.0F));
        for (int i = 0; i < 6; ++i) {
            const int expected = i < bins ? 65535 * (i + 1) / bins : 0;
            EXPECT_EQ(+out.values[i], expected) << i;
        }
        EXPECT_EQ(+out.values[6], 0x5A5A) << "behind the fine axis nothing is written";
    }

private:
    OVScaledEnergySpectrum out_;
};

TEST_F(ScaledKinds, PressureOnTheMainAxis) { expectRamp(get(0), 3.0F, 3); }
TEST_F(ScaledKinds, VelocityOnTheMainAxis) { expectRamp(get(1), 30.0F, 3); }
TEST_F(ScaledKinds, SurfaceTrackOnTheFineAxis) { expectRamp(get(3), 600.0F, 6); }

TEST_F(ScaledKinds, AnyOtherKindIsTheSpectrumInUse) {
    for (const std::int32_t kind : {2, 4, -1, std::numeric_limits<std::int32_t>::max()}) {
        rec().spectrumSource = OV_SOURCE_VELOCITY;
        expectRamp(get(kind), 3000.0F, 3);
        rec().spectrumSource = OV_SOURCE_SURFACE_TRACK; // its axis is the fine one
        expectRamp(get(kind), 6000.0F, 6);
    }
}

TEST_F(ScaledKinds, TheKindDecidesTheAxisAndNotTheSource) {
    rec().spectrumSource = OV_SOURCE_SURFACE_TRACK;
    expectRamp(get(0), 3.0F, 3);
    rec().spectrumSource = OV_SOURCE_PRESSURE;
    expectRamp(get(3), 600.0F, 6);
}

TEST_F(ScaledKinds, WithoutEnergyEveryValueIs0) {
    std::memset(rec().spectrumPrs, 0, sizeof rec().spectrumPrs);
    rec().spectrumVel[0] = -1.0F;
    rec().spectrumVel[1] = -2.0F;
    rec().spectrumVel[2] = -3.0F;
    for (const std::int32_t kind : {0, 1}) {
        const OVScaledEnergySpectrum &out = get(kind);
        EXPECT_EQ(+out.scaleMax, 0U);
        for (int i = 0; i < 6; ++i) {
            EXPECT_EQ(+out.values[i], 0);
        }
    }
}

TEST_F(ScaledKinds, WithoutARecordNothingIsWritten) {
    OVScaledEnergySpectrum out{};
    out.scaleMax = 7;
    EXPECT_EQ(OVGetScaledEnergySpecAllType_ptr(nullptr, 0, &out), -1);
    EXPECT_EQ(OVGetScaledEnergySpecAllType_ptr(&rec(), 0, nullptr), -1);
    VELTASetWaveVariablesPointer(nullptr);
    EXPECT_EQ(OVGetScaledEnergySpecAllType(0, &out), -1);
    EXPECT_EQ(+out.scaleMax, 7U);
}

} // namespace
