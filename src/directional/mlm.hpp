// Directional distribution of a frequency bin by the maximum likelihood method and its iterative refinement.
#pragma once

#include "frame/record.hpp"

namespace ov {

// Pivoted factorisation of the packed Hermitian mlmMatrix in place; mlmSeriesOrder receives the pivot order. Stops
// early when no pivot exceeds convergenceTolerance times the largest diagonal element.
void factorMlmMatrix(WaveVariables &rec);

// Factors mlmMatrix and writes the estimate 1 / (g^H C^-1 g), normalised, to directionalDistribution.
void estimateMlm(WaveVariables &rec);

// Cross-spectra that the distribution imlmWork would produce, into mlmMatrix.
void computeModelCrossSpectra(WaveVariables &rec);

// Feeds the difference between the estimate of the data and the estimate of the distribution's own cross-spectra back
// into the distribution, at most iterationLimit times.
void refineImlm(WaveVariables &rec);

} // namespace ov
