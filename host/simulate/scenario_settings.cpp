#include "simulate/scenario_settings.hpp"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <string_view>

#include <fmt/format.h>

#include "burst/date_text.hpp"
#include "user_error.hpp"

namespace orvik {

namespace {

constexpr double kCircle = 360.0;

constexpr int kProfileType = 16;
constexpr ProfileFacts kUsualProfile{40, 0.5, 0.0, 2.5};
constexpr double kUsualCellSize = 0.5; // [m] vertical, of a profile instrument

// Doubles count whole numbers exactly up to here.
constexpr double kGreatestWhole = 9007199254740992.0;

// Whether the type goes with settings of profile instruments is seen once all are known.
ProfileFacts &profileOf(Scenario &scenario) {
    auto &profile = scenario.instrument.profile;
    return profile ? *profile : profile.emplace(kUsualProfile);
}

void storeType(Scenario &scenario, int type) {
    scenario.instrument.instrumentType = type;
    if (type == kProfileType) {
        profileOf(scenario);
        scenario.instrument.cellSize = kUsualCellSize;
    }
}

// Evenly around the head, until azimuths are told.
void storeBeams(Scenario &scenario, std::size_t beams) {
    scenario.instrument.beams = beams;
    scenario.instrument.beamAzimuth = beams == 4 ? std::vector<double>{0.0, 90.0, 180.0, 270.0}
                                                 : std::vector<double>{0.0, 120.0, 240.0};
}

double numberOfText(const std::string &name, std::string_view text) {
    double value = 0.0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
    if (error != std::errc() || end != text.data() + text.size()) {
        throw UserError(fmt::format("{}: '{}' is not a number", name, text));
    }
    return value;
}

std::string longName(std::string_view key) {
    if (key == "hs") {
        return "height";
    }
    if (key == "tp") {
        return "period";
    }
    return std::string(key == "dir" ? "direction" : key);
}

void storeSystemPart(const std::string &name, std::string_view part, WaveSystem &system) {
    const auto equals = part.find('=');
    if (equals == std::string_view::npos) {
        throw UserError(fmt::format(
            "{}: '{}' should read key=value, as in hs=1,tp=12,dir=200,spread=15", name, part));
    }
    const std::string key = longName(part.substr(0, equals));
    const std::string_view value = part.substr(equals + 1);
    if (key == "shape") {
        storeShape(name, std::string(value), system);
        return;
    }
    const auto &settings = systemSettings();
    const auto setting = std::find_if(settings.begin(), settings.end(),
                                      [&key](const auto &known) { return key == known.name; });
    if (setting == settings.end()) {
        throw UserError(fmt::format(
            "{}: '{}' is unknown; a system has hs, tp, dir, spread, gamma and shape", name, key));
    }
    const std::string fullName = fmt::format("{} {}", name, part.substr(0, equals));
    storeNumber(*setting, fullName, numberOfText(fullName, value), system);
}

} // namespace

const std::vector<NumberSetting<Scenario>> &deploymentSettings() {
    // clang-format off
    static const std::vector<NumberSetting<Scenario>> kSettings{
        {"bursts", "number of bursts", 1, 1e6, [](Scenario &s, double v) { s.bursts = static_cast<std::size_t>(v); }, true},
        {"interval", "s from the start of a burst to that of the next", 1, 1e8, [](Scenario &s, double v) { s.interval = v; }},
        {"samples", "samples of a burst", 16, 16384, [](Scenario &s, double v) { s.samples = static_cast<std::size_t>(v); }, true},
        {"seed", "number that the random draws start from", 0, kGreatestWhole, [](Scenario &s, double v) { s.seed = static_cast<std::uint64_t>(v); }, true},
        {"rate", "samples a second: 0.75, 1 or 2 Hz", 0.75, 2, [](Scenario &s, double v) { s.instrument.samplingRate = v; }},
        {"instrument_type", "the library's type code: 0, 1 or 3; 16 is a profile instrument", 0, 16, [](Scenario &s, double v) { storeType(s, static_cast<int>(v)); }, true},
        {"acoustic_frequency", "Hz", 1e5, 1e7, [](Scenario &s, double v) { s.instrument.acousticFrequency = v; }},
        {"slant", "degrees from the vertical to the slanted beams", 1, 60, [](Scenario &s, double v) { s.instrument.slantAngle = v; }},
        {"cell_range", "m along the beam from the head to the velocity cell", 0.1, 500, [](Scenario &s, double v) { s.instrument.cellRange = v; }},
        {"cell_size", "m along the beam; of a profile instrument vertical", 0.01, 50, [](Scenario &s, double v) { s.instrument.cellSize = v; }},
        {"cells", "cells of a profile instrument", 1, 256, [](Scenario &s, double v) { profileOf(s).cells = static_cast<std::size_t>(v); }, true},
        {"beams", "slanted beams of a profile instrument: 3 or 4", 3, 4, [](Scenario &s, double v) { storeBeams(s, static_cast<std::size_t>(v)); }, true},
        {"blanking", "m from the head up to the cells of a profile instrument", 0, 100, [](Scenario &s, double v) { profileOf(s).blanking = v; }},
        {"track_time_offset", "s by which a profile instrument's track and pressure come after its velocities", -3, 3, [](Scenario &s, double v) { profileOf(s).trackTimeOffset = v; }},
        {"ambiguity_velocity", "m/s, of a profile instrument", 0.1, 20, [](Scenario &s, double v) { profileOf(s).ambiguityVelocity = v; }},
        {"roll_offset", "degrees added to every roll: 180 for a head that looks down", -180, 180, [](Scenario &s, double v) { s.instrument.rollOffset = v; }},
        {"pings_per_sample", "pings averaged into a sample", 1, 10000, [](Scenario &s, double v) { s.instrument.pingsPerSample = static_cast<unsigned>(v); }, true},
        {"pressure_height", "m of the head above the bed", 0, 500, [](Scenario &s, double v) { s.instrument.pressureHeight = v; }},
        {"declination", "degrees from the compass's north to true north", -180, 180, [](Scenario &s, double v) { s.instrument.declination = v; }},
        {"noise_pressure", "dbar, standard deviation", 0, 10, [](Scenario &s, double v) { s.faults.pressureNoise = v; }},
        {"noise_velocity", "m/s along the beam, standard deviation", 0, 10, [](Scenario &s, double v) { s.faults.velocityNoise = v; }},
        {"noise_track", "m, standard deviation", 0, 10, [](Scenario &s, double v) { s.faults.trackNoise = v; }},
        {"spikes", "share of pressure and surface-track samples that are spikes", 0, 1, [](Scenario &s, double v) { s.faults.spikeFraction = v; }},
        {"missing", "share of samples that are missing", 0, 1, [](Scenario &s, double v) { s.faults.missingFraction = v; }},
        {"track_drop", "share of surface-track samples that are lost", 0, 1, [](Scenario &s, double v) { s.faults.trackDropFraction = v; }},
        {"tide_amplitude", "m", 0, 20, [](Scenario &s, double v) { s.tideAmplitude = v; }},
        {"tide_period", "hours", 0.1, 1000, [](Scenario &s, double v) { s.tidePeriod = v; }},
        {"tide_current", "m/s, greatest speed of the tidal stream", 0, 5, [](Scenario &s, double v) { s.tideCurrent = v; }},
        {"tide_current_direction", "degrees, where the rising tide flows", -kCircle, kCircle, [](Scenario &s, double v) { s.tideCurrentDirection = v; }},
    };
    // clang-format on
    return kSettings;
}

const std::vector<NumberSetting<SeaState>> &placeSettings() {
    // clang-format off
    static const std::vector<NumberSetting<SeaState>> kSettings{
        {"depth", "m of water, mean over waves and tide", 0.5, 5000, [](SeaState &s, double v) { s.waterDepth = v; }},
        {"heading", "degrees, compass direction of the X axis", -kCircle, kCircle, [](SeaState &s, double v) { s.heading = v; }},
        {"pitch", "degrees", -60, 60, [](SeaState &s, double v) { s.pitch = v; }},
        {"roll", "degrees", -60, 60, [](SeaState &s, double v) { s.roll = v; }},
    };
    // clang-format on
    return kSettings;
}

const std::vector<NumberSetting<WaveSystem>> &systemSettings() {
    // clang-format off
    static const std::vector<NumberSetting<WaveSystem>> kSettings{
        {"height", "m, significant height", 0, 30, [](WaveSystem &s, double v) { s.significantHeight = v; }},
        {"period", "s, of the spectrum's peak", 1.5, 40, [](WaveSystem &s, double v) { s.peakPeriod = v; }},
        {"direction", "degrees, where the waves come from", -kCircle, kCircle, [](WaveSystem &s, double v) { s.direction = v; }},
        {"spread", "degrees, sqrt(2 (1 - r1))", 0, 80, [](WaveSystem &s, double v) { s.spread = v; }},
        {"gamma", "peak enhancement of a JONSWAP spectrum", 1, 20, [](WaveSystem &s, double v) { s.peakEnhancement = v; }},
    };
    // clang-format on
    return kSettings;
}

void checkNumber(const std::string &name, double value, double lowest, double highest, bool whole,
                 const char *meaning) {
    // Written so that a NaN is refused too.
    const bool inside = value >= lowest && value <= highest;
    if (!inside || (whole && value != std::floor(value))) {
        throw UserError(fmt::format("{}: {} is not allowed; give a {} from {} to {} ({})", name,
                                    value, whole ? "whole number" : "number", lowest, highest,
                                    meaning));
    }
}

void storeStart(const std::string &name, const std::string &text, Scenario &scenario) {
    const auto start = parsedDate(text);
    if (!start) {
        throw UserError(fmt::format(
            "{}: '{}' is not a time in UTC; write it as 2024-11-05T06:00:00Z", name, text));
    }
    scenario.startTime = *start;
}

void storeVelocitySystem(const std::string &name, const std::string &text, Scenario &scenario) {
    if (text == "beam") {
        scenario.velocitySystem = VelocitySystem::beam;
    } else if (text == "xyz") {
        scenario.velocitySystem = VelocitySystem::xyz;
    } else if (text == "enu") {
        scenario.velocitySystem = VelocitySystem::enu;
    } else {
        throw UserError(fmt::format("{}: '{}' is unknown; choose beam, xyz or enu", name, text));
    }
}

void storeBeamAzimuth(const std::string &name, const std::vector<double> &degrees,
                      Scenario &scenario) {
    if ((degrees.size() != 3 && degrees.size() != 4) ||
        !std::all_of(degrees.begin(), degrees.end(), [](double a) { return std::isfinite(a); })) {
        throw UserError(fmt::format(
            "{}: give three or four angles in degrees, one for each slanted beam, as in 0,120,240",
            name));
    }
    scenario.instrument.beamAzimuth = degrees;
}

void storeCurrent(const std::string &name, const std::vector<double> &speedAndDirection,
                  SeaState &sea) {
    const bool pair = speedAndDirection.size() == 2;
    if (!pair || !(speedAndDirection[0] >= 0.0 && speedAndDirection[0] <= 5.0) ||
        !(std::abs(speedAndDirection[1]) <= kCircle)) {
        throw UserError(fmt::format(
            "{}: give a speed from 0 to 5 m/s and the direction in degrees that the current goes "
            "to, as in 0.3,90",
            name));
    }
    sea.currentSpeed = speedAndDirection[0];
    sea.currentDirection = speedAndDirection[1];
}

void storeShape(const std::string &name, const std::string &text, WaveSystem &system) {
    if (text == "jonswap") {
        system.shape = WaveSystem::Shape::jonswap;
    } else if (text == "pierson-moskowitz") {
        system.shape = WaveSystem::Shape::piersonMoskowitz;
    } else {
        throw UserError(
            fmt::format("{}: '{}' is unknown; choose jonswap or pierson-moskowitz", name, text));
    }
}

WaveSystem systemOfText(const std::string &name, const std::string &text) {
    WaveSystem system;
    std::string_view rest = text;
    while (!rest.empty()) {
        const auto comma = rest.find(',');
        storeSystemPart(name, rest.substr(0, comma), system);
        rest = comma == std::string_view::npos ? std::string_view() : rest.substr(comma + 1);
    }
    return system;
}

} // namespace orvik
