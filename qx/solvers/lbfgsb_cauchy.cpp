#include <qx/kernels/array_kernels.h>
#include <qx/kernels/rotation_kernels.h>
#include <qx/solvers/internal/bounded_minimizer.h>

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <limits>

namespace qxSolvers {

namespace {

template <qxReal T>
T Dot(std::int32_t count, const T* a, const T* b) {
  return qxKernels::Dot(static_cast<std::size_t>(count), a, b);
}

}  // namespace

/// The first local minimum of the model along the projected gradient: R. H. Byrd et al. (1995), algorithm CP. Sets the
/// target, the states of the variables and W'(target - x). False when the model could not be factored.
template <qxReal T>
bool BoundedMinimizer<T>::FindCauchyPoint() {
  const T* x = m_x.Data();
  const T* gradient = m_gradient.Data();
  const T* lower = m_lower.get();
  const T* upper = m_upper.get();
  T* direction = m_direction.get();
  std::int32_t* states = m_boundState.get();
  for (std::size_t i = 0; i < m_count; ++i) {
    const T down = -gradient[i];
    const bool isAtLower = x[i] <= lower[i];
    const bool isAtUpper = x[i] >= upper[i];
    const bool isBlocked = (isAtLower && down <= 0) || (isAtUpper && down >= 0);
    direction[i] = isBlocked ? T(0) : down;
    std::int32_t state = isAtLower ? QX_STATE_LOWER : QX_STATE_UPPER;
    if (!isBlocked) state = down == 0 ? QX_STATE_FLAT : QX_STATE_FREE;
    if (states[i] != QX_STATE_FIXED && states[i] != QX_STATE_NO_BOUND) states[i] = state;
  }
  qxKernels::Copy(m_count, x, m_target.get());
  const std::int32_t size = 2 * m_memory.Count();
  std::fill_n(SmallVector(1), size, T(0));
  const T f1 = -qxKernels::SumOfSquares(m_count, direction);
  T* p = SmallVector(0);  // W' direction
  T* c = SmallVector(1);  // W'(target - x)
  T* product = SmallVector(2);
  if (!m_memory.Complete(direction, p)) return false;
  T f2 = -m_memory.Theta() * f1;
  if (size > 0) {
    m_memory.MultiplyByMiddle(p, product);
    f2 = std::max(std::numeric_limits<T>::epsilon() * f2, f2 - Dot(size, product, p));
  }
  const T way = f1 < 0 ? -f1 / f2 : T(0);  // to the minimum of the model, when no bound is met before
  std::size_t blocking = m_count;
  static_cast<void>(FeasiblePart(x, way, blocking));
  if (blocking == m_count) {
    qxKernels::AddMultiple(m_count, way, direction, m_target.get());
    qxKernels::AddMultiple(static_cast<std::size_t>(size), way, p, c);
  } else {
    PassBreakpoints(f1, f2, way);
  }
  return true;
}

/// Follows the piecewise linear path from one breakpoint to the next until the model has its minimum in between.
/// Variables that meet their bound are put there and leave the direction.
/// @param f1,f2 slope and curvature of the model along the direction
/// @param way from the last breakpoint to the minimum of the model
template <qxReal T>
void BoundedMinimizer<T>::PassBreakpoints(T f1, T f2, T way) {
  const std::int32_t size = 2 * m_memory.Count();
  const std::size_t smallCount = static_cast<std::size_t>(size);
  T* p = SmallVector(0);
  T* c = SmallVector(1);
  T* product = SmallVector(2);
  T* row = SmallVector(3);
  const T* x = m_x.Data();
  const T theta = m_memory.Theta();
  const T smallest = std::numeric_limits<T>::epsilon() * -theta * f1;

  std::int32_t* order = m_order.get();
  const T* breakpoints = m_breakpoints.get();
  std::size_t left = 0;
  bool isBounded = true;  // all variables that move meet a bound
  for (std::size_t i = 0; i < m_count; ++i) {
    const T change = m_direction[i];
    if (change == 0) continue;
    const T room = change < 0 ? x[i] - m_lower[i] : m_upper[i] - x[i];
    m_breakpoints[i] = room / std::abs(change);
    if (room <= std::numeric_limits<T>::max()) {
      order[left++] = static_cast<std::int32_t>(i);
    } else {
      isBounded = false;
    }
  }
  const bool areAllToMeetBounds = left == m_count;
  // A heap by the breakpoints; equal ones by the index, so that the order does not depend on the heap.
  const auto isLater = [breakpoints](std::int32_t a, std::int32_t b) {
    return breakpoints[a] > breakpoints[b] || (breakpoints[a] == breakpoints[b] && a > b);
  };
  std::make_heap(order, order + left, isLater);
  T passed = 0;
  while (left > 0) {
    std::pop_heap(order, order + left, isLater);
    const std::size_t i = static_cast<std::size_t>(order[--left]);
    const T interval = breakpoints[i] - passed;
    if (way < interval) break;
    passed = breakpoints[i];
    const T change = m_direction[i];
    m_direction[i] = 0;
    m_target[i] = change > 0 ? m_upper[i] : m_lower[i];
    m_boundState[i] = change > 0 ? QX_STATE_UPPER : QX_STATE_LOWER;
    qxKernels::AddMultiple(smallCount, interval, p, c);
    if (left == 0 && areAllToMeetBounds) return;
    const T moved = m_target[i] - x[i];
    f1 += interval * f2 + change * change - theta * change * moved;
    f2 -= theta * change * change;
    if (size > 0) {
      m_memory.GetRow(static_cast<std::int32_t>(i), row);
      m_memory.MultiplyByMiddle(row, product);
      f1 += change * Dot(size, c, product);
      f2 += 2 * change * Dot(size, p, product) - change * change * Dot(size, row, product);
      qxKernels::AddMultiple(smallCount, -change, row, p);
    }
    f2 = std::max(smallest, f2);
    way = left == 0 && isBounded ? T(0) : -f1 / f2;
  }
  if (way <= 0) way = 0;
  qxKernels::AddMultiple(smallCount, way, p, c);
  qxKernels::AddMultiple(m_count, passed + way, m_direction.get(), m_target.get());
}

template bool BoundedMinimizer<float>::FindCauchyPoint();
template bool BoundedMinimizer<double>::FindCauchyPoint();

}  // namespace qxSolvers
