// Random numbers that are the same on every platform: the standard distributions are not, so only the engine is theirs.
#pragma once

#include <cmath>
#include <complex>
#include <cstdint>
#include <random>

namespace orvik {

class RandomSource {
public:
    explicit RandomSource(std::uint64_t seed) : engine_(seed) {}

    // In [0, 1), all 53 bits of the mantissa.
    double uniform() { return static_cast<double>(engine_() >> 11U) * 0x1.0p-53; }

    // Two independent standard normal numbers (Box and Muller 1958).
    std::complex<double> normalPair() {
        const double radius = std::sqrt(-2.0 * std::log(1.0 - uniform()));
        return std::polar(radius, kTwoPi * uniform());
    }

    double normal() { return normalPair().real(); }

private:
    static constexpr double kTwoPi = 6.28318530717958647692;
    std::mt19937_64 engine_;
};

// A seed for burst `index` that no neighbouring seed or index comes near (the finaliser of splitmix64).
inline std::uint64_t mixedSeed(std::uint64_t seed, std::uint64_t index) {
    std::uint64_t z = seed + (index + 1) * 0x9E3779B97F4A7C15ULL;
    z = (z ^ (z >> 30U)) * 0xBF58476D1CE4E5B9ULL;
    z = (z ^ (z >> 27U)) * 0x94D049BB133111EBULL;
    return z ^ (z >> 31U);
}

} // namespace orvik
