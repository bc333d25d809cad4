#include "results/result_variables.hpp"

#include <algorithm>
#include <cmath>
#include <limits>
#include <string>

#include "results/confidence.hpp"
#include "run/spectrum_tail.hpp"
#include "simulate/wave_theory.hpp"

namespace orvik {

namespace {

using RowValue = std::function<double(const ResultRow &, const ResultLayout &)>;
using BinValue = std::function<float(const ResultRow &, const ResultLayout &, std::size_t)>;

template <typename Value> auto fromResult(Value value) {
    if constexpr (std::is_invocable_v<Value, const BurstResult &>) {
        return RowValue(
            [value](const ResultRow &row, const ResultLayout &) { return value(row.result); });
    } else {
        return BinValue([value](const ResultRow &row, const ResultLayout &, std::size_t bin) {
            return value(row.result, bin);
        });
    }
}

RowValue wave(float orvikbase::WaveParameters::*value) {
    return fromResult([value](const BurstResult &result) { return present(result.waves.*value); });
}

RowValue fact(double BurstFacts::*value) {
    return [value](const ResultRow &row, const ResultLayout &) { return row.facts.*value; };
}

double waterDepth(const ResultRow &row, const ResultLayout &layout) {
    return present(row.result.waves.instrumentDepth) + layout.pressureHeight;
}

RowValue cutoff(std::span<const float> (orvikbase::Spectra::*density)() const noexcept) {
    return [density](const ResultRow &row, const ResultLayout &layout) {
        const auto bin = lastMeasuredBin((row.result.spectra.*density)(), layout.frequencies);
        return bin ? layout.frequencies[*bin] : kUnknown;
    };
}

double degrees(const BurstResult &result) {
    return degreesOfFreedom(result.parameters.specBandWidth);
}

// Of a speed that is no number the library makes a direction all the same.
double currentDirection(const BurstResult &result) {
    return std::isfinite(result.currentSpeed) ? result.currentDirection : kUnknown;
}

bool isNegative(float value) { return value < 0.0F && value != OV_MISSING; }

// How many values densityOrFill() raises to 0.
double raisedDensities(const BurstResult &result) {
    const auto count = [](std::span<const float> values) {
        return std::count_if(values.begin(), values.end(), isNegative);
    };
    const auto raised = count(result.energy) + count(result.spectra.pressureEnergy()) +
                        count(result.spectra.velocityEnergy()) +
                        (hasTrackSpectrum(result) ? count(result.spectra.trackEnergy()) : 0);
    return static_cast<double>(raised);
}

// The library reports a direction beyond the aliasing limit too, where there is none; the coefficients are missing there.
BinValue ofDirections(std::span<const float> (orvikbase::Spectra::*values)() const noexcept) {
    return fromResult([values](const BurstResult &result, std::size_t bin) {
        const float coefficient = result.spectra.get()->coefP[bin];
        return coefficient == OV_MISSING ? coefficient : (result.spectra.*values)()[bin];
    });
}

float wavenumber(const ResultRow &row, const ResultLayout &layout, std::size_t bin) {
    const double depth = waterDepth(row, layout);
    if (!(depth > 0.0)) {
        return std::numeric_limits<float>::quiet_NaN();
    }
    return static_cast<float>(
        solveWavenumber(kTwoPi * layout.frequencies[bin], depth, 0.0).value_or(kUnknown));
}

} // namespace

const std::vector<Parameter> &parameters() {
    static const std::vector<Parameter> kAll{
        // clang-format off
        {{"hm0", "m", "sea_surface_wave_significant_height", "spectral significant wave height, 4 sqrt(m0)"}, wave(&orvikbase::WaveParameters::significantHeight)},
        {{"tp", "s", "sea_surface_wave_period_at_variance_spectral_density_maximum", "peak period"}, wave(&orvikbase::WaveParameters::peakPeriod)},
        {{"tm02", "s", "sea_surface_wave_mean_period_from_variance_spectral_density_second_frequency_moment", "mean period sqrt(m0 / m2)"}, wave(&orvikbase::WaveParameters::meanPeriod)},
        {{"tm_10", "s", "sea_surface_wave_mean_period_from_variance_spectral_density_inverse_frequency_moment", "energy period m-1 / m0"}, wave(&orvikbase::WaveParameters::energyPeriod)},
        {{"peak_direction", "degree", "sea_surface_wave_from_direction_at_variance_spectral_density_maximum", "wave direction at the spectral peak"}, wave(&orvikbase::WaveParameters::peakDirection)},
        {{"mean_direction", "degree", "sea_surface_wave_from_direction", "energy-weighted mean wave direction"}, wave(&orvikbase::WaveParameters::meanDirection)},
        {{"peak_spread", "degree", "sea_surface_wave_directional_spread_at_variance_spectral_density_maximum", "directional spread at the spectral peak"}, wave(&orvikbase::WaveParameters::peakSpread)},
        {{"resultant_length", "1", "", "length of the mean direction vector"}, wave(&orvikbase::WaveParameters::resultantLength)},
        {{"h_third", "m", "sea_surface_wave_significant_height", "mean height of the highest third of the waves"}, wave(&orvikbase::WaveParameters::thirdHeight)},
        {{"t_third", "s", "sea_surface_wave_significant_period", "mean period of the highest third of the waves"}, wave(&orvikbase::WaveParameters::thirdPeriod)},
        {{"h_tenth", "m", "sea_surface_wave_mean_height_of_highest_tenth", "mean height of the highest tenth of the waves; 1.27 hm0 without a surface track"}, wave(&orvikbase::WaveParameters::tenthHeight)},
        {{"t_tenth", "s", "sea_surface_wave_mean_period_of_highest_tenth", "mean period of the highest tenth of the waves"}, wave(&orvikbase::WaveParameters::tenthPeriod)},
        {{"h_max", "m", "sea_surface_wave_maximum_height", "greatest wave height; 1.67 hm0 without a surface track"}, wave(&orvikbase::WaveParameters::maxHeight)},
        {{"t_max", "s", "sea_surface_wave_period_of_highest_wave", "period of the highest wave"}, wave(&orvikbase::WaveParameters::maxPeriod)},
        {{"tz", "s", "sea_surface_wave_zero_upcrossing_period", "mean period between zero up-crossings"}, wave(&orvikbase::WaveParameters::crossingPeriod)},
        {{"checked_hm0", "m", "", "hm0 where the spectrum has a shape"}, wave(&orvikbase::WaveParameters::checkedHeight)},
        {{"checked_tm02", "s", "", "tm02 where all parameters are valid"}, wave(&orvikbase::WaveParameters::checkedMeanPeriod)},
        {{"current_speed", "m s-1", "sea_water_speed", "mean current speed"}, fromResult([](const BurstResult &r) { return r.currentSpeed; })},
        {{"current_direction", "degree", "sea_water_velocity_to_direction", "direction that the mean current goes to"}, fromResult(currentDirection)},
        {{"instrument_depth", "m", "", "mean depth of the pressure sensor"}, wave(&orvikbase::WaveParameters::instrumentDepth)},
        {{"cell_height", "m", "", "height of the measurement cell above the head"}, wave(&orvikbase::WaveParameters::cellVerticalRange)},
        {{"cell_used", "1", "", "cell of the profile that was used, counted from 1; 1 of a point instrument"}, fromResult([](const BurstResult &r) { return static_cast<double>(r.waves.selectedCell); })},
        {{"surface_track_level", "m", "", "mean distance from the head to the surface"}, wave(&orvikbase::WaveParameters::trackLevel)},
        {{"surface_track_bad", "1", "", "surface-track values that were lost, out of range or spikes"}, fromResult([](const BurstResult &r) { return static_cast<double>(r.waves.trackBadCount); })},
        {{"surface_track_spikes", "1", "", "surface-track spikes"}, fromResult([](const BurstResult &r) { return static_cast<double>(r.waves.trackSpikeCount); })},
        {{"method_used", "1", "", "processing method of this burst"}, fromResult([](const BurstResult &r) { return static_cast<double>(r.parameters.method); })},
        {{"aliasing_frequency", "Hz", "", "lowest frequency without directions"}, wave(&orvikbase::WaveParameters::aliasingFrequency)},
        {{"water_depth", "m", "sea_floor_depth_below_sea_surface", "instrument depth and height of the sensor above the bed"}, waterDepth},
        {{"pressure_cutoff_frequency", "Hz", "", "highest frequency of variance_density_pressure that was measured; above it a tail f^-4.5 stands for waves that depth hides"}, cutoff(&orvikbase::Spectra::pressureEnergy)},
        {{"velocity_cutoff_frequency", "Hz", "", "highest frequency of variance_density_velocity that was measured; above it a tail f^-4.5"}, cutoff(&orvikbase::Spectra::velocityEnergy)},
        {{"degrees_of_freedom", "1", "", "degrees of freedom of a spectral density: two for each transform bin averaged"}, fromResult(degrees)},
        {{"confidence_lower_factor", "1", "", "a density times this is the lower 95 % confidence limit"}, fromResult([](const BurstResult &r) { return confidenceFactors(degrees(r)).lower; })},
        {{"confidence_upper_factor", "1", "", "a density times this is the upper 95 % confidence limit"}, fromResult([](const BurstResult &r) { return confidenceFactors(degrees(r)).upper; })},
        {{"raised_densities", "1", "", "spectral densities below 0 that were set to 0"}, fromResult(raisedDensities)},
        {{"burst_duration", "s", "", "length of the burst"}, fact(&BurstFacts::duration), true},
        {{"samples", "1", "", "samples of the burst"}, fact(&BurstFacts::samples), true},
        {{"missing_samples", "1", "", "samples without pressure or velocity"}, fact(&BurstFacts::missingSamples), true},
        {{"surface_track_samples", "1", "", "surface-track samples of the burst"}, fact(&BurstFacts::trackSamples), true},
        {{"surface_track_missing", "1", "", "surface-track samples without an echo"}, fact(&BurstFacts::missingTrackSamples), true},
        {{"heading", "degree", "", "heading of the instrument before declination, clockwise from north"}, fact(&BurstFacts::heading), true},
        {{"pitch", "degree", "", "pitch of the instrument"}, fact(&BurstFacts::pitch), true},
        {{"roll", "degree", "", "roll of the instrument"}, fact(&BurstFacts::roll), true},
        // clang-format on
    };
    return kAll;
}

const std::vector<Spectrum> &spectra() {
    static const std::vector<Spectrum> kAll{
        // clang-format off
        {{"variance_density", "m2 s", kDensityName, "elevation spectrum behind the wave parameters"}, fromResult([](const BurstResult &r, std::size_t i) { return r.energy.at(i); }), true},
        {{"variance_density_pressure", "m2 s", kDensityName, "elevation spectrum from pressure"}, fromResult([](const BurstResult &r, std::size_t i) { return r.spectra.pressureEnergy()[i]; }), true},
        {{"variance_density_velocity", "m2 s", kDensityName, "elevation spectrum from velocity"}, fromResult([](const BurstResult &r, std::size_t i) { return r.spectra.velocityEnergy()[i]; }), true},
        {{"direction", "degree", "sea_surface_wave_from_direction", "mean wave direction by frequency"}, ofDirections(&orvikbase::Spectra::direction)},
        {{"spread", "degree", "sea_surface_wave_directional_spread", "directional spread by frequency"}, ofDirections(&orvikbase::Spectra::spread)},
        {{"a1", "1", "", "mean cosine of the direction that waves come from, clockwise from north"}, fromResult([](const BurstResult &r, std::size_t i) { return float{r.spectra.get()->coefP[i]}; })},
        {{"b1", "1", "", "mean sine of the direction that waves come from, clockwise from north"}, fromResult([](const BurstResult &r, std::size_t i) { return float{r.spectra.get()->coefQ[i]}; })},
        {{"a2", "1", "", "mean cosine of twice that direction"}, fromResult([](const BurstResult &r, std::size_t i) { return float{r.spectra.get()->coefR[i]}; })},
        {{"b2", "1", "", "mean sine of twice that direction"}, fromResult([](const BurstResult &r, std::size_t i) { return float{r.spectra.get()->coefS[i]}; })},
        {{"check_ratio", "1", "", "check ratio of two elevation estimates"}, fromResult([](const BurstResult &r, std::size_t i) { return r.spectra.checkRatio()[i]; })},
        {{"wavenumber", "rad m-1", "", "wavenumber by the linear dispersion relation in water_depth, without current"}, wavenumber},
        // clang-format on
    };
    return kAll;
}

NcWriter::Attributes describe(const VariableText &text, bool comingFrom) {
    NcWriter::Attributes attributes{{"units", text.units}, {"long_name", text.longName}};
    std::string standardName = text.standardName;
    if (!comingFrom && standardName.find("wave_from_direction") != std::string::npos) {
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

double present(float value) {
    return value == OV_MISSING || !std::isfinite(value) ? kUnknown : static_cast<double>(value);
}

double storable(double value) {
    constexpr double kMost = std::numeric_limits<float>::max();
    return std::abs(value) <= kMost ? value : kUnknown;
}

float presentOrFill(float value) {
    return value == OV_MISSING || !std::isfinite(value) ? std::numeric_limits<float>::quiet_NaN()
                                                        : value;
}

float densityOrFill(float value) { return isNegative(value) ? 0.0F : presentOrFill(value); }

bool hasTrackSpectrum(const BurstResult &result) {
    return result.processed && result.spectra.hasTrack() &&
           usesTrack(static_cast<int>(result.parameters.method));
}

} // namespace orvik
