#pragma once

#include <qx/foundation/api.h>

#include <cstdint>

/// Outcome of the eigen-solvers; qxSucceeded() reads it.
///
/// Most other operations that can fail return a std::int32_t: 1 for success or yes and 0 for failure or no. The
/// exceptions say so where they are declared: SV_Decomposition() returns 0 for success, and so does Inverse() of the
/// fixed matrices and of a CQXMatrixN of size 2 to 4. The library throws nothing of its own.
enum qxStatus : std::int32_t {
  QX_STATUS_OK = 0,                  ///< success
  QX_STATUS_OUT_OF_MEMORY = 2,       ///< a work array could not be obtained
  QX_STATUS_TOO_MANY_ROTATIONS = 5,  ///< the Jacobi iteration ended with exactly 50 rotations
  QX_STATUS_NOT_SYMMETRIC = 6        ///< the matrix is not symmetric within the tolerance
};

/// Whether an eigen-solver found all values: its status for success is 0, where other operations return 1.
[[nodiscard]] constexpr bool qxSucceeded(qxStatus status) noexcept { return status == QX_STATUS_OK; }
