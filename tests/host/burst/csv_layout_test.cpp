// CSV files as people have them, and what is wrong with them in words.
#include "burst/deployment.hpp"

#include <cmath>
#include <filesystem>
#include <fstream>

#include <gtest/gtest.h>

#include "host/burst/scratch_directory.hpp"
#include "user_error.hpp"

namespace {

using namespace orvik;

class CsvLayout : public testing::Test {
protected:
    test::ScratchDirectory directory;
    std::string path = directory.file("data.csv");

    void write(const std::string &text) const { std::ofstream(path) << text; }

    [[nodiscard]] std::string messageOf(const DeploymentOptions &options = {}) const {
        try {
            const auto source = openDeployment({path}, options);
            for (std::size_t i = 0; i < source->burstCount(); ++i) {
                static_cast<void>(source->readBurst(i));
            }
        } catch (const UserError &error) {
            return error.what();
        }
        return "no error";
    }

    void expectMessage(const std::vector<std::string> &parts,
                       const DeploymentOptions &options = {}) const {
        const std::string message = messageOf(options);
        for (const std::string &part : parts) {
            EXPECT_NE(message.find(part), std::string::npos) << part << " in " << message;
        }
    }
};

TEST_F(CsvLayout, DatesUnitsQuotesAndMissingValues) {
    write("\xEF\xBB\xBF# from the harbour\r\n\r\n"
          "Time;\"Pressure (kPa)\";velocity east [cm/s];velocity north [cm/s];Heading [radian]\r\n"
          "2008-09-08T12:00:00.0Z;100;250;-10;0\r\n"
          "2008-09-08 12:00:00.5;;NaN;+10;0\r\n"
          "# in between\r\n"
          "2008-09-08T12:00:01;\"110\";1e2;10;3.14159265358979\r\n");
    const auto source = openDeployment({path}, {.overrides = {{"velocity_height_above_bed", "2"},
                                                              {"simultaneous_sampling", "0"}}});
    ASSERT_EQ(source->burstCount(), 1U);
    EXPECT_EQ(source->instrument().samplingRate, 2.0);
    const Burst burst = source->readBurst(0);
    EXPECT_EQ(burst.startTime, 1220875200.0);
    EXPECT_EQ(burst.velocitySystem, VelocitySystem::enu);
    ASSERT_EQ(burst.pressure.size(), 3U);
    EXPECT_FLOAT_EQ(burst.pressure[0], 10.0F);
    EXPECT_TRUE(std::isnan(burst.pressure[1]));
    EXPECT_FLOAT_EQ(burst.pressure[2], 11.0F);
    EXPECT_FLOAT_EQ(burst.velocity[0][0], 2.5F);
    EXPECT_TRUE(std::isnan(burst.velocity[0][1]));
    EXPECT_FLOAT_EQ(burst.velocity[1][1], 0.1F);
    EXPECT_FLOAT_EQ(burst.velocity[2][1], 0.0F);
    EXPECT_NEAR(static_cast<double>(burst.attitude[0][2]), 180.0, 1e-4);
}

TEST_F(CsvLayout, ACellSizeThatDoesNothingIsNoted) {
    write("time [seconds since 1970-01-01],pressure\n0,10\n1,11\n");
    DeploymentOptions options{.overrides = {{"cell_size", "1"}}};
    const auto notes = openDeployment({path}, options)->notes();
    ASSERT_EQ(notes.size(), 1U);
    EXPECT_NE(notes[0].find("cell_size has no part"), std::string::npos) << notes[0];
    options.overrides["simultaneous_sampling"] = "0";
    EXPECT_TRUE(openDeployment({path}, options)->notes().empty());
}

// They come to their instants in the system that the method takes, not before they are turned into it.
TEST_F(CsvLayout, VelocitiesOfOneInstantStayAsTheyAre) {
    write("time [s],pressure,velocity_east,velocity_north\n0,10,1,2\n1,11,3,-4\n");
    DeploymentOptions options{.overrides = {{"velocity_height_above_bed", "2"}}};
    const Burst burst = openDeployment({path}, options)->readBurst(0);
    EXPECT_TRUE(burst.velocitiesAtOnce);
    EXPECT_EQ(burst.velocity[1], (std::vector<float>{2.0F, -4.0F}));
    options.overrides["simultaneous_sampling"] = "0";
    EXPECT_FALSE(openDeployment({path}, options)->readBurst(0).velocitiesAtOnce);
}

TEST_F(CsvLayout, WithoutTimesARateAndALength) {
    std::string text = "pressure\n";
    for (int i = 0; i < 250; ++i) {
        text += std::to_string(i) + "\n";
    }
    write(text);
    expectMessage({"sampling_rate is missing", path, "--set sampling_rate=HERTZ"});
    DeploymentOptions options{.burstLength = 100, .overrides = {{"sampling_rate", "4"}}};
    options.overrides["simultaneous_sampling"] = "0";
    const auto source = openDeployment({path}, options);
    ASSERT_EQ(source->burstCount(), 2U);
    EXPECT_EQ(source->readBurst(1).pressure.front(), 100.0F);
    EXPECT_EQ(source->readBurst(1).pressure.size(), 100U);
    EXPECT_TRUE(std::isnan(source->startTime(0)));
    ASSERT_EQ(source->notes().size(), 1U);
    EXPECT_NE(source->notes()[0].find("50 samples"), std::string::npos) << source->notes()[0];
}

TEST_F(CsvLayout, AColumnOfBurstNumbersCuts) {
    write("burst,pressure\n1,10\n1,11\n2,20\n2,21\n2,22\n");
    DeploymentOptions options{.overrides = {{"sampling_rate", "1"}, {"air_pressure", "10"}}};
    options.overrides["simultaneous_sampling"] = "0";
    const auto source = openDeployment({path}, options);
    ASSERT_EQ(source->burstCount(), 2U);
    EXPECT_EQ(source->readBurst(0).pressure, (std::vector<float>{0.0F, 1.0F}));
    EXPECT_EQ(source->readBurst(1).pressure, (std::vector<float>{10.0F, 11.0F, 12.0F}));
}

TEST_F(CsvLayout, TimesThatCountFromZeroTakeTheirOrigin) {
    write("time [min],pressure\n0,10\n1,11\n60,20\n61,21\n");
    EXPECT_TRUE(std::isnan(openDeployment({path}, {})->startTime(1)));
    const auto source = openDeployment({path}, {.overrides = {{"time", "1000"}}});
    ASSERT_EQ(source->burstCount(), 2U);
    EXPECT_EQ(source->startTime(1), 4600.0);
    EXPECT_TRUE(source->notes().empty());
    EXPECT_EQ(
        openDeployment({path}, {.overrides = {{"time", "2020-09-13T12:26:40Z"}}})->startTime(1),
        1.6e9 + 3600.0);
    const auto notes = openDeployment({path}, {})->notes();
    ASSERT_EQ(notes.size(), 1U);
    EXPECT_EQ(notes.front().rfind("the times in " + path + " count from 0 and nothing tells", 0),
              0U);
    EXPECT_NE(notes.front().find("--set time="), std::string::npos) << notes.front();
}

TEST_F(CsvLayout, NamesMayBeInCapitals) {
    const std::string folder = directory.file("CARD");
    std::filesystem::create_directory(folder);
    path = folder + "/B1.CSV";
    write("time [s],pressure\n0,10\n1,10\n");
    for (const std::string &name : {path, folder}) {
        const auto source = openDeployment({name}, {});
        EXPECT_EQ(source->files(), std::vector<std::string>{path});
    }
    for (const char *name : {"B1.CSV", "b1.csv", "B1.NC", "B1.Nc4", "b1.nc"}) {
        EXPECT_TRUE(isBurstFileName(name)) << name;
    }
    EXPECT_FALSE(isBurstFileName(".B1.NC"));
    EXPECT_FALSE(isBurstFileName("NC"));
}

// A title without text, of a comma at the line's end, is the name of nothing.
TEST_F(CsvLayout, ColumnsWithoutANameAreNoVelocities) {
    write("time "
          "[s],pressure,velocity_east,velocity_north,velocity_up,\n0,10,1,2,3,4\n1,10,1,2,3,4\n");
    DeploymentOptions options{.overrides = {{"velocity_height_above_bed", "2"}}};
    options.overrides["simultaneous_sampling"] = "0";
    const Burst burst = openDeployment({path}, options)->readBurst(0);
    EXPECT_EQ(burst.velocity[0], (std::vector<float>{1.0F, 1.0F}));
    EXPECT_EQ(burst.velocity[2], (std::vector<float>{3.0F, 3.0F}));
}

// Row 3 is lost, and the file is cut short or gone when its burst is read.
TEST_F(CsvLayout, FilesThatShrinkWhileTheyAreReadAreToldByName) {
    write("time [s],pressure\n0,10\n1,11\n3,13\n4,14\n");
    const auto source = openDeployment({path}, {.overrides = {{"simultaneous_sampling", "0"}}});
    ASSERT_EQ(source->readBurst(0).pressure.size(), 5U);
    const auto message = [&source] {
        try {
            static_cast<void>(source->readBurst(0));
        } catch (const UserError &error) {
            return std::string(error.what());
        }
        return std::string("no error");
    };
    for (const char *text : {"time [s],pressure\n0,10\n1,11\n", "time"}) {
        write(text);
        EXPECT_NE(message().find(path + " has lost rows"), std::string::npos) << message();
    }
    std::filesystem::remove(path);
    EXPECT_NE(message().find("cannot open " + path), std::string::npos) << message();
}

TEST_F(CsvLayout, WhatIsWrongIsSaidWithItsLine) {
    write("time [s],pressure\n0,10\n1,ten\n2,10\n");
    expectMessage({path + " line 3", "\"ten\"", "pressure", "not a number"});
    write("time [s],pressure\n0,10\n1\n2,10\n");
    expectMessage({path + " line 3", "1 fields", "2"});
    write("time,pressure\n0,10\n1,10\n");
    expectMessage({path + " line 2", "\"0\"", "time [s]"});
    write("time,pressure\n2008-13-01T00:00:00,10\n");
    expectMessage({path + " line 2", "2008-13-01"});
    write("time [s],pressure\n0,10\n1,\"10\n");
    expectMessage({path + " line 3", "quote"});
    write("time [s],pressure\n0,10\n1,10\n2,10\n1,10\n");
    expectMessage({path, "goes back", "row 4"});
    write("time [s],pressure [m/s]\n0,10\n1,10\n");
    expectMessage({"pressure", path, "\"m/s\"", "\"dbar\""});
    write("time [s],depth\n0,10\n1,10\n");
    expectMessage({"pressure is missing", path});
    write("time [s],pressure,velocity_east\n0,10,1\n1,10,1\n");
    expectMessage({"velocity_north", path});
    write("time [s],pressure,velocity_north,velocity_up\n0,10,1,1\n1,10,1,1\n");
    expectMessage({"velocity_east is missing in " + path, "velocity_north"});
    write("time "
          "[s],pressure,velocity_beam_2,velocity_beam_3,velocity_beam_4\n0,1,1,1,1\n1,1,1,1,1\n");
    expectMessage({"velocity_beam_1 is missing in " + path, "velocity_beam_2"});
    write("time "
          "[s],pressure,velocity_beam_1,velocity_beam_2,velocity_beam_4\n0,1,1,1,1\n1,1,1,1,1\n");
    expectMessage({"velocity_beam_3 is missing in " + path});
    write("time [s],pressure,velocity_x,velocity_z\n0,10,1,1\n1,10,1,1\n");
    expectMessage({"velocity_y is missing in " + path, "velocity_x"});
    write("pressure\n");
    expectMessage({path}, {.overrides = {{"sampling_rate", "1"}}});
    write("");
    expectMessage({path, "no header line"});
}

} // namespace
