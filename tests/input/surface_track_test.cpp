#include "input/surface_track.hpp"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <limits>
#include <tuple>
#include <utility>
#include <vector>

#include "input/series_repair.hpp"
#include "support/record_ptr.hpp"

namespace {

constexpr float kLevel = 12.0F;
constexpr float kFarBelow = 0.0F; // a lost echo

class SurfaceTrack : public ::testing::Test {
protected:
    void SetUp() override {
        record_->waterDepth = 13.0F; // distances up to 20.8 m are possible
        record_->instrumentDepth = kLevel;
        record_->astLevel = -9.0F;
        record_->astLevelEven = -9.0F;
    }

    // A slow wave around the level, the same from either end and so without a trend: deviation 0.707 amplitudes, hardly
    // a step from one element to the next.
    static std::vector<float> wave(int n, double amplitude) {
        std::vector<float> track;
        for (int i = 0; i < n; ++i) {
            const double angle = 6.283185307179586 * 4.0 * (i + 0.5) / n;
            track.push_back(
                static_cast<float>(static_cast<double>(kLevel) + amplitude * std::cos(angle)));
        }
        return track;
    }

    void clean(const std::vector<float> &track) {
        record_->astLength = static_cast<std::int32_t>(track.size());
        std::copy(track.begin(), track.end(), record_->astSeries);
        ov::cleanAst(*record_, record_->astSeries);
    }

    std::vector<float> cleaned() const {
        return {record_->astSeries, record_->astSeries + record_->astLength};
    }

    void expectCounts(int initial, int spikes) {
        EXPECT_EQ(record_->astInitialBadCount, initial);
        EXPECT_EQ(record_->astSpikeCount, spikes);
        EXPECT_EQ(record_->astBadCount, initial + spikes);
    }

    orvik::test::RecordPtr record_ = orvik::test::makeRecord();
};

TEST_F(SurfaceTrack, CleanTrackKeepsItsWavesAndLosesItsTrend) {
    constexpr int kElements = 1024;
    std::vector<float> track = wave(kElements, 0.8);
    std::vector<float> expected = track;
    for (int i = 0; i < kElements; ++i) {
        track[static_cast<std::size_t>(i)] +=
            0.001F * static_cast<float>(i); // the tide rises by a metre
    }
    const double level =
        ov::detrendSeries(*record_, expected.data(), kElements) + 0.001 * (kElements - 1) / 2.0;
    clean(track);
    EXPECT_EQ(record_->surfaceTrackValid, 1);
    expectCounts(0, 0);
    EXPECT_NEAR(record_->astLevel, level, 1e-5);
    EXPECT_EQ(record_->astLevelEven, -9.0F);
    const std::vector<float> result = cleaned();
    for (std::size_t i = 0; i < result.size(); ++i) {
        EXPECT_NEAR(result[i], static_cast<double>(expected[i]) + level, 1e-5) << i;
    }
}

// ---- What cannot be the surface

TEST_F(SurfaceTrack, CeilingFollowsTheWaterDepth) {
    struct Row {
        float waterDepth;
        float ceiling;
    };
    for (const Row row : {Row{20.0F, 32.0F}, Row{10.0F, 16.0F}, Row{5.0F, 9.0F}, Row{4.0F, 7.0F},
                          Row{1.5F, 2.0F}, Row{1.0F, 1.0F}, Row{0.5F, 1.0F}, Row{-3.0F, 1.0F}}) {
        record_->waterDepth = row.waterDepth;
        std::vector<float> track(1000, row.ceiling - 0.25F);
        track[500] = std::nextafter(row.ceiling, 0.0F);
        track[600] = std::nextafter(row.ceiling, 100.0F) + row.ceiling * 1e-6F;
        clean(track);
        EXPECT_EQ(record_->astInitialBadCount, 1) << "depth " << row.waterDepth;
        track[600] = track[500];
        clean(track);
        EXPECT_EQ(record_->astInitialBadCount, 0) << "depth " << row.waterDepth;
    }
    record_->waterDepth = 5.01F; // beyond 5 m the ceiling drops from 9 m to 8.016 m
    clean({8.0F, 8.01F, 8.02F, 8.0F, 8.0F, 8.0F, 8.0F, 8.0F, 8.0F, 8.0F});
    EXPECT_EQ(record_->astInitialBadCount, 1);
}

TEST_F(SurfaceTrack, DistanceAtTheCeilingIsPossibleButNoPlausibleStart) {
    record_->waterDepth = 4.0F;
    std::vector<float> track(1000, 6.75F);
    track[400] = 7.0F;
    clean(track);
    EXPECT_EQ(record_->astInitialBadCount, 0);
    track[0] = 7.0F;
    clean(track);
    EXPECT_EQ(record_->astInitialBadCount, 1);
    EXPECT_EQ(record_->surfaceTrackValid, 1);
}

TEST_F(SurfaceTrack, DistanceUnderACentimetreIsLost) {
    for (const auto &[value, lost] : {std::pair{0.0F, 1}, {-5.0F, 1}, {0.0099F, 1}, {0.0101F, 0}}) {
        std::vector<float> track = wave(1000, 0.2);
        track[400] = value;
        clean(track);
        EXPECT_EQ(record_->astInitialBadCount, lost) << value;
    }
}

TEST_F(SurfaceTrack, LostElementsAreBridgedAndTheTrackStaysValid) {
    std::vector<float> track(1000, kLevel);
    for (const std::size_t i : {0UL, 100UL, 101UL, 102UL, 700UL}) {
        track[i] = kFarBelow;
    }
    track[900] = 30.0F;
    clean(track);
    EXPECT_EQ(record_->surfaceTrackValid, 1);
    expectCounts(6, 0);
    for (const float x : cleaned()) {
        EXPECT_NEAR(x, kLevel, 2e-5);
    }
}

TEST_F(SurfaceTrack, TrackThatStartsWithTwoLostElementsIsNotValid) {
    std::vector<float> track = wave(1000, 0.2);
    track[0] = kFarBelow;
    clean(track);
    EXPECT_EQ(record_->surfaceTrackValid, 1);
    track[1] = kFarBelow;
    clean(track);
    EXPECT_EQ(record_->surfaceTrackValid, 0);
    EXPECT_NE(record_->astLevel, -9.0F); // the work went on
}

TEST_F(SurfaceTrack, GapOfTwoAtTheStartLeavesLaterGapsUnrepaired) {
    std::vector<float> track(15000, kLevel);
    track[0] = track[1] = kFarBelow;
    // A step that the search for single jumps cannot see, and too wide a share for the outlier passes.
    std::fill(track.begin() + 1000, track.begin() + 1950, 0.005F);
    clean(track);
    EXPECT_EQ(record_->astInitialBadCount, 952);
    EXPECT_LT(cleaned()[1400], 2.0F);
    track[1] = kLevel; // now the gap is bridged
    clean(track);
    EXPECT_EQ(record_->astInitialBadCount, 951);
    EXPECT_NEAR(cleaned()[1400], kLevel, 1e-2);
}

TEST_F(SurfaceTrack, TrackWithoutAPlausibleStartIsNotValid) {
    for (const int lost : {48, 49, 50, 51}) {
        std::vector<float> track = wave(1000, 0.2);
        std::fill_n(track.begin(), lost, kFarBelow);
        clean(track);
        EXPECT_EQ(record_->surfaceTrackValid, 0) << lost;
        EXPECT_EQ(record_->astInitialBadCount, lost) << lost;
    }
}

TEST_F(SurfaceTrack, TenthOfTheElementsMayBeLostBeforeItIsGivenUpUnrepaired) {
    const auto withLost = [](int lost) {
        std::vector<float> track(1000, kLevel);
        for (int i = 0; i < lost; ++i) {
            track[static_cast<std::size_t>(9 * i + 3)] = kFarBelow;
        }
        return track;
    };
    clean(withLost(99));
    EXPECT_EQ(record_->surfaceTrackValid, 1);
    expectCounts(99, 0);

    clean(withLost(100)); // repaired, but a tenth is too many for a verdict
    EXPECT_EQ(record_->surfaceTrackValid, 0);
    expectCounts(100, 0);
    EXPECT_NEAR(cleaned()[3], kLevel, 1e-5);

    record_->astLevel = -9.0F;
    clean(withLost(101));
    EXPECT_EQ(record_->surfaceTrackValid, 0);
    expectCounts(101, 0);
    EXPECT_EQ(cleaned(), withLost(101));
    EXPECT_EQ(record_->astLevel, -9.0F);
}

TEST_F(SurfaceTrack, NoMoreThan1024ElementsAreListed) {
    std::vector<float> track(20000, kLevel);
    for (std::size_t i = 100; i < 100 + 8 * 1500; i += 8) {
        track[i] = 0.005F;
    }
    clean(track);
    EXPECT_EQ(record_->astInitialBadCount, 1024);
}

// ---- Jumps

TEST_F(SurfaceTrack, JumpOfMoreThanAMetreIsReplacedAndCountsTwice) {
    for (const float jump : {1.5F, -1.5F}) {
        std::vector<float> track = wave(1024, 0.9);
        track[300] += jump;
        const std::vector<float> given = track;
        clean(track);
        EXPECT_EQ(record_->surfaceTrackValid, 1);
        expectCounts(0, 2);
        EXPECT_NEAR(cleaned()[300], (given[299] + given[301]) / 2.0F, 5e-3) << jump;
    }
}

TEST_F(SurfaceTrack, JumpUpToAMetreStays) {
    std::vector<float> track(1024, 12.0F);
    for (std::size_t i = 0; i < track.size(); ++i) {
        track[i] += i / 128 % 2 == 0 ? 0.75F : -0.75F; // deviation 0.75, exact in single precision
    }
    track[300] += 1.0F;
    clean(track);
    expectCounts(0, 0);
    track[300] += 0.01F;
    clean(track);
    expectCounts(0, 2);
}

TEST_F(SurfaceTrack, JumpMustExceedAMetreFromBothNeighbours) {
    for (const auto &[height, spikes] : {std::pair{1.0F, 0}, {1.01F, 2}}) {
        for (const float sign : {1.0F, -1.0F}) {
            std::vector<float> track;
            for (int i = 0; i < 1024; ++i) {
                track.push_back(kLevel + (i / 128 % 2 == 0 ? 0.75F : -0.75F) * sign);
            }
            track[127] += height * sign; // and 1.5 m more from its right neighbour
            clean(track);
            expectCounts(0, spikes);
        }
    }
}

TEST_F(SurfaceTrack, StepOnOneSideOnlyIsNoJump) {
    std::vector<float> track(1024, kLevel - 1.0F);
    std::fill(track.begin() + 512, track.end(), kLevel + 1.0F);
    clean(track);
    expectCounts(0, 0);
}

TEST_F(SurfaceTrack, JumpsAreReplacedFromLeftToRightInPlace) {
    std::vector<float> track = wave(1024, 0.9);
    track[300] += 2.0F;
    track[302] += 2.0F; // element 301 between them is a trough only until 300 is replaced
    const std::vector<float> given = wave(1024, 0.9);
    clean(track);
    expectCounts(0, 4);
    const std::vector<float> result = cleaned();
    for (std::size_t i = 299; i < 304; ++i) {
        EXPECT_NEAR(result[i], given[i], 1e-2) << i;
    }
}

TEST_F(SurfaceTrack, SearchForJumpsEndsThreeBeforeTheEnd) {
    for (const auto &[place, spikes] :
         {std::pair{1UL, 2}, {1021UL, 2}, {1022UL, 0}, {1023UL, 0}, {0UL, 0}}) {
        std::vector<float> track = wave(1024, 0.9);
        track[place] -= 1.5F;
        clean(track);
        expectCounts(0, spikes);
    }
}

TEST_F(SurfaceTrack, NoMoreThan1024JumpsAreReplaced) {
    std::vector<float> track = wave(32768, 0.9);
    for (std::size_t i = 0; i < 1100; ++i) {
        track[20 * i + 10] += track[20 * i + 10] > kLevel ? -1.5F : 1.5F;
    }
    const std::vector<float> given = track;
    clean(track);
    EXPECT_EQ(record_->surfaceTrackValid, 1);
    expectCounts(0, 2048);
    const std::vector<float> smooth = wave(32768, 0.9);
    EXPECT_NEAR(cleaned()[20 * 1023 + 10], smooth[20 * 1023 + 10], 2e-2);
    EXPECT_NEAR(cleaned()[20 * 1024 + 10], given[20 * 1024 + 10], 2e-2);
}

TEST_F(SurfaceTrack, SmallJumpBeyondFourDeviationsFallsAtTheEndAndCountsOnce) {
    std::vector<float> track = wave(1024, 0.1); // deviation 0.071
    const std::size_t trough = 127;             // half through the first wave
    ASSERT_NEAR(track[trough], kLevel - 0.1F, 1e-4);
    track[trough] =
        kLevel + 0.27F; // less than four deviations from the mean, more from its neighbours
    clean(track);
    expectCounts(0, 1);
    EXPECT_NEAR(cleaned()[trough], kLevel - 0.1F, 2e-3);
    track = wave(1024, 0.1);
    track[trough] = kLevel + 0.17F; // less from both
    clean(track);
    expectCounts(0, 0);
}

// ---- Outliers

TEST_F(SurfaceTrack, RunOfOutliersIsBridgedAndCounted) {
    std::vector<float> track = wave(1024, 0.1);
    std::fill_n(track.begin() + 500, 3, kLevel + 4.0F);
    clean(track);
    EXPECT_EQ(record_->surfaceTrackValid, 1);
    expectCounts(0, 3);
    const std::vector<float> smooth = wave(1024, 0.1);
    EXPECT_NEAR(cleaned()[501], smooth[501], 5e-3);
}

TEST_F(SurfaceTrack, LastPassesStillCatchFourDeviations) {
    // Three elements hardly change the deviation of the wave, 0.0707.
    for (const auto &[deviations, spikes] : {std::pair{4.3F, 3}, {3.8F, 0}}) {
        std::vector<float> track = wave(32768, 0.1);
        std::fill_n(track.begin() + 5000, 3, kLevel + deviations * 0.0708F);
        clean(track);
        expectCounts(0, spikes);
    }
}

TEST_F(SurfaceTrack, HostsWindowReplacesTheFirstPassAroundTheInstrumentDepth) {
    record_->useAstWindow = 1;
    record_->astWindowBelow = 0.5F;
    record_->astWindowAbove = 1.0F;
    std::vector<float> track = wave(1024, 0.25);
    std::fill_n(track.begin() + 100, 3, kLevel + 1.0F); // at the limit
    std::fill_n(track.begin() + 200, 3, kLevel - 0.5F);
    clean(track);
    expectCounts(0, 3); // the later passes alone: 1.0 m are more than five deviations
    std::fill_n(track.begin() + 200, 3, kLevel - 0.51F);
    clean(track);
    expectCounts(0, 6);
    std::fill_n(track.begin() + 100, 3, kLevel + 1.01F);
    clean(track);
    expectCounts(0, 6);
    record_->useAstWindow = 0;
    clean(track);
    expectCounts(0, 3);
}

TEST_F(SurfaceTrack, LimitsOfTheWindowAreInside) {
    std::vector<float> track;
    for (int i = 0; i < 1024; ++i) {
        track.push_back(i / 128 % 2 == 0 ? kLevel + 0.25F : kLevel - 0.5F);
    }
    record_->useAstWindow = 1;
    for (const auto &[below, above, valid] :
         {std::tuple{0.5F, 0.25F, 1}, {0.49F, 0.25F, 0}, {0.5F, 0.24F, 0}}) {
        record_->astWindowBelow = below;
        record_->astWindowAbove = above;
        clean(track);
        EXPECT_EQ(record_->surfaceTrackValid, valid) << below << " " << above;
        expectCounts(0, valid == 1 ? 0 : 512);
    }
}

TEST_F(SurfaceTrack, WindowDoesNotApplyWithoutItsSwitch) {
    record_->astWindowBelow = 0.01F;
    record_->astWindowAbove = 0.01F;
    clean(wave(1024, 0.25));
    expectCounts(0, 0);
}

TEST_F(SurfaceTrack, TenthOfOutliersEndsTheCleaningWithoutALevel) {
    record_->useAstWindow = 1;
    record_->astWindowBelow = 0.5F;
    record_->astWindowAbove = 0.5F;
    std::vector<float> track(200, kLevel);
    std::fill_n(track.begin() + 50, 19, kLevel + 0.6F);
    clean(track);
    EXPECT_EQ(record_->surfaceTrackValid, 1);
    expectCounts(0, 19);
    EXPECT_NE(record_->astLevel, -9.0F);

    record_->astLevel = -9.0F;
    track[69] = kLevel + 0.6F;
    clean(track);
    EXPECT_EQ(record_->surfaceTrackValid, 0);
    expectCounts(0, 20);
    EXPECT_EQ(record_->astLevel, -9.0F);
    EXPECT_EQ(cleaned(), track);
}

// ---- Level

TEST_F(SurfaceTrack, LevelMayDifferTenMetresFromTheInstrumentDepth) {
    record_->waterDepth = 40.0F;
    record_->instrumentDepth = 30.0F;
    for (const auto &[level, valid] : {std::pair{20.0F, 1}, {19.99F, 0}, {40.0F, 1}, {40.01F, 0}}) {
        clean(std::vector<float>(1024, level));
        EXPECT_EQ(record_->astLevel, level);
        EXPECT_EQ(record_->surfaceTrackValid, valid) << level;
    }
}

TEST_F(SurfaceTrack, TwoEstimatesSeparateTheLevelsOfAlternatePairs) {
    record_->splitEstimateFlag = 1;
    std::vector<float> track;
    for (int i = 0; i < 1024; ++i) {
        track.push_back(i % 4 < 2 ? kLevel : kLevel + 0.5F);
    }
    clean(track);
    EXPECT_EQ(record_->surfaceTrackValid, 1);
    EXPECT_EQ(record_->astLevelEven, kLevel);
    EXPECT_EQ(record_->astLevel, kLevel + 0.5F);
    for (const float x : cleaned()) {
        EXPECT_EQ(x, kLevel + 0.5F); // each half lost its own level, and all stand on the second
    }
}

TEST_F(SurfaceTrack, TwoEstimatesOfAnOddNumberOfPairsStayInsideTheTrack) {
    record_->splitEstimateFlag = 1;
    for (const int n : {1022, 1021, 30, 3, 2, 1}) {
        record_->astSeries[n] = 99.0F;
        clean(std::vector<float>(static_cast<std::size_t>(n), kLevel));
        EXPECT_EQ(record_->astSeries[n], 99.0F) << n;
        EXPECT_EQ(record_->astLevelEven, n == 1 ? 0.0F : kLevel) << n;
        EXPECT_EQ(record_->astLevel, n <= 2 ? 0.0F : kLevel) << n;
    }
}

// ---- Ends of the series and values that are no numbers

TEST_F(SurfaceTrack, ElementBehindTheTrackIsTheNextInStorageOrZeroAtItsEnd) {
    record_->astSeries[1024] = 7.5F;
    record_->astLength = 1024;
    EXPECT_EQ(ov::trackView(*record_, record_->astSeries).beyond, 7.5F);
    record_->astLength = ov::kMaxTrack;
    EXPECT_EQ(ov::trackView(*record_, record_->astSeries).beyond, 0.0F);
}

TEST_F(SurfaceTrack, TrackOfFewerThanTenElementsIsNeverValid) {
    for (const int n : {0, 1, 2, 3, 4, 9}) {
        clean(std::vector<float>(static_cast<std::size_t>(n), kLevel));
        EXPECT_EQ(record_->surfaceTrackValid, 0) << n;
        EXPECT_EQ(record_->astInitialBadCount, 0) << n;
    }
    clean(std::vector<float>(10, kLevel));
    EXPECT_EQ(record_->surfaceTrackValid, 1);
}

TEST_F(SurfaceTrack, TrackShorterThanTheSearchForAStartEndsInside) {
    for (const int n : {10, 30, 49}) {
        record_->astSeries[n] = 99.0F;
        clean(std::vector<float>(static_cast<std::size_t>(n), kFarBelow));
        EXPECT_EQ(record_->surfaceTrackValid, 0) << n;
        EXPECT_EQ(record_->astInitialBadCount, n) << n;
        EXPECT_EQ(record_->astSeries[n], 99.0F) << n;
    }
}

TEST_F(SurfaceTrack, CountersStartAfreshForEveryTrack) {
    std::vector<float> track = wave(1024, 0.9);
    track[300] += 1.5F;
    track[500] = kFarBelow;
    clean(track);
    expectCounts(1, 2);
    clean(track);
    expectCounts(1, 2);
}

TEST_F(SurfaceTrack, StartThatIsNoNumberIsSkippedLikeALostOne) {
    std::vector<float> track(1024, kLevel);
    track[0] = std::numeric_limits<float>::quiet_NaN();
    clean(track);
    EXPECT_EQ(record_->surfaceTrackValid, 1);
    expectCounts(1, 0);
    EXPECT_EQ(cleaned()[0], kLevel);
}

TEST_F(SurfaceTrack, InfiniteDistanceIsLost) {
    std::vector<float> track(1024, kLevel);
    track[500] = std::numeric_limits<float>::infinity();
    track[600] = -std::numeric_limits<float>::infinity();
    clean(track);
    EXPECT_EQ(record_->surfaceTrackValid, 1);
    expectCounts(2, 0);
    EXPECT_EQ(cleaned()[500], kLevel);
}

TEST_F(SurfaceTrack, ElementThatIsNoNumberMakesTheLevelNone) {
    std::vector<float> track(1024, kLevel);
    track[500] = std::numeric_limits<float>::quiet_NaN();
    clean(track);
    expectCounts(0, 0);
    EXPECT_TRUE(std::isnan(record_->astLevel));
}

} // namespace
