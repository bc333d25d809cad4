#include "burst/stretches.hpp"

#include <algorithm>
#include <cmath>
#include <limits>

#include <fmt/format.h>

#include "orvikbase/ov_types.h"
#include "user_error.hpp"

namespace orvik {

namespace {

// A pause of so few samples is a loss within a burst: no instrument pauses for so short a time.
constexpr double kMostLost = 10.0;
// The library completes a burst that lacks a tenth of its samples.
constexpr double kLeastShare = 0.9;

double quantile(std::vector<double> values, double share) {
    const auto at = static_cast<std::ptrdiff_t>(share * static_cast<double>(values.size() - 1));
    std::nth_element(values.begin(), values.begin() + at, values.end());
    return values[static_cast<std::size_t>(at)];
}

} // namespace

std::size_t Stretch::samples() const {
    std::size_t lost = 0;
    for (const Loss &loss : losses) {
        lost += loss.samples;
    }
    return rows + lost;
}

std::optional<TimeStep> TimeStep::of(const std::vector<double> &times) {
    std::vector<double> steps;
    for (std::size_t i = 1; i < times.size(); ++i) {
        const double step = times[i] - times[i - 1];
        if (step >= 0.0) {
            steps.push_back(step);
        }
    }
    if (steps.empty()) {
        return std::nullopt;
    }
    // Times in whole seconds at 4 Hz have steps of 0 and 1 s: what pauses is longer than any of these.
    const double usual = std::max(quantile(steps, 0.5), quantile(steps, 0.9));
    double sum = 0.0;
    std::size_t count = 0;
    std::vector<double> ordinary;
    for (const double step : steps) {
        if (step <= 1.5 * usual) {
            sum += step;
            ++count;
            ordinary.push_back(step);
        }
    }
    if (!(sum > 0.0)) {
        return std::nullopt;
    }
    TimeStep result;
    result.seconds = sum / static_cast<double>(count);
    double widest = 0.0;
    for (const double step : ordinary) {
        widest = std::max(widest, std::abs(step - result.seconds));
    }
    result.tolerance = std::max(0.5 * result.seconds, 1.1 * widest);
    return result;
}

double TimeStep::rate() const {
    constexpr double kClose = 0.005;
    const double rate = 1.0 / seconds;
    const double whole = std::round(rate);
    return whole >= 1.0 && std::abs(rate - whole) <= kClose * whole ? whole : rate;
}

StretchCutter::StretchCutter(std::string name, std::optional<TimeStep> step,
                             std::optional<std::size_t> length)
    : name_(std::move(name)), step_(step), length_(length) {}

void StretchCutter::close() {
    const bool whole = !length_ || static_cast<double>(current_.samples()) >=
                                       kLeastShare * static_cast<double>(*length_);
    if (current_.rows > 0 && whole) {
        done_.push_back(current_);
    } else {
        leftOut_ += current_.rows;
    }
    current_ = Stretch{};
}

void StretchCutter::add(double time, bool begins) {
    if (!std::isfinite(time)) {
        throw UserError(fmt::format(
            "the time in {} is missing at its row {}: each sample needs one", name_, row_ + 1));
    }
    std::size_t lost = 0;
    bool pause = begins;
    if (step_ && current_.rows > 0 && !begins) {
        const double gap = time - last_;
        if (!(gap >= 0.0)) {
            throw UserError(fmt::format("the time in {} goes back by {:g} s at its row {}: times "
                                        "must ascend",
                                        name_, -gap, row_ + 1));
        }
        if (gap > step_->seconds + step_->tolerance) {
            const double missing = std::round(gap / step_->seconds) - 1.0;
            pause = missing > kMostLost;
            lost = pause ? 0 : static_cast<std::size_t>(std::max(missing, 0.0));
        }
    }
    if (pause || (length_ && current_.samples() + lost >= *length_)) {
        close();
        lost = 0;
    }
    if (current_.rows == 0) {
        ++begun_;
        current_.firstRow = row_;
        current_.startTime = time;
    }
    if (lost > 0) {
        current_.losses.push_back({current_.rows, lost});
    }
    ++current_.rows;
    ++row_;
    last_ = time;
}

std::vector<Stretch> StretchCutter::finish() {
    close();
    const auto longest =
        std::max_element(done_.begin(), done_.end(), [](const Stretch &left, const Stretch &right) {
            return left.samples() < right.samples();
        });
    if (!length_ && longest != done_.end() && longest->samples() > OV_MAX_SAMPLES) {
        throw UserError(
            fmt::format("{} samples of {} follow one another without a pause: say with "
                        "--burst-length SAMPLES how many make a burst, 2048 for example",
                        longest->samples(), name_));
    }
    return std::move(done_);
}

std::vector<float> withLosses(const Stretch &stretch, std::vector<float> series,
                              std::size_t width) {
    constexpr float kMissing = std::numeric_limits<float>::quiet_NaN();
    series.resize(stretch.rows * width, kMissing); // a file may have lost rows since it was cut
    if (stretch.losses.empty()) {
        return series;
    }
    std::vector<float> result;
    result.reserve(stretch.samples() * width);
    std::size_t from = 0;
    const auto copyTo = [&](std::size_t row) {
        result.insert(result.end(), series.begin() + static_cast<std::ptrdiff_t>(from * width),
                      series.begin() + static_cast<std::ptrdiff_t>(row * width));
        from = row;
    };
    for (const Stretch::Loss &loss : stretch.losses) {
        copyTo(loss.row);
        result.insert(result.end(), loss.samples * width, kMissing);
    }
    copyTo(stretch.rows);
    return result;
}

std::vector<std::uint8_t> validOf(const Stretch &stretch) {
    std::vector<std::uint8_t> valid;
    if (stretch.losses.empty()) {
        return valid;
    }
    std::size_t from = 0;
    for (const Stretch::Loss &loss : stretch.losses) {
        valid.insert(valid.end(), loss.row - from, 1);
        valid.insert(valid.end(), loss.samples, 0);
        from = loss.row;
    }
    valid.insert(valid.end(), stretch.rows - from, 1);
    return valid;
}

} // namespace orvik
