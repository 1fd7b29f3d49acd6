#include <qx/vectors/base_vector.h>
#include <qx/vectors/vector_functions.h>
#include <qx/vectors/vector_n.h>

#include <cmath>
#include <limits>
#include <numbers>

#include "tests/fixed_test.h"

namespace {

template <typename T>
class VectorFunctions : public ::testing::Test {};
TYPED_TEST_SUITE(VectorFunctions, FloatTypes);

TYPED_TEST(VectorFunctions, RelationsAreStrictAndScaleWithTheVectors) {
  using T = TypeParam;
  using V2 = CQXVector2<T>;
  using V3 = CQXVector3<T>;
  const V3 x(1, 0, 0), y(0, 1, 0), origin(7, 7, 7);
  EXPECT_TRUE(qxAreColinear(V3(), V3()));
  EXPECT_TRUE(qxAreOrthogonal(V3(), V3()));
  EXPECT_EQ(qxAreColinear(V2(4, 0), V2(4, 1), 1), 0);  // the cross product 4 is at M times the tolerance
  EXPECT_EQ(qxAreColinear(V2(4, 0), V2(4, T(0.99)), 1), 1);
  EXPECT_EQ(qxAreColinear(V2(T(0.5), 0), V2(0, T(0.5)), 1), 1);  // M below the tolerance
  EXPECT_EQ(qxAreColinear(V3(1, 2, 3), V3(-2, -4, -6)), 1);
  for (const V3& b : {V3(1, 2, 4), V3(1, 3, 3), V3(2, 2, 3)}) EXPECT_EQ(qxAreColinear(V3(1, 2, 3), b), 0);
  EXPECT_EQ(qxAreOrthogonal(V2(2, 0), V2(3, 4), T(0.6)), 0);  // 6 is at 10 times the tolerance
  EXPECT_EQ(qxAreOrthogonal(V2(2, 0), V2(3, 4), T(0.61)), 1);
  EXPECT_EQ(qxAreOrthonormalized(x, y, V3(0, 0, -1)), 1);
  for (const V3& c : {V3(0, 0, 2), V3(0, T(0.8), T(0.6)), V3(T(0.8), 0, T(0.6))}) {
    EXPECT_EQ(qxAreOrthonormalized(x, y, c), 0);
  }
  EXPECT_EQ(qxArePointsCoplanar(origin, origin + x, origin + y, origin + V3(1, 1, 0)), 1);
  EXPECT_EQ(qxArePointsCoplanar(origin, origin + x, origin + y, origin + V3(1, 1, 1)), 0);
  EXPECT_EQ(qxArePointsCollinear(V2(1, 1), V2(2, 2), V2(-5, -5)), 1);
  EXPECT_EQ(qxArePointsCollinear(origin, origin + V3(1, 1, 1), origin + V3(2, 2, 3)), 0);
}

TYPED_TEST(VectorFunctions, AlmostEqualIsAStatementAboutTheGuardedDistance) {
  using V2 = CQXVector2<TypeParam>;
  using V3 = CQXVector3<TypeParam>;
  EXPECT_EQ(qxAreAlmostEqual(V2(), V2(TypeParam(2e-5), 0), 0), 1);
  EXPECT_EQ(qxAreAlmostEqual(V2(), V2(TypeParam(1e-3), 0)), 0);
  EXPECT_EQ(qxAreAlmostEqual(V2(), V2(3, 4), 5), 1);  // the bound is inside
  EXPECT_EQ(qxAreAlmostEqual(CQXVectorN<TypeParam>(3), CQXVectorN<TypeParam>(3, TypeParam(1))), 0);
  EXPECT_EQ(qxSquareDist(V2(1, 1), V2(4, 5)), 25);
  EXPECT_EQ(qxDist(V2(1, 1), V2(4, 5)), 5);
  EXPECT_EQ(qxGetTriangleArea(V2(0, 0), V2(0, 3), V2(4, 0)), 6);
  EXPECT_EQ(qxGetTriangleArea(V3(0, 0, 1), {0, 3, 1}, {4, 0, 1}), 6);
}

TYPED_TEST(VectorFunctions, AnglesAgreeInEveryDimension) {
  using T = TypeParam;
  using V2 = CQXVector2<T>;
  const T bound = 64 * eps<T>;
  const auto expectAngle = [&](const auto& a, const auto& b, T degrees) {
    const T radians = degrees * std::numbers::pi_v<T> / 180;
    EXPECT_NEAR(qxFindAngleInDegrees(a, b), degrees, 180 * bound);
    EXPECT_NEAR(qxFindAngleInRadians(a, b), radians, bound);
    EXPECT_NEAR(qxCos(a, b), std::cos(radians), bound);
    EXPECT_NEAR(qxSin(a, b), std::sin(radians), bound);
    EXPECT_NEAR(qxTan(a, b), std::tan(radians), 4 * bound);
    EXPECT_NEAR(qxCot(a, b), 1 / std::tan(radians), 4 * bound);
  };
  for (const T degrees : {T(20), T(45), T(120), T(170)}) {
    const T c = 3 * std::cos(degrees * std::numbers::pi_v<T> / 180);
    const T s = 3 * std::sin(degrees * std::numbers::pi_v<T> / 180);
    expectAngle(V2(2, 0), V2(c, -s), degrees);
    expectAngle(CQXVector3<T>(0, 0, 2), CQXVector3<T>(s * T(0.6), s * T(0.8), c), degrees);
    expectAngle(CQXVector4<T>(0, 2, 0, 0), CQXVector4<T>(0, c, 0, s), degrees);
  }
  EXPECT_EQ(qxFindAngleInRadians(V2(), V2(1, 0)), 0);
  EXPECT_FALSE(std::isfinite(qxFindAngleInRadians(V2(1, 0), V2())) || std::isfinite(qxCos(V2(1, 0), V2())));
}

TYPED_TEST(VectorFunctions, OrthonormalizingKeepsTheFirstDirectionOrEverything) {
  using V2 = CQXVector2<TypeParam>;
  using V3 = CQXVector3<TypeParam>;
  V2 a(3, 4), b(1, 7);
  EXPECT_EQ(qxOrthonormalize(a, b), 1);
  EXPECT_LT(Difference(a, V2(3, 4) / 5), 8 * eps<TypeParam>);
  EXPECT_LT(Difference(b, V2(-4, 3) / 5), 8 * eps<TypeParam>);
  V3 p(2, 0, 1), q(1, 1, 1), r(0, 3, -1);
  EXPECT_EQ(qxOrthonormalize(p, q, r), 1);
  EXPECT_EQ(qxAreOrthonormalized(p, q, r, 8 * eps<TypeParam>), 1);
  EXPECT_EQ(qxAreColinear(p, V3(2, 0, 1)), 1);
  EXPECT_EQ(qxAreVectorsCoplanar(q, V3(2, 0, 1), V3(1, 1, 1)), 1);
  V3 u(1, 2, 3), v(3, 2, 1), w = u + v;
  EXPECT_EQ(qxOrthonormalize(u, v, w), 0);
  EXPECT_EQ(u, V3(1, 2, 3));
  EXPECT_EQ(v, V3(3, 2, 1));
  EXPECT_EQ(w, V3(4, 4, 4));
  EXPECT_TRUE(qxOrthonormalize(u, v));
  EXPECT_TRUE(qxAreOrthonormalized(u, v));
}

TYPED_TEST(VectorFunctions, CombinationsAndArrays) {
  using V3 = CQXVector3<TypeParam>;
  const V3 e[4] = {{1, 0, 0}, {0, 1, 0}, {0, 0, 1}, {1, 1, 1}};
  const TypeParam weights[4] = {2, 3, 5, 7};
  EXPECT_EQ(qxCombine(4, e, weights) == V3(9, 10, 12), 1);
  EXPECT_EQ(qxCombine(0, e, weights) == V3(), 1);
  EXPECT_EQ(qxCombine3(e[0], e[1], e[2], 2, 3, 5) == qxCombine2(V3(2, 0, 5), e[1], 1, 3), 1);
  EXPECT_EQ(qxCombine4(e[0], e[1], e[2], e[3], 2, 3, 5, 7) == V3(9, 10, 12), 1);
  EXPECT_EQ(qxFindMean(e, 4) == V3(1, 1, 1) / 2, 1);
  EXPECT_EQ(qxFindMidpoint(e[0], e[3]) == V3(2, 1, 1) / 2, 1);
  EXPECT_EQ(qxMixedProduct(e[0], e[1], e[2]), 1);
  EXPECT_EQ(qxCross(e[0], e[1]), e[2]);

  V3 array[6] = {e[0], e[1], e[2]};
  std::int32_t count = 3;
  EXPECT_EQ(qxAppendVectorArray(2, e + 2, count, array), 5);
  EXPECT_EQ(qxAppendVectorArray(-1, e, count, array), 5);
  qxCopyVectorArray(5, array, array + 1);  // the arrays overlap: e0 e0 e1 e2 e2 e3
  EXPECT_EQ(array[1], e[0]);
  EXPECT_EQ(array[2], e[1]);
  EXPECT_EQ(array[4], e[2]);
  EXPECT_EQ(array[5], e[3]);
  qxCopyVectorArray(5, array + 1, array);
  qxSwapVectors(array[0], array[4]);
  EXPECT_EQ(array[0], e[3]);
  EXPECT_EQ(array[1], e[1]);
  EXPECT_EQ(array[4], e[0]);
}

TYPED_TEST(VectorFunctions, PartialProductsOfDynamicVectors) {
  CQXVectorN<TypeParam> a(5), b(4, TypeParam(2));
  for (std::int32_t i = 0; i < 5; ++i) a[i] = static_cast<TypeParam>(i);
  EXPECT_EQ(qxPartialDotProduct<TypeParam>(2, 0, 3, a, b), 18);
  EXPECT_EQ(qxPartialDotProduct<TypeParam>(2, 0, 0, a, b), 0);
  CQXBaseVector<TypeParam> products(9);
  qxPartialDotProduct<TypeParam>(3, 1, 2, a, b, products);
  EXPECT_EQ(products.Dim(), 2);
  EXPECT_EQ(products[0], 6);
  EXPECT_EQ(products[1], 8);
  qxPartialDotProduct<TypeParam>(3, 1, -2, a, b, products);
  EXPECT_EQ(products.Dim(), 0);

  CQXBaseVector<CQXComplex<TypeParam>> z(2), complexProducts;
  z[0].Set(TypeParam(1e-6), 0);
  z[1].Set(0, 1);
  EXPECT_EQ(qxPartialDotProduct(0, 0, 2, z, z).Real(), TypeParam(1e-6) * TypeParam(1e-6) - 1);  // not conjugated
  qxPartialDotProduct(0, 1, 1, z, z, complexProducts);
  EXPECT_EQ(complexProducts[0].Imag(), TypeParam(1e-6));  // a small product is not lost
}

TYPED_TEST(VectorFunctions, HomogeneousVectorsAreDividedOrRefused) {
  using V2 = CQXVector2<TypeParam>;
  using V3 = CQXVector3<TypeParam>;
  using V4 = CQXVector4<TypeParam>;
  V3 target(9, 9, 9);
  TypeParam w = 0;
  EXPECT_EQ(qxVector4To3(V4(2, 4, 6, TypeParam(0.5)), 1, target, w), 0);
  EXPECT_EQ(w, TypeParam(0.5));
  EXPECT_EQ(target, V3(9, 9, 9));
  EXPECT_EQ(qxVector4To3(V4(2, 4, 6, -2), 2, target, w), 1);  // the bound itself divides
  EXPECT_EQ(target == V3(-1, -2, -3), 1);
  V4 own(2, 4, 6, 2);
  EXPECT_EQ(qxVector4To3(own, own.X()), V3(1, 2, 3));
  EXPECT_EQ(own.X(), 2);
  V2 flat(9, 9);
  EXPECT_EQ(qxVector3To2(V3(1, 2, 0), 0, flat, w), 1);  // nothing is below a tolerance of 0
  EXPECT_EQ(flat.X(), std::numeric_limits<TypeParam>::infinity());
  EXPECT_EQ(qxVector3To2(V3(2, 4, 2), w), V2(1, 2));
  EXPECT_EQ(qxVector3To4(V3(1, 2, 3)), V4(1, 2, 3, 1));
  EXPECT_EQ(qxVector2To3(V2(1, 2)), V3(1, 2, 1));
}

}  // namespace
