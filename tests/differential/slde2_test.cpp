#include <qx/differential/slde2.h>

#include <array>
#include <cmath>
#include <limits>
#include <vector>

#include "tests/transforms/reference.h"
#include "tests/typed_test.h"

namespace {

/// A state (x, y, 1): the forcing is a third column of the matrix, so that its exponential holds everything.
using State = std::array<double, 3>;
using System = std::array<State, 3>;

template <typename T>
System Augmented(const CQXMatrix2<T>& a, const CQXVector2<T>& f) {
  return {State{double(a[0]), double(a[1]), double(f.X())}, State{double(a[2]), double(a[3]), double(f.Y())}, State{}};
}

System Product(const System& a, const System& b) {
  System c{};
  for (std::size_t i = 0; i < 9; ++i) {
    for (std::size_t k = 0; k < 3; ++k) c[i / 3][i % 3] += a[i / 3][k] * b[k][i % 3];
  }
  return c;
}

State Apply(const System& a, const State& x) {
  State y{};
  for (std::size_t i = 0; i < 9; ++i) y[i / 3] += a[i / 3][i % 3] * x[i % 3];
  return y;
}

/// exp(m t) x by Taylor's series of m t / 2^10, squared ten times.
State ByExponential(System m, double t, const State& x) {
  for (auto& row : m) {
    for (double& element : row) element *= t / 1024;
  }
  System sum{}, term{};
  for (std::size_t i = 0; i < 3; ++i) sum[i][i] = term[i][i] = 1;
  for (int k = 1; k < 12; ++k) {
    term = Product(term, m);
    for (std::size_t i = 0; i < 9; ++i) {
      term[i / 3][i % 3] /= k;
      sum[i / 3][i % 3] += term[i / 3][i % 3];
    }
  }
  for (int i = 0; i < 10; ++i) sum = Product(sum, sum);
  return Apply(sum, x);
}

/// 2000 steps of the classical Runge-Kutta method.
State ByRungeKutta(const System& m, double t, State x) {
  const double h = t / 2000;
  const auto step = [](const State& a, double factor, const State& b) {
    return State{a[0] + factor * b[0], a[1] + factor * b[1], a[2]};
  };
  for (int i = 0; i < 2000; ++i) {
    const State k1 = Apply(m, x), k2 = Apply(m, step(x, h / 2, k1)), k3 = Apply(m, step(x, h / 2, k2));
    const State k4 = Apply(m, step(x, h, k3));
    for (std::size_t j = 0; j < 2; ++j) x[j] += h / 6 * (k1[j] + 2 * k2[j] + 2 * k3[j] + k4[j]);
  }
  return x;
}

template <typename T>
class SLDE2 : public ::testing::Test {
 protected:
  using Matrix = CQXMatrix2<T>;
  using Vector = CQXVector2<T>;
  static constexpr double eps = std::numeric_limits<T>::epsilon();

  /// Samples both directions against the exponential and the integration, and the solution for a later start.
  void ExpectSolved(const Matrix& a, const Vector& f, qxSLDE2GeneralType general, qxSLDE2InhomogenType inhomogen,
                    double bound) {
    CQXSLDE2<T> s(a, f);
    s.SetInitialCondition(9, 9, T(0.5));  // a trajectory sets its own
    s.CalculateGeneralSolution();
    ASSERT_EQ(s.GetGeneralType(), general);
    ASSERT_EQ(s.GetInhomogenType(), inhomogen);
    EXPECT_EQ(s.TestHomogGeneralSolution() == 1 && s.TestInhomSolution() == 1, true);
    // The regular constant has the sign of x' = A x - f.
    const System system = Augmented(a, inhomogen == QX_SLDE2_INHOM_REGULAR ? -f : f);
    const double x = random.In(-2, 2), y = random.In(-2, 2);
    const State start = {double(T(x)), double(T(y)), 1};
    for (const std::int32_t forward : {1, 0}) {
      std::vector<Vector> out(9, Vector(T(77)));
      s.CalculateTrajectory(T(x), T(y), 8, out.data(), T(0.125), forward);
      for (std::int32_t i = 0; i < 8; ++i) {
        const double t = (forward != 0 ? 0.125 : -0.125) * i;
        ExpectNear(out[std::size_t(i)], ByExponential(system, t, start), bound);
        if (i == 7) ExpectNear(out[7], ByRungeKutta(system, t, start), bound);
      }
      EXPECT_EQ(out[8].X() == 77 && out[8].Y() == 77, true);
    }
    s.SetInitialCondition(T(x), T(y), T(0.75));
    s.CalculateParticularSolution();
    for (const double t : {-0.25, 0.75, 1.5}) {
      ExpectNear(s.GetSolutionAtTime(T(t)), ByExponential(system, t - 0.75, start), 4 * bound);
    }
  }
  static void ExpectNear(const Vector& x, const State& expected, double bound) {
    EXPECT_NEAR(x.X(), expected[0], bound * (1 + std::abs(expected[0]) + std::abs(expected[1])));
    EXPECT_NEAR(x.Y(), expected[1], bound * (1 + std::abs(expected[0]) + std::abs(expected[1])));
  }

  /// D turned into a general basis.
  Matrix Similar(const Matrix& d) {
    const T angle = random.In(0.3, 1.2), shear = random.In(-0.5, 0.5);
    const Matrix p(std::cos(angle), shear - std::sin(angle), std::sin(angle), std::cos(angle));
    Matrix inverse;
    p.Inverse(inverse);
    return p * d * inverse;
  }

  reference::Random<T> random;
};
TYPED_TEST_SUITE(SLDE2, FloatTypes);

TYPED_TEST(SLDE2, EveryClassSolvesItsSystem) {
  using T = TypeParam;
  using M = CQXMatrix2<T>;
  const CQXVector2<T> none;
  for (int i = 0; i < 40; ++i) {
    const CQXVector2<T> f(this->random.In(0.5, 2), this->random.In(-2, -0.5));
    const T l = this->random.In(0.3, 1), m = this->random.In(-2, -0.5);
    const double bound = 2e3 * this->eps;
    const M real = this->Similar(M(l, 0, 0, m)), complex = this->Similar(M(m, l, -l, m));
    const M zero = this->Similar(M(0, 0, 0, m));
    this->ExpectSolved(real, none, QX_SLDE2_2_EXPONENTS, QX_SLDE2_HOMOGENEOUS, bound);
    this->ExpectSolved(real, f, QX_SLDE2_2_EXPONENTS, QX_SLDE2_INHOM_REGULAR, bound);
    this->ExpectSolved(zero, none, QX_SLDE2_2_EXPONENTS, QX_SLDE2_HOMOGENEOUS, bound);
    this->ExpectSolved(zero, f, QX_SLDE2_2_EXPONENTS, QX_SLDE2_INHOM_ZERO_EXPONENT, bound);
    this->ExpectSolved(complex, none, QX_SLDE2_COMPLEX, QX_SLDE2_HOMOGENEOUS, bound);
    this->ExpectSolved(complex, f, QX_SLDE2_COMPLEX, QX_SLDE2_INHOM_REGULAR, bound);
    // Double eigenvalues: the shear keeps its double one when the elements are short binary fractions.
    const T u = std::round(8 * this->random.In(-1, 1)) / 8 + T(2), d = std::round(8 * m) / 8;
    for (const M& n : {M(u, -u * u, 1, -u), M(0, u, 0, 0), M(0, 0, u, 0), M(u, u, -u, -u)}) {
      const M shear(n[0] + d, n[1], n[2], n[3] + d);
      this->ExpectSolved(shear, none, QX_SLDE2_1_EXP_1_EIGENVECTOR, QX_SLDE2_HOMOGENEOUS, bound);
      this->ExpectSolved(shear, f, QX_SLDE2_1_EXP_1_EIGENVECTOR, QX_SLDE2_INHOM_REGULAR, bound);
      this->ExpectSolved(n, f, QX_SLDE2_1_EXP_1_EIGENVECTOR, QX_SLDE2_INHOM_ZERO_1_EIGENVECTOR, bound);
    }
    this->ExpectSolved(M(m, 0, 0, m), none, QX_SLDE2_1_EXP_2_EIGENVECTORS, QX_SLDE2_HOMOGENEOUS, bound);
    this->ExpectSolved(M(m, 0, 0, m), f, QX_SLDE2_1_EXP_2_EIGENVECTORS, QX_SLDE2_INHOM_REGULAR, bound);
    this->ExpectSolved(M(), f, QX_SLDE2_1_EXP_2_EIGENVECTORS, QX_SLDE2_INHOM_ZERO_2_EIGENVECTORS, bound);
  }
}

TYPED_TEST(SLDE2, EigenvaluesStandInTheirOrder) {
  using T = TypeParam;
  using M = CQXMatrix2<T>;
  const auto expect = [](const M& a, T first, T second) {
    CQXSLDE2<T> s(a, {});
    s.CalculateGeneralSolution();
    EXPECT_EQ(s.GetEigenvalues().X(), first);
    EXPECT_EQ(s.GetEigenvalues().Y(), second);
  };
  expect(M(2, 0, 0, 1), 1, 2);
  expect(M(-1, 0, 0, -3), -1, -3);
  expect(M(-1, 0, 0, 1), 1, -1);  // equal sizes: the larger one first
  expect(M(0, 0, 0, -2), 0, -2);
  expect(M(0, 1, -1, 0), 0, 1);
  expect(M(3, 1, -1, 3), 3, 1);  // the parts of a complex pair keep their places
}

TYPED_TEST(SLDE2, StateFollowsTheCalls) {
  using T = TypeParam;
  using M = CQXMatrix2<T>;
  CQXSLDE2<T> s;
  EXPECT_EQ(s.GetPrecision(), T(1e-6));
  EXPECT_EQ(s.TestHomogGeneralSolution(), 0);
  s.CalculateParticularSolution();
  EXPECT_EQ(s.GetSolutionAtTime(1).NormInf(), 0);
  s.SetInitialCondition(3, 4, 0);
  s.SetPrecision(T(1e-5));
  s.SetTransformation(M(1, 0, 0, T(1.0001)), {T(0.9e-6), T(-0.9e-6)});  // the forcing counts as none
  s.CalculateGeneralSolution();
  EXPECT_EQ(s.GetInhomogenType(), QX_SLDE2_HOMOGENEOUS);
  s.CalculateParticularSolution();
  EXPECT_NEAR(s.GetSolutionAtTime(0).Y(), 4, 1e-5);
  s.SetTransformation(M(2, 0, 0, 1), {});
  EXPECT_EQ(s.GetGeneralType(), QX_SLDE2_GENERAL_NONE);
  EXPECT_EQ(s.GetEigenvalues().NormInf() + s.GetSolutionAtTime(0).NormInf(), 0);
  EXPECT_EQ(s.GetPrecision(), T(1e-5));
  s.CalculateGeneralSolution();
  s.CalculateParticularSolution();
  EXPECT_NEAR(s.GetSolutionAtTime(0).X(), 3, 8 * this->eps);  // the initial condition stayed

  // One sample: the state is stored and nothing is written; the row after it is the solution.
  CQXVector2<T> out[2] = {CQXVector2<T>(7, 7), CQXVector2<T>(7, 7)};
  for (const std::int32_t n : {1, 0, -5}) {
    s.CalculateTrajectory(5, 6, n, out, 1, 1);
    s.CalculateTrajectory(5, 6, n, nullptr, 1, 1);
  }
  EXPECT_EQ(out[0].X(), 7);
  s.CalculateParticularSolution();
  EXPECT_NEAR(s.GetSolutionAtTime(0).Y(), 6, 8 * this->eps);
  s.CalculateTrajectory(1, 2, 2, out, 0, 1);  // a step of zero
  EXPECT_NEAR(out[1].Y(), 2, 8 * this->eps);
}

TYPED_TEST(SLDE2, NearlySingularSystemsHoldWhatTheyCan) {
  using T = TypeParam;
  using M = CQXMatrix2<T>;
  // Almost a double eigenvalue on the diagonal: the generalised vector is zero and the initial condition still holds.
  CQXSLDE2<T> s(M(T(1.0009765625), 0, 0, 1), {});
  s.SetInitialCondition(3, 4, 0);
  s.CalculateGeneralSolution();
  s.CalculateParticularSolution();
  EXPECT_EQ(s.GetGeneralType(), QX_SLDE2_1_EXP_2_EIGENVECTORS);
  EXPECT_EQ(s.GetSolutionAtTime(0).X() == 3 && s.GetSolutionAtTime(0).Y() == 4, true);

  // The determinant of the basis at t0 is below the precision: no constants, until the precision is smaller.
  s.SetTransformation(M(-1, 0, 0, -2), {});
  s.SetInitialCondition(3, 4, 8);
  s.CalculateGeneralSolution();
  s.CalculateParticularSolution();
  EXPECT_EQ(s.GetSolutionAtTime(8).NormInf(), 0);
  s.SetPrecision(T(1e-14));
  s.CalculateParticularSolution();
  EXPECT_NEAR(s.GetSolutionAtTime(8).X(), 3, 32 * this->eps);

  // A double eigenvalue whose square is below the precision: no particular solution.
  s = CQXSLDE2<T>(M(T(1e-4), 0, 0, T(1e-4)), {1, 1});
  s.SetInitialCondition(3, 4, 0);
  s.CalculateGeneralSolution();
  s.CalculateParticularSolution();
  EXPECT_EQ(s.GetInhomogenType(), QX_SLDE2_INHOM_REGULAR);
  EXPECT_NEAR(s.GetSolutionAtTime(1).X(), 3 * std::exp(T(1e-4)), 8 * this->eps);

  for (const T bad : {std::numeric_limits<T>::quiet_NaN(), std::numeric_limits<T>::infinity()}) {
    for (const M& a : {M(bad, 1, 2, 3), M(bad, bad, bad, bad), M(0, bad, -1, 0), M(1, 0, 0, bad)}) {
      CQXSLDE2<T> hostile(a, {bad, 1});
      CQXVector2<T> out[3];
      hostile.CalculateGeneralSolution();
      hostile.CalculateTrajectory(1, bad, 3, out, bad, 0);
      EXPECT_NE(hostile.GetGeneralType(), QX_SLDE2_GENERAL_NONE);
      EXPECT_EQ(out[0].X(), 1);
    }
  }
}

}  // namespace
