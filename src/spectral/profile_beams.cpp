#include "spectral/profile_beams.hpp"

#include <algorithm>
#include <cmath>
#include <iterator>
#include <utility>

#include "frame/constants.hpp"

namespace ov {
namespace {

using Index = std::size_t;
using Matrix4 = std::array<std::array<double, 4>, 4>;
using Matrix3x4 = std::array<std::array<double, 4>, 3>;
using Matrix4x3 = std::array<Vector3, 4>;

double radians(double degrees) { return degrees * kPi / 180.0; }

// Azimuths of the beams [degrees]; a host that gives none gets the four quarters.
std::array<double, 4> azimuths(const WaveVariables &rec) {
    const bool none = std::all_of(std::begin(rec.beamAzimuth), std::end(rec.beamAzimuth),
                                  [](float azimuth) { return azimuth == 0.0F; });
    std::array<double, 4> result{};
    for (Index b = 0; b < 4; ++b) {
        result[b] = none ? 90.0 * static_cast<double>(b) : static_cast<double>(rec.beamAzimuth[b]);
    }
    return result;
}

// Row b: X, Y and the two vertical estimates as beam b sees them. Beams 1 and 3 carry the first, 2 and 4 the second.
Matrix4 beamMatrix(const WaveVariables &rec) {
    const double slant = radians(static_cast<double>(rec.slantAngle));
    const auto azimuth = azimuths(rec);
    Matrix4 matrix{};
    for (Index b = 0; b < 4; ++b) {
        const double az = radians(azimuth[b]);
        const bool first = b % 2 == 0;
        matrix[b] = {std::cos(az) * std::sin(slant), std::sin(az) * std::sin(slant),
                     first ? std::cos(slant) : 0.0, first ? 0.0 : std::cos(slant)};
    }
    return matrix;
}

// Gauss-Jordan elimination with row pivots. A singular matrix gives values that are not finite.
Matrix4 inverse(Matrix4 m) {
    Matrix4 result{};
    for (Index i = 0; i < 4; ++i) {
        result[i][i] = 1.0;
    }
    for (Index p = 0; p < 4; ++p) {
        Index pivot = p;
        for (Index i = p + 1; i < 4; ++i) {
            if (std::abs(m[i][p]) > std::abs(m[pivot][p])) {
                pivot = i;
            }
        }
        std::swap(m[p], m[pivot]);
        std::swap(result[p], result[pivot]);
        const double scale = m[p][p];
        for (Index j = 0; j < 4; ++j) {
            m[p][j] /= scale;
            result[p][j] /= scale;
        }
        for (Index i = 0; i < 4; ++i) {
            const double factor = m[i][p];
            for (Index j = 0; i != p && j < 4; ++j) {
                m[i][j] -= factor * m[p][j];
                result[i][j] -= factor * result[p][j];
            }
        }
    }
    return result;
}

// Beams to the level frame: X, Y and the mean of both vertical estimates, turned by the tilt.
Matrix3x4 beamsToLevel(const WaveVariables &rec) {
    const Matrix4 toXyz = inverse(beamMatrix(rec));
    const Matrix3 tilt =
        tiltTurn(radians(static_cast<double>(rec.pitch)), radians(static_cast<double>(rec.roll)));
    const Matrix3 level = multiply(headingTurn(radians(-90.0)), tilt);
    Matrix3x4 result{};
    for (Index c = 0; c < 4; ++c) {
        const Vector3 xyz = {toXyz[0][c], toXyz[1][c], (toXyz[2][c] + toXyz[3][c]) / 2.0};
        const Vector3 turned = multiply(level, xyz);
        for (Index r = 0; r < 3; ++r) {
            result[r][c] = turned[r];
        }
    }
    return result;
}

// Householder reduction of the 4 x 3 matrix `a` to upper triangular form; `q` (4 x 4) collects the reflections.
void householder(Matrix4x3 &a, Matrix4 &q) {
    for (Index p = 0; p < 3; ++p) {
        double norm = 0.0;
        for (Index i = p; i < 4; ++i) {
            norm += a[i][p] * a[i][p];
        }
        norm = a[p][p] > 0.0 ? -std::sqrt(norm) : std::sqrt(norm);
        std::array<double, 4> v{};
        double squared = 0.0;
        for (Index i = p; i < 4; ++i) {
            v[i] = i == p ? a[i][p] - norm : a[i][p];
            squared += v[i] * v[i];
        }
        const auto reflect = [&](auto &matrix, Index columns) {
            for (Index c = 0; c < columns; ++c) {
                double dot = 0.0;
                for (Index i = p; i < 4; ++i) {
                    dot += v[i] * matrix[i][c];
                }
                for (Index i = p; squared > 0.0 && i < 4; ++i) {
                    matrix[i][c] -= 2.0 * v[i] * dot / squared;
                }
            }
        };
        reflect(a, 3);
        reflect(q, 4);
    }
}

// Moore-Penrose inverse of a 3 x 4 matrix L of full rank. With L^T = Q R it is Q R^-T: row b solves R^T x = row b of
// the transposed problem.
Matrix4x3 pseudoInverse(const Matrix3x4 &l) {
    Matrix4x3 r{};
    for (Index i = 0; i < 4; ++i) {
        for (Index j = 0; j < 3; ++j) {
            r[i][j] = l[j][i];
        }
    }
    Matrix4 q{}; // Q^T after the reduction
    for (Index i = 0; i < 4; ++i) {
        q[i][i] = 1.0;
    }
    householder(r, q);
    // L+ = Q (R^T)^-1: column j of L+ is Q y with R^T y = e_j (forward substitution).
    Matrix4x3 result{};
    for (Index j = 0; j < 3; ++j) {
        Vector3 y{};
        for (Index i = 0; i < 3; ++i) {
            double value = i == j ? 1.0 : 0.0;
            for (Index m = 0; m < i; ++m) {
                value -= r[m][i] * y[m];
            }
            y[i] = value / r[i][i];
        }
        for (Index b = 0; b < 4; ++b) {
            result[b][j] = q[0][b] * y[0] + q[1][b] * y[1] + q[2][b] * y[2];
        }
    }
    return result;
}

} // namespace

std::array<Vector3, kMaxBeams> profileBeamDirections(const WaveVariables &rec) {
    return pseudoInverse(beamsToLevel(rec));
}

Vector3 trackBeamDirection(const WaveVariables &rec) {
    const double pitch = radians(static_cast<double>(rec.pitch));
    const double roll = radians(static_cast<double>(rec.roll));
    return {std::sin(roll), std::sin(-pitch), std::cos(std::abs(pitch)) * std::cos(std::abs(roll))};
}

} // namespace ov
