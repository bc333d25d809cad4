#include "results/confidence.hpp"

#include <algorithm>
#include <cmath>
#include <limits>

#include <boost/math/distributions/chi_squared.hpp>

namespace orvik {

double degreesOfFreedom(int specBandWidth) { return 2.0 * std::max(1, specBandWidth / 4); }

ConfidenceFactors confidenceFactors(double degreesOfFreedom) {
    constexpr double kTail = 0.025;
    if (!(degreesOfFreedom > 0.0) || !std::isfinite(degreesOfFreedom)) {
        return {std::numeric_limits<double>::quiet_NaN(), std::numeric_limits<double>::quiet_NaN()};
    }
    const boost::math::chi_squared distribution(degreesOfFreedom);
    return {degreesOfFreedom / quantile(distribution, 1.0 - kTail),
            degreesOfFreedom / quantile(distribution, kTail)};
}

ConfidenceFactors heightConfidence(std::span<const double> density, double step, double duration) {
    double sum = 0.0;
    double squares = 0.0;
    for (const double value : density) {
        if (std::isfinite(value)) {
            sum += value * step;
            squares += value * value * step;
        }
    }
    const ConfidenceFactors variance = confidenceFactors(2.0 * duration * sum * sum / squares);
    return {std::sqrt(variance.lower), std::sqrt(variance.upper)};
}

} // namespace orvik
