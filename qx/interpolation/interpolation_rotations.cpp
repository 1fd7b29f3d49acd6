#include <qx/foundation/angle.h>
#include <qx/interpolation/interpolation.h>

#include <cmath>
#include <numbers>

namespace {

template <typename T>
T WrappedRadians(T angleInDegrees) {
  constexpr T pi = std::numbers::pi_v<T>;
  return qxWrapAngle(angleInDegrees * pi / 180, 2 * pi, T(1e-9));
}

template <typename T>
CQXQuaternion<T> FromDegrees(const CQXVector3<T>& angles, qxRotationsOrder order) {
  return qxEulerToQuaternion(WrappedRadians(angles.X()), WrappedRadians(angles.Y()), WrappedRadians(angles.Z()), order);
}

/// The control point that belongs to @p q between the keys @p before and @p after.
template <typename T>
CQXQuaternion<T> ControlPoint(const CQXQuaternion<T>& before, const CQXQuaternion<T>& q,
                              const CQXQuaternion<T>& after) {
  const CQXQuaternion<T> inverse = q.Invert();
  return q * (((inverse * after).Log() + (inverse * before).Log()) * T(-0.25)).Exp();
}

}  // namespace

template <typename T>
CQXQuaternion<T> CQXInterpolation::SlerpCubic(const CQXQuaternion<T>& q0, const CQXQuaternion<T>& q1,
                                              const CQXQuaternion<T>& q2, const CQXQuaternion<T>& q3,
                                              std::type_identity_t<T>, std::type_identity_t<T> t1,
                                              std::type_identity_t<T> t2, std::type_identity_t<T>,
                                              std::type_identity_t<T> t) noexcept {
  constexpr T bound = T(1e-6);
  const T d = t2 - t1;
  if (std::abs(d) < bound || t < t1 + bound) return q1;
  if (t > t2 - bound) return q2;
  return Squad(q1, ControlPoint(q0, q1, q2), ControlPoint(q1, q2, q3), q2, (t - t1) / d);
}

template <typename T>
CQXMatrix3<T> CQXInterpolation::RotationsLinear(const CQXMatrix3<T>& a, const CQXMatrix3<T>& b,
                                                std::type_identity_t<T> t) noexcept {
  return Slerp(qxMatrixToQuaternion(a), qxMatrixToQuaternion(b), t).GetMatrix();
}

template <typename T>
CQXMatrix4<T> CQXInterpolation::RotationsLinear(const CQXMatrix4<T>& a, const CQXMatrix4<T>& b,
                                                std::type_identity_t<T> t) noexcept {
  return qxMatrix3To4(RotationsLinear(a.GetMatrix(), b.GetMatrix(), t));
}

template <typename T>
void CQXInterpolation::RotationsLinear(std::type_identity_t<T> ax1InDegrees, std::type_identity_t<T> ay1InDegrees,
                                       std::type_identity_t<T> az1InDegrees, std::type_identity_t<T> ax2InDegrees,
                                       std::type_identity_t<T> ay2InDegrees, std::type_identity_t<T> az2InDegrees,
                                       qxRotationsOrder order, std::type_identity_t<T> t, T& axInDegrees,
                                       T& ayInDegrees, T& azInDegrees) noexcept {
  const CQXQuaternion<T> first = FromDegrees(CQXVector3<T>(ax1InDegrees, ay1InDegrees, az1InDegrees), order);
  const CQXQuaternion<T> second = FromDegrees(CQXVector3<T>(ax2InDegrees, ay2InDegrees, az2InDegrees), order);
  Slerp(first, second, t).ExtractEulerAngles(order, axInDegrees, ayInDegrees, azInDegrees);
}

template <typename T>
CQXMatrix3<T> CQXInterpolation::RotationsCubic(const CQXMatrix3<T>& a, const CQXMatrix3<T>& b, const CQXMatrix3<T>& c,
                                               const CQXMatrix3<T>& d, std::type_identity_t<T> t0,
                                               std::type_identity_t<T> t1, std::type_identity_t<T> t2,
                                               std::type_identity_t<T> t3, std::type_identity_t<T> t) noexcept {
  return SlerpCubic(qxMatrixToQuaternion(a), qxMatrixToQuaternion(b), qxMatrixToQuaternion(c), qxMatrixToQuaternion(d),
                    t0, t1, t2, t3, t)
      .GetMatrix();
}

template <typename T>
CQXMatrix4<T> CQXInterpolation::RotationsCubic(const CQXMatrix4<T>& a, const CQXMatrix4<T>& b, const CQXMatrix4<T>& c,
                                               const CQXMatrix4<T>& d, std::type_identity_t<T> t0,
                                               std::type_identity_t<T> t1, std::type_identity_t<T> t2,
                                               std::type_identity_t<T> t3, std::type_identity_t<T> t) noexcept {
  return qxMatrix3To4(RotationsCubic(a.GetMatrix(), b.GetMatrix(), c.GetMatrix(), d.GetMatrix(), t0, t1, t2, t3, t));
}

template <typename T>
CQXVector3<T> CQXInterpolation::RotationsCubic(const CQXVector3<T>& aInDegrees, const CQXVector3<T>& bInDegrees,
                                               const CQXVector3<T>& cInDegrees, const CQXVector3<T>& dInDegrees,
                                               qxRotationsOrder order, std::type_identity_t<T> t0,
                                               std::type_identity_t<T> t1, std::type_identity_t<T> t2,
                                               std::type_identity_t<T> t3, std::type_identity_t<T> t) noexcept {
  const CQXQuaternion<T> q =
      SlerpCubic(FromDegrees(aInDegrees, order), FromDegrees(bInDegrees, order), FromDegrees(cInDegrees, order),
                 FromDegrees(dInDegrees, order), t0, t1, t2, t3, t);
  CQXVector3<T> angles;
  q.ExtractEulerAngles(order, angles.X(), angles.Y(), angles.Z());
  return angles;
}

#define INSTANTIATE(T)                                                                                                 \
  template CQXQuaternion<T> CQXInterpolation::SlerpCubic(const CQXQuaternion<T>&, const CQXQuaternion<T>&,             \
                                                         const CQXQuaternion<T>&, const CQXQuaternion<T>&, T, T, T, T, \
                                                         T) noexcept;                                                  \
  template CQXMatrix3<T> CQXInterpolation::RotationsLinear(const CQXMatrix3<T>&, const CQXMatrix3<T>&, T) noexcept;    \
  template CQXMatrix4<T> CQXInterpolation::RotationsLinear(const CQXMatrix4<T>&, const CQXMatrix4<T>&, T) noexcept;    \
  template void CQXInterpolation::RotationsLinear(T, T, T, T, T, T, qxRotationsOrder, T, T&, T&, T&) noexcept;         \
  template CQXMatrix3<T> CQXInterpolation::RotationsCubic(                                                             \
      const CQXMatrix3<T>&, const CQXMatrix3<T>&, const CQXMatrix3<T>&, const CQXMatrix3<T>&, T, T, T, T, T) noexcept; \
  template CQXMatrix4<T> CQXInterpolation::RotationsCubic(                                                             \
      const CQXMatrix4<T>&, const CQXMatrix4<T>&, const CQXMatrix4<T>&, const CQXMatrix4<T>&, T, T, T, T, T) noexcept; \
  template CQXVector3<T> CQXInterpolation::RotationsCubic(const CQXVector3<T>&, const CQXVector3<T>&,                  \
                                                          const CQXVector3<T>&, const CQXVector3<T>&,                  \
                                                          qxRotationsOrder, T, T, T, T, T) noexcept
INSTANTIATE(float);
INSTANTIATE(double);
#undef INSTANTIATE
