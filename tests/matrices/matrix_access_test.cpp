#include <qx/matrices/matrix_access.h>

#include "tests/typed_test.h"

namespace {

template <typename T>
class MatrixAccess : public testing::Test {};
TYPED_TEST_SUITE(MatrixAccess, FloatTypes);

TYPED_TEST(MatrixAccess, BuildsFromRowsAndColumnsAndActsOnPointsAndDirections) {
  using T = TypeParam;
  using V3 = CQXVector3<T>;
  using V4 = CQXVector4<T>;
  const CQXMatrix4<T> m =
      qxMatrixOfRows<CQXMatrix4<T>>(V4(1, 2, 3, 4), V4(5, 6, 7, 8), V4(9, 10, 11, 12), V4(0, 0, 0, 1));
  const CQXMatrix4<T> columns =
      qxMatrixOfColumns<CQXMatrix4<T>>(V4(1, 5, 9, 0), V4(2, 6, 10, 0), V4(3, 7, 11, 0), V4(4, 8, 12, 1));
  for (std::int32_t i = 0; i < 16; ++i) EXPECT_EQ(m[i], columns[i]);
  const V3 v(1, -2, 3);
  EXPECT_EQ(qxTransformPoint(m, v), V3(10, 22, 34));
  EXPECT_EQ(qxTransformDirection(m, v), V3(6, 14, 22));
  const V4 product = m * V4(1, -2, 3, 1);
  EXPECT_EQ(product, V4(10, 22, 34, 1));
  EXPECT_EQ(qxTransformPoint(qxIdentity<CQXMatrix4<T>>(), v), v);
  EXPECT_EQ(qxIdentity<CQXMatrix2<T>>(), qxMatrixOfRows<CQXMatrix2<T>>(CQXVector2<T>(1, 0), CQXVector2<T>(0, 1)));
}

}  // namespace
