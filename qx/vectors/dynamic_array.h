#pragma once

#include <qx/foundation/api.h>
#include <qx/foundation/block.h>
#include <qx/foundation/complex.h>

#include <concepts>
#include <cstddef>
#include <cstdint>
#include <utility>

/// What the run-time-sized vectors and matrices share: one owned block of rows x columns elements and element-wise
/// arithmetic, for std::int32_t, float, double, CQXComplex<float> and CQXComplex<double>. A vector is one column.
///
/// Assignment never changes a size: the left side takes the smaller of the two numbers of elements. Only an array that
/// was moved from takes sizes and block of what is next assigned to it, so that `std::swap`, `std::sort`,
/// `std::rotate` and `insert` of a container lose nothing, whatever the sizes. What assigns over an element that was
/// not moved from keeps that element's size: `erase` from a container of unequal sizes does.
///
/// In every operation of two arrays the sizes come from the left one; a shorter right one counts as having zeros at its
/// end. Copies of complex elements go through the assignment of CQXComplex, which keeps a close old value; results of
/// arithmetic are exact. Integers wrap around on overflow.
///
/// Distinct arrays may be used from different threads.
template <typename T>
class QX_API CQXDynamicArray {
 public:
  /// Element type.
  using Element = T;

  /// The classes on top assign by their own rules.
  CQXDynamicArray& operator=(const CQXDynamicArray&) = delete;

  /// Element @p i of the block, of a matrix by rows. Indices count from 0 and are not tested.
  [[nodiscard]] T& operator[](std::int32_t i) noexcept { return Data()[i]; }
  [[nodiscard]] const T& operator[](std::int32_t i) const noexcept { return Data()[i]; }

  /// The block, of a matrix by rows; null when there are no elements and where memory was refused. It lives until the
  /// array goes or takes another one.
  [[nodiscard]] T* Data() noexcept { return m_data.get(); }
  [[nodiscard]] const T* Data() const noexcept { return m_data.get(); }

  // The elements as a range, which a std::span takes too.

  /// The elements as a range.
  [[nodiscard]] T* begin() noexcept { return Data(); }
  /// Behind the last element.
  [[nodiscard]] T* end() noexcept { return Data() + Count(); }
  /// The elements as a range.
  [[nodiscard]] const T* begin() const noexcept { return Data(); }
  /// Behind the last element.
  [[nodiscard]] const T* end() const noexcept { return Data() + Count(); }

  /// Resets all elements to 0.
  void SetToZero() noexcept;
  /// Takes all elements from @p source, of a matrix by rows.
  void Fill(const T* source) noexcept;
  /// Copies all elements to @p target, of a matrix by rows.
  void Dump(T* target) const noexcept;

  /// Multiplies every element by @p factor.
  void Mul(T factor) noexcept;
  /// Plain division of every element, without a test of the divisor. Integers: an integer divided by 0 gives -2^31.
  /// Complex numbers: QX_OVERFLOW_VALUE in both parts for a divisor of almost zero.
  void Div(T divisor) noexcept;

  /// Exchanges blocks and sizes; no element is copied.
  template <std::derived_from<CQXDynamicArray> Array>
  friend void swap(Array& a, Array& b) noexcept {
    Array formerA(std::move(a));
    a = std::move(b);
    b = std::move(formerA);
  }

 protected:
  /// Tag of the constructor that leaves numbers unset.
  struct Unset {};

  CQXDynamicArray() noexcept = default;
  /// Without a block for no elements.
  CQXDynamicArray(std::int32_t rows, std::int32_t columns, Unset);
  CQXDynamicArray(const CQXDynamicArray& other);
  /// Takes the block over; @p other counts as moved from.
  CQXDynamicArray(CQXDynamicArray&& other) noexcept;

  /// Number of elements that the block holds: none when memory was refused.
  [[nodiscard]] std::size_t Count() const noexcept { return m_data != nullptr ? qxElementCount(m_rows, m_columns) : 0; }
  /// Number of elements that both arrays hold.
  [[nodiscard]] std::size_t CountWith(const CQXDynamicArray& other) const noexcept {
    return Count() < other.Count() ? Count() : other.Count();
  }
  [[nodiscard]] bool IsMovedFrom() const noexcept { return m_isMovedFrom; }

  void Assign(const CQXDynamicArray& other);
  void Assign(CQXDynamicArray&& other) noexcept;
  /// Makes the array rows x columns zeros. Without elements it holds a block of no bytes. When the memory is refused by
  /// an exception the array is empty.
  void Renew(std::int32_t rows, std::int32_t columns);
  /// Keeps the block and its first elements.
  void Shrink(std::int32_t rows, std::int32_t columns) noexcept;

  void AddArray(const CQXDynamicArray& other) noexcept;
  void SubtractArray(const CQXDynamicArray& other) noexcept;
  // New arrays of the sizes of this one; without elements when this or the other one has none.
  [[nodiscard]] CQXDynamicArray Sum(const CQXDynamicArray& other) const;
  [[nodiscard]] CQXDynamicArray Difference(const CQXDynamicArray& other) const;
  [[nodiscard]] CQXDynamicArray Product(const T& factor) const;
  [[nodiscard]] CQXDynamicArray Quotient(const T& divisor) const;
  [[nodiscard]] CQXDynamicArray Negation() const;
  /// True when a pair of elements differs: by more than QX_TOLERANCE; integers at all; complex numbers by a guarded
  /// distance above zero, which needs some 3.16e-5 (float: 3.16e-4). Not a number differs from nothing.
  [[nodiscard]] bool Differs(const CQXDynamicArray& other) const noexcept;

  std::int32_t m_rows = 0;
  std::int32_t m_columns = 0;

 private:
  /// An array of the same sizes, its @p count elements unset; without a block for none.
  [[nodiscard]] CQXDynamicArray Shaped(std::size_t count) const;
  /// Copies exactly the elements that lie beyond the end of a shorter operand.
  void TakeRest(const CQXDynamicArray& source, std::size_t first) noexcept;

  qxBlock<T> m_data;
  bool m_isMovedFrom = false;
};

extern template class QX_API CQXDynamicArray<std::int32_t>;
extern template class QX_API CQXDynamicArray<float>;
extern template class QX_API CQXDynamicArray<double>;
extern template class QX_API CQXDynamicArray<CQXComplex<float>>;
extern template class QX_API CQXDynamicArray<CQXComplex<double>>;
