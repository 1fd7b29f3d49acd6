#pragma once

#include <qx/foundation/scalar.h>
#include <qx/interpolation/curve_rules.h>

#include <cstddef>
#include <cstdint>

/// @file
/// Slopes of curves through keys. Internal, not part of the interface.

namespace qxCurves {

/// Slopes at n keys of @p dimension numbers each: CQXInterpolation::FindSlopes().
template <qxReal T>
[[nodiscard]] std::int32_t FindSlopes(qxSlopes rule, qxEnds ends, std::int32_t n, std::size_t dimension, const T* nodes,
                                      const T* values, T* slopes);

/// True when the nodes ascend strictly; not a number does not.
template <qxReal T>
[[nodiscard]] bool AreAscending(std::int32_t n, const T* nodes) noexcept;

}  // namespace qxCurves
