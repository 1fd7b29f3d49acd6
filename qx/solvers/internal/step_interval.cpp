#include <qx/foundation/internal/instantiate.h>
#include <qx/foundation/tolerance.h>
#include <qx/solvers/internal/step_interval.h>

#include <cmath>

namespace qxSolvers {

namespace {

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
  [[nodiscard]] T Gamma(bool isNegative) const { return isNegative ? -m_gamma : m_gamma; }

 private:
  /// A radicand that is not clearly positive is rounding and counts as 0.
  static T Root(T radicand) { return radicand < QX_TOLERANCE<T> ? T(0) : std::sqrt(radicand); }

  T m_theta;
  T m_scale;
  T m_gamma;
};

template <qxReal T>
T SecantStep(const StepPoint<T>& trial, const StepPoint<T>& best) {
  return trial.step + (trial.slope / (trial.slope - best.slope)) * (best.step - trial.step);
}

template <qxReal T>
bool IsNearer(T a, T b, const StepPoint<T>& trial) {
  return std::abs(a - trial.step) < std::abs(b - trial.step);
}

}  // namespace

/// A higher value brackets the minimum: between the cubic and the quadratic step, nearer to the best one.
template <qxReal T>
T StepInterval<T>::StepAfterHigherValue(const StepPoint<T>& trial) const {
  const CubicStep<T> cubic(best, trial);
  const T gamma = cubic.Gamma(trial.step < best.step);
  const T r = ((gamma - best.slope) + cubic.Theta()) / (((gamma - best.slope) + gamma) + trial.slope);
  const T width = trial.step - best.step;
  const T cubicStep = best.step + r * width;
  const T quadraticStep = best.step + ((best.slope / ((best.value - trial.value) / width + best.slope)) / 2) * width;
  return std::abs(cubicStep - best.step) < std::abs(quadraticStep - best.step)
             ? cubicStep
             : cubicStep + (quadraticStep - cubicStep) / 2;
}

/// A slope of the other sign brackets the minimum: the step farther from the trial.
template <qxReal T>
T StepInterval<T>::StepAfterTurn(const StepPoint<T>& trial) const {
  const CubicStep<T> cubic(best, trial);
  const T gamma = cubic.Gamma(trial.step > best.step);
  const T r = ((gamma - trial.slope) + cubic.Theta()) / (((gamma - trial.slope) + gamma) + best.slope);
  const T cubicStep = trial.step + r * (best.step - trial.step);
  const T secantStep = SecantStep(trial, best);
  return IsNearer(secantStep, cubicStep, trial) ? cubicStep : secantStep;
}

/// The slope gets smaller: the cubic may have no minimum in this direction, or only behind the trial.
template <qxReal T>
T StepInterval<T>::StepAfterSmallerSlope(const StepPoint<T>& trial, T low, T high) const {
  const CubicStep<T> cubic(best, trial);
  const T gamma = cubic.Gamma(trial.step > best.step);
  const T r = ((gamma - trial.slope) + cubic.Theta()) / ((gamma + (best.slope - trial.slope)) + gamma);
  T cubicStep = trial.step > best.step ? high : low;
  if (r < 0 && gamma != 0) cubicStep = trial.step + r * (best.step - trial.step);
  const T secantStep = SecantStep(trial, best);
  return IsNearer(cubicStep, secantStep, trial) == isBracketed ? cubicStep : secantStep;
}

/// The slope does not get smaller in a bracket: the cubic of the trial and the other end.
template <qxReal T>
T StepInterval<T>::StepToOther(const StepPoint<T>& trial) const {
  const CubicStep<T> cubic(trial, other);
  const T gamma = cubic.Gamma(trial.step > other.step);
  const T r = ((gamma - trial.slope) + cubic.Theta()) / (((gamma - trial.slope) + gamma) + other.slope);
  return trial.step + r * (other.step - trial.step);
}

template <qxReal T>
T StepInterval<T>::TakeTrial(const StepPoint<T>& trial, T low, T high, bool limitsAllBrackets) {
  const bool isHigher = trial.value > best.value;
  const bool hasTurned = trial.slope * (best.slope / std::abs(best.slope)) < 0;
  bool isLimited = false;
  T next;
  if (isHigher) {
    next = StepAfterHigherValue(trial);
    isBracketed = true;
    isLimited = limitsAllBrackets;
  } else if (hasTurned) {
    next = StepAfterTurn(trial);
    isBracketed = true;
  } else if (std::abs(trial.slope) < std::abs(best.slope)) {
    next = StepAfterSmallerSlope(trial, low, high);
    isLimited = true;
  } else if (isBracketed) {
    next = StepToOther(trial);
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

#define QX_INSTANTIATE(T) template struct StepInterval<T>;
QX_FOR_FLOAT_AND_DOUBLE(QX_INSTANTIATE)
#undef QX_INSTANTIATE

}  // namespace qxSolvers
