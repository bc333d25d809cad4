// Eight bursts on as many threads as the command line says, each thread with a record of its own. The results do not
// depend on which thread took which burst, nor on what its record held before.
#include <array>
#include <atomic>
#include <cstdio>
#include <cstdlib>
#include <thread>
#include <vector>

#include "orvikbase/orvikbase.hpp"
#include "regular_wave.h"

namespace {

constexpr std::size_t kBursts = 8;
using Results = std::array<orvikbase::WaveParameters, kBursts>;

// Every burst has a wave of its own: 1.0 m from 195 degrees, 1.2 m from 225 degrees, and so on.
RegularWave waveOf(std::size_t burst) {
    const auto number = static_cast<double>(burst);
    return {0.5 + 0.1 * number, 15.0 + 30.0 * number};
}

void processBurst(orvikbase::RecordRef record, orvikbase::CleanedBurst &cleaned, std::size_t burst,
                  orvikbase::WaveParameters &waves) {
    record.openBurst({.samples = 2048});
    for (int i = 0; i < 2048; ++i) {
        const WaterMotion motion = motionAt(waveOf(burst), 0.5 * i);
        record.add(orvikbase::Sample{.pressure = motion.pressure,
                                     .velocity = {motion.east, motion.north, 0.0F},
                                     .amplitude = {150, 150, 150}});
    }
    if (record.preProcess(cleaned) && record.process()) {
        waves = record.waveParameters();
    }
}

// A thread's work: the next burst, until there is none.
void work(std::atomic<std::size_t> &next, Results &results) {
    orvikbase::Record record;
    orvikbase::CleanedBurst cleaned;
    record.configure({.pingsPerSample = 60, .samplingRate = 2});
    record.setProcessing(
        {.freqMin = 5.0F / 128, .freqMax = 0.3F, .freqStep = 1.0F / 128, .levelOffset = 1.0F});
    for (std::size_t burst = next++; burst < kBursts; burst = next++) {
        processBurst(record, cleaned, burst, results[burst]);
    }
}

} // namespace

int main(int argc, char **argv) {
    const int threads = argc > 1 ? std::atoi(argv[1]) : 2;
    std::atomic<std::size_t> next = 0;
    Results results;
    std::vector<std::thread> workers;
    for (int i = 0; i < threads; ++i) {
        workers.emplace_back([&] { work(next, results); });
    }
    for (std::thread &worker : workers) {
        worker.join();
    }
    for (const orvikbase::WaveParameters &waves : results) {
        std::printf("Hm0 %.2f m from %3.0f degrees\n", waves.significantHeight,
                    waves.peakDirection);
    }
}
