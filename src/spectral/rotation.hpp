// Rotations between the instrument's axes and the level frame, row-major 3 x 3 in double precision.
//
// Instrument axes: Z up, X the heading direction, Y to its left. Level frame: x east, y north, z up.
#pragma once

#include <array>

namespace ov {

using Vector3 = std::array<double, 3>;
using Matrix3 = std::array<Vector3, 3>;

// Degrees to radians in single precision, widened for the trigonometry.
double radiansFromDegrees(float degrees);

// Turn by the heading [degrees]. Heading 0 is no identity: it takes X to north.
Matrix3 headingMatrix(float heading);

// Turn by pitch and roll [degrees].
Matrix3 tiltMatrix(float pitch, float roll);

// The same from angles [rad] in double precision; x is the heading less a quarter turn.
Matrix3 headingTurn(double x);
Matrix3 tiltTurn(double pitch, double roll);

Matrix3 multiply(const Matrix3 &a, const Matrix3 &b);
Vector3 multiply(const Matrix3 &m, const Vector3 &v);

// Inverse by cofactors. A singular matrix gives values that are not finite.
Matrix3 inverse(const Matrix3 &m);

} // namespace ov
