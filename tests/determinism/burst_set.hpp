// The bursts that builds of the library are compared on: every kind of instrument, method and length, sound and faulty.
#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "synthetic_burst.hpp"
#include "synthetic_profile.hpp"

namespace orvik::test {

struct ReleaseRecord {
    void operator()(OVRecord *record) const { OVFreeVarPtr(record); }
};
using RecordOwner = std::unique_ptr<OVRecord, ReleaseRecord>;

inline std::vector<SyntheticChoice> burstSet() {
    std::vector<SyntheticChoice> list;
    for (const int type : {1, 3, 0, kProfileType}) {
        for (int method = 1; method <= 4; ++method) {
            const std::uint32_t seed = static_cast<std::uint32_t>(10 * type + method);
            list.push_back({.method = method, .instrumentType = type, .seed = seed});
            list.push_back({.method = method,
                            .instrumentType = type,
                            .nSamples = 1024,
                            .seed = seed + 100U,
                            .tilted = true,
                            .faulty = true});
        }
    }
    for (int method = 1; method <= 4; ++method) {
        // 300 is no power of two: the transform takes its direct form.
        list.push_back({.method = method, .nSamples = 300, .seed = 7, .tilted = true});
        list.push_back({.method = method, .nSamples = OV_MAX_SAMPLES, .seed = 8, .faulty = true});
    }
    return list;
}

inline std::string nameOf(const SyntheticChoice &choice) {
    return "type" + std::to_string(choice.instrumentType) + "-method" +
           std::to_string(choice.method) + "-" + std::to_string(choice.nSamples) +
           (choice.tilted ? "-tilted" : "") + (choice.faulty ? "-faulty" : "");
}

// Everything before OVProcess, for either kind of instrument; returns what pre-processing returned.
inline std::int32_t cleanBurst(OVRecord *record, const SyntheticBurst &burst,
                               OVPreProcessOutput *output) {
    if (burst.config.instrumentType == kProfileType) {
        openProfileBurst(record, burst);
        sendProfileSamples(record, burst);
        return VELTAPreProcess_ptr(record, 0, output);
    }
    openBurst(record, burst);
    sendSamples(record, burst);
    return OVPreProcess_ptr(record, 0, output);
}

} // namespace orvik::test
