#include "input/preprocess.hpp"

#include <algorithm>
#include <cmath>
#include <cstring>

#include "frame/constants.hpp"
#include "input/preprocess_steps.hpp"
#include "input/profile_samples.hpp"
#include "input/series_repair.hpp"

namespace ov {
namespace {

struct Outcome {
    bool done = false;
    bool trackCleaned = false;
};

// Sample j of a profile instrument repeats its predecessor. Its single-rate surface track is padded from element
// 2j - 2, as at double rate.
void padProfileSample(WaveVariables &rec, int j) {
    rec.astSeries[j] = rec.astSeries[2 * j - 2];
    repeatProfileAt(rec, j);
}

void padPointSample(WaveVariables &rec, int j) {
    rec.astSeries[2 * j] = rec.astSeries[2 * j - 2];
    rec.astSeries[2 * j + 1] = rec.astSeries[2 * j - 1];
    for (int s = 0; s < 4; ++s) {
        float *const series = velocitySeriesData(rec, s);
        series[j] = series[j - 1];
    }
}

// Nothing of an earlier burst may show in this one's results, not even when it is rejected.
void clearPreProcessing(WaveVariables &rec) {
    rec.surfaceTrackValid = 0;
    rec.trackVerdict = 0;
    rec.astBadCount = 0;
    rec.astSpikeCount = 0;
    rec.astInitialBadCount = 0;
    rec.selectedCell = 0;
    rec.astLevel = kMissing;
    rec.astLevelEven = kMissing;
}

// Once a host has asked for the window, it stays in force for later bursts of the record.
void takeWindow(WaveVariables &rec, const HostView &host) {
    if (host.useWindow) {
        rec.useAstWindow = 1;
        rec.astWindowBelow = std::fabs(host.windowBelow);
        rec.astWindowAbove = std::fabs(host.windowAbove);
    }
}

// `pressureRows`: the standard form writes rows for method 1 and notes a profile instrument's least pressure.
Outcome run(WaveVariables &rec, const HostView &host, bool pressureRows) {
    clearPreProcessing(rec);
    completeBurst(rec);
    if (rec.readyFlag == 0) {
        return {};
    }
    if (pressureRows && rec.instrumentType == kProfileInstrument) {
        findMinPressure(rec);
    }
    despikePressure(rec, rec.pressureSeries);
    if (pressureRows && rec.processingMethod == 1) {
        writePressureRows(rec, host);
    }
    rec.instrumentDepth =
        static_cast<float>(detrendSeries(rec, rec.pressureSeries, rec.burstLength));
    const double depth = rec.instrumentDepth;
    rec.waterDepth = static_cast<float>(depth + rec.levelOffset);
    const bool track = hasSurfaceTrack(rec.processingMethod);
    if (track) {
        takeWindow(rec, host);
        preProcessTrack(rec, host);
    }
    rec.trackVerdict = rec.surfaceTrackValid;
    return {true, track && !host.skipAstCleaning};
}

} // namespace

void completeBurst(WaveVariables &rec) {
    if (rec.readyFlag != 0) {
        return;
    }
    const int wanted = completedLength(rec);
    const int limit = wanted * 10 / 100;
    const int absent = wanted - rec.sampleCursor;
    if (absent > limit) {
        rec.missingSampleCount += absent;
    } else {
        // At least nine tenths are there, so that every padded sample has a predecessor.
        for (int j = rec.sampleCursor; j < wanted; ++j) {
            rec.pressureSeries[j] = rec.pressureSeries[j - 1];
            if (rec.instrumentType == kProfileInstrument) {
                padProfileSample(rec, j);
            } else {
                padPointSample(rec, j);
            }
            ++rec.sampleCursor;
            ++rec.missingSampleCount;
        }
    }
    rec.readyFlag = rec.missingSampleCount > limit ? 0 : 1;
}

void preProcess(WaveVariables &rec, OVPreProcessOutput &output) {
    const HostView host = viewOf(output);
    const Outcome outcome = run(rec, host, true);
    if (outcome.trackCleaned) {
        output.astValidOut = rec.surfaceTrackValid;
    }
    output.done = outcome.done ? 1 : 0;
}

void preProcessSuv(WaveVariables &rec, OVPreProcessOutputSUV &output) {
    const HostView host{reinterpret_cast<unsigned char *>(output.astOut),
                        reinterpret_cast<unsigned char *>(output.pressureOut),
                        sizeof(float),
                        output.windowBelow,
                        output.windowAbove,
                        output.useWindow == 1,
                        output.skipAstCleaning == 1};
    const Outcome outcome = run(rec, host, false);
    if (outcome.trackCleaned) {
        output.astValidOut = rec.surfaceTrackValid;
    }
    output.done = outcome.done ? 1 : 0;
}

void preProcessFlat(WaveVariables &rec, const PreProcessFlags &flags, float *astOut) {
    auto *const ast = reinterpret_cast<unsigned char *>(astOut);
    std::memset(ast, 0, sizeof(float) * kMaxTrack);
    const HostView host{ast,
                        nullptr,
                        sizeof(float),
                        flags.windowBelow,
                        flags.windowAbove,
                        flags.useWindow,
                        flags.skipAstCleaning};
    run(rec, host, true);
}

} // namespace ov
