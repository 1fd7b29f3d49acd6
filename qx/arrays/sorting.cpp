#include <qx/arrays/sorting.h>
#include <qx/kernels/quicksort.h>
#include <qx/kernels/sorting_kernels.h>
#include <qx/vectors/vector2.h>

#include <algorithm>
#include <cmath>
#include <concepts>
#include <cstddef>
#include <functional>
#include <utility>

namespace {

using qxKernels::Magnitude;

// Keys: what of an element is compared.

constexpr auto valueKey = []<typename T>(T x) noexcept { return x; };
constexpr auto magnitudeKey = []<typename T>(T x) noexcept { return Magnitude(x); };
constexpr auto recordValueKey = [](const auto& record) noexcept { return record.value; };
constexpr auto recordMagnitudeKey = [](const auto& record) noexcept { return record.absolute; };

/// One step over indices of the interface.
template <typename Element, typename Key, typename IsBefore>
void Partition(Element* elements, std::int32_t& i, std::int32_t& j, Key key, IsBefore isBefore) noexcept {
  std::ptrdiff_t up = i;
  std::ptrdiff_t down = j;
  qxKernels::Partition(elements, up, down, key, isBefore);
  i = static_cast<std::int32_t>(up);
  j = static_cast<std::int32_t>(down);
}

template <typename Element, typename Key>
void Quicksort(Element* elements, std::ptrdiff_t first, std::ptrdiff_t last, Key key, std::int32_t ascending) noexcept {
  if (ascending != 0) {
    qxKernels::Quicksort(elements, first, last, key, std::less<>());
  } else {
    qxKernels::Quicksort(elements, first, last, key, std::greater<>());
  }
}

template <typename T>
void SortRange(T* values, std::int32_t first, std::int32_t last, std::int32_t ascending,
               std::int32_t absolute) noexcept {
  if (values == nullptr || first >= last) return;
  const std::size_t count = static_cast<std::size_t>(std::int64_t{last} - first + 1);
  qxKernels::SortValues(count, values + first, ascending != 0, absolute != 0);
}

/// Nothing is written where memory is refused.
template <typename T>
void SortWithIndices(std::int32_t n, const T* source, T* target, std::int32_t* indices, std::int32_t ascending,
                     std::int32_t absolute) {
  if (source == nullptr || n <= 0) return;
  static_cast<void>(
      qxKernels::SortWithIndices(qxElementCount(n), source, target, indices, ascending != 0, absolute != 0));
}

/// Whether low + tolerance < high, exactly; the tolerance may be negative.
template <std::integral V, std::integral T>
constexpr bool IsBelowByMore(V low, V high, T tolerance) noexcept {
  using Unsigned = std::make_unsigned_t<V>;
  const auto difference = [](V larger, V smaller) {
    return static_cast<Unsigned>(static_cast<Unsigned>(larger) - static_cast<Unsigned>(smaller));
  };
  if (tolerance >= 0) return low < high && difference(high, low) > static_cast<Unsigned>(tolerance);
  return low <= high || difference(low, high) < Magnitude(tolerance);
}

template <typename T, typename Key>
std::int32_t AreNeighboursSorted(const T* array, std::ptrdiff_t first, std::ptrdiff_t last, T tolerance,
                                 std::int32_t ascending, Key key) noexcept {
  for (std::ptrdiff_t i = first; i < last; ++i) {
    const auto a = key(array[i]);
    const auto b = key(array[i + 1]);
    if constexpr (std::floating_point<T>) {
      if (ascending != 0 ? b + tolerance < a : a < b - tolerance) return 0;
    } else {
      if (ascending != 0 ? IsBelowByMore(b, a, tolerance) : IsBelowByMore(a, b, tolerance)) return 0;
    }
  }
  return 1;
}

template <typename T>
std::int32_t IsRangeSorted(const T* array, std::ptrdiff_t first, std::ptrdiff_t last, T tolerance,
                           std::int32_t ascending, std::int32_t absolute) noexcept {
  return absolute != 0 ? AreNeighboursSorted(array, first, last, tolerance, ascending, magnitudeKey)
                       : AreNeighboursSorted(array, first, last, tolerance, ascending, valueKey);
}

template <typename K, typename T>
bool AreKeysWithin(K a, K b, T tolerance) noexcept {
  if (a == b) return true;
  if constexpr (std::floating_point<K>) {
    return std::abs(a - b) <= tolerance;
  } else {
    return !IsBelowByMore(a, b, tolerance) && !IsBelowByMore(b, a, tolerance);
  }
}

/// The two keys of a pair.
template <typename T>
struct KeyPair {
  T first;
  T second;
};

template <typename T, typename Key>
void SortPairs(KeyPair<T>* pairs, std::ptrdiff_t n, T tolerance, std::int32_t ascending, Key key) noexcept {
  const auto firstKey = [key](const KeyPair<T>& pair) noexcept { return key(pair.first); };
  const auto secondKey = [key](const KeyPair<T>& pair) noexcept { return key(pair.second); };
  Quicksort(pairs, 0, n - 1, firstKey, ascending);
  for (std::ptrdiff_t run = 0; run < n;) {
    std::ptrdiff_t end = run + 1;
    while (end < n && AreKeysWithin(firstKey(pairs[run]), firstKey(pairs[end]), tolerance)) ++end;
    Quicksort(pairs, run, end - 1, secondKey, ascending);
    run = end;
  }
}

}  // namespace

template <typename T>
CQXSorting<T>::CQXSorting(std::int32_t n, T* array, std::int32_t inPlace, std::int32_t ascending,
                          std::int32_t absolute) {
  SetData(n, array, inPlace, ascending, absolute);
}

template <typename T>
CQXSorting<T>::CQXSorting(const CQXSorting& other) {
  *this = other;
}

template <typename T>
CQXSorting<T>::CQXSorting(CQXSorting&& other) noexcept
    : m_size(std::exchange(other.m_size, 0)),
      m_array(std::exchange(other.m_array, nullptr)),
      m_inPlace(std::exchange(other.m_inPlace, 0)),
      m_ascending(std::exchange(other.m_ascending, 0)),
      m_absolute(std::exchange(other.m_absolute, 0)),
      m_copy(std::move(other.m_copy)) {}

template <typename T>
CQXSorting<T>& CQXSorting<T>::operator=(const CQXSorting& other) {
  if (this == &other) return *this;
  if (other.m_copy != nullptr) {
    CopyFrom(other.m_size, other.m_array);
  } else {
    m_array = other.m_array;
    m_copy.reset();
  }
  m_size = other.m_size;
  m_inPlace = other.m_inPlace;
  m_ascending = other.m_ascending;
  m_absolute = other.m_absolute;
  return *this;
}

template <typename T>
void CQXSorting<T>::CopyFrom(std::int32_t n, const T* array) {
  const std::size_t count = qxElementCount(n);
  qxBlock<T> copy = qxMakeBlock<T>(count);  // before the old one goes: the source may stand in it
  if (copy != nullptr) std::copy_n(array, count, copy.get());
  m_copy = std::move(copy);
  m_array = m_copy.get();
}

template <typename T>
void CQXSorting<T>::SetArray(std::int32_t n, T* array) {
  const std::int32_t size = std::max(n, 0);
  if (m_inPlace == 0) {
    CopyFrom(size, array);
  } else {
    m_array = array;
    m_copy.reset();
  }
  m_size = size;
}

template <typename T>
void CQXSorting<T>::SetData(std::int32_t n, T* array, std::int32_t inPlace, std::int32_t ascending,
                            std::int32_t absolute) {
  m_inPlace = inPlace;
  SetSortingType(ascending, absolute);
  SetArray(n, array);
}

template <typename T>
void CQXSorting<T>::SetData(std::int32_t n, std::int32_t inPlace, std::int32_t ascending,
                            std::int32_t absolute) noexcept {
  const std::int32_t size = std::max(n, 0);
  m_size = m_copy != nullptr ? std::min(size, m_size) : size;
  m_inPlace = inPlace;
  SetSortingType(ascending, absolute);
}

template <typename T>
void CQXSorting<T>::GetData(std::int32_t& n, std::int32_t& inPlace, std::int32_t& ascending,
                            std::int32_t& absolute) const noexcept {
  n = m_size;
  inPlace = m_inPlace;
  ascending = m_ascending;
  absolute = m_absolute;
}

template <typename T>
void CQXSorting<T>::SetSortingType(std::int32_t ascending, std::int32_t absolute) noexcept {
  m_ascending = ascending;
  m_absolute = absolute;
}

template <typename T>
void CQXSorting<T>::Sort() {
  Sort(0, m_size - 1);
}

template <typename T>
void CQXSorting<T>::Sort(std::int32_t first, std::int32_t last) {
  SortRange(m_array, first, last, m_ascending, m_absolute);
}

template <typename T>
void CQXSorting<T>::Sort(T* target) {
  Sort(0, m_size - 1, target);
}

template <typename T>
void CQXSorting<T>::Sort(std::int32_t first, std::int32_t last, T* target) {
  Sort(first, last);
  if (m_array == nullptr || last < first) return;
  std::move(m_array + first, m_array + last + 1, target);
}

template <typename T>
void CQXSorting<T>::Sort(T* target, std::int32_t* indices) {
  SortWithIndices(m_size, m_array, target, indices, m_ascending, m_absolute);
}

template <typename T>
void CQXSorting<T>::SortReturnIndices(std::int32_t* indices) const {
  SortWithIndices<T>(m_size, m_array, nullptr, indices, m_ascending, m_absolute);
}

template <typename T>
std::int32_t CQXSorting<T>::IsArraySorted(std::int32_t first, std::int32_t last) const noexcept {
  return m_array == nullptr ? 1 : IsRangeSorted(m_array, first, last, T(0), m_ascending, m_absolute);
}

template <typename T>
void CQXSorting<T>::AscendingPartition(std::int32_t& i, std::int32_t& j) noexcept {
  if (m_array != nullptr) Partition(m_array, i, j, valueKey, std::less<>());
}

template <typename T>
void CQXSorting<T>::AscendingPartition(std::int32_t& i, std::int32_t& j, qxSortIndexData* records) noexcept {
  Partition(records, i, j, recordValueKey, std::less<>());
}

template <typename T>
void CQXSorting<T>::AscendingPartition(std::int32_t& i, std::int32_t& j, qxSortAbsIndexData* records) noexcept {
  Partition(records, i, j, recordMagnitudeKey, std::less<>());
}

template <typename T>
void CQXSorting<T>::DescendingPartition(std::int32_t& i, std::int32_t& j) noexcept {
  if (m_array != nullptr) Partition(m_array, i, j, valueKey, std::greater<>());
}

template <typename T>
void CQXSorting<T>::DescendingPartition(std::int32_t& i, std::int32_t& j, qxSortIndexData* records) noexcept {
  Partition(records, i, j, recordValueKey, std::greater<>());
}

template <typename T>
void CQXSorting<T>::DescendingPartition(std::int32_t& i, std::int32_t& j, qxSortAbsIndexData* records) noexcept {
  Partition(records, i, j, recordMagnitudeKey, std::greater<>());
}

template <typename T>
void qxSort(std::int32_t n, const T* source, T* target, std::int32_t ascending, std::int32_t absolute) {
  if (n > 0) qxSort(0, n - 1, n, source, target, ascending, absolute);
}

template <typename T>
void qxSort(std::int32_t n, const T* source, T* target, std::int32_t* indices, std::int32_t ascending,
            std::int32_t absolute) {
  SortWithIndices(n, source, target, indices, ascending, absolute);
}

template <typename T>
void qxSort(std::int32_t first, std::int32_t last, std::int32_t n, const T* source, T* target, std::int32_t ascending,
            std::int32_t absolute) {
  if (n <= 0) return;
  if (source != target) std::copy_n(source, n, target);
  SortRange(target, first, last, ascending, absolute);
}

template <typename T>
std::int32_t qxIsArraySorted(std::int32_t n, const T* array, qxNonDeduced<T> tolerance, std::int32_t ascending,
                             std::int32_t absolute) noexcept {
  return IsRangeSorted(array, 0, std::ptrdiff_t{n} - 1, tolerance, ascending, absolute);
}

template <typename T>
void qxSort2DArray(std::int32_t n, const T* source, T* target, qxNonDeduced<T> tolerance, std::int32_t firstKey,
                   std::int32_t ascending, std::int32_t absolute) {
  if (n <= 0) return;
  const qxBlock<KeyPair<T>> block = qxMakeBlock<KeyPair<T>>(qxElementCount(n));
  if (block == nullptr) return;
  KeyPair<T>* const pairs = block.get();
  const std::ptrdiff_t first = firstKey != 0 ? 1 : 0;
  for (std::ptrdiff_t i = 0; i < n; ++i) pairs[i] = {source[2 * i + first], source[2 * i + 1 - first]};
  if (absolute != 0) {
    SortPairs(pairs, n, tolerance, ascending, magnitudeKey);
  } else {
    SortPairs(pairs, n, tolerance, ascending, valueKey);
  }
  for (std::ptrdiff_t i = 0; i < n; ++i) {
    target[2 * i + first] = pairs[i].first;
    target[2 * i + 1 - first] = pairs[i].second;
  }
}

template <qxReal T>
void qxSort2DVectors(std::int32_t first, std::int32_t last, const CQXVector2<T>* source, CQXVector2<T>* target,
                     qxNonDeduced<T> tolerance, std::int32_t firstKey, std::int32_t ascending) {
  if (last < first) return;
  qxSort2DArray(last - first + 1, source[first].Data(), target[first].Data(), tolerance, firstKey, ascending, 0);
}

#define QX_INSTANTIATE_SORTING(T)                                                                           \
  template class CQXSorting<T>;                                                                             \
  template void qxSort(std::int32_t, const T*, T*, std::int32_t, std::int32_t);                             \
  template void qxSort(std::int32_t, const T*, T*, std::int32_t*, std::int32_t, std::int32_t);              \
  template void qxSort(std::int32_t, std::int32_t, std::int32_t, const T*, T*, std::int32_t, std::int32_t); \
  template std::int32_t qxIsArraySorted(std::int32_t, const T*, T, std::int32_t, std::int32_t) noexcept;    \
  template void qxSort2DArray(std::int32_t, const T*, T*, T, std::int32_t, std::int32_t, std::int32_t);

QX_INSTANTIATE_SORTING(std::int8_t)
QX_INSTANTIATE_SORTING(std::uint8_t)
QX_INSTANTIATE_SORTING(std::int16_t)
QX_INSTANTIATE_SORTING(std::uint16_t)
QX_INSTANTIATE_SORTING(std::int32_t)
QX_INSTANTIATE_SORTING(std::uint32_t)
QX_INSTANTIATE_SORTING(std::int64_t)
QX_INSTANTIATE_SORTING(std::uint64_t)
QX_INSTANTIATE_SORTING(float)
QX_INSTANTIATE_SORTING(double)

template void qxSort2DVectors(std::int32_t, std::int32_t, const CQXVector2<float>*, CQXVector2<float>*, float,
                              std::int32_t, std::int32_t);
template void qxSort2DVectors(std::int32_t, std::int32_t, const CQXVector2<double>*, CQXVector2<double>*, double,
                              std::int32_t, std::int32_t);
