// A result file of a few simulated bursts, written as `orvik process` writes it.
#pragma once

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <string>

#include "results/result_file.hpp"
#include "run/burst_runner.hpp"
#include "simulate/sea.hpp"

namespace orvik::test {

inline constexpr std::size_t kSampleBursts = 5;
inline constexpr std::size_t kSamples = 1024;
inline constexpr std::size_t kHoles =
    1; // this burst is rejected: a fifth of its pressure is missing
inline constexpr std::size_t kNoTrack = 2; // this one has no echo of the surface at all
inline constexpr std::size_t kTilted = 3;  // this one is flagged
inline constexpr std::size_t kGappy = 4;   // this one has seven missing samples

inline Instrument sampleInstrument() {
    Instrument instrument;
    instrument.samplingRate = 2.0;
    instrument.trackSamplingRate = 4.0;
    instrument.beamAzimuth = {0.0, 120.0, 240.0};
    instrument.cellRange = 7.0;
    instrument.pressureHeight = 0.5;
    instrument.longitude = 4.25;
    instrument.latitude = 52.5;
    return instrument;
}

inline Burst sampleBurst(const Instrument &instrument, std::size_t index) {
    SeaState state;
    state.systems = {WaveSystem{}};
    state.systems.front().direction = 250.0;
    state.pitch = index == kTilted ? 12.0 : 0.0;
    Burst burst = simulateBurst(instrument, state, {}, kSamples, VelocitySystem::beam, index).burst;
    burst.startTime = 1.7e9 + 3600.0 * static_cast<double>(index);
    if (index == kHoles) {
        std::fill_n(burst.pressure.begin(), kSamples / 5, std::nanf(""));
    } else if (index == kNoTrack) {
        std::fill(burst.surfaceTrack.begin(), burst.surfaceTrack.end(), std::nanf(""));
    } else if (index == kGappy) {
        std::fill_n(burst.pressure.begin() + 100, 7, std::nanf(""));
    }
    return burst;
}

inline ResultLayout sampleLayout(const BurstRunner &runner, const Instrument &instrument) {
    ResultLayout layout;
    layout.frequencies = runner.frequencies();
    layout.fineFrequencies = runner.fineFrequencies();
    layout.directions = static_cast<std::size_t>(runner.parameters().directions);
    layout.pressureHeight = instrument.pressureHeight;
    layout.longitude = instrument.longitude;
    layout.latitude = instrument.latitude;
    layout.attributes = {{"source", "a test"}, {"processing_method", "4"}};
    return layout;
}

inline void writeSampleResults(const std::string &path, ProcessingChoices choices = {}) {
    const Instrument instrument = sampleInstrument();
    BurstRunner runner(instrument, choices);
    ResultLayout layout = sampleLayout(runner, instrument);
    layout.comingFrom = choices.comingFrom;
    ResultFileWriter writer(path, layout);
    for (std::size_t index = 0; index < kSampleBursts; ++index) {
        const Burst burst = sampleBurst(instrument, index);
        ResultRow row;
        row.burst = index;
        row.startTime = burst.startTime;
        row.facts = factsOf(burst, instrument);
        row.result = runner.run(burst);
        writer.append(row);
    }
    writer.commit();
}

} // namespace orvik::test
