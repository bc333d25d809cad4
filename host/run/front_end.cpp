#include "run/front_end.hpp"

#include <algorithm>
#include <cmath>
#include <limits>
#include <string>

#include <fmt/format.h>

#include "user_error.hpp"

namespace orvik {

namespace {

constexpr double kSlowRate = 0.75; // [Hz] rate code 0
constexpr double kSlowFrequency = 400000.0;
constexpr double kMatrixOne = 4096.0; // an entry of 1 in the library's integer matrix

bool hasVelocity(const Burst &burst, std::size_t sample) {
    if (burst.profile) {
        const Profile &profile = *burst.profile;
        const auto first =
            profile.velocity.begin() + static_cast<std::ptrdiff_t>(profile.at(sample, 0, 0));
        return std::any_of(first,
                           first + static_cast<std::ptrdiff_t>(profile.beams * profile.cells),
                           [](float velocity) { return std::isfinite(velocity); });
    }
    return std::all_of(burst.velocity.begin(), burst.velocity.end(),
                       [sample](const std::vector<float> &series) {
                           return series.empty() || std::isfinite(series.at(sample));
                       });
}

} // namespace

std::int32_t rateCode(const Instrument &instrument) {
    const double rate = instrument.samplingRate;
    if (!instrument.profile && rate == kSlowRate &&
        instrument.acousticFrequency == kSlowFrequency) {
        return 0;
    }
    if (!(rate >= 1.0) || rate != std::floor(rate) || rate > 1000.0) {
        throw UserError(fmt::format("sampling_rate {:g} Hz cannot be processed: it must be a whole "
                                    "number of Hz up to 1000, or 0.75 Hz at 400 kHz",
                                    rate));
    }
    return static_cast<std::int32_t>(rate);
}

std::int16_t matrixCount(double entry) {
    const double counts = std::round(entry * kMatrixOne);
    if (!(std::abs(counts) <= 32767.0)) {
        throw UserError(
            "beam_to_xyz has an entry of 8 or more: the beams stand too close to one plane");
    }
    return static_cast<std::int16_t>(counts);
}

std::vector<std::uint8_t> presentSamples(const Burst &burst) {
    std::vector<std::uint8_t> present(burst.pressure.size(), 1);
    for (std::size_t i = 0; i < present.size(); ++i) {
        const bool complete = (burst.valid.empty() || burst.valid.at(i) != 0) &&
                              std::isfinite(burst.pressure[i]) && hasVelocity(burst, i);
        present[i] = complete ? 1 : 0;
    }
    return present;
}

std::vector<float> withGaps(std::vector<float> series, const std::vector<std::uint8_t> &present) {
    for (std::size_t i = 0; i < series.size(); ++i) {
        series[i] = present[i] == 0 ? std::numeric_limits<float>::quiet_NaN() : series[i];
    }
    return series;
}

std::uint16_t announcedSamples(const Burst &burst) {
    return static_cast<std::uint16_t>(std::min<std::size_t>(burst.pressure.size(), OV_MAX_SAMPLES));
}

} // namespace orvik
