#pragma once

#include <qx/wavelets/wavelet_types.h>

#include <algorithm>
#include <cstdint>
#include <memory>

namespace qxInternal {

/// A rectangle in absolute coordinates; right and bottom are the first column and row outside.
struct Rect {
  std::int64_t left, top, right, bottom;

  bool operator==(const Rect&) const = default;
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

/// The rectangle that a channel covers.
template <typename Channel>
[[nodiscard]] Rect Extent(const Channel& channel) {
  const std::int64_t left = channel.GetOffsetX();
  const std::int64_t top = channel.GetOffsetY();
  return {left, top, left + channel.GetColsNb(), top + channel.GetRowsNb()};
}

/// A channel that covers a rectangle, without samples.
template <typename Channel>
[[nodiscard]] std::unique_ptr<Channel> MakeShell(const Rect& rect) {
  return std::make_unique<Channel>(static_cast<std::int32_t>(rect.right - rect.left),
                                   static_cast<std::int32_t>(rect.bottom - rect.top),
                                   static_cast<std::int32_t>(rect.left), static_cast<std::int32_t>(rect.top));
}

/// A rectangle that is given relative to the first sample of a channel.
template <typename Channel>
[[nodiscard]] Rect RectAt(const Channel& channel, std::int32_t x, std::int32_t y, std::int32_t width,
                          std::int32_t height) {
  const std::int64_t left = std::int64_t{channel.GetOffsetX()} + x;
  const std::int64_t top = std::int64_t{channel.GetOffsetY()} + y;
  return {left, top, left + width, top + height};
}

}  // namespace qxInternal
