// Linear wave theory: what each sensor records of a wave of unit elevation, by frequency and direction.
#pragma once

#include "frame/record.hpp"
#include "spectral/direction_table.hpp"

namespace ov {

// Gains below this are raised to it: exp(-8), an amplification of at most about 2981.
inline constexpr double kGainFloor = 3.3546262790251185e-4;

// cosh(k (h - d)) / cosh(k h): the pressure response at depth d in water of depth h. k h is formed in single
// precision. Where cosh(k h) overflows, the quotient's limit exp(-k d).
double pressureAttenuation(float waveNumber, float waterDepth, double depth);

// Orbital-velocity gains of every series and the pressure gain, for frequency bin i.
void linearTransferGains(WaveVariables &rec, int i);

// Gains, then the transfer matrix (series by direction) of frequency bin i.
void buildTransferMatrix(WaveVariables &rec, const DirectionTable &table, int i);

// Turns the spectra of all series to one sampling instant, that of the first velocity.
void alignSeriesPhases(WaveVariables &rec);

} // namespace ov
