#pragma once

#include <qx/foundation/scalar.h>
#include <qx/foundation/tolerance.h>
#include <qx/vectors/fixed_array.h>

#include <cmath>
#include <cstddef>
#include <cstdint>

template <qxReal T>
class CQXVectorN;

/// The vocabulary that CQXVector2, CQXVector3 and CQXVector4 share; arithmetic stands in CQXFixedArray.
///
/// Lengths go through qxGuardedSqrt(): a vector whose sum of squares is below QX_TOLERANCE has length 0. Sums run from
/// the first component to the last.
template <typename Derived, typename T, std::size_t N>
class CQXFixedVector : public CQXFixedArray<Derived, T, N> {
  using Array = CQXFixedArray<Derived, T, N>;
  using Array::At;
  using Array::Make;
  using Array::Self;

 public:
  /// Number of components, as a constant.
  static constexpr std::size_t dimension = N;

  /// Number of components.
  [[nodiscard]] static constexpr std::int32_t Dim() noexcept { return static_cast<std::int32_t>(N); }

  /// Component @p i; every index that is not one of the lower ones, negative ones too, selects the last component.
  [[nodiscard]] constexpr T& operator[](std::int32_t i) noexcept { return Self().Data()[Position(i)]; }
  /// Component @p i; every index that is not one of the lower ones, negative ones too, selects the last component.
  [[nodiscard]] constexpr const T& operator[](std::int32_t i) const noexcept { return Self().Data()[Position(i)]; }

  /// Every component := @p value.
  constexpr void SetToConstant(T value) noexcept { Self() = Derived(value); }

  /// Sets each component with abs(x) < @p tolerance to 0.
  void AnnulateSmallComponents(T tolerance = QX_PREDICATE_TOLERANCE<T>) noexcept { Array::AnnulateSmall(tolerance); }

  /// Multiplies each component by 1 / Length().
  /// @return 1; 0 when the length is below QX_TOLERANCE, and the vector is left as it is.
  std::int32_t Normalize() noexcept {
    const T length = Length();
    if (length < QX_TOLERANCE<T>) return 0;
    Array::Mul(1 / length);
    return 1;
  }

  /// Sum of this[i] v[i].
  [[nodiscard]] constexpr T Dot(const Derived& v) const noexcept {
    return qxUnrolledSum<N>([&](std::size_t i) { return qxProduct(At(i), v.Data()[i]); });
  }

  /// Guarded Euclidean length.
  [[nodiscard]] T Length() const noexcept { return qxGuardedSqrt(SquareLength(), QX_TOLERANCE_SQUARED<T>); }
  /// The same as Length().
  [[nodiscard]] T NormEuclidean() const noexcept { return Length(); }
  /// Sum of squares, without a guard.
  [[nodiscard]] constexpr T SquareLength() const noexcept { return Dot(Self()); }
  /// Sum of absolute values.
  [[nodiscard]] T Norm1() const noexcept {
    return qxUnrolledSum<N>([&](std::size_t i) { return std::abs(At(i)); });
  }
  /// Largest absolute value.
  [[nodiscard]] T NormInf() const noexcept { return GetMaxComponent(1); }

  /// 1 if -tolerance <= Length() <= tolerance. By the guard, components up to some 3e-5 (float: 3e-4) are almost zero
  /// for every tolerance that is not negative.
  [[nodiscard]] std::int32_t IsAlmostZero(T tolerance = QX_PREDICATE_TOLERANCE<T>) const noexcept {
    return IsWithin(Length(), tolerance);
  }
  /// 1 if -tolerance <= Length() - 1 <= tolerance.
  [[nodiscard]] std::int32_t IsAlmostUnit(T tolerance = QX_PREDICATE_TOLERANCE<T>) const noexcept {
    return IsWithin(Length() - 1, tolerance);
  }

  /// Smallest component. @param flag 0 compares the signed values; any other value compares, and returns, absolute
  /// ones.
  [[nodiscard]] T GetMinComponent(std::int32_t flag) const noexcept { return FindExtreme(flag, Less).value; }
  /// Largest component. @param flag 0 compares the signed values; any other value compares, and returns, absolute ones.
  [[nodiscard]] T GetMaxComponent(std::int32_t flag) const noexcept { return FindExtreme(flag, Greater).value; }
  /// Index of the smallest component, of equal ones the lowest. @param flag other than 0: by absolute value.
  [[nodiscard]] std::int32_t GetIndexOfMinComponent(std::int32_t flag) const noexcept {
    return FindExtreme(flag, Less).index;
  }
  /// Index of the largest component, of equal ones the lowest. @param flag other than 0: by absolute value.
  [[nodiscard]] std::int32_t GetIndexOfMaxComponent(std::int32_t flag) const noexcept {
    return FindExtreme(flag, Greater).index;
  }

 protected:
  [[nodiscard]] static constexpr std::int32_t IsWithin(T x, T tolerance) noexcept {
    return x >= -tolerance && x <= tolerance;
  }

 private:
  struct Extreme {
    T value;
    std::int32_t index;
  };

  [[nodiscard]] static constexpr bool Less(T a, T b) noexcept { return a < b; }
  [[nodiscard]] static constexpr bool Greater(T a, T b) noexcept { return a > b; }

  [[nodiscard]] static constexpr std::uint32_t Position(std::int32_t i) noexcept {
    constexpr std::uint32_t last = N - 1;
    return static_cast<std::uint32_t>(i) < last ? static_cast<std::uint32_t>(i) : last;
  }

  template <typename Compare>
  [[nodiscard]] Extreme FindExtreme(std::int32_t flag, Compare isBetter) const noexcept {
    const Derived values = flag == 0 ? Self() : Make([&](std::size_t i) { return std::abs(At(i)); });
    Extreme best{values.Data()[0], 0};
    qxUnroll<N>([&](std::size_t i) {
      if (isBetter(values.Data()[i], best.value)) best = {values.Data()[i], static_cast<std::int32_t>(i)};
    });
    return best;
  }
};

/// True for CQXVector2, CQXVector3 and CQXVector4.
template <typename V>
inline constexpr bool qxIsFixedVector = false;

/// CQXVector2, CQXVector3 or CQXVector4.
template <typename V>
concept qxFixedVector = qxIsFixedVector<V>;
