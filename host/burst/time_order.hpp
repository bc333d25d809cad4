// Whether bursts follow one another in time: a clock that is set back, or wrong for a while, is the instrument's.
#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <vector>

namespace orvik {

// Bursts whose time is not after that of the burst before; those without a time are passed over.
struct TimeOrder {
    std::size_t notAfter = 0;
    std::size_t first = 0; // of them

    explicit TimeOrder(const std::vector<double> &times);
    [[nodiscard]] bool ascends() const { return notAfter == 0; }
};

// What to tell of the bursts of a file; nothing when they come in time order.
std::optional<std::string> timeOrderNote(const std::string &path, const std::vector<double> &times);

} // namespace orvik
