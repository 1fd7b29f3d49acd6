#pragma once

#include <qx/foundation/scalar.h>
#include <qx/matrices/internal/elimination.h>
#include <qx/matrices/internal/workspace.h>

#include <cstddef>
#include <cstdint>

/// @file
/// Internal. The one singular value engine: a = U diag(values) V^T.

namespace qxMatrices {

/// What FindSingularForm() found. The rows of left and right are the columns of U and V.
template <qxReal T>
struct SingularForm {
  Workspace<T, 4> values;
  Workspace<T, 16> left;
  std::size_t leftCount = 0;
  Workspace<T, 16> right;
  std::size_t rightCount = 0;
};

/// Which vectors FindSingularForm() has to find: so many columns of U and V, but none for 0, and no fewer than the
/// smaller of rows and columns otherwise.
struct WantedVectors {
  std::size_t left;
  std::size_t right;
};

/// Finds the singular numbers of the rows x columns matrix @p a, descending and not negative.
/// @param tolerance what counts as zero beside the elements
/// @return 0; 1 without convergence, when an element is not finite or a singular number is beyond the range, 2 when
///         memory was refused.
template <qxReal T>
[[nodiscard]] std::int32_t FindSingularForm(std::size_t rows, std::size_t columns, const T* a, WantedVectors wanted,
                                            T tolerance, SingularForm<T>& form);

/// The singular numbers alone, min(rows, columns) of them. @return as FindSingularForm()
template <qxReal T>
[[nodiscard]] std::int32_t FindSingularNumbersOf(std::size_t rows, std::size_t columns, const T* a, T* target);

/// target (columns x rows) := V diag(1 / s) U^T over the first @p count singular numbers.
template <qxReal T>
void MultiplyInverted(std::size_t rows, std::size_t columns, const SingularForm<T>& form, std::size_t count,
                      T* target) noexcept;

/// Inverse of a square matrix through its singular numbers, the smallest of which must be above @p bound.
template <qxReal T>
[[nodiscard]] Inversion InvertBySingularValues(std::size_t size, const T* a, T bound, T* target);

/// Orders of rows and columns that put those with all abs(x) <= tolerance last and keep the others in sequence.
/// @return true when the order is not the natural one.
template <qxReal T>
[[nodiscard]] bool TestZeroRowsColumns(std::size_t rows, std::size_t columns, const T* a, T tolerance,
                                       std::int32_t* rowOrder, std::int32_t* columnOrder) noexcept;
/// target row i := source row order[i].
template <qxReal T>
void MoveZeroRows(std::size_t rows, std::size_t columns, const T* source, const std::int32_t* order,
                  T* target) noexcept;
/// Column i of each row := column order[i], through @p work of one row.
template <qxReal T>
void MoveZeroColumns(std::size_t rows, std::size_t columns, T* a, const std::int32_t* order, T* work) noexcept;

}  // namespace qxMatrices
