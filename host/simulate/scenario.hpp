// A deployment to simulate: one instrument, its bursts, and a sea that changes between given hours.
#pragma once

#include <cstdint>
#include <vector>

#include "simulate/sea.hpp"

namespace orvik {

// The sea and the instrument's attitude at an hour after the start of the deployment.
struct SeaAtHour {
    double hours = 0.0;
    SeaState sea;
};

struct Scenario {
    Instrument instrument;
    SensorFaults faults;
    VelocitySystem velocitySystem = VelocitySystem::beam;
    double startTime = 1730764800.0; // [s since 1970] 2024-11-05 00:00 UTC
    double interval = 3600.0;        // [s] from burst to burst
    std::size_t bursts = 1;
    std::size_t samples = 2048;
    std::uint64_t seed = 1;
    double tideAmplitude = 0.0;        // [m]
    double tidePeriod = 12.42;         // [hours]
    double tideCurrent = 0.0;          // [m/s] greatest speed, when the water rises fastest
    double tideCurrentDirection = 0.0; // [degrees] where the rising tide flows
    std::vector<SeaAtHour>
        states; // hours ascending, never empty; beyond its ends the sea stays as it is there
};

// A healthy instrument, one burst, a steady sea of one wave system.
Scenario plainScenario();

// A storm that passes within three days, one burst an hour.
Scenario stormScenario();

// The sea of burst `index`: between the states around its start, with the tide.
SeaState seaOfBurst(const Scenario &scenario, std::size_t index);

// The same burst whichever bursts are made before it.
SimulatedBurst simulateScenarioBurst(const Scenario &scenario, std::size_t index);

// Throws UserError when values that are fine one by one do not fit together.
void checkScenario(const Scenario &scenario);

} // namespace orvik
