// Whether the files that a long run reads stay what they were when it began.
#pragma once

#include <cstdint>
#include <filesystem>
#include <string>
#include <vector>

namespace orvik {

class FilesRead {
public:
    explicit FilesRead(const std::vector<std::string> &paths = {});

    // Throws UserError, naming the first file that is gone, or of another size or time of its last change.
    void requireUntouched() const;
    // Throws UserError, naming the first file that lost its end. One that is gone was open as long as it was needed.
    void requireNoneShorter() const;
    // Files that something was added to.
    [[nodiscard]] std::vector<std::string> longer() const;

private:
    struct State {
        std::string path;
        std::uintmax_t size = 0;
        std::filesystem::file_time_type changed;
    };

    std::vector<State> states_;
};

} // namespace orvik
