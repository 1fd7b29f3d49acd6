#pragma once

#include <qx/foundation/api.h>
#include <qx/foundation/callable.h>
#include <qx/foundation/complex.h>
#include <qx/foundation/scalar.h>
#include <qx/foundation/tolerance.h>

#include <cstdint>

template <qxReal T>
class CQXMatrixN;
template <qxReal T>
class CQXVectorN;

/// The functions of CQXAlgebra for one element type: small linear systems, polynomials, roots of a function of one
/// variable, conjugate gradients. All are static; each may be called from any thread.
///
/// Beside the caller's tolerance there is one fixed small value, QX_TOLERANCE: function values, derivatives, steps and
/// radicands below it count as zero. None of the root finders tests that a root is bracketed.
///
/// The root finders take a plain function, a function with a @p user pointer that is handed through unchanged on every
/// call, or any callable, a lambda with a capture for instance: one algorithm, one order of evaluations. A function may
/// throw; the exception passes through.
template <qxReal T>
class QX_API CQXAlgebraFunctions {
 public:
  /// Function of one variable.
  using Function = T (*)(T);
  /// Function of one variable and the user's pointer.
  using FunctionWithUser = T (*)(T, void*);

  /// Solves a x + b y = r0, c x + d y = r1 by Cramer's rule.
  ///
  /// @param conditionFlag 1; 2 when the solution is unique but ill-conditioned, that is when the sum of the squares of
  ///        the coefficients over abs(det), times @p tol, is above 1
  /// @param tol the determinant and the numerators are zero when their absolute value is not above it
  /// @return 1 for a unique solution. -1 for none: x = y = 0. -2 for infinitely many: one of them, with the unknown
  ///         beside the first coefficient above the tolerance set to 1. When that coefficient is b, the solution is
  ///         x = 1, y = (r0 - b) / b, which solves the first equation only for a = b; test a first if that matters.
  [[nodiscard]] static std::int32_t Solve2x2System(T a, T b, T c, T d, T r0, T r1, T& x, T& y,
                                                   std::int32_t& conditionFlag,
                                                   T tol = QX_PREDICATE_TOLERANCE<T>) noexcept;

  /// Solves a x + b y + c z = r0, d x + e y + f z = r1, g x + h y + i z = r2 by Cramer's rule.
  ///
  /// Flag, tolerance and results are those of Solve2x2System(); without a solution x = y = z = 0. Of infinitely many
  /// solutions the one with the free unknowns at 1 is returned; equations that were not needed for it are not tested.
  [[nodiscard]] static std::int32_t Solve3x3System(T a, T b, T c, T d, T e, T f, T g, T h, T i, T r0, T r1, T r2, T& x,
                                                   T& y, T& z, std::int32_t& conditionFlag,
                                                   T tol = QX_PREDICATE_TOLERANCE<T>) noexcept;

  /// Solves a x^2 + b x + c = 0.
  ///
  /// The discriminant (b / 2a)^2 - c / a counts as zero within 1e-6 of it, an absolute bound.
  /// @param tol coefficients below it in absolute value count as zero
  /// @return 2: two real roots, @p x1 the smaller. 1: one root in both outputs, a double one or that of a linear
  ///         equation. 0: a complex pair, @p x1 the real part and @p x2 the positive imaginary part. -1: no solution
  ///         (a and b are zero, c is not), -2: every x is one; both outputs are 0.
  [[nodiscard]] static std::int32_t SolveQuadratic(T a, T b, T c, T& x1, T& x2,
                                                   T tol = QX_PREDICATE_TOLERANCE<T>) noexcept;
  /// The same with complex outputs: for 0 they are the pair, the positive imaginary part first.
  [[nodiscard]] static std::int32_t SolveQuadratic(T a, T b, T c, CQXComplex<T>& z1, CQXComplex<T>& z2,
                                                   T tol = QX_PREDICATE_TOLERANCE<T>) noexcept;

  /// Solves x^2 + p x + q = 0.
  /// @param tol the discriminant p^2 / 4 - q counts as zero within it
  /// @return 2, 1 or 0, with the outputs of SolveQuadratic()
  [[nodiscard]] static std::int32_t SolveReducedQuadratic(T p, T q, T& x1, T& x2,
                                                          T tol = QX_PREDICATE_TOLERANCE<T>) noexcept;
  [[nodiscard]] static std::int32_t SolveReducedQuadratic(T p, T q, CQXComplex<T>& z1, CQXComplex<T>& z2,
                                                          T tol = QX_PREDICATE_TOLERANCE<T>) noexcept;

  /// Solves x^3 + a x^2 + b x + c = 0 by the trigonometric and the Cardano form.
  ///
  /// Roots closer than some 3e-5 (float: 3e-4) may fall together, by the fixed small value.
  /// @param tol bound below which the parts of the Cardano form count as zero or as equal
  /// @return 3: three real roots, unsorted. 2: real roots of which @p x2 = @p x3. 1: one real root @p x1 and a complex
  ///         pair with the real part @p x2 and the positive imaginary part @p x3.
  [[nodiscard]] static std::int32_t SolveReducedCubic(T a, T b, T c, T& x1, T& x2, T& x3,
                                                      T tol = QX_PREDICATE_TOLERANCE<T>) noexcept;
  /// The same with complex outputs: for 1, @p z2 and @p z3 are the pair, the positive imaginary part first.
  [[nodiscard]] static std::int32_t SolveReducedCubic(T a, T b, T c, CQXComplex<T>& z1, CQXComplex<T>& z2,
                                                      CQXComplex<T>& z3, T tol = QX_PREDICATE_TOLERANCE<T>) noexcept;

  /// Newton's method from the middle of [lo, hi], 19 steps at most.
  ///
  /// @param tol the step is compared with it
  /// @return 1 when a step is below @p tol, and also where the derivative vanishes, with @p root the last iterate: test
  ///         f(root) if that may happen. 0 when the iterate left the interval, @p root untouched, or after 19 steps.
  [[nodiscard]] static std::int32_t Newton(T lo, T hi, T tol, T& root, Function f, Function df);
  [[nodiscard]] static std::int32_t Newton(T lo, T hi, T tol, T& root, void* user, FunctionWithUser f,
                                           FunctionWithUser df);
  template <typename F, typename DF>
  requires qxCallable<F, T, T> || qxCallable<DF, T, T>
  [[nodiscard]] static std::int32_t Newton(T lo, T hi, T tol, T& root, F&& f, DF&& df) {
    qxCallables both(f, df);
    return Newton(lo, hi, tol, root, &both, both.template CallFirst<T, T>, both.template CallSecond<T, T>);
  }

  /// Newton's method guarded by bisection, 99 steps at most; f(lo) and f(hi) should differ in sign.
  /// @param tol the step is compared with it
  /// @return the last iterate, or an end where f is below the small value
  [[nodiscard]] static T SafeNewton(T lo, T hi, T tol, Function f, Function df);
  [[nodiscard]] static T SafeNewton(T lo, T hi, T tol, void* user, FunctionWithUser f, FunctionWithUser df);
  template <typename F, typename DF>
  requires qxCallable<F, T, T> || qxCallable<DF, T, T>
  [[nodiscard]] static T SafeNewton(T lo, T hi, T tol, F&& f, DF&& df) {
    qxCallables both(f, df);
    return SafeNewton(lo, hi, tol, &both, both.template CallFirst<T, T>, both.template CallSecond<T, T>);
  }

  /// Brent's method (inverse quadratic interpolation, bisection where it is slow), 100 steps at most; f(lo) and f(hi)
  /// should differ in sign. R. P. Brent, Algorithms for Minimization without Derivatives (1973), chapter 4.
  /// @param tol width of the bracket at which the search ends
  /// @return the last iterate
  [[nodiscard]] static T Brent(T lo, T hi, T tol, Function f);
  [[nodiscard]] static T Brent(T lo, T hi, T tol, void* user, FunctionWithUser f);
  template <qxCallable<T, T> F>
  [[nodiscard]] static T Brent(T lo, T hi, T tol, F&& f) {
    qxCallables one(f);
    return Brent(lo, hi, tol, &one, one.template CallFirst<T, T>);
  }

  /// Secant method, 49 steps at most. Equal function values at both ends are not guarded: the result is then not
  /// finite.
  /// @param tol the step is compared with it
  /// @return the last iterate
  [[nodiscard]] static T Secant(T lo, T hi, T tol, Function f);
  [[nodiscard]] static T Secant(T lo, T hi, T tol, void* user, FunctionWithUser f);
  template <qxCallable<T, T> F>
  [[nodiscard]] static T Secant(T lo, T hi, T tol, F&& f) {
    qxCallables one(f);
    return Secant(lo, hi, tol, &one, one.template CallFirst<T, T>);
  }

  /// Bisection; f(lo) and f(hi) should differ in sign.
  ///
  /// It ends when the step is not above @p tol or the function value is not above the small value. There is no limit on
  /// the number of steps: with a negative @p tol, with not a number for it, or with ends whose distance is not finite,
  /// it ends only if it meets such a function value. It also ends at once, with one of the ends, when the function
  /// value at @p hi is that small.
  /// @return the last iterate
  [[nodiscard]] static T Bisection(T lo, T hi, T tol, Function f);
  [[nodiscard]] static T Bisection(T lo, T hi, T tol, void* user, FunctionWithUser f);
  template <qxCallable<T, T> F>
  [[nodiscard]] static T Bisection(T lo, T hi, T tol, F&& f) {
    qxCallables one(f);
    return Bisection(lo, hi, tol, &one, one.template CallFirst<T, T>);
  }

  /// Cuts [lo, hi] into @p n equal steps and collects those over which f changes its sign.
  ///
  /// A sample where f is exactly zero gives no bracket. For n <= 0 there is none; f is evaluated once.
  /// @param found number of brackets
  /// @param lowerEnds,upperEnds ends of the brackets; room for n each
  static void NarrowRootBrackets(const T& lo, const T& hi, std::int32_t n, std::int32_t& found, T* lowerEnds,
                                 T* upperEnds, Function f);
  static void NarrowRootBrackets(const T& lo, const T& hi, std::int32_t n, std::int32_t& found, T* lowerEnds,
                                 T* upperEnds, void* user, FunctionWithUser f);
  template <qxCallable<T, T> F>
  static void NarrowRootBrackets(const T& lo, const T& hi, std::int32_t n, std::int32_t& found, T* lowerEnds,
                                 T* upperEnds, F&& f) {
    qxCallables one(f);
    NarrowRootBrackets(lo, hi, n, found, lowerEnds, upperEnds, &one, one.template CallFirst<T, T>);
  }

  /// Widens [x1, x2] by a factor of 1.6 until f changes its sign over it, 49 times at most.
  ///
  /// While the value at @p x2 is larger in size, @p x1 moves away from it. Otherwise @p x2 moves, and the value taken
  /// for it is that at @p x1: from then on no change of sign is seen. Start with the smaller value at @p x1.
  /// @return 1 when a bracket was found, 0 otherwise; @p x1 and @p x2 hold the last interval
  [[nodiscard]] static std::int32_t SearchRootBrackets(T& x1, T& x2, Function f);
  [[nodiscard]] static std::int32_t SearchRootBrackets(T& x1, T& x2, void* user, FunctionWithUser f);
  template <qxCallable<T, T> F>
  [[nodiscard]] static std::int32_t SearchRootBrackets(T& x1, T& x2, F&& f) {
    qxCallables one(f);
    return SearchRootBrackets(x1, x2, &one, one.template CallFirst<T, T>);
  }

  /// Solves @p A x = b by conjugate gradients with the diagonal of the working matrix as preconditioner.
  ///
  /// The working system is (A, b) when A is symmetric and positive definite within @p tol, and (A^T A, A^T b)
  /// otherwise, which squares the condition number. It ends after 100 steps for each unknown, or when the residual has
  /// grown a thousandfold in its square.
  /// @param x on input the start, on output the solution; may be @p b
  /// @param tol the length of the residual is compared with tol times the length of the working right side
  /// @param diagonalShift added to the diagonal of the working matrix when it is above QX_TOLERANCE
  /// @return 1 converged; 0 otherwise, with the best x that was met. 0 with @p x untouched when a diagonal element of
  ///         the working matrix is below QX_TOLERANCE or memory was refused.
  [[nodiscard]] static std::int32_t SolveByCongugateGradient(const CQXMatrixN<T>& A, const CQXVectorN<T>& b,
                                                             CQXVectorN<T>& x, T tol, T diagonalShift);
};

extern template class QX_API CQXAlgebraFunctions<float>;
extern template class QX_API CQXAlgebraFunctions<double>;

/// Closed-form and iterative algebra: the functions of CQXAlgebraFunctions for float and double as overloads, and two
/// counts. All of it is static; an object holds nothing.
class QX_API CQXAlgebra : public CQXAlgebraFunctions<float>, public CQXAlgebraFunctions<double> {
 public:
  using CQXAlgebraFunctions<float>::Solve2x2System;
  using CQXAlgebraFunctions<double>::Solve2x2System;
  using CQXAlgebraFunctions<float>::Solve3x3System;
  using CQXAlgebraFunctions<double>::Solve3x3System;
  using CQXAlgebraFunctions<float>::SolveQuadratic;
  using CQXAlgebraFunctions<double>::SolveQuadratic;
  using CQXAlgebraFunctions<float>::SolveReducedQuadratic;
  using CQXAlgebraFunctions<double>::SolveReducedQuadratic;
  using CQXAlgebraFunctions<float>::SolveReducedCubic;
  using CQXAlgebraFunctions<double>::SolveReducedCubic;
  using CQXAlgebraFunctions<float>::Newton;
  using CQXAlgebraFunctions<double>::Newton;
  using CQXAlgebraFunctions<float>::SafeNewton;
  using CQXAlgebraFunctions<double>::SafeNewton;
  using CQXAlgebraFunctions<float>::Brent;
  using CQXAlgebraFunctions<double>::Brent;
  using CQXAlgebraFunctions<float>::Secant;
  using CQXAlgebraFunctions<double>::Secant;
  using CQXAlgebraFunctions<float>::Bisection;
  using CQXAlgebraFunctions<double>::Bisection;
  using CQXAlgebraFunctions<float>::NarrowRootBrackets;
  using CQXAlgebraFunctions<double>::NarrowRootBrackets;
  using CQXAlgebraFunctions<float>::SearchRootBrackets;
  using CQXAlgebraFunctions<double>::SearchRootBrackets;
  using CQXAlgebraFunctions<float>::SolveByCongugateGradient;
  using CQXAlgebraFunctions<double>::SolveByCongugateGradient;

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
