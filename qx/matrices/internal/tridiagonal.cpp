#include <qx/foundation/internal/instantiate.h>
#include <qx/kernels/array_kernels.h>
#include <qx/kernels/matrix_kernels.h>
#include <qx/kernels/rotation_kernels.h>
#include <qx/matrices/internal/bidiagonal.h>
#include <qx/matrices/internal/householder.h>
#include <qx/matrices/internal/jacobi.h>
#include <qx/matrices/internal/scaling.h>
#include <qx/matrices/internal/tridiagonal.h>
#include <qx/matrices/internal/workspace.h>

#include <algorithm>
#include <cmath>
#include <limits>

namespace qxMatrices {

namespace {

/// Tridiagonal matrix: d on the diagonal, e[i] joins d[i] and d[i + 1]. The rows of vectors are the columns of the
/// orthogonal matrix that leads back.
///
/// The steps begin at the first element and clear the last one, which is the QL iteration on the matrix read backwards:
/// so the rotations of a step run through the vectors in ascending order.
template <qxReal T>
struct Tridiagonal {
  std::size_t n;
  T* d;
  T* e;
  T* vectors;
  T* cosines;
  T* sines;
};

/// a := H a H for the reflection with the vector u = (up, tail): a + u w^T + w u^T with p = a u / b and
/// w = p + u (u^T p / 2 b), on the trailing @p count rows and columns from @p corner on. @p w receives w.
template <qxReal T>
void ReflectFromBothSides(std::size_t count, const T* u, T b, T* corner, std::size_t stride, T* w) {
  qxKernels::CombineRows(count, u, 1, corner, stride, count, w);
  qxKernels::Divide(count, b, w);
  const T half = qxKernels::Dot(count, u, w) / (2 * b);
  qxKernels::AddMultiple(count, half, u, w);
  for (std::size_t r = 0; r < count; ++r) {
    T* const row = corner + r * stride;
    const T ur = u[r], wr = w[r];
    for (std::size_t c = 0; c < count; ++c) row[c] += ur * w[c] + wr * u[c];
  }
}

/// Reduces the symmetric matrix @p a, which is destroyed: the vectors of the reflections take the place of its rows.
/// @param bs what belongs to them, 0 where there is none; @p work n elements
template <qxReal T>
void Reduce(T* a, T* bs, T* work, Tridiagonal<T>& target) {
  const std::size_t n = target.n;
  for (std::size_t k = 0; k + 1 < n; ++k) {
    target.d[k] = a[k * n + k];
    T* const u = a + k * n + k + 1;  // the row holds the same numbers as the column
    const Reflection<T> reflection = MakeReflection(n - k - 1, u);
    target.e[k] = reflection.value;
    bs[k] = reflection.b;
    if (reflection.b == 0) continue;
    u[0] = reflection.up;
    ReflectFromBothSides(n - k - 1, u, reflection.b, u + n, n, work);
  }
  if (n > 0) target.d[n - 1] = a[n * n - 1];
}

/// Collects the reflections of Reduce() as rows of the transposed orthogonal matrix, by way of @p unit.
template <qxReal T>
void Collect(const T* a, const T* bs, T* unit, Tridiagonal<T>& target) {
  const std::size_t n = target.n;
  SetToUnit(n, n, unit);
  for (std::size_t k = n; k-- > 0;) {
    if (k + 1 >= n || bs[k] == 0) continue;
    const T* const u = a + k * n + k + 1;
    T* const corner = unit + (k + 1) * n + k + 1;
    qxKernels::ReflectFromLeft(u[0], bs[k], n - k - 2, u + 1, n - k - 1, corner, corner + n, n);
  }
  qxKernels::Transpose(n, n, unit, target.vectors);
}

/// One step on the block first .. last, with the shift of Wilkinson.
template <qxReal T>
void Step(Tridiagonal<T>& t, std::size_t first, std::size_t last) {
  T* const d = t.d;
  T* const e = t.e;
  const T half = (d[last - 1] - d[last]) / (2 * e[last - 1]);
  const T shift = d[last] - e[last - 1] / (half + WithSign(Pythagoras(half, T(1)), half));
  T x = d[first] - shift;
  T z = e[first];
  for (std::size_t i = first; i < last; ++i) {
    T c, s, length;
    Givens1(x, z, c, s, length, T(0));
    t.cosines[i] = c;
    t.sines[i] = s;
    if (i > first) e[i - 1] = length;
    // The rotated 2 x 2 block, by the difference of its diagonal.
    const T difference = d[i] - d[i + 1];
    const T product = s * (s * difference - 2 * c * e[i]);
    e[i] = c * s * -difference + (c * c - s * s) * e[i];
    d[i] -= product;
    d[i + 1] += product;
    x = e[i];
    if (i + 1 < last) {
      z = s * e[i + 1];
      e[i + 1] *= c;
    }
  }
  qxKernels::RotateInSequence(last - first, t.cosines + first, t.sines + first, t.n, t.vectors + first * t.n);
}

/// Splits and steps until all of e is zero. @return false after 30 steps for one eigenvalue.
template <qxReal T>
bool Iterate(Tridiagonal<T>& t) {
  const auto isNegligible = [&](std::size_t i) {
    return std::abs(t.e[i]) <= std::numeric_limits<T>::epsilon() * (std::abs(t.d[i]) + std::abs(t.d[i + 1])) ||
           std::abs(t.e[i]) <= std::numeric_limits<T>::min();
  };
  int steps = 0;
  for (std::size_t last = t.n; last-- > 1;) {
    for (steps = 0; !isNegligible(last - 1); ++steps) {
      if (steps == 30) return false;
      std::size_t first = last - 1;
      while (first > 0 && !isNegligible(first - 1)) --first;
      Step(t, first, last);
    }
  }
  return true;
}

}  // namespace

template <qxReal T>
qxStatus FindSymmetricFormByQL(std::size_t n, const T* a, T* values, T* vectors) {
  Workspace<T, 48> work;
  if (!work.Reserve(2 * n * n + 4 * n)) return QX_STATUS_OUT_OF_MEMORY;
  const std::optional<std::int32_t> exponent = ExponentOfLargest(n * n, a);
  if (!exponent) return QX_STATUS_TOO_MANY_ROTATIONS;
  T* const matrix = work.Take(n * n);
  T* const rows = work.Take(n * n);
  T* const d = work.Take(n);
  T* const e = work.Take(n);
  T* const cosines = work.Take(n);
  Tridiagonal<T> t{n, d, e, rows, cosines, work.Take(n)};
  for (std::size_t r = 0; r < n; ++r) {
    for (std::size_t c = 0; c <= r; ++c) matrix[r * n + c] = matrix[c * n + r] = a[r * n + c];
  }
  qxKernels::MultiplyByPowerOfTwo(n * n, -*exponent, matrix);
  T* const unit = vectors;  // for as long as the result is not written yet
  Reduce(matrix, t.cosines, t.sines, t);
  Collect(matrix, t.cosines, unit, t);
  if (!Iterate(t)) return QX_STATUS_TOO_MANY_ROTATIONS;
  qxKernels::MultiplyByPowerOfTwo(n, *exponent, d);
  if (!ExponentOfLargest(n, d)) return QX_STATUS_TOO_MANY_ROTATIONS;
  return SortAscending(n, d, rows, values, vectors);
}

template qxStatus FindSymmetricFormByQL(std::size_t, const float*, float*, float*);
template qxStatus FindSymmetricFormByQL(std::size_t, const double*, double*, double*);

}  // namespace qxMatrices
