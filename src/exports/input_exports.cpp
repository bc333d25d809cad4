#include <cstring>

#include "exports/current_record.hpp"
#include "input/preprocess.hpp"
#include "input/samples.hpp"
#include "orvikbase/orvikbase.h"

extern "C" {

int32_t OVSetWaveSample_ptr(OVRecord *record, OVWaveSample *sample) {
    if (record == nullptr || sample == nullptr) {
        return ov::kNullArgument;
    }
    ov::storeSample(*record, *sample);
    return 0;
}

int32_t OVSetWaveSample(OVWaveSample *sample) {
    return OVSetWaveSample_ptr(ov::currentRecord, sample);
}

int32_t OVSetWaveSampleLV(int32_t valid, float pressure, float astDistance1,
                          const float *velocityAndAst2, const uint16_t *amplitude) {
    if (velocityAndAst2 == nullptr || amplitude == nullptr) {
        return ov::kNullArgument;
    }
    OVWaveSample sample{};
    sample.valid = valid != 0 ? 1 : 0;
    sample.pressure = pressure;
    sample.astDistance1 = astDistance1;
    std::memcpy(&sample.velocity, velocityAndAst2, sizeof sample.velocity);
    std::memcpy(&sample.astDistance2, velocityAndAst2 + 3, sizeof sample.astDistance2);
    std::memcpy(&sample.amplitude, amplitude, sizeof sample.amplitude);
    return OVSetWaveSample(&sample);
}

int32_t OVSetWaveSampleSUV_ptr(OVRecord *record, OVWaveSampleSUV *sample) {
    if (record == nullptr || sample == nullptr) {
        return ov::kNullArgument;
    }
    ov::storeSampleSuv(*record, *sample);
    return 0;
}

int32_t OVSetWaveSampleSUV(OVWaveSampleSUV *sample) {
    return OVSetWaveSampleSUV_ptr(ov::currentRecord, sample);
}

int32_t OVPreProcess_ptr(OVRecord *record, uint32_t /*unused*/, OVPreProcessOutput *output) {
    if (record == nullptr || output == nullptr) {
        return ov::kNullArgument;
    }
    ov::preProcess(*record, *output);
    return 0;
}

int32_t OVPreProcess(uint32_t unused, OVPreProcessOutput *output) {
    return OVPreProcess_ptr(ov::currentRecord, unused, output);
}

// The two flags that go out in the structure do not come back here.
int32_t OVPreProcessLV(uint32_t /*unused*/, float *astOut, float windowBelow, float windowAbove,
                       int32_t useWindow, int32_t /*astValidIn*/, int32_t skipAstCleaning,
                       int32_t /*doneIn*/) {
    if (ov::currentRecord == nullptr || astOut == nullptr) {
        return ov::kNullArgument;
    }
    ov::preProcessFlat(*ov::currentRecord,
                       {windowBelow, windowAbove, useWindow != 0, skipAstCleaning != 0}, astOut);
    return 0;
}

int32_t OVPreProcessSUV_ptr(OVRecord *record, uint32_t /*unused*/, OVPreProcessOutputSUV *output) {
    if (record == nullptr || output == nullptr) {
        return ov::kNullArgument;
    }
    ov::preProcessSuv(*record, *output);
    return 0;
}

int32_t OVPreProcessSUV(uint32_t unused, OVPreProcessOutputSUV *output) {
    return OVPreProcessSUV_ptr(ov::currentRecord, unused, output);
}

} // extern "C"
