#include "input/profile_samples.hpp"

#include <algorithm>
#include <cstring>

namespace ov {
namespace {

void storeProfile(WaveVariables &rec, int i, const OVWaveSampleProfile &sample) {
    if (rec.nCells == 0) {
        clearProfileAt(rec, i);
    }
    const std::size_t cells = std::min<std::size_t>(rec.nCells, kMaxCells);
    for (int b = 0; b < kMaxBeams; ++b) {
        std::memcpy(rec.profileVelocityStore[b][i], &sample.profileVelocity[b],
                    cells * sizeof(std::int16_t));
        std::memcpy(rec.profileAmplitudeStore[b][i], &sample.profileAmplitude[b], cells);
        std::memcpy(rec.profileCorrelationStore[b][i], &sample.profileCorrelation[b], cells);
    }
    for (int a = 0; a < 3; ++a) {
        rec.attitudeSeries[a][i] = sample.attitude[a];
    }
}

void storeValid(WaveVariables &rec, int i, const OVWaveSampleProfile &sample) {
    const double pressure = sample.pressure;
    rec.pressureSeries[i] =
        static_cast<float>(pressure + rec.pressureOffset + static_cast<double>(rec.depthOffset));
    const float chosen = rec.profileParamB != 0 ? sample.astDistance2 : sample.astDistance1;
    rec.astSeries[i] = chosen + rec.depthOffset; // single rate here
    rec.astSampleRateSeries[i] = sample.astDistance2 + rec.depthOffset;
    storeProfile(rec, i, sample);
}

void storeMissing(WaveVariables &rec, int i) {
    for (float *series : {rec.pressureSeries, rec.astSeries, rec.astSampleRateSeries}) {
        series[i] = i > 0 ? series[i - 1] : 0.0F;
    }
    if (i > 0) {
        repeatProfileAt(rec, i);
    } else {
        clearProfileAt(rec, i);
    }
    ++rec.missingSampleCount;
}

template <class Store> void clearCells(Store &store, int i, std::size_t cells) {
    for (auto &beam : store) {
        std::memset(beam[i], 0, cells * sizeof beam[i][0]);
    }
}

template <class Store> void repeatCells(Store &store, int i, std::size_t cells) {
    for (auto &beam : store) {
        std::copy_n(beam[i - 1], cells, beam[i]);
    }
}

} // namespace

std::size_t keptCells(const WaveVariables &rec) {
    return std::clamp<std::size_t>(rec.nCells, 1, kMaxCells);
}

void clearProfileAt(WaveVariables &rec, int i) {
    const std::size_t cells = keptCells(rec);
    clearCells(rec.profileVelocityStore, i, cells);
    clearCells(rec.profileAmplitudeStore, i, cells);
    clearCells(rec.profileCorrelationStore, i, cells);
    for (auto &attitude : rec.attitudeSeries) {
        attitude[i] = 0.0F;
    }
}

void repeatProfileAt(WaveVariables &rec, int i) {
    const std::size_t cells = keptCells(rec);
    repeatCells(rec.profileVelocityStore, i, cells);
    repeatCells(rec.profileAmplitudeStore, i, cells);
    repeatCells(rec.profileCorrelationStore, i, cells);
    for (auto &attitude : rec.attitudeSeries) {
        attitude[i] = attitude[i - 1];
    }
}

void storeProfileSample(WaveVariables &rec, OVWaveSampleProfile &sample) {
    const int i = rec.sampleCursor;
    if (i >= rec.burstLength) {
        return;
    }
    if (sample.valid != 0) {
        storeValid(rec, i, sample);
    } else {
        storeMissing(rec, i);
    }
    sample.valid = 1;
    ++rec.sampleCursor;
}

} // namespace ov
