#include "run/unmeasured.hpp"

#include <algorithm>
#include <cmath>
#include <vector>

#include "burst/geometry.hpp"
#include "run/spectrum_tail.hpp"

namespace orvik {

namespace {

constexpr double kGreatestTilt = 10.0; // [degrees] beyond which the library sets its flag

std::vector<double> frequenciesOf(const BurstResult &result, std::size_t count) {
    std::vector<double> frequencies;
    for (std::size_t i = 0; i < count; ++i) {
        frequencies.push_back(result.parameters.frequency(i));
    }
    return frequencies;
}

bool velocityIsTail(const BurstResult &result) {
    const auto density = result.spectra.velocityEnergy();
    return isNothingButTail(density, frequenciesOf(result, density.size()));
}

void removeVelocitySpectrum(BurstResult &result) {
    OVFourierCoefficientSpectra &spectra = *result.spectra.get();
    for (float &density : spectra.secondSpectrum) {
        density = OV_MISSING;
    }
}

} // namespace

bool heightsRestOnTail(const BurstResult &result) {
    return result.processed &&
           static_cast<int>(result.waves.spectrumSource) == OV_SOURCE_VELOCITY &&
           velocityIsTail(result);
}

std::optional<std::string> noteOnUnmeasuredHeight(const BurstResult &result) {
    const int source = static_cast<int>(result.waves.spectrumSource);
    if (!result.processed || source == OV_SOURCE_SURFACE_TRACK) {
        return std::nullopt; // it sees waves of all lengths
    }
    const auto behind = source == OV_SOURCE_VELOCITY ? result.spectra.velocityEnergy()
                                                     : result.spectra.pressureEnergy();
    const std::vector<double> frequencies = frequenciesOf(result, result.energy.size());
    const auto last = lastMeasuredBin(behind, frequencies);
    const std::vector<double> energy(result.energy.begin(), result.energy.end());
    if (!last || !unmeasuredHeight(energy, frequencies, frequencies[*last])) {
        return std::nullopt;
    }
    return "much of the height is a tail that was not measured: short waves did not reach the "
           "sensor, and in seas of such waves the height is a lower limit (see orvik explain)";
}

void removeDirections(BurstResult &result) {
    orvikbase::WaveParameters &waves = result.waves;
    for (float *value :
         {&waves.peakDirection, &waves.meanDirection, &waves.peakSpread, &waves.resultantLength,
          &waves.cellVerticalRange, &waves.aliasingFrequency}) {
        *value = OV_MISSING;
    }
    removeVelocitySpectrum(result);
    OVFourierCoefficientSpectra &spectra = *result.spectra.get();
    for (std::size_t i = 0; i < OV_MAX_FREQUENCIES; ++i) {
        spectra.direction[i] = OV_MISSING;
        spectra.spread[i] = OV_MISSING;
        spectra.coefP[i] = OV_MISSING;
        spectra.coefQ[i] = OV_MISSING;
        spectra.coefR[i] = OV_MISSING;
        spectra.coefS[i] = OV_MISSING;
        spectra.bandValue[i] = OV_MISSING;
    }
    std::fill(result.directionWeights.begin(), result.directionWeights.end(), OV_MISSING);
}

void removeUnmeasuredVelocity(BurstResult &result) {
    if (result.processed && velocityIsTail(result)) {
        removeVelocitySpectrum(result);
    }
}

void judgeTiltOfDownwardHead(double pitch, double roll, BurstResult &result) {
    const double cosine = std::cos(pitch * kRadiansPerDegree) * std::cos(roll * kRadiansPerDegree);
    if (-cosine >= std::cos(kGreatestTilt * kRadiansPerDegree)) {
        result.waves.qualityFlags &= ~OV_FLAG_TILT;
    }
}

} // namespace orvik
