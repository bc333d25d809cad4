// Deployments as CSV files, a column a quantity (docs/input-layouts.md).
#pragma once

#include <cstddef>
#include <memory>
#include <optional>
#include <string>

#include "burst/layout_data.hpp"

namespace orvik {

struct CsvChoices {
    VelocitySystem wanted = VelocitySystem::none;
    std::optional<std::size_t> burstLength;
    std::optional<double> origin; // [s since 1970] of times that count from 0
};

// Cut into bursts at pauses, where a column `burst` changes, and by length where given. Throws UserError, naming file and
// line, when the file cannot be used.
std::unique_ptr<LayoutData> openCsvLayout(const std::string &path, const CsvChoices &choices);

} // namespace orvik
