// Linear wave theory: depth gains, the transfer matrix and the alignment of the series to one instant.
#include "spectral/transfer_functions.hpp"

#include <array>
#include <cmath>
#include <complex>
#include <iterator>

#include <gtest/gtest.h>

#include "support/record_ptr.hpp"

namespace {

using orvik::test::makeRecord;
using orvik::test::RecordPtr;

const float kFloor = static_cast<float>(std::exp(-8.0));

// One bin, one velocity series at `depth`, pressure sensor at `head`.
RecordPtr oneBin(float frequency, float k, float water, float depth, float head) {
    RecordPtr rec = makeRecord();
    rec->frequencies[0] = frequency;
    rec->waveNumbers[0] = k;
    rec->waterDepth = water;
    rec->seriesCount = 1;
    rec->seriesType[0] = 3;
    rec->seriesDepth[0] = depth;
    rec->instrumentDepth = head;
    rec->nDirections = 90;
    return rec;
}

struct Reference {
    double horizontal;
    double vertical;
    double pressure;
};

// The product of wavenumber and water depth is a single-precision one.
Reference reference(const OVRecord &rec) {
    const long double omega =
        2.0L * 3.14159265358979323846L * static_cast<long double>(rec.frequencies[0]);
    const long double k = rec.waveNumbers[0];
    const long double h = rec.waterDepth;
    const long double kh = rec.waveNumbers[0] * rec.waterDepth;
    const long double d = std::fabs(rec.seriesDepth[0]);
    const long double head = std::fabs(rec.instrumentDepth);
    return {static_cast<double>(std::cosh((h - d) * k) * omega / std::sinh(kh)),
            static_cast<double>(std::sinh((h - d) * k) * omega / std::sinh(kh)),
            static_cast<double>(std::cosh(k * (h - head)) / std::cosh(kh))};
}

TEST(TransferGains, FollowLinearTheoryWithKhInSinglePrecision) {
    const std::array<std::array<float, 5>, 4> cases{
        {{0.1F, 0.0491F, 13.0F, 4.5F, 12.0F},
         {0.05F, 0.0313F, 10.3F, 9.0F, 9.5F},
         {0.2F, 0.1633F, 27.0F, 8.0F, 11.0F},
         {0.3F, 0.3627F, 1900.7F, 3.0F, 10.0F}}}; // kh about 690
    for (const auto &[frequency, k, water, depth, head] : cases) {
        const RecordPtr rec = oneBin(frequency, k, water, depth, head);
        ov::linearTransferGains(*rec, 0);
        const Reference exact = reference(*rec);
        EXPECT_NEAR(rec->horizVelGain[0], exact.horizontal, 1e-7 * exact.horizontal);
        EXPECT_NEAR(rec->vertVelGain[0], exact.vertical, 1e-7 * exact.vertical);
        EXPECT_NEAR(rec->pressureGain[0], exact.pressure, 1e-7 * exact.pressure);
        const double omega = 2.0 * M_PI * static_cast<double>(frequency);
        const double attenuation = exact.vertical / omega;
        EXPECT_NEAR(rec->vertVelGainSq[0], attenuation * attenuation,
                    3e-7 * attenuation * attenuation);
    }
}

TEST(TransferGains, TheSignsOfTheDepthsDoNotMatter) {
    const RecordPtr up = oneBin(0.1F, 0.05F, 13.0F, -4.5F, -12.0F);
    const RecordPtr down = oneBin(0.1F, 0.05F, 13.0F, 4.5F, 12.0F);
    ov::linearTransferGains(*up, 0);
    ov::linearTransferGains(*down, 0);
    EXPECT_EQ(up->horizVelGain[0], down->horizVelGain[0]);
    EXPECT_EQ(up->vertVelGain[0], down->vertVelGain[0]);
    EXPECT_EQ(up->pressureGain[0], down->pressureGain[0]);
}

TEST(TransferGains, AtTheBedTheMotionIsHorizontal) {
    const RecordPtr rec = oneBin(0.1F, 0.05F, 10.0F, 10.0F, 10.0F);
    ov::linearTransferGains(*rec, 0);
    const double omega = 2.0 * M_PI * static_cast<double>(0.1F);
    const double sine = std::sinh(static_cast<double>(0.05F * 10.0F));
    EXPECT_FLOAT_EQ(rec->horizVelGain[0], static_cast<float>(omega / sine));
    EXPECT_EQ(rec->vertVelGain[0], 0.0F);
    EXPECT_EQ(rec->vertVelGainSq[0], 0.0F);
}

TEST(TransferGains, ShortWavesDriveHorizontalAndPressureGainToTheFloorButNotTheVerticalOne) {
    const RecordPtr rec = oneBin(0.5F, 1.006F, 60.0F, 50.0F, 50.0F);
    ov::linearTransferGains(*rec, 0);
    EXPECT_EQ(rec->horizVelGain[0], kFloor);
    EXPECT_EQ(rec->pressureGain[0], kFloor);
    EXPECT_GT(rec->vertVelGain[0], 0.0F);
    EXPECT_LT(rec->vertVelGain[0], kFloor);
}

TEST(TransferGains, JustAboveTheFloorAGainStands) {
    // exp(-kd) is the pressure gain in deep water: k d = 7.99 and 8.01 lie on either side.
    const RecordPtr above = oneBin(0.5F, 1.0F, 100.0F, 1.0F, 7.99F);
    const RecordPtr below = oneBin(0.5F, 1.0F, 100.0F, 1.0F, 8.01F);
    ov::linearTransferGains(*above, 0);
    ov::linearTransferGains(*below, 0);
    EXPECT_NEAR(above->pressureGain[0], std::exp(-7.99), 1e-9);
    EXPECT_GT(above->pressureGain[0], kFloor);
    EXPECT_EQ(below->pressureGain[0], kFloor);
}

TEST(TransferGains, BeyondTheRangeOfTheHyperbolicSineTheDeepWaterLimitHolds) {
    const RecordPtr rec = oneBin(0.9F, 3.26F, 4000.0F, 0.5F, 1.0F); // kh about 13000
    ov::linearTransferGains(*rec, 0);
    const double k = 3.26F;
    const double omega = 2.0 * M_PI * static_cast<double>(0.9F);
    EXPECT_FLOAT_EQ(rec->horizVelGain[0], static_cast<float>(omega * std::exp(-0.5 * k)));
    EXPECT_EQ(rec->vertVelGain[0], rec->horizVelGain[0]);
    EXPECT_FLOAT_EQ(rec->pressureGain[0], static_cast<float>(std::exp(-k)));
    rec->instrumentDepth = 3000.0F;
    ov::linearTransferGains(*rec, 0);
    EXPECT_EQ(rec->pressureGain[0], kFloor);
}

TEST(TransferGains, DoNotJumpWhereTheHyperbolicSineOverflows) {
    const RecordPtr below = oneBin(0.5F, 1.0F, 709.0F, 2.0F, 3.0F);
    const RecordPtr above = oneBin(0.5F, 1.0F, 712.0F, 2.0F, 3.0F);
    ov::linearTransferGains(*below, 0);
    ov::linearTransferGains(*above, 0);
    EXPECT_FLOAT_EQ(below->horizVelGain[0], above->horizVelGain[0]);
    EXPECT_FLOAT_EQ(below->vertVelGain[0], above->vertVelGain[0]);
    EXPECT_FLOAT_EQ(below->pressureGain[0], above->pressureGain[0]);
}

TEST(PressureAttenuation, IsTheGainWithoutTheFloor) {
    EXPECT_NEAR(ov::pressureAttenuation(1.0F, 100.0F, 50.0), std::exp(-50.0),
                1e-12 * std::exp(-50.0));
    EXPECT_EQ(ov::pressureAttenuation(0.0F, 100.0F, 50.0), 1.0);
}

// Three series of every kind around the instrument.
RecordPtr sixSeries() {
    RecordPtr rec = oneBin(0.12F, 0.0675F, 14.0F, 5.0F, 12.5F);
    rec->seriesCount = 6;
    const int types[] = {3, 1, 7, 3, 2, 5};
    for (int s = 0; s < 6; ++s) {
        rec->seriesType[s] = types[s];
        rec->seriesX[s] = 1.5F * static_cast<float>(s) - 2.0F;
        rec->seriesY[s] = 3.0F - 0.7F * static_cast<float>(s);
        rec->seriesDepth[s] = 4.0F + static_cast<float>(s);
        rec->beamDirX[s] = 0.3F;
        rec->beamDirY[s] = -0.2F * static_cast<float>(s);
        rec->beamDirZ[s] = 0.9F;
    }
    return rec;
}

TEST(TransferMatrix, FollowsPhaseAndOrbitOfEverySeriesKind) {
    const RecordPtr rec = sixSeries();
    rec->nDirections = 8;
    ov::buildTransferMatrix(*rec, ov::DirectionTable(*rec), 0);
    const double k = rec->waveNumbers[0];
    for (int m = 0; m < 8; ++m) {
        const double theta = M_PI * m / 4.0;
        for (const int s : {0, 1, 3}) {
            const double along = static_cast<double>(rec->seriesX[s]) * std::cos(theta) +
                                 static_cast<double>(rec->seriesY[s]) * std::sin(theta);
            std::complex<double> expected = std::polar(1.0, k * along);
            if (s != 1) {
                const double across = static_cast<double>(rec->beamDirX[s]) * std::cos(theta) +
                                      static_cast<double>(rec->beamDirY[s]) * std::sin(theta);
                expected *= std::complex<double>(static_cast<double>(rec->horizVelGain[s]) * across,
                                                 -static_cast<double>(rec->vertVelGain[s]) *
                                                     static_cast<double>(rec->beamDirZ[s]));
            }
            EXPECT_NEAR(rec->transferRe[s][m], expected.real(), 1e-14);
            EXPECT_NEAR(rec->transferIm[s][m], expected.imag(), 1e-14);
        }
    }
}

TEST(TransferMatrix, PressureHasItsGainWhateverItsPosition) {
    const RecordPtr rec = sixSeries();
    ov::buildTransferMatrix(*rec, ov::DirectionTable(*rec), 0);
    for (int m = 0; m < 90; ++m) {
        EXPECT_EQ(rec->transferRe[5][m], static_cast<double>(rec->pressureGain[0]));
        EXPECT_EQ(rec->transferIm[5][m], 0.0);
    }
}

TEST(TransferMatrix, AnUnknownSeriesKeepsTheValueOfTheSeriesBeforeIt) {
    const RecordPtr rec = sixSeries();
    ov::buildTransferMatrix(*rec, ov::DirectionTable(*rec), 0);
    for (int m = 0; m < 90; ++m) {
        EXPECT_EQ(rec->transferRe[2][m], rec->transferRe[1][m]);
        EXPECT_EQ(rec->transferIm[4][m], rec->transferIm[3][m]);
    }
}

TEST(TransferMatrix, AnUnknownFirstSeriesStartsAtZeroAndThenRepeatsTheLastOfTheDirectionBefore) {
    const RecordPtr rec = sixSeries();
    rec->seriesType[0] = 9;
    rec->seriesType[5] = 1;
    ov::buildTransferMatrix(*rec, ov::DirectionTable(*rec), 0);
    EXPECT_EQ(rec->transferRe[0][0], 0.0);
    EXPECT_EQ(rec->transferIm[0][0], 0.0);
    EXPECT_EQ(rec->transferRe[0][1], rec->transferRe[5][0]);
    EXPECT_EQ(rec->transferIm[0][89], rec->transferIm[5][88]);
}

TEST(TransferMatrix, CountsOfNoneAndOfTooManyDirectionsStayInside) {
    const RecordPtr rec = sixSeries();
    rec->nDirections = -1;
    ov::buildTransferMatrix(*rec, ov::DirectionTable(*rec), 0);
    EXPECT_EQ(rec->transferRe[0][0], 0.0);
    EXPECT_GT(rec->horizVelGain[0], 0.0F); // the gains come first
    rec->nDirections = 400;
    ov::buildTransferMatrix(*rec, ov::DirectionTable(*rec), 0);
    EXPECT_NE(rec->transferRe[1][89], 0.0);
}

// Angle [rad] by which place b of series j is turned.
double turnOf(OVRecord &rec, int j, int b) {
    for (int s = 0; s < rec.seriesCount; ++s) {
        rec.seriesSpecRe[s][b] = 1.0F;
        rec.seriesSpecIm[s][b] = 0.0F;
    }
    ov::alignSeriesPhases(rec);
    return std::atan2(static_cast<double>(rec.seriesSpecIm[j][b]),
                      static_cast<double>(rec.seriesSpecRe[j][b]));
}

RecordPtr burstOf(int type, int rate) {
    RecordPtr rec = makeRecord();
    rec->instrumentType = type;
    rec->samplingRate = rate;
    rec->samplingRateHz = 2.0F;
    rec->burstLength = 1024;
    rec->surfaceTimeOffset = 2500; // 0.25 s
    rec->seriesCount = 5;
    const int types[] = {3, 3, 3, 1, 5};
    std::copy(std::begin(types), std::end(types), rec->seriesType);
    return rec;
}

constexpr int kPlace = 100; // at 2 Hz and 1024 samples: 0.1953125 Hz
constexpr double kTurnPerSecond = 2.0 * M_PI * 100.0 * 2.0 / 1024.0;

TEST(PhaseAlignment, BeamsAreOneSixteenthOfASecondApartAndTheTrackComesAfterThem) {
    const RecordPtr rec = burstOf(3, 2);
    for (int j = 0; j < 3; ++j) {
        EXPECT_NEAR(turnOf(*rec, j, kPlace), 0.0625 * j * kTurnPerSecond, 1e-6);
    }
    EXPECT_NEAR(turnOf(*rec, 3, kPlace), 0.1875 * kTurnPerSecond, 1e-6);
}

TEST(PhaseAlignment, PressureLagsBySamplingRateAndInstrument) {
    const struct {
        int type, rate;
        double delay;
    } cases[] = {
        {3, 2, 0.17},   {3, 1, 0.42},  {3, 0, 0.587}, {7, 2, 0.17},   {0, 2, 0.32},
        {0, 1, 0.32},   {0, 0, 0.32},  {0, 9, 0.32},  {3, 4, 0.1875}, // the track's delay is carried over
        {1, 2, 0.1875}, {1, 0, 0.1875}};
    for (const auto &[type, rate, delay] : cases) {
        const RecordPtr rec = burstOf(type, rate);
        EXPECT_NEAR(turnOf(*rec, 4, kPlace), delay * kTurnPerSecond, 1e-6)
            << "type " << type << ", rate code " << rate;
    }
}

TEST(PhaseAlignment, AProfileInstrumentTurnsTrackAndPressureOnly) {
    const RecordPtr rec = burstOf(16, 2);
    rec->seriesSpecRe[1][7] = 0.3F;
    rec->seriesSpecIm[1][7] = -0.7F;
    ov::alignSeriesPhases(*rec);
    EXPECT_EQ(rec->seriesSpecRe[1][7], 0.3F);
    EXPECT_EQ(rec->seriesSpecIm[1][7], -0.7F);
    EXPECT_NEAR(turnOf(*rec, 3, kPlace), -0.25 * kTurnPerSecond, 1e-6);
    EXPECT_NEAR(turnOf(*rec, 4, kPlace), -0.25 * kTurnPerSecond, 1e-6);
}

TEST(PhaseAlignment, ASeriesOfUnknownKindTakesTheDelayBeforeIt) {
    const RecordPtr rec = burstOf(3, 2);
    rec->seriesType[0] = 8;
    rec->seriesType[2] = 8;
    EXPECT_NEAR(turnOf(*rec, 0, kPlace), 0.0, 1e-7);
    EXPECT_NEAR(turnOf(*rec, 2, kPlace), 0.0625 * kTurnPerSecond, 1e-6);
}

TEST(PhaseAlignment, ThePlaceCountsAsHarmonicAndTheModulusStays) {
    const RecordPtr rec = burstOf(3, 2);
    rec->seriesSpecRe[3][0] = 0.25F; // place 0 is never turned
    rec->seriesSpecRe[3][511] = 3.0F;
    rec->seriesSpecIm[3][511] = -4.0F;
    rec->seriesSpecRe[3][512] = 9.0F; // beyond the half: not part of the spectrum
    ov::alignSeriesPhases(*rec);
    EXPECT_EQ(rec->seriesSpecRe[3][0], 0.25F);
    EXPECT_NEAR(std::hypot(rec->seriesSpecRe[3][511], rec->seriesSpecIm[3][511]), 5.0, 1e-6);
    EXPECT_EQ(rec->seriesSpecRe[3][512], 9.0F);
    const double turn = 2.0 * M_PI * 511.0 * 2.0 / 1024.0 * 0.1875;
    const auto turned = std::complex<double>(3.0, -4.0) * std::polar(1.0, turn);
    EXPECT_NEAR(rec->seriesSpecRe[3][511], turned.real(), 2e-6);
    EXPECT_NEAR(rec->seriesSpecIm[3][511], turned.imag(), 2e-6);
}

TEST(PhaseAlignment, AnOddBurstAndAnOverlongOneStayInside) {
    const RecordPtr rec = burstOf(3, 2);
    rec->burstLength = 5;
    rec->seriesSpecRe[3][2] = 1.0F;
    ov::alignSeriesPhases(*rec);
    EXPECT_EQ(rec->seriesSpecRe[3][2], 1.0F);
    rec->burstLength = 40000;
    rec->seriesSpecRe[4][0] = 2.0F; // the slot behind series 3 stays its own
    ov::alignSeriesPhases(*rec);
    EXPECT_EQ(rec->seriesSpecRe[4][0], 2.0F);
}

} // namespace
