#include "burst/layout_source.hpp"

#include <algorithm>
#include <cmath>

#include <fmt/format.h>

#include "burst/geometry.hpp"
#include "burst/instrument_facts.hpp"
#include "burst/mean_angle.hpp"
#include "run/beam_timing.hpp"
#include "user_error.hpp"

namespace orvik {

namespace {

constexpr int kProfileType = 16;
constexpr std::size_t kFewCells = 3;
constexpr std::array<const char *, 3> kAttitude{"heading", "pitch", "roll"};
// The library takes away the velocity noise of a point instrument with cells of the size told. Of an instrument of another
// kind that noise is not known; so long a cell has none to speak of.
constexpr double kNoiselessCell = 1000.0; // [m]

template <typename Value>
std::vector<Value> rounded(const std::vector<float> &values, double most, Value missing) {
    std::vector<Value> counts(values.size());
    std::transform(values.begin(), values.end(), counts.begin(), [&](float value) {
        const double count = std::round(static_cast<double>(value));
        return std::isfinite(count) ? static_cast<Value>(std::clamp(count, 0.0, most)) : missing;
    });
    return counts;
}

} // namespace

LayoutSource::LayoutSource(std::unique_ptr<LayoutData> data, const Overrides &overrides)
    : data_(std::move(data)), overrides_(overrides), known_(data_->facts()),
      notes_(data_->notes()) {
    checkOverrides(overrides_);
    if (data_->burstCount() == 0) {
        throw UserError(data_->path() + " holds no bursts");
    }
    if (overrides_.count("time") != 0 && data_->burstCount() > 1 && !data_->countsFromStart()) {
        throw UsageError(overrides_.nameWithOrigin("time") +
                         " is for one burst, or times that count from 0; " + data_->path() +
                         " holds " + std::to_string(data_->burstCount()));
    }
    simultaneous_ = factNumber(known_, overrides_, "simultaneous_sampling").value_or(1.0) != 0.0;
    const DataShape &shape = data_->shape();
    if (isProfile()) {
        instrument_ = readProfileInstrument(sources(), shape.beams, shape.cells);
    } else {
        describePoint();
    }
}

bool LayoutSource::isProfile() const {
    const DataShape &shape = data_->shape();
    if (shape.system == VelocitySystem::none) {
        return false;
    }
    if (const auto type = factNumber(known_, overrides_, "instrument_type")) {
        return *type == kProfileType;
    }
    const bool fourBeams = shape.beams == 4 && shape.system == VelocitySystem::beam;
    return fourBeams ||
           (overrides_.count("velocity_cell") == 0 && shape.cells > kFewCells && shape.correlation);
}

// The cell that is used, and where it is.
void LayoutSource::describePoint() {
    const DataShape &shape = data_->shape();
    if (shape.beams == 4 && shape.system == VelocitySystem::beam) {
        throw UserError("the velocities in " + data_->path() +
                        " are along four beams: point instruments have three; leave out "
                        "instrument_type");
    }
    const auto chosen = factNumber(known_, overrides_, "velocity_cell");
    const double cell = chosen.value_or(0.0);
    if (cell != std::floor(cell) || cell < 0.0 || cell >= static_cast<double>(shape.cells)) {
        throw UserError(fmt::format("velocity_cell {:g} is not in {}: its cells are 0 to {}", cell,
                                    data_->path(), shape.cells - 1));
    }
    cell_ = static_cast<std::size_t>(cell);
    if (shape.cells > 1 && !chosen) {
        notes_.push_back(fmt::format("of {} velocity cells that nearest the head is used: choose "
                                     "another with --set velocity_cell=NUMBER",
                                     shape.cells));
    }
    const auto distances = known_.find("cell_distance");
    const bool told =
        factNumber(known_, overrides_, "velocity_height_above_bed") || known_.count("cell_range");
    if (distances != known_.end() && !told) {
        const double slant =
            factNumber(known_, overrides_, "beam_slant_angle").value_or(Instrument{}.slantAngle);
        known_["cell_range"] = {
            {distances->second.values.at(cell_) / std::cos(slant * kRadiansPerDegree)},
            distances->second.origin};
    }
    Overrides given = overrides_;
    if (simultaneous_) {
        if (given.erase("cell_size") > 0) {
            notes_.emplace_back("cell_size has no part here: no velocity noise is removed from "
                                "series whose sensors sample at once");
        }
        known_["cell_size"] = {{kNoiselessCell}, ""};
    }
    instrument_ = readInstrument({known_, given, data_->path()});
    if (shape.system != VelocitySystem::none && !std::isfinite(instrument_.cellRange)) {
        throw MissingFact("cell_range", data_->path(),
                          ", or the height with --set velocity_height_above_bed");
    }
}

void LayoutSource::requireAttitude() const {
    for (std::size_t i = 0; i < kAttitude.size(); ++i) {
        if (!data_->shape().attitude[i] && overrides_.count(kAttitude[i]) == 0) {
            throw MissingFact(kAttitude[i], data_->path());
        }
    }
}

void LayoutSource::requireBeams() const { requireBeamsOf(instrument_, data_->path()); }

double LayoutSource::startTime(std::size_t index) const {
    const auto given = overrideNumbers(overrides_, "time");
    return given && !data_->countsFromStart() ? given->front() : data_->startTime(index);
}

void LayoutSource::readAttitude(const RawBurst &raw, Burst &burst) const {
    const std::array<double *, 3> angles{&burst.heading, &burst.pitch, &burst.roll};
    for (std::size_t i = 0; i < kAttitude.size(); ++i) {
        if (const auto given = overrideNumbers(overrides_, kAttitude[i])) {
            *angles[i] = given->front();
        } else {
            *angles[i] = meanAngle(raw.attitude[i]);
            if (raw.attitude[i].size() == raw.pressure.size()) {
                burst.attitude[i] = raw.attitude[i];
            }
        }
    }
}

void LayoutSource::fillProfile(RawBurst &raw, Burst &burst) const {
    const DataShape &shape = data_->shape();
    burst.profile.emplace();
    burst.profile->beams = shape.beams;
    burst.profile->cells = shape.cells;
    burst.profile->velocity = std::move(raw.velocity);
    burst.profile->amplitude =
        rounded<std::uint8_t>(raw.amplitude, 255.0, static_cast<std::uint8_t>(kUnknownAmplitude));
    burst.profile->correlation = rounded<std::uint8_t>(raw.correlation, 255.0, 0);
    // A profile instrument tracks the surface once a sample.
    for (std::size_t i = 0; i < raw.track.size(); i += shape.trackPerSample) {
        burst.surfaceTrack.push_back(raw.track[i]);
    }
}

void LayoutSource::fillPoint(const RawBurst &raw, Burst &burst) const {
    const DataShape &shape = data_->shape();
    const std::size_t samples = raw.pressure.size();
    const std::vector<std::uint16_t> amplitude =
        rounded<std::uint16_t>(raw.amplitude, 65535.0, kUnknownAmplitude);
    const bool moving = shape.system != VelocitySystem::none;
    for (std::size_t b = 0; moving && b < 3; ++b) {
        for (std::size_t i = 0; i < samples; ++i) {
            const std::size_t at = (i * shape.beams + b) * shape.cells + cell_;
            burst.velocity[b].push_back(b < shape.beams ? raw.velocity[at] : 0.0F);
            if (!amplitude.empty() && b < shape.beams) {
                burst.amplitude[b].push_back(amplitude[at]);
            }
        }
    }
    for (std::size_t i = 0; i < samples && shape.trackPerSample > 0; ++i) {
        burst.surfaceTrack.push_back(raw.track[i * shape.trackPerSample]);
        burst.surfaceTrack.push_back(
            raw.track[i * shape.trackPerSample + shape.trackPerSample - 1]);
    }
    if (simultaneous_) {
        bringToInstants(burst);
    }
}

// To the instants at which a point instrument's sensors take turns, where the library expects their series.
void LayoutSource::bringToInstants(Burst &burst) const {
    const double rate = instrument_.samplingRate;
    const std::size_t samples = burst.pressure.size();
    // Interpolation hides what is missing.
    if (burst.valid.empty()) {
        burst.valid.assign(samples, 1);
    }
    for (std::size_t i = 0; i < samples; ++i) {
        burst.valid[i] = std::isfinite(burst.pressure[i]) ? burst.valid[i] : std::uint8_t{0};
    }
    const bool hasTrack = !burst.surfaceTrack.empty();
    burst.pressure = shiftedSeries(burst.pressure, -pressureDelay(instrument_, hasTrack) * rate);
    // Each for itself comes to its instant once it is along the beams, or of the components that the method takes.
    burst.velocitiesAtOnce = true;
    if (!hasTrack) {
        return;
    }
    std::vector<float> track;
    if (data_->shape().trackPerSample == 2) {
        track = shiftedSeries(burst.surfaceTrack, -kTrackDelay * 2.0 * rate);
    } else {
        std::vector<float> once;
        for (std::size_t i = 0; i < samples; ++i) {
            once.push_back(burst.surfaceTrack[2 * i]);
        }
        const std::vector<float> first = shiftedSeries(once, -kTrackDelay * rate);
        const std::vector<float> second = shiftedSeries(once, 0.5 - kTrackDelay * rate);
        for (std::size_t i = 0; i < samples; ++i) {
            track.push_back(first[i]);
            track.push_back(second[i]);
        }
    }
    for (std::size_t m = 0; m < track.size(); ++m) {
        // A miss stays a miss, for the library to count and to mend.
        track[m] = std::isfinite(burst.surfaceTrack[m]) ? track[m] : burst.surfaceTrack[m];
    }
    burst.surfaceTrack = track;
}

Burst LayoutSource::readBurst(std::size_t index) const {
    RawBurst raw = data_->read(index);
    Burst burst;
    burst.startTime = startTime(index);
    burst.pressure = raw.pressure;
    burst.valid = raw.valid;
    burst.velocitySystem = data_->shape().system;
    correctPressure(sources(), burst.pressure);
    readAttitude(raw, burst);
    if (instrument_.profile) {
        fillProfile(raw, burst);
    } else {
        fillPoint(raw, burst);
    }
    return burst;
}

} // namespace orvik
