// Series set-up of a profile instrument: beam directions, velocity conversion, the series list and its transforms.
#pragma once

#include "frame/record.hpp"

namespace ov {

// As buildGeneralSeries(), for three or four beams with the attitude of every sample. Uses the upper half of the
// transform's work area and the surface-track spectra as scratch.
void buildSeriesGeometry(WaveVariables &rec);

} // namespace ov
