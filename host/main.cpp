// orvik: simulates, processes and shows bursts of wave instruments.
#include <csignal>
#include <cstdio>
#include <exception>
#include <string>

#include <CLI/CLI.hpp>
#include <fmt/format.h>

#include "commands/process_command.hpp"
#include "commands/show_command.hpp"
#include "commands/simulate_command.hpp"
#include "orvikbase/orvikbase.h"
#include "user_error.hpp"

namespace {

constexpr int kFailed = 1;
constexpr int kUsage = 2;

std::string versionText() {
    char library[16] = {};
    OVGetOrvikBaseVer(library, sizeof library);
    return fmt::format("orvik {} (OrvikBase {})", ORVIK_VERSION, library);
}

int fail(const std::string &text, int status) {
    std::fflush(stdout);
    fmt::print(stderr, "orvik: error: {}\n", text);
    return status;
}

int run(int argc, char **argv) {
    CLI::App app{"Directional waves from bursts of acoustic current meters", "orvik"};
    app.set_version_flag("--version", versionText());
    app.require_subcommand(1);
    orvik::addSimulateCommand(app);
    orvik::addProcessCommand(app);
    orvik::addShowCommand(app);
    try {
        app.parse(argc, argv);
    } catch (const CLI::ParseError &error) {
        return app.exit(error) == 0 ? 0 : kUsage;
    }
    return std::fflush(stdout) == 0 ? 0 : fail("cannot write to standard output", kFailed);
}

} // namespace

int main(int argc, char **argv) {
#ifdef SIGXFSZ
    // A file-size limit then reads like a full disk: the write fails, and what was begun is cleaned up.
    std::signal(SIGXFSZ, SIG_IGN);
#endif
    try {
        return run(argc, argv);
    } catch (const orvik::UsageError &error) {
        return fail(error.what(), kUsage);
    } catch (const std::exception &error) {
        return fail(error.what(), kFailed);
    }
}
