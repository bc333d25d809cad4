// Result getters: copy results into the host's structures, in the host's units, with missing values marked.
#pragma once

#include "frame/record.hpp"

namespace ov {

void getWaveParameters(const WaveVariables &rec, OVWaveParameterSet &out);

// Bins beyond the spatial-aliasing limit become missing in the record itself as they are read.
void getWaveSpectrum(WaveVariables &rec, OVFourierCoefficientSpectra &out);

void getEnergySpectrum(const WaveVariables &rec, OVEnergySpectrumBlock &out);

// The spectrum behind the wave parameters, scaled to 16 bits.
void getScaledEnergySpectrum(const WaveVariables &rec, OVScaledEnergySpectrum &out);

// The same of a spectrum by kind: 0 pressure, 1 velocity, 3 surface track, any other the one behind the parameters.
void getScaledSpectrumOfKind(const WaveVariables &rec, std::int32_t kind,
                             OVScaledEnergySpectrum &out);

// Three values of the mean current by `selector`; returns false for a selector that names none.
bool getMeanCurrent(const WaveVariables &rec, std::int32_t selector, float (&values)[3]);

} // namespace ov
