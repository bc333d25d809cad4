#include "burst/continuous_layout.hpp"

#include <algorithm>
#include <cmath>
#include <utility>

#include <fmt/format.h>

#include "burst/column.hpp"
#include "burst/missing_velocities.hpp"
#include "burst/nc_facts.hpp"
#include "burst/stretches.hpp"
#include "user_error.hpp"

namespace orvik {

namespace {

constexpr const char *kTime = "time";
constexpr const char *kCell = "range";
constexpr const char *kBeam = "beam";
constexpr std::array<const char *, 3> kAttitude{"heading", "pitch", "roll"};
constexpr std::array<const char *, 2> kTracks{"ast_dist_alt", "le_dist_alt"};
constexpr std::size_t kHead = 4096;    // rows that tell the time step
constexpr std::size_t kChunk = 262144; // rows read at once in search of pauses

// A coordinate of times, read in parts: that of a year at 8 Hz is two gigabytes.
class TimeAxis {
public:
    TimeAxis(const NcReader &file, const NcVariable &variable)
        : file_(&file), column_{variable, 1.0}, unit_(timeUnit(file, variable)) {}

    [[nodiscard]] const Column &column() const { return column_; }
    [[nodiscard]] std::size_t size() const { return column_.variable.size(); }
    [[nodiscard]] const std::string &dimension() const {
        return column_.variable.dimensions.front().name;
    }
    [[nodiscard]] std::vector<double> read(std::size_t first, std::size_t count) const {
        return readOrdered<double>(*file_, column_, {dimension(), first, count}, {dimension()},
                                   [this](double value) { return seconds(value); });
    }
    // For firstFrom(), which then reads near the place only.
    void learnMarks() {
        marks_ = file_->readEvery(column_.variable, kBetweenMarks);
        std::transform(marks_.begin(), marks_.end(), marks_.begin(),
                       [this](double value) { return seconds(value); });
    }
    // The first place whose time is not before `time`.
    [[nodiscard]] std::size_t firstFrom(double time) const {
        const auto mark = static_cast<std::size_t>(
            std::lower_bound(marks_.begin(), marks_.end(), time) - marks_.begin());
        if (mark == 0) {
            return 0;
        }
        const std::size_t from = (mark - 1) * kBetweenMarks;
        const std::vector<double> times = read(from, std::min(kBetweenMarks, size() - from));
        return from + static_cast<std::size_t>(std::lower_bound(times.begin(), times.end(), time) -
                                               times.begin());
    }

private:
    static constexpr std::size_t kBetweenMarks = 4096;

    [[nodiscard]] double seconds(double value) const { return value * unit_.scale + unit_.epoch; }

    const NcReader *file_;
    Column column_;
    TimeUnit unit_;
    std::vector<double> marks_; // every kBetweenMarks-th time
};

class ContinuousData : public LayoutData {
public:
    ContinuousData(const std::string &path, VelocitySystem wanted,
                   std::optional<std::size_t> burstLength)
        : file_(path) {
        findBursts(burstLength);
        findVelocity(wanted);
        findEchoes();
        findAttitude();
        findTrack();
        findFacts();
        readAhead();
    }

    [[nodiscard]] const std::string &path() const override { return file_.path(); }
    [[nodiscard]] const KnownFacts &facts() const override { return facts_; }
    [[nodiscard]] const DataShape &shape() const override { return shape_; }
    [[nodiscard]] std::size_t burstCount() const override { return stretches_.size(); }
    [[nodiscard]] double startTime(std::size_t index) const override {
        return stretches_.at(index).startTime;
    }
    [[nodiscard]] std::vector<std::string> notes() const override { return notes_; }
    [[nodiscard]] RawBurst read(std::size_t index) const override;

private:
    void findBursts(std::optional<std::size_t> burstLength);
    void findVelocity(VelocitySystem wanted);
    void findEchoes();
    void findAttitude();
    void findTrack();
    void findFacts();
    void findCells();
    void readAhead() const;
    [[nodiscard]] std::optional<Column> findSeries(const char *name, Quantity quantity) const;
    [[nodiscard]] std::optional<Column> findEcho(const char *name, Quantity quantity) const;
    [[nodiscard]] std::vector<float> series(const Column &column, const Stretch &stretch,
                                            const std::vector<std::string> &order) const;
    [[nodiscard]] std::vector<float> trackOf(const Stretch &stretch) const;

    NcReader file_;
    KnownFacts facts_;
    DataShape shape_;
    std::vector<std::string> notes_;
    double rate_ = 0.0;
    std::vector<Stretch> stretches_;
    std::optional<Column> pressure_;
    std::optional<Column> velocity_;
    std::optional<Column> amplitude_;
    std::optional<Column> correlation_;
    std::array<std::optional<Column>, 3> attitude_;
    std::optional<Column> track_;
    std::optional<TimeAxis> trackTimes_;
};

void ContinuousData::findBursts(std::optional<std::size_t> burstLength) {
    const auto time = file_.find(kTime);
    if (!time || time->dimensions.size() != 1 || time->size() < 2) {
        throw UserError("variable time in " + file_.path() + " is missing or has no two values");
    }
    const TimeAxis axis(file_, *time);
    file_.readAhead({{*time, 0}});
    const auto step = TimeStep::of(axis.read(0, std::min(kHead, axis.size())));
    if (!step) {
        throw UserError("the times in " + file_.path() + " do not ascend");
    }
    rate_ = attributeNumber(file_, "fs").value_or(step->rate());
    StretchCutter cutter(file_.path(), step, burstLength);
    for (std::size_t first = 0; first < axis.size(); first += kChunk) {
        for (const double value : axis.read(first, std::min(kChunk, axis.size() - first))) {
            cutter.add(value);
        }
    }
    stretches_ = cutter.finish();
    if (cutter.leftOut() > 0) {
        notes_.push_back(fmt::format("{} samples of {} are left out: they fill no burst",
                                     cutter.leftOut(), file_.path()));
    }
}

std::optional<Column> ContinuousData::findSeries(const char *name, Quantity quantity) const {
    return findColumn(file_, name, quantity, {kTime});
}

VelocitySystem systemOf(const NcReader &file) {
    const std::string name = file.text(nullptr, "coord_sys").value_or("");
    if (name == "beam") {
        return VelocitySystem::beam;
    }
    if (name == "inst") {
        return VelocitySystem::xyz;
    }
    if (name == "earth") {
        return VelocitySystem::enu;
    }
    throw UserError("attribute coord_sys of " + file.path() + " is \"" + name +
                    "\", expected beam, inst or earth: it tells in which axes vel is");
}

void ContinuousData::findVelocity(VelocitySystem wanted) {
    pressure_ = findSeries("pressure", Quantity::pressure);
    if (!pressure_) {
        throw UserError("pressure is missing in " + file_.path() + ": every method needs it");
    }
    const auto variable = file_.find("vel");
    if (variable) {
        shape_.system = systemOf(file_);
    }
    if (wanted != VelocitySystem::none && wanted != shape_.system) {
        throw MissingVelocities(file_.path(), wanted);
    }
    if (!variable) {
        return;
    }
    const auto components = variable->axis("dir");
    if (!components || !variable->axis(kTime)) {
        throw UserError("variable vel in " + file_.path() + " has the dimensions " +
                        variable->shapeText() + ", expected (dir, range, time)");
    }
    velocity_ = Column{*variable, unitFactor(file_, *variable, Quantity::velocity)};
    shape_.beams = variable->dimensions[*components].length;
    if (shape_.beams != 3 && shape_.beams != 4) {
        throw UserError("dimension dir in " + file_.path() + " is " + std::to_string(shape_.beams) +
                        " long: three or four are expected");
    }
    if (const auto cells = variable->axis(kCell)) {
        shape_.cells = variable->dimensions[*cells].length;
    }
}

// Echoes in a unit that tells neither counts nor a share are left out: they only help.
std::optional<Column> ContinuousData::findEcho(const char *name, Quantity quantity) const {
    const auto variable = file_.find(name);
    if (!variable || !velocity_ || !variable->axis(kTime)) {
        return std::nullopt;
    }
    const auto factor = unitFactor(file_.text(&*variable, "units").value_or(""), quantity);
    const auto lengthOf = [&](const char *dimension) {
        const auto axis = variable->axis(dimension);
        return axis ? variable->dimensions[*axis].length : 1;
    };
    if (!factor || lengthOf(kBeam) != shape_.beams || lengthOf(kCell) != shape_.cells) {
        return std::nullopt;
    }
    return Column{*variable, *factor};
}

void ContinuousData::findEchoes() {
    amplitude_ = findEcho("amp", Quantity::plain);
    correlation_ = findEcho("corr", Quantity::share);
    shape_.amplitude = amplitude_.has_value();
    shape_.correlation = correlation_.has_value();
}

void ContinuousData::findAttitude() {
    for (std::size_t i = 0; i < kAttitude.size(); ++i) {
        attitude_[i] = findSeries(kAttitude[i], Quantity::angle);
        shape_.attitude[i] = attitude_[i].has_value();
    }
}

// The altimeter keeps its own times; it is of use at the samples' rate or faster.
void ContinuousData::findTrack() {
    for (const char *name : kTracks) {
        const auto variable = file_.find(name);
        if (!variable || variable->dimensions.size() != 1 || track_) {
            continue;
        }
        const auto times = file_.find(variable->dimensions.front().name);
        if (!times || times->size() < 2) {
            continue;
        }
        TimeAxis axis(file_, *times);
        const auto step = TimeStep::of(axis.read(0, std::min(kHead, axis.size())));
        if (!step || step->rate() < 0.99 * rate_) {
            notes_.push_back(fmt::format("{} of {} is sampled too slowly for waves and left out",
                                         name, file_.path()));
            continue;
        }
        track_ = Column{*variable, unitFactor(file_, *variable, Quantity::length)};
        axis.learnMarks();
        trackTimes_ = axis;
        shape_.trackPerSample = step->rate() > 1.5 * rate_ ? 2 : 1;
    }
}

void ContinuousData::findFacts() {
    addAttributeFacts(file_,
                      {{"beam_slant_angle", "beam_angle"},
                       {"blanking_distance", "blank_dist"},
                       {"cell_size", "cell_size"},
                       {"longitude", "longitude"},
                       {"latitude", "latitude"}},
                      facts_);
    facts_["sampling_rate"] = {{rate_},
                               attributeNumber(file_, "fs") ? "attribute fs of " + file_.path()
                                                            : "the times in " + file_.path()};
    addMatrix(file_, "beam2inst_orientmat", "", facts_);
    findCells();
    if (const auto declination = attributeNumber(file_, "declination")) {
        notes_.push_back(fmt::format("the declination of {:g} degrees in {} is taken to be in its "
                                     "headings and velocities already: else give it with --set "
                                     "magnetic_declination",
                                     *declination, file_.path()));
    }
}

// Of one cell that was chosen among several the dimension is gone, or its variable is one number.
void ContinuousData::findCells() {
    const auto range = file_.find(kCell);
    const bool one = range && range->dimensions.empty();
    const auto column =
        findColumn(file_, kCell, Quantity::length,
                   one ? std::vector<std::string>{} : std::vector<std::string>{kCell});
    if (!column || column->variable.size() != shape_.cells) {
        return;
    }
    std::vector<double> distances = file_.readAll(column->variable);
    for (double &distance : distances) {
        distance *= column->factor;
    }
    facts_["cell_distance"] = {distances, "variable range of " + file_.path()};
    // The cells' own list tells where they are.
    facts_.erase("blanking_distance");
    facts_.erase("cell_size");
}

void ContinuousData::readAhead() const {
    std::vector<NcReader::Course> courses;
    for (const auto &column : {pressure_, velocity_, amplitude_, correlation_}) {
        addCourse(column, kTime, courses);
    }
    for (const auto &column : attitude_) {
        addCourse(column, kTime, courses);
    }
    if (track_) {
        addCourse(track_, trackTimes_->dimension(), courses);
        addCourse(trackTimes_->column(), trackTimes_->dimension(), courses);
    }
    file_.readAhead(courses);
}

std::vector<float> ContinuousData::series(const Column &column, const Stretch &stretch,
                                          const std::vector<std::string> &order) const {
    std::vector<float> rows =
        readOrdered(file_, column, {kTime, stretch.firstRow, stretch.rows}, order);
    const std::size_t width = rows.size() / stretch.rows;
    return withLosses(stretch, std::move(rows), width);
}

// Each altimeter value goes to the place whose instant is nearest.
std::vector<float> ContinuousData::trackOf(const Stretch &stretch) const {
    const double rate = rate_ * static_cast<double>(shape_.trackPerSample);
    const std::size_t places = stretch.samples() * shape_.trackPerSample;
    std::vector<float> track(places, static_cast<float>(kUnknown));
    const double from = stretch.startTime - 0.5 / rate;
    const std::size_t first = trackTimes_->firstFrom(from);
    const std::size_t end =
        trackTimes_->firstFrom(stretch.startTime + (static_cast<double>(places) - 0.5) / rate);
    if (end <= first) {
        return track;
    }
    const std::vector<double> times = trackTimes_->read(first, end - first);
    const std::vector<float> values = readOrdered(
        file_, *track_, {trackTimes_->dimension(), first, end - first}, {trackTimes_->dimension()});
    for (std::size_t i = 0; i < times.size(); ++i) {
        const double place = std::round((times[i] - stretch.startTime) * rate);
        if (place >= 0.0 && place < static_cast<double>(places)) {
            track[static_cast<std::size_t>(place)] = values[i];
        }
    }
    return track;
}

RawBurst ContinuousData::read(std::size_t index) const {
    const Stretch &stretch = stretches_.at(index);
    RawBurst raw;
    raw.pressure = series(*pressure_, stretch, {kTime});
    if (velocity_) {
        raw.velocity = series(*velocity_, stretch, {kTime, "dir", kCell});
    }
    if (amplitude_) {
        raw.amplitude = series(*amplitude_, stretch, {kTime, kBeam, kCell});
    }
    if (correlation_) {
        raw.correlation = series(*correlation_, stretch, {kTime, kBeam, kCell});
    }
    for (std::size_t i = 0; i < attitude_.size(); ++i) {
        if (attitude_[i]) {
            raw.attitude[i] = series(*attitude_[i], stretch, {kTime});
        }
    }
    if (track_) {
        raw.track = trackOf(stretch);
    }
    raw.valid = validOf(stretch);
    return raw;
}

} // namespace

bool isContinuousLayout(const NcReader &file) {
    const auto pressure = file.find("pressure");
    const auto velocity = file.find("vel");
    return (velocity && velocity->axis("dir")) ||
           (pressure && pressure->dimensions.size() == 1 && pressure->axis(kTime));
}

std::unique_ptr<LayoutData> openContinuousLayout(const std::string &path, VelocitySystem wanted,
                                                 std::optional<std::size_t> burstLength) {
    return std::make_unique<ContinuousData>(path, wanted, burstLength);
}

} // namespace orvik
