#include <qx/foundation/internal/instantiate.h>
#include <qx/kernels/array_kernels.h>
#include <qx/kernels/rotation_kernels.h>
#include <qx/solvers/internal/cauchy_point.h>

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <limits>

namespace qxSolvers {

namespace {

/// The way along the projected gradient, from one breakpoint to the next.
template <qxReal T>
class ProjectedPath {
 public:
  explicit ProjectedPath(BoundedState<T>& state)
      : m_state(state),
        m_size(2 * static_cast<std::size_t>(state.memory.Count())),
        m_p(state.SmallVector(0)),
        m_c(state.SmallVector(1)),
        m_product(state.SmallVector(2)),
        m_row(state.SmallVector(3)) {}

  [[nodiscard]] bool FindMinimum();

 private:
  void Project();
  void CollectBreakpoints();
  void PassBreakpoints();
  void LeaveAtBound(std::size_t i, T interval);

  BoundedState<T>& m_state;
  std::size_t m_size;
  T* m_p;  // W' direction
  T* m_c;  // W'(target - x)
  T* m_product;
  T* m_row;
  T m_slope = 0;            // of the model along the direction
  T m_curvature = 0;        // likewise
  T m_way = 0;              // from the last breakpoint to the minimum of the model, when no bound is met before
  std::size_t m_left = 0;   // breakpoints that are still ahead
  bool m_isBounded = true;  // all variables that move meet a bound
};

/// The direction of steepest descent, with zeros where it leaves the bounds, and the states of the variables.
template <qxReal T>
void ProjectedPath<T>::Project() {
  const T* x = m_state.x.Data();
  const T* gradient = m_state.gradient.Data();
  const T* lower = m_state.lower.get();
  const T* upper = m_state.upper.get();
  T* direction = m_state.direction.get();
  std::int32_t* states = m_state.boundState.get();
  for (std::size_t i = 0; i < m_state.count; ++i) {
    const T down = -gradient[i];
    const bool isAtLower = x[i] <= lower[i];
    const bool isAtUpper = x[i] >= upper[i];
    const bool isBlocked = (isAtLower && down <= 0) || (isAtUpper && down >= 0);
    direction[i] = isBlocked ? T(0) : down;
    std::int32_t bound = isAtLower ? QX_STATE_LOWER : QX_STATE_UPPER;
    if (!isBlocked) bound = down == 0 ? QX_STATE_FLAT : QX_STATE_FREE;
    if (states[i] != QX_STATE_FIXED && states[i] != QX_STATE_NO_BOUND) states[i] = bound;
  }
}

template <qxReal T>
bool ProjectedPath<T>::FindMinimum() {
  Project();
  const std::size_t count = m_state.count;
  const T* direction = m_state.direction.get();
  qxKernels::Copy(count, m_state.x.Data(), m_state.target.get());
  std::fill_n(m_c, m_size, T(0));
  m_slope = -qxKernels::SumOfSquares(count, direction);
  if (!m_state.memory.Complete(direction, m_p)) return false;
  m_curvature = -m_state.memory.Theta() * m_slope;
  if (m_size > 0) {
    m_state.memory.MultiplyByMiddle(m_p, m_product);
    m_curvature =
        std::max(std::numeric_limits<T>::epsilon() * m_curvature, m_curvature - qxKernels::Dot(m_size, m_product, m_p));
  }
  m_way = m_slope < 0 ? -m_slope / m_curvature : T(0);
  std::size_t blocking = count;
  static_cast<void>(m_state.FeasiblePart(m_state.x.Data(), m_way, blocking));
  if (blocking == count) {
    qxKernels::AddMultiple(count, m_way, direction, m_state.target.get());
    qxKernels::AddMultiple(m_size, m_way, m_p, m_c);
  } else {
    CollectBreakpoints();
    PassBreakpoints();
  }
  return true;
}

template <qxReal T>
void ProjectedPath<T>::CollectBreakpoints() {
  const T* x = m_state.x.Data();
  for (std::size_t i = 0; i < m_state.count; ++i) {
    const T change = m_state.direction[i];
    if (change == 0) continue;
    const T room = change < 0 ? x[i] - m_state.lower[i] : m_state.upper[i] - x[i];
    m_state.breakpoints[i] = room / std::abs(change);
    if (room <= std::numeric_limits<T>::max()) {
      m_state.order[m_left++] = static_cast<std::int32_t>(i);
    } else {
      m_isBounded = false;
    }
  }
}

/// Follows the piecewise linear path from one breakpoint to the next until the model has its minimum in between.
template <qxReal T>
void ProjectedPath<T>::PassBreakpoints() {
  const T smallest = std::numeric_limits<T>::epsilon() * -m_state.memory.Theta() * m_slope;
  const bool areAllToMeetBounds = m_left == m_state.count;
  const T* breakpoints = m_state.breakpoints.get();
  std::int32_t* order = m_state.order.get();
  // A heap by the breakpoints; equal ones by the index, so that the order does not depend on the heap.
  const auto isLater = [breakpoints](std::int32_t a, std::int32_t b) {
    return breakpoints[a] > breakpoints[b] || (breakpoints[a] == breakpoints[b] && a > b);
  };
  std::make_heap(order, order + m_left, isLater);
  T passed = 0;
  while (m_left > 0) {
    std::pop_heap(order, order + m_left, isLater);
    const std::size_t i = static_cast<std::size_t>(order[--m_left]);
    const T interval = breakpoints[i] - passed;
    if (m_way < interval) break;
    passed = breakpoints[i];
    LeaveAtBound(i, interval);
    if (m_left == 0 && areAllToMeetBounds) return;
    m_curvature = std::max(smallest, m_curvature);
    m_way = m_left == 0 && m_isBounded ? T(0) : -m_slope / m_curvature;
  }
  if (m_way <= 0) m_way = 0;
  qxKernels::AddMultiple(m_size, m_way, m_p, m_c);
  qxKernels::AddMultiple(m_state.count, passed + m_way, m_state.direction.get(), m_state.target.get());
}

/// Puts variable @p i on its bound, @p interval after the last breakpoint: it leaves the direction and the model along
/// it.
template <qxReal T>
void ProjectedPath<T>::LeaveAtBound(std::size_t i, T interval) {
  const T change = m_state.direction[i];
  m_state.direction[i] = 0;
  m_state.target[i] = change > 0 ? m_state.upper[i] : m_state.lower[i];
  m_state.boundState[i] = change > 0 ? QX_STATE_UPPER : QX_STATE_LOWER;
  qxKernels::AddMultiple(m_size, interval, m_p, m_c);
  const T theta = m_state.memory.Theta();
  const T moved = m_state.target[i] - m_state.x.Data()[i];
  m_slope += interval * m_curvature + change * change - theta * change * moved;
  m_curvature -= theta * change * change;
  if (m_size == 0) return;
  m_state.memory.GetRow(static_cast<std::int32_t>(i), m_row);
  m_state.memory.MultiplyByMiddle(m_row, m_product);
  m_slope += change * qxKernels::Dot(m_size, m_c, m_product);
  m_curvature +=
      2 * change * qxKernels::Dot(m_size, m_p, m_product) - change * change * qxKernels::Dot(m_size, m_row, m_product);
  qxKernels::AddMultiple(m_size, -change, m_row, m_p);
}

}  // namespace

template <qxReal T>
bool FindCauchyPoint(BoundedState<T>& state) {
  return ProjectedPath<T>(state).FindMinimum();
}

#define QX_INSTANTIATE(T) template bool FindCauchyPoint(BoundedState<T>&);
QX_FOR_FLOAT_AND_DOUBLE(QX_INSTANTIATE)
#undef QX_INSTANTIATE

}  // namespace qxSolvers
