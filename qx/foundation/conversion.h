#pragma once

#include <qx/foundation/api.h>

#include <cstdint>
#include <limits>

/// @file
/// Conversion of floating-point numbers to integers that is defined for every input.

/// Truncates towards zero. Not a number, infinities and values outside the range give -2^31 (0x80000000).
[[nodiscard]] constexpr std::int32_t qxToInt32(double x) noexcept {
  return x > -2147483649.0 && x < 2147483648.0 ? static_cast<std::int32_t>(x)
                                               : std::numeric_limits<std::int32_t>::min();
}

/// Truncates towards zero. Not a number, infinities and values outside the range give -2^63 (0x8000000000000000).
[[nodiscard]] constexpr std::int64_t qxToInt64(double x) noexcept {
  return x >= -9223372036854775808.0 && x < 9223372036854775808.0 ? static_cast<std::int64_t>(x)
                                                                  : std::numeric_limits<std::int64_t>::min();
}
