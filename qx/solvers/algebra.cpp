#include <qx/foundation/conversion.h>
#include <qx/kernels/closed_form_kernels.h>
#include <qx/solvers/algebra.h>
#include <qx/solvers/internal/linear_conjugate_gradient.h>
#include <qx/solvers/internal/root_finders.h>

#include <cmath>

namespace {

/// The roots with complex outputs, of a pair the positive imaginary part first.
template <qxReal T>
void Write(const qxKernels::QuadraticRoots<T>& roots, CQXComplex<T>& z1, CQXComplex<T>& z2) {
  if (roots.code == 0) {
    z1.Set(roots.middle, roots.distance);
    z2.Set(roots.middle, -roots.distance);
  } else {
    z1.Set(roots.middle - roots.distance, 0);
    z2.Set(roots.middle + roots.distance, 0);
  }
}

template <qxReal T>
void Write(const qxKernels::QuadraticRoots<T>& roots, T& x1, T& x2) {
  roots.Write(x1, x2);
}

template <qxReal T>
void WriteBoth(T value, T& x1, T& x2) {
  x1 = x2 = value;
}

template <qxReal T>
void WriteBoth(T value, CQXComplex<T>& z1, CQXComplex<T>& z2) {
  z1.Set(value, 0);
  z2.Set(value, 0);
}

/// The general quadratic, for real and for complex outputs.
template <typename T, typename Root>
std::int32_t SolveGeneralQuadratic(T a, T b, T c, Root& root1, Root& root2, T tol) {
  if (std::abs(a) < tol) {
    const bool isConstant = std::abs(b) < tol;
    WriteBoth(isConstant ? T(0) : -c / b, root1, root2);
    if (!isConstant) return 1;
    return std::abs(c) < tol ? -2 : -1;
  }
  const auto roots = qxKernels::SolveReducedQuadratic(b / a, c / a, QX_PREDICATE_TOLERANCE<T>);
  Write(roots, root1, root2);
  return roots.code;
}

std::int32_t RoundedToInteger(double x) { return qxToInt32(x >= 0 ? x + 0.5 : x - 0.5); }

std::int32_t RoundedCombinations(double n, double k) {
  if (k > n - 0.5 || k < 0.5) return 1;
  if (k < 1.5 || k > n - 1.5) return RoundedToInteger(n);
  if (k < 2.5 || k > n - 2.5) return RoundedToInteger(n * (n - 1) * 0.5);
  double result = n;
  for (double j = 2; j < k + 0.5 && std::isfinite(result); ++j) result = result * (n + 1 - j) / j;
  return RoundedToInteger(result);
}

std::int32_t RoundedFactorial(double n) {
  double result = 1;
  for (double j = 2; j < n + 0.5 && std::isfinite(result); ++j) result *= j;
  return RoundedToInteger(result);
}

}  // namespace

template <qxReal T>
std::int32_t CQXAlgebraFunctions<T>::Solve2x2System(T a, T b, T c, T d, T r0, T r1, T& x, T& y,
                                                    std::int32_t& conditionFlag, T tol) noexcept {
  return qxKernels::Solve2x2System(a, b, c, d, r0, r1, x, y, conditionFlag, tol);
}

template <qxReal T>
std::int32_t CQXAlgebraFunctions<T>::Solve3x3System(T a, T b, T c, T d, T e, T f, T g, T h, T i, T r0, T r1, T r2, T& x,
                                                    T& y, T& z, std::int32_t& conditionFlag, T tol) noexcept {
  return qxKernels::Solve3x3System(a, b, c, d, e, f, g, h, i, r0, r1, r2, x, y, z, conditionFlag, tol);
}

template <qxReal T>
std::int32_t CQXAlgebraFunctions<T>::SolveQuadratic(T a, T b, T c, T& x1, T& x2, T tol) noexcept {
  return SolveGeneralQuadratic(a, b, c, x1, x2, tol);
}

template <qxReal T>
std::int32_t CQXAlgebraFunctions<T>::SolveQuadratic(T a, T b, T c, CQXComplex<T>& z1, CQXComplex<T>& z2,
                                                    T tol) noexcept {
  return SolveGeneralQuadratic(a, b, c, z1, z2, tol);
}

template <qxReal T>
std::int32_t CQXAlgebraFunctions<T>::SolveReducedQuadratic(T p, T q, T& x1, T& x2, T tol) noexcept {
  const auto roots = qxKernels::SolveReducedQuadratic(p, q, tol);
  roots.Write(x1, x2);
  return roots.code;
}

template <qxReal T>
std::int32_t CQXAlgebraFunctions<T>::SolveReducedQuadratic(T p, T q, CQXComplex<T>& z1, CQXComplex<T>& z2,
                                                           T tol) noexcept {
  const auto roots = qxKernels::SolveReducedQuadratic(p, q, tol);
  Write(roots, z1, z2);
  return roots.code;
}

template <qxReal T>
std::int32_t CQXAlgebraFunctions<T>::SolveReducedCubic(T a, T b, T c, T& x1, T& x2, T& x3, T tol) noexcept {
  return qxKernels::SolveReducedCubic(a, b, c, x1, x2, x3, tol);
}

template <qxReal T>
std::int32_t CQXAlgebraFunctions<T>::SolveReducedCubic(T a, T b, T c, CQXComplex<T>& z1, CQXComplex<T>& z2,
                                                       CQXComplex<T>& z3, T tol) noexcept {
  T x1, x2, x3;
  const std::int32_t code = qxKernels::SolveReducedCubic(a, b, c, x1, x2, x3, tol);
  z1.Set(x1, 0);
  if (code == 1) {
    z2.Set(x2, x3);
    z3.Set(x2, -x3);
  } else {
    z2.Set(x2, 0);
    z3.Set(x3, 0);
  }
  return code;
}

template <qxReal T>
std::int32_t CQXAlgebraFunctions<T>::Newton(T lo, T hi, T tol, T& root, Function f, Function df) {
  return qxSolvers::FindRootByNewton(lo, hi, tol, root, f, df);
}

template <qxReal T>
std::int32_t CQXAlgebraFunctions<T>::Newton(T lo, T hi, T tol, T& root, void* user, FunctionWithUser f,
                                            FunctionWithUser df) {
  using F = qxSolvers::UserFunction<T>;
  return qxSolvers::FindRootByNewton(lo, hi, tol, root, F{f, user}, F{df, user});
}

template <qxReal T>
T CQXAlgebraFunctions<T>::SafeNewton(T lo, T hi, T tol, Function f, Function df) {
  return qxSolvers::FindRootBySafeNewton(lo, hi, tol, f, df);
}

template <qxReal T>
T CQXAlgebraFunctions<T>::SafeNewton(T lo, T hi, T tol, void* user, FunctionWithUser f, FunctionWithUser df) {
  using F = qxSolvers::UserFunction<T>;
  return qxSolvers::FindRootBySafeNewton(lo, hi, tol, F{f, user}, F{df, user});
}

template <qxReal T>
T CQXAlgebraFunctions<T>::Brent(T lo, T hi, T tol, Function f) {
  return qxSolvers::FindRootByBrent(lo, hi, tol, f);
}

template <qxReal T>
T CQXAlgebraFunctions<T>::Brent(T lo, T hi, T tol, void* user, FunctionWithUser f) {
  return qxSolvers::FindRootByBrent(lo, hi, tol, qxSolvers::UserFunction<T>{f, user});
}

template <qxReal T>
T CQXAlgebraFunctions<T>::Secant(T lo, T hi, T tol, Function f) {
  return qxSolvers::FindRootBySecant(lo, hi, tol, f);
}

template <qxReal T>
T CQXAlgebraFunctions<T>::Secant(T lo, T hi, T tol, void* user, FunctionWithUser f) {
  return qxSolvers::FindRootBySecant(lo, hi, tol, qxSolvers::UserFunction<T>{f, user});
}

template <qxReal T>
T CQXAlgebraFunctions<T>::Bisection(T lo, T hi, T tol, Function f) {
  return qxSolvers::FindRootByBisection(lo, hi, tol, f);
}

template <qxReal T>
T CQXAlgebraFunctions<T>::Bisection(T lo, T hi, T tol, void* user, FunctionWithUser f) {
  return qxSolvers::FindRootByBisection(lo, hi, tol, qxSolvers::UserFunction<T>{f, user});
}

template <qxReal T>
void CQXAlgebraFunctions<T>::NarrowRootBrackets(const T& lo, const T& hi, std::int32_t n, std::int32_t& found,
                                                T* lowerEnds, T* upperEnds, Function f) {
  qxSolvers::NarrowRootBrackets(lo, hi, n, found, lowerEnds, upperEnds, f);
}

template <qxReal T>
void CQXAlgebraFunctions<T>::NarrowRootBrackets(const T& lo, const T& hi, std::int32_t n, std::int32_t& found,
                                                T* lowerEnds, T* upperEnds, void* user, FunctionWithUser f) {
  qxSolvers::NarrowRootBrackets(lo, hi, n, found, lowerEnds, upperEnds, qxSolvers::UserFunction<T>{f, user});
}

template <qxReal T>
std::int32_t CQXAlgebraFunctions<T>::SearchRootBrackets(T& x1, T& x2, Function f) {
  return qxSolvers::SearchRootBrackets(x1, x2, f);
}

template <qxReal T>
std::int32_t CQXAlgebraFunctions<T>::SearchRootBrackets(T& x1, T& x2, void* user, FunctionWithUser f) {
  return qxSolvers::SearchRootBrackets(x1, x2, qxSolvers::UserFunction<T>{f, user});
}

template <qxReal T>
std::int32_t CQXAlgebraFunctions<T>::SolveByCongugateGradient(const CQXMatrixN<T>& A, const CQXVectorN<T>& b,
                                                              CQXVectorN<T>& x, T tol, T diagonalShift) {
  return qxSolvers::SolveByConjugateGradient(A, b, x, tol, diagonalShift);
}

template class CQXAlgebraFunctions<float>;
template class CQXAlgebraFunctions<double>;

std::int32_t CQXAlgebra::Combinations(std::uint32_t n, std::uint32_t k) noexcept { return RoundedCombinations(n, k); }

std::int32_t CQXAlgebra::Combinations(std::int32_t n, std::int32_t k) noexcept { return RoundedCombinations(n, k); }

std::int32_t CQXAlgebra::Permutations(std::uint32_t n) noexcept { return RoundedFactorial(n); }

std::int32_t CQXAlgebra::Permutations(std::int32_t n) noexcept { return RoundedFactorial(n); }
