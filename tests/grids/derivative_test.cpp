#include <qx/grids/derivative.h>

#include <algorithm>
#include <cmath>
#include <limits>
#include <vector>

#include "tests/typed_test.h"

namespace {

template <typename T>
class Derivative : public ::testing::Test {
 protected:
  static constexpr double eps = static_cast<double>(std::numeric_limits<T>::epsilon());
};
TYPED_TEST_SUITE(Derivative, FloatTypes);

/// x^degree, or its derivative.
double Power(double x, int degree, int order) {
  double factor = 1;
  for (; order > 0; --order) factor *= degree--;
  return degree < 0 ? 0 : factor * std::pow(x, degree);
}

TYPED_TEST(Derivative, PolynomialsAreDerivedExactlyUpToTheBorders) {
  using T = TypeParam;
  const T step = T(0.25);
  for (const int order : {1, 2}) {
    for (const int accuracy : {2, 4, 6}) {
      for (int n = order + accuracy; n < order + accuracy + 5; ++n) {
        for (int degree = 0; degree < order + accuracy; ++degree) {
          std::vector<T> values(static_cast<std::size_t>(n)), result(values.size(), T(77));
          const auto x = [&](int i) { return (i - 3) * 0.25; };
          for (int i = 0; i < n; ++i) values[static_cast<std::size_t>(i)] = T(Power(x(i), degree, 0));
          ASSERT_EQ(CQXDerivative<T>::Derive(n, values.data(), step, order, accuracy, result.data()), 1);
          const double size = std::pow(std::max(1.0, x(n)), degree) * 300 / (order == 1 ? 0.25 : 0.0625);
          for (int i = 0; i < n; ++i) {
            ASSERT_NEAR(double(result[static_cast<std::size_t>(i)]), Power(x(i), degree, order), size * this->eps)
                << order << ' ' << accuracy << ' ' << n << ' ' << degree << ' ' << i;
            if (degree == 0) {
              ASSERT_EQ(result[static_cast<std::size_t>(i)], 0);
            }
          }
          // Along the axes of a grid, the other axis being a factor; in place.
          CQXGrid<T> grid(n, 2), turned(2, n);
          for (std::int32_t i = 0; i < n; ++i) {
            for (std::int32_t k = 0; k < 2; ++k)
              turned(k, i) = grid(i, k) = values[static_cast<std::size_t>(i)] * T(k + 1);
          }
          ASSERT_EQ(CQXDerivative<T>::DeriveAlongX(grid, step, order, accuracy, grid), 1);
          ASSERT_EQ(CQXDerivative<T>::DeriveAlongY(turned, step, order, accuracy, turned), 1);
          for (std::int32_t i = 0; i < n; ++i) {
            for (std::int32_t k = 0; k < 2; ++k) {  // twice the samples give exactly twice the derivative
              ASSERT_EQ(grid(i, k), result[static_cast<std::size_t>(i)] * T(k + 1));
              ASSERT_EQ(turned(k, i), grid(i, k));
            }
          }
        }
      }
    }
  }
}

TEST(DerivativeOfDouble, ErrorsFallWithThePowerOfTheStep) {
  for (const int order : {1, 2}) {
    for (const int accuracy : {2, 4, 6}) {
      double errors[2] = {};
      for (const int fine : {0, 1}) {
        const int n = fine != 0 ? 33 : 17;
        const double step = 3.2 / (n - 1);
        std::vector<double> values, result(static_cast<std::size_t>(n));
        for (int i = 0; i < n; ++i) values.push_back(std::sin(1 + i * step));
        CQXDerivative<double>::Derive(n, values.data(), step, order, accuracy, result.data());
        for (int i = 0; i < n; ++i) {
          const double exact = order == 1 ? std::cos(1 + i * step) : -std::sin(1 + i * step);
          errors[fine] = std::max(errors[fine], std::abs(result[static_cast<std::size_t>(i)] - exact));
        }
      }
      EXPECT_NEAR(std::log2(errors[0] / errors[1]), accuracy, 0.7) << order;
    }
  }
}

TYPED_TEST(Derivative, KnownWeightsAndRefusedArguments) {
  using T = TypeParam;
  const T places[] = {0, 1, 2, 3, 4, 5, 6};
  const struct {
    std::int32_t n, order;
    T at;
    std::vector<double> weights;
  } known[] = {{3, 1, 1, {-1. / 2, 0, 1. / 2}},
               {3, 1, 0, {-3. / 2, 2, -1. / 2}},
               {5, 1, 2, {1. / 12, -2. / 3, 0, 2. / 3, -1. / 12}},
               {5, 2, 2, {-1. / 12, 4. / 3, -5. / 2, 4. / 3, -1. / 12}},
               {7, 2, 3, {1. / 90, -3. / 20, 3. / 2, -49. / 18, 3. / 2, -3. / 20, 1. / 90}},
               {4, 2, 0, {2, -5, 4, -1}},
               {4, 3, 1, {-1, 3, -3, 1}},
               {2, 0, T(0.25), {0.75, 0.25}},
               {1, 0, 5, {1}}};
  T weights[7];
  for (const auto& k : known) {
    ASSERT_EQ(CQXDerivative<T>::FindWeights(k.n, places, k.at, k.order, weights), 1);
    for (std::size_t i = 0; i < k.weights.size(); ++i) EXPECT_NEAR(double(weights[i]), k.weights[i], 8 * this->eps);
  }
  T values[8] = {}, result[8] = {77};
  const struct {
    std::int32_t n, order, accuracy;
  } refused[] = {{8, 0, 2}, {8, 3, 2}, {8, 1, 0}, {8, 1, 3}, {8, 2, 8}, {2, 1, 2}, {3, 2, 2}, {7, 2, 6}, {-1, 1, 2}};
  CQXGrid<T> grid(2, 3), tall(3, 2), target(1, 1);
  for (const auto& r : refused) {
    EXPECT_EQ(CQXDerivative<T>::Derive(r.n, values, 1, r.order, r.accuracy, result), 0) << r.n;
  }
  EXPECT_EQ(CQXDerivative<T>::DeriveAlongX(grid, 1, 1, 2, target), 0);
  EXPECT_EQ(CQXDerivative<T>::DeriveAlongY(tall, 1, 1, 2, target), 0);
  EXPECT_EQ(CQXDerivative<T>::Laplacian(CQXGrid<T>(3, 4), 1, 2, target), 0);
  EXPECT_EQ(CQXDerivative<T>::Laplacian(CQXGrid<T>(4, 3), 1, 2, target), 0);
  EXPECT_EQ(CQXDerivative<T>::FindWeights(2, places, 0, 2, weights), 0);
  EXPECT_EQ(CQXDerivative<T>::FindWeights(2, places, 0, -1, weights), 0);
  EXPECT_EQ(result[0] + T(target.Width()), 78);

  CQXGrid<T> paraboloid(5, 6);
  for (std::int32_t y = 0; y < 6; ++y) {
    for (std::int32_t x = 0; x < 5; ++x) paraboloid(x, y) = T(x * x + 3 * y * y);
  }
  ASSERT_EQ(CQXDerivative<T>::Laplacian(paraboloid, T(0.5), 2, paraboloid), 1);
  for (std::size_t i = 0; i < paraboloid.Count(); ++i) EXPECT_NEAR(double(paraboloid.Data()[i]), 32, 1e4 * this->eps);
}

}  // namespace
