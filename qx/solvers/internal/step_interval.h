#pragma once

#include <qx/foundation/scalar.h>
#include <qx/foundation/tolerance.h>

#include <algorithm>
#include <cmath>

/// @file
/// The step computation that both line searches share. Internal, not part of the interface.

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
  T TakeTrial(const StepPoint<T>& trial, T low, T high, bool limitsAllBrackets);
};

/// Theta and gamma of the cubic with the values and slopes of two points, from which its minimiser is formed.
template <qxReal T>
class CubicStep {
 public:
  CubicStep(const StepPoint<T>& a, const StepPoint<T>& b)
      : m_theta(3 * (a.value - b.value) / (b.step - a.step) + a.slope + b.slope),
        m_scale(std::max(std::abs(m_theta), std::max(std::abs(a.slope), std::abs(b.slope)))),
        m_gamma(m_scale * Root((m_theta / m_scale) * (m_theta / m_scale) - (a.slope / m_scale) * (b.slope / m_scale))) {
  }

  [[nodiscard]] T Theta() const { return m_theta; }
  [[nodiscard]] T Gamma() const { return m_gamma; }

 private:
  /// A radicand that is not clearly positive is rounding and counts as 0.
  static T Root(T radicand) { return radicand < QX_TOLERANCE<T> ? T(0) : std::sqrt(radicand); }

  T m_theta;
  T m_scale;
  T m_gamma;
};

template <qxReal T>
T StepInterval<T>::TakeTrial(const StepPoint<T>& trial, T low, T high, bool limitsAllBrackets) {
  const auto isNearer = [&](T a, T b) { return std::abs(a - trial.step) < std::abs(b - trial.step); };
  const bool isHigher = trial.value > best.value;
  const bool hasTurned = trial.slope * (best.slope / std::abs(best.slope)) < 0;
  bool isLimited = false;
  T next;
  if (isHigher) {
    // A higher value brackets the minimum: between the cubic and the quadratic step, nearer to the best one.
    const CubicStep<T> cubic(best, trial);
    const T gamma = trial.step < best.step ? -cubic.Gamma() : cubic.Gamma();
    const T r = ((gamma - best.slope) + cubic.Theta()) / (((gamma - best.slope) + gamma) + trial.slope);
    const T width = trial.step - best.step;
    const T cubicStep = best.step + r * width;
    const T quadraticStep = best.step + ((best.slope / ((best.value - trial.value) / width + best.slope)) / 2) * width;
    next = std::abs(cubicStep - best.step) < std::abs(quadraticStep - best.step)
               ? cubicStep
               : cubicStep + (quadraticStep - cubicStep) / 2;
    isBracketed = true;
    isLimited = limitsAllBrackets;
  } else if (hasTurned) {
    // A slope of the other sign brackets the minimum: the step farther from the trial.
    const CubicStep<T> cubic(best, trial);
    const T gamma = trial.step > best.step ? -cubic.Gamma() : cubic.Gamma();
    const T r = ((gamma - trial.slope) + cubic.Theta()) / (((gamma - trial.slope) + gamma) + best.slope);
    const T cubicStep = trial.step + r * (best.step - trial.step);
    const T secantStep = trial.step + (trial.slope / (trial.slope - best.slope)) * (best.step - trial.step);
    next = isNearer(secantStep, cubicStep) ? cubicStep : secantStep;
    isBracketed = true;
  } else if (std::abs(trial.slope) < std::abs(best.slope)) {
    // The slope gets smaller: the cubic may have no minimum in this direction, or only behind the trial.
    const CubicStep<T> cubic(best, trial);
    const T gamma = trial.step > best.step ? -cubic.Gamma() : cubic.Gamma();
    const T r = ((gamma - trial.slope) + cubic.Theta()) / ((gamma + (best.slope - trial.slope)) + gamma);
    T cubicStep = trial.step > best.step ? high : low;
    if (r < 0 && gamma != 0) cubicStep = trial.step + r * (best.step - trial.step);
    const T secantStep = trial.step + (trial.slope / (trial.slope - best.slope)) * (best.step - trial.step);
    next = isNearer(cubicStep, secantStep) == isBracketed ? cubicStep : secantStep;
    isLimited = true;
  } else if (isBracketed) {
    // The slope does not get smaller: the cubic of the trial and the other end.
    const CubicStep<T> cubic(trial, other);
    const T gamma = trial.step > other.step ? -cubic.Gamma() : cubic.Gamma();
    const T r = ((gamma - trial.slope) + cubic.Theta()) / (((gamma - trial.slope) + gamma) + other.slope);
    next = trial.step + r * (other.step - trial.step);
  } else {
    next = trial.step > best.step ? high : low;
  }

  if (isHigher) {
    other = trial;
  } else {
    if (hasTurned) other = best;
    best = trial;
  }
  if (!isBracketed) next = std::max(low, std::min(high, next));
  if (isBracketed && isLimited) {
    const T limit = best.step + T(0.6666666666666666) * (other.step - best.step);
    next = other.step > best.step ? std::min(limit, next) : std::max(limit, next);
  }
  return next;
}

}  // namespace qxSolvers
