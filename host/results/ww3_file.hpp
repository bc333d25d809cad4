// Directional spectra as WAVEWATCH III writes and reads them at points.
#pragma once

#include <string>

#include "netcdf/nc_file.hpp"
#include "results/directional_grid.hpp"
#include "results/result_sink.hpp"

namespace orvik {

class Ww3File : public ResultSink {
public:
    Ww3File(const std::string &path, const ResultReader &results);
    void append(const StoredBurst &burst) override;
    void commit() override { file_.commit(); }

private:
    void define();
    void writeAxes();

    const ResultReader &results_;
    DirectionAxis axis_;
    NcWriter file_;
    std::size_t written_ = 0;
    int time_ = -1;
    int station_ = -1;
    int name_ = -1;
    int frequency_ = -1;
    int frequencyBelow_ = -1;
    int frequencyAbove_ = -1;
    int direction_ = -1;
    int spectrum_ = -1;
    int longitude_ = -1;
    int latitude_ = -1;
    int depth_ = -1;
    int wind_ = -1;
    int windDirection_ = -1;
    int current_ = -1;
    int currentDirection_ = -1;
};

} // namespace orvik
