// Bringing series that were sampled at different instants together.
#pragma once

#include <array>
#include <cstddef>
#include <vector>

#include "burst/burst.hpp"

namespace orvik {

// The beams of a point instrument are sampled one after another [s].
inline constexpr double kBeamInterval = 0.0625;

// Before the nominal instant of each of its values a point instrument (type 3) takes its surface track [s]
inline constexpr double kTrackDelay = 0.1875;
// and its pressure, which the library knows for 0.75, 1 and 2 Hz; at other rates it takes the pressure for as late as the
// last series before it: the surface track where the method has one, else the last beam. Types 0 and 1 have delays of
// their own.
double pressureDelay(const Instrument &instrument, bool withTrack);

// The series as it would read `shift` samples later, by windowed-sinc interpolation; a fraction of a sample is what it
// is for. Missing values (NaN) take the value before them.
std::vector<float> shiftedSeries(const std::vector<float> &series, double shift);

// `count` values of the series, every `step` (1 or more) samples from `shift` samples after its first, without what is
// faster than half their rate. Missing values (NaN) take the value before them.
std::vector<float> lowPassed(const std::vector<float> &series, double step, double shift,
                             std::size_t count);

// East, north, up of along-beam velocities (matrix row by row). A component mixes all beams, and beams taken at
// different instants leak vertical motion into the horizontal ones: 4 degrees of direction in an 8 s sea. So each
// component is mixed from the beams at one instant: component j at the instant the library expects it, j beam intervals
// before the sample's own.
std::array<std::vector<float>, 3> earthFromBeams(const std::array<std::vector<float>, 3> &beams,
                                                 const std::array<double, 9> &matrix,
                                                 double samplingRate);

} // namespace orvik
