// Getters with one pointer a field, for hosts that cannot pass structures.
#include <cstring>
#include <limits>

#include "exports/current_record.hpp"
#include "orvikbase/orvikbase.h"

namespace {

// Copies a field, an array included, to the host unless it does not want it. The field is named and not referred to:
// in a packed structure it may be misaligned.
template <class Struct, class Field, class Value>
void give(const Struct &from, Field Struct::*field, Value *to) {
    static_assert(sizeof(Field) % sizeof(Value) == 0);
    if (to != nullptr) {
        std::memcpy(to, &(from.*field), sizeof(Field));
    }
}

} // namespace

extern "C" {

int32_t OVGetWaveParLV(float *waveParameters, float *instrumentDepth, int32_t *astInitialBadCount,
                       int32_t *astSpikeCount, int32_t *qualityFlags, int32_t *spectrumSource,
                       float *astLevel, float *astLevelEven, float *aliasingFrequency,
                       float *checkedHeight, float *checkedMeanPeriod, float *cellVerticalRange,
                       float *energyPeriod, int32_t *selectedCell) {
    OVWaveParameterSet set{};
    const int32_t status = OVGetWavePar(&set);
    if (status != 0) {
        return status;
    }
    give(set, &OVWaveParameterSet::waveParameters, waveParameters);
    give(set, &OVWaveParameterSet::instrumentDepth, instrumentDepth);
    give(set, &OVWaveParameterSet::astInitialBadCount, astInitialBadCount);
    give(set, &OVWaveParameterSet::astSpikeCount, astSpikeCount);
    give(set, &OVWaveParameterSet::qualityFlags, qualityFlags);
    give(set, &OVWaveParameterSet::spectrumSource, spectrumSource);
    give(set, &OVWaveParameterSet::astLevel, astLevel);
    give(set, &OVWaveParameterSet::astLevelEven, astLevelEven);
    give(set, &OVWaveParameterSet::aliasingFrequency, aliasingFrequency);
    give(set, &OVWaveParameterSet::checkedHeight, checkedHeight);
    give(set, &OVWaveParameterSet::checkedMeanPeriod, checkedMeanPeriod);
    give(set, &OVWaveParameterSet::cellVerticalRange, cellVerticalRange);
    give(set, &OVWaveParameterSet::energyPeriod, energyPeriod);
    give(set, &OVWaveParameterSet::selectedCell, selectedCell);
    return 0;
}

int32_t OVGetWaveSpectrumLV(uint8_t *spectrumKind, int32_t *count, int32_t *fineCount,
                            float *energySpectrum, uint32_t *binInfo, float *secondSpectrum,
                            float *fineSpectrum, float *direction, float *spread, float *coefP,
                            float *coefQ, float *coefR, float *coefS, float *bandValue) {
    OVFourierCoefficientSpectra block{};
    if (binInfo != nullptr) {
        std::memcpy(&block.binInfo, binInfo,
                    sizeof block.binInfo); // places of unused beams stay the host's
    }
    const int32_t status = OVGetWaveSpectrum(&block);
    if (status != 0) {
        return status;
    }
    give(block, &OVFourierCoefficientSpectra::spectrumKind, spectrumKind);
    give(block, &OVFourierCoefficientSpectra::count, count);
    give(block, &OVFourierCoefficientSpectra::fineCount, fineCount);
    give(block, &OVFourierCoefficientSpectra::energySpectrum, energySpectrum);
    give(block, &OVFourierCoefficientSpectra::binInfo, binInfo);
    give(block, &OVFourierCoefficientSpectra::secondSpectrum, secondSpectrum);
    give(block, &OVFourierCoefficientSpectra::fineSpectrum, fineSpectrum);
    give(block, &OVFourierCoefficientSpectra::direction, direction);
    give(block, &OVFourierCoefficientSpectra::spread, spread);
    give(block, &OVFourierCoefficientSpectra::coefP, coefP);
    give(block, &OVFourierCoefficientSpectra::coefQ, coefQ);
    give(block, &OVFourierCoefficientSpectra::coefR, coefR);
    give(block, &OVFourierCoefficientSpectra::coefS, coefS);
    give(block, &OVFourierCoefficientSpectra::bandValue, bandValue);
    return 0;
}

int32_t OVGetBandEstLV(float *bandHm0, float *bandTm02, float *bandZero, float *bandPeakDirection,
                       float *bandMeanDirection, float *bandPeakSpread, uint32_t *bandMeanSpread,
                       uint16_t *bandStatus) {
    if (bandHm0 == nullptr || bandTm02 == nullptr || bandZero == nullptr ||
        bandPeakDirection == nullptr || bandMeanDirection == nullptr || bandPeakSpread == nullptr ||
        bandMeanSpread == nullptr || bandStatus == nullptr || ov::currentRecord == nullptr) {
        return ov::kNullArgument;
    }
    OVBandEstimate band{};
    band.fHigh = std::numeric_limits<float>::max();
    const int32_t status = OVGetBandEst(&band);
    give(band, &OVBandEstimate::bandHm0, bandHm0);
    give(band, &OVBandEstimate::bandTm02, bandTm02);
    give(band, &OVBandEstimate::bandZero, bandZero);
    give(band, &OVBandEstimate::bandPeakDirection, bandPeakDirection);
    give(band, &OVBandEstimate::bandMeanDirection, bandMeanDirection);
    give(band, &OVBandEstimate::bandPeakSpread, bandPeakSpread);
    give(band, &OVBandEstimate::bandMeanSpread, bandMeanSpread);
    give(band, &OVBandEstimate::bandStatus, bandStatus);
    return status;
}

} // extern "C"
