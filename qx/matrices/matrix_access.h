#pragma once

#include <qx/foundation/api.h>
#include <qx/foundation/scalar.h>
#include <qx/matrices/fixed_matrix.h>
#include <qx/matrices/matrix2.h>
#include <qx/matrices/matrix3.h>
#include <qx/matrices/matrix4.h>

#include <cstdint>

/// @file
/// The fixed matrices in the vocabulary of other libraries: the identity, matrices of rows or columns, and 4x4 matrices
/// that act on points and on directions of space. Everything here may be called from any thread.

/// The unit matrix: `qxIdentity<CQXMatrix4<float>>()`.
template <qxFixedMatrix M>
[[nodiscard]] constexpr M qxIdentity() noexcept {
  M matrix;
  matrix.Unit();
  return matrix;
}

/// The matrix of these rows, as many vectors as the matrix has rows: `qxMatrixOfRows<CQXMatrix2<T>>(a, b)`.
template <qxFixedMatrix M, typename... Vectors>
[[nodiscard]] constexpr M qxMatrixOfRows(const Vectors&... rows) noexcept {
  M matrix;
  std::int32_t r = 0;
  (matrix.SetRowVector(r++, rows), ...);
  return matrix;
}

/// The matrix of these columns, as many vectors as the matrix has columns.
template <qxFixedMatrix M, typename... Vectors>
[[nodiscard]] constexpr M qxMatrixOfColumns(const Vectors&... columns) noexcept {
  M matrix;
  std::int32_t c = 0;
  (matrix.SetColVector(c++, columns), ...);
  return matrix;
}

/// The matrix times (x, y, z, 1), without its fourth component: a point moves with the translation. Nothing is divided:
/// a projection wants CQXProjective3DTransform, or the product with a CQXVector4 and qxVector4To3().
template <qxReal T>
[[nodiscard]] constexpr CQXVector3<T> qxTransformPoint(const CQXMatrix4<T>& m, const CQXVector3<T>& p) noexcept {
  return {m[0] * p.X() + m[1] * p.Y() + m[2] * p.Z() + m[3], m[4] * p.X() + m[5] * p.Y() + m[6] * p.Z() + m[7],
          m[8] * p.X() + m[9] * p.Y() + m[10] * p.Z() + m[11]};
}

/// The matrix times (x, y, z, 0), without its fourth component: a direction does not move. Normals of surfaces want the
/// inverse transpose instead where the matrix is no rotation.
template <qxReal T>
[[nodiscard]] constexpr CQXVector3<T> qxTransformDirection(const CQXMatrix4<T>& m, const CQXVector3<T>& d) noexcept {
  return {m[0] * d.X() + m[1] * d.Y() + m[2] * d.Z(), m[4] * d.X() + m[5] * d.Y() + m[6] * d.Z(),
          m[8] * d.X() + m[9] * d.Y() + m[10] * d.Z()};
}
