// Zero-crossing statistics of the surface track.
#pragma once

#include "frame/record.hpp"

namespace ov {

// Element i of the surface track, scaled to the vertical.
inline float scaledTrack(const WaveVariables &rec, int i) {
    return rec.astSeries[i] * rec.surfaceTrackCosine;
}

// Heights and periods of the highest third, the highest tenth, the highest wave and all waves, into wave parameters
// OV_H_THIRD to OV_T_CROSSING; all missing without a complete wave. Uses fftWork as scratch.
void zeroCrossingStatistics(WaveVariables &rec);

} // namespace ov
