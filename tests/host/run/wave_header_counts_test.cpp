// The cell's place survives the way through counts and the library's staged rounding.
#include "run/wave_header_counts.hpp"

#include <cmath>
#include <cstdlib>
#include <memory>

#include <gtest/gtest.h>

#include "orvikbase/orvikbase.h"
#include "user_error.hpp"

namespace {

using namespace orvik;

OVInstrumentConfig configOf(int type, float frequency) {
    OVInstrumentConfig config{};
    config.samplingRate = 2;
    config.acousticFrequency = frequency;
    config.slantAngle = 25.0F;
    config.instrumentType = type;
    config.cellSizeCounts = 100;
    return config;
}

// Range that the library itself makes of the counts: the reported height of the cell, back along the beam.
double libraryRange(const OVInstrumentConfig &config, const HeaderCounts &counts) {
    const std::unique_ptr<OVRecord, decltype(&std::free)> record(
        static_cast<OVRecord *>(std::calloc(1, VELTAGetWaveVariableNbytes())), &std::free);
    OVSetInstrumentConfig_ptr(record.get(), &config);
    OVWaveHeader header{};
    header.nSamples = 1024;
    header.pressureCounts = counts.pressureCounts;
    header.distanceCounts = counts.distanceCounts;
    OVSetWaveHeader_ptr(record.get(), &header);
    OVWaveParameterSet waves{};
    OVGetWavePar_ptr(record.get(), &waves);
    const double slant = 25.0 * 3.14159265358979323846 / 180.0;
    return static_cast<double>(waves.cellVerticalRange) / std::cos(slant);
}

// Half of what a pressure count of 2.289 cm spans beyond the centimetre that rounding down covers.
constexpr double kTypeThree = 0.0067;

struct TypeCase {
    int type;
    float frequency;
    double tolerance; // [m]
};

class HeaderCountsTest : public testing::TestWithParam<TypeCase> {};

TEST_P(HeaderCountsTest, EveryRangeComesBack) {
    const OVInstrumentConfig config = configOf(GetParam().type, GetParam().frequency);
    double worst = 0.0;
    for (double range = 0.3; range < 60.0; range += 0.1237) {
        const HeaderCounts counts = countsOfCellRange(config, range);
        EXPECT_GE(counts.distanceCounts, 0);
        const double back = libraryRange(config, counts);
        EXPECT_NEAR(back, cellRangeOfCounts(config, counts), 1e-5);
        worst = std::max(worst, std::abs(back - range));
    }
    EXPECT_LE(worst, GetParam().tolerance);
}

INSTANTIATE_TEST_SUITE_P(Types, HeaderCountsTest,
                         testing::Values(TypeCase{3, 1e6F, kTypeThree},
                                         TypeCase{3, 400000.0F, kTypeThree},
                                         TypeCase{3, 600000.0F, kTypeThree},
                                         TypeCase{3, 2e6F, kTypeThree}, TypeCase{1, 1e6F, 1e-3},
                                         TypeCase{0, 1e6F, 1e-3}, TypeCase{2, 400000.0F, 1e-3}));

TEST(HeaderCounts, OutOfReach) {
    EXPECT_THROW(countsOfCellRange(configOf(3, 1e6F), 5000.0), UserError);
    EXPECT_THROW(countsOfCellRange(configOf(3, 1e6F), -2.0), UserError);
}

} // namespace
