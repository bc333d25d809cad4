// Beams of a head with three or four of them, and the systems that their velocities are told in.
#pragma once

#include <cstddef>
#include <vector>

#include "burst/burst.hpp"
#include "burst/geometry.hpp"

namespace orvik {

// As many rows as columns, row by row.
struct SquareMatrix {
    std::size_t size = 0;
    std::vector<double> values;

    [[nodiscard]] double at(std::size_t row, std::size_t column) const {
        return values[row * size + column];
    }
};

SquareMatrix product(const SquareMatrix &left, const SquareMatrix &right);

// A singular matrix throws UserError, which begins with `what`.
SquareMatrix inverse(const SquareMatrix &matrix, const char *what);

// Unit vectors along the beams in instrument axes (Z up), away from the head. Without azimuths three beams stand at 0,
// 120 and 240 degrees, four at the quarters.
std::vector<double> beamAzimuths(const Instrument &instrument);
std::vector<Vector3> allBeamDirections(const Instrument &instrument);

// Turns along-beam velocities into instrument axes. Of three beams: X, Y, Z. Of four: X, Y and two vertical estimates,
// Z1 of beams 1 and 3, Z2 of beams 2 and 4.
SquareMatrix beamsToAxes(const Instrument &instrument);

// Turns instrument axes into east, north, up (or east, north and two estimates of up).
SquareMatrix axesToEarth(std::size_t beams, double heading, double pitch, double roll);

} // namespace orvik
