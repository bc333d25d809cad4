#include "burst/profile_geometry.hpp"

#include <cmath>
#include <string>
#include <utility>

#include "user_error.hpp"

namespace orvik {

namespace {

SquareMatrix identity(std::size_t size) {
    SquareMatrix matrix{size, std::vector<double>(size * size, 0.0)};
    for (std::size_t i = 0; i < size; ++i) {
        matrix.values[i * size + i] = 1.0;
    }
    return matrix;
}

SquareMatrix squareOf(const Matrix3 &matrix) { return {3, {matrix.begin(), matrix.end()}}; }

// Puts the row with the greatest entry in column `pivot` there, in both matrices. Gives that entry.
double bringPivot(SquareMatrix &matrix, SquareMatrix &companion, std::size_t pivot) {
    const std::size_t n = matrix.size;
    std::size_t row = pivot;
    for (std::size_t r = pivot + 1; r < n; ++r) {
        if (std::abs(matrix.at(r, pivot)) > std::abs(matrix.at(row, pivot))) {
            row = r;
        }
    }
    for (std::size_t c = 0; row != pivot && c < n; ++c) {
        std::swap(matrix.values[row * n + c], matrix.values[pivot * n + c]);
        std::swap(companion.values[row * n + c], companion.values[pivot * n + c]);
    }
    return matrix.at(pivot, pivot);
}

} // namespace

SquareMatrix product(const SquareMatrix &left, const SquareMatrix &right) {
    const std::size_t n = left.size;
    SquareMatrix result{n, std::vector<double>(n * n, 0.0)};
    for (std::size_t r = 0; r < n; ++r) {
        for (std::size_t c = 0; c < n; ++c) {
            for (std::size_t i = 0; i < n; ++i) {
                result.values[r * n + c] += left.at(r, i) * right.at(i, c);
            }
        }
    }
    return result;
}

// Gauss-Jordan elimination with row pivots.
SquareMatrix inverse(const SquareMatrix &matrix, const char *what) {
    constexpr double kSmallestPivot = 1e-6;
    const std::size_t n = matrix.size;
    SquareMatrix rest = matrix;
    SquareMatrix result = identity(n);
    for (std::size_t p = 0; p < n; ++p) {
        const double pivot = bringPivot(rest, result, p);
        if (!(std::abs(pivot) > kSmallestPivot)) {
            throw UserError(std::string(what) + ": the beams lie in one plane");
        }
        for (std::size_t c = 0; c < n; ++c) {
            rest.values[p * n + c] /= pivot;
            result.values[p * n + c] /= pivot;
        }
        for (std::size_t r = 0; r < n; ++r) {
            const double factor = r == p ? 0.0 : rest.at(r, p);
            for (std::size_t c = 0; c < n; ++c) {
                rest.values[r * n + c] -= factor * rest.at(p, c);
                result.values[r * n + c] -= factor * result.at(p, c);
            }
        }
    }
    return result;
}

std::vector<double> beamAzimuths(const Instrument &instrument) {
    if (!instrument.beamAzimuth.empty()) {
        return instrument.beamAzimuth;
    }
    return instrument.beams == 4 ? std::vector<double>{0.0, 90.0, 180.0, 270.0}
                                 : std::vector<double>{0.0, 120.0, 240.0};
}

std::vector<Vector3> allBeamDirections(const Instrument &instrument) {
    if (instrument.beams == 3) {
        const auto directions = beamDirections(instrument);
        return {directions.begin(), directions.end()};
    }
    const double slant = instrument.slantAngle * kRadiansPerDegree;
    std::vector<Vector3> directions;
    for (const double degrees : beamAzimuths(instrument)) {
        const double azimuth = degrees * kRadiansPerDegree;
        directions.push_back({std::sin(slant) * std::cos(azimuth),
                              std::sin(slant) * std::sin(azimuth), std::cos(slant)});
    }
    return directions;
}

SquareMatrix beamsToAxes(const Instrument &instrument) {
    if (instrument.beams == 3) {
        return squareOf(beamToXyzMatrix(instrument));
    }
    const std::vector<Vector3> directions = allBeamDirections(instrument);
    SquareMatrix axesToBeams{4, {}};
    for (std::size_t b = 0; b < directions.size(); ++b) {
        const auto &[x, y, z] = directions[b];
        const bool first = b % 2 == 0;
        for (const double entry : {x, y, first ? z : 0.0, first ? 0.0 : z}) {
            axesToBeams.values.push_back(entry);
        }
    }
    return inverse(axesToBeams, "beam_azimuth and beam_slant_angle");
}

SquareMatrix axesToEarth(std::size_t beams, double heading, double pitch, double roll) {
    const Matrix3 r = xyzToEnuMatrix(heading, pitch, roll);
    if (beams == 3) {
        return squareOf(r);
    }
    return {4,
            {r[0], r[1], r[2] / 2.0, r[2] / 2.0, r[3], r[4], r[5] / 2.0, r[5] / 2.0, r[6], r[7],
             r[8], 0.0, r[6], r[7], 0.0, r[8]}};
}

} // namespace orvik
