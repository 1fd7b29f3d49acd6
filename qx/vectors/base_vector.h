#pragma once

#include <qx/foundation/api.h>
#include <qx/foundation/block.h>
#include <qx/foundation/complex.h>

#include <concepts>
#include <cstddef>
#include <cstdint>

/// Run-time-sized array with element-wise arithmetic, for std::int32_t, float, double, CQXComplex<float> and
/// CQXComplex<double>.
///
/// A vector owns one block of exactly Dim() elements. Assignment never changes the dimension: the left side takes as
/// many elements as it has, so a longer right side is cut, and a shorter one must not be given; call SetDimension()
/// first where the size has to change. In every operation of two vectors the dimension comes from the left one and the
/// right one must have at least as many elements. Indices count from 0 and are not tested.
///
/// Copies of complex elements go through the assignment of CQXComplex, which keeps a close old value; results of
/// arithmetic are exact. Integers wrap around on overflow.
///
/// Distinct vectors may be used from different threads.
template <typename T>
class QX_API CQXBaseVector {
 public:
  /// Empty vector: dimension 0 and no block.
  CQXBaseVector() noexcept = default;
  /// Vector of zeros. When memory is refused by a null, the dimension is set and the vector holds no elements: every
  /// operation but indexing then does nothing; operations with it on the right find no elements there.
  explicit CQXBaseVector(std::int32_t dimension);
  /// Every element is @p value; a literal 0 is the value 0.
  CQXBaseVector(std::int32_t dimension, T value);
  /// Copies @p dimension elements of @p source.
  template <std::same_as<T> Element>
  CQXBaseVector(std::int32_t dimension, const Element* source) : CQXBaseVector(dimension, Unset()) {
    Fill(source);
  }
  /// Deep copy.
  CQXBaseVector(const CQXBaseVector& other);
  /// Takes the block over and leaves @p other empty.
  CQXBaseVector(CQXBaseVector&& other) noexcept;

  virtual ~CQXBaseVector();

  /// Copies Dim() elements of @p other, which must have as many; the dimension stays. There is no move assignment.
  virtual CQXBaseVector& operator=(const CQXBaseVector& other);

  /// Number of elements.
  [[nodiscard]] std::int32_t Dim() const noexcept { return m_dimension; }

  /// Element @p i, from 0; the index is not tested.
  [[nodiscard]] T& operator[](std::int32_t i) noexcept { return Data()[i]; }
  [[nodiscard]] const T& operator[](std::int32_t i) const noexcept { return Data()[i]; }

  /// The block; null for an empty vector and where memory was refused. It lives until the vector goes or
  /// SetDimension().
  [[nodiscard]] T* Data() noexcept { return m_data.get(); }
  [[nodiscard]] const T* Data() const noexcept { return m_data.get(); }

  /// Resets all elements to 0.
  void SetToZero() noexcept;

  /// Takes Dim() elements of @p source.
  void Fill(const T* source) noexcept;
  /// Writes source[0 .. n-1] to the elements from @p start on, n being the smaller of @p count and Dim() - start.
  /// Nothing happens when n is not positive or @p start is negative.
  void FillPart(const T* source, std::int32_t start, std::int32_t count) noexcept;
  /// Copies all elements to @p target, an array of Dim() elements.
  void Dump(T* target) const noexcept;
  /// Copies the elements from @p start on to target[0 .. n-1], with n as in FillPart().
  void DumpPart(std::int32_t start, std::int32_t count, T* target) const noexcept;
  /// Element start + i := source[sourceStart + i] for i from 0 below @p count, in this order. Nothing is clamped: keep
  /// both ranges inside their vectors. Nothing happens when @p count is not positive.
  void ReplacePart(std::int32_t start, std::int32_t sourceStart, std::int32_t count,
                   const CQXBaseVector& source) noexcept;

  /// Makes the vector @p newDimension zeros. Nothing is preserved, also when the dimension stays the same. When the
  /// memory is refused by an exception the vector is empty.
  void SetDimension(std::int32_t newDimension);

  /// Adds @p v, element by element.
  void Add(const CQXBaseVector& v) noexcept;
  /// Subtracts @p v, element by element.
  void Sub(const CQXBaseVector& v) noexcept;
  /// Multiplies every element by @p factor.
  void Mul(T factor) noexcept;
  /// Plain division of every element, without a test of the divisor. Integers: an integer divided by 0 gives -2^31.
  /// Complex numbers: QX_OVERFLOW_VALUE in both parts for a divisor of almost zero.
  void Div(T divisor) noexcept;

  /// Adds @p v in place, element by element.
  CQXBaseVector& operator+=(const CQXBaseVector& v) noexcept;
  /// Subtracts @p v in place, element by element.
  CQXBaseVector& operator-=(const CQXBaseVector& v) noexcept;
  /// @p factor may be an element of this vector.
  CQXBaseVector& operator*=(const T& factor) noexcept;
  /// As Div(); @p divisor may be an element of this vector.
  CQXBaseVector& operator/=(const T& divisor) noexcept;

  /// The sum, element by element.
  [[nodiscard]] CQXBaseVector operator+(const CQXBaseVector& v) const;
  /// The difference, element by element.
  [[nodiscard]] CQXBaseVector operator-(const CQXBaseVector& v) const;
  /// Every element times @p factor.
  [[nodiscard]] CQXBaseVector operator*(const T& factor) const;
  /// As Div(), into a new vector.
  [[nodiscard]] CQXBaseVector operator/(const T& divisor) const;
  /// A new vector of the negated elements; this one is unchanged.
  [[nodiscard]] CQXBaseVector Negate() const;

  /// Sum of this[i] v[i], 0 for dimension 0. Complex numbers are not conjugated.
  ///
  /// Up to 16 elements, and for integers and complex numbers always, the sum runs in order. Above, floating-point
  /// numbers are added in eight partial sums (element i goes to sum i mod 8) folded in one fixed tree: the order
  /// depends on the dimension alone.
  [[nodiscard]] T Dot(const CQXBaseVector& v) const noexcept;
  /// The same sum over i from @p first to @p last, both included; 0 when @p first is above @p last.
  [[nodiscard]] T DotForPart(std::int32_t first, std::int32_t last, const CQXBaseVector& v) const noexcept;

  /// 1 when the dimensions are the same and no pair of elements differs, else 0.
  ///
  /// A pair differs when abs(a - b) is above QX_TOLERANCE; integers differ at all; complex numbers when their guarded
  /// distance is above zero, which needs some 3.16e-5 (float: 3.16e-4). Not a number differs from nothing.
  [[nodiscard]] std::int32_t operator==(const CQXBaseVector& v) const noexcept;
  /// 1 - (this == v).
  [[nodiscard]] std::int32_t operator!=(const CQXBaseVector& v) const noexcept;

 protected:
  /// Tag of the constructor that leaves numbers unset.
  struct Unset {};
  CQXBaseVector(std::int32_t dimension, Unset);
  /// A vector of the same dimension with its @p count elements unset; without a block for none.
  [[nodiscard]] CQXBaseVector Shaped(std::size_t count) const;

  /// Number of elements that the block holds: none when memory was refused.
  [[nodiscard]] std::size_t Count() const noexcept { return m_data != nullptr ? qxElementCount(m_dimension, 1) : 0; }
  /// Number of elements that an operation with @p v on the right reaches: none when memory was refused to either.
  [[nodiscard]] std::size_t CountWith(const CQXBaseVector& v) const noexcept {
    return v.m_data != nullptr ? Count() : 0;
  }

 private:
  [[nodiscard]] std::size_t CountOfPart(std::int32_t start, std::int32_t count) const noexcept;

  std::int32_t m_dimension = 0;
  qxBlock<T> m_data;
};

extern template class QX_API CQXBaseVector<std::int32_t>;
extern template class QX_API CQXBaseVector<float>;
extern template class QX_API CQXBaseVector<double>;
extern template class QX_API CQXBaseVector<CQXComplex<float>>;
extern template class QX_API CQXBaseVector<CQXComplex<double>>;
