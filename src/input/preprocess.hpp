// Pre-processing: completes or rejects the burst, cleans and detrends its series, and hands them to the host.
#pragma once

#include "frame/record.hpp"

namespace ov {

// Decides readyFlag: pads a burst that misses at most 10 % of its samples, rejects one that misses more. Does nothing
// once the burst is ready.
void completeBurst(WaveVariables &rec);

void preProcess(WaveVariables &rec, OVPreProcessOutput &output);
void preProcessSuv(WaveVariables &rec, OVPreProcessOutputSUV &output);

// Flattened form: no structure of 1.4 MB on the caller's stack. `astOut` receives OV_MAX_TRACK_SAMPLES values.
struct PreProcessFlags {
    float windowBelow;
    float windowAbove;
    bool useWindow;
    bool skipAstCleaning;
};
void preProcessFlat(WaveVariables &rec, const PreProcessFlags &flags, float *astOut);

} // namespace ov
