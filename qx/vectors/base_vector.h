#pragma once

#include <qx/vectors/dynamic_array.h>

#include <concepts>
#include <cstddef>
#include <cstdint>
#include <utility>

/// Run-time-sized array with element-wise arithmetic, for std::int32_t, float, double, CQXComplex<float> and
/// CQXComplex<double>.
///
/// A vector owns one block of exactly Dim() elements; CQXDynamicArray tells how assignment, arithmetic and copies of
/// complex numbers go. Assignment never changes the dimension of a vector that was not moved from: call SetDimension()
/// first where the size has to change. Indices count from 0 and are not tested.
///
/// Distinct vectors may be used from different threads.
template <typename T>
class QX_API CQXBaseVector : public CQXDynamicArray<T> {
  using Array = CQXDynamicArray<T>;

 public:
  using Array::Data;

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
    this->Fill(source);
  }
  /// Deep copy.
  CQXBaseVector(const CQXBaseVector& other);
  /// Takes the block over and leaves @p other empty, ready to take the size of what is next assigned to it.
  CQXBaseVector(CQXBaseVector&& other) noexcept;

  virtual ~CQXBaseVector();

  /// Copies as many elements as both have; the dimension stays. A vector that was moved from becomes a deep copy.
  virtual CQXBaseVector& operator=(const CQXBaseVector& other);
  /// The same, and @p other keeps its elements. A vector that was moved from takes the block over.
  virtual CQXBaseVector& operator=(CQXBaseVector&& other) noexcept;

  /// Number of elements.
  [[nodiscard]] std::int32_t Dim() const noexcept { return m_rows; }

  /// Writes source[0 .. n-1] to the elements from @p start on, n being the smaller of @p count and Dim() - start.
  /// Nothing happens when n is not positive or @p start is negative.
  void FillPart(const T* source, std::int32_t start, std::int32_t count) noexcept;
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
  void Add(const CQXBaseVector& v) noexcept { Array::AddArray(v); }
  /// Subtracts @p v, element by element.
  void Sub(const CQXBaseVector& v) noexcept { Array::SubtractArray(v); }

  /// As Add().
  CQXBaseVector& operator+=(const CQXBaseVector& v) noexcept {
    Add(v);
    return *this;
  }
  /// As Sub().
  CQXBaseVector& operator-=(const CQXBaseVector& v) noexcept {
    Sub(v);
    return *this;
  }
  /// @p factor may be an element of this vector.
  CQXBaseVector& operator*=(const T& factor) noexcept {
    Array::Mul(factor);
    return *this;
  }
  /// As Div(); @p divisor may be an element of this vector.
  CQXBaseVector& operator/=(const T& divisor) noexcept {
    Array::Div(divisor);
    return *this;
  }

  /// The sum, element by element, as a new object.
  [[nodiscard]] CQXBaseVector operator+(const CQXBaseVector& v) const { return CQXBaseVector(Array::Sum(v)); }
  /// The difference, element by element, as a new object.
  [[nodiscard]] CQXBaseVector operator-(const CQXBaseVector& v) const { return CQXBaseVector(Array::Difference(v)); }
  /// Every element times @p factor, as a new vector.
  [[nodiscard]] CQXBaseVector operator*(const T& factor) const { return CQXBaseVector(Array::Product(factor)); }
  /// As Div(), into a new vector.
  [[nodiscard]] CQXBaseVector operator/(const T& divisor) const { return CQXBaseVector(Array::Quotient(divisor)); }
  /// A new vector of the negated elements; this one is unchanged.
  [[nodiscard]] CQXBaseVector Negate() const { return CQXBaseVector(Array::Negation()); }

  /// Sum of this[i] v[i], 0 for dimension 0. Complex numbers are not conjugated.
  ///
  /// Up to 16 elements, and for integers and complex numbers always, the sum runs in order. Above, floating-point
  /// numbers are added in 16 partial sums (element i goes to sum i mod 16) that are folded by halves: the order depends
  /// on the dimension alone.
  [[nodiscard]] T Dot(const CQXBaseVector& v) const noexcept;
  /// The same sum over i from @p first to @p last, both included; 0 when @p first is above @p last.
  [[nodiscard]] T DotForPart(std::int32_t first, std::int32_t last, const CQXBaseVector& v) const noexcept;

  /// 1 when the dimensions are the same and no pair of elements differs, else 0.
  ///
  /// A pair differs when abs(a - b) is above QX_TOLERANCE; integers differ at all; complex numbers when their guarded
  /// distance is above zero, which needs some 3.16e-5 (float: 3.16e-4). Not a number differs from nothing.
  [[nodiscard]] std::int32_t operator==(const CQXBaseVector& v) const noexcept {
    return m_rows == v.m_rows && !Array::Differs(v);
  }
  /// 1 - (this == v).
  [[nodiscard]] std::int32_t operator!=(const CQXBaseVector& v) const noexcept { return 1 - (*this == v); }

 protected:
  using Array::Count;
  using Array::CountWith;
  using Array::m_rows;
  using typename Array::Unset;

  CQXBaseVector(std::int32_t dimension, Unset) : Array(dimension, 1, Unset()) {}

 private:
  explicit CQXBaseVector(Array&& array) noexcept : Array(std::move(array)) {}
  [[nodiscard]] std::size_t CountOfPart(std::int32_t start, std::int32_t count) const noexcept;
};

extern template class QX_API CQXBaseVector<std::int32_t>;
extern template class QX_API CQXBaseVector<float>;
extern template class QX_API CQXBaseVector<double>;
extern template class QX_API CQXBaseVector<CQXComplex<float>>;
extern template class QX_API CQXBaseVector<CQXComplex<double>>;
