#pragma once

#include <qx/foundation/api.h>
#include <qx/matrices/matrix2.h>
#include <qx/matrices/matrix3.h>
#include <qx/matrices/matrix4.h>
#include <qx/matrices/matrix_n.h>
#include <qx/transforms/quaternion.h>
#include <qx/transforms/rotations_order.h>
#include <qx/vectors/vector2.h>
#include <qx/vectors/vector3.h>
#include <qx/vectors/vector4.h>
#include <qx/vectors/vector_n.h>

#include <cmath>
#include <concepts>
#include <cstdint>
#include <type_traits>

namespace qxInterpolation {

/// Type of the time that goes with a key; undefined for what is no key.
template <typename Key>
struct TimeOf;
template <template <typename> typename Kind, std::floating_point T>
struct TimeOf<Kind<T>> {
  using Type = T;
};
template <template <typename> typename Kind, std::floating_point T>
struct TimeOf<Kind<CQXComplex<T>>> {
  using Type = T;
};

template <typename Key, template <typename> typename... Kinds>
inline constexpr bool isOneOf = (... || (std::same_as<Key, Kinds<float>> || std::same_as<Key, Kinds<double>>));
template <typename T>
using ComplexVector = CQXBaseVector<CQXComplex<T>>;
template <typename T>
using ComplexMatrix = CQXBaseMatrix<CQXComplex<T>>;

template <typename Key>
concept RealVector = qxFixedVector<Key> || isOneOf<Key, CQXVectorN, CQXBaseVector>;
template <typename Key>
concept Vector = RealVector<Key> || isOneOf<Key, ComplexVector>;
template <typename Key>
concept RealMatrix = qxFixedMatrix<Key> || isOneOf<Key, CQXMatrixN, CQXMatrixMN>;
template <typename Key>
concept Matrix = RealMatrix<Key> || isOneOf<Key, CQXBaseMatrix, ComplexMatrix>;

/// Type of the time that goes with a key.
template <typename Key>
using Time = typename TimeOf<Key>::Type;

}  // namespace qxInterpolation

/// Interpolation of vectors, matrices, rotations and affine transforms between two, three or four keys, for float and
/// double.
///
/// Linear forms take the time as a fraction: 0 gives the first key, 1 the second. The others take the node, the time of
/// each key; no operation tests the nodes, and equal ones give infinities and not a number, except where said. Times
/// beyond the outer keys extrapolate. Run-time-sized results have the size of the first key; the others must be as
/// large. Nothing is kept between calls: calls may run in any number of threads.
class QX_API CQXInterpolation {
 public:
  // ---- Vectors and matrices, element by element

  /// a + (b - a) t.
  ///
  /// For CQXVector2 to 4, CQXVectorN, CQXBaseVector and CQXBaseVector of complex numbers, whose time is real.
  template <qxInterpolation::Vector V>
  [[nodiscard]] static V VectorsLinear(const V& a, const V& b, qxInterpolation::Time<V> t) {
    return Linear(a, b, t);
  }
  /// The parabola through three vectors.
  ///
  /// For each element the coefficients are InverseVandermondeMatrix(t0, t1, t2) times its three values, and the result
  /// is (k0 t + k1) t + k2: at a node, the key up to rounding. For CQXVector2 to 4, CQXVectorN and CQXBaseVector.
  template <qxInterpolation::RealVector V>
  [[nodiscard]] static V VectorsQuadratic(const V& a, const V& b, const V& c, qxInterpolation::Time<V> t0,
                                          qxInterpolation::Time<V> t1, qxInterpolation::Time<V> t2,
                                          qxInterpolation::Time<V> t) {
    return Quadratic(a, b, c, t0, t1, t2, t);
  }
  /// The cubic polynomial through four vectors; see VectorsQuadratic().
  template <qxInterpolation::RealVector V>
  [[nodiscard]] static V VectorsCubic(const V& a, const V& b, const V& c, const V& d, qxInterpolation::Time<V> t0,
                                      qxInterpolation::Time<V> t1, qxInterpolation::Time<V> t2,
                                      qxInterpolation::Time<V> t3, qxInterpolation::Time<V> t) {
    return Cubic(a, b, c, d, t0, t1, t2, t3, t);
  }
  /// a + (b - a) t.
  ///
  /// For CQXMatrix2 to 4, CQXMatrixN, CQXMatrixMN, CQXBaseMatrix and CQXBaseMatrix of complex numbers, whose time is
  /// real.
  template <qxInterpolation::Matrix M>
  [[nodiscard]] static M MatricesLinear(const M& a, const M& b, qxInterpolation::Time<M> t) {
    return Linear(a, b, t);
  }
  /// The parabola through three matrices, as VectorsQuadratic(). For CQXMatrix2 to 4, CQXMatrixN and CQXMatrixMN.
  template <qxInterpolation::RealMatrix M>
  [[nodiscard]] static M MatricesQuadratic(const M& a, const M& b, const M& c, qxInterpolation::Time<M> t0,
                                           qxInterpolation::Time<M> t1, qxInterpolation::Time<M> t2,
                                           qxInterpolation::Time<M> t) {
    return Quadratic(a, b, c, t0, t1, t2, t);
  }
  /// The cubic polynomial through four matrices; see MatricesQuadratic().
  template <qxInterpolation::RealMatrix M>
  [[nodiscard]] static M MatricesCubic(const M& a, const M& b, const M& c, const M& d, qxInterpolation::Time<M> t0,
                                       qxInterpolation::Time<M> t1, qxInterpolation::Time<M> t2,
                                       qxInterpolation::Time<M> t3, qxInterpolation::Time<M> t) {
    return Cubic(a, b, c, d, t0, t1, t2, t3, t);
  }

  /// Column j holds the coefficients, highest power first, of the Lagrange basis polynomial that is 1 at node j and 0
  /// at the others. The matrix times the values at the nodes gives the coefficients of the polynomial through them.
  template <std::floating_point T>
  [[nodiscard]] static CQXMatrix3<T> InverseVandermondeMatrix(T t0, T t1, T t2) noexcept;
  /// The same for four nodes.
  template <std::floating_point T>
  [[nodiscard]] static CQXMatrix4<T> InverseVandermondeMatrix(T t0, T t1, T t2, T t3) noexcept;

  // ---- Rotations. Results are not normalised. Keys are taken as unit quaternions and rotation matrices.

  /// The shorter way along the great arc from @p q1 to @p q2 at constant speed (Shoemake 1985).
  ///
  /// The weights are sin((1 - t) h) / sin h and sin(t h) / sin h with h = acos(abs(q1 . q2)), or 1 - t and t where that
  /// dot product is not below 0.999999; a negative dot product negates the second weight. So opposite quaternions,
  /// which are one rotation, blend with the weights 1 - t and -t to q1.
  template <typename T>
  [[nodiscard]] static CQXQuaternion<T> Slerp(const CQXQuaternion<T>& q1, const CQXQuaternion<T>& q2,
                                              std::type_identity_t<T> t) noexcept {
    const T dot = q1.w * q2.w + q1.x * q2.x + q1.y * q2.y + q1.z * q2.z;
    const T cosine = std::abs(dot);
    T weight1 = 1 - t;
    T weight2 = t;
    if (cosine < T(0.999999)) {
      const T h = std::acos(cosine);
      const T sine = std::sin(h);
      weight1 = std::sin((1 - t) * h) / sine;
      weight2 = std::sin(t * h) / sine;
    }
    if (dot < 0) weight2 = -weight2;
    return q1 * weight1 + q2 * weight2;
  }
  /// Slerp(Slerp(q1, q4, t), Slerp(q2, q3, t), 2 t (1 - t)): the outer keys are the first and the fourth, the inner
  /// control points the second and the third.
  template <typename T>
  [[nodiscard]] static CQXQuaternion<T> Squad(const CQXQuaternion<T>& q1, const CQXQuaternion<T>& q2,
                                              const CQXQuaternion<T>& q3, const CQXQuaternion<T>& q4,
                                              std::type_identity_t<T> t) noexcept {
    return Slerp(Slerp(q1, q4, t), Slerp(q2, q3, t), 2 * t * (1 - t));
  }
  /// Squad() on the middle interval, from @p q1 at t1 to @p q2 at t2, with the control points
  ///
  ///     A = q1 Exp(-(Log(q1^-1 q2) + Log(q1^-1 q0)) / 4)
  ///     B = q2 Exp(-(Log(q2^-1 q3) + Log(q2^-1 q1)) / 4)
  ///
  /// in the forms of CQXQuaternion::Log() and Exp(), which do not divide by the length of the vector part. Before
  /// t1 + 1e-6, and where t2 - t1 is below 1e-6, the result is q1; after t2 - 1e-6 it is q2.
  /// @param t0,t3 not read: the outer keys count as if at equal distances
  template <typename T>
  [[nodiscard]] static CQXQuaternion<T> SlerpCubic(const CQXQuaternion<T>& q0, const CQXQuaternion<T>& q1,
                                                   const CQXQuaternion<T>& q2, const CQXQuaternion<T>& q3,
                                                   std::type_identity_t<T> t0, std::type_identity_t<T> t1,
                                                   std::type_identity_t<T> t2, std::type_identity_t<T> t3,
                                                   std::type_identity_t<T> t) noexcept;

  /// Slerp() of two rotation matrices.
  template <typename T>
  [[nodiscard]] static CQXMatrix3<T> RotationsLinear(const CQXMatrix3<T>& a, const CQXMatrix3<T>& b,
                                                     std::type_identity_t<T> t) noexcept;
  /// Slerp() of the 3x3 blocks, in a unit matrix: translations of the keys are dropped.
  template <typename T>
  [[nodiscard]] static CQXMatrix4<T> RotationsLinear(const CQXMatrix4<T>& a, const CQXMatrix4<T>& b,
                                                     std::type_identity_t<T> t) noexcept;
  /// Slerp() of two rotations by angles in degrees, about X, Y and Z in this order of arguments; the order tells in
  /// which sequence they act. The results are in [-180, 180), as CQXMatrix3::ExtractEulerAngles() gives them; an order
  /// outside the enumeration leaves them untouched.
  template <typename T>
  static void RotationsLinear(std::type_identity_t<T> ax1InDegrees, std::type_identity_t<T> ay1InDegrees,
                              std::type_identity_t<T> az1InDegrees, std::type_identity_t<T> ax2InDegrees,
                              std::type_identity_t<T> ay2InDegrees, std::type_identity_t<T> az2InDegrees,
                              qxRotationsOrder order, std::type_identity_t<T> t, T& axInDegrees, T& ayInDegrees,
                              T& azInDegrees) noexcept;
  /// SlerpCubic() of four rotation matrices.
  template <typename T>
  [[nodiscard]] static CQXMatrix3<T> RotationsCubic(const CQXMatrix3<T>& a, const CQXMatrix3<T>& b,
                                                    const CQXMatrix3<T>& c, const CQXMatrix3<T>& d,
                                                    std::type_identity_t<T> t0, std::type_identity_t<T> t1,
                                                    std::type_identity_t<T> t2, std::type_identity_t<T> t3,
                                                    std::type_identity_t<T> t) noexcept;
  /// SlerpCubic() of the 3x3 blocks, in a unit matrix: translations of the keys are dropped.
  template <typename T>
  [[nodiscard]] static CQXMatrix4<T> RotationsCubic(const CQXMatrix4<T>& a, const CQXMatrix4<T>& b,
                                                    const CQXMatrix4<T>& c, const CQXMatrix4<T>& d,
                                                    std::type_identity_t<T> t0, std::type_identity_t<T> t1,
                                                    std::type_identity_t<T> t2, std::type_identity_t<T> t3,
                                                    std::type_identity_t<T> t) noexcept;
  /// SlerpCubic() of four triples of angles in degrees; the result is in [-180, 180). Zero for an order outside the
  /// enumeration.
  template <typename T>
  [[nodiscard]] static CQXVector3<T> RotationsCubic(const CQXVector3<T>& aInDegrees, const CQXVector3<T>& bInDegrees,
                                                    const CQXVector3<T>& cInDegrees, const CQXVector3<T>& dInDegrees,
                                                    qxRotationsOrder order, std::type_identity_t<T> t0,
                                                    std::type_identity_t<T> t1, std::type_identity_t<T> t2,
                                                    std::type_identity_t<T> t3, std::type_identity_t<T> t) noexcept;

  // ---- Affine transforms of space. Of each key only what is named is read.

  /// VectorsLinear() of the translations, in a unit matrix.
  template <typename T>
  [[nodiscard]] static CQXMatrix4<T> TranslationsLinear(const CQXMatrix4<T>& a, const CQXMatrix4<T>& b,
                                                        std::type_identity_t<T> t) noexcept;
  /// VectorsCubic() of the translations, in a unit matrix.
  template <typename T>
  [[nodiscard]] static CQXMatrix4<T> TranslationsCubic(const CQXMatrix4<T>& a, const CQXMatrix4<T>& b,
                                                       const CQXMatrix4<T>& c, const CQXMatrix4<T>& d,
                                                       std::type_identity_t<T> t0, std::type_identity_t<T> t1,
                                                       std::type_identity_t<T> t2, std::type_identity_t<T> t3,
                                                       std::type_identity_t<T> t) noexcept;
  /// VectorsLinear() of the factors s and of the centers c of two scalings about a point.
  ///
  /// The center of a key is d / (1 - s) for each axis, with d its translation; 0 on an axis whose factor is within 1e-6
  /// of 1, so that a translation along such an axis is lost; and zero for a d of almost zero at 1e-6. The result has
  /// the diagonal s and the translation (1 - s) c.
  template <typename T>
  [[nodiscard]] static CQXMatrix4<T> ScalingsLinear(const CQXMatrix4<T>& a, const CQXMatrix4<T>& b,
                                                    std::type_identity_t<T> t) noexcept;
  /// VectorsCubic() of the factors and of the centers; see ScalingsLinear().
  template <typename T>
  [[nodiscard]] static CQXMatrix4<T> ScalingsCubic(const CQXMatrix4<T>& a, const CQXMatrix4<T>& b,
                                                   const CQXMatrix4<T>& c, const CQXMatrix4<T>& d,
                                                   std::type_identity_t<T> t0, std::type_identity_t<T> t1,
                                                   std::type_identity_t<T> t2, std::type_identity_t<T> t3,
                                                   std::type_identity_t<T> t) noexcept;
  /// Blends two affine transforms: MatricesLinear() of the 4x4 matrices when the 3x3 block of a key has a polar form
  /// Q S (CQXMatrix3::PolarDecomposition at 1e-6), which every regular block has.
  ///
  /// Only when neither block has one (both determinants are below 1e-6) the rotations and the stretches are blended
  /// apart: with Q the unit matrix and S the block itself, the result is the blend of the blocks and of the
  /// translations over 0, 0, 0, 1. The test stands this way round: to blend rotations of regular keys along the arc,
  /// take them apart by CQXAffine3DTransform::ExtractSRT() and blend with RotationsLinear(), ScalingsLinear() and
  /// TranslationsLinear().
  template <typename T>
  [[nodiscard]] static CQXMatrix4<T> AffineTransfLinear(const CQXMatrix4<T>& a, const CQXMatrix4<T>& b,
                                                        std::type_identity_t<T> t);
  /// AffineTransfLinear() over four keys: MatricesCubic(), or when no block has a polar form, MatricesCubic() of the
  /// stretches, SlerpCubic() of the rotations and VectorsCubic() of the translations.
  template <typename T>
  [[nodiscard]] static CQXMatrix4<T> AffineTransfCubic(const CQXMatrix4<T>& a, const CQXMatrix4<T>& b,
                                                       const CQXMatrix4<T>& c, const CQXMatrix4<T>& d,
                                                       std::type_identity_t<T> t0, std::type_identity_t<T> t1,
                                                       std::type_identity_t<T> t2, std::type_identity_t<T> t3,
                                                       std::type_identity_t<T> t);

 private:
  template <typename Key>
  static Key Linear(const Key& a, const Key& b, qxInterpolation::Time<Key> t) {
    if constexpr (qxFixedVector<Key> || qxFixedMatrix<Key>) {
      return a + (b - a) * t;
    } else {
      return DynamicLinear(a, b, t);
    }
  }
  template <typename Key>
  static Key DynamicLinear(const Key& a, const Key& b, qxInterpolation::Time<Key> t);
  template <typename Key>
  static Key Quadratic(const Key& a, const Key& b, const Key& c, qxInterpolation::Time<Key> t0,
                       qxInterpolation::Time<Key> t1, qxInterpolation::Time<Key> t2, qxInterpolation::Time<Key> t);
  template <typename Key>
  static Key Cubic(const Key& a, const Key& b, const Key& c, const Key& d, qxInterpolation::Time<Key> t0,
                   qxInterpolation::Time<Key> t1, qxInterpolation::Time<Key> t2, qxInterpolation::Time<Key> t3,
                   qxInterpolation::Time<Key> t);
};
