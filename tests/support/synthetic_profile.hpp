// The synthetic burst as a profile instrument would send it: 20 cells of half a metre on three beams, the water moving
// faster towards the surface. Integers throughout, as in synthetic_burst.hpp.
#pragma once

#include "synthetic_burst.hpp"

namespace orvik::test {

inline constexpr std::uint32_t kProfileCells = 20;
inline constexpr int kProfileType = 16;

inline void openProfileBurst(OVRecord *record, const SyntheticBurst &burst) {
    OVProfileInstrumentConfig config{};
    config.pingsPerSample = burst.config.pingsPerSample;
    config.samplingRate = burst.config.samplingRate;
    config.burstSamples = burst.config.burstSamples;
    config.acousticFrequency = burst.config.acousticFrequency;
    config.slantAngle = burst.config.slantAngle;
    config.instrumentType = kProfileType;
    config.attitudeMode = burst.config.attitudeMode;
    for (std::size_t i = 0; i < 9; ++i) {
        config.transformMatrix[i] = burst.config.transformMatrix[i];
    }
    config.cellSizeCounts = 42; // 0.5 m
    config.beamAzimuth[1] = 120.0F;
    config.beamAzimuth[2] = 240.0F;
    config.beamCount = 3;
    config.lagParameter = 1.5F;

    OVProfileProcessingParameters parameters = burst.parameters;
    parameters.estimateMask = parameters.directionalInputMode == 2 ? 23 : 7;
    parameters.profileParamA = 90.0F; // percent of the distance to the deepest trough

    OVProfileWaveHeader header = burst.header;
    header.directHeight = 0.5F;
    header.directDepth = 0.5F;
    header.nCells = kProfileCells;

    VELTASetInstrumentConfig_ptr(record, &config);
    VELTASetProcPar_ptr(record, &parameters);
    VELTASetWaveHeader_ptr(record, &header);
}

inline void sendProfileSamples(OVRecord *record, const SyntheticBurst &burst) {
    OVWaveSampleProfile profile{};
    for (const OVWaveSample &sample : burst.samples) {
        profile.valid = sample.valid;
        profile.pressure = sample.pressure;
        profile.astDistance1 = sample.astDistance1;
        profile.astDistance2 = sample.astDistance2;
        for (std::size_t beam = 0; beam < 3; ++beam) {
            const int millimetres = static_cast<int>(sample.velocity[beam] * 1000.0F);
            for (std::size_t cell = 0; cell < kProfileCells; ++cell) {
                const int factor = 20 + static_cast<int>(cell);
                profile.profileVelocity[beam][cell] =
                    static_cast<std::int16_t>(millimetres * factor / 35);
                profile.profileAmplitude[beam][cell] =
                    static_cast<std::uint8_t>(sample.amplitude[beam] - 2U * cell);
                profile.profileCorrelation[beam][cell] = 90;
            }
        }
        profile.attitude[0] = burst.header.heading;
        profile.attitude[1] = burst.header.pitch;
        profile.attitude[2] = burst.header.roll;
        VELTASetWaveSampleProfile_ptr(record, &profile);
    }
}

} // namespace orvik::test
