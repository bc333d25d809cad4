#include "report/page_file.hpp"

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <system_error>

#include <unistd.h>

#include "user_error.hpp"

namespace orvik {

namespace {

// A hidden neighbour of `path`, so that the final rename stays on one file system. Gone with this object unless it was
// renamed.
class TemporaryFile {
public:
    explicit TemporaryFile(const std::string &path) {
        const std::filesystem::path target(path);
        std::string name = ".";
        name += target.filename().string();
        name += '.';
        name += std::to_string(getpid());
        name += ".part";
        path_ = (target.parent_path() / name).string();
    }
    ~TemporaryFile() { std::remove(path_.c_str()); }
    TemporaryFile(const TemporaryFile &) = delete;
    TemporaryFile &operator=(const TemporaryFile &) = delete;

    [[nodiscard]] const std::string &path() const { return path_; }

private:
    std::string path_;
};

} // namespace

void writePageFile(const std::string &path, const std::vector<std::string_view> &parts) {
    std::error_code ignored;
    if (path.empty() || std::filesystem::is_directory(path, ignored)) {
        throw WriteError(path.empty() ? "an output file needs a name"
                                      : "cannot write " + path + ": it is a directory");
    }
    const TemporaryFile temporary(path);
    std::ofstream file(temporary.path(), std::ios::binary);
    if (!file) {
        throw WriteError("cannot create " + path + ": " + std::strerror(errno) +
                         " (does the directory exist, and may you write there?)");
    }
    for (const std::string_view part : parts) {
        file.write(part.data(), static_cast<std::streamsize>(part.size()));
    }
    file.close();
    if (!file) {
        throw WriteError("cannot write " + path + ": " + std::strerror(errno) +
                         " (is the disk full?)");
    }
    if (std::rename(temporary.path().c_str(), path.c_str()) != 0) {
        throw WriteError("cannot give the finished page its name " + path + ": " +
                         std::strerror(errno));
    }
}

} // namespace orvik
