#include "spectral/profile_series.hpp"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <iterator>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "spectral/profile_beams.hpp"
#include "spectral/velocity_frames.hpp"
#include "support/record_ptr.hpp"

namespace {

using orvik::test::attitudeMatrix;
using orvik::test::product;
using orvik::test::RecordPtr;
using orvik::test::Wide;
using orvik::test::wideIdentity;
using orvik::test::wideInverse;
using orvik::test::WideSquare;

constexpr int kSamples = 64;
constexpr int kHalf = kSamples / 2;

struct Choice {
    int method = 3;
    int attitudeMode = OV_VELOCITY_BEAM;
    int mask = 15;
    std::int16_t beams = 4;
};

float velocityAt(int series, int i) {
    const double t = 2.0 * M_PI * i / kSamples;
    const double s = series;
    return static_cast<float>(0.1 * s - 0.2 + 0.3 * std::cos((3.0 + s) * t + 0.4 * s) -
                              0.2 * std::sin(7.0 * t));
}
float pressureAt(int i) {
    return static_cast<float>(0.5 * std::cos(2.0 * M_PI * 5 * i / kSamples));
}
float headingAt(int i) { return 40.0F + static_cast<float>(i % 7); }
float pitchAt(int i) { return 2.0F + 0.25F * static_cast<float>(i % 5); }
float rollAt(int i) { return -3.0F + 0.5F * static_cast<float>(i % 3); }

// Four beams in the quarters (or three a third of a turn apart), 25 degrees of slant; row by row, 4096 stands for 1.
constexpr std::int16_t kFourBeams[16] = {4846, 0, -4846, 0, 0, 4846, 0, -4846,
                                         2260, 0, 2260,  0, 0, 2260, 0, 2260};
constexpr std::int16_t kThreeBeams[9] = {6461, -3231, -3231, 0, 5596, -5596, 1506, 1506, 1506};

RecordPtr burstOf(const Choice &choice) {
    RecordPtr record = orvik::test::makeRecord();
    OVRecord &rec = *record;
    rec.instrumentType = 16;
    rec.activeMethod = choice.method;
    rec.attitudeMode = choice.attitudeMode;
    rec.estimateMask = choice.mask;
    rec.beamCount = choice.beams;
    rec.burstLength = kSamples;
    rec.slantAngle = 25.0F;
    rec.heading = 43.0F;
    rec.pitch = 2.5F;
    rec.roll = -2.5F;
    rec.headingOffset = 1.1;
    rec.directionOffset = 44.1F;
    rec.headerDepth = 4.5F;
    rec.instrumentDepth = 12.25F;
    if (choice.beams == 3) {
        std::memcpy(rec.transformMatrix, kThreeBeams, sizeof kThreeBeams);
    } else {
        std::memcpy(rec.transformMatrix, kFourBeams, sizeof kFourBeams);
    }
    for (int i = 0; i < kSamples; ++i) {
        for (int s = 0; s < 4; ++s) {
            ov::velocitySeriesData(rec, s)[i] = velocityAt(s, i);
        }
        rec.pressureSeries[i] = pressureAt(i);
        rec.attitudeSeries[0][i] = headingAt(i);
        rec.attitudeSeries[1][i] = pitchAt(i);
        rec.attitudeSeries[2][i] = rollAt(i);
    }
    return record;
}

RecordPtr builtOf(const Choice &choice) {
    RecordPtr record = burstOf(choice);
    ov::buildSeriesGeometry(*record);
    return record;
}

// ---- The same arithmetic again in extended precision

using Series = std::vector<std::array<Wide, 4>>;

WideSquare instrument(const Choice &choice) {
    WideSquare t{};
    const auto n = static_cast<std::size_t>(choice.beams);
    for (std::size_t i = 0; i < n * n; ++i) {
        t[i / n][i % n] = (choice.beams == 3 ? kThreeBeams[i] : kFourBeams[i]) / 4096.0L;
    }
    return t;
}

WideSquare toEarthAt(const Choice &choice, int i) {
    const auto n = static_cast<std::size_t>(choice.beams);
    const WideSquare r =
        attitudeMatrix(n, static_cast<Wide>(headingAt(i)), static_cast<Wide>(pitchAt(i)),
                       static_cast<Wide>(rollAt(i)));
    return product(r, choice.attitudeMode == OV_VELOCITY_XYZ ? wideIdentity() : instrument(choice),
                   n);
}

// Velocities as the method analyses them.
Series converted(const Choice &choice) {
    const auto n = static_cast<std::size_t>(choice.beams);
    const bool alongBeam = choice.method == 3 || choice.method == 4;
    Series result;
    for (int i = 0; i < kSamples; ++i) {
        std::array<Wide, 4> v{};
        for (int s = 0; s < 4; ++s) {
            v[static_cast<std::size_t>(s)] = static_cast<Wide>(velocityAt(s, i));
        }
        const std::array<Wide, 4> before = v;
        if (alongBeam && choice.attitudeMode == OV_VELOCITY_XYZ) {
            v = product(wideInverse(instrument(choice), n), v, n);
        } else if (alongBeam && choice.attitudeMode == OV_VELOCITY_ENU) {
            v = product(wideInverse(toEarthAt(choice, i), n), v, n);
        } else if (!alongBeam && choice.attitudeMode != OV_VELOCITY_ENU) {
            v = product(toEarthAt(choice, i), v, n);
        }
        if (n == 3) {
            v[3] = before[3];
        } else if (!alongBeam) {
            v[2] = (v[2] + v[3]) / 2;
        }
        result.push_back(v);
    }
    return result;
}

std::array<Wide, 4> meanOf(const Series &series) {
    std::array<Wide, 4> mean{};
    for (const auto &v : series) {
        for (std::size_t s = 0; s < 4; ++s) {
            mean[s] += v[s] / kSamples;
        }
    }
    return mean;
}

// The slot holds harmonic `place` - 1 of the series at places 2 and above, and the mean at place 0.
void expectTransform(const OVRecord &record, std::size_t slot, const Series &series,
                     std::size_t component) {
    EXPECT_NEAR(record.seriesSpecRe[slot][0], static_cast<double>(2 * meanOf(series)[component]),
                2e-6);
    for (int place = 2; place < kHalf; ++place) {
        Wide re = 0.0L;
        Wide im = 0.0L;
        for (int i = 0; i < kSamples; ++i) {
            const Wide angle = 2.0L * std::numbers::pi_v<Wide> * (place - 1) * i / kSamples;
            re += series[static_cast<std::size_t>(i)][component] * std::cos(angle) / kHalf;
            im -= series[static_cast<std::size_t>(i)][component] * std::sin(angle) / kHalf;
        }
        ASSERT_NEAR(record.seriesSpecRe[slot][place], static_cast<double>(re), 2e-6)
            << slot << ' ' << place;
        ASSERT_NEAR(record.seriesSpecIm[slot][place], static_cast<double>(im), 2e-6)
            << slot << ' ' << place;
    }
}

bool isZeroSlot(const OVRecord &record, std::size_t slot) {
    const auto zero = [](float value) { return value == 0.0F; };
    return std::all_of(std::begin(record.seriesSpecRe[slot]), std::end(record.seriesSpecRe[slot]),
                       zero) &&
           std::all_of(std::begin(record.seriesSpecIm[slot]), std::end(record.seriesSpecIm[slot]),
                       zero);
}

// ---- The list

TEST(ProfileSeries, ThePressureEntryIsLastWhateverTheMask) {
    for (const int method : {1, 2, 3, 4}) {
        for (int mask = 0; mask < 32; ++mask) {
            const RecordPtr record = builtOf({method, OV_VELOCITY_BEAM, mask, 4});
            const OVRecord &rec = *record;
            int velocities = 0;
            for (const int bit : {1, 2, 4, 8}) {
                velocities += (mask & bit) != 0 ? 1 : 0;
            }
            const bool track = method == 2 || (method == 4 && (mask & 16) != 0);
            const int last = velocities + (track ? 1 : 0);
            ASSERT_EQ(rec.velocitySeriesCount, velocities) << method << ' ' << mask;
            ASSERT_EQ(rec.pressureSeriesIndex, last) << method << ' ' << mask;
            ASSERT_EQ(rec.nMlmSeries, last);
            ASSERT_EQ(rec.seriesCount, last + 1);
            for (int k = 0; k < 6; ++k) {
                const int type = k < velocities ? 3 : k < last ? 1 : k == last ? 5 : 0;
                ASSERT_EQ(rec.seriesType[k], type) << method << ' ' << mask << ' ' << k;
            }
            ASSERT_EQ(rec.beamDirX[last], 0.0F);
            ASSERT_EQ(rec.beamDirY[last], 0.0F);
            ASSERT_EQ(rec.seriesX[last], 0.0F);
            ASSERT_EQ(rec.seriesY[last], 0.0F);
            ASSERT_EQ(rec.seriesDepth[last], 12.25F);
        }
    }
}

TEST(ProfileSeries, SelectedBeamsKeepTheirOwnDirectionsSeriesAndCells) {
    const Choice choice{3, OV_VELOCITY_BEAM, 10, 4}; // beams 2 and 4
    const RecordPtr record = builtOf(choice);
    const auto directions = ov::profileBeamDirections(*record);
    const std::size_t beams[2] = {1, 3};
    for (std::size_t k = 0; k < 2; ++k) {
        const auto &d = directions[beams[k]];
        EXPECT_EQ(record->beamDirX[k], static_cast<float>(d[0]));
        EXPECT_EQ(record->beamDirY[k], static_cast<float>(d[1]));
        EXPECT_EQ(record->beamDirZ[k], static_cast<float>(d[2]));
        EXPECT_EQ(record->seriesX[k], record->beamDirX[k] * 4.5F);
        EXPECT_EQ(record->seriesY[k], record->beamDirY[k] * 4.5F);
        EXPECT_EQ(record->seriesDepth[k],
                  static_cast<float>(12.25 - static_cast<double>(record->beamDirZ[k]) * 4.5));
        expectTransform(*record, k, converted(choice), beams[k]);
    }
}

TEST(ProfileSeries, TheTrackStandsWhereItsBeamMeetsTheSurface) {
    const RecordPtr record = builtOf({4, OV_VELOCITY_BEAM, 31, 4});
    const OVRecord &rec = *record;
    const auto d = ov::trackBeamDirection(rec);
    ASSERT_EQ(rec.seriesType[4], 1);
    EXPECT_EQ(rec.beamDirX[4], static_cast<float>(d[0]));
    EXPECT_EQ(rec.beamDirY[4], static_cast<float>(d[1]));
    EXPECT_EQ(rec.beamDirZ[4], static_cast<float>(d[2]));
    EXPECT_EQ(rec.seriesX[4], rec.beamDirX[4] * 12.25F);
    EXPECT_EQ(rec.seriesY[4], rec.beamDirY[4] * 12.25F);
    EXPECT_NEAR(rec.seriesDepth[4], 12.25 * (1.0 - d[2]), 1e-5);
    EXPECT_EQ(rec.surfaceTrackCosine, rec.beamDirZ[4]);
    EXPECT_TRUE(isZeroSlot(rec, 4)); // transformed with the track itself
}

TEST(ProfileSeries, TheTracksCosineNeedsItsBit) {
    for (const int mask : {7, 23}) {
        const RecordPtr record = builtOf({2, OV_VELOCITY_ENU, mask, 4});
        const bool bit = (mask & 16) != 0;
        EXPECT_EQ(record->seriesType[3], 1);
        EXPECT_EQ(record->surfaceTrackCosine, bit ? record->beamDirZ[3] : 1.0F);
        EXPECT_EQ(record->beamDirZ[3] != 0.0F, bit);
        EXPECT_EQ(record->seriesX[3], 0.0F); // east-north-up: the track has no place of its own
        EXPECT_EQ(record->seriesDepth[3], 0.0F);
    }
    for (const int method : {1, 3}) {
        EXPECT_EQ(builtOf({method, OV_VELOCITY_BEAM, 31, 4})->surfaceTrackCosine, 1.0F);
    }
}

TEST(ProfileSeries, NothingOfAnEarlierBurstIsLeft) {
    const RecordPtr record = burstOf({3, OV_VELOCITY_BEAM, 1, 4});
    OVRecord &rec = *record;
    for (int k = 0; k < 6; ++k) {
        rec.seriesType[k] = 9;
        rec.seriesX[k] = rec.seriesY[k] = rec.seriesDepth[k] = 9.0F;
        rec.beamDirX[k] = rec.beamDirY[k] = rec.beamDirZ[k] = 9.0F;
        std::fill(std::begin(rec.seriesSpecRe[k]), std::end(rec.seriesSpecRe[k]), 9.0F);
        std::fill(std::begin(rec.seriesSpecIm[k]), std::end(rec.seriesSpecIm[k]), 9.0F);
    }
    rec.surfaceTrackCosine = 0.5F;
    ov::buildSeriesGeometry(rec);
    for (std::size_t k = 2; k < 6; ++k) {
        EXPECT_EQ(rec.seriesType[k], 0);
        EXPECT_EQ(rec.seriesX[k], 0.0F);
        EXPECT_EQ(rec.seriesY[k], 0.0F);
        EXPECT_EQ(rec.seriesDepth[k], 0.0F);
        EXPECT_EQ(rec.beamDirX[k], 0.0F);
        EXPECT_EQ(rec.beamDirY[k], 0.0F);
        EXPECT_EQ(rec.beamDirZ[k], 0.0F);
        EXPECT_TRUE(isZeroSlot(rec, k));
    }
    EXPECT_EQ(rec.beamDirZ[1], 0.0F); // the pressure entry's
    EXPECT_EQ(rec.surfaceTrackCosine, 1.0F);
    for (int place = kHalf; place < ov::kSlotBins; ++place) {
        ASSERT_EQ(rec.seriesSpecRe[0][place], 0.0F);
        ASSERT_EQ(rec.seriesSpecIm[1][place], 0.0F);
    }
}

// ---- Conversion, means and transforms

class ProfileSeriesConversion : public testing::TestWithParam<Choice> {};

// ulp: single-precision matrices and products, transforms to a few units in the seventh digit.
TEST_P(ProfileSeriesConversion, EverySlotHoldsItsConvertedSeries) {
    const Choice choice = GetParam();
    const RecordPtr record = builtOf(choice);
    const Series series = converted(choice);
    const bool alongBeam = choice.method == 3 || choice.method == 4;
    for (std::size_t b = 0; b < (alongBeam ? 4U : 3U); ++b) {
        expectTransform(*record, b, series, b);
    }
    if (!alongBeam) {
        EXPECT_TRUE(isZeroSlot(*record, 3)); // east, north, up has no fourth component
    }
    Series pressure(kSamples);
    for (int i = 0; i < kSamples; ++i) {
        pressure[static_cast<std::size_t>(i)][0] = static_cast<Wide>(pressureAt(i));
    }
    expectTransform(*record, static_cast<std::size_t>(record->pressureSeriesIndex), pressure, 0);
}

TEST_P(ProfileSeriesConversion, TheMeanVelocityIsEastNorthUp) {
    const Choice choice = GetParam();
    const RecordPtr record = builtOf(choice);
    std::array<Wide, 4> mean = meanOf(converted(choice));
    const auto n = static_cast<std::size_t>(choice.beams);
    if (choice.method == 3 ||
        choice.method == 4) { // turned by the burst's attitude, not by the samples'
        mean =
            product(product(attitudeMatrix(n, 43.0L, 2.5L, -2.5L), instrument(choice), n), mean, n);
    }
    for (std::size_t c = 0; c < 3; ++c) {
        EXPECT_NEAR(record->meanVelocity[c], static_cast<double>(mean[c]), 2e-6) << c;
    }
}

TEST_P(ProfileSeriesConversion, TheBurstsSeriesStayAsTheyWere) {
    const RecordPtr record = builtOf(GetParam());
    for (int i = 0; i < kSamples; ++i) {
        for (int s = 0; s < 4; ++s) {
            ASSERT_EQ(ov::velocitySeriesData(*record, s)[i], velocityAt(s, i));
        }
        ASSERT_EQ(record->pressureSeries[i], pressureAt(i));
    }
}

TEST_P(ProfileSeriesConversion, OnlyEastNorthUpDropsTheHeadingFromTheDirectionOffset) {
    const Choice choice = GetParam();
    const bool alongBeam = choice.method == 3 || choice.method == 4;
    EXPECT_EQ(builtOf(choice)->directionOffset, alongBeam ? 44.1F : 1.1F);
}

std::vector<Choice> allConversions() {
    std::vector<Choice> choices;
    for (const int method : {1, 2, 3, 4, 9}) {
        for (const int mode : {OV_VELOCITY_ENU, OV_VELOCITY_XYZ, OV_VELOCITY_BEAM}) {
            for (const int beams : {3, 4}) {
                choices.push_back({method, mode, method == 2 || method == 4 ? 31 : 15,
                                   static_cast<std::int16_t>(beams)});
            }
        }
    }
    return choices;
}

std::string nameOf(const testing::TestParamInfo<Choice> &info) {
    static constexpr const char *kModes[] = {"FromEarth", "FromXyz", "FromBeams"};
    return "Method" + std::to_string(info.param.method) + kModes[info.param.attitudeMode] +
           std::to_string(info.param.beams) + "Beams";
}

INSTANTIATE_TEST_SUITE_P(Every, ProfileSeriesConversion, testing::ValuesIn(allConversions()),
                         nameOf);

TEST(ProfileSeries, ThreeBeamsAverageNoVerticals) {
    for (const int mode : {OV_VELOCITY_ENU, OV_VELOCITY_XYZ, OV_VELOCITY_BEAM}) {
        const RecordPtr record = burstOf({1, mode, 7, 3});
        ov::buildSeriesGeometry(*record);
        const RecordPtr other = burstOf({1, mode, 7, 3});
        std::fill_n(other->astDistance2Series, kSamples, 50.0F); // no beam of three
        ov::buildSeriesGeometry(*other);
        EXPECT_EQ(
            std::memcmp(record->seriesSpecRe, other->seriesSpecRe, sizeof record->seriesSpecRe), 0);
        EXPECT_EQ(record->meanVelocity[2], other->meanVelocity[2]);
    }
}

TEST(ProfileSeries, AnEmptyBurstHasNoSpectraAndNoCurrent) {
    for (const int method : {1, 3}) {
        for (const int length : {0, 1}) {
            const RecordPtr record = burstOf({method, OV_VELOCITY_XYZ, 15, 4});
            record->burstLength = length;
            ov::buildSeriesGeometry(*record);
            for (std::size_t slot = 0; slot < 6; ++slot) {
                EXPECT_TRUE(isZeroSlot(*record, slot));
            }
            EXPECT_EQ(record->meanVelocity[0] == 0.0F, length == 0);
        }
    }
}

TEST(ProfileSeries, AFullBurstFitsTheScratchSpace) {
    const Choice choice{3, OV_VELOCITY_ENU, 15, 4};
    const RecordPtr record = burstOf(choice);
    OVRecord &rec = *record;
    rec.burstLength = ov::kMaxSamples;
    std::array<Wide, 4> current{};
    for (int s = 0; s < 4; ++s) {
        const float value = 0.25F * static_cast<float>(s + 1);
        current[static_cast<std::size_t>(s)] = static_cast<Wide>(value);
        std::fill_n(ov::velocitySeriesData(rec, s), ov::kMaxSamples, value);
    }
    for (auto &attitude : rec.attitudeSeries) {
        std::fill(std::begin(attitude), std::end(attitude), 5.0F);
    }
    ov::buildSeriesGeometry(rec);
    const WideSquare toEarth = product(attitudeMatrix(4, 5.0L, 5.0L, 5.0L), instrument(choice), 4);
    const std::array<Wide, 4> beams = product(wideInverse(toEarth, 4), current, 4);
    for (std::size_t b = 0; b < 4; ++b) {
        EXPECT_NEAR(rec.seriesSpecRe[b][0], static_cast<double>(2 * beams[b]), 5e-6);
        for (int place = 2; place < ov::kSlotBins; ++place) {
            ASSERT_NEAR(rec.seriesSpecRe[b][place], 0.0, 1e-5) << place;
            ASSERT_NEAR(rec.seriesSpecIm[b][place], 0.0, 1e-5) << place;
        }
    }
}

} // namespace
