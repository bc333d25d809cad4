#include "results/result_file.hpp"

#include <cmath>
#include <limits>

#include "burst/burst_file.hpp"
#include "netcdf/nc_file.hpp"
#include "results/result_variables.hpp"

namespace orvik {

namespace {

constexpr float kFill = std::numeric_limits<float>::quiet_NaN();
constexpr int kNoSource = -1;

} // namespace

struct ResultFileWriter::Impl {
    Impl(const std::string &path, const ResultLayout &theLayout) : file(path), layout(theLayout) {}

    int addData(const char *name, nc_type type, const std::vector<int> &dimensions,
                NcWriter::Attributes attributes);
    void defineTimes();
    void defineAxes();
    void definePlace();
    void defineParameters();
    void defineFlags();
    void defineNotes();
    void defineSpectra();
    void writeAxes();
    void writeTimes(std::size_t row, const ResultRow &burst);
    void writeParameters(std::size_t row, const ResultRow &burst);
    void writeSpectra(std::size_t row, const ResultRow &burst);
    void writeTrackSpectrum(std::size_t row, const BurstResult &result);
    void writeDistribution(std::size_t row, const BurstResult &result);
    [[nodiscard]] bool hasPlace() const {
        return std::isfinite(layout.longitude) && std::isfinite(layout.latitude);
    }

    NcWriter file;
    ResultLayout layout;
    std::size_t written = 0;
    int timeDimension = -1;
    int freqDimension = -1;
    int fineDimension = -1;
    int dirDimension = -1;
    int time = -1;
    int bounds = -1;
    int burst = -1;
    int freq = -1;
    int fine = -1;
    int dir = -1;
    int longitude = -1;
    int latitude = -1;
    int flags = -1;
    int source = -1;
    int rejection = -1;
    int notes = -1;
    int trackSpectrum = -1;
    int distribution = -1;
    std::vector<int> values;
    std::vector<int> series;
    std::vector<int> truth;
};

int ResultFileWriter::Impl::addData(const char *name, nc_type type,
                                    const std::vector<int> &dimensions,
                                    NcWriter::Attributes attributes) {
    if (hasPlace()) {
        attributes.emplace_back("coordinates", "longitude latitude");
    }
    return file.addVariable(name, type, dimensions, attributes);
}

void ResultFileWriter::Impl::defineTimes() {
    timeDimension = file.addDimension("time", NC_UNLIMITED);
    const int boundsDimension = file.addDimension("bnds", 2);
    time = file.addVariable("time", NC_DOUBLE, {timeDimension},
                            {{"units", "seconds since 1970-01-01 00:00:00"},
                             {"calendar", "standard"},
                             {"standard_name", "time"},
                             {"axis", "T"},
                             {"bounds", "time_bnds"},
                             {"long_name", "start of the burst"}});
    // Bounds have the attributes of what they bound.
    bounds = file.addVariable("time_bnds", NC_DOUBLE, {timeDimension, boundsDimension}, {});
    burst =
        addData("burst", NC_INT, {timeDimension},
                {{"units", "1"}, {"long_name", "place of the burst in the burst file, from 0"}});
}

void ResultFileWriter::Impl::defineAxes() {
    freqDimension = file.addDimension("freq", layout.frequencies.size());
    fineDimension = file.addDimension("freq_surface_track", layout.fineFrequencies.size());
    dirDimension = file.addDimension("dir", layout.directions);
    const NcWriter::Attributes frequency{
        {"units", "Hz"}, {"standard_name", "wave_frequency"}, {"long_name", "frequency"}};
    freq = file.addVariable("freq", NC_FLOAT, {freqDimension}, frequency);
    fine = file.addVariable("freq_surface_track", NC_FLOAT, {fineDimension}, frequency);
    dir = file.addVariable(
        "dir", NC_FLOAT, {dirDimension},
        describe({"dir", "degree", "sea_surface_wave_from_direction",
                  layout.comingFrom ? "direction that waves come from, clockwise from true north"
                                    : "direction that waves go to, clockwise from true north"},
                 layout.comingFrom));
}

void ResultFileWriter::Impl::definePlace() {
    if (!hasPlace()) {
        return;
    }
    longitude = file.addVariable(
        "longitude", NC_DOUBLE, {},
        describe({"longitude", "degrees_east", "longitude", "longitude of the instrument"}));
    latitude = file.addVariable(
        "latitude", NC_DOUBLE, {},
        describe({"latitude", "degrees_north", "latitude", "latitude of the instrument"}));
}

void ResultFileWriter::Impl::defineParameters() {
    for (const Parameter &parameter : parameters()) {
        NcWriter::Attributes attributes = describe(parameter.text, layout.comingFrom);
        if (!parameter.ofRejectedBursts) {
            attributes.emplace_back("ancillary_variables", "quality_flag");
        }
        values.push_back(addData(parameter.text.name, NC_FLOAT, {timeDimension}, attributes));
    }
    for (const TruthVariable &variable : kTruthVariables) {
        if (layout.hasTruth) {
            truth.push_back(addData(variable.name, NC_FLOAT, {timeDimension},
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
        addData("quality_flag", NC_INT, {timeDimension},
                describe({"quality_flag", "1", "quality_flag", "conditions met while processing"}));
    file.setIntegers(flags, "flag_masks", masks);
    file.setText(flags, "flag_meanings", meanings);
    source = addData(
        "spectrum_source", NC_INT, {timeDimension},
        describe({"spectrum_source", "1", "", "series behind variance_density and the heights"}));
    file.setFill(source, kNoSource);
    file.setIntegers(source, "flag_values",
                     {OV_SOURCE_PRESSURE, OV_SOURCE_VELOCITY, OV_SOURCE_SURFACE_TRACK});
    file.setText(source, "flag_meanings", "pressure velocity surface_track");
}

void ResultFileWriter::Impl::defineNotes() {
    rejection = addData("rejection_reason", NC_STRING, {timeDimension},
                        {{"long_name", "why the burst has no results; empty when it has"}});
    notes = addData("processing_notes", NC_STRING, {timeDimension},
                    {{"long_name", "what was done otherwise than asked"}});
}

void ResultFileWriter::Impl::defineSpectra() {
    for (const Spectrum &spectrum : spectra()) {
        series.push_back(addData(spectrum.text.name, NC_FLOAT, {timeDimension, freqDimension},
                                 describe(spectrum.text, layout.comingFrom)));
    }
    trackSpectrum =
        addData("variance_density_surface_track", NC_FLOAT, {timeDimension, fineDimension},
                describe({"variance_density_surface_track", "m2 s", kDensityName,
                          "elevation spectrum from the surface track"}));
    distribution = addData(
        "efth", NC_FLOAT, {timeDimension, freqDimension, dirDimension},
        describe({"efth", "m2 s degree-1", "sea_surface_wave_directional_variance_spectral_density",
                  "maximum entropy directional spectrum of a1, b1, a2, b2 and "
                  "variance_density"}));
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
    if (hasPlace()) {
        file.writeScalar(longitude, layout.longitude);
        file.writeScalar(latitude, layout.latitude);
    }
}

void ResultFileWriter::Impl::writeTimes(std::size_t row, const ResultRow &result) {
    file.write(time, {row}, result.startTime);
    file.write(bounds, {row, 0}, result.startTime);
    file.write(bounds, {row, 1}, result.startTime + result.facts.duration);
    file.write(burst, {row}, static_cast<double>(result.burst));
}

void ResultFileWriter::Impl::writeParameters(std::size_t row, const ResultRow &result) {
    const bool processed = result.result.processed;
    for (std::size_t i = 0; i < values.size(); ++i) {
        const Parameter &parameter = parameters()[i];
        const bool told = processed || parameter.ofRejectedBursts;
        file.write(values[i], {row}, told ? parameter.value(result, layout) : kUnknown);
    }
    for (std::size_t i = 0; i < truth.size(); ++i) {
        const Truth truths = result.truth.value_or(Truth{});
        file.write(truth[i], {row}, truths.*kTruthVariables[i].field);
    }
    const orvikbase::WaveParameters &waves = result.result.waves;
    file.write(flags, {row}, processed ? waves.qualityFlags : OV_FLAG_NO_RESULT);
    file.write(source, {row}, processed ? static_cast<double>(waves.spectrumSource) : kNoSource);
    std::string remarks;
    for (const std::string &note : result.result.notes) {
        remarks += (remarks.empty() ? "" : "; ") + note;
    }
    file.write(rejection, {row}, result.result.reason);
    file.write(notes, {row}, remarks);
}

void ResultFileWriter::Impl::writeSpectra(std::size_t row, const ResultRow &result) {
    const std::size_t count = layout.frequencies.size();
    for (std::size_t s = 0; s < series.size(); ++s) {
        const Spectrum &spectrum = spectra()[s];
        std::vector<float> line(count, kFill);
        for (std::size_t i = 0; result.result.processed && i < count; ++i) {
            const float value = spectrum.value(result, layout, i);
            line[i] = spectrum.isDensity ? densityOrFill(value) : presentOrFill(value);
        }
        file.write(series[s], {row, 0}, {1, count}, line);
    }
}

void ResultFileWriter::Impl::writeTrackSpectrum(std::size_t row, const BurstResult &result) {
    std::vector<float> line(layout.fineFrequencies.size(), kFill);
    for (std::size_t i = 0; hasTrackSpectrum(result) && i < line.size(); ++i) {
        line[i] = densityOrFill(result.spectra.trackEnergy()[i]);
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
            grid[i * directions + k] = densityOrFill(result.energy[i]) * weight / binWidth;
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
    impl_->defineTimes();
    impl_->defineAxes();
    impl_->definePlace();
    impl_->defineParameters();
    impl_->defineFlags();
    impl_->defineNotes();
    impl_->defineSpectra();
    impl_->file.endDefinitions();
    impl_->writeAxes();
}

ResultFileWriter::~ResultFileWriter() = default;

void ResultFileWriter::append(const ResultRow &row) {
    const std::size_t at = impl_->written;
    impl_->writeTimes(at, row);
    impl_->writeParameters(at, row);
    impl_->writeSpectra(at, row);
    impl_->writeTrackSpectrum(at, row.result);
    impl_->writeDistribution(at, row.result);
    ++impl_->written;
}

void ResultFileWriter::publish() { impl_->file.publish(); }

void ResultFileWriter::commit() { impl_->file.commit(); }

} // namespace orvik
