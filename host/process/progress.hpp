// How far a long run is: a bar on a terminal, a line now and then elsewhere, nothing when quiet.
#pragma once

#include <chrono>
#include <cstddef>

namespace orvik {

enum class ProgressStyle { none, lines, bar };

// The bar for a terminal on standard error, lines elsewhere.
ProgressStyle usualProgress(bool quiet);

class Progress {
public:
    // `done` of `total` bursts were there before this run began.
    Progress(ProgressStyle style, std::size_t total, std::size_t done);
    ~Progress();
    Progress(const Progress &) = delete;
    Progress &operator=(const Progress &) = delete;

    void advance();
    // Takes the bar off the terminal, so that other lines can be written; the next advance() brings it back.
    void clear();

private:
    void draw();

    using Clock = std::chrono::steady_clock;

    ProgressStyle style_;
    std::size_t total_;
    std::size_t before_;
    std::size_t done_;
    std::size_t nextLine_ = 0;
    bool drawn_ = false;
    Clock::time_point start_ = Clock::now();
    Clock::time_point lastDrawn_{};
};

} // namespace orvik
