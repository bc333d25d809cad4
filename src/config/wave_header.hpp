// The burst header: depths and heights from counts, the burst length, and the start of a new burst.
#pragma once

#include "frame/record.hpp"

namespace ov {

// Opens a burst. Rewrites the header's nSamples with the length in use.
void setWaveHeader(WaveVariables &rec, OVWaveHeader &header);

// The same for a profile instrument: cell size and blanking come as vertical distances and are turned along the beams.
void setProfileWaveHeader(WaveVariables &rec, OVProfileWaveHeader &header);

// Burst length in use for `requested` samples: above 512 the next lower power of two, at most 16384.
std::int32_t usableBurstLength(std::int32_t requested);

// Clears what an earlier burst left: cursor, counters, flags, and the elements just past the burst that repair and
// padding may read.
void openBurst(WaveVariables &rec);

} // namespace ov
