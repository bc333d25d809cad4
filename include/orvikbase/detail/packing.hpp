/**
 * @file
 * Between the plain structures of orvikbase_types.hpp and the packed ones of ov_types.h. For orvikbase.hpp alone: hosts
 * have no need of it. Fields of packed structures are reached by value or by bytes, since they may lie anywhere.
 */
#ifndef ORVIKBASE_DETAIL_PACKING_HPP
#define ORVIKBASE_DETAIL_PACKING_HPP

#include <algorithm>
#include <bit>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <span>

#include "orvikbase/orvikbase_types.hpp"

namespace orvikbase::detail {

/** A count from a record as a size, whatever it holds. */
[[nodiscard]] inline std::size_t bins(std::int32_t count, std::size_t capacity) noexcept {
    return std::min(static_cast<std::size_t>(std::max(count, std::int32_t{0})), capacity);
}

// ---- Configuration -------------------------------------------------------------------------------------------------

[[nodiscard]] inline OVInstrumentConfig packed(const InstrumentConfig &config) noexcept {
    OVInstrumentConfig packed;
    packed.pingsPerSample = config.pingsPerSample;
    packed.samplingRate = config.samplingRate;
    packed.burstSamples = config.burstSamples;
    packed.acousticFrequency = config.acousticFrequency;
    packed.slantAngle = config.slantAngle;
    packed.instrumentType = config.instrumentType;
    packed.attitudeMode = static_cast<std::int32_t>(config.velocitySystem);
    std::memcpy(&packed.transformMatrix, config.beamToXyz.data(), sizeof packed.transformMatrix);
    packed.cellSizeCounts = config.cellSizeCounts;
    packed.configFlags = config.flags;
    return packed;
}

[[nodiscard]] inline OVProfileInstrumentConfig
packed(const ProfileInstrumentConfig &config) noexcept {
    const OVInstrumentConfig common = packed(config.instrument);
    OVProfileInstrumentConfig packed;
    static_assert(offsetof(OVProfileInstrumentConfig, beamAzimuth) == sizeof common);
    std::memcpy(&packed, &common, sizeof common);
    std::memcpy(&packed.beamAzimuth, config.beamAzimuths.data(), sizeof packed.beamAzimuth);
    packed.beamCount = config.beamCount;
    packed.lagParameter = config.ambiguityVelocity;
    return packed;
}

[[nodiscard]] inline OVProcessingParameters
packed(const ProcessingParameters &parameters) noexcept {
    OVProcessingParameters packed;
    packed.processingMethod = static_cast<std::int32_t>(parameters.method);
    packed.freqMin = parameters.freqMin;
    packed.freqMax = parameters.freqMax;
    packed.fineFreqMin = parameters.fineFreqMin;
    packed.fineFreqMax = parameters.fineFreqMax;
    packed.freqStep = parameters.freqStep;
    packed.levelOffset = parameters.levelOffset;
    packed.headingOffset = parameters.headingOffset;
    packed.dirBandWidth = parameters.dirBandWidth;
    packed.specBandWidth = parameters.specBandWidth;
    packed.directionalInputMode = static_cast<std::int32_t>(parameters.directionalInput);
    packed.estimateMask = parameters.estimateMask;
    packed.nDirections = parameters.directions;
    packed.pressureOffset = parameters.pressureOffset;
    packed.reverseDirections = parameters.comingFrom ? 1 : 0;
    packed.profileParamA = parameters.troughMargin;
    packed.profileParamB = parameters.trackIsSecondDistance ? 1 : 0;
    return packed;
}

[[nodiscard]] inline ProcessingParameters unpacked(const OVProcessingParameters &packed) noexcept {
    ProcessingParameters parameters;
    parameters.method = static_cast<Method>(packed.processingMethod);
    parameters.freqMin = packed.freqMin;
    parameters.freqMax = packed.freqMax;
    parameters.fineFreqMin = packed.fineFreqMin;
    parameters.fineFreqMax = packed.fineFreqMax;
    parameters.freqStep = packed.freqStep;
    parameters.levelOffset = packed.levelOffset;
    parameters.headingOffset = packed.headingOffset;
    parameters.dirBandWidth = packed.dirBandWidth;
    parameters.specBandWidth = packed.specBandWidth;
    parameters.directionalInput = static_cast<DirectionalInput>(packed.directionalInputMode);
    parameters.estimateMask = packed.estimateMask;
    parameters.directions = packed.nDirections;
    parameters.pressureOffset = packed.pressureOffset;
    parameters.comingFrom = packed.reverseDirections != 0;
    parameters.troughMargin = packed.profileParamA;
    parameters.trackIsSecondDistance = packed.profileParamB != 0;
    return parameters;
}

[[nodiscard]] inline OVWaveHeader packed(const BurstHeader &header) noexcept {
    OVWaveHeader packed{};
    packed.nSamples = header.samples;
    packed.pressureCounts = header.cellPositionCounts;
    packed.headerValueA = header.valueA;
    packed.headerValueB = header.valueB;
    packed.heading = header.heading;
    packed.pitch = header.pitch;
    packed.roll = header.roll;
    packed.headerValueC = header.valueC;
    packed.distanceCounts = header.distanceCounts;
    std::memcpy(&packed.headerWords, header.words.data(), sizeof packed.headerWords);
    packed.headerFlag = header.flag;
    packed.depthOffset = header.depthOffset;
    packed.directDepth = header.cellDepth;
    packed.directHeight = header.cellHeight;
    packed.nCells = header.cells;
    packed.surfaceTimeOffset = header.surfaceTimeOffset;
    return packed;
}

[[nodiscard]] inline OVProfileWaveHeader packed(const ProfileBurstHeader &header) noexcept {
    OVProfileWaveHeader packed{};
    packed.nSamples = header.samples;
    packed.heading = header.heading;
    packed.pitch = header.pitch;
    packed.roll = header.roll;
    packed.directHeight = header.cellSize;
    packed.directDepth = header.blanking;
    packed.nCells = header.cells;
    packed.surfaceTimeOffset = header.surfaceTimeOffset;
    return packed;
}

// ---- Samples -------------------------------------------------------------------------------------------------------

[[nodiscard]] inline OVWaveSample packed(const Sample &sample) noexcept {
    OVWaveSample packed;
    packed.valid = sample.valid ? 1 : 0;
    packed.pressure = sample.pressure;
    packed.astDistance1 = sample.distance1;
    std::memcpy(&packed.velocity, sample.velocity.data(), sizeof packed.velocity);
    packed.astDistance2 = sample.distance2;
    std::memcpy(&packed.amplitude, sample.amplitude.data(), sizeof packed.amplitude);
    return packed;
}

[[nodiscard]] inline OVWaveSampleSUV packed(const SuvSample &sample) noexcept {
    OVWaveSampleSUV packed;
    packed.valid = sample.point.valid ? 1 : 0;
    packed.spare = 0.0F;
    packed.suvChannel1 = sample.channel1;
    packed.suvChannel2 = sample.channel2;
    packed.pressure = sample.point.pressure;
    packed.astDistance1 = sample.point.distance1;
    std::memcpy(&packed.velocity, sample.point.velocity.data(), sizeof packed.velocity);
    packed.astDistance2 = sample.point.distance2;
    std::memcpy(&packed.amplitude, sample.point.amplitude.data(), sizeof packed.amplitude);
    return packed;
}

// ---- Pre-processing ------------------------------------------------------------------------------------------------

/** The host's side of either output. Both flags are cleared, since the library does not always write the first. */
template <class Output> void prepare(Output &output, const TrackOptions &track) noexcept {
    output.windowBelow = track.windowBelow;
    output.windowAbove = track.windowAbove;
    output.useWindow = track.useWindow ? 1 : 0;
    output.astValidOut = 0;
    output.skipAstCleaning = track.skipCleaning ? 1 : 0;
    output.done = 0;
}

[[nodiscard]] inline CleanedRow unpacked(const OVPreProcessRow &packed) noexcept {
    static_assert(sizeof(CleanedRow) == sizeof(OVPreProcessRow));
    return std::bit_cast<CleanedRow>(packed);
}

// ---- Results: structures of equal layout, all but for the alignment --------------------------------------------------

[[nodiscard]] inline WaveParameters unpacked(const OVWaveParameterSet &packed) noexcept {
    return std::bit_cast<WaveParameters>(packed);
}

[[nodiscard]] inline EnergySpectrum unpacked(const OVEnergySpectrumBlock &packed) noexcept {
    return std::bit_cast<EnergySpectrum>(packed);
}

[[nodiscard]] inline ScaledSpectrum unpacked(const OVScaledEnergySpectrum &packed) noexcept {
    return std::bit_cast<ScaledSpectrum>(packed);
}

[[nodiscard]] inline BandEstimate unpacked(const OVBandEstimate &packed) noexcept {
    BandEstimate band;
    band.lowFrequency = packed.fLow;
    band.highFrequency = packed.fHigh;
    band.significantHeight = packed.bandHm0;
    band.meanPeriod = packed.bandTm02;
    band.peakDirection = packed.bandPeakDirection;
    band.meanDirection = packed.bandMeanDirection;
    band.peakSpread = packed.bandPeakSpread;
    band.meanSpread = packed.bandMeanSpread;
    band.spectrumSource = static_cast<SpectrumSource>(packed.bandSpectrumSource);
    return band;
}

// ---- Coefficients --------------------------------------------------------------------------------------------------

/** As the setter takes them: -b1, -a1, -a2, b2. A missing a1 or b1 keeps its sign, by which the library knows it. */
inline void packNegated(std::span<const FourierCoefficients> bins,
                        OVFourierCoefficientSpectra &block) noexcept {
    const std::size_t count = std::min(bins.size(), kMaxFrequencies);
    block.count = static_cast<std::int32_t>(count);
    for (std::size_t i = 0; i < count; ++i) {
        block.coefP[i] = isMissing(bins[i].b1) ? kMissing : -bins[i].b1;
        block.coefQ[i] = isMissing(bins[i].a1) ? kMissing : -bins[i].a1;
        block.coefR[i] = -bins[i].a2;
        block.coefS[i] = bins[i].b2;
    }
}

/** As the getter of directions takes them: a1, b1. */
inline void packFirstOrder(std::span<const FourierCoefficients> bins,
                           OVFourierCoefficientSpectra &block) noexcept {
    const std::size_t count = std::min(bins.size(), kMaxFrequencies);
    block.count = static_cast<std::int32_t>(count);
    for (std::size_t i = 0; i < count; ++i) {
        block.coefP[i] = bins[i].a1;
        block.coefQ[i] = bins[i].b1;
    }
}

inline void copyDirections(const OVFourierCoefficientSpectra &block, std::size_t count,
                           std::span<DirectionAndSpread> out) noexcept {
    for (std::size_t i = 0; i < std::min(count, out.size()); ++i) {
        out[i] = {block.direction[i], block.spread[i]};
    }
}

[[nodiscard]] inline OVSpectraUsedInput packed(std::span<const float> values) noexcept {
    OVSpectraUsedInput packed;
    const std::size_t count = std::min(values.size(), kMaxFineFrequencies);
    packed.selector = 0; // take count1
    packed.count1 = static_cast<std::int32_t>(count);
    packed.count2 = 0;
    if (count > 0) {
        std::memcpy(&packed.values, values.data(), count * sizeof(float));
    }
    return packed;
}

} // namespace orvikbase::detail

#endif // ORVIKBASE_DETAIL_PACKING_HPP
