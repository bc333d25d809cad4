/*
 * Every entry point, called from C99. One burst goes through the library three times, on three records: by the forms
 * that take the record, by those on the current record, and by the flattened ones where they exist. All must answer
 * with the same bytes.
 *
 * The burst is made of integers: three triangular waves towards the east and some noise.
 */
#include <stddef.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>

#include "orvikbase/orvikbase.h"

enum {
    SAMPLES = 1024,
    PROFILE_SAMPLES = 256,
    PROFILE_CELLS = 8,
    PROFILE_TYPE = 16,
    ROWS = OV_MAX_FREQUENCIES * OV_MAX_DIRECTIONS
};

enum Form { BY_POINTER, ON_CURRENT, FLATTENED };

static int failures = 0;

static void expectTrue(int holds, const char *what) {
    if (!holds) {
        fprintf(stderr, "failed: %s\n", what);
        ++failures;
    }
}

static void expectStatus(int32_t status, int32_t expected, const char *what) {
    if (status != expected) {
        fprintf(stderr, "failed: %s answers %d instead of %d\n", what, (int)status, (int)expected);
        ++failures;
    }
}

/* ---- The burst ------------------------------------------------------------------------------- */

/* Everything that is measured at one instant, in thousandths of a metre (a second). */
struct Motion {
    int elevation, pressure, east, up;
};

static int triangle(int phase, int period, int amplitude) {
    const int p = (phase % period + period) % period;
    const int half = period / 2;
    return amplitude - 2 * amplitude * (p < half ? p : period - p) / half;
}

/* `eighths` of a sample, so that the two surface-track distances of a sample differ. */
static struct Motion motionAt(int eighths) {
    static const int kPeriods[3] = {128, 98, 72};
    static const int kAmplitudes[3] = {420, 260, 150};
    static const int kPressureShare[3] = {75, 60, 35};
    struct Motion sum = {0, 0, 0, 0};
    int i;
    for (i = 0; i < 3; ++i) {
        const int wave = triangle(eighths, kPeriods[i], kAmplitudes[i]);
        const int early = triangle(eighths + kPeriods[i] / 4, kPeriods[i], kAmplitudes[i]);
        sum.elevation += wave;
        sum.pressure += wave * kPressureShare[i] / 100;
        sum.east += wave * 80 / 100;
        sum.up += early * 45 / 100;
    }
    return sum;
}

static int noise(uint32_t *state, int range) {
    *state = *state * 1664525U + 1013904223U;
    return (int)((*state >> 16) % (uint32_t)(2 * range + 1)) - range;
}

/* Beams of 25 degrees slant at 0, 120 and 240 degrees from X (north) towards Y (west). */
static int alongBeam(const struct Motion *motion, int beam) {
    static const int kEastShare[3] = {0, -366, 366};
    return (motion->east * kEastShare[beam] + motion->up * 906) / 1000;
}

static float metres(int thousandths) { return (float)thousandths / 1000.0F; }

static OVWaveSample sampleAt(int index, uint32_t *state) {
    const struct Motion first = motionAt(8 * index);
    const struct Motion second = motionAt(8 * index + 4);
    OVWaveSample sample;
    int beam;
    memset(&sample, 0, sizeof sample);
    sample.valid = (uint8_t)(index % 101 != 50);
    sample.pressure = metres(12000 + first.pressure + noise(state, 5));
    sample.astDistance1 = metres(12000 + first.elevation + noise(state, 10));
    sample.astDistance2 = metres(12000 + second.elevation + noise(state, 10));
    for (beam = 0; beam < 3; ++beam) {
        sample.velocity[beam] = metres(alongBeam(&first, beam) + noise(state, 20));
        sample.amplitude[beam] = (uint16_t)(150 + noise(state, 20));
    }
    return sample;
}

static OVInstrumentConfig makeConfig(void) {
    static const int16_t kMatrix[9] = {6461, -3231, -3231, 0, 5596, -5596, 1506, 1506, 1506};
    OVInstrumentConfig config;
    memset(&config, 0, sizeof config);
    config.pingsPerSample = 60;
    config.samplingRate = 2;
    config.burstSamples = SAMPLES;
    config.acousticFrequency = 1.0e6F;
    config.slantAngle = 25.0F;
    config.instrumentType = 3;
    config.attitudeMode = OV_VELOCITY_BEAM;
    memcpy(config.transformMatrix, kMatrix, sizeof kMatrix);
    config.cellSizeCounts = 100;
    return config;
}

static OVProcessingParameters makeParameters(void) {
    OVProcessingParameters parameters;
    memset(&parameters, 0, sizeof parameters);
    parameters.processingMethod = 4;
    parameters.freqMin = 0.03F;
    parameters.freqMax = 0.49F;
    parameters.fineFreqMin = 0.03F;
    parameters.fineFreqMax = 0.99F;
    parameters.freqStep = 0.01F;
    parameters.levelOffset = 1.0F;
    parameters.dirBandWidth = 32;
    parameters.specBandWidth = 32;
    parameters.directionalInputMode = 2;
    parameters.estimateMask = 15;
    parameters.nDirections = OV_MAX_DIRECTIONS;
    parameters.reverseDirections = 1;
    return parameters;
}

static OVWaveHeader makeHeader(int samples) {
    OVWaveHeader header;
    memset(&header, 0, sizeof header);
    header.nSamples = (uint16_t)samples;
    header.pressureCounts = 371;
    header.heading = 15.0F;
    header.pitch = 1.0F;
    header.roll = -2.0F;
    return header;
}

/* ---- What comes out -------------------------------------------------------------------------- */

struct Results {
    OVWaveHeader header;
    OVWaveParameterSet parameters;
    OVFourierCoefficientSpectra spectra[2]; /* the second call finds less directions */
    OVEnergySpectrumBlock energy;
    float energyInPlace[OV_MAX_FREQUENCIES];
    OVScaledEnergySpectrum scaled[2];
    OVMeanCurrentQuery current[3];
    OVBandEstimate bands[2];
    float energyDirections[ROWS];
    float entropyDirections[ROWS];
    OVFourierCoefficientSpectra blockDirections;
    OVFourierCoefficientSpectra loadedCoefficients;
    OVEnergySpectrumBlock loadedEnergy;
    float track[OV_MAX_TRACK_SAMPLES];
};

static void compare(const struct Results *a, const struct Results *b, const char *forms) {
#define COMPARE(field)                                                                             \
    do {                                                                                           \
        if (memcmp((const unsigned char *)a + offsetof(struct Results, field),                     \
                   (const unsigned char *)b + offsetof(struct Results, field),                     \
                   sizeof a->field) != 0) {                                                        \
            fprintf(stderr, "failed: %s: %s differs\n", forms, #field);                            \
            ++failures;                                                                            \
        }                                                                                          \
    } while (0)
    COMPARE(header);
    COMPARE(parameters);
    COMPARE(spectra);
    COMPARE(energy);
    COMPARE(energyInPlace);
    COMPARE(scaled);
    COMPARE(current);
    COMPARE(bands);
    COMPARE(energyDirections);
    COMPARE(entropyDirections);
    COMPARE(blockDirections);
    COMPARE(loadedCoefficients);
    COMPARE(loadedEnergy);
    COMPARE(track);
#undef COMPARE
}

/* Enough of a sea that equal bytes mean something. */
static void expectWaves(const struct Results *results) {
    const float height = results->parameters.waveParameters[OV_HM0];
    const float direction = results->parameters.waveParameters[OV_MEAN_DIRECTION];
    expectTrue(height > 0.5F && height < 3.0F, "the significant height is that of the waves");
    expectTrue(direction >= 0.0F && direction <= 360.0F, "the mean direction is an angle");
    expectTrue(results->spectra[0].count == 47, "the main axis has 47 bins");
    expectTrue(results->bands[0].bandHm0 > 0.5F, "the band has energy");
    expectTrue(results->entropyDirections[5 * OV_MAX_DIRECTIONS] > 0.0F,
               "there is a directional distribution");
    expectTrue(results->track[100] > 10.0F, "the surface track has its distance");
}

/* ---- Input ----------------------------------------------------------------------------------- */

static void configure(enum Form form, OVRecord *record) {
    const OVInstrumentConfig config = makeConfig();
    OVProcessingParameters p = makeParameters();
    int16_t matrix[16];
    memcpy(matrix, config.transformMatrix, sizeof matrix);
    switch (form) {
    case BY_POINTER:
        expectStatus(OVSetInstrumentConfig_ptr(record, &config), 0, "configuration");
        expectStatus(OVSetProcPar_ptr(record, &p), 0, "parameters");
        break;
    case ON_CURRENT:
        expectStatus(OVSetInstrumentConfig(&config), 0, "configuration");
        expectStatus(OVSetProcPar(&p), 0, "parameters");
        break;
    default:
        expectStatus(OVSetInstrumentConfigLV(
                         config.pingsPerSample, config.samplingRate, config.burstSamples,
                         config.acousticFrequency, config.slantAngle, config.instrumentType,
                         config.attitudeMode, matrix, (uint16_t)config.cellSizeCounts),
                     0, "flattened configuration");
        expectStatus(OVSetProcParLV(p.processingMethod, p.freqMin, p.freqMax, p.fineFreqMin,
                                    p.fineFreqMax, p.freqStep, p.levelOffset, p.headingOffset,
                                    p.dirBandWidth, p.specBandWidth, p.directionalInputMode,
                                    p.estimateMask, p.nDirections, p.pressureOffset,
                                    p.reverseDirections),
                     0, "flattened parameters");
        break;
    }
}

static void openBurst(enum Form form, OVRecord *record, OVWaveHeader *header) {
    static const uint16_t kWords[4] = {0, 0, 0, 0};
    switch (form) {
    case BY_POINTER:
        expectStatus(OVSetWaveHeader_ptr(record, header), 1, "header");
        break;
    case ON_CURRENT:
        expectStatus(OVSetWaveHeader(header), 1, "header");
        break;
    default:
        expectStatus(OVSetWaveHeaderLV(header->nSamples, header->pressureCounts,
                                       header->headerValueA, header->headerValueB, header->heading,
                                       header->pitch, header->roll, header->headerValueC,
                                       header->distanceCounts, kWords, header->headerFlag),
                     1, "flattened header");
        break;
    }
}

static void sendSample(enum Form form, OVRecord *record, OVWaveSample *sample) {
    float values[4];
    uint16_t amplitude[4];
    memcpy(values, sample->velocity, sizeof sample->velocity);
    values[3] = sample->astDistance2;
    memcpy(amplitude, sample->amplitude, sizeof amplitude);
    switch (form) {
    case BY_POINTER:
        expectStatus(OVSetWaveSample_ptr(record, sample), 0, "sample");
        break;
    case ON_CURRENT:
        expectStatus(OVSetWaveSample(sample), 0, "sample");
        break;
    default:
        expectStatus(OVSetWaveSampleLV(sample->valid, sample->pressure, sample->astDistance1,
                                       values, amplitude),
                     0, "flattened sample");
        break;
    }
}

static void preProcess(enum Form form, OVRecord *record, float *track) {
    OVPreProcessOutput *const output = calloc(1, sizeof *output);
    int i;
    if (output == NULL) {
        expectTrue(0, "memory for pre-processing");
        return;
    }
    if (form == FLATTENED) {
        expectStatus(OVPreProcessLV(0, track, 0.0F, 0.0F, 0, 0, 0, 0), 0, "flattened cleaning");
    } else {
        if (form == BY_POINTER) {
            expectStatus(OVPreProcess_ptr(record, 0, output), 0, "cleaning");
        } else {
            expectStatus(OVPreProcess(0, output), 0, "cleaning");
        }
        expectTrue(output->done == 1, "the burst is accepted");
        for (i = 0; i < OV_MAX_TRACK_SAMPLES; ++i) {
            track[i] = output->rows[i].astOut;
        }
    }
    free(output);
}

/* Processing does not use its input up: each way of asking for it gives the same. */
static void process(enum Form form, OVRecord *record) {
    static int hook = 0;
    switch (form) {
    case BY_POINTER:
        expectTrue(OVProcess_ptr(record), "processing");
        expectStatus(OVProcessReturnInt_ptr(record), 1, "processing as an integer");
        expectTrue(VELTAWaveProcess_ptr(record, &hook), "processing with a hook");
        break;
    case ON_CURRENT:
        expectTrue(OVProcess(), "processing");
        expectStatus(OVProcessReturnInt(), 1, "processing as an integer");
        expectTrue(VELTAWaveProcess(&hook), "processing with a hook");
        break;
    default:
        expectStatus(OVProcessReturnIntLV(), 1, "flattened processing");
        break;
    }
    expectTrue(hook == 0, "the hook is not touched");
}

/* ---- Output ---------------------------------------------------------------------------------- */

static void readParameters(enum Form form, OVRecord *record, OVWaveParameterSet *out) {
    float w[OV_WAVE_PARAMETERS];
    float f[8];
    int32_t n[5];
    if (form == BY_POINTER) {
        expectStatus(OVGetWavePar_ptr(record, out), 0, "wave parameters");
        return;
    }
    if (form == ON_CURRENT) {
        expectStatus(OVGetWavePar(out), 0, "wave parameters");
        return;
    }
    expectStatus(OVGetWaveParLV(w, &f[0], &n[0], &n[1], &n[2], &n[3], &f[1], &f[2], &f[3], &f[4],
                                &f[5], &f[6], &f[7], &n[4]),
                 0, "flattened wave parameters");
    memcpy(out->waveParameters, w, sizeof w);
    out->instrumentDepth = f[0];
    out->astInitialBadCount = n[0];
    out->astSpikeCount = n[1];
    out->qualityFlags = n[2];
    out->spectrumSource = n[3];
    out->astLevel = f[1];
    out->astLevelEven = f[2];
    out->aliasingFrequency = f[3];
    memcpy((unsigned char *)out + offsetof(OVWaveParameterSet, checkedHeight), &f[4], sizeof f[4]);
    out->checkedMeanPeriod = f[5];
    out->cellVerticalRange = f[6];
    out->energyPeriod = f[7];
    out->selectedCell = n[4];
}

/* Zeroed first: the flattened form hands the places of unused beams through. */
static void readSpectra(enum Form form, OVRecord *record, OVFourierCoefficientSpectra *out) {
    static float f[9][OV_MAX_FREQUENCIES];
    static float fine[OV_MAX_FREQUENCIES_FINE];
    static uint32_t beams[OV_MAX_FREQUENCIES * 4];
    uint8_t kind;
    int32_t counts[2];
    if (form == BY_POINTER) {
        expectStatus(OVGetWaveSpectrum_ptr(record, out), 0, "spectra");
        return;
    }
    if (form == ON_CURRENT) {
        expectStatus(OVGetWaveSpectrum(out), 0, "spectra");
        return;
    }
    memset(beams, 0, sizeof beams);
    expectStatus(OVGetWaveSpectrumLV(&kind, &counts[0], &counts[1], f[0], beams, f[1], fine, f[2],
                                     f[3], f[4], f[5], f[6], f[7], f[8]),
                 0, "flattened spectra");
    out->spectrumKind = kind;
    out->count = counts[0];
    out->fineCount = counts[1];
    memcpy(out->energySpectrum, f[0], sizeof f[0]);
    memcpy(out->binInfo, beams, sizeof beams);
    memcpy(out->secondSpectrum, f[1], sizeof f[1]);
    memcpy(out->fineSpectrum, fine, sizeof fine);
    memcpy(out->direction, f[2], sizeof f[2]);
    memcpy(out->spread, f[3], sizeof f[3]);
    memcpy(out->coefP, f[4], sizeof f[4]);
    memcpy(out->coefQ, f[5], sizeof f[5]);
    memcpy(out->coefR, f[6], sizeof f[6]);
    memcpy(out->coefS, f[7], sizeof f[7]);
    memcpy(out->bandValue, f[8], sizeof f[8]);
}

static void readEnergy(enum Form form, OVRecord *record, struct Results *out) {
    const int byPointer = form == BY_POINTER;
    float *inPlace = NULL;
    int32_t count = 0;
    expectStatus(byPointer ? OVGetEnergySpecStruct_ptr(record, &out->energy)
                           : OVGetEnergySpecStruct(&out->energy),
                 0, "energy");
    expectStatus(byPointer ? OVGetEnergySpec_ptr(record, &inPlace, &count)
                           : OVGetEnergySpec(&inPlace, &count),
                 0, "energy in place");
    expectTrue(inPlace != NULL && count == out->energy.count, "the spectrum's address and length");
    if (inPlace != NULL) {
        memcpy(out->energyInPlace, inPlace, (size_t)count * sizeof *inPlace);
    }
    expectStatus(byPointer ? OVGetScaledEnergySpec_ptr(record, &out->scaled[0])
                           : OVGetScaledEnergySpec(&out->scaled[0]),
                 0, "scaled energy");
    expectStatus(byPointer ? OVGetScaledEnergySpecAllType_ptr(record, 1, &out->scaled[1])
                           : OVGetScaledEnergySpecAllType(1, &out->scaled[1]),
                 0, "scaled energy of a kind");
}

static void readCurrent(enum Form form, OVRecord *record, OVMeanCurrentQuery *out) {
    float v[3] = {0.0F, 0.0F, 0.0F};
    int selector;
    for (selector = 0; selector < 2; ++selector) {
        out[selector].selector = selector;
        if (form == BY_POINTER) {
            expectStatus(OVGetMeanBurstCurrent_ptr(record, &out[selector]), 0, "current");
        } else if (form == ON_CURRENT) {
            expectStatus(OVGetMeanBurstCurrent(&out[selector]), 0, "current");
        } else {
            expectStatus(OVGetMeanBurstCurrentLV(selector, &v[0], &v[1], &v[2]), 0, "current");
            out[selector].valueA = v[0];
            out[selector].valueB = v[1];
            out[selector].valueC = v[2];
        }
    }
    expectStatus(form == BY_POINTER ? VELTAGetMeanBurstCurrent_ptr(record, 0, &out[2])
                                    : VELTAGetMeanBurstCurrent(0, &out[2]),
                 0, "current by selector");
}

/* The first band is the whole axis, as the flattened form has it. */
static void readBands(enum Form form, OVRecord *record, OVBandEstimate *out) {
    const float kLimitless = 3.4028234663852886e38F;
    float v[6];
    uint32_t spread;
    uint16_t status;
    int i;
    out[0].fHigh = kLimitless;
    out[1].fLow = 0.05F;
    out[1].fHigh = 0.2F;
    for (i = 0; i < 2; ++i) {
        expectStatus(form == BY_POINTER ? OVGetBandEst_ptr(record, &out[i]) : OVGetBandEst(&out[i]),
                     0, "band");
    }
    if (form == FLATTENED) {
        const uint16_t source = out[0].bandSpectrumSource; /* the one field it has no pointer for */
        memset(&out[0], 0, sizeof out[0]);
        out[0].fHigh = kLimitless;
        out[0].bandSpectrumSource = source;
        expectStatus(OVGetBandEstLV(&v[0], &v[1], &v[2], &v[3], &v[4], &v[5], &spread, &status), 0,
                     "flattened band");
        out[0].bandHm0 = v[0];
        out[0].bandTm02 = v[1];
        out[0].bandZero = v[2];
        out[0].bandPeakDirection = v[3];
        out[0].bandMeanDirection = v[4];
        out[0].bandPeakSpread = v[5];
        memcpy((unsigned char *)&out[0] + offsetof(OVBandEstimate, bandMeanSpread), &spread,
               sizeof spread);
        out[0].bandStatus = status;
    }
}

static void exchangeDirections(enum Form form, OVRecord *record, struct Results *out) {
    const int byPointer = form == BY_POINTER;
    OVSpectraUsedInput *const input = calloc(1, sizeof *input);
    if (input == NULL) {
        expectTrue(0, "memory for a spectrum");
        return;
    }
    expectStatus(byPointer ? OVGetFullDirSpectraWithEnergy_ptr(record, out->energyDirections)
                           : OVGetFullDirSpectraWithEnergy(out->energyDirections),
                 0, "directions with energy");
    expectStatus(byPointer ? OVGetFullWaveDirSpectrum_ptr(record, out->entropyDirections)
                           : OVGetFullWaveDirSpectrum(out->entropyDirections),
                 0, "maximum entropy");
    out->blockDirections = out->spectra[0];
    expectStatus(byPointer ? OVGetDirectionalSpectrum_ptr(record, &out->blockDirections)
                           : OVGetDirectionalSpectrum(&out->blockDirections),
                 0, "directions of a block");
    out->loadedCoefficients = out->spectra[0];
    expectStatus(byPointer ? OVSetFourierCoefficientSpectra_ptr(record, &out->loadedCoefficients)
                           : OVSetFourierCoefficientSpectra(&out->loadedCoefficients),
                 0, "coefficients");
    input->count1 = 2;
    input->values[0] = 0.5F;
    input->values[1] = 0.25F;
    expectStatus(byPointer ? OVSetSpectraUsed_ptr(record, input) : OVSetSpectraUsed(input), 0,
                 "a spectrum of the host's");
    expectStatus(byPointer ? OVGetEnergySpecStruct_ptr(record, &out->loadedEnergy)
                           : OVGetEnergySpecStruct(&out->loadedEnergy),
                 0, "energy again");
    expectTrue(out->loadedEnergy.values[1] == 0.25F, "the host's spectrum is in use");
    free(input);
}

static struct Results *runBurst(enum Form form, OVRecord *record) {
    struct Results *const out = calloc(1, sizeof *out);
    uint32_t state = 20240611U;
    int i;
    if (out == NULL) {
        return NULL;
    }
    VELTASetWaveVariablesPointer(form == BY_POINTER ? NULL : record);
    configure(form, record);
    out->header = makeHeader(SAMPLES);
    openBurst(form, record, &out->header);
    for (i = 0; i < SAMPLES; ++i) {
        OVWaveSample sample = sampleAt(i, &state);
        sendSample(form, record, &sample);
    }
    preProcess(form, record, out->track);
    process(form, record);
    readParameters(form, record, &out->parameters);
    readSpectra(form, record, &out->spectra[0]);
    readSpectra(form, record, &out->spectra[1]);
    readEnergy(form, record, out);
    readCurrent(form, record, out->current);
    readBands(form, record, out->bands);
    exchangeDirections(form, record, out);
    return out;
}

/* ---- The other sample forms ------------------------------------------------------------------ */

static OVPreProcessOutputSUV *runSuv(int byPointer, OVRecord *record) {
    OVPreProcessOutputSUV *const out = calloc(1, sizeof *out);
    OVWaveHeader header = makeHeader(SAMPLES);
    uint32_t state = 7U;
    int i;
    if (out == NULL) {
        return NULL;
    }
    VELTASetWaveVariablesPointer(byPointer ? NULL : record);
    configure(byPointer ? BY_POINTER : ON_CURRENT, record);
    openBurst(byPointer ? BY_POINTER : ON_CURRENT, record, &header);
    for (i = 0; i < SAMPLES; ++i) {
        const OVWaveSample point = sampleAt(i, &state);
        OVWaveSampleSUV sample;
        memset(&sample, 0, sizeof sample);
        sample.valid = point.valid;
        sample.suvChannel1 = (float)i;
        sample.pressure = point.pressure;
        sample.astDistance1 = point.astDistance1;
        memcpy(sample.velocity, point.velocity, sizeof sample.velocity);
        sample.astDistance2 = point.astDistance2;
        memcpy(sample.amplitude, point.amplitude, sizeof sample.amplitude);
        expectStatus(byPointer ? OVSetWaveSampleSUV_ptr(record, &sample)
                               : OVSetWaveSampleSUV(&sample),
                     0, "sample with extra channels");
    }
    expectStatus(byPointer ? OVPreProcessSUV_ptr(record, 0, out) : OVPreProcessSUV(0, out), 0,
                 "cleaning with extra channels");
    expectTrue(out->done == 1 && out->pressureOut[10] > 10.0F, "the burst is accepted");
    return out;
}

static void openProfile(int byPointer, OVRecord *record) {
    const OVInstrumentConfig point = makeConfig();
    OVProfileInstrumentConfig config;
    OVProfileProcessingParameters parameters = makeParameters();
    OVProfileWaveHeader header = makeHeader(PROFILE_SAMPLES);
    memset(&config, 0, sizeof config);
    memcpy(&config, &point, sizeof point);
    config.instrumentType = PROFILE_TYPE;
    config.beamCount = 4;
    config.lagParameter = 1.5F;
    parameters.estimateMask = 31;
    parameters.profileParamA = 90.0F;
    header.directHeight = 1.0F;
    header.directDepth = 0.5F;
    header.nCells = PROFILE_CELLS;
    expectStatus(byPointer ? VELTASetInstrumentConfig_ptr(record, &config)
                           : VELTASetInstrumentConfig(&config),
                 0, "profile configuration");
    expectStatus(byPointer ? VELTASetProcPar_ptr(record, &parameters)
                           : VELTASetProcPar(&parameters),
                 0, "profile parameters");
    expectStatus(byPointer ? VELTASetWaveHeader_ptr(record, &header) : VELTASetWaveHeader(&header),
                 1, "profile header");
}

static OVWaveSampleProfile profileOf(const OVWaveSample *point) {
    OVWaveSampleProfile sample;
    int beam;
    int cell;
    memset(&sample, 0, sizeof sample);
    sample.valid = point->valid;
    sample.pressure = point->pressure;
    sample.astDistance1 = point->astDistance1;
    sample.astDistance2 = point->astDistance2;
    for (beam = 0; beam < OV_MAX_BEAMS; ++beam) {
        const float velocity = beam < 3 ? point->velocity[beam] : -point->velocity[1];
        for (cell = 0; cell < PROFILE_CELLS; ++cell) {
            sample.profileVelocity[beam][cell] = (int16_t)(velocity * 1000.0F);
            sample.profileAmplitude[beam][cell] = (uint8_t)(150 - cell);
            sample.profileCorrelation[beam][cell] = 90;
        }
    }
    sample.attitude[0] = 15.0F;
    return sample;
}

static OVPreProcessOutput *runProfile(int byPointer, OVRecord *record) {
    OVPreProcessOutput *const out = calloc(1, sizeof *out);
    uint32_t state = 8U;
    int i;
    if (out == NULL) {
        return NULL;
    }
    VELTASetWaveVariablesPointer(byPointer ? NULL : record);
    openProfile(byPointer, record);
    for (i = 0; i < PROFILE_SAMPLES; ++i) {
        const OVWaveSample point = sampleAt(i, &state);
        OVWaveSampleProfile sample = profileOf(&point);
        expectStatus(byPointer ? VELTASetWaveSampleProfile_ptr(record, &sample)
                               : VELTASetWaveSampleProfile(&sample),
                     0, "profile sample");
    }
    expectStatus(byPointer ? VELTAPreProcess_ptr(record, 0, out) : VELTAPreProcess(0, out), 0,
                 "profile cleaning");
    expectTrue(out->done == 1 && out->rows[10].pressureOut > 10.0F, "the profile is accepted");
    return out;
}

static void compareOtherForms(OVRecord *given, OVRecord *current) {
    OVPreProcessOutputSUV *const suv[2] = {runSuv(1, given), runSuv(0, current)};
    OVPreProcessOutput *const profile[2] = {runProfile(1, given), runProfile(0, current)};
    expectTrue(suv[0] != NULL && suv[1] != NULL && memcmp(suv[0], suv[1], sizeof *suv[0]) == 0,
               "extra channels: both forms give the same");
    expectTrue(profile[0] != NULL && profile[1] != NULL &&
                   memcmp(profile[0], profile[1], sizeof *profile[0]) == 0,
               "profiles: both forms give the same");
    free(suv[0]);
    free(suv[1]);
    free(profile[0]);
    free(profile[1]);
}

/* ---------------------------------------------------------------------------------------------- */

int main(void) {
    OVRecord *records[3];
    struct Results *results[3] = {NULL, NULL, NULL};
    char version[5] = "????";
    int i;
    expectTrue(VELTAGetWaveVariableNbytes() == OV_RECORD_BYTES, "the size of a record");
    expectStatus(OVGetOrvikBaseVer(version, (int16_t)sizeof version), 0, "version");
    expectTrue(version[0] >= '0' && version[0] <= '9', "the version starts with a number");
    for (i = 0; i < 3; ++i) {
        records[i] = OVAllocateVarPtr();
        if (records[i] == NULL) {
            fprintf(stderr, "no memory for a record\n");
            return 1;
        }
    }
    for (i = 0; i < 3; ++i) {
        results[i] = runBurst((enum Form)i, records[i]);
    }
    if (results[0] != NULL && results[1] != NULL && results[2] != NULL) {
        expectWaves(results[0]);
        compare(results[0], results[1], "given and current record");
        compare(results[1], results[2], "structures and single fields");
    } else {
        expectTrue(0, "memory for the results");
    }
    compareOtherForms(records[0], records[1]);
    VELTASetWaveVariablesPointer(NULL);
    for (i = 0; i < 3; ++i) {
        free(results[i]);
        OVFreeVarPtr(records[i]);
    }
    if (failures == 0) {
        printf("every form of every entry point gives the same bytes\n");
    }
    return failures == 0 ? 0 : 1;
}
