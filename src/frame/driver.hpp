// The pipeline of one burst, from prepared series to results.
#pragma once

#include "frame/record.hpp"

namespace ov {

// Runs a prepared record. Never fails: what it finds goes to qualityFlags, and what cannot be computed is missing.
void runDriver(WaveVariables &rec);

} // namespace ov
