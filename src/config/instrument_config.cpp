#include "config/instrument_config.hpp"

#include <cstddef>
#include <cstring>

namespace ov {
namespace {

constexpr std::uint16_t kSplitEstimateBit = 0x0020;

// Along-beam cell size [cm] from timing counts: half the nominal sound speed of 1500 m/s, and counts of 16 periods of
// a 6 MHz clock (type 1) or of the acoustic frequency (every other type).
double cellSizeCm(std::int32_t instrumentType, float acousticFrequency, std::int16_t counts) {
    const double n = counts;
    if (instrumentType == 1) {
        return n * 100.0 * 16.0 * 750.0 / 6000000.0;
    }
    const double frequency = acousticFrequency;
    return 750.0 / (frequency * 0.0625) * (n * 100.0);
}

} // namespace

void setInstrumentConfig(WaveVariables &rec, const OVInstrumentConfig &config) {
    rec.samplingRate = config.samplingRate;
    rec.splitEstimateFlag = (config.configFlags & kSplitEstimateBit) != 0 ? 1 : 0;
    rec.burstSamples = config.burstSamples;
    rec.acousticFrequency = config.acousticFrequency;
    rec.slantAngle = config.slantAngle;
    rec.pingsPerSample = config.pingsPerSample;
    rec.instrumentType = config.instrumentType;
    rec.attitudeMode = config.attitudeMode;
    rec.cellSizeCounts = static_cast<std::uint16_t>(config.cellSizeCounts);
    std::memcpy(rec.transformMatrix, config.transformMatrix, sizeof rec.transformMatrix);
    rec.cellSize = static_cast<float>(
        cellSizeCm(config.instrumentType, config.acousticFrequency, config.cellSizeCounts));
}

void setProfileInstrumentConfig(WaveVariables &rec, const OVProfileInstrumentConfig &config) {
    OVInstrumentConfig common;
    static_assert(offsetof(OVProfileInstrumentConfig, beamAzimuth) == sizeof common,
                  "the common fields come first");
    std::memcpy(&common, &config, sizeof common);
    setInstrumentConfig(rec, common);
    std::memcpy(rec.beamAzimuth, &config.beamAzimuth, sizeof rec.beamAzimuth);
    rec.beamCount = config.beamCount;
    rec.lagParameter = config.lagParameter;
}

} // namespace ov
