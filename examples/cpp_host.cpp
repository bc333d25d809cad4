// A burst through the C++ face: one wave of 1 m height from the south-west.
#include <cstdio>
#include <vector>

#include "orvikbase/orvikbase.hpp"
#include "regular_wave.h"

int main() {
    orvikbase::Record record;
    orvikbase::CleanedBurst cleaned;
    record.configure({.pingsPerSample = 60, .samplingRate = 2});
    const auto inUse = record.setProcessing(
        {.freqMin = 5.0F / 128, .freqMax = 7.0F, .freqStep = 1.0F / 128, .levelOffset = 1.0F});
    std::printf("axis up to %.2f Hz, 7 Hz being beyond the sampling\n", inUse.freqMax);

    std::vector<orvikbase::Sample> samples(2048);
    for (std::size_t i = 0; i < samples.size(); ++i) {
        const WaterMotion motion = motionAt({0.5, 45.0}, 0.5 * static_cast<double>(i));
        samples[i] = {.pressure = motion.pressure,
                      .velocity = {motion.east, motion.north, 0.0F},
                      .amplitude = {150, 150, 150}};
    }
    record.openBurst({.samples = 2048});
    record.add(samples);
    if (!record.preProcess(cleaned) || !record.process()) {
        return 1; // a burst that cannot be used
    }

    const orvikbase::WaveParameters waves = record.waveParameters();
    std::printf("Hm0 %.2f m, Tp %.1f s, from %.0f degrees\n", waves.significantHeight,
                waves.peakPeriod, waves.peakDirection);
    if (waves.has(orvikbase::QualityFlag::noTrack)) {
        std::printf("no surface track\n");
    }
    if (const auto band = record.bandEstimate(0.1F, 0.15F)) {
        std::printf("between 0.10 and 0.15 Hz: %.2f m\n", band->significantHeight);
    }
}
