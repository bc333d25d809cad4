// The same burst for the C interface and for the C++ face: every field with a value of its own where it matters.
#pragma once

#include <array>
#include <bit>
#include <cstddef>
#include <cstring>
#include <vector>

#include <gtest/gtest.h>

#include "exports/burst_results.hpp"
#include "orvikbase/orvikbase.hpp"
#include "support/record_ptr.hpp"

namespace orvik::test {

using namespace orvikbase;

template <class Value> std::vector<unsigned char> bytesOf(const Value &value) {
    const auto *const first = reinterpret_cast<const unsigned char *>(&value);
    return {first, first + sizeof value};
}

// Of a field of a packed structure, which may lie where no reference can refer to it.
template <class Value> Value copyOf(Value value) { return value; }

inline InstrumentConfig faceConfig(const OVInstrumentConfig &config) {
    InstrumentConfig face{.pingsPerSample = config.pingsPerSample,
                          .samplingRate = config.samplingRate,
                          .burstSamples = config.burstSamples,
                          .acousticFrequency = config.acousticFrequency,
                          .slantAngle = config.slantAngle,
                          .instrumentType = config.instrumentType,
                          .velocitySystem = static_cast<VelocitySystem>(config.attitudeMode),
                          .cellSizeCounts = config.cellSizeCounts,
                          .flags = config.configFlags};
    for (std::size_t i = 0; i < face.beamToXyz.size(); ++i) {
        face.beamToXyz[i] = config.transformMatrix[i];
    }
    return face;
}

inline ProfileInstrumentConfig faceConfig(const OVProfileInstrumentConfig &config) {
    OVInstrumentConfig common;
    std::memcpy(&common, &config, sizeof common);
    ProfileInstrumentConfig face{.instrument = faceConfig(common),
                                 .beamCount = config.beamCount,
                                 .ambiguityVelocity = config.lagParameter};
    for (std::size_t b = 0; b < kMaxBeams; ++b) {
        face.beamAzimuths[b] = config.beamAzimuth[b];
    }
    return face;
}

inline ProcessingParameters faceParameters(const OVProcessingParameters &parameters) {
    return {.method = static_cast<Method>(parameters.processingMethod),
            .freqMin = parameters.freqMin,
            .freqMax = parameters.freqMax,
            .fineFreqMin = parameters.fineFreqMin,
            .fineFreqMax = parameters.fineFreqMax,
            .freqStep = parameters.freqStep,
            .levelOffset = parameters.levelOffset,
            .headingOffset = parameters.headingOffset,
            .dirBandWidth = parameters.dirBandWidth,
            .specBandWidth = parameters.specBandWidth,
            .directionalInput = static_cast<DirectionalInput>(parameters.directionalInputMode),
            .estimateMask = parameters.estimateMask,
            .directions = parameters.nDirections,
            .pressureOffset = parameters.pressureOffset,
            .comingFrom = parameters.reverseDirections != 0,
            .troughMargin = parameters.profileParamA,
            .trackIsSecondDistance = parameters.profileParamB != 0};
}

inline BurstHeader faceHeader(const OVWaveHeader &header) {
    return {.samples = header.nSamples,
            .cellPositionCounts = header.pressureCounts,
            .heading = header.heading,
            .pitch = header.pitch,
            .roll = header.roll,
            .distanceCounts = header.distanceCounts,
            .depthOffset = header.depthOffset,
            .cellDepth = header.directDepth,
            .cellHeight = header.directHeight,
            .cells = header.nCells,
            .surfaceTimeOffset = header.surfaceTimeOffset,
            .valueA = header.headerValueA,
            .valueB = header.headerValueB,
            .valueC = header.headerValueC,
            .words = {header.headerWords[0], header.headerWords[1], header.headerWords[2]},
            .flag = header.headerFlag};
}

inline Sample faceSample(const OVWaveSample &sample) {
    Sample face{.valid = sample.valid != 0,
                .pressure = sample.pressure,
                .distance1 = sample.astDistance1,
                .distance2 = sample.astDistance2};
    for (std::size_t i = 0; i < 3; ++i) {
        face.velocity[i] = sample.velocity[i];
    }
    for (std::size_t i = 0; i < 4; ++i) {
        face.amplitude[i] = sample.amplitude[i];
    }
    return face;
}

inline std::vector<Sample> faceSamples(const SyntheticBurst &burst) {
    std::vector<Sample> samples;
    for (const OVWaveSample &sample : burst.samples) {
        samples.push_back(faceSample(sample));
    }
    return samples;
}

// A record that the C interface works on and one that the face does.
class BothSides : public testing::Test {
protected:
    OVRecord *c() const { return cRecord_.get(); }

    void expectSameRecords(const char *when) const {
        EXPECT_EQ(std::memcmp(cRecord_.get(), face.get(), OV_RECORD_BYTES), 0) << when;
    }

    // Configuration, parameters, header and samples on either side.
    void sendPointBurst(const SyntheticBurst &burst) {
        openBurst(c(), burst);
        sendSamples(c(), burst);
        face.configure(faceConfig(burst.config));
        face.setProcessing(faceParameters(burst.parameters));
        face.openBurst(faceHeader(burst.header));
        face.add(faceSamples(burst));
    }

    void processPointBurst(const SyntheticBurst &burst) {
        sendPointBurst(burst);
        const auto cOutput = std::make_unique<OVPreProcessOutput>();
        OVPreProcess_ptr(c(), 0, cOutput.get());
        ASSERT_TRUE(face.preProcess(cleaned));
        ASSERT_TRUE(OVProcess_ptr(c()));
        ASSERT_TRUE(face.process());
    }

    Record face;
    CleanedBurst cleaned;

private:
    RecordPtr cRecord_ = makeRecord();
};

} // namespace orvik::test
