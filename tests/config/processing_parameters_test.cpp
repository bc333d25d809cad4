#include "config/processing_parameters.hpp"

#include <algorithm>
#include <cmath>
#include <cstring>
#include <limits>

#include <gtest/gtest.h>

#include "support/record_ptr.hpp"

namespace {

using orvik::test::makeRecord;
using orvik::test::RecordPtr;

constexpr float kNan = std::numeric_limits<float>::quiet_NaN();
constexpr float kInfinity = std::numeric_limits<float>::infinity();

// A 2 Hz instrument of type 3.
RecordPtr recordAt(std::int32_t samplingRate, std::int32_t instrumentType = 3) {
    RecordPtr record = makeRecord();
    record->samplingRate = samplingRate;
    record->instrumentType = instrumentType;
    return record;
}

OVProcessingParameters plainParameters() {
    OVProcessingParameters params{};
    params.processingMethod = 3;
    params.freqMin = 0.02F;
    params.freqMax = 0.49F;
    params.fineFreqMin = 0.02F;
    params.fineFreqMax = 0.99F;
    params.freqStep = 0.01F;
    params.dirBandWidth = 32;
    params.specBandWidth = 32;
    params.estimateMask = 7;
    params.nDirections = 90;
    return params;
}

TEST(ProcessingParameters, CopiesEveryFieldAndReportsIt) {
    const RecordPtr record = recordAt(2);
    OVProcessingParameters params = plainParameters();
    params.levelOffset = 1.3F;
    params.headingOffset = -12.25F;
    params.dirBandWidth = 17;
    params.specBandWidth = 511;
    params.directionalInputMode = 3;
    params.estimateMask = 15;
    params.nDirections = 45;
    params.pressureOffset = -0.1F;
    params.reverseDirections = 200;
    params.profileParamA = 9.5F;
    params.profileParamB = 0xDEADBEEF;
    const OVProcessingParameters given = params;
    ov::setProcessingParameters(*record, params);
    EXPECT_EQ(record->processingMethod, 3);
    EXPECT_EQ(record->freqMin, static_cast<double>(0.02F)); // widened, not parsed again
    EXPECT_EQ(record->freqMax, static_cast<double>(0.49F));
    EXPECT_EQ(record->fineFreqMin, static_cast<double>(0.02F));
    EXPECT_EQ(record->fineFreqMax, static_cast<double>(0.99F));
    EXPECT_EQ(record->freqStep, static_cast<double>(0.01F));
    EXPECT_EQ(record->levelOffset, static_cast<double>(1.3F));
    EXPECT_EQ(record->headingOffset, -12.25);
    EXPECT_EQ(record->dirBandWidth, 17);
    EXPECT_EQ(record->specBandWidth, 511);
    EXPECT_EQ(record->directionalInputMode, 3);
    EXPECT_EQ(record->estimateMask, 15);
    EXPECT_EQ(record->nDirections, 45);
    EXPECT_EQ(record->pressureOffset, static_cast<double>(-0.1F));
    EXPECT_EQ(record->reverseDirections, 200);
    EXPECT_EQ(record->profileParamA, 9.5F);
    EXPECT_EQ(record->profileParamB, 0xDEADBEEF);
    EXPECT_EQ(std::memcmp(&params, &given, sizeof params), 0); // nothing was out of range
}

// Each run starts from the host's choice again, whatever the last run made of it.
TEST(ProcessingParameters, KeepsTheHostsModeAndMaskForEveryRun) {
    const RecordPtr record = recordAt(2);
    OVProcessingParameters params = plainParameters();
    params.processingMethod = 4;
    params.directionalInputMode = 2;
    params.estimateMask = 15;
    ov::setProcessingParameters(*record, params);
    EXPECT_EQ(record->configuredInputMode, 2);
    EXPECT_EQ(record->configuredEstimateMask, 15);
    params.estimateMask = 7; // settled to method 3
    ov::setProcessingParameters(*record, params);
    EXPECT_EQ(record->configuredEstimateMask, 7);
}

TEST(ProcessingParameters, ZerosGiveTheDefaultAxesAt2Hz) {
    const RecordPtr record = recordAt(2);
    OVProcessingParameters params{};
    ov::setProcessingParameters(*record, params);
    EXPECT_EQ(params.freqMin, 0.02F);
    EXPECT_EQ(params.freqMax, 0.99F);
    EXPECT_EQ(params.fineFreqMin, 0.02F);
    EXPECT_EQ(params.fineFreqMax, 1.99F);
    EXPECT_EQ(params.freqStep, 0.01F);
    EXPECT_EQ(params.dirBandWidth, 32);
    EXPECT_EQ(params.specBandWidth, 32);
    EXPECT_EQ(record->nFrequencies, 98); // 0.97 / 0.01 is exactly 97 in double precision
    EXPECT_EQ(record->nFrequenciesFine, 198);
    EXPECT_EQ(record->freqMin, 0.02); // defaults are doubles, not widened floats
    EXPECT_EQ(record->frequencies[0], 0.02F);
    EXPECT_EQ(record->frequencies[97], 0.99F);
    EXPECT_EQ(record->fineFreqAxis[197], 1.99F);
}

// ---- Defaults: below, at and above each limit

struct LimitRow {
    float given;
    float used;
};

TEST(ProcessingParameters, FreqMinOutsideZeroToOneIsReplaced) {
    const LimitRow rows[] = {
        {-1.0F, 0.02F},     {0.0F, 0.02F},
        {1.0e-6F, 1.0e-6F}, {std::nextafter(1.0F, 0.0F), std::nextafter(1.0F, 0.0F)},
        {1.0F, 0.02F},      {kInfinity, 0.02F},
        {-kInfinity, 0.02F}};
    for (const LimitRow &row : rows) {
        const RecordPtr record = recordAt(-1); // no Nyquist clamp
        OVProcessingParameters params = plainParameters();
        params.freqMin = row.given;
        params.freqStep = 0.1F;
        ov::setProcessingParameters(*record, params);
        EXPECT_EQ(params.freqMin, row.used) << row.given;
    }
}

TEST(ProcessingParameters, FineFreqMinOutsideZeroToTwoIsReplaced) {
    const LimitRow rows[] = {{-1.0F, 0.02F},
                             {0.0F, 0.02F},
                             {1.0F, 1.0F},
                             {std::nextafter(2.0F, 0.0F), std::nextafter(2.0F, 0.0F)},
                             {2.0F, 0.02F}};
    for (const LimitRow &row : rows) {
        const RecordPtr record = recordAt(-1);
        OVProcessingParameters params = plainParameters();
        params.fineFreqMin = row.given;
        params.fineFreqMax = 3.0F;
        params.freqStep = 0.1F;
        ov::setProcessingParameters(*record, params);
        EXPECT_EQ(params.fineFreqMin, row.used) << row.given;
    }
}

TEST(ProcessingParameters, UpperLimitsThatAreNotPositiveAreReplaced) {
    const RecordPtr record = recordAt(-1);
    for (const float given : {0.0F, -0.0F, -0.5F, -kInfinity}) {
        OVProcessingParameters params = plainParameters();
        params.freqMax = given;
        params.fineFreqMax = given;
        ov::setProcessingParameters(*record, params);
        EXPECT_EQ(params.freqMax, 1.0F) << given;
        EXPECT_EQ(params.fineFreqMax, 2.0F) << given;
    }
}

// 0.1 as a float lies above the double 0.1 that the limit is, and is replaced.
TEST(ProcessingParameters, StepMustBePositiveAndAtMostATenth) {
    const LimitRow rows[] = {
        {-0.01F, 0.01F},   {0.0F, 0.01F},
        {0.005F, 0.005F},  {std::nextafter(0.1F, 0.0F), std::nextafter(0.1F, 0.0F)},
        {0.1F, 0.01F},     {0.11F, 0.01F},
        {kInfinity, 0.01F}};
    ASSERT_GT(static_cast<double>(0.1F), 0.1);
    for (const LimitRow &row : rows) {
        const RecordPtr record = recordAt(2);
        OVProcessingParameters params = plainParameters();
        params.freqStep = row.given;
        ov::setProcessingParameters(*record, params);
        EXPECT_EQ(params.freqStep, row.used) << row.given;
    }
}

TEST(ProcessingParameters, BandWidthsOutside1To512Are32) {
    struct Row {
        std::int32_t given, used;
    };
    constexpr Row kRows[] = {{std::numeric_limits<std::int32_t>::min(), 32},
                             {-1, 32},
                             {0, 32},
                             {1, 1},
                             {2, 2},
                             {511, 511},
                             {512, 512},
                             {513, 32},
                             {std::numeric_limits<std::int32_t>::max(), 32}};
    for (const Row &row : kRows) {
        const RecordPtr record = recordAt(2);
        OVProcessingParameters params = plainParameters();
        params.dirBandWidth = row.given;
        params.specBandWidth = 100;
        ov::setProcessingParameters(*record, params);
        EXPECT_EQ(params.dirBandWidth, row.used) << row.given;
        EXPECT_EQ(params.specBandWidth, 100);
        params.dirBandWidth = 100;
        params.specBandWidth = row.given;
        ov::setProcessingParameters(*record, params);
        EXPECT_EQ(params.specBandWidth, row.used) << row.given;
        EXPECT_EQ(params.dirBandWidth, 100);
    }
}

TEST(ProcessingParameters, DirectionsAreAtMost90AndNegativeCountsPass) {
    struct Row {
        std::int32_t given, used;
    };
    constexpr Row kRows[] = {{120, 90}, {91, 90}, {90, 90}, {89, 89}, {0, 0}, {-7, -7}};
    for (const Row &row : kRows) {
        const RecordPtr record = recordAt(2);
        OVProcessingParameters params = plainParameters();
        params.nDirections = row.given;
        ov::setProcessingParameters(*record, params);
        EXPECT_EQ(record->nDirections, row.used);
        EXPECT_EQ(params.nDirections, row.used);
    }
}

// ---- The Nyquist clamp

struct ClampRow {
    std::int32_t samplingRate;
    float freqMax, freqMaxUsed;
    float fineFreqMax, fineFreqMaxUsed;
};

TEST(ProcessingParameters, UpperLimitsStayBelowNyquist) {
    const float below1 = std::nextafter(0.5F, 0.0F);
    const float below2 = std::nextafter(1.0F, 0.0F);
    const float below2Fine = std::nextafter(2.0F, 0.0F);
    const ClampRow rows[] = {
        {1, below1, below1, below2, below2},
        {1, 0.5F, 0.49F, 1.0F, 0.99F},
        {1, 0.6F, 0.49F, 1.5F, 0.99F},
        {2, below2, below2, below2Fine, below2Fine},
        {2, 1.0F, 0.99F, 2.0F, 1.99F},
        {4, 1.8F, 0.99F, 3.5F, 1.99F}, // rates above 2 Hz keep the limits of 2 Hz
        {2147483647, 1.8F, 0.99F, 3.5F, 1.99F},
        {0, std::nextafter(0.375F, 0.0F), std::nextafter(0.375F, 0.0F), std::nextafter(0.75F, 0.0F),
         std::nextafter(0.75F, 0.0F)},
        {0, 0.375F, 0.375F, 0.75F, 0.75F},
        {0, 0.4F, 0.375F, 0.8F, 0.75F},
        {-1, 1.8F, 1.8F, 3.5F, 3.5F}, // negative codes are not clamped
        {-2147483647 - 1, 1.8F, 1.8F, 3.5F, 3.5F},
    };
    for (const ClampRow &row : rows) {
        const RecordPtr record = recordAt(row.samplingRate);
        OVProcessingParameters params = plainParameters();
        params.freqMax = row.freqMax;
        params.fineFreqMax = row.fineFreqMax;
        params.freqStep = 0.09F;
        ov::setProcessingParameters(*record, params);
        EXPECT_EQ(params.freqMax, row.freqMaxUsed) << row.samplingRate << ' ' << row.freqMax;
        EXPECT_EQ(params.fineFreqMax, row.fineFreqMaxUsed)
            << row.samplingRate << ' ' << row.fineFreqMax;
    }
}

TEST(ProcessingParameters, AnUpperLimitBelowTheLowerOneBecomesOneStepMore) {
    const RecordPtr record = recordAt(2);
    OVProcessingParameters params = plainParameters();
    params.freqMin = 0.6F;
    params.freqMax = 0.4F;
    ov::setProcessingParameters(*record, params);
    EXPECT_EQ(record->freqMax, static_cast<double>(0.6F) + static_cast<double>(0.01F));
    EXPECT_EQ(record->nFrequencies, 2);
    EXPECT_EQ(record->frequencies[0], 0.6F);
}

// At 1 Hz the Nyquist clamp comes after the limit was raised and empties the axis.
TEST(ProcessingParameters, TheNyquistClampMayEmptyTheAxis) {
    const RecordPtr record = recordAt(1);
    std::fill_n(record->frequencies, ov::kMaxFreq, 5.5F);
    OVProcessingParameters params = plainParameters();
    params.freqMin = 0.6F;
    params.freqMax = 0.4F;
    ov::setProcessingParameters(*record, params);
    EXPECT_EQ(params.freqMax, 0.49F);
    EXPECT_EQ(params.freqMin, 0.6F);
    EXPECT_EQ(record->nFrequencies, -10); // -11.0000002 truncates to -11, plus one
    for (const float f : record->frequencies) {
        EXPECT_EQ(f, 5.5F);
    }
}

TEST(ProcessingParameters, TheProfileInstrumentsFineAxisEndsWithTheMainAxis) {
    const RecordPtr record = recordAt(2, 16);
    OVProcessingParameters params = plainParameters();
    params.freqMax = 0.7F;
    params.fineFreqMax = 1.9F;
    ov::setProcessingParameters(*record, params);
    EXPECT_EQ(params.fineFreqMax, 0.7F);
    EXPECT_EQ(record->nFrequenciesFine, record->nFrequencies);

    params.freqMax = 3.0F; // the clamped limit, not the given one
    ov::setProcessingParameters(*record, params);
    EXPECT_EQ(params.fineFreqMax, 0.99F);
}

// ---- The axes

TEST(ProcessingParameters, ARangeOf250BinsIsCutTo200) {
    const RecordPtr record = recordAt(-1); // no clamp below 2.51 Hz
    OVProcessingParameters params = plainParameters();
    params.freqMin = 0.02F;
    params.freqMax = 2.51F;
    params.fineFreqMax = 5.0F;
    ov::setProcessingParameters(*record, params);
    EXPECT_EQ(record->nFrequencies, 200);
    EXPECT_EQ(record->freqMax, static_cast<double>(0.01F) * 199 + static_cast<double>(0.02F));
    EXPECT_FLOAT_EQ(params.freqMax, 0.02F + 1.99F);
    EXPECT_EQ(record->nFrequenciesFine, 400);
    EXPECT_EQ(record->fineFreqMax, static_cast<double>(0.01F) * 399 + static_cast<double>(0.02F));
}

TEST(ProcessingParameters, Exactly200BinsAreNotCut) {
    const RecordPtr record = recordAt(-1);
    OVProcessingParameters params = plainParameters();
    params.freqMin = 0.25F;
    params.freqStep = 0.015625F; // exact in binary
    params.freqMax = 0.25F + 199 * 0.015625F;
    params.fineFreqMin = 0.25F;
    params.fineFreqMax = 0.25F + 399 * 0.015625F;
    const OVProcessingParameters given = params;
    ov::setProcessingParameters(*record, params);
    EXPECT_EQ(record->nFrequencies, 200);
    EXPECT_EQ(record->nFrequenciesFine, 400);
    EXPECT_EQ(std::memcmp(&params, &given, sizeof params), 0);
    EXPECT_EQ(record->frequencies[199], given.freqMax);
    EXPECT_EQ(record->fineFreqAxis[399], given.fineFreqMax);

    params.freqMax += 0.015625F;
    ov::setProcessingParameters(*record, params);
    EXPECT_EQ(record->nFrequencies, 200);
    EXPECT_EQ(params.freqMax, given.freqMax);
}

// exact: each bin is formed in double precision from its index; nothing is added up.
TEST(ProcessingParameters, BinsDoNotDrift) {
    const RecordPtr record = recordAt(2);
    OVProcessingParameters params = plainParameters();
    params.freqMin = 0.03F;
    params.freqStep = 0.0075F;
    ov::setProcessingParameters(*record, params);
    ASSERT_GT(record->nFrequencies, 50);
    for (int i = 0; i < record->nFrequencies; ++i) {
        const double exact = i * static_cast<double>(0.0075F) + static_cast<double>(0.03F);
        ASSERT_EQ(record->frequencies[i], static_cast<float>(exact)) << i;
    }
}

TEST(ProcessingParameters, EntriesBeyondTheCountsKeepTheirValues) {
    const RecordPtr record = recordAt(2);
    OVProcessingParameters params = plainParameters();
    params.freqMax = 0.99F;
    params.fineFreqMax = 1.99F;
    ov::setProcessingParameters(*record, params);
    const int wide = record->nFrequencies;
    const int wideFine = record->nFrequenciesFine;
    const float last = record->frequencies[wide - 1];
    const float lastFine = record->fineFreqAxis[wideFine - 1];
    params.freqMax = 0.3F;
    params.fineFreqMax = 0.3F;
    params.freqMin = 0.05F;
    params.fineFreqMin = 0.05F;
    ov::setProcessingParameters(*record, params);
    ASSERT_LT(record->nFrequencies, wide);
    EXPECT_EQ(record->frequencies[wide - 1], last);
    EXPECT_EQ(record->fineFreqAxis[wideFine - 1], lastFine);
    EXPECT_EQ(record->frequencies[0], 0.05F);
}

// ---- Method 4 and its estimates

TEST(ProcessingParameters, Method4WithoutTheSurfaceTrackEstimateIsMethod3) {
    struct Row {
        std::int32_t type, mask, method, maskUsed;
    };
    constexpr Row kRows[] = {{3, 7, 3, 7},   {3, 8, 4, 8},   {3, 0, 3, 7},  {3, -1, 3, 7},
                             {3, 31, 4, 31}, {1, 7, 3, 7},   {16, 7, 4, 7}, {16, 6, 3, 7},
                             {16, -8, 3, 7}, {16, 31, 4, 31}};
    for (const Row &row : kRows) {
        const RecordPtr record = recordAt(2, row.type);
        OVProcessingParameters params = plainParameters();
        params.processingMethod = 4;
        params.estimateMask = row.mask;
        ov::setProcessingParameters(*record, params);
        EXPECT_EQ(params.processingMethod, row.method) << row.type << ' ' << row.mask;
        EXPECT_EQ(params.estimateMask, row.maskUsed) << row.type << ' ' << row.mask;
        EXPECT_EQ(record->processingMethod, row.method);
        EXPECT_EQ(record->estimateMask, row.maskUsed);
    }
}

TEST(ProcessingParameters, OtherMethodsKeepTheirMask) {
    for (const std::int32_t method : {-5, 0, 1, 2, 3, 5}) {
        const RecordPtr record = recordAt(2);
        OVProcessingParameters params = plainParameters();
        params.processingMethod = method;
        params.estimateMask = 1;
        ov::setProcessingParameters(*record, params);
        EXPECT_EQ(params.processingMethod, method);
        EXPECT_EQ(params.estimateMask, 1);
    }
}

// ---- Values that are no number

TEST(ProcessingParameters, ValuesThatAreNoNumberPassAndGiveNoBins) {
    for (float OVProcessingParameters::*field :
         {&OVProcessingParameters::freqMin, &OVProcessingParameters::freqMax,
          &OVProcessingParameters::freqStep}) {
        const RecordPtr record = recordAt(2);
        OVProcessingParameters params = plainParameters();
        params.*field = kNan;
        ov::setProcessingParameters(*record, params);
        EXPECT_TRUE(std::isnan(params.*field));
        EXPECT_LT(record->nFrequencies, 0);
    }
}

TEST(ProcessingParameters, AnInfiniteOrVastBinCountGivesNoBins) {
    const RecordPtr record = recordAt(-1);
    OVProcessingParameters params = plainParameters();
    params.freqMax = kInfinity;
    ov::setProcessingParameters(*record, params);
    EXPECT_LT(record->nFrequencies, 0);
    params = plainParameters();
    params.freqStep = 1.0e-30F;
    ov::setProcessingParameters(*record, params);
    EXPECT_LT(record->nFrequencies, 0);
    EXPECT_LT(record->nFrequenciesFine, 0);
}

} // namespace
