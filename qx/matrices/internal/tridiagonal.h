#pragma once

#include <qx/foundation/scalar.h>
#include <qx/foundation/status.h>

#include <cstddef>

/// @file
/// Internal. Eigenvalues of symmetric matrices by reduction to tridiagonal form and implicit QL steps.
///
/// H. Bowdler, R. S. Martin, C. Reinsch, J. H. Wilkinson, The QR and QL algorithms for symmetric matrices, Numer. Math.
/// 11 (1968).

namespace qxMatrices {

/// Eigenvalues, ascending, and eigenvectors, in the rows, of the symmetric matrix in the lower triangle of @p a.
/// @return QX_STATUS_OK; QX_STATUS_TOO_MANY_ROTATIONS without convergence within 30 steps for an eigenvalue, when an
///         element is not finite or an eigenvalue is beyond the range; QX_STATUS_OUT_OF_MEMORY
template <qxReal T>
[[nodiscard]] qxStatus FindSymmetricFormByQL(std::size_t n, const T* a, T* values, T* vectors);

}  // namespace qxMatrices
