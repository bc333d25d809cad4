// What a burst was before it was processed, as far as its result should tell.
#pragma once

#include "burst/burst.hpp"

namespace orvik {

struct BurstFacts {
    double duration = kUnknown;            // [s]
    double samples = kUnknown;             // of pressure and velocity
    double missingSamples = kUnknown;      // of these
    double trackSamples = kUnknown;        // 0: the burst has no surface track
    double missingTrackSamples = kUnknown; // of these
    double heading = kUnknown;             // [degrees]
    double pitch = kUnknown;               // [degrees]
    double roll = kUnknown;                // [degrees]
};

BurstFacts factsOf(const Burst &burst, const Instrument &instrument);

} // namespace orvik
