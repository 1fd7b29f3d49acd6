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

TYPED_TEST(Matrix4, AxisTurnsAreRightHandedFromBothSides) {
  using T = TypeParam;
  using M = CQXMatrix4<T>;
  const T angle = T(0.7), c = std::cos(angle), s = std::sin(angle), bound = 64 * this->eps;
  const M any = this->Any();
  const M x(1, 0, 0, 0, 0, c, -s, 0, 0, s, c, 0, 0, 0, 0, 1);
  const M y(c, 0, s, 0, 0, 1, 0, 0, -s, 0, c, 0, 0, 0, 0, 1);
  const M z(c, -s, 0, 0, s, c, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1);
  M m = any;
  m.RotateXAxis(angle, 1);
  this->ExpectSame(m, x * any, bound);
  m = any;
  m.RotateXAxis(angle, 0);
  this->ExpectSame(m, any * x, bound);
  m = any;
  m.RotateYAxis(angle, -1);
  this->ExpectSame(m, y * any, bound);
  m = any;
  m.RotateYAxis(angle, 0);
  this->ExpectSame(m, any * y, bound);
  m = any;
  m.RotateZAxis(angle, 2);
  this->ExpectSame(m, z * any, bound);
  m = any;
  m.RotateZAxis(angle, 0);
  this->ExpectSame(m, any * z, bound);
}

TYPED_TEST(Matrix4, ScalingTranslationAndReflection) {
  using M = CQXMatrix4<TypeParam>;
  const M any = this->Any();
  const M scaling(2, 0, 0, 0, 0, 3, 0, 0, 0, 0, 5, 0, 0, 0, 0, 1);
  M m = any;
  m.Scale(2, 3, 5, 1);
  this->ExpectSame(m, scaling * any, 0);
  m = any;
  m.Scale(2, 3, 5, 0);
  this->ExpectSame(m, any * scaling, 0);
  m = any;
  m.Translate(2, 3, 5, 1);
  this->ExpectSame(m, this->Translation(2, 3, 5) * any, 0);
  m.Unit();
  m.Translate(2, 3, 5, 0);
  this->ExpectSame(m, this->Translation(3, 4, 6), 0);  // each component is shifted by m(3, 3)
  m = any;
  m.Translate(2, 3, 5, 0);
  M expected = any * this->Translation(2, 3, 5);
  for (std::int32_t r = 0; r < 3; ++r) expected(r, 3) += any(3, 3);
  expected(3, 3) = any(3, 3);
  this->ExpectSame(m, expected, 0);
  M reflected = M(-1, 0, 0, 0, 0, -1, 0, 0, 0, 0, -1, 0, 0, 0, 0, 1) * any;
  this->ExpectSame(any.Reflect(), reflected, 0);
  this->ExpectSame(any.Combine(scaling, 0), any * scaling, 0);
  this->ExpectSame(any.Combine(scaling, 1), scaling * any, 0);
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

}  // namespace
