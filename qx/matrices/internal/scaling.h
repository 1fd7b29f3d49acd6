#pragma once

#include <qx/foundation/scalar.h>

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <optional>

/// @file
/// Internal. The size of matrices in powers of two, by which they are scaled without rounding.

namespace qxMatrices {

/// Largest absolute value; 0 for no elements.
template <qxReal T>
[[nodiscard]] T LargestMagnitude(std::size_t count, const T* a) noexcept {
  T largest = 0;
  for (std::size_t i = 0; i < count; ++i) largest = std::max(largest, std::abs(a[i]));
  return largest;
}

/// Exponent of the power of two just above the largest absolute value; 0 for zeros, nothing when an element is not
/// finite.
template <qxReal T>
[[nodiscard]] std::optional<std::int32_t> ExponentOfLargest(std::size_t count, const T* a) noexcept {
  if (!std::all_of(a, a + count, [](T x) { return std::isfinite(x); })) return std::nullopt;
  const T largest = LargestMagnitude(count, a);
  return largest > 0 ? std::ilogb(largest) + 1 : 0;
}

}  // namespace qxMatrices
