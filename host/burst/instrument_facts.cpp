#include "burst/instrument_facts.hpp"

#include <algorithm>
#include <charconv>
#include <cmath>

#include "burst/column.hpp"
#include "burst/geometry.hpp"
#include "netcdf/units.hpp"
#include "user_error.hpp"

namespace orvik {

namespace {

struct Fact {
    const char *name;
    Quantity quantity;
    std::size_t count;        // numbers that --set takes
    const char *placeholder;  // what an error message asks for
    std::size_t most = count; // for facts that may have more

    [[nodiscard]] bool takes(std::size_t numbers) const {
        return numbers >= count && numbers <= most;
    }
};

constexpr Fact kFacts[] = {
    {"sampling_rate", Quantity::frequency, 1, "HERTZ"},
    {"surface_track_sampling_rate", Quantity::frequency, 1, "HERTZ"},
    {"acoustic_frequency", Quantity::frequency, 1, "HERTZ"},
    {"instrument_type", Quantity::plain, 1, "CODE"},
    {"beam_slant_angle", Quantity::angle, 1, "DEGREES"},
    {"beam_azimuth", Quantity::angle, 3, "DEGREES,DEGREES,DEGREES", 4},
    {"beam_to_xyz", Quantity::plain, 9, "NINE,NUMBERS,ROW,BY,ROW..."},
    {"cell_range", Quantity::length, 1, "METRES"},
    {"cell_size", Quantity::length, 1, "METRES"},
    {"velocity_height_above_bed", Quantity::length, 1, "METRES"},
    {"blanking_distance", Quantity::length, 1, "METRES"},
    {"surface_track_time_offset", Quantity::duration, 1, "SECONDS"},
    {"ambiguity_velocity", Quantity::velocity, 1, "METRES_PER_SECOND"},
    {"pings_per_sample", Quantity::plain, 1, "COUNT"},
    {"pressure_sensor_height_above_bed", Quantity::length, 1, "METRES"},
    {"magnetic_declination", Quantity::angle, 1, "DEGREES"},
    {"longitude", Quantity::angle, 1, "DEGREES_EAST"},
    {"latitude", Quantity::angle, 1, "DEGREES_NORTH"},
    {"heading", Quantity::angle, 1, "DEGREES"},
    {"pitch", Quantity::angle, 1, "DEGREES"},
    {"roll", Quantity::angle, 1, "DEGREES"},
    {"roll_offset", Quantity::angle, 1, "DEGREES"},
    {"pressure_mean", Quantity::pressure, 1, "DECIBAR"},
    {"time", Quantity::duration, 1, "SECONDS_SINCE_1970"},
};

const Fact *findFact(const std::string &name) {
    const auto *fact = std::find_if(std::begin(kFacts), std::end(kFacts),
                                    [&](const Fact &candidate) { return candidate.name == name; });
    return fact == std::end(kFacts) ? nullptr : fact;
}

std::string countText(const Fact &fact) {
    const std::string least = std::to_string(fact.count);
    return fact.most == fact.count ? least : least + " to " + std::to_string(fact.most);
}

double parseNumber(const std::string &name, const std::string &text) {
    double value = 0.0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
    if (error != std::errc{} || end != text.data() + text.size() || !std::isfinite(value)) {
        throw UsageError("--set " + name + ": \"" + text + "\" is not a number");
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

class FactSource {
public:
    FactSource(const NcReader &file, const Overrides &overrides)
        : file_(file), overrides_(overrides) {}

    // The user's value, else the file's in the unit of burst files, else nothing.
    [[nodiscard]] std::optional<std::vector<double>> numbers(const std::string &name) const {
        if (auto given = overrideNumbers(overrides_, name)) {
            return given;
        }
        const auto variable = file_.find(name);
        if (!variable) {
            return std::nullopt;
        }
        const Fact &fact = *findFact(name);
        if (!fact.takes(variable->size())) {
            throw UserError("variable " + name + " in " + file_.path() + " has the dimensions " +
                            variable->shapeText() + " and " + std::to_string(variable->size()) +
                            " values, expected " + countText(fact));
        }
        const double factor = unitFactor(file_, *variable, fact.quantity);
        std::vector<double> values = file_.readAll(*variable);
        for (double &value : values) {
            value *= factor;
            if (!std::isfinite(value)) {
                return std::nullopt;
            }
        }
        return values;
    }

    // Keeps the value that `target` has when nobody tells one.
    void number(const std::string &name, double &target) const {
        if (const auto values = numbers(name)) {
            target = values->front();
        }
    }

    void positive(const std::string &name, double &target) const {
        number(name, target);
        if (target <= 0.0) {
            throw UserError(name + where(name) + " must be more than 0");
        }
    }

    [[nodiscard]] int whole(const std::string &name, int fallback, int least, int most) const {
        double value = fallback;
        number(name, value);
        if (value != std::floor(value) || value < least || value > most) {
            throw UserError(name + where(name) + " must be a whole number from " +
                            std::to_string(least) + " to " + std::to_string(most));
        }
        return static_cast<int>(value);
    }

    [[nodiscard]] std::string where(const std::string &name) const {
        return overrides_.count(name) != 0 ? " (given with --set)" : " in " + file_.path();
    }

private:
    const NcReader &file_;
    const Overrides &overrides_;
};

// Files may keep the matrix by columns; its dimensions say so.
std::array<double, 9> matrixByRows(const std::vector<double> &values, bool transposed) {
    std::array<double, 9> matrix{};
    for (std::size_t row = 0; row < 3; ++row) {
        for (std::size_t column = 0; column < 3; ++column) {
            matrix[3 * row + column] = values[transposed ? 3 * column + row : 3 * row + column];
        }
    }
    return matrix;
}

void readBeams(const FactSource &source, const NcReader &file, const Overrides &overrides,
               Instrument &instrument) {
    source.number("beam_slant_angle", instrument.slantAngle);
    if (instrument.slantAngle <= 0.0 || instrument.slantAngle >= 90.0) {
        throw UserError("beam_slant_angle" + source.where("beam_slant_angle") +
                        " must lie between 0 and 90 degrees");
    }
    if (const auto azimuths = source.numbers("beam_azimuth")) {
        instrument.beamAzimuth = *azimuths;
    }
    if (instrument.beams != 3) {
        return; // of four beams azimuths and slant say everything
    }
    if (const auto values = source.numbers("beam_to_xyz")) {
        const auto variable = file.find("beam_to_xyz");
        const bool fromFile = overrides.count("beam_to_xyz") == 0;
        const bool transposed =
            fromFile && variable->axis("beam") == 0 && variable->axis("xyz") == 1;
        instrument.beamToXyz = matrixByRows(*values, transposed);
    }
}

// The range to the measurement cell, directly or from the heights of cell and head above the bed.
void readCell(const FactSource &source, Instrument &instrument) {
    double height = kUnknown;
    source.number("velocity_height_above_bed", height);
    if (std::isfinite(height)) {
        const double slant = instrument.slantAngle * kRadiansPerDegree;
        instrument.cellRange = (height - instrument.pressureHeight) / std::cos(slant);
    }
    source.positive("cell_range", instrument.cellRange);
    source.positive("cell_size", instrument.cellSize);
}

// Where the instrument stands. Files that keep a position for each burst tell none that holds for all.
void readPlace(const FactSource &source, const NcReader &file, const Overrides &overrides,
               Instrument &instrument) {
    const auto read = [&](const char *name, double limit, double &target) {
        const auto variable = file.find(name);
        if (overrides.count(name) == 0 && (!variable || variable->size() != 1)) {
            return;
        }
        source.number(name, target);
        if (std::abs(target) > limit) {
            throw UserError(name + source.where(name) + " must lie between -" +
                            std::to_string(static_cast<int>(limit)) + " and " +
                            std::to_string(static_cast<int>(limit)) + " degrees");
        }
    };
    read("longitude", 360.0, instrument.longitude);
    read("latitude", 90.0, instrument.latitude);
}

// What point and profile instruments have in common.
Instrument readCommon(const FactSource &source, const NcReader &file, const Overrides &overrides) {
    Instrument instrument;
    source.positive("sampling_rate", instrument.samplingRate);
    if (!std::isfinite(instrument.samplingRate)) {
        throw UserError(missingText("sampling_rate", file.path()));
    }
    source.positive("acoustic_frequency", instrument.acousticFrequency);
    instrument.pingsPerSample = static_cast<unsigned>(
        source.whole("pings_per_sample", static_cast<int>(instrument.pingsPerSample), 1, 1000000));
    source.number("pressure_sensor_height_above_bed", instrument.pressureHeight);
    source.number("magnetic_declination", instrument.declination);
    source.number("roll_offset", instrument.rollOffset);
    readPlace(source, file, overrides, instrument);
    return instrument;
}

// The heights of the cells, from the blanking distance or from their own list, which must be evenly spaced.
void readCells(const FactSource &source, const NcReader &file, Instrument &instrument) {
    constexpr double kSame = 0.001; // [m]
    ProfileFacts &profile = *instrument.profile;
    source.positive("cell_size", instrument.cellSize);
    if (!std::isfinite(instrument.cellSize)) {
        throw UserError(missingText("cell_size", file.path()));
    }
    source.number("blanking_distance", profile.blanking);
    const auto variable = file.find("cell_distance");
    if (!variable) {
        return;
    }
    requireShape(file, *variable, {"cell"});
    const double factor = unitFactor(file, *variable, Quantity::length);
    const std::vector<double> distances = file.readAll(*variable);
    for (std::size_t c = 0; c < distances.size(); ++c) {
        const double told = distances[c] * factor;
        const double expected = profile.blanking + static_cast<double>(c + 1) * instrument.cellSize;
        if (!(std::abs(told - expected) < kSame)) {
            throw UserError("cell_distance in " + file.path() + ": cell " + std::to_string(c) +
                            " is " + std::to_string(told) +
                            " m from the head; with blanking_distance and cell_size it is " +
                            std::to_string(expected) + " m: correct these with --set");
        }
    }
}

void checkBeams(const FactSource &source, const Instrument &instrument) {
    if (!instrument.beamAzimuth.empty() && instrument.beamAzimuth.size() != instrument.beams) {
        throw UserError("beam_azimuth" + source.where("beam_azimuth") + " has " +
                        std::to_string(instrument.beamAzimuth.size()) +
                        " angles, the instrument has " + std::to_string(instrument.beams) +
                        " beams");
    }
}

constexpr int kProfileType = 16;

} // namespace

void checkOverrides(const Overrides &overrides) {
    for (const auto &[name, text] : overrides) {
        const Fact *fact = findFact(name);
        if (fact == nullptr) {
            std::string known;
            for (const Fact &candidate : kFacts) {
                known += known.empty() ? "" : ", ";
                known += candidate.name;
            }
            throw UsageError("--set " + name + ": no such value; known are " + known);
        }
        if (!fact->takes(parseNumbers(name, text).size())) {
            throw UsageError("--set " + name + " takes " + countText(*fact) +
                             (fact->count == 1 ? " number" : " numbers separated by commas") +
                             ": " + name + "=" + fact->placeholder);
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

std::string missingText(const std::string &name, const std::string &path) {
    const Fact *fact = findFact(name);
    return name + " is missing in " + path + ": give it with --set " + name + "=" +
           fact->placeholder;
}

Instrument readInstrument(const NcReader &file, const Overrides &overrides) {
    const FactSource source(file, overrides);
    Instrument instrument = readCommon(source, file, overrides);
    instrument.trackSamplingRate = 2.0 * instrument.samplingRate;
    source.positive("surface_track_sampling_rate", instrument.trackSamplingRate);
    instrument.instrumentType = source.whole("instrument_type", instrument.instrumentType, 0, 1000);
    if (instrument.instrumentType == kProfileType) {
        throw UserError("instrument_type" + source.where("instrument_type") +
                        " is 16, a profile instrument, but the velocities have no dimension cell");
    }
    readBeams(source, file, overrides, instrument);
    checkBeams(source, instrument);
    readCell(source, instrument);
    return instrument;
}

Instrument readProfileInstrument(const NcReader &file, const Overrides &overrides,
                                 std::size_t beams, std::size_t cells) {
    const FactSource source(file, overrides);
    Instrument instrument = readCommon(source, file, overrides);
    instrument.profile = ProfileFacts{};
    instrument.profile->cells = cells;
    instrument.trackSamplingRate = instrument.samplingRate;
    source.positive("surface_track_sampling_rate", instrument.trackSamplingRate);
    instrument.instrumentType = source.whole("instrument_type", kProfileType, 0, 1000);
    if (instrument.instrumentType != kProfileType) {
        throw UserError(
            "instrument_type" + source.where("instrument_type") + " is " +
            std::to_string(instrument.instrumentType) +
            ", a point instrument, but the velocities have a dimension cell: profiles are type 16");
    }
    instrument.beams = beams;
    readBeams(source, file, overrides, instrument);
    checkBeams(source, instrument);
    instrument.cellSize = kUnknown;
    readCells(source, file, instrument);
    source.number("surface_track_time_offset", instrument.profile->trackTimeOffset);
    source.positive("ambiguity_velocity", instrument.profile->ambiguityVelocity);
    return instrument;
}

} // namespace orvik
