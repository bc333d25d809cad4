#include "input/series_repair.hpp"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <limits>
#include <random>
#include <vector>

#include "support/record_ptr.hpp"

namespace {

using ov::IndexList;
using ov::SeriesView;

constexpr float kNan = std::numeric_limits<float>::quiet_NaN();

std::vector<float> noise(int n, unsigned seed, float mean = 0.0F) {
    std::mt19937 random(seed);
    std::uniform_real_distribution<float> value(-1.0F, 1.0F);
    std::vector<float> series(static_cast<std::size_t>(n));
    for (float &x : series) {
        x = mean + value(random);
    }
    return series;
}

IndexList listOf(const std::vector<int> &indices) {
    IndexList list;
    for (const int i : indices) {
        list.append(i);
    }
    return list;
}

// The series after repair of `bad`, with `beyond` behind it in storage.
std::vector<float> repaired(std::vector<float> series, const std::vector<int> &bad,
                            float beyond = 100.0F) {
    const SeriesView view{series.data(), static_cast<int>(series.size()), beyond};
    ov::replaceListed(listOf(bad), view);
    return series;
}

// ---- Mean and deviation

TEST(SeriesMean, SumsInSinglePrecision) {
    const std::vector<float> series(16384, 0.1F);
    float sum = 0.0F;
    for (const float x : series) {
        sum += x;
    }
    ASSERT_NE(sum / 16384.0F, 0.1F);
    EXPECT_EQ(ov::seriesMean(series.data(), 16384), sum / 16384.0F);
}

TEST(SeriesMean, OfOneSampleIsTheSampleAndOfNoneZero) {
    const float sample = 3.5F;
    EXPECT_EQ(ov::seriesMean(&sample, 1), 3.5F);
    EXPECT_EQ(ov::seriesMean(&sample, 0), 0.0F);
    EXPECT_EQ(ov::seriesMean(&sample, -4), 0.0F);
}

TEST(SeriesStdDev, DividesByOneLessThanTheNumber) {
    const std::vector<float> series{1.0F, 2.0F, 3.0F, 4.0F};
    EXPECT_DOUBLE_EQ(ov::seriesStdDev(series.data(), 4), std::sqrt(5.0 / 3.0));
}

TEST(SeriesStdDev, IsTakenAboutTheMeanSoThatALargeLevelDoesNoHarm) {
    std::vector<float> series;
    for (int i = 0; i < 1000; ++i) {
        series.push_back(i % 2 == 0 ? 5000.5F : 4999.5F);
    }
    EXPECT_NEAR(ov::seriesStdDev(series.data(), 1000), 0.5 * std::sqrt(1000.0 / 999.0), 1e-6);
}

TEST(SeriesStdDev, OfFewerThanTwoSamplesAndOfAConstantIsZero) {
    const std::vector<float> series(10, 7.0F);
    for (const int n : {-1, 0, 1, 2, 10}) {
        EXPECT_EQ(ov::seriesStdDev(series.data(), n), 0.0) << n;
    }
}

// ---- Repair

TEST(InterpolateRun, StepsEvenlyBetweenTheNeighbours) {
    std::vector<float> series{0.0F, 1.0F, 9.0F, 9.0F, 9.0F, 3.0F, 8.0F};
    ov::interpolateRun({series.data(), 7, 0.0F}, 2, 3);
    EXPECT_EQ(series, (std::vector<float>{0.0F, 1.0F, 1.5F, 2.0F, 2.5F, 3.0F, 8.0F}));
}

TEST(InterpolateRun, AccumulatesItsStepInSinglePrecision) {
    std::vector<float> series(50, 0.0F);
    series[0] = 0.1F;
    series[49] = 1.3F;
    ov::interpolateRun({series.data(), 50, 0.0F}, 1, 48);
    const float step = (1.3F - 0.1F) / 49.0F;
    float expected = 0.1F;
    for (std::size_t i = 1; i < 49; ++i) {
        expected += step;
        EXPECT_EQ(series[i], expected) << i;
    }
}

TEST(ReplaceListed, LoneBadElementBecomesTheMeanOfItsNeighbours) {
    EXPECT_EQ(repaired({1.0F, 2.0F, 99.0F, 4.0F, 5.0F}, {2}),
              (std::vector<float>{1.0F, 2.0F, 3.0F, 4.0F, 5.0F}));
}

TEST(ReplaceListed, EveryRunIsRepairedByItself) {
    EXPECT_EQ(repaired({0.0F, 9.0F, 2.0F, 9.0F, 9.0F, 5.0F, 9.0F, 7.0F}, {1, 3, 4, 6}),
              (std::vector<float>{0.0F, 1.0F, 2.0F, 3.0F, 4.0F, 5.0F, 6.0F, 7.0F}));
}

TEST(ReplaceListed, RunAtTheStartTakesTheFirstGoodValueAfterIt) {
    EXPECT_EQ(repaired({9.0F, 2.0F, 3.0F}, {0}), (std::vector<float>{2.0F, 2.0F, 3.0F}));
    EXPECT_EQ(repaired({9.0F, 8.0F, 7.0F, 4.0F, 5.0F}, {0, 1, 2}),
              (std::vector<float>{4.0F, 4.0F, 4.0F, 4.0F, 5.0F}));
}

TEST(ReplaceListed, RunAtTheEndAimsAtTheElementBeyond) {
    EXPECT_EQ(repaired({1.0F, 2.0F, 9.0F}, {2}, 6.0F), (std::vector<float>{1.0F, 2.0F, 4.0F}));
    EXPECT_EQ(repaired({1.0F, 2.0F, 9.0F, 9.0F}, {2, 3}, 5.0F),
              (std::vector<float>{1.0F, 2.0F, 3.0F, 4.0F}));
}

TEST(ReplaceListed, FirstAndLastElementAreTwoRuns) {
    EXPECT_EQ(repaired({9.0F, 2.0F, 4.0F, 9.0F}, {0, 3}, 8.0F),
              (std::vector<float>{2.0F, 2.0F, 4.0F, 6.0F}));
}

TEST(ReplaceListed, SeriesWithoutAGoodElementTakesTheElementBeyond) {
    EXPECT_EQ(repaired({9.0F, 8.0F, 7.0F}, {0, 1, 2}, 0.5F),
              (std::vector<float>{0.5F, 0.5F, 0.5F}));
    EXPECT_EQ(repaired({9.0F}, {0}, 0.5F), (std::vector<float>{0.5F}));
}

TEST(ReplaceListed, EmptyListChangesNothing) {
    EXPECT_EQ(repaired({9.0F, 8.0F}, {}), (std::vector<float>{9.0F, 8.0F}));
}

TEST(ReplaceListed, FullListRepairsItsOwnElementsOnly) {
    std::vector<int> bad;
    for (int i = 0; i < IndexList::kCapacity; ++i) {
        bad.push_back(2 * i + 1);
    }
    const std::vector<float> series = repaired(std::vector<float>(2060, 5.0F), bad);
    EXPECT_EQ(series, std::vector<float>(2060, 5.0F));
}

// ---- Outliers

TEST(ListOutliers, DeviationMustExceedTheLimit) {
    // Mean 0, deviation 1.2 exactly reached by nothing but the first two elements.
    std::vector<float> series{3.0F, -3.0F, 1.0F, -1.0F, 1.0F, -1.0F, 1.0F, -1.0F, 0.0F};
    const SeriesView view{series.data(), 9, 0.0F};
    const double deviation = ov::seriesStdDev(series.data(), 9);
    ASSERT_DOUBLE_EQ(deviation, std::sqrt(3.0));
    const auto listed = [&view](double factor) {
        IndexList list;
        ov::listOutliers(view, factor, list);
        return list.count;
    };
    EXPECT_EQ(listed(3.0 / deviation), 0);
    EXPECT_EQ(listed(2.999 / deviation), 2);
    EXPECT_EQ(listed(1.0 / deviation), 2);
    EXPECT_EQ(listed(0.999 / deviation), 8);
}

TEST(ListOutliers, StopsWhenTheListIsFull) {
    std::vector<float> series;
    for (int i = 0; i < 3000; ++i) {
        series.push_back(i % 2 == 0 ? 1.0F : -1.0F);
    }
    IndexList list;
    ov::listOutliers({series.data(), 3000, 0.0F}, 0.5, list);
    EXPECT_EQ(list.count, 1024);
    EXPECT_EQ(list.index[0], 0);
    EXPECT_EQ(list.index[1023], 1023);
}

TEST(ListOutliers, SeriesWithAValueThatIsNoNumberHasNone) {
    std::vector<float> series = noise(100, 1);
    series[50] = kNan;
    series[70] = 1000.0F;
    IndexList list;
    ov::listOutliers({series.data(), 100, 0.0F}, 4.0, list);
    EXPECT_EQ(list.count, 0);
}

// ---- Despiking of pressure

class Despike : public ::testing::Test {
protected:
    // Pressure of a burst; returns it despiked.
    std::vector<float> despiked(const std::vector<float> &series) {
        record_->burstLength = static_cast<std::int32_t>(series.size());
        std::copy(series.begin(), series.end(), record_->pressureSeries);
        ov::despikePressure(*record_, record_->pressureSeries);
        return {record_->pressureSeries, record_->pressureSeries + series.size()};
    }

    // A long wave of amplitude 1: deviation 0.707, no step larger than 0.01.
    static std::vector<float> swell(int n = 1024) {
        std::vector<float> series;
        for (int i = 0; i < n; ++i) {
            series.push_back(static_cast<float>(10.0 + std::sin(6.283185307179586 * 4.0 * i / n)));
        }
        return series;
    }

    orvik::test::RecordPtr record_ = orvik::test::makeRecord();
};

TEST_F(Despike, SpikeOfTwentyDeviationsBecomesTheMeanOfItsNeighboursInTheFirstPass) {
    std::vector<float> series = swell();
    series[500] += 25.0F;
    const double deviation = ov::seriesStdDev(series.data(), 1024);
    const float mean = ov::seriesMean(series.data(), 1024);
    ASSERT_GT(series[500] - mean, 19.0 * deviation);
    IndexList first;
    ov::listOutliers({series.data(), 1024, 0.0F}, 10.0, first);
    ASSERT_EQ(first.count, 1);
    EXPECT_EQ(first.index[0], 500);
    std::vector<float> expected = series;
    expected[500] = series[499] + (series[501] - series[499]) / 2.0F;
    EXPECT_EQ(despiked(series), expected);
}

TEST_F(Despike, SpikeBetweenSixAndTenDeviationsFallsInTheSecondPass) {
    std::vector<float> series = swell();
    series[300] = 10.0F + 7.0F * 0.72F;
    const std::vector<float> result = despiked(series);
    EXPECT_NEAR(result[300], (series[299] + series[301]) / 2.0F, 1e-6);
}

TEST_F(Despike, SpikeBelowSixDeviationsStays) {
    std::vector<float> series = swell();
    series[300] = 10.0F + 5.5F * 0.72F;
    EXPECT_EQ(despiked(series), series);
}

TEST_F(Despike, SecondPassSeesTheDeviationOfTheRepairedSeries) {
    std::vector<float> series = swell();
    series[300] = 16.0F; // 8 deviations of the swell, but not of the series with the great spike
    series[700] = 200.0F;
    IndexList list;
    ov::listOutliers({series.data(), 1024, 0.0F}, 6.0, list);
    ASSERT_EQ(list.count, 1);
    const std::vector<float> result = despiked(series);
    EXPECT_LT(result[300], 11.1F);
    EXPECT_LT(result[700], 11.1F);
}

TEST_F(Despike, SpikeInTheLastSampleIsDrawnTowardsTheElementBehindTheBurst) {
    std::vector<float> series = swell();
    series[1023] = 60.0F;
    record_->pressureSeries[1024] = 9.0F;
    const std::vector<float> result = despiked(series);
    EXPECT_EQ(result[1023], series[1022] + (9.0F - series[1022]) / 2.0F);
    EXPECT_EQ(record_->pressureSeries[1024], 9.0F);
}

TEST_F(Despike, FullBurstEndsAtTheFirstVelocity) {
    std::vector<float> series = swell(ov::kMaxSamples);
    series.back() = 400.0F;
    record_->velocitySeries[0][0] = 9.5F;
    const float before = series[ov::kMaxSamples - 2];
    EXPECT_EQ(despiked(series).back(), before + (9.5F - before) / 2.0F);
    EXPECT_EQ(record_->velocitySeries[0][0], 9.5F);
}

TEST_F(Despike, ShortConstantAndInvalidSeriesStay) {
    EXPECT_EQ(despiked({}), std::vector<float>{});
    EXPECT_EQ(despiked({5.0F}), std::vector<float>{5.0F});
    EXPECT_EQ(despiked({5.0F, 900.0F}), (std::vector<float>{5.0F, 900.0F}));
    EXPECT_EQ(despiked(std::vector<float>(512, 12.0F)), std::vector<float>(512, 12.0F));
    std::vector<float> invalid = swell();
    invalid[10] = kNan;
    invalid[500] = 1000.0F;
    EXPECT_EQ(despiked(invalid)[500], 1000.0F);
}

// ---- Trend

class Detrend : public ::testing::Test {
protected:
    orvik::test::RecordPtr record_ = orvik::test::makeRecord();
};

TEST_F(Detrend, LineIsRemovedAndItsMeanReturned) {
    std::vector<float> series;
    for (int t = 0; t < 1001; ++t) {
        series.push_back(12.0F + 0.25F * static_cast<float>(t));
    }
    EXPECT_DOUBLE_EQ(ov::detrendSeries(*record_, series.data(), 1001), 12.0 + 0.25 * 500.0);
    EXPECT_NEAR(record_->trendSlope, 0.25, 1e-7);
    EXPECT_NEAR(record_->trendIntercept, 12.0, 4e-5);
    for (const float x : series) {
        EXPECT_NEAR(x, 0.0F, 4e-5);
    }
}

TEST_F(Detrend, FitFormsItsProductsInSinglePrecision) {
    std::vector<float> series = noise(4096, 6, 20.0F);
    double y = 0.0;
    double ty = 0.0;
    double tyWide = 0.0;
    for (int t = 0; t < 4096; ++t) {
        const float x = series[static_cast<std::size_t>(t)];
        const float term = static_cast<float>(t) * x;
        y += x;
        ty += term;
        tyWide += static_cast<double>(t) * static_cast<double>(x);
    }
    ASSERT_NE(ty, tyWide);
    const double n = 4096.0;
    const double st = n * (n - 1.0) / 2.0;
    const double stt = n * (n - 1.0) * (2.0 * n - 1.0) / 6.0;
    const double slope = (n * ty - st * y) / (n * stt - st * st);
    ov::detrendSeries(*record_, series.data(), 4096);
    EXPECT_EQ(record_->trendSlope, slope);
    EXPECT_EQ(record_->trendIntercept, (y - slope * st) / n);
}

TEST_F(Detrend, WhatRemainsHasNeitherMeanNorTrend) {
    for (const int n : {2, 3, 10, 512, 16384}) {
        std::vector<float> series = noise(n, static_cast<unsigned>(n), 15.0F);
        long double given = 0.0L;
        for (const float x : series) {
            given += x;
        }
        EXPECT_NEAR(ov::detrendSeries(*record_, series.data(), n), static_cast<double>(given / n),
                    1e-9);
        long double sum = 0.0L;
        long double moment = 0.0L;
        for (int t = 0; t < n; ++t) {
            sum += series[static_cast<std::size_t>(t)];
            moment += (t - (n - 1) / 2.0L) * series[static_cast<std::size_t>(t)];
        }
        EXPECT_NEAR(static_cast<double>(sum / n), 0.0, 1e-6) << n;
        EXPECT_NEAR(static_cast<double>(moment / n / n), 0.0, 1e-6) << n;
    }
}

TEST_F(Detrend, OneSampleIsItsOwnLevelAndNoneHasLevelZero) {
    float sample = 4.5F;
    EXPECT_EQ(ov::detrendSeries(*record_, &sample, 1), 4.5);
    EXPECT_EQ(sample, 0.0F);
    EXPECT_EQ(record_->trendSlope, 0.0);
    EXPECT_EQ(record_->trendIntercept, 4.5);
    sample = 4.5F;
    EXPECT_EQ(ov::detrendSeries(*record_, &sample, 0), 0.0);
    EXPECT_EQ(sample, 4.5F);
    EXPECT_EQ(record_->trendSlope, 0.0);
    EXPECT_EQ(record_->trendIntercept, 0.0);
}

TEST_F(Detrend, PairsTakeEverySecondPairAndLeaveTheOthers) {
    // Elements 0, 1, 4, 5, 8, 9 rise evenly by their place in that order; the others are far away.
    std::vector<float> series{1.0F,  1.5F,  77.0F, 77.0F, 2.0F,  2.5F,
                              77.0F, 77.0F, 3.0F,  3.5F,  77.0F, 77.0F};
    EXPECT_NEAR(ov::detrendPairs(series.data(), 6, 12), 2.25, 1e-12);
    for (std::size_t i = 0; i < series.size(); ++i) {
        EXPECT_NEAR(series[i], i % 4 < 2 ? 0.0F : 77.0F, 1e-6) << i;
    }
}

TEST_F(Detrend, PairsNeverReachTheEndOfTheSeries) {
    // Seven points would end at element 12.
    std::vector<float> series{2.0F, 2.0F, 9.0F, 9.0F, 2.0F, 2.0F, 9.0F,
                              9.0F, 2.0F, 2.0F, 9.0F, 9.0F, 50.0F};
    EXPECT_NEAR(ov::detrendPairs(series.data(), 7, 12), 2.0, 1e-12);
    EXPECT_EQ(series[12], 50.0F);
    EXPECT_EQ(ov::detrendPairs(series.data(), 7, 0), 0.0);
    EXPECT_EQ(ov::detrendPairs(series.data(), 0, 12), 0.0);
}

} // namespace
