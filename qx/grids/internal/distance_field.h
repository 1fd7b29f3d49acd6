#pragma once

#include <qx/foundation/block.h>

#include <cstddef>
#include <cstdint>

/// @file
/// Exact signed distances of pixels, first along columns, then along rows. Internal, not part of the interface.

namespace qxGrids {

/// Order of calls: SetInside() for every pixel, MeasureColumns(), then MeasureRow() for each row.
class DistanceField {
 public:
  DistanceField(std::int32_t width, std::int32_t height);

  [[nodiscard]] bool HasMemory() const;

  void SetInside(std::int32_t x, std::int32_t y, bool isInside) { Row(y)[x] = isInside ? -1 : 1; }

  /// Turns each pixel into its distance from the nearest pixel of the other kind in its column, negative inside.
  void MeasureColumns();

  /// The signed distances of a row; they stand until the next call.
  [[nodiscard]] const double* MeasureRow(std::int32_t y);

 private:
  /// A parabola square + (x - centre)^2 and the place from which on it is the lowest one.
  struct Parabola {
    double centre, square, start;
  };

  [[nodiscard]] std::int32_t* Row(std::int32_t y) const {
    return m_columns.get() + static_cast<std::size_t>(y) * static_cast<std::size_t>(m_width);
  }
  void MeasureRowTowards(const std::int32_t* columns, std::int32_t kind);

  std::int32_t m_width;
  std::int32_t m_height;
  qxBlock<std::int32_t> m_columns;
  qxBlock<Parabola> m_envelope;
  qxBlock<double> m_distances;
};

}  // namespace qxGrids
