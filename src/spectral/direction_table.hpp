// Cosines and sines of the direction bins: the same for every frequency of a burst, so they are computed once.
#pragma once

#include <array>

#include "frame/record.hpp"

namespace ov {

using DirectionValues = std::array<double, kMaxDir>;

struct DirectionTable {
    explicit DirectionTable(int directions); // 0 to kMaxDir
    explicit DirectionTable(const WaveVariables &rec) : DirectionTable(directionCount(rec)) {}

    int directions;
    // Of the transfer matrix: angle (2 m) pi / n.
    DirectionValues waveCos{};
    DirectionValues waveSin{};
    // Of the moments: first and second harmonic of angle m (2 pi / n). That is the angle above but for its rounding,
    // which reaches the last digit of results: neither can stand for the other.
    DirectionValues firstCos{};
    DirectionValues firstSin{};
    DirectionValues secondCos{};
    DirectionValues secondSin{};
};

} // namespace ov
