// First- and second-order directional Fourier coefficients of a frequency bin, with mean direction and spread.
#pragma once

#include "frame/record.hpp"
#include "spectral/direction_table.hpp"

namespace ov {

// From the cross-spectral matrix of an elevation-like series and two horizontal velocities.
void computeMomentsFromCrossSpectra(WaveVariables &rec, int f);

// From the directional distribution of the bin.
void computeMomentsFromDistribution(WaveVariables &rec, const DirectionTable &table, int f);

// Nautical direction [degrees, 0 to 360] of the vector (a, b), a east and b north; turned round when `reverse`.
float nauticalDirection(float a, float b, bool reverse);

// Circular spread [degrees] of first-order coefficients: sqrt(2 (1 - r1)), r1 at most 1.
float circularSpread(float a, float b);

} // namespace ov
