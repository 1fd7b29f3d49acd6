#pragma once

#include <qx/foundation/scalar.h>
#include <qx/solvers/internal/step_interval.h>

#include <cstdint>

/// @file
/// The line search of the limited-memory methods. Internal, not part of the interface.

namespace qxSolvers {

/// Constants of a line search.
template <qxReal T>
struct LineSearchRules {
  T decrease;           ///< a step is good when the value falls by this part of what the first slope promises,
  T curvature;          ///< and when the slope has shrunk to this part of the first one
  T narrow;             ///< relative width at which a bracket is given up
  T stepMin;            ///< smallest step
  T extrapolationHigh;  ///< how far the next step goes while nothing is bracketed, in units of the last advance:
  T extrapolationLow;   ///< at most, and at least; not used where isGuarded
  T shrinkage;          ///< a bracket that keeps more than this part of its width over two trials is bisected
  bool isGuarded;       ///< whether each step computation is checked and the last trial goes back to the best step
};

/// How a line search stands after a trial.
enum LineSearchResult : std::int32_t {
  QX_SEARCH_GOES_ON = 0,
  QX_SEARCH_CONVERGED = 1,  ///< both conditions hold
  QX_SEARCH_IS_NARROW = 2,  ///< the bracket is narrow
  QX_SEARCH_AT_MIN = 3,     ///< at the smallest step, and that is too long
  QX_SEARCH_AT_MAX = 4,     ///< at the largest step, and farther would be better
  QX_SEARCH_AT_LIMIT = 5,   ///< as many trials as allowed, and nothing else holds
  QX_SEARCH_IS_STUCK = 6    ///< rounding prevents progress
};

/// Search for a step with sufficient decrease and a small slope by the method told at StepInterval, step by step: the
/// caller evaluates the function at Step() and hands value and slope to Advance().
template <qxReal T>
class LineSearch {
 public:
  static constexpr std::int32_t maxEvaluations = 20;

  /// @param value,slope of the function at the start, the slope below 0
  /// @param step first trial
  LineSearch(const LineSearchRules<T>& rules, T value, T slope, T step, T stepMax);

  [[nodiscard]] T Step() const { return m_step; }
  /// The trial with the smallest value so far, 0 for the start.
  [[nodiscard]] T BestStep() const { return m_interval.best.step; }
  /// Whether the trial meets both conditions.
  [[nodiscard]] bool IsGood(T value, T slope) const;
  /// Another largest step; to be set before the first Advance().
  void SetLargestStep(T stepMax);
  /// Takes in the trial at Step() and chooses the next one.
  /// @return QX_SEARCH_GOES_ON, or how the search has ended; Step() is the last trial then
  [[nodiscard]] LineSearchResult Advance(T value, T slope);

 private:
  [[nodiscard]] T TestValue() const { return m_initial.value + m_step * m_testSlope; }
  [[nodiscard]] bool IsOutside() const { return m_interval.isBracketed && (m_step <= m_low || m_step >= m_high); }
  [[nodiscard]] bool IsNarrow() const { return m_interval.isBracketed && m_high - m_low <= m_rules.narrow * m_high; }
  [[nodiscard]] LineSearchResult Judge(T value, T slope) const;
  void ComputeStep(const StepPoint<T>& trial);
  void BoundStep();

  LineSearchRules<T> m_rules;
  StepPoint<T> m_initial;
  StepInterval<T> m_interval;
  T m_testSlope;
  T m_step;
  T m_stepMax;
  T m_low = 0;  // bounds of the next step
  T m_high;
  T m_width;
  T m_formerWidth;
  bool m_isFirstStage = true;
  bool m_isComputed = true;  // the step, from the trial before
  std::int32_t m_evaluations = 0;
};

}  // namespace qxSolvers
