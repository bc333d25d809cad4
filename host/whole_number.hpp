// Numbers of files become whole ones here, whatever stands in the file.
#pragma once

#include <cmath>
#include <limits>
#include <type_traits>

namespace orvik {

// `value` without its fraction; `otherwise` when that is beyond the type, or no number.
template <typename Whole> Whole wholeOr(double value, Whole otherwise) {
    const double past = std::ldexp(1.0, std::numeric_limits<Whole>::digits);
    const double least = std::is_signed_v<Whole> ? -past : 0.0;
    return value > least - 1.0 && value < past ? static_cast<Whole>(value) : otherwise;
}

} // namespace orvik
