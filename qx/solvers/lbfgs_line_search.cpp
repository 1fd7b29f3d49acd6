#include <qx/kernels/array_kernels.h>
#include <qx/kernels/rotation_kernels.h>
#include <qx/solvers/internal/lbfgs.h>
#include <qx/solvers/internal/step_interval.h>

#include <cmath>
#include <cstddef>

namespace qxSolvers {

template <qxReal T>
std::int32_t SearchLine(std::int32_t n, const T* direction, const Objective<T>& objective, T* start, CQXVectorN<T>& x,
                        T& f, CQXVectorN<T>& gradient, T& step) {
  constexpr T decrease = T(1e-4);
  constexpr T curvature = T(0.9);
  constexpr T narrow = QX_TOLERANCE<T>;
  constexpr T stepMin = T(1e-20);
  constexpr T stepMax = T(1e20);
  constexpr int maxEvaluations = 20;
  constexpr T extrapolation = 4;
  constexpr T shrinkage = T(0.6666666666666666);

  if (step <= 0) return -1;
  const std::size_t count = static_cast<std::size_t>(n);
  f = objective.Value(x);
  objective.CalculateGradient(x, gradient);
  const T initialSlope = qxKernels::Dot(count, gradient.Data(), direction);
  if (!(initialSlope < 0)) return 0;
  qxKernels::Copy(count, x.Data(), start);

  const T initialValue = f;
  const T testSlope = decrease * initialSlope;
  StepInterval<T> interval{{0, f, initialSlope}, {0, f, initialSlope}};
  bool isFirstStage = true;
  bool isComputed = true;  // the step, from the trial before
  T width = stepMax - stepMin;
  T formerWidth = 2 * width;
  for (int evaluations = 0;;) {
    const T low = interval.isBracketed ? interval.Low() : interval.best.step;
    const T high = interval.isBracketed ? interval.High() : step + extrapolation * (step - interval.best.step);
    step = std::min(std::max(step, stepMin), stepMax);
    const bool isNarrow = interval.isBracketed && high - low <= narrow * high;
    if ((interval.isBracketed && (step <= low || step >= high)) || evaluations >= maxEvaluations - 1 || !isComputed ||
        isNarrow) {
      step = interval.best.step;
    }
    qxKernels::Copy(count, start, x.Data());
    qxKernels::AddMultiple(count, step, direction, x.Data());
    f = objective.Value(x);
    objective.CalculateGradient(x, gradient);
    ++evaluations;
    const T slope = qxKernels::Dot(count, gradient.Data(), direction);
    const T testValue = initialValue + step * testSlope;

    std::int32_t result = 0;
    if ((interval.isBracketed && (step <= low || step >= high)) || !isComputed) result = 6;
    if (step == stepMax && f <= testValue && slope <= testSlope) result = 4;
    if (step == stepMin && (f > testValue || slope >= testSlope)) result = 3;
    if (evaluations >= maxEvaluations) result = 5;
    if (isNarrow) result = 2;
    if (f <= testValue && std::abs(slope) <= -curvature * initialSlope) result = 1;
    if (result != 0) return result;

    if (isFirstStage && f <= testValue && slope >= std::min(decrease, curvature) * initialSlope) isFirstStage = false;
    const StepPoint<T> trial{step, f, slope};
    isComputed = !((interval.isBracketed && (step <= interval.Low() || step >= interval.High())) ||
                   interval.best.slope * (step - interval.best.step) >= 0 || high < low);
    if (isComputed && isFirstStage && f <= interval.best.value && f > testValue) {
      StepInterval<T> tilted = interval.Tilted(testSlope);
      step = tilted.TakeTrial(StepInterval<T>::Tilt(trial, testSlope), low, high, true);
      interval = tilted.Tilted(-testSlope);
    } else if (isComputed) {
      step = interval.TakeTrial(trial, low, high, true);
    }
    if (interval.isBracketed) {
      const T newWidth = std::abs(interval.other.step - interval.best.step);
      if (newWidth >= shrinkage * formerWidth) {
        step = interval.best.step + (interval.other.step - interval.best.step) / 2;
      }
      formerWidth = width;
      width = newWidth;
    }
  }
}

template std::int32_t SearchLine(std::int32_t, const float*, const Objective<float>&, float*, CQXVectorN<float>&,
                                 float&, CQXVectorN<float>&, float&);
template std::int32_t SearchLine(std::int32_t, const double*, const Objective<double>&, double*, CQXVectorN<double>&,
                                 double&, CQXVectorN<double>&, double&);

}  // namespace qxSolvers
