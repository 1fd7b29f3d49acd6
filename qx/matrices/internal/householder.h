#pragma once

#include <qx/foundation/scalar.h>

#include <cstddef>
#include <cstdint>

/// @file
/// Internal. Householder's reflections, and the QR factors that they give.
///
/// A reflection is the unit matrix plus u u^T / b with u = (up, tail), where the tail takes the place of the elements
/// that it clears; qxKernels::ReflectFromLeft() and ReflectFromRight() apply it.

namespace qxMatrices {

/// abs(a) with the sign of @p b; 0 counts as positive.
template <qxReal T>
[[nodiscard]] T WithSign(T a, T b) noexcept;

/// A reflection but for its tail.
template <qxReal T>
struct Reflection {
  T up;
  T b;      ///< 0 for the unit matrix
  T value;  ///< what the pivot element becomes
};

/// Makes the reflection that leaves only the first of @p count elements; the others become its tail.
///
/// The tail is brought near 1 by a power of two of its own, and up and b go with it: so a tail whose squares vanish
/// beside the pivot still gives an orthogonal matrix, and no product leaves the range.
template <qxReal T>
[[nodiscard]] Reflection<T> MakeReflection(std::size_t count, T* vector) noexcept;

/// CQXMatrixMN::Householder1().
template <qxReal T>
std::int32_t Householder1(std::int32_t pivot, std::int32_t first, std::int32_t last, std::int32_t count, T& up,
                          T* vector, T* matrix, T tolerance) noexcept;

/// CQXMatrixMN::Householder2() on a matrix with rows of @p stride elements.
template <qxReal T>
void Householder2(std::int32_t pivot, std::int32_t first, std::int32_t last, T up, const T* vector, T* matrix,
                  std::int32_t stride, T tolerance) noexcept;

/// Factors the rows x columns matrix @p r, which becomes the upper triangular factor, exact zeros below its diagonal;
/// @p q, rows x rows, receives the orthogonal one. Rows of no elements are allowed.
/// @return false when an element is not finite, an element of the factors is beyond the range, or memory was refused.
template <qxReal T>
[[nodiscard]] bool FactorQR(std::size_t rows, std::size_t columns, T* r, T* q);

}  // namespace qxMatrices
