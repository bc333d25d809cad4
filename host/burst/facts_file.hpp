// Facts of a deployment in a TOML file, by the names of the burst file's variables.
#pragma once

#include <string>

#include "burst/fact_table.hpp"

namespace orvik {

// Throws UserError, naming file and line, for a file that is not TOML, an unknown name and a value that does not fit.
Overrides readFacts(const std::string &path);

} // namespace orvik
