// Statistics, repair and trend removal of one burst series. Shared by all instruments.
#pragma once

#include <array>
#include <cstdint>

#include "frame/record.hpp"

namespace ov {

// A series in the record. `beyond` is the element that follows it in storage: repair of a run at the very end of the
// series aims at it.
struct SeriesView {
    float *data;
    int length;
    float beyond;
};

SeriesView pressureView(WaveVariables &rec);
SeriesView trackView(WaveVariables &rec, float *series);

// Indices of bad elements, ascending. Full at 1024; what does not fit stays as it is.
struct IndexList {
    static constexpr int kCapacity = 1024;
    std::array<std::uint16_t, kCapacity> index;
    int count = 0;

    [[nodiscard]] bool full() const { return count >= kCapacity; }
    void append(int i) { index[static_cast<std::size_t>(count++)] = static_cast<std::uint16_t>(i); }
};

// Mean with a single-precision sum. 0 for an empty series.
float seriesMean(const float *x, int n);

// Standard deviation (n - 1) with a single-precision sum about the single-precision mean. 0 for fewer than 2 values.
double seriesStdDev(const float *x, int n);

// Fills `count` elements from index `start` on by a straight line between their neighbours.
void interpolateRun(const SeriesView &x, int start, int count);

// Repairs the listed elements run by run: a run at the start takes the first good value after it, every other one a
// straight line between its neighbours.
void replaceListed(const IndexList &list, const SeriesView &x);

// Lists the elements further from the mean than `factor` standard deviations.
void listOutliers(const SeriesView &x, double factor, IndexList &list);

// Two passes of outlier repair, at 10 and at 6 standard deviations.
void despikePressure(WaveVariables &rec, float *series);

// Least-squares line over n elements, removed in place. Writes trendSlope and trendIntercept; returns the line's mean.
double detrendSeries(WaveVariables &rec, float *x, int n);

// The same over the elements 0, 1, 4, 5, 8, 9, ... (n of them, none at or beyond `limit`), which alone are changed.
double detrendPairs(float *x, int n, int limit);

} // namespace ov
