// orvik: simulates, processes and shows bursts of wave instruments.
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <exception>
#include <iostream>
#include <string>

#include <poll.h>
#include <unistd.h>

#include <CLI/CLI.hpp>
#include <fmt/format.h>

#include "commands/convert_command.hpp"
#include "commands/explain_command.hpp"
#include "commands/init_command.hpp"
#include "commands/process_command.hpp"
#include "commands/report_command.hpp"
#include "commands/show_command.hpp"
#include "commands/simulate_command.hpp"
#include "orvikbase/orvikbase.h"
#include "user_error.hpp"

namespace {

constexpr int kFailed = 1;
constexpr int kUsage = 2;
constexpr int kStopped = 3;

std::string versionText() {
    char library[16] = {};
    OVGetOrvikBaseVer(library, sizeof library);
    return fmt::format("orvik {} (OrvikBase {})", ORVIK_VERSION, library);
}

int fail(const std::string &text, int status) {
    std::fflush(stdout);
    std::fputs(("orvik: error: " + text + "\n").c_str(), stderr); // where stderr is closed, quietly
    return status;
}

// CLI11 itself only says that a command is missing.
void refuseUnknownCommand(const CLI::App &app, int argc, char **argv) {
    const std::string first = argc > 1 ? argv[1] : "";
    std::string known;
    for (const CLI::App *command : app.get_subcommands([](const CLI::App *) { return true; })) {
        if (command->get_name() == first) {
            return;
        }
        known += (known.empty() ? "" : ", ") + command->get_name();
    }
    if (first.empty() || first.front() != '-') {
        throw orvik::UsageError(first.empty()
                                    ? "which command? " + known + "; --help says more"
                                    : "there is no command '" + first + "'; there are " + known);
    }
}

// What CLI11 objects to, or help and version that were asked for.
int answer(const CLI::App &app, const CLI::ParseError &error) {
    if (error.get_exit_code() == 0) {
        app.exit(error);
        return 0;
    }
    const auto commands = app.get_subcommands();
    const std::string command = commands.empty() ? "" : " " + commands.front()->get_name();
    std::string text = error.what();
    // A misspelt option takes that of which it is the name away, too: the missing one is then not the cause.
    for (const std::string &word : app.remaining(true)) {
        if (word.size() > 1 && word.front() == '-') {
            text = fmt::format("orvik{} has no option {}", command, word);
            break;
        }
    }
    return fail(fmt::format("{}; 'orvik{} --help' lists the options", text, command), kUsage);
}

// Who reads may stop reading, as `| head` does; nothing is lost then that anybody wanted.
bool readerIsGone() {
    pollfd output{STDOUT_FILENO, POLLOUT, 0};
    return poll(&output, 1, 0) == 1 && (output.revents & POLLERR) != 0;
}

// What a failed flush could not write is dropped: a later one succeeds, and only the stream's mark tells.
bool isOutputWritten() {
    std::cout.flush();
    const bool flushed = std::cout.good() && std::fflush(stdout) == 0;
    return flushed && (std::ferror(stdout) == 0 || readerIsGone());
}

int run(int argc, char **argv) {
    CLI::App app{"Directional waves from bursts of acoustic current meters", "orvik"};
    app.set_version_flag("--version", versionText());
    app.require_subcommand(1);
    orvik::addSimulateCommand(app);
    orvik::addInitCommand(app);
    orvik::addProcessCommand(app);
    orvik::addShowCommand(app);
    orvik::addReportCommand(app);
    orvik::addExplainCommand(app);
    orvik::addConvertCommand(app);
    refuseUnknownCommand(app, argc, argv);
    try {
        app.parse(argc, argv);
    } catch (const CLI::ParseError &error) {
        if (const int status = answer(app, error); status != 0) {
            return status;
        }
    }
    return isOutputWritten() ? 0 : fail("cannot write to standard output", kFailed);
}

} // namespace

int main(int argc, char **argv) {
#ifdef SIGXFSZ
    // A file-size limit then reads like a full disk: the write fails, and what was begun is cleaned up.
    std::signal(SIGXFSZ, SIG_IGN);
#endif
    int status = 0;
    try {
        status = run(argc, argv);
    } catch (const orvik::UsageError &error) {
        status = fail(error.what(), kUsage);
    } catch (const orvik::Stopped &stopped) {
        std::fflush(stdout);
        fmt::print(stderr, "orvik: {}\n", stopped.what());
        status = kStopped;
    } catch (const std::exception &error) {
        status = fail(error.what(), kFailed);
    }
    if (status == kFailed || status == kStopped) {
        // After a failed write the HDF5 library tries once more when the program ends, and crashes.
        std::_Exit(status);
    }
    return status;
}
