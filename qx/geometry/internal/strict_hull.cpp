#include <qx/foundation/block.h>
#include <qx/foundation/internal/instantiate.h>
#include <qx/geometry/internal/strict_hull.h>

#include <algorithm>

namespace qxGeometry {

template <qxReal T>
bool SortUpwards(std::size_t count, const Site<T>* sites, Site<T>* sorted) {
  constexpr std::size_t bucketSize = 4;
  const auto isBelow = [](const Site<T>& a, const Site<T>& b) { return a.y < b.y || (a.y == b.y && a.x < b.x); };
  double low = static_cast<double>(sites[0].y);
  double high = low;
  for (std::size_t i = 1; i < count; ++i) {
    low = std::min(low, static_cast<double>(sites[i].y));
    high = std::max(high, static_cast<double>(sites[i].y));
  }
  const double height = high - low;
  const double scale = static_cast<double>(count / bucketSize) / height;
  // One bucket where all are in one row, or coordinates are not finite.
  const std::size_t buckets = std::isfinite(height) && std::isfinite(scale) ? count / bucketSize + 1 : 1;
  const auto bucketOf = [&](const Site<T>& site) {
    if (buckets == 1) return std::size_t{0};
    return std::min(buckets - 1, static_cast<std::size_t>((static_cast<double>(site.y) - low) * scale));
  };
  const qxBlock<std::size_t> ends = qxMakeBlock<std::size_t>(buckets + 1);
  if (ends == nullptr) return false;
  std::fill_n(ends.get(), buckets + 1, std::size_t{0});
  for (std::size_t i = 0; i < count; ++i) ++ends[bucketOf(sites[i]) + 1];
  for (std::size_t k = 1; k <= buckets; ++k) ends[k] += ends[k - 1];
  for (std::size_t i = 0; i < count; ++i) sorted[ends[bucketOf(sites[i])]++] = sites[i];
  for (std::size_t k = 0, start = 0; k < buckets; start = ends[k], ++k) {
    if (ends[k] - start > 1) std::sort(sorted + start, sorted + ends[k], isBelow);
  }
  return true;
}

template <qxReal T>
std::size_t FindStrictHull(std::size_t count, const Site<T>* sites, Site<T>* hull) {
  std::size_t size = 0;
  const auto push = [&](const Site<T>& site, std::size_t floor) {
    while (size > floor && Turn(ToPoint(hull[size - 2]), ToPoint(hull[size - 1]), ToPoint(site)) <= 0) --size;
    if (size <= count) hull[size++] = site;  // turns that are not numbers take nothing out
  };
  for (std::size_t i = 0; i < count; ++i) push(sites[i], 1);
  const std::size_t right = size;
  for (std::size_t i = count - 1; i-- > 0;) push(sites[i], right);
  return size > 1 ? size - 1 : size;  // the first point came again
}

#define QX_INSTANTIATE(T)                                           \
  template bool SortUpwards(std::size_t, const Site<T>*, Site<T>*); \
  template std::size_t FindStrictHull(std::size_t, const Site<T>*, Site<T>*);
QX_FOR_FLOAT_AND_DOUBLE(QX_INSTANTIATE)
#undef QX_INSTANTIATE

}  // namespace qxGeometry
