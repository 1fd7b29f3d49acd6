#include <qx/foundation/callable.h>
#include <qx/foundation/internal/instantiate.h>
#include <qx/solvers/internal/bounded_lbfgs.h>
#include <qx/solvers/internal/conjugate_directions.h>
#include <qx/solvers/internal/descent.h>
#include <qx/solvers/internal/free_variables.h>
#include <qx/solvers/internal/lbfgs.h>
#include <qx/solvers/internal/levenberg_marquardt.h>
#include <qx/solvers/internal/linear_programming.h>
#include <qx/solvers/internal/scalar_minimization.h>
#include <qx/solvers/internal/simplex_descent.h>
#include <qx/solvers/internal/user_function.h>
#include <qx/solvers/optimization.h>

using qxSolvers::UserFunction;

// ---- One variable

template <qxReal T>
void CQXOptimization::FindInitTriple(T& a, T& b, T& c, T& fa, T& fb, T& fc, ScalarFunction<T> f) {
  qxSolvers::FindTriple(a, b, c, fa, fb, fc, f);
}

template <qxReal T>
void CQXOptimization::FindInitTriple(T& a, T& b, T& c, T& fa, T& fb, T& fc, void* user, ScalarFunctionWithUser<T> f) {
  qxSolvers::FindTriple(a, b, c, fa, fb, fc, UserFunction<T>{f, user});
}

template <qxReal T>
T CQXOptimization::GoldenSection(qxNonDeduced<T> a, qxNonDeduced<T> b, qxNonDeduced<T> c, qxNonDeduced<T> tol, T& xMin,
                                 ScalarFunction<T> f) {
  return qxSolvers::MinimizeByGoldenSections<T>(a, b, c, tol, xMin, f);
}

template <qxReal T>
T CQXOptimization::GoldenSection(qxNonDeduced<T> a, qxNonDeduced<T> b, qxNonDeduced<T> c, qxNonDeduced<T> tol, T& xMin,
                                 void* user, ScalarFunctionWithUser<T> f) {
  return qxSolvers::MinimizeByGoldenSections<T>(a, b, c, tol, xMin, UserFunction<T>{f, user});
}

template <qxReal T>
T CQXOptimization::ParabolicDescent(qxNonDeduced<T> a, qxNonDeduced<T> b, qxNonDeduced<T> c, qxNonDeduced<T> tol,
                                    T& xMin, ScalarFunction<T> f) {
  return qxSolvers::MinimizeByParabolas<T>(a, b, c, tol, xMin, f);
}

template <qxReal T>
T CQXOptimization::ParabolicDescent(qxNonDeduced<T> a, qxNonDeduced<T> b, qxNonDeduced<T> c, qxNonDeduced<T> tol,
                                    T& xMin, void* user, ScalarFunctionWithUser<T> f) {
  return qxSolvers::MinimizeByParabolas<T>(a, b, c, tol, xMin, UserFunction<T>{f, user});
}

template <qxReal T>
T CQXOptimization::DerivativeEstimationDescent(qxNonDeduced<T> a, qxNonDeduced<T> b, qxNonDeduced<T> c,
                                               qxNonDeduced<T> tol, T& xMin, ScalarFunction<T> f,
                                               ScalarFunction<T> df) {
  return qxSolvers::MinimizeByDerivatives<T>(a, b, c, tol, xMin, f, df);
}

template <qxReal T>
T CQXOptimization::DerivativeEstimationDescent(qxNonDeduced<T> a, qxNonDeduced<T> b, qxNonDeduced<T> c,
                                               qxNonDeduced<T> tol, T& xMin, void* user, ScalarFunctionWithUser<T> f,
                                               ScalarFunctionWithUser<T> df) {
  return qxSolvers::MinimizeByDerivatives<T>(a, b, c, tol, xMin, UserFunction<T>{f, user}, UserFunction<T>{df, user});
}

// ---- Limited memory

template <qxReal T>
T CQXOptimization::QuasiNewtonLBFGS(std::int32_t n, std::int32_t m, CQXVectorN<T>& x, qxNonDeduced<T> xTol,
                                    qxNonDeduced<T> fTol, qxNonDeduced<T> gTol, std::int32_t maxIterations, void* user,
                                    VectorFunctionWithUser<T> f, GradientFunctionWithUser<T> g,
                                    QX_OPTIMIZATION_INFO& info) {
  return qxSolvers::MinimizeByLBFGS<T>({n, m, xTol, fTol, gTol, maxIterations}, x, {user, f, g}, info);
}

template <qxReal T>
T CQXOptimization::QuasiNewtonConstraintLBFGSB(std::int32_t n, std::int32_t m, CQXVectorN<T>& x, qxNonDeduced<T> xTol,
                                               qxNonDeduced<T> fTol, qxNonDeduced<T> gTol, std::int32_t maxIterations,
                                               const QX_OPTIMIZATION_CONSTRAINTS* constraints,
                                               const qxNonDeduced<T>* lower, const qxNonDeduced<T>* upper, void* user,
                                               VectorFunctionWithUser<T> f, GradientFunctionWithUser<T> g,
                                               QX_OPTIMIZATION_INFO& info) {
  return qxSolvers::MinimizeByLBFGSB<T>({n, m, xTol, fTol, gTol, maxIterations}, {constraints, lower, upper}, x,
                                        {user, f, g}, info);
}

void CQXOptimization::LBFGSB_Freev(std::int32_t n, std::int32_t& freeCount, std::int32_t* freeIndex,
                                   std::int32_t& enterCount, std::int32_t& leaveCount, std::int32_t* enteringIndex,
                                   const std::int32_t* boundState, std::int32_t memoryCount, std::int32_t& update,
                                   std::int32_t isConstrained, std::int32_t iteration) {
  qxSolvers::FreeVariables variables{freeIndex, enteringIndex, freeCount};
  const bool hasChanged = variables.Update(n, boundState, iteration > 0 && isConstrained != 0);
  update = memoryCount > 0 && (update != 0 || hasChanged) ? 1 : 0;
  freeCount = variables.freeCount;
  enterCount = variables.enterCount;
  leaveCount = variables.leaveCount;
}

// ---- Descent

template <qxReal T>
T CQXOptimization::FastestDescend(std::int32_t n, CQXVectorN<T>& x, qxNonDeduced<T> xTol, qxNonDeduced<T> fTol,
                                  qxNonDeduced<T> gTol, std::int32_t maxIterations, void* user,
                                  VectorFunctionWithUser<T> f, GradientFunctionWithUser<T> g,
                                  QX_OPTIMIZATION_INFO& info) {
  return qxSolvers::MinimizeBySteepestDescent<T>({n, xTol, fTol, gTol, maxIterations}, x, {user, f, g}, info);
}

template <qxReal T>
T CQXOptimization::ConjugateGradient(std::int32_t n, CQXVectorN<T>& x, qxNonDeduced<T> xTol, qxNonDeduced<T> fTol,
                                     qxNonDeduced<T> gTol, std::int32_t maxIterations, void* user,
                                     VectorFunctionWithUser<T> f, GradientFunctionWithUser<T> g,
                                     QX_OPTIMIZATION_INFO& info) {
  return qxSolvers::MinimizeByConjugateGradient<T>({n, xTol, fTol, gTol, maxIterations}, x, {user, f, g}, info);
}

template <qxReal T>
T CQXOptimization::QuasiNewtonBFGS(std::int32_t n, CQXVectorN<T>& x, qxNonDeduced<T> xTol, qxNonDeduced<T> fTol,
                                   qxNonDeduced<T> gTol, std::int32_t maxIterations, void* user,
                                   VectorFunctionWithUser<T> f, GradientFunctionWithUser<T> g,
                                   QX_OPTIMIZATION_INFO& info) {
  return qxSolvers::MinimizeByBFGS<T>({n, xTol, fTol, gTol, maxIterations}, x, {user, f, g}, info);
}

// ---- Without derivatives

template <qxReal T>
T CQXOptimization::SimplexDescent(std::int32_t n, CQXVectorN<T>& x, qxNonDeduced<T> step, qxNonDeduced<T> xTol,
                                  qxNonDeduced<T> fTol, std::int32_t limit, void* user, VectorFunctionWithUser<T> f,
                                  QX_OPTIMIZATION_INFO& info) {
  return qxSolvers::MinimizeBySimplex<T>({n, step, xTol, fTol, limit}, x, {user, f}, info);
}

template <qxReal T>
T CQXOptimization::PowellConjugateDirections(std::int32_t n, CQXVectorN<T>& x, qxNonDeduced<T> step,
                                             qxNonDeduced<T> xTol, qxNonDeduced<T> fTol, std::int32_t limit, void* user,
                                             VectorFunctionWithUser<T> f, QX_OPTIMIZATION_INFO& info) {
  return qxSolvers::MinimizeByConjugateDirections<T>({n, step, xTol, fTol, limit}, x, {user, f}, info);
}

// ---- Linear programmes, least squares

template <qxReal T>
T CQXOptimization::LinerProgrammingSimplex(const CQXMatrixMN<T>& A, const CQXVectorN<T>& b, const CQXVectorN<T>& c,
                                           const QX_LINEAR_RELATION* relations, CQXVectorN<T>& x, qxNonDeduced<T> tol,
                                           std::int32_t maxIterations, QX_OPTIMIZATION_INFO& info) {
  return qxSolvers::MinimizeLinearProgramme(A, b, c, relations, x, tol, maxIterations, info);
}

template <qxReal T>
T CQXOptimization::LevenbergMarquardt(std::int32_t n, std::int32_t m, CQXVectorN<T>& x,
                                      const CQXLeastSquaresOptions<qxNonDeduced<T>>& options, void* user,
                                      ResidualFunctionWithUser<T> residuals, JacobianFunctionWithUser<T> jacobian,
                                      QX_OPTIMIZATION_INFO& info) {
  return qxSolvers::MinimizeSquares<T>(n, m, x, options, {user, residuals, jacobian}, info);
}

#define QX_INSTANTIATE(T)                                                                                              \
  template T CQXOptimization::FastestDescend(std::int32_t, CQXVectorN<T>&, T, T, T, std::int32_t, void*,               \
                                             VectorFunctionWithUser<T>, GradientFunctionWithUser<T>,                   \
                                             QX_OPTIMIZATION_INFO&);                                                   \
  template T CQXOptimization::ConjugateGradient(std::int32_t, CQXVectorN<T>&, T, T, T, std::int32_t, void*,            \
                                                VectorFunctionWithUser<T>, GradientFunctionWithUser<T>,                \
                                                QX_OPTIMIZATION_INFO&);                                                \
  template T CQXOptimization::QuasiNewtonBFGS(std::int32_t, CQXVectorN<T>&, T, T, T, std::int32_t, void*,              \
                                              VectorFunctionWithUser<T>, GradientFunctionWithUser<T>,                  \
                                              QX_OPTIMIZATION_INFO&);                                                  \
  template T CQXOptimization::SimplexDescent(std::int32_t, CQXVectorN<T>&, T, T, T, std::int32_t, void*,               \
                                             VectorFunctionWithUser<T>, QX_OPTIMIZATION_INFO&);                        \
  template T CQXOptimization::PowellConjugateDirections(std::int32_t, CQXVectorN<T>&, T, T, T, std::int32_t, void*,    \
                                                        VectorFunctionWithUser<T>, QX_OPTIMIZATION_INFO&);             \
  template T CQXOptimization::LinerProgrammingSimplex(const CQXMatrixMN<T>&, const CQXVectorN<T>&,                     \
                                                      const CQXVectorN<T>&, const QX_LINEAR_RELATION*, CQXVectorN<T>&, \
                                                      T, std::int32_t, QX_OPTIMIZATION_INFO&);                         \
  template T CQXOptimization::LevenbergMarquardt(std::int32_t, std::int32_t, CQXVectorN<T>&,                           \
                                                 const CQXLeastSquaresOptions<T>&, void*, ResidualFunctionWithUser<T>, \
                                                 JacobianFunctionWithUser<T>, QX_OPTIMIZATION_INFO&);                  \
  template void CQXOptimization::FindInitTriple(T&, T&, T&, T&, T&, T&, ScalarFunction<T>);                            \
  template void CQXOptimization::FindInitTriple(T&, T&, T&, T&, T&, T&, void*, ScalarFunctionWithUser<T>);             \
  template T CQXOptimization::GoldenSection(T, T, T, T, T&, ScalarFunction<T>);                                        \
  template T CQXOptimization::GoldenSection(T, T, T, T, T&, void*, ScalarFunctionWithUser<T>);                         \
  template T CQXOptimization::ParabolicDescent(T, T, T, T, T&, ScalarFunction<T>);                                     \
  template T CQXOptimization::ParabolicDescent(T, T, T, T, T&, void*, ScalarFunctionWithUser<T>);                      \
  template T CQXOptimization::DerivativeEstimationDescent(T, T, T, T, T&, ScalarFunction<T>, ScalarFunction<T>);       \
  template T CQXOptimization::DerivativeEstimationDescent(T, T, T, T, T&, void*, ScalarFunctionWithUser<T>,            \
                                                          ScalarFunctionWithUser<T>);                                  \
  template T CQXOptimization::QuasiNewtonLBFGS(std::int32_t, std::int32_t, CQXVectorN<T>&, T, T, T, std::int32_t,      \
                                               void*, VectorFunctionWithUser<T>, GradientFunctionWithUser<T>,          \
                                               QX_OPTIMIZATION_INFO&);                                                 \
  template T CQXOptimization::QuasiNewtonConstraintLBFGSB(                                                             \
      std::int32_t, std::int32_t, CQXVectorN<T>&, T, T, T, std::int32_t, const QX_OPTIMIZATION_CONSTRAINTS*, const T*, \
      const T*, void*, VectorFunctionWithUser<T>, GradientFunctionWithUser<T>, QX_OPTIMIZATION_INFO&);
QX_FOR_FLOAT_AND_DOUBLE(QX_INSTANTIATE)
#undef QX_INSTANTIATE
