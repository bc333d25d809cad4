#include "run/point_front_end.hpp"

#include <algorithm>
#include <cmath>

#include "run/beam_timing.hpp"
#include "run/burst_result.hpp"
#include "user_error.hpp"

namespace orvik {

namespace {

constexpr int kProfileType = 16;

using Velocities = std::array<std::vector<float>, 3>;

std::int16_t cellCounts(const Instrument &instrument) {
    const double metresPerCount =
        instrument.instrumentType == 1 ? 0.002 : 750.0 / (instrument.acousticFrequency * 0.0625);
    const double counts = std::round(instrument.cellSize / metresPerCount);
    return static_cast<std::int16_t>(std::clamp(counts, 1.0, 32767.0));
}

orvikbase::InstrumentConfig configuration(const Instrument &instrument, const Matrix3 &beamToXyz,
                                          int method) {
    if (instrument.instrumentType == kProfileType) {
        throw UserError("instrument_type 16 is a profile instrument, but its cells are not told");
    }
    orvikbase::InstrumentConfig config;
    config.velocitySystem = usesEarthVelocities(method) ? orvikbase::VelocitySystem::enu
                                                        : orvikbase::VelocitySystem::beam;
    config.pingsPerSample = instrument.pingsPerSample;
    config.samplingRate = rateCode(instrument);
    config.acousticFrequency = static_cast<float>(instrument.acousticFrequency);
    config.slantAngle = static_cast<float>(instrument.slantAngle);
    config.instrumentType = instrument.instrumentType;
    config.cellSizeCounts = cellCounts(instrument);
    for (std::size_t i = 0; i < beamToXyz.size(); ++i) {
        config.beamToXyz[i] = matrixCount(beamToXyz[i]);
    }
    return config;
}

// The library's own structure, as the search for header counts reads it.
OVInstrumentConfig packedConfig(const orvikbase::InstrumentConfig &config) {
    OVInstrumentConfig packed{};
    packed.acousticFrequency = config.acousticFrequency;
    packed.instrumentType = config.instrumentType;
    packed.cellSizeCounts = config.cellSizeCounts;
    return packed;
}

Velocities withGaps(Velocities velocity, const std::vector<std::uint8_t> &present) {
    for (std::vector<float> &series : velocity) {
        series = orvik::withGaps(series, present);
    }
    return velocity;
}

// Velocities of nothing but 0 have no direction, and for want of one the library takes away the mean period as well. The
// pressure stands in for them; what follows from that is removed from the results.
Velocities standInVelocities(const std::vector<float> &pressure) {
    double sum = 0.0;
    double count = 0.0;
    for (const float value : pressure) {
        if (std::isfinite(value)) {
            sum += static_cast<double>(value);
            count += 1.0;
        }
    }
    const auto mean = static_cast<float>(count > 0.0 ? sum / count : 0.0);
    Velocities swaying;
    swaying[2].assign(pressure.size(), 0.0F);
    for (const float value : pressure) {
        const float velocity = std::isfinite(value) ? value - mean : 0.0F;
        swaying[0].push_back(velocity);
        swaying[1].push_back(velocity);
    }
    return swaying;
}

Velocities turned(const Velocities &velocity, const Matrix3 &matrix) {
    Velocities result = velocity;
    for (std::size_t i = 0; i < velocity[0].size(); ++i) {
        const Vector3 vector =
            product(matrix, Vector3{velocity[0][i], velocity[1][i], velocity[2][i]});
        for (std::size_t axis = 0; axis < 3; ++axis) {
            result[axis][i] = static_cast<float>(vector[axis]);
        }
    }
    return result;
}

} // namespace

PointFrontEnd::PointFrontEnd(const Instrument &instrument, int method)
    : instrument_(instrument), method_(method), beamToXyz_(beamToXyzMatrix(instrument)),
      config_(configuration(instrument, beamToXyz_, method)),
      counts_(countsOfCellRange(packedConfig(config_),
                                std::isfinite(instrument.cellRange) ? instrument.cellRange : 0.0)) {
    if (!invert(beamToXyz_, xyzToBeam_)) {
        throw UserError("beam_to_xyz has no inverse: the beams lie in one plane");
    }
}

void PointFrontEnd::configure(orvikbase::Record &record) const { record.configure(config_); }

std::int32_t PointFrontEnd::estimateMask(bool withTrack) const {
    return withTrack ? orvikbase::kMaskBeams | orvikbase::kMaskVertical : orvikbase::kMaskBeams;
}

// In the system that the method takes, at the instants where the library expects the series.
Velocities PointFrontEnd::velocities(const Burst &burst) const {
    if (burst.velocitySystem == VelocitySystem::none) {
        return standInVelocities(burst.pressure);
    }
    if (!burst.velocitiesAtOnce) {
        return turnedVelocities(burst);
    }
    Velocities velocity = withGaps(turnedVelocities(burst), presentSamples(burst));
    for (std::size_t j = 0; j < 3; ++j) {
        velocity[j] = shiftedSeries(velocity[j], -kBeamInterval * static_cast<double>(j) *
                                                     instrument_.samplingRate);
    }
    return velocity;
}

Velocities PointFrontEnd::turnedVelocities(const Burst &burst) const {
    const bool earth = usesEarthVelocities(method_);
    if (burst.velocitySystem == (earth ? VelocitySystem::enu : VelocitySystem::beam)) {
        return burst.velocity;
    }
    const Matrix3 xyzToEnu =
        xyzToEnuMatrix(burst.heading, burst.pitch, burst.roll + instrument_.rollOffset);
    if (earth && burst.velocitySystem == VelocitySystem::beam) {
        if (burst.velocitiesAtOnce) {
            return turned(burst.velocity, product(xyzToEnu, beamToXyz_));
        }
        return earthFromBeams(withGaps(burst.velocity, presentSamples(burst)),
                              product(xyzToEnu, beamToXyz_), instrument_.samplingRate);
    }
    if (earth) {
        return turned(burst.velocity, xyzToEnu);
    }
    if (burst.velocitySystem == VelocitySystem::xyz) {
        return turned(burst.velocity, xyzToBeam_);
    }
    Matrix3 enuToXyz{};
    invert(xyzToEnu, enuToXyz); // a rotation
    return turned(burst.velocity, product(xyzToBeam_, enuToXyz));
}

SentBurst PointFrontEnd::send(orvikbase::Record &record, const Burst &burst,
                              const std::vector<std::uint8_t> &present,
                              orvikbase::CleanedBurst &cleaned) const {
    orvikbase::BurstHeader header;
    header.samples = announcedSamples(burst);
    header.cellPositionCounts = counts_.pressureCounts;
    header.distanceCounts = counts_.distanceCounts;
    header.heading = knownOr0(burst.heading);
    header.pitch = knownOr0(burst.pitch);
    header.roll = knownOr0(burst.roll + instrument_.rollOffset);
    const std::size_t used = record.openBurst(header);
    const Velocities velocity = velocities(burst);
    const std::size_t count = std::min(used, burst.pressure.size());
    for (std::size_t i = 0; i < count; ++i) {
        orvikbase::Sample sample;
        sample.valid = present[i] != 0;
        sample.pressure = burst.pressure[i];
        sample.amplitude.fill(kUnknownAmplitude);
        for (std::size_t j = 0; j < 3; ++j) {
            sample.velocity[j] = velocity[j][i];
            if (!burst.amplitude[j].empty()) {
                sample.amplitude[j] = burst.amplitude[j].at(i);
            }
        }
        if (!burst.surfaceTrack.empty()) {
            sample.distance1 = distanceOr0(burst.surfaceTrack.at(2 * i));
            sample.distance2 = distanceOr0(burst.surfaceTrack.at(2 * i + 1));
        }
        record.add(sample);
    }
    return {used, record.preProcess(cleaned)};
}

} // namespace orvik
