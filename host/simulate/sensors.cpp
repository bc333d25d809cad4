#include "simulate/sensors.hpp"

#include <cmath>
#include <iomanip>
#include <sstream>
#include <string>
#include <utility>

#include "burst/geometry.hpp"
#include "simulate/fourier.hpp"
#include "simulate/wave_theory.hpp"
#include "user_error.hpp"

namespace orvik {

namespace {

using Complex = std::complex<double>;
using Lines = std::vector<Complex>;

// Places relative to the head: x east, y north; z from the mean surface, negative below it.
struct SensorPlaces {
    double headZ = 0.0;
    std::array<Vector3, 3> beam{}; // directions
    std::array<Vector3, 3> cell{}; // places of the velocity cells
    double trackX = 0.0;           // where the vertical beam meets the mean surface
    double trackY = 0.0;
    double trackCosine = 1.0; // of the vertical beam's tilt
};

struct SensorLines {
    Lines elevation;
    Lines pressure;
    std::array<Lines, 3> beam;
    Lines track;
};

std::string metres(double length) {
    std::ostringstream text;
    text << std::fixed << std::setprecision(2) << length << " m";
    return text.str();
}

SensorPlaces sensorPlaces(const Instrument &instrument, const SeaState &sea) {
    SensorPlaces places;
    places.headZ = instrument.pressureHeight - sea.waterDepth;
    if (!(places.headZ < 0.0)) {
        throw UserError("the instrument, " + metres(instrument.pressureHeight) +
                        " above the bed, is out of the water, which is " + metres(sea.waterDepth) +
                        " deep: give a greater depth or a smaller pressure_height");
    }
    // Compass headings turn into true ones by the declination.
    const Matrix3 toEarth =
        xyzToEnuMatrix(sea.heading + instrument.declination, sea.pitch, sea.roll);
    const auto directions = beamDirections(instrument);
    for (std::size_t b = 0; b < 3; ++b) {
        places.beam[b] = product(toEarth, directions[b]);
        for (std::size_t axis = 0; axis < 3; ++axis) {
            places.cell[b][axis] = places.beam[b][axis] * instrument.cellRange;
        }
        places.cell[b][2] += places.headZ;
        const double z = places.cell[b][2];
        if (!(z < 0.0 && z > -sea.waterDepth)) {
            throw UserError("the velocity cell of beam " + std::to_string(b + 1) + " is " +
                            metres(z + sea.waterDepth) +
                            " above the bed, not in the water, which is " + metres(sea.waterDepth) +
                            " deep: change cell_range or depth");
        }
    }
    const Vector3 vertical = product(toEarth, Vector3{0.0, 0.0, 1.0});
    places.trackCosine = vertical[2];
    places.trackX = -places.headZ * vertical[0] / vertical[2];
    places.trackY = -places.headZ * vertical[1] / vertical[2];
    return places;
}

Complex turned(Complex amplitude, double phase) { return amplitude * std::polar(1.0, phase); }

// Orbital velocities go with the intrinsic frequency, that of an observer who drifts with the current.
double intrinsicFrequency(double wavenumber, double waterDepth) {
    return std::sqrt(kGravity * wavenumber * std::tanh(wavenumber * waterDepth));
}

void addWave(const WaveComponent &wave, const SensorPlaces &places, double waterDepth,
             SensorLines &lines) {
    const double k = wave.wavenumber;
    lines.elevation[wave.line] += wave.amplitude;
    lines.pressure[wave.line] +=
        wave.amplitude * depthFactors(k, waterDepth, places.headZ).pressure;
    lines.track[wave.line] +=
        turned(wave.amplitude, k * (wave.toEast * places.trackX + wave.toNorth * places.trackY));
    const double sigma = intrinsicFrequency(k, waterDepth);
    for (std::size_t b = 0; b < 3; ++b) {
        const auto &[x, y, z] = places.cell[b];
        const DepthFactors factors = depthFactors(k, waterDepth, z);
        const double along = wave.toEast * places.beam[b][0] + wave.toNorth * places.beam[b][1];
        // Water goes with the wave under crests, and up a quarter period before them.
        const Complex velocity{sigma * factors.horizontal * along,
                               -sigma * factors.vertical * places.beam[b][2]};
        lines.beam[b][wave.line] +=
            velocity * turned(wave.amplitude, k * (wave.toEast * x + wave.toNorth * y));
    }
}

// The series whose element j is of the instant j / (surface track's rate) - delay; every `stride`-th element is kept,
// so that what lies above the sensor's own Nyquist frequency folds as it does in the sea.
std::vector<double> seriesOfLines(Lines lines, const FrequencyGrid &grid, double delay,
                                  std::size_t stride, std::size_t count) {
    for (std::size_t n = 1; n < grid.lines(); ++n) {
        lines[n] = turned(lines[n], kTwoPi * grid.frequency(n) * delay);
    }
    const auto all = sumOfLines(std::move(lines), stride * count);
    std::vector<double> kept(count);
    for (std::size_t i = 0; i < count; ++i) {
        kept[i] = all[stride * i];
    }
    return kept;
}

} // namespace

double pressureDelay(const Instrument &instrument) {
    if (instrument.instrumentType == 1) {
        return 2.0 * kBeamDelay; // with the last beam
    }
    if (instrument.instrumentType == 0) {
        return 0.32;
    }
    if (instrument.samplingRate < 1.0) {
        return 0.587;
    }
    return instrument.samplingRate < 2.0 ? 0.42 : 0.17;
}

double trackRate(const Instrument &instrument) {
    return static_cast<double>(kTrackPerSample) * instrument.samplingRate;
}

void checkPlaces(const Instrument &instrument, const SeaState &sea) {
    sensorPlaces(instrument, sea);
}

SensorSeries recordComponents(const Instrument &instrument, const SeaState &sea,
                              const FrequencyGrid &grid,
                              const std::vector<WaveComponent> &components, std::size_t samples) {
    const SensorPlaces places = sensorPlaces(instrument, sea);
    const Lines none(grid.points);
    SensorLines lines{none, none, {none, none, none}, none};
    for (const WaveComponent &wave : components) {
        addWave(wave, places, sea.waterDepth, lines);
    }
    SensorSeries series;
    const std::size_t trackSamples = kTrackPerSample * samples;
    series.elevation = seriesOfLines(std::move(lines.elevation), grid, 0.0, 1, trackSamples);
    series.track = seriesOfLines(std::move(lines.track), grid, kTrackDelay, 1, trackSamples);
    for (double &distance : series.track) {
        distance = (distance - places.headZ) / places.trackCosine;
    }
    series.pressure = seriesOfLines(std::move(lines.pressure), grid, pressureDelay(instrument),
                                    kTrackPerSample, samples);
    for (double &pressure : series.pressure) {
        pressure -= places.headZ;
    }
    const double currentTo = sea.currentDirection * kRadiansPerDegree;
    for (std::size_t b = 0; b < 3; ++b) {
        const double delay = kBeamDelay * static_cast<double>(b);
        series.beam[b] =
            seriesOfLines(std::move(lines.beam[b]), grid, delay, kTrackPerSample, samples);
        const double mean = sea.currentSpeed * (std::sin(currentTo) * places.beam[b][0] +
                                                std::cos(currentTo) * places.beam[b][1]);
        for (double &velocity : series.beam[b]) {
            velocity += mean;
        }
    }
    return series;
}

} // namespace orvik
