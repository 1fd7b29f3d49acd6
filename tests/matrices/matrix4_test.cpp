#include <qx/matrices/matrix4.h>

#include <cmath>

#include "tests/fixed_test.h"

namespace {

template <typename T>
class Matrix4 : public ::testing::Test {
 protected:
  /// No symmetry, and a last row of its own.
  static CQXMatrix4<T> Any() { return {1, 2, 3, 4, 5, 7, 6, 8, 2, 9, 11, 10, 12, 13, 15, 16}; }
  static CQXMatrix4<T> Translation(T x, T y, T z) { return {1, 0, 0, x, 0, 1, 0, y, 0, 0, 1, z, 0, 0, 0, 1}; }
};
TYPED_TEST_SUITE(Matrix4, FloatTypes);

TYPED_TEST(Matrix4, MotionsMultiplyFromEitherSide) {
  using M = CQXMatrix4<TypeParam>;
  const TypeParam angle = TypeParam(0.7), c = std::cos(angle), s = std::sin(angle);
  const M any = this->Any();
  const M motions[] = {
      M(1, 0, 0, 0, 0, c, -s, 0, 0, s, c, 0, 0, 0, 0, 1), M(c, 0, s, 0, 0, 1, 0, 0, -s, 0, c, 0, 0, 0, 0, 1),
      M(c, -s, 0, 0, s, c, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1), M(2, 0, 0, 0, 0, 3, 0, 0, 0, 0, 5, 0, 0, 0, 0, 1)};
  for (const std::int32_t flag : {0, 1, -3}) {
    M moved[] = {any, any, any, any};
    moved[0].RotateXAxis(angle, flag);
    moved[1].RotateYAxis(angle, flag);
    moved[2].RotateZAxis(angle, flag);
    moved[3].Scale(2, 3, 5, flag);
    for (int i = 0; i < 4; ++i) {
      const M product = flag != 0 ? motions[i] * any : any * motions[i];
      EXPECT_LT(Difference(moved[i], product), 64 * eps<TypeParam>) << i;
      EXPECT_EQ(Numbers(any.Combine(motions[i], flag)), Numbers(product));
    }
  }
  EXPECT_EQ(any.Reflect() == M(-1, 0, 0, 0, 0, -1, 0, 0, 0, 0, -1, 0, 0, 0, 0, 1) * any, true);
}

TYPED_TEST(Matrix4, TranslationFromTheRightShiftsByTheCorner) {
  using M = CQXMatrix4<TypeParam>;
  const M any = this->Any();
  M m = any;
  m.Translate(2, 3, 5, 1);
  EXPECT_EQ(Numbers(m), Numbers(this->Translation(2, 3, 5) * any));
  m = any;
  m.Translate(2, 3, 5, 0);
  M expected = any * this->Translation(2, 3, 5);
  for (std::int32_t r = 0; r < 3; ++r) expected(r, 3) += any(3, 3);
  expected(3, 3) = any(3, 3);
  EXPECT_EQ(Numbers(m), Numbers(expected));
}

TYPED_TEST(Matrix4, PredicatesLookAtTheBlockAndItsBorder) {
  using T = TypeParam;
  CQXMatrix4<T> m = this->Translation(7, 8, 9);
  EXPECT_EQ(m.IsScaling() || m.IsRotation(), false);
  m(3, 3) = T(1.25);
  EXPECT_TRUE(m.IsTranslation(T(0.25)));
  EXPECT_TRUE(m.IsCoordinateMatrix(T(0.25)));
  EXPECT_EQ(m.IsTranslation(T(0.24)) || m.IsCoordinateMatrix(T(0.24)), false);
  m.Unit();
  m.Scale(2, -3, 0, 1);
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
  CQXMatrix4<T> m(1, 2, 3, 4, 5, 7, 6, 8, 2, 9, 1, 10, 0, 0, 0, 1), inverse = m;
  EXPECT_EQ(m.GetMatrix(), CQXMatrix3<T>(1, 2, 3, 5, 7, 6, 2, 9, 1));
  EXPECT_EQ(qxMatrix4To3(m), m.GetMatrix());
  EXPECT_EQ(m.ExtractTranslation(), V(4, 8, 10));
  EXPECT_EQ(m.Diagonal3(), V(1, 7, 1));
  EXPECT_EQ(this->Translation(4, 8, 10) * qxMatrix3To4(m.GetMatrix()) == m, true);
  ASSERT_EQ(inverse.InverseCoordinateMatrix(inverse), 0);
  EXPECT_EQ((m * inverse).IsUnit(512 * eps<T>), 1);
  EXPECT_EQ(inverse.RowVector(3) == CQXVector4<T>(0, 0, 0, 1), true);
  const V local(1, -2, 3);
  V found = m.GetObjectCoordinates(local);
  EXPECT_EQ(found, V(10, 17, -3));
  EXPECT_EQ(m.GetLocalCoordinates(found, found), 1);
  EXPECT_LT(Difference(found, local), 512 * eps<T>);
  m.SetRowVector(1, m.RowVector(0) * 2);
  const CQXMatrix4<T> before = inverse;
  found = local;
  EXPECT_EQ(m.InverseCoordinateMatrix(inverse), 3);
  EXPECT_EQ(m.GetLocalCoordinates(V(), found), 0);
  EXPECT_EQ(inverse, before);
  EXPECT_EQ(found, local);
}

}  // namespace
