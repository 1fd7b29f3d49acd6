#include <qx/foundation/internal/instantiate.h>
#include <qx/kernels/array_kernels.h>
#include <qx/kernels/rotation_kernels.h>

#include <algorithm>

namespace qxKernels {

namespace {

/// Columns that are worked on together, so that what is kept for them stays in the nearest cache.
constexpr std::size_t strip = 64;

}  // namespace

template <typename T>
void AddMultiple(std::size_t count, T factor, const T* x, T* y) noexcept {
  for (std::size_t i = 0; i < count; ++i) y[i] += factor * x[i];
}

template <typename T>
void ReflectFromLeft(T up, T b, std::size_t tailCount, const T* tail, std::size_t columns, T* pivotRow, T* tailRows,
                     std::size_t stride) noexcept {
  T sums[strip];
  for (std::size_t first = 0; first < columns; first += strip) {
    const std::size_t width = std::min(strip, columns - first);
    for (std::size_t c = 0; c < width; ++c) sums[c] = up * pivotRow[first + c];
    for (std::size_t j = 0; j < tailCount; ++j) AddMultiple(width, tail[j], tailRows + j * stride + first, sums);
    for (std::size_t c = 0; c < width; ++c) sums[c] /= b;
    AddMultiple(width, up, sums, pivotRow + first);
    for (std::size_t j = 0; j < tailCount; ++j) AddMultiple(width, tail[j], sums, tailRows + j * stride + first);
  }
}

template <typename T>
void ReflectFromRight(T up, T b, std::size_t tailCount, const T* tail, std::size_t rows, T* first,
                      std::size_t stride) noexcept {
  for (std::size_t r = 0; r < rows; ++r) {
    T* row = first + r * stride;
    const T sum = (up * row[0] + Dot(tailCount, row + 1, tail)) / b;
    row[0] += sum * up;
    AddMultiple(tailCount, sum, tail, row + 1);
  }
}

template <typename T>
void Rotate(std::size_t count, T c, T s, T* x, T* y) noexcept {
  for (std::size_t i = 0; i < count; ++i) {
    const T xi = x[i];
    const T yi = y[i];
    x[i] = c * xi + s * yi;
    y[i] = c * yi - s * xi;
  }
}

template <typename T>
void RotateInSequence(std::size_t rotations, const T* cosines, const T* sines, std::size_t count, T* rows) noexcept {
  constexpr std::size_t together = 8;
  std::size_t first = 0;
  for (; first + together <= count; first += together) {
    T carried[together];  // the lower row of the last rotation is the upper one of the next
    std::copy_n(rows + first, together, carried);
    for (std::size_t k = 0; k < rotations; ++k) {
      const T c = cosines[k];
      const T s = sines[k];
      T* upper = rows + k * count + first;
      const T* lower = upper + count;
      for (std::size_t i = 0; i < together; ++i) {
        const T y = lower[i];
        upper[i] = c * carried[i] + s * y;
        carried[i] = c * y - s * carried[i];
      }
    }
    std::copy_n(carried, together, rows + rotations * count + first);
  }
  for (std::size_t k = 0; k < rotations && first < count; ++k) {
    T* upper = rows + k * count + first;
    Rotate(count - first, cosines[k], sines[k], upper, upper + count);
  }
}

template <typename T>
void JacobiRotate(std::size_t count, T s, T tau, T* x, T* y) noexcept {
  for (std::size_t i = 0; i < count; ++i) {
    const T xi = x[i];
    const T yi = y[i];
    x[i] = xi - s * (yi + xi * tau);
    y[i] = yi + s * (xi - yi * tau);
  }
}

#define QX_INSTANTIATE(T)                                                                                   \
  template void AddMultiple<T>(std::size_t, T, const T*, T*) noexcept;                                      \
  template void ReflectFromLeft<T>(T, T, std::size_t, const T*, std::size_t, T*, T*, std::size_t) noexcept; \
  template void ReflectFromRight<T>(T, T, std::size_t, const T*, std::size_t, T*, std::size_t) noexcept;    \
  template void Rotate<T>(std::size_t, T, T, T*, T*) noexcept;                                              \
  template void RotateInSequence<T>(std::size_t, const T*, const T*, std::size_t, T*) noexcept;             \
  template void JacobiRotate<T>(std::size_t, T, T, T*, T*) noexcept;
QX_FOR_FLOAT_AND_DOUBLE(QX_INSTANTIATE)
#undef QX_INSTANTIATE

}  // namespace qxKernels
