// Physical class: band estimates tell a swell from the wind sea on top of it. Mean of sixteen 17-minute bursts each, since
// a single one holds some eighty waves of the swell.
#include <cmath>
#include <complex>

#include <gtest/gtest.h>

#include "run/burst_result.hpp"
#include "run/point_front_end.hpp"
#include "simulate/sea.hpp"

namespace {

using namespace orvik;

constexpr int kBursts = 16;
constexpr float kSplit = 0.135F; // [Hz] between swell and wind sea
// A swell has travelled: its spectrum is narrow. That of a wind sea would reach far beyond the split.
constexpr double kSwellGamma = 10.0;
constexpr double kRadians = 3.14159265358979323846 / 180.0;

struct System {
    double height, period, direction, spread;
};

struct Case {
    int method;
    System swell;
    System windSea;
};

// Significant height from the mean energy, and mean direction of the peaks, over bursts.
class Band {
public:
    void add(const orvikbase::BandEstimate &estimate) {
        const double height = static_cast<double>(estimate.significantHeight);
        energy_ += height * height;
        peak_ += std::polar(1.0, static_cast<double>(estimate.peakDirection) * kRadians);
        ++bursts_;
    }
    [[nodiscard]] double height() const { return std::sqrt(energy_ / bursts_); }
    [[nodiscard]] double peakDirection() const { return std::arg(peak_) / kRadians; }

private:
    double energy_ = 0.0;
    std::complex<double> peak_;
    int bursts_ = 0;
};

WaveSystem waves(const System &system) {
    WaveSystem result;
    result.significantHeight = system.height;
    result.peakPeriod = system.period;
    result.direction = system.direction;
    result.spread = system.spread;
    return result;
}

SeaState crossing(const Case &setup) {
    SeaState sea;
    sea.systems = {waves(setup.windSea), waves(setup.swell)};
    sea.systems[1].peakEnhancement = kSwellGamma;
    sea.waterDepth = 10.0;
    sea.heading = 63.0;
    sea.pitch = 2.0;
    sea.roll = -1.0;
    return sea;
}

Instrument bedInstrument() {
    Instrument instrument;
    instrument.samplingRate = 2.0;
    instrument.trackSamplingRate = 4.0;
    instrument.beamAzimuth = {0.0, 120.0, 240.0};
    instrument.cellRange = 6.0;
    instrument.pressureHeight = 0.5;
    return instrument;
}

class TwoSystems : public testing::TestWithParam<Case> {};

TEST_P(TwoSystems, AreToldApart) {
    const Case &setup = GetParam();
    const Instrument instrument = bedInstrument();
    const PointFrontEnd frontEnd(instrument, setup.method);
    orvikbase::Record record;
    orvikbase::CleanedBurst cleaned;
    frontEnd.configure(record);
    orvikbase::ProcessingParameters parameters;
    parameters.method = static_cast<orvikbase::Method>(setup.method);
    parameters.levelOffset = 0.5F;
    parameters.estimateMask = frontEnd.estimateMask(usesTrack(setup.method));
    parameters.directionalInput = usesTrack(setup.method)
                                      ? orvikbase::DirectionalInput::trackIfValid
                                      : orvikbase::DirectionalInput::pressure;
    record.setProcessing(parameters);
    Band low;
    Band high;
    for (int number = 0; number < kBursts; ++number) {
        const Burst burst =
            simulateBurst(instrument, crossing(setup), SensorFaults{}, 2048, VelocitySystem::beam,
                          100 + static_cast<std::uint64_t>(number))
                .burst;
        frontEnd.send(record, burst, presentSamples(burst), cleaned);
        ASSERT_TRUE(record.process());
        const auto swell = record.bandEstimate(0.02F, kSplit);
        const auto windSea = record.bandEstimate(kSplit, 0.5F);
        ASSERT_TRUE(swell && windSea);
        low.add(*swell);
        high.add(*windSea);
    }
    EXPECT_NEAR(low.height(), setup.swell.height, 0.05 * setup.swell.height);
    EXPECT_NEAR(high.height(), setup.windSea.height, 0.05 * setup.windSea.height);
    EXPECT_NEAR(std::remainder(low.peakDirection() - setup.swell.direction, 360.0), 0.0, 5.0);
    EXPECT_NEAR(std::remainder(high.peakDirection() - setup.windSea.direction, 360.0), 0.0, 5.0);
}

constexpr System kSwell{1.0, 13.0, 200.0, 12.0};
constexpr System kWindSea{1.2, 5.5, 285.0, 28.0};
constexpr System kOpposite{0.8, 14.0, 20.0, 10.0};
constexpr System kSteep{1.5, 5.0, 165.0, 30.0};

INSTANTIATE_TEST_SUITE_P(Methods, TwoSystems,
                         testing::Values(Case{1, kSwell, kWindSea}, Case{2, kSwell, kWindSea},
                                         Case{3, kSwell, kWindSea}, Case{4, kSwell, kWindSea},
                                         Case{2, kOpposite, kSteep}, Case{4, kOpposite, kSteep}));

} // namespace
