#include <qx/matrices/matrix2.h>
#include <qx/matrices/matrix3.h>
#include <qx/matrices/matrix4.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <limits>
#include <numeric>
#include <random>

#include "tests/fixed_test.h"

namespace {

template <typename M>
class FixedMatrix : public ::testing::Test {
 protected:
  M Random() {
    std::uniform_real_distribution<typename M::Element> distribution(-2, 2);
    M m;
    for (std::int32_t i = 0; i < M::RowsNb() * M::RowsNb(); ++i) m[i] = distribution(m_generator);
    return m;
  }
  static M UnitMatrix() {
    M m;
    m.Unit();
    return m;
  }

 private:
  std::mt19937 m_generator{12345};
};
using AllMatrices = ::testing::Types<CQXMatrix2<float>, CQXMatrix3<float>, CQXMatrix4<float>, CQXMatrix2<double>,
                                     CQXMatrix3<double>, CQXMatrix4<double>>;
TYPED_TEST_SUITE(FixedMatrix, AllMatrices);

TYPED_TEST(FixedMatrix, ElementsStandByRows) {
  using M = TypeParam;
  const std::int32_t n = M::RowsNb();
  M m = Ramp<M>(0);
  for (std::int32_t i = 0; i < n * n; ++i) EXPECT_EQ(&m(i / n, i % n), m.Data() + i);
  EXPECT_EQ(Numbers(M(m.Data())), Numbers(m));
  for (const M& zero : {M(), M(3, 5L), m * 0}) EXPECT_EQ(Numbers(zero), Numbers(Ramp<M>(0, 0)));
  m.SetElement(0, 1, 2);
  m.MulElement(0, 1, 3);
  m.AddToElement(0, 1, 1);
  EXPECT_EQ(m(0, 1), 7);
  EXPECT_EQ(m.Trace(), m.Diagonal().Norm1());
  m.SetDiagonal(4);
  EXPECT_EQ(Numbers(m.GetCharacteristicsMatrix(3)), Numbers(this->UnitMatrix()));
}

TYPED_TEST(FixedMatrix, ProductsEqualTheLongHandSumsToTheLastBit) {
  const std::int32_t n = TypeParam::RowsNb();
  for (int repetition = 0; repetition < 50; ++repetition) {
    const TypeParam a = this->Random(), b = this->Random();
    for (std::int32_t r = 0; r < n; ++r) {
      for (std::int32_t c = 0; c < n; ++c) {
        auto element = a(r, 0) * b(0, c);
        for (std::int32_t k = 1; k < n; ++k) element += a(r, k) * b(k, c);
        EXPECT_EQ((a * b)(r, c), element);
        EXPECT_EQ((a * b.ColVector(c))[r], element);
        EXPECT_EQ(a.Transpose()(c, r), a(r, c));
      }
    }
    TypeParam c = a;
    c *= c;
    EXPECT_EQ(Numbers(c), Numbers(a * a));
  }
  constexpr TypeParam unit = [] {
    TypeParam m;
    m.Unit();
    return m * m;  // compilers fold products too
  }();
  static_assert((unit * unit.RowVector(1))[1] == 1);
}

TYPED_TEST(FixedMatrix, DeterminantIsTheSumOverAllPermutations) {
  const std::int32_t n = TypeParam::RowsNb();
  for (int repetition = 0; repetition < 20; ++repetition) {
    const TypeParam m = this->Random();
    std::int32_t order[] = {0, 1, 2, 3};
    double det = 0;
    do {
      double term = 1;
      for (std::int32_t i = 0; i < n; ++i) {
        term *= static_cast<double>(m(i, order[i]));
        for (std::int32_t j = 0; j < i; ++j) term = order[j] > order[i] ? -term : term;
      }
      det += term;
    } while (std::next_permutation(order, order + n));
    EXPECT_NEAR(m.Det(), det, 24 * 16 * eps<typename TypeParam::Element>);
  }
}

TYPED_TEST(FixedMatrix, InverseSolvesOrLeavesItsTarget) {
  using T = typename TypeParam::Element;
  const TypeParam unit = this->UnitMatrix();
  for (int repetition = 0; repetition < 50; ++repetition) {
    const TypeParam m = this->Random() + unit * 5;
    TypeParam inverse, own = m;
    ASSERT_EQ(m.Inverse(inverse, 0), 0);
    EXPECT_LT(Difference(m * inverse, unit), 64 * eps<T>);
    ASSERT_EQ(own.Inverse(own, 0), 0);
    EXPECT_EQ(Numbers(own), Numbers(inverse));
    auto x = this->Random().RowVector(0);
    const auto b = x;
    ASSERT_EQ(m.SolveSystem(x, x), 1);
    EXPECT_LT(Difference(m * x, b), 64 * eps<T>);
  }
  TypeParam singular = Ramp<TypeParam>(1);
  singular.SetRowVector(0, singular.RowVector(1));
  TypeParam target = Ramp<TypeParam>(7);
  auto x = target.RowVector(0);
  EXPECT_EQ(singular.Inverse(target), 3);
  EXPECT_EQ(singular.SolveSystem(x, x), 0);
  EXPECT_EQ(singular.IsSingular(), 1);
  EXPECT_EQ(Numbers(target), Numbers(Ramp<TypeParam>(7)));
  EXPECT_EQ(x[0], 7);
  EXPECT_EQ(unit.Inverse(target, 1), 0);
  EXPECT_EQ(unit.IsSingular(1), 0);  // the bound itself inverts
}

TYPED_TEST(FixedMatrix, InverseWithANormReportsOneAndZero) {
  using T = typename TypeParam::Element;
  TypeParam m = this->UnitMatrix();
  m(0, 0) = 4;
  T condition = 0;
  auto x = m.RowVector(0);
  EXPECT_EQ(m.SolveSystem(x, x, QX_MATRIX_NORM_COLUMN_SUM, T(1e-6), condition), 1);
  EXPECT_EQ(condition, 4);
  EXPECT_EQ(x[0], 1);
  m(1, 1) = 0;
  condition = 0;
  EXPECT_EQ(m.SolveSystem(x, x, QX_MATRIX_NORM_EUCLIDEAN, T(1e-6), condition), 0);
  EXPECT_EQ(x[0], 1);
  EXPECT_EQ(condition, QX_OVERFLOW_VALUE<T>);
}

TYPED_TEST(FixedMatrix, StatisticsOfTheElements) {
  const TypeParam a = Ramp<TypeParam>(2), b = Ramp<TypeParam>(2, 0);
  EXPECT_EQ(b.InnerProduct(a), a.Mean() * b.InnerProduct(b) / 2);
  EXPECT_EQ(b.CorrelationCoefficient(a), 0);  // no variance
  // Squares of such small deviations have a product that vanishes.
  const auto small = std::sqrt(std::sqrt(std::numeric_limits<typename TypeParam::Element>::min()));
  EXPECT_NEAR((a * small / 8).CorrelationCoefficient(a * -small), -1, 16 * eps<typename TypeParam::Element>);
}

TYPED_TEST(FixedMatrix, RectanglesAreVisitedInOrderOrRefused) {
  using T = typename TypeParam::Element;
  const std::int32_t n = TypeParam::RowsNb(), last = n - 1;
  T numbers[16];
  std::iota(numbers, numbers + 16, T(10));
  TypeParam m;
  m.FillPart(0, 0, last, last, numbers, 0);
  EXPECT_EQ(Numbers(m), Numbers(Ramp<TypeParam>(10).Transpose()));
  m.FillPart(0, 0, last, last, numbers, -1);
  EXPECT_EQ(Numbers(m), Numbers(Ramp<TypeParam>(10)));
  m.DumpPart(0, last, 1, last, numbers, 0);
  EXPECT_EQ(numbers[1], m(1, last));
  for (const auto& [r1, c1, r2, c2] : {std::array{-1, 0, 0, 0},
                                       {1, 0, 0, 0},
                                       {0, 0, n, 0},  //
                                       {0, -1, 0, 0},
                                       {0, 1, 0, 0},
                                       {0, 0, 0, n}}) {
    m.FillPart(r1, c1, r2, c2, numbers, 1);
  }
  EXPECT_EQ(Numbers(m), Numbers(Ramp<TypeParam>(10)));

  TypeParam parts = m;
  parts.CopyPartRow(1, 0, 2, 0, 0, m);
  parts.CopyPartColumn(0, 0, 2, 1, 0, m);
  EXPECT_EQ(parts(1, 1), m(0, 1));
  EXPECT_EQ(parts(0, 0), m(0, 1));
  EXPECT_EQ(parts(1, 0), m(1, 1));
}

TYPED_TEST(FixedMatrix, PredicatesHaveClosedBounds) {
  using T = typename TypeParam::Element;
  const T tolerance = T(0.25), above = std::nextafter(tolerance, T(1));
  const TypeParam unit = this->UnitMatrix();
  TypeParam m = unit;
  EXPECT_TRUE(m.IsRotation(0));
  EXPECT_TRUE(m.IsOrthogonal(0));
  EXPECT_TRUE(m.IsScaling(0));
  EXPECT_TRUE(m.IsSymmetric(0));
  for (const bool isInside : {true, false}) {
    m(0, 1) = isInside ? tolerance : above;
    for (const std::int32_t result :
         {m.IsUnit(tolerance), m.IsDiagonal(tolerance), m.IsSymmetric(tolerance), m.IsScaling(tolerance),
          (m - unit).IsAlmostZero(tolerance), qxAreAlmostEqual(m, unit, tolerance)}) {
      EXPECT_EQ(result, isInside);
    }
  }
  m(0, 1) = std::numeric_limits<T>::quiet_NaN();
  EXPECT_EQ(m.IsDiagonal(1) || m.IsSymmetric(1) || m.IsUnit(1) || m.IsAlmostZero(9), false);
  EXPECT_EQ(m == m, 1);  // no pair differs
  m = unit;
  m(0, 0) = -1;
  EXPECT_EQ(m.IsOrthogonal(), 1);
  EXPECT_EQ(m.IsRotation(), 0);
  EXPECT_EQ((m * 2).IsOrthogonal(), 0);
}

TYPED_TEST(FixedMatrix, SmallBesideTheDiagonalBecomesZero) {
  using T = typename TypeParam::Element;
  TypeParam m = this->UnitMatrix() * 8;
  m(1, 1) = -2;
  m(0, 1) = T(0.1875);
  m(1, 0) = T(0.25);
  m.AnnulateRelativelyDiagonal(1);  // 1.875 and 2.5 beside the smaller diagonal element 2
  EXPECT_EQ(m(0, 1), 0);
  EXPECT_EQ(m(1, 0), T(0.25));
  m(1, 1) = 0;
  m.AnnulateRelativelyDiagonal(-300);
  EXPECT_NE(m(1, 0), 0);  // nothing is below a zero on the diagonal
}

TYPED_TEST(FixedMatrix, FactorsWithoutExchanges) {
  TypeParam m = this->Random() + this->UnitMatrix() * 6;
  TypeParam lower = m, upper = Ramp<TypeParam>(1);
  ASSERT_EQ(lower.LU_Decomposition(lower, upper), 1);
  EXPECT_LT(Difference(lower * upper, m), 32 * eps<typename TypeParam::Element>);
  for (std::int32_t r = 0; r < TypeParam::RowsNb(); ++r) {
    EXPECT_EQ(lower(r, r), 1);
    for (std::int32_t c = 0; c < r; ++c) EXPECT_EQ(upper(r, c) == 0 && lower(c, r) == 0, true);
  }
  m(0, 0) = 0;
  EXPECT_FALSE(m.LU_Decomposition(lower, upper));
  EXPECT_TRUE(lower.IsAlmostZero(0));
  EXPECT_TRUE(upper.IsAlmostZero(0));
}

TYPED_TEST(FixedMatrix, DiagonalInverseClearsItsTargetFirst) {
  using T = typename TypeParam::Element;
  TypeParam m = this->UnitMatrix() * 4, target = Ramp<TypeParam>(1);
  EXPECT_EQ(m.DiagInverse(target, 4), 1);  // the bound itself inverts
  EXPECT_EQ(Numbers(target), Numbers(this->UnitMatrix() / 4));
  EXPECT_EQ(target.DiagInverse(target, T(0.3)), 0);
  EXPECT_EQ(target.IsAlmostZero(0), 1);
  m(0, 1) = 1;
  target.Unit();
  EXPECT_EQ(m.DiagInverse(target), 0);
  EXPECT_EQ(target.IsAlmostZero(0), 1);
}

TYPED_TEST(FixedMatrix, NormsByCode) {
  using T = typename TypeParam::Element;
  TypeParam m;
  m(0, 0) = -3;
  m(0, 1) = 4;
  m(1, 0) = 2;
  EXPECT_EQ(m.Norm(QX_MATRIX_NORM_COLUMN_SUM), 5);
  EXPECT_EQ(m.Norm(QX_MATRIX_NORM_ROW_SUM), 7);
  for (const std::int32_t norm : {2, 4, -1}) EXPECT_EQ(m.Norm(static_cast<qxMatrixNorm>(norm)), std::sqrt(T(29)));
  m(1, 1) = std::numeric_limits<T>::quiet_NaN();
  for (std::int32_t norm = 0; norm < 4; ++norm)
    EXPECT_TRUE(std::isnan(m.Norm(static_cast<qxMatrixNorm>(norm)))) << norm;
}

TYPED_TEST(FixedMatrix, SingularValuesComeFromTheEngine) {
  using T = typename TypeParam::Element;
  const std::int32_t n = TypeParam::RowsNb();
  TypeParam m = this->Random(), u, v, diagonal;
  typename TypeParam::Vector singular;
  ASSERT_EQ(m.SV_Decomposition(u, v, singular, 0), 0);
  for (std::int32_t i = 0; i < n; ++i) diagonal(i, i) = singular[i];
  EXPECT_LT(Difference(u * diagonal * v.Transpose(), m), 64 * eps<T>);
  EXPECT_EQ(m.Norm(QX_MATRIX_NORM_SPECTRAL), singular[0]);
  ASSERT_EQ(m.QR_Decomposition(u, v), 1);
  EXPECT_LT(Difference(u * v, m), 64 * eps<T>);
  m.Unit();
  m(0, 0) = 4;
  EXPECT_NEAR(m.ConditionNumber(QX_MATRIX_NORM_SPECTRAL), 4, 32 * eps<T>);
  EXPECT_EQ(m.ConditionNumber(QX_MATRIX_NORM_ROW_SUM), 4);
  m(1, 1) = 0;
  EXPECT_EQ(m.CalculateRank(), n - 1);
  for (const qxMatrixNorm norm : {QX_MATRIX_NORM_SPECTRAL, QX_MATRIX_NORM_EUCLIDEAN}) {
    EXPECT_EQ(m.ConditionNumber(norm), QX_OVERFLOW_VALUE<T>);
  }
}

TYPED_TEST(FixedMatrix, SymmetricMatricesHaveAnEigenbasis) {
  using T = typename TypeParam::Element;
  const TypeParam any = this->Random(), m = any + any.Transpose();
  TypeParam vectors, diagonal;
  typename TypeParam::Vector values;
  ASSERT_EQ(m.SymmetricEigensolve(values, vectors, eps<T>), QX_STATUS_OK);
  for (std::int32_t i = 0; i < TypeParam::RowsNb(); ++i) {
    EXPECT_LT(Difference(m * vectors.ColVector(i), vectors.ColVector(i) * values[i]), 64 * eps<T>);
  }
  ASSERT_EQ(m.SpectralDecomposition(vectors, diagonal, 0, eps<T>), 1);
  EXPECT_LT(Difference(vectors * diagonal * vectors.Transpose(), m), 64 * eps<T>);
  ASSERT_EQ(m.SpectralDecomposition(vectors, diagonal, 1, eps<T>), 1);
  TypeParam skew = this->UnitMatrix();
  skew(0, 1) = 1;
  EXPECT_EQ(skew.SymmetricEigensolve(values, vectors), QX_STATUS_NOT_SYMMETRIC);
  EXPECT_EQ(skew.SpectralDecomposition(vectors, diagonal, 0), 0);
  EXPECT_LT(Difference(vectors.Transpose() * diagonal * vectors, m), 64 * eps<T>);  // untouched
}

TYPED_TEST(FixedMatrix, RowsAndColumnsMayComeFromTheMatrixItself) {
  constexpr std::int32_t n = TypeParam::RowsNb();
  const TypeParam source = Ramp<TypeParam>(1);
  for (std::int32_t line = 0; line < n; ++line) {
    TypeParam byColumn = source, byRow = source;
    byColumn.SetColumn(line, byColumn.Data());
    byRow.SetRow(line, byRow.Data() + 1);
    for (std::int32_t i = 0; i < n; ++i) {
      EXPECT_EQ(byColumn(i, line), source[i]);
      EXPECT_EQ(byRow(line, i), source[i + 1]);
    }
  }
}

}  // namespace
