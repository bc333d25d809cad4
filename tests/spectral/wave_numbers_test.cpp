// Wavenumbers against the dispersion relation solved by bisection in extended precision.
#include "spectral/wave_numbers.hpp"

#include <algorithm>
#include <cmath>
#include <iterator>
#include <limits>

#include <gtest/gtest.h>

#include "support/record_ptr.hpp"

namespace {

using orvik::test::makeRecord;
using orvik::test::RecordPtr;

constexpr long double kTwoPiWide = 6.283185307179586476925286766559L;
constexpr long double kGravityWide = 9.81L;

long double residual(long double k, long double omega, long double depth, long double current) {
    const long double relative = omega - k * current;
    return relative * relative - kGravityWide * k * std::tanh(k * depth);
}

// Least positive root: the wave that exists without the current. Scans, then halves.
long double dispersionRoot(float frequency, float depth, float current) {
    const long double omega = kTwoPiWide * static_cast<long double>(frequency);
    const long double h = std::fabs(static_cast<long double>(depth));
    const long double u = current;
    const long double scale = omega * omega / kGravityWide + omega / std::sqrt(kGravityWide * h);
    long double low = 0.0L;
    long double high = scale / 4096.0L;
    while (residual(high, omega, h, u) > 0.0L) {
        low = high;
        high += scale / 4096.0L;
    }
    for (int i = 0; i < 200; ++i) {
        const long double middle = 0.5L * (low + high);
        (residual(middle, omega, h, u) > 0.0L ? low : high) = middle;
    }
    return low;
}

RecordPtr recordWithAxis(float depth, std::initializer_list<float> frequencies) {
    RecordPtr rec = makeRecord();
    rec->waterDepth = depth;
    rec->nFrequencies = static_cast<int>(frequencies.size());
    rec->validFreqCount = rec->nFrequencies;
    std::copy(frequencies.begin(), frequencies.end(), rec->frequencies);
    return rec;
}

// ulp class: what remains is the narrowing of the stored value.
constexpr double kNarrowing = 1.0e-7;

TEST(WaveNumbers, SatisfyTheDispersionRelationFromDeepToShallowWater) {
    for (const float depth : {0.5F, 3.0F, 12.5F, 47.0F, 300.0F, 5000.0F}) {
        const RecordPtr rec =
            recordWithAxis(depth, {0.005F, 0.02F, 0.05F, 0.1F, 0.2F, 0.35F, 0.5F, 0.99F});
        ov::solveWaveNumbers(*rec);
        for (int i = 0; i < rec->nFrequencies; ++i) {
            const auto exact =
                static_cast<double>(dispersionRoot(rec->frequencies[i], depth, 0.0F));
            EXPECT_NEAR(rec->waveNumbers[i], exact, kNarrowing * exact)
                << "depth " << depth << " m, " << rec->frequencies[i] << " Hz";
        }
        EXPECT_EQ(rec->validFreqCount, rec->nFrequencies);
    }
}

TEST(WaveNumbers, SatisfyTheDispersionRelationOnACurrent) {
    for (const float current : {-0.6F, -0.2F, 0.3F, 1.5F}) {
        const RecordPtr rec = recordWithAxis(12.0F, {0.03F, 0.08F, 0.15F, 0.3F, 0.45F});
        std::fill_n(rec->currentAlongWave, 200, current);
        ov::solveWaveNumbers(*rec);
        for (int i = 0; i < rec->nFrequencies; ++i) {
            const auto exact =
                static_cast<double>(dispersionRoot(rec->frequencies[i], 12.0F, current));
            EXPECT_NEAR(rec->waveNumbers[i], exact, 2.0 * kNarrowing * exact)
                << current << " m/s, " << rec->frequencies[i] << " Hz";
        }
    }
}

TEST(WaveNumbers, ACurrentWithTheWavesLengthensThemAndOneAgainstThemShortensThem) {
    const RecordPtr rec = recordWithAxis(20.0F, {0.2F, 0.2F, 0.2F});
    rec->currentAlongWave[0] = 0.5F;
    rec->currentAlongWave[2] = -0.5F;
    ov::solveWaveNumbers(*rec);
    EXPECT_LT(rec->waveNumbers[0], rec->waveNumbers[1]);
    EXPECT_LT(rec->waveNumbers[1], rec->waveNumbers[2]);
}

TEST(WaveNumbers, DeepWaterGivesOmegaSquaredOverGravity) {
    const RecordPtr rec = recordWithAxis(1000.0F, {0.25F, 0.4F});
    ov::solveWaveNumbers(*rec);
    for (int i = 0; i < 2; ++i) {
        const double omega = 2.0 * M_PI * static_cast<double>(rec->frequencies[i]);
        EXPECT_NEAR(rec->waveNumbers[i], omega * omega / 9.81, 1e-5 * omega * omega / 9.81);
    }
}

TEST(WaveNumbers, ShallowWaterGivesOmegaOverTheLongWaveSpeed) {
    const RecordPtr rec = recordWithAxis(2.0F, {0.002F});
    ov::solveWaveNumbers(*rec);
    const double k = 2.0 * M_PI * static_cast<double>(0.002F) / std::sqrt(9.81 * 2.0);
    EXPECT_NEAR(rec->waveNumbers[0], k, 1e-4 * k);
}

TEST(WaveNumbers, ABlockingCurrentEndsTheAxisAndLeavesTheBinsAboveAsTheyWere) {
    const RecordPtr rec = recordWithAxis(30.0F, {0.1F, 0.2F, 0.3F, 0.4F});
    rec->waveNumbers[3] = 77.0F;
    rec->currentAlongWave[2] = -1.5F; // the limit at 0.3 Hz is -1.301 m/s
    ov::solveWaveNumbers(*rec);
    EXPECT_GT(rec->waveNumbers[0], 0.0F);
    EXPECT_GT(rec->waveNumbers[1], rec->waveNumbers[0]);
    EXPECT_EQ(rec->waveNumbers[2], 0.0F);
    EXPECT_EQ(rec->waveNumbers[3], 77.0F);
    EXPECT_EQ(rec->validFreqCount, 2);
}

TEST(WaveNumbers, BlockingNeedsACurrentBeyondMinusGravityOverFourOmega) {
    const float frequency = 0.25F;
    const auto beyond = [frequency](float current) {
        return -25.132741228718345 * static_cast<double>(frequency) * static_cast<double>(current) /
                   9.81 >
               1.0;
    };
    float blocking = -1.56F;
    ASSERT_FALSE(beyond(blocking));
    while (!beyond(blocking)) {
        blocking = std::nextafter(blocking, -2.0F);
    }
    const float passing = std::nextafter(blocking, 0.0F);
    EXPECT_NEAR(blocking, -9.81 / (8.0 * M_PI * 0.25), 1e-6);

    const RecordPtr rec = recordWithAxis(30.0F, {frequency});
    rec->currentAlongWave[0] = passing;
    ov::solveWaveNumbers(*rec);
    EXPECT_GT(rec->waveNumbers[0], 0.0F);
    EXPECT_EQ(rec->validFreqCount, 1);
    rec->currentAlongWave[0] = blocking;
    ov::solveWaveNumbers(*rec);
    EXPECT_EQ(rec->waveNumbers[0], 0.0F);
    EXPECT_EQ(rec->validFreqCount, 0);
}

TEST(WaveNumbers, TheCountOfUsableBinsIsLoweredButNeverRaised) {
    const RecordPtr rec = recordWithAxis(30.0F, {0.1F, 0.2F, 0.3F});
    rec->validFreqCount = 1;
    ov::solveWaveNumbers(*rec);
    EXPECT_EQ(rec->validFreqCount, 1);
    EXPECT_GT(rec->waveNumbers[2], 0.0F);
}

TEST(WaveNumbers, TheSignOfTheDepthDoesNotMatter) {
    const RecordPtr above = recordWithAxis(8.0F, {0.05F, 0.2F});
    const RecordPtr below = recordWithAxis(-8.0F, {0.05F, 0.2F});
    ov::solveWaveNumbers(*above);
    ov::solveWaveNumbers(*below);
    EXPECT_EQ(above->waveNumbers[0], below->waveNumbers[0]);
    EXPECT_EQ(above->waveNumbers[1], below->waveNumbers[1]);
}

TEST(WaveNumbers, NoWaterOrNoFrequencyGivesNoFiniteNumber) {
    const RecordPtr dry = recordWithAxis(0.0F, {0.1F});
    ov::solveWaveNumbers(*dry);
    EXPECT_FALSE(std::isfinite(dry->waveNumbers[0]));
    const RecordPtr still = recordWithAxis(10.0F, {0.0F});
    ov::solveWaveNumbers(*still);
    EXPECT_FALSE(std::isfinite(still->waveNumbers[0]));
}

TEST(WaveNumbers, AnAxisWithoutBinsTouchesNothingAndALongOneStopsAtTheCapacity) {
    const RecordPtr rec = recordWithAxis(10.0F, {});
    std::fill(std::begin(rec->frequencies), std::end(rec->frequencies), 0.1F);
    rec->pressureGain[0] = 5.0F; // the series behind the wavenumbers in the record
    for (const int count : {-3, 0}) {
        rec->nFrequencies = count;
        ov::solveWaveNumbers(*rec);
        EXPECT_EQ(rec->waveNumbers[0], 0.0F);
    }
    rec->nFrequencies = 201;
    ov::solveWaveNumbers(*rec);
    EXPECT_GT(rec->waveNumbers[199], 0.0F);
    EXPECT_EQ(rec->pressureGain[0], 5.0F);
}

} // namespace
