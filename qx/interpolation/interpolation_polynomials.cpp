#include <qx/interpolation/interpolation.h>

#include <cstddef>

namespace {

template <typename Key>
concept FixedKey = qxFixedVector<Key> || qxFixedMatrix<Key>;
template <typename Key>
concept DynamicVector = requires(const Key& key) {
  key.Dim();
}
&&!FixedKey<Key>;

template <typename Key>
std::size_t ElementCount(const Key& key) {
  if constexpr (FixedKey<Key>) {
    return sizeof(Key) / sizeof(typename Key::Element);
  } else if (key.Data() == nullptr) {
    return 0;
  } else if constexpr (DynamicVector<Key>) {
    return qxElementCount(key.Dim(), 1);
  } else {
    return qxElementCount(key.RowsNb(), key.ColsNb());
  }
}

/// A result of the size of a key, whose elements are to be written.
template <typename Key>
Key ResultLike(const Key& key) {
  if constexpr (FixedKey<Key>) {
    return Key();
  } else if constexpr (DynamicVector<Key>) {
    return Key(key.Dim());
  } else {
    // Through the base class, which leaves the rank of the result unknown.
    using Base = CQXBaseMatrix<std::remove_cvref_t<decltype(key[0])>>;
    return Key(Base(key.RowsNb(), key.ColsNb()));
  }
}

template <typename T>
T LinearElement(T a, T b, T t) {
  return a + (b - a) * t;
}

template <typename T>
void BlendElement(T a, T b, T t, T& target) {
  target = LinearElement(a, b, t);
}
/// Stored through Set(), since the assignment of complex numbers keeps a close old value.
template <typename T>
void BlendElement(const CQXComplex<T>& a, const CQXComplex<T>& b, T t, CQXComplex<T>& target) {
  target.Set(LinearElement(a.Real(), b.Real(), t), LinearElement(a.Imag(), b.Imag(), t));
}

/// Writes elements 0, 1, ... of a result, when it and the keys hold memory.
template <typename Key, typename Element, typename... Keys>
Key ForEachElement(Element writeElement, const Key& first, const Keys&... others) {
  Key result = ResultLike(first);
  std::size_t count = ElementCount(result);
  if (ElementCount(first) == 0 || (... || (ElementCount(others) == 0))) count = 0;
  for (std::size_t i = 0; i < count; ++i) writeElement(i, result.Data()[i]);
  return result;
}

}  // namespace

template <std::floating_point T>
CQXMatrix3<T> CQXInterpolation::InverseVandermondeMatrix(T t0, T t1, T t2) noexcept {
  const T d0 = (t1 - t0) * (t2 - t0);
  const T d1 = (t1 - t0) * (t2 - t1);
  const T d2 = (t2 - t1) * (t2 - t0);
  return {1 / d0,          -1 / d1,        1 / d2,  //
          -(t1 + t2) / d0, (t0 + t2) / d1, -(t0 + t1) / d2, t1 * t2 / d0, -t2 * t0 / d1, t0 * t1 / d2};
}

template <std::floating_point T>
CQXMatrix4<T> CQXInterpolation::InverseVandermondeMatrix(T t0, T t1, T t2, T t3) noexcept {
  const T d0 = (t1 - t0) * (t2 - t0) * (t3 - t0);
  const T d1 = (t1 - t0) * (t2 - t1) * (t3 - t1);
  const T d2 = (t2 - t0) * (t2 - t1) * (t3 - t2);
  const T d3 = (t3 - t2) * (t3 - t1) * (t3 - t0);
  const auto sum = [](T a, T b, T c) { return a + b + c; };
  const auto pairs = [](T a, T b, T c) { return a * b + a * c + b * c; };
  return {-1 / d0,
          1 / d1,
          -1 / d2,
          1 / d3,  //
          sum(t1, t2, t3) / d0,
          -sum(t0, t2, t3) / d1,
          sum(t0, t1, t3) / d2,
          -sum(t0, t1, t2) / d3,  //
          -pairs(t1, t2, t3) / d0,
          pairs(t0, t2, t3) / d1,
          -pairs(t0, t1, t3) / d2,
          pairs(t0, t1, t2) / d3,  //
          t1 * t2 * t3 / d0,
          -t0 * t2 * t3 / d1,
          t0 * t1 * t3 / d2,
          -t0 * t1 * t2 / d3};
}

template <typename Key>
Key CQXInterpolation::DynamicLinear(const Key& a, const Key& b, qxInterpolation::Time<Key> t) {
  return ForEachElement([&](std::size_t i, auto& target) { BlendElement(a.Data()[i], b.Data()[i], t, target); }, a, b);
}

template <typename Key>
Key CQXInterpolation::Quadratic(const Key& a, const Key& b, const Key& c, qxInterpolation::Time<Key> t0,
                                qxInterpolation::Time<Key> t1, qxInterpolation::Time<Key> t2,
                                qxInterpolation::Time<Key> t) {
  using T = qxInterpolation::Time<Key>;
  const CQXMatrix3<T> basis = InverseVandermondeMatrix(t0, t1, t2);
  return ForEachElement(
      [&](std::size_t i, T& target) {
        const CQXVector3<T> k = basis * CQXVector3<T>(a.Data()[i], b.Data()[i], c.Data()[i]);
        target = (k.X() * t + k.Y()) * t + k.Z();
      },
      a, b, c);
}

template <typename Key>
Key CQXInterpolation::Cubic(const Key& a, const Key& b, const Key& c, const Key& d, qxInterpolation::Time<Key> t0,
                            qxInterpolation::Time<Key> t1, qxInterpolation::Time<Key> t2, qxInterpolation::Time<Key> t3,
                            qxInterpolation::Time<Key> t) {
  using T = qxInterpolation::Time<Key>;
  const CQXMatrix4<T> basis = InverseVandermondeMatrix(t0, t1, t2, t3);
  return ForEachElement(
      [&](std::size_t i, T& target) {
        const CQXVector4<T> k = basis * CQXVector4<T>(a.Data()[i], b.Data()[i], c.Data()[i], d.Data()[i]);
        target = ((k.X() * t + k.Y()) * t + k.Z()) * t + k.W();
      },
      a, b, c, d);
}

#define INSTANTIATE_LINEAR(Key, T) template Key CQXInterpolation::DynamicLinear(const Key&, const Key&, T)
#define INSTANTIATE_POLYNOMIALS(Key, T)                                                     \
  template Key CQXInterpolation::Quadratic(const Key&, const Key&, const Key&, T, T, T, T); \
  template Key CQXInterpolation::Cubic(const Key&, const Key&, const Key&, const Key&, T, T, T, T, T)
#define INSTANTIATE(T)                                                                    \
  template CQXMatrix3<T> CQXInterpolation::InverseVandermondeMatrix(T, T, T) noexcept;    \
  template CQXMatrix4<T> CQXInterpolation::InverseVandermondeMatrix(T, T, T, T) noexcept; \
  INSTANTIATE_LINEAR(CQXVectorN<T>, T);                                                   \
  INSTANTIATE_LINEAR(CQXBaseVector<T>, T);                                                \
  INSTANTIATE_LINEAR(CQXBaseVector<CQXComplex<T>>, T);                                    \
  INSTANTIATE_LINEAR(CQXMatrixN<T>, T);                                                   \
  INSTANTIATE_LINEAR(CQXMatrixMN<T>, T);                                                  \
  INSTANTIATE_LINEAR(CQXBaseMatrix<T>, T);                                                \
  INSTANTIATE_LINEAR(CQXBaseMatrix<CQXComplex<T>>, T);                                    \
  INSTANTIATE_POLYNOMIALS(CQXVector2<T>, T);                                              \
  INSTANTIATE_POLYNOMIALS(CQXVector3<T>, T);                                              \
  INSTANTIATE_POLYNOMIALS(CQXVector4<T>, T);                                              \
  INSTANTIATE_POLYNOMIALS(CQXVectorN<T>, T);                                              \
  INSTANTIATE_POLYNOMIALS(CQXBaseVector<T>, T);                                           \
  INSTANTIATE_POLYNOMIALS(CQXMatrix2<T>, T);                                              \
  INSTANTIATE_POLYNOMIALS(CQXMatrix3<T>, T);                                              \
  INSTANTIATE_POLYNOMIALS(CQXMatrix4<T>, T);                                              \
  INSTANTIATE_POLYNOMIALS(CQXMatrixN<T>, T);                                              \
  INSTANTIATE_POLYNOMIALS(CQXMatrixMN<T>, T)
INSTANTIATE(float);
INSTANTIATE(double);
#undef INSTANTIATE
#undef INSTANTIATE_POLYNOMIALS
#undef INSTANTIATE_LINEAR
