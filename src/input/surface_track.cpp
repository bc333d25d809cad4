#include "input/surface_track.hpp"

#include <algorithm>
#include <cmath>
#include <iterator>

#include "input/series_repair.hpp"

namespace ov {
namespace {

constexpr int kLeadingElements = 50;
constexpr int kLeadingBadLimit = 48;
constexpr double kShortestDistance = 0.01; // [m]
constexpr double kJumpThreshold = 1.0;     // [m]
constexpr double kLevelTolerance = 10.0;   // [m] between track level and instrument depth
constexpr double kOutlierFactors[] = {7.0, 6.0, 6.0, 5.0, 5.0, 4.0, 4.0};

// Greatest distance [m] that can be the surface: twice the depth less 1 m in shallow water, 1.6 times it elsewhere.
double distanceCeiling(float waterDepth) {
    const double depth = waterDepth;
    const double ceiling = depth <= 5.0 ? 2.0 * depth - 1.0 : 1.6 * depth;
    return ceiling >= 1.0 ? ceiling : 1.0;
}

// Lists what cannot be the surface: everything before the first plausible element (searched among the first 50), then
// every element out of range. A track without a plausible start is not usable.
void listOutOfRange(WaveVariables &rec, const SeriesView &x, IndexList &list) {
    const double ceiling = distanceCeiling(rec.waterDepth);
    const auto plausible = [&](float value) {
        return value != 0.0F && static_cast<double>(value) < ceiling;
    };
    const int leading = std::min(kLeadingElements, x.length);
    int i = 0;
    while (i < leading && !plausible(x.data[i])) {
        list.append(i++);
    }
    if (list.count > kLeadingBadLimit) {
        rec.surfaceTrackValid = 0;
    }
    const int first = i < leading ? i + 1 : kLeadingElements;
    for (i = first; i < x.length && !list.full(); ++i) {
        const double value = x.data[i];
        if (value > ceiling || value < kShortestDistance) {
            list.append(i);
        }
    }
}

// A gap of two elements at the very start has no trustworthy left end: the track is given up unrepaired.
void repairOutOfRange(WaveVariables &rec, const IndexList &list, const SeriesView &x) {
    if (list.count >= 2 && list.index[0] == 0 && list.index[1] == 1) {
        rec.surfaceTrackValid = 0;
        return;
    }
    replaceListed(list, x);
}

// Replaces single elements that stand out from both neighbours, from left to right; returns how many.
int removeJumps(const SeriesView &x, double threshold) {
    int count = 0;
    for (int i = 0; i + 3 < x.length && count < IndexList::kCapacity; ++i) {
        const double a = x.data[i];
        const double b = x.data[i + 1];
        const double d = x.data[i + 2];
        const bool peak = b - a > threshold && b - d > threshold;
        const bool trough = a - b > threshold && d - b > threshold;
        const double middle = (a + d) / 2.0;
        if ((peak || trough) && std::abs(middle - b) > threshold) {
            x.data[i + 1] = static_cast<float>(middle);
            ++count;
        }
    }
    return count;
}

// The host's acceptance window around the instrument depth.
void listOutsideWindow(const WaveVariables &rec, const SeriesView &x, IndexList &list) {
    const double depth = rec.instrumentDepth;
    const double above = depth + static_cast<double>(rec.astWindowAbove);
    const double below = depth - static_cast<double>(rec.astWindowBelow);
    for (int i = 0; i < x.length && !list.full(); ++i) {
        const double value = x.data[i];
        if (value > above || value < below) {
            list.append(i);
        }
    }
}

// Outlier passes; false when too many elements had to be replaced.
bool removeOutliers(WaveVariables &rec, const SeriesView &x, int limit) {
    for (std::size_t pass = 0; pass < std::size(kOutlierFactors); ++pass) {
        IndexList list;
        if (pass == 0 && rec.useAstWindow != 0) {
            listOutsideWindow(rec, x, list);
        } else {
            listOutliers(x, kOutlierFactors[pass], list);
        }
        rec.astBadCount += list.count;
        if (rec.astBadCount >= limit) {
            rec.surfaceTrackValid = 0;
            return false;
        }
        replaceListed(list, x);
    }
    return true;
}

// Level of the track; with two estimates, of its first and of its second pings.
void removeLevel(WaveVariables &rec, const SeriesView &x) {
    if (rec.splitEstimateFlag == 0) {
        rec.astLevel = static_cast<float>(detrendSeries(rec, x.data, x.length));
        return;
    }
    const int points = x.length / 2;
    rec.astLevelEven = static_cast<float>(detrendPairs(x.data, points, x.length));
    rec.astLevel = static_cast<float>(detrendPairs(x.data + 2, points, x.length - 2));
}

// Cleans what the range check left; false when the track had to be given up on the way.
void cleanInRange(WaveVariables &rec, const SeriesView &x, int limit) {
    rec.astSpikeCount += removeJumps(x, kJumpThreshold);
    rec.astBadCount += rec.astSpikeCount;
    if (rec.astBadCount < limit && !removeOutliers(rec, x, limit)) {
        return;
    }
    removeLevel(rec, x);
    const int spikes = removeJumps(x, 4.0 * seriesStdDev(x.data, x.length));
    for (int i = 0; i < x.length; ++i) {
        x.data[i] += rec.astLevel;
    }
    rec.astSpikeCount += spikes;
    rec.astBadCount += rec.astSpikeCount; // the first jumps count twice
    const double levelError =
        static_cast<double>(rec.astLevel) - static_cast<double>(rec.instrumentDepth);
    if (rec.astBadCount >= limit || std::abs(levelError) > kLevelTolerance) {
        rec.surfaceTrackValid = 0;
    }
}

} // namespace

void cleanAst(WaveVariables &rec, float *series) {
    const SeriesView x = trackView(rec, series);
    const int limit = x.length * 10 / 100;
    rec.surfaceTrackValid = 1;
    rec.astSpikeCount = 0;

    IndexList list;
    listOutOfRange(rec, x, list);
    rec.astInitialBadCount = list.count;
    rec.astBadCount = list.count;
    if (list.count > limit) {
        rec.surfaceTrackValid = 0;
    } else {
        repairOutOfRange(rec, list, x);
        cleanInRange(rec, x, limit);
    }
    rec.astSpikeCount = rec.astBadCount - rec.astInitialBadCount;
}

} // namespace ov
