// Makes bursts of a point or a profile instrument from what a layout's files hold.
#pragma once

#include <memory>
#include <string>
#include <vector>

#include "burst/burst_source.hpp"
#include "burst/instrument_facts.hpp"
#include "burst/layout_data.hpp"

namespace orvik {

class LayoutSource : public BurstSource {
public:
    // Four beams, or more than three cells whose correlations are told, are a profile instrument; of fewer one cell is
    // used as a point instrument's. The facts instrument_type and velocity_cell decide otherwise.
    LayoutSource(std::unique_ptr<LayoutData> data, const Overrides &overrides);

    [[nodiscard]] const Instrument &instrument() const override { return instrument_; }
    [[nodiscard]] std::size_t burstCount() const override { return data_->burstCount(); }
    [[nodiscard]] VelocitySystem velocitySystem() const override { return data_->shape().system; }
    [[nodiscard]] bool hasTrack() const override { return data_->shape().trackPerSample > 0; }
    [[nodiscard]] bool hasTruth() const override { return false; }
    void requireAttitude() const override;
    void requireBeams() const override;
    [[nodiscard]] Burst readBurst(std::size_t index) const override;
    [[nodiscard]] std::optional<Truth> readTruth(std::size_t) const override { return {}; }
    [[nodiscard]] double startTime(std::size_t index) const override;
    [[nodiscard]] std::vector<std::string> files() const override { return {data_->path()}; }
    [[nodiscard]] KnownFacts knownFacts() const override { return data_->facts(); }
    [[nodiscard]] std::vector<std::string> notes() const override { return notes_; }

private:
    [[nodiscard]] FactSources sources() const { return {known_, overrides_, data_->path()}; }
    [[nodiscard]] bool isProfile() const;
    void describePoint();
    void readAttitude(const RawBurst &raw, Burst &burst) const;
    void fillPoint(const RawBurst &raw, Burst &burst) const;
    void fillProfile(RawBurst &raw, Burst &burst) const; // takes its velocities
    void bringToInstants(Burst &burst) const;

    std::unique_ptr<LayoutData> data_;
    Overrides overrides_;
    KnownFacts known_;
    Instrument instrument_;
    std::size_t cell_ = 0;
    bool simultaneous_ = true;
    std::vector<std::string> notes_;
};

} // namespace orvik
