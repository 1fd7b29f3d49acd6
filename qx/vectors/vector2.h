#pragma once

#include <qx/foundation/api.h>
#include <qx/foundation/scalar.h>
#include <qx/vectors/fixed_vector.h>

#include <cmath>
#include <concepts>
#include <cstdint>
#include <numbers>
#include <type_traits>

/// 2D vector (x, y): a plain value of exactly its components, no heap and no virtual operation.
///
/// An array of vectors may be handed on as an array of numbers. Arithmetic, lengths and extremes are those of
/// CQXFixedVector and CQXFixedArray. Distinct vectors may be used from different threads.
template <qxReal T>
class QX_API CQXVector2 : public CQXFixedVector<CQXVector2<T>, T, 2> {
 public:
  /// All components 0.
  constexpr CQXVector2() noexcept : m_c{} {}
  /// An integer is ignored: all components 0. `CQXVector2<T>(7)` is the zero vector, `CQXVector2<T>(7.0f)` is filled
  /// with 7.
  template <std::integral Ignored>
  explicit constexpr CQXVector2(Ignored) noexcept : m_c{} {}
  /// Every component is @p value, a floating-point number.
  explicit constexpr CQXVector2(T value) noexcept : m_c{value, value} {}
  constexpr CQXVector2(T x, T y) noexcept : m_c{x, y} {}
  /// Copies the first 2 elements of a CQXVectorN; its dimension is not tested.
  template <std::derived_from<CQXVectorN<T>> Dynamic>
  explicit CQXVector2(const Dynamic& source) noexcept : m_c{source[0], source[1]} {}

  /// Copies the first 2 elements of a CQXVectorN; its dimension is not tested.
  template <std::derived_from<CQXVectorN<T>> Dynamic>
  CQXVector2& operator=(const Dynamic& source) noexcept {
    return *this = CQXVector2(source);
  }

  /// First component.
  [[nodiscard]] constexpr T& X() noexcept { return m_c[0]; }
  [[nodiscard]] constexpr const T& X() const noexcept { return m_c[0]; }
  /// Second component.
  [[nodiscard]] constexpr T& Y() noexcept { return m_c[1]; }
  [[nodiscard]] constexpr const T& Y() const noexcept { return m_c[1]; }

  /// The components in their order.
  [[nodiscard]] constexpr T* Data() noexcept { return m_c; }
  /// The components in their order.
  [[nodiscard]] constexpr const T* Data() const noexcept { return m_c; }

  /// The vector turned by 90 degrees counter-clockwise: (-y, x).
  [[nodiscard]] constexpr CQXVector2 Rotate90DegsCCW() const noexcept { return {-m_c[1], m_c[0]}; }

  /// Angle from the x axis in degrees, from -180 to 180; 0 for the zero vector.
  [[nodiscard]] T Angle_MINUS_180_180() const noexcept {
    return std::atan2(m_c[1], m_c[0]) * 180 / std::numbers::pi_v<T>;
  }
  /// Angle from the x axis in degrees, from 0 to 360; 0 for the zero vector. An angle that is negative and too small to
  /// be told from a full turn gives 360.
  [[nodiscard]] T Angle_0_360() const noexcept {
    const T angle = Angle_MINUS_180_180();
    return angle < 0 ? angle + 360 : angle;
  }

  /// Finds alpha and beta with alpha a + beta b = this, by CQXAlgebra::Solve2x2System.
  /// @param tolerance what the determinant of the basis is compared with, and the bound of its condition
  /// @return 1; 0 when the basis is singular or ill-conditioned within the tolerance: the outputs are untouched.
  std::int32_t DecomposeInBasis(const CQXVector2& a, const CQXVector2& b, T& alpha, T& beta,
                                T tolerance = QX_PREDICATE_TOLERANCE<T>) const noexcept;

 private:
  T m_c[2];
};

template <qxReal T>
inline constexpr bool qxIsFixedVector<CQXVector2<T>> = true;

extern template class QX_API CQXVector2<float>;
extern template class QX_API CQXVector2<double>;

static_assert(std::is_trivially_copyable_v<CQXVector2<float>> && std::is_standard_layout_v<CQXVector2<float>>);
static_assert(sizeof(CQXVector2<float>) == 2 * sizeof(float) && sizeof(CQXVector2<double>) == 2 * sizeof(double));
