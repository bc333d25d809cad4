#include "frame/process.hpp"

#include <algorithm>
#include <cmath>
#include <cstring>
#include <iterator>

#include "frame/constants.hpp"
#include "frame/driver.hpp"

namespace ov {
namespace {

constexpr float kConvergenceTolerance = 1.0e-5F; // of the iterative directional estimator
constexpr std::int32_t kIterationLimit = 3;

template <class Array> void clear(Array &array) { std::memset(array, 0, sizeof array); }

// Every per-frequency series that a run accumulates into.
void clearSpectra(WaveVariables &rec) {
    clear(rec.spectrumVel);
    clear(rec.spectrumPrs);
    clear(rec.bandSpectrum);
    clear(rec.meanDirection);
    clear(rec.directionalSpread);
    clear(rec.fourierA1);
    clear(rec.fourierB1);
    clear(rec.fourierA2);
    clear(rec.fourierB2);
    clear(rec.spectraUsed);
    clear(rec.bandSpectrumFine);
    clear(rec.beamElevSpectrum);
    clear(rec.checkRatio);
}

void clearParameters(WaveVariables &rec) {
    std::fill(std::begin(rec.waveParameters), std::end(rec.waveParameters), kMissing);
    rec.energyPeriod = kMissing;
    rec.checkedHeight = kMissing;
    rec.checkedMeanPeriod = kMissing;
    rec.aliasingFrequency = kMissing;
    rec.lastValidFreqIndex = kMaxFreq;
}

// Noise of a velocity sample from pings and cell size.
void deriveVelocityNoise(WaveVariables &rec) {
    if (rec.instrumentType == kProfileInstrument) {
        return; // found with the cell
    }
    const double pings = rec.pingsPerSample;
    rec.velocityNoise =
        static_cast<float>(562.5 / (std::sqrt(pings) * static_cast<double>(rec.cellSize)));
    rec.velocityNoiseMps = rec.velocityNoise / 100.0F;
}

} // namespace

void prepareRun(WaveVariables &rec) {
    clearSpectra(rec);
    clear(rec.dirSpectrum);
    clearParameters(rec);
    rec.qualityFlags &= OV_FLAG_WEAK_AMPLITUDE; // the other bits are the run's own
    rec.directionalInputMode = rec.configuredInputMode;
    rec.estimateMask = rec.configuredEstimateMask;
    rec.surfaceTrackValid = rec.trackVerdict;
    const bool slowRate = rec.samplingRate == 0 && rec.acousticFrequency == k400kHz;
    rec.samplingRateHz = slowRate ? 0.75F : static_cast<float>(rec.samplingRate);
    deriveVelocityNoise(rec);
    rec.activeMethod = rec.processingMethod;
    rec.processedFlag = 0;
    rec.convergenceTolerance = kConvergenceTolerance;
    rec.iterationLimit = kIterationLimit;
    rec.firstRunFlag = 1;
}

void resetResults(WaveVariables &rec) {
    rec.processedFlag = 0;
    clearParameters(rec);
    rec.instrumentDepth = kMissing;
    rec.astLevel = kMissing;
    rec.astLevelEven = kMissing;
    rec.qualityFlags = OV_FLAG_NO_RESULT;
    rec.spectrumSource = OV_SOURCE_PRESSURE;
    clear(rec.meanVelocity);
    rec.meanCurrentSpeed = 0.0F;
    rec.meanCurrentDirection = 0.0F;
    rec.selectedCell = 0;
    rec.velocitySeriesCount = 0;
    rec.surfaceTrackValid = 0;
    rec.trackVerdict = 0;
    clearSpectra(rec);
    // Only the directions in use: what lies beyond keeps its contents.
    for (auto &row : rec.dirSpectrum) {
        std::fill_n(row, directionCount(rec), 0.0);
    }
    // The upper half of the work area serves the double-rate surface track alone.
    std::fill(rec.fftWork + kMaxTrack, std::end(rec.fftWork), 0.0F);
}

bool processBurst(WaveVariables &rec) {
    if (rec.readyFlag != 0) {
        prepareRun(rec);
        runDriver(rec);
        rec.processedFlag = 1;
    }
    if (rec.readyFlag != 0) { // the run may have rejected the burst
        return rec.processedFlag != 0;
    }
    resetResults(rec);
    return false;
}

} // namespace ov
