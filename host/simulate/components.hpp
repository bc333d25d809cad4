// A random sea as a list of plane waves.
#pragma once

#include <complex>
#include <cstddef>
#include <vector>

#include "simulate/random_source.hpp"
#include "simulate/sea.hpp"

namespace orvik {

// Points of the grid from one sample to the next, so that it reaches to twice a sensor's Nyquist frequency.
inline constexpr std::size_t kGridPerSample = 2;

// Frequencies of the plane waves: line n at n * width. Their common period is several bursts long, so that the lines
// lie between a burst's harmonics as well as on them and nothing repeats within a burst.
struct FrequencyGrid {
    double width = 0.0;     // [Hz]
    std::size_t points = 0; // points in the common period, kGridPerSample a sample; a power of two
    [[nodiscard]] std::size_t lines() const { return points / 2; }
    [[nodiscard]] double frequency(std::size_t line) const {
        return width * static_cast<double>(line);
    }
};

FrequencyGrid frequencyGrid(const Instrument &instrument, std::size_t samples);

// Elevation Re(amplitude exp(i (k . x - omega t))), with the mean surface at 0 and the head at x = 0.
struct WaveComponent {
    std::size_t line = 0;
    double wavenumber = 0.0; // [rad/m]
    double toEast = 0.0;     // unit vector of the way it travels
    double toNorth = 0.0;
    double energy = 0.0; // [m^2] expected variance; the amplitude is a draw
    std::complex<double> amplitude;
};

// Waves that the current stops are left out.
std::vector<WaveComponent> drawComponents(const SeaState &sea, const FrequencyGrid &grid,
                                          RandomSource &random);

// Facts about the sea's spectrum that do not depend on the draw, for Truth: height, peak and directions.
void describeSpectrum(const SeaState &sea, const FrequencyGrid &grid,
                      const std::vector<WaveComponent> &components, Truth &truth);

} // namespace orvik
