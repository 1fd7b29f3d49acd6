#pragma once

#include <qx/foundation/scalar.h>

#include <cstddef>

/// @file
/// Internal. Polar form by Newton's iteration: a matrix is averaged with the inverse of its transpose.
///
/// N. J. Higham, Computing the polar decomposition - with applications, SIAM J. Sci. Stat. Comput. 7 (1986).

namespace qxMatrices {

/// Side on which the orthogonal factor stands.
enum class OrthogonalFactor { left, right };

/// Polar form of n x n elements: a = r s or a = s r with r orthogonal, s symmetric and not negative.
///
/// Every step scales the matrix so that its singular numbers lie around 1; when it is orthogonal within the root of the
/// rounding error, one more step without scaling squares that. 100 steps at most.
/// @param tolerance bound of the absolute determinant
/// @return false when the determinant is below the tolerance or zero, an element is not finite, the iteration did not
///         converge, or memory was refused; the results are then untouched.
template <qxReal T>
[[nodiscard]] bool FindPolarForm(std::size_t n, const T* a, OrthogonalFactor side, T tolerance, T* r, T* s);

}  // namespace qxMatrices
