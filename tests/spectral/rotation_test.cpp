#include "spectral/rotation.hpp"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <numbers>
#include <random>

namespace {

using ov::Matrix3;
using ov::Vector3;

constexpr long double kDegree = std::numbers::pi_v<long double> / 180.0L;
// The angle is converted in single precision; for angles to 360 degrees that is good to this [rad].
constexpr double kAngleTolerance = 5e-7;

void expectNear(const Matrix3 &actual, const Matrix3 &expected, double tolerance) {
    for (std::size_t i = 0; i < 3; ++i) {
        for (std::size_t j = 0; j < 3; ++j) {
            EXPECT_NEAR(actual[i][j], expected[i][j], tolerance) << "row " << i << " column " << j;
        }
    }
}

Matrix3 transposed(const Matrix3 &m) {
    Matrix3 result{};
    for (std::size_t i = 0; i < 3; ++i) {
        for (std::size_t j = 0; j < 3; ++j) {
            result[i][j] = m[j][i];
        }
    }
    return result;
}

constexpr Matrix3 kIdentity = {{{1.0, 0.0, 0.0}, {0.0, 1.0, 0.0}, {0.0, 0.0, 1.0}}};

TEST(Rotation, DegreesBecomeRadiansInSinglePrecision) {
    for (const float degrees : {0.0F, 1.0F, -2.5F, 33.3F, 180.0F, 359.9F}) {
        const float product = degrees * 3.1415927F;
        EXPECT_EQ(ov::radiansFromDegrees(degrees), static_cast<double>(product / 180.0F))
            << degrees;
    }
    EXPECT_NE(ov::radiansFromDegrees(180.0F), std::numbers::pi);
}

TEST(Rotation, HeadingZeroTakesXToNorthAndYToWest) {
    expectNear(ov::headingMatrix(0.0F), {{{0.0, -1.0, 0.0}, {1.0, 0.0, 0.0}, {0.0, 0.0, 1.0}}},
               kAngleTolerance);
}

TEST(Rotation, HeadingTakesXToTheCompassDirection) {
    for (const float heading : {0.0F, 30.0F, 90.0F, 137.5F, 180.0F, 270.0F, 359.0F}) {
        const Vector3 x = ov::multiply(ov::headingMatrix(heading), Vector3{1.0, 0.0, 0.0});
        EXPECT_NEAR(x[0], static_cast<double>(std::sin(heading * kDegree)), kAngleTolerance)
            << heading;
        EXPECT_NEAR(x[1], static_cast<double>(std::cos(heading * kDegree)), kAngleTolerance)
            << heading;
        EXPECT_EQ(x[2], 0.0);
    }
}

TEST(Rotation, PitchAloneRaisesX) {
    const Vector3 x = ov::multiply(ov::tiltMatrix(10.0F, 0.0F), Vector3{1.0, 0.0, 0.0});
    EXPECT_NEAR(x[0], static_cast<double>(std::cos(10.0L * kDegree)), kAngleTolerance);
    EXPECT_NEAR(x[1], 0.0, kAngleTolerance);
    EXPECT_NEAR(x[2], static_cast<double>(std::sin(10.0L * kDegree)), kAngleTolerance);
}

TEST(Rotation, RollAloneRaisesY) {
    const Vector3 y = ov::multiply(ov::tiltMatrix(0.0F, 10.0F), Vector3{0.0, 1.0, 0.0});
    EXPECT_NEAR(y[0], 0.0, kAngleTolerance);
    EXPECT_NEAR(y[1], static_cast<double>(std::cos(10.0L * kDegree)), kAngleTolerance);
    EXPECT_NEAR(y[2], static_cast<double>(std::sin(10.0L * kDegree)), kAngleTolerance);
}

// 40-digit arithmetic, rounded.
TEST(Rotation, PitchThirtyRollTwentyIsTheTabledMatrix) {
    const Matrix3 expected = {{{0.8660254037844387, -0.1710100716628344, -0.4698463103929541},
                               {0.0, 0.9396926207859084, -0.3420201433256687},
                               {0.5, 0.2961981327260238, 0.8137976813493738}}};
    expectNear(ov::tiltMatrix(30.0F, 20.0F), expected, 1e-7);
}

TEST(Rotation, EveryAttitudeIsAProperRotation) {
    std::mt19937 random(20);
    std::uniform_real_distribution<float> angle(-180.0F, 360.0F);
    for (int draw = 0; draw < 200; ++draw) {
        const float heading = angle(random);
        const float pitch = angle(random);
        const float roll = angle(random);
        const Matrix3 r = ov::multiply(ov::headingMatrix(heading), ov::tiltMatrix(pitch, roll));
        SCOPED_TRACE(::testing::Message()
                     << heading << " " << pitch << " " << roll << " (seed 20)");
        expectNear(ov::multiply(r, transposed(r)), kIdentity, 1e-14);
        expectNear(ov::inverse(r), transposed(r),
                   1e-14); // a mirror would keep this but turn the sign below
        const double determinant = r[0][0] * (r[1][1] * r[2][2] - r[1][2] * r[2][1]) -
                                   r[0][1] * (r[1][0] * r[2][2] - r[1][2] * r[2][0]) +
                                   r[0][2] * (r[1][0] * r[2][1] - r[1][1] * r[2][0]);
        EXPECT_NEAR(determinant, 1.0, 1e-14);
    }
}

TEST(Rotation, ProductAppliesTheRightMatrixFirst) {
    const Matrix3 a = {{{1.0, 2.0, 3.0}, {4.0, 5.0, 6.0}, {7.0, 8.0, 10.0}}};
    const Matrix3 b = {{{0.0, 1.0, 0.0}, {2.0, 0.0, 0.0}, {0.0, 0.0, 3.0}}};
    expectNear(ov::multiply(a, b), {{{4.0, 1.0, 9.0}, {10.0, 4.0, 18.0}, {16.0, 7.0, 30.0}}}, 0.0);
    const Vector3 v = ov::multiply(a, Vector3{1.0, 0.0, -1.0});
    EXPECT_EQ(v, (Vector3{-2.0, -2.0, -3.0}));
}

TEST(Rotation, InverseOfAnUnsymmetricMatrixIsTheTabledOne) {
    const Matrix3 a = {{{1.0, 2.0, 3.0}, {4.0, 5.0, 6.0}, {7.0, 8.0, 10.0}}};
    const Matrix3 expected = {
        {{-2.0 / 3.0, -4.0 / 3.0, 1.0}, {-2.0 / 3.0, 11.0 / 3.0, -2.0}, {1.0, -2.0, 1.0}}};
    expectNear(ov::inverse(a), expected, 1e-14);
}

TEST(Rotation, SingularMatrixHasAnInverseThatIsNotFinite) {
    for (const auto &row : ov::inverse(Matrix3{})) {
        for (const double value : row) {
            EXPECT_FALSE(std::isfinite(value));
        }
    }
}

} // namespace
