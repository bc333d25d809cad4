// A burst of a directional wind sea made with integers: whatever compiles it, the bytes are the same, so that any
// difference in the results is the library's.
//
// Fifteen long-crested waves run towards the north-east (compass 28 to 74 degrees) over 13 m of water, significant
// height 1.6 m. The instrument stands 1 m above the bed with its head 12 m below the surface; its cells lie 8.5 m
// along beams of 25 degrees slant. Sines are parabolas, good to 6 % of the amplitude; every sensor has its own instant.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <vector>

#include "orvikbase/orvikbase.h"

namespace orvik::test {

struct SyntheticChoice {
    int method = 4;
    int instrumentType = 3;
    int nSamples = 2048;
    std::uint32_t seed = 1;
    bool tilted =
        false; // heading, pitch and roll that are not zero (the waves stay those of a level instrument)
    bool faulty = false; // missing samples, a pressure spike and lost surface-track elements
};

struct SyntheticBurst {
    OVInstrumentConfig config{};
    OVProcessingParameters parameters{};
    OVWaveHeader header{};
    std::vector<OVWaveSample> samples;
};

namespace detail {

// One long-crested wave. The gains are those of linear theory for the depths above, in thousandths.
struct WaveComponent {
    int periodMs;
    int lengthCm;
    int amplitudeMm;
    int east, north, hypotenuse; // direction of travel: (east, north) / hypotenuse
    int pressureGain;            // head pressure over elevation
    int horizontalGain;          // velocity at the cell over elevation [1/s]
    int verticalGain;
};

// clang-format off
inline constexpr std::array<WaveComponent, 15> kWaves{{
    {12700, 13564,  82, 24,  7, 25, 843, 838, 320},
    {11300, 11886, 148,  4,  3,  5, 804, 829, 357},
    {10400, 10794, 183, 15,  8, 17, 770, 822, 384},
    { 9650,  9873, 200, 12,  5, 13, 736, 815, 410},
    { 9100,  9190, 204, 20, 21, 29, 705, 808, 431},
    { 8600,  8563, 201,  4,  3,  5, 673, 800, 451},
    { 8050,  7865, 191, 15,  8, 17, 631, 791, 475},
    { 7500,  7157, 176,  3,  4,  5, 582, 778, 501},
    { 6900,  6371, 155, 12,  5, 13, 518, 762, 530},
    { 6300,  5570, 132, 20, 21, 29, 441, 740, 557},
    { 5700,  4756, 107, 24,  7, 25, 351, 710, 581},
    { 5150,  4003,  86,  4,  3,  5, 259, 673, 591},
    { 4600,  3260,  66,  8, 15, 17, 165, 621, 579},
    { 4050,  2552,  49, 15,  8, 17,  84, 547, 532},
    { 3550,  1967,  36, 20, 21, 29,  33, 450, 446},
}};
// clang-format on

// Angles are 32 bits a turn, amplitudes carry 15 binary places.
inline constexpr std::int64_t kOne = 32768;
inline constexpr std::int64_t kTurn = std::int64_t{1} << 32;
inline constexpr std::uint32_t kQuarterTurn = 1U << 30;
inline constexpr std::int64_t kSinSlant = 13848;
inline constexpr std::int64_t kCosSlant = 29698;
// Beams at 0, 120 and 240 degrees from X (north) towards Y (west).
inline constexpr std::array<std::int64_t, 3> kBeamEast{0, -28378, 28378};
inline constexpr std::array<std::int64_t, 3> kBeamNorth{32768, -16384, -16384};
inline constexpr std::int64_t kCellOffsetCm = 359; // horizontally from the head
inline constexpr std::int64_t kHeadDepthMm = 12000;

// Parabolic arc in place of a sine, -kOne to kOne.
inline std::int64_t arc(std::uint32_t phase) {
    const std::int64_t position = static_cast<std::int32_t>(phase) / 65536;
    return position * (kOne - (position < 0 ? -position : position)) / 8192;
}

class NoiseSource {
public:
    explicit NoiseSource(std::uint32_t seed) : state_(seed * 2654435761U + 12345U) {}
    std::uint32_t bits() {
        state_ = state_ * 1664525U + 1013904223U;
        return state_ >> 8;
    }
    // Between -range and range, in units of a millimetre (a second) / kOne.
    std::int64_t within(int range) {
        return (static_cast<std::int64_t>(bits() % 65536U) - kOne) * range;
    }

private:
    std::uint32_t state_;
};

// Elevation-like sums at one place and instant, in millimetres (a second) times kOne.
struct Motion {
    std::int64_t elevation = 0, pressure = 0, east = 0, north = 0, up = 0;
};

inline Motion motionAt(const std::array<std::uint32_t, kWaves.size()> &startPhase,
                       std::int64_t halfMs, std::int64_t eastCm, std::int64_t northCm) {
    Motion sum;
    for (std::size_t i = 0; i < kWaves.size(); ++i) {
        const WaveComponent &wave = kWaves[i];
        const std::int64_t alongCm = (eastCm * wave.east + northCm * wave.north) / wave.hypotenuse;
        const std::int64_t angle =
            alongCm * (kTurn / wave.lengthCm) - halfMs * (kTurn / (2 * wave.periodMs));
        const std::uint32_t phase = static_cast<std::uint32_t>(angle) + startPhase[i];
        const std::int64_t crest = wave.amplitudeMm * arc(phase + kQuarterTurn);
        const std::int64_t horizontal = crest * wave.horizontalGain / 1000;
        sum.elevation += crest;
        sum.pressure += crest * wave.pressureGain / 1000;
        sum.east += horizontal * wave.east / wave.hypotenuse;
        sum.north += horizontal * wave.north / wave.hypotenuse;
        sum.up += wave.amplitudeMm * arc(phase) * wave.verticalGain / 1000;
    }
    return sum;
}

// The one step that leaves the integers: a single correctly rounded division and narrowing.
inline float metres(std::int64_t millimetres) {
    return static_cast<float>(static_cast<double>(millimetres) / (1000.0 * kOne));
}

inline OVInstrumentConfig makeConfig(const SyntheticChoice &choice) {
    OVInstrumentConfig config{};
    config.pingsPerSample = 60;
    config.samplingRate = 2;
    config.burstSamples = static_cast<std::uint32_t>(choice.nSamples);
    config.acousticFrequency = 1.0e6F;
    config.slantAngle = 25.0F;
    config.instrumentType = choice.instrumentType;
    config.attitudeMode = choice.method <= 2 ? OV_VELOCITY_ENU : OV_VELOCITY_BEAM;
    constexpr std::array<std::int16_t, 9> kMatrix{6461,  -3231, -3231, 0,   5596,
                                                  -5596, 1506,  1506,  1506};
    for (std::size_t i = 0; i < kMatrix.size(); ++i) {
        config.transformMatrix[i] = kMatrix[i];
    }
    config.cellSizeCounts = 100;
    return config;
}

inline OVProcessingParameters makeParameters(const SyntheticChoice &choice) {
    const bool withTrack = choice.method == 2 || choice.method == 4;
    OVProcessingParameters parameters{};
    parameters.processingMethod = choice.method;
    parameters.freqMin = 0.03F;
    parameters.freqMax = 0.49F;
    parameters.fineFreqMin = 0.03F;
    parameters.fineFreqMax = 0.99F;
    parameters.freqStep = 0.01F;
    parameters.levelOffset = 1.0F;
    parameters.dirBandWidth = 32;
    parameters.specBandWidth = 32;
    parameters.directionalInputMode = withTrack ? 2 : 0;
    parameters.estimateMask = withTrack ? 15 : 7;
    parameters.nDirections = OV_MAX_DIRECTIONS;
    return parameters;
}

inline OVWaveHeader makeHeader(const SyntheticChoice &choice) {
    OVWaveHeader header{};
    header.nSamples = static_cast<std::uint16_t>(choice.nSamples);
    header.pressureCounts = 371; // 8.5 m along the beam
    if (choice.tilted) {
        header.heading = 137.5F;
        header.pitch = 2.5F;
        header.roll = -1.5F;
    }
    return header;
}

inline void addFaults(std::vector<OVWaveSample> &samples) {
    for (std::size_t i = 60; i < samples.size(); i += 97) {
        samples[i].valid = 0;
        samples[(i + 11) % samples.size()].astDistance1 = 0.0F;
    }
    const std::size_t middle = samples.size() / 2;
    samples[middle].pressure = 60.0F;
    samples[middle].astDistance2 = 3.0F;
}

} // namespace detail

inline SyntheticBurst makeSyntheticBurst(const SyntheticChoice &choice) {
    using namespace detail;
    constexpr std::int64_t kSampleHalfMs = 1000; // 2 Hz
    constexpr std::int64_t kPressureDelay = 340;
    constexpr std::int64_t kTrackDelay = 375;
    constexpr std::int64_t kBeamDelay = 125;
    NoiseSource noise(choice.seed);
    std::array<std::uint32_t, kWaves.size()> startPhase{};
    for (std::uint32_t &phase : startPhase) {
        phase = noise.bits() << 8;
    }

    SyntheticBurst burst{makeConfig(choice), makeParameters(choice), makeHeader(choice), {}};
    burst.samples.resize(static_cast<std::size_t>(choice.nSamples));
    std::int64_t at = 0;
    for (OVWaveSample &sample : burst.samples) {
        sample.valid = 1;
        sample.pressure =
            metres(kHeadDepthMm * kOne + motionAt(startPhase, at - kPressureDelay, 0, 0).pressure +
                   noise.within(2));
        sample.astDistance1 =
            metres(kHeadDepthMm * kOne + motionAt(startPhase, at - kTrackDelay, 0, 0).elevation +
                   noise.within(10));
        sample.astDistance2 =
            metres(kHeadDepthMm * kOne +
                   motionAt(startPhase, at + kSampleHalfMs / 2 - kTrackDelay, 0, 0).elevation +
                   noise.within(10));
        const Motion here = motionAt(startPhase, at, 0, 0);
        const std::array<std::int64_t, 3> components{here.east, here.north, here.up};
        for (std::size_t beam = 0; beam < 3; ++beam) {
            const Motion there = motionAt(startPhase, at - kBeamDelay * static_cast<int>(beam),
                                          kCellOffsetCm * kBeamEast[beam] / kOne,
                                          kCellOffsetCm * kBeamNorth[beam] / kOne);
            const std::int64_t outward =
                (there.east * kBeamEast[beam] + there.north * kBeamNorth[beam]) / kOne;
            const std::int64_t alongBeam = (outward * kSinSlant + there.up * kCosSlant) / kOne;
            const std::int64_t value = choice.method <= 2 ? components[beam] : alongBeam;
            sample.velocity[beam] = metres(value + noise.within(15));
            sample.amplitude[beam] = static_cast<std::uint16_t>(140U + noise.bits() % 20U);
        }
        at += kSampleHalfMs;
    }
    if (choice.faulty) {
        addFaults(burst.samples);
    }
    return burst;
}

// Configuration, parameters and header: everything before the first sample.
inline void openBurst(OVRecord *record, const SyntheticBurst &burst) {
    OVProcessingParameters parameters = burst.parameters;
    OVWaveHeader header = burst.header;
    OVSetInstrumentConfig_ptr(record, &burst.config);
    OVSetProcPar_ptr(record, &parameters);
    OVSetWaveHeader_ptr(record, &header);
}

inline void sendSamples(OVRecord *record, const SyntheticBurst &burst) {
    for (OVWaveSample sample : burst.samples) { // a copy: the library writes the validity byte
        OVSetWaveSample_ptr(record, &sample);
    }
}

} // namespace orvik::test
