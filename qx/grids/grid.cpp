#include <qx/grids/grid.h>
#include <qx/grids/internal/coverage.h>
#include <qx/grids/internal/distance_field.h>

#include <algorithm>
#include <cmath>
#include <utility>

template <qxReal T>
CQXGrid<T>::CQXGrid(const CQXGrid& other) {
  if (SetSize(other.m_width, other.m_height) != 0) std::copy_n(other.Data(), Count(), Data());
}

template <qxReal T>
CQXGrid<T>::CQXGrid(CQXGrid&& other) noexcept
    : m_width(std::exchange(other.m_width, 0)),
      m_height(std::exchange(other.m_height, 0)),
      m_pixels(std::move(other.m_pixels)) {}

template <qxReal T>
CQXGrid<T>& CQXGrid<T>::operator=(const CQXGrid& other) {
  if (this != &other) *this = CQXGrid(other);
  return *this;
}

template <qxReal T>
CQXGrid<T>& CQXGrid<T>::operator=(CQXGrid&& other) noexcept {
  CQXGrid taken(std::move(other));
  std::swap(m_width, taken.m_width);
  std::swap(m_height, taken.m_height);
  std::swap(m_pixels, taken.m_pixels);
  return *this;
}

template <qxReal T>
std::int32_t CQXGrid<T>::SetSize(std::int32_t width, std::int32_t height) {
  const std::size_t count = qxElementCount(height, width);
  qxBlock<T> pixels;
  if (count > 0) {
    pixels = qxMakeBlock<T>(count);
    if (pixels == nullptr) return 0;
    std::fill_n(pixels.get(), count, T(0));
  }
  m_width = count > 0 ? width : 0;
  m_height = count > 0 ? height : 0;
  m_pixels = std::move(pixels);
  return 1;
}

template <qxReal T>
void CQXGrid<T>::SetToConstant(T value) noexcept {
  std::fill_n(Data(), Count(), value);
}

template <qxReal T>
std::int32_t CQXGrid<T>::RasterizePolygons(std::int32_t polygonsNb, const std::int32_t* counts,
                                           const CQXVector2<T>* vertices, qxFillRule rule) {
  constexpr T largest = T(1e30);
  const CQXVector2<T>* end = vertices;
  for (std::int32_t k = 0; k < polygonsNb; ++k) end += std::max(counts[k], 0);
  const auto isUsable = [](const CQXVector2<T>& v) { return std::abs(v.X()) <= largest && std::abs(v.Y()) <= largest; };
  if (!std::all_of(vertices, end, isUsable)) return 0;
  qxGrids::Coverage coverage(m_width, m_height);
  if (!coverage.HasMemory()) return 0;
  for (std::int32_t k = 0; k < polygonsNb; ++k) {
    const std::int32_t n = std::max(counts[k], 0);
    for (std::int32_t i = 0; i < n; ++i) {
      const CQXVector2<T>& a = vertices[i];
      const CQXVector2<T>& b = vertices[i + 1 < n ? i + 1 : 0];
      coverage.AddEdge({static_cast<double>(a.X()), static_cast<double>(a.Y())},
                       {static_cast<double>(b.X()), static_cast<double>(b.Y())});
    }
    vertices += n;
  }
  for (std::int32_t y = 0; y < m_height; ++y) coverage.WriteRow(y, rule, &(*this)(0, y));
  return 1;
}

template <qxReal T>
std::int32_t CQXGrid<T>::SetSignedDistance(const CQXGrid& source, T level) {
  qxGrids::DistanceField field(source.m_width, source.m_height);
  if (!field.HasMemory()) return 0;
  if (this != &source && SetSize(source.m_width, source.m_height) == 0) return 0;
  for (std::int32_t y = 0; y < m_height; ++y) {
    for (std::int32_t x = 0; x < m_width; ++x) field.SetInside(x, y, source(x, y) >= level);
  }
  field.MeasureColumns();
  for (std::int32_t y = 0; y < m_height; ++y) {
    const double* const row = field.MeasureRow(y);
    std::transform(row, row + m_width, &(*this)(0, y), [](double d) { return static_cast<T>(d); });
  }
  return 1;
}

template class CQXGrid<float>;
template class CQXGrid<double>;
