#pragma once

#include <qx/foundation/scalar.h>

template <qxReal T>
class CQXMatrixN;
template <qxReal T>
class CQXVectorN;

/// @file
/// Conjugate gradients for linear systems. Internal, not part of the interface.

namespace qxSolvers {

/// CQXAlgebra::SolveByCongugateGradient().
template <qxReal T>
[[nodiscard]] bool SolveByConjugateGradient(const CQXMatrixN<T>& A, const CQXVectorN<T>& b, CQXVectorN<T>& x, T tol,
                                            T diagonalShift);

}  // namespace qxSolvers
