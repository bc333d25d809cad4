// The instrument as the host describes it.
#pragma once

#include "frame/record.hpp"

namespace ov {

// Copies the host's configuration into the record and derives the cell size. Nothing is validated.
void setInstrumentConfig(WaveVariables &rec, const OVInstrumentConfig &config);

// The same for a profile instrument, with its beams and lag.
void setProfileInstrumentConfig(WaveVariables &rec, const OVProfileInstrumentConfig &config);

} // namespace ov
