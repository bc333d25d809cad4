#include "spectral/rotation.hpp"

#include <cmath>

#include "frame/constants.hpp"

namespace ov {

double radiansFromDegrees(float degrees) { return static_cast<double>(degrees * kPiF / 180.0F); }

Matrix3 headingTurn(double x) {
    const double c = std::cos(x);
    const double s = std::sin(x);
    return {{{c, s, 0.0}, {-s, c, 0.0}, {0.0, 0.0, 1.0}}};
}

Matrix3 headingMatrix(float heading) { return headingTurn(radiansFromDegrees(heading - 90.0F)); }

Matrix3 tiltTurn(double p, double r) {
    const double cp = std::cos(p);
    const double sp = std::sin(p);
    const double cr = std::cos(r);
    const double sr = std::sin(r);
    return {{{cp, -sp * sr, -cr * sp}, {0.0, cr, -sr}, {sp, sr * cp, cp * cr}}};
}

Matrix3 tiltMatrix(float pitch, float roll) {
    return tiltTurn(radiansFromDegrees(pitch), radiansFromDegrees(roll));
}

Matrix3 multiply(const Matrix3 &a, const Matrix3 &b) {
    Matrix3 product{};
    for (std::size_t i = 0; i < 3; ++i) {
        for (std::size_t j = 0; j < 3; ++j) {
            product[i][j] = a[i][0] * b[0][j] + a[i][1] * b[1][j] + a[i][2] * b[2][j];
        }
    }
    return product;
}

Vector3 multiply(const Matrix3 &m, const Vector3 &v) {
    Vector3 product{};
    for (std::size_t i = 0; i < 3; ++i) {
        product[i] = m[i][0] * v[0] + m[i][1] * v[1] + m[i][2] * v[2];
    }
    return product;
}

Matrix3 inverse(const Matrix3 &m) {
    const auto minor = [&m](std::size_t r, std::size_t c) {
        const std::size_t r1 = (r + 1) % 3;
        const std::size_t r2 = (r + 2) % 3;
        const std::size_t c1 = (c + 1) % 3;
        const std::size_t c2 = (c + 2) % 3;
        return m[r1][c1] * m[r2][c2] - m[r1][c2] * m[r2][c1]; // cyclic: carries its sign
    };
    const double determinant =
        m[0][0] * minor(0, 0) + m[0][1] * minor(0, 1) + m[0][2] * minor(0, 2);
    Matrix3 result{};
    for (std::size_t i = 0; i < 3; ++i) {
        for (std::size_t j = 0; j < 3; ++j) {
            result[i][j] = minor(j, i) / determinant;
        }
    }
    return result;
}

} // namespace ov
