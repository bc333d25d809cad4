#include "simulate/fourier.hpp"

#include <cmath>
#include <utility>

namespace orvik {

namespace {

using Complex = std::complex<double>;

void reverseBits(std::vector<Complex> &x) {
    for (std::size_t i = 1, j = 0; i < x.size(); ++i) {
        std::size_t bit = x.size() >> 1U;
        for (; (j & bit) != 0; bit >>= 1U) {
            j ^= bit;
        }
        j ^= bit;
        if (i < j) {
            std::swap(x[i], x[j]);
        }
    }
}

std::vector<Complex> unitRoots(std::size_t size) {
    std::vector<Complex> roots(size / 2);
    for (std::size_t k = 0; k < roots.size(); ++k) {
        roots[k] = std::polar(1.0, -6.28318530717958647692 * static_cast<double>(k) /
                                       static_cast<double>(size));
    }
    return roots;
}

// Plain radix 2 (Cooley and Tukey 1965), in place.
void transform(std::vector<Complex> &x) {
    reverseBits(x);
    const auto roots = unitRoots(x.size());
    for (std::size_t half = 1; half < x.size(); half *= 2) {
        const std::size_t stride = roots.size() / half;
        for (std::size_t start = 0; start < x.size(); start += 2 * half) {
            for (std::size_t k = 0; k < half; ++k) {
                Complex &upper = x[start + k];
                Complex &lower = x[start + k + half];
                const Complex w = roots[k * stride];
                const Complex turned{w.real() * lower.real() - w.imag() * lower.imag(),
                                     w.real() * lower.imag() + w.imag() * lower.real()};
                lower = upper - turned;
                upper += turned;
            }
        }
    }
}

} // namespace

std::vector<double> sumOfLines(std::vector<Complex> lines, std::size_t count) {
    transform(lines);
    std::vector<double> series(count);
    for (std::size_t j = 0; j < count; ++j) {
        series[j] = lines[j].real();
    }
    return series;
}

} // namespace orvik
