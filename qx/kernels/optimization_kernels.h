#pragma once

#include <cstddef>

/// @file
/// Loops over vectors that the minimisers add to those of array_kernels.h. Internal, not part of the interface.
///
/// Element types: float, double. Arrays may be the same array; otherwise they must not overlap.

namespace qxKernels {

/// target += factor v.
template <typename T>
void AddMultiple(std::size_t count, T* target, T factor, const T* v) noexcept;

/// target := origin + factor direction.
template <typename T>
void MoveAlong(std::size_t count, const T* origin, T factor, const T* direction, T* target) noexcept;

}  // namespace qxKernels
