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
/// tile reads them along memory. A row of a tile is two registers whose lanes are columns, so every element has its own
/// sum.
#if defined(__AVX512F__)
constexpr std::size_t registerBytes = 64;
#elif defined(__AVX__)
constexpr std::size_t registerBytes = 32;
#else
constexpr std::size_t registerBytes = 16;
#endif
template <typename T>
struct Register {
  static constexpr std::size_t lanes = registerBytes / sizeof(T);
  typedef T Vector __attribute__((vector_size(registerBytes)));
};
template <typename T>
constexpr std::size_t tileColumns = 2 * Register<T>::lanes;
constexpr std::size_t tileRows = 4;
constexpr std::size_t panelDepth = 256;

/// One tile of @p Rows rows: adds the products of the panel to its sums, which begin at zero for the first panel.
template <std::size_t Rows, typename T>
void AddTile(std::size_t depth, bool isFirst, const T* a, std::size_t strideA, const T* panel, T* target,
             std::size_t strideTarget) {
  using Vector = typename Register<T>::Vector;
  constexpr std::size_t lanes = Register<T>::lanes;
  Vector low[Rows] = {}, high[Rows] = {};
  for (std::size_t i = 0; i < Rows && !isFirst; ++i) {
    std::memcpy(&low[i], target + i * strideTarget, sizeof(Vector));
    std::memcpy(&high[i], target + i * strideTarget + lanes, sizeof(Vector));
  }
  for (std::size_t k = 0; k < depth; ++k) {
    Vector left, right;
    std::memcpy(&left, panel + 2 * lanes * k, sizeof(Vector));
    std::memcpy(&right, panel + 2 * lanes * k + lanes, sizeof(Vector));
    for (std::size_t i = 0; i < Rows; ++i) {
      const T factor = a[i * strideA + k];
      low[i] += factor * left;
      high[i] += factor * right;
    }
  }
  for (std::size_t i = 0; i < Rows; ++i) {
    std::memcpy(target + i * strideTarget, &low[i], sizeof(Vector));
    std::memcpy(target + i * strideTarget + lanes, &high[i], sizeof(Vector));
  }
}

/// Rows first .. last of a panel's strip of columns, tiles first.
template <typename T>
void AddStrip(std::size_t rows, std::size_t depth, bool isFirst, const T* a, std::size_t strideA, const T* panel,
              T* target, std::size_t strideTarget) {
  std::size_t r = 0;
  for (; r + tileRows <= rows; r += tileRows) {
    AddTile<tileRows>(depth, isFirst, a + r * strideA, strideA, panel, target + r * strideTarget, strideTarget);
  }
  for (; r < rows; ++r) {
    AddTile<1>(depth, isFirst, a + r * strideA, strideA, panel, target + r * strideTarget, strideTarget);
  }
}

/// The same for a strip that ends before its tile does: through a padded copy, some rows at a time.
template <typename T>
void AddPaddedStrip(std::size_t rows, std::size_t depth, bool isFirst, const T* a, std::size_t strideA, const T* panel,
                    std::size_t columns, T* target, std::size_t strideTarget) {
  constexpr std::size_t width = tileColumns<T>;
  T padded[4 * tileRows * width] = {};
  for (std::size_t first = 0; first < rows; first += 4 * tileRows) {
    const std::size_t count = std::min(4 * tileRows, rows - first);
    T* const place = target + first * strideTarget;
    for (std::size_t r = 0; r < count && !isFirst; ++r) {
      std::copy_n(place + r * strideTarget, columns, padded + r * width);
    }
    AddStrip(count, depth, isFirst, a + first * strideA, strideA, panel, padded, width);
    for (std::size_t r = 0; r < count; ++r) std::copy_n(padded + r * width, columns, place + r * strideTarget);
  }
}

template <typename T>
void MultiplyReal(std::size_t rows, std::size_t depth, std::size_t columns, const T* a, const T* b, T* target) {
  constexpr std::size_t width = tileColumns<T>;
  if (depth == 0) std::fill_n(target, rows * columns, T(0));
  alignas(64) T panel[panelDepth * width];
  for (std::size_t firstK = 0; firstK < depth; firstK += panelDepth) {
    const std::size_t countK = std::min(panelDepth, depth - firstK);
    for (std::size_t first = 0; first < columns; first += width) {
      const std::size_t count = std::min(width, columns - first);
      const T* source = b + firstK * columns + first;
      if (count == width) {
        for (std::size_t k = 0; k < countK; ++k) std::copy_n(source + k * columns, width, panel + k * width);
        AddStrip(rows, countK, firstK == 0, a + firstK, depth, panel, target + first, columns);
      } else {
        std::fill_n(panel, countK * width, T(0));
        for (std::size_t k = 0; k < countK; ++k) std::copy_n(source + k * columns, count, panel + k * width);
        AddPaddedStrip(rows, countK, firstK == 0, a + firstK, depth, panel, count, target + first, columns);
      }
    }
  }
}

/// Square blocks that are turned in registers of 16 bytes: 4 x 4 floats, 2 x 2 doubles.
template <typename T>
struct Block {
  static constexpr std::size_t side = 16 / sizeof(T);
  typedef T Vector __attribute__((vector_size(16)));
  Vector rows[side];

  static Block Load(const T* a, std::size_t stride) {
    Block block;
    for (std::size_t i = 0; i < side; ++i) std::memcpy(&block.rows[i], a + i * stride, sizeof(Vector));
    return block;
  }
  void Store(T* target, std::size_t stride) const {
    for (std::size_t i = 0; i < side; ++i) std::memcpy(target + i * stride, &rows[i], sizeof(Vector));
  }
  /// The block with rows and columns exchanged.
  Block Turned() const {
    if constexpr (side == 2) {
      return {{__builtin_shufflevector(rows[0], rows[1], 0, 2), __builtin_shufflevector(rows[0], rows[1], 1, 3)}};
    } else {
      const Vector low01 = __builtin_shufflevector(rows[0], rows[1], 0, 4, 1, 5);
      const Vector low23 = __builtin_shufflevector(rows[2], rows[3], 0, 4, 1, 5);
      const Vector high01 = __builtin_shufflevector(rows[0], rows[1], 2, 6, 3, 7);
      const Vector high23 = __builtin_shufflevector(rows[2], rows[3], 2, 6, 3, 7);
      return {{__builtin_shufflevector(low01, low23, 0, 1, 4, 5), __builtin_shufflevector(low01, low23, 2, 3, 6, 7),
               __builtin_shufflevector(high01, high23, 0, 1, 4, 5),
               __builtin_shufflevector(high01, high23, 2, 3, 6, 7)}};
    }
  }
};

/// The products of @p Blocks blocks of rows with a vector. Their lanes are rows, so every element has its own sum.
template <std::size_t Blocks, typename T>
void MultiplyRows(std::size_t columns, const T* a, const T* v, T* target) {
  constexpr std::size_t side = Block<T>::side;
  typename Block<T>::Vector sums[Blocks] = {};
  std::size_t k = 0;
  for (; k + side <= columns; k += side) {
    for (std::size_t i = 0; i < Blocks; ++i) {
      const Block<T> turned = Block<T>::Load(a + i * side * columns + k, columns).Turned();
      for (std::size_t j = 0; j < side; ++j) sums[i] += turned.rows[j] * v[k + j];
    }
  }
  for (; k < columns; ++k) {
    for (std::size_t i = 0; i < Blocks; ++i) {
      for (std::size_t j = 0; j < side; ++j) sums[i][j] += a[(i * side + j) * columns + k] * v[k];
    }
  }
  std::memcpy(target, sums, sizeof sums);
}

template <typename T>
T MultiplyRow(std::size_t columns, const T* row, const T* v) {
  T sum = T(0);
  for (std::size_t k = 0; k < columns; ++k) sum += row[k] * v[k];
  return sum;
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
  std::size_t r = 0;
  if constexpr (std::is_floating_point_v<T>) {
    constexpr std::size_t side = Block<T>::side;
    for (; r + 4 * side <= rows; r += 4 * side) MultiplyRows<4>(columns, a + r * columns, v, target + r);
    for (; r + side <= rows; r += side) MultiplyRows<1>(columns, a + r * columns, v, target + r);
  }
  for (; r < rows; ++r) std::construct_at(target + r, MultiplyRow(columns, a + r * columns, v));
}

namespace {

/// target (columns x rows) := the transpose of a part of a, element by element.
template <typename T>
void TransposePart(std::size_t firstRow, std::size_t lastRow, std::size_t firstColumn, std::size_t lastColumn,
                   std::size_t rows, std::size_t columns, const T* a, T* target) {
  for (std::size_t c = firstColumn; c < lastColumn; ++c) {
    for (std::size_t r = firstRow; r < lastRow; ++r) std::construct_at(target + c * rows + r, a[r * columns + c]);
  }
}

}  // namespace

template <typename T>
void Transpose(std::size_t rows, std::size_t columns, const T* a, T* target) noexcept {
  constexpr std::size_t side = 16;  // of the square that is turned while both its images are in the cache
  for (std::size_t firstRow = 0; firstRow < rows; firstRow += side) {
    const std::size_t lastRow = std::min(firstRow + side, rows);
    for (std::size_t firstColumn = 0; firstColumn < columns; firstColumn += side) {
      const std::size_t lastColumn = std::min(firstColumn + side, columns);
      if constexpr (std::is_floating_point_v<T>) {
        if (lastRow - firstRow == side && lastColumn - firstColumn == side) {
          for (std::size_t c = firstColumn; c < lastColumn; c += Block<T>::side) {
            for (std::size_t r = firstRow; r < lastRow; r += Block<T>::side) {
              Block<T>::Load(a + r * columns + c, columns).Turned().Store(target + c * rows + r, rows);
            }
          }
          continue;
        }
      }
      TransposePart(firstRow, lastRow, firstColumn, lastColumn, rows, columns, a, target);
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
