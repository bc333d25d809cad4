#include "spectral/profile_beams.hpp"

#include <cmath>
#include <cstddef>
#include <random>

#include <gtest/gtest.h>

#include "spectral/velocity_frames.hpp"
#include "support/record_ptr.hpp"

namespace {

using orvik::test::kDegree;
using orvik::test::makeRecord;
using orvik::test::RecordPtr;
using orvik::test::toEarth;
using orvik::test::Wide;
using orvik::test::WideVector;

using Azimuths = std::array<float, 4>;
using Directions = std::array<WideVector, 4>;

constexpr Azimuths kQuarters{0.0F, 90.0F, 180.0F, 270.0F};
constexpr std::array<int, 4> kPairSign{1, -1, 1, -1}; // beams 1 and 3 against 2 and 4

RecordPtr recordOf(const Azimuths &azimuths, float slant = 25.0F, float pitch = 0.0F,
                   float roll = 0.0F) {
    RecordPtr record = makeRecord();
    for (std::size_t b = 0; b < 4; ++b) {
        record->beamAzimuth[b] = azimuths[b];
    }
    record->slantAngle = slant;
    record->pitch = pitch;
    record->roll = roll;
    record->beamCount = 4;
    return record;
}

// Where the beams really point, in the level frame at heading 0.
Directions pointing(const Azimuths &azimuths, float slant, float pitch, float roll) {
    Directions result{};
    for (std::size_t b = 0; b < 4; ++b) {
        const Wide az = static_cast<Wide>(azimuths[b]) * kDegree;
        const Wide s = static_cast<Wide>(slant) * kDegree;
        result[b] = toEarth({std::cos(az) * std::sin(s), std::sin(az) * std::sin(s), std::cos(s)},
                            0.0L, static_cast<Wide>(pitch), static_cast<Wide>(roll));
    }
    return result;
}

// What the smallest-norm inverse makes of them: the part along (1, -1, 1, -1), in which only the two vertical estimates
// differ, is lost.
Directions withoutPairDifference(const Directions &d) {
    Directions result = d;
    for (std::size_t c = 0; c < 3; ++c) {
        Wide difference = 0.0L;
        for (std::size_t b = 0; b < 4; ++b) {
            difference += kPairSign[b] * d[b][c];
        }
        for (std::size_t b = 0; b < 4; ++b) {
            result[b][c] -= kPairSign[b] * difference / 4;
        }
    }
    return result;
}

void expectDirections(const OVRecord &record, const Directions &expected, double tolerance) {
    const auto actual = ov::profileBeamDirections(record);
    for (std::size_t b = 0; b < 4; ++b) {
        for (std::size_t c = 0; c < 3; ++c) {
            EXPECT_NEAR(actual[b][c], static_cast<double>(expected[b][c]), tolerance)
                << "beam " << b + 1 << " component " << c;
        }
    }
}

TEST(ProfileBeams, LevelQuarterBeamsPointNorthWestSouthAndEast) {
    const double s = std::sin(25.0 * M_PI / 180.0);
    const double c = std::cos(25.0 * M_PI / 180.0);
    const Directions expected = {{{0, s, c}, {-s, 0, c}, {0, -s, c}, {s, 0, c}}};
    expectDirections(*recordOf(kQuarters), expected, 1e-14);
}

// The level frame is the instrument's own turned so that its X axis points north.
TEST(ProfileBeams, InTheInstrumentsAxesTheyAreSlantAndAzimuth) {
    const auto level = ov::profileBeamDirections(*recordOf(kQuarters));
    for (std::size_t b = 0; b < 4; ++b) {
        const double az = static_cast<double>(kQuarters[b]) * M_PI / 180.0;
        const double s = 25.0 * M_PI / 180.0;
        EXPECT_NEAR(level[b][1], std::sin(s) * std::cos(az), 1e-14);
        EXPECT_NEAR(-level[b][0], std::sin(s) * std::sin(az), 1e-14);
        EXPECT_NEAR(level[b][2], std::cos(s), 1e-14);
    }
}

// Angles are converted in double precision: single precision would show at 1e-8.
TEST(ProfileBeams, TiltTurnsThemAsARigidBody) {
    const struct {
        float pitch, roll;
    } tilts[] = {{0.0F, 0.0F}, {5.0F, 0.0F},    {0.0F, -7.5F},
                 {3.3F, 4.7F}, {-30.0F, 60.0F}, {179.0F, 1.0F}};
    for (const auto &tilt : tilts) {
        for (const float slant : {5.0F, 20.0F, 25.0F, 45.0F, 80.0F}) {
            const RecordPtr record = recordOf(kQuarters, slant, tilt.pitch, tilt.roll);
            expectDirections(*record, pointing(kQuarters, slant, tilt.pitch, tilt.roll), 2e-13);
        }
    }
}

TEST(ProfileBeams, AnyFourAzimuthsThatBalanceGiveTrueDirections) {
    // Beams 1 and 3 together point where 2 and 4 together point: rectangles and turned crosses.
    for (const Azimuths &azimuths :
         {Azimuths{45.0F, 135.0F, 225.0F, 315.0F}, Azimuths{30.0F, 150.0F, 210.0F, 330.0F},
          Azimuths{0.0F, -90.0F, 180.0F, 90.0F}, Azimuths{10.0F, 100.0F, 190.0F, 280.0F}}) {
        const RecordPtr record = recordOf(azimuths, 25.0F, 2.0F, -3.0F);
        expectDirections(*record, pointing(azimuths, 25.0F, 2.0F, -3.0F), 1e-13);
    }
}

TEST(ProfileBeams, AzimuthsThatDoNotBalanceLoseTheDifferenceOfThePairs) {
    std::mt19937 random(20240517);
    std::uniform_real_distribution<float> azimuth(0.0F, 360.0F);
    std::uniform_real_distribution<float> angle(-15.0F, 15.0F);
    for (int draw = 0; draw < 50; ++draw) {
        const Azimuths azimuths{azimuth(random), azimuth(random), azimuth(random), azimuth(random)};
        const float pitch = angle(random);
        const float roll = angle(random);
        const double s = std::sin(static_cast<double>(azimuths[0] - azimuths[2]) * M_PI / 360.0);
        const double t = std::sin(static_cast<double>(azimuths[1] - azimuths[3]) * M_PI / 360.0);
        const double u =
            std::sin(static_cast<double>(azimuths[0] + azimuths[2] - azimuths[1] - azimuths[3]) *
                     M_PI / 360.0);
        if (std::abs(s * t * u) < 0.02) {
            continue; // nearly singular
        }
        const RecordPtr record = recordOf(azimuths, 25.0F, pitch, roll);
        expectDirections(*record, withoutPairDifference(pointing(azimuths, 25.0F, pitch, roll)),
                         1e-11);
    }
}

// Three beams a third of a turn apart: no fourth azimuth balances them. The one opposite beam 2 bends least: beam 2 keeps
// its azimuth and three quarters of its slope, the others turn towards it by 14 degrees.
TEST(ProfileBeams, ThreeBeamsAreLeastBentByAFourthOppositeTheSecond) {
    const auto worstShift = [](float fourth) {
        const Azimuths azimuths{0.0F, 120.0F, 240.0F, fourth};
        const auto actual = ov::profileBeamDirections(*recordOf(azimuths));
        const Directions real = pointing(azimuths, 25.0F, 0.0F, 0.0F);
        double worst = 0.0;
        for (std::size_t b = 0; b < 3; ++b) {
            const double x = actual[b][0] - static_cast<double>(real[b][0]);
            const double y = actual[b][1] - static_cast<double>(real[b][1]);
            EXPECT_NEAR(actual[b][2], static_cast<double>(real[b][2]),
                        1e-12); // the vertical is never bent
            worst = std::max(worst, std::hypot(x, y));
        }
        return worst / std::sin(25.0 * M_PI / 180.0);
    };
    EXPECT_NEAR(worstShift(300.0F), 0.25, 1e-9);
    EXPECT_NEAR(worstShift(1e-3F), std::sqrt(3.0) / 4.0, 1e-4);
    EXPECT_NEAR(worstShift(180.0F), std::sqrt(7.0) / 4.0, 1e-9);
    for (int fourth = 5; fourth < 360; fourth += 5) {
        if (fourth != 120 && fourth != 300) { // two vertical beams of one azimuth: singular
            EXPECT_GT(worstShift(static_cast<float>(fourth)), 0.25) << fourth;
        }
    }
}

TEST(ProfileBeams, WithoutAzimuthsTheyStandInTheFourQuarters) {
    expectDirections(*recordOf({0.0F, -0.0F, 0.0F, 0.0F}, 25.0F, 2.0F, 3.0F),
                     pointing(kQuarters, 25.0F, 2.0F, 3.0F), 1e-13);
}

TEST(ProfileBeams, NeitherHeadingNorBeamCountMovesThem) {
    const RecordPtr record = recordOf(kQuarters, 25.0F, 2.0F, 3.0F);
    const auto before = ov::profileBeamDirections(*record);
    record->heading = 123.0F;
    record->beamCount = 3;
    EXPECT_EQ(ov::profileBeamDirections(*record), before);
}

TEST(ProfileBeams, ASingularHeadGivesNoNumbers) {
    const auto vertical = ov::profileBeamDirections(*recordOf(kQuarters, 0.0F));
    EXPECT_FALSE(std::isfinite(vertical[0][0]));
    const auto oneAzimuth = ov::profileBeamDirections(*recordOf({40.0F, 40.0F, 40.0F, 40.0F}));
    EXPECT_FALSE(std::isfinite(oneAzimuth[0][0]) && std::abs(oneAzimuth[0][0]) <= 1.0);
}

TEST(ProfileBeams, TheTrackBeamLeansWithRollAndAgainstPitch) {
    const RecordPtr record = recordOf(kQuarters);
    const auto level = ov::trackBeamDirection(*record);
    EXPECT_EQ(level, (ov::Vector3{0.0, 0.0, 1.0}));
    for (const float pitch : {-8.0F, 3.0F}) {
        for (const float roll : {-2.0F, 6.0F}) {
            record->pitch = pitch;
            record->roll = roll;
            const double p = static_cast<double>(pitch) * M_PI / 180.0;
            const double r = static_cast<double>(roll) * M_PI / 180.0;
            const auto direction = ov::trackBeamDirection(*record);
            EXPECT_NEAR(direction[0], std::sin(r), 1e-15);
            EXPECT_NEAR(direction[1], -std::sin(p), 1e-15);
            EXPECT_NEAR(direction[2], std::cos(p) * std::cos(r), 1e-15);
        }
    }
}

// The track beam is the instrument's Z axis; for small tilts both descriptions agree to second order.
TEST(ProfileBeams, TheTrackBeamIsTheInstrumentsZAxis) {
    const RecordPtr record = recordOf(kQuarters, 25.0F, 3.0F, -4.0F);
    const WideVector z = toEarth({0, 0, 1}, 0.0L, 3.0L, -4.0L);
    const auto direction = ov::trackBeamDirection(*record);
    for (std::size_t c = 0; c < 3; ++c) {
        EXPECT_NEAR(direction[c], static_cast<double>(z[c]), 0.004);
    }
}

} // namespace
