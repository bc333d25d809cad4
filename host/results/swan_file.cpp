#include "results/swan_file.hpp"

#include <algorithm>
#include <cmath>

#include <fmt/format.h>

#include "results/burst_table.hpp"

namespace orvik {

namespace {

constexpr int kLargest = 99999; // of the whole numbers that stand for densities

std::string keyword(const std::string &word, const std::string &comment) {
    return fmt::format("{:<40}{}\n", word, comment);
}

std::string placeText(const ResultReader &results) {
    if (std::isfinite(results.longitude()) && std::isfinite(results.latitude())) {
        return keyword("LONLAT", "locations in spherical coordinates") +
               keyword("     1", "number of locations") +
               fmt::format("{:12.6f}{:12.6f}\n", results.longitude(), results.latitude());
    }
    return "$ the results tell no position: 0, 0 stands for it\n" +
           keyword("LOCATIONS", "locations in x-y-space") +
           keyword("     1", "number of locations") + fmt::format("{:12.2f}{:12.2f}\n", 0.0, 0.0);
}

std::string listText(const std::vector<double> &values, int decimals) {
    std::string text = fmt::format("{:6}\n", values.size());
    for (const double value : values) {
        text += fmt::format("{:12.{}f}\n", value, decimals);
    }
    return text;
}

// "20260301.123000"
std::string swanTime(double secondsSince1970) {
    std::string text = timeText(secondsSince1970);
    std::replace(text.begin(), text.end(), ' ', '.');
    std::erase_if(text, [](char character) { return character == '-' || character == ':'; });
    return text;
}

std::string gridText(const std::vector<double> &grid, std::size_t directions) {
    const double largest = *std::max_element(grid.begin(), grid.end());
    if (!(largest > 0.0)) {
        return "ZERO\n";
    }
    const double factor = largest / kLargest;
    std::string text = fmt::format("FACTOR\n{:18.8E}\n", factor);
    for (std::size_t i = 0; i < grid.size(); ++i) {
        text += fmt::format("{:6}", std::lround(grid[i] / factor));
        text += (i + 1) % directions == 0 ? "\n" : "";
    }
    return text;
}

} // namespace

SwanFile::SwanFile(const std::string &path, const ResultReader &results)
    : results_(results), axis_(directionAxis(results, true)), file_(path) {
    file_.write(keyword("SWAN   1", "Swan standard spectral file, version") + "$ " +
                results.attribute("source") + "\n" + "$ times are starts of bursts, UTC\n" +
                keyword("TIME", "time-dependent data") + keyword("     1", "time coding option") +
                placeText(results) + keyword("AFREQ", "absolute frequencies in Hz") +
                listText(results.frequencies(), 5) +
                keyword("NDIR", "spectral nautical directions in degr") +
                listText(axis_.degrees, 4) + "QUANT\n" +
                keyword("     1", "number of quantities in table") +
                keyword("VaDens", "variance densities in m2/Hz/degr") +
                keyword("m2/Hz/degr", "unit") + keyword("   -0.9900E+02", "exception value"));
}

void SwanFile::append(const StoredBurst &burst) {
    const auto grid = directionalGrid(results_, burst, axis_);
    file_.write(keyword(swanTime(burst.startTime), "date and time") +
                (grid ? gridText(*grid, axis_.degrees.size()) : "NODATA\n"));
}

} // namespace orvik
