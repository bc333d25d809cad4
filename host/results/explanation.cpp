#include "results/explanation.hpp"

#include <algorithm>
#include <cmath>
#include <optional>
#include <sstream>

#include <fmt/format.h>

#include "orvikbase/orvikbase.h"
#include "results/burst_table.hpp"
#include "results/confidence.hpp"
#include "results/quality_words.hpp"
#include "run/spectrum_tail.hpp"
#include "whole_number.hpp"

namespace orvik {

namespace {

constexpr std::size_t kIndent = 12;
constexpr std::size_t kWidth = 96;

bool known(double value) { return std::isfinite(value); }

// A topic on the left, its words beside it, broken between them.
std::string paragraph(const std::string &topic, const std::string &words) {
    std::istringstream stream(words);
    std::string text;
    std::string line = fmt::format("{:<{}}", topic, kIndent);
    bool empty = true;
    for (std::string word; stream >> word;) {
        if (!empty && line.size() + 1 + word.size() > kWidth) {
            text += line + "\n";
            line = std::string(kIndent, ' ');
            empty = true;
        }
        line += (empty ? "" : " ") + word;
        empty = false;
    }
    return text + line + "\n";
}

std::string count(double number, const std::string &one) {
    return fmt::format("{:.0f} {}{}", number, one, number == 1.0 ? "" : "s");
}

std::string headText(const ResultReader &results, const StoredBurst &burst) {
    std::string text = fmt::format("burst {} of {}, ", burst.burst, results.path());
    text += known(burst.startTime) ? timeText(burst.startTime) + " UTC" : "time unknown";
    if (known(burst.value("burst_duration"))) {
        text += fmt::format(", {:g} s long", burst.value("burst_duration"));
    }
    return text + "\n\n";
}

std::string wavesText(const ResultReader &results, const StoredBurst &burst) {
    std::string text;
    if (known(burst.value("hm0"))) {
        text += fmt::format("height Hm0 {:.2f} m, peak period {:.1f} s. ", burst.value("hm0"),
                            burst.value("tp"));
    }
    const std::string sense = results.comingFrom() ? "come from" : "go to";
    if (known(burst.value("peak_direction"))) {
        text += fmt::format("Waves at the peak {} {:.0f} degrees, with a spread of {:.0f}. ", sense,
                            burst.value("peak_direction"), burst.value("peak_spread"));
    } else {
        text += "No direction at the peak. ";
    }
    if (known(burst.value("mean_direction"))) {
        text += fmt::format("On the whole they {} {:.0f} degrees.", sense,
                            burst.value("mean_direction"));
    }
    return paragraph("waves", text);
}

int sourceOf(const StoredBurst &burst) {
    const double source = burst.value("spectrum_source");
    return wholeOr<int>(source, OV_SOURCE_PRESSURE);
}

std::optional<UnmeasuredHeight> unmeasuredHeightOf(const ResultReader &results,
                                                   const StoredBurst &burst) {
    const int source = sourceOf(burst);
    if (source == OV_SOURCE_SURFACE_TRACK) {
        return std::nullopt; // it sees waves of all lengths
    }
    const char *cutoff =
        source == OV_SOURCE_VELOCITY ? "velocity_cutoff_frequency" : "pressure_cutoff_frequency";
    return unmeasuredHeight(burst.spectrum("variance_density"), results.frequencies(),
                            burst.value(cutoff));
}

// Chance alone does not bound a height that rests on waves that were not measured.
std::string heightCertaintyText(const ResultReader &results, const StoredBurst &burst) {
    const double height = burst.value("hm0");
    if (const auto unmeasured = unmeasuredHeightOf(results, burst)) {
        return fmt::format("Waves shorter than {:.1f} s did not reach the sensor: {:.0f} % of the "
                           "variance behind this height is a tail that was not measured. In seas "
                           "of such short waves the height is a lower limit. ",
                           1.0 / unmeasured->frequency, 100.0 * unmeasured->share);
    }
    const ConfidenceFactors factors = heightConfidence(
        burst.spectrum("variance_density"), results.frequencyStep(), burst.value("burst_duration"));
    if (!known(height) || !known(factors.lower)) {
        return "";
    }
    return fmt::format("In 95 of 100 cases the height of the sea lies between {:.2f} and {:.2f} m: "
                       "a burst sees only so many waves. ",
                       height * factors.lower, height * factors.upper);
}

std::string certaintyText(const ResultReader &results, const StoredBurst &burst) {
    const double degrees = burst.value("degrees_of_freedom");
    if (!known(degrees)) {
        return "";
    }
    const std::string ofSpectrum = fmt::format(
        "A measured value of the spectrum has {:.0f} degrees of freedom: the sea's lies between "
        "{:.2f} and {:.2f} times it.",
        degrees, burst.value("confidence_lower_factor"), burst.value("confidence_upper_factor"));
    return paragraph("certainty", heightCertaintyText(results, burst) + ofSpectrum);
}

const char *methodName(int method) {
    switch (method) {
    case 1:
        return "moments of pressure and velocity";
    case 2:
        return "moments of surface track and velocity";
    case 3:
        return "maximum likelihood of pressure and velocities";
    default:
        return "maximum likelihood of surface track, pressure and velocities";
    }
}

bool wantsTrack(const ResultReader &results) {
    const std::string method = results.attribute("processing_method");
    return method == "2" || method == "4";
}

bool trackFailed(const StoredBurst &burst) {
    return (burst.qualityFlags & (OV_FLAG_NO_TRACK | OV_FLAG_TRACK_RANGE)) != 0;
}

// Velocities were there, but no spectrum of heights could be made of them.
bool velocityTellsNoHeights(const StoredBurst &burst) {
    const std::vector<double> density = burst.spectrum("variance_density_velocity");
    return known(burst.value("current_speed")) &&
           std::none_of(density.begin(), density.end(), known);
}

std::string methodText(const ResultReader &results, const StoredBurst &burst) {
    const int asked = wholeOr(burst.value("method_used"), 0);
    if (asked < 1) {
        return "";
    }
    // Methods 2 and 4 without their surface track are methods 1 and 3.
    const bool without = asked % 2 == 0 && sourceOf(burst) != OV_SOURCE_SURFACE_TRACK;
    const int used = without ? asked - 1 : asked;
    std::string text = fmt::format("{}, {}", used, methodName(used));
    const std::string wanted = results.attribute("processing_method");
    if (!wanted.empty() && wanted != std::to_string(used)) {
        text += fmt::format(" instead of {}, because {}", wanted,
                            trackFailed(burst) ? "the surface track could not be used"
                                               : "--source leaves the surface track out");
    }
    return paragraph("method", text + ".");
}

std::string energyText(const ResultReader &results, const StoredBurst &burst) {
    if (!known(burst.value("spectrum_source"))) {
        return "";
    }
    const int source = sourceOf(burst);
    if (source == OV_SOURCE_SURFACE_TRACK) {
        return paragraph("energy",
                         "from the surface track, which sees short waves that pressure does not: "
                         "it is taken wherever it is usable.");
    }
    const bool fallsBack = wantsTrack(results) && trackFailed(burst);
    if (source == OV_SOURCE_VELOCITY) {
        return paragraph("energy", std::string("from velocity: ") +
                                       (fallsBack ? "without a usable surface track it is taken "
                                                    "at depths of more than 20 m and of profile "
                                                    "instruments, unless --source says otherwise."
                                                  : "--source asks for it."));
    }
    if (fallsBack && velocityTellsNoHeights(burst)) {
        return paragraph("energy", "from pressure: there was no usable surface track, and velocity "
                                   "tells no heights.");
    }
    return paragraph("energy", std::string("from pressure: ") +
                                   (fallsBack ? "without a usable surface track it is taken at "
                                                "depths of up to 20 m, unless --source says "
                                                "otherwise."
                                              : "what is taken without a surface track, unless "
                                                "--source says otherwise."));
}

std::string measuredText(const StoredBurst &burst) {
    std::string text;
    const double depth = burst.value("instrument_depth");
    const double pressure = burst.value("pressure_cutoff_frequency");
    const double velocity = burst.value("velocity_cutoff_frequency");
    if (known(depth)) {
        text +=
            fmt::format("The pressure sensor is {:.1f} m deep, which hides short waves. ", depth);
    }
    if (known(pressure)) {
        text += fmt::format("Pressure was measured up to {:.2f} Hz", pressure);
    }
    if (known(velocity)) {
        text += fmt::format("{} up to {:.2f} Hz",
                            known(pressure) ? ", velocity" : "Velocity was measured", velocity);
    }
    if (known(pressure) || known(velocity)) {
        text += fmt::format("; above that a tail f^-4.5 stands in {}. ",
                            known(pressure) && known(velocity) ? "their spectra" : "its spectrum");
    }
    if (velocityTellsNoHeights(burst)) {
        text += "Velocity tells directions but no heights: its cell is too near to the bed or too "
                "deep for the waves' vertical velocity.";
    }
    return text.empty() ? "" : paragraph("measured", text);
}

std::string directionsText(const StoredBurst &burst) {
    const double limit = burst.value("aliasing_frequency");
    if (known(limit)) {
        return paragraph("directions",
                         fmt::format("known below {:.2f} Hz. From there on half a wave is shorter "
                                     "than the distance between the beams' cells.",
                                     limit));
    }
    return known(burst.value("peak_direction"))
               ? paragraph("directions", "known over the whole frequency axis.")
               : "";
}

std::string cellText(const ResultReader &results, const StoredBurst &burst) {
    const double height = burst.value("cell_height");
    if (!known(height)) {
        return "";
    }
    const double cell = burst.value("cell_used");
    const bool isProfile = results.attribute("instrument").find("type 16,") != std::string::npos;
    return paragraph(
        "velocity", (isProfile && known(cell) ? fmt::format("from cell {:.0f}, ", cell) : "from ") +
                        fmt::format("{:.1f} m above the head.", height));
}

// What was put right before anything was computed.
std::string repairsText(const StoredBurst &burst) {
    std::string text;
    const auto add = [&](double number, const std::string &one, const std::string &what) {
        if (number > 0.0) {
            text += (text.empty() ? "" : "; ") + count(number, one) + " " + what;
        }
    };
    add(burst.value("missing_samples"), "missing sample", "filled with the one before");
    if (!(burst.value("surface_track_samples") == 0.0)) {
        const bool failed = trackFailed(burst);
        const double lost = burst.value("surface_track_missing");
        const double spikes = burst.value("surface_track_spikes");
        add(lost, "surface-track sample", failed ? "had no echo" : "without an echo interpolated");
        // The count of bad values is one of all three.
        add(burst.value("surface_track_bad") - lost - spikes, "surface-track value",
            failed ? "out of range" : "out of range replaced");
        add(spikes, "surface-track spike", failed ? "found" : "replaced");
    }
    add(burst.value("raised_densities"), "spectral density", "below 0 set to 0");
    return paragraph("repaired", text.empty() ? "nothing had to be." : text + '.');
}

std::string flagsText(const ResultReader &results, const StoredBurst &burst) {
    std::string text;
    for (const QualityWord &word : kQualityWords) {
        if ((burst.qualityFlags & word.mask) != 0) {
            text += paragraph(text.empty() ? "flags" : "",
                              fmt::format("{}: {} {}", word.word, word.meaning, word.advice));
        }
    }
    if (!text.empty()) {
        return text;
    }
    return paragraph("flags", unmeasuredHeightOf(results, burst)
                                  ? "none, but the height rests on waves that were not measured: "
                                    "see certainty."
                                  : "none: nothing speaks against this burst.");
}

std::string rejectionText(const StoredBurst &burst) {
    std::string text =
        burst.rejectionReason.empty() ? "The file does not tell why." : burst.rejectionReason + ".";
    const double samples = burst.value("samples");
    const double missing = burst.value("missing_samples");
    if (samples > 0.0 && known(missing)) {
        text +=
            fmt::format(" {:.0f} of {:.0f} samples lack pressure or velocity.", missing, samples);
    }
    return paragraph("rejected", text);
}

} // namespace

std::string explanationOf(const ResultReader &results, const StoredBurst &burst) {
    std::string text = headText(results, burst);
    if ((burst.qualityFlags & OV_FLAG_NO_RESULT) != 0) {
        text += rejectionText(burst);
    } else {
        text += wavesText(results, burst) + certaintyText(results, burst) +
                methodText(results, burst) + energyText(results, burst) + measuredText(burst) +
                directionsText(burst) + cellText(results, burst) + repairsText(burst);
    }
    text += flagsText(results, burst);
    return burst.processingNotes.empty() ? text
                                         : text + paragraph("notes", burst.processingNotes + ".");
}

} // namespace orvik
