// Memory that a record really occupies once it has processed a point instrument's burst. Most of a record is room for
// velocity profiles; a zeroed mapping gets a page only when something writes to it, so that room must stay untouched.
// Ends with 1 when a record occupies more than 4 MB.
#include <sys/mman.h>
#include <unistd.h>

#include <algorithm>
#include <cstddef>
#include <cstdio>
#include <memory>
#include <vector>

#include "synthetic_burst.hpp"

namespace {

constexpr std::size_t kLimitBytes = 4U << 20U;

// A host's own record on pages of its own, without huge pages: those would count untouched neighbours too.
class MappedRecord {
public:
    MappedRecord() : bytes_(VELTAGetWaveVariableNbytes()) {
        memory_ = mmap(nullptr, bytes_, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
        if (memory_ != MAP_FAILED) {
            madvise(memory_, bytes_, MADV_NOHUGEPAGE);
        }
    }
    ~MappedRecord() {
        if (isMapped()) {
            munmap(memory_, bytes_);
        }
    }
    MappedRecord(const MappedRecord &) = delete;
    MappedRecord &operator=(const MappedRecord &) = delete;

    bool isMapped() const { return memory_ != MAP_FAILED; }
    OVRecord *get() const { return static_cast<OVRecord *>(memory_); }

    std::size_t residentBytes() const {
        const auto page = static_cast<std::size_t>(sysconf(_SC_PAGESIZE));
        std::vector<unsigned char> resident((bytes_ + page - 1) / page);
        if (mincore(memory_, bytes_, resident.data()) != 0) {
            return bytes_;
        }
        const auto count = std::count_if(resident.begin(), resident.end(),
                                         [](unsigned char flags) { return (flags & 1U) != 0; });
        return static_cast<std::size_t>(count) * page;
    }

private:
    std::size_t bytes_;
    void *memory_;
};

bool runBurst(OVRecord *record, int type, int method) {
    const orvik::test::SyntheticBurst burst =
        orvik::test::makeSyntheticBurst({.method = method, .instrumentType = type});
    const auto output = std::make_unique<OVPreProcessOutput>();
    const auto spectra = std::make_unique<OVFourierCoefficientSpectra>();
    openBurst(record, burst);
    sendSamples(record, burst);
    OVPreProcess_ptr(record, 0, output.get());
    const bool processed = OVProcess_ptr(record);
    OVWaveParameterSet waves{};
    OVGetWavePar_ptr(record, &waves);
    OVGetWaveSpectrum_ptr(record, spectra.get());
    return processed;
}

} // namespace

int main() {
    int status = 0;
    std::printf(
        "record: %.1f MB of addresses; resident after a burst of 2048 samples, at most %.1f MB:\n",
        static_cast<double>(VELTAGetWaveVariableNbytes()) / 1048576.0,
        static_cast<double>(kLimitBytes) / 1048576.0);
    for (const int type : {3, 1, 0}) {
        for (int method = 1; method <= 4; ++method) {
            const MappedRecord record;
            if (!record.isMapped() || !runBurst(record.get(), type, method)) {
                std::fprintf(stderr, "type %d method %d: no record, or the burst was rejected\n",
                             type, method);
                return 1;
            }
            const std::size_t resident = record.residentBytes();
            std::printf("type %d method %d %6.2f MB\n", type, method,
                        static_cast<double>(resident) / 1048576.0);
            if (resident == 0 || resident > kLimitBytes) {
                status = 1;
            }
        }
    }
    return status;
}
