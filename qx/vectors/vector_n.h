#pragma once

#include <qx/foundation/scalar.h>
#include <qx/vectors/base_vector.h>

/// Run-time-sized vector of float or double with norms, normalisation and extremes.
///
/// Storage, assignment and element-wise arithmetic are those of CQXBaseVector. Lengths go through qxGuardedSqrt(): a
/// vector whose sum of squares is below QX_TOLERANCE has length 0.
///
/// Distinct vectors may be used from different threads.
template <qxReal T>
class QX_API CQXVectorN : public CQXBaseVector<T> {
 public:
  using Base = CQXBaseVector<T>;
  using Base::Base;
  using Base::Data;

  CQXVectorN() noexcept = default;
  /// Deep copy of the dimension and the elements.
  CQXVectorN(const Base& other) : Base(other) {}
  /// Takes the block over and leaves @p other empty.
  CQXVectorN(Base&& other) noexcept : Base(static_cast<Base&&>(other)) {}
  CQXVectorN(const CQXVectorN& other) = default;
  CQXVectorN(CQXVectorN&& other) noexcept = default;

  ~CQXVectorN() override;

  // Assignment is that of CQXBaseVector.

  /// Assigns by the rules of CQXBaseVector.
  CQXVectorN& operator=(const Base& other) override;
  /// Assigns by the rules of CQXBaseVector.
  virtual CQXVectorN& operator=(const CQXVectorN& other);
  /// Assigns by the rules of CQXBaseVector.
  CQXVectorN& operator=(Base&& other) noexcept override;
  /// Assigns by the rules of CQXBaseVector.
  CQXVectorN& operator=(CQXVectorN&& other) noexcept;

  /// The sum, element by element.
  [[nodiscard]] CQXVectorN operator+(const Base& v) const { return Base::operator+(v); }
  /// The difference, element by element.
  [[nodiscard]] CQXVectorN operator-(const Base& v) const { return Base::operator-(v); }
  /// Every element times @p factor.
  [[nodiscard]] CQXVectorN operator*(const T& factor) const { return Base::operator*(factor); }
  /// Every element divided by @p divisor.
  [[nodiscard]] CQXVectorN operator/(const T& divisor) const { return Base::operator/(divisor); }
  /// Every element with the opposite sign.
  [[nodiscard]] CQXVectorN Negate() const { return Base::Negate(); }

  /// Every element := @p value.
  void SetToConstant(T value) noexcept;
  /// Sets each element with abs(x) < @p tolerance to 0.
  void AnnulateSmallComponents(T tolerance) noexcept;

  /// Multiplies each element by 1 / Length().
  /// @return 1; 0 when the length is below QX_TOLERANCE, and the vector is left as it is.
  std::int32_t Normalize() noexcept;

  /// Guarded Euclidean length.
  [[nodiscard]] T Length() const noexcept;
  /// The same as Length().
  [[nodiscard]] T NormEuclidean() const noexcept { return Length(); }
  /// Sum of squares, without a guard; summed in the order of Dot().
  [[nodiscard]] T SquareLength() const noexcept;
  /// Sum of absolute values; summed in the order of Dot().
  [[nodiscard]] T Norm1() const noexcept;
  /// Largest absolute value, 0 for dimension 0.
  [[nodiscard]] T NormInf() const noexcept { return GetMaxComponent(1); }

  /// 1 if -tolerance <= Length() <= tolerance, else 0.
  [[nodiscard]] std::int32_t IsAlmostZero(T tolerance = QX_PREDICATE_TOLERANCE<T>) const noexcept;
  /// 1 if -tolerance <= Length() - 1 <= tolerance, else 0.
  [[nodiscard]] std::int32_t IsAlmostUnit(T tolerance = QX_PREDICATE_TOLERANCE<T>) const noexcept;

  // Extremes. A flag of 0 compares the signed values; any other flag compares absolute values, and the value that is
  // returned is then the absolute one too. Of equal extremes the lowest index wins. Dimension 0 gives 0.

  [[nodiscard]] T GetMinComponent(std::int32_t flag) const noexcept;
  [[nodiscard]] T GetMaxComponent(std::int32_t flag) const noexcept;
  [[nodiscard]] std::int32_t GetIndexOfMinComponent(std::int32_t flag) const noexcept;
  [[nodiscard]] std::int32_t GetIndexOfMaxComponent(std::int32_t flag) const noexcept;

 private:
  using Base::Count;
  [[nodiscard]] T Component(std::int32_t index, std::int32_t flag) const noexcept;
};

extern template class QX_API CQXVectorN<float>;
extern template class QX_API CQXVectorN<double>;
