// The data in a page are those of the file, whichever program wrote it and however it counts time.
#include <cmath>
#include <set>

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include "host/burst/nc_sketch.hpp"
#include "host/burst/scratch_directory.hpp"
#include "report/packing.hpp"
#include "report/report_data.hpp"

namespace {

using Json = nlohmann::json;
using Numbers = std::vector<double>;
using orvik::test::NcSketch;

const double kMissing = std::nan("");
const Numbers kHeights{1.25, kMissing};
const Numbers kDensity{0.5, 12.0, 3.25e-7, 9e-8, kMissing, kMissing};
const Numbers kEnergy{0.01, 0.0234, 0.00001, 0.0};

class ReportData : public testing::Test {
protected:
    // Two bursts at three frequencies and two directions; the second was rejected.
    ReportData() {
        NcSketch file(path_);
        file.dimension("time", 2).dimension("freq", 3).dimension("dir", 2);
        file.dimension("freq_surface_track", 2);
        file.text("burst_file", "a</script><script>b.nc");
        file.variable("time", {"time"}, "hours since 2024-11-05 00:00:00", {0.0, 1.5});
        file.variable("burst", {"time"}, "1", {7.0, 9.0}, NC_INT);
        file.variable("quality_flag", {"time"}, "1", {0.0, 32.0}, NC_INT);
        file.variable("spectrum_source", {"time"}, "1", {3.0, -1.0}, NC_INT);
        file.variable("hm0", {"time"}, "m", kHeights, NC_FLOAT);
        for (const char *name : {"tp", "peak_direction", "mean_direction"}) {
            file.variable(name, {"time"}, "1", {0.0, 0.0}, NC_FLOAT);
        }
        file.variable("freq", {"freq"}, "Hz", {0.125, 0.25, 0.375});
        file.variable("freq_surface_track", {"freq_surface_track"}, "Hz", {0.5, 0.75});
        file.variable("dir", {"dir"}, "degree", {0.0, 180.0});
        file.variable("variance_density", {"time", "freq"}, "m2 s", kDensity);
        Numbers energy = kEnergy;
        energy.resize(12, kMissing);
        file.variable("efth", {"time", "freq", "dir"}, "m2 s degree-1", energy);
    }

    [[nodiscard]] std::string text() const { return orvik::reportData(orvik::NcReader(path_)); }
    [[nodiscard]] Json data() const { return Json::parse(text()); }

    orvik::test::ScratchDirectory directory_;
    std::string path_ = directory_.file("waves.nc");
};

TEST_F(ReportData, TimesAreSecondsWhateverTheFileCounts) {
    EXPECT_EQ(data()["times"], Json({1730764800.0, 1730770200.0})); // 2024-11-05 00:00 and 01:30
}

TEST_F(ReportData, AxesNumbersAndSourcesAreTheFiles) {
    const Json found = data();
    EXPECT_EQ(found["freq"], Json({0.125, 0.25, 0.375}));
    EXPECT_EQ(found["fine"], Json({0.5, 0.75}));
    EXPECT_EQ(found["dir"], Json({0.0, 180.0}));
    EXPECT_EQ(found["number"], Json({7, 9}));
    EXPECT_EQ(found["source"], Json({3, -1}));
    EXPECT_EQ(found["flags"], Json({0, 32}));
}

TEST_F(ReportData, ValuesOfBurstsAreWhatIsMeasured) {
    const Json values = data()["values"];
    std::set<std::string> names;
    for (const auto &entry : values.items()) {
        names.insert(entry.key());
    }
    EXPECT_EQ(names, (std::set<std::string>{"hm0", "tp", "peak_direction", "mean_direction"}));
    EXPECT_EQ(values["hm0"]["data"], orvik::packFloats(kHeights));
    EXPECT_EQ(values["hm0"]["unit"], "m");
}

// From the greatest density's power of ten, 10: three digits of 3.25e-7 are kept, 9e-8 is as good as nothing.
TEST_F(ReportData, SpectraReachEightDecadesDown) {
    const Json density = data()["spectra"]["variance_density"];
    EXPECT_EQ(density["lowest"], -7);
    EXPECT_EQ(density["data"], orvik::packCodes(orvik::decimalCodes(kDensity, 3, -7)));
}

// What a damaged burst holds, whatever it may be, leaves everybody else's spectra as they are.
TEST_F(ReportData, SpectraReachDownFromTheGreatestThatIsKept) {
    Numbers density = kDensity;
    density[4] = 1e20;
    int file = -1;
    int variable = -1;
    ASSERT_EQ(nc_open(path_.c_str(), NC_WRITE, &file), NC_NOERR);
    ASSERT_EQ(nc_inq_varid(file, "variance_density", &variable), NC_NOERR);
    ASSERT_EQ(nc_put_var_double(file, variable, density.data()), NC_NOERR);
    ASSERT_EQ(nc_close(file), NC_NOERR);
    const Json found = data()["spectra"]["variance_density"];
    EXPECT_EQ(found["lowest"], -7);
    EXPECT_EQ(found["greatest"], 12.0);
    EXPECT_EQ(found["data"], orvik::packCodes(orvik::decimalCodes(density, 3, -7)));
}

TEST_F(ReportData, WithoutABurstToKeepSpectraReachDownFromTheGreatest) {
    const Numbers flags{32.0, 32.0};
    int file = -1;
    int variable = -1;
    ASSERT_EQ(nc_open(path_.c_str(), NC_WRITE, &file), NC_NOERR);
    ASSERT_EQ(nc_inq_varid(file, "quality_flag", &variable), NC_NOERR);
    ASSERT_EQ(nc_put_var_double(file, variable, flags.data()), NC_NOERR);
    ASSERT_EQ(nc_close(file), NC_NOERR);
    EXPECT_EQ(data()["spectra"]["variance_density"]["greatest"], 12.0);
}

TEST_F(ReportData, DistributionsReachThreeDecadesDownByBurst) {
    const Json distribution = data()["distribution"];
    Numbers energy = kEnergy;
    energy.resize(6, kMissing);
    EXPECT_EQ(distribution["lowest"], Json({-5, -3}));
    EXPECT_EQ(distribution["bursts"],
              Json({orvik::packCodes(orvik::decimalCodes(energy, 2, -5)), ""}));
}

TEST_F(ReportData, NothingOfAFileEndsTheElementItStandsIn) {
    EXPECT_EQ(text().find('<'), std::string::npos);
    EXPECT_EQ(data()["attributes"]["burst_file"], "a</script><script>b.nc");
}

TEST_F(ReportData, OnlyBurstsWithoutWavesAreDiscarded) {
    const Json words = data()["quality"];
    std::set<std::string> discarded;
    for (const Json &word : words) {
        if (word["discard"].get<bool>()) {
            discarded.insert(word["word"]);
        }
    }
    EXPECT_EQ(discarded, (std::set<std::string>{"no_signal", "flat_spectrum", "invalid_parameters",
                                                "no_result", "rising_spectrum"}));
}

TEST_F(ReportData, DirectionsComeFromUnlessTheFileSaysOtherwise) {
    EXPECT_EQ(data()["comingFrom"], true);
    int file = -1;
    int dir = -1;
    const std::string name = "sea_surface_wave_to_direction";
    ASSERT_EQ(nc_open(path_.c_str(), NC_WRITE, &file), NC_NOERR);
    ASSERT_EQ(nc_inq_varid(file, "dir", &dir), NC_NOERR);
    ASSERT_EQ(nc_put_att_text(file, dir, "standard_name", name.size(), name.data()), NC_NOERR);
    ASSERT_EQ(nc_close(file), NC_NOERR);
    EXPECT_EQ(data()["comingFrom"], false);
}

} // namespace
