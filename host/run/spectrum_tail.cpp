#include "run/spectrum_tail.hpp"

#include <algorithm>
#include <cmath>

namespace orvik {

namespace {

constexpr double kTailExponent = 4.5;
constexpr double kRiseExponent = 10.0;
constexpr double kSameRise = 1e-4; // the same for f^10
constexpr double kSameLevel =
    1e-5; // single precision, with what its rounding of frequencies makes of f^4.5

constexpr double kMostTail = 0.25; // of m0: 13 % of the height, more than chance makes of it

} // namespace

std::optional<std::size_t> lastMeasuredBin(std::span<const float> density,
                                           std::span<const double> frequencies) {
    if (density.empty() || density.size() != frequencies.size()) {
        return std::nullopt;
    }
    const auto level = [&](std::size_t bin) {
        return static_cast<double>(density[bin]) * std::pow(frequencies[bin], kTailExponent);
    };
    std::size_t bin = density.size() - 1;
    const double tail = level(bin);
    if (!(tail > 0.0)) {
        return std::nullopt;
    }
    while (bin > 0 && std::abs(level(bin - 1) - tail) <= kSameLevel * tail) {
        --bin;
    }
    return bin + 1 < density.size() ? std::optional(bin) : std::nullopt;
}

bool isNothingButTail(std::span<const float> density, std::span<const double> frequencies) {
    const auto last = lastMeasuredBin(density, frequencies);
    if (!last) {
        return std::none_of(density.begin(), density.end(),
                            [](float value) { return value > 0.0F; });
    }
    for (std::size_t bin = 0; bin < *last; ++bin) {
        const double rise = static_cast<double>(density[*last]) *
                            std::pow(frequencies[bin] / frequencies[*last], kRiseExponent);
        if (!(std::abs(static_cast<double>(density[bin]) - rise) <= kSameRise * rise)) {
            return false;
        }
    }
    return true;
}

std::optional<UnmeasuredHeight> unmeasuredHeight(std::span<const double> density,
                                                 std::span<const double> frequencies,
                                                 double cutoff) {
    if (density.size() < 2 || density.size() != frequencies.size() || !std::isfinite(cutoff)) {
        return std::nullopt;
    }
    const double step = frequencies[1] - frequencies[0];
    double all = 0.0;
    double tail = 0.0;
    std::size_t peak = 0;
    for (std::size_t bin = 0; bin < density.size(); ++bin) {
        if (!(density[bin] > 0.0)) {
            continue;
        }
        all += density[bin];
        tail += frequencies[bin] > cutoff + 0.5 * step ? density[bin] : 0.0;
        peak = density[peak] >= density[bin] ? peak : bin;
    }
    // A peak beside the cut-off need not be the sea's: that may lie where nothing was measured.
    const bool peakIsAtCutoff = std::abs(frequencies[peak] - cutoff) < 1.5 * step;
    if (!(all > 0.0) || !(peakIsAtCutoff || tail > kMostTail * all)) {
        return std::nullopt;
    }
    return UnmeasuredHeight{cutoff, tail / all};
}

} // namespace orvik
