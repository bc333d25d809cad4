// Result files read one burst at a time, by name: what other outputs are made of.
#pragma once

#include <cstddef>
#include <map>
#include <string>
#include <utility>
#include <vector>

#include "burst/burst.hpp"
#include "netcdf/nc_file.hpp"

namespace orvik {

// Values are NaN, and lists empty, where the file has none.
struct StoredBurst {
    double startTime = kUnknown; // [s since 1970-01-01 00:00:00 UTC]
    std::size_t burst = 0;       // place in the burst file, from 0
    int qualityFlags = 0;
    std::string rejectionReason; // empty: it has results
    std::string processingNotes;
    std::map<std::string, double> values;               // by variable
    std::map<std::string, std::vector<double>> spectra; // by variable, along its frequency axis
    std::vector<double> efth; // [m2 s degree-1] by frequency and direction

    [[nodiscard]] double value(const std::string &name) const;
    [[nodiscard]] std::vector<double> spectrum(const std::string &name) const;
};

class ResultReader {
public:
    struct Column {
        NcVariable variable;
        std::string units;
    };

    // Throws UserError, naming what is missing or of another shape, when the file is no result file.
    explicit ResultReader(const std::string &path);

    [[nodiscard]] const std::string &path() const { return file_.path(); }
    [[nodiscard]] std::size_t burstCount() const { return times_.size(); }
    // [s since 1970-01-01 00:00:00 UTC] of the bursts.
    [[nodiscard]] const std::vector<double> &times() const { return times_; }
    [[nodiscard]] const std::vector<double> &frequencies() const { return frequencies_; }
    [[nodiscard]] const std::vector<double> &trackFrequencies() const { return trackFrequencies_; }
    [[nodiscard]] double frequencyStep() const; // [Hz]
    [[nodiscard]] const std::vector<double> &directions() const { return directions_; }
    [[nodiscard]] bool comingFrom() const { return comingFrom_; }
    [[nodiscard]] double longitude() const { return scalar("longitude"); }        // [degrees east]
    [[nodiscard]] double latitude() const { return scalar("latitude"); }          // [degrees north]
    [[nodiscard]] const std::vector<Column> &columns() const { return columns_; } // a value a burst
    [[nodiscard]] const std::vector<Column> &spectra() const { return spectra_; }
    [[nodiscard]] std::vector<std::pair<std::string, std::string>> attributes() const;
    [[nodiscard]] std::string attribute(const std::string &name) const; // empty: there is none

    [[nodiscard]] StoredBurst read(std::size_t row) const;

private:
    [[nodiscard]] NcVariable required(const std::string &name) const;
    // Throws UserError when the variable has other dimensions.
    void requireShape(const NcVariable &variable, const std::vector<std::string> &dimensions) const;
    // Frequencies or directions: one or more numbers.
    [[nodiscard]] std::vector<double> axis(const std::string &name) const;
    [[nodiscard]] double scalar(const std::string &name) const;
    [[nodiscard]] std::string textOf(const std::string &name, std::size_t row) const;

    NcReader file_;
    std::vector<double> times_;
    std::vector<double> frequencies_;
    std::vector<double> trackFrequencies_;
    std::vector<double> directions_;
    bool comingFrom_ = true;
    std::vector<Column> columns_;
    std::vector<Column> spectra_;
};

} // namespace orvik
