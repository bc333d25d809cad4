/**
 * @file
 * Plain C++ structures for a burst and its results: natural alignment, readable names, values that start out sensible.
 *
 * Field for field they are the packed structures of ov_types.h; orvikbase.hpp hands them to the library. The frames and
 * senses of every number are in docs/conventions.md. Results that could not be computed are kMissing, and so is every
 * float of a result that nobody filled.
 */
#ifndef ORVIKBASE_ORVIKBASE_TYPES_HPP
#define ORVIKBASE_ORVIKBASE_TYPES_HPP

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <span>

#include "orvikbase/ov_types.h"

namespace orvikbase {

/// Bins of the main frequency axis.
inline constexpr std::size_t kMaxFrequencies = OV_MAX_FREQUENCIES;
/// Bins of the fine (surface-track) frequency axis.
inline constexpr std::size_t kMaxFineFrequencies = OV_MAX_FREQUENCIES_FINE;
/// Direction bins of a distribution.
inline constexpr std::size_t kMaxDirections = OV_MAX_DIRECTIONS;
/// Samples of one burst.
inline constexpr std::size_t kMaxSamples = OV_MAX_SAMPLES;
/// Elements of the double-rate surface track.
inline constexpr std::size_t kMaxTrackSamples = OV_MAX_TRACK_SAMPLES;
/// Velocity cells of a profile.
inline constexpr std::size_t kMaxCells = OV_MAX_CELLS;
/// Slanted beams of a profile instrument.
inline constexpr std::size_t kMaxBeams = OV_MAX_BEAMS;

/** What stands for a result that could not be computed. */
inline constexpr float kMissing = OV_MISSING;

/** True for kMissing, and for no number, which marks a missing WaveParameters::checkedHeight. */
[[nodiscard]] constexpr bool isMissing(float value) noexcept {
    return value == kMissing || value != value;
}

// ---- The instrument ------------------------------------------------------------------------------------------------

/** Axes of the velocities that the host hands over. */
enum class VelocitySystem : std::int32_t {
    enu = OV_VELOCITY_ENU,  ///< east, north, up: methods 1 and 2
    xyz = OV_VELOCITY_XYZ,  ///< along the instrument's axes
    beam = OV_VELOCITY_BEAM ///< along the beams, positive away from the head: methods 3 and 4
};

/** InstrumentConfig::flags: two estimates of the surface-track level. */
inline constexpr std::uint16_t kTwoTrackLevels = 32;

/** A point instrument. */
struct InstrumentConfig {
    std::uint32_t pingsPerSample = 1; ///< acoustic pings averaged into one sample
    std::int32_t samplingRate = 2;    ///< whole Hz; 0 means 0.75 Hz on a 400 kHz instrument
    std::uint32_t burstSamples = 0;   ///< samples per burst as configured; the header replaces it
    float acousticFrequency = 1.0e6F; ///< Hz
    float slantAngle = 25.0F;         ///< of the beams, degrees from the vertical
    std::int32_t instrumentType = 3;  ///< 1, 3 and 16 (profile) have rules of their own
    VelocitySystem velocitySystem = VelocitySystem::enu; ///< of the velocities in the samples
    /// Beam to XYZ, row by row, 4096 stands for 1; three beams use nine entries.
    std::array<std::int16_t, 16> beamToXyz{};
    std::int16_t cellSizeCounts =
        0;                   ///< along-beam cell extent in timing counts; methods 3 and 4 need it
    std::uint16_t flags = 0; ///< kTwoTrackLevels or 0
};

/** A profile instrument. */
struct ProfileInstrumentConfig {
    InstrumentConfig instrument{.instrumentType = 16}; ///< what it shares with point instruments
    /// Degrees from the X axis towards the Y axis, seen with Z up; all 0: the four quarters.
    std::array<float, kMaxBeams> beamAzimuths{};
    std::int16_t beamCount = 4;     ///< 3 or 4
    float ambiguityVelocity = 0.0F; ///< m/s
};

// ---- Processing choices --------------------------------------------------------------------------------------------

/** Where heights and directions come from; docs/conventions.md says which velocities each method takes. */
enum class Method : std::int32_t {
    pressureMoments = 1, ///< method 1: pressure; directional moments with horizontal velocity
    trackMoments = 2,    ///< method 2: surface track; directional moments with horizontal velocity
    likelihood = 3,      ///< method 3: velocity; maximum likelihood from the beams
    trackLikelihood = 4  ///< method 4: surface track; maximum likelihood from beams and track
};

/** The series whose spectrum heights and periods come from. Method 1 takes pressure whatever is chosen. */
enum class DirectionalInput : std::int32_t {
    pressure = 0,
    velocity = 1,
    trackIfValid =
        2, ///< methods 2 and 4 need this or trackOnly; without a track, velocity in deep water or pressure
    trackOnly = 3 ///< without a usable track every result is missing
};

/** Bits of ProcessingParameters::estimateMask: what enters a directional estimate. */
inline constexpr std::int32_t kMaskBeams = 7; ///< beams 1 to 3 (one bit each)
inline constexpr std::int32_t kMaskVertical =
    8; ///< the vertical beam; type 16: the fourth slanted one
inline constexpr std::int32_t kMaskProfileTrack = 16; ///< type 16: the surface track

/** Method, frequency axes and options. The library corrects what is out of range; see Record::setProcessing. */
struct ProcessingParameters {
    Method method = Method::pressureMoments; ///< what is computed from what
    float freqMin = 0.02F;                   ///< main axis, Hz
    float freqMax = 0.99F;      ///< main axis, Hz; lowered to what the sampling rate allows
    float fineFreqMin = 0.02F;  ///< fine axis (surface track), Hz
    float fineFreqMax = 1.99F;  ///< fine axis, Hz; lowered to what the sampling rate allows
    float freqStep = 0.01F;     ///< both axes, Hz, at most 0.1
    float levelOffset = 0.0F;   ///< height of the pressure sensor above the bed, m
    float headingOffset = 0.0F; ///< degrees added to every direction (magnetic declination, say)
    std::int32_t dirBandWidth =
        32; ///< band averaging of cross-spectra: max(1, value / 4) transform bins; 1 to 512
    std::int32_t specBandWidth = 32; ///< the same for the non-directional spectra
    DirectionalInput directionalInput = DirectionalInput::pressure; ///< where heights come from
    std::int32_t estimateMask = kMaskBeams; ///< methods 2 and 4: kMaskBeams | kMaskVertical
    std::int32_t directions = 90;           ///< direction bins, at most kMaxDirections
    float pressureOffset = 0.0F;            ///< added to every pressure, m of water
    bool comingFrom = true; ///< directions say where waves come from, else where they go
    float troughMargin =
        0.0F; ///< profile instruments: percent of the distance to the deepest trough
    bool trackIsSecondDistance =
        false; ///< profile instruments: the second distance is the surface track

    /** Frequency [Hz] of a bin of the main axis. */
    [[nodiscard]] constexpr double frequency(std::size_t bin) const noexcept {
        return double{freqMin} + static_cast<double>(bin) * double{freqStep};
    }
    /** Frequency [Hz] of a bin of the fine axis. */
    [[nodiscard]] constexpr double fineFrequency(std::size_t bin) const noexcept {
        return double{fineFreqMin} + static_cast<double>(bin) * double{freqStep};
    }
};

// ---- Bursts and samples --------------------------------------------------------------------------------------------

/** Opens a burst of a point instrument. */
struct BurstHeader {
    std::uint16_t samples = 0;           ///< to be sent, at most kMaxSamples
    std::int16_t cellPositionCounts = 0; ///< of the measurement cell, units of 0.02288818359375 m
    float heading = 0.0F;                ///< degrees
    float pitch = 0.0F;                  ///< degrees
    float roll = 0.0F;                   ///< degrees
    std::int16_t distanceCounts = 0;     ///< sensor distance in timing counts
    float depthOffset = 0.0F; ///< type 3 at 400 kHz only: added to pressure and distances, m
    float cellDepth = 0.0F;   ///< type 16 only: m
    float cellHeight = 0.0F;  ///< type 16 only: m
    std::uint32_t cells = 0;  ///< per profile, at most kMaxCells
    std::int16_t surfaceTimeOffset =
        0;               ///< type 16: delay of track and pressure after velocity, 0.1 ms
    float valueA = 0.0F; ///< kept in the record, not used
    float valueB = 0.0F; ///< not used
    float valueC = 0.0F; ///< kept in the record, not used
    std::array<std::uint16_t, 3> words{}; ///< kept in the record, not used
    std::uint8_t flag = 0;                ///< kept in the record, not used
};

/** Opens a burst of a profile instrument. */
struct ProfileBurstHeader {
    std::uint16_t samples = 0;          ///< to be sent, at most kMaxSamples
    float heading = 0.0F;               ///< degrees
    float pitch = 0.0F;                 ///< degrees
    float roll = 0.0F;                  ///< degrees
    float cellSize = 0.0F;              ///< vertical, m; the library turns it along the beams
    float blanking = 0.0F;              ///< vertical, m; the library turns it along the beams
    std::uint32_t cells = 0;            ///< per profile, at most kMaxCells
    std::int16_t surfaceTimeOffset = 0; ///< delay of track and pressure after velocity, 0.1 ms
};

/** One sample of a point instrument. */
struct Sample {
    bool valid = true;      ///< a missing one repeats the one before it
    float pressure = 0.0F;  ///< m of water (dbar), relative to the atmosphere
    float distance1 = 0.0F; ///< first surface-track distance of the interval, m; 0: no echo
    std::array<float, 3> velocity{}; ///< m/s, in the configured VelocitySystem
    float distance2 = 0.0F;          ///< second surface-track distance, m; 0: no echo
    std::array<std::uint16_t, 4>
        amplitude{}; ///< echo strength, counts; 17 or less raises weakAmplitude
};

/** One sample with two extra channels, which the record keeps. */
struct SuvSample {
    Sample point{};        ///< what every instrument measures
    float channel1 = 0.0F; ///< first extra channel
    float channel2 = 0.0F; ///< second extra channel
};

/**
 * One sample of a profile instrument, 4 KB. Its cells are kept as the library takes them, so that they are copied once:
 * a host fills one such object again and again, or has one a sample.
 */
class ProfileSample {
public:
    bool valid = true;      ///< a missing one repeats the one before it
    float pressure = 0.0F;  ///< m of water (dbar), relative to the atmosphere
    float distance1 = 0.0F; ///< m
    float distance2 = 0.0F; ///< m
    float heading = 0.0F;   ///< degrees
    float pitch = 0.0F;     ///< degrees
    float roll = 0.0F;      ///< degrees

    /**
     * What beam `beam` (below kMaxBeams) saw, from the cell next to the head outwards: velocity in mm/s, positive away
     * from the head, echo strength in counts and correlation in percent. Takes as many cells as all three spans have,
     * at most kMaxCells; those behind them keep what they had, 0 at first. The library reads as many as the header says.
     */
    void setBeam(std::size_t beam, std::span<const std::int16_t> velocity,
                 std::span<const std::uint8_t> amplitude,
                 std::span<const std::uint8_t> correlation) noexcept {
        const std::size_t cells = std::min(std::min(velocity.size(), amplitude.size()),
                                           std::min(correlation.size(), kMaxCells));
        if (cells == 0) {
            return;
        }
        std::memcpy(&packed_.profileVelocity[beam], velocity.data(), cells * sizeof velocity[0]);
        std::memcpy(&packed_.profileAmplitude[beam], amplitude.data(), cells);
        std::memcpy(&packed_.profileCorrelation[beam], correlation.data(), cells);
    }

    /** The sample as the C interface takes it. Its calls write into it; the next packed() makes that good. */
    [[nodiscard]] OVWaveSampleProfile *packed() noexcept {
        packed_.valid = valid ? 1 : 0;
        packed_.pressure = pressure;
        packed_.astDistance1 = distance1;
        packed_.astDistance2 = distance2;
        packed_.attitude[0] = heading;
        packed_.attitude[1] = pitch;
        packed_.attitude[2] = roll;
        return &packed_;
    }

private:
    OVWaveSampleProfile packed_{};
};

/** How pre-processing treats the surface track. */
struct TrackOptions {
    bool useWindow =
        false; ///< drop distances outside the window; point instruments keep it for later bursts
    float windowBelow = 0.0F;  ///< below the instrument depth, m
    float windowAbove = 0.0F;  ///< above the instrument depth, m
    bool skipCleaning = false; ///< leave the surface track as it is
};

/** What pre-processing made of one sample; see CleanedBurst. */
struct CleanedRow {
    std::array<float, 3> attitude{};         ///< profile instruments: heading, roll, pitch, degrees
    float track = 0.0F;                      ///< cleaned surface track, m; method 1: pressure
    float pressure = 0.0F;                   ///< cleaned pressure with its mean, m of water
    std::array<float, 4> velocity{};         ///< profile instruments: in the chosen cell, m/s
    std::array<std::uint8_t, 4> amplitude{}; ///< profile instruments: counts
    std::array<std::uint8_t, 4> correlation{}; ///< profile instruments: percent
};

// ---- Results -------------------------------------------------------------------------------------------------------

/** Conditions of a burst, bits of WaveParameters::qualityFlags. docs/conventions.md says what to do about each. */
enum class QualityFlag : std::int32_t {
    shallow = OV_FLAG_SHALLOW,              ///< instrument less than 1 m below the surface
    noSignal = OV_FLAG_NO_SIGNAL,           ///< pressure does not vary
    weakAmplitude = OV_FLAG_WEAK_AMPLITUDE, ///< a beam's echo was 17 counts or less
    flatSpectrum = OV_FLAG_FLAT_SPECTRUM,   ///< the spectrum has no shape
    invalidParameters =
        OV_FLAG_INVALID_PARAMETERS,     ///< a wave parameter is impossible or not a number
    noResult = OV_FLAG_NO_RESULT,       ///< nothing was processed; stands alone
    trackRange = OV_FLAG_TRACK_RANGE,   ///< surface-track statistics out of range: not used
    aliasedPeak = OV_FLAG_ALIASED_PEAK, ///< the peak's waves are too short for the sensor spacing
    risingSpectrum = OV_FLAG_RISING_SPECTRUM, ///< the spectrum never decreases
    clearance = OV_FLAG_CLEARANCE,            ///< surface at the edge of the acoustic range
    noTrack = OV_FLAG_NO_TRACK, ///< no surface-track spectrum although the method wants one
    tilt = OV_FLAG_TILT         ///< tilt over 10 degrees
};

/** The elevation spectrum behind the wave parameters. */
enum class SpectrumSource : std::int32_t {
    pressure = OV_SOURCE_PRESSURE,
    velocity = OV_SOURCE_VELOCITY,
    surfaceTrack = OV_SOURCE_SURFACE_TRACK
};

/** The wave parameters of a burst. Heights in m, periods in s, angles in degrees. */
struct WaveParameters {
    float meanPeriod = kMissing;        ///< Tm02 = sqrt(m0 / m2)
    float peakPeriod = kMissing;        ///< Tp
    float peakDirection = kMissing;     ///< at the spectral peak, [0, 360)
    float peakSpread = kMissing;        ///< directional spread at the spectral peak
    float meanDirection = kMissing;     ///< energy-weighted, [0, 360]
    float resultantLength = kMissing;   ///< of the mean direction vector, 0 to 1
    float significantHeight = kMissing; ///< Hm0 = 4 sqrt(m0)
    float thirdHeight = kMissing;       ///< mean of the highest third (surface track)
    float thirdPeriod = kMissing;       ///< mean of the highest third
    float tenthHeight = kMissing; ///< mean of the highest tenth; 1.27 Hm0 without a surface track
    float tenthPeriod = kMissing; ///< mean of the highest tenth
    float maxHeight = kMissing;   ///< greatest; 1.67 Hm0 without a surface track
    float maxPeriod = kMissing;   ///< of the highest wave
    float crossingPeriod = kMissing;  ///< mean between zero up-crossings
    float instrumentDepth = kMissing; ///< mean depth of the pressure sensor, m
    std::int32_t trackBadCount = 0;   ///< surface-track elements out of range
    std::int32_t trackSpikeCount = 0; ///< surface-track spikes; without results: missing samples
    std::int32_t qualityFlags = OV_FLAG_NO_RESULT;            ///< QualityFlag bits; ask has()
    SpectrumSource spectrumSource = SpectrumSource::pressure; ///< where heights come from
    float trackLevel = kMissing;                              ///< mean surface-track distance, m
    float trackLevelEven = kMissing;    ///< the same of the first pings, with two estimates
    float aliasingFrequency = kMissing; ///< first frequency without direction, Hz
    float checkedHeight = kMissing; ///< Hm0 where the spectrum's shape is sound; ask isMissing()
    float checkedMeanPeriod = kMissing; ///< Tm02 where all parameters are valid
    float cellVerticalRange = kMissing; ///< height of the measurement cell above the head, m
    float energyPeriod = kMissing;      ///< Tm-10
    std::int32_t selectedCell = 0;      ///< profile instruments: cell used, counted from 1

    /** True when the burst has this condition. */
    [[nodiscard]] constexpr bool has(QualityFlag flag) const noexcept {
        return (qualityFlags & static_cast<std::int32_t>(flag)) != 0;
    }
};

/** First and second directional moments of a bin, means over the distribution; angles from east towards north. */
struct FourierCoefficients {
    float a1 = kMissing; ///< cos of the angle
    float b1 = kMissing; ///< sin of the angle
    float a2 = kMissing; ///< cos of twice the angle
    float b2 = kMissing; ///< sin of twice the angle
};

/** Mean direction and directional spread of a bin, degrees. */
struct DirectionAndSpread {
    float direction = kMissing; ///< clockwise from north
    float spread = kMissing;    ///< circular
};

/** The spectrum behind the wave parameters, copied. */
struct EnergySpectrum {
    std::int32_t count = 0;                      ///< bins of the main axis
    std::array<float, kMaxFrequencies> values{}; ///< m^2/Hz; only `count` of them mean anything
};

/** A spectrum in 16-bit values for telemetry; 0 throughout when there is no energy. */
struct ScaledSpectrum {
    std::uint32_t scaleMax = 0;                              ///< greatest energy * 10000
    std::array<std::uint16_t, kMaxFineFrequencies> values{}; ///< the greatest is 65535

    /** Energy of a bin [m^2/Hz], as far as 16 bits carry it. */
    [[nodiscard]] constexpr double energy(std::size_t bin) const noexcept {
        return static_cast<double>(scaleMax) * values[bin] / (10000.0 * 65535.0);
    }
};

/** The spectra that Record::scaledSpectrum can be asked for. */
enum class SpectrumKind : std::int32_t { pressure = 0, velocity = 1, inUse = 2, surfaceTrack = 3 };

/** Mean current of a burst by components, m/s. */
struct CurrentVector {
    float east = kMissing;  ///< towards the east
    float north = kMissing; ///< towards the north
    float up = kMissing;    ///< upwards
};

/** Mean current of a burst: speed in m/s and the direction it goes to in degrees. */
struct Current {
    float speed = kMissing;     ///< m/s
    float direction = kMissing; ///< where it goes, clockwise from north
};

/** Wave parameters over a band. */
struct BandEstimate {
    float lowFrequency = 0.0F;                                ///< Hz
    float highFrequency = 0.0F;                               ///< Hz
    float significantHeight = kMissing;                       ///< 4 sqrt(m0), m
    float meanPeriod = kMissing;                              ///< sqrt(m0 / m2), s
    float peakDirection = kMissing;                           ///< degrees
    float meanDirection = kMissing;                           ///< degrees
    float peakSpread = kMissing;                              ///< degrees
    float meanSpread = kMissing;                              ///< degrees
    SpectrumSource spectrumSource = SpectrumSource::pressure; ///< where heights come from
};

/** A value for every frequency and direction, 72,000 bytes: a row per frequency, of which `directions` values count. */
struct Distribution {
    std::array<std::array<float, kMaxDirections>, kMaxFrequencies>
        rows{}; ///< rows[frequency][direction]
};

} // namespace orvikbase

#endif // ORVIKBASE_ORVIKBASE_TYPES_HPP
