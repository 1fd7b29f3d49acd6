#pragma once

#include <qx/foundation/api.h>

#include <cstdint>

/// Kind of a matrix norm. Every value that stands not here counts as QX_MATRIX_NORM_EUCLIDEAN.
enum qxMatrixNorm : std::int32_t {
  QX_MATRIX_NORM_COLUMN_SUM = 0,  ///< largest sum of absolute values of a column
  QX_MATRIX_NORM_ROW_SUM = 1,     ///< largest sum of absolute values of a row
  QX_MATRIX_NORM_EUCLIDEAN = 2,   ///< guarded root of the sum of squares of all elements (Frobenius)
  QX_MATRIX_NORM_SPECTRAL = 3     ///< largest singular number
};
