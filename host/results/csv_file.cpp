#include "results/csv_file.hpp"

#include <algorithm>
#include <cmath>

#include <fmt/format.h>

#include "results/burst_table.hpp"

namespace orvik {

namespace {

// As short as a single-precision number can be written without loss.
std::string numberText(double value) {
    return std::isfinite(value) ? fmt::format("{}", static_cast<float>(value)) : "";
}

std::string quoted(const std::string &text) {
    std::string result(1, '"');
    for (const char character : text) {
        result.append(character == '"' ? 2 : 1, character);
    }
    result += '"';
    return result;
}

} // namespace

CsvFile::CsvFile(const std::string &path, const ResultReader &results)
    : results_(results), file_(path) {
    std::string head = "time [UTC]";
    for (const ResultReader::Column &column : results.columns()) {
        head += "," + column.variable.name;
        if (!column.units.empty() && column.units != "1") {
            head += fmt::format(" [{}]", column.units);
        }
    }
    file_.write(head + ",quality,rejection_reason,processing_notes\n");
}

void CsvFile::append(const StoredBurst &burst) {
    std::string line = isoTime(burst.startTime);
    for (const ResultReader::Column &column : results_.columns()) {
        line += ',';
        line += numberText(burst.value(column.variable.name));
    }
    std::string words = flagsText(burst.qualityFlags);
    std::replace(words.begin(), words.end(), ',', ' ');
    file_.write(fmt::format("{},{},{},{}\n", line, words, quoted(burst.rejectionReason),
                            quoted(burst.processingNotes)));
}

} // namespace orvik
