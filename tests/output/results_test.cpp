#include "output/results.hpp"

#include <algorithm>
#include <bit>
#include <cmath>
#include <cstddef>
#include <cstring>
#include <iterator>
#include <limits>
#include <memory>

#include <gtest/gtest.h>

#include "support/record_ptr.hpp"

namespace {

using orvik::test::makeRecord;
using orvik::test::RecordPtr;

constexpr float kMissing = -9.0F;

// ---- Wave parameters

// Every result its own value, so that no slot can be taken for another.
RecordPtr recordWithResults() {
    RecordPtr record = makeRecord();
    record->processedFlag = 1;
    record->surfaceTrackValid = 1;
    for (int i = 0; i < OV_WAVE_PARAMETERS; ++i) {
        record->waveParameters[i] = 100.0F + static_cast<float>(i);
    }
    record->instrumentDepth = 114.0F;
    record->astInitialBadCount = 115;
    record->astSpikeCount = 116;
    record->qualityFlags = 117;
    record->spectrumSource = 118;
    record->astLevel = 119.0F;
    record->astLevelEven = 120.0F;
    record->aliasingFrequency = 121.0F;
    record->checkedHeight = 122.0F;
    record->checkedMeanPeriod = 123.0F;
    record->slantAngle = 60.0F;
    record->headerDepth = 248.0F;
    record->energyPeriod = 125.0F;
    record->selectedCell = 125;
    record->missingSampleCount = 99;
    return record;
}

OVWaveParameterSet parametersOf(const OVRecord &rec) {
    OVWaveParameterSet set;
    std::memset(&set, 0x55, sizeof set); // what the host had there
    ov::getWaveParameters(rec, set);
    return set;
}

// Slots as four-byte words, by their number.
std::int32_t slotBits(const OVWaveParameterSet &set, int slot) {
    std::int32_t word = 0;
    std::memcpy(&word, reinterpret_cast<const char *>(&set) + 4 * slot, sizeof word);
    return word;
}
float slotValue(const OVWaveParameterSet &set, int slot) {
    return std::bit_cast<float>(slotBits(set, slot));
}

TEST(WaveParameters, EveryResultIsInItsSlot) {
    const RecordPtr record = recordWithResults();
    const OVWaveParameterSet set = parametersOf(*record);
    for (int slot = 0; slot < 27; ++slot) {
        const bool integer = slot == 15 || slot == 16 || slot == 17 || slot == 18;
        if (integer) {
            EXPECT_EQ(slotBits(set, slot), 100 + slot) << slot;
        } else if (slot == 24) {
            EXPECT_FLOAT_EQ(slotValue(set, slot), 124.0F); // cos 60 degrees of 248 m
        } else if (slot == 26) {
            EXPECT_EQ(slotBits(set, slot), 126); // cells count from 1
        } else {
            EXPECT_EQ(slotValue(set, slot), 100.0F + static_cast<float>(slot)) << slot;
        }
    }
}

TEST(WaveParameters, WithoutAProcessedBurstResultsAreMissing) {
    const RecordPtr record = recordWithResults();
    record->processedFlag = 0;
    const OVWaveParameterSet set = parametersOf(*record);
    for (const int slot : {0, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 19, 20, 21, 23}) {
        EXPECT_EQ(slotValue(set, slot), kMissing) << slot;
    }
    EXPECT_EQ(slotBits(set, 15), 0);
    EXPECT_EQ(slotBits(set, 16), 99); // the missing samples instead of the spikes
    EXPECT_EQ(slotBits(set, 17), OV_FLAG_NO_RESULT);
    EXPECT_EQ(slotBits(set, 18), 118);
    EXPECT_EQ(slotBits(set, 22), -9); // an integer among floats
    EXPECT_FLOAT_EQ(slotValue(set, 24), 124.0F);
    EXPECT_EQ(slotValue(set, 25), 125.0F);
    EXPECT_EQ(slotBits(set, 26), 126);
}

TEST(WaveParameters, AFreshRecordHasNoResults) {
    const RecordPtr record = makeRecord();
    const OVWaveParameterSet set = parametersOf(*record);
    for (int slot = 0; slot < 14; ++slot) {
        EXPECT_EQ(slotValue(set, slot), kMissing) << slot;
    }
    EXPECT_EQ(slotBits(set, 16), 0);
    EXPECT_EQ(slotBits(set, 17), OV_FLAG_NO_RESULT);
    EXPECT_EQ(slotBits(set, 22), -9);
    EXPECT_EQ(slotBits(set, 26), 1);
}

TEST(WaveParameters, TrackOnlyHostsGetNothingWithoutATrack) {
    const RecordPtr record = recordWithResults();
    record->directionalInputMode = 3;
    record->surfaceTrackValid = 0;
    const OVWaveParameterSet set = parametersOf(*record);
    for (const int slot : {0, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 19, 21, 23}) {
        EXPECT_EQ(slotValue(set, slot), kMissing) << slot;
    }
    EXPECT_EQ(slotBits(set, 15), 0);
    EXPECT_EQ(slotBits(set, 16), 99);
    EXPECT_EQ(slotBits(set, 17), 117);     // the burst's own flags
    EXPECT_EQ(slotValue(set, 20), 120.0F); // stays
    EXPECT_EQ(slotValue(set, 22), 122.0F); // stays
    EXPECT_EQ(slotValue(set, 25), 125.0F);
}

TEST(WaveParameters, OnlyMode3WithoutATrackMasks) {
    for (const std::int32_t mode : {-1, 0, 1, 2, 4}) {
        const RecordPtr record = recordWithResults();
        record->directionalInputMode = mode;
        record->surfaceTrackValid = 0;
        EXPECT_EQ(parametersOf(*record).waveParameters[OV_HM0], 106.0F) << mode;
    }
    const RecordPtr record = recordWithResults();
    record->directionalInputMode = 3;
    EXPECT_EQ(parametersOf(*record).waveParameters[OV_HM0], 106.0F);
}

TEST(WaveParameters, TrackOnlyHostsWithoutAProcessedBurstKeepTheNoResultFlag) {
    const RecordPtr record = recordWithResults();
    record->processedFlag = 0;
    record->directionalInputMode = 3;
    record->surfaceTrackValid = 0;
    const OVWaveParameterSet set = parametersOf(*record);
    EXPECT_EQ(slotBits(set, 17), OV_FLAG_NO_RESULT);
    EXPECT_EQ(slotValue(set, 22), 122.0F);
    EXPECT_EQ(slotValue(set, 20), kMissing);
}

// ulp: cosine and product in double precision, rounded once.
TEST(WaveParameters, CellRangeIsTheSlantRangeTimesTheCosine) {
    const RecordPtr record = makeRecord();
    for (const float slant : {0.0F, 20.0F, 25.0F, 45.0F, 89.0F}) {
        record->slantAngle = slant;
        record->headerDepth = 8.49F;
        const long double exact =
            std::cos(static_cast<long double>(slant) * 3.14159265358979323846L / 180.0L) *
            static_cast<long double>(record->headerDepth);
        EXPECT_EQ(parametersOf(*record).cellVerticalRange, static_cast<float>(exact)) << slant;
    }
}

// ---- Spectra

constexpr int kBins = 8;
constexpr int kFineBins = 12;

RecordPtr recordWithSpectra() {
    RecordPtr record = makeRecord();
    record->processedFlag = 1;
    record->processingMethod = 4;
    record->nFrequencies = kBins;
    record->nFrequenciesFine = kFineBins;
    record->lastValidFreqIndex = 200;
    record->velocitySeriesCount = 3;
    for (int i = 0; i < ov::kMaxFreq; ++i) {
        const auto bin = static_cast<float>(i);
        record->spectrumPrs[i] = 1000.0F + bin;
        record->spectrumVel[i] = 2000.0F + bin;
        record->meanDirection[i] = 3000.0F + bin;
        record->directionalSpread[i] = 4000.0F + bin;
        record->fourierA1[i] = 5000.0F + bin;
        record->fourierB1[i] = 6000.0F + bin;
        record->fourierA2[i] = 7000.0F + bin;
        record->fourierB2[i] = 8000.0F + bin;
        record->checkRatio[i] = 0.1 + i;
        for (int s = 0; s < ov::kMaxSeries; ++s) {
            record->beamElevSpectrum[i][s] = 10.0F * bin + static_cast<float>(s) + 1.0F;
        }
    }
    for (int i = 0; i < ov::kMaxFreqFine; ++i) {
        record->bandSpectrumFine[i] = 9000.0F + static_cast<float>(i);
    }
    return record;
}

// The block as the host got it, copied from packed memory to where its fields may be compared.
struct Spectra {
    int spectrumKind;
    std::int32_t count;
    std::int32_t fineCount;
    float energySpectrum[OV_MAX_FREQUENCIES];
    std::uint32_t binInfo[OV_MAX_FREQUENCIES][4];
    float secondSpectrum[OV_MAX_FREQUENCIES];
    float fineSpectrum[OV_MAX_FREQUENCIES_FINE];
    float direction[OV_MAX_FREQUENCIES];
    float spread[OV_MAX_FREQUENCIES];
    float coefP[OV_MAX_FREQUENCIES];
    float coefQ[OV_MAX_FREQUENCIES];
    float coefR[OV_MAX_FREQUENCIES];
    float coefS[OV_MAX_FREQUENCIES];
    float bandValue[OV_MAX_FREQUENCIES];
};

using SpectraPtr = std::unique_ptr<Spectra>;

SpectraPtr spectraOf(OVRecord &rec) {
    const auto block = std::make_unique<OVFourierCoefficientSpectra>();
    std::memset(block.get(), 0x55, sizeof *block);
    ov::getWaveSpectrum(rec, *block);
    auto spectra = std::make_unique<Spectra>();
    spectra->spectrumKind = block->spectrumKind;
    constexpr std::size_t kFrom = offsetof(OVFourierCoefficientSpectra, count);
    static_assert(sizeof(Spectra) == sizeof(OVFourierCoefficientSpectra) - kFrom + sizeof(int));
    std::memcpy(&spectra->count, reinterpret_cast<const char *>(block.get()) + kFrom,
                sizeof(OVFourierCoefficientSpectra) - kFrom);
    return spectra;
}

float beamPlace(const Spectra &block, int bin, int place) {
    return std::bit_cast<float>(block.binInfo[bin][place]);
}

TEST(WaveSpectrum, EveryFieldOfABinIsInItsPlace) {
    const RecordPtr record = recordWithSpectra();
    const SpectraPtr block = spectraOf(*record);
    EXPECT_EQ(block->spectrumKind, 11);
    EXPECT_EQ(block->count, kBins);
    EXPECT_EQ(block->fineCount, kFineBins);
    for (int i = 0; i < kBins; ++i) {
        const auto bin = static_cast<float>(i);
        EXPECT_EQ(block->energySpectrum[i], 1000.0F + bin);
        EXPECT_EQ(block->secondSpectrum[i], 2000.0F + bin);
        EXPECT_EQ(block->direction[i], 3000.0F + bin);
        EXPECT_EQ(block->spread[i], 4000.0F + bin);
        EXPECT_EQ(block->coefP[i], -(6000.0F + bin)); // minus b1
        EXPECT_EQ(block->coefQ[i], -(5000.0F + bin)); // minus a1
        EXPECT_EQ(block->coefR[i], -(7000.0F + bin)); // minus a2
        EXPECT_EQ(block->coefS[i], 8000.0F + bin);    // b2 keeps its sign
        EXPECT_EQ(block->bandValue[i], static_cast<float>(0.1 + i));
        for (int beam = 0; beam < 3; ++beam) {
            EXPECT_EQ(beamPlace(*block, i, beam), 10.0F * bin + static_cast<float>(beam) + 1.0F);
        }
    }
    for (int i = 0; i < kFineBins; ++i) {
        EXPECT_EQ(block->fineSpectrum[i], 9000.0F + static_cast<float>(i));
    }
}

TEST(WaveSpectrum, BinsBeyondTheAxesReadZero) {
    const RecordPtr record = recordWithSpectra();
    const SpectraPtr block = spectraOf(*record);
    for (int i = kBins; i < ov::kMaxFreq; ++i) {
        ASSERT_EQ(block->energySpectrum[i], 0.0F) << i;
        ASSERT_EQ(block->secondSpectrum[i], 0.0F) << i;
        ASSERT_EQ(block->direction[i], 0.0F) << i;
        ASSERT_EQ(block->spread[i], 0.0F) << i;
        ASSERT_EQ(block->coefP[i], 0.0F) << i;
        ASSERT_EQ(block->coefQ[i], 0.0F) << i;
        ASSERT_EQ(block->coefR[i], 0.0F) << i;
        ASSERT_EQ(block->coefS[i], 0.0F) << i;
        ASSERT_EQ(block->bandValue[i], 0.0F) << i;
        ASSERT_EQ(beamPlace(*block, i, 2), 0.0F) << i;
    }
    for (int i = kFineBins; i < ov::kMaxFreqFine; ++i) {
        ASSERT_EQ(block->fineSpectrum[i], 0.0F) << i;
    }
}

TEST(WaveSpectrum, PlacesOfUnusedBeamsStayTheHosts) {
    const RecordPtr record = recordWithSpectra();
    for (const int beams : {-1, 0, 1, 3, 4}) {
        record->velocitySeriesCount = beams;
        const SpectraPtr block = spectraOf(*record);
        for (int bin = 0; bin < ov::kMaxFreq; ++bin) {
            for (int place = 0; place < 4; ++place) {
                if (place >= beams) {
                    ASSERT_EQ(block->binInfo[bin][place], 0x55555555U)
                        << beams << ' ' << bin << ' ' << place;
                } else {
                    ASSERT_NE(block->binInfo[bin][place], 0x55555555U)
                        << beams << ' ' << bin << ' ' << place;
                }
            }
        }
    }
}

// Four places a bin: a fifth and sixth value run on into the next bin, which then writes its own over them.
TEST(WaveSpectrum, MoreThanFourBeamsRunOnIntoTheNextBin) {
    const RecordPtr record = recordWithSpectra();
    for (const int beams : {5, 6, 100}) {
        record->velocitySeriesCount = beams;
        record->nFrequencies = kBins;
        const SpectraPtr block = spectraOf(*record);
        const int extra = std::min(beams, 6) - 4;
        for (int bin = 0; bin < kBins; ++bin) {
            EXPECT_EQ(beamPlace(*block, bin, 0), 10.0F * static_cast<float>(bin) + 1.0F);
            EXPECT_EQ(beamPlace(*block, bin, 3), 10.0F * static_cast<float>(bin) + 4.0F);
        }
        for (int place = 0; place < extra; ++place) { // of the last bin
            EXPECT_EQ(beamPlace(*block, kBins, place),
                      10.0F * (kBins - 1) + static_cast<float>(place) + 5.0F);
        }
        EXPECT_EQ(beamPlace(*block, kBins, extra), 0.0F);
    }
    // On a full axis the last bin has no next one; the field behind the table is the velocity spectrum.
    record->nFrequencies = ov::kMaxFreq;
    const SpectraPtr block = spectraOf(*record);
    EXPECT_EQ(beamPlace(*block, 199, 3), 10.0F * 199.0F + 4.0F);
    EXPECT_EQ(block->secondSpectrum[0], 2000.0F);
}

TEST(WaveSpectrum, KindTellsOfAUsableTrack) {
    const RecordPtr record = recordWithSpectra();
    record->surfaceTrackValid = 1;
    EXPECT_EQ(spectraOf(*record)->spectrumKind, 15);
    record->surfaceTrackValid = 0;
    EXPECT_EQ(spectraOf(*record)->spectrumKind, 11);
}

TEST(WaveSpectrum, BeyondTheAliasingLimitDirectionsAreSeenOnce) {
    const RecordPtr record = recordWithSpectra();
    record->lastValidFreqIndex = 5;
    const SpectraPtr first = spectraOf(*record);
    const SpectraPtr second = spectraOf(*record);
    for (int i = 0; i < kBins; ++i) {
        const auto bin = static_cast<float>(i);
        const bool valid = i < 5;
        EXPECT_EQ(first->coefP[i], valid ? -(6000.0F + bin) : kMissing) << i;
        EXPECT_EQ(first->coefQ[i], valid ? -(5000.0F + bin) : kMissing) << i;
        EXPECT_EQ(first->coefR[i], valid ? -(7000.0F + bin) : kMissing) << i;
        EXPECT_EQ(first->coefS[i], valid ? 8000.0F + bin : kMissing) << i;
        EXPECT_EQ(first->bandValue[i], valid ? static_cast<float>(0.1 + i) : kMissing) << i;
        EXPECT_EQ(first->direction[i], 3000.0F + bin) << i;
        EXPECT_EQ(first->spread[i], 4000.0F + bin) << i;
        EXPECT_EQ(first->energySpectrum[i], 1000.0F + bin) << i;
        EXPECT_EQ(second->direction[i], valid ? 3000.0F + bin : kMissing) << i;
        EXPECT_EQ(second->spread[i], valid ? 4000.0F + bin : kMissing) << i;
        EXPECT_EQ(record->meanDirection[i], second->direction[i]) << i;
    }
    EXPECT_EQ(record->meanDirection[kBins], 3000.0F + kBins); // beyond the axis nothing is written
    EXPECT_EQ(record->fourierA1[6], 5006.0F);                 // the coefficients in the record stay
}

TEST(WaveSpectrum, TrackOnlyHostsSeeNoDirectionWithoutATrack) {
    const RecordPtr record = recordWithSpectra();
    record->directionalInputMode = 3;
    record->surfaceTrackValid = 0;
    const SpectraPtr block = spectraOf(*record);
    for (int i = 0; i < kBins; ++i) {
        const auto bin = static_cast<float>(i);
        EXPECT_EQ(block->energySpectrum[i], 1000.0F + bin);
        EXPECT_EQ(block->secondSpectrum[i], 2000.0F + bin);
        for (const float value :
             {block->direction[i], block->spread[i], block->coefP[i], block->coefQ[i],
              block->coefR[i], block->coefS[i], block->bandValue[i]}) {
            EXPECT_EQ(value, kMissing) << i;
        }
    }
    EXPECT_EQ(block->direction[kBins], 0.0F);
    EXPECT_EQ(block->fineSpectrum[0], kMissing);
    EXPECT_EQ(block->fineSpectrum[kFineBins - 1], kMissing);
    EXPECT_EQ(block->fineSpectrum[kFineBins], 0.0F);
}

TEST(WaveSpectrum, AHostOfMethod1GetsEveryBinWhateverTheLimits) {
    const RecordPtr record = recordWithSpectra();
    record->processingMethod = 1;
    record->activeMethod = 3; // what ran does not count
    record->directionalInputMode = 3;
    record->surfaceTrackValid = 0;
    record->lastValidFreqIndex = 5;
    const SpectraPtr block = spectraOf(*record);
    for (int i = 0; i < kBins; ++i) {
        const auto bin = static_cast<float>(i);
        EXPECT_EQ(block->coefP[i], -(6000.0F + bin)) << i;
        EXPECT_EQ(block->coefQ[i], -(5000.0F + bin)) << i;
        EXPECT_EQ(block->coefR[i], -(7000.0F + bin)) << i;
        EXPECT_EQ(block->coefS[i], 8000.0F + bin) << i;
        // Read again from the record, where the bins past the limit have just become missing.
        EXPECT_EQ(block->direction[i], i < 5 ? 3000.0F + bin : kMissing) << i;
        EXPECT_EQ(block->spread[i], i < 5 ? 4000.0F + bin : kMissing) << i;
        EXPECT_EQ(block->bandValue[i], kMissing) << i; // not copied again
    }
}

TEST(WaveSpectrum, MethodsThatFellBackTo1AreNotMethod1) {
    const RecordPtr record = recordWithSpectra();
    record->processingMethod = 2;
    record->activeMethod = 1;
    record->lastValidFreqIndex = 0;
    EXPECT_EQ(spectraOf(*record)->coefP[0], kMissing);
}

TEST(WaveSpectrum, AnEmptyAxisGivesZeros) {
    const RecordPtr record = recordWithSpectra();
    record->nFrequencies = -10;
    record->nFrequenciesFine = -2147483647;
    const SpectraPtr block = spectraOf(*record);
    EXPECT_EQ(block->count, -10);
    EXPECT_EQ(block->fineCount, -2147483647);
    EXPECT_EQ(block->energySpectrum[0], 0.0F);
    EXPECT_EQ(block->fineSpectrum[0], 0.0F);
}

// ---- The spectrum behind the parameters

TEST(EnergySpectrum, HasTheMainAxisCountAndNoMoreValuesThanThat) {
    const RecordPtr record = makeRecord();
    for (int i = 0; i < ov::kMaxFreqFine; ++i) {
        record->spectraUsed[i] = static_cast<float>(i) + 0.5F;
    }
    for (const int count : {-3, 0, 1, 47, 200}) {
        record->nFrequencies = count;
        OVEnergySpectrumBlock block;
        std::memset(&block, 0x55, sizeof block);
        ov::getEnergySpectrum(*record, block);
        EXPECT_EQ(block.count, count);
        for (int i = 0; i < ov::kMaxFreq; ++i) {
            const float value = block.values[i];
            if (i < count) {
                ASSERT_EQ(value, static_cast<float>(i) + 0.5F);
            } else {
                ASSERT_EQ(std::bit_cast<std::uint32_t>(value), 0x55555555U) << count << ' ' << i;
            }
        }
    }
}

struct ScaledCase {
    RecordPtr record = makeRecord();
    OVScaledEnergySpectrum out;

    ScaledCase(int count, int fineCount) {
        record->nFrequencies = count;
        record->nFrequenciesFine = fineCount;
        std::memset(&out, 0x55, sizeof out);
    }
    void run() { ov::getScaledEnergySpectrum(*record, out); }
};

TEST(ScaledEnergySpectrum, TheLargestValueBecomes65535) {
    ScaledCase scaled(4, 6);
    const float energies[] = {0.25F, 2.0F, 1.0F, 0.0F};
    std::copy(std::begin(energies), std::end(energies), scaled.record->spectraUsed);
    scaled.run();
    EXPECT_EQ(scaled.out.scaleMax, 20000U);
    EXPECT_EQ(scaled.out.values[0], 8191); // 8191.875, truncated
    EXPECT_EQ(scaled.out.values[1], 65535);
    EXPECT_EQ(scaled.out.values[2], 32767); // 32767.5, truncated
    EXPECT_EQ(scaled.out.values[3], 0);
}

TEST(ScaledEnergySpectrum, ClearsTheFineAxisAndNoMore) {
    ScaledCase scaled(2, 6);
    scaled.record->spectraUsed[0] = 1.0F;
    scaled.record->spectraUsed[4] = 50.0F; // beyond the main axis
    scaled.run();
    EXPECT_EQ(scaled.out.values[0], 65535);
    for (int i = 1; i < 6; ++i) {
        EXPECT_EQ(scaled.out.values[i], 0) << i;
    }
    EXPECT_EQ(scaled.out.values[6], 0x5555);
    EXPECT_EQ(scaled.out.scaleMax, 10000U);
}

TEST(ScaledEnergySpectrum, TheSurfaceTracksSpectrumHasTheFineAxis) {
    ScaledCase scaled(2, 6);
    scaled.record->spectrumSource = OV_SOURCE_SURFACE_TRACK;
    scaled.record->spectraUsed[0] = 1.0F;
    scaled.record->spectraUsed[5] = 2.0F;
    scaled.run();
    EXPECT_EQ(scaled.out.values[0], 32767);
    EXPECT_EQ(scaled.out.values[5], 65535);
    EXPECT_EQ(scaled.out.scaleMax, 20000U);
}

TEST(ScaledEnergySpectrum, WithoutEnergyEveryValueIsZero) {
    for (const float energy : {0.0F, -0.0F, -1.0F}) {
        ScaledCase scaled(4, 4);
        std::fill_n(scaled.record->spectraUsed, 4, energy);
        scaled.run();
        EXPECT_EQ(scaled.out.scaleMax, 0U);
        for (int i = 0; i < 4; ++i) {
            EXPECT_EQ(scaled.out.values[i], 0) << energy;
        }
    }
}

TEST(ScaledEnergySpectrum, AValueThatIsNoNumberIsZeroAndHidesNoOther) {
    ScaledCase scaled(3, 3);
    scaled.record->spectraUsed[0] = std::numeric_limits<float>::quiet_NaN();
    scaled.record->spectraUsed[1] = 2.0F;
    scaled.record->spectraUsed[2] = 1.0F;
    scaled.run();
    EXPECT_EQ(scaled.out.values[0], 0);
    EXPECT_EQ(scaled.out.values[1], 65535);
    EXPECT_EQ(scaled.out.values[2], 32767);
}

// The low 16 bits of the truncated value: a small negative energy among positive ones wraps.
TEST(ScaledEnergySpectrum, ANegativeEnergyKeepsTheLow16Bits) {
    ScaledCase scaled(2, 2);
    scaled.record->spectraUsed[0] = 1.0F;
    scaled.record->spectraUsed[1] = -0.5F;
    scaled.run();
    EXPECT_EQ(scaled.out.values[1], static_cast<std::uint16_t>(-32767));
}

TEST(ScaledEnergySpectrum, OfAKindIsTheSpectrumOfThatName) {
    ScaledCase scaled(2, 3);
    scaled.record->spectrumPrs[0] = 1.0F;
    scaled.record->spectrumVel[0] = 2.0F;
    scaled.record->bandSpectrumFine[2] = 3.0F;
    scaled.record->spectraUsed[0] = 4.0F;
    struct Row {
        std::int32_t kind;
        std::uint32_t scaleMax;
        int peak;
    };
    constexpr Row kRows[] = {{0, 10000, 0}, {1, 20000, 0},  {3, 30000, 2},
                             {2, 40000, 0}, {-1, 40000, 0}, {4, 40000, 0}};
    for (const Row &row : kRows) {
        ov::getScaledSpectrumOfKind(*scaled.record, row.kind, scaled.out);
        EXPECT_EQ(scaled.out.scaleMax, row.scaleMax) << row.kind;
        for (int i = 0; i < 3; ++i) {
            EXPECT_EQ(scaled.out.values[i], i == row.peak ? 65535 : 0) << row.kind << ' ' << i;
        }
    }
}

// ---- Mean current

TEST(MeanCurrent, ComponentsOrSpeedAndDirection) {
    const RecordPtr record = makeRecord();
    record->meanVelocity[0] = 0.1F;
    record->meanVelocity[1] = 0.2F;
    record->meanVelocity[2] = 0.3F;
    record->meanVelocity[3] = 0.4F;
    record->meanCurrentSpeed = 0.5F;
    record->meanCurrentDirection = 1.57079637F; // a quarter turn
    float values[3] = {7.0F, 7.0F, 7.0F};
    EXPECT_TRUE(ov::getMeanCurrent(*record, 0, values));
    EXPECT_EQ(values[0], 0.1F);
    EXPECT_EQ(values[1], 0.2F);
    EXPECT_EQ(values[2], 0.3F);
    EXPECT_TRUE(ov::getMeanCurrent(*record, 1, values));
    EXPECT_EQ(values[0], 0.5F);
    EXPECT_EQ(values[1], 90.0F);
    EXPECT_EQ(values[2], 0.0F);
}

TEST(MeanCurrent, OtherSelectorsWriteNothing) {
    const RecordPtr record = makeRecord();
    record->meanCurrentSpeed = 0.5F;
    for (const std::int32_t selector : {2, -1, 3, 256, -2147483647 - 1}) {
        float values[3] = {7.0F, 8.0F, 9.0F};
        EXPECT_FALSE(ov::getMeanCurrent(*record, selector, values));
        EXPECT_EQ(values[0], 7.0F);
        EXPECT_EQ(values[1], 8.0F);
        EXPECT_EQ(values[2], 9.0F);
    }
}

} // namespace
