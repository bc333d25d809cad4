// A deployment as the host program holds it in memory: one instrument and its bursts, in physical units.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <limits>
#include <optional>
#include <vector>

namespace orvik {

inline constexpr double kUnknown = std::numeric_limits<double>::quiet_NaN();

// What only a profile instrument has: cells one above the other, all beams sampled at once.
struct ProfileFacts {
    std::size_t cells = 0;
    double blanking =
        0.0; // [m] vertical; cell c (from 0) is centred at blanking + (c + 1) cellSize
    double trackTimeOffset =
        0.0; // [s] surface track and pressure are taken after the velocities of their sample
    double ambiguityVelocity = kUnknown; // [m/s] unknown: no velocity noise is removed
};

// Instrument facts that hold for a whole deployment. NaN marks what the source did not tell.
struct Instrument {
    double samplingRate = kUnknown; // [Hz] pressure and velocity
    double trackSamplingRate =
        kUnknown; // [Hz] surface track: twice samplingRate, of a profile instrument the same
    double acousticFrequency = 1.0e6; // [Hz]
    int instrumentType = 3;           // the library's type code
    double slantAngle = 25.0;         // [degrees] beams from the vertical
    std::size_t beams = 3;            // slanted ones; profile instruments may have 4
    std::vector<double> beamAzimuth;  // [degrees] from X towards Y, seen from above; may be empty
    std::optional<std::array<double, 9>> beamToXyz; // row by row; heads with three beams only
    double cellRange = kUnknown;                    // [m] along the beam, head to measurement cell
    double cellSize = 1.2; // [m] along the beam; of a profile instrument vertical
    unsigned pingsPerSample = 60;
    double pressureHeight = 0.0; // [m] pressure sensor above the bed
    double declination = 0.0;    // [degrees] added to every direction
    double rollOffset = 0.0;     // [degrees] added to every roll: 180 for a head that looks down
    double longitude = kUnknown; // [degrees] east
    double latitude = kUnknown;  // [degrees] north
    std::optional<ProfileFacts> profile; // nothing: a point instrument
};

// Surface-track values that come with a sample.
inline std::size_t trackPerSample(const Instrument &instrument) {
    return instrument.profile ? 1 : 2;
}

// Echo strength that stands for one the source did not tell: too strong to count as weak.
inline constexpr std::uint16_t kUnknownAmplitude = 100;

enum class VelocitySystem { none, beam, xyz, enu };

// Velocities by sample, beam (or component) and cell. Components of four beams have two vertical estimates, of beams 1
// and 3 and of beams 2 and 4.
struct Profile {
    std::size_t beams = 0;
    std::size_t cells = 0;
    std::vector<float> velocity;           // [m/s]
    std::vector<std::uint8_t> amplitude;   // [counts] or empty
    std::vector<std::uint8_t> correlation; // [percent] or empty

    [[nodiscard]] std::size_t at(std::size_t sample, std::size_t beam, std::size_t cell) const {
        return (sample * beams + beam) * cells + cell;
    }
};

// One burst. Series hold one value a sample; NaN marks a missing value.
struct Burst {
    double startTime = kUnknown; // [s since 1970-01-01 00:00:00 UTC]
    double heading = kUnknown;   // [degrees]
    double pitch = kUnknown;     // [degrees]
    double roll = kUnknown;      // [degrees]
    std::vector<float> pressure; // [dbar]
    VelocitySystem velocitySystem = VelocitySystem::none;
    std::array<std::vector<float>, 3> velocity; // [m/s] by beam or component
    bool velocitiesAtOnce = false;  // sampled at one instant, not as a point instrument takes turns
    std::optional<Profile> profile; // of a profile instrument, instead of `velocity`
    std::array<std::vector<float>, 3>
        attitude; // [degrees] heading, pitch, roll by sample, or empty
    std::vector<float>
        surfaceTrack; // [m] two values a sample, of a profile instrument one; or empty
    std::array<std::vector<std::uint16_t>, 3> amplitude; // [counts] by beam, or empty
    std::vector<std::uint8_t> valid; // 0 marks a missing sample; empty: all are there
};

// What a simulated burst's sea really was. Directions are where waves come from, true north.
struct Truth {
    double significantHeight = kUnknown; // [m] 4 sqrt(m0) of the sea's spectrum
    double realisedHeight =
        kUnknown; // [m] 4 standard deviations of the elevation above the head in this burst
    double peakPeriod = kUnknown;       // [s]
    double peakDirection = kUnknown;    // [degrees]
    double meanDirection = kUnknown;    // [degrees]
    double peakSpread = kUnknown;       // [degrees] sqrt(2 (1 - r1))
    double currentSpeed = kUnknown;     // [m/s]
    double currentDirection = kUnknown; // [degrees] where the current goes
    double waterDepth = kUnknown;       // [m]
};

} // namespace orvik
