#include "directional/mlm.hpp"

#include <algorithm>
#include <array>
#include <cmath>
#include <complex>
#include <utility>

#include "frame/constants.hpp"
#include "spectral/direction_table.hpp"

namespace ov {
namespace {

using Complex = std::complex<double>;
using Diagonal = std::array<double, kMaxSeries>;

int seriesInUse(const WaveVariables &rec) { return std::clamp(rec.nMlmSeries, 0, kMaxSeries); }

// Element (row, column) below the diagonal of the packed matrix.
Complex lower(const WaveVariables &rec, int row, int column) {
    return {rec.mlmMatrix[row][column], rec.mlmMatrix[column][row]};
}

void setLower(WaveVariables &rec, int row, int column, const Complex &value) {
    rec.mlmMatrix[row][column] = value.real();
    rec.mlmMatrix[column][row] = value.imag();
}

// First of the largest remaining diagonal elements.
int findPivot(const Diagonal &d, int p, int n) {
    int q = p;
    for (int i = p + 1; i < n; ++i) {
        if (d[static_cast<std::size_t>(i)] > d[static_cast<std::size_t>(q)]) {
            q = i;
        }
    }
    return q;
}

// Exchanges rows and columns p < q. An element that moves across the diagonal becomes its conjugate.
void swapSeries(WaveVariables &rec, int p, int q, int n) {
    auto &c = rec.mlmMatrix;
    std::swap(c[p][p], c[q][q]);
    for (int m = 0; m < n; ++m) {
        if (m == p || m == q) {
            continue;
        }
        if (m < p) {
            std::swap(c[p][m], c[q][m]);
            std::swap(c[m][p], c[m][q]);
        } else if (m > q) {
            std::swap(c[m][p], c[m][q]);
            std::swap(c[p][m], c[q][m]);
        } else {
            std::swap(c[m][p], c[q][m]);
            std::swap(c[p][m], c[m][q]);
            c[p][m] = -c[p][m];
            c[m][q] = -c[m][q];
        }
    }
    c[p][q] = -c[p][q];
}

void clearColumn(WaveVariables &rec, int p, int n) {
    for (int i = p; i < n; ++i) {
        rec.mlmMatrix[i][p] = 0.0;
        rec.mlmMatrix[p][i] = 0.0;
    }
}

// Column p of the factor: L_ip = (C_ip - sum_m L_im conj(L_pm)) / L_pp.
void eliminateColumn(WaveVariables &rec, int p, int n, Diagonal &d) {
    const double pivot = std::sqrt(d[static_cast<std::size_t>(p)]);
    rec.mlmMatrix[p][p] = pivot;
    for (int i = p + 1; i < n; ++i) {
        const Complex start = lower(rec, i, p);
        double re = start.real();
        double im = start.imag();
        for (int m = 0; m < p; ++m) {
            const Complex a = lower(rec, i, m);
            const Complex b = lower(rec, p, m);
            re -= a.real() * b.real() + a.imag() * b.imag();
            im -= a.imag() * b.real() - a.real() * b.imag();
        }
        re /= pivot;
        im /= pivot;
        setLower(rec, i, p, {re, im});
        d[static_cast<std::size_t>(i)] -= re * re + im * im;
    }
}

// Takes the part l * from off a complex row.
void subtractPart(std::size_t count, double lRe, double lIm, const DirectionValues &fromRe,
                  const DirectionValues &fromIm, DirectionValues &re, DirectionValues &im) {
    for (std::size_t k = 0; k < count; ++k) {
        re[k] -= lRe * fromRe[k] - lIm * fromIm[k];
        im[k] -= lRe * fromIm[k] + lIm * fromRe[k];
    }
}

// |L^-1 g|^2 for every direction, by forward substitution. A zero diagonal element drops its series. Directions are the
// innermost loop: they do not depend on each other, so the compiler works on several at once.
void whitenedPowers(const WaveVariables &rec, int n, int directions, DirectionValues &power) {
    std::array<DirectionValues, kMaxSeries> yRe{};
    std::array<DirectionValues, kMaxSeries> yIm{};
    power.fill(0.0);
    const auto count = static_cast<std::size_t>(directions);
    for (int j = 0; j < n; ++j) {
        DirectionValues &re = yRe[static_cast<std::size_t>(j)];
        DirectionValues &im = yIm[static_cast<std::size_t>(j)];
        const double diagonal = rec.mlmMatrix[j][j];
        if (j == 0 || diagonal != 0.0) { // the first element is not tested
            const int series = rec.mlmSeriesOrder[j];
            std::copy_n(rec.transferRe[series], directions, re.data());
            std::copy_n(rec.transferIm[series], directions, im.data());
            for (int i = 0; i < j; ++i) {
                const auto from = static_cast<std::size_t>(i);
                subtractPart(count, rec.mlmMatrix[j][i], rec.mlmMatrix[i][j], yRe[from], yIm[from],
                             re, im);
            }
            for (std::size_t k = 0; k < count; ++k) {
                re[k] /= diagonal;
                im[k] /= diagonal;
            }
        }
        for (std::size_t k = 0; k < count; ++k) {
            power[k] += re[k] * re[k] + im[k] * im[k];
        }
    }
}

// Integral 1 over the circle. The last bin becomes a copy of the first, which closes the circle; the integral still
// counts what it held before.
void normalise(double *distribution, int directions) {
    double integral = 0.0;
    for (int k = 0; k < directions; ++k) {
        integral += distribution[k];
    }
    integral = integral * 2.0 * kPi / directions;
    for (int k = 0; k < directions - 1; ++k) {
        distribution[k] /= integral;
    }
    if (directions > 0) {
        distribution[directions - 1] = distribution[0];
    }
}

// Adds the waves of direction k to the packed matrix.
void addDirection(WaveVariables &rec, int n, int k, double weight) {
    for (int j = 0; j < n; ++j) {
        const double xj = rec.transferRe[j][k];
        const double yj = rec.transferIm[j][k];
        for (int i = 0; i <= j; ++i) {
            const double xi = rec.transferRe[i][k];
            const double yi = rec.transferIm[i][k];
            rec.mlmMatrix[j][i] += (xi * xj + yi * yj) * weight;
            if (i != j) {
                rec.mlmMatrix[i][j] += (xi * yj - yi * xj) * weight;
            }
        }
    }
}

// One step of the refinement: the clipped, renormalised correction goes to imlmWork. Returns the largest difference
// between the estimate of the data and the estimate of the model.
float correctDistribution(WaveVariables &rec, int directions, double step) {
    float maxDiff = 0.0F;
    double sum = 0.0;
    for (int k = 0; k < directions; ++k) {
        const double difference = rec.mlmFirstEstimate[k] - rec.directionalDistribution[k];
        maxDiff = std::max(maxDiff, static_cast<float>(std::abs(difference)));
        const float corrected = static_cast<float>(std::max(0.0, difference + rec.imlmEstimate[k]));
        rec.imlmWork[k] = corrected;
        sum += static_cast<double>(corrected);
    }
    for (int k = 0; k < directions; ++k) {
        rec.imlmWork[k] /= sum * step;
    }
    return maxDiff;
}

} // namespace

void factorMlmMatrix(WaveVariables &rec) {
    const int n = seriesInUse(rec);
    Diagonal d{};
    float maxDiagonal = 0.0F;
    for (int i = 0; i < n; ++i) {
        rec.mlmSeriesOrder[i] = i;
        d[static_cast<std::size_t>(i)] = rec.mlmMatrix[i][i];
        maxDiagonal = std::max(maxDiagonal, static_cast<float>(rec.mlmMatrix[i][i]));
    }
    const double threshold =
        static_cast<double>(rec.convergenceTolerance) * static_cast<double>(maxDiagonal);
    for (int p = 0; p < n; ++p) {
        const int q = findPivot(d, p, n);
        if (threshold >= d[static_cast<std::size_t>(q)]) {
            clearColumn(rec, p, n); // later columns stay: the substitution reads them as they are
            return;
        }
        if (q != p) {
            std::swap(rec.mlmSeriesOrder[p], rec.mlmSeriesOrder[q]);
            swapSeries(rec, p, q, n);
            std::swap(d[static_cast<std::size_t>(p)], d[static_cast<std::size_t>(q)]);
        }
        eliminateColumn(rec, p, n, d);
    }
}

void estimateMlm(WaveVariables &rec) {
    factorMlmMatrix(rec);
    const int n = seriesInUse(rec);
    for (int i = 0; i < n; ++i) {
        if (rec.mlmMatrix[i][i] == 0.0) {
            rec.mlmSeriesOrder[i] = 0;
        }
    }
    const int directions = directionCount(rec);
    DirectionValues power;
    whitenedPowers(rec, n, directions, power);
    for (int k = 0; k < directions; ++k) {
        rec.directionalDistribution[k] = 1.0 / power[static_cast<std::size_t>(k)];
    }
    normalise(rec.directionalDistribution, directions);
}

void computeModelCrossSpectra(WaveVariables &rec) {
    const int n = seriesInUse(rec);
    for (int i = 0; i < n; ++i) {
        std::fill_n(rec.mlmMatrix[i], n, 0.0);
    }
    const int directions = directionCount(rec);
    double sum = 0.0;
    for (int k = 0; k < directions; ++k) {
        const double weight = rec.imlmWork[k];
        sum += weight;
        addDirection(rec, n, k, weight);
    }
    for (int j = 0; j < n; ++j) {
        for (int i = 0; i < n; ++i) {
            rec.mlmMatrix[j][i] /= sum;
        }
    }
}

void refineImlm(WaveVariables &rec) {
    const int directions = directionCount(rec);
    const double step = kTwoPi / directions;
    std::copy_n(rec.directionalDistribution, directions, rec.mlmFirstEstimate);
    std::copy_n(rec.directionalDistribution, directions, rec.imlmEstimate);
    std::copy_n(rec.directionalDistribution, directions, rec.imlmWork);
    for (int iteration = 0; iteration < rec.iterationLimit; ++iteration) {
        computeModelCrossSpectra(rec);
        estimateMlm(rec);
        const float maxDiff = correctDistribution(rec, directions, step);
        if (rec.convergenceTolerance >= maxDiff) {
            break;
        }
        std::copy_n(rec.imlmWork, directions, rec.imlmEstimate);
    }
    std::copy_n(rec.imlmWork, directions, rec.directionalDistribution);
}

} // namespace ov
