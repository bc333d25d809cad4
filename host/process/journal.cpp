#include "process/journal.hpp"

#include <array>
#include <cerrno>
#include <cstring>

#include <fcntl.h>
#include <fmt/format.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>
#include <zlib.h>

#include "files/part_file.hpp"
#include "process/row_archive.hpp"
#include "user_error.hpp"

namespace orvik {

namespace {

constexpr char kMagic[8] = {'o', 'r', 'v', 'i', 'k', 'j', 'n', '1'};
constexpr std::uint64_t kLongestRecord = std::uint64_t{1} << 28U;

struct Frame {
    std::uint64_t length;
    std::uint64_t checksum;
};

std::uint64_t checksumOf(const std::string &bytes) {
    return crc32(crc32(0L, Z_NULL, 0), reinterpret_cast<const Bytef *>(bytes.data()),
                 static_cast<uInt>(bytes.size()));
}

// All of it, or false.
bool readAt(int file, std::uint64_t offset, void *target, std::size_t size) {
    auto *at = static_cast<char *>(target);
    while (size > 0) {
        const ssize_t got = pread(file, at, size, static_cast<off_t>(offset));
        if (got <= 0) {
            return false;
        }
        at += got;
        offset += static_cast<std::uint64_t>(got);
        size -= static_cast<std::size_t>(got);
    }
    return true;
}

// A record at `offset`; false where there is none, or a torn one. None is empty: zeros are what a power cut leaves of
// what was not on the disk yet.
bool readRecord(int file, std::uint64_t offset, std::string &bytes) {
    Frame frame{};
    if (!readAt(file, offset, &frame, sizeof frame) || frame.length == 0 ||
        frame.length > kLongestRecord) {
        return false;
    }
    bytes.resize(frame.length);
    return readAt(file, offset + sizeof frame, bytes.data(), bytes.size()) &&
           checksumOf(bytes) == frame.checksum;
}

std::string framed(const std::string &bytes) {
    const Frame frame{bytes.size(), checksumOf(bytes)};
    std::string record(sizeof frame, '\0');
    std::memcpy(record.data(), &frame, sizeof frame);
    return record + bytes;
}

} // namespace

Journal::Journal(const std::string &output, const std::string &identity, bool resume)
    : output_(output), path_(unfinishedName(output)) {
    file_ = open(path_.c_str(), O_RDWR | O_CREAT | O_CLOEXEC, 0666);
    if (file_ < 0) {
        throw WriteError(
            fmt::format("cannot create {}: {} (does the directory exist, and may you write there?)",
                        output, std::strerror(errno)));
    }
    try {
        lock();
        readHeader(identity, resume);
        begin_ = end_;
        findRows();
    } catch (...) {
        close(file_);
        throw;
    }
}

// Without a single row there is nothing to keep.
Journal::~Journal() {
    if (end_ == begin_) {
        remove();
    }
    close(file_);
}

void Journal::lock() {
    if (flock(file_, LOCK_EX | LOCK_NB) != 0) {
        throw UserError(fmt::format("another run is writing {} at this moment: wait for it, stop "
                                    "it, or give this one another "
                                    "output",
                                    output_));
    }
    // The run that had it may have finished in between, and its journal be gone from the folder.
    struct stat here {};
    struct stat there {};
    if (fstat(file_, &here) != 0 || stat(path_.c_str(), &there) != 0 ||
        here.st_ino != there.st_ino) {
        throw UserError(fmt::format(
            "another run has just finished {}: start again if it shall be made anew", output_));
    }
}

void Journal::readHeader(const std::string &identity, bool resume) {
    const std::string header = std::string(kMagic, sizeof kMagic) + identity;
    std::string found;
    if (resume && readRecord(file_, 0, found)) {
        if (found != header) {
            throw UserError(
                fmt::format("{} is of a run with other input, options or program version, and "
                            "cannot be resumed: "
                            "run again with the same ones, or without --resume to start anew",
                            path_));
        }
        end_ = sizeof(Frame) + found.size();
        return;
    }
    const std::string record = framed(header);
    if (ftruncate(file_, 0) != 0 ||
        pwrite(file_, record.data(), record.size(), 0) != static_cast<ssize_t>(record.size())) {
        unlink(path_.c_str());
        throw WriteError(
            fmt::format("cannot write {}: {} (is the disk full?)", path_, std::strerror(errno)));
    }
    end_ = record.size();
}

void Journal::findRows() {
    std::string bytes;
    while (readRecord(file_, end_, bytes)) {
        offsets_.push_back(end_);
        end_ += sizeof(Frame) + bytes.size();
    }
}

JournalRow Journal::row(std::size_t index) const {
    std::string bytes;
    if (readRecord(file_, offsets_.at(index), bytes)) {
        try {
            return rowOfBytes(bytes);
        } catch (const std::exception &) { // no row of this program
        }
    }
    throw UserError(path_ + " cannot be read any more: run without --resume to start anew");
}

void Journal::append(const JournalRow &row) {
    const std::string record = framed(bytesOfRow(row));
    std::size_t written = 0;
    while (written < record.size()) {
        const ssize_t count = pwrite(file_, record.data() + written, record.size() - written,
                                     static_cast<off_t>(end_ + written));
        if (count <= 0) {
            throw WriteError(fmt::format("cannot write {}: {} (is the disk full?)", path_,
                                         std::strerror(errno)));
        }
        written += static_cast<std::size_t>(count);
    }
    end_ += record.size();
}

void Journal::remove() { unlink(path_.c_str()); }

} // namespace orvik
