// What the user asks of `orvik process`, as it was typed.
#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <vector>

#include "results/exports.hpp"

namespace orvik {

struct ProcessOptions {
    std::vector<std::string> inputs;
    std::string output;
    std::string layout; // empty: by what the files look like
    std::optional<std::size_t> burstLength;
    std::string factsFile;
    std::vector<std::string> values; // name=value
    std::string velocities;          // empty: what comes first in a file that has several
    int method = 0;                  // 0: by what the files hold
    std::optional<double> freqMin;
    std::optional<double> freqMax;
    std::optional<double> trackFreqMax;
    std::optional<double> freqStep;
    std::optional<int> directions;
    std::optional<int> bandWidth;
    std::string source;
    std::optional<double> troughMargin;
    bool goingTo = false;
    unsigned threads = 0; // 0: as many as the machine has
    bool resume = false;
    bool dryRun = false;
    bool table = false;
    bool timing = false;
    bool quiet = false;
    std::string follow; // a folder to watch
    ExportPaths exports;
};

} // namespace orvik
