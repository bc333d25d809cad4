// What the user asks of `orvik process`, as it was typed.
#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <vector>

#include "burst/deployment.hpp"
#include "results/exports.hpp"

namespace orvik {

struct ProcessOptions {
    std::vector<std::string> inputs;
    std::string output;
    DeploymentOptions deployment;    // how the inputs are read
    std::vector<std::string> values; // name=value
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
