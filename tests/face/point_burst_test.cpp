// A point instrument's burst: the face leaves the bytes in the record that the C interface leaves, and shows what it
// shows.
#include "face/both_sides.hpp"

namespace {

using namespace orvik::test;

class PointBurst : public BothSides, public testing::WithParamInterface<int> {
protected:
    static SyntheticBurst burst(bool faulty = false) {
        return makeSyntheticBurst(
            {.method = GetParam(), .nSamples = 1024, .tilted = true, .faulty = faulty});
    }
};

TEST_P(PointBurst, EveryStepLeavesTheSameRecord) {
    const SyntheticBurst burst = PointBurst::burst(true);
    OVInstrumentConfig config = burst.config;
    OVSetInstrumentConfig_ptr(c(), &config);
    EXPECT_TRUE(face.configure(faceConfig(burst.config)));
    expectSameRecords("configuration");

    OVProcessingParameters parameters = burst.parameters;
    parameters.freqMax = 7.0F; // is clamped
    const ProcessingParameters asked = faceParameters(parameters);
    OVSetProcPar_ptr(c(), &parameters);
    const ProcessingParameters inUse = face.setProcessing(asked);
    EXPECT_EQ(bytesOf(orvikbase::detail::packed(inUse)), bytesOf(parameters));
    EXPECT_LT(inUse.freqMax, 1.0F);
    expectSameRecords("parameters");

    OVWaveHeader header = burst.header;
    header.nSamples = 1100; // is rounded down
    const BurstHeader faceHead = faceHeader(header);
    OVSetWaveHeader_ptr(c(), &header);
    EXPECT_EQ(face.openBurst(faceHead), 1024);
    expectSameRecords("header");

    sendSamples(c(), burst);
    const std::vector<Sample> samples = faceSamples(burst);
    EXPECT_TRUE(face.add(std::span(samples).first(500)));
    for (std::size_t i = 500; i < samples.size(); ++i) {
        EXPECT_TRUE(face.add(samples[i]));
    }
    expectSameRecords("samples");

    const auto output = std::make_unique<OVPreProcessOutput>();
    OVPreProcess_ptr(c(), 0, output.get());
    EXPECT_TRUE(face.preProcess(cleaned));
    EXPECT_EQ(bytesOf(*output), bytesOf(*cleaned.get()));
    expectSameRecords("pre-processing");

    EXPECT_TRUE(OVProcess_ptr(c()));
    EXPECT_TRUE(face.process());
    expectSameRecords("processing");
}

TEST_P(PointBurst, ResultsAreThoseOfTheGetters) {
    processPointBurst(burst());
    OVWaveParameterSet waves;
    OVGetWavePar_ptr(c(), &waves);
    EXPECT_EQ(bytesOf(face.waveParameters()), bytesOf(waves));

    OVEnergySpectrumBlock energy{};
    OVGetEnergySpecStruct_ptr(c(), &energy);
    EXPECT_EQ(bytesOf(face.copyEnergySpectrum()), bytesOf(energy));
    const std::span<const float> view = face.energySpectrum();
    ASSERT_EQ(view.size(), static_cast<std::size_t>(energy.count));
    EXPECT_EQ(std::memcmp(view.data(), &energy.values, view.size_bytes()), 0);

    OVScaledEnergySpectrum scaled{};
    OVGetScaledEnergySpec_ptr(c(), &scaled);
    EXPECT_EQ(bytesOf(face.scaledSpectrum()), bytesOf(scaled));
    for (const SpectrumKind kind :
         {SpectrumKind::pressure, SpectrumKind::velocity, SpectrumKind::surfaceTrack}) {
        OVScaledEnergySpectrum ofKind{};
        OVGetScaledEnergySpecAllType_ptr(c(), static_cast<std::int32_t>(kind), &ofKind);
        EXPECT_EQ(bytesOf(face.scaledSpectrum(kind)), bytesOf(ofKind));
    }

    OVMeanCurrentQuery query{};
    OVGetMeanBurstCurrent_ptr(c(), &query);
    EXPECT_EQ(face.currentVector().east, copyOf(query.valueA));
    EXPECT_EQ(face.currentVector().north, copyOf(query.valueB));
    EXPECT_EQ(face.currentVector().up, copyOf(query.valueC));
    query.selector = 1;
    OVGetMeanBurstCurrent_ptr(c(), &query);
    EXPECT_EQ(face.current().speed, copyOf(query.valueA));
    EXPECT_EQ(face.current().direction, copyOf(query.valueB));
    expectSameRecords("getters");
}

TEST_P(PointBurst, SpectraAreThoseOfTheGetterTheFirstTimeAndTheSecond) {
    processPointBurst(burst());
    const auto block = std::make_unique<OVFourierCoefficientSpectra>();
    Spectra spectra;
    for (int time = 1; time <= 2; ++time) {
        OVGetWaveSpectrum_ptr(c(), block.get());
        EXPECT_TRUE(face.readSpectra(spectra));
        EXPECT_EQ(bytesOf(*spectra.get()), bytesOf(*block)) << "time " << time;
        expectSameRecords("spectra");
    }
    ASSERT_EQ(spectra.count(), static_cast<std::size_t>(copyOf(block->count)));
    ASSERT_EQ(spectra.fineCount(), static_cast<std::size_t>(copyOf(block->fineCount)));
    EXPECT_EQ(spectra.hasTrack(), copyOf(block->spectrumKind) == 15);
    for (std::size_t i = 0; i < spectra.count(); ++i) {
        EXPECT_EQ(spectra.pressureEnergy()[i], copyOf(block->energySpectrum[i]));
        EXPECT_EQ(spectra.velocityEnergy()[i], copyOf(block->secondSpectrum[i]));
        EXPECT_EQ(spectra.direction()[i], copyOf(block->direction[i]));
        EXPECT_EQ(spectra.spread()[i], copyOf(block->spread[i]));
        EXPECT_EQ(spectra.checkRatio()[i], copyOf(block->bandValue[i]));
        for (std::size_t beam = 0; beam < 4; ++beam) {
            EXPECT_EQ(std::bit_cast<std::uint32_t>(spectra.beamEnergy(i, beam)),
                      copyOf(block->binInfo[i][beam]));
        }
    }
    for (std::size_t i = 0; i < spectra.fineCount(); ++i) {
        EXPECT_EQ(spectra.trackEnergy()[i], copyOf(block->fineSpectrum[i]));
    }
}

TEST_P(PointBurst, BandsAndDistributionsAreThoseOfTheGetters) {
    processPointBurst(burst());
    OVBandEstimate band{};
    band.fLow = 0.05F;
    band.fHigh = 0.2F;
    ASSERT_EQ(OVGetBandEst_ptr(c(), &band), 0);
    const std::optional<BandEstimate> estimate = face.bandEstimate(0.05F, 0.2F);
    ASSERT_TRUE(estimate.has_value());
    EXPECT_EQ(estimate->lowFrequency, copyOf(band.fLow));
    EXPECT_EQ(estimate->highFrequency, copyOf(band.fHigh));
    EXPECT_EQ(estimate->significantHeight, copyOf(band.bandHm0));
    EXPECT_EQ(estimate->meanPeriod, copyOf(band.bandTm02));
    EXPECT_EQ(estimate->peakDirection, copyOf(band.bandPeakDirection));
    EXPECT_EQ(estimate->meanDirection, copyOf(band.bandMeanDirection));
    EXPECT_EQ(estimate->peakSpread, copyOf(band.bandPeakSpread));
    EXPECT_EQ(estimate->meanSpread, copyOf(band.bandMeanSpread));
    EXPECT_EQ(static_cast<int>(estimate->spectrumSource), copyOf(band.bandSpectrumSource));

    const auto cRows = std::make_unique<Distribution>();
    const auto rows = std::make_unique<Distribution>();
    OVGetFullDirSpectraWithEnergy_ptr(c(), cRows->rows[0].data());
    EXPECT_TRUE(face.energyDistribution(*rows));
    EXPECT_EQ(bytesOf(*rows), bytesOf(*cRows));
    OVGetFullWaveDirSpectrum_ptr(c(), cRows->rows[0].data());
    EXPECT_TRUE(face.entropyDistribution(*rows));
    EXPECT_EQ(bytesOf(*rows), bytesOf(*cRows));
    expectSameRecords("distributions");
}

TEST_P(PointBurst, TheSuvFormTakesItsChannelsAndGivesTrackAndPressure) {
    const SyntheticBurst burst = PointBurst::burst(true);
    openBurst(c(), burst);
    openBurst(face.get(), burst);
    std::vector<SuvSample> samples;
    for (const OVWaveSample &point : burst.samples) {
        OVWaveSampleSUV sample{};
        sample.valid = point.valid;
        sample.suvChannel1 = 1.0F + static_cast<float>(samples.size());
        sample.suvChannel2 = -2.0F - static_cast<float>(samples.size());
        std::memcpy(&sample.pressure, &point.pressure, sizeof point - 1);
        samples.push_back({faceSample(point), sample.suvChannel1, sample.suvChannel2});
        OVSetWaveSampleSUV_ptr(c(), &sample);
    }
    EXPECT_TRUE(face.add(samples.front()));
    EXPECT_TRUE(face.add(std::span(samples).subspan(1)));
    expectSameRecords("samples");
    const auto output = std::make_unique<OVPreProcessOutputSUV>();
    output->windowBelow = 3.0F;
    output->windowAbove = 4.0F;
    output->useWindow = 1;
    OVPreProcessSUV_ptr(c(), 0, output.get());
    CleanedSeries series;
    EXPECT_TRUE(
        face.preProcess(series, {.useWindow = true, .windowBelow = 3.0F, .windowAbove = 4.0F}));
    EXPECT_EQ(bytesOf(*series.get()), bytesOf(*output));
    EXPECT_EQ(series.trackUsable(), copyOf(output->astValidOut) != 0);
    for (std::size_t i = 0; i < kMaxTrackSamples; ++i) {
        ASSERT_EQ(series.track(i), copyOf(output->astOut[i]));
        ASSERT_EQ(series.pressure(i), copyOf(output->pressureOut[i]));
    }
    expectSameRecords("pre-processing");
}

INSTANTIATE_TEST_SUITE_P(Methods, PointBurst, testing::Values(1, 2, 3, 4));

// ---- Pre-processing's options and output

class Cleaning : public BothSides {};

TEST_F(Cleaning, RowsAreThoseOfThePackedOutput) {
    processPointBurst(makeSyntheticBurst({.method = 4, .nSamples = 512}));
    for (std::size_t i = 0; i < 1024; ++i) {
        const OVPreProcessRow &row = cleaned.get()->rows[i];
        ASSERT_EQ(bytesOf(cleaned.row(i)), bytesOf(row));
        ASSERT_EQ(cleaned.track(i), copyOf(row.astOut));
        ASSERT_EQ(cleaned.pressure(i), copyOf(row.pressureOut));
        ASSERT_GT(cleaned.pressure(i), 5.0F);
    }
    EXPECT_TRUE(cleaned.trackUsable());
}

TEST_F(Cleaning, OptionsReachTheLibrary) {
    for (const bool skip : {false, true}) {
        const SyntheticBurst burst =
            makeSyntheticBurst({.method = 4, .nSamples = 512, .faulty = true});
        sendPointBurst(burst);
        const auto output = std::make_unique<OVPreProcessOutput>();
        output->windowBelow = 1.0F;
        output->windowAbove = 0.5F;
        output->useWindow = 1;
        output->skipAstCleaning = skip ? 1 : 0;
        OVPreProcess_ptr(c(), 0, output.get());
        const TrackOptions options{
            .useWindow = true, .windowBelow = 1.0F, .windowAbove = 0.5F, .skipCleaning = skip};
        CleanedBurst fresh;
        EXPECT_TRUE(face.preProcess(fresh, options));
        EXPECT_EQ(bytesOf(*fresh.get()), bytesOf(*output)) << "skip " << skip;
        expectSameRecords("options");
    }
}

// The library leaves the track's flag alone when it rejects a burst or cleans no track: an earlier one must not show.
TEST_F(Cleaning, ARejectedBurstSaysSoAndForgetsTheOneBefore) {
    processPointBurst(makeSyntheticBurst({.method = 4, .nSamples = 512}));
    EXPECT_TRUE(cleaned.accepted());
    EXPECT_TRUE(cleaned.trackUsable());
    face.openBurst({.samples = 512});
    face.add(Sample{});
    EXPECT_FALSE(face.preProcess(cleaned));
    EXPECT_FALSE(cleaned.accepted());
    EXPECT_FALSE(cleaned.trackUsable());
    EXPECT_FALSE(face.process());
    EXPECT_TRUE(face.waveParameters().has(QualityFlag::noResult));
    EXPECT_TRUE(isMissing(face.waveParameters().significantHeight));
    EXPECT_TRUE(isMissing(face.waveParameters().checkedHeight)); // an integer's pattern
    EXPECT_FALSE(face.bandEstimate(0.05F, 0.2F).has_value());
}

} // namespace
