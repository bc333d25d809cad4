// One burst through the library, in the order of calls that every host uses.
#pragma once

#include <memory>
#include <vector>

#include "burst/burst.hpp"
#include "run/burst_result.hpp"

namespace orvik {

// Whether a method needs heading, pitch and roll, and the beams' place in the instrument, with such velocities.
bool needsAttitude(const Instrument &instrument, int method, VelocitySystem system);
bool needsBeams(const Instrument &instrument, int method, VelocitySystem system);

// Owns one wave-variables record.
class BurstRunner {
public:
    // Throws UserError when the instrument or the choices cannot be told to the library.
    BurstRunner(const Instrument &instrument, const ProcessingChoices &choices);
    ~BurstRunner();
    BurstRunner(const BurstRunner &) = delete;
    BurstRunner &operator=(const BurstRunner &) = delete;

    // The parameters in use, after the library's own limits.
    [[nodiscard]] const orvikbase::ProcessingParameters &parameters() const;
    // Frequency axes [Hz] of the results: the main one, and the surface track's.
    [[nodiscard]] std::vector<double> frequencies() const;
    [[nodiscard]] std::vector<double> fineFrequencies() const;

    // Bad data give a result with `processed` false. Throws UserError when the burst has no series of a kind that the
    // method cannot do without.
    BurstResult run(const Burst &burst);

private:
    struct Impl;
    std::unique_ptr<Impl> impl_;
};

} // namespace orvik
