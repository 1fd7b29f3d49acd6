#pragma once

#include <qx/foundation/scalar.h>
#include <qx/solvers/optimization.h>

#include <cstdint>

/// @file
/// The simplex method for linear programmes. Internal, not part of the interface.

namespace qxSolvers {

/// CQXOptimization::LinerProgrammingSimplex().
template <qxReal T>
T MinimizeLinearProgramme(const CQXMatrixMN<T>& A, const CQXVectorN<T>& b, const CQXVectorN<T>& c,
                          const QX_LINEAR_RELATION* relations, CQXVectorN<T>& x, T tol, std::int32_t maxIterations,
                          QX_OPTIMIZATION_INFO& info);

}  // namespace qxSolvers
