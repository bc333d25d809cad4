#include "input/preprocess.hpp"

#include <algorithm>
#include <cmath>
#include <cstring>

#include "frame/constants.hpp"
#include "input/series_repair.hpp"
#include "input/surface_track.hpp"

namespace ov {
namespace {

// Where a pre-processed element goes, and what the host asked for. Host memory may be misaligned.
struct HostView {
    unsigned char *ast;      // null: not wanted
    unsigned char *pressure; // null: not wanted
    std::size_t stride;      // [bytes] between elements of both
    float windowBelow;
    float windowAbove;
    bool useWindow;
    bool skipAstCleaning;

    void write(int i, float astValue, float pressureValue) const {
        const std::size_t at = static_cast<std::size_t>(i) * stride;
        if (ast != nullptr) {
            std::memcpy(ast + at, &astValue, sizeof astValue);
        }
        if (pressure != nullptr) {
            std::memcpy(pressure + at, &pressureValue, sizeof pressureValue);
        }
    }
};

struct Outcome {
    bool done = false;
    bool trackCleaned = false;
};

bool hasSurfaceTrack(std::int32_t method) { return method == 2 || method == 4; }

int completedLength(const WaveVariables &rec) {
    return static_cast<int>(std::min<std::uint32_t>(rec.burstSamples, kMaxSamples));
}

template <class Row> void repeatProfileRow(Row &rows, int j, std::size_t cells) {
    for (auto &beam : rows) {
        std::copy_n(beam[j - 1], cells, beam[j]);
    }
}

// Sample j of a profile instrument repeats its predecessor. Its single-rate surface track is padded from element
// 2j - 2, as at double rate.
void padProfileSample(WaveVariables &rec, int j) {
    rec.astSeries[j] = rec.astSeries[2 * j - 2];
    const std::size_t cells = std::min<std::size_t>(rec.nCells, kMaxCells);
    repeatProfileRow(rec.profileVelocityStore, j, cells);
    repeatProfileRow(rec.profileAmplitudeStore, j, cells);
    repeatProfileRow(rec.profileCorrelationStore, j, cells);
    for (auto &attitude : rec.attitudeSeries) {
        attitude[j] = attitude[j - 1];
    }
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

void findMinPressure(WaveVariables &rec) {
    rec.minPressure = rec.pressureSeries[0];
    for (int i = 1; i < completedLength(rec); ++i) {
        rec.minPressure = std::min(rec.minPressure, rec.pressureSeries[i]);
    }
}

// Pressure-only hosts see the despiked pressure. Its level is that of the burst before: this burst's is not yet known.
void writePressureRows(const WaveVariables &rec, const HostView &host) {
    for (int i = 0; i < rec.burstLength; ++i) {
        host.write(i, rec.pressureSeries[i], rec.pressureSeries[i] + rec.instrumentDepth);
    }
}

void setTrackSampling(WaveVariables &rec) {
    if (rec.instrumentType == kProfileInstrument) {
        rec.astLength = rec.burstLength;
        rec.astSamplingRate = static_cast<float>(rec.samplingRate);
        return;
    }
    rec.astLength = 2 * rec.burstLength;
    rec.astSamplingRate = rec.samplingRate == 0 ? 1.5F : rec.samplingRate == 1 ? 2.0F : 4.0F;
}

// Once a host has asked for the window, it stays in force for later bursts of the record.
void takeWindow(WaveVariables &rec, const HostView &host) {
    if (host.useWindow) {
        rec.useAstWindow = 1;
        rec.astWindowBelow = std::fabs(host.windowBelow);
        rec.astWindowAbove = std::fabs(host.windowAbove);
    }
}

void preProcessTrack(WaveVariables &rec, const HostView &host) {
    setTrackSampling(rec);
    takeWindow(rec, host);
    if (!host.skipAstCleaning) {
        cleanAst(rec, rec.astSeries);
    }
    for (int i = 0; i < rec.astLength; ++i) {
        host.write(i, rec.astSeries[i], pressureStorage(rec, i) + rec.instrumentDepth);
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
    rec.instrumentDepth = static_cast<float>(detrendSeries(rec, rec.pressureSeries, rec.burstLength));
    const double depth = rec.instrumentDepth;
    rec.waterDepth = static_cast<float>(depth + rec.levelOffset);
    const bool track = hasSurfaceTrack(rec.processingMethod);
    if (track) {
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
    auto *const rows = reinterpret_cast<unsigned char *>(output.rows);
    const HostView host{rows + offsetof(OVPreProcessRow, astOut),
                        rows + offsetof(OVPreProcessRow, pressureOut),
                        sizeof(OVPreProcessRow),
                        output.windowBelow,
                        output.windowAbove,
                        output.useWindow == 1,
                        output.skipAstCleaning == 1};
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
