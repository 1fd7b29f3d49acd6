#include <qx/foundation/block.h>
#include <qx/foundation/internal/instantiate.h>
#include <qx/foundation/tolerance.h>
#include <qx/kernels/array_kernels.h>
#include <qx/kernels/matrix_kernels.h>
#include <qx/kernels/rotation_kernels.h>
#include <qx/solvers/internal/descent.h>
#include <qx/solvers/internal/line_search.h>

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <limits>

namespace qxSolvers {

namespace {

/// @param curvature how exact the line search is: 0.1 where the method lives on it, 0.9 where it corrects itself
template <qxReal T>
constexpr LineSearchRules<T> RulesWith(T curvature) {
  return {.decrease = T(1e-4),
          .curvature = curvature,
          .narrow = QX_TOLERANCE<T>,
          .stepMin = T(1e-20),
          .extrapolationHigh = 4,
          .extrapolationLow = 0,
          .shrinkage = T(0.6666666666666666),
          .isGuarded = true};
}
template <qxReal T>
constexpr T stepMax = T(1e20);

// A method gives the next direction from the gradient and the last step. It begins, and begins anew after Restart(),
// with the steepest descent.

template <qxReal T>
class SteepestDescent {
 public:
  static constexpr T curvature = T(0.1);
  static constexpr bool hasUnitStep = false;

  explicit SteepestDescent(std::size_t n) : m_n(n) {}
  [[nodiscard]] bool HasMemory() const { return true; }
  [[nodiscard]] bool IsFresh() const { return true; }
  void Restart() {}
  void TakeStep(const T*, const T*, const T*) {}
  void FindDirection(const T* gradient, T* direction) { qxKernels::Negation(m_n, gradient, direction); }

 private:
  std::size_t m_n;
};

/// E. Polak and G. Ribiere (1969), with the factor kept from being negative and a restart after n steps.
template <qxReal T>
class PolakRibiere {
 public:
  static constexpr T curvature = T(0.1);
  static constexpr bool hasUnitStep = false;

  explicit PolakRibiere(std::size_t n) : m_n(n) {}
  [[nodiscard]] bool HasMemory() const { return true; }
  [[nodiscard]] bool IsFresh() const { return m_steps == 0; }
  void Restart() { m_steps = 0; }
  void TakeStep(const T*, const T* difference, const T* gradient) {
    m_factor = std::max(T(0), qxKernels::Dot(m_n, gradient, difference) / m_square);
    ++m_steps;
  }
  void FindDirection(const T* gradient, T* direction) {
    m_square = qxKernels::SumOfSquares(m_n, gradient);
    if (m_steps >= m_n || !(m_factor <= std::numeric_limits<T>::max())) Restart();
    if (IsFresh()) {
      qxKernels::Negation(m_n, gradient, direction);
    } else {
      qxKernels::Multiply(m_n, m_factor, direction);
      qxKernels::Subtract(m_n, gradient, direction);
    }
  }

 private:
  std::size_t m_n;
  std::size_t m_steps = 0;
  T m_square = 0;  // of the last gradient
  T m_factor = 0;
};

/// The inverse of the approximate Hessian as a full matrix: J. Nocedal and S. J. Wright, Numerical Optimization,
/// equations (6.17) and (6.20).
template <qxReal T>
class InverseHessian {
 public:
  static constexpr T curvature = T(0.9);
  static constexpr bool hasUnitStep = true;

  explicit InverseHessian(std::size_t n)
      : m_n(n),
        m_matrix(n <= std::numeric_limits<std::uint32_t>::max() ? qxMakeBlock<T>(n * n) : nullptr),
        m_image(qxMakeBlock<T>(n)) {}
  [[nodiscard]] bool HasMemory() const { return m_matrix != nullptr && m_image != nullptr; }
  [[nodiscard]] bool IsFresh() const { return m_isFresh; }
  void Restart() { m_isFresh = true; }

  /// Takes in the step s and the difference y of the gradients, unless their product is too small to be more than
  /// rounding.
  void TakeStep(const T* s, const T* y, const T*) {
    const T sy = qxKernels::Dot(m_n, s, y), yy = qxKernels::SumOfSquares(m_n, y);
    const T smallest = std::numeric_limits<T>::epsilon() * std::sqrt(qxKernels::SumOfSquares(m_n, s)) * std::sqrt(yy);
    if (!(sy > smallest)) return;
    if (m_isFresh) {
      qxKernels::SetToZero(m_n * m_n, m_matrix.get());
      for (std::size_t i = 0; i < m_n; ++i) m_matrix[i * m_n + i] = sy / yy;
    }
    m_isFresh = false;
    qxKernels::MultiplyMatrixByVector(m_n, m_n, m_matrix.get(), y, m_image.get());
    const T factor = (1 + qxKernels::Dot(m_n, y, m_image.get()) / sy) / sy;
    for (std::size_t i = 0; i < m_n; ++i) {
      T* row = m_matrix.get() + i * m_n;
      qxKernels::AddMultiple(m_n, factor * s[i] - m_image[i] / sy, s, row);
      qxKernels::AddMultiple(m_n, -s[i] / sy, m_image.get(), row);
    }
  }
  void FindDirection(const T* gradient, T* direction) {
    if (m_isFresh) {
      qxKernels::Negation(m_n, gradient, direction);
    } else {
      qxKernels::MultiplyMatrixByVector(m_n, m_n, m_matrix.get(), gradient, direction);
      qxKernels::Negation(m_n, direction, direction);
    }
  }

 private:
  std::size_t m_n;
  bool m_isFresh = true;
  qxBlock<T> m_matrix;
  qxBlock<T> m_image;
};

/// One minimisation, with all that it works on.
template <qxReal T, typename Method>
class DescentMinimizer {
 public:
  DescentMinimizer(const DescentTask<T>& task, const Objective<T>& objective, CQXVectorN<T>& x)
      : m_task(task),
        m_objective(objective),
        m_x(x),
        m_n(static_cast<std::size_t>(task.n)),
        m_method(m_n),
        m_gradient(task.n),
        m_direction(qxMakeBlock<T>(m_n)),
        m_start(qxMakeBlock<T>(m_n)),
        m_gradientBefore(qxMakeBlock<T>(m_n)) {}

  [[nodiscard]] bool HasMemory() const {
    return m_method.HasMemory() && m_gradient.Data() != nullptr && m_direction != nullptr && m_start != nullptr &&
           m_gradientBefore != nullptr;
  }

  T Minimize(T f, QX_OPTIMIZATION_INFO& info) {
    m_f = f;
    m_objective.CalculateGradient(m_x, m_gradient);
    info = IsGradientSmall() ? QX_OPT_GRADIENT_CONVERGED : QX_OPT_IN_PROGRESS;
    for (std::int32_t iteration = 1; info == QX_OPT_IN_PROGRESS; ++iteration) {
      info = Iterate();
      if (info == QX_OPT_IN_PROGRESS && iteration >= m_task.maxIterations) info = QX_OPT_ITERATION_LIMIT;
    }
    return m_f;
  }

 private:
  [[nodiscard]] static T Length(std::size_t n, const T* v) { return std::sqrt(qxKernels::SumOfSquares(n, v)); }
  [[nodiscard]] bool IsGradientSmall() const { return Length(m_n, m_gradient.Data()) <= m_task.gTol; }

  [[nodiscard]] QX_OPTIMIZATION_INFO Iterate() {
    m_method.FindDirection(m_gradient.Data(), m_direction.get());
    if (!SearchLine(FirstTrial())) {
      if (m_method.IsFresh()) return QX_OPT_LINE_SEARCH_FAILED;
      m_method.Restart();
      m_method.FindDirection(m_gradient.Data(), m_direction.get());
      if (!SearchLine(FirstTrial())) return QX_OPT_LINE_SEARCH_FAILED;
    }
    T* step = m_start.get();  // the point before becomes the step, the gradient before the difference of gradients
    T* difference = m_gradientBefore.get();
    qxKernels::Difference(m_n, m_x.Data(), step, step);
    qxKernels::Difference(m_n, m_gradient.Data(), difference, difference);
    m_moved = Length(m_n, step);
    if (IsGradientSmall()) return QX_OPT_GRADIENT_CONVERGED;
    const T scale = std::max(std::max(std::abs(m_fBefore), std::abs(m_f)), T(1));
    if (m_fBefore - m_f <= m_task.fTol * scale) return QX_OPT_FUNCTION_CONVERGED;
    if (m_moved <= m_task.xTol) return QX_OPT_STEP_CONVERGED;
    m_method.TakeStep(step, difference, m_gradient.Data());
    return QX_OPT_IN_PROGRESS;
  }

  /// 1 where the method knows the length; else the way that was gone last, or a way of 1 in the beginning.
  [[nodiscard]] T FirstTrial() const {
    if (Method::hasUnitStep && !m_method.IsFresh()) return 1;
    return (m_moved > 0 ? m_moved : T(1)) / Length(m_n, m_direction.get());
  }

  /// Evaluates at a step along the direction; false when value or slope is not finite.
  [[nodiscard]] bool EvaluateAt(T step) {
    qxKernels::Copy(m_n, m_start.get(), m_x.Data());
    qxKernels::AddMultiple(m_n, step, m_direction.get(), m_x.Data());
    m_f = m_objective.Value(m_x);
    m_objective.CalculateGradient(m_x, m_gradient);
    m_slope = qxKernels::Dot(m_n, m_gradient.Data(), m_direction.get());
    return std::isfinite(m_f) && std::isfinite(m_slope);
  }

  /// Goes along the direction to a smaller value; where there is none, x, value and gradient stay.
  [[nodiscard]] bool SearchLine(T step) {
    const T slope = qxKernels::Dot(m_n, m_gradient.Data(), m_direction.get());
    if (!(slope < 0) || !(step > 0)) return false;
    qxKernels::Copy(m_n, m_x.Data(), m_start.get());
    qxKernels::Copy(m_n, m_gradient.Data(), m_gradientBefore.get());
    m_fBefore = m_f;
    step = std::min(step, stepMax<T>);
    bool isFinite = EvaluateAt(step);
    for (int i = 0; i < LineSearch<T>::maxEvaluations && !isFinite; ++i) isFinite = EvaluateAt(step /= 10);
    if (isFinite) {
      LineSearch<T> search(RulesWith<T>(Method::curvature), m_fBefore, slope, step, stepMax<T>);
      while (search.Advance(m_f, m_slope) == QX_SEARCH_GOES_ON) {
        if (EvaluateAt(search.Step())) continue;
        static_cast<void>(EvaluateAt(search.BestStep()));  // beyond is where there are no numbers
        break;
      }
    }
    if (m_f < m_fBefore) return true;
    qxKernels::Copy(m_n, m_start.get(), m_x.Data());
    qxKernels::Copy(m_n, m_gradientBefore.get(), m_gradient.Data());
    m_f = m_fBefore;
    return false;
  }

  const DescentTask<T>& m_task;
  const Objective<T>& m_objective;
  CQXVectorN<T>& m_x;
  std::size_t m_n;
  Method m_method;
  CQXVectorN<T> m_gradient;
  qxBlock<T> m_direction;
  qxBlock<T> m_start;
  qxBlock<T> m_gradientBefore;
  T m_f = 0;
  T m_fBefore = 0;
  T m_slope = 0;
  T m_moved = 0;
};

template <typename Method, qxReal T>
T Minimize(const DescentTask<T>& task, CQXVectorN<T>& x, const Objective<T>& objective, QX_OPTIMIZATION_INFO& info) {
  info = QX_OPT_INVALID;
  const T f = objective.Value(x);
  if (!task.IsValid(x)) return f;
  DescentMinimizer<T, Method> minimizer(task, objective, x);
  return minimizer.HasMemory() ? minimizer.Minimize(f, info) : f;
}

}  // namespace

template <qxReal T>
T MinimizeBySteepestDescent(const DescentTask<T>& task, CQXVectorN<T>& x, const Objective<T>& objective,
                            QX_OPTIMIZATION_INFO& info) {
  return Minimize<SteepestDescent<T>>(task, x, objective, info);
}

template <qxReal T>
T MinimizeByConjugateGradient(const DescentTask<T>& task, CQXVectorN<T>& x, const Objective<T>& objective,
                              QX_OPTIMIZATION_INFO& info) {
  return Minimize<PolakRibiere<T>>(task, x, objective, info);
}

template <qxReal T>
T MinimizeByBFGS(const DescentTask<T>& task, CQXVectorN<T>& x, const Objective<T>& objective,
                 QX_OPTIMIZATION_INFO& info) {
  return Minimize<InverseHessian<T>>(task, x, objective, info);
}

#define QX_INSTANTIATE(T)                                                                            \
  template T MinimizeBySteepestDescent(const DescentTask<T>&, CQXVectorN<T>&, const Objective<T>&,   \
                                       QX_OPTIMIZATION_INFO&);                                       \
  template T MinimizeByConjugateGradient(const DescentTask<T>&, CQXVectorN<T>&, const Objective<T>&, \
                                         QX_OPTIMIZATION_INFO&);                                     \
  template T MinimizeByBFGS(const DescentTask<T>&, CQXVectorN<T>&, const Objective<T>&, QX_OPTIMIZATION_INFO&);
QX_FOR_FLOAT_AND_DOUBLE(QX_INSTANTIATE)
#undef QX_INSTANTIATE

}  // namespace qxSolvers
