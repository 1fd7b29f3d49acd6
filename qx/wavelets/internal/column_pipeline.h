#pragma once

#include <qx/foundation/scalar.h>
#include <qx/wavelets/internal/lifting_schedule.h>

#include <algorithm>
#include <cstddef>
#include <cstdint>

namespace qxInternal {

/// Lifts along the columns of bands whose rows arrive, or are wanted, one after the other.
///
/// Every step follows the one before it at a distance of a few rows, so that a row is read and written while it is
/// still in cache: one pass over memory for all steps. The numbers are those of one step after the other.
template <qxReal T>
class ColumnPipeline {
 public:
  ColumnPipeline(const LiftingSchedule<T>& schedule, std::int32_t evenRows, std::int32_t oddRows, bool inverse)
      : m_schedule(schedule), m_evenRows(evenRows), m_oddRows(oddRows), m_inverse(inverse) {}

  /// Adds a pair of bands; all pairs (two at most) move through the steps together.
  void AddBands(T* even, T* odd, std::int32_t columns) {
    m_bands[m_bandsCount++] = {even, odd, columns > 0 ? static_cast<std::size_t>(columns) : 0};
  }

  /// Takes note of the rows that have arrived from the top and runs every step as far as they allow.
  void Advance(std::int32_t evenArrived, std::int32_t oddArrived) {
    for (std::int32_t i = 0; i < m_schedule.Count(); ++i) {
      const LiftingStep<T>& step = m_schedule.Step(i, m_inverse);
      const bool toOdd = step.DestinationIsOdd();
      const std::int32_t sourceReady = ReadyFor(i, !toOdd, evenArrived, oddArrived);
      const std::int32_t destinationReady =
          std::min(ReadyFor(i, toOdd, evenArrived, oddArrived), i > 0   ? LowestReadAfter(i - 1, toOdd)
                                                                : toOdd ? m_oddRows
                                                                        : m_evenRows);
      for (std::int32_t& row = m_done[i]; row < destinationReady; ++row) {
        const typename LiftingStep<T>::Sum sum = step.SumAt(row);
        if (sum.taps > 0 && *std::max_element(sum.index, sum.index + sum.taps) >= sourceReady) break;
        for (std::int32_t b = 0; b < m_bandsCount; ++b) {
          const Bands& bands = m_bands[b];
          step.LiftAcross(sum, row, toOdd ? bands.odd : bands.even, toOdd ? bands.even : bands.odd, bands.columns,
                          m_inverse);
        }
      }
    }
  }

  /// Number of rows from the top that no step will change or read any more, given what has arrived.
  [[nodiscard]] std::int32_t Finished(bool odd, std::int32_t evenArrived, std::int32_t oddArrived) const {
    const std::int32_t count = m_schedule.Count();
    std::int32_t finished = ReadyFor(count, odd, evenArrived, oddArrived);
    if (count > 0) finished = std::min(finished, LowestReadAfter(count - 1, odd));
    if (count > 1) finished = std::min(finished, LowestReadAfter(count - 2, odd));
    return finished;
  }

 private:
  struct Bands {
    T* even;
    T* odd;
    std::size_t columns;
  };

  /// Rows of a band that the steps before step @p i have left behind them.
  [[nodiscard]] std::int32_t ReadyFor(std::int32_t i, bool odd, std::int32_t evenArrived,
                                      std::int32_t oddArrived) const {
    while (--i >= 0) {
      if (m_schedule.Step(i, m_inverse).DestinationIsOdd() == odd) return m_done[i];
    }
    return odd ? oddArrived : evenArrived;
  }

  /// Rows of a band below the result are read no more by step @p i.
  [[nodiscard]] std::int32_t LowestReadAfter(std::int32_t i, bool odd) const {
    const LiftingStep<T>& step = m_schedule.Step(i, m_inverse);
    if (step.DestinationIsOdd() == odd) return odd ? m_oddRows : m_evenRows;
    return step.LowestSourceFrom(m_done[i]);
  }

  const LiftingSchedule<T>& m_schedule;
  std::int32_t m_evenRows;
  std::int32_t m_oddRows;
  bool m_inverse;
  std::int32_t m_done[3] = {};
  std::int32_t m_bandsCount = 0;
  Bands m_bands[2];
};

}  // namespace qxInternal
