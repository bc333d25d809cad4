#include "simulate/scenario.hpp"

#include <algorithm>
#include <cmath>

#include <fmt/format.h>

#include "burst/geometry.hpp"
#include "burst/profile_geometry.hpp"
#include "simulate/profile_sensors.hpp"
#include "simulate/random_source.hpp"
#include "simulate/sensors.hpp"
#include "simulate/wave_theory.hpp"
#include "user_error.hpp"

namespace orvik {

namespace {

constexpr double kSecondsPerHour = 3600.0;

// Waves break before their significant height is this share of the depth.
constexpr double kHighestShareOfDepth = 0.6;

Instrument healthyInstrument() {
    Instrument instrument;
    instrument.samplingRate = 2.0;
    instrument.beamAzimuth = {0.0, 120.0, 240.0};
    instrument.cellRange = 7.4;
    instrument.pressureHeight = 0.6;
    return instrument;
}

SeaState seaOf(const WaveSystem &system) {
    SeaState sea;
    sea.systems = {system};
    sea.waterDepth = 18.0;
    sea.heading = 137.0;
    sea.pitch = 2.4;
    sea.roll = -3.1;
    return sea;
}

double between(double from, double to, double share) { return from + share * (to - from); }

// The shorter way round.
double angleBetween(double from, double to, double share) {
    const double angle = from + share * std::remainder(to - from, 360.0);
    return angle - 360.0 * std::floor(angle / 360.0);
}

struct Flow {
    double east = 0.0;
    double north = 0.0;
};

Flow flow(double speed, double direction) {
    const double to = direction * kRadiansPerDegree;
    return {speed * std::sin(to), speed * std::cos(to)};
}

void storeFlow(const Flow &current, SeaState &sea) {
    sea.currentSpeed = std::hypot(current.east, current.north);
    sea.currentDirection =
        angleBetween(std::atan2(current.east, current.north) / kRadiansPerDegree, 0.0, 0.0);
}

WaveSystem systemBetween(const WaveSystem &from, const WaveSystem &to, double share) {
    WaveSystem system = from;
    system.significantHeight = between(from.significantHeight, to.significantHeight, share);
    system.peakPeriod = between(from.peakPeriod, to.peakPeriod, share);
    system.peakEnhancement = between(from.peakEnhancement, to.peakEnhancement, share);
    system.direction = angleBetween(from.direction, to.direction, share);
    system.spread = between(from.spread, to.spread, share);
    return system;
}

SeaState seaBetween(const SeaState &from, const SeaState &to, double share) {
    SeaState sea = from;
    for (std::size_t i = 0; i < sea.systems.size(); ++i) {
        sea.systems[i] = systemBetween(from.systems[i], to.systems[i], share);
    }
    sea.waterDepth = between(from.waterDepth, to.waterDepth, share);
    const Flow early = flow(from.currentSpeed, from.currentDirection);
    const Flow late = flow(to.currentSpeed, to.currentDirection);
    storeFlow({between(early.east, late.east, share), between(early.north, late.north, share)},
              sea);
    sea.heading = angleBetween(from.heading, to.heading, share);
    sea.pitch = between(from.pitch, to.pitch, share);
    sea.roll = between(from.roll, to.roll, share);
    return sea;
}

SeaState seaAtHour(const std::vector<SeaAtHour> &states, double hours) {
    const auto next = std::find_if(states.begin(), states.end(),
                                   [hours](const SeaAtHour &state) { return state.hours > hours; });
    if (next == states.begin()) {
        return states.front().sea;
    }
    if (next == states.end()) {
        return states.back().sea;
    }
    const auto last = next - 1;
    return seaBetween(last->sea, next->sea, (hours - last->hours) / (next->hours - last->hours));
}

void addTide(const Scenario &scenario, double hours, SeaState &sea) {
    const double phase = kTwoPi * hours / scenario.tidePeriod;
    sea.waterDepth += scenario.tideAmplitude * std::sin(phase);
    if (scenario.tideCurrent > 0.0) {
        const Flow steady = flow(sea.currentSpeed, sea.currentDirection);
        const Flow tide =
            flow(scenario.tideCurrent * std::cos(phase), scenario.tideCurrentDirection);
        storeFlow({steady.east + tide.east, steady.north + tide.north}, sea);
    }
}

void checkType(const Instrument &instrument) {
    const int type = instrument.instrumentType;
    if (type != 0 && type != 1 && type != 3 && type != 16) {
        throw UserError(
            fmt::format("instrument_type {} cannot be simulated: choose 0, 1, 3 or 16", type));
    }
    if (type != 16 && (instrument.profile || instrument.beams != 3)) {
        throw UserError("beams, cells, blanking, track_time_offset and ambiguity_velocity are "
                        "settings of a profile "
                        "instrument: set instrument_type to 16 too");
    }
    if (type == 16 && instrument.samplingRate < 1.0) {
        throw UserError("a profile instrument samples at whole rates: choose a rate of 1 or 2");
    }
}

void checkInstrument(const Instrument &instrument) {
    if (instrument.beamAzimuth.size() != instrument.beams) {
        throw UserError(fmt::format("beam_azimuth has {} angles for {} beams: give one for each",
                                    instrument.beamAzimuth.size(), instrument.beams));
    }
    beamsToAxes(instrument); // throws when the beams do not span space
    const double rate = instrument.samplingRate;
    if (rate != 0.75 && rate != 1.0 && rate != 2.0) {
        throw UserError(fmt::format(
            "rate {:g} Hz is not one at which the instruments sample: choose 0.75, 1 or 2", rate));
    }
    if (rate == 0.75 && instrument.acousticFrequency != 400000.0) {
        throw UserError(
            "rate 0.75 Hz is that of 400 kHz instruments: set acoustic_frequency to 400000 too");
    }
    checkType(instrument);
}

void checkStates(const std::vector<SeaAtHour> &states) {
    for (std::size_t i = 1; i < states.size(); ++i) {
        if (!(states[i].hours > states[i - 1].hours)) {
            throw UserError(fmt::format("state {}: its hours ({:g}) must be greater than those of "
                                        "the state before it ({:g})",
                                        i + 1, states[i].hours, states[i - 1].hours));
        }
        if (states[i].sea.systems.size() != states[0].sea.systems.size()) {
            throw UserError(fmt::format(
                "state {} has {} wave systems and state 1 has {}: give every state the same "
                "number; a system that is not there yet has height 0",
                i + 1, states[i].sea.systems.size(), states[0].sea.systems.size()));
        }
    }
}

void checkHeight(const SeaState &sea) {
    double squares = 0.0;
    for (const WaveSystem &system : sea.systems) {
        squares += system.significantHeight * system.significantHeight;
    }
    const double height = std::sqrt(squares);
    if (height > kHighestShareOfDepth * sea.waterDepth) {
        throw UserError(fmt::format(
            "a significant height of {:.2f} m breaks in water {:.2f} m deep: the height may be "
            "at most {:g} of the depth",
            height, sea.waterDepth, kHighestShareOfDepth));
    }
}

} // namespace

Scenario plainScenario() {
    Scenario scenario;
    scenario.instrument = healthyInstrument();
    scenario.states = {{0.0, seaOf(WaveSystem{})}};
    return scenario;
}

Scenario stormScenario() {
    struct StormHour {
        double hours, height, period, direction, spread;
    };
    // The wind sea grows while the wind veers, then turns to swell that outlasts it.
    static constexpr StormHour kStorm[] = {
        {0.0, 0.8, 6.0, 200.0, 34.0},   {14.0, 1.5, 7.0, 210.0, 32.0},
        {26.0, 2.8, 8.8, 228.0, 28.0},  {36.0, 3.9, 10.4, 248.0, 25.0},
        {41.0, 4.1, 11.0, 258.0, 23.0}, {52.0, 2.9, 10.6, 274.0, 21.0},
        {62.0, 1.8, 9.7, 285.0, 21.0},  {71.0, 1.2, 9.0, 290.0, 22.0}};
    Scenario scenario = plainScenario();
    scenario.bursts = 72;
    scenario.tideAmplitude = 1.0;
    scenario.tideCurrent = 0.15;
    scenario.tideCurrentDirection = 60.0;
    scenario.states.clear();
    for (const StormHour &hour : kStorm) {
        WaveSystem system;
        system.significantHeight = hour.height;
        system.peakPeriod = hour.period;
        system.direction = hour.direction;
        system.spread = hour.spread;
        scenario.states.push_back({hour.hours, seaOf(system)});
    }
    return scenario;
}

SeaState seaOfBurst(const Scenario &scenario, std::size_t index) {
    const double hours = static_cast<double>(index) * scenario.interval / kSecondsPerHour;
    SeaState sea = seaAtHour(scenario.states, hours);
    addTide(scenario, hours, sea);
    return sea;
}

SimulatedBurst simulateScenarioBurst(const Scenario &scenario, std::size_t index) {
    SimulatedBurst simulated =
        simulateBurst(scenario.instrument, seaOfBurst(scenario, index), scenario.faults,
                      scenario.samples, scenario.velocitySystem, mixedSeed(scenario.seed, index));
    simulated.burst.startTime = scenario.startTime + static_cast<double>(index) * scenario.interval;
    return simulated;
}

void checkScenario(const Scenario &scenario) {
    checkInstrument(scenario.instrument);
    const double length = static_cast<double>(scenario.samples) / scenario.instrument.samplingRate;
    if (scenario.bursts > 1 && scenario.interval < length) {
        throw UserError(fmt::format(
            "interval {:g} s is shorter than a burst ({} samples take {:g} s): give a longer "
            "interval or fewer samples",
            scenario.interval, scenario.samples, length));
    }
    checkStates(scenario.states);
    for (std::size_t index = 0; index < scenario.bursts; ++index) {
        const SeaState sea = seaOfBurst(scenario, index);
        if (scenario.instrument.profile) {
            checkProfilePlaces(scenario.instrument, sea);
        } else {
            checkPlaces(scenario.instrument, sea);
        }
        checkHeight(sea);
    }
}

} // namespace orvik
