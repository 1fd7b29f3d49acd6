#pragma once

#include <qx/foundation/api.h>
#include <qx/foundation/scalar.h>

#include <cstdint>

/// @file
/// The normal curve: weights of a window, the integral and its inverse; and the quadrature that bears the same name.
/// All of it may be called from any thread. The platform's exponential, logarithm and error functions are used.

/// Weights of a Gaussian window: w_i proportional to exp(-d^2 / (2 sigma^2)) with d = i - (count - 1) / 2, their sum 1.
///
/// The weights are symmetric to the last bit. A sigma far below 1 leaves the middle one or two.
/// @param count number of weights
/// @param sigma standard deviation in steps of the window, above 0; infinite: equal weights
/// @param weights room for @p count numbers
/// @return 1; 0 for a count below 1 or a sigma that is not above 0: @p weights is untouched.
template <qxReal T>
QX_API std::int32_t qxGetGaussWeights(std::int32_t count, qxNonDeduced<T> sigma, T* weights) noexcept;

/// The standard normal distribution function, the integral of exp(-t^2 / 2) / sqrt(2 pi) from minus infinity to @p x,
/// with a relative error of some 4 eps down to the smallest normal number. Not a number gives not a number.
template <qxReal T>
[[nodiscard]] QX_API T qxCalculateGaussIntegral(T x) noexcept;

/// The probability that a normal number lies between @p a and @p b; negative when b < a.
///
/// In a tail both integrals are taken from the near end, so that nothing cancels but what a and b have in common.
/// @param sigma standard deviation; 0 gives what the division yields
template <qxReal T>
[[nodiscard]] QX_API T qxCalculateGaussIntegral(T a, T b, qxNonDeduced<T> mean, qxNonDeduced<T> sigma) noexcept;

/// The quantile: the x with qxCalculateGaussIntegral(x) = @p p, with a relative error of some 4 eps, and 0 for 0.5.
///
/// P. J. Acklam's rational approximation (2003), and one step of Halley's method on it.
/// @return minus infinity for 0, infinity for 1, not a number outside 0 to 1.
template <qxReal T>
[[nodiscard]] QX_API T qxCalculateInverseGaussIntegral(T p) noexcept;

/// Nodes and weights of the Gauss-Legendre rule on -1 to 1, the nodes ascending and symmetric: exact for polynomials of
/// degree up to 2 count - 1. O(count^2).
///
/// Newton's method on the Legendre polynomial, started by F. G. Tricomi's approximation of its zeros (1950). The steps
/// end when one is below the rounding, or after 10.
/// @param count number of nodes
/// @param nodes room for @p count numbers
/// @param weights room for @p count numbers
/// @return 1; 0 for a count below 1: nothing is written.
template <qxReal T>
QX_API std::int32_t qxGetGaussLegendreRule(std::int32_t count, T* nodes, T* weights) noexcept;

/// The integral of @p f from @p a to @p b by a rule on -1 to 1: (b - a) / 2 times the sum of w_i f(x_i), in the order
/// of the nodes. A count below 1 gives 0.
/// @param f callable with a T that gives a T
template <qxReal T, typename F>
[[nodiscard]] T qxIntegrate(std::int32_t count, const T* nodes, const T* weights, qxNonDeduced<T> a, qxNonDeduced<T> b,
                            F&& f) {
  const T half = (b - a) / 2;
  const T middle = a + half;
  T sum = 0;
  for (std::int32_t i = 0; i < count; ++i) sum += weights[i] * static_cast<T>(f(middle + half * nodes[i]));
  return half * sum;
}
