#pragma once

#include <qx/foundation/scalar.h>

#include <cstddef>

template <qxReal T>
class CQXComplex;

/// @file
/// Blends of arrays of keys, element by element, for float and double. Internal, not part of the interface.
///
/// The target may be one of the keys; otherwise the arrays must not overlap. Arrays may be null when the count is 0.

namespace qxKernels {

/// target := a + (b - a) t.
template <typename T>
void BlendLinear(std::size_t count, const T* a, const T* b, T t, T* target) noexcept;
/// The same for each part of complex numbers; results are stored exactly.
template <typename T>
void BlendLinear(std::size_t count, const CQXComplex<T>* a, const CQXComplex<T>* b, T t,
                 CQXComplex<T>* target) noexcept;

/// target := the value at @p t of qxQuadraticAt(), with the 3x3 matrix @p v by rows.
template <typename T>
void BlendQuadratic(std::size_t count, const T* a, const T* b, const T* c, const T* v, T t, T* target) noexcept;

/// target := the value at @p t of qxCubicAt(), with the 4x4 matrix @p v by rows.
template <typename T>
void BlendCubic(std::size_t count, const T* a, const T* b, const T* c, const T* d, const T* v, T t, T* target) noexcept;

}  // namespace qxKernels
