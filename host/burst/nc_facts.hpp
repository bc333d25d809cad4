// Facts that netCDF files tell in attributes.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "burst/fact_table.hpp"
#include "netcdf/nc_file.hpp"

namespace orvik {

// A global attribute as a number, however it is written; nothing for text that is none ("1.2 m" is 1.2).
std::optional<double> attributeNumber(const NcReader &file, const std::string &name);

struct AttributeFact {
    const char *fact;
    const char *attribute;
    double factor = 1.0;
};

// Adds the facts that the file has an attribute for and that are not known yet.
void addAttributeFacts(const NcReader &file, const std::vector<AttributeFact> &wanted,
                       KnownFacts &known);

// Adds beam_to_xyz from a variable of 3 by 3, by columns when `beamDimension` is its first.
void addMatrix(const NcReader &file, const std::string &name, const std::string &beamDimension,
               KnownFacts &known);

} // namespace orvik
