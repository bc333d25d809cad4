#include "results/text_file.hpp"

#include <cstdio>
#include <filesystem>
#include <system_error>

#include <unistd.h>

#include "results/burst_table.hpp"
#include "user_error.hpp"

namespace orvik {

namespace {

// A hidden neighbour of `path`, so that the final rename stays on one file system.
std::string temporaryName(const std::string &path) {
    const std::filesystem::path target(path);
    std::string name = ".";
    name += target.filename().string();
    name += '.';
    name += std::to_string(getpid());
    name += ".part";
    return (target.parent_path() / name).string();
}

} // namespace

TextFile::TextFile(const std::string &path)
    : path_(path), temporaryPath_(temporaryName(path)), stream_(temporaryPath_, std::ios::binary) {
    std::error_code ignored;
    if (!stream_ || std::filesystem::is_directory(path, ignored)) {
        std::remove(temporaryPath_.c_str());
        throw WriteError("cannot create " + path +
                         ": does the directory exist, and may you write there?");
    }
}

TextFile::~TextFile() {
    if (!temporaryPath_.empty()) {
        std::remove(temporaryPath_.c_str());
    }
}

void TextFile::check() const {
    if (!stream_) {
        throw WriteError("cannot write to " + path_ + " (is the disk full?)");
    }
}

void TextFile::write(const std::string &text) {
    stream_ << text;
    check();
}

void TextFile::commit() {
    stream_.close();
    check();
    std::error_code error;
    std::filesystem::rename(temporaryPath_, path_, error);
    if (error) {
        throw WriteError("cannot give the finished file its name " + path_ + ": " +
                         error.message());
    }
    temporaryPath_.clear();
}

std::string isoTime(double secondsSince1970) {
    std::string text = timeText(secondsSince1970);
    if (text == "-") {
        return "";
    }
    text[text.find(' ')] = 'T';
    return text + 'Z';
}

} // namespace orvik
