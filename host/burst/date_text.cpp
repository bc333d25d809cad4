#include "burst/date_text.hpp"

#include <chrono>
#include <cstdio>

namespace orvik {

namespace {

// "T12:00" or "T12:00:00.5", in seconds of the day; what follows remains in `text`.
std::optional<double> takenClock(std::string &text) {
    int hour = 0;
    int minute = 0;
    double second = 0.0;
    int used = 0;
    if (std::sscanf(text.c_str(), "%*1[ T]%2d:%2d%n:%lf%n", &hour, &minute, &used, &second, &used) <
        2) {
        return std::nullopt;
    }
    text.erase(0, static_cast<std::size_t>(used));
    const bool clock =
        hour >= 0 && hour < 24 && minute >= 0 && minute < 60 && second >= 0.0 && second < 61.0;
    return clock ? std::optional(hour * 3600.0 + minute * 60.0 + second) : std::nullopt;
}

bool isUtc(const std::string &text) { return text.empty() || text == "Z" || text == "+00:00"; }

} // namespace

std::optional<double> parsedDate(const std::string &text) {
    int year = 0;
    unsigned month = 0;
    unsigned day = 0;
    int used = 0;
    if (std::sscanf(text.c_str(), " %d-%2u-%2u%n", &year, &month, &day, &used) != 3) {
        return std::nullopt;
    }
    const std::chrono::year_month_day date{std::chrono::year{year}, std::chrono::month{month},
                                           std::chrono::day{day}};
    std::string rest = text.substr(static_cast<std::size_t>(used));
    const auto clock = isUtc(rest) ? std::optional(0.0) : takenClock(rest);
    if (!date.ok() || !clock || !isUtc(rest)) {
        return std::nullopt;
    }
    return static_cast<double>(std::chrono::sys_days{date}.time_since_epoch().count()) * 86400.0 +
           *clock;
}

} // namespace orvik
