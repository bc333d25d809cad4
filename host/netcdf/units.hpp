// Units of measurement as files spell them.
#pragma once

#include <optional>
#include <string>

#include "netcdf/nc_file.hpp"

namespace orvik {

enum class Quantity { frequency, angle, length, velocity, pressure, duration, share, plain };

// The unit of bursts in memory: Hz, degree, m, m s-1, dbar, s, percent, 1.
const char *unitOf(Quantity quantity);

// Factor that turns values in the unit called `text` into unitOf(quantity); nothing for a unit of another kind.
// Not safe for several threads, as all of this header.
std::optional<double> unitFactor(const std::string &text, Quantity quantity);

// The same for a variable's own unit. Throws UserError, naming file and variable, for a unit of another kind and for a
// measured quantity without one.
double unitFactor(const NcReader &file, const NcVariable &variable, Quantity quantity);

// Seconds since 1970-01-01 00:00:00 UTC = value * scale + epoch.
struct TimeUnit {
    double scale = 1.0;
    double epoch = 0.0;
};

// "days since 1990-01-01 00:00:00" and the like; nothing for anything else.
std::optional<TimeUnit> timeUnit(const std::string &text);

// From the variable's units.
TimeUnit timeUnit(const NcReader &file, const NcVariable &variable);

// The values of a variable of times, in whichever unit [s since 1970-01-01 00:00:00 UTC].
std::vector<double> timesOf(const NcReader &file, const NcVariable &variable);

} // namespace orvik
