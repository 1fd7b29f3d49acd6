#include <qx/arrays/gauss.h>

#include <cmath>
#include <limits>
#include <numeric>
#include <vector>

#include "tests/typed_test.h"

namespace {

template <typename T>
class Gauss : public ::testing::Test {
 protected:
  static constexpr T eps = std::numeric_limits<T>::epsilon();
  static void ExpectClose(T value, double expected) {
    EXPECT_NEAR(value, expected, 4 * double(eps) * std::abs(expected)) << expected;
  }
};
TYPED_TEST_SUITE(Gauss, FloatTypes);

// Calculated with 50 digits by mpmath 1.3 at arguments that both types hold.
TYPED_TEST(Gauss, IntegralAndInverseHaveFullPrecision) {
  const double values[][2] = {{-37.5, 4.6053530095819548438e-308}, {-12.3125, 3.8791093609198041529e-35},
                              {-5, 2.8665157187919391167e-7},      {-1.125, 0.13029451713680885461},
                              {-0.0625, 0.4750823309707527788},    {0, 0.5},
                              {0.75, 0.77337264762313180067},      {4.5, 0.99999660232687526994}};
  for (const auto& [x, p] : values) {
    if (std::is_same_v<TypeParam, float> && x < -12) continue;  // below the smallest float
    this->ExpectClose(qxCalculateGaussIntegral(static_cast<TypeParam>(x)), p);
  }
  const double quantiles[][2] = {{0x1p-100, -11.484540434973037807}, {0x1p-20, -4.763001034267813957},
                                 {0.015625, -2.153874694061456213},  {0.25, -0.6744897501960817432},
                                 {0.375, -0.31863936396437516302},   {0.5, 0}};
  for (const auto& [p, x] : quantiles) {
    const TypeParam quantile = qxCalculateInverseGaussIntegral(static_cast<TypeParam>(p));
    this->ExpectClose(quantile, x);
    if (p > 0.01) {
      EXPECT_EQ(qxCalculateInverseGaussIntegral(static_cast<TypeParam>(1 - p)), -quantile);
    }
  }
}

TYPED_TEST(Gauss, IntegralsOfTailsDoNotCancel) {
  const auto between = [](double a, double b) {
    return qxCalculateGaussIntegral<TypeParam>(static_cast<TypeParam>(a), static_cast<TypeParam>(b), 2, TypeParam(0.5));
  };
  this->ExpectClose(between(1, 2.5), 0.81859461412036374138);  // -2 to 1 sigma
  this->ExpectClose(between(5, 5.5), 9.853078324938123057e-10);
  EXPECT_EQ(between(-1.5, -1), between(5, 5.5));
  EXPECT_EQ(between(5.5, 5), -between(5, 5.5));
  this->ExpectClose(between(2, 2.0009765625), 0.00077918364601739605594);
}

TYPED_TEST(Gauss, DegenerateArgumentsHaveStatedResults) {
  using Limits = std::numeric_limits<TypeParam>;
  EXPECT_EQ(qxCalculateInverseGaussIntegral(TypeParam(0)), -Limits::infinity());
  EXPECT_EQ(qxCalculateInverseGaussIntegral(TypeParam(1)), Limits::infinity());
  for (const TypeParam p : {TypeParam(-0.001), TypeParam(1.001), Limits::quiet_NaN()}) {
    EXPECT_TRUE(std::isnan(qxCalculateInverseGaussIntegral(p)));
  }
  EXPECT_TRUE(std::isfinite(qxCalculateInverseGaussIntegral(Limits::denorm_min())));
  EXPECT_EQ(qxCalculateGaussIntegral(-Limits::infinity()), 0);
  EXPECT_EQ(qxCalculateGaussIntegral(Limits::infinity()), 1);
  EXPECT_TRUE(std::isnan(qxCalculateGaussIntegral(Limits::quiet_NaN())));
  TypeParam untouched = 7;
  for (const std::int32_t count : {0, -3}) {
    EXPECT_EQ(qxGetGaussWeights(count, 1, &untouched), 0);
    EXPECT_EQ(qxGetGaussLegendreRule(count, &untouched, &untouched), 0);
  }
  for (const TypeParam sigma : {TypeParam(0), TypeParam(-1), Limits::quiet_NaN()}) {
    EXPECT_EQ(qxGetGaussWeights(1, sigma, &untouched), 0);
  }
  EXPECT_EQ(untouched, 7);
}

TYPED_TEST(Gauss, WeightsAreTheCurveOfSumOne) {
  for (const std::int32_t count : {1, 2, 3, 8, 21}) {
    for (const TypeParam sigma : {TypeParam(0.01), TypeParam(0.7), TypeParam(3), TypeParam(HUGE_VAL)}) {
      std::vector<TypeParam> w(static_cast<std::size_t>(count));
      ASSERT_EQ(qxGetGaussWeights(count, sigma, w.data()), 1);
      EXPECT_NEAR(std::accumulate(w.begin(), w.end(), 0.0), 1, 8 * double(this->eps));
      for (std::size_t i = 0; i < w.size(); ++i) EXPECT_EQ(w[i], w[w.size() - 1 - i]);
      const double middle = (count - 1) / 2.0;
      for (std::size_t i = 0; i < w.size(); ++i) {
        const double first = middle / double(sigma), d = (double(i) - middle) / double(sigma);
        if (first > 5) continue;
        EXPECT_NEAR(w[i], w[0] * std::exp((first * first - d * d) / 2), 64 * double(this->eps));
      }
      if (sigma < TypeParam(0.1)) {
        EXPECT_NEAR(w[w.size() / 2], count % 2 != 0 ? 1 : 0.5, this->eps);
      }
    }
  }
}

TYPED_TEST(Gauss, RulesAreExactForPolynomials) {
  for (const std::int32_t count : {1, 2, 3, 7, 20, 64}) {
    const std::size_t n = static_cast<std::size_t>(count);
    std::vector<TypeParam> x(n), w(n);
    ASSERT_EQ(qxGetGaussLegendreRule(count, x.data(), w.data()), 1);
    for (std::size_t i = 0; i < n; ++i) {
      EXPECT_EQ(x[i], -x[n - 1 - i]);
      EXPECT_EQ(w[i], w[n - 1 - i]);
      if (i > 0) {
        EXPECT_LT(x[i - 1], x[i]);
      }
    }
    for (std::int32_t degree = 0; degree < 2 * count; ++degree) {
      const TypeParam integral = qxIntegrate(count, x.data(), w.data(), 0, 1, [=](TypeParam t) {
        return std::pow(2 * t - 1, static_cast<TypeParam>(degree));
      });
      EXPECT_NEAR(integral, degree % 2 != 0 ? 0 : 1.0 / (degree + 1), 16 * double(this->eps)) << count << ' ' << degree;
    }
    const auto beyond = [=](TypeParam t) { return std::pow(t, static_cast<TypeParam>(2 * count)); };
    const TypeParam missed = qxIntegrate(count, x.data(), w.data(), -1, 1, beyond) - TypeParam(2.0 / (2 * count + 1));
    EXPECT_GT(std::abs(missed), count < 4 ? TypeParam(0.01) : TypeParam(-1));
  }
  TypeParam x[3], w[3];  // M. Abramowitz, I. A. Stegun, Handbook of Mathematical Functions, table 25.4
  qxGetGaussLegendreRule(3, x, w);
  this->ExpectClose(x[2], 0.774596669241483);
  this->ExpectClose(w[0], 0.555555555555556);
  this->ExpectClose(w[1], 0.888888888888889);
  this->ExpectClose(qxIntegrate(3, x, w, 3, 1, [](TypeParam t) { return t * t; }), -26.0 / 3);
}

}  // namespace
