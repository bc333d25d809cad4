#include "burst/time_order.hpp"

#include <cmath>
#include <limits>

#include <fmt/format.h>

namespace orvik {

TimeOrder::TimeOrder(const std::vector<double> &times) {
    double before = -std::numeric_limits<double>::infinity();
    for (std::size_t i = 0; i < times.size(); ++i) {
        if (!std::isfinite(times[i])) {
            continue;
        }
        if (times[i] <= before && notAfter++ == 0) {
            first = i;
        }
        before = times[i];
    }
}

std::optional<std::string> timeOrderNote(const std::string &path,
                                         const std::vector<double> &times) {
    const TimeOrder order(times);
    if (order.ascends()) {
        return std::nullopt;
    }
    const std::string which = order.notAfter == 1
                                  ? fmt::format("the time of burst {} is", order.first)
                                  : fmt::format("the times of {} bursts (first: burst {}) are",
                                                order.notAfter, order.first);
    return fmt::format("in {} {} not after that of the burst before: results keep the order of the "
                       "file",
                       path, which);
}

} // namespace orvik
