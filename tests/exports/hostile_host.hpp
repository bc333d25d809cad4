// A host that hands over anything: its structures end at a guard page to the byte and are misaligned as packed
// structures may be, and the record lies between guard pages.
#pragma once

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <cstring>
#include <iterator>

#include <gtest/gtest.h>

#include "exports/burst_results.hpp"
#include "frame/record.hpp"
#include "guarded_memory.hpp"
#include "orvikbase/orvikbase.h"

namespace orvik::test {

// One structure of the host, ending at a guard page: of odd size, it is misaligned.
template <class Structure> class Guarded {
public:
    Guarded() : memory_(sizeof(Structure), GuardedEdge::back) {}
    Structure *operator->() const { return get(); }
    Structure *get() const { return memory_.as<Structure>(); }
    void set(const Structure &value) const { std::memcpy(memory_.data(), &value, sizeof value); }

private:
    GuardedMemory memory_;
};

struct DirectionRows {
    float values[OV_MAX_FREQUENCIES * OV_MAX_DIRECTIONS];
};

// Everything a host may hand over.
struct Host {
    Guarded<OVInstrumentConfig> config;
    Guarded<OVProcessingParameters> parameters;
    Guarded<OVWaveHeader> header;
    Guarded<OVWaveSample> sample;
    Guarded<OVWaveSampleSUV> sampleSuv;
    Guarded<OVProfileInstrumentConfig> profileConfig;
    Guarded<OVWaveSampleProfile> profileSample;
    Guarded<OVPreProcessOutput> preProcess;
    Guarded<OVPreProcessOutputSUV> preProcessSuv;
    Guarded<OVWaveParameterSet> results;
    Guarded<OVFourierCoefficientSpectra> spectra;
    Guarded<OVEnergySpectrumBlock> energy;
    Guarded<OVScaledEnergySpectrum> scaled;
    Guarded<OVMeanCurrentQuery> current;
    Guarded<OVSpectraUsedInput> spectraUsed;
    Guarded<OVBandEstimate> band;
    Guarded<DirectionRows> rows;
};

inline void readEverything(OVRecord *record, const Host &host) {
    OVGetWavePar_ptr(record, host.results.get());
    OVGetEnergySpecStruct_ptr(record, host.energy.get());
    OVGetScaledEnergySpec_ptr(record, host.scaled.get());
    for (std::int32_t kind = -1; kind < 4; ++kind) {
        OVGetScaledEnergySpecAllType_ptr(record, kind, host.scaled.get());
        host.current->selector = kind;
        OVGetMeanBurstCurrent_ptr(record, host.current.get());
    }
    OVGetBandEst_ptr(record, host.band.get());
    OVGetFullDirSpectraWithEnergy_ptr(record, host.rows->values);
    OVGetWaveSpectrum_ptr(record, host.spectra.get());
    OVGetDirectionalSpectrum_ptr(record, host.spectra.get());
    OVGetFullWaveDirSpectrum_ptr(record, host.rows->values);
}

// What a host relies on after processing: results in range, or -9 and a flag.
inline void expectResultsOrFlags(OVRecord *record, bool processed, const Host &host) {
    OVGetWavePar_ptr(record, host.results.get());
    const OVWaveParameterSet set = *host.results.get();
    const float *const w = record->waveParameters;
    if (!processed) {
        EXPECT_EQ(+set.qualityFlags, OV_FLAG_NO_RESULT);
        for (int slot = 0; slot < OV_WAVE_PARAMETERS; ++slot) {
            EXPECT_EQ(+set.waveParameters[slot], -9.0F) << slot;
        }
        return;
    }
    struct Range {
        int slot;
        float low, high;
    };
    constexpr Range kRanges[] = {{OV_HM0, -9.0F, 20.0F},
                                 {OV_TM02, 0.5F, 35.0F},
                                 {OV_TP, 0.5F, 50.0F},
                                 {OV_PEAK_SPREAD, 0.0F, 90.0F},
                                 {OV_MEAN_DIRECTION, 0.0F, 360.0F},
                                 {OV_RESULTANT_LENGTH, 0.0F, 1.0F}};
    for (const Range &range : kRanges) {
        const float value = w[range.slot];
        const bool missing = value == -9.0F;
        EXPECT_TRUE(missing || (value >= range.low && value <= range.high))
            << range.slot << ": " << value;
        EXPECT_TRUE(!missing || (record->qualityFlags & OV_FLAG_INVALID_PARAMETERS) != 0)
            << range.slot;
    }
    for (const int slot : {OV_H_THIRD, OV_H_TENTH, OV_H_MAX}) {
        EXPECT_FALSE(std::isnan(w[slot])) << slot;
    }
}

// Writes that stay inside the record and yet go astray would end here.
inline void expectReservedZero(const OVRecord &record) {
    EXPECT_TRUE(std::all_of(std::begin(record.reserved), std::end(record.reserved),
                            [](std::uint8_t b) { return b == 0; }));
}

class HostileBurst : public testing::Test {
protected:
    HostileBurst() : memory_(OV_RECORD_BYTES, GuardedEdge::back) {}
    OVRecord *record() const { return memory_.as<OVRecord>(); }

    // The sequence of calls with every structure behind a guard page; returns what OVProcess said.
    bool run(const SyntheticBurst &burst) {
        host_.config.set(burst.config);
        host_.parameters.set(burst.parameters);
        host_.header.set(burst.header);
        OVSetInstrumentConfig_ptr(record(), host_.config.get());
        OVSetProcPar_ptr(record(), host_.parameters.get());
        OVSetWaveHeader_ptr(record(), host_.header.get());
        for (const OVWaveSample &sample : burst.samples) {
            host_.sample.set(sample);
            OVSetWaveSample_ptr(record(), host_.sample.get());
        }
        return finish();
    }

    bool runProfile(const SyntheticBurst &burst) {
        host_.profileConfig.set(makeProfileConfig(burst.config));
        host_.parameters.set(burst.parameters);
        host_.header.set(makeProfileHeader(burst.header));
        VELTASetInstrumentConfig_ptr(record(), host_.profileConfig.get());
        VELTASetProcPar_ptr(record(), host_.parameters.get());
        VELTASetWaveHeader_ptr(record(), host_.header.get());
        for (const OVWaveSample &sample : burst.samples) {
            host_.profileSample.set(makeProfileSample(sample));
            VELTASetWaveSampleProfile_ptr(record(), host_.profileSample.get());
        }
        VELTAPreProcess_ptr(record(), 0, host_.preProcess.get());
        return process();
    }

    bool finish() {
        OVPreProcess_ptr(record(), 0, host_.preProcess.get());
        return process();
    }

    bool process() {
        const bool processed = OVProcess_ptr(record());
        expectResultsOrFlags(record(), processed, host_);
        readEverything(record(), host_);
        return processed;
    }

    const Host &host() const { return host_; }

private:
    GuardedMemory memory_;
    Host host_;
};

// Few bins and directions: the branches count here, not the resolution.
inline SyntheticBurst smallBurst(int method, int instrumentType = 3, int nSamples = 128) {
    SyntheticBurst burst = makeSyntheticBurst(
        {.method = method, .instrumentType = instrumentType, .nSamples = nSamples});
    burst.parameters.freqStep = 0.05F;
    burst.parameters.nDirections = 12;
    return burst;
}

template <class Change> void forEverySample(SyntheticBurst &burst, Change change) {
    for (OVWaveSample &sample : burst.samples) {
        change(sample);
    }
}

} // namespace orvik::test
