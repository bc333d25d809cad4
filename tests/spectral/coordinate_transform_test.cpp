#include "spectral/coordinate_transform.hpp"

#include <cmath>
#include <cstddef>
#include <cstdint>
#include <random>

#include <gtest/gtest.h>

#include "spectral/velocity_frames.hpp"
#include "support/record_ptr.hpp"

namespace {

using orvik::test::attitudeMatrix;
using orvik::test::makeRecord;
using orvik::test::product;
using orvik::test::RecordPtr;
using orvik::test::Wide;
using orvik::test::wideIdentity;
using orvik::test::wideInverse;
using orvik::test::WideSquare;
using ov::Attitude;
using ov::coordinateTransformMatrix;
using ov::MatrixN;

constexpr int kAsMounted = 4;
constexpr Attitude kLevelNorth{0.0F, 0.0F, 0.0F};
constexpr Attitude kTilted{137.5F, 6.0F, -4.0F};

void expectNear(const MatrixN &actual, const WideSquare &expected, std::size_t n,
                double tolerance) {
    for (std::size_t i = 0; i < n; ++i) {
        for (std::size_t j = 0; j < n; ++j) {
            EXPECT_NEAR(actual[i][j], static_cast<double>(expected[i][j]), tolerance)
                << i << ' ' << j;
        }
    }
}

// Slanted beams of 25 degrees: three a third of a turn apart, or four in the quarters with two vertical estimates.
MatrixN head(int n) {
    const double s = 25.0 * M_PI / 180.0;
    const auto x = static_cast<float>(1.0 / (2.0 * std::sin(s)));
    const auto third = static_cast<float>(1.0 / (3.0 * std::sin(s)));
    const auto root = static_cast<float>(1.0 / (std::sqrt(3.0) * std::sin(s)));
    const auto up = static_cast<float>(1.0 / (3.0 * std::cos(s)));
    const auto pair = static_cast<float>(1.0 / (2.0 * std::cos(s)));
    MatrixN m{};
    if (n == 3) {
        m[0] = {2 * third, -third, -third, 0};
        m[1] = {0, root, -root, 0};
        m[2] = {up, up, up, 0};
    } else {
        m[0] = {x, 0, -x, 0};
        m[1] = {0, x, 0, -x};
        m[2] = {pair, 0, pair, 0};
        m[3] = {0, pair, 0, pair};
    }
    return m;
}

WideSquare wide(const MatrixN &m) {
    WideSquare result{};
    for (std::size_t i = 0; i < 4; ++i) {
        for (std::size_t j = 0; j < 4; ++j) {
            result[i][j] = static_cast<Wide>(m[i][j]);
        }
    }
    return result;
}

// Rows of the instrument matrix as the mounting takes them: row number, negative for its opposite.
WideSquare mounted(const WideSquare &m, int orientation) {
    std::array<int, 4> rows{1, -2, -3, -4};
    switch (orientation) {
    case 4:
    case 10:
        rows = {1, 2, 3, 4};
        break;
    case 0:
        rows = {3, -2, 1, 1};
        break;
    case 1:
        rows = {3, 2, -1, -1};
        break;
    case 2:
        rows = {3, 1, 2, 2};
        break;
    case 3:
        rows = {3, -1, -2, -2};
        break;
    default:
        break;
    }
    WideSquare result{};
    for (std::size_t r = 0; r < 4; ++r) {
        const auto from = static_cast<std::size_t>(std::abs(rows[r]) - 1);
        for (std::size_t c = 0; c < 4; ++c) {
            result[r][c] = rows[r] < 0 ? -m[from][c] : m[from][c];
        }
    }
    return result;
}

WideSquare toEarthMatrix(const WideSquare &instrument, int n, int orientation, const Attitude &at) {
    const auto size = static_cast<std::size_t>(n);
    const WideSquare r = attitudeMatrix(size, static_cast<Wide>(at.heading),
                                        static_cast<Wide>(at.pitch), static_cast<Wide>(at.roll));
    return product(r, mounted(instrument, orientation), size);
}

TEST(CoordinateTransform, TheSameSystemIsTheIdentity) {
    for (const int n : {3, 4}) {
        for (const int system : {0, 1, 2, 7}) {
            const MatrixN m =
                coordinateTransformMatrix(system, system, n, kAsMounted, kTilted, head(n));
            expectNear(m, wideIdentity(), static_cast<std::size_t>(n), 0.0);
        }
    }
}

TEST(CoordinateTransform, BeamAndXyzDependOnTheInstrumentAlone) {
    for (const int n : {3, 4}) {
        const auto size = static_cast<std::size_t>(n);
        for (const int orientation : {0, 4, 9}) {
            const MatrixN toXyz = coordinateTransformMatrix(2, 1, n, orientation, kTilted, head(n));
            EXPECT_EQ(toXyz, head(n));
            const MatrixN toBeam =
                coordinateTransformMatrix(1, 2, n, orientation, kTilted, head(n));
            expectNear(toBeam, wideInverse(wide(head(n)), size), size, 1e-6);
        }
    }
}

TEST(CoordinateTransform, LevelAtHeadingZeroXIsNorthAndYIsWest) {
    const MatrixN m = coordinateTransformMatrix(1, 0, 3, kAsMounted, kLevelNorth, head(3));
    expectNear(m, {{{0, -1, 0, 0}, {1, 0, 0, 0}, {0, 0, 1, 0}, {}}}, 3, 1e-7);
}

TEST(CoordinateTransform, AHeadingOf90PointsXEast) {
    const MatrixN m = coordinateTransformMatrix(1, 0, 3, kAsMounted, {90.0F, 0.0F, 0.0F}, head(3));
    expectNear(m, {{{1, 0, 0, 0}, {0, 1, 0, 0}, {0, 0, 1, 0}, {}}}, 3, 1e-7);
}

TEST(CoordinateTransform, FourBeamsKeepBothVerticalEstimates) {
    const MatrixN m = coordinateTransformMatrix(1, 0, 4, kAsMounted, {90.0F, 0.0F, 0.0F}, head(4));
    expectNear(m, wideIdentity(), 4, 1e-7);
    // A tilt mixes half of each estimate into the horizontal, and the horizontal into each.
    const MatrixN tilted =
        coordinateTransformMatrix(1, 0, 4, kAsMounted, {90.0F, 10.0F, 0.0F}, head(4));
    const auto s = static_cast<Wide>(std::sin(10.0 * M_PI / 180.0));
    const auto c = static_cast<Wide>(std::cos(10.0 * M_PI / 180.0));
    expectNear(tilted, {{{c, 0, -s / 2, -s / 2}, {0, 1, 0, 0}, {s, 0, c, 0}, {s, 0, 0, c}}}, 4,
               1e-7);
}

TEST(CoordinateTransform, EveryMountingReordersTheBeamMatrix) {
    std::mt19937 random(7);
    std::uniform_real_distribution<float> heading(-180.0F, 360.0F);
    std::uniform_real_distribution<float> tilt(-30.0F, 30.0F);
    for (const int orientation : {0, 1, 2, 3, 4, 5, 9, 10, -1}) {
        for (const int n : {3, 4}) {
            const Attitude at{heading(random), tilt(random), tilt(random)};
            const MatrixN m = coordinateTransformMatrix(2, 0, n, orientation, at, head(n));
            expectNear(m, toEarthMatrix(wide(head(n)), n, orientation, at),
                       static_cast<std::size_t>(n), 3e-6);
        }
    }
}

TEST(CoordinateTransform, MountingsTurnXyzToo) {
    for (const int orientation : {0, 1, 2, 3, 5, 10}) {
        const MatrixN m = coordinateTransformMatrix(1, 0, 3, orientation, kTilted, head(3));
        expectNear(m, toEarthMatrix(wideIdentity(), 3, orientation, kTilted), 3, 1e-6);
    }
}

TEST(CoordinateTransform, FromEarthIsTheInverseOfToEarth) {
    std::mt19937 random(11);
    std::uniform_real_distribution<float> heading(0.0F, 360.0F);
    std::uniform_real_distribution<float> tilt(-20.0F, 20.0F);
    for (int draw = 0; draw < 40; ++draw) {
        const Attitude at{heading(random), tilt(random), tilt(random)};
        for (const int n : {3, 4}) {
            const auto size = static_cast<std::size_t>(n);
            for (const int system : {1, 2}) {
                const MatrixN there =
                    coordinateTransformMatrix(system, 0, n, kAsMounted, at, head(n));
                const MatrixN back =
                    coordinateTransformMatrix(0, system, n, kAsMounted, at, head(n));
                expectNear(back, wideInverse(wide(there), size), size, 5e-6);
                const WideSquare round = product(wide(back), wide(there), size);
                for (std::size_t i = 0; i < size; ++i) {
                    for (std::size_t j = 0; j < size; ++j) {
                        EXPECT_NEAR(static_cast<double>(round[i][j]), i == j ? 1.0 : 0.0, 5e-6);
                    }
                }
            }
        }
    }
}

// A uniform current has the same components whatever the attitude from which the beams see it.
TEST(CoordinateTransform, AUniformCurrentComesBackFromAnyAttitude) {
    const double current[3] = {0.4, -0.7, 0.1};
    for (const Attitude &at : {kLevelNorth, kTilted, Attitude{300.0F, -10.0F, 12.0F}}) {
        const WideSquare r =
            attitudeMatrix(3, static_cast<Wide>(at.heading), static_cast<Wide>(at.pitch),
                           static_cast<Wide>(at.roll));
        std::array<double, 4> along{};
        for (std::size_t b = 0; b < 4; ++b) {
            const double az = 0.5 * M_PI * static_cast<double>(b);
            const double s = 25.0 * M_PI / 180.0;
            const double beam[3] = {std::cos(az) * std::sin(s), std::sin(az) * std::sin(s),
                                    std::cos(s)};
            for (std::size_t axis = 0; axis < 3; ++axis) {
                for (std::size_t e = 0; e < 3; ++e) {
                    along[b] += static_cast<double>(r[e][axis]) * beam[axis] * current[e];
                }
            }
        }
        const MatrixN m = coordinateTransformMatrix(2, 0, 4, kAsMounted, at, head(4));
        std::array<double, 4> earth{};
        for (std::size_t i = 0; i < 4; ++i) {
            for (std::size_t b = 0; b < 4; ++b) {
                earth[i] += static_cast<double>(m[i][b]) * along[b];
            }
        }
        EXPECT_NEAR(earth[0], current[0], 2e-6);
        EXPECT_NEAR(earth[1], current[1], 2e-6);
        EXPECT_NEAR((earth[2] + earth[3]) / 2.0, current[2], 2e-6);
    }
}

TEST(CoordinateTransform, ASingularInstrumentGivesNoNumbers) {
    const MatrixN m = coordinateTransformMatrix(1, 2, 3, kAsMounted, kLevelNorth, MatrixN{});
    EXPECT_FALSE(std::isfinite(m[0][0]));
}

TEST(CoordinateTransform, AnyCountButThreeIsFourBeams) {
    const RecordPtr record = makeRecord();
    for (const int count : {-1, 0, 1, 2, 3, 4, 5}) {
        record->beamCount = static_cast<std::int16_t>(count);
        EXPECT_EQ(ov::usableBeamCount(*record), count == 3 ? 3 : 4);
    }
}

// exact: the scale is a power of two.
TEST(CoordinateTransform, TheInstrumentMatrixIsReadRowByRowForItsBeams) {
    const RecordPtr record = makeRecord();
    for (int i = 0; i < 16; ++i) {
        record->transformMatrix[i] = static_cast<std::int16_t>(1000 * i - 8000);
    }
    for (const int n : {3, 4}) {
        const MatrixN m = ov::instrumentMatrix(*record, n);
        for (int i = 0; i < n * n; ++i) {
            const float expected = static_cast<float>(1000 * i - 8000) / 4096.0F;
            EXPECT_EQ(m[static_cast<std::size_t>(i / n)][static_cast<std::size_t>(i % n)],
                      expected);
        }
    }
}

} // namespace
