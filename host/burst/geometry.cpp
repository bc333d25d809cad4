#include "burst/geometry.hpp"

#include <cmath>

#include "user_error.hpp"

namespace orvik {

namespace {

// In units of the rows' lengths; three beams within about a tenth of a degree of one plane fall below it.
constexpr double kSmallestVolume = 1e-6;

double determinant(const Matrix3 &m) {
    return m[0] * (m[4] * m[8] - m[5] * m[7]) - m[1] * (m[3] * m[8] - m[5] * m[6]) +
           m[2] * (m[3] * m[7] - m[4] * m[6]);
}

double rowLength(const Matrix3 &m, std::size_t row) {
    return std::hypot(m[3 * row], m[3 * row + 1], m[3 * row + 2]);
}

Matrix3 headingMatrix(double heading) {
    const double x = (heading - 90.0) * kRadiansPerDegree;
    return {std::cos(x), std::sin(x), 0.0, -std::sin(x), std::cos(x), 0.0, 0.0, 0.0, 1.0};
}

Matrix3 tiltMatrix(double pitch, double roll) {
    const double p = pitch * kRadiansPerDegree;
    const double r = roll * kRadiansPerDegree;
    const double cp = std::cos(p);
    const double sp = std::sin(p);
    const double cr = std::cos(r);
    const double sr = std::sin(r);
    return {cp, -sp * sr, -cr * sp, 0.0, cr, -sr, sp, sr * cp, cp * cr};
}

std::array<Vector3, 3> directionsFromAzimuths(const Instrument &instrument) {
    static const std::vector<double> kEvenlySpaced{0.0, 120.0, 240.0};
    const auto &azimuths = instrument.beamAzimuth.empty() ? kEvenlySpaced : instrument.beamAzimuth;
    if (azimuths.size() != 3) {
        throw UserError(
            "beam_azimuth must hold three angles in degrees, one for each slanted beam");
    }
    const double slant = instrument.slantAngle * kRadiansPerDegree;
    std::array<Vector3, 3> directions{};
    for (std::size_t b = 0; b < 3; ++b) {
        const double azimuth = azimuths[b] * kRadiansPerDegree;
        directions[b] = {std::sin(slant) * std::cos(azimuth), std::sin(slant) * std::sin(azimuth),
                         std::cos(slant)};
    }
    return directions;
}

} // namespace

Vector3 product(const Matrix3 &matrix, const Vector3 &vector) {
    Vector3 result{};
    for (std::size_t row = 0; row < 3; ++row) {
        result[row] = matrix[3 * row] * vector[0] + matrix[3 * row + 1] * vector[1] +
                      matrix[3 * row + 2] * vector[2];
    }
    return result;
}

Matrix3 product(const Matrix3 &left, const Matrix3 &right) {
    Matrix3 result{};
    for (std::size_t row = 0; row < 3; ++row) {
        for (std::size_t column = 0; column < 3; ++column) {
            for (std::size_t i = 0; i < 3; ++i) {
                result[3 * row + column] += left[3 * row + i] * right[3 * i + column];
            }
        }
    }
    return result;
}

bool invert(const Matrix3 &m, Matrix3 &inverse) {
    const double volume = determinant(m);
    // Written so that a NaN counts as singular too.
    if (!(std::abs(volume) >
          kSmallestVolume * rowLength(m, 0) * rowLength(m, 1) * rowLength(m, 2))) {
        return false;
    }
    const Matrix3 adjugate{
        m[4] * m[8] - m[5] * m[7], m[2] * m[7] - m[1] * m[8], m[1] * m[5] - m[2] * m[4],
        m[5] * m[6] - m[3] * m[8], m[0] * m[8] - m[2] * m[6], m[2] * m[3] - m[0] * m[5],
        m[3] * m[7] - m[4] * m[6], m[1] * m[6] - m[0] * m[7], m[0] * m[4] - m[1] * m[3]};
    for (std::size_t i = 0; i < 9; ++i) {
        inverse[i] = adjugate[i] / volume;
    }
    return true;
}

std::array<Vector3, 3> beamDirections(const Instrument &instrument) {
    if (!instrument.beamToXyz) {
        return directionsFromAzimuths(instrument);
    }
    Matrix3 xyzToBeam{};
    if (!invert(*instrument.beamToXyz, xyzToBeam)) {
        throw UserError("beam_to_xyz has no inverse: check its nine numbers (three rows, one for "
                        "each of X, Y, Z)");
    }
    std::array<Vector3, 3> directions{};
    for (std::size_t b = 0; b < 3; ++b) {
        directions[b] = {xyzToBeam[3 * b], xyzToBeam[3 * b + 1], xyzToBeam[3 * b + 2]};
    }
    return directions;
}

Matrix3 beamToXyzMatrix(const Instrument &instrument) {
    if (instrument.beamToXyz) {
        return *instrument.beamToXyz;
    }
    Matrix3 xyzToBeam{};
    const auto directions = beamDirections(instrument);
    for (std::size_t i = 0; i < 9; ++i) {
        xyzToBeam[i] = directions[i / 3][i % 3];
    }
    Matrix3 beamToXyz{};
    if (!invert(xyzToBeam, beamToXyz)) {
        throw UserError("beam_azimuth and beam_slant_angle put the beams in one plane: three "
                        "different azimuths and a "
                        "slant between 0 and 90 degrees are needed");
    }
    return beamToXyz;
}

Matrix3 xyzToEnuMatrix(double heading, double pitch, double roll) {
    return product(headingMatrix(heading), tiltMatrix(pitch, roll));
}

} // namespace orvik
