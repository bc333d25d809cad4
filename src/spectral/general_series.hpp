// Series set-up of a point instrument: beam directions, velocity conversion, the series list and its transforms.
#pragma once

#include "frame/record.hpp"

namespace ov {

// Builds the series list with types, positions and beam directions, finds the mean velocity, and transforms every
// series into its slot of seriesSpecRe and seriesSpecIm. The burst's series themselves stay as they are.
void buildGeneralSeries(WaveVariables &rec);

} // namespace ov
