#include <qx/matrices/matrix_n.h>
#include <qx/solvers/algebra.h>

#include <algorithm>
#include <cmath>
#include <limits>
#include <vector>

#include "tests/typed_test.h"

namespace {

template <typename T>
class Algebra : public ::testing::Test {
 protected:
  static constexpr T eps = std::numeric_limits<T>::epsilon();
  static constexpr T tol = 16 * eps;
};
TYPED_TEST_SUITE(Algebra, FloatTypes);

TYPED_TEST(Algebra, TwoByTwoSystems) {
  const struct {
    TypeParam a, b, c, d, r0, r1, x, y;
    std::int32_t code, flag;
  } cases[] = {{2, 1, 1, 3, 5, 10, 1, 3, 1, 1},       {1, 1, 1, 1, 2, 3, 0, 0, -1, 1},  // unique; inconsistent
               {0, 0, 0, 0, 0, 0, 1, 1, -2, 1},       {0, 2, 0, 0, 4, 0, 1, 1, -2, 1},  // all zero; b alone
               {0, 2, 0, 2, 8, 8, 1, 3, -2, 1},       {2, 4, 1, 2, 8, 4, 2, 1, -2, 1},  // (r0 - b) / b; a first
               {0, 0, 4, 2, 0, 10, 2, 1, -2, 1},      {0, 0, 0, 2, 0, 10, 1, 5, -2, 1},
               {1, 0, 0, 1e-6f, 1, 1e-6f, 1, 1, 1, 1}};
  for (const auto& c : cases) {
    TypeParam x = -7, y = -7;
    std::int32_t flag = 0;
    EXPECT_EQ(CQXAlgebra::Solve2x2System(c.a, c.b, c.c, c.d, c.r0, c.r1, x, y, flag, this->tol / 4), c.code);
    EXPECT_EQ(flag, c.flag);
    EXPECT_NEAR(x, c.x, this->tol);
    EXPECT_NEAR(y, c.y, this->tol);
  }
  TypeParam x, y;
  std::int32_t flag;
  EXPECT_EQ(CQXAlgebra::Solve2x2System(1, 1, 1, TypeParam(1.001), 2, TypeParam(2.001), x, y, flag, TypeParam(4.5e-4)),
            1);
  EXPECT_EQ(flag, 2);  // 4.002 / 0.001 times the tolerance
  EXPECT_EQ(CQXAlgebra::Solve2x2System(1, 1, 1, 2, 0, 0, x, y, flag, TypeParam(1)), -2);  // the bound is no unique one
}

TYPED_TEST(Algebra, ThreeByThreeSystemsOfEveryRank) {
  using T = TypeParam;
  std::int32_t flag;
  T x, y, z;
  const auto solve = [&](const std::vector<T>& m, const std::vector<T>& r) {
    return CQXAlgebra::Solve3x3System(m[0], m[1], m[2], m[3], m[4], m[5], m[6], m[7], m[8], r[0], r[1], r[2], x, y, z,
                                      flag, this->tol);
  };
  // Unique: the solution (1, -2, 3) of every matrix of small whole numbers that is not singular.
  std::int32_t unique = 0;
  for (std::int32_t seed = 0; seed < 200; ++seed) {
    std::vector<T> m(9), r(3);
    for (std::int32_t i = 0; i < 9; ++i) m[static_cast<std::size_t>(i)] = T((seed * (i + 3) * (2 * i + 5)) % 11 - 5);
    for (std::size_t i = 0; i < 3; ++i) r[i] = m[3 * i] - 2 * m[3 * i + 1] + 3 * m[3 * i + 2];
    if (solve(m, r) != 1) continue;
    ++unique;
    EXPECT_EQ(flag, 1);
    EXPECT_EQ(x, 1);
    EXPECT_EQ(y, -2);
    EXPECT_EQ(z, 3);
  }
  EXPECT_GT(unique, 100);
  EXPECT_EQ(solve({1, 2, 3, 2, 4, 6, 1, 1, 1}, {1, 3, 1}), -1);
  EXPECT_EQ(x, 0);
  // Rank 2: the unknown outside the chosen minor is 1 and the equations of the pair hold.
  const struct {
    std::vector<T> m, r;
    T x, y, z;
  } cases[] = {{{1, 0, 0, 0, 1, 0, 1, 1, 0}, {5, 7, 12}, 5, 7, 1},  // xy
               {{1, 0, 0, 0, 0, 1, 1, 0, 1}, {5, 7, 12}, 5, 1, 7},  // xz
               {{0, 1, 0, 0, 0, 1, 0, 1, 1}, {5, 7, 12}, 1, 5, 7},  // yz
               {{1, 0, 0, 2, 0, 0, 0, 1, 1}, {5, 10, 7}, 5, 1, 6},  // the second pair; a tie of xy and xz
               {{0, 0, 0, 1, 1, 0, 1, 0, 1}, {0, 5, 9}, 1, 4, 8},   // the last pair; ties go to yz
               {{0, 0, 0, 2, 3, 4, 4, 6, 8}, {0, 9, 18}, 1, 1, 1},  // rank 1: the third is the largest
               {{2, 2, 2, 0, 0, 0, 0, 0, 0}, {10, 0, 0}, 3, 1, 1},  // ties: the first
               {{1, 3, 3, 0, 0, 0, 0, 0, 0}, {10, 0, 0}, 1, 2, 1},  // the second
               {{0, 0, 0, 0, 0, 0, 0, 0, 0}, {0, 0, 0}, 1, 1, 1}};
  for (const auto& c : cases) {
    EXPECT_EQ(solve(c.m, c.r), -2);
    EXPECT_EQ(flag, 1);
    EXPECT_EQ(x, c.x);
    EXPECT_EQ(y, c.y);
    EXPECT_EQ(z, c.z);
  }
}

TYPED_TEST(Algebra, QuadraticsFromKnownRoots) {
  using T = TypeParam;
  for (std::int32_t i = -8; i <= 8; ++i) {
    for (std::int32_t j = i; j <= 8; ++j) {
      T x1, x2;
      const T sum = T(i) + T(j), product = T(i) * T(j);
      EXPECT_EQ(CQXAlgebra::SolveReducedQuadratic(-sum, product, x1, x2, T(1e-3)), i == j ? 1 : 2);
      EXPECT_NEAR(x1, i, 16 * this->eps);
      EXPECT_NEAR(x2, j, 16 * this->eps);
      EXPECT_EQ(CQXAlgebra::SolveQuadratic(T(2), -2 * sum, 2 * product, x1, x2, T(1e-3)), i == j ? 1 : 2);
      EXPECT_NEAR(x1 + x2, sum, 32 * this->eps);
      // The pair i + j sqrt(-1).
      CQXComplex<T> z1, z2;
      const std::int32_t code = CQXAlgebra::SolveReducedQuadratic(T(-2 * i), T(i * i + j * j), z1, z2, T(1e-3));
      EXPECT_EQ(code, j == 0 ? 1 : 0);
      EXPECT_EQ(z1.Real(), T(i));
      EXPECT_NEAR(z1.Imag(), std::abs(j), 16 * this->eps);
      EXPECT_EQ(z2.Imag(), -z1.Imag());
    }
  }
  T x1, x2;
  EXPECT_EQ(CQXAlgebra::SolveQuadratic(T(1), T(0), T(-5e-7), x1, x2, T(1e-9)), 1);  // the band is absolute
  EXPECT_EQ(CQXAlgebra::SolveQuadratic(T(1), T(0), T(-2e-6), x1, x2, T(1e-9)), 2);
  EXPECT_EQ(CQXAlgebra::SolveReducedQuadratic(T(0), T(-0.5), x1, x2, T(0.5)), 1);  // the edge belongs to the band
  EXPECT_EQ(CQXAlgebra::SolveReducedQuadratic(T(0), T(0.5), x1, x2, T(0.5)), 1);
  EXPECT_EQ(CQXAlgebra::SolveQuadratic(T(0), T(2), T(3), x1, x2, T(1e-3)), 1);
  EXPECT_EQ(x2, T(-1.5));
  EXPECT_EQ(CQXAlgebra::SolveQuadratic(T(0), T(0), T(0), x1, x2, T(1e-3)), -2);
  EXPECT_EQ(x1, 0);
  CQXComplex<T> z1(3, 4), z2(5, 6);
  EXPECT_EQ(CQXAlgebra::SolveQuadratic(T(0), T(0), T(1), z1, z2, T(1e-3)), -1);
  EXPECT_EQ(z1.Imag(), 0);
  EXPECT_EQ(z2.Real(), 0);
}

TYPED_TEST(Algebra, CubicsFromKnownRoots) {
  using T = TypeParam;
  const T bound = 512 * this->eps;
  for (std::int32_t i = -4; i <= 4; ++i) {
    for (std::int32_t j = i + 1; j <= 4; ++j) {
      for (std::int32_t k = j + 1; k <= 4; ++k) {
        T x[3];
        const std::int32_t code = CQXAlgebra::SolveReducedCubic(T(-i - j - k), T(i * j + j * k + i * k), T(-i * j * k),
                                                                x[0], x[1], x[2], T(1e-6));
        EXPECT_EQ(code, 3);
        std::sort(x, x + 3);
        EXPECT_NEAR(x[0], i, bound);
        EXPECT_NEAR(x[1], j, bound);
        EXPECT_NEAR(x[2], k, bound);
      }
      // One real root i and the pair 1 +- j sqrt(-1).
      if (j == 0) continue;
      CQXComplex<T> z1, z2, z3;
      EXPECT_EQ(
          CQXAlgebra::SolveReducedCubic(T(-i - 2), T(2 * i + 1 + j * j), T(-i * (1 + j * j)), z1, z2, z3, T(1e-6)), 1);
      EXPECT_NEAR(z1.Real(), i, bound);
      EXPECT_NEAR(z2.Real(), 1, bound);
      EXPECT_NEAR(z2.Imag(), std::abs(j), bound);
      EXPECT_EQ(z3.Imag(), -z2.Imag());
      // A double root: the whole numbers are exact, so is the test for it.
      T x1, x2, x3;
      EXPECT_EQ(CQXAlgebra::SolveReducedCubic(T(-3 * (i + 2 * j)), T(9 * (2 * i * j + j * j)), T(-27 * i * j * j), x1,
                                              x2, x3, T(1e-4)),
                2);
      EXPECT_NEAR(x1, 3 * i, bound);
      EXPECT_NEAR(x2, 3 * j, bound);
      EXPECT_EQ(x3, x2);
    }
  }
  T x1, x2, x3;
  EXPECT_EQ(CQXAlgebra::SolveReducedCubic(T(0), T(0), T(0), x1, x2, x3, T(1e-6)), 2);
  EXPECT_EQ(x1 + x2 + x3, 0);
  // Three close roots: the guard takes the root of Q^3 for zero, and the roots stay numbers.
  const T h = std::is_same_v<T, float> ? T(0.03125) : T(0.015625);
  EXPECT_EQ(CQXAlgebra::SolveReducedCubic(T(0), -h * h, T(0), x1, x2, x3, T(1e-9)), 3);
  EXPECT_NEAR(x1, -h, h * bound);
  EXPECT_NEAR(x2, h, h * bound);
  EXPECT_NEAR(x3, 0, h * bound);
}

std::int32_t calls = 0;
std::int32_t slopeCalls = 0;

/// f and its slope, counted.
template <typename T, int Kind>
T Counted(T x) {
  ++calls;
  if constexpr (Kind == 0) return 4 * x - 4;
  if constexpr (Kind == 1) return x * x * x - 2;
  if constexpr (Kind == 2) return x - T(0.3);
  if constexpr (Kind == 3) return (x - 1) * (x - 2) * (x - 3);
  if constexpr (Kind == 4) return x + 10;
  return 5;
}
template <typename T, int Kind>
T CountedSlope(T x) {
  ++slopeCalls;
  if constexpr (Kind == 0) return 4;
  if constexpr (Kind == 1) return 3 * x * x;
  return 0;
}

TYPED_TEST(Algebra, RootFindersEvaluateAsOftenAsTold) {
  using T = TypeParam;
  const auto expectCalls = [](std::int32_t f, std::int32_t df) {
    EXPECT_EQ(calls, f);
    EXPECT_EQ(slopeCalls, df);
    calls = slopeCalls = 0;
  };
  calls = slopeCalls = 0;
  T root = -9;
  EXPECT_EQ(CQXAlgebra::Newton(T(0), T(5), T(1e-3), root, Counted<T, 0>, CountedSlope<T, 0>), 1);
  EXPECT_EQ(root, 1);
  expectCalls(2, 2);  // one step to the root, one of length zero
  EXPECT_EQ(CQXAlgebra::Newton(T(2), T(5), T(1e-3), root, Counted<T, 0>, CountedSlope<T, 0>), 0);
  EXPECT_EQ(root, 1);  // untouched: the iterate left the interval
  expectCalls(1, 1);
  EXPECT_EQ(CQXAlgebra::Newton(T(0), T(5), T(1e-3), root, Counted<T, 5>, CountedSlope<T, 5>), 1);
  EXPECT_EQ(root, T(2.5));  // flat: the middle
  expectCalls(1, 1);
  EXPECT_EQ(CQXAlgebra::Newton(T(0), T(5), T(0), root, Counted<T, 0>, CountedSlope<T, 0>), 0);
  EXPECT_EQ(root, 1);
  expectCalls(19, 19);

  EXPECT_EQ(CQXAlgebra::SafeNewton(T(0), T(5), T(1e-3), Counted<T, 0>, CountedSlope<T, 0>), 1);
  expectCalls(4, 2);
  EXPECT_EQ(CQXAlgebra::SafeNewton(T(1), T(5), T(1e-3), Counted<T, 0>, CountedSlope<T, 0>), 1);
  expectCalls(2, 0);
  EXPECT_NEAR(CQXAlgebra::SafeNewton(T(4), T(-3), this->eps, Counted<T, 1>, CountedSlope<T, 1>), std::cbrt(T(2)),
              2 * QX_TOLERANCE<T>);
  calls = slopeCalls = 0;

  EXPECT_EQ(CQXAlgebra::Brent(T(0), T(5), T(1e-3), Counted<T, 0>), 1);
  expectCalls(3, 0);  // the ends and the interpolated point
  EXPECT_NEAR(CQXAlgebra::Brent(T(-3), T(4), this->eps, Counted<T, 1>), std::cbrt(T(2)), 4 * QX_TOLERANCE<T>);
  EXPECT_LE(calls, 20);
  calls = 0;
  EXPECT_EQ(CQXAlgebra::Secant(T(0), T(5), T(1e-3), Counted<T, 0>), 1);
  expectCalls(3, 0);
  EXPECT_NEAR(CQXAlgebra::Secant(T(1), T(2), this->eps, Counted<T, 1>), std::cbrt(T(2)), 4 * QX_TOLERANCE<T>);
  calls = 0;
  EXPECT_FALSE(std::isfinite(CQXAlgebra::Secant(T(1), T(2), T(1e-3), Counted<T, 5>)));
  expectCalls(51, 0);

  EXPECT_EQ(CQXAlgebra::Bisection(T(0), T(4), T(0), Counted<T, 0>), 1);
  expectCalls(4, 0);
  EXPECT_NEAR(CQXAlgebra::Bisection(T(0), T(1), T(0.125), Counted<T, 2>), T(0.3), T(0.125));
  expectCalls(5, 0);
  EXPECT_NEAR(CQXAlgebra::Bisection(T(1), T(0), T(0.125), Counted<T, 2>), T(0.3), T(0.125));
  expectCalls(5, 0);
  EXPECT_EQ(CQXAlgebra::Bisection(T(0), T(1), T(0), Counted<T, 0>), 0);
  expectCalls(2, 0);  // f(1) is zero: the end of the negative side comes back

  T lower[10], upper[10];
  std::int32_t found = -1;
  CQXAlgebra::NarrowRootBrackets(T(0.25), T(4.25), 8, found, lower, upper, Counted<T, 3>);
  EXPECT_EQ(found, 3);
  expectCalls(9, 0);
  for (std::int32_t i = 0; i < found; ++i) {
    EXPECT_LT(lower[i], T(i + 1));
    EXPECT_GT(upper[i], T(i + 1));
  }
  lower[0] = T(0.25);
  CQXAlgebra::NarrowRootBrackets(lower[0], lower[1], 1, found, lower, upper, Counted<T, 3>);
  EXPECT_EQ(found, 1);
  expectCalls(2, 0);
  CQXAlgebra::NarrowRootBrackets(T(0), T(4), 4, found, lower, upper, Counted<T, 3>);  // zeros at the samples
  EXPECT_EQ(found, 0);
  expectCalls(5, 0);
  CQXAlgebra::NarrowRootBrackets(T(0), T(4), 0, found, lower, upper, Counted<T, 3>);
  EXPECT_EQ(found, 0);
  expectCalls(1, 0);

  T x1 = 0, x2 = 4;
  EXPECT_EQ(CQXAlgebra::SearchRootBrackets(x1, x2, Counted<T, 0>), 1);
  EXPECT_EQ(x2, 4);
  expectCalls(2, 0);
  x2 = 1;
  EXPECT_EQ(CQXAlgebra::SearchRootBrackets(x1, x2, Counted<T, 4>), 1);
  EXPECT_LT(x1, -10);
  EXPECT_EQ(x2, 1);
  expectCalls(5, 0);
  x1 = 3;
  x2 = 2;  // the larger value at x1: x2 moves and its value is never seen
  EXPECT_EQ(CQXAlgebra::SearchRootBrackets(x1, x2, Counted<T, 0>), 0);
  EXPECT_EQ(x1, 3);
  EXPECT_LT(x2, -10);
  expectCalls(51, 0);
}

TYPED_TEST(Algebra, ConjugateGradients) {
  using T = TypeParam;
  const std::int32_t n = 30;
  CQXMatrixN<T> a(n);  // the second difference, symmetric and positive definite
  for (std::int32_t i = 0; i < n; ++i) {
    a(i, i) = T(2.5);
    if (i > 0) a(i, i - 1) = a(i - 1, i) = -1;
  }
  CQXVectorN<T> solution(n), x(n);
  for (std::int32_t i = 0; i < n; ++i) solution[i] = static_cast<T>((i * 7) % 5 - 2);
  const CQXVectorN<T> b = a * solution;
  const T tolerance = T(1e-5);
  ASSERT_EQ(CQXAlgebra::SolveByCongugateGradient(a, b, x, tolerance, T(0)), 1);
  EXPECT_LE((a * x - b).Length(), tolerance * b.Length());
  EXPECT_LE((x - solution).Length(), T(1e-3));

  a(0, n - 1) = 1;  // not symmetric: the normal equations
  const CQXVectorN<T> other = a * solution;
  x.SetToZero();
  ASSERT_EQ(CQXAlgebra::SolveByCongugateGradient(a, other, x, tolerance, T(0)), 1);
  EXPECT_LE((x - solution).Length(), T(5e-3));
  CQXVectorN<T> inPlace(other);
  ASSERT_EQ(CQXAlgebra::SolveByCongugateGradient(a, inPlace, inPlace, tolerance, T(0)), 1);
  EXPECT_LE((inPlace - solution).Length(), T(5e-3));

  CQXVectorN<T> shifted(2), right(2, T(3));  // (2 + 1) x = 3, the start plays no part
  CQXMatrixN<T> twice(2);
  twice.SetDiagonal(2);
  ASSERT_EQ(CQXAlgebra::SolveByCongugateGradient(twice, right, shifted, tolerance, T(1)), 1);
  EXPECT_NEAR(shifted[1], 1, 1e-5);
  twice(1, 1) = 0;  // no preconditioner
  shifted.SetToConstant(7);
  EXPECT_EQ(CQXAlgebra::SolveByCongugateGradient(twice, right, shifted, tolerance, T(0)), 0);
  EXPECT_EQ(shifted[0], 7);
  // No residual is small enough: the best that was met comes back, no worse than the start.
  CQXMatrixN<T> hilbert(8);
  for (std::int32_t i = 0; i < 64; ++i) hilbert[i] = 1 / static_cast<T>(i / 8 + i % 8 + 1);
  CQXVectorN<T> ones(8, T(1)), best(8);
  EXPECT_EQ(CQXAlgebra::SolveByCongugateGradient(hilbert, ones, best, T(0), T(0)), 0);
  EXPECT_LT((hilbert * best - ones).Length(), ones.Length());
  ones[0] = std::numeric_limits<T>::quiet_NaN();
  EXPECT_EQ(CQXAlgebra::SolveByCongugateGradient(hilbert, ones, best, T(0), T(0)), 0);
}

TEST(Counts, FollowTheTriangleInsideAndAreOneOutside) {
  std::int64_t row[31] = {1};
  for (std::int32_t n = 1; n <= 30; ++n) {
    for (std::int32_t k = n; k > 0; --k) row[k] += row[k - 1];
    for (std::int32_t k = 0; k <= n; ++k) {
      EXPECT_EQ(CQXAlgebra::Combinations(n, k), row[k]) << n << " over " << k;
      EXPECT_EQ(CQXAlgebra::Combinations(static_cast<std::uint32_t>(n), static_cast<std::uint32_t>(k)), row[k]);
    }
  }
  EXPECT_EQ(CQXAlgebra::Combinations(5, 7), 1);
  EXPECT_EQ(CQXAlgebra::Combinations(-5, -7), 1);
  EXPECT_EQ(CQXAlgebra::Combinations(0, 0), 1);
}

TEST(Counts, BeyondTheIntegerRangeAreIndefinite) {
  constexpr std::int32_t indefinite = std::numeric_limits<std::int32_t>::min();
  EXPECT_EQ(CQXAlgebra::Combinations(34, 17), indefinite);
  EXPECT_EQ(CQXAlgebra::Combinations(4294967295u, 2147483647u), indefinite);
  EXPECT_EQ(CQXAlgebra::Combinations(4294967295u, 1u), indefinite);
  std::int32_t factorial = 1;
  for (std::int32_t n = 0; n <= 12; ++n) {
    if (n > 0) factorial *= n;
    EXPECT_EQ(CQXAlgebra::Permutations(n), factorial);
    EXPECT_EQ(CQXAlgebra::Permutations(static_cast<std::uint32_t>(n)), factorial);
  }
  EXPECT_EQ(CQXAlgebra::Permutations(13), indefinite);
  EXPECT_EQ(CQXAlgebra::Permutations(4294967295u), indefinite);
  EXPECT_EQ(CQXAlgebra::Permutations(-3), 1);
}

}  // namespace
