// The instrument as the host describes it.
#pragma once

#include "frame/record.hpp"

namespace ov {

// Copies the host's configuration into the record and derives the cell size. Nothing is validated.
void setInstrumentConfig(WaveVariables &rec, const OVInstrumentConfig &config);

} // namespace ov
