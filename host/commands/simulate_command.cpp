#include "commands/simulate_command.hpp"

#include <algorithm>
#include <cmath>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include <CLI/CLI.hpp>
#include <fmt/format.h>

#include "burst/burst_file.hpp"
#include "commands/counted.hpp"
#include "files/same_file.hpp"
#include "simulate/scenario_file.hpp"
#include "simulate/scenario_settings.hpp"
#include "user_error.hpp"

namespace orvik {

namespace {

// What the user wrote; applied once the scenario that it changes is known.
struct SimulateOptions {
    std::string output;
    std::string scenarioFile;
    std::map<std::string, double> numbers; // by setting name
    std::optional<std::string> start;
    std::optional<std::string> velocitySystem;
    std::optional<std::string> shape;
    std::vector<double> beamAzimuth;
    std::vector<double> current;
    std::vector<std::string> systems;
};

std::string optionName(const std::string &setting) {
    std::string name = "--" + setting;
    std::replace(name.begin(), name.end(), '_', '-');
    return name;
}

template <typename Target>
void addNumberOptions(CLI::App &command, const std::vector<NumberSetting<Target>> &settings,
                      const std::string &group, const std::shared_ptr<SimulateOptions> &options) {
    for (const auto &setting : settings) {
        const std::string name = setting.name;
        command
            .add_option_function<double>(
                optionName(name), [options, name](double value) { options->numbers[name] = value; },
                setting.meaning)
            ->group(group);
    }
}

template <typename Target>
void applyNumbers(const SimulateOptions &options,
                  const std::vector<NumberSetting<Target>> &settings, Target &target) {
    for (const auto &setting : settings) {
        if (const auto given = options.numbers.find(setting.name); given != options.numbers.end()) {
            storeNumber(setting, optionName(setting.name), given->second, target);
        }
    }
}

// Options for the sea hold for the whole deployment.
void applyToSea(const SimulateOptions &options, SeaState &sea) {
    applyNumbers(options, placeSettings(), sea);
    applyNumbers(options, systemSettings(), sea.systems.front());
    if (options.shape) {
        storeShape("--shape", *options.shape, sea.systems.front());
    }
    if (!options.current.empty()) {
        storeCurrent("--current", options.current, sea);
    }
    for (const std::string &text : options.systems) {
        sea.systems.push_back(systemOfText("--system", text));
    }
}

void applyOptions(const SimulateOptions &options, Scenario &scenario) {
    if (!options.current.empty()) {
        scenario.tideCurrent =
            0.0; // a given current is the whole current, unless --tide-current adds to it
    }
    applyNumbers(options, deploymentSettings(), scenario);
    if (options.start) {
        storeStart("--start", *options.start, scenario);
    }
    if (options.velocitySystem) {
        storeVelocitySystem("--velocity-system", *options.velocitySystem, scenario);
    }
    if (!options.beamAzimuth.empty()) {
        storeBeamAzimuth("--beam-azimuth", options.beamAzimuth, scenario);
    }
    for (SeaAtHour &state : scenario.states) {
        applyToSea(options, state.sea);
    }
    checkScenario(scenario);
}

Scenario scenarioOfOptions(const SimulateOptions &options) {
    Scenario scenario =
        options.scenarioFile.empty() ? stormScenario() : readScenarioFile(options.scenarioFile);
    try {
        applyOptions(options, scenario);
    } catch (const UserError &error) {
        // The file alone is sound: what is wrong now, the options did.
        throw UsageError(error.what());
    }
    scenario.instrument.trackSamplingRate =
        static_cast<double>(trackPerSample(scenario.instrument)) * scenario.instrument.samplingRate;
    return scenario;
}

std::string summary(const SimulateOptions &options, const Scenario &scenario, double lowest,
                    double highest) {
    return fmt::format(
        "{}: {} of {} samples at {} Hz, significant height {:.2f} to {:.2f} m, seed {}\n",
        options.output, counted(scenario.bursts, "burst"), scenario.samples,
        scenario.instrument.samplingRate, lowest, highest, scenario.seed);
}

void runSimulate(const SimulateOptions &options) {
    refuseOverwriting("--output", options.output, {options.scenarioFile});
    const Scenario scenario = scenarioOfOptions(options);
    BurstFileWriter writer(options.output, scenario.instrument, scenario.velocitySystem,
                           scenario.samples, trackPerSample(scenario.instrument) * scenario.samples,
                           {{"title", "simulated deployment of a wave instrument"},
                            {"source", "linear random sea (orvik simulate)"},
                            {"seed", std::to_string(scenario.seed)}});
    double lowest = HUGE_VAL;
    double highest = 0.0;
    for (std::size_t index = 0; index < scenario.bursts; ++index) {
        const SimulatedBurst simulated = simulateScenarioBurst(scenario, index);
        writer.append(simulated.burst, simulated.truth);
        lowest = std::min(lowest, simulated.truth.significantHeight);
        highest = std::max(highest, simulated.truth.significantHeight);
    }
    writer.commit();
    fmt::print("{}", summary(options, scenario, lowest, highest));
}

void addTextOptions(CLI::App &command, const std::shared_ptr<SimulateOptions> &options) {
    command.add_option("-o,--output", options->output, "burst file to write")->required();
    command.add_option("--scenario", options->scenarioFile,
                       "TOML file with settings and a time table of the sea");
    command.add_option("--start", options->start,
                       "start of the first burst, UTC, as 2024-11-05T06:00:00Z");
    command
        .add_option("--velocity-system", options->velocitySystem, "velocities as beam, xyz or enu")
        ->group("Deployment");
    command
        .add_option("--beam-azimuth", options->beamAzimuth,
                    "one angle a beam, degrees from X towards Y")
        ->delimiter(',')
        ->group("Deployment");
    command.add_option("--shape", options->shape, "jonswap or pierson-moskowitz")->group("Sea");
    command
        .add_option("--current", options->current,
                    "speed in m/s and direction it goes to, as 0.3,90")
        ->delimiter(',')
        ->group("Sea");
    command
        .add_option("--system", options->systems,
                    "one more wave system, as hs=1,tp=12,dir=200,spread=15 (also gamma, shape); "
                    "may be repeated")
        ->group("Sea")
        ->allow_extra_args(false);
}

} // namespace

void addSimulateCommand(CLI::App &app) {
    const auto options = std::make_shared<SimulateOptions>();
    CLI::App *command =
        app.add_subcommand("simulate", "write a burst file of a simulated sea, the truth with it; "
                                       "without options a storm of three days, one burst an hour");
    addTextOptions(*command, options);
    addNumberOptions(*command, deploymentSettings(), "Deployment", options);
    addNumberOptions(*command, systemSettings(), "Sea", options);
    addNumberOptions(*command, placeSettings(), "Sea", options);
    command->footer("Examples:\n"
                    "  $ orvik simulate -o storm.nc\n"
                    "  $ orvik simulate -o calm.nc --bursts 24 --height 0.6 --period 5 --direction "
                    "310 --tide-amplitude 0\n"
                    "  $ orvik simulate -o crossing.nc --bursts 10 --system "
                    "hs=1,tp=14,dir=235,spread=14 --current 0.5,130\n"
                    "  $ orvik simulate -o profile.nc --instrument-type 16 --beams 4 --cells 60");
    command->callback([options] { runSimulate(*options); });
}

} // namespace orvik
