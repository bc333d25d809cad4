/*
 * Types shared by a host program and the OrvikBase library: capacities, host structures, codes and bits.
 *
 * Valid C99 and C++. Every host structure is byte-packed (no gaps), little-endian, and may lie at any address.
 */
#ifndef ORVIKBASE_OV_TYPES_H
#define ORVIKBASE_OV_TYPES_H

#include <stdint.h>

/* ---- Capacities and sizes ------------------------------------------------------------------------------------ */

#define OV_RECORD_BYTES 69003224ULL /* size of a wave-variables record [bytes] */
#define OV_MAX_FREQUENCIES 200      /* bins of the main frequency axis */
#define OV_MAX_FREQUENCIES_FINE 400 /* bins of the fine (surface-track) frequency axis */
#define OV_MAX_DIRECTIONS 90        /* direction bins of a directional spectrum */
#define OV_MAX_SERIES 6             /* series that enter one directional estimate */
#define OV_MAX_SAMPLES 16384        /* samples of one burst */
#define OV_MAX_TRACK_SAMPLES 32768  /* elements of the double-rate surface track */
#define OV_MAX_CELLS 256            /* velocity cells of a profile */
#define OV_MAX_BEAMS 4              /* slanted beams of a profile instrument */
#define OV_WAVE_PARAMETERS 14       /* entries of OVWaveParameterSet.waveParameters */

#define OV_MISSING (-9.0F)     /* a 32-bit float result that could not be computed */
#define OV_MISSING_INTEGER (-9) /* bit pattern of OVWaveParameterSet.checkedHeight when it is missing */

/* ---- Codes --------------------------------------------------------------------------------------------------- */

/** Places of OVWaveParameterSet.waveParameters. Heights in m, periods in s, angles in degrees. */
enum OVWaveParameter {
    OV_TM02 = 0,             /* mean period sqrt(m0 / m2) */
    OV_TP = 1,               /* peak period */
    OV_PEAK_DIRECTION = 2,   /* direction at the spectral peak, [0, 360) */
    OV_PEAK_SPREAD = 3,      /* directional spread at the spectral peak */
    OV_MEAN_DIRECTION = 4,   /* energy-weighted mean direction, [0, 360] */
    OV_RESULTANT_LENGTH = 5, /* length of the mean direction vector, 0 to 1 */
    OV_HM0 = 6,              /* significant height 4 sqrt(m0) */
    OV_H_THIRD = 7,          /* mean height of the highest third (surface track), else missing */
    OV_T_THIRD = 8,          /* mean period of the highest third */
    OV_H_TENTH = 9,          /* mean height of the highest tenth; 1.27 Hm0 without a surface track */
    OV_T_TENTH = 10,         /* mean period of the highest tenth */
    OV_H_MAX = 11,           /* greatest height; 1.67 Hm0 without a surface track */
    OV_T_MAX = 12,           /* period of the highest wave */
    OV_T_CROSSING = 13       /* mean period between zero up-crossings */
};

/** Bits of OVWaveParameterSet.qualityFlags. */
enum OVQualityFlag {
    OV_FLAG_SHALLOW = 1,             /* instrument less than 1 m below the surface */
    OV_FLAG_NO_SIGNAL = 2,           /* pressure does not vary */
    OV_FLAG_WEAK_AMPLITUDE = 4,      /* a beam's echo was 17 counts or less */
    OV_FLAG_FLAT_SPECTRUM = 8,       /* the spectrum has no shape */
    OV_FLAG_INVALID_PARAMETERS = 16, /* a wave parameter is impossible or not a number */
    OV_FLAG_NO_RESULT = 32,          /* nothing was processed; stands alone */
    OV_FLAG_TRACK_RANGE = 64,        /* surface-track statistics out of range: the track was not used */
    OV_FLAG_ALIASED_PEAK = 128,      /* the peak's wavelength is too short for the sensor spacing */
    OV_FLAG_RISING_SPECTRUM = 256,   /* the spectrum never decreases */
    OV_FLAG_CLEARANCE = 512,         /* surface at the edge of the acoustic range */
    OV_FLAG_NO_TRACK = 1024,         /* no surface-track spectrum although the method wants one */
    OV_FLAG_TILT = 2048              /* tilt over 10 degrees */
};

/** OVWaveParameterSet.spectrumSource: the elevation spectrum behind the wave parameters. */
enum OVSpectrumSource { OV_SOURCE_PRESSURE = 0, OV_SOURCE_VELOCITY = 1, OV_SOURCE_SURFACE_TRACK = 3 };

/** OVInstrumentConfig.attitudeMode: coordinate system of the velocities that the host hands over. */
enum OVAttitudeMode { OV_VELOCITY_ENU = 0, OV_VELOCITY_XYZ = 1, OV_VELOCITY_BEAM = 2 };

/* ---- Host structures ----------------------------------------------------------------------------------------- */

#pragma pack(push, 1)

/** The instrument, as OVSetInstrumentConfig() takes it. 64 bytes. */
typedef struct OVInstrumentConfig {
    uint32_t pingsPerSample;     /* acoustic pings averaged into one sample */
    int32_t samplingRate;        /* whole hertz; 0 means 0.75 Hz on a 400 kHz instrument */
    uint32_t burstSamples;       /* samples per burst as configured; the header replaces it */
    float acousticFrequency;     /* Hz */
    float slantAngle;            /* of the beams, degrees from the vertical */
    int32_t instrumentType;      /* 1, 3 and 16 (profile) have rules of their own */
    int32_t attitudeMode;        /* enum OVAttitudeMode */
    int16_t transformMatrix[16]; /* beam to XYZ, row by row, 4096 stands for 1; 3 beams use nine entries */
    int16_t cellSizeCounts;      /* along-beam cell extent in timing counts */
    uint16_t configFlags;        /* bit value 32: two estimates of the surface-track level */
} OVInstrumentConfig;

/** A profile instrument, as VELTASetInstrumentConfig() takes it. 86 bytes: OVInstrumentConfig and three more fields. */
typedef struct OVProfileInstrumentConfig {
    uint32_t pingsPerSample;
    int32_t samplingRate;
    uint32_t burstSamples;
    float acousticFrequency;
    float slantAngle;
    int32_t instrumentType; /* normally 16 */
    int32_t attitudeMode;
    int16_t transformMatrix[16]; /* row by row: nine entries with three beams, sixteen with four */
    int16_t cellSizeCounts;
    uint16_t configFlags;
    float beamAzimuth[4]; /* degrees from the X axis towards the Y axis, seen with Z up; all 0: the four quarters */
    int16_t beamCount;    /* 3 or 4 */
    float lagParameter;   /* ambiguity velocity, m/s */
} OVProfileInstrumentConfig;

/** Processing choices, as OVSetProcPar() takes and corrects them. 65 bytes. */
typedef struct OVProcessingParameters {
    int32_t processingMethod;     /* 1 to 4 */
    float freqMin;                /* main axis, Hz */
    float freqMax;                /* main axis, Hz */
    float fineFreqMin;            /* fine axis, Hz */
    float fineFreqMax;            /* fine axis, Hz */
    float freqStep;               /* both axes, Hz */
    float levelOffset;            /* height of the pressure sensor above the bed, m */
    float headingOffset;          /* degrees added to every direction (magnetic declination, say) */
    int32_t dirBandWidth;         /* band averaging of cross-spectra: max(1, value / 4) transform bins, 1 to 512 */
    int32_t specBandWidth;        /* the same for the non-directional spectra */
    int32_t directionalInputMode; /* 0 pressure, 1 velocity, 2 surface track if valid, 3 surface track only */
    int32_t estimateMask;         /* 1, 2, 4: beams 1 to 3; 8: vertical beam (type 16: beam 4); 16: its track */
    int32_t nDirections;          /* direction bins, at most 90 */
    float pressureOffset;         /* added to every pressure, m of water */
    uint8_t reverseDirections;    /* not 0: directions say where waves come from, else where they go */
    float profileParamA;          /* profile instruments: trough margin, percent */
    uint32_t profileParamB;       /* profile instruments: not 0 takes the second distance as surface track */
} OVProcessingParameters;

/** The same for VELTASetProcPar(). */
typedef OVProcessingParameters OVProfileProcessingParameters;

/** Opens a burst, as OVSetWaveHeader() takes it. 57 bytes. */
typedef struct OVWaveHeader {
    uint16_t nSamples;         /* in: samples sent; out: samples used */
    int16_t pressureCounts;    /* position of the measurement cell, units of 0.02288818359375 m */
    float headerValueA;        /* kept, not used */
    float headerValueB;        /* not used */
    float heading;             /* degrees */
    float pitch;               /* degrees */
    float roll;                /* degrees */
    float headerValueC;        /* kept, not used */
    int16_t distanceCounts;    /* sensor distance in timing counts */
    uint16_t headerWords[3];   /* kept, not used */
    uint16_t reserved;         /* not read */
    uint8_t headerFlag;        /* kept, not used */
    float depthOffset;         /* type 3 at 400 kHz only: added to pressure and distances, m */
    float directDepth;         /* type 16 only: m */
    float directHeight;        /* type 16 only: m */
    uint32_t nCells;           /* cells per profile, at most 256 */
    int16_t surfaceTimeOffset; /* type 16: delay of track and pressure after velocity, 0.1 ms */
} OVWaveHeader;

/** The same for VELTASetWaveHeader(): directHeight is the vertical cell size, directDepth the vertical blanking, m. */
typedef OVWaveHeader OVProfileWaveHeader;

/** One sample of a profile instrument. 4123 bytes. */
typedef struct OVWaveSampleProfile {
    uint8_t valid;                                          /* 0: missing. Reads 1 after the call */
    uint8_t reserved[2];                                    /* not read */
    float pressure;                                         /* m of water (dbar) */
    float astDistance1;                                     /* m */
    float astDistance2;                                     /* m */
    int16_t profileVelocity[OV_MAX_BEAMS][OV_MAX_CELLS];    /* mm/s, positive away from the head */
    uint8_t profileAmplitude[OV_MAX_BEAMS][OV_MAX_CELLS];   /* counts */
    uint8_t profileCorrelation[OV_MAX_BEAMS][OV_MAX_CELLS]; /* percent */
    float attitude[3];                                      /* heading, pitch, roll, degrees */
} OVWaveSampleProfile;

/** One sample of a point instrument. 33 bytes. */
typedef struct OVWaveSample {
    uint8_t valid;         /* 0: missing. Reads 1 after the call */
    float pressure;        /* m of water (dbar) */
    float astDistance1;    /* first surface-track distance of the sample interval, m */
    float velocity[3];     /* m/s, along the beams positive away from the head, or components */
    float astDistance2;    /* second surface-track distance, m */
    uint16_t amplitude[4]; /* echo strength, counts; the fourth is not examined */
} OVWaveSample;

/** One sample with two extra channels. 45 bytes. */
typedef struct OVWaveSampleSUV {
    uint8_t valid;
    float spare; /* not read */
    float suvChannel1;
    float suvChannel2;
    float pressure;
    float astDistance1;
    float velocity[3];
    float astDistance2;
    uint16_t amplitude[4];
} OVWaveSampleSUV;

/** One row of OVPreProcessOutput. 44 bytes. */
typedef struct OVPreProcessRow {
    float attitude[3];      /* written for profile instruments only */
    float astOut;           /* cleaned surface track, m (method 1: pressure) */
    float pressureOut;      /* cleaned pressure with its mean, m of water */
    float velocity[4];      /* written for profile instruments only, m/s */
    uint8_t amplitude[4];   /* written for profile instruments only, counts */
    uint8_t correlation[4]; /* written for profile instruments only, percent */
} OVPreProcessRow;

/** Input and output of OVPreProcess(). 1,441,812 bytes. */
typedef struct OVPreProcessOutput {
    int32_t sampleCount;     /* written for profile instruments only */
    float cellVerticalRange; /* written for profile instruments only, m */
    OVPreProcessRow rows[OV_MAX_TRACK_SAMPLES];
    float windowBelow;       /* in: surface-track window below the instrument depth, m */
    float windowAbove;       /* in: surface-track window above the instrument depth, m */
    uint8_t useWindow;       /* in: 1 uses the window; it then stays in force for the record */
    uint8_t astValidOut;     /* out: 1 when the surface track is usable; only when it was cleaned */
    uint8_t skipAstCleaning; /* in: 1 leaves the surface track as it is */
    uint8_t done;            /* out: 0 when the burst was rejected */
} OVPreProcessOutput;

/** Input and output of OVPreProcessSUV(). 262,156 bytes. */
typedef struct OVPreProcessOutputSUV {
    float astOut[OV_MAX_TRACK_SAMPLES];
    float pressureOut[OV_MAX_TRACK_SAMPLES];
    float windowBelow;
    float windowAbove;
    uint8_t useWindow;
    uint8_t astValidOut;
    uint8_t skipAstCleaning;
    uint8_t done;
} OVPreProcessOutputSUV;

/** The wave parameters of a burst. 27 slots of four bytes. */
typedef struct OVWaveParameterSet {
    float waveParameters[OV_WAVE_PARAMETERS]; /* enum OVWaveParameter */
    float instrumentDepth;                    /* mean depth of the pressure sensor, m */
    int32_t astInitialBadCount;               /* surface-track elements out of range */
    int32_t astSpikeCount;                    /* surface-track spikes; without results: missing samples */
    int32_t qualityFlags;                     /* enum OVQualityFlag */
    int32_t spectrumSource;                   /* enum OVSpectrumSource */
    float astLevel;                           /* mean surface-track distance, m */
    float astLevelEven;                       /* the same of the first pings, with two estimates */
    float aliasingFrequency;                  /* first frequency without direction, Hz */
    float checkedHeight;     /* Hm0 where the spectrum's shape is sound. Missing: the integer -9's bit pattern */
    float checkedMeanPeriod; /* Tm02 where all parameters are valid, s */
    float cellVerticalRange; /* height of the measurement cell above the head, m */
    float energyPeriod;      /* Tm-10, s */
    int32_t selectedCell;    /* profile instruments: cell used, counted from 1 */
} OVWaveParameterSet;

/** The spectra of a burst by frequency bin. 12,009 bytes. */
typedef struct OVFourierCoefficientSpectra {
    uint8_t spectrumKind;                         /* 15 with a valid surface track, else 11 */
    int32_t count;                                /* bins of the main axis */
    int32_t fineCount;                            /* bins of the fine axis */
    float energySpectrum[OV_MAX_FREQUENCIES];     /* elevation spectrum from pressure, m^2/Hz */
    uint32_t binInfo[OV_MAX_FREQUENCIES][4];      /* f32 bits: elevation spectrum of each beam, m^2/Hz */
    float secondSpectrum[OV_MAX_FREQUENCIES];     /* elevation spectrum from velocity, m^2/Hz */
    float fineSpectrum[OV_MAX_FREQUENCIES_FINE];  /* surface-track spectrum on the fine axis, m^2/Hz */
    float direction[OV_MAX_FREQUENCIES];          /* mean direction, degrees */
    float spread[OV_MAX_FREQUENCIES];             /* directional spread, degrees */
    float coefP[OV_MAX_FREQUENCIES];              /* minus b1 */
    float coefQ[OV_MAX_FREQUENCIES];              /* minus a1 */
    float coefR[OV_MAX_FREQUENCIES];              /* minus a2 */
    float coefS[OV_MAX_FREQUENCIES];              /* b2 */
    float bandValue[OV_MAX_FREQUENCIES];          /* check ratio of two elevation estimates */
} OVFourierCoefficientSpectra;

/** The spectrum behind the wave parameters; only `count` values are written. */
typedef struct OVEnergySpectrumBlock {
    int32_t count;
    float values[OV_MAX_FREQUENCIES]; /* m^2/Hz */
} OVEnergySpectrumBlock;

/** The same scaled to 16 bits: value = energy * 10000 * 65535 / scaleMax. */
typedef struct OVScaledEnergySpectrum {
    uint32_t scaleMax; /* greatest energy * 10000 */
    uint16_t values[OV_MAX_FREQUENCIES_FINE];
} OVScaledEnergySpectrum;

/** Mean current of a burst. Selector 0: east, north, up, m/s. Selector 1: speed m/s, direction degrees, 0. */
typedef struct OVMeanCurrentQuery {
    int32_t selector;
    float valueA;
    float valueB;
    float valueC;
} OVMeanCurrentQuery;

/** A spectrum from the host, as OVSetSpectraUsed() takes it. Only the values that the count names are read. */
typedef struct OVSpectraUsedInput {
    uint32_t selector;                     /* 0 or 1: count1 values, otherwise count2 */
    int32_t count1;                        /* bins of the main axis */
    int32_t count2;                        /* bins of the fine axis */
    float values[OV_MAX_FREQUENCIES_FINE]; /* m^2/Hz */
} OVSpectraUsedInput;

/** Wave parameters over a band. 40 bytes. */
typedef struct OVBandEstimate {
    float fLow;                  /* in: lower limit, Hz */
    float fHigh;                 /* in: upper limit, Hz */
    float bandHm0;               /* 4 sqrt(m0), m */
    float bandTm02;              /* sqrt(m0 / m2), s */
    float bandZero;              /* 0 after a processed burst */
    float bandPeakDirection;     /* degrees */
    float bandMeanDirection;     /* degrees */
    float bandPeakSpread;        /* degrees */
    float bandMeanSpread;        /* degrees */
    uint16_t bandStatus;         /* 32 without a processed burst, else 0 */
    uint16_t bandSpectrumSource; /* enum OVSpectrumSource */
} OVBandEstimate;

#pragma pack(pop)

/**
 * The wave-variables record: everything the library knows about one burst, OV_RECORD_BYTES long, without pointers.
 * A host keeps, copies or supplies it as raw memory aligned for double; zeroed memory is a valid record.
 */
typedef struct OVRecord OVRecord;

#endif /* ORVIKBASE_OV_TYPES_H */
