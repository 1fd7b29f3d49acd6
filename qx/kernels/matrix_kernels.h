#pragma once

#include <cstddef>

/// @file
/// Loops over contiguous row-major matrices. Internal, not part of the interface.
///
/// Element types: float, double, CQXComplex<float>, CQXComplex<double>. The target must not overlap an operand; its
/// elements are made anew.

namespace qxKernels {

/// target (rows x columns) := a (rows x depth) times b (depth x columns). Every element is one sum over k, ascending,
/// from zero; blocks and vector registers run over rows and columns only, so that the order is the same everywhere.
template <typename T>
void MultiplyMatrices(std::size_t rows, std::size_t depth, std::size_t columns, const T* a, const T* b,
                      T* target) noexcept;

/// target (rows elements) := a (rows x columns) times v; every element is one sum over k, ascending, from zero.
template <typename T>
void MultiplyMatrixByVector(std::size_t rows, std::size_t columns, const T* a, const T* v, T* target) noexcept;

/// target (columns x rows) := the transpose of a (rows x columns).
template <typename T>
void Transpose(std::size_t rows, std::size_t columns, const T* a, T* target) noexcept;

/// target[c] := the sum of factors[j factorStride] rows[j stride + c] over j below @p terms, ascending, from zero.
/// float and double. The target must not overlap what is read.
template <typename T>
void CombineRows(std::size_t terms, const T* factors, std::size_t factorStride, const T* rows, std::size_t stride,
                 std::size_t columns, T* target) noexcept;

/// True when every element whose column less its row lies outside [low, high] is at most the tolerance in absolute
/// value. float and double.
template <typename T>
[[nodiscard]] bool IsBand(std::size_t rows, std::size_t columns, const T* a, std::ptrdiff_t low, std::ptrdiff_t high,
                          T tolerance) noexcept;

}  // namespace qxKernels
