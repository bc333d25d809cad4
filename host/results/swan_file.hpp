// Directional spectra as the wave model SWAN reads them at its boundaries.
#pragma once

#include <string>

#include "files/text_file.hpp"
#include "results/directional_grid.hpp"
#include "results/result_sink.hpp"

namespace orvik {

class SwanFile : public ResultSink {
public:
    SwanFile(const std::string &path, const ResultReader &results);
    void append(const StoredBurst &burst) override;
    void commit() override { file_.commit(); }

private:
    const ResultReader &results_;
    DirectionAxis axis_;
    TextFile file_;
};

} // namespace orvik
