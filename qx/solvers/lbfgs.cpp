#include <qx/foundation/block.h>
#include <qx/kernels/array_kernels.h>
#include <qx/kernels/rotation_kernels.h>
#include <qx/solvers/internal/lbfgs.h>

#include <algorithm>
#include <cmath>
#include <cstddef>

namespace qxSolvers {

namespace {

/// The last pairs of a step and the difference of the gradients over it, in a ring.
template <qxReal T>
class PairRing {
 public:
  PairRing(std::size_t n, std::size_t m)
      : m_n(n),
        m_m(m),
        m_numbers(qxMakeBlock<T>(2 * m)),
        m_steps(qxMakeBlock<T>(m * n)),
        m_differences(qxMakeBlock<T>(m * n)) {}

  [[nodiscard]] bool HasMemory() const {
    return m_numbers != nullptr && m_steps != nullptr && m_differences != nullptr;
  }

  /// Where the next pair will stand. The step slot holds the search direction until then.
  [[nodiscard]] T* NextStep() { return Step(m_next); }
  [[nodiscard]] T* NextDifference() { return Difference(m_next); }

  /// Takes in the pair that was written to the next slots.
  void Advance() {
    m_latest = m_next;
    m_next = m_next + 1 < m_m ? m_next + 1 : 0;
    m_count = std::min(m_count + 1, m_m);
  }

  /// Multiplies @p q by the inverse of the approximate Hessian: the two-loop recursion, with the scale y s / y y of the
  /// latest pair in the middle. J. Nocedal, Updating quasi-Newton matrices with limited storage, Math. Comp. 35 (1980).
  void MultiplyByInverseHessian(T* q) {
    T* rho = m_numbers.get();
    T* alpha = rho + m_m;
    const T ys = qxKernels::Dot(m_n, Difference(m_latest), Step(m_latest));
    const T scale = ys / qxKernels::SumOfSquares(m_n, Difference(m_latest));
    rho[m_latest] = 1 / ys;
    std::size_t slot = m_latest;
    for (std::size_t k = 0; k < m_count; ++k) {
      alpha[slot] = rho[slot] * qxKernels::Dot(m_n, Step(slot), q);
      qxKernels::AddMultiple(m_n, -alpha[slot], Difference(slot), q);
      slot = slot > 0 ? slot - 1 : m_m - 1;
    }
    qxKernels::Multiply(m_n, q, scale);
    for (std::size_t k = 0; k < m_count; ++k) {
      slot = slot + 1 < m_m ? slot + 1 : 0;
      const T beta = rho[slot] * qxKernels::Dot(m_n, Difference(slot), q);
      qxKernels::AddMultiple(m_n, alpha[slot] - beta, Step(slot), q);
    }
  }

 private:
  [[nodiscard]] T* Step(std::size_t slot) { return m_steps.get() + slot * m_n; }
  [[nodiscard]] T* Difference(std::size_t slot) { return m_differences.get() + slot * m_n; }

  std::size_t m_n;
  std::size_t m_m;
  std::size_t m_next = 0;
  std::size_t m_latest = 0;
  std::size_t m_count = 0;
  qxBlock<T> m_numbers;
  qxBlock<T> m_steps;
  qxBlock<T> m_differences;
};

}  // namespace

template <qxReal T>
T MinimizeByLBFGS(std::int32_t n, std::int32_t m, CQXVectorN<T>& x, T xTol, T fTol, T gTol, std::int32_t maxIterations,
                  const Objective<T>& objective, QX_OPTIMIZATION_INFO& info) {
  if (!AreValidArguments(n, m, x, xTol, fTol, gTol, maxIterations)) {
    const T f = objective.Value(x);
    CQXVectorN<T> gradient(x.Dim());
    if (gradient.Data() != nullptr || x.Dim() < 1) objective.CalculateGradient(x, gradient);
    info = QX_OPT_INVALID;
    return f;
  }
  const std::size_t count = static_cast<std::size_t>(n);
  CQXVectorN<T> gradient(n);
  PairRing<T> pairs(count, static_cast<std::size_t>(m));
  const qxBlock<T> work = qxMakeBlock<T>(count);
  const qxBlock<T> gradientBefore = qxMakeBlock<T>(count);
  const qxBlock<T> start = qxMakeBlock<T>(count);
  T f = objective.Value(x);
  if (gradient.Data() == nullptr || !pairs.HasMemory() || work == nullptr || gradientBefore == nullptr ||
      start == nullptr) {
    info = QX_OPT_INVALID;
    return f;
  }
  objective.CalculateGradient(x, gradient);
  T fBefore = f;
  const T firstStep = 1 / std::sqrt(qxKernels::SumOfSquares(count, gradient.Data()));
  for (std::int32_t iteration = 1;; ++iteration) {
    qxKernels::Negation(count, gradient.Data(), work.get());
    if (iteration > 1) pairs.MultiplyByInverseHessian(work.get());
    T* direction = pairs.NextStep();
    qxKernels::Copy(count, work.get(), direction);
    qxKernels::Copy(count, gradient.Data(), gradientBefore.get());
    T step = iteration == 1 ? firstStep : T(1);
    const bool hasMoved = SearchLine(n, direction, objective, start.get(), x, f, gradient, step) > 0;
    info = hasMoved ? QX_OPT_IN_PROGRESS : QX_OPT_INVALID;
    if (iteration > maxIterations) info = QX_OPT_ITERATION_LIMIT;
    if (gradient.Length() <= gTol) {
      info = QX_OPT_GRADIENT_CONVERGED;
    } else if (hasMoved) {
      if (fBefore - f <= fTol * std::max(std::max(std::abs(fBefore), std::abs(f)), T(1))) {
        info = QX_OPT_FUNCTION_CONVERGED;
      } else {
        qxKernels::Difference(count, start.get(), x.Data(), start.get());
        if (qxGuardedSqrt(qxKernels::SumOfSquares(count, start.get()), QX_TOLERANCE_SQUARED<T>) <= xTol) {
          info = QX_OPT_STEP_CONVERGED;
        }
      }
    }
    if (info != QX_OPT_IN_PROGRESS) return f;
    fBefore = f;
    qxKernels::Multiply(count, direction, step);
    qxKernels::Difference(count, gradient.Data(), gradientBefore.get(), pairs.NextDifference());
    pairs.Advance();
  }
}

template float MinimizeByLBFGS(std::int32_t, std::int32_t, CQXVectorN<float>&, float, float, float, std::int32_t,
                               const Objective<float>&, QX_OPTIMIZATION_INFO&);
template double MinimizeByLBFGS(std::int32_t, std::int32_t, CQXVectorN<double>&, double, double, double, std::int32_t,
                                const Objective<double>&, QX_OPTIMIZATION_INFO&);

}  // namespace qxSolvers

template <qxReal T>
T CQXOptimization::QuasiNewtonLBFGS(std::int32_t n, std::int32_t m, CQXVectorN<T>& x, qxNonDeduced<T> xTol,
                                    qxNonDeduced<T> fTol, qxNonDeduced<T> gTol, std::int32_t maxIterations,
                                    VectorFunction<T> f, GradientFunction<T> g, QX_OPTIMIZATION_INFO& info) {
  return qxSolvers::MinimizeByLBFGS<T>(n, m, x, xTol, fTol, gTol, maxIterations, {f, g}, info);
}

template <qxReal T>
T CQXOptimization::QuasiNewtonLBFGS(std::int32_t n, std::int32_t m, CQXVectorN<T>& x, qxNonDeduced<T> xTol,
                                    qxNonDeduced<T> fTol, qxNonDeduced<T> gTol, std::int32_t maxIterations, void* user,
                                    VectorFunctionWithUser<T> f, GradientFunctionWithUser<T> g,
                                    QX_OPTIMIZATION_INFO& info) {
  return qxSolvers::MinimizeByLBFGS<T>(n, m, x, xTol, fTol, gTol, maxIterations, {user, f, g}, info);
}

#define INSTANTIATE(T)                                                                                            \
  template T CQXOptimization::QuasiNewtonLBFGS(std::int32_t, std::int32_t, CQXVectorN<T>&, T, T, T, std::int32_t, \
                                               VectorFunction<T>, GradientFunction<T>, QX_OPTIMIZATION_INFO&);    \
  template T CQXOptimization::QuasiNewtonLBFGS(std::int32_t, std::int32_t, CQXVectorN<T>&, T, T, T, std::int32_t, \
                                               void*, VectorFunctionWithUser<T>, GradientFunctionWithUser<T>,     \
                                               QX_OPTIMIZATION_INFO&)
INSTANTIATE(float);
INSTANTIATE(double);
#undef INSTANTIATE
