// Mean of angles that survives the step from 360 to 0.
#pragma once

#include <cmath>
#include <vector>

#include "burst/burst.hpp"
#include "burst/geometry.hpp"

namespace orvik {

// [degrees]; missing angles are left out.
template <typename Number> double meanAngle(const std::vector<Number> &angles) {
    double east = 0.0;
    double north = 0.0;
    for (const Number angle : angles) {
        if (std::isfinite(angle)) {
            east += std::sin(static_cast<double>(angle) * kRadiansPerDegree);
            north += std::cos(static_cast<double>(angle) * kRadiansPerDegree);
        }
    }
    return east == 0.0 && north == 0.0 ? kUnknown : std::atan2(east, north) / kRadiansPerDegree;
}

// The same direction from 0 to less than 360 degrees, also once it is rounded to single precision.
inline double compassAngle(double angle) {
    const double turned = std::fmod(std::fmod(angle, 360.0) + 360.0, 360.0);
    return static_cast<float>(turned) < 360.0F ? turned : 0.0;
}

} // namespace orvik
