// Who owns a record, who borrows it, what a const one allows, and what is left without one.
#include <concepts>
#include <type_traits>

#include "allocation_counter.hpp"
#include "exports/current_record.hpp"
#include "face/both_sides.hpp"

namespace {

using namespace orvik::test;

// ---- Ownership

static_assert(std::is_nothrow_move_constructible_v<Record>);
static_assert(std::is_nothrow_move_assignable_v<Record>);
static_assert(!std::is_copy_constructible_v<Record> && !std::is_copy_assignable_v<Record>);
static_assert(std::is_trivially_copyable_v<RecordRef> && sizeof(RecordRef) == sizeof(void *));
static_assert(sizeof(Record) == sizeof(void *));

TEST(FaceRecords, ANewOneIsZeroedAndLeavesTheCurrentOneAlone) {
    OVRecord *const before = ov::currentRecord;
    const Record record;
    ASSERT_TRUE(record);
    EXPECT_EQ(ov::currentRecord, before);
    ASSERT_EQ(record.bytes().size(), OV_RECORD_BYTES);
    EXPECT_EQ(record.bytes().size(), recordBytes());
    for (const std::size_t place : {std::size_t{0}, record.bytes().size() - 1}) {
        EXPECT_EQ(record.bytes()[place], std::byte{0});
    }
}

TEST(FaceRecords, MovingHandsTheRecordOver) {
    Record first;
    OVRecord *const address = first.get();
    Record second(std::move(first));
    EXPECT_EQ(second.get(), address);
    EXPECT_FALSE(first); // NOLINT(bugprone-use-after-move): what is left is defined
    EXPECT_EQ(first.get(), nullptr);
    Record third;
    third = std::move(second);
    EXPECT_EQ(third.get(), address);
}

TEST(FaceRecords, AssignmentFromItselfKeepsTheRecord) {
    Record record;
    OVRecord *const address = record.get();
    Record &same = record;
    record = std::move(same);
    EXPECT_EQ(record.get(), address);
}

TEST(FaceRecords, TheCurrentRecordOnRequest) {
    OVRecord *const before = ov::currentRecord;
    Record record;
    record.makeCurrent();
    EXPECT_EQ(ov::currentRecord, record.get());
    VELTASetWaveVariablesPointer(before);
}

// ---- Borrowing

std::uint16_t openThroughAParameter(RecordRef record) { return record.openBurst({.samples = 300}); }

TEST(FaceRecords, ABorrowerWorksOnTheSameRecord) {
    Record record;
    RecordRef borrowed = record;
    EXPECT_EQ(borrowed.get(), record.get());
    EXPECT_EQ(openThroughAParameter(record), 300);
    RecordRef second = borrowed;
    second = RecordRef(nullptr);
    EXPECT_FALSE(second);
    EXPECT_TRUE(borrowed);
    RecordRef raw(static_cast<void *>(record.get()));
    EXPECT_EQ(raw.get(), record.get());
}

TEST(FaceRecords, BytesGoOnAsARecordElsewhere) {
    const SyntheticBurst burst = makeSyntheticBurst({.method = 3, .nSamples = 512});
    Record record;
    CleanedBurst cleaned;
    openBurst(record.get(), burst);
    record.add(faceSamples(burst));
    ASSERT_TRUE(record.preProcess(cleaned));
    Record copy;
    const std::span<const std::byte> from = std::as_const(record).bytes();
    std::copy(from.begin(), from.end(), copy.bytes().begin());
    ASSERT_TRUE(record.process());
    ASSERT_TRUE(copy.process());
    EXPECT_EQ(bytesOf(copy.waveParameters()), bytesOf(record.waveParameters()));
    EXPECT_GT(copy.waveParameters().significantHeight, 0.5F);
}

// ---- Const

template <class R>
concept Changes = requires(R &record, CleanedBurst &cleaned, Spectra &spectra, Distribution &rows) {
    record.configure(InstrumentConfig{});
    record.process();
    record.preProcess(cleaned);
    record.readSpectra(spectra);
    record.entropyDistribution(rows);
    record.add(Sample{});
};
template <class R>
concept CanConfigure = requires(R &record) {
    record.configure(InstrumentConfig{});
};
template <class R>
concept CanProcess = requires(R &record) {
    record.process();
};
template <class R>
concept CanReadSpectra = requires(R &record, Spectra &spectra) {
    record.readSpectra(spectra);
};
template <class R>
concept CanDrawEntropy = requires(R &record, Distribution &rows) {
    record.entropyDistribution(rows);
};
template <class R>
concept CanMakeCurrent = requires(R &record) {
    record.makeCurrent();
};
template <class R>
concept Reads = requires(R &record, Distribution &rows) {
    record.waveParameters();
    record.energySpectrum();
    record.copyEnergySpectrum();
    record.scaledSpectrum();
    record.currentVector();
    record.current();
    record.bandEstimate(0.1F, 0.2F);
    record.energyDistribution(rows);
    { record.get() } -> std::same_as<const OVRecord *>;
    { record.bytes() } -> std::same_as<std::span<const std::byte>>;
};

static_assert(Changes<Record> && Changes<RecordRef>);
static_assert(Reads<const Record> && Reads<const RecordRef>);
static_assert(!CanConfigure<const Record> && !CanProcess<const Record>);
static_assert(!CanReadSpectra<const Record> && !CanDrawEntropy<const Record>); // both change it
static_assert(!CanMakeCurrent<const Record>);
static_assert(!std::is_constructible_v<RecordRef, const Record &>); // no way round
static_assert(!std::is_constructible_v<RecordRef, Record>);         // nor to one that is gone
static_assert(std::is_convertible_v<Record &, RecordRef>);

// ---- Without a record

class NoRecord : public testing::TestWithParam<bool> {
protected:
    void SetUp() override {
        Record taken = std::move(gone_);
        ASSERT_TRUE(taken);
        ASSERT_FALSE(gone_);
    }
    AnyRecord &none() { return GetParam() ? static_cast<AnyRecord &>(gone_) : null_; }

private:
    Record gone_;
    RecordRef null_{nullptr};
};

TEST_P(NoRecord, CallsThatChangeItSayFalse) {
    CleanedBurst cleaned;
    CleanedSeries series;
    Spectra spectra;
    const auto rows = std::make_unique<Distribution>();
    const std::array<Sample, 2> samples{};
    const std::array<SuvSample, 2> suvSamples{};
    std::array<ProfileSample, 2> profiles{};
    EXPECT_FALSE(none().configure(InstrumentConfig{}));
    EXPECT_FALSE(none().configureProfile(ProfileInstrumentConfig{}));
    EXPECT_EQ(none().openBurst(BurstHeader{.samples = 512}), 0);
    EXPECT_EQ(none().openProfileBurst(ProfileBurstHeader{.samples = 512}), 0);
    EXPECT_FALSE(none().add(samples[0]));
    EXPECT_FALSE(none().add(samples));
    EXPECT_FALSE(none().add(suvSamples[0]));
    EXPECT_FALSE(none().add(suvSamples));
    EXPECT_FALSE(none().addProfile(profiles[0]));
    EXPECT_FALSE(none().addProfile(profiles));
    EXPECT_FALSE(none().preProcess(cleaned));
    EXPECT_FALSE(none().preProcess(series));
    EXPECT_FALSE(none().preProcessProfile(cleaned));
    EXPECT_FALSE(none().process());
    EXPECT_FALSE(none().readSpectra(spectra));
    EXPECT_FALSE(none().energyDistribution(*rows));
    EXPECT_FALSE(none().entropyDistribution(*rows));
    EXPECT_FALSE(none().setSpectrumUsed(std::array{1.0F}));
}

TEST_P(NoRecord, ResultsAreMissing) {
    std::array<FourierCoefficients, 2> bins{{{1, 0, 1, 0}, {1, 0, 1, 0}}};
    std::array<DirectionAndSpread, 2> out{};
    EXPECT_FALSE(none().setFourierCoefficients(bins, out));
    EXPECT_TRUE(isMissing(out[0].direction));
    EXPECT_FALSE(none().directionsOf(bins, out));
    EXPECT_TRUE(isMissing(out[0].direction));
    EXPECT_EQ(none().setProcessing({.freqMax = 7.0F}).freqMax, 7.0F);
    EXPECT_EQ(bytesOf(none().waveParameters()), bytesOf(WaveParameters{}));
    EXPECT_TRUE(none().energySpectrum().empty());
    EXPECT_EQ(none().copyEnergySpectrum().count, 0);
    EXPECT_EQ(none().scaledSpectrum().scaleMax, 0U);
    EXPECT_TRUE(isMissing(none().currentVector().east));
    EXPECT_TRUE(isMissing(none().current().speed));
    EXPECT_FALSE(none().bandEstimate(0.1F, 0.2F).has_value());
    EXPECT_TRUE(none().bytes().empty());
    EXPECT_EQ(none().get(), nullptr);
}

INSTANTIATE_TEST_SUITE_P(MovedFromOrNull, NoRecord, testing::Bool());

// ---- The library

TEST(FaceLibrary, Version) { EXPECT_EQ(version(), "4.15"); }

TEST(FaceLibrary, NothingIsAllocatedForABurst) {
    const SyntheticBurst burst = makeSyntheticBurst({.method = 4, .nSamples = 512});
    const std::vector<Sample> samples = faceSamples(burst);
    const auto rows = std::make_unique<Distribution>();
    Record record;
    CleanedBurst cleaned;
    Spectra spectra;
    const AllocationCounter counter;
    record.configure(faceConfig(burst.config));
    record.setProcessing(faceParameters(burst.parameters));
    record.openBurst(faceHeader(burst.header));
    record.add(samples);
    const bool results = record.preProcess(cleaned) && record.process();
    const WaveParameters waves = record.waveParameters();
    record.readSpectra(spectra);
    record.entropyDistribution(*rows);
    const std::optional<BandEstimate> band = record.bandEstimate(0.05F, 0.2F);
    EXPECT_EQ(counter.count(), 0U);
    EXPECT_TRUE(results);
    EXPECT_TRUE(band.has_value());
    EXPECT_GT(waves.significantHeight, 0.5F);
}

} // namespace
