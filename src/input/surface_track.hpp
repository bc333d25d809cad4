// Cleaning of the acoustic surface track, and the verdict whether it is usable.
#pragma once

#include "frame/record.hpp"

namespace ov {

// Cleans the `astLength` elements of `series` in place, finds its level, and sets surfaceTrackValid and the counters.
void cleanAst(WaveVariables &rec, float *series);

} // namespace ov
