// Exact class: where series are cut into bursts.
#include "burst/stretches.hpp"

#include <cmath>

#include <gtest/gtest.h>

#include "user_error.hpp"

namespace {

using orvik::Stretch;
using orvik::StretchCutter;
using orvik::TimeStep;
using orvik::UserError;

std::vector<double> ticks(double start, double step, std::size_t count) {
    std::vector<double> times;
    for (std::size_t i = 0; i < count; ++i) {
        times.push_back(start + step * static_cast<double>(i));
    }
    return times;
}

std::vector<Stretch> cut(const std::vector<double> &times,
                         std::optional<std::size_t> length = std::nullopt) {
    StretchCutter cutter("a file", TimeStep::of(times), length);
    for (const double time : times) {
        cutter.add(time);
    }
    return cutter.finish();
}

TEST(Stretches, RatesAreWholeWhereTheyAreClose) {
    EXPECT_EQ(TimeStep::of(ticks(0.0, 0.5001, 100))->rate(), 2.0);
    EXPECT_NEAR(TimeStep::of(ticks(0.0, 4.0 / 3.0, 100))->rate(), 0.75, 1e-9);
    EXPECT_FALSE(TimeStep::of({5.0}));
    EXPECT_FALSE(TimeStep::of({5.0, 5.0}));
}

TEST(Stretches, TimesOfWholeSecondsAreNoPauses) {
    std::vector<double> times;
    for (const double time : ticks(0.0, 0.25, 400)) {
        times.push_back(std::floor(time));
    }
    EXPECT_NEAR(TimeStep::of(times)->seconds, 0.25, 0.005);
    EXPECT_EQ(cut(times).size(), 1U);
}

TEST(Stretches, PausesCut) {
    std::vector<double> times = ticks(0.0, 0.5, 100);
    const std::vector<double> second = ticks(3600.0, 0.5, 60);
    times.insert(times.end(), second.begin(), second.end());
    const auto found = cut(times);
    ASSERT_EQ(found.size(), 2U);
    EXPECT_EQ(found[0].rows, 100U);
    EXPECT_EQ(found[1].firstRow, 100U);
    EXPECT_EQ(found[1].rows, 60U);
    EXPECT_EQ(found[1].startTime, 3600.0);
}

// Ten lost samples are a loss, eleven a pause.
TEST(Stretches, FewLostSamplesKeepTheirPlaces) {
    for (const std::size_t lost : {1U, 10U, 11U}) {
        std::vector<double> times = ticks(0.0, 0.5, 50);
        const std::vector<double> rest = ticks(0.5 * static_cast<double>(50 + lost), 0.5, 50);
        times.insert(times.end(), rest.begin(), rest.end());
        const auto found = cut(times);
        if (lost == 11U) {
            EXPECT_EQ(found.size(), 2U);
            continue;
        }
        ASSERT_EQ(found.size(), 1U) << lost;
        EXPECT_EQ(found[0].samples(), 100 + lost);
        const auto series = withLosses(found[0], std::vector<float>(100, 1.0F), 1);
        const auto valid = validOf(found[0]);
        ASSERT_EQ(series.size(), 100 + lost);
        ASSERT_EQ(valid.size(), 100 + lost);
        for (std::size_t i = 0; i < series.size(); ++i) {
            const bool there = i < 50 || i >= 50 + lost;
            EXPECT_EQ(valid[i], there ? 1 : 0) << i;
            EXPECT_EQ(std::isnan(series[i]), !there) << i;
        }
    }
}

TEST(Stretches, LengthsCutWhatHasNoPause) {
    StretchCutter cutter("a file", std::nullopt, 100);
    for (std::size_t i = 0; i < 289; ++i) {
        cutter.add(0.0);
    }
    const auto found = cutter.finish();
    ASSERT_EQ(found.size(), 2U);
    EXPECT_EQ(found[1].firstRow, 100U);
    EXPECT_EQ(cutter.leftOut(), 89U); // nine tenths of a burst are one, less are none
    StretchCutter other("a file", std::nullopt, 100);
    for (std::size_t i = 0; i < 290; ++i) {
        other.add(0.0);
    }
    EXPECT_EQ(other.finish().size(), 3U);
}

TEST(Stretches, EndlessSeriesNeedALength) {
    EXPECT_EQ(cut(ticks(0.0, 1.0, 16384)).size(), 1U);
    EXPECT_THROW(cut(ticks(0.0, 1.0, 16385)), UserError);
}

TEST(Stretches, TimesThatAreMissingAreToldByTheirRow) {
    for (const std::size_t row : {0U, 7U}) {
        std::vector<double> times = ticks(0.0, 1.0, 20);
        times[row] = std::nan("");
        try {
            cut(times);
            FAIL() << row;
        } catch (const UserError &error) {
            EXPECT_EQ(std::string(error.what()), "the time in a file is missing at its row " +
                                                     std::to_string(row + 1) +
                                                     ": each sample needs one");
        }
    }
}

// A file may be cut short after its stretches were found.
TEST(Stretches, RowsThatCannotBeReadAnyMoreCountAsLost) {
    Stretch stretch;
    stretch.rows = 4;
    const auto expectOnesThenNaN = [](const std::vector<float> &series, std::size_t ones,
                                      std::size_t all) {
        ASSERT_EQ(series.size(), all);
        for (std::size_t i = 0; i < all; ++i) {
            EXPECT_EQ(std::isnan(series[i]), i >= ones) << i;
        }
    };
    expectOnesThenNaN(withLosses(stretch, std::vector<float>(4, 1.0F), 2), 4, 8);
    stretch.losses = {{3, 2}};
    expectOnesThenNaN(withLosses(stretch, std::vector<float>(4, 1.0F), 2), 4, 12);
}

TEST(Stretches, TimesThatGoBackAreRefused) {
    std::vector<double> times = ticks(0.0, 1.0, 20);
    times.push_back(3.0);
    EXPECT_THROW(cut(times), UserError);
}

} // namespace
