// Real-time processing: a folder into which burst files are renamed as they are completed.
#pragma once

#include <cstddef>
#include <functional>
#include <memory>
#include <string>

#include "burst/burst_source.hpp"
#include "process/plan.hpp"

namespace orvik {

struct FollowRun {
    std::string folder;
    std::string output;
    bool resume = false;
    std::function<std::unique_ptr<BurstSource>(const std::string &file)> open;
    std::function<Plan(const BurstSource &source)> plan;
    std::function<void(const Plan &plan)> onStart = [](const Plan &) {};
    std::function<void(const ResultRow &)> onRow = [](const ResultRow &) {};
    // A file that cannot be used, and why; the folder is watched on.
    std::function<void(const std::string &file, const std::string &reason)> onBadFile;
};

// Processes what is in the folder, in the order of its names, then each file that is renamed into it. After every file the
// result file is there, complete up to that file. The first good file says what the instrument is and how it is processed;
// files of another instrument are bad files. Returns when the user stops it; its journal stays, so that a later run with
// `resume` goes on behind the last burst.
void follow(const FollowRun &run);

} // namespace orvik
