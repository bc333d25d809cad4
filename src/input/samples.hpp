// Sample input: one sample of the burst at a time, in time order.
#pragma once

#include "frame/record.hpp"

namespace ov {

// Stores the sample at the cursor. Missing samples repeat their predecessor and are counted. Samples past the burst are
// dropped, but still advance the cursor and count for the weak-signal flag.
void storeSample(WaveVariables &rec, OVWaveSample &sample);

// The same with two extra channels; here a sample past the burst changes nothing at all.
void storeSampleSuv(WaveVariables &rec, OVWaveSampleSUV &sample);

} // namespace ov
