// What a point instrument on the bed sees of a list of plane waves, each sensor at its own place and instant.
#pragma once

#include <array>
#include <cstddef>
#include <vector>

#include "simulate/components.hpp"

namespace orvik {

// Surface-track values a sample of a point instrument.
inline constexpr std::size_t kTrackPerSample = 2;

// Delays [s] before a sample's nominal instant (docs/burst-file.md).
inline constexpr double kBeamDelay = 0.0625; // times the beam's number
inline constexpr double kTrackDelay = 0.1875;
double pressureDelay(const Instrument &instrument);

// Series without noise or faults.
struct SensorSeries {
    std::vector<double> elevation; // [m] above the head, at the surface track's nominal instants
    std::vector<double> pressure;  // [dbar]
    std::array<std::vector<double>, 3> beam; // [m/s] positive away from the head
    std::vector<double> track;               // [m] head to surface along the vertical beam
};

// Throws UserError when the head or a velocity cell would not be under water.
void checkPlaces(const Instrument &instrument, const SeaState &sea);

// Throws as checkPlaces() does.
SensorSeries recordComponents(const Instrument &instrument, const SeaState &sea,
                              const FrequencyGrid &grid,
                              const std::vector<WaveComponent> &components, std::size_t samples);

} // namespace orvik
