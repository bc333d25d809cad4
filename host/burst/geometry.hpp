// Where the beams of an instrument point, in its own axes and on the earth.
#pragma once

#include <array>

#include "burst/burst.hpp"

namespace orvik {

using Vector3 = std::array<double, 3>;
using Matrix3 = std::array<double, 9>; // row by row

inline constexpr double kRadiansPerDegree = 3.14159265358979323846 / 180.0;

Vector3 product(const Matrix3 &matrix, const Vector3 &vector);
Matrix3 product(const Matrix3 &left, const Matrix3 &right);

// A singular matrix has no inverse: gives false and leaves `inverse` as it is.
bool invert(const Matrix3 &matrix, Matrix3 &inverse);

// Directions of the three slanted beams in instrument axes (Z up), away from the head. Beams at 0, 120 and 240 degrees
// when the instrument tells neither azimuths nor matrix. Throws UserError when what it tells is unusable.
std::array<Vector3, 3> beamDirections(const Instrument &instrument);

// Turns along-beam velocities into instrument axes: the instrument's own matrix, or that of its beam directions.
Matrix3 beamToXyzMatrix(const Instrument &instrument);

// Turns instrument axes into east, north, up; angles in degrees. With no tilt and heading 0, X is north and Y west;
// the heading turns X clockwise, a positive pitch lifts X, and a positive roll lifts Y.
Matrix3 xyzToEnuMatrix(double heading, double pitch, double roll);

} // namespace orvik
