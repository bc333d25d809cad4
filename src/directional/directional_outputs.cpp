#include "directional/directional_outputs.hpp"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <cstring>

#include "directional/moments.hpp"
#include "frame/constants.hpp"

namespace ov {
namespace {

constexpr double kMissingTolerance =
    0.0001; // a host's value this near the marker counts as missing

// A value that is no number is missing too.
bool isMissing(float value) {
    return !(std::abs(static_cast<double>(value) - static_cast<double>(kMissing)) >
             kMissingTolerance);
}

// Single-precision complex numbers, spelled out: the standard's division differs between compilers in its last bits.
struct Complex {
    float re;
    float im;
};

Complex conjugate(Complex a) { return {a.re, -a.im}; }
Complex operator-(Complex a, Complex b) { return {a.re - b.re, a.im - b.im}; }
Complex operator*(Complex a, Complex b) {
    return {a.re * b.re - a.im * b.im, a.re * b.im + a.im * b.re};
}
Complex dividedBy(Complex a, float d) { return {a.re / d, a.im / d}; }
float squaredModulus(Complex a) { return a.re * a.re + a.im * a.im; }

// exp(-i angle)
Complex turn(float angle) {
    const double a = angle;
    return {static_cast<float>(std::cos(a)), static_cast<float>(-std::sin(a))};
}

// (a + i b) turned by `angle` [rad].
Complex rotated(float a, float b, double angle) {
    const double c = std::cos(angle);
    const double s = std::sin(angle);
    const double da = a;
    const double db = b;
    return {static_cast<float>(da * c + db * s), static_cast<float>(db * c - da * s)};
}

// A host's array inside a packed block may lie at any address.
template <class Value> void store(Value *array, int at, Value value) {
    std::memcpy(reinterpret_cast<unsigned char *>(array) +
                    static_cast<std::size_t>(at) * sizeof value,
                &value, sizeof value);
}

// Maximum entropy distribution of Lygre and Krogstad (1986) for one bin:
//
//     D(theta) = (1 - phi1 c1* - phi2 c2*) / (2 pi |1 - phi1 exp(-i theta) - phi2 exp(-2 i theta)|^2)
//     phi1 = (c1 - c2 c1*) / (1 - |c1|^2),  phi2 = c2 - c1 phi1
class MaximumEntropy {
public:
    MaximumEntropy(Complex c1, Complex c2)
        : phi1_(dividedBy(c1 - c2 * conjugate(c1), 1.0F - squaredModulus(c1))),
          phi2_(c2 - c1 * phi1_),
          numerator_((Complex{1.0F, 0.0F} - phi1_ * conjugate(c1) - phi2_ * conjugate(c2)).re) {}

    [[nodiscard]] float density(float theta) const {
        const Complex denominator =
            Complex{1.0F, 0.0F} - phi1_ * turn(theta) - phi2_ * turn(2.0F * theta);
        const float modulus = std::sqrt(squaredModulus(denominator));
        return static_cast<float>(static_cast<double>(numerator_ / (modulus * modulus)) / kTwoPi);
    }

private:
    Complex phi1_;
    Complex phi2_;
    float numerator_;
};

} // namespace

void setFourierCoefficients(WaveVariables &rec, OVFourierCoefficientSpectra &block) {
    const std::int32_t given = block.count; // by value: host memory may be misaligned
    const int count = std::clamp(given, 0, kMaxFreq);
    for (int f = 0; f < count; ++f) {
        if (isMissing(block.coefP[f]) || isMissing(block.coefQ[f])) {
            rec.fourierA1[f] = kMissing;
            rec.fourierB1[f] = kMissing;
            rec.fourierA2[f] = kMissing;
            rec.fourierB2[f] = kMissing;
            rec.meanDirection[f] = kMissing;
            rec.directionalSpread[f] = kMissing;
        } else {
            rec.fourierB1[f] = -block.coefP[f];
            rec.fourierA1[f] = -block.coefQ[f];
            rec.fourierA2[f] = -block.coefR[f];
            rec.fourierB2[f] = block.coefS[f]; // this one keeps its sign
            rec.meanDirection[f] =
                nauticalDirection(rec.fourierA1[f], rec.fourierB1[f], rec.reverseDirections != 0);
            rec.directionalSpread[f] = circularSpread(rec.fourierA1[f], rec.fourierB1[f]);
        }
        block.direction[f] = rec.meanDirection[f];
        block.spread[f] = rec.directionalSpread[f];
    }
}

void setSpectraUsed(WaveVariables &rec, const void *values, std::int32_t count) {
    const auto used = static_cast<std::size_t>(std::clamp<std::int32_t>(count, 0, kMaxFreqFine));
    std::memcpy(rec.spectraUsed, values, used * sizeof(float));
}

void getDirectionalSpectrum(WaveVariables &rec, OVFourierCoefficientSpectra &block) {
    for (int f = 0; f < mainBinCount(rec); ++f) {
        const float a = block.coefP[f]; // here P stands for a1 and Q for b1, unlike in the setter
        const float b = block.coefQ[f];
        block.direction[f] = nauticalDirection(a, b, false);
        if (rec.reverseDirections != 0) {
            rec.meanDirection[f] -= 180.0F;
            if (rec.meanDirection[f] < 0.0F) {
                rec.meanDirection[f] += 360.0F;
            }
        }
        const float length = std::min(std::sqrt(b * b + a * a), 1.0F);
        const float twice = (1.0F - length) * 2.0F;
        const auto spread = static_cast<float>(std::sqrt(static_cast<double>(twice)) * 180.0 / kPi);
        block.spread[f] = static_cast<float>(std::fmod(static_cast<double>(spread), 360.0));
    }
}

void getFullDirSpectraWithEnergy(const WaveVariables &rec, float *out) {
    for (int f = 0; f < mainBinCount(rec); ++f) {
        const double energy = rec.spectraUsed[f];
        for (int k = 0; k < directionCount(rec); ++k) {
            const float value = f <= rec.lastValidFreqIndex
                                    ? static_cast<float>(energy * rec.dirSpectrum[f][k])
                                    : kMissing;
            store(out, f * kMaxDir + k, value);
        }
    }
}

void getFullWaveDirSpectrum(WaveVariables &rec, float *out) {
    const int directions = directionCount(rec);
    const auto bins = static_cast<float>(directions);
    const double angle = rec.reverseDirections == 1 ? static_cast<double>(kPiF) : 0.0;
    for (int f = 0; f < mainBinCount(rec); ++f) {
        const MaximumEntropy entropy(rotated(rec.fourierA1[f], rec.fourierB1[f], angle),
                                     rotated(rec.fourierA2[f], rec.fourierB2[f], 2.0 * angle));
        for (int k = 0; k < directions; ++k) {
            const float theta = kHalfPiF - (kTwoPiF / bins) * static_cast<float>(k);
            const float density = entropy.density(theta);
            rec.dirSpectrum[f][k] = static_cast<double>(density) * 2.0 * kPi / directions;
            float weight = density * 2.0F * kPiF / bins;
            if (weight < 0.0F) {
                weight = 0.0F; // the record keeps its sign
            }
            store(out, f * kMaxDir + k, rec.fourierA1[f] == kMissing ? kMissing : weight);
        }
    }
}

} // namespace ov
