#pragma once

#include <qx/foundation/api.h>
#include <qx/foundation/internal/rounded.h>
#include <qx/foundation/internal/unroll.h>
#include <qx/foundation/tolerance.h>

#include <cmath>
#include <cstddef>
#include <cstdint>

/// What the fixed vectors and the fixed matrices share: element-wise arithmetic over N numbers.
///
/// An empty base over the class that derives from it. The derived class holds the numbers in one array, hands them out
/// through `Data()` and is constructed from N numbers. Operands may alias: every operation forms its result before it
/// stores it.
template <typename Derived, typename T, std::size_t N>
class CQXFixedArray {
 public:
  /// Element type.
  using Element = T;

  /// All elements := 0.
  constexpr void SetToZero() noexcept { Self() = Derived(); }
  /// Takes the elements of @p source in their order; matrices by rows.
  constexpr void Fill(const T* source) noexcept {
    Self() = Make([&](std::size_t i) { return source[i]; });
  }
  /// Copies the elements in their order to @p target; matrices by rows.
  constexpr void Dump(T* target) const noexcept {
    qxUnroll<N>([&](std::size_t i) { target[i] = At(i); });
  }

  /// Adds @p b, element by element.
  constexpr void Add(const Derived& b) noexcept { Self() = *this + b; }
  /// Subtracts @p b, element by element.
  constexpr void Sub(const Derived& b) noexcept { Self() = *this - b; }
  /// Multiplies every element by @p factor.
  constexpr void Mul(T factor) noexcept { Self() = *this * factor; }
  /// Divides each element, without a test of the divisor.
  constexpr void Div(T divisor) noexcept { Self() = *this / divisor; }

  /// The sum, element by element.
  [[nodiscard]] constexpr Derived operator+(const Derived& b) const noexcept {
    return Make([&](std::size_t i) { return At(i) + b.Data()[i]; });
  }
  /// The difference, or every element with the opposite sign.
  [[nodiscard]] constexpr Derived operator-(const Derived& b) const noexcept {
    return Make([&](std::size_t i) { return At(i) - b.Data()[i]; });
  }
  /// Every element times @p factor.
  [[nodiscard]] constexpr Derived operator*(T factor) const noexcept {
    return Make([&](std::size_t i) { return qxProduct(At(i), factor); });
  }
  [[nodiscard]] friend constexpr Derived operator*(T factor, const Derived& a) noexcept { return a * factor; }
  /// Each element divided by @p divisor, without a test.
  [[nodiscard]] constexpr Derived operator/(T divisor) const noexcept {
    return Make([&](std::size_t i) { return At(i) / divisor; });
  }
  /// The difference, or every element with the opposite sign.
  [[nodiscard]] constexpr Derived operator-() const noexcept { return Negate(); }
  /// A new object with each element negated; this one is unchanged.
  [[nodiscard]] constexpr Derived Negate() const noexcept {
    return Make([&](std::size_t i) { return -At(i); });
  }

  /// Adds @p b in place, element by element.
  constexpr Derived& operator+=(const Derived& b) noexcept { return Self() = *this + b; }
  /// Subtracts @p b in place, element by element.
  constexpr Derived& operator-=(const Derived& b) noexcept { return Self() = *this - b; }
  /// @p factor may be an element of this object.
  constexpr Derived& operator*=(const T& factor) noexcept { return Self() = *this * factor; }
  /// @p divisor may be an element of this object.
  constexpr Derived& operator/=(const T& divisor) noexcept { return Self() = *this / divisor; }

  /// 1 when no pair of elements differs by more than QX_TOLERANCE. Not a number differs from nothing.
  [[nodiscard]] friend std::int32_t operator==(const Derived& a, const Derived& b) noexcept {
    return a.Differs(b) ? 0 : 1;
  }
  /// 1 when a pair of elements differs by more than QX_TOLERANCE.
  [[nodiscard]] friend std::int32_t operator!=(const Derived& a, const Derived& b) noexcept {
    return a.Differs(b) ? 1 : 0;
  }

 protected:
  [[nodiscard]] constexpr Derived& Self() noexcept { return static_cast<Derived&>(*this); }
  [[nodiscard]] constexpr const Derived& Self() const noexcept { return static_cast<const Derived&>(*this); }
  [[nodiscard]] constexpr T At(std::size_t i) const noexcept { return Self().Data()[i]; }

  /// The object of the elements element(0), element(1), ...
  template <typename Function>
  [[nodiscard, gnu::always_inline]] static constexpr Derived Make(Function element) noexcept {
    return [&]<std::size_t... I>(std::index_sequence<I...>) { return Derived(element(I)...); }
    (std::make_index_sequence<N>{});
  }

  /// True when test(i) holds for an index i.
  template <typename Test>
  [[nodiscard, gnu::always_inline]] static constexpr bool Any(Test test) noexcept {
    return [&]<std::size_t... I>(std::index_sequence<I...>) { return (test(I) || ...); }
    (std::make_index_sequence<N>{});
  }
  /// True when test(i) holds for every index i.
  template <typename Test>
  [[nodiscard, gnu::always_inline]] static constexpr bool All(Test test) noexcept {
    return !Any([&](std::size_t i) { return !test(i); });
  }

  /// Sets each element with abs(x) < @p tolerance to 0.
  void AnnulateSmall(T tolerance) noexcept {
    Self() = Make([&](std::size_t i) { return std::abs(At(i)) < tolerance ? T(0) : At(i); });
  }

 private:
  [[nodiscard]] bool Differs(const Derived& b) const noexcept {
    return Any([&](std::size_t i) { return std::abs(At(i) - b.Data()[i]) > QX_TOLERANCE<T>; });
  }
};
