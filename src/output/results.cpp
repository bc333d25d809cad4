#include "output/results.hpp"

#include <algorithm>
#include <bit>
#include <cmath>
#include <cstddef>
#include <cstring>
#include <iterator>

#include "frame/checked_convert.hpp"
#include "frame/constants.hpp"

namespace ov {
namespace {

constexpr std::int32_t kTrackOnlyMode =
    3; // directionalInputMode: no results without the surface track
constexpr std::uint8_t kKindPlain = 11;
constexpr std::uint8_t kKindWithTrack = 15;

bool trackMissing(const WaveVariables &rec) {
    return rec.directionalInputMode == kTrackOnlyMode && rec.surfaceTrackValid == 0;
}

// The checked height's missing value is an integer pattern, unlike every other slot's.
float missingInteger() { return std::bit_cast<float>(std::int32_t{OV_MISSING_INTEGER}); }

void setResultsMissing(const WaveVariables &rec, OVWaveParameterSet &out) {
    for (std::size_t i = 0; i < OV_WAVE_PARAMETERS;
         ++i) { // by index: host memory may be misaligned
        out.waveParameters[i] = kMissing;
    }
    out.instrumentDepth = kMissing;
    out.astLevel = kMissing;
    out.aliasingFrequency = kMissing;
    out.checkedMeanPeriod = kMissing;
    out.astInitialBadCount = 0;
    out.astSpikeCount = rec.missingSampleCount;
}

void copyResults(const WaveVariables &rec, OVWaveParameterSet &out) {
    std::memcpy(out.waveParameters, rec.waveParameters, sizeof out.waveParameters);
    out.instrumentDepth = rec.instrumentDepth;
    out.astInitialBadCount = rec.astInitialBadCount;
    out.astSpikeCount = rec.astSpikeCount;
    out.qualityFlags = rec.qualityFlags;
    out.astLevel = rec.astLevel;
    out.astLevelEven = rec.astLevelEven;
    out.aliasingFrequency = rec.aliasingFrequency;
    out.checkedHeight = rec.checkedHeight;
    out.checkedMeanPeriod = rec.checkedMeanPeriod;
}

// Places of beams that are not in use keep what the host had there. By bytes: host memory may be misaligned.
void clearSpectra(const WaveVariables &rec, OVFourierCoefficientSpectra &out) {
    constexpr std::size_t kBeams = offsetof(OVFourierCoefficientSpectra, binInfo);
    constexpr std::size_t kBehindBeams = offsetof(OVFourierCoefficientSpectra, secondSpectrum);
    constexpr std::size_t kBeamBytes = (kBehindBeams - kBeams) / kMaxFreq;
    auto *const bytes = reinterpret_cast<unsigned char *>(&out);
    std::memset(&out.energySpectrum, 0, sizeof out.energySpectrum);
    std::memset(bytes + kBehindBeams, 0, sizeof out - kBehindBeams);
    const auto inUse =
        static_cast<std::size_t>(std::clamp(rec.velocitySeriesCount, 0, 4)) * sizeof(float);
    for (std::size_t i = 0; i < kMaxFreq; ++i) {
        std::memset(bytes + kBeams + i * kBeamBytes, 0, inUse);
    }
}

void copySpectra(const WaveVariables &rec, OVFourierCoefficientSpectra &out, int i) {
    out.energySpectrum[i] = rec.spectrumPrs[i];
    out.secondSpectrum[i] = rec.spectrumVel[i];
}

// Elevation spectra by beam, four places a bin; a fifth and sixth run on into the next bin's places.
void copyBeams(const WaveVariables &rec, OVFourierCoefficientSpectra &out, int i) {
    constexpr std::size_t kPlaces = sizeof out.binInfo / sizeof(float);
    const auto first = static_cast<std::size_t>(i) * 4;
    const auto wanted =
        static_cast<std::size_t>(std::clamp(rec.velocitySeriesCount, 0, kMaxSeries));
    const std::size_t fitting = std::min(wanted, kPlaces - first);
    auto *const bytes = reinterpret_cast<unsigned char *>(out.binInfo);
    std::memcpy(bytes + first * sizeof(float), rec.beamElevSpectrum[i], fitting * sizeof(float));
}

void copyCoefficients(const WaveVariables &rec, OVFourierCoefficientSpectra &out, int i) {
    out.coefP[i] = -rec.fourierB1[i];
    out.coefQ[i] = -rec.fourierA1[i];
    out.coefR[i] = -rec.fourierA2[i];
    out.coefS[i] = rec.fourierB2[i]; // this one keeps its sign
}

void setCoefficientsMissing(OVFourierCoefficientSpectra &out, int i) {
    out.coefP[i] = kMissing;
    out.coefQ[i] = kMissing;
    out.coefR[i] = kMissing;
    out.coefS[i] = kMissing;
    out.bandValue[i] = kMissing;
}

void copyBin(WaveVariables &rec, OVFourierCoefficientSpectra &out, int i) {
    copySpectra(rec, out, i);
    copyBeams(rec, out, i);
    out.direction[i] = rec.meanDirection[i];
    out.spread[i] = rec.directionalSpread[i];
    if (i < rec.lastValidFreqIndex) {
        copyCoefficients(rec, out, i);
        out.bandValue[i] = static_cast<float>(rec.checkRatio[i]);
    } else {
        // The host still sees this direction once; the next reader finds it missing.
        setCoefficientsMissing(out, i);
        rec.meanDirection[i] = kMissing;
        rec.directionalSpread[i] = kMissing;
    }
    if (trackMissing(rec)) {
        setCoefficientsMissing(out, i);
        out.direction[i] = kMissing;
        out.spread[i] = kMissing;
    }
}

// n values scaled so that the largest becomes 65535; 0 throughout without energy.
void scaleSpectrum(const WaveVariables &rec, const float *spectrum, int n,
                   OVScaledEnergySpectrum &out) {
    for (int i = 0; i < fineBinCount(rec); ++i) {
        out.values[i] = 0;
    }
    float largest = 0.0F;
    for (int i = 0; i < n; ++i) {
        largest = std::max(largest, spectrum[i] * 10000.0F);
    }
    for (int i = 0; i < n; ++i) {
        const double scaled =
            static_cast<double>(spectrum[i]) * 65535.0 * 10000.0 / static_cast<double>(largest);
        out.values[i] =
            largest > 0.0F ? static_cast<std::uint16_t>(truncateToInt(scaled)) : std::uint16_t{0};
    }
    out.scaleMax = static_cast<std::uint32_t>(truncateToInt(static_cast<double>(largest)));
}

} // namespace

void getWaveParameters(const WaveVariables &rec, OVWaveParameterSet &out) {
    setResultsMissing(rec, out);
    out.qualityFlags = OV_FLAG_NO_RESULT;
    out.checkedHeight = missingInteger();
    if (rec.processedFlag != 0) {
        copyResults(rec, out);
    } else {
        out.astLevelEven = kMissing;
    }
    if (trackMissing(rec)) {
        setResultsMissing(rec, out);
        out.checkedHeight = rec.checkedHeight;
    }
    out.spectrumSource = rec.spectrumSource;
    out.selectedCell = rec.selectedCell + 1;
    const double slant = static_cast<double>(rec.slantAngle) * kPi / 180.0;
    out.cellVerticalRange =
        static_cast<float>(std::cos(slant) * static_cast<double>(rec.headerDepth));
    out.energyPeriod = rec.energyPeriod;
}

void getWaveSpectrum(WaveVariables &rec, OVFourierCoefficientSpectra &out) {
    clearSpectra(rec, out);
    out.spectrumKind = rec.surfaceTrackValid == 1 ? kKindWithTrack : kKindPlain;
    out.count = rec.nFrequencies;
    out.fineCount = rec.nFrequenciesFine;
    for (int i = 0; i < fineBinCount(rec); ++i) {
        out.fineSpectrum[i] = trackMissing(rec) ? kMissing : rec.bandSpectrumFine[i];
    }
    for (int i = 0; i < mainBinCount(rec); ++i) {
        copyBin(rec, out, i);
    }
    if (rec.processingMethod == 1) {
        // A host that asked for method 1 gets every bin, whatever the limits say.
        for (int i = 0; i < mainBinCount(rec); ++i) {
            copySpectra(rec, out, i);
            out.direction[i] = rec.meanDirection[i];
            out.spread[i] = rec.directionalSpread[i];
            copyCoefficients(rec, out, i);
        }
    }
}

void getEnergySpectrum(const WaveVariables &rec, OVEnergySpectrumBlock &out) {
    out.count = rec.nFrequencies;
    std::memcpy(&out.values, rec.spectraUsed,
                static_cast<std::size_t>(mainBinCount(rec)) * sizeof(float));
}

void getScaledEnergySpectrum(const WaveVariables &rec, OVScaledEnergySpectrum &out) {
    const bool track = rec.spectrumSource == OV_SOURCE_SURFACE_TRACK;
    scaleSpectrum(rec, rec.spectraUsed, track ? fineBinCount(rec) : mainBinCount(rec), out);
}

void getScaledSpectrumOfKind(const WaveVariables &rec, std::int32_t kind,
                             OVScaledEnergySpectrum &out) {
    switch (kind) {
    case OV_SOURCE_PRESSURE:
        scaleSpectrum(rec, rec.spectrumPrs, mainBinCount(rec), out);
        break;
    case OV_SOURCE_VELOCITY:
        scaleSpectrum(rec, rec.spectrumVel, mainBinCount(rec), out);
        break;
    case OV_SOURCE_SURFACE_TRACK:
        scaleSpectrum(rec, rec.bandSpectrumFine, fineBinCount(rec), out);
        break;
    default:
        getScaledEnergySpectrum(rec, out);
        break;
    }
}

bool getMeanCurrent(const WaveVariables &rec, std::int32_t selector, float (&values)[3]) {
    if (selector == 0) {
        std::copy_n(rec.meanVelocity, 3, values);
        return true;
    }
    if (selector == 1) {
        values[0] = rec.meanCurrentSpeed;
        values[1] = static_cast<float>(static_cast<double>(rec.meanCurrentDirection) * 180.0 / kPi);
        values[2] = 0.0F;
        return true;
    }
    return false;
}

} // namespace ov
