#include "directional/directional_outputs.hpp"
#include "exports/current_record.hpp"
#include "orvikbase/orvikbase.h"

extern "C" {

int32_t OVSetFourierCoefficientSpectra_ptr(OVRecord *record, OVFourierCoefficientSpectra *block) {
    if (record == nullptr || block == nullptr) {
        return ov::kNullArgument;
    }
    ov::setFourierCoefficients(*record, *block);
    return 0;
}

int32_t OVSetFourierCoefficientSpectra(OVFourierCoefficientSpectra *block) {
    return OVSetFourierCoefficientSpectra_ptr(ov::currentRecord, block);
}

int32_t OVSetSpectraUsed_ptr(OVRecord *record, const OVSpectraUsedInput *input) {
    if (record == nullptr || input == nullptr) {
        return ov::kNullArgument;
    }
    ov::setSpectraUsed(*record, &input->values,
                       input->selector <= 1 ? input->count1 : input->count2);
    return 0;
}

int32_t OVSetSpectraUsed(const OVSpectraUsedInput *input) {
    return OVSetSpectraUsed_ptr(ov::currentRecord, input);
}

int32_t OVGetDirectionalSpectrum_ptr(OVRecord *record, OVFourierCoefficientSpectra *block) {
    if (record == nullptr || block == nullptr) {
        return ov::kNullArgument;
    }
    ov::getDirectionalSpectrum(*record, *block);
    return 0;
}

int32_t OVGetDirectionalSpectrum(OVFourierCoefficientSpectra *block) {
    return OVGetDirectionalSpectrum_ptr(ov::currentRecord, block);
}

int32_t OVGetFullDirSpectraWithEnergy_ptr(OVRecord *record, float *spectra) {
    if (record == nullptr || spectra == nullptr) {
        return ov::kNullArgument;
    }
    ov::getFullDirSpectraWithEnergy(*record, spectra);
    return 0;
}

int32_t OVGetFullDirSpectraWithEnergy(float *spectra) {
    return OVGetFullDirSpectraWithEnergy_ptr(ov::currentRecord, spectra);
}

int32_t OVGetFullWaveDirSpectrum_ptr(OVRecord *record, float *spectra) {
    if (record == nullptr || spectra == nullptr) {
        return ov::kNullArgument;
    }
    ov::getFullWaveDirSpectrum(*record, spectra);
    return 0;
}

int32_t OVGetFullWaveDirSpectrum(float *spectra) {
    return OVGetFullWaveDirSpectrum_ptr(ov::currentRecord, spectra);
}

} // extern "C"
