#include "config/wave_header.hpp"

#include <algorithm>
#include <cmath>
#include <cstring>
#include <iterator>

#include "frame/constants.hpp"

namespace ov {
namespace {

constexpr double kHalfSoundSpeed = 750.0;            // [m/s]
constexpr double kPressureCountM = 0.02288818359375; // [m] per count
constexpr double kDistanceScale = 0.00390625;        // 1 / 256

// Sensor height [m]. The floors are those of the instrument's own integer arithmetic.
double sensorHeightM(const WaveVariables &rec, const OVWaveHeader &header) {
    const double distance = header.distanceCounts;
    const double frequency = static_cast<double>(rec.acousticFrequency);
    if (rec.instrumentType == 1) {
        return std::floor(distance * 100 * kHalfSoundSpeed / 480000.0 * 100) * 0.01 * 0.01 *
               kDistanceScale;
    }
    if (rec.instrumentType == kProfileInstrument) {
        return static_cast<double>(header.directHeight);
    }
    return std::floor(kHalfSoundSpeed / (frequency * 4.0 / 255.0) * (distance * 100)) * 0.01 *
           kDistanceScale;
}

// Sensor depth [m], rounded down in stages: 0.0001 m for type 1, 0.01 m for the others. `height` is not yet narrowed.
double sensorDepthM(const WaveVariables &rec, const OVWaveHeader &header, double height) {
    const double pressure = header.pressureCounts * 100.0 * kPressureCountM;
    const double cell = static_cast<std::int16_t>(rec.cellSizeCounts);
    const double frequency = static_cast<double>(rec.acousticFrequency);
    switch (rec.instrumentType) {
    case 1:
        return std::floor(
                   (pressure -
                    std::floor(cell * 100 * 16.0 * kHalfSoundSpeed / 6000000.0 * 100) * 0.01) *
                   100) *
               0.0001;
    case 3:
        return std::floor(pressure - height * 100) * 0.01;
    case kProfileInstrument:
        return static_cast<double>(header.directDepth);
    default:
        return std::floor(pressure -
                          std::floor(cell * 100 * (kHalfSoundSpeed / (frequency * 0.0625)))) *
               0.01;
    }
}

void copyHeader(WaveVariables &rec, const OVWaveHeader &header) {
    rec.headerValueA = header.headerValueA;
    rec.heading = header.heading;
    rec.pitch = header.pitch;
    rec.roll = header.roll;
    rec.headerValueC = header.headerValueC;
    rec.headerFlag = header.headerFlag;
    std::memcpy(rec.headerWords, header.headerWords, sizeof rec.headerWords);
    rec.depthOffset =
        rec.instrumentType == 3 && rec.acousticFrequency == k400kHz ? header.depthOffset : 0.0F;
    rec.nCells = header.nCells;
    rec.surfaceTimeOffset = header.surfaceTimeOffset;
}

void settleBurstLength(WaveVariables &rec, OVWaveHeader &header) {
    rec.burstLength = usableBurstLength(header.nSamples);
    rec.burstSamples = static_cast<std::uint32_t>(rec.burstLength);
    header.nSamples = static_cast<std::uint16_t>(rec.burstLength);
}

} // namespace

std::int32_t usableBurstLength(std::int32_t requested) {
    if (requested <= 512) {
        return requested;
    }
    std::int32_t length = kMaxSamples;
    while (length > requested) {
        length /= 2;
    }
    return length;
}

void openBurst(WaveVariables &rec) {
    rec.readyFlag = 0;
    rec.sampleCursor = 0;
    rec.missingSampleCount = 0;
    rec.qualityFlags = 0;
    if (rec.burstLength < kMaxSamples) {
        rec.pressureSeries[rec.burstLength] = 0.0F;
    } else {
        rec.velocitySeries[0][0] = 0.0F; // follows a full pressure series in storage
    }
    float *const last = rec.astSeries + std::max(rec.burstLength - 1, 0);
    std::fill(last, std::end(rec.astSeries), 0.0F);
}

void setWaveHeader(WaveVariables &rec, OVWaveHeader &header) {
    copyHeader(rec, header);
    const double height = sensorHeightM(rec, header);
    rec.sensorHeight = static_cast<float>(height);
    rec.sensorDepth = static_cast<float>(sensorDepthM(rec, header, height));
    rec.headerDepth = rec.sensorHeight + rec.sensorDepth;
    settleBurstLength(rec, header);
    openBurst(rec);
}

void setProfileWaveHeader(WaveVariables &rec, OVProfileWaveHeader &header) {
    copyHeader(rec, header);
    const double slant = std::cos(static_cast<double>(rec.slantAngle) * kPi / 180.0);
    rec.sensorHeight = static_cast<float>(static_cast<double>(header.directHeight) / slant);
    rec.sensorDepth = static_cast<float>(static_cast<double>(header.directDepth) / slant);
    rec.headerDepth = rec.sensorDepth + rec.sensorHeight;
    settleBurstLength(rec, header);
    openBurst(rec);
}

} // namespace ov
