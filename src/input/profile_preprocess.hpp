// Pre-processing of a profile instrument's burst: as for a point instrument, and the choice of the velocity cell.
#pragma once

#include "frame/record.hpp"

namespace ov {

void preProcessProfile(WaveVariables &rec, OVPreProcessOutput &output);

} // namespace ov
