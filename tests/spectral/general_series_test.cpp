#include "spectral/general_series.hpp"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <limits>
#include <numbers>
#include <random>
#include <vector>

#include "frame/constants.hpp"
#include "spectral/fft.hpp"
#include "support/record_ptr.hpp"

namespace {

using Wide = long double;
using WideVector = std::array<Wide, 3>;
using WideMatrix = std::array<WideVector, 3>;

constexpr std::array<std::int16_t, 9> kIdentityHead{4096, 0, 0, 0, 4096, 0, 0, 0, 4096};
// Three beams 25 degrees off the vertical, at 0, 120 and 240 degrees from X towards Y.
constexpr std::array<std::int16_t, 9> kSlantedHead{6461,  -3231, -3231, 0,   5596,
                                                   -5596, 1506,  1506,  1506};

struct Choice {
    int method = 3;
    int attitudeMode = OV_VELOCITY_BEAM;
    int mask = 7;
    float heading = 0.0F;
    float pitch = 0.0F;
    float roll = 0.0F;
    std::array<std::int16_t, 9> matrix = kIdentityHead;
    int samples = 64;
};

// ---- The same arithmetic again in extended precision

constexpr Wide kDegree = std::numbers::pi_v<Wide> / 180.0L;

WideMatrix product(const WideMatrix &a, const WideMatrix &b) {
    WideMatrix c{};
    for (std::size_t i = 0; i < 3; ++i) {
        for (std::size_t j = 0; j < 3; ++j) {
            for (std::size_t k = 0; k < 3; ++k) {
                c[i][j] += a[i][k] * b[k][j];
            }
        }
    }
    return c;
}

WideVector product(const WideMatrix &m, const WideVector &v) {
    WideVector result{};
    for (std::size_t i = 0; i < 3; ++i) {
        result[i] = m[i][0] * v[0] + m[i][1] * v[1] + m[i][2] * v[2];
    }
    return result;
}

// By elimination, unlike the library's cofactors.
WideMatrix inverse(WideMatrix m) {
    WideMatrix result = {{{1, 0, 0}, {0, 1, 0}, {0, 0, 1}}};
    for (std::size_t c = 0; c < 3; ++c) {
        std::size_t pivot = c;
        for (std::size_t r = c + 1; r < 3; ++r) {
            pivot = std::abs(m[r][c]) > std::abs(m[pivot][c]) ? r : pivot;
        }
        std::swap(m[c], m[pivot]);
        std::swap(result[c], result[pivot]);
        for (std::size_t r = 0; r < 3; ++r) {
            const Wide factor = r == c ? 0.0L : m[r][c] / m[c][c];
            for (std::size_t k = 0; k < 3; ++k) {
                m[r][k] -= factor * m[c][k];
                result[r][k] -= factor * result[c][k];
            }
        }
    }
    for (std::size_t r = 0; r < 3; ++r) {
        for (Wide &value : result[r]) {
            value /= m[r][r];
        }
    }
    return result;
}

WideMatrix instrumentMatrix(const Choice &choice) {
    WideMatrix t{};
    for (std::size_t i = 0; i < 9; ++i) {
        t[i / 3][i % 3] = choice.matrix[i] / 4096.0L;
    }
    return t;
}

WideMatrix attitude(const Choice &choice, float heading) {
    const Wide x = (heading - 90.0L) * kDegree;
    const Wide p = choice.pitch * kDegree;
    const Wide r = choice.roll * kDegree;
    const Wide sp = std::sin(p);
    const Wide cp = std::cos(p);
    const Wide sr = std::sin(r);
    const Wide cr = std::cos(r);
    const WideMatrix turn = {
        {{std::cos(x), std::sin(x), 0}, {-std::sin(x), std::cos(x), 0}, {0, 0, 1}}};
    const WideMatrix tilt = {{{cp, -sp * sr, -cr * sp}, {0, cr, -sr}, {sp, sr * cp, cp * cr}}};
    return product(turn, tilt);
}

WideMatrix beamDirections(const Choice &choice) {
    return inverse(product(attitude(choice, 0.0F), instrumentMatrix(choice)));
}

WideMatrix beamToEarth(const Choice &choice) {
    return product(attitude(choice, choice.heading), instrumentMatrix(choice));
}

WideVector verticalBeam(const Choice &choice, float extraRoll = 0.0F) {
    const Wide p = choice.pitch * kDegree;
    const Wide r = (choice.roll + extraRoll) * kDegree;
    return {std::sin(r), -std::sin(p) * std::cos(r), std::cos(p) * std::cos(r)};
}

class GeneralSeries : public ::testing::Test {
protected:
    void build(const Choice &choice) {
        OVRecord &rec = *record_;
        rec.instrumentType = 3;
        rec.activeMethod = choice.method;
        rec.attitudeMode = choice.attitudeMode;
        rec.estimateMask = choice.mask;
        rec.heading = choice.heading;
        rec.pitch = choice.pitch;
        rec.roll = choice.roll;
        rec.burstLength = choice.samples;
        rec.instrumentDepth = 12.25F;
        rec.headerDepth = 8.3F;
        rec.headingOffset = -3.7;
        rec.directionOffset = 222.0F;
        std::copy(choice.matrix.begin(), choice.matrix.end(), rec.transformMatrix);
        std::mt19937 random(9);
        std::uniform_real_distribution<float> value(-1.0F, 2.0F);
        for (float *series : series_()) {
            for (int i = 0; i < choice.samples; ++i) {
                series[i] = value(random);
            }
        }
        ov::buildGeneralSeries(rec);
    }

    std::array<float *, 5> series_() {
        OVRecord &rec = *record_;
        return {rec.velocitySeries[0], rec.velocitySeries[1], rec.velocitySeries[2],
                rec.astDistance2Series, rec.pressureSeries};
    }

    void expectTypes(const std::vector<int> &types) {
        ASSERT_EQ(record_->seriesCount, static_cast<int>(types.size()));
        for (std::size_t k = 0; k < types.size(); ++k) {
            EXPECT_EQ(record_->seriesType[k], types[k]) << "entry " << k;
        }
        for (std::size_t k = types.size(); k < ov::kMaxSeries; ++k) {
            EXPECT_EQ(record_->seriesType[k], 0) << "entry " << k;
        }
    }

    void expectDirection(int slot, const WideVector &expected, double tolerance = 1e-6) {
        EXPECT_NEAR(record_->beamDirX[slot], static_cast<double>(expected[0]), tolerance)
            << "slot " << slot;
        EXPECT_NEAR(record_->beamDirY[slot], static_cast<double>(expected[1]), tolerance)
            << "slot " << slot;
        EXPECT_NEAR(record_->beamDirZ[slot], static_cast<double>(expected[2]), tolerance)
            << "slot " << slot;
    }

    void expectMeanVelocity(const WideVector &expected, double tolerance) {
        for (std::size_t c = 0; c < 3; ++c) {
            EXPECT_NEAR(record_->meanVelocity[c], static_cast<double>(expected[c]), tolerance)
                << "component " << c;
        }
    }

    WideVector burstMeans() {
        WideVector mean{};
        for (std::size_t c = 0; c < 3; ++c) {
            for (int i = 0; i < record_->burstLength; ++i) {
                mean[c] += record_->velocitySeries[c][i];
            }
            mean[c] /= record_->burstLength;
        }
        return mean;
    }

    // The slot holds the transform of `series`, bit for bit or within `tolerance`.
    void expectSpectrum(int slot, std::vector<float> series, double tolerance = 0.0) {
        const std::size_t h = series.size() / 2;
        ov::realSeriesFft(*record_, series.data(), static_cast<int>(series.size()));
        for (std::size_t j = 0; j < h; ++j) {
            EXPECT_NEAR(record_->seriesSpecRe[slot][j], series[j], tolerance)
                << "slot " << slot << " real " << j;
            EXPECT_NEAR(record_->seriesSpecIm[slot][j], series[h + j], tolerance)
                << "slot " << slot << " imaginary " << j;
        }
    }

    std::vector<float> burst(const float *series) const {
        return {series, series + record_->burstLength};
    }

    std::vector<float> converted(const WideMatrix &matrix, std::size_t row) {
        std::vector<float> series;
        for (int i = 0; i < record_->burstLength; ++i) {
            const auto &u = record_->velocitySeries;
            const WideVector v = product(matrix, WideVector{u[0][i], u[1][i], u[2][i]});
            series.push_back(static_cast<float>(v[row]));
        }
        return series;
    }

    orvik::test::RecordPtr record_ = orvik::test::makeRecord();
};

constexpr int kTrack = ov::kSurfaceTrackSeries;
constexpr int kVelocity = ov::kVelocitySeries;
constexpr int kPressure = ov::kPressureSeries;

// ---- Beam directions

TEST_F(GeneralSeries, LevelIdentityHeadPointsNorthWestAndUp) {
    build({.method = 4, .mask = 15});
    expectDirection(0, {0.0L, 1.0L, 0.0L});
    expectDirection(1, {-1.0L, 0.0L, 0.0L});
    expectDirection(2, {0.0L, 0.0L, 1.0L});
    expectDirection(3, {0.0L, 0.0L, 1.0L});
}

TEST_F(GeneralSeries, LevelSlantedHeadPointsAlongItsBeams) {
    build({.method = 3, .matrix = kSlantedHead});
    const Wide slant = 25.0L * kDegree;
    for (int b = 0; b < 3; ++b) {
        // X is north and Y west when the heading is 0. The head's matrix is rounded to 1/4096.
        const Wide azimuth = b * 120.0L * kDegree;
        expectDirection(b,
                        {-std::sin(azimuth) * std::sin(slant), std::cos(azimuth) * std::sin(slant),
                         std::cos(slant)},
                        5e-4);
    }
}

TEST_F(GeneralSeries, TiltTurnsEveryBeamAndTheHeadingTurnsNone) {
    const Choice choice{.method = 4,
                        .mask = 15,
                        .heading = 137.0F,
                        .pitch = 6.5F,
                        .roll = -4.25F,
                        .matrix = kSlantedHead};
    build(choice);
    const WideMatrix beams = beamDirections(choice);
    for (int b = 0; b < 3; ++b) {
        expectDirection(b, beams[static_cast<std::size_t>(b)]);
    }
    expectDirection(3, verticalBeam(choice));
}

TEST_F(GeneralSeries, MatrixThatBeginsWith9001To9999TiltsTheVerticalBeamAlone) {
    struct Row {
        std::int16_t first;
        float extraRoll;
    };
    for (const Row row : {Row{9000, 0.0F}, Row{9001, 5.0F}, Row{9500, 5.0F}, Row{9999, 5.0F},
                          Row{10000, 0.0F}, Row{-9500, 0.0F}}) {
        Choice choice{.method = 4, .mask = 15, .pitch = 3.0F, .roll = 2.0F, .matrix = kSlantedHead};
        choice.matrix[0] = row.first;
        build(choice);
        SCOPED_TRACE(row.first);
        expectDirection(3, verticalBeam(choice, row.extraRoll));
        const WideMatrix beams = beamDirections(choice);
        for (int b = 0; b < 3; ++b) {
            expectDirection(b, beams[static_cast<std::size_t>(b)]);
        }
    }
}

TEST_F(GeneralSeries, SelectedBeamsAloneFillTheSlots) {
    const Choice choice{.method = 3, .mask = 5, .pitch = 2.0F, .matrix = kSlantedHead};
    build(choice);
    expectTypes({kVelocity, kVelocity, kPressure});
    expectDirection(0, beamDirections(choice)[0]);
    expectDirection(1, beamDirections(choice)[2]);
}

TEST_F(GeneralSeries, PressureEntryKeepsTheVerticalComponentWithBeamOneOnly) {
    const auto up = [](float pitch) { return std::cos(pitch * kDegree); };
    for (const int mask : {7, 1, 15}) {
        build({.method = 3, .mask = mask, .pitch = 20.0F});
        expectDirection(record_->seriesCount - 1, {0.0L, 0.0L, up(20.0F)});
    }
    for (const int mask : {6, 14, 8, 0}) {
        build({.method = 3, .mask = mask, .pitch = 20.0F});
        expectDirection(record_->seriesCount - 1, {0.0L, 0.0L, 0.0L});
    }
}

// ---- Series list

TEST_F(GeneralSeries, ThreeBeamsWithMethodThreeGiveThreeVelocitiesAndPressure) {
    build({.method = 3, .mask = 7});
    expectTypes({kVelocity, kVelocity, kVelocity, kPressure});
    EXPECT_EQ(record_->velocitySeriesCount, 3);
    EXPECT_EQ(record_->nMlmSeries, 3);
    EXPECT_EQ(record_->seriesCount, 4);
}

TEST_F(GeneralSeries, AllBitsWithMethodFourAddTheSurfaceTrack) {
    build({.method = 4, .mask = 15});
    expectTypes({kVelocity, kVelocity, kVelocity, kTrack, kPressure});
    EXPECT_EQ(record_->velocitySeriesCount, 3);
    EXPECT_EQ(record_->nMlmSeries, 4);
    EXPECT_EQ(record_->seriesCount, 5);
}

TEST_F(GeneralSeries, AllBitsWithMethodThreeAddTheVerticalBeamsVelocity) {
    build({.method = 3, .mask = 15});
    expectTypes({kVelocity, kVelocity, kVelocity, kVelocity, kPressure});
    EXPECT_EQ(record_->velocitySeriesCount, 4);
    EXPECT_EQ(record_->nMlmSeries, 4);
    expectSpectrum(3, burst(record_->astDistance2Series));
}

TEST_F(GeneralSeries, MethodFourWithoutTheTracksBitHasNoTrackEntry) {
    build({.method = 4, .mask = 7});
    expectTypes({kVelocity, kVelocity, kVelocity, kPressure});
    EXPECT_EQ(record_->nMlmSeries, 3);
}

TEST_F(GeneralSeries, MethodOneHasNoVerticalEntryWhateverTheMask) {
    for (const int mask : {7, 15}) {
        build({.method = 1, .attitudeMode = OV_VELOCITY_ENU, .mask = mask});
        expectTypes({kVelocity, kVelocity, kVelocity, kPressure});
        EXPECT_EQ(record_->velocitySeriesCount, 0);
        EXPECT_EQ(record_->nMlmSeries, 3);
    }
}

TEST_F(GeneralSeries, MethodTwoListsTheTrackWhateverTheMask) {
    for (const int mask : {7, 15}) {
        build({.method = 2, .attitudeMode = OV_VELOCITY_ENU, .mask = mask});
        expectTypes({kVelocity, kVelocity, kVelocity, kTrack, kPressure});
        EXPECT_EQ(record_->velocitySeriesCount, 0);
        EXPECT_EQ(record_->nMlmSeries, 4);
    }
}

TEST_F(GeneralSeries, EmptyMaskLeavesThePressureAlone) {
    build({.method = 3, .mask = 0});
    expectTypes({kPressure});
    EXPECT_EQ(record_->nMlmSeries, 0);
    expectSpectrum(0, burst(record_->pressureSeries));
}

TEST_F(GeneralSeries, UnknownMethodIsSetUpAsMethodOne) {
    for (const int method : {0, 5, -1}) {
        build({.method = method, .attitudeMode = OV_VELOCITY_ENU, .mask = 15});
        expectTypes({kVelocity, kVelocity, kVelocity, kPressure});
        EXPECT_EQ(record_->velocitySeriesCount, 0);
    }
}

// ---- Positions and the track's cosine

TEST_F(GeneralSeries, VelocitiesStandAtTheCellAndTheTrackAtTheSurface) {
    const Choice choice{
        .method = 4, .mask = 15, .pitch = 6.5F, .roll = -4.25F, .matrix = kSlantedHead};
    build(choice);
    const WideMatrix beams = beamDirections(choice);
    const WideVector up = verticalBeam(choice);
    constexpr Wide kRange = 8.3L;
    constexpr Wide kDepth = 12.25L;
    for (int k = 0; k < 4; ++k) {
        const WideVector direction = k < 3 ? beams[static_cast<std::size_t>(k)] : up;
        const Wide range = k < 3 ? kRange : kDepth;
        EXPECT_NEAR(record_->seriesX[k], static_cast<double>(direction[0] * range), 4e-6) << k;
        EXPECT_NEAR(record_->seriesY[k], static_cast<double>(direction[1] * range), 4e-6) << k;
        EXPECT_NEAR(record_->seriesDepth[k], static_cast<double>(kDepth - direction[2] * range),
                    8e-6)
            << k;
    }
    EXPECT_EQ(record_->seriesX[4], 0.0F);
    EXPECT_EQ(record_->seriesY[4], 0.0F);
    EXPECT_EQ(record_->seriesDepth[4], 0.0F); // the pressure entry gets no position
}

TEST_F(GeneralSeries, DepthOfAnEntryIsRoundedOnce) {
    for (int step = 0; step < 40; ++step) {
        build({.method = 3, .pitch = 0.37F * static_cast<float>(step), .matrix = kSlantedHead});
        for (int k = 0; k < 3; ++k) {
            const double exact =
                12.25 - static_cast<double>(record_->beamDirZ[k]) * static_cast<double>(8.3F);
            EXPECT_EQ(record_->seriesDepth[k], static_cast<float>(exact))
                << "pitch step " << step << " entry " << k;
        }
    }
}

TEST_F(GeneralSeries, EastNorthUpMethodsPlaceVelocitiesButNotTheTrack) {
    for (const int mode : {OV_VELOCITY_ENU, OV_VELOCITY_BEAM}) {
        build({.method = 2,
               .attitudeMode = mode,
               .mask = 15,
               .pitch = 10.0F,
               .matrix = kSlantedHead});
        EXPECT_EQ(record_->seriesX[1], record_->beamDirX[1] * 8.3F);
        EXPECT_NE(record_->seriesX[1], 0.0F);
        EXPECT_EQ(record_->seriesY[3], 0.0F);
        EXPECT_EQ(record_->seriesDepth[3], 0.0F);
    }
}

TEST_F(GeneralSeries, CosineOfTheTrackIsThatOfTheTiltedBeamWhereItCounts) {
    struct Row {
        int method;
        int attitudeMode;
        int mask;
        bool tilted;
    };
    constexpr Row kRows[] = {
        {4, OV_VELOCITY_BEAM, 15, true},  {4, OV_VELOCITY_ENU, 15, true},
        {4, OV_VELOCITY_BEAM, 7, false},  {3, OV_VELOCITY_BEAM, 15, false},
        {1, OV_VELOCITY_BEAM, 15, false}, {2, OV_VELOCITY_ENU, 15, false},
        {2, OV_VELOCITY_XYZ, 15, true},   {2, OV_VELOCITY_BEAM, 15, true},
        {2, OV_VELOCITY_BEAM, 7, true},   {2, OV_VELOCITY_BEAM, 14, true},
    };
    for (const Row &row : kRows) {
        record_->surfaceTrackCosine = 0.5F; // of an earlier burst
        build({.method = row.method,
               .attitudeMode = row.attitudeMode,
               .mask = row.mask,
               .pitch = 20.0F});
        const double expected = row.tilted ? static_cast<double>(std::cos(20.0L * kDegree)) : 1.0;
        EXPECT_NEAR(record_->surfaceTrackCosine, expected, 1e-7)
            << "method " << row.method << " mode " << row.attitudeMode << " mask " << row.mask;
    }
}

TEST_F(GeneralSeries, TrackWithoutADirectionCountsAsVertical) {
    for (const int mask : {0, 2, 6}) {
        build({.method = 2, .attitudeMode = OV_VELOCITY_BEAM, .mask = mask, .pitch = 20.0F});
        EXPECT_EQ(record_->surfaceTrackCosine, 1.0F) << mask;
    }
}

// ---- Velocities and their means

TEST_F(GeneralSeries, EarthVelocitiesAreTurnedToTheBeamsForAlongBeamMethods) {
    for (const int method : {3, 4}) {
        const Choice choice{.method = method,
                            .attitudeMode = OV_VELOCITY_ENU,
                            .heading = 77.0F,
                            .pitch = 6.5F,
                            .roll = -4.25F,
                            .matrix = kSlantedHead};
        build(choice);
        expectMeanVelocity(burstMeans(), 1e-6);
        for (std::size_t b = 0; b < 3; ++b) {
            expectSpectrum(static_cast<int>(b), converted(beamDirections(choice), b), 2e-6);
        }
    }
}

TEST_F(GeneralSeries, BeamVelocitiesStayAndTheirMeanIsTurnedToEastNorthUp) {
    const Choice choice{
        .method = 3, .heading = 77.0F, .pitch = 6.5F, .roll = -4.25F, .matrix = kSlantedHead};
    build(choice);
    expectMeanVelocity(product(beamToEarth(choice), burstMeans()), 2e-6);
    for (int b = 0; b < 3; ++b) {
        expectSpectrum(b, burst(record_->velocitySeries[b]));
    }
}

TEST_F(GeneralSeries, AlongBeamMethodsTakeInstrumentAxesAsTheyAreWithoutAMean) {
    std::fill_n(record_->meanVelocity, 4, 0.3F); // of an earlier burst
    build({.method = 4, .attitudeMode = OV_VELOCITY_XYZ, .heading = 77.0F, .matrix = kSlantedHead});
    expectMeanVelocity({0.0L, 0.0L, 0.0L}, 0.0);
    for (int b = 0; b < 3; ++b) {
        expectSpectrum(b, burst(record_->velocitySeries[b]));
    }
}

TEST_F(GeneralSeries, EastNorthUpMethodsTurnOtherVelocities) {
    struct Row {
        int method;
        int attitudeMode;
        bool instrumentMatrixUsed;
    };
    // Method 2 takes instrument axes as along-beam.
    for (const Row row : {Row{1, OV_VELOCITY_BEAM, true}, Row{1, OV_VELOCITY_XYZ, false},
                          Row{2, OV_VELOCITY_BEAM, true}, Row{2, OV_VELOCITY_XYZ, true}}) {
        SCOPED_TRACE(::testing::Message()
                     << "method " << row.method << " mode " << row.attitudeMode);
        const Choice choice{.method = row.method,
                            .attitudeMode = row.attitudeMode,
                            .heading = 77.0F,
                            .pitch = 6.5F,
                            .roll = -4.25F,
                            .matrix = kSlantedHead};
        build(choice);
        const WideMatrix matrix =
            row.instrumentMatrixUsed ? beamToEarth(choice) : attitude(choice, choice.heading);
        expectMeanVelocity(product(matrix, burstMeans()), 3e-6);
        for (std::size_t c = 0; c < 3; ++c) {
            expectSpectrum(static_cast<int>(c), converted(matrix, c), 3e-6);
        }
    }
}

TEST_F(GeneralSeries, EastNorthUpVelocitiesStayForEastNorthUpMethods) {
    for (const int method : {1, 2}) {
        build({.method = method,
               .attitudeMode = OV_VELOCITY_ENU,
               .heading = 77.0F,
               .matrix = kSlantedHead});
        expectMeanVelocity(burstMeans(), 1e-6);
        for (int c = 0; c < 3; ++c) {
            expectSpectrum(c, burst(record_->velocitySeries[c]));
        }
    }
}

TEST_F(GeneralSeries, EarthToBeamAndBackReturnsTheVelocity) {
    const Choice choice{.method = 3,
                        .attitudeMode = OV_VELOCITY_ENU,
                        .pitch = 6.5F,
                        .roll = -4.25F,
                        .matrix = kSlantedHead};
    build(choice);
    // Mean of a series is half of the first place of its spectrum.
    const WideVector alongBeams{record_->seriesSpecRe[0][0] / 2.0L,
                                record_->seriesSpecRe[1][0] / 2.0L,
                                record_->seriesSpecRe[2][0] / 2.0L};
    const WideVector earth = product(beamToEarth(choice), alongBeams);
    const WideVector given = burstMeans();
    for (std::size_t c = 0; c < 3; ++c) {
        EXPECT_NEAR(static_cast<double>(earth[c]), static_cast<double>(given[c]), 1e-6) << c;
    }
}

TEST_F(GeneralSeries, MeansAreSummedInSinglePrecisionExceptForConvertedMethodTwo) {
    const auto meansOf = [this](int method, int mode) {
        build({.method = method, .attitudeMode = mode, .samples = ov::kMaxSamples});
        std::fill_n(record_->velocitySeries[0], ov::kMaxSamples, 0.1F);
        ov::buildGeneralSeries(*record_);
        return std::array<float, 3>{record_->meanVelocity[0], record_->meanVelocity[1],
                                    record_->meanVelocity[2]};
    };
    float sum = 0.0F;
    for (int i = 0; i < ov::kMaxSamples; ++i) {
        sum += 0.1F;
    }
    const float singleMean = sum / static_cast<float>(ov::kMaxSamples);
    ASSERT_GT(std::abs(singleMean - 0.1F), 1e-6F); // a difference that can be told apart
    EXPECT_EQ(meansOf(3, OV_VELOCITY_ENU)[0], singleMean);
    EXPECT_EQ(meansOf(1, OV_VELOCITY_ENU)[0], singleMean);
    EXPECT_EQ(meansOf(2, OV_VELOCITY_ENU)[0], singleMean);
    // At heading 0 the first component of an identity head is north.
    EXPECT_NEAR(meansOf(3, OV_VELOCITY_BEAM)[1], singleMean, 1e-7);
    EXPECT_NEAR(meansOf(2, OV_VELOCITY_BEAM)[1], 0.1F, 1e-7);
}

TEST_F(GeneralSeries,
       DirectionOffsetDropsTheHeadingWhereVelocitiesAreEarthOnesAndAlwaysForMethodTwo) {
    struct Row {
        int method;
        int attitudeMode;
        bool replaced;
    };
    constexpr Row kRows[] = {
        {1, OV_VELOCITY_ENU, true}, {1, OV_VELOCITY_XYZ, false}, {1, OV_VELOCITY_BEAM, false},
        {2, OV_VELOCITY_ENU, true}, {2, OV_VELOCITY_XYZ, true},  {2, OV_VELOCITY_BEAM, true},
        {3, OV_VELOCITY_ENU, true}, {3, OV_VELOCITY_XYZ, false}, {3, OV_VELOCITY_BEAM, false},
        {4, OV_VELOCITY_ENU, true}, {4, OV_VELOCITY_XYZ, false}, {4, OV_VELOCITY_BEAM, false},
    };
    for (const Row &row : kRows) {
        build({.method = row.method, .attitudeMode = row.attitudeMode});
        EXPECT_EQ(record_->directionOffset, row.replaced ? -3.7F : 222.0F)
            << "method " << row.method << " mode " << row.attitudeMode;
    }
}

// ---- Spectra and what must stay

TEST_F(GeneralSeries, PressureSpectrumGoesToTheLastSlot) {
    for (const int method : {1, 2, 3, 4}) {
        build({.method = method, .attitudeMode = OV_VELOCITY_ENU, .mask = 15});
        const int last = record_->seriesCount - 1;
        EXPECT_EQ(record_->pressureSeriesIndex, last);
        expectSpectrum(last, burst(record_->pressureSeries));
    }
}

TEST_F(GeneralSeries, FullBurstFillsEverySlotToItsEnd) {
    build({.method = 3, .mask = 7, .samples = ov::kMaxSamples});
    for (int slot = 0; slot < 3; ++slot) {
        expectSpectrum(slot, burst(record_->velocitySeries[slot]));
    }
    EXPECT_NE(record_->seriesSpecRe[2][ov::kSlotBins - 1], 0.0F);
}

TEST_F(GeneralSeries, SlotsWithoutATransformAreZeroWhateverAnEarlierBurstLeft) {
    build({.method = 3, .mask = 15, .samples = 128});
    build({.method = 4, .mask = 9, .samples = 64});
    expectTypes({kVelocity, kTrack, kPressure});
    const auto zero = [](const float *first, const float *last) {
        return std::all_of(first, last, [](float x) { return x == 0.0F; });
    };
    for (const auto *half : {&record_->seriesSpecRe, &record_->seriesSpecIm}) {
        for (const int slot : {1, 3, 4, 5}) {
            EXPECT_TRUE(zero((*half)[slot], (*half)[slot] + ov::kSlotBins)) << "slot " << slot;
        }
        for (const int slot : {0, 2}) {
            EXPECT_TRUE(zero((*half)[slot] + 32, (*half)[slot] + ov::kSlotBins)) << "slot " << slot;
        }
    }
    for (int k = 3; k < ov::kMaxSeries; ++k) {
        EXPECT_EQ(record_->seriesX[k], 0.0F);
        EXPECT_EQ(record_->beamDirZ[k], 0.0F);
    }
}

TEST_F(GeneralSeries, BurstSeriesStayBitForBitWhateverTheMethod) {
    for (const int method : {1, 2, 3, 4}) {
        for (const int mode : {OV_VELOCITY_ENU, OV_VELOCITY_XYZ, OV_VELOCITY_BEAM}) {
            build({.method = method,
                   .attitudeMode = mode,
                   .mask = 15,
                   .heading = 50.0F,
                   .matrix = kSlantedHead});
            std::mt19937 random(9); // the values build() gave
            std::uniform_real_distribution<float> value(-1.0F, 2.0F);
            for (const float *series : series_()) {
                for (int i = 0; i < record_->burstLength; ++i) {
                    ASSERT_EQ(series[i], value(random)) << "method " << method << " mode " << mode;
                }
            }
        }
    }
}

TEST_F(GeneralSeries, EmptyAndSingleSampleBurstsGiveFiniteListsWithoutSpectra) {
    for (const int samples : {0, 1}) {
        for (const int method : {1, 2, 3, 4}) {
            build({.method = method, .mask = 15, .matrix = kSlantedHead, .samples = samples});
            for (int c = 0; c < 3; ++c) {
                EXPECT_TRUE(std::isfinite(record_->meanVelocity[c]));
            }
            for (int slot = 0; slot < record_->seriesCount; ++slot) {
                EXPECT_EQ(record_->seriesSpecRe[slot][0], 0.0F);
                EXPECT_EQ(record_->seriesSpecIm[slot][0], 0.0F);
            }
        }
    }
}

TEST_F(GeneralSeries, AttitudeThatIsNoNumberShowsInTheDirectionsAndNowhereElse) {
    build({.method = 3, .pitch = std::numeric_limits<float>::quiet_NaN()});
    EXPECT_TRUE(std::isnan(record_->beamDirX[0]));
    expectTypes({kVelocity, kVelocity, kVelocity, kPressure});
    expectSpectrum(3, burst(record_->pressureSeries));
}

} // namespace
