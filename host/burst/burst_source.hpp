// Where bursts come from, whatever the files look like.
#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <vector>

#include "burst/burst.hpp"
#include "burst/fact_table.hpp"

namespace orvik {

// A deployment on disk: one instrument, and its bursts read one at a time. Not safe for several threads.
class BurstSource {
public:
    virtual ~BurstSource() = default;

    [[nodiscard]] virtual const Instrument &instrument() const = 0;
    [[nodiscard]] virtual std::size_t burstCount() const = 0;
    [[nodiscard]] virtual VelocitySystem velocitySystem() const = 0;
    [[nodiscard]] virtual bool hasTrack() const = 0;
    [[nodiscard]] virtual bool hasTruth() const = 0;
    // Throws UserError when nothing tells heading, pitch and roll.
    virtual void requireAttitude() const = 0;
    // Throws UserError when nothing tells how the slanted beams stand in the instrument.
    virtual void requireBeams() const = 0;
    // Throws UserError when this burst cannot be read.
    [[nodiscard]] virtual Burst readBurst(std::size_t index) const = 0;
    [[nodiscard]] virtual std::optional<Truth> readTruth(std::size_t index) const = 0;
    // [s since 1970-01-01 00:00:00 UTC] of one burst, unknown when nothing tells it.
    [[nodiscard]] virtual double startTime(std::size_t index) const {
        return readBurst(index).startTime;
    }
    // The files that it reads, in order.
    [[nodiscard]] virtual std::vector<std::string> files() const = 0;
    // What the data themselves tell of the instrument.
    [[nodiscard]] virtual KnownFacts knownFacts() const { return {}; }
    // What a user should know of how the data were taken, one sentence each.
    [[nodiscard]] virtual std::vector<std::string> notes() const { return {}; }
};

} // namespace orvik
