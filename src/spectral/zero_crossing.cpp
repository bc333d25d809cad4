#include "spectral/zero_crossing.hpp"

#include <algorithm>
#include <cstddef>
#include <new>

#include "frame/constants.hpp"

namespace ov {
namespace {

// A wave runs from one zero up-crossing to the next. `start` and `end` are the first elements at or above zero.
struct Wave {
    double height; // [m]
    std::int32_t start;
    std::int32_t end;
};

// At most one wave in two elements: the waves of a full track fit into the transform's work area.
constexpr std::size_t kMaxWaves = kMaxTrack / 2;
static_assert(kMaxWaves * sizeof(Wave) <= sizeof(WaveVariables::fftWork) &&
              alignof(Wave) <= alignof(WaveVariables));

double meanOfTrack(const WaveVariables &rec) {
    double sum = 0.0;
    for (int i = 0; i < rec.astLength; ++i) {
        sum += static_cast<double>(scaledTrack(rec, i));
    }
    return sum / rec.astLength;
}

class WaveFinder {
public:
    explicit WaveFinder(WaveVariables &rec)
        : rec_(rec), mean_(meanOfTrack(rec)), waves_(new (rec.fftWork) Wave[kMaxWaves]) {}

    // Finds all complete waves; highest first, equal heights in time order.
    void find() {
        int start = -1;
        double high = 0.0;
        double low = 0.0;
        for (int i = 1; i < rec_.astLength; ++i) {
            if (elevation(i - 1) < 0.0 && elevation(i) >= 0.0) {
                if (start >= 0) {
                    waves_[count_++] = {high - low, start, i};
                }
                start = i;
                high = elevation(i);
                low = high;
            }
            high = std::max(high, elevation(i));
            low = std::min(low, elevation(i));
        }
        std::sort(waves_, waves_ + count_, [](const Wave &a, const Wave &b) {
            return a.height != b.height ? a.height > b.height : a.start < b.start;
        });
    }

    [[nodiscard]] std::size_t count() const { return count_; }
    [[nodiscard]] double height(std::size_t wave) const { return waves_[wave].height; }
    [[nodiscard]] double period(std::size_t wave) const {
        return (crossing(waves_[wave].end) - crossing(waves_[wave].start)) /
               static_cast<double>(rec_.astSamplingRate);
    }

    // Mean height and period of the highest `number` waves.
    void storeMeans(std::size_t number, OVWaveParameter heightSlot, OVWaveParameter periodSlot) {
        double heights = 0.0;
        double periods = 0.0;
        for (std::size_t w = 0; w < number; ++w) {
            heights += height(w);
            periods += period(w);
        }
        const auto n = static_cast<double>(number);
        rec_.waveParameters[heightSlot] = static_cast<float>(heights / n);
        rec_.waveParameters[periodSlot] = static_cast<float>(periods / n);
    }

private:
    [[nodiscard]] double elevation(int i) const {
        return static_cast<double>(scaledTrack(rec_, i)) - mean_;
    }

    // Instant of the crossing before element i, in elements.
    [[nodiscard]] double crossing(int i) const {
        const double below = elevation(i - 1);
        return i - 1 + below / (below - elevation(i));
    }

    WaveVariables &rec_;
    double mean_;
    Wave *waves_;
    std::size_t count_ = 0;
};

} // namespace

void zeroCrossingStatistics(WaveVariables &rec) {
    std::fill(rec.waveParameters + OV_H_THIRD, rec.waveParameters + OV_T_CROSSING + 1, kMissing);
    if (rec.astLength < 2) {
        return;
    }
    WaveFinder waves(rec);
    waves.find();
    const std::size_t n = waves.count();
    if (n == 0) {
        return;
    }
    double periods = 0.0;
    for (std::size_t w = 0; w < n; ++w) {
        periods += waves.period(w);
    }
    waves.storeMeans(std::max<std::size_t>(1, n / 3), OV_H_THIRD, OV_T_THIRD);
    waves.storeMeans(std::max<std::size_t>(1, n / 10), OV_H_TENTH, OV_T_TENTH);
    rec.waveParameters[OV_H_MAX] = static_cast<float>(waves.height(0));
    rec.waveParameters[OV_T_MAX] = static_cast<float>(waves.period(0));
    rec.waveParameters[OV_T_CROSSING] = static_cast<float>(periods / static_cast<double>(n));
}

} // namespace ov
