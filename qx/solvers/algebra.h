#pragma once

#include <qx/foundation/api.h>

#include <cstdint>

/// Closed-form and iterative algebra, all of it static; an object holds nothing. Every function may be called from any
/// thread.
class QX_API CQXAlgebra {
 public:
  /// Number of ways to choose @p k of @p n, formed in double by n (n - 1) / 2 (n - 2) / 3 ... and rounded.
  ///
  /// 1 when k is 0 or below, or n or above; so k above n gives 1, not 0. A count beyond 32 bits gives -2^31, and one
  /// that double cannot hold exactly loses low digits before it is rounded.
  [[nodiscard]] static std::int32_t Combinations(std::uint32_t n, std::uint32_t k) noexcept;
  [[nodiscard]] static std::int32_t Combinations(std::int32_t n, std::int32_t k) noexcept;

  /// n!, formed in double and rounded; 1 for n below 2. From 13 on the result is beyond 32 bits: -2^31.
  [[nodiscard]] static std::int32_t Permutations(std::uint32_t n) noexcept;
  [[nodiscard]] static std::int32_t Permutations(std::int32_t n) noexcept;
};
