/**
 * @file
 * OrvikBase for C++20: the C interface of orvikbase.h with records that own or borrow, plain structures (see
 * orvikbase_types.hpp), spans in and values out. Header only; link the library as for C.
 *
 *     orvikbase::Record record;
 *     orvikbase::CleanedBurst cleaned;                    // keep both: every burst can use them again
 *     record.configure(config);                           // what the instrument is
 *     const auto inUse = record.setProcessing(parameters); // method and axes, corrected where out of range
 *     record.openBurst({.samples = 2048});
 *     record.add(samples);
 *     if (record.preProcess(cleaned) && record.process()) {
 *         const orvikbase::WaveParameters waves = record.waveParameters();
 *     }
 *
 * That is also the order of calls. Configuration and parameters stay in force until set again.
 *
 * Without a record (a borrowed null, a Record moved from) every operation does nothing: those that return bool say
 * false, results are missing. Nothing throws but the constructors that need memory (std::bad_alloc), and nothing else
 * allocates.
 *
 * One record, one thread at a time; different records may be used at the same time, in any number of threads. Nothing
 * here touches the library's current record but makeCurrent().
 */
#ifndef ORVIKBASE_ORVIKBASE_HPP
#define ORVIKBASE_ORVIKBASE_HPP

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <new>
#include <optional>
#include <span>
#include <string>
#include <utility>

#include "orvikbase/detail/packing.hpp"
#include "orvikbase/orvikbase.h"
#include "orvikbase/orvikbase_types.hpp"
#include "orvikbase/outputs.hpp"

namespace orvikbase {

/** The library's version, "4.15" for example. */
[[nodiscard]] inline std::string version() {
    char text[16] = {};
    OVGetOrvikBaseVer(text, static_cast<std::int16_t>(sizeof text - 1));
    return text;
}

/** Size of a record in bytes. */
[[nodiscard]] inline std::uint64_t recordBytes() noexcept { return VELTAGetWaveVariableNbytes(); }

/** Everything a record can do, owned (Record) or borrowed (RecordRef). */
class AnyRecord {
public:
    /** True when there is a record. */
    [[nodiscard]] explicit operator bool() const noexcept { return record_ != nullptr; }

    /** The record itself, for calls of the C interface. */
    [[nodiscard]] OVRecord *get() noexcept { return record_; }
    /** The same to read. */
    [[nodiscard]] const OVRecord *get() const noexcept { return record_; }

    /**
     * The record as raw memory: to copy, keep in a file or compare. It holds no pointers, so that its bytes go on as a
     * record wherever they lie, aligned for double. Empty without a record.
     */
    [[nodiscard]] std::span<std::byte> bytes() noexcept {
        return {reinterpret_cast<std::byte *>(record_), size()};
    }
    /** The same to read. */
    [[nodiscard]] std::span<const std::byte> bytes() const noexcept {
        return {reinterpret_cast<const std::byte *>(record_), size()};
    }

    /** Let the functions of the C interface without `_ptr` work on this record, which must outlive their calls. */
    void makeCurrent() noexcept { VELTASetWaveVariablesPointer(record_); }

    // ---- Before the first sample

    /** Describe a point instrument. Nothing is validated. False without a record. */
    bool configure(const InstrumentConfig &config) noexcept {
        const OVInstrumentConfig packed = detail::packed(config);
        return OVSetInstrumentConfig_ptr(record_, &packed) == 0;
    }

    /** Describe a profile instrument. Nothing is validated. False without a record. */
    bool configureProfile(const ProfileInstrumentConfig &config) noexcept {
        const OVProfileInstrumentConfig packed = detail::packed(config);
        return VELTASetInstrumentConfig_ptr(record_, &packed) == 0;
    }

    /**
     * Choose method, frequency axes and options, of either kind of instrument; after its configuration, whose sampling rate
     * limits them. Returns the values in use: those out of range were replaced by defaults or clamped. Without a record
     * nothing is corrected.
     */
    ProcessingParameters setProcessing(const ProcessingParameters &parameters) noexcept {
        OVProcessingParameters packed = detail::packed(parameters);
        OVSetProcPar_ptr(record_, &packed);
        return detail::unpacked(packed);
    }

    /**
     * Open a burst of a point instrument; after configure(). Returns the samples that will be used: more than 512 are rounded down to a power
     * of two, at most kMaxSamples. 0 without a record.
     */
    std::uint16_t openBurst(const BurstHeader &header) noexcept {
        OVWaveHeader packed = detail::packed(header);
        return OVSetWaveHeader_ptr(record_, &packed) == 1 ? packed.nSamples : std::uint16_t{0};
    }

    /** The same for a profile instrument, after configureProfile(). */
    std::uint16_t openProfileBurst(const ProfileBurstHeader &header) noexcept {
        OVProfileWaveHeader packed = detail::packed(header);
        return VELTASetWaveHeader_ptr(record_, &packed) == 1 ? packed.nSamples : std::uint16_t{0};
    }

    // ---- Samples

    /** Store the next sample; those past the burst are not stored. False without a record. */
    bool add(const Sample &sample) noexcept {
        OVWaveSample packed = detail::packed(sample);
        return OVSetWaveSample_ptr(record_, &packed) == 0;
    }

    /** Store the next samples, in order. */
    bool add(std::span<const Sample> samples) noexcept {
        for (const Sample &sample : samples) {
            add(sample);
        }
        return record_ != nullptr;
    }

    /** Store the next sample with its two extra channels. */
    bool add(const SuvSample &sample) noexcept {
        OVWaveSampleSUV packed = detail::packed(sample);
        return OVSetWaveSampleSUV_ptr(record_, &packed) == 0;
    }

    /** Store the next samples with their extra channels, in order. */
    bool add(std::span<const SuvSample> samples) noexcept {
        for (const SuvSample &sample : samples) {
            add(sample);
        }
        return record_ != nullptr;
    }

    /** Store the next sample with its profile; one past the burst changes nothing. The sample can be used again. */
    bool addProfile(ProfileSample &sample) noexcept {
        return VELTASetWaveSampleProfile_ptr(record_, sample.packed()) == 0;
    }

    /** Store the next samples with their profiles, in order. */
    bool addProfile(std::span<ProfileSample> samples) noexcept {
        for (ProfileSample &sample : samples) {
            addProfile(sample);
        }
        return record_ != nullptr;
    }

    // ---- From samples to results

    /**
     * Complete, clean and detrend the burst of a point instrument. True when it may be processed; false when more than
     * 10 % of its samples are missing. Works in place: a second call cleans and detrends again. What it made of the
     * samples is in `cleaned` afterwards.
     */
    [[nodiscard]] bool preProcess(CleanedBurst &cleaned, const TrackOptions &track = {}) noexcept {
        detail::prepare(*cleaned.get(), track);
        OVPreProcess_ptr(record_, 0, cleaned.get());
        return cleaned.accepted();
    }

    /** The same with the smaller output: surface track and pressure alone. */
    [[nodiscard]] bool preProcess(CleanedSeries &cleaned, const TrackOptions &track = {}) noexcept {
        detail::prepare(*cleaned.get(), track);
        OVPreProcessSUV_ptr(record_, 0, cleaned.get());
        return cleaned.accepted();
    }

    /** The same for a profile instrument; also chooses the velocity cell just below the wave troughs. */
    [[nodiscard]] bool preProcessProfile(CleanedBurst &cleaned,
                                         const TrackOptions &track = {}) noexcept {
        detail::prepare(*cleaned.get(), track);
        VELTAPreProcess_ptr(record_, 0, cleaned.get());
        return cleaned.accepted();
    }

    /**
     * Process the burst: true when there are results. Without a usable burst every result becomes missing. May be
     * repeated, also with other parameters: a result depends on nothing that was computed before.
     */
    [[nodiscard]] bool process() noexcept { return OVProcessReturnInt_ptr(record_) == 1; }

    // ---- Results

    /** All wave parameters. */
    [[nodiscard]] WaveParameters waveParameters() const noexcept {
        OVWaveParameterSet packed;
        return OVGetWavePar_ptr(record_, &packed) == 0 ? detail::unpacked(packed)
                                                       : WaveParameters{};
    }

    /**
     * All spectra and coefficients by bin, into an object that the caller keeps. The first call after process() shows
     * directions also beyond the spatial-aliasing limit and marks them missing in the record. False without a record;
     * `spectra` is as it was then.
     */
    bool readSpectra(Spectra &spectra) noexcept {
        return OVGetWaveSpectrum_ptr(record_, spectra.get()) == 0;
    }

    /**
     * The spectrum behind the wave parameters, m^2/Hz by bin of the main axis: a view into the record, good until its
     * next burst or process(). With the surface track as source the bins are those of the fine axis, as far as the
     * main axis has as many.
     */
    [[nodiscard]] std::span<const float> energySpectrum() const noexcept {
        float *values = nullptr;
        std::int32_t count = 0;
        OVGetEnergySpec_ptr(record_, &values, &count);
        return {values, detail::bins(count, kMaxFrequencies)};
    }

    /** The same as a copy. */
    [[nodiscard]] EnergySpectrum copyEnergySpectrum() const noexcept {
        OVEnergySpectrumBlock packed{};
        OVGetEnergySpecStruct_ptr(record_, &packed);
        return detail::unpacked(packed);
    }

    /** A spectrum in 16-bit values: pressure, velocity, surface track (fine axis) or the one in use. */
    [[nodiscard]] ScaledSpectrum
    scaledSpectrum(SpectrumKind kind = SpectrumKind::inUse) const noexcept {
        OVScaledEnergySpectrum packed{};
        OVGetScaledEnergySpecAllType_ptr(record_, static_cast<std::int32_t>(kind), &packed);
        return detail::unpacked(packed);
    }

    /** Mean current by components. */
    [[nodiscard]] CurrentVector currentVector() const noexcept {
        OVMeanCurrentQuery query{0, kMissing, kMissing, kMissing};
        OVGetMeanBurstCurrent_ptr(record_, &query);
        return {query.valueA, query.valueB, query.valueC};
    }

    /** Mean current by speed and direction. */
    [[nodiscard]] Current current() const noexcept {
        OVMeanCurrentQuery query{1, kMissing, kMissing, kMissing};
        OVGetMeanBurstCurrent_ptr(record_, &query);
        return {query.valueA, query.valueB};
    }

    /** Wave parameters between two frequencies [Hz]; nothing without a processed burst. */
    [[nodiscard]] std::optional<BandEstimate> bandEstimate(float lowFrequency,
                                                           float highFrequency) const noexcept {
        OVBandEstimate packed{};
        packed.fLow = lowFrequency;
        packed.fHigh = highFrequency;
        if (OVGetBandEst_ptr(record_, &packed) != 0) {
            return std::nullopt;
        }
        return detail::unpacked(packed);
    }

    // ---- Directional distributions, and spectra from the host

    /**
     * Distribution times energy. After process() with likelihood methods a row times the bin width 2 pi / directions
     * sums to the energy (bins in the level frame); after entropyDistribution() the row itself does (bins by compass
     * bearing). Writes the bins of the axes and leaves the rest of `out` as it is. False without a record.
     */
    bool energyDistribution(Distribution &out) const noexcept {
        return OVGetFullDirSpectraWithEnergy_ptr(record_, out.rows.front().data()) == 0;
    }

    /**
     * Maximum entropy distribution as bin weights by compass bearing, kept in the record for energyDistribution(). A row
     * sums to about 1 as long as the distribution is wide against a bin. Writes the bins of the axes and leaves the rest
     * of `out` as it is. False without a record.
     */
    bool entropyDistribution(Distribution &out) noexcept {
        return OVGetFullWaveDirSpectrum_ptr(record_, out.rows.front().data()) == 0;
    }

    /**
     * Load Fourier coefficients by bin of the main axis, at most kMaxFrequencies, and get mean directions and spreads
     * back, as many as `out` has room for. A bin with a missing a1 or b1 becomes missing.
     */
    bool setFourierCoefficients(std::span<const FourierCoefficients> bins,
                                std::span<DirectionAndSpread> out = {}) noexcept {
        OVFourierCoefficientSpectra block;
        detail::packNegated(bins, block);
        const bool done = OVSetFourierCoefficientSpectra_ptr(record_, &block) == 0;
        detail::copyDirections(block, done ? detail::bins(block.count, kMaxFrequencies) : 0, out);
        return done;
    }

    /**
     * Mean directions (going to) and spreads of a1 and b1 by bin of the main axis, as many as `out` has room for. Bins
     * that are not given count as 0. With ProcessingParameters::comingFrom each call also turns the record's own mean
     * directions by 180 degrees: set the coefficients or process again before reading those.
     */
    bool directionsOf(std::span<const FourierCoefficients> bins,
                      std::span<DirectionAndSpread> out) noexcept {
        OVFourierCoefficientSpectra block{};
        detail::packFirstOrder(bins, block);
        const bool done = OVGetDirectionalSpectrum_ptr(record_, &block) == 0;
        detail::copyDirections(block, std::min(bins.size(), energySpectrum().size()), out);
        return done;
    }

    /** Load the spectrum behind the wave parameters [m^2/Hz], at most kMaxFineFrequencies values. */
    bool setSpectrumUsed(std::span<const float> values) noexcept {
        const OVSpectraUsedInput packed = detail::packed(values);
        return OVSetSpectraUsed_ptr(record_, &packed) == 0;
    }

    /// @cond INTERNAL what Record and RecordRef are made with
protected:
    explicit AnyRecord(OVRecord *record) noexcept : record_(record) {}
    AnyRecord(const AnyRecord &) = default;
    AnyRecord &operator=(const AnyRecord &) = default;
    ~AnyRecord() = default;

    OVRecord *record_; // null: none
    /// @endcond

private:
    [[nodiscard]] std::size_t size() const noexcept {
        return record_ != nullptr ? static_cast<std::size_t>(OV_RECORD_BYTES) : 0;
    }
};

/**
 * A record of its own, zeroed, on zero pages where the system has them: it takes up memory only where a burst touches
 * it. Moves, but does not copy by accident: copy bytes() where that is meant.
 */
class Record : public AnyRecord {
public:
    /** Throws std::bad_alloc when there is no memory for it. */
    Record() : AnyRecord(static_cast<OVRecord *>(std::calloc(1, OV_RECORD_BYTES))) {
        if (record_ == nullptr) {
            throw std::bad_alloc();
        }
    }
    /** Leaves `other` without a record. */
    Record(Record &&other) noexcept : AnyRecord(std::exchange(other.record_, nullptr)) {}
    /** Exchanges the two records. */
    Record &operator=(Record &&other) noexcept {
        std::swap(record_, other.record_);
        return *this;
    }
    Record(const Record &) = delete;
    Record &operator=(const Record &) = delete;
    ~Record() { std::free(record_); }
};

/**
 * A record that somebody else keeps: shared memory, a slot of an arena, OVAllocateVarPtr(), a Record. Copies refer to the
 * same one.
 */
class RecordRef : public AnyRecord {
public:
    /** The record at `memory`: recordBytes() long, aligned for double, zeroed before its first use; or null for none. */
    explicit RecordRef(void *memory) noexcept : AnyRecord(static_cast<OVRecord *>(memory)) {}
    /** A Record: a parameter of this type takes one as it is. */
    RecordRef(Record &record) noexcept : AnyRecord(record.get()) {}
};

} // namespace orvikbase

#endif // ORVIKBASE_ORVIKBASE_HPP
