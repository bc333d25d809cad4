// Velocity coordinate systems of a profile instrument with three or four beams.
#pragma once

#include <array>

#include "frame/record.hpp"

namespace ov {

// Square matrix of size 3 or 4 in single precision; only the first n rows and columns count.
using MatrixN = std::array<std::array<float, kMaxBeams>, kMaxBeams>;

struct Attitude {
    float heading; // [degrees]
    float pitch;   // [degrees]
    float roll;    // [degrees]
};

// Beams in use: 3, or 4 for every other count.
int usableBeamCount(const WaveVariables &rec);

// The instrument's beam-to-XYZ matrix, n x n, row by row.
MatrixN instrumentMatrix(const WaveVariables &rec, int n);

// Matrix that takes a velocity from coordinate system `from` to `to` (0 east-north-up, 1 XYZ, 2 beam) for the given
// mounting orientation and attitude.
MatrixN coordinateTransformMatrix(int from, int to, int n, int orientation,
                                  const Attitude &attitude, const MatrixN &instrument);

} // namespace ov
