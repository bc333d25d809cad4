#include "commands/process_command.hpp"

#include <chrono>
#include <cmath>
#include <cstdio>
#include <ctime>
#include <filesystem>
#include <memory>
#include <optional>
#include <set>
#include <string>
#include <vector>

#include <CLI/CLI.hpp>
#include <fmt/chrono.h>
#include <fmt/format.h>

#include "burst/burst_file.hpp"
#include "results/burst_table.hpp"
#include "results/result_file.hpp"
#include "run/burst_runner.hpp"
#include "user_error.hpp"

namespace orvik {

namespace {

struct ProcessOptions {
    std::string input;
    std::string output;
    int method = 0; // 0: by what the file holds
    std::vector<std::string> values;
    std::optional<double> freqMin;
    std::optional<double> freqMax;
    std::optional<double> trackFreqMax;
    std::optional<double> freqStep;
    std::optional<int> directions;
    std::optional<int> bandWidth;
    std::string source;
    std::string velocities;
    std::optional<double> troughMargin;
    bool goingTo = false;
    bool quiet = false;
};

Overrides overridesOf(const std::vector<std::string> &values) {
    Overrides overrides;
    for (const std::string &value : values) {
        const auto equals = value.find('=');
        if (equals == std::string::npos || equals == 0) {
            throw UsageError("--set " + value + ": write it as --set name=value");
        }
        overrides[value.substr(0, equals)] = value.substr(equals + 1);
    }
    return overrides;
}

VelocitySystem wantedSystem(const std::string &name) {
    if (name == "beam") {
        return VelocitySystem::beam;
    }
    if (name == "xyz") {
        return VelocitySystem::xyz;
    }
    return name == "enu" ? VelocitySystem::enu : VelocitySystem::none;
}

// The method that makes the most of a file's series without asking for facts that go with other ones.
int naturalMethod(const BurstSource &reader) {
    const VelocitySystem system = reader.velocitySystem();
    const bool alongBeams = system == VelocitySystem::beam || system == VelocitySystem::xyz;
    return (alongBeams ? 3 : 1) + (reader.hasTrack() ? 1 : 0);
}

ProcessingChoices choicesOf(const ProcessOptions &options, const BurstSource &reader) {
    ProcessingChoices choices;
    choices.method = options.method != 0 ? options.method : naturalMethod(reader);
    choices.freqMin = options.freqMin.value_or(choices.freqMin);
    choices.fineFreqMin = choices.freqMin;
    choices.freqMax = options.freqMax.value_or(choices.freqMax);
    choices.fineFreqMax =
        options.trackFreqMax.value_or(options.freqMax.value_or(choices.fineFreqMax));
    choices.freqStep = options.freqStep.value_or(choices.freqStep);
    choices.nDirections = options.directions.value_or(choices.nDirections);
    choices.dirBandWidth = options.bandWidth.value_or(choices.dirBandWidth);
    choices.specBandWidth = options.bandWidth.value_or(choices.specBandWidth);
    choices.comingFrom = !options.goingTo;
    choices.troughMargin = options.troughMargin.value_or(choices.troughMargin);
    if (!options.source.empty()) {
        choices.directionalInputMode = options.source == "pressure"   ? 0
                                       : options.source == "velocity" ? 1
                                                                      : 2;
    }
    if (choices.freqMin >= choices.freqMax || choices.freqMin >= choices.fineFreqMax) {
        throw UsageError("--freq-min must be below --freq-max and --track-freq-max");
    }
    return choices;
}

void noteChangedLimits(const ProcessOptions &options, const orvikbase::ProcessingParameters &used,
                       std::set<std::string> &notes) {
    constexpr double kSame = 1e-5; // [Hz] single precision
    const auto check = [&](const char *option, const std::optional<double> &asked, float inUse) {
        if (asked && std::abs(*asked - static_cast<double>(inUse)) > kSame) {
            notes.insert(fmt::format("{} {:g} is beyond what the sampling rate and the number of "
                                     "bins allow: {:g} Hz is used",
                                     option, *asked, inUse));
        }
    };
    check("--freq-max", options.freqMax, used.freqMax);
    check("--track-freq-max", options.trackFreqMax, used.fineFreqMax);
}

std::map<std::string, std::string> provenance(const ProcessOptions &options,
                                              const BurstSource &reader,
                                              const orvikbase::ProcessingParameters &used) {
    const Instrument &instrument = reader.instrument();
    const std::time_t now = std::chrono::system_clock::to_time_t(std::chrono::system_clock::now());
    std::string given;
    for (const std::string &value : options.values) {
        given += (given.empty() ? "" : " ") + value;
    }
    return {
        {"title", "directional wave parameters and spectra"},
        {"source", "acoustic current meter bursts, processed by orvik " ORVIK_VERSION},
        {"history", fmt::format("{:%Y-%m-%dT%H:%M:%SZ} orvik process", fmt::gmtime(now))},
        {"burst_file", std::filesystem::path(options.input).filename().string()},
        {"values_given", given},
        {"processing_method", std::to_string(static_cast<int>(used.method))},
        {"direction_convention", options.goingTo
                                     ? "directions waves go to, clockwise from true north"
                                     : "directions waves come from, clockwise from true north"},
        {"processing_parameters",
         fmt::format("freq {:g} to {:g} Hz, surface track {:g} to {:g} Hz, step {:g} Hz, {} "
                     "directions, dirBandWidth {}, "
                     "specBandWidth {}, directionalInputMode {}, estimateMask {}",
                     used.freqMin, used.freqMax, used.fineFreqMin, used.fineFreqMax, used.freqStep,
                     used.directions, used.dirBandWidth, used.specBandWidth,
                     static_cast<int>(used.directionalInput), used.estimateMask)},
        {"instrument",
         fmt::format("type {}, {:g} Hz sampling, {:g} Hz acoustic, slant {:g} degree, cell range "
                     "{:g} m, cell size {:g} m, "
                     "pressure sensor {:g} m above the bed, declination {:g} degree",
                     instrument.instrumentType, instrument.samplingRate,
                     instrument.acousticFrequency, instrument.slantAngle, instrument.cellRange,
                     instrument.cellSize, instrument.pressureHeight, instrument.declination)},
    };
}

TableRow tableRow(const ResultRow &row, bool comingFrom) {
    TableRow line;
    line.startTime = row.startTime;
    line.burst = row.burst;
    line.truth = row.truth;
    line.qualityFlags = row.result.processed ? row.result.waves.qualityFlags : OV_FLAG_NO_RESULT;
    if (line.truth && !comingFrom) {
        line.truth->peakDirection = std::fmod(line.truth->peakDirection + 180.0, 360.0);
        line.truth->meanDirection = std::fmod(line.truth->meanDirection + 180.0, 360.0);
    }
    if (row.result.processed) {
        const orvikbase::WaveParameters &waves = row.result.waves;
        line.height = present(waves.significantHeight);
        line.peakPeriod = present(waves.peakPeriod);
        line.peakDirection = present(waves.peakDirection);
        line.meanDirection = present(waves.meanDirection);
        line.peakSpread = present(waves.peakSpread);
        line.spectrumSource = static_cast<int>(waves.spectrumSource);
    }
    return line;
}

// A burst that cannot be read is one bad burst, not the end of the deployment.
ResultRow processBurst(const BurstSource &reader, BurstRunner &runner, std::size_t index) {
    ResultRow row;
    row.burst = index;
    Burst burst;
    try {
        burst = reader.readBurst(index);
        row.truth = reader.readTruth(index);
    } catch (const UserError &error) {
        row.result.reason = error.what();
        return row;
    }
    row.startTime = burst.startTime;
    row.result = runner.run(burst);
    return row;
}

void say(const std::string &kind, const std::string &text) {
    fmt::print(stderr, "orvik: {}: {}\n", kind, text);
}

void runDeployment(const ProcessOptions &options, const BurstSource &reader,
                   BurstRunner &runner, const ResultLayout &layout, std::set<std::string> notes) {
    ResultFileWriter writer(options.output, layout);
    TruthErrors errors;
    std::size_t bad = 0;
    for (const std::string &note : notes) {
        say("note", note);
    }
    if (!options.quiet) {
        fmt::print("{}", tableHead(layout.hasTruth));
    }
    for (std::size_t index = 0; index < reader.burstCount(); ++index) {
        const ResultRow row = processBurst(reader, runner, index);
        writer.append(row);
        const TableRow line = tableRow(row, layout.comingFrom);
        errors.add(line);
        if (!options.quiet) {
            fmt::print("{}", tableLine(line));
        }
        for (const std::string &note : row.result.notes) {
            if (notes.insert(note).second) {
                say("note", note);
            }
        }
        if (!row.result.processed) {
            ++bad;
            say("note", fmt::format("burst {} has no results: {}", index, row.result.reason));
        }
    }
    writer.commit();
    if (!options.quiet && !errors.empty()) {
        fmt::print("\n{}", errors.text());
    }
    if (bad > 0) {
        say("note", fmt::format("{} of {} bursts have no results", bad, reader.burstCount()));
    }
}

void runProcess(const ProcessOptions &options) {
    std::error_code ignored;
    if (std::filesystem::equivalent(options.input, options.output, ignored)) {
        throw UsageError("--output is the input file " + options.input +
                         ": give the results another name");
    }
    const BurstFileReader reader(options.input, overridesOf(options.values),
                                 wantedSystem(options.velocities));
    const ProcessingChoices choices = choicesOf(options, reader);
    if (needsAttitude(reader.instrument(), choices.method, reader.velocitySystem())) {
        reader.requireAttitude();
    }
    if (needsBeams(reader.instrument(), choices.method, reader.velocitySystem())) {
        reader.requireBeams();
    }
    BurstRunner runner(reader.instrument(), choices);
    std::set<std::string> notes;
    noteChangedLimits(options, runner.parameters(), notes);
    ResultLayout layout;
    layout.frequencies = runner.frequencies();
    layout.fineFrequencies = runner.fineFrequencies();
    if (layout.frequencies.empty() || layout.fineFrequencies.empty()) {
        throw UsageError("no frequency is left between --freq-min and half the sampling rate");
    }
    layout.directions = static_cast<std::size_t>(runner.parameters().directions);
    layout.comingFrom = choices.comingFrom;
    layout.hasTruth = reader.hasTruth();
    layout.pressureHeight = reader.instrument().pressureHeight;
    layout.attributes = provenance(options, reader, runner.parameters());
    runDeployment(options, reader, runner, layout, notes);
}

} // namespace

void addProcessCommand(CLI::App &app) {
    const auto options = std::make_shared<ProcessOptions>();
    CLI::App *command =
        app.add_subcommand("process", "wave parameters and spectra of a burst file");
    command->add_option("input", options->input, "burst file to read")->required();
    command->add_option("-o,--output", options->output, "result file to write (netCDF)")
        ->required();
    command
        ->add_option("--method", options->method,
                     "1 pressure and velocity moments, 2 the same with surface track, 3 maximum "
                     "likelihood, 4 the same "
                     "with surface track; by default what suits the file")
        ->check(CLI::Range(1, 4));
    command
        ->add_option(
            "--set", options->values,
            "name=value: a value that the file lacks or that shall replace it; may be repeated")
        ->allow_extra_args(false);
    command->add_option("--freq-min", options->freqMin, "lowest frequency, Hz (0.02)")
        ->check(CLI::Range(0.001, 0.999));
    command->add_option("--freq-max", options->freqMax, "highest frequency, Hz (0.99)")
        ->check(CLI::Range(0.002, 1.99));
    command
        ->add_option("--track-freq-max", options->trackFreqMax,
                     "highest frequency of the surface-track spectrum, Hz (--freq-max, else 1.99)")
        ->check(CLI::Range(0.002, 1.99));
    command->add_option("--freq-step", options->freqStep, "step of the frequencies, Hz (0.01)")
        ->check(CLI::Range(0.0005, 0.1));
    command->add_option("--directions", options->directions, "direction bins (90)")
        ->check(CLI::Range(4, 90));
    command
        ->add_option("--band-width", options->bandWidth,
                     "averaging: a quarter of this number of transform bins (32)")
        ->check(CLI::Range(1, 512));
    command
        ->add_option(
            "--source", options->source,
            "elevation spectrum behind the parameters: pressure, velocity or best (methods 2 to 4)")
        ->check(CLI::IsMember({"pressure", "velocity", "best"}));
    command
        ->add_option("--velocities", options->velocities,
                     "beam, xyz or enu: which velocities to take from a file that has several")
        ->check(CLI::IsMember({"beam", "xyz", "enu"}));
    command
        ->add_option("--trough-margin", options->troughMargin,
                     "profile instruments: use the cell below this percentage of the distance to "
                     "the deepest trough (90)")
        ->check(CLI::Range(1.0, 100.0));
    command->add_flag("--going-to", options->goingTo,
                      "directions say where waves go to instead of come from");
    command->add_flag("--quiet", options->quiet, "no table");
    command->callback([options] { runProcess(*options); });
}

} // namespace orvik
