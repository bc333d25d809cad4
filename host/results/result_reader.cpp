#include "results/result_reader.hpp"

#include <algorithm>
#include <cmath>

#include "netcdf/units.hpp"
#include "orvikbase/orvikbase.h"
#include "results/result_variables.hpp"
#include "user_error.hpp"
#include "whole_number.hpp"

namespace orvik {

double StoredBurst::value(const std::string &name) const {
    const auto found = values.find(name);
    return found == values.end() ? kUnknown : found->second;
}

std::vector<double> StoredBurst::spectrum(const std::string &name) const {
    const auto found = spectra.find(name);
    return found == spectra.end() ? std::vector<double>() : found->second;
}

ResultReader::ResultReader(const std::string &path) : file_(path) {
    // Other programs write result files anew, too, and may shape them anew.
    times_ = timesOf(file_, required("time"));
    frequencies_ = axis("freq");
    directions_ = axis("dir");
    if (file_.find("freq_surface_track")) {
        trackFrequencies_ = axis("freq_surface_track");
    }
    const NcVariable direction = required("dir");
    comingFrom_ = file_.text(&direction, "standard_name") != "sea_surface_wave_to_direction";
    for (const char *name : {"hm0", "quality_flag", "burst", "efth"}) {
        static_cast<void>(required(name));
    }
    requireShape(required("time"), {"time"});
    requireShape(required("efth"), {"time", "freq", "dir"});
    for (const char *name : {"rejection_reason", "processing_notes"}) {
        if (const auto texts = file_.find(name)) {
            requireShape(*texts, {"time"});
        }
    }
    for (NcVariable &variable : file_.variables()) {
        const std::size_t rank = variable.dimensions.size();
        if (variable.axis("time") != 0 || variable.name == "time" || variable.type == NC_STRING) {
            continue;
        }
        const std::string units = file_.text(&variable, "units").value_or("");
        if (rank == 1) {
            columns_.push_back({variable, units});
        } else if (rank == 2 && (variable.axis("freq") || variable.axis("freq_surface_track"))) {
            spectra_.push_back({variable, units});
        }
    }
}

NcVariable ResultReader::required(const std::string &name) const {
    const auto variable = file_.find(name);
    if (!variable) {
        throw UserError(file_.path() + " has no variable " + name +
                        ": it is not a result file of orvik process");
    }
    return *variable;
}

void ResultReader::requireShape(const NcVariable &variable,
                                const std::vector<std::string> &dimensions) const {
    NcVariable wanted;
    for (const std::string &name : dimensions) {
        wanted.dimensions.push_back({name, 0});
    }
    if (variable.shapeText() != wanted.shapeText()) {
        throw UserError(variable.name + " of " + file_.path() + " has the dimensions " +
                        variable.shapeText() + " instead of " + wanted.shapeText() +
                        ": it is not a result file of orvik process any more");
    }
}

std::vector<double> ResultReader::axis(const std::string &name) const {
    const NcVariable variable = required(name);
    requireShape(variable, {name});
    std::vector<double> values = file_.readAll(variable);
    const bool allThere = std::all_of(values.begin(), values.end(),
                                      [](double value) { return std::isfinite(storable(value)); });
    if (values.empty() || !allThere) {
        throw UserError(name + " of " + file_.path() +
                        (values.empty() ? " is empty" : " lacks values") +
                        ": it is not a result file of orvik process any more");
    }
    return values;
}

double ResultReader::scalar(const std::string &name) const {
    const auto variable = file_.find(name);
    return variable && variable->size() == 1 ? file_.readAll(*variable).front() : kUnknown;
}

double ResultReader::frequencyStep() const {
    const std::size_t count = frequencies_.size();
    return count < 2
               ? kUnknown
               : (frequencies_.back() - frequencies_.front()) / static_cast<double>(count - 1);
}

std::vector<std::pair<std::string, std::string>> ResultReader::attributes() const {
    std::vector<std::pair<std::string, std::string>> all;
    for (const std::string &name : file_.attributeNames()) {
        all.emplace_back(name, attribute(name));
    }
    return all;
}

std::string ResultReader::attribute(const std::string &name) const {
    return file_.text(nullptr, name).value_or("");
}

std::string ResultReader::textOf(const std::string &name, std::size_t row) const {
    const auto variable = file_.find(name);
    return variable && variable->type == NC_STRING ? file_.readText(*variable, {row}) : "";
}

StoredBurst ResultReader::read(std::size_t row) const {
    StoredBurst burst;
    burst.startTime = times_.at(row);
    for (const Column &column : columns_) {
        burst.values[column.variable.name] = file_.read(column.variable, {row}, {1}).front();
    }
    for (const Column &column : spectra_) {
        const std::size_t length = column.variable.dimensions.back().length;
        burst.spectra[column.variable.name] = file_.read(column.variable, {row, 0}, {1, length});
    }
    burst.efth =
        file_.read(required("efth"), {row, 0, 0}, {1, frequencies_.size(), directions_.size()});
    burst.burst = wholeOr<std::size_t>(burst.value("burst"), row);
    const double flags = burst.value("quality_flag");
    burst.qualityFlags = wholeOr<int>(flags, OV_FLAG_NO_RESULT);
    burst.rejectionReason = textOf("rejection_reason", row);
    burst.processingNotes = textOf("processing_notes", row);
    return burst;
}

} // namespace orvik
