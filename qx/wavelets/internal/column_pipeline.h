#pragma once

#include <qx/foundation/scalar.h>
#include <qx/wavelets/internal/lifting_schedule.h>

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <limits>

namespace qxInternal {

/// The rows of a signal that the steps along its columns work on, in even and odd rows and each in two parts (its even
/// and its odd columns, after the steps along rows): either the rows of the bands themselves, or a window of the newest
/// ones.
template <qxReal T>
class RowWindow {
 public:
  /// Rows of each kind in a window. No step waits for more than eight rows, ends included, so that an older row has
  /// been handed on before its place is taken.
  static constexpr std::int32_t height = 16;

  struct Part {
    T* rows = nullptr;
    std::size_t columns = 0;
  };

  /// The rows of four bands, by even or odd rows and then by even or odd columns.
  explicit RowWindow(const Part (&parts)[2][2]) : m_mask(std::numeric_limits<std::int32_t>::max()) {
    std::copy_n(&parts[0][0], 4, &m_parts[0][0]);
  }

  /// A window in a block of Size() samples.
  RowWindow(T* memory, std::size_t evenColumns, std::size_t oddColumns) : m_mask(height - 1) {
    for (auto& kind : m_parts) {
      kind[0] = {memory, evenColumns};
      kind[1] = {memory + height * evenColumns, oddColumns};
      memory += height * (evenColumns + oddColumns);
    }
  }

  [[nodiscard]] static std::size_t Size(std::size_t columns) { return 2 * std::size_t{height} * columns; }

  [[nodiscard]] T* Row(bool oddRow, bool oddColumns, std::int32_t row) const {
    const Part& part = m_parts[oddRow][oddColumns];
    return part.rows + static_cast<std::size_t>(row & m_mask) * part.columns;
  }
  [[nodiscard]] std::size_t Columns(bool oddColumns) const { return m_parts[0][oddColumns].columns; }

 private:
  std::int32_t m_mask;
  Part m_parts[2][2];
};

/// Lifts along the columns of a signal whose rows arrive, or are wanted, one after the other.
///
/// Every step follows the one before it at a distance of a few rows, so that a row is read and written while it is
/// still in cache: one pass over memory for all steps. The numbers are those of one step after the other.
template <qxReal T>
class ColumnPipeline {
 public:
  ColumnPipeline(const LiftingSchedule<T>& schedule, const RowWindow<T>& window, std::int32_t evenRows,
                 std::int32_t oddRows, bool inverse)
      : m_schedule(schedule), m_window(window), m_evenRows(evenRows), m_oddRows(oddRows), m_inverse(inverse) {}

  /// The number of the next row of a kind to put into the window.
  [[nodiscard]] std::int32_t Arrived(bool odd) const { return m_arrived[odd]; }

  /// Takes note that this row is in the window and runs every step as far as the rows allow.
  void Advance(bool odd) {
    ++m_arrived[odd];
    for (std::int32_t i = 0; i < m_schedule.Count(); ++i) RunStep(i);
  }

  /// Number of rows from the top that no step will change or read any more.
  [[nodiscard]] std::int32_t Finished(bool odd) const {
    const std::int32_t count = m_schedule.Count();
    std::int32_t finished = ReadyFor(count, odd);
    if (count > 0) finished = std::min(finished, LowestReadAfter(count - 1, odd));
    if (count > 1) finished = std::min(finished, LowestReadAfter(count - 2, odd));
    return finished;
  }

 private:
  void RunStep(std::int32_t i) {
    const LiftingStep<T>& step = m_schedule.Step(i, m_inverse);
    const bool toOdd = step.DestinationIsOdd();
    const std::int32_t sourceReady = ReadyFor(i, !toOdd);
    const std::int32_t stillRead = i > 0 ? LowestReadAfter(i - 1, toOdd) : toOdd ? m_oddRows : m_evenRows;
    const std::int32_t destinationReady = std::min(ReadyFor(i, toOdd), stillRead);
    for (std::int32_t& row = m_done[i]; row < destinationReady; ++row) {
      const typename LiftingStep<T>::Sum sum = step.SumAt(row);
      if (sum.taps > 0 && *std::max_element(sum.index, sum.index + sum.taps) >= sourceReady) break;
      for (const bool part : {false, true}) {
        const auto rowOf = [&](std::int32_t source) { return m_window.Row(!toOdd, part, source); };
        step.LiftAcross(sum, m_window.Row(toOdd, part, row), rowOf, m_window.Columns(part), m_inverse);
      }
    }
  }

  /// Rows of a kind that the steps before step @p i have left behind them.
  [[nodiscard]] std::int32_t ReadyFor(std::int32_t i, bool odd) const {
    while (--i >= 0) {
      if (m_schedule.Step(i, m_inverse).DestinationIsOdd() == odd) return m_done[i];
    }
    return m_arrived[odd];
  }

  /// Rows of a kind below the result are read no more by step @p i.
  [[nodiscard]] std::int32_t LowestReadAfter(std::int32_t i, bool odd) const {
    const LiftingStep<T>& step = m_schedule.Step(i, m_inverse);
    if (step.DestinationIsOdd() == odd) return odd ? m_oddRows : m_evenRows;
    return step.LowestSourceFrom(m_done[i]);
  }

  const LiftingSchedule<T>& m_schedule;
  RowWindow<T> m_window;
  std::int32_t m_evenRows;
  std::int32_t m_oddRows;
  bool m_inverse;
  std::int32_t m_arrived[2] = {};
  std::int32_t m_done[3] = {};
};

}  // namespace qxInternal
