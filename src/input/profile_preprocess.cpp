#include "input/profile_preprocess.hpp"

#include <algorithm>
#include <cmath>
#include <iterator>

#include "frame/constants.hpp"
#include "input/preprocess.hpp"
#include "input/preprocess_steps.hpp"
#include "input/profile_noise.hpp"
#include "input/series_repair.hpp"

namespace ov {
namespace {

constexpr double kLeastCorrelation = 50.0; // [percent]
constexpr double kTroughShare = 0.8;       // of the least pressure, without a surface track

double radians(double degrees) { return degrees * kPi / 180.0; }

// Nothing of an earlier burst may show in this one's results, not even when it is rejected.
void clearResults(WaveVariables &rec) {
    rec.astBadCount = 0;
    rec.astSpikeCount = 0;
    rec.astInitialBadCount = 0;
    rec.qualityFlags = 0;
    rec.surfaceTrackValid = 0;
    rec.trackVerdict = 0;
    rec.selectedCell = 0;
    std::fill(std::begin(rec.waveParameters), std::end(rec.waveParameters), kMissing);
    for (float *result : {&rec.astLevel, &rec.astLevelEven, &rec.instrumentDepth, &rec.energyPeriod,
                          &rec.checkedHeight, &rec.checkedMeanPeriod, &rec.aliasingFrequency}) {
        *result = kMissing;
    }
}

// Here the window holds for this burst alone.
void takeWindow(WaveVariables &rec, const HostView &host) {
    rec.useAstWindow = host.useWindow ? 1 : 0;
    if (host.useWindow) {
        rec.astWindowBelow = std::fabs(host.windowBelow);
        rec.astWindowAbove = std::fabs(host.windowAbove);
    }
}

// Distance [m] from the head to the wave troughs: the least of the track with its trend put back, or a share of the
// least pressure.
double troughDistance(const WaveVariables &rec) {
    if (rec.surfaceTrackValid != 1) {
        return kTroughShare * static_cast<double>(rec.minPressure);
    }
    double least = 10000.0;
    for (int i = 0; i < rec.astLength; ++i) {
        const double relative =
            static_cast<double>(rec.astSeries[i]) - static_cast<double>(rec.instrumentDepth);
        least = std::min(least, relative + i * rec.trendSlope + rec.trendIntercept);
    }
    return static_cast<double>(rec.profileParamA) / 100.0 * least;
}

double largestTilt(const float *series, int n) {
    float largest = 0.0F;
    for (int i = 0; i < n; ++i) {
        largest = std::max(largest, std::fabs(series[i]));
    }
    return radians(static_cast<double>(largest));
}

// Height per slant range of the beam that the tilt brings nearest to the surface.
double steepestBeamCosine(const WaveVariables &rec) {
    const double pitch = largestTilt(rec.attitudeSeries[1], rec.burstLength);
    const double roll = largestTilt(rec.attitudeSeries[2], rec.burstLength);
    const double tilt = std::acos(std::cos(pitch) * std::cos(roll));
    return std::cos(radians(static_cast<double>(rec.slantAngle)) - tilt);
}

// The cell whose far end lies just below the troughs; the first one where none does.
int cellBelowTroughs(const WaveVariables &rec) {
    const double trough = troughDistance(rec);
    const double steepest = steepestBeamCosine(rec);
    const double length = rec.sensorHeight;
    const double blanking = rec.sensorDepth;
    const auto margin = [&](int cell) {
        return trough - ((cell + 2) * length + blanking) * steepest;
    };
    double best = margin(0);
    int selected = 0;
    const int cells = static_cast<int>(std::min<std::uint32_t>(rec.nCells, kMaxCells));
    for (int c = 1; c < cells; ++c) {
        const double m = margin(c);
        if (m > 0.0 && m < best) {
            best = m;
            selected = c;
        }
    }
    return selected;
}

// Mean over the burst of the weakest beam's correlation [percent].
double meanCorrelation(const WaveVariables &rec, int cell) {
    const int samples = completedLength(rec);
    const int beams = std::clamp<int>(rec.beamCount, 1, kMaxBeams);
    double sum = 0.0;
    for (int i = 0; i < samples; ++i) {
        std::uint8_t weakest = rec.profileCorrelationStore[0][i][cell];
        for (int b = 1; b < beams; ++b) {
            weakest = std::min(weakest, rec.profileCorrelationStore[b][i][cell]);
        }
        sum += weakest;
    }
    return samples > 0 ? sum / samples : 0.0;
}

void selectCell(WaveVariables &rec) {
    rec.selectedCell = cellBelowTroughs(rec);
    while (rec.selectedCell > 0 && meanCorrelation(rec, rec.selectedCell) < kLeastCorrelation) {
        --rec.selectedCell;
    }
}

// The chosen cell's velocities become the burst's velocity series, and the host sees what was chosen.
void takeCell(WaveVariables &rec, OVPreProcessOutput &output) {
    const int cell = rec.selectedCell;
    const int samples = completedLength(rec);
    for (int i = 0; i < samples; ++i) {
        OVPreProcessRow &row = output.rows[i];
        for (int b = 0; b < kMaxBeams; ++b) {
            const float velocity =
                static_cast<float>(rec.profileVelocityStore[b][i][cell] / 1000.0);
            velocitySeriesData(rec, b)[i] = velocity;
            row.velocity[b] = velocity;
            row.amplitude[b] = rec.profileAmplitudeStore[b][i][cell];
            row.correlation[b] = rec.profileCorrelationStore[b][i][cell];
        }
        row.attitude[0] = rec.attitudeSeries[0][i];
        row.attitude[1] = rec.attitudeSeries[2][i]; // roll before pitch
        row.attitude[2] = rec.attitudeSeries[1][i];
    }
}

// The pressure rows of method 1 carry the missing level, which this form resets first.
void preparePressure(WaveVariables &rec, const HostView &host) {
    findMinPressure(rec);
    despikePressure(rec, rec.pressureSeries);
    if (rec.processingMethod == 1) {
        writePressureRows(rec, host);
    }
    rec.instrumentDepth =
        static_cast<float>(detrendSeries(rec, rec.pressureSeries, rec.burstLength));
    rec.waterDepth = static_cast<float>(static_cast<double>(rec.instrumentDepth) + rec.levelOffset);
}

} // namespace

void preProcessProfile(WaveVariables &rec, OVPreProcessOutput &output) {
    clearResults(rec);
    completeBurst(rec);
    if (rec.readyFlag == 0) {
        output.done = 0;
        return;
    }
    const HostView host = viewOf(output);
    preparePressure(rec, host);
    if (hasSurfaceTrack(rec.processingMethod)) {
        takeWindow(rec, host);
        preProcessTrack(rec, host);
        if (!host.skipAstCleaning) {
            output.astValidOut = rec.surfaceTrackValid;
        }
    }
    rec.trackVerdict = rec.surfaceTrackValid;
    selectCell(rec);
    rec.velocityNoise = profileVelocityNoise(rec);
    rec.velocityNoiseMps = rec.velocityNoise / 100.0F;
    takeCell(rec, output);
    const double range = (rec.selectedCell + 1) * static_cast<double>(rec.sensorHeight);
    rec.headerDepth = static_cast<float>(range + static_cast<double>(rec.sensorDepth));
    output.sampleCount = static_cast<std::int32_t>(rec.burstSamples);
    const double slant = std::cos(radians(static_cast<double>(rec.slantAngle)));
    output.cellVerticalRange = static_cast<float>(slant * static_cast<double>(rec.headerDepth));
    output.done = 1;
}

} // namespace ov
