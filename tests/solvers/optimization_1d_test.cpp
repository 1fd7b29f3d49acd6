#include <qx/solvers/optimization.h>

#include <cmath>
#include <limits>
#include <vector>

#include "tests/typed_test.h"

namespace {

/// A function with its derivative that records where the function and how often the derivative is evaluated.
template <typename T>
struct Recorder {
  T (*function)(T);
  T (*derivative)(T) = nullptr;
  std::vector<T> abscissas{};
  std::size_t derivatives = 0;

  static T F(T x, void* user) {
    Recorder& recorder = *static_cast<Recorder*>(user);
    recorder.abscissas.push_back(x);
    return recorder.function(x);
  }
  static T DF(T x, void* user) {
    Recorder& recorder = *static_cast<Recorder*>(user);
    ++recorder.derivatives;
    EXPECT_EQ(x, recorder.abscissas.back());
    return recorder.derivative(x);
  }
};

template <typename T>
struct Functions {
  static T Parabola(T x) { return (x - 2) * (x - 2); }
  static T ParabolaSlope(T x) { return 2 * (x - 2); }
  static T WrongSlope(T x) { return -2 * (x - 2); }
  static T Quartic(T x) { return (x * x - 2) * (x * x - 2) + x; }
  static T QuarticSlope(T x) { return 4 * x * (x * x - 2) + 1; }
  static T Pole(T x) { return x + 1 / x; }
  static T PoleSlope(T x) { return 1 - 1 / (x * x); }
  static T Constant(T) { return 7; }
  static T NotANumber(T) { return std::numeric_limits<T>::quiet_NaN(); }
};

template <typename T>
class Minimisation1D : public ::testing::Test {
 protected:
  static constexpr bool isDouble = sizeof(T) == 8;
  static constexpr T tol = isDouble ? T(1e-6) : T(1e-3);
};
TYPED_TEST_SUITE(Minimisation1D, FloatTypes);

TYPED_TEST(Minimisation1D, TriplesAreFoundAlongTheToldPoints) {
  using T = TypeParam;
  const T growth = T(1.61803399);
  const T c = 1 + growth;
  struct {
    T (*function)(T);
    T a, b;
    std::vector<T> abscissas;
    T triple[3];
  } const cases[] = {
      // no exchange at equal values, and a bracket at once
      {[](T x) { return (x - T(0.5)) * (x - T(0.5)); }, 0, 1, {0, 1, c}, {0, 1, c}},
      // downhill from 1 to 0 is uphill: exchanged; u beyond c is taken, and one more beyond it from the old c
      {[](T x) { return (x - 3) * (x - 3); }, 1, 0, {1, 0, c, 3, 3 + growth * (3 - c)}, {c, 3, 3 + growth * (3 - c)}},
      // u between b and c, below both
      {Functions<T>::Parabola, 0, 1, {0, 1, c, 2}, {1, 2, c}},
      // a concave start: the parabola points backwards, is evaluated and thrown away
      {[](T x) { return x < 4 ? -x * x : x; }, 0, 1, {0, 1, c, 0, c + growth * (c - 1)}, {1, c, c + growth * (c - 1)}},
  };
  for (const auto& example : cases) {
    Recorder<T> recorder{example.function};
    T a = example.a, b = example.b, c2 = 0, fa = 0, fb = 0, fc = 0;
    CQXOptimization::FindInitTriple(a, b, c2, fa, fb, fc, &recorder, Recorder<T>::F);
    ASSERT_EQ(recorder.abscissas.size(), example.abscissas.size());
    for (std::size_t i = 0; i < example.abscissas.size(); ++i) {
      EXPECT_NEAR(recorder.abscissas[i], example.abscissas[i], 64 * std::numeric_limits<T>::epsilon()) << i;
    }
    const T triple[] = {a, b, c2};
    const T values[] = {fa, fb, fc};
    for (int i = 0; i < 3; ++i) {
      EXPECT_NEAR(triple[i], example.triple[i], 64 * std::numeric_limits<T>::epsilon());
      EXPECT_EQ(values[i], example.function(triple[i]));
    }
  }
}

TYPED_TEST(Minimisation1D, EvaluationsAndMinimaOfTheThreeMethods) {
  using T = TypeParam;
  using F = Functions<T>;
  // Counts by an independent model of the methods; minima from the formulas of the functions.
  const struct {
    T (*function)(T);
    T (*derivative)(T);
    T a, b, c, minimum;
    std::size_t golden[2], parabolic[2], secant[2];  // for double and float
  } cases[] = {
      {F::Parabola, F::ParabolaSlope, 0, 1, 5, 2, {32, 18}, {6, 6}, {22, 12}},
      {F::Quartic, F::QuarticSlope, -2, -1, 0, T(-1.4729980), {30, 16}, {10, 8}, {20, 11}},
      {F::Pole, F::PoleSlope, T(0.25), 2, 8, 1, {33, 19}, {14, 12}, {22, 11}},
  };
  const std::size_t type = this->isDouble ? 0 : 1;
  for (const auto& example : cases) {
    const auto check = [&](const Recorder<T>& recorder, std::size_t count, T value, T xMin) {
      EXPECT_EQ(recorder.abscissas.size(), count);
      EXPECT_EQ(value, example.function(xMin));
      EXPECT_NEAR(xMin, example.minimum, 3 * this->tol * std::max(T(1), std::abs(example.minimum)));
    };
    const auto [f, df, a, b, c, minimum, golden, parabolic, secant] = example;
    T xMin = -1;
    Recorder<T> recorder{f};
    T value = CQXOptimization::GoldenSection(a, b, c, this->tol, xMin, &recorder, Recorder<T>::F);
    check(recorder, golden[type], value, xMin);

    recorder = {f};
    value = CQXOptimization::ParabolicDescent(a, b, c, this->tol, xMin, &recorder, Recorder<T>::F);
    check(recorder, parabolic[type], value, xMin);

    recorder = {f, df};
    value = CQXOptimization::DerivativeEstimationDescent(a, b, c, this->tol, xMin, &recorder, Recorder<T>::F,
                                                         Recorder<T>::DF);
    check(recorder, secant[type], value, xMin);
    EXPECT_LE(secant[type] - recorder.derivatives, 1u);  // the last step may do without
  }
}

TYPED_TEST(Minimisation1D, TiesLimitsAndSenses) {
  using T = TypeParam;
  using F = Functions<T>;
  T xMin;
  // Equal values keep the left part, and the right of the last two points is returned.
  Recorder<T> recorder{F::Constant};
  EXPECT_EQ(CQXOptimization::GoldenSection(1, 2, 5, this->tol, xMin, &recorder, Recorder<T>::F), 7);
  EXPECT_EQ(xMin, *(recorder.abscissas.end() - 2));
  EXPECT_NEAR(xMin, 1, 3 * this->tol);
  // Steps that are not worse are taken: a constant leads to an end of the interval.
  EXPECT_EQ(CQXOptimization::ParabolicDescent(1, 2, 5, this->tol, xMin, F::Constant), 7);
  EXPECT_NEAR(xMin, 5, 15 * this->tol);
  // A derivative of the wrong sign leads away from the minimum: the start stays the best.
  EXPECT_EQ(CQXOptimization::DerivativeEstimationDescent(0, 1, 5, this->tol, xMin, F::Parabola, F::WrongSlope), 1);
  EXPECT_EQ(xMin, 1);
  // Not a number never meets the tolerances of the descents, nor the golden section's while the interval is wide.
  T(*const methods[])
  (T, T, T, T, T&, void*, T (*)(T, void*)) = {CQXOptimization::GoldenSection, CQXOptimization::ParabolicDescent};
  for (const auto method : methods) {
    recorder = {F::NotANumber};
    EXPECT_TRUE(std::isnan(method(0, 1, 5, this->tol, xMin, &recorder, Recorder<T>::F)));
    EXPECT_LE(recorder.abscissas.size(), 101u);
  }
  recorder = {F::NotANumber, F::NotANumber};
  EXPECT_TRUE(std::isnan(CQXOptimization::DerivativeEstimationDescent(0, 1, 5, this->tol, xMin, &recorder,
                                                                      Recorder<T>::F, Recorder<T>::DF)));
  EXPECT_LE(recorder.abscissas.size(), 101u);
  T a = 0, b = 1, c, fa, fb, fc;  // a triple that runs off, and one of no numbers
  CQXOptimization::FindInitTriple(a, b, c, fa, fb, fc, [](T x) { return -x; });
  EXPECT_TRUE(std::isinf(fc));
  CQXOptimization::FindInitTriple(a, b, c, fa, fb, fc, F::NotANumber);
  EXPECT_TRUE(std::isnan(fc));
}

}  // namespace
