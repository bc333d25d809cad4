// What a host asks of a burst, and what it gets.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "burst/burst.hpp"
#include "orvikbase/orvikbase.hpp"

namespace orvik {

struct ProcessingChoices {
    // 1 pressure + velocity, 2 with surface track, 3 maximum likelihood, 4 with surface track
    int method = 4;
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
    // Profile instruments: the cell below this percentage of the distance from the head to the deepest trough.
    double troughMargin = 90.0;
};

struct BurstResult {
    bool processed = false;         // false: the burst was rejected; everything is missing then
    std::string reason;             // why it was rejected
    std::vector<std::string> notes; // what was done otherwise than asked, and what to mind
    // In use; without a usable surface track method 3 for 4, 1 for 2.
    orvikbase::ProcessingParameters parameters;
    orvikbase::WaveParameters waves;
    orvikbase::Spectra spectra;
    std::vector<float> energy; // [m^2/Hz] behind the wave parameters, by frequency
    // Maximum entropy distribution: for each frequency nDirections weights of sum 1, or missing (OV_MISSING). Weight k
    // stands for the compass direction k * 360 / nDirections, coming from or going to as chosen.
    std::vector<float> directionWeights;
    double currentSpeed = kUnknown;
    double currentDirection = kUnknown; // [degrees]
};

inline bool usesTrack(int method) { return method == 2 || method == 4; }
inline bool usesEarthVelocities(int method) { return method <= 2; }

} // namespace orvik
