// The layout of one long series along `time`, with velocities by `dir` and `range` (docs/input-layouts.md).
#pragma once

#include <cstddef>
#include <memory>
#include <optional>
#include <string>

#include "burst/layout_data.hpp"
#include "netcdf/nc_file.hpp"

namespace orvik {

bool isContinuousLayout(const NcReader &file);

// Cut into bursts at pauses, and by `burstLength` samples where given. Throws UserError, naming file and variable, when the
// file cannot be used.
std::unique_ptr<LayoutData> openContinuousLayout(const std::string &path, VelocitySystem wanted,
                                                 std::optional<std::size_t> burstLength);

} // namespace orvik
