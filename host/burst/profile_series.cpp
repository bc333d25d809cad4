#include "burst/profile_series.hpp"
#include "burst/missing_velocities.hpp"

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

std::uint8_t asByte(double value, std::uint8_t missing) {
    return std::isfinite(value)
               ? static_cast<std::uint8_t>(std::clamp(std::round(value), 0.0, 255.0))
               : missing;
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
        throw MissingVelocities(file.path(), wanted);
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

std::vector<std::uint8_t> ProfileSeries::readEchoes(const Column &column, std::size_t burst,
                                                    std::uint8_t missing) const {
    return readOrdered<std::uint8_t>(file_, column, {burstDimension_, burst, 1},
                                     {kSample, kBeam, kCell},
                                     [missing](double value) { return asByte(value, missing); });
}

Profile ProfileSeries::read(std::size_t burst) const {
    Profile profile;
    profile.beams = beams_;
    profile.cells = cells_;
    profile.velocity =
        readOrdered(file_, *velocity_, {burstDimension_, burst, 1}, {kSample, component_, kCell});
    if (amplitude_) {
        profile.amplitude = readEchoes(*amplitude_, burst, kUnknownAmplitude);
    }
    if (correlation_) {
        profile.correlation = readEchoes(*correlation_, burst, 0);
    }
    return profile;
}

void ProfileSeries::addCourses(std::vector<NcReader::Course> &courses) const {
    for (const auto &column : {velocity_, amplitude_, correlation_}) {
        addCourse(column, burstDimension_, courses);
    }
}

} // namespace orvik
