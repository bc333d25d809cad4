#include "input/preprocess_steps.hpp"

#include <algorithm>

#include "frame/constants.hpp"
#include "input/surface_track.hpp"

namespace ov {
namespace {

void setTrackSampling(WaveVariables &rec) {
    if (rec.instrumentType == kProfileInstrument) {
        rec.astLength = rec.burstLength;
        rec.astSamplingRate = static_cast<float>(rec.samplingRate);
        return;
    }
    rec.astLength = 2 * rec.burstLength;
    rec.astSamplingRate = rec.samplingRate == 0 ? 1.5F : rec.samplingRate == 1 ? 2.0F : 4.0F;
}

} // namespace

HostView viewOf(OVPreProcessOutput &output) {
    auto *const rows = reinterpret_cast<unsigned char *>(output.rows);
    return {rows + offsetof(OVPreProcessRow, astOut),
            rows + offsetof(OVPreProcessRow, pressureOut),
            sizeof(OVPreProcessRow),
            output.windowBelow,
            output.windowAbove,
            output.useWindow == 1,
            output.skipAstCleaning == 1};
}

bool hasSurfaceTrack(std::int32_t method) { return method == 2 || method == 4; }

int completedLength(const WaveVariables &rec) {
    return static_cast<int>(std::min<std::uint32_t>(rec.burstSamples, kMaxSamples));
}

void findMinPressure(WaveVariables &rec) {
    rec.minPressure = rec.pressureSeries[0];
    for (int i = 1; i < completedLength(rec); ++i) {
        rec.minPressure = std::min(rec.minPressure, rec.pressureSeries[i]);
    }
}

void writePressureRows(const WaveVariables &rec, const HostView &host) {
    for (int i = 0; i < rec.burstLength; ++i) {
        host.write(i, rec.pressureSeries[i], rec.pressureSeries[i] + rec.instrumentDepth);
    }
}

void preProcessTrack(WaveVariables &rec, const HostView &host) {
    setTrackSampling(rec);
    if (!host.skipAstCleaning) {
        cleanAst(rec, rec.astSeries);
    }
    for (int i = 0; i < rec.astLength; ++i) {
        host.write(i, rec.astSeries[i], pressureStorage(rec, i) + rec.instrumentDepth);
    }
}

} // namespace ov
