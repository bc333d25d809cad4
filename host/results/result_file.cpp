#include "results/result_file.hpp"

#include <algorithm>
#include <cmath>
#include <functional>
#include <limits>

#include "burst/burst_file.hpp"
#include "netcdf/nc_file.hpp"

namespace orvik {

namespace {

constexpr float kFill = std::numeric_limits<float>::quiet_NaN();

// A value a burst. In standard names "from_direction" reads "to_direction" when directions say where waves go.
struct Parameter {
    const char *name;
    const char *units;
    const char *standardName; // empty: CF has none
    const char *longName;
    std::function<double(const BurstResult &)> value;
};

std::function<double(const BurstResult &)> wave(float orvikbase::WaveParameters::*value) {
    return [value](const BurstResult &result) { return present(result.waves.*value); };
}

const std::vector<Parameter> &parameters() {
    static const std::vector<Parameter> kAll{
        // clang-format off
        {"hm0", "m", "sea_surface_wave_significant_height", "spectral significant wave height, 4 sqrt(m0)", wave(&orvikbase::WaveParameters::significantHeight)},
        {"tp", "s", "sea_surface_wave_period_at_variance_spectral_density_maximum", "peak period", wave(&orvikbase::WaveParameters::peakPeriod)},
        {"tm02", "s", "sea_surface_wave_mean_period_from_variance_spectral_density_second_frequency_moment", "mean period sqrt(m0 / m2)", wave(&orvikbase::WaveParameters::meanPeriod)},
        {"tm_10", "s", "sea_surface_wave_mean_period_from_variance_spectral_density_inverse_frequency_moment", "energy period m-1 / m0", wave(&orvikbase::WaveParameters::energyPeriod)},
        {"peak_direction", "degree", "sea_surface_wave_from_direction_at_variance_spectral_density_maximum", "wave direction at the spectral peak", wave(&orvikbase::WaveParameters::peakDirection)},
        {"mean_direction", "degree", "sea_surface_wave_from_direction", "energy-weighted mean wave direction", wave(&orvikbase::WaveParameters::meanDirection)},
        {"peak_spread", "degree", "sea_surface_wave_directional_spread_at_variance_spectral_density_maximum", "directional spread at the spectral peak", wave(&orvikbase::WaveParameters::peakSpread)},
        {"resultant_length", "1", "", "length of the mean direction vector", wave(&orvikbase::WaveParameters::resultantLength)},
        {"h_third", "m", "sea_surface_wave_significant_height", "mean height of the highest third of the waves", wave(&orvikbase::WaveParameters::thirdHeight)},
        {"t_third", "s", "sea_surface_wave_significant_period", "mean period of the highest third of the waves", wave(&orvikbase::WaveParameters::thirdPeriod)},
        {"h_tenth", "m", "sea_surface_wave_mean_height_of_highest_tenth", "mean height of the highest tenth of the waves; 1.27 hm0 without a surface track", wave(&orvikbase::WaveParameters::tenthHeight)},
        {"t_tenth", "s", "sea_surface_wave_mean_period_of_highest_tenth", "mean period of the highest tenth of the waves", wave(&orvikbase::WaveParameters::tenthPeriod)},
        {"h_max", "m", "sea_surface_wave_maximum_height", "greatest wave height; 1.67 hm0 without a surface track", wave(&orvikbase::WaveParameters::maxHeight)},
        {"t_max", "s", "sea_surface_wave_period_of_highest_wave", "period of the highest wave", wave(&orvikbase::WaveParameters::maxPeriod)},
        {"tz", "s", "sea_surface_wave_zero_upcrossing_period", "mean period between zero up-crossings", wave(&orvikbase::WaveParameters::crossingPeriod)},
        {"checked_hm0", "m", "", "hm0 where the spectrum has a shape", wave(&orvikbase::WaveParameters::checkedHeight)},
        {"checked_tm02", "s", "", "tm02 where all parameters are valid", wave(&orvikbase::WaveParameters::checkedMeanPeriod)},
        {"current_speed", "m s-1", "sea_water_speed", "mean current speed", [](const BurstResult &r) { return r.currentSpeed; }},
        {"current_direction", "degree", "sea_water_velocity_to_direction", "direction that the mean current goes to", [](const BurstResult &r) { return r.currentDirection; }},
        {"instrument_depth", "m", "", "mean depth of the pressure sensor", wave(&orvikbase::WaveParameters::instrumentDepth)},
        {"cell_height", "m", "", "height of the measurement cell above the head", wave(&orvikbase::WaveParameters::cellVerticalRange)},
        {"cell_used", "1", "", "cell of the profile that was used, counted from 1", [](const BurstResult &r) { return r.waves.selectedCell > 0 ? static_cast<double>(r.waves.selectedCell) : kUnknown; }},
        {"surface_track_level", "m", "", "mean distance from the head to the surface", wave(&orvikbase::WaveParameters::trackLevel)},
        {"surface_track_bad", "1", "", "surface-track values out of range", [](const BurstResult &r) { return static_cast<double>(r.waves.trackBadCount); }},
        {"surface_track_spikes", "1", "", "surface-track spikes", [](const BurstResult &r) { return static_cast<double>(r.waves.trackSpikeCount); }},
        {"method_used", "1", "", "processing method of this burst", [](const BurstResult &r) { return static_cast<double>(r.parameters.method); }},
        {"aliasing_frequency", "Hz", "", "lowest frequency without directions", wave(&orvikbase::WaveParameters::aliasingFrequency)},
        // clang-format on
    };
    return kAll;
}

// A value for each burst and frequency of the main axis.
struct Spectrum {
    const char *name;
    const char *units;
    const char *standardName;
    const char *longName;
    std::function<float(const BurstResult &, std::size_t)> value;
};

constexpr const char *kDensityName = "sea_surface_wave_variance_spectral_density";

const std::vector<Spectrum> &spectra() {
    static const std::vector<Spectrum> kAll{
        // clang-format off
        {"variance_density", "m2 s", kDensityName, "elevation spectrum behind the wave parameters", [](const BurstResult &r, std::size_t i) { return r.energy.at(i); }},
        {"variance_density_pressure", "m2 s", kDensityName, "elevation spectrum from pressure", [](const BurstResult &r, std::size_t i) { return r.spectra.pressureEnergy()[i]; }},
        {"variance_density_velocity", "m2 s", kDensityName, "elevation spectrum from velocity", [](const BurstResult &r, std::size_t i) { return r.spectra.velocityEnergy()[i]; }},
        {"direction", "degree", "sea_surface_wave_from_direction", "mean wave direction by frequency", [](const BurstResult &r, std::size_t i) { return r.spectra.direction()[i]; }},
        {"spread", "degree", "sea_surface_wave_directional_spread", "directional spread by frequency", [](const BurstResult &r, std::size_t i) { return r.spectra.spread()[i]; }},
        {"a1", "1", "", "mean cosine of the direction that waves come from, clockwise from north", [](const BurstResult &r, std::size_t i) { return float{r.spectra.get()->coefP[i]}; }},
        {"b1", "1", "", "mean sine of the direction that waves come from, clockwise from north", [](const BurstResult &r, std::size_t i) { return float{r.spectra.get()->coefQ[i]}; }},
        {"a2", "1", "", "mean cosine of twice that direction", [](const BurstResult &r, std::size_t i) { return float{r.spectra.get()->coefR[i]}; }},
        {"b2", "1", "", "mean sine of twice that direction", [](const BurstResult &r, std::size_t i) { return float{r.spectra.get()->coefS[i]}; }},
        {"check_ratio", "1", "", "check ratio of two elevation estimates", [](const BurstResult &r, std::size_t i) { return r.spectra.checkRatio()[i]; }},
        // clang-format on
    };
    return kAll;
}

bool hasTrackSpectrum(const BurstResult &result) {
    return result.processed && result.spectra.hasTrack() &&
           usesTrack(static_cast<int>(result.parameters.method));
}

float presentOrFill(float value) {
    return value == OV_MISSING || !std::isfinite(value) ? kFill : value;
}

NcWriter::Attributes describe(const char *units, std::string standardName, const char *longName,
                              bool comingFrom) {
    NcWriter::Attributes attributes{{"units", units}, {"long_name", longName}};
    if (const auto at = standardName.find("wave_from_direction");
        at != std::string::npos && !comingFrom) {
        // CF has no name for where waves at the spectral peak go.
        standardName = standardName == "sea_surface_wave_from_direction"
                           ? "sea_surface_wave_to_direction"
                           : "";
    }
    if (!standardName.empty()) {
        attributes.emplace_back("standard_name", standardName);
    }
    return attributes;
}

} // namespace

double present(float value) {
    return value == OV_MISSING || !std::isfinite(value) ? kUnknown : static_cast<double>(value);
}

struct ResultFileWriter::Impl {
    Impl(const std::string &path, const ResultLayout &theLayout) : file(path), layout(theLayout) {}

    void defineAxes();
    void defineParameters();
    void defineFlags();
    void defineSpectra();
    void writeAxes();
    void writeSpectra(std::size_t row, const BurstResult &result);
    void writeDistribution(std::size_t row, const BurstResult &result);

    NcWriter file;
    ResultLayout layout;
    std::size_t written = 0;
    int timeDimension = -1;
    int freqDimension = -1;
    int fineDimension = -1;
    int dirDimension = -1;
    int time = -1;
    int burst = -1;
    int freq = -1;
    int fine = -1;
    int dir = -1;
    int waterDepth = -1;
    int flags = -1;
    int source = -1;
    int trackSpectrum = -1;
    int distribution = -1;
    std::vector<int> values;
    std::vector<int> series;
    std::vector<int> truth;
};

void ResultFileWriter::Impl::defineAxes() {
    timeDimension = file.addDimension("time", NC_UNLIMITED);
    freqDimension = file.addDimension("freq", layout.frequencies.size());
    fineDimension = file.addDimension("freq_surface_track", layout.fineFrequencies.size());
    dirDimension = file.addDimension("dir", layout.directions);
    time = file.addVariable("time", NC_DOUBLE, {timeDimension},
                            {{"units", "seconds since 1970-01-01 00:00:00"},
                             {"calendar", "standard"},
                             {"standard_name", "time"},
                             {"axis", "T"},
                             {"long_name", "start of the burst"}});
    burst = file.addVariable(
        "burst", NC_INT, {timeDimension},
        {{"units", "1"}, {"long_name", "place of the burst in the burst file, from 0"}});
    const NcWriter::Attributes frequency{
        {"units", "Hz"}, {"standard_name", "wave_frequency"}, {"long_name", "frequency"}};
    freq = file.addVariable("freq", NC_FLOAT, {freqDimension}, frequency);
    fine = file.addVariable("freq_surface_track", NC_FLOAT, {fineDimension}, frequency);
    dir = file.addVariable(
        "dir", NC_FLOAT, {dirDimension},
        describe("degree", "sea_surface_wave_from_direction",
                 layout.comingFrom ? "direction that waves come from, clockwise from true north"
                                   : "direction that waves go to, clockwise from true north",
                 layout.comingFrom));
}

void ResultFileWriter::Impl::defineParameters() {
    for (const Parameter &p : parameters()) {
        values.push_back(
            file.addVariable(p.name, NC_FLOAT, {timeDimension},
                             describe(p.units, p.standardName, p.longName, layout.comingFrom)));
    }
    waterDepth =
        file.addVariable("water_depth", NC_FLOAT, {timeDimension},
                         describe("m", "sea_floor_depth_below_sea_surface",
                                  "instrument depth and height of the sensor above the bed", true));
    for (const TruthVariable &variable : kTruthVariables) {
        if (layout.hasTruth) {
            truth.push_back(
                file.addVariable(variable.name, NC_FLOAT, {timeDimension},
                                 {{"units", variable.units}, {"long_name", variable.longName}}));
        }
    }
}

void ResultFileWriter::Impl::defineFlags() {
    std::vector<int> masks;
    std::string meanings;
    for (const QualityWord &word : kQualityWords) {
        masks.push_back(word.mask);
        meanings += meanings.empty() ? "" : " ";
        meanings += word.word;
    }
    flags =
        file.addVariable("quality_flag", NC_INT, {timeDimension},
                         describe("1", "quality_flag", "conditions met while processing", true));
    file.setIntegers(flags, "flag_masks", masks);
    file.setText(flags, "flag_meanings", meanings);
    source = file.addVariable("spectrum_source", NC_INT, {timeDimension},
                              describe("1", "", "series behind the elevation spectrum", true));
    file.setIntegers(source, "flag_values",
                     {OV_SOURCE_PRESSURE, OV_SOURCE_VELOCITY, OV_SOURCE_SURFACE_TRACK});
    file.setText(source, "flag_meanings", "pressure velocity surface_track");
}

void ResultFileWriter::Impl::defineSpectra() {
    for (const Spectrum &s : spectra()) {
        series.push_back(
            file.addVariable(s.name, NC_FLOAT, {timeDimension, freqDimension},
                             describe(s.units, s.standardName, s.longName, layout.comingFrom)));
    }
    trackSpectrum = file.addVariable(
        "variance_density_surface_track", NC_FLOAT, {timeDimension, fineDimension},
        describe("m2 s", kDensityName, "elevation spectrum from the surface track", true));
    distribution = file.addVariable(
        "efth", NC_FLOAT, {timeDimension, freqDimension, dirDimension},
        describe("m2 s degree-1", "sea_surface_wave_directional_variance_spectral_density",
                 "maximum entropy directional spectrum of a1, b1, a2, b2 and variance_density",
                 true));
}

void ResultFileWriter::Impl::writeAxes() {
    for (std::size_t i = 0; i < layout.frequencies.size(); ++i) {
        file.write(freq, {i}, layout.frequencies[i]);
    }
    for (std::size_t i = 0; i < layout.fineFrequencies.size(); ++i) {
        file.write(fine, {i}, layout.fineFrequencies[i]);
    }
    for (std::size_t i = 0; i < layout.directions; ++i) {
        file.write(dir, {i},
                   360.0 * static_cast<double>(i) / static_cast<double>(layout.directions));
    }
}

void ResultFileWriter::Impl::writeSpectra(std::size_t row, const BurstResult &result) {
    const std::size_t count = layout.frequencies.size();
    for (std::size_t s = 0; s < series.size(); ++s) {
        std::vector<float> line(count, kFill);
        for (std::size_t i = 0; result.processed && i < count; ++i) {
            line[i] = presentOrFill(spectra()[s].value(result, i));
        }
        file.write(series[s], {row, 0}, {1, count}, line);
    }
    std::vector<float> line(layout.fineFrequencies.size(), kFill);
    for (std::size_t i = 0; hasTrackSpectrum(result) && i < line.size(); ++i) {
        line[i] = presentOrFill(result.spectra.trackEnergy()[i]);
    }
    file.write(trackSpectrum, {row, 0}, {1, line.size()}, line);
}

void ResultFileWriter::Impl::writeDistribution(std::size_t row, const BurstResult &result) {
    const std::size_t count = layout.frequencies.size();
    const std::size_t directions = layout.directions;
    std::vector<float> grid(count * directions, kFill);
    const float binWidth = 360.0F / static_cast<float>(directions);
    for (std::size_t i = 0; result.processed && i < count; ++i) {
        for (std::size_t k = 0; k < directions; ++k) {
            const float weight = presentOrFill(result.directionWeights.at(i * directions + k));
            grid[i * directions + k] = presentOrFill(result.energy[i]) * weight / binWidth;
        }
    }
    file.write(distribution, {row, 0, 0}, {1, count, directions}, grid);
}

ResultFileWriter::ResultFileWriter(const std::string &path, const ResultLayout &layout)
    : impl_(std::make_unique<Impl>(path, layout)) {
    impl_->file.setText(NC_GLOBAL, "Conventions", "CF-1.8");
    for (const auto &[name, value] : layout.attributes) {
        impl_->file.setText(NC_GLOBAL, name, value);
    }
    impl_->defineAxes();
    impl_->defineParameters();
    impl_->defineFlags();
    impl_->defineSpectra();
    impl_->file.endDefinitions();
    impl_->writeAxes();
}

ResultFileWriter::~ResultFileWriter() = default;

void ResultFileWriter::append(const ResultRow &row) {
    Impl &impl = *impl_;
    const std::size_t at = impl.written;
    const BurstResult &result = row.result;
    impl.file.write(impl.time, {at}, row.startTime);
    impl.file.write(impl.burst, {at}, static_cast<double>(row.burst));
    for (std::size_t i = 0; i < impl.values.size(); ++i) {
        impl.file.write(impl.values[i], {at},
                        result.processed ? parameters()[i].value(result) : kUnknown);
    }
    const double depth = present(result.waves.instrumentDepth) + impl.layout.pressureHeight;
    impl.file.write(impl.waterDepth, {at}, result.processed ? depth : kUnknown);
    for (std::size_t i = 0; i < impl.truth.size(); ++i) {
        const Truth truth = row.truth.value_or(Truth{});
        impl.file.write(impl.truth[i], {at}, truth.*kTruthVariables[i].field);
    }
    impl.file.write(impl.flags, {at},
                    result.processed ? result.waves.qualityFlags : OV_FLAG_NO_RESULT);
    impl.file.write(impl.source, {at}, static_cast<double>(result.waves.spectrumSource));
    impl.writeSpectra(at, result);
    impl.writeDistribution(at, result);
    ++impl.written;
}

void ResultFileWriter::publish() { impl_->file.publish(); }

void ResultFileWriter::commit() { impl_->file.commit(); }

} // namespace orvik
