#pragma once

#include <cstddef>

/// @file
/// Reflections and plane rotations over rows of row-major matrices of float and double. Internal, not part of the
/// interface.
///
/// A reflection is the unit matrix plus u u^T / b with u = (up, tail), b not 0: the form of the Householder step that
/// keeps the tail in place and its first component beside it.

namespace qxKernels {

/// y += factor x.
template <typename T>
void AddMultiple(std::size_t count, T factor, const T* x, T* y) noexcept;

/// Reflects columns from the left: @p pivotRow goes with up, the rows from @p tailRows on, @p stride apart, with the
/// tail.
template <typename T>
void ReflectFromLeft(T up, T b, std::size_t tailCount, const T* tail, std::size_t columns, T* pivotRow, T* tailRows,
                     std::size_t stride) noexcept;

/// Reflects rows from the right: in each of @p rows rows, @p stride apart, the first element goes with up and the next
/// ones with the tail.
template <typename T>
void ReflectFromRight(T up, T b, std::size_t tailCount, const T* tail, std::size_t rows, T* first,
                      std::size_t stride) noexcept;

/// x := c x + s y, y := c y - s x.
template <typename T>
void Rotate(std::size_t count, T c, T s, T* x, T* y) noexcept;

/// Rotates rows 0 and 1, then 1 and 2, and so on, with the given cosines and sines: @p rotations of them on
/// @p rotations + 1 contiguous rows of @p count elements.
template <typename T>
void RotateInSequence(std::size_t rotations, const T* cosines, const T* sines, std::size_t count, T* rows) noexcept;

/// x := x - s (y + x tau), y := y + s (x_old - y tau): the rotation of the Jacobi method.
template <typename T>
void JacobiRotate(std::size_t count, T s, T tau, T* x, T* y) noexcept;

}  // namespace qxKernels
