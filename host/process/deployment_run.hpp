// A deployment from its files to the result file: bursts read one at a time, processed on several threads, written in order.
#pragma once

#include <cstddef>
#include <functional>
#include <string>
#include <vector>

#include "burst/burst_source.hpp"
#include "files/files_read.hpp"
#include "process/plan.hpp"
#include "process/progress.hpp"

namespace orvik {

struct BadBurst {
    std::size_t index = 0;
    std::string reason;
};

// Where the time went [s], summed over the threads.
struct RunTimes {
    double reading = 0.0;
    double processing = 0.0;
    double writing = 0.0;
    double wall = 0.0;
    std::size_t bursts = 0; // of this run, without those of an earlier one
};

struct RunOutcome {
    std::vector<BadBurst> bad;
    RunTimes times;
};

struct DeploymentRun {
    std::string output;
    unsigned threads = 0; // 0: as many as the machine has
    bool resume = false;
    FilesRead inputs; // the source's, as they were when it was opened
    ProgressStyle progress = ProgressStyle::none;
    // Sees every row, in order; rows of an earlier run that is being resumed too.
    std::function<void(const ResultRow &)> onRow = [](const ResultRow &) {};
};

// The bytes of the result file depend on the source and the plan alone, not on the number of threads, nor on how often
// the run was stopped and resumed. Throws Stopped when the user stopped it, UserError when it cannot go on; what was
// finished is kept for a run with `resume` then.
RunOutcome runDeployment(const BurstSource &source, const Plan &plan, const DeploymentRun &run);

} // namespace orvik
