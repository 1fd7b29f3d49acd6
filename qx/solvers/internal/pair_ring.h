#pragma once

#include <qx/foundation/block.h>
#include <qx/foundation/scalar.h>

#include <cstddef>

/// @file
/// What the limited-memory methods remember. Internal, not part of the interface.

namespace qxSolvers {

/// The last m pairs of a step and the difference of the gradients over it, in a ring. Pairs are numbered from the
/// oldest to the newest; each keeps its slot as long as it is there.
template <qxReal T>
class PairRing {
 public:
  PairRing(std::size_t n, std::size_t m)
      : m_n(n), m_m(m), m_steps(qxMakeBlock<T>(m * n)), m_differences(qxMakeBlock<T>(m * n)) {}

  [[nodiscard]] bool HasMemory() const { return m_steps != nullptr && m_differences != nullptr; }
  [[nodiscard]] std::size_t Count() const { return m_count; }
  void Clear() { m_first = m_count = 0; }

  [[nodiscard]] std::size_t Slot(std::size_t pair) const {
    return pair < m_m - m_first ? m_first + pair : pair - (m_m - m_first);
  }
  [[nodiscard]] const T* Step(std::size_t pair) const { return m_steps.get() + Slot(pair) * m_n; }
  [[nodiscard]] const T* Difference(std::size_t pair) const { return m_differences.get() + Slot(pair) * m_n; }

  /// Where the next pair will stand: the place of the oldest one, when the ring is full.
  [[nodiscard]] T* NextStep() { return m_steps.get() + NextSlot() * m_n; }
  [[nodiscard]] T* NextDifference() { return m_differences.get() + NextSlot() * m_n; }
  /// Takes in the pair that was written there.
  void Advance() {
    if (m_count < m_m) {
      ++m_count;
    } else {
      m_first = m_first + 1 < m_m ? m_first + 1 : 0;
    }
  }

 private:
  [[nodiscard]] std::size_t NextSlot() const { return m_count < m_m ? Slot(m_count) : m_first; }

  std::size_t m_n;
  std::size_t m_m;
  std::size_t m_first = 0;
  std::size_t m_count = 0;
  qxBlock<T> m_steps;
  qxBlock<T> m_differences;
};

}  // namespace qxSolvers
