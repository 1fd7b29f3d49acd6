#include <qx/grids/internal/distance_field.h>

#include <algorithm>
#include <cmath>
#include <limits>

namespace qxGrids {

namespace {

/// The distance where a column has no pixel of the other kind.
constexpr std::int32_t none = std::numeric_limits<std::int32_t>::max();
constexpr double infinity = std::numeric_limits<double>::infinity();

}  // namespace

DistanceField::DistanceField(std::int32_t width, std::int32_t height)
    : m_width(width),
      m_height(height),
      m_columns(qxMakeBlock<std::int32_t>(qxElementCount(height, width))),
      m_envelope(qxMakeBlock<Parabola>(static_cast<std::size_t>(width))),
      m_distances(qxMakeBlock<double>(static_cast<std::size_t>(width))) {}

bool DistanceField::HasMemory() const {
  return m_columns != nullptr && m_envelope != nullptr && m_distances != nullptr;
}

void DistanceField::MeasureColumns() {
  // A pixel beside one of the other kind is 1 away from it, others are one more than their neighbour.
  const auto follow = [&](std::int32_t y, std::int32_t neighbour) {
    std::int32_t* const row = Row(y);
    const std::int32_t* const before = Row(neighbour);
    for (std::int32_t x = 0; x < m_width; ++x) {
      const std::int32_t kind = row[x] < 0 ? -1 : 1;
      const std::int32_t distance = kind * row[x];
      const std::int32_t offered = kind * before[x] < 0 ? 1 : kind * before[x] == none ? none : kind * before[x] + 1;
      row[x] = kind * std::min(distance, offered);
    }
  };
  for (std::int32_t y = 0; y < m_height; ++y) {
    std::int32_t* const row = Row(y);
    for (std::int32_t x = 0; x < m_width; ++x) row[x] *= none;
  }
  for (std::int32_t y = 1; y < m_height; ++y) follow(y, y - 1);
  for (std::int32_t y = m_height - 1; y-- > 0;) follow(y, y + 1);
}

const double* DistanceField::MeasureRow(std::int32_t y) {
  for (const std::int32_t kind : {1, -1}) MeasureRowTowards(Row(y), kind);
  return m_distances.get();
}

/// Finds the distances of the pixels of one kind, 1 outside and -1 inside, from those of the other: the lower envelope
/// of a parabola over each pixel, with the square of its distance in the column.
void DistanceField::MeasureRowTowards(const std::int32_t* columns, std::int32_t kind) {
  std::size_t count = 0;
  for (std::int32_t x = 0; x < m_width; ++x) {
    const std::int32_t distance = std::max(kind * columns[x], 0);  // 0 for the other kind
    if (distance == none) continue;
    Parabola next{static_cast<double>(x), static_cast<double>(distance) * static_cast<double>(distance), -infinity};
    for (; count > 0; --count) {
      const Parabola& last = m_envelope[count - 1];
      next.start = ((next.square + next.centre * next.centre) - (last.square + last.centre * last.centre)) /
                   (2 * (next.centre - last.centre));
      if (next.start > last.start) break;
    }
    if (count == 0) next.start = -infinity;
    m_envelope[count++] = next;
  }
  std::size_t k = 0;
  for (std::int32_t x = 0; x < m_width; ++x) {
    if ((columns[x] > 0) != (kind > 0)) continue;
    double distance = infinity;
    if (count > 0) {
      while (k + 1 < count && m_envelope[k + 1].start < x) ++k;
      const double dx = x - m_envelope[k].centre;
      distance = std::sqrt(m_envelope[k].square + dx * dx);
    }
    m_distances[static_cast<std::size_t>(x)] = kind * (distance - 0.5);
  }
}

}  // namespace qxGrids
