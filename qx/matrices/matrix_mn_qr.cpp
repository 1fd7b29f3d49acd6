#include <qx/kernels/array_kernels.h>
#include <qx/kernels/rotation_kernels.h>
#include <qx/matrices/matrix_mn.h>

#include <algorithm>
#include <cmath>
#include <utility>

template <qxReal T>
T CQXMatrixMN<T>::SignA(T a, T b) noexcept {
  return b < 0 ? -std::abs(a) : std::abs(a);
}

template <qxReal T>
T CQXMatrixMN<T>::Pythagoras(T a, T b) noexcept {
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
std::int32_t CQXMatrixMN<T>::Householder1(std::int32_t pivot, std::int32_t first, std::int32_t last, std::int32_t count,
                                          T& up, T* vector, T* matrix, T tolerance) noexcept {
  if (pivot >= last) return 0;
  if (pivot == last - 1) {
    up = 0;  // an element alone is its own signed length
    return 0;
  }
  const T* tail = vector + first;
  const std::size_t tailCount = qxElementCount(last - first, 1);
  T scale = std::abs(vector[pivot]);
  for (std::size_t j = 0; j < tailCount; ++j) scale = std::max(scale, std::abs(tail[j]));
  if (scale < tolerance || scale == 0) return 0;
  const T head = vector[pivot] / scale;
  T tailSquares = 0;
  for (std::size_t j = 0; j < tailCount; ++j) {
    const T x = tail[j] / scale;
    tailSquares += x * x;
  }
  const T length = SignA(qxGuardedSqrt(head * head + tailSquares), head);
  // The pivot less the length cancels, since both have one sign; the quotient is the same number.
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
void CQXMatrixMN<T>::Householder2(std::int32_t pivot, std::int32_t first, std::int32_t last, T up, const T* vector,
                                  CQXMatrixMN& matrix, T tolerance) noexcept {
  if (pivot >= last || last == 0) return;
  const T b = vector[pivot] * up;
  if (!(b < -tolerance)) return;
  qxKernels::ReflectFromLeft(up, b, qxElementCount(last - first, 1), vector + first, qxElementCount(last, 1),
                             &matrix(pivot, 0), matrix.Data() + matrix.Position(first, 0),
                             qxElementCount(matrix.ColsNb(), 1));
}

template <qxReal T>
typename CQXMatrixMN<T>::Reflection CQXMatrixMN<T>::MakeReflection(std::int32_t count, T* vector) noexcept {
  const std::size_t size = qxElementCount(count, 1);
  T largest = 0;
  for (std::size_t i = 0; i < size; ++i) largest = std::max(largest, std::abs(vector[i]));
  const std::int32_t exponent = largest > 0 ? std::ilogb(largest) : 0;
  qxKernels::MultiplyByPowerOfTwo(size, -exponent, vector);
  T up = 0;
  Householder1(0, 1, count, 0, up, vector, nullptr, T(0));
  return {up, vector[0] * up, std::ldexp(vector[0], exponent)};
}

template <qxReal T>
void CQXMatrixMN<T>::Givens1(T a, T b, T& c, T& s, T& r, T tolerance) noexcept {
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
void CQXMatrixMN<T>::Givens2(T c, T s, T& x, T& y) noexcept {
  qxKernels::Rotate(1, c, s, &x, &y);
}

template <qxReal T>
std::int32_t CQXMatrixMN<T>::QR_Decomposition(CQXMatrixMN& Q, CQXMatrixMN& R, T) const {
  const std::int32_t rows = this->RowsNb();
  const std::int32_t columns = this->ColsNb();
  const std::int32_t steps = this->DiagonalCount();
  const std::size_t height = qxElementCount(rows, 1);
  if (!IsFinite()) return 0;
  CQXMatrixMN r(*this);
  CQXMatrixMN q(rows, rows);
  // The vectors of the reflections lie one after the other; each begins at the diagonal.
  const qxBlock<T> vectors = qxMakeBlock<T>(height * qxElementCount(steps, 1));
  const qxBlock<Reflection> reflections = qxMakeBlock<Reflection>(qxElementCount(steps, 1));
  if (vectors == nullptr || reflections == nullptr || q.Count() != height * height ||
      r.Count() != qxElementCount(rows, columns)) {
    return 0;
  }
  const auto reflect = [&](std::int32_t k, std::int32_t width, T* corner, std::size_t stride) {
    const Reflection& reflection = reflections[qxElementCount(k, 1)];
    if (reflection.b == 0) return;
    const T* const tail = vectors.get() + height * qxElementCount(k, 1) + 1;
    qxKernels::ReflectFromLeft(reflection.up, reflection.b, qxElementCount(rows - k - 1, 1), tail,
                               qxElementCount(width, 1), corner, corner + stride, stride);
  };
  for (std::int32_t k = 0; k < steps; ++k) {
    T* const vector = vectors.get() + height * qxElementCount(k, 1);
    for (std::int32_t i = k; i < rows; ++i) vector[i - k] = std::exchange(r(i, k), T(0));
    reflections[qxElementCount(k, 1)] = MakeReflection(rows - k, vector);
    r(k, k) = reflections[qxElementCount(k, 1)].value;
    reflect(k, columns - k - 1, &r(k, k) + 1, qxElementCount(columns, 1));
  }
  q.SetDiagonal(1);
  for (std::int32_t k = steps - 1; k >= 0; --k) reflect(k, rows - k, &q(k, k), height);
  Q.TakeResult(rows, rows, q.Data());
  R.TakeResult(rows, columns, r.Data());
  return 1;
}

template class CQXMatrixMN<float>;
template class CQXMatrixMN<double>;
