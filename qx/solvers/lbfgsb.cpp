#include <qx/kernels/array_kernels.h>
#include <qx/kernels/optimization_kernels.h>
#include <qx/solvers/internal/bounded_minimizer.h>
#include <qx/solvers/internal/lbfgs.h>
#include <qx/solvers/internal/step_interval.h>

#include <algorithm>
#include <cmath>
#include <cstddef>

void CQXOptimization::LBFGSB_Freev(std::int32_t n, std::int32_t& freeCount, std::int32_t* freeIndex,
                                   std::int32_t& enterCount, std::int32_t& leaveCount, std::int32_t* enteringIndex,
                                   const std::int32_t* boundState, std::int32_t memoryCount, std::int32_t& update,
                                   std::int32_t isConstrained, std::int32_t iteration) {
  enterCount = 0;
  leaveCount = 0;
  if (iteration > 0 && isConstrained != 0) {
    for (std::int32_t i = 0; i < n; ++i) {
      const std::int32_t variable = freeIndex[i];
      const bool wasFree = i < freeCount;
      const bool isFree = boundState[variable] <= 0;
      if (wasFree && !isFree) enteringIndex[n - ++leaveCount] = variable;
      if (!wasFree && isFree) enteringIndex[enterCount++] = variable;
    }
  }
  update = memoryCount > 0 && (update != 0 || enterCount > 0 || leaveCount > 0) ? 1 : 0;
  freeCount = 0;
  std::int32_t others = n;
  for (std::int32_t i = 0; i < n; ++i) freeIndex[boundState[i] <= 0 ? freeCount++ : --others] = i;
}

namespace qxSolvers {

template <typename T>
BoundedMinimizer<T>::BoundedMinimizer(std::int32_t n, std::int32_t m, const Bounds<T>& bounds,
                                      const Objective<T>& objective, CQXVectorN<T>& x)
    : m_n(n),
      m_m(m),
      m_bounds(bounds),
      m_objective(objective),
      m_x(x),
      m_gradient(n),
      m_memory(n, m),
      m_subspace(n, m),
      m_target(qxMakeBlock<T>(static_cast<std::size_t>(n))),
      m_direction(qxMakeBlock<T>(static_cast<std::size_t>(n))),
      m_start(qxMakeBlock<T>(static_cast<std::size_t>(n))),
      m_gradientBefore(qxMakeBlock<T>(static_cast<std::size_t>(n))),
      m_breakpoints(qxMakeBlock<T>(static_cast<std::size_t>(n))),
      m_small(qxMakeBlock<T>(8 * static_cast<std::size_t>(m))),
      m_order(qxMakeBlock<std::int32_t>(static_cast<std::size_t>(n))),
      m_freeIndex(qxMakeBlock<std::int32_t>(static_cast<std::size_t>(n))),
      m_entering(qxMakeBlock<std::int32_t>(static_cast<std::size_t>(n))),
      m_boundState(qxMakeBlock<std::int32_t>(static_cast<std::size_t>(n))) {}

template <typename T>
bool BoundedMinimizer<T>::HasMemory() const {
  return m_gradient.Data() != nullptr && m_memory.HasMemory() && m_subspace.HasMemory() && m_target != nullptr &&
         m_direction != nullptr && m_start != nullptr && m_gradientBefore != nullptr && m_breakpoints != nullptr &&
         m_small != nullptr && m_order != nullptr && m_freeIndex != nullptr && m_entering != nullptr &&
         m_boundState != nullptr;
}

/// Moves x onto the bounds and sets what never changes of the states.
template <typename T>
void BoundedMinimizer<T>::Initialize() {
  for (std::int32_t i = 0; i < m_n; ++i) {
    m_x[i] = m_bounds.Keep(i, m_x[i]);
    std::int32_t& state = m_boundState[static_cast<std::size_t>(i)];
    state = QX_STATE_FREE;
    if (m_bounds.kinds[i] == QX_UNCONSTRAINED) state = QX_STATE_NO_BOUND;
    if (m_bounds.kinds[i] == QX_BOTH_BOUNDS && m_bounds.upper[i] - m_bounds.lower[i] <= 0) state = QX_STATE_FIXED;
    if (m_bounds.kinds[i] != QX_BOTH_BOUNDS) m_isBoxed = false;
  }
}

template <typename T>
void BoundedMinimizer<T>::Evaluate() {
  m_f = m_objective.Value(m_x);
  m_objective.CalculateGradient(m_x, m_gradient);
}

template <typename T>
T BoundedMinimizer<T>::ProjectedGradientNorm() const {
  T norm = 0;
  for (std::int32_t i = 0; i < m_n; ++i) {
    T slope = m_gradient[i];
    if (slope >= 0) {
      if (m_bounds.HasLower(i)) slope = std::min(slope, m_x[i] - m_bounds.lower[i]);
    } else {
      if (m_bounds.HasUpper(i)) slope = std::max(slope, m_x[i] - m_bounds.upper[i]);
    }
    const T magnitude = std::abs(slope);
    if (magnitude > norm || std::isnan(magnitude)) norm = magnitude;  // not a number stays
  }
  return norm;
}

template <typename T>
void BoundedMinimizer<T>::ForgetModel() {
  m_memory.Reset();
  m_subspace.Reset();
  m_isAppended = 0;
  m_isFactored = false;
}

/// Searches the line from x to the target; x, value and gradient stay as they were when it fails.
///
/// The search is the reverse-communication form of the method told at StepInterval, with the constants of algorithm
/// 778.
template <typename T>
bool BoundedMinimizer<T>::SearchTowardsTarget() {
  constexpr T decrease = T(1e-6);
  constexpr T curvature = T(0.9);
  constexpr T narrow = T(0.1);
  constexpr T shrinkage = T(0.66);
  constexpr T extrapolationLow = T(1.1);
  constexpr T extrapolationHigh = 4;
  constexpr T stepMin = 0;
  constexpr int maxEvaluations = 20;

  const std::size_t count = static_cast<std::size_t>(m_n);
  const T* direction = m_direction.get();
  T stepMax = T(1e10);
  if (m_iterations == 0) {
    stepMax = 1;
  } else {
    for (std::int32_t i = 0; i < m_n; ++i) stepMax = m_bounds.FeasiblePart(i, m_x[i], direction[i], stepMax);
  }
  m_step = 1;
  if (m_iterations == 0 && !m_isBoxed) {
    m_step = std::min(1 / qxGuardedSqrt(qxKernels::SumOfSquares(count, direction)), stepMax);
  }
  m_step = std::min(m_step, stepMax);
  qxKernels::Copy(count, m_x.Data(), m_start.get());
  qxKernels::Copy(count, m_gradient.Data(), m_gradientBefore.get());
  m_fBefore = m_f;
  m_slopeBefore = qxKernels::Dot(count, m_gradient.Data(), direction);
  if (m_slopeBefore >= 0) return false;

  const T testSlope = decrease * m_slopeBefore;
  StepInterval<T> interval{{0, m_f, m_slopeBefore}, {0, m_f, m_slopeBefore}};
  bool isFirstStage = true;
  T width = stepMax - stepMin;
  T formerWidth = 2 * width;
  T low = 0;
  T high = m_step + extrapolationHigh * m_step;
  for (int evaluations = 0; evaluations < maxEvaluations; ++evaluations) {
    if (m_step == 1) {
      qxKernels::Copy(count, m_target.get(), m_x.Data());
    } else {
      for (std::int32_t i = 0; i < m_n; ++i) {
        m_x[i] = m_bounds.Keep(i, m_step * direction[i] + m_start[static_cast<std::size_t>(i)]);
      }
    }
    Evaluate();
    m_slope = qxKernels::Dot(count, m_gradient.Data(), direction);

    const T testValue = m_fBefore + m_step * testSlope;
    if (isFirstStage && m_f <= testValue && m_slope >= std::min(decrease, curvature) * m_slopeBefore) {
      isFirstStage = false;
    }
    const bool isStuck = interval.isBracketed && (m_step <= low || m_step >= high);
    const bool isNarrow = interval.isBracketed && high - low <= narrow * high;
    const bool isAtMax = m_step == stepMax && m_f <= testValue && m_slope <= testSlope;
    const bool isAtMin = m_step == stepMin && (m_f > testValue || m_slope >= testSlope);
    const bool hasConverged = m_f <= testValue && std::abs(m_slope) <= curvature * -m_slopeBefore;
    if (hasConverged || isStuck || isNarrow || isAtMax || isAtMin) return true;

    const StepPoint<T> trial{m_step, m_f, m_slope};
    if (isFirstStage && m_f <= interval.best.value && m_f > testValue) {
      StepInterval<T> tilted = interval.Tilted(testSlope);
      m_step = tilted.TakeTrial(StepInterval<T>::Tilt(trial, testSlope), low, high, false);
      interval = tilted.Tilted(-testSlope);
    } else {
      m_step = interval.TakeTrial(trial, low, high, false);
    }
    if (interval.isBracketed) {
      const T newWidth = std::abs(interval.other.step - interval.best.step);
      if (newWidth >= shrinkage * formerWidth) {
        m_step = interval.best.step + (interval.other.step - interval.best.step) / 2;
      }
      formerWidth = width;
      width = newWidth;
      low = interval.Low();
      high = interval.High();
    } else {
      low = m_step + extrapolationLow * (m_step - interval.best.step);
      high = m_step + extrapolationHigh * (m_step - interval.best.step);
    }
    m_step = std::min(std::max(m_step, stepMin), stepMax);
    if (interval.isBracketed && (m_step <= low || m_step >= high || high - low <= narrow * high)) {
      m_step = interval.best.step;
    }
  }
  qxKernels::Copy(count, m_start.get(), m_x.Data());
  qxKernels::Copy(count, m_gradientBefore.get(), m_gradient.Data());
  m_f = m_fBefore;
  return false;
}

/// Takes the last step into the model, unless its curvature is too small.
template <typename T>
void BoundedMinimizer<T>::UpdateModel() {
  const std::size_t count = static_cast<std::size_t>(m_n);
  T* difference = m_gradientBefore.get();
  qxKernels::Difference(count, m_gradient.Data(), difference, difference);
  T sy = m_slope - m_slopeBefore;
  T scale = -m_slopeBefore;
  if (!(std::abs(m_step - 1) <= QX_TOLERANCE<T>)) {
    sy *= m_step;
    scale *= m_step;
    qxKernels::Multiply(count, m_direction.get(), m_step);
  }
  if (sy <= QX_TOLERANCE<T> * scale) return;
  m_isAppended = 1;
  if (!m_memory.Append(m_direction.get(), difference, sy, qxKernels::SumOfSquares(count, difference))) ForgetModel();
}

template <typename T>
T BoundedMinimizer<T>::Minimize(T xTol, T fTol, T gTol, std::int32_t maxIterations, QX_OPTIMIZATION_INFO& info) {
  const std::size_t count = static_cast<std::size_t>(m_n);
  Initialize();
  Evaluate();
  if (ProjectedGradientNorm() <= gTol) {
    info = QX_OPT_GRADIENT_CONVERGED;
    return m_f;
  }
  for (;;) {
    FindCauchyPoint();
    if (!MinimizeInSubspace()) {
      ForgetModel();
      continue;
    }
    for (std::int32_t i = 0; i < m_n; ++i) {
      T& target = m_target[static_cast<std::size_t>(i)];
      target = m_bounds.Keep(i, target);
      m_direction[static_cast<std::size_t>(i)] = target - m_x[i];
    }
    if (!SearchTowardsTarget()) {
      if (m_memory.Count() == 0) {
        info = QX_OPT_LINE_SEARCH_FAILED;
        return m_f;
      }
      ForgetModel();
      continue;
    }
    ++m_iterations;

    info = QX_OPT_IN_PROGRESS;
    if (ProjectedGradientNorm() <= gTol) {
      info = QX_OPT_GRADIENT_CONVERGED;
    } else {
      qxKernels::Difference(count, m_x.Data(), m_start.get(), m_start.get());
      const T moved = qxGuardedSqrt(qxKernels::SumOfSquares(count, m_start.get()), QX_TOLERANCE_SQUARED<T>);
      const T bound = fTol * std::max(std::max(std::abs(m_fBefore), std::abs(m_f)), T(1));
      if (moved <= xTol) {
        info = QX_OPT_STEP_CONVERGED;
      } else if (m_fBefore - m_f <= bound && m_f < m_fBefore) {
        info = QX_OPT_FUNCTION_CONVERGED;
      } else if (m_iterations > maxIterations) {
        info = QX_OPT_ITERATION_LIMIT;
      }
    }
    if (info != QX_OPT_IN_PROGRESS) return m_f;
    UpdateModel();
  }
}

namespace {

template <typename T>
T MinimizeWithBounds(std::int32_t n, std::int32_t m, CQXVectorN<T>& x, T xTol, T fTol, T gTol,
                     std::int32_t maxIterations, const Bounds<T>& bounds, const Objective<T>& objective,
                     QX_OPTIMIZATION_INFO& info) {
  bool isUnbounded = true;
  bool isValid = AreValidArguments(n, m, xTol, fTol, gTol, maxIterations);
  for (std::int32_t i = 0; i < n; ++i) {
    const std::int32_t kind = bounds.kinds[i];
    if (kind != QX_UNCONSTRAINED) isUnbounded = false;
    if (kind < QX_UNCONSTRAINED || kind > QX_UPPER_BOUND) isValid = false;
    if (kind == QX_BOTH_BOUNDS && bounds.upper[i] < bounds.lower[i]) isValid = false;
  }
  if (isUnbounded) return MinimizeByLBFGS(n, m, x, xTol, fTol, gTol, maxIterations, objective, info);
  info = QX_OPT_INVALID;
  if (!isValid) return objective.Value(x);
  BoundedMinimizer<T> minimizer(n, m, bounds, objective, x);
  if (!minimizer.HasMemory()) return objective.Value(x);
  return minimizer.Minimize(xTol, fTol, gTol, maxIterations, info);
}

}  // namespace

}  // namespace qxSolvers

template <typename T>
T CQXOptimization::QuasiNewtonConstraintLBFGSB(std::int32_t n, std::int32_t m, CQXVectorN<T>& x,
                                               std::type_identity_t<T> xTol, std::type_identity_t<T> fTol,
                                               std::type_identity_t<T> gTol, std::int32_t maxIterations,
                                               const QX_OPTIMIZATION_CONSTRAINTS* constraints,
                                               const std::type_identity_t<T>* lower,
                                               const std::type_identity_t<T>* upper, VectorFunction<T> f,
                                               GradientFunction<T> g, QX_OPTIMIZATION_INFO& info) {
  return qxSolvers::MinimizeWithBounds<T>(n, m, x, xTol, fTol, gTol, maxIterations, {constraints, lower, upper}, {f, g},
                                          info);
}

template <typename T>
T CQXOptimization::QuasiNewtonConstraintLBFGSB(
    std::int32_t n, std::int32_t m, CQXVectorN<T>& x, std::type_identity_t<T> xTol, std::type_identity_t<T> fTol,
    std::type_identity_t<T> gTol, std::int32_t maxIterations, const QX_OPTIMIZATION_CONSTRAINTS* constraints,
    const std::type_identity_t<T>* lower, const std::type_identity_t<T>* upper, void* user, VectorFunctionWithUser<T> f,
    GradientFunctionWithUser<T> g, QX_OPTIMIZATION_INFO& info) {
  return qxSolvers::MinimizeWithBounds<T>(n, m, x, xTol, fTol, gTol, maxIterations, {constraints, lower, upper},
                                          {user, f, g}, info);
}

#define INSTANTIATE(T)                                                                                                 \
  template T CQXOptimization::QuasiNewtonConstraintLBFGSB(                                                             \
      std::int32_t, std::int32_t, CQXVectorN<T>&, T, T, T, std::int32_t, const QX_OPTIMIZATION_CONSTRAINTS*, const T*, \
      const T*, VectorFunction<T>, GradientFunction<T>, QX_OPTIMIZATION_INFO&);                                        \
  template T CQXOptimization::QuasiNewtonConstraintLBFGSB(                                                             \
      std::int32_t, std::int32_t, CQXVectorN<T>&, T, T, T, std::int32_t, const QX_OPTIMIZATION_CONSTRAINTS*, const T*, \
      const T*, void*, VectorFunctionWithUser<T>, GradientFunctionWithUser<T>, QX_OPTIMIZATION_INFO&)
INSTANTIATE(float);
INSTANTIATE(double);
#undef INSTANTIATE
