#include <qx/vectors/vector_functions.h>

namespace {

/// Takes from @p b its part along @p a; false when the two are colinear.
template <typename V>
bool MakeOrthogonal(const V& a, V& b, typename V::Element tolerance) {
  if (qxAreColinear(a, b, tolerance) != 0) return false;
  b += a * (-a.Dot(b) / a.Dot(a));
  return true;
}

/// The first vector of a basis: divided by its length, whatever that is.
template <typename V>
V FirstDirection(const V& a) {
  return a / qxGuardedSqrt(a.SquareLength());
}

}  // namespace

template <qxReal T>
std::int32_t qxOrthonormalize(CQXVector2<T>& a, CQXVector2<T>& b, qxNonDeduced<T> tolerance) noexcept {
  if (!MakeOrthogonal(a, b, tolerance)) return 0;
  a = FirstDirection(a);
  b.Normalize();
  return 1;
}

template <qxReal T>
std::int32_t qxOrthonormalize(CQXVector3<T>& a, CQXVector3<T>& b, qxNonDeduced<T> tolerance) noexcept {
  if (!MakeOrthogonal(a, b, tolerance)) return 0;
  a = FirstDirection(a);
  b.Normalize();
  return 1;
}

template <qxReal T>
std::int32_t qxOrthonormalize(CQXVector3<T>& a, CQXVector3<T>& b, CQXVector3<T>& c,
                              qxNonDeduced<T> tolerance) noexcept {
  CQXVector3<T> newB = b;
  CQXVector3<T> newC = c;
  if (!MakeOrthogonal(a, newB, tolerance) || !MakeOrthogonal(a, newC, tolerance) ||
      !MakeOrthogonal(newB, newC, tolerance)) {
    return 0;
  }
  a = FirstDirection(a);
  b = newB;
  c = newC;
  b.Normalize();
  c.Normalize();
  return 1;
}

template std::int32_t qxOrthonormalize(CQXVector2<float>&, CQXVector2<float>&, float) noexcept;
template std::int32_t qxOrthonormalize(CQXVector2<double>&, CQXVector2<double>&, double) noexcept;
template std::int32_t qxOrthonormalize(CQXVector3<float>&, CQXVector3<float>&, float) noexcept;
template std::int32_t qxOrthonormalize(CQXVector3<double>&, CQXVector3<double>&, double) noexcept;
template std::int32_t qxOrthonormalize(CQXVector3<float>&, CQXVector3<float>&, CQXVector3<float>&, float) noexcept;
template std::int32_t qxOrthonormalize(CQXVector3<double>&, CQXVector3<double>&, CQXVector3<double>&, double) noexcept;
