#include "burst/instrument_facts.hpp"

#include <algorithm>
#include <cmath>

#include "burst/column.hpp"
#include "burst/geometry.hpp"
#include "netcdf/units.hpp"
#include "user_error.hpp"

namespace orvik {

namespace {

class FactReader {
public:
    explicit FactReader(const FactSources &sources) : sources_(sources) {}

    // The user's value, else that of the data, else nothing.
    [[nodiscard]] std::optional<std::vector<double>> numbers(const std::string &name) const {
        if (auto given = overrideNumbers(sources_.overrides, name)) {
            return given;
        }
        const auto found = sources_.known.find(name);
        return found == sources_.known.end()
                   ? std::nullopt
                   : std::optional<std::vector<double>>(found->second.values);
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

    void within(const std::string &name, int limit, double &target) const {
        number(name, target);
        if (std::abs(target) > limit) {
            throw UserError(name + where(name) + " must lie between -" + std::to_string(limit) +
                            " and " + std::to_string(limit) + " degrees");
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

    [[nodiscard]] bool isGiven(const std::string &name) const {
        return sources_.overrides.count(name) != 0;
    }
    [[nodiscard]] std::string where(const std::string &name) const {
        const auto &files = sources_.overrides.factsFiles;
        if (const auto told = files.find(name); told != files.end()) {
            return " in " + told->second;
        }
        return sources_.overrides.count(name) != 0 ? " (given with --set)" : " in " + sources_.path;
    }

    [[nodiscard]] const std::string &path() const { return sources_.path; }

private:
    const FactSources &sources_;
};

// Files may keep the matrix by columns; its dimensions say so.
std::vector<double> matrixByRows(const NcVariable &variable, const std::vector<double> &values) {
    if (variable.axis("beam") != 0 || variable.axis("xyz") != 1) {
        return values;
    }
    std::vector<double> matrix(9);
    for (std::size_t row = 0; row < 3; ++row) {
        for (std::size_t column = 0; column < 3; ++column) {
            matrix[3 * row + column] = values[3 * column + row];
        }
    }
    return matrix;
}

// A file may keep a position for each burst, which is none of the whole deployment.
bool isPlace(const std::string &name) { return name == "longitude" || name == "latitude"; }

std::optional<std::vector<double>> factOfBurstFile(const NcReader &file, const Fact &fact) {
    const auto variable = file.find(fact.name);
    if (!variable || (isPlace(fact.name) && variable->size() != 1)) {
        return std::nullopt;
    }
    if (!fact.takes(variable->size())) {
        throw UserError("variable " + variable->name + " in " + file.path() +
                        " has the dimensions " + variable->shapeText() + " and " +
                        std::to_string(variable->size()) + " values, expected " + countText(fact));
    }
    const double factor = unitFactor(file, *variable, fact.quantity);
    std::vector<double> values = file.readAll(*variable);
    for (double &value : values) {
        value *= factor;
        if (!std::isfinite(value)) {
            return std::nullopt;
        }
    }
    return values.size() == 9 ? matrixByRows(*variable, values) : values;
}

void readBeams(const FactReader &reader, Instrument &instrument) {
    reader.number("beam_slant_angle", instrument.slantAngle);
    if (instrument.slantAngle <= 0.0 || instrument.slantAngle >= 90.0) {
        throw UserError("beam_slant_angle" + reader.where("beam_slant_angle") +
                        " must lie between 0 and 90 degrees");
    }
    if (const auto azimuths = reader.numbers("beam_azimuth")) {
        instrument.beamAzimuth = *azimuths;
    }
    const auto matrix = reader.numbers("beam_to_xyz");
    if (matrix && instrument.beams == 3) { // of four beams azimuths and slant say everything
        instrument.beamToXyz.emplace();
        std::copy(matrix->begin(), matrix->end(), instrument.beamToXyz->begin());
    }
}

// The range to the measurement cell, directly or from the heights of cell and head above the bed. A height that the user
// gives corrects the data's range.
void readCell(const FactReader &reader, Instrument &instrument) {
    double height = kUnknown;
    reader.number("velocity_height_above_bed", height);
    reader.positive("cell_range", instrument.cellRange);
    const bool corrected =
        reader.isGiven("velocity_height_above_bed") && !reader.isGiven("cell_range");
    if (std::isfinite(height) && (corrected || !std::isfinite(instrument.cellRange))) {
        if (height <= instrument.pressureHeight) {
            throw UserError("velocity_height_above_bed" +
                            reader.where("velocity_height_above_bed") +
                            " must be more than pressure_sensor_height_above_bed; of a head that "
                            "looks down give cell_range instead");
        }
        const double slant = instrument.slantAngle * kRadiansPerDegree;
        instrument.cellRange = (height - instrument.pressureHeight) / std::cos(slant);
    }
    reader.positive("cell_size", instrument.cellSize);
}

// What point and profile instruments have in common.
Instrument readCommon(const FactReader &reader) {
    Instrument instrument;
    reader.positive("sampling_rate", instrument.samplingRate);
    if (!std::isfinite(instrument.samplingRate)) {
        throw MissingFact("sampling_rate", reader.path());
    }
    reader.positive("acoustic_frequency", instrument.acousticFrequency);
    instrument.pingsPerSample = static_cast<unsigned>(
        reader.whole("pings_per_sample", static_cast<int>(instrument.pingsPerSample), 1, 1000000));
    reader.number("pressure_sensor_height_above_bed", instrument.pressureHeight);
    reader.number("magnetic_declination", instrument.declination);
    reader.number("roll_offset", instrument.rollOffset);
    reader.within("longitude", 360, instrument.longitude);
    reader.within("latitude", 90, instrument.latitude);
    return instrument;
}

// The heights of the cells, from the blanking distance or from their own list, which must be evenly spaced.
void readCells(const FactReader &reader, Instrument &instrument) {
    constexpr double kSame = 0.001; // [m]
    ProfileFacts &profile = *instrument.profile;
    reader.positive("cell_size", instrument.cellSize);
    const auto distances = reader.numbers("cell_distance");
    if (!std::isfinite(instrument.cellSize) && distances && distances->size() > 1) {
        instrument.cellSize =
            (distances->back() - distances->front()) / static_cast<double>(distances->size() - 1);
    }
    if (!std::isfinite(instrument.cellSize)) {
        throw MissingFact("cell_size", reader.path());
    }
    const auto blanking = reader.numbers("blanking_distance");
    if (blanking) {
        profile.blanking = blanking->front();
    } else if (distances) {
        profile.blanking = distances->front() - instrument.cellSize;
    }
    for (std::size_t c = 0; distances && c < distances->size(); ++c) {
        const double expected = profile.blanking + static_cast<double>(c + 1) * instrument.cellSize;
        if (!(std::abs((*distances)[c] - expected) < kSame)) {
            throw UserError("cell_distance in " + reader.path() + ": cell " + std::to_string(c) +
                            " is " + std::to_string((*distances)[c]) +
                            " m from the head; with blanking_distance and cell_size it is " +
                            std::to_string(expected) + " m: correct these with --set");
        }
    }
}

void checkBeams(const FactReader &reader, const Instrument &instrument) {
    if (!instrument.beamAzimuth.empty() && instrument.beamAzimuth.size() != instrument.beams) {
        throw UserError("beam_azimuth" + reader.where("beam_azimuth") + " has " +
                        std::to_string(instrument.beamAzimuth.size()) +
                        " angles, the instrument has " + std::to_string(instrument.beams) +
                        " beams");
    }
}

constexpr int kProfileType = 16;

// For a sensor whose zero is not known; missing values stay out of it.
void shiftToMean(std::vector<float> &series, double mean) {
    double sum = 0.0;
    std::size_t count = 0;
    for (const float value : series) {
        if (std::isfinite(value)) {
            sum += static_cast<double>(value);
            ++count;
        }
    }
    const double shift = count > 0 ? mean - sum / static_cast<double>(count) : 0.0;
    for (float &value : series) {
        value = static_cast<float>(static_cast<double>(value) + shift);
    }
}

} // namespace

KnownFacts factsOfBurstFile(const NcReader &file) {
    KnownFacts known;
    const auto add = [&](const std::string &name, const std::vector<double> &values) {
        known[name] = {values, "variable " + name + " of " + file.path()};
    };
    for (const Fact &fact : factTable()) {
        if (fact.scope == FactScope::deployment) {
            if (const auto values = factOfBurstFile(file, fact)) {
                add(fact.name, *values);
            }
        }
    }
    if (const auto column = findColumn(file, "cell_distance", Quantity::length, {"cell"})) {
        std::vector<double> distances = file.readAll(column->variable);
        for (double &distance : distances) {
            distance *= column->factor;
        }
        add("cell_distance", distances);
    }
    return known;
}

Instrument readInstrument(const FactSources &sources) {
    const FactReader reader(sources);
    Instrument instrument = readCommon(reader);
    instrument.trackSamplingRate = 2.0 * instrument.samplingRate;
    reader.positive("surface_track_sampling_rate", instrument.trackSamplingRate);
    instrument.instrumentType = reader.whole("instrument_type", instrument.instrumentType, 0, 1000);
    if (instrument.instrumentType == kProfileType) {
        throw UserError("instrument_type" + reader.where("instrument_type") +
                        " is 16, a profile instrument, but the velocities have no dimension cell");
    }
    readBeams(reader, instrument);
    checkBeams(reader, instrument);
    readCell(reader, instrument);
    return instrument;
}

Instrument readProfileInstrument(const FactSources &sources, std::size_t beams, std::size_t cells) {
    const FactReader reader(sources);
    Instrument instrument = readCommon(reader);
    instrument.profile = ProfileFacts{};
    instrument.profile->cells = cells;
    instrument.trackSamplingRate = instrument.samplingRate;
    reader.positive("surface_track_sampling_rate", instrument.trackSamplingRate);
    instrument.instrumentType = reader.whole("instrument_type", kProfileType, 0, 1000);
    if (instrument.instrumentType != kProfileType) {
        throw UserError(
            "instrument_type" + reader.where("instrument_type") + " is " +
            std::to_string(instrument.instrumentType) +
            ", a point instrument, but the velocities have a dimension cell: profiles are type 16");
    }
    instrument.beams = beams;
    readBeams(reader, instrument);
    checkBeams(reader, instrument);
    instrument.cellSize = kUnknown;
    readCells(reader, instrument);
    reader.number("surface_track_time_offset", instrument.profile->trackTimeOffset);
    reader.positive("ambiguity_velocity", instrument.profile->ambiguityVelocity);
    return instrument;
}

void requireBeamsOf(const Instrument &instrument, const std::string &path) {
    if (!instrument.beamToXyz && instrument.beamAzimuth.empty()) {
        throw MissingFact("beam_azimuth", path,
                          instrument.beams == 3 ? ", or the matrix with --set beam_to_xyz" : "");
    }
}

void correctPressure(const FactSources &sources, std::vector<float> &pressure) {
    const double air = factNumber(sources.known, sources.overrides, "air_pressure").value_or(0.0);
    for (float &value : pressure) {
        value = static_cast<float>(static_cast<double>(value) - air);
    }
    if (const auto mean = factNumber(sources.known, sources.overrides, "pressure_mean")) {
        shiftToMean(pressure, *mean);
    }
}

} // namespace orvik
