// From what the user asks and what the files hold to what is done: method, axes, layout and provenance of the results.
#pragma once

#include <memory>
#include <set>
#include <string>

#include "burst/burst_source.hpp"
#include "process/process_options.hpp"
#include "results/result_file.hpp"
#include "run/burst_runner.hpp"

namespace orvik {

// The method that makes the most of a deployment's series without asking for facts that go with other ones.
int naturalMethod(const BurstSource &source);

struct Plan {
    ProcessingChoices choices;
    ResultLayout layout;
    orvikbase::ProcessingParameters parameters; // in use, after the library's own limits
    std::string instrument;                     // its facts in full
    std::set<std::string> notes;                // what will be done otherwise than asked
};

// Throws UserError or UsageError when it cannot be done.
Plan planFor(const ProcessOptions &options, const BurstSource &source);

// Everything that the results depend on, as text: two runs with the same one give the same bytes.
std::string identityOf(const Plan &plan);

// What would be done, in words (--dry-run).
std::string describe(const Plan &plan, const BurstSource &source, const ProcessOptions &options);

} // namespace orvik
