#pragma once

#include <algorithm>
#include <cmath>
#include <limits>
#include <vector>

#include "tests/typed_test.h"

/// Distance of 1 from the next number.
template <typename T>
inline constexpr T eps = std::numeric_limits<T>::epsilon();

/// The numbers of a fixed vector or matrix.
template <typename A>
std::vector<typename A::Element> Numbers(const A& a) {
  return {a.Data(), a.Data() + sizeof(A) / sizeof(typename A::Element)};
}

/// The vector or matrix of the numbers first, first + step, ...
template <typename A>
A Ramp(typename A::Element first, typename A::Element step = 1) {
  A a;
  for (std::size_t i = 0; i < sizeof(A) / sizeof(typename A::Element); ++i) {
    a.Data()[i] = first + step * static_cast<typename A::Element>(i);
  }
  return a;
}

/// Largest absolute difference of two vectors or matrices; infinite when a number is none.
template <typename A>
typename A::Element Difference(const A& a, const A& b) {
  typename A::Element largest = 0;
  for (const auto x : Numbers(a - b)) largest = std::isnan(x) ? INFINITY : std::max(largest, std::abs(x));
  return largest;
}
