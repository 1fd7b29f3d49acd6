#include <qx/matrices/matrix_mn.h>

#include "tests/matrices/residuals.h"

namespace {

using namespace residuals;

template <typename T>
class Rectangular : public ::testing::Test {
 protected:
  static constexpr T eps = std::numeric_limits<T>::epsilon();

  template <typename Check>
  static void Sweep(Check check) {
    const std::int32_t sizes[][2] = {{1, 1}, {1, 4}, {4, 1},  {2, 2},   {3, 3},  {4, 4},   {5, 3},  {3, 5},
                                     {7, 7}, {8, 6}, {9, 20}, {16, 16}, {33, 9}, {12, 40}, {40, 40}};
    for (const std::string& kind : kinds) {
      for (const auto& size : sizes) {
        SCOPED_TRACE(kind + " " + std::to_string(size[0]) + " x " + std::to_string(size[1]));
        check(Make<T>(kind, size[0], size[1]));
      }
    }
    check(Make<T>("random", 130, 70));
    check(Make<T>("hilbert", 70, 130));
  }
};
TYPED_TEST_SUITE(Rectangular, FloatTypes);

TYPED_TEST(Rectangular, QRFactorsTheMatrix) {
  using T = TypeParam;
  this->Sweep([](const CQXMatrixMN<T>& a) {
    CQXMatrixMN<T> q(a.RowsNb(), a.RowsNb()), r(a.RowsNb(), a.ColsNb());
    ASSERT_EQ(a.QR_Decomposition(q, r), 1);
    const double n = std::max(a.RowsNb(), a.ColsNb());
    EXPECT_EQ(r.IsURTriangular(0), 1);
    ExpectSmall<T>("QR: A - QR over n norm", Size(q * r - a), n * Size(a), 4);
    ExpectSmall<T>("QR: I - Q^T Q over n", LossOfOrthogonality(q), n, 4);
    CQXMatrixMN<T> inPlace(a);
    ASSERT_EQ(inPlace.QR_Decomposition(q, inPlace), 1);
    EXPECT_TRUE(inPlace == r);
  });
}

TYPED_TEST(Rectangular, SingularValuesComposeTheMatrix) {
  using T = TypeParam;
  this->Sweep([](const CQXMatrixMN<T>& a) {
    const std::int32_t rows = a.RowsNb(), columns = a.ColsNb(), count = std::min(rows, columns);
    const double n = std::max(rows, columns);
    CQXMatrixMN<T> u(rows, rows), v(columns, columns), diagonal(rows, columns), thinU(rows, count),
        thinV(columns, count);
    CQXVectorN<T> s(count), remembered(count), thinS(count), offsetS(count + 1);
    ASSERT_EQ(a.SV_Decomposition(u, v, s, 0), 0);
    for (std::int32_t i = 0; i < count; ++i) {
      EXPECT_FALSE(std::signbit(s[i]));
      EXPECT_LE(s[i], s[std::max(i - 1, 0)]);
      diagonal(i, i) = s[i];
    }
    ExpectSmall<T>("SVD: A - U S V^T over n norm", Size(u * diagonal * v.Transpose() - a), n * Size(a), 4);
    ExpectSmall<T>("SVD: I - U^T U over n", LossOfOrthogonality(u), n, 4);
    ExpectSmall<T>("SVD: I - V^T V over n", LossOfOrthogonality(v), n, 4);
    EXPECT_EQ(a.IsSingCalculated(), 1);
    a.GetSingularNumbers(remembered.Data());
    EXPECT_TRUE(remembered == s);

    ASSERT_EQ(a.ThinSVD(thinU, thinV, thinS), 1);
    EXPECT_TRUE(thinS == s);
    EXPECT_TRUE(thinU == u.ExtractLeftCornerMatrix(rows, count));
    EXPECT_TRUE(thinV == v.ExtractLeftCornerMatrix(columns, count));

    CQXMatrixMN<T> offset(rows + 1, columns + 1), offsetV(columns + 1);
    offset.InsertMatrix(a, 1, 1, rows, columns);
    ASSERT_EQ(a.ThinSVDUnitOffsetInPlace(offset, offsetS, offsetV), rows >= columns);
    if (rows < columns) return;
    EXPECT_TRUE(offset.ExtractMatrix(1, 1, rows, count) == thinU);
    EXPECT_TRUE(offsetV.ExtractMatrix(1, 1, count, count) == thinV);
    EXPECT_EQ(offsetS[0], 0);
    EXPECT_EQ(offsetS[count], s[count - 1]);
  });
}

/// Checks QR and singular values of a 2^power, where success must mean a small residual. @return how many succeeded.
template <typename T>
std::int32_t ExpectFactors(const CQXMatrixMN<T>& a, std::int32_t power) {
  const auto scaled = [](const CQXMatrixMN<T>& m, std::int32_t exponent) {
    CQXMatrixMN<T> result(m);
    for (std::int32_t i = 0; i < m.RowsNb() * m.ColsNb(); ++i) result[i] = std::ldexp(m[i], exponent);
    return result;
  };
  const std::int32_t rows = a.RowsNb(), columns = a.ColsNb(), count = std::min(rows, columns);
  const CQXMatrixMN<T> given = scaled(a, power), rounded = scaled(given, -power);
  CQXMatrixMN<T> q(rows), r(rows, columns), u(rows), v(columns), d(rows, columns);
  CQXVectorN<T> s(count);
  // In units of the last place of the result, which is larger where the matrix reaches below the normal numbers.
  const double lowest = std::ldexp(static_cast<double>(std::numeric_limits<T>::denorm_min()), -power);
  const double unit = std::max(static_cast<double>(std::numeric_limits<T>::epsilon()) * Size(a), lowest);
  const double bound = 8.0 * std::max(rows, columns);
  const bool hasQR = given.QR_Decomposition(q, r) == 1, hasSVD = given.SV_Decomposition(u, v, s, 0) == 0;
  if (hasQR) {
    EXPECT_LE(Size(q * scaled(r, -power) - rounded) / unit, bound) << power;
    EXPECT_LE(LossOfOrthogonality(q) / static_cast<double>(std::numeric_limits<T>::epsilon()), bound) << power;
  }
  if (hasSVD) {
    for (std::int32_t i = 0; i < count; ++i) d(i, i) = std::ldexp(s[i], -power);
    EXPECT_LE(Size(u * d * v.Transpose() - rounded) / unit, bound) << power;
    EXPECT_LE(LossOfOrthogonality(u) / static_cast<double>(std::numeric_limits<T>::epsilon()), bound) << power;
  }
  return hasQR + hasSVD;
}

TYPED_TEST(Rectangular, TailsOfEverySizeReflectOrthogonally) {
  using T = TypeParam;
  using Limits = std::numeric_limits<T>;
  for (std::int32_t k = 0; k <= Limits::digits - Limits::min_exponent; ++k) {
    SCOPED_TRACE(k);
    const T tail = std::ldexp(T(1), -k), elements[] = {1, 1, tail, 1, tail / 3, -2}, square[] = {1, 1, tail, 1};
    EXPECT_EQ(ExpectFactors(CQXMatrixMN<T>(2, square), 0), 2);
    EXPECT_EQ(ExpectFactors(CQXMatrixMN<T>(3, 2, elements), 0), 2);
    EXPECT_EQ(ExpectFactors(CQXMatrixMN<T>(3, 2, elements).Transpose(), 0), 2);
  }
  const T large[] = {T(1e20), T(1e20), 10, T(1e20)};
  EXPECT_EQ(ExpectFactors(CQXMatrixMN<T>(2, large), 0), 2);
}

TYPED_TEST(Rectangular, FactorsOverTheWholeRangeOfExponents) {
  using T = TypeParam;
  using Limits = std::numeric_limits<T>;
  for (const auto& [rows, columns] : {std::pair{3, 3}, {5, 2}, {2, 4}}) {
    const CQXMatrixMN<T> a = Make<T>("random", rows, columns);
    for (std::int32_t k = Limits::min_exponent - Limits::digits; k <= Limits::max_exponent; ++k) {
      EXPECT_GE(ExpectFactors(a, k), k < Limits::max_exponent - 2 ? 2 : 0) << k;  // beyond, they may have no room
    }
  }
}

TYPED_TEST(Rectangular, PseudoInversesSatisfyTheConditionsOfPenrose) {
  using T = TypeParam;
  this->Sweep([](const CQXMatrixMN<T>& a) {
    CQXMatrixMN<T> p(a.ColsNb(), a.RowsNb());
    CQXVectorN<T> b(a.RowsNb(), T(1)), x(a.ColsNb());
    T condition = -1;
    ASSERT_EQ(a.PseudoInverse(p, QX_MATRIX_NORM_SPECTRAL, condition), 1);
    ASSERT_EQ(a.PseudoSolveSystem(b, x, QX_MATRIX_NORM_SPECTRAL, condition), 1);
    EXPECT_TRUE(x == p * b);
    if (Largest(a) == 0) {
      EXPECT_EQ(Largest(p), 0);
      EXPECT_EQ(condition, QX_OVERFLOW_VALUE<T>);
      return;
    }
    EXPECT_GE(condition, T(1));
    EXPECT_LE(condition, T(1.001e6));
    const CQXMatrixMN<T> ap = a * p, pa = p * a;
    const double scale = std::max(a.RowsNb(), a.ColsNb()) * static_cast<double>(condition);
    ExpectSmall<T>("pseudo-inverse: (AP)^T - AP over n cond", Size(ap.Transpose() - ap), scale, 4);
    ExpectSmall<T>("pseudo-inverse: (PA)^T - PA over n cond", Size(pa.Transpose() - pa), scale, 4);
    ExpectSmall<T>("pseudo-inverse: PAP - P over n cond norm", Size(pa * p - p), scale * Size(p), 4);
  });
}

TYPED_TEST(Rectangular, InversesAndTheirCodes) {
  using T = TypeParam;
  T condition = -1;
  for (std::int32_t n = 1; n <= 40; n += n < 8 ? 1 : 16) {
    SCOPED_TRACE(n);
    CQXMatrixMN<T> a = Make<T>("random", n, n), inverse(n), byNorm(n), unit(n);
    unit.SetDiagonal(1);
    a += unit * 3;
    ASSERT_EQ(a.Inverse(inverse, T(1e-6)), 1);
    ASSERT_EQ(a.Inverse(byNorm, QX_MATRIX_NORM_SPECTRAL, T(1e-6), condition), 1);
    for (const CQXMatrixMN<T>& x : {inverse, byNorm}) {
      ExpectSmall<T>("inverse by singular values: AX - I over n cond", Size(a * x - unit),
                     n * static_cast<double>(condition), 4);
    }
    // Singular: the last row is the first one, or zero for size 1.
    for (std::int32_t c = 0; c < n; ++c) a(n - 1, c) = n == 1 ? T(0) : a(0, c);
    EXPECT_EQ(a.Inverse(unit, T(1e-6)), 0);
    EXPECT_EQ(a.Inverse(unit, QX_MATRIX_NORM_EUCLIDEAN, T(1e-6), condition), 0);
    EXPECT_EQ(condition, QX_OVERFLOW_VALUE<T>);
    EXPECT_EQ(unit.IsDiagonal(0), 1);  // untouched
    CQXMatrixMN<T> wide(n, n + 1);
    condition = 0;
    EXPECT_EQ(wide.Inverse(unit, T(0)), 0);
    EXPECT_EQ(wide.Inverse(unit, QX_MATRIX_NORM_ROW_SUM, T(0), condition), 0);
    EXPECT_EQ(condition, QX_OVERFLOW_VALUE<T>);
  }
}

TYPED_TEST(Rectangular, OnlyTheFixedBoundRefusesAnInverse) {
  using T = TypeParam;
  for (const T smallest : {T(0.5), T(1.1e-6), T(0.9e-6)}) {
    const T diagonal[] = {T(1e6), 1, smallest, 1, 1};
    CQXMatrixMN<T> a(5), inverse(5);
    for (std::int32_t i = 0; i < 5; ++i) a(i, i) = diagonal[i];
    EXPECT_EQ(a.Inverse(inverse, T(0.7)), smallest > T(1e-6));  // the tolerance is that of size 4
    EXPECT_EQ(inverse(2, 2), smallest > T(1e-6) ? 1 / smallest : 0);
  }
}

TYPED_TEST(Rectangular, RanksCountSingularNumbersAboveTheTolerance) {
  using T = TypeParam;
  for (const std::int32_t n : {2, 6, 11, 24}) {
    EXPECT_EQ(Make<T>("rank deficient", n + 2, n).CalculateRank(T(1e-4)), n / 2);
    EXPECT_EQ(Make<T>("random", n, n + 3).CalculateRank(T(1e-4)), n);
    EXPECT_EQ(Make<T>("equal", n, n).CalculateRank(T(n) / 2), 1);
  }
  CQXMatrixMN<T> a = Make<T>("diagonal", 3, 3);
  EXPECT_EQ(a.GetRank(), 0);  // of the sized constructor
  EXPECT_EQ(a.CalculateRank(0), 3);
  a(1, 1) = 0;
  EXPECT_EQ(a.GetRank(), 3);         // elements do not clear what is remembered
  EXPECT_EQ(a.CalculateRank(0), 2);  // always afresh
  a(0, 0) = std::numeric_limits<T>::infinity();
  EXPECT_EQ(a.CalculateRank(0), -1);
  EXPECT_EQ(a.GetRank(), -1);
  for (const auto& [rows, columns] : {std::pair{-3, -1}, {-1, 2}, {2, -1}, {0, 2}, {4, 3}}) {
    EXPECT_EQ(CQXMatrixMN<T>(rows, columns).CalculateRank(0), 0);
  }
}

TYPED_TEST(Rectangular, NothingIsTouchedWithoutFiniteElements) {
  using T = TypeParam;
  for (const T bad : {std::numeric_limits<T>::quiet_NaN(), std::numeric_limits<T>::infinity()}) {
    for (const std::int32_t n : {1, 2, 5}) {
      CQXMatrixMN<T> a = Make<T>("random", n, n), u(n), v(n);
      CQXVectorN<T> s(n, T(7));
      T condition = 0;
      a(n - 1, 0) = bad;
      EXPECT_EQ(a.SV_Decomposition(u, v, s, 0), 1);
      EXPECT_EQ(a.ThinSVD(u, v, s), 0);
      EXPECT_EQ(a.QR_Decomposition(u, v), 0);
      EXPECT_EQ(a.PseudoSolveSystem(s, s, QX_MATRIX_NORM_SPECTRAL, condition), 0);
      EXPECT_EQ(Largest(u) + Largest(v), 0);
      EXPECT_EQ(s[n - 1], 7);
      EXPECT_EQ(a.IsSingCalculated(), 0);
      for (const std::int32_t norm : {0, 1, 2, 3}) {
        EXPECT_FALSE(std::isfinite(a.Norm(static_cast<qxMatrixNorm>(norm))));
      }
    }
  }
  CQXMatrixMN<T> none(0);
  CQXVectorN<T> values;
  EXPECT_EQ(none.SV_Decomposition(none, none, values, 0), 0);
  EXPECT_EQ(none.QR_Decomposition(none, none), 1);
}

TYPED_TEST(Rectangular, OutputsOfAnyShapeReceiveWhatFits) {
  using T = TypeParam;
  const CQXMatrixMN<T> a = Make<T>("random", 7, 4);
  CQXMatrixMN<T> u(7), v(4), narrowU(7, 2), narrowV(3, 1), largeU(9, 9), self(a);
  CQXVectorN<T> s(4), two(2), six(6);
  ASSERT_EQ(a.SV_Decomposition(u, v, s, 0), 0);
  ASSERT_EQ(a.SV_Decomposition(narrowU, narrowV, two, 0), 0);
  ASSERT_EQ(a.SV_Decomposition(largeU, v, six, 0), 0);
  ASSERT_EQ(self.SV_Decomposition(self, v, s, 0), 0);  // U in place: its four leading columns
  EXPECT_TRUE(u.ExtractLeftCornerMatrix(7, 2) == narrowU);
  EXPECT_TRUE(v.ExtractLeftCornerMatrix(3, 1) == narrowV);
  EXPECT_TRUE(largeU.ExtractLeftCornerMatrix(7, 7) == u);
  EXPECT_TRUE(u.ExtractLeftCornerMatrix(7, 4) == self);
  EXPECT_EQ(largeU(8, 8), 0);
  EXPECT_EQ(two[1], s[1]);
  EXPECT_EQ(six[3], s[3]);
  EXPECT_EQ(six[5], 0);
}

TYPED_TEST(Rectangular, TheCacheFollowsAssignments) {
  using T = TypeParam;
  const auto expectKnown = [](const CQXMatrixMN<T>& m, std::int32_t flag, std::int32_t rank) {
    EXPECT_EQ(m.IsSingCalculated(), flag);
    EXPECT_EQ(m.GetRank(), rank);
  };
  const CQXMatrixMN<T> a = Make<T>("random", 3, 3), copy(3, a.Data());
  CQXMatrixMN<T> u(3), v(3), same(3), shorter(2);
  CQXVectorN<T> s(3), values(3, T(-5));
  a.GetSingularNumbers(values.Data());
  EXPECT_EQ(values[0], -5);  // there are none yet
  ASSERT_EQ(a.SV_Decomposition(u, v, s, 0), 0);
  a.CalculateRank(0);
  expectKnown(u, 0, -1);
  expectKnown(same = a, 1, 3);
  expectKnown(shorter = a, 0, -1);
  CQXMatrixMN<T> moved(CQXMatrixMN<T>(same) * 1), taken(std::move(same));
  expectKnown(moved, 0, -1);
  taken.GetSingularNumbers(values.Data());
  EXPECT_TRUE(values == s);
  expectKnown(taken = static_cast<const CQXBaseMatrix<T>&>(a), 0, -1);
  expectKnown(taken = a, 1, 3);
  expectKnown(taken = copy, 0, -1);
}

TYPED_TEST(Rectangular, TheToleranceSelectsTheShortcuts) {
  using T = TypeParam;
  CQXMatrixMN<T> a(4, 3), u(4), v(3);
  CQXVectorN<T> s(3);
  a(0, 0) = -2;
  a(1, 1) = 5;
  a(3, 2) = a(0, 1) = T(1e-4);
  ASSERT_EQ(a.SV_Decomposition(u, v, s, T(1e-3)), 0);  // diagonal within the tolerance
  const T expected[] = {5, 2, 0};
  EXPECT_TRUE(s == CQXVectorN<T>(3, expected));
  EXPECT_EQ(u(1, 0) * v(1, 0), 1);
  EXPECT_EQ(u(0, 1) * v(0, 1), -1);
  ASSERT_EQ(a.SV_Decomposition(u, v, s, 0), 0);
  EXPECT_NEAR(s[2], 1e-4, 1e-6);
}

TYPED_TEST(Rectangular, Norms) {
  using T = TypeParam;
  const T elements[] = {1, -2, 3, -4, 5, -6};
  const CQXMatrixMN<T> a(2, 3, elements);
  EXPECT_EQ(a.Norm(QX_MATRIX_NORM_COLUMN_SUM), 9);
  EXPECT_EQ(a.Norm(QX_MATRIX_NORM_ROW_SUM), 15);
  EXPECT_EQ(a.Norm(QX_MATRIX_NORM_EUCLIDEAN), std::sqrt(T(91)));
  EXPECT_EQ(a.Norm(static_cast<qxMatrixNorm>(9)), std::sqrt(T(91)));
  EXPECT_NEAR(a.Norm(QX_MATRIX_NORM_SPECTRAL), 9.508032000695723, 32 * static_cast<double>(this->eps));
  EXPECT_EQ((a * T(1e-7)).Norm(QX_MATRIX_NORM_EUCLIDEAN), 0);  // guarded
}

TYPED_TEST(Rectangular, PartsAndStructure) {
  using T = TypeParam;
  const T elements[] = {4, 1, 2, 3, 5, 6, 7, 8, 9, 10, 11, 12}, square[] = {4, T(1e-3), 1, 2};
  CQXMatrixMN<T> a(3, 4, elements), d(2, square);
  a.InsertMatrix(a.ExtractLeftCornerMatrix(2, 2), 1, 2, 2, 2);
  EXPECT_EQ(a(2, 3), 6);
  EXPECT_EQ(a.ExtractMatrix(1, 2, 2, 2)(0, 1), 1);
  a.SetElementTransposition(0, 2);
  EXPECT_EQ(a(0, 2), 9);
  EXPECT_EQ(a(2, 0), 2);
  EXPECT_NEAR(a.CorrelationCoefficient(a * T(-2)), -1, 8 * this->eps);
  EXPECT_EQ(a.CorrelationCoefficient(CQXMatrixMN<T>(3, 4)), 0);
  d.AnnulateRelativelyDiagonal(3);
  EXPECT_EQ(d(0, 1), 0);
  EXPECT_EQ(d(1, 0), 1);
  EXPECT_EQ(d.IsLLTriangular(0), 1);
  EXPECT_EQ(d.IsURTriangular(T(0.5)), 0);
  EXPECT_EQ(d.IsDiagonal(1), 1);
  EXPECT_EQ(d.IsBidiagonal(0), 0);
  EXPECT_EQ(d.Transpose().IsBidiagonal(0), 1);
  EXPECT_EQ(d.IsAlmostZero(4), 1);
  EXPECT_EQ(d.IsAlmostZero(T(3.9)), 0);
  d.AnnulateSmallElements(2);
  EXPECT_EQ(d(1, 0), 0);
  EXPECT_EQ(d.Mean(), T(1.5));
  EXPECT_EQ(d.InnerProduct(d), 20);
  EXPECT_EQ(qxAreAlmostEqual(d, d * 2, 4), 1);
  EXPECT_EQ(qxAreAlmostEqual(d, d * 2, T(3.9)), 0);
  EXPECT_EQ(qxAreAlmostEqual(d, CQXMatrixMN<T>(2, 1), 9), 0);
}

/// Opens the helpers of the factorisations.
template <typename T>
struct Helpers : CQXMatrixMN<T> {
  using Base = CQXMatrixMN<T>;
  using Base::operator=;
  using Base::Givens1, Base::Givens2, Base::Householder1, Base::Householder2, Base::Pythagoras, Base::SignA;
};

TYPED_TEST(Rectangular, HelpersOfTheFactorisations) {
  using T = TypeParam;
  using H = Helpers<T>;
  EXPECT_EQ(H::SignA(-3, 0), 3);
  EXPECT_EQ(H::Pythagoras(-4, 3), 5);
  EXPECT_EQ(H::Pythagoras(0, QX_TOLERANCE<T>), 0);
  EXPECT_GT(H::Pythagoras(QX_TOLERANCE<T>, 0), 0);  // only the second is guarded
  EXPECT_TRUE(std::isfinite(H::Pythagoras(std::numeric_limits<T>::max() / 2, std::numeric_limits<T>::max() / 2)));
  T c, s, r;
  for (const T a : {T(0), T(0.5), T(1.2)}) {  // the last is between the tolerance and one and a half of it
    H::Givens1(0, a, c, s, r, 1);
    EXPECT_EQ(r, a > 1 ? a : 0);
    EXPECT_EQ(c, 1);
    EXPECT_EQ(s, 0);
  }
  H::Givens1(0, 0, c, s, r, 0);
  EXPECT_EQ(c, 1);
  H::Givens1(-3, 4, c, s, r, 0);
  T x = -3, y = 4;
  H::Givens2(c, s, x, y);
  EXPECT_NEAR(x, 5, 8 * this->eps);
  EXPECT_NEAR(y, 0, 8 * this->eps);

  T up = 9, zero[3] = {}, vector[] = {0, -3, 0, 4, 0}, matrix[] = {0, 0, -3, 1, 7, 7, 4, 2, 0, 5};
  EXPECT_EQ(H::Householder1(2, 3, 2, 2, up, vector, matrix, 0), 0);
  EXPECT_EQ(H::Householder1(0, 1, 3, 0, up, zero, nullptr, 0), 0);
  EXPECT_EQ(up, 9);  // nothing was done
  EXPECT_EQ(H::Householder1(1, 3, 5, 2, up, vector, matrix, T(1e-6)), 1);
  EXPECT_NEAR(vector[1], -5, 8 * this->eps);  // the sign stays
  EXPECT_NEAR(up, 2, 8 * this->eps);
  EXPECT_NEAR(matrix[2], -5, 16 * this->eps);
  EXPECT_NEAR(matrix[6], 0, 16 * this->eps);
  EXPECT_EQ(matrix[4], 7);                                           // rows between the pivot and the first stay
  EXPECT_EQ(H::Householder1(1, 2, 2, 2, up, vector, matrix, 0), 0);  // an element alone
  EXPECT_EQ(up, 0);

  CQXMatrixMN<T> unit(3);
  unit.SetDiagonal(1);
  T three[] = {2, 3, 6};
  H::Householder1(0, 1, 3, 0, up, three, nullptr, 0);
  H::Householder2(3, 1, 3, up, three, unit, 0);
  H::Householder2(0, 1, 3, up, three, unit, T(1e6));
  EXPECT_EQ(unit.IsDiagonal(0), 1);  // neither does anything
  H::Householder2(0, 1, 3, up, three, unit, T(1e-6));
  EXPECT_LE(LossOfOrthogonality(unit), 16 * static_cast<double>(this->eps));
  EXPECT_NEAR(unit(0, 0) * 2 + unit(0, 1) * 3 + unit(0, 2) * 6, 7, 32 * this->eps);
}

TEST(SingularValues, OfTheHilbertMatrixAreThePublishedOnes) {
  // Published: the condition number of the Hilbert matrix of order 5 is 4.766072502422e5, its norm 1.567050691098.
  const CQXMatrixMN<double> a = Make<double>("hilbert", 5, 5);
  CQXMatrixMN<double> none(5, 0);
  CQXVectorN<double> s(5);
  ASSERT_EQ(a.SV_Decomposition(none, none, s, 0), 0);
  EXPECT_NEAR(s[0], 1.567050691098, 1e-11);
  EXPECT_NEAR(s[0] / s[4], 4.766072502422e5, 1e-3);
}

}  // namespace
