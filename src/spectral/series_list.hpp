// The series list that both kinds of instrument fill: what every series measures, where, and its spectrum.
#pragma once

#include "frame/record.hpp"
#include "spectral/rotation.hpp"

namespace ov {

// Empties the list and its spectra, so that a slot without a series is zero.
void clearSeriesList(WaveVariables &rec);

void setBeamDirection(WaveVariables &rec, int slot, const Vector3 &direction);

// Places entry k at `range` [m] along its beam.
void placeAlongBeam(WaveVariables &rec, int k, float range);

// Transforms what loadSample() placed into slot `slot`.
void transformSlot(WaveVariables &rec, int slot);

// Transforms a burst series into slot `slot`; the series stays as it is.
void transformSeries(WaveVariables &rec, int slot, const float *series);

} // namespace ov
