#include "input/profile_noise.hpp"

#include <cmath>
#include <cstdint>
#include <limits>

#include <gtest/gtest.h>

#include "support/record_ptr.hpp"

namespace {

using orvik::test::makeRecord;
using orvik::test::RecordPtr;

struct NoiseCase {
    const char *name;
    float cell;      // [m] along the beam
    float ambiguity; // [m/s]
    std::uint32_t pings;
    float frequency; // [Hz]
    std::int16_t beams;
    double noise; // [cm/s], from 40-digit arithmetic
};

// clang-format off
constexpr NoiseCase kCases[] = {
    {"lag 372, two codes",                0.5F,   1.0F,   1, 1000000.0F, 4, 0.0434806518936},
    {"ten pings",                         0.5F,   1.0F,  10, 1000000.0F, 4, 0.0137497894133},
    {"a single beam looks straight up",   0.5F,   1.0F,   1, 1000000.0F, 1, 0.0455358857232},
    {"two beams are slanted",             0.5F,   1.0F,   1, 1000000.0F, 2, 0.0434806518936},
    {"three beams are as well",           0.5F,   1.0F,   1, 1000000.0F, 3, 0.0434806518936},
    {"lag 188, four codes",               1.0F,   2.0F,   4,  500000.0F, 4, 0.0216627822515},
    {"250 kHz: 20 degrees",               2.0F,   3.0F,   1,  250000.0F, 4, 0.0522626970093},
    {"100 kHz: 20 degrees",               8.0F,   3.0F,   1,  100000.0F, 4, 0.0342172054222},
    {"75 kHz: sampling rate of its own", 16.0F,   3.0F,   1,   75000.0F, 4, 0.0232469003980},
    {"60 kHz: 20 degrees",               16.0F,   3.0F,   1,   60000.0F, 4, 0.0287287243988},
    {"55 kHz samples at the wide rate",  16.0F,   3.0F,   1,   55000.0F, 4, 0.0282637082673},
    {"56 kHz is fast enough",            16.0F,   3.0F,   1,   56000.0F, 4, 0.0291159837164},
    {"40 kHz samples at the wide rate",  16.0F,   3.0F,   1,   40000.0F, 4, 0.0267169352379},
    {"half a kilohertz rounds up",       16.0F,   3.0F,   1,   54500.0F, 4, 0.0282637082673},
    {"less than half rounds down",       16.0F,   3.0F,   1,   54499.0F, 4, 0.0267169352379},
    {"lag 4, the shortest",               0.5F,  75.0F,   1, 1000000.0F, 4, 0.367953195336},
    {"a lag longer than the cell",       0.25F,   0.2F,   1, 1000000.0F, 4, 0.0292511059693},
};
// clang-format on

RecordPtr recordOf(const NoiseCase &c) {
    RecordPtr record = makeRecord();
    record->sensorHeight = c.cell;
    record->lagParameter = c.ambiguity;
    record->pingsPerSample = c.pings;
    record->acousticFrequency = c.frequency;
    record->beamCount = c.beams;
    return record;
}

// ulp: the model is double precision, the result one rounding to single.
TEST(ProfileNoise, FollowsTheModel) {
    for (const NoiseCase &c : kCases) {
        const float noise = ov::profileVelocityNoise(*recordOf(c));
        EXPECT_NEAR(noise, c.noise, 1.2e-7 * c.noise) << c.name;
    }
}

TEST(ProfileNoise, FallsWithTheRootOfThePings) {
    const RecordPtr record = recordOf(kCases[0]);
    const float one = ov::profileVelocityNoise(*record);
    for (const std::uint32_t pings : {4U, 9U, 100U, 4000000000U}) {
        record->pingsPerSample = pings;
        const double expected = static_cast<double>(one) / std::sqrt(static_cast<double>(pings));
        EXPECT_NEAR(ov::profileVelocityNoise(*record), expected, 2e-7 * expected) << pings;
    }
}

TEST(ProfileNoise, TheLagIsAMultipleOfFour) {
    // 1500 / (4 v) between 372 and 375.49 samples is a lag of 372; at 375.5 it rounds to 376.
    const RecordPtr record = recordOf(kCases[0]);
    const auto noiseAtLag = [&record](double lag) {
        record->lagParameter = static_cast<float>(375.0 / lag);
        return ov::profileVelocityNoise(*record);
    };
    const float at372 = noiseAtLag(372.0);
    EXPECT_EQ(noiseAtLag(373.2), at372);
    EXPECT_EQ(noiseAtLag(375.4), at372);
    EXPECT_NE(noiseAtLag(375.6), at372);
    EXPECT_NE(noiseAtLag(371.4), at372);
    EXPECT_EQ(noiseAtLag(375.6), noiseAtLag(376.0));
}

TEST(ProfileNoise, IsZeroWhereTheSettingsGiveNoNumber) {
    constexpr float kNan = std::numeric_limits<float>::quiet_NaN();
    constexpr float kInf = std::numeric_limits<float>::infinity();
    const NoiseCase rows[] = {
        {"no pings", 0.5F, 1.0F, 0, 1.0e6F, 4, 0.0},
        {"a lag below four samples", 0.5F, 108.0F, 1, 1.0e6F, 4, 0.0},
        {"an infinite ambiguity velocity", 0.5F, kInf, 1, 1.0e6F, 4, 0.0},
        {"a cell that is no number", kNan, 1.0F, 1, 1.0e6F, 4, 0.0},
        {"an infinite cell", kInf, 1.0F, 1, 1.0e6F, 4, 0.0},
        {"no cell", 0.0F, 1.0F, 1, 1.0e6F, 4, 0.0},
    };
    for (const NoiseCase &row : rows) {
        EXPECT_EQ(ov::profileVelocityNoise(*recordOf(row)), 0.0F) << row.name;
    }
}

TEST(ProfileNoise, ReadsNothingButItsSettings) {
    const RecordPtr record = recordOf(kCases[0]);
    const float noise = ov::profileVelocityNoise(*record);
    record->slantAngle = 40.0F;
    record->sensorDepth = 3.0F;
    record->cellSize = 77.0F;
    record->selectedCell = 9;
    record->velocityNoise = 5.0F;
    EXPECT_EQ(ov::profileVelocityNoise(*record), noise);
}

} // namespace
