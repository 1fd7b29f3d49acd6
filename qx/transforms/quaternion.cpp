#include <qx/transforms/internal/motions.h>
#include <qx/transforms/quaternion.h>

#include <cmath>
#include <cstdint>
#include <numbers>

template <qxReal T>
CQXQuaternion<T> CQXQuaternion<T>::Log() const noexcept {
  const T s = x * x + y * y + z * z;
  const T n = w * w + s;
  const T theta = std::abs(w) >= bound ? std::atan(qxGuardedSqrt(s) / w) : std::numbers::pi_v<T> / 2;
  return {T(0.5) * std::log(n <= QX_TOLERANCE<T> ? QX_TOLERANCE<T> : n), GetVector() * theta};
}

template <qxReal T>
CQXQuaternion<T> CQXQuaternion<T>::Exp() const noexcept {
  const T e = std::exp(w);
  const T length = GuardedRoot(x * x + y * y + z * z);
  const T sine = std::sin(length);
  return {e * std::cos(length), x * e * sine, y * e * sine, z * e * sine};
}

template <qxReal T>
void CQXQuaternion<T>::GetAngleAndAxis(T& angleInRadians, CQXVector3<T>& axis) const noexcept {
  const T half = std::acos(w);
  const T sine = std::sin(half);
  axis = std::abs(sine) > bound ? GetVector() / sine : CQXVector3<T>();
  angleInRadians = 2 * half;
}

template <qxReal T>
void CQXQuaternion<T>::SetByEulerAngles(T axInDegrees, T ayInDegrees, T azInDegrees, qxRotationsOrder order) noexcept {
  Set(qxMotions::EulerRotation(axInDegrees, ayInDegrees, azInDegrees, order));
}

template <std::floating_point T>
CQXQuaternion<T> qxEulerToQuaternion(T axInRadians, T ayInRadians, T azInRadians, qxRotationsOrder order) noexcept {
  const CQXQuaternion<T> qx(std::cos(axInRadians / 2), std::sin(axInRadians / 2), 0, 0);
  const CQXQuaternion<T> qy(std::cos(ayInRadians / 2), 0, std::sin(ayInRadians / 2), 0);
  const CQXQuaternion<T> qz(std::cos(azInRadians / 2), 0, 0, std::sin(azInRadians / 2));
  CQXQuaternion<T> q;
  switch (order) {
    case QX_ROTATIONS_XYZ:
      q = qz * qy * qx;
      break;
    case QX_ROTATIONS_XZY:
      q = qy * qz * qx;
      break;
    case QX_ROTATIONS_YXZ:
      q = qz * qx * qy;
      break;
    case QX_ROTATIONS_YZX:
      q = qx * qz * qy;
      break;
    case QX_ROTATIONS_ZYX:
      q = qx * qy * qz;
      break;
    case QX_ROTATIONS_ZXY:
      q = qy * qx * qz;
      break;
    default:
      return q;
  }
  q.Normalize();
  return q;
}

template class CQXQuaternion<float>;
template class CQXQuaternion<double>;
template CQXQuaternion<float> qxEulerToQuaternion(float, float, float, qxRotationsOrder) noexcept;
template CQXQuaternion<double> qxEulerToQuaternion(double, double, double, qxRotationsOrder) noexcept;
