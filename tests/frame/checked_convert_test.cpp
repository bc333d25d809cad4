#include "frame/checked_convert.hpp"

#include <cmath>
#include <cstdint>
#include <limits>

#include <gtest/gtest.h>

namespace {

using ov::truncateToInt;

constexpr std::int32_t kIntMin = std::numeric_limits<std::int32_t>::min();
constexpr std::int32_t kIntMax = std::numeric_limits<std::int32_t>::max();

TEST(TruncateToInt, TruncatesTowardsZero) {
    EXPECT_EQ(truncateToInt(0.0), 0);
    EXPECT_EQ(truncateToInt(-0.0), 0);
    EXPECT_EQ(truncateToInt(2.999999999), 2);
    EXPECT_EQ(truncateToInt(-2.999999999), -2);
    EXPECT_EQ(truncateToInt(-0.5), 0);
}

TEST(TruncateToInt, KeepsWhatFitsUpToTheLimits) {
    EXPECT_EQ(truncateToInt(2147483646.0), kIntMax - 1);
    EXPECT_EQ(truncateToInt(2147483647.0), kIntMax);
    EXPECT_EQ(truncateToInt(2147483647.9), kIntMax);
    EXPECT_EQ(truncateToInt(-2147483647.5), kIntMin + 1);
    EXPECT_EQ(truncateToInt(-2147483648.0), kIntMin);
    EXPECT_EQ(truncateToInt(-2147483648.9), kIntMin);
}

TEST(TruncateToInt, GivesTheSmallestIntegerForWhatDoesNotFit) {
    EXPECT_EQ(truncateToInt(2147483648.0), kIntMin);
    EXPECT_EQ(truncateToInt(-2147483649.0), kIntMin);
    EXPECT_EQ(truncateToInt(1.0e300), kIntMin);
    EXPECT_EQ(truncateToInt(std::numeric_limits<double>::infinity()), kIntMin);
    EXPECT_EQ(truncateToInt(-std::numeric_limits<double>::infinity()), kIntMin);
    EXPECT_EQ(truncateToInt(std::nan("")), kIntMin);
}

} // namespace
