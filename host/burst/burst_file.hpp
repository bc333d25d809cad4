// Burst files on disk (layout: docs/burst-file.md), read and written one burst at a time.
#pragma once

#include <array>
#include <cstddef>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "burst/burst_source.hpp"
#include "burst/fact_table.hpp"

namespace orvik {

// A truth variable of a simulated file: name, unit and the field that it holds.
struct TruthVariable {
    const char *name;
    const char *units;
    const char *longName;
    double Truth::*field;
};

inline constexpr std::array<TruthVariable, 9> kTruthVariables{{
    {"true_significant_height", "m", "four square roots of the sea spectrum's m0",
     &Truth::significantHeight},
    {"true_realised_height", "m", "four standard deviations of the surface above the head",
     &Truth::realisedHeight},
    {"true_peak_period", "s", "period of the sea spectrum's peak", &Truth::peakPeriod},
    {"true_peak_direction", "degree", "direction that waves at the peak come from",
     &Truth::peakDirection},
    {"true_mean_direction", "degree", "energy-weighted direction that waves come from",
     &Truth::meanDirection},
    {"true_peak_spread", "degree", "directional spread at the peak", &Truth::peakSpread},
    {"true_current_speed", "m s-1", "speed of the depth-mean current", &Truth::currentSpeed},
    {"true_current_direction", "degree", "direction that the current goes to",
     &Truth::currentDirection},
    {"true_water_depth", "m", "mean water depth", &Truth::waterDepth},
}};

class BurstFileReader : public BurstSource {
public:
    // Throws orvik::UserError, naming file and variable, when the file cannot be used.
    // Of several velocity variables that of the wanted system is taken; without a wish along beams before instrument axes
    // before east, north, up.
    BurstFileReader(const std::string &path, const Overrides &overrides,
                    VelocitySystem wanted = VelocitySystem::none);
    ~BurstFileReader() override;
    BurstFileReader(const BurstFileReader &) = delete;
    BurstFileReader &operator=(const BurstFileReader &) = delete;

    [[nodiscard]] const Instrument &instrument() const override;
    [[nodiscard]] std::size_t burstCount() const override;
    [[nodiscard]] std::size_t sampleCount() const; // of each burst
    [[nodiscard]] VelocitySystem velocitySystem() const override;
    [[nodiscard]] bool hasTrack() const override;
    [[nodiscard]] bool hasTruth() const override;
    void requireAttitude() const override;
    void requireBeams() const override;
    [[nodiscard]] Burst readBurst(std::size_t index) const override;
    [[nodiscard]] std::optional<Truth> readTruth(std::size_t index) const override;
    [[nodiscard]] double startTime(std::size_t index) const override;
    [[nodiscard]] std::vector<std::string> files() const override;
    [[nodiscard]] KnownFacts knownFacts() const override;
    [[nodiscard]] std::vector<std::string> notes() const override;

private:
    struct Impl;
    std::unique_ptr<Impl> impl_;
};

// Writes under a temporary name beside `path`; only commit() puts the finished file there. A writer destroyed without
// commit() leaves nothing behind.
class BurstFileWriter {
public:
    // `samples` and `trackSamples` a burst (trackSamples 0: no surface track); attributes become global text attributes.
    BurstFileWriter(const std::string &path, const Instrument &instrument, VelocitySystem system,
                    std::size_t samples, std::size_t trackSamples,
                    const std::map<std::string, std::string> &attributes);
    ~BurstFileWriter();
    BurstFileWriter(const BurstFileWriter &) = delete;
    BurstFileWriter &operator=(const BurstFileWriter &) = delete;

    void append(const Burst &burst, const Truth &truth);
    void commit();

private:
    struct Impl;
    std::unique_ptr<Impl> impl_;
};

} // namespace orvik
