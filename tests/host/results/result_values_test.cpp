// Every number of a burst is found under its own name, and what is told of a burst follows from its numbers.
#include <array>
#include <cstdio>
#include <functional>
#include <sstream>
#include <utility>

#include <gtest/gtest.h>

#include "host/burst/scratch_directory.hpp"
#include "host/commands/program.hpp"
#include "host/results/sample_results.hpp"
#include "results/directional_grid.hpp"
#include "results/explanation.hpp"

namespace {

using orvik::ResultReader;
using orvik::ResultRow;
using orvik::StoredBurst;
using orvik::test::holds;
using orvik::test::sampleInstrument;
using orvikbase::WaveParameters;
using Change = std::function<void(ResultRow &)>;

constexpr std::array<std::pair<const char *, float WaveParameters::*>, 21> kWaves{{
    {"hm0", &WaveParameters::significantHeight},
    {"tp", &WaveParameters::peakPeriod},
    {"tm02", &WaveParameters::meanPeriod},
    {"tm_10", &WaveParameters::energyPeriod},
    {"peak_direction", &WaveParameters::peakDirection},
    {"mean_direction", &WaveParameters::meanDirection},
    {"peak_spread", &WaveParameters::peakSpread},
    {"resultant_length", &WaveParameters::resultantLength},
    {"h_third", &WaveParameters::thirdHeight},
    {"t_third", &WaveParameters::thirdPeriod},
    {"h_tenth", &WaveParameters::tenthHeight},
    {"t_tenth", &WaveParameters::tenthPeriod},
    {"h_max", &WaveParameters::maxHeight},
    {"t_max", &WaveParameters::maxPeriod},
    {"tz", &WaveParameters::crossingPeriod},
    {"checked_hm0", &WaveParameters::checkedHeight},
    {"checked_tm02", &WaveParameters::checkedMeanPeriod},
    {"instrument_depth", &WaveParameters::instrumentDepth},
    {"cell_height", &WaveParameters::cellVerticalRange},
    {"surface_track_level", &WaveParameters::trackLevel},
    {"aliasing_frequency", &WaveParameters::aliasingFrequency},
}};

class ResultValues : public testing::Test {
protected:
    const orvik::Instrument instrument_ = sampleInstrument();
    orvik::ProcessingChoices choices_;
    std::string attribute_ = "no profile";
    orvik::test::ScratchDirectory directory_;
    std::string path_ = directory_.file("waves.nc");

    // A result file of the sample's first burst, whose row is changed before it is written.
    void write(const Change &change) const {
        orvik::BurstRunner runner(instrument_, choices_);
        orvik::ResultLayout layout = orvik::test::sampleLayout(runner, instrument_);
        layout.attributes["instrument"] = attribute_;
        layout.hasTruth = true;
        const orvik::Burst burst = orvik::test::sampleBurst(instrument_, 0);
        ResultRow row;
        row.startTime = burst.startTime;
        row.facts = orvik::factsOf(burst, instrument_);
        row.result = runner.run(burst);
        change(row);
        orvik::ResultFileWriter writer(path_, layout);
        writer.append(row);
        writer.commit();
    }
    [[nodiscard]] StoredBurst stored(const Change &change) const {
        write(change);
        return ResultReader(path_).read(0);
    }
    // On one line, with single blanks.
    [[nodiscard]] std::string explained(const Change &change) const {
        write(change);
        const ResultReader results(path_);
        std::istringstream words(orvik::explanationOf(results, results.read(0)));
        std::string line;
        for (std::string word; words >> word;) {
            line += word + ' ';
        }
        return line;
    }
};

TEST_F(ResultValues, WaveParameters) {
    const StoredBurst burst = stored([](ResultRow &row) {
        float value = 0.5F;
        for (const auto &[name, field] : kWaves) {
            row.result.waves.*field = value;
            value += 0.5F;
        }
    });
    float value = 0.5F;
    for (const auto &[name, field] : kWaves) {
        EXPECT_EQ(burst.value(name), static_cast<double>(value)) << name;
        value += 0.5F;
    }
}

TEST_F(ResultValues, CountsAndCells) {
    const StoredBurst burst = stored([](ResultRow &row) {
        row.result.waves.trackBadCount = 3;
        row.result.waves.trackSpikeCount = 5;
        row.result.waves.selectedCell = 7;
        row.result.waves.instrumentDepth = 14.0F;
    });
    EXPECT_EQ(burst.value("surface_track_bad"), 3.0);
    EXPECT_EQ(burst.value("surface_track_spikes"), 5.0);
    EXPECT_EQ(burst.value("cell_used"), 7.0);
    EXPECT_EQ(burst.value("water_depth"), 14.0 + instrument_.pressureHeight);
}

TEST_F(ResultValues, Truths) {
    const StoredBurst burst = stored([](ResultRow &row) {
        row.truth = orvik::Truth{1.0, 2.0, 3.0, 4.0, 5.0, 6.0, 7.0, 8.0, 9.0};
    });
    double value = 0.0;
    for (const char *name :
         {"significant_height", "realised_height", "peak_period", "peak_direction",
          "mean_direction", "peak_spread", "current_speed", "current_direction", "water_depth"}) {
        EXPECT_EQ(burst.value(std::string("true_") + name), ++value) << name;
    }
}

TEST_F(ResultValues, CheckRatio) {
    const StoredBurst burst =
        stored([](ResultRow &row) { row.result.spectra.get()->bandValue[20] = 0.75F; });
    EXPECT_EQ(burst.spectrum("check_ratio").at(20), 0.75);
}

// Beyond the aliasing limit the library has numbers for directions that no wave had.
TEST_F(ResultValues, DirectionsEndWhereTheirCoefficientsDo) {
    const StoredBurst burst = stored([](ResultRow &) {});
    const std::vector<double> coefficients = burst.spectrum("a1");
    const std::size_t last = coefficients.size() - 1;
    EXPECT_TRUE(std::isfinite(burst.spectrum("direction").at(20)));
    EXPECT_TRUE(std::isfinite(burst.spectrum("variance_density").at(last)));
    ASSERT_TRUE(std::isnan(coefficients.at(last)));
    for (std::size_t i = 0; i < coefficients.size(); ++i) {
        EXPECT_EQ(std::isfinite(burst.spectrum("direction").at(i)), std::isfinite(coefficients[i]));
        EXPECT_EQ(std::isfinite(burst.spectrum("spread").at(i)), std::isfinite(coefficients[i]));
    }
}

// Bursts are written many at a time, and those of a deployment that still goes on can be read in between.
TEST_F(ResultValues, EachOfManyBurstsKeepsItsOwn) {
    constexpr std::size_t kFrequency = 20;
    constexpr std::size_t kDirection = 3;
    orvik::BurstRunner runner(instrument_, choices_);
    const orvik::ResultLayout layout = orvik::test::sampleLayout(runner, instrument_);
    ResultRow row;
    row.facts = orvik::factsOf(orvik::test::sampleBurst(instrument_, 0), instrument_);
    row.result = runner.run(orvik::test::sampleBurst(instrument_, 0));
    row.result.directionWeights.at(kFrequency * layout.directions + kDirection) = 0.25F;

    orvik::ResultFileWriter writer(path_, layout);
    std::size_t written = 0;
    const auto write = [&](std::size_t count) {
        for (; written < count; ++written) {
            const auto number = static_cast<float>(written);
            row.burst = written + 7;
            row.startTime = 3600.0 * number;
            row.result.processed = written % 10 != 9;
            row.result.reason = row.result.processed ? "" : "reason " + std::to_string(written);
            row.result.notes = {"note " + std::to_string(written)};
            row.result.waves.significantHeight = number;
            row.result.energy.at(kFrequency) = number;
            writer.append(row);
        }
    };
    const auto check = [&] {
        const ResultReader results(path_);
        ASSERT_EQ(results.burstCount(), written);
        for (std::size_t i = 0; i < written; ++i) {
            const StoredBurst burst = results.read(i);
            const auto number = static_cast<double>(i);
            EXPECT_EQ(burst.burst, i + 7);
            EXPECT_EQ(burst.startTime, 3600.0 * number);
            EXPECT_EQ(burst.processingNotes, "note " + std::to_string(i));
            if (i % 10 == 9) {
                EXPECT_EQ(burst.rejectionReason, "reason " + std::to_string(i));
                EXPECT_TRUE(std::isnan(burst.value("hm0")));
                EXPECT_TRUE(std::isnan(burst.spectrum("variance_density").at(kFrequency)));
                continue;
            }
            EXPECT_EQ(burst.rejectionReason, "");
            EXPECT_EQ(burst.value("hm0"), number);
            EXPECT_EQ(burst.spectrum("variance_density").at(kFrequency), number);
            const std::size_t place = kFrequency * layout.directions + kDirection;
            EXPECT_FLOAT_EQ(static_cast<float>(burst.efth.at(place)),
                            static_cast<float>(number) * 0.25F / 4.0F);
        }
    };
    write(70);
    writer.publish();
    check();
    write(200);
    writer.publish();
    check();
    write(201);
    writer.commit();
    check();
}

// Whatever spectrum they are of.
TEST_F(ResultValues, DensitiesBelowZeroAreRaisedAndCounted) {
    const double before = stored([](ResultRow &) {}).value("raised_densities");
    const StoredBurst burst = stored([](ResultRow &row) {
        row.result.energy[20] = -1e-3F;
        row.result.spectra.get()->energySpectrum[20] = -1e-3F;
        row.result.spectra.get()->secondSpectrum[20] = -1e-3F;
        row.result.spectra.get()->fineSpectrum[20] = -1e-3F;
    });
    EXPECT_EQ(burst.value("raised_densities"), before + 4.0);
    for (const char *name : {"variance_density", "variance_density_pressure",
                             "variance_density_velocity", "variance_density_surface_track"}) {
        EXPECT_EQ(burst.spectrum(name).at(20), 0.0) << name;
    }
}

// Its values turned out impossible, and the burst was processed without it.
TEST_F(ResultValues, TracksThatWereNotUsedHaveNoSpectrum) {
    const std::vector<double> track = stored([](ResultRow &row) {
                                          row.result.parameters.method =
                                              orvikbase::Method::likelihood;
                                      }).spectrum("variance_density_surface_track");
    EXPECT_TRUE(
        std::all_of(track.begin(), track.end(), [](double value) { return std::isnan(value); }));
}

// Of two that are as near, the lower.
TEST_F(ResultValues, UnknownDirectionsAreThoseOfTheNearestFrequency) {
    const std::size_t directions = 90;
    write([](ResultRow &row) {
        for (const std::size_t bin : {0, 1, 2, 30, 40, 41}) {
            std::fill_n(row.result.directionWeights.begin() +
                            static_cast<std::ptrdiff_t>(bin * directions),
                        directions, orvikbase::kMissing);
        }
    });
    const ResultReader results(path_);
    const StoredBurst burst = results.read(0);
    const std::vector<double> grid =
        orvik::directionalGrid(results, burst, orvik::directionAxis(results, true)).value();
    const std::vector<double> density = burst.spectrum("variance_density");
    for (const auto &[bin, like] :
         {std::pair{0U, 3U}, {2U, 3U}, {30U, 29U}, {40U, 39U}, {41U, 42U}}) {
        for (std::size_t k = 0; k < directions; ++k) {
            EXPECT_NEAR(grid[bin * directions + k] / density[bin],
                        grid[like * directions + k] / density[like], 1e-9)
                << bin << " at " << k;
        }
    }
}

TEST_F(ResultValues, SpectraThatAreNotOfTheTrackByChoiceAreExplained) {
    choices_.directionalInputMode = 0;
    const std::string pressure = explained([](ResultRow &) {});
    EXPECT_TRUE(holds(pressure, "method 3, maximum likelihood of pressure and velocities instead "
                                "of 4, because --source leaves the surface track out"))
        << pressure;
    EXPECT_TRUE(holds(pressure, "energy from pressure: what is taken")) << pressure;
    choices_.directionalInputMode = 1;
    const std::string velocity = explained([](ResultRow &) {});
    EXPECT_TRUE(holds(velocity, "energy from velocity: --source asks for it")) << velocity;
}

TEST_F(ResultValues, TracksOutOfRangeAreExplained) {
    const std::string text = explained([](ResultRow &row) {
        row.result.waves.qualityFlags = OV_FLAG_TRACK_RANGE;
        row.result.waves.spectrumSource = orvikbase::SpectrumSource::pressure;
        row.result.parameters.method = orvikbase::Method::likelihood;
        row.result.waves.trackBadCount = 1;
    });
    EXPECT_TRUE(holds(text, "instead of 4, because the surface track could not be used")) << text;
    EXPECT_TRUE(holds(text, "repaired 1 surface-track value out of range.")) << text;
}

TEST_F(ResultValues, BadTrackValuesAreCountedOnceInWhatWasRepaired) {
    const std::string text = explained([](ResultRow &row) {
        row.facts.missingTrackSamples = 2;
        row.result.waves.trackSpikeCount = 3;
        row.result.waves.trackBadCount = 9;
    });
    EXPECT_TRUE(holds(text, "2 surface-track samples without an echo interpolated; 4 surface-track "
                            "values out of range replaced; 3 surface-track spikes replaced."))
        << text;
}

// The spectrum comes from pressure because of the velocity that is there, not for want of any.
TEST_F(ResultValues, VelocityThatTellsNoHeightsIsExplained) {
    const auto withoutHeights = [](ResultRow &row) {
        row.result.waves.qualityFlags = OV_FLAG_NO_TRACK;
        row.result.waves.spectrumSource = orvikbase::SpectrumSource::pressure;
        for (std::size_t bin = 0; bin < row.result.spectra.count(); ++bin) {
            row.result.spectra.get()->secondSpectrum[bin] = orvikbase::kMissing;
        }
    };
    const std::string said = "there was no usable surface track, and velocity tells no heights";
    std::string text = explained(withoutHeights);
    EXPECT_TRUE(holds(text, said)) << text;
    EXPECT_TRUE(holds(text, "a tail f^-4.5 stands in its spectrum.")) << text;
    text = explained([&](ResultRow &row) {
        withoutHeights(row);
        row.result.currentSpeed = orvik::kUnknown;
    });
    EXPECT_FALSE(holds(text, said)) << text;
    EXPECT_FALSE(holds(text, "tells directions but no heights")) << text;
}

TEST_F(ResultValues, OneIsSaidAsOne) {
    const std::string text = explained([](ResultRow &row) {
        row.facts.missingSamples = 1.0;
        row.result.waves.trackSpikeCount = 2;
    });
    EXPECT_TRUE(holds(text, "1 missing sample filled")) << text;
    EXPECT_TRUE(holds(text, "2 surface-track spikes replaced")) << text;
}

TEST_F(ResultValues, CellsOfProfilesAreNamed) {
    const Change seventh = [](ResultRow &row) { row.result.waves.selectedCell = 7; };
    EXPECT_TRUE(holds(explained(seventh), "velocity from 6.3 m above the head"));
    attribute_ = "type 16, 2 Hz";
    EXPECT_TRUE(holds(explained(seventh), "velocity from cell 7, 6.3 m above the head"));
}

TEST_F(ResultValues, HeightLiesBetweenItsLimits) {
    const std::string text = explained([](ResultRow &) {});
    const double height = ResultReader(path_).read(0).value("hm0");
    const std::string before = "the height of the sea lies between ";
    double lower = 0.0;
    double upper = 0.0;
    ASSERT_TRUE(holds(text, before)) << text;
    ASSERT_EQ(std::sscanf(text.c_str() + text.find(before) + before.size(), "%lf and %lf m", &lower,
                          &upper),
              2);
    EXPECT_GT(lower, 0.8 * height);
    EXPECT_LT(lower, height);
    EXPECT_GT(upper, height);
    EXPECT_LT(upper, 1.3 * height);
    EXPECT_TRUE(holds(text, "a tail f^-4.5 stands in their spectra.")) << text;
}

} // namespace
