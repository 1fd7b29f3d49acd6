#pragma once

#include <bit>
#include <cstddef>
#include <cstdint>
#include <utility>

/// @file
/// Quicksort about the middle element (C. A. R. Hoare, Quicksort, The Computer Journal 5, 1962), over elements of any
/// kind. Internal, not part of the interface.
///
/// Which elements change places is told: i goes up to the next element that does not stand before the pivot, j down to
/// the next that does not stand after it, the two are exchanged, and so on until i and j have met. Keys equal to the
/// pivot, and not-a-numbers, stop both. The exchanges show in the order of equal keys, so that they are the same here;
/// only the comparisons are made ahead, 64 elements at a time and without a branch for each (S. Edelkamp, A. Weiss,
/// BlockQuicksort, ACM Journal of Experimental Algorithmics 24, 2019).
///
/// A key is what of an element is compared: key(element). isBefore(a, b) tells of two keys whether a stands before b.

namespace qxKernels {

/// The elements of a block that stop a scan, one bit each.
template <typename Element, typename Test>
[[nodiscard]] std::uint64_t StopsOf(const Element* block, std::ptrdiff_t count, Test stops) noexcept {
  std::uint64_t bits = 0;
  std::ptrdiff_t k = 0;
  for (; k + 4 <= count; k += 4) {  // four at once: a chain of one operation an element would set the pace
    const std::uint64_t low = std::uint64_t{stops(block[k])} | std::uint64_t{stops(block[k + 1])} << 1;
    const std::uint64_t high = std::uint64_t{stops(block[k + 2])} | std::uint64_t{stops(block[k + 3])} << 1;
    bits |= (low | high << 2) << k;
  }
  for (; k < count; ++k) bits |= std::uint64_t{stops(block[k])} << k;
  return bits;
}

/// One step of quicksort over the elements i .. j, with i < j: afterwards j < i, no element up to j stands after the
/// pivot, none from i on before it, and what lies between is the pivot.
template <typename Element, typename Key, typename IsBefore>
void Partition(Element* elements, std::ptrdiff_t& i, std::ptrdiff_t& j, Key key, IsBefore isBefore) noexcept {
  constexpr std::ptrdiff_t width = 64;
  const auto pivot = key(elements[(i + j) / 2]);
  const auto stopsUp = [=](const Element& element) { return !isBefore(key(element), pivot); };
  const auto stopsDown = [=](const Element& element) { return !isBefore(pivot, key(element)); };
  const auto highest = [](std::uint64_t bits) { return width - 1 - std::countl_zero(bits); };
  while (j - i >= width) {
    const std::ptrdiff_t lower = j - i + 1 < 2 * width ? (j - i + 1) / 2 : width;
    const std::ptrdiff_t upper = j - i + 1 < 2 * width ? j - i + 1 - lower : width;
    Element* const up = elements + i;
    Element* const down = elements + j - upper + 1;
    std::uint64_t ups = StopsOf(up, lower, stopsUp);
    std::uint64_t downs = StopsOf(down, upper, stopsDown);
    for (; ups != 0 && downs != 0; ups &= ups - 1) {
      const std::ptrdiff_t last = highest(downs);
      std::swap(up[std::countr_zero(ups)], down[last]);
      downs ^= std::uint64_t{1} << last;
    }
    i += ups != 0 ? std::countr_zero(ups) : lower;
    j -= downs != 0 ? upper - 1 - highest(downs) : upper;
  }
  // The last elements are those of both scans. What lies beyond them stops the scan that comes to it.
  Element* const rest = elements + i;
  const std::ptrdiff_t count = j - i + 1;
  std::uint64_t ups = StopsOf(rest, count, stopsUp);
  std::uint64_t downs = StopsOf(rest, count, stopsDown);
  std::ptrdiff_t from = 0;
  std::ptrdiff_t to = count - 1;
  while (from <= to) {
    const std::ptrdiff_t low = ups != 0 && std::countr_zero(ups) <= to ? std::countr_zero(ups) : to + 1;
    const std::ptrdiff_t high = downs != 0 && highest(downs) >= from ? highest(downs) : from - 1;
    if (high < low) {
      from = low;
      to = high;
      break;
    }
    std::swap(rest[low], rest[high]);
    from = low + 1;
    to = high - 1;
    ups &= ups - 1;
    downs ^= std::uint64_t{1} << high;  // NOLINT(clang-analyzer-core.UndefinedBinaryOperatorResult): high >= low >= 0
  }
  j = i + to;
  i += from;
}

/// Sorts the elements first .. last. The recursion takes the smaller side, so that its depth is below 32.
template <typename Element, typename Key, typename IsBefore>
void Quicksort(Element* elements, std::ptrdiff_t first, std::ptrdiff_t last, Key key, IsBefore isBefore) noexcept {
  while (first < last) {
    std::ptrdiff_t i = first;
    std::ptrdiff_t j = last;
    Partition(elements, i, j, key, isBefore);
    if (j - first < last - i) {
      Quicksort(elements, first, j, key, isBefore);
      first = i;
    } else {
      Quicksort(elements, i, last, key, isBefore);
      last = j;
    }
  }
}

}  // namespace qxKernels
