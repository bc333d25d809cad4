// Burst files of other makers: any order, packed, other units, and what is wrong with them in words.
#include "burst/burst_file.hpp"

#include <cmath>
#include <filesystem>
#include <fstream>

#include <gtest/gtest.h>

#include "host/burst/nc_sketch.hpp"
#include "host/burst/scratch_directory.hpp"
#include "user_error.hpp"

namespace {

using namespace orvik;
using test::NcSketch;

constexpr std::size_t kSamples = 4;

class BurstInput : public testing::Test {
protected:
    test::ScratchDirectory directory;
    std::string path = directory.file("input.nc");

    // Two bursts of four samples with a pressure of 10 and 11 dbar.
    void base(NcSketch &file, bool withPressure = true) const {
        file.dimension("burst", 2)
            .dimension("sample", kSamples)
            .dimension("beam", 3)
            .dimension("enu", 3);
        file.dimension("surface_track_sample", 2 * kSamples)
            .dimension("cell", 2)
            .dimension("four", 4);
        file.scalar("sampling_rate", "Hz", 2.0);
        if (withPressure) {
            file.variable("pressure", {"burst", "sample"}, "dbar",
                          {10, 10, 10, 10, 11, 11, 11, 11});
        }
    }

    std::string messageOf(const Overrides &overrides = {}) const {
        try {
            const BurstFileReader reader(path, overrides);
        } catch (const UserError &error) {
            return error.what();
        }
        return "";
    }

    void expectMessage(const std::vector<std::string> &parts,
                       const Overrides &overrides = {}) const {
        const std::string message = messageOf(overrides);
        for (const std::string &part : parts) {
            EXPECT_NE(message.find(part), std::string::npos)
                << "\"" << part << "\" in \"" << message << "\"";
        }
    }
};

// Value of burst b, sample i, beam j.
double beamValue(std::size_t b, std::size_t i, std::size_t j) {
    return 100.0 * static_cast<double>(b) + 10.0 * static_cast<double>(i) + static_cast<double>(j);
}

TEST_F(BurstInput, DimensionsInAnyOrder) {
    const std::vector<std::vector<std::string>> orders{
        {"burst", "sample", "beam"}, {"burst", "beam", "sample"}, {"beam", "sample", "burst"},
        {"sample", "burst", "beam"}, {"beam", "burst", "sample"}, {"sample", "beam", "burst"}};
    const std::map<std::string, std::size_t> lengths{
        {"burst", 2}, {"sample", kSamples}, {"beam", 3}};
    for (const auto &order : orders) {
        std::filesystem::remove(path);
        std::vector<double> values;
        for (std::size_t a = 0; a < lengths.at(order[0]); ++a) {
            for (std::size_t b = 0; b < lengths.at(order[1]); ++b) {
                for (std::size_t c = 0; c < lengths.at(order[2]); ++c) {
                    std::map<std::string, std::size_t> at{
                        {order[0], a}, {order[1], b}, {order[2], c}};
                    values.push_back(beamValue(at["burst"], at["sample"], at["beam"]));
                }
            }
        }
        {
            NcSketch file(path);
            base(file);
            file.variable("velocity_beam", order, "m s-1", values);
        }
        const BurstFileReader reader(path, {{"cell_range", "5"}});
        const Burst burst = reader.readBurst(1);
        for (std::size_t i = 0; i < kSamples; ++i) {
            for (std::size_t j = 0; j < 3; ++j) {
                EXPECT_EQ(static_cast<double>(burst.velocity[j][i]), beamValue(1, i, j))
                    << order[0] << order[1];
            }
        }
    }
}

TEST_F(BurstInput, PackedValuesAndTheirMarkers) {
    {
        NcSketch file(path);
        base(file, false);
        file.variable("pressure", {"burst", "sample"}, "dbar", {1000, -32768, -999, 4, 0, 0, 0, 0},
                      NC_SHORT,
                      {{"scale_factor", 0.001},
                       {"add_offset", 10.0},
                       {"_FillValue", -32768},
                       {"missing_value", -999}});
    }
    const Burst burst = BurstFileReader(path, {}).readBurst(0);
    EXPECT_FLOAT_EQ(burst.pressure[0], 11.0F);
    EXPECT_TRUE(std::isnan(burst.pressure[1]));
    EXPECT_TRUE(std::isnan(burst.pressure[2]));
    EXPECT_FLOAT_EQ(burst.pressure[3], 10.004F);
}

TEST_F(BurstInput, ValuesThatWereNeverWrittenAreMissing) {
    {
        NcSketch file(path);
        base(file, false);
        file.variable("pressure", {"burst", "sample"}, "dbar", {}, NC_FLOAT);
    }
    const Burst burst = BurstFileReader(path, {}).readBurst(0);
    EXPECT_TRUE(std::isnan(burst.pressure[0]));
}

struct UnitCase {
    const char *units;
    double raw;
    float dbar;
};

TEST_F(BurstInput, PressureUnits) {
    const UnitCase cases[] = {{"dbar", 10.0, 10.0F}, {"decibar", 10.0, 10.0F},
                              {"Pa", 1e5, 10.0F},    {"hPa", 1000.0, 10.0F},
                              {"kPa", 100.0, 10.0F}, {"bar", 1.0, 10.0F}};
    for (const UnitCase &unit : cases) {
        std::filesystem::remove(path);
        {
            NcSketch file(path);
            base(file, false);
            file.variable("pressure", {"burst", "sample"}, unit.units,
                          std::vector<double>(2 * kSamples, unit.raw));
        }
        EXPECT_FLOAT_EQ(BurstFileReader(path, {}).readBurst(0).pressure[0], unit.dbar)
            << unit.units;
    }
}

TEST_F(BurstInput, UnitsOfOtherQuantities) {
    {
        NcSketch file(path);
        base(file);
        const std::vector<double> series(2 * kSamples, 250.0);
        file.variable("velocity_east", {"burst", "sample"}, "cm s-1", series);
        file.variable("velocity_north", {"burst", "sample"}, "mm/s", series);
        file.variable("surface_track_distance", {"burst", "surface_track_sample"}, "mm",
                      std::vector<double>(4 * kSamples, 9500.0));
        file.variable("heading", {"burst"}, "radian", {1.5707963267948966, 0.0});
        file.scalar("acoustic_frequency", "kHz", 400.0).scalar("cell_range", "cm", 820.0);
    }
    const BurstFileReader reader(path, {});
    const Burst burst = reader.readBurst(0);
    EXPECT_FLOAT_EQ(burst.velocity[0][3], 2.5F);
    EXPECT_FLOAT_EQ(burst.velocity[1][3], 0.25F);
    EXPECT_FLOAT_EQ(burst.velocity[2][3], 0.0F) << "a missing up component";
    EXPECT_FLOAT_EQ(burst.surfaceTrack[0], 9.5F);
    EXPECT_NEAR(burst.heading, 90.0, 1e-9);
    EXPECT_EQ(reader.instrument().acousticFrequency, 400000.0);
    EXPECT_DOUBLE_EQ(reader.instrument().cellRange, 8.2);
}

TEST_F(BurstInput, TimesCountFromAnyDay) {
    {
        NcSketch file(path);
        base(file);
        file.variable("burst_start_time", {"burst"}, "hours since 2000-01-01 12:00:00", {0.0, 1.5});
    }
    const BurstFileReader reader(path, {});
    EXPECT_EQ(reader.readBurst(0).startTime, 946728000.0);
    EXPECT_EQ(reader.readBurst(1).startTime, 946728000.0 + 5400.0);
}

TEST_F(BurstInput, AttitudeSeriesAreAveragedAcrossNorth) {
    {
        NcSketch file(path);
        base(file);
        file.variable("heading", {"sample", "burst"}, "degree", {358, 90, 359, 90, 1, 90, 2, 90});
        file.variable("pitch", {"burst"}, "degree", {-3, 4});
        file.scalar("roll", "degree", 2.0);
    }
    const BurstFileReader reader(path, {});
    EXPECT_NEAR(std::remainder(reader.readBurst(0).heading, 360.0), 0.0, 1e-9);
    EXPECT_NEAR(reader.readBurst(1).heading, 90.0, 1e-9);
    EXPECT_NEAR(reader.readBurst(1).pitch, 4.0, 1e-9);
    EXPECT_NEAR(reader.readBurst(1).roll, 2.0, 1e-9);
}

TEST_F(BurstInput, CellRangeFromHeightsAboveTheBed) {
    {
        NcSketch file(path);
        base(file);
        file.scalar("velocity_height_above_bed", "m", 3.26)
            .scalar("pressure_sensor_height_above_bed", "m", 2.42);
        file.scalar("beam_slant_angle", "degree", 60.0);
    }
    EXPECT_NEAR(BurstFileReader(path, {}).instrument().cellRange, 1.68, 1e-9);
}

TEST_F(BurstInput, AGivenHeightOfTheCellCorrectsTheRangeOfTheData) {
    {
        NcSketch file(path);
        base(file);
        file.scalar("cell_range", "m", 9.0).scalar("velocity_height_above_bed", "m", 8.0);
        file.scalar("pressure_sensor_height_above_bed", "m", 1.0);
        file.scalar("beam_slant_angle", "degree", 60.0);
    }
    const auto rangeWith = [this](const Overrides &overrides) {
        return BurstFileReader(path, overrides).instrument().cellRange;
    };
    EXPECT_NEAR(rangeWith({}), 9.0, 1e-9);
    EXPECT_NEAR(rangeWith({{"velocity_height_above_bed", "3"}}), 4.0, 1e-9);
    EXPECT_NEAR(rangeWith({{"velocity_height_above_bed", "3"}, {"cell_range", "6"}}), 6.0, 1e-9);
    expectMessage({"velocity_height_above_bed (given with --set) must be more than",
                   "pressure_sensor_height_above_bed"},
                  {{"velocity_height_above_bed", "1"}});
}

TEST_F(BurstInput, MatrixByColumnsIsTurned) {
    {
        NcSketch file(path);
        base(file);
        file.dimension("xyz", 3);
        file.variable("beam_to_xyz", {"beam", "xyz"}, "1", {1, 2, 3, 4, 5, 6, 7, 8, 9});
    }
    EXPECT_EQ(BurstFileReader(path, {}).instrument().beamToXyz,
              (std::array<double, 9>{1, 4, 7, 2, 5, 8, 3, 6, 9}));
}

TEST_F(BurstInput, MissingFileIsNamed) { expectMessage({"cannot open", path, "No such file"}); }

TEST_F(BurstInput, TruncatedFileIsNamed) {
    {
        NcSketch file(path);
        base(file);
    }
    std::filesystem::resize_file(path, std::filesystem::file_size(path) / 2);
    expectMessage({"cannot open", path});
}

TEST_F(BurstInput, TextIsNoBurstFile) {
    std::ofstream(path) << "time,pressure\n0,10\n";
    expectMessage({"cannot open", path});
}

TEST_F(BurstInput, WrongShapesNameTheVariableAndItsDimensions) {
    {
        NcSketch file(path);
        base(file);
        file.variable("velocity_enu", {"burst", "enu", "four", "sample"}, "m s-1", {});
    }
    expectMessage({"velocity_enu", path, "(burst, enu, four, sample)", "(burst, sample, enu)"});
}

TEST_F(BurstInput, WrongLengthsAreNamed) {
    {
        NcSketch file(path);
        file.dimension("burst", 1).dimension("sample", kSamples).dimension("beam", 4);
        file.scalar("sampling_rate", "Hz", 2.0);
        file.variable("pressure", {"burst", "sample"}, "dbar", {1, 2, 3, 4});
        file.variable("velocity_beam", {"burst", "sample", "beam"}, "m s-1", {});
    }
    expectMessage({"dimension beam", "velocity_beam", "4 long", "expected 3"});
}

TEST_F(BurstInput, TrackMustBeAtDoubleRate) {
    {
        NcSketch file(path);
        file.dimension("burst", 1)
            .dimension("sample", kSamples)
            .dimension("surface_track_sample", kSamples);
        file.scalar("sampling_rate", "Hz", 2.0);
        file.variable("pressure", {"burst", "sample"}, "dbar", {1, 2, 3, 4});
        file.variable("surface_track_distance", {"burst", "surface_track_sample"}, "m",
                      {1, 2, 3, 4});
    }
    expectMessage({"surface_track_distance", "4 values", "two for each"});
}

TEST_F(BurstInput, WrongUnitIsNamedWithTheExpectedOne) {
    {
        NcSketch file(path);
        base(file, false);
        file.variable("pressure", {"burst", "sample"}, "degree_Celsius", {});
    }
    expectMessage({"pressure", path, "\"degree_Celsius\"", "\"dbar\""});
}

TEST_F(BurstInput, MeasuredQuantitiesNeedAUnit) {
    {
        NcSketch file(path);
        base(file, false);
        file.variable("pressure", {"burst", "sample"}, "-", {});
    }
    expectMessage({"pressure", "no units", "\"dbar\""});
}

TEST_F(BurstInput, EmptyFilesAreRefused) {
    {
        NcSketch file(path);
        file.dimension("time", NC_UNLIMITED).dimension("sample", kSamples);
        file.scalar("sampling_rate", "Hz", 2.0);
        file.variable("pressure", {"time", "sample"}, "dbar", {});
    }
    expectMessage({path, "holds no bursts", "time"});
}

TEST_F(BurstInput, ComponentsOfVelocityAreKnownByName) {
    using Names = std::vector<std::string>;
    for (const auto &[there, missing] :
         {std::pair<Names, std::string>{{"velocity_north", "velocity_up"}, "velocity_east"},
          {{"velocity_up"}, "velocity_east"},
          {{"velocity_east", "velocity_up"}, "velocity_north"}}) {
        std::filesystem::remove(path);
        {
            NcSketch file(path);
            base(file);
            for (const std::string &name : there) {
                file.variable(name, {"burst", "sample"}, "m s-1",
                              std::vector<double>(2 * kSamples, 1.0));
            }
        }
        expectMessage({missing + " is missing in " + path, "which has " + there.front()});
    }
}

TEST_F(BurstInput, WithoutPressureNothingWorks) {
    {
        NcSketch file(path);
        base(file, false);
    }
    expectMessage({"pressure is missing", path});
}

TEST_F(BurstInput, MissingFactsSayHowToGiveThem) {
    {
        NcSketch file(path);
        base(file);
        file.variable("velocity_beam", {"burst", "sample", "beam"}, "m s-1", {});
    }
    EXPECT_EQ(messageOf(),
              "cell_range is missing in " + path +
                  ": give it with --set cell_range=METRES; orvik init lists all that is missing");
    const BurstFileReader reader(path, {{"cell_range", "8"}});
    EXPECT_THROW(reader.requireAttitude(), UserError);
    EXPECT_THROW(reader.requireBeams(), UserError);
    const BurstFileReader given(path, {{"cell_range", "8"},
                                       {"heading", "0"},
                                       {"pitch", "0"},
                                       {"roll", "0"},
                                       {"beam_azimuth", "0,120,240"}});
    EXPECT_NO_THROW(given.requireAttitude());
    EXPECT_NO_THROW(given.requireBeams());
}

TEST_F(BurstInput, BadUserValuesNameTheOption) {
    {
        NcSketch file(path);
        base(file);
    }
    expectMessage({"--set cell_rang", "no such value", "cell_range"}, {{"cell_rang", "8"}});
    expectMessage({"--set cell_range", "\"8 m\" is not a number"}, {{"cell_range", "8 m"}});
    expectMessage({"--set cell_range", "\"\" is not a number"}, {{"cell_range", ""}});
    expectMessage({"--set cell_range", "\"nan\" is not a number"}, {{"cell_range", "nan"}});
    expectMessage({"--set beam_azimuth takes 3 to 4 numbers"}, {{"beam_azimuth", "0,120"}});
    expectMessage({"--set beam_to_xyz takes 9 numbers"}, {{"beam_to_xyz", "1,0,0"}});
    expectMessage({"cell_range (given with --set) must be more than 0"}, {{"cell_range", "-1"}});
    expectMessage({"beam_slant_angle (given with --set)", "between 0 and 90"},
                  {{"beam_slant_angle", "90"}});
    expectMessage({"pings_per_sample (given with --set)", "whole number"},
                  {{"pings_per_sample", "1.5"}});
    expectMessage({"--set time", "2"}, {{"time", "0"}});
    EXPECT_THROW(BurstFileReader(path, {{"cell_rang", "8"}}), UsageError);
}

} // namespace
