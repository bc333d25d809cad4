// How bursts of one kind of instrument get into a record: configuration, header, samples and pre-processing.
#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

#include "burst/burst.hpp"
#include "orvikbase/orvikbase.hpp"

namespace orvik {

struct SentBurst {
    std::size_t samples = 0; // in use
    bool accepted = false;   // false: too many samples are missing
};

class FrontEnd {
public:
    virtual ~FrontEnd() = default;
    virtual void configure(orvikbase::Record &record) const = 0;
    [[nodiscard]] virtual std::int32_t estimateMask(bool withTrack) const = 0;
    // `present` says of each sample whether it may be used.
    virtual SentBurst send(orvikbase::Record &record, const Burst &burst,
                           const std::vector<std::uint8_t> &present,
                           orvikbase::CleanedBurst &cleaned) const = 0;
};

// The library's rate code. Throws UserError when it has none.
std::int32_t rateCode(const Instrument &instrument);

// An entry of a beam matrix as the library's integer. Throws UserError when it is too large for one.
std::int16_t matrixCount(double entry);

// A sample lacks something when it is marked so, or when its pressure or one of its velocities is not there. A profile
// lacks something when none of its cells has a velocity.
std::vector<std::uint8_t> presentSamples(const Burst &burst);

// Samples that the header announces; the library uses the power of two that is in them.
std::uint16_t announcedSamples(const Burst &burst);

// What is not present as NaN.
std::vector<float> withGaps(std::vector<float> series, const std::vector<std::uint8_t> &present);

inline float knownOr0(double angle) { return angle == angle ? static_cast<float>(angle) : 0.0F; }

// A lost echo: the library takes 0 for a miss and repairs it.
inline float distanceOr0(float distance) { return distance == distance ? distance : 0.0F; }

} // namespace orvik
