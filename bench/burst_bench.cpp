// Time of a burst, whole and by stage, for each method and length, and of clearing a record.
#include <benchmark/benchmark.h>

#include <cstdint>
#include <cstring>
#include <memory>
#include <vector>

#include "synthetic_burst.hpp"

namespace {

using orvik::test::SyntheticBurst;

struct ReleaseRecord {
    void operator()(OVRecord *record) const { OVFreeVarPtr(record); }
};

// A record, the burst to run on it and the host's structures, with the pages of all of them already touched.
struct Bench {
    std::unique_ptr<OVRecord, ReleaseRecord> record{OVAllocateVarPtr()};
    std::unique_ptr<OVPreProcessOutput> output = std::make_unique<OVPreProcessOutput>();
    std::unique_ptr<OVFourierCoefficientSpectra> spectra =
        std::make_unique<OVFourierCoefficientSpectra>();
    SyntheticBurst burst;

    explicit Bench(const benchmark::State &state)
        : burst(orvik::test::makeSyntheticBurst({.method = static_cast<int>(state.range(1)),
                                                 .nSamples = static_cast<int>(state.range(0))})) {
        runWhole();
    }

    void openAndSend() const {
        openBurst(record.get(), burst);
        sendSamples(record.get(), burst);
    }
    void preProcess() const { OVPreProcess_ptr(record.get(), 0, output.get()); }
    bool process() const { return OVProcess_ptr(record.get()); }
    void readResults() const {
        OVWaveParameterSet waves{};
        OVMeanCurrentQuery current{};
        OVScaledEnergySpectrum scaled{};
        OVGetWavePar_ptr(record.get(), &waves);
        OVGetWaveSpectrum_ptr(record.get(), spectra.get());
        OVGetScaledEnergySpec_ptr(record.get(), &scaled);
        OVGetMeanBurstCurrent_ptr(record.get(), &current);
        benchmark::DoNotOptimize(waves);
        benchmark::DoNotOptimize(current);
        benchmark::DoNotOptimize(scaled);
    }
    bool runWhole() const {
        openAndSend();
        preProcess();
        const bool processed = process();
        readResults();
        return processed;
    }
};

void wholeBurst(benchmark::State &state) {
    const Bench bench(state);
    for (auto _ : state) {
        if (!bench.runWhole()) {
            state.SkipWithError("the burst was rejected");
            break;
        }
    }
    state.SetItemsProcessed(state.iterations() * state.range(0)); // samples
}

void samplesStage(benchmark::State &state) {
    const Bench bench(state);
    for (auto _ : state) {
        bench.openAndSend();
    }
}

// Pre-processing works in place, so each round needs the samples again, outside the clock.
void preProcessStage(benchmark::State &state) {
    const Bench bench(state);
    for (auto _ : state) {
        state.PauseTiming();
        bench.openAndSend();
        state.ResumeTiming();
        bench.preProcess();
    }
}

// Processing leaves the cleaned series as they are: it can be repeated on one burst.
void processStage(benchmark::State &state) {
    const Bench bench(state);
    for (auto _ : state) {
        if (!bench.process()) {
            state.SkipWithError("the burst was rejected");
            break;
        }
    }
}

void gettersStage(benchmark::State &state) {
    const Bench bench(state);
    for (auto _ : state) {
        bench.readResults();
    }
}

// What a host pays that zeroes its record between bursts instead of letting the header open the next one.
void clearRecord(benchmark::State &state) {
    std::vector<std::byte> record(VELTAGetWaveVariableNbytes());
    for (auto _ : state) {
        std::memset(record.data(), 0, record.size());
        benchmark::DoNotOptimize(record.data());
        benchmark::ClobberMemory();
    }
    state.SetBytesProcessed(state.iterations() * static_cast<std::int64_t>(record.size()));
}

void allLengthsAndMethods(benchmark::internal::Benchmark *bench) {
    bench->ArgNames({"n", "method"})->Unit(benchmark::kMicrosecond);
    for (std::int64_t length = 512; length <= OV_MAX_SAMPLES; length *= 2) {
        for (std::int64_t method = 1; method <= 4; ++method) {
            bench->Args({length, method});
        }
    }
}

// Stages of the usual burst.
void usualLength(benchmark::internal::Benchmark *bench) {
    bench->ArgNames({"n", "method"})->Unit(benchmark::kMicrosecond);
    for (std::int64_t method = 1; method <= 4; ++method) {
        bench->Args({2048, method});
    }
}

BENCHMARK(wholeBurst)->Apply(allLengthsAndMethods);
BENCHMARK(samplesStage)->Apply(usualLength);
BENCHMARK(preProcessStage)->Apply(usualLength);
BENCHMARK(processStage)->Apply(usualLength);
BENCHMARK(gettersStage)->Apply(usualLength);
BENCHMARK(clearRecord)->Unit(benchmark::kMillisecond);

} // namespace
