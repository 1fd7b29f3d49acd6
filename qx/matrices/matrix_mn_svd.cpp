#include <qx/kernels/array_kernels.h>
#include <qx/kernels/matrix_kernels.h>
#include <qx/kernels/rotation_kernels.h>
#include <qx/matrices/matrix_mn.h>

#include <algorithm>
#include <cmath>
#include <limits>
#include <numeric>
#include <utility>

namespace {

std::size_t Size(std::int32_t n) { return qxElementCount(n, 1); }

/// Exponent of the power of two just above the largest element; 0 for zeros, and `bad` where one is not finite.
template <qxReal T>
std::int32_t ExponentOfLargest(std::size_t count, const T* a, std::int32_t bad) {
  T largest = 0;
  for (std::size_t i = 0; i < count; ++i) {
    if (!std::isfinite(a[i])) return bad;
    largest = std::max(largest, std::abs(a[i]));
  }
  return largest > 0 ? std::ilogb(largest) + 1 : 0;
}

/// Ones on the diagonal of rows x columns elements.
template <qxReal T>
void SetToUnit(std::size_t rows, std::size_t columns, T* target) {
  std::fill_n(target, rows * columns, T(0));
  for (std::size_t i = 0; i < std::min(rows, columns); ++i) target[i * columns + i] = 1;
}

}  // namespace

template <qxReal T>
std::int32_t CQXMatrixMN<T>::QRT_2D(std::int32_t rows, std::int32_t columns, T* a, std::int32_t leftCount,
                                    Bidiagonal& target) {
  const std::size_t m = Size(rows), n = Size(columns), l = Size(leftCount);
  const qxBlock<T> column = qxMakeBlock<T>(m);
  const qxBlock<T> unit = qxMakeBlock<T>(std::max(m * l, n * n));
  const qxBlock<Reflection> reflections = qxMakeBlock<Reflection>(2 * n);
  if (column == nullptr || unit == nullptr || reflections == nullptr) return 2;
  Reflection* const ofColumns = reflections.get();
  Reflection* const ofRows = ofColumns + n;

  // Below the diagonal, and right of the superdiagonal, the tails of the reflections take the place of the matrix.
  std::fill_n(target.e, std::min<std::size_t>(n, 1), T(0));
  for (std::size_t k = 0; k < n; ++k) {
    T* const pivot = a + k * n + k;
    for (std::size_t i = 0; i < m - k; ++i) column[i] = pivot[i * n];
    const Reflection left = ofColumns[k] = MakeReflection(rows - static_cast<std::int32_t>(k), column.get());
    for (std::size_t i = 1; i < m - k; ++i) pivot[i * n] = column[i];
    target.d[k] = left.value;
    if (k + 1 == n) break;
    if (left.b != 0) {
      qxKernels::ReflectFromLeft(left.up, left.b, m - k - 1, column.get() + 1, n - k - 1, pivot + 1, pivot + 1 + n, n);
    }
    const Reflection right = ofRows[k + 1] = MakeReflection(columns - static_cast<std::int32_t>(k + 1), pivot + 1);
    target.e[k + 1] = right.value;
    if (right.b != 0) {
      qxKernels::ReflectFromRight(right.up, right.b, n - k - 2, pivot + 2, m - k - 1, pivot + 1 + n, n);
    }
  }

  if (target.left != nullptr) {
    SetToUnit(m, l, unit.get());
    for (std::size_t k = n; k-- > 0;) {
      if (ofColumns[k].b == 0) continue;
      for (std::size_t i = k + 1; i < m; ++i) column[i - k] = a[i * n + k];
      T* const corner = unit.get() + k * l + k;
      qxKernels::ReflectFromLeft(ofColumns[k].up, ofColumns[k].b, m - k - 1, column.get() + 1, l - k, corner,
                                 corner + l, l);
    }
    qxKernels::Transpose(m, l, unit.get(), target.left);
  }
  if (target.right != nullptr) {
    SetToUnit(n, n, unit.get());
    for (std::size_t k = n; k-- > 1;) {
      if (ofRows[k].b == 0) continue;
      T* const corner = unit.get() + k * n + k;
      qxKernels::ReflectFromLeft(ofRows[k].up, ofRows[k].b, n - k - 1, a + (k - 1) * n + k + 1, n - k, corner,
                                 corner + n, n);
    }
    qxKernels::Transpose(n, n, unit.get(), target.right);
  }
  return 0;
}

template <qxReal T>
void CQXMatrixMN<T>::ZeroRightTransform(Bidiagonal& b, std::int32_t zero, std::int32_t last) noexcept {
  b.d[zero] = 0;
  T out = std::exchange(b.e[zero + 1], T(0));
  for (std::int32_t j = zero + 1; j <= last && out != 0; ++j) {
    T c, s;
    Givens1(b.d[j], out, c, s, b.d[j], T(0));
    if (b.left != nullptr) {
      const std::size_t length = Size(b.leftLength);
      qxKernels::Rotate(length, c, s, b.left + Size(j) * length, b.left + Size(zero) * length);
    }
    if (j < last) {
      out = -s * b.e[j + 1];
      b.e[j + 1] *= c;
    }
  }
}

template <qxReal T>
void CQXMatrixMN<T>::ZeroUpperTransform(Bidiagonal& b, std::int32_t first, std::int32_t zero) noexcept {
  b.d[zero] = 0;
  T out = std::exchange(b.e[zero], T(0));
  for (std::int32_t j = zero - 1; j >= first && out != 0; --j) {
    T c, s;
    Givens1(b.d[j], out, c, s, b.d[j], T(0));
    if (b.right != nullptr) {
      const std::size_t length = Size(b.rightLength);
      qxKernels::Rotate(length, c, s, b.right + Size(j) * length, b.right + Size(zero) * length);
    }
    if (j > first) {
      out = -s * b.e[j];
      b.e[j] *= c;
    }
  }
}

template <qxReal T>
std::int32_t CQXMatrixMN<T>::QRBD(Bidiagonal& b, std::int32_t first, std::int32_t last, T tolerance,
                                  std::int32_t& index, std::int32_t& sweeps) noexcept {
  T* const d = b.d;
  T* const e = b.e;
  const std::int32_t count = last - first;
  T* const rightCosines = b.rotations;
  T* const rightSines = rightCosines + b.size;
  T* const leftCosines = rightSines + b.size;
  T* const leftSines = leftCosines + b.size;
  for (std::int32_t iteration = 0;; ++iteration) {
    for (std::int32_t i = last; i > first; --i) {
      if (std::abs(e[i]) <= tolerance) {
        e[i] = 0;
        index = i;
        return 0;
      }
    }
    const T* const zero = std::find_if(d + first, d + last + 1, [=](T x) { return std::abs(x) <= tolerance; });
    if (zero != d + last + 1) {
      const std::int32_t at = static_cast<std::int32_t>(zero - d);
      if (at < last) {
        ZeroRightTransform(b, at, last);
      } else {
        ZeroUpperTransform(b, first, last);
      }
      continue;  // the next scan finds what was cleared
    }
    if (iteration > 29) return 1;
    ++sweeps;

    // The shift is the eigenvalue of the last 2 x 2 block of B^T B that is closer to its last element.
    T x = d[first];
    T y = d[last - 1];
    T z = d[last];
    T g = e[last - 1];
    T h = e[last];
    const T divisor = 2 * h * y;
    const T ratio = divisor == 0 ? T(1e15) : ((y - z) * (y + z) + (g - h) * (g + h)) / divisor;
    const T term = ratio + SignA(Pythagoras(ratio, T(1)), ratio);
    T f = ((x - z) * (x + z) + h * (y / term - h)) / x;
    g = e[first + 1];
    h = g;
    T c = 1, s = 1;
    for (std::int32_t j = 0; j < count; ++j) {
      const std::int32_t i = first + j;
      T length;
      if (j > 0) {
        g = e[i + 1];
        h = s * g;
        g = c * g;
      }
      Givens1(f, h, c, s, length, T(0));
      rightCosines[j] = c;
      rightSines[j] = s;
      if (j > 0) e[i] = length;
      f = x * c + g * s;
      g = g * c - x * s;
      y = d[i + 1];
      h = y * s;
      y *= c;
      Givens1(f, h, c, s, length, T(0));
      leftCosines[j] = c;
      leftSines[j] = s;
      d[i] = length;
      f = c * g + s * y;
      x = c * y - s * g;
    }
    e[last] = f;
    d[last] = x;
    if (b.right != nullptr) {
      const std::size_t length = Size(b.rightLength);
      qxKernels::RotateInSequence(Size(count), rightCosines, rightSines, length, b.right + Size(first) * length);
    }
    if (b.left != nullptr) {
      const std::size_t length = Size(b.leftLength);
      qxKernels::RotateInSequence(Size(count), leftCosines, leftSines, length, b.left + Size(first) * length);
    }
  }
}

template <qxReal T>
std::int32_t CQXMatrixMN<T>::Apply_QRBD(Bidiagonal& b, T tolerance) {
  const qxBlock<T> rotations = qxMakeBlock<T>(4 * Size(b.size));
  if (rotations == nullptr) return 2;
  b.rotations = rotations.get();
  std::int32_t sweeps = 0;
  std::int32_t last = b.size - 1;
  while (last > 0) {
    if (std::abs(b.e[last]) <= tolerance) {
      b.e[last] = 0;
      --last;
      continue;
    }
    std::int32_t first = last - 1;
    while (first > 0 && !(std::abs(b.e[first]) <= tolerance)) --first;
    b.e[first] = 0;
    std::int32_t index = 0;
    if (QRBD(b, first, last, tolerance, index, sweeps) != 0 && sweeps > 30 * b.size) return 1;
  }
  return 0;
}

template <qxReal T>
std::int32_t CQXMatrixMN<T>::SingDecomp2D(Bidiagonal& b, T tolerance) {
  T largest = 0;
  for (std::int32_t i = 0; i < b.size; ++i) largest = std::max({largest, std::abs(b.d[i]), std::abs(b.e[i])});
  tolerance = std::max(tolerance, std::numeric_limits<T>::epsilon() * largest);
  const std::int32_t code = Apply_QRBD(b, tolerance);
  if (code != 0) return code;

  const std::size_t rightLength = Size(b.rightLength), leftLength = Size(b.leftLength);
  for (std::size_t i = 0; i < Size(b.size); ++i) {
    if (!std::signbit(b.d[i])) continue;
    b.d[i] = -b.d[i];
    if (b.right != nullptr) {
      qxKernels::Negation(rightLength, b.right + i * rightLength, b.right + i * rightLength);
    }
  }
  for (std::size_t i = 0; i < Size(b.size); ++i) {
    const std::size_t top = i + qxKernels::IndexOfMax(Size(b.size) - i, b.d + i, false);
    if (top == i) continue;
    std::swap(b.d[i], b.d[top]);
    if (b.left != nullptr) {
      std::swap_ranges(b.left + i * leftLength, b.left + (i + 1) * leftLength, b.left + top * leftLength);
    }
    if (b.right != nullptr) {
      std::swap_ranges(b.right + i * rightLength, b.right + (i + 1) * rightLength, b.right + top * rightLength);
    }
  }
  return 0;
}

template <qxReal T>
std::int32_t CQXMatrixMN<T>::TestZeroRowsColumns(std::int32_t rows, std::int32_t columns, const T* a, T tolerance,
                                                 std::int32_t* rowOrder, std::int32_t* columnOrder) noexcept {
  const std::size_t width = Size(columns);
  const auto order = [](std::int32_t count, std::int32_t* target, auto isZero) {
    std::iota(target, target + count, 0);
    std::int32_t next = 0;
    for (std::int32_t i = 0; i < count; ++i) {
      if (!isZero(Size(i))) target[next++] = i;
    }
    const bool isNatural = next == 0 || target[next - 1] == next - 1;
    for (std::int32_t i = 0; i < count && next < count; ++i) {
      if (isZero(Size(i))) target[next++] = i;
    }
    return isNatural;
  };
  const auto isSmall = [=](T x) { return std::abs(x) <= tolerance; };
  const bool rowsNatural =
      order(rows, rowOrder, [&](std::size_t r) { return std::all_of(a + r * width, a + (r + 1) * width, isSmall); });
  const bool columnsNatural = order(columns, columnOrder, [&](std::size_t c) {
    for (std::size_t r = 0; r < Size(rows); ++r) {
      if (!isSmall(a[r * width + c])) return false;
    }
    return true;
  });
  return !(rowsNatural && columnsNatural);
}

template <qxReal T>
void CQXMatrixMN<T>::MoveZeroRows(std::int32_t rows, std::int32_t columns, const T* source, const std::int32_t* order,
                                  T* target) noexcept {
  const std::size_t width = Size(columns);
  for (std::size_t r = 0; r < Size(rows); ++r) std::copy_n(source + Size(order[r]) * width, width, target + r * width);
}

template <qxReal T>
void CQXMatrixMN<T>::MoveZeroColumns(std::int32_t rows, std::int32_t columns, T* a, const std::int32_t* order,
                                     T* work) noexcept {
  const std::size_t width = Size(columns);
  for (std::size_t r = 0; r < Size(rows); ++r) {
    T* const row = a + r * width;
    std::copy_n(row, width, work);
    for (std::size_t c = 0; c < width; ++c) row[c] = work[order[c]];
  }
}

template <qxReal T>
std::int32_t CQXMatrixMN<T>::Decompose(Wanted wanted, T tolerance, SingularForm& form) const {
  const bool isWide = this->RowsNb() < this->ColsNb();
  const std::int32_t rows = std::max({this->RowsNb(), this->ColsNb(), 0});
  const std::int32_t columns = SingularCount();
  if (isWide) std::swap(wanted.left, wanted.right);
  const std::int32_t leftCount = wanted.left > 0 ? std::clamp(wanted.left, columns, std::max(columns, rows)) : 0;
  const std::int32_t rightCount = wanted.right > 0 ? columns : 0;
  const std::size_t m = Size(rows), n = Size(columns);

  const qxBlock<T> a = qxMakeBlock<T>(m * n);
  const qxBlock<T> moved = qxMakeBlock<T>(m * n);
  qxBlock<T> values = qxMakeBlock<T>(n);
  const qxBlock<T> e = qxMakeBlock<T>(n);
  const qxBlock<std::int32_t> order = qxMakeBlock<std::int32_t>(m + n);
  qxBlock<T> left = qxMakeBlock<T>(Size(leftCount) * m);
  qxBlock<T> right = qxMakeBlock<T>(Size(rightCount) * n);
  if (this->Count() != m * n || a == nullptr || moved == nullptr || values == nullptr || e == nullptr ||
      order == nullptr || left == nullptr || right == nullptr) {
    return 2;
  }
  // With the largest element brought near 1, no product of elements overflows and none that matters underflows.
  constexpr std::int32_t notFinite = std::numeric_limits<std::int32_t>::max();
  const std::int32_t exponent = ExponentOfLargest(m * n, Data(), notFinite);
  if (exponent == notFinite) return 1;
  if (isWide) {
    qxKernels::Transpose(n, m, Data(), a.get());
  } else {
    std::copy_n(Data(), m * n, a.get());
  }
  qxKernels::MultiplyByPowerOfTwo(m * n, -exponent, a.get());
  qxKernels::MultiplyByPowerOfTwo(1, -exponent, &tolerance);

  std::int32_t* const rowOrder = order.get();
  std::int32_t* const columnOrder = rowOrder + m;
  const bool isMoved = TestZeroRowsColumns(rows, columns, a.get(), tolerance, rowOrder, columnOrder) != 0;
  if (isMoved) {
    MoveZeroRows(rows, columns, a.get(), rowOrder, moved.get());
    MoveZeroColumns(rows, columns, moved.get(), columnOrder, a.get());
  }
  T* const work = isMoved ? moved.get() : a.get();

  Bidiagonal b{columns, values.get(),
               e.get(), leftCount > 0 ? left.get() : nullptr,
               rows,    rightCount > 0 ? right.get() : nullptr,
               columns, nullptr};
  if (qxKernels::IsBand(m, n, work, 0, 1, tolerance)) {
    for (std::size_t i = 0; i < n; ++i) {
      b.d[i] = work[i * n + i];
      b.e[i] = i > 0 ? work[(i - 1) * n + i] : T(0);
    }
    SetToUnit(Size(leftCount), m, left.get());
    SetToUnit(Size(rightCount), n, right.get());
  } else if (const std::int32_t code = QRT_2D(rows, columns, work, leftCount, b); code != 0) {
    return code;
  }
  if (const std::int32_t code = SingDecomp2D(b, tolerance); code != 0) return code;

  qxKernels::MultiplyByPowerOfTwo(n, exponent, values.get());
  if (isMoved) {
    // The vectors go back to the places of the rows and columns; `a` and `moved` have served.
    const auto moveBack = [&](std::int32_t count, std::int32_t length, std::int32_t* places, T* vectors) {
      for (std::size_t i = 0; i < Size(count); ++i) {
        T* const vector = vectors + i * Size(length);
        std::copy_n(vector, Size(length), a.get());
        for (std::size_t k = 0; k < Size(length); ++k) vector[places[k]] = a[k];
      }
    };
    moveBack(leftCount, rows, rowOrder, left.get());
    moveBack(rightCount, columns, columnOrder, right.get());
  }
  form.values = std::move(values);
  form.left = std::move(isWide ? right : left);
  form.leftCount = isWide ? rightCount : leftCount;
  form.right = std::move(isWide ? left : right);
  form.rightCount = isWide ? leftCount : rightCount;
  return 0;
}

template <qxReal T>
std::int32_t CQXMatrixMN<T>::SV_Decomposition(CQXMatrixMN& U, CQXMatrixMN& V, CQXVectorN<T>& singular,
                                              T tolerance) const {
  const std::int32_t rows = this->RowsNb();
  const std::int32_t columns = this->ColsNb();
  const std::int32_t count = SingularCount();
  SingularForm form;
  const std::int32_t code = Decompose({U.ColsNb(), V.ColsNb()}, tolerance, form);
  if (code != 0) return code;
  U.TakeTransposedResult(form.leftCount, rows, form.left.get());
  V.TakeTransposedResult(form.rightCount, columns, form.right.get());
  TakeResult(count, form.values.get(), singular);
  if (this != &U && this != &V) {
    m_singularNumbers = std::move(form.values);
    m_singularFlag = 1;
  }
  return 0;
}

template <qxReal T>
std::int32_t CQXMatrixMN<T>::ThinSVD(CQXMatrixMN& U, CQXMatrixMN& V, CQXVectorN<T>& singular) const {
  const std::int32_t rows = this->RowsNb();
  const std::int32_t columns = this->ColsNb();
  const std::int32_t count = SingularCount();
  SingularForm form;
  if (Decompose({count, count}, T(0), form) != 0) return 0;
  U.TakeTransposedResult(form.leftCount, rows, form.left.get());
  V.TakeTransposedResult(form.rightCount, columns, form.right.get());
  TakeResult(count, form.values.get(), singular);
  return 1;
}

template <qxReal T>
std::int32_t CQXMatrixMN<T>::ThinSVDUnitOffsetInPlace(CQXMatrixMN& a, CQXVectorN<T>& singular, CQXMatrixMN& v) const {
  const std::int32_t rows = this->RowsNb();
  const std::int32_t columns = this->ColsNb();
  if (rows < columns) return 0;
  const CQXMatrixMN matrix = a.ExtractMatrix(1, 1, rows, columns);
  CQXMatrixMN left(rows, columns);
  CQXMatrixMN right(columns);
  CQXVectorN<T> values(columns);
  const bool isHeld = left.Count() == matrix.Count() && right.Count() == qxElementCount(columns, columns);
  if (!isHeld || (columns > 0 && values.Data() == nullptr) || matrix.ThinSVD(left, right, values) == 0) return 0;
  a.InsertMatrix(left, 1, 1, rows, columns);
  v.InsertMatrix(right, 1, 1, columns, columns);
  singular.ReplacePart(1, 0, columns, values);
  return 1;
}

template class CQXMatrixMN<float>;
template class CQXMatrixMN<double>;
