#include "burst/burst_file.hpp"

#include <algorithm>
#include <cmath>

#include "burst/column.hpp"
#include "burst/instrument_facts.hpp"
#include "burst/mean_angle.hpp"
#include "burst/missing_velocities.hpp"
#include "burst/profile_series.hpp"
#include "burst/time_order.hpp"
#include "user_error.hpp"

namespace orvik {

namespace {

constexpr const char *kSample = "sample";
constexpr const char *kTrackSample = "surface_track_sample";
constexpr std::array<const char *, 3> kAttitude{"heading", "pitch", "roll"};
constexpr std::array<const char *, 3> kComponents{"velocity_east", "velocity_north", "velocity_up"};

void requireThree(const NcReader &file, const NcVariable &variable, const std::string &dimension) {
    const std::size_t length = variable.dimensions[*variable.axis(dimension)].length;
    if (length != 3) {
        throw UserError("dimension " + dimension + " of variable " + variable.name + " in " +
                        file.path() + " is " + std::to_string(length) + " long, expected 3");
    }
}

template <typename Value>
std::array<std::vector<Value>, 3> thirds(const std::vector<Value> &values) {
    std::array<std::vector<Value>, 3> parts;
    const auto length = static_cast<std::ptrdiff_t>(values.size() / 3);
    auto from = values.begin();
    for (std::vector<Value> &part : parts) {
        part.assign(from, from + length);
        from += length;
    }
    return parts;
}

} // namespace

struct BurstFileReader::Impl {
    Impl(const std::string &path, const Overrides &userValues, VelocitySystem theSystem)
        : file(path), overrides(userValues), wantedSystem(theSystem) {
        checkOverrides(overrides);
        for (const char *name : {"velocity_cell", "simultaneous_sampling"}) {
            if (overrides.count(name) != 0) {
                throw UsageError(overrides.nameWithOrigin(name) +
                                 " is not for burst files: " + path + " tells it by its layout");
            }
        }
        known = factsOfBurstFile(file);
        findBursts();
        if (holdsProfiles(file)) {
            findProfiles();
        } else {
            instrument = readInstrument(facts());
            findVelocity();
        }
        findSeries();
        findTrack();
        findAttitude();
        for (std::size_t i = 0; i < kTruthVariables.size(); ++i) {
            truth[i] = findTruth(kTruthVariables[i]);
        }
        readAhead();
    }

    [[nodiscard]] FactSources facts() const { return {known, overrides, file.path()}; }
    void findBursts();
    void findSeries();
    void findVelocity();
    void findComponents();
    void findProfiles();
    void findTrack();
    void findAttitude();
    [[nodiscard]] std::optional<Column> findTruth(const TruthVariable &wanted) const;
    void readAhead() const;
    // In the order of the column's dimensions.
    template <typename Value>
    [[nodiscard]] std::vector<Value> readBurstOf(const Column &column, std::size_t burst) const {
        std::vector<std::string> order;
        for (const NcDimension &axis : column.variable.dimensions) {
            if (axis.name != burstDimension) {
                order.push_back(axis.name);
            }
        }
        return readOrdered<Value>(file, column, {burstDimension, burst, 1}, order);
    }
    void readVelocity(Burst &burst, std::size_t index) const;
    void readAmplitude(Burst &burst, std::size_t index) const;

    NcReader file;
    Overrides overrides;
    KnownFacts known;
    Instrument instrument;
    std::string burstDimension;
    std::size_t bursts = 0;
    std::size_t samples = 0;
    VelocitySystem wantedSystem;
    VelocitySystem system = VelocitySystem::none;
    std::optional<ProfileSeries> profiles;
    std::string componentDimension; // of `velocity`; empty: one variable a component
    std::vector<Column> velocity;
    std::vector<double> times; // [s since 1970-01-01 00:00:00 UTC]; empty: none are told
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
    if (!length && file.find("hm0")) {
        throw UserError(file.path() + " is a result file, not a burst file: orvik show, explain, "
                                      "report and convert read it");
    }
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

std::optional<Column> BurstFileReader::Impl::findTruth(const TruthVariable &wanted) const {
    const std::string units = wanted.units;
    const Quantity quantity = units == "m"        ? Quantity::length
                              : units == "s"      ? Quantity::duration
                              : units == "degree" ? Quantity::angle
                                                  : Quantity::velocity;
    return findColumn(file, wanted.name, quantity, {burstDimension});
}

void BurstFileReader::Impl::findSeries() {
    pressure = findColumn(file, "pressure", Quantity::pressure, {burstDimension, kSample});
    if (!pressure) {
        throw UserError("pressure is missing in " + file.path() + ": every method needs it");
    }
    valid = findColumn(file, "sample_valid", Quantity::plain, {burstDimension, kSample});
    if (!profiles) {
        amplitude =
            findColumn(file, "amplitude", Quantity::plain, {burstDimension, kSample, "beam"});
    }
    if (amplitude) {
        requireThree(file, amplitude->variable, "beam");
    }
    for (const char *name : {"time", "burst_start_time"}) {
        const auto variable = file.find(name);
        if (variable && times.empty()) {
            requireShape(file, *variable, {burstDimension});
            times = timesOf(file, *variable);
        }
    }
    if (overrides.count("time") != 0 && bursts > 1) {
        throw UsageError(overrides.nameWithOrigin("time") + " is for a file with one burst; " +
                         file.path() + " holds " + std::to_string(bursts));
    }
}

void BurstFileReader::Impl::findVelocity() {
    const std::array<std::pair<const char *, VelocitySystem>, 3> systems{
        {{"beam", VelocitySystem::beam},
         {"xyz", VelocitySystem::xyz},
         {"enu", VelocitySystem::enu}}};
    for (const auto &[name, candidate] : systems) {
        const std::string variable = std::string("velocity_") + name;
        if (wantedSystem != VelocitySystem::none && wantedSystem != candidate) {
            continue;
        }
        if (const auto column =
                findColumn(file, variable, Quantity::velocity, {burstDimension, kSample, name})) {
            requireThree(file, column->variable, name);
            velocity = {*column};
            componentDimension = name;
            system = candidate;
            break;
        }
    }
    if (velocity.empty() &&
        (wantedSystem == VelocitySystem::none || wantedSystem == VelocitySystem::enu)) {
        findComponents();
    }
    if (system == VelocitySystem::none && wantedSystem != VelocitySystem::none) {
        throw MissingVelocities(file.path(), wantedSystem);
    }
    if (system != VelocitySystem::none && !std::isfinite(instrument.cellRange)) {
        throw MissingFact("cell_range", file.path());
    }
}

// East, north, up, one variable each, of which only the last may be missing.
void BurstFileReader::Impl::findComponents() {
    const auto *const there =
        std::find_if(kComponents.begin(), kComponents.end(),
                     [this](const char *name) { return file.find(name).has_value(); });
    if (there == kComponents.end()) {
        return;
    }
    for (const char *name : kComponents) {
        if (const auto column =
                findColumn(file, name, Quantity::velocity, {burstDimension, kSample})) {
            velocity.push_back(*column);
        } else if (name != kComponents.back()) {
            throw UserError(std::string(name) + " is missing in " + file.path() + ", which has " +
                            *there);
        }
    }
    system = VelocitySystem::enu;
}

void BurstFileReader::Impl::findProfiles() {
    profiles.emplace(file, burstDimension, wantedSystem);
    system = profiles->system();
    instrument = readProfileInstrument(facts(), profiles->beams(), profiles->cells());
}

// A profile instrument tracks the surface once a sample, a point instrument twice.
void BurstFileReader::Impl::findTrack() {
    const auto variable = file.find("surface_track_distance");
    if (!variable) {
        return;
    }
    const bool bySample = profiles && variable->axis(kSample).has_value();
    const std::string dimension = bySample ? kSample : kTrackSample;
    track = findColumn(file, variable->name, Quantity::length, {burstDimension, dimension});
    const std::size_t perSample = trackPerSample(instrument);
    const std::size_t length = *file.dimensionLength(dimension);
    if (length != perSample * samples) {
        throw UserError("variable surface_track_distance in " + file.path() + " has " +
                        std::to_string(length) + " values a burst, expected " +
                        (profiles ? "one" : "two") + " for each of the " + std::to_string(samples) +
                        " samples");
    }
    const double rate = static_cast<double>(perSample) * instrument.samplingRate;
    if (std::abs(instrument.trackSamplingRate - rate) > 1e-6) {
        throw UserError("surface_track_sampling_rate in " + file.path() + " must be " +
                        (profiles ? "" : "twice ") + "sampling_rate");
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

void BurstFileReader::Impl::readAhead() const {
    std::vector<NcReader::Course> courses;
    for (const auto &column : {pressure, track, amplitude, valid}) {
        addCourse(column, burstDimension, courses);
    }
    for (const auto &column : attitude) {
        addCourse(column, burstDimension, courses);
    }
    for (const Column &column : velocity) {
        addCourse(column, burstDimension, courses);
    }
    if (profiles) {
        profiles->addCourses(courses);
    }
    file.readAhead(courses);
}

void BurstFileReader::Impl::readVelocity(Burst &burst, std::size_t index) const {
    burst.velocitySystem = system;
    if (system == VelocitySystem::none) {
        return;
    }
    if (!componentDimension.empty()) {
        burst.velocity = thirds(readOrdered(file, velocity.front(), {burstDimension, index, 1},
                                            {componentDimension, kSample}));
        return;
    }
    for (std::size_t row = 0; row < 3; ++row) {
        burst.velocity[row] = row < velocity.size() ? readBurstOf<float>(velocity[row], index)
                                                    : std::vector<float>(samples, 0.0F);
    }
}

void BurstFileReader::Impl::readAmplitude(Burst &burst, std::size_t index) const {
    if (!amplitude) {
        return;
    }
    const auto counts = [](double value) {
        return std::isfinite(value) ? static_cast<std::uint16_t>(std::clamp(value, 0.0, 65535.0))
                                    : kUnknownAmplitude;
    };
    burst.amplitude = thirds(readOrdered<std::uint16_t>(
        file, *amplitude, {burstDimension, index, 1}, {"beam", kSample}, counts));
}

BurstFileReader::BurstFileReader(const std::string &path, const Overrides &overrides,
                                 VelocitySystem wanted)
    : impl_(std::make_unique<Impl>(path, overrides, wanted)) {}

BurstFileReader::~BurstFileReader() = default;

const Instrument &BurstFileReader::instrument() const { return impl_->instrument; }

std::size_t BurstFileReader::burstCount() const { return impl_->bursts; }

std::size_t BurstFileReader::sampleCount() const { return impl_->samples; }

VelocitySystem BurstFileReader::velocitySystem() const { return impl_->system; }

std::vector<std::string> BurstFileReader::files() const { return {impl_->file.path()}; }

KnownFacts BurstFileReader::knownFacts() const { return impl_->known; }

std::vector<std::string> BurstFileReader::notes() const {
    const auto note = timeOrderNote(impl_->file.path(), impl_->times);
    return note ? std::vector<std::string>{*note} : std::vector<std::string>{};
}

bool BurstFileReader::hasTrack() const { return impl_->track.has_value(); }

bool BurstFileReader::hasTruth() const {
    return std::any_of(impl_->truth.begin(), impl_->truth.end(),
                       [](const auto &column) { return column.has_value(); });
}

void BurstFileReader::requireAttitude() const {
    for (std::size_t i = 0; i < kAttitude.size(); ++i) {
        if (!impl_->attitude[i] && impl_->overrides.count(kAttitude[i]) == 0) {
            throw MissingFact(kAttitude[i], impl_->file.path());
        }
    }
}

void BurstFileReader::requireBeams() const {
    requireBeamsOf(impl_->instrument, impl_->file.path());
}

double BurstFileReader::startTime(std::size_t index) const {
    if (const auto given = overrideNumbers(impl_->overrides, "time")) {
        return given->front();
    }
    return impl_->times.empty() ? kUnknown : impl_->times.at(index);
}

Burst BurstFileReader::readBurst(std::size_t index) const {
    const Impl &impl = *impl_;
    Burst burst;
    burst.startTime = startTime(index);
    const std::array<double *, 3> angles{&burst.heading, &burst.pitch, &burst.roll};
    for (std::size_t i = 0; i < kAttitude.size(); ++i) {
        if (const auto given = overrideNumbers(impl.overrides, kAttitude[i])) {
            *angles[i] = given->front();
        } else if (impl.attitude[i]) {
            const std::vector<double> values = impl.readBurstOf<double>(*impl.attitude[i], index);
            *angles[i] = meanAngle(values);
            if (values.size() == impl.samples) {
                burst.attitude[i].assign(values.begin(), values.end());
            }
        }
    }
    burst.pressure = impl.readBurstOf<float>(*impl.pressure, index);
    correctPressure(impl.facts(), burst.pressure);
    if (impl.profiles) {
        burst.velocitySystem = impl.system;
        burst.profile = impl.profiles->read(index);
    } else {
        impl.readVelocity(burst, index);
    }
    impl.readAmplitude(burst, index);
    if (impl.track) {
        burst.surfaceTrack = impl.readBurstOf<float>(*impl.track, index);
    }
    if (impl.valid) {
        const std::vector<double> flags = impl.readBurstOf<double>(*impl.valid, index);
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
            truth.*kTruthVariables[i].field = impl_->readBurstOf<double>(*column, index).front();
            any = true;
        }
    }
    return any ? std::optional<Truth>(truth) : std::nullopt;
}

} // namespace orvik
