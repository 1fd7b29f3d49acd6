#pragma once

#include <qx/foundation/scalar.h>
#include <qx/kernels/array_kernels.h>
#include <qx/kernels/wavelet_kernels.h>
#include <qx/wavelets/internal/band_factors.h>
#include <qx/wavelets/internal/band_geometry.h>
#include <qx/wavelets/internal/column_pipeline.h>
#include <qx/wavelets/internal/lifting_schedule.h>

#include <algorithm>
#include <cstddef>
#include <cstdint>

namespace qxInternal {

/// The samples of a band and the factor by which they are multiplied on their way to or from it.
template <typename Sample, typename T>
struct ScaledBand {
  Sample* samples = nullptr;
  T factor = 1;
};

/// The rows of a block of samples, as LevelTransform reads and writes them.
template <typename Sample>
struct BlockRows {
  Sample* block;
  std::size_t columns;

  template <typename T>
  [[nodiscard]] Sample* Begin(std::int32_t row, T*) const {
    return block + static_cast<std::size_t>(row) * columns;
  }
  template <typename T>
  void End(std::int32_t, T*) const {}
};

/// One level between the rows of a signal and its bands, in one pass over memory: each row is dealt out, lifted along
/// itself, and the steps along the columns follow a few rows behind; the inverse goes the other way.
///
/// Rows come from, and go to, an object whose `Begin(row, spare)` gives the place of a row, which may be the spare one,
/// and whose `End(row, place)` takes note that the row has been written. The bands are blocks of the sizes that
/// BandRect() gives. Work memory has WorkSize() samples.
template <qxReal T>
class LevelTransform {
 public:
  LevelTransform(const Rect& extent, qxChannelType type, const CQXWaveletFilter<T>& filter)
      : LevelTransform(extent, type) {
    if (m_dividesColumns) m_rowSchedule = MakeSchedule(filter, m_rowOrder, false);
    if (m_dividesRows) m_columnSchedule = MakeSchedule(filter, m_columnOrder, true);
  }

  /// Samples of work memory for signals of so many columns: a window and a spare row.
  [[nodiscard]] static std::size_t WorkSize(std::size_t columns) { return RowWindow<T>::Size(columns) + columns; }

  /// From the rows of the signal to the bands, in which the steps run.
  template <typename Rows>
  void Forward(const Rows& source, const ScaledBand<T, T>* bands, T* work) const {
    const RowWindow<T> window = WindowOf(bands);
    ColumnPipeline<T> pipeline = MakePipeline(window, false);
    std::int32_t finished[2] = {};
    for (std::int32_t row = 0; row < m_rows; ++row) {
      const bool odd = IsOdd(row);
      T* const even = window.Row(odd, false, pipeline.Arrived(odd));
      T* const other = window.Row(odd, true, pipeline.Arrived(odd));
      DealOut(source.Begin(row, work), even, other);
      m_rowSchedule.LiftRow(even, other, false);
      pipeline.Advance(odd);
      for (const bool kind : {false, true}) {
        for (; finished[kind] < pipeline.Finished(kind); ++finished[kind]) Scale(bands, window, kind, finished[kind]);
      }
    }
  }

  /// From the bands, which are only read, to the rows of the signal.
  template <typename Rows>
  void Inverse(const ScaledBand<const T, T>* bands, const Rows& target, T* work) const {
    const RowWindow<T> window(work, EvenColumns(), OddColumns());
    RunInverse(window, target, work + RowWindow<T>::Size(m_columns), [&](bool odd, std::int32_t row) {
      for (const bool part : {false, true}) {
        const auto& [samples, factor] = bands[m_band[odd][part]];
        const std::size_t count = window.Columns(part);
        const T* const loaded = samples + static_cast<std::size_t>(row) * count;
        T* const place = window.Row(odd, part, row);
        HasEffect(factor) ? qxKernels::Product(count, loaded, factor, place) : void(std::copy_n(loaded, count, place));
      }
    });
  }

  /// The same in the bands, which are left with what the steps make of them: less work.
  template <typename Rows>
  void DestroyingInverse(const ScaledBand<T, T>* bands, const Rows& target, T* work) const {
    const RowWindow<T> window = WindowOf(bands);
    RunInverse(window, target, work, [&](bool odd, std::int32_t row) { Scale(bands, window, odd, row); });
  }

  /// Deals the samples out to the bands, without arithmetic.
  static void Split(const Rect& extent, qxChannelType type, const T* source, T* const* bands) {
    const LevelTransform level(extent, type);
    level.ForEachBandRow(bands, [&](T* even, T* odd) {
      level.DealOut(source, even, odd);
      source += level.m_columns;
    });
  }

  /// The opposite of Split().
  static void Unite(const Rect& extent, qxChannelType type, T* const* bands, T* target) {
    const LevelTransform level(extent, type);
    level.ForEachBandRow(bands, [&](const T* even, const T* odd) {
      level.Gather(even, odd, target);
      target += level.m_columns;
    });
  }

 private:
  /// How a direction divides: the band on the even local positions is the high one when the first coordinate is odd.
  struct Order {
    Order(bool divides, std::int64_t begin, std::int64_t end)
        : highLeads(divides && (begin & 1) != 0),
          evenSize(static_cast<std::int32_t>(divides ? (end - begin + 1) / 2 : end - begin)),
          oddSize(static_cast<std::int32_t>(divides ? (end - begin) / 2 : 0)) {}
    bool highLeads;
    std::int32_t evenSize, oddSize;
  };

  LevelTransform(const Rect& extent, qxChannelType type)
      : m_columns(Size(extent.Columns())),
        m_rows(extent.Rows()),
        m_dividesColumns(DividesColumns(type)),
        m_dividesRows(DividesRows(type)),
        m_rowOrder(m_dividesColumns, extent.left, extent.right),
        m_columnOrder(m_dividesRows, extent.top, extent.bottom) {
    for (std::int32_t band = 0; band < BandsCount(type); ++band) {
      m_band[IsHighInRows(type, band) != m_columnOrder.highLeads][IsHighInColumns(type, band) != m_rowOrder.highLeads] =
          band;
    }
  }

  [[nodiscard]] static LiftingSchedule<T> MakeSchedule(const CQXWaveletFilter<T>& filter, const Order& order,
                                                       bool alongColumns) {
    return {filter, order.evenSize, order.oddSize, order.highLeads, alongColumns};
  }

  [[nodiscard]] ColumnPipeline<T> MakePipeline(const RowWindow<T>& window, bool inverse) const {
    return {m_columnSchedule, window, m_columnOrder.evenSize, m_columnOrder.oddSize, inverse};
  }

  [[nodiscard]] static std::size_t Size(std::int32_t size) { return static_cast<std::size_t>(std::max(size, 0)); }
  [[nodiscard]] bool IsOdd(std::int32_t row) const { return m_dividesRows && row % 2 != 0; }
  [[nodiscard]] std::size_t EvenColumns() const { return Size(m_rowOrder.evenSize); }
  [[nodiscard]] std::size_t OddColumns() const { return Size(m_rowOrder.oddSize); }

  /// The rows of the bands themselves.
  [[nodiscard]] RowWindow<T> WindowOf(const ScaledBand<T, T>* bands) const {
    typename RowWindow<T>::Part parts[2][2];
    for (const bool oddRow : {false, true}) {
      parts[oddRow][0] = {bands[m_band[oddRow][0]].samples, EvenColumns()};
      if (m_dividesColumns) parts[oddRow][1] = {bands[m_band[oddRow][1]].samples, OddColumns()};
    }
    return RowWindow<T>(parts);
  }

  /// Multiplies one row of the bands by their factors.
  void Scale(const ScaledBand<T, T>* bands, const RowWindow<T>& window, bool odd, std::int32_t row) const {
    for (const bool part : {false, true}) {
      const T factor = bands[m_band[odd][part]].factor;
      if (HasEffect(factor)) qxKernels::Multiply(window.Columns(part), factor, window.Row(odd, part, row));
    }
  }

  /// Rows are loaded by load(odd, row), lifted and written as soon as they are finished.
  template <typename Rows, typename Load>
  void RunInverse(const RowWindow<T>& window, const Rows& target, T* spare, Load load) const {
    ColumnPipeline<T> pipeline = MakePipeline(window, true);
    std::int32_t written[2] = {};
    std::int32_t next = 0;
    for (std::int32_t row = 0; row < m_rows; ++row) {
      load(IsOdd(row), pipeline.Arrived(IsOdd(row)));
      pipeline.Advance(IsOdd(row));
      for (; next < m_rows && written[IsOdd(next)] < pipeline.Finished(IsOdd(next)); ++next) {
        T* const even = window.Row(IsOdd(next), false, written[IsOdd(next)]);
        T* const odd = window.Row(IsOdd(next), true, written[IsOdd(next)]++);
        m_rowSchedule.LiftRow(even, odd, true);
        T* const place = target.Begin(next, spare);
        Gather(even, odd, place);
        target.End(next, place);
      }
    }
  }

  /// Between a row of samples and its even and odd ones.
  void DealOut(const T* row, T* even, T* odd) const {
    m_dividesColumns ? qxKernels::Deinterleave(m_columns, row, even, odd) : void(std::copy_n(row, m_columns, even));
  }
  void Gather(const T* even, const T* odd, T* row) const {
    m_dividesColumns ? qxKernels::Interleave(m_columns, even, odd, row) : void(std::copy_n(even, m_columns, row));
  }

  /// Calls visit(even samples, odd samples) with the places of every row in the bands.
  template <typename Visit>
  void ForEachBandRow(T* const* bands, Visit visit) const {
    for (std::int32_t row = 0; row < m_rows; ++row) {
      const auto position = static_cast<std::size_t>(m_dividesRows ? row / 2 : row);
      T* const even = bands[m_band[IsOdd(row)][0]] + position * EvenColumns();
      visit(even, m_dividesColumns ? bands[m_band[IsOdd(row)][1]] + position * OddColumns() : even);
    }
  }

  std::size_t m_columns;
  std::int32_t m_rows;
  bool m_dividesColumns;
  bool m_dividesRows;
  Order m_rowOrder;     // along a row
  Order m_columnOrder;  // along a column
  LiftingSchedule<T> m_rowSchedule;
  LiftingSchedule<T> m_columnSchedule;
  std::int32_t m_band[2][2] = {};  // by even or odd rows, then by even or odd columns
};

}  // namespace qxInternal
