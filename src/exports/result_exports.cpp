#include "exports/current_record.hpp"
#include "orvikbase/orvikbase.h"
#include "output/band_estimates.hpp"
#include "output/results.hpp"

extern "C" {

int32_t OVGetWavePar_ptr(OVRecord *record, OVWaveParameterSet *parameters) {
    if (record == nullptr || parameters == nullptr) {
        return ov::kNullArgument;
    }
    ov::getWaveParameters(*record, *parameters);
    return 0;
}

int32_t OVGetWavePar(OVWaveParameterSet *parameters) {
    return OVGetWavePar_ptr(ov::currentRecord, parameters);
}

int32_t OVGetWaveSpectrum_ptr(OVRecord *record, OVFourierCoefficientSpectra *spectra) {
    if (record == nullptr || spectra == nullptr) {
        return ov::kNullArgument;
    }
    ov::getWaveSpectrum(*record, *spectra);
    return 0;
}

int32_t OVGetWaveSpectrum(OVFourierCoefficientSpectra *spectra) {
    return OVGetWaveSpectrum_ptr(ov::currentRecord, spectra);
}

int32_t OVGetEnergySpec_ptr(OVRecord *record, float **spectrum, int32_t *count) {
    if (record == nullptr) {
        return ov::kNullArgument;
    }
    if (spectrum != nullptr) {
        *spectrum = record->spectraUsed;
    }
    if (count != nullptr) {
        *count = record->nFrequencies;
    }
    return 0;
}

int32_t OVGetEnergySpec(float **spectrum, int32_t *count) {
    return OVGetEnergySpec_ptr(ov::currentRecord, spectrum, count);
}

int32_t OVGetEnergySpecStruct_ptr(OVRecord *record, OVEnergySpectrumBlock *block) {
    if (record == nullptr || block == nullptr) {
        return ov::kNullArgument;
    }
    ov::getEnergySpectrum(*record, *block);
    return 0;
}

int32_t OVGetEnergySpecStruct(OVEnergySpectrumBlock *block) {
    return OVGetEnergySpecStruct_ptr(ov::currentRecord, block);
}

int32_t OVGetScaledEnergySpec_ptr(OVRecord *record, OVScaledEnergySpectrum *spectrum) {
    if (record == nullptr || spectrum == nullptr) {
        return ov::kNullArgument;
    }
    ov::getScaledEnergySpectrum(*record, *spectrum);
    return 0;
}

int32_t OVGetScaledEnergySpec(OVScaledEnergySpectrum *spectrum) {
    return OVGetScaledEnergySpec_ptr(ov::currentRecord, spectrum);
}

int32_t OVGetScaledEnergySpecAllType_ptr(OVRecord *record, int32_t kind,
                                         OVScaledEnergySpectrum *spectrum) {
    if (record == nullptr || spectrum == nullptr) {
        return ov::kNullArgument;
    }
    ov::getScaledSpectrumOfKind(*record, kind, *spectrum);
    return 0;
}

int32_t OVGetScaledEnergySpecAllType(int32_t kind, OVScaledEnergySpectrum *spectrum) {
    return OVGetScaledEnergySpecAllType_ptr(ov::currentRecord, kind, spectrum);
}

int32_t OVGetBandEst_ptr(OVRecord *record, OVBandEstimate *band) {
    if (record == nullptr || band == nullptr) {
        return ov::kNullArgument;
    }
    return ov::estimateBand(*record, *band) ? 0 : 1;
}

int32_t OVGetBandEst(OVBandEstimate *band) { return OVGetBandEst_ptr(ov::currentRecord, band); }

int32_t VELTAGetMeanBurstCurrent_ptr(OVRecord *record, int32_t selector,
                                     OVMeanCurrentQuery *query) {
    if (record == nullptr || query == nullptr) {
        return ov::kNullArgument;
    }
    float values[3];
    if (ov::getMeanCurrent(*record, selector, values)) {
        query->valueA = values[0];
        query->valueB = values[1];
        query->valueC = values[2];
    }
    return 0;
}

int32_t VELTAGetMeanBurstCurrent(int32_t selector, OVMeanCurrentQuery *query) {
    return VELTAGetMeanBurstCurrent_ptr(ov::currentRecord, selector, query);
}

int32_t OVGetMeanBurstCurrent_ptr(OVRecord *record, OVMeanCurrentQuery *query) {
    if (query == nullptr) {
        return ov::kNullArgument;
    }
    return VELTAGetMeanBurstCurrent_ptr(record, query->selector, query);
}

int32_t OVGetMeanBurstCurrent(OVMeanCurrentQuery *query) {
    return OVGetMeanBurstCurrent_ptr(ov::currentRecord, query);
}

int32_t OVGetMeanBurstCurrentLV(int32_t selector, float *valueA, float *valueB, float *valueC) {
    if (valueA == nullptr || valueB == nullptr || valueC == nullptr) {
        return ov::kNullArgument;
    }
    OVMeanCurrentQuery query{selector, *valueA, *valueB, *valueC};
    const int32_t status = OVGetMeanBurstCurrent(&query);
    *valueA = query.valueA;
    *valueB = query.valueB;
    *valueC = query.valueC;
    return status;
}

} // extern "C"
