#include <qx/foundation/complex.h>
#include <qx/kernels/matrix_kernels.h>

#include <algorithm>
#include <cmath>
#include <cstring>
#include <memory>
#include <type_traits>

namespace qxKernels {

namespace {

/// The product of real matrices is formed in tiles that stay in registers, over panels of b that are packed so that a
/// tile reads them along memory. One row of a tile is one vector of 32 bytes; its lanes are columns, so every element
/// has its own sum.
template <typename T>
struct Lanes {
  static constexpr std::size_t count = 32 / sizeof(T);
  typedef T Vector __attribute__((vector_size(32)));
};
constexpr std::size_t tileRows = 4;
constexpr std::size_t panelDepth = 256;

/// One tile: adds the products of the panel to its sums. @p columns of the tile exist, the rest is padding.
template <std::size_t Rows, typename T>
void AddTile(std::size_t depth, std::size_t columns, const T* a, std::size_t strideA,
             const typename Lanes<T>::Vector* panel, T* target, std::size_t strideTarget) {
  typename Lanes<T>::Vector sums[Rows] = {};
  for (std::size_t i = 0; i < Rows; ++i) std::memcpy(&sums[i], target + i * strideTarget, columns * sizeof(T));
  for (std::size_t k = 0; k < depth; ++k) {
    for (std::size_t i = 0; i < Rows; ++i) sums[i] += a[i * strideA + k] * panel[k];
  }
  for (std::size_t i = 0; i < Rows; ++i) std::memcpy(target + i * strideTarget, &sums[i], columns * sizeof(T));
}

template <typename T>
void MultiplyReal(std::size_t rows, std::size_t depth, std::size_t columns, const T* a, const T* b, T* target) {
  constexpr std::size_t width = Lanes<T>::count;
  typename Lanes<T>::Vector panel[panelDepth] = {};
  std::fill_n(target, rows * columns, T(0));
  for (std::size_t firstK = 0; firstK < depth; firstK += panelDepth) {
    const std::size_t countK = std::min(panelDepth, depth - firstK);
    for (std::size_t firstColumn = 0; firstColumn < columns; firstColumn += width) {
      const std::size_t countColumns = std::min(width, columns - firstColumn);
      for (std::size_t k = 0; k < countK; ++k) {
        std::memcpy(&panel[k], b + (firstK + k) * columns + firstColumn, countColumns * sizeof(T));
      }
      const T* rowA = a + firstK;
      T* rowTarget = target + firstColumn;
      std::size_t r = 0;
      for (; r + tileRows <= rows; r += tileRows, rowA += tileRows * depth, rowTarget += tileRows * columns) {
        AddTile<tileRows>(countK, countColumns, rowA, depth, panel, rowTarget, columns);
      }
      for (; r < rows; ++r, rowA += depth, rowTarget += columns) {
        AddTile<1>(countK, countColumns, rowA, depth, panel, rowTarget, columns);
      }
    }
  }
}

}  // namespace

template <typename T>
void MultiplyMatrices(std::size_t rows, std::size_t depth, std::size_t columns, const T* a, const T* b,
                      T* target) noexcept {
  if constexpr (std::is_floating_point_v<T>) {
    MultiplyReal(rows, depth, columns, a, b, target);
  } else {
    for (std::size_t r = 0; r < rows; ++r) {
      for (std::size_t c = 0; c < columns; ++c) {
        T sum;
        for (std::size_t k = 0; k < depth; ++k) sum += a[r * depth + k] * b[k * columns + c];
        std::construct_at(target + r * columns + c, sum);
      }
    }
  }
}

template <typename T>
void MultiplyMatrixByVector(std::size_t rows, std::size_t columns, const T* a, const T* v, T* target) noexcept {
  // Several rows side by side: their sums do not wait for one another.
  constexpr std::size_t together = 8;
  std::size_t r = 0;
  for (; r + together <= rows; r += together) {
    T sums[together] = {};
    for (std::size_t k = 0; k < columns; ++k) {
      for (std::size_t i = 0; i < together; ++i) sums[i] += a[(r + i) * columns + k] * v[k];
    }
    for (std::size_t i = 0; i < together; ++i) std::construct_at(target + r + i, sums[i]);
  }
  for (; r < rows; ++r) {
    T sum = T(0);
    for (std::size_t k = 0; k < columns; ++k) sum += a[r * columns + k] * v[k];
    std::construct_at(target + r, sum);
  }
}

template <typename T>
void Transpose(std::size_t rows, std::size_t columns, const T* a, T* target) noexcept {
  constexpr std::size_t side = 16;  // of the square that is turned while both its images are in the cache
  for (std::size_t firstRow = 0; firstRow < rows; firstRow += side) {
    const std::size_t lastRow = std::min(firstRow + side, rows);
    for (std::size_t firstColumn = 0; firstColumn < columns; firstColumn += side) {
      const std::size_t lastColumn = std::min(firstColumn + side, columns);
      for (std::size_t c = firstColumn; c < lastColumn; ++c) {
        for (std::size_t r = firstRow; r < lastRow; ++r) std::construct_at(target + c * rows + r, a[r * columns + c]);
      }
    }
  }
}

template <typename T>
void CombineRows(std::size_t terms, const T* factors, std::size_t factorStride, const T* rows, std::size_t stride,
                 std::size_t columns, T* __restrict target) noexcept {
  // Four rows in one pass over the target; each element still takes them one after the other.
  std::fill_n(target, columns, T(0));
  std::size_t j = 0;
  for (; j + 4 <= terms; j += 4) {
    const T* const f = factors + j * factorStride;
    const T f0 = f[0], f1 = f[factorStride], f2 = f[2 * factorStride], f3 = f[3 * factorStride];
    const T* const r0 = rows + j * stride;
    const T* const r1 = r0 + stride;
    const T* const r2 = r1 + stride;
    const T* const r3 = r2 + stride;
    for (std::size_t c = 0; c < columns; ++c) {
      target[c] = (((target[c] + f0 * r0[c]) + f1 * r1[c]) + f2 * r2[c]) + f3 * r3[c];
    }
  }
  for (; j < terms; ++j) {
    const T factor = factors[j * factorStride];
    const T* const row = rows + j * stride;
    for (std::size_t c = 0; c < columns; ++c) target[c] += factor * row[c];
  }
}

template <typename T>
bool IsBand(std::size_t rows, std::size_t columns, const T* a, std::ptrdiff_t low, std::ptrdiff_t high,
            T tolerance) noexcept {
  for (std::size_t r = 0; r < rows; ++r) {
    for (std::size_t c = 0; c < columns; ++c) {
      const std::ptrdiff_t place = static_cast<std::ptrdiff_t>(c) - static_cast<std::ptrdiff_t>(r);
      if ((place < low || place > high) && !(std::abs(a[r * columns + c]) <= tolerance)) return false;
    }
  }
  return true;
}

template void CombineRows<float>(std::size_t, const float*, std::size_t, const float*, std::size_t, std::size_t,
                                 float*) noexcept;
template void CombineRows<double>(std::size_t, const double*, std::size_t, const double*, std::size_t, std::size_t,
                                  double*) noexcept;
template bool IsBand<float>(std::size_t, std::size_t, const float*, std::ptrdiff_t, std::ptrdiff_t, float) noexcept;
template bool IsBand<double>(std::size_t, std::size_t, const double*, std::ptrdiff_t, std::ptrdiff_t, double) noexcept;

#define QX_INSTANTIATE(T)                                                                                    \
  template void MultiplyMatrices<T>(std::size_t, std::size_t, std::size_t, const T*, const T*, T*) noexcept; \
  template void MultiplyMatrixByVector<T>(std::size_t, std::size_t, const T*, const T*, T*) noexcept;        \
  template void Transpose<T>(std::size_t, std::size_t, const T*, T*) noexcept;

QX_INSTANTIATE(float)
QX_INSTANTIATE(double)
QX_INSTANTIATE(CQXComplex<float>)
QX_INSTANTIATE(CQXComplex<double>)

#undef QX_INSTANTIATE

}  // namespace qxKernels
