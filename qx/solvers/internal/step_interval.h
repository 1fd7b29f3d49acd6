#pragma once

#include <qx/foundation/scalar.h>

#include <algorithm>

/// @file
/// The step computation of the line search. Internal, not part of the interface.

namespace qxSolvers {

/// A step along a line with the value and the slope of the function there.
template <qxReal T>
struct StepPoint {
  T step;
  T value;
  T slope;
};

/// The interval of uncertainty of the line search of J. J. More and D. J. Thuente, Line search algorithms with
/// guaranteed sufficient decrease, ACM Trans. Math. Softw. 20 (1994), section 4.
///
/// One end is the best step so far; once the minimum is bracketed, it lies between the two ends.
template <qxReal T>
struct StepInterval {
  StepPoint<T> best;
  StepPoint<T> other;
  bool isBracketed = false;

  [[nodiscard]] T Low() const { return std::min(best.step, other.step); }
  [[nodiscard]] T High() const { return std::max(best.step, other.step); }

  /// Values and slopes with a linear function of the step taken off, the auxiliary function of the first stage.
  [[nodiscard]] StepInterval Tilted(T slope) const { return {Tilt(best, slope), Tilt(other, slope), isBracketed}; }
  [[nodiscard]] static StepPoint<T> Tilt(const StepPoint<T>& p, T slope) {
    return {p.step, p.value - p.step * slope, p.slope - slope};
  }

  /// Takes in a trial and returns the next one, by safeguarded cubic and quadratic interpolation.
  /// @param low,high bounds of the next step as long as nothing is bracketed
  /// @param limitsAllBrackets whether a step after a higher value is kept within 2/3 of the way to the other end too,
  ///        and not only one after a smaller slope of the same sign
  [[nodiscard]] T TakeTrial(const StepPoint<T>& trial, T low, T high, bool limitsAllBrackets);

 private:
  [[nodiscard]] T StepAfterHigherValue(const StepPoint<T>& trial) const;
  [[nodiscard]] T StepAfterTurn(const StepPoint<T>& trial) const;
  [[nodiscard]] T StepAfterSmallerSlope(const StepPoint<T>& trial, T low, T high) const;
  [[nodiscard]] T StepToOther(const StepPoint<T>& trial) const;
};

}  // namespace qxSolvers
