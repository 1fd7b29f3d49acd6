#include <qx/foundation/block.h>
#include <qx/foundation/internal/instantiate.h>
#include <qx/kernels/array_kernels.h>
#include <qx/solvers/internal/simplex_descent.h>

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <limits>

namespace qxSolvers {

namespace {

/// The simplex of n + 1 points with their values, and the vector in which a point is evaluated.
///
/// The factors depend on the dimension: F. Gao and L. Han, Implementing the Nelder-Mead simplex algorithm with adaptive
/// parameters, Comput. Optim. Appl. 51 (2012); for n = 2 they are those of J. A. Nelder and R. Mead (1965).
template <qxReal T>
class Simplex {
 public:
  Simplex(const DirectTask<T>& task, const Objective<T>& objective, CQXVectorN<T>& x)
      : m_task(task),
        m_objective(objective),
        m_x(x),
        m_n(static_cast<std::size_t>(task.n)),
        m_points(qxMakeBlock<T>((m_n + 1) * m_n)),
        m_values(qxMakeBlock<T>(m_n + 1)),
        m_centre(qxMakeBlock<T>(m_n)),
        m_trials(qxMakeBlock<T>(2 * m_n)) {}

  [[nodiscard]] bool HasMemory() const {
    return m_points != nullptr && m_values != nullptr && m_centre != nullptr && m_trials != nullptr;
  }

  /// Goes on from x, where the function has the value @p f, until a new simplex around the best point brings no more.
  T Minimize(T f, QX_OPTIMIZATION_INFO& info) {
    m_evaluations = 1;
    f = Comparable(f);
    for (;;) {
      const T before = f;
      info = Descend(f);
      f = m_values[m_best];
      qxKernels::Copy(m_n, Point(m_best), m_x.Data());
      const T scale = std::max(std::max(std::abs(before), std::abs(f)), T(1));
      if (info == QX_OPT_ITERATION_LIMIT || !(before - f > m_task.fTol * scale)) return f;
    }
  }

 private:
  [[nodiscard]] T* Point(std::size_t i) { return m_points.get() + i * m_n; }
  /// Not a number is as bad as infinite.
  [[nodiscard]] static T Comparable(T f) { return std::isnan(f) ? std::numeric_limits<T>::infinity() : f; }

  [[nodiscard]] T Evaluate(const T* point) {
    qxKernels::Copy(m_n, point, m_x.Data());
    ++m_evaluations;
    return Comparable(m_objective.Value(m_x));
  }

  void Build(T f) {
    for (std::size_t i = 0; i <= m_n; ++i) qxKernels::Copy(m_n, m_x.Data(), Point(i));
    m_values[0] = f;
    for (std::size_t i = 1; i <= m_n; ++i) {
      Point(i)[i - 1] += m_task.step;
      m_values[i] = Evaluate(Point(i));
    }
    Rank();
  }

  /// Finds the best, the worst and the second worst point, of equal ones the first.
  void Rank() {
    m_best = m_worst = 0;
    for (std::size_t i = 1; i <= m_n; ++i) {
      if (m_values[i] < m_values[m_best]) m_best = i;
      if (m_values[i] > m_values[m_worst]) m_worst = i;
    }
    if (m_worst == m_best) m_worst = m_best == 0 ? 1 : 0;  // all are equal
    m_secondWorst = m_best;
    for (std::size_t i = 0; i <= m_n; ++i) {
      if (i != m_worst && m_values[i] > m_values[m_secondWorst]) m_secondWorst = i;
    }
  }

  /// Largest distance of a coordinate from that of the best point.
  [[nodiscard]] T Size() {
    T size = 0;
    for (std::size_t i = 0; i <= m_n; ++i) {
      for (std::size_t k = 0; k < m_n; ++k) size = std::max(size, std::abs(Point(i)[k] - Point(m_best)[k]));
    }
    return size;
  }

  [[nodiscard]] QX_OPTIMIZATION_INFO Descend(T f) {
    Build(f);
    for (;;) {
      const T spread = m_values[m_worst] - m_values[m_best];
      if (spread <= m_task.fTol * std::max(std::abs(m_values[m_best]), T(1))) return QX_OPT_FUNCTION_CONVERGED;
      if (Size() <= m_task.xTol) return QX_OPT_STEP_CONVERGED;
      if (m_evaluations >= m_task.limit) return QX_OPT_ITERATION_LIMIT;
      Improve();
      Rank();
    }
  }

  /// Evaluates centre + factor (worst - centre).
  [[nodiscard]] T Try(T factor, T* point) {
    qxKernels::Difference(m_n, Point(m_worst), m_centre.get(), point);
    qxKernels::Multiply(m_n, factor, point);
    qxKernels::Add(m_n, m_centre.get(), point);
    return Evaluate(point);
  }
  void ReplaceWorst(const T* point, T value) {
    qxKernels::Copy(m_n, point, Point(m_worst));
    m_values[m_worst] = value;
  }

  /// Replaces the worst point by one on the line through the middle of the others, or draws all towards the best.
  void Improve() {
    const T dimension = static_cast<T>(std::max(m_n, std::size_t(2)));
    const T expansion = 1 + 2 / dimension, contraction = T(0.75) - 1 / (2 * dimension);
    qxKernels::SetToZero(m_n, m_centre.get());
    for (std::size_t i = 0; i <= m_n; ++i) {
      if (i != m_worst) qxKernels::Add(m_n, Point(i), m_centre.get());
    }
    qxKernels::Divide(m_n, static_cast<T>(m_n), m_centre.get());
    T* const reflection = m_trials.get();
    T* const trial = reflection + m_n;
    const T reflected = Try(-1, reflection);
    if (reflected < m_values[m_best]) {
      const T expanded = Try(-expansion, trial);
      expanded < reflected ? ReplaceWorst(trial, expanded) : ReplaceWorst(reflection, reflected);
    } else if (reflected < m_values[m_secondWorst]) {
      ReplaceWorst(reflection, reflected);
    } else {
      const T contracted = Try(reflected < m_values[m_worst] ? -contraction : contraction, trial);
      if (contracted < std::min(reflected, m_values[m_worst])) {
        ReplaceWorst(trial, contracted);
      } else {
        Shrink(1 - 1 / dimension);
      }
    }
  }

  void Shrink(T factor) {
    const T* best = Point(m_best);
    for (std::size_t i = 0; i <= m_n; ++i) {
      if (i == m_best) continue;
      T* point = Point(i);
      for (std::size_t k = 0; k < m_n; ++k) point[k] = best[k] + factor * (point[k] - best[k]);
      m_values[i] = Evaluate(point);
    }
  }

  const DirectTask<T>& m_task;
  const Objective<T>& m_objective;
  CQXVectorN<T>& m_x;
  std::size_t m_n;
  qxBlock<T> m_points;
  qxBlock<T> m_values;
  qxBlock<T> m_centre;  // of all points but the worst
  qxBlock<T> m_trials;
  std::size_t m_best = 0;
  std::size_t m_worst = 0;
  std::size_t m_secondWorst = 0;
  std::int64_t m_evaluations = 0;
};

}  // namespace

template <qxReal T>
T MinimizeBySimplex(const DirectTask<T>& task, CQXVectorN<T>& x, const Objective<T>& objective,
                    QX_OPTIMIZATION_INFO& info) {
  info = QX_OPT_INVALID;
  const T f = objective.Value(x);
  if (!task.IsValid(x)) return f;
  Simplex<T> simplex(task, objective, x);
  return simplex.HasMemory() ? simplex.Minimize(f, info) : f;
}

#define QX_INSTANTIATE(T) \
  template T MinimizeBySimplex(const DirectTask<T>&, CQXVectorN<T>&, const Objective<T>&, QX_OPTIMIZATION_INFO&);
QX_FOR_FLOAT_AND_DOUBLE(QX_INSTANTIATE)
#undef QX_INSTANTIATE

}  // namespace qxSolvers
