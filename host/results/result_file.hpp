// Result files: wave parameters and spectra of a deployment, with CF names (layout: docs/result-file.md).
#pragma once

#include <cstddef>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "burst/burst.hpp"
#include "results/burst_facts.hpp"
#include "results/quality_words.hpp"
#include "run/burst_runner.hpp"

namespace orvik {

// NaN for the library's marker of a missing result.
double present(float value);

struct ResultRow {
    double startTime = kUnknown; // [s since 1970-01-01 00:00:00 UTC]
    std::size_t burst = 0;       // place in the burst file, from 0
    BurstFacts facts;
    BurstResult result;
    std::optional<Truth> truth;
};

struct ResultLayout {
    std::vector<double> frequencies;     // [Hz]
    std::vector<double> fineFrequencies; // [Hz]
    std::size_t directions = 90;
    bool comingFrom = true;
    bool hasTruth = false;
    double pressureHeight = 0.0; // [m] above the bed
    double longitude = kUnknown; // [degrees east]
    double latitude = kUnknown;  // [degrees north]
    std::map<std::string, std::string> attributes;
};

// Writes under a temporary name; only commit() puts the finished file at `path`.
class ResultFileWriter {
public:
    ResultFileWriter(const std::string &path, const ResultLayout &layout);
    ~ResultFileWriter();
    ResultFileWriter(const ResultFileWriter &) = delete;
    ResultFileWriter &operator=(const ResultFileWriter &) = delete;

    void append(const ResultRow &row);
    // Puts what is there so far under the file's name, and goes on.
    void publish();
    void commit();

private:
    struct Impl;
    std::unique_ptr<Impl> impl_;
};

} // namespace orvik
