#include <qx/foundation/complex.h>
#include <qx/matrices/matrix2.h>
#include <qx/vectors/base_vector.h>

#include <cmath>
#include <limits>

#include "tests/typed_test.h"

namespace {

template <typename T>
class Matrix2 : public ::testing::Test {
 protected:
  static constexpr T eps = std::numeric_limits<T>::epsilon();
};
TYPED_TEST_SUITE(Matrix2, FloatTypes);

TYPED_TEST(Matrix2, EigenvaluesAndTheirVectors) {
  using T = TypeParam;
  using M = CQXMatrix2<T>;
  T a, b;
  EXPECT_EQ(M(2, 0, 0, 1).FindEigenvalues(a, b), 2);
  EXPECT_EQ(a, 1);
  EXPECT_EQ(b, 2);
  EXPECT_EQ(M(1, 1, 0, 1).FindEigenvalues(a, b), 1);
  EXPECT_EQ(a == 1 && b == 1, true);
  EXPECT_EQ(M(0, 1, -1, 0).FindEigenvalues(a, b), 0);
  EXPECT_EQ(a == 0 && b == 1, true);
  EXPECT_EQ(M(0, 0, 0, T(0.5)).FindEigenvalues(a, b, T(0.5)), 1);  // within the band: both are 0.25, and become 0
  EXPECT_EQ(a == 0 && b == 0, true);

  for (const M& m : {M(2, 1, 1, 3), M(4, 0, 5, -1), M(4, 5, 0, -1), M(0, 2, 8, 0), M(-1, -6, 2, 6)}) {
    ASSERT_EQ(m.FindEigenvalues(a, b), 2);
    for (const T lambda : {a, b}) {
      CQXVector2<T> v;
      ASSERT_EQ(m.FindEigenvectorsReal(lambda, v.Data()), 1);
      EXPECT_EQ(v.X() == 1 || v.Y() == 1, true);
      EXPECT_LT((m * v - v * lambda).NormInf(), 64 * this->eps * v.NormInf());
    }
  }
}

TYPED_TEST(Matrix2, EigenvectorsPreferTheEarlierOfEqualElements) {
  using M = CQXMatrix2<TypeParam>;
  TypeParam v[4] = {};
  EXPECT_EQ(M(1, 1, 1, 1).FindEigenvectorsReal(0, v), 1);  // all are equal: the first column
  EXPECT_EQ(v[0] == -1 && v[1] == 1, true);
  EXPECT_EQ(M(0, -2, 2, 0).FindEigenvectorsReal(0, v), 1);  // a01 goes before a10
  EXPECT_EQ(v[0] == 1 && v[1] == 0, true);
  for (const TypeParam tolerance : {TypeParam(1e-6), TypeParam(0), TypeParam(-1)}) {
    EXPECT_EQ(M(5, 0, 0, 5).FindEigenvectorsReal(5, v, tolerance), 2);
    EXPECT_EQ(v[0] == 1 && v[1] == 0 && v[2] == 0 && v[3] == 1, true);
  }
  EXPECT_EQ(M(2, 0, 1, 2).FindEigenvectorsReal(0, v, 2), 1);  // the bound itself is kept
}

TYPED_TEST(Matrix2, ComplexEigenvectors) {
  using M = CQXMatrix2<TypeParam>;
  using Complex = CQXComplex<TypeParam>;
  for (const M& m : {M(0, 1, -1, 0), M(1, -2, 5, 3), M(1, -5, 2, 3), M(0, TypeParam(1e-4), -1, 0)}) {
    TypeParam re, im;
    ASSERT_EQ(m.FindEigenvalues(re, im, 0), 0);
    for (const TypeParam side : {TypeParam(1), TypeParam(-1)}) {
      const Complex lambda(re, side * im);
      CQXBaseVector<Complex> v;
      ASSERT_EQ(m.FindEigenvectorComplex(lambda, v), 1);
      ASSERT_EQ(v.Dim(), 2);
      for (std::int32_t r = 0; r < 2; ++r) {
        const Complex residual = v[0] * m(r, 0) + v[1] * m(r, 1) - lambda * v[r];
        EXPECT_NEAR(residual.Real(), 0, 64 * this->eps);
        EXPECT_NEAR(residual.Imag(), 0, 64 * this->eps);
      }
    }
  }
  CQXBaseVector<Complex> v(2, Complex(7, 7));
  EXPECT_EQ(M(1, 0, 0, 2).FindEigenvectorComplex(Complex(0, 1), v), 0);
  EXPECT_EQ(v[0].Real() == 1 && v[0].Imag() == 0 && v[1].Real() == 0 && v[1].Imag() == 0, true);
}

TYPED_TEST(Matrix2, PolarDecompositionHasItsOwnSides) {
  using M = CQXMatrix2<TypeParam>;
  for (const M& m : {M(2, 1, -1, 3), M(1, 0, 0, -1), M(3, 4, 5, 6), M(0, -2, 1, 0)}) {
    M u, p;
    ASSERT_EQ(m.PolarDecomposition(u, p, 0), 1);
    EXPECT_EQ(qxAreAlmostEqual(u * p, m, 32 * this->eps), 1);
    EXPECT_EQ(u.IsOrthogonal(8 * this->eps), 1);
    EXPECT_EQ(p.IsSymmetric(32 * this->eps), 1);
    EXPECT_EQ(u.Det() > 0, m.Det() > 0);
    EXPECT_EQ(p.Trace() > 0 && p.Det() > 0, true);
    ASSERT_EQ(m.PolarDecomposition(u, p, 1), 1);
    EXPECT_EQ(qxAreAlmostEqual(p * u, m, 32 * this->eps), 1);
    M own = m, q;
    EXPECT_EQ(own.PolarDecomposition(own, q, 1), 1);
    EXPECT_EQ(own == u && q == p, true);
    EXPECT_EQ(m.ExtractOrthogonal(q), 1);
    EXPECT_EQ(q == u, true);
  }
  M u(1, 2, 3, 4), p = u;
  EXPECT_EQ(M(1, 2, 2, 4).PolarDecomposition(u, p, 0), 0);
  EXPECT_EQ(u(1, 1) == 4 && p(1, 1) == 4, true);
}

}  // namespace
