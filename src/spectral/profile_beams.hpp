// Where the beams of a tilted profile instrument point.
#pragma once

#include <array>

#include "frame/record.hpp"
#include "spectral/rotation.hpp"

namespace ov {

// Unit directions of beams 1 to 4 in the level frame at heading 0.
std::array<Vector3, kMaxBeams> profileBeamDirections(const WaveVariables &rec);

// Direction of the surface-track beam.
Vector3 trackBeamDirection(const WaveVariables &rec);

} // namespace ov
