// Result files, and what is made of them, read back by programs that are not orvik.
#include <filesystem>
#include <fstream>
#include <map>
#include <sstream>

#include <sys/resource.h>

#include <gtest/gtest.h>

#include "host/burst/nc_sketch.hpp"
#include "host/burst/scratch_directory.hpp"
#include "host/commands/program.hpp"
#include "host/results/sample_results.hpp"
#include "netcdf/nc_file.hpp"
#include "results/burst_table.hpp"
#include "results/explanation.hpp"
#include "results/exports.hpp"
#include "user_error.hpp"

namespace {

using orvik::ExportPaths;
using orvik::test::contentOf;
using orvik::test::holds;
using orvik::test::orvik;
using orvik::test::Outcome;

class Results : public testing::Test {
protected:
    ::orvik::test::ScratchDirectory directory;
    std::string waves = directory.file("waves.nc");
    ExportPaths paths{directory.file("w.spc"), directory.file("ww3.nc"), directory.file("w.csv"),
                      directory.file("w.json")};

    void SetUp() override { ::orvik::test::writeSampleResults(waves); }

    static bool runs(const std::string &arguments) {
        const std::string command = std::string(ORVIK_PYTHON) + " " + arguments + " 2>&1";
        return std::system(command.c_str()) == 0;
    }
    // Runs a check of result_files.py; what it says goes to the test's own output.
    static void check(const std::string &what, const std::string &files) {
        if (!runs("-c 'import netCDF4, xarray'")) {
            GTEST_SKIP() << "Python's netCDF4 and xarray are not installed";
        }
        EXPECT_TRUE(runs(std::string(ORVIK_RESULT_CHECKS) + " " + what + " " + files)) << what;
    }
    [[nodiscard]] std::string explain(std::size_t burst) const {
        const ::orvik::ResultReader results(waves);
        return ::orvik::explanationOf(results, results.read(burst));
    }
    // The same on one line, with single blanks.
    [[nodiscard]] std::string explainInOneLine(std::size_t burst) const {
        std::istringstream words(explain(burst));
        std::string line;
        for (std::string word; words >> word;) {
            line += word + ' ';
        }
        return line;
    }
    [[nodiscard]] std::size_t filesThere() const {
        const auto folder = std::filesystem::path(waves).parent_path();
        return static_cast<std::size_t>(
            std::distance(std::filesystem::directory_iterator(folder), {}));
    }
};

TEST_F(Results, NamesAndUnitsAreThoseOfTheConventions) { check("names", waves); }

TEST_F(Results, FlagsMeanWhatHappened) { check("flags", waves); }

TEST_F(Results, ParametersFollowFromTheSpectra) {
    check("moments", waves);
    check("tails", waves);
}

TEST_F(Results, OpenInXarray) {
    check("decodes", waves);
    check("dispersion", waves);
}

TEST_F(Results, WaveModelsGetTheSameSea) {
    EXPECT_TRUE(::orvik::exportResults(waves, paths).empty());
    check("swan", waves + " " + paths.swan);
    check("ww3", waves + " " + paths.ww3);
}

// An odd number of directions puts turned ones between the old ones.
TEST_F(Results, WaveModelsGetTheirOwnSenseOfDirection) {
    ::orvik::ProcessingChoices choices;
    choices.comingFrom = false;
    choices.nDirections = 45;
    ::orvik::test::writeSampleResults(waves, choices);
    ::orvik::exportResults(waves, paths);
    check("swan", waves + " " + paths.swan);
    check("ww3", waves + " " + paths.ww3);
}

TEST_F(Results, TextsHoldEveryNumber) {
    ::orvik::exportResults(waves, paths);
    check("texts", waves + " " + paths.csv + " " + paths.json);
}

TEST_F(Results, SameBytesEveryTime) {
    const std::string again = directory.file("again.nc");
    ::orvik::test::writeSampleResults(again);
    EXPECT_EQ(contentOf(waves), contentOf(again));
    ::orvik::exportResults(waves, paths);
    const std::string before = contentOf(paths.ww3) + contentOf(paths.swan);
    ::orvik::exportResults(waves, paths);
    EXPECT_EQ(before, contentOf(paths.ww3) + contentOf(paths.swan));
}

TEST_F(Results, NothingIsLeftOfAnExportThatFails) {
    paths.json = directory.file("no/such/folder.json");
    EXPECT_THROW(::orvik::exportResults(waves, paths), ::orvik::UserError);
    EXPECT_EQ(filesThere(), 1U);
}

// Raw data cannot be measured again; links and other spellings are the same file.
TEST_F(Results, WhatIsReadIsNotOverwritten) {
    const std::string raw = directory.file("raw.csv");
    std::ofstream(raw) << "time\n";
    std::filesystem::create_symlink(raw, directory.file("soft.csv"));
    std::filesystem::create_hard_link(raw, directory.file("hard.csv"));
    for (const char *name : {"raw.csv", "./raw.csv", "soft.csv", "hard.csv"}) {
        paths.csv = directory.file(name);
        try {
            ::orvik::checkExportPaths(paths, directory.file("new.nc"), {waves, raw});
            ADD_FAILURE() << name;
        } catch (const ::orvik::UsageError &error) {
            EXPECT_TRUE(holds(error.what(),
                              "--csv " + paths.csv + " would overwrite the input file " + raw))
                << error.what();
        }
    }
    paths.csv = directory.file("w.csv");
    EXPECT_NO_THROW(::orvik::checkExportPaths(paths, directory.file("new.nc"), {waves, raw}));
    EXPECT_THROW(::orvik::checkExportPaths(paths, waves, {waves, raw}), ::orvik::UsageError);
}

// A run keeps its finished bursts beside its output, and would begin by emptying what it finds there.
TEST_F(Results, WhatIsKeptForResumeTakesNoOthersPlace) {
    const std::string output = directory.file("new.nc");
    std::filesystem::create_symlink(output, directory.file("link.nc"));
    for (const std::string &name : {output, directory.file("link.nc")}) {
        EXPECT_THROW(::orvik::checkExportPaths({}, name, {waves, output + ".unfinished"}),
                     ::orvik::UsageError);
        ExportPaths exports;
        exports.csv = output + ".unfinished";
        EXPECT_THROW(::orvik::checkExportPaths(exports, name, {waves}), ::orvik::UsageError);
    }
}

struct Shape {
    std::string variable;
    std::vector<std::string> dimensions;
    nc_type type;
    std::string message;
    std::size_t directions = 4;
};

// The variables that every result file has, but for one that is shaped otherwise and never written.
void writeShaped(const std::string &path, const Shape &shape) {
    ::orvik::test::NcSketch file(path);
    const std::map<std::string, std::size_t> lengths{
        {"time", 1}, {"freq", 2}, {"dir", shape.directions}, {"more", 3}};
    for (const auto &[name, length] : lengths) {
        file.dimension(name, length);
    }
    const auto unitsOf = [](const std::string &name) {
        return name == "time" ? "seconds since 1970-01-01" : "1";
    };
    file.variable(shape.variable, shape.dimensions, unitsOf(shape.variable), {}, shape.type);
    for (const std::string name : {"time", "freq", "dir", "hm0", "burst", "quality_flag", "efth"}) {
        const bool isAxis = lengths.count(name) > 0;
        const std::vector<std::string> dimensions =
            isAxis           ? std::vector<std::string>{name}
            : name == "efth" ? std::vector<std::string>{"time", "freq", "dir"}
                             : std::vector<std::string>{"time"};
        if (name != shape.variable) {
            const std::size_t size = isAxis ? lengths.at(name) : name == "efth" ? 0 : 1;
            file.variable(name, dimensions, unitsOf(name), std::vector<double>(size, 1.0));
        }
    }
}

// As other programs leave result files that cut, merge or turn them.
TEST_F(Results, FilesOfAnotherShapeAreNamed) {
    const std::string path = directory.file("shaped.nc");
    for (const Shape &shape : std::vector<Shape>{
             {"efth",
              {"time", "more", "freq", "dir"},
              NC_FLOAT,
              "has the dimensions (time, more, freq, dir) instead of (time, freq, dir)"},
             {"efth", {"time", "dir", "freq"}, NC_FLOAT, "has the dimensions (time, dir, freq)"},
             {"time", {}, NC_DOUBLE, "has the dimensions () instead of (time)"},
             {"freq", {"more"}, NC_FLOAT, "has the dimensions (more) instead of (freq)"},
             {"rejection_reason", {"time", "more"}, NC_STRING, "has the dimensions (time, more)"},
             {"freq", {"freq"}, NC_FLOAT, "lacks values"},
             {"dir", {"dir"}, NC_FLOAT, "is empty", 0}}) {
        writeShaped(path, shape);
        for (const char *option : {"--swan", "--ww3", "--json"}) {
            const Outcome outcome = orvik({"convert", path, option, directory.file("out")});
            EXPECT_EQ(outcome.exitCode, 1) << shape.message;
            EXPECT_TRUE(holds(outcome.errors, shape.variable + " of " + path + " " + shape.message))
                << outcome.errors;
        }
    }
}

TEST_F(Results, LinksToAFileAreThatFile) {
    paths.csv = directory.file("hard.nc");
    std::filesystem::create_hard_link(waves, paths.csv);
    EXPECT_THROW(::orvik::checkExportPaths(paths, waves), ::orvik::UsageError);
}

TEST_F(Results, AnExportWithoutFolderIsRefusedAtOnce) {
    for (const char *folder : {"missing", "waves.nc"}) {
        paths.json = directory.file(folder) + "/w.json";
        try {
            ::orvik::checkExportPaths(paths, directory.file("new.nc"));
            ADD_FAILURE() << folder;
        } catch (const ::orvik::UserError &error) {
            EXPECT_TRUE(holds(error.what(), "--json " + paths.json)) << error.what();
            EXPECT_TRUE(holds(error.what(), "no folder " + directory.file(folder)));
        }
    }
}

// As programs that merge or cut files write times anew: the same times, but for rounding.
TEST_F(Results, TimesAreReadInTheirOwnUnit) {
    ::orvik::exportResults(waves, paths);
    const std::string before = contentOf(paths.csv) + contentOf(paths.swan) + explain(4);
    int file = -1;
    int time = -1;
    ASSERT_EQ(nc_open(waves.c_str(), NC_WRITE, &file), NC_NOERR);
    ASSERT_EQ(nc_inq_varid(file, "time", &time), NC_NOERR);
    const std::string units = "hours since 2023-11-14 03:00:00";
    ASSERT_EQ(nc_put_att_text(file, time, "units", units.size(), units.data()), NC_NOERR);
    for (std::size_t i = 0; i < ::orvik::test::kSampleBursts; ++i) {
        const double hours =
            (1.7e9 + 3600.0 * static_cast<double>(i) - 1699930800.0) / 3600.0; // of sampleBurst
        ASSERT_EQ(nc_put_var1_double(file, time, &i, &hours), NC_NOERR);
    }
    ASSERT_EQ(nc_close(file), NC_NOERR);
    ::orvik::exportResults(waves, paths);
    EXPECT_EQ(contentOf(paths.csv) + contentOf(paths.swan) + explain(4), before);
}

TEST(Times, AHairBeforeASecondIsThatSecond) {
    EXPECT_EQ(::orvik::timeText(1730765999.9999995), "2024-11-05 00:20:00");
    EXPECT_EQ(::orvik::isoTime(1730765999.9999995), "2024-11-05T00:20:00Z");
    EXPECT_EQ(::orvik::timeText(1730765999.999), "2024-11-05 00:19:59");
    EXPECT_EQ(::orvik::timeText(-1e-7), "1970-01-01 00:00:00");
    EXPECT_EQ(::orvik::timeText(253402300799.5), "-");
}

// The last bytes are those that find the disk full.
TEST_F(Results, TextsAreWholeOrNotThere) {
    ASSERT_EQ(orvik({"convert", waves, "--json", paths.json}).exitCode, 0);
    const auto size = std::filesystem::file_size(paths.json);
    std::filesystem::remove(paths.json);
    const Outcome outcome = orvik({"convert", waves, "--json", paths.json}, [size] {
        const rlimit most{size - 1, size - 1};
        setrlimit(RLIMIT_FSIZE, &most);
    });
    EXPECT_EQ(outcome.exitCode, 1);
    EXPECT_TRUE(holds(outcome.errors, "cannot write " + paths.json)) << outcome.errors;
    EXPECT_EQ(filesThere(), 1U);
}

// A logger that lost its clock: tables keep its bursts, wave models cannot.
TEST_F(Results, BurstsWithoutTime) {
    const auto write = [this](std::size_t timeless) {
        const ::orvik::Instrument instrument = ::orvik::test::sampleInstrument();
        ::orvik::BurstRunner runner(instrument, {});
        ::orvik::ResultFileWriter writer(waves, ::orvik::test::sampleLayout(runner, instrument));
        for (std::size_t index = 0; index < 2; ++index) {
            ::orvik::ResultRow row;
            row.burst = index;
            row.startTime = index < timeless ? ::orvik::kUnknown : 1.7e9;
            row.result.reason = "its \"clock\", they say";
            writer.append(row);
        }
        writer.commit();
    };
    write(1);
    check("timeless", waves);
    EXPECT_TRUE(holds(explain(0), ", time unknown")) << explain(0);
    EXPECT_TRUE(holds(orvik({"show", waves}).output, "    0  -  "))
        << orvik({"show", waves}).output;
    EXPECT_EQ(orvik({"report", waves, "-o", directory.file("page.html")}).exitCode, 0);
    const auto notes = ::orvik::exportResults(waves, paths);
    ASSERT_EQ(notes.size(), 2U);
    EXPECT_EQ(notes.front(), "1 of 2 bursts have no time and are not in " + paths.swan);
    EXPECT_FALSE(holds(contentOf(paths.swan), "- ")) << contentOf(paths.swan);
    EXPECT_EQ(::orvik::NcReader(paths.ww3).dimensionLength("time"), 1U);
    const std::string csv = contentOf(paths.csv);
    EXPECT_EQ(std::count(csv.begin(), csv.end(), '\n'), 3);
    EXPECT_TRUE(holds(csv, ",\"its \"\"clock\"\", they say\",")) << csv;
    write(2);
    EXPECT_THROW(::orvik::exportResults(waves, paths), ::orvik::UserError);
    paths.swan.clear();
    paths.ww3.clear();
    EXPECT_TRUE(::orvik::exportResults(waves, paths).empty());
}

// Wave models read from one time to the next, whatever the instrument's clock did; tables keep the order of the bursts.
TEST_F(Results, WaveModelsGetAscendingTimes) {
    const ::orvik::Instrument instrument = ::orvik::test::sampleInstrument();
    ::orvik::BurstRunner runner(instrument, {});
    ::orvik::ResultFileWriter writer(waves, ::orvik::test::sampleLayout(runner, instrument));
    std::size_t index = 0;
    for (const double time : {1.7e9 + 7200.0, 1.7e9, 1.7e9 + 3600.0, 1.7e9}) {
        ::orvik::ResultRow row;
        row.burst = index++;
        row.startTime = time;
        row.result.reason = "none";
        writer.append(row);
    }
    writer.commit();
    const auto notes = ::orvik::exportResults(waves, paths);
    ASSERT_EQ(notes.size(), 2U);
    EXPECT_EQ(notes.front(),
              "1 of 4 bursts have the time of another one and are not in " + paths.swan);
    std::istringstream swan(contentOf(paths.swan));
    std::vector<std::string> times;
    for (std::string line; std::getline(swan, line);) {
        if (holds(line, "date and time")) {
            times.push_back(line.substr(0, 15));
        }
    }
    EXPECT_EQ(times,
              (std::vector<std::string>{"20231114.221320", "20231114.231320", "20231115.001320"}));
    const ::orvik::NcReader ww3(paths.ww3);
    const std::vector<double> days = ww3.readAll(*ww3.find("time"));
    ASSERT_EQ(days.size(), 3U);
    EXPECT_NEAR(days[1] - days[0], 1.0 / 24.0, 1e-9);
    EXPECT_NEAR(days[2] - days[1], 1.0 / 24.0, 1e-9);
    const std::string csv = contentOf(paths.csv);
    EXPECT_LT(csv.find("2023-11-15"), csv.find("2023-11-14")) << csv;
}

TEST_F(Results, DegreesOfFreedomAreThoseOfTheAveraging) {
    ::orvik::ProcessingChoices choices;
    choices.specBandWidth = 64;
    ::orvik::test::writeSampleResults(waves, choices);
    EXPECT_TRUE(holds(explainInOneLine(0), "32 degrees of freedom")) << explain(0);
}

TEST_F(Results, WavesThatGoAreExplainedSo) {
    ::orvik::ProcessingChoices choices;
    choices.comingFrom = false;
    ::orvik::test::writeSampleResults(waves, choices);
    EXPECT_TRUE(holds(explainInOneLine(0), "Waves at the peak go to")) << explain(0);
}

TEST_F(Results, ConvertSaysWhatItCannotDo) {
    Outcome outcome = orvik({"convert", waves});
    EXPECT_EQ(outcome.exitCode, 2);
    EXPECT_TRUE(holds(outcome.errors, "--swan, --ww3, --csv or --json")) << outcome.errors;
    outcome = orvik({"convert", waves, "--csv", waves});
    EXPECT_EQ(outcome.exitCode, 2);
    EXPECT_TRUE(holds(outcome.errors, "are the same file")) << outcome.errors;
    outcome = orvik({"convert", waves, "--csv", directory.file("./waves.nc")});
    EXPECT_EQ(outcome.exitCode, 2) << "by another name";
    outcome = orvik({"convert", directory.file("none.nc"), "--csv", paths.csv});
    EXPECT_EQ(outcome.exitCode, 1);
    EXPECT_TRUE(holds(outcome.errors, "cannot open")) << outcome.errors;
    const std::string bursts = directory.file("bursts.nc");
    ASSERT_EQ(orvik({"simulate", "-o", bursts, "--bursts", "1"}).exitCode, 0);
    outcome = orvik({"convert", bursts, "--csv", paths.csv});
    EXPECT_EQ(outcome.exitCode, 1);
    EXPECT_TRUE(holds(outcome.errors, "has no variable freq")) << outcome.errors;
    EXPECT_EQ(orvik({"convert", waves, "--csv", paths.csv, "--swan", paths.swan}).exitCode, 0);
    EXPECT_FALSE(contentOf(paths.csv).empty() || contentOf(paths.swan).empty());
}

TEST_F(Results, GoodBurstExplained) {
    const std::string text = explainInOneLine(0);
    for (const char *part : {"2023-11-14 22:13:20 UTC, 512 s long", "Waves at the peak come from",
                             "In 95 of 100 cases", "16 degrees of freedom", "between 0.55 and 2.32",
                             "method 4, maximum likelihood", "energy from the surface track",
                             "Pressure was measured up to", "directions known below",
                             "6.3 m above the head", "repaired nothing", "flags none"}) {
        EXPECT_TRUE(holds(text, part)) << part << "\n" << text;
    }
    const std::string screen = explain(0);
    EXPECT_LE(std::count(screen.begin(), screen.end(), '\n'), 24);
}

TEST_F(Results, FlaggedBurstsExplained) {
    const std::string tilted = explainInOneLine(::orvik::test::kTilted);
    EXPECT_TRUE(holds(tilted, "tilt: The instrument was tilted by more than 10 degrees."));
    const std::string gappy = explainInOneLine(::orvik::test::kGappy);
    EXPECT_TRUE(holds(gappy, "7 missing samples filled with the one before")) << gappy;
    const std::string blind = explainInOneLine(::orvik::test::kNoTrack);
    EXPECT_TRUE(holds(blind, "instead of 4, because the surface track could not be used")) << blind;
    EXPECT_TRUE(holds(blind, "2048 surface-track samples had no echo")) << blind;
    EXPECT_TRUE(holds(blind, "energy from pressure: without a usable surface track")) << blind;
}

TEST_F(Results, RejectedBurstExplained) {
    const std::string text = explainInOneLine(::orvik::test::kHoles);
    EXPECT_TRUE(holds(text, "more than 10 % of the samples are missing")) << text;
    EXPECT_TRUE(holds(text, "204 of 1024 samples lack pressure or velocity")) << text;
    EXPECT_TRUE(holds(text, "no_result: The burst was rejected")) << text;
    EXPECT_FALSE(holds(text, "nan")) << text;
}

TEST_F(Results, ExplainFindsBurstsAndNamesWrongOnes) {
    Outcome outcome = orvik({"explain", waves, "--burst", "3"});
    EXPECT_EQ(outcome.exitCode, 0) << outcome.errors;
    EXPECT_EQ(outcome.output, explain(3));
    outcome = orvik({"explain", waves, "--burst", "5"});
    EXPECT_EQ(outcome.exitCode, 2);
    EXPECT_TRUE(holds(outcome.errors, "has 5 bursts, counted from 0")) << outcome.errors;
}

// As another program may cut it out of a deployment: bursts keep their numbers.
TEST_F(Results, PartsOfADeploymentKeepTheNumbersOfTheirBursts) {
    const ::orvik::Instrument instrument = ::orvik::test::sampleInstrument();
    ::orvik::BurstRunner runner(instrument, {});
    {
        ::orvik::ResultFileWriter writer(waves, ::orvik::test::sampleLayout(runner, instrument));
        for (const std::size_t number : {1U, 0U}) {
            ::orvik::ResultRow row;
            row.burst = number;
            row.startTime = 1.7e9 + 3600.0 * static_cast<double>(number);
            row.result = runner.run(::orvik::test::sampleBurst(instrument, ::orvik::test::kTilted));
            writer.append(row);
        }
        writer.commit();
    }
    const Outcome explained = orvik({"explain", waves, "--burst", "1"});
    EXPECT_TRUE(holds(explained.output, ", 2023-11-14 23:13:20 UTC")) << explained.output;
    const std::string shown = orvik({"show", waves}).output;
    EXPECT_TRUE(holds(shown, "    1  2023-11-14 23:13:20")) << shown;
    EXPECT_TRUE(holds(shown, "    0  2023-11-14 22:13:20")) << shown;
    EXPECT_TRUE(holds(shown, "tilt")) << shown;
}

} // namespace
