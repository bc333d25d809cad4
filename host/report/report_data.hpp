// A result file's content as the report's page reads it.
#pragma once

#include <string>

#include "netcdf/nc_file.hpp"

namespace orvik {

// JSON that may stand inside a script element. Throws UserError, naming what is missing, when the file is no result file.
std::string reportData(const NcReader &file);

} // namespace orvik
