#pragma once

#include <qx/foundation/scalar.h>
#include <qx/matrices/matrix_norm.h>

#include <cstddef>

/// @file
/// Internal. Numbers that tell of a whole matrix: norms, condition number, correlation.

namespace qxMatrices {

/// The norm of the given kind; not a number when an element is not. The spectral one is not a number either when the
/// singular numbers cannot be had.
template <qxReal T>
[[nodiscard]] T Norm(std::size_t rows, std::size_t columns, const T* a, qxMatrixNorm norm);

/// The largest over the smallest singular number of a square matrix; QX_OVERFLOW_VALUE when the smallest is not above
/// 1e-6, when they cannot be had and without elements.
template <qxReal T>
[[nodiscard]] T SpectralConditionNumber(std::size_t n, const T* a);

/// Pearson's coefficient of correlation of corresponding elements; 0 when the elements of one array do not vary.
template <qxReal T>
[[nodiscard]] T Correlation(std::size_t count, const T* a, const T* b) noexcept;

}  // namespace qxMatrices
