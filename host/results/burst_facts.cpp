#include "results/burst_facts.hpp"

#include <algorithm>
#include <cmath>

#include "burst/mean_angle.hpp"
#include "run/front_end.hpp"

namespace orvik {

BurstFacts factsOf(const Burst &burst, const Instrument &instrument) {
    const std::vector<std::uint8_t> present = presentSamples(burst);
    const std::vector<float> &track = burst.surfaceTrack;
    BurstFacts facts;
    facts.samples = static_cast<double>(burst.pressure.size());
    facts.duration = facts.samples / instrument.samplingRate;
    facts.missingSamples = static_cast<double>(std::count(present.begin(), present.end(), 0));
    facts.trackSamples = static_cast<double>(track.size());
    facts.missingTrackSamples = static_cast<double>(std::count_if(
        track.begin(), track.end(), [](float distance) { return !std::isfinite(distance); }));
    facts.heading = compassAngle(burst.heading);
    facts.pitch = burst.pitch;
    facts.roll = burst.roll;
    return facts;
}

} // namespace orvik
