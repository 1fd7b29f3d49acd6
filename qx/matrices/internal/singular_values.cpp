#include <qx/foundation/internal/instantiate.h>
#include <qx/foundation/status.h>
#include <qx/kernels/array_kernels.h>
#include <qx/kernels/matrix_kernels.h>
#include <qx/kernels/rotation_kernels.h>
#include <qx/matrices/internal/bidiagonal.h>
#include <qx/matrices/internal/scaling.h>
#include <qx/matrices/internal/singular_values.h>

#include <algorithm>
#include <cmath>
#include <numeric>
#include <utility>

namespace qxMatrices {

namespace {

/// Puts the indices of what is not zero before the others. @return true when that is the natural order.
template <typename Test>
bool OrderZerosLast(std::size_t count, std::int32_t* order, Test isZero) {
  std::iota(order, order + count, 0);
  std::int32_t* const end =
      std::remove_if(order, order + count, [&](std::int32_t i) { return isZero(static_cast<std::size_t>(i)); });
  const bool isNatural = end == order || end[-1] == end - order - 1;
  std::int32_t* next = end;
  for (std::size_t i = 0; i < count && next < order + count; ++i) {
    if (isZero(i)) *next++ = static_cast<std::int32_t>(i);
  }
  return isNatural;
}

/// Element i of each vector goes to places[i], through @p work of one vector.
template <qxReal T>
void MoveBack(std::size_t count, std::size_t length, const std::int32_t* places, T* vectors, T* work) {
  for (std::size_t i = 0; i < count; ++i) {
    T* const vector = vectors + i * length;
    std::copy_n(vector, length, work);
    for (std::size_t k = 0; k < length; ++k) vector[places[k]] = work[k];
  }
}

/// Leaves the bidiagonal form of @p a, which is not wider than high and is destroyed. @return 0 or 2
template <qxReal T>
std::int32_t MakeBidiagonal(std::size_t rows, std::size_t columns, T* a, std::size_t leftCount, T tolerance,
                            Bidiagonal<T>& b) {
  if (!qxKernels::IsBand(rows, columns, a, 0, 1, tolerance)) {
    return ReduceToBidiagonal(rows, columns, a, leftCount, b);
  }
  for (std::size_t i = 0; i < columns; ++i) {
    b.d[i] = a[i * columns + i];
    b.e[i] = i > 0 ? a[(i - 1) * columns + i] : T(0);
  }
  if (b.left != nullptr) SetToUnit(leftCount, rows, b.left);
  if (b.right != nullptr) SetToUnit(columns, columns, b.right);
  return 0;
}

/// The engine for a matrix near 1 that is not wider than high, in @p a, which is destroyed.
/// @param moved a second array of that size
/// @param order room for the orders of rows and columns
template <qxReal T>
std::int32_t FindFormOfTall(std::size_t rows, std::size_t leftCount, T* a, T* moved, std::int32_t* order, T tolerance,
                            Bidiagonal<T>& b) {
  const std::size_t columns = b.size;
  std::int32_t* const rowOrder = order;
  std::int32_t* const columnOrder = order + rows;
  const bool isMoved = TestZeroRowsColumns(rows, columns, a, tolerance, rowOrder, columnOrder);
  if (isMoved) {
    MoveZeroRows(rows, columns, a, rowOrder, moved);
    MoveZeroColumns(rows, columns, moved, columnOrder, a);
    std::swap(a, moved);
  }
  if (const std::int32_t code = MakeBidiagonal(rows, columns, a, leftCount, tolerance, b); code != 0) return code;
  if (const std::int32_t code = FindSingularNumbers(b, tolerance); code != 0) return code;
  if (isMoved) {
    if (b.left != nullptr) MoveBack(leftCount, rows, rowOrder, b.left, a);
    if (b.right != nullptr) MoveBack(columns, columns, columnOrder, b.right, a);
  }
  return 0;
}

}  // namespace

template <qxReal T>
std::int32_t FindSingularForm(std::size_t rows, std::size_t columns, const T* a, WantedVectors wanted, T tolerance,
                              SingularForm<T>& form) {
  const bool isWide = rows < columns;
  const std::size_t m = std::max(rows, columns), n = std::min(rows, columns);
  form.leftCount = wanted.left > 0 ? std::clamp(wanted.left, n, rows) : 0;
  form.rightCount = wanted.right > 0 ? std::clamp(wanted.right, n, columns) : 0;
  Workspace<T, 36> work;
  Workspace<std::int32_t, 8> order;
  if (!form.values.Reserve(n) || !form.left.Reserve(form.leftCount * rows) ||
      !form.right.Reserve(form.rightCount * columns) || !work.Reserve(2 * m * n + n) || !order.Reserve(m + n)) {
    return QX_STATUS_OUT_OF_MEMORY;
  }
  // With the largest element brought near 1, no product of elements overflows and none that matters underflows.
  const std::optional<std::int32_t> exponent = ExponentOfLargest(m * n, a);
  if (!exponent) return 1;
  T* const tall = work.Take(m * n);
  T* const moved = work.Take(m * n);
  if (isWide) {
    qxKernels::Transpose(n, m, a, tall);
  } else {
    std::copy_n(a, m * n, tall);
  }
  qxKernels::MultiplyByPowerOfTwo(m * n, -*exponent, tall);
  qxKernels::MultiplyByPowerOfTwo(1, -*exponent, &tolerance);

  T* const left = form.leftCount > 0 ? form.left.Data() : nullptr;
  T* const right = form.rightCount > 0 ? form.right.Data() : nullptr;
  Bidiagonal<T> b{n, form.values.Data(), work.Take(n), isWide ? right : left, m, isWide ? left : right, n};
  const std::size_t tallCount = isWide ? form.rightCount : form.leftCount;
  const std::int32_t code = FindFormOfTall(m, tallCount, tall, moved, order.Data(), tolerance, b);
  if (code != 0) return code;
  qxKernels::MultiplyByPowerOfTwo(n, *exponent, b.d);
  return n == 0 || std::isfinite(b.d[0]) ? 0 : 1;
}

template <qxReal T>
std::int32_t FindSingularNumbersOf(std::size_t rows, std::size_t columns, const T* a, T* target) {
  SingularForm<T> form;
  const std::int32_t code = FindSingularForm(rows, columns, a, {0, 0}, T(0), form);
  if (code == 0) std::copy_n(form.values.Data(), std::min(rows, columns), target);
  return code;
}

template <qxReal T>
void MultiplyInverted(std::size_t rows, std::size_t columns, const SingularForm<T>& form, std::size_t count,
                      T* target) noexcept {
  std::fill_n(target, rows * columns, T(0));
  for (std::size_t c = 0; c < columns; ++c) {
    for (std::size_t i = 0; i < count; ++i) {
      qxKernels::AddMultiple(rows, form.right.Data()[i * columns + c] / form.values.Data()[i],
                             form.left.Data() + i * rows, target + c * rows);
    }
  }
}

template <qxReal T>
Inversion InvertBySingularValues(std::size_t size, const T* a, T bound, T* target) {
  SingularForm<T> form;
  const std::int32_t code = FindSingularForm(size, size, a, {size, size}, T(0), form);
  if (code != 0) return code == QX_STATUS_OUT_OF_MEMORY ? Inversion::outOfMemory : Inversion::singular;
  if (size > 0 && form.values.Data()[size - 1] <= bound) return Inversion::singular;
  MultiplyInverted(size, size, form, size, target);
  return Inversion::done;
}

template <qxReal T>
bool TestZeroRowsColumns(std::size_t rows, std::size_t columns, const T* a, T tolerance, std::int32_t* rowOrder,
                         std::int32_t* columnOrder) noexcept {
  const auto isSmall = [=](T x) { return std::abs(x) <= tolerance; };
  const bool rowsNatural = OrderZerosLast(
      rows, rowOrder, [&](std::size_t r) { return std::all_of(a + r * columns, a + (r + 1) * columns, isSmall); });
  const bool columnsNatural = OrderZerosLast(columns, columnOrder, [&](std::size_t c) {
    for (std::size_t r = 0; r < rows; ++r) {
      if (!isSmall(a[r * columns + c])) return false;
    }
    return true;
  });
  return !(rowsNatural && columnsNatural);
}

template <qxReal T>
void MoveZeroRows(std::size_t rows, std::size_t columns, const T* source, const std::int32_t* order,
                  T* target) noexcept {
  for (std::size_t r = 0; r < rows; ++r) {
    std::copy_n(source + static_cast<std::size_t>(order[r]) * columns, columns, target + r * columns);
  }
}

template <qxReal T>
void MoveZeroColumns(std::size_t rows, std::size_t columns, T* a, const std::int32_t* order, T* work) noexcept {
  for (std::size_t r = 0; r < rows; ++r) {
    T* const row = a + r * columns;
    std::copy_n(row, columns, work);
    for (std::size_t c = 0; c < columns; ++c) row[c] = work[order[c]];
  }
}

#define QX_INSTANTIATE(T)                                                                                          \
  template std::int32_t FindSingularForm(std::size_t, std::size_t, const T*, WantedVectors, T, SingularForm<T>&);  \
  template std::int32_t FindSingularNumbersOf(std::size_t, std::size_t, const T*, T*);                             \
  template void MultiplyInverted(std::size_t, std::size_t, const SingularForm<T>&, std::size_t, T*) noexcept;      \
  template Inversion InvertBySingularValues(std::size_t, const T*, T, T*);                                         \
  template bool TestZeroRowsColumns(std::size_t, std::size_t, const T*, T, std::int32_t*, std::int32_t*) noexcept; \
  template void MoveZeroRows(std::size_t, std::size_t, const T*, const std::int32_t*, T*) noexcept;                \
  template void MoveZeroColumns(std::size_t, std::size_t, T*, const std::int32_t*, T*) noexcept;
QX_FOR_FLOAT_AND_DOUBLE(QX_INSTANTIATE)
#undef QX_INSTANTIATE

}  // namespace qxMatrices
