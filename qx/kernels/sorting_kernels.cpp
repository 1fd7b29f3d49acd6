#include <qx/foundation/block.h>
#include <qx/kernels/quicksort.h>
#include <qx/kernels/sorting_kernels.h>

#include <algorithm>
#include <bit>
#include <cmath>
#include <functional>

namespace qxKernels {

namespace {

/// Below this number of elements a sort by insertion is faster.
constexpr std::ptrdiff_t shortLength = 24;

template <typename T>
struct IndexedValue {
  T value;
  std::int32_t index;
};

template <typename T>
struct IndexedMagnitude {
  T value;
  decltype(Magnitude(T())) magnitude;
  std::int32_t index;
};

/// Calls sort(order), which is std::less or std::greater.
template <typename Sort>
void WithOrder(bool isAscending, Sort sort) {
  if (isAscending) {
    sort(std::less<>());
  } else {
    sort(std::greater<>());
  }
}

/// Whether elements that compare equal are the same, so that every way of sorting gives one result: no not-a-numbers
/// and no zero with a sign.
template <typename T>
bool IsOrderUnique(std::size_t count, const T* values) noexcept {
  if constexpr (std::floating_point<T>) {
    std::int32_t isOther = 0;
    for (std::size_t i = 0; i < count; ++i) {
      isOther |=
          std::int32_t{values[i] != values[i]} | (std::int32_t{values[i] == 0} & std::int32_t{std::signbit(values[i])});
    }
    return isOther == 0;
  }
  return true;
}

template <typename T, typename IsBefore>
void SortByInsertion(T* values, std::ptrdiff_t first, std::ptrdiff_t last, IsBefore isBefore) noexcept {
  for (std::ptrdiff_t i = first + 1; i <= last; ++i) {
    const T value = values[i];
    std::ptrdiff_t k = i;
    for (; k > first && isBefore(value, values[k - 1]); --k) values[k] = values[k - 1];
    values[k] = value;
  }
}

/// Any way of sorting: the same steps, but short ranges by insertion, and the library's sort where the middle element
/// was a bad pivot too often.
template <typename T, typename IsBefore>
void SortUnique(T* values, std::ptrdiff_t first, std::ptrdiff_t last, std::int32_t stepsNb,
                IsBefore isBefore) noexcept {
  while (last - first >= shortLength) {
    if (stepsNb-- == 0) return std::sort(values + first, values + last + 1, isBefore);
    std::ptrdiff_t i = first;
    std::ptrdiff_t j = last;
    Partition(values, i, j, std::identity(), isBefore);
    SortUnique(values, first, j, stepsNb, isBefore);
    first = i;
  }
  SortByInsertion(values, first, last, isBefore);
}

template <typename T, typename Record, typename MakeRecord, typename Key>
bool SortRecords(std::size_t count, const T* source, T* target, std::int32_t* indices, bool isAscending,
                 MakeRecord makeRecord, Key key) {
  const qxBlock<Record> block = qxMakeBlock<Record>(count);
  if (block == nullptr) return false;
  Record* const records = block.get();
  for (std::size_t i = 0; i < count; ++i) records[i] = makeRecord(source[i], static_cast<std::int32_t>(i));
  const std::ptrdiff_t last = static_cast<std::ptrdiff_t>(count) - 1;
  WithOrder(isAscending, [=](auto isBefore) { Quicksort(records, 0, last, key, isBefore); });
  for (std::size_t i = 0; target != nullptr && i < count; ++i) target[i] = records[i].value;
  for (std::size_t i = 0; i < count; ++i) indices[i] = records[i].index;
  return true;
}

}  // namespace

template <typename T>
void SortValues(std::size_t count, T* values, bool isAscending, bool isAbsolute) noexcept {
  const std::ptrdiff_t last = static_cast<std::ptrdiff_t>(count) - 1;
  WithOrder(isAscending, [=](auto isBefore) {
    if (isAbsolute && std::is_signed_v<T>) {
      Quicksort(values, 0, last, Magnitude<T>, isBefore);
    } else if (IsOrderUnique(count, values)) {
      SortUnique(values, 0, last, 2 * static_cast<std::int32_t>(std::bit_width(count)), isBefore);
    } else {
      Quicksort(values, 0, last, std::identity(), isBefore);
    }
  });
}

template <typename T>
bool SortWithIndices(std::size_t count, const T* source, T* target, std::int32_t* indices, bool isAscending,
                     bool isAbsolute) {
  if (isAbsolute && std::is_signed_v<T>) {
    using Record = IndexedMagnitude<T>;
    return SortRecords<T, Record>(
        count, source, target, indices, isAscending,
        [](T value, std::int32_t i) {
          return Record{value, Magnitude(value), i};
        },
        [](const Record& record) { return record.magnitude; });
  }
  using Record = IndexedValue<T>;
  return SortRecords<T, Record>(
      count, source, target, indices, isAscending,
      [](T value, std::int32_t i) {
        return Record{value, i};
      },
      [](const Record& record) { return record.value; });
}

#define QX_INSTANTIATE(T)                                            \
  template void SortValues<T>(std::size_t, T*, bool, bool) noexcept; \
  template bool SortWithIndices<T>(std::size_t, const T*, T*, std::int32_t*, bool, bool);

QX_INSTANTIATE(std::int8_t)
QX_INSTANTIATE(std::uint8_t)
QX_INSTANTIATE(std::int16_t)
QX_INSTANTIATE(std::uint16_t)
QX_INSTANTIATE(std::int32_t)
QX_INSTANTIATE(std::uint32_t)
QX_INSTANTIATE(std::int64_t)
QX_INSTANTIATE(std::uint64_t)
QX_INSTANTIATE(float)
QX_INSTANTIATE(double)
#undef QX_INSTANTIATE

}  // namespace qxKernels
