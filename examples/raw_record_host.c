/* A record is raw memory: this host copies one in the middle of a burst, keeps it in a file, and goes on with either.
   What a record knows goes along: configuration, parameters, samples, results. */
#include <stdio.h>
#include <stdlib.h>
#include <string.h>

#include "orvikbase/orvikbase.h"
#include "regular_wave.h"

enum { kSamples = 2048 };

/* Memory from calloc() is zeroed and aligned for a double: all that a record asks for. */
static OVRecord *newRecord(void) { return calloc(1, (size_t)VELTAGetWaveVariableNbytes()); }

static void openBurst(OVRecord *record) {
    OVInstrumentConfig config = {.pingsPerSample = 60, .samplingRate = 2, .instrumentType = 3};
    OVProcessingParameters parameters = {.processingMethod = 1, .nDirections = 90};
    OVWaveHeader header = {.nSamples = kSamples};
    config.acousticFrequency = 1.0e6F;
    parameters.freqMin = 5.0F / 128.0F;
    parameters.freqMax = 0.3F;
    parameters.freqStep = 1.0F / 128.0F;
    parameters.levelOffset = 1.0F;
    parameters.reverseDirections = 1; /* where waves come from */
    OVSetInstrumentConfig_ptr(record, &config);
    OVSetProcPar_ptr(record, &parameters);
    OVSetWaveHeader_ptr(record, &header);
}

static void send(OVRecord *record, int from, int to) {
    const RegularWave wave = {0.5, 90.0};
    for (int i = from; i < to; ++i) {
        const WaterMotion motion = motionAt(wave, 0.5 * i);
        OVWaveSample sample = {.valid = 1, .amplitude = {150, 150, 150}};
        sample.pressure = motion.pressure;
        sample.velocity[0] = motion.east;
        sample.velocity[1] = motion.north;
        OVSetWaveSample_ptr(record, &sample);
    }
}

/* The output is large and only looked at here for whether the burst may be processed. */
static int process(OVRecord *record, OVPreProcessOutput *output) {
    return OVPreProcess_ptr(record, 0, output) == 0 && output->done && OVProcess_ptr(record);
}

static void print(const char *name, OVRecord *record) {
    OVWaveParameterSet waves;
    OVGetWavePar_ptr(record, &waves);
    printf("%s: Hm0 %.2f m, Tp %.1f s, from %.0f degrees\n", name, waves.waveParameters[OV_HM0],
           waves.waveParameters[OV_TP], waves.waveParameters[OV_PEAK_DIRECTION]);
}

static int save(FILE *file, const OVRecord *record) {
    rewind(file);
    return fwrite(record, (size_t)VELTAGetWaveVariableNbytes(), 1, file) == 1 && fflush(file) == 0;
}

static int load(FILE *file, OVRecord *record) {
    rewind(file);
    return fread(record, (size_t)VELTAGetWaveVariableNbytes(), 1, file) == 1;
}

static int run(OVRecord *record, OVRecord *copy, OVPreProcessOutput *output, FILE *file) {
    openBurst(record);
    send(record, 0, kSamples / 2);
    memcpy(copy, record, (size_t)VELTAGetWaveVariableNbytes()); /* half a burst */
    send(record, kSamples / 2, kSamples);
    if (!process(record, output))
        return 1;
    print("record", record);
    if (!save(file, record)) /* with its results */
        return 1;
    print("copy before its second half", copy);
    send(copy, kSamples / 2, kSamples);
    if (!process(copy, output))
        return 1;
    print("copy", copy);
    memset(copy, 0, (size_t)VELTAGetWaveVariableNbytes());
    if (!load(file, copy))
        return 1;
    print("loaded", copy);
    if (!OVProcess_ptr(copy)) /* its cleaned samples came along */
        return 1;
    print("processed again", copy);
    return 0;
}

int main(void) {
    OVRecord *record = newRecord(), *copy = newRecord();
    OVPreProcessOutput *output = calloc(1, sizeof(OVPreProcessOutput));
    FILE *file = tmpfile();
    int status = 1;
    if (record != NULL && copy != NULL && output != NULL && file != NULL)
        status = run(record, copy, output, file);
    if (file != NULL)
        fclose(file);
    free(output);
    free(copy);
    free(record);
    return status;
}
