// Burst files on disk (layout: docs/burst-file.md), read and written one burst at a time.
#pragma once

#include <cstddef>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "burst/burst.hpp"

namespace orvik {

// Values that the user gives for what a file lacks, by the file's variable names ("cell_range" -> "7.4").
using Overrides = std::map<std::string, std::string>;

class BurstFileReader {
public:
    // Throws orvik::UserError, naming file and variable, when the file cannot be used.
    BurstFileReader(const std::string &path, const Overrides &overrides);
    ~BurstFileReader();
    BurstFileReader(const BurstFileReader &) = delete;
    BurstFileReader &operator=(const BurstFileReader &) = delete;

    [[nodiscard]] const Instrument &instrument() const;
    [[nodiscard]] std::size_t burstCount() const;
    [[nodiscard]] Burst readBurst(std::size_t index) const;
    [[nodiscard]] std::optional<Truth> readTruth(std::size_t index) const;

private:
    struct Impl;
    std::unique_ptr<Impl> impl_;
};

// Writes under a temporary name beside `path`; only commit() puts the finished file there. A writer destroyed without
// commit() leaves nothing behind.
class BurstFileWriter {
public:
    // `samples` and `trackSamples` a burst (trackSamples 0: no surface track); attributes become global text attributes.
    BurstFileWriter(const std::string &path, const Instrument &instrument, VelocitySystem system, std::size_t samples,
                    std::size_t trackSamples, const std::map<std::string, std::string> &attributes);
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
