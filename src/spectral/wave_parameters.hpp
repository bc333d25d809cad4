// Spectral wave parameters: heights, periods, directions and spreads, and the spatial-aliasing limit.
#pragma once

#include "frame/record.hpp"

namespace ov {

// Selects the spectrum behind the parameters and derives Hm0, Tm02, Tm-10 and the mean direction.
void spectralMoments(WaveVariables &rec);

// Peak period with the direction and spread at the peak.
void peakParameters(WaveVariables &rec);

// Peak period from the surface-track spectrum on the fine axis.
void findFinePeak(WaveVariables &rec);

// Mode 0: flags a peak whose wavelength is too short for the sensor spacing, and returns its bin. Mode 1: finds the
// bins free of spatial aliasing.
int aliasingLimit(WaveVariables &rec, int mode);

} // namespace ov
