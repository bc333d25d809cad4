#include <cstring>

#include "config/instrument_config.hpp"
#include "config/processing_parameters.hpp"
#include "config/wave_header.hpp"
#include "exports/current_record.hpp"
#include "orvikbase/orvikbase.h"

extern "C" {

int32_t OVSetInstrumentConfig_ptr(OVRecord *record, const OVInstrumentConfig *config) {
    if (record == nullptr || config == nullptr) {
        return ov::kNullArgument;
    }
    ov::setInstrumentConfig(*record, *config);
    return 0;
}

int32_t OVSetInstrumentConfig(const OVInstrumentConfig *config) {
    return OVSetInstrumentConfig_ptr(ov::currentRecord, config);
}

int32_t OVSetInstrumentConfigLV(uint32_t pingsPerSample, int32_t samplingRate,
                                uint32_t burstSamples, float acousticFrequency, float slantAngle,
                                int32_t instrumentType, int32_t attitudeMode, const int16_t *matrix,
                                uint16_t cellSizeCounts) {
    if (matrix == nullptr) {
        return ov::kNullArgument;
    }
    OVInstrumentConfig config{};
    config.pingsPerSample = pingsPerSample;
    config.samplingRate = samplingRate;
    config.burstSamples = burstSamples;
    config.acousticFrequency = acousticFrequency;
    config.slantAngle = slantAngle;
    config.instrumentType = instrumentType;
    config.attitudeMode = attitudeMode;
    std::memcpy(&config.transformMatrix, matrix, sizeof config.transformMatrix);
    config.cellSizeCounts = static_cast<int16_t>(cellSizeCounts);
    return OVSetInstrumentConfig(&config);
}

int32_t OVSetProcPar_ptr(OVRecord *record, OVProcessingParameters *params) {
    if (record == nullptr || params == nullptr) {
        return ov::kNullArgument;
    }
    ov::setProcessingParameters(*record, *params);
    return 0;
}

int32_t OVSetProcPar(OVProcessingParameters *params) {
    return OVSetProcPar_ptr(ov::currentRecord, params);
}

int32_t OVSetProcParLV(int32_t processingMethod, float freqMin, float freqMax, float fineFreqMin,
                       float fineFreqMax, float freqStep, float levelOffset, float headingOffset,
                       int32_t dirBandWidth, int32_t specBandWidth, int32_t directionalInputMode,
                       int32_t estimateMask, int32_t nDirections, float pressureOffset,
                       int32_t reverseDirection) {
    OVProcessingParameters params{};
    params.processingMethod = processingMethod;
    params.freqMin = freqMin;
    params.freqMax = freqMax;
    params.fineFreqMin = fineFreqMin;
    params.fineFreqMax = fineFreqMax;
    params.freqStep = freqStep;
    params.levelOffset = levelOffset;
    params.headingOffset = headingOffset;
    params.dirBandWidth = dirBandWidth;
    params.specBandWidth = specBandWidth;
    params.directionalInputMode = directionalInputMode;
    params.estimateMask = estimateMask;
    params.nDirections = nDirections;
    params.pressureOffset = pressureOffset;
    params.reverseDirections = reverseDirection != 0 ? 1 : 0;
    return OVSetProcPar(&params);
}

int32_t OVSetWaveHeader_ptr(OVRecord *record, OVWaveHeader *header) {
    if (record == nullptr || header == nullptr) {
        return ov::kNullArgument;
    }
    ov::setWaveHeader(*record, *header);
    return 1; // unlike the other setters
}

int32_t OVSetWaveHeader(OVWaveHeader *header) {
    return OVSetWaveHeader_ptr(ov::currentRecord, header);
}

int32_t OVSetWaveHeaderLV(uint16_t nSamples, int16_t pressureCounts, float headerValueA,
                          float headerValueB, float heading, float pitch, float roll,
                          float headerValueC, int16_t distanceCounts, const uint16_t *headerWords,
                          int32_t headerFlag) {
    if (headerWords == nullptr) {
        return ov::kNullArgument;
    }
    OVWaveHeader header{};
    header.nSamples = nSamples;
    header.pressureCounts = pressureCounts;
    header.headerValueA = headerValueA;
    header.headerValueB = headerValueB;
    header.heading = heading;
    header.pitch = pitch;
    header.roll = roll;
    header.headerValueC = headerValueC;
    header.distanceCounts = distanceCounts;
    std::memcpy(&header.headerWords, headerWords, sizeof header.headerWords);
    std::memcpy(&header.reserved, headerWords + 3, sizeof header.reserved);
    header.headerFlag = headerFlag != 0 ? 1 : 0;
    return OVSetWaveHeader(&header);
}

} // extern "C"
