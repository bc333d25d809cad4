// Dates as people write them.
#pragma once

#include <optional>
#include <string>

namespace orvik {

// "2008-09-08T12:00:00.5Z" in seconds since 1970, UTC; nothing for other text.
std::optional<double> parsedDate(const std::string &text);

} // namespace orvik
