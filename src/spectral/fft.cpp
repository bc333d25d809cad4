#include "spectral/fft.hpp"

#include <algorithm>
#include <array>
#include <bit>
#include <cmath>
#include <utility>

namespace ov {
namespace {

// Lengths that are no power of two come from short bursts only: 512 samples, 1024 surface-track elements.
constexpr int kMaxDirectLength = 1024;
constexpr double kFftTwoPi = 6.28318530717959;

void bitReverse(float *data, int nn) {
    const int size = 2 * nn;
    int j = 0;
    for (int i = 0; i < size; i += 2) {
        if (j > i) {
            std::swap(data[j], data[i]);
            std::swap(data[j + 1], data[i + 1]);
        }
        int m = nn;
        while (m >= 2 && j + 1 > m) {
            j -= m;
            m >>= 1;
        }
        j += m;
    }
}

// The same coefficients as complexFft() by the direct sum in double precision, for harmonics 0 .. n/2.
void directTransform(float *data, int n) {
    std::array<double, kMaxDirectLength> cosine;
    std::array<double, kMaxDirectLength> sine;
    std::array<float, kMaxDirectLength> sample;
    for (int t = 0; t < n; ++t) {
        const double angle = kFftTwoPi * t / n;
        const auto at = static_cast<std::size_t>(t);
        cosine[at] = std::cos(angle);
        sine[at] = std::sin(angle);
        sample[at] = data[2 * t];
    }
    for (int k = 0; k <= n / 2; ++k) {
        double re = 0.0;
        double im = 0.0;
        for (int t = 0; t < n; ++t) {
            const double value = sample[static_cast<std::size_t>(t)];
            const auto turn = static_cast<std::size_t>(k * t % n);
            re += value * cosine[turn];
            im += value * sine[turn];
        }
        data[2 * k] = static_cast<float>(re);
        data[2 * k + 1] = static_cast<float>(im);
    }
}

void transform(float *data, int n) {
    if (std::has_single_bit(static_cast<unsigned>(n))) {
        complexFft(data, n, 1);
    } else if (n <= kMaxDirectLength) {
        directTransform(data, n);
    } else {
        std::fill_n(data, 2 * n, 0.0F);
    }
}

// Packs the transform in fftWork; `put(j, value)` receives place j of the packing.
template <class Put> void pack(const float *work, int n, Put put) {
    const int half = n / 2;
    const auto scale = static_cast<float>(half);
    put(0, work[0] / scale);
    put(1, work[2 * half] / scale);
    for (int k = 1; k <= half - 2; ++k) {
        put(k + 1, work[2 * k] / scale);
        put(half + k + 1, -(work[2 * k + 1] / scale));
    }
    put(half, 0.0F);
    if (half + 1 < n) {
        put(half + 1, work[1] / scale);
    }
}

} // namespace

void complexFft(float *data, int nn, int isign) {
    bitReverse(data, nn);
    const int size = 2 * nn;
    for (int mmax = 2; mmax < size; mmax *= 2) {
        const int istep = 2 * mmax;
        const double theta = kFftTwoPi / (isign * mmax);
        const double halfSine = std::sin(0.5 * theta);
        const double stepRe = -2.0 * halfSine * halfSine;
        const double stepIm = std::sin(theta);
        double wr = 1.0;
        double wi = 0.0;
        for (int m = 0; m < mmax; m += 2) {
            for (int i = m; i < size; i += istep) {
                const int j = i + mmax;
                const double re = data[j];
                const double im = data[j + 1];
                const double turnedRe = wr * re - wi * im;
                const double turnedIm = wr * im + wi * re;
                const double baseRe = data[i];
                const double baseIm = data[i + 1];
                data[j] = static_cast<float>(baseRe - turnedRe);
                data[j + 1] = static_cast<float>(baseIm - turnedIm);
                data[i] = static_cast<float>(baseRe + turnedRe);
                data[i + 1] = static_cast<float>(baseIm + turnedIm);
            }
            const double previous = wr;
            wr = wr + wr * stepRe - wi * stepIm;
            wi = wi + wi * stepRe + previous * stepIm;
        }
    }
}

void realSeriesFft(WaveVariables &rec, float *series, int n) {
    if (n < 2) {
        std::fill_n(series, std::max(n, 0), 0.0F);
        return;
    }
    for (int i = 0; i < n; ++i) {
        loadSample(rec, i, series[i]);
    }
    transform(rec.fftWork, n);
    series[n - 1] = 0.0F; // an odd length has one place more than the packing
    pack(rec.fftWork, n, [series](int place, float value) { series[place] = value; });
}

void transformLoaded(WaveVariables &rec, int n, float *re, float *im) {
    if (n < 2) {
        return;
    }
    const int half = n / 2;
    transform(rec.fftWork, n);
    pack(rec.fftWork, n, [=](int place, float value) {
        if (place < half) {
            re[place] = value;
        } else if (place < 2 * half) {
            im[place - half] = value;
        }
    });
}

} // namespace ov
