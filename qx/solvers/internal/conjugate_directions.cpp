#include <qx/foundation/block.h>
#include <qx/foundation/internal/instantiate.h>
#include <qx/kernels/array_kernels.h>
#include <qx/kernels/rotation_kernels.h>
#include <qx/solvers/internal/conjugate_directions.h>
#include <qx/solvers/internal/scalar_minimization.h>
#include <qx/solvers/internal/user_function.h>

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <limits>
#include <utility>

namespace qxSolvers {

namespace {

/// M. J. D. Powell, Computer Journal 7 (1964), with the direction of the largest decrease as the one that goes, where
/// that keeps the directions independent. The directions stand in the rows of a matrix, as long as the last step.
template <qxReal T>
class ConjugateDirections {
 public:
  ConjugateDirections(const DirectTask<T>& task, const Objective<T>& objective, CQXVectorN<T>& x)
      : m_task(task),
        m_objective(objective),
        m_x(x),
        m_n(static_cast<std::size_t>(task.n)),
        m_directions(qxMakeBlock<T>(m_n * m_n)),
        m_start(qxMakeBlock<T>(m_n)),
        m_lineStart(qxMakeBlock<T>(m_n)) {}

  [[nodiscard]] bool HasMemory() const {
    return m_directions != nullptr && m_start != nullptr && m_lineStart != nullptr;
  }

  /// Goes on from x, where the function has the value @p f, until the coordinate directions bring no more either.
  T Minimize(T f, QX_OPTIMIZATION_INFO& info) {
    m_f = std::isnan(f) ? std::numeric_limits<T>::infinity() : f;
    info = QX_OPT_ITERATION_LIMIT;
    bool isFresh = TakeCoordinates();
    for (std::int32_t iteration = 0; iteration < m_task.limit; ++iteration) {
      const QX_OPTIMIZATION_INFO found = Iterate();
      if (found != QX_OPT_IN_PROGRESS && isFresh) {
        info = found;
        break;
      }
      isFresh = found != QX_OPT_IN_PROGRESS && TakeCoordinates();
    }
    return m_f;
  }

 private:
  [[nodiscard]] T* Direction(std::size_t i) { return m_directions.get() + i * m_n; }

  bool TakeCoordinates() {
    qxKernels::SetToZero(m_n * m_n, m_directions.get());
    for (std::size_t i = 0; i < m_n; ++i) Direction(i)[i] = m_task.step;
    return true;
  }

  /// One search along each direction, and one along the way that was gone by them.
  [[nodiscard]] QX_OPTIMIZATION_INFO Iterate() {
    qxKernels::Copy(m_n, m_x.Data(), m_start.get());
    const T before = m_f;
    T largest = 0;
    std::size_t replaced = 0;
    for (std::size_t i = 0; i < m_n; ++i) {
      const T valueBefore = m_f;
      SearchLine(Direction(i));
      if (valueBefore - m_f > largest) {
        largest = valueBefore - m_f;
        replaced = i;
      }
    }
    T* way = m_start.get();
    qxKernels::Difference(m_n, m_x.Data(), way, way);
    const T scale = std::max(std::max(std::abs(before), std::abs(m_f)), T(1));
    if (!(before - m_f > m_task.fTol * scale)) return QX_OPT_FUNCTION_CONVERGED;
    if (std::sqrt(qxKernels::SumOfSquares(m_n, way)) <= m_task.xTol) return QX_OPT_STEP_CONVERGED;
    ReplaceDirection(before, largest, replaced);
    return QX_OPT_IN_PROGRESS;
  }

  /// Takes the way of the iteration for a direction, unless the function has little left to win along it, or the
  /// largest decrease was but a part of the whole.
  void ReplaceDirection(T before, T largest, std::size_t replaced) {
    const T* way = m_start.get();
    qxKernels::Copy(m_n, m_x.Data(), m_lineStart.get());
    const T extrapolated = EvaluateAt(way, 1);
    qxKernels::Copy(m_n, m_lineStart.get(), m_x.Data());
    if (!(extrapolated < before)) return;
    const T total = before - m_f - largest, gain = before - extrapolated;
    if (!(2 * (before - 2 * m_f + extrapolated) * total * total < largest * gain * gain)) return;
    std::swap_ranges(Direction(replaced), Direction(replaced) + m_n, Direction(m_n - 1));
    qxKernels::Copy(m_n, way, Direction(m_n - 1));
    SearchLine(Direction(m_n - 1));
  }

  [[nodiscard]] T EvaluateAt(const T* direction, T t) {
    qxKernels::Copy(m_n, m_lineStart.get(), m_x.Data());
    qxKernels::AddMultiple(m_n, t, direction, m_x.Data());
    const T f = m_objective.Value(m_x);
    return std::isnan(f) ? std::numeric_limits<T>::infinity() : f;
  }

  /// A line with its start at 1, so that the relative tolerance of the search along it is one of the step.
  struct Line {
    ConjugateDirections* owner;
    const T* direction;
    [[nodiscard]] T At(T t) const { return owner->EvaluateAt(direction, t - 1); }
    static T Call(T t, void* line) { return static_cast<const Line*>(line)->At(t); }
  };

  /// Moves x to the minimum along the direction, which is scaled to the step that was gone (within a factor of 8).
  void SearchLine(T* direction) {
    constexpr T growth = T(1.61803399), tolerance = T(0.001);
    constexpr int maxTrials = 60;
    qxKernels::Copy(m_n, m_x.Data(), m_lineStart.get());
    Line line{this, direction};
    T a = 1, b = 2, fa = m_f, fb = line.At(b);
    if (!(fb <= fa)) {
      std::swap(a, b);
      std::swap(fa, fb);
    }
    T c = b + growth * (b - a), fc = line.At(c);
    for (int trial = 0; fc < fb && trial < maxTrials; ++trial) {
      a = b;
      b = c;
      fb = fc;
      c = b + growth * (b - a);
      fc = line.At(c);
    }
    T t = 1;
    const T least = MinimizeByParabolas(a, b, c, tolerance, t, UserFunction<T>{Line::Call, &line});
    const bool isLower = least < m_f;
    qxKernels::Copy(m_n, m_lineStart.get(), m_x.Data());
    if (isLower) {
      qxKernels::AddMultiple(m_n, t - 1, direction, m_x.Data());
      m_f = least;
    }
    qxKernels::Multiply(m_n, isLower ? std::clamp(std::abs(t - 1), T(0.125), T(8)) : T(0.125), direction);
  }

  const DirectTask<T>& m_task;
  const Objective<T>& m_objective;
  CQXVectorN<T>& m_x;
  std::size_t m_n;
  qxBlock<T> m_directions;
  qxBlock<T> m_start;  // of an iteration, then the way from there
  qxBlock<T> m_lineStart;
  T m_f = 0;
};

}  // namespace

template <qxReal T>
T MinimizeByConjugateDirections(const DirectTask<T>& task, CQXVectorN<T>& x, const Objective<T>& objective,
                                QX_OPTIMIZATION_INFO& info) {
  info = QX_OPT_INVALID;
  const T f = objective.Value(x);
  if (!task.IsValid(x)) return f;
  ConjugateDirections<T> method(task, objective, x);
  return method.HasMemory() ? method.Minimize(f, info) : f;
}

#define QX_INSTANTIATE(T)                                                                             \
  template T MinimizeByConjugateDirections(const DirectTask<T>&, CQXVectorN<T>&, const Objective<T>&, \
                                           QX_OPTIMIZATION_INFO&);
QX_FOR_FLOAT_AND_DOUBLE(QX_INSTANTIATE)
#undef QX_INSTANTIATE

}  // namespace qxSolvers
