#include "config/processing_parameters.hpp"

#include <algorithm>
#include <cstdint>

#include "frame/checked_convert.hpp"
#include "frame/constants.hpp"

namespace ov {
namespace {

constexpr std::int32_t kDefaultBandWidth = 32;
constexpr std::uint32_t kMaxBandWidth = 512;

void copyParameters(WaveVariables &rec, const OVProcessingParameters &params) {
    rec.processingMethod = params.processingMethod;
    rec.freqMin = static_cast<double>(params.freqMin);
    rec.freqMax = static_cast<double>(params.freqMax);
    rec.fineFreqMin = static_cast<double>(params.fineFreqMin);
    rec.fineFreqMax = static_cast<double>(params.fineFreqMax);
    rec.freqStep = static_cast<double>(params.freqStep);
    rec.levelOffset = static_cast<double>(params.levelOffset);
    rec.headingOffset = static_cast<double>(params.headingOffset);
    rec.dirBandWidth = params.dirBandWidth;
    rec.specBandWidth = params.specBandWidth;
    rec.directionalInputMode = params.directionalInputMode;
    rec.estimateMask = params.estimateMask;
    const std::int32_t directions = params.nDirections; // by value: host memory may be misaligned
    rec.nDirections = std::min<std::int32_t>(directions, kMaxDir);
    rec.pressureOffset = static_cast<double>(params.pressureOffset);
    rec.reverseDirections = params.reverseDirections;
    rec.profileParamA = params.profileParamA;
    rec.profileParamB = params.profileParamB;
}

void applyDefaults(WaveVariables &rec) {
    if (rec.freqMax <= 0.0) {
        rec.freqMax = 1.0;
    }
    if (rec.fineFreqMax <= 0.0) {
        rec.fineFreqMax = 2.0;
    }
    if (rec.freqMin <= 0.0 || rec.freqMin >= 1.0) {
        rec.freqMin = 0.02;
    }
    if (rec.fineFreqMin <= 0.0 || rec.fineFreqMin >= 2.0) {
        rec.fineFreqMin = 0.02;
    }
    if (rec.freqStep <= 0.0 || rec.freqStep > 0.1) {
        rec.freqStep = 0.01;
    }
    for (std::int32_t *width : {&rec.dirBandWidth, &rec.specBandWidth}) {
        if (static_cast<std::uint32_t>(*width) - 1U > kMaxBandWidth - 1U) {
            *width = kDefaultBandWidth;
        }
    }
    if (rec.freqMin > rec.freqMax) {
        rec.freqMax = rec.freqMin + rec.freqStep;
    }
}

// Keeps the axes below the Nyquist frequency. The order matters: a lower limit above the upper one was raised before,
// and the clamp may bring the upper limit below it again; the axis is empty then. Rates above 2 Hz keep the 2 Hz
// limits: the main axis never goes beyond 0.99 Hz.
void clampToNyquist(WaveVariables &rec) {
    const auto clamp = [&rec](double mainFrom, double mainTo, double fineFrom, double fineTo) {
        if (rec.freqMax >= mainFrom) {
            rec.freqMax = mainTo;
        }
        if (rec.fineFreqMax >= fineFrom) {
            rec.fineFreqMax = fineTo;
        }
    };
    if (rec.samplingRate == 1) {
        clamp(0.5, 0.49, 1.0, 0.99);
    } else if (rec.samplingRate >= 2) {
        clamp(1.0, 0.99, 2.0, 1.99);
    } else if (rec.samplingRate == 0) {
        clamp(0.375, 0.375, 0.75, 0.75);
    }
    if (rec.instrumentType == kProfileInstrument) {
        rec.fineFreqMax = rec.freqMax; // its surface track has the sample rate
    }
}

// Bins from `low` to `high`; more than `capacity` cut the axis and rewrite `high`.
std::int32_t binCount(double low, double &high, double step, std::int32_t capacity) {
    const std::int64_t count = std::int64_t{truncateToInt((high - low) / step)} + 1;
    if (count > capacity) {
        high = step * (capacity - 1) + low;
        return capacity;
    }
    return static_cast<std::int32_t>(count);
}

void buildAxes(WaveVariables &rec) {
    rec.nFrequencies = binCount(rec.freqMin, rec.freqMax, rec.freqStep, kMaxFreq);
    rec.nFrequenciesFine = binCount(rec.fineFreqMin, rec.fineFreqMax, rec.freqStep, kMaxFreqFine);
    for (int i = 0; i < fineBinCount(rec); ++i) {
        rec.fineFreqAxis[i] = static_cast<float>(i * rec.freqStep + rec.fineFreqMin);
    }
    for (int i = 0; i < mainBinCount(rec); ++i) {
        rec.frequencies[i] = static_cast<float>(i * rec.freqStep + rec.freqMin);
    }
}

// Method 4 needs the surface track among its estimates; without it, it is method 3 with three beams.
void settleMethod(WaveVariables &rec) {
    const std::int32_t least = rec.instrumentType == kProfileInstrument ? 7 : 8;
    if (rec.processingMethod == 4 && rec.estimateMask < least) {
        rec.processingMethod = 3;
        rec.estimateMask = kMaskBeam1 | kMaskBeam2 | kMaskBeam3;
    }
}

void writeBack(const WaveVariables &rec, OVProcessingParameters &params) {
    params.processingMethod = rec.processingMethod;
    params.freqMin = static_cast<float>(rec.freqMin);
    params.freqMax = static_cast<float>(rec.freqMax);
    params.fineFreqMin = static_cast<float>(rec.fineFreqMin);
    params.fineFreqMax = static_cast<float>(rec.fineFreqMax);
    params.freqStep = static_cast<float>(rec.freqStep);
    params.levelOffset = static_cast<float>(rec.levelOffset);
    params.headingOffset = static_cast<float>(rec.headingOffset);
    params.dirBandWidth = rec.dirBandWidth;
    params.specBandWidth = rec.specBandWidth;
    params.directionalInputMode = rec.directionalInputMode;
    params.estimateMask = rec.estimateMask;
    params.nDirections = rec.nDirections;
    params.pressureOffset = static_cast<float>(rec.pressureOffset);
    params.reverseDirections = rec.reverseDirections;
    params.profileParamA = rec.profileParamA;
    params.profileParamB = rec.profileParamB;
}

} // namespace

void setProcessingParameters(WaveVariables &rec, OVProcessingParameters &params) {
    copyParameters(rec, params);
    applyDefaults(rec);
    clampToNyquist(rec);
    buildAxes(rec);
    settleMethod(rec);
    rec.configuredInputMode = rec.directionalInputMode;
    rec.configuredEstimateMask = rec.estimateMask;
    writeBack(rec, params);
}

} // namespace ov
