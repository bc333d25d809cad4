// Bursts of profile instruments: many velocity cells on each of three or four beams.
#pragma once

#include <optional>
#include <string>

#include "run/front_end.hpp"

namespace orvik {

// Velocities go to the library in the system that the burst holds, with each sample's attitude; the library turns them.
class ProfileFrontEnd : public FrontEnd {
public:
    // Throws UserError when the instrument cannot be told to the library.
    explicit ProfileFrontEnd(const Instrument &instrument);

    void configure(orvikbase::Record &record) const override;
    [[nodiscard]] std::int32_t estimateMask(bool withTrack) const override;
    SentBurst send(orvikbase::Record &record, const Burst &burst,
                   const std::vector<std::uint8_t> &present,
                   orvikbase::CleanedBurst &cleaned) const override;

private:
    Instrument instrument_;
    orvikbase::ProfileInstrumentConfig config_;
};

// Why a burst says nothing of waves whatever its pressure does: the head is moved about, or hears no echoes of the water.
// Nothing when it stands and hears.
std::optional<std::string> whyUnusable(const Burst &burst);

} // namespace orvik
