#include "commands/process_command.hpp"

#include <algorithm>
#include <cmath>
#include <csignal>
#include <cstdio>
#include <memory>
#include <set>
#include <string>
#include <vector>

#include <sys/resource.h>

#include <CLI/CLI.hpp>
#include <fmt/format.h>

#include "burst/deployment.hpp"
#include "commands/counted.hpp"
#include "commands/deployment_options.hpp"
#include "commands/export_options.hpp"
#include "process/deployment_run.hpp"
#include "process/follow.hpp"
#include "process/plan.hpp"
#include "process/process_options.hpp"
#include "results/burst_table.hpp"
#include "user_error.hpp"

namespace orvik {

namespace {

// Longer deployments get their table when asked for it.
constexpr std::size_t kLongestTable = 200;

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

std::unique_ptr<BurstSource> openSource(const std::vector<std::string> &paths,
                                        const ProcessOptions &options) {
    DeploymentOptions deployment = options.deployment;
    deployment.overrides = overridesOf(options.values);
    return openDeployment(paths, deployment);
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

void say(const std::string &kind, const std::string &text) {
    fmt::print(stderr, "orvik: {}: {}\n", kind, text);
}

// What a run shows on the way: the table on standard output, each note once on standard error.
class Reporter {
public:
    Reporter(const Plan &plan, bool table)
        : comingFrom_(plan.choices.comingFrom), notes_(plan.notes), table_(table) {
        for (const std::string &note : notes_) {
            say("note", note);
        }
        if (table_) {
            fmt::print("{}", tableHead(plan.layout.hasTruth));
        }
    }

    [[nodiscard]] bool hasTable() const { return table_; }

    void show(const ResultRow &row) {
        const TableRow line = tableRow(row, comingFrom_);
        errors_.add(line);
        if (table_) {
            fmt::print("{}", tableLine(line));
            std::fflush(stdout);
        }
        for (const std::string &note : row.result.notes) {
            if (notes_.insert(note).second) {
                say("note", note);
            }
        }
    }

    void finish(const std::vector<BadBurst> &bad, std::size_t bursts, bool quiet) {
        if (!quiet && !errors_.empty()) {
            fmt::print("{}{}", table_ ? "\n" : "", errors_.text());
        }
        std::fflush(stdout);
        for (const BadBurst &burst : bad) {
            say("note", fmt::format("burst {} has no results: {}", burst.index, burst.reason));
        }
        if (!bad.empty()) {
            say("note", fmt::format("{} of {} bursts have no results", bad.size(), bursts));
        }
    }

private:
    bool comingFrom_;
    std::set<std::string> notes_;
    bool table_;
    TruthErrors errors_;
};

void sayTiming(const RunTimes &times) {
    const double sum = times.reading + times.processing + times.writing;
    const auto share = [sum](double part) { return sum > 0.0 ? 100.0 * part / sum : 0.0; };
    rusage usage{};
    getrusage(RUSAGE_SELF, &usage);
    fmt::print(stderr,
               "orvik: {} in {:.2f} s, {:.0f} a second; reading {:.1f} %, library {:.1f} %, "
               "writing {:.1f} %; peak "
               "memory {} MB\n",
               counted(times.bursts, "burst"), times.wall,
               static_cast<double>(times.bursts) / std::max(times.wall, 1e-9), share(times.reading),
               share(times.processing), share(times.writing), usage.ru_maxrss / 1024);
}

void writeExports(const ProcessOptions &options) {
    if (!options.exports.any()) {
        return;
    }
    for (const std::string &note : exportResults(options.output, options.exports)) {
        say("note", note);
    }
}

void runProcess(const ProcessOptions &options) {
    const std::unique_ptr<BurstSource> source = openSource(options.inputs, options);
    const FilesRead inputs(source->files());
    std::vector<std::string> read = source->files();
    read.push_back(options.deployment.factsFile);
    checkExportPaths(options.exports, options.output, read);
    const Plan plan = planFor(options, *source);
    if (options.dryRun) {
        fmt::print("{}", describe(plan, *source, options));
        return;
    }
    const std::size_t bursts = source->burstCount();
    Reporter reporter(plan, !options.quiet && (options.table || bursts <= kLongestTable));
    DeploymentRun run;
    run.output = options.output;
    run.threads = options.threads;
    run.resume = options.resume;
    run.inputs = inputs;
    run.progress = usualProgress(options.quiet || reporter.hasTable());
    run.onRow = [&reporter](const ResultRow &row) { reporter.show(row); };
    const RunOutcome outcome = runDeployment(*source, plan, run);
    reporter.finish(outcome.bad, bursts, options.quiet);
    for (const std::string &file : inputs.longer()) {
        say("note", file + " has grown since it was opened: results are of what was in it then");
    }
    writeExports(options);
    if (options.timing) {
        sayTiming(outcome.times);
    }
}

// There they would be taken for bursts, or take their place.
void refuseExportsIn(const std::string &folder, const ExportPaths &exports) {
    for (const std::string &path : {exports.swan, exports.ww3, exports.csv, exports.json}) {
        if (path.empty() || !isBurstFileName(path)) {
            continue;
        }
        std::error_code ignored;
        const auto place = std::filesystem::absolute(path).parent_path();
        if (std::filesystem::equivalent(place, folder, ignored)) {
            throw UsageError(fmt::format(
                "{} lies in the folder that is watched: write it to another one", path));
        }
    }
}

void runFollow(const ProcessOptions &options) {
    if (options.dryRun || options.timing) {
        throw UsageError(std::string(options.dryRun ? "--dry-run" : "--timing") +
                         " is for files that are there: name the folder without --follow");
    }
    std::unique_ptr<Reporter> reporter;
    FollowRun run;
    run.folder = options.follow;
    run.output = options.output;
    run.resume = options.resume;
    run.open = [&options](const std::string &file) { return openSource({file}, options); };
    run.plan = [&options](const BurstSource &source) { return planFor(options, source); };
    run.onStart = [&](const Plan &plan) {
        reporter = std::make_unique<Reporter>(plan, !options.quiet);
    };
    run.onRow = [&reporter](const ResultRow &row) {
        reporter->show(row);
        if (!row.result.processed) {
            say("note", fmt::format("a burst has no results: {}", row.result.reason));
        }
    };
    run.onBadFile = [](const std::string &file, const std::string &reason) {
        say("note", fmt::format("{} is left out: {}", file, reason));
    };
    checkExportPaths(options.exports, options.output, {options.deployment.factsFile});
    refuseExportsIn(options.follow, options.exports);
    follow(run);
    if (reporter) {
        writeExports(options);
    }
}

void processInputsOrFollow(const ProcessOptions &options) {
    if (options.follow.empty() == options.inputs.empty()) {
        throw UsageError(options.follow.empty()
                             ? "what shall be processed? Name one or more files or a folder, "
                               "or a folder to watch with --follow"
                             : "--follow watches a folder: no other input can be given");
    }
    // A reader that went away, as `| head` does, ends the run in order: nothing unfinished stays under the
    // output's name, and --resume goes on.
    std::signal(SIGPIPE, SIG_IGN);
    if (options.follow.empty()) {
        runProcess(options);
    } else {
        runFollow(options);
    }
}

void addSpectrumOptions(CLI::App &command, const std::shared_ptr<ProcessOptions> &options) {
    command.add_option("--freq-min", options->freqMin, "lowest frequency, Hz (0.02)")
        ->check(CLI::Range(0.001, 0.999));
    command.add_option("--freq-max", options->freqMax, "highest frequency, Hz (0.99)")
        ->check(CLI::Range(0.002, 1.99));
    command
        .add_option("--track-freq-max", options->trackFreqMax,
                    "highest frequency of the surface-track spectrum, Hz (--freq-max, else 1.99)")
        ->check(CLI::Range(0.002, 1.99));
    command.add_option("--freq-step", options->freqStep, "step of the frequencies, Hz (0.01)")
        ->check(CLI::Range(0.0005, 0.1));
    command.add_option("--directions", options->directions, "direction bins (90)")
        ->check(CLI::Range(4, 90));
    command
        .add_option("--band-width", options->bandWidth,
                    "averaging: a quarter of this number of transform bins (32)")
        ->check(CLI::Range(1, 512));
    command
        .add_option(
            "--source", options->source,
            "elevation spectrum behind the parameters: pressure, velocity or best (methods 2 to 4)")
        ->check(CLI::IsMember({"pressure", "velocity", "best"}));
}

void addRunOptions(CLI::App &command, const std::shared_ptr<ProcessOptions> &options) {
    command
        .add_option("--threads", options->threads,
                    "bursts processed at the same time (as many as the machine has processors)")
        ->check(CLI::Range(1U, 1024U));
    command.add_flag("--resume", options->resume,
                     "go on with a run that was stopped: its finished bursts are kept");
    command.add_flag("--dry-run", options->dryRun, "say what would be done, and do nothing");
    command.add_flag("--table", options->table, "a line for every burst, of long deployments too");
}

} // namespace

void addProcessCommand(CLI::App &app) {
    const auto options = std::make_shared<ProcessOptions>();
    CLI::App *command =
        app.add_subcommand("process", "wave parameters and spectra of a deployment");
    command->add_option("input", options->inputs, "files or folders of one deployment");
    command
        ->add_option("--follow", options->follow,
                     "watch a folder and process each file that is renamed into it")
        ->type_name("FOLDER");
    addDeploymentOptions(*command, options->deployment);
    command->add_option("--facts", options->deployment.factsFile,
                        "TOML file with what the data lack (orvik init writes one)");
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
    addSpectrumOptions(*command, options);
    command
        ->add_option("--trough-margin", options->troughMargin,
                     "profile instruments: use the cell below this percentage of the distance to "
                     "the deepest trough (90)")
        ->check(CLI::Range(1.0, 100.0));
    command->add_flag("--going-to", options->goingTo,
                      "directions say where waves go to instead of come from");
    addRunOptions(*command, options);
    addExportOptions(*command, options->exports);
    command->add_flag("--timing", options->timing,
                      "at the end, where the time went and how much memory was used");
    command->add_flag("--quiet", options->quiet, "no table, no progress");
    command->footer(
        "Examples:\n"
        "  $ orvik process bursts.nc -o waves.nc\n"
        "  $ orvik process DATA -o waves.nc --facts deployment.toml --method 4\n"
        "  $ orvik process bursts.nc -o waves.nc --set heading=120 --set pitch=0 --set roll=0\n"
        "  $ orvik process bursts.nc -o waves.nc --resume\n"
        "  $ orvik process --follow incoming -o waves.nc\n"
        "\nExit codes: 0 done, 1 cannot be done, 2 wrong command line, 3 stopped (go on with "
        "--resume)");
    command->callback([options] { processInputsOrFollow(*options); });
}

} // namespace orvik
