#include <qx/matrices/matrix4.h>

#include <cmath>
#include <limits>

#include "tests/typed_test.h"

namespace {

template <typename T>
class Matrix4 : public ::testing::Test {
 protected:
  static constexpr T eps = std::numeric_limits<T>::epsilon();

  /// No symmetry, and a last row of its own.
  static CQXMatrix4<T> Any() { return {1, 2, 3, 4, 5, 7, 6, 8, 2, 9, 11, 10, 12, 13, 15, 16}; }
  static CQXMatrix4<T> Translation(T x, T y, T z) { return {1, 0, 0, x, 0, 1, 0, y, 0, 0, 1, z, 0, 0, 0, 1}; }
  static void ExpectSame(const CQXMatrix4<T>& a, const CQXMatrix4<T>& b, T bound) {
    for (std::int32_t i = 0; i < 16; ++i) EXPECT_NEAR(a[i], b[i], bound) << i;
  }
};
TYPED_TEST_SUITE(Matrix4, FloatTypes);

TYPED_TEST(Matrix4, MotionsMultiplyFromEitherSide) {
  using M = CQXMatrix4<TypeParam>;
  const TypeParam angle = TypeParam(0.7), c = std::cos(angle), s = std::sin(angle);
  const M any = this->Any(), scaling(2, 0, 0, 0, 0, 3, 0, 0, 0, 0, 5, 0, 0, 0, 0, 1);
  for (const std::int32_t flag : {0, 1, -3}) {
    const auto expect = [&](const M& moved, const M& motion) {
      this->ExpectSame(moved, flag != 0 ? motion * any : any * motion, 64 * this->eps);
      this->ExpectSame(any.Combine(motion, flag), flag != 0 ? motion * any : any * motion, 0);
    };
    M m[4] = {any, any, any, any};
    m[0].RotateXAxis(angle, flag);
    expect(m[0], M(1, 0, 0, 0, 0, c, -s, 0, 0, s, c, 0, 0, 0, 0, 1));
    m[1].RotateYAxis(angle, flag);
    expect(m[1], M(c, 0, s, 0, 0, 1, 0, 0, -s, 0, c, 0, 0, 0, 0, 1));
    m[2].RotateZAxis(angle, flag);
    expect(m[2], M(c, -s, 0, 0, s, c, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1));
    m[3].Scale(2, 3, 5, flag);
    expect(m[3], scaling);
  }
  this->ExpectSame(any.Reflect(), M(-1, 0, 0, 0, 0, -1, 0, 0, 0, 0, -1, 0, 0, 0, 0, 1) * any, 0);
}

TYPED_TEST(Matrix4, TranslationFromTheRightShiftsByTheCorner) {
  using M = CQXMatrix4<TypeParam>;
  const M any = this->Any();
  M m = any;
  m.Translate(2, 3, 5, 1);
  this->ExpectSame(m, this->Translation(2, 3, 5) * any, 0);
  m.Unit();
  m.Translate(2, 3, 5, 0);
  this->ExpectSame(m, this->Translation(3, 4, 6), 0);
  m = any;
  m.Translate(2, 3, 5, 0);
  M expected = any * this->Translation(2, 3, 5);
  for (std::int32_t r = 0; r < 3; ++r) expected(r, 3) += any(3, 3);
  expected(3, 3) = any(3, 3);
  this->ExpectSame(m, expected, 0);
}

TYPED_TEST(Matrix4, BlockTranslationAndDiagonal) {
  using T = TypeParam;
  const CQXMatrix4<T> any = this->Any();
  const CQXMatrix3<T> block(1, 2, 3, 5, 7, 6, 2, 9, 11);
  EXPECT_EQ(any.GetMatrix() == block, true);
  EXPECT_EQ(qxMatrix4To3(any) == block, true);
  EXPECT_EQ(any.ExtractTranslation() == CQXVector3<T>(4, 8, 10), true);
  EXPECT_EQ(any.Diagonal3() == CQXVector3<T>(1, 7, 11), true);
  this->ExpectSame(qxMatrix3To4(block), {1, 2, 3, 0, 5, 7, 6, 0, 2, 9, 11, 0, 0, 0, 0, 1}, 0);
}

TYPED_TEST(Matrix4, PredicatesLookAtTheBlockAndItsBorder) {
  using T = TypeParam;
  using M = CQXMatrix4<T>;
  const M translation = this->Translation(7, 8, 9);
  EXPECT_EQ(translation.IsTranslation(0), 1);
  EXPECT_EQ(translation.IsScaling(), 0);
  EXPECT_EQ(translation.IsRotation(), 0);
  EXPECT_EQ(translation.IsCoordinateMatrix(0), 1);
  M m = translation;
  m(3, 3) = T(1.25);
  EXPECT_EQ(m.IsTranslation(T(0.25)), 1);
  EXPECT_EQ(m.IsTranslation(T(0.24)), 0);
  EXPECT_EQ(m.IsCoordinateMatrix(T(0.25)), 1);
  EXPECT_EQ(m.IsCoordinateMatrix(T(0.24)), 0);
  m.Unit();
  m.Scale(2, -3, 0, 1);
  EXPECT_EQ(m.IsScaling(0), 1);
  m(3, 0) = T(0.25);
  EXPECT_EQ(m.IsScaling(T(0.25)), 1);
  EXPECT_EQ(m.IsScaling(T(0.24)), 0);
  m.Unit();
  m.RotateYAxis(1, 1);
  EXPECT_EQ(m.IsRotation(), 1);
  EXPECT_EQ(m.IsScaling(), 0);
  EXPECT_EQ(m.Reflect().IsRotation(), 0);
  m(1, 3) = 1;
  EXPECT_EQ(m.IsRotation(), 0);
}

TYPED_TEST(Matrix4, CoordinateMatricesInvertByTheirBlock) {
  using T = TypeParam;
  using V = CQXVector3<T>;
  CQXMatrix4<T> m(1, 2, 3, 4, 5, 7, 6, 8, 2, 9, 1, 10, 0, 0, 0, 1), inverse;
  ASSERT_EQ(m.InverseCoordinateMatrix(inverse), 0);
  CQXMatrix4<T> product = m * inverse;
  EXPECT_EQ(product.IsUnit(512 * this->eps), 1);
  EXPECT_EQ(inverse.RowVector(3) == CQXVector4<T>(0, 0, 0, 1), true);
  const V local(1, -2, 3);
  V found = m.GetObjectCoordinates(local);
  EXPECT_EQ(found == V(10, 17, -3), true);
  EXPECT_EQ(m.GetLocalCoordinates(found, found), 1);
  EXPECT_LT((found - local).NormInf(), 512 * this->eps);
  CQXMatrix4<T> own = m;
  EXPECT_EQ(own.InverseCoordinateMatrix(own), 0);
  EXPECT_EQ(own == inverse, true);
  m.SetRowVector(1, m.RowVector(0) * 2);
  found = local;
  EXPECT_EQ(m.InverseCoordinateMatrix(inverse), 3);
  EXPECT_EQ(m.GetLocalCoordinates(local, found), 0);
  EXPECT_EQ(own == inverse && found == local, true);
}

TYPED_TEST(Matrix4, PolarDecompositionPutsTheRotationWhereTheFlagSays) {
  using M = CQXMatrix4<TypeParam>;
  const M m = this->Any() + M(9, 0, 0, 0, 0, 8, 0, 0, 0, 0, 7, 0, 0, 0, 0, 6);
  M q, s, own = m;
  ASSERT_EQ(m.PolarDecomposition(q, s, 1), 1);
  EXPECT_EQ(q.IsOrthogonal(64 * this->eps), 1);
  EXPECT_EQ(s.IsSymmetric(0), 1);
  this->ExpectSame(q * s, m, 1024 * this->eps);
  ASSERT_EQ(m.PolarDecomposition(q, s, 0), 1);
  this->ExpectSame(s * q, m, 1024 * this->eps);
  EXPECT_EQ(own.ExtractOrthogonal(own), 1);
  this->ExpectSame(own, q, 64 * this->eps);
  own = M();
  EXPECT_EQ(own.PolarDecomposition(q, s, 0), 0);
  this->ExpectSame(s * q, m, 1024 * this->eps);
}

}  // namespace
