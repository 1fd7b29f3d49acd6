#pragma once

#include <qx/foundation/scalar.h>

#include <cstdint>

/// @file
/// Bridge of the run-time-sized matrices to the closed forms of the fixed ones. Internal.

/// Inverts a row-major matrix of size 2, 3 or 4 by CQXMatrix2, CQXMatrix3 or CQXMatrix4.
/// @return the code of the fixed class: 0 for success, 3 for singular with @p target untouched
template <qxReal T>
std::int32_t qxInvertInClosedForm(std::int32_t size, const T* source, T* target, T tolerance) noexcept;
