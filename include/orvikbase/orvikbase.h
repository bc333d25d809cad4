/*
 * OrvikBase: directional wave processing of bursts from acoustic current meters. Public C interface.
 *
 * Every operation works on one wave-variables record. `X_ptr(record, ...)` takes the record; `X(...)` works on the
 * library's current record; `XLV(...)` takes a structure's fields one by one. Operations return 0, or -1 when the
 * record or a structure is null (nothing is touched then), unless stated otherwise.
 *
 * Order of calls for a burst: OVSetInstrumentConfig, OVSetProcPar, OVSetWaveHeader, OVSetWaveSample (once a sample),
 * OVPreProcess, OVProcess, then any getter. Configuration and parameters stay in force until set again.
 *
 * One record, one thread at a time; different records may be used at the same time through the `_ptr` forms. The forms
 * without `_ptr` share one current record. Nothing is allocated between OVSetWaveHeader and the last getter.
 */
#ifndef ORVIKBASE_ORVIKBASE_H
#define ORVIKBASE_ORVIKBASE_H

#include <stdbool.h>
#include <stdint.h>

#include "orvikbase/ov_types.h"

#if defined(_WIN32)
#if defined(ORVIKBASE_BUILD)
#define OV_API __declspec(dllexport)
#elif defined(ORVIKBASE_STATIC)
#define OV_API
#else
#define OV_API __declspec(dllimport)
#endif
#elif defined(__GNUC__)
#define OV_API __attribute__((visibility("default")))
#else
#define OV_API
#endif

#ifdef __cplusplus
extern "C" {
#endif

/* ---- Records and library identity ---------------------------------------------------------------------------- */

/** Allocate a zeroed record and make it current. Null (and no current record) when memory is short. */
OV_API OVRecord *OVAllocateVarPtr(void);

/** Release a record; null is allowed. Does not change the current record, even when that is the one released. */
OV_API void OVFreeVarPtr(OVRecord *record);

/** Make a record of the host's own current. It must be OV_RECORD_BYTES long, aligned for double, and zeroed. */
OV_API void VELTASetWaveVariablesPointer(OVRecord *record);

/** Size of a record in bytes. */
OV_API uint64_t VELTAGetWaveVariableNbytes(void);

/**
 * Copy the version text into `buffer`: exactly `length` characters, the rest of a longer buffer zeroed, no
 * terminating zero when `length` is 4 or less. A length of 0 or less writes nothing. Returns 0, -1 for a null buffer.
 */
OV_API int32_t OVGetOrvikBaseVer(char *buffer, int16_t length);

/* ---- Configuration ------------------------------------------------------------------------------------------- */

/** Describe the instrument. Nothing is validated; the structure is only read. */
OV_API int32_t OVSetInstrumentConfig_ptr(OVRecord *record, const OVInstrumentConfig *config);
OV_API int32_t OVSetInstrumentConfig(const OVInstrumentConfig *config);
/** As OVSetInstrumentConfig, with `matrix` of 16 entries and no option bits. */
OV_API int32_t OVSetInstrumentConfigLV(uint32_t pingsPerSample, int32_t samplingRate, uint32_t burstSamples,
                                       float acousticFrequency, float slantAngle, int32_t instrumentType,
                                       int32_t attitudeMode, const int16_t *matrix, uint16_t cellSizeCounts);

/**
 * Choose method, frequency axes and options; call after the configuration, whose sampling rate limits them. Values out
 * of range are replaced by defaults or clamped, and the values in use are written back into `params`.
 */
OV_API int32_t OVSetProcPar_ptr(OVRecord *record, OVProcessingParameters *params);
OV_API int32_t OVSetProcPar(OVProcessingParameters *params);
/** As OVSetProcPar; the corrected values are not reported. */
OV_API int32_t OVSetProcParLV(int32_t processingMethod, float freqMin, float freqMax, float fineFreqMin,
                              float fineFreqMax, float freqStep, float levelOffset, float headingOffset,
                              int32_t dirBandWidth, int32_t specBandWidth, int32_t directionalInputMode,
                              int32_t estimateMask, int32_t nDirections, float pressureOffset,
                              int32_t reverseDirection);

/**
 * Open a burst; call after the configuration. Rewrites `nSamples` with the length in use: more than 512 samples are
 * rounded down to a power of two, at most 16384. Returns 1 on success.
 */
OV_API int32_t OVSetWaveHeader_ptr(OVRecord *record, OVWaveHeader *header);
OV_API int32_t OVSetWaveHeader(OVWaveHeader *header);
/** As OVSetWaveHeader; `headerWords` points to four words, the rest of the header is 0. */
OV_API int32_t OVSetWaveHeaderLV(uint16_t nSamples, int16_t pressureCounts, float headerValueA, float headerValueB,
                                 float heading, float pitch, float roll, float headerValueC, int16_t distanceCounts,
                                 const uint16_t *headerWords, int32_t headerFlag);

/* ---- Samples and pre-processing ------------------------------------------------------------------------------ */

/** Store the next sample. A missing one repeats the one before it and is counted; `valid` reads 1 on return. */
OV_API int32_t OVSetWaveSample_ptr(OVRecord *record, OVWaveSample *sample);
OV_API int32_t OVSetWaveSample(OVWaveSample *sample);
/** As OVSetWaveSample; `velocityAndAst2` has four values, three velocities and the second distance. */
OV_API int32_t OVSetWaveSampleLV(int32_t valid, float pressure, float astDistance1, const float *velocityAndAst2,
                                 const uint16_t *amplitude);
/** Store the next sample with its two extra channels; a sample past the burst changes nothing at all. */
OV_API int32_t OVSetWaveSampleSUV_ptr(OVRecord *record, OVWaveSampleSUV *sample);
OV_API int32_t OVSetWaveSampleSUV(OVWaveSampleSUV *sample);

/**
 * Complete, clean and detrend the burst. `done` tells whether it may be processed: a burst with more than 10 % of its
 * samples missing is rejected. `unused` is ignored. Works in place: a second call cleans and detrends again.
 */
OV_API int32_t OVPreProcess_ptr(OVRecord *record, uint32_t unused, OVPreProcessOutput *output);
OV_API int32_t OVPreProcess(uint32_t unused, OVPreProcessOutput *output);
/** As OVPreProcess; `astOut` receives 32768 values, 0 where nothing was written. */
OV_API int32_t OVPreProcessLV(uint32_t unused, float *astOut, float windowBelow, float windowAbove, int32_t useWindow,
                              int32_t astValidIn, int32_t skipAstCleaning, int32_t doneIn);
OV_API int32_t OVPreProcessSUV_ptr(OVRecord *record, uint32_t unused, OVPreProcessOutputSUV *output);
OV_API int32_t OVPreProcessSUV(uint32_t unused, OVPreProcessOutputSUV *output);

/* ---- Profile instruments (type 16) --------------------------------------------------------------------------- */

/** As OVSetInstrumentConfig, with beam azimuths, beam count and lag. */
OV_API int32_t VELTASetInstrumentConfig_ptr(OVRecord *record, const OVProfileInstrumentConfig *config);
OV_API int32_t VELTASetInstrumentConfig(const OVProfileInstrumentConfig *config);
/** As OVSetProcPar. */
OV_API int32_t VELTASetProcPar_ptr(OVRecord *record, OVProfileProcessingParameters *params);
OV_API int32_t VELTASetProcPar(OVProfileProcessingParameters *params);
/** As OVSetWaveHeader; vertical cell size and blanking are turned along the beams. Returns 1 on success. */
OV_API int32_t VELTASetWaveHeader_ptr(OVRecord *record, OVProfileWaveHeader *header);
OV_API int32_t VELTASetWaveHeader(OVProfileWaveHeader *header);
/** Store the next sample with its profile; a sample past the burst changes nothing at all. */
OV_API int32_t VELTASetWaveSampleProfile_ptr(OVRecord *record, OVWaveSampleProfile *sample);
OV_API int32_t VELTASetWaveSampleProfile(OVWaveSampleProfile *sample);
/** As OVPreProcess; also chooses the velocity cell just below the wave troughs. */
OV_API int32_t VELTAPreProcess_ptr(OVRecord *record, uint32_t unused, OVPreProcessOutput *output);
OV_API int32_t VELTAPreProcess(uint32_t unused, OVPreProcessOutput *output);

/* ---- Processing ---------------------------------------------------------------------------------------------- */

/** Process the burst: true when there are results. Without a usable burst every result becomes missing. A null record
 *  gives true. */
OV_API bool OVProcess_ptr(OVRecord *record);
OV_API bool OVProcess(void);
/** As OVProcess, as 1 or 0; -1 for a null record. */
OV_API int32_t OVProcessReturnInt_ptr(OVRecord *record);
OV_API int32_t OVProcessReturnInt(void);
OV_API int32_t OVProcessReturnIntLV(void);
/** Keep `hook` (never called) and do as OVProcess. */
OV_API bool VELTAWaveProcess(void *hook);
OV_API bool VELTAWaveProcess_ptr(OVRecord *record, void *hook);

/* ---- Results ------------------------------------------------------------------------------------------------- */

/** All wave parameters; missing ones are -9. */
OV_API int32_t OVGetWavePar_ptr(OVRecord *record, OVWaveParameterSet *parameters);
OV_API int32_t OVGetWavePar(OVWaveParameterSet *parameters);

/** All spectra and coefficients by bin. Bins beyond the spatial-aliasing limit have directions only the first time. */
OV_API int32_t OVGetWaveSpectrum_ptr(OVRecord *record, OVFourierCoefficientSpectra *spectra);
OV_API int32_t OVGetWaveSpectrum(OVFourierCoefficientSpectra *spectra);

/** Address of the spectrum behind the wave parameters, inside the record, and its count; null outputs are skipped. */
OV_API int32_t OVGetEnergySpec_ptr(OVRecord *record, float **spectrum, int32_t *count);
OV_API int32_t OVGetEnergySpec(float **spectrum, int32_t *count);

/** The spectrum behind the wave parameters: count, then that many values. */
OV_API int32_t OVGetEnergySpecStruct_ptr(OVRecord *record, OVEnergySpectrumBlock *block);
OV_API int32_t OVGetEnergySpecStruct(OVEnergySpectrumBlock *block);

/** The spectrum behind the wave parameters in 16-bit values; 0 throughout when there is no energy. */
OV_API int32_t OVGetScaledEnergySpec_ptr(OVRecord *record, OVScaledEnergySpectrum *spectrum);
OV_API int32_t OVGetScaledEnergySpec(OVScaledEnergySpectrum *spectrum);

/** Mean current by the selector in `query`; another selector than 0 and 1 writes nothing. */
OV_API int32_t OVGetMeanBurstCurrent_ptr(OVRecord *record, OVMeanCurrentQuery *query);
OV_API int32_t OVGetMeanBurstCurrent(OVMeanCurrentQuery *query);
OV_API int32_t OVGetMeanBurstCurrentLV(int32_t selector, float *valueA, float *valueB, float *valueC);
/** As OVGetMeanBurstCurrent with the selector as an argument; the structure's own selector is not touched. */
OV_API int32_t VELTAGetMeanBurstCurrent_ptr(OVRecord *record, int32_t selector, OVMeanCurrentQuery *query);
OV_API int32_t VELTAGetMeanBurstCurrent(int32_t selector, OVMeanCurrentQuery *query);

/** As OVGetScaledEnergySpec for a spectrum by kind: 0 pressure, 1 velocity, 3 surface track, else the one in use. */
OV_API int32_t OVGetScaledEnergySpecAllType_ptr(OVRecord *record, int32_t kind, OVScaledEnergySpectrum *spectrum);
OV_API int32_t OVGetScaledEnergySpecAllType(int32_t kind, OVScaledEnergySpectrum *spectrum);

/** As OVGetWavePar, one pointer a slot (`waveParameters` of 14 values); null pointers are skipped. */
OV_API int32_t OVGetWaveParLV(float *waveParameters, float *instrumentDepth, int32_t *astInitialBadCount,
                              int32_t *astSpikeCount, int32_t *qualityFlags, int32_t *spectrumSource,
                              float *astLevel, float *astLevelEven, float *aliasingFrequency, float *checkedHeight,
                              float *checkedMeanPeriod, float *cellVerticalRange, float *energyPeriod,
                              int32_t *selectedCell);

/** As OVGetWaveSpectrum, one pointer a field (arrays of 200, binInfo 800, fineSpectrum 400); null is skipped. */
OV_API int32_t OVGetWaveSpectrumLV(uint8_t *spectrumKind, int32_t *count, int32_t *fineCount, float *energySpectrum,
                                   uint32_t *binInfo, float *secondSpectrum, float *fineSpectrum, float *direction,
                                   float *spread, float *coefP, float *coefQ, float *coefR, float *coefS,
                                   float *bandValue);

/* ---- Directional results and input --------------------------------------------------------------------------- */

/** Load Fourier coefficients (a1 = -coefQ, b1 = -coefP, a2 = -coefR, b2 = coefS) and get directions and spreads back. */
OV_API int32_t OVSetFourierCoefficientSpectra_ptr(OVRecord *record, OVFourierCoefficientSpectra *block);
OV_API int32_t OVSetFourierCoefficientSpectra(OVFourierCoefficientSpectra *block);

/** Load the spectrum behind the wave parameters; at most 400 values. */
OV_API int32_t OVSetSpectraUsed_ptr(OVRecord *record, const OVSpectraUsedInput *input);
OV_API int32_t OVSetSpectraUsed(const OVSpectraUsedInput *input);

/** Directions and spreads of a block from its own coefP (as a1) and coefQ (as b1). */
OV_API int32_t OVGetDirectionalSpectrum_ptr(OVRecord *record, OVFourierCoefficientSpectra *block);
OV_API int32_t OVGetDirectionalSpectrum(OVFourierCoefficientSpectra *block);

/**
 * Distribution times energy, `count` rows of 90 values. After OVProcess with method 3 or 4 a row times the bin width
 * 2 pi / nDirections sums to the energy (bins in the level frame); after OVGetFullWaveDirSpectrum the row itself does
 * (bins by compass bearing).
 */
OV_API int32_t OVGetFullDirSpectraWithEnergy_ptr(OVRecord *record, float *spectra);
OV_API int32_t OVGetFullDirSpectraWithEnergy(float *spectra);

/**
 * Maximum entropy distribution as bin weights, `count` rows of 90 values. A row sums to about 1 as long as the
 * distribution is wide against a bin: the twin peaks of a much narrower one fall between bins.
 */
OV_API int32_t OVGetFullWaveDirSpectrum_ptr(OVRecord *record, float *spectra);
OV_API int32_t OVGetFullWaveDirSpectrum(float *spectra);

/* ---- Band estimates ------------------------------------------------------------------------------------------ */

/** Wave parameters between fLow and fHigh of `band`. Returns 1 when no processed burst is there. */
OV_API int32_t OVGetBandEst_ptr(OVRecord *record, OVBandEstimate *band);
OV_API int32_t OVGetBandEst(OVBandEstimate *band);
/** As OVGetBandEst over the whole axis; `bandMeanSpread` receives the bits of a float. */
OV_API int32_t OVGetBandEstLV(float *bandHm0, float *bandTm02, float *bandZero, float *bandPeakDirection,
                              float *bandMeanDirection, float *bandPeakSpread, uint32_t *bandMeanSpread,
                              uint16_t *bandStatus);

#ifdef __cplusplus
}
#endif

#endif /* ORVIKBASE_ORVIKBASE_H */
