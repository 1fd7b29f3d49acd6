#include <qx/vectors/vector2.h>
#include <qx/vectors/vector3.h>
#include <qx/vectors/vector4.h>
#include <qx/vectors/vector_n.h>

#include <cmath>
#include <limits>
#include <type_traits>

#include "tests/typed_test.h"

namespace {

template <typename V>
class FixedVector : public ::testing::Test {
 protected:
  using Number = typename V::Element;
  static constexpr std::int32_t n = V::Dim();

  static V Ramp(Number first) {
    V v;
    for (std::int32_t i = 0; i < n; ++i) v[i] = first + static_cast<Number>(i);
    return v;
  }
  static void ExpectComponents(const V& v, Number first, Number step) {
    for (std::int32_t i = 0; i < n; ++i) EXPECT_EQ(v[i], first + step * static_cast<Number>(i)) << i;
  }
};
using AllVectors = ::testing::Types<CQXVector2<float>, CQXVector3<float>, CQXVector4<float>, CQXVector2<double>,
                                    CQXVector3<double>, CQXVector4<double>>;
TYPED_TEST_SUITE(FixedVector, AllVectors);

TYPED_TEST(FixedVector, IsAPlainArrayOfItsComponents) {
  using T = typename TypeParam::Element;
  static_assert(std::is_trivially_copyable_v<TypeParam> && std::is_standard_layout_v<TypeParam>);
  static_assert(sizeof(TypeParam[3]) == 3 * static_cast<std::size_t>(TypeParam::Dim()) * sizeof(T));
  static_assert(!std::is_convertible_v<T, TypeParam> && !std::is_convertible_v<int, TypeParam>);
}

TYPED_TEST(FixedVector, AnIntegerGivesZerosAndANumberFills) {
  using T = typename TypeParam::Element;
  this->ExpectComponents(TypeParam(), 0, 0);
  this->ExpectComponents(TypeParam(7), 0, 0);
  this->ExpectComponents(TypeParam(7L), 0, 0);
  this->ExpectComponents(TypeParam(0), 0, 0);
  this->ExpectComponents(TypeParam(7.0f), 7, 0);
  this->ExpectComponents(TypeParam(T(-0.5)), T(-0.5), 0);
  TypeParam v = this->Ramp(1);
  v = {};
  this->ExpectComponents(v, 0, 0);
  CQXVectorN<T> dynamic(5);
  for (std::int32_t i = 0; i < 5; ++i) dynamic[i] = static_cast<T>(3 + i);
  this->ExpectComponents(TypeParam(dynamic), 3, 1);
  v = dynamic;
  this->ExpectComponents(v, 3, 1);
}

TYPED_TEST(FixedVector, EveryOtherIndexSelectsTheLastComponent) {
  TypeParam v = this->Ramp(1);
  const TypeParam& constant = v;
  for (const std::int32_t i :
       {this->n, 7, -1, std::numeric_limits<std::int32_t>::min(), std::numeric_limits<std::int32_t>::max()}) {
    EXPECT_EQ(&v[i], &v[this->n - 1]) << i;
    EXPECT_EQ(&constant[i], &v[this->n - 1]) << i;
  }
}

TYPED_TEST(FixedVector, ArithmeticIsByComponentAndMayAlias) {
  using T = typename TypeParam::Element;
  const TypeParam a = this->Ramp(2);
  const TypeParam b = this->Ramp(-3);
  this->ExpectComponents(a + b, -1, 2);
  this->ExpectComponents(a - b, 5, 0);
  this->ExpectComponents(a * 3, 6, 3);
  this->ExpectComponents(3 * a, 6, 3);
  this->ExpectComponents(a / 2, 1, T(0.5));
  this->ExpectComponents(-a, -2, -1);
  this->ExpectComponents(a.Negate(), -2, -1);
  TypeParam c = a;
  c.Add(c);
  this->ExpectComponents(c, 4, 2);
  c -= a;
  c.Mul(4);
  c.Div(2);
  this->ExpectComponents(c, 4, 2);
  c *= c[0];  // the factor is read before it changes
  this->ExpectComponents(c, 16, 8);
  c /= c[0];
  this->ExpectComponents(c, 1, T(0.5));
  c.Sub(c);
  this->ExpectComponents(c, 0, 0);
  T numbers[4];
  a.Dump(numbers);
  c.Fill(numbers);
  EXPECT_EQ(c == a, 1);
  this->ExpectComponents(a / 0, std::numeric_limits<T>::infinity(), 0);
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
  EXPECT_EQ(v.IsAlmostUnit(4), 1);  // both bounds are inside
  EXPECT_EQ(v.IsAlmostUnit(std::nextafter(T(4), T(0))), 0);
  EXPECT_EQ(v.IsAlmostZero(5), 1);
  EXPECT_EQ(v.IsAlmostZero(std::nextafter(T(5), T(0))), 0);
  EXPECT_EQ(v.Normalize(), 1);
  EXPECT_EQ(v[0], 3 * (T(1) / 5));
  EXPECT_EQ(v.IsAlmostUnit(), 1);

  TypeParam tiny;
  tiny[0] = T(1e-5);
  EXPECT_EQ(tiny.Length(), 0);
  EXPECT_EQ(tiny.IsAlmostZero(0), 1);
  EXPECT_EQ(tiny.Normalize(), 0);
  EXPECT_EQ(tiny[0], T(1e-5));
  tiny[0] = std::numeric_limits<T>::quiet_NaN();
  EXPECT_TRUE(std::isnan(tiny.Length()));
  EXPECT_EQ(tiny.IsAlmostZero(), 0);
}

TYPED_TEST(FixedVector, OfEqualExtremesTheLowestIndexWins) {
  using T = typename TypeParam::Element;
  // Every vector of the values -2 to 2 against a plain scan.
  const std::int32_t combinations = static_cast<std::int32_t>(std::pow(5, this->n));
  for (std::int32_t code = 0; code < combinations; ++code) {
    TypeParam v;
    for (std::int32_t i = 0, rest = code; i < this->n; ++i, rest /= 5) v[i] = static_cast<T>(rest % 5 - 2);
    for (const std::int32_t flag : {0, 1, -3}) {
      const auto value = [&](std::int32_t i) { return flag == 0 ? v[i] : std::abs(v[i]); };
      std::int32_t smallest = 0, largest = 0;
      for (std::int32_t i = 1; i < this->n; ++i) {
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
  const T tolerance = QX_TOLERANCE<T>;
  const TypeParam zero;
  TypeParam v;
  v[1] = tolerance;
  EXPECT_EQ(v == zero, 1);
  EXPECT_EQ(v != zero, 0);
  v[1] = std::nextafter(tolerance, T(1));
  EXPECT_EQ(v == zero, 0);
  EXPECT_EQ(v != zero, 1);
  v[0] = -tolerance;
  v.AnnulateSmallComponents(tolerance);  // the bound itself is kept
  EXPECT_EQ(v[0], -tolerance);
  v.AnnulateSmallComponents(std::nextafter(tolerance, T(1)));
  EXPECT_EQ(v[0], 0);
  EXPECT_EQ(v[1], std::nextafter(tolerance, T(1)));
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
  const V turned = V(1, 0).Rotate90DegsCCW();
  EXPECT_EQ(turned.X(), 0);
  EXPECT_EQ(turned.Y(), 1);
}

TYPED_TEST(VectorOfOneSize, BasesAreSolvedOrRefusedWithoutATrace) {
  using V2 = CQXVector2<TypeParam>;
  using V3 = CQXVector3<TypeParam>;
  const V3 a(1, 2, 0), b(0, 1, -1), c(2, 0, 1);
  TypeParam alpha = 9, beta = 9, gamma = 9;
  EXPECT_EQ((a * 2 + b * 3 - c * 4).DecomposeInBasis(a, b, c, alpha, beta, gamma), 1);
  EXPECT_NEAR(alpha, 2, 1e-5);
  EXPECT_NEAR(beta, 3, 1e-5);
  EXPECT_NEAR(gamma, -4, 1e-5);
  alpha = beta = gamma = 9;
  EXPECT_EQ(a.DecomposeInBasis(a, b, a + b, alpha, beta, gamma), 0);  // dependent
  EXPECT_EQ(V3(5, 5, 5).DecomposeInBasis(a, b, a + b, alpha, beta, gamma), 0);
  EXPECT_EQ(a.DecomposeInBasis(a * 1000, b, c, alpha, beta, gamma, TypeParam(0.01)), 0);  // ill-conditioned
  EXPECT_EQ(V2(1, 1).DecomposeInBasis(V2(1, 2), V2(2, 4), alpha, beta), 0);
  EXPECT_EQ(alpha, 9);
  EXPECT_EQ(beta, 9);
  EXPECT_EQ(gamma, 9);
  EXPECT_EQ(V2(1, 8).DecomposeInBasis(V2(1, 2), V2(-1, 1), alpha, beta), 1);
  EXPECT_NEAR(alpha, 3, 1e-6);
  EXPECT_NEAR(beta, 2, 1e-6);
}

}  // namespace
