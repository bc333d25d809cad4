// Wave parameters over a frequency band of the host's choice.
#pragma once

#include "frame/record.hpp"

namespace ov {

// Fills `band` for its limits fLow and fHigh; returns false (and everything missing) without a processed burst. Writes
// nothing in the record but the spatial-aliasing limit.
bool estimateBand(WaveVariables &rec, OVBandEstimate &band);

} // namespace ov
