#include "results/json_file.hpp"

#include <cmath>
#include <cstdint>
#include <vector>

#include <nlohmann/json.hpp>

#include "results/burst_table.hpp"
#include "results/quality_words.hpp"
#include "whole_number.hpp"

namespace orvik {

namespace {

// Names in the order they are given in; numbers of single precision, as result files have, in their shortest form.
using Json = nlohmann::basic_json<nlohmann::ordered_map, std::vector, std::string, bool,
                                  std::int64_t, std::uint64_t, float>;

Json number(double value) {
    if (!std::isfinite(value)) {
        return nullptr;
    }
    return static_cast<float>(value);
}

Json numbers(const std::vector<double> &values) {
    Json list = Json::array();
    for (const double value : values) {
        list.push_back(number(value));
    }
    return list;
}

// Text of files may be anything; what is not UTF-8 is replaced.
std::string dumped(const Json &json) {
    return json.dump(-1, ' ', false, Json::error_handler_t::replace);
}

Json timeOf(const StoredBurst &burst) {
    const std::string text = isoTime(burst.startTime);
    return text.empty() ? Json(nullptr) : Json(text);
}

Json wordsOf(int qualityFlags) {
    Json words = Json::array();
    for (const QualityWord &word : kQualityWords) {
        if ((qualityFlags & word.mask) != 0) {
            words.push_back(word.word);
        }
    }
    return words;
}

} // namespace

JsonFile::JsonFile(const std::string &path, const ResultReader &results)
    : results_(results), file_(path) {
    Json attributes = Json::object();
    for (const auto &[name, value] : results.attributes()) {
        attributes[name] = value;
    }
    Json units = Json::object();
    for (const auto *columns : {&results.columns(), &results.spectra()}) {
        for (const ResultReader::Column &column : *columns) {
            units[column.variable.name] = column.units;
        }
    }
    file_.write("{\"attributes\": " + dumped(attributes) + ",\n\"units\": " + dumped(units) +
                ",\n\"longitude\": " + dumped(number(results.longitude())) +
                ",\n\"latitude\": " + dumped(number(results.latitude())) +
                ",\n\"freq\": " + dumped(numbers(results.frequencies())) +
                ",\n\"freq_surface_track\": " + dumped(numbers(results.trackFrequencies())) +
                ",\n\"bursts\": [\n");
}

void JsonFile::append(const StoredBurst &burst) {
    Json entry = Json::object();
    entry["time"] = timeOf(burst);
    for (const ResultReader::Column &column : results_.columns()) {
        const double value = burst.value(column.variable.name);
        const bool whole = column.variable.type == NC_INT && std::isfinite(value);
        entry[column.variable.name] = whole ? Json(wholeOr<std::int64_t>(value, 0)) : number(value);
    }
    entry["quality"] = wordsOf(burst.qualityFlags);
    entry["rejection_reason"] = burst.rejectionReason;
    entry["processing_notes"] = burst.processingNotes;
    Json spectra = Json::object();
    for (const ResultReader::Column &column : results_.spectra()) {
        spectra[column.variable.name] = numbers(burst.spectrum(column.variable.name));
    }
    entry["spectra"] = spectra;
    file_.write((first_ ? "" : ",\n") + dumped(entry));
    first_ = false;
}

void JsonFile::commit() {
    file_.write("\n]}\n");
    file_.commit();
}

} // namespace orvik
