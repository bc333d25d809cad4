// Processing entry: the sequence around one run, with the preparation before it and the reset when there is no burst.
#pragma once

#include "frame/record.hpp"

namespace ov {

// Runs the burst when it is ready, else makes every result missing. Returns whether there are results.
bool processBurst(WaveVariables &rec);

// Readies the record for a run: clears what the run accumulates and derives its settings.
void prepareRun(WaveVariables &rec);

// Makes every result missing.
void resetResults(WaveVariables &rec);

} // namespace ov
