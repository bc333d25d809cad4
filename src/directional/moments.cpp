#include "directional/moments.hpp"

#include <algorithm>
#include <cmath>

#include "frame/constants.hpp"

namespace ov {
namespace {

struct Coefficients {
    double a1;
    double b1;
    double a2;
    double b2;
};

// Turns the coefficients by directionOffset, stores them, and derives direction and spread from what was stored.
void storeRotated(WaveVariables &rec, int f, const Coefficients &c) {
    const double turn = static_cast<double>(rec.directionOffset) * kPi / 180.0;
    const double c1 = std::cos(turn);
    const double s1 = std::sin(turn);
    const double c2 = std::cos(2.0 * turn);
    const double s2 = std::sin(2.0 * turn);
    rec.fourierA1[f] = static_cast<float>(c1 * c.a1 + s1 * c.b1);
    rec.fourierB1[f] = static_cast<float>(c1 * c.b1 - s1 * c.a1);
    rec.fourierA2[f] = static_cast<float>(c2 * c.a2 + s2 * c.b2);
    rec.fourierB2[f] = static_cast<float>(c2 * c.b2 - s2 * c.a2);
    rec.meanDirection[f] =
        nauticalDirection(rec.fourierA1[f], rec.fourierB1[f], rec.reverseDirections != 0);
    rec.directionalSpread[f] = circularSpread(rec.fourierA1[f], rec.fourierB1[f]);
}

// The elevation-like series: pressure (last) for method 1, surface track (before it) for method 2.
int referenceSeries(const WaveVariables &rec) {
    switch (rec.activeMethod) {
    case 1:
        return std::max(rec.seriesCount - 1, 0);
    case 2:
        return std::max(rec.seriesCount - 2, 0);
    default:
        return 4;
    }
}

// Adds a double-precision term to a running sum that is kept in single precision.
void addTo(float &sum, double term) { sum = static_cast<float>(static_cast<double>(sum) + term); }

float wrapped360(float degrees) {
    const double value = degrees;
    const double positive =
        static_cast<double>(value < 0.0 ? static_cast<float>(value + 360.0) : degrees);
    return static_cast<float>(std::fmod(positive, 360.0));
}

} // namespace

float nauticalDirection(float a, float b, bool reverse) {
    const double angle =
        (kHalfPi - std::atan2(static_cast<double>(b), static_cast<double>(a))) * 180.0 / kPi;
    float direction = wrapped360(static_cast<float>(angle));
    if (reverse) {
        direction -= 180.0F;
        if (direction < 0.0F) {
            direction += 360.0F;
        }
    }
    return direction;
}

float circularSpread(float a, float b) {
    const double r1 = std::sqrt(static_cast<double>(a * a + b * b));
    const double spread = std::sqrt(2.0 * (1.0 - std::min(r1, 1.0))) * 180.0 / kPi;
    return wrapped360(static_cast<float>(spread));
}

// Unrotated, with C the co-spectra, u and v the velocities and r the reference series:
//
//     a1 = Cru / sqrt(Crr (Cuu + Cvv))     a2 = (Cuu - Cvv) / (Cuu + Cvv)
//     b1 = Crv / sqrt(Crr (Cuu + Cvv))     b2 = 2 Cuv / (Cuu + Cvv)
void computeMomentsFromCrossSpectra(WaveVariables &rec, int f) {
    const int r = referenceSeries(rec);
    const auto &c = rec.crossSpectralMatrix;
    const double s = static_cast<double>(c[0][0] + c[1][1]);
    const double d = std::sqrt(static_cast<double>(c[r][r]) * s);
    const double uu = c[0][0];
    const double vv = c[1][1];
    const double uv = c[1][0];
    const double ru = c[r][0];
    const double rv = c[r][1];
    storeRotated(rec, f, {ru / d, rv / d, (uu - vv) / s, (2.0 * uv) / s});
}

// The last bin repeats the first, so that angle 0 counts twice; the estimator closes the circle that way.
void computeMomentsFromDistribution(WaveVariables &rec, const DirectionTable &table, int f) {
    double sum = 0.0;
    float a1 = 0.0F;
    float b1 = 0.0F;
    float a2 = 0.0F;
    float b2 = 0.0F;
    for (int k = 0; k < table.directions; ++k) {
        const auto at = static_cast<std::size_t>(k);
        const double weight = rec.directionalDistribution[k];
        sum += weight;
        addTo(a1, table.firstCos[at] * weight);
        addTo(b1, table.firstSin[at] * weight);
        addTo(a2, table.secondCos[at] * weight);
        addTo(b2, table.secondSin[at] * weight);
    }
    storeRotated(rec, f,
                 {static_cast<double>(a1) / sum, static_cast<double>(b1) / sum,
                  static_cast<double>(a2) / sum, static_cast<double>(b2) / sum});
}

} // namespace ov
