#include "results/burst_table.hpp"

#include <algorithm>
#include <chrono>
#include <cmath>

#include <fmt/chrono.h>
#include <fmt/format.h>

#include "results/quality_words.hpp"

namespace orvik {

namespace {

std::string number(double value, int width, int decimals) {
    return std::isfinite(value) ? fmt::format("{:{}.{}f}", value, width, decimals)
                                : fmt::format("{:>{}}", "-", width);
}

std::string bulk(double height, double period, double peakDirection, double meanDirection,
                 double spread) {
    return number(height, 6, 2) + number(period, 7, 2) + number(peakDirection, 6, 0) +
           number(meanDirection, 6, 0) + number(spread, 7, 1);
}

const char *sourceWord(const TableRow &row) {
    if ((row.qualityFlags & OV_FLAG_NO_RESULT) != 0) {
        return "-";
    }
    switch (row.spectrumSource) {
    case OV_SOURCE_SURFACE_TRACK:
        return "track";
    case OV_SOURCE_VELOCITY:
        return "velocity";
    default:
        return "pressure";
    }
}

void addError(std::vector<double> &errors, double error) {
    if (std::isfinite(error)) {
        errors.push_back(std::abs(error));
    }
}

double turn(double degrees) { return std::remainder(degrees, 360.0); }

std::string medianAndWorst(const char *name, std::vector<double> errors, const char *unit) {
    if (errors.empty()) {
        return "";
    }
    std::sort(errors.begin(), errors.end());
    const std::size_t half = errors.size() / 2;
    const double median =
        errors.size() % 2 == 1 ? errors[half] : (errors[half - 1] + errors[half]) / 2.0;
    return fmt::format("  {:<36}{:8.2f}{:9.2f}  {:<8}{:6}\n", name, median, errors.back(), unit,
                       errors.size());
}

} // namespace

double roundedTime(double secondsSince1970) { return std::round(secondsSince1970 * 1e3) / 1e3; }

std::string timeText(double secondsSince1970) {
    // Times that a calendar of four-digit years holds; a damaged file may have others.
    constexpr double kEarliest = -62135596800.0;
    constexpr double kLatest = 253402300799.0;
    if (!(secondsSince1970 >= kEarliest && secondsSince1970 <= kLatest)) {
        return "-";
    }
    return fmt::format("{:%Y-%m-%d %H:%M:%S}", fmt::gmtime(static_cast<std::time_t>(
                                                   std::floor(roundedTime(secondsSince1970)))));
}

std::string isoTime(double secondsSince1970) {
    std::string text = timeText(secondsSince1970);
    if (text == "-") {
        return "";
    }
    text[text.find(' ')] = 'T';
    return text + 'Z';
}

std::string flagsText(int qualityFlags) {
    std::string text;
    for (const QualityWord &word : kQualityWords) {
        if ((qualityFlags & word.mask) != 0) {
            text += text.empty() ? "" : ",";
            text += word.word;
        }
    }
    return text;
}

std::string tableHead(bool withTruth) {
    std::string head = "burst  start                  Hm0     Tp   dir  mean spread";
    head += withTruth ? " | true   Tp   dir  mean spread" : "";
    head += "  source    flags\n";
    head += "                               m      s   deg   deg    deg";
    return head + (withTruth ? " |    m     s   deg   deg    deg\n" : "\n");
}

std::string tableLine(const TableRow &row) {
    std::string line = fmt::format("{:5}  {:<19}", row.burst, timeText(row.startTime));
    line += bulk(row.height, row.peakPeriod, row.peakDirection, row.meanDirection, row.peakSpread);
    if (row.truth) {
        const Truth &truth = *row.truth;
        line += " |" + number(truth.significantHeight, 5, 2) + number(truth.peakPeriod, 6, 2) +
                number(truth.peakDirection, 6, 0) + number(truth.meanDirection, 6, 0) +
                number(truth.peakSpread, 7, 1);
    }
    line += fmt::format("  {:<8}  {}", sourceWord(row), flagsText(row.qualityFlags));
    return line.substr(0, line.find_last_not_of(' ') + 1) + "\n";
}

void TruthErrors::add(const TableRow &row) {
    if (!row.truth || !std::isfinite(row.height)) {
        return;
    }
    const Truth &truth = *row.truth;
    addError(heightPercent_, 100.0 * (row.height / truth.significantHeight - 1.0));
    addError(realisedPercent_, 100.0 * (row.height / truth.realisedHeight - 1.0));
    addError(peakPeriod_, row.peakPeriod - truth.peakPeriod);
    addError(peakDirection_, turn(row.peakDirection - truth.peakDirection));
    addError(meanDirection_, turn(row.meanDirection - truth.meanDirection));
    addError(peakSpread_, row.peakSpread - truth.peakSpread);
}

std::string TruthErrors::text() const {
    return fmt::format("{:<38}{:>8}{:>9}{:>16}\n", "errors against the truth (absolute)", "median",
                       "worst", "bursts") +
           medianAndWorst("Hm0, height realised in the burst", realisedPercent_, "%") +
           medianAndWorst("Hm0, height of the sea", heightPercent_, "%") +
           medianAndWorst("Tp", peakPeriod_, "s") +
           medianAndWorst("direction at the peak", peakDirection_, "degree") +
           medianAndWorst("mean direction", meanDirection_, "degree") +
           medianAndWorst("spread at the peak", peakSpread_, "degree");
}

} // namespace orvik
