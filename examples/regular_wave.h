/* What the instrument of the examples meets: a regular wave of 8.5 s in 13 m of water, by linear theory. Its sensors
   are 1 m above the bed; all are sampled at one instant, which costs the results less than they are printed with. */
#ifndef ORVIKBASE_EXAMPLES_REGULAR_WAVE_H
#define ORVIKBASE_EXAMPLES_REGULAR_WAVE_H

#include <math.h>

typedef struct RegularWave {
    double amplitude; /* m */
    double bearing;   /* where it runs to, degrees */
} RegularWave;

typedef struct WaterMotion {
    float pressure;    /* m of water */
    float east, north; /* m/s */
} WaterMotion;

static inline WaterMotion motionAt(RegularWave wave, double seconds) {
    const double depth = 13.0, headHeight = 1.0;  /* m */
    const double omega = 0.7363107781851077;      /* 15/128 Hz, in rad/s */
    const double wavenumber = 0.0741048387724761; /* of its linear wave, rad/m */
    const double radians = 0.017453292519943295 * wave.bearing;
    const double decay = cosh(wavenumber * headHeight) / cosh(wavenumber * depth);
    const double dynamic = wave.amplitude * cos(omega * seconds) * decay;
    const double speed = dynamic * 9.81 * wavenumber / omega;
    WaterMotion motion;
    motion.pressure = (float)(depth - headHeight + dynamic);
    motion.east = (float)(speed * sin(radians));
    motion.north = (float)(speed * cos(radians));
    return motion;
}

#endif
