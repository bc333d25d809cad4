#include "process/progress.hpp"

#include <cmath>
#include <cstdio>
#include <string>

#include <fmt/format.h>
#include <sys/ioctl.h>
#include <unistd.h>

namespace orvik {

namespace {

constexpr std::size_t kBarWidth = 30;
constexpr std::size_t kLinesInARun = 10;
constexpr std::chrono::milliseconds kBetweenDrawings{100};

std::string clockText(double seconds) {
    const long whole = std::lround(seconds);
    if (whole >= 3600) {
        return fmt::format("{} h {:02} min", whole / 3600, whole / 60 % 60);
    }
    return whole >= 60 ? fmt::format("{} min {:02} s", whole / 60, whole % 60)
                       : fmt::format("{} s", whole);
}

std::size_t terminalWidth() {
    constexpr std::size_t kUsual = 80;
    winsize size{};
    const bool told = ioctl(STDERR_FILENO, TIOCGWINSZ, &size) == 0 && size.ws_col > 1;
    return told ? size.ws_col : kUsual;
}

} // namespace

ProgressStyle usualProgress(bool quiet) {
    if (quiet) {
        return ProgressStyle::none;
    }
    return isatty(STDERR_FILENO) != 0 ? ProgressStyle::bar : ProgressStyle::lines;
}

Progress::Progress(ProgressStyle style, std::size_t total, std::size_t done)
    : style_(style), total_(total), before_(done), done_(done) {
    while (nextLine_ <= done_) {
        nextLine_ += std::max<std::size_t>(total_ / kLinesInARun, 1);
    }
}

Progress::~Progress() { clear(); }

void Progress::clear() {
    if (drawn_) {
        fmt::print(stderr, "\r\x1b[K");
        drawn_ = false;
    }
}

void Progress::advance() {
    ++done_;
    if (style_ == ProgressStyle::bar &&
        (Clock::now() - lastDrawn_ >= kBetweenDrawings || done_ == total_)) {
        draw();
    } else if (style_ == ProgressStyle::lines && done_ >= nextLine_) {
        draw();
        nextLine_ += std::max<std::size_t>(total_ / kLinesInARun, 1);
    }
}

void Progress::draw() {
    lastDrawn_ = Clock::now();
    const double seconds = std::chrono::duration<double>(lastDrawn_ - start_).count();
    const double rate = seconds > 0.0 ? static_cast<double>(done_ - before_) / seconds : 0.0;
    const std::string left = rate > 0.0
                                 ? clockText(static_cast<double>(total_ - done_) / rate) + " left"
                                 : std::string("...");
    const std::string counts =
        fmt::format("{} of {} bursts, {:.0f} a second, {}", done_, total_, rate, left);
    if (style_ == ProgressStyle::lines) {
        fmt::print(stderr, "orvik: {}\n", counts);
        return;
    }
    const std::size_t filled = total_ > 0 ? kBarWidth * done_ / total_ : kBarWidth;
    // A line that is broken could not be drawn over.
    const std::size_t width = terminalWidth();
    std::string line = fmt::format("[{}{}] {}", std::string(filled, '#'),
                                   std::string(kBarWidth - filled, '.'), counts);
    if (line.size() >= width) {
        line = counts.substr(0, width - 1);
    }
    fmt::print(stderr, "\r{}\x1b[K", line);
    drawn_ = true;
}

} // namespace orvik
