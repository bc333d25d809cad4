#include "run/completion.hpp"

#include <algorithm>
#include <cmath>
#include <limits>
#include <numeric>

#include "orvikbase/orvikbase.h"

namespace orvik {

namespace {

constexpr std::size_t kAlike = 8; // samples before the joint that are compared

// Mean and mean square of what is there.
double varianceOf(const std::vector<float> &series, const std::vector<std::uint8_t> &present) {
    double sum = 0.0;
    double squares = 0.0;
    double count = 0.0;
    for (std::size_t i = 0; i < series.size(); ++i) {
        if (present[i] != 0) {
            const double value = series[i];
            sum += value;
            squares += value * value;
            count += 1.0;
        }
    }
    return count > 0.0 ? squares / count - (sum / count) * (sum / count) : 0.0;
}

struct Comparison {
    const std::vector<float> *series;
    double variance;
};

std::vector<Comparison> comparisons(const Burst &burst, const std::vector<std::uint8_t> &present) {
    std::vector<Comparison> all;
    const auto add = [&](const std::vector<float> &series) {
        const double variance = series.empty() ? 0.0 : varianceOf(series, present);
        if (variance > 0.0) {
            all.push_back({&series, variance});
        }
    };
    add(burst.pressure);
    std::for_each(burst.velocity.begin(), burst.velocity.end(), add);
    return all;
}

// How far what comes before `begin` is from the end of the burst; infinite where something is missing.
double unlikeness(const std::vector<Comparison> &all, const std::vector<std::uint8_t> &present,
                  std::size_t begin) {
    const std::size_t samples = present.size();
    double sum = 0.0;
    for (std::size_t k = 1; k <= kAlike; ++k) {
        if (present[begin - k] == 0) {
            return std::numeric_limits<double>::infinity();
        }
        for (const auto &[series, variance] : all) {
            const double apart = static_cast<double>((*series)[begin - k]) -
                                 static_cast<double>((*series)[samples - k]);
            sum += present[samples - k] == 0 ? 0.0 : apart * apart / variance;
        }
    }
    return sum;
}

// Where the stretch begins: of those with the fewest missing samples the one that goes on best.
std::size_t stretchFor(const Burst &burst, const std::vector<std::uint8_t> &present,
                       std::size_t length) {
    const std::vector<Comparison> all = comparisons(burst, present);
    const auto at = [&present](std::size_t i) {
        return present.begin() + static_cast<std::ptrdiff_t>(i);
    };
    std::size_t best = 0;
    auto fewest = std::numeric_limits<std::ptrdiff_t>::max();
    double nearest = std::numeric_limits<double>::infinity();
    for (std::size_t begin = kAlike; begin + length <= present.size(); ++begin) {
        const std::ptrdiff_t missing = std::count(at(begin), at(begin + length), 0);
        const double apart = unlikeness(all, present, begin);
        if (missing < fewest || (missing == fewest && apart < nearest)) {
            best = begin;
            fewest = missing;
            nearest = apart;
        }
    }
    return best;
}

} // namespace

std::size_t completedLength(std::size_t samples, std::size_t missing) {
    std::size_t power = 1;
    while (power < samples && power < OV_MAX_SAMPLES) {
        power *= 2;
    }
    const bool completes =
        samples > 512 && power > samples && power - samples + missing <= power / 10;
    return completes ? power : samples;
}

Burst completed(const Burst &burst, const std::vector<std::uint8_t> &present, std::size_t length) {
    const std::size_t samples = present.size();
    const std::size_t begin = stretchFor(burst, present, length - samples);
    Burst longer = burst;
    const auto extend = [&](auto &series) {
        const std::size_t width = series.size() / samples;
        series.reserve(length * width);
        for (std::size_t i = 0; i < (length - samples) * width; ++i) {
            series.push_back(series[begin * width + i]);
        }
    };
    extend(longer.pressure);
    extend(longer.surfaceTrack);
    extend(longer.valid);
    for (std::size_t b = 0; b < 3; ++b) {
        extend(longer.velocity[b]);
        extend(longer.amplitude[b]);
        extend(longer.attitude[b]);
    }
    if (longer.profile) {
        extend(longer.profile->velocity);
        extend(longer.profile->amplitude);
        extend(longer.profile->correlation);
    }
    return longer;
}

} // namespace orvik
