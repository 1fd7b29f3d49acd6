#pragma once

#include <qx/foundation/scalar.h>
#include <qx/solvers/optimization.h>

#include <cstdint>

/// @file
/// Nonlinear least squares. Internal, not part of the interface.

namespace qxSolvers {

/// The residuals that are to become small, with the user's argument.
template <qxReal T>
struct ResidualFunctions {
  void* user;
  CQXOptimization::ResidualFunctionWithUser<T> residuals;
  CQXOptimization::JacobianFunctionWithUser<T> jacobian;  ///< null: differences of the residuals
};

/// CQXOptimization::LevenbergMarquardt().
template <qxReal T>
T MinimizeSquares(std::int32_t n, std::int32_t m, CQXVectorN<T>& x, const CQXLeastSquaresOptions<T>& options,
                  const ResidualFunctions<T>& functions, QX_OPTIMIZATION_INFO& info);

}  // namespace qxSolvers
