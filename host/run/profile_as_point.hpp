// A three-beam profile instrument's burst as a point instrument would have recorded it in the cell that was chosen.
//
// The library's maximum likelihood methods work out the beam directions of profile instruments for four beams; with three
// they come out wrong by many degrees. For point instruments they take three beams as they are. So the profile front end
// chooses the cell, and what it holds is processed like a point instrument's.
#pragma once

#include "burst/burst.hpp"
#include "orvikbase/orvikbase.hpp"

namespace orvik {

// `cellHeight` [m] of the chosen cell above the head, along the head's own axis.
Instrument asPointInstrument(const Instrument &instrument, double cellHeight);

// `cleaned` comes from the profile front end with a method that cleans the surface track. Series are brought to the
// instants of a point instrument's sensors.
Burst asPointBurst(const Instrument &instrument, const Burst &burst,
                   const orvikbase::CleanedBurst &cleaned);

} // namespace orvik
