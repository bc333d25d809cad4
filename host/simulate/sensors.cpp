#include "simulate/sensors.hpp"

#include <cmath>
#include <string>
#include <utility>

#include "simulate/head_sensors.hpp"
#include "simulate/wave_theory.hpp"
#include "user_error.hpp"

namespace orvik {

namespace {

using Complex = std::complex<double>;

struct BeamPlaces {
    std::array<Vector3, 3> direction{}; // in true east, north, up
    std::array<Vector3, 3> cell{};      // east and north of the head; z from the mean surface
};

BeamPlaces beamPlaces(const Instrument &instrument, const SeaState &sea, const HeadPlace &head) {
    BeamPlaces places;
    const auto directions = beamDirections(instrument);
    for (std::size_t b = 0; b < 3; ++b) {
        places.direction[b] = product(head.toEarth, directions[b]);
        for (std::size_t axis = 0; axis < 3; ++axis) {
            places.cell[b][axis] = places.direction[b][axis] * instrument.cellRange;
        }
        places.cell[b][2] += head.z;
        const double z = places.cell[b][2];
        if (!(z < 0.0 && z > -sea.waterDepth)) {
            throw UserError("the velocity cell of beam " + std::to_string(b + 1) + " is " +
                            metresText(z + sea.waterDepth) +
                            " above the bed, not in the water, which is " +
                            metresText(sea.waterDepth) + " deep: change cell_range or depth");
        }
    }
    return places;
}

void addWave(const WaveComponent &wave, const BeamPlaces &places, double waterDepth,
             std::array<Lines, 3> &beams) {
    const double k = wave.wavenumber;
    const double sigma = intrinsicFrequency(k, waterDepth);
    for (std::size_t b = 0; b < 3; ++b) {
        const auto &[x, y, z] = places.cell[b];
        const DepthFactors factors = depthFactors(k, waterDepth, z);
        const double along =
            wave.toEast * places.direction[b][0] + wave.toNorth * places.direction[b][1];
        // Water goes with the wave under crests, and up a quarter period before them.
        const Complex velocity{sigma * factors.horizontal * along,
                               -sigma * factors.vertical * places.direction[b][2]};
        beams[b][wave.line] +=
            velocity * (wave.amplitude * std::polar(1.0, k * (wave.toEast * x + wave.toNorth * y)));
    }
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

void checkPlaces(const Instrument &instrument, const SeaState &sea) {
    beamPlaces(instrument, sea, headPlace(instrument, sea));
}

SensorSeries recordComponents(const Instrument &instrument, const SeaState &sea,
                              const FrequencyGrid &grid,
                              const std::vector<WaveComponent> &components, std::size_t samples) {
    const HeadPlace head = headPlace(instrument, sea);
    const BeamPlaces places = beamPlaces(instrument, sea, head);
    const HeadTiming timing{pressureDelay(instrument), kTrackDelay,
                            kGridPerSample / kTrackPerSample};
    HeadSeries atHead = recordHead(head, sea.waterDepth, grid, components, timing, samples);
    const Lines none(grid.points);
    std::array<Lines, 3> lines{none, none, none};
    for (const WaveComponent &wave : components) {
        addWave(wave, places, sea.waterDepth, lines);
    }
    SensorSeries series;
    series.elevation = std::move(atHead.elevation);
    series.pressure = std::move(atHead.pressure);
    series.track = std::move(atHead.track);
    const double currentTo = sea.currentDirection * kRadiansPerDegree;
    for (std::size_t b = 0; b < 3; ++b) {
        const double delay = kBeamDelay * static_cast<double>(b);
        series.beam[b] = seriesOfLines(std::move(lines[b]), grid, delay, kGridPerSample, samples);
        const double mean = sea.currentSpeed * (std::sin(currentTo) * places.direction[b][0] +
                                                std::cos(currentTo) * places.direction[b][1]);
        for (double &velocity : series.beam[b]) {
            velocity += mean;
        }
    }
    return series;
}

} // namespace orvik
