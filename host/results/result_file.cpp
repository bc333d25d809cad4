#include "results/result_file.hpp"

#include <algorithm>
#include <cmath>
#include <limits>
#include <type_traits>

#include "burst/burst_file.hpp"
#include "netcdf/nc_file.hpp"
#include "results/result_variables.hpp"

namespace orvik {

namespace {

constexpr float kFill = std::numeric_limits<float>::quiet_NaN();
constexpr int kNoSource = -1;

// Bursts whose numbers and lines are written together: a call of the netCDF library costs more than they do. Their
// directional spectra are large enough to be written one by one.
constexpr std::size_t kBlock = 64;

} // namespace

struct ResultFileWriter::Impl {
    Impl(const std::string &path, const ResultLayout &theLayout) : file(path), layout(theLayout) {}

    int addData(const char *name, nc_type type, const std::vector<int> &dimensions,
                NcWriter::Attributes attributes);
    // Results, which the quality flag judges.
    int addJudged(const VariableText &text, const std::vector<int> &dimensions);
    void defineTimes();
    void defineAxes();
    void definePlace();
    void defineParameters();
    void defineFlags();
    void defineNotes();
    void defineSpectra();
    void writeAxes();
    void writeBlock();
    void writeTimes();
    void writeParameters();
    void writeFlags();
    void writeNotes();
    void writeSpectra();
    void writeTrackSpectrum();
    void writeDistribution(const BurstResult &result); // of the burst behind those in the block

    // A variable's values, one or `perRow` of each burst in the block.
    template <typename ValueOf> void writeEach(int variable, const ValueOf &valueOf);
    template <typename ValueOf>
    void writeLines(int variable, std::size_t perRow, const ValueOf &valueOf);

    [[nodiscard]] bool hasPlace() const {
        return std::isfinite(layout.longitude) && std::isfinite(layout.latitude);
    }

    NcWriter file;
    ResultLayout layout;
    std::vector<ResultRow> block; // in the file only with their directional spectra
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

int ResultFileWriter::Impl::addJudged(const VariableText &text,
                                      const std::vector<int> &dimensions) {
    NcWriter::Attributes attributes = describe(text, layout.comingFrom);
    attributes.emplace_back("ancillary_variables", "quality_flag");
    return addData(text.name, NC_FLOAT, dimensions, attributes);
}

void ResultFileWriter::Impl::defineTimes() {
    timeDimension = file.addDimension("time", NC_UNLIMITED);
    const int boundsDimension = file.addDimension("bnds", 2);
    time = file.addCoordinate("time", NC_DOUBLE, {timeDimension},
                              {{"units", "seconds since 1970-01-01 00:00:00"},
                               {"calendar", "standard"},
                               {"standard_name", "time"},
                               {"axis", "T"},
                               {"bounds", "time_bnds"},
                               {"long_name", "start of the burst"}});
    // Bounds have the attributes of what they bound.
    bounds = file.addCoordinate("time_bnds", NC_DOUBLE, {timeDimension, boundsDimension}, {});
    file.setChunks(bounds, {kBlock, 2});
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
    freq = file.addCoordinate("freq", NC_FLOAT, {freqDimension}, frequency);
    fine = file.addCoordinate("freq_surface_track", NC_FLOAT, {fineDimension}, frequency);
    dir = file.addCoordinate(
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
        values.push_back(parameter.ofRejectedBursts
                             ? addData(parameter.text.name, NC_FLOAT, {timeDimension},
                                       describe(parameter.text, layout.comingFrom))
                             : addJudged(parameter.text, {timeDimension}));
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
                    {{"long_name", "what was done otherwise than asked, and what to mind"}});
}

void ResultFileWriter::Impl::defineSpectra() {
    for (const Spectrum &spectrum : spectra()) {
        series.push_back(addJudged(spectrum.text, {timeDimension, freqDimension}));
        file.setChunks(series.back(), {kBlock, layout.frequencies.size()});
    }
    trackSpectrum = addJudged({"variance_density_surface_track", "m2 s", kDensityName,
                               "elevation spectrum from the surface track"},
                              {timeDimension, fineDimension});
    file.setChunks(trackSpectrum, {kBlock, layout.fineFrequencies.size()});
    distribution = addJudged(
        {"efth", "m2 s degree-1", "sea_surface_wave_directional_variance_spectral_density",
         "maximum entropy directional spectrum of a1, b1, a2, b2 and variance_density"},
        {timeDimension, freqDimension, dirDimension});
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

template <typename ValueOf>
void ResultFileWriter::Impl::writeEach(int variable, const ValueOf &valueOf) {
    std::vector<std::decay_t<decltype(valueOf(block.front()))>> column;
    column.reserve(block.size());
    for (const ResultRow &row : block) {
        column.push_back(valueOf(row));
    }
    file.write(variable, {written}, {block.size()}, column);
}

template <typename ValueOf>
void ResultFileWriter::Impl::writeLines(int variable, std::size_t perRow, const ValueOf &valueOf) {
    std::vector<float> column;
    column.reserve(block.size() * perRow);
    for (const ResultRow &row : block) {
        for (std::size_t i = 0; i < perRow; ++i) {
            column.push_back(valueOf(row, i));
        }
    }
    file.write(variable, {written, 0}, {block.size(), perRow}, column);
}

void ResultFileWriter::Impl::writeTimes() {
    writeEach(time, [](const ResultRow &row) { return row.startTime; });
    writeEach(burst, [](const ResultRow &row) { return static_cast<double>(row.burst); });
    std::vector<double> both;
    for (const ResultRow &row : block) {
        both.push_back(row.startTime);
        both.push_back(row.startTime + row.facts.duration);
    }
    file.write(bounds, {written, 0}, {block.size(), 2}, both);
}

void ResultFileWriter::Impl::writeParameters() {
    for (std::size_t i = 0; i < values.size(); ++i) {
        const Parameter &parameter = parameters()[i];
        writeEach(values[i], [&](const ResultRow &row) {
            const bool told = row.result.processed || parameter.ofRejectedBursts;
            return told ? storable(parameter.value(row, layout)) : kUnknown;
        });
    }
    for (std::size_t i = 0; i < truth.size(); ++i) {
        writeEach(truth[i], [&](const ResultRow &row) {
            return storable(row.truth.value_or(Truth{}).*kTruthVariables[i].field);
        });
    }
}

void ResultFileWriter::Impl::writeFlags() {
    writeEach(flags, [](const ResultRow &row) {
        const BurstResult &result = row.result;
        return static_cast<double>(result.processed ? result.waves.qualityFlags
                                                    : OV_FLAG_NO_RESULT);
    });
    writeEach(source, [](const ResultRow &row) {
        const BurstResult &result = row.result;
        return result.processed ? static_cast<double>(result.waves.spectrumSource) : kNoSource;
    });
}

void ResultFileWriter::Impl::writeNotes() {
    writeEach(rejection, [](const ResultRow &row) { return row.result.reason; });
    writeEach(notes, [](const ResultRow &row) {
        std::string remarks;
        for (const std::string &note : row.result.notes) {
            remarks += (remarks.empty() ? "" : "; ") + note;
        }
        return remarks;
    });
}

void ResultFileWriter::Impl::writeSpectra() {
    for (std::size_t s = 0; s < series.size(); ++s) {
        const Spectrum &spectrum = spectra()[s];
        writeLines(series[s], layout.frequencies.size(), [&](const ResultRow &row, std::size_t i) {
            if (!row.result.processed) {
                return kFill;
            }
            const float value = spectrum.value(row, layout, i);
            return spectrum.isDensity ? densityOrFill(value) : presentOrFill(value);
        });
    }
}

void ResultFileWriter::Impl::writeTrackSpectrum() {
    writeLines(
        trackSpectrum, layout.fineFrequencies.size(), [](const ResultRow &row, std::size_t i) {
            return hasTrackSpectrum(row.result) ? densityOrFill(row.result.spectra.trackEnergy()[i])
                                                : kFill;
        });
}

void ResultFileWriter::Impl::writeDistribution(const BurstResult &result) {
    const std::size_t count = layout.frequencies.size();
    const std::size_t directions = layout.directions;
    const float binWidth = 360.0F / static_cast<float>(directions);
    std::vector<float> grid(count * directions, kFill);
    for (std::size_t i = 0; result.processed && i < count; ++i) {
        for (std::size_t k = 0; k < directions; ++k) {
            const float weight = presentOrFill(result.directionWeights.at(i * directions + k));
            grid[i * directions + k] = densityOrFill(result.energy[i]) * weight / binWidth;
        }
    }
    file.write(distribution, {written + block.size(), 0, 0}, {1, count, directions}, grid);
}

void ResultFileWriter::Impl::writeBlock() {
    if (block.empty()) {
        return;
    }
    writeTimes();
    writeParameters();
    writeFlags();
    writeNotes();
    writeSpectra();
    writeTrackSpectrum();
    written += block.size();
    block.clear();
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
    impl_->writeDistribution(row.result);
    impl_->block.push_back(row);
    if (impl_->block.size() == kBlock) {
        impl_->writeBlock();
    }
}

void ResultFileWriter::publish() {
    impl_->writeBlock();
    impl_->file.publish();
}

void ResultFileWriter::commit() {
    impl_->writeBlock();
    impl_->file.commit();
}

} // namespace orvik
