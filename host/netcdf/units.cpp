#include "netcdf/units.hpp"

#include <algorithm>
#include <array>
#include <cctype>
#include <chrono>
#include <cstdio>
#include <memory>
#include <utility>

#include <udunits2.h>

#include "lower_case.hpp"
#include "user_error.hpp"

namespace orvik {

namespace {

template <auto release> struct Release {
    template <typename Handle> void operator()(Handle *handle) const { release(handle); }
};

using System = std::unique_ptr<ut_system, Release<ut_free_system>>;
using Unit = std::unique_ptr<ut_unit, Release<ut_free>>;
using Converter = std::unique_ptr<cv_converter, Release<cv_free>>;

constexpr const char *kTimeUnit = "seconds since 1970-01-01 00:00:00 UTC";

// Spellings that instruments' files use and the table of units does not know.
constexpr std::array<std::pair<const char *, const char *>, 7> kSpellings{{
    {"counts", "count"},
    {"deg", "degree"},
    {"degrees", "degree"},
    {"decibar", "dbar"},
    {"decibars", "dbar"},
    {"hertz", "Hz"},
    {"m.s-1", "m s-1"},
}};

std::string trimmed(const std::string &text) {
    const auto first = text.find_first_not_of(" \t");
    if (first == std::string::npos) {
        return "";
    }
    return text.substr(first, text.find_last_not_of(" \t") - first + 1);
}

std::string usualSpelling(const std::string &text) {
    const std::string small = lowerCase(text);
    const auto *found = std::find_if(kSpellings.begin(), kSpellings.end(),
                                     [&](const auto &spelling) { return small == spelling.first; });
    return found == kSpellings.end() ? text : found->second;
}

ut_system *unitSystem() {
    static const System system = [] {
        ut_set_error_message_handler(ut_ignore);
        return System(ut_read_xml(nullptr));
    }();
    if (!system) {
        throw UserError("the table of units cannot be read: install the data of UDUNITS-2, or name "
                        "its udunits2.xml in the environment variable UDUNITS2_XML_PATH");
    }
    return system.get();
}

Unit parsed(const std::string &text) { return Unit(ut_parse(unitSystem(), text.c_str(), UT_UTF8)); }

// Radians are a mere number to the table of units; here an angle is no number and an angular rate no frequency.
bool isAngular(const ut_unit *unit) {
    std::array<char, 256> text{};
    const int length = ut_format(unit, text.data(), text.size() - 1, UT_ASCII | UT_DEFINITION);
    return length > 0 && std::string(text.data()).find("rad") != std::string::npos;
}

// The day of "days since 1990-01-01 00:00:00"; nothing when it is written in another way.
std::optional<std::chrono::year_month_day> dayOf(const std::string &text) {
    const auto since = text.find("since ");
    int year = 0;
    unsigned month = 0;
    unsigned day = 0;
    if (since == std::string::npos ||
        std::sscanf(text.c_str() + since + 6, "%d-%u-%u", &year, &month, &day) != 3) {
        return std::nullopt;
    }
    return std::chrono::year_month_day{std::chrono::year{year}, std::chrono::month{month},
                                       std::chrono::day{day}};
}

// The table of units counts days before 15 October 1582 by the Julian calendar, as the standard one does. How many
// seconds the Gregorian calendar, carried on backwards, is apart from that; nothing when the day cannot be told.
std::optional<double> prolepticShift(const std::string &text, const TimeUnit &unit) {
    constexpr double kSureEpoch = -12218428800.0; // [s since 1970] ten days after the change
    const auto day = dayOf(text);
    if (!day) {
        return unit.epoch >= kSureEpoch ? std::optional(0.0) : std::nullopt;
    }
    const double standard = ut_encode_date(static_cast<int>(day->year()),
                                           static_cast<int>(static_cast<unsigned>(day->month())),
                                           static_cast<int>(static_cast<unsigned>(day->day()))) -
                            ut_encode_date(1970, 1, 1);
    const auto days = std::chrono::sys_days{*day}.time_since_epoch().count();
    return static_cast<double>(days) * 86400.0 - standard;
}

// Of counts no share can be told, whatever the whole may be.
bool isCount(const std::string &text) { return text.rfind("count", 0) == 0; }

} // namespace

const char *unitOf(Quantity quantity) {
    switch (quantity) {
    case Quantity::frequency:
        return "Hz";
    case Quantity::angle:
        return "degree";
    case Quantity::length:
        return "m";
    case Quantity::velocity:
        return "m s-1";
    case Quantity::pressure:
        return "dbar";
    case Quantity::duration:
        return "s";
    case Quantity::share:
        return "percent";
    case Quantity::plain:
        break;
    }
    return "1";
}

std::optional<double> unitFactor(const std::string &text, Quantity quantity) {
    const std::string spelling = usualSpelling(trimmed(text));
    const Unit unit = parsed(spelling.empty() ? "1" : spelling);
    const Unit wanted = parsed(unitOf(quantity));
    if (!unit || isAngular(unit.get()) != (quantity == Quantity::angle) ||
        (quantity == Quantity::share && (isCount(spelling) || spelling.empty()))) {
        return std::nullopt;
    }
    const Converter converter(ut_get_converter(unit.get(), wanted.get()));
    // A unit with an origin of its own has no factor.
    if (!converter || cv_convert_double(converter.get(), 0.0) != 0.0) {
        return std::nullopt;
    }
    return cv_convert_double(converter.get(), 1.0);
}

double unitFactor(const NcReader &file, const NcVariable &variable, Quantity quantity) {
    const auto units = file.text(&variable, "units");
    const std::string expected = quantity == Quantity::plain ? "count" : unitOf(quantity);
    if (!units && quantity != Quantity::plain) {
        throw UserError("variable " + variable.name + " in " + file.path() +
                        " has no units attribute, expected \"" + expected + "\"");
    }
    const auto factor = unitFactor(units.value_or(""), quantity);
    if (!factor) {
        throw UserError("variable " + variable.name + " in " + file.path() + " is in \"" +
                        trimmed(*units) + "\", expected \"" + expected +
                        "\" or a unit that converts to it");
    }
    return *factor;
}

std::optional<TimeUnit> timeUnit(const std::string &text) {
    // The table of units takes a 13th month for something else than a mistake.
    const auto day = dayOf(text);
    if (text.find("since ") == std::string::npos || (day && !day->ok())) {
        return std::nullopt;
    }
    const Unit unit = parsed(trimmed(text));
    const Unit wanted = parsed(kTimeUnit);
    if (!unit) {
        return std::nullopt;
    }
    const Converter converter(ut_get_converter(unit.get(), wanted.get()));
    if (!converter) {
        return std::nullopt;
    }
    TimeUnit result;
    result.epoch = cv_convert_double(converter.get(), 0.0);
    // From a great step: the difference of two neighbours would be lost in the digits of the epoch.
    constexpr double kStep = 1e9;
    result.scale = (cv_convert_double(converter.get(), kStep) - result.epoch) / kStep;
    return result;
}

TimeUnit timeUnit(const NcReader &file, const NcVariable &variable) {
    const std::string text = trimmed(file.text(&variable, "units").value_or(""));
    auto unit = timeUnit(text);
    if (!unit) {
        throw UserError("variable " + variable.name + " in " + file.path() + " is in \"" + text +
                        "\", expected \"seconds since 1970-01-01 00:00:00\" or the like");
    }
    const std::string told = trimmed(file.text(&variable, "calendar").value_or("standard"));
    const std::string calendar = lowerCase(told);
    const bool proleptic = calendar == "proleptic_gregorian";
    const auto shift = proleptic ? prolepticShift(text, *unit) : 0.0;
    if ((!proleptic && calendar != "standard" && calendar != "gregorian") || !shift) {
        throw UserError("variable " + variable.name + " in " + file.path() + " counts \"" + text +
                        "\" by the calendar \"" + told +
                        "\": only standard, gregorian and proleptic_gregorian can be read, the "
                        "last with dates such as 1970-01-01");
    }
    unit->epoch += *shift;
    return *unit;
}

std::vector<double> timesOf(const NcReader &file, const NcVariable &variable) {
    const TimeUnit unit = timeUnit(file, variable);
    std::vector<double> times = file.readAll(variable);
    for (double &time : times) {
        time = time * unit.scale + unit.epoch;
    }
    return times;
}

} // namespace orvik
