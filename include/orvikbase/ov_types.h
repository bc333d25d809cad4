/**
 * @file
 * Types shared by a host program and the OrvikBase library: capacities, structures, codes and bits.
 *
 * Valid C99 and C++. Every host structure is byte-packed (no gaps), little-endian, and may lie at any
 * address.
 */
#ifndef ORVIKBASE_OV_TYPES_H
#define ORVIKBASE_OV_TYPES_H

#include <stdint.h>

/* ---- Capacities and sizes ------------------------------------------------------------------------------------ */

#define OV_RECORD_BYTES 69003224ULL /**< size of a wave-variables record [bytes] */
#define OV_MAX_FREQUENCIES 200      /**< bins of the main frequency axis */
#define OV_MAX_FREQUENCIES_FINE 400 /**< bins of the fine (surface-track) frequency axis */
#define OV_MAX_DIRECTIONS 90        /**< direction bins of a directional spectrum */
#define OV_MAX_SERIES 6             /**< series that enter one directional estimate */
#define OV_MAX_SAMPLES 16384        /**< samples of one burst */
#define OV_MAX_TRACK_SAMPLES 32768  /**< elements of the double-rate surface track */
#define OV_MAX_CELLS 256            /**< velocity cells of a profile */
#define OV_MAX_BEAMS 4              /**< slanted beams of a profile instrument */
#define OV_WAVE_PARAMETERS 14       /**< entries of OVWaveParameterSet.waveParameters */

#define OV_MISSING (-9.0F) /**< a 32-bit float result that could not be computed */
/** bit pattern of OVWaveParameterSet.checkedHeight when it is missing */
#define OV_MISSING_INTEGER (-9)

/* ---- Codes --------------------------------------------------------------------------------------------------- */

/** Places of OVWaveParameterSet.waveParameters. Heights in m, periods in s, angles in degrees. */
enum OVWaveParameter {
    OV_TM02 = 0,             /**< mean period sqrt(m0 / m2) */
    OV_TP = 1,               /**< peak period */
    OV_PEAK_DIRECTION = 2,   /**< direction at the spectral peak, [0, 360) */
    OV_PEAK_SPREAD = 3,      /**< directional spread at the spectral peak */
    OV_MEAN_DIRECTION = 4,   /**< energy-weighted mean direction, [0, 360] */
    OV_RESULTANT_LENGTH = 5, /**< length of the mean direction vector, 0 to 1 */
    OV_HM0 = 6,              /**< significant height 4 sqrt(m0) */
    OV_H_THIRD = 7,          /**< mean height of the highest third; surface track only */
    OV_T_THIRD = 8,          /**< mean period of the highest third */
    OV_H_TENTH = 9,          /**< mean height of the highest tenth, or 1.27 Hm0 */
    OV_T_TENTH = 10,         /**< mean period of the highest tenth */
    OV_H_MAX = 11,           /**< greatest height, or 1.67 Hm0 */
    OV_T_MAX = 12,           /**< period of the highest wave */
    OV_T_CROSSING = 13       /**< mean period between zero up-crossings */
};

/** Bits of OVWaveParameterSet.qualityFlags. */
enum OVQualityFlag {
    OV_FLAG_SHALLOW = 1,             /**< mean pressure below 1 m of water */
    OV_FLAG_NO_SIGNAL = 2,           /**< pressure varies by less than 1 mm on average */
    OV_FLAG_WEAK_AMPLITUDE = 4,      /**< an echo of beams 1 to 3 was 17 counts or less */
    OV_FLAG_FLAT_SPECTRUM = 8,       /**< the spectrum has no shape; checkedHeight is missing */
    OV_FLAG_INVALID_PARAMETERS = 16, /**< a parameter is impossible; directions are missing */
    OV_FLAG_NO_RESULT = 32,          /**< nothing was processed; stands alone */
    OV_FLAG_TRACK_RANGE = 64,        /**< track statistics out of range: it was not used */
    OV_FLAG_ALIASED_PEAK = 128,      /**< the peak's wavelength is below 2 sensor spacings */
    OV_FLAG_RISING_SPECTRUM = 256,   /**< the spectrum never decreases */
    OV_FLAG_CLEARANCE = 512,         /**< surface within 0.5 m of the range, or range unknown */
    OV_FLAG_NO_TRACK = 1024,         /**< the method wants a surface track and has none */
    OV_FLAG_TILT = 2048              /**< tilt over 10 degrees */
};

/** OVWaveParameterSet.spectrumSource: the elevation spectrum behind the wave parameters. */
enum OVSpectrumSource {
    OV_SOURCE_PRESSURE = 0,     /**< from pressure, on the main axis */
    OV_SOURCE_VELOCITY = 1,     /**< from velocity, on the main axis */
    OV_SOURCE_SURFACE_TRACK = 3 /**< of the surface track, on the fine axis */
};

/** OVInstrumentConfig.attitudeMode: coordinate system of the velocities that the host hands over. */
enum OVAttitudeMode {
    OV_VELOCITY_ENU = 0, /**< east, north, up: for methods 1 and 2 */
    OV_VELOCITY_XYZ = 1, /**< instrument axes */
    OV_VELOCITY_BEAM = 2 /**< along the beams, away from the head: for methods 3 and 4 */
};

/* ---- Host structures ----------------------------------------------------------------------------------------- */

#pragma pack(push, 1)

/** The instrument, as OVSetInstrumentConfig() takes it. 64 bytes. */
typedef struct OVInstrumentConfig {
    uint32_t pingsPerSample;     /**< acoustic pings averaged into one sample, 1 or more */
    int32_t samplingRate;        /**< whole Hz; 0 means 0.75 Hz at 400 kHz exactly */
    uint32_t burstSamples;       /**< samples per burst as configured; the header replaces it */
    float acousticFrequency;     /**< Hz; 400000 exactly has rules of its own */
    float slantAngle;            /**< of the beams, degrees from the vertical */
    int32_t instrumentType;      /**< 1, 3 and 16 (profile) have rules of their own */
    int32_t attitudeMode;        /**< enum OVAttitudeMode */
    int16_t transformMatrix[16]; /**< beam to XYZ by rows, 4096 stands for 1; 3 beams: 9 entries */
    int16_t cellSizeCounts;      /**< along-beam cell extent, timing counts */
    uint16_t configFlags;        /**< bit value 32: two estimates of the surface-track level */
} OVInstrumentConfig;

/** A profile instrument, as VELTASetInstrumentConfig() takes it: three more fields. 86 bytes. */
typedef struct OVProfileInstrumentConfig {
    uint32_t pingsPerSample;     /**< as in OVInstrumentConfig */
    int32_t samplingRate;        /**< as in OVInstrumentConfig */
    uint32_t burstSamples;       /**< as in OVInstrumentConfig */
    float acousticFrequency;     /**< as in OVInstrumentConfig */
    float slantAngle;            /**< as in OVInstrumentConfig */
    int32_t instrumentType;      /**< 16; another code makes it a point instrument of that type */
    int32_t attitudeMode;        /**< as in OVInstrumentConfig */
    int16_t transformMatrix[16]; /**< by rows: 9 entries with 3 beams, 16 with 4 */
    int16_t cellSizeCounts;      /**< as in OVInstrumentConfig */
    uint16_t configFlags;        /**< as in OVInstrumentConfig */
    float beamAzimuth[4];        /**< degrees from X towards Y, Z up; all 0: 0, 90, 180, 270 */
    int16_t beamCount;           /**< 3 or 4 */
    float lagParameter;          /**< ambiguity velocity, m/s */
} OVProfileInstrumentConfig;

/**
 * Processing choices, as OVSetProcPar() takes and corrects them. 65 bytes.
 *
 * - freqMin not in (0, 1) and fineFreqMin not in (0, 2) become 0.02, freqStep not in (0, 0.1] 0.01.
 * - freqMax of 0 or less becomes 1, fineFreqMax of 0 or less 2. freqMax below freqMin becomes
 *   freqMin + freqStep.
 * - The axes end at most at 0.99 and 1.99 at a rate of 2 Hz or more, at 0.49 and 0.99 at 1 Hz, at
 *   0.375 and 0.75 at rate 0; on type 16 both at freqMax. More than 200 or 400 bins are cut off.
 * - Band widths not in 1 to 512 become 32.
 * - Method 4 with a mask below 8 (type 16: 7) becomes method 3 with mask 7.
 */
typedef struct OVProcessingParameters {
    int32_t processingMethod;     /**< 1 to 4; 4 needs a mask that names the track */
    float freqMin;                /**< first bin of the main axis, Hz */
    float freqMax;                /**< last bin of the main axis, Hz */
    float fineFreqMin;            /**< first bin of the fine axis, Hz */
    float fineFreqMax;            /**< last bin of the fine axis, Hz */
    float freqStep;               /**< distance of bins on both axes, Hz */
    float levelOffset;            /**< height of the pressure sensor above the bed, m */
    float headingOffset;          /**< magnetic declination, added to directions, degrees */
    int32_t dirBandWidth;         /**< averages max(1, value / 4) bins of cross-spectra */
    int32_t specBandWidth;        /**< the same for the non-directional spectra */
    int32_t directionalInputMode; /**< 0 pressure, 1 velocity, 2 track if usable, 3 track only */
    int32_t estimateMask;         /**< 1, 2, 4: beams 1-3; 8: track (type 16: beam 4, 16: track) */
    int32_t nDirections;          /**< direction bins, at most 90; 0 or less: no distribution */
    float pressureOffset;         /**< added to every pressure, m of water */
    uint8_t reverseDirections;    /**< directions say: 0 where waves go, else come from */
    float profileParamA;          /**< type 16: share of the trough distance, percent */
    uint32_t profileParamB;       /**< type 16: not 0 takes the second distance as track */
} OVProcessingParameters;

/** The same for VELTASetProcPar(). */
typedef OVProcessingParameters OVProfileProcessingParameters;

/** Opens a burst, as OVSetWaveHeader() takes it. 57 bytes. */
typedef struct OVWaveHeader {
    uint16_t nSamples;         /**< in: samples sent; out: samples used, at most 16384 */
    int16_t pressureCounts;    /**< place of the measurement cell, 0.02288818359375 m */
    float headerValueA;        /**< kept, not used */
    float headerValueB;        /**< not used */
    float heading;             /**< degrees */
    float pitch;               /**< degrees */
    float roll;                /**< degrees */
    float headerValueC;        /**< kept, not used */
    int16_t distanceCounts;    /**< sensor distance in timing counts */
    uint16_t headerWords[3];   /**< kept, not used */
    uint16_t reserved;         /**< not read */
    uint8_t headerFlag;        /**< kept, not used */
    float depthOffset;         /**< type 3 at 400 kHz: added to pressure and distances, m */
    float directDepth;         /**< type 16: blanking distance, m */
    float directHeight;        /**< type 16: cell size, m */
    uint32_t nCells;           /**< cells per profile; more than 256 count as 256 */
    int16_t surfaceTimeOffset; /**< type 16: track and pressure after velocity, 0.1 ms */
} OVWaveHeader;

/** The same for VELTASetWaveHeader(): directHeight and directDepth are vertical distances. */
typedef OVWaveHeader OVProfileWaveHeader;

/** One sample of a profile instrument. 4123 bytes. */
typedef struct OVWaveSampleProfile {
    uint8_t valid;                                        /**< 0: missing. Reads 1 after the call */
    uint8_t reserved[2];                                  /**< not read */
    float pressure;                                       /**< m of water (dbar) */
    float astDistance1;                                   /**< m */
    float astDistance2;                                   /**< m */
    int16_t profileVelocity[OV_MAX_BEAMS][OV_MAX_CELLS];  /**< mm/s, positive away from the head */
    uint8_t profileAmplitude[OV_MAX_BEAMS][OV_MAX_CELLS]; /**< counts */
    uint8_t profileCorrelation[OV_MAX_BEAMS][OV_MAX_CELLS]; /**< percent */
    float attitude[3];                                      /**< heading, pitch, roll, degrees */
} OVWaveSampleProfile;

/** One sample of a point instrument. 33 bytes. */
typedef struct OVWaveSample {
    uint8_t valid;         /**< 0: missing. Reads 1 after the call */
    float pressure;        /**< m of water (dbar) */
    float astDistance1;    /**< first surface-track distance of the sample interval, m */
    float velocity[3];     /**< m/s, in the coordinates of OVAttitudeMode */
    float astDistance2;    /**< second surface-track distance, m */
    uint16_t amplitude[4]; /**< echo strength, counts; the fourth is not examined */
} OVWaveSample;

/** One sample with two extra channels. 45 bytes. */
typedef struct OVWaveSampleSUV {
    uint8_t valid;         /**< 0: missing. Reads 1 after the call */
    float spare;           /**< not read */
    float suvChannel1;     /**< first extra channel, kept as a series and not interpreted */
    float suvChannel2;     /**< second extra channel, the same */
    float pressure;        /**< as in OVWaveSample, like the fields that follow */
    float astDistance1;    /**< m */
    float velocity[3];     /**< m/s */
    float astDistance2;    /**< m */
    uint16_t amplitude[4]; /**< counts */
} OVWaveSampleSUV;

/** Row i of OVPreProcessOutput: surface-track element i, and sample i of the rest. 44 bytes. */
typedef struct OVPreProcessRow {
    float attitude[3];      /**< type 16: heading, roll, pitch, degrees */
    float astOut;           /**< cleaned surface track, m (method 1: pressure, m of water) */
    float pressureOut;      /**< cleaned pressure of sample i with its mean, m of water */
    float velocity[4];      /**< type 16: of the chosen cell, m/s */
    uint8_t amplitude[4];   /**< type 16: of the chosen cell, counts */
    uint8_t correlation[4]; /**< type 16: of the chosen cell, percent */
} OVPreProcessRow;

/** Input and output of OVPreProcess(). 1,441,812 bytes. */
typedef struct OVPreProcessOutput {
    int32_t sampleCount;     /**< out, type 16: rows with velocities */
    float cellVerticalRange; /**< out, type 16: height of the chosen cell above the head, m */
    OVPreProcessRow rows[OV_MAX_TRACK_SAMPLES]; /**< out: see OVPreProcess_ptr() */
    float windowBelow;                          /**< in: window below the instrument depth, m */
    float windowAbove;                          /**< in: window above the instrument depth, m */
    uint8_t useWindow;                          /**< in: 1 puts the window in force */
    uint8_t astValidOut;     /**< out, if the track was cleaned: 1 when it is usable */
    uint8_t skipAstCleaning; /**< in: 1 hands the track back as it is; it is not used then */
    uint8_t done;            /**< out: 0 when the burst was rejected */
} OVPreProcessOutput;

/** Input and output of OVPreProcessSUV(). 262,156 bytes; an array here is a row's field there. */
typedef struct OVPreProcessOutputSUV {
    float astOut[OV_MAX_TRACK_SAMPLES];      /**< out: as OVPreProcessRow.astOut */
    float pressureOut[OV_MAX_TRACK_SAMPLES]; /**< out: as OVPreProcessRow.pressureOut */
    float windowBelow;       /**< in: as in OVPreProcessOutput, like the fields that follow */
    float windowAbove;       /**< in: m */
    uint8_t useWindow;       /**< in: 1 uses the window */
    uint8_t astValidOut;     /**< out: 1 when the surface track is usable */
    uint8_t skipAstCleaning; /**< in: 1 leaves the surface track as it is */
    uint8_t done;            /**< out: 0 when the burst was rejected */
} OVPreProcessOutputSUV;

/** The wave parameters of a burst. 27 slots of four bytes. */
typedef struct OVWaveParameterSet {
    float waveParameters[OV_WAVE_PARAMETERS]; /**< enum OVWaveParameter */
    float instrumentDepth;                    /**< mean depth of the pressure sensor, m */
    int32_t astInitialBadCount;               /**< surface-track elements out of range */
    int32_t astSpikeCount;   /**< elements repaired after that; no results: missing samples */
    int32_t qualityFlags;    /**< enum OVQualityFlag */
    int32_t spectrumSource;  /**< enum OVSpectrumSource */
    float astLevel;          /**< mean surface-track distance, m */
    float astLevelEven;      /**< the same of the first pings, with two estimates */
    float aliasingFrequency; /**< first frequency without direction, Hz */
    float checkedHeight;     /**< Hm0 of a sound spectrum; missing: OV_MISSING_INTEGER */
    float checkedMeanPeriod; /**< Tm02 where all parameters are valid, s */
    float cellVerticalRange; /**< height of the velocity cell above the head, m */
    float energyPeriod;      /**< Tm-10, s */
    int32_t selectedCell;    /**< profile instruments: cell used, counted from 1 */
} OVWaveParameterSet;

/** Elevation spectra and directions of a burst by frequency bin. 12,009 bytes. */
typedef struct OVFourierCoefficientSpectra {
    uint8_t spectrumKind;                        /**< 15 with a valid surface track, else 11 */
    int32_t count;                               /**< bins of the main axis */
    int32_t fineCount;                           /**< bins of the fine axis */
    float energySpectrum[OV_MAX_FREQUENCIES];    /**< from pressure, m^2/Hz */
    uint32_t binInfo[OV_MAX_FREQUENCIES][4];     /**< by beam, f32 bits, m^2/Hz */
    float secondSpectrum[OV_MAX_FREQUENCIES];    /**< from velocity, m^2/Hz */
    float fineSpectrum[OV_MAX_FREQUENCIES_FINE]; /**< surface track, m^2/Hz */
    float direction[OV_MAX_FREQUENCIES];         /**< mean direction, degrees */
    float spread[OV_MAX_FREQUENCIES];            /**< directional spread, degrees */
    float coefP[OV_MAX_FREQUENCIES];             /**< minus b1 */
    float coefQ[OV_MAX_FREQUENCIES];             /**< minus a1 */
    float coefR[OV_MAX_FREQUENCIES];             /**< minus a2 */
    float coefS[OV_MAX_FREQUENCIES];             /**< b2 */
    float bandValue[OV_MAX_FREQUENCIES];         /**< check ratio of two elevation estimates */
} OVFourierCoefficientSpectra;

/** The spectrum behind the wave parameters; only `count` values are written. */
typedef struct OVEnergySpectrumBlock {
    int32_t count;                    /**< bins of the main axis */
    float values[OV_MAX_FREQUENCIES]; /**< m^2/Hz */
} OVEnergySpectrumBlock;

/** A spectrum scaled to 16 bits: energy [m^2/Hz] = value * scaleMax / (65535 * 10000). */
typedef struct OVScaledEnergySpectrum {
    uint32_t scaleMax; /**< greatest energy [m^2/Hz] * 10000, rounded down; 0 without energy */
    uint16_t values[OV_MAX_FREQUENCIES_FINE]; /**< one a bin, 0 to 65535 */
} OVScaledEnergySpectrum;

/** Mean current of a burst. Selector 0: east, north, up. Selector 1: speed, direction, 0. */
typedef struct OVMeanCurrentQuery {
    int32_t selector; /**< in: 0 or 1 */
    float valueA;     /**< out: east, or speed; m/s */
    float valueB;     /**< out: north, m/s, or direction it goes to, degrees */
    float valueC;     /**< out: up, m/s, or 0 */
} OVMeanCurrentQuery;

/** A spectrum from the host for OVSetSpectraUsed(). Only the values that the count names are read. */
typedef struct OVSpectraUsedInput {
    uint32_t selector;                     /**< 0 or 1: count1 values, otherwise count2 */
    int32_t count1;                        /**< bins of the main axis */
    int32_t count2;                        /**< bins of the fine axis */
    float values[OV_MAX_FREQUENCIES_FINE]; /**< m^2/Hz */
} OVSpectraUsedInput;

/** Wave parameters over a band. 40 bytes. */
typedef struct OVBandEstimate {
    float fLow;                  /**< in: lower limit, Hz */
    float fHigh;                 /**< in: upper limit, Hz */
    float bandHm0;               /**< 4 sqrt(m0), m */
    float bandTm02;              /**< sqrt(m0 / m2), s */
    float bandZero;              /**< 0 after a processed burst */
    float bandPeakDirection;     /**< degrees */
    float bandMeanDirection;     /**< degrees */
    float bandPeakSpread;        /**< degrees */
    float bandMeanSpread;        /**< degrees */
    uint16_t bandStatus;         /**< 32 without a processed burst, else 0 */
    uint16_t bandSpectrumSource; /**< enum OVSpectrumSource */
} OVBandEstimate;

#pragma pack(pop)

/**
 * The wave-variables record: everything the library knows about one burst, OV_RECORD_BYTES long,
 * without pointers.
 * A host keeps, copies or supplies it as raw memory aligned for double; zeroed memory is a valid record.
 */
typedef struct OVRecord OVRecord;

#endif /**< ORVIKBASE_OV_TYPES_H */
