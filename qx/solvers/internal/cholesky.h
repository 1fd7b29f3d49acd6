#pragma once

#include <qx/foundation/scalar.h>
#include <qx/matrices/matrix_mn.h>

#include <cstdint>

/// @file
/// Cholesky factors in the upper triangle of a matrix. Internal, not part of the interface.

namespace qxSolvers {

/// Cholesky factor of a symmetric matrix, in place: reads and writes the upper triangle from (first, first) on, where
/// A = R' R.
/// @return false at a pivot that is not positive; the triangle is then of no use.
template <qxReal T>
[[nodiscard]] bool FactorByCholesky(std::int32_t first, std::int32_t size, CQXMatrixMN<T>& a);

/// v := R'^-1 v for the upper triangle from (0, 0) on.
template <qxReal T>
void SolveTransposed(std::int32_t size, const CQXMatrixMN<T>& r, T* v);

/// v := R^-1 v for the upper triangle from (0, 0) on.
template <qxReal T>
void SolveUpper(std::int32_t size, const CQXMatrixMN<T>& r, T* v);

}  // namespace qxSolvers
