// A line a burst: the numbers of a result file that are one a burst, for spreadsheets.
#pragma once

#include <string>

#include "files/text_file.hpp"
#include "results/result_sink.hpp"

namespace orvik {

class CsvFile : public ResultSink {
public:
    CsvFile(const std::string &path, const ResultReader &results);
    void append(const StoredBurst &burst) override;
    void commit() override { file_.commit(); }

private:
    const ResultReader &results_;
    TextFile file_;
};

} // namespace orvik
