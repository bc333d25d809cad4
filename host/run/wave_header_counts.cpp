#include "run/wave_header_counts.hpp"

#include <algorithm>
#include <cmath>
#include <limits>
#include <string>

#include <fmt/format.h>

#include "user_error.hpp"

namespace orvik {

namespace {

constexpr double kHalfSoundSpeed = 750.0;           // [m/s]
constexpr double kPressureCount = 0.02288818359375; // [m]
constexpr double kCloseEnough = 0.0005;             // [m]
// A pressure count is 2.3 cm and type 3 rounds down to whole centimetres: between two counts 1.3 cm stay out of reach.
constexpr double kTolerance = 0.007; // [m]
// Distances beyond the gap between two pressure counts, rounded to centimetres, bring no range that is not there yet.
constexpr double kLargestDistance = 0.04; // [m]

double distanceMetres(const OVInstrumentConfig &config, double counts) {
    const double frequency = config.acousticFrequency;
    if (config.instrumentType == 1) {
        return std::floor(counts * 100 * kHalfSoundSpeed / 480000.0 * 100) * 0.01 * 0.01 *
               0.00390625;
    }
    return std::floor(kHalfSoundSpeed / (frequency * 4.0 / 255.0) * (counts * 100)) * 0.01 *
           0.00390625;
}

double pressureMetres(const OVInstrumentConfig &config, double counts, double distance) {
    const double frequency = config.acousticFrequency;
    const double cell = config.cellSizeCounts;
    const double pressure = counts * 100 * kPressureCount;
    switch (config.instrumentType) {
    case 1: {
        const double cellCentimetres =
            std::floor(cell * 100 * 16.0 * kHalfSoundSpeed / 6000000.0 * 100) * 0.01;
        return std::floor((pressure - cellCentimetres) * 100) * 0.0001;
    }
    case 3:
        return std::floor(pressure - distance * 100) * 0.01;
    default:
        return std::floor(pressure -
                          std::floor(cell * 100 * (kHalfSoundSpeed / (frequency * 0.0625)))) *
               0.01;
    }
}

} // namespace

double cellRangeOfCounts(const OVInstrumentConfig &config, const HeaderCounts &counts) {
    const double distance = distanceMetres(config, counts.distanceCounts);
    return distance + pressureMetres(config, counts.pressureCounts, distance);
}

HeaderCounts countsOfCellRange(const OVInstrumentConfig &config, double cellRange) {
    constexpr int kMost = std::numeric_limits<std::int16_t>::max();
    HeaderCounts best;
    double bestError = std::numeric_limits<double>::infinity();
    for (int distance = 0;
         distance <= kMost && distanceMetres(config, distance) <= kLargestDistance; ++distance) {
        HeaderCounts counts{0, static_cast<std::int16_t>(distance)};
        const double steps = (cellRange - cellRangeOfCounts(config, counts)) / kPressureCount;
        const int nearest = static_cast<int>(std::lround(std::clamp(steps, 1.0, kMost - 1.0)));
        for (int pressure = nearest - 1; pressure <= nearest + 1; ++pressure) {
            counts.pressureCounts = static_cast<std::int16_t>(pressure);
            const double error = std::abs(cellRangeOfCounts(config, counts) - cellRange);
            if (error < bestError) {
                best = counts;
                bestError = error;
            }
        }
        if (bestError < kCloseEnough) {
            break;
        }
    }
    if (bestError > kTolerance) {
        throw UserError(
            fmt::format("cell_range {:g} m is out of an instrument's reach", cellRange));
    }
    return best;
}

} // namespace orvik
