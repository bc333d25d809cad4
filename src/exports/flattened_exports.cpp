// Getters with one pointer a field, for hosts that cannot pass structures.
#include <cstring>
#include <limits>

#include "exports/current_record.hpp"
#include "orvikbase/orvikbase.h"

namespace {

// Copies a field, an array included, to the host unless it does not want it.
template <class Field, class Value> void give(const Field &field, Value *to) {
    static_assert(sizeof(Field) % sizeof(Value) == 0);
    if (to != nullptr) {
        std::memcpy(to, &field, sizeof field);
    }
}

} // namespace

extern "C" {

int32_t OVGetWaveParLV(float *waveParameters, float *instrumentDepth, int32_t *astInitialBadCount,
                       int32_t *astSpikeCount, int32_t *qualityFlags, int32_t *spectrumSource, float *astLevel,
                       float *astLevelEven, float *aliasingFrequency, float *checkedHeight, float *checkedMeanPeriod,
                       float *cellVerticalRange, float *energyPeriod, int32_t *selectedCell) {
    OVWaveParameterSet set{};
    const int32_t status = OVGetWavePar(&set);
    if (status != 0) {
        return status;
    }
    give(set.waveParameters, waveParameters);
    give(set.instrumentDepth, instrumentDepth);
    give(set.astInitialBadCount, astInitialBadCount);
    give(set.astSpikeCount, astSpikeCount);
    give(set.qualityFlags, qualityFlags);
    give(set.spectrumSource, spectrumSource);
    give(set.astLevel, astLevel);
    give(set.astLevelEven, astLevelEven);
    give(set.aliasingFrequency, aliasingFrequency);
    give(set.checkedHeight, checkedHeight);
    give(set.checkedMeanPeriod, checkedMeanPeriod);
    give(set.cellVerticalRange, cellVerticalRange);
    give(set.energyPeriod, energyPeriod);
    give(set.selectedCell, selectedCell);
    return 0;
}

int32_t OVGetWaveSpectrumLV(uint8_t *spectrumKind, int32_t *count, int32_t *fineCount, float *energySpectrum,
                            uint32_t *binInfo, float *secondSpectrum, float *fineSpectrum, float *direction,
                            float *spread, float *coefP, float *coefQ, float *coefR, float *coefS,
                            float *bandValue) {
    OVFourierCoefficientSpectra block{};
    if (binInfo != nullptr) {
        std::memcpy(&block.binInfo, binInfo, sizeof block.binInfo); // places of unused beams stay the host's
    }
    const int32_t status = OVGetWaveSpectrum(&block);
    if (status != 0) {
        return status;
    }
    give(block.spectrumKind, spectrumKind);
    give(block.count, count);
    give(block.fineCount, fineCount);
    give(block.energySpectrum, energySpectrum);
    give(block.binInfo, binInfo);
    give(block.secondSpectrum, secondSpectrum);
    give(block.fineSpectrum, fineSpectrum);
    give(block.direction, direction);
    give(block.spread, spread);
    give(block.coefP, coefP);
    give(block.coefQ, coefQ);
    give(block.coefR, coefR);
    give(block.coefS, coefS);
    give(block.bandValue, bandValue);
    return 0;
}

int32_t OVGetBandEstLV(float *bandHm0, float *bandTm02, float *bandZero, float *bandPeakDirection,
                       float *bandMeanDirection, float *bandPeakSpread, uint32_t *bandMeanSpread,
                       uint16_t *bandStatus) {
    if (bandHm0 == nullptr || bandTm02 == nullptr || bandZero == nullptr || bandPeakDirection == nullptr ||
        bandMeanDirection == nullptr || bandPeakSpread == nullptr || bandMeanSpread == nullptr ||
        bandStatus == nullptr || ov::currentRecord == nullptr) {
        return ov::kNullArgument;
    }
    OVBandEstimate band{};
    band.fHigh = std::numeric_limits<float>::max();
    const int32_t status = OVGetBandEst(&band);
    give(band.bandHm0, bandHm0);
    give(band.bandTm02, bandTm02);
    give(band.bandZero, bandZero);
    give(band.bandPeakDirection, bandPeakDirection);
    give(band.bandMeanDirection, bandMeanDirection);
    give(band.bandPeakSpread, bandPeakSpread);
    give(band.bandMeanSpread, bandMeanSpread);
    give(band.bandStatus, bandStatus);
    return status;
}

} // extern "C"
