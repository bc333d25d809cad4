/**
 * @file
 * OrvikBase: directional wave processing of bursts from acoustic current meters. Public C interface.
 *
 * Every operation works on one wave-variables record. `X_ptr(record, ...)` takes the record; `X(...)` works on the
 * library's current record; `XLV(...)` takes a structure's fields one by one and works on the current record. Each is
 * described at its `_ptr` form. Operations return 0, or -1 when the record, a structure or an array is null (nothing
 * is touched then), unless stated otherwise.
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

/**
 * Allocate a zeroed record and make it current. Null (and no current record) when memory is short. The host releases
 * it with OVFreeVarPtr(). Loading the shared library allocates one in the same way and unloading it releases that
 * one.
 */
OV_API OVRecord *OVAllocateVarPtr(void);

/** Release a record; null is allowed. Does not change the current record, even when that is the one released. */
OV_API void OVFreeVarPtr(OVRecord *record);

/**
 * Make a record current; null leaves none. A host's own must be OV_RECORD_BYTES long, aligned for double, and zeroed
 * before its first use. It stays the host's: the library never releases it.
 */
OV_API void VELTASetWaveVariablesPointer(OVRecord *record);

/** Size of a record in bytes, OV_RECORD_BYTES. */
OV_API uint64_t VELTAGetWaveVariableNbytes(void);

/**
 * Copy the version text into `buffer`: exactly `length` characters, the rest of a longer buffer zeroed, no
 * terminating zero when `length` is 4 or less. A length of 0 or less writes nothing. Returns 0, -1 for a null buffer.
 * Needs no record.
 */
OV_API int32_t OVGetOrvikBaseVer(char *buffer, int16_t length);

/* ---- Configuration ------------------------------------------------------------------------------------------- */

/**
 * Describe the instrument: the first call on a record, and again when the instrument changes. Everything after it
 * reads the configuration. Nothing is validated; the structure is only read.
 */
OV_API int32_t OVSetInstrumentConfig_ptr(OVRecord *record, const OVInstrumentConfig *config);
/** OVSetInstrumentConfig_ptr() on the current record. */
OV_API int32_t OVSetInstrumentConfig(const OVInstrumentConfig *config);
/**
 * OVSetInstrumentConfig_ptr() with the fields of OVInstrumentConfig. `matrix` has 16 entries; `configFlags` is 0; the
 * bits of `cellSizeCounts` are read as a signed number.
 */
OV_API int32_t OVSetInstrumentConfigLV(uint32_t pingsPerSample, int32_t samplingRate,
                                       uint32_t burstSamples, float acousticFrequency,
                                       float slantAngle, int32_t instrumentType,
                                       int32_t attitudeMode, const int16_t *matrix,
                                       uint16_t cellSizeCounts);

/**
 * Choose method, frequency axes and options; call after the configuration, whose sampling rate and type limit them.
 * Values out of range are replaced by defaults or clamped, as OVProcessingParameters tells, and the values in use are
 * written back into `params`. Between two runs of OVProcess() on one burst, other choices may be set.
 */
OV_API int32_t OVSetProcPar_ptr(OVRecord *record, OVProcessingParameters *params);
/** OVSetProcPar_ptr() on the current record. */
OV_API int32_t OVSetProcPar(OVProcessingParameters *params);
/**
 * OVSetProcPar_ptr() with the fields of OVProcessingParameters but the two of profile instruments, which are 0. The
 * values in use are not reported.
 */
OV_API int32_t OVSetProcParLV(int32_t processingMethod, float freqMin, float freqMax,
                              float fineFreqMin, float fineFreqMax, float freqStep,
                              float levelOffset, float headingOffset, int32_t dirBandWidth,
                              int32_t specBandWidth, int32_t directionalInputMode,
                              int32_t estimateMask, int32_t nDirections, float pressureOffset,
                              int32_t reverseDirection);

/**
 * Open a burst; call after the configuration, whose type, frequency and cell size it uses. Rewrites `nSamples` with
 * the length in use: more than 512 samples are rounded down to a power of two, at most 16384. Samples are counted
 * from 0 again and the quality flags cleared, so read the results of the burst before first. Returns 1, -1 for null
 * arguments.
 */
OV_API int32_t OVSetWaveHeader_ptr(OVRecord *record, OVWaveHeader *header);
/** OVSetWaveHeader_ptr() on the current record. */
OV_API int32_t OVSetWaveHeader(OVWaveHeader *header);
/**
 * OVSetWaveHeader_ptr() with the fields of OVWaveHeader up to `headerFlag` (0 or not); the rest are 0. `headerWords`
 * has four words. The length in use is not reported.
 */
OV_API int32_t OVSetWaveHeaderLV(uint16_t nSamples, int16_t pressureCounts, float headerValueA,
                                 float headerValueB, float heading, float pitch, float roll,
                                 float headerValueC, int16_t distanceCounts,
                                 const uint16_t *headerWords, int32_t headerFlag);

/* ---- Samples and pre-processing ------------------------------------------------------------------------------ */

/**
 * Store the next sample of the burst, after OVSetWaveHeader() and in time order, as many as the header has; more are
 * not stored, fewer by at most a tenth are filled in later. To the pressure `pressureOffset` is added. A missing
 * sample (`valid` 0) repeats the one before it, zeros for the first, and is counted. `valid` reads 1 on return.
 * Amplitudes of 17 counts or less set OV_FLAG_WEAK_AMPLITUDE, in missing samples and in those past the burst too.
 */
OV_API int32_t OVSetWaveSample_ptr(OVRecord *record, OVWaveSample *sample);
/** OVSetWaveSample_ptr() on the current record. */
OV_API int32_t OVSetWaveSample(OVWaveSample *sample);
/**
 * OVSetWaveSample_ptr() with the fields of OVWaveSample. `velocityAndAst2` has four values, three velocities and the
 * second distance; `amplitude` has four. Any `valid` but 0 is a good sample.
 */
OV_API int32_t OVSetWaveSampleLV(int32_t valid, float pressure, float astDistance1,
                                 const float *velocityAndAst2, const uint16_t *amplitude);
/** As OVSetWaveSample_ptr(), with two extra channels; a sample past the burst changes nothing at all. */
OV_API int32_t OVSetWaveSampleSUV_ptr(OVRecord *record, OVWaveSampleSUV *sample);
/** OVSetWaveSampleSUV_ptr() on the current record. */
OV_API int32_t OVSetWaveSampleSUV(OVWaveSampleSUV *sample);

/**
 * Complete, clean and detrend the burst, once all samples are there. `done` tells whether it may be processed: with
 * more than 10 % of its samples missing a burst is rejected, with fewer the last sample is repeated to the end.
 * Pressure is cleared of spikes, its mean kept as the instrument's depth, its trend removed. Call it once a burst: it
 * works in place, and a second call would clean what is clean and find a depth of 0. `unused` is ignored.
 *
 * Methods 2 and 4 also clean the surface track: what lies out of range or outside the window, jumps and outliers are
 * replaced, and a track with too many of them is not used (`astValidOut` 0). The window, once asked for, stays in
 * force for the record; its limits are taken without sign. With `skipAstCleaning` the track goes back as it came and
 * is not used.
 *
 * Of `output`, rows get `astOut` and `pressureOut`, nothing else: for methods 2 and 4 two a sample (type 16: one),
 * for method 1 one a sample, with the pressure before its trend was removed as `astOut` and, as `pressureOut`, the
 * same plus the depth of the burst before; for method 3 none. `pressureOut` ends with the burst's samples: rows
 * behind them hold no pressure. A rejected burst writes `done` alone.
 */
OV_API int32_t OVPreProcess_ptr(OVRecord *record, uint32_t unused, OVPreProcessOutput *output);
/** OVPreProcess_ptr() on the current record. */
OV_API int32_t OVPreProcess(uint32_t unused, OVPreProcessOutput *output);
/**
 * OVPreProcess_ptr() with the inputs of OVPreProcessOutput (flags: 0 or not). `astOut` receives 32768 values, 0 where
 * nothing was written. `astValidIn` and `doneIn` are ignored, and neither result comes back: OVProcessReturnIntLV()
 * tells whether the burst was accepted.
 */
OV_API int32_t OVPreProcessLV(uint32_t unused, float *astOut, float windowBelow, float windowAbove,
                              int32_t useWindow, int32_t astValidIn, int32_t skipAstCleaning,
                              int32_t doneIn);
/** As OVPreProcess_ptr() with arrays instead of rows; method 1 writes none. */
OV_API int32_t OVPreProcessSUV_ptr(OVRecord *record, uint32_t unused,
                                   OVPreProcessOutputSUV *output);
/** OVPreProcessSUV_ptr() on the current record. */
OV_API int32_t OVPreProcessSUV(uint32_t unused, OVPreProcessOutputSUV *output);

/* ---- Profile instruments (type 16) --------------------------------------------------------------------------- */

/** As OVSetInstrumentConfig_ptr(), with beam azimuths, beam count and lag. */
OV_API int32_t VELTASetInstrumentConfig_ptr(OVRecord *record,
                                            const OVProfileInstrumentConfig *config);
/** VELTASetInstrumentConfig_ptr() on the current record. */
OV_API int32_t VELTASetInstrumentConfig(const OVProfileInstrumentConfig *config);
/** As OVSetProcPar_ptr(). */
OV_API int32_t VELTASetProcPar_ptr(OVRecord *record, OVProfileProcessingParameters *params);
/** OVSetProcPar_ptr() on the current record. */
OV_API int32_t VELTASetProcPar(OVProfileProcessingParameters *params);
/**
 * As OVSetWaveHeader_ptr(); vertical cell size and blanking are divided by the cosine of the slant angle, so that the
 * configuration must come first. Returns 1, -1 for null arguments.
 */
OV_API int32_t VELTASetWaveHeader_ptr(OVRecord *record, OVProfileWaveHeader *header);
/** VELTASetWaveHeader_ptr() on the current record. */
OV_API int32_t VELTASetWaveHeader(OVProfileWaveHeader *header);
/**
 * Store the next sample with its profile, of which the header's `nCells` cells are read, after VELTASetWaveHeader()
 * and in time order. A missing sample repeats the one before it and is counted; `valid` reads 1 on return. Amplitudes
 * are not tested. A sample past the burst changes nothing at all.
 */
OV_API int32_t VELTASetWaveSampleProfile_ptr(OVRecord *record, OVWaveSampleProfile *sample);
/** VELTASetWaveSampleProfile_ptr() on the current record. */
OV_API int32_t VELTASetWaveSampleProfile(OVWaveSampleProfile *sample);
/**
 * As OVPreProcess_ptr(); also chooses the velocity cell: the highest that stays below the wave troughs, or the next
 * lower one whose weakest beam has a mean correlation of 50 % or more; the lowest where there is none. Its velocities
 * become those of the burst.
 *
 * `profileParamA` percent of the least distance of the track count as the troughs' distance; without a usable track
 * 80 % of the least pressure. Rows get attitude and the cell's velocities, amplitudes and correlations as well;
 * `sampleCount` and `cellVerticalRange` are written; with method 1 `pressureOut` is `astOut` minus 9. The window
 * holds for this burst alone. Results of the burst before become missing.
 */
OV_API int32_t VELTAPreProcess_ptr(OVRecord *record, uint32_t unused, OVPreProcessOutput *output);
/** VELTAPreProcess_ptr() on the current record. */
OV_API int32_t VELTAPreProcess(uint32_t unused, OVPreProcessOutput *output);

/* ---- Processing ---------------------------------------------------------------------------------------------- */

/**
 * Process the burst that pre-processing accepted: spectra, directions, parameters and quality flags, over those of
 * the burst before. True when there are results. Without an accepted burst every result becomes missing, spectra 0,
 * the flags OV_FLAG_NO_RESULT alone, and it is false. True for a null record, where nothing is done.
 *
 * Samples are not consumed: the burst may be processed again, with other parameters too. The surface track takes part
 * when it was cleaned, by pre-processing under method 2 or 4. A method whose input is not there falls back: 4 to 3
 * and 2 to 1.
 */
OV_API bool OVProcess_ptr(OVRecord *record);
/** OVProcess_ptr() on the current record. */
OV_API bool OVProcess(void);
/** As OVProcess_ptr(), with 1 for true and 0 for false; -1 for a null record. */
OV_API int32_t OVProcessReturnInt_ptr(OVRecord *record);
/** OVProcessReturnInt_ptr() on the current record. */
OV_API int32_t OVProcessReturnInt(void);
/** OVProcessReturnInt_ptr() on the current record. */
OV_API int32_t OVProcessReturnIntLV(void);
/** OVProcess_ptr() on the current record; `hook` is kept for the library as a whole and never called. */
OV_API bool VELTAWaveProcess(void *hook);
/** OVProcess_ptr(); `hook` is kept for the library as a whole and never called. */
OV_API bool VELTAWaveProcess_ptr(OVRecord *record, void *hook);

/* ---- Results ------------------------------------------------------------------------------------------------- */

/**
 * All wave parameters of the last run of OVProcess(); missing ones are -9. Without results the flags are
 * OV_FLAG_NO_RESULT. Then, and when the host asked for the surface track only (`directionalInputMode` 3) and there is
 * none, the 14 parameters, `instrumentDepth`, `astLevel`, `aliasingFrequency` and `checkedMeanPeriod` are -9 and
 * `astSpikeCount` is the number of missing samples.
 */
OV_API int32_t OVGetWavePar_ptr(OVRecord *record, OVWaveParameterSet *parameters);
/** OVGetWavePar_ptr() on the current record. */
OV_API int32_t OVGetWavePar(OVWaveParameterSet *parameters);

/**
 * All spectra and coefficients by bin: `count` bins, of `fineSpectrum` `fineCount`, 0 behind them. Places of
 * `binInfo` whose beam is not in use keep what the host had there. Beyond the spatial-aliasing limit coefficients and
 * `bandValue` are -9, and directions too but for the first call after a run. Where the host asked for the surface
 * track only and there is none, directions, coefficients and `fineSpectrum` are -9.
 *
 * Changes the record: those directions become -9 in it.
 */
OV_API int32_t OVGetWaveSpectrum_ptr(OVRecord *record, OVFourierCoefficientSpectra *spectra);
/** OVGetWaveSpectrum_ptr() on the current record. */
OV_API int32_t OVGetWaveSpectrum(OVFourierCoefficientSpectra *spectra);

/**
 * Address of the spectrum behind the wave parameters [m^2/Hz], inside the record, and the number of bins of the main
 * axis. Null outputs are skipped. The array has 400 places and holds until the record is processed again or released;
 * with OV_SOURCE_SURFACE_TRACK it is on the fine axis, whose number of bins OVGetWaveSpectrum() tells.
 */
OV_API int32_t OVGetEnergySpec_ptr(OVRecord *record, float **spectrum, int32_t *count);
/** OVGetEnergySpec_ptr() on the current record. */
OV_API int32_t OVGetEnergySpec(float **spectrum, int32_t *count);

/** The spectrum behind the wave parameters: the count of the main axis, then that many values; the rest is kept. */
OV_API int32_t OVGetEnergySpecStruct_ptr(OVRecord *record, OVEnergySpectrumBlock *block);
/** OVGetEnergySpecStruct_ptr() on the current record. */
OV_API int32_t OVGetEnergySpecStruct(OVEnergySpectrumBlock *block);

/**
 * The spectrum behind the wave parameters in 16-bit values: as many as its axis has bins (the fine one with
 * OV_SOURCE_SURFACE_TRACK), 0 from there to the end of the fine axis, and 0 throughout when there is no energy.
 */
OV_API int32_t OVGetScaledEnergySpec_ptr(OVRecord *record, OVScaledEnergySpectrum *spectrum);
/** OVGetScaledEnergySpec_ptr() on the current record. */
OV_API int32_t OVGetScaledEnergySpec(OVScaledEnergySpectrum *spectrum);

/**
 * Mean current of the burst by the selector in `query`, which OVProcess() computes. 0: east, north and up, m/s. 1:
 * speed in m/s, direction it goes to in degrees with the declination added, and 0. Another selector writes nothing.
 */
OV_API int32_t OVGetMeanBurstCurrent_ptr(OVRecord *record, OVMeanCurrentQuery *query);
/** OVGetMeanBurstCurrent_ptr() on the current record. */
OV_API int32_t OVGetMeanBurstCurrent(OVMeanCurrentQuery *query);
/** OVGetMeanBurstCurrent_ptr() with the fields of OVMeanCurrentQuery; no pointer may be null. */
OV_API int32_t OVGetMeanBurstCurrentLV(int32_t selector, float *valueA, float *valueB,
                                       float *valueC);
/** OVGetMeanBurstCurrent_ptr() with the selector as an argument; the structure's own is not read. */
OV_API int32_t VELTAGetMeanBurstCurrent_ptr(OVRecord *record, int32_t selector,
                                            OVMeanCurrentQuery *query);
/** VELTAGetMeanBurstCurrent_ptr() on the current record. */
OV_API int32_t VELTAGetMeanBurstCurrent(int32_t selector, OVMeanCurrentQuery *query);

/**
 * As OVGetScaledEnergySpec_ptr() for a spectrum by kind: 0 pressure, 1 velocity, 3 surface track, else the one in
 * use.
 */
OV_API int32_t OVGetScaledEnergySpecAllType_ptr(OVRecord *record, int32_t kind,
                                                OVScaledEnergySpectrum *spectrum);
/** OVGetScaledEnergySpecAllType_ptr() on the current record. */
OV_API int32_t OVGetScaledEnergySpecAllType(int32_t kind, OVScaledEnergySpectrum *spectrum);

/**
 * OVGetWavePar_ptr() with one pointer a field of OVWaveParameterSet (`waveParameters`: 14 values); null is skipped.
 */
OV_API int32_t OVGetWaveParLV(float *waveParameters, float *instrumentDepth,
                              int32_t *astInitialBadCount, int32_t *astSpikeCount,
                              int32_t *qualityFlags, int32_t *spectrumSource, float *astLevel,
                              float *astLevelEven, float *aliasingFrequency, float *checkedHeight,
                              float *checkedMeanPeriod, float *cellVerticalRange,
                              float *energyPeriod, int32_t *selectedCell);

/**
 * OVGetWaveSpectrum_ptr() with one pointer a field of OVFourierCoefficientSpectra: arrays of 200, `binInfo` of 800,
 * `fineSpectrum` of 400; null is skipped.
 */
OV_API int32_t OVGetWaveSpectrumLV(uint8_t *spectrumKind, int32_t *count, int32_t *fineCount,
                                   float *energySpectrum, uint32_t *binInfo, float *secondSpectrum,
                                   float *fineSpectrum, float *direction, float *spread,
                                   float *coefP, float *coefQ, float *coefR, float *coefS,
                                   float *bandValue);

/* ---- Directional results and input --------------------------------------------------------------------------- */

/**
 * Load Fourier coefficients of `count` bins, 0 to 200, over those of the record (a1 = -coefQ, b1 = -coefP, a2 =
 * -coefR, b2 = coefS), and get their directions and spreads back in the block. A bin whose coefP or coefQ lies within
 * 0.0001 of -9, or is no number, is missing in the record and the block. Directions follow `reverseDirections` of
 * OVSetProcPar().
 */
OV_API int32_t OVSetFourierCoefficientSpectra_ptr(OVRecord *record,
                                                  OVFourierCoefficientSpectra *block);
/** OVSetFourierCoefficientSpectra_ptr() on the current record. */
OV_API int32_t OVSetFourierCoefficientSpectra(OVFourierCoefficientSpectra *block);

/** Load the spectrum behind the wave parameters, 0 to 400 values over those of the record. */
OV_API int32_t OVSetSpectraUsed_ptr(OVRecord *record, const OVSpectraUsedInput *input);
/** OVSetSpectraUsed_ptr() on the current record. */
OV_API int32_t OVSetSpectraUsed(const OVSpectraUsedInput *input);

/**
 * Directions and spreads of a block from its own coefP (as a1) and coefQ (as b1), for the bins of the main axis that
 * OVSetProcPar() made. They are never reversed; with `reverseDirections` set every call turns the record's own mean
 * directions by 180 degrees instead, so read those first.
 */
OV_API int32_t OVGetDirectionalSpectrum_ptr(OVRecord *record, OVFourierCoefficientSpectra *block);
/** OVGetDirectionalSpectrum_ptr() on the current record. */
OV_API int32_t OVGetDirectionalSpectrum(OVFourierCoefficientSpectra *block);

/**
 * Distribution times energy: a row of 90 values for each bin of the main axis, of which the first `nDirections` are
 * written; 200 rows fit whatever the axis. Rows beyond the spatial-aliasing limit are -9. After OVProcess() with
 * method 3 or 4 a row times the bin width 2 pi / nDirections sums to the energy in m^2/Hz (bins in the level frame);
 * after OVGetFullWaveDirSpectrum() the row itself does (bins by compass bearing). Methods 1 and 2 have a distribution
 * only after that call.
 */
OV_API int32_t OVGetFullDirSpectraWithEnergy_ptr(OVRecord *record, float *spectra);
/** OVGetFullDirSpectraWithEnergy_ptr() on the current record. */
OV_API int32_t OVGetFullDirSpectraWithEnergy(float *spectra);

/**
 * Maximum entropy distribution of the record's Fourier coefficients as bin weights: rows as in
 * OVGetFullDirSpectraWithEnergy_ptr(), -9 where the coefficients are missing. A row sums to about 1 as long as the
 * distribution is wide against a bin: the twin peaks of a much narrower one fall between bins. Replaces the record's
 * distribution.
 */
OV_API int32_t OVGetFullWaveDirSpectrum_ptr(OVRecord *record, float *spectra);
/** OVGetFullWaveDirSpectrum_ptr() on the current record. */
OV_API int32_t OVGetFullWaveDirSpectrum(float *spectra);

/* ---- Band estimates ------------------------------------------------------------------------------------------ */

/**
 * Wave parameters between `fLow` and `fHigh` of `band`, from the spectrum behind the wave parameters: bins from the
 * first at fLow or above to the last that lies a third of a bin or more below fHigh. What cannot be computed is -9.
 * Returns 0; 1 when no processed burst is there (`bandStatus` OV_FLAG_NO_RESULT); -1 for null arguments.
 */
OV_API int32_t OVGetBandEst_ptr(OVRecord *record, OVBandEstimate *band);
/** OVGetBandEst_ptr() on the current record. */
OV_API int32_t OVGetBandEst(OVBandEstimate *band);
/**
 * OVGetBandEst_ptr() over the whole axis with one pointer a field, none of them null; `bandMeanSpread` receives the
 * bits of a float.
 */
OV_API int32_t OVGetBandEstLV(float *bandHm0, float *bandTm02, float *bandZero,
                              float *bandPeakDirection, float *bandMeanDirection,
                              float *bandPeakSpread, uint32_t *bandMeanSpread,
                              uint16_t *bandStatus);

#ifdef __cplusplus
}
#endif

#endif /* ORVIKBASE_ORVIKBASE_H */
