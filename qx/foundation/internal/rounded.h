#pragma once

#include <qx/foundation/api.h>

#include <type_traits>

/// @file
/// Internal, installed because public headers include it.
/// Products that are rounded before anything is added to them, whatever a compiler may fuse.

/// a b, rounded before it meets a sum.
///
/// Where fused multiply-add may be used, g++ contracts a product and a sum by default, and it forms alternating fused
/// additions and subtractions out of complex products even under `-ffp-contract=off`. Both would change the last bits.
/// clang++ contracts within one expression only, and the call ends it. Integers wrap around.
template <typename T>
[[nodiscard, gnu::always_inline]] inline constexpr T qxProduct(const T& a, const T& b) noexcept {
#if defined(__GNUC__) && !defined(__clang__)
  if constexpr (std::is_floating_point_v<T>) return __builtin_assoc_barrier(a * b);
#endif
  if constexpr (std::is_integral_v<T>) {
    using Unsigned = std::make_unsigned_t<T>;
    return static_cast<T>(static_cast<Unsigned>(a) * static_cast<Unsigned>(b));
  } else {
    return a * b;
  }
}
