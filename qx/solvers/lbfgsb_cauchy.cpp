#include <qx/kernels/array_kernels.h>
#include <qx/kernels/optimization_kernels.h>
#include <qx/solvers/internal/bounded_minimizer.h>

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <limits>

namespace qxSolvers {

namespace {

template <typename T>
T Dot(std::int32_t count, const T* a, const T* b) {
  return qxKernels::Dot(static_cast<std::size_t>(count), a, b);
}

}  // namespace

/// The first local minimum of the model along the projected gradient: R. H. Byrd et al. (1995), algorithm CP. Sets the
/// target, the states of the variables and W'(target - x).
template <typename T>
void BoundedMinimizer<T>::FindCauchyPoint() {
  const std::size_t count = static_cast<std::size_t>(m_n);
  const T* x = m_x.Data();
  const T* gradient = m_gradient.Data();
  std::int32_t breakpointCount = 0;
  std::int32_t movingCount = 0;
  std::int32_t first = 0;  // the variable with the smallest breakpoint
  bool isBounded = true;   // all variables that move meet a bound
  for (std::int32_t i = 0; i < m_n; ++i) {
    const T down = -gradient[i];
    std::int32_t& state = m_boundState[static_cast<std::size_t>(i)];
    if (state != QX_STATE_FIXED && state != QX_STATE_NO_BOUND) {
      const bool isAtLower = m_bounds.HasLower(i) && x[i] - m_bounds.lower[i] <= 0;
      const bool isAtUpper = m_bounds.HasUpper(i) && m_bounds.upper[i] - x[i] <= 0;
      state = QX_STATE_FREE;
      if (isAtLower) {
        if (down <= 0) state = QX_STATE_LOWER;
      } else if (isAtUpper) {
        if (down >= 0) state = QX_STATE_UPPER;
      } else if (std::abs(down) <= 0) {
        state = QX_STATE_FLAT;
      }
    }
    if (state != QX_STATE_FREE && state != QX_STATE_NO_BOUND) {
      m_direction[static_cast<std::size_t>(i)] = 0;
      continue;
    }
    m_direction[static_cast<std::size_t>(i)] = down;
    const bool meetsLower = m_bounds.HasLower(i) && down < 0;
    const bool meetsUpper = m_bounds.HasUpper(i) && down > 0;
    if (meetsLower || meetsUpper) {
      const T room = meetsLower ? x[i] - m_bounds.lower[i] : m_bounds.upper[i] - x[i];
      m_breakpoints[static_cast<std::size_t>(i)] = room / std::abs(down);
      if (breakpointCount == 0 ||
          m_breakpoints[static_cast<std::size_t>(i)] < m_breakpoints[static_cast<std::size_t>(first)]) {
        first = i;
      }
      m_order[static_cast<std::size_t>(breakpointCount++)] = i;
    } else {
      ++movingCount;
      if (std::abs(down) > 0) isBounded = false;
    }
  }
  qxKernels::Copy(count, x, m_target.get());
  std::fill_n(SmallVector(1), 2 * m_memory.Count(), T(0));
  if (breakpointCount == 0 && movingCount == 0) return;
  m_memory.MultiplyByTransposed(m_direction.get(), SmallVector(0));
  qxKernels::AddMultiple(count, m_target.get(), PassBreakpoints(breakpointCount, first, isBounded), m_direction.get());
}

/// Follows the piecewise linear path from one breakpoint to the next until the model has its minimum in between.
/// Variables that meet their bound are put there and leave the direction.
/// @return how far the others move along the direction.
template <typename T>
T BoundedMinimizer<T>::PassBreakpoints(std::int32_t breakpointCount, std::int32_t first, bool isBounded) {
  const std::int32_t size = 2 * m_memory.Count();
  T* p = SmallVector(0);  // W' direction
  T* c = SmallVector(1);  // W'(target - x)
  T* product = SmallVector(2);
  T* row = SmallVector(3);
  const T theta = m_memory.Theta();
  T f1 = -qxKernels::SumOfSquares(static_cast<std::size_t>(m_n), m_direction.get());
  T f2 = -theta * f1;
  const T smallest = std::numeric_limits<T>::epsilon() * f2;
  if (size > 0) {
    m_memory.MultiplyByMiddle(p, product);
    f2 = std::max(smallest, f2 - Dot(size, product, p));
  }
  T way = -f1 / f2;  // from the last breakpoint to the minimum of the model
  T passed = 0;
  std::int32_t* order = m_order.get();
  const auto isLater = [this](std::int32_t a, std::int32_t b) {
    const T breakpointA = m_breakpoints[static_cast<std::size_t>(a)];
    const T breakpointB = m_breakpoints[static_cast<std::size_t>(b)];
    return breakpointA > breakpointB || (breakpointA == breakpointB && a > b);
  };
  // Most often the minimum comes before the first breakpoint, and no heap is needed.
  std::int32_t left = breakpointCount;
  if (left > 0 && way < m_breakpoints[static_cast<std::size_t>(first)]) left = 0;
  std::make_heap(order, order + left, isLater);
  while (left > 0) {
    std::pop_heap(order, order + left, isLater);
    const std::int32_t i = order[--left];
    const std::size_t at = static_cast<std::size_t>(i);
    const T interval = m_breakpoints[at] - passed;
    if (way < interval) break;
    passed = m_breakpoints[at];
    const T change = m_direction[at];
    m_direction[at] = 0;
    m_target[at] = change > 0 ? m_bounds.upper[i] : m_bounds.lower[i];
    m_boundState[at] = change > 0 ? QX_STATE_UPPER : QX_STATE_LOWER;
    qxKernels::AddMultiple(static_cast<std::size_t>(size), c, interval, p);
    if (left == 0 && breakpointCount == m_n) return 0;  // all variables are at their bounds
    const T moved = m_target[at] - m_x[i];
    f1 += interval * f2 + change * change - theta * change * moved;
    f2 -= theta * change * change;
    if (size > 0) {
      m_memory.GetRow(i, row);
      m_memory.MultiplyByMiddle(row, product);
      f1 += change * Dot(size, c, product);
      f2 += 2 * change * Dot(size, p, product) - change * change * Dot(size, row, product);
      qxKernels::AddMultiple(static_cast<std::size_t>(size), p, -change, row);
    }
    f2 = std::max(smallest, f2);
    way = left == 0 && isBounded ? T(0) : -f1 / f2;
  }
  if (way <= 0) way = 0;
  qxKernels::AddMultiple(static_cast<std::size_t>(size), c, way, p);
  return passed + way;
}

template void BoundedMinimizer<float>::FindCauchyPoint();
template void BoundedMinimizer<double>::FindCauchyPoint();

}  // namespace qxSolvers
