// Velocity noise of a profile cell from the instrument's acoustic settings.
#pragma once

#include "frame/record.hpp"

namespace ov {

// Noise of one sample [cm/s] for the record's cell length, ambiguity velocity, frequency, beams and pings. 0 where the
// settings give no finite value.
float profileVelocityNoise(const WaveVariables &rec);

} // namespace ov
