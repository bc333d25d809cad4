#include "spectral/general_series.hpp"

#include <cmath>

#include "frame/constants.hpp"
#include "input/series_repair.hpp"
#include "spectral/fft.hpp"
#include "spectral/rotation.hpp"
#include "spectral/series_list.hpp"

namespace ov {
namespace {

constexpr Matrix3 kIdentity = {{{1.0, 0.0, 0.0}, {0.0, 1.0, 0.0}, {0.0, 0.0, 1.0}}};
constexpr int kVelocityBits[] = {kMaskBeam1, kMaskBeam2, kMaskBeam3};

bool alongBeam(const WaveVariables &rec) { return rec.activeMethod == 3 || rec.activeMethod == 4; }
bool hasBit(const WaveVariables &rec, int bit) { return (rec.estimateMask & bit) != 0; }

// Beam to instrument axes.
Matrix3 instrumentMatrix(const WaveVariables &rec) {
    Matrix3 matrix{};
    for (std::size_t i = 0; i < 9; ++i) {
        matrix[i / 3][i % 3] = rec.transformMatrix[i] * kMatrixScale;
    }
    return matrix;
}

// Instrument axes to east, north, up.
Matrix3 attitudeMatrix(const WaveVariables &rec) {
    return multiply(headingMatrix(rec.heading), tiltMatrix(rec.pitch, rec.roll));
}

// Along-beam velocities to east, north, up.
Matrix3 beamToEarth(const WaveVariables &rec) {
    return multiply(attitudeMatrix(rec), instrumentMatrix(rec));
}

// Row b is the direction of beam b in the level frame at heading 0; takes a velocity to the beams.
Matrix3 beamDirections(const WaveVariables &rec) {
    const Matrix3 level = multiply(headingMatrix(0.0F), tiltMatrix(rec.pitch, rec.roll));
    return inverse(multiply(level, instrumentMatrix(rec)));
}

// Direction of the vertical beam. Heads whose matrix begins with 9001 to 9999 carry that beam 5 degrees off in roll.
Vector3 verticalBeam(const WaveVariables &rec) {
    const auto first = static_cast<std::uint16_t>(rec.transformMatrix[0]);
    const bool offset = first >= 9001 && first <= 9999;
    const double p = radiansFromDegrees(rec.pitch);
    const double r = radiansFromDegrees(offset ? rec.roll + 5.0F : rec.roll);
    return {std::sin(r), -std::sin(p) * std::cos(r), std::cos(p) * std::cos(r)};
}

void fillBeamDirections(WaveVariables &rec, const Matrix3 &beams) {
    int slot = 0;
    for (std::size_t b = 0; b < 3; ++b) {
        if (hasBit(rec, kVelocityBits[b])) {
            setBeamDirection(rec, slot++, beams[b]);
        }
    }
    const Vector3 vertical = verticalBeam(rec);
    if (hasBit(rec, kMaskVerticalBeam)) {
        setBeamDirection(rec, slot++, vertical);
    }
    // With beam 1 the vertical direction is set once more: a track entry without its own bit takes it from here, and
    // the pressure entry keeps its vertical component.
    if (hasBit(rec, kMaskBeam1)) {
        setBeamDirection(rec, slot, vertical);
    }
}

Vector3 sampleVelocity(const WaveVariables &rec, int i) {
    return {rec.velocitySeries[0][i], rec.velocitySeries[1][i], rec.velocitySeries[2][i]};
}

// Component `row` of the converted sample, as it would be stored.
float convertedComponent(const WaveVariables &rec, const Matrix3 &matrix, std::size_t row, int i) {
    const Vector3 v = sampleVelocity(rec, i);
    return static_cast<float>(matrix[row][0] * v[0] + matrix[row][1] * v[1] +
                              matrix[row][2] * v[2]);
}

void storeMeanVelocity(WaveVariables &rec, const Vector3 &mean) {
    for (std::size_t c = 0; c < 3; ++c) {
        rec.meanVelocity[c] = static_cast<float>(mean[c]);
    }
}

// Burst means of the three velocities, with single-precision sums.
Vector3 plainMeans(const WaveVariables &rec) {
    Vector3 mean{};
    for (std::size_t c = 0; c < 3; ++c) {
        mean[c] = seriesMean(rec.velocitySeries[c], rec.burstLength);
    }
    return mean;
}

// The same with double-precision sums.
Vector3 wideMeans(const WaveVariables &rec) {
    Vector3 sum{};
    for (std::size_t c = 0; c < 3; ++c) {
        for (int i = 0; i < rec.burstLength; ++i) {
            sum[c] += static_cast<double>(rec.velocitySeries[c][i]);
        }
        sum[c] = rec.burstLength > 0 ? sum[c] / rec.burstLength : 0.0;
    }
    return sum;
}

Vector3 convertedMeans(const WaveVariables &rec, const Matrix3 &matrix) {
    Vector3 mean{};
    for (std::size_t c = 0; c < 3; ++c) {
        float sum = 0.0F;
        for (int i = 0; i < rec.burstLength; ++i) {
            sum += convertedComponent(rec, matrix, c, i);
        }
        mean[c] = rec.burstLength > 0
                      ? static_cast<double>(sum / static_cast<float>(rec.burstLength))
                      : 0.0;
    }
    return mean;
}

// How the burst's velocities become the velocities that are analysed.
struct Conversion {
    bool needed = false;
    Matrix3 matrix = kIdentity;
};

// Methods 3 and 4 analyse along-beam velocities. Instrument axes are taken as they are.
Conversion prepareAlongBeam(WaveVariables &rec, const Matrix3 &beams) {
    if (rec.attitudeMode == OV_VELOCITY_ENU) {
        rec.directionOffset = static_cast<float>(rec.headingOffset);
        storeMeanVelocity(rec, plainMeans(rec));
        return {true, beams};
    }
    if (rec.attitudeMode == OV_VELOCITY_BEAM) {
        storeMeanVelocity(rec, multiply(beamToEarth(rec), plainMeans(rec)));
    }
    return {};
}

// Methods 1 and 2 analyse east, north, up. Method 2 takes every other system as along-beam.
Conversion prepareEastNorthUp(WaveVariables &rec) {
    const bool given = rec.attitudeMode == OV_VELOCITY_ENU;
    if (given || rec.activeMethod == 2) {
        rec.directionOffset = static_cast<float>(rec.headingOffset);
    }
    if (given) {
        storeMeanVelocity(rec, plainMeans(rec));
        return {};
    }
    if (rec.activeMethod == 2) {
        const Matrix3 matrix = beamToEarth(rec);
        storeMeanVelocity(rec, multiply(matrix, wideMeans(rec)));
        return {true, matrix};
    }
    Conversion conversion{true, kIdentity};
    if (rec.attitudeMode == OV_VELOCITY_BEAM) {
        conversion.matrix = beamToEarth(rec);
    } else if (rec.attitudeMode == OV_VELOCITY_XYZ) {
        conversion.matrix = attitudeMatrix(rec);
    }
    storeMeanVelocity(rec, convertedMeans(rec, conversion.matrix));
    return conversion;
}

void transformVelocity(WaveVariables &rec, int slot, std::size_t component,
                       const Conversion &conversion) {
    if (!conversion.needed) {
        transformSeries(rec, slot, rec.velocitySeries[component]);
        return;
    }
    for (int i = 0; i < rec.burstLength; ++i) {
        loadSample(rec, i, convertedComponent(rec, conversion.matrix, component, i));
    }
    transformSlot(rec, slot);
}

// Velocity entries for the selected beams; returns their number.
int listVelocities(WaveVariables &rec, const Conversion &conversion) {
    int count = 0;
    for (std::size_t b = 0; b < 3; ++b) {
        if (hasBit(rec, kVelocityBits[b])) {
            rec.seriesType[count] = kVelocitySeries;
            transformVelocity(rec, count, b, conversion);
            ++count;
        }
    }
    return count;
}

// The pressure entry always comes last and has no direction across.
void listPressure(WaveVariables &rec) {
    const int slot = rec.nMlmSeries;
    rec.seriesType[slot] = kPressureSeries;
    rec.beamDirX[slot] = 0.0F;
    rec.beamDirY[slot] = 0.0F;
    rec.pressureSeriesIndex = slot;
    rec.seriesCount = slot + 1;
    transformSeries(rec, slot, rec.pressureSeries);
}

void listAlongBeam(WaveVariables &rec, const Conversion &conversion) {
    int count = listVelocities(rec, conversion);
    const bool vertical = hasBit(rec, kMaskVerticalBeam);
    if (vertical && rec.activeMethod == 3) {
        rec.seriesType[count] = kVelocitySeries;
        transformSeries(rec, count,
                        rec.astDistance2Series); // the fourth velocity: the vertical beam
        ++count;
    }
    rec.velocitySeriesCount = count;
    if (vertical && rec.activeMethod == 4) {
        rec.seriesType[count++] = kSurfaceTrackSeries; // transformed by the driver
    }
    rec.nMlmSeries = count;
    listPressure(rec);
}

void listEastNorthUp(WaveVariables &rec, const Conversion &conversion) {
    int count = listVelocities(rec, conversion);
    if (rec.activeMethod == 2) {
        rec.seriesType[count++] = kSurfaceTrackSeries; // transformed by the driver
    }
    rec.nMlmSeries = count;
    rec.velocitySeriesCount = 0;
    listPressure(rec);
}

// A track entry has a direction only with its own bit or beam 1; without one its distances are taken as vertical.
bool trackHasDirection(const WaveVariables &rec) {
    return hasBit(rec, kMaskBeam1) || hasBit(rec, kMaskVerticalBeam);
}

void placeSeries(WaveVariables &rec) {
    for (int k = 0; k < rec.seriesCount; ++k) {
        if (rec.seriesType[k] == kVelocitySeries) {
            placeAlongBeam(rec, k, rec.headerDepth);
        } else if (rec.seriesType[k] == kSurfaceTrackSeries) {
            if (alongBeam(rec)) {
                placeAlongBeam(rec, k, rec.instrumentDepth);
            }
            if (trackHasDirection(rec) && (alongBeam(rec) || rec.attitudeMode != OV_VELOCITY_ENU)) {
                rec.surfaceTrackCosine = rec.beamDirZ[k];
            }
        }
    }
}

} // namespace

void buildGeneralSeries(WaveVariables &rec) {
    clearSeriesList(rec);
    const Matrix3 beams = beamDirections(rec);
    fillBeamDirections(rec, beams);
    if (alongBeam(rec)) {
        listAlongBeam(rec, prepareAlongBeam(rec, beams));
    } else {
        listEastNorthUp(rec, prepareEastNorthUp(rec));
    }
    placeSeries(rec);
}

} // namespace ov
