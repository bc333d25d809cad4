// Results as text: one line a burst, and how far they are from a simulated sea's truth.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "burst/burst.hpp"

namespace orvik {

struct TableRow {
    double startTime = kUnknown; // [s since 1970-01-01 00:00:00 UTC]
    std::size_t burst = 0;
    double height = kUnknown;        // [m] Hm0
    double peakPeriod = kUnknown;    // [s]
    double peakDirection = kUnknown; // [degrees]
    double meanDirection = kUnknown; // [degrees]
    double peakSpread = kUnknown;    // [degrees]
    int spectrumSource = 0;
    int qualityFlags = 0;
    std::optional<Truth> truth; // directions in the sense of the row's own
};

// To the millisecond: hours and days since some date leave whole seconds a hair too early.
double roundedTime(double secondsSince1970);

// "2026-03-01 12:30:00", or "-" when unknown.
std::string timeText(double secondsSince1970);

// "2026-03-01T12:30:00Z", or nothing when the time is not known.
std::string isoTime(double secondsSince1970);
std::string flagsText(int qualityFlags);

std::string tableHead(bool withTruth);
std::string tableLine(const TableRow &row);

// Collects a deployment's errors against the truth.
class TruthErrors {
public:
    void add(const TableRow &row);
    [[nodiscard]] bool empty() const { return heightPercent_.empty(); }
    [[nodiscard]] std::string text() const;

private:
    std::vector<double> heightPercent_;
    std::vector<double> realisedPercent_;
    std::vector<double> peakPeriod_;
    std::vector<double> peakDirection_;
    std::vector<double> meanDirection_;
    std::vector<double> peakSpread_;
};

} // namespace orvik
