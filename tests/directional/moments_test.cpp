// Directional Fourier coefficients, mean direction and spread.
#include "directional/moments.hpp"

#include <algorithm>
#include <cmath>
#include <iterator>
#include <limits>

#include <gtest/gtest.h>

#include "support/record_ptr.hpp"

namespace {

using orvik::test::makeRecord;
using orvik::test::RecordPtr;

constexpr double kDegree = M_PI / 180.0;

TEST(NauticalDirection, CountsFromNorthClockwise) {
    EXPECT_EQ(ov::nauticalDirection(0.0F, 1.0F, false), 0.0F);
    EXPECT_EQ(ov::nauticalDirection(1.0F, 0.0F, false), 90.0F);
    EXPECT_EQ(ov::nauticalDirection(0.0F, -1.0F, false), 180.0F);
    EXPECT_EQ(ov::nauticalDirection(-1.0F, 0.0F, false), 270.0F);
    EXPECT_EQ(ov::nauticalDirection(-1.0F, 1.0F, false), 315.0F);
}

TEST(NauticalDirection, ReversingTurnsTenTo190And200To20) {
    const auto at = [](double direction) {
        return ov::nauticalDirection(static_cast<float>(std::sin(direction * kDegree)),
                                     static_cast<float>(std::cos(direction * kDegree)), true);
    };
    EXPECT_NEAR(at(10.0), 190.0, 1e-4);
    EXPECT_NEAR(at(200.0), 20.0, 1e-4);
    EXPECT_EQ(at(0.0), 180.0F);
    EXPECT_NEAR(at(359.0), 179.0, 1e-4);
}

TEST(NauticalDirection, JustWestOfNorthStaysBelow360) {
    const float direction = ov::nauticalDirection(-1e-12F, 1.0F, false);
    EXPECT_GE(direction, 0.0F);
    EXPECT_LT(direction, 360.0F);
}

TEST(CircularSpread, RunsFromZeroToEightyOneDegrees) {
    EXPECT_EQ(ov::circularSpread(1.0F, 0.0F), 0.0F);
    EXPECT_EQ(ov::circularSpread(0.0F, -1.0F), 0.0F);
    EXPECT_FLOAT_EQ(ov::circularSpread(0.0F, 0.0F), static_cast<float>(std::sqrt(2.0) / kDegree));
    EXPECT_FLOAT_EQ(ov::circularSpread(0.3F, 0.4F), static_cast<float>(1.0 / kDegree));
    EXPECT_EQ(ov::circularSpread(3.0F, 4.0F),
              0.0F); // inconsistent coefficients: the length counts as 1
}

// Distribution in bins of 360 / n degrees from east counter-clockwise.
RecordPtr distribution(int n) {
    RecordPtr rec = makeRecord();
    rec->nDirections = n;
    rec->activeMethod = 3;
    return rec;
}

TEST(DistributionMoments, OneDirectionHasLengthOneAndNoSpread) {
    for (const int bin : {0, 1, 17, 22, 45, 60, 89}) {
        const RecordPtr rec = distribution(90);
        rec->directionalDistribution[bin] = 0.37;
        ov::computeMomentsFromDistribution(*rec, ov::DirectionTable(*rec), 11);
        const double theta = 4.0 * bin * kDegree;
        EXPECT_NEAR(rec->fourierA1[11], std::cos(theta), 1e-7);
        EXPECT_NEAR(rec->fourierB1[11], std::sin(theta), 1e-7);
        EXPECT_NEAR(rec->fourierA2[11], std::cos(2.0 * theta), 1e-7);
        EXPECT_NEAR(rec->fourierB2[11], std::sin(2.0 * theta), 1e-7);
        EXPECT_NEAR(rec->directionalSpread[11], 0.0,
                    0.03); // the root makes 1e-7 of the length 0.02 degrees
        EXPECT_NEAR(rec->meanDirection[11], std::fmod(450.0 - 4.0 * bin, 360.0), 1e-4);
    }
}

TEST(DistributionMoments, AUniformOneHasNoLengthAndTheGreatestSpread) {
    const RecordPtr rec = distribution(90);
    std::fill_n(rec->directionalDistribution, 90, 1.0 / (2.0 * M_PI));
    ov::computeMomentsFromDistribution(*rec, ov::DirectionTable(*rec), 0);
    EXPECT_NEAR(std::hypot(rec->fourierA1[0], rec->fourierB1[0]), 0.0, 1e-6);
    EXPECT_NEAR(rec->directionalSpread[0], std::sqrt(2.0) / kDegree, 1e-4);
}

TEST(DistributionMoments, TheLastBinKeepsItsOwnAngleAlthoughItRepeatsTheFirst) {
    const RecordPtr rec = distribution(4);
    const double d[] = {1.0, 2.0, 0.5, 1.0};
    std::copy(std::begin(d), std::end(d), rec->directionalDistribution);
    ov::computeMomentsFromDistribution(*rec, ov::DirectionTable(*rec), 0);
    EXPECT_FLOAT_EQ(rec->fourierA1[0], static_cast<float>((1.0 - 0.5) / 4.5));
    EXPECT_FLOAT_EQ(rec->fourierB1[0], static_cast<float>((2.0 - 1.0) / 4.5));
    EXPECT_FLOAT_EQ(rec->fourierA2[0], static_cast<float>((1.0 - 2.0 + 0.5 - 1.0) / 4.5));
}

TEST(DistributionMoments, ACosineSquaredIsItsClosedForm) {
    const RecordPtr rec = distribution(90);
    for (int k = 0; k < 90; ++k) { // 1 + cos(theta - 50 deg): a1 = cos(50 deg) / 2, no second order
        rec->directionalDistribution[k] =
            (1.0 + std::cos((4.0 * k - 50.0) * kDegree)) / (2.0 * M_PI);
    }
    ov::computeMomentsFromDistribution(*rec, ov::DirectionTable(*rec), 0);
    EXPECT_NEAR(rec->fourierA1[0], 0.5 * std::cos(50.0 * kDegree), 1e-6);
    EXPECT_NEAR(rec->fourierB1[0], 0.5 * std::sin(50.0 * kDegree), 1e-6);
    EXPECT_NEAR(rec->fourierA2[0], 0.0, 1e-6);
    EXPECT_NEAR(rec->fourierB2[0], 0.0, 1e-6);
    EXPECT_NEAR(rec->meanDirection[0], 40.0, 1e-3);
}

// exact: the running sums are single-precision numbers to which double-precision terms are added.
TEST(DistributionMoments, KeepTheRunningSumsInSinglePrecision) {
    const RecordPtr rec = distribution(90);
    float a1 = 0.0F;
    float b2 = 0.0F;
    double wideA1 = 0.0;
    double sum = 0.0;
    for (int k = 0; k < 90; ++k) {
        const double weight = 1.0 / (3.0 + k % 7) + 0.1 * std::cos(4.0 * k * kDegree);
        rec->directionalDistribution[k] = weight;
        const double theta = k * (2.0 * M_PI / 90);
        sum += weight;
        wideA1 += std::cos(theta) * weight;
        a1 = static_cast<float>(static_cast<double>(a1) + std::cos(theta) * weight);
        b2 = static_cast<float>(static_cast<double>(b2) + std::sin(2.0 * theta) * weight);
    }
    ASSERT_NE(static_cast<float>(wideA1 / sum), static_cast<float>(static_cast<double>(a1) / sum));
    ov::computeMomentsFromDistribution(*rec, ov::DirectionTable(*rec), 0);
    EXPECT_EQ(rec->fourierA1[0], static_cast<float>(static_cast<double>(a1) / sum));
    EXPECT_EQ(rec->fourierB2[0], static_cast<float>(static_cast<double>(b2) / sum));
}

TEST(DistributionMoments, WithoutEnergyAreNotANumber) {
    const RecordPtr rec = distribution(90);
    rec->fourierA1[3] = 0.5F;
    ov::computeMomentsFromDistribution(*rec, ov::DirectionTable(*rec), 3);
    EXPECT_TRUE(std::isnan(rec->fourierA1[3]));
    EXPECT_TRUE(std::isnan(rec->meanDirection[3]));
    EXPECT_EQ(rec->fourierA1[4], 0.0F);
}

TEST(Rotation, TurnsEveryOrderByItsOwnMultiple) {
    for (const float offset : {0.0F, 15.0F, 90.0F, 201.5F, 360.0F}) {
        for (const int bin : {3, 40, 71}) {
            const RecordPtr rec = distribution(90);
            rec->directionOffset = offset;
            rec->directionalDistribution[bin] = 1.0;
            ov::computeMomentsFromDistribution(*rec, ov::DirectionTable(*rec), 0);
            const double theta = (4.0 * bin - static_cast<double>(offset)) * kDegree;
            EXPECT_NEAR(rec->fourierA1[0], std::cos(theta), 2e-7);
            EXPECT_NEAR(rec->fourierB1[0], std::sin(theta), 2e-7);
            EXPECT_NEAR(rec->fourierA2[0], std::cos(2.0 * theta), 2e-7);
            EXPECT_NEAR(rec->fourierB2[0], std::sin(2.0 * theta), 2e-7);
            // A heading turns the compass direction by itself.
            const double unturned = std::fmod(450.0 - 4.0 * bin, 360.0);
            const double expected = std::fmod(unturned + static_cast<double>(offset), 360.0);
            EXPECT_NEAR(std::remainder(rec->meanDirection[0] - expected, 360.0), 0.0, 2e-4);
        }
    }
}

TEST(Rotation, ReversingTurnsTheDirectionButNotTheCoefficients) {
    const RecordPtr rec = distribution(90);
    rec->reverseDirections = 1;
    rec->directionalDistribution[20] = 1.0; // 80 degrees from east: compass 10
    ov::computeMomentsFromDistribution(*rec, ov::DirectionTable(*rec), 0);
    EXPECT_NEAR(rec->meanDirection[0], 190.0, 1e-4);
    EXPECT_NEAR(rec->fourierB1[0], std::sin(80.0 * kDegree), 1e-7);
}

// Co-spectra of u, v, w, a surface series and pressure; every reference differs.
RecordPtr crossSpectra(int method) {
    RecordPtr rec = makeRecord();
    rec->activeMethod = method;
    rec->seriesCount = 5;
    auto &c = rec->crossSpectralMatrix;
    c[0][0] = 0.4F;
    c[1][1] = 0.3F;
    c[1][0] = 0.05F;
    for (int r = 2; r < 6; ++r) {
        c[r][r] = 0.5F * static_cast<float>(r);
        c[r][0] = 0.2F + 0.01F * static_cast<float>(r);
        c[r][1] = -0.1F * static_cast<float>(r);
        c[0][r] = c[1][r] = 77.0F; // quad-spectra are not read
    }
    return rec;
}

TEST(CrossSpectrumMoments, TakeTheirReferenceByMethod) {
    const struct { int method, reference; } cases[] = {{1, 4}, {2, 3}, {0, 4}, {7, 4}};
    for (const auto &[method, r] : cases) {
        const RecordPtr rec = crossSpectra(method);
        if (method == 0) {
            rec->seriesCount = 6; // any other code takes series 4, not the last one
        }
        ov::computeMomentsFromCrossSpectra(*rec, 9);
        const auto &c = rec->crossSpectralMatrix;
        const double s = static_cast<double>(c[0][0] + c[1][1]);
        const double d = std::sqrt(static_cast<double>(c[r][r]) * s);
        EXPECT_EQ(rec->fourierA1[9], static_cast<float>(static_cast<double>(c[r][0]) / d))
            << method;
        EXPECT_EQ(rec->fourierB1[9], static_cast<float>(static_cast<double>(c[r][1]) / d))
            << method;
        EXPECT_FLOAT_EQ(
            rec->fourierA2[9],
            static_cast<float>((static_cast<double>(0.4F) - static_cast<double>(0.3F)) / s));
        EXPECT_FLOAT_EQ(rec->fourierB2[9],
                        static_cast<float>(2.0 * static_cast<double>(0.05F) / s));
    }
}

TEST(CrossSpectrumMoments, OfOneWaveAreItsDirection) {
    const double angle = 35.0 * kDegree;
    const RecordPtr rec = crossSpectra(1);
    auto &c = rec->crossSpectralMatrix;
    const double gain = 0.6; // velocity over elevation; elevation density 2
    c[0][0] = static_cast<float>(2.0 * gain * gain * std::cos(angle) * std::cos(angle));
    c[1][1] = static_cast<float>(2.0 * gain * gain * std::sin(angle) * std::sin(angle));
    c[1][0] = static_cast<float>(2.0 * gain * gain * std::cos(angle) * std::sin(angle));
    c[4][4] = 2.0F;
    c[4][0] = static_cast<float>(2.0 * gain * std::cos(angle));
    c[4][1] = static_cast<float>(2.0 * gain * std::sin(angle));
    ov::computeMomentsFromCrossSpectra(*rec, 0);
    EXPECT_NEAR(rec->fourierA1[0], std::cos(angle), 1e-6);
    EXPECT_NEAR(rec->fourierB1[0], std::sin(angle), 1e-6);
    EXPECT_NEAR(rec->fourierA2[0], std::cos(2.0 * angle), 1e-6);
    EXPECT_NEAR(rec->fourierB2[0], std::sin(2.0 * angle), 1e-6);
    EXPECT_NEAR(rec->meanDirection[0], 55.0, 1e-4);
}

TEST(CrossSpectrumMoments, WithoutVelocityAreNotANumber) {
    const RecordPtr rec = crossSpectra(1);
    rec->crossSpectralMatrix[0][0] = 0.0F;
    rec->crossSpectralMatrix[1][1] = 0.0F;
    rec->crossSpectralMatrix[1][0] = 0.0F;
    ov::computeMomentsFromCrossSpectra(*rec, 0);
    EXPECT_FALSE(std::isfinite(rec->fourierA1[0]));
    EXPECT_TRUE(std::isnan(rec->fourierA2[0]));
}

TEST(CrossSpectrumMoments, AnEmptySeriesListStaysInside) {
    for (const int method : {1, 2, 9}) {
        const RecordPtr rec = makeRecord();
        rec->activeMethod = method;
        ov::computeMomentsFromCrossSpectra(*rec, 0);
        EXPECT_TRUE(std::isnan(rec->fourierA1[0]));
    }
}

} // namespace
