#pragma once

#include <qx/foundation/scalar.h>
#include <qx/foundation/status.h>

#include <cstddef>
#include <cstdint>

/// @file
/// Internal. Eigenvalues of symmetric matrices by cyclic Jacobi rotations.
///
/// H. Rutishauser, The Jacobi method for real symmetric matrices, Numer. Math. 9 (1966).

namespace qxMatrices {

/// True when abs(a_ij - a_ji) <= tolerance for all pairs; not a number passes.
template <qxReal T>
[[nodiscard]] bool IsSymmetric(std::size_t n, const T* a, T tolerance) noexcept;

/// Sweeps over a symmetric matrix that is held in its lower triangle, which is destroyed.
/// @param vectors receives the eigenvectors, not sorted, in its rows
/// @param sweeps on input the limit, on output the number of rotations
/// @return QX_STATUS_OK, also when the limit was reached; QX_STATUS_OUT_OF_MEMORY
template <qxReal T>
[[nodiscard]] qxStatus SweepByJacobi(std::size_t n, T* a, T* values, T* vectors, std::int32_t& sweeps, T tolerance);

/// Writes the values in ascending order, and the rows that belong to them. @return QX_STATUS_OK or
/// QX_STATUS_OUT_OF_MEMORY
template <qxReal T>
[[nodiscard]] qxStatus SortAscending(std::size_t n, const T* values, const T* rows, T* sortedValues, T* sortedRows);

/// Eigenvalues, ascending, and eigenvectors, in the rows, of a symmetric matrix; 50 sweeps at most.
/// @param tolerance bound of the symmetry and of the sum of the absolute elements above the diagonal
/// @return QX_STATUS_OK, QX_STATUS_NOT_SYMMETRIC or QX_STATUS_OUT_OF_MEMORY
template <qxReal T>
[[nodiscard]] qxStatus FindSymmetricForm(std::size_t n, const T* a, T tolerance, T* values, T* vectors,
                                         std::int32_t& rotations);

}  // namespace qxMatrices
