// The variables of result files: names, units, CF names, and how their values follow from a burst's result.
#pragma once

#include <cstddef>
#include <functional>
#include <vector>

#include "netcdf/nc_file.hpp"
#include "results/result_file.hpp"

namespace orvik {

// Standard names of these tables are for directions that waves come from; describe() turns them.
struct VariableText {
    const char *name;
    const char *units;
    const char *standardName; // empty: CF has none
    const char *longName;
};

// A value a burst.
struct Parameter {
    VariableText text;
    std::function<double(const ResultRow &, const ResultLayout &)> value;
    bool ofRejectedBursts = false; // otherwise missing for them
};

// A value a burst and frequency of the main axis.
struct Spectrum {
    VariableText text;
    std::function<float(const ResultRow &, const ResultLayout &, std::size_t)> value;
    bool isDensity = false; // never negative
};

inline constexpr const char *kDensityName = "sea_surface_wave_variance_spectral_density";

const std::vector<Parameter> &parameters();
const std::vector<Spectrum> &spectra();

// In "standard_name" from_direction reads to_direction, where CF has such a name, when directions say where waves go.
NcWriter::Attributes describe(const VariableText &text, bool comingFrom = true);

// NaN for what is no number of single precision, as the variables of results are.
double storable(double value);
// NaN for the library's marker of a missing result.
float presentOrFill(float value);
// The same of a density, which a subtraction of noise may leave below 0.
float densityOrFill(float value);

// Whether the surface track gave a spectrum of its own.
bool hasTrackSpectrum(const BurstResult &result);

} // namespace orvik
