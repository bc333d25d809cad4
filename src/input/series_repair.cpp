#include "input/series_repair.hpp"

#include <cmath>

namespace ov {
namespace {

struct Line {
    double slope = 0.0;
    double intercept = 0.0;
};

// Sums of a straight-line fit over t = 0 .. n - 1. The products t x are formed in single precision.
struct LineSums {
    double y = 0.0;
    double ty = 0.0;
    double t = 0.0;
    double tt = 0.0;

    void add(int at, float value) {
        const double position = at;
        y += static_cast<double>(value);
        ty += static_cast<double>(static_cast<float>(at) * value);
        t += position;
        tt += position * position;
    }

    [[nodiscard]] Line fit(int n) const {
        if (n < 1) {
            return {};
        }
        const double count = n;
        Line line;
        if (n > 1) {
            line.slope = (count * ty - t * y) / (count * tt - t * t);
        }
        line.intercept = (y - line.slope * t) / count;
        return line;
    }
};

// Subtracts the line's value at t and returns that value.
double removeLine(float &x, const Line &line, int t) {
    const double fitted = line.slope * t + line.intercept;
    x = static_cast<float>(static_cast<double>(x) - fitted);
    return fitted;
}

// Element of point t in a series of which every other pair counts: 0, 1, 4, 5, 8, 9, ...
int pairElement(int t) { return 2 * t - (t % 2); }

} // namespace

SeriesView pressureView(WaveVariables &rec) {
    return {rec.pressureSeries, rec.burstLength, pressureStorage(rec, rec.burstLength)};
}

SeriesView trackView(WaveVariables &rec, float *series) {
    const int n = rec.astLength;
    return {series, n, n < kMaxTrack ? series[n] : 0.0F};
}

float seriesMean(const float *x, int n) {
    if (n < 1) {
        return 0.0F;
    }
    float sum = 0.0F;
    for (int i = 0; i < n; ++i) {
        sum += x[i];
    }
    return sum / static_cast<float>(n);
}

double seriesStdDev(const float *x, int n) {
    if (n < 2) {
        return 0.0;
    }
    const float mean = seriesMean(x, n);
    float sum = 0.0F;
    for (int i = 0; i < n; ++i) {
        const float deviation = x[i] - mean;
        sum += deviation * deviation;
    }
    const double squares = sum;
    return std::sqrt(squares / (n - 1));
}

void interpolateRun(const SeriesView &x, int start, int count) {
    const int end = start + count;
    const float left = x.data[start - 1];
    const float right = end < x.length ? x.data[end] : x.beyond;
    const float step = (right - left) / (static_cast<float>(count) + 1.0F);
    for (int i = start; i < end; ++i) {
        x.data[i] = x.data[i - 1] + step;
    }
}

void replaceListed(const IndexList &list, const SeriesView &x) {
    for (int at = 0; at < list.count;) {
        const int start = list.index[static_cast<std::size_t>(at)];
        int count = 1;
        while (at + count < list.count &&
               list.index[static_cast<std::size_t>(at + count)] == start + count) {
            ++count;
        }
        at += count;
        if (start > 0) {
            interpolateRun(x, start, count);
            continue;
        }
        const float good = count < x.length ? x.data[count] : x.beyond;
        for (int i = 0; i < count; ++i) {
            x.data[i] = good;
        }
    }
}

void listOutliers(const SeriesView &x, double factor, IndexList &list) {
    const auto limit = static_cast<float>(seriesStdDev(x.data, x.length) * factor);
    const float mean = seriesMean(x.data, x.length);
    for (int i = 0; i < x.length && !list.full(); ++i) {
        if (std::fabs(x.data[i] - mean) > limit) {
            list.append(i);
        }
    }
}

void despikePressure(WaveVariables &rec, float *series) {
    const SeriesView x{series, rec.burstLength, pressureView(rec).beyond};
    for (const double factor : {10.0, 6.0}) {
        IndexList list;
        listOutliers(x, factor, list);
        replaceListed(list, x);
    }
}

double detrendSeries(WaveVariables &rec, float *x, int n) {
    LineSums sums;
    for (int t = 0; t < n; ++t) {
        sums.add(t, x[t]);
    }
    const Line line = sums.fit(n);
    double fittedSum = 0.0;
    for (int t = 0; t < n; ++t) {
        fittedSum += removeLine(x[t], line, t);
    }
    rec.trendSlope = line.slope;
    rec.trendIntercept = line.intercept;
    return n < 1 ? 0.0 : fittedSum / n;
}

double detrendPairs(float *x, int n, int limit) {
    int points = 0;
    LineSums sums;
    while (points < n && pairElement(points) < limit) {
        sums.add(points, x[pairElement(points)]);
        ++points;
    }
    const Line line = sums.fit(points);
    double fittedSum = 0.0;
    for (int t = 0; t < points; ++t) {
        fittedSum += removeLine(x[pairElement(t)], line, t);
    }
    return points < 1 ? 0.0 : fittedSum / points;
}

} // namespace ov
