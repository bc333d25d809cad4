// Bursts that end a little before a power of two of samples, which is what the library works on.
#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

#include "burst/burst.hpp"

namespace orvik {

// The power of two that a burst is completed to: of those longer than 512 samples that lack, with the `missing` ones
// inside, no more than a tenth of it. Any other burst has its own length.
std::size_t completedLength(std::size_t samples, std::size_t missing);

// The burst made longer with a stretch of its own that goes on as its end does: the same sea and current, and no jump. The
// last sample repeated, as the library would do, is a still sea: heights and current would be too small by several percent.
Burst completed(const Burst &burst, const std::vector<std::uint8_t> &present, std::size_t length);

} // namespace orvik
