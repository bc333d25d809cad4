#include "burst/csv_table.hpp"

#include <algorithm>
#include <charconv>
#include <limits>

#include <csv.h>
#include <fmt/format.h>

#include "lower_case.hpp"
#include "user_error.hpp"

namespace orvik {

namespace {

std::string trimmed(const std::string &text) {
    const auto first = text.find_first_not_of(" \t\r");
    if (first == std::string::npos) {
        return "";
    }
    return text.substr(first, text.find_last_not_of(" \t\r") - first + 1);
}

// The fields of one line.
class LineParser {
public:
    explicit LineParser(char delimiter) {
        csv_init(&parser_, CSV_STRICT | CSV_STRICT_FINI);
        csv_set_delim(&parser_, static_cast<unsigned char>(delimiter));
    }
    ~LineParser() { csv_free(&parser_); }
    LineParser(const LineParser &) = delete;
    LineParser &operator=(const LineParser &) = delete;

    // False for a line that is not CSV: a quote that does not end.
    bool parse(const std::string &line, std::vector<std::string> &fields) {
        fields.clear();
        const auto take = [](void *text, std::size_t length, void *target) {
            static_cast<std::vector<std::string> *>(target)->emplace_back(
                text == nullptr ? "" : static_cast<const char *>(text), length);
        };
        return csv_parse(&parser_, line.data(), line.size(), take, nullptr, &fields) ==
                   line.size() &&
               csv_fini(&parser_, take, nullptr, &fields) == 0;
    }

private:
    csv_parser parser_{};
};

bool isComment(const std::string &line) {
    const std::string text = trimmed(line);
    return text.empty() || text.front() == '#';
}

// The sign that stands between names: the one that the header has most of.
char delimiterOf(const std::string &header) {
    char best = ',';
    for (const char candidate : {';', '\t'}) {
        if (std::count(header.begin(), header.end(), candidate) >
            std::count(header.begin(), header.end(), best)) {
            best = candidate;
        }
    }
    return best;
}

// "Velocity east (m/s)" is velocity_east in m/s.
CsvColumn columnOf(const std::string &title) {
    CsvColumn column;
    std::string name = title;
    const auto open = title.find_first_of("[(");
    if (open != std::string::npos) {
        const auto close = title.find_last_of("])");
        name = title.substr(0, open);
        if (close != std::string::npos && close > open) {
            column.unit = trimmed(title.substr(open + 1, close - open - 1));
        }
    }
    column.name = lowerCase(trimmed(name));
    std::replace(column.name.begin(), column.name.end(), ' ', '_');
    return column;
}

} // namespace

CsvTable::CsvTable(const std::string &path) : path_(path) {
    std::ifstream file(path, std::ios::binary);
    if (!file) {
        throw UserError("cannot open " + path + ": does it exist, and may you read it?");
    }
    std::string line;
    while (std::getline(file, line)) {
        ++firstRow_.line;
        if (firstRow_.line == 1 && line.rfind("\xEF\xBB\xBF", 0) == 0) {
            line.erase(0, 3); // a byte order mark
        }
        if (line.find('\0') != std::string::npos) {
            throw UserError(path + " is neither a netCDF file nor text");
        }
        if (!isComment(line)) {
            break;
        }
    }
    std::vector<std::string> titles;
    delimiter_ = delimiterOf(line);
    if (!file || isComment(line) || !LineParser(delimiter_).parse(line, titles)) {
        throw UserError(path + " has no header line and rows");
    }
    for (const std::string &title : titles) {
        columns_.push_back(columnOf(title));
    }
    firstRow_.offset = file.tellg();
    ++firstRow_.line;
}

void CsvTable::forRows(const Place &place, const std::function<bool(const Row &)> &use) const {
    std::ifstream file(path_, std::ios::binary);
    if (!file.seekg(place.offset)) {
        throw UserError("cannot open " + path_ + " again: was it moved or deleted meanwhile?");
    }
    LineParser parser(delimiter_);
    std::string line;
    Row row;
    row.place = place;
    while (std::getline(file, line)) {
        const auto bytes = static_cast<std::streamoff>(line.size() + 1);
        if (!isComment(line)) {
            if (!parser.parse(line, row.fields)) {
                throw UserError(
                    fmt::format("{} line {}: a quote has no end", path_, row.place.line));
            }
            if (row.fields.size() != columns_.size()) {
                throw UserError(fmt::format("{} line {} has {} fields, the header has {}", path_,
                                            row.place.line, row.fields.size(), columns_.size()));
            }
            if (!use(row)) {
                return;
            }
        }
        row.place.offset += bytes;
        ++row.place.line;
    }
    if (file.bad()) {
        throw UserError("cannot read " + path_ + " to its end");
    }
}

double CsvTable::number(const Row &row, std::size_t column) const {
    const std::string text = trimmed(row.fields.at(column));
    const std::string word = lowerCase(text);
    if (word.empty() || word == "nan" || word == "na" || word == "null" || word == "-") {
        return std::numeric_limits<double>::quiet_NaN();
    }
    double value = 0.0;
    const char *begin = text.data() + (text.front() == '+' ? 1 : 0);
    const auto [end, error] = std::from_chars(begin, text.data() + text.size(), value);
    if (error != std::errc{} || end != text.data() + text.size()) {
        throw UserError(fmt::format("{} line {}: \"{}\" in column {} is not a number{}", path_,
                                    row.place.line, text, columns_[column].name,
                                    text.find(',') == std::string::npos
                                        ? ""
                                        : ": numbers are written with a decimal point"));
    }
    return value;
}

} // namespace orvik
