#include <qx/kernels/array_kernels.h>
#include <qx/solvers/internal/bounded_minimizer.h>
#include <qx/solvers/internal/lbfgs.h>
#include <qx/solvers/internal/step_interval.h>

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <limits>

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

template <qxReal T>
BoundedMinimizer<T>::BoundedMinimizer(std::int32_t n, std::int32_t m, const Bounds<T>& bounds,
                                      const Objective<T>& objective, CQXVectorN<T>& x)
    : m_n(n),
      m_m(m),
      m_count(static_cast<std::size_t>(n)),
      m_bounds(bounds),
      m_objective(objective),
      m_x(x),
      m_gradient(n),
      m_memory(n, m),
      m_subspace(n, m),
      m_lower(qxMakeBlock<T>(m_count)),
      m_upper(qxMakeBlock<T>(m_count)),
      m_target(qxMakeBlock<T>(m_count)),
      m_direction(qxMakeBlock<T>(m_count)),
      m_start(qxMakeBlock<T>(m_count)),
      m_gradientBefore(qxMakeBlock<T>(m_count)),
      m_breakpoints(qxMakeBlock<T>(m_count)),
      m_small(qxMakeBlock<T>(8 * static_cast<std::size_t>(m))),
      m_order(qxMakeBlock<std::int32_t>(m_count)),
      m_freeIndex(qxMakeBlock<std::int32_t>(m_count)),
      m_entering(qxMakeBlock<std::int32_t>(m_count)),
      m_boundState(qxMakeBlock<std::int32_t>(m_count)) {}

template <qxReal T>
bool BoundedMinimizer<T>::HasMemory() const {
  return m_gradient.Data() != nullptr && m_memory.HasMemory() && m_subspace.HasMemory() && m_lower != nullptr &&
         m_upper != nullptr && m_target != nullptr && m_direction != nullptr && m_start != nullptr &&
         m_gradientBefore != nullptr && m_breakpoints != nullptr && m_small != nullptr && m_order != nullptr &&
         m_freeIndex != nullptr && m_entering != nullptr && m_boundState != nullptr;
}

/// Moves x onto the bounds and sets what never changes.
template <qxReal T>
void BoundedMinimizer<T>::Initialize() {
  constexpr T infinity = std::numeric_limits<T>::infinity();
  for (std::size_t i = 0; i < m_count; ++i) {
    const QX_OPTIMIZATION_CONSTRAINTS kind = m_bounds.kinds[i];
    m_lower[i] = kind == QX_LOWER_BOUND || kind == QX_BOTH_BOUNDS ? m_bounds.lower[i] : -infinity;
    m_upper[i] = kind == QX_UPPER_BOUND || kind == QX_BOTH_BOUNDS ? m_bounds.upper[i] : infinity;
    T& x = m_x.Data()[i];
    x = Keep(i, x);
    m_boundState[i] = QX_STATE_FREE;
    if (kind == QX_UNCONSTRAINED) m_boundState[i] = QX_STATE_NO_BOUND;
    if (kind == QX_BOTH_BOUNDS && m_upper[i] - m_lower[i] <= 0) m_boundState[i] = QX_STATE_FIXED;
    if (kind != QX_BOTH_BOUNDS) m_isBoxed = false;
  }
}

template <qxReal T>
void BoundedMinimizer<T>::Evaluate() {
  m_f = m_objective.Value(m_x);
  m_objective.CalculateGradient(m_x, m_gradient);
}

/// Of a component that points out of a bound only the distance to the bound counts. Not a number when a component is.
template <qxReal T>
T BoundedMinimizer<T>::ProjectedGradientNorm() const {
  const T* x = m_x.Data();
  const T* gradient = m_gradient.Data();
  const T square = qxKernels::SumOfSquares(m_count, gradient);
  if (std::isnan(square)) return square;
  constexpr std::size_t lanes = 8;  // the maxima of a strip do not wait for one another
  T norms[lanes] = {};
  const auto include = [&](std::size_t i, T& norm) {
    const T toLower = x[i] - m_lower[i];
    const T toUpper = x[i] - m_upper[i];
    T slope = gradient[i];
    slope = slope > toLower ? toLower : slope;
    slope = slope < toUpper ? toUpper : slope;
    const T magnitude = std::abs(slope);
    norm = magnitude > norm ? magnitude : norm;
  };
  const std::size_t whole = m_count - m_count % lanes;
  for (std::size_t i = 0; i < whole; i += lanes) {
    for (std::size_t k = 0; k < lanes; ++k) include(i + k, norms[k]);
  }
  for (std::size_t i = whole; i < m_count; ++i) include(i, norms[0]);
  return *std::max_element(norms, norms + lanes);
}

/// The part of the direction from @p origin, a point within the bounds, that keeps them: at most @p part.
/// @param[out] blocking the variable that meets its bound first; not changed when the whole part is feasible
template <qxReal T>
T BoundedMinimizer<T>::FeasiblePart(const T* origin, T part, std::size_t& blocking) const {
  const T* direction = m_direction.get();
  const T* lower = m_lower.get();
  const T* upper = m_upper.get();
  for (std::size_t i = 0; i < m_count; ++i) {
    const T room = std::abs((direction[i] < 0 ? lower[i] : upper[i]) - origin[i]);
    const T change = std::abs(direction[i]);
    if (change * part > room) {
      part = room / change;
      blocking = i;
    }
  }
  return part;
}

template <qxReal T>
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
template <qxReal T>
bool BoundedMinimizer<T>::SearchTowardsTarget() {
  constexpr T decrease = T(1e-6);
  constexpr T curvature = T(0.9);
  constexpr T narrow = T(0.1);
  constexpr T shrinkage = T(0.66);
  constexpr T extrapolationLow = T(1.1);
  constexpr T extrapolationHigh = 4;
  constexpr T stepMin = 0;
  constexpr int maxEvaluations = 20;

  const T* direction = m_direction.get();
  // The target keeps the bounds, so that the first step of 1 does; how far one may go is asked for when it matters.
  T stepMax = 1;
  bool isLimitKnown = m_iterations == 0;
  m_step = 1;
  if (m_iterations == 0 && !m_isBoxed) {
    m_step = std::min(1 / qxGuardedSqrt(qxKernels::SumOfSquares(m_count, direction)), stepMax);
  }
  qxKernels::Copy(m_count, m_x.Data(), m_start.get());
  qxKernels::Copy(m_count, m_gradient.Data(), m_gradientBefore.get());
  m_fBefore = m_f;
  m_slopeBefore = qxKernels::Dot(m_count, m_gradient.Data(), direction);
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
      qxKernels::Copy(m_count, m_target.get(), m_x.Data());
    } else {
      T* x = m_x.Data();
      for (std::size_t i = 0; i < m_count; ++i) x[i] = Keep(i, m_step * direction[i] + m_start[i]);
    }
    Evaluate();
    m_slope = qxKernels::Dot(m_count, m_gradient.Data(), direction);

    const T testValue = m_fBefore + m_step * testSlope;
    if (isFirstStage && m_f <= testValue && m_slope >= std::min(decrease, curvature) * m_slopeBefore) {
      isFirstStage = false;
    }
    const bool isStuck = interval.isBracketed && (m_step <= low || m_step >= high);
    const bool isNarrow = interval.isBracketed && high - low <= narrow * high;
    const bool hasConverged = m_f <= testValue && std::abs(m_slope) <= curvature * -m_slopeBefore;
    if (hasConverged) return true;
    if (!isLimitKnown) {
      std::size_t blocking = m_count;
      stepMax = FeasiblePart(m_start.get(), T(1e10), blocking);
      width = stepMax - stepMin;
      formerWidth = 2 * width;
      isLimitKnown = true;
    }
    const bool isAtMax = m_step == stepMax && m_f <= testValue && m_slope <= testSlope;
    const bool isAtMin = m_step == stepMin && (m_f > testValue || m_slope >= testSlope);
    if (isStuck || isNarrow || isAtMax || isAtMin) return true;

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
  qxKernels::Copy(m_count, m_start.get(), m_x.Data());
  qxKernels::Copy(m_count, m_gradientBefore.get(), m_gradient.Data());
  m_f = m_fBefore;
  return false;
}

/// Takes the last step into the model, unless its curvature is too small.
template <qxReal T>
void BoundedMinimizer<T>::UpdateModel() {
  T sy = m_slope - m_slopeBefore;
  T scale = -m_slopeBefore;
  T factor = 1;
  if (!(std::abs(m_step - 1) <= QX_TOLERANCE<T>)) {
    sy *= m_step;
    scale *= m_step;
    factor = m_step;
  }
  if (sy <= QX_TOLERANCE<T> * scale) return;
  m_isAppended = 1;
  m_memory.Append(m_direction.get(), factor, m_gradient.Data(), m_gradientBefore.get(), sy);
}

template <qxReal T>
T BoundedMinimizer<T>::Minimize(T xTol, T fTol, T gTol, std::int32_t maxIterations, QX_OPTIMIZATION_INFO& info) {
  Initialize();
  Evaluate();
  if (ProjectedGradientNorm() <= gTol) {
    info = QX_OPT_GRADIENT_CONVERGED;
    return m_f;
  }
  for (;;) {
    if (!FindCauchyPoint() || !MinimizeInSubspace()) {
      ForgetModel();
      continue;
    }
    const T* x = m_x.Data();
    for (std::size_t i = 0; i < m_count; ++i) {
      m_target[i] = Keep(i, m_target[i]);
      m_direction[i] = m_target[i] - x[i];
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
      qxKernels::Difference(m_count, m_x.Data(), m_start.get(), m_start.get());
      const T moved = qxGuardedSqrt(qxKernels::SumOfSquares(m_count, m_start.get()), QX_TOLERANCE_SQUARED<T>);
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

template <qxReal T>
T MinimizeWithBounds(std::int32_t n, std::int32_t m, CQXVectorN<T>& x, T xTol, T fTol, T gTol,
                     std::int32_t maxIterations, const Bounds<T>& bounds, const Objective<T>& objective,
                     QX_OPTIMIZATION_INFO& info) {
  bool isUnbounded = true;
  bool isValid = AreValidArguments(n, m, x, xTol, fTol, gTol, maxIterations);
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

template class BoundedMinimizer<float>;
template class BoundedMinimizer<double>;

}  // namespace qxSolvers

template <qxReal T>
T CQXOptimization::QuasiNewtonConstraintLBFGSB(std::int32_t n, std::int32_t m, CQXVectorN<T>& x, qxNonDeduced<T> xTol,
                                               qxNonDeduced<T> fTol, qxNonDeduced<T> gTol, std::int32_t maxIterations,
                                               const QX_OPTIMIZATION_CONSTRAINTS* constraints,
                                               const qxNonDeduced<T>* lower, const qxNonDeduced<T>* upper,
                                               VectorFunction<T> f, GradientFunction<T> g, QX_OPTIMIZATION_INFO& info) {
  return qxSolvers::MinimizeWithBounds<T>(n, m, x, xTol, fTol, gTol, maxIterations, {constraints, lower, upper}, {f, g},
                                          info);
}

template <qxReal T>
T CQXOptimization::QuasiNewtonConstraintLBFGSB(std::int32_t n, std::int32_t m, CQXVectorN<T>& x, qxNonDeduced<T> xTol,
                                               qxNonDeduced<T> fTol, qxNonDeduced<T> gTol, std::int32_t maxIterations,
                                               const QX_OPTIMIZATION_CONSTRAINTS* constraints,
                                               const qxNonDeduced<T>* lower, const qxNonDeduced<T>* upper, void* user,
                                               VectorFunctionWithUser<T> f, GradientFunctionWithUser<T> g,
                                               QX_OPTIMIZATION_INFO& info) {
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
