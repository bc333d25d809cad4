#include "process/plan.hpp"

#include <cmath>
#include <filesystem>

#include <fmt/format.h>

#include "burst/joined_source.hpp"
#include "results/checksum.hpp"
#include "user_error.hpp"

namespace orvik {

namespace {

ProcessingChoices choicesOf(const ProcessOptions &options, const BurstSource &source) {
    ProcessingChoices choices;
    choices.method = options.method != 0 ? options.method : naturalMethod(source);
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
    if (options.source == "velocity" && choices.method == 1) {
        throw UsageError("--source velocity is for methods 2 to 4; method 1 takes heights from "
                         "pressure" +
                         std::string(options.method == 1 ? "" : ", and suits these data") +
                         ": leave --source out, or choose another --method");
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

// Fine steps use up the bins below the limit that nobody asked for.
void noteShortAxes(const ProcessOptions &options, const ResultLayout &layout,
                   std::set<std::string> &notes) {
    const auto check = [&](const std::vector<double> &axis, std::size_t most, const char *what) {
        if (options.freqStep && axis.size() == most) {
            notes.insert(fmt::format("--freq-step {:g} ends the {} at {:g} Hz, after {} bins",
                                     *options.freqStep, what, axis.back(), most));
        }
    };
    if (!options.freqMax) {
        check(layout.frequencies, OV_MAX_FREQUENCIES, "spectra");
    }
    if (!options.freqMax && !options.trackFreqMax) {
        check(layout.fineFrequencies, OV_MAX_FREQUENCIES_FINE, "surface track's spectrum");
    }
}

std::string joined(const std::vector<std::string> &parts) {
    std::string text;
    for (const std::string &part : parts) {
        text += (text.empty() ? "" : " ") + part;
    }
    return text;
}

std::string parametersText(const orvikbase::ProcessingParameters &used) {
    return fmt::format("freq {:g} to {:g} Hz, surface track {:g} to {:g} Hz, step {:g} Hz, {} "
                       "directions, dirBandWidth {}, "
                       "specBandWidth {}, directionalInputMode {}, estimateMask {}",
                       used.freqMin, used.freqMax, used.fineFreqMin, used.fineFreqMax,
                       used.freqStep, used.directions, used.dirBandWidth, used.specBandWidth,
                       static_cast<int>(used.directionalInput), used.estimateMask);
}

std::string cellChoiceText(const ProcessOptions &options, const BurstSource &source) {
    const double margin = options.troughMargin.value_or(ProcessingChoices{}.troughMargin);
    return source.instrument().profile ? fmt::format(", trough margin {:g} %", margin) : "";
}

std::string instrumentText(const Instrument &instrument) {
    std::string text = fmt::format(
        "type {}, {:g} Hz sampling, {:g} Hz acoustic, {} beams with slant {:g} degree, ",
        instrument.instrumentType, instrument.samplingRate, instrument.acousticFrequency,
        instrument.beams, instrument.slantAngle);
    if (instrument.profile) {
        text += fmt::format("{} cells of {:g} m above {:g} m blanking, ", instrument.profile->cells,
                            instrument.cellSize, instrument.profile->blanking);
    } else if (std::isfinite(instrument.cellRange)) { // else there are no velocities
        text += fmt::format("cell range {:g} m, cell size {:g} m, ", instrument.cellRange,
                            instrument.cellSize);
    }
    return text + fmt::format("pressure sensor {:g} m above the bed, declination {:g} degree, roll "
                              "offset {:g} degree",
                              instrument.pressureHeight, instrument.declination,
                              instrument.rollOffset);
}

std::string fileNames(const BurstSource &source) {
    std::vector<std::string> names;
    for (const std::string &file : source.files()) {
        names.push_back(std::filesystem::path(file).filename().string());
    }
    return joined(names);
}

const char *systemText(VelocitySystem system) {
    switch (system) {
    case VelocitySystem::beam:
        return "velocities along the beams";
    case VelocitySystem::xyz:
        return "velocities in instrument axes";
    case VelocitySystem::enu:
        return "east, north, up velocities";
    case VelocitySystem::none:
        break;
    }
    return "no velocities";
}

std::string cutText(const DeploymentOptions &deployment) {
    const std::string length = deployment.burstLength
                                   ? fmt::format("bursts of {} samples", *deployment.burstLength)
                                   : "the bursts that are there";
    return deployment.layout.empty() ? length : length + ", read as " + deployment.layout;
}

std::map<std::string, std::string> provenance(const ProcessOptions &options,
                                              const BurstSource &source,
                                              const orvikbase::ProcessingParameters &used) {
    return {
        {"title", "directional wave parameters and spectra"},
        {"source", "acoustic current meter bursts, processed by orvik " ORVIK_VERSION},
        {"burst_file", fileNames(source)},
        {"burst_file_sha256", checksumsOf(source.files())},
        {"values_given", joined(options.values)},
        {"facts_file",
         options.deployment.factsFile.empty() ? "" : checksumsOf({options.deployment.factsFile})},
        {"velocities_used", systemText(source.velocitySystem())},
        {"cut_into", cutText(options.deployment)},
        {"processing_method", std::to_string(static_cast<int>(used.method))},
        {"direction_convention", options.goingTo
                                     ? "directions waves go to, clockwise from true north"
                                     : "directions waves come from, clockwise from true north"},
        {"processing_parameters", parametersText(used) + cellChoiceText(options, source)},
        {"instrument", instrumentText(source.instrument())},
    };
}

// Facts that cannot be processed are some file's.
BurstRunner runnerFor(const BurstSource &source, const ProcessingChoices &choices) {
    try {
        return BurstRunner(source.instrument(), choices);
    } catch (const UserError &error) {
        throw UserError(source.files().front() + ": " + error.what());
    }
}

} // namespace

int naturalMethod(const BurstSource &source) {
    const VelocitySystem system = source.velocitySystem();
    const bool alongBeams = system == VelocitySystem::beam || system == VelocitySystem::xyz;
    return (alongBeams ? 3 : 1) + (source.hasTrack() ? 1 : 0);
}

Plan planFor(const ProcessOptions &options, const BurstSource &source) {
    Plan plan;
    plan.choices = choicesOf(options, source);
    if (needsAttitude(source.instrument(), plan.choices.method, source.velocitySystem())) {
        source.requireAttitude();
    }
    if (needsBeams(source.instrument(), plan.choices.method, source.velocitySystem())) {
        source.requireBeams();
    }
    const BurstRunner runner = runnerFor(source, plan.choices);
    plan.parameters = runner.parameters();
    noteChangedLimits(options, plan.parameters, plan.notes);
    for (const std::string &note : source.notes()) {
        plan.notes.insert(note);
    }
    plan.layout.frequencies = runner.frequencies();
    plan.layout.fineFrequencies = runner.fineFrequencies();
    if (plan.layout.frequencies.empty() || plan.layout.fineFrequencies.empty()) {
        throw UsageError("no frequency is left between --freq-min and half the sampling rate");
    }
    noteShortAxes(options, plan.layout, plan.notes);
    plan.layout.directions = static_cast<std::size_t>(plan.parameters.directions);
    plan.layout.comingFrom = plan.choices.comingFrom;
    plan.layout.hasTruth = source.hasTruth();
    plan.layout.pressureHeight = source.instrument().pressureHeight;
    plan.layout.longitude = source.instrument().longitude;
    plan.layout.latitude = source.instrument().latitude;
    plan.instrument = inFull(source.instrument());
    plan.layout.attributes = provenance(options, source, plan.parameters);
    return plan;
}

std::string identityOf(const Plan &plan) {
    std::string text;
    for (const auto &[name, value] : plan.layout.attributes) {
        text += fmt::format("{}={}\n", name, value);
    }
    return text + plan.instrument + fmt::format("trough margin {}\n", plan.choices.troughMargin);
}

namespace {

std::string replacedText(const std::string &path) {
    return path + (std::filesystem::exists(path) ? " (is there and would be replaced)" : "");
}

} // namespace

std::string describe(const Plan &plan, const BurstSource &source, const ProcessOptions &options) {
    std::string text = fmt::format("input       {}\n", joined(source.files()));
    text += fmt::format("bursts      {}, {}, {}\n", source.burstCount(),
                        systemText(source.velocitySystem()),
                        source.hasTrack() ? "with surface track" : "no surface track");
    text += fmt::format("instrument  {}\n", instrumentText(source.instrument()));
    text += fmt::format("method      {}{}\n", plan.choices.method,
                        options.method == 0 ? ", chosen by what the files hold" : "");
    if (!options.source.empty()) {
        text += fmt::format("source      {}\n", options.source);
    }
    text += fmt::format("parameters  {}\n", parametersText(plan.parameters));
    text += fmt::format("directions  {}\n", plan.layout.attributes.at("direction_convention"));
    text += fmt::format("output      {}\n", replacedText(options.output));
    const ExportPaths &exports = options.exports;
    for (const auto &[name, path] :
         {std::pair{"swan", exports.swan}, std::pair{"ww3", exports.ww3},
          std::pair{"csv", exports.csv}, std::pair{"json", exports.json}}) {
        if (!path.empty()) {
            text += fmt::format("{:<11} {}\n", name, replacedText(path));
        }
    }
    for (const std::string &note : plan.notes) {
        text += fmt::format("note        {}\n", note);
    }
    return text;
}

} // namespace orvik
