#include <qx/foundation/internal/instantiate.h>
#include <qx/kernels/array_kernels.h>
#include <qx/solvers/internal/bounded_state.h>

#include <algorithm>
#include <cmath>
#include <limits>

namespace qxSolvers {

template <qxReal T>
BoundedState<T>::BoundedState(std::int32_t variables, std::int32_t m, CQXVectorN<T>& point)
    : n(variables),
      count(static_cast<std::size_t>(variables)),
      smallSize(2 * static_cast<std::size_t>(m)),
      x(point),
      gradient(variables),
      memory(variables, m),
      subspace(variables, m),
      lower(qxMakeBlock<T>(count)),
      upper(qxMakeBlock<T>(count)),
      target(qxMakeBlock<T>(count)),
      direction(qxMakeBlock<T>(count)),
      start(qxMakeBlock<T>(count)),
      gradientBefore(qxMakeBlock<T>(count)),
      breakpoints(qxMakeBlock<T>(count)),
      small(qxMakeBlock<T>(4 * smallSize)),
      order(qxMakeBlock<std::int32_t>(count)),
      freeIndex(qxMakeBlock<std::int32_t>(count)),
      entering(qxMakeBlock<std::int32_t>(count)),
      boundState(qxMakeBlock<std::int32_t>(count)),
      freeVariables{freeIndex.get(), entering.get()} {}

template <qxReal T>
bool BoundedState<T>::HasMemory() const {
  return gradient.Data() != nullptr && memory.HasMemory() && subspace.HasMemory() && lower != nullptr &&
         upper != nullptr && target != nullptr && direction != nullptr && start != nullptr &&
         gradientBefore != nullptr && breakpoints != nullptr && small != nullptr && order != nullptr &&
         freeIndex != nullptr && entering != nullptr && boundState != nullptr;
}

template <qxReal T>
void BoundedState<T>::Initialize(const Bounds<T>& bounds) {
  constexpr T infinity = std::numeric_limits<T>::infinity();
  for (std::size_t i = 0; i < count; ++i) {
    const QX_OPTIMIZATION_CONSTRAINTS kind = bounds.kinds[i];
    lower[i] = kind == QX_LOWER_BOUND || kind == QX_BOTH_BOUNDS ? bounds.lower[i] : -infinity;
    upper[i] = kind == QX_UPPER_BOUND || kind == QX_BOTH_BOUNDS ? bounds.upper[i] : infinity;
    T& component = x.Data()[i];
    component = Keep(i, component);
    boundState[i] = QX_STATE_FREE;
    if (kind == QX_UNCONSTRAINED) boundState[i] = QX_STATE_NO_BOUND;
    if (kind == QX_BOTH_BOUNDS && upper[i] - lower[i] <= 0) boundState[i] = QX_STATE_FIXED;
    if (kind != QX_BOTH_BOUNDS) isBoxed = false;
  }
}

template <qxReal T>
T BoundedState<T>::ProjectedGradientNorm() const {
  const T* at = x.Data();
  const T* slopes = gradient.Data();
  const T square = qxKernels::SumOfSquares(count, slopes);
  if (std::isnan(square)) return square;
  constexpr std::size_t lanes = 8;  // the maxima of a strip do not wait for one another
  T norms[lanes] = {};
  const auto include = [&](std::size_t i, T& norm) {
    const T toLower = at[i] - lower[i];
    const T toUpper = at[i] - upper[i];
    T slope = slopes[i];
    slope = slope > toLower ? toLower : slope;
    slope = slope < toUpper ? toUpper : slope;
    const T magnitude = std::abs(slope);
    norm = magnitude > norm ? magnitude : norm;
  };
  const std::size_t whole = count - count % lanes;
  for (std::size_t i = 0; i < whole; i += lanes) {
    for (std::size_t k = 0; k < lanes; ++k) include(i + k, norms[k]);
  }
  for (std::size_t i = whole; i < count; ++i) include(i, norms[0]);
  return *std::max_element(norms, norms + lanes);
}

template <qxReal T>
T BoundedState<T>::FeasiblePart(const T* origin, T part, std::size_t& blocking) const {
  const T* way = direction.get();
  const T* low = lower.get();
  const T* high = upper.get();
  for (std::size_t i = 0; i < count; ++i) {
    const T room = std::abs((way[i] < 0 ? low[i] : high[i]) - origin[i]);
    const T change = std::abs(way[i]);
    if (change * part > room) {
      part = room / change;
      blocking = i;
    }
  }
  return part;
}

template <qxReal T>
void BoundedState<T>::ForgetModel() {
  memory.Reset();
  subspace.Reset();
  isAppended = false;
  isFactored = false;
}

#define QX_INSTANTIATE(T) template struct BoundedState<T>;
QX_FOR_FLOAT_AND_DOUBLE(QX_INSTANTIATE)
#undef QX_INSTANTIATE

}  // namespace qxSolvers
