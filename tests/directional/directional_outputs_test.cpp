// Coefficients, spectra and directional distributions exchanged with the host.
//
// Bin k of OVGetFullWaveDirSpectrum is the compass bearing k 360 / nDirections, its values are weights. Bin k of
// OVGetFullDirSpectraWithEnergy is whatever bin k of the record's distribution is: after processing the angle
// k 360 / nDirections of the instrument, a density per radian; after OVGetFullWaveDirSpectrum as there.
#include "directional/directional_outputs.hpp"

#include <algorithm>
#include <array>
#include <cmath>
#include <complex>
#include <cstring>
#include <limits>
#include <memory>
#include <random>
#include <vector>

#include <gtest/gtest.h>

#include "orvikbase/orvikbase.h"
#include "support/guarded_memory.hpp"
#include "support/record_ptr.hpp"
#include "support/synthetic_burst.hpp"

namespace {

using namespace orvik::test;

constexpr double kCircle = 6.283185307179586476925;
constexpr float kMarker = -9.0F;
constexpr float kNoNumber = std::numeric_limits<float>::quiet_NaN();
constexpr float kUntouched = 12345.0F;

double widened(float value) { return static_cast<double>(value); }
double degrees(double radians) { return radians * 360.0 / kCircle; }
double positive(double angle) { return angle < 0.0 ? angle + 360.0 : angle; }

// Compass bearing of the vector (east, north).
double bearing(double east, double north) { return positive(degrees(std::atan2(east, north))); }

double spreadOf(double east, double north) {
    return degrees(std::sqrt(2.0 * (1.0 - std::min(std::hypot(east, north), 1.0))));
}

std::unique_ptr<OVFourierCoefficientSpectra> makeBlock(int count) {
    auto block = std::make_unique<OVFourierCoefficientSpectra>();
    block->count = count;
    return block;
}

void setBin(OVFourierCoefficientSpectra &block, int f, float p, float q, float r = 0.0F,
            float s = 0.0F) {
    block.coefP[f] = p;
    block.coefQ[f] = q;
    block.coefR[f] = r;
    block.coefS[f] = s;
}

// ---- Coefficients from the host

class CoefficientInput : public testing::Test {
protected:
    OVRecord &rec() const { return *record_; }
    OVFourierCoefficientSpectra &block() const { return *block_; }
    void load() const { ASSERT_EQ(OVSetFourierCoefficientSpectra_ptr(&rec(), &block()), 0); }

    void expectMissing(int f) const {
        const float values[] = {rec().fourierA1[f],     rec().fourierB1[f],
                                rec().fourierA2[f],     rec().fourierB2[f],
                                rec().meanDirection[f], rec().directionalSpread[f],
                                block().direction[f],   block().spread[f]};
        for (const float value : values) {
            EXPECT_EQ(value, kMarker) << "bin " << f;
        }
    }

private:
    RecordPtr record_ = makeRecord();
    std::unique_ptr<OVFourierCoefficientSpectra> block_ = makeBlock(1);
};

// Exact: the block's P and Q are minus north and minus east, its R minus a2; S alone keeps its sign.
TEST_F(CoefficientInput, SignsChangeForAllButTheLast) {
    setBin(block(), 0, 0.1F, 0.2F, 0.3F, 0.4F);
    load();
    EXPECT_EQ(rec().fourierB1[0], -0.1F);
    EXPECT_EQ(rec().fourierA1[0], -0.2F);
    EXPECT_EQ(rec().fourierA2[0], -0.3F);
    EXPECT_EQ(rec().fourierB2[0], 0.4F);
}

// Exact: what the spectrum getter writes, the setter takes back bit for bit.
TEST_F(CoefficientInput, TakesBackWhatTheSpectrumGetterGives) {
    std::mt19937 random(20240611);
    std::uniform_real_distribution<float> unit(-1.0F, 1.0F);
    rec().nFrequencies = OV_MAX_FREQUENCIES;
    rec().lastValidFreqIndex = OV_MAX_FREQUENCIES;
    std::vector<std::array<float, 4>> given;
    for (int f = 0; f < OV_MAX_FREQUENCIES; ++f) {
        given.push_back({unit(random), unit(random), unit(random), unit(random)});
        rec().fourierA1[f] = given.back()[0];
        rec().fourierB1[f] = given.back()[1];
        rec().fourierA2[f] = given.back()[2];
        rec().fourierB2[f] = given.back()[3];
    }
    ASSERT_EQ(OVGetWaveSpectrum_ptr(&rec(), &block()), 0);
    const RecordPtr other = makeRecord();
    ASSERT_EQ(OVSetFourierCoefficientSpectra_ptr(other.get(), &block()), 0);
    for (int f = 0; f < OV_MAX_FREQUENCIES; ++f) {
        const std::array<float, 4> taken{other->fourierA1[f], other->fourierB1[f],
                                         other->fourierA2[f], other->fourierB2[f]};
        EXPECT_EQ(std::memcmp(&taken, &given[static_cast<std::size_t>(f)], sizeof taken), 0) << f;
    }
}

struct CompassCase {
    const char *name;
    float east, north; // a1, b1
    double direction;
};
// clang-format off
constexpr CompassCase kCompass[] = {
    {"north",                     0.0F,  0.5F,   0.0},
    {"east",                      0.5F,  0.0F,  90.0},
    {"south",                     0.0F, -0.5F, 180.0},
    {"west",                     -0.5F,  0.0F, 270.0},
    {"north-east",                0.3F,  0.3F,  45.0},
    {"south-east",                0.3F, -0.3F, 135.0},
    {"south-west",               -0.3F, -0.3F, 225.0},
    {"north-west",               -0.3F,  0.3F, 315.0},
};
// clang-format on

TEST_F(CoefficientInput, DirectionIsTheCompassBearingOfEastAndNorth) {
    for (const CompassCase &row : kCompass) {
        SCOPED_TRACE(row.name);
        setBin(block(), 0, -row.north, -row.east);
        load();
        EXPECT_NEAR(widened(rec().meanDirection[0]), row.direction, 2e-5);
        EXPECT_EQ(rec().meanDirection[0], +block().direction[0]);
    }
}

TEST_F(CoefficientInput, ReverseTurnsTheDirectionRoundAndKeepsItInTheCircle) {
    rec().reverseDirections = 2; // anything but 0
    for (const CompassCase &row : kCompass) {
        SCOPED_TRACE(row.name);
        setBin(block(), 0, -row.north, -row.east);
        load();
        EXPECT_NEAR(widened(rec().meanDirection[0]), positive(row.direction - 180.0), 2e-5);
        EXPECT_EQ(rec().meanDirection[0], +block().direction[0]);
        EXPECT_EQ(rec().fourierA1[0], row.east) << "the coefficients stay as they are";
    }
}

// ulp: seeded draws against double precision; 2 ulp of 360 are 6e-5 degrees.
TEST_F(CoefficientInput, DirectionAndSpreadOfManyCoefficients) {
    std::mt19937 random(7);
    std::uniform_real_distribution<float> unit(-0.7F, 0.7F);
    for (int i = 0; i < 20000; ++i) {
        const float p = unit(random);
        const float q = unit(random);
        setBin(block(), 0, p, q);
        load();
        const double east = -widened(q);
        const double north = -widened(p);
        ASSERT_NEAR(widened(rec().meanDirection[0]), bearing(east, north), 6e-5);
        // Near r = 1 the rounding of r^2 to single precision alone moves the spread.
        const double room = 1.0 - std::hypot(east, north);
        const double tolerance = 2e-5 + 57.3 * 6e-8 / std::sqrt(2.0 * std::max(room, 1e-9));
        ASSERT_NEAR(widened(rec().directionalSpread[0]), spreadOf(east, north), tolerance);
        ASSERT_EQ(rec().directionalSpread[0], +block().spread[0]);
    }
}

TEST_F(CoefficientInput, SpreadOfNoDirectionAndOfOneDirection) {
    setBin(block(), 0, 0.0F, 0.0F);
    load();
    EXPECT_NEAR(widened(rec().directionalSpread[0]), 81.0284684541, 4e-6); // sqrt(2) radians
    for (const float length :
         {1.0F, 1.5F, 100.0F}) { // beyond 1 the coefficients contradict each other
        setBin(block(), 0, length, 0.0F);
        load();
        EXPECT_EQ(rec().directionalSpread[0], 0.0F) << length;
    }
}

TEST_F(CoefficientInput, OneMissingFirstOrderCoefficientMakesTheFrequencyMissing) {
    block().count = 2;
    setBin(block(), 0, kMarker, 0.2F, 0.3F, 0.4F);
    setBin(block(), 1, 0.2F, kMarker, 0.3F, 0.4F);
    load();
    expectMissing(0);
    expectMissing(1);
}

TEST_F(CoefficientInput, SecondOrderCoefficientsAreNotExamined) {
    setBin(block(), 0, 0.1F, 0.2F, kMarker, kMarker);
    load();
    EXPECT_EQ(rec().fourierA2[0], 9.0F);
    EXPECT_EQ(rec().fourierB2[0], kMarker);
    EXPECT_EQ(rec().fourierB1[0], -0.1F);
}

struct MarkerCase {
    const char *name;
    float value;
    bool missing;
};
// clang-format off
constexpr MarkerCase kMarkers[] = {
    {"the marker",              -9.0F,         true},
    {"a rounded marker",        -9.00005F,     true},
    {"the same above",          -8.99995F,     true},
    {"just inside below",       -9.0000992F,   true},
    {"just outside below",      -9.0001011F,   false},
    {"just inside above",       -8.9999008F,   true},
    {"just outside above",      -8.9998989F,   false},
    {"plus nine",                9.0F,         false},
    {"no number",                kNoNumber,    true},
};
// clang-format on

TEST_F(CoefficientInput, MarkerWithinATenThousandth) {
    for (const MarkerCase &row : kMarkers) {
        SCOPED_TRACE(row.name);
        setBin(block(), 0, row.value, 0.25F);
        load();
        EXPECT_EQ(rec().fourierA1[0], row.missing ? kMarker : -0.25F);
        setBin(block(), 0, 0.25F, row.value);
        load();
        EXPECT_EQ(rec().fourierB1[0], row.missing ? kMarker : -0.25F);
        if (row.missing) {
            expectMissing(0);
        }
    }
}

TEST_F(CoefficientInput, CountsBelowOneTouchNothing) {
    setBin(block(), 0, 0.1F, 0.2F);
    const OVFourierCoefficientSpectra before = block();
    rec().fourierA1[0] = kUntouched;
    rec().meanDirection[0] = kUntouched;
    for (const int count : {0, -1, std::numeric_limits<int>::min()}) {
        block().count = count;
        load();
        EXPECT_EQ(rec().fourierA1[0], kUntouched);
        EXPECT_EQ(rec().meanDirection[0], kUntouched);
        block().count = before.count;
        EXPECT_EQ(std::memcmp(&block(), &before, sizeof before), 0);
    }
}

TEST_F(CoefficientInput, OnlyTheCountedBinsAreLoaded) {
    block().count = 3;
    rec().fourierA1[3] = kUntouched;
    rec().directionalSpread[3] = kUntouched;
    block().direction[3] = kUntouched;
    load();
    EXPECT_EQ(rec().fourierA1[3], kUntouched);
    EXPECT_EQ(rec().directionalSpread[3], kUntouched);
    EXPECT_EQ(+block().direction[3], kUntouched);
    EXPECT_NE(rec().directionalSpread[2], 0.0F);
}

TEST_F(CoefficientInput, CountsBeyondTheBlockEndAtItsLastBin) {
    const GuardedMemory memory(sizeof(OVFourierCoefficientSpectra), GuardedEdge::back);
    auto *const guarded = memory.as<OVFourierCoefficientSpectra>();
    for (const int count : {201, 400, std::numeric_limits<int>::max()}) {
        guarded->count = count;
        setBin(*guarded, OV_MAX_FREQUENCIES - 1, 0.25F, 0.5F);
        rec().fourierA1[OV_MAX_FREQUENCIES] = kUntouched; // the fine axis goes on
        ASSERT_EQ(OVSetFourierCoefficientSpectra_ptr(&rec(), guarded), 0);
        EXPECT_EQ(rec().fourierA1[OV_MAX_FREQUENCIES - 1], -0.5F);
        EXPECT_EQ(rec().fourierA1[OV_MAX_FREQUENCIES], kUntouched);
    }
}

// ---- The host's energy spectrum

class SpectrumInput : public testing::Test {
protected:
    SpectrumInput() {
        for (int i = 0; i < OV_MAX_FREQUENCIES_FINE; ++i) {
            input_->values[i] = static_cast<float>(i + 1);
            record_->spectraUsed[i] = kUntouched;
        }
        record_->paramFrequencies[0] = kUntouched;
    }
    // How many values arrive.
    int taken(std::uint32_t selector, std::int32_t count1, std::int32_t count2) const {
        input_->selector = selector;
        input_->count1 = count1;
        input_->count2 = count2;
        EXPECT_EQ(OVSetSpectraUsed_ptr(record_.get(), input_.get()), 0);
        int n = 0;
        while (n < OV_MAX_FREQUENCIES_FINE &&
               record_->spectraUsed[n] == static_cast<float>(n + 1)) {
            ++n;
        }
        for (int i = n; i < OV_MAX_FREQUENCIES_FINE; ++i) {
            EXPECT_EQ(record_->spectraUsed[i], kUntouched) << i;
        }
        EXPECT_EQ(record_->paramFrequencies[0], kUntouched);
        return n;
    }

    RecordPtr record_ = makeRecord();
    std::unique_ptr<OVSpectraUsedInput> input_ = std::make_unique<OVSpectraUsedInput>();
};

TEST_F(SpectrumInput, Selector0TakesTheFirstCount) { EXPECT_EQ(taken(0, 3, 5), 3); }
TEST_F(SpectrumInput, Selector1TakesTheFirstCount) { EXPECT_EQ(taken(1, 3, 5), 3); }
TEST_F(SpectrumInput, Selector2TakesTheSecondCount) { EXPECT_EQ(taken(2, 3, 5), 5); }
TEST_F(SpectrumInput, TheSelectorHasNoSign) { EXPECT_EQ(taken(0xFFFFFFFFU, 3, 5), 5); }
TEST_F(SpectrumInput, NoneForZero) { EXPECT_EQ(taken(0, 0, 5), 0); }
TEST_F(SpectrumInput, NoneForANegativeCount) {
    EXPECT_EQ(taken(0, -1, 5), 0);
    EXPECT_EQ(taken(3, 5, std::numeric_limits<int>::min()), 0);
}
TEST_F(SpectrumInput, AtMostTheFineAxis) {
    EXPECT_EQ(taken(0, 400, 0), 400);
    EXPECT_EQ(taken(0, 401, 0), 400);
    EXPECT_EQ(taken(2, 0, std::numeric_limits<int>::max()), 400);
}

TEST(SpectrumInputMemory, ReadsNoMoreThanTheCountNames) {
    const RecordPtr record = makeRecord();
    GuardedMemory memory(12 + 3 * sizeof(float), GuardedEdge::back);
    const std::int32_t count = 3;
    const float values[] = {1.0F, 2.0F, 3.0F};
    std::memcpy(memory.data() + 4, &count, sizeof count);
    std::memcpy(memory.data() + 12, values, sizeof values);
    memory.makeReadOnly();
    ASSERT_EQ(OVSetSpectraUsed_ptr(record.get(), memory.as<const OVSpectraUsedInput>()), 0);
    EXPECT_EQ(std::memcmp(record->spectraUsed, values, sizeof values), 0);
}

// ---- Directions and spreads of a block

class BlockDirections : public testing::Test {
protected:
    BlockDirections() { record_->nFrequencies = 1; }
    OVRecord &rec() const { return *record_; }
    OVFourierCoefficientSpectra &block() const { return *block_; }
    void run() const { ASSERT_EQ(OVGetDirectionalSpectrum_ptr(&rec(), &block()), 0); }

private:
    RecordPtr record_ = makeRecord();
    std::unique_ptr<OVFourierCoefficientSpectra> block_ = makeBlock(0);
};

// P is east and Q north here, with their own signs: not what the setter takes them for.
TEST_F(BlockDirections, PIsEastAndQIsNorth) {
    for (const CompassCase &row : kCompass) {
        SCOPED_TRACE(row.name);
        setBin(block(), 0, row.east, row.north);
        run();
        EXPECT_NEAR(widened(block().direction[0]), row.direction, 2e-5);
    }
}

TEST_F(BlockDirections, ManyDirectionsAndSpreads) {
    std::mt19937 random(11);
    std::uniform_real_distribution<float> unit(-0.7F, 0.7F);
    for (int i = 0; i < 20000; ++i) {
        const float p = unit(random);
        const float q = unit(random);
        setBin(block(), 0, p, q);
        run();
        ASSERT_NEAR(widened(block().direction[0]), bearing(widened(p), widened(q)), 6e-5);
        // Exact: sum, root and doubling in single precision, the outer root in double.
        const float length = std::min(std::sqrt(q * q + p * p), 1.0F);
        const double spread = degrees(std::sqrt(widened((1.0F - length) * 2.0F)));
        ASSERT_FLOAT_EQ(+block().spread[0], static_cast<float>(spread));
    }
}

TEST_F(BlockDirections, LengthsBeyondOneHaveNoSpread) {
    for (const float length : {1.0F, 2.0F, 1e30F}) {
        setBin(block(), 0, length, 0.0F);
        run();
        EXPECT_EQ(+block().spread[0], 0.0F);
        EXPECT_EQ(+block().direction[0], 90.0F);
    }
}

TEST_F(BlockDirections, NoNumbersInNoNumbersOut) {
    setBin(block(), 0, kNoNumber, 0.5F);
    run();
    EXPECT_TRUE(std::isnan(+block().direction[0]));
    EXPECT_TRUE(std::isnan(+block().spread[0]));
}

TEST_F(BlockDirections, ReverseTurnsTheRecordAndNotTheBlockAtEveryCall) {
    rec().reverseDirections = 1;
    rec().nFrequencies = 3;
    const float first[] = {10.0F, 180.0F, 200.0F};
    const float turned[] = {190.0F, 0.0F, 20.0F};
    const float turnedTwice[] = {10.0F, 180.0F, 200.0F};
    std::copy_n(first, 3, rec().meanDirection);
    for (int f = 0; f < 3; ++f) {
        setBin(block(), f, 0.5F, 0.0F);
    }
    run();
    EXPECT_EQ(std::memcmp(rec().meanDirection, turned, sizeof turned), 0);
    run();
    EXPECT_EQ(std::memcmp(rec().meanDirection, turnedTwice, sizeof turnedTwice), 0);
    EXPECT_EQ(+block().direction[0], 90.0F);
}

TEST_F(BlockDirections, WithoutReverseTheRecordStays) {
    rec().meanDirection[0] = 10.0F;
    run();
    EXPECT_EQ(rec().meanDirection[0], 10.0F);
}

TEST_F(BlockDirections, OnlyDirectionAndSpreadOfTheRecordsBinsAreWritten) {
    auto *const bytes = reinterpret_cast<unsigned char *>(&block());
    std::memset(bytes, 0x3E, sizeof block());
    std::vector<unsigned char> expected(bytes, bytes + sizeof block());
    rec().nFrequencies = 5;
    run();
    const auto *const direction = bytes + offsetof(OVFourierCoefficientSpectra, direction);
    const auto *const spread = bytes + offsetof(OVFourierCoefficientSpectra, spread);
    for (std::size_t i = 0; i < sizeof block(); ++i) {
        const unsigned char *const at = bytes + i;
        const bool written =
            (at >= direction && at < direction + 20) || (at >= spread && at < spread + 20);
        if (!written) {
            ASSERT_EQ(*at, expected[i]) << "byte " << i;
        }
    }
    EXPECT_NEAR(widened(block().direction[4]), 45.0, 1e-5);
}

TEST_F(BlockDirections, BinCountsOutsideTheBlockAreSafe) {
    const GuardedMemory memory(sizeof(OVFourierCoefficientSpectra), GuardedEdge::back);
    auto *const guarded = memory.as<OVFourierCoefficientSpectra>();
    for (const int count : {-1, 0, 201, std::numeric_limits<int>::max()}) {
        rec().nFrequencies = count;
        guarded->direction[0] = kUntouched;
        ASSERT_EQ(OVGetDirectionalSpectrum_ptr(&rec(), guarded), 0);
        EXPECT_EQ(+guarded->direction[0], count < 1 ? kUntouched : 90.0F);
    }
}

// ---- Distribution times energy

struct Rows {
    Rows() : values(OV_MAX_FREQUENCIES * OV_MAX_DIRECTIONS, kUntouched) {}
    float at(int f, int k) const {
        return values[static_cast<std::size_t>(f) * OV_MAX_DIRECTIONS +
                      static_cast<std::size_t>(k)];
    }
    double sum(int f, int bins) const {
        double total = 0.0;
        for (int k = 0; k < bins; ++k) {
            total += widened(at(f, k));
        }
        return total;
    }
    std::vector<float> values;
};

class EnergyRows : public testing::Test {
protected:
    EnergyRows() {
        std::mt19937 random(3);
        std::uniform_real_distribution<double> unit(0.0, 1.0);
        for (int f = 0; f < OV_MAX_FREQUENCIES; ++f) {
            record_->spectraUsed[f] = static_cast<float>(unit(random));
            for (double &value : record_->dirSpectrum[f]) {
                value = unit(random);
            }
        }
        record_->nFrequencies = 10;
        record_->nDirections = OV_MAX_DIRECTIONS;
        record_->lastValidFreqIndex = OV_MAX_FREQUENCIES;
    }
    Rows run() const {
        Rows rows;
        EXPECT_EQ(OVGetFullDirSpectraWithEnergy_ptr(record_.get(), rows.values.data()), 0);
        return rows;
    }
    RecordPtr record_ = makeRecord();
};

// Exact: the product is one of doubles; a distribution rounded to single precision first gives other bits.
TEST_F(EnergyRows, ProductInDoublePrecisionRoundedOnce) {
    const Rows rows = run();
    int unlikeSingle = 0;
    for (int f = 0; f < 10; ++f) {
        for (int k = 0; k < OV_MAX_DIRECTIONS; ++k) {
            const double density = record_->dirSpectrum[f][k];
            const float energy = record_->spectraUsed[f];
            ASSERT_EQ(rows.at(f, k), static_cast<float>(widened(energy) * density));
            unlikeSingle += rows.at(f, k) != energy * static_cast<float>(density) ? 1 : 0;
        }
    }
    EXPECT_GT(unlikeSingle, 0);
}

TEST_F(EnergyRows, RowsAboveTheLastValidIndexAreMissing) {
    record_->lastValidFreqIndex = 3;
    const Rows rows = run();
    for (int k = 0; k < OV_MAX_DIRECTIONS; ++k) {
        EXPECT_GE(rows.at(3, k), 0.0F); // the limit itself still has its row
        EXPECT_EQ(rows.at(4, k), kMarker);
        EXPECT_EQ(rows.at(9, k), kMarker);
    }
}

TEST_F(EnergyRows, RowsAreNinetyApartWhateverTheNumberOfDirections) {
    record_->nDirections = 36;
    record_->lastValidFreqIndex = 4;
    const Rows rows = run();
    for (int f = 0; f < 10; ++f) {
        EXPECT_NE(rows.at(f, 35), kUntouched) << f;
        EXPECT_EQ(rows.at(f, 36), kUntouched) << f;
        EXPECT_EQ(rows.at(f, 89), kUntouched) << f;
    }
    EXPECT_EQ(rows.at(10, 0), kUntouched);
}

TEST_F(EnergyRows, CountsOutsideTheTableAreSafe) {
    const GuardedMemory memory(sizeof(float) * OV_MAX_FREQUENCIES * OV_MAX_DIRECTIONS,
                               GuardedEdge::back);
    record_->nFrequencies = 1000;
    record_->nDirections = 1000;
    EXPECT_EQ(OVGetFullDirSpectraWithEnergy_ptr(record_.get(), memory.as<float>()), 0);
    record_->nFrequencies = -1;
    EXPECT_EQ(run().at(0, 0), kUntouched);
    record_->nFrequencies = 1;
    record_->nDirections = -1;
    EXPECT_EQ(run().at(0, 0), kUntouched);
}

TEST_F(EnergyRows, HostArraysMayLieAtAnyAddress) {
    std::vector<unsigned char> bytes(OV_MAX_FREQUENCIES * OV_MAX_DIRECTIONS * sizeof(float) + 1);
    auto *const odd = reinterpret_cast<float *>(bytes.data() + 1);
    ASSERT_EQ(OVGetFullDirSpectraWithEnergy_ptr(record_.get(), odd), 0);
    EXPECT_EQ(std::memcmp(bytes.data() + 1, run().values.data(), 90 * sizeof(float)), 0);
    ASSERT_EQ(OVGetFullWaveDirSpectrum_ptr(record_.get(), odd), 0);
}

void processSynthetic(OVRecord *record, const SyntheticChoice &choice, int directions) {
    SyntheticBurst burst = makeSyntheticBurst(choice);
    burst.parameters.nDirections = directions;
    openBurst(record, burst);
    sendSamples(record, burst);
    const auto output = std::make_unique<OVPreProcessOutput>();
    ASSERT_EQ(OVPreProcess_ptr(record, 0, output.get()), 0);
    ASSERT_TRUE(OVProcess_ptr(record));
}

struct IntegralCase {
    int method, directions;
};

class EnergyOfABurst : public testing::TestWithParam<IntegralCase> {};

// Of a processed burst the values are energy per hertz and radian: every row below the aliasing limit, times the bin
// width, sums to the spectrum behind the parameters. All bins count, the last one (which repeats the first) included.
TEST_P(EnergyOfABurst, EachRowTimesTheBinWidthSumsToTheSpectrum) {
    const IntegralCase param = GetParam();
    const RecordPtr record = makeRecord();
    ASSERT_NO_FATAL_FAILURE(processSynthetic(
        record.get(), {.method = param.method, .nSamples = 1024}, param.directions));
    Rows rows;
    ASSERT_EQ(OVGetFullDirSpectraWithEnergy_ptr(record.get(), rows.values.data()), 0);
    const int last = std::min(record->lastValidFreqIndex, record->nFrequencies - 1);
    ASSERT_GT(last, 5);
    const double width = kCircle / param.directions;
    for (int f = 0; f <= last; ++f) {
        const double energy = widened(record->spectraUsed[f]);
        EXPECT_GT(energy, 0.0) << f;
        EXPECT_NEAR(rows.sum(f, param.directions) * width / energy, 1.0, 1e-6) << f;
        EXPECT_EQ(rows.at(f, param.directions - 1), rows.at(f, 0)) << f;
    }
    for (int f = last + 1; f < record->nFrequencies; ++f) {
        EXPECT_EQ(rows.at(f, 0), kMarker) << f;
    }
}

// After the maximum entropy getter the rows hold its weights: no bin width enters any more. A sea much narrower than a
// bin, as this one is, falls between the bins, so that its weights need not sum to 1.
TEST_P(EnergyOfABurst, AfterTheEntropyGetterEachRowIsItsWeightsTimesTheSpectrum) {
    const IntegralCase param = GetParam();
    const RecordPtr record = makeRecord();
    ASSERT_NO_FATAL_FAILURE(processSynthetic(
        record.get(), {.method = param.method, .nSamples = 1024}, param.directions));
    Rows weights;
    Rows rows;
    ASSERT_EQ(OVGetFullWaveDirSpectrum_ptr(record.get(), weights.values.data()), 0);
    ASSERT_EQ(OVGetFullDirSpectraWithEnergy_ptr(record.get(), rows.values.data()), 0);
    const int last = std::min(record->lastValidFreqIndex, record->nFrequencies);
    for (int f = 0; f < last; ++f) { // at the limit itself the coefficients are missing
        const double expected = weights.sum(f, param.directions) * widened(record->spectraUsed[f]);
        EXPECT_NEAR(rows.sum(f, param.directions) / expected, 1.0, 1e-6) << f;
    }
}

INSTANTIATE_TEST_SUITE_P(DirectionalOutputs, EnergyOfABurst,
                         testing::Values(IntegralCase{3, 90}, IntegralCase{4, 90},
                                         IntegralCase{3, 36}),
                         [](const auto &row) {
                             return "Method" + std::to_string(row.param.method) + "With" +
                                    std::to_string(row.param.directions) + "Bins";
                         });

// ---- Maximum entropy distribution

using Moments = std::array<std::complex<double>,
                           2>; // <exp(i theta)>, <exp(2 i theta)>, theta from east to north

// The distribution of greatest entropy is the spectrum of a second-order autoregression whose autocorrelations are the
// moments: its normal equations are solved here as they stand, by elimination.
double entropyDensity(const Moments &c, double theta) {
    const std::complex<double> m[2][2] = {{1.0, std::conj(c[0])}, {c[0], 1.0}};
    const std::complex<double> factor = m[1][0] / m[0][0];
    const std::complex<double> second = (c[1] - factor * c[0]) / (m[1][1] - factor * m[0][1]);
    const std::complex<double> first = c[0] - m[0][1] * second;
    const double innovation = (1.0 - first * std::conj(c[0]) - second * std::conj(c[1])).real();
    const std::complex<double> response =
        1.0 - first * std::polar(1.0, -theta) - second * std::polar(1.0, -2.0 * theta);
    return innovation / std::norm(response) / kCircle;
}

// Direction that bin k stands for: bearings, clockwise from north.
double binTheta(int k, int bins) { return kCircle / 4.0 - kCircle * k / bins; }

Moments wrappedNormal(double meanTheta, double sigma) {
    return {std::polar(std::exp(-0.5 * sigma * sigma), meanTheta),
            std::polar(std::exp(-2.0 * sigma * sigma), 2.0 * meanTheta)};
}

// cos^2s of half the angle.
Moments cosinePower(double meanTheta, double s) {
    return {std::polar(s / (s + 1.0), meanTheta),
            std::polar(s * (s - 1.0) / ((s + 1.0) * (s + 2.0)), 2.0 * meanTheta)};
}

// The one family whose distribution of greatest entropy has a single peak for every width.
Moments wrappedCauchy(double meanTheta, double length) {
    return {std::polar(length, meanTheta), std::polar(length * length, 2.0 * meanTheta)};
}

class Entropy : public testing::Test {
protected:
    Entropy() {
        record_->nFrequencies = 1;
        record_->nDirections = OV_MAX_DIRECTIONS;
    }
    void set(const Moments &c, int f = 0) const {
        record_->fourierA1[f] = static_cast<float>(c[0].real());
        record_->fourierB1[f] = static_cast<float>(c[0].imag());
        record_->fourierA2[f] = static_cast<float>(c[1].real());
        record_->fourierB2[f] = static_cast<float>(c[1].imag());
    }
    // What the record really holds.
    Moments stored() const {
        return {
            std::complex<double>(widened(record_->fourierA1[0]), widened(record_->fourierB1[0])),
            std::complex<double>(widened(record_->fourierA2[0]), widened(record_->fourierB2[0]))};
    }
    Rows run() const {
        Rows rows;
        EXPECT_EQ(OVGetFullWaveDirSpectrum_ptr(record_.get(), rows.values.data()), 0);
        return rows;
    }
    Moments momentsOf(const Rows &rows) const {
        Moments sum{};
        for (int k = 0; k < record_->nDirections; ++k) {
            const double theta = binTheta(k, record_->nDirections);
            sum[0] += widened(rows.at(0, k)) * std::polar(1.0, theta);
            sum[1] += widened(rows.at(0, k)) * std::polar(1.0, 2.0 * theta);
        }
        return sum;
    }
    int greatestBin(const Rows &rows) const {
        int best = 0;
        for (int k = 1; k < record_->nDirections; ++k) {
            best = rows.at(0, k) > rows.at(0, best) ? k : best;
        }
        return best;
    }
    RecordPtr record_ = makeRecord();
};

// Single precision against double: the closed form loses 1 / (1 - |c1|^2) of its digits.
TEST_F(Entropy, EqualsTheAutoregressionOfTheMoments) {
    std::mt19937 random(5);
    std::uniform_real_distribution<double> angle(0.0, kCircle);
    std::uniform_real_distribution<double> width(0.3, 1.5);
    std::uniform_int_distribution<int> bins(4, OV_MAX_DIRECTIONS);
    for (int i = 0; i < 2000; ++i) {
        record_->nDirections = bins(random);
        set(wrappedNormal(angle(random), width(random)));
        const Rows rows = run();
        double largest = 0.0;
        for (int k = 0; k < record_->nDirections; ++k) {
            const double theta = binTheta(k, record_->nDirections);
            largest = std::max(largest, entropyDensity(stored(), theta));
        }
        for (int k = 0; k < record_->nDirections; ++k) {
            const double theta = binTheta(k, record_->nDirections);
            const double weight = entropyDensity(stored(), theta) * kCircle / record_->nDirections;
            const double tolerance = 5e-5 * largest * kCircle / record_->nDirections;
            ASSERT_NEAR(widened(rows.at(0, k)), weight, tolerance) << "draw " << i << " bin " << k;
        }
    }
}

// The distribution keeps the moments it is made from: its weights, each at its bin's bearing, give them back. Where it
// is narrow (it then has two sharp peaks) bins of 4 degrees are no longer fine enough for more than two places.
TEST_F(Entropy, KeepsTheMomentsOfKnownDistributions) {
    struct Known {
        double tolerance;
        std::array<double, 4> powers;
        std::array<double, 4> sigmaDeg;
    };
    constexpr Known kKnown[] = {{5e-6, {0.5, 1.0, 2.0, 4.0}, {35.0, 40.0, 50.0, 70.0}},
                                {1e-2, {8.0, 10.0, 12.0, 15.0}, {20.0, 22.0, 25.0, 28.0}}};
    for (const Known &row : kKnown) {
        for (const double bearingDeg : {0.0, 33.0, 90.0, 211.0, 300.0}) {
            const double theta = (90.0 - bearingDeg) * kCircle / 360.0;
            for (std::size_t i = 0; i < 4; ++i) {
                for (const Moments &c : {cosinePower(theta, row.powers[i]),
                                         wrappedNormal(theta, row.sigmaDeg[i] * kCircle / 360.0)}) {
                    set(c);
                    const Rows rows = run();
                    const Moments back = momentsOf(rows);
                    EXPECT_NEAR(std::abs(back[0] - c[0]), 0.0, row.tolerance) << std::abs(c[0]);
                    EXPECT_NEAR(std::abs(back[1] - c[1]), 0.0, row.tolerance) << std::abs(c[0]);
                    EXPECT_NEAR(rows.sum(0, OV_MAX_DIRECTIONS), 1.0, row.tolerance);
                }
            }
        }
    }
}

TEST_F(Entropy, WithoutDirectionEveryBinWeighsTheSame) {
    const Rows rows = run();
    for (int k = 0; k < OV_MAX_DIRECTIONS; ++k) {
        EXPECT_FLOAT_EQ(rows.at(0, k), 1.0F / 90.0F);
    }
}

// The greatest bin stands at the bearing that the setter reports for the same coefficients, turned round or not.
TEST_F(Entropy, BinsAreTheBearingsOfTheMeanDirection) {
    const auto block = makeBlock(1);
    for (const bool reverse : {false, true}) {
        record_->reverseDirections = reverse ? 1 : 0;
        for (int k = 0; k < OV_MAX_DIRECTIONS; k += 7) {
            const Moments c = wrappedCauchy(binTheta(k, OV_MAX_DIRECTIONS), 0.8);
            setBin(*block, 0, static_cast<float>(-c[0].imag()), static_cast<float>(-c[0].real()),
                   static_cast<float>(-c[1].real()), static_cast<float>(c[1].imag()));
            ASSERT_EQ(OVSetFourierCoefficientSpectra_ptr(record_.get(), block.get()), 0);
            const int greatest = greatestBin(run());
            EXPECT_EQ(greatest, (k + (reverse ? 45 : 0)) % OV_MAX_DIRECTIONS);
            const double off = widened(block->direction[0]) - 4.0 * greatest;
            EXPECT_NEAR(std::remainder(off, 360.0), 0.0, 1e-3);
        }
    }
}

TEST_F(Entropy, ReverseShiftsTheRowByHalfACircle) {
    set(cosinePower(0.7, 4.0));
    const Rows plain = run();
    record_->reverseDirections = 1;
    const Rows reversed = run();
    for (int k = 0; k < OV_MAX_DIRECTIONS; ++k) {
        EXPECT_NEAR(widened(reversed.at(0, (k + 45) % OV_MAX_DIRECTIONS)), widened(plain.at(0, k)),
                    1e-6);
    }
}

TEST_F(Entropy, OnlyTheValueOneReverses) {
    set(cosinePower(0.7, 4.0));
    const Rows plain = run();
    record_->reverseDirections = 2;
    EXPECT_EQ(run().values, plain.values);
}

TEST_F(Entropy, MirroredCoefficientsMirrorTheRow) {
    const Moments c = cosinePower(0.9, 3.0);
    set(c);
    const Rows plain = run();
    set({std::conj(c[0]), std::conj(c[1])}); // north and south exchanged: bearing b becomes 180 - b
    const Rows mirrored = run();
    for (int k = 0; k < OV_MAX_DIRECTIONS; ++k) {
        EXPECT_NEAR(widened(mirrored.at(0, (135 - k) % OV_MAX_DIRECTIONS)), widened(plain.at(0, k)),
                    1e-6);
    }
}

// The record's copy, by which energy is spread later, comes from the single-precision density.
TEST_F(Entropy, TheRecordKeepsTheWeightsInDoublePrecision) {
    set(cosinePower(0.7, 4.0));
    const Rows rows = run();
    for (int k = 0; k < OV_MAX_DIRECTIONS; ++k) {
        const double kept = record_->dirSpectrum[0][k];
        EXPECT_FLOAT_EQ(static_cast<float>(kept), rows.at(0, k));
        const float density = static_cast<float>(kept * OV_MAX_DIRECTIONS / kCircle);
        EXPECT_NEAR(kept / (widened(density) * kCircle / OV_MAX_DIRECTIONS), 1.0, 1e-15);
    }
}

// No distribution has |c2| > 1; what comes out is negative everywhere.
TEST_F(Entropy, NegativeWeightsBecomeZeroAndTheRecordKeepsTheirSign) {
    set({std::complex<double>(0.0, 0.0), std::complex<double>(1.5, 0.0)});
    const Rows rows = run();
    for (int k = 0; k < OV_MAX_DIRECTIONS; ++k) {
        EXPECT_EQ(rows.at(0, k), 0.0F);
        EXPECT_LT(record_->dirSpectrum[0][k], 0.0);
        const double weight =
            entropyDensity(stored(), binTheta(k, OV_MAX_DIRECTIONS)) * kCircle / OV_MAX_DIRECTIONS;
        EXPECT_NEAR(record_->dirSpectrum[0][k], weight, 1e-5 * std::abs(weight));
    }
}

TEST_F(Entropy, OneSingleDirectionIsNotFinite) {
    set({std::complex<double>(1.0, 0.0), std::complex<double>(1.0, 0.0)});
    const Rows rows = run();
    for (int k = 0; k < OV_MAX_DIRECTIONS; ++k) {
        EXPECT_FALSE(std::isfinite(rows.at(0, k))) << k;
    }
}

TEST_F(Entropy, MissingCoefficientsGiveAMissingRow) {
    record_->nFrequencies = 2;
    set({std::complex<double>(-9.0, -9.0), std::complex<double>(-9.0, -9.0)}, 0);
    set(cosinePower(0.7, 4.0), 1);
    const Rows rows = run();
    for (int k = 0; k < OV_MAX_DIRECTIONS; ++k) {
        EXPECT_EQ(rows.at(0, k), kMarker);
        EXPECT_NE(record_->dirSpectrum[0][k], -9.0) << "the marker is the host's alone";
        EXPECT_GT(rows.at(1, k), 0.0F);
    }
}

TEST_F(Entropy, OnlyTheExactMarkerIsMissing) {
    set({std::complex<double>(std::nextafter(-9.0F, 0.0F), 0.0), std::complex<double>(0.0, 0.0)});
    EXPECT_NE(run().at(0, 0), kMarker);
}

TEST_F(Entropy, RowsAreNinetyApartWhateverTheNumberOfDirections) {
    record_->nFrequencies = 3;
    record_->nDirections = 36;
    record_->dirSpectrum[0][36] = 77.0;
    const Rows rows = run();
    for (int f = 0; f < 3; ++f) {
        EXPECT_FLOAT_EQ(rows.at(f, 35), 1.0F / 36.0F);
        EXPECT_EQ(rows.at(f, 36), kUntouched);
    }
    EXPECT_EQ(rows.at(3, 0), kUntouched);
    EXPECT_EQ(record_->dirSpectrum[0][36], 77.0);
}

TEST_F(Entropy, CountsOutsideTheTableAreSafe) {
    const GuardedMemory memory(sizeof(float) * OV_MAX_FREQUENCIES * OV_MAX_DIRECTIONS,
                               GuardedEdge::back);
    record_->nFrequencies = 1000;
    record_->nDirections = 1000;
    ASSERT_EQ(OVGetFullWaveDirSpectrum_ptr(record_.get(), memory.as<float>()), 0);
    EXPECT_FLOAT_EQ(memory.as<float>()[OV_MAX_FREQUENCIES * OV_MAX_DIRECTIONS - 1], 1.0F / 90.0F);
    for (const int directions : {0, -1, std::numeric_limits<int>::min()}) {
        record_->nDirections = directions;
        EXPECT_EQ(run().at(0, 0), kUntouched);
    }
}

} // namespace
