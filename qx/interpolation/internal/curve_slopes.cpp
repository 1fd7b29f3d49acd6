#include <qx/foundation/block.h>
#include <qx/foundation/internal/instantiate.h>
#include <qx/interpolation/internal/curve_slopes.h>

#include <cmath>

namespace qxCurves {

namespace {

/// One component of the keys: a curve of numbers whose neighbours stand @p stride apart.
template <qxReal T>
class Component {
 public:
  Component(std::size_t n, std::size_t stride, const T* nodes, const T* values, T* slopes)
      : m_n(n), m_stride(stride), m_nodes(nodes), m_values(values), m_slopes(slopes) {}

  /// Number of intervals.
  [[nodiscard]] std::size_t Intervals() const { return m_n - 1; }
  [[nodiscard]] T Length(std::size_t i) const { return m_nodes[i + 1] - m_nodes[i]; }
  /// Slope of the straight line over interval @p i.
  [[nodiscard]] T Secant(std::size_t i) const {
    return (m_values[(i + 1) * m_stride] - m_values[i * m_stride]) / Length(i);
  }
  [[nodiscard]] T& Slope(std::size_t i) const { return m_slopes[i * m_stride]; }

  /// The slope of the parabola through the keys of two neighbouring intervals at the one between.
  [[nodiscard]] T ParabolaSlope(std::size_t before, std::size_t after) const {
    const T h0 = Length(before), h1 = Length(after);
    return (Secant(before) * h1 + Secant(after) * h0) / (h0 + h1);
  }

 private:
  std::size_t m_n, m_stride;
  const T* m_nodes;
  const T* m_values;
  T* m_slopes;
};

template <qxReal T>
void FindParabolaSlopes(const Component<T>& curve, qxEnds ends) {
  const std::size_t last = curve.Intervals();
  for (std::size_t i = 1; i < last; ++i) curve.Slope(i) = curve.ParabolaSlope(i - 1, i);
  if (ends == QX_ENDS_CLOSED) {
    curve.Slope(0) = curve.Slope(last) = curve.ParabolaSlope(last - 1, 0);
  } else if (ends != QX_ENDS_CLAMPED && last == 1) {
    curve.Slope(0) = curve.Slope(1) = curve.Secant(0);
  } else if (ends != QX_ENDS_CLAMPED) {
    curve.Slope(0) = (3 * curve.Secant(0) - curve.Slope(1)) / 2;
    curve.Slope(last) = (3 * curve.Secant(last - 1) - curve.Slope(last - 1)) / 2;
  }
}

/// Draws the slopes at both ends of each interval towards zero until the cubic over it is monotone.
template <qxReal T>
void LimitSlopes(const Component<T>& curve, qxEnds ends) {
  const std::size_t last = curve.Intervals();
  for (std::size_t i = 0; i < last; ++i) {
    const T secant = curve.Secant(i);
    T &m0 = curve.Slope(i), &m1 = curve.Slope(i + 1);
    if (!(m0 * secant > 0)) m0 = 0;
    if (!(m1 * secant > 0)) m1 = 0;
    const T a = secant == 0 ? T(0) : m0 / secant, b = secant == 0 ? T(0) : m1 / secant;
    const T square = a * a + b * b;
    if (square > 9) {
      m0 *= 3 / std::sqrt(square);
      m1 *= 3 / std::sqrt(square);
    }
  }
  if (ends == QX_ENDS_CLOSED) {
    T &first = curve.Slope(0), &end = curve.Slope(last);
    first = end = first * end > 0 ? std::copysign(std::fmin(std::abs(first), std::abs(end)), first) : T(0);
  }
}

/// The condition that the accelerations of two neighbouring cubics meet at a key:
/// lower m(i - 1) + 2 (lower + upper) m(i) + upper m(i + 1) = right.
template <qxReal T>
struct Row {
  T lower, upper, right;
};

template <qxReal T>
Row<T> RowBetween(const Component<T>& curve, std::size_t before, std::size_t after) {
  const T lower = 1 / curve.Length(before), upper = 1 / curve.Length(after);
  return {lower, upper, 3 * (curve.Secant(before) * lower + curve.Secant(after) * upper)};
}

/// The slopes of a spline with natural or clamped ends, by elimination; the diagonal dominates.
/// @param upper room for a number a key
template <qxReal T>
void FindSplineSlopes(const Component<T>& curve, qxEnds ends, T* upper) {
  const std::size_t last = curve.Intervals();
  const bool isClamped = ends == QX_ENDS_CLAMPED;
  upper[0] = 0;
  for (std::size_t i = isClamped ? 1 : 0; i < last + (isClamped ? 0 : 1); ++i) {
    const Row<T> row = i == 0      ? Row<T>{0, 1, 3 * curve.Secant(0)}
                       : i == last ? Row<T>{1, 0, 3 * curve.Secant(last - 1)}
                                   : RowBetween(curve, i - 1, i);
    const T pivot = 2 * (row.lower + row.upper) - (i == 0 ? T(0) : row.lower * upper[i - 1]);
    curve.Slope(i) = (row.right - (i == 0 ? T(0) : row.lower * curve.Slope(i - 1))) / pivot;
    upper[i] = row.upper / pivot;
  }
  for (std::size_t i = last; i-- > (isClamped ? 1U : 0U);) curve.Slope(i) -= upper[i] * curve.Slope(i + 1);
}

/// The slopes of a closed spline: first with the last of the unknown ones as 0, together with its share in the others,
/// then that one from its own row.
/// @param work room for two numbers a key
template <qxReal T>
void FindClosedSplineSlopes(const Component<T>& curve, T* work) {
  const std::size_t last = curve.Intervals(), end = last - 1;
  T* upper = work;
  T* share = work + last;
  for (std::size_t i = 0; i < end; ++i) {
    const Row<T> row = RowBetween(curve, i == 0 ? end : i - 1, i);
    const T before = i == 0 ? T(0) : row.lower;  // row 0 has the unknown one before it
    const T pivot = 2 * (row.lower + row.upper) - (i == 0 ? T(0) : before * upper[i - 1]);
    const T column = (i == 0 ? row.lower : T(0)) + (i + 1 == end ? row.upper : T(0));
    curve.Slope(i) = (row.right - (i == 0 ? T(0) : before * curve.Slope(i - 1))) / pivot;
    share[i] = -(column + (i == 0 ? T(0) : before * share[i - 1])) / pivot;
    upper[i] = row.upper / pivot;
  }
  for (std::size_t i = end - 1; i-- > 0;) {
    curve.Slope(i) -= upper[i] * curve.Slope(i + 1);
    share[i] -= upper[i] * share[i + 1];
  }
  const Row<T> row = RowBetween(curve, end - 1, end);
  const T unknown = (row.right - row.lower * curve.Slope(end - 1) - row.upper * curve.Slope(0)) /
                    (2 * (row.lower + row.upper) + row.lower * share[end - 1] + row.upper * share[0]);
  for (std::size_t i = 0; i < end; ++i) curve.Slope(i) += share[i] * unknown;
  curve.Slope(end) = unknown;
  curve.Slope(last) = curve.Slope(0);
}

}  // namespace

template <qxReal T>
bool AreAscending(std::int32_t n, const T* nodes) noexcept {
  for (std::int32_t i = 1; i < n; ++i) {
    if (!(nodes[i - 1] < nodes[i])) return false;
  }
  return true;
}

template <qxReal T>
std::int32_t FindSlopes(qxSlopes rule, qxEnds ends, std::int32_t n, std::size_t dimension, const T* nodes,
                        const T* values, T* slopes) {
  if (n < 1 || !AreAscending(n, nodes)) return 0;
  const auto count = static_cast<std::size_t>(n);
  // Two keys of a closed curve are one.
  if (count == 1 || (count == 2 && ends == QX_ENDS_CLOSED)) {
    for (std::size_t i = 0; i < count * dimension && (count == 2 || ends != QX_ENDS_CLAMPED); ++i) slopes[i] = 0;
    return 1;
  }
  qxBlock<T> work;
  if (rule == QX_SLOPES_SPLINE) {
    work = qxMakeBlock<T>(2 * count);
    if (work == nullptr) return 0;
  }
  for (std::size_t c = 0; c < dimension; ++c) {
    const Component<T> curve(count, dimension, nodes, values + c, slopes + c);
    if (rule == QX_SLOPES_SPLINE && ends == QX_ENDS_CLOSED) {
      FindClosedSplineSlopes(curve, work.get());
    } else if (rule == QX_SLOPES_SPLINE) {
      FindSplineSlopes(curve, ends, work.get());
    } else {
      FindParabolaSlopes(curve, ends);
      if (rule == QX_SLOPES_MONOTONE) LimitSlopes(curve, ends);
    }
  }
  return 1;
}

#define QX_INSTANTIATE(T)                                                                                \
  template std::int32_t FindSlopes(qxSlopes, qxEnds, std::int32_t, std::size_t, const T*, const T*, T*); \
  template bool AreAscending(std::int32_t, const T*) noexcept;
QX_FOR_FLOAT_AND_DOUBLE(QX_INSTANTIATE)
#undef QX_INSTANTIATE

}  // namespace qxCurves
