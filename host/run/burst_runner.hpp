// One burst through the library, in the order of calls that every host uses.
#pragma once

#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "burst/burst.hpp"
#include "orvikbase/orvikbase.h"

namespace orvik {

struct ProcessingChoices {
    int method =
        4; // 1 pressure + velocity, 2 with surface track, 3 maximum likelihood, 4 with surface track
    double freqMin = 0.02;
    double freqMax = 0.99;
    double freqStep = 0.01;
    double fineFreqMin = 0.02;
    double fineFreqMax = 1.99;
    int dirBandWidth = 32;
    int specBandWidth = 32;
    // 0 pressure, 1 velocity, 2 surface track if valid; by default 2 for methods 2 and 4, else 0.
    std::optional<int> directionalInputMode;
    int nDirections = 90;
    bool comingFrom = true; // directions say where waves come from
};

struct BurstResult {
    bool processed = false;         // false: the burst was rejected; everything is missing then
    std::string reason;             // why it was rejected
    std::vector<std::string> notes; // what was done otherwise than asked
    OVProcessingParameters
        parameters{}; // in use; without a usable surface track method 3 for 4, 1 for 2
    OVWaveParameterSet waves{};
    OVFourierCoefficientSpectra spectra{};
    std::vector<float> energy; // [m^2/Hz] behind the wave parameters, by frequency
    // Maximum entropy distribution: for each frequency nDirections weights of sum 1, or missing (OV_MISSING). Weight k
    // stands for the compass direction k * 360 / nDirections, coming from or going to as chosen.
    std::vector<float> directionWeights;
    double currentSpeed = kUnknown;
    double currentDirection = kUnknown; // [degrees]
};

// Whether a method needs heading, pitch and roll, and the beams' place in the instrument, with such velocities.
bool needsAttitude(int method, VelocitySystem system);
bool needsBeams(int method, VelocitySystem system);

// Owns one wave-variables record. Methods 1 and 2 get east-north-up velocities and methods 3 and 4 along-beam ones
// whatever the burst holds; the conversion is done here.
class BurstRunner {
public:
    BurstRunner(const Instrument &instrument, const ProcessingChoices &choices);
    ~BurstRunner();
    BurstRunner(const BurstRunner &) = delete;
    BurstRunner &operator=(const BurstRunner &) = delete;

    // The parameters in use, after the library's own limits.
    [[nodiscard]] const OVProcessingParameters &parameters() const;
    // Frequency axes [Hz] of the results: the main one, and the surface track's.
    [[nodiscard]] std::vector<double> frequencies() const;
    [[nodiscard]] std::vector<double> fineFrequencies() const;

    // Bad data give a result with `processed` false. Throws UserError when the burst has no series of a kind that the
    // method cannot do without.
    BurstResult run(const Burst &burst);

private:
    struct Impl;
    std::unique_ptr<Impl> impl_;
};

} // namespace orvik
