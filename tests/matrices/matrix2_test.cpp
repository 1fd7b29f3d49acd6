#include <qx/foundation/complex.h>
#include <qx/matrices/matrix2.h>
#include <qx/vectors/base_vector.h>

#include <cmath>

#include "tests/fixed_test.h"

namespace {

template <typename T>
class Matrix2 : public ::testing::Test {};
TYPED_TEST_SUITE(Matrix2, FloatTypes);

TYPED_TEST(Matrix2, EigenvaluesAndTheirVectors) {
  using T = TypeParam;
  using M = CQXMatrix2<T>;
  const struct {
    M m;
    T tolerance;
    std::int32_t code;
    T a, b;
  } cases[] = {{M(2, 0, 0, 1), T(1e-6), 2, 1, 2},
               {M(1, 1, 0, 1), T(1e-6), 1, 1, 1},
               {M(0, 1, -1, 0), T(1e-6), 0, 0, 1},
               {M(0, 0, 0, T(0.5)), T(0.5), 1, 0, 0}};  // within the band: both are 0.25, and become 0
  T a, b;
  for (const auto& c : cases) {
    EXPECT_EQ(c.m.FindEigenvalues(a, b, c.tolerance), c.code);
    EXPECT_EQ(a, c.a) << a << ' ' << b;
    EXPECT_EQ(b, c.b) << a << ' ' << b;
  }
  for (const M& m : {M(2, 1, 1, 3), M(4, 0, 5, -1), M(4, 5, 0, -1), M(0, 2, 8, 0), M(-1, -6, 2, 6)}) {
    ASSERT_EQ(m.FindEigenvalues(a, b), 2);
    for (const T lambda : {a, b}) {
      CQXVector2<T> v;
      ASSERT_EQ(m.FindEigenvectorsReal(lambda, v.Data()), 1);
      EXPECT_EQ(v.X() == 1 || v.Y() == 1, true);
      EXPECT_LT(Difference(m * v, v * lambda), 64 * eps<T> * v.NormInf());
    }
  }
}

TYPED_TEST(Matrix2, EigenvectorsPreferTheEarlierOfEqualElements) {
  using M = CQXMatrix2<TypeParam>;
  M v;
  EXPECT_EQ(M(1, 1, 1, 1).FindEigenvectorsReal(0, v.Data()), 1);  // all are equal: the first column
  EXPECT_EQ(Numbers(v), Numbers(M(-1, 1, 0, 0)));
  EXPECT_EQ(M(0, -2, 2, 0).FindEigenvectorsReal(0, v.Data()), 1);  // a01 goes before a10
  EXPECT_EQ(Numbers(v), Numbers(M(1, 0, 0, 0)));
  for (const TypeParam tolerance : {TypeParam(1e-6), TypeParam(0), TypeParam(-1)}) {
    EXPECT_EQ(M(5, 0, 0, 5).FindEigenvectorsReal(5, v.Data(), tolerance), 2);
    EXPECT_EQ(Numbers(v), Numbers(M(1, 0, 0, 1)));
  }
  EXPECT_EQ(M(2, 0, 1, 2).FindEigenvectorsReal(0, v.Data(), 2), 1);  // the bound itself is kept
}

TYPED_TEST(Matrix2, ComplexEigenvectors) {
  using M = CQXMatrix2<TypeParam>;
  using Complex = CQXComplex<TypeParam>;
  CQXBaseVector<Complex> v;
  for (const M& m : {M(0, 1, -1, 0), M(1, -2, 5, 3), M(1, -5, 2, 3), M(0, TypeParam(1e-4), -1, 0)}) {
    TypeParam re, im;
    ASSERT_EQ(m.FindEigenvalues(re, im, 0), 0);
    for (const Complex& lambda : {Complex(re, im), Complex(re, -im)}) {
      ASSERT_EQ(m.FindEigenvectorComplex(lambda, v), 1);
      for (std::int32_t r = 0; r < 2; ++r) {
        const Complex residual = v[0] * m(r, 0) + v[1] * m(r, 1) - lambda * v[r];
        EXPECT_LT(std::hypot(residual.Real(), residual.Imag()), 64 * eps<TypeParam>);
      }
    }
  }
  EXPECT_EQ(v[1].Real(), 1);  // the last matrix divides by its larger element
  EXPECT_EQ(M(1, 0, 0, 2).FindEigenvectorComplex(Complex(0, 1), v), 0);
  EXPECT_EQ(v[0].Real(), 1);
  EXPECT_EQ(v[0].Imag(), 0);
  EXPECT_EQ(v[1].Real(), 0);
  EXPECT_EQ(v[1].Imag(), 0);
}

TYPED_TEST(Matrix2, PolarDecompositionHasItsOwnSides) {
  using M = CQXMatrix2<TypeParam>;
  M u, p;
  for (const M& m : {M(2, 1, -1, 3), M(1, 0, 0, -1), M(3, 4, 5, 6), M(0, -2, 1, 0)}) {
    for (const std::int32_t side : {0, 1}) {
      u = m;
      ASSERT_EQ(u.PolarDecomposition(u, p, side), 1);
      EXPECT_LT(Difference(side == 0 ? u * p : p * u, m), 32 * eps<TypeParam>);
      EXPECT_TRUE(u.IsOrthogonal(8 * eps<TypeParam>));
      EXPECT_TRUE(p.IsSymmetric(32 * eps<TypeParam>));
      EXPECT_GT(p.Trace(), 0);
      EXPECT_GT(p.Det(), 0);
    }
    EXPECT_EQ(m.ExtractOrthogonal(p), 1);
    EXPECT_EQ(p == u, true);
  }
  EXPECT_EQ(M(1, 2, 2, 4).PolarDecomposition(u, p, 0), 0);
  EXPECT_EQ(p == u, true);
}

}  // namespace
