// Bursts of point instruments: one velocity cell on each of three beams.
#pragma once

#include "burst/geometry.hpp"
#include "run/front_end.hpp"
#include "run/wave_header_counts.hpp"

namespace orvik {

// Methods 1 and 2 get east-north-up velocities and methods 3 and 4 along-beam ones whatever the burst holds; the
// conversion is done here.
class PointFrontEnd : public FrontEnd {
public:
    // Throws UserError when the instrument cannot be told to the library.
    PointFrontEnd(const Instrument &instrument, int method);

    void configure(orvikbase::Record &record) const override;
    [[nodiscard]] std::int32_t estimateMask(bool withTrack) const override;
    SentBurst send(orvikbase::Record &record, const Burst &burst,
                   const std::vector<std::uint8_t> &present,
                   orvikbase::CleanedBurst &cleaned) const override;

private:
    [[nodiscard]] std::array<std::vector<float>, 3> velocities(const Burst &burst) const;
    [[nodiscard]] std::array<std::vector<float>, 3> turnedVelocities(const Burst &burst) const;

    Instrument instrument_;
    int method_;
    Matrix3 beamToXyz_{};
    Matrix3 xyzToBeam_{};
    orvikbase::InstrumentConfig config_;
    HeaderCounts counts_;
};

} // namespace orvik
