#pragma once

#include <qx/foundation/api.h>

#include <cstddef>
#include <utility>

/// @file
/// Internal, installed because public headers include it.
/// Straight-line code for the few elements of the fixed vectors and matrices: a loop over three elements costs up to
/// three times as much at ordinary optimisation levels.

/// Calls function(0), function(1), ... function(N - 1).
template <std::size_t N, typename Function>
[[gnu::always_inline]] inline constexpr void qxUnroll(Function function) {
  [&]<std::size_t... I>(std::index_sequence<I...>) { (function(I), ...); }
  (std::make_index_sequence<N>{});
}

/// The sum term(0) + term(1) + ... + term(N - 1), from left to right.
template <std::size_t N, typename Function>
[[nodiscard, gnu::always_inline]] inline constexpr auto qxUnrolledSum(Function term) {
  return [&]<std::size_t... I>(std::index_sequence<I...>) { return (... + term(I)); }
  (std::make_index_sequence<N>{});
}
