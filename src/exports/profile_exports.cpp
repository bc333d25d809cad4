#include "config/instrument_config.hpp"
#include "config/processing_parameters.hpp"
#include "config/wave_header.hpp"
#include "exports/current_record.hpp"
#include "input/profile_preprocess.hpp"
#include "input/profile_samples.hpp"
#include "orvikbase/orvikbase.h"

extern "C" {

int32_t VELTASetInstrumentConfig_ptr(OVRecord *record, const OVProfileInstrumentConfig *config) {
    if (record == nullptr || config == nullptr) {
        return ov::kNullArgument;
    }
    ov::setProfileInstrumentConfig(*record, *config);
    return 0;
}

int32_t VELTASetInstrumentConfig(const OVProfileInstrumentConfig *config) {
    return VELTASetInstrumentConfig_ptr(ov::currentRecord, config);
}

int32_t VELTASetProcPar_ptr(OVRecord *record, OVProfileProcessingParameters *params) {
    return OVSetProcPar_ptr(record, params);
}

int32_t VELTASetProcPar(OVProfileProcessingParameters *params) {
    return VELTASetProcPar_ptr(ov::currentRecord, params);
}

int32_t VELTASetWaveHeader_ptr(OVRecord *record, OVProfileWaveHeader *header) {
    if (record == nullptr || header == nullptr) {
        return ov::kNullArgument;
    }
    ov::setProfileWaveHeader(*record, *header);
    return 1; // unlike the other setters
}

int32_t VELTASetWaveHeader(OVProfileWaveHeader *header) {
    return VELTASetWaveHeader_ptr(ov::currentRecord, header);
}

int32_t VELTASetWaveSampleProfile_ptr(OVRecord *record, OVWaveSampleProfile *sample) {
    if (record == nullptr || sample == nullptr) {
        return ov::kNullArgument;
    }
    ov::storeProfileSample(*record, *sample);
    return 0;
}

int32_t VELTASetWaveSampleProfile(OVWaveSampleProfile *sample) {
    return VELTASetWaveSampleProfile_ptr(ov::currentRecord, sample);
}

int32_t VELTAPreProcess_ptr(OVRecord *record, uint32_t /*unused*/, OVPreProcessOutput *output) {
    if (record == nullptr || output == nullptr) {
        return ov::kNullArgument;
    }
    ov::preProcessProfile(*record, *output);
    return 0;
}

int32_t VELTAPreProcess(uint32_t unused, OVPreProcessOutput *output) {
    return VELTAPreProcess_ptr(ov::currentRecord, unused, output);
}

} // extern "C"
