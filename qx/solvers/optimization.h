#pragma once

#include <qx/foundation/api.h>
#include <qx/foundation/callable.h>
#include <qx/foundation/scalar.h>
#include <qx/vectors/vector_n.h>

#include <cstdint>
#include <type_traits>

template <qxReal T>
class CQXMatrixMN;

/// Bounds of one variable.
enum QX_OPTIMIZATION_CONSTRAINTS : std::int32_t {
  QX_UNCONSTRAINED = 0,  ///< no bound
  QX_LOWER_BOUND = 1,    ///< lower bound only
  QX_BOTH_BOUNDS = 2,    ///< both bounds; the lower one must not exceed the upper one
  QX_UPPER_BOUND = 3     ///< upper bound only
};

/// How a minimisation of many variables ended.
enum QX_OPTIMIZATION_INFO : std::int32_t {
  QX_OPT_INVALID = -1,            ///< bad arguments, no memory, or a search direction that does not go downhill
  QX_OPT_IN_PROGRESS = 0,         ///< never left at return
  QX_OPT_FUNCTION_CONVERGED = 1,  ///< the relative decrease of the function is small
  QX_OPT_STEP_CONVERGED = 2,      ///< the change of x is small
  QX_OPT_GRADIENT_CONVERGED = 3,  ///< the gradient is small, the projected one when there are bounds
  QX_OPT_ITERATION_LIMIT = 4,     ///< more iterations than allowed
  QX_OPT_LINE_SEARCH_FAILED = 6,  ///< no step along the steepest descent makes the function smaller
  QX_OPT_INFEASIBLE = 7,          ///< linear programmes: no point keeps all constraints
  QX_OPT_UNBOUNDED = 8            ///< linear programmes: the function falls without end within the constraints
};

/// How a constraint of a linear programme compares its left side with its right side.
enum QX_LINEAR_RELATION : std::int32_t { QX_LESS_EQUAL = -1, QX_EQUAL = 0, QX_GREATER_EQUAL = 1 };

/// What a residual r costs in a nonlinear least squares problem, with z = (r / scale)^2 in units of scale^2. All but
/// the first let outliers count less than their squares.
enum QX_ROBUST_LOSS : std::int32_t {
  QX_LOSS_SQUARE = 0,   ///< z
  QX_LOSS_HUBER = 1,    ///< z up to 1, then 2 sqrt(z) - 1
  QX_LOSS_SOFT_L1 = 2,  ///< 2 (sqrt(1 + z) - 1)
  QX_LOSS_CAUCHY = 3    ///< ln(1 + z)
};

/// What CQXOptimization::LevenbergMarquardt() may be told beside the problem.
template <qxReal T>
struct CQXLeastSquaresOptions {
  T xTol = sizeof(T) == 8 ? T(1e-10) : T(1e-5);  ///< step, relative to x, both in the scales of the variables
  T fTol = sizeof(T) == 8 ? T(1e-12) : T(1e-6);  ///< decrease, relative to the value: the real and the expected one
  T gTol = sizeof(T) == 8 ? T(1e-10) : T(1e-5);  ///< largest magnitude of the projected gradient of the returned value
  std::int32_t maxIterations = 200;
  const QX_OPTIMIZATION_CONSTRAINTS* constraints = nullptr;  ///< kind of bounds of each variable; null: none
  const T* lower = nullptr;                                  ///< bounds; what a kind does not have is not read
  const T* upper = nullptr;
  QX_ROBUST_LOSS loss = QX_LOSS_SQUARE;
  T lossScale = 1;  ///< size from which on a residual counts as large
};

/// Minimisation of functions of one variable and of many.
///
/// The element type is taken from the arguments that are references to T. Functions are plain pointers, or any
/// callable, a lambda with a capture for instance; the forms with a @p user argument hand that pointer through,
/// unchanged, on every call. All forms are one algorithm with one order of evaluations. A function may throw: the
/// exception passes through and nothing leaks.
///
/// All state is local to a call, so calls may run in any number of threads as far as the functions allow it.
class QX_API CQXOptimization {
 public:
  /// f(x), or its derivative.
  template <qxReal T>
  using ScalarFunction = std::type_identity_t<T (*)(T)>;
  /// f(x, user), or its derivative.
  template <qxReal T>
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
  template <qxReal T>
  static void FindInitTriple(T& a, T& b, T& c, T& fa, T& fb, T& fc, ScalarFunction<T> f);
  template <qxReal T>
  static void FindInitTriple(T& a, T& b, T& c, T& fa, T& fb, T& fc, void* user, ScalarFunctionWithUser<T> f);
  template <qxReal T, qxCallable<T, T> F>
  static void FindInitTriple(T& a, T& b, T& c, T& fa, T& fb, T& fc, F&& f) {
    qxCallables one(f);
    FindInitTriple(a, b, c, fa, fb, fc, &one, one.template CallFirst<T, T>);
  }

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
  template <qxReal T>
  static T GoldenSection(qxNonDeduced<T> a, qxNonDeduced<T> b, qxNonDeduced<T> c, qxNonDeduced<T> tol, T& xMin,
                         ScalarFunction<T> f);
  template <qxReal T>
  static T GoldenSection(qxNonDeduced<T> a, qxNonDeduced<T> b, qxNonDeduced<T> c, qxNonDeduced<T> tol, T& xMin,
                         void* user, ScalarFunctionWithUser<T> f);
  template <qxReal T, qxCallable<T, T> F>
  static T GoldenSection(qxNonDeduced<T> a, qxNonDeduced<T> b, qxNonDeduced<T> c, qxNonDeduced<T> tol, T& xMin, F&& f) {
    qxCallables one(f);
    return GoldenSection(a, b, c, tol, xMin, &one, one.template CallFirst<T, T>);
  }

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
  template <qxReal T>
  static T ParabolicDescent(qxNonDeduced<T> a, qxNonDeduced<T> b, qxNonDeduced<T> c, qxNonDeduced<T> tol, T& xMin,
                            ScalarFunction<T> f);
  template <qxReal T>
  static T ParabolicDescent(qxNonDeduced<T> a, qxNonDeduced<T> b, qxNonDeduced<T> c, qxNonDeduced<T> tol, T& xMin,
                            void* user, ScalarFunctionWithUser<T> f);
  template <qxReal T, qxCallable<T, T> F>
  static T ParabolicDescent(qxNonDeduced<T> a, qxNonDeduced<T> b, qxNonDeduced<T> c, qxNonDeduced<T> tol, T& xMin,
                            F&& f) {
    qxCallables one(f);
    return ParabolicDescent(a, b, c, tol, xMin, &one, one.template CallFirst<T, T>);
  }

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
  template <qxReal T>
  static T DerivativeEstimationDescent(qxNonDeduced<T> a, qxNonDeduced<T> b, qxNonDeduced<T> c, qxNonDeduced<T> tol,
                                       T& xMin, ScalarFunction<T> f, ScalarFunction<T> df);
  template <qxReal T>
  static T DerivativeEstimationDescent(qxNonDeduced<T> a, qxNonDeduced<T> b, qxNonDeduced<T> c, qxNonDeduced<T> tol,
                                       T& xMin, void* user, ScalarFunctionWithUser<T> f, ScalarFunctionWithUser<T> df);
  template <qxReal T, typename F, typename DF>
  requires qxCallable<F, T, T> || qxCallable<DF, T, T>
  static T DerivativeEstimationDescent(qxNonDeduced<T> a, qxNonDeduced<T> b, qxNonDeduced<T> c, qxNonDeduced<T> tol,
                                       T& xMin, F&& f, DF&& df) {
    qxCallables both(f, df);
    return DerivativeEstimationDescent(a, b, c, tol, xMin, &both, both.template CallFirst<T, T>,
                                       both.template CallSecond<T, T>);
  }

  /// f(x, user) of many variables.
  template <qxReal T>
  using VectorFunctionWithUser = std::type_identity_t<T (*)(const CQXVectorN<T>&, void*)>;
  /// g(x, gradient, user): writes the gradient of f at x to the n elements of its second argument.
  template <qxReal T>
  using GradientFunctionWithUser = std::type_identity_t<void (*)(const CQXVectorN<T>&, CQXVectorN<T>&, void*)>;

  /// Minimises a smooth function of @p n variables by limited-memory BFGS: the two-loop recursion over the last @p m
  /// steps gives the direction, the line search of More and Thuente the step.
  ///
  /// Each iteration evaluates the function and the gradient at its start once more, then at every trial of the line
  /// search, the function first; 20 trials are the limit. Memory and time for an iteration are O(n m).
  ///
  /// Ends at the first of these tests that holds after an iteration, in this order:
  /// - |g| <= @p gTol: QX_OPT_GRADIENT_CONVERGED;
  /// - decrease <= @p fTol max(|f before|, |f|, 1): QX_OPT_FUNCTION_CONVERGED;
  /// - |x before - x| <= @p xTol: QX_OPT_STEP_CONVERGED;
  /// - more than @p maxIterations iterations: QX_OPT_ITERATION_LIMIT. The limit itself is allowed and one more is made:
  ///   a limit of 1 makes two line searches.
  ///
  /// Both norms are CQXVectorN::Length(), whose guard makes everything below 3.16e-5 (float: 3.16e-4) zero. A tolerance
  /// below that acts as if it were that large: neither the gradient nor the step is ever resolved more finely. To go on
  /// to smaller gradients, scale the function up, and choose @p fTol accordingly. A narrow valley, that of Wood's
  /// function for one, may end the search by a step below the guard far from the minimum: scale the variables up, or
  /// start again from the point reached.
  ///
  /// A direction that does not go downhill ends with QX_OPT_INVALID, unless the gradient test holds: at a stationary
  /// start for instance, or with a gradient that is not a number; so does a first step of 0, which an infinite gradient
  /// gives. Values of the function that are not finite are not
  /// noticed as such; the number of evaluations stays bounded by 21 (maxIterations + 1) + 1.
  ///
  /// Sources: J. Nocedal, Math. Comp. 35 (1980); D. C. Liu and J. Nocedal, Math. Programming 45 (1989); J. J. More and
  /// D. J. Thuente, ACM Trans. Math. Softw. 20 (1994).
  /// @param n number of variables
  /// @param m number of remembered steps, 1 <= m <= n: more are refused; min(n, 5) to min(n, 20) are usual
  /// @param[in,out] x start of at least n elements, in the end the point reached
  /// @param xTol,fTol,gTol tolerances of the three tests, all above 0
  /// @param maxIterations at least 1
  /// @param[out] info how it ended; QX_OPT_INVALID also for bad arguments, a start of less than n elements among
  ///        them (after one evaluation of function and gradient), and when memory is refused by a null: x is as it came
  ///        then
  /// @return the value of the function at @p x.
  template <qxReal T, typename F, typename G>
  static T QuasiNewtonLBFGS(std::int32_t n, std::int32_t m, CQXVectorN<T>& x, qxNonDeduced<T> xTol,
                            qxNonDeduced<T> fTol, qxNonDeduced<T> gTol, std::int32_t maxIterations, F&& f, G&& g,
                            QX_OPTIMIZATION_INFO& info) {
    qxCallables both(f, g);
    return QuasiNewtonLBFGS(n, m, x, xTol, fTol, gTol, maxIterations, &both, CallValue<T>(both), CallGradient<T>(both),
                            info);
  }
  template <qxReal T>
  static T QuasiNewtonLBFGS(std::int32_t n, std::int32_t m, CQXVectorN<T>& x, qxNonDeduced<T> xTol,
                            qxNonDeduced<T> fTol, qxNonDeduced<T> gTol, std::int32_t maxIterations, void* user,
                            VectorFunctionWithUser<T> f, GradientFunctionWithUser<T> g, QX_OPTIMIZATION_INFO& info);

  /// Minimises a smooth function of @p n variables with bounds on each of them, by the L-BFGS-B method: the generalized
  /// Cauchy point of a limited-memory model, the minimum of the model over the variables that are free there, cut back
  /// to the bounds, and a line search towards it.
  ///
  /// All points at which the function is evaluated keep the bounds; the start is moved onto them first. Where all
  /// entries of @p constraints are QX_UNCONSTRAINED this is QuasiNewtonLBFGS().
  ///
  /// The gradient at x is projected: of a component that points out of a bound only the distance to the bound counts.
  /// Ends before the first iteration when its largest magnitude is <= @p gTol, and after an iteration at the first of
  /// these tests that holds, in this order:
  /// - projected gradient <= @p gTol: QX_OPT_GRADIENT_CONVERGED (no guard here);
  /// - |x before - x| <= @p xTol, by the guarded length as in QuasiNewtonLBFGS(): QX_OPT_STEP_CONVERGED;
  /// - 0 < decrease <= @p fTol max(|f before|, |f|, 1): QX_OPT_FUNCTION_CONVERGED;
  /// - more than @p maxIterations iterations: QX_OPT_ITERATION_LIMIT.
  ///
  /// When a line search fails (no step in 20 trials, or a direction that does not go downhill), x goes back to its
  /// start and the model is forgotten; when it had been forgotten already, the end is QX_OPT_LINE_SEARCH_FAILED. That
  /// is also how a function that is not a number ends.
  ///
  /// Sources: R. H. Byrd, P. Lu, J. Nocedal and C. Zhu, SIAM J. Sci. Comput. 16 (1995); C. Zhu, R. H. Byrd, P. Lu and
  /// J. Nocedal, ACM Trans. Math. Softw. 23 (1997), algorithm 778.
  /// @param n number of variables
  /// @param m number of remembered steps, 1 <= m <= n: more are refused; min(n, 5) is usual
  /// @param[in,out] x start of at least n elements, in the end the point reached
  /// @param xTol,fTol,gTol tolerances of the tests, all above 0
  /// @param maxIterations at least 1
  /// @param constraints kind of bounds, one for each variable
  /// @param lower,upper bounds, one for each variable; what a kind does not have is not read as a bound
  /// @param[out] info how it ended; QX_OPT_INVALID for bad arguments, a start of less than n elements, a kind that
  ///        does not exist and crossed bounds (after one evaluation of the function), and when memory is refused by a
  ///        null: x is as it came then
  /// @return the value of the function at @p x.
  template <qxReal T, typename F, typename G>
  static T QuasiNewtonConstraintLBFGSB(std::int32_t n, std::int32_t m, CQXVectorN<T>& x, qxNonDeduced<T> xTol,
                                       qxNonDeduced<T> fTol, qxNonDeduced<T> gTol, std::int32_t maxIterations,
                                       const QX_OPTIMIZATION_CONSTRAINTS* constraints, const qxNonDeduced<T>* lower,
                                       const qxNonDeduced<T>* upper, F&& f, G&& g, QX_OPTIMIZATION_INFO& info) {
    qxCallables both(f, g);
    return QuasiNewtonConstraintLBFGSB(n, m, x, xTol, fTol, gTol, maxIterations, constraints, lower, upper, &both,
                                       CallValue<T>(both), CallGradient<T>(both), info);
  }
  template <qxReal T>
  static T QuasiNewtonConstraintLBFGSB(std::int32_t n, std::int32_t m, CQXVectorN<T>& x, qxNonDeduced<T> xTol,
                                       qxNonDeduced<T> fTol, qxNonDeduced<T> gTol, std::int32_t maxIterations,
                                       const QX_OPTIMIZATION_CONSTRAINTS* constraints, const qxNonDeduced<T>* lower,
                                       const qxNonDeduced<T>* upper, void* user, VectorFunctionWithUser<T> f,
                                       GradientFunctionWithUser<T> g, QX_OPTIMIZATION_INFO& info);

  /// Minimises a smooth function of @p n variables along its steepest descent. Slow in narrow valleys: take
  /// ConjugateGradient() or QuasiNewtonBFGS() unless there is a reason not to.
  ///
  /// Ends, before the first iteration or after one, at the first of these tests that holds:
  /// - |g| <= @p gTol: QX_OPT_GRADIENT_CONVERGED;
  /// - decrease <= @p fTol max(|f before|, |f|, 1): QX_OPT_FUNCTION_CONVERGED;
  /// - |x before - x| <= @p xTol: QX_OPT_STEP_CONVERGED;
  /// - @p maxIterations iterations: QX_OPT_ITERATION_LIMIT.
  ///
  /// The norms are Euclidean, without the guard of Length(). Where no step along the steepest descent makes the
  /// function smaller the end is QX_OPT_LINE_SEARCH_FAILED: x is a minimum as far as rounding lets one see, or the
  /// gradient does not belong to the function, or is not finite. The value never rises. A line search has 20 trials,
  /// and up to 20 more to come back from where the function is not finite.
  ///
  /// The line search is that of More and Thuente (1994).
  /// @param[in,out] x start of at least n elements, in the end the point reached
  /// @param xTol,fTol,gTol tolerances of the tests, all above 0
  /// @param maxIterations at least 1
  /// @param[out] info how it ended; QX_OPT_INVALID for bad arguments and when memory is refused by a null, after one
  ///        evaluation of the function: x is as it came then
  /// @return the value of the function at @p x.
  template <qxReal T>
  static T FastestDescend(std::int32_t n, CQXVectorN<T>& x, qxNonDeduced<T> xTol, qxNonDeduced<T> fTol,
                          qxNonDeduced<T> gTol, std::int32_t maxIterations, void* user, VectorFunctionWithUser<T> f,
                          GradientFunctionWithUser<T> g, QX_OPTIMIZATION_INFO& info);
  template <qxReal T, typename F, typename G>
  static T FastestDescend(std::int32_t n, CQXVectorN<T>& x, qxNonDeduced<T> xTol, qxNonDeduced<T> fTol,
                          qxNonDeduced<T> gTol, std::int32_t maxIterations, F&& f, G&& g, QX_OPTIMIZATION_INFO& info) {
    qxCallables both(f, g);
    return FastestDescend(n, x, xTol, fTol, gTol, maxIterations, &both, CallValue<T>(both), CallGradient<T>(both),
                          info);
  }

  /// The same by conjugate gradients: each direction is the steepest descent and a part of the direction before, by the
  /// formula of Polak and Ribiere with the part kept from being negative. Begins anew after n steps, and where a
  /// direction does not lead down. Three vectors beside x are all the memory.
  /// Sources: E. Polak and G. Ribiere (1969); J. C. Gilbert and J. Nocedal, SIAM J. Optim. 2 (1992).
  template <qxReal T>
  static T ConjugateGradient(std::int32_t n, CQXVectorN<T>& x, qxNonDeduced<T> xTol, qxNonDeduced<T> fTol,
                             qxNonDeduced<T> gTol, std::int32_t maxIterations, void* user, VectorFunctionWithUser<T> f,
                             GradientFunctionWithUser<T> g, QX_OPTIMIZATION_INFO& info);
  template <qxReal T, typename F, typename G>
  static T ConjugateGradient(std::int32_t n, CQXVectorN<T>& x, qxNonDeduced<T> xTol, qxNonDeduced<T> fTol,
                             qxNonDeduced<T> gTol, std::int32_t maxIterations, F&& f, G&& g,
                             QX_OPTIMIZATION_INFO& info) {
    qxCallables both(f, g);
    return ConjugateGradient(n, x, xTol, fTol, gTol, maxIterations, &both, CallValue<T>(both), CallGradient<T>(both),
                             info);
  }

  /// The same by the method of Broyden, Fletcher, Goldfarb and Shanno with the inverse of the approximate Hessian as a
  /// full matrix: n^2 elements of memory, O(n^2) for an iteration. The method of choice up to some hundred variables.
  /// Source: J. Nocedal and S. J. Wright, Numerical Optimization (2006), chapter 6.
  template <qxReal T>
  static T QuasiNewtonBFGS(std::int32_t n, CQXVectorN<T>& x, qxNonDeduced<T> xTol, qxNonDeduced<T> fTol,
                           qxNonDeduced<T> gTol, std::int32_t maxIterations, void* user, VectorFunctionWithUser<T> f,
                           GradientFunctionWithUser<T> g, QX_OPTIMIZATION_INFO& info);
  template <qxReal T, typename F, typename G>
  static T QuasiNewtonBFGS(std::int32_t n, CQXVectorN<T>& x, qxNonDeduced<T> xTol, qxNonDeduced<T> fTol,
                           qxNonDeduced<T> gTol, std::int32_t maxIterations, F&& f, G&& g, QX_OPTIMIZATION_INFO& info) {
    qxCallables both(f, g);
    return QuasiNewtonBFGS(n, x, xTol, fTol, gTol, maxIterations, &both, CallValue<T>(both), CallGradient<T>(both),
                           info);
  }

  /// Minimises a function of @p n variables without derivatives by the simplex of Nelder and Mead, for functions that
  /// are noisy or have kinks; above some ten variables it gets slow.
  ///
  /// When the values at all points of the simplex are within @p fTol max(|f|, 1) of the best
  /// (QX_OPT_FUNCTION_CONVERGED), or all coordinates within @p xTol (QX_OPT_STEP_CONVERGED), it begins anew around the
  /// best point; it ends when that has brought no decrease above @p fTol max(|f before|, |f|, 1). Ends also after
  /// @p maxEvaluations evaluations, give or take those of one simplex: QX_OPT_ITERATION_LIMIT. Not a number counts as
  /// infinite.
  /// Sources: J. A. Nelder and R. Mead, Computer Journal 7 (1965); F. Gao and L. Han, Comput. Optim. Appl. 51 (2012).
  /// @param[in,out] x start of at least n elements, in the end the best point
  /// @param step edge of the first simplex, above 0: the distance that the solution may have from the start
  /// @param xTol,fTol tolerances, above 0
  /// @param maxEvaluations at least 1
  /// @param[out] info how it ended; QX_OPT_INVALID for bad arguments and when memory is refused by a null, after one
  ///        evaluation: x is as it came then
  /// @return the value of the function at @p x.
  template <qxReal T>
  static T SimplexDescent(std::int32_t n, CQXVectorN<T>& x, qxNonDeduced<T> step, qxNonDeduced<T> xTol,
                          qxNonDeduced<T> fTol, std::int32_t maxEvaluations, void* user, VectorFunctionWithUser<T> f,
                          QX_OPTIMIZATION_INFO& info);
  template <qxReal T, typename F>
  static T SimplexDescent(std::int32_t n, CQXVectorN<T>& x, qxNonDeduced<T> step, qxNonDeduced<T> xTol,
                          qxNonDeduced<T> fTol, std::int32_t maxEvaluations, F&& f, QX_OPTIMIZATION_INFO& info) {
    qxCallables one(f);
    return SimplexDescent(n, x, step, xTol, fTol, maxEvaluations, &one, CallValue<T>(one), info);
  }

  /// Minimises a smooth function of @p n variables without derivatives by searches along directions that become
  /// conjugate.
  ///
  /// An iteration searches along n directions and, where it pays, along the way that they made, which takes the place
  /// of one of them. When the decrease of an iteration is <= @p fTol max(|f before|, |f|, 1)
  /// (QX_OPT_FUNCTION_CONVERGED) or its way <= @p xTol (QX_OPT_STEP_CONVERGED), the coordinates are taken again for
  /// directions; it ends when an iteration along them has found no more either, or after @p maxIterations iterations
  /// (QX_OPT_ITERATION_LIMIT), each of at most 163 (n + 1) + 1 evaluations, usually about 10 n. Not a number counts as
  /// infinite. Source: M. J. D. Powell, Computer Journal 7 (1964), with the direction of the largest decrease given up.
  /// @param[in,out] x start of at least n elements, in the end the best point
  /// @param step first step along each coordinate, above 0
  /// @param xTol,fTol tolerances, above 0
  /// @param maxIterations at least 1
  /// @param[out] info how it ended; QX_OPT_INVALID as for SimplexDescent()
  /// @return the value of the function at @p x.
  template <qxReal T>
  static T PowellConjugateDirections(std::int32_t n, CQXVectorN<T>& x, qxNonDeduced<T> step, qxNonDeduced<T> xTol,
                                     qxNonDeduced<T> fTol, std::int32_t maxIterations, void* user,
                                     VectorFunctionWithUser<T> f, QX_OPTIMIZATION_INFO& info);
  template <qxReal T, typename F>
  static T PowellConjugateDirections(std::int32_t n, CQXVectorN<T>& x, qxNonDeduced<T> step, qxNonDeduced<T> xTol,
                                     qxNonDeduced<T> fTol, std::int32_t maxIterations, F&& f,
                                     QX_OPTIMIZATION_INFO& info) {
    qxCallables one(f);
    return PowellConjugateDirections(n, x, step, xTol, fTol, maxIterations, &one, CallValue<T>(one), info);
  }

  /// Solves a linear programme: the x >= 0 with the least c x under the constraints that each row of A x is at most,
  /// equal to or at least the element of b. Simplex method in two phases on a dense tableau, by Bland's rule, which
  /// does not circle.
  ///
  /// Source: R. G. Bland, Math. Oper. Res. 2 (1977).
  /// @param A a row for each constraint, a column for each variable
  /// @param b,c right sides, costs
  /// @param relations kind of each constraint
  /// @param[in,out] x at least as many elements as variables; the solution when there is one, else untouched
  /// @param tol above 0; pivots, costs and the rest that makes a programme infeasible are zero up to it, in units of
  /// the
  ///        largest coefficient of the row. 1e-9 (float: 1e-5) is usual
  /// @param maxIterations exchanges of both phases together, at least 1
  /// @param[out] info QX_OPT_FUNCTION_CONVERGED for a solution, QX_OPT_INFEASIBLE, QX_OPT_UNBOUNDED,
  ///        QX_OPT_ITERATION_LIMIT, or QX_OPT_INVALID for sizes that do not fit, bad arguments and refused memory
  /// @return c x; infinity when infeasible, minus infinity when unbounded, else not a number.
  template <qxReal T>
  static T LinerProgrammingSimplex(const CQXMatrixMN<T>& A, const CQXVectorN<T>& b, const CQXVectorN<T>& c,
                                   const QX_LINEAR_RELATION* relations, CQXVectorN<T>& x, qxNonDeduced<T> tol,
                                   std::int32_t maxIterations, QX_OPTIMIZATION_INFO& info);

  /// r(x, residuals, user): writes the m residuals at x.
  template <qxReal T>
  using ResidualFunctionWithUser = std::type_identity_t<void (*)(const CQXVectorN<T>&, CQXVectorN<T>&, void*)>;
  /// J(x, jacobian, user): writes the derivatives of the residuals at x, a row for each residual.
  template <qxReal T>
  using JacobianFunctionWithUser = std::type_identity_t<void (*)(const CQXVectorN<T>&, CQXMatrixMN<T>&, void*)>;

  /// Minimises the sum of the squares of @p m residuals of @p n variables, or of a loss that bears outliers, with
  /// bounds if wanted: the way to fit a curve.
  ///
  /// Levenberg-Marquardt: the linear least squares problem at x, damped in the scales of the variables, is solved by
  /// reflections; the step is cut to the bounds; the damping grows until the value falls. Variables at a bound that the
  /// gradient presses against are held. A robust loss weights the residuals by its derivative.
  ///
  /// Ends when the projected gradient is <= gTol (QX_OPT_GRADIENT_CONVERGED), when expected and real decrease are <=
  /// fTol f (QX_OPT_FUNCTION_CONVERGED), when the step is short beside x (QX_OPT_STEP_CONVERGED), after maxIterations
  /// iterations (QX_OPT_ITERATION_LIMIT), each of at most 60 trials, or where there are no numbers around x
  /// (QX_OPT_LINE_SEARCH_FAILED). The value never rises. A solution far from 0 with x = 0 in all elements is not
  /// recognised by the step.
  ///
  /// Sources: K. Levenberg (1944); D. W. Marquardt (1963); J. J. More, The Levenberg-Marquardt algorithm (1978); H. B.
  /// Nielsen, Damping parameter in Marquardt's method (1999).
  /// @param[in,out] x start of at least n elements, moved onto the bounds first; in the end the point reached
  /// @param residuals,jacobian the functions; null for the Jacobian: it is estimated by differences
  /// @param[out] info how it ended; QX_OPT_INVALID for bad arguments and refused memory, before any evaluation and with
  ///        x as it came, and for residuals at the start that are not finite
  /// @return the sum of the losses at @p x, not a number for bad arguments.
  template <qxReal T>
  static T LevenbergMarquardt(std::int32_t n, std::int32_t m, CQXVectorN<T>& x,
                              const CQXLeastSquaresOptions<qxNonDeduced<T>>& options, void* user,
                              ResidualFunctionWithUser<T> residuals, JacobianFunctionWithUser<T> jacobian,
                              QX_OPTIMIZATION_INFO& info);
  template <qxReal T, typename R, typename J>
  static T LevenbergMarquardt(std::int32_t n, std::int32_t m, CQXVectorN<T>& x,
                              const CQXLeastSquaresOptions<qxNonDeduced<T>>& options, R&& residuals, J&& jacobian,
                              QX_OPTIMIZATION_INFO& info) {
    qxCallables both(residuals, jacobian);
    using Both = decltype(both);
    return LevenbergMarquardt(n, m, x, options, &both,
                              Both::template CallFirst<void, const CQXVectorN<T>&, CQXVectorN<T>&>,
                              Both::template CallSecond<void, const CQXVectorN<T>&, CQXMatrixMN<T>&>, info);
  }
  /// The same with the Jacobian estimated by differences: n evaluations of the residuals for each, at points within the
  /// bounds unless these are closer than the step of a difference.
  template <qxReal T, typename R>
  static T LevenbergMarquardt(std::int32_t n, std::int32_t m, CQXVectorN<T>& x,
                              const CQXLeastSquaresOptions<qxNonDeduced<T>>& options, R&& residuals,
                              QX_OPTIMIZATION_INFO& info) {
    qxCallables one(residuals);
    return LevenbergMarquardt(n, m, x, options, &one,
                              decltype(one)::template CallFirst<void, const CQXVectorN<T>&, CQXVectorN<T>&>, nullptr,
                              info);
  }

 protected:
  /// Brings the list of free variables up to date with the bound states and tells what changed.
  ///
  /// After the first iteration of a bounded task the former list is compared with the states: free variables with a
  /// state above 0 leave, the others with a state of at most 0 enter. Indices count from 0.
  /// @param[in,out] freeCount,freeIndex the free variables in ascending order in front, the others from the back
  /// @param[out] enterCount,leaveCount how many enter and leave
  /// @param[out] enteringIndex room for n: those that enter from the front, those that leave from the back
  /// @param boundState above 0 for a variable at a bound, else free
  /// @param memoryCount number of remembered steps
  /// @param[in,out] update on entry whether the memory has changed, on exit whether the matrix of the subspace has to
  ///        be formed anew: 0 only when there are no steps, or nothing entered, left or changed
  /// @param isConstrained whether there is a bound at all
  /// @param iteration number of finished iterations
  static void LBFGSB_Freev(std::int32_t n, std::int32_t& freeCount, std::int32_t* freeIndex, std::int32_t& enterCount,
                           std::int32_t& leaveCount, std::int32_t* enteringIndex, const std::int32_t* boundState,
                           std::int32_t memoryCount, std::int32_t& update, std::int32_t isConstrained,
                           std::int32_t iteration);

 private:
  template <qxReal T, typename F, typename G>
  static VectorFunctionWithUser<T> CallValue(const qxCallables<F, G>&) {
    return qxCallables<F, G>::template CallFirst<T, const CQXVectorN<T>&>;
  }
  template <qxReal T, typename F, typename G>
  static GradientFunctionWithUser<T> CallGradient(const qxCallables<F, G>&) {
    return qxCallables<F, G>::template CallSecond<void, const CQXVectorN<T>&, CQXVectorN<T>&>;
  }
};
