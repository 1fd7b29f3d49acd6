#pragma once

#include <qx/foundation/internal/unroll.h>
#include <qx/foundation/scalar.h>

#include <cmath>
#include <cstddef>
#include <cstring>
#include <type_traits>

/// @file
/// Internal, installed because public headers include it.
/// Products and inverses of the fixed matrices over registers of 16 bytes, which hold four floats or two doubles.
///
/// Each element is formed by the same operations in the same order as in the plain code of the classes, so the results
/// are the same to the last bit; only the grouping differs, which compilers do not find by themselves everywhere.

namespace qxFixedLanes {

template <qxReal T>
struct Register {
  typedef T Type __attribute__((vector_size(16)));
};
/// 16 bytes of numbers.
template <qxReal T>
using Lanes = typename Register<T>::Type;

/// Number of elements of a register.
template <qxReal T>
inline constexpr std::size_t width = 16 / sizeof(T);

template <qxReal T>
[[nodiscard, gnu::always_inline]] inline Lanes<T> Load(const T* source) noexcept {
  Lanes<T> lanes;
  std::memcpy(&lanes, source, sizeof lanes);
  return lanes;
}

template <qxReal T>
[[gnu::always_inline]] inline void Store(std::type_identity_t<Lanes<T>> lanes, T* target) noexcept {
  std::memcpy(target, &lanes, sizeof lanes);
}

/// c := a b for N x N matrices by rows; @p c is another array. Rows that no register divides evenly end in single
/// numbers.
template <std::size_t N, typename T>
[[gnu::always_inline]] inline void Multiply(const T* a, const T* b, T* c) noexcept {
  constexpr std::size_t w = width<T>;
  qxUnroll<N>([&](std::size_t r) {
    const T* row = a + r * N;
    qxUnroll<N / w>([&](std::size_t chunk) {
      Store<T>(qxUnrolledSum<N>([&](std::size_t k) { return row[k] * Load(b + k * N + chunk * w); }),
               c + r * N + chunk * w);
    });
    qxUnroll<N % w>([&](std::size_t i) {
      const std::size_t column = N - 1 - i;
      c[r * N + column] = qxUnrolledSum<N>([&](std::size_t k) { return row[k] * b[k * N + column]; });
    });
  });
}

/// The columns of the 4x4 matrix with the given rows.
struct Columns {
  [[gnu::always_inline]] inline Columns(Lanes<float> r0, Lanes<float> r1, Lanes<float> r2, Lanes<float> r3) noexcept {
    const Lanes<float> low01 = __builtin_shufflevector(r0, r1, 0, 4, 1, 5);
    const Lanes<float> low23 = __builtin_shufflevector(r2, r3, 0, 4, 1, 5);
    const Lanes<float> high01 = __builtin_shufflevector(r0, r1, 2, 6, 3, 7);
    const Lanes<float> high23 = __builtin_shufflevector(r2, r3, 2, 6, 3, 7);
    c0 = __builtin_shufflevector(low01, low23, 0, 1, 4, 5);
    c1 = __builtin_shufflevector(low01, low23, 2, 3, 6, 7);
    c2 = __builtin_shufflevector(high01, high23, 0, 1, 4, 5);
    c3 = __builtin_shufflevector(high01, high23, 2, 3, 6, 7);
  }

  Lanes<float> c0, c1, c2, c3;
};

/// r := m v for a 4x4 matrix by rows; @p r is another array. The columns do not wait for the vector: a loop over
/// vectors forms them once.
[[gnu::always_inline]] inline void Apply4(const float* m, const float* v, float* r) noexcept {
  const Columns column(Load(m), Load(m + 4), Load(m + 8), Load(m + 12));
  Store<float>(column.c0 * v[0] + column.c1 * v[1] + column.c2 * v[2] + column.c3 * v[3], r);
}

/// r := m v for a 4x4 matrix by rows; @p r is another array.
[[gnu::always_inline]] inline void Apply4(const double* m, const double* v, double* r) noexcept {
  const Lanes<double> xy = Load(v);
  const Lanes<double> zw = Load(v + 2);
  qxUnroll<2>([&](std::size_t half) {
    const double* row = m + 8 * half;
    const Lanes<double> low0 = Load(row) * xy;
    const Lanes<double> high0 = Load(row + 2) * zw;
    const Lanes<double> low1 = Load(row + 4) * xy;
    const Lanes<double> high1 = Load(row + 6) * zw;
    Store<double>(__builtin_shufflevector(low0, low1, 0, 2) + __builtin_shufflevector(low0, low1, 1, 3) +
                      __builtin_shufflevector(high0, high1, 0, 2) + __builtin_shufflevector(high0, high1, 1, 3),
                  r + 2 * half);
  });
}

/// The 2x2 minors of two neighbouring rows of a 4x4 matrix; the digits of a name are the columns.
template <typename Number>
struct RowPairMinors {
  Number m01, m02, m03, m12, m13, m23;
};

/// Minors of two rows.
template <qxReal T>
[[nodiscard, gnu::always_inline]] constexpr RowPairMinors<T> Minors(const T* row) noexcept {
  const T* next = row + 4;
  return {row[0] * next[1] - row[1] * next[0], row[0] * next[2] - row[2] * next[0],
          row[0] * next[3] - row[3] * next[0], row[1] * next[2] - row[2] * next[1],
          row[1] * next[3] - row[3] * next[1], row[2] * next[3] - row[3] * next[2]};
}

/// Determinant by the minors of the upper two rows and their complements in the lower two.
template <qxReal T>
[[nodiscard, gnu::always_inline]] constexpr T Determinant(const RowPairMinors<T>& u,
                                                          const RowPairMinors<T>& l) noexcept {
  return u.m01 * l.m23 - u.m02 * l.m13 + u.m03 * l.m12 + u.m12 * l.m03 - u.m13 * l.m02 + u.m23 * l.m01;
}

/// Writes the four rows of an inverse, or parts of them: @p c0 to @p c3 hold the columns of the matrix with
/// neighbouring rows exchanged, @p m the minors of the two rows that do not stand there, @p d the signed reciprocal
/// determinant of the even rows.
template <typename T, typename Number>
[[gnu::always_inline]] inline void StoreAdjugate(Lanes<T> c0, Lanes<T> c1, Lanes<T> c2, Lanes<T> c3,
                                                 const RowPairMinors<Number>& m, Lanes<T> d, T* target) noexcept {
  Store<T>((c1 * m.m23 - c2 * m.m13 + c3 * m.m12) * d, target);
  Store<T>((c0 * m.m23 - c2 * m.m03 + c3 * m.m02) * -d, target + 4);
  Store<T>((c0 * m.m13 - c1 * m.m03 + c3 * m.m01) * d, target + 8);
  Store<T>((c0 * m.m12 - c1 * m.m02 + c2 * m.m01) * -d, target + 12);
}

/// target := the inverse of the 4x4 matrix @p a, which may be the target.
/// @return false when the absolute determinant is below the tolerance, and the target is untouched.
[[nodiscard, gnu::always_inline]] inline bool Invert4(const double* a, double tolerance, double* target) noexcept {
  const RowPairMinors<double> upper = Minors(a);
  const RowPairMinors<double> lower = Minors(a + 8);
  const double det = Determinant(upper, lower);
  if (std::abs(det) < tolerance) return false;
  const double reciprocal = 1 / det;
  const Lanes<double> d = {reciprocal, -reciprocal};
  const Lanes<double> upper0 = {a[4], a[0]}, upper1 = {a[5], a[1]}, upper2 = {a[6], a[2]}, upper3 = {a[7], a[3]};
  const Lanes<double> lower0 = {a[12], a[8]}, lower1 = {a[13], a[9]}, lower2 = {a[14], a[10]}, lower3 = {a[15], a[11]};
  StoreAdjugate(upper0, upper1, upper2, upper3, lower, d, target);
  StoreAdjugate(lower0, lower1, lower2, lower3, upper, d, target + 2);
  return true;
}

/// The product c s in the four lanes holds the two terms of one minor of the upper rows, in lanes 1 and 0, and of the
/// lower rows, in lanes 3 and 2. @return (lower, lower, upper, upper).
[[nodiscard, gnu::always_inline]] inline Lanes<float> MinorOf(Lanes<float> c, Lanes<float> s) noexcept {
  const Lanes<float> terms = c * s;
  return __builtin_shufflevector(terms, terms, 3, 3, 1, 1) - __builtin_shufflevector(terms, terms, 2, 2, 0, 0);
}

/// target := the inverse of the 4x4 matrix @p a, which may be the target.
/// @return false when the absolute determinant is below the tolerance, and the target is untouched.
[[nodiscard, gnu::always_inline]] inline bool Invert4(const float* a, float tolerance, float* target) noexcept {
  // In the order of rows 1, 0, 3, 2; below the same in the order 0, 1, 2, 3.
  const auto [c0, c1, c2, c3] = Columns(Load(a + 4), Load(a), Load(a + 12), Load(a + 8));
  const Lanes<float> s1 = __builtin_shufflevector(c1, c1, 1, 0, 3, 2);
  const Lanes<float> s2 = __builtin_shufflevector(c2, c2, 1, 0, 3, 2);
  const Lanes<float> s3 = __builtin_shufflevector(c3, c3, 1, 0, 3, 2);
  const RowPairMinors<Lanes<float>> m{MinorOf(c0, s1), MinorOf(c0, s2), MinorOf(c0, s3),
                                      MinorOf(c1, s2), MinorOf(c1, s3), MinorOf(c2, s3)};
  // Lane 2 holds upper times lower minor, lane 0 the other way round.
  const Lanes<float> p = m.m01 * __builtin_shufflevector(m.m23, m.m23, 2, 3, 0, 1);
  const Lanes<float> q = m.m02 * __builtin_shufflevector(m.m13, m.m13, 2, 3, 0, 1);
  const Lanes<float> r = m.m03 * __builtin_shufflevector(m.m12, m.m12, 2, 3, 0, 1);
  const float det = (p - q + r)[2] + r[0] - q[0] + p[0];
  if (std::abs(det) < tolerance) return false;
  const float reciprocal = 1 / det;
  StoreAdjugate(c0, c1, c2, c3, m, Lanes<float>{reciprocal, -reciprocal, reciprocal, -reciprocal}, target);
  return true;
}

}  // namespace qxFixedLanes
