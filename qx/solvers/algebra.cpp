#include <qx/foundation/conversion.h>
#include <qx/solvers/algebra.h>

#include <cmath>

namespace {

std::int32_t RoundedToInteger(double x) { return qxToInt32(x >= 0 ? x + 0.5 : x - 0.5); }

std::int32_t RoundedCombinations(double n, double k) {
  if (k > n - 0.5 || k < 0.5) return 1;
  if (k < 1.5 || k > n - 1.5) return RoundedToInteger(n);
  if (k < 2.5 || k > n - 2.5) return RoundedToInteger(n * (n - 1) * 0.5);
  double result = n;
  for (double j = 2; j < k + 0.5 && std::isfinite(result); ++j) result = result * (n + 1 - j) / j;
  return RoundedToInteger(result);
}

std::int32_t RoundedFactorial(double n) {
  double result = 1;
  for (double j = 2; j < n + 0.5 && std::isfinite(result); ++j) result *= j;
  return RoundedToInteger(result);
}

}  // namespace

std::int32_t CQXAlgebra::Combinations(std::uint32_t n, std::uint32_t k) noexcept { return RoundedCombinations(n, k); }

std::int32_t CQXAlgebra::Combinations(std::int32_t n, std::int32_t k) noexcept { return RoundedCombinations(n, k); }

std::int32_t CQXAlgebra::Permutations(std::uint32_t n) noexcept { return RoundedFactorial(n); }

std::int32_t CQXAlgebra::Permutations(std::int32_t n) noexcept { return RoundedFactorial(n); }
