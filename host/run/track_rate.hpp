// Point instruments that sample faster than the library follows with their surface track.
#pragma once

#include <cstdint>
#include <vector>

#include "burst/burst.hpp"

namespace orvik {

// The library takes a point instrument's surface track for one of 4 Hz at any rate above 2 Hz, and would find every wave
// twice as long, or longer, at a higher one. Methods with a track get faster bursts at 2 Hz, which holds every wave that
// the library's axes reach.
bool isFasterThanTrack(const Instrument &instrument, int method);

Instrument atTrackRate(const Instrument &instrument);

// `instrument` is as it was told. Pressure and velocities are low-passed, surface-track values taken as they are, so that
// misses and spikes remain what they are.
Burst atTrackRate(const Instrument &instrument, const Burst &burst,
                  const std::vector<std::uint8_t> &present);

} // namespace orvik
