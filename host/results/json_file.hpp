// A result file as JSON: attributes, axes, and for each burst its parameters and spectra.
#pragma once

#include <string>

#include "files/text_file.hpp"
#include "results/result_sink.hpp"

namespace orvik {

// Without efth, which a1, b1, a2, b2 stand for. Numbers that are missing are null.
class JsonFile : public ResultSink {
public:
    JsonFile(const std::string &path, const ResultReader &results);
    void append(const StoredBurst &burst) override;
    void commit() override;

private:
    const ResultReader &results_;
    TextFile file_;
    bool first_ = true;
};

} // namespace orvik
