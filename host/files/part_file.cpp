#include "files/part_file.hpp"

#include <cerrno>
#include <charconv>
#include <csignal>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <optional>
#include <system_error>

#include <unistd.h>

#include "user_error.hpp"

namespace orvik {

namespace {

namespace fs = std::filesystem;

constexpr const char *kPart = ".part";
constexpr const char *kCopy = ".copy.part";

std::string hiddenName(const fs::path &target) {
    std::string name = ".";
    name += target.filename().string();
    name += '.';
    return name;
}

std::string neighbour(const std::string &target, const char *ending) {
    const fs::path path(target);
    return (path.parent_path() / (hiddenName(path) + std::to_string(getpid()) + ending)).string();
}

// The process that the neighbour `name` of `target` belongs to; nothing for other files.
std::optional<pid_t> ownerOf(const std::string &name, const fs::path &target) {
    const std::string before = hiddenName(target);
    if (!name.starts_with(before)) {
        return std::nullopt;
    }
    pid_t owner = 0;
    const char *const last = name.data() + name.size();
    const auto [end, error] = std::from_chars(name.data() + before.size(), last, owner);
    const std::string ending(end, last);
    const bool ours = error == std::errc{} && owner > 0 && (ending == kPart || ending == kCopy);
    return ours ? std::optional(owner) : std::nullopt;
}

// A program that was killed could not take its files with it.
void sweep(const fs::path &target) {
    const fs::path folder = target.has_parent_path() ? target.parent_path() : fs::path(".");
    std::error_code error;
    for (const auto &entry : fs::directory_iterator(folder, error)) {
        const auto owner = ownerOf(entry.path().filename().string(), target);
        if (owner && kill(*owner, 0) != 0 && errno == ESRCH) {
            std::error_code ignored;
            fs::remove(entry.path(), ignored);
        }
    }
}

// What a name that is a link leads to, whether that is there yet or not.
std::string followed(const std::string &target) {
    constexpr int kMostLinks = 40;
    fs::path path(target);
    std::error_code error;
    for (int links = 0; fs::is_symlink(fs::symlink_status(path, error)); ++links) {
        if (links == kMostLinks) {
            throw WriteError("cannot write " + target + ": it is a link that leads to itself");
        }
        path = path.parent_path() / fs::read_symlink(path, error);
    }
    return path.string();
}

} // namespace

void checkTarget(const std::string &target) {
    if (target.empty()) {
        throw WriteError("an output file needs a name");
    }
    std::error_code ignored;
    const fs::file_status status = fs::status(target, ignored);
    if (fs::is_directory(status)) {
        throw WriteError("cannot write " + target + ": it is a directory");
    }
    // The finished file takes its target's place: of a device or a pipe nothing would be left.
    if (fs::exists(status) && !fs::is_regular_file(status)) {
        throw WriteError("cannot write " + target +
                         ": it is a device or a pipe, not a file; name a file");
    }
}

std::string unfinishedName(const std::string &output) { return followed(output) + ".unfinished"; }

PartFile::PartFile(const std::string &target)
    : target_(target), place_(followed(target)), path_(neighbour(place_, kPart)) {
    checkTarget(target);
    sweep(place_);
}

PartFile::~PartFile() {
    if (!committed_) {
        std::remove(path_.c_str());
    }
}

void PartFile::publish() const {
    const std::string copy = neighbour(place_, kCopy);
    std::error_code error;
    fs::copy_file(path_, copy, fs::copy_options::overwrite_existing, error);
    if (!error) {
        fs::rename(copy, place_, error);
    }
    if (error) {
        std::error_code ignored;
        fs::remove(copy, ignored);
        throw WriteError("cannot write " + target_ + ": " + error.message() +
                         " (is the disk full?)");
    }
}

void PartFile::commit() {
    if (std::rename(path_.c_str(), place_.c_str()) != 0) {
        throw WriteError("cannot give the finished file its name " + target_ + ": " +
                         std::strerror(errno));
    }
    committed_ = true;
}

} // namespace orvik
