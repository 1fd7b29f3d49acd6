#include <qx/differential/slde3.h>

#include <algorithm>
#include <cmath>
#include <limits>
#include <random>

#include "tests/differential/reference.h"
#include "tests/typed_test.h"

namespace {

using State = Reference<3>::State;

template <typename T>
class SLDE3 : public ::testing::Test {
 protected:
  using Matrix = CQXMatrix3<T>;
  using Vector = CQXVector3<T>;
  static constexpr double eps = static_cast<double>(std::numeric_limits<T>::epsilon());

  T Whole(int lo, int hi) { return T(std::uniform_int_distribution<int>(lo, hi)(engine)); }
  T In(double lo, double hi) { return T(std::uniform_real_distribution<double>(lo, hi)(engine)); }

  /// P m P^-1 with a random P of whole numbers and determinant 1, so that the eigenvalues stay exact.
  Matrix Similar(Matrix m) {
    for (int i = 0; i < 4; ++i) {
      const std::int32_t r = i % 3, c = (i + 1 + static_cast<int>(engine() % 2)) % 3;
      Matrix p, inverse;
      p.Unit();
      inverse.Unit();
      p(r, c) = Whole(-1, 1);
      inverse(r, c) = -p(r, c);
      m = p * m * inverse;
    }
    return m;
  }
  /// Follows the exponential of the matrix from (x, t0), forwards and backwards.
  void ExpectExact(CQXSLDE3<T>& system, const Matrix& a, const Vector& f, double tolerance) {
    const Vector x(In(-2, 2), In(-2, 2), In(-2, 2));
    const T t0 = In(-3, 3);
    Reference<3> reference;
    for (std::int32_t r = 0; r < 3; ++r) {
      for (std::int32_t c = 0; c < 3; ++c) reference.a[r][c] = double(a(r, c));
      reference.f[static_cast<std::size_t>(r)] = double(f[r]);
    }
    const State x0{double(x.X()), double(x.Y()), double(x.Z())};
    system.SetInitialCondition(x.X(), x.Y(), x.Z(), t0);
    system.CalculateParticularSolution();
    for (const T after : {T(0), T(0.01), T(0.5), T(-0.75), T(2)}) {
      const State exact = reference.Exact(x0, double(t0 + after) - double(t0));
      const Vector found = system.GetSolutionAtTime(t0 + after);
      const double size = 1 + std::max({std::abs(exact[0]), std::abs(exact[1]), std::abs(exact[2])});
      for (std::size_t i = 0; i < 3; ++i) {
        ASSERT_NEAR(double(found[static_cast<std::int32_t>(i)]), exact[i], tolerance * size) << after;
      }
    }
  }

  std::mt19937 engine{89};
};
TYPED_TEST_SUITE(SLDE3, FloatTypes);

TYPED_TEST(SLDE3, EveryJordanFormFollowsTheExponentialOfItsMatrix) {
  using T = TypeParam;
  using M = CQXMatrix3<T>;
  using V = CQXVector3<T>;
  for (int i = 0; i < 420; ++i) {
    const T l = i % 3 == 0 ? T(0) : this->Whole(1, 3) / 2 * (i % 3 == 1 ? 1 : -1);
    const T other = i % 6 == 1 ? T(0) : l + this->Whole(1, 2) * (i % 4 < 2 ? 1 : -1);
    const T third = l + T(0.5);
    const int zeros = (l == 0) + (other == 0);
    const struct {
      M m;
      qxSLDE3GeneralType type;
      int zerosNb;
    } forms[] = {{{l, 0, 0, 0, other, 0, 0, 0, third}, QX_SLDE3_3_EXPONENTS, zeros + (third == 0)},
                 {{l, 0, 0, 0, l, 0, 0, 0, other}, QX_SLDE3_2_EXP_3_EIGENVECTORS, zeros + (l == 0)},
                 {{l, 1, 0, 0, l, 0, 0, 0, other}, QX_SLDE3_2_EXP_2_EIGENVECTORS, zeros + (l == 0)},
                 {{l, 0, 0, 0, l, 0, 0, 0, l}, QX_SLDE3_1_EXP_3_EIGENVECTORS, 3 * (l == 0)},
                 {{l, 1, 0, 0, l, 0, 0, 0, l}, QX_SLDE3_1_EXP_2_EIGENVECTORS, 3 * (l == 0)},
                 {{l, 1, 0, 0, l, 1, 0, 0, l}, QX_SLDE3_1_EXP_1_EIGENVECTOR, 3 * (l == 0)},
                 {{other, 0, 0, 0, l, T(1.5), 0, T(-1.5), l}, QX_SLDE3_1_EXP_COMPLEX, other == 0}};
    const auto& form = forms[i / 6 % 7];
    if (form.type == QX_SLDE3_3_EXPONENTS && other == third) continue;
    const M a = this->Similar(form.m);
    const V f = i % 5 == 0 ? V() : V(this->In(-2, 2), this->In(-2, 2), this->In(0.5, 2));
    CQXSLDE3<T> system;
    system.SetTransformation(a, f);
    system.CalculateGeneralSolution();
    ASSERT_EQ(system.GetGeneralType(), form.type) << i;
    ASSERT_EQ(system.GetInhomogenType(), i % 5 == 0 ? QX_SLDE3_HOMOGENEOUS : 1 + form.zerosNb) << i;
    EXPECT_EQ(system.TestHomogGeneralSolution(), 1) << i;
    EXPECT_EQ(system.TestInhomSolution(), 1) << i;
    this->ExpectExact(system, a, f, 8 * this->eps + 1e-11);

    // The eigenvalues: ascending, or the parts of the pair.
    V expected =
        form.type == QX_SLDE3_1_EXP_COMPLEX ? V(other, l, T(1.5)) : V(form.m(0, 0), form.m(1, 1), form.m(2, 2));
    if (form.type != QX_SLDE3_1_EXP_COMPLEX) {
      const auto isSmaller = [](T p, T q) {
        return std::abs(p) < std::abs(q) || (std::abs(p) == std::abs(q) && p < q);
      };
      V found = system.GetEigenvalues();
      for (std::int32_t k = 0; k < 2; ++k) EXPECT_LE(std::abs(found[k]), std::abs(found[k + 1]));
      std::sort(expected.Data(), expected.Data() + 3, isSmaller);
    }
    if (std::abs(expected.Y() + expected.X()) > 0.1 && std::abs(expected.Y() + expected.Z()) > 0.1) {
      EXPECT_LE(double((system.GetEigenvalues() - expected).NormInf()), 1e-6) << i;
    }
  }
}

TYPED_TEST(SLDE3, NearlyEqualEigenvaluesLoseNothing) {
  using T = TypeParam;
  using M = CQXMatrix3<T>;
  for (int i = 0; i < 200; ++i) {
    // Gaps from far above to far below the precision, with couplings that make them matter.
    const T gap = T(std::pow(10, -(i % 20) / 2.0)), l = this->In(-1, 1);
    M a(l, 1, this->In(-1, 1), 0, l + gap * this->In(-1, 1), 1, 0, 0, l + gap * this->In(-1, 1));
    if (i % 2 != 0) a(2, 0) = gap * gap * gap;
    CQXSLDE3<T> system;
    system.SetTransformation(a, {});
    system.CalculateGeneralSolution();
    EXPECT_EQ(system.TestHomogGeneralSolution(), 1);
    this->ExpectExact(system, a, {}, 8 * this->eps + 1e-12);
  }
}

TYPED_TEST(SLDE3, StateTrajectoriesAndPrecision) {
  using T = TypeParam;
  using M = CQXMatrix3<T>;
  using V = CQXVector3<T>;
  const M a(1, 0, 0, 0, T(1.25), 0, 0, 0, -3);
  CQXSLDE3<T> system;
  system.SetTransformation(a, {1, 1, 1});
  EXPECT_EQ(system.GetSolutionAtTime(1).NormInf(), 0);
  EXPECT_EQ(system.TestHomogGeneralSolution() + system.TestInhomSolution(), 0);
  system.CalculateGeneralSolution();
  V out[6] = {V(T(77)), V(T(77))};
  system.CalculateTrajectory(3, 4, 5, 1, out, T(0.125), 1);
  EXPECT_EQ(out[0].X(), 77);  // only the initial condition is taken
  system.CalculateParticularSolution();
  EXPECT_LE(double((system.GetSolutionAtTime(0) - V(3, 4, 5)).NormInf()), 16 * this->eps);
  for (const std::int32_t forward : {1, 0}) {
    system.CalculateTrajectory(1, -2, 3, 6, out, T(0.125), forward);
    EXPECT_EQ((out[0] - V(1, -2, 3)).NormInf(), 0);
    for (int k = 1; k < 6; ++k) {
      const T time = (forward != 0 ? T(0.125) : T(-0.125)) * T(k);
      EXPECT_EQ((out[k] - system.GetSolutionAtTime(time)).NormInf(), 0);
      EXPECT_NEAR(double(out[k].X()), 2 * std::exp(double(time)) - 1, 16 * this->eps);  // x' = x + 1 from 1
    }
  }
  system.SetPrecision(T(0.5));  // acts from the next classification on
  EXPECT_EQ(system.GetGeneralType(), QX_SLDE3_3_EXPONENTS);
  system.CalculateGeneralSolution();
  EXPECT_EQ(system.GetGeneralType(), QX_SLDE3_2_EXP_3_EIGENVECTORS);
  EXPECT_EQ(system.GetPrecision(), T(0.5));
  system.SetTransformation(a, {T(9e-7), 0, 0});
  EXPECT_EQ(system.GetGeneralType(), QX_SLDE3_GENERAL_NONE);
  EXPECT_EQ(system.GetEigenvalues().NormInf(), 0);
  system.CalculateGeneralSolution();
  EXPECT_EQ(system.GetInhomogenType(), QX_SLDE3_HOMOGENEOUS);

  using Limits = std::numeric_limits<T>;
  const T hostile[] = {Limits::quiet_NaN(), Limits::infinity(), Limits::max(), Limits::denorm_min(), 0, -1};
  for (const T p : hostile) {
    for (const T q : hostile) {
      for (const T precision : {T(1e-6), T(0), T(-1), Limits::quiet_NaN()}) {
        system.SetPrecision(precision);
        system.SetTransformation({p, q, -q, q, p, 1, 0, -p, q}, {q, p, 1});
        system.CalculateGeneralSolution();
        system.CalculateTrajectory(p, q, 1, 4, out, p, 1);
        EXPECT_GE(system.TestHomogGeneralSolution() + system.TestInhomSolution(), 0);
      }
    }
  }
}

}  // namespace
