#include "burst/burst_file.hpp"

#include <algorithm>
#include <cmath>

#include "burst/geometry.hpp"
#include "burst/instrument_facts.hpp"
#include "netcdf/nc_file.hpp"
#include "netcdf/units.hpp"
#include "user_error.hpp"

namespace orvik {

namespace {

constexpr const char *kSample = "sample";
constexpr const char *kTrackSample = "surface_track_sample";
constexpr std::array<const char *, 3> kAttitude{"heading", "pitch", "roll"};

// A variable and the factor that brings it into the unit of burst files.
struct Column {
    NcVariable variable;
    double factor = 1.0;
};

void requireShape(const NcReader &file, const NcVariable &variable,
                  const std::vector<std::string> &expected) {
    bool fits = variable.dimensions.size() == expected.size();
    std::string names;
    for (const std::string &name : expected) {
        fits = fits && variable.axis(name).has_value();
        names += (names.empty() ? "" : ", ") + name;
    }
    if (!fits) {
        throw UserError("variable " + variable.name + " in " + file.path() +
                        " has the dimensions " + variable.shapeText() + ", expected (" + names +
                        ") in any order");
    }
}

void requireThree(const NcReader &file, const NcVariable &variable, const std::string &dimension) {
    const std::size_t length = variable.dimensions[*variable.axis(dimension)].length;
    if (length != 3) {
        throw UserError("dimension " + dimension + " of variable " + variable.name + " in " +
                        file.path() + " is " + std::to_string(length) + " long, expected 3");
    }
}

// Mean of angles in degrees that survives the step from 360 to 0; missing ones are left out.
double meanAngle(const std::vector<double> &angles) {
    double east = 0.0;
    double north = 0.0;
    for (const double angle : angles) {
        if (std::isfinite(angle)) {
            east += std::sin(angle * kRadiansPerDegree);
            north += std::cos(angle * kRadiansPerDegree);
        }
    }
    return east == 0.0 && north == 0.0 ? kUnknown : std::atan2(east, north) / kRadiansPerDegree;
}

} // namespace

struct BurstFileReader::Impl {
    Impl(const std::string &path, const Overrides &userValues) : file(path), overrides(userValues) {
        checkOverrides(overrides);
        findBursts();
        instrument = readInstrument(file, overrides);
        findSeries();
        findVelocity();
        findTrack();
        findAttitude();
        for (std::size_t i = 0; i < kTruthVariables.size(); ++i) {
            truth[i] = findTruth(kTruthVariables[i]);
        }
    }

    void findBursts();
    void findSeries();
    void findVelocity();
    void findTrack();
    void findAttitude();
    [[nodiscard]] std::optional<Column> findColumn(const std::string &name, Quantity quantity,
                                                   const std::vector<std::string> &shape) const;
    [[nodiscard]] std::optional<Column> findTruth(const TruthVariable &wanted) const;
    [[nodiscard]] std::vector<double> readSlice(const Column &column, std::size_t burst) const;
    [[nodiscard]] std::vector<float> readSeries(const Column &column, std::size_t burst) const;
    [[nodiscard]] std::array<std::vector<double>, 3>
    readThree(const Column &column, const std::string &dimension, std::size_t burst) const;
    void readVelocity(Burst &burst, std::size_t index) const;
    void readAmplitude(Burst &burst, std::size_t index) const;

    NcReader file;
    Overrides overrides;
    Instrument instrument;
    std::string burstDimension;
    std::size_t bursts = 0;
    std::size_t samples = 0;
    VelocitySystem system = VelocitySystem::none;
    std::string componentDimension; // of `velocity`; empty: one variable a component
    std::vector<Column> velocity;
    std::optional<Column> time;
    double timeEpoch = 0.0;
    std::optional<Column> pressure;
    std::optional<Column> track;
    std::optional<Column> amplitude;
    std::optional<Column> valid;
    std::array<std::optional<Column>, 3> attitude;
    std::array<std::optional<Column>, kTruthVariables.size()> truth;
};

void BurstFileReader::Impl::findBursts() {
    for (const char *name : {"time", "burst"}) {
        if (const auto length = file.dimensionLength(name)) {
            burstDimension = name;
            bursts = *length;
            break;
        }
    }
    const auto length = file.dimensionLength(kSample);
    if (burstDimension.empty() || !length) {
        throw UserError(file.path() + " is not a burst file: it has no dimension " +
                        (burstDimension.empty() ? "time (or burst)" : kSample));
    }
    samples = *length;
    if (bursts == 0 || samples == 0) {
        throw UserError(file.path() + " holds no " + (bursts == 0 ? "bursts" : "samples") +
                        ": its dimension " + (bursts == 0 ? burstDimension : kSample) +
                        " is empty");
    }
}

std::optional<Column>
BurstFileReader::Impl::findColumn(const std::string &name, Quantity quantity,
                                  const std::vector<std::string> &shape) const {
    const auto variable = file.find(name);
    if (!variable) {
        return std::nullopt;
    }
    requireShape(file, *variable, shape);
    return Column{*variable, unitFactor(file, *variable, quantity)};
}

std::optional<Column> BurstFileReader::Impl::findTruth(const TruthVariable &wanted) const {
    const std::string units = wanted.units;
    const Quantity quantity = units == "m"        ? Quantity::length
                              : units == "s"      ? Quantity::duration
                              : units == "degree" ? Quantity::angle
                                                  : Quantity::velocity;
    return findColumn(wanted.name, quantity, {burstDimension});
}

void BurstFileReader::Impl::findSeries() {
    pressure = findColumn("pressure", Quantity::pressure, {burstDimension, kSample});
    if (!pressure) {
        throw UserError("pressure is missing in " + file.path() + ": every method needs it");
    }
    valid = findColumn("sample_valid", Quantity::plain, {burstDimension, kSample});
    amplitude = findColumn("amplitude", Quantity::plain, {burstDimension, kSample, "beam"});
    if (amplitude) {
        requireThree(file, amplitude->variable, "beam");
    }
    for (const char *name : {"time", "burst_start_time"}) {
        const auto variable = file.find(name);
        if (variable && !time) {
            requireShape(file, *variable, {burstDimension});
            const TimeUnit unit = timeUnit(file, *variable);
            time = Column{*variable, unit.scale};
            timeEpoch = unit.epoch;
        }
    }
    if (overrides.count("time") != 0 && bursts > 1) {
        throw UsageError("--set time is for a file with one burst; " + file.path() + " holds " +
                         std::to_string(bursts));
    }
}

void BurstFileReader::Impl::findVelocity() {
    const std::array<std::pair<const char *, VelocitySystem>, 3> systems{
        {{"beam", VelocitySystem::beam},
         {"xyz", VelocitySystem::xyz},
         {"enu", VelocitySystem::enu}}};
    for (const auto &[name, candidate] : systems) {
        const std::string variable = std::string("velocity_") + name;
        if (const auto column =
                findColumn(variable, Quantity::velocity, {burstDimension, kSample, name})) {
            requireThree(file, column->variable, name);
            velocity = {*column};
            componentDimension = name;
            system = candidate;
            break;
        }
    }
    if (velocity.empty()) {
        for (const char *name : {"velocity_east", "velocity_north", "velocity_up"}) {
            if (const auto column =
                    findColumn(name, Quantity::velocity, {burstDimension, kSample})) {
                velocity.push_back(*column);
            } else if (!velocity.empty() && velocity.size() < 2) {
                throw UserError(std::string(name) + " is missing in " + file.path() +
                                ", which has velocity_east");
            }
        }
        system = velocity.empty() ? VelocitySystem::none : VelocitySystem::enu;
    }
    if (system != VelocitySystem::none && !std::isfinite(instrument.cellRange)) {
        throw UserError(missingText("cell_range", file.path()));
    }
}

void BurstFileReader::Impl::findTrack() {
    track = findColumn("surface_track_distance", Quantity::length, {burstDimension, kTrackSample});
    if (!track) {
        return;
    }
    const std::size_t length = *file.dimensionLength(kTrackSample);
    if (length != 2 * samples) {
        throw UserError("variable surface_track_distance in " + file.path() + " has " +
                        std::to_string(length) + " values a burst, expected two for each of the " +
                        std::to_string(samples) + " samples");
    }
    if (std::abs(instrument.trackSamplingRate - 2.0 * instrument.samplingRate) > 1e-6) {
        throw UserError("surface_track_sampling_rate in " + file.path() +
                        " must be twice sampling_rate");
    }
}

void BurstFileReader::Impl::findAttitude() {
    for (std::size_t i = 0; i < kAttitude.size(); ++i) {
        const auto variable = file.find(kAttitude[i]);
        if (!variable || overrides.count(kAttitude[i]) != 0) {
            continue;
        }
        if (!variable->dimensions.empty() &&
            !(variable->dimensions.size() == 1 && variable->axis(burstDimension))) {
            requireShape(file, *variable, {burstDimension, kSample});
        }
        attitude[i] = Column{*variable, unitFactor(file, *variable, Quantity::angle)};
    }
}

// The values of one burst, in the order of the variable's other dimensions.
std::vector<double> BurstFileReader::Impl::readSlice(const Column &column,
                                                     std::size_t burst) const {
    std::vector<std::size_t> start;
    std::vector<std::size_t> count;
    for (const NcDimension &dimension : column.variable.dimensions) {
        const bool isBurst = dimension.name == burstDimension;
        start.push_back(isBurst ? burst : 0);
        count.push_back(isBurst ? 1 : dimension.length);
    }
    std::vector<double> values = file.read(column.variable, start, count);
    for (double &value : values) {
        value *= column.factor;
    }
    return values;
}

std::vector<float> BurstFileReader::Impl::readSeries(const Column &column,
                                                     std::size_t burst) const {
    const std::vector<double> values = readSlice(column, burst);
    std::vector<float> series(values.size());
    std::transform(values.begin(), values.end(), series.begin(),
                   [](double value) { return static_cast<float>(value); });
    return series;
}

std::array<std::vector<double>, 3> BurstFileReader::Impl::readThree(const Column &column,
                                                                    const std::string &dimension,
                                                                    std::size_t burst) const {
    const std::vector<double> values = readSlice(column, burst);
    const bool samplesFirst = *column.variable.axis(kSample) < *column.variable.axis(dimension);
    std::array<std::vector<double>, 3> rows;
    for (std::size_t row = 0; row < 3; ++row) {
        rows[row].resize(samples);
        for (std::size_t i = 0; i < samples; ++i) {
            rows[row][i] = values[samplesFirst ? 3 * i + row : row * samples + i];
        }
    }
    return rows;
}

void BurstFileReader::Impl::readVelocity(Burst &burst, std::size_t index) const {
    burst.velocitySystem = system;
    if (system == VelocitySystem::none) {
        return;
    }
    if (!componentDimension.empty()) {
        const auto rows = readThree(velocity.front(), componentDimension, index);
        for (std::size_t row = 0; row < 3; ++row) {
            burst.velocity[row].assign(samples, 0.0F);
            std::transform(rows[row].begin(), rows[row].end(), burst.velocity[row].begin(),
                           [](double value) { return static_cast<float>(value); });
        }
        return;
    }
    for (std::size_t row = 0; row < 3; ++row) {
        burst.velocity[row] = row < velocity.size() ? readSeries(velocity[row], index)
                                                    : std::vector<float>(samples, 0.0F);
    }
}

void BurstFileReader::Impl::readAmplitude(Burst &burst, std::size_t index) const {
    if (!amplitude) {
        return;
    }
    const auto rows = readThree(*amplitude, "beam", index);
    for (std::size_t row = 0; row < 3; ++row) {
        burst.amplitude[row].assign(samples, kUnknownAmplitude);
        for (std::size_t i = 0; i < samples; ++i) {
            if (std::isfinite(rows[row][i])) {
                burst.amplitude[row][i] =
                    static_cast<std::uint16_t>(std::clamp(rows[row][i], 0.0, 65535.0));
            }
        }
    }
}

BurstFileReader::BurstFileReader(const std::string &path, const Overrides &overrides)
    : impl_(std::make_unique<Impl>(path, overrides)) {}

BurstFileReader::~BurstFileReader() = default;

const Instrument &BurstFileReader::instrument() const { return impl_->instrument; }

std::size_t BurstFileReader::burstCount() const { return impl_->bursts; }

std::size_t BurstFileReader::sampleCount() const { return impl_->samples; }

VelocitySystem BurstFileReader::velocitySystem() const { return impl_->system; }

bool BurstFileReader::hasTrack() const { return impl_->track.has_value(); }

bool BurstFileReader::hasTruth() const {
    return std::any_of(impl_->truth.begin(), impl_->truth.end(),
                       [](const auto &column) { return column.has_value(); });
}

void BurstFileReader::requireAttitude() const {
    for (std::size_t i = 0; i < kAttitude.size(); ++i) {
        if (!impl_->attitude[i] && impl_->overrides.count(kAttitude[i]) == 0) {
            throw UserError(missingText(kAttitude[i], impl_->file.path()));
        }
    }
}

void BurstFileReader::requireBeams() const {
    if (!impl_->instrument.beamToXyz && impl_->instrument.beamAzimuth.empty()) {
        throw UserError(missingText("beam_to_xyz", impl_->file.path()) +
                        ", or the azimuths with --set beam_azimuth");
    }
}

Burst BurstFileReader::readBurst(std::size_t index) const {
    const Impl &impl = *impl_;
    Burst burst;
    if (const auto given = overrideNumbers(impl.overrides, "time")) {
        burst.startTime = given->front();
    } else if (impl.time) {
        burst.startTime = impl.readSlice(*impl.time, index).front() + impl.timeEpoch;
    }
    const std::array<double *, 3> angles{&burst.heading, &burst.pitch, &burst.roll};
    for (std::size_t i = 0; i < kAttitude.size(); ++i) {
        if (const auto given = overrideNumbers(impl.overrides, kAttitude[i])) {
            *angles[i] = given->front();
        } else if (impl.attitude[i]) {
            *angles[i] = meanAngle(impl.readSlice(*impl.attitude[i], index));
        }
    }
    burst.pressure = impl.readSeries(*impl.pressure, index);
    impl.readVelocity(burst, index);
    impl.readAmplitude(burst, index);
    if (impl.track) {
        burst.surfaceTrack = impl.readSeries(*impl.track, index);
    }
    if (impl.valid) {
        const std::vector<double> flags = impl.readSlice(*impl.valid, index);
        burst.valid.resize(flags.size());
        std::transform(flags.begin(), flags.end(), burst.valid.begin(), [](double flag) {
            return static_cast<std::uint8_t>(flag != 0.0 && !std::isnan(flag));
        });
    }
    return burst;
}

std::optional<Truth> BurstFileReader::readTruth(std::size_t index) const {
    Truth truth;
    bool any = false;
    for (std::size_t i = 0; i < kTruthVariables.size(); ++i) {
        if (const auto &column = impl_->truth[i]) {
            truth.*kTruthVariables[i].field = impl_->readSlice(*column, index).front();
            any = true;
        }
    }
    return any ? std::optional<Truth>(truth) : std::nullopt;
}

} // namespace orvik
