// Where a spectrum ends and its power-law tail begins.
#pragma once

#include <cstddef>
#include <optional>
#include <span>

namespace orvik {

// At frequencies that depth hides from a sensor the library continues its spectrum by S(f) ~ f^-4.5. The bin that this
// tail hangs on, the last that was measured; nothing when there is no tail (or no energy to tell it by).
std::optional<std::size_t> lastMeasuredBin(std::span<const float> density,
                                           std::span<const double> frequencies);

} // namespace orvik
