#pragma once

#include <qx/foundation/api.h>

#include <cstdint>
#include <type_traits>

/// Minimisation of functions of one variable and of many.
///
/// The element type is taken from the arguments that are references to T. Functions are plain pointers, so lambdas
/// without a capture can be given; the forms with a @p user argument hand that pointer through, unchanged, on every
/// call. Both forms are one algorithm with one order of evaluations. A function may throw: the exception passes through
/// and nothing leaks.
///
/// All state is local to a call, so calls may run in any number of threads as far as the functions allow it.
class QX_API CQXOptimization {
 public:
  /// f(x), or its derivative.
  template <typename T>
  using ScalarFunction = std::type_identity_t<T (*)(T)>;
  /// f(x, user), or its derivative.
  template <typename T>
  using ScalarFunctionWithUser = std::type_identity_t<T (*)(T, void*)>;

  /// Finds three abscissas that bracket a minimum: b between a and c, and f(b) neither above f(a) nor above f(c).
  ///
  /// Starts downhill along a and b (the two are exchanged when f(a) < f(b)) and goes on by the golden ratio or by the
  /// minimum of the parabola through the last three points, at most 100 times the last step ahead.
  ///
  /// There is no limit on the number of steps. On a function without a minimum in the search direction the points run
  /// off, to infinity for a straight line, and it never ends as long as each value is below the one before. It ends at
  /// once when f(b) or f(c) is not a number.
  /// Source: W. H. Press et al., Numerical Recipes, 10.1 (bracketing by parabolic extrapolation).
  /// @param[in,out] a,b two different starting points; then two points of the triple
  /// @param[out] c the third point: c > b > a or c < b < a
  /// @param[out] fa,fb,fc values of the function at the triple
  /// @param f the function; the first two evaluations are at a, then b
  template <typename T>
  static void FindInitTriple(T& a, T& b, T& c, T& fa, T& fb, T& fc, ScalarFunction<T> f);
  template <typename T>
  static void FindInitTriple(T& a, T& b, T& c, T& fa, T& fb, T& fc, void* user, ScalarFunctionWithUser<T> f);

  /// Shrinks a bracketing triple by golden sections, one evaluation a step, and returns the smallest value found.
  ///
  /// Ends when the width of the interval is at most @p tol (|x1| + |x2|), x1 and x2 being the two inner points: a test
  /// relative to the abscissas with no absolute part, and no limit on the number of steps. It never ends
  /// - for a tolerance below about two units in the last place (4.5e-16, float: 2.4e-7), 0 included;
  /// - where the minimum is at 0, unless rounding moves the points away from it: |x| with tol = 0 never ends.
  ///
  /// A sensible tolerance is the square root of the rounding unit, 1e-8 (float: 3e-4). A triple that brackets nothing
  /// is not noticed. When the values at the inner points are equal the left part is kept, and in the end the right
  /// point.
  /// @param a,b,c a bracketing triple, rising or falling
  /// @param tol relative tolerance, compared with width / (|x1| + |x2|)
  /// @param[out] xMin abscissa of the returned value
  /// @return the value of the function at @p xMin.
  template <typename T>
  static T GoldenSection(std::type_identity_t<T> a, std::type_identity_t<T> b, std::type_identity_t<T> c,
                         std::type_identity_t<T> tol, T& xMin, ScalarFunction<T> f);
  template <typename T>
  static T GoldenSection(std::type_identity_t<T> a, std::type_identity_t<T> b, std::type_identity_t<T> c,
                         std::type_identity_t<T> tol, T& xMin, void* user, ScalarFunctionWithUser<T> f);

  /// Shrinks a bracketing triple by parabolas, with golden sections where a parabola is of no use, and returns the
  /// smallest value found.
  ///
  /// Ends when @p xMin is known within about 2 (tol |xMin| + 1e-9) (float: 1e-7), or after 100 evaluations beside the
  /// first, without a sign of which it was. A triple that brackets nothing is not noticed. A constant function leads to
  /// one of the ends of the interval: every step that is not worse is taken.
  /// Source: R. P. Brent, Algorithms for Minimization without Derivatives, chapter 5.
  /// @param a,b,c a bracketing triple, rising or falling
  /// @param tol relative tolerance of the abscissa; below the square root of the rounding unit it only costs
  /// evaluations
  /// @param[out] xMin abscissa of the returned value
  /// @return the value of the function at @p xMin.
  template <typename T>
  static T ParabolicDescent(std::type_identity_t<T> a, std::type_identity_t<T> b, std::type_identity_t<T> c,
                            std::type_identity_t<T> tol, T& xMin, ScalarFunction<T> f);
  template <typename T>
  static T ParabolicDescent(std::type_identity_t<T> a, std::type_identity_t<T> b, std::type_identity_t<T> c,
                            std::type_identity_t<T> tol, T& xMin, void* user, ScalarFunctionWithUser<T> f);

  /// Shrinks a bracketing triple with the help of the derivative and returns the smallest value found.
  ///
  /// The sign of the derivative chooses the side, a secant through two derivatives the step. A secant step shorter than
  /// half of the step before the last one gives way to a bisection. This is the contract, although the usual safeguard
  /// is the other way round: it favours long steps, and a caller who counts evaluations is served better by
  /// ParabolicDescent().
  ///
  /// Ends as ParabolicDescent() does, and also when a step of the smallest length goes uphill. The function is
  /// evaluated first at b, then the derivative; so at each further point. A derivative of the wrong sign leads away
  /// from the minimum.
  /// @param a,b,c a bracketing triple, rising or falling
  /// @param tol relative tolerance of the abscissa, beside the absolute 1e-9 (float: 1e-7)
  /// @param[out] xMin abscissa of the returned value
  /// @param df derivative of @p f
  /// @return the value of the function at @p xMin.
  template <typename T>
  static T DerivativeEstimationDescent(std::type_identity_t<T> a, std::type_identity_t<T> b, std::type_identity_t<T> c,
                                       std::type_identity_t<T> tol, T& xMin, ScalarFunction<T> f, ScalarFunction<T> df);
  template <typename T>
  static T DerivativeEstimationDescent(std::type_identity_t<T> a, std::type_identity_t<T> b, std::type_identity_t<T> c,
                                       std::type_identity_t<T> tol, T& xMin, void* user, ScalarFunctionWithUser<T> f,
                                       ScalarFunctionWithUser<T> df);
};
