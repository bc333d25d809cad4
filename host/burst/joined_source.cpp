#include "burst/joined_source.hpp"

#include <algorithm>
#include <cmath>

#include <fmt/format.h>
#include <fmt/ranges.h>

#include "burst/time_order.hpp"
#include "user_error.hpp"

namespace orvik {

namespace {

struct NamedFact {
    const char *name;
    double Instrument::*field;
};

constexpr NamedFact kFacts[] = {
    {"sampling_rate", &Instrument::samplingRate},
    {"acoustic_frequency", &Instrument::acousticFrequency},
    {"beam_slant_angle", &Instrument::slantAngle},
    {"cell_range", &Instrument::cellRange},
    {"cell_size", &Instrument::cellSize},
    {"pressure_sensor_height_above_bed", &Instrument::pressureHeight},
    {"magnetic_declination", &Instrument::declination},
    {"roll_offset", &Instrument::rollOffset},
};

constexpr NamedFact kPlace[] = {
    {"longitude", &Instrument::longitude},
    {"latitude", &Instrument::latitude},
};

struct NamedProfileFact {
    const char *name;
    double ProfileFacts::*field;
};

constexpr NamedProfileFact kProfileFacts[] = {
    {"blanking_distance", &ProfileFacts::blanking},
    {"surface_track_time_offset", &ProfileFacts::trackTimeOffset},
    {"ambiguity_velocity", &ProfileFacts::ambiguityVelocity},
};

std::string difference(const char *name, double left, double right) {
    constexpr double kSame = 1e-6;
    const bool same = (std::isnan(left) && std::isnan(right)) ||
                      std::abs(left - right) <= kSame * std::max(1.0, std::abs(left));
    return same ? "" : fmt::format("{} ({} and {})", name, left, right);
}

// A receiver finds an instrument that stays in its place a little elsewhere each time; not every file tells where.
std::string placeDifference(const char *name, double left, double right) {
    constexpr double kSame = 0.01; // [degrees]
    const bool same = std::isnan(left) || std::isnan(right) ||
                      std::abs(std::remainder(left - right, 360.0)) <= kSame;
    return same ? "" : fmt::format("{} ({} and {})", name, left, right);
}

std::string difference(const Instrument &left, const Instrument &right) {
    std::vector<std::string> found;
    for (const NamedFact &fact : kFacts) {
        found.push_back(difference(fact.name, left.*fact.field, right.*fact.field));
    }
    for (const NamedFact &fact : kPlace) {
        found.push_back(placeDifference(fact.name, left.*fact.field, right.*fact.field));
    }
    found.push_back(difference("instrument_type", left.instrumentType, right.instrumentType));
    found.push_back(difference("pings_per_sample", left.pingsPerSample, right.pingsPerSample));
    found.push_back(difference("the number of beams", static_cast<double>(left.beams),
                               static_cast<double>(right.beams)));
    found.emplace_back(left.beamAzimuth == right.beamAzimuth ? "" : "beam_azimuth");
    found.emplace_back(left.beamToXyz == right.beamToXyz ? "" : "beam_to_xyz");
    if (left.profile && right.profile) {
        found.push_back(difference("the number of cells", static_cast<double>(left.profile->cells),
                                   static_cast<double>(right.profile->cells)));
        for (const NamedProfileFact &fact : kProfileFacts) {
            found.push_back(
                difference(fact.name, (*left.profile).*fact.field, (*right.profile).*fact.field));
        }
    }
    const auto first = std::find_if(found.begin(), found.end(),
                                    [](const std::string &text) { return !text.empty(); });
    return first == found.end() ? "" : *first;
}

// Of the times that are told; they may come in any order.
double median(std::vector<double> times) {
    std::erase_if(times, [](double time) { return !std::isfinite(time); });
    if (times.empty()) {
        return kUnknown;
    }
    const auto middle = times.begin() + static_cast<std::ptrdiff_t>(times.size() / 2);
    std::nth_element(times.begin(), middle, times.end());
    return *middle;
}

std::vector<double> startTimes(const BurstSource &source) {
    std::vector<double> times;
    for (std::size_t i = 0; i < source.burstCount(); ++i) {
        times.push_back(source.startTime(i));
    }
    return times;
}

// Whether one of the times lies between the first and the last of others.
bool reachInto(const std::vector<double> &times, const std::vector<double> &others) {
    return std::any_of(times.begin(), times.end(), [&](double time) {
        return time >= others.front() && time <= others.back();
    });
}

template <typename Check> std::exception_ptr complaintOf(const Check &check) {
    try {
        check();
    } catch (const UserError &) {
        return std::current_exception();
    }
    return nullptr;
}

} // namespace

CommonFacts commonFactsOf(const BurstSource &source) {
    return {source.instrument(), source.velocitySystem(), source.hasTrack()};
}

std::string difference(const CommonFacts &left, const CommonFacts &right) {
    std::string differs = difference(left.instrument, right.instrument);
    if (differs.empty() && left.system != right.system) {
        differs = "the system of the velocities";
    }
    if (differs.empty() && left.hasTrack != right.hasTrack) {
        differs = "whether there is a surface track";
    }
    return differs;
}

void completePlace(Instrument &instrument, const Instrument &other) {
    for (const NamedFact &fact : kPlace) {
        double &known = instrument.*fact.field;
        known = std::isnan(known) ? other.*fact.field : known;
    }
}

std::string inFull(const Instrument &instrument) {
    std::string text =
        fmt::format("instrument_type={}\npings_per_sample={}\nbeams={}\nbeam_azimuth={}\n",
                    instrument.instrumentType, instrument.pingsPerSample, instrument.beams,
                    fmt::join(instrument.beamAzimuth, " "));
    for (const NamedFact &fact : kFacts) {
        text += fmt::format("{}={}\n", fact.name, instrument.*fact.field);
    }
    if (instrument.beamToXyz) {
        text += fmt::format("beam_to_xyz={}\n", fmt::join(*instrument.beamToXyz, " "));
    }
    if (instrument.profile) {
        text += fmt::format("cells={}\n", instrument.profile->cells);
        for (const NamedProfileFact &fact : kProfileFacts) {
            text += fmt::format("{}={}\n", fact.name, (*instrument.profile).*fact.field);
        }
    }
    return text;
}

JoinedSource::JoinedSource(const std::vector<std::string> &paths, Opener opener)
    : opener_(std::move(opener)) {
    for (const std::string &path : paths) {
        const auto source = opener_(path);
        add(*source, path);
    }
    sortByTime();
    for (std::size_t part = 0; part < parts_.size(); ++part) {
        for (std::size_t burst = 0; burst < parts_[part].times.size(); ++burst) {
            places_.emplace_back(part, burst);
        }
    }
}

void JoinedSource::add(const BurstSource &source, const std::string &path) {
    if (parts_.empty()) {
        instrument_ = source.instrument();
        system_ = source.velocitySystem();
        hasTrack_ = source.hasTrack();
        known_ = source.knownFacts();
    }
    const std::string differs = difference(commonFactsOf(*this), commonFactsOf(source));
    if (!differs.empty()) {
        throw UserError(
            differs + " differs between " + parts_.front().path + " and " + path +
            ": a deployment is of one instrument at one place; correct it with --set, or process "
            "these files one by one");
    }
    completePlace(instrument_, source.instrument());
    hasTruth_ = hasTruth_ || source.hasTruth();
    Part part;
    part.path = path;
    part.times = startTimes(source);
    part.middleTime = median(part.times);
    part.attitudeError = complaintOf([&source] { source.requireAttitude(); });
    part.beamsError = complaintOf([&source] { source.requireBeams(); });
    parts_.push_back(part);
    for (const std::string &note : source.notes()) {
        if (std::find(notes_.begin(), notes_.end(), note) == notes_.end()) {
            notes_.push_back(note);
        }
    }
}

// Files in time order, in which one wrong clock does not misplace a whole file; when one has no times, all stay in the
// order given.
void JoinedSource::sortByTime() {
    const auto untimed = std::find_if(parts_.begin(), parts_.end(), [](const Part &part) {
        return !std::isfinite(part.times.front()) || !std::isfinite(part.times.back());
    });
    if (untimed != parts_.end()) {
        if (parts_.size() > 1) {
            notes_.push_back(fmt::format("the {} burst of {} has no time: the files are taken in "
                                         "the order in which they were named",
                                         std::isfinite(untimed->times.front()) ? "last" : "first",
                                         untimed->path));
        }
        return;
    }
    std::stable_sort(parts_.begin(), parts_.end(), [](const Part &left, const Part &right) {
        return left.middleTime < right.middleTime;
    });
    for (std::size_t i = 1; i < parts_.size(); ++i) {
        checkOverlap(parts_[i - 1], parts_[i]);
    }
}

// One wrong clock stretches a file over others, and where times go back first and last ones tell little. The same file has
// the same middle.
void JoinedSource::checkOverlap(const Part &left, const Part &right) {
    const bool sameMiddle = !(right.middleTime > left.middleTime);
    if (right.times.front() > left.times.back() && !sameMiddle) {
        return;
    }
    const std::string overlap =
        "the bursts of " + left.path + " and " + right.path + " overlap in time";
    const bool ascend = TimeOrder(left.times).ascends() && TimeOrder(right.times).ascends();
    if (sameMiddle ||
        (ascend && reachInto(left.times, right.times) && reachInto(right.times, left.times))) {
        throw UserError(overlap + ": is one deployment given twice?");
    }
    notes_.push_back(overlap);
}

const BurstSource &JoinedSource::open(std::size_t part) const {
    if (!openSource_ || openPart_ != part) {
        openSource_.reset(); // before the next one opens: one file at a time
        openSource_ = opener_(parts_[part].path);
        openPart_ = part;
    }
    return *openSource_;
}

void JoinedSource::requireAttitude() const {
    for (const Part &part : parts_) {
        if (part.attitudeError) {
            std::rethrow_exception(part.attitudeError);
        }
    }
}

void JoinedSource::requireBeams() const {
    for (const Part &part : parts_) {
        if (part.beamsError) {
            std::rethrow_exception(part.beamsError);
        }
    }
}

double JoinedSource::startTime(std::size_t index) const {
    const auto [part, burst] = places_.at(index);
    return open(part).startTime(burst);
}

Burst JoinedSource::readBurst(std::size_t index) const {
    const auto [part, burst] = places_.at(index);
    return open(part).readBurst(burst);
}

std::optional<Truth> JoinedSource::readTruth(std::size_t index) const {
    const auto [part, burst] = places_.at(index);
    return open(part).readTruth(burst);
}

std::vector<std::string> JoinedSource::files() const {
    std::vector<std::string> paths;
    for (const Part &part : parts_) {
        paths.push_back(part.path);
    }
    return paths;
}

std::vector<std::string> JoinedSource::notes() const { return notes_; }

} // namespace orvik
