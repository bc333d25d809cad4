// Sample input of a profile instrument: whole velocity profiles, one sample at a time.
#pragma once

#include <cstddef>

#include "frame/record.hpp"

namespace ov {

// Cells of a sample that are kept: at least one, so that the first cell never shows an earlier burst's.
std::size_t keptCells(const WaveVariables &rec);

// Makes the profile and attitude of sample i read 0.
void clearProfileAt(WaveVariables &rec, int i);

// Makes the profile and attitude of sample i those of sample i - 1.
void repeatProfileAt(WaveVariables &rec, int i);

// Stores the sample at the cursor. A missing sample repeats its predecessor and is counted; a sample past the burst
// changes nothing at all.
void storeProfileSample(WaveVariables &rec, OVWaveSampleProfile &sample);

} // namespace ov
