#include <qx/foundation/block.h>
#include <qx/foundation/internal/instantiate.h>
#include <qx/foundation/tolerance.h>
#include <qx/kernels/array_kernels.h>
#include <qx/kernels/rotation_kernels.h>
#include <qx/solvers/internal/lbfgs.h>
#include <qx/solvers/internal/line_search.h>
#include <qx/solvers/internal/pair_ring.h>

#include <algorithm>
#include <cmath>
#include <cstddef>

namespace qxSolvers {

namespace {

template <qxReal T>
constexpr LineSearchRules<T> rules = {.decrease = T(1e-4),
                                      .curvature = T(0.9),
                                      .narrow = QX_TOLERANCE<T>,
                                      .stepMin = T(1e-20),
                                      .extrapolationHigh = 4,
                                      .extrapolationLow = 0,
                                      .shrinkage = T(0.6666666666666666),
                                      .isGuarded = true};
template <qxReal T>
constexpr T stepMax = T(1e20);

/// One minimisation, with all that it works on.
template <qxReal T>
class Minimizer {
 public:
  Minimizer(const LimitedMemoryTask<T>& task, const Objective<T>& objective, CQXVectorN<T>& x)
      : m_task(task),
        m_objective(objective),
        m_x(x),
        m_count(static_cast<std::size_t>(task.n)),
        m_gradient(task.n),
        m_pairs(m_count, static_cast<std::size_t>(task.m)),
        m_numbers(qxMakeBlock<T>(2 * static_cast<std::size_t>(task.m))),
        m_work(qxMakeBlock<T>(m_count)),
        m_gradientBefore(qxMakeBlock<T>(m_count)),
        m_start(qxMakeBlock<T>(m_count)) {}

  [[nodiscard]] bool HasMemory() const {
    return m_gradient.Data() != nullptr && m_pairs.HasMemory() && m_numbers != nullptr && m_work != nullptr &&
           m_gradientBefore != nullptr && m_start != nullptr;
  }

  /// Minimises from x, where the function has the value @p f.
  T Minimize(T f, QX_OPTIMIZATION_INFO& info) {
    m_f = f;
    m_objective.CalculateGradient(m_x, m_gradient);
    T fBefore = m_f;
    const T firstStep = 1 / std::sqrt(qxKernels::SumOfSquares(m_count, m_gradient.Data()));
    for (std::int32_t iteration = 1;; ++iteration) {
      qxKernels::Negation(m_count, m_gradient.Data(), m_work.get());
      if (iteration > 1) MultiplyByInverseHessian(m_work.get());
      T* const direction = m_pairs.NextStep();  // it stands where the step will
      qxKernels::Copy(m_count, m_work.get(), direction);
      qxKernels::Copy(m_count, m_gradient.Data(), m_gradientBefore.get());
      T step = iteration == 1 ? firstStep : T(1);
      const bool hasMoved = SearchLine(direction, step);
      info = FindInfo(hasMoved, iteration, fBefore);
      if (info != QX_OPT_IN_PROGRESS) return m_f;
      fBefore = m_f;
      qxKernels::Multiply(m_count, step, direction);
      qxKernels::Difference(m_count, m_gradient.Data(), m_gradientBefore.get(), m_pairs.NextDifference());
      m_pairs.Advance();
    }
  }

 private:
  /// Multiplies @p q by the inverse of the approximate Hessian: the two-loop recursion, with the scale y s / y y of the
  /// latest pair in the middle. J. Nocedal, Updating quasi-Newton matrices with limited storage, Math. Comp. 35 (1980).
  void MultiplyByInverseHessian(T* q) {
    T* const rho = m_numbers.get();
    T* const alpha = rho + m_task.m;
    const std::size_t latest = m_pairs.Count() - 1;
    const T ys = qxKernels::Dot(m_count, m_pairs.Difference(latest), m_pairs.Step(latest));
    const T scale = ys / qxKernels::SumOfSquares(m_count, m_pairs.Difference(latest));
    rho[m_pairs.Slot(latest)] = 1 / ys;
    for (std::size_t pair = m_pairs.Count(); pair-- > 0;) {
      alpha[pair] = rho[m_pairs.Slot(pair)] * qxKernels::Dot(m_count, m_pairs.Step(pair), q);
      qxKernels::AddMultiple(m_count, -alpha[pair], m_pairs.Difference(pair), q);
    }
    qxKernels::Multiply(m_count, scale, q);
    for (std::size_t pair = 0; pair < m_pairs.Count(); ++pair) {
      const T beta = rho[m_pairs.Slot(pair)] * qxKernels::Dot(m_count, m_pairs.Difference(pair), q);
      qxKernels::AddMultiple(m_count, alpha[pair] - beta, m_pairs.Step(pair), q);
    }
  }

  /// Searches the line from x along a direction. Function and gradient are evaluated at x first, then at each trial; in
  /// the end x, value and gradient are those of the last trial, and x before stands in the start.
  /// @param[in,out] step first trial, in the end the last one
  /// @return false, with x as it came, when the step is not positive or the direction does not go downhill
  [[nodiscard]] bool SearchLine(const T* direction, T& step) {
    if (step <= 0) return false;
    m_f = m_objective.Value(m_x);
    m_objective.CalculateGradient(m_x, m_gradient);
    const T slope = qxKernels::Dot(m_count, m_gradient.Data(), direction);
    if (!(slope < 0)) return false;
    qxKernels::Copy(m_count, m_x.Data(), m_start.get());
    LineSearch<T> search(rules<T>, m_f, slope, step, stepMax<T>);
    for (LineSearchResult result = QX_SEARCH_GOES_ON; result == QX_SEARCH_GOES_ON;) {
      step = search.Step();
      qxKernels::Copy(m_count, m_start.get(), m_x.Data());
      qxKernels::AddMultiple(m_count, step, direction, m_x.Data());
      m_f = m_objective.Value(m_x);
      m_objective.CalculateGradient(m_x, m_gradient);
      result = search.Advance(m_f, qxKernels::Dot(m_count, m_gradient.Data(), direction));
    }
    return true;
  }

  /// The tests after an iteration; the start becomes the change of x.
  [[nodiscard]] QX_OPTIMIZATION_INFO FindInfo(bool hasMoved, std::int32_t iteration, T fBefore) {
    if (m_gradient.Length() <= m_task.gTol) return QX_OPT_GRADIENT_CONVERGED;
    if (hasMoved) {
      const T bound = m_task.fTol * std::max(std::max(std::abs(fBefore), std::abs(m_f)), T(1));
      if (fBefore - m_f <= bound) return QX_OPT_FUNCTION_CONVERGED;
      qxKernels::Difference(m_count, m_start.get(), m_x.Data(), m_start.get());
      const T moved = qxGuardedSqrt(qxKernels::SumOfSquares(m_count, m_start.get()), QX_TOLERANCE_SQUARED<T>);
      if (moved <= m_task.xTol) return QX_OPT_STEP_CONVERGED;
    }
    if (iteration > m_task.maxIterations) return QX_OPT_ITERATION_LIMIT;
    return hasMoved ? QX_OPT_IN_PROGRESS : QX_OPT_INVALID;
  }

  const LimitedMemoryTask<T>& m_task;
  const Objective<T>& m_objective;
  CQXVectorN<T>& m_x;
  std::size_t m_count;
  CQXVectorN<T> m_gradient;
  PairRing<T> m_pairs;
  qxBlock<T> m_numbers;  // 1 / y s by slot, and the factors of the first loop
  qxBlock<T> m_work;
  qxBlock<T> m_gradientBefore;
  qxBlock<T> m_start;
  T m_f = 0;
};

}  // namespace

template <qxReal T>
T MinimizeByLBFGS(const LimitedMemoryTask<T>& task, CQXVectorN<T>& x, const Objective<T>& objective,
                  QX_OPTIMIZATION_INFO& info) {
  info = QX_OPT_INVALID;
  if (!task.IsValid(x)) {
    const T f = objective.Value(x);
    CQXVectorN<T> gradient(x.Dim());
    if (gradient.Data() != nullptr || x.Dim() < 1) objective.CalculateGradient(x, gradient);
    return f;
  }
  Minimizer<T> minimizer(task, objective, x);
  const T f = objective.Value(x);
  return minimizer.HasMemory() ? minimizer.Minimize(f, info) : f;
}

#define QX_INSTANTIATE(T) \
  template T MinimizeByLBFGS(const LimitedMemoryTask<T>&, CQXVectorN<T>&, const Objective<T>&, QX_OPTIMIZATION_INFO&);
QX_FOR_FLOAT_AND_DOUBLE(QX_INSTANTIATE)
#undef QX_INSTANTIATE

}  // namespace qxSolvers
