#include "commands/export_options.hpp"

#include <CLI/CLI.hpp>

namespace orvik {

void addExportOptions(CLI::App &command, ExportPaths &paths) {
    command.add_option("--swan", paths.swan,
                       "directional spectra for SWAN, as its boundaries read them (text)");
    command.add_option("--ww3", paths.ww3,
                       "directional spectra for WAVEWATCH III, as it writes points (netCDF)");
    command.add_option("--csv", paths.csv, "wave parameters, a line a burst, for spreadsheets");
    command.add_option("--json", paths.json, "wave parameters and spectra by frequency");
}

} // namespace orvik
