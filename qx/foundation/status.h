#pragma once

#include <cstdint>

/// Outcome of the eigen-solvers. Every other operation that can fail returns 1 for success or yes and 0 for failure or
/// no, as a std::int32_t; more outcomes stand at the declaration. The library throws nothing of its own.
enum qxStatus : std::int32_t {
  QX_STATUS_OK = 0,                  ///< success
  QX_STATUS_OUT_OF_MEMORY = 2,       ///< a work array could not be obtained
  QX_STATUS_TOO_MANY_ROTATIONS = 5,  ///< the Jacobi iteration ended with exactly 50 rotations
  QX_STATUS_NOT_SYMMETRIC = 6        ///< the matrix is not symmetric within the tolerance
};
