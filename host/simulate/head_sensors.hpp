// What the head itself sees of a list of plane waves, whatever the instrument: pressure and the surface above it.
#pragma once

#include <complex>
#include <cstddef>
#include <string>
#include <vector>

#include "burst/geometry.hpp"
#include "simulate/components.hpp"

namespace orvik {

using Lines = std::vector<std::complex<double>>;

// The head relative to the mean surface (z negative below it), and where its vertical beam meets that.
struct HeadPlace {
    double z = 0.0;
    Matrix3 toEarth{}; // instrument axes to true east, north, up
    double trackX = 0.0;
    double trackY = 0.0;
    double trackCosine = 1.0; // of the vertical beam's tilt; negative for a head that looks down
};

// Throws UserError when the head would not be under water.
HeadPlace headPlace(const Instrument &instrument, const SeaState &sea);

// "7.40 m"
std::string metresText(double length);

// The instants of the sensors: seconds before the nominal ones, and grid points from one track value to the next.
struct HeadTiming {
    double pressureDelay = 0.0;
    double trackDelay = 0.0;
    std::size_t trackStride = 1;
};

struct HeadSeries {
    std::vector<double> elevation; // [m] above the head, at every grid point
    std::vector<double> pressure;  // [dbar] once a sample
    std::vector<double>
        track; // [m] head to surface along the vertical beam; NaN when the head looks down
};

HeadSeries recordHead(const HeadPlace &place, double waterDepth, const FrequencyGrid &grid,
                      const std::vector<WaveComponent> &components, const HeadTiming &timing,
                      std::size_t samples);

// The series whose element j is of the instant j / (rate of the grid) - delay; every `stride`-th element is kept, so that
// what lies above the sensor's own Nyquist frequency folds as it does in the sea.
std::vector<double> seriesOfLines(Lines lines, const FrequencyGrid &grid, double delay,
                                  std::size_t stride, std::size_t count);

// The frequency that an observer sees who drifts with the current; orbital velocities go with it.
double intrinsicFrequency(double wavenumber, double waterDepth);

} // namespace orvik
