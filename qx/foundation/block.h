#pragma once

#include <qx/foundation/api.h>

#include <cstddef>
#include <cstdint>
#include <limits>
#include <memory>
#include <type_traits>

/// Obtains a block of memory from the global `operator new[]`; every block of the library comes from here.
///
/// It is compiled on its own and never inlined, so that the callers' tests for null survive: an `operator new[]` that
/// returns null instead of throwing must not crash the library. An exception of `operator new[]` passes through.
[[nodiscard]] QX_API void* qxObtainBlock(std::size_t bytes);

/// Gives back a block of qxObtainBlock(); null is ignored.
QX_API void qxReleaseBlock(void* block) noexcept;

struct qxBlockReleaser {
  void operator()(void* block) const noexcept { qxReleaseBlock(block); }
};

/// Owner of one block of elements.
template <typename T>
using qxBlock = std::unique_ptr<T[], qxBlockReleaser>;

/// Obtains a block of @p count elements.
///
/// Numbers are left unset, since the caller is about to write them; elements with a constructor (complex numbers) are
/// default-constructed. A count of 0 gives a block of no bytes, not null.
/// @return null when `operator new[]` returned null.
template <typename T>
[[nodiscard]] qxBlock<T> qxMakeBlock(std::size_t count) {
  static_assert(std::is_trivially_destructible_v<T>);
  constexpr std::size_t largest = std::numeric_limits<std::size_t>::max();
  T* block = static_cast<T*>(qxObtainBlock(count > largest / sizeof(T) ? largest : count * sizeof(T)));
  if constexpr (!std::is_trivially_default_constructible_v<T>) {
    if (block != nullptr) std::uninitialized_default_construct_n(block, count);
  }
  return qxBlock<T>(block);
}

/// Number of elements of a rows x columns block, formed without overflow; 0 when a size is not positive.
[[nodiscard]] constexpr std::size_t qxElementCount(std::int32_t rows, std::int32_t columns) noexcept {
  return rows > 0 && columns > 0 ? static_cast<std::size_t>(rows) * static_cast<std::size_t>(columns) : 0;
}
