// Dates as people write them.
#pragma once

#include <optional>
#include <string>

namespace orvik {

// "2008-09-08T12:00:00.5Z" in seconds since 1970, UTC; seconds, or all of the time of day, may be left out. Nothing for
// other text.
std::optional<double> parsedDate(const std::string &text);

} // namespace orvik
