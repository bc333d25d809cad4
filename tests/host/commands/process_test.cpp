// `orvik process`: the table, the result file, and deployments with bad bursts.
#include <algorithm>
#include <cmath>
#include <filesystem>

#include <gtest/gtest.h>

#include "burst/burst_file.hpp"
#include "host/burst/scratch_directory.hpp"
#include "host/commands/program.hpp"
#include "netcdf/nc_file.hpp"
#include "results/result_file.hpp"
#include "simulate/sea.hpp"

namespace {

using orvik::NcReader;
using orvik::test::holds;
using orvik::test::orvik;
using orvik::test::Outcome;

class Process : public testing::Test {
protected:
    ::orvik::test::ScratchDirectory directory;
    std::string sea = directory.file("sea.nc");
    std::string result = directory.file("result.nc");

    void simulate(std::vector<std::string> more) const {
        std::vector<std::string> arguments{"simulate", "-o",         sea,    "--bursts",
                                           "4",        "--interval", "21600"};
        arguments.insert(arguments.end(), more.begin(), more.end());
        ASSERT_EQ(orvik(arguments).exitCode, 0);
    }
    static std::vector<double> values(const NcReader &file, const std::string &name) {
        const auto variable = file.find(name);
        EXPECT_TRUE(variable.has_value()) << name;
        return variable ? file.readAll(*variable) : std::vector<double>{};
    }
};

TEST_F(Process, VersionNamesProgramAndLibrary) {
    const Outcome outcome = orvik({"--version"});
    EXPECT_EQ(outcome.exitCode, 0);
    EXPECT_EQ(outcome.output.rfind("orvik 4.15", 0), 0U) << outcome.output;
}

TEST_F(Process, ResultsAgreeWithTheTruthTheyCarry) {
    simulate({});
    const Outcome outcome = orvik({"process", sea, "-o", result});
    ASSERT_EQ(outcome.exitCode, 0) << outcome.errors;
    EXPECT_TRUE(holds(outcome.output, "errors against the truth"));
    EXPECT_EQ(std::count(outcome.output.begin(), outcome.output.end(), '\n'), 2 + 4 + 1 + 1 + 6);
    const NcReader file(result);
    const auto height = values(file, "hm0");
    const auto realised = values(file, "true_realised_height");
    const auto direction = values(file, "mean_direction");
    const auto trueDirection = values(file, "true_mean_direction");
    ASSERT_EQ(height.size(), 4U);
    for (std::size_t i = 0; i < 4; ++i) {
        EXPECT_NEAR(height[i] / realised[i], 1.0, 0.08);
        EXPECT_NEAR(std::remainder(direction[i] - trueDirection[i], 360.0), 0.0, 8.0);
    }
    EXPECT_EQ(values(file, "time")[1] - values(file, "time")[0], 21600.0);
    EXPECT_EQ(values(file, "method_used")[0], 4.0);
}

// sum of efth over directions = variance density; its sum over frequency = (Hm0 / 4)^2.
TEST_F(Process, SpectraHoldTheSameEnergy) {
    simulate({});
    ASSERT_EQ(
        orvik({"process", sea, "-o", result, "--quiet", "--directions", "72", "--method", "1"})
            .exitCode,
        0);
    const NcReader file(result);
    const auto efth = values(file, "efth");
    const auto density = values(file, "variance_density");
    const auto freq = values(file, "freq");
    const auto height = values(file, "hm0");
    ASSERT_EQ(file.dimensionLength("dir"), 72U);
    ASSERT_EQ(efth.size(), 4 * freq.size() * 72);
    for (std::size_t burst = 0; burst < 4; ++burst) {
        double m0 = 0.0;
        for (std::size_t f = 0; f < freq.size(); ++f) {
            double sum = 0.0;
            for (std::size_t d = 0; d < 72; ++d) {
                sum += efth[(burst * freq.size() + f) * 72 + d] * 5.0;
            }
            const double expected = density[burst * freq.size() + f];
            EXPECT_NEAR(sum, expected, 1e-3 * expected + 1e-9);
            m0 += sum * 0.01;
        }
        EXPECT_NEAR(4.0 * std::sqrt(m0), height[burst], 0.02 * height[burst]);
    }
}

TEST_F(Process, FilesDescribeThemselves) {
    simulate({});
    ASSERT_EQ(orvik({"process", sea, "-o", result, "--set", "cell_range=7", "--quiet"}).exitCode,
              0);
    const NcReader file(result);
    EXPECT_EQ(file.text(nullptr, "burst_file"), "sea.nc");
    EXPECT_EQ(file.text(nullptr, "values_given"), "cell_range=7");
    EXPECT_EQ(file.text(nullptr, "processing_method"), "4");
    for (const auto &variable : file.variables()) {
        const bool isBounds = variable.name == "time_bnds"; // they have the attributes of time
        const bool isText = variable.type == NC_STRING;
        EXPECT_EQ(file.text(&variable, "units").has_value(), !isBounds && !isText) << variable.name;
        EXPECT_EQ(file.text(&variable, "long_name").has_value(), !isBounds) << variable.name;
    }
    const auto direction = file.find("mean_direction");
    EXPECT_EQ(file.text(&*direction, "standard_name"), "sea_surface_wave_from_direction");
    const auto flags = file.find("quality_flag");
    const std::string meanings = file.text(&*flags, "flag_meanings").value_or("");
    EXPECT_EQ(std::count(meanings.begin(), meanings.end(), ' ') + 1, 12);
}

TEST_F(Process, GoingToTurnsDirectionsAndTheirNames) {
    simulate({});
    ASSERT_EQ(orvik({"process", sea, "-o", result, "--quiet"}).exitCode, 0);
    const std::string other = directory.file("to.nc");
    const Outcome outcome = orvik({"process", sea, "-o", other, "--going-to"});
    ASSERT_EQ(outcome.exitCode, 0);
    const NcReader from(result);
    const NcReader to(other);
    for (std::size_t i = 0; i < 4; ++i) {
        const double turn = values(to, "mean_direction")[i] - values(from, "mean_direction")[i];
        EXPECT_NEAR(std::remainder(turn - 180.0, 360.0), 0.0, 1e-3);
    }
    const auto direction = to.find("mean_direction");
    EXPECT_EQ(to.text(&*direction, "standard_name"), "sea_surface_wave_to_direction");
    const auto peak = to.find("peak_direction");
    EXPECT_FALSE(to.text(&*peak, "standard_name").has_value());
}

// One burst of holes, one without a compass: both are flagged rows, and the deployment goes on.
TEST_F(Process, BadBurstsDoNotStopADeployment) {
    ::orvik::Instrument instrument;
    instrument.samplingRate = 2.0;
    instrument.trackSamplingRate = 4.0;
    instrument.beamAzimuth = {0.0, 120.0, 240.0};
    instrument.cellRange = 7.0;
    ::orvik::SeaState state;
    state.systems = {::orvik::WaveSystem{}};
    {
        ::orvik::BurstFileWriter writer(sea, instrument, ::orvik::VelocitySystem::beam, 1024, 2048,
                                        {});
        for (std::uint64_t index = 0; index < 4; ++index) {
            auto simulated = ::orvik::simulateBurst(instrument, state, {}, 1024,
                                                    ::orvik::VelocitySystem::beam, index);
            simulated.burst.startTime = 3600.0 * static_cast<double>(index);
            if (index == 1) {
                std::fill_n(simulated.burst.pressure.begin(), 200, std::nanf(""));
            } else if (index == 2) {
                simulated.burst.heading = ::orvik::kUnknown;
            }
            writer.append(simulated.burst, simulated.truth);
        }
        writer.commit();
    }
    const Outcome outcome = orvik({"process", sea, "-o", result});
    EXPECT_EQ(outcome.exitCode, 0);
    EXPECT_TRUE(holds(outcome.errors, "burst 1 has no results: more than 10 %")) << outcome.errors;
    EXPECT_TRUE(holds(outcome.errors, "burst 2 has no results: heading")) << outcome.errors;
    EXPECT_TRUE(holds(outcome.errors, "2 of 4 bursts have no results")) << outcome.errors;
    const NcReader file(result);
    const auto height = values(file, "hm0");
    const auto flags = values(file, "quality_flag");
    const auto density = values(file, "variance_density");
    EXPECT_TRUE(std::isfinite(height[0]) && std::isfinite(height[3]));
    EXPECT_TRUE(std::isnan(height[1]) && std::isnan(height[2]));
    EXPECT_EQ(flags, (std::vector<double>{0, OV_FLAG_NO_RESULT, OV_FLAG_NO_RESULT, 0}));
    const std::size_t bins = density.size() / 4;
    EXPECT_TRUE(std::all_of(density.begin() + static_cast<std::ptrdiff_t>(bins),
                            density.begin() + static_cast<std::ptrdiff_t>(3 * bins),
                            [](double x) { return std::isnan(x); }));
}

// The library's -9 never reaches a file.
TEST_F(Process, MissingResultsAreFill) {
    simulate({"--velocity-system", "enu"});
    for (const char *method : {"1", "2", "3", "4"}) {
        ASSERT_EQ(orvik({"process", sea, "-o", result, "--quiet", "--method", method}).exitCode, 0);
        const NcReader file(result);
        for (const auto &variable : file.variables()) {
            if (variable.type == NC_STRING) {
                continue;
            }
            const auto all = file.readAll(variable);
            EXPECT_EQ(std::count(all.begin(), all.end(), -9.0), 0) << variable.name;
        }
    }
}

TEST_F(Process, LimitsOfTheSamplingRateAreSaid) {
    simulate({"--rate", "1"});
    const Outcome outcome = orvik({"process", sea, "-o", result, "--freq-max", "0.8", "--quiet"});
    EXPECT_EQ(outcome.exitCode, 0);
    EXPECT_TRUE(outcome.output.empty());
    EXPECT_TRUE(holds(outcome.errors, "--freq-max 0.8")) << outcome.errors;
    EXPECT_TRUE(holds(outcome.errors, "0.49 Hz is used")) << outcome.errors;
}

} // namespace
