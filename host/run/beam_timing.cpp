#include "run/beam_timing.hpp"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <numbers>

namespace orvik {
namespace {

constexpr int kHalfWidth =
    8; // samples on either side: errors below 1e-3 up to three quarters of Nyquist

// Hann-windowed sinc at distance x [samples].
double kernel(double x) {
    if (std::abs(x) >= kHalfWidth) {
        return 0.0;
    }
    const double window = 0.5 + 0.5 * std::cos(std::numbers::pi * x / kHalfWidth);
    const double angle = std::numbers::pi * x;
    return std::abs(x) < 1e-12 ? 1.0 : window * std::sin(angle) / angle;
}

std::vector<float> withoutGaps(std::vector<float> series) {
    float last = 0.0F;
    for (float &value : series) {
        if (std::isnan(value)) {
            value = last;
        }
        last = value;
    }
    return series;
}

} // namespace

double pressureDelay(const Instrument &instrument, bool withTrack) {
    const double samplingRate = instrument.samplingRate;
    if (instrument.instrumentType == 0) {
        return 0.32;
    }
    if (instrument.instrumentType == 1) {
        return 2.0 * kBeamInterval;
    }
    if (samplingRate == 2.0) {
        return 0.17;
    }
    if (samplingRate == 1.0) {
        return 0.42;
    }
    if (samplingRate == 0.75) {
        return 0.587;
    }
    return withTrack ? kTrackDelay : 2.0 * kBeamInterval;
}

std::vector<float> shiftedSeries(const std::vector<float> &series, double shift) {
    const std::vector<float> source = withoutGaps(series);
    const double whole = std::floor(shift);
    const double fraction = shift - whole;
    std::array<double, 2 * kHalfWidth> weights{};
    double sum = 0.0;
    for (int m = 0; m < 2 * kHalfWidth; ++m) {
        weights[static_cast<std::size_t>(m)] = kernel(m - kHalfWidth + 1 - fraction);
        sum += weights[static_cast<std::size_t>(m)];
    }
    const auto last = static_cast<std::ptrdiff_t>(source.size()) - 1;
    std::vector<float> shifted(source.size());
    for (std::ptrdiff_t i = 0; i <= last; ++i) {
        double value = 0.0;
        for (int m = 0; m < 2 * kHalfWidth; ++m) {
            const std::ptrdiff_t from = i + static_cast<std::ptrdiff_t>(whole) + m - kHalfWidth + 1;
            const auto at = static_cast<std::size_t>(std::clamp<std::ptrdiff_t>(from, 0, last));
            value += weights[static_cast<std::size_t>(m)] * static_cast<double>(source[at]);
        }
        shifted[static_cast<std::size_t>(i)] = static_cast<float>(value / sum);
    }
    return shifted;
}

std::vector<float> lowPassed(const std::vector<float> &series, double step, double shift,
                             std::size_t count) {
    const std::vector<float> source = withoutGaps(series);
    const auto last = static_cast<std::ptrdiff_t>(source.size()) - 1;
    const auto reach = static_cast<std::ptrdiff_t>(std::ceil(kHalfWidth * step));
    std::vector<double> weights(static_cast<std::size_t>(2 * reach + 1));
    double weighted = -1.0; // fraction of a sample that the weights are for
    double sum = 0.0;
    std::vector<float> passed;
    for (std::size_t m = 0; m < count; ++m) {
        const double at = static_cast<double>(m) * step + shift;
        const double whole = std::floor(at);
        if (at - whole != weighted) {
            weighted = at - whole;
            sum = 0.0;
            for (std::ptrdiff_t k = -reach; k <= reach; ++k) {
                const double weight = kernel((static_cast<double>(k) - weighted) / step);
                weights[static_cast<std::size_t>(k + reach)] = weight;
                sum += weight;
            }
        }
        double value = 0.0;
        for (std::ptrdiff_t k = -reach; k <= reach; ++k) {
            const auto from =
                std::clamp<std::ptrdiff_t>(static_cast<std::ptrdiff_t>(whole) + k, 0, last);
            value += weights[static_cast<std::size_t>(k + reach)] *
                     static_cast<double>(source[static_cast<std::size_t>(from)]);
        }
        passed.push_back(static_cast<float>(value / sum));
    }
    return passed;
}

std::array<std::vector<float>, 3> earthFromBeams(const std::array<std::vector<float>, 3> &beams,
                                                 const std::array<double, 9> &matrix,
                                                 double samplingRate) {
    std::array<std::vector<float>, 3> earth;
    for (std::size_t j = 0; j < 3; ++j) {
        std::vector<double> sum(beams[0].size(), 0.0);
        for (std::size_t b = 0; b < 3; ++b) {
            const double later =
                kBeamInterval * (static_cast<double>(b) - static_cast<double>(j)) * samplingRate;
            const std::vector<float> beam = shiftedSeries(beams[b], later);
            for (std::size_t i = 0; i < sum.size(); ++i) {
                sum[i] += matrix[3 * j + b] * static_cast<double>(beam[i]);
            }
        }
        earth[j].reserve(sum.size());
        for (const double value : sum) {
            earth[j].push_back(static_cast<float>(value));
        }
    }
    return earth;
}

} // namespace orvik
