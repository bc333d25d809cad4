// Result getters: copy results into the host's structures, in the host's units, with missing values marked.
#pragma once

#include "frame/record.hpp"

namespace ov {

void getWaveParameters(const WaveVariables &rec, OVWaveParameterSet &out);

// Bins beyond the spatial-aliasing limit become missing in the record itself as they are read.
void getWaveSpectrum(WaveVariables &rec, OVFourierCoefficientSpectra &out);

void getEnergySpectrum(const WaveVariables &rec, OVEnergySpectrumBlock &out);

void getScaledEnergySpectrum(const WaveVariables &rec, OVScaledEnergySpectrum &out);

// Three values of the mean current by `selector`; returns false for a selector that names none.
bool getMeanCurrent(const WaveVariables &rec, std::int32_t selector, float (&values)[3]);

} // namespace ov
