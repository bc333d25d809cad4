#include "burst/fields_layout.hpp"

#include <algorithm>
#include <cmath>
#include <optional>

#include "burst/column.hpp"
#include "burst/mean_angle.hpp"
#include "burst/missing_velocities.hpp"
#include "burst/nc_facts.hpp"
#include "burst/time_order.hpp"
#include "user_error.hpp"

namespace orvik {

namespace {

constexpr const char *kTime = "time";
constexpr const char *kSample = "sample";
constexpr const char *kCell = "z";
constexpr std::array<const char *, 2> kPressure{"P_1ac", "P_1"}; // without the air's rather
constexpr std::array<const char *, 3> kEarth{"u_1205", "v_1206", "w_1204"};
constexpr std::array<const char *, 3> kAttitude{"Hdg_1215", "Ptch_1216", "Roll_1217"};
constexpr const char *kTrack = "brangeAST";

class FieldsData : public LayoutData {
public:
    FieldsData(const std::string &path, VelocitySystem wanted) : file_(path) {
        findTime();
        findPressure();
        findVelocity(wanted);
        findEchoes();
        findTrack();
        findAttitude();
        findFacts();
        readAhead();
    }

    [[nodiscard]] const std::string &path() const override { return file_.path(); }
    [[nodiscard]] const KnownFacts &facts() const override { return facts_; }
    [[nodiscard]] const DataShape &shape() const override { return shape_; }
    [[nodiscard]] std::size_t burstCount() const override { return bursts_; }
    [[nodiscard]] double startTime(std::size_t index) const override { return times_.at(index); }
    [[nodiscard]] std::vector<std::string> notes() const override { return notes_; }
    [[nodiscard]] RawBurst read(std::size_t index) const override;

private:
    void findTime();
    void findPressure();
    void findVelocity(VelocitySystem wanted);
    void findEchoes();
    void findTrack();
    void findAttitude();
    void findFacts();
    void findOrientation();
    void readAhead() const;
    [[nodiscard]] std::optional<Column> find(const std::string &name, Quantity quantity) const;
    [[nodiscard]] std::vector<float> series(const Column &column, std::size_t index,
                                            const std::vector<std::string> &order) const {
        return readOrdered(file_, column, {kTime, index, 1}, order);
    }
    [[nodiscard]] std::vector<float> velocities(std::size_t index) const;

    NcReader file_;
    KnownFacts facts_;
    DataShape shape_;
    std::vector<std::string> notes_;
    std::size_t bursts_ = 0;
    std::size_t samples_ = 0;
    std::vector<double> times_; // [s since 1970-01-01 00:00:00 UTC]
    std::optional<Column> pressure_;
    std::vector<Column> velocity_; // one along beams, else one a component
    std::string trackDimension_ = kSample;
    std::string beamDimension_ = "beam";
    std::optional<Column> amplitude_;
    std::optional<Column> correlation_;
    std::optional<Column> track_;
    std::array<std::optional<Column>, 3> attitude_;
};

std::optional<Column> FieldsData::find(const std::string &name, Quantity quantity) const {
    const auto variable = file_.find(name);
    if (!variable) {
        return std::nullopt;
    }
    if (!variable->axis(kTime)) {
        throw UserError("variable " + name + " in " + file_.path() + " has the dimensions " +
                        variable->shapeText() + ", expected one of them to be time");
    }
    return Column{*variable, unitFactor(file_, *variable, quantity)};
}

void FieldsData::findTime() {
    const auto time = file_.find(kTime);
    if (!time || time->dimensions.size() != 1) {
        throw UserError("variable time is missing in " + file_.path() +
                        ": it tells when each burst starts");
    }
    times_ = timesOf(file_, *time);
    bursts_ = times_.size();
    if (bursts_ == 0) {
        throw UserError(file_.path() + " holds no bursts: its dimension " +
                        time->dimensions.front().name + " is empty");
    }
    if (const auto note = timeOrderNote(file_.path(), times_)) {
        notes_.push_back(*note);
    }
    samples_ = file_.dimensionLength(kSample).value_or(0);
    if (samples_ == 0) {
        throw UserError(file_.path() +
                        " holds no samples: its dimension sample is missing or empty");
    }
}

void FieldsData::findPressure() {
    for (const char *name : kPressure) {
        if (!pressure_) {
            pressure_ = find(name, Quantity::pressure);
        }
    }
    if (!pressure_) {
        throw UserError("P_1ac and P_1 are missing in " + file_.path() +
                        ": every method needs the pressure");
    }
    if (pressure_->variable.name == kPressure.back()) {
        notes_.push_back("P_1 of " + file_.path() +
                         " may hold the air's pressure too: if so, tell it with --set "
                         "air_pressure=DECIBAR");
    }
}

// Along the beams where they are told and not east, north, up is wanted: they serve every method.
void FieldsData::findVelocity(VelocitySystem wanted) {
    const auto along = file_.find("vel");
    const auto *const ofEarth =
        std::find_if(kEarth.begin(), kEarth.end(),
                     [this](const char *name) { return file_.find(name).has_value(); });
    const bool earth = ofEarth != kEarth.end();
    const bool takesBeams =
        along && (wanted == VelocitySystem::beam || (wanted == VelocitySystem::none && !earth));
    if (takesBeams) {
        velocity_.push_back(*find("vel", Quantity::velocity));
        shape_.system = VelocitySystem::beam;
        for (const NcDimension &axis : along->dimensions) {
            if (axis.name != kTime && axis.name != kSample && axis.name != kCell) {
                beamDimension_ = axis.name;
                shape_.beams = axis.length;
            }
        }
        if (shape_.beams != 3 && shape_.beams != 4) {
            throw UserError("vel in " + file_.path() + " has " + std::to_string(shape_.beams) +
                            " beams: three or four are expected");
        }
    } else if (earth && (wanted == VelocitySystem::none || wanted == VelocitySystem::enu)) {
        for (const char *name : kEarth) {
            if (const auto column = find(name, Quantity::velocity)) {
                velocity_.push_back(*column);
            } else if (name != kEarth.back()) {
                throw UserError(std::string(name) + " is missing in " + file_.path() +
                                ", which has " + *ofEarth);
            }
        }
        shape_.system = VelocitySystem::enu;
    } else if (wanted != VelocitySystem::none) {
        throw MissingVelocities(file_.path(), wanted);
    }
    for (const Column &column : velocity_) {
        if (const auto axis = column.variable.axis(kCell)) {
            shape_.cells = column.variable.dimensions[*axis].length;
        }
    }
}

// Echoes are by beam; they are of use where velocities have beams and cells like theirs.
void FieldsData::findEchoes() {
    const auto fits = [&](const NcVariable &variable) {
        std::size_t beams = 1;
        std::size_t cells = 1;
        for (const NcDimension &axis : variable.dimensions) {
            if (axis.name == kCell) {
                cells = axis.length;
            } else if (axis.name != kTime && axis.name != kSample) {
                beams = axis.length;
            }
        }
        return beams == shape_.beams && cells == shape_.cells && variable.axis(kSample);
    };
    const auto findEcho = [&](const char *name, Quantity quantity) -> std::optional<Column> {
        const auto variable = file_.find(name);
        const auto factor = variable
                                ? unitFactor(file_.text(&*variable, "units").value_or(""), quantity)
                                : std::nullopt;
        if (!factor || !fits(*variable)) {
            return std::nullopt;
        }
        return Column{*variable, *factor};
    };
    if (shape_.system == VelocitySystem::beam) {
        amplitude_ = findEcho("amp", Quantity::plain);
        correlation_ = findEcho("cor", Quantity::share);
    }
    shape_.amplitude = amplitude_.has_value();
    shape_.correlation = correlation_.has_value();
}

void FieldsData::findTrack() {
    track_ = find(kTrack, Quantity::length);
    if (!track_) {
        return;
    }
    for (const NcDimension &axis : track_->variable.dimensions) {
        if (axis.name != kTime && axis.length > 1) {
            trackDimension_ = axis.name;
        }
    }
    const std::size_t length = track_->variable.size() / bursts_;
    if (length != samples_ && length != 2 * samples_) {
        throw UserError(std::string("variable ") + kTrack + " in " + file_.path() + " has " +
                        std::to_string(length) +
                        " values a burst, expected one or two for each of the " +
                        std::to_string(samples_) + " samples");
    }
    shape_.trackPerSample = length / samples_;
}

void FieldsData::findAttitude() {
    for (std::size_t i = 0; i < kAttitude.size(); ++i) {
        attitude_[i] = find(kAttitude[i], Quantity::angle);
        shape_.attitude[i] = attitude_[i].has_value();
    }
}

void FieldsData::findFacts() {
    addAttributeFacts(file_,
                      {{"sampling_rate", "sample_rate"},
                       {"pressure_sensor_height_above_bed", "pressure_sensor_height"},
                       {"pressure_sensor_height_above_bed", "initial_instrument_height"},
                       {"beam_slant_angle", "beam_angle"},
                       {"longitude", "longitude"},
                       {"latitude", "latitude"}},
                      facts_);
    const auto interval = attributeNumber(file_, "sample_interval");
    if (facts_.count("sampling_rate") == 0 && interval && *interval > 0.0) {
        facts_["sampling_rate"] = {{1.0 / *interval},
                                   "attribute sample_interval of " + file_.path()};
    }
    addMatrix(file_, "TransMatrix", beamDimension_, facts_);
    if (const auto column = findColumn(file_, "bindist", Quantity::length, {kCell})) {
        std::vector<double> distances = file_.readAll(column->variable);
        for (double &distance : distances) {
            distance *= column->factor;
        }
        if (distances.size() == shape_.cells) {
            facts_["cell_distance"] = {distances, "variable bindist of " + file_.path()};
        }
    }
    findOrientation();
}

// A head that looks down may tell so by a roll near 180 already.
void FieldsData::findOrientation() {
    const std::string orientation = file_.text(nullptr, "orientation").value_or("");
    const bool down = orientation.rfind("DOWN", 0) == 0 || orientation.rfind("down", 0) == 0 ||
                      orientation.rfind("Down", 0) == 0;
    if (!down || !attitude_[2]) {
        return;
    }
    const double roll = meanAngle(series(*attitude_[2], 0, {kSample}));
    if (std::abs(roll) < 90.0) {
        facts_["roll_offset"] = {{180.0}, "attribute orientation of " + file_.path()};
    }
}

void FieldsData::readAhead() const {
    std::vector<NcReader::Course> courses;
    for (const auto &column : {pressure_, amplitude_, correlation_, track_}) {
        addCourse(column, kTime, courses);
    }
    for (const auto &column : attitude_) {
        addCourse(column, kTime, courses);
    }
    for (const Column &column : velocity_) {
        addCourse(column, kTime, courses);
    }
    file_.readAhead(courses);
}

std::vector<float> FieldsData::velocities(std::size_t index) const {
    if (shape_.system == VelocitySystem::beam) {
        return series(velocity_.front(), index, {kSample, beamDimension_, kCell});
    }
    std::vector<float> result(samples_ * 3 * shape_.cells, 0.0F);
    for (std::size_t c = 0; c < velocity_.size(); ++c) {
        const std::vector<float> component = series(velocity_[c], index, {kSample, kCell});
        for (std::size_t at = 0; at < component.size(); ++at) {
            result[(at / shape_.cells * 3 + c) * shape_.cells + at % shape_.cells] = component[at];
        }
    }
    return result;
}

RawBurst FieldsData::read(std::size_t index) const {
    RawBurst raw;
    raw.pressure = series(*pressure_, index, {kSample});
    if (shape_.system != VelocitySystem::none) {
        raw.velocity = velocities(index);
    }
    if (amplitude_) {
        raw.amplitude = series(*amplitude_, index, {kSample, beamDimension_, kCell});
    }
    if (correlation_) {
        raw.correlation = series(*correlation_, index, {kSample, beamDimension_, kCell});
    }
    if (track_) {
        raw.track = series(*track_, index, {trackDimension_});
    }
    for (std::size_t i = 0; i < attitude_.size(); ++i) {
        if (attitude_[i]) {
            raw.attitude[i] = series(*attitude_[i], index, {kSample});
        }
    }
    return raw;
}

} // namespace

bool isFieldsLayout(const NcReader &file) {
    return file.dimensionLength(kSample) && (file.find("P_1") || file.find("P_1ac"));
}

std::unique_ptr<LayoutData> openFieldsLayout(const std::string &path, VelocitySystem wanted) {
    return std::make_unique<FieldsData>(path, wanted);
}

} // namespace orvik
