#pragma once

#include <qx/foundation/api.h>
#include <qx/foundation/scalar.h>
#include <qx/vectors/fixed_vector.h>

#include <concepts>
#include <cstdint>
#include <type_traits>

/// 4D vector (x, y, z, w), among them the homogeneous coordinates of a point in space: a plain value of exactly its
/// components, no heap and no virtual operation.
///
/// An array of vectors may be handed on as an array of numbers. Arithmetic, lengths and extremes are those of
/// CQXFixedVector and CQXFixedArray. Distinct vectors may be used from different threads.
template <qxReal T>
class QX_API CQXVector4 : public CQXFixedVector<CQXVector4<T>, T, 4> {
 public:
  /// All components 0.
  constexpr CQXVector4() noexcept : m_c{} {}
  /// An integer is ignored: all components 0. `CQXVector4<T>(7)` is the zero vector, `CQXVector4<T>(7.0f)` is filled
  /// with 7.
  template <std::integral Ignored>
  explicit constexpr CQXVector4(Ignored) noexcept : m_c{} {}
  /// Every component is @p value, a floating-point number.
  explicit constexpr CQXVector4(T value) noexcept : m_c{value, value, value, value} {}
  constexpr CQXVector4(T x, T y, T z, T w) noexcept : m_c{x, y, z, w} {}
  /// Reads the components from an array.
  explicit constexpr CQXVector4(const T* source) noexcept : m_c{source[0], source[1], source[2], source[3]} {}
  /// Copies the first 4 elements of a CQXVectorN; its dimension is not tested.
  template <std::derived_from<CQXVectorN<T>> Dynamic>
  explicit CQXVector4(const Dynamic& source) noexcept : m_c{source[0], source[1], source[2], source[3]} {}

  /// Copies the first 4 elements of a CQXVectorN; its dimension is not tested.
  template <std::derived_from<CQXVectorN<T>> Dynamic>
  CQXVector4& operator=(const Dynamic& source) noexcept {
    return *this = CQXVector4(source);
  }

  /// First component.
  [[nodiscard]] constexpr T& X() noexcept { return m_c[0]; }
  [[nodiscard]] constexpr const T& X() const noexcept { return m_c[0]; }
  /// Second component.
  [[nodiscard]] constexpr T& Y() noexcept { return m_c[1]; }
  [[nodiscard]] constexpr const T& Y() const noexcept { return m_c[1]; }
  /// Third component.
  [[nodiscard]] constexpr T& Z() noexcept { return m_c[2]; }
  [[nodiscard]] constexpr const T& Z() const noexcept { return m_c[2]; }
  /// Fourth component.
  [[nodiscard]] constexpr T& W() noexcept { return m_c[3]; }
  [[nodiscard]] constexpr const T& W() const noexcept { return m_c[3]; }

  /// The components in their order.
  [[nodiscard]] constexpr T* Data() noexcept { return m_c; }
  /// The components in their order.
  [[nodiscard]] constexpr const T* Data() const noexcept { return m_c; }

 private:
  T m_c[4];
};

template <qxReal T>
inline constexpr bool qxIsFixedVector<CQXVector4<T>> = true;

extern template class QX_API CQXVector4<float>;
extern template class QX_API CQXVector4<double>;

static_assert(std::is_trivially_copyable_v<CQXVector4<float>> && std::is_standard_layout_v<CQXVector4<float>>);
static_assert(sizeof(CQXVector4<float>) == 4 * sizeof(float) && sizeof(CQXVector4<double>) == 4 * sizeof(double));
