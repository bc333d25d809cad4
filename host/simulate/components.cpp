#include "simulate/components.hpp"

#include <algorithm>
#include <bit>
#include <cmath>

#include "burst/geometry.hpp"
#include "simulate/wave_theory.hpp"

namespace orvik {

namespace {

// The common period in bursts, and the plane waves of a system at each line. With both, a band of four harmonics of
// the burst holds some sixty directions.
constexpr std::size_t kBurstsInPeriod = 4;
constexpr std::size_t kDirectionsPerLine = 4;

// Successive multiples of the golden ratio, modulo 1, fill the unit interval more evenly than random numbers.
constexpr double kGoldenRatio = 0.61803398874989484820;

// Lines below this share of a system's energy are not worth a wave: together they hold less than a millionth.
constexpr double kNegligibleShare = 1e-11;

// A wave system with the scale [m^2] that gives its lines together the energy of its height.
struct ScaledSystem {
    const WaveSystem *system;
    double scale;

    [[nodiscard]] double energy(double frequency) const {
        return scale * spectrumShape(*system, frequency);
    }
};

std::vector<ScaledSystem> scaledSystems(const SeaState &sea, const FrequencyGrid &grid) {
    std::vector<ScaledSystem> scaled;
    for (const WaveSystem &system : sea.systems) {
        double sum = 0.0;
        for (std::size_t line = 1; line < grid.lines(); ++line) {
            sum += spectrumShape(system, grid.frequency(line));
        }
        const double energy = system.significantHeight * system.significantHeight / 16.0;
        if (sum > 0.0 && energy > 0.0) {
            scaled.push_back({&system, energy / sum});
        }
    }
    return scaled;
}

double fraction(double x) { return x - std::floor(x); }

// Degrees clockwise from north.
double compassDegrees(double east, double north) {
    return fraction(std::atan2(east, north) / kTwoPi) * 360.0;
}

void drawSystem(const ScaledSystem &scaled, const SeaState &sea, const FrequencyGrid &grid,
                RandomSource &random, std::vector<WaveComponent> &components) {
    const SpreadingQuantiles quantiles(scaled.system->spread);
    const double meanTo = (scaled.system->direction + 180.0) * kRadiansPerDegree;
    const double currentTo = sea.currentDirection * kRadiansPerDegree;
    const double start = random.uniform();
    const double negligible =
        kNegligibleShare * scaled.system->significantHeight * scaled.system->significantHeight;
    for (std::size_t line = 1; line < grid.lines(); ++line) {
        const double energy = scaled.energy(grid.frequency(line));
        if (energy < negligible) {
            continue;
        }
        const double shift = fraction(start + static_cast<double>(line) * kGoldenRatio);
        for (std::size_t i = 0; i < kDirectionsPerLine; ++i) {
            const double share =
                (static_cast<double>(i) + shift) / static_cast<double>(kDirectionsPerLine);
            const double to = meanTo + quantiles.angle(share);
            const double along = sea.currentSpeed * std::cos(to - currentTo);
            const auto wavenumber =
                solveWavenumber(kTwoPi * grid.frequency(line), sea.waterDepth, along);
            if (!wavenumber) {
                continue;
            }
            const double part = energy / static_cast<double>(kDirectionsPerLine);
            components.push_back({line, *wavenumber, std::sin(to), std::cos(to), part,
                                  std::sqrt(part) * random.normalPair()});
        }
    }
}

// Direction and spread where the sum of all systems is greatest.
void describePeak(const std::vector<ScaledSystem> &systems, const FrequencyGrid &grid,
                  Truth &truth) {
    double greatest = 0.0;
    double peak = 0.0;
    const auto look = [&](double frequency) {
        double total = 0.0;
        for (const ScaledSystem &scaled : systems) {
            total += scaled.energy(frequency);
        }
        if (total > greatest) {
            greatest = total;
            peak = frequency;
        }
    };
    for (const ScaledSystem &scaled : systems) {
        look(1.0 / scaled.system->peakPeriod); // between lines too
    }
    for (std::size_t line = 1; line < grid.lines(); ++line) {
        look(grid.frequency(line));
    }
    double east = 0.0;
    double north = 0.0;
    for (const ScaledSystem &scaled : systems) {
        const double from = scaled.system->direction * kRadiansPerDegree;
        const double weight = scaled.energy(peak) * firstMoment(scaled.system->spread) / greatest;
        east += weight * std::sin(from);
        north += weight * std::cos(from);
    }
    truth.peakPeriod = 1.0 / peak;
    truth.peakDirection = compassDegrees(east, north);
    truth.peakSpread =
        std::sqrt(2.0 * std::max(0.0, 1.0 - std::hypot(east, north))) / kRadiansPerDegree;
}

// Unit vectors of the lines' mean directions, weighted by the lines' energies.
double meanFromDirection(const FrequencyGrid &grid, const std::vector<WaveComponent> &components) {
    struct Line {
        double energy = 0.0;
        double east = 0.0;
        double north = 0.0;
    };
    std::vector<Line> lines(grid.lines());
    for (const WaveComponent &wave : components) {
        Line &line = lines[wave.line];
        line.energy += wave.energy;
        line.east -= wave.energy * wave.toEast;
        line.north -= wave.energy * wave.toNorth;
    }
    double east = 0.0;
    double north = 0.0;
    for (const Line &line : lines) {
        const double length = std::hypot(line.east, line.north);
        if (length > 0.0) {
            east += line.energy * line.east / length;
            north += line.energy * line.north / length;
        }
    }
    return compassDegrees(east, north);
}

} // namespace

FrequencyGrid frequencyGrid(const Instrument &instrument, std::size_t samples) {
    FrequencyGrid grid;
    grid.points = std::bit_ceil(kBurstsInPeriod * kGridPerSample * samples);
    grid.width = static_cast<double>(kGridPerSample) * instrument.samplingRate /
                 static_cast<double>(grid.points);
    return grid;
}

std::vector<WaveComponent> drawComponents(const SeaState &sea, const FrequencyGrid &grid,
                                          RandomSource &random) {
    std::vector<WaveComponent> components;
    components.reserve(sea.systems.size() * kDirectionsPerLine * grid.lines());
    for (const ScaledSystem &scaled : scaledSystems(sea, grid)) {
        drawSystem(scaled, sea, grid, random, components);
    }
    return components;
}

void describeSpectrum(const SeaState &sea, const FrequencyGrid &grid,
                      const std::vector<WaveComponent> &components, Truth &truth) {
    double energy = 0.0;
    for (const WaveComponent &wave : components) {
        energy += wave.energy;
    }
    truth.significantHeight = 4.0 * std::sqrt(energy);
    if (components.empty()) {
        return; // a flat sea has no period and no direction
    }
    describePeak(scaledSystems(sea, grid), grid, truth);
    truth.meanDirection = meanFromDirection(grid, components);
}

} // namespace orvik
