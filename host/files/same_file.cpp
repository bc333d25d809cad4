#include "files/same_file.hpp"

#include <filesystem>
#include <system_error>

#include "user_error.hpp"

namespace orvik {

namespace {

namespace fs = std::filesystem;

fs::path wholePath(const std::string &path) {
    std::error_code ignored;
    return fs::weakly_canonical(fs::absolute(path, ignored), ignored);
}

} // namespace

bool isSameFile(const std::string &one, const std::string &other) {
    if (one.empty() || other.empty()) {
        return false;
    }
    std::error_code ignored;
    return fs::equivalent(one, other, ignored) || wholePath(one) == wholePath(other);
}

void refuseOverwriting(const std::string &option, const std::string &output,
                       const std::vector<std::string> &filesRead) {
    for (const std::string &file : filesRead) {
        if (isSameFile(output, file)) {
            throw UsageError(option + " " + output + " would overwrite the input file " + file +
                             ": give the output another name");
        }
    }
}

} // namespace orvik
