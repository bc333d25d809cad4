/**
 * @file
 * Large outputs of orvikbase.hpp, which a host keeps and uses again for every burst: the library writes into them, and
 * they show what it wrote without copying.
 */
#ifndef ORVIKBASE_OUTPUTS_HPP
#define ORVIKBASE_OUTPUTS_HPP

#include <array>
#include <bit>
#include <cstddef>
#include <cstdint>
#include <span>

#include "orvikbase/detail/memory.hpp"
#include "orvikbase/detail/packing.hpp"
#include "orvikbase/orvikbase_types.hpp"

namespace orvikbase {

/**
 * What pre-processing made of a burst, sample by sample. Room for 1,441,812 bytes of addresses on the heap, of which a
 * burst touches as many as it is long.
 *
 * Which rows and fields are written depends on the burst; the others keep what an earlier one left there:
 * - method 1: `track` (the pressure without its spikes) and `pressure`, a row per sample;
 * - methods 2 and 4: `track` and `pressure`, a row per surface-track element, twice as many as samples for a point
 *   instrument;
 * - profile instruments, in addition: attitude, velocity, amplitude and correlation, a row per sample.
 */
class CleanedBurst {
public:
    /** Throws std::bad_alloc when there is no memory for it. */
    CleanedBurst() : output_(detail::makeOutput<OVPreProcessOutput>()) {}

    /** True when the burst may be processed. */
    [[nodiscard]] bool accepted() const noexcept { return output_->done != 0; }
    /** True when the surface track is usable; false also when it was not cleaned. */
    [[nodiscard]] bool trackUsable() const noexcept { return output_->astValidOut != 0; }
    /** Profile instruments: samples of the burst. */
    [[nodiscard]] std::int32_t sampleCount() const noexcept { return output_->sampleCount; }
    /** Profile instruments: height of the chosen cell above the head, m. */
    [[nodiscard]] float cellVerticalRange() const noexcept { return output_->cellVerticalRange; }

    /** Row `i`, below kMaxTrackSamples. */
    [[nodiscard]] CleanedRow row(std::size_t i) const noexcept {
        return detail::unpacked(output_->rows[i]);
    }
    /** Row `i`'s surface track, m. */
    [[nodiscard]] float track(std::size_t i) const noexcept { return output_->rows[i].astOut; }
    /** Row `i`'s pressure, m of water. */
    [[nodiscard]] float pressure(std::size_t i) const noexcept {
        return output_->rows[i].pressureOut;
    }

    /** The packed structure, for calls of the C interface. */
    [[nodiscard]] OVPreProcessOutput *get() noexcept { return output_.get(); }
    /** The same to read. */
    [[nodiscard]] const OVPreProcessOutput *get() const noexcept { return output_.get(); }

private:
    detail::OutputMemory<OVPreProcessOutput> output_;
};

/**
 * Surface track and pressure of a burst alone, 262,156 bytes of addresses. Elements are written for methods 2 and 4, one
 * per surface-track element; the others keep what an earlier burst left there.
 */
class CleanedSeries {
public:
    /** Throws std::bad_alloc when there is no memory for it. */
    CleanedSeries() : output_(detail::makeOutput<OVPreProcessOutputSUV>()) {}

    /** True when the burst may be processed. */
    [[nodiscard]] bool accepted() const noexcept { return output_->done != 0; }
    /** True when the surface track is usable; false also when it was not cleaned. */
    [[nodiscard]] bool trackUsable() const noexcept { return output_->astValidOut != 0; }
    /** Element `i` of the cleaned surface track, m. */
    [[nodiscard]] float track(std::size_t i) const noexcept { return output_->astOut[i]; }
    /** Element `i` of the cleaned pressure with its mean, m of water. */
    [[nodiscard]] float pressure(std::size_t i) const noexcept { return output_->pressureOut[i]; }

    /** The packed structure, for calls of the C interface. */
    [[nodiscard]] OVPreProcessOutputSUV *get() noexcept { return output_.get(); }
    /** The same to read. */
    [[nodiscard]] const OVPreProcessOutputSUV *get() const noexcept { return output_.get(); }

private:
    detail::OutputMemory<OVPreProcessOutputSUV> output_;
};

/** The spectra of a burst by frequency bin, 12 KB in place. Views are good as long as the object and its contents. */
class Spectra {
public:
    /** True when the burst had a valid surface track. */
    [[nodiscard]] bool hasTrack() const noexcept { return get()->spectrumKind == kKindWithTrack; }
    /** Bins of the main axis. */
    [[nodiscard]] std::size_t count() const noexcept {
        return detail::bins(get()->count, kMaxFrequencies);
    }
    /** Bins of the fine axis. */
    [[nodiscard]] std::size_t fineCount() const noexcept {
        return detail::bins(get()->fineCount, kMaxFineFrequencies);
    }

    /** Elevation spectrum from pressure, m^2/Hz, main axis. */
    [[nodiscard]] std::span<const float> pressureEnergy() const noexcept {
        return {floatsAt(offsetof(Packed, energySpectrum)), count()};
    }
    /** Elevation spectrum from velocity, m^2/Hz, main axis. */
    [[nodiscard]] std::span<const float> velocityEnergy() const noexcept {
        return {floatsAt(offsetof(Packed, secondSpectrum)), count()};
    }
    /** Elevation spectrum from the surface track, m^2/Hz, fine axis. */
    [[nodiscard]] std::span<const float> trackEnergy() const noexcept {
        return {floatsAt(offsetof(Packed, fineSpectrum)), fineCount()};
    }
    /** Elevation spectrum of one beam (0 to 3) at one bin of the main axis, m^2/Hz. */
    [[nodiscard]] float beamEnergy(std::size_t bin, std::size_t beam) const noexcept {
        return std::bit_cast<float>(std::uint32_t{get()->binInfo[bin][beam]});
    }
    /** Mean direction, degrees, main axis. */
    [[nodiscard]] std::span<const float> direction() const noexcept {
        return {floatsAt(offsetof(Packed, direction)), count()};
    }
    /** Directional spread, degrees, main axis. */
    [[nodiscard]] std::span<const float> spread() const noexcept {
        return {floatsAt(offsetof(Packed, spread)), count()};
    }
    /** Check ratio of two elevation estimates, main axis. */
    [[nodiscard]] std::span<const float> checkRatio() const noexcept {
        return {floatsAt(offsetof(Packed, bandValue)), count()};
    }
    /** Fourier coefficients of a bin of the main axis with their own signs, going to; missing where there are none. */
    [[nodiscard]] FourierCoefficients coefficients(std::size_t bin) const noexcept {
        const Packed &packed = *get();
        return {turned(packed.coefQ[bin]), turned(packed.coefP[bin]), turned(packed.coefR[bin]),
                packed.coefS[bin]};
    }

    /** The packed structure, for calls of the C interface. */
    [[nodiscard]] OVFourierCoefficientSpectra *get() noexcept {
        return reinterpret_cast<Packed *>(bytes_.data() + kLead);
    }
    /** The same to read. */
    [[nodiscard]] const OVFourierCoefficientSpectra *get() const noexcept {
        return reinterpret_cast<const Packed *>(bytes_.data() + kLead);
    }

private:
    using Packed = OVFourierCoefficientSpectra;

    static constexpr std::uint8_t kKindWithTrack = 15;
    // The packed structure begins with a single byte. Behind three others, all its arrays lie where a float may.
    static constexpr std::size_t kLead = 3;
    static_assert((kLead + offsetof(Packed, energySpectrum)) % alignof(float) == 0);

    [[nodiscard]] const float *floatsAt(std::size_t offset) const noexcept {
        return reinterpret_cast<const float *>(bytes_.data() + kLead + offset);
    }
    // The marker comes as it is or turned, depending on who set it; a coefficient is never beyond 1.
    [[nodiscard]] static float turned(float value) noexcept {
        return value == kMissing ? kMissing : -value;
    }

    alignas(float) std::array<std::byte, kLead + sizeof(Packed)> bytes_{};
};

} // namespace orvikbase

#endif // ORVIKBASE_OUTPUTS_HPP
