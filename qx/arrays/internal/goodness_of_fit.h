#pragma once

#include <qx/arrays/statistics.h>
#include <qx/foundation/scalar.h>

#include <cstdint>

/// @file
/// The statistics behind the tests of CQXStatistics, which documents them, and their limits by level of significance.
/// Internal, not part of the interface.

namespace qxArrays {

// Limits. A level that is not listed counts as 5 percent.

[[nodiscard]] double NormalQuantile(qxSignificanceLevel level) noexcept;
[[nodiscard]] double KolmogorovFactor(qxSignificanceLevel level) noexcept;
[[nodiscard]] double KolmogorovLimit(std::int32_t n, double c) noexcept;
[[nodiscard]] double EquidistributionLimit(qxSignificanceLevel level) noexcept;
/// Number of runs up and down that @p n elements have to exceed.
[[nodiscard]] double RunsLimit(std::int32_t n, qxSignificanceLevel level) noexcept;
[[nodiscard]] double PermutationLimit(std::int32_t k, qxSignificanceLevel level) noexcept;

// Statistics. Infinite where the test fails without them: memory refused, an element outside the bins, k out of range.

/// Greatest distance between the empirical distribution function of any sample and the assumed one.
template <qxReal T>
[[nodiscard]] double KolmogorovDistance(std::int32_t n, const T* data, double a, double b, std::int32_t kind);
template <qxReal T>
[[nodiscard]] double EquidistributionChiSquare(std::int32_t n, const T* data, double a, double b) noexcept;
template <qxReal T>
[[nodiscard]] std::int32_t CountRuns(std::int32_t n, const T* data) noexcept;
template <qxReal T>
[[nodiscard]] double PermutationChiSquare(std::int32_t n, const T* data, std::int32_t k);

/// Turns the ordering of the elements into its rank and the elements into another order.
template <qxReal T>
[[nodiscard]] std::int32_t RankOrdering(std::int32_t k, T* block) noexcept;

}  // namespace qxArrays
