#include <qx/foundation/internal/instantiate.h>
#include <qx/interpolation/internal/curve_slopes.h>
#include <qx/interpolation/interpolation.h>

#include <cmath>
#include <cstddef>

namespace {

template <qxReal T>
const T* NumbersOf(const T* values) {
  return values;
}
template <qxReal T>
T* NumbersOf(T* values) {
  return values;
}
/// An array of vectors as an array of numbers; null stays null.
template <qxFixedVector V>
auto* NumbersOf(V* values) {
  return values == nullptr ? nullptr : values->Data();
}
template <qxFixedVector V>
auto* NumbersOf(const V* values) {
  return values == nullptr ? nullptr : values->Data();
}

/// Half the rotation vector of a unit quaternion: axis times half the angle, which is at most pi / 2 for w >= 0.
template <qxReal T>
CQXVector3<T> Logarithm(const CQXQuaternion<T>& q) noexcept {
  const T sine = std::sqrt(q.x * q.x + q.y * q.y + q.z * q.z);
  if (sine == 0) return {};
  return q.GetVector() * (std::atan2(sine, q.w) / sine);
}

/// The unit quaternion of half a rotation vector.
template <qxReal T>
CQXQuaternion<T> Exponential(const CQXVector3<T>& v) noexcept {
  const T angle = std::sqrt(v.SquareLength());
  return {std::cos(angle), angle == 0 ? v : v * (std::sin(angle) / angle)};
}

/// The arc from @p a to @p b, on the side that they are given; on the rounding's side when they are opposite.
template <qxReal T>
CQXQuaternion<T> Arc(const CQXQuaternion<T>& a, const CQXQuaternion<T>& b, T t) noexcept {
  return a * Exponential(Logarithm(a.InvertUnit() * b) * t);
}

/// What carries the unit quaternion @p a to @p b or -b, whichever is nearer.
template <qxReal T>
CQXQuaternion<T> ShorterWay(const CQXQuaternion<T>& a, const CQXQuaternion<T>& b) noexcept {
  const CQXQuaternion<T> way = a.InvertUnit() * b;
  return way.w < 0 ? way * T(-1) : way;
}

/// The parabola's velocity where two intervals with the rotation vectors r0 and r1 meet.
template <qxReal T>
CQXVector3<T> ParabolaVelocity(const CQXVector3<T>& r0, T h0, const CQXVector3<T>& r1, T h1) noexcept {
  return (r0 * (h1 / h0) + r1 * (h0 / h1)) / (h0 + h1);
}

}  // namespace

template <typename V>
std::int32_t CQXInterpolation::FindSlopes(qxSlopes rule, qxEnds ends, std::int32_t n,
                                          const typename qxCurveElement<V>::Type* nodes, const V* values, V* slopes) {
  constexpr std::size_t dimension = sizeof(V) / sizeof(typename qxCurveElement<V>::Type);
  return qxCurves::FindSlopes(rule, ends, n, dimension, nodes, NumbersOf(values), NumbersOf(slopes));
}

template <qxReal T>
std::int32_t CQXInterpolation::FindAngularVelocities(qxEnds ends, std::int32_t n, const T* nodes,
                                                     const CQXQuaternion<T>* rotations,
                                                     CQXVector3<T>* velocities) noexcept {
  if (n < 1 || !qxCurves::AreAscending(n, nodes)) return 0;
  const auto length = [&](std::int32_t i) { return nodes[i + 1] - nodes[i]; };
  const auto turn = [&](std::int32_t i) { return Logarithm(ShorterWay(rotations[i], rotations[i + 1])) * T(2); };
  const std::int32_t last = n - 1;
  for (std::int32_t i = 1; i < last; ++i) {
    velocities[i] = ParabolaVelocity(turn(i - 1), length(i - 1), turn(i), length(i));
  }
  if (ends == QX_ENDS_CLAMPED) return 1;
  if (last < 2) {
    for (std::int32_t i = 0; i <= last; ++i) velocities[i] = last == 0 ? CQXVector3<T>() : turn(0) / length(0);
  } else if (ends == QX_ENDS_CLOSED) {
    velocities[0] = velocities[last] = ParabolaVelocity(turn(last - 1), length(last - 1), turn(0), length(0));
  } else {
    velocities[0] = (turn(0) * (3 / length(0)) - velocities[1]) / T(2);
    velocities[last] = (turn(last - 1) * (3 / length(last - 1)) - velocities[last - 1]) / T(2);
  }
  return 1;
}

template <qxReal T>
CQXQuaternion<T> CQXInterpolation::RotationAt(std::int32_t n, const T* nodes, const CQXQuaternion<T>* rotations,
                                              const CQXVector3<T>* velocities, Time<T> t) noexcept {
  if (t < nodes[0] || n == 1) return rotations[0];
  if (t > nodes[n - 1]) return rotations[n - 1];
  const std::int32_t i = FindInterval(n, nodes, t);
  const T h = nodes[i + 1] - nodes[i], u = (t - nodes[i]) / h;
  const CQXQuaternion<T>& q0 = rotations[i];
  const CQXQuaternion<T> way = ShorterWay(q0, rotations[i + 1]), q1 = q0 * way;
  // The velocity of the quadrangle at its first end is the turn plus twice the way to the control point, and at the
  // second end less it; half rotation vectors throughout.
  const CQXVector3<T> turn = Logarithm(way);
  const CQXQuaternion<T> a = q0 * Exponential((velocities[i] * (h / 2) - turn) / T(2));
  const CQXQuaternion<T> b = q1 * Exponential((turn - velocities[i + 1] * (h / 2)) / T(2));
  return Arc(q0 * Exponential(turn * u), Arc(a, b, u), 2 * u * (1 - u));
}

template <qxReal T>
CQXMatrix4<T> CQXInterpolation::MotionAt(const qxMotion<T>& motion, Time<T> t) noexcept {
  CQXMatrix4<T> m = UnitMatrix<T>();
  if (motion.n < 1) return m;
  if (motion.rotations != nullptr) {
    m = qxMatrix3To4(RotationAt(motion.n, motion.nodes, motion.rotations, motion.angularVelocities, t).GetMatrix());
  }
  if (motion.stretches != nullptr) {
    const CQXVector3<T> s = CurveAt(motion.n, motion.nodes, motion.stretches, motion.stretchVelocities, t);
    for (std::int32_t i = 0; i < 3; ++i) m.SetColVector(i, m.ColVector(i) * s[i]);
  }
  if (motion.translations == nullptr) return m;
  return WithTranslation(m, CurveAt(motion.n, motion.nodes, motion.translations, motion.velocities, t));
}

#define QX_INSTANTIATE_SLOPES(T, V) \
  template std::int32_t CQXInterpolation::FindSlopes(qxSlopes, qxEnds, std::int32_t, const T*, const V*, V*);
#define QX_INSTANTIATE(T)                                                                                          \
  QX_INSTANTIATE_SLOPES(T, T)                                                                                      \
  QX_INSTANTIATE_SLOPES(T, CQXVector2<T>)                                                                          \
  QX_INSTANTIATE_SLOPES(T, CQXVector3<T>)                                                                          \
  QX_INSTANTIATE_SLOPES(T, CQXVector4<T>)                                                                          \
  template std::int32_t CQXInterpolation::FindAngularVelocities(qxEnds, std::int32_t, const T*,                    \
                                                                const CQXQuaternion<T>*, CQXVector3<T>*) noexcept; \
  template CQXQuaternion<T> CQXInterpolation::RotationAt(std::int32_t, const T*, const CQXQuaternion<T>*,          \
                                                         const CQXVector3<T>*, T) noexcept;                        \
  template CQXMatrix4<T> CQXInterpolation::MotionAt(const qxMotion<T>&, T) noexcept;
QX_FOR_FLOAT_AND_DOUBLE(QX_INSTANTIATE)
#undef QX_INSTANTIATE
#undef QX_INSTANTIATE_SLOPES
