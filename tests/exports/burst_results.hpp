// A whole burst of either kind of instrument through the exported functions, and what every getter then says.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <memory>
#include <vector>

#include "orvikbase/orvikbase.h"
#include "support/synthetic_burst.hpp"

namespace orvik::test {

inline constexpr int kProfileType = 16;
inline constexpr int kProfileCells = 12;

// The profile that belongs to a point sample: every cell sees its velocities, decreasing a little with range.
inline OVWaveSampleProfile makeProfileSample(const OVWaveSample &point) {
    OVWaveSampleProfile sample{};
    sample.valid = point.valid;
    sample.pressure = point.pressure;
    sample.astDistance1 = point.astDistance1;
    sample.astDistance2 = point.astDistance2;
    for (int b = 0; b < OV_MAX_BEAMS; ++b) {
        const float velocity = b < 3 ? point.velocity[b] : -point.velocity[1];
        for (int cell = 0; cell < kProfileCells; ++cell) {
            sample.profileVelocity[b][cell] = static_cast<std::int16_t>(
                velocity * 1000.0F * (1.0F - 0.01F * static_cast<float>(cell)));
            sample.profileAmplitude[b][cell] = static_cast<std::uint8_t>(200 - 5 * cell - b);
            sample.profileCorrelation[b][cell] = static_cast<std::uint8_t>(95 - 2 * cell - b);
        }
    }
    sample.attitude[0] = 12.0F;
    sample.attitude[1] = 1.5F;
    sample.attitude[2] = -0.5F;
    return sample;
}

inline OVProfileInstrumentConfig makeProfileConfig(const OVInstrumentConfig &point) {
    OVProfileInstrumentConfig config{};
    std::memcpy(&config, &point, sizeof point);
    config.instrumentType = kProfileType;
    config.beamCount = 4;
    config.lagParameter = 1.5F;
    return config;
}

inline OVProfileWaveHeader makeProfileHeader(const OVWaveHeader &point) {
    OVProfileWaveHeader header = point;
    header.directHeight = 0.7F;
    header.directDepth = 0.5F;
    header.nCells = kProfileCells;
    header.surfaceTimeOffset = 1250;
    return header;
}

// Configuration, parameters, header and samples.
inline void sendBurst(OVRecord *record, const SyntheticBurst &burst) {
    if (burst.config.instrumentType != kProfileType) {
        openBurst(record, burst);
        sendSamples(record, burst);
        return;
    }
    const OVProfileInstrumentConfig config = makeProfileConfig(burst.config);
    OVProfileProcessingParameters parameters = burst.parameters;
    parameters.profileParamA = 90.0F;
    OVProfileWaveHeader header = makeProfileHeader(burst.header);
    VELTASetInstrumentConfig_ptr(record, &config);
    VELTASetProcPar_ptr(record, &parameters);
    VELTASetWaveHeader_ptr(record, &header);
    for (const OVWaveSample &point : burst.samples) {
        OVWaveSampleProfile sample = makeProfileSample(point);
        VELTASetWaveSampleProfile_ptr(record, &sample);
    }
}

// Host memory for pre-processing and every getter, once: nothing is allocated while a burst is in hand.
struct HostBuffers {
    OVPreProcessOutput preProcess;
    OVWaveParameterSet parameters;
    OVFourierCoefficientSpectra spectra[3];
    OVEnergySpectrumBlock energy;
    OVScaledEnergySpectrum scaled[5];
    OVMeanCurrentQuery current[4];
    OVBandEstimate bands[3];
    float energyDirections[OV_MAX_FREQUENCIES * OV_MAX_DIRECTIONS];
    float entropyDirections[OV_MAX_FREQUENCIES * OV_MAX_DIRECTIONS];
    float *spectrumAddress;
    std::int32_t spectrumCount;
};

// Pre-processes and processes; returns what OVProcess said.
inline bool runBurst(OVRecord *record, bool profile, HostBuffers &host) {
    if (profile) {
        VELTAPreProcess_ptr(record, 0, &host.preProcess);
    } else {
        OVPreProcess_ptr(record, 0, &host.preProcess);
    }
    return OVProcess_ptr(record);
}

inline void readResults(OVRecord *record, HostBuffers &host) {
    OVGetWavePar_ptr(record, &host.parameters);
    OVGetEnergySpec_ptr(record, &host.spectrumAddress, &host.spectrumCount);
    OVGetEnergySpecStruct_ptr(record, &host.energy);
    OVGetScaledEnergySpec_ptr(record, &host.scaled[4]);
    for (std::int32_t kind = 0; kind < 4; ++kind) {
        OVGetScaledEnergySpecAllType_ptr(record, kind, &host.scaled[kind]);
    }
    for (std::int32_t selector = 0; selector < 2; ++selector) {
        host.current[selector].selector = selector;
        OVGetMeanBurstCurrent_ptr(record, &host.current[selector]);
        VELTAGetMeanBurstCurrent_ptr(record, selector, &host.current[2 + selector]);
    }
    constexpr float kLimits[][2] = {{0.0F, 10.0F}, {0.05F, 0.2F}, {0.3F, 0.45F}};
    for (std::size_t i = 0; i < 3; ++i) {
        host.bands[i].fLow = kLimits[i][0];
        host.bands[i].fHigh = kLimits[i][1];
        OVGetBandEst_ptr(record, &host.bands[i]);
    }
    OVGetFullDirSpectraWithEnergy_ptr(record, host.energyDirections);
    OVGetWaveSpectrum_ptr(record, &host.spectra[0]);
    OVGetWaveSpectrum_ptr(record,
                          &host.spectra[1]); // directions past the aliasing limit are missing now
    OVGetWaveSpectrum_ptr(record, &host.spectra[2]);
    OVGetDirectionalSpectrum_ptr(record, &host.spectra[2]);
    OVGetFullWaveDirSpectrum_ptr(record, host.entropyDirections);
}

// Everything the getters wrote, and the rows of pre-processing as far as hosts use them.
inline std::vector<unsigned char> resultBytes(const HostBuffers &host, int samples) {
    const auto *const from = reinterpret_cast<const unsigned char *>(&host.parameters);
    const auto *const to = reinterpret_cast<const unsigned char *>(&host.spectrumAddress);
    std::vector<unsigned char> bytes(from, to);
    for (int i = 0; i < samples; ++i) {
        const auto *const row = reinterpret_cast<const unsigned char *>(&host.preProcess.rows[i]);
        bytes.insert(bytes.end(), row, row + sizeof host.preProcess.rows[i]);
    }
    return bytes;
}

} // namespace orvik::test
