#include <qx/foundation/block.h>
#include <qx/foundation/complex.h>
#include <qx/foundation/conversion.h>
#include <qx/foundation/tolerance.h>

#include <cmath>
#include <limits>

#include "tests/typed_test.h"

namespace {

template <typename T>
class Tolerance : public ::testing::Test {};
TYPED_TEST_SUITE(Tolerance, FloatTypes);

TYPED_TEST(Tolerance, TheGuardTestsTheSquareAndLetsNotANumberPass) {
  const TypeParam bound = QX_TOLERANCE<TypeParam>;
  EXPECT_EQ(qxGuardedSqrt(std::nextafter(bound, TypeParam(0))), 0);
  EXPECT_EQ(qxGuardedSqrt(bound), std::sqrt(bound));
  EXPECT_EQ(qxGuardedSqrt(TypeParam(4), TypeParam(5)), 0);
  EXPECT_EQ(qxGuardedSqrt(TypeParam(4), TypeParam(4)), 2);
  EXPECT_TRUE(std::isnan(qxGuardedSqrt(std::numeric_limits<TypeParam>::quiet_NaN(), TypeParam(1))));
}

TEST(Conversion, IsDefinedForEveryNumber) {
  constexpr std::int32_t indefinite32 = std::numeric_limits<std::int32_t>::min();
  constexpr std::int64_t indefinite64 = std::numeric_limits<std::int64_t>::min();
  const double infinity = std::numeric_limits<double>::infinity();
  EXPECT_EQ(qxToInt32(2147483647.9), 2147483647);
  EXPECT_EQ(qxToInt32(-2147483648.9), indefinite32);
  EXPECT_EQ(qxToInt32(-1.9), -1);
  for (const double x : {2147483648.0, -2147483649.0, infinity, -infinity, std::nan("")}) {
    EXPECT_EQ(qxToInt32(x), indefinite32) << x;
  }
  EXPECT_EQ(qxToInt64(-1e18 - 1.0), -1000000000000000000);
  for (const double x : {9223372036854775808.0, infinity, -infinity, std::nan("")}) {
    EXPECT_EQ(qxToInt64(x), indefinite64) << x;
  }
}

TEST(ElementCount, CountsNothingForNegativeSizes) {
  EXPECT_EQ(qxElementCount(65536, 65536), std::size_t{1} << 32);
  EXPECT_EQ(qxElementCount(-2, -3), 0u);
}

}  // namespace
