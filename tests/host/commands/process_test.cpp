// `orvik process`: the table, the result file, and deployments with bad bursts.
#include <algorithm>
#include <cmath>
#include <filesystem>
#include <limits>

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

// With fine steps the axes end where their bins do, whatever becomes of a burst.
TEST_F(Process, FineStepsKeepTheirBinsThroughFallbacksAndTurns) {
    simulate({"--track-drop", "1"});
    EXPECT_EQ(orvik({"process", sea, "-o", result, "--freq-step", "0.002"}).exitCode, 0);
    simulate({});
    ASSERT_EQ(orvik({"process", sea, "-o", result, "--freq-step", "0.002", "--going-to"}).exitCode,
              0);
    const NcReader file(result);
    const std::vector<double> coefficients = values(file, "a1");
    const std::vector<double> distribution = values(file, "efth");
    for (std::size_t i = 0; i < coefficients.size(); ++i) {
        EXPECT_EQ(std::isfinite(distribution.at(i * 90)), std::isfinite(coefficients[i])) << i;
    }
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
    const NcReader bursts(sea);
    for (const ::orvik::TruthVariable &variable : ::orvik::kTruthVariables) {
        const auto told = values(bursts, variable.name);
        const auto kept = values(file, variable.name);
        for (std::size_t i = 0; i < 4; ++i) {
            EXPECT_FLOAT_EQ(static_cast<float>(kept[i]), static_cast<float>(told[i]))
                << variable.name;
        }
    }
    for (std::size_t i = 0; i < 4; ++i) {
        EXPECT_NEAR(values(file, "water_depth")[i], values(file, "true_water_depth")[i], 0.2);
    }
}

TEST_F(Process, AxesAndAveragingAreAsAsked) {
    simulate({});
    ASSERT_EQ(orvik({"process", sea, "-o", result, "--quiet", "--freq-min", "0.05", "--freq-max",
                     "0.46", "--freq-step", "0.02", "--band-width", "8"})
                  .exitCode,
              0);
    {
        const NcReader file(result);
        for (const char *axis : {"freq", "freq_surface_track"}) {
            const std::vector<double> frequencies = values(file, axis);
            ASSERT_EQ(frequencies.size(), 21U) << axis;
            EXPECT_NEAR(frequencies.front(), 0.05, 1e-6) << axis;
            EXPECT_NEAR(frequencies.back(), 0.45, 1e-6) << axis;
        }
        EXPECT_TRUE(
            holds(*file.text(nullptr, "processing_parameters"), "dirBandWidth 8, specBandWidth 8"));
    }
    const Outcome outcome = orvik(
        {"process", sea, "-o", result, "--quiet", "--freq-max", "0.5", "--track-freq-max", "0.8"});
    ASSERT_EQ(outcome.exitCode, 0);
    EXPECT_TRUE(outcome.errors.empty()) << outcome.errors;
    const NcReader file(result);
    EXPECT_NEAR(values(file, "freq").back(), 0.5, 1e-6);
    EXPECT_NEAR(values(file, "freq_surface_track").back(), 0.8, 1e-6);
}

TEST_F(Process, TheSpectrumComesFromTheSourceAskedFor) {
    simulate({});
    const std::vector<std::pair<std::string, double>> sources{{"pressure", OV_SOURCE_PRESSURE},
                                                              {"velocity", OV_SOURCE_VELOCITY},
                                                              {"best", OV_SOURCE_SURFACE_TRACK}};
    for (const auto &[source, number] : sources) {
        ASSERT_EQ(orvik({"process", sea, "-o", result, "--quiet", "--source", source}).exitCode, 0);
        const NcReader file(result);
        EXPECT_EQ(values(file, "spectrum_source"), std::vector<double>(4, number)) << source;
    }
}

TEST_F(Process, TheMethodSuitsTheVelocities) {
    for (const auto &[system, method] :
         {std::pair("beam", "4"), std::pair("xyz", "4"), std::pair("enu", "2")}) {
        simulate({"--velocity-system", system});
        ASSERT_EQ(orvik({"process", sea, "-o", result, "--quiet", "--velocities", system}).exitCode,
                  0);
        EXPECT_EQ(NcReader(result).text(nullptr, "processing_method"), method) << system;
    }
}

TEST_F(Process, OptionsOfProfilesAndPlaces) {
    simulate({"--instrument-type", "16", "--samples", "1024"});
    std::vector<double> cells;
    for (const char *margin : {"90", "45"}) {
        ASSERT_EQ(orvik({"process", sea, "-o", result, "--quiet", "--trough-margin", margin,
                         "--set", "longitude=4.25", "--set", "latitude=52.5"})
                      .exitCode,
                  0);
        const NcReader file(result);
        cells.push_back(values(file, "cell_used")[0]);
        EXPECT_EQ(values(file, "longitude"), std::vector<double>{4.25});
        EXPECT_EQ(values(file, "latitude"), std::vector<double>{52.5});
    }
    EXPECT_GT(cells[1], 0.0);
    EXPECT_LT(cells[1], 0.7 * cells[0]);
}

// What every burst has in common is said once, and kept with each of them.
TEST_F(Process, NotesAreSaidOnceAndKept) {
    simulate({"--samples", "1500"});
    const Outcome outcome = orvik({"process", sea, "-o", result, "--quiet"});
    ASSERT_EQ(outcome.exitCode, 0);
    EXPECT_EQ(outcome.errors,
              "orvik: note: only the first 1024 of 1500 samples of a burst are used\n");
    const Outcome explained = orvik({"explain", result, "--burst", "2"});
    EXPECT_TRUE(holds(explained.output, "only the first 1024 of 1500 samples")) << explained.output;
}

TEST_F(Process, OtherOutputsComeWithTheRun) {
    simulate({});
    const std::string csv = directory.file("waves.csv");
    ASSERT_EQ(orvik({"process", sea, "-o", result, "--quiet", "--csv", csv}).exitCode, 0);
    const std::string text = ::orvik::test::contentOf(csv);
    EXPECT_EQ(std::count(text.begin(), text.end(), '\n'), 5);
    // Refused before hours of work, not after.
    const std::string late = directory.file("late.nc");
    EXPECT_EQ(orvik({"process", sea, "-o", late, "--quiet", "--csv", late}).exitCode, 2);
    EXPECT_FALSE(std::filesystem::exists(late));
}

TEST_F(Process, OutputThatNobodyCanTakeIsAFailure) {
    simulate({});
    const auto full = [] {
        const int device = open("/dev/full", O_WRONLY);
        dup2(device, STDOUT_FILENO);
    };
    const Outcome outcome = orvik({"show", sea}, full);
    EXPECT_EQ(outcome.exitCode, 1);
    EXPECT_TRUE(holds(outcome.errors, "cannot write to standard output")) << outcome.errors;
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
    double median = 360.0; // the truth is turned with them
    const std::size_t at = outcome.output.find("mean direction  ");
    ASSERT_NE(at, std::string::npos);
    ASSERT_EQ(std::sscanf(outcome.output.c_str() + at, "mean direction %lf", &median), 1);
    EXPECT_LT(median, 8.0);
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

// One sample, fact or truth that no variable of the results can hold does not take all other bursts with it.
TEST_F(Process, NumbersBeyondSinglePrecisionAreMissing) {
    simulate({});
    int file = -1;
    ASSERT_EQ(nc_open(sea.c_str(), NC_WRITE, &file), NC_NOERR);
    const auto put = [file](const char *name, std::vector<std::size_t> place, double value) {
        int variable = -1;
        ASSERT_EQ(nc_inq_varid(file, name, &variable), NC_NOERR) << name;
        ASSERT_EQ(nc_put_var1_double(file, variable, place.data(), &value), NC_NOERR) << name;
    };
    put("velocity_beam", {1, 5, 0}, std::numeric_limits<float>::max());
    put("true_peak_period", {2}, 1e300);
    put("true_water_depth", {2}, std::numeric_limits<double>::infinity());
    ASSERT_EQ(nc_close(file), NC_NOERR);
    const Outcome outcome =
        orvik({"process", sea, "-o", result, "--quiet", "--set", "roll=1e39", "--method", "1",
               "--set", "pressure_sensor_height_above_bed=1e300"});
    ASSERT_EQ(outcome.exitCode, 0) << outcome.errors;
    const NcReader results(result);
    for (const char *name : {"roll", "water_depth"}) {
        for (const double value : values(results, name)) {
            EXPECT_TRUE(std::isnan(value)) << name << " " << value;
        }
    }
    for (const char *name : {"current_speed", "current_direction"}) {
        EXPECT_TRUE(std::isnan(values(results, name).at(1))) << name;
    }
    for (const char *name : {"true_peak_period", "true_water_depth"}) {
        const std::vector<double> truth = values(results, name);
        EXPECT_TRUE(std::isfinite(truth.at(1)) && std::isnan(truth.at(2))) << name;
    }
}

TEST_F(Process, LimitsOfTheSamplingRateAreSaid) {
    simulate({"--rate", "1"});
    const Outcome outcome = orvik({"process", sea, "-o", result, "--freq-max", "0.8", "--quiet"});
    EXPECT_EQ(outcome.exitCode, 0);
    EXPECT_TRUE(outcome.output.empty());
    EXPECT_TRUE(holds(outcome.errors, "--freq-max 0.8")) << outcome.errors;
    EXPECT_TRUE(holds(outcome.errors, "0.49 Hz is used")) << outcome.errors;
    const Outcome track =
        orvik({"process", sea, "-o", result, "--track-freq-max", "1.5", "--quiet"});
    EXPECT_TRUE(holds(track.errors, "--track-freq-max 1.5")) << track.errors;
}

} // namespace
