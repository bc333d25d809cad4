// Cuts rows that follow one another in time into bursts: at pauses, or by length.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace orvik {

// Rows of a file that make a burst. Some rows may be lost between those that are there.
struct Stretch {
    struct Loss {
        std::size_t row = 0; // counted from the stretch's first: samples were lost before it
        std::size_t samples = 0;
    };

    std::size_t firstRow = 0;
    std::size_t rows = 0;
    double startTime = 0.0; // [s] of the first row
    std::vector<Loss> losses;

    [[nodiscard]] std::size_t samples() const;
};

// The step between rows, as their first times tell it.
struct TimeStep {
    double seconds = 0.0;
    double tolerance = 0.0; // [s] times jitter, or are told in few digits

    // Nothing when fewer than two times ascend.
    static std::optional<TimeStep> of(const std::vector<double> &times);
    [[nodiscard]] double rate() const; // [Hz], a whole number where it is close to one
};

class StretchCutter {
public:
    // Without a time step all rows follow one another. `name` is what messages name.
    StretchCutter(std::string name, std::optional<TimeStep> step,
                  std::optional<std::size_t> length);

    // The time of the next row; a new burst may begin with it in any case.
    void add(double time, bool begins = false);
    // How many stretches have begun: it grows with each row that is the first of one.
    [[nodiscard]] std::size_t begun() const { return begun_; }
    // Throws UserError when rows follow one another for longer than a burst can be and no length was given.
    std::vector<Stretch> finish();
    // Rows that were left out because they fill no burst of the length.
    [[nodiscard]] std::size_t leftOut() const { return leftOut_; }

private:
    void close();

    std::string name_;
    std::optional<TimeStep> step_;
    std::optional<std::size_t> length_;
    std::vector<Stretch> done_;
    Stretch current_;
    std::size_t begun_ = 0;
    std::size_t row_ = 0;
    double last_ = 0.0;
    std::size_t leftOut_ = 0;
};

// Series of the rows that are there, with NaN where rows were lost; `width` values a row.
std::vector<float> withLosses(const Stretch &stretch, std::vector<float> series, std::size_t width);

// 0 where rows were lost; empty when none were.
std::vector<std::uint8_t> validOf(const Stretch &stretch);

} // namespace orvik
