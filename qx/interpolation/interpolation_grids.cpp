#include <qx/foundation/conversion.h>
#include <qx/foundation/internal/instantiate.h>
#include <qx/interpolation/interpolation.h>

#include <algorithm>
#include <cstddef>
#include <cstdint>

namespace {

/// A coordinate along one side of a grid: the sample before it and the fraction of the way to the next one.
template <qxReal T>
struct Place {
  Place(std::int32_t samples, T x) : count(samples) {
    const T last = static_cast<T>(samples - 1);
    const T inside = x < 0 ? T(0) : x > last ? last : x;
    index = std::clamp(qxToInt32(static_cast<double>(inside)), std::int32_t(0), samples - 1);
    fraction = inside - static_cast<T>(index);
  }
  /// A neighbour of the sample before, at the border the border's.
  [[nodiscard]] std::size_t Neighbour(std::int32_t offset) const {
    const std::int64_t place = std::int64_t(index) + offset;
    return static_cast<std::size_t>(std::clamp<std::int64_t>(place, 0, count - 1));
  }

  std::int32_t count;
  std::int32_t index;
  T fraction;
};

/// The cubic between two of four samples, with half the difference of the neighbours as slopes.
template <qxReal T>
T CubicBetween(const T (&y)[4], T u) {
  return CQXInterpolation::Hermite(y[1], (y[2] - y[0]) / 2, y[2], (y[3] - y[1]) / 2, T(1), u);
}

}  // namespace

template <qxReal T>
T CQXInterpolation::GridBilinear(std::int32_t rows, std::int32_t columns, const T* data, Time<T> x,
                                 Time<T> y) noexcept {
  if (rows < 1 || columns < 1) return 0;
  const Place<T> px(columns, x), py(rows, y);
  const T* upper = data + py.Neighbour(0) * static_cast<std::size_t>(columns);
  const T* lower = data + py.Neighbour(1) * static_cast<std::size_t>(columns);
  const std::size_t left = px.Neighbour(0), right = px.Neighbour(1);
  return ScalarsLinear(ScalarsLinear(upper[left], upper[right], px.fraction),
                       ScalarsLinear(lower[left], lower[right], px.fraction), py.fraction);
}

template <qxReal T>
T CQXInterpolation::GridBicubic(std::int32_t rows, std::int32_t columns, const T* data, Time<T> x, Time<T> y) noexcept {
  if (rows < 1 || columns < 1) return 0;
  const Place<T> px(columns, x), py(rows, y);
  T down[4];
  for (std::int32_t r = 0; r < 4; ++r) {
    const T* row = data + py.Neighbour(r - 1) * static_cast<std::size_t>(columns);
    const T across[] = {row[px.Neighbour(-1)], row[px.Neighbour(0)], row[px.Neighbour(1)], row[px.Neighbour(2)]};
    down[r] = CubicBetween(across, px.fraction);
  }
  return CubicBetween(down, py.fraction);
}

#define QX_INSTANTIATE(T)                                                                         \
  template T CQXInterpolation::GridBilinear(std::int32_t, std::int32_t, const T*, T, T) noexcept; \
  template T CQXInterpolation::GridBicubic(std::int32_t, std::int32_t, const T*, T, T) noexcept;
QX_FOR_FLOAT_AND_DOUBLE(QX_INSTANTIATE)
#undef QX_INSTANTIATE
