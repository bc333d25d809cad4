// What a burst file and the user's own values tell of the instrument.
#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <vector>

#include "burst/burst.hpp"
#include "burst/burst_file.hpp"
#include "netcdf/nc_file.hpp"

namespace orvik {

// Throws UsageError for a name that no burst file has and for a value that is not a list of numbers.
void checkOverrides(const Overrides &overrides);

// The user's numbers for `name`, if given.
std::optional<std::vector<double>> overrideNumbers(const Overrides &overrides,
                                                   const std::string &name);

// "cell_range is missing in FILE: give it with --set cell_range=METRES"
std::string missingText(const std::string &name, const std::string &path);

// A sampling rate is required; what else may be missing stays unknown.
Instrument readInstrument(const NcReader &file, const Overrides &overrides);

// The same of a profile instrument, which needs its cells' size too.
Instrument readProfileInstrument(const NcReader &file, const Overrides &overrides,
                                 std::size_t beams, std::size_t cells);

} // namespace orvik
