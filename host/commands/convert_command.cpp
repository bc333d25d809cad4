#include "commands/convert_command.hpp"

#include <cstdio>
#include <memory>
#include <string>

#include <CLI/CLI.hpp>
#include <fmt/format.h>

#include "commands/export_options.hpp"
#include "user_error.hpp"

namespace orvik {

namespace {

struct ConvertOptions {
    std::string results;
    ExportPaths paths;
};

void runConvert(const ConvertOptions &options) {
    if (!options.paths.any()) {
        throw UsageError("nothing to write: name a file with --swan, --ww3, --csv or --json");
    }
    for (const std::string &note : exportResults(options.results, options.paths)) {
        fmt::print(stderr, "orvik: note: {}\n", note);
    }
}

} // namespace

void addConvertCommand(CLI::App &app) {
    const auto options = std::make_shared<ConvertOptions>();
    CLI::App *command = app.add_subcommand("convert", "results for other programs");
    command->add_option("results", options->results, "result file of orvik process")->required();
    addExportOptions(*command, options->paths);
    command->footer("Examples:\n"
                    "  $ orvik convert waves.nc --csv waves.csv\n"
                    "  $ orvik convert waves.nc --swan boundary.spc --ww3 boundary.nc");
    command->callback([options] { runConvert(*options); });
}

} // namespace orvik
