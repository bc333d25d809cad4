#include "commands/show_command.hpp"

#include <algorithm>
#include <cmath>
#include <filesystem>
#include <limits>
#include <memory>
#include <string>
#include <vector>

#include <CLI/CLI.hpp>
#include <fmt/format.h>

#include "burst/burst_file.hpp"
#include "burst/deployment.hpp"
#include "netcdf/nc_file.hpp"
#include "netcdf/units.hpp"
#include "results/burst_table.hpp"
#include "results/result_reader.hpp"
#include "user_error.hpp"
#include "whole_number.hpp"

namespace orvik {

namespace {

bool isNumeric(const NcVariable &variable) {
    return variable.type != NC_CHAR && variable.type <= NC_UINT64;
}

class Statistics {
public:
    void add(const std::vector<double> &values) {
        for (const double value : values) {
            ++total_;
            if (std::isfinite(value)) {
                ++count_;
                sum_ += value;
                least_ = std::min(least_, value);
                most_ = std::max(most_, value);
            }
        }
    }
    [[nodiscard]] std::string text() const {
        if (count_ == 0) {
            return "nothing but missing values";
        }
        const double missing =
            100.0 * static_cast<double>(total_ - count_) / static_cast<double>(total_);
        return fmt::format("{:>12.5g}{:>12.5g}{:>12.5g}{:>9.2f} %",
                           sum_ / static_cast<double>(count_), least_, most_, missing);
    }

private:
    std::size_t total_ = 0;
    std::size_t count_ = 0;
    double sum_ = 0.0;
    double least_ = std::numeric_limits<double>::infinity();
    double most_ = -std::numeric_limits<double>::infinity();
};

// Some places of the first dimension at a time: a deployment may be larger than memory.
Statistics statisticsOf(const NcReader &file, const NcVariable &variable) {
    constexpr std::size_t kValues = 65536;
    Statistics statistics;
    const std::size_t length = variable.dimensions.front().length;
    if (variable.size() == 0) {
        return statistics;
    }
    const std::size_t places = std::max<std::size_t>(1, kValues / (variable.size() / length));
    file.readAhead({{variable, 0}});
    for (std::size_t first = 0; first < length; first += places) {
        const NcSlab slab = file.readSlab(variable, 0, first, std::min(places, length - first));
        std::vector<double> values(slab.size());
        slab.unpackFrom(0, values);
        statistics.add(values);
    }
    return statistics;
}

// With as many digits as tell it from its neighbours, which single precision has fewer of.
std::string scalarText(const NcReader &file, const NcVariable &variable) {
    const double value = file.readAll(variable).front();
    return variable.type == NC_FLOAT ? fmt::format("{}", static_cast<float>(value))
                                     : fmt::format("{}", value);
}

void printScalars(const NcReader &file, const std::vector<NcVariable> &variables) {
    for (const NcVariable &variable : variables) {
        if (variable.size() == 1 && variable.dimensions.empty() && isNumeric(variable)) {
            const std::string units = file.text(&variable, "units").value_or("");
            fmt::print("  {:<36}{:>12}{}\n", variable.name, scalarText(file, variable),
                       units.empty() || units == "1" ? "" : " " + units);
        }
    }
}

void printVariables(const NcReader &file, const std::vector<NcVariable> &variables) {
    fmt::print("\n  {:<32}{:>12}{:>12}{:>12}{:>11}  {:<14} dimensions\n", "variable", "mean",
               "least", "most", "missing", "unit");
    for (const NcVariable &variable : variables) {
        const std::string units = file.text(&variable, "units").value_or("");
        const bool isTime = units.find(" since ") != std::string::npos;
        if (!variable.dimensions.empty() && isNumeric(variable) && !isTime && variable.size() > 0) {
            fmt::print("  {:<32}{:<47}  {:<14} {}\n", variable.name,
                       statisticsOf(file, variable).text(), units, variable.shapeText());
        }
    }
}

// The first and the last one: a continuous record has a time for each of its many samples.
std::vector<double> endsOfTime(const NcReader &file) {
    for (const char *name : {"time", "burst_start_time"}) {
        const auto variable = file.find(name);
        if (variable && variable->dimensions.size() == 1 && variable->size() > 0) {
            const TimeUnit unit = timeUnit(file, *variable);
            const double first = file.read(*variable, {0}, {1}).front();
            const double last = file.read(*variable, {variable->size() - 1}, {1}).front();
            return {first * unit.scale + unit.epoch, last * unit.scale + unit.epoch};
        }
    }
    return {};
}

// Times that cannot be told, as by a calendar that is not this one, hide nothing else.
std::string periodText(const NcReader &file) {
    try {
        const std::vector<double> ends = endsOfTime(file);
        return ends.empty() ? ""
                            : fmt::format("from {} to {} UTC", timeText(ends.front()),
                                          timeText(ends.back()));
    } catch (const UserError &error) {
        return fmt::format("no times: {}", error.what());
    }
}

std::vector<double> timesOrUnknown(const NcReader &file, const NcVariable &time) {
    try {
        return timesOf(file, time);
    } catch (const UserError &) {
        return std::vector<double>(time.size(), kUnknown);
    }
}

void printHead(const NcReader &file, const std::string &kind) {
    fmt::print("{}: {}\n", file.path(), kind);
    for (const char *attribute :
         {"title", "instrument", "source", "processing_method", "processing_parameters"}) {
        if (const auto text = file.text(nullptr, attribute); text && !text->empty()) {
            fmt::print("  {}: {}\n", attribute, *text);
        }
    }
    for (const char *dimension : {"time", "burst", "sample", "surface_track_sample"}) {
        if (const auto length = file.dimensionLength(dimension)) {
            fmt::print("  {}: {}\n", dimension, *length);
        }
    }
    if (const std::string period = periodText(file); !period.empty()) {
        fmt::print("  {}\n", period);
    }
}

// Column of a result file, by burst; missing throughout when the file has none.
std::vector<double> column(const NcReader &file, const std::string &name, std::size_t bursts) {
    const auto variable = file.find(name);
    if (!variable || variable->dimensions.size() != 1 || variable->size() != bursts) {
        return std::vector<double>(bursts, kUnknown);
    }
    return file.readAll(*variable);
}

void printResults(const NcReader &file) {
    const auto time = file.find("time");
    const std::vector<double> times = time ? timesOrUnknown(file, *time) : std::vector<double>();
    const std::size_t bursts = times.size();
    const auto number = column(file, "burst", bursts);
    const auto height = column(file, "hm0", bursts);
    const auto period = column(file, "tp", bursts);
    const auto peakDirection = column(file, "peak_direction", bursts);
    const auto meanDirection = column(file, "mean_direction", bursts);
    const auto spread = column(file, "peak_spread", bursts);
    const auto source = column(file, "spectrum_source", bursts);
    const auto flags = column(file, "quality_flag", bursts);
    fmt::print("\n{}", tableHead(false));
    for (std::size_t i = 0; i < bursts; ++i) {
        TableRow row;
        row.startTime = times[i];
        row.burst = wholeOr<std::size_t>(number[i], i);
        row.height = height[i];
        row.peakPeriod = period[i];
        row.peakDirection = peakDirection[i];
        row.meanDirection = meanDirection[i];
        row.peakSpread = spread[i];
        row.spectrumSource = wholeOr(source[i], 0);
        row.qualityFlags = wholeOr(flags[i], 0);
        fmt::print("{}", tableLine(row));
    }
}

void refuseOtherKinds(const std::string &path) {
    if (std::filesystem::is_directory(path)) {
        throw UserError(path +
                        " is a folder: name one of its files, or see what is in all of them "
                        "with 'orvik process " +
                        path + " -o waves.nc --dry-run'");
    }
    if (endingOf(path) == ".csv") {
        throw UserError(path + ": orvik show looks at netCDF files; 'orvik init " + path +
                        " -o -' tells what is in a CSV file");
    }
}

void runShow(const std::string &path) {
    refuseOtherKinds(path);
    const NcReader file(path);
    const std::vector<NcVariable> variables = file.variables();
    const bool isResult = file.find("hm0") && file.find("quality_flag");
    const bool isBurst = file.dimensionLength("sample").has_value();
    printHead(file, isResult ? "result file" : isBurst ? "burst file" : "netCDF file");
    printScalars(file, variables);
    if (isResult) {
        printResults(file);
    }
    printVariables(file, variables);
}

} // namespace

void addShowCommand(CLI::App &app) {
    const auto path = std::make_shared<std::string>();
    CLI::App *command = app.add_subcommand("show", "what a burst file or a result file holds");
    command->add_option("file", *path, "file to look at")->required();
    command->footer("Examples:\n  $ orvik show bursts.nc\n  $ orvik show waves.nc");
    command->callback([path] { runShow(*path); });
}

} // namespace orvik
