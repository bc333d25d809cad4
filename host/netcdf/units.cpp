#include "netcdf/units.hpp"

#include <array>
#include <chrono>
#include <cstdio>

#include "user_error.hpp"

namespace orvik {

namespace {

struct Spelling {
    Quantity quantity;
    const char *text;
    double factor;
};

constexpr double kDegreesPerRadian = 57.29577951308232;

// The first spelling of a quantity is the one that error messages ask for.
constexpr Spelling kSpellings[] = {
    // clang-format off
    {Quantity::frequency, "Hz", 1.0}, {Quantity::frequency, "hertz", 1.0}, {Quantity::frequency, "s-1", 1.0},
    {Quantity::frequency, "1/s", 1.0}, {Quantity::frequency, "kHz", 1e3}, {Quantity::frequency, "MHz", 1e6},
    {Quantity::angle, "degree", 1.0}, {Quantity::angle, "degrees", 1.0}, {Quantity::angle, "deg", 1.0},
    {Quantity::angle, "degree_true", 1.0}, {Quantity::angle, "degrees_true", 1.0},
    {Quantity::angle, "radian", kDegreesPerRadian}, {Quantity::angle, "radians", kDegreesPerRadian},
    {Quantity::angle, "rad", kDegreesPerRadian},
    {Quantity::length, "m", 1.0}, {Quantity::length, "metre", 1.0}, {Quantity::length, "metres", 1.0},
    {Quantity::length, "meter", 1.0}, {Quantity::length, "meters", 1.0}, {Quantity::length, "cm", 1e-2},
    {Quantity::length, "mm", 1e-3},
    {Quantity::velocity, "m s-1", 1.0}, {Quantity::velocity, "m/s", 1.0}, {Quantity::velocity, "m s^-1", 1.0},
    {Quantity::velocity, "m.s-1", 1.0}, {Quantity::velocity, "cm s-1", 1e-2}, {Quantity::velocity, "cm/s", 1e-2},
    {Quantity::velocity, "mm s-1", 1e-3}, {Quantity::velocity, "mm/s", 1e-3},
    {Quantity::pressure, "dbar", 1.0}, {Quantity::pressure, "decibar", 1.0}, {Quantity::pressure, "decibars", 1.0},
    {Quantity::pressure, "Pa", 1e-4}, {Quantity::pressure, "hPa", 1e-2}, {Quantity::pressure, "mbar", 1e-2},
    {Quantity::pressure, "kPa", 1e-1}, {Quantity::pressure, "bar", 10.0},
    {Quantity::duration, "s", 1.0}, {Quantity::duration, "second", 1.0}, {Quantity::duration, "seconds", 1.0},
    {Quantity::share, "percent", 1.0}, {Quantity::share, "%", 1.0}, {Quantity::share, "1", 100.0},
    {Quantity::plain, "1", 1.0}, {Quantity::plain, "count", 1.0}, {Quantity::plain, "counts", 1.0},
    {Quantity::plain, "", 1.0},
    // clang-format on
};

constexpr std::pair<const char *, double> kTimeSteps[] = {
    {"second", 1.0},       {"seconds", 1.0},       {"sec", 1.0},      {"s", 1.0},
    {"millisecond", 1e-3}, {"milliseconds", 1e-3}, {"minute", 60.0},  {"minutes", 60.0},
    {"min", 60.0},         {"hour", 3600.0},       {"hours", 3600.0}, {"h", 3600.0},
    {"day", 86400.0},      {"days", 86400.0},      {"d", 86400.0},
};

const char *expectedUnit(Quantity quantity) {
    for (const Spelling &spelling : kSpellings) {
        if (spelling.quantity == quantity) {
            return spelling.text;
        }
    }
    return "";
}

std::string trimmed(const std::string &text) {
    const auto first = text.find_first_not_of(" \t");
    if (first == std::string::npos) {
        return "";
    }
    return text.substr(first, text.find_last_not_of(" \t") - first + 1);
}

// A reference date "Y-M-D" with an optional clock time in UTC; false when it is something else.
bool parseEpoch(const std::string &text, double &seconds) {
    int year = 0;
    unsigned month = 0;
    unsigned day = 0;
    int used = 0;
    if (std::sscanf(text.c_str(), "%d-%u-%u%n", &year, &month, &day, &used) != 3) {
        return false;
    }
    const std::chrono::year_month_day date{std::chrono::year{year}, std::chrono::month{month},
                                           std::chrono::day{day}};
    if (!date.ok()) {
        return false;
    }
    int hour = 0;
    int minute = 0;
    double second = 0.0;
    std::string rest = text.substr(static_cast<std::size_t>(used));
    if (!trimmed(rest).empty()) {
        int usedByClock = 0;
        const int fields = std::sscanf(rest.c_str(), "%*[ T]%d:%d%n:%lf%n", &hour, &minute,
                                       &usedByClock, &second, &usedByClock);
        if (fields < 2) {
            return false;
        }
        rest = trimmed(rest.substr(static_cast<std::size_t>(usedByClock)));
    }
    if (!rest.empty() && rest != "Z" && rest != "UTC" && rest != "+00:00" && rest != "0:00" &&
        rest != "+0:00") {
        return false;
    }
    const auto days = std::chrono::sys_days{date}.time_since_epoch().count();
    seconds = static_cast<double>(days) * 86400.0 + hour * 3600.0 + minute * 60.0 + second;
    return true;
}

} // namespace

double unitFactor(const NcReader &file, const NcVariable &variable, Quantity quantity) {
    const auto units = file.text(&variable, "units");
    if (!units && quantity != Quantity::plain) {
        throw UserError("variable " + variable.name + " in " + file.path() +
                        " has no units attribute, expected \"" + expectedUnit(quantity) + "\"");
    }
    const std::string text = trimmed(units.value_or(""));
    for (const Spelling &spelling : kSpellings) {
        if (spelling.quantity == quantity && text == spelling.text) {
            return spelling.factor;
        }
    }
    throw UserError("variable " + variable.name + " in " + file.path() + " is in \"" + text +
                    "\", expected \"" + expectedUnit(quantity) + "\"");
}

TimeUnit timeUnit(const NcReader &file, const NcVariable &variable) {
    const std::string text = trimmed(file.text(&variable, "units").value_or(""));
    const auto since = text.find(" since ");
    if (since != std::string::npos) {
        TimeUnit unit;
        for (const auto &[name, seconds] : kTimeSteps) {
            if (trimmed(text.substr(0, since)) == name &&
                parseEpoch(trimmed(text.substr(since + 7)), unit.epoch)) {
                unit.scale = seconds;
                return unit;
            }
        }
    }
    throw UserError("variable " + variable.name + " in " + file.path() + " is in \"" + text +
                    "\", expected \"seconds since 1970-01-01 00:00:00\" or the like");
}

} // namespace orvik
