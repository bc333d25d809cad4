#include "simulate/head_sensors.hpp"

#include <cmath>
#include <iomanip>
#include <limits>
#include <sstream>
#include <string>
#include <utility>

#include "simulate/fourier.hpp"
#include "simulate/wave_theory.hpp"
#include "user_error.hpp"

namespace orvik {

std::string metresText(double length) {
    std::ostringstream text;
    text << std::fixed << std::setprecision(2) << length << " m";
    return text.str();
}

HeadPlace headPlace(const Instrument &instrument, const SeaState &sea) {
    HeadPlace place;
    place.z = instrument.pressureHeight - sea.waterDepth;
    if (!(place.z < 0.0)) {
        throw UserError("the instrument, " + metresText(instrument.pressureHeight) +
                        " above the bed, is out of the water, which is " +
                        metresText(sea.waterDepth) +
                        " deep: give a greater depth or a smaller pressure_height");
    }
    // Compass headings turn into true ones by the declination.
    place.toEarth = xyzToEnuMatrix(sea.heading + instrument.declination, sea.pitch,
                                   sea.roll + instrument.rollOffset);
    const Vector3 vertical = product(place.toEarth, Vector3{0.0, 0.0, 1.0});
    place.trackCosine = vertical[2];
    place.trackX = -place.z * vertical[0] / vertical[2];
    place.trackY = -place.z * vertical[1] / vertical[2];
    return place;
}

std::vector<double> seriesOfLines(Lines lines, const FrequencyGrid &grid, double delay,
                                  std::size_t stride, std::size_t count) {
    for (std::size_t n = 1; n < grid.lines(); ++n) {
        lines[n] *= std::polar(1.0, kTwoPi * grid.frequency(n) * delay);
    }
    const auto all = sumOfLines(std::move(lines), stride * count);
    std::vector<double> kept(count);
    for (std::size_t i = 0; i < count; ++i) {
        kept[i] = all[stride * i];
    }
    return kept;
}

double intrinsicFrequency(double wavenumber, double waterDepth) {
    return std::sqrt(kGravity * wavenumber * std::tanh(wavenumber * waterDepth));
}

HeadSeries recordHead(const HeadPlace &place, double waterDepth, const FrequencyGrid &grid,
                      const std::vector<WaveComponent> &components, const HeadTiming &timing,
                      std::size_t samples) {
    Lines elevation(grid.points);
    Lines pressure(grid.points);
    Lines track(grid.points);
    for (const WaveComponent &wave : components) {
        const double k = wave.wavenumber;
        elevation[wave.line] += wave.amplitude;
        pressure[wave.line] += wave.amplitude * depthFactors(k, waterDepth, place.z).pressure;
        track[wave.line] +=
            wave.amplitude *
            std::polar(1.0, k * (wave.toEast * place.trackX + wave.toNorth * place.trackY));
    }
    HeadSeries series;
    const std::size_t points = kGridPerSample * samples;
    series.elevation = seriesOfLines(std::move(elevation), grid, 0.0, 1, points);
    series.track = seriesOfLines(std::move(track), grid, timing.trackDelay, timing.trackStride,
                                 points / timing.trackStride);
    for (double &distance : series.track) {
        distance = place.trackCosine > 0.0 ? (distance - place.z) / place.trackCosine
                                           : std::numeric_limits<double>::quiet_NaN();
    }
    series.pressure =
        seriesOfLines(std::move(pressure), grid, timing.pressureDelay, kGridPerSample, samples);
    for (double &value : series.pressure) {
        value -= place.z;
    }
    return series;
}

} // namespace orvik
