#include <qx/foundation/internal/instantiate.h>
#include <qx/foundation/tolerance.h>
#include <qx/kernels/array_kernels.h>
#include <qx/solvers/internal/bounded_lbfgs.h>
#include <qx/solvers/internal/cauchy_point.h>
#include <qx/solvers/internal/line_search.h>
#include <qx/solvers/internal/subspace_minimum.h>

#include <algorithm>
#include <cmath>
#include <cstddef>

namespace qxSolvers {

namespace {

template <qxReal T>
constexpr LineSearchRules<T> rules = {.decrease = T(1e-6),
                                      .curvature = T(0.9),
                                      .narrow = T(0.1),
                                      .stepMin = 0,
                                      .extrapolationHigh = 4,
                                      .extrapolationLow = T(1.1),
                                      .shrinkage = T(0.66),
                                      .isGuarded = false};
/// Largest step that is ever asked for.
template <qxReal T>
constexpr T farthestStep = T(1e10);

/// One minimisation with bounds.
template <qxReal T>
class BoundedMinimizer {
 public:
  BoundedMinimizer(const LimitedMemoryTask<T>& task, const Objective<T>& objective, BoundedState<T>& state)
      : m_task(task), m_objective(objective), m_state(state) {}

  T Minimize(QX_OPTIMIZATION_INFO& info) {
    Evaluate();
    info = m_state.ProjectedGradientNorm() <= m_task.gTol ? QX_OPT_GRADIENT_CONVERGED : QX_OPT_IN_PROGRESS;
    while (info == QX_OPT_IN_PROGRESS) {
      if (!FindCauchyPoint(m_state) || !MinimizeInSubspace(m_state)) {
        m_state.ForgetModel();
        continue;
      }
      const T* x = m_state.x.Data();
      for (std::size_t i = 0; i < m_state.count; ++i) {
        m_state.target[i] = m_state.Keep(i, m_state.target[i]);
        m_state.direction[i] = m_state.target[i] - x[i];
      }
      if (SearchTowardsTarget()) {
        ++m_state.iterations;
        info = FindInfo();
        if (info == QX_OPT_IN_PROGRESS) UpdateModel();
      } else if (m_state.memory.Count() == 0) {
        info = QX_OPT_LINE_SEARCH_FAILED;
      } else {
        m_state.ForgetModel();
      }
    }
    return m_f;
  }

 private:
  void Evaluate() {
    m_f = m_objective.Value(m_state.x);
    m_objective.CalculateGradient(m_state.x, m_state.gradient);
  }

  /// Evaluates the function at a step along the direction. The target keeps the bounds, so it is the step of 1.
  void EvaluateAt(T step) {
    m_step = step;
    T* x = m_state.x.Data();
    if (step == 1) {
      qxKernels::Copy(m_state.count, m_state.target.get(), x);
    } else {
      const T* start = m_state.start.get();
      const T* direction = m_state.direction.get();
      for (std::size_t i = 0; i < m_state.count; ++i) x[i] = m_state.Keep(i, step * direction[i] + start[i]);
    }
    Evaluate();
    m_slope = qxKernels::Dot(m_state.count, m_state.gradient.Data(), m_state.direction.get());
  }

  /// Searches the line from x to the target; x, value and gradient stay as they were when it fails.
  [[nodiscard]] bool SearchTowardsTarget() {
    const std::size_t count = m_state.count;
    const bool isFirst = m_state.iterations == 0;
    T step = 1;
    if (isFirst && !m_state.isBoxed) {
      step = std::min(1 / qxGuardedSqrt(qxKernels::SumOfSquares(count, m_state.direction.get())), T(1));
    }
    qxKernels::Copy(count, m_state.x.Data(), m_state.start.get());
    qxKernels::Copy(count, m_state.gradient.Data(), m_state.gradientBefore.get());
    m_fBefore = m_f;
    m_slopeBefore = qxKernels::Dot(count, m_state.gradient.Data(), m_state.direction.get());
    if (m_slopeBefore >= 0) return false;

    // How far one may go is asked for only when the first trial has not been good enough.
    LineSearch<T> search(rules<T>, m_f, m_slopeBefore, step, 1);
    EvaluateAt(search.Step());
    if (!isFirst && !search.IsGood(m_f, m_slope)) {
      std::size_t blocking = count;
      search.SetLargestStep(m_state.FeasiblePart(m_state.start.get(), farthestStep<T>, blocking));
    }
    LineSearchResult result = search.Advance(m_f, m_slope);
    while (result == QX_SEARCH_GOES_ON) {
      EvaluateAt(search.Step());
      result = search.Advance(m_f, m_slope);
    }
    if (result != QX_SEARCH_AT_LIMIT) return true;
    qxKernels::Copy(count, m_state.start.get(), m_state.x.Data());
    qxKernels::Copy(count, m_state.gradientBefore.get(), m_state.gradient.Data());
    m_f = m_fBefore;
    return false;
  }

  /// The tests after an iteration; the start becomes the change of x.
  [[nodiscard]] QX_OPTIMIZATION_INFO FindInfo() {
    if (m_state.ProjectedGradientNorm() <= m_task.gTol) return QX_OPT_GRADIENT_CONVERGED;
    T* change = m_state.start.get();
    qxKernels::Difference(m_state.count, m_state.x.Data(), change, change);
    const T moved = qxGuardedSqrt(qxKernels::SumOfSquares(m_state.count, change), QX_TOLERANCE_SQUARED<T>);
    if (moved <= m_task.xTol) return QX_OPT_STEP_CONVERGED;
    const T bound = m_task.fTol * std::max(std::max(std::abs(m_fBefore), std::abs(m_f)), T(1));
    if (m_fBefore - m_f <= bound && m_f < m_fBefore) return QX_OPT_FUNCTION_CONVERGED;
    return m_state.iterations > m_task.maxIterations ? QX_OPT_ITERATION_LIMIT : QX_OPT_IN_PROGRESS;
  }

  /// Takes the last step into the model, unless its curvature is too small.
  void UpdateModel() {
    T sy = m_slope - m_slopeBefore;
    T scale = -m_slopeBefore;
    T factor = 1;
    if (!(std::abs(m_step - 1) <= QX_TOLERANCE<T>)) {
      sy *= m_step;
      scale *= m_step;
      factor = m_step;
    }
    if (sy <= QX_TOLERANCE<T> * scale) return;
    m_state.isAppended = true;
    m_state.memory.Append(m_state.direction.get(), factor, m_state.gradient.Data(), m_state.gradientBefore.get(), sy);
  }

  const LimitedMemoryTask<T>& m_task;
  const Objective<T>& m_objective;
  BoundedState<T>& m_state;
  T m_f = 0;
  T m_fBefore = 0;
  T m_step = 0;
  T m_slope = 0;
  T m_slopeBefore = 0;
};

}  // namespace

template <qxReal T>
T MinimizeByLBFGSB(const LimitedMemoryTask<T>& task, const Bounds<T>& bounds, CQXVectorN<T>& x,
                   const Objective<T>& objective, QX_OPTIMIZATION_INFO& info) {
  bool isUnbounded = true;
  bool isValid = task.IsValid(x);
  for (std::int32_t i = 0; i < task.n; ++i) {
    const std::int32_t kind = bounds.kinds[i];
    if (kind != QX_UNCONSTRAINED) isUnbounded = false;
    if (kind < QX_UNCONSTRAINED || kind > QX_UPPER_BOUND) isValid = false;
    if (kind == QX_BOTH_BOUNDS && bounds.upper[i] < bounds.lower[i]) isValid = false;
  }
  if (isUnbounded) return MinimizeByLBFGS(task, x, objective, info);
  info = QX_OPT_INVALID;
  if (!isValid) return objective.Value(x);
  BoundedState<T> state(task.n, task.m, x);
  if (!state.HasMemory()) return objective.Value(x);
  state.Initialize(bounds);
  return BoundedMinimizer<T>(task, objective, state).Minimize(info);
}

#define QX_INSTANTIATE(T)                                                                                         \
  template T MinimizeByLBFGSB(const LimitedMemoryTask<T>&, const Bounds<T>&, CQXVectorN<T>&, const Objective<T>&, \
                              QX_OPTIMIZATION_INFO&);
QX_FOR_FLOAT_AND_DOUBLE(QX_INSTANTIATE)
#undef QX_INSTANTIATE

}  // namespace qxSolvers
