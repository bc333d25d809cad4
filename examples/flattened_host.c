/* The flattened style, for hosts that cannot lay out structures: every value is an argument, and the functions work on
   the current record, which is the one allocated last. */
#include <stdio.h>
#include <stdlib.h>

#include "orvikbase/orvikbase.h"
#include "regular_wave.h"

enum { kSamples = 2048 };

static void openBurst(void) {
    const int16_t matrix[16] = {0}; /* velocities are east, north, up: there is no beam to turn */
    const uint16_t headerWords[4] = {0};
    OVSetInstrumentConfigLV(60, 2, kSamples, 1.0e6F, 25.0F, 3, OV_VELOCITY_ENU, matrix, 0);
    /* Method 1; main axis, fine axis and their step in Hz; the sensor's height above the bed and the declination; bands,
       input, beams, direction bins, pressure offset; directions say where waves come from. */
    OVSetProcParLV(1, 5.0F / 128.0F, 0.3F, 0.02F, 1.99F, 1.0F / 128.0F, 1.0F, 0.0F, 32, 32, 0, 7,
                   90, 0.0F, 1);
    OVSetWaveHeaderLV(kSamples, 0, 0.0F, 0.0F, 0.0F, 0.0F, 0.0F, 0.0F, 0, headerWords, 0);
}

static void sendSamples(void) {
    const RegularWave wave = {0.5, 315.0};
    const uint16_t amplitude[4] = {150, 150, 150, 150};
    for (int i = 0; i < kSamples; ++i) {
        const WaterMotion motion = motionAt(wave, 0.5 * i);
        const float velocityAndTrack[4] = {motion.east, motion.north, 0.0F, 0.0F};
        OVSetWaveSampleLV(1, motion.pressure, 0.0F, velocityAndTrack, amplitude);
    }
}

static void printResults(void) {
    float waves[OV_WAVE_PARAMETERS], depth, speed, direction, none;
    int32_t flags;
    OVGetWaveParLV(waves, &depth, NULL, NULL, &flags, NULL, NULL, NULL, NULL, NULL, NULL, NULL,
                   NULL, NULL);
    OVGetMeanBurstCurrentLV(1, &speed, &direction, &none);
    printf("Hm0 %.2f m, Tp %.1f s, from %.0f degrees\n", waves[OV_HM0], waves[OV_TP],
           waves[OV_PEAK_DIRECTION]);
    printf("at a depth of %.1f m, flags %d, current %.2f m/s\n", depth, (int)flags, speed);
}

int main(void) {
    OVRecord *record = OVAllocateVarPtr();
    /* For the cleaned surface track, of which there is none here. */
    float *track = calloc(OV_MAX_TRACK_SAMPLES, sizeof(float));
    int processed = 0;
    if (record != NULL && track != NULL) {
        openBurst();
        sendSamples();
        OVPreProcessLV(0, track, 0.0F, 0.0F, 0, 0, 0, 0);
        processed = OVProcessReturnIntLV() == 1;
        if (processed)
            printResults();
    }
    free(track);
    OVFreeVarPtr(record);
    return processed ? 0 : 1;
}
