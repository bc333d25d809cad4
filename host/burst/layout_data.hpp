// What every layout of other makers' files comes down to, before it becomes a burst.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

#include "burst/burst.hpp"
#include "burst/fact_table.hpp"

namespace orvik {

// Series that all bursts of a deployment have.
struct DataShape {
    VelocitySystem system = VelocitySystem::none;
    std::size_t beams = 3; // or components
    std::size_t cells = 1;
    bool amplitude = false;
    bool correlation = false;
    std::size_t trackPerSample = 0; // 0: no surface track
    std::array<bool, 3> attitude{}; // heading, pitch, roll
};

// One burst as its file tells it; NaN marks a missing value.
struct RawBurst {
    std::vector<float> pressure;                // [dbar]
    std::vector<float> velocity;                // [m/s] by sample, beam, cell
    std::vector<float> amplitude;               // [counts] the same, or empty
    std::vector<float> correlation;             // [percent] the same, or empty
    std::array<std::vector<float>, 3> attitude; // [degrees] one value or one a sample, or empty
    std::vector<float> track;                   // [m] or empty
    std::vector<std::uint8_t> valid;            // 0 marks a missing sample; empty: all are there
};

class LayoutData {
public:
    virtual ~LayoutData() = default;

    [[nodiscard]] virtual const std::string &path() const = 0;
    [[nodiscard]] virtual const KnownFacts &facts() const = 0;
    [[nodiscard]] virtual const DataShape &shape() const = 0;
    [[nodiscard]] virtual std::size_t burstCount() const = 0;
    // [s since 1970-01-01 00:00:00 UTC], unknown when nothing tells it.
    [[nodiscard]] virtual double startTime(std::size_t index) const = 0;
    // Whether the times count from the start of the series, which the fact `time` tells.
    [[nodiscard]] virtual bool countsFromStart() const { return false; }
    [[nodiscard]] virtual RawBurst read(std::size_t index) const = 0;
    [[nodiscard]] virtual std::vector<std::string> notes() const { return {}; }
};

} // namespace orvik
