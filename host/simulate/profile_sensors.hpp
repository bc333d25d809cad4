// What a profile instrument sees of a list of plane waves: many cells along each beam, all sampled at once.
#pragma once

#include <cstddef>
#include <vector>

#include "simulate/components.hpp"

namespace orvik {

// Series without noise or faults of the sensors themselves. Cells in the air or the bed, and cells that the surface's
// own echo reaches, hold what such cells hold: noise, at low correlation.
struct ProfileRecording {
    std::vector<double> elevation; // [m] above the head, twice a sample
    std::vector<double> pressure;  // [dbar]
    std::vector<double> track;     // [m] head to surface along the vertical beam, once a sample
    Profile profile;               // along the beams, positive away from the head
};

// Throws UserError when the head or the lowest cell would not be in the water.
void checkProfilePlaces(const Instrument &instrument, const SeaState &sea);

// Throws as checkProfilePlaces() does. The same arguments give the same recording.
ProfileRecording recordProfile(const Instrument &instrument, const SeaState &sea,
                               const FrequencyGrid &grid,
                               const std::vector<WaveComponent> &components, std::size_t samples,
                               RandomSource random);

} // namespace orvik
