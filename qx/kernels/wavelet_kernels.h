#pragma once

#include <cstddef>
#include <cstdint>

/// Hot loops of the wavelet transform and of noise reduction, over rows of samples. Sources and targets do not overlap
/// unless they are the same array and one pass in place is meant.
namespace qxKernels {

/// Deals the samples out by turns: the first to @p first, the second to @p second and so on.
template <typename T>
void Deinterleave(std::size_t count, const T* source, T* first, T* second) noexcept;

/// The opposite of Deinterleave(): @p count samples in all.
template <typename T>
void Interleave(std::size_t count, const T* first, const T* second, T* target) noexcept;

/// Adds to each target sample, or subtracts from it, the sum of the source samples times their coefficients.
///
/// Each sum runs from left to right and meets the target in one addition.
/// @param taps number of sources and coefficients: 1, 2, 4 or 6; any other number changes nothing
template <typename T>
void Lift(std::size_t count, const T* const* sources, const T* coefficients, std::int32_t taps, bool subtract,
          T* target) noexcept;

/// target := a weightA + b weightB; the target may be a or b.
template <typename T>
void Blend(std::size_t count, const T* a, const T* b, T weightA, T weightB, T* target) noexcept;

/// Turns @p count colours, whose three components stand @p stride apart in their arrays, into
/// ((a + b + c) / sqrt 3, (a - c) / sqrt 2, (a - 2 b + c) / sqrt 6), or back by the transpose of that rotation.
template <typename T>
void RotateColours(std::size_t count, std::size_t stride, bool forward, T* first, T* second, T* last) noexcept;

template <typename T>
[[nodiscard]] T LargestMagnitude(std::size_t count, const T* data) noexcept;

/// Clears what has a magnitude below the threshold, or at it when @p clearsAtThreshold is set. With @p shrink the rest
/// moves towards zero by the threshold. Not a number stays.
template <typename T>
void Threshold(std::size_t count, T threshold, bool clearsAtThreshold, bool shrink, T* data) noexcept;

}  // namespace qxKernels
