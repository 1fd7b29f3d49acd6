#include <qx/foundation/angle.h>
#include <qx/foundation/internal/instantiate.h>
#include <qx/interpolation/interpolation.h>

#include <cmath>

namespace {

/// Bound of differences of times, the same for both element types.
template <qxReal T>
constexpr T timeBound = T(1e-6);

/// The control point of a spherical quadrangle beside the key @p q.
template <qxReal T>
CQXQuaternion<T> ControlPoint(const CQXQuaternion<T>& q, const CQXQuaternion<T>& next,
                              const CQXQuaternion<T>& previous) noexcept {
  const CQXQuaternion<T> inverse = q.Invert();
  return q * (((inverse * next).Log() + (inverse * previous).Log()) * T(-0.25)).Exp();
}

template <qxReal T>
CQXQuaternion<T> EulerQuaternion(T axInDegrees, T ayInDegrees, T azInDegrees, qxRotationsOrder order) noexcept {
  return qxEulerToQuaternion(qxWrappedRadians(axInDegrees), qxWrappedRadians(ayInDegrees),
                             qxWrappedRadians(azInDegrees), order);
}
template <qxReal T>
CQXQuaternion<T> EulerQuaternion(const CQXVector3<T>& anglesInDegrees, qxRotationsOrder order) noexcept {
  return EulerQuaternion(anglesInDegrees.X(), anglesInDegrees.Y(), anglesInDegrees.Z(), order);
}

}  // namespace

template <qxReal T>
CQXQuaternion<T> CQXInterpolation::SlerpCubic(const CQXQuaternion<T>& q0, const CQXQuaternion<T>& q1,
                                              const CQXQuaternion<T>& q2, const CQXQuaternion<T>& q3, Time<T>,
                                              Time<T> t1, Time<T> t2, Time<T>, Time<T> t) noexcept {
  const T d = t2 - t1;
  if (std::abs(d) < timeBound<T> || t < t1 + timeBound<T>) return q1;
  if (t > t2 - timeBound<T>) return q2;
  return Squad(q1, ControlPoint(q1, q2, q0), ControlPoint(q2, q3, q1), q2, (t - t1) / d);
}

template <qxReal T>
void CQXInterpolation::RotationsLinear(qxNonDeduced<T> ax1InDegrees, qxNonDeduced<T> ay1InDegrees,
                                       qxNonDeduced<T> az1InDegrees, qxNonDeduced<T> ax2InDegrees,
                                       qxNonDeduced<T> ay2InDegrees, qxNonDeduced<T> az2InDegrees,
                                       qxRotationsOrder order, Time<T> t, T& axInDegrees, T& ayInDegrees,
                                       T& azInDegrees) noexcept {
  const CQXQuaternion<T> q1 = EulerQuaternion<T>(ax1InDegrees, ay1InDegrees, az1InDegrees, order);
  const CQXQuaternion<T> q2 = EulerQuaternion<T>(ax2InDegrees, ay2InDegrees, az2InDegrees, order);
  Slerp(q1, q2, t).ExtractEulerAngles(order, axInDegrees, ayInDegrees, azInDegrees);
}

template <qxReal T>
CQXVector3<T> CQXInterpolation::RotationsCubic(const CQXVector3<T>& aInDegrees, const CQXVector3<T>& bInDegrees,
                                               const CQXVector3<T>& cInDegrees, const CQXVector3<T>& dInDegrees,
                                               qxRotationsOrder order, Time<T> t0, Time<T> t1, Time<T> t2, Time<T> t3,
                                               Time<T> t) noexcept {
  CQXVector3<T> angles;
  SlerpCubic(EulerQuaternion(aInDegrees, order), EulerQuaternion(bInDegrees, order), EulerQuaternion(cInDegrees, order),
             EulerQuaternion(dInDegrees, order), t0, t1, t2, t3, t)
      .ExtractEulerAngles(order, angles.X(), angles.Y(), angles.Z());
  return angles;
}

#define QX_INSTANTIATE(T)                                                                                              \
  template CQXQuaternion<T> CQXInterpolation::SlerpCubic(const CQXQuaternion<T>&, const CQXQuaternion<T>&,             \
                                                         const CQXQuaternion<T>&, const CQXQuaternion<T>&, T, T, T, T, \
                                                         T) noexcept;                                                  \
  template void CQXInterpolation::RotationsLinear<T>(T, T, T, T, T, T, qxRotationsOrder, T, T&, T&, T&) noexcept;      \
  template CQXVector3<T> CQXInterpolation::RotationsCubic(const CQXVector3<T>&, const CQXVector3<T>&,                  \
                                                          const CQXVector3<T>&, const CQXVector3<T>&,                  \
                                                          qxRotationsOrder, T, T, T, T, T) noexcept;
QX_FOR_FLOAT_AND_DOUBLE(QX_INSTANTIATE)
#undef QX_INSTANTIATE
