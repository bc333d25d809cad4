#include "simulate/profile_sensors.hpp"

#include <algorithm>
#include <cmath>
#include <string>
#include <utility>

#include "burst/profile_geometry.hpp"
#include "simulate/head_sensors.hpp"
#include "simulate/wave_theory.hpp"
#include "user_error.hpp"

namespace orvik {

namespace {

using Complex = std::complex<double>;

constexpr double kHealthyCorrelation = 95.0; // [percent] near the head
constexpr double kSurfaceLoss = 20.0;        // [percent] lost on the way to the surface
constexpr double kCorrelationScatter = 2.0;  // [percent]
constexpr double kNoSignal = 14.0;           // [percent] correlation of noise with noise
constexpr double kEchoSpeed = 0.5; // [m/s] what the surface's own echo adds to a cell it fills
constexpr double kHealthyAmplitude = 160.0; // [counts]
constexpr double kNoiseAmplitude = 30.0;    // [counts]
constexpr double kGreatestSpeed =
    1.0; // [m/s] of a cell without signal, where no ambiguity velocity is told

// One beam: its unit vector in true east, north, up.
struct Beam {
    Vector3 direction{};
    double headZ = 0.0;
    double waterDepth = 0.0;
};

double slantRange(const Instrument &instrument, std::size_t cell) {
    const double height =
        instrument.profile->blanking + static_cast<double>(cell + 1) * instrument.cellSize;
    return height / std::cos(instrument.slantAngle * kRadiansPerDegree);
}

std::vector<Beam> beamsOf(const Instrument &instrument, const SeaState &sea,
                          const HeadPlace &head) {
    std::vector<Beam> beams;
    for (const Vector3 &direction : allBeamDirections(instrument)) {
        const Beam beam{product(head.toEarth, direction), head.z, sea.waterDepth};
        const double z = head.z + beam.direction[2] * slantRange(instrument, 0);
        if (!(z < 0.0 && z > -sea.waterDepth)) {
            throw UserError("the first velocity cell is " + metresText(z + sea.waterDepth) +
                            " above the bed, not in the water, which is " +
                            metresText(sea.waterDepth) +
                            " deep: change blanking, cell_size or depth");
        }
        beams.push_back(beam);
    }
    return beams;
}

// A plane wave along one beam. From cell to cell its phase turns and its two exponentials in depth change by the same
// factors, so that a profile needs no more transcendental functions than a single cell.
struct WaveAlongBeam {
    std::size_t line;
    Complex amplitude, turn;
    double up, upStep;     // exp(k z)
    double down, downStep; // exp(-k (z + 2 h))
    double across;         // of the horizontal orbital velocity, along the beam
    double vertical;

    [[nodiscard]] Complex velocity() const {
        return amplitude * Complex{across * (up + down), -vertical * (up - down)};
    }
    void advance() {
        amplitude *= turn;
        up *= upStep;
        down *= downStep;
    }
};

WaveAlongBeam alongBeam(const WaveComponent &wave, const Beam &beam, double firstRange,
                        double step) {
    const double k = wave.wavenumber;
    const double along = wave.toEast * beam.direction[0] + wave.toNorth * beam.direction[1];
    const double h = beam.waterDepth;
    const double z = beam.headZ + firstRange * beam.direction[2];
    const double rise = step * beam.direction[2];
    const double scale = intrinsicFrequency(k, h) / (1.0 - std::exp(-2.0 * k * h));
    return {wave.line,
            wave.amplitude * std::polar(1.0, k * along * firstRange),
            std::polar(1.0, k * along * step),
            std::exp(k * z),
            std::exp(k * rise),
            std::exp(-k * (z + 2.0 * h)),
            std::exp(-k * rise),
            scale * along,
            scale * beam.direction[2]};
}

// Writes the velocities of one beam's cells that are ever in the water; above the mean surface linear waves say nothing.
void recordBeam(const Instrument &instrument, const FrequencyGrid &grid,
                const std::vector<WaveComponent> &components, const Beam &beam, double current,
                std::size_t number, Profile &profile) {
    const double step = slantRange(instrument, 1) - slantRange(instrument, 0);
    std::vector<WaveAlongBeam> waves;
    waves.reserve(components.size());
    for (const WaveComponent &wave : components) {
        waves.push_back(alongBeam(wave, beam, slantRange(instrument, 0), step));
    }
    const std::size_t samples = profile.velocity.size() / (profile.beams * profile.cells);
    for (std::size_t cell = 0; cell < profile.cells; ++cell) {
        const double z = beam.headZ + slantRange(instrument, cell) * beam.direction[2];
        if (z >= 0.0 || z <= -beam.waterDepth) {
            return;
        }
        Lines lines(grid.points);
        for (WaveAlongBeam &wave : waves) {
            lines[wave.line] += wave.velocity();
            wave.advance();
        }
        const auto series = seriesOfLines(std::move(lines), grid, 0.0, kGridPerSample, samples);
        for (std::size_t i = 0; i < samples; ++i) {
            profile.velocity[profile.at(i, number, cell)] = static_cast<float>(series[i] + current);
        }
    }
}

std::uint8_t asByte(double value) {
    return static_cast<std::uint8_t>(std::clamp(value, 0.0, 255.0));
}

// What the echo of a cell is worth: the surface `distance` metres above the head (vertically).
void judgeCell(const Instrument &instrument, const Beam &beam, std::size_t cell, double distance,
               RandomSource &random, float &velocity, std::uint8_t &amplitude,
               std::uint8_t &correlation) {
    const double range = slantRange(instrument, cell);
    const double height = range * beam.direction[2]; // above the head
    const double far = height + 0.5 * instrument.cellSize;
    const double scatter = kCorrelationScatter * random.normal();
    const double draw = 2.0 * random.uniform() - 1.0;
    const double greatest = std::isfinite(instrument.profile->ambiguityVelocity)
                                ? instrument.profile->ambiguityVelocity
                                : kGreatestSpeed;
    if (far > distance || beam.headZ + far >= 0.0 || beam.headZ + height < -beam.waterDepth) {
        velocity = static_cast<float>(draw * greatest);
        amplitude = asByte(kNoiseAmplitude);
        correlation = asByte(kNoSignal + scatter);
        return;
    }
    // The surface's echo by the side lobes is as far away as the surface itself, straight up.
    const double share = std::max(0.0, range / distance);
    const bool echo = beam.direction[2] > 0.0 && range > distance;
    const double top = 1.0 / beam.direction[2]; // where the beam meets the surface
    const double filled = echo ? std::min(1.0, (share - 1.0) / (top - 1.0)) : 0.0;
    velocity += static_cast<float>(kEchoSpeed * filled * draw);
    amplitude = asByte(kHealthyAmplitude);
    correlation = asByte(kHealthyCorrelation - kSurfaceLoss * std::pow(std::min(share, 1.0), 4.0) -
                         (kHealthyCorrelation - kSurfaceLoss - kNoSignal) * filled + scatter);
}

} // namespace

void checkProfilePlaces(const Instrument &instrument, const SeaState &sea) {
    beamsOf(instrument, sea, headPlace(instrument, sea));
}

ProfileRecording recordProfile(const Instrument &instrument, const SeaState &sea,
                               const FrequencyGrid &grid,
                               const std::vector<WaveComponent> &components, std::size_t samples,
                               RandomSource random) {
    const HeadPlace head = headPlace(instrument, sea);
    const std::vector<Beam> beams = beamsOf(instrument, sea, head);
    const double later = -instrument.profile->trackTimeOffset;
    HeadSeries atHead =
        recordHead(head, sea.waterDepth, grid, components, {later, later, kGridPerSample}, samples);
    ProfileRecording recording;
    Profile &profile = recording.profile;
    profile.beams = beams.size();
    profile.cells = instrument.profile->cells;
    profile.velocity.assign(samples * profile.beams * profile.cells, 0.0F);
    profile.amplitude.resize(profile.velocity.size());
    profile.correlation.resize(profile.velocity.size());
    const double currentTo = sea.currentDirection * kRadiansPerDegree;
    for (std::size_t b = 0; b < beams.size(); ++b) {
        const double current = sea.currentSpeed * (std::sin(currentTo) * beams[b].direction[0] +
                                                   std::cos(currentTo) * beams[b].direction[1]);
        recordBeam(instrument, grid, components, beams[b], current, b, profile);
    }
    for (std::size_t i = 0; i < samples; ++i) {
        const double distance = atHead.elevation[kGridPerSample * i] - head.z;
        for (std::size_t b = 0; b < beams.size(); ++b) {
            for (std::size_t c = 0; c < profile.cells; ++c) {
                const std::size_t at = profile.at(i, b, c);
                judgeCell(instrument, beams[b], c, distance, random, profile.velocity[at],
                          profile.amplitude[at], profile.correlation[at]);
            }
        }
    }
    recording.elevation = std::move(atHead.elevation);
    recording.pressure = std::move(atHead.pressure);
    recording.track = std::move(atHead.track);
    return recording;
}

} // namespace orvik
