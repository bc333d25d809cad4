// A null record or a null structure is answered with -1 and nothing is touched: whatever memory is handed over beside
// it is write-protected here, so that a write ends the test.
#include <cstdint>

#include <gtest/gtest.h>

#include "exports/current_record.hpp"
#include "guarded_memory.hpp"
#include "orvikbase/orvikbase.h"

namespace {

using orvik::test::GuardedEdge;
using orvik::test::GuardedMemory;

class NullArguments : public testing::Test {
protected:
    NullArguments() : memory_(OV_RECORD_BYTES, GuardedEdge::back) { memory_.makeReadOnly(); }
    void TearDown() override { VELTASetWaveVariablesPointer(before_); }

    // A record that may be read and not written.
    OVRecord *record() const { return memory_.as<OVRecord>(); }

    // `operation` with every combination that lacks an argument; host memory of `bytes` is read-only too.
    template <class Host>
    void expectRefused(const char *name, std::int32_t (*operation)(OVRecord *, Host *),
                       std::size_t bytes = sizeof(Host)) {
        SCOPED_TRACE(name);
        GuardedMemory host(bytes, GuardedEdge::back);
        host.makeReadOnly();
        EXPECT_EQ(operation(nullptr, host.as<Host>()), -1);
        EXPECT_EQ(operation(record(), nullptr), -1);
        EXPECT_EQ(operation(nullptr, nullptr), -1);
    }

    template <class Host>
    void expectRefusedOnCurrent(const char *name, std::int32_t (*operation)(Host *),
                                std::size_t bytes = sizeof(Host)) {
        SCOPED_TRACE(name);
        GuardedMemory host(bytes, GuardedEdge::back);
        host.makeReadOnly();
        VELTASetWaveVariablesPointer(nullptr);
        EXPECT_EQ(operation(host.as<Host>()), -1);
        EXPECT_EQ(operation(nullptr), -1);
        VELTASetWaveVariablesPointer(record());
        EXPECT_EQ(operation(nullptr), -1);
    }

private:
    GuardedMemory memory_;
    OVRecord *before_ = ov::currentRecord;
};

constexpr std::size_t kRows = sizeof(float) * OV_MAX_FREQUENCIES * OV_MAX_DIRECTIONS;

TEST_F(NullArguments, Configuration) {
    expectRefused("OVSetInstrumentConfig_ptr", OVSetInstrumentConfig_ptr);
    expectRefused("OVSetProcPar_ptr", OVSetProcPar_ptr);
    expectRefused("OVSetWaveHeader_ptr", OVSetWaveHeader_ptr);
    expectRefused("VELTASetInstrumentConfig_ptr", VELTASetInstrumentConfig_ptr);
    expectRefused("VELTASetProcPar_ptr", VELTASetProcPar_ptr);
    expectRefused("VELTASetWaveHeader_ptr", VELTASetWaveHeader_ptr);
    expectRefusedOnCurrent("OVSetInstrumentConfig", OVSetInstrumentConfig);
    expectRefusedOnCurrent("OVSetProcPar", OVSetProcPar);
    expectRefusedOnCurrent("OVSetWaveHeader", OVSetWaveHeader);
    expectRefusedOnCurrent("VELTASetInstrumentConfig", VELTASetInstrumentConfig);
    expectRefusedOnCurrent("VELTASetProcPar", VELTASetProcPar);
    expectRefusedOnCurrent("VELTASetWaveHeader", VELTASetWaveHeader);
}

TEST_F(NullArguments, Samples) {
    expectRefused("OVSetWaveSample_ptr", OVSetWaveSample_ptr);
    expectRefused("OVSetWaveSampleSUV_ptr", OVSetWaveSampleSUV_ptr);
    expectRefused("VELTASetWaveSampleProfile_ptr", VELTASetWaveSampleProfile_ptr);
    expectRefusedOnCurrent("OVSetWaveSample", OVSetWaveSample);
    expectRefusedOnCurrent("OVSetWaveSampleSUV", OVSetWaveSampleSUV);
    expectRefusedOnCurrent("VELTASetWaveSampleProfile", VELTASetWaveSampleProfile);
}

template <std::int32_t (*kOperation)(OVRecord *, std::uint32_t, OVPreProcessOutput *)>
std::int32_t preProcess(OVRecord *record, OVPreProcessOutput *output) {
    return kOperation(record, 0, output);
}

TEST_F(NullArguments, PreProcessing) {
    expectRefused("OVPreProcess_ptr", preProcess<OVPreProcess_ptr>);
    expectRefused("VELTAPreProcess_ptr", preProcess<VELTAPreProcess_ptr>);
    expectRefused(
        "OVPreProcessSUV_ptr", +[](OVRecord *record, OVPreProcessOutputSUV *output) {
            return OVPreProcessSUV_ptr(record, 0, output);
        });
    expectRefusedOnCurrent(
        "OVPreProcess", +[](OVPreProcessOutput *output) { return OVPreProcess(0, output); });
    expectRefusedOnCurrent(
        "VELTAPreProcess", +[](OVPreProcessOutput *output) { return VELTAPreProcess(0, output); });
    expectRefusedOnCurrent(
        "OVPreProcessSUV",
        +[](OVPreProcessOutputSUV *output) { return OVPreProcessSUV(0, output); });
    expectRefusedOnCurrent(
        "OVPreProcessLV",
        +[](float *track) { return OVPreProcessLV(0, track, 1.0F, 1.0F, 1, 0, 0, 0); },
        sizeof(float) * OV_MAX_TRACK_SAMPLES);
}

// OVProcess answers true for a null record: the one operation that does.
TEST_F(NullArguments, Processing) {
    EXPECT_TRUE(OVProcess_ptr(nullptr));
    EXPECT_EQ(OVProcessReturnInt_ptr(nullptr), -1);
    EXPECT_TRUE(VELTAWaveProcess_ptr(nullptr, nullptr));
    VELTASetWaveVariablesPointer(nullptr);
    EXPECT_TRUE(OVProcess());
    EXPECT_EQ(OVProcessReturnInt(), -1);
    EXPECT_EQ(OVProcessReturnIntLV(), -1);
    EXPECT_TRUE(VELTAWaveProcess(nullptr));
}

TEST_F(NullArguments, Getters) {
    expectRefused("OVGetWavePar_ptr", OVGetWavePar_ptr);
    expectRefused("OVGetWaveSpectrum_ptr", OVGetWaveSpectrum_ptr);
    expectRefused("OVGetEnergySpecStruct_ptr", OVGetEnergySpecStruct_ptr);
    expectRefused("OVGetScaledEnergySpec_ptr", OVGetScaledEnergySpec_ptr);
    expectRefused("OVGetMeanBurstCurrent_ptr", OVGetMeanBurstCurrent_ptr);
    expectRefused("OVGetBandEst_ptr", OVGetBandEst_ptr);
    expectRefused(
        "OVGetScaledEnergySpecAllType_ptr",
        +[](OVRecord *record, OVScaledEnergySpectrum *spectrum) {
            return OVGetScaledEnergySpecAllType_ptr(record, 1, spectrum);
        });
    expectRefused(
        "VELTAGetMeanBurstCurrent_ptr", +[](OVRecord *record, OVMeanCurrentQuery *query) {
            return VELTAGetMeanBurstCurrent_ptr(record, 1, query);
        });
    expectRefusedOnCurrent("OVGetWavePar", OVGetWavePar);
    expectRefusedOnCurrent("OVGetWaveSpectrum", OVGetWaveSpectrum);
    expectRefusedOnCurrent("OVGetEnergySpecStruct", OVGetEnergySpecStruct);
    expectRefusedOnCurrent("OVGetScaledEnergySpec", OVGetScaledEnergySpec);
    expectRefusedOnCurrent("OVGetMeanBurstCurrent", OVGetMeanBurstCurrent);
    expectRefusedOnCurrent("OVGetBandEst", OVGetBandEst);
}

TEST_F(NullArguments, DirectionalGettersAndSetters) {
    expectRefused("OVSetFourierCoefficientSpectra_ptr", OVSetFourierCoefficientSpectra_ptr);
    expectRefused("OVSetSpectraUsed_ptr", OVSetSpectraUsed_ptr);
    expectRefused("OVGetDirectionalSpectrum_ptr", OVGetDirectionalSpectrum_ptr);
    expectRefused("OVGetFullDirSpectraWithEnergy_ptr", OVGetFullDirSpectraWithEnergy_ptr, kRows);
    expectRefused("OVGetFullWaveDirSpectrum_ptr", OVGetFullWaveDirSpectrum_ptr, kRows);
    expectRefusedOnCurrent("OVSetFourierCoefficientSpectra", OVSetFourierCoefficientSpectra);
    expectRefusedOnCurrent("OVSetSpectraUsed", OVSetSpectraUsed);
    expectRefusedOnCurrent("OVGetDirectionalSpectrum", OVGetDirectionalSpectrum);
    expectRefusedOnCurrent("OVGetFullDirSpectraWithEnergy", OVGetFullDirSpectraWithEnergy, kRows);
    expectRefusedOnCurrent("OVGetFullWaveDirSpectrum", OVGetFullWaveDirSpectrum, kRows);
}

TEST_F(NullArguments, TheSpectrumsAddressIsGivenWhereItIsWanted) {
    float *spectrum = nullptr;
    std::int32_t count = -1;
    EXPECT_EQ(OVGetEnergySpec_ptr(nullptr, &spectrum, &count), -1);
    EXPECT_EQ(spectrum, nullptr);
    EXPECT_EQ(count, -1);
    EXPECT_EQ(OVGetEnergySpec_ptr(record(), nullptr, nullptr), 0);
    EXPECT_EQ(OVGetEnergySpec_ptr(record(), &spectrum, nullptr), 0);
    EXPECT_EQ(spectrum, record()->spectraUsed);
    EXPECT_EQ(OVGetEnergySpec_ptr(record(), nullptr, &count), 0);
    EXPECT_EQ(count, 0);
}

TEST_F(NullArguments, FlattenedSettersRefuseEachNullArray) {
    const std::int16_t matrix[16] = {};
    const std::uint16_t words[4] = {};
    const float values[4] = {};
    for (OVRecord *const current : {record(), static_cast<OVRecord *>(nullptr)}) {
        VELTASetWaveVariablesPointer(current);
        EXPECT_EQ(OVSetInstrumentConfigLV(1, 2, 3, 4.0F, 5.0F, 3, 0, nullptr, 9), -1);
        EXPECT_EQ(OVSetWaveHeaderLV(1, 2, 3.0F, 4.0F, 5.0F, 6.0F, 7.0F, 8.0F, 9, nullptr, 1), -1);
        EXPECT_EQ(OVSetWaveSampleLV(1, 2.0F, 3.0F, nullptr, words), -1);
        EXPECT_EQ(OVSetWaveSampleLV(1, 2.0F, 3.0F, values, nullptr), -1);
    }
    VELTASetWaveVariablesPointer(nullptr);
    EXPECT_EQ(OVSetInstrumentConfigLV(1, 2, 3, 4.0F, 5.0F, 3, 0, matrix, 9), -1);
    EXPECT_EQ(OVSetProcParLV(3, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0), -1);
    EXPECT_EQ(OVSetWaveHeaderLV(1, 2, 3.0F, 4.0F, 5.0F, 6.0F, 7.0F, 8.0F, 9, words, 1), -1);
    EXPECT_EQ(OVSetWaveSampleLV(1, 2.0F, 3.0F, values, words), -1);
}

TEST_F(NullArguments, FlattenedMeanCurrentWantsAllThreeValues) {
    float value = 7.0F;
    VELTASetWaveVariablesPointer(record());
    EXPECT_EQ(OVGetMeanBurstCurrentLV(0, nullptr, &value, &value), -1);
    EXPECT_EQ(OVGetMeanBurstCurrentLV(0, &value, nullptr, &value), -1);
    EXPECT_EQ(OVGetMeanBurstCurrentLV(0, &value, &value, nullptr), -1);
    VELTASetWaveVariablesPointer(nullptr);
    EXPECT_EQ(OVGetMeanBurstCurrentLV(0, &value, &value, &value), -1);
    EXPECT_EQ(value, 7.0F);
}

TEST_F(NullArguments, FlattenedGettersSkipWhatIsNotWanted) {
    VELTASetWaveVariablesPointer(record());
    EXPECT_EQ(OVGetWaveParLV(nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr,
                             nullptr, nullptr, nullptr, nullptr, nullptr, nullptr),
              0);
    VELTASetWaveVariablesPointer(nullptr);
    float depth = 7.0F;
    EXPECT_EQ(OVGetWaveParLV(nullptr, &depth, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr,
                             nullptr, nullptr, nullptr, nullptr, nullptr, nullptr),
              -1);
    EXPECT_EQ(OVGetWaveSpectrumLV(nullptr, nullptr, nullptr, &depth, nullptr, nullptr, nullptr,
                                  nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr),
              -1);
    EXPECT_EQ(depth, 7.0F);
}

TEST_F(NullArguments, FlattenedBandEstimateWantsEveryPointer) {
    float value = 7.0F;
    std::uint32_t bits = 7;
    std::uint16_t status = 7;
    VELTASetWaveVariablesPointer(record());
    for (int absent = 0; absent < 8; ++absent) {
        float *const v[] = {absent == 0 ? nullptr : &value, absent == 1 ? nullptr : &value,
                            absent == 2 ? nullptr : &value, absent == 3 ? nullptr : &value,
                            absent == 4 ? nullptr : &value, absent == 5 ? nullptr : &value};
        EXPECT_EQ(OVGetBandEstLV(v[0], v[1], v[2], v[3], v[4], v[5], absent == 6 ? nullptr : &bits,
                                 absent == 7 ? nullptr : &status),
                  -1)
            << absent;
    }
    VELTASetWaveVariablesPointer(nullptr);
    EXPECT_EQ(OVGetBandEstLV(&value, &value, &value, &value, &value, &value, &bits, &status), -1);
    EXPECT_EQ(value, 7.0F);
    EXPECT_EQ(bits, 7U);
    EXPECT_EQ(status, 7);
}

TEST_F(NullArguments, Version) { EXPECT_EQ(OVGetOrvikBaseVer(nullptr, 10), -1); }

} // namespace
