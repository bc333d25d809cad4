// Prints one line for each burst of a fixed set: what it is, and a digest of every byte that the library hands out for
// it. Two builds of the library agree when their lines do. Ends with 1 when a result depends on what the record held
// before: the same burst again, or after a different one.
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <memory>
#include <vector>

#include "determinism/burst_set.hpp"

namespace {

using orvik::test::RecordOwner;
using orvik::test::SyntheticBurst;
using orvik::test::SyntheticChoice;

// FNV-1a, 64 bits.
class Digest {
public:
    void add(const void *data, std::size_t bytes) {
        const auto *byte = static_cast<const unsigned char *>(data);
        for (std::size_t i = 0; i < bytes; ++i) {
            value_ = (value_ ^ byte[i]) * 1099511628211ULL;
        }
    }
    template <class T> void add(const T &structure) { add(&structure, sizeof structure); }
    std::uint64_t value() const { return value_; }

private:
    std::uint64_t value_ = 14695981039346656037ULL;
};

void addWaveResults(OVRecord *record, Digest &digest) {
    OVWaveParameterSet waves{};
    digest.add(OVGetWavePar_ptr(record, &waves));
    digest.add(waves);

    const auto spectra = std::make_unique<OVFourierCoefficientSpectra>();
    digest.add(OVGetWaveSpectrum_ptr(record, spectra.get()));
    digest.add(*spectra);

    float *energy = nullptr;
    std::int32_t count = 0;
    digest.add(OVGetEnergySpec_ptr(record, &energy, &count));
    if (count > 0) {
        digest.add(energy, static_cast<std::size_t>(count) * sizeof(float));
    }

    OVEnergySpectrumBlock block{};
    digest.add(OVGetEnergySpecStruct_ptr(record, &block));
    digest.add(block);

    for (const std::int32_t kind : {0, 1, 2, 3}) {
        OVScaledEnergySpectrum scaled{};
        digest.add(OVGetScaledEnergySpecAllType_ptr(record, kind, &scaled));
        digest.add(scaled);
    }

    for (const std::int32_t selector : {0, 1}) {
        OVMeanCurrentQuery current{};
        digest.add(VELTAGetMeanBurstCurrent_ptr(record, selector, &current));
        digest.add(current);
    }
}

// After addWaveResults(): the maximum entropy distribution is written into the record.
void addDirectionalResults(OVRecord *record, Digest &digest) {
    std::vector<float> rows(static_cast<std::size_t>(OV_MAX_FREQUENCIES * OV_MAX_DIRECTIONS));
    const std::size_t bytes = rows.size() * sizeof(float);
    digest.add(OVGetFullDirSpectraWithEnergy_ptr(record, rows.data()));
    digest.add(rows.data(), bytes);
    digest.add(OVGetFullWaveDirSpectrum_ptr(record, rows.data()));
    digest.add(rows.data(), bytes);
    for (const float limit : {0.125F, 0.5F}) {
        OVBandEstimate band{};
        band.fLow = limit / 2.0F;
        band.fHigh = limit;
        digest.add(OVGetBandEst_ptr(record, &band));
        digest.add(band);
    }
}

struct BurstDigests {
    std::uint64_t cleaned; // what pre-processing hands back
    std::uint64_t results;
    bool processed;
};

BurstDigests runBurst(OVRecord *record, const SyntheticBurst &burst) {
    const auto output = std::make_unique<OVPreProcessOutput>();
    Digest cleaned;
    cleaned.add(orvik::test::cleanBurst(record, burst, output.get()));
    cleaned.add(*output);
    Digest results;
    const unsigned char processed = OVProcess_ptr(record) ? 1 : 0;
    results.add(processed);
    addWaveResults(record, results);
    addDirectionalResults(record, results);
    return {cleaned.value(), results.value(), processed != 0};
}

// The same burst on a used record must give what a fresh one gives.
bool checkReuse(OVRecord *used, const SyntheticBurst &burst, std::uint64_t expected,
                const char *what) {
    if (runBurst(used, burst).results == expected) {
        return true;
    }
    std::fprintf(stderr, "results depend on the record's past: %s\n", what);
    return false;
}

} // namespace

int main() {
    bool independent = true;
    SyntheticBurst previous = orvik::test::makeSyntheticBurst({.method = 2, .seed = 99});
    const RecordOwner shared(OVAllocateVarPtr());
    for (const SyntheticChoice &choice : orvik::test::burstSet()) {
        const SyntheticBurst burst = orvik::test::makeSyntheticBurst(choice);
        const RecordOwner fresh(OVAllocateVarPtr());
        if (!fresh || !shared) {
            std::fputs("no memory for a record\n", stderr);
            return 1;
        }
        const BurstDigests digests = runBurst(fresh.get(), burst);
        if (!digests.processed) {
            std::fputs("a burst was rejected: there is nothing to compare\n", stderr);
            return 1;
        }
        std::printf("type %2d method %d n %5d%s%s %016llx %016llx\n", choice.instrumentType,
                    choice.method, choice.nSamples, choice.tilted ? " tilted" : "",
                    choice.faulty ? " faulty" : "",
                    static_cast<unsigned long long>(digests.cleaned),
                    static_cast<unsigned long long>(digests.results));
        independent &= checkReuse(fresh.get(), burst, digests.results, "the same burst twice");
        runBurst(shared.get(), previous);
        independent &= checkReuse(shared.get(), burst, digests.results, "after a different burst");
        previous = burst;
    }
    return independent ? 0 : 1;
}
