#include "run/unmeasured.hpp"

#include <algorithm>
#include <cmath>
#include <vector>

#include "burst/geometry.hpp"
#include "run/spectrum_tail.hpp"

namespace orvik {

namespace {

constexpr double kGreatestTilt = 10.0; // [degrees] beyond which the library sets its flag

bool velocityIsTail(const BurstResult &result) {
    const auto density = result.spectra.velocityEnergy();
    std::vector<double> frequencies;
    for (std::size_t i = 0; i < density.size(); ++i) {
        frequencies.push_back(result.parameters.frequency(i));
    }
    return isNothingButTail(density, frequencies);
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
