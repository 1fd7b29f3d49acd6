#pragma once

#include <cstddef>
#include <cstdint>

/// @file
/// Loops over arrays of numbers: what the run-time-sized vectors and matrices share. Internal, not part of the
/// interface.
///
/// Element types: std::int32_t, float, double, CQXComplex<float>, CQXComplex<double>; where an order is needed, float
/// and double. Arrays may be null when the count is 0. Arrays may be the same array; otherwise they must not overlap.
///
/// All kernels take their arguments in one order: sizes, what is read, what is written.

namespace qxKernels {

/// Resets every element to a freshly made zero; complex numbers lose their trigonometric form and their precision.
template <typename T>
void SetToZero(std::size_t count, T* target) noexcept;

/// Assigns @p value to every element.
template <typename T>
void SetToConstant(std::size_t count, const T& value, T* target) noexcept;

/// Assigns the elements in ascending order, so that overlapping arrays behave as the plain loop does.
template <typename T>
void Copy(std::size_t count, const T* source, T* target) noexcept;

// In place, by the element's own in-place operators. Integers wrap around; an integer divided by 0 gives -2^31.

template <typename T>
void Add(std::size_t count, const T* v, T* target) noexcept;
template <typename T>
void Subtract(std::size_t count, const T* v, T* target) noexcept;
template <typename T>
void Multiply(std::size_t count, T factor, T* target) noexcept;
template <typename T>
void Divide(std::size_t count, T divisor, T* target) noexcept;

/// Multiplies by 2^exponent, exactly where neither the factor's halves nor the results leave the range. float, double.
template <typename T>
void MultiplyByPowerOfTwo(std::size_t count, std::int32_t exponent, T* target) noexcept;

// Into another array, whose elements are made anew.

template <typename T>
void Sum(std::size_t count, const T* a, const T* b, T* target) noexcept;
template <typename T>
void Difference(std::size_t count, const T* a, const T* b, T* target) noexcept;
template <typename T>
void Product(std::size_t count, const T* a, T factor, T* target) noexcept;
template <typename T>
void Quotient(std::size_t count, const T* a, T divisor, T* target) noexcept;
template <typename T>
void Negation(std::size_t count, const T* a, T* target) noexcept;

/// Sum of the products.
///
/// Floating-point numbers: up to 16 elements in order; above, in 16 partial sums (element i goes to sum i mod 16) that
/// are folded by halves, so that the result depends on the length alone. Integers and complex numbers: in order.
template <typename T>
[[nodiscard]] T Dot(std::size_t count, const T* a, const T* b) noexcept;

/// Sum of the squares, in the order of Dot().
template <typename T>
[[nodiscard]] T SumOfSquares(std::size_t count, const T* a) noexcept;

/// Sum of the absolute values, in the order of Dot().
template <typename T>
[[nodiscard]] T SumOfAbsolutes(std::size_t count, const T* a) noexcept;

/// Sum of the elements, in the order of Dot().
template <typename T>
[[nodiscard]] T SumOfElements(std::size_t count, const T* a) noexcept;

/// True when a pair differs: by more than QX_TOLERANCE (floating point), at all (integers), or by a guarded distance
/// above zero (complex numbers). A pair with not a number does not differ.
template <typename T>
[[nodiscard]] bool AreDifferent(std::size_t count, const T* a, const T* b) noexcept;

/// True when every abs(a - b) is at most the tolerance.
template <typename T>
[[nodiscard]] bool AreWithin(std::size_t count, const T* a, const T* b, T tolerance) noexcept;

/// True when every absolute value is at most the tolerance.
template <typename T>
[[nodiscard]] bool AreWithin(std::size_t count, const T* a, T tolerance) noexcept;

/// Sets to 0 what is below the tolerance in absolute value.
template <typename T>
void AnnulateSmall(std::size_t count, T tolerance, T* target) noexcept;

/// Index of the smallest element, or of the smallest absolute value; of equal ones the lowest. 0 for no elements.
template <typename T>
[[nodiscard]] std::size_t IndexOfMin(std::size_t count, const T* a, bool absolute) noexcept;

/// Index of the largest element, or of the largest absolute value; of equal ones the lowest. 0 for no elements.
template <typename T>
[[nodiscard]] std::size_t IndexOfMax(std::size_t count, const T* a, bool absolute) noexcept;

}  // namespace qxKernels
