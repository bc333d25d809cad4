// The maximum likelihood estimate against a dense inverse in extended precision, the factorisation against the matrix
// it came from, and the iterative refinement against a plain repetition of its rule.
#include "directional/mlm.hpp"

#include <algorithm>
#include <array>
#include <cmath>
#include <complex>
#include <cstdint>
#include <vector>

#include <gtest/gtest.h>

#include "support/record_ptr.hpp"

namespace {

using orvik::test::makeRecord;
using orvik::test::RecordPtr;

using Wide = std::complex<long double>;
using Matrix = std::vector<std::vector<Wide>>;

Matrix unpack(const OVRecord &rec, int n) {
    Matrix c(static_cast<std::size_t>(n), std::vector<Wide>(static_cast<std::size_t>(n)));
    for (int j = 0; j < n; ++j) {
        for (int i = 0; i <= j; ++i) {
            const long double re = rec.mlmMatrix[j][i];
            const long double im = i == j ? 0.0L : static_cast<long double>(rec.mlmMatrix[i][j]);
            c[static_cast<std::size_t>(j)][static_cast<std::size_t>(i)] = {re, im};
            c[static_cast<std::size_t>(i)][static_cast<std::size_t>(j)] = {re, -im};
        }
    }
    return c;
}

// Gauss-Jordan with row pivots.
Matrix inverted(Matrix a) {
    const std::size_t n = a.size();
    Matrix b(n, std::vector<Wide>(n));
    for (std::size_t i = 0; i < n; ++i) {
        b[i][i] = 1.0L;
    }
    for (std::size_t p = 0; p < n; ++p) {
        std::size_t pivot = p;
        for (std::size_t i = p + 1; i < n; ++i) {
            pivot = std::abs(a[i][p]) > std::abs(a[pivot][p]) ? i : pivot;
        }
        std::swap(a[p], a[pivot]);
        std::swap(b[p], b[pivot]);
        const Wide scale = 1.0L / a[p][p];
        for (std::size_t k = 0; k < n; ++k) {
            a[p][k] *= scale;
            b[p][k] *= scale;
        }
        for (std::size_t i = 0; i < n; ++i) {
            const Wide factor = i == p ? Wide{} : a[i][p];
            for (std::size_t k = 0; k < n; ++k) {
                a[i][k] -= factor * a[p][k];
                b[i][k] -= factor * b[p][k];
            }
        }
    }
    return b;
}

class Random {
public:
    explicit Random(std::uint32_t seed) : state_(seed * 747796405U + 1U) {}
    double next() { // -1 to 1
        state_ = state_ * 1664525U + 1013904223U;
        return static_cast<double>(state_ >> 8) / 8388608.0 - 1.0;
    }

private:
    std::uint32_t state_;
};

// n series with random transfer functions over K directions, and the matrix of a random distribution plus noise.
RecordPtr problem(int n, int directions, std::uint32_t seed) {
    RecordPtr rec = makeRecord();
    rec->nMlmSeries = n;
    rec->nDirections = directions;
    rec->convergenceTolerance = 1e-5F;
    rec->iterationLimit = 3;
    Random random(seed);
    for (int s = 0; s < n; ++s) {
        for (int k = 0; k < directions; ++k) {
            const double theta = 2.0 * M_PI * k / directions;
            rec->transferRe[s][k] = std::cos(theta - s) + 0.4 * random.next();
            rec->transferIm[s][k] = 0.5 * std::sin(2.0 * theta + s) + 0.4 * random.next();
        }
    }
    for (int k = 0; k < directions; ++k) {
        rec->imlmWork[k] = 1.05 + random.next();
    }
    ov::computeModelCrossSpectra(*rec);
    for (int s = 0; s < n; ++s) {
        rec->mlmMatrix[s][s] += 0.02;
    }
    return rec;
}

// 1 / (g^H C^-1 g) for every direction, normalised as the library does it.
std::vector<double> denseMlm(const OVRecord &rec) {
    const int n = rec.nMlmSeries;
    const Matrix inverse = inverted(unpack(rec, n));
    std::vector<long double> d;
    long double integral = 0.0L;
    for (int k = 0; k < rec.nDirections; ++k) {
        Wide power{};
        for (int i = 0; i < n; ++i) {
            for (int j = 0; j < n; ++j) {
                const Wide gi(rec.transferRe[i][k], rec.transferIm[i][k]);
                const Wide gj(rec.transferRe[j][k], rec.transferIm[j][k]);
                power += std::conj(gi) *
                         inverse[static_cast<std::size_t>(i)][static_cast<std::size_t>(j)] * gj;
            }
        }
        d.push_back(1.0L / power.real());
        integral += d.back();
    }
    integral *= 2.0L * 3.14159265358979323846L / rec.nDirections;
    std::vector<double> result;
    for (const long double value : d) {
        result.push_back(static_cast<double>(value / integral));
    }
    result.back() = result.front();
    return result;
}

TEST(MlmFactor, TimesItsConjugateIsThePermutedMatrix) {
    for (int n = 1; n <= 6; ++n) {
        for (std::uint32_t seed = 1; seed <= 8; ++seed) {
            const RecordPtr rec = problem(n, 90, seed);
            const Matrix c = unpack(*rec, n);
            ov::factorMlmMatrix(*rec);
            Matrix l = unpack(*rec, n);
            for (std::size_t j = 0; j < l.size(); ++j) {
                for (std::size_t i = j + 1; i < l.size(); ++i) {
                    l[j][i] = 0.0L; // what lies above the diagonal belongs to the packing
                }
            }
            for (std::size_t j = 0; j < l.size(); ++j) {
                for (std::size_t i = 0; i < l.size(); ++i) {
                    Wide product{};
                    for (std::size_t m = 0; m < l.size(); ++m) {
                        product += l[j][m] * std::conj(l[i][m]);
                    }
                    const auto row = static_cast<std::size_t>(rec->mlmSeriesOrder[j]);
                    const auto column = static_cast<std::size_t>(rec->mlmSeriesOrder[i]);
                    ASSERT_LT(std::abs(product - c[row][column]), 1e-13L)
                        << "series " << n << ", seed " << seed;
                }
            }
        }
    }
}

TEST(MlmFactor, PivotsFallAndTheOrderIsAPermutation) {
    const RecordPtr rec = problem(6, 90, 3);
    ov::factorMlmMatrix(*rec);
    std::array<int, 6> order{};
    std::copy_n(rec->mlmSeriesOrder, 6, order.begin());
    std::sort(order.begin(), order.end());
    for (int i = 0; i < 6; ++i) {
        EXPECT_EQ(order[static_cast<std::size_t>(i)], i);
        EXPECT_GT(rec->mlmMatrix[i][i], 0.0);
        if (i > 0) {
            EXPECT_LE(rec->mlmMatrix[i][i], rec->mlmMatrix[i - 1][i - 1]);
        }
    }
}

TEST(MlmFactor, OfEqualPivotsTheFirstWins) {
    const RecordPtr rec = makeRecord();
    rec->nMlmSeries = 4;
    rec->convergenceTolerance = 1e-5F;
    const double diagonal[] = {2.0, 5.0, 5.0, 2.0};
    for (int i = 0; i < 4; ++i) {
        rec->mlmMatrix[i][i] = diagonal[i];
    }
    ov::factorMlmMatrix(*rec);
    const int expected[] = {1, 2, 0, 3}; // 0 moves to place 1, then to place 2
    for (int i = 0; i < 4; ++i) {
        EXPECT_EQ(rec->mlmSeriesOrder[i], expected[i]);
    }
}

TEST(MlmFactor, APivotMustExceedTheToleranceTimesTheGreatestDiagonal) {
    const double threshold = static_cast<double>(0.125F) * 8.0;
    for (const double last : {threshold, std::nextafter(threshold, 2.0)}) {
        const RecordPtr rec = makeRecord();
        rec->nMlmSeries = 2;
        rec->convergenceTolerance = 0.125F;
        rec->mlmMatrix[0][0] = 8.0;
        rec->mlmMatrix[1][1] = last;
        ov::factorMlmMatrix(*rec);
        EXPECT_EQ(rec->mlmMatrix[1][1], last > threshold ? std::sqrt(last) : 0.0);
    }
}

TEST(MlmFactor, AnEarlyStopClearsItsColumnAndLeavesTheLaterOnes) {
    const RecordPtr rec = makeRecord();
    rec->nMlmSeries = 4;
    rec->convergenceTolerance = 0.5F; // stops behind the first pivot
    for (int j = 0; j < 4; ++j) {
        for (int i = 0; i < 4; ++i) {
            rec->mlmMatrix[j][i] = 0.01 * (10 * j + i);
        }
        rec->mlmMatrix[j][j] = j == 0 ? 4.0 : 1.0 + 0.1 * j;
    }
    ov::factorMlmMatrix(*rec);
    EXPECT_EQ(rec->mlmMatrix[0][0], 2.0);
    EXPECT_DOUBLE_EQ(rec->mlmMatrix[2][0], 0.1); // divided by the pivot
    EXPECT_DOUBLE_EQ(rec->mlmMatrix[0][2], 0.01);
    for (int i = 1; i < 4; ++i) {
        EXPECT_EQ(rec->mlmMatrix[i][1], 0.0);
        EXPECT_EQ(rec->mlmMatrix[1][i], 0.0);
    }
    EXPECT_EQ(rec->mlmMatrix[2][2], 1.2);
    EXPECT_EQ(rec->mlmMatrix[3][2], 0.01 * 32);
    EXPECT_EQ(rec->mlmMatrix[2][3], 0.01 * 23);
    EXPECT_EQ(rec->mlmMatrix[3][3], 1.3);
}

TEST(Mlm, IsTheInverseOfTheQuadraticFormOfTheInverse) {
    for (int n = 1; n <= 6; ++n) {
        for (const int directions : {7, 90}) {
            const RecordPtr rec = problem(n, directions, static_cast<std::uint32_t>(n));
            const std::vector<double> expected = denseMlm(*rec);
            ov::estimateMlm(*rec);
            for (int k = 0; k < directions; ++k) {
                const double value = expected[static_cast<std::size_t>(k)];
                ASSERT_NEAR(rec->directionalDistribution[k], value, 1e-11 * value)
                    << n << " series, bin " << k;
            }
        }
    }
}

TEST(Mlm, TheLastDirectionRepeatsTheFirstAndTheRestIntegratesToOne) {
    const RecordPtr rec = problem(4, 90, 5);
    ov::estimateMlm(*rec);
    const double *const d = rec->directionalDistribution;
    EXPECT_EQ(d[89], d[0]);
    // The integral still counted what the last bin held: 1 / power for its own direction.
    const RecordPtr again = problem(4, 90, 5);
    const Matrix inverse = inverted(unpack(*again, 4));
    const auto power = [&](int k) {
        Wide sum{};
        for (int i = 0; i < 4; ++i) {
            for (int j = 0; j < 4; ++j) {
                sum += std::conj(Wide(again->transferRe[i][k], again->transferIm[i][k])) *
                       inverse[static_cast<std::size_t>(i)][static_cast<std::size_t>(j)] *
                       Wide(again->transferRe[j][k], again->transferIm[j][k]);
            }
        }
        return static_cast<double>(sum.real());
    };
    double sum = d[0] * power(0) / power(89);
    for (int k = 0; k < 89; ++k) {
        sum += d[k];
    }
    EXPECT_NEAR(sum * 2.0 * M_PI / 90.0, 1.0, 1e-12);
}

TEST(Mlm, OfOneSeriesFollowsItsGain) {
    const RecordPtr rec = makeRecord();
    rec->nMlmSeries = 1;
    rec->nDirections = 8;
    rec->mlmMatrix[0][0] = 3.0;
    for (int k = 0; k < 8; ++k) {
        rec->transferRe[0][k] = k == 2 ? 2.0 : 1.0;
    }
    ov::estimateMlm(*rec);
    EXPECT_NEAR(rec->directionalDistribution[2] / rec->directionalDistribution[1], 0.25, 1e-15);
}

TEST(Mlm, DoesNotDependOnTheScaleOfTheMatrixNorOnTheOrderOfTheSeries) {
    const RecordPtr rec = problem(3, 90, 11);
    const RecordPtr scaled = problem(3, 90, 11);
    const RecordPtr swapped = problem(3, 90, 11);
    for (auto &row : scaled->mlmMatrix) {
        std::transform(std::begin(row), std::end(row), std::begin(row),
                       [](double x) { return 1e-6 * x; });
    }
    // Series 0 and 2 change places: elements that cross the diagonal become their conjugates.
    auto &c = swapped->mlmMatrix;
    std::swap(c[0][0], c[2][2]);
    c[0][2] = -c[0][2];
    std::swap(c[1][0], c[2][1]);
    std::swap(c[0][1], c[1][2]);
    c[0][1] = -c[0][1];
    c[1][2] = -c[1][2];
    std::swap_ranges(swapped->transferRe[0], swapped->transferRe[0] + 90, swapped->transferRe[2]);
    std::swap_ranges(swapped->transferIm[0], swapped->transferIm[0] + 90, swapped->transferIm[2]);
    ov::estimateMlm(*rec);
    ov::estimateMlm(*scaled);
    ov::estimateMlm(*swapped);
    for (int k = 0; k < 90; ++k) {
        const double value = rec->directionalDistribution[k];
        EXPECT_NEAR(scaled->directionalDistribution[k], value, 1e-12 * value);
        EXPECT_NEAR(swapped->directionalDistribution[k], value, 1e-12 * value);
    }
}

TEST(Mlm, ADroppedSeriesCountsAsNothingAndTakesTheFirstPlace) {
    const RecordPtr rec = problem(2, 30, 2);
    rec->mlmMatrix[0][0] = 4.0;
    rec->mlmMatrix[1][1] = 0.0; // no energy: stops behind the first pivot
    rec->mlmMatrix[1][0] = rec->mlmMatrix[0][1] = 0.0;
    ov::estimateMlm(*rec);
    EXPECT_EQ(rec->mlmSeriesOrder[1], 0);
    for (int k = 0; k < 29; ++k) {
        const auto gain = [&rec](int d) {
            return std::norm(std::complex<double>(rec->transferRe[0][d], rec->transferIm[0][d]));
        };
        const double ratio = rec->directionalDistribution[k] / rec->directionalDistribution[0];
        EXPECT_NEAR(ratio, gain(0) / gain(k), 1e-12 * ratio);
    }
}

TEST(Mlm, AToleranceAboveEveryPivotStopsAtOnceAndGivesNoFiniteEstimate) {
    const RecordPtr rec = problem(3, 90, 4);
    rec->convergenceTolerance = 2.0F;
    ov::estimateMlm(*rec);
    for (int i = 0; i < 3; ++i) {
        EXPECT_EQ(rec->mlmMatrix[i][0], 0.0);
        EXPECT_EQ(rec->mlmMatrix[0][i], 0.0);
    }
    for (int k = 0; k < 90; ++k) {
        EXPECT_FALSE(std::isfinite(rec->directionalDistribution[k])) << k;
    }
}

TEST(Mlm, ASingleDirectionIsNotNormalised) {
    const RecordPtr rec = makeRecord();
    rec->nMlmSeries = 1;
    rec->nDirections = 1;
    rec->mlmMatrix[0][0] = 9.0;
    rec->transferRe[0][0] = 1.0;
    ov::estimateMlm(*rec);
    EXPECT_DOUBLE_EQ(rec->directionalDistribution[0], 9.0);
}

TEST(Mlm, CountsOutsideTheCapacitiesStayInside) {
    const RecordPtr rec = problem(6, 90, 1);
    rec->nMlmSeries = 9;
    rec->nDirections = 120;
    ov::estimateMlm(*rec);
    EXPECT_TRUE(std::isfinite(rec->directionalDistribution[89]));
    EXPECT_EQ(rec->mlmFirstEstimate[0], 0.0); // behind the distribution in the record
    rec->nMlmSeries = -1;
    rec->nDirections = -1;
    rec->directionalDistribution[0] = 5.0;
    ov::estimateMlm(*rec);
    ov::refineImlm(*rec);
    ov::computeModelCrossSpectra(*rec);
    EXPECT_EQ(rec->directionalDistribution[0], 5.0);
}

TEST(ModelCrossSpectra, AreTheWeightedProductsOfTheTransferFunctions) {
    const RecordPtr rec = problem(5, 45, 8);
    rec->mlmMatrix[2][3] = 55.0; // overwritten
    rec->mlmMatrix[5][5] = 66.0; // not part of the block
    ov::computeModelCrossSpectra(*rec);
    long double sum = 0.0L;
    Matrix expected(5, std::vector<Wide>(5));
    for (int k = 0; k < 45; ++k) {
        const long double weight = rec->imlmWork[k];
        sum += weight;
        for (std::size_t j = 0; j < 5; ++j) {
            for (std::size_t i = 0; i < 5; ++i) {
                expected[j][i] += weight * Wide(rec->transferRe[j][k], rec->transferIm[j][k]) *
                                  std::conj(Wide(rec->transferRe[i][k], rec->transferIm[i][k]));
            }
        }
    }
    const Matrix model = unpack(*rec, 5);
    for (std::size_t j = 0; j < 5; ++j) {
        for (std::size_t i = 0; i < 5; ++i) {
            EXPECT_LT(std::abs(model[j][i] - expected[j][i] / sum), 1e-14L);
        }
    }
    EXPECT_EQ(rec->mlmMatrix[5][5], 66.0);
}

// The refinement's rule, repeated with the dense estimate.
std::vector<double> plainRefinement(OVRecord &rec, const std::vector<double> &first,
                                    int iterations) {
    std::vector<double> work = first;
    std::vector<double> iterate = first;
    const std::size_t directions = first.size();
    for (int step = 0; step < iterations; ++step) {
        std::copy(work.begin(), work.end(), rec.imlmWork);
        ov::computeModelCrossSpectra(rec);
        const std::vector<double> model = denseMlm(rec);
        double sum = 0.0;
        double greatest = 0.0;
        for (std::size_t k = 0; k < directions; ++k) {
            greatest = std::max(greatest, std::fabs(first[k] - model[k]));
            work[k] = std::max(0.0, first[k] - model[k] + iterate[k]);
            sum += work[k];
        }
        for (double &value : work) {
            value /= sum * 2.0 * M_PI / static_cast<double>(directions);
        }
        if (static_cast<double>(rec.convergenceTolerance) >= greatest) {
            break;
        }
        iterate = work;
    }
    return work;
}

TEST(Imlm, FeedsTheDifferenceBackAndRenormalises) {
    for (const int limit : {1, 2, 3}) {
        const RecordPtr rec = problem(4, 90, 21);
        const RecordPtr plain = problem(4, 90, 21);
        const std::vector<double> first = denseMlm(*plain);
        rec->iterationLimit = limit;
        ov::estimateMlm(*rec);
        ov::refineImlm(*rec);
        const std::vector<double> expected = plainRefinement(*plain, first, limit);
        double sum = 0.0;
        for (int k = 0; k < 90; ++k) {
            // ulp: each iterate is rounded to single precision
            ASSERT_NEAR(rec->imlmWork[k], expected[static_cast<std::size_t>(k)], 2e-7)
                << limit << ", bin " << k;
            EXPECT_EQ(rec->directionalDistribution[k], rec->imlmWork[k]);
            EXPECT_GE(rec->imlmWork[k], 0.0);
            sum += rec->imlmWork[k];
        }
        EXPECT_NEAR(sum * 2.0 * M_PI / 90.0, 1.0, 1e-12);
    }
}

// exact: the clipped correction is a single-precision number, its sum and its share are not.
TEST(Imlm, RoundsTheCorrectionBeforeItIsNormalised) {
    const RecordPtr rec = problem(4, 90, 21);
    const RecordPtr model = problem(4, 90, 21);
    rec->iterationLimit = 1;
    ov::estimateMlm(*rec);
    const std::vector<double> first(rec->directionalDistribution,
                                    rec->directionalDistribution + 90);
    ov::refineImlm(*rec);

    std::copy(first.begin(), first.end(), model->imlmWork);
    ov::computeModelCrossSpectra(*model);
    ov::estimateMlm(*model);
    std::vector<double> corrected;
    double sum = 0.0;
    for (std::size_t k = 0; k < 90; ++k) {
        const double value = first[k] - model->directionalDistribution[k] + first[k];
        corrected.push_back(static_cast<double>(static_cast<float>(std::max(0.0, value))));
        sum += corrected.back();
    }
    for (std::size_t k = 0; k < 90; ++k) {
        EXPECT_EQ(rec->imlmWork[k], corrected[k] / (sum * (2.0 * M_PI / 90))) << k;
    }
}

TEST(Imlm, KeepsTheFirstEstimateUnchanged) {
    const RecordPtr rec = problem(4, 90, 21);
    ov::estimateMlm(*rec);
    std::vector<double> first(rec->directionalDistribution, rec->directionalDistribution + 90);
    ov::refineImlm(*rec);
    EXPECT_TRUE(std::equal(first.begin(), first.end(), rec->mlmFirstEstimate));
    EXPECT_FALSE(std::equal(first.begin(), first.end(), rec->directionalDistribution));
}

TEST(Imlm, WithoutIterationsIsThePlainEstimate) {
    const RecordPtr rec = problem(4, 90, 21);
    rec->iterationLimit = 0;
    ov::estimateMlm(*rec);
    std::vector<double> first(rec->directionalDistribution, rec->directionalDistribution + 90);
    ov::refineImlm(*rec);
    EXPECT_TRUE(std::equal(first.begin(), first.end(), rec->directionalDistribution));
    EXPECT_TRUE(std::equal(first.begin(), first.end(), rec->imlmWork));
}

TEST(Imlm, MeetingTheToleranceAtOnceReturnsTheUpdateAndNotTheFirstEstimate) {
    const RecordPtr rec = problem(4, 90, 21);
    ov::estimateMlm(*rec);
    const std::vector<double> first(rec->directionalDistribution,
                                    rec->directionalDistribution + 90);
    rec->convergenceTolerance = 0.9F; // above every difference, below the first pivot
    ov::refineImlm(*rec);
    EXPECT_FALSE(std::equal(first.begin(), first.end(), rec->directionalDistribution));
    EXPECT_TRUE(std::equal(first.begin(), first.end(), rec->imlmEstimate)); // not advanced
    double sum = 0.0;
    for (int k = 0; k < 90; ++k) {
        EXPECT_EQ(rec->directionalDistribution[k], rec->imlmWork[k]);
        sum += rec->imlmWork[k];
    }
    EXPECT_NEAR(sum * 2.0 * M_PI / 90.0, 1.0,
                1e-12); // the closed circle alone would miss 1 by far more
}

TEST(Imlm, NegativeCorrectionsAreClipped) {
    // A first estimate with a hole so deep that the correction would make it negative.
    const RecordPtr rec = problem(4, 90, 33);
    ov::estimateMlm(*rec);
    rec->directionalDistribution[40] = 0.0;
    rec->iterationLimit = 1;
    ov::refineImlm(*rec);
    EXPECT_EQ(rec->imlmWork[40], 0.0);
}

TEST(Imlm, AnEstimateThatIsNotANumberStaysNone) {
    const RecordPtr rec = problem(3, 90, 4);
    rec->convergenceTolerance = 2.0F;
    ov::estimateMlm(*rec);
    ov::refineImlm(*rec);
    EXPECT_FALSE(std::isfinite(rec->directionalDistribution[10]));
}

TEST(Imlm, RecoversANarrowPeakBetterThanTheFirstEstimate) {
    const RecordPtr rec = problem(5, 90, 13);
    std::vector<double> truth(90);
    for (int k = 0; k < 90; ++k) {
        truth[static_cast<std::size_t>(k)] = std::pow(std::cos(M_PI * (k - 30) / 90.0), 20.0);
        rec->imlmWork[k] = truth[static_cast<std::size_t>(k)];
    }
    ov::computeModelCrossSpectra(*rec);
    for (int s = 0; s < 5; ++s) {
        rec->mlmMatrix[s][s] += 1e-3;
    }
    ov::estimateMlm(*rec);
    const double plain = rec->directionalDistribution[30];
    ov::refineImlm(*rec);
    const auto peak =
        std::max_element(rec->directionalDistribution, rec->directionalDistribution + 90);
    EXPECT_NEAR(static_cast<double>(peak - rec->directionalDistribution), 30.0, 2.0);
    EXPECT_GT(rec->directionalDistribution[30], plain);
}

} // namespace
