// Processing choices: defaults, clamps and the frequency axes.
#pragma once

#include "frame/record.hpp"

namespace ov {

// Stores the host's choices with every value brought into range, builds both frequency axes, and writes the values in
// use back into `params`. Values that are no number pass the range tests unchanged.
void setProcessingParameters(WaveVariables &rec, OVProcessingParameters &params);

} // namespace ov
