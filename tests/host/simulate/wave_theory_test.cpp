// Dispersion, depth decay, spectra and spreading against their own equations.
#include "simulate/wave_theory.hpp"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>

#include "burst/geometry.hpp"
#include "simulate/random_source.hpp"

namespace orvik {
namespace {

TEST(Wavenumber, SolvesTheDispersionRelation) {
    RandomSource random(3);
    int blocked = 0;
    for (int i = 0; i < 20000; ++i) {
        const double omega = kTwoPi * (0.01 + 2.0 * random.uniform());
        const double depth = std::exp(std::log(0.5) + std::log(1000.0) * random.uniform());
        const double current = 4.0 * random.uniform() - 2.0;
        const auto k = solveWavenumber(omega, depth, current);
        if (!k) {
            ++blocked;
            EXPECT_LT(current, 0.0) << "only an opposing current stops a wave";
            continue;
        }
        const double sigma = omega - *k * current;
        EXPECT_GT(sigma, 0.0);
        EXPECT_NEAR(sigma * sigma / (kGravity * *k * std::tanh(*k * depth)), 1.0, 1e-9)
            << "omega " << omega << " depth " << depth << " current " << current;
    }
    EXPECT_GT(blocked, 1000);
    EXPECT_LT(blocked, 10000);
}

TEST(Wavenumber, DeepWaterIsBlockedWhereTheGroupStandsStill) {
    const double current = -1.0;
    const double stopping =
        kGravity / (4.0 * -current); // omega beyond which no deep-water wave gets through
    EXPECT_TRUE(solveWavenumber(0.999 * stopping, 5000.0, current).has_value());
    EXPECT_FALSE(solveWavenumber(1.001 * stopping, 5000.0, current).has_value());
    // Just before, the wave is a quarter as long as in still water.
    const double still = *solveWavenumber(stopping, 5000.0, 0.0);
    EXPECT_NEAR(*solveWavenumber(stopping * (1.0 - 1e-9), 5000.0, current) / still, 4.0, 1e-3);
}

TEST(Wavenumber, Limits) {
    EXPECT_NEAR(*solveWavenumber(2.0, 5000.0, 0.0), 4.0 / kGravity, 1e-12);
    EXPECT_NEAR(*solveWavenumber(0.01, 2.0, 0.0), 0.01 / std::sqrt(kGravity * 2.0), 1e-8);
    EXPECT_LT(*solveWavenumber(1.0, 20.0, 0.5), *solveWavenumber(1.0, 20.0, 0.0));
    EXPECT_GT(*solveWavenumber(1.0, 20.0, -0.5), *solveWavenumber(1.0, 20.0, 0.0));
}

TEST(DepthFactors, AreTheHyperbolicQuotients) {
    const double k = 0.11;
    const double h = 14.0;
    for (const double z : {0.0, -3.0, -13.2, -14.0}) {
        const DepthFactors factors = depthFactors(k, h, z);
        EXPECT_NEAR(factors.horizontal, std::cosh(k * (z + h)) / std::sinh(k * h), 1e-13);
        EXPECT_NEAR(factors.vertical, std::sinh(k * (z + h)) / std::sinh(k * h), 1e-13);
        EXPECT_NEAR(factors.pressure, std::cosh(k * (z + h)) / std::cosh(k * h), 1e-13);
    }
    // Where cosh alone would overflow.
    EXPECT_NEAR(depthFactors(10.0, 2000.0, -0.2).pressure, std::exp(-2.0), 1e-13);
    EXPECT_EQ(depthFactors(10.0, 2000.0, -1500.0).pressure, 0.0);
}

TEST(Spectrum, PeaksWhereItIsToldTo) {
    for (const auto shape : {WaveSystem::Shape::jonswap, WaveSystem::Shape::piersonMoskowitz}) {
        WaveSystem system;
        system.shape = shape;
        system.peakPeriod = 9.0;
        const double peak = spectrumShape(system, 1.0 / 9.0);
        EXPECT_GT(peak, spectrumShape(system, 0.999 / 9.0));
        EXPECT_GT(peak, spectrumShape(system, 1.001 / 9.0));
    }
}

TEST(Spectrum, JonswapIsPiersonMoskowitzWithEnhancedPeak) {
    WaveSystem jonswap;
    jonswap.peakEnhancement = 4.0;
    WaveSystem plain = jonswap;
    plain.shape = WaveSystem::Shape::piersonMoskowitz;
    const double fp = 1.0 / jonswap.peakPeriod;
    const auto ratio = [&](double f) {
        return spectrumShape(jonswap, f) / spectrumShape(plain, f);
    };
    EXPECT_NEAR(ratio(fp), 4.0, 1e-12);
    EXPECT_NEAR(ratio(fp * 0.93), std::pow(4.0, std::exp(-0.5)), 1e-9); // one width below: 0.07
    EXPECT_NEAR(ratio(fp * 1.09), std::pow(4.0, std::exp(-0.5)), 1e-9); // one width above: 0.09
    EXPECT_NEAR(ratio(fp * 2.5), 1.0, 1e-12);
    EXPECT_EQ(spectrumShape(jonswap, 0.0), 0.0);
    // m0 of the Pierson-Moskowitz form is Sp fp e^1.25 / 5 with this scaling.
    double m0 = 0.0;
    for (double f = 0.0005; f < 20.0; f += 0.001) {
        m0 += 0.001 * spectrumShape(plain, f);
    }
    EXPECT_NEAR(m0, fp / 5.0, 1e-5 * fp);
}

// Moments of cos^2s: r1 = s / (s + 1), r2 = s (s - 1) / ((s + 1) (s + 2)).
TEST(Spreading, QuantilesHaveTheMomentsOfTheDistribution) {
    for (const double spread : {2.0, 12.0, 25.0, 40.0, 60.0, 78.0}) {
        const SpreadingQuantiles quantiles(spread);
        constexpr int kDraws = 20000;
        double c1 = 0.0;
        double s1 = 0.0;
        double c2 = 0.0;
        for (int i = 0; i < kDraws; ++i) {
            const double angle = quantiles.angle((i + 0.5) / kDraws);
            c1 += std::cos(angle) / kDraws;
            s1 += std::sin(angle) / kDraws;
            c2 += std::cos(2.0 * angle) / kDraws;
        }
        const double r1 = firstMoment(spread);
        const double s = r1 / (1.0 - r1);
        EXPECT_NEAR(std::sqrt(2.0 * (1.0 - c1)) / kRadiansPerDegree, spread, 0.01 * spread);
        EXPECT_NEAR(s1, 0.0, 1e-9);
        EXPECT_NEAR(c2, s * (s - 1.0) / ((s + 1.0) * (s + 2.0)), 0.002) << "spread " << spread;
    }
    EXPECT_EQ(SpreadingQuantiles(0.0).angle(0.9), 0.0);
}

TEST(RandomSource, NormalNumbers) {
    RandomSource random(11);
    constexpr int kDraws = 200000;
    double sum = 0.0;
    double squares = 0.0;
    int beyondTwo = 0;
    for (int i = 0; i < kDraws; ++i) {
        const double x = random.normal();
        sum += x;
        squares += x * x;
        beyondTwo += std::abs(x) > 2.0 ? 1 : 0;
    }
    EXPECT_NEAR(sum / kDraws, 0.0, 0.01);
    EXPECT_NEAR(squares / kDraws, 1.0, 0.015);
    EXPECT_NEAR(static_cast<double>(beyondTwo) / kDraws, 0.0455, 0.002);
}

} // namespace
} // namespace orvik
