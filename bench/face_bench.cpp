// The C++ face beside the C interface: the same burst, whole and by the stages where the face does anything of its own.
// Names begin with c or face and are otherwise the same; the face is meant to cost nothing that shows here.
#include <benchmark/benchmark.h>

#include <array>
#include <cstdint>
#include <cstring>
#include <memory>
#include <vector>

#include "orvikbase/orvikbase.hpp"
#include "synthetic_burst.hpp"

namespace {

using orvik::test::SyntheticBurst;

constexpr int kSamples = 2048;
constexpr std::size_t kCells = 20;
constexpr std::size_t kBeams = OV_MAX_BEAMS;

// What either host holds: a record, an output, the burst in its own structures.
struct Bench {
    SyntheticBurst burst;
    orvikbase::Record record;
    orvikbase::CleanedBurst cleaned;
    orvikbase::Spectra spectra;
    std::vector<orvikbase::Sample> samples;

    explicit Bench(int method = 4)
        : burst(orvik::test::makeSyntheticBurst({.method = method, .nSamples = kSamples})) {
        for (const OVWaveSample &packed : burst.samples) {
            samples.push_back(
                {.pressure = packed.pressure,
                 .distance1 = packed.astDistance1,
                 .velocity = {packed.velocity[0], packed.velocity[1], packed.velocity[2]},
                 .distance2 = packed.astDistance2,
                 .amplitude = {packed.amplitude[0], packed.amplitude[1], packed.amplitude[2],
                               packed.amplitude[3]}});
        }
        openBurst(record.get(), burst);
        cWhole();
    }

    bool cWhole() {
        openBurst(record.get(), burst);
        sendSamples(record.get(), burst);
        OVPreProcess_ptr(record.get(), 0, cleaned.get());
        const bool processed = OVProcess_ptr(record.get());
        cResults();
        return processed;
    }
    void cResults() {
        OVWaveParameterSet waves;
        OVScaledEnergySpectrum scaled{};
        OVMeanCurrentQuery current{};
        OVGetWavePar_ptr(record.get(), &waves);
        OVGetWaveSpectrum_ptr(record.get(), spectra.get());
        OVGetScaledEnergySpec_ptr(record.get(), &scaled);
        OVGetMeanBurstCurrent_ptr(record.get(), &current);
        benchmark::DoNotOptimize(waves);
        benchmark::DoNotOptimize(scaled);
        benchmark::DoNotOptimize(current);
    }

    bool faceWhole() {
        openBurst(record.get(), burst);
        record.add(samples);
        const bool ready = record.preProcess(cleaned);
        const bool processed = ready && record.process();
        faceResults();
        return processed;
    }
    void faceResults() {
        orvikbase::WaveParameters waves = record.waveParameters();
        record.readSpectra(spectra);
        orvikbase::ScaledSpectrum scaled = record.scaledSpectrum();
        orvikbase::CurrentVector current = record.currentVector();
        benchmark::DoNotOptimize(waves);
        benchmark::DoNotOptimize(scaled);
        benchmark::DoNotOptimize(current);
    }
};

void cWholeBurst(benchmark::State &state) {
    Bench bench(static_cast<int>(state.range(0)));
    for (auto _ : state) {
        if (!bench.cWhole()) {
            state.SkipWithError("the burst was rejected");
            break;
        }
    }
}

void faceWholeBurst(benchmark::State &state) {
    Bench bench(static_cast<int>(state.range(0)));
    for (auto _ : state) {
        if (!bench.faceWhole()) {
            state.SkipWithError("the burst was rejected");
            break;
        }
    }
}

void cSamples(benchmark::State &state) {
    Bench bench;
    for (auto _ : state) {
        OVWaveHeader header = bench.burst.header;
        OVSetWaveHeader_ptr(bench.record.get(), &header);
        sendSamples(bench.record.get(), bench.burst);
    }
}

void faceSamples(benchmark::State &state) {
    Bench bench;
    for (auto _ : state) {
        OVWaveHeader header = bench.burst.header;
        OVSetWaveHeader_ptr(bench.record.get(), &header);
        bench.record.add(bench.samples);
    }
}

void cGetters(benchmark::State &state) {
    Bench bench;
    for (auto _ : state) {
        bench.cResults();
    }
}

void faceGetters(benchmark::State &state) {
    Bench bench;
    for (auto _ : state) {
        bench.faceResults();
    }
}

// ---- Profiles: the host holds the cells of a sample beam by beam.

// A host learns it from the instrument. (DoNotOptimize() on a variable that is read later changes its value with GCC 12
// at -O1.)
volatile std::size_t toldCells = kCells;

struct ProfileCells {
    std::array<std::array<std::int16_t, kCells>, kBeams> velocity{};
    std::array<std::array<std::uint8_t, kCells>, kBeams> amplitude{};
    std::array<std::array<std::uint8_t, kCells>, kBeams> correlation{};
};

struct ProfileBench {
    orvikbase::Record record;
    std::vector<ProfileCells> cells{kSamples};

    ProfileBench() {
        record.configureProfile({});
        record.setProcessing({});
    }
    void open() {
        record.openProfileBurst(
            {.samples = kSamples, .cellSize = 0.5F, .blanking = 0.5F, .cells = kCells});
    }
};

void cProfiles(benchmark::State &state) {
    ProfileBench bench;
    OVWaveSampleProfile sample{};
    const std::size_t count = toldCells;
    for (auto _ : state) {
        bench.open();
        for (const ProfileCells &cells : bench.cells) {
            sample.valid = 1;
            sample.pressure = 12.0F;
            sample.astDistance1 = 12.1F;
            sample.astDistance2 = 12.2F;
            sample.attitude[0] = 30.0F;
            sample.attitude[1] = 1.0F;
            sample.attitude[2] = 2.0F;
            for (std::size_t b = 0; b < kBeams; ++b) {
                std::memcpy(&sample.profileVelocity[b], &cells.velocity[b],
                            count * sizeof(std::int16_t));
                std::memcpy(&sample.profileAmplitude[b], &cells.amplitude[b], count);
                std::memcpy(&sample.profileCorrelation[b], &cells.correlation[b], count);
            }
            VELTASetWaveSampleProfile_ptr(bench.record.get(), &sample);
        }
    }
}

void faceProfiles(benchmark::State &state) {
    ProfileBench bench;
    orvikbase::ProfileSample sample;
    const std::size_t count = toldCells;
    for (auto _ : state) {
        bench.open();
        for (const ProfileCells &cells : bench.cells) {
            sample.pressure = 12.0F;
            sample.distance1 = 12.1F;
            sample.distance2 = 12.2F;
            sample.heading = 30.0F;
            sample.pitch = 1.0F;
            sample.roll = 2.0F;
            for (std::size_t b = 0; b < kBeams; ++b) {
                sample.setBeam(b, std::span(cells.velocity[b]).first(count),
                               std::span(cells.amplitude[b]).first(count),
                               std::span(cells.correlation[b]).first(count));
            }
            bench.record.addProfile(sample);
        }
    }
}

void methods(benchmark::internal::Benchmark *bench) {
    bench->ArgName("method")->DenseRange(1, 4)->Unit(benchmark::kMicrosecond);
}

BENCHMARK(cSamples)->Unit(benchmark::kMicrosecond);
BENCHMARK(faceSamples)->Unit(benchmark::kMicrosecond);
BENCHMARK(cProfiles)->Unit(benchmark::kMicrosecond);
BENCHMARK(faceProfiles)->Unit(benchmark::kMicrosecond);
BENCHMARK(cGetters)->Unit(benchmark::kMicrosecond);
BENCHMARK(faceGetters)->Unit(benchmark::kMicrosecond);
BENCHMARK(cWholeBurst)->Apply(methods);
BENCHMARK(faceWholeBurst)->Apply(methods);

} // namespace
