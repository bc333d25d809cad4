// The burst header tells the place of the measurement cell in counts of the instrument's own arithmetic.
#pragma once

#include <cstdint>

#include "orvikbase/ov_types.h"

namespace orvik {

struct HeaderCounts {
    std::int16_t pressureCounts = 0;
    std::int16_t distanceCounts = 0;
};

// Range from the head to the cell [m] that the library reads from a pair of counts.
double cellRangeOfCounts(const OVInstrumentConfig &config, const HeaderCounts &counts);

// The counts that come nearest to a range [m]. Throws UserError when none comes within 7 mm.
HeaderCounts countsOfCellRange(const OVInstrumentConfig &config, double cellRange);

} // namespace orvik
