// The instrument that data and the user's own values tell of.
#pragma once

#include <cstddef>
#include <string>

#include "burst/burst.hpp"
#include "burst/fact_table.hpp"
#include "netcdf/nc_file.hpp"

namespace orvik {

// The facts of a whole deployment that a burst file holds as variables. Throws UserError for one of another shape or unit.
KnownFacts factsOfBurstFile(const NcReader &file);

// Where facts and the user's values come together; `path` is what messages name.
struct FactSources {
    const KnownFacts &known;
    const Overrides &overrides;
    std::string path;
};

// A sampling rate is required; what else may be missing stays unknown.
Instrument readInstrument(const FactSources &sources);

// The same of a profile instrument, which needs its cells' size too.
Instrument readProfileInstrument(const FactSources &sources, std::size_t beams, std::size_t cells);

// Throws when it is not known where the beams point.
void requireBeamsOf(const Instrument &instrument, const std::string &path);

// Takes from a series of pressures what is not the water's: the fact air_pressure, the shift to pressure_mean.
void correctPressure(const FactSources &sources, std::vector<float> &pressure);

} // namespace orvik
