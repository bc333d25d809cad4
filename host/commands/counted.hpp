// Numbers of things in messages.
#pragma once

#include <cstddef>
#include <string>

#include <fmt/format.h>

namespace orvik {

// "1 burst", "2 bursts".
inline std::string counted(std::size_t number, const std::string &one) {
    return fmt::format("{} {}{}", number, one, number == 1 ? "" : "s");
}

} // namespace orvik
