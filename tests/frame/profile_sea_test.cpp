// Physical class: a profile instrument on the bed of a simulated directional sea gives back its height and direction,
// whatever the method and the coordinate system of its velocities.
//
// The sea is a sum of linear waves, one at every harmonic of the burst, so that its height is exact and nothing leaks:
//
//     elevation = sum a cos(psi),   psi = omega t - k (x sin D + y cos D) + phase,   D compass direction of travel
#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <random>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "orvikbase/orvikbase.h"
#include "spectral/velocity_frames.hpp"
#include "support/record_ptr.hpp"

namespace {

using orvik::test::attitudeMatrix;
using orvik::test::product;
using orvik::test::toEarth;
using orvik::test::Wide;
using orvik::test::WideSquare;
using orvik::test::WideVector;

constexpr int kSamples = 2048;
constexpr double kRate = 2.0;       // [Hz]
constexpr double kDepth = 15.0;     // [m]
constexpr double kHeadAbove = 0.75; // [m] above the bed
constexpr double kHeight = 1.5;     // [m] significant
constexpr double kPeak = 0.125;     // [Hz]
constexpr double kTravel = 62.0;    // [degrees] mean direction of travel
constexpr double kSpreadExponent = 12.0;
constexpr double kSpread = 22.5;  // [degrees] sqrt(2 (1 - r)), r = 12/13
constexpr double kSlant = 25.0;   // [degrees]
constexpr double kCell = 0.5;     // [m] vertical
constexpr double kBlanking = 0.5; // [m] vertical
constexpr int kCells = 30;
constexpr int kGoodCells = 20;    // the surface's own echo spoils those above
constexpr int kTrackDelay = 2500; // [0.1 ms] of surface track and pressure
constexpr double kHeading = 131.0;
constexpr double kPitch = 2.0;
constexpr double kRoll = -3.0;

// ---- The sea

struct Wave {
    int harmonic;
    double amplitude, omega, number, east, north, phase;
};

double waveNumber(double omega) {
    double k = omega * omega / 9.81;
    for (int step = 0; step < 200; ++step) {
        k = 0.5 * (k + omega * omega / (9.81 * std::tanh(k * kDepth)));
    }
    return k;
}

// Peaked wind sea, without its scale.
double spectrumShape(double f) {
    const double width = f <= kPeak ? 0.07 : 0.09;
    const double offset = (f - kPeak) / (width * kPeak);
    return std::pow(f, -5.0) * std::exp(-1.25 * std::pow(kPeak / f, 4.0)) *
           std::pow(3.3, std::exp(-0.5 * offset * offset));
}

// Direction about the mean that the fraction `share` of a cos^2s distribution lies below [rad].
double directionAt(double share) {
    constexpr int kSteps = 2000;
    std::vector<double> sum(kSteps + 1, 0.0);
    for (int i = 0; i < kSteps; ++i) {
        const double angle = -M_PI + 2.0 * M_PI * (i + 0.5) / kSteps;
        sum[static_cast<std::size_t>(i) + 1] =
            sum[static_cast<std::size_t>(i)] +
            std::pow(std::cos(0.5 * angle), 2.0 * kSpreadExponent);
    }
    const auto at = std::lower_bound(sum.begin(), sum.end(), share * sum.back());
    return -M_PI + 2.0 * M_PI * static_cast<double>(at - sum.begin()) / kSteps;
}

// Directions run through the distribution with the golden section, so that every narrow band holds all of it.
std::vector<Wave> makeSea() {
    std::mt19937 random(31);
    std::uniform_real_distribution<double> phase(0.0, 2.0 * M_PI);
    std::vector<Wave> waves;
    double variance = 0.0;
    for (int j = 45; j <= 460; ++j) {
        const double f = j * kRate / kSamples;
        const double share = std::fmod(0.5 + 0.6180339887498949 * j, 1.0);
        const double direction = kTravel * M_PI / 180.0 + directionAt(share);
        const double energy = spectrumShape(f);
        const double omega = 2.0 * M_PI * f;
        variance += energy;
        waves.push_back({j, std::sqrt(2.0 * energy), omega, waveNumber(omega), std::sin(direction),
                         std::cos(direction), phase(random)});
    }
    const double scale = kHeight / (4.0 * std::sqrt(variance));
    for (Wave &wave : waves) {
        wave.amplitude *= scale;
    }
    return waves;
}

struct Motion {
    double elevation = 0.0, pressure = 0.0, east = 0.0, north = 0.0, up = 0.0;
};

// What happens at one place (z up from the still surface) through the burst, `delay` seconds after each sample.
std::vector<Motion> motionAt(const std::vector<Wave> &sea, double x, double y, double z,
                             double delay) {
    static const std::vector<double> cosine = [] {
        std::vector<double> table(kSamples);
        for (int i = 0; i < kSamples; ++i) {
            table[static_cast<std::size_t>(i)] = std::cos(2.0 * M_PI * i / kSamples);
        }
        return table;
    }();
    std::vector<Motion> motion(kSamples);
    for (const Wave &wave : sea) {
        const double start =
            wave.omega * delay - wave.number * (x * wave.east + y * wave.north) + wave.phase;
        const double c = std::cos(start);
        const double s = std::sin(start);
        const double above = wave.number * (kDepth + z);
        const double bed = wave.number * kDepth;
        const double response = wave.amplitude * std::cosh(above) / std::cosh(bed);
        const double across = wave.amplitude * wave.omega * std::cosh(above) / std::sinh(bed);
        const double vertical = wave.amplitude * wave.omega * std::sinh(above) / std::sinh(bed);
        for (int i = 0; i < kSamples; ++i) {
            const int turn = wave.harmonic * i % kSamples;
            const double ct = cosine[static_cast<std::size_t>(turn)];
            const double st =
                cosine[static_cast<std::size_t>((turn + 3 * kSamples / 4) % kSamples)];
            const double cosPsi = ct * c - st * s;
            const double sinPsi = st * c + ct * s;
            Motion &at = motion[static_cast<std::size_t>(i)];
            at.elevation += wave.amplitude * cosPsi;
            at.pressure += response * cosPsi;
            at.east += across * wave.east * cosPsi;
            at.north += across * wave.north * cosPsi;
            at.up -= vertical * sinPsi;
        }
    }
    return motion;
}

// ---- The instrument

struct Head {
    int beams;
    std::array<double, 4>
        azimuth; // where the beams point; of three, the fourth is what the host says
};

constexpr Head kFourBeams{4, {0.0, 90.0, 180.0, 270.0}};
constexpr Head kThreeBeams{3, {0.0, 120.0, 240.0, 300.0}};

// It rocks a little about its mean attitude.
double headingAt(int i) { return kHeading + 0.4 * std::sin(0.021 * i); }
double pitchAt(int i) { return kPitch + 0.3 * std::sin(0.05 * i); }
double rollAt(int i) { return kRoll + 0.3 * std::cos(0.04 * i); }

WideVector beamAxis(const Head &head, std::size_t b) {
    const Wide s = kSlant * orvik::test::kDegree;
    const Wide az = head.azimuth[b] * orvik::test::kDegree;
    return {std::cos(az) * std::sin(s), std::sin(az) * std::sin(s), std::cos(s)};
}

// Its own beam-to-XYZ matrix: of four beams, opposite ones give an axis and a vertical each.
std::array<std::int16_t, 16> transformMatrix(const Head &head) {
    WideSquare toBeams{};
    for (std::size_t b = 0; b < 4; ++b) {
        const WideVector axis = beamAxis(head, b);
        toBeams[b] = {axis[0], axis[1], axis[2], 0.0L};
        if (head.beams == 4 && b % 2 == 1) {
            toBeams[b] = {axis[0], axis[1], 0.0L, axis[2]};
        }
    }
    const auto n = static_cast<std::size_t>(head.beams);
    const WideSquare matrix = orvik::test::wideInverse(toBeams, n);
    std::array<std::int16_t, 16> result{};
    for (std::size_t i = 0; i < n * n; ++i) {
        result[i] = static_cast<std::int16_t>(
            std::lround(4096.0 * static_cast<double>(matrix[i / n][i % n])));
    }
    return result;
}

using Cells = std::array<std::array<float, 4>, kCells>;

struct Recording {
    Head head;
    std::vector<Cells> alongBeam; // by sample [m/s]
    std::vector<Motion> atHead;   // pressure, late by the delay
    std::vector<double> distance; // along the leaning track beam, late by the delay
};

// The cells stay where the mean attitude has them (rocking moves them by centimetres); their axes rock.
Recording record(const Head &head, const std::vector<Wave> &sea) {
    const double delay = kTrackDelay / 10000.0;
    Recording recording{head,
                        std::vector<Cells>(kSamples),
                        motionAt(sea, 0.0, 0.0, kHeadAbove - kDepth, delay),
                        {}};
    for (std::size_t b = 0; b < static_cast<std::size_t>(head.beams); ++b) {
        const WideVector mean = toEarth(beamAxis(head, b), kHeading, kPitch, kRoll);
        for (int cell = 0; cell < kCells; ++cell) {
            const double range = ((cell + 1) * kCell + kBlanking) / std::cos(kSlant * M_PI / 180.0);
            const double z =
                std::min(kHeadAbove - kDepth + range * static_cast<double>(mean[2]), 0.0);
            const auto motion = motionAt(sea, range * static_cast<double>(mean[0]),
                                         range * static_cast<double>(mean[1]), z, 0.0);
            for (int i = 0; i < kSamples; ++i) {
                const WideVector axis =
                    toEarth(beamAxis(head, b), headingAt(i), pitchAt(i), rollAt(i));
                const Motion &at = motion[static_cast<std::size_t>(i)];
                recording
                    .alongBeam[static_cast<std::size_t>(i)][static_cast<std::size_t>(cell)][b] =
                    static_cast<float>(static_cast<double>(axis[0]) * at.east +
                                       static_cast<double>(axis[1]) * at.north +
                                       static_cast<double>(axis[2]) * at.up);
            }
        }
    }
    const WideVector up = toEarth({0.0L, 0.0L, 1.0L}, kHeading, kPitch, kRoll);
    const double still = (kDepth - kHeadAbove) / static_cast<double>(up[2]);
    const auto surface = motionAt(sea, still * static_cast<double>(up[0]),
                                  still * static_cast<double>(up[1]), 0.0, delay);
    for (const Motion &at : surface) {
        recording.distance.push_back(still + at.elevation / static_cast<double>(up[2]));
    }
    return recording;
}

// ---- The burst

struct Way {
    int method;
    int attitudeMode;
};

OVProfileInstrumentConfig configOf(const Head &head, const Way &way) {
    OVProfileInstrumentConfig config{};
    config.pingsPerSample = 4;
    config.samplingRate = 2;
    config.burstSamples = kSamples;
    config.acousticFrequency = 600000.0F;
    config.slantAngle = static_cast<float>(kSlant);
    config.instrumentType = 16;
    config.attitudeMode = way.attitudeMode;
    const auto matrix = transformMatrix(head);
    for (std::size_t i = 0; i < 16; ++i) {
        config.transformMatrix[i] = matrix[i];
    }
    for (std::size_t b = 0; b < 4; ++b) {
        config.beamAzimuth[b] = static_cast<float>(head.azimuth[b]);
    }
    config.beamCount = static_cast<std::int16_t>(head.beams);
    config.lagParameter = 1.0F;
    return config;
}

OVProfileProcessingParameters parametersOf(const Head &head, const Way &way) {
    const bool track = way.method == 2 || way.method == 4;
    OVProfileProcessingParameters parameters{};
    parameters.processingMethod = way.method;
    parameters.freqMin = 0.04F;
    parameters.freqMax = 0.45F;
    parameters.fineFreqMin = 0.04F;
    parameters.fineFreqMax = 0.45F;
    parameters.freqStep = 0.01F;
    parameters.levelOffset = static_cast<float>(kHeadAbove);
    parameters.dirBandWidth = 64;
    parameters.specBandWidth = 32;
    parameters.directionalInputMode = way.method == 1 ? 0 : 2;
    parameters.estimateMask = (head.beams == 3 ? 7 : 15) + (track ? 16 : 0);
    parameters.nDirections = 90;
    parameters.reverseDirections = 0;
    parameters.profileParamA = 90.0F;
    return parameters;
}

OVProfileWaveHeader headerOf(int delay) {
    OVProfileWaveHeader header{};
    header.nSamples = kSamples;
    header.heading = static_cast<float>(kHeading);
    header.pitch = static_cast<float>(kPitch);
    header.roll = static_cast<float>(kRoll);
    header.directDepth = static_cast<float>(kBlanking);
    header.directHeight = static_cast<float>(kCell);
    header.nCells = kCells;
    header.surfaceTimeOffset = static_cast<std::int16_t>(delay);
    return header;
}

// The velocities of a sample in the coordinate system that the host chose.
std::array<double, 4> velocityOf(const Recording &recording, const Way &way, int i,
                                 std::size_t cell, const WideSquare &toXyz,
                                 const WideSquare &attitude) {
    const auto n = static_cast<std::size_t>(recording.head.beams);
    std::array<Wide, 4> v{};
    for (std::size_t b = 0; b < n; ++b) {
        v[b] = static_cast<Wide>(recording.alongBeam[static_cast<std::size_t>(i)][cell][b]);
    }
    if (way.attitudeMode != OV_VELOCITY_BEAM) {
        v = product(toXyz, v, n);
    }
    if (way.attitudeMode == OV_VELOCITY_ENU) {
        v = product(attitude, v, n);
    }
    return {static_cast<double>(v[0]), static_cast<double>(v[1]), static_cast<double>(v[2]),
            static_cast<double>(v[3])};
}

void sendSamples(OVRecord &rec, const Recording &recording, const Way &way) {
    const auto n = static_cast<std::size_t>(recording.head.beams);
    const auto matrix = transformMatrix(recording.head);
    WideSquare toXyz{};
    for (std::size_t i = 0; i < n * n; ++i) {
        toXyz[i / n][i % n] = matrix[i] / 4096.0L;
    }
    const auto sample = std::make_unique<OVWaveSampleProfile>();
    for (int i = 0; i < kSamples; ++i) {
        const auto at = static_cast<std::size_t>(i);
        const double attitude[3] = {headingAt(i), pitchAt(i), rollAt(i)};
        const WideSquare turn = attitudeMatrix(n, attitude[0], attitude[1], attitude[2]);
        sample->valid = 1;
        sample->pressure = static_cast<float>(kDepth - kHeadAbove + recording.atHead[at].pressure);
        sample->astDistance1 = static_cast<float>(recording.distance[at]);
        for (std::size_t cell = 0; cell < kCells; ++cell) {
            const auto v = velocityOf(recording, way, i, cell, toXyz, turn);
            const double spoilt = std::max(static_cast<double>(cell) - kGoodCells + 1.0, 0.0);
            const double correlation = 95.0 - 12.0 * spoilt;
            for (std::size_t b = 0; b < n; ++b) {
                sample->profileVelocity[b][cell] =
                    static_cast<std::int16_t>(std::lround(1000.0 * v[b]));
                sample->profileAmplitude[b][cell] = 120;
                sample->profileCorrelation[b][cell] =
                    static_cast<std::uint8_t>(std::max(correlation, 0.0));
            }
        }
        for (std::size_t a = 0; a < 3; ++a) {
            sample->attitude[a] = static_cast<float>(attitude[a]);
        }
        VELTASetWaveSampleProfile_ptr(&rec, sample.get());
    }
}

struct Result {
    double height, direction, spread;
    int source;
};

Result process(const Recording &recording, const Way &way, int declaredDelay = kTrackDelay) {
    const auto rec = orvik::test::makeRecord();
    OVProfileInstrumentConfig config = configOf(recording.head, way);
    OVProfileProcessingParameters parameters = parametersOf(recording.head, way);
    OVProfileWaveHeader header = headerOf(declaredDelay);
    VELTASetInstrumentConfig_ptr(rec.get(), &config);
    VELTASetProcPar_ptr(rec.get(), &parameters);
    VELTASetWaveHeader_ptr(rec.get(), &header);
    sendSamples(*rec, recording, way);
    const auto output = std::make_unique<OVPreProcessOutput>();
    VELTAPreProcess_ptr(rec.get(), 0, output.get());
    EXPECT_EQ(output->done, 1);
    EXPECT_TRUE(OVProcess_ptr(rec.get()));
    EXPECT_EQ(rec->qualityFlags, 0);
    EXPECT_GT(rec->selectedCell, 10); // high up, and below where the surface spoils the correlation
    EXPECT_LT(rec->selectedCell, kGoodCells + 4);
    const float *const w = rec->waveParameters;
    return {static_cast<double>(w[OV_HM0]), static_cast<double>(w[OV_MEAN_DIRECTION]),
            static_cast<double>(w[OV_PEAK_SPREAD]), rec->spectrumSource};
}

const Recording &fourBeams() {
    static const Recording recording = record(kFourBeams, makeSea());
    return recording;
}

const Recording &threeBeams() {
    static const Recording recording = record(kThreeBeams, makeSea());
    return recording;
}

std::string nameOf(const Way &way) {
    return "method " + std::to_string(way.method) + ", velocities " +
           std::to_string(way.attitudeMode);
}

constexpr int kAllModes[] = {OV_VELOCITY_ENU, OV_VELOCITY_XYZ, OV_VELOCITY_BEAM};

// 5 % of the height and 4 degrees: beams that stand metres apart do not see one and the same wave, which methods 1 and 2
// take for granted, and the burst's rocking goes into the cells' places only on the mean.
void expectTheSea(const Recording &recording, const Way &way) {
    const Result result = process(recording, way);
    EXPECT_NEAR(result.height, kHeight, 0.05 * kHeight) << nameOf(way);
    EXPECT_NEAR(result.direction, kTravel, 4.0) << nameOf(way);
    EXPECT_NEAR(result.spread, kSpread, 4.0) << nameOf(way);
    const bool track = way.method == 2 || way.method == 4;
    const int withoutTrack = way.method == 1 ? OV_SOURCE_PRESSURE : OV_SOURCE_VELOCITY;
    EXPECT_EQ(result.source, track ? OV_SOURCE_SURFACE_TRACK : withoutTrack) << nameOf(way);
}

TEST(ProfileSea, FourBeamsFindItWithEveryMethodInEveryCoordinateSystem) {
    for (const int method : {1, 2, 3, 4}) {
        for (const int mode : kAllModes) {
            expectTheSea(fourBeams(), {method, mode});
        }
    }
}

TEST(ProfileSea, ThreeBeamsFindItAsEastNorthUp) {
    for (const int method : {1, 2}) {
        for (const int mode : kAllModes) {
            expectTheSea(threeBeams(), {method, mode});
        }
    }
}

// Along three beams the height survives; the directions do not, because the beams' geometry is that of four.
TEST(ProfileSea, ThreeBeamsFindTheHeightWithEveryMethod) {
    for (const int method : {3, 4}) {
        const Result result = process(threeBeams(), {method, OV_VELOCITY_BEAM});
        EXPECT_NEAR(result.height, kHeight, 0.05 * kHeight) << method;
    }
}

// Converting there and back leaves the rounding of velocities to millimetres a second.
TEST(ProfileSea, TheCoordinateSystemOfTheVelocitiesMakesNoDifference) {
    for (const int method : {1, 4}) {
        const Result beam = process(fourBeams(), {method, OV_VELOCITY_BEAM});
        for (const int mode : {OV_VELOCITY_ENU, OV_VELOCITY_XYZ}) {
            const Result other = process(fourBeams(), {method, mode});
            EXPECT_NEAR(other.height, beam.height, 0.002) << method << ' ' << mode;
            EXPECT_NEAR(other.direction, beam.direction, 0.2) << method << ' ' << mode;
            EXPECT_NEAR(other.spread, beam.spread, 0.2) << method << ' ' << mode;
        }
    }
}

// A quarter of a second is 11 degrees of phase at the peak: undeclared it looks like spread, and with the wrong sign
// twice as much.
TEST(ProfileSea, TheDeclaredDelayOfTrackAndPressureIsTakenOut) {
    const Way way{2, OV_VELOCITY_BEAM};
    const double declared = process(fourBeams(), way).spread;
    const double undeclared = process(fourBeams(), way, 0).spread;
    const double reversed = process(fourBeams(), way, -kTrackDelay).spread;
    EXPECT_GT(undeclared, declared + 1.0);
    EXPECT_GT(reversed, undeclared + 3.0);
}

} // namespace
