#include <qx/solvers/algebra.h>

#include <limits>

#include "tests/typed_test.h"

namespace {

TEST(Counts, FollowTheTriangleInsideAndAreOneOutside) {
  std::int64_t row[31] = {1};
  for (std::int32_t n = 1; n <= 30; ++n) {
    for (std::int32_t k = n; k > 0; --k) row[k] += row[k - 1];
    for (std::int32_t k = 0; k <= n; ++k) {
      EXPECT_EQ(CQXAlgebra::Combinations(n, k), row[k]) << n << " over " << k;
      EXPECT_EQ(CQXAlgebra::Combinations(static_cast<std::uint32_t>(n), static_cast<std::uint32_t>(k)), row[k]);
    }
  }
  EXPECT_EQ(CQXAlgebra::Combinations(5, 7), 1);
  EXPECT_EQ(CQXAlgebra::Combinations(-5, -7), 1);
  EXPECT_EQ(CQXAlgebra::Combinations(0, 0), 1);
}

TEST(Counts, BeyondTheIntegerRangeAreIndefinite) {
  constexpr std::int32_t indefinite = std::numeric_limits<std::int32_t>::min();
  EXPECT_EQ(CQXAlgebra::Combinations(34, 17), indefinite);
  EXPECT_EQ(CQXAlgebra::Combinations(4294967295u, 2147483647u), indefinite);
  EXPECT_EQ(CQXAlgebra::Combinations(4294967295u, 1u), indefinite);
  std::int32_t factorial = 1;
  for (std::int32_t n = 0; n <= 12; ++n) {
    if (n > 0) factorial *= n;
    EXPECT_EQ(CQXAlgebra::Permutations(n), factorial);
    EXPECT_EQ(CQXAlgebra::Permutations(static_cast<std::uint32_t>(n)), factorial);
  }
  EXPECT_EQ(CQXAlgebra::Permutations(13), indefinite);
  EXPECT_EQ(CQXAlgebra::Permutations(4294967295u), indefinite);
  EXPECT_EQ(CQXAlgebra::Permutations(-3), 1);
}

}  // namespace
