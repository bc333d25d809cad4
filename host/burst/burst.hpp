// A deployment as the host program holds it in memory: one instrument and its bursts, in physical units.
#pragma once

#include <array>
#include <cstdint>
#include <limits>
#include <optional>
#include <vector>

namespace orvik {

inline constexpr double kUnknown = std::numeric_limits<double>::quiet_NaN();

// Instrument facts that hold for a whole deployment. NaN marks what the source did not tell.
struct Instrument {
    double samplingRate = kUnknown;                 // [Hz] pressure and velocity
    double trackSamplingRate = kUnknown;            // [Hz] surface track, twice samplingRate
    double acousticFrequency = 1.0e6;               // [Hz]
    int instrumentType = 3;                         // the library's type code
    double slantAngle = 25.0;                       // [degrees] beams from the vertical
    std::vector<double> beamAzimuth;                // [degrees] from X towards Y, seen from above; may be empty
    std::optional<std::array<double, 9>> beamToXyz; // row by row
    double cellRange = kUnknown;                    // [m] along the beam, head to measurement cell
    double cellSize = 1.2;                          // [m] along the beam
    unsigned pingsPerSample = 60;
    double pressureHeight = 0.0; // [m] pressure sensor above the bed
    double declination = 0.0;    // [degrees] added to every direction
};

// Echo strength that stands for one the source did not tell: too strong to count as weak.
inline constexpr std::uint16_t kUnknownAmplitude = 100;

enum class VelocitySystem { none, beam, xyz, enu };

// One burst. Series hold one value a sample; NaN marks a missing value.
struct Burst {
    double startTime = kUnknown; // [s since 1970-01-01 00:00:00 UTC]
    double heading = kUnknown;   // [degrees]
    double pitch = kUnknown;     // [degrees]
    double roll = kUnknown;      // [degrees]
    std::vector<float> pressure; // [dbar]
    VelocitySystem velocitySystem = VelocitySystem::none;
    std::array<std::vector<float>, 3> velocity;          // [m/s] by beam or component
    std::vector<float> surfaceTrack;                     // [m] two values a sample, or empty
    std::array<std::vector<std::uint16_t>, 3> amplitude; // [counts] by beam, or empty
    std::vector<std::uint8_t> valid;                     // 0 marks a missing sample; empty: all are there
};

// What a simulated burst's sea really was. Directions are where waves come from, true north.
struct Truth {
    double significantHeight = kUnknown; // [m] 4 sqrt(m0) of the sea's spectrum
    double realisedHeight = kUnknown;    // [m] 4 standard deviations of the elevation above the head in this burst
    double peakPeriod = kUnknown;        // [s]
    double peakDirection = kUnknown;     // [degrees]
    double meanDirection = kUnknown;     // [degrees]
    double peakSpread = kUnknown;        // [degrees] sqrt(2 (1 - r1))
    double currentSpeed = kUnknown;      // [m/s]
    double currentDirection = kUnknown;  // [degrees] where the current goes
    double waterDepth = kUnknown;        // [m]
};

} // namespace orvik
