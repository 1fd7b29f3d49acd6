#include <qx/matrices/matrix2.h>
#include <qx/matrices/matrix3.h>
#include <qx/matrices/matrix4.h>

#include <algorithm>
#include <cmath>
#include <limits>
#include <numeric>
#include <random>
#include <type_traits>

#include "tests/typed_test.h"

namespace {

template <typename M>
class FixedMatrix : public ::testing::Test {
 protected:
  using Number = typename M::Element;
  using Row = typename M::Vector;
  static constexpr std::int32_t n = M::RowsNb();
  static constexpr Number eps = std::numeric_limits<Number>::epsilon();

  M Random() {
    M m;
    for (std::int32_t i = 0; i < n * n; ++i) m[i] = m_distribution(m_generator);
    return m;
  }
  Row RandomVector() { return Random().RowVector(0); }
  /// The elements first, first + 1, ...
  static M Ramp(Number first) {
    M m;
    for (std::int32_t i = 0; i < n * n; ++i) m[i] = first + static_cast<Number>(i);
    return m;
  }
  static M UnitMatrix() {
    M m;
    m.Unit();
    return m;
  }
  static Number LargestDifference(const M& a, const M& b) {
    Number largest = 0;
    for (std::int32_t i = 0; i < n * n; ++i) largest = std::max(largest, std::abs(a[i] - b[i]));
    return largest;
  }
  static bool Identical(const M& a, const M& b) {
    for (std::int32_t i = 0; i < n * n; ++i) {
      if (!(a[i] == b[i])) return false;
    }
    return true;
  }

 private:
  std::mt19937 m_generator{12345};
  std::uniform_real_distribution<Number> m_distribution{-2, 2};
};
using AllMatrices = ::testing::Types<CQXMatrix2<float>, CQXMatrix3<float>, CQXMatrix4<float>, CQXMatrix2<double>,
                                     CQXMatrix3<double>, CQXMatrix4<double>>;
TYPED_TEST_SUITE(FixedMatrix, AllMatrices);

TYPED_TEST(FixedMatrix, IsAPlainArrayOfItsElementsByRows) {
  static_assert(std::is_trivially_copyable_v<TypeParam> && std::is_standard_layout_v<TypeParam>);
  EXPECT_TRUE(this->Identical(TypeParam(), TypeParam(3, 5L)));
  TypeParam m = this->Ramp(0);
  for (std::int32_t r = 0; r < this->n; ++r) {
    for (std::int32_t c = 0; c < this->n; ++c) EXPECT_EQ(&m(r, c), m.Data() + this->n * r + c);
  }
  EXPECT_TRUE(this->Identical(TypeParam(m.Data()), m));
  m = {};
  EXPECT_TRUE(this->Identical(m, TypeParam()));
}

TYPED_TEST(FixedMatrix, ProductsEqualTheLongHandSumsToTheLastBit) {
  for (int repetition = 0; repetition < 50; ++repetition) {
    const TypeParam a = this->Random();
    const TypeParam b = this->Random();
    const auto v = this->RandomVector();
    const TypeParam product = a * b;
    const auto image = a * v;
    const TypeParam transpose = a.Transpose();
    for (std::int32_t r = 0; r < this->n; ++r) {
      auto component = a(r, 0) * v[0];
      for (std::int32_t k = 1; k < this->n; ++k) component += a(r, k) * v[k];
      EXPECT_EQ(image[r], component);
      for (std::int32_t c = 0; c < this->n; ++c) {
        auto element = a(r, 0) * b(0, c);
        for (std::int32_t k = 1; k < this->n; ++k) element += a(r, k) * b(k, c);
        EXPECT_EQ(product(r, c), element);
        EXPECT_EQ(transpose(c, r), a(r, c));
      }
    }
    TypeParam c = a;
    c *= c;
    EXPECT_TRUE(this->Identical(c, a * a));
  }
}

TYPED_TEST(FixedMatrix, CompilersFoldTheSameProductsThatProgramsRun) {
  constexpr TypeParam a = [] {
    TypeParam m;
    for (std::int32_t i = 0; i < TypeParam::RowsNb() * TypeParam::RowsNb(); ++i)
      m[i] = 1 / typename TypeParam::Element(i + 3);
    return m;
  }();
  constexpr TypeParam product = a * a;
  constexpr auto image = a * a.RowVector(1);
  const TypeParam b = a;
  EXPECT_TRUE(this->Identical(b * b, product));
  for (std::int32_t i = 0; i < this->n; ++i) EXPECT_EQ((b * b.RowVector(1))[i], image[i]);
}

TYPED_TEST(FixedMatrix, DeterminantIsTheSumOverAllPermutations) {
  for (int repetition = 0; repetition < 20; ++repetition) {
    const TypeParam m = this->Random();
    std::int32_t order[4];
    std::iota(order, order + this->n, 0);
    long double det = 0;
    do {
      long double term = 1;
      for (std::int32_t i = 0; i < this->n; ++i) {
        term *= m(i, order[i]);
        for (std::int32_t j = 0; j < i; ++j) term = order[j] > order[i] ? -term : term;
      }
      det += term;
    } while (std::next_permutation(order, order + this->n));
    EXPECT_NEAR(m.Det(), static_cast<double>(det), 24 * 16 * this->eps);
  }
}

TYPED_TEST(FixedMatrix, InverseSolvesOrLeavesItsTarget) {
  for (int repetition = 0; repetition < 50; ++repetition) {
    const TypeParam m = this->Random() + this->UnitMatrix() * 5;
    TypeParam inverse;
    ASSERT_EQ(m.Inverse(inverse, 0), 0);
    EXPECT_LT(this->LargestDifference(m * inverse, this->UnitMatrix()), 64 * this->eps);
    EXPECT_LT(this->LargestDifference(inverse * m, this->UnitMatrix()), 64 * this->eps);
    TypeParam own = m;
    ASSERT_EQ(own.Inverse(own, 0), 0);
    EXPECT_TRUE(this->Identical(own, inverse));
    auto x = this->RandomVector();
    const auto b = x;
    ASSERT_EQ(m.SolveSystem(x, x), 1);
    EXPECT_LT((m * x - b).NormInf(), 64 * this->eps);
  }
  TypeParam singular = this->Ramp(1);
  singular.SetRowVector(0, singular.RowVector(1));
  TypeParam target = this->Ramp(7);
  auto x = target.RowVector(0);
  EXPECT_EQ(singular.Inverse(target), 3);
  EXPECT_EQ(singular.Inverse(singular), 3);
  EXPECT_EQ(singular.SolveSystem(x, x), 0);
  EXPECT_EQ(singular.IsSingular(), 1);
  EXPECT_TRUE(this->Identical(target, this->Ramp(7)));
  EXPECT_EQ(x[0], 7);
  // The bound itself inverts.
  EXPECT_EQ(this->UnitMatrix().Inverse(target, 1), 0);
  EXPECT_TRUE(this->Identical(target, this->UnitMatrix()));
  EXPECT_EQ(this->UnitMatrix().IsSingular(1), 0);
}

TYPED_TEST(FixedMatrix, ArithmeticIsByElementAndMayAlias) {
  const TypeParam a = this->Ramp(2);
  EXPECT_TRUE(this->Identical(a + a, a * 2));
  EXPECT_TRUE(this->Identical(2 * a, a * 2));
  EXPECT_TRUE(this->Identical(a - a * 2, -a));
  EXPECT_TRUE(this->Identical(a.Negate() / -1, a));
  TypeParam b = a;
  b.Add(b);
  b *= b[0];
  EXPECT_TRUE(this->Identical(b, a * 8));
  b /= b[0];
  EXPECT_TRUE(this->Identical(b, a / 2));
  b.Sub(b);
  EXPECT_TRUE(this->Identical(b, TypeParam()));
  b.SetConstant(3);
  b.Mul(2);
  b.Div(3);
  EXPECT_EQ(b.Mean(), 2);
  EXPECT_EQ(b.InnerProduct(a), 2 * a.Mean() * static_cast<typename TypeParam::Element>(this->n * this->n));
  EXPECT_EQ(b.CorrelationCoefficient(a), 0);  // no variance
  EXPECT_NEAR(a.CorrelationCoefficient(this->Ramp(5) * -3), -1, 8 * this->eps);
  b.SetDiagonal(4);
  EXPECT_EQ(b.Trace(), 4 * static_cast<typename TypeParam::Element>(this->n));
  EXPECT_EQ(b.IsDiagonal(0), 1);
  EXPECT_TRUE(this->Identical(b.GetCharacteristicsMatrix(3), this->UnitMatrix()));
  b.SetElement(0, 1, 2);
  b.MulElement(0, 1, 3);
  b.AddToElement(0, 1, 1);
  EXPECT_EQ(b(0, 1), 7);
}

TYPED_TEST(FixedMatrix, RectanglesAreVisitedInOrderOrRefused) {
  using T = typename TypeParam::Element;
  const std::int32_t last = this->n - 1;
  T numbers[16];
  std::iota(numbers, numbers + 16, T(10));
  TypeParam m;
  m.FillPart(0, 0, last, last, numbers, 0);
  EXPECT_TRUE(this->Identical(m, this->Ramp(10).Transpose()));
  m.FillPart(0, 0, last, last, numbers, -1);
  EXPECT_TRUE(this->Identical(m, this->Ramp(10)));
  m.DumpPart(0, last, 1, last, numbers, 0);
  EXPECT_EQ(numbers[1], m(1, last));
  const std::int32_t bad[][4] = {{-1, 0, 0, 0}, {1, 0, 0, 0}, {0, 0, this->n, 0},
                                 {0, -1, 0, 0}, {0, 1, 0, 0}, {0, 0, 0, this->n}};
  for (const auto& range : bad) m.FillPart(range[0], range[1], range[2], range[3], numbers, 1);
  EXPECT_TRUE(this->Identical(m, this->Ramp(10)));

  TypeParam parts = m;
  parts.CopyPartRow(1, 0, 2, 0, 0, m);
  parts.CopyPartColumn(0, 0, 2, 1, 0, m);
  EXPECT_EQ(parts(1, 1) == m(0, 1) && parts(0, 0) == m(0, 1) && parts(1, 0) == m(1, 1), true);
  parts.SetPartRowVector(0, 0, 1, 1, m.RowVector(1));
  parts.SetPartColVector(1, 0, 2, 0, m.RowVector(1));
  EXPECT_EQ(parts(0, 0) == m(1, 1) && parts(1, 1) == m(1, 1), true);
  parts.CopyPartRow(0, 0, 0, 0, 0, m);
  parts.CopyPartColumn(0, 0, -1, 0, 0, m);
  EXPECT_EQ(parts(0, 0), m(1, 1));
}

TYPED_TEST(FixedMatrix, PredicatesHaveClosedBounds) {
  using T = typename TypeParam::Element;
  const T tolerance = T(0.25);
  const T above = std::nextafter(tolerance, T(1));
  TypeParam m = this->UnitMatrix();
  EXPECT_EQ(m.IsRotation(0) && m.IsOrthogonal(0) && m.IsScaling(0) && m.IsSymmetric(0), 1);
  m(0, 1) = tolerance;
  EXPECT_EQ(m.IsUnit(tolerance) && m.IsDiagonal(tolerance) && m.IsSymmetric(tolerance) && m.IsScaling(tolerance), 1);
  EXPECT_EQ((m - this->UnitMatrix()).IsAlmostZero(tolerance), 1);
  EXPECT_EQ(qxAreAlmostEqual(m, this->UnitMatrix(), tolerance), 1);
  m(0, 1) = above;
  EXPECT_EQ(m.IsUnit(tolerance) || m.IsDiagonal(tolerance) || m.IsSymmetric(tolerance) || m.IsScaling(tolerance), 0);
  EXPECT_EQ((m - this->UnitMatrix()).IsAlmostZero(tolerance), 0);
  EXPECT_EQ(qxAreAlmostEqual(m, this->UnitMatrix(), tolerance), 0);
  m(1, 0) = above;
  EXPECT_EQ(m.IsSymmetric(0), 1);
  m.AnnulateSmallElements(above);  // strictly below only
  EXPECT_EQ(m(0, 1), above);
  m(0, 1) = std::numeric_limits<T>::quiet_NaN();
  EXPECT_EQ(m.IsDiagonal(1) || m.IsSymmetric(1) || m.IsUnit(1) || m.IsAlmostZero(9), 0);
  EXPECT_EQ(m == m, 1);  // no pair differs

  TypeParam reflection = this->UnitMatrix();
  reflection(0, 0) = -1;
  EXPECT_EQ(reflection.IsOrthogonal(), 1);
  EXPECT_EQ(reflection.IsRotation(), 0);
  EXPECT_EQ((this->UnitMatrix() * 2).IsOrthogonal(), 0);

  m = this->UnitMatrix();
  m(0, 1) = QX_TOLERANCE<T>;
  EXPECT_EQ(m == this->UnitMatrix(), 1);
  m(0, 1) = std::nextafter(QX_TOLERANCE<T>, T(1));
  EXPECT_EQ(m == this->UnitMatrix(), 0);
  EXPECT_EQ(m != this->UnitMatrix(), 1);
}

TYPED_TEST(FixedMatrix, SmallBesideTheDiagonalBecomesZero) {
  TypeParam m = this->UnitMatrix() * 8;
  m(1, 1) = -2;
  m(0, 1) = TypeParam::RowsNb() / typename TypeParam::Element(100 * TypeParam::RowsNb());  // 0.01
  m(1, 0) = typename TypeParam::Element(0.25);
  m.AnnulateRelativelyDiagonal(1);  // 0.1 and 2.5 beside the smaller diagonal element 2
  EXPECT_EQ(m(0, 1), 0);
  EXPECT_EQ(m(1, 0), typename TypeParam::Element(0.25));
  m(1, 1) = 0;
  m(1, 0) = typename TypeParam::Element(1e-30);
  m.AnnulateRelativelyDiagonal(-300);
  EXPECT_NE(m(1, 0), 0);  // nothing is below a zero on the diagonal
}

TYPED_TEST(FixedMatrix, FactorsWithoutExchanges) {
  const TypeParam m = this->Random() + this->UnitMatrix() * 6;
  TypeParam lower = this->Ramp(1), upper = this->Ramp(1);
  ASSERT_EQ(m.LU_Decomposition(lower, upper), 1);
  EXPECT_LT(this->LargestDifference(lower * upper, m), 32 * this->eps);
  for (std::int32_t r = 0; r < this->n; ++r) {
    EXPECT_EQ(lower(r, r), 1);
    for (std::int32_t c = 0; c < r; ++c) EXPECT_EQ(upper(r, c) == 0 && lower(c, r) == 0, true);
  }
  TypeParam own = m;
  ASSERT_EQ(own.LU_Decomposition(own, upper), 1);
  EXPECT_TRUE(this->Identical(own, lower));
  TypeParam exchange = m;
  exchange(0, 0) = 0;
  EXPECT_EQ(exchange.LU_Decomposition(lower, upper), 0);
  EXPECT_TRUE(this->Identical(lower, TypeParam()) && this->Identical(upper, TypeParam()));
}

TYPED_TEST(FixedMatrix, DiagonalInverseClearsItsTargetFirst) {
  TypeParam m = this->UnitMatrix() * 4;
  TypeParam target = this->Ramp(1);
  EXPECT_EQ(m.DiagInverse(target), 1);
  EXPECT_TRUE(this->Identical(target, this->UnitMatrix() / 4));
  EXPECT_EQ(m.DiagInverse(m, 4), 1);  // the bound itself inverts
  EXPECT_TRUE(this->Identical(m, target));
  EXPECT_EQ(m.DiagInverse(target, typename TypeParam::Element(0.3)), 0);
  EXPECT_TRUE(this->Identical(target, TypeParam()));
  m(0, 1) = 1;
  target = this->Ramp(1);
  EXPECT_EQ(m.DiagInverse(target), 0);
  EXPECT_TRUE(this->Identical(target, TypeParam()));
}

TYPED_TEST(FixedMatrix, NormsByCode) {
  TypeParam m;
  m(0, 0) = -3;
  m(0, 1) = 4;
  m(1, 0) = 2;
  EXPECT_EQ(m.Norm(QX_MATRIX_NORM_COLUMN_SUM), 5);
  EXPECT_EQ(m.Norm(QX_MATRIX_NORM_ROW_SUM), 7);
  EXPECT_EQ(m.Norm(QX_MATRIX_NORM_EUCLIDEAN), std::sqrt(typename TypeParam::Element(29)));
  EXPECT_EQ(m.Norm(static_cast<qxMatrixNorm>(17)), m.Norm(QX_MATRIX_NORM_EUCLIDEAN));
}

TYPED_TEST(FixedMatrix, SingularValuesComeFromTheEngine) {
  using T = typename TypeParam::Element;
  for (int repetition = 0; repetition < 10; ++repetition) {
    const TypeParam m = this->Random();
    TypeParam u, v, diagonal;
    typename TypeParam::Vector singular;
    ASSERT_EQ(m.SV_Decomposition(u, v, singular, 0), 0);
    for (std::int32_t i = 0; i < this->n; ++i) diagonal(i, i) = singular[i];
    EXPECT_LT(this->LargestDifference(u * diagonal * v.Transpose(), m), 64 * this->eps);
    EXPECT_EQ(u.IsOrthogonal(32 * this->eps) && v.IsOrthogonal(32 * this->eps), true);
    for (std::int32_t i = 1; i < this->n; ++i) EXPECT_GE(singular[i - 1], singular[i]);
    EXPECT_EQ(m.Norm(QX_MATRIX_NORM_SPECTRAL), singular[0]);
    TypeParam q, r;
    ASSERT_EQ(m.QR_Decomposition(q, r), 1);
    EXPECT_LT(this->LargestDifference(q * r, m), 64 * this->eps);
    EXPECT_EQ(q.IsOrthogonal(32 * this->eps), 1);
  }
  TypeParam m = this->UnitMatrix();
  m(0, 0) = 4;
  EXPECT_EQ(m.CalculateRank(), this->n);
  EXPECT_NEAR(m.ConditionNumber(QX_MATRIX_NORM_SPECTRAL), 4, 32 * this->eps);
  EXPECT_EQ(m.ConditionNumber(QX_MATRIX_NORM_ROW_SUM), 4);
  m(1, 1) = 0;
  EXPECT_EQ(m.CalculateRank(), this->n - 1);
  for (const qxMatrixNorm norm : {QX_MATRIX_NORM_SPECTRAL, QX_MATRIX_NORM_EUCLIDEAN}) {
    EXPECT_EQ(m.ConditionNumber(norm), QX_OVERFLOW_VALUE<T>);
  }
  m(1, 1) = std::numeric_limits<T>::quiet_NaN();
  auto singular = m.RowVector(0);
  EXPECT_NE(m.CalculateSingularNumbers(singular), 0);
  EXPECT_EQ(singular[0], 4);
}

TYPED_TEST(FixedMatrix, InverseWithANormReportsOneAndZero) {
  using T = typename TypeParam::Element;
  TypeParam m = this->UnitMatrix();
  m(0, 0) = 4;
  TypeParam target;
  T condition = 0;
  EXPECT_EQ(m.Inverse(target, QX_MATRIX_NORM_COLUMN_SUM, T(1e-6), condition), 1);
  EXPECT_EQ(condition, 4);
  EXPECT_EQ(target(0, 0), T(0.25));
  auto x = m.RowVector(0);
  EXPECT_EQ(m.SolveSystem(x, x, QX_MATRIX_NORM_EUCLIDEAN, T(1e-6), condition), 1);
  EXPECT_EQ(x[0], 1);
  m(1, 1) = 0;
  condition = 0;
  EXPECT_EQ(m.SolveSystem(x, x, QX_MATRIX_NORM_EUCLIDEAN, T(1e-6), condition), 0);
  EXPECT_EQ(x[0], 1);
  EXPECT_EQ(condition, QX_OVERFLOW_VALUE<T>);
  EXPECT_EQ(m.Inverse(m, QX_MATRIX_NORM_EUCLIDEAN, T(1e-6), condition), 0);
  EXPECT_EQ(m(0, 0), 4);
}

TYPED_TEST(FixedMatrix, SymmetricMatricesHaveAnEigenbasis) {
  const TypeParam any = this->Random();
  const TypeParam m = any + any.Transpose();
  TypeParam vectors, diagonal;
  typename TypeParam::Vector values;
  ASSERT_EQ(m.SymmetricEigensolve(values, vectors, this->eps), QX_STATUS_OK);
  EXPECT_EQ(vectors.IsOrthogonal(32 * this->eps), 1);
  for (std::int32_t i = 0; i < this->n; ++i) {
    const auto v = vectors.ColVector(i);
    EXPECT_LT((m * v - v * values[i]).NormInf(), 64 * this->eps);
    EXPECT_LE(values[0], values[i]);
    EXPECT_GE(values[this->n - 1], values[i]);
  }
  ASSERT_EQ(m.SpectralDecomposition(vectors, diagonal, 0, this->eps), 1);
  EXPECT_LT(this->LargestDifference(vectors * diagonal * vectors.Transpose(), m), 64 * this->eps);
  ASSERT_EQ(m.SpectralDecomposition(vectors, diagonal, 1, this->eps), 1);
  EXPECT_LT(this->LargestDifference(vectors.Transpose() * diagonal * vectors, m), 64 * this->eps);
  TypeParam skew = this->UnitMatrix();
  skew(0, 1) = 1;
  EXPECT_EQ(skew.SymmetricEigensolve(values, vectors), QX_STATUS_NOT_SYMMETRIC);
  EXPECT_EQ(skew.SpectralDecomposition(vectors, diagonal, 0), 0);
  EXPECT_LT(this->LargestDifference(vectors.Transpose() * diagonal * vectors, m), 64 * this->eps);
}

}  // namespace
