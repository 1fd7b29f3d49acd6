#pragma once

#include <cmath>
#include <limits>

namespace qxInternal {

/// The nearest whole number that a sample of this type holds, halves upwards; not a number gives 0.
template <typename Sample, typename T>
[[nodiscard]] Sample Saturated(T value) noexcept {
  if (!(value > 0)) return 0;
  if (value >= static_cast<T>(std::numeric_limits<Sample>::max())) return std::numeric_limits<Sample>::max();
  const T whole = std::floor(value);
  return static_cast<Sample>(value - whole < T(0.5) ? whole : whole + 1);
}

}  // namespace qxInternal
