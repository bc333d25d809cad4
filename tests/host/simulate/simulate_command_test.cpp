// The command line as a user types it, and the file that it leaves.
#include "commands/simulate_command.hpp"

#include <gtest/gtest.h>
#include <stdlib.h>

#include <CLI/CLI.hpp>
#include <cmath>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>

#include "burst/burst_file.hpp"
#include "user_error.hpp"

namespace orvik {
namespace {

class SimulateCommand : public ::testing::Test {
protected:
    void SetUp() override {
        std::string pattern =
            (std::filesystem::temp_directory_path() / "orvik_simulate_XXXXXX").string();
        ASSERT_NE(::mkdtemp(pattern.data()), nullptr);
        directory_ = pattern;
    }
    void TearDown() override { std::filesystem::remove_all(directory_); }

    [[nodiscard]] std::string path(const std::string &name) const {
        return (directory_ / name).string();
    }

    static void run(const std::string &output, const std::string &options) {
        CLI::App app;
        addSimulateCommand(app);
        app.parse("simulate -o " + output + " " + options, false);
    }

    [[nodiscard]] bool nothingLeft() const { return std::filesystem::is_empty(directory_); }

    std::filesystem::path directory_;
};

std::string bytes(const std::string &path) {
    std::ifstream file(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
}

TEST_F(SimulateCommand, WithoutOptionsItIsTheStorm) {
    run(path("storm.nc"), "--samples 128");
    const BurstFileReader reader(path("storm.nc"), {});
    ASSERT_EQ(reader.burstCount(), 72U);
    EXPECT_EQ(reader.instrument().samplingRate, 2.0);
    EXPECT_EQ(reader.instrument().trackSamplingRate, 4.0);
    const Burst last = reader.readBurst(71);
    EXPECT_EQ(last.startTime, 1730764800.0 + 71.0 * 3600.0);
    EXPECT_EQ(last.velocitySystem, VelocitySystem::beam);
    EXPECT_EQ(last.surfaceTrack.size(), 256U);
    EXPECT_NEAR(last.heading, 137.0, 1e-9);
    const auto truth = reader.readTruth(71);
    ASSERT_TRUE(truth.has_value());
    EXPECT_NEAR(truth->significantHeight, 1.2, 1e-3);
    EXPECT_NEAR(truth->peakDirection, 290.0, 1e-6);
}

TEST_F(SimulateCommand, TheScenarioIsNotOverwritten) {
    const std::string scenario = path("sea.toml");
    std::ofstream(scenario) << "bursts = 1\n";
    EXPECT_THROW(run(path("./sea.toml"), "--scenario " + scenario), UsageError);
    EXPECT_EQ(bytes(scenario), "bursts = 1\n");
}

TEST_F(SimulateCommand, OptionsHoldForTheWholeDeployment) {
    run(path("sea.nc"),
        "--samples 128 --bursts 3 --interval 7200 --start 2024-01-01T00:00:00Z --height 2 --period "
        "7 "
        "--direction 45 --spread 15 --depth 30 --heading 200 --velocity-system enu --cell-range 5 "
        "--beam-azimuth 10,130,250 --rate 1 --current 0.5,90 --tide-amplitude 0 --declination 3");
    const BurstFileReader reader(path("sea.nc"), {});
    ASSERT_EQ(reader.burstCount(), 3U);
    EXPECT_EQ(reader.instrument().samplingRate, 1.0);
    EXPECT_EQ(reader.instrument().cellRange, 5.0);
    EXPECT_EQ(reader.instrument().declination, 3.0);
    EXPECT_EQ(reader.instrument().beamAzimuth, (std::vector<double>{10.0, 130.0, 250.0}));
    for (std::size_t i = 0; i < 3; ++i) {
        const Burst burst = reader.readBurst(i);
        const auto truth = reader.readTruth(i);
        ASSERT_TRUE(truth.has_value());
        EXPECT_EQ(burst.startTime, 1704067200.0 + 7200.0 * static_cast<double>(i));
        EXPECT_EQ(burst.velocitySystem, VelocitySystem::enu);
        EXPECT_NEAR(std::remainder(burst.heading - 200.0, 360.0), 0.0, 1e-9);
        EXPECT_NEAR(truth->significantHeight, 2.0, 1e-3);
        EXPECT_NEAR(truth->peakPeriod, 7.0, 1e-6);
        EXPECT_NEAR(truth->peakDirection, 45.0, 1e-6);
        EXPECT_NEAR(truth->peakSpread, 15.0, 1e-6);
        EXPECT_NEAR(truth->currentSpeed, 0.5, 1e-9) << "the storm's tidal stream is gone";
        EXPECT_NEAR(truth->currentDirection, 90.0, 1e-9);
        EXPECT_EQ(truth->waterDepth, 30.0);
    }
}

TEST_F(SimulateCommand, FurtherSystemsAndScenarioFiles) {
    run(path("two.nc"),
        "--samples 128 --bursts 1 --height 1 --system hs=1,tp=12 --system hs=2,tp=14");
    EXPECT_NEAR(BurstFileReader(path("two.nc"), {}).readTruth(0)->significantHeight, std::sqrt(6.0),
                1e-3);
    run(path("file.nc"), "--samples 128 --bursts 2 --height 1.2 --scenario " ORVIK_SCENARIO_DIR
                         "/opposing_current.toml");
    const auto truth = BurstFileReader(path("file.nc"), {}).readTruth(1);
    EXPECT_NEAR(truth->significantHeight, 1.2, 0.01)
        << "but for the short waves that the stream stops";
    EXPECT_NEAR(truth->currentSpeed, 0.8, 1e-9);
    EXPECT_NEAR(truth->peakPeriod, 7.5, 1e-6);
}

TEST_F(SimulateCommand, SameSeedSameBytes) {
    const std::string faults =
        "--samples 128 --bursts 2 --spikes 0.01 --missing 0.02 --track-drop 0.02 --seed ";
    run(path("a.nc"), faults + "7");
    run(path("b.nc"), faults + "7");
    run(path("c.nc"), faults + "8");
    EXPECT_EQ(bytes(path("a.nc")), bytes(path("b.nc")));
    EXPECT_NE(bytes(path("a.nc")), bytes(path("c.nc")));
}

struct BadOption {
    const char *options;
    const char *message;
};

TEST_F(SimulateCommand, BadValuesAreNamedAndLeaveNoFile) {
    const BadOption cases[] = {
        {"--height -1", "--height: -1 is not allowed; give a number from 0 to 30"},
        {"--bursts 0", "--bursts: 0 is not allowed"},
        {"--samples 16385", "--samples: 16385 is not allowed"},
        {"--samples 100.5", "give a whole number"},
        {"--spikes 2", "--spikes: 2 is not allowed"},
        {"--cell-range 30", "cell_range"},
        {"--velocity-system round", "--velocity-system: 'round' is unknown"},
        {"--shape square", "--shape: 'square' is unknown"},
        {"--beam-azimuth 0,120", "--beam-azimuth: give three or four angles"},
        {"--current 1", "--current: give a speed"},
        {"--system hs=x", "--system hs: 'x' is not a number"},
        {"--start noon", "--start: 'noon' is not a time"},
        {"--rate 0.75", "acoustic_frequency"},
        {"--interval 60", "interval 60 s is shorter than a burst"},
    };
    for (const BadOption &row : cases) {
        try {
            run(path("bad.nc"), row.options);
            ADD_FAILURE() << row.options << " was accepted";
        } catch (const UsageError &error) {
            EXPECT_NE(std::string(error.what()).find(row.message), std::string::npos)
                << row.options << " gave: " << error.what();
        }
        EXPECT_TRUE(nothingLeft()) << row.options;
    }
    EXPECT_THROW(run(path("bad.nc"), "--hieght 2"), CLI::ParseError);
    EXPECT_THROW(run(path("bad.nc"), "--height tall"), CLI::ParseError);
    EXPECT_THROW(run(path("bad.nc"), "--scenario /nonexistent.toml"), UserError);
    EXPECT_THROW(run("/nonexistent/directory/bad.nc", "--bursts 1 --samples 128"), UserError);
    EXPECT_TRUE(nothingLeft());
}

} // namespace
} // namespace orvik
