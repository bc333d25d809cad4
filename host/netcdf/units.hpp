// Units of measurement as files spell them.
#pragma once

#include <string>

#include "netcdf/nc_file.hpp"

namespace orvik {

enum class Quantity { frequency, angle, length, velocity, pressure, duration, share, plain };

// Factor that turns a variable's values into Hz, degrees, m, m s-1, dbar, s, percent or 1. Throws UserError, naming file and
// variable, for a unit of another kind and for a measured quantity without one.
double unitFactor(const NcReader &file, const NcVariable &variable, Quantity quantity);

// Seconds since 1970-01-01 00:00:00 UTC = value * scale + epoch.
struct TimeUnit {
    double scale = 1.0;
    double epoch = 0.0;
};

// From the variable's units, such as "days since 1990-01-01 00:00:00".
TimeUnit timeUnit(const NcReader &file, const NcVariable &variable);

} // namespace orvik
