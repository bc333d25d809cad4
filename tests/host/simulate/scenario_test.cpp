// Deployments: the default storm, interpolation in time, scenario files and what they refuse.
#include "simulate/scenario.hpp"

#include <gtest/gtest.h>
#include <unistd.h>

#include <cmath>
#include <filesystem>
#include <fstream>
#include <string>

#include "simulate/scenario_file.hpp"
#include "simulate/scenario_settings.hpp"
#include "user_error.hpp"

namespace orvik {
namespace {

// A file that is gone when the test ends.
class TemporaryFile {
public:
    explicit TemporaryFile(const std::string &text) { std::ofstream(path_) << text; }
    ~TemporaryFile() { std::filesystem::remove(path_); }
    TemporaryFile(const TemporaryFile &) = delete;
    TemporaryFile &operator=(const TemporaryFile &) = delete;
    [[nodiscard]] const std::string &path() const { return path_; }

private:
    std::string path_ = (std::filesystem::temp_directory_path() /
                         ("orvik_scenario_" + std::to_string(::getpid()) + ".toml"))
                            .string();
};

Scenario scenarioOf(const std::string &text) {
    return readScenarioFile(TemporaryFile(text).path());
}

template <typename Action> std::string errorOf(Action action) {
    try {
        action();
    } catch (const UserError &error) {
        return error.what();
    }
    return "(no error)";
}

TEST(Storm, PassesWithinThreeDays) {
    const Scenario storm = stormScenario();
    EXPECT_NO_THROW(checkScenario(storm));
    ASSERT_EQ(storm.bursts, 72U);
    double highest = 0.0;
    double deepest = 0.0;
    double shallowest = 100.0;
    for (std::size_t i = 0; i < storm.bursts; ++i) {
        const SeaState sea = seaOfBurst(storm, i);
        highest = std::max(highest, sea.systems.front().significantHeight);
        deepest = std::max(deepest, sea.waterDepth);
        shallowest = std::min(shallowest, sea.waterDepth);
        EXPECT_LE(sea.currentSpeed, 0.15 + 1e-12);
        EXPECT_EQ(sea.heading, 137.0);
    }
    EXPECT_NEAR(highest, 4.1, 0.05);
    EXPECT_NEAR(deepest, 19.0, 0.05);
    EXPECT_NEAR(shallowest, 17.0, 0.05);
    EXPECT_NEAR(seaOfBurst(storm, 0).systems.front().direction, 200.0, 1e-9);
    EXPECT_NEAR(seaOfBurst(storm, 71).systems.front().direction, 290.0, 1e-9);
}

TEST(Deployment, InterpolatesTheShortWayRound) {
    Scenario scenario = plainScenario();
    SeaState early = scenario.states.front().sea;
    early.systems.front() = {WaveSystem::Shape::jonswap, 1.0, 6.0, 3.0, 350.0, 20.0};
    early.heading = 10.0;
    early.currentSpeed = 0.2;
    early.currentDirection = 0.0;
    SeaState late = early;
    late.systems.front() = {WaveSystem::Shape::jonswap, 3.0, 10.0, 1.0, 30.0, 30.0};
    late.heading = 330.0;
    late.currentDirection = 90.0;
    late.waterDepth = 20.0;
    scenario.states = {{2.0, early}, {6.0, late}};
    scenario.bursts = 10;
    const SeaState half = seaOfBurst(scenario, 4);
    EXPECT_DOUBLE_EQ(half.systems.front().significantHeight, 2.0);
    EXPECT_DOUBLE_EQ(half.systems.front().peakPeriod, 8.0);
    EXPECT_DOUBLE_EQ(half.systems.front().peakEnhancement, 2.0);
    EXPECT_DOUBLE_EQ(half.systems.front().spread, 25.0);
    EXPECT_NEAR(half.systems.front().direction, 10.0, 1e-9);
    EXPECT_NEAR(half.heading, 350.0, 1e-9);
    EXPECT_DOUBLE_EQ(half.waterDepth, 19.0);
    EXPECT_NEAR(half.currentSpeed, 0.1 * std::sqrt(2.0), 1e-12);
    EXPECT_NEAR(half.currentDirection, 45.0, 1e-9);
    EXPECT_EQ(seaOfBurst(scenario, 1).systems.front().significantHeight, 1.0)
        << "before the first state";
    EXPECT_EQ(seaOfBurst(scenario, 2).systems.front().significantHeight, 1.0)
        << "at the first state";
    EXPECT_EQ(seaOfBurst(scenario, 6).systems.front().significantHeight, 3.0)
        << "at the last state";
    EXPECT_EQ(seaOfBurst(scenario, 9).systems.front().significantHeight, 3.0)
        << "after the last state";
}

TEST(Deployment, EveryBurstIsAnotherPieceOfTheSameSea) {
    const Scenario scenario = plainScenario();
    const SimulatedBurst first = simulateScenarioBurst(scenario, 0);
    const SimulatedBurst second = simulateScenarioBurst(scenario, 1);
    EXPECT_EQ(first.truth.significantHeight, second.truth.significantHeight);
    EXPECT_NE(first.burst.pressure, second.burst.pressure);
    EXPECT_EQ(second.burst.startTime - first.burst.startTime, scenario.interval);
}

TEST(Deployment, TheTideRisesAndRunsFastestHalfWay) {
    Scenario scenario = plainScenario();
    scenario.tideAmplitude = 1.5;
    scenario.tidePeriod = 12.0;
    scenario.tideCurrent = 0.5;
    scenario.tideCurrentDirection = 40.0;
    scenario.bursts = 12;
    EXPECT_NEAR(seaOfBurst(scenario, 0).waterDepth, 18.0, 1e-12);
    EXPECT_NEAR(seaOfBurst(scenario, 0).currentSpeed, 0.5, 1e-12);
    EXPECT_NEAR(seaOfBurst(scenario, 0).currentDirection, 40.0, 1e-9);
    EXPECT_NEAR(seaOfBurst(scenario, 3).waterDepth, 19.5, 1e-12);
    EXPECT_NEAR(seaOfBurst(scenario, 3).currentSpeed, 0.0, 1e-12);
    EXPECT_NEAR(seaOfBurst(scenario, 6).currentDirection, 220.0, 1e-9);
    EXPECT_NEAR(seaOfBurst(scenario, 9).waterDepth, 16.5, 1e-12);
}

TEST(Deployment, BurstsDoNotDependOnEachOther) {
    Scenario scenario = stormScenario();
    scenario.samples = 256;
    const SimulatedBurst alone = simulateScenarioBurst(scenario, 7);
    const SimulatedBurst before = simulateScenarioBurst(scenario, 6);
    const SimulatedBurst after = simulateScenarioBurst(scenario, 7);
    EXPECT_EQ(alone.burst.pressure, after.burst.pressure);
    EXPECT_NE(alone.burst.pressure, before.burst.pressure);
    EXPECT_EQ(alone.burst.startTime - before.burst.startTime, 3600.0);
    scenario.seed = 2;
    EXPECT_NE(simulateScenarioBurst(scenario, 7).burst.pressure, alone.burst.pressure);
}

TEST(ScenarioFile, SettingsAndTimeTable) {
    const Scenario scenario = scenarioOf(R"(
start = 2024-02-29T06:30:00Z
bursts = 5
interval = 1800
samples = 1024
velocity_system = "enu"
beam_azimuth = [10, 130.0, 250]
noise_velocity = 0.02
depth = 25
current = [0.3, 90]
direction = 300
[[system]]
height = 0.5
period = 14
[[state]]
hours = 0
height = 1.0
[[state]]
hours = 10
height = 2.0
shape = "pierson-moskowitz"
[[state.system]]
height = 0.7
period = 12
direction = 180
)");
    EXPECT_EQ(scenario.startTime, 1709188200.0);
    EXPECT_EQ(scenario.bursts, 5U);
    EXPECT_EQ(scenario.interval, 1800.0);
    EXPECT_EQ(scenario.samples, 1024U);
    EXPECT_EQ(scenario.velocitySystem, VelocitySystem::enu);
    EXPECT_EQ(scenario.instrument.beamAzimuth, (std::vector<double>{10.0, 130.0, 250.0}));
    EXPECT_EQ(scenario.faults.velocityNoise, 0.02);
    ASSERT_EQ(scenario.states.size(), 2U);
    const SeaState &first = scenario.states[0].sea;
    const SeaState &second = scenario.states[1].sea;
    EXPECT_EQ(first.waterDepth, 25.0);
    EXPECT_EQ(first.currentSpeed, 0.3);
    EXPECT_EQ(second.currentDirection, 90.0);
    ASSERT_EQ(first.systems.size(), 2U);
    ASSERT_EQ(second.systems.size(), 2U);
    EXPECT_EQ(first.systems[0].significantHeight, 1.0);
    EXPECT_EQ(first.systems[0].direction, 300.0);
    EXPECT_EQ(first.systems[1].peakPeriod, 14.0);
    EXPECT_EQ(second.systems[0].significantHeight, 2.0);
    EXPECT_EQ(second.systems[0].shape, WaveSystem::Shape::piersonMoskowitz);
    EXPECT_EQ(second.systems[1].direction, 180.0);
}

TEST(ScenarioFile, EmptyIsOnePlainBurst) {
    const Scenario scenario = scenarioOf("");
    EXPECT_EQ(scenario.bursts, 1U);
    EXPECT_EQ(scenario.tideAmplitude, 0.0);
    EXPECT_EQ(scenario.states.front().sea.systems.front().significantHeight, 2.0);
}

struct BadFileCase {
    const char *text;
    const char *message; // part of it
};

TEST(ScenarioFile, WhatIsWrongIsNamed) {
    const BadFileCase cases[] = {
        {"hieght = 2", "line 1: hieght"},
        {"bursts = 0", "bursts: 0 is not allowed"},
        {"bursts = 2.5", "bursts: 2.5 is not allowed; give a whole number"},
        {"\nheight = \"tall\"", "line 2: height: must be a number"},
        {"height = nan", "height: nan is not allowed"},
        {"height = -0.1", "height: -0.1 is not allowed; give a number from 0 to 30"},
        {"spread = 81", "spread: 81 is not allowed"},
        {"rate = 1.5", "rate 1.5 Hz"},
        {"rate = 0.75", "acoustic_frequency to 400000"},
        {"instrument_type = 2", "instrument_type 2"},
        {"interval = 900\nbursts = 2", "interval 900 s is shorter"},
        {"beam_azimuth = [0, 120]", "beam_azimuth: give three or four angles"},
        {"beam_azimuth = 0", "beam_azimuth: must be a list"},
        {"beam_azimuth = [0, 0, 120]", "one plane"},
        {"current = [0.2]", "current: give a speed"},
        {"current = [-0.2, 10]", "current: give a speed"},
        {"start = \"yesterday\"", "start: 'yesterday' is not a time"},
        {"start = 2024-02-29T06:30:00+01:00", "is not a time in UTC"},
        {"velocity_system = \"polar\"", "choose beam, xyz or enu"},
        {"shape = \"flat\"", "choose jonswap or pierson-moskowitz"},
        {"depth = 3", "not in the water"},
        {"depth = 0.5", "out of the water"},
        {"height = 12", "breaks in water"},
        {"tide_amplitude = 12", "not in the water"},
        {"state = 3", "[[state]]"},
        {"[[state]]\nheight = 1", "hours"},
        {"[[state]]\nhours = 0\nbursts = 3", "bursts: is no setting"},
        {"[[state]]\nhours = 4\n[[state]]\nhours = 4", "state 2: its hours"},
        {"[[state]]\nhours = 0\n[[state]]\nhours = 4\n[[state.system]]\nheight = 1",
         "give every state the same number"},
        {"[[system]]\nhs = 1", "hs: is no setting"},
        {"height = ", "line 1"},
    };
    for (const BadFileCase &row : cases) {
        // The tide case has to reach low water.
        const std::string text = std::string(row.text).find("tide") == 0
                                     ? std::string("bursts = 13\n") + row.text
                                     : row.text;
        const std::string message = errorOf([&] { scenarioOf(text); });
        EXPECT_NE(message.find(row.message), std::string::npos)
            << row.text << "\ngave: " << message;
        EXPECT_NE(message.find(".toml"), std::string::npos) << "names the file: " << message;
    }
    EXPECT_NE(errorOf([] {
                  readScenarioFile("/nonexistent/sea.toml");
              }).find("/nonexistent/sea.toml: cannot be read"),
              std::string::npos);
    EXPECT_NE(errorOf([] { readScenarioFile("/"); }).find("/: cannot be read"), std::string::npos);
}

TEST(ScenarioFile, ExamplesAreSound) {
    int files = 0;
    for (const auto &entry : std::filesystem::directory_iterator(ORVIK_SCENARIO_DIR)) {
        Scenario scenario = readScenarioFile(entry.path().string());
        scenario.samples = 256;
        EXPECT_GT(simulateScenarioBurst(scenario, scenario.bursts - 1).truth.significantHeight, 0.5)
            << entry.path();
        ++files;
    }
    EXPECT_GE(files, 2);
}

struct StartCase {
    const char *text;
    double seconds;
};

TEST(Settings, Start) {
    const StartCase cases[] = {{"1970-01-01", 0.0},
                               {"2000-03-01T00:00:00Z", 951868800.0},
                               {"2000-03-01 12:30", 951913800.0},
                               {"2024-02-29T23:59:59Z", 1709251199.0},
                               {"2024-02-29T23:59:59+00:00", 1709251199.0}};
    for (const StartCase &row : cases) {
        Scenario scenario = plainScenario();
        storeStart("--start", row.text, scenario);
        EXPECT_EQ(scenario.startTime, row.seconds) << row.text;
    }
    for (const char *text : {"", "2023-02-29", "2024-13-01", "2024-01-01T24:00", "2024-01-01T10",
                             "2024-01-01x10:00", "2024-01-01T10:60", "2024-01-01T10:00:00+02:00",
                             "2024-01-01T10:00:", "tomorrow", "2024-01-01T10:00:00ZZ"}) {
        Scenario scenario = plainScenario();
        EXPECT_THROW(storeStart("--start", text, scenario), UserError) << text;
    }
}

TEST(Settings, SystemOfText) {
    const WaveSystem system =
        systemOfText("--system", "hs=1,tp=12,dir=200,spread=15,gamma=2,shape=jonswap");
    EXPECT_EQ(system.significantHeight, 1.0);
    EXPECT_EQ(system.peakPeriod, 12.0);
    EXPECT_EQ(system.direction, 200.0);
    EXPECT_EQ(system.spread, 15.0);
    EXPECT_EQ(system.peakEnhancement, 2.0);
    EXPECT_EQ(systemOfText("--system", "height=0.5,period=9").significantHeight, 0.5);
    for (const char *text :
         {"hs", "hs=", "hs=one", "hs=1m", "hs=-1", "tp=0", "what=3", "hs=1,,tp=3", "shape=round"}) {
        const std::string message = errorOf([&] { systemOfText("--system", text); });
        EXPECT_EQ(message.find("--system"), 0U) << text << " gave: " << message;
    }
}

} // namespace
} // namespace orvik
