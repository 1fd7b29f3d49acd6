#pragma once

#include <qx/foundation/api.h>

#include <cstddef>
#include <cstdint>
#include <limits>
#include <new>
#include <type_traits>

/// Obtains a block of memory from the global `operator new[]`; every block of the library comes from here.
///
/// The call is hidden from the optimiser, at link time too, so that the callers' tests for null survive: an
/// `operator new[]` that returns null instead of throwing must not crash the library. An exception of `operator new[]`
/// passes through.
[[nodiscard]] QX_API void* qxObtainBlock(std::size_t bytes);

/// Gives back a block of qxObtainBlock(); null is ignored.
QX_API void qxReleaseBlock(void* block) noexcept;

/// Owner of one block of elements that need no destruction; it can be moved, not copied. As with a pointer, a constant
/// owner gives access to elements that can be changed.
template <typename T>
class qxBlock {
 public:
  constexpr qxBlock() noexcept = default;
  /// No block.
  constexpr qxBlock(std::nullptr_t) noexcept {}
  /// Takes over a block of qxObtainBlock(), or null.
  explicit constexpr qxBlock(T* block) noexcept : m_block(block) {}
  /// Takes the block over and leaves @p other without one.
  constexpr qxBlock(qxBlock&& other) noexcept : m_block(other.release()) {}
  /// Gives back the own block, takes over that of @p other and leaves @p other without one.
  qxBlock& operator=(qxBlock&& other) noexcept {
    reset(other.release());
    return *this;
  }
  ~qxBlock() { qxReleaseBlock(m_block); }

  /// The block, or null.
  [[nodiscard]] constexpr T* get() const noexcept { return m_block; }
  /// Element @p i, from 0; the index is not tested.
  [[nodiscard]] constexpr T& operator[](std::size_t i) const noexcept { return m_block[i]; }
  /// Whether there is no block.
  [[nodiscard]] constexpr bool operator==(std::nullptr_t) const noexcept { return m_block == nullptr; }
  /// Whether there is a block.
  [[nodiscard]] explicit constexpr operator bool() const noexcept { return m_block != nullptr; }

  /// Hands the block over to the caller, who gives it back by qxReleaseBlock().
  [[nodiscard]] constexpr T* release() noexcept {
    T* const block = m_block;
    m_block = nullptr;
    return block;
  }
  /// Gives back the block and takes over another one, or none.
  void reset(T* block = nullptr) noexcept {
    qxReleaseBlock(m_block);
    m_block = block;
  }
  /// Exchanges the blocks.
  void swap(qxBlock& other) noexcept {
    T* const block = m_block;
    m_block = other.m_block;
    other.m_block = block;
  }

 private:
  T* m_block = nullptr;
};

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
    for (std::size_t i = 0; block != nullptr && i < count; ++i) ::new (static_cast<void*>(block + i)) T;
  }
  return qxBlock<T>(block);
}

/// Number of elements of a rows x columns block, formed without overflow; 0 when a size is not positive.
[[nodiscard]] constexpr std::size_t qxElementCount(std::int32_t rows, std::int32_t columns) noexcept {
  return rows > 0 && columns > 0 ? static_cast<std::size_t>(rows) * static_cast<std::size_t>(columns) : 0;
}

/// A count of the interface as a size; 0 when it is not positive.
[[nodiscard]] constexpr std::size_t qxElementCount(std::int32_t count) noexcept { return qxElementCount(count, 1); }

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
  /// Allocators of all element types are the same.
  template <typename U>
  qxBlockAllocator(const qxBlockAllocator<U>&) noexcept {}

  /// A block for @p count elements, which are not constructed.
  [[nodiscard]] T* allocate(std::size_t count) {
    constexpr std::size_t largest = std::numeric_limits<std::size_t>::max();
    void* block = qxObtainBlock(count > largest / sizeof(T) ? largest : count * sizeof(T));
    if (block == nullptr) throw std::bad_alloc();
    return static_cast<T*>(block);
  }
  /// Gives a block back.
  void deallocate(T* block, std::size_t) noexcept { qxReleaseBlock(block); }

  /// Always true: any of them gives back what another obtained.
  template <typename U>
  bool operator==(const qxBlockAllocator<U>&) const noexcept {
    return true;
  }
};

/// Base of classes whose objects stand on the heap: `new` and `delete` of the derived class use the library's blocks.
struct qxBlockAllocated {
  /// A block for an object, from where every block comes.
  static void* operator new(std::size_t bytes) { return qxBlockAllocator<std::byte>().allocate(bytes); }
  /// Gives the block of an object back.
  static void operator delete(void* object) noexcept { qxReleaseBlock(object); }
};
