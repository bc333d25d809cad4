#include "run/profile_front_end.hpp"

#include <algorithm>
#include <cmath>
#include <limits>

#include <fmt/format.h>

#include "burst/profile_geometry.hpp"
#include "user_error.hpp"

namespace orvik {

namespace {

constexpr double kTenthsOfMilliseconds = 10000.0;
constexpr std::uint8_t kUnknownCorrelation = 100;
constexpr double kNoiseCorrelation =
    30.0; // [percent] noise correlates with itself by some 15 to 20
constexpr double kSteadyHeading =
    10.0; // [degrees] a frame on the bed keeps its heading within a few

orvikbase::VelocitySystem librarySystem(VelocitySystem system) {
    switch (system) {
    case VelocitySystem::xyz:
        return orvikbase::VelocitySystem::xyz;
    case VelocitySystem::enu:
        return orvikbase::VelocitySystem::enu;
    default:
        return orvikbase::VelocitySystem::beam;
    }
}

// Three beams have no fourth one to tell. Whatever is told there moves the library's beam directions of methods 3 and 4,
// least when it stands opposite beam 2.
std::vector<double> fourAzimuths(const Instrument &instrument) {
    std::vector<double> azimuths = beamAzimuths(instrument);
    if (azimuths.size() == 3) {
        azimuths.push_back(std::fmod(azimuths[1] + 180.0, 360.0));
    }
    return azimuths;
}

// Turns one sample's cells after the other into the library's integers.
class ProfilePacker {
public:
    explicit ProfilePacker(const Profile &profile)
        : profile_(profile), velocity_(profile.beams * profile.cells),
          correlation_(velocity_.size()),
          amplitude_(velocity_.size(), static_cast<std::uint8_t>(kUnknownAmplitude)) {}

    void pack(std::size_t i, orvikbase::ProfileSample &sample) {
        const std::size_t first = profile_.at(i, 0, 0);
        for (std::size_t at = 0; at < velocity_.size(); ++at) {
            packCell(first + at, at);
        }
        for (std::size_t b = 0; b < profile_.beams; ++b) {
            const std::size_t from = b * profile_.cells;
            sample.setBeam(b, std::span(velocity_).subspan(from, profile_.cells),
                           std::span(amplitude_).subspan(from, profile_.cells),
                           std::span(correlation_).subspan(from, profile_.cells));
        }
    }

private:
    // A missing velocity becomes 0 at correlation 0, which speaks against its cell.
    void packCell(std::size_t from, std::size_t to) {
        constexpr double kMost = std::numeric_limits<std::int16_t>::max();
        const double millimetres =
            std::round(static_cast<double>(profile_.velocity[from]) * 1000.0);
        const bool told = std::isfinite(millimetres);
        velocity_[to] = told ? static_cast<std::int16_t>(std::clamp(millimetres, -kMost, kMost))
                             : std::int16_t{0};
        const std::uint8_t correlation =
            profile_.correlation.empty() ? kUnknownCorrelation : profile_.correlation[from];
        correlation_[to] = told ? correlation : std::uint8_t{0};
        if (!profile_.amplitude.empty()) {
            amplitude_[to] = profile_.amplitude[from];
        }
    }

    const Profile &profile_;
    std::vector<std::int16_t> velocity_;
    std::vector<std::uint8_t> correlation_;
    std::vector<std::uint8_t> amplitude_;
};

float attitudeAt(const std::vector<float> &series, double ofBurst, std::size_t i) {
    return series.empty() || !std::isfinite(series[i]) ? knownOr0(ofBurst) : series[i];
}

// Standard deviation of angles [degrees] about their mean direction.
double angularDeviation(const std::vector<float> &angles) {
    double east = 0.0;
    double north = 0.0;
    std::size_t count = 0;
    for (const float angle : angles) {
        if (std::isfinite(angle)) {
            east += std::sin(static_cast<double>(angle) * kRadiansPerDegree);
            north += std::cos(static_cast<double>(angle) * kRadiansPerDegree);
            ++count;
        }
    }
    const double length = count > 0 ? std::hypot(east, north) / static_cast<double>(count) : 1.0;
    return std::sqrt(std::max(0.0, 2.0 * (1.0 - length))) / kRadiansPerDegree;
}

// Of each cell the mean over the burst of the weakest beam's correlation; the best cell's.
double bestCorrelation(const Profile &profile) {
    std::vector<double> sums(profile.cells, 0.0);
    const std::size_t samples = profile.correlation.size() / (profile.beams * profile.cells);
    for (std::size_t i = 0; i < samples; ++i) {
        for (std::size_t c = 0; c < profile.cells; ++c) {
            std::uint8_t weakest = profile.correlation[profile.at(i, 0, c)];
            for (std::size_t b = 1; b < profile.beams; ++b) {
                weakest = std::min(weakest, profile.correlation[profile.at(i, b, c)]);
            }
            sums[c] += weakest;
        }
    }
    return *std::max_element(sums.begin(), sums.end()) / static_cast<double>(samples);
}

} // namespace

std::optional<std::string> whyUnusable(const Burst &burst) {
    const double deviation = angularDeviation(burst.attitude[0]);
    if (deviation > kSteadyHeading) {
        return fmt::format("the head does not stand still: its heading varies by {:.0f} degrees",
                           deviation);
    }
    if (burst.profile && !burst.profile->correlation.empty()) {
        const double best = bestCorrelation(*burst.profile);
        if (best < kNoiseCorrelation) {
            return fmt::format(
                "no echoes from the water: the best cell's correlation is {:.0f} percent", best);
        }
    }
    return std::nullopt;
}

ProfileFrontEnd::ProfileFrontEnd(const Instrument &instrument) : instrument_(instrument) {
    const ProfileFacts &profile = *instrument.profile;
    const double offset = std::round(profile.trackTimeOffset * kTenthsOfMilliseconds);
    if (!(std::abs(offset) <= 32767.0)) {
        throw UserError(fmt::format(
            "surface_track_time_offset {:g} s is out of reach: it must lie between -3.2 and 3.2 s",
            profile.trackTimeOffset));
    }
    config_.instrument.instrumentType = instrument.instrumentType;
    config_.instrument.pingsPerSample = instrument.pingsPerSample;
    config_.instrument.samplingRate = rateCode(instrument);
    config_.instrument.acousticFrequency = static_cast<float>(instrument.acousticFrequency);
    config_.instrument.slantAngle = static_cast<float>(instrument.slantAngle);
    const SquareMatrix matrix = beamsToAxes(instrument);
    for (std::size_t i = 0; i < matrix.values.size(); ++i) {
        config_.instrument.beamToXyz[i] = matrixCount(matrix.values[i]);
    }
    const std::vector<double> azimuths = fourAzimuths(instrument);
    for (std::size_t b = 0; b < azimuths.size(); ++b) {
        config_.beamAzimuths[b] = static_cast<float>(azimuths[b]);
    }
    config_.beamCount = static_cast<std::int16_t>(instrument.beams);
    config_.ambiguityVelocity = knownOr0(profile.ambiguityVelocity);
}

void ProfileFrontEnd::configure(orvikbase::Record &record) const {
    record.configureProfile(config_);
}

std::int32_t ProfileFrontEnd::estimateMask(bool withTrack) const {
    const std::int32_t beams = instrument_.beams == 4
                                   ? orvikbase::kMaskBeams | orvikbase::kMaskVertical
                                   : orvikbase::kMaskBeams;
    return withTrack ? beams | orvikbase::kMaskProfileTrack : beams;
}

SentBurst ProfileFrontEnd::send(orvikbase::Record &record, const Burst &burst,
                                const std::vector<std::uint8_t> &present,
                                orvikbase::CleanedBurst &cleaned) const {
    const ProfileFacts &facts = *instrument_.profile;
    orvikbase::ProfileBurstHeader header;
    header.samples = announcedSamples(burst);
    header.heading = knownOr0(burst.heading);
    header.pitch = knownOr0(burst.pitch);
    header.roll = knownOr0(burst.roll + instrument_.rollOffset);
    header.cellSize = static_cast<float>(instrument_.cellSize);
    header.blanking = static_cast<float>(facts.blanking);
    header.cells = static_cast<std::uint32_t>(facts.cells);
    header.surfaceTimeOffset =
        static_cast<std::int16_t>(std::round(facts.trackTimeOffset * kTenthsOfMilliseconds));
    orvikbase::ProfileInstrumentConfig config = config_;
    config.instrument.velocitySystem = librarySystem(burst.velocitySystem);
    record.configureProfile(config);
    const std::size_t used = record.openProfileBurst(header);
    ProfilePacker packer(*burst.profile);
    orvikbase::ProfileSample sample;
    const std::size_t count = std::min(used, burst.pressure.size());
    for (std::size_t i = 0; i < count; ++i) {
        sample.valid = present[i] != 0;
        sample.pressure = burst.pressure[i];
        sample.distance1 =
            burst.surfaceTrack.empty() ? 0.0F : distanceOr0(burst.surfaceTrack.at(i));
        sample.heading = attitudeAt(burst.attitude[0], burst.heading, i);
        sample.pitch = attitudeAt(burst.attitude[1], burst.pitch, i);
        sample.roll = attitudeAt(burst.attitude[2], burst.roll, i) +
                      static_cast<float>(instrument_.rollOffset);
        packer.pack(i, sample);
        record.addProfile(sample);
    }
    return {used, record.preProcessProfile(cleaned)};
}

} // namespace orvik
