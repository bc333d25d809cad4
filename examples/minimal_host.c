/* One burst through the library: a regular wave of 1 m height and 8.5 s period from the west. Four
   standard deviations are 1.41 m; Hm0 and Tp come from bands 0.008 Hz wide, hence within 3 %. */
#include <math.h>
#include <stdio.h>
#include <stdlib.h>

#include "orvikbase/orvikbase.h"

enum { kSamples = 2048 };
static const double kDepth = 13.0, kHeadHeight = 1.0; /* m */
static const double kOmega = 0.7363107781851077;      /* 15/128 Hz, in rad/s */
static const double kWavenumber = 0.0741048387724761; /* its linear wave in 13 m of water, rad/m */

/* The sample at second t: linear theory for a wave that runs eastwards. */
static OVWaveSample sampleAt(double t) {
    const double decay = cosh(kWavenumber * kHeadHeight) / cosh(kWavenumber * kDepth);
    const double dynamic = 0.5 * cos(kOmega * t) * decay; /* m of water */
    OVWaveSample sample = {.valid = 1, .amplitude = {150, 150, 150}};
    sample.pressure = (float)(kDepth - kHeadHeight + dynamic);
    sample.velocity[0] = (float)(dynamic * 9.81 * kWavenumber / kOmega); /* east */
    return sample;
}

/* The axis step is the default band's width, so that a single line counts just once. */
static void configure(OVRecord *record) {
    OVInstrumentConfig config = {.pingsPerSample = 60, .samplingRate = 2, .instrumentType = 3};
    OVProcessingParameters parameters = {.processingMethod = 1, .nDirections = 90};
    config.acousticFrequency = 1.0e6F;
    config.attitudeMode = OV_VELOCITY_ENU; /* velocities are east, north, up */
    parameters.freqMin = 5.0F / 128.0F;
    parameters.freqMax = 0.3F;
    parameters.freqStep = 1.0F / 128.0F;
    parameters.levelOffset = (float)kHeadHeight;
    parameters.reverseDirections = 1; /* where waves come from */
    OVSetInstrumentConfig_ptr(record, &config);
    OVSetProcPar_ptr(record, &parameters);
}

int main(void) {
    OVRecord *record = OVAllocateVarPtr();
    OVPreProcessOutput *cleaned = calloc(1, sizeof(OVPreProcessOutput));
    OVWaveHeader header = {.nSamples = kSamples};
    OVWaveParameterSet waves;
    configure(record); /* a null record is refused, here and below */
    OVSetWaveHeader_ptr(record, &header);
    for (int i = 0; i < kSamples; ++i) {
        OVWaveSample sample = sampleAt(0.5 * i);
        OVSetWaveSample_ptr(record, &sample);
    }
    if (OVPreProcess_ptr(record, 0, cleaned) != 0 || !cleaned->done || !OVProcess_ptr(record))
        return 1; /* no memory, or a burst that cannot be used */
    OVGetWavePar_ptr(record, &waves);
    printf("Hm0 %.2f m, Tp %.1f s, from %.0f degrees\n", waves.waveParameters[OV_HM0],
           waves.waveParameters[OV_TP], waves.waveParameters[OV_PEAK_DIRECTION]);
    OVFreeVarPtr(record);
    free(cleaned);
    return 0;
}
