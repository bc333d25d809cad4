// Constants that more than one subsystem uses.
#pragma once

namespace ov {

inline constexpr double kGravity = 9.81; // [m/s^2]
inline constexpr double kPi = 3.141592653589793;
inline constexpr double kTwoPi = 6.283185307179586;
inline constexpr double kHalfPi = 1.5707963267948966;

// Circle constants of the single-precision parts: widened to double where they are used, never replaced by the above.
inline constexpr float kPiF = 3.1415927410125732F;
inline constexpr float kTwoPiF = 6.2831854820251465F;
inline constexpr float kHalfPiF = 1.5707963705062866F;

inline constexpr float kMissing = -9.0F; // any f32 result that could not be computed

inline constexpr int kProfileInstrument = 16; // instrumentType with per-cell series
inline constexpr float k400kHz =
    400000.0F; // compared exactly: the instrument that reports rate code 0

inline constexpr double kMatrixScale = 0.000244140625; // 1 / 4096, transformation-matrix entries

// seriesType codes
inline constexpr int kSurfaceTrackSeries = 1;
inline constexpr int kVelocitySeries = 3;
inline constexpr int kPressureSeries = 5;

// estimateMask bits
inline constexpr int kMaskBeam1 = 1;
inline constexpr int kMaskBeam2 = 2;
inline constexpr int kMaskBeam3 = 4;
inline constexpr int kMaskBeam4 = 8;         // profile instrument
inline constexpr int kMaskVerticalBeam = 8;  // every other type
inline constexpr int kMaskProfileTrack = 16; // profile instrument

} // namespace ov
