#include "results/directional_grid.hpp"

#include <algorithm>
#include <cmath>
#include <numeric>

namespace orvik {

namespace {

// The sum over directions of a frequency's row of efth; not a number or 0 when its directions are not known.
double rowSum(const ResultReader &results, const StoredBurst &burst, std::size_t bin) {
    const std::size_t directions = results.directions().size();
    const auto first = burst.efth.begin() + static_cast<std::ptrdiff_t>(bin * directions);
    return std::accumulate(first, first + static_cast<std::ptrdiff_t>(directions), 0.0);
}

std::optional<std::size_t> nearestKnown(const std::vector<double> &sums, std::size_t bin) {
    for (std::size_t distance = 0; distance < sums.size(); ++distance) {
        if (distance <= bin && sums[bin - distance] > 0.0) {
            return bin - distance;
        }
        if (bin + distance < sums.size() && sums[bin + distance] > 0.0) {
            return bin + distance;
        }
    }
    return std::nullopt;
}

} // namespace

DirectionAxis directionAxis(const ResultReader &results, bool comingFrom) {
    const double turn = results.comingFrom() == comingFrom ? 0.0 : 180.0;
    std::vector<double> turned;
    for (const double direction : results.directions()) {
        turned.push_back(std::fmod(direction + turn, 360.0));
    }
    DirectionAxis axis;
    axis.place.resize(turned.size());
    std::iota(axis.place.begin(), axis.place.end(), std::size_t{0});
    std::sort(axis.place.begin(), axis.place.end(),
              [&](std::size_t left, std::size_t right) { return turned[left] < turned[right]; });
    for (const std::size_t place : axis.place) {
        axis.degrees.push_back(turned[place]);
    }
    return axis;
}

std::optional<std::vector<double>>
directionalGrid(const ResultReader &results, const StoredBurst &burst, const DirectionAxis &axis) {
    const std::size_t bins = results.frequencies().size();
    const std::size_t directions = axis.place.size();
    const double binWidth = 360.0 / static_cast<double>(directions);
    const std::vector<double> density = burst.spectrum("variance_density");
    std::vector<double> sums;
    for (std::size_t bin = 0; bin < bins; ++bin) {
        sums.push_back(rowSum(results, burst, bin));
    }
    std::vector<double> grid(bins * directions, 0.0);
    for (std::size_t bin = 0; bin < bins; ++bin) {
        const auto known = nearestKnown(sums, bin);
        if (!known || density.size() != bins) {
            return std::nullopt;
        }
        const double energy = std::isfinite(density[bin]) ? density[bin] : 0.0;
        for (std::size_t k = 0; k < directions; ++k) {
            const double share = burst.efth[*known * directions + axis.place[k]] / sums[*known];
            grid[bin * directions + k] = energy * share / binWidth;
        }
    }
    return grid;
}

} // namespace orvik
