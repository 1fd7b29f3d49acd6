#include <qx/foundation/block.h>
#include <qx/foundation/internal/instantiate.h>
#include <qx/geometry/geometry.h>
#include <qx/geometry/internal/strict_hull.h>

#include <algorithm>
#include <bit>
#include <cmath>
#include <cstddef>
#include <limits>

namespace {

using qxGeometry::closeness;
using qxGeometry::Cross;
using qxGeometry::DoCoincide;
using qxGeometry::Dot;
using qxGeometry::FindStrictHull;
using qxGeometry::Point;
using qxGeometry::Site;
using qxGeometry::SortUpwards;
using qxGeometry::SquareLength;
using qxGeometry::ToPoint;
using qxGeometry::Turn;

/// The octagon of the extreme points in eight directions; what lies well inside it is no vertex of the hull.
class Octagon {
 public:
  template <qxReal T>
  Octagon(std::size_t n, const CQXVector2<T>* points) {
    double extent[8];
    Point corners[8];
    FindCorners(n, points, extent, corners);
    // Deep enough for everything that is decided by a closeness of 1e-6, and for rounding.
    const double size = std::max(std::max(extent[0], extent[2]), std::max(extent[4], extent[6]));
    const double margin = 10 * closeness + 1e-12 * size;
    for (int k = 0; k < 8; ++k) {
      if (!AppendSide(corners[k], corners[(k + 1) % 8], margin)) {
        m_count = 0;  // no use
        return;
      }
    }
    // Repeat a side in the unused places, so that the test has no loop of its own length.
    for (int k = m_count; k < 8 && m_count > 0; ++k) {
      m_normalX[k] = m_normalX[0];
      m_normalY[k] = m_normalY[0];
      m_offset[k] = m_offset[0];
    }
  }

  [[nodiscard]] bool HasArea() const { return m_count > 2; }

  [[nodiscard]] bool IsWellInside(Point p) const {
    double depth[8];
    for (int k = 0; k < 8; ++k) depth[k] = m_normalX[k] * p.x + m_normalY[k] * p.y - m_offset[k];
    for (int k = 0; k < 4; ++k) depth[k] = std::min(depth[k], depth[k + 4]);
    return std::min(std::min(depth[0], depth[1]), std::min(depth[2], depth[3])) > 0;
  }

 private:
  /// The extreme points in the directions east, north-east, and so on counter-clockwise, and how far they reach.
  template <qxReal T>
  static void FindCorners(std::size_t n, const CQXVector2<T>* points, double* extent, Point* corners) {
    std::size_t extreme[8] = {};
    std::fill_n(extent, 8, -std::numeric_limits<double>::infinity());
    for (std::size_t i = 0; i < n; ++i) {
      const Point p = ToPoint(points[i]);
      const double sum = p.x + p.y;
      const double difference = p.y - p.x;
      const double reach[8] = {p.x, sum, p.y, difference, -p.x, -sum, -p.y, -difference};
      for (int k = 0; k < 8; ++k) {
        if (reach[k] > extent[k]) {
          extent[k] = reach[k];
          extreme[k] = i;
        }
      }
    }
    for (int k = 0; k < 8; ++k) corners[k] = ToPoint(points[extreme[k]]);
  }

  /// The side from a to b, moved inwards by the margin; none where a is b. False when coordinates are not finite.
  bool AppendSide(Point a, Point b, double margin) {
    const Point edge = b - a;
    const double length = std::sqrt(SquareLength(edge));
    if (!std::isfinite(length)) return false;
    if (!(length > 0)) return true;
    m_normalX[m_count] = -edge.y / length;
    m_normalY[m_count] = edge.x / length;
    m_offset[m_count] = m_normalX[m_count] * a.x + m_normalY[m_count] * a.y + margin;
    ++m_count;
    return true;
  }

  double m_normalX[8];
  double m_normalY[8];
  double m_offset[8];
  int m_count = 0;
};

/// Points that were kept, by cells of the plane: answers in constant time whether one of them coincides with a point.
template <qxReal T>
class CellIndex {
 public:
  /// False when there is no memory.
  bool Prepare(std::size_t capacity) {
    if (m_first != nullptr) return true;
    m_mask = std::bit_ceil(capacity) - 1;
    m_first = qxMakeBlock<std::size_t>(m_mask + 1);
    m_next = qxMakeBlock<std::size_t>(capacity);
    if (m_first == nullptr || m_next == nullptr) return false;
    std::fill_n(m_first.get(), m_mask + 1, none);
    return true;
  }

  /// Takes in what was kept since the last call, from @p first on.
  void Follow(std::size_t first, std::size_t count, const Site<T>* kept) {
    for (m_count = std::max(m_count, first); m_count < count; ++m_count) {
      const std::size_t slot = Slot(Cell(kept[m_count].x), Cell(kept[m_count].y));
      m_next[m_count] = m_first[slot];
      m_first[slot] = m_count;
    }
  }

  [[nodiscard]] bool Contains(const Site<T>& site, const Site<T>* kept) const {
    const Point p = ToPoint(site);
    for (int dy = -1; dy <= 1; ++dy) {
      for (int dx = -1; dx <= 1; ++dx) {
        for (std::size_t i = m_first[Slot(Cell(site.x) + dx, Cell(site.y) + dy)]; i != none; i = m_next[i]) {
          if (DoCoincide(ToPoint(kept[i]), p)) return true;
        }
      }
    }
    return false;
  }

 private:
  static constexpr std::size_t none = std::numeric_limits<std::size_t>::max();

  /// Cells are twice as wide as the closeness, so that rounding never parts neighbours by more than one cell.
  static double Cell(T coordinate) { return std::floor(static_cast<double>(coordinate) / (2 * closeness)); }

  [[nodiscard]] std::size_t Slot(double cellX, double cellY) const {
    const std::uint64_t x = std::bit_cast<std::uint64_t>(cellX + 0.0);  // no negative zero
    const std::uint64_t y = std::bit_cast<std::uint64_t>(cellY + 0.0);
    std::uint64_t hash = (x * 0x9E3779B97F4A7C15u) ^ (std::rotl(y, 32) * 0xC2B2AE3D27D4EB4Fu);
    hash ^= hash >> 32;
    hash *= 0x9E3779B97F4A7C15u;
    return static_cast<std::size_t>(hash >> 20) & m_mask;
  }

  std::size_t m_mask = 0;
  std::size_t m_count = 0;
  qxBlock<std::size_t> m_first;
  qxBlock<std::size_t> m_next;
};

/// Drops the points that coincide with a kept one, the start of the hull being kept before all others. The points are
/// in ascending order of y and stay so.
/// @return the number of kept points; 0 when there is no memory.
template <qxReal T>
std::size_t DropCoincident(std::size_t count, Site<T>* sites, std::size_t start) {
  constexpr std::size_t shortWindow = 64;
  CellIndex<T> index;
  const Point startPoint = ToPoint(sites[start]);
  std::size_t kept = 0;
  std::size_t first = 0;  // of the kept points that are not too low to coincide
  for (std::size_t i = 0; i < count; ++i) {
    const Site<T> site = sites[i];
    const Point p = ToPoint(site);
    if (i != start) {
      if (DoCoincide(startPoint, p)) continue;
      while (first < kept && ToPoint(sites[first]).y < p.y - closeness) ++first;
      bool isKnown = false;
      if (kept - first <= shortWindow) {
        for (std::size_t k = first; k < kept && !isKnown; ++k) isKnown = DoCoincide(ToPoint(sites[k]), p);
      } else {
        if (!index.Prepare(count)) return 0;
        index.Follow(first, kept, sites);
        isKnown = index.Contains(site, sites);
      }
      if (isKnown) continue;
    }
    sites[kept++] = site;
  }
  return kept;
}

/// True when, seen from the origin, @p near lies before @p far in a direction of the same slope: dy / dx within the
/// closeness, or both vertical.
bool LiesBefore(Point near, Point far) {
  if (!(SquareLength(near) < SquareLength(far) && Dot(near, far) > 0)) return false;
  return std::abs(Cross(near, far)) <= closeness * std::abs(near.x * far.x) ||
         (std::abs(near.x) <= closeness && std::abs(far.x) <= closeness);
}

/// Index of the leftmost point of the lowest run: where a hull starts. The lowest point comes first, and the others are
/// in the order of a hull or ascend in y, so that the run is at both ends.
template <typename Vertex>
std::size_t FindStart(std::size_t size, const Vertex* points) {
  const double end = ToPoint(points[0]).y + closeness;
  const auto isInRun = [&](std::size_t i) { return ToPoint(points[i]).y < end; };
  std::size_t start = 0;
  const auto include = [&](std::size_t i) {
    if (ToPoint(points[i]).x < ToPoint(points[start]).x) start = i;
  };
  for (std::size_t i = 1; i < size && isInRun(i); ++i) include(i);
  for (std::size_t i = size; i-- > 1 && isInRun(i);) include(i);
  return start;
}

/// Writes the vertices of a strict hull from @p start on, without those that give way to a farther one.
/// @return the number of vertices.
template <qxReal T>
std::size_t WriteHull(std::size_t size, const Site<T>* strict, std::size_t start, CQXVector2<T>* hull) {
  const auto position = [=](std::size_t i) { return start + i < size ? start + i : start + i - size; };
  const auto at = [&](std::size_t i) { return ToPoint(strict[position(i)]); };
  std::size_t written = 0;
  for (std::size_t current = 0; current < size;) {
    const Site<T>& site = strict[position(current)];
    hull[written++] = CQXVector2<T>(site.x, site.y);
    const Point origin = at(current);
    std::size_t winner = current + 1;
    std::size_t deviant = current + 1;  // the vertex farthest from the line to the next one; it only moves forward
    while (winner < size) {
      const Point next = at(winner + 1) - origin;
      if (!(SquareLength(at(winner) - origin) < SquareLength(next) && LiesBefore(at(current + 1) - origin, next)))
        break;
      const auto deviation = [&](std::size_t i) { return std::abs(Cross(next, at(i) - origin)); };
      while (deviant < winner && deviation(deviant + 1) > deviation(deviant)) ++deviant;
      if (!(deviation(deviant) <= closeness * std::sqrt(SquareLength(next)))) break;
      ++winner;
    }
    current = winner;
  }
  return written;
}

template <qxReal T>
bool IsNumber(const CQXVector2<T>& v) {
  return !std::isnan(v.X()) && !std::isnan(v.Y());
}

}  // namespace

template <qxReal T>
void CQXGeometry::BuildConvexHull(std::int32_t n, const CQXVector2<T>* points, std::int32_t& m, CQXVector2<T>* hull) {
  m = 0;
  if (n <= 0) return;
  const std::size_t given = static_cast<std::size_t>(n);
  const qxBlock<Site<T>> sites = qxMakeBlock<Site<T>>(given + 1);
  if (sites == nullptr) return;
  const Octagon octagon(given, points);
  const bool hasArea = octagon.HasArea();
  std::size_t count = 0;
  for (std::size_t i = 0; i < given; ++i) {
    sites[count] = {points[i].X(), points[i].Y()};
    if (!(hasArea && octagon.IsWellInside(ToPoint(points[i]))) && IsNumber(points[i])) ++count;
  }
  const qxBlock<Site<T>> sorted = qxMakeBlock<Site<T>>(count);
  if (count == 0 || sorted == nullptr || !SortUpwards(count, sites.get(), sorted.get())) return;
  count = DropCoincident(count, sorted.get(), FindStart(count, sorted.get()));
  if (count == 0) return;
  const std::size_t size = FindStrictHull(count, sorted.get(), sites.get());
  m = static_cast<std::int32_t>(WriteHull(size, sites.get(), FindStart(size, sites.get()), hull));
}

template <qxReal T>
std::int32_t CQXGeometry::AddPointToConvexHall(const CQXVector2<T>& point, std::int32_t& n, CQXVector2<T>* hull) {
  const CQXVector2<T> added = point;
  if (!IsNumber(added) || n == std::numeric_limits<std::int32_t>::max()) return 0;
  const Point p = ToPoint(added);
  const std::int32_t count = std::max(n, 0);
  bool isOutside = count < 3;
  for (std::int32_t i = 0; i < count; ++i) {
    const Point a = ToPoint(hull[i]);
    if (DoCoincide(a, p)) return 0;
    isOutside = isOutside || Turn(a, ToPoint(hull[i + 1 < count ? i + 1 : 0]), p) < 0;
  }
  if (!isOutside) return 0;
  // The hull of all of them, so that ties among the new edges are decided as everywhere.
  const std::size_t size = static_cast<std::size_t>(count) + 1;
  const qxBlock<CQXVector2<T>> points = qxMakeBlock<CQXVector2<T>>(2 * size);
  if (points == nullptr) return 0;
  CQXVector2<T>* const extended = points.get() + size;
  points[0] = added;
  std::copy_n(hull, count, points.get() + 1);
  std::int32_t m = 0;
  BuildConvexHull(count + 1, points.get(), m, extended);
  const bool isVertex =
      std::any_of(extended, extended + m, [&](const CQXVector2<T>& v) { return qxGeometry::AreSame(ToPoint(v), p); });
  if (!isVertex) return 0;
  std::copy_n(extended, m, hull);
  n = m;
  return 1;
}

template <qxReal T>
std::int32_t CQXGeometry::UpdateConvexHallEdge(const CQXVector2<T>& point, std::int32_t edge, std::int32_t& n,
                                               CQXVector2<T>* hull) {
  if (n < 2 || edge < 0 || edge >= n) return 0;
  const CQXVector2<T> added = point;
  const Point p = ToPoint(added);
  const Point a = ToPoint(hull[edge]);
  const Point b = ToPoint(hull[edge + 1 < n ? edge + 1 : 0]);
  if (!(Turn(a, b, p) < 0)) return 0;
  if (LiesBefore(p - a, b - a) && std::abs(Cross(p - a, b - a)) <= closeness * std::sqrt(SquareLength(b - a))) return 0;
  // With the end of the edge in front, the vertices to take out are the first ones and the last ones.
  std::rotate(hull, hull + (edge + 1) % n, hull + n);
  std::int32_t first = 0;
  std::int32_t last = n - 1;
  while (last - first > 1 && Turn(p, ToPoint(hull[first]), ToPoint(hull[first + 1])) <= 0) ++first;
  while (last - first > 1 && Turn(ToPoint(hull[last - 1]), ToPoint(hull[last]), p) <= 0) --last;
  std::copy(hull + first, hull + last + 1, hull);
  n = last - first + 1;
  hull[n++] = added;
  const auto isLower = [](const CQXVector2<T>& v, const CQXVector2<T>& w) { return v.Y() < w.Y(); };
  std::rotate(hull, std::min_element(hull, hull + n, isLower), hull + n);
  std::rotate(hull, hull + FindStart(static_cast<std::size_t>(n), hull), hull + n);
  return 1;
}

template <qxReal T>
void CQXGeometry::UniteConvexPolygons(std::int32_t n, const CQXVector2<T>* a, std::int32_t m, const CQXVector2<T>* b,
                                      std::int32_t& k, CQXVector2<T>* result) {
  const std::int32_t countA = std::max(n, 0);
  const std::int32_t countB = std::max(m, 0);
  k = 0;
  if (countA > std::numeric_limits<std::int32_t>::max() - countB) return;
  const qxBlock<CQXVector2<T>> both =
      qxMakeBlock<CQXVector2<T>>(static_cast<std::size_t>(countA) + static_cast<std::size_t>(countB));
  if (both == nullptr) return;
  std::copy_n(a, countA, both.get());
  std::copy_n(b, countB, both.get() + countA);
  BuildConvexHull(countA + countB, both.get(), k, result);
}

#define QX_INSTANTIATE(T)                                                                                        \
  template void CQXGeometry::BuildConvexHull(std::int32_t, const CQXVector2<T>*, std::int32_t&, CQXVector2<T>*); \
  template std::int32_t CQXGeometry::AddPointToConvexHall(const CQXVector2<T>&, std::int32_t&, CQXVector2<T>*);  \
  template std::int32_t CQXGeometry::UpdateConvexHallEdge(const CQXVector2<T>&, std::int32_t, std::int32_t&,     \
                                                          CQXVector2<T>*);                                       \
  template void CQXGeometry::UniteConvexPolygons(std::int32_t, const CQXVector2<T>*, std::int32_t,               \
                                                 const CQXVector2<T>*, std::int32_t&, CQXVector2<T>*);
QX_FOR_FLOAT_AND_DOUBLE(QX_INSTANTIATE)
#undef QX_INSTANTIATE
