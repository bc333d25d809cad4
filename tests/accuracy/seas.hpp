// Seas with known height, period, direction and spread, and what each method makes of them.
#pragma once

#include <array>
#include <cstddef>
#include <string>
#include <vector>

#include "simulate/sea.hpp"

namespace orvik::accuracy {

enum class Group { single, current, twoSystems, threeBeamProfile, fourBeamProfile };

struct Sea {
    std::string name;
    Group group = Group::single;
    SeaState state;
    int samplingRate = 2;  // [Hz]
    std::size_t cells = 0; // of a profile instrument
    VelocitySystem system = VelocitySystem::beam;
};

// Groups of one wave system without a current, by the instrument that records them.
inline constexpr std::array<Group, 3> kSingleGroups{Group::single, Group::threeBeamProfile,
                                                    Group::fourBeamProfile};

// All seas of the comparison.
std::vector<Sea> allSeas();

// A way of processing: a method, and for method 3 the spectrum behind the height.
struct Way {
    std::string name;
    int method;
    int directionalInputMode;
    bool usesTrack;
};
const std::vector<Way> &allWays();

// Pressure on the bed sees no short waves, and a cell far below the surface no short orbital motion: false where the
// spectrum that a way takes the height from does not reach well beyond the peak.
bool allows(const Sea &sea, const Way &way);

// The instrument that records a sea: 1 MHz, beams at 25 degrees. A point instrument measures with three beams at 60 % of
// the depth; the cells of a profile instrument reach through the surface.
Instrument instrumentFor(const Sea &sea);

inline constexpr int kBursts =
    4; // bursts averaged for a sea: a single 17-minute burst varies by itself
inline constexpr double kFrequencyStep = 0.01; // [Hz]

// Errors of the mean over a sea's bursts, and the scatter of single bursts.
struct Errors {
    double heightPercent = 0.0;        // against the height realised in the bursts
    double heightScatterPercent = 0.0; // of a single burst
    double peakBins = 0.0;             // peak frequency, in bins
    double meanDirection = 0.0;        // [degrees]
    double directionScatter = 0.0;     // [degrees] of a single burst
    double peakDirection = 0.0;        // [degrees]
    double peakSpread = 0.0;           // [degrees]
    int bursts = 0;                    // with results
};

struct Outcome {
    Sea sea;
    Way way;
    Errors errors;
};

// Simulates every sea once and processes it in every way it allows.
std::vector<Outcome> runAll();

double median(std::vector<double> values);

} // namespace orvik::accuracy
