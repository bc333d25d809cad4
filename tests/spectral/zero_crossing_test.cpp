// Zero-crossing statistics of the surface track.
#include "spectral/zero_crossing.hpp"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <limits>
#include <vector>

#include <gtest/gtest.h>

#include "support/record_ptr.hpp"

namespace {

using orvik::test::makeRecord;
using orvik::test::RecordPtr;

RecordPtr trackOf(const std::vector<float> &elements, float rate = 4.0F) {
    RecordPtr rec = makeRecord();
    rec->astLength = static_cast<int>(elements.size());
    rec->astSamplingRate = rate;
    rec->surfaceTrackCosine = 1.0F;
    std::copy(elements.begin(), elements.end(), rec->astSeries);
    return rec;
}

void expectAllMissing(const OVRecord &rec) {
    for (int slot = OV_H_THIRD; slot <= OV_T_CROSSING; ++slot) {
        EXPECT_EQ(rec.waveParameters[slot], -9.0F) << slot;
    }
}

struct Wave {
    double height;
    double period;
};

// Every wave of the series in time order, written down the plain way.
std::vector<Wave> wavesOf(const OVRecord &rec) {
    std::vector<double> z;
    double sum = 0.0;
    for (int i = 0; i < rec.astLength; ++i) {
        z.push_back(static_cast<double>(rec.astSeries[i] * rec.surfaceTrackCosine));
        sum += z.back();
    }
    for (double &value : z) {
        value -= sum / rec.astLength;
    }
    std::vector<std::size_t> starts;
    for (std::size_t i = 1; i < z.size(); ++i) {
        if (z[i - 1] < 0.0 && z[i] >= 0.0) {
            starts.push_back(i);
        }
    }
    const auto instant = [&z](std::size_t i) {
        return static_cast<double>(i) - z[i] / (z[i] - z[i - 1]);
    };
    std::vector<Wave> waves;
    for (std::size_t w = 0; w + 1 < starts.size(); ++w) {
        const auto from = z.begin() + static_cast<std::ptrdiff_t>(starts[w]);
        const auto to = z.begin() + static_cast<std::ptrdiff_t>(starts[w + 1]);
        waves.push_back({*std::max_element(from, to) - *std::min_element(from, to),
                         (instant(starts[w + 1]) - instant(starts[w])) /
                             static_cast<double>(rec.astSamplingRate)});
    }
    return waves;
}

Wave meanOf(const std::vector<Wave> &waves, std::size_t count) {
    Wave mean{0.0, 0.0};
    for (std::size_t w = 0; w < count; ++w) {
        mean.height += waves[w].height / static_cast<double>(count);
        mean.period += waves[w].period / static_cast<double>(count);
    }
    return mean;
}

// Triangles of the given heights; each wave has four elements up and four down and starts at zero.
std::vector<float> triangles(const std::vector<float> &heights) {
    std::vector<float> elements{-0.5F};
    for (const float height : heights) {
        const float a = 0.5F * height;
        elements.insert(elements.end(),
                        {0.0F, 0.5F * a, a, 0.5F * a, 0.0F, -0.5F * a, -a, -0.5F * a});
    }
    elements.push_back(0.5F); // the last up-crossing, and the mean is zero again
    return elements;
}

TEST(ZeroCrossing, ASineHasItsHeightAndPeriodInEverySlot) {
    std::vector<float> elements;
    for (int i = 0; i < 3000; ++i) { // period 7.3 s at 4 Hz: crossings fall between elements
        elements.push_back(
            static_cast<float>(12.0 + 1.1 * std::sin(2.0 * M_PI * i / (4.0 * 7.3) + 0.4)));
    }
    const RecordPtr rec = trackOf(elements);
    ov::zeroCrossingStatistics(*rec);
    for (const int slot : {OV_H_THIRD, OV_H_TENTH, OV_H_MAX}) {
        EXPECT_NEAR(rec->waveParameters[slot], 2.2, 0.02);
    }
    for (const int slot : {OV_T_THIRD, OV_T_TENTH, OV_T_MAX, OV_T_CROSSING}) {
        EXPECT_NEAR(rec->waveParameters[slot], 7.3, 0.01);
    }
}

TEST(ZeroCrossing, AgreesWithAPlainCountOfAnIrregularSea) {
    std::uint32_t state = 99;
    std::vector<float> elements;
    for (int i = 0; i < 8192; ++i) {
        state = state * 1664525U + 1013904223U;
        const double noise = static_cast<double>(state >> 16) / 65536.0 - 0.5;
        elements.push_back(static_cast<float>(10.0 + std::sin(0.19 * i) +
                                              0.7 * std::sin(0.23 * i + 1.0) +
                                              0.4 * std::sin(0.31 * i) + 0.3 * noise));
    }
    const RecordPtr rec = trackOf(elements);
    rec->surfaceTrackCosine = 0.97F;
    std::vector<Wave> waves = wavesOf(*rec);
    ASSERT_GT(waves.size(), 200U);
    const double crossing = meanOf(waves, waves.size()).period;
    std::stable_sort(waves.begin(), waves.end(),
                     [](const Wave &a, const Wave &b) { return a.height > b.height; });
    const Wave third = meanOf(waves, waves.size() / 3);
    const Wave tenth = meanOf(waves, waves.size() / 10);

    ov::zeroCrossingStatistics(*rec);
    const float *const w = rec->waveParameters;
    EXPECT_FLOAT_EQ(w[OV_H_THIRD], static_cast<float>(third.height));
    EXPECT_FLOAT_EQ(w[OV_T_THIRD], static_cast<float>(third.period));
    EXPECT_FLOAT_EQ(w[OV_H_TENTH], static_cast<float>(tenth.height));
    EXPECT_FLOAT_EQ(w[OV_T_TENTH], static_cast<float>(tenth.period));
    EXPECT_FLOAT_EQ(w[OV_H_MAX], static_cast<float>(waves.front().height));
    EXPECT_FLOAT_EQ(w[OV_T_MAX], static_cast<float>(waves.front().period));
    EXPECT_FLOAT_EQ(w[OV_T_CROSSING], static_cast<float>(crossing));
}

TEST(ZeroCrossing, TheHighestThirdAndTenthRoundDownButHoldAtLeastOneWave) {
    const RecordPtr two = trackOf(triangles({2.0F, 4.0F}));
    ov::zeroCrossingStatistics(*two);
    EXPECT_FLOAT_EQ(two->waveParameters[OV_H_THIRD], 4.0F);
    EXPECT_FLOAT_EQ(two->waveParameters[OV_H_TENTH], 4.0F);

    const RecordPtr eight = trackOf(triangles({1.0F, 8.0F, 2.0F, 7.0F, 3.0F, 6.0F, 4.0F, 5.0F}));
    ov::zeroCrossingStatistics(*eight); // 8 / 3 = 2 waves
    EXPECT_FLOAT_EQ(eight->waveParameters[OV_H_THIRD], 7.5F);
    EXPECT_FLOAT_EQ(eight->waveParameters[OV_H_TENTH], 8.0F);

    std::vector<float> twenty(20, 2.0F);
    twenty[4] = 10.0F;
    twenty[17] = 8.0F;
    const RecordPtr many = trackOf(triangles(twenty));
    ov::zeroCrossingStatistics(*many); // 6 and 2 waves
    EXPECT_FLOAT_EQ(many->waveParameters[OV_H_THIRD], (10.0F + 8.0F + 4.0F * 2.0F) / 6.0F);
    EXPECT_FLOAT_EQ(many->waveParameters[OV_H_TENTH], 9.0F);
    EXPECT_FLOAT_EQ(many->waveParameters[OV_H_MAX], 10.0F);
}

TEST(ZeroCrossing, OfEquallyHighWavesTheEarlierComesFirst) {
    // Two waves of height 2, one of 4 s and one of 2 s; the mean is zero.
    const std::vector<float> elements{-1, 1, 1, -1, -1, 1, -1, 1};
    const RecordPtr rec = trackOf(elements, 1.0F);
    ov::zeroCrossingStatistics(*rec);
    EXPECT_EQ(rec->waveParameters[OV_H_MAX], 2.0F);
    EXPECT_EQ(rec->waveParameters[OV_T_MAX], 4.0F);
    EXPECT_EQ(rec->waveParameters[OV_T_CROSSING], 3.0F);
}

TEST(ZeroCrossing, TheInstantOfACrossingIsInterpolated) {
    // Up-crossings a quarter and three quarters of the way between elements: 4 + 0.5 elements.
    const std::vector<float> elements{-1, 3, 0.5F, -0.5F, -3, 1};
    const RecordPtr rec = trackOf(elements, 1.0F);
    ov::zeroCrossingStatistics(*rec);
    EXPECT_EQ(rec->waveParameters[OV_T_CROSSING], 4.5F);
    EXPECT_EQ(rec->waveParameters[OV_H_MAX], 6.0F);
}

TEST(ZeroCrossing, AnElementAtZeroAfterANegativeOneStartsAWave) {
    const std::vector<float> elements{-1, 0, 2, -1, -1, 0, 1};
    const RecordPtr rec = trackOf(elements, 1.0F);
    ov::zeroCrossingStatistics(*rec);
    EXPECT_EQ(rec->waveParameters[OV_T_CROSSING], 4.0F);
    EXPECT_EQ(rec->waveParameters[OV_H_MAX], 3.0F);
}

TEST(ZeroCrossing, TouchingZeroFromAboveStartsNoWave) {
    const std::vector<float> elements{-2, 2, 0, 2, -2, -2, 2};
    const RecordPtr rec = trackOf(elements, 1.0F);
    ov::zeroCrossingStatistics(*rec);
    EXPECT_EQ(rec->waveParameters[OV_T_CROSSING], 5.0F);
}

TEST(ZeroCrossing, PeriodsAreSeconds) {
    const std::vector<float> elements{-1, 1, 1, -1, -1, 1};
    for (const float rate : {1.0F, 2.0F, 4.0F}) {
        const RecordPtr rec = trackOf(elements, rate);
        ov::zeroCrossingStatistics(*rec);
        EXPECT_EQ(rec->waveParameters[OV_T_CROSSING], 4.0F / rate);
    }
}

TEST(ZeroCrossing, ATiltedBeamIsScaledToTheVertical) {
    const RecordPtr rec = trackOf(triangles({2.0F, 4.0F, 2.0F}));
    rec->surfaceTrackCosine = 0.5F;
    ov::zeroCrossingStatistics(*rec);
    EXPECT_FLOAT_EQ(rec->waveParameters[OV_H_MAX], 2.0F);
    EXPECT_EQ(rec->astSeries[3], 1.0F); // the track itself stays
}

TEST(ZeroCrossing, WithoutACompleteWaveEverySlotIsMissing) {
    for (const std::vector<float> &elements : {std::vector<float>{},
                                               {1.0F},
                                               {5.0F, 5.0F, 5.0F, 5.0F},
                                               {-1.0F, 1.0F},
                                               {-1.0F, 1.0F, 2.0F, -2.0F},
                                               {1.0F, 2.0F, 3.0F, 4.0F}}) {
        const RecordPtr rec = trackOf(elements);
        rec->waveParameters[OV_H_MAX] = 3.0F;
        ov::zeroCrossingStatistics(*rec);
        expectAllMissing(*rec);
    }
}

TEST(ZeroCrossing, ATrackThatIsNotANumberHasNoWaves) {
    for (const float bad :
         {std::numeric_limits<float>::quiet_NaN(), std::numeric_limits<float>::infinity()}) {
        std::vector<float> elements = triangles({2.0F, 4.0F, 2.0F});
        elements[9] = bad;
        const RecordPtr rec = trackOf(elements);
        ov::zeroCrossingStatistics(*rec);
        expectAllMissing(*rec);
    }
}

TEST(ZeroCrossing, AFullTrackOfTheShortestWavesFits) {
    std::vector<float> elements(OV_MAX_TRACK_SAMPLES);
    for (std::size_t i = 0; i < elements.size(); ++i) {
        elements[i] = i % 2 == 0 ? -1.0F : 1.0F;
    }
    const RecordPtr rec = trackOf(elements);
    ov::zeroCrossingStatistics(*rec);
    EXPECT_EQ(rec->waveParameters[OV_H_THIRD], 2.0F);
    EXPECT_EQ(rec->waveParameters[OV_T_CROSSING], 0.5F);
}

TEST(ZeroCrossing, OtherParametersStay) {
    const RecordPtr rec = trackOf(triangles({2.0F, 4.0F, 2.0F}));
    rec->waveParameters[OV_HM0] = 1.25F;
    rec->waveParameters[OV_TM02] = 6.5F;
    ov::zeroCrossingStatistics(*rec);
    EXPECT_EQ(rec->waveParameters[OV_HM0], 1.25F);
    EXPECT_EQ(rec->waveParameters[OV_TM02], 6.5F);
}

} // namespace
