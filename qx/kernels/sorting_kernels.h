#pragma once

#include <cmath>
#include <concepts>
#include <cstddef>
#include <cstdint>
#include <type_traits>

/// @file
/// Sorting of plain arrays: signed and unsigned integers of 8, 16, 32 and 64 bits, float and double. Internal, not part
/// of the interface.

namespace qxKernels {

/// The absolute value; of integers in the unsigned type, where the smallest has one too.
template <typename T>
[[nodiscard]] constexpr auto Magnitude(T x) noexcept {
  if constexpr (std::floating_point<T>) {
    return std::abs(x);
  } else {
    using Unsigned = std::make_unsigned_t<T>;
    return static_cast<Unsigned>(x < 0 ? 0 - static_cast<Unsigned>(x) : static_cast<Unsigned>(x));
  }
}

/// Sorts @p count values in place, by absolute value if wanted, with the exchanges of Quicksort() where they can show.
template <typename T>
void SortValues(std::size_t count, T* values, bool isAscending, bool isAbsolute) noexcept;

/// Writes the sorted values to @p target, unless that is null, and the index that each had in @p source to
/// @p indices. The target may be the source.
/// @return false when memory was refused by a null: nothing is written.
template <typename T>
[[nodiscard]] bool SortWithIndices(std::size_t count, const T* source, T* target, std::int32_t* indices,
                                   bool isAscending, bool isAbsolute);

}  // namespace qxKernels
