#include "spectral/fft.hpp"

#include <gtest/gtest.h>

#include <array>
#include <cmath>
#include <complex>
#include <cstring>
#include <limits>
#include <numbers>
#include <random>
#include <utility>
#include <vector>

#include "support/record_ptr.hpp"

namespace {

constexpr long double kTurn = 2.0L * std::numbers::pi_v<long double>;
constexpr float kInf = std::numeric_limits<float>::infinity();

std::vector<float> noise(int n, unsigned seed) {
    std::mt19937 random(seed);
    std::uniform_real_distribution<float> value(-3.0F, 3.0F);
    std::vector<float> series(static_cast<std::size_t>(n));
    for (float &x : series) {
        x = value(random);
    }
    return series;
}

std::vector<float> wave(int n, int harmonic, double amplitude, double phase) {
    std::vector<float> series(static_cast<std::size_t>(n));
    for (int t = 0; t < n; ++t) {
        const double angle = 2.0 * std::numbers::pi * harmonic * t / n;
        series[static_cast<std::size_t>(t)] =
            static_cast<float>(amplitude * std::cos(angle + phase));
    }
    return series;
}

// The oracle: the transform in its textbook form, one-based, without a thought for speed.
void plainComplexFft(std::vector<float> &values, int nn, int isign) {
    const auto data = [&values](int oneBased) -> float & {
        return values[static_cast<std::size_t>(oneBased - 1)];
    };
    const int n = 2 * nn;
    int j = 1;
    for (int i = 1; i < n; i += 2) {
        if (j > i) {
            std::swap(data(j), data(i));
            std::swap(data(j + 1), data(i + 1));
        }
        int m = nn;
        while (m >= 2 && j > m) {
            j -= m;
            m >>= 1;
        }
        j += m;
    }
    int mmax = 2;
    while (n > mmax) {
        const int istep = 2 * mmax;
        const double theta = 6.28318530717959 / (isign * mmax);
        const double wtemp = std::sin(0.5 * theta);
        const double wpr = -2.0 * wtemp * wtemp;
        const double wpi = std::sin(theta);
        double wr = 1.0;
        double wi = 0.0;
        for (int m = 1; m < mmax; m += 2) {
            for (int i = m; i <= n; i += istep) {
                j = i + mmax;
                const double tempr = wr * data(j) - wi * data(j + 1);
                const double tempi = wr * data(j + 1) + wi * data(j);
                data(j) = static_cast<float>(data(i) - tempr);
                data(j + 1) = static_cast<float>(data(i + 1) - tempi);
                data(i) = static_cast<float>(data(i) + tempr);
                data(i + 1) = static_cast<float>(data(i + 1) + tempi);
            }
            const double previous = wr;
            wr = wr + wr * wpr - wi * wpi;
            wi = wi + wi * wpr + previous * wpi;
        }
        mmax = istep;
    }
}

// The packing written out from a plain transform.
std::vector<float> plainRealFft(const std::vector<float> &series) {
    const int n = static_cast<int>(series.size());
    std::vector<float> work(2 * series.size(), 0.0F);
    for (std::size_t t = 0; t < series.size(); ++t) {
        work[2 * t] = series[t];
    }
    plainComplexFft(work, n, 1);
    const std::size_t h = series.size() / 2;
    const auto s = static_cast<float>(h);
    std::vector<float> packed(series.size(), 0.0F);
    packed[0] = work[0] / s;
    packed[1] = work[2 * h] / s;
    for (std::size_t k = 1; k + 2 <= h; ++k) {
        packed[k + 1] = work[2 * k] / s;
        packed[h + k + 1] = -(work[2 * k + 1] / s);
    }
    packed[h] = 0.0F;
    if (h + 1 < series.size()) {
        packed[h + 1] = work[1] / s;
    }
    return packed;
}

bool sameBits(const std::vector<float> &a, const std::vector<float> &b) {
    return a.size() == b.size() && std::memcmp(a.data(), b.data(), a.size() * sizeof(float)) == 0;
}

// sum x[t] exp(+2 pi i k t / n) in extended precision.
std::complex<long double> directSum(const std::vector<float> &series, std::size_t k) {
    const std::size_t n = series.size();
    std::complex<long double> sum = 0.0L;
    for (std::size_t t = 0; t < n; ++t) {
        const long double angle =
            kTurn * static_cast<long double>(k * t % n) / static_cast<long double>(n);
        sum += static_cast<long double>(series[t]) * std::polar(1.0L, angle);
    }
    return sum;
}

class Fft : public ::testing::Test {
protected:
    std::vector<float> transformed(std::vector<float> series) {
        ov::realSeriesFft(*record_, series.data(), static_cast<int>(series.size()));
        return series;
    }

    orvik::test::RecordPtr record_ = orvik::test::makeRecord();
};

// ---- Complex transform

TEST_F(Fft, ComplexTransformEqualsThePlainRecurrenceBitForBit) {
    for (const int isign : {1, -1}) {
        for (int nn = 1; nn <= 32768; nn *= 2) {
            std::vector<float> plain = noise(2 * nn, static_cast<unsigned>(nn));
            std::vector<float> fast = plain;
            plainComplexFft(plain, nn, isign);
            ov::complexFft(fast.data(), nn, isign);
            EXPECT_TRUE(sameBits(plain, fast)) << "nn " << nn << " isign " << isign;
        }
    }
}

TEST_F(Fft, ComplexTransformTurnsPositivelyAndIsNotNormalised) {
    // A unit impulse at place 1 of four gives 1, i, -1, -i.
    std::vector<float> data{0.0F, 0.0F, 1.0F, 0.0F, 0.0F, 0.0F, 0.0F, 0.0F};
    ov::complexFft(data.data(), 4, 1);
    const std::vector<float> expected{1.0F, 0.0F, 0.0F, 1.0F, -1.0F, 0.0F, 0.0F, -1.0F};
    for (std::size_t i = 0; i < data.size(); ++i) {
        EXPECT_NEAR(data[i], expected[i], 1e-7) << i;
    }
}

TEST_F(Fft, BothSignsInTurnRestoreTheValuesTimesTheirNumber) {
    constexpr int kValues = 256;
    const std::vector<float> original = noise(2 * kValues, 4);
    std::vector<float> data = original;
    ov::complexFft(data.data(), kValues, 1);
    ov::complexFft(data.data(), kValues, -1);
    for (std::size_t i = 0; i < data.size(); ++i) {
        EXPECT_NEAR(data[i] / kValues, original[i], 2e-6) << i;
    }
}

// ---- Packing and scaling

TEST_F(Fft, RealTransformEqualsThePlainOneBitForBitForEveryPowerOfTwo) {
    for (int n = 2; n <= 32768; n *= 2) {
        const std::vector<float> series = noise(n, static_cast<unsigned>(n) + 7);
        EXPECT_TRUE(sameBits(transformed(series), plainRealFft(series))) << "n " << n;
    }
}

TEST_F(Fft, FourSamplesGiveMeanNyquistAndTwoZerosScaledByOneHalf) {
    EXPECT_TRUE(sameBits(transformed({1.0F, 2.0F, 4.0F, 9.0F}), {8.0F, -3.0F, 0.0F, 0.0F}));
}

TEST_F(Fft, TwoSamplesKeepTheMeanOnlyAndWriteNothingBehind) {
    std::array<float, 4> series{3.0F, 5.0F, 77.0F, 78.0F};
    ov::realSeriesFft(*record_, series.data(), 2);
    EXPECT_EQ(series, (std::array<float, 4>{8.0F, 0.0F, 77.0F, 78.0F}));
}

TEST_F(Fft, FewerThanTwoSamplesGiveZeros) {
    std::array<float, 2> series{3.0F, 5.0F};
    ov::realSeriesFft(*record_, series.data(), 0);
    EXPECT_EQ(series, (std::array<float, 2>{3.0F, 5.0F}));
    ov::realSeriesFft(*record_, series.data(), 1);
    EXPECT_EQ(series, (std::array<float, 2>{0.0F, 5.0F}));
    ov::realSeriesFft(*record_, series.data(), -1);
    EXPECT_EQ(series, (std::array<float, 2>{0.0F, 5.0F}));
}

TEST_F(Fft, ConstantGivesTwiceItsValueAtTheMeanAndZerosElsewhere) {
    const std::vector<float> packed = transformed(std::vector<float>(1024, 1.25F));
    EXPECT_EQ(packed[0], 2.5F);
    for (std::size_t i = 1; i < packed.size(); ++i) {
        EXPECT_EQ(packed[i], 0.0F) << i;
    }
}

TEST_F(Fft, CosineOfAmplitudeAShowsAsAOnePlaceAboveItsHarmonic) {
    constexpr int kSamples = 64;
    constexpr int kHalf = kSamples / 2;
    for (int k = 1; k <= kHalf - 2; ++k) {
        const std::vector<float> packed = transformed(wave(kSamples, k, 1.7, 0.0));
        for (int i = 0; i < kSamples; ++i) {
            const double expected = i == k + 1 ? 1.7 : 0.0;
            EXPECT_NEAR(packed[static_cast<std::size_t>(i)], expected, 5e-7)
                << "harmonic " << k << " place " << i;
        }
    }
}

TEST_F(Fft, SineOfAmplitudeAShowsAsMinusAInTheImaginaryHalf) {
    constexpr int kSamples = 64;
    constexpr int kHalf = kSamples / 2;
    for (int k = 1; k <= kHalf - 2; ++k) {
        const std::vector<float> packed =
            transformed(wave(kSamples, k, 1.7, -std::numbers::pi / 2.0));
        for (int i = 0; i < kSamples; ++i) {
            const double expected = i == kHalf + k + 1 ? -1.7 : 0.0;
            EXPECT_NEAR(packed[static_cast<std::size_t>(i)], expected, 5e-7)
                << "harmonic " << k << " place " << i;
        }
    }
}

TEST_F(Fft, HighestHarmonicBelowNyquistIsNeverInTheOutput) {
    for (const int n : {4, 8, 64, 1024, 500}) {
        for (const double phase : {0.0, 0.6, -1.5}) {
            for (const float value : transformed(wave(n, n / 2 - 1, 1.0, phase))) {
                EXPECT_NEAR(value, 0.0F, 1e-6) << "n " << n << " phase " << phase;
            }
        }
    }
}

TEST_F(Fft, NyquistTermStandsAtPlaceOneWithTwiceItsAmplitude) {
    std::vector<float> series(128);
    for (std::size_t t = 0; t < series.size(); ++t) {
        series[t] = t % 2 == 0 ? 0.75F : -0.75F;
    }
    const std::vector<float> packed = transformed(series);
    for (std::size_t i = 0; i < packed.size(); ++i) {
        EXPECT_EQ(packed[i], i == 1 ? 1.5F : 0.0F) << i;
    }
}

// ---- Properties

TEST_F(Fft, ShiftOfTheBurstTurnsThePhaseAndKeepsTheAmplitude) {
    constexpr std::size_t kSamples = 256;
    constexpr std::size_t kHalf = kSamples / 2;
    const std::vector<float> series = noise(kSamples, 11);
    std::vector<float> later(kSamples); // everything happens one sample later
    for (std::size_t t = 0; t < kSamples; ++t) {
        later[(t + 1) % kSamples] = series[t];
    }
    const std::vector<float> a = transformed(series);
    const std::vector<float> b = transformed(later);
    for (std::size_t k = 1; k + 2 <= kHalf; ++k) {
        const std::complex<double> before(a[k + 1], a[kHalf + k + 1]);
        const std::complex<double> after(b[k + 1], b[kHalf + k + 1]);
        const double turn = -2.0 * std::numbers::pi * static_cast<double>(k) / kSamples;
        EXPECT_NEAR(std::abs(after - before * std::polar(1.0, turn)), 0.0, 1e-6) << k;
    }
}

TEST_F(Fft, EnergyIsThatOfTheSeriesWithoutTheDroppedHarmonic) {
    constexpr std::size_t kSamples = 2048;
    constexpr std::size_t kHalf = kSamples / 2;
    const std::vector<float> series = noise(kSamples, 12);
    const std::vector<float> packed = transformed(series);
    double inSamples = 0.0;
    for (const float x : series) {
        inSamples += static_cast<double>(x) * static_cast<double>(x);
    }
    const auto square = [](double x) { return x * x; };
    double inHarmonics = square(packed[0]) / 4.0 + square(packed[1]) / 4.0;
    for (std::size_t j = 2; j < kHalf; ++j) {
        inHarmonics += (square(packed[j]) + square(packed[kHalf + j])) / 2.0;
    }
    const double dropped =
        2.0 * static_cast<double>(std::norm(directSum(series, kHalf - 1))) / square(kSamples);
    EXPECT_NEAR((inHarmonics + dropped) / (inSamples / kSamples), 1.0, 1e-6);
}

// ---- Lengths that are no power of two

TEST_F(Fft, AnyShortLengthGivesTheDirectSumInTheSamePacking) {
    for (const int n : {3, 5, 6, 7, 9, 12, 100, 300, 511, 513, 600, 1023}) {
        const std::vector<float> series = noise(n, static_cast<unsigned>(n));
        const std::vector<float> packed = transformed(series);
        const auto size = static_cast<std::size_t>(n);
        const std::size_t h = size / 2;
        const auto s = static_cast<long double>(h);
        std::vector<long double> expected(size, 0.0L);
        expected[0] = directSum(series, 0).real() / s;
        expected[1] = directSum(series, h).real() / s;
        for (std::size_t k = 1; k + 2 <= h; ++k) {
            expected[k + 1] = directSum(series, k).real() / s;
            expected[h + k + 1] = -directSum(series, k).imag() / s;
        }
        expected[h] = 0.0L;
        for (std::size_t i = 0; i < size; ++i) {
            // Two roundings to single precision; the sums themselves are in double.
            EXPECT_NEAR(packed[i], static_cast<double>(expected[i]),
                        1e-6 * std::abs(static_cast<double>(expected[i])) + 1e-11)
                << "n " << n << " place " << i;
        }
    }
}

TEST_F(Fft, BurstLengthBetweenPowersOfTwoResolvesItsOwnHarmonics) {
    constexpr int kSamples = 300;
    const std::vector<float> packed = transformed(wave(kSamples, 37, 0.8, 0.0));
    for (int i = 0; i < kSamples; ++i) {
        EXPECT_NEAR(packed[static_cast<std::size_t>(i)], i == 38 ? 0.8 : 0.0, 1e-7) << i;
    }
}

TEST_F(Fft, LongerLengthThatIsNoPowerOfTwoHasNoSpectrum) {
    EXPECT_NE(transformed(noise(1022, 5))[3], 0.0F);
    EXPECT_EQ(transformed(noise(1026, 5)), std::vector<float>(1026, 0.0F));
}

// ---- Values that are no numbers

TEST_F(Fft, OneSampleThatIsNoNumberSpoilsEveryCoefficientButTheFixedZero) {
    for (const float bad : {std::numeric_limits<float>::quiet_NaN(), kInf}) {
        for (const int n : {64, 60}) {
            std::vector<float> series = noise(n, 3);
            series[5] = bad;
            const std::vector<float> packed = transformed(series);
            const auto h = static_cast<std::size_t>(n / 2);
            EXPECT_EQ(packed[h], 0.0F);
            EXPECT_FALSE(std::isfinite(packed[0]));
            for (std::size_t j = 2; j < h; ++j) {
                EXPECT_FALSE(std::isfinite(packed[j])) << j;
            }
        }
    }
}

// ---- Transform of loaded samples

TEST_F(Fft, LoadedSamplesGiveTheTwoHalvesOfTheInPlaceTransform) {
    for (const int n : {2, 3, 4, 7, 64, 300, 512, 1024}) {
        const std::vector<float> series = noise(n, static_cast<unsigned>(n) + 100);
        const std::vector<float> packed = transformed(series);
        const auto h = static_cast<std::size_t>(n / 2);
        std::vector<float> re(h, -1.0F);
        std::vector<float> im(h, -1.0F);
        for (int i = 0; i < n; ++i) {
            ov::loadSample(*record_, i, series[static_cast<std::size_t>(i)]);
        }
        ov::transformLoaded(*record_, n, re.data(), im.data());
        EXPECT_EQ(0, std::memcmp(re.data(), packed.data(), h * sizeof(float))) << "n " << n;
        EXPECT_EQ(0, std::memcmp(im.data(), packed.data() + h, h * sizeof(float))) << "n " << n;
    }
}

TEST_F(Fft, EarlierTransformLeavesNoTraceInALaterOne) {
    const std::vector<float> series = noise(128, 1);
    const std::vector<float> first = transformed(series);
    transformed(noise(4096, 2));
    EXPECT_TRUE(sameBits(transformed(series), first));
}

} // namespace
