// How far chance alone carries a spectrum from that of the sea.
#pragma once

#include <span>

namespace orvik {

// Of a spectral density: each of the transform bins averaged into it has two.
double degreesOfFreedom(int specBandWidth);

// The true value lies between `lower` and `upper` times the measured one with a probability of 95 %.
struct ConfidenceFactors {
    double lower;
    double upper;
};

// Of a quantity whose measured value follows the chi-squared distribution, as spectral densities do.
ConfidenceFactors confidenceFactors(double degreesOfFreedom);

// Of 4 sqrt(m0) of a sea with this spectrum [m^2/Hz], in equal steps [Hz], seen for `duration` [s]: m0 has
// 2 duration (sum S df)^2 / (sum S^2 df) degrees of freedom. A narrow spectrum holds few independent waves.
ConfidenceFactors heightConfidence(std::span<const double> density, double step, double duration);

} // namespace orvik
