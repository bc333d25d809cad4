#include "burst/fact_table.hpp"

#include <algorithm>
#include <charconv>
#include <cmath>

#include <fmt/format.h>

#include "burst/date_text.hpp"

namespace orvik {

namespace {

constexpr auto kDeployment = FactScope::deployment;
constexpr auto kBurst = FactScope::burst;

constexpr const char *kTime = "time";

constexpr Fact kFacts[] = {
    {"sampling_rate", Quantity::frequency, 1, 1, kDeployment, "HERTZ", "2",
     "samples of pressure and velocity a second"},
    {"surface_track_sampling_rate", Quantity::frequency, 1, 1, kDeployment, "HERTZ", "4",
     "values of the surface track a second"},
    {"pressure_sensor_height_above_bed", Quantity::length, 1, 1, kDeployment, "METRES", "0.6",
     "the depth of the water is the mean pressure and this height; without it the sensor lies on "
     "the bed"},
    {"air_pressure", Quantity::pressure, 1, 1, kDeployment, "DECIBAR", "10.13",
     "taken from every pressure: of a sensor that also feels the weight of the air"},
    {"pressure_mean", Quantity::pressure, 1, 1, kDeployment, "DECIBAR", "9.4",
     "every burst's pressures are shifted to this mean: for a sensor whose zero is not known"},
    {"heading", Quantity::angle, 1, 1, kBurst, "DEGREES", "0",
     "turns velocities of the instrument's own axes into east and north"},
    {"pitch", Quantity::angle, 1, 1, kBurst, "DEGREES", "0",
     "turns velocities of the instrument's own axes into east and north"},
    {"roll", Quantity::angle, 1, 1, kBurst, "DEGREES", "0",
     "turns velocities of the instrument's own axes into east and north"},
    {"roll_offset", Quantity::angle, 1, 1, kDeployment, "DEGREES", "180",
     "added to every roll: 180 for a head that looks down"},
    {"magnetic_declination", Quantity::angle, 1, 1, kDeployment, "DEGREES", "-3.5",
     "added to every direction; 0 when headings or velocities are of true north already"},
    {"longitude", Quantity::angle, 1, 1, kDeployment, "DEGREES_EAST", "-6.9",
     "where the instrument stands"},
    {"latitude", Quantity::angle, 1, 1, kDeployment, "DEGREES_NORTH", "58.2",
     "where the instrument stands"},
    {"beam_slant_angle", Quantity::angle, 1, 1, kDeployment, "DEGREES", "25",
     "angle of the slanted beams from the vertical"},
    {"beam_azimuth", Quantity::angle, 3, 4, kDeployment, "DEGREES,DEGREES,DEGREES", "[0, 120, 240]",
     "where the slanted beams point, from the X axis towards the Y axis"},
    {"beam_to_xyz", Quantity::plain, 9, 9, kDeployment, "NINE,NUMBERS,ROW,BY,ROW...",
     "[1.5774, -0.7887, -0.7887, 0, -1.3662, 1.3662, 0.3677, 0.3677, 0.3677]",
     "turns velocities along the beams into the instrument's own axes"},
    {"cell_range", Quantity::length, 1, 1, kDeployment, "METRES", "8.2",
     "from the head along the beam to where velocities are measured"},
    {"velocity_height_above_bed", Quantity::length, 1, 1, kDeployment, "METRES", "3.3",
     "height where velocities are measured, another way to tell cell_range"},
    {"velocity_cell", Quantity::plain, 1, 1, kDeployment, "NUMBER", "2",
     "of several cells the one that is used, counted from 0 at the head"},
    {"cell_size", Quantity::length, 1, 1, kDeployment, "METRES", "1.2",
     "length of a velocity cell"},
    {"blanking_distance", Quantity::length, 1, 1, kDeployment, "METRES", "0.5",
     "cell c, counted from 0, is centred this and (c + 1) cell sizes from the head"},
    {"acoustic_frequency", Quantity::frequency, 1, 1, kDeployment, "HERTZ", "1000000",
     "decides with cell_size how much velocity noise is removed"},
    {"pings_per_sample", Quantity::plain, 1, 1, kDeployment, "COUNT", "60",
     "pings averaged into a sample"},
    {"ambiguity_velocity", Quantity::velocity, 1, 1, kDeployment, "METRES_PER_SECOND", "2.5",
     "profile instruments: from it follows the velocity noise that is removed"},
    {"surface_track_time_offset", Quantity::duration, 1, 1, kDeployment, "SECONDS", "0.1",
     "profile instruments: surface track and pressure are taken this much after the velocities"},
    {"simultaneous_sampling", Quantity::plain, 1, 1, kDeployment, "0_OR_1", "1",
     "1: all series of a sample are of one instant; 0: a point instrument's sensors take turns"},
    {"instrument_type", Quantity::plain, 1, 1, kDeployment, "CODE", "3",
     "3 a point instrument, 16 a profile instrument"},
    {kTime, Quantity::duration, 1, 1, kBurst, "YYYY-MM-DDTHH:MM:SSZ", "2008-09-09T00:00:00Z",
     "start of the only burst, or of a series whose times count from 0: date and time of UTC, or "
     "seconds since 1970"},
};

double parseNumber(const std::string &name, const std::string &text) {
    const bool isTime = name == kTime;
    if (const auto date = isTime ? parsedDate(text) : std::nullopt) {
        return *date;
    }
    double value = 0.0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
    if (error != std::errc{} || end != text.data() + text.size() || !std::isfinite(value)) {
        throw UsageError(
            "--set " + name + ": \"" + text + "\" is not a number" +
            (isTime ? " of seconds since 1970, nor a date such as 2008-09-09T00:00:00Z" : ""));
    }
    return value;
}

std::vector<double> parseNumbers(const std::string &name, const std::string &text) {
    std::vector<double> values;
    std::size_t begin = 0;
    while (begin <= text.size()) {
        const std::size_t end = std::min(text.find(',', begin), text.size());
        values.push_back(parseNumber(name, text.substr(begin, end - begin)));
        begin = end + 1;
    }
    return values;
}

} // namespace

void Overrides::addFrom(const Overrides &facts) {
    for (const auto &[name, text] : facts) {
        if (try_emplace(name, text).second) {
            factsFiles[name] = facts.factsFiles.at(name);
        }
    }
}

std::string Overrides::nameWithOrigin(const std::string &name) const {
    const auto found = factsFiles.find(name);
    return found == factsFiles.end() ? "--set " + name : name + " in " + found->second;
}

std::span<const Fact> factTable() { return kFacts; }

const Fact *findFact(const std::string &name) {
    const auto *fact = std::find_if(std::begin(kFacts), std::end(kFacts),
                                    [&](const Fact &candidate) { return candidate.name == name; });
    return fact == std::end(kFacts) ? nullptr : fact;
}

std::string countText(const Fact &fact) {
    const std::string least = std::to_string(fact.least);
    return fact.most == fact.least ? least : least + " to " + std::to_string(fact.most);
}

MissingFact::MissingFact(const std::string &name, const std::string &path,
                         const std::string &alternative)
    : UserError(fmt::format("{0} is missing in {1}: give it with --set {0}={2}{3}; orvik init "
                            "lists all that is missing",
                            name, path, findFact(name)->asked, alternative)),
      fact_(name) {}

void checkOverrides(const Overrides &overrides) {
    for (const auto &[name, text] : overrides) {
        const Fact *fact = findFact(name);
        if (fact == nullptr) {
            std::string known;
            for (const Fact &candidate : kFacts) {
                known += known.empty() ? "" : ", ";
                known += candidate.name;
            }
            throw UsageError(fmt::format("--set {}: no such value; known are {}", name, known));
        }
        if (!fact->takes(parseNumbers(name, text).size())) {
            throw UsageError(fmt::format(
                "--set {0} takes {1}{2}: {0}={3}", name, countText(*fact),
                fact->least == 1 ? " number" : " numbers separated by commas", fact->asked));
        }
    }
}

std::optional<std::vector<double>> overrideNumbers(const Overrides &overrides,
                                                   const std::string &name) {
    const auto found = overrides.find(name);
    if (found == overrides.end()) {
        return std::nullopt;
    }
    return parseNumbers(name, found->second);
}

std::optional<double> factNumber(const KnownFacts &known, const Overrides &overrides,
                                 const std::string &name) {
    if (const auto given = overrideNumbers(overrides, name)) {
        return given->front();
    }
    const auto found = known.find(name);
    return found == known.end() ? std::nullopt
                                : std::optional<double>(found->second.values.front());
}

} // namespace orvik
