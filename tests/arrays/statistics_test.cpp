#include <qx/arrays/random.h>
#include <qx/arrays/sorting.h>
#include <qx/arrays/statistics.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <limits>
#include <set>
#include <utility>
#include <vector>

#include "tests/typed_test.h"

namespace {

constexpr qxSignificanceLevel levels[] = {QX_SIGNIFICANCE_20, QX_SIGNIFICANCE_10, QX_SIGNIFICANCE_5,
                                          static_cast<qxSignificanceLevel>(7)};

/// What a test says at the levels 20, 10, 5 percent and at one that does not exist.
using Verdicts = std::array<std::int32_t, 4>;

template <typename T>
class Statistics : public ::testing::Test {
 protected:
  static constexpr T eps = std::numeric_limits<T>::epsilon();
  using Values = std::vector<T>;

  static CQXStatistics<T> Of(Values& values) {
    return CQXStatistics<T>(static_cast<std::int32_t>(values.size()), values.data());
  }

  static Values Uniform(std::int32_t n, std::uint64_t seed) {
    CQXRandom<T> random;
    random.SetAlgorithm(1);
    random.SetXorshift64Seed(seed);
    random.Initialize();
    Values values(static_cast<std::size_t>(n));
    random.GetArrayNumbers(n, values.data());
    return values;
  }

  /// The quantiles (i + 0.5) / n of the uniform distribution on 0..1.
  static Values UniformGrid(std::size_t n) {
    Values values(n);
    for (std::size_t i = 0; i < n; ++i) values[i] = static_cast<T>((static_cast<double>(i) + 0.5) / double(n));
    return values;
  }

  /// The quantiles (i + 0.5) / n of the standard normal distribution, by bisection.
  static Values NormalGrid(std::size_t n) {
    Values values = UniformGrid(n);
    for (T& value : values) {
      double low = -10, high = 10;
      for (int step = 0; step < 60; ++step) {
        const double middle = (low + high) / 2;
        (0.5 * std::erfc(-middle / std::sqrt(2.0)) < static_cast<double>(value) ? low : high) = middle;
      }
      value = static_cast<T>(low);
    }
    return values;
  }

  template <typename Test>
  static Verdicts AtAllLevels(Test test) {
    return {test(levels[0]), test(levels[1]), test(levels[2]), test(levels[3])};
  }
};
TYPED_TEST_SUITE(Statistics, FloatTypes);

// NIST Statistical Reference Datasets, https://www.itl.nist.gov/div898/strd/
TYPED_TEST(Statistics, MomentsAgreeWithCertifiedValues) {
  std::vector<TypeParam> numAcc1{10000001, 10000003, 10000002};
  EXPECT_EQ(this->Of(numAcc1).Mean(), 10000002);
  EXPECT_EQ(this->Of(numAcc1).StandardDeviation(), 1);
  std::vector<TypeParam> numAcc2(1001, TypeParam(1.2));
  for (std::size_t i = 1; i < numAcc2.size(); ++i) numAcc2[i] = TypeParam(i % 2 != 0 ? 1.1 : 1.3);
  EXPECT_NEAR(this->Of(numAcc2).Mean(), 1.2, 1001 * double(this->eps));  // plain summation
  EXPECT_NEAR(this->Of(numAcc2).StandardDeviation(), 0.1, 1e-12 + 4 * double(this->eps));
}

// The first data set of F. J. Anscombe, Graphs in Statistical Analysis, The American Statistician 27, 1973; the figures
// printed there (9, 7.5, 11, 0.82, 3 + 0.5 x) in more digits, by fractions.
TYPED_TEST(Statistics, RegressionAgreesWithPublishedValues) {
  std::vector<TypeParam> x{10, 8, 13, 9, 11, 14, 6, 4, 12, 7, 5}, y;
  for (const double value : {8.04, 6.95, 7.58, 8.81, 8.33, 9.96, 7.24, 4.26, 10.84, 4.82, 5.68}) {
    y.push_back(static_cast<TypeParam>(value));
  }
  CQXStatistics<TypeParam> statistics = this->Of(x);
  TypeParam a = 0, b = 0, variance = -1;
  const double bound = 20 * double(this->eps);  // data are rounded to T
  EXPECT_EQ(statistics.Mean(), 9);
  EXPECT_EQ(statistics.Variance(), 11);
  EXPECT_NEAR(this->Of(y).Variance(), 4.127269090909091, 50 * bound);  // the one-pass form cancels
  EXPECT_EQ(statistics.LinearRegression(99, y.data(), 1, a, b), 1);
  EXPECT_NEAR(a, 0.5000909090909091, bound);
  EXPECT_NEAR(b, 3.0000909090909091, bound);
  EXPECT_EQ(statistics.GetResidualVariance(variance), 1);
  EXPECT_NEAR(variance, 1.5291877777777778, bound);
  EXPECT_NEAR(statistics.CorrelationCoefficient(11, y.data()), 0.8164205163448399, bound);

  std::vector<TypeParam> constant(11, TypeParam(0.1));
  EXPECT_EQ(statistics.CorrelationCoefficient(11, constant.data()), 0);
  EXPECT_EQ(this->Of(constant).LinearRegression(11, x.data(), 0, a, b), 1);
  EXPECT_EQ(a, 0);
  EXPECT_EQ(b, 9);
  EXPECT_EQ(statistics.LinearRegression(2, y.data(), 1, a, b), 0);
  EXPECT_EQ(b, 9);
  EXPECT_TRUE(std::isnan(statistics.Mean()));
}

TYPED_TEST(Statistics, SmallDeviationsReadAsZero) {
  std::vector<TypeParam> values{0, TypeParam(0.001)};
  EXPECT_NEAR(this->Of(values).Variance(), 5e-7, 1e-12);
  EXPECT_EQ(this->Of(values).StandardDeviation(), 0);
  values[1] = TypeParam(0.002);
  EXPECT_NEAR(this->Of(values).StandardDeviation(), 0.002 / std::sqrt(2.0), 1e-9);
}

TYPED_TEST(Statistics, MedianIsTheMiddleOfTheSortedArray) {
  for (std::int32_t n = 1; n < 60; ++n) {
    std::vector<TypeParam> values = this->Uniform(n, static_cast<std::uint64_t>(n)), sorted(values.size());
    for (const bool withNotANumber : {false, true}) {
      for (TypeParam& x : values) x = std::floor(16 * x);
      if (withNotANumber) values[values.size() / 3] = std::numeric_limits<TypeParam>::quiet_NaN();
      qxSort(n, values.data(), sorted.data(), 1, 0);
      const std::size_t m = (sorted.size() - 1) / 2;
      const TypeParam expected = n % 2 != 0 ? sorted[m] : (sorted[m] + sorted[m + 1]) / 2;
      const TypeParam median = this->Of(values).Median();
      EXPECT_TRUE(median == expected || (std::isnan(median) && std::isnan(expected))) << n;
    }
  }
  for (const std::int32_t n : {0, -4}) EXPECT_TRUE(std::isnan(CQXStatistics<TypeParam>(n, nullptr).Median()));
}

TYPED_TEST(Statistics, IntervalsAgreeWithTables) {
  const CQXStatistics<TypeParam> statistics(100, nullptr), fifty(50, nullptr);
  TypeParam low = 0, high = 0;
  const double z[] = {1.645, 1.96, 2.58, 2.81, 2.58};
  for (std::int32_t i = 0; i < 5; ++i) {
    statistics.MeanConfidenceInterval(static_cast<qxProbability>(i), 10, 2, low, high);
    EXPECT_NEAR(low, 10 - z[i] / 5, 20 * this->eps);
    EXPECT_NEAR(high, 10 + z[i] / 5, 20 * this->eps);
  }
  // Chi-square of 49 degrees of freedom at 0.05, 0.95 and at 0.01, 0.99, from the usual tables.
  const double quantiles[][2] = {{33.930, 66.339}, {28.941, 74.919}};
  for (std::int32_t i = 0; i < 2; ++i) {
    fifty.VarianceConfidenceInterval(static_cast<qxProbability>(i + 1), 4, low, high);
    EXPECT_NEAR(low, 49 * 4 / quantiles[i][1], 0.03 * double(low));
    EXPECT_NEAR(high, 49 * 4 / quantiles[i][0], 0.03 * double(high));
  }
}

TYPED_TEST(Statistics, KolmogorovSmirnovKeepsItsLimits) {
  const auto verdicts = [&](std::vector<TypeParam> values, TypeParam a, TypeParam b, std::int32_t kind) {
    return this->AtAllLevels([&](auto level) { return this->Of(values).KolmogorovSmirnovTest(a, b, level, kind); });
  };
  // A constant in the middle has the distance 0.5 from both laws; the limit is c / sqrt(n).
  const std::vector<std::pair<std::size_t, Verdicts>> cases{
      {4, {1, 1, 1, 0}}, {5, {0, 1, 1, 0}}, {6, {0, 0, 1, 0}}, {8, {0, 0, 0, 0}}};
  for (const auto& [n, expected] : cases) {
    EXPECT_EQ(verdicts(std::vector<TypeParam>(n, 3), 1, 5, 0), expected) << n;
    EXPECT_EQ(verdicts(std::vector<TypeParam>(n, 3), 3, 2, 1), expected) << n;
  }
  // A shift of 0.09 deviations is a distance of 0.0359; at 1000 elements the limits are 0.0338, 0.0386, 0.0430.
  EXPECT_EQ(verdicts(this->NormalGrid(1000), TypeParam(0.09), 1, 1), (Verdicts{0, 1, 1, 0}));
  // All elements take part, those beyond the last multiple of 1024 too.
  std::vector<TypeParam> values = this->UniformGrid(1024);
  values.resize(2024, 1);
  EXPECT_EQ(verdicts(values, 0, 1, 0), (Verdicts{0, 0, 0, 0}));
}

TYPED_TEST(Statistics, EquidistributionCountsTwentyBins) {
  const auto verdicts = [&](std::vector<TypeParam> values) {
    return this->AtAllLevels([&](auto level) { return this->Of(values).TestEquidistribution(10, 30, level); });
  };
  const auto make = [](const std::vector<int>& counts) {  // by bins, the rest one element each, 20 in all
    std::vector<TypeParam> values;
    for (std::size_t bin = 0; bin < 20; ++bin) {
      for (int i = 0; i < (bin < counts.size() ? counts[bin] : 1); ++i) values.push_back(10 + TypeParam(bin));
    }
    return values;
  };
  EXPECT_EQ(verdicts(make({})), (Verdicts{1, 1, 1, 1}));
  EXPECT_EQ(verdicts(make({4, 4, 0, 0, 0, 0, 0, 0})), (Verdicts{1, 1, 1, 1}));  // chi-square 24
  EXPECT_EQ(verdicts(make({4, 4, 2, 2, 2, 2, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0})), (Verdicts{0, 0, 0, 0}));
  const auto passesWith = [&](double x) {
    std::vector<TypeParam> values = make({});
    values.push_back(static_cast<TypeParam>(x));
    return verdicts(values)[2] != 0;
  };
  for (const double x : {9.25, 30.0, 30.75}) EXPECT_TRUE(passesWith(x)) << x;
  for (const double x : {9.0, 31.0, HUGE_VAL, -HUGE_VAL, std::nan("")}) EXPECT_FALSE(passesWith(x)) << x;
}

TYPED_TEST(Statistics, RunsUpAndDownAreCounted) {
  const struct {
    std::vector<TypeParam> values;
    Verdicts expected;
  } cases[] = {{{1, 2, 3, 4, 5}, {0, 0, 0, 0}},  // limits for 5 elements: 2.16, 1.72, 1.355 runs
               {{1, 2, 2, 3, 1}, {0, 1, 1, 1}},
               {{1, 2, 1, 2, 2}, {1, 1, 1, 1}},
               {{7}, {0, 0, 0, 0}}};
  for (auto c : cases) {
    EXPECT_EQ(this->AtAllLevels([&](auto level) { return this->Of(c.values).RunsUpAndDownTest(level); }), c.expected);
  }
  EXPECT_EQ(CQXStatistics<TypeParam>().RunsUpAndDownTest(QX_SIGNIFICANCE_5), 1);  // the limit is not a number
}

TYPED_TEST(Statistics, NormalMeanAndVarianceHaveTheirBounds) {
  std::vector<TypeParam> values{1, 3, 5, 7, 9, 11, 13, 15, 17};  // mean 9, variance 30, sqrt(2 / 8) = 0.5
  const auto expect = [&](TypeParam mean, TypeParam variance, const Verdicts& expected) {
    const CQXStatistics<TypeParam> statistics = this->Of(values);
    EXPECT_EQ(this->AtAllLevels([&](auto level) { return statistics.TestNormalMean(mean, level); }), expected);
    EXPECT_EQ(this->AtAllLevels([&](auto level) { return statistics.TestNormalVariance(variance, level); }), expected);
  };
  expect(9 + 7, 80, {1, 1, 1, 1});  // 7 / 5.477 = 1.278; 30 / 80 = 0.375; lower bounds 0.36, 0.1775, 0.02
  expect(9 - 9, 160, {0, 1, 1, 1});
  expect(9 + 10, 1000, {0, 0, 1, 1});
  expect(9 - 10, 16, {0, 0, 1, 1});  // 30 / 16 = 1.875; upper bounds 1.64, 1.8225, 1.98
  expect(9 - 11, 15, {0, 0, 0, 0});
}

TYPED_TEST(Statistics, OrderingsHaveRanksAndRanksAreTested) {
  using Stat = CQXStatistics<TypeParam>;
  std::vector<TypeParam> block{1, 2, 3, 4};
  std::set<std::int32_t> ranks;
  do {
    ranks.insert(Stat::PermutationValue(4, block.data()));
  } while (std::next_permutation(block.begin(), block.end()));
  EXPECT_EQ(ranks.size(), 24u);
  EXPECT_EQ(*ranks.begin(), 0);
  EXPECT_EQ(*ranks.rbegin(), 23);
  EXPECT_EQ(Stat::PermutationValue(3, block.data()), 5);
  EXPECT_EQ(Stat::PermutationValue(-1, nullptr), 0);

  const auto verdicts = [&](const std::vector<int>& counts) {  // six blocks of three
    std::vector<TypeParam> values;
    std::vector<TypeParam> ordering{1, 2, 3};
    for (const int count : counts) {
      for (int i = 0; i < count; ++i) values.insert(values.end(), ordering.begin(), ordering.end());
      std::next_permutation(ordering.begin(), ordering.end());
    }
    return this->AtAllLevels([&](auto level) { return this->Of(values).PermutationTest(3, level); });
  };
  EXPECT_EQ(verdicts({1, 1, 1, 1, 1, 1}), (Verdicts{1, 1, 1, 1}));
  EXPECT_EQ(verdicts({0, 4, 1, 0, 1, 0}), (Verdicts{0, 1, 1, 1}));  // chi-square 12
  EXPECT_EQ(verdicts({0, 4, 2, 0, 0, 0}), (Verdicts{0, 0, 1, 1}));  // 14
  EXPECT_EQ(verdicts({5, 0, 0, 1, 0, 0}), (Verdicts{0, 0, 0, 0}));  // 20

  std::vector<TypeParam> good = this->Uniform(2000, 1);
  EXPECT_EQ(this->Of(good).PermutationTest(2, QX_SIGNIFICANCE_5), 1);
  for (const std::int32_t k : {std::numeric_limits<std::int32_t>::min(), -1, 0, 13}) {
    EXPECT_EQ(this->Of(good).PermutationTest(k, QX_SIGNIFICANCE_5), 0) << k;
  }
}

TYPED_TEST(Statistics, CascadesGradeGoodAndBadSamples) {
  std::vector<TypeParam> normal = this->NormalGrid(3000), uniform = this->UniformGrid(3000);
  EXPECT_EQ(this->Of(normal).TestNormality(0, 1), QX_TEST_PASSED_STRICT);
  EXPECT_EQ(this->Of(uniform).TestNormality(TypeParam(0.5), 1), QX_TEST_FAILED);
  EXPECT_EQ(this->Of(uniform).TestUniformity(0, 1), QX_TEST_PASSED_STRICT);
  EXPECT_EQ(this->Of(normal).TestUniformity(-4, 4), QX_TEST_FAILED);
  std::vector<TypeParam> shifted = this->UniformGrid(1100);
  for (TypeParam& x : shifted) x = TypeParam(0.036) + TypeParam(0.964) * x;
  EXPECT_EQ(this->Of(shifted).TestUniformity(0, 1), QX_TEST_DOUBTFUL);  // distance 0.036, chi-square 29: 1 + 3
  std::vector<TypeParam> random = this->Uniform(50000, 1);
  EXPECT_LE(this->Of(random).TestRandomness(), QX_TEST_DOUBTFUL);
  EXPECT_EQ(this->Of(uniform).TestRandomness(), QX_TEST_FAILED);
}

TYPED_TEST(Statistics, FiltersSmoothWithinTheirRange) {
  const TypeParam third = TypeParam(1.0 / 3);
  std::vector<TypeParam> values{0, 0, 0, 1, 0, 0, 1};
  for (const std::int32_t width : {1, 0, -7}) this->Of(values).GaussFiltering(width);
  CQXStatistics<TypeParam>(std::numeric_limits<std::int32_t>::min(), nullptr).AverageFiltering(3);
  EXPECT_EQ(values, (std::vector<TypeParam>{0, 0, 0, 1, 0, 0, 1}));
  std::vector<TypeParam> part = values, all = values;
  this->Of(values).AverageFiltering(3);
  EXPECT_EQ(values, (std::vector<TypeParam>{0, 0, third, third, third, third, TypeParam(0.5)}));
  this->Of(part).AverageFiltering(3, 3, 5);
  EXPECT_EQ(part, (std::vector<TypeParam>{0, 0, 0, TypeParam(0.5), third, 0, 1}));
  this->Of(all).AverageFiltering(std::numeric_limits<std::int32_t>::max(), -5, 99);
  EXPECT_EQ(all, (std::vector<TypeParam>(7, TypeParam(2.0 / 7))));

  std::vector<TypeParam> impulse(21, 0);
  impulse[10] = 1;
  impulse[0] = std::numeric_limits<TypeParam>::quiet_NaN();
  this->Of(impulse).GaussFiltering(7);  // sigma 1
  for (std::size_t d = 0; d <= 3; ++d) {
    const double expected = std::exp(-0.5 * double(d * d));
    EXPECT_NEAR(impulse[10 + d] / impulse[10], expected, 8 * this->eps);
    EXPECT_EQ(impulse[10 + d], impulse[10 - d]);
  }
  EXPECT_TRUE(std::isnan(impulse[3]));
  EXPECT_EQ(impulse[14], 0);
}

}  // namespace
