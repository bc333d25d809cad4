// Bursts of a simulated sea, rewritten in other layouts: the wave parameters must be those of the burst file.
#include "burst/deployment.hpp"

#include <cmath>

#include <gtest/gtest.h>

#include "host/burst/layout_writers.hpp"
#include "host/burst/scratch_directory.hpp"
#include "host/commands/program.hpp"
#include "run/burst_runner.hpp"
#include "user_error.hpp"

namespace {

using namespace orvik;
using test::Deployment;

class Layouts : public testing::Test {
protected:
    test::ScratchDirectory directory;
    std::string path = directory.file("other.nc");

    [[nodiscard]] Deployment simulated(std::vector<std::string> more) const {
        const std::string file = directory.file("burst.nc");
        std::vector<std::string> arguments{"simulate", "-o",        file,   "--bursts",
                                           "2",        "--samples", "1024", "--interval",
                                           "3600",     "--seed",    "3",    "--pressure-height",
                                           "0.8"};
        arguments.insert(arguments.end(), more.begin(), more.end());
        const test::Outcome outcome = test::orvik(arguments);
        EXPECT_EQ(outcome.exitCode, 0) << outcome.errors;
        return Deployment(file);
    }

    // What else the other layouts do not tell.
    [[nodiscard]] static Overrides factsOf(const Instrument &instrument) {
        Overrides facts{{"beam_azimuth", "0,120,240"}};
        const auto text = [](double value) {
            std::ostringstream digits;
            digits.precision(17);
            digits << value;
            return digits.str();
        };
        facts["pressure_sensor_height_above_bed"] = text(instrument.pressureHeight);
        facts["beam_slant_angle"] = text(instrument.slantAngle);
        facts["cell_size"] = text(instrument.cellSize);
        if (instrument.profile) {
            facts["blanking_distance"] = text(instrument.profile->blanking);
            facts["surface_track_time_offset"] = text(instrument.profile->trackTimeOffset);
            if (std::isfinite(instrument.profile->ambiguityVelocity)) {
                facts["ambiguity_velocity"] = text(instrument.profile->ambiguityVelocity);
            }
        } else {
            facts["cell_range"] = text(instrument.cellRange);
            facts["simultaneous_sampling"] = "0";
        }
        return facts;
    }

    static void expectSame(const Deployment &truth, const BurstSource &source, int method,
                           double tolerance = 0.0) {
        ASSERT_EQ(source.burstCount(), truth.bursts.size());
        EXPECT_EQ(source.velocitySystem(), truth.system);
        ProcessingChoices choices;
        choices.method = method;
        Instrument instrument = truth.instrument;
        instrument.beamAzimuth = source.instrument().beamAzimuth;
        instrument.beamToXyz.reset();
        BurstRunner expectedRunner(instrument, choices);
        BurstRunner runner(source.instrument(), choices);
        for (std::size_t i = 0; i < truth.bursts.size(); ++i) {
            const Burst burst = source.readBurst(i);
            EXPECT_EQ(burst.startTime, truth.bursts[i].startTime);
            const BurstResult expected = expectedRunner.run(truth.bursts[i]);
            const BurstResult result = runner.run(burst);
            ASSERT_TRUE(expected.processed) << expected.reason;
            ASSERT_TRUE(result.processed) << result.reason;
            const auto near = [&](float left, float right, const char *what) {
                EXPECT_NEAR(static_cast<double>(left), static_cast<double>(right),
                            tolerance * std::abs(static_cast<double>(right)))
                    << what;
            };
            near(result.waves.significantHeight, expected.waves.significantHeight, "height");
            near(result.waves.peakPeriod, expected.waves.peakPeriod, "period");
            near(result.waves.peakDirection, expected.waves.peakDirection, "direction");
            near(result.waves.meanDirection, expected.waves.meanDirection, "mean direction");
            near(result.waves.peakSpread, expected.waves.peakSpread, "spread");
            EXPECT_EQ(result.waves.qualityFlags, expected.waves.qualityFlags);
        }
    }
};

TEST_F(Layouts, FieldsOfAPointInstrument) {
    for (const auto &[system, method] : {std::pair{"beam", 4}, std::pair{"enu", 2}}) {
        std::filesystem::remove(path);
        const Deployment truth = simulated({"--velocity-system", system});
        writeFields(path, truth);
        const auto source = openDeployment({path}, {.overrides = factsOf(truth.instrument)});
        EXPECT_EQ(source->instrument().samplingRate, truth.instrument.samplingRate);
        expectSame(truth, *source, method);
    }
}

TEST_F(Layouts, FieldsOfAProfileInstrument) {
    const Deployment truth = simulated({"--instrument-type", "16", "--cells", "6"});
    writeFields(path, truth);
    const auto source = openDeployment({path}, {.overrides = factsOf(truth.instrument)});
    ASSERT_TRUE(source->instrument().profile);
    expectSame(truth, *source, 2);
}

TEST_F(Layouts, FieldsGiveTheEarthsVelocitiesOrTheBeamsOnWish) {
    const Deployment truth = simulated({});
    writeFields(path, truth);
    DeploymentOptions options{.overrides = factsOf(truth.instrument)};
    options.wanted = VelocitySystem::enu;
    EXPECT_THROW(openDeployment({path}, options), UserError);
}

TEST_F(Layouts, ContinuousSeriesOfAPointInstrumentAreCutAtPauses) {
    for (const auto &[system, method] : {std::pair{"beam", 4}, std::pair{"enu", 2}}) {
        std::filesystem::remove(path);
        const Deployment truth = simulated({"--velocity-system", system});
        writeContinuous(path, truth);
        const auto source = openDeployment({path}, {.overrides = factsOf(truth.instrument)});
        expectSame(truth, *source, method);
    }
}

TEST_F(Layouts, ContinuousProfilesKnowTheirCells) {
    const Deployment truth = simulated({"--instrument-type", "16", "--cells", "6"});
    writeContinuous(path, truth);
    Overrides facts = factsOf(truth.instrument);
    facts.erase("cell_size");
    facts.erase("blanking_distance");
    const auto source = openDeployment({path}, {.overrides = facts});
    ASSERT_TRUE(source->instrument().profile);
    EXPECT_NEAR(source->instrument().cellSize, truth.instrument.cellSize, 1e-9);
    EXPECT_NEAR(source->instrument().profile->blanking, truth.instrument.profile->blanking, 1e-9);
    expectSame(truth, *source, 2);
}

// In cm/s and kPa a number of seven digits moves by its last one.
// Of one cell that was chosen among several the dimension is gone, and `range` one number or gone too.
TEST_F(Layouts, ContinuousSeriesOfOneChosenCell) {
    for (const bool told : {true, false}) {
        {
            test::NcSketch file(path);
            file.dimension("time", 8).dimension("dir", 3);
            file.variable("time", {"time"}, "seconds since 1970-01-01", {0, 1, 2, 3, 4, 5, 6, 7});
            file.variable("pressure", {"time"}, "dbar", std::vector<double>(8, 10.0));
            file.variable("vel", {"dir", "time"}, "cm/s", std::vector<double>(24, 50.0));
            if (told) {
                file.scalar("range", "cm", 410.0);
            }
            file.text("coord_sys", "earth").number("cell_size", 0.5).number("fs", 1.0);
        }
        Overrides facts{{"simultaneous_sampling", "0"}};
        if (!told) {
            facts["cell_range"] = "4.1";
        }
        const auto source = openDeployment({path}, {.overrides = facts});
        const double slant = source->instrument().slantAngle * 3.14159265358979 / 180.0;
        EXPECT_NEAR(source->instrument().cellRange, told ? 4.1 / std::cos(slant) : 4.1, 1e-6);
        const Burst burst = source->readBurst(0);
        EXPECT_FLOAT_EQ(burst.velocity[1].at(7), 0.5F);
        EXPECT_EQ(burst.velocity[2].size(), 8U);
    }
}

TEST_F(Layouts, CsvOfOneFileOrAFolder) {
    const Deployment truth = simulated({});
    const std::string file = directory.file("all.csv");
    writeCsv(file, truth, 0, 2);
    const DeploymentOptions options{.overrides = factsOf(truth.instrument)};
    expectSame(truth, *openDeployment({file}, options), 4, 1e-4);
    const std::string folder = directory.file("folder");
    std::filesystem::create_directory(folder);
    writeCsv(folder + "/b.csv", truth, 0, 1); // the names are not in time order
    writeCsv(folder + "/a.csv", truth, 1, 1);
    std::ofstream(folder + "/._a.csv") << "not the user's";
    const auto source = openDeployment({folder}, options);
    EXPECT_EQ(source->files(), (std::vector<std::string>{folder + "/b.csv", folder + "/a.csv"}));
    expectSame(truth, *source, 4, 1e-4);
}

// Sensors that sample at one instant: their series are brought to the instants at which a point instrument's take turns.
// One cell of a profile, all of whose series are of one instant, has to give what the truth of the sea is.
TEST_F(Layouts, SimultaneousSeriesOfOneCell) {
    const Deployment truth =
        simulated({"--instrument-type", "16", "--cells", "6", "--height", "2", "--period", "7",
                   "--direction", "250", "--spread", "20", "--track-time-offset", "0"});
    writeFields(path, truth);
    Overrides facts = factsOf(truth.instrument);
    facts["velocity_cell"] = "2";
    facts.erase("ambiguity_velocity");
    const double range = (truth.instrument.profile->blanking + 3.0 * truth.instrument.cellSize) /
                         std::cos(truth.instrument.slantAngle * 3.14159265358979 / 180.0);
    facts["cell_range"] = std::to_string(range);
    const auto source = openDeployment({path}, {.overrides = facts});
    ASSERT_FALSE(source->instrument().profile);
    for (const int method : {2, 4}) {
        ProcessingChoices choices;
        choices.method = method;
        BurstRunner runner(source->instrument(), choices);
        const BurstResult result = runner.run(source->readBurst(0));
        ASSERT_TRUE(result.processed) << result.reason;
        EXPECT_NEAR(static_cast<double>(result.waves.significantHeight), 2.0, 0.2) << method;
        EXPECT_NEAR(static_cast<double>(result.waves.peakDirection), 250.0, 8.0) << method;
    }
}

TEST_F(Layouts, FieldsWithoutBurstsOrWithoutAComponentAreRefused) {
    const auto messageOf = [this] {
        try {
            openDeployment({path}, {});
        } catch (const UserError &error) {
            return std::string(error.what());
        }
        return std::string("no error");
    };
    const std::string since = "seconds since 1970-01-01";
    {
        test::NcSketch file(path);
        file.dimension("time", NC_UNLIMITED).dimension("sample", 4);
        file.variable("time", {"time"}, since, {});
        file.variable("P_1ac", {"time", "sample"}, "dbar", {});
        file.variable("brangeAST", {"time", "sample"}, "m", {});
    }
    EXPECT_EQ(messageOf(), path + " holds no bursts: its dimension time is empty");
    std::filesystem::remove(path);
    {
        test::NcSketch file(path);
        file.dimension("time", 1).dimension("sample", 4);
        file.variable("time", {"time"}, since, {0.0});
        file.variable("P_1ac", {"time", "sample"}, "dbar", {10, 10, 10, 10});
        file.variable("v_1206", {"time", "sample"}, "m s-1", {1, 1, 1, 1});
    }
    EXPECT_EQ(messageOf(), "u_1205 is missing in " + path + ", which has v_1206");
}

TEST_F(Layouts, FilesOfDifferentPlacesAreRefused) {
    const std::string left = directory.file("left.nc");
    const std::string right = directory.file("right.nc");
    const auto write = [](const std::string &file, double start, std::optional<double> longitude) {
        test::NcSketch sketch(file);
        sketch.dimension("time", 1).dimension("sample", 4);
        sketch.variable("time", {"time"}, "seconds since 1970-01-01", {start});
        sketch.variable("P_1ac", {"time", "sample"}, "dbar", {10, 10, 10, 10});
        sketch.number("sample_rate", 1.0).number("latitude", 54.0);
        if (longitude) {
            sketch.number("longitude", *longitude);
        }
    };
    const auto messageOf = [&](std::optional<double> other, const Overrides &given = {}) {
        write(left, 0.0, 3.0);
        write(right, 3600.0, other);
        try {
            openDeployment({left, right}, {.overrides = given});
        } catch (const UserError &error) {
            return std::string(error.what());
        }
        return std::string("no error");
    };
    EXPECT_EQ(messageOf(3.0), "no error");
    EXPECT_EQ(messageOf(3.005), "no error");
    EXPECT_EQ(messageOf(-357.0), "no error");
    EXPECT_EQ(messageOf(std::nullopt), "no error");
    EXPECT_EQ(messageOf(3.02).rfind("longitude (3 and 3.02) differs between " + left, 0), 0U);
    EXPECT_EQ(messageOf(100.0).rfind("longitude (3 and 100) differs between " + left, 0), 0U);
    EXPECT_EQ(messageOf(100.0, {{"longitude", "3"}}), "no error");
    write(left, 0.0, std::nullopt);
    write(right, 3600.0, 4.5);
    EXPECT_EQ(openDeployment({left, right}, {})->instrument().longitude, 4.5);
}

TEST_F(Layouts, FilesWithoutATimeKeepTheirOrderAndSaySo) {
    const std::string left = directory.file("left.csv");
    const std::string right = directory.file("right.csv");
    const DeploymentOptions options{.overrides = {{"sampling_rate", "1"}}};
    std::ofstream(left) << "pressure\n10\n10\n10\n";
    std::ofstream(right) << "time [seconds since 1970-01-01],pressure\n0,10\n1,10\n2,10\n";
    const auto holds = [](const BurstSource &source, const std::string &text) {
        const std::vector<std::string> notes = source.notes();
        return std::any_of(notes.begin(), notes.end(), [&text](const std::string &note) {
            return note.find(text) != std::string::npos;
        });
    };
    EXPECT_FALSE(holds(*openDeployment({left}, options), "order"));
    const auto source = openDeployment({right, left}, options);
    EXPECT_TRUE(holds(*source, "the first burst of " + left +
                                   " has no time: the files are taken "
                                   "in the order"));
    EXPECT_EQ(source->files(), (std::vector<std::string>{right, left}));
}

// A burst file with these times, and the same in field codes.
void writeTimes(const std::string &path, const std::vector<double> &times, bool fields) {
    const std::vector<double> pressure(4 * times.size(), 10.0);
    test::NcSketch sketch(path);
    sketch.dimension("time", times.size()).dimension("sample", 4);
    sketch.variable("time", {"time"}, "minutes since 1970-01-01", times);
    if (fields) {
        sketch.variable("P_1ac", {"time", "sample"}, "dbar", pressure).number("sample_rate", 1.0);
    } else {
        sketch.variable("pressure", {"time", "sample"}, "dbar", pressure);
        sketch.scalar("sampling_rate", "Hz", 1.0);
    }
}

TEST_F(Layouts, TimesThatGoBackAreNoted) {
    const std::string rest = " not after that of the burst before: results keep the order of the "
                             "file";
    using Notes = std::vector<std::string>;
    for (const bool fields : {false, true}) {
        const auto notesOf = [&](const std::vector<double> &times) {
            writeTimes(path, times, fields);
            return openDeployment({path}, {})->notes();
        };
        EXPECT_EQ(notesOf({1, 2, 3}), Notes{});
        EXPECT_EQ(notesOf({7}), Notes{});
        EXPECT_EQ(notesOf({1, 2, 2, 3}), Notes{"in " + path + " the time of burst 2 is" + rest});
        EXPECT_EQ(notesOf({1, 2, 9, 3, 3}),
                  Notes{"in " + path + " the times of 2 bursts (first: burst 3) are" + rest});
        EXPECT_EQ(notesOf({1, std::nan(""), 2}), Notes{});
        EXPECT_EQ(openDeployment({path}, {})->startTime(2), 120.0);
    }
    const std::string table = directory.file("table.csv");
    std::ofstream(table) << "burst,time [seconds since 1970-01-01],pressure\n"
                            "0,50,10\n0,51,10\n0,52,10\n1,20,10\n1,21,10\n1,22,10\n";
    EXPECT_EQ(openDeployment({table}, {})->notes(),
              Notes{"in " + table + " the time of burst 1 is" + rest});
}

// One wrong clock neither refuses nor misplaces a file; a file that is given twice is refused in any case.
TEST_F(Layouts, FilesWhoseTimesGoBackAreJoined) {
    const std::string first = directory.file("first.nc");
    const std::string second = directory.file("second.nc");
    const auto filesOf = [](const std::vector<std::string> &paths) {
        return openDeployment(paths, {})->files();
    };
    const std::vector<std::string> inOrder{first, second};
    const std::string overlap = "the bursts of " + first + " and " + second + " overlap in time";
    writeTimes(first, {101, 102, 103, 104}, false);
    writeTimes(second, {0, 111, 112, 113}, false);
    EXPECT_EQ(filesOf({second, first}), inOrder);
    EXPECT_EQ(openDeployment(inOrder, {})->notes(), std::vector<std::string>{overlap});
    writeTimes(second, {111, 0, 112, 113}, false);
    EXPECT_EQ(filesOf({second, first}), inOrder);
    const auto notes = openDeployment(inOrder, {})->notes();
    ASSERT_EQ(notes.size(), 1U);
    EXPECT_NE(notes.front().find(second), std::string::npos) << notes.front();
    writeTimes(second, {104, 0, 112, 113, 114}, false);
    EXPECT_EQ(openDeployment(inOrder, {})->notes().back(), overlap);
    EXPECT_THROW(filesOf({second, second}), UserError);
    for (const std::vector<double> &times :
         {std::vector<double>{104, 105}, std::vector<double>{102.5, 103.5, 200}}) {
        writeTimes(second, times, false);
        EXPECT_THROW(filesOf(inOrder), UserError);
    }
}

TEST_F(Layouts, FilesOfDifferentInstrumentsAreRefused) {
    const std::string left = directory.file("left.csv");
    const std::string right = directory.file("right.csv");
    std::ofstream(left) << "time [s],pressure\n0,10\n0.5,10\n1.0,10\n";
    std::ofstream(right) << "time [s],pressure\n0,10\n1,10\n2,10\n";
    try {
        openDeployment({left, right}, {});
        FAIL();
    } catch (const UserError &error) {
        const std::string message = error.what();
        for (const std::string &part : {std::string("sampling_rate (2 and 1)"), left, right}) {
            EXPECT_NE(message.find(part), std::string::npos) << message;
        }
    }
}

TEST_F(Layouts, UnknownLayoutsAndUselessLengthsAreUsageErrors) {
    const Deployment truth = simulated({});
    const std::string file = directory.file("burst.nc");
    EXPECT_THROW(openDeployment({file}, {.layout = "tape"}), UsageError);
    EXPECT_THROW(openDeployment({file}, {.burstLength = 512}), UsageError);
    EXPECT_THROW(openDeployment({file}, {.overrides = {{"velocity_cell", "1"}}}), UsageError);
    EXPECT_THROW(openDeployment({directory.file("none")}, {}), UserError);
}

} // namespace
