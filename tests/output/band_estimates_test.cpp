#include "output/band_estimates.hpp"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <cstring>
#include <limits>
#include <memory>
#include <random>
#include <vector>

#include <gtest/gtest.h>

#include "orvikbase/orvikbase.h"
#include "support/record_ptr.hpp"
#include "support/synthetic_burst.hpp"

namespace {

using namespace orvik::test;

constexpr float kMarker = -9.0F;
constexpr float kNoNumber = std::numeric_limits<float>::quiet_NaN();
constexpr float kLimitless = std::numeric_limits<float>::max();
constexpr double kCircle = 6.283185307179586476925;
constexpr int kBins = 40;

double widened(float value) { return static_cast<double>(value); }

// A processed record of method 1: 40 bins of 0.015625 Hz (exact in binary), the first at one step, no energy, waves
// towards 37 degrees with r = 0.5 in every bin.
class Band : public testing::Test {
protected:
    Band() {
        rec().processedFlag = 1;
        rec().activeMethod = 1;
        rec().nFrequencies = kBins;
        rec().nFrequenciesFine = kBins;
        rec().freqStep = kStep;
        rec().lastValidFreqIndex = OV_MAX_FREQUENCIES;
        for (int i = 0; i < kBins; ++i) {
            rec().frequencies[i] = static_cast<float>(kStep * (i + 1));
            rec().paramFrequencies[i] = rec().frequencies[i];
            setDirection(i, 0.3F, 0.4F);
        }
    }

    OVRecord &rec() const { return *record_; }
    float frequency(int i) const { return rec().frequencies[i]; }
    void setDirection(int i, float east, float north) const {
        rec().fourierA1[i] = east;
        rec().fourierB1[i] = north;
    }
    void setEnergy(int from, int to, float value) const {
        std::fill(rec().spectraUsed + from, rec().spectraUsed + to, value);
    }
    OVBandEstimate estimate(float low, float high) const {
        OVBandEstimate band;
        std::memset(static_cast<void *>(&band), 0x5A, sizeof band);
        band.fLow = low;
        band.fHigh = high;
        EXPECT_EQ(OVGetBandEst_ptr(&rec(), &band), 0);
        EXPECT_EQ(+band.fLow, low);
        EXPECT_EQ(+band.fHigh, high);
        EXPECT_EQ(+band.bandStatus, 0);
        return band;
    }
    OVBandEstimate whole() const { return estimate(0.0F, kLimitless); }
    // How many bins of unit energy the band takes in.
    int binsWithin(float low, float high) const {
        const double height = widened(estimate(low, high).bandHm0);
        return static_cast<int>(std::lround(height * height / 16.0 / kStep));
    }
    // Method 3 with sensors so far apart that waves of bin `limit` and shorter are aliased.
    void aliasFrom(int limit) const {
        rec().activeMethod = 3;
        rec().nMlmSeries = 2;
        rec().seriesX[1] = 4.0F;
        for (int i = 0; i < kBins; ++i) {
            rec().waveNumbers[i] = i < limit ? 0.5F : 1.0F; // half a wavelength: 6.3 m, 3.1 m
        }
    }

    static constexpr double kStep = 0.015625;

private:
    RecordPtr record_ = makeRecord();
};

void expectMissing(const OVBandEstimate &band) {
    const float values[] = {band.bandHm0,           band.bandTm02,       band.bandZero,
                            band.bandPeakDirection, band.bandPeakSpread, band.bandMeanDirection,
                            band.bandMeanSpread};
    for (const float value : values) {
        EXPECT_EQ(value, kMarker);
    }
}

void expectNoDirections(const OVBandEstimate &band) {
    EXPECT_EQ(+band.bandPeakDirection, kMarker);
    EXPECT_EQ(+band.bandMeanDirection, kMarker);
    EXPECT_EQ(+band.bandPeakSpread, kMarker);
    EXPECT_EQ(+band.bandMeanSpread, kMarker);
}

// ---- Without results

TEST_F(Band, WithoutAProcessedBurstEverythingIsMissing) {
    setEnergy(0, kBins, 1.0F);
    rec().processedFlag = 0;
    rec().spectrumSource = OV_SOURCE_SURFACE_TRACK;
    OVBandEstimate band;
    std::memset(static_cast<void *>(&band), 0x5A, sizeof band);
    band.fLow = 0.1F;
    band.fHigh = 0.3F;
    EXPECT_EQ(OVGetBandEst_ptr(&rec(), &band), 1);
    expectMissing(band);
    EXPECT_EQ(+band.bandStatus, 32);
    EXPECT_EQ(+band.bandSpectrumSource, 0);
    EXPECT_EQ(+band.fLow, 0.1F);
    EXPECT_EQ(+band.fHigh, 0.3F);
}

TEST_F(Band, WithoutARecordTheStructureStays) {
    OVBandEstimate band;
    std::memset(static_cast<void *>(&band), 0x5A, sizeof band);
    const OVBandEstimate before = band;
    EXPECT_EQ(OVGetBandEst_ptr(nullptr, &band), -1);
    EXPECT_EQ(std::memcmp(&band, &before, sizeof band), 0);
    EXPECT_EQ(OVGetBandEst_ptr(&rec(), nullptr), -1);
}

TEST_F(Band, ReportsTheSourceOfTheSpectrum) {
    for (const int source : {OV_SOURCE_PRESSURE, OV_SOURCE_VELOCITY, OV_SOURCE_SURFACE_TRACK}) {
        rec().spectrumSource = source;
        EXPECT_EQ(+whole().bandSpectrumSource, source);
        EXPECT_EQ(+whole().bandZero, 0.0F);
    }
}

// ---- Limits

TEST_F(Band, LowerLimitIsIncluded) {
    setEnergy(0, kBins, 1.0F);
    const float f = frequency(10);
    EXPECT_EQ(binsWithin(std::nextafter(f, 0.0F), kLimitless), 30);
    EXPECT_EQ(binsWithin(f, kLimitless), 30);
    EXPECT_EQ(binsWithin(std::nextafter(f, 1.0F), kLimitless), 29);
}

TEST_F(Band, LowerLimitBelowTheAxisOrWithoutABinStartsAtTheFirstBin) {
    setEnergy(0, kBins, 1.0F);
    for (const float low : {-1.0F, 0.0F, 10.0F, kNoNumber}) {
        OVBandEstimate band{};
        band.fLow = low;
        band.fHigh = kLimitless;
        ASSERT_EQ(OVGetBandEst_ptr(&rec(), &band), 0);
        EXPECT_NEAR(widened(band.bandHm0), 4.0 * std::sqrt(kBins * kStep), 1e-5) << low;
    }
}

TEST_F(Band, LastBinOfTheFineAxisCannotBeTheLowerLimit) {
    setEnergy(0, kBins, 1.0F);
    EXPECT_EQ(binsWithin(frequency(38), kLimitless), 2);
    EXPECT_EQ(binsWithin(frequency(39), kLimitless), kBins);
}

// The bin whose frequency is less than a third of a step below the limit is outside. With a step of 3/8 the third is
// exact.
TEST_F(Band, UpperLimitLeavesOutBinsLessThanAThirdOfAStepBelow) {
    rec().freqStep = 0.375;
    for (int i = 0; i < kBins; ++i) {
        rec().paramFrequencies[i] = 0.375F * static_cast<float>(i + 1);
    }
    setEnergy(0, kBins, 1.0F);
    const auto bins = [this](float high) {
        const double height = widened(estimate(0.0F, high).bandHm0);
        return static_cast<int>(std::lround(height * height / 16.0 / 0.375));
    };
    const float limit = rec().paramFrequencies[10] + 0.125F;
    EXPECT_EQ(bins(std::nextafter(limit, 0.0F)), 10);
    EXPECT_EQ(bins(limit), 11);
    EXPECT_EQ(bins(std::nextafter(limit, 100.0F)), 11);
}

TEST_F(Band, UpperLimitBelowTheAxisKeepsTheFirstBin) {
    setEnergy(0, kBins, 1.0F);
    EXPECT_EQ(binsWithin(0.0F, 0.0F), 1);
    EXPECT_EQ(binsWithin(0.0F, -std::numeric_limits<float>::infinity()), 1);
}

// With a surface track the parameters' axis is the fine one; a limit above it ends at the length of the main axis.
TEST_F(Band, UpperLimitAboveAFineAxisEndsAtTheCountOfTheMainOne) {
    rec().nFrequenciesFine = 60;
    for (int i = 0; i < 60; ++i) {
        rec().paramFrequencies[i] = static_cast<float>(kStep * (i + 1));
    }
    setEnergy(0, 60, 1.0F);
    EXPECT_EQ(binsWithin(0.0F, kLimitless), kBins);
    EXPECT_EQ(binsWithin(0.0F, rec().paramFrequencies[55] + 0.006F), 56);
    EXPECT_EQ(binsWithin(rec().paramFrequencies[50], rec().paramFrequencies[55] + 0.006F), 6);
}

TEST_F(Band, LimitsTheWrongWayRoundHoldNothing) {
    setEnergy(0, kBins, 1.0F);
    const OVBandEstimate band = estimate(frequency(30), frequency(10));
    EXPECT_EQ(+band.bandHm0, 0.0F);
    EXPECT_EQ(+band.bandTm02, kMarker);
    expectNoDirections(band);
}

TEST_F(Band, BinCountsOutsideTheAxesAreSafe) {
    for (const int count :
         {std::numeric_limits<int>::min(), -1, 0, 1, 201, 401, std::numeric_limits<int>::max()}) {
        for (const int fine : {count, 40}) {
            for (const int method : {1, 3}) {
                rec().nFrequencies = count;
                rec().nFrequenciesFine = fine;
                rec().activeMethod = method;
                setEnergy(0, OV_MAX_FREQUENCIES_FINE, 1.0F);
                const OVBandEstimate band = whole();
                const double bins = std::clamp(count, 0, OV_MAX_FREQUENCIES);
                EXPECT_NEAR(widened(band.bandHm0), 4.0 * std::sqrt(bins * kStep), 1e-4);
            }
        }
    }
}

// ---- Height and period

TEST_F(Band, HeightAndPeriodOfOneBin) {
    rec().spectraUsed[12] = 2.0F;
    const OVBandEstimate band = whole();
    EXPECT_FLOAT_EQ(+band.bandHm0, static_cast<float>(4.0 * std::sqrt(2.0 * kStep)));
    EXPECT_FLOAT_EQ(+band.bandTm02, 1.0F / frequency(12));
}

// Exact: sums, the products in them and the quotient of the moments are single precision.
TEST_F(Band, MomentsAreSummedInSinglePrecision) {
    std::mt19937 random(17);
    std::uniform_real_distribution<float> unit(0.0F, 1.0F);
    int unlikeDouble = 0;
    rec().freqStep = 0.01;
    const auto step = static_cast<float>(0.01);
    for (int draw = 0; draw < 200; ++draw) {
        float m0 = 0.0F;
        float m2 = 0.0F;
        double wide0 = 0.0;
        for (int i = 0; i < kBins; ++i) {
            const float s = unit(random);
            const float f = rec().paramFrequencies[i];
            rec().spectraUsed[i] = s;
            m0 = m0 + s * step;
            m2 = m2 + ((s * f) * f) * step;
            wide0 += widened(s) * 0.01;
        }
        const OVBandEstimate band = whole();
        ASSERT_EQ(+band.bandHm0, static_cast<float>(4.0 * std::sqrt(widened(m0))));
        ASSERT_EQ(+band.bandTm02, static_cast<float>(std::sqrt(widened(m0 / m2))));
        unlikeDouble += +band.bandHm0 != static_cast<float>(4.0 * std::sqrt(wide0)) ? 1 : 0;
    }
    EXPECT_GT(unlikeDouble, 0);
}

TEST_F(Band, NeighbouringBandsShareTheEnergy) {
    for (int i = 0; i < kBins; ++i) {
        rec().spectraUsed[i] = static_cast<float>(1 + i % 7);
    }
    // A limit half way between two bins leaves no bin out and takes none twice.
    const float limit = 0.5F * (frequency(15) + frequency(16));
    const double low = widened(estimate(0.0F, limit).bandHm0);
    const double high = widened(estimate(limit, kLimitless).bandHm0);
    EXPECT_NEAR(std::hypot(low, high), widened(whole().bandHm0), 1e-5);
}

TEST_F(Band, WithoutEnergyThereIsNoPeriodAndNoDirection) {
    const OVBandEstimate band = whole();
    EXPECT_EQ(+band.bandHm0, 0.0F);
    EXPECT_EQ(+band.bandTm02, kMarker);
    EXPECT_EQ(+band.bandZero, 0.0F);
    expectNoDirections(band);
}

TEST_F(Band, NegativeEnergyHasNoPeriodAndNoDirection) {
    setEnergy(0, kBins, -1.0F);
    const OVBandEstimate band = whole();
    EXPECT_EQ(+band.bandTm02, kMarker);
    expectNoDirections(band);
}

TEST_F(Band, EnergyThatIsNoNumberHasNoPeriodAndNoDirection) {
    setEnergy(0, kBins, 1.0F);
    rec().spectraUsed[5] = kNoNumber;
    const OVBandEstimate band = whole();
    EXPECT_EQ(+band.bandTm02, kMarker);
    expectNoDirections(band);
    const OVBandEstimate above = estimate(frequency(6), kLimitless);
    EXPECT_GT(+above.bandTm02, 0.0F);
    EXPECT_GT(+above.bandMeanDirection, 0.0F);
}

// ---- Mean direction and spread

TEST_F(Band, MeanDirectionIsTheBearingOfEastAndNorth) {
    setEnergy(0, kBins, 1.0F);
    struct Row {
        float east, north;
        double direction;
    };
    constexpr Row kRows[] = {{0.0F, 0.5F, 0.0},    {0.5F, 0.0F, 90.0},   {0.0F, -0.5F, 180.0},
                             {-0.5F, 0.0F, 270.0}, {0.3F, 0.3F, 45.0},   {-0.3F, 0.3F, 315.0},
                             {0.3F, -0.3F, 135.0}, {-0.3F, -0.3F, 225.0}};
    for (const Row &row : kRows) {
        for (int i = 0; i < kBins; ++i) {
            setDirection(i, row.east, row.north);
        }
        rec().reverseDirections = 0;
        EXPECT_NEAR(widened(whole().bandMeanDirection), row.direction, 1e-5);
        rec().reverseDirections = 1;
        const double turned = row.direction < 180.0 ? row.direction + 180.0 : row.direction - 180.0;
        EXPECT_NEAR(widened(whole().bandMeanDirection), turned, 1e-5);
    }
}

// Energy weighs, and so does the concentration of each bin: the longer vector pulls harder.
TEST_F(Band, MeanDirectionWeighsEnergyAndConcentration) {
    rec().spectraUsed[3] = 2.0F;
    rec().spectraUsed[4] = 1.0F;
    setDirection(3, 0.9F, 0.0F);
    setDirection(4, 0.0F, 0.3F);
    const OVBandEstimate band = whole();
    EXPECT_NEAR(widened(band.bandMeanDirection), 80.537677792, 1e-4); // 90 - atan2(0.3, 1.8)
    const double length = std::hypot(0.6, 0.1);
    EXPECT_NEAR(widened(band.bandMeanSpread), std::sqrt(2.0 * (1.0 - length)) * 360.0 / kCircle,
                1e-4);
}

TEST_F(Band, ContradictoryCoefficientsHaveADirectionButNoMeanSpread) {
    setEnergy(0, kBins, 1.0F);
    for (int i = 0; i < kBins; ++i) {
        setDirection(i, 2.0F, 0.0F);
    }
    const OVBandEstimate band = whole();
    EXPECT_NEAR(widened(band.bandMeanDirection), 90.0, 1e-5);
    EXPECT_EQ(+band.bandMeanSpread, kMarker);
    EXPECT_EQ(+band.bandPeakSpread, 0.0F);
}

TEST_F(Band, Method1SumsWithinTheBandAndLeavesTheLimitAlone) {
    setEnergy(0, kBins, 1.0F);
    rec().lastValidFreqIndex = 7;
    for (int i = 0; i < kBins; ++i) {
        setDirection(i, i < 20 ? 0.5F : 0.0F, i < 20 ? 0.0F : 0.5F);
    }
    EXPECT_NEAR(widened(estimate(0.0F, frequency(19) + 0.006F).bandMeanDirection), 90.0, 1e-4);
    EXPECT_NEAR(widened(estimate(frequency(20), kLimitless).bandMeanDirection), 0.0, 1e-4);
    EXPECT_EQ(rec().lastValidFreqIndex, 7);
}

// With methods that alias, the directional sums run from the band's lower limit to the aliasing limit, beyond the band.
TEST_F(Band, DirectionalSumsRunOnToTheAliasingLimit) {
    setEnergy(0, kBins, 1.0F);
    for (int i = 0; i < kBins; ++i) {
        setDirection(i, i < 10 ? 0.5F : 0.0F, i < 10 ? 0.0F : 0.5F);
    }
    for (const int method : {2, 3, 4}) {
        aliasFrom(20);
        rec().activeMethod = method;
        rec().lastValidFreqIndex = 3;
        const OVBandEstimate band = estimate(0.0F, frequency(4) + 0.006F); // five bins
        EXPECT_NEAR(widened(band.bandHm0), 4.0 * std::sqrt(5 * kStep), 1e-5);
        EXPECT_NEAR(widened(band.bandMeanDirection), 45.0, 1e-4) << "10 bins east, 10 north";
        EXPECT_EQ(rec().lastValidFreqIndex, 20);
        EXPECT_EQ(rec().aliasingFrequency, frequency(20));
    }
}

// Without an aliased bin the sums take in 200 bins: energy above the main axis has no direction and widens the spread.
TEST_F(Band, WithoutAnAliasedBinTheSumsPassTheMainAxis) {
    aliasFrom(kBins);
    rec().nFrequenciesFine = 300;
    for (int i = 0; i < 300; ++i) {
        rec().paramFrequencies[i] = static_cast<float>(kStep * (i + 1));
    }
    setEnergy(0, 300, 1.0F);
    const OVBandEstimate band = whole();
    EXPECT_EQ(rec().lastValidFreqIndex, 200);
    const double length = 0.5 * kBins / 200.0;
    EXPECT_NEAR(widened(band.bandMeanSpread), std::sqrt(2.0 * (1.0 - length)) * 360.0 / kCircle,
                1e-3);
}

TEST_F(Band, ABandAboveTheAliasingLimitHasHeightAndPeriodButNoDirections) {
    aliasFrom(20);
    setEnergy(0, kBins, 1.0F);
    const OVBandEstimate below = estimate(frequency(19), kLimitless);
    EXPECT_GT(+below.bandMeanDirection, 0.0F);
    for (const int bin : {20, 30}) {
        const OVBandEstimate band = estimate(frequency(bin), kLimitless);
        EXPECT_NEAR(widened(band.bandHm0), 4.0 * std::sqrt((kBins - bin) * kStep), 1e-5);
        EXPECT_GT(+band.bandTm02, 0.0F);
        expectNoDirections(band);
    }
}

TEST_F(Band, MethodsThatDoNotAliasKeepTheirLimitButRespectIt) {
    setEnergy(0, kBins, 1.0F);
    rec().lastValidFreqIndex = 20;
    rec().activeMethod = 5;
    expectNoDirections(estimate(frequency(20), kLimitless));
    EXPECT_GT(+estimate(frequency(19), kLimitless).bandMeanDirection, 0.0F);
    EXPECT_EQ(rec().lastValidFreqIndex, 20);
    rec().activeMethod = 1; // has no limit
    EXPECT_GT(+estimate(frequency(20), kLimitless).bandMeanDirection, 0.0F);
}

// The period belongs to the band's own energy, the directions to that of the sums, which reach further.
TEST_F(Band, ABandWithoutEnergyBelowTheLimitHasDirectionsButNoPeriod) {
    aliasFrom(20);
    setEnergy(10, 20, 1.0F);
    const OVBandEstimate band = estimate(0.0F, frequency(4) + 0.006F);
    EXPECT_EQ(+band.bandHm0, 0.0F);
    EXPECT_EQ(+band.bandTm02, kMarker);
    EXPECT_NEAR(widened(band.bandMeanDirection), 36.869897646, 1e-4);
}

TEST_F(Band, MeanCoefficientsThatAreNoNumbersAreMissing) {
    setEnergy(0, kBins, 1.0F);
    rec().spectraUsed[20] = 3.0F;
    rec().fourierA1[5] = kNoNumber;
    const OVBandEstimate band = whole();
    EXPECT_EQ(+band.bandMeanDirection, kMarker);
    EXPECT_EQ(+band.bandMeanSpread, kMarker);
    EXPECT_NEAR(widened(band.bandPeakDirection), 36.869897646, 1e-4) << "the peak is elsewhere";
}

// ---- Peak

class BandPeak : public Band {
protected:
    // Energy around bin j; its direction and those of its neighbours.
    void setPeak(int j, float before, float at, float after) const {
        rec().spectraUsed[j - 1] = before;
        rec().spectraUsed[j] = at;
        rec().spectraUsed[j + 1] = after;
    }
    // Vertex of the parabola through the peak's three points: for equal steps s of frequency
    // f + s/2 (Sm - Sp) / (Sm - 2 S + Sp).
    static double offset(double before, double at, double after) {
        return 0.5 * kStep * (before - after) / (before - 2.0 * at + after);
    }
};

TEST_F(BandPeak, ASymmetricPeakHasTheDirectionOfItsBin) {
    setPeak(10, 1.0F, 2.0F, 1.0F);
    setDirection(10, 0.0F, -0.5F);
    const OVBandEstimate band = whole();
    EXPECT_NEAR(widened(band.bandPeakDirection), 180.0, 1e-3);
    EXPECT_NEAR(widened(band.bandPeakSpread), 57.295779513, 1e-3);
}

// Linear in the coefficients, with the size of their slope and never its sign: a falling coefficient rises too.
TEST_F(BandPeak, CoefficientsMoveUpTowardsThePeakWhateverTheirSlope) {
    struct Row {
        float before, after;
    };
    for (const Row &row : {Row{1.0F, 1.8F}, Row{1.8F, 1.0F}}) {
        setPeak(10, row.before, 2.0F, row.after);
        const int neighbour = row.after > row.before ? 11 : 9;
        const int other = 20 - neighbour;
        for (const float east : {0.1F, 0.7F}) {
            setDirection(10, 0.4F, 0.2F);
            setDirection(neighbour, east, 0.3F);
            setDirection(other, 0.9F, -0.9F); // not used
            const double share = offset(widened(row.before), 2.0, widened(row.after)) / kStep;
            const double a = 0.3 * share + 0.4;
            const double b = 0.1 * share + 0.2;
            const OVBandEstimate band = whole();
            const double direction = std::atan2(a, b) * 360.0 / kCircle;
            EXPECT_NEAR(widened(band.bandPeakDirection), direction, 2e-4);
            EXPECT_NEAR(widened(band.bandPeakSpread),
                        std::sqrt(2.0 * (1.0 - std::hypot(a, b))) * 360.0 / kCircle, 2e-4);
        }
    }
}

// ulp: many peaks against the same steps in double precision, for the vertex alone in single precision.
TEST_F(BandPeak, ManyPeaks) {
    std::mt19937 random(23);
    std::uniform_real_distribution<float> unit(-0.6F, 0.6F);
    for (int draw = 0; draw < 5000; ++draw) {
        const float s[] = {1.0F + unit(random), 2.0F, 1.0F + unit(random)};
        setPeak(10, s[0], s[1], s[2]);
        for (int i = 9; i <= 11; ++i) {
            setDirection(i, unit(random), unit(random));
        }
        rec().reverseDirections = static_cast<std::uint8_t>(draw % 2);
        const float f0 = frequency(9);
        const float f1 = frequency(10);
        const float f2 = frequency(11);
        const float d1 = (s[1] - s[0]) / (f1 - f0);
        const float d2 = (s[2] - s[1]) / (f2 - f1);
        const float c = (d1 - d2) / (f0 - f2);
        const float fp = (d1 - (f1 + f0) * c) / (-2.0F * c);
        const int q = fp > f1 ? 11 : 9;
        const double share = (widened(fp) - widened(f1)) / kStep;
        const auto at = [&](const float *series) {
            return std::abs(widened(series[10]) - widened(series[q])) * share + widened(series[10]);
        };
        const double a = at(rec().fourierA1);
        const double b = at(rec().fourierB1);
        double direction = std::atan2(a, b) * 360.0 / kCircle - (draw % 2 != 0 ? 180.0 : 0.0);
        direction += direction < 0.0 ? 360.0 : 0.0;
        const double room = std::max(1.0 - std::hypot(a, b), 0.0);
        const OVBandEstimate band = whole();
        ASSERT_NEAR(widened(band.bandPeakDirection), direction, 3.1e-5);
        ASSERT_NEAR(widened(band.bandPeakSpread), std::sqrt(2.0 * room) * 360.0 / kCircle, 8e-6);
    }
}

TEST_F(BandPeak, ReverseTurnsThePeakDirection) {
    rec().reverseDirections = 1;
    setPeak(10, 1.0F, 2.0F, 1.0F);
    setDirection(10, 0.5F, 0.0F);
    EXPECT_NEAR(widened(whole().bandPeakDirection), 270.0, 1e-3);
    setDirection(10, -0.5F, 0.0F);
    EXPECT_NEAR(widened(whole().bandPeakDirection), 90.0, 1e-3);
}

TEST_F(BandPeak, TheFirstOfEqualMaximaWins) {
    rec().spectraUsed[10] = 2.0F;
    rec().spectraUsed[20] = 2.0F;
    setDirection(10, 0.5F, 0.0F);
    setDirection(20, 0.0F, -0.5F);
    EXPECT_NEAR(widened(whole().bandPeakDirection), 90.0, 1e-3);
    rec().spectraUsed[20] = std::nextafter(2.0F, 3.0F);
    EXPECT_NEAR(widened(whole().bandPeakDirection), 180.0, 1e-3);
}

// The bin at the upper limit is no part of the sums, but the peak may stand there.
TEST_F(BandPeak, TheUpperLimitsBinIsSearchedToo) {
    setEnergy(0, kBins, 1.0F);
    rec().spectraUsed[15] = 5.0F;
    rec().spectraUsed[16] = 50.0F;
    setDirection(15, 0.0F, -0.5F);
    setDirection(16, -0.5F, 0.0F);
    const OVBandEstimate band = estimate(0.0F, frequency(14) + 0.006F); // the limit's bin is 15
    EXPECT_NEAR(widened(band.bandHm0), 4.0 * std::sqrt(15 * kStep), 1e-5);
    EXPECT_NEAR(widened(band.bandPeakDirection), 180.0, 1e-4);
}

// At either end of the band the bin itself is the peak, without a parabola.
TEST_F(BandPeak, APeakAtTheLowerLimitIsNotInterpolated) {
    setPeak(10, 9.0F, 5.0F, 4.0F);
    setDirection(10, 0.4F, 0.0F);
    setDirection(9, 0.0F, 0.4F);
    setDirection(11, 0.0F, 0.4F);
    const OVBandEstimate band = estimate(frequency(10), kLimitless);
    EXPECT_EQ(+band.bandPeakDirection, 90.0F);
}

TEST_F(BandPeak, WithoutCoefficientsTheDirectionIs0AndTheSpreadMissing) {
    setPeak(10, 1.0F, 2.0F, 1.0F);
    for (int i = 9; i <= 11; ++i) {
        setDirection(i, 0.0F, 0.25F); // equal: no slope to interpolate
    }
    const OVBandEstimate band = whole();
    EXPECT_EQ(+band.bandPeakDirection, 0.0F);
    EXPECT_EQ(+band.bandPeakSpread, kMarker);
    rec().fourierB1[9] = 0.125F;
    rec().fourierB1[11] = 0.125F;
    EXPECT_GT(+whole().bandPeakSpread, 0.0F) << "different north parts count";
    setDirection(9, 0.25F, 0.25F);
    setDirection(10, 0.25F, 0.25F);
    setDirection(11, 0.25F, 0.25F);
    EXPECT_NEAR(widened(whole().bandPeakDirection), 45.0, 1e-4) << "and so does an east part";
}

TEST_F(BandPeak, CoefficientsThatAreNoNumbersAreMissing) {
    setPeak(10, 1.0F, 2.0F, 1.0F);
    setDirection(10, kNoNumber, 0.25F);
    const OVBandEstimate band = whole();
    EXPECT_EQ(+band.bandPeakDirection, kMarker);
    EXPECT_EQ(+band.bandPeakSpread, kMarker);
}

TEST_F(BandPeak, BeyondTheMainAxisThePeakHasNoDirection) {
    rec().nFrequenciesFine = 80;
    for (int i = 0; i < 80; ++i) {
        rec().paramFrequencies[i] = static_cast<float>(kStep * (i + 1));
    }
    setEnergy(0, 80, 1.0F);
    for (const int peak : {kBins, 60}) {
        setEnergy(0, 80, 1.0F);
        rec().spectraUsed[peak] = 9.0F;
        const OVBandEstimate band = estimate(0.0F, rec().paramFrequencies[75]);
        EXPECT_EQ(+band.bandPeakDirection, kMarker);
        EXPECT_EQ(+band.bandPeakSpread, kMarker);
        EXPECT_EQ(+band.bandZero, 0.0F);
        EXPECT_NEAR(widened(band.bandMeanDirection), 36.869897646, 1e-4);
    }
}

// Where the axis ends, the bin's own coefficients stand.
TEST_F(BandPeak, WithoutANeighbourOnTheAxisTheBinsOwnCoefficientsStand) {
    rec().spectraUsed[0] = 5.0F;
    setDirection(0, 0.4F, -0.4F);
    EXPECT_NEAR(widened(whole().bandPeakDirection), 135.0, 1e-5);
    // The last bin, its peak above it on a fine axis.
    setEnergy(0, kBins, 0.0F);
    rec().nFrequenciesFine = kBins + 2;
    for (int i = kBins; i < kBins + 2; ++i) {
        rec().paramFrequencies[i] = static_cast<float>(kStep * (i + 1));
    }
    setPeak(kBins - 1, 1.0F, 2.0F, 1.5F);
    setDirection(kBins - 1, -0.4F, -0.4F);
    setDirection(kBins, 0.9F, 0.9F);
    const OVBandEstimate band = estimate(0.0F, rec().paramFrequencies[kBins]);
    EXPECT_NEAR(widened(band.bandPeakDirection), 225.0, 1e-5);
    EXPECT_NEAR(widened(band.bandPeakSpread),
                std::sqrt(2.0 * (1.0 - std::hypot(0.4, 0.4))) * 360.0 / kCircle, 1e-4);
}

// ---- On whole bursts

class BandOfABurst : public testing::TestWithParam<int> {
protected:
    void SetUp() override {
        const SyntheticBurst burst = makeSyntheticBurst({.method = GetParam(), .nSamples = 1024});
        openBurst(record_.get(), burst);
        sendSamples(record_.get(), burst);
        const auto output = std::make_unique<OVPreProcessOutput>();
        ASSERT_EQ(OVPreProcess_ptr(record_.get(), 0, output.get()), 0);
        ASSERT_TRUE(OVProcess_ptr(record_.get()));
    }
    OVBandEstimate estimate(float low, float high) const {
        OVBandEstimate band{};
        band.fLow = low;
        band.fHigh = high;
        EXPECT_EQ(OVGetBandEst_ptr(record_.get(), &band), 0);
        return band;
    }
    RecordPtr record_ = makeRecord();
};

// Physical: a limit just above the axis in use gives the burst's own height and period (but for the axis' last bin,
// which a surface track's band cannot hold, and single-precision sums), and its direction to a few degrees.
TEST_P(BandOfABurst, TheWholeAxisGivesTheBurstsOwnParameters) {
    const float *const w = record_->waveParameters;
    const bool track = GetParam() == 2 || GetParam() == 4;
    const OVBandEstimate band =
        estimate(0.0F, track ? static_cast<float>(record_->fineFreqMax) : kLimitless);
    EXPECT_NEAR(widened(band.bandHm0), widened(w[OV_HM0]), track ? 2e-3 : 2e-5);
    EXPECT_NEAR(widened(band.bandTm02), widened(w[OV_TM02]), track ? 2e-2 : 2e-5);
    EXPECT_NEAR(widened(band.bandMeanDirection), widened(w[OV_MEAN_DIRECTION]), 8.0);
    EXPECT_NEAR(widened(band.bandPeakDirection), widened(w[OV_PEAK_DIRECTION]), 20.0);
    EXPECT_EQ(+band.bandSpectrumSource, record_->spectrumSource);
}

// Exact: but for the aliasing limit nothing in the record changes, and asking again gives the same.
TEST_P(BandOfABurst, LeavesTheRecordAndAnswersTheSameAgain) {
    const auto *const bytes = reinterpret_cast<const unsigned char *>(record_.get());
    const std::size_t results = offsetof(OVRecord, pressureSeries);
    const std::vector<unsigned char> before(bytes, bytes + results);
    const OVBandEstimate first = estimate(0.05F, 0.2F);
    const OVBandEstimate again = estimate(0.05F, 0.2F);
    EXPECT_EQ(std::memcmp(&first, &again, sizeof first), 0);
    EXPECT_EQ(std::memcmp(bytes, before.data(), results), 0)
        << "the limit found again is the one that processing found";
}

INSTANTIATE_TEST_SUITE_P(BandEstimates, BandOfABurst, testing::Values(1, 2, 3, 4));

} // namespace
