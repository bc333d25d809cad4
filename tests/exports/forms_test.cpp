// Every operation exists on a given record, on the current record, and some with their structure's fields one by one:
// the same bytes go into the record and out to the host, whichever is used.
#include <cstring>
#include <limits>
#include <memory>
#include <type_traits>
#include <vector>

#include <gtest/gtest.h>

#include "exports/burst_results.hpp"
#include "exports/current_record.hpp"
#include "support/record_ptr.hpp"

namespace {

using namespace orvik::test;

constexpr int kFill = 0x5A; // host memory before a getter

class Forms : public testing::Test {
protected:
    void SetUp() override { VELTASetWaveVariablesPointer(byCurrent_.get()); }
    void TearDown() override { VELTASetWaveVariablesPointer(before_); }

    OVRecord *given() const { return byPointer_.get(); }

    void expectSameRecords(const char *name) const {
        EXPECT_EQ(std::memcmp(byPointer_.get(), byCurrent_.get(), sizeof(OVRecord)), 0) << name;
    }

    // Both forms on equal records with equal host memory, of which they must make the same.
    template <class Host, class ByPointer, class ByCurrent>
    void expectSame(const char *name, const Host &host, ByPointer byPointer,
                    ByCurrent byCurrent) const {
        const auto a = std::make_unique<std::remove_cv_t<Host>>(host);
        const auto b = std::make_unique<std::remove_cv_t<Host>>(host);
        EXPECT_EQ(byPointer(given(), a.get()), byCurrent(b.get())) << name;
        EXPECT_EQ(std::memcmp(a.get(), b.get(), sizeof host), 0) << name;
        expectSameRecords(name);
    }

    // Into host memory that the getter must fill itself.
    template <class Host, class ByPointer, class ByCurrent>
    void expectSameOutput(const char *name, ByPointer byPointer, ByCurrent byCurrent) const {
        const auto host = std::make_unique<Host>();
        std::memset(static_cast<void *>(host.get()), kFill, sizeof *host);
        expectSame(name, *host, byPointer, byCurrent);
    }

private:
    RecordPtr byPointer_ = makeRecord();
    RecordPtr byCurrent_ = makeRecord();
    OVRecord *before_ = ov::currentRecord;
};

OVWaveSampleSUV suvSample(const OVWaveSample &point) {
    OVWaveSampleSUV sample{};
    sample.valid = point.valid;
    sample.suvChannel1 = 1.5F;
    sample.suvChannel2 = -2.5F;
    std::memcpy(&sample.pressure, &point.pressure, sizeof point - 1);
    return sample;
}

struct Rows {
    float values[OV_MAX_FREQUENCIES * OV_MAX_DIRECTIONS];
};

// ---- X_ptr and X, step by step through a burst

TEST_F(Forms, ABurstOfAPointInstrumentOnTheCurrentRecord) {
    const SyntheticBurst burst =
        makeSyntheticBurst({.method = 4, .nSamples = 512, .tilted = true, .faulty = true});
    expectSame("config", burst.config, OVSetInstrumentConfig_ptr, OVSetInstrumentConfig);
    expectSame("parameters", burst.parameters, OVSetProcPar_ptr, OVSetProcPar);
    expectSame("header", burst.header, OVSetWaveHeader_ptr, OVSetWaveHeader);
    for (std::size_t i = 0; i < burst.samples.size(); ++i) {
        OVWaveSample a = burst.samples[i];
        OVWaveSample b = burst.samples[i];
        ASSERT_EQ(OVSetWaveSample_ptr(given(), &a), OVSetWaveSample(&b));
        ASSERT_EQ(std::memcmp(&a, &b, sizeof a), 0);
    }
    expectSameRecords("samples");
    expectSameOutput<OVPreProcessOutput>(
        "pre-processing",
        [](OVRecord *r, OVPreProcessOutput *o) { return OVPreProcess_ptr(r, 1, o); },
        [](OVPreProcessOutput *o) { return OVPreProcess(2, o); });
    EXPECT_TRUE(OVProcess_ptr(given()));
    EXPECT_TRUE(OVProcess());
    expectSameRecords("processing");
    EXPECT_EQ(OVProcessReturnInt_ptr(given()), 1);
    EXPECT_EQ(OVProcessReturnInt(), 1);
    expectSameRecords("processing, as an integer");
    EXPECT_TRUE(VELTAWaveProcess_ptr(given(), nullptr));
    EXPECT_TRUE(VELTAWaveProcess(nullptr));
    expectSameRecords("processing with a hook");

    expectSameOutput<OVWaveParameterSet>("wave parameters", OVGetWavePar_ptr, OVGetWavePar);
    expectSameOutput<OVFourierCoefficientSpectra>("spectra", OVGetWaveSpectrum_ptr,
                                                  OVGetWaveSpectrum);
    expectSameOutput<OVEnergySpectrumBlock>("energy", OVGetEnergySpecStruct_ptr,
                                            OVGetEnergySpecStruct);
    expectSameOutput<OVScaledEnergySpectrum>("scaled energy", OVGetScaledEnergySpec_ptr,
                                             OVGetScaledEnergySpec);
    for (std::int32_t kind = -1; kind < 5; ++kind) {
        expectSameOutput<OVScaledEnergySpectrum>(
            "scaled energy of a kind",
            [kind](OVRecord *r, OVScaledEnergySpectrum *s) {
                return OVGetScaledEnergySpecAllType_ptr(r, kind, s);
            },
            [kind](OVScaledEnergySpectrum *s) { return OVGetScaledEnergySpecAllType(kind, s); });
    }
    for (std::int32_t selector = -1; selector < 3; ++selector) {
        expectSame("mean current", OVMeanCurrentQuery{selector, 1.0F, 2.0F, 3.0F},
                   OVGetMeanBurstCurrent_ptr, OVGetMeanBurstCurrent);
        expectSame(
            "mean current by selector", OVMeanCurrentQuery{77, 1.0F, 2.0F, 3.0F},
            [selector](OVRecord *r, OVMeanCurrentQuery *q) {
                return VELTAGetMeanBurstCurrent_ptr(r, selector, q);
            },
            [selector](OVMeanCurrentQuery *q) { return VELTAGetMeanBurstCurrent(selector, q); });
    }
    OVBandEstimate band{};
    band.fHigh = 0.2F;
    expectSame("band", band, OVGetBandEst_ptr, OVGetBandEst);
    expectSameOutput<Rows>(
        "directions with energy",
        [](OVRecord *r, Rows *o) { return OVGetFullDirSpectraWithEnergy_ptr(r, o->values); },
        [](Rows *o) { return OVGetFullDirSpectraWithEnergy(o->values); });
    expectSameOutput<Rows>(
        "maximum entropy",
        [](OVRecord *r, Rows *o) { return OVGetFullWaveDirSpectrum_ptr(r, o->values); },
        [](Rows *o) { return OVGetFullWaveDirSpectrum(o->values); });

    const auto block = std::make_unique<OVFourierCoefficientSpectra>();
    OVGetWaveSpectrum_ptr(given(), block.get());
    OVGetWaveSpectrum(block.get());
    expectSame("directions of a block", *block, OVGetDirectionalSpectrum_ptr,
               OVGetDirectionalSpectrum);
    expectSame("coefficients", *block, OVSetFourierCoefficientSpectra_ptr,
               OVSetFourierCoefficientSpectra);
    OVSpectraUsedInput input{};
    input.count1 = 3;
    input.values[2] = 4.5F;
    expectSame("spectrum from the host", input, OVSetSpectraUsed_ptr, OVSetSpectraUsed);
}

TEST_F(Forms, TheSuvFormOnTheCurrentRecord) {
    const SyntheticBurst burst = makeSyntheticBurst({.method = 2, .nSamples = 300, .faulty = true});
    openBurst(given(), burst);
    openBurst(ov::currentRecord, burst);
    for (const OVWaveSample &point : burst.samples) {
        OVWaveSampleSUV a = suvSample(point);
        OVWaveSampleSUV b = suvSample(point);
        ASSERT_EQ(OVSetWaveSampleSUV_ptr(given(), &a), OVSetWaveSampleSUV(&b));
        ASSERT_EQ(std::memcmp(&a, &b, sizeof a), 0);
    }
    expectSameRecords("samples");
    expectSameOutput<OVPreProcessOutputSUV>(
        "pre-processing",
        [](OVRecord *r, OVPreProcessOutputSUV *o) { return OVPreProcessSUV_ptr(r, 1, o); },
        [](OVPreProcessOutputSUV *o) { return OVPreProcessSUV(2, o); });
}

TEST_F(Forms, ABurstOfAProfileInstrumentOnTheCurrentRecord) {
    const SyntheticBurst burst = makeSyntheticBurst(
        {.method = 4, .instrumentType = kProfileType, .nSamples = 128, .faulty = true});
    expectSame("config", makeProfileConfig(burst.config), VELTASetInstrumentConfig_ptr,
               VELTASetInstrumentConfig);
    expectSame("parameters", burst.parameters, VELTASetProcPar_ptr, VELTASetProcPar);
    expectSame("header", makeProfileHeader(burst.header), VELTASetWaveHeader_ptr,
               VELTASetWaveHeader);
    for (const OVWaveSample &point : burst.samples) {
        OVWaveSampleProfile a = makeProfileSample(point);
        OVWaveSampleProfile b = a;
        ASSERT_EQ(VELTASetWaveSampleProfile_ptr(given(), &a), VELTASetWaveSampleProfile(&b));
        ASSERT_EQ(std::memcmp(&a, &b, sizeof a), 0);
    }
    expectSameRecords("samples");
    expectSameOutput<OVPreProcessOutput>(
        "pre-processing",
        [](OVRecord *r, OVPreProcessOutput *o) { return VELTAPreProcess_ptr(r, 1, o); },
        [](OVPreProcessOutput *o) { return VELTAPreProcess(2, o); });
}

// ---- XLV and X

TEST_F(Forms, FlattenedConfigurationHasNoOptionBits) {
    OVInstrumentConfig config = makeSyntheticBurst({.nSamples = 1}).config;
    config.cellSizeCounts = -2;
    std::int16_t matrix[16];
    std::memcpy(matrix, config.transformMatrix, sizeof matrix);
    ov::currentRecord->splitEstimateFlag = 1;
    EXPECT_EQ(OVSetInstrumentConfig_ptr(given(), &config), 0);
    EXPECT_EQ(OVSetInstrumentConfigLV(config.pingsPerSample, config.samplingRate,
                                      config.burstSamples, config.acousticFrequency,
                                      config.slantAngle, config.instrumentType, config.attitudeMode,
                                      matrix, 0xFFFE),
              0);
    expectSameRecords("configuration");
}

TEST_F(Forms, FlattenedParametersHaveNoProfileValues) {
    OVProcessingParameters p = makeSyntheticBurst({.method = 4, .nSamples = 1}).parameters;
    p.headingOffset = 3.5F;
    p.pressureOffset = -0.25F;
    for (const std::int32_t reverse : {0, 1, -1, 256}) {
        ov::currentRecord->profileParamA = 5.0F;
        ov::currentRecord->profileParamB = 5;
        p.reverseDirections = reverse != 0 ? 1 : 0;
        OVProcessingParameters given = p;
        EXPECT_EQ(OVSetProcPar_ptr(this->given(), &given), 0);
        EXPECT_EQ(OVSetProcParLV(p.processingMethod, p.freqMin, p.freqMax, p.fineFreqMin,
                                 p.fineFreqMax, p.freqStep, p.levelOffset, p.headingOffset,
                                 p.dirBandWidth, p.specBandWidth, p.directionalInputMode,
                                 p.estimateMask, p.nDirections, p.pressureOffset, reverse),
                  0);
        expectSameRecords("parameters");
    }
}

TEST_F(Forms, FlattenedHeaderHasFourWordsAndNothingBehindTheFlag) {
    const std::uint16_t words[4] = {11, 22, 33, 44};
    for (const std::int32_t flag : {0, 1, 256}) {
        OVWaveHeader header{};
        header.nSamples = 600;
        header.pressureCounts = -371;
        header.headerValueA = 1.0F;
        header.headerValueB = 2.0F;
        header.heading = 3.0F;
        header.pitch = 4.0F;
        header.roll = 5.0F;
        header.headerValueC = 6.0F;
        header.distanceCounts = -7;
        std::memcpy(header.headerWords, words, sizeof header.headerWords);
        header.headerFlag = flag != 0 ? 1 : 0;
        for (OVRecord *record : {given(), ov::currentRecord}) {
            record->instrumentType = 3;
            record->acousticFrequency = 400000.0F;
            record->nCells = 9;
            record->surfaceTimeOffset = 9;
            record->depthOffset = 9.0F;
        }
        EXPECT_EQ(OVSetWaveHeader_ptr(given(), &header), 1);
        EXPECT_EQ(OVSetWaveHeaderLV(600, -371, 1.0F, 2.0F, 3.0F, 4.0F, 5.0F, 6.0F, -7, words, flag),
                  1);
        expectSameRecords("header");
    }
}

TEST_F(Forms, FlattenedSamplesGiveTheSameSeries) {
    const SyntheticBurst burst = makeSyntheticBurst({.method = 4, .nSamples = 300, .faulty = true});
    openBurst(given(), burst);
    openBurst(ov::currentRecord, burst);
    for (const OVWaveSample &point : burst.samples) {
        OVWaveSample sample = point;
        const float values[4] = {point.velocity[0], point.velocity[1], point.velocity[2],
                                 point.astDistance2};
        const std::uint16_t amplitude[4] = {point.amplitude[0], point.amplitude[1],
                                            point.amplitude[2], point.amplitude[3]};
        EXPECT_EQ(OVSetWaveSample_ptr(given(), &sample), 0);
        EXPECT_EQ(OVSetWaveSampleLV(point.valid != 0 ? 256 : 0, point.pressure, point.astDistance1,
                                    values, amplitude),
                  0);
    }
    expectSameRecords("samples");
}

TEST_F(Forms, FlattenedPreProcessingReturnsTheTrackAlone) {
    for (int method = 1; method <= 4; ++method) {
        const SyntheticBurst burst =
            makeSyntheticBurst({.method = method, .nSamples = 300, .faulty = true});
        for (OVRecord *record : {given(), ov::currentRecord}) {
            sendBurst(record, burst);
        }
        const auto output = std::make_unique<OVPreProcessOutput>();
        std::memset(output.get(), 0, sizeof *output);
        output->windowBelow = 3.0F;
        output->windowAbove = 2.5F;
        output->useWindow = 1;
        std::vector<float> track(OV_MAX_TRACK_SAMPLES, 7.0F);
        EXPECT_EQ(OVPreProcess_ptr(given(), 0, output.get()), 0);
        EXPECT_EQ(OVPreProcessLV(0, track.data(), 3.0F, 2.5F, 256, 0, 0, 0), 0);
        expectSameRecords("pre-processing");
        for (std::size_t i = 0; i < track.size(); ++i) {
            ASSERT_EQ(track[i], +output->rows[i].astOut)
                << "method " << method << ", element " << i;
        }
    }
}

TEST_F(Forms, FlattenedProcessing) {
    const SyntheticBurst burst = makeSyntheticBurst({.method = 3, .nSamples = 300});
    const auto host = std::make_unique<HostBuffers>();
    std::memset(static_cast<void *>(host.get()), 0, sizeof *host);
    for (OVRecord *record : {given(), ov::currentRecord}) {
        sendBurst(record, burst);
        OVPreProcess_ptr(record, 0, &host->preProcess);
    }
    EXPECT_EQ(OVProcessReturnInt_ptr(given()), 1);
    EXPECT_EQ(OVProcessReturnIntLV(), 1);
    expectSameRecords("processing");
}

// Both records hold the same processed burst.
class FlattenedGetters : public Forms {
protected:
    void SetUp() override {
        Forms::SetUp();
        const SyntheticBurst burst =
            makeSyntheticBurst({.method = 4, .nSamples = 512, .tilted = true});
        const auto host = std::make_unique<HostBuffers>();
        std::memset(static_cast<void *>(host.get()), 0, sizeof *host);
        for (OVRecord *record : {given(), ov::currentRecord}) {
            sendBurst(record, burst);
            ASSERT_TRUE(runBurst(record, false, *host));
        }
    }
};

template <class Value> std::vector<Value> untouched(std::size_t n) {
    std::vector<Value> values(n);
    std::memset(values.data(), kFill, n * sizeof(Value));
    return values;
}

TEST_F(FlattenedGetters, WaveParameters) {
    OVWaveParameterSet set;
    ASSERT_EQ(OVGetWavePar_ptr(given(), &set), 0);
    auto parameters = untouched<float>(14);
    auto f = untouched<float>(8);
    auto i = untouched<std::int32_t>(4);
    std::int32_t cell = 0;
    ASSERT_EQ(OVGetWaveParLV(parameters.data(), &f[0], &i[0], &i[1], &i[2], &i[3], &f[1], &f[2],
                             &f[3], &f[4], &f[5], &f[6], &f[7], &cell),
              0);
    EXPECT_EQ(std::memcmp(&set.waveParameters, parameters.data(), sizeof set.waveParameters), 0);
    const float floats[] = {set.instrumentDepth,   set.astLevel,      set.astLevelEven,
                            set.aliasingFrequency, set.checkedHeight, set.checkedMeanPeriod,
                            set.cellVerticalRange, set.energyPeriod};
    EXPECT_EQ(std::memcmp(floats, f.data(), sizeof floats), 0);
    EXPECT_EQ(i[0], +set.astInitialBadCount);
    EXPECT_EQ(i[1], +set.astSpikeCount);
    EXPECT_EQ(i[2], +set.qualityFlags);
    EXPECT_EQ(i[3], +set.spectrumSource);
    EXPECT_EQ(cell, +set.selectedCell);
    expectSameRecords("wave parameters");
}

TEST_F(FlattenedGetters, Spectra) {
    const auto block = std::make_unique<OVFourierCoefficientSpectra>();
    std::memset(static_cast<void *>(block.get()), kFill, sizeof *block);
    ASSERT_EQ(OVGetWaveSpectrum_ptr(given(), block.get()), 0);
    std::uint8_t kind = 0;
    std::int32_t counts[2] = {};
    auto beams = untouched<std::uint32_t>(800);
    auto fine = untouched<float>(400);
    std::vector<std::vector<float>> series(9, untouched<float>(200));
    ASSERT_EQ(OVGetWaveSpectrumLV(&kind, &counts[0], &counts[1], series[0].data(), beams.data(),
                                  series[1].data(), fine.data(), series[2].data(), series[3].data(),
                                  series[4].data(), series[5].data(), series[6].data(),
                                  series[7].data(), series[8].data()),
              0);
    EXPECT_EQ(kind, +block->spectrumKind);
    EXPECT_EQ(counts[0], +block->count);
    EXPECT_EQ(counts[1], +block->fineCount);
    const auto *const bytes = reinterpret_cast<const unsigned char *>(block.get());
    const auto sameAt = [bytes](std::size_t offset, const void *values, std::size_t size) {
        return std::memcmp(bytes + offset, values, size) == 0;
    };
    EXPECT_TRUE(sameAt(9, series[0].data(), 800));
    EXPECT_TRUE(sameAt(809, beams.data(), 3200)); // places of unused beams stay the host's here too
    EXPECT_TRUE(sameAt(4009, series[1].data(), 800));
    EXPECT_TRUE(sameAt(4809, fine.data(), 1600));
    for (std::size_t s = 2; s < series.size(); ++s) {
        EXPECT_TRUE(sameAt(6409 + 800 * (s - 2), series[s].data(), 800)) << s;
    }
    expectSameRecords("spectra");
}

TEST_F(FlattenedGetters, MeanCurrent) {
    for (std::int32_t selector = -1; selector < 3; ++selector) {
        OVMeanCurrentQuery query{selector, 1.0F, 2.0F, 3.0F};
        ASSERT_EQ(OVGetMeanBurstCurrent_ptr(given(), &query), 0);
        float a = 1.0F;
        float b = 2.0F;
        float c = 3.0F;
        ASSERT_EQ(OVGetMeanBurstCurrentLV(selector, &a, &b, &c), 0);
        EXPECT_EQ(a, +query.valueA);
        EXPECT_EQ(b, +query.valueB);
        EXPECT_EQ(c, +query.valueC);
    }
}

TEST_F(FlattenedGetters, BandEstimateCoversTheWholeAxis) {
    OVBandEstimate band{};
    band.fLow = 0.0F;
    band.fHigh = std::numeric_limits<float>::max();
    const std::int32_t status = OVGetBandEst_ptr(given(), &band);
    float v[6] = {};
    std::uint32_t spreadBits = 0;
    std::uint16_t bandStatus = 7;
    EXPECT_EQ(OVGetBandEstLV(&v[0], &v[1], &v[2], &v[3], &v[4], &v[5], &spreadBits, &bandStatus),
              status);
    const float expected[] = {band.bandHm0,           band.bandTm02,          band.bandZero,
                              band.bandPeakDirection, band.bandMeanDirection, band.bandPeakSpread};
    EXPECT_EQ(std::memcmp(v, expected, sizeof expected), 0);
    const float spread = band.bandMeanSpread;
    EXPECT_EQ(std::memcmp(&spreadBits, &spread, sizeof spread), 0);
    EXPECT_EQ(bandStatus, +band.bandStatus);
    EXPECT_GT(v[0], 0.0F);
}

} // namespace
