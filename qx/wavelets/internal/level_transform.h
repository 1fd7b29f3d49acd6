#pragma once

#include <qx/foundation/scalar.h>
#include <qx/kernels/wavelet_kernels.h>
#include <qx/wavelets/internal/band_geometry.h>
#include <qx/wavelets/internal/column_pipeline.h>
#include <qx/wavelets/internal/lifting_schedule.h>

#include <algorithm>
#include <cstddef>
#include <cstdint>

namespace qxInternal {

/// One level between a block of samples and its bands, in one pass over memory: each row is dealt out to the bands,
/// lifted along itself, and the steps along the columns follow a few rows behind; the inverse goes the other way.
///
/// The bands are blocks of the sizes that BandRect() gives. Without a filter the samples are moved and nothing is
/// lifted.
template <qxReal T>
class LevelTransform {
 public:
  LevelTransform(const Rect& extent, qxChannelType type, const CQXWaveletFilter<T>* filter, T* const* bands)
      : m_columns(Size(extent.right - extent.left)),
        m_rows(static_cast<std::int32_t>(extent.bottom - extent.top)),
        m_dividesColumns(DividesColumns(type)),
        m_dividesRows(DividesRows(type)),
        m_rowOrder(m_dividesColumns, extent.left, extent.right),
        m_columnOrder(m_dividesRows, extent.top, extent.bottom),
        m_rowSchedule(filter, m_dividesColumns, m_rowOrder, false),
        m_columnSchedule(filter, m_dividesRows, m_columnOrder, true) {
    for (std::int32_t band = 0; band < BandsCount(type); ++band) {
      m_bands[IsHighInRows(type, band) != m_columnOrder.highLeads]
             [IsHighInColumns(type, band) != m_rowOrder.highLeads] = bands[band];
    }
  }

  /// From the samples to the bands.
  void Forward(const T* source) const {
    ColumnPipeline<T> pipeline = MakePipeline(false);
    std::int32_t arrived[2] = {};
    for (std::int32_t row = 0; row < m_rows; ++row, source += m_columns) {
      const bool odd = m_dividesRows && row % 2 != 0;
      T* even = BandRow(odd, false, arrived[odd]);
      if (m_dividesColumns) {
        T* oddColumns = BandRow(odd, true, arrived[odd]);
        qxKernels::Deinterleave(source, even, oddColumns, m_columns);
        m_rowSchedule.LiftRow(even, oddColumns, false);
      } else {
        std::copy_n(source, m_columns, even);
      }
      ++arrived[odd];
      pipeline.Advance(arrived[0], arrived[1]);
    }
  }

  /// From the bands, which are changed, to the samples.
  void Inverse(T* target) const {
    ColumnPipeline<T> pipeline = MakePipeline(true);
    std::int32_t arrived[2] = {};
    std::int32_t written[2] = {};
    std::int32_t next = 0;
    for (std::int32_t row = 0; row < m_rows; ++row) {
      ++arrived[m_dividesRows && row % 2 != 0];
      pipeline.Advance(arrived[0], arrived[1]);
      for (; next < m_rows; ++next, target += m_columns) {
        const bool odd = m_dividesRows && next % 2 != 0;
        if (written[odd] >= pipeline.Finished(odd, arrived[0], arrived[1])) break;
        T* even = BandRow(odd, false, written[odd]);
        if (m_dividesColumns) {
          T* oddColumns = BandRow(odd, true, written[odd]);
          m_rowSchedule.LiftRow(even, oddColumns, true);
          qxKernels::Interleave(even, oddColumns, target, m_columns);
        } else {
          std::copy_n(even, m_columns, target);
        }
        ++written[odd];
      }
    }
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

  struct Schedule : LiftingSchedule<T> {
    Schedule(const CQXWaveletFilter<T>* filter, bool divides, const Order& order, bool alongColumns)
        : LiftingSchedule<T>(filter != nullptr && divides ? LiftingSchedule<T>(*filter, order.evenSize, order.oddSize,
                                                                               order.highLeads, alongColumns)
                                                          : LiftingSchedule<T>()) {}
  };

  [[nodiscard]] static std::size_t Size(std::int64_t size) {
    return static_cast<std::size_t>(std::max(size, std::int64_t{0}));
  }

  [[nodiscard]] ColumnPipeline<T> MakePipeline(bool inverse) const {
    ColumnPipeline<T> pipeline(m_columnSchedule, m_columnOrder.evenSize, m_columnOrder.oddSize, inverse);
    pipeline.AddBands(m_bands[0][0], m_bands[1][0], m_rowOrder.evenSize);
    if (m_dividesColumns) pipeline.AddBands(m_bands[0][1], m_bands[1][1], m_rowOrder.oddSize);
    return pipeline;
  }

  [[nodiscard]] T* BandRow(bool oddRows, bool oddColumns, std::int32_t row) const {
    const std::int32_t columns = oddColumns ? m_rowOrder.oddSize : m_rowOrder.evenSize;
    return m_bands[oddRows][oddColumns] + static_cast<std::size_t>(row) * Size(columns);
  }

  std::size_t m_columns;
  std::int32_t m_rows;
  bool m_dividesColumns;
  bool m_dividesRows;
  Order m_rowOrder;     // along a row
  Order m_columnOrder;  // along a column
  Schedule m_rowSchedule;
  Schedule m_columnSchedule;
  T* m_bands[2][2] = {};  // by even or odd rows, then by even or odd columns
};

/// The factors of the bands of one level, and how they go on from level to level.
template <qxReal T>
class BandFactors {
 public:
  BandFactors(qxChannelType type, T low, T high)
      : m_step(type == QX_CHANNEL_2D ? low * low : low),
        m_mixed(type == QX_CHANNEL_2D ? low * high : high),
        m_high(type == QX_CHANNEL_2D ? high * high : high),
        m_lowest(m_step) {}

  /// Factor of a high band of the present level.
  [[nodiscard]] T Of(std::int32_t band) const { return band == QX_SUBCHANNEL_HH ? m_high : m_mixed; }
  /// Factor of the low band when the present level is the last.
  [[nodiscard]] T OfLowest() const { return m_lowest; }

  void GoDown() {
    m_mixed *= m_step;
    m_high *= m_step;
    m_lowest *= m_step;
  }

 private:
  T m_step, m_mixed, m_high, m_lowest;
};

}  // namespace qxInternal
