#include "files/files_read.hpp"

#include <system_error>

#include "user_error.hpp"

namespace orvik {

namespace {

namespace fs = std::filesystem;

} // namespace

FilesRead::FilesRead(const std::vector<std::string> &paths) {
    for (const std::string &path : paths) {
        std::error_code ignored;
        states_.push_back({path, fs::file_size(path, ignored), fs::last_write_time(path, ignored)});
    }
}

void FilesRead::requireUntouched() const {
    for (const State &state : states_) {
        std::error_code ignored;
        if (!fs::exists(state.path, ignored)) {
            throw UserError(state.path +
                            " is no longer there: bring it back and go on with --resume");
        }
        if (fs::file_size(state.path, ignored) != state.size ||
            fs::last_write_time(state.path, ignored) != state.changed) {
            throw UserError(state.path + " has changed while it was read: bring it back as it was "
                                         "and go on with --resume, or start anew");
        }
    }
}

void FilesRead::requireNoneShorter() const {
    for (const State &state : states_) {
        std::error_code gone;
        const std::uintmax_t size = fs::file_size(state.path, gone);
        if (!gone && size < state.size) {
            throw UserError(state.path +
                            " has become shorter while it was read: start anew when it "
                            "is complete");
        }
    }
}

std::vector<std::string> FilesRead::longer() const {
    std::vector<std::string> paths;
    for (const State &state : states_) {
        std::error_code gone;
        const std::uintmax_t size = fs::file_size(state.path, gone);
        if (!gone && size > state.size) {
            paths.push_back(state.path);
        }
    }
    return paths;
}

} // namespace orvik
