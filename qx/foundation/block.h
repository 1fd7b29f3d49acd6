#pragma once

#include <qx/foundation/api.h>

#include <cstddef>
#include <cstdint>
#include <limits>
#include <memory>
#include <new>
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

/// qxMakeBlock() for callers that cannot go on without the block: null becomes std::bad_alloc.
template <typename T>
[[nodiscard]] qxBlock<T> qxMakeBlockOrThrow(std::size_t count) {
  qxBlock<T> block = qxMakeBlock<T>(count);
  if (block == nullptr) throw std::bad_alloc();
  return block;
}

/// Allocator of standard containers over qxObtainBlock(); null becomes std::bad_alloc.
template <typename T>
struct qxBlockAllocator {
  using value_type = T;

  qxBlockAllocator() noexcept = default;
  template <typename U>
  qxBlockAllocator(const qxBlockAllocator<U>&) noexcept {}

  [[nodiscard]] T* allocate(std::size_t count) {
    constexpr std::size_t largest = std::numeric_limits<std::size_t>::max();
    void* block = qxObtainBlock(count > largest / sizeof(T) ? largest : count * sizeof(T));
    if (block == nullptr) throw std::bad_alloc();
    return static_cast<T*>(block);
  }
  void deallocate(T* block, std::size_t) noexcept { qxReleaseBlock(block); }

  template <typename U>
  bool operator==(const qxBlockAllocator<U>&) const noexcept {
    return true;
  }
};

/// Base of classes whose objects stand on the heap: `new` and `delete` of the derived class use the library's blocks.
struct qxBlockAllocated {
  static void* operator new(std::size_t bytes) { return qxBlockAllocator<std::byte>().allocate(bytes); }
  static void operator delete(void* object) noexcept { qxReleaseBlock(object); }
};
