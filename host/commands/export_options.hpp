// The options that name other outputs than the result file: the same wherever they are offered.
#pragma once

#include "results/exports.hpp"

namespace CLI {
class App;
}

namespace orvik {

// `paths` must live as long as the command.
void addExportOptions(CLI::App &command, ExportPaths &paths);

} // namespace orvik
