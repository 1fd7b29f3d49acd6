#include <qx/foundation/internal/instantiate.h>
#include <qx/solvers/internal/line_search.h>

#include <algorithm>
#include <cmath>

namespace qxSolvers {

template <qxReal T>
LineSearch<T>::LineSearch(const LineSearchRules<T>& rules, T value, T slope, T step, T stepMax)
    : m_rules(rules),
      m_initial{0, value, slope},
      m_interval{m_initial, m_initial},
      m_testSlope(rules.decrease * slope),
      m_step(step),
      m_high(step + rules.extrapolationHigh * step) {
  SetLargestStep(stepMax);
  m_step = std::min(std::max(m_step, m_rules.stepMin), m_stepMax);
}

template <qxReal T>
void LineSearch<T>::SetLargestStep(T stepMax) {
  m_stepMax = stepMax;
  m_width = stepMax - m_rules.stepMin;
  m_formerWidth = 2 * m_width;
}

template <qxReal T>
bool LineSearch<T>::IsGood(T value, T slope) const {
  return value <= TestValue() && std::abs(slope) <= -m_rules.curvature * m_initial.slope;
}

template <qxReal T>
LineSearchResult LineSearch<T>::Judge(T value, T slope) const {
  const T testValue = TestValue();
  if (IsGood(value, slope)) return QX_SEARCH_CONVERGED;
  if (IsNarrow()) return QX_SEARCH_IS_NARROW;
  if (m_step == m_rules.stepMin && (value > testValue || slope >= m_testSlope)) return QX_SEARCH_AT_MIN;
  if (m_step == m_stepMax && value <= testValue && slope <= m_testSlope) return QX_SEARCH_AT_MAX;
  if (IsOutside() || !m_isComputed) return QX_SEARCH_IS_STUCK;
  return m_evaluations >= maxEvaluations ? QX_SEARCH_AT_LIMIT : QX_SEARCH_GOES_ON;
}

template <qxReal T>
LineSearchResult LineSearch<T>::Advance(T value, T slope) {
  ++m_evaluations;
  const LineSearchResult result = Judge(value, slope);
  if (result != QX_SEARCH_GOES_ON) return result;
  ComputeStep({m_step, value, slope});
  if (m_interval.isBracketed) {
    const T newWidth = std::abs(m_interval.other.step - m_interval.best.step);
    if (newWidth >= m_rules.shrinkage * m_formerWidth) {
      m_step = m_interval.best.step + (m_interval.other.step - m_interval.best.step) / 2;
    }
    m_formerWidth = m_width;
    m_width = newWidth;
  }
  BoundStep();
  return result;
}

/// The next step by interpolation. In the first stage that is of the function with the line of sufficient decrease
/// taken off, as long as the trial is low but not low enough.
template <qxReal T>
void LineSearch<T>::ComputeStep(const StepPoint<T>& trial) {
  const T testValue = TestValue();
  if (m_isFirstStage && trial.value <= testValue &&
      trial.slope >= std::min(m_rules.decrease, m_rules.curvature) * m_initial.slope) {
    m_isFirstStage = false;
  }
  const StepPoint<T>& best = m_interval.best;
  m_isComputed = !m_rules.isGuarded || !(IsOutside() || best.slope * (m_step - best.step) >= 0 || m_high < m_low);
  if (!m_isComputed) return;
  if (m_isFirstStage && trial.value <= best.value && trial.value > testValue) {
    StepInterval<T> tilted = m_interval.Tilted(m_testSlope);
    m_step = tilted.TakeTrial(StepInterval<T>::Tilt(trial, m_testSlope), m_low, m_high, m_rules.isGuarded);
    m_interval = tilted.Tilted(-m_testSlope);
  } else {
    m_step = m_interval.TakeTrial(trial, m_low, m_high, m_rules.isGuarded);
  }
}

/// Bounds for the step after the next one; the next one kept within the present ones, or the best one so far where
/// nothing else is left to try.
template <qxReal T>
void LineSearch<T>::BoundStep() {
  const T best = m_interval.best.step;
  if (m_interval.isBracketed) {
    m_low = m_interval.Low();
    m_high = m_interval.High();
  } else {
    m_low = m_rules.isGuarded ? best : m_step + m_rules.extrapolationLow * (m_step - best);
    m_high = m_step + m_rules.extrapolationHigh * (m_step - best);
  }
  m_step = std::min(std::max(m_step, m_rules.stepMin), m_stepMax);
  const bool isGivenUp = m_rules.isGuarded && (!m_isComputed || m_evaluations >= maxEvaluations - 1);
  if (IsOutside() || IsNarrow() || isGivenUp) m_step = best;
}

#define QX_INSTANTIATE(T) template class LineSearch<T>;
QX_FOR_FLOAT_AND_DOUBLE(QX_INSTANTIATE)
#undef QX_INSTANTIATE

}  // namespace qxSolvers
