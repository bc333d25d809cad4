#include "run/burst_runner.hpp"

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <limits>
#include <new>
#include <numeric>

#include "burst/geometry.hpp"
#include "run/beam_timing.hpp"
#include "run/wave_header_counts.hpp"
#include "user_error.hpp"

namespace orvik {

namespace {

constexpr double kMatrixOne = 4096.0; // an entry of 1 in the library's integer matrix
constexpr double kSlowRate = 0.75;    // [Hz] rate code 0
constexpr double kSlowFrequency = 400000.0;
constexpr int kBeams = 7;          // estimate mask: three slanted beams
constexpr int kBeamsAndTrack = 15; // and the surface track of the vertical beam
constexpr int kProfileType = 16;

using Velocities = std::array<std::vector<float>, 3>;

bool usesTrack(int method) { return method == 2 || method == 4; }
bool usesEarthVelocities(int method) { return method <= 2; }

std::int32_t rateCode(const Instrument &instrument) {
    const double rate = instrument.samplingRate;
    if (rate == kSlowRate && instrument.acousticFrequency == kSlowFrequency) {
        return 0;
    }
    if (!(rate >= 1.0) || rate != std::floor(rate) || rate > 1000.0) {
        throw UserError(
            "sampling_rate " + std::to_string(rate) +
            " Hz cannot be processed: it must be a whole number of Hz, or 0.75 Hz at 400 kHz");
    }
    return static_cast<std::int32_t>(rate);
}

std::int16_t cellCounts(const Instrument &instrument) {
    const double metresPerCount =
        instrument.instrumentType == 1 ? 0.002 : 750.0 / (instrument.acousticFrequency * 0.0625);
    const double counts = std::round(instrument.cellSize / metresPerCount);
    return static_cast<std::int16_t>(std::clamp(counts, 1.0, 32767.0));
}

OVInstrumentConfig configuration(const Instrument &instrument, const Matrix3 &beamToXyz,
                                 int method) {
    if (instrument.instrumentType == kProfileType) {
        throw UserError("instrument_type 16 is a profile instrument: bursts of whole profiles "
                        "cannot be processed");
    }
    OVInstrumentConfig config{};
    config.attitudeMode = usesEarthVelocities(method) ? OV_VELOCITY_ENU : OV_VELOCITY_BEAM;
    config.pingsPerSample = instrument.pingsPerSample;
    config.samplingRate = rateCode(instrument);
    config.acousticFrequency = static_cast<float>(instrument.acousticFrequency);
    config.slantAngle = static_cast<float>(instrument.slantAngle);
    config.instrumentType = instrument.instrumentType;
    config.cellSizeCounts = cellCounts(instrument);
    for (std::size_t i = 0; i < beamToXyz.size(); ++i) {
        const double entry = std::round(beamToXyz[i] * kMatrixOne);
        if (!(std::abs(entry) <= 32767.0)) {
            throw UserError(
                "beam_to_xyz has an entry of 8 or more: the beams stand too close to one plane");
        }
        config.transformMatrix[i] = static_cast<std::int16_t>(entry);
    }
    return config;
}

OVProcessingParameters libraryParameters(const Instrument &instrument,
                                         const ProcessingChoices &choices) {
    OVProcessingParameters parameters{};
    parameters.processingMethod = choices.method;
    parameters.freqMin = static_cast<float>(choices.freqMin);
    parameters.freqMax = static_cast<float>(choices.freqMax);
    parameters.fineFreqMin = static_cast<float>(choices.fineFreqMin);
    parameters.fineFreqMax = static_cast<float>(choices.fineFreqMax);
    parameters.freqStep = static_cast<float>(choices.freqStep);
    parameters.levelOffset = static_cast<float>(instrument.pressureHeight);
    parameters.headingOffset = static_cast<float>(instrument.declination);
    parameters.dirBandWidth = choices.dirBandWidth;
    parameters.specBandWidth = choices.specBandWidth;
    parameters.directionalInputMode =
        choices.directionalInputMode.value_or(usesTrack(choices.method) ? 2 : 0);
    parameters.estimateMask = usesTrack(choices.method) ? kBeamsAndTrack : kBeams;
    parameters.nDirections = choices.nDirections;
    // Going-to directions are turned here afterwards: the library projects the current on the waves as if directions
    // always said where they come from.
    parameters.reverseDirections = 1;
    return parameters;
}

// A sample lacks something when it is marked so, or when its pressure or one of its velocities is not there.
std::vector<std::uint8_t> presentSamples(const Burst &burst) {
    std::vector<std::uint8_t> present(burst.pressure.size(), 1);
    for (std::size_t i = 0; i < present.size(); ++i) {
        bool complete =
            (burst.valid.empty() || burst.valid.at(i) != 0) && std::isfinite(burst.pressure[i]);
        for (const std::vector<float> &series : burst.velocity) {
            complete = complete && (series.empty() || std::isfinite(series.at(i)));
        }
        present[i] = complete ? 1 : 0;
    }
    return present;
}

Velocities withGaps(const Velocities &velocity, const std::vector<std::uint8_t> &present) {
    Velocities marked = velocity;
    for (std::vector<float> &series : marked) {
        for (std::size_t i = 0; i < series.size(); ++i) {
            if (present[i] == 0) {
                series[i] = std::numeric_limits<float>::quiet_NaN();
            }
        }
    }
    return marked;
}

Velocities turned(const Velocities &velocity, const Matrix3 &matrix) {
    Velocities result = velocity;
    for (std::size_t i = 0; i < velocity[0].size(); ++i) {
        const Vector3 vector =
            product(matrix, Vector3{velocity[0][i], velocity[1][i], velocity[2][i]});
        for (std::size_t axis = 0; axis < 3; ++axis) {
            result[axis][i] = static_cast<float>(vector[axis]);
        }
    }
    return result;
}

// Samples that the header announces. A burst just short of a power of two is announced as that and completed by the
// library; any other longer one loses what is beyond the power of two below.
std::uint16_t announcedSamples(std::size_t samples, std::size_t missing) {
    std::size_t power = 1;
    while (power < samples && power < OV_MAX_SAMPLES) {
        power *= 2;
    }
    const bool completes =
        samples > 512 && power > samples && power - samples + missing <= power / 10;
    return static_cast<std::uint16_t>(completes ? power
                                                : std::min<std::size_t>(samples, OV_MAX_SAMPLES));
}

float opposite(float degrees) {
    if (degrees == OV_MISSING) {
        return degrees;
    }
    return degrees < 180.0F ? degrees + 180.0F : degrees - 180.0F;
}

// The coefficients keep their sense, which does not depend on that of directions.
void turnAround(BurstResult &result) {
    for (const OVWaveParameter slot : {OV_PEAK_DIRECTION, OV_MEAN_DIRECTION}) {
        result.waves.waveParameters[slot] = opposite(result.waves.waveParameters[slot]);
    }
    for (std::size_t f = 0; f < result.energy.size(); ++f) {
        result.spectra.direction[f] = opposite(result.spectra.direction[f]);
    }
}

float knownOr0(double angle) { return std::isfinite(angle) ? static_cast<float>(angle) : 0.0F; }

// A lost echo: the library takes 0 for a miss and repairs it.
float distanceOr0(float distance) { return std::isfinite(distance) ? distance : 0.0F; }

} // namespace

bool needsAttitude(int method, VelocitySystem system) {
    return system != VelocitySystem::none &&
           !(system == VelocitySystem::enu && usesEarthVelocities(method));
}

bool needsBeams(int method, VelocitySystem system) {
    return system == VelocitySystem::beam ||
           (system != VelocitySystem::none && !usesEarthVelocities(method));
}

struct BurstRunner::Impl {
    Impl(const Instrument &theInstrument, const ProcessingChoices &theChoices);

    void open(const Burst &burst, std::size_t missing, BurstResult &result);
    void note(const Burst &burst, BurstResult &result) const;
    [[nodiscard]] Velocities velocities(const Burst &burst) const;
    void send(const Burst &burst, const Velocities &velocity,
              const std::vector<std::uint8_t> &present);
    void process(BurstResult &result);
    void collect(BurstResult &result);
    void collectDistribution(BurstResult &result);
    void collectCurrent(BurstResult &result);

    Instrument instrument;
    ProcessingChoices choices;
    Matrix3 beamToXyz;
    Matrix3 xyzToBeam{};
    OVInstrumentConfig config;
    HeaderCounts counts;
    OVProcessingParameters parameters{};
    std::unique_ptr<OVRecord, decltype(&std::free)> record;
    std::unique_ptr<OVPreProcessOutput> prepared = std::make_unique<OVPreProcessOutput>();
    std::size_t used = 0; // samples of the burst in hand
};

// Zeroed memory is a valid record, and what a burst does not touch of it never takes up room.
BurstRunner::Impl::Impl(const Instrument &theInstrument, const ProcessingChoices &theChoices)
    : instrument(theInstrument), choices(theChoices), beamToXyz(beamToXyzMatrix(theInstrument)),
      config(configuration(theInstrument, beamToXyz, theChoices.method)),
      counts(countsOfCellRange(
          config, std::isfinite(theInstrument.cellRange) ? theInstrument.cellRange : 0.0)),
      record(static_cast<OVRecord *>(std::calloc(1, VELTAGetWaveVariableNbytes())), &std::free) {
    if (record == nullptr) {
        throw std::bad_alloc();
    }
    if (!invert(beamToXyz, xyzToBeam)) {
        throw UserError("beam_to_xyz has no inverse: the beams lie in one plane");
    }
    if (choices.method < 1 || choices.method > 4) {
        throw UsageError("--method must be 1, 2, 3 or 4");
    }
    parameters = libraryParameters(instrument, choices);
    OVSetInstrumentConfig_ptr(record.get(), &config);
    OVSetProcPar_ptr(record.get(), &parameters);
}

void BurstRunner::Impl::open(const Burst &burst, std::size_t missing, BurstResult &result) {
    OVWaveHeader header{};
    header.nSamples = announcedSamples(burst.pressure.size(), missing);
    header.pressureCounts = counts.pressureCounts;
    header.distanceCounts = counts.distanceCounts;
    header.heading = knownOr0(burst.heading);
    header.pitch = knownOr0(burst.pitch);
    header.roll = knownOr0(burst.roll);
    parameters = libraryParameters(instrument, choices);
    OVSetInstrumentConfig_ptr(record.get(), &config);
    OVSetProcPar_ptr(record.get(), &parameters);
    OVSetWaveHeader_ptr(record.get(), &header);
    used = header.nSamples;
    result.parameters = parameters;
}

void BurstRunner::Impl::note(const Burst &burst, BurstResult &result) const {
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
}

// In the system that the method takes.
Velocities BurstRunner::Impl::velocities(const Burst &burst) const {
    if (burst.velocitySystem == VelocitySystem::none) {
        Velocities still;
        still.fill(std::vector<float>(burst.pressure.size(), 0.0F));
        return still;
    }
    const bool earth = usesEarthVelocities(choices.method);
    if (burst.velocitySystem == (earth ? VelocitySystem::enu : VelocitySystem::beam)) {
        return burst.velocity;
    }
    const Matrix3 xyzToEnu = xyzToEnuMatrix(burst.heading, burst.pitch, burst.roll);
    if (earth && burst.velocitySystem == VelocitySystem::beam) {
        return earthFromBeams(withGaps(burst.velocity, presentSamples(burst)),
                              product(xyzToEnu, beamToXyz), instrument.samplingRate);
    }
    if (earth) {
        return turned(burst.velocity, xyzToEnu);
    }
    if (burst.velocitySystem == VelocitySystem::xyz) {
        return turned(burst.velocity, xyzToBeam);
    }
    Matrix3 enuToXyz{};
    invert(xyzToEnu, enuToXyz); // a rotation
    return turned(burst.velocity, product(xyzToBeam, enuToXyz));
}

void BurstRunner::Impl::send(const Burst &burst, const Velocities &velocity,
                             const std::vector<std::uint8_t> &present) {
    const std::size_t count = std::min(used, burst.pressure.size());
    for (std::size_t i = 0; i < count; ++i) {
        OVWaveSample sample{};
        sample.valid = present[i];
        sample.pressure = burst.pressure[i];
        for (std::size_t j = 0; j < 3; ++j) {
            sample.velocity[j] = velocity[j][i];
            sample.amplitude[j] =
                burst.amplitude[j].empty() ? kUnknownAmplitude : burst.amplitude[j].at(i);
        }
        sample.amplitude[3] = kUnknownAmplitude;
        if (!burst.surfaceTrack.empty()) {
            sample.astDistance1 = distanceOr0(burst.surfaceTrack.at(2 * i));
            sample.astDistance2 = distanceOr0(burst.surfaceTrack.at(2 * i + 1));
        }
        OVSetWaveSample_ptr(record.get(), &sample);
    }
}

void BurstRunner::Impl::collect(BurstResult &result) {
    OVGetWavePar_ptr(record.get(), &result.waves);
    OVGetWaveSpectrum_ptr(record.get(), &result.spectra);
    if (!result.processed) {
        return;
    }
    OVEnergySpectrumBlock energy{};
    OVGetEnergySpecStruct_ptr(record.get(), &energy);
    const std::int32_t count =
        energy.count; // a copy: fields of packed structures may lie at any address
    result.energy.resize(static_cast<std::size_t>(std::clamp(count, 0, OV_MAX_FREQUENCIES)));
    for (std::size_t f = 0; f < result.energy.size(); ++f) {
        result.energy[f] = energy.values[f];
    }
    collectDistribution(result);
    if (!choices.comingFrom) {
        turnAround(result);
    }
}

void BurstRunner::Impl::collectDistribution(BurstResult &result) {
    if (!choices.comingFrom) {
        // The library draws the distribution anew, in the sense that is then in force.
        OVProcessingParameters other = parameters;
        other.reverseDirections = 0;
        OVSetProcPar_ptr(record.get(), &other);
    }
    std::vector<float> weights(static_cast<std::size_t>(OV_MAX_FREQUENCIES) * OV_MAX_DIRECTIONS,
                               OV_MISSING);
    OVGetFullWaveDirSpectrum_ptr(record.get(), weights.data());
    const std::int32_t wanted = parameters.nDirections;
    const auto directions = static_cast<std::ptrdiff_t>(std::clamp(wanted, 0, OV_MAX_DIRECTIONS));
    for (std::size_t f = 0; f < result.energy.size(); ++f) {
        const auto row = weights.begin() + static_cast<std::ptrdiff_t>(f * OV_MAX_DIRECTIONS);
        const float sum = std::accumulate(row, row + directions, 0.0F);
        for (auto weight = row; weight != row + directions; ++weight) {
            // Bins sample a distribution that may be narrower than they are: without the division energy would be lost.
            result.directionWeights.push_back(sum > 0.0F ? *weight / sum : OV_MISSING);
        }
    }
}

void BurstRunner::Impl::collectCurrent(BurstResult &result) {
    OVMeanCurrentQuery current{};
    current.selector = 1;
    OVGetMeanBurstCurrent_ptr(record.get(), &current);
    result.currentSpeed = static_cast<double>(current.valueA);
    result.currentDirection = static_cast<double>(current.valueB);
}

// A surface track that turns out unusable leaves an empty series in the maximum likelihood estimate, which moves heights
// by several percent. Such a burst is processed once more as if it never had a track.
void BurstRunner::Impl::process(BurstResult &result) {
    result.processed = OVProcess_ptr(record.get());
    collect(result);
    const std::int32_t trackFlags =
        result.waves.qualityFlags & (OV_FLAG_NO_TRACK | OV_FLAG_TRACK_RANGE);
    if (!result.processed || !usesTrack(choices.method) || trackFlags == 0) {
        return;
    }
    parameters.processingMethod = choices.method - 1;
    parameters.estimateMask = kBeams;
    OVSetProcPar_ptr(record.get(), &parameters);
    result.processed = OVProcess_ptr(record.get());
    result.directionWeights.clear();
    collect(result);
    result.waves.qualityFlags |= trackFlags;
    result.parameters = parameters;
}

BurstRunner::BurstRunner(const Instrument &instrument, const ProcessingChoices &choices)
    : impl_(std::make_unique<Impl>(instrument, choices)) {}

BurstRunner::~BurstRunner() = default;

const OVProcessingParameters &BurstRunner::parameters() const { return impl_->parameters; }

std::vector<double> BurstRunner::frequencies() const {
    std::int32_t count = 0;
    OVGetEnergySpec_ptr(impl_->record.get(), nullptr, &count);
    std::vector<double> axis;
    for (std::int32_t i = 0; i < count; ++i) {
        axis.push_back(static_cast<double>(impl_->parameters.freqMin) +
                       i * static_cast<double>(impl_->parameters.freqStep));
    }
    return axis;
}

std::vector<double> BurstRunner::fineFrequencies() const {
    OVFourierCoefficientSpectra spectra{};
    OVGetWaveSpectrum_ptr(impl_->record.get(), &spectra);
    std::vector<double> axis;
    for (std::int32_t i = 0; i < spectra.fineCount; ++i) {
        axis.push_back(static_cast<double>(impl_->parameters.fineFreqMin) +
                       i * static_cast<double>(impl_->parameters.freqStep));
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
    BurstResult result;
    std::vector<std::uint8_t> present = presentSamples(burst);
    const bool oriented =
        std::isfinite(burst.heading) && std::isfinite(burst.pitch) && std::isfinite(burst.roll);
    if (!oriented && needsAttitude(impl.choices.method, burst.velocitySystem)) {
        // Nothing of such a burst can be used: the library then answers with its markers for missing results.
        std::fill(present.begin(), present.end(), std::uint8_t{0});
        result.reason = "heading, pitch or roll is missing";
    }
    const auto missing = static_cast<std::size_t>(std::count(present.begin(), present.end(), 0));
    impl.open(burst, missing, result);
    impl.note(burst, result);
    impl.send(burst, impl.velocities(burst), present);
    OVPreProcess_ptr(impl.record.get(), 0, impl.prepared.get());
    impl.process(result);
    if (!result.processed && result.reason.empty()) {
        result.reason =
            impl.prepared->done == 0 ? "more than 10 % of the samples are missing" : "no results";
    }
    if (result.processed && burst.velocitySystem != VelocitySystem::none) {
        impl.collectCurrent(result);
    }
    return result;
}

} // namespace orvik
