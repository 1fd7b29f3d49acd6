#include <qx/differential/slde2.h>

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <limits>
#include <new>
#include <random>

#include "tests/differential/reference.h"
#include "tests/typed_test.h"

namespace {

bool isMemoryRefused = false;

}  // namespace

// Not inlined: the compiler would take malloc and free apart from new and delete and warn of a mismatch.
[[gnu::noinline]] void* operator new[](std::size_t bytes) {
  void* const block = isMemoryRefused ? nullptr : std::malloc(bytes);
  return block != nullptr ? block : throw std::bad_alloc();
}
[[gnu::noinline]] void operator delete[](void* block) noexcept { std::free(block); }
[[gnu::noinline]] void operator delete[](void* block, std::size_t) noexcept { std::free(block); }

namespace {

using State = Reference<2>::State;

template <typename T>
class SLDE2 : public ::testing::Test {
 protected:
  static constexpr T eps = std::numeric_limits<T>::epsilon();

  T Whole(int lo, int hi) { return T(std::uniform_int_distribution<int>(lo, hi)(engine)); }
  T In(double lo, double hi) { return T(std::uniform_real_distribution<double>(lo, hi)(engine)); }

  /// P m P^-1 with a random P of whole numbers and determinant 1, so that the eigenvalues stay exact.
  CQXMatrix2<T> Similar(const CQXMatrix2<T>& m) {
    const T p = Whole(-2, 2), q = Whole(-2, 2);
    const CQXMatrix2<T> lower(1, 0, p, 1), upper(1, q, 0, 1), lowerInverse(1, 0, -p, 1), upperInverse(1, -q, 0, 1);
    return upper * lower * m * lowerInverse * upperInverse;
  }
  /// The system that the solution solves: the constant of the regular type stands with the other sign.
  static Reference<2> SystemOf(const CQXMatrix2<T>& a, const CQXVector2<T>& f, qxSLDE2InhomogenType type) {
    const double sign = type == QX_SLDE2_INHOM_REGULAR ? -1 : 1;
    return {{{double(a[0]), double(a[1])}, {double(a[2]), double(a[3])}}, {sign * double(f.X()), sign * double(f.Y())}};
  }
  /// Classifies, and finds the constants for the state (x, y) at t0.
  static void Solve(CQXSLDE2<T>& system, T x, T y, T t0) {
    system.SetInitialCondition(x, y, t0);
    system.CalculateGeneralSolution();
    system.CalculateParticularSolution();
  }
  static void ExpectNear(const CQXVector2<T>& x, const State& expected, double bound) {
    EXPECT_NEAR(double(x.X()), expected[0], bound);
    EXPECT_NEAR(double(x.Y()), expected[1], bound);
  }

  std::mt19937 engine{97};
};
TYPED_TEST_SUITE(SLDE2, FloatTypes);

TYPED_TEST(SLDE2, EveryClassFollowsTheExponentialOfItsMatrix) {
  using T = TypeParam;
  for (int i = 0; i < 400; ++i) {
    const bool isForced = i % 2 != 0;
    const bool hasZero = i % 4 < 2;
    const T l = hasZero ? T(0) : this->Whole(1, 4) / 2 * (i % 8 < 4 ? -1 : 1);
    const struct {
      CQXMatrix2<T> m;
      qxSLDE2GeneralType general;
      qxSLDE2InhomogenType forced;
    } classes[] = {{{l, 0, 0, l + this->Whole(1, 3) / 2},
                    QX_SLDE2_2_EXPONENTS,
                    hasZero ? QX_SLDE2_INHOM_ZERO_EXPONENT : QX_SLDE2_INHOM_REGULAR},
                   {{l, this->Whole(1, 3), 0, l},
                    QX_SLDE2_1_EXP_1_EIGENVECTOR,
                    hasZero ? QX_SLDE2_INHOM_ZERO_1_EIGENVECTOR : QX_SLDE2_INHOM_REGULAR},
                   {{l, 0, 0, l},
                    QX_SLDE2_1_EXP_2_EIGENVECTORS,
                    hasZero ? QX_SLDE2_INHOM_ZERO_2_EIGENVECTORS : QX_SLDE2_INHOM_REGULAR},
                   {{l, T(1.5), T(-1.5), l}, QX_SLDE2_COMPLEX, QX_SLDE2_INHOM_REGULAR}};
    const auto& expected = classes[i / 8 % 4];
    const CQXMatrix2<T> a = this->Similar(expected.m);
    // Two roots, one of which came out as zero by chance.
    if (expected.general == QX_SLDE2_2_EXPONENTS && !hasZero && a.Det() == 0) continue;
    const CQXVector2<T> f = isForced ? CQXVector2<T>(this->In(-2, 2), this->In(0.5, 2)) : CQXVector2<T>();
    const T x = this->In(-2, 2), y = this->In(-2, 2), t0 = this->In(-1, 1);
    CQXSLDE2<T> system;
    system.SetTransformation(a, f);
    system.SetInitialCondition(x, y, t0);
    system.CalculateGeneralSolution();
    EXPECT_EQ(system.GetGeneralType(), expected.general) << i;
    EXPECT_EQ(system.GetInhomogenType(), isForced ? expected.forced : QX_SLDE2_HOMOGENEOUS) << i;
    EXPECT_EQ(system.TestHomogGeneralSolution(), 1) << i;
    system.CalculateParticularSolution();
    const Reference<2> reference = this->SystemOf(a, f, system.GetInhomogenType());
    const State x0 = {double(x), double(y)};
    // Rounding grows with the elements of the basis and with e^(l t).
    const double scale = 1 + double(a.Norm(QX_MATRIX_NORM_ROW_SUM)) * double(a.Norm(QX_MATRIX_NORM_ROW_SUM));
    for (const T t : {t0, T(t0 + T(0.5)), T(t0 - T(0.75)), T(1.5)}) {
      const State exact = reference.Exact(x0, double(t) - double(t0));
      const double size = scale * (1 + std::abs(exact[0]) + std::abs(exact[1])) *
                          std::exp(3 * std::max(std::abs(double(t)), std::abs(double(t0))));
      this->ExpectNear(system.GetSolutionAtTime(t), exact, 64 * double(this->eps) * size);
    }

    CQXVector2<T> out[6];
    for (const std::int32_t forward : {1, 0}) {
      system.CalculateTrajectory(x, y, 6, out, T(0.125), forward);
      this->ExpectNear(out[0], x0, 0);
      this->ExpectNear(system.GetSolutionAtTime(0), x0, 512 * double(this->eps) * scale);
      for (int k = 1; k < 6; ++k) {
        const CQXVector2<T> state = system.GetSolutionAtTime((forward != 0 ? T(0.125) : T(-0.125)) * T(k));
        this->ExpectNear(out[k], {double(state.X()), double(state.Y())}, 0);
      }
    }
  }
}

TYPED_TEST(SLDE2, ASolutionComesOnlyFromItsOwnSystem) {
  using T = TypeParam;
  CQXSLDE2<T> system;
  const CQXMatrix2<T> a(T(1), 0, 0, T(1.25));
  system.SetTransformation(a, CQXVector2<T>(1, 1));
  EXPECT_EQ(system.GetSolutionAtTime(1).NormInf(), 0);  // a forcing alone gives nothing
  system.CalculateGeneralSolution();
  system.SetInitialCondition(5, 6, 2);
  system.SetTransformation(a, CQXVector2<T>());
  EXPECT_EQ(system.GetGeneralType(), QX_SLDE2_GENERAL_NONE);
  system.CalculateGeneralSolution();
  system.CalculateParticularSolution();
  this->ExpectNear(system.GetSolutionAtTime(2), {5, 6}, 64 * double(this->eps));
  // Eigenvalues of equal size: the positive one first; a forcing below the precision is none.
  system.SetTransformation(CQXMatrix2<T>(-1, 0, 0, 1), CQXVector2<T>(T(9e-7), T(-9e-7)));
  system.CalculateGeneralSolution();
  EXPECT_EQ(system.GetInhomogenType(), QX_SLDE2_HOMOGENEOUS);
  EXPECT_EQ((system.GetEigenvalues() - CQXVector2<T>(1, -1)).NormInf(), 0);
}

TYPED_TEST(SLDE2, ARefusedBlockLeavesNoSolution) {
  using T = TypeParam;
  CQXSLDE2<T> system;
  system.SetTransformation(CQXMatrix2<T>(0, 1, -1, 0), CQXVector2<T>(1, 1));
  this->Solve(system, 2, 3, 0);
  this->ExpectNear(system.GetSolutionAtTime(0), {2, 3}, 16 * double(this->eps));
  isMemoryRefused = true;
  EXPECT_THROW(system.CalculateGeneralSolution(), std::bad_alloc);
  isMemoryRefused = false;
  EXPECT_EQ(system.GetGeneralType(), QX_SLDE2_GENERAL_NONE);
  for (const T t : {T(0), T(1)}) EXPECT_EQ(system.GetSolutionAtTime(t).NormInf(), 0);
  system.CalculateParticularSolution();
  EXPECT_EQ(system.GetSolutionAtTime(0).NormInf(), 0);
}

TYPED_TEST(SLDE2, ThePrecisionActsFromTheNextClassificationOn) {
  using T = TypeParam;
  CQXSLDE2<T> system;
  system.SetTransformation(CQXMatrix2<T>(1, 0, 0, T(1.25)), CQXVector2<T>());
  system.CalculateGeneralSolution();
  system.SetPrecision(T(0.5));
  EXPECT_EQ(system.GetGeneralType(), QX_SLDE2_2_EXPONENTS);
  system.CalculateGeneralSolution();  // with the same matrix
  EXPECT_EQ(system.GetGeneralType(), QX_SLDE2_1_EXP_2_EIGENVECTORS);
  EXPECT_EQ(system.GetEigenvalues().X(), system.GetEigenvalues().Y());
  system.SetPrecision(T(0.01));
  system.CalculateGeneralSolution();
  EXPECT_EQ(system.GetGeneralType(), QX_SLDE2_2_EXPONENTS);
  EXPECT_EQ(system.GetPrecision(), T(0.01));
}

TYPED_TEST(SLDE2, TheBandsLeaveAStartThatHoldsOrZero) {
  using T = TypeParam;
  CQXSLDE2<T> system;
  // Two roots close enough to count as one, without a generalised vector.
  for (const auto& a : {CQXMatrix2<T>(1, 0, 0, T(1.001)), CQXMatrix2<T>(T(1.001), 0, 0, 1)}) {
    system.SetTransformation(a, CQXVector2<T>());
    this->Solve(system, 2, -3, T(0.5));
    EXPECT_EQ(system.GetGeneralType(), QX_SLDE2_1_EXP_2_EIGENVECTORS);
    this->ExpectNear(system.GetSolutionAtTime(T(0.5)), {2, -3}, 32 * double(this->eps));
  }
  // e^(-20) leaves nothing that the precision would take for regular.
  system.SetTransformation(CQXMatrix2<T>(-10, 0, 0, -11), CQXVector2<T>());
  this->Solve(system, 1, 1, 2);
  EXPECT_EQ(system.GetSolutionAtTime(2).NormInf(), 0);
  system.SetPrecision(T(1e-30));
  system.CalculateParticularSolution();
  this->ExpectNear(system.GetSolutionAtTime(2), {1, 1}, 64 * double(this->eps));

  // A matrix that is singular by its determinant, with no eigenvalue in the band: the forcing has no effect.
  system.SetPrecision(T(1e-6));
  system.SetTransformation(CQXMatrix2<T>(T(1e-4), 0, 0, T(2e-4)), CQXVector2<T>(1, 1));
  this->Solve(system, 0, 0, 0);
  EXPECT_EQ(system.GetSolutionAtTime(1).NormInf(), 0);

  using Limits = std::numeric_limits<T>;
  const T hostile[] = {Limits::quiet_NaN(), Limits::infinity(), Limits::max(), Limits::denorm_min(), 0, -1};
  CQXVector2<T> out[4];
  for (const T p : hostile) {
    for (const T q : hostile) {
      for (const T precision : {T(1e-6), T(0), T(-1), Limits::quiet_NaN()}) {
        system.SetPrecision(precision);
        system.SetTransformation(CQXMatrix2<T>(p, q, -q, p), CQXVector2<T>(q, p));
        system.CalculateGeneralSolution();
        system.CalculateTrajectory(p, q, 4, out, p, 1);
        EXPECT_GE(system.TestHomogGeneralSolution(), 0);
      }
    }
  }
}

}  // namespace
