#pragma once

#include <cstddef>

/// @file
/// Affine maps of arrays of points in space. Internal, not part of the interface.
///
/// Points stand in memory as x, y, z after one another. The matrix has four columns by rows, and three rows of it are
/// read. Each component is ((a0 x + a1 y) + a2 z) + d. Both arrays may be the same one; otherwise they must not
/// overlap.

namespace qxKernels {

/// target[i] := A source[i] + d, where A is the left 3x3 block and d the last column.
template <typename T>
void TransformPoints(std::size_t count, const T* matrix, const T* source, T* target) noexcept;

/// target[i] := A source[i]; the last column is not read.
template <typename T>
void TransformVectors(std::size_t count, const T* matrix, const T* source, T* target) noexcept;

}  // namespace qxKernels
