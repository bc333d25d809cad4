// burst_values FILE
// Writes what every getter hands out for the set of bursts, one line for each field of each burst:
//
//     f|i BURST FIELD VALUE...
//
// Floats (f) are the hexadecimal digits of their bits, the same on every platform; a value that is not a number has
// many bit patterns and is written as one of them. Integers (i) are decimal.
#include <bit>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <memory>
#include <string>
#include <type_traits>
#include <utility>
#include <vector>

#include "determinism/burst_set.hpp"

namespace {

using orvik::test::RecordOwner;
using orvik::test::SyntheticBurst;
using orvik::test::SyntheticChoice;

class ValueFile {
public:
    explicit ValueFile(const char *path) : file_(std::fopen(path, "wb")) {}
    ~ValueFile() { close(); }
    ValueFile(const ValueFile &) = delete;
    ValueFile &operator=(const ValueFile &) = delete;

    bool isOpen() const { return file_ != nullptr; }
    void startBurst(std::string name) { burst_ = std::move(name); }

    // False when something could not be written.
    bool close() {
        if (file_ == nullptr) {
            return false;
        }
        const bool sound = std::ferror(file_) == 0;
        const bool closed = std::fclose(std::exchange(file_, nullptr)) == 0;
        return sound && closed;
    }

    // `values` may lie at any address: fields of packed structures do.
    void floats(const char *field, const void *values, std::size_t count) {
        start('f', field);
        for (std::size_t i = 0; i < count; ++i) {
            float value = 0.0F;
            std::memcpy(&value, static_cast<const char *>(values) + i * sizeof value, sizeof value);
            const auto bits = std::isnan(value) ? 0x7fc00000U : std::bit_cast<std::uint32_t>(value);
            std::fprintf(file_, " %08x", static_cast<unsigned>(bits));
        }
        std::fputc('\n', file_);
    }

    template <class... Integers> void integers(const char *field, Integers... values) {
        start('i', field);
        (std::fprintf(file_, " %ld", static_cast<long>(values)), ...);
        std::fputc('\n', file_);
    }

private:
    void start(char kind, const char *field) {
        std::fprintf(file_, "%c %s %s", kind, burst_.c_str(), field);
    }

    std::FILE *file_;
    std::string burst_;
};

// A float field of a packed structure, an array or a single value. By offset: no pointer may point to such a field.
#define ORVIK_FLOATS(file, structure, field)                                                       \
    (file).floats(#structure "." #field,                                                           \
                  reinterpret_cast<const char *>(&(structure)) +                                   \
                      offsetof(std::remove_cvref_t<decltype(structure)>, field),                   \
                  sizeof(structure).field / sizeof(float))

void writeCleaned(const OVPreProcessOutput &cleaned, const SyntheticBurst &burst, ValueFile &file) {
    std::vector<float> track;
    std::vector<float> pressure;
    std::vector<float> velocity;
    for (std::size_t i = 0; i < 2 * burst.samples.size();
         ++i) { // the track has two elements a sample
        const OVPreProcessRow row = cleaned.rows[i];
        track.push_back(row.astOut);
        pressure.push_back(row.pressureOut);
        for (std::size_t beam = 0; beam < 4; ++beam) {
            velocity.push_back(row.velocity[beam]);
        }
    }
    file.floats("cleaned.astOut", track.data(), track.size());
    file.floats("cleaned.pressureOut", pressure.data(), pressure.size());
    file.floats("cleaned.velocity", velocity.data(), velocity.size());
    ORVIK_FLOATS(file, cleaned, cellVerticalRange);
    file.integers("cleaned.flags", cleaned.sampleCount, cleaned.astValidOut, cleaned.done);
}

void writeParameters(OVRecord *record, ValueFile &file) {
    OVWaveParameterSet parameters{};
    OVGetWavePar_ptr(record, &parameters);
    ORVIK_FLOATS(file, parameters, waveParameters);
    ORVIK_FLOATS(file, parameters, instrumentDepth);
    ORVIK_FLOATS(file, parameters, astLevel);
    ORVIK_FLOATS(file, parameters, astLevelEven);
    ORVIK_FLOATS(file, parameters, aliasingFrequency);
    ORVIK_FLOATS(file, parameters, checkedHeight);
    ORVIK_FLOATS(file, parameters, checkedMeanPeriod);
    ORVIK_FLOATS(file, parameters, cellVerticalRange);
    ORVIK_FLOATS(file, parameters, energyPeriod);
    file.integers("parameters.integers", parameters.astInitialBadCount, parameters.astSpikeCount,
                  parameters.qualityFlags, parameters.spectrumSource, parameters.selectedCell);
}

void writeSpectra(OVRecord *record, ValueFile &file) {
    const auto block = std::make_unique<OVFourierCoefficientSpectra>();
    const OVFourierCoefficientSpectra &spectra = *block;
    OVGetWaveSpectrum_ptr(record, block.get());
    ORVIK_FLOATS(file, spectra, energySpectrum);
    ORVIK_FLOATS(file, spectra, binInfo);
    ORVIK_FLOATS(file, spectra, secondSpectrum);
    ORVIK_FLOATS(file, spectra, fineSpectrum);
    ORVIK_FLOATS(file, spectra, direction);
    ORVIK_FLOATS(file, spectra, spread);
    ORVIK_FLOATS(file, spectra, coefP);
    ORVIK_FLOATS(file, spectra, coefQ);
    ORVIK_FLOATS(file, spectra, coefR);
    ORVIK_FLOATS(file, spectra, coefS);
    ORVIK_FLOATS(file, spectra, bandValue);
    file.integers("spectra.counts", spectra.spectrumKind, spectra.count, spectra.fineCount);
    OVGetDirectionalSpectrum_ptr(record, block.get());
    const OVFourierCoefficientSpectra &ofCoefficients = *block;
    ORVIK_FLOATS(file, ofCoefficients, direction);
    ORVIK_FLOATS(file, ofCoefficients, spread);
}

void writeEnergy(OVRecord *record, ValueFile &file) {
    OVEnergySpectrumBlock energy{};
    OVGetEnergySpecStruct_ptr(record, &energy);
    ORVIK_FLOATS(file, energy, values);
    float *inPlace = nullptr;
    std::int32_t count = 0;
    OVGetEnergySpec_ptr(record, &inPlace, &count);
    file.integers("energy.counts", energy.count, count);
    if (count > 0) {
        file.floats("energy.inPlace", inPlace, static_cast<std::size_t>(count));
    }
    for (const std::int32_t kind : {0, 1, 2, 3}) {
        OVScaledEnergySpectrum scaled{};
        OVGetScaledEnergySpecAllType_ptr(record, kind, &scaled);
        file.integers("scaled.scaleMax", scaled.scaleMax);
        for (std::size_t i = 0; i < OV_MAX_FREQUENCIES_FINE; ++i) {
            file.integers("scaled.value", scaled.values[i]);
        }
    }
}

void writeCurrentAndBands(OVRecord *record, ValueFile &file) {
    for (const std::int32_t selector : {0, 1}) {
        OVMeanCurrentQuery current{};
        VELTAGetMeanBurstCurrent_ptr(record, selector, &current);
        ORVIK_FLOATS(file, current, valueA);
        ORVIK_FLOATS(file, current, valueB);
        ORVIK_FLOATS(file, current, valueC);
    }
    for (const float limit : {0.125F, 0.5F}) {
        OVBandEstimate band{};
        band.fLow = limit / 2.0F;
        band.fHigh = limit;
        OVGetBandEst_ptr(record, &band);
        ORVIK_FLOATS(file, band, bandHm0);
        ORVIK_FLOATS(file, band, bandTm02);
        ORVIK_FLOATS(file, band, bandZero);
        ORVIK_FLOATS(file, band, bandPeakDirection);
        ORVIK_FLOATS(file, band, bandMeanDirection);
        ORVIK_FLOATS(file, band, bandPeakSpread);
        ORVIK_FLOATS(file, band, bandMeanSpread);
        file.integers("band.codes", band.bandStatus, band.bandSpectrumSource);
    }
}

// Last: the maximum entropy distribution is written into the record.
void writeDistributions(OVRecord *record, ValueFile &file) {
    std::vector<float> rows(static_cast<std::size_t>(OV_MAX_FREQUENCIES * OV_MAX_DIRECTIONS));
    OVGetFullDirSpectraWithEnergy_ptr(record, rows.data());
    file.floats("distribution.withEnergy", rows.data(), rows.size());
    OVGetFullWaveDirSpectrum_ptr(record, rows.data());
    file.floats("distribution.maximumEntropy", rows.data(), rows.size());
}

bool writeBurst(const SyntheticChoice &choice, ValueFile &file) {
    const SyntheticBurst burst = orvik::test::makeSyntheticBurst(choice);
    const RecordOwner record(OVAllocateVarPtr());
    const auto cleaned = std::make_unique<OVPreProcessOutput>();
    if (!record || orvik::test::cleanBurst(record.get(), burst, cleaned.get()) != 0 ||
        !OVProcess_ptr(record.get())) {
        return false;
    }
    file.startBurst(orvik::test::nameOf(choice));
    writeCleaned(*cleaned, burst, file);
    writeParameters(record.get(), file);
    writeSpectra(record.get(), file);
    writeEnergy(record.get(), file);
    writeCurrentAndBands(record.get(), file);
    writeDistributions(record.get(), file);
    return true;
}

} // namespace

int main(int argc, char **argv) {
    if (argc != 2) {
        std::fputs("usage: burst_values FILE\n", stderr);
        return 2;
    }
    ValueFile file(argv[1]);
    if (!file.isOpen()) {
        std::fprintf(stderr, "%s cannot be created\n", argv[1]);
        return 1;
    }
    for (const SyntheticChoice &choice : orvik::test::burstSet()) {
        if (!writeBurst(choice, file)) {
            std::fprintf(stderr, "%s was not processed: there is nothing to compare\n",
                         orvik::test::nameOf(choice).c_str());
            return 1;
        }
    }
    if (!file.close()) {
        std::fprintf(stderr, "%s cannot be written\n", argv[1]);
        return 1;
    }
    return 0;
}
