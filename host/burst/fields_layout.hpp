// The burst layout whose variables carry a field's code: P_1, u_1205, Hdg_1215 (docs/input-layouts.md).
#pragma once

#include <memory>
#include <string>

#include "burst/layout_data.hpp"
#include "netcdf/nc_file.hpp"

namespace orvik {

bool isFieldsLayout(const NcReader &file);

// Throws UserError, naming file and variable, when the file cannot be used.
std::unique_ptr<LayoutData> openFieldsLayout(const std::string &path, VelocitySystem wanted);

} // namespace orvik
