#include "spectral/direction_table.hpp"

#include <cmath>

#include "frame/constants.hpp"

namespace ov {

DirectionTable::DirectionTable(int count) : directions(count) {
    const double step = kTwoPi / directions;
    for (int m = 0; m < directions; ++m) {
        const auto at = static_cast<std::size_t>(m);
        const double wave = (2 * m) * kPi / directions;
        waveCos[at] = std::cos(wave);
        waveSin[at] = std::sin(wave);
        const double theta = m * step;
        firstCos[at] = std::cos(theta);
        firstSin[at] = std::sin(theta);
        secondCos[at] = std::cos(2.0 * theta);
        secondSin[at] = std::sin(2.0 * theta);
    }
}

} // namespace ov
