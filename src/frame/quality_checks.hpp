// Checks of a processed burst. Each sets its bit of qualityFlags and, where stated, makes results missing.
#pragma once

#include "frame/record.hpp"

namespace ov {

// Surface-track statistics out of range: all of them become missing and the track is not used.
void checkTrackRange(WaveVariables &rec);

// The surface lies within half a metre of the acoustic range.
void checkClearance(WaveVariables &rec);

// Less than 1 m of water above the instrument.
void checkDepth(WaveVariables &rec);

// A spectrum whose cumulative sum is a straight line has no shape; the checked height becomes missing.
void checkSpectrumShape(WaveVariables &rec);

// Wave parameters that are impossible or not a number become missing, with those that depend on them.
void checkValidity(WaveVariables &rec);

// Tilt over 10 degrees.
void checkTilt(WaveVariables &rec);

// A spectrum that never decreases.
void checkSpectrumRise(WaveVariables &rec);

// Pressure that does not vary.
void checkSignal(WaveVariables &rec);

} // namespace ov
