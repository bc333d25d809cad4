// The coordinate systems of slanted beams once more, in extended precision and straight from their definition.
#pragma once

#include <array>
#include <cmath>
#include <cstddef>
#include <cstdlib>
#include <numbers>
#include <utility>

namespace orvik::test {

using Wide = long double;
using WideSquare = std::array<std::array<Wide, 4>, 4>; // the first n rows and columns count
using WideVector = std::array<Wide, 3>;

inline constexpr Wide kDegree = std::numbers::pi_v<Wide> / 180.0L;

inline WideSquare wideIdentity() {
    return {{{1, 0, 0, 0}, {0, 1, 0, 0}, {0, 0, 1, 0}, {0, 0, 0, 1}}};
}

inline WideSquare product(const WideSquare &a, const WideSquare &b, std::size_t n) {
    WideSquare c{};
    for (std::size_t i = 0; i < n; ++i) {
        for (std::size_t j = 0; j < n; ++j) {
            for (std::size_t k = 0; k < n; ++k) {
                c[i][j] += a[i][k] * b[k][j];
            }
        }
    }
    return c;
}

inline std::array<Wide, 4> product(const WideSquare &m, const std::array<Wide, 4> &v,
                                   std::size_t n) {
    std::array<Wide, 4> result{};
    for (std::size_t i = 0; i < n; ++i) {
        for (std::size_t k = 0; k < n; ++k) {
            result[i] += m[i][k] * v[k];
        }
    }
    return result;
}

inline WideSquare wideInverse(WideSquare m, std::size_t n) {
    WideSquare result = wideIdentity();
    for (std::size_t c = 0; c < n; ++c) {
        std::size_t pivot = c;
        for (std::size_t r = c + 1; r < n; ++r) {
            pivot = std::abs(m[r][c]) > std::abs(m[pivot][c]) ? r : pivot;
        }
        std::swap(m[c], m[pivot]);
        std::swap(result[c], result[pivot]);
        for (std::size_t r = 0; r < n; ++r) {
            const Wide factor = r == c ? 0.0L : m[r][c] / m[c][c];
            for (std::size_t k = 0; k < n; ++k) {
                m[r][k] -= factor * m[c][k];
                result[r][k] -= factor * result[c][k];
            }
        }
    }
    for (std::size_t r = 0; r < n; ++r) {
        for (std::size_t k = 0; k < n; ++k) {
            result[r][k] /= m[r][r];
        }
    }
    return result;
}

// East, north, up of a vector in the instrument's axes: the tilt turns first, then the heading. Heading 0 has the X axis
// point north and the Y axis west.
inline WideVector toEarth(const WideVector &v, Wide heading, Wide pitch, Wide roll) {
    const Wide sp = std::sin(pitch * kDegree);
    const Wide cp = std::cos(pitch * kDegree);
    const Wide sr = std::sin(roll * kDegree);
    const Wide cr = std::cos(roll * kDegree);
    const WideVector rolled = {v[0], v[1] * cr - v[2] * sr, v[1] * sr + v[2] * cr};
    const WideVector level = {rolled[0] * cp - rolled[2] * sp, rolled[1],
                              rolled[0] * sp + rolled[2] * cp};
    const Wide sh = std::sin(heading * kDegree);
    const Wide ch = std::cos(heading * kDegree);
    return {level[0] * sh - level[1] * ch, level[0] * ch + level[1] * sh, level[2]};
}

// Instrument axes to east, north, up as a matrix. Four beams give the vertical twice: each estimate has a row of its
// own, and half of it goes into the horizontal components.
inline WideSquare attitudeMatrix(std::size_t n, Wide heading, Wide pitch, Wide roll) {
    WideSquare m{};
    const WideVector x = toEarth({1, 0, 0}, heading, pitch, roll);
    const WideVector y = toEarth({0, 1, 0}, heading, pitch, roll);
    const WideVector z = toEarth({0, 0, 1}, heading, pitch, roll);
    for (std::size_t i = 0; i < 3; ++i) {
        m[i] = {x[i], y[i], z[i], 0.0L};
    }
    if (n == 4) {
        m[0] = {x[0], y[0], z[0] / 2, z[0] / 2};
        m[1] = {x[1], y[1], z[1] / 2, z[1] / 2};
        m[3] = {x[2], y[2], 0.0L, z[2]};
    }
    return m;
}

} // namespace orvik::test
