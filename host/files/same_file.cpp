#include "files/same_file.hpp"

#include <algorithm>
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
    const auto file =
        std::find_if(filesRead.begin(), filesRead.end(),
                     [&output](const std::string &read) { return isSameFile(output, read); });
    if (file != filesRead.end()) {
        throw UsageError(option + " " + output + " would overwrite the input file " + *file +
                         ": give the output another name");
    }
}

} // namespace orvik
