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

// Whether nothing of a velocity spectrum was measured. Where depth hides the waves from the cell at every frequency, the
// tail begins at the lowest one; the library then turns its long-wave end into a rise S(f) ~ f^10. Or all of it is
// below the noise, and nothing is left.
bool isNothingButTail(std::span<const float> density, std::span<const double> frequencies);

// A height of which too little was measured: what it lacks may be most of the sea.
struct UnmeasuredHeight {
    double frequency; // the last that was measured [Hz]
    double share;     // of m0 that lies in the tail
};

// Nothing when the spectrum behind the height was measured well beyond its peak. `cutoff` is its last measured frequency.
std::optional<UnmeasuredHeight> unmeasuredHeight(std::span<const double> density,
                                                 std::span<const double> frequencies,
                                                 double cutoff);

} // namespace orvik
