// Directional results for the host, and Fourier coefficients and spectra from it.
#pragma once

#include "frame/record.hpp"

namespace ov {

// Loads the host's coefficients; writes directions and spreads back into its block.
void setFourierCoefficients(WaveVariables &rec, OVFourierCoefficientSpectra &block);

// Takes over `count` values as the spectrum behind the wave parameters.
void setSpectraUsed(WaveVariables &rec, const void *values, std::int32_t count);

// Directions and spreads of a block from its own first-order coefficients. With reverseDirections, the record's mean
// directions are turned round at every call; the block's are not.
void getDirectionalSpectrum(WaveVariables &rec, OVFourierCoefficientSpectra &block);

// Energy times distribution, rows of 90.
void getFullDirSpectraWithEnergy(const WaveVariables &rec, float *out);

// Maximum entropy distribution of every bin as bin weights, rows of 90; a copy goes to dirSpectrum.
void getFullWaveDirSpectrum(WaveVariables &rec, float *out);

} // namespace ov
