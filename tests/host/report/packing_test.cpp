// Arrays in a page: a value comes back as the file's, rounded to the digits it was packed with.
#include <cmath>
#include <limits>

#include <gtest/gtest.h>

#include "report/packing.hpp"

namespace {

using orvik::decimalCodes;
using orvik::stepCodes;
using Codes = std::vector<std::uint16_t>;

constexpr double kMissing = std::numeric_limits<double>::quiet_NaN();

// The value that a code stands for, from the formula beside decimalCodes().
double decoded(unsigned code, int digits, int lowest) {
    const auto first = static_cast<unsigned>(std::lround(std::pow(10.0, digits - 1)));
    const unsigned perDecade = 9 * first;
    const unsigned mantissa = first + (code - 2) % perDecade;
    const int exponent = lowest + static_cast<int>((code - 2) / perDecade);
    return mantissa * std::pow(10.0, exponent - digits + 1);
}

TEST(Packing, MissingAndSmallValuesHaveCodesOfTheirOwn) {
    EXPECT_EQ(decimalCodes({kMissing, std::numeric_limits<double>::infinity()}, 3, -4),
              (Codes{0, 0}));
    EXPECT_EQ(decimalCodes({0.0, -1.0, 0.99e-4}, 2, -4), (Codes{1, 1, 1}));
}

TEST(Packing, LowestCodeIsTheLowestPowerOfTen) {
    EXPECT_EQ(decimalCodes({1e-4}, 3, -4), (Codes{2}));
    EXPECT_EQ(decimalCodes({0.9996e-4}, 3, -4), (Codes{2})); // rounded up to it
    EXPECT_EQ(decimalCodes({0.9994e-4}, 3, -4), (Codes{1}));
}

TEST(Packing, DecadesFollowOneAnother) {
    EXPECT_EQ(decimalCodes({9.99, 9.996, 10.0}, 3, 0), (Codes{901, 902, 902}));
    EXPECT_EQ(decimalCodes({9.9, 9.96, 10.0}, 2, 0), (Codes{91, 92, 92}));
}

TEST(Packing, ValuesComeBackRoundedToTheirDigits) {
    double value = 1.2345e-6;
    for (int i = 0; i < 400; ++i, value *= 1.0517) {
        for (const int digits : {2, 3}) {
            const unsigned code = decimalCodes({value}, digits, -7).front();
            char text[32] = {};
            std::snprintf(text, sizeof text, "%.*e", digits - 1, value);
            EXPECT_NEAR(decoded(code, digits, -7) / std::strtod(text, nullptr), 1.0, 1e-12)
                << value << " to " << digits << " digits";
        }
    }
}

TEST(Packing, StepsAreCountedFromOne) {
    EXPECT_EQ(stepCodes({kMissing, 0.0, 0.04, 0.06, 359.96}, 0.1), (Codes{0, 1, 1, 2, 3601}));
    EXPECT_EQ(stepCodes({-5.0, 1e9}, 0.1), (Codes{1, 65535}));
}

TEST(Packing, GreatestExponent) {
    EXPECT_EQ(orvik::greatestExponent({0.02, kMissing, 99.9}), 1);
    EXPECT_EQ(orvik::greatestExponent({0.02}), -2);
    EXPECT_EQ(orvik::greatestExponent({kMissing, 0.0}), 0);
}

// By another program: base64.b64encode(zlib.compress(struct.pack("<f", 1.0), 9)) of Python.
TEST(Packing, BytesAreDeflatedInBase64) { EXPECT_EQ(orvik::packFloats({1.0}), "eNpjYGiwBwABQwDA"); }

} // namespace
