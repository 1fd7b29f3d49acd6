#pragma once

#include <qx/vectors/vector2.h>
#include <qx/vectors/vector3.h>
#include <qx/vectors/vector4.h>

#include <bit>
#include <concepts>
#include <cstddef>
#include <cstdint>
#include <type_traits>
#include <utility>

/// @file
/// The fixed vectors in the vocabulary of the standard library and of other libraries: ranges, structured bindings,
/// exact comparison and hash, conversion of the element type, linear interpolation.
///
/// `for (float x : v)`, `std::ranges::max(v)`, `std::span<float>(v)` and `auto [x, y, z] = v` work by what is found
/// here. std::tuple_size and std::tuple_element know the three classes.

/// The components as a range.
template <qxFixedVector V>
[[nodiscard]] constexpr auto begin(V& v) noexcept {
  return v.Data();
}
/// Behind the last component.
template <qxFixedVector V>
[[nodiscard]] constexpr auto end(V& v) noexcept {
  return v.Data() + V::dimension;
}
/// The components as a range.
template <qxFixedVector V>
[[nodiscard]] constexpr auto begin(const V& v) noexcept {
  return v.Data();
}
/// Behind the last component.
template <qxFixedVector V>
[[nodiscard]] constexpr auto end(const V& v) noexcept {
  return v.Data() + V::dimension;
}

/// Component @p I of a vector that is given as it is: a reference for a name, a value for a temporary.
template <std::size_t I, typename V>
requires qxFixedVector<std::remove_cvref_t<V>>
[[nodiscard]] constexpr decltype(auto) get(V&& v) noexcept {
  static_assert(I < std::remove_cvref_t<V>::dimension);
  if constexpr (std::is_lvalue_reference_v<V>) {
    return (v.Data()[I]);
  } else {
    return typename std::remove_cvref_t<V>::Element(v.Data()[I]);
  }
}

/// @cond what the language asks for structured bindings
template <qxReal T>
struct std::tuple_size<CQXVector2<T>> : std::integral_constant<std::size_t, 2> {};
template <qxReal T>
struct std::tuple_size<CQXVector3<T>> : std::integral_constant<std::size_t, 3> {};
template <qxReal T>
struct std::tuple_size<CQXVector4<T>> : std::integral_constant<std::size_t, 4> {};
template <std::size_t I, qxReal T>
struct std::tuple_element<I, CQXVector2<T>> : std::type_identity<T> {};
template <std::size_t I, qxReal T>
struct std::tuple_element<I, CQXVector3<T>> : std::type_identity<T> {};
template <std::size_t I, qxReal T>
struct std::tuple_element<I, CQXVector4<T>> : std::type_identity<T> {};
/// @endcond

/// Whether all components are equal; zeros of either sign are, not-a-numbers are not. For keys of containers: the
/// operator
/// == has a tolerance, with which no hash can agree.
struct qxExactEqual {
  /// Compares component by component.
  template <qxFixedVector V>
  [[nodiscard]] constexpr bool operator()(const V& a, const V& b) const noexcept {
    for (std::size_t i = 0; i < V::dimension; ++i) {
      if (!(a.Data()[i] == b.Data()[i])) return false;
    }
    return true;
  }
};

/// Hash that agrees with qxExactEqual, the same in every run: `std::unordered_set<V, qxExactHash, qxExactEqual>`.
struct qxExactHash {
  /// Hashes the bits of the components, zeros of either sign alike.
  template <qxFixedVector V>
  [[nodiscard]] constexpr std::size_t operator()(const V& v) const noexcept {
    std::uint64_t hash = 0;
    for (std::size_t i = 0; i < V::dimension; ++i) {
      const auto x = v.Data()[i] == 0 ? typename V::Element(0) : v.Data()[i];
      using Word = std::conditional_t<sizeof(x) == 4, std::uint32_t, std::uint64_t>;
      // The finishing steps of S. Vigna's splitmix64 (2015).
      hash += std::uint64_t{std::bit_cast<Word>(x)} + 0x9E3779B97F4A7C15;
      hash = (hash ^ (hash >> 30)) * 0xBF58476D1CE4E5B9;
      hash = (hash ^ (hash >> 27)) * 0x94D049BB133111EB;
      hash ^= hash >> 31;
    }
    return static_cast<std::size_t>(hash);
  }
};

/// The vector with another element type: `qxConvert<float>(v)`. Each component is rounded to the nearest.
template <qxReal T, template <typename> typename Vector, qxReal U>
requires qxFixedVector<Vector<U>>
[[nodiscard]] constexpr Vector<T> qxConvert(const Vector<U>& v) noexcept {
  Vector<T> result;
  for (std::size_t i = 0; i < Vector<U>::dimension; ++i) result.Data()[i] = static_cast<T>(v.Data()[i]);
  return result;
}

/// (1 - t) a + t b: exactly @p a at 0 and exactly @p b at 1, as long as both are finite.
template <qxFixedVector V>
[[nodiscard]] constexpr V qxLerp(const V& a, const V& b, typename V::Element t) noexcept {
  return a * (1 - t) + b * t;
}
