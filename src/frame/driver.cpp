#include "frame/driver.hpp"

#include <algorithm>
#include <cmath>
#include <cstring>
#include <iterator>

#include "directional/cross_spectra.hpp"
#include "directional/mlm.hpp"
#include "directional/moments.hpp"
#include "frame/constants.hpp"
#include "frame/quality_checks.hpp"
#include "spectral/elevation_spectra.hpp"
#include "spectral/fft.hpp"
#include "spectral/general_series.hpp"
#include "spectral/profile_series.hpp"
#include "spectral/transfer_functions.hpp"
#include "spectral/wave_numbers.hpp"
#include "spectral/wave_parameters.hpp"
#include "spectral/zero_crossing.hpp"

namespace ov {
namespace {

constexpr double kDeepInstrument =
    20.0; // [m] below this, velocity carries more of the waves than pressure
constexpr double kTenthFactor = 1.27; // H1/10 over Hm0 in a Rayleigh sea
constexpr double kMaxFactor = 1.67;   // Hmax over Hm0

template <class Array> void clear(Array &array) { std::memset(array, 0, sizeof array); }

bool wantsTrack(const WaveVariables &rec) { return rec.activeMethod == 2 || rec.activeMethod == 4; }
bool usesDistribution(const WaveVariables &rec) {
    return rec.activeMethod == 3 || rec.activeMethod == 4;
}
bool hasTrack(const WaveVariables &rec) { return wantsTrack(rec) && rec.surfaceTrackValid != 0; }

// Heading with declination, in [0, 360]: the interval is closed.
void settleDirectionOffset(WaveVariables &rec) {
    rec.directionOffset = static_cast<float>(static_cast<double>(rec.heading) + rec.headingOffset);
    if (rec.directionOffset < 0.0F) {
        rec.directionOffset += 360.0F;
    }
    if (rec.directionOffset > 360.0F) {
        rec.directionOffset -= 360.0F;
    }
}

// A method whose input the host does not offer falls back to the one without it.
void settleMethod(WaveVariables &rec) {
    if (rec.activeMethod == 1) {
        rec.directionalInputMode = 0;
    } else if (rec.activeMethod == 4 && rec.directionalInputMode <= 1) {
        rec.activeMethod = 3;
        rec.estimateMask = rec.instrumentType == kProfileInstrument ? 15 : 7;
    } else if (rec.activeMethod == 2 && rec.directionalInputMode < 2) {
        rec.activeMethod = 1;
        rec.directionalInputMode = 0;
    }
}

void findMeanCurrent(WaveVariables &rec) {
    const float u = rec.meanVelocity[0];
    const float v = rec.meanVelocity[1];
    rec.meanCurrentSpeed = static_cast<float>(std::sqrt(static_cast<double>(u * u + v * v)));
    const double east = u;
    const double north = v;
    const double offset = rec.headingOffset * static_cast<double>(kPiF) / 180.0;
    float direction =
        static_cast<float>(static_cast<double>(kHalfPiF) - std::atan2(north, east) + offset);
    if (direction < 0.0F) {
        direction += kTwoPiF;
    }
    if (direction > kTwoPiF) {
        direction -= kTwoPiF;
    }
    rec.meanCurrentDirection = direction;
}

// Slot of the series list that takes the surface track, or -1.
int trackSlot(const WaveVariables &rec) {
    const bool point = rec.instrumentType == 3 && (rec.estimateMask & kMaskVerticalBeam) != 0;
    const bool profile =
        rec.instrumentType == kProfileInstrument && (rec.estimateMask & kMaskProfileTrack) != 0;
    return point || profile ? rec.nMlmSeries - 1 : -1;
}

// Statistics, spectrum and checks of a usable surface track.
void analyseTrack(WaveVariables &rec) {
    zeroCrossingStatistics(rec);
    for (int i = 0; i < rec.astLength; ++i) {
        loadSample(rec, i, scaledTrack(rec, i));
    }
    clear(rec.astSpecRe);
    clear(rec.astSpecIm);
    transformLoaded(rec, rec.astLength, rec.astSpecRe, rec.astSpecIm);
    const int slot = trackSlot(rec);
    if (slot >= 0 && slot < kMaxSeries) {
        std::copy_n(rec.astSpecRe, kSlotBins, rec.seriesSpecRe[slot]);
        std::copy_n(rec.astSpecIm, kSlotBins, rec.seriesSpecIm[slot]);
    }
    computeBandSpectraFine(rec);
    std::copy_n(rec.bandSpectrumFine, fineBinCount(rec), rec.spectraUsed);
    std::copy_n(rec.fineFreqAxis, kMaxFreqFine, rec.paramFrequencies);
    findFinePeak(rec);
    checkTrackRange(rec);
    checkClearance(rec);
}

void surfaceTrackStage(WaveVariables &rec) {
    if (rec.surfaceTrackValid != 0) {
        analyseTrack(rec);
    } else {
        rec.qualityFlags |= OV_FLAG_NO_TRACK;
        std::fill(rec.waveParameters + OV_H_THIRD, rec.waveParameters + OV_T_CROSSING + 1,
                  kMissing);
    }
    if (rec.surfaceTrackValid != 0) {
        return;
    }
    if (rec.activeMethod == 4) {
        rec.activeMethod = 3;
        if ((rec.estimateMask & kMaskProfileTrack) != 0) {
            --rec.nMlmSeries;
        }
    } else {
        rec.activeMethod = 1;
    }
}

// The spectrum behind the wave parameters.
void settleSource(WaveVariables &rec) {
    if (hasTrack(rec)) {
        rec.spectrumSource = OV_SOURCE_SURFACE_TRACK;
        return;
    }
    const bool profile = rec.instrumentType == kProfileInstrument;
    const bool deep = profile || static_cast<double>(rec.instrumentDepth) > kDeepInstrument;
    const bool velocity = rec.directionalInputMode == 1 || (rec.directionalInputMode == 2 && deep);
    rec.spectrumSource =
        velocity && rec.activeMethod != 1 ? OV_SOURCE_VELOCITY : OV_SOURCE_PRESSURE;
}

// What a pass writes itself. The band spectra and the selected spectrum were computed before.
void clearPass(WaveVariables &rec) {
    clear(rec.spectrumVel);
    clear(rec.spectrumPrs);
    clear(rec.beamElevSpectrum);
    clear(rec.meanDirection);
    clear(rec.directionalSpread);
    clear(rec.fourierA1);
    clear(rec.fourierB1);
    clear(rec.fourierA2);
    clear(rec.fourierB2);
    clear(rec.checkRatio);
    clear(rec.waveNumbers);
    clear(rec.pressureGain);
}

// Component of the mean current along a direction [rad]. Without a direction or a current that is a number there is
// none: height and periods survive it.
float currentAlong(const WaveVariables &rec, double direction) {
    const double along = std::cos(static_cast<double>(rec.meanCurrentDirection) - direction) *
                         static_cast<double>(rec.meanCurrentSpeed);
    return std::isnan(along) ? 0.0F : static_cast<float>(along);
}

double radians(float degrees) { return static_cast<double>(degrees) * kPi / 180.0; }
double positiveAngle(double angle) { return angle < 0.0 ? angle + kTwoPi : angle; }

// Direction [rad] of the burst's waves from its mean direction, turned round.
double turnedMeanDirection(const WaveVariables &rec) {
    return positiveAngle(radians(rec.waveParameters[OV_MEAN_DIRECTION]) - kPi);
}

double binDirection(const WaveVariables &rec, int f) {
    return rec.reverseDirections != 0 ? turnedMeanDirection(rec)
                                      : positiveAngle(radians(rec.meanDirection[f]));
}

void copyMatrix(WaveVariables &rec) {
    for (int j = 0; j < kMaxSeries; ++j) {
        for (int i = 0; i < kMaxSeries; ++i) {
            rec.mlmMatrix[j][i] = static_cast<double>(rec.crossSpectralMatrix[j][i]);
        }
    }
}

void estimateDistribution(WaveVariables &rec, const DirectionTable &table, int f) {
    copyMatrix(rec);
    estimateMlm(rec);
    refineImlm(rec);
    computeModelCrossSpectra(rec);
    elevationSpectraPerBeam(rec, f);
    computeMomentsFromDistribution(rec, table, f);
    std::copy_n(rec.imlmWork, directionCount(rec), rec.dirSpectrum[f]);
}

// Auto- and cross-spectra of the last two series, scaled for display.
void keepLastPair(WaveVariables &rec, int f) {
    const int b = std::max(rec.seriesCount - 1, 0);
    const int a = std::max(rec.seriesCount - 2, 0);
    const auto &c = rec.crossSpectralMatrix;
    const float entries[] = {c[a][a], c[a][b], c[b][a], c[b][b]};
    for (std::size_t e = 0; e < std::size(entries); ++e) {
        rec.lastPairCross[e][f] = static_cast<double>(entries[e]) * 1000.0;
    }
}

void estimateBin(WaveVariables &rec, const DirectionTable &table, int f) {
    buildTransferMatrix(rec, table, f);
    computeCrossSpectra(rec, f);
    if (usesDistribution(rec)) {
        estimateDistribution(rec, table, f);
    } else {
        elevationSpectraFromHorizontal(rec, f);
        computeMomentsFromCrossSpectra(rec, f);
    }
    checkRatioAtBin(rec, f);
    rec.currentAlongWave[f] = currentAlong(rec, binDirection(rec, f));
    keepLastPair(rec, f);
}

// Wavenumbers with the current along the mean direction, and the pressure spectrum by the response without gain floor.
void applyCurrent(WaveVariables &rec) {
    const float along = currentAlong(rec, turnedMeanDirection(rec));
    std::fill(std::begin(rec.currentAlongWave), std::end(rec.currentAlongWave), along);
    solveWaveNumbers(rec);
    const double depth = std::abs(static_cast<double>(rec.instrumentDepth));
    for (int f = 0; f < rec.validFreqCount; ++f) {
        const double gain = rec.pressureGain[f];
        const double attenuation = pressureAttenuation(rec.waveNumbers[f], rec.waterDepth, depth);
        rec.depthAttenuation[f] = attenuation;
        const double energy = rec.spectrumPrs[f];
        rec.spectrumPrsWide[f] = energy * (gain * gain) / (attenuation * attenuation);
        rec.spectrumPrs[f] = static_cast<float>(rec.spectrumPrsWide[f]);
    }
}

void runPass(WaveVariables &rec, const DirectionTable &table) {
    clearPass(rec);
    solveWaveNumbers(rec);
    for (int f = 0; f < rec.validFreqCount; ++f) {
        estimateBin(rec, table, f);
    }
    spectralMoments(rec);
    applyCurrent(rec);
}

void deriveParameters(WaveVariables &rec) {
    cutAndTailSpectra(rec);
    spectralMoments(rec);
    peakParameters(rec);
    if (hasTrack(rec)) {
        findFinePeak(rec);
    }
    rec.checkedHeight = rec.waveParameters[OV_HM0];
}

// Directions of waves shorter than twice the sensor spacing are ambiguous: their coefficients become missing.
void maskAliasedBins(WaveVariables &rec) {
    aliasingLimit(rec, 0);
    aliasingLimit(rec, 1);
    for (int f = rec.lastValidFreqIndex; f < rec.validFreqCount; ++f) {
        rec.fourierA1[f] = kMissing;
        rec.fourierA2[f] = kMissing;
        rec.fourierB1[f] = kMissing;
        rec.fourierB2[f] = kMissing;
    }
}

// Without a usable surface track: heights of the highest waves from Hm0.
void deriveStatisticalHeights(WaveVariables &rec) {
    spectralMoments(rec);
    float *const w = rec.waveParameters;
    rec.checkedMeanPeriod = w[OV_TM02];
    rec.checkedHeight = w[OV_HM0];
    const double height = w[OV_HM0];
    w[OV_H_TENTH] = static_cast<float>(kTenthFactor * height);
    w[OV_H_MAX] = static_cast<float>(kMaxFactor * height);
    checkValidity(rec);
}

void finalChecks(WaveVariables &rec) {
    checkDepth(rec);
    checkSpectrumShape(rec);
    checkValidity(rec);
    checkTilt(rec);
    if (rec.activeMethod >= 2 && rec.activeMethod <= 4) {
        maskAliasedBins(rec);
    }
    const bool trackStands = rec.activeMethod != 3 &&
                             (rec.qualityFlags & OV_FLAG_TRACK_RANGE) == 0 &&
                             rec.surfaceTrackValid != 0 && rec.directionalInputMode > 1;
    if (trackStands) {
        return;
    }
    checkSpectrumRise(rec);
    checkSignal(rec);
    deriveStatisticalHeights(rec);
}

} // namespace

void runDriver(WaveVariables &rec) {
    settleDirectionOffset(rec);
    settleMethod(rec);
    if (rec.instrumentType == kProfileInstrument) {
        buildSeriesGeometry(rec);
    } else {
        buildGeneralSeries(rec);
    }
    findMeanCurrent(rec);
    computeBandSpectra(rec);
    std::copy_n(rec.frequencies, kMaxFreq, rec.paramFrequencies);
    std::fill_n(rec.paramFrequencies + kMaxFreq, kMaxFreqFine - kMaxFreq, 0.0F);
    if (wantsTrack(rec)) {
        surfaceTrackStage(rec);
    }
    settleSource(rec);
    alignSeriesPhases(rec);
    rec.validFreqCount = mainBinCount(rec);
    std::fill_n(rec.currentAlongWave, rec.validFreqCount, 0.0F);
    clear(rec.vertVelGainSq); // above a blocked bin the cut would see an earlier burst's
    rec.passCount = rec.firstRunFlag != 0 ? 2 : 1;
    const DirectionTable table(rec);
    for (int pass = 0; pass < rec.passCount; ++pass) {
        runPass(rec, table);
    }
    deriveParameters(rec);
    finalChecks(rec);
}

} // namespace ov
