#include "input/samples.hpp"

#include <cstring>
#include <limits>

#include "frame/constants.hpp"
#include "input/profile_samples.hpp"

namespace ov {
namespace {

constexpr float kWeakAmplitude = 17.0F; // [counts]
constexpr std::int32_t kWeakSignalBit = OV_FLAG_WEAK_AMPLITUDE;

void storeValid(WaveVariables &rec, int i, const OVWaveSample &sample) {
    const double pressure = sample.pressure;
    rec.pressureSeries[i] =
        static_cast<float>(pressure + rec.pressureOffset + static_cast<double>(rec.depthOffset));
    for (int b = 0; b < 3; ++b) {
        rec.velocitySeries[b][i] = sample.velocity[b];
    }
    rec.astDistance2Series[i] = sample.astDistance2;
    const float first = sample.astDistance1 + rec.depthOffset;
    const float second = sample.astDistance2 + rec.depthOffset;
    rec.astSeries[2 * i] = first;
    rec.astSeries[2 * i + 1] = second;
    if (i % 2 == 0) {
        // The even sample fills its odd neighbour's place too.
        rec.astSampleRateSeries[i] = first;
        rec.astSampleRateSeries[i + 1] = second;
    }
}

// Copies element i - 1 to element i; the first element becomes 0.
void holdLast(float *series, int i) { series[i] = i > 0 ? series[i - 1] : 0.0F; }

// Holds the last value. astSampleRateSeries is left alone: its even elements come from good samples only.
void storeMissing(WaveVariables &rec, int i) {
    holdLast(rec.pressureSeries, i);
    for (int s = 0; s < 4; ++s) {
        holdLast(velocitySeriesData(rec, s), i);
    }
    rec.astSeries[2 * i] = i > 0 ? rec.astSeries[2 * i - 2] : 0.0F;
    rec.astSeries[2 * i + 1] = i > 0 ? rec.astSeries[2 * i - 1] : 0.0F;
    ++rec.missingSampleCount;
}

void storeAt(WaveVariables &rec, int i, const OVWaveSample &sample) {
    if (sample.valid != 0) {
        storeValid(rec, i, sample);
    } else {
        storeMissing(rec, i);
    }
    if (rec.instrumentType == kProfileInstrument) {
        clearProfileAt(rec,
                       i); // a point sample has no profile, and must not show an earlier burst's
    }
}

void advanceCursor(WaveVariables &rec) {
    if (rec.sampleCursor < std::numeric_limits<std::int32_t>::max()) {
        ++rec.sampleCursor;
    }
}

void testAmplitudes(WaveVariables &rec, const OVWaveSample &sample) {
    for (int b = 0; b < 3; ++b) {
        if (static_cast<float>(sample.amplitude[b]) <= kWeakAmplitude) {
            rec.qualityFlags |= kWeakSignalBit;
        }
    }
}

OVWaveSample pointSample(const OVWaveSampleSUV &suv) {
    OVWaveSample sample{};
    sample.valid = suv.valid;
    sample.pressure = suv.pressure;
    sample.astDistance1 = suv.astDistance1;
    std::memcpy(sample.velocity, suv.velocity, sizeof sample.velocity);
    sample.astDistance2 = suv.astDistance2;
    std::memcpy(sample.amplitude, suv.amplitude, sizeof sample.amplitude);
    return sample;
}

} // namespace

void storeSample(WaveVariables &rec, OVWaveSample &sample) {
    if (rec.sampleCursor < rec.burstLength) {
        storeAt(rec, rec.sampleCursor, sample);
    }
    sample.valid = 1;
    advanceCursor(rec);
    testAmplitudes(rec, sample);
}

void storeSampleSuv(WaveVariables &rec, OVWaveSampleSUV &sample) {
    const int i = rec.sampleCursor;
    if (i >= rec.burstLength) {
        return;
    }
    const OVWaveSample point = pointSample(sample);
    storeAt(rec, i, point);
    if (sample.valid != 0) {
        rec.suvChannel1Series[i] = sample.suvChannel1;
        rec.suvChannel2Series[i] = sample.suvChannel2;
    } else {
        holdLast(rec.suvChannel1Series, i);
        holdLast(rec.suvChannel2Series, i);
    }
    sample.valid = 1;
    advanceCursor(rec);
    testAmplitudes(rec, point);
}

} // namespace ov
