#include "run/profile_as_point.hpp"

#include <algorithm>
#include <cmath>

#include "burst/geometry.hpp"
#include "run/beam_timing.hpp"

namespace orvik {

namespace {

constexpr int kPointType = 3;
constexpr double kLongestCell = 1000.0; // [m]

float attitudeAt(const std::vector<float> &series, double ofBurst, std::size_t i) {
    return series.empty() || !std::isfinite(series[i]) ? static_cast<float>(ofBurst) : series[i];
}

// Along the beams, positive away from the head, all three at the instant of the sample.
std::array<std::vector<float>, 3> beamVelocities(const Instrument &instrument, const Burst &burst,
                                                 const orvikbase::CleanedBurst &cleaned,
                                                 std::size_t samples) {
    std::array<std::vector<float>, 3> beams;
    const Matrix3 beamToXyz = beamToXyzMatrix(instrument);
    for (std::size_t i = 0; i < samples; ++i) {
        const orvikbase::CleanedRow row = cleaned.row(i);
        Vector3 velocity{row.velocity[0], row.velocity[1], row.velocity[2]};
        if (burst.velocitySystem != VelocitySystem::beam) {
            Matrix3 fromBeams = beamToXyz;
            if (burst.velocitySystem == VelocitySystem::enu) {
                const std::size_t at = std::min(i, burst.pressure.size() - 1);
                const double heading = attitudeAt(burst.attitude[0], burst.heading, at);
                const double pitch = attitudeAt(burst.attitude[1], burst.pitch, at);
                const double roll =
                    attitudeAt(burst.attitude[2], burst.roll, at) + instrument.rollOffset;
                fromBeams = product(xyzToEnuMatrix(heading, pitch, roll), beamToXyz);
            }
            Matrix3 toBeams{};
            invert(fromBeams,
                   toBeams); // the instrument's matrix has an inverse, and the turn is a rotation
            velocity = product(toBeams, velocity);
        }
        for (std::size_t b = 0; b < 3; ++b) {
            beams[b].push_back(static_cast<float>(velocity[b]));
        }
    }
    return beams;
}

} // namespace

Instrument asPointInstrument(const Instrument &instrument, double cellHeight) {
    Instrument point = instrument;
    const double slantCosine = std::cos(instrument.slantAngle * kRadiansPerDegree);
    point.profile.reset();
    point.instrumentType = kPointType;
    point.trackSamplingRate = 2.0 * instrument.samplingRate;
    point.cellRange = cellHeight / slantCosine;
    // The library would take away the velocity noise of a point instrument with cells of this size, which is not this
    // one's. So long a cell has none to speak of.
    point.cellSize = kLongestCell;
    return point;
}

Burst asPointBurst(const Instrument &instrument, const Burst &burst,
                   const orvikbase::CleanedBurst &cleaned) {
    const double rate = instrument.samplingRate;
    const double offset = instrument.profile->trackTimeOffset;
    const auto samples = static_cast<std::size_t>(cleaned.sampleCount());
    Burst point = burst;
    point.profile.reset();
    point.attitude = {};
    point.valid.clear();
    point.velocitySystem = VelocitySystem::beam;
    point.velocity = beamVelocities(instrument, burst, cleaned, samples);
    for (std::size_t b = 0; b < 3; ++b) {
        point.velocity[b] =
            shiftedSeries(point.velocity[b], -kBeamInterval * static_cast<double>(b) * rate);
    }
    std::vector<float> pressure;
    std::vector<float> track;
    for (std::size_t i = 0; i < samples; ++i) {
        pressure.push_back(cleaned.pressure(i));
        track.push_back(cleaned.track(i));
    }
    const bool hasTrack = !burst.surfaceTrack.empty() && cleaned.trackUsable();
    point.pressure = shiftedSeries(
        pressure, -(offset + pressureDelay(asPointInstrument(instrument, 0.0), hasTrack)) * rate);
    point.surfaceTrack.clear();
    if (hasTrack) {
        // A point instrument tracks the surface twice a sample.
        const double shift = -(offset + kTrackDelay) * rate;
        const std::vector<float> first = shiftedSeries(track, shift);
        const std::vector<float> second = shiftedSeries(track, shift + 0.5);
        for (std::size_t i = 0; i < samples; ++i) {
            point.surfaceTrack.push_back(first[i]);
            point.surfaceTrack.push_back(second[i]);
        }
    }
    return point;
}

} // namespace orvik
