#include "commands/init_command.hpp"

#include <algorithm>
#include <cmath>
#include <filesystem>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include <CLI/CLI.hpp>
#include <fmt/format.h>

#include "burst/deployment.hpp"
#include "burst/mean_angle.hpp"
#include "commands/counted.hpp"
#include "commands/deployment_options.hpp"
#include "files/text_file.hpp"
#include "process/plan.hpp"
#include "run/burst_runner.hpp"
#include "user_error.hpp"

namespace orvik {

namespace {

struct InitOptions {
    std::vector<std::string> inputs;
    std::string output = "deployment.toml";
    DeploymentOptions deployment;
};

struct Findings {
    KnownFacts known;
    std::vector<std::string> missing; // in the order in which `orvik process` asks for them
    std::vector<std::string> useless; // that files of this layout do not take
    KnownFacts byBurst;               // told for every burst, here of the first that can be read
    std::vector<std::string> notes;
    std::size_t bursts = 0;
};

// "[0, 120, 240]" as --set takes it.
std::string asOverride(std::string example) {
    for (const char sign : {'[', ']', ' '}) {
        example.erase(std::remove(example.begin(), example.end(), sign), example.end());
    }
    return example;
}

// What processing without options needs.
void requireFacts(const BurstSource &source) {
    const VelocitySystem system = source.velocitySystem();
    const int method = naturalMethod(source);
    if (needsAttitude(source.instrument(), method, system)) {
        source.requireAttitude();
    }
    if (needsBeams(source.instrument(), method, system)) {
        source.requireBeams();
    }
}

bool isAmong(const std::vector<std::string> &names, const std::string &name) {
    return std::find(names.begin(), names.end(), name) != names.end();
}

void findFactsOf(const Burst &burst, std::size_t number, Findings &findings) {
    const std::pair<const char *, double> told[] = {{"heading", compassAngle(burst.heading)},
                                                    {"pitch", burst.pitch},
                                                    {"roll", burst.roll},
                                                    {"time", burst.startTime}};
    for (const auto &[name, value] : told) {
        if (std::isfinite(value) && findings.known.count(name) == 0 &&
            !isAmong(findings.missing, name)) {
            findings.byBurst[name] = {{value}, fmt::format("burst {}", number)};
        }
    }
}

void findFactsOfBursts(const BurstSource &source, Findings &findings) {
    for (std::size_t i = 0; i < findings.bursts; ++i) {
        try {
            findFactsOf(source.readBurst(i), i, findings);
            return;
        } catch (const UserError &) {
            continue; // processing will tell what is wrong with it
        }
    }
}

void findUselessFacts(const std::string &file, const DeploymentOptions &given, Findings &findings) {
    for (const Fact &fact : factTable()) {
        DeploymentOptions deployment = given;
        if (!deployment.overrides.try_emplace(fact.name, asOverride(fact.example)).second) {
            continue;
        }
        try {
            openDeployment({file}, deployment);
        } catch (const UsageError &) {
            findings.useless.emplace_back(fact.name);
        } catch (const UserError &) {
            continue; // it is the example that does not fit
        }
    }
}

void complete(const BurstSource &source, const DeploymentOptions &deployment, Findings &findings) {
    findFactsOfBursts(source, findings);
    findUselessFacts(source.files().front(), deployment, findings);
}

// Opens the data as processing would, again and again, an example in the place of each fact that is missed.
Findings findingsOf(const InitOptions &options) {
    Findings findings;
    DeploymentOptions deployment = options.deployment;
    std::unique_ptr<BurstSource> source;
    for (;;) {
        try {
            source = openDeployment(options.inputs, deployment);
            findings.known = source->knownFacts();
            findings.notes = source->notes();
            findings.bursts = source->burstCount();
            requireFacts(*source);
            complete(*source, deployment, findings);
            return findings;
        } catch (const MissingFact &error) {
            const std::string &name = error.fact();
            if (deployment.overrides.count(name) != 0) {
                throw;
            }
            findings.missing.push_back(name);
            if (name == "beam_azimuth" || name == "beam_to_xyz") {
                complete(*source, deployment, findings); // the last thing that is asked for
                return findings;
            }
            deployment.overrides[name] = asOverride(findFact(name)->example);
        }
    }
}

std::string unitText(const Fact &fact) {
    const std::string unit = unitOf(fact.quantity);
    return unit == "1" ? "" : " [" + unit + "]";
}

std::string valueText(const std::vector<double> &values) {
    if (values.size() == 1) {
        return fmt::format("{}", values.front());
    }
    return fmt::format("[{}]", fmt::join(values, ", "));
}

// Of an angle or an instant, which has ten digits before the point.
std::string thousandths(double value) { return fmt::format("{}", std::round(value * 1e3) / 1e3); }

// What is there already, as lines to be corrected.
std::string foundText(const Findings &findings) {
    std::string text = "\n# Found in the data; tell them here only to correct them:\n";
    for (const Fact &fact : factTable()) {
        const auto known = findings.known.find(fact.name);
        if (known != findings.known.end()) {
            text += fmt::format("\n# {}{}; from {}\n# {} = {}\n", fact.why, unitText(fact),
                                known->second.origin, fact.name, valueText(known->second.values));
        }
    }
    for (const Fact &fact : factTable()) {
        const auto known = findings.byBurst.find(fact.name);
        if (known != findings.byBurst.end() && !isAmong(findings.useless, fact.name)) {
            const std::string value = thousandths(known->second.values.front());
            text +=
                fmt::format("\n# {}{}; told for every burst, in {} it is {}\n# {} = {}\n", fact.why,
                            unitText(fact), known->second.origin, value, fact.name, value);
        }
    }
    return text;
}

std::string otherText(const Findings &findings) {
    std::string text = "\n# Not in the data; processing does without, or takes what is usual (the "
                       "values are examples):\n";
    for (const Fact &fact : factTable()) {
        if (findings.known.count(fact.name) == 0 && findings.byBurst.count(fact.name) == 0 &&
            !isAmong(findings.missing, fact.name) && !isAmong(findings.useless, fact.name)) {
            text += fmt::format("\n# {}{}\n# {} = {}\n", fact.why, unitText(fact), fact.name,
                                fact.example);
        }
    }
    return text;
}

std::string factsText(const InitOptions &options, const Findings &findings) {
    std::string data;
    for (const std::string &input : options.inputs) {
        data += " " + input;
    }
    std::string text =
        fmt::format("# What the data of a deployment of {} lack:{}\n"
                    "# Take the # from the lines that you fill in, then run\n"
                    "#   orvik process{} --facts {} -o waves.nc\n"
                    "# A value here wins over the data's, one given with --set over both.\n",
                    counted(findings.bursts, "burst"), data, data,
                    options.output == "-" ? "deployment.toml" : options.output);
    for (const std::string &note : findings.notes) {
        text += "# Note: " + note + "\n";
    }
    text += findings.missing.empty() ? "\n# Nothing is missing that processing needs.\n"
                                     : "\n# Missing, and needed:\n";
    for (const std::string &name : findings.missing) {
        const Fact &fact = *findFact(name);
        text += fmt::format("\n# {}{}\n# {} = {}\n", fact.why, unitText(fact), name, fact.example);
    }
    return text + foundText(findings) + otherText(findings);
}

void runInit(InitOptions &options) {
    const bool toScreen = options.output == "-";
    if (!toScreen && std::filesystem::exists(options.output)) {
        throw UsageError(options.output + " is there already: give another name with --output");
    }
    const Findings findings = findingsOf(options);
    const std::string text = factsText(options, findings);
    if (toScreen) {
        fmt::print("{}", text);
        return;
    }
    TextFile file(options.output);
    file.write(text);
    file.commit();
    fmt::print(
        "{}: {} in the data, {} missing{}\n", options.output,
        counted(findings.known.size() + findings.byBurst.size(), "fact"), findings.missing.size(),
        findings.missing.empty() ? "" : fmt::format(" ({})", fmt::join(findings.missing, ", ")));
}

} // namespace

void addInitCommand(CLI::App &app) {
    const auto options = std::make_shared<InitOptions>();
    CLI::App *command = app.add_subcommand(
        "init", "write a file of what data lack, to fill in for process --facts");
    command->add_option("data", options->inputs, "files of one deployment, or their folder")
        ->required();
    command->add_option("-o,--output", options->output,
                        "file to write (deployment.toml); - shows it");
    addDeploymentOptions(*command, options->deployment);
    command->footer("Examples:\n"
                    "  $ orvik init bursts.nc\n"
                    "  $ orvik init folder-of-csv --burst-length 2048 -o harbour.toml");
    command->callback([options] { runInit(*options); });
}

} // namespace orvik
