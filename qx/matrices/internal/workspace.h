#pragma once

#include <qx/foundation/block.h>

#include <cstddef>
#include <utility>

/// @file
/// Internal. Memory for the time of one operation.

namespace qxMatrices {

/// Work arrays of one operation: up to Small elements lie in the object, more in one block.
template <typename T, std::size_t Small>
class Workspace {
 public:
  Workspace() = default;
  Workspace(const Workspace&) = delete;
  Workspace& operator=(const Workspace&) = delete;

  /// Provides @p count elements, unset. @return false when memory was refused.
  [[nodiscard]] bool Reserve(std::size_t count) {
    if (count <= Small) {
      m_data = m_small;
    } else {
      m_block = qxMakeBlock<T>(count);
      m_data = m_block.get();
    }
    m_next = m_data;
    return m_data != nullptr;
  }
  [[nodiscard]] T* Data() noexcept { return m_data; }
  [[nodiscard]] const T* Data() const noexcept { return m_data; }
  /// The next @p count elements of what was reserved.
  [[nodiscard]] T* Take(std::size_t count) noexcept { return std::exchange(m_next, m_next + count); }

 private:
  T m_small[Small];
  qxBlock<T> m_block;
  T* m_data = nullptr;
  T* m_next = nullptr;
};

}  // namespace qxMatrices
