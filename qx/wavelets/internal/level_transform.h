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

  /// Samples of work memory for signals of so many columns: the window and a spare row.
  [[nodiscard]] static std::size_t WorkSize(std::size_t columns) { return RowWindow<T>::Size(columns) + columns; }

  /// From the rows of the signal to the bands.
  template <typename Rows>
  void Forward(const Rows& source, const ScaledBand<T, T>* bands, T* work) const {
    const RowWindow<T> window(work, m_columns);
    T* const spare = work + RowWindow<T>::Size(m_columns);
    ColumnPipeline<T> pipeline = MakePipeline(window, false);
    std::int32_t stored[2] = {};
    for (std::int32_t row = 0; row < m_rows; ++row) {
      const bool odd = IsOdd(row);
      T* place = window.Row(odd, pipeline.Arrived(odd));
      DealOut(source.Begin(row, spare), place);
      m_rowSchedule.LiftRow(place, place + EvenColumns(), false);
      pipeline.Advance(odd);
      for (const bool kind : {false, true}) {
        for (; stored[kind] < pipeline.Finished(kind); ++stored[kind]) {
          const T* const finished = window.Row(kind, stored[kind]);
          ForEachPart(bands, kind, stored[kind],
                      [finished](const auto& band, std::size_t at, std::size_t count, std::size_t column) {
                        CopyScaled(count, finished + column, band.factor, band.samples + at);
                      });
        }
      }
    }
  }

  /// From the bands to the rows of the signal.
  template <typename Rows>
  void Inverse(const ScaledBand<const T, T>* bands, const Rows& target, T* work) const {
    const RowWindow<T> window(work, m_columns);
    T* const spare = work + RowWindow<T>::Size(m_columns);
    ColumnPipeline<T> pipeline = MakePipeline(window, true);
    std::int32_t written[2] = {};
    std::int32_t next = 0;
    for (std::int32_t row = 0; row < m_rows; ++row) {
      const bool odd = IsOdd(row);
      const std::int32_t arrived = pipeline.Arrived(odd);
      T* const loaded = window.Row(odd, arrived);
      ForEachPart(bands, odd, arrived,
                  [loaded](const auto& band, std::size_t at, std::size_t count, std::size_t column) {
                    CopyScaled(count, band.samples + at, band.factor, loaded + column);
                  });
      pipeline.Advance(odd);
      for (; next < m_rows && written[IsOdd(next)] < pipeline.Finished(IsOdd(next)); ++next) {
        T* place = window.Row(IsOdd(next), written[IsOdd(next)]++);
        m_rowSchedule.LiftRow(place, place + EvenColumns(), true);
        T* const out = target.Begin(next, spare);
        Gather(place, out);
        target.End(next, out);
      }
    }
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

  /// Between a row of samples and its even and odd ones, which stand one after the other where only one place is given.
  void DealOut(const T* row, T* even, T* odd) const {
    m_dividesColumns ? qxKernels::Deinterleave(row, even, odd, m_columns) : CopyScaled(m_columns, row, T(1), even);
  }
  void DealOut(const T* row, T* place) const { DealOut(row, place, place + EvenColumns()); }
  void Gather(const T* even, const T* odd, T* row) const {
    m_dividesColumns ? qxKernels::Interleave(even, odd, row, m_columns) : CopyScaled(m_columns, even, T(1), row);
  }
  void Gather(const T* place, T* row) const { Gather(place, place + EvenColumns(), row); }

  static void CopyScaled(std::size_t count, const T* source, T factor, T* target) {
    HasEffect(factor) ? qxKernels::Product(count, source, factor, target) : void(std::copy_n(source, count, target));
  }

  /// Calls move(band, position in it, count, column) for the even and the odd samples of one row of even or odd number.
  template <typename Band, typename Move>
  void ForEachPart(const Band* bands, bool oddRow, std::int32_t row, Move move) const {
    const auto position = static_cast<std::size_t>(row);
    move(bands[m_band[oddRow][0]], position * EvenColumns(), EvenColumns(), std::size_t{0});
    if (m_dividesColumns) move(bands[m_band[oddRow][1]], position * OddColumns(), OddColumns(), EvenColumns());
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
