// Confidence limits, the tail of a spectrum and checksums, against values known from elsewhere.
#include <array>
#include <cmath>
#include <cstdint>
#include <fstream>
#include <limits>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

#include "host/burst/scratch_directory.hpp"
#include "host/commands/program.hpp"
#include "results/burst_table.hpp"
#include "results/checksum.hpp"
#include "results/confidence.hpp"
#include "run/spectrum_tail.hpp"
#include "user_error.hpp"
#include "whole_number.hpp"

namespace {

TEST(WholeOr, KeepsWhatTheTypeHolds) {
    constexpr double kInf = std::numeric_limits<double>::infinity();
    const std::vector<std::pair<double, int>> ints{
        {0.0, 0},         {-1.9, -1},         {2147483647.5, 2147483647},
        {-7.0, -7},       {2147483648.0, 5},  {-2147483648.5, -2147483647 - 1},
        {1e300, 5},       {-2147483649.0, 5}, {-kInf, 5},
        {std::nan(""), 5}};
    for (const auto &[value, whole] : ints) {
        EXPECT_EQ(orvik::wholeOr(value, 5), whole) << value;
    }
    EXPECT_EQ(orvik::wholeOr<std::int64_t>(9.0e18, 5), 9000000000000000000);
    EXPECT_EQ(orvik::wholeOr<std::int64_t>(9223372036854775808.0, 5), 5);
    EXPECT_EQ(orvik::wholeOr<std::int64_t>(-9.3e18, 5), 5);
    EXPECT_EQ(orvik::wholeOr<std::size_t>(7.0, 5), 7U);
    EXPECT_EQ(orvik::wholeOr<std::size_t>(-1.0, 5), 5U);
    EXPECT_EQ(orvik::wholeOr<std::size_t>(18446744073709551616.0, 5), 5U);
}

TEST(Confidence, TwoDegreesOfFreedomForEachTransformBin) {
    EXPECT_EQ(orvik::degreesOfFreedom(1), 2.0); // at least one bin is averaged
    EXPECT_EQ(orvik::degreesOfFreedom(7), 2.0);
    EXPECT_EQ(orvik::degreesOfFreedom(8), 4.0);
    EXPECT_EQ(orvik::degreesOfFreedom(32), 16.0);
}

// Two degrees of freedom have a closed form: the quantile of p is -2 ln(1 - p).
TEST(Confidence, ClosedFormOfTwoDegrees) {
    const auto factors = orvik::confidenceFactors(2.0);
    EXPECT_NEAR(factors.lower, -1.0 / std::log(0.025), 1e-12);
    EXPECT_NEAR(factors.upper, -1.0 / std::log(0.975), 1e-12);
}

// Printed tables: 6.908 and 28.845 at 16 degrees of freedom.
TEST(Confidence, TabledQuantilesOfSixteenDegrees) {
    const auto factors = orvik::confidenceFactors(16.0);
    EXPECT_NEAR(factors.lower, 16.0 / 28.845, 1e-4);
    EXPECT_NEAR(factors.upper, 16.0 / 6.908, 1e-3);
    EXPECT_TRUE(std::isnan(orvik::confidenceFactors(0.0).lower));
}

// A flat band of width B seen for T seconds holds 2 T B degrees of freedom.
TEST(Confidence, HeightOfAFlatBand) {
    std::vector<double> density(20, 0.0);
    std::fill_n(density.begin() + 4, 8, 3.0);
    const auto height = orvik::heightConfidence(density, 0.01, 100.0);
    const auto variance = orvik::confidenceFactors(2.0 * 100.0 * 0.08);
    EXPECT_NEAR(height.lower, std::sqrt(variance.lower), 1e-12);
    EXPECT_NEAR(height.upper, std::sqrt(variance.upper), 1e-12);
}

orvik::TableRow rowOf(double height, double direction, double trueDirection) {
    orvik::TableRow row;
    row.height = height;
    row.meanDirection = direction;
    row.truth = orvik::Truth{};
    row.truth->significantHeight = 2.0;
    row.truth->realisedHeight = 4.0;
    row.truth->meanDirection = trueDirection;
    return row;
}

// The short way round, the middle of three, the mean of two.
TEST(TruthErrors, MediansAndWorst) {
    orvik::TruthErrors errors;
    errors.add(rowOf(2.2, 359.0, 1.0));
    errors.add(rowOf(2.0, 10.0, 5.0));
    errors.add(rowOf(1.6, 100.0, 101.0));
    std::string text = errors.text();
    EXPECT_TRUE(orvik::test::holds(text, "mean direction                          2.00     5.00"))
        << text;
    EXPECT_TRUE(orvik::test::holds(text, "Hm0, height of the sea                 10.00    20.00"))
        << text;
    EXPECT_TRUE(orvik::test::holds(text, "Hm0, height realised in the burst      50.00    60.00"))
        << text;
    EXPECT_FALSE(orvik::test::holds(text, "Tp")) << text; // nobody told it
    errors.add(rowOf(2.0, 4.0, 0.0));
    text = errors.text();
    EXPECT_TRUE(orvik::test::holds(text, "mean direction                          3.00     5.00"))
        << text;
}

class SpectrumTail : public testing::Test {
protected:
    std::vector<double> frequencies;
    std::vector<float> density;

    SpectrumTail() {
        for (int i = 0; i < 98; ++i) {
            frequencies.push_back(0.02 + 0.01 * i);
            density.push_back(1.0F + 0.3F * static_cast<float>(i % 5));
        }
    }
    [[nodiscard]] std::vector<float> withTailOn(std::size_t bin) const {
        std::vector<float> result = density;
        for (std::size_t i = bin; i < result.size(); ++i) {
            result[i] = static_cast<float>(static_cast<double>(density[bin]) *
                                           std::pow(frequencies[i] / frequencies[bin], -4.5));
        }
        return result;
    }
};

TEST_F(SpectrumTail, IsFoundWhereItHangs) {
    for (const std::size_t bin : {std::size_t{0}, std::size_t{12}, std::size_t{96}}) {
        EXPECT_EQ(orvik::lastMeasuredBin(withTailOn(bin), frequencies), bin);
    }
    EXPECT_FALSE(orvik::lastMeasuredBin(withTailOn(97), frequencies).has_value());
}

TEST_F(SpectrumTail, NoneWithoutOne) {
    EXPECT_FALSE(orvik::lastMeasuredBin(density, frequencies).has_value());
    std::fill(density.begin(), density.end(), 0.0F);
    EXPECT_FALSE(orvik::lastMeasuredBin(density, frequencies).has_value());
    EXPECT_FALSE(orvik::lastMeasuredBin({}, {}).has_value());
}

// The examples of FIPS 180-4.
TEST(Checksum, KnownTexts) {
    const orvik::test::ScratchDirectory directory;
    const std::string path = directory.file("abc.txt");
    std::ofstream(path) << "abc";
    EXPECT_EQ(orvik::sha256Of(path),
              "ba7816bf8f01cfea414140de5dae2223b00361a396177a9cb410ff61f20015ad");
    const std::string empty = directory.file("empty.txt");
    std::ofstream{empty};
    EXPECT_EQ(orvik::checksumsOf({empty, path}),
              "empty.txt e3b0c44298fc1c149afbf4c8996fb92427ae41e4649b934ca495991b7852b855, "
              "abc.txt ba7816bf8f01cfea414140de5dae2223b00361a396177a9cb410ff61f20015ad");
    std::ofstream(path) << std::string(1000000, 'a'); // in more than one piece of reading
    EXPECT_EQ(orvik::sha256Of(path),
              "cdc76e5c9914fb9281a1c7e284d73e67f1809a48a497200e046d39ccc7112cd0");
    EXPECT_THROW(orvik::sha256Of(directory.file("none")), orvik::UserError);
}

} // namespace
