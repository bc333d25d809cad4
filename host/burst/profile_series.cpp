#include "burst/profile_series.hpp"

#include <algorithm>
#include <array>
#include <cmath>
#include <utility>

#include "orvikbase/ov_types.h"
#include "user_error.hpp"

namespace orvik {

namespace {

constexpr const char *kSample = "sample";
constexpr const char *kCell = "cell";
constexpr const char *kBeam = "beam";

constexpr std::array<std::pair<const char *, VelocitySystem>, 3> kSystems{
    {{"beam", VelocitySystem::beam}, {"xyz", VelocitySystem::xyz}, {"enu", VelocitySystem::enu}}};

std::vector<std::uint8_t> asBytes(const std::vector<double> &values, std::uint8_t missing) {
    std::vector<std::uint8_t> bytes(values.size());
    std::transform(values.begin(), values.end(), bytes.begin(), [missing](double value) {
        return std::isfinite(value)
                   ? static_cast<std::uint8_t>(std::clamp(std::round(value), 0.0, 255.0))
                   : missing;
    });
    return bytes;
}

} // namespace

bool holdsProfiles(const NcReader &file) {
    return std::any_of(kSystems.begin(), kSystems.end(), [&file](const auto &system) {
        const auto variable = file.find(std::string("velocity_") + system.first);
        return variable && variable->axis(kCell).has_value();
    });
}

ProfileSeries::ProfileSeries(const NcReader &file, const std::string &burstDimension,
                             VelocitySystem wanted)
    : file_(file), burstDimension_(burstDimension) {
    for (const auto &[name, system] : kSystems) {
        const auto variable = file.find(std::string("velocity_") + name);
        const bool wantedOne = wanted == VelocitySystem::none || wanted == system;
        if (variable && wantedOne && !velocity_) {
            velocity_ = findColumn(file, variable->name, Quantity::velocity,
                                   {burstDimension, kSample, name, kCell});
            component_ = name;
            system_ = system;
        }
    }
    if (!velocity_) {
        throw UserError(file.path() + " has no velocities in the wanted system");
    }
    beams_ = velocity_->variable.dimensions[*velocity_->variable.axis(component_)].length;
    cells_ = velocity_->variable.dimensions[*velocity_->variable.axis(kCell)].length;
    if (beams_ != 3 && beams_ != 4) {
        throw UserError("dimension " + component_ + " in " + file.path() + " is " +
                        std::to_string(beams_) + " long: profiles have 3 or 4 beams");
    }
    if (cells_ == 0 || cells_ > OV_MAX_CELLS) {
        throw UserError("dimension cell in " + file.path() + " is " + std::to_string(cells_) +
                        " long: profiles have 1 to " + std::to_string(OV_MAX_CELLS) + " cells");
    }
    amplitude_ =
        findColumn(file, "amplitude", Quantity::plain, {burstDimension, kSample, kBeam, kCell});
    correlation_ =
        findColumn(file, "correlation", Quantity::share, {burstDimension, kSample, kBeam, kCell});
    for (const auto &column : {amplitude_, correlation_}) {
        if (column) {
            checkLengths(*column, kBeam);
        }
    }
}

void ProfileSeries::checkLengths(const Column &column, const std::string &component) const {
    const std::size_t beams = column.variable.dimensions[*column.variable.axis(component)].length;
    if (beams != beams_) {
        throw UserError("variable " + column.variable.name + " in " + file_.path() + " has " +
                        std::to_string(beams) + " beams, " + velocity_->variable.name + " has " +
                        std::to_string(beams_));
    }
}

// A burst's values by sample, beam and cell, whatever the order in the file.
std::vector<double> ProfileSeries::inOrder(const Column &column, const std::string &component,
                                           std::size_t burst) const {
    const std::vector<double> values = readSlice(file_, column, burstDimension_, burst);
    const std::array<std::string, 3> wanted{kSample, component, kCell};
    std::array<std::size_t, 3> length{};
    std::array<std::size_t, 3> stride{};
    std::size_t step = 1;
    for (auto axis = column.variable.dimensions.rbegin(); axis != column.variable.dimensions.rend();
         ++axis) {
        const auto at = std::find(wanted.begin(), wanted.end(), axis->name);
        if (at != wanted.end()) {
            const auto i = static_cast<std::size_t>(at - wanted.begin());
            length[i] = axis->length;
            stride[i] = step;
            step *= axis->length;
        }
    }
    std::vector<double> ordered;
    ordered.reserve(values.size());
    for (std::size_t s = 0; s < length[0]; ++s) {
        for (std::size_t b = 0; b < length[1]; ++b) {
            for (std::size_t c = 0; c < length[2]; ++c) {
                ordered.push_back(values[s * stride[0] + b * stride[1] + c * stride[2]]);
            }
        }
    }
    return ordered;
}

Profile ProfileSeries::read(std::size_t burst) const {
    Profile profile;
    profile.beams = beams_;
    profile.cells = cells_;
    const std::vector<double> velocity = inOrder(*velocity_, component_, burst);
    profile.velocity.assign(velocity.begin(), velocity.end());
    if (amplitude_) {
        profile.amplitude = asBytes(inOrder(*amplitude_, kBeam, burst), kUnknownAmplitude);
    }
    if (correlation_) {
        profile.correlation = asBytes(inOrder(*correlation_, kBeam, burst), 0);
    }
    return profile;
}

} // namespace orvik
