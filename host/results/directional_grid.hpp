// A burst's directional spectrum as wave models want it: complete, and in a sense of direction of their choice.
#pragma once

#include <cstddef>
#include <optional>
#include <vector>

#include "results/result_reader.hpp"

namespace orvik {

// A model's directions, ascending, and where in a result file each stands.
struct DirectionAxis {
    std::vector<double> degrees; // clockwise from north, 0 <= d < 360
    std::vector<std::size_t> place;
};

DirectionAxis directionAxis(const ResultReader &results, bool comingFrom);

// [m2 s degree-1] by frequency and direction of `axis`, with all the energy of variance_density: a frequency whose
// directions are not known, as those above the aliasing limit, takes the distribution of the nearest one that has them,
// of two the lower. Nothing when no frequency has any.
std::optional<std::vector<double>>
directionalGrid(const ResultReader &results, const StoredBurst &burst, const DirectionAxis &axis);

} // namespace orvik
