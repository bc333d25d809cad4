// CSV files: a header line of names with optional units, then rows of numbers.
#pragma once

#include <cstddef>
#include <fstream>
#include <functional>
#include <string>
#include <vector>

namespace orvik {

struct CsvColumn {
    std::string name; // in lower case, blanks as underscores
    std::string unit; // "dbar" of "pressure [dbar]"; empty: none
};

class CsvTable {
public:
    // Throws UserError, naming the file, when it has no header line and rows.
    explicit CsvTable(const std::string &path);

    [[nodiscard]] const std::string &path() const { return path_; }
    [[nodiscard]] const std::vector<CsvColumn> &columns() const { return columns_; }

    // Where a row begins.
    struct Place {
        std::streamoff offset = 0;
        std::size_t line = 0; // counted from 1
    };
    [[nodiscard]] Place firstRow() const { return firstRow_; }

    struct Row {
        Place place;
        std::vector<std::string> fields; // as many as columns
    };
    // Calls `use` with the rows from `place` on until it says false. Empty lines, and those that begin with #, are no rows.
    // Throws UserError, naming file and line, for a row that is not like the header.
    void forRows(const Place &place, const std::function<bool(const Row &)> &use) const;

    // NaN for an empty field or one of the usual words for a missing value. Throws UserError, naming file and line, for
    // anything else that is no number.
    [[nodiscard]] double number(const Row &row, std::size_t column) const;

private:
    std::string path_;
    char delimiter_ = ',';
    std::vector<CsvColumn> columns_;
    Place firstRow_;
};

} // namespace orvik
