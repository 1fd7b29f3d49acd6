#pragma once

#include <qx/foundation/api.h>
#include <qx/foundation/block.h>
#include <qx/foundation/scalar.h>
#include <qx/geometry/fill_rule.h>
#include <qx/vectors/vector2.h>

#include <cstddef>
#include <cstdint>

/// Grid of pixels, each with one number: coverage by polygons and distance fields, for float and double.
///
/// Pixel (x, y) is the square from (x, y) to (x + 1, y + 1); its centre is (x + 0.5, y + 0.5). The numbers stand row by
/// row in one block. What has no memory is a grid of 0 x 0 pixels. A const grid may be read from several threads.
template <qxReal T>
class QX_API CQXGrid {
 public:
  /// A grid without pixels.
  CQXGrid() noexcept = default;
  /// A grid of zeros; without pixels when a size is not positive, or there is no memory.
  CQXGrid(std::int32_t width, std::int32_t height) { (void)SetSize(width, height); }
  CQXGrid(const CQXGrid& other);
  CQXGrid(CQXGrid&& other) noexcept;
  /// Takes size and pixels of @p other; is left without pixels when there is no memory.
  CQXGrid& operator=(const CQXGrid& other);
  /// Takes the block of @p other, which is left without pixels.
  CQXGrid& operator=(CQXGrid&& other) noexcept;
  ~CQXGrid() = default;

  /// Makes it a grid of zeros; without pixels when a size is not positive.
  /// @return 1; 0 when there is no memory: nothing changes.
  [[nodiscard]] std::int32_t SetSize(std::int32_t width, std::int32_t height);

  /// Number of columns.
  [[nodiscard]] std::int32_t Width() const noexcept { return m_width; }
  /// Number of rows.
  [[nodiscard]] std::int32_t Height() const noexcept { return m_height; }
  /// Number of pixels.
  [[nodiscard]] std::size_t Count() const noexcept { return qxElementCount(m_height, m_width); }
  /// The pixels row by row; null without pixels.
  [[nodiscard]] T* Data() noexcept { return m_pixels.get(); }
  [[nodiscard]] const T* Data() const noexcept { return m_pixels.get(); }
  /// Pixel @p x of row @p y; neither is tested.
  [[nodiscard]] T& operator()(std::int32_t x, std::int32_t y) noexcept { return m_pixels[Position(x, y)]; }
  [[nodiscard]] const T& operator()(std::int32_t x, std::int32_t y) const noexcept { return m_pixels[Position(x, y)]; }

  /// Every pixel := @p value.
  void SetToConstant(T value) noexcept;

  /// Every pixel := the part of its square that polygons cover, from 0 to 1, from areas under the edges and not from
  /// samples.
  ///
  /// A polygon with holes is a polygon and its holes together: either sense for QX_FILL_EVEN_ODD, holes the other way
  /// round than the border for QX_FILL_NON_ZERO. Covered and free pixels are exactly 1 and 0, others are within 2^-38
  /// of the area. Only where edges cross or two of them go through one pixel with the same sense, the pixel takes the
  /// fold of the summed area instead. Polygons may reach beyond the grid. O(pixels + crossed pixels).
  /// @param polygonsNb number of polygons; the last vertex of each is joined to its first
  /// @param counts the number of vertices of each
  /// @param vertices those of all polygons, one after the other
  /// @return 1; 0 when a coordinate is beyond 1e30 or not a number, and when there is no memory: nothing changes.
  [[nodiscard]] std::int32_t RasterizePolygons(std::int32_t polygonsNb, const std::int32_t* counts,
                                               const CQXVector2<T>* vertices, qxFillRule rule);
  /// RasterizePolygons() for one polygon.
  [[nodiscard]] std::int32_t RasterizePolygon(std::int32_t n, const CQXVector2<T>* vertices,
                                              qxFillRule rule = QX_FILL_NON_ZERO) {
    return RasterizePolygons(1, &n, vertices, rule);
  }

  /// Takes the size of @p source and sets every pixel to its signed distance from the border between the pixels of at
  /// least @p level, inside, and all others: the exact Euclidean distance of its centre from the nearest centre of the
  /// other kind, less 1/2, negative inside (Felzenszwalb and Huttenlocher 2012). O(pixels).
  ///
  /// Where all pixels are of one kind the distances are infinite. Not a number is outside.
  /// @param source may be this grid
  /// @return 1; 0 when there is no memory: nothing changes.
  [[nodiscard]] std::int32_t SetSignedDistance(const CQXGrid& source, T level = T(0.5));

 private:
  [[nodiscard]] std::size_t Position(std::int32_t x, std::int32_t y) const noexcept {
    return static_cast<std::size_t>(y) * static_cast<std::size_t>(m_width) + static_cast<std::size_t>(x);
  }

  std::int32_t m_width = 0;
  std::int32_t m_height = 0;
  qxBlock<T> m_pixels;
};

extern template class QX_API CQXGrid<float>;
extern template class QX_API CQXGrid<double>;
