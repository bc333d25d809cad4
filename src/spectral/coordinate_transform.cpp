#include "spectral/coordinate_transform.hpp"

#include <cmath>
#include <cstdlib>
#include <utility>

#include "frame/constants.hpp"

namespace ov {
namespace {

using Index = std::size_t;

MatrixN identity() {
    MatrixN m{};
    for (Index i = 0; i < kMaxBeams; ++i) {
        m[i][i] = 1.0F;
    }
    return m;
}

MatrixN multiply(const MatrixN &a, const MatrixN &b, int n) {
    MatrixN product{};
    for (Index i = 0; i < static_cast<Index>(n); ++i) {
        for (Index j = 0; j < static_cast<Index>(n); ++j) {
            for (Index k = 0; k < static_cast<Index>(n); ++k) {
                product[i][j] += a[i][k] * b[k][j];
            }
        }
    }
    return product;
}

// Gauss-Jordan elimination with row pivots. A singular matrix gives values that are not finite.
MatrixN inverse(MatrixN m, int n) {
    MatrixN result = identity();
    const auto size = static_cast<Index>(n);
    for (Index p = 0; p < size; ++p) {
        Index pivot = p;
        for (Index i = p + 1; i < size; ++i) {
            if (std::fabs(m[i][p]) > std::fabs(m[pivot][p])) {
                pivot = i;
            }
        }
        std::swap(m[p], m[pivot]);
        std::swap(result[p], result[pivot]);
        const float scale = m[p][p];
        for (Index j = 0; j < size; ++j) {
            m[p][j] /= scale;
            result[p][j] /= scale;
        }
        for (Index i = 0; i < size; ++i) {
            const float factor = m[i][p];
            if (i == p) {
                continue;
            }
            for (Index j = 0; j < size; ++j) {
                m[i][j] -= factor * m[p][j];
                result[i][j] -= factor * result[p][j];
            }
        }
    }
    return result;
}

struct CosSin {
    float c;
    float s;
};

CosSin cosSin(float degrees) {
    const double angle = static_cast<double>(degrees) * kPi / 180.0;
    return {static_cast<float>(std::cos(angle)), static_cast<float>(std::sin(angle))};
}

// Instrument axes to east, north, up in single precision.
MatrixN rotation(const Attitude &attitude) {
    const CosSin x = cosSin(attitude.heading - 90.0F);
    const CosSin p = cosSin(attitude.pitch);
    const CosSin r = cosSin(attitude.roll);
    MatrixN heading{};
    heading[0] = {x.c, x.s, 0.0F};
    heading[1] = {-x.s, x.c, 0.0F};
    heading[2] = {0.0F, 0.0F, 1.0F};
    MatrixN tilt{};
    tilt[0] = {p.c, -p.s * r.s, -r.c * p.s};
    tilt[1] = {0.0F, r.c, -r.s};
    tilt[2] = {p.s, r.s * p.c, p.c * r.c};
    return multiply(heading, tilt, 3);
}

// Four beams measure the vertical twice: each half counts, and each has a row of its own.
MatrixN extended(const MatrixN &r) {
    MatrixN m{};
    m[0] = {r[0][0], r[0][1], r[0][2] / 2.0F, r[0][2] / 2.0F};
    m[1] = {r[1][0], r[1][1], r[1][2] / 2.0F, r[1][2] / 2.0F};
    m[2] = {r[2][0], r[2][1], r[2][2], 0.0F};
    m[3] = {r[2][0], r[2][1], 0.0F, r[2][2]};
    return m;
}

// Rows of the beam matrix by mounting orientation: row number, and sign.
std::array<int, kMaxBeams> rowOrder(int orientation) {
    switch (orientation) {
    case 4:
    case 10:
        return {1, 2, 3, 4};
    case 0:
        return {3, -2, 1, 1};
    case 1:
        return {3, 2, -1, -1};
    case 2:
        return {3, 1, 2, 2};
    case 3:
        return {3, -1, -2, -2};
    default:
        return {1, -2, -3, -4};
    }
}

MatrixN reordered(const MatrixN &m, int n, int orientation) {
    const auto order = rowOrder(orientation);
    MatrixN result{};
    for (Index r = 0; r < static_cast<Index>(n); ++r) {
        const auto from = static_cast<Index>(std::abs(order[r]) - 1);
        for (Index c = 0; c < static_cast<Index>(n); ++c) {
            result[r][c] = order[r] < 0 ? -m[from][c] : m[from][c];
        }
    }
    return result;
}

} // namespace

int usableBeamCount(const WaveVariables &rec) { return rec.beamCount == 3 ? 3 : 4; }

MatrixN instrumentMatrix(const WaveVariables &rec, int n) {
    MatrixN matrix{};
    for (int i = 0; i < n * n; ++i) {
        matrix[static_cast<Index>(i / n)][static_cast<Index>(i % n)] =
            static_cast<float>(rec.transformMatrix[i] * kMatrixScale);
    }
    return matrix;
}

MatrixN coordinateTransformMatrix(int from, int to, int n, int orientation,
                                  const Attitude &attitude, const MatrixN &instrument) {
    if (from == to) {
        return identity();
    }
    const bool xyzInvolved = from == OV_VELOCITY_XYZ || to == OV_VELOCITY_XYZ;
    const bool beamInvolved = from == OV_VELOCITY_BEAM || to == OV_VELOCITY_BEAM;
    if (xyzInvolved && beamInvolved) {
        return from == OV_VELOCITY_BEAM ? instrument : inverse(instrument, n);
    }
    const MatrixN r = rotation(attitude);
    const MatrixN w = reordered(xyzInvolved ? identity() : instrument, n, orientation);
    const MatrixN toEarth = multiply(n == 4 ? extended(r) : r, w, n);
    return to == OV_VELOCITY_ENU ? toEarth : inverse(toEarth, n);
}

} // namespace ov
