#include <qx/vectors/vector_access.h>
#include <qx/vectors/vector_text.h>

#include <algorithm>
#include <iomanip>
#include <limits>
#include <numeric>
#include <ranges>
#include <span>
#include <sstream>
#include <unordered_set>

#include "tests/typed_test.h"

namespace {

template <typename V>
class VectorAccess : public ::testing::Test {};
using FixedVectors = ::testing::Types<CQXVector2<float>, CQXVector2<double>, CQXVector3<float>, CQXVector3<double>,
                                      CQXVector4<float>, CQXVector4<double>>;
TYPED_TEST_SUITE(VectorAccess, FixedVectors);

TYPED_TEST(VectorAccess, ActsAsRangeTupleAndKey) {
  using T = typename TypeParam::Element;
  static_assert(std::ranges::contiguous_range<TypeParam> && std::ranges::sized_range<const TypeParam>);
  TypeParam v;
  std::iota(begin(v), end(v), T(1));
  const T dimension = static_cast<T>(v.Dim());
  EXPECT_EQ(std::ranges::max(v), dimension);
  for (T& x : v) x *= 2;
  EXPECT_EQ(std::span<T>(v).back(), 2 * dimension);
  EXPECT_EQ(std::span<const T>(std::as_const(v)).data(), v.Data());
  static_assert(std::tuple_size_v<TypeParam> == TypeParam::dimension);
  get<1>(v) = 9;
  EXPECT_EQ(get<1>(TypeParam(v)), 9);
  EXPECT_EQ(get<TypeParam::dimension - 1>(std::as_const(v)), v[99]);

  std::unordered_set<TypeParam, qxExactHash, qxExactEqual> keys;
  v[0] = T(0.5);
  TypeParam almost = v, zero;
  almost[0] = std::nextafter(almost[0], T(100));
  EXPECT_TRUE(almost == v);  // by the tolerance
  const TypeParam negativeZero = -zero;
  for (const TypeParam& key : {v, almost, zero, negativeZero, v}) keys.insert(key);
  EXPECT_EQ(keys.size(), 3u);
  std::unordered_set<std::size_t> hashes;
  for (int i = 0; i < 1000; ++i) {
    v[i % 2] = static_cast<T>(i);
    hashes.insert(qxExactHash()(v));
  }
  EXPECT_EQ(hashes.size(), 1000u);

  const TypeParam third(T(1) / 3), end = v;
  EXPECT_TRUE(qxExactEqual()(qxLerp(third, end, 0), third));
  EXPECT_TRUE(qxExactEqual()(qxLerp(third, end, 1), end));
  EXPECT_TRUE(qxLerp(third, end, T(0.25)) == third * T(0.75) + end * T(0.25));
  EXPECT_TRUE(qxExactEqual()(qxConvert<T>(qxConvert<double>(third)), third));
  EXPECT_EQ(qxConvert<float>(third)[0], 1.0f / 3);
  TypeParam notANumber(std::numeric_limits<T>::quiet_NaN());
  EXPECT_FALSE(qxExactEqual()(notANumber, notANumber));
}

TEST(VectorAccess, BindsNames) {
  CQXVector3<double> v(1, 2, 3);
  auto& [x, y, z] = v;
  z = x + y;
  EXPECT_EQ(v.Z(), 3);
  const auto [a, b] = CQXVector2<float>(4, 5);
  EXPECT_EQ(a + b, 9);
}

TEST(VectorText, FollowsTheStream) {
  std::ostringstream text;
  const float elements[] = {1, 2.5f};
  text << std::setw(3) << CQXVector2<double>(1, -2) << CQXVector4<float>(0.5f) << CQXVectorN<float>(2, elements)
       << CQXVectorN<float>() << std::setw(2) << CQXBaseVector<std::int32_t>(2, 7);
  EXPECT_EQ(text.str(), "(  1,  -2)(0.5, 0.5, 0.5, 0.5)(1, 2.5)()( 7,  7)");
}

}  // namespace
