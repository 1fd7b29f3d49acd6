#pragma once

#include <qx/foundation/scalar.h>

#include <cstddef>
#include <cstdint>

/// @file
/// Internal. Gaussian elimination on n x n elements: Doolittle's factors, determinant, inverses.

namespace qxMatrices {

/// What elements must be within to count as zero where a structure wants them to be, and the bound of the pivots in the
/// determinant and of singular numbers in the inverse.
template <qxReal T>
inline constexpr T fixedBound = T(1e-6);

/// Doolittle's factors without exchange of rows; @p lowerT is the transpose of L, so that its columns lie along memory.
/// What is not reached of either, and what lies on the other side of the diagonals, is left as it was.
/// @param sums work array of n elements
/// @return false when a pivot is below the tolerance
template <qxReal T>
[[nodiscard]] bool FactorLU(std::size_t n, const T* a, T* lowerT, T* upper, T* sums, T tolerance) noexcept;

/// Elimination with exchange of rows on @p a, and on n right sides beside it when they are given.
/// @param det the determinant, unless the result is false
/// @return false when a pivot is below the bound, or zero
template <qxReal T>
[[nodiscard]] bool Eliminate(std::size_t n, T* a, T* right, T bound, T& det) noexcept;

/// Turns the right sides that Eliminate() left into the solutions.
template <qxReal T>
void SubstituteBack(std::size_t n, const T* a, T* right) noexcept;

/// Determinant: the product of the pivots of FactorLU() with the fixed bound; where that fails, of Eliminate() with
/// exchange, and 0 when a pivot is below 1e-9 there too. Not a number when memory was refused.
template <qxReal T>
[[nodiscard]] T Determinant(std::size_t n, const T* a);

/// True when the pivots of the elimination of the symmetric part are above the tolerance.
template <qxReal T>
[[nodiscard]] bool IsPositiveDefinite(std::size_t n, const T* a, T tolerance);

/// How an inversion ended: without success there was a pivot or the product of all of them below the tolerance, a
/// singular number not above the bound, or memory was refused.
enum class Inversion { done, smallPivot, smallDeterminant, singular, outOfMemory };

/// Inverse through the inverses of Doolittle's factors.
/// @param tolerance bound of the pivots and of their product
template <qxReal T>
[[nodiscard]] Inversion InvertByLU(std::size_t n, const T* a, T tolerance, T* inverse);

/// Inverse of a triangular matrix; what lies on the other side of the diagonal is taken for zero.
template <qxReal T>
void InvertTriangular(std::size_t n, const T* a, bool isLower, T* inverse) noexcept;

/// False when a diagonal element is below the tolerance.
template <qxReal T>
[[nodiscard]] bool HasInvertibleDiagonal(std::size_t n, const T* a, T tolerance) noexcept;

/// Sets each element off the diagonal of @p n leading rows and columns, @p stride elements a row, to 0 when
/// abs(a_ij) 10^power is below the smaller of abs(a_ii) and abs(a_jj).
template <qxReal T>
void AnnulateRelativelyDiagonal(std::size_t n, std::size_t stride, T* a, std::int32_t power) noexcept;

}  // namespace qxMatrices
