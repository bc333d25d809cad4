// Several files of one instrument as one deployment.
#pragma once

#include <exception>
#include <functional>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "burst/burst_source.hpp"

namespace orvik {

// What all files of one deployment have to agree in.
struct CommonFacts {
    Instrument instrument;
    VelocitySystem system = VelocitySystem::none;
    bool hasTrack = false;
};

CommonFacts commonFactsOf(const BurstSource &source);

// What is not the same in both, in words; empty when nothing is. Positions are the same within a hundredth of a degree,
// and where one is not told.
std::string difference(const CommonFacts &left, const CommonFacts &right);

// A position that the one does not tell is the other's.
void completePlace(Instrument &instrument, const Instrument &other);

// All facts that a burst's results depend on, which the position is not among, with all their digits.
std::string inFull(const Instrument &instrument);

// Only the file of the burst read last is open: a deployment may have more files than a program may open.
class JoinedSource : public BurstSource {
public:
    using Opener = std::function<std::unique_ptr<BurstSource>(const std::string &path)>;

    // Opens every file once. Throws UserError, naming what differs and both files, when they are not of one instrument, and
    // when their bursts overlap in time; a note says so where it may be a wrong clock.
    JoinedSource(const std::vector<std::string> &paths, Opener opener);

    [[nodiscard]] const Instrument &instrument() const override { return instrument_; }
    [[nodiscard]] std::size_t burstCount() const override { return places_.size(); }
    [[nodiscard]] VelocitySystem velocitySystem() const override { return system_; }
    [[nodiscard]] bool hasTrack() const override { return hasTrack_; }
    [[nodiscard]] bool hasTruth() const override { return hasTruth_; }
    void requireAttitude() const override;
    void requireBeams() const override;
    [[nodiscard]] Burst readBurst(std::size_t index) const override;
    [[nodiscard]] std::optional<Truth> readTruth(std::size_t index) const override;
    [[nodiscard]] double startTime(std::size_t index) const override;
    [[nodiscard]] std::vector<std::string> files() const override;
    [[nodiscard]] KnownFacts knownFacts() const override { return known_; } // of the first file
    [[nodiscard]] std::vector<std::string> notes() const override;

private:
    struct Part {
        std::string path;
        std::vector<double> times;        // of its bursts
        double middleTime = kUnknown;     // half of them are before it, whatever single clocks say
        std::exception_ptr attitudeError; // of requireAttitude() and requireBeams(), if any
        std::exception_ptr beamsError;
    };

    void add(const BurstSource &source, const std::string &path);
    void sortByTime();
    void checkOverlap(const Part &left, const Part &right);
    [[nodiscard]] const BurstSource &open(std::size_t part) const;

    Opener opener_;
    Instrument instrument_;
    VelocitySystem system_ = VelocitySystem::none;
    bool hasTrack_ = false;
    bool hasTruth_ = false;
    std::vector<Part> parts_;
    std::vector<std::string> notes_;
    KnownFacts known_;
    std::vector<std::pair<std::size_t, std::size_t>> places_; // part and its burst
    mutable std::size_t openPart_ = 0;
    mutable std::unique_ptr<BurstSource> openSource_;
};

} // namespace orvik
