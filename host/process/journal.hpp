// The finished bursts of a run that is not finished, on disk: what --resume goes on from after any end, a power cut of
// the program included.
//
// A netCDF file that was being written when its program was killed cannot be relied on. A journal can: one record a burst,
// each with its length and checksum, appended with a single write. Records behind a torn one do not exist.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "results/result_file.hpp"

namespace orvik {

struct JournalRow {
    ResultRow row;
    std::string
        file; // that the burst came from, where a run takes files as they arrive; else empty
};

class Journal {
public:
    // Opens or creates the journal of the result file `output` and locks it. `identity` says what is being computed from
    // what. With `resume` the rows of an earlier run are kept; without, they are dropped. Throws UserError when another
    // program is writing the same output, when the earlier run was another one, or when the file cannot be written.
    Journal(const std::string &output, const std::string &identity, bool resume);
    ~Journal();
    Journal(const Journal &) = delete;
    Journal &operator=(const Journal &) = delete;

    [[nodiscard]] const std::string &path() const { return path_; }
    // Rows of earlier runs.
    [[nodiscard]] std::size_t rowCount() const { return offsets_.size(); }
    [[nodiscard]] JournalRow row(std::size_t index) const;
    void append(const JournalRow &row);
    // The result file is complete: the journal goes.
    void remove();

private:
    void lock();
    void readHeader(const std::string &identity, bool resume);
    void findRows();

    std::string output_;
    std::string path_;
    int file_ = -1;
    std::uint64_t begin_ = 0; // of the first row
    std::uint64_t end_ = 0;   // of the last whole record
    std::vector<std::uint64_t> offsets_;
};

} // namespace orvik
