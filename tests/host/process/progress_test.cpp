// How far a run is, as lines and as a bar: what is left follows from this run's own speed.
#include "process/progress.hpp"

#include <chrono>
#include <cmath>
#include <string>
#include <thread>

#include <gtest/gtest.h>
#include <pty.h>

#include "host/burst/scratch_directory.hpp"
#include "host/commands/program.hpp"

namespace {

using orvik::Progress;
using orvik::ProgressStyle;
using orvik::test::holds;

// What is written while `count` bursts are finished, the first of them after a while.
std::string shown(ProgressStyle style, std::size_t total, std::size_t before, std::size_t count,
                  std::chrono::milliseconds wait) {
    testing::internal::CaptureStderr();
    Progress progress(style, total, before);
    std::this_thread::sleep_for(wait);
    for (std::size_t i = 0; i < count; ++i) {
        progress.advance();
    }
    return testing::internal::GetCapturedStderr();
}

TEST(Progress, TheSpeedIsThisRuns) {
    const std::string text =
        shown(ProgressStyle::lines, 2000, 1000, 200, std::chrono::milliseconds(500));
    double rate = 0.0;
    double left = 0.0;
    ASSERT_EQ(std::sscanf(text.c_str(), "orvik: 1200 of 2000 bursts, %lf a second, %lf s left",
                          &rate, &left),
              2)
        << text;
    EXPECT_LE(rate, 400.0); // of the 200 that were done
    EXPECT_NEAR(left, 800.0 / rate, 1.0);
}

TEST(Progress, LongTimesAreHoursAndMinutes) {
    const std::string text =
        shown(ProgressStyle::bar, 100000, 0, 1, std::chrono::milliseconds(200));
    int hours = 0;
    int minutes = 0;
    const std::size_t at = text.find("a second, ");
    ASSERT_NE(at, std::string::npos) << text;
    ASSERT_EQ(std::sscanf(text.c_str() + at, "a second, %d h %d min left", &hours, &minutes), 2)
        << text;
    EXPECT_GE(60 * hours + minutes, 333); // 99999 bursts at five a second
    EXPECT_LT(minutes, 60);
}

TEST(Progress, ABarOnATerminalAndNothingOfItLeft) {
    const orvik::test::ScratchDirectory directory;
    const std::string sea = directory.file("sea.nc");
    ASSERT_EQ(
        orvik::test::orvik({"simulate", "-o", sea, "--bursts", "201", "--samples", "512"}).exitCode,
        0);
    int terminal = -1;
    const pid_t child = forkpty(&terminal, nullptr, nullptr, nullptr);
    if (child == 0) {
        execl(ORVIK_PROGRAM, ORVIK_PROGRAM, "process", sea.c_str(), "-o",
              directory.file("waves.nc").c_str(), nullptr);
        _exit(127);
    }
    std::string text;
    char piece[4096];
    for (ssize_t count = 0; (count = read(terminal, piece, sizeof piece)) > 0;) {
        text.append(piece, static_cast<std::size_t>(count));
    }
    close(terminal);
    int status = 0;
    waitpid(child, &status, 0);
    EXPECT_EQ(status, 0) << text;
    EXPECT_TRUE(holds(text, "\r[##############################] 201 of 201 bursts")) << text;
    const std::size_t cleared = text.rfind("\r\x1b[K");
    ASSERT_NE(cleared, std::string::npos);
    EXPECT_FALSE(holds(text.substr(cleared), "bursts, "));
}

} // namespace
