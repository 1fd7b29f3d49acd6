#include <qx/matrices/matrix_n.h>
#include <qx/solvers/algebra.h>

#include <algorithm>
#include <cmath>
#include <limits>
#include <utility>

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
    TypeParam a, b, c, d, r0, r1, tol, x, y;
    std::int32_t code, flag;
  } cases[] = {{2, 1, 1, 3, 5, 10, 0, 1, 3, 1, 1},     {1, 1, 1, 1, 2, 3, 0, 0, 0, -1, 1},  // unique; inconsistent
               {0, 0, 0, 0, 0, 0, 0, 1, 1, -2, 1},     {0, 2, 0, 0, 4, 0, 0, 1, 1, -2, 1},  // all zero; b alone
               {0, 2, 0, 2, 8, 8, 0, 1, 3, -2, 1},     {2, 4, 1, 2, 8, 4, 0, 2, 1, -2, 1},  // (r0 - b) / b; a first
               {0, 0, 4, 2, 0, 10, 0, 2, 1, -2, 1},    {0, 0, 0, 2, 0, 10, 0, 1, 5, -2, 1},
               {1, 1, 1, 2, 0, 0, 1, 1, -0.5f, -2, 1},  // a determinant at the tolerance is none
               {4, 0, 0, 1, 8, 1, 0.5f, 2, 1, 1, 2}};   // 17 / 4 times the tolerance
  for (const auto& c : cases) {
    TypeParam x = -7, y = -7;
    std::int32_t flag = 0;
    EXPECT_EQ(CQXAlgebra::Solve2x2System(c.a, c.b, c.c, c.d, c.r0, c.r1, x, y, flag, c.tol), c.code);
    EXPECT_EQ(flag, c.flag);
    EXPECT_EQ(x, c.x);
    EXPECT_EQ(y, c.y);
  }
}

TYPED_TEST(Algebra, ThreeByThreeSystemsOfEveryRank) {
  using T = TypeParam;
  std::int32_t flag, unique = 0;
  T x, y, z, m[9], r[3];
  const auto solve = [&](const T* a, const T* b) {
    return CQXAlgebra::Solve3x3System(a[0], a[1], a[2], a[3], a[4], a[5], a[6], a[7], a[8], b[0], b[1], b[2], x, y, z,
                                      flag, this->tol);
  };
  const auto expect = [&](T expectedX, T expectedY, T expectedZ) {
    EXPECT_EQ(flag, 1);
    EXPECT_EQ(x, expectedX);
    EXPECT_EQ(y, expectedY);
    EXPECT_EQ(z, expectedZ);
  };
  // Unique: the solution (1, -2, 3) of every matrix of small whole numbers that is not singular.
  for (std::int32_t seed = 0; seed < 200; ++seed) {
    for (std::int32_t i = 0; i < 9; ++i) m[i] = T((seed * (i + 3) * (2 * i + 5)) % 11 - 5);
    for (std::int32_t i = 0; i < 3; ++i) r[i] = m[3 * i] - 2 * m[3 * i + 1] + 3 * m[3 * i + 2];
    if (solve(m, r) != 1) continue;
    ++unique;
    expect(1, -2, 3);
  }
  EXPECT_GT(unique, 100);
  const struct {
    T m[9], r[3];
    std::int32_t code;
    T x, y, z;
  } cases[] = {{{1, 2, 3, 2, 4, 6, 1, 1, 1}, {1, 3, 1}, -1, 0, 0, 0},
               // Rank 2: the unknown outside the chosen minor is 1 and the equations of the pair hold.
               {{1, 0, 0, 0, 1, 0, 1, 1, 0}, {5, 7, 12}, -2, 5, 7, 1},  // xy
               {{1, 0, 0, 0, 0, 1, 1, 0, 1}, {5, 7, 12}, -2, 5, 1, 7},  // xz
               {{0, 1, 0, 0, 0, 1, 0, 1, 1}, {5, 7, 12}, -2, 1, 5, 7},  // yz
               {{1, 0, 0, 2, 0, 0, 0, 1, 1}, {5, 10, 7}, -2, 5, 1, 6},  // the second pair; a tie of xy and xz
               {{0, 0, 0, 1, 1, 0, 1, 0, 1}, {0, 5, 9}, -2, 1, 4, 8},   // the last pair; ties go to yz
               {{0, 0, 0, 2, 3, 4, 4, 6, 8}, {0, 9, 18}, -2, 1, 1, 1},  // rank 1: the third is the largest
               {{2, 2, 2, 0, 0, 0, 0, 0, 0}, {10, 0, 0}, -2, 3, 1, 1},  // ties: the first
               {{1, 3, 3, 0, 0, 0, 0, 0, 0}, {10, 0, 0}, -2, 1, 2, 1},  // the second
               {{}, {}, -2, 1, 1, 1}};
  for (const auto& c : cases) {
    EXPECT_EQ(solve(c.m, c.r), c.code);
    expect(c.x, c.y, c.z);
  }
}

TYPED_TEST(Algebra, QuadraticsFromKnownRoots) {
  using T = TypeParam;
  T x1, x2;
  CQXComplex<T> z1(3, 4), z2(5, 6);
  for (std::int32_t i = -8; i <= 8; ++i) {
    for (std::int32_t j = i; j <= 8; ++j) {
      EXPECT_EQ(CQXAlgebra::SolveReducedQuadratic(T(-i - j), T(i * j), x1, x2, T(1e-3)), i == j ? 1 : 2);
      EXPECT_NEAR(x1, i, 16 * this->eps);
      EXPECT_NEAR(x2, j, 16 * this->eps);
      EXPECT_EQ(CQXAlgebra::SolveQuadratic(T(2), T(-2 * (i + j)), T(2 * i * j), z1, z2, T(1e-3)), i == j ? 1 : 2);
      EXPECT_EQ(z1.Real(), x1);
      EXPECT_EQ(z2.Real(), x2);
      // The pair i + j sqrt(-1).
      const T q = T(i * i + j * j);
      EXPECT_EQ(CQXAlgebra::SolveReducedQuadratic(T(-2 * i), q, z1, z2, T(1e-3)), j == 0 ? 1 : 0);
      EXPECT_EQ(z1.Real(), T(i));
      EXPECT_NEAR(z1.Imag(), std::abs(j), 16 * this->eps);
      EXPECT_EQ(z2.Imag(), -z1.Imag());
    }
  }
  EXPECT_EQ(CQXAlgebra::SolveQuadratic(T(1), T(0), T(-5e-7), x1, x2, T(1e-9)), 1);  // the band is absolute
  EXPECT_EQ(CQXAlgebra::SolveQuadratic(T(1), T(0), T(-2e-6), x1, x2, T(1e-9)), 2);
  EXPECT_EQ(CQXAlgebra::SolveReducedQuadratic(T(0), T(-0.5), x1, x2, T(0.5)), 1);  // the edge belongs to the band
  EXPECT_EQ(CQXAlgebra::SolveReducedQuadratic(T(0), T(0.5), x1, x2, T(0.5)), 1);
  EXPECT_EQ(CQXAlgebra::SolveQuadratic(T(0), T(2), T(3), x1, x2, T(1e-3)), 1);
  EXPECT_EQ(x2, T(-1.5));
  EXPECT_EQ(CQXAlgebra::SolveQuadratic(T(0), T(0), T(0), x1, x2, T(1e-3)), -2);
  EXPECT_EQ(x1, 0);
  EXPECT_EQ(CQXAlgebra::SolveQuadratic(T(0), T(0), T(1), z1, z2, T(1e-3)), -1);
  EXPECT_EQ(z1.Imag() + z2.Real(), 0);
}

TYPED_TEST(Algebra, CubicsFromKnownRoots) {
  using T = TypeParam;
  const T bound = 512 * this->eps;
  T x[3];
  const auto solve = [&](T a, T b, T c, T tolerance) {
    return CQXAlgebra::SolveReducedCubic(a, b, c, x[0], x[1], x[2], tolerance);
  };
  const auto expect = [&](T x1, T x2, T x3, T within) {
    EXPECT_NEAR(x[0], x1, within);
    EXPECT_NEAR(x[1], x2, within);
    EXPECT_NEAR(x[2], x3, within);
  };
  for (std::int32_t i = -4; i <= 4; ++i) {
    for (std::int32_t j = i + 1; j <= 4; ++j) {
      for (std::int32_t k = j + 1; k <= 4; ++k) {
        EXPECT_EQ(solve(T(-i - j - k), T(i * j + j * k + i * k), T(-i * j * k), T(1e-6)), 3);
        std::sort(x, x + 3);
        expect(T(i), T(j), T(k), bound);
      }
      if (j == 0) continue;
      // One real root i and the pair 1 +- j sqrt(-1).
      CQXComplex<T> z1, z2, z3;
      const T a = T(-i - 2), b = T(2 * i + 1 + j * j), c = T(-i * (1 + j * j));
      EXPECT_EQ(solve(a, b, c, T(1e-6)), 1);
      expect(T(i), 1, T(std::abs(j)), bound);
      EXPECT_EQ(CQXAlgebra::SolveReducedCubic(a, b, c, z1, z2, z3, T(1e-6)), 1);
      EXPECT_EQ(z1.Real(), x[0]);
      EXPECT_EQ(z2.Real(), x[1]);
      EXPECT_EQ(z2.Imag(), x[2]);
      EXPECT_EQ(z3.Imag(), -x[2]);
      // A double root: the whole numbers are exact, so is the test for it.
      EXPECT_EQ(solve(T(-3 * (i + 2 * j)), T(9 * (2 * i * j + j * j)), T(-27 * i * j * j), T(1e-4)), 2);
      expect(T(3 * i), T(3 * j), T(3 * j), bound);
    }
  }
  EXPECT_EQ(solve(0, 0, 0, T(1e-6)), 2);
  expect(0, 0, 0, 0);
  EXPECT_EQ(solve(-3, 3, -1, 0), 2);  // a triple root is one with any tolerance
  expect(1, 1, 1, this->eps);
  // Three close roots: the guard takes the root of Q^3 for zero, and the roots stay numbers.
  const T h = std::is_same_v<T, float> ? T(0.03125) : T(0.015625);
  EXPECT_EQ(solve(0, -h * h, 0, T(1e-9)), 3);
  expect(-h, h, 0, h * bound);
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
  calls = slopeCalls = 0;
  const auto expect = [](T result, T expected, std::int32_t f, std::int32_t df) {
    EXPECT_EQ(result, expected);
    EXPECT_EQ(calls, f);
    EXPECT_EQ(slopeCalls, df);
    calls = slopeCalls = 0;
  };
  T root = -9;
  expect(T(CQXAlgebra::Newton(T(0), T(5), T(1e-3), root, Counted<T, 0>, CountedSlope<T, 0>)), 1, 2, 2);
  EXPECT_EQ(root, 1);
  expect(T(CQXAlgebra::Newton(T(2), T(5), T(1e-3), root, Counted<T, 0>, CountedSlope<T, 0>)), 0, 1, 1);
  EXPECT_EQ(root, 1);  // untouched: the iterate left the interval
  expect(T(CQXAlgebra::Newton(T(0), T(5), T(1e-3), root, Counted<T, 5>, CountedSlope<T, 5>)), 1, 1, 1);
  EXPECT_EQ(root, T(2.5));  // flat: the middle
  expect(T(CQXAlgebra::Newton(T(0), T(5), T(0), root, Counted<T, 0>, CountedSlope<T, 0>)), 0, 19, 19);
  EXPECT_EQ(root, 1);

  expect(CQXAlgebra::SafeNewton(T(0), T(5), T(1e-3), Counted<T, 0>, CountedSlope<T, 0>), 1, 4, 2);
  expect(CQXAlgebra::SafeNewton(T(1), T(5), T(1e-3), Counted<T, 0>, CountedSlope<T, 0>), 1, 2, 0);
  // Ninety-nine halvings of the interval, and far from done.
  expect(CQXAlgebra::SafeNewton(T(0), T(1e30), T(0), Counted<T, 2>, CountedSlope<T, 2>), std::ldexp(T(1e30), -99), 102,
         100);
  expect(CQXAlgebra::Brent(T(0), T(5), T(1e-3), Counted<T, 0>), 1, 3, 0);  // the ends and the interpolated point
  expect(CQXAlgebra::Secant(T(0), T(5), T(1e-3), Counted<T, 0>), 1, 3, 0);
  expect(CQXAlgebra::Bisection(T(0), T(4), T(0), Counted<T, 0>), 1, 4, 0);
  expect(CQXAlgebra::Bisection(T(0), T(1), T(0), Counted<T, 0>), 0, 2,
         0);  // f(1) is zero: the negative side comes back
  expect(CQXAlgebra::Bisection(T(0), T(1), T(0.125), Counted<T, 2>), T(0.25), 5, 0);
  expect(CQXAlgebra::Bisection(T(1), T(0), T(0.125), Counted<T, 2>), T(0.25), 5, 0);
  EXPECT_FALSE(std::isfinite(CQXAlgebra::Secant(T(1), T(2), T(1e-3), Counted<T, 5>)));
  expect(0, 0, 51, 0);

  const T cubeRoot = std::cbrt(T(2)), bound = 4 * QX_TOLERANCE<T>;
  EXPECT_NEAR(CQXAlgebra::SafeNewton(T(4), T(-3), this->eps, Counted<T, 1>, CountedSlope<T, 1>), cubeRoot, bound);
  EXPECT_NEAR(CQXAlgebra::Secant(T(1), T(2), this->eps, Counted<T, 1>), cubeRoot, bound);
  calls = slopeCalls = 0;
  EXPECT_NEAR(CQXAlgebra::Brent(T(-3), T(4), this->eps, Counted<T, 1>), cubeRoot, bound);
  EXPECT_LE(std::exchange(calls, 0), 20);

  T lower[10] = {T(0.25)}, upper[10];
  const auto narrow = [&](const T& lo, const T& hi, std::int32_t n) {
    std::int32_t found = -1;
    CQXAlgebra::NarrowRootBrackets(lo, hi, n, found, lower, upper, Counted<T, 3>);
    return T(found);
  };
  upper[0] = T(1.5);
  expect(narrow(lower[0], upper[0], 1), 1, 2, 0);  // the ends may stand in the arrays
  expect(narrow(T(0.25), T(4.25), 8), 3, 9, 0);
  for (std::int32_t i = 0; i < 3; ++i) EXPECT_TRUE(lower[i] < T(i + 1) && upper[i] > T(i + 1));
  expect(narrow(0, 4, 4), 0, 5, 0);  // zeros at the samples
  expect(narrow(0, 4, 0), 0, 1, 0);

  T x1 = 0, x2 = 4;
  expect(T(CQXAlgebra::SearchRootBrackets(x1, x2, Counted<T, 0>)), 1, 2, 0);
  EXPECT_EQ(x2, 4);
  x2 = 1;
  expect(T(CQXAlgebra::SearchRootBrackets(x1, x2, Counted<T, 4>)), 1, 5, 0);
  EXPECT_LT(x1, -10);
  EXPECT_EQ(x2, 1);
  x1 = 3;
  x2 = 2;  // the larger value at x1: x2 moves and its value is never seen
  expect(T(CQXAlgebra::SearchRootBrackets(x1, x2, Counted<T, 0>)), 0, 51, 0);
  EXPECT_EQ(x1, 3);
  EXPECT_LT(x2, -10);
}

TYPED_TEST(Algebra, CallablesAreEvaluatedAsPlainFunctionsAre) {
  using T = TypeParam;
  int values = 0, slopes = 0;
  const auto f = [&](T x) { return ++values, Counted<T, 1>(x); };
  auto df = [&](T x) { return ++slopes, CountedSlope<T, 1>(x); };
  const T lo = -1, hi = 3, step = T(1e-4);
  T root = 0, plainRoot = 0, ends[2][9], plainEnds[2][9];
  std::int32_t found = 0, plainFound = 0;
  calls = slopeCalls = 0;
  EXPECT_EQ(CQXAlgebra::Newton(lo, hi, step, root, f, df),
            CQXAlgebra::Newton(lo, hi, step, plainRoot, Counted<T, 1>, CountedSlope<T, 1>));
  EXPECT_EQ(root, plainRoot);
  EXPECT_EQ(CQXAlgebra::SafeNewton(lo, hi, step, f, df),
            CQXAlgebra::SafeNewton(lo, hi, step, Counted<T, 1>, CountedSlope<T, 1>));
  EXPECT_EQ(CQXAlgebra::Brent(lo, hi, step, f), CQXAlgebra::Brent(lo, hi, step, Counted<T, 1>));
  EXPECT_EQ(CQXAlgebra::Secant(lo, hi, step, f), CQXAlgebra::Secant(lo, hi, step, Counted<T, 1>));
  EXPECT_EQ(CQXAlgebra::Bisection(lo, hi, step, f), CQXAlgebra::Bisection(lo, hi, step, Counted<T, 1>));
  CQXAlgebra::NarrowRootBrackets(lo, hi, 9, found, ends[0], ends[1], f);
  CQXAlgebra::NarrowRootBrackets(lo, hi, 9, plainFound, plainEnds[0], plainEnds[1], Counted<T, 1>);
  ASSERT_EQ(found, 1);
  EXPECT_EQ(plainFound, 1);
  EXPECT_EQ(ends[1][0], plainEnds[1][0]);
  T x1 = 0, x2 = T(0.5), plain1 = x1, plain2 = x2;
  EXPECT_EQ(CQXAlgebra::SearchRootBrackets(x1, x2, f), CQXAlgebra::SearchRootBrackets(plain1, plain2, Counted<T, 1>));
  EXPECT_EQ(x1, plain1);
  EXPECT_EQ(values * 2, calls);  // the callables count the plain functions too
  EXPECT_EQ(slopes * 2, slopeCalls);
}

TYPED_TEST(Algebra, ConjugateGradients) {
  using T = TypeParam;
  const std::int32_t n = 30;
  const T tolerance = T(1e-5);
  CQXMatrixN<T> a(n), twice(2);
  CQXVectorN<T> solution(n), shifted(2), right(2, T(3));
  for (std::int32_t i = 0; i < n; ++i) {  // the second difference, symmetric and positive definite
    a(i, i) = T(2.5);
    if (i > 0) a(i, i - 1) = a(i - 1, i) = -1;
    solution[i] = static_cast<T>((i * 7) % 5 - 2);
  }
  for (const bool isSymmetric : {true, false}) {  // otherwise the normal equations
    if (!isSymmetric) a(0, n - 1) = 1;
    const CQXVectorN<T> b = a * solution;
    CQXVectorN<T> x(n), inPlace(b);
    ASSERT_EQ(CQXAlgebra::SolveByCongugateGradient(a, b, x, tolerance, T(0)), 1);
    ASSERT_EQ(CQXAlgebra::SolveByCongugateGradient(a, inPlace, inPlace, tolerance, T(0)), 1);
    EXPECT_LE((x - solution).Length(), T(5e-3));
    EXPECT_LE((inPlace - solution).Length(), T(5e-3));
    if (!isSymmetric) continue;
    EXPECT_LE((a * x - b).Length(), tolerance * b.Length());
    for (std::int32_t round = 0; round < 3; ++round) {  // what no residual satisfies leaves x no worse than it was
      const T before = (a * x - b).SquareLength();
      static_cast<void>(CQXAlgebra::SolveByCongugateGradient(a, b, x, T(0), T(0)));
      EXPECT_LE((a * x - b).SquareLength(), before);
    }
  }
  twice.SetDiagonal(2);
  ASSERT_EQ(CQXAlgebra::SolveByCongugateGradient(twice, right, shifted, tolerance, T(1)), 1);  // (2 + 1) x = 3
  EXPECT_NEAR(shifted[1], 1, 1e-5);
  twice(1, 1) = 0;  // no preconditioner
  shifted.SetToConstant(7);
  EXPECT_EQ(CQXAlgebra::SolveByCongugateGradient(twice, right, shifted, tolerance, T(0)), 0);
  EXPECT_EQ(shifted[0], 7);
  twice(1, 1) = 2;
  right[0] = std::numeric_limits<T>::quiet_NaN();
  EXPECT_EQ(CQXAlgebra::SolveByCongugateGradient(twice, right, shifted, tolerance, T(0)), 0);
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
  constexpr std::int32_t indefinite = std::numeric_limits<std::int32_t>::min();
  EXPECT_EQ(CQXAlgebra::Combinations(34, 17), indefinite);
  EXPECT_EQ(CQXAlgebra::Combinations(4294967295u, 2147483647u), indefinite);
  EXPECT_EQ(CQXAlgebra::Combinations(4294967295u, 1u), indefinite);
  std::int64_t factorial = 1;
  for (std::int32_t n = 0; n <= 12; factorial *= ++n) {
    EXPECT_EQ(CQXAlgebra::Permutations(n), factorial);
    EXPECT_EQ(CQXAlgebra::Permutations(static_cast<std::uint32_t>(n)), factorial);
  }
  EXPECT_EQ(CQXAlgebra::Permutations(13), indefinite);
  EXPECT_EQ(CQXAlgebra::Permutations(4294967295u), indefinite);
  EXPECT_EQ(CQXAlgebra::Permutations(-3), 1);
}

}  // namespace
