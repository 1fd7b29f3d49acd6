#pragma once

#include <qx/foundation/api.h>
#include <qx/foundation/block.h>
#include <qx/foundation/scalar.h>

#include <concepts>
#include <cstdint>
#include <type_traits>

template <qxReal T>
class QX_API CQXVector2;

/// @file
/// Sorting of plain arrays of numbers: signed and unsigned integers of 8, 16, 32 and 64 bits, float and double.
///
/// Two flags choose the order. Ascending flag: 0 for descending order, anything else for ascending. Absolute flag: 0 to
/// compare values, anything else to compare absolute values; the absolute value of the smallest signed integer is the
/// true one, 128 for the 8 bits of -128.
///
/// The method is quicksort about the middle element (C. A. R. Hoare, Quicksort, The Computer Journal 5, 1962). It is
/// not stable: the order of equal keys is fixed by the exchanges alone, the same on every machine, and the indices of
/// equal elements may come out in any order. Cost: near n log n for random and for sorted input; input made to defeat
/// the middle pivot costs n^2 where the exchanges show in the result (absolute values, indices, pairs, floats with a
/// negative zero or a not-a-number), n log n elsewhere. The depth of recursion is below 32. Floats that are not numbers
/// are ordered with nothing: the sort ends and keeps every element, and what stands around them is in no useful order.

/// Sorts an array, its own copy of an array, or only finds the order of the elements.
///
/// An object sorts its own array: two objects on one shared array must not run at once.
template <typename T>
class QX_API CQXSorting {
 public:
  /// A value with its index in the unsorted array.
  struct qxSortIndexData {
    T value;
    std::int32_t index;
  };

  /// A value with its absolute value, in the unsigned type for integers, and its index in the unsorted array.
  struct qxSortAbsIndexData {
    using Magnitude = typename std::conditional_t<std::integral<T>, std::make_unsigned<T>, std::type_identity<T>>::type;

    T value;
    Magnitude absolute;
    std::int32_t index;
  };

  /// Empty object: no array, and all flags 0 (private copy, descending, by value).
  CQXSorting() noexcept = default;

  /// Sets the array and all flags; see SetData().
  CQXSorting(std::int32_t n, T* array, std::int32_t inPlace, std::int32_t ascending, std::int32_t absolute);

  /// Copies a private array, shares an array of the caller.
  CQXSorting(const CQXSorting& other);
  /// Takes the array over and leaves @p other empty.
  CQXSorting(CQXSorting&& other) noexcept;
  /// Copies a private array, shares an array of the caller.
  CQXSorting& operator=(const CQXSorting& other);
  ~CQXSorting() = default;

  /// Sets a new array under the present flags: copied when the in-place flag is 0, used as it stands otherwise.
  ///
  /// The private copy of before is freed: an array that is used as it stands must not lie in it.
  /// @param n number of elements; below 0 counts as 0
  void SetArray(std::int32_t n, T* array);

  /// Sets the array and all flags.
  ///
  /// When memory for the private copy is refused without an exception, the object holds no array and sorts nothing.
  /// @param n number of elements; below 0 counts as 0
  /// @param array elements
  /// @param inPlace 0: the object sorts a private copy and leaves @p array alone; otherwise it sorts @p array itself
  /// @param ascending 0: descending order; otherwise ascending
  /// @param absolute 0: compare values; otherwise absolute values
  void SetData(std::int32_t n, T* array, std::int32_t inPlace, std::int32_t ascending, std::int32_t absolute);

  /// Sets the number of elements and the flags, and keeps the array. A private copy stays private, whatever
  /// @p inPlace says, and does not grow: a larger @p n leaves its size as it is.
  void SetData(std::int32_t n, std::int32_t inPlace, std::int32_t ascending, std::int32_t absolute) noexcept;

  /// Number of elements and flags.
  void GetData(std::int32_t& n, std::int32_t& inPlace, std::int32_t& ascending, std::int32_t& absolute) const noexcept;

  /// Sets the flags of the order, and keeps the array.
  void SetSortingType(std::int32_t ascending, std::int32_t absolute) noexcept;

  /// The array worked on: the private copy or the caller's array; null for an empty object.
  [[nodiscard]] T* GetArray() noexcept { return m_array; }
  [[nodiscard]] const T* GetArray() const noexcept { return m_array; }

  /// Sorts the whole array.
  void Sort();
  /// Sorts the elements from @p first to @p last, both included; nothing happens when first >= last. The indices are
  /// taken as given.
  void Sort(std::int32_t first, std::int32_t last);
  /// Sorts the whole array and copies it to @p target.
  void Sort(T* target);
  /// Sorts the elements from @p first to @p last and copies these last - first + 1 elements to the start of @p target.
  void Sort(std::int32_t first, std::int32_t last, T* target);
  /// Writes the sorted elements to @p target and the index that each had before to @p indices.
  ///
  /// The array stays as it is, unless @p target is the array: that sorts it in place. Where memory for the indices is
  /// refused without an exception, nothing is written.
  void Sort(T* target, std::int32_t* indices);
  /// Writes the sorted order as indices into the array, which stays as it is.
  void SortReturnIndices(std::int32_t* indices) const;

  /// 1 when the elements from @p first to @p last are in the order of the present flags, 0 otherwise. Equal neighbours
  /// are in order, and so is a range of one element or none.
  [[nodiscard]] std::int32_t IsArraySorted(std::int32_t first, std::int32_t last) const noexcept;

  /// One partition step of ascending order by value over the elements from @p i to @p j, about the middle element.
  ///
  /// Afterwards j < i, no element up to @p j is above the pivot, no element from @p i on is below it, and an element
  /// between the two is the pivot.
  void AscendingPartition(std::int32_t& i, std::int32_t& j) noexcept;
  /// The same over records, by value.
  static void AscendingPartition(std::int32_t& i, std::int32_t& j, qxSortIndexData* records) noexcept;
  /// The same over records, by absolute value.
  static void AscendingPartition(std::int32_t& i, std::int32_t& j, qxSortAbsIndexData* records) noexcept;

  /// One partition step of descending order by value: afterwards no element up to @p j is below the pivot, and none
  /// from @p i on is above it.
  void DescendingPartition(std::int32_t& i, std::int32_t& j) noexcept;
  /// The same over records, by value.
  static void DescendingPartition(std::int32_t& i, std::int32_t& j, qxSortIndexData* records) noexcept;
  /// The same over records, by absolute value.
  static void DescendingPartition(std::int32_t& i, std::int32_t& j, qxSortAbsIndexData* records) noexcept;

 private:
  void CopyFrom(std::int32_t n, const T* array);

  std::int32_t m_size = 0;
  T* m_array = nullptr;
  std::int32_t m_inPlace = 0;
  std::int32_t m_ascending = 0;
  std::int32_t m_absolute = 0;
  qxBlock<T> m_copy;  ///< the private copy; null when the array is the caller's
};

/// Copies @p n elements of @p source to @p target, which may be the same array, and sorts them there.
template <typename T>
QX_API void qxSort(std::int32_t n, const T* source, T* target, std::int32_t ascending, std::int32_t absolute);

/// Writes the sorted elements of @p source to @p target, which may be the same array, and the index that each had in
/// @p source to @p indices. Nothing is written where memory for the indices is refused without an exception.
template <typename T>
QX_API void qxSort(std::int32_t n, const T* source, T* target, std::int32_t* indices, std::int32_t ascending,
                   std::int32_t absolute);

/// Copies @p n elements of @p source to @p target, which may be the same array, and sorts there the elements from
/// @p first to @p last, both included. The indices are taken as given.
template <typename T>
QX_API void qxSort(std::int32_t first, std::int32_t last, std::int32_t n, const T* source, T* target,
                   std::int32_t ascending, std::int32_t absolute);

/// 1 when an array is in order, 0 otherwise; an array of one element or none is.
///
/// Descending order fails at a neighbour pair with a[i] < a[i + 1] - tolerance, ascending order at one with
/// a[i + 1] + tolerance < a[i]; with the absolute flag the same tests run on absolute values. For integers sum and
/// difference are exact.
/// @param tolerance how far a neighbour may step back; a negative one asks for a step forward of more than its size
template <typename T>
[[nodiscard]] QX_API std::int32_t qxIsArraySorted(std::int32_t n, const T* array, qxNonDeduced<T> tolerance,
                                                  std::int32_t ascending, std::int32_t absolute) noexcept;

/// Sorts pairs by a first and a second key.
///
/// The pairs are sorted by the first key. From the start on, the pairs whose first key is within @p tolerance of the
/// first one's, bound included, form a run; then the next run begins. Each run is sorted by the second key. Both keys
/// follow the same order. Nothing is written where work memory is refused without an exception.
/// @param n number of pairs
/// @param source 2 n numbers, the two components of a pair side by side
/// @param target room for 2 n numbers; may be @p source
/// @param tolerance bound of the difference of first keys in a run; 0 for equal keys
/// @param firstKey 0: the first component of a pair is the first key; otherwise the second is
/// @param ascending 0: descending order; otherwise ascending
/// @param absolute 0: compare values; otherwise absolute values, in the runs too
template <typename T>
QX_API void qxSort2DArray(std::int32_t n, const T* source, T* target, qxNonDeduced<T> tolerance, std::int32_t firstKey,
                          std::int32_t ascending, std::int32_t absolute);

/// Sorts the vectors from @p first to @p last, both included, by a first and a second key as qxSort2DArray() does, by
/// value. They come to the same places of @p target, which may be @p source; the rest of it is not touched.
/// @param tolerance bound of the difference of first keys in a run; 0 for equal keys
/// @param firstKey 0: x is the first key; otherwise y
/// @param ascending 0: descending order; otherwise ascending
template <qxReal T>
QX_API void qxSort2DVectors(std::int32_t first, std::int32_t last, const CQXVector2<T>* source, CQXVector2<T>* target,
                            qxNonDeduced<T> tolerance, std::int32_t firstKey, std::int32_t ascending);

extern template class QX_API CQXSorting<std::int8_t>;
extern template class QX_API CQXSorting<std::uint8_t>;
extern template class QX_API CQXSorting<std::int16_t>;
extern template class QX_API CQXSorting<std::uint16_t>;
extern template class QX_API CQXSorting<std::int32_t>;
extern template class QX_API CQXSorting<std::uint32_t>;
extern template class QX_API CQXSorting<std::int64_t>;
extern template class QX_API CQXSorting<std::uint64_t>;
extern template class QX_API CQXSorting<float>;
extern template class QX_API CQXSorting<double>;
