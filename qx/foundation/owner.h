#pragma once

#include <qx/foundation/block.h>

#include <cstddef>
#include <new>
#include <utility>

/// Owner of one object on the heap, or of none. It moves and is not copied; the object goes with it.
///
/// Objects come from qxMakeOwner(), or from `new` of a class that derives from qxBlockAllocated.
template <typename T>
class qxOwner {
 public:
  constexpr qxOwner() noexcept = default;
  /// Owns nothing.
  constexpr qxOwner(std::nullptr_t) noexcept {}
  /// Takes an object over.
  explicit qxOwner(T* object) noexcept : m_object(object) {}
  /// Takes the object of @p other over.
  qxOwner(qxOwner&& other) noexcept : m_object(other.release()) {}
  /// Takes the object of @p other over; the one that was held goes.
  qxOwner& operator=(qxOwner&& other) noexcept {
    reset(other.release());
    return *this;
  }
  ~qxOwner() { delete m_object; }

  /// The object, or null.
  [[nodiscard]] T* get() const noexcept { return m_object; }
  /// The object, which must be there.
  [[nodiscard]] T& operator*() const noexcept { return *m_object; }
  /// The object, which must be there.
  T* operator->() const noexcept { return m_object; }
  /// Whether an object is held.
  explicit operator bool() const noexcept { return m_object != nullptr; }

  /// Gives the object away: the caller deletes it.
  [[nodiscard]] T* release() noexcept { return std::exchange(m_object, nullptr); }
  /// Takes another object; the one that was held goes.
  void reset(T* object = nullptr) noexcept { delete std::exchange(m_object, object); }

  friend bool operator==(const qxOwner& owner, std::nullptr_t) noexcept { return owner.m_object == nullptr; }

 private:
  T* m_object = nullptr;
};

/// Makes an object in a block of the library.
/// @return null when the memory was refused with null; an exception of `operator new[]` passes through
template <typename T, typename... Arguments>
[[nodiscard]] qxOwner<T> qxMakeOwner(Arguments&&... arguments) {
  qxBlock<std::byte> memory = qxMakeBlock<std::byte>(sizeof(T));
  if (memory == nullptr) return nullptr;
  qxOwner<T> owner(::new (static_cast<void*>(memory.get())) T(std::forward<Arguments>(arguments)...));
  static_cast<void>(memory.release());
  return owner;
}

/// Owner of a run-time number of slots, each for one object on the heap or none.
template <typename T>
class qxOwnerArray {
 public:
  qxOwnerArray() noexcept = default;
  /// Takes the slots of @p other over.
  qxOwnerArray(qxOwnerArray&& other) noexcept { Swap(other); }
  /// Takes the slots of @p other over; the objects that were held go.
  qxOwnerArray& operator=(qxOwnerArray&& other) noexcept {
    qxOwnerArray taken(std::move(other));
    Swap(taken);
    return *this;
  }
  ~qxOwnerArray() { Clear(); }

  /// Destroys the objects and makes @p count empty slots. @return false, and nothing has changed, when the memory was
  /// refused with null
  [[nodiscard]] bool Reset(std::size_t count) {
    qxBlock<T*> slots;
    if (count != 0 && (slots = qxMakeBlock<T*>(count)) == nullptr) return false;
    Clear();
    for (std::size_t i = 0; i < count; ++i) slots[i] = nullptr;
    m_slots = std::move(slots);
    m_count = count;
    return true;
  }
  /// Destroys the objects and has no slots.
  void Clear() noexcept {
    for (std::size_t i = 0; i < m_count; ++i) delete m_slots[i];
    m_slots.reset();
    m_count = 0;
  }
  /// Exchanges all slots.
  void Swap(qxOwnerArray& other) noexcept {
    std::swap(m_slots, other.m_slots);
    std::swap(m_count, other.m_count);
  }

  /// Number of slots.
  [[nodiscard]] std::size_t Count() const noexcept { return m_count; }
  /// The object of a slot, or null; the index is not checked.
  [[nodiscard]] T* operator[](std::size_t index) const noexcept { return m_slots[index]; }
  /// Puts an object into a slot; the one that stood there goes.
  void Set(std::size_t index, qxOwner<T> object) noexcept { delete std::exchange(m_slots[index], object.release()); }

 private:
  qxBlock<T*> m_slots;
  std::size_t m_count = 0;
};
