#pragma once

#include <qx/foundation/block.h>
#include <qx/wavelets/wavelet_types.h>

#include <algorithm>
#include <cstddef>
#include <cstdint>

namespace qxInternal {

/// A rectangle in absolute coordinates; right and bottom are the first column and row outside.
struct Rect {
  std::int64_t left, top, right, bottom;

  bool operator==(const Rect&) const = default;
  [[nodiscard]] std::int32_t Columns() const { return static_cast<std::int32_t>(right - left); }
  [[nodiscard]] std::int32_t Rows() const { return static_cast<std::int32_t>(bottom - top); }
  [[nodiscard]] std::size_t Count() const { return qxElementCount(Rows(), Columns()); }
  [[nodiscard]] bool IsEmpty() const { return left >= right || top >= bottom; }
  [[nodiscard]] bool Contains(const Rect& r) const {
    return left <= r.left && top <= r.top && r.right <= right && r.bottom <= bottom;
  }
  [[nodiscard]] Rect ClippedTo(const Rect& r) const {
    return {std::max(left, r.left), std::max(top, r.top), std::min(right, r.right), std::min(bottom, r.bottom)};
  }
};

[[nodiscard]] inline bool DividesColumns(qxChannelType type) {
  return type == QX_CHANNEL_ROWS || type == QX_CHANNEL_2D;
}
[[nodiscard]] inline bool DividesRows(qxChannelType type) {
  return type == QX_CHANNEL_COLUMNS || type == QX_CHANNEL_2D;
}
/// Bands of one level: 2 or 4; 0 for what is no transform.
[[nodiscard]] inline std::int32_t BandsCount(qxChannelType type) {
  if (type == QX_CHANNEL_2D) return 4;
  return DividesColumns(type) || DividesRows(type) ? 2 : 0;
}
[[nodiscard]] inline bool IsHighInColumns(qxChannelType type, std::int32_t band) {
  return DividesColumns(type) && (band == QX_SUBCHANNEL_HH || band == QX_SUBCHANNEL_LH);
}
[[nodiscard]] inline bool IsHighInRows(qxChannelType type, std::int32_t band) {
  return DividesRows(type) && (band == QX_SUBCHANNEL_HH || band == QX_SUBCHANNEL_HL);
}

/// Where the samples of a rectangle stand in a band: even coordinates are low, odd ones high. The shift rounds towards
/// minus infinity, so negative offsets need no care.
[[nodiscard]] inline Rect BandRect(qxChannelType type, std::int32_t band, Rect rect) {
  if (DividesColumns(type)) {
    const std::int64_t up = IsHighInColumns(type, band) ? 0 : 1;
    rect.left = (rect.left + up) >> 1;
    rect.right = (rect.right + up) >> 1;
  }
  if (DividesRows(type)) {
    const std::int64_t up = IsHighInRows(type, band) ? 0 : 1;
    rect.top = (rect.top + up) >> 1;
    rect.bottom = (rect.bottom + up) >> 1;
  }
  return rect;
}

/// Whether a level is not refused. Along one direction the size that does not divide is tested: that is the contract.
[[nodiscard]] inline bool AllowsLevel(qxChannelType type, std::int32_t columns, std::int32_t rows) {
  return !(DividesColumns(type) && rows < 2) && !(DividesRows(type) && columns < 2);
}

/// How many levels of a type an extent allows, up to @p depth.
[[nodiscard]] inline std::int32_t AllowedDepth(qxChannelType type, Rect extent, std::int32_t depth) {
  std::int32_t allowed = 0;
  if (BandsCount(type) == 0) return allowed;
  for (; allowed < depth && AllowsLevel(type, extent.Columns(), extent.Rows()); ++allowed) {
    extent = BandRect(type, 0, extent);
  }
  return allowed;
}

}  // namespace qxInternal
