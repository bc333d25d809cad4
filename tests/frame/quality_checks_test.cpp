// Checks of a processed burst, below, at and above their limits.
#include "frame/quality_checks.hpp"

#include <algorithm>
#include <cmath>
#include <iterator>
#include <limits>
#include <utility>

#include <gtest/gtest.h>

#include "support/record_ptr.hpp"

namespace {

using orvik::test::makeRecord;
using orvik::test::RecordPtr;

constexpr float kNone = std::numeric_limits<float>::quiet_NaN();

struct SlotCase {
    int slot;
    float good;
    float bad;
};

// Track statistics within every limit, at 4 Hz in 30 m of water.
RecordPtr soundTrack() {
    RecordPtr rec = makeRecord();
    rec->surfaceTrackValid = 1;
    rec->astSamplingRate = 4.0F;
    rec->waterDepth = 30.0F;
    const float values[] = {2.0F, 9.0F, 2.5F, 9.5F, 3.5F, 10.0F, 7.0F};
    std::copy(std::begin(values), std::end(values), rec->waveParameters + OV_H_THIRD);
    return rec;
}

bool trackRejected(const RecordPtr &rec) {
    ov::checkTrackRange(*rec);
    const float *const w = rec->waveParameters;
    const bool missing =
        std::all_of(w + OV_H_THIRD, w + OV_T_CROSSING + 1, [](float x) { return x == -9.0F; });
    const bool flagged = rec->qualityFlags == OV_FLAG_TRACK_RANGE;
    EXPECT_EQ(missing, flagged);
    EXPECT_EQ(rec->surfaceTrackValid, flagged ? 0 : 1);
    return flagged;
}

TEST(TrackRange, SoundStatisticsStand) {
    const RecordPtr rec = soundTrack();
    EXPECT_FALSE(trackRejected(rec));
    EXPECT_EQ(rec->waveParameters[OV_H_MAX], 3.5F);
}

TEST(TrackRange, EveryStatisticHasItsLimit) {
    // The period limits are 25, 30 and 35 times the rate of 4 Hz.
    for (const auto &[slot, good, bad] :
         {SlotCase{OV_H_THIRD, 20.0F, 20.01F}, SlotCase{OV_H_TENTH, 23.0F, 25.01F},
          SlotCase{OV_H_MAX, 35.0F, 35.01F}, SlotCase{OV_T_CROSSING, 35.0F, 35.01F},
          SlotCase{OV_T_CROSSING, 0.5F, 0.499F}, SlotCase{OV_T_THIRD, 100.0F, 100.01F},
          SlotCase{OV_T_TENTH, 120.0F, 120.01F}, SlotCase{OV_T_MAX, 140.0F, 140.01F}}) {
        const RecordPtr below = soundTrack();
        below->waveParameters[slot] = good;
        EXPECT_FALSE(trackRejected(below)) << slot;
        const RecordPtr above = soundTrack();
        above->waveParameters[slot] = bad;
        EXPECT_TRUE(trackRejected(above)) << slot;
    }
}

TEST(TrackRange, HeightsTooGreatForTheDepthAreRejected) {
    for (const int slot : {OV_H_THIRD, OV_H_TENTH}) {
        const RecordPtr below = soundTrack();
        below->waterDepth = 13.01F;
        below->waveParameters[slot] = 10.0F;
        EXPECT_FALSE(trackRejected(below));
        const RecordPtr above = soundTrack();
        above->waterDepth = 12.99F;
        above->waveParameters[slot] = 10.0F;
        EXPECT_TRUE(trackRejected(above));
    }
    const RecordPtr greatest = soundTrack(); // the highest wave has no such limit
    greatest->waterDepth = 5.0F;
    greatest->waveParameters[OV_H_MAX] = 10.0F;
    EXPECT_FALSE(trackRejected(greatest));
}

TEST(TrackRange, AMissingStatisticRejectsThemAll) {
    const RecordPtr rec = soundTrack();
    rec->waveParameters[OV_T_TENTH] = -9.0F;
    EXPECT_TRUE(trackRejected(rec));
}

bool clearanceFlag(int type, float frequency, float level, float height = 4.0F) {
    const RecordPtr rec = makeRecord();
    rec->instrumentType = type;
    rec->acousticFrequency = frequency;
    rec->astLevel = level;
    rec->waveParameters[OV_H_MAX] = height;
    ov::checkClearance(*rec);
    EXPECT_EQ(rec->qualityFlags & ~OV_FLAG_CLEARANCE, 0);
    return rec->qualityFlags != 0;
}

TEST(Clearance, IsFlaggedWithinHalfAMetreOfTheRange) {
    const struct {
        int type;
        float frequency, range;
    } cases[] = {{3, 4e5F, 110.0F}, {3, 6e5F, 62.2F},    {3, 1e6F, 44.0F}, {16, 4e5F, 110.0F},
                 {16, 5e5F, 62.2F}, {16, 2.5e5F, 62.2F}, {16, 1e6F, 44.0F}};
    for (const auto &[type, frequency, range] : cases) {
        EXPECT_TRUE(clearanceFlag(type, frequency, range - 2.0F));
        EXPECT_TRUE(clearanceFlag(type, frequency, range - 2.0F - 0.49F));
        EXPECT_TRUE(clearanceFlag(type, frequency, range - 2.0F + 0.49F));
        EXPECT_FALSE(clearanceFlag(type, frequency, range - 2.0F - 0.51F));
        EXPECT_FALSE(clearanceFlag(type, frequency, range - 2.0F + 0.51F));
        EXPECT_FALSE(clearanceFlag(type, frequency, range - 2.0F, 8.0F)); // half the height counts
    }
    EXPECT_FALSE(clearanceFlag(3, 1e6F, 41.5F)); // 0.5 m exactly
}

TEST(Clearance, AFrequencyWithoutAKnownRangeIsAlwaysFlagged) {
    EXPECT_TRUE(clearanceFlag(3, 5e5F, 10.0F));
    EXPECT_TRUE(clearanceFlag(3, 2.5e5F, 10.0F));
    EXPECT_TRUE(clearanceFlag(16, 2e6F, 10.0F));
    EXPECT_TRUE(clearanceFlag(3, 0.0F, 10.0F));
    EXPECT_FALSE(clearanceFlag(16, 5e5F, 10.0F));
}

TEST(Depth, BelowOneMetreTheInstrumentIsShallow) {
    for (const auto &[depth, flags] :
         {std::pair{0.9F, 1}, {std::nextafter(1.0F, 0.0F), 1}, {1.0F, 0}, {20.0F, 0}, {-3.0F, 1}}) {
        const RecordPtr rec = makeRecord();
        rec->instrumentDepth = depth;
        ov::checkDepth(*rec);
        EXPECT_EQ(rec->qualityFlags, flags) << depth;
    }
}

RecordPtr spectrumOf(std::initializer_list<float> values) {
    RecordPtr rec = makeRecord();
    rec->nFrequencies = static_cast<int>(values.size());
    std::copy(values.begin(), values.end(), rec->spectrumPrs);
    rec->checkedHeight = 1.5F;
    return rec;
}

bool flat(const RecordPtr &rec) {
    ov::checkSpectrumShape(*rec);
    const bool flagged = rec->qualityFlags == OV_FLAG_FLAT_SPECTRUM;
    EXPECT_EQ(rec->checkedHeight, flagged ? -9.0F : 1.5F);
    return flagged;
}

TEST(SpectrumShape, ALineOfRunningSumsIsFlat) {
    EXPECT_TRUE(flat(spectrumOf({0, 0, 0, 0, 0, 0})));
    EXPECT_TRUE(flat(spectrumOf({3, 3, 3, 3, 3, 3})));
    EXPECT_TRUE(flat(spectrumOf(
        {9, 1, 7, 3, 3, 3}))); // the sums start at bin 2: the first three bins set the level only
}

TEST(SpectrumShape, APeakIsNotFlat) {
    EXPECT_FALSE(flat(spectrumOf({0, 0, 0.1F, 2, 1, 0.5F, 0.2F})));
    EXPECT_FALSE(flat(spectrumOf({3, 3, 3, 3, 3, 4})));
}

TEST(SpectrumShape, DeviationsUpToFiveHundredThousandthsOfASumAreFlat) {
    // Running sums of bins 2 to 4: 0, e, 0 + e. The line's greatest residual is e / 3.
    EXPECT_TRUE(flat(spectrumOf({0, 0, 0, 1.49e-4F, 0})));
    EXPECT_FALSE(flat(spectrumOf({0, 0, 0, 1.51e-4F, 0})));
    EXPECT_TRUE(flat(spectrumOf({0, 0, 0, 0, 1.49e-4F})));
    EXPECT_FALSE(flat(spectrumOf({0, 0, 0, 0, 1.55e-4F})) &&
                 flat(spectrumOf({0, 0, 0, 0, 3.1e-4F})));
}

TEST(SpectrumShape, FewerThanThreeBinsHaveNone) {
    EXPECT_TRUE(flat(spectrumOf({})));
    EXPECT_TRUE(flat(spectrumOf({1, 5})));
    EXPECT_TRUE(flat(spectrumOf({1, 5, 2}))); // a single sum lies on its line
    EXPECT_FALSE(flat(spectrumOf({1, 5, 2, kNone, 1})));
}

// Parameters within every limit.
RecordPtr soundParameters() {
    RecordPtr rec = makeRecord();
    const float values[] = {6.0F, 8.0F, 200.0F, 25.0F, 190.0F, 0.8F, 1.5F,
                            1.4F, 8.0F, 1.8F,   8.2F,  2.5F,   9.0F, 6.5F};
    std::copy(std::begin(values), std::end(values), rec->waveParameters);
    rec->checkedMeanPeriod = 6.0F;
    return rec;
}

constexpr int kDependent[] = {OV_TM02,           OV_PEAK_DIRECTION,   OV_PEAK_SPREAD,
                              OV_MEAN_DIRECTION, OV_RESULTANT_LENGTH, OV_T_CROSSING};

// Whether the check rejected the directions and mean periods, all of them or none.
bool rejected(const RecordPtr &rec) {
    ov::checkValidity(*rec);
    const bool flagged = rec->waveParameters[OV_T_CROSSING] == -9.0F;
    for (const int slot : kDependent) {
        EXPECT_EQ(rec->waveParameters[slot] == -9.0F, flagged) << slot;
    }
    EXPECT_EQ(rec->checkedMeanPeriod, flagged ? -9.0F : 6.0F);
    EXPECT_TRUE(!flagged || (rec->qualityFlags & OV_FLAG_INVALID_PARAMETERS) != 0);
    return flagged;
}

TEST(Validity, SoundParametersStand) {
    const RecordPtr rec = soundParameters();
    EXPECT_FALSE(rejected(rec));
    EXPECT_EQ(rec->qualityFlags, 0);
    EXPECT_EQ(rec->waveParameters[OV_TP], 8.0F);
}

TEST(Validity, DecisiveParametersHaveLimitsAndTakeTheOthersWithThem) {
    for (const auto &[slot, good, bad] :
         {SlotCase{OV_HM0, 20.0F, 20.01F}, SlotCase{OV_TM02, 35.0F, 35.01F},
          SlotCase{OV_TM02, 0.5F, 0.499F}, SlotCase{OV_TP, 49.99F, 50.0F},
          SlotCase{OV_TP, 0.5F, 0.499F}, SlotCase{OV_MEAN_DIRECTION, 360.0F, 360.1F},
          SlotCase{OV_MEAN_DIRECTION, 0.0F, -0.1F}, SlotCase{OV_PEAK_SPREAD, 90.0F, 90.1F},
          SlotCase{OV_PEAK_SPREAD, 0.0F, -0.1F}, SlotCase{OV_RESULTANT_LENGTH, 1.0F, 1.01F},
          SlotCase{OV_RESULTANT_LENGTH, 0.0F, -0.01F}}) {
        const RecordPtr within = soundParameters();
        within->waveParameters[slot] = good;
        EXPECT_FALSE(rejected(within)) << slot << ' ' << good;
        const RecordPtr outside = soundParameters();
        outside->waveParameters[slot] = bad;
        EXPECT_TRUE(rejected(outside)) << slot << ' ' << bad;
        EXPECT_EQ(outside->waveParameters[slot], -9.0F);
    }
}

TEST(Validity, APeakDirectionOutsideTheCircleIsMissingAlone) {
    for (const float direction : {360.1F, -0.1F}) {
        const RecordPtr rec = soundParameters();
        rec->waveParameters[OV_PEAK_DIRECTION] = direction;
        ov::checkValidity(*rec);
        EXPECT_EQ(rec->waveParameters[OV_PEAK_DIRECTION], -9.0F);
        EXPECT_EQ(rec->waveParameters[OV_MEAN_DIRECTION], 190.0F);
        EXPECT_EQ(rec->qualityFlags, 0);
    }
}

TEST(Validity, ParametersThatAreNotANumberAreMissingAndFlagged) {
    for (const int slot :
         {OV_HM0, OV_TM02, OV_TP, OV_MEAN_DIRECTION, OV_PEAK_SPREAD, OV_RESULTANT_LENGTH}) {
        const RecordPtr rec = soundParameters();
        rec->waveParameters[slot] = kNone;
        EXPECT_TRUE(rejected(rec));
        EXPECT_EQ(rec->waveParameters[slot], -9.0F);
    }
    for (const int slot : {OV_H_THIRD, OV_H_TENTH, OV_H_MAX}) { // nothing else depends on these
        const RecordPtr rec = soundParameters();
        rec->waveParameters[slot] = kNone;
        EXPECT_FALSE(rejected(rec));
        EXPECT_EQ(rec->waveParameters[slot], -9.0F);
        EXPECT_EQ(rec->qualityFlags, OV_FLAG_INVALID_PARAMETERS);
    }
}

TEST(Validity, TheHeightSurvivesAMissingDirection) {
    const RecordPtr rec = soundParameters();
    rec->waveParameters[OV_MEAN_DIRECTION] = kNone;
    ov::checkValidity(*rec);
    EXPECT_EQ(rec->waveParameters[OV_HM0], 1.5F);
    EXPECT_EQ(rec->waveParameters[OV_TP], 8.0F);
}

TEST(Tilt, OverTenDegreesIsFlagged) {
    const struct {
        float pitch, roll;
        double tilt;
    } cases[] = {{8.0F, 7.0F, 10.6151},  {9.99F, 0.0F, 9.99}, {0.0F, 10.01F, 10.01},
                 {-8.0F, 7.0F, 10.6151}, {0.0F, 0.0F, 0.0},   {7.0F, 7.0F, 9.888},
                 {0.0F, 170.0F, 170.0}};
    for (const auto &[pitch, roll, tilt] : cases) {
        const RecordPtr rec = makeRecord();
        rec->pitch = pitch;
        rec->roll = roll;
        ov::checkTilt(*rec);
        EXPECT_NEAR(rec->tiltAngle, tilt, 1e-3);
        EXPECT_EQ(rec->qualityFlags, tilt > 10.0 ? OV_FLAG_TILT : 0) << pitch << ' ' << roll;
    }
}

bool rising(const RecordPtr &rec) {
    ov::checkSpectrumRise(*rec);
    return rec->qualityFlags == OV_FLAG_RISING_SPECTRUM;
}

TEST(SpectrumRise, ASpectrumThatNeverDecreasesIsFlagged) {
    EXPECT_TRUE(rising(spectrumOf({1, 2, 3, 4})));
    EXPECT_TRUE(rising(spectrumOf({1, 1, 1, 1})));
    EXPECT_FALSE(rising(spectrumOf({1, 2, 3, 2.99F})));
    EXPECT_FALSE(rising(spectrumOf({1, 3, 2, 4})));
}

TEST(SpectrumRise, TheFirstBinIsLeftOut) {
    EXPECT_TRUE(rising(spectrumOf({9, 2, 3, 4})));
    EXPECT_FALSE(rising(spectrumOf({0, 3, 2})));
}

TEST(SpectrumRise, FewerThanThreeBinsCannotFall) {
    EXPECT_TRUE(rising(spectrumOf({})));
    EXPECT_TRUE(rising(spectrumOf({5, 1})));
    EXPECT_TRUE(rising(spectrumOf({1, 2, 3})));
}

TEST(Signal, BelowAMillimetreOfPressureThereIsNone) {
    for (const auto &[amplitude, flags] :
         {std::pair{0.00099F, 2}, {0.00101F, 0}, {0.0F, 2}, {2.0F, 0}}) {
        const RecordPtr rec = makeRecord();
        rec->burstLength = 1000;
        for (int i = 0; i < 1000; ++i) { // the sign does not matter
            rec->pressureSeries[i] = i % 3 == 0 ? -amplitude : amplitude;
        }
        rec->pressureSeries[1000] = 1e6F; // beyond the burst
        ov::checkSignal(*rec);
        EXPECT_EQ(rec->qualityFlags, flags) << amplitude;
    }
}

TEST(Checks, KeepTheBitsOfOtherChecks) {
    const RecordPtr rec = makeRecord(); // shallow, flat, rising, silent
    rec->qualityFlags = OV_FLAG_WEAK_AMPLITUDE;
    rec->burstLength = 10;
    rec->roll = 45.0F;
    ov::checkDepth(*rec);
    ov::checkSpectrumShape(*rec);
    ov::checkTilt(*rec);
    ov::checkSpectrumRise(*rec);
    ov::checkSignal(*rec);
    EXPECT_EQ(rec->qualityFlags, OV_FLAG_WEAK_AMPLITUDE | OV_FLAG_SHALLOW | OV_FLAG_FLAT_SPECTRUM |
                                     OV_FLAG_TILT | OV_FLAG_RISING_SPECTRUM | OV_FLAG_NO_SIGNAL);
}

} // namespace
