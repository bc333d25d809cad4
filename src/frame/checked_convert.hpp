// Float to integer without undefined behaviour: the one place where the library does it.
#pragma once

#include <cstdint>
#include <limits>

namespace ov {

// Truncates towards zero. A value that is no number or does not fit gives INT32_MIN.
inline std::int32_t truncateToInt(double value) {
    constexpr double kBelow = -2147483649.0;
    constexpr double kAbove = 2147483648.0;
    if (!(value > kBelow && value < kAbove)) {
        return std::numeric_limits<std::int32_t>::min();
    }
    return static_cast<std::int32_t>(value);
}

} // namespace ov
