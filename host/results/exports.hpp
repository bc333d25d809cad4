// Result files turned into what other programs read.
#pragma once

#include <string>
#include <vector>

namespace orvik {

// Files to write; an empty name: not this one.
struct ExportPaths {
    std::string swan;
    std::string ww3;
    std::string csv;
    std::string json;

    [[nodiscard]] bool any() const {
        return !swan.empty() || !ww3.empty() || !csv.empty() || !json.empty();
    }
};

// Throws UsageError when two of the files, or one of them and `resultFile` or what is kept for a run that goes on with it,
// are the same, or when one of all these is among `filesRead`, what the results are made from; UserError when a file has
// no folder to be written to.
void checkExportPaths(const ExportPaths &paths, const std::string &resultFile,
                      const std::vector<std::string> &filesRead = {});

// Writes them from a finished result file; all of them or, when something goes wrong, none. What it gives back are notes
// for the user.
std::vector<std::string> exportResults(const std::string &resultFile, const ExportPaths &paths);

} // namespace orvik
