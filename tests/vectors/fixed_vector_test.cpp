#include <qx/vectors/vector2.h>
#include <qx/vectors/vector3.h>
#include <qx/vectors/vector4.h>
#include <qx/vectors/vector_n.h>

#include <cmath>
#include <limits>
#include <type_traits>

#include "tests/fixed_test.h"

namespace {

template <typename V>
class FixedVector : public ::testing::Test {};
using AllVectors = ::testing::Types<CQXVector2<float>, CQXVector3<float>, CQXVector4<float>, CQXVector2<double>,
                                    CQXVector3<double>, CQXVector4<double>>;
TYPED_TEST_SUITE(FixedVector, AllVectors);

TYPED_TEST(FixedVector, AnIntegerGivesZerosAndANumberFills) {
  using V = TypeParam;
  using T = typename V::Element;
  static_assert(!std::is_convertible_v<T, V> && !std::is_convertible_v<int, V>);
  const auto zeros = Numbers(Ramp<V>(0, 0));
  for (const V& v : {V(), V(7), V(7L), V(0)}) EXPECT_EQ(Numbers(v), zeros);
  EXPECT_EQ(Numbers(V(7.0f)), Numbers(Ramp<V>(7, 0)));
  EXPECT_EQ(Numbers(V(T(-0.5))), Numbers(Ramp<V>(T(-0.5), 0)));
  CQXVectorN<T> dynamic(5);
  for (std::int32_t i = 0; i < 5; ++i) dynamic[i] = static_cast<T>(3 + i);
  EXPECT_EQ(Numbers(V(dynamic)), Numbers(Ramp<V>(3)));
  V v;
  v = dynamic;
  EXPECT_EQ(Numbers(v), Numbers(Ramp<V>(3)));
  v = {};
  EXPECT_EQ(Numbers(v), zeros);
}

TYPED_TEST(FixedVector, EveryOtherIndexSelectsTheLastComponent) {
  TypeParam v;
  const TypeParam& constant = v;
  const std::int32_t n = v.Dim();
  using Integer = std::numeric_limits<std::int32_t>;
  for (std::int32_t i = 0; i < n; ++i) EXPECT_EQ(&v[i], v.Data() + i);
  for (const std::int32_t i : {n, 7, -1, Integer::min(), Integer::max()}) {
    EXPECT_EQ(&v[i], v.Data() + n - 1) << i;
    EXPECT_EQ(&constant[i], v.Data() + n - 1) << i;
  }
}

TYPED_TEST(FixedVector, ArithmeticIsByComponentAndMayAlias) {
  using V = TypeParam;
  using T = typename V::Element;
  const auto expect = [](const V& v, T first, T step) { EXPECT_EQ(Numbers(v), Numbers(Ramp<V>(first, step))); };
  const V a = Ramp<V>(2);
  expect(a * 3 + Ramp<V>(-3), 3, 4);
  expect(3 * a - a.Negate() / 2, 7, T(3.5));
  expect(-a / 0, -std::numeric_limits<T>::infinity(), 0);
  V c = a;
  c.Add(c);
  c *= c[0];  // the factor is read before it changes
  expect(c, 16, 8);
  c /= c[0];
  c += a;
  c.Mul(4);
  c -= a;
  c.Div(2);
  expect(c, 5, T(2.5));
  c.Sub(c);
  expect(c, 0, 0);
  T numbers[4];
  a.Dump(numbers);
  c.Fill(numbers);
  expect(c, 2, 1);
}

TYPED_TEST(FixedVector, LengthsGoThroughTheGuard) {
  using T = typename TypeParam::Element;
  TypeParam v;
  v[0] = 3;
  v[1] = -4;
  EXPECT_EQ(v.Length(), 5);
  EXPECT_EQ(v.NormEuclidean(), 5);
  EXPECT_EQ(v.SquareLength(), 25);
  EXPECT_EQ(v.Norm1(), 7);
  EXPECT_EQ(v.NormInf(), 4);
  EXPECT_TRUE(v.IsAlmostUnit(4));
  EXPECT_TRUE(v.IsAlmostZero(5));  // both bounds are inside
  EXPECT_EQ(v.IsAlmostUnit(std::nextafter(T(4), T(0))) || v.IsAlmostZero(std::nextafter(T(5), T(0))), false);
  EXPECT_EQ(v.Normalize(), 1);
  EXPECT_EQ(v[0], 3 * (T(1) / 5));

  v = {};
  v[0] = T(1e-5);
  EXPECT_EQ(v.Length(), 0);
  EXPECT_EQ(v.IsAlmostZero(0), 1);
  EXPECT_EQ(v.Normalize(), 0);
  EXPECT_EQ(v[0], T(1e-5));
  v[0] = std::numeric_limits<T>::quiet_NaN();
  EXPECT_EQ(v.IsAlmostZero(), 0);
}

TYPED_TEST(FixedVector, OfEqualExtremesTheLowestIndexWins) {
  using T = typename TypeParam::Element;
  const std::int32_t n = TypeParam::Dim();
  // Every vector of the values -2 to 2 against a plain scan.
  for (std::int32_t code = 0; code < static_cast<std::int32_t>(std::pow(5, n)); ++code) {
    TypeParam v;
    for (std::int32_t i = 0, rest = code; i < n; ++i, rest /= 5) v[i] = static_cast<T>(rest % 5 - 2);
    for (const std::int32_t flag : {0, 1, -3}) {
      const auto value = [&](std::int32_t i) { return flag == 0 ? v[i] : std::abs(v[i]); };
      std::int32_t smallest = 0, largest = 0;
      for (std::int32_t i = 1; i < n; ++i) {
        if (value(i) < value(smallest)) smallest = i;
        if (value(i) > value(largest)) largest = i;
      }
      ASSERT_EQ(v.GetIndexOfMinComponent(flag), smallest);
      ASSERT_EQ(v.GetIndexOfMaxComponent(flag), largest);
      ASSERT_EQ(v.GetMinComponent(flag), value(smallest));
      ASSERT_EQ(v.GetMaxComponent(flag), value(largest));
    }
  }
}

TYPED_TEST(FixedVector, ComparisonsKeepTheirBoundaries) {
  using T = typename TypeParam::Element;
  const T tolerance = QX_TOLERANCE<T>, above = std::nextafter(tolerance, T(1));
  TypeParam v;
  v[1] = tolerance;
  EXPECT_EQ(v, TypeParam());
  EXPECT_TRUE(!(v != TypeParam()));
  v[1] = above;
  EXPECT_EQ(v == TypeParam() || !(v != TypeParam()), false);
  v[0] = -tolerance;
  v.AnnulateSmallComponents(tolerance);  // the bound itself is kept
  EXPECT_EQ(v[0], -tolerance);
  v.AnnulateSmallComponents(above);
  EXPECT_EQ(v[0], 0);
  EXPECT_EQ(v[1], above);
}

template <typename T>
class VectorOfOneSize : public ::testing::Test {};
TYPED_TEST_SUITE(VectorOfOneSize, FloatTypes);

TYPED_TEST(VectorOfOneSize, AnglesOfThePlaneAreInDegrees) {
  using V = CQXVector2<TypeParam>;
  const struct {
    V v;
    TypeParam half, full;
  } cases[] = {{{1, 0}, 0, 0}, {{0, -1}, -90, 270}, {{-1, 0}, 180, 180}, {{0, 2}, 90, 90}, {{0, 0}, 0, 0}};
  for (const auto& c : cases) {
    EXPECT_EQ(c.v.Angle_MINUS_180_180(), c.half);
    EXPECT_EQ(c.v.Angle_0_360(), c.full);
  }
  EXPECT_EQ(Numbers(V(1, 2).Rotate90DegsCCW()), Numbers(V(-2, 1)));
}

TYPED_TEST(VectorOfOneSize, BasesAreSolvedOrRefusedWithoutATrace) {
  using V2 = CQXVector2<TypeParam>;
  using V3 = CQXVector3<TypeParam>;
  const V3 a(1, 2, 0), b(0, 1, -1), c(2, 0, 1);
  V3 x(9, 9, 9);
  EXPECT_EQ(a.DecomposeInBasis(a, b, a + b, x[0], x[1], x[2]), 0);  // dependent
  EXPECT_EQ(V3(5, 5, 5).DecomposeInBasis(a, b, a + b, x[0], x[1], x[2]), 0);
  EXPECT_EQ(a.DecomposeInBasis(a * 1000, b, c, x[0], x[1], x[2], TypeParam(0.01)), 0);  // ill-conditioned
  EXPECT_EQ(V2(1, 1).DecomposeInBasis(V2(1, 2), V2(2, 4), x[0], x[1]), 0);
  EXPECT_EQ(Numbers(x), Numbers(V3(9, 9, 9)));
  EXPECT_EQ((a * 2 + b * 3 - c * 4).DecomposeInBasis(a, b, c, x[0], x[1], x[2]), 1);
  EXPECT_LT(Difference(x, V3(2, 3, -4)), 64 * eps<TypeParam>);
  EXPECT_EQ(V2(1, 8).DecomposeInBasis(V2(1, 2), V2(-1, 1), x[0], x[1]), 1);
  EXPECT_LT(Difference(x, V3(3, 2, -4)), 64 * eps<TypeParam>);
}

}  // namespace
