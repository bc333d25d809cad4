// Numbers of files become whole ones here, whatever stands in the file.
#pragma once

#include <limits>

namespace orvik {

// `value` without its fraction; `otherwise` when that is beyond the type, or no number.
template <typename Whole> Whole wholeOr(double value, Whole otherwise) {
    using Limits = std::numeric_limits<Whole>;
    constexpr double kPastLeast = static_cast<double>(Limits::min()) - 1.0;
    // The greatest of 64 bits is no double; the number after it is.
    constexpr double kPastMost = 2.0 * static_cast<double>(Limits::max() / 2 + 1);
    return value > kPastLeast && value < kPastMost ? static_cast<Whole>(value) : otherwise;
}

} // namespace orvik
