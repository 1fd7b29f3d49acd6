#include <qx/foundation/internal/instantiate.h>
#include <qx/foundation/tolerance.h>
#include <qx/kernels/array_kernels.h>
#include <qx/kernels/rotation_kernels.h>
#include <qx/matrices/internal/householder.h>
#include <qx/matrices/internal/scaling.h>
#include <qx/matrices/internal/workspace.h>

#include <algorithm>
#include <cmath>
#include <limits>
#include <utility>

namespace qxMatrices {

namespace {

template <qxReal T>
T SumOfScaledSquares(std::size_t count, const T* a, T scale) {
  T sum = 0;
  for (std::size_t i = 0; i < count; ++i) {
    const T x = a[i] / scale;
    sum += x * x;
  }
  return sum;
}

/// The length of a vector with the sign of its head, from the squares of its tail; all in units of the largest element.
template <qxReal T>
T SignedLength(T head, T tailSquares) {
  return WithSign(qxGuardedSqrt(head * head + tailSquares), head);
}

/// Exponent that brings the largest of the elements away from the ends of the range, as near to its own as may be.
template <qxReal T>
std::int32_t ExponentInsideRange(std::int32_t exponent) {
  constexpr std::int32_t low = std::numeric_limits<T>::min_exponent / 4 * 3;
  constexpr std::int32_t high = std::numeric_limits<T>::max_exponent / 4 * 3;
  return std::clamp(exponent, low, high);
}

}  // namespace

template <qxReal T>
T WithSign(T a, T b) noexcept {
  return b < 0 ? -std::abs(a) : std::abs(a);
}

template <qxReal T>
Reflection<T> MakeReflection(std::size_t count, T* vector) noexcept {
  const T tailLargest = LargestMagnitude(count - 1, vector + 1);
  if (tailLargest == 0) return {0, 0, vector[0]};
  const T largest = std::max(std::abs(vector[0]), tailLargest);
  const std::int32_t exponent = std::ilogb(largest);
  const std::int32_t tailExponent = std::ilogb(tailLargest);
  const std::int32_t difference = tailExponent - exponent;
  qxKernels::MultiplyByPowerOfTwo(count - 1, -tailExponent, vector + 1);

  const T scale = std::ldexp(largest, -exponent);
  const T head = std::ldexp(vector[0], -exponent) / scale;
  const T tailSquares = SumOfScaledSquares(count - 1, vector + 1, scale);
  const T length = SignedLength(head, std::ldexp(tailSquares, 2 * difference));
  // The pivot less the length cancels, since both have one sign; the quotient is the same number.
  const T up = scale * (-tailSquares / (head + length));
  const T value = scale * length;
  return {std::ldexp(up, difference), value * up, std::ldexp(value, exponent)};
}

template <qxReal T>
std::int32_t Householder1(std::int32_t pivot, std::int32_t first, std::int32_t last, std::int32_t count, T& up,
                          T* vector, T* matrix, T tolerance) noexcept {
  if (pivot >= last) return 0;
  if (pivot == last - 1) {
    up = 0;  // an element alone is its own signed length
    return 0;
  }
  const T* tail = vector + first;
  const std::size_t tailCount = qxElementCount(last - first, 1);
  const T scale = std::max(std::abs(vector[pivot]), LargestMagnitude(tailCount, tail));
  if (scale < tolerance || scale == 0) return 0;
  const T head = vector[pivot] / scale;
  const T tailSquares = SumOfScaledSquares(tailCount, tail, scale);
  const T length = SignedLength(head, tailSquares);
  up = scale * (-tailSquares / (head + length));
  vector[pivot] = scale * length;
  const T b = vector[pivot] * up;
  if (count <= 0 || b > -tolerance || b == 0) return 0;
  const std::size_t stride = qxElementCount(count, 1);
  qxKernels::ReflectFromLeft(up, b, tailCount, tail, stride, matrix + qxElementCount(pivot, count),
                             matrix + qxElementCount(first, count), stride);
  return 1;
}

template <qxReal T>
void Householder2(std::int32_t pivot, std::int32_t first, std::int32_t last, T up, const T* vector, T* matrix,
                  std::int32_t stride, T tolerance) noexcept {
  if (pivot >= last || last == 0) return;
  const T b = vector[pivot] * up;
  if (!(b < -tolerance)) return;
  qxKernels::ReflectFromLeft(up, b, qxElementCount(last - first, 1), vector + first, qxElementCount(last, 1),
                             matrix + qxElementCount(pivot, stride), matrix + qxElementCount(first, stride),
                             qxElementCount(stride, 1));
}

template <qxReal T>
bool FactorQR(std::size_t rows, std::size_t columns, T* r, T* q) {
  const std::size_t steps = std::min(rows, columns);
  // The vectors of the reflections lie one after the other; each begins at the diagonal.
  Workspace<T, 16> vectors;
  Workspace<Reflection<T>, 4> reflections;
  if (!vectors.Reserve(rows * steps) || !reflections.Reserve(steps)) return false;
  const std::optional<std::int32_t> exponent = ExponentOfLargest(rows * columns, r);
  if (!exponent) return false;
  const std::int32_t shift = ExponentInsideRange<T>(*exponent) - *exponent;
  qxKernels::MultiplyByPowerOfTwo(rows * columns, shift, r);

  const auto reflect = [&](std::size_t k, std::size_t width, T* corner, std::size_t stride) {
    const Reflection<T>& reflection = reflections.Data()[k];
    if (reflection.b == 0) return;
    qxKernels::ReflectFromLeft(reflection.up, reflection.b, rows - k - 1, vectors.Data() + rows * k + 1, width, corner,
                               corner + stride, stride);
  };
  for (std::size_t k = 0; k < steps; ++k) {
    T* const vector = vectors.Data() + rows * k;
    T* const pivot = r + k * columns + k;
    for (std::size_t i = 0; i < rows - k; ++i) vector[i] = std::exchange(pivot[i * columns], T(0));
    reflections.Data()[k] = MakeReflection(rows - k, vector);
    *pivot = reflections.Data()[k].value;
    reflect(k, columns - k - 1, pivot + 1, columns);
  }
  std::fill_n(q, rows * rows, T(0));
  for (std::size_t i = 0; i < rows; ++i) q[i * rows + i] = 1;
  for (std::size_t k = steps; k-- > 0;) reflect(k, rows - k, q + k * rows + k, rows);
  qxKernels::MultiplyByPowerOfTwo(rows * columns, -shift, r);
  return ExponentOfLargest(rows * columns, r).has_value();
}

#define QX_INSTANTIATE(T)                                                                                             \
  template T WithSign(T, T) noexcept;                                                                                 \
  template Reflection<T> MakeReflection(std::size_t, T*) noexcept;                                                    \
  template std::int32_t Householder1(std::int32_t, std::int32_t, std::int32_t, std::int32_t, T&, T*, T*, T) noexcept; \
  template void Householder2(std::int32_t, std::int32_t, std::int32_t, T, const T*, T*, std::int32_t, T) noexcept;    \
  template bool FactorQR(std::size_t, std::size_t, T*, T*);
QX_FOR_FLOAT_AND_DOUBLE(QX_INSTANTIATE)
#undef QX_INSTANTIATE

}  // namespace qxMatrices
