#pragma once

#include <qx/foundation/api.h>
#include <qx/foundation/scalar.h>
#include <qx/vectors/vector2.h>
#include <qx/vectors/vector3.h>
#include <qx/vectors/vector4.h>

#include <cmath>
#include <concepts>
#include <cstddef>
#include <cstdint>
#include <numbers>
#include <type_traits>

/// @file
/// Free functions over vectors: relations, angles, combinations, measures, and conversions between dimensions.
///
/// Where a template takes any fixed vector, both arguments are of one type. Every length is the guarded one, so a
/// vector whose sum of squares is below QX_TOLERANCE has length 0. Relations return 1 or 0 and compare strictly: at the
/// bound itself a relation does not hold. Everything here may be called from any thread.

template <typename T>
class CQXBaseVector;
template <qxReal T>
class CQXComplex;

namespace qxVectorFunctions {

template <typename V>
struct ElementOf;
template <qxFixedVector V>
struct ElementOf<V> {
  using Type = typename V::Element;
};
template <qxReal T>
struct ElementOf<CQXVectorN<T>> {
  using Type = T;
};

}  // namespace qxVectorFunctions

/// CQXVector2, CQXVector3, CQXVector4 or CQXVectorN.
template <typename V>
concept qxRealVector = requires {
  typename qxVectorFunctions::ElementOf<V>::Type;
};

/// Element type of a vector.
template <qxRealVector V>
using qxElementOf = typename qxVectorFunctions::ElementOf<V>::Type;

// ---- Measures

/// Sum of the squared differences, without a guard. The dimension is that of @p a.
template <qxRealVector V>
[[nodiscard]] inline qxElementOf<V> qxSquareDist(const V& a, const V& b) noexcept {
  if constexpr (qxFixedVector<V>) {
    return (a - b).SquareLength();
  } else {
    qxElementOf<V> sum = 0;
    for (std::int32_t i = 0; i < a.Dim(); ++i) sum += qxProduct(a[i] - b[i], a[i] - b[i]);
    return sum;
  }
}

/// Guarded distance of two points: 0 for points closer than 3.16e-5 (float: 3.16e-4).
template <qxRealVector V>
[[nodiscard]] inline qxElementOf<V> qxDist(const V& a, const V& b) noexcept {
  return qxGuardedSqrt(qxSquareDist(a, b), QX_TOLERANCE_SQUARED<qxElementOf<V>>);
}

/// 1 if -tolerance <= qxDist(a, b) <= tolerance, else 0. By the guard, points closer than 3.16e-5 (float: 3.16e-4) are
/// almost equal for every tolerance that is not negative.
template <qxRealVector V>
[[nodiscard]] inline std::int32_t qxAreAlmostEqual(const V& a, const V& b,
                                                   qxElementOf<V> tolerance = QX_TOLERANCE<qxElementOf<V>>) noexcept {
  const qxElementOf<V> distance = qxDist(a, b);
  return distance >= -tolerance && distance <= tolerance;
}

/// Right-handed cross product.
template <qxReal T>
[[nodiscard]] constexpr CQXVector3<T> qxCross(const CQXVector3<T>& a, const CQXVector3<T>& b) noexcept {
  return a.Cross(b);
}

/// a.x b.y - a.y b.x: positive when @p b lies counter-clockwise of @p a.
template <qxReal T>
[[nodiscard]] constexpr T qxCross2D(const CQXVector2<T>& a, const CQXVector2<T>& b) noexcept {
  return qxProduct(a.X(), b.Y()) - qxProduct(a.Y(), b.X());
}

/// a . (b x c), the signed volume of the parallelepiped.
template <qxReal T>
[[nodiscard]] constexpr T qxMixedProduct(const CQXVector3<T>& a, const CQXVector3<T>& b,
                                         const CQXVector3<T>& c) noexcept {
  return a.Dot(b.Cross(c));
}

/// Area of a triangle, not negative.
template <qxReal T>
[[nodiscard]] inline T qxGetTriangleArea(const CQXVector2<T>& a, const CQXVector2<T>& b,
                                         const CQXVector2<T>& c) noexcept {
  return T(0.5) * std::abs(qxCross2D(b - a, c - a));
}
/// Area of a triangle, half the guarded length of the cross product of two edges.
template <qxReal T>
[[nodiscard]] inline T qxGetTriangleArea(const CQXVector3<T>& a, const CQXVector3<T>& b,
                                         const CQXVector3<T>& c) noexcept {
  return T(0.5) * (b - a).Cross(c - a).Length();
}

/// Sum of a[firstA + i] b[firstB + i] for i from 0 below @p count; 0 when @p count < 1. Indices are not tested, complex
/// numbers are not conjugated, integers wrap around on overflow.
template <typename T>
[[nodiscard]] T qxPartialDotProduct(std::int32_t firstA, std::int32_t firstB, std::int32_t count,
                                    const CQXBaseVector<T>& a, const CQXBaseVector<T>& b) noexcept {
  if constexpr (std::is_integral_v<T>) {
    std::make_unsigned_t<T> sum = 0;
    for (std::int32_t i = 0; i < count; ++i) {
      sum += static_cast<std::make_unsigned_t<T>>(qxProduct(a[firstA + i], b[firstB + i]));
    }
    return static_cast<T>(sum);
  } else {
    T sum = 0;
    for (std::int32_t i = 0; i < count; ++i) sum += qxProduct(a[firstA + i], b[firstB + i]);
    return sum;
  }
}

/// Makes @p products the vector of the @p count products a[firstA + i] b[firstB + i], of dimension 0 when
/// @p count < 1. Indices are not tested. @p products must be another vector than @p a and @p b; nothing is written when
/// its memory is refused.
template <typename T>
void qxPartialDotProduct(std::int32_t firstA, std::int32_t firstB, std::int32_t count, const CQXBaseVector<T>& a,
                         const CQXBaseVector<T>& b, CQXBaseVector<T>& products) {
  products.SetDimension(count < 1 ? 0 : count);
  if (products.Data() == nullptr) return;
  for (std::int32_t i = 0; i < count; ++i) {
    // In place on a zero, since the assignment of complex numbers would keep the zero instead of a close value.
    products[i] += qxProduct(a[firstA + i], b[firstB + i]);
  }
}

// ---- Relations

/// 1 when two vectors point along one line: every component of their cross product is in absolute value below M times
/// the tolerance, M being the largest absolute component of both; also when M is below the tolerance.
template <qxReal T>
[[nodiscard]] inline std::int32_t qxAreColinear(const CQXVector2<T>& a, const CQXVector2<T>& b,
                                                qxNonDeduced<T> tolerance = QX_PREDICATE_TOLERANCE<T>) noexcept {
  const T normA = a.NormInf();
  const T normB = b.NormInf();
  const T m = normB > normA ? normB : normA;
  if (m < tolerance) return 1;
  return std::abs(qxCross2D(a, b)) >= m * tolerance ? 0 : 1;
}
/// 1 when two vectors point along one line: every component of their cross product is in absolute value below M times
/// the tolerance, M being the largest absolute component of both; also when M is below the tolerance.
template <qxReal T>
[[nodiscard]] inline std::int32_t qxAreColinear(const CQXVector3<T>& a, const CQXVector3<T>& b,
                                                qxNonDeduced<T> tolerance = QX_PREDICATE_TOLERANCE<T>) noexcept {
  const T normA = a.NormInf();
  const T normB = b.NormInf();
  const T m = normB > normA ? normB : normA;
  if (m < tolerance) return 1;
  const CQXVector3<T> cross = a.Cross(b);
  const T bound = m * tolerance;
  return std::abs(cross.X()) >= bound || std::abs(cross.Y()) >= bound || std::abs(cross.Z()) >= bound ? 0 : 1;
}

/// 1 when abs(a . b) is below the product of the lengths times the tolerance; also when that product is below the
/// tolerance. Two zero vectors are colinear and orthogonal at once.
template <qxRealVector V>
[[nodiscard]] inline std::int32_t qxAreOrthogonal(
    const V& a, const V& b, qxElementOf<V> tolerance = QX_PREDICATE_TOLERANCE<qxElementOf<V>>) noexcept {
  const qxElementOf<V> lengths = a.Length() * b.Length();
  if (lengths < tolerance) return 1;
  return std::abs(a.Dot(b)) >= lengths * tolerance ? 0 : 1;
}

/// 1 when both vectors are almost unit (bounds included) and orthogonal.
template <qxRealVector V>
[[nodiscard]] inline std::int32_t qxAreOrthonormalized(
    const V& a, const V& b, qxElementOf<V> tolerance = QX_PREDICATE_TOLERANCE<qxElementOf<V>>) noexcept {
  return a.IsAlmostUnit(tolerance) != 0 && b.IsAlmostUnit(tolerance) != 0 && qxAreOrthogonal(a, b, tolerance) != 0;
}
/// 1 when all three vectors are almost unit (bounds included) and pairwise orthogonal.
template <qxRealVector V>
[[nodiscard]] inline std::int32_t qxAreOrthonormalized(
    const V& a, const V& b, const V& c, qxElementOf<V> tolerance = QX_PREDICATE_TOLERANCE<qxElementOf<V>>) noexcept {
  return qxAreOrthonormalized(a, b, tolerance) != 0 && c.IsAlmostUnit(tolerance) != 0 &&
         qxAreOrthogonal(a, c, tolerance) != 0 && qxAreOrthogonal(b, c, tolerance) != 0;
}

/// 1 when abs(a . (b x c)) is below the product of the lengths times the tolerance; also when that product is below the
/// tolerance.
template <qxReal T>
[[nodiscard]] inline std::int32_t qxAreVectorsCoplanar(const CQXVector3<T>& a, const CQXVector3<T>& b,
                                                       const CQXVector3<T>& c,
                                                       qxNonDeduced<T> tolerance = QX_PREDICATE_TOLERANCE<T>) noexcept {
  const T lengths = a.Length() * b.Length() * c.Length();
  if (lengths < tolerance) return 1;
  return std::abs(qxMixedProduct(a, b, c)) >= lengths * tolerance ? 0 : 1;
}

/// qxAreVectorsCoplanar() of the vectors from the first point to the others.
template <qxReal T>
[[nodiscard]] inline std::int32_t qxArePointsCoplanar(const CQXVector3<T>& p, const CQXVector3<T>& q,
                                                      const CQXVector3<T>& r, const CQXVector3<T>& s,
                                                      qxNonDeduced<T> tolerance = QX_PREDICATE_TOLERANCE<T>) noexcept {
  return qxAreVectorsCoplanar(q - p, r - p, s - p, tolerance);
}

/// qxAreColinear() of the vectors from the first point to the others.
template <qxReal T>
[[nodiscard]] inline std::int32_t qxArePointsCollinear(const CQXVector2<T>& p, const CQXVector2<T>& q,
                                                       const CQXVector2<T>& r,
                                                       qxNonDeduced<T> tolerance = QX_PREDICATE_TOLERANCE<T>) noexcept {
  return qxAreColinear(q - p, r - p, tolerance);
}
/// qxAreColinear() of the vectors from the first point to the others.
template <qxReal T>
[[nodiscard]] inline std::int32_t qxArePointsCollinear(const CQXVector3<T>& p, const CQXVector3<T>& q,
                                                       const CQXVector3<T>& r,
                                                       qxNonDeduced<T> tolerance = QX_PREDICATE_TOLERANCE<T>) noexcept {
  return qxAreColinear(q - p, r - p, tolerance);
}

// ---- Angles. Nothing is guarded here but the lengths: a zero vector gives what the division gives, an infinity or not
// a number. The angle between two vectors lies between 0 and 180 degrees, so the sine is not negative; for an oriented
// angle in the plane use qxCross2D().

/// Cosine of the angle between two vectors: a . b / (la lb).
template <qxRealVector V>
[[nodiscard]] inline qxElementOf<V> qxCos(const V& a, const V& b) noexcept {
  return a.Dot(b) / (a.Length() * b.Length());
}

/// Sine of the angle between two vectors: the guarded length of all a_i b_j - a_j b_i with i < j, over la lb. It is 0
/// where that sum of squares is below QX_TOLERANCE.
template <qxFixedVector V>
[[nodiscard]] inline qxElementOf<V> qxSin(const V& a, const V& b) noexcept {
  using T = qxElementOf<V>;
  constexpr std::size_t n = V::dimension;
  T sum = 0;
  qxUnroll<n>([&](std::size_t i) {
    qxUnroll<n>([&](std::size_t j) {
      const T minor = qxProduct(a.Data()[i], b.Data()[j]) - qxProduct(a.Data()[j], b.Data()[i]);
      if (i < j) sum += qxProduct(minor, minor);
    });
  });
  return qxGuardedSqrt(sum, QX_TOLERANCE_SQUARED<T>) / (a.Length() * b.Length());
}

/// Tangent of the angle between two vectors: qxSin / qxCos.
template <qxFixedVector V>
[[nodiscard]] inline qxElementOf<V> qxTan(const V& a, const V& b) noexcept {
  return qxSin(a, b) / qxCos(a, b);
}

/// Cotangent of the angle between two vectors: qxCos / qxSin.
template <qxFixedVector V>
[[nodiscard]] inline qxElementOf<V> qxCot(const V& a, const V& b) noexcept {
  return qxCos(a, b) / qxSin(a, b);
}

/// Angle between two vectors in radians, from 0 to pi; 0 when the length of @p a is within 1e-6 of zero.
///
/// The length of @p b is not tested: a zero second vector gives not a number. The cosine is not clamped: for parallel
/// vectors rounding may carry it beyond 1, and the result is not a number then.
template <qxRealVector V>
[[nodiscard]] inline qxElementOf<V> qxFindAngleInRadians(const V& a, const V& b) noexcept {
  using T = qxElementOf<V>;
  const T length = a.Length();
  if (length >= -QX_PREDICATE_TOLERANCE<T> && length <= QX_PREDICATE_TOLERANCE<T>) return 0;
  return std::acos(a.Dot(b) / (length * b.Length()));
}

/// Angle between two vectors in degrees, from 0 to 180; otherwise as qxFindAngleInRadians().
template <qxRealVector V>
[[nodiscard]] inline qxElementOf<V> qxFindAngleInDegrees(const V& a, const V& b) noexcept {
  return qxFindAngleInRadians(a, b) * 180 / std::numbers::pi_v<qxElementOf<V>>;
}

// ---- Building

/// Makes two vectors orthonormal by Gram and Schmidt; the direction of @p a stays.
/// @param tolerance that of qxAreColinear()
/// @return 1; 0 when the vectors are colinear, and both stay as they are.
template <qxReal T>
QX_API std::int32_t qxOrthonormalize(CQXVector2<T>& a, CQXVector2<T>& b,
                                     qxNonDeduced<T> tolerance = QX_PREDICATE_TOLERANCE<T>) noexcept;
/// Makes two vectors in space orthonormal; see the form for two dimensions.
template <qxReal T>
QX_API std::int32_t qxOrthonormalize(CQXVector3<T>& a, CQXVector3<T>& b,
                                     qxNonDeduced<T> tolerance = QX_PREDICATE_TOLERANCE<T>) noexcept;
/// Makes three vectors in space orthonormal in the order a, b, c; the direction of @p a and the plane of @p a and @p b
/// stay.
/// @param tolerance that of qxAreColinear(), applied to each pair when its step comes
/// @return 1; 0 when the vectors are coplanar, and all stay as they are.
template <qxReal T>
QX_API std::int32_t qxOrthonormalize(CQXVector3<T>& a, CQXVector3<T>& b, CQXVector3<T>& c,
                                     qxNonDeduced<T> tolerance = QX_PREDICATE_TOLERANCE<T>) noexcept;

/// weights[0] vectors[0] + ... + weights[n - 1] vectors[n - 1]; the zero vector when @p n < 1.
template <qxFixedVector V>
[[nodiscard]] inline V qxCombine(std::int32_t n, const V* vectors, const typename V::Element* weights) noexcept {
  V sum;
  for (std::int32_t i = 0; i < n; ++i) sum += vectors[i] * weights[i];
  return sum;
}
/// wa a + wb b.
template <qxFixedVector V>
[[nodiscard]] constexpr V qxCombine2(const V& a, const V& b, typename V::Element wa, typename V::Element wb) noexcept {
  return a * wa + b * wb;
}
/// wa a + wb b + wc c.
template <qxFixedVector V>
[[nodiscard]] constexpr V qxCombine3(const V& a, const V& b, const V& c, typename V::Element wa, typename V::Element wb,
                                     typename V::Element wc) noexcept {
  return a * wa + b * wb + c * wc;
}
/// wa a + wb b + wc c + wd d.
template <qxFixedVector V>
[[nodiscard]] constexpr V qxCombine4(const V& a, const V& b, const V& c, const V& d, typename V::Element wa,
                                     typename V::Element wb, typename V::Element wc, typename V::Element wd) noexcept {
  return a * wa + b * wb + c * wc + d * wd;
}

/// Mean of @p n vectors; not a number when there are none.
template <qxFixedVector V>
[[nodiscard]] inline V qxFindMean(const V* vectors, std::int32_t n) noexcept {
  V sum;
  for (std::int32_t i = 0; i < n; ++i) sum += vectors[i];
  return sum / static_cast<typename V::Element>(n);
}

/// (a + b) / 2.
template <qxFixedVector V>
[[nodiscard]] constexpr V qxFindMidpoint(const V& a, const V& b) noexcept {
  return (a + b) * typename V::Element(0.5);
}

/// Exchanges two vectors.
template <qxFixedVector V>
constexpr void qxSwapVectors(V& a, V& b) noexcept {
  const V old = a;
  a = b;
  b = old;
}

// ---- Arrays

/// Copies @p count vectors; the arrays may overlap. Nothing happens when @p count < 1.
template <qxFixedVector V>
void qxCopyVectorArray(std::int32_t count, const V* source, V* target) noexcept {
  if (source < target) {
    for (std::int32_t i = count; i > 0; --i) target[i - 1] = source[i - 1];
  } else {
    for (std::int32_t i = 0; i < count; ++i) target[i] = source[i];
  }
}

/// Copies @p count vectors behind the @p targetCount vectors that @p target holds, and adds them to that number. The
/// target needs room for all.
/// @return the new number of vectors in the target.
template <qxFixedVector V>
std::int32_t qxAppendVectorArray(std::int32_t count, const V* source, std::int32_t& targetCount, V* target) noexcept {
  if (count > 0) {
    qxCopyVectorArray(count, source, target + targetCount);
    targetCount += count;
  }
  return targetCount;
}

// ---- Conversion between dimensions. A homogeneous vector carries the weight of a point in its last component.

/// (x, y, z).
template <qxReal T>
[[nodiscard]] constexpr CQXVector3<T> qxVector2To3(const CQXVector2<T>& v, qxNonDeduced<T> z = 1) noexcept {
  return {v.X(), v.Y(), z};
}
/// (x, y, z, w).
template <qxReal T>
[[nodiscard]] constexpr CQXVector4<T> qxVector3To4(const CQXVector3<T>& v, qxNonDeduced<T> w = 1) noexcept {
  return {v.X(), v.Y(), v.Z(), w};
}

/// The point (x / z, y / z) of a homogeneous vector; @p w receives z, also on failure.
/// @param tolerance what abs(z) is compared with
/// @return 1; 0 when abs(z) is below the tolerance, and @p target is untouched.
template <qxReal T>
inline std::int32_t qxVector3To2(const CQXVector3<T>& v, qxNonDeduced<T> tolerance, CQXVector2<T>& target,
                                 qxNonDeduced<T>& w) noexcept {
  const CQXVector3<T> source = v;
  w = source.Z();
  if (std::abs(source.Z()) < tolerance) return 0;
  target = {source.X() / source.Z(), source.Y() / source.Z()};
  return 1;
}
/// The point (x / z, y / z) of a homogeneous vector, without a test of z; @p w receives z.
template <qxReal T>
[[nodiscard]] constexpr CQXVector2<T> qxVector3To2(const CQXVector3<T>& v, qxNonDeduced<T>& w) noexcept {
  const CQXVector3<T> source = v;
  w = source.Z();
  return {source.X() / source.Z(), source.Y() / source.Z()};
}
/// The point (x / w, y / w, z / w) of a homogeneous vector; @p w receives its w, also on failure.
/// @param tolerance what abs(w) is compared with
/// @return 1; 0 when abs(w) is below the tolerance, and @p target is untouched.
template <qxReal T>
inline std::int32_t qxVector4To3(const CQXVector4<T>& v, qxNonDeduced<T> tolerance, CQXVector3<T>& target,
                                 qxNonDeduced<T>& w) noexcept {
  const CQXVector4<T> source = v;
  w = source.W();
  if (std::abs(source.W()) < tolerance) return 0;
  target = {source.X() / source.W(), source.Y() / source.W(), source.Z() / source.W()};
  return 1;
}
/// The point (x / w, y / w, z / w) of a homogeneous vector, without a test of w; @p w receives it.
template <qxReal T>
[[nodiscard]] constexpr CQXVector3<T> qxVector4To3(const CQXVector4<T>& v, qxNonDeduced<T>& w) noexcept {
  const CQXVector4<T> source = v;
  w = source.W();
  return {source.X() / source.W(), source.Y() / source.W(), source.Z() / source.W()};
}

/// Drops z.
template <qxReal T>
[[nodiscard]] constexpr CQXVector2<T> qxCutVector3To2(const CQXVector3<T>& v) noexcept {
  return {v.X(), v.Y()};
}
/// Drops w.
template <qxReal T>
[[nodiscard]] constexpr CQXVector3<T> qxCutVector4To3(const CQXVector4<T>& v) noexcept {
  return {v.X(), v.Y(), v.Z()};
}
/// The point of a homogeneous vector whose z is 1: z is dropped unread.
template <qxReal T>
[[nodiscard]] constexpr CQXVector2<T> qxAffineVector3To2(const CQXVector3<T>& v) noexcept {
  return qxCutVector3To2(v);
}
/// The point of a homogeneous vector whose w is 1: w is dropped unread.
template <qxReal T>
[[nodiscard]] constexpr CQXVector3<T> qxAffineVector4To3(const CQXVector4<T>& v) noexcept {
  return qxCutVector4To3(v);
}

extern template QX_API std::int32_t qxOrthonormalize(CQXVector2<float>&, CQXVector2<float>&, float) noexcept;
extern template QX_API std::int32_t qxOrthonormalize(CQXVector2<double>&, CQXVector2<double>&, double) noexcept;
extern template QX_API std::int32_t qxOrthonormalize(CQXVector3<float>&, CQXVector3<float>&, float) noexcept;
extern template QX_API std::int32_t qxOrthonormalize(CQXVector3<double>&, CQXVector3<double>&, double) noexcept;
extern template QX_API std::int32_t qxOrthonormalize(CQXVector3<float>&, CQXVector3<float>&, CQXVector3<float>&,
                                                     float) noexcept;
extern template QX_API std::int32_t qxOrthonormalize(CQXVector3<double>&, CQXVector3<double>&, CQXVector3<double>&,
                                                     double) noexcept;
