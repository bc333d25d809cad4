// The quality bits of a burst in words, for every output that shows them: a word for files, what it means and what to
// do about it as sentences for people.
#pragma once

#include "orvikbase/orvikbase.h"

namespace orvik {

struct QualityWord {
    int mask;
    const char *word;    // in flag_meanings: no blanks
    const char *meaning; // a sentence
    const char *advice;  // a sentence
};

inline constexpr QualityWord kQualityWords[] = {
    {OV_FLAG_SHALLOW, "shallow",
     "There was less than 1 m of water above the instrument on average.",
     "Discard the burst where the instrument fell dry or stood in breaking waves: the bursts "
     "before "
     "and after tell. A sensor that is always this near to the surface measures heights well."},
    {OV_FLAG_NO_SIGNAL, "no_signal", "The pressure hardly varied, by less than 1 mm on average.",
     "Discard the burst, unless the sea was flat: look at the pressure sensor."},
    {OV_FLAG_WEAK_AMPLITUDE, "weak_echo",
     "The echo of at least one beam was 17 counts or less in at least one sample.",
     "Look at the velocities before using directions; heights from surface track or pressure "
     "stand."},
    {OV_FLAG_FLAT_SPECTRUM, "flat_spectrum",
     "The pressure spectrum has no shape, as that of noise has none.", "Discard the burst."},
    {OV_FLAG_INVALID_PARAMETERS, "invalid_parameters",
     "A wave parameter was impossible or no number; directions and mean period were removed.",
     "Height and peak period may stand: compare them with the bursts before and after."},
    {OV_FLAG_NO_RESULT, "no_result", "The burst was rejected and has no results.",
     "See the reason; other bursts of the deployment are not affected."},
    {OV_FLAG_TRACK_RANGE, "track_out_of_range",
     "The waves that the surface track showed were impossible: it was not used.",
     "Use the burst, knowing that its spectrum comes from pressure or velocity and lacks the short "
     "waves."},
    {OV_FLAG_ALIASED_PEAK, "aliased_peak",
     "The waves at the spectral peak are too short for the distance between the beams.",
     "Do not trust the direction and spread at the peak; heights and periods stand."},
    {OV_FLAG_RISING_SPECTRUM, "rising_spectrum",
     "The pressure spectrum never falls towards high frequencies.",
     "Discard the burst: it is noise."},
    {OV_FLAG_CLEARANCE, "surface_at_range_limit",
     "The surface lies at the edge of the acoustic range, or that range is not known.",
     "Look at the surface track before using heights that come from it."},
    {OV_FLAG_NO_TRACK, "no_track",
     "There was no usable surface track although the method wants one.",
     "Use the burst, knowing that its spectrum comes from pressure or velocity and lacks the short "
     "waves."},
    {OV_FLAG_TILT, "tilt", "The instrument was tilted by more than 10 degrees.",
     "Distrust directions and the surface track; heights from pressure stand."},
};

} // namespace orvik
