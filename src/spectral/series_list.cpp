#include "spectral/series_list.hpp"

#include <algorithm>
#include <cstring>
#include <iterator>

#include "spectral/fft.hpp"

namespace ov {

void clearSeriesList(WaveVariables &rec) {
    rec.seriesCount = 0;
    rec.velocitySeriesCount = 0;
    rec.nMlmSeries = 0;
    rec.pressureSeriesIndex = 0;
    std::fill(std::begin(rec.seriesType), std::end(rec.seriesType), 0);
    for (float *list :
         {rec.seriesX, rec.seriesY, rec.seriesDepth, rec.beamDirX, rec.beamDirY, rec.beamDirZ}) {
        std::fill_n(list, kMaxSeries, 0.0F);
    }
    std::fill(std::begin(rec.meanVelocity), std::end(rec.meanVelocity), 0.0F);
    std::memset(rec.seriesSpecRe, 0, sizeof rec.seriesSpecRe);
    std::memset(rec.seriesSpecIm, 0, sizeof rec.seriesSpecIm);
    rec.surfaceTrackCosine = 1.0F;
}

void setBeamDirection(WaveVariables &rec, int slot, const Vector3 &direction) {
    rec.beamDirX[slot] = static_cast<float>(direction[0]);
    rec.beamDirY[slot] = static_cast<float>(direction[1]);
    rec.beamDirZ[slot] = static_cast<float>(direction[2]);
}

void placeAlongBeam(WaveVariables &rec, int k, float range) {
    rec.seriesX[k] = rec.beamDirX[k] * range;
    rec.seriesY[k] = rec.beamDirY[k] * range;
    const double depth = rec.instrumentDepth;
    const double up = rec.beamDirZ[k];
    rec.seriesDepth[k] = static_cast<float>(depth - up * static_cast<double>(range));
}

void transformSlot(WaveVariables &rec, int slot) {
    transformLoaded(rec, rec.burstLength, rec.seriesSpecRe[slot], rec.seriesSpecIm[slot]);
}

void transformSeries(WaveVariables &rec, int slot, const float *series) {
    for (int i = 0; i < rec.burstLength; ++i) {
        loadSample(rec, i, series[i]);
    }
    transformSlot(rec, slot);
}

} // namespace ov
