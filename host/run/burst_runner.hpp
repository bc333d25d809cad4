// One burst through the library, in the order of calls that every host uses.
#pragma once

#include <memory>
#include <string>
#include <vector>

#include "burst/burst.hpp"
#include "orvikbase/orvikbase.h"

namespace orvik {

struct ProcessingChoices {
    int method = 4; // 1 pressure + velocity, 2 with surface track, 3 maximum likelihood, 4 with surface track
    double freqMin = 0.02;
    double freqMax = 0.99;
    double freqStep = 0.01;
    double fineFreqMin = 0.02;
    double fineFreqMax = 1.99;
    int dirBandWidth = 32;
    int specBandWidth = 32;
    int directionalInputMode = 2;
    int nDirections = 90;
    bool comingFrom = true; // directions say where waves come from
};

struct BurstResult {
    bool processed = false; // false: the burst was rejected; everything is missing then
    std::string reason;     // why it was rejected
    OVProcessingParameters parameters{};
    OVWaveParameterSet waves{};
    OVFourierCoefficientSpectra spectra{};
    std::vector<float> energy; // [m^2/Hz] behind the wave parameters, by frequency
    double currentSpeed = kUnknown;
    double currentDirection = kUnknown; // [degrees]
};

// Owns one wave-variables record. Methods 1 and 2 get east-north-up velocities and methods 3 and 4 along-beam ones
// whatever the burst holds; the conversion is done here.
class BurstRunner {
public:
    BurstRunner(const Instrument &instrument, const ProcessingChoices &choices);
    ~BurstRunner();
    BurstRunner(const BurstRunner &) = delete;
    BurstRunner &operator=(const BurstRunner &) = delete;

    // Throws UserError when the burst lacks what the method needs.
    BurstResult run(const Burst &burst);

private:
    struct Impl;
    std::unique_ptr<Impl> impl_;
};

} // namespace orvik
