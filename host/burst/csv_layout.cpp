#include "burst/csv_layout.hpp"

#include <algorithm>
#include <array>
#include <cmath>

#include <fmt/format.h>

#include "burst/csv_table.hpp"
#include "burst/date_text.hpp"
#include "burst/missing_velocities.hpp"
#include "burst/stretches.hpp"
#include "burst/time_order.hpp"
#include "netcdf/units.hpp"
#include "user_error.hpp"

namespace orvik {

namespace {

constexpr std::size_t kHead = 4096; // rows that tell the time step
constexpr std::array<const char *, 3> kAttitude{"heading", "pitch", "roll"};

struct Source {
    std::size_t column = 0;
    double factor = 1.0;
};

struct VelocityNames {
    VelocitySystem system;
    std::size_t count;
    std::array<const char *, 4> names;
};

constexpr VelocityNames kVelocities[] = {
    {VelocitySystem::beam,
     4,
     {"velocity_beam_1", "velocity_beam_2", "velocity_beam_3", "velocity_beam_4"}},
    {VelocitySystem::xyz, 3, {"velocity_x", "velocity_y", "velocity_z"}},
    {VelocitySystem::enu, 3, {"velocity_east", "velocity_north", "velocity_up"}},
};

// The column `time`: dates, or numbers whose unit says from when they count.
class TimeColumn {
public:
    TimeColumn(const CsvTable &table, std::size_t column, std::optional<double> origin)
        : table_(&table), column_(column) {
        const std::string &unit = table.columns()[column].unit;
        if (const auto since = timeUnit(unit)) {
            unit_ = *since;
            numbers_ = true;
        } else if (const auto factor =
                       unit.empty() ? std::nullopt : unitFactor(unit, Quantity::duration)) {
            unit_ = {*factor, origin.value_or(0.0)};
            numbers_ = true;
            countsFromStart_ = true;
            startTold_ = origin.has_value();
        }
    }

    [[nodiscard]] bool countsFromStart() const { return countsFromStart_; }
    [[nodiscard]] bool startTold() const { return startTold_; }
    [[nodiscard]] double of(const CsvTable::Row &row) const {
        const std::string &text = row.fields.at(column_);
        const auto date = numbers_ ? std::nullopt : parsedDate(text);
        const double value = numbers_ ? table_->number(row, column_) * unit_.scale + unit_.epoch
                                      : date.value_or(kUnknown);
        if (!std::isfinite(value)) {
            throw UserError(fmt::format(
                "{} line {}: the time \"{}\" is none: write dates as 2008-09-08T12:00:00.5, or "
                "numbers under a title such as \"time [s]\" or \"time [seconds since 1970-01-01]\"",
                table_->path(), row.place.line, text));
        }
        return value;
    }

private:
    const CsvTable *table_;
    std::size_t column_;
    TimeUnit unit_;
    bool numbers_ = false;
    bool countsFromStart_ = false;
    bool startTold_ = true;
};

class CsvData : public LayoutData {
public:
    CsvData(const std::string &path, const CsvChoices &choices) : table_(path) {
        findColumns(choices);
        findBursts(choices);
    }

    [[nodiscard]] const std::string &path() const override { return table_.path(); }
    [[nodiscard]] const KnownFacts &facts() const override { return facts_; }
    [[nodiscard]] const DataShape &shape() const override { return shape_; }
    [[nodiscard]] std::size_t burstCount() const override { return bursts_.size(); }
    [[nodiscard]] double startTime(std::size_t index) const override {
        const bool told = time_ ? time_->startTold() : false;
        return told ? bursts_.at(index).stretch.startTime : kUnknown;
    }
    [[nodiscard]] bool countsFromStart() const override {
        return time_ && time_->countsFromStart();
    }
    [[nodiscard]] std::vector<std::string> notes() const override { return notes_; }
    [[nodiscard]] RawBurst read(std::size_t index) const override;

private:
    struct Place {
        Stretch stretch;
        CsvTable::Place begin;
    };

    void findColumns(const CsvChoices &choices);
    [[nodiscard]] std::vector<Source> findComponents(const VelocityNames &candidate) const;
    void findVelocity(VelocitySystem wanted);
    void findTrack();
    void findBursts(const CsvChoices &choices);
    [[nodiscard]] std::optional<TimeStep> timeStep() const;
    void index(StretchCutter &cutter);
    [[nodiscard]] std::optional<std::size_t> columnOf(const std::string &name) const;
    [[nodiscard]] std::optional<Source> find(const std::string &name, Quantity quantity) const;
    [[nodiscard]] float value(const CsvTable::Row &row, const Source &source) const {
        return static_cast<float>(table_.number(row, source.column) * source.factor);
    }

    CsvTable table_;
    KnownFacts facts_;
    DataShape shape_;
    std::vector<std::string> notes_;
    std::vector<Place> bursts_;
    std::optional<TimeColumn> time_;
    std::optional<std::size_t> burstColumn_;
    Source pressure_;
    std::vector<Source> velocity_;
    std::vector<Source> amplitude_;
    std::vector<Source> track_;
    std::array<std::optional<Source>, 3> attitude_;
    std::optional<Source> valid_;
};

std::optional<std::size_t> CsvData::columnOf(const std::string &name) const {
    const auto &columns = table_.columns();
    const auto found = std::find_if(columns.begin(), columns.end(),
                                    [&](const CsvColumn &column) { return column.name == name; });
    return found == columns.end()
               ? std::nullopt
               : std::optional<std::size_t>(static_cast<std::size_t>(found - columns.begin()));
}

// A column without a unit is in that of burst files.
std::optional<Source> CsvData::find(const std::string &name, Quantity quantity) const {
    const auto column = columnOf(name);
    if (!column) {
        return std::nullopt;
    }
    const std::string &unit = table_.columns()[*column].unit;
    const auto factor = unit.empty() ? std::optional<double>(1.0) : unitFactor(unit, quantity);
    if (!factor) {
        throw UserError("column " + name + " in " + table_.path() + " is in \"" + unit +
                        "\", expected \"" + unitOf(quantity) + "\" or a unit that converts to it");
    }
    return Source{*column, *factor};
}

void CsvData::findColumns(const CsvChoices &choices) {
    const auto pressure = find("pressure", Quantity::pressure);
    if (!pressure) {
        throw UserError("column pressure is missing in " + table_.path() +
                        ": every method needs it, and the first line must name the columns");
    }
    pressure_ = *pressure;
    if (const auto column = columnOf("time")) {
        time_.emplace(table_, *column, choices.origin);
    }
    burstColumn_ = columnOf("burst");
    findVelocity(choices.wanted);
    findTrack();
    for (std::size_t i = 0; i < kAttitude.size(); ++i) {
        attitude_[i] = find(kAttitude[i], Quantity::angle);
        shape_.attitude[i] = attitude_[i].has_value();
    }
    valid_ = find("sample_valid", Quantity::plain);
}

// Empty when there is none of them. The fourth beam may be missing, and the velocity up.
std::vector<Source> CsvData::findComponents(const VelocityNames &candidate) const {
    const std::size_t least = candidate.system == VelocitySystem::enu ? 2 : 3;
    std::vector<Source> found;
    std::string there;
    std::string missing;
    for (std::size_t i = 0; i < candidate.count; ++i) {
        const char *name = candidate.names[i];
        if (const auto source = find(name, Quantity::velocity)) {
            found.push_back(*source);
            there = there.empty() ? name : there;
        } else if (i < least && missing.empty()) {
            missing = name;
        }
    }
    if (!there.empty() && !missing.empty()) {
        throw UserError("column " + missing + " is missing in " + table_.path() + ", which has " +
                        there);
    }
    return found;
}

void CsvData::findVelocity(VelocitySystem wanted) {
    for (const VelocityNames &candidate : kVelocities) {
        if (!velocity_.empty() || (wanted != VelocitySystem::none && wanted != candidate.system)) {
            continue;
        }
        velocity_ = findComponents(candidate);
        shape_.system = velocity_.empty() ? VelocitySystem::none : candidate.system;
    }
    if (velocity_.empty() && wanted != VelocitySystem::none) {
        throw MissingVelocities(table_.path(), wanted);
    }
    shape_.beams = std::max<std::size_t>(velocity_.size(), 3);
    for (std::size_t b = 0; b < shape_.beams; ++b) {
        if (const auto source = find("amplitude_" + std::to_string(b + 1), Quantity::plain)) {
            amplitude_.push_back(*source);
        }
    }
    shape_.amplitude = !velocity_.empty() && amplitude_.size() == shape_.beams;
}

void CsvData::findTrack() {
    if (const auto once = find("surface_track_distance", Quantity::length)) {
        track_ = {*once};
    } else {
        const auto first = find("surface_track_distance_1", Quantity::length);
        const auto second = find("surface_track_distance_2", Quantity::length);
        if (first.has_value() != second.has_value()) {
            throw UserError("surface_track_distance_1 and surface_track_distance_2 belong "
                            "together; " +
                            table_.path() + " has one of them");
        }
        if (first) {
            track_ = {*first, *second};
        }
    }
    shape_.trackPerSample = track_.size();
}

std::optional<TimeStep> CsvData::timeStep() const {
    std::vector<double> head;
    table_.forRows(table_.firstRow(), [&](const CsvTable::Row &row) {
        head.push_back(time_->of(row));
        return head.size() < kHead;
    });
    const auto step = TimeStep::of(head);
    if (!step) {
        throw UserError(head.empty() ? table_.path() + " has no rows under its header line"
                                     : "the times in " + table_.path() + " do not ascend");
    }
    return step;
}

void CsvData::findBursts(const CsvChoices &choices) {
    std::optional<TimeStep> step;
    if (time_) {
        step = timeStep();
        facts_["sampling_rate"] = {{step->rate()}, "column time of " + table_.path()};
    }
    StretchCutter cutter(table_.path(), step, choices.burstLength);
    index(cutter);
    if (cutter.leftOut() > 0) {
        notes_.push_back(fmt::format("{} samples of {} are left out: they fill no burst",
                                     cutter.leftOut(), table_.path()));
    }
    if (time_ && !time_->startTold()) {
        notes_.push_back(fmt::format("the times in {} count from 0 and nothing tells their start: "
                                     "without it results have no times; tell it with --set "
                                     "time=YYYY-MM-DDTHH:MM:SSZ, or as time in the file of facts",
                                     table_.path()));
    }
    std::vector<double> starts;
    for (const Place &burst : bursts_) {
        starts.push_back(time_ ? burst.stretch.startTime : kUnknown);
    }
    if (const auto note = timeOrderNote(table_.path(), starts)) {
        notes_.push_back(*note);
    }
}

// One pass over the file, which keeps where each burst begins.
void CsvData::index(StretchCutter &cutter) {
    std::vector<CsvTable::Place> begins; // of the stretches, by the row they begin with
    std::vector<std::size_t> rows;
    std::string burst;
    std::size_t count = 0;
    std::size_t before = 0;
    table_.forRows(table_.firstRow(), [&](const CsvTable::Row &row) {
        const bool changes = burstColumn_ && count > 0 && row.fields[*burstColumn_] != burst;
        if (burstColumn_) {
            burst = row.fields[*burstColumn_];
        }
        cutter.add(time_ ? time_->of(row) : 0.0, changes);
        if (cutter.begun() != before) {
            before = cutter.begun();
            begins.push_back(row.place);
            rows.push_back(count);
        }
        ++count;
        return true;
    });
    for (Stretch &stretch : cutter.finish()) {
        const auto at = std::lower_bound(rows.begin(), rows.end(), stretch.firstRow) - rows.begin();
        bursts_.push_back({std::move(stretch), begins[static_cast<std::size_t>(at)]});
    }
}

RawBurst CsvData::read(std::size_t index) const {
    const Place &place = bursts_.at(index);
    const Stretch &stretch = place.stretch;
    RawBurst raw;
    std::array<std::vector<float>, 3> attitude;
    std::vector<std::uint8_t> told;
    std::size_t rows = 0;
    table_.forRows(place.begin, [&](const CsvTable::Row &row) {
        raw.pressure.push_back(value(row, pressure_));
        for (std::size_t b = 0; !velocity_.empty() && b < shape_.beams; ++b) {
            raw.velocity.push_back(b < velocity_.size() ? value(row, velocity_[b]) : 0.0F);
        }
        for (const Source &source : amplitude_) {
            raw.amplitude.push_back(value(row, source));
        }
        for (const Source &source : track_) {
            raw.track.push_back(value(row, source));
        }
        for (std::size_t i = 0; i < attitude_.size(); ++i) {
            if (attitude_[i]) {
                attitude[i].push_back(value(row, *attitude_[i]));
            }
        }
        if (valid_) {
            told.push_back(value(row, *valid_) > 0.0F ? 1 : 0);
        }
        return ++rows < stretch.rows;
    });
    if (rows < stretch.rows) {
        throw UserError(fmt::format("{} has lost rows since it was opened: from line {} on it has "
                                    "{} of {}",
                                    path(), place.begin.line, rows, stretch.rows));
    }
    raw.pressure = withLosses(stretch, raw.pressure, 1);
    raw.velocity = withLosses(stretch, raw.velocity, velocity_.empty() ? 0 : shape_.beams);
    raw.amplitude =
        shape_.amplitude ? withLosses(stretch, raw.amplitude, shape_.beams) : std::vector<float>{};
    raw.track = withLosses(stretch, raw.track, track_.size());
    for (std::size_t i = 0; i < attitude_.size(); ++i) {
        raw.attitude[i] = withLosses(stretch, attitude[i], attitude_[i] ? 1 : 0);
    }
    raw.valid = validOf(stretch);
    if (raw.valid.empty()) {
        raw.valid = told;
    } else if (valid_) {
        std::size_t row = 0;
        for (std::uint8_t &flag : raw.valid) {
            flag = flag != 0 ? told[row++] : flag;
        }
    }
    return raw;
}

} // namespace

std::unique_ptr<LayoutData> openCsvLayout(const std::string &path, const CsvChoices &choices) {
    return std::make_unique<CsvData>(path, choices);
}

} // namespace orvik
