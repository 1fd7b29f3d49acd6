#pragma once

#include <qx/foundation/api.h>
#include <qx/foundation/scalar.h>
#include <qx/vectors/fixed_vector.h>

#include <concepts>
#include <cstdint>
#include <type_traits>

/// 3D vector (x, y, z): a plain value of exactly its components, no heap and no virtual operation.
///
/// An array of vectors may be handed on as an array of numbers. Arithmetic, lengths and extremes are those of
/// CQXFixedVector and CQXFixedArray. Distinct vectors may be used from different threads.
template <qxReal T>
class QX_API CQXVector3 : public CQXFixedVector<CQXVector3<T>, T, 3> {
 public:
  /// All components 0.
  constexpr CQXVector3() noexcept : m_c{} {}
  /// An integer is ignored: all components 0. `CQXVector3<T>(7)` is the zero vector, `CQXVector3<T>(7.0f)` is filled
  /// with 7.
  template <std::integral Ignored>
  explicit constexpr CQXVector3(Ignored) noexcept : m_c{} {}
  /// Every component is @p value, a floating-point number.
  explicit constexpr CQXVector3(T value) noexcept : m_c{value, value, value} {}
  constexpr CQXVector3(T x, T y, T z) noexcept : m_c{x, y, z} {}
  /// Reads the components from an array.
  explicit constexpr CQXVector3(const T* source) noexcept : m_c{source[0], source[1], source[2]} {}
  /// Copies the first 3 elements of a CQXVectorN; its dimension is not tested.
  template <std::derived_from<CQXVectorN<T>> Dynamic>
  explicit CQXVector3(const Dynamic& source) noexcept : m_c{source[0], source[1], source[2]} {}

  /// Copies the first 3 elements of a CQXVectorN; its dimension is not tested.
  template <std::derived_from<CQXVectorN<T>> Dynamic>
  CQXVector3& operator=(const Dynamic& source) noexcept {
    return *this = CQXVector3(source);
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

  /// The components in their order.
  [[nodiscard]] constexpr T* Data() noexcept { return m_c; }
  /// The components in their order.
  [[nodiscard]] constexpr const T* Data() const noexcept { return m_c; }

  /// Right-handed cross product.
  [[nodiscard]] constexpr CQXVector3 Cross(const CQXVector3& v) const noexcept {
    const auto minor = [&](int i, int j) { return qxProduct(m_c[i], v.m_c[j]) - qxProduct(m_c[j], v.m_c[i]); };
    return {minor(1, 2), minor(2, 0), minor(0, 1)};
  }

  /// Finds alpha, beta and gamma with alpha a + beta b + gamma c = this, by CQXAlgebra::Solve3x3System.
  /// @param tolerance what the determinant of the basis is compared with, and the bound of its condition
  /// @return 1; 0 when the basis is singular or ill-conditioned within the tolerance: the outputs are untouched.
  std::int32_t DecomposeInBasis(const CQXVector3& a, const CQXVector3& b, const CQXVector3& c, T& alpha, T& beta,
                                T& gamma, T tolerance = QX_PREDICATE_TOLERANCE<T>) const noexcept;

 private:
  T m_c[3];
};

template <qxReal T>
inline constexpr bool qxIsFixedVector<CQXVector3<T>> = true;

extern template class QX_API CQXVector3<float>;
extern template class QX_API CQXVector3<double>;

static_assert(std::is_trivially_copyable_v<CQXVector3<float>> && std::is_standard_layout_v<CQXVector3<float>>);
static_assert(sizeof(CQXVector3<float>) == 3 * sizeof(float) && sizeof(CQXVector3<double>) == 3 * sizeof(double));
