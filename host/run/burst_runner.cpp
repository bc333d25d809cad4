#include "run/burst_runner.hpp"

#include <algorithm>
#include <cmath>
#include <numeric>

#include <fmt/format.h>

#include "run/completion.hpp"
#include "run/point_front_end.hpp"
#include "run/profile_as_point.hpp"
#include "run/profile_front_end.hpp"
#include "run/track_rate.hpp"
#include "run/unmeasured.hpp"
#include "user_error.hpp"

namespace orvik {

namespace {

using orvikbase::DirectionalInput;
using orvikbase::QualityFlag;

constexpr std::int32_t kTrackFlags = OV_FLAG_NO_TRACK | OV_FLAG_TRACK_RANGE;

DirectionalInput wantedInput(const ProcessingChoices &choices) {
    return static_cast<DirectionalInput>(
        choices.directionalInputMode.value_or(usesTrack(choices.method) ? 2 : 0));
}

// Whether likelihood methods get their bursts by way of a point instrument: profile_as_point.hpp says why.
bool goesAsPoint(const Instrument &instrument, int method) {
    return instrument.profile && instrument.beams == 3 && !usesEarthVelocities(method);
}

std::unique_ptr<FrontEnd> makeFrontEnd(const Instrument &instrument, int method) {
    if (instrument.profile) {
        return std::make_unique<ProfileFrontEnd>(instrument);
    }
    return std::make_unique<PointFrontEnd>(instrument, method);
}

std::string rateNote(const Instrument &told) {
    return fmt::format("sampled at {:g} Hz: taken at 2 Hz with a surface track", told.samplingRate);
}

// Upper limit of an axis that holds the bin at `limit`. Limits are single-precision numbers: rounded, one in five of whole
// hundredths of a hertz falls a little short of its bin, which would be lost.
float upperLimit(double from, double limit, double step) {
    constexpr double kOnBin = 1e-3; // of a step
    const double bin = std::round((limit - from) / step);
    auto reached = static_cast<float>(limit);
    if (std::abs((limit - from) / step - bin) > kOnBin) {
        return reached; // between two bins
    }
    const double lowest = static_cast<float>(from);
    const double width = static_cast<float>(step);
    while ((static_cast<double>(reached) - lowest) / width < bin) {
        reached = std::nextafter(reached, HUGE_VALF);
    }
    return reached;
}

orvikbase::ProcessingParameters libraryParameters(const Instrument &instrument,
                                                  const ProcessingChoices &choices,
                                                  const FrontEnd &frontEnd) {
    orvikbase::ProcessingParameters parameters;
    parameters.method = static_cast<orvikbase::Method>(choices.method);
    parameters.freqMin = static_cast<float>(choices.freqMin);
    parameters.freqMax = upperLimit(choices.freqMin, choices.freqMax, choices.freqStep);
    parameters.fineFreqMin = static_cast<float>(choices.fineFreqMin);
    parameters.fineFreqMax = upperLimit(choices.fineFreqMin, choices.fineFreqMax, choices.freqStep);
    parameters.freqStep = static_cast<float>(choices.freqStep);
    parameters.levelOffset = static_cast<float>(instrument.pressureHeight);
    parameters.headingOffset = static_cast<float>(instrument.declination);
    parameters.dirBandWidth = choices.dirBandWidth;
    parameters.specBandWidth = choices.specBandWidth;
    parameters.directionalInput = wantedInput(choices);
    parameters.estimateMask = frontEnd.estimateMask(usesTrack(choices.method));
    parameters.directions = choices.nDirections;
    parameters.troughMargin = static_cast<float>(choices.troughMargin);
    // Going-to directions are turned here afterwards: the library projects the current on the waves as if directions
    // always said where they come from.
    parameters.comingFrom = true;
    return parameters;
}

float opposite(float degrees) {
    if (degrees == orvikbase::kMissing) {
        return degrees;
    }
    return degrees < 180.0F ? degrees + 180.0F : degrees - 180.0F;
}

// The coefficients keep their sense, which does not depend on that of directions.
void turnAround(BurstResult &result) {
    result.waves.peakDirection = opposite(result.waves.peakDirection);
    result.waves.meanDirection = opposite(result.waves.meanDirection);
    OVFourierCoefficientSpectra &spectra = *result.spectra.get();
    for (std::size_t f = 0; f < result.energy.size(); ++f) {
        spectra.direction[f] = opposite(spectra.direction[f]);
    }
}

} // namespace

bool needsAttitude(const Instrument &instrument, int method, VelocitySystem system) {
    const bool asTheyAre = system == VelocitySystem::enu && usesEarthVelocities(method);
    // The beams of a profile instrument are placed by its tilt, whatever its velocities.
    return system != VelocitySystem::none && (!asTheyAre || instrument.profile);
}

bool needsBeams(const Instrument &instrument, int method, VelocitySystem system) {
    return system == VelocitySystem::beam ||
           (system != VelocitySystem::none && (!usesEarthVelocities(method) || instrument.profile));
}

struct BurstRunner::Impl {
    Impl(const Instrument &theInstrument, const ProcessingChoices &theChoices);

    void setParameters(int method, bool withTrack);
    void note(const Burst &burst, BurstResult &result, std::size_t used) const;
    [[nodiscard]] bool fellBackToPressure(const BurstResult &result) const;
    void process(BurstResult &result);
    void processAgain(BurstResult &result);
    void clean(const Burst &burst, BurstResult &result) const;
    void collect(BurstResult &result);
    void collectDistribution(BurstResult &result);
    BurstResult runWhole(const Burst &burst);
    BurstResult runAnyWay(const Burst &burst);
    BurstResult runHere(const Burst &burst, std::vector<std::uint8_t> present, std::string reason);
    BurstResult runAsPoint(const Burst &burst, const std::vector<std::uint8_t> &present);

    const Instrument told;
    Instrument instrument; // as it is used
    ProcessingChoices choices;
    std::unique_ptr<FrontEnd> frontEnd;
    orvikbase::ProcessingParameters asked;      // of the library for the burst at hand
    orvikbase::ProcessingParameters parameters; // in use: what the library made of them
    orvikbase::Record record;
    orvikbase::CleanedBurst cleaned;
};

BurstRunner::Impl::Impl(const Instrument &theInstrument, const ProcessingChoices &theChoices)
    : told(theInstrument),
      instrument(isFasterThanTrack(theInstrument, theChoices.method) ? atTrackRate(theInstrument)
                                                                     : theInstrument),
      choices(theChoices), frontEnd(makeFrontEnd(instrument, theChoices.method)) {
    if (choices.method < 1 || choices.method > 4) {
        throw UsageError("--method must be 1, 2, 3 or 4");
    }
    setParameters(choices.method, usesTrack(choices.method));
}

void BurstRunner::Impl::setParameters(int method, bool withTrack) {
    frontEnd->configure(record);
    asked = libraryParameters(instrument, choices, *frontEnd);
    asked.method = static_cast<orvikbase::Method>(method);
    asked.estimateMask = frontEnd->estimateMask(withTrack);
    parameters = record.setProcessing(asked);
}

void BurstRunner::Impl::note(const Burst &burst, BurstResult &result, std::size_t used) const {
    if (used < burst.pressure.size()) {
        result.notes.push_back("only the first " + std::to_string(used) + " of " +
                               std::to_string(burst.pressure.size()) +
                               " samples of a burst are used");
    }
    if (burst.velocitySystem == VelocitySystem::none) {
        result.notes.emplace_back("no velocities: no directions and no current");
    }
    if (usesTrack(choices.method) && burst.surfaceTrack.empty()) {
        result.notes.push_back("no surface track: processed as method " +
                               std::to_string(choices.method - 1));
    }
    if (result.processed && fellBackToPressure(result)) {
        result.notes.emplace_back(
            "the velocity cell is too near to the bed or too deep to tell heights: the spectrum "
            "is that from pressure");
    }
    if (const auto unmeasured = noteOnUnmeasuredHeight(result)) {
        result.notes.push_back(*unmeasured);
    }
    const bool upwards = std::abs(std::remainder(burst.roll + instrument.rollOffset, 360.0)) < 90.0;
    const double cell = static_cast<double>(result.waves.cellVerticalRange);
    if (result.processed && (upwards || !std::isfinite(burst.roll)) &&
        cell > static_cast<double>(result.waves.instrumentDepth)) {
        result.notes.push_back(
            fmt::format("the velocity cell, {:.1f} m above the head, is out of the water: correct "
                        "cell_range",
                        cell));
    }
}

// The spectrum was to come from velocity, or from what is best, and could not.
bool BurstRunner::Impl::fellBackToPressure(const BurstResult &result) const {
    return wantedInput(choices) != DirectionalInput::pressure &&
           result.parameters.directionalInput == DirectionalInput::pressure;
}

void BurstRunner::Impl::collect(BurstResult &result) {
    result.waves = record.waveParameters();
    record.readSpectra(result.spectra);
    if (!result.processed) {
        return;
    }
    const auto energy = record.energySpectrum();
    result.energy.assign(energy.begin(), energy.end());
    collectDistribution(result);
    if (!choices.comingFrom) {
        turnAround(result);
    }
}

void BurstRunner::Impl::collectDistribution(BurstResult &result) {
    if (!choices.comingFrom) {
        // The library draws the distribution anew, in the sense that is then in force. What it made of the limits is
        // never given to it again: it would round them once more, and the axes could lose a bin.
        orvikbase::ProcessingParameters other = asked;
        other.comingFrom = false;
        record.setProcessing(other);
    }
    const auto weights = std::make_unique<orvikbase::Distribution>();
    for (auto &row : weights->rows) {
        row.fill(orvikbase::kMissing);
    }
    record.entropyDistribution(*weights);
    const auto directions = static_cast<std::size_t>(
        std::clamp<std::int32_t>(parameters.directions, 0, orvikbase::kMaxDirections));
    for (std::size_t f = 0; f < result.energy.size(); ++f) {
        const std::span<const float> row(weights->rows[f].data(), directions);
        const float sum = std::accumulate(row.begin(), row.end(), 0.0F);
        for (const float weight : row) {
            // Bins sample a distribution that may be narrower than they are: without the division energy would be lost.
            result.directionWeights.push_back(sum > 0.0F ? weight / sum : orvikbase::kMissing);
        }
    }
}

void BurstRunner::Impl::processAgain(BurstResult &result) {
    const std::int32_t trackFlags = result.waves.qualityFlags & kTrackFlags;
    parameters = record.setProcessing(asked);
    result.processed = record.process();
    result.directionWeights.clear();
    collect(result);
    result.waves.qualityFlags |= trackFlags;
    result.parameters = parameters;
}

// A surface track that turns out unusable leaves an empty series in the maximum likelihood estimate, which moves heights
// by several percent. Such a burst is processed once more as if it never had a track. Heights never rest on a velocity
// spectrum of which nothing was measured: pressure then is what there is.
void BurstRunner::Impl::process(BurstResult &result) {
    result.processed = record.process();
    collect(result);
    if (result.processed && usesTrack(choices.method) &&
        (result.waves.qualityFlags & kTrackFlags) != 0) {
        asked.method = static_cast<orvikbase::Method>(choices.method - 1);
        asked.estimateMask = frontEnd->estimateMask(false);
        processAgain(result);
    }
    if (heightsRestOnTail(result)) {
        asked.directionalInput = DirectionalInput::pressure;
        processAgain(result);
    }
}

void BurstRunner::Impl::clean(const Burst &burst, BurstResult &result) const {
    if (burst.velocitySystem == VelocitySystem::none) {
        removeDirections(result);
    }
    removeUnmeasuredVelocity(result);
    judgeTiltOfDownwardHead(burst.pitch, burst.roll + instrument.rollOffset, result);
}

BurstResult BurstRunner::Impl::runHere(const Burst &burst, std::vector<std::uint8_t> present,
                                       std::string reason) {
    BurstResult result;
    result.reason = std::move(reason);
    if (!result.reason.empty()) {
        // Nothing of such a burst can be used: the library then answers with its markers for missing results.
        std::fill(present.begin(), present.end(), std::uint8_t{0});
    }
    setParameters(choices.method, usesTrack(choices.method));
    result.parameters = parameters;
    const SentBurst sent = frontEnd->send(record, burst, present, cleaned);
    process(result);
    clean(burst, result);
    note(burst, result, sent.samples);
    if (!result.processed && result.reason.empty()) {
        result.reason = sent.accepted ? "no results" : "more than 10 % of the samples are missing";
    }
    if (result.processed && burst.velocitySystem != VelocitySystem::none) {
        const orvikbase::Current current = record.current();
        result.currentSpeed = static_cast<double>(current.speed);
        result.currentDirection = static_cast<double>(current.direction);
    }
    return result;
}

BurstResult BurstRunner::Impl::runAsPoint(const Burst &burst,
                                          const std::vector<std::uint8_t> &present) {
    setParameters(4,
                  usesTrack(choices.method)); // the method that cleans surface track and pressure
    const SentBurst sent = frontEnd->send(record, burst, present, cleaned);
    if (!sent.accepted) {
        return runHere(burst, present, "more than 10 % of the samples are missing");
    }
    const double cellHeight = static_cast<double>(cleaned.cellVerticalRange());
    ProcessingChoices pointChoices = choices;
    pointChoices.fineFreqMax =
        static_cast<double>(parameters.fineFreqMax); // half the track's rate, not twice
    const Instrument asPoint = asPointInstrument(instrument, cellHeight);
    BurstRunner point(asPoint, pointChoices);
    BurstResult result = point.run(asPointBurst(instrument, burst, cleaned));
    result.notes.clear();
    note(burst, result, sent.samples);
    if (isFasterThanTrack(asPoint, choices.method)) {
        result.notes.push_back(rateNote(instrument));
    }
    const double cell = (cellHeight - instrument.profile->blanking) / instrument.cellSize;
    result.waves.selectedCell = static_cast<std::int32_t>(std::lround(cell));
    setParameters(choices.method, usesTrack(choices.method));
    return result;
}

BurstRunner::BurstRunner(const Instrument &instrument, const ProcessingChoices &choices)
    : impl_(std::make_unique<Impl>(instrument, choices)) {}

BurstRunner::~BurstRunner() = default;

const orvikbase::ProcessingParameters &BurstRunner::parameters() const { return impl_->parameters; }

std::vector<double> BurstRunner::frequencies() const {
    std::vector<double> axis;
    const std::size_t bins = impl_->record.energySpectrum().size();
    for (std::size_t i = 0; i < bins; ++i) {
        axis.push_back(impl_->parameters.frequency(i));
    }
    return axis;
}

std::vector<double> BurstRunner::fineFrequencies() const {
    orvikbase::Spectra spectra;
    impl_->record.readSpectra(spectra);
    std::vector<double> axis;
    for (std::size_t i = 0; i < spectra.fineCount(); ++i) {
        axis.push_back(impl_->parameters.fineFrequency(i));
    }
    return axis;
}

BurstResult BurstRunner::run(const Burst &burst) {
    Impl &impl = *impl_;
    if (burst.velocitySystem == VelocitySystem::none && !usesEarthVelocities(impl.choices.method)) {
        throw UserError("the bursts have no velocities: use --method 1, or 2 with a surface track");
    }
    if (burst.pressure.empty()) {
        throw UserError("a burst has no pressure");
    }
    if (!isFasterThanTrack(impl.told, impl.choices.method)) {
        return impl.runWhole(burst);
    }
    BurstResult result = impl.runWhole(atTrackRate(impl.told, burst, presentSamples(burst)));
    result.notes.push_back(rateNote(impl.told));
    return result;
}

// A burst that ends just short of a power of two is completed first.
BurstResult BurstRunner::Impl::runWhole(const Burst &burst) {
    const std::vector<std::uint8_t> present = presentSamples(burst);
    const std::size_t samples = present.size();
    const auto missing = static_cast<std::size_t>(std::count(present.begin(), present.end(), 0));
    const std::size_t length = completedLength(samples, missing);
    if (length == samples) {
        return runAnyWay(burst);
    }
    BurstResult result = runAnyWay(completed(burst, present, length));
    if (result.processed) {
        result.notes.push_back(
            fmt::format("bursts of {} samples are made {} long with {} more from within them",
                        samples, length, length - samples));
    }
    return result;
}

BurstResult BurstRunner::Impl::runAnyWay(const Burst &burst) {
    std::string reason;
    const bool oriented =
        std::isfinite(burst.heading) && std::isfinite(burst.pitch) && std::isfinite(burst.roll);
    if (!oriented && needsAttitude(instrument, choices.method, burst.velocitySystem)) {
        reason = "heading, pitch or roll is missing";
    } else if (instrument.profile) {
        reason = whyUnusable(burst).value_or("");
    }
    std::vector<std::uint8_t> present = presentSamples(burst);
    if (reason.empty() && goesAsPoint(instrument, choices.method)) {
        return runAsPoint(burst, present);
    }
    return runHere(burst, std::move(present), std::move(reason));
}

} // namespace orvik
