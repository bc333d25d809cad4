#include "report/report_data.hpp"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <filesystem>
#include <optional>
#include <vector>

#include <nlohmann/json.hpp>

#include "netcdf/units.hpp"
#include "report/packing.hpp"
#include "results/burst_table.hpp"
#include "results/quality_words.hpp"
#include "results/result_reader.hpp"
#include "user_error.hpp"
#include "whole_number.hpp"

namespace orvik {

namespace {

using Json = nlohmann::json;

// A burst with one of these bits has no wave parameters that could be kept without a look at it.
constexpr int kNotToKeep = OV_FLAG_NO_SIGNAL | OV_FLAG_FLAT_SPECTRUM | OV_FLAG_INVALID_PARAMETERS |
                           OV_FLAG_NO_RESULT | OV_FLAG_RISING_SPECTRUM;

constexpr int kDensityDigits = 3;
constexpr int kDensityDecades = 8; // below the greatest value of the bursts that are to be kept
constexpr double kDirectionStep = 0.1;
constexpr int kDistributionDigits = 2;
constexpr int kDistributionDecades = 3; // below the greatest value of the burst

// What no report can do without.
constexpr const char *kNeeded[] = {"time",
                                   "freq",
                                   "dir",
                                   "hm0",
                                   "tp",
                                   "peak_direction",
                                   "mean_direction",
                                   "quality_flag",
                                   "variance_density",
                                   "efth"};

constexpr const char *kDensities[] = {"variance_density", "variance_density_pressure",
                                      "variance_density_velocity",
                                      "variance_density_surface_track"};

void requireResultFile(const NcReader &file) {
    std::string missing;
    for (const char *name : kNeeded) {
        if (!file.find(name)) {
            missing += missing.empty() ? "" : ", ";
            missing += name;
        }
    }
    if (!missing.empty()) {
        throw UserError(file.path() + " is no result file: it has no " + missing +
                        "; give the file that 'orvik process' wrote");
    }
    if (file.dimensionLength("time").value_or(0) == 0) {
        throw UserError(file.path() + " holds no burst: there is nothing to report");
    }
}

bool isOver(const NcVariable &variable, const std::vector<std::string> &dimensions) {
    return std::equal(variable.dimensions.begin(), variable.dimensions.end(), dimensions.begin(),
                      dimensions.end(), [](const NcDimension &dimension, const std::string &name) {
                          return dimension.name == name;
                      });
}

NcVariable needed(const NcReader &file, const std::string &name,
                  const std::vector<std::string> &dimensions) {
    NcVariable variable = file.find(name).value();
    if (!isOver(variable, dimensions)) {
        std::string wanted;
        for (const std::string &dimension : dimensions) {
            wanted += (wanted.empty() ? "" : ", ") + dimension;
        }
        throw UserError("variable " + name + " of " + file.path() + " has the dimensions " +
                        variable.shapeText() + " instead of (" + wanted +
                        "): this is not as 'orvik process' writes it");
    }
    return variable;
}

std::vector<double> times(const NcReader &file) {
    const NcVariable variable = needed(file, "time", {"time"});
    std::vector<double> values = timesOf(file, variable);
    std::transform(values.begin(), values.end(), values.begin(), roundedTime);
    return values;
}

std::vector<std::int64_t> wholeNumbers(const NcReader &file, const NcVariable &variable) {
    std::vector<std::int64_t> whole;
    for (const double value : file.readAll(variable)) {
        whole.push_back(wholeOr<std::int64_t>(value, 0));
    }
    return whole;
}

// A text for each burst; nothing where the file has no such variable.
Json texts(const NcReader &file, const std::string &name) {
    Json all = Json::array();
    const auto variable = file.find(name);
    if (variable && variable->type == NC_STRING && isOver(*variable, {"time"})) {
        for (std::size_t burst = 0; burst < variable->size(); ++burst) {
            all.push_back(file.readText(*variable, {burst}));
        }
    }
    return all;
}

// Attributes of the file that tell about the deployment; text only.
Json attributes(const NcReader &file) {
    Json found = Json::object();
    for (const char *name :
         {"title", "source", "instrument", "burst_file", "burst_files", "values_given",
          "processing_method", "processing_parameters", "direction_convention", "history"}) {
        if (const auto text = file.text(nullptr, name); text && !text->empty()) {
            found[name] = *text;
        }
    }
    return found;
}

// Every measured number a burst has one of, in the file's order.
Json burstValues(const NcReader &file) {
    Json all = Json::object();
    for (const NcVariable &variable : file.variables()) {
        const bool isMeasured = variable.type == NC_FLOAT || variable.type == NC_DOUBLE;
        if (variable.name != "time" && isMeasured && isOver(variable, {"time"})) {
            all[variable.name] = {{"unit", file.text(&variable, "units").value_or("")},
                                  {"text", file.text(&variable, "long_name").value_or("")},
                                  {"data", packFloats(file.readAll(variable))}};
        }
    }
    return all;
}

// Of bursts that are to be kept: a single damaged one may hold what is as good as nothing for all others. When there are
// none to be kept, of all.
double greatestDensity(const std::vector<double> &values, const std::vector<std::int64_t> &flags) {
    const std::size_t bins = values.size() / flags.size();
    double ofKept = 0.0;
    double ofAll = 0.0;
    for (std::size_t i = 0; i < bins * flags.size(); ++i) {
        if (std::isfinite(values[i])) {
            ofAll = std::max(ofAll, values[i]);
            ofKept = (flags[i / bins] & kNotToKeep) == 0 ? std::max(ofKept, values[i]) : ofKept;
        }
    }
    return ofKept > 0.0 ? ofKept : ofAll;
}

Json density(const std::vector<double> &values, const std::vector<std::int64_t> &flags) {
    const double greatest = greatestDensity(values, flags);
    const int lowest = greatestExponent({greatest}) - kDensityDecades;
    return {{"digits", kDensityDigits},
            {"greatest", greatest},
            {"lowest", lowest},
            {"data", packCodes(decimalCodes(values, kDensityDigits, lowest))}};
}

std::vector<std::int64_t> qualityFlags(const NcReader &file) {
    return wholeNumbers(file, needed(file, "quality_flag", {"time"}));
}

Json spectra(const NcReader &file) {
    const std::vector<std::int64_t> flags = qualityFlags(file);
    Json all = Json::object();
    for (const char *name : kDensities) {
        const auto variable = file.find(name);
        if (variable && (isOver(*variable, {"time", "freq"}) ||
                         isOver(*variable, {"time", "freq_surface_track"}))) {
            all[name] = density(file.readAll(*variable), flags);
        }
    }
    for (const char *name : {"direction", "spread"}) {
        const auto variable = file.find(name);
        if (variable && isOver(*variable, {"time", "freq"})) {
            all[name] = {{"step", kDirectionStep},
                         {"data", packCodes(stepCodes(file.readAll(*variable), kDirectionStep))}};
        }
    }
    return all;
}

// By burst, as a page shows one at a time. Empty: the burst has no distribution.
Json distributions(const NcReader &file) {
    const NcVariable variable = needed(file, "efth", {"time", "freq", "dir"});
    const std::vector<std::size_t> count{1, variable.dimensions[1].length,
                                         variable.dimensions[2].length};
    Json bursts = Json::array();
    Json lowest = Json::array();
    for (std::size_t burst = 0; burst < variable.dimensions[0].length; ++burst) {
        const std::vector<double> values = file.read(variable, {burst, 0, 0}, count);
        const bool isThere = std::any_of(values.begin(), values.end(),
                                         [](double value) { return std::isfinite(value); });
        const int least = greatestExponent(values) - kDistributionDecades;
        lowest.push_back(least);
        bursts.push_back(isThere ? packCodes(decimalCodes(values, kDistributionDigits, least))
                                 : "");
    }
    return {{"digits", kDistributionDigits},
            {"decades", kDistributionDecades},
            {"lowest", lowest},
            {"bursts", bursts}};
}

Json qualityWords() {
    Json words = Json::array();
    for (const QualityWord &word : kQualityWords) {
        words.push_back({{"mask", word.mask},
                         {"word", word.word},
                         {"meaning", word.meaning},
                         {"advice", word.advice},
                         {"discard", (word.mask & kNotToKeep) != 0}});
    }
    return words;
}

bool comesFrom(const NcReader &file) {
    const NcVariable dir = file.find("dir").value();
    return file.text(&dir, "standard_name").value_or("") != "sea_surface_wave_to_direction";
}

// "</script>" in a text would end the element that the data stand in.
std::string harmless(std::string text) {
    for (std::size_t at = text.find('<'); at != std::string::npos; at = text.find('<', at)) {
        text.replace(at, 1, "\\u003c");
    }
    return text;
}

} // namespace

std::string reportData(const NcReader &file) {
    requireResultFile(file);
    needed(file, "variance_density", {"time", "freq"});
    Json data{
        {"file", std::filesystem::path(file.path()).filename().string()},
        {"comingFrom", comesFrom(file)},
        {"attributes", attributes(file)},
        {"times", times(file)},
        {"flags", qualityFlags(file)},
        {"freq", file.readAll(needed(file, "freq", {"freq"}))},
        {"dir", file.readAll(needed(file, "dir", {"dir"}))},
        {"values", burstValues(file)},
        {"spectra", spectra(file)},
        {"distribution", distributions(file)},
        {"quality", qualityWords()},
        {"reasons", texts(file, "rejection_reason")},
        {"notes", texts(file, "processing_notes")},
    };
    if (const auto source = file.find("spectrum_source"); source && isOver(*source, {"time"})) {
        data["source"] = wholeNumbers(file, *source);
    }
    if (const auto number = file.find("burst"); number && isOver(*number, {"time"})) {
        data["number"] = wholeNumbers(file, *number);
    }
    if (const auto fine = file.find("freq_surface_track")) {
        data["fine"] = file.readAll(*fine);
    }
    return harmless(data.dump(-1, ' ', false, Json::error_handler_t::replace));
}

} // namespace orvik
