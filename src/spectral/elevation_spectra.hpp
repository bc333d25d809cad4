// Surface-elevation spectra of a frequency bin from velocity and pressure, and their cut and tail.
#pragma once

#include "frame/record.hpp"

namespace ov {

// From two horizontal velocities and the pressure (methods 1 and 2).
void elevationSpectraFromHorizontal(WaveVariables &rec, int i);

// From along-beam velocities and the pressure (methods 3 and 4). Reads the model gains on mlmMatrix's diagonal.
void elevationSpectraPerBeam(WaveVariables &rec, int i);

// Square root of the ratio of two elevation spectra, without the noise removed.
void checkRatioAtBin(WaveVariables &rec, int i);

// Replaces what depth makes unusable: a power-law tail above the cut, a steep rise below the lowest bins.
void cutAndTailSpectra(WaveVariables &rec);

} // namespace ov
