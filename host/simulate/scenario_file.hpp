// Scenario files: TOML with the settings of a scenario and a time table of its sea (docs/simulate.md).
#pragma once

#include <string>

#include "simulate/scenario.hpp"

namespace orvik {

// What the file does not say is as in plainScenario(). Throws UserError, naming file, line and key.
Scenario readScenarioFile(const std::string &path);

} // namespace orvik
