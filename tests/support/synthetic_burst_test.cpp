#include "synthetic_burst.hpp"

#include <gtest/gtest.h>

#include <cmath>
#include <memory>

using namespace orvik::test;

namespace {

double meanOf(const std::vector<double> &values) {
    double sum = 0.0;
    for (const double value : values) {
        sum += value;
    }
    return sum / static_cast<double>(values.size());
}

double covariance(const std::vector<double> &a, const std::vector<double> &b) {
    const double meanA = meanOf(a);
    const double meanB = meanOf(b);
    double sum = 0.0;
    for (std::size_t i = 0; i < a.size(); ++i) {
        sum += (a[i] - meanA) * (b[i] - meanB);
    }
    return sum / static_cast<double>(a.size());
}

struct Series {
    std::vector<double> pressure, track, east, north;
};

Series seriesOf(const SyntheticBurst &burst) {
    Series series;
    for (const OVWaveSample &sample : burst.samples) {
        series.pressure.push_back(static_cast<double>(sample.pressure));
        series.track.push_back(static_cast<double>(sample.astDistance1));
        series.east.push_back(static_cast<double>(sample.velocity[0]));
        series.north.push_back(static_cast<double>(sample.velocity[1]));
    }
    return series;
}

// Physical: 1.6 m by construction; a parabola's arc has 1.03 times a sine's standard deviation.
TEST(SyntheticBurst, HasTheSeaStateItClaims) {
    const Series series = seriesOf(makeSyntheticBurst({.method = 2, .nSamples = 4096}));
    EXPECT_NEAR(meanOf(series.pressure), 12.0, 0.05);
    EXPECT_NEAR(meanOf(series.track), 12.0, 0.05);
    EXPECT_NEAR(4.0 * std::sqrt(covariance(series.track, series.track)), 1.65, 0.10);
}

// Physical: under a crest the water moves the way the waves travel, here towards the north-east.
TEST(SyntheticBurst, WavesTravelNorthEast) {
    const Series series = seriesOf(makeSyntheticBurst({.method = 2, .nSamples = 4096}));
    const double towards = std::atan2(covariance(series.pressure, series.east),
                                      covariance(series.pressure, series.north));
    EXPECT_NEAR(towards * 180.0 / 3.14159265358979, 60.0, 10.0);
}

TEST(SyntheticBurst, SeedsGiveDifferentSeas) {
    const SyntheticBurst one = makeSyntheticBurst({.nSamples = 64, .seed = 1});
    const SyntheticBurst again = makeSyntheticBurst({.nSamples = 64, .seed = 1});
    const SyntheticBurst other = makeSyntheticBurst({.nSamples = 64, .seed = 2});
    EXPECT_EQ(seriesOf(one).pressure, seriesOf(again).pressure);
    EXPECT_NE(seriesOf(one).pressure, seriesOf(other).pressure);
}

struct ReleaseRecord {
    void operator()(OVRecord *record) const { OVFreeVarPtr(record); }
};

// Physical: the whole chain recovers height and direction, so that what the digests and benchmarks run on is a sea and
// not a rejected burst. Coming-from is off: directions say where the waves go.
TEST(SyntheticBurst, EveryMethodFindsTheSea) {
    const std::unique_ptr<OVRecord, ReleaseRecord> record(OVAllocateVarPtr());
    ASSERT_NE(record, nullptr);
    const auto output = std::make_unique<OVPreProcessOutput>();
    for (const int method : {1, 2, 3, 4}) {
        SCOPED_TRACE(method);
        const SyntheticBurst burst = makeSyntheticBurst({.method = method});
        openBurst(record.get(), burst);
        sendSamples(record.get(), burst);
        OVPreProcess_ptr(record.get(), 0, output.get());
        ASSERT_EQ(output->done, 1);
        ASSERT_TRUE(OVProcess_ptr(record.get()));
        OVWaveParameterSet waves{};
        OVGetWavePar_ptr(record.get(), &waves);
        EXPECT_NEAR(static_cast<double>(waves.waveParameters[OV_HM0]), 1.65, 0.25);
        EXPECT_NEAR(static_cast<double>(waves.waveParameters[OV_TP]), 8.9, 1.6);
        EXPECT_NEAR(static_cast<double>(waves.waveParameters[OV_MEAN_DIRECTION]), 60.0, 15.0);
        EXPECT_EQ(waves.spectrumSource,
                  method == 2 || method == 4 ? OV_SOURCE_SURFACE_TRACK : OV_SOURCE_PRESSURE);
    }
}

} // namespace
