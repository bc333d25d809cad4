// What the library fills in where nothing was measured, and what becomes of it in a result.
#pragma once

#include <optional>
#include <string>

#include "run/burst_result.hpp"

namespace orvik {

// Whether the heights rest on a velocity spectrum of which nothing was measured: the cell is too near to the bed, or too
// deep, for the waves to show in its vertical velocity.
bool heightsRestOnTail(const BurstResult &result);

// What to tell of heights whose waves were, in great part, too short for the sensor.
std::optional<std::string> noteOnUnmeasuredHeight(const BurstResult &result);

// Without velocities: directions, and all else that follows from those that stood in for them.
void removeDirections(BurstResult &result);

// A velocity spectrum of which nothing was measured; directions do not depend on it.
void removeUnmeasuredVelocity(BurstResult &result);

// The library takes a head that looks down for one that is upside down.
void judgeTiltOfDownwardHead(double pitch, double roll, BurstResult &result);

} // namespace orvik
