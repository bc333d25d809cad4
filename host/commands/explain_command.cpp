#include "commands/explain_command.hpp"

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>

#include <CLI/CLI.hpp>
#include <fmt/format.h>

#include "commands/counted.hpp"
#include "results/explanation.hpp"
#include "user_error.hpp"

namespace orvik {

namespace {

struct ExplainOptions {
    std::string results;
    std::int64_t burst = 0;
};

// Rows are nearly always bursts; the file says when they are not.
StoredBurst findBurst(const ResultReader &results, std::size_t place) {
    if (place < results.burstCount()) {
        StoredBurst burst = results.read(place);
        if (burst.burst == place) {
            return burst;
        }
    }
    for (std::size_t row = 0; row < results.burstCount(); ++row) {
        StoredBurst burst = results.read(row);
        if (burst.burst == place) {
            return burst;
        }
    }
    throw UsageError(fmt::format("--burst {}: {} has {}, counted from 0; orvik show lists "
                                 "them",
                                 place, results.path(), counted(results.burstCount(), "burst")));
}

void runExplain(const ExplainOptions &options) {
    const ResultReader results(options.results);
    if (options.burst < 0) {
        throw UsageError(fmt::format("--burst {}: bursts are counted from 0", options.burst));
    }
    const auto place = static_cast<std::size_t>(options.burst);
    fmt::print("{}", explanationOf(results, findBurst(results, place)));
}

} // namespace

void addExplainCommand(CLI::App &app) {
    const auto options = std::make_shared<ExplainOptions>();
    CLI::App *command = app.add_subcommand("explain", "why a burst's numbers are what they are");
    command->add_option("results", options->results, "result file of orvik process")->required();
    command->add_option("--burst", options->burst, "which burst, counted from 0 as orvik show does")
        ->required();
    command->footer("Example: orvik explain waves.nc --burst 12");
    command->callback([options] { runExplain(*options); });
}

} // namespace orvik
