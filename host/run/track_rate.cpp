#include "run/track_rate.hpp"

#include <algorithm>
#include <cmath>

#include "run/beam_timing.hpp"
#include "run/burst_result.hpp"
#include "run/front_end.hpp"

namespace orvik {

namespace {

constexpr double kRate = 2.0; // [Hz]

// Between two values on the straight line; on a value that alone.
std::vector<float> trackOf(const std::vector<float> &track, double step, std::size_t count) {
    std::vector<float> taken;
    for (std::size_t m = 0; m < count; ++m) {
        const double at = static_cast<double>(m) * step;
        const auto before = std::min(static_cast<std::size_t>(at), track.size() - 1);
        const std::size_t after = std::min(before + 1, track.size() - 1);
        const double share = at - static_cast<double>(before);
        const double left = track[before];
        const double right = track[after];
        taken.push_back(share == 0.0 ? track[before]
                                     : static_cast<float>(left + share * (right - left)));
    }
    return taken;
}

template <typename Value>
std::vector<Value> nearest(const std::vector<Value> &series, double step, std::size_t count) {
    std::vector<Value> taken;
    for (std::size_t m = 0; m < count && !series.empty(); ++m) {
        const auto at = static_cast<std::size_t>(std::llround(static_cast<double>(m) * step));
        taken.push_back(series[std::min(at, series.size() - 1)]);
    }
    return taken;
}

} // namespace

bool isFasterThanTrack(const Instrument &instrument, int method) {
    return !instrument.profile && usesTrack(method) && instrument.samplingRate > kRate;
}

Instrument atTrackRate(const Instrument &instrument) {
    rateCode(instrument); // rates that cannot be processed without a track cannot with one
    Instrument slower = instrument;
    slower.samplingRate = kRate;
    slower.trackSamplingRate = 2.0 * kRate;
    return slower;
}

Burst atTrackRate(const Instrument &instrument, const Burst &burst,
                  const std::vector<std::uint8_t> &present) {
    const double rate = instrument.samplingRate;
    const double step = rate / kRate;
    const auto count = static_cast<std::size_t>(static_cast<double>(burst.pressure.size()) / step);
    const bool hasTrack = !burst.surfaceTrack.empty();
    const double later =
        pressureDelay(instrument, hasTrack) - pressureDelay(atTrackRate(instrument), hasTrack);
    Burst slower = burst;
    slower.valid = nearest(present, step, count);
    slower.pressure = lowPassed(withGaps(burst.pressure, present), step, later * rate, count);
    for (std::size_t b = 0; b < 3; ++b) {
        if (!burst.velocity[b].empty()) {
            slower.velocity[b] = lowPassed(withGaps(burst.velocity[b], present), step, 0.0, count);
        }
        slower.amplitude[b] = nearest(burst.amplitude[b], step, count);
        slower.attitude[b] = nearest(burst.attitude[b], step, count);
    }
    if (hasTrack) {
        slower.surfaceTrack = trackOf(burst.surfaceTrack, step, 2 * count);
    }
    return slower;
}

} // namespace orvik
