#include "burst/date_text.hpp"

#include <chrono>
#include <cstdio>

namespace orvik {

std::optional<double> parsedDate(const std::string &text) {
    int year = 0;
    unsigned month = 0;
    unsigned day = 0;
    int hour = 0;
    int minute = 0;
    double second = 0.0;
    int used = 0;
    if (std::sscanf(text.c_str(), " %d-%u-%u%*[ T]%d:%d:%lf%n", &year, &month, &day, &hour, &minute,
                    &second, &used) != 6) {
        return std::nullopt;
    }
    const std::string rest = text.substr(static_cast<std::size_t>(used));
    const std::chrono::year_month_day date{std::chrono::year{year}, std::chrono::month{month},
                                           std::chrono::day{day}};
    const bool clock =
        hour >= 0 && hour < 24 && minute >= 0 && minute < 60 && second >= 0.0 && second < 61.0;
    if (!date.ok() || !clock || (!rest.empty() && rest != "Z" && rest != "+00:00")) {
        return std::nullopt;
    }
    return static_cast<double>(std::chrono::sys_days{date}.time_since_epoch().count()) * 86400.0 +
           hour * 3600.0 + minute * 60.0 + second;
}

} // namespace orvik
