#include <qx/foundation/internal/instantiate.h>
#include <qx/foundation/status.h>
#include <qx/foundation/tolerance.h>
#include <qx/kernels/array_kernels.h>
#include <qx/kernels/matrix_kernels.h>
#include <qx/kernels/rotation_kernels.h>
#include <qx/matrices/internal/bidiagonal.h>
#include <qx/matrices/internal/householder.h>
#include <qx/matrices/internal/workspace.h>

#include <algorithm>
#include <cmath>
#include <limits>
#include <utility>

namespace qxMatrices {

template <qxReal T>
T Pythagoras(T a, T b) noexcept {
  const T sizeA = std::abs(a);
  const T sizeB = std::abs(b);
  if (sizeB < sizeA) {
    const T ratio = sizeB / sizeA;
    return sizeA * qxGuardedSqrt(1 + ratio * ratio);
  }
  if (sizeB <= QX_TOLERANCE<T>) return 0;
  const T ratio = sizeA / sizeB;
  return sizeB * qxGuardedSqrt(1 + ratio * ratio);
}

template <qxReal T>
void Givens1(T a, T b, T& c, T& s, T& r, T tolerance) noexcept {
  const T sizeA = std::abs(a);
  const T sizeB = std::abs(b);
  T length = 0;
  if (sizeA >= sizeB && sizeA > tolerance) {
    const T ratio = b / a;
    length = sizeA * std::sqrt(1 + ratio * ratio);
  } else if (sizeB > sizeA && sizeB > tolerance) {
    const T ratio = a / b;
    length = sizeB * std::sqrt(1 + ratio * ratio);
  }
  r = length;
  if (length >= T(1.5) * tolerance && length > 0) {
    c = a / length;
    s = b / length;
  } else {
    c = 1;
    s = 0;
  }
}

template <qxReal T>
void SetToUnit(std::size_t rows, std::size_t columns, T* target) noexcept {
  std::fill_n(target, rows * columns, T(0));
  for (std::size_t i = 0; i < std::min(rows, columns); ++i) target[i * columns + i] = 1;
}

namespace {

/// The reflections of a reduction. Their tails take the place of the matrix: below the diagonal, and right of the
/// superdiagonal.
template <qxReal T>
struct Reflections {
  Reflection<T>* ofColumns;
  Reflection<T>* ofRows;
  T* column;  ///< a column on its way
};

/// Leaves the diagonal and the superdiagonal of a m x n matrix in @p target.
template <qxReal T>
void Reduce(std::size_t m, std::size_t n, T* a, const Reflections<T>& reflections, Bidiagonal<T>& target) {
  T* const column = reflections.column;
  if (n > 0) target.e[0] = 0;
  for (std::size_t k = 0; k < n; ++k) {
    T* const pivot = a + k * n + k;
    for (std::size_t i = 0; i < m - k; ++i) column[i] = pivot[i * n];
    const Reflection<T> left = reflections.ofColumns[k] = MakeReflection(m - k, column);
    for (std::size_t i = 1; i < m - k; ++i) pivot[i * n] = column[i];
    target.d[k] = left.value;
    if (k + 1 == n) break;
    if (left.b != 0) {
      qxKernels::ReflectFromLeft(left.up, left.b, m - k - 1, column + 1, n - k - 1, pivot + 1, pivot + 1 + n, n);
    }
    const Reflection<T> right = reflections.ofRows[k + 1] = MakeReflection(n - k - 1, pivot + 1);
    target.e[k + 1] = right.value;
    if (right.b != 0) {
      qxKernels::ReflectFromRight(right.up, right.b, n - k - 2, pivot + 2, m - k - 1, pivot + 1 + n, n);
    }
  }
}

/// Collects the reflections of the columns as rows of the first @p count columns of U, by way of @p unit.
template <qxReal T>
void CollectLeft(std::size_t m, std::size_t n, const T* a, const Reflections<T>& reflections, std::size_t count,
                 T* unit, T* target) {
  SetToUnit(m, count, unit);
  for (std::size_t k = n; k-- > 0;) {
    const Reflection<T>& reflection = reflections.ofColumns[k];
    if (reflection.b == 0) continue;
    T* const column = reflections.column;
    for (std::size_t i = k + 1; i < m; ++i) column[i - k] = a[i * n + k];
    T* const corner = unit + k * count + k;
    qxKernels::ReflectFromLeft(reflection.up, reflection.b, m - k - 1, column + 1, count - k, corner, corner + count,
                               count);
  }
  qxKernels::Transpose(m, count, unit, target);
}

/// Collects the reflections of the rows as rows of V^T, by way of @p unit.
template <qxReal T>
void CollectRight(std::size_t n, const T* a, const Reflections<T>& reflections, T* unit, T* target) {
  SetToUnit(n, n, unit);
  for (std::size_t k = n; k-- > 1;) {
    const Reflection<T>& reflection = reflections.ofRows[k];
    if (reflection.b == 0) continue;
    T* const corner = unit + k * n + k;
    qxKernels::ReflectFromLeft(reflection.up, reflection.b, n - k - 1, a + (k - 1) * n + k + 1, n - k, corner,
                               corner + n, n);
  }
  qxKernels::Transpose(n, n, unit, target);
}

}  // namespace

template <qxReal T>
std::int32_t ReduceToBidiagonal(std::size_t rows, std::size_t columns, T* a, std::size_t leftCount,
                                Bidiagonal<T>& target) {
  Workspace<T, 20> work;
  Workspace<Reflection<T>, 8> made;
  if (!work.Reserve(rows + std::max(rows * leftCount, columns * columns)) || !made.Reserve(2 * columns)) {
    return QX_STATUS_OUT_OF_MEMORY;
  }
  Reflection<T>* const ofColumns = made.Take(columns);
  const Reflections<T> reflections{ofColumns, made.Take(columns), work.Take(rows)};
  T* const unit = work.Take(0);
  Reduce(rows, columns, a, reflections, target);
  if (target.left != nullptr) CollectLeft(rows, columns, a, reflections, leftCount, unit, target.left);
  if (target.right != nullptr) CollectRight(columns, a, reflections, unit, target.right);
  return 0;
}

template <qxReal T>
void ZeroRightTransform(Bidiagonal<T>& b, std::size_t zero, std::size_t last) noexcept {
  b.d[zero] = 0;
  T out = std::exchange(b.e[zero + 1], T(0));
  for (std::size_t j = zero + 1; j <= last && out != 0; ++j) {
    T c, s;
    Givens1(b.d[j], out, c, s, b.d[j], T(0));
    if (b.left != nullptr) {
      qxKernels::Rotate(b.leftLength, c, s, b.left + j * b.leftLength, b.left + zero * b.leftLength);
    }
    if (j < last) {
      out = -s * b.e[j + 1];
      b.e[j + 1] *= c;
    }
  }
}

template <qxReal T>
void ZeroUpperTransform(Bidiagonal<T>& b, std::size_t first, std::size_t zero) noexcept {
  b.d[zero] = 0;
  T out = std::exchange(b.e[zero], T(0));
  for (std::size_t j = zero; j-- > first && out != 0;) {
    T c, s;
    Givens1(b.d[j], out, c, s, b.d[j], T(0));
    if (b.right != nullptr) {
      qxKernels::Rotate(b.rightLength, c, s, b.right + j * b.rightLength, b.right + zero * b.rightLength);
    }
    if (j > first) {
      out = -s * b.e[j];
      b.e[j] *= c;
    }
  }
}

namespace {

/// True when a diagonal element was zero: its row, or column, is then cleared, and the next scan finds the split.
template <qxReal T>
bool ClearZeroDiagonal(Bidiagonal<T>& b, std::size_t first, std::size_t last, T tolerance) {
  const T* const end = b.d + last + 1;
  const T* const zero = std::find_if(b.d + first, b.d + last + 1, [=](T x) { return std::abs(x) <= tolerance; });
  if (zero == end) return false;
  const std::size_t at = static_cast<std::size_t>(zero - b.d);
  if (at < last) {
    ZeroRightTransform(b, at, last);
  } else {
    ZeroUpperTransform(b, first, last);
  }
  return true;
}

/// First element of the column that the first rotation turns: d[first]^2 less the shift, over d[first]. The shift is
/// the eigenvalue of the last 2 x 2 block of B^T B that is closer to its last element.
template <qxReal T>
T ShiftedStart(const Bidiagonal<T>& b, std::size_t first, std::size_t last) {
  const T x = b.d[first];
  const T y = b.d[last - 1];
  const T z = b.d[last];
  const T g = b.e[last - 1];
  const T h = b.e[last];
  const T divisor = 2 * h * y;
  const T ratio = divisor == 0 ? T(1e15) : ((y - z) * (y + z) + (g - h) * (g + h)) / divisor;
  const T term = ratio + WithSign(Pythagoras(ratio, T(1)), ratio);
  return ((x - z) * (x + z) + h * (y / term - h)) / x;
}

/// Cosines and sines of the rotations of one sweep, from the right and from the left.
template <qxReal T>
struct SweepRotations {
  T* rightCosines;
  T* rightSines;
  T* leftCosines;
  T* leftSines;
};

/// One sweep over d and e: chases the bulge that the first rotation makes down the block.
template <qxReal T>
void ChaseBulge(Bidiagonal<T>& b, std::size_t first, std::size_t last, const SweepRotations<T>& rotations) {
  T* const d = b.d;
  T* const e = b.e;
  T f = ShiftedStart(b, first, last);
  T x = d[first];
  T g = e[first + 1];
  T h = g;
  T c = 1, s = 1;
  for (std::size_t i = first; i < last; ++i) {
    const std::size_t j = i - first;
    T length;
    if (j > 0) {
      g = e[i + 1];
      h = s * g;
      g = c * g;
    }
    Givens1(f, h, c, s, length, T(0));
    rotations.rightCosines[j] = c;
    rotations.rightSines[j] = s;
    if (j > 0) e[i] = length;
    f = x * c + g * s;
    g = g * c - x * s;
    T y = d[i + 1];
    h = y * s;
    y *= c;
    Givens1(f, h, c, s, length, T(0));
    rotations.leftCosines[j] = c;
    rotations.leftSines[j] = s;
    d[i] = length;
    f = c * g + s * y;
    x = c * y - s * g;
  }
  e[last] = f;
  d[last] = x;
}

}  // namespace

template <qxReal T>
std::int32_t IterateOnBlock(Bidiagonal<T>& b, std::size_t first, std::size_t last, T tolerance, std::size_t& index,
                            std::size_t& sweeps, T* rotations) noexcept {
  const std::size_t n = b.size;
  const SweepRotations<T> made{rotations, rotations + n, rotations + 2 * n, rotations + 3 * n};
  for (std::int32_t iteration = 0;; ++iteration) {
    for (std::size_t i = last; i > first; --i) {
      if (std::abs(b.e[i]) <= tolerance) {
        b.e[i] = 0;
        index = i;
        return 0;
      }
    }
    if (ClearZeroDiagonal(b, first, last, tolerance)) continue;
    if (iteration > 29) return 1;
    ++sweeps;
    ChaseBulge(b, first, last, made);
    if (b.right != nullptr) {
      qxKernels::RotateInSequence(last - first, made.rightCosines, made.rightSines, b.rightLength,
                                  b.right + first * b.rightLength);
    }
    if (b.left != nullptr) {
      qxKernels::RotateInSequence(last - first, made.leftCosines, made.leftSines, b.leftLength,
                                  b.left + first * b.leftLength);
    }
  }
}

template <qxReal T>
std::int32_t IterateOnBlocks(Bidiagonal<T>& b, T tolerance) {
  Workspace<T, 16> rotations;
  if (!rotations.Reserve(4 * b.size)) return QX_STATUS_OUT_OF_MEMORY;
  std::size_t sweeps = 0;
  for (std::size_t last = b.size; last-- > 1;) {
    while (!(std::abs(b.e[last]) <= tolerance)) {
      std::size_t first = last - 1;
      while (first > 0 && !(std::abs(b.e[first]) <= tolerance)) --first;
      b.e[first] = 0;
      std::size_t index = 0;
      const std::int32_t code = IterateOnBlock(b, first, last, tolerance, index, sweeps, rotations.Data());
      if (code != 0 && sweeps > 30 * b.size) return 1;
    }
    b.e[last] = 0;
  }
  return 0;
}

template <qxReal T>
std::int32_t FindSingularNumbers(Bidiagonal<T>& b, T tolerance) {
  T largest = 0;
  for (std::size_t i = 0; i < b.size; ++i) largest = std::max({largest, std::abs(b.d[i]), std::abs(b.e[i])});
  const std::int32_t code = IterateOnBlocks(b, std::max(tolerance, std::numeric_limits<T>::epsilon() * largest));
  if (code != 0) return code;

  for (std::size_t i = 0; i < b.size; ++i) {
    if (!std::signbit(b.d[i])) continue;
    b.d[i] = -b.d[i];
    if (b.right == nullptr) continue;
    T* const vector = b.right + i * b.rightLength;
    qxKernels::Negation(b.rightLength, vector, vector);
  }
  const auto swapRows = [](T* rows, std::size_t length, std::size_t i, std::size_t k) {
    if (rows != nullptr) std::swap_ranges(rows + i * length, rows + (i + 1) * length, rows + k * length);
  };
  for (std::size_t i = 0; i < b.size; ++i) {
    const std::size_t top = i + qxKernels::IndexOfMax(b.size - i, b.d + i, false);
    if (top == i) continue;
    std::swap(b.d[i], b.d[top]);
    swapRows(b.left, b.leftLength, i, top);
    swapRows(b.right, b.rightLength, i, top);
  }
  return 0;
}

#define QX_INSTANTIATE(T)                                                                                       \
  template T Pythagoras(T, T) noexcept;                                                                         \
  template void Givens1(T, T, T&, T&, T&, T) noexcept;                                                          \
  template void SetToUnit(std::size_t, std::size_t, T*) noexcept;                                               \
  template std::int32_t ReduceToBidiagonal(std::size_t, std::size_t, T*, std::size_t, Bidiagonal<T>&);          \
  template void ZeroRightTransform(Bidiagonal<T>&, std::size_t, std::size_t) noexcept;                          \
  template void ZeroUpperTransform(Bidiagonal<T>&, std::size_t, std::size_t) noexcept;                          \
  template std::int32_t IterateOnBlock(Bidiagonal<T>&, std::size_t, std::size_t, T, std::size_t&, std::size_t&, \
                                       T*) noexcept;                                                            \
  template std::int32_t IterateOnBlocks(Bidiagonal<T>&, T);                                                     \
  template std::int32_t FindSingularNumbers(Bidiagonal<T>&, T);
QX_FOR_FLOAT_AND_DOUBLE(QX_INSTANTIATE)
#undef QX_INSTANTIATE

}  // namespace qxMatrices
