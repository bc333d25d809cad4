// Burst files of profile instruments, our own and others', and what is wrong with them in words.
#include "burst/burst_file.hpp"

#include <cmath>

#include <gtest/gtest.h>

#include "host/burst/nc_sketch.hpp"
#include "host/burst/scratch_directory.hpp"
#include "simulate/sea.hpp"
#include "user_error.hpp"

namespace {

using namespace orvik;
using test::NcSketch;

constexpr std::size_t kSamples = 4;
constexpr std::size_t kCells = 2;

class ProfileFile : public testing::Test {
protected:
    test::ScratchDirectory directory;
    std::string path = directory.file("profile.nc");

    void base(NcSketch &file, std::size_t beams = 3) const {
        file.dimension("burst", 2).dimension("sample", kSamples).dimension("beam", beams);
        file.dimension("cell", kCells).dimension("enu", 3).dimension("other", 5);
        file.scalar("sampling_rate", "Hz", 2.0).scalar("cell_size", "cm", 50.0);
        file.scalar("blanking_distance", "m", 0.25);
        file.variable("pressure", {"burst", "sample"}, "dbar", {10, 12, 10, 12, 11, 13, 11, 13});
    }
    static std::vector<double> numbers(std::size_t count) {
        std::vector<double> values;
        for (std::size_t i = 0; i < count; ++i) {
            values.push_back(static_cast<double>(i));
        }
        return values;
    }
    std::string messageOf(const Overrides &overrides = {},
                          VelocitySystem wanted = VelocitySystem::none) const {
        try {
            const BurstFileReader reader(path, overrides, wanted);
        } catch (const UserError &error) {
            return error.what();
        }
        return "";
    }
    void expectMessage(const std::string &part, const Overrides &overrides = {}) const {
        EXPECT_NE(messageOf(overrides).find(part), std::string::npos) << messageOf(overrides);
    }
};

Instrument profiler(std::size_t beams) {
    Instrument instrument;
    instrument.samplingRate = 2.0;
    instrument.trackSamplingRate = 2.0;
    instrument.instrumentType = 16;
    instrument.beams = beams;
    instrument.beamAzimuth = beams == 4 ? std::vector<double>{0.0, 90.0, 180.0, 270.0}
                                        : std::vector<double>{0.0, 120.0, 240.0};
    instrument.cellSize = 0.5;
    instrument.rollOffset = 1.5;
    instrument.profile = ProfileFacts{12, 0.25, 0.125, 2.5};
    return instrument;
}

TEST_F(ProfileFile, WhatIsWrittenIsReadBack) {
    for (const std::size_t beams : {std::size_t{3}, std::size_t{4}}) {
        for (const VelocitySystem system :
             {VelocitySystem::beam, VelocitySystem::xyz, VelocitySystem::enu}) {
            const Instrument written = profiler(beams);
            SeaState sea;
            sea.systems = {WaveSystem{}};
            SensorFaults faults;
            faults.missingFraction = 0.1;
            const SimulatedBurst simulated = simulateBurst(written, sea, faults, 64, system, 3);
            BurstFileWriter writer(path, written, system, 64, 64, {});
            writer.append(simulated.burst, simulated.truth);
            writer.commit();
            const BurstFileReader reader(path, {});
            const Instrument &read = reader.instrument();
            EXPECT_EQ(read.instrumentType, 16);
            EXPECT_EQ(read.beams, beams);
            EXPECT_EQ(read.beamAzimuth, written.beamAzimuth);
            EXPECT_EQ(read.cellSize, written.cellSize);
            EXPECT_EQ(read.rollOffset, written.rollOffset);
            ASSERT_TRUE(read.profile);
            EXPECT_EQ(read.profile->cells, 12U);
            EXPECT_EQ(read.profile->blanking, 0.25);
            EXPECT_EQ(read.profile->trackTimeOffset, 0.125);
            EXPECT_EQ(read.profile->ambiguityVelocity, 2.5);
            EXPECT_EQ(reader.velocitySystem(), system);
            EXPECT_TRUE(reader.hasTrack());
            const Burst burst = reader.readBurst(0);
            ASSERT_TRUE(burst.profile);
            EXPECT_EQ(burst.surfaceTrack.size(), 64U);
            EXPECT_EQ(burst.profile->correlation, simulated.burst.profile->correlation);
            EXPECT_EQ(burst.profile->amplitude, simulated.burst.profile->amplitude);
            ASSERT_EQ(burst.profile->velocity.size(), simulated.burst.profile->velocity.size());
            for (std::size_t i = 0; i < burst.profile->velocity.size(); ++i) {
                const float was = simulated.burst.profile->velocity[i];
                const float is = burst.profile->velocity[i];
                EXPECT_TRUE(std::isnan(was) ? std::isnan(is) : std::abs(was - is) <= 0.00051F)
                    << was << " " << is;
            }
        }
    }
}

TEST_F(ProfileFile, DimensionsInAnyOrder) {
    const std::size_t total = 2 * 3 * kCells * kSamples;
    {
        NcSketch file(path);
        base(file);
        file.variable("velocity_beam", {"burst", "beam", "cell", "sample"}, "mm/s", numbers(total));
        file.variable("correlation", {"cell", "burst", "sample", "beam"}, "1",
                      std::vector<double>(total, 0.5));
    }
    const Burst burst = BurstFileReader(path, {}).readBurst(1);
    ASSERT_TRUE(burst.profile);
    for (std::size_t i = 0; i < kSamples; ++i) {
        for (std::size_t b = 0; b < 3; ++b) {
            for (std::size_t c = 0; c < kCells; ++c) {
                const double place = static_cast<double>(((3 + b) * kCells + c) * kSamples + i);
                EXPECT_NEAR(
                    static_cast<double>(burst.profile->velocity[burst.profile->at(i, b, c)]),
                    0.001 * place, 1e-6);
            }
        }
    }
    EXPECT_EQ(burst.profile->correlation.at(0), 50);
    EXPECT_TRUE(burst.profile->amplitude.empty());
}

TEST_F(ProfileFile, TheWantedVelocitiesAreTaken) {
    const std::size_t total = 2 * 3 * kCells * kSamples;
    {
        NcSketch file(path);
        base(file);
        file.variable("velocity_beam", {"burst", "sample", "beam", "cell"}, "m s-1",
                      numbers(total));
        file.variable("velocity_enu", {"burst", "sample", "enu", "cell"}, "m s-1", numbers(total));
    }
    EXPECT_EQ(BurstFileReader(path, {}).velocitySystem(), VelocitySystem::beam);
    EXPECT_EQ(BurstFileReader(path, {}, VelocitySystem::enu).velocitySystem(), VelocitySystem::enu);
    EXPECT_NE(messageOf({}, VelocitySystem::xyz).find("no velocities along the instrument's axes"),
              std::string::npos);
}

TEST_F(ProfileFile, APressureWithoutAZeroTakesTheMeanThatIsGiven) {
    {
        NcSketch file(path);
        base(file);
        file.variable("velocity_beam", {"burst", "sample", "beam", "cell"}, "m s-1",
                      numbers(2 * 3 * kCells * kSamples));
    }
    const Burst burst = BurstFileReader(path, {{"pressure_mean", "0.5"}}).readBurst(1);
    EXPECT_FLOAT_EQ(burst.pressure[0], -0.5F);
    EXPECT_FLOAT_EQ(burst.pressure[1], 1.5F);
}

TEST_F(ProfileFile, WhatDoesNotFitIsNamed) {
    const std::size_t total = 2 * kSamples * kCells;
    {
        NcSketch file(path);
        base(file, 5);
        file.variable("velocity_beam", {"burst", "sample", "beam", "cell"}, "m s-1",
                      numbers(5 * total));
    }
    expectMessage("dimension beam");
    expectMessage("3 or 4 beams");
    std::filesystem::remove(path);
    {
        NcSketch file(path);
        base(file);
        file.variable("velocity_beam", {"burst", "sample", "beam", "cell"}, "m s-1",
                      numbers(3 * total));
        file.variable("cell_distance", {"cell"}, "m", {0.75, 1.3});
    }
    expectMessage("cell_distance");
    expectMessage("cell 1 is 1.3");
    expectMessage("profiles are type 16", {{"instrument_type", "3"}});
    expectMessage("beam_azimuth", {{"beam_azimuth", "0,90,180,270"}});
    expectMessage("has 4 angles, the instrument has 3 beams", {{"beam_azimuth", "0,90,180,270"}});
    std::filesystem::remove(path);
    {
        NcSketch file(path);
        base(file);
        file.variable("velocity_enu", {"burst", "sample", "enu", "cell"}, "m s-1",
                      numbers(3 * total));
        file.variable("amplitude", {"burst", "sample", "other", "cell"}, "count",
                      numbers(5 * total));
    }
    expectMessage("amplitude");
    expectMessage("(burst, sample, other, cell)");
}

// A matrix of nine numbers says where three beams point, not where four do.
TEST_F(ProfileFile, FourBeamsNeedTheirAzimuths) {
    for (const std::size_t beams : {std::size_t{3}, std::size_t{4}}) {
        std::filesystem::remove(path);
        {
            NcSketch file(path);
            base(file, beams);
            file.variable("velocity_beam", {"burst", "sample", "beam", "cell"}, "m s-1",
                          numbers(2 * kSamples * kCells * beams));
        }
        try {
            BurstFileReader(path, {}).requireBeams();
            FAIL() << "nobody said where the beams point";
        } catch (const MissingFact &error) {
            EXPECT_EQ(error.fact(), "beam_azimuth");
            const std::string message = error.what();
            EXPECT_EQ(message.find("beam_to_xyz") != std::string::npos, beams == 3) << message;
        }
    }
}

TEST_F(ProfileFile, CellsWithoutASizeOrCellsWithoutProfiles) {
    {
        NcSketch file(path);
        file.dimension("burst", 1)
            .dimension("sample", kSamples)
            .dimension("beam", 3)
            .dimension("cell", kCells);
        file.scalar("sampling_rate", "Hz", 2.0);
        file.variable("pressure", {"burst", "sample"}, "dbar", {1, 2, 3, 4});
        file.variable("velocity_beam", {"burst", "sample", "beam", "cell"}, "m s-1",
                      numbers(3 * kSamples * kCells));
    }
    expectMessage("cell_size is missing");
    std::filesystem::remove(path);
    {
        NcSketch file(path);
        file.dimension("burst", 1).dimension("sample", kSamples).dimension("beam", 3);
        file.scalar("sampling_rate", "Hz", 2.0).scalar("instrument_type", "1", 16.0);
        file.variable("pressure", {"burst", "sample"}, "dbar", {1, 2, 3, 4});
    }
    expectMessage("no dimension cell");
}

} // namespace
