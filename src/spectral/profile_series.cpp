#include "spectral/profile_series.hpp"

#include <array>
#include <cstddef>

#include "frame/constants.hpp"
#include "spectral/coordinate_transform.hpp"
#include "spectral/fft.hpp"
#include "spectral/profile_beams.hpp"
#include "spectral/series_list.hpp"

namespace ov {
namespace {

using Index = std::size_t;
using Sample = std::array<float, kMaxBeams>;
using SeriesSet = std::array<const float *, kMaxBeams>;

constexpr int kOrientation = 4; // beams numbered as mounted
constexpr int kVelocityBits[] = {kMaskBeam1, kMaskBeam2, kMaskBeam3, kMaskBeam4};

bool alongBeam(const WaveVariables &rec) { return rec.activeMethod == 3 || rec.activeMethod == 4; }
bool hasBit(const WaveVariables &rec, int bit) { return (rec.estimateMask & bit) != 0; }

// Room for converted velocities: nothing else needs these places before the transforms of the track.
std::array<float *, kMaxBeams> scratchSeries(WaveVariables &rec) {
    return {rec.fftWork + kMaxTrack, rec.fftWork + kMaxTrack + kMaxSamples, rec.astSpecRe,
            rec.astSpecIm};
}

SeriesSet storedSeries(WaveVariables &rec) {
    SeriesSet series{};
    for (int s = 0; s < kMaxBeams; ++s) {
        series[static_cast<Index>(s)] = velocitySeriesData(rec, s);
    }
    return series;
}

Sample multiply(const MatrixN &m, const Sample &v, int n) {
    Sample product{};
    for (Index i = 0; i < static_cast<Index>(n); ++i) {
        for (Index k = 0; k < static_cast<Index>(n); ++k) {
            product[i] += m[i][k] * v[k];
        }
    }
    return product;
}

Sample sampleAt(const SeriesSet &series, int i) {
    return {series[0][i], series[1][i], series[2][i], series[3][i]};
}

Attitude attitudeAt(const WaveVariables &rec, int i) {
    return {rec.attitudeSeries[0][i], rec.attitudeSeries[1][i], rec.attitudeSeries[2][i]};
}

float meanOf(const float *series, int n) {
    double sum = 0.0;
    for (int i = 0; i < n; ++i) {
        sum += static_cast<double>(series[i]);
    }
    return n > 0 ? static_cast<float>(sum / n) : 0.0F;
}

// Converts every sample from attitudeMode to `to`. The vertical estimates of four beams are averaged on the way to
// east, north, up. A fourth component that is not converted stays as it is.
SeriesSet convert(WaveVariables &rec, int to, int n) {
    const SeriesSet source = storedSeries(rec);
    const auto target = scratchSeries(rec);
    const MatrixN instrument = instrumentMatrix(rec, n);
    const bool constant = rec.attitudeMode == OV_VELOCITY_XYZ && to == OV_VELOCITY_BEAM;
    MatrixN matrix = coordinateTransformMatrix(rec.attitudeMode, to, n, kOrientation,
                                               attitudeAt(rec, 0), instrument);
    for (int i = 0; i < rec.burstLength; ++i) {
        if (!constant) {
            matrix = coordinateTransformMatrix(rec.attitudeMode, to, n, kOrientation,
                                               attitudeAt(rec, i), instrument);
        }
        const Sample before = sampleAt(source, i);
        Sample after = multiply(matrix, before, n);
        if (n < kMaxBeams) {
            after[3] = before[3];
        } else if (to == OV_VELOCITY_ENU) {
            after[2] = (after[2] + after[3]) / 2.0F;
        }
        for (Index s = 0; s < kMaxBeams; ++s) {
            target[s][i] = after[s];
        }
    }
    return {target[0], target[1], target[2], target[3]};
}

// East, north, up as given: four beams have a second vertical estimate to average with.
SeriesSet averageVertical(WaveVariables &rec) {
    SeriesSet series = storedSeries(rec);
    float *const target = scratchSeries(rec)[2];
    for (int i = 0; i < rec.burstLength; ++i) {
        target[i] = (series[2][i] + series[3][i]) / 2.0F;
    }
    series[2] = target;
    return series;
}

SeriesSet prepareAlongBeam(WaveVariables &rec, int n) {
    const SeriesSet series = rec.attitudeMode == OV_VELOCITY_BEAM
                                 ? storedSeries(rec)
                                 : convert(rec, OV_VELOCITY_BEAM, n);
    Sample means{};
    for (Index s = 0; s < kMaxBeams; ++s) {
        means[s] = meanOf(series[s], rec.burstLength);
    }
    const Attitude burst{rec.heading, rec.pitch, rec.roll};
    const MatrixN toEarth = coordinateTransformMatrix(
        OV_VELOCITY_BEAM, OV_VELOCITY_ENU, n, kOrientation, burst, instrumentMatrix(rec, n));
    const Sample earth = multiply(toEarth, means, n);
    for (Index c = 0; c < kMaxBeams; ++c) {
        rec.meanVelocity[c] = earth[c];
    }
    return series;
}

SeriesSet prepareEastNorthUp(WaveVariables &rec, int n) {
    rec.directionOffset = static_cast<float>(rec.headingOffset);
    SeriesSet series = storedSeries(rec);
    if (rec.attitudeMode != OV_VELOCITY_ENU) {
        series = convert(rec, OV_VELOCITY_ENU, n);
    } else if (n == kMaxBeams) {
        series = averageVertical(rec);
    }
    for (Index c = 0; c < 3; ++c) {
        rec.meanVelocity[c] = meanOf(series[c], rec.burstLength);
    }
    return series;
}

// Velocity entries for the selected beams. East, north, up has three components: the fourth entry stays empty there.
int listVelocities(WaveVariables &rec, const SeriesSet &series) {
    const auto directions = profileBeamDirections(rec);
    int count = 0;
    for (Index b = 0; b < kMaxBeams; ++b) {
        if (!hasBit(rec, kVelocityBits[b])) {
            continue;
        }
        rec.seriesType[count] = kVelocitySeries;
        setBeamDirection(rec, count, directions[b]);
        if (alongBeam(rec) || b < 3) {
            transformSeries(rec, count, series[b]);
        }
        ++count;
    }
    rec.velocitySeriesCount = count;
    return count;
}

// The track's direction is known only when its bit is set.
int listTrack(WaveVariables &rec, int count) {
    const bool bit = hasBit(rec, kMaskProfileTrack);
    const bool listed = rec.activeMethod == 2 || (rec.activeMethod == 4 && bit);
    if (!listed) {
        return count;
    }
    rec.seriesType[count] = kSurfaceTrackSeries; // transformed by the driver
    if (bit) {
        const Vector3 direction = trackBeamDirection(rec);
        setBeamDirection(rec, count, direction);
        if (alongBeam(rec)) {
            placeAlongBeam(rec, count, rec.instrumentDepth);
        }
        rec.surfaceTrackCosine = rec.beamDirZ[count];
    }
    return count + 1;
}

void listPressure(WaveVariables &rec, int slot) {
    rec.seriesType[slot] = kPressureSeries;
    rec.seriesDepth[slot] = rec.instrumentDepth;
    rec.pressureSeriesIndex = slot;
    rec.nMlmSeries = slot;
    rec.seriesCount = slot + 1;
    transformSeries(rec, slot, rec.pressureSeries);
}

} // namespace

void buildSeriesGeometry(WaveVariables &rec) {
    clearSeriesList(rec);
    const int n = usableBeamCount(rec);
    const SeriesSet series = alongBeam(rec) ? prepareAlongBeam(rec, n) : prepareEastNorthUp(rec, n);
    const int velocities = listVelocities(rec, series);
    for (int k = 0; k < velocities; ++k) {
        placeAlongBeam(rec, k, rec.headerDepth);
    }
    listPressure(rec, listTrack(rec, velocities));
}

} // namespace ov
