// Beam directions and rotations against directions that can be told by looking at the instrument.
#include "burst/geometry.hpp"

#include <gtest/gtest.h>

#include <cmath>

#include "user_error.hpp"

namespace orvik {
namespace {

constexpr double kRounding = 1e-12;

void expectVector(const Vector3 &found, const Vector3 &expected, const char *what) {
    for (std::size_t i = 0; i < 3; ++i) {
        EXPECT_NEAR(found[i], expected[i], kRounding) << what << ", component " << i;
    }
}

struct AxisCase {
    const char *name;
    double heading, pitch, roll;
    Vector3 x, y, z; // east, north, up
};

const double kSin10 = std::sin(10.0 * kRadiansPerDegree);
const double kCos10 = std::cos(10.0 * kRadiansPerDegree);

TEST(Geometry, AxesOnTheEarth) {
    const AxisCase cases[] = {
        {"level, heading north", 0, 0, 0, {0, 1, 0}, {-1, 0, 0}, {0, 0, 1}},
        {"level, heading east", 90, 0, 0, {1, 0, 0}, {0, 1, 0}, {0, 0, 1}},
        {"level, heading south", 180, 0, 0, {0, -1, 0}, {1, 0, 0}, {0, 0, 1}},
        {"heading north, X lifted",
         0,
         10,
         0,
         {0, kCos10, kSin10},
         {-1, 0, 0},
         {0, -kSin10, kCos10}},
        {"heading north, Y lifted", 0, 0, 10, {0, 1, 0}, {-kCos10, 0, kSin10}, {kSin10, 0, kCos10}},
        {"heading east, X lifted", 90, 10, 0, {kCos10, 0, kSin10}, {0, 1, 0}, {-kSin10, 0, kCos10}},
        {"heading east, Y lifted", 90, 0, 10, {1, 0, 0}, {0, kCos10, kSin10}, {0, -kSin10, kCos10}},
    };
    for (const AxisCase &row : cases) {
        const Matrix3 turn = xyzToEnuMatrix(row.heading, row.pitch, row.roll);
        expectVector(product(turn, Vector3{1, 0, 0}), row.x, row.name);
        expectVector(product(turn, Vector3{0, 1, 0}), row.y, row.name);
        expectVector(product(turn, Vector3{0, 0, 1}), row.z, row.name);
    }
}

TEST(Geometry, AttitudeIsARotation) {
    const Matrix3 turn = xyzToEnuMatrix(211.0, -13.0, 24.0);
    Matrix3 transposed{};
    for (std::size_t i = 0; i < 9; ++i) {
        transposed[i] = turn[3 * (i % 3) + i / 3];
    }
    const Matrix3 identity = product(turn, transposed);
    for (std::size_t i = 0; i < 9; ++i) {
        EXPECT_NEAR(identity[i], i % 4 == 0 ? 1.0 : 0.0, kRounding);
    }
}

TEST(Geometry, BeamsLeanTowardsTheirAzimuths) {
    Instrument instrument;
    instrument.slantAngle = 30.0;
    instrument.beamAzimuth = {0.0, 90.0, 225.0};
    const auto beams = beamDirections(instrument);
    const double half = 0.5;
    const double up = std::sqrt(0.75);
    expectVector(beams[0], {half, 0, up}, "azimuth 0 is X");
    expectVector(beams[1], {0, half, up}, "azimuth 90 is Y");
    expectVector(beams[2], {-half * std::sqrt(0.5), -half * std::sqrt(0.5), up}, "azimuth 225");
}

TEST(Geometry, BeamsAreEvenlySpacedWhenNothingIsSaid) {
    Instrument silent;
    Instrument even;
    even.beamAzimuth = {0.0, 120.0, 240.0};
    EXPECT_EQ(beamDirections(silent), beamDirections(even));
}

TEST(Geometry, MatrixAndBeamsAgree) {
    Instrument instrument;
    instrument.beamAzimuth = {15.0, 140.0, 262.0};
    const Matrix3 matrix = beamToXyzMatrix(instrument);
    const auto beams = beamDirections(instrument);
    const Vector3 velocity{0.3, -0.8, 0.1};
    Vector3 along{};
    for (std::size_t b = 0; b < 3; ++b) {
        along[b] =
            beams[b][0] * velocity[0] + beams[b][1] * velocity[1] + beams[b][2] * velocity[2];
    }
    expectVector(product(matrix, along), velocity, "velocity back from its beams");

    Instrument told;
    told.beamToXyz = matrix;
    const auto toldBeams = beamDirections(told);
    for (std::size_t b = 0; b < 3; ++b) {
        expectVector(toldBeams[b], beams[b], "beam of the matrix");
    }
    EXPECT_EQ(beamToXyzMatrix(told), matrix);
}

TEST(Geometry, UnusableBeamsAreRefused) {
    Instrument instrument;
    instrument.beamAzimuth = {0.0, 120.0};
    EXPECT_THROW(beamDirections(instrument), UserError);
    instrument.beamAzimuth = {0.0, 120.0, 120.0};
    EXPECT_THROW(beamToXyzMatrix(instrument), UserError);
    instrument.beamToXyz = Matrix3{1, 2, 3, 2, 4, 6, 0, 0, 1};
    EXPECT_THROW(beamDirections(instrument), UserError);
    instrument.beamToXyz = Matrix3{kUnknown, 0, 0, 0, 1, 0, 0, 0, 1};
    EXPECT_THROW(beamDirections(instrument), UserError);
}

} // namespace
} // namespace orvik
