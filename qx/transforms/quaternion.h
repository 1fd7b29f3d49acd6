#pragma once

#include <qx/foundation/api.h>
#include <qx/foundation/rotations_order.h>
#include <qx/foundation/scalar.h>
#include <qx/foundation/tolerance.h>
#include <qx/matrices/matrix3.h>
#include <qx/vectors/vector3.h>

#include <cmath>
#include <concepts>
#include <cstdint>
#include <type_traits>
#include <utility>

/// Quaternion (w, x, y, z) with the scalar w and the vector part v = (x, y, z): a plain value of exactly its
/// components, no heap and no virtual operation.
///
/// Three properties are part of the contract and want care:
/// - SetRotation(), GetAngleAndAxis() and qxEulerToQuaternion() measure angles in radians; SetByEulerAngles() and
///   ExtractEulerAngles() in degrees.
/// - `a * b` is the Hamilton product, `a *= b` is another rule: write `a = a * b` to multiply in place.
/// - Rotate() is built on `*=` and does not turn a vector as the matrix of the quaternion does: use `GetMatrix() * v`.
///
/// Near zero everything is absorbed by fixed bounds, no operation reports failure. Distinct quaternions may be used
/// from different threads.
template <qxReal T>
class QX_API CQXQuaternion {
 public:
  /// Element type.
  using Element = T;

  T w;  ///< scalar part
  T x;  ///< first component of the vector part
  T y;  ///< second component of the vector part
  T z;  ///< third component of the vector part

  /// The identity (1, 0, 0, 0).
  constexpr CQXQuaternion() noexcept : w(1), x(0), y(0), z(0) {}
  constexpr CQXQuaternion(T scalar, T first, T second, T third) noexcept : w(scalar), x(first), y(second), z(third) {}
  /// (scalar, vector), not normalised.
  constexpr CQXQuaternion(T scalar, const CQXVector3<T>& vector) noexcept
      : CQXQuaternion(scalar, vector.X(), vector.Y(), vector.Z()) {}
  /// The quaternion of a rotation matrix; see Set(const CQXMatrix3<T>&).
  explicit CQXQuaternion(const CQXMatrix3<T>& rotation) noexcept { Set(rotation); }

  /// Makes this the identity (1, 0, 0, 0).
  constexpr void Identity() noexcept { *this = CQXQuaternion(); }
  /// Sets the four components.
  constexpr void Set(T scalar, T first, T second, T third) noexcept { *this = {scalar, first, second, third}; }
  /// (scalar, vector), not normalised.
  constexpr void Set(T scalar, const CQXVector3<T>& vector) noexcept { *this = {scalar, vector}; }
  /// Sets the four components.
  constexpr void Set(const CQXQuaternion& source) noexcept { *this = source; }
  /// Makes this the quaternion of a rotation matrix. Of q and -q it is the one whose w is positive; where the trace is
  /// negative, the one whose component of the largest diagonal element is positive, of equal ones x before y before z.
  ///
  /// The result is not normalised. A matrix that is no rotation gives what the formulas give (Shepperd 1978).
  void Set(const CQXMatrix3<T>& rotation) noexcept;

  /// Sets the vector part.
  constexpr void SetVector(const CQXVector3<T>& vector) noexcept { *this = {w, vector}; }
  /// Sets the scalar part.
  constexpr void SetScalar(T scalar) noexcept { w = scalar; }
  /// The vector part.
  [[nodiscard]] constexpr CQXVector3<T> GetVector() const noexcept { return {x, y, z}; }
  /// The scalar part.
  [[nodiscard]] constexpr T GetScalar() const noexcept { return w; }
  /// Scalar and vector part.
  constexpr void GetComponents(T& scalar, CQXVector3<T>& vector) const noexcept {
    scalar = w;
    vector = GetVector();
  }

  /// 1, 2 and 3 select x, y and z; every other index, negative ones too, selects w.
  [[nodiscard]] constexpr T& operator[](std::int32_t i) noexcept { return i == 1 ? x : i == 2 ? y : i == 3 ? z : w; }
  /// 1, 2 and 3 select x, y and z; every other index, negative ones too, selects w.
  [[nodiscard]] constexpr const T& operator[](std::int32_t i) const noexcept {
    return i == 1 ? x : i == 2 ? y : i == 3 ? z : w;
  }

  /// w^2 + x^2 + y^2 + z^2.
  [[nodiscard]] constexpr T SquaredLength() const noexcept { return w * w + x * x + y * y + z * z; }
  /// 0 when SquaredLength() is below 1e-6, otherwise its guarded root.
  [[nodiscard]] T Length() const noexcept { return GuardedRoot(SquaredLength()); }
  /// Divides each component by Length(); the identity when that is below 1e-6.
  void Normalize() noexcept {
    const T length = Length();
    if (length < bound) {
      Identity();
    } else {
      *this = {w / length, x / length, y / length, z / length};
    }
  }

  // Each of the next three names has two forms: on a const quaternion it returns a new one, on another it changes the
  // object and returns nothing.

  /// (w, -x, -y, -z).
  [[nodiscard]] constexpr CQXQuaternion Conjugate() const noexcept { return {w, -x, -y, -z}; }
  constexpr void Conjugate() noexcept { *this = std::as_const(*this).Conjugate(); }
  /// All components negated: the same rotation.
  [[nodiscard]] constexpr CQXQuaternion Negate() const noexcept { return {-w, -x, -y, -z}; }
  constexpr void Negate() noexcept { *this = std::as_const(*this).Negate(); }
  /// The conjugate divided by SquaredLength(); when that is at most 1e-6, the conjugate times 1000000, so that the zero
  /// quaternion inverts to zero.
  [[nodiscard]] constexpr CQXQuaternion Invert() const noexcept {
    const T s = SquaredLength();
    if (s <= bound) return InvertUnit() * T(1000000);
    return {w / s, -x / s, -y / s, -z / s};
  }
  constexpr void Invert() noexcept { *this = std::as_const(*this).Invert(); }
  /// The inverse of a unit quaternion, its conjugate. The length is not tested.
  [[nodiscard]] constexpr CQXQuaternion InvertUnit() const noexcept { return Conjugate(); }

  [[nodiscard]] constexpr CQXQuaternion operator+(const CQXQuaternion& b) const noexcept {
    return {w + b.w, x + b.x, y + b.y, z + b.z};
  }
  [[nodiscard]] constexpr CQXQuaternion operator-(const CQXQuaternion& b) const noexcept {
    return {w - b.w, x - b.x, y - b.y, z - b.z};
  }
  [[nodiscard]] constexpr CQXQuaternion operator*(T factor) const noexcept {
    return {w * factor, x * factor, y * factor, z * factor};
  }
  constexpr CQXQuaternion& operator+=(const CQXQuaternion& b) noexcept { return *this = *this + b; }
  constexpr CQXQuaternion& operator-=(const CQXQuaternion& b) noexcept { return *this = *this - b; }
  constexpr CQXQuaternion& operator*=(T factor) noexcept { return *this = *this * factor; }

  /// The Hamilton product this b: as a rotation, @p b acts first.
  [[nodiscard]] constexpr CQXQuaternion operator*(const CQXQuaternion& b) const noexcept {
    // Sums alone: g++ makes fused operations of alternating sums and differences where it may, options regardless.
    const T negativeX = -x, negativeY = -y, negativeZ = -z;
    return {w * b.w + negativeX * b.x + negativeY * b.y + negativeZ * b.z,
            w * b.x + x * b.w + y * b.z + negativeZ * b.y, w * b.y + y * b.w + z * b.x + negativeX * b.z,
            w * b.z + z * b.w + x * b.y + negativeY * b.x};
  }
  /// The running product, which is not the Hamilton product: each component is stored before the next one is formed
  /// from it.
  ///
  ///     w := w b.w - x b.x - y b.y - z b.z
  ///     x := w b.x + x b.w + y b.z - z b.y
  ///     y := w b.y - x b.z + y b.w - z b.x
  ///     z := w b.z + x b.y - y b.x + z b.w
  ///
  /// So (1, 0, 0, 0) *= (0, 1, 2, 3) is zero. Rotate() is built on it. @p b is read before anything is stored and may
  /// be this quaternion.
  constexpr CQXQuaternion& operator*=(const CQXQuaternion& b) noexcept {
    const CQXQuaternion c = b;
    // Sums alone in the last two lines, as in the Hamilton product.
    const T negativeX = -c.x, negativeZ = -c.z;
    w = w * c.w - x * c.x - y * c.y - z * c.z;
    x = w * c.x + x * c.w + y * c.z - z * c.y;
    y = w * c.y + x * negativeZ + y * c.w + z * negativeX;
    z = w * c.z + x * c.y + y * negativeX + z * c.w;
    return *this;
  }

  /// 1 when all four differences lie in [-QX_TOLERANCE, QX_TOLERANCE]; not a number equals nothing. q and -q differ.
  [[nodiscard]] friend constexpr std::int32_t operator==(const CQXQuaternion& a, const CQXQuaternion& b) noexcept {
    return AreWithin(a - b, QX_TOLERANCE<T>);
  }
  /// 1 - (a == b).
  [[nodiscard]] friend constexpr std::int32_t operator!=(const CQXQuaternion& a, const CQXQuaternion& b) noexcept {
    return 1 - AreWithin(a - b, QX_TOLERANCE<T>);
  }

  /// 1 when w - 1, x, y and z lie in [-tolerance, tolerance].
  [[nodiscard]] constexpr std::int32_t IsIdentity(T tolerance = QX_PREDICATE_TOLERANCE<T>) const noexcept {
    return AreWithin({w - 1, x, y, z}, tolerance);
  }
  /// 1 when abs(SquaredLength() - 1) < tolerance. The squared length is compared.
  [[nodiscard]] std::int32_t IsUnit(T tolerance = QX_PREDICATE_TOLERANCE<T>) const noexcept {
    return std::abs(SquaredLength() - 1) < tolerance;
  }
  /// 1 when abs(w) < tolerance.
  [[nodiscard]] std::int32_t IsPure(T tolerance = QX_PREDICATE_TOLERANCE<T>) const noexcept {
    return std::abs(w) < tolerance;
  }

  /// (ln(n) / 2, theta v), with n the squared length and theta = atan(length(v) / w).
  ///
  /// The vector part is multiplied by the angle and not divided by its length: this is the logarithm of the textbook
  /// only where length(v) is 1, and Exp(Log(q)) is in general not q. A negative w gives a negative theta; abs(w) < 1e-6
  /// gives theta = pi / 2. For n of at most QX_TOLERANCE the logarithm is that of QX_TOLERANCE.
  [[nodiscard]] CQXQuaternion Log() const noexcept;
  /// exp(w) (cos L, v sin L), with L the length of v, 0 when its square is below 1e-6.
  ///
  /// v is not divided by L, to match Log().
  [[nodiscard]] CQXQuaternion Exp() const noexcept;
  /// Exp of @p exponent times Log. By the forms of the two, Pow(1) is in general not this quaternion.
  [[nodiscard]] CQXQuaternion Pow(T exponent) const noexcept { return (Log() * exponent).Exp(); }

  /// Sets the rotation by @p angleInRadians about @p axis: w = cos(angle / 2), (x, y, z) = axis sin(angle / 2).
  ///
  /// The axis is used as given: pass a unit vector, any other length scales the vector part and the result is no
  /// rotation.
  void SetRotation(T angleInRadians, const CQXVector3<T>& axis) noexcept {
    const T half = angleInRadians / 2;
    *this = {std::cos(half), axis * std::sin(half)};
  }
  /// The angle in radians, 2 acos(w) from 0 to 2 pi, and the axis of a unit quaternion.
  ///
  /// The axis is v / sin(angle / 2); the zero vector when the absolute sine is at most 1e-6, and the angle stays. w is
  /// not clamped: beyond [-1, 1] the angle is not a number and the axis zero. Normalize() first.
  void GetAngleAndAxis(T& angleInRadians, CQXVector3<T>& axis) const noexcept;

  /// Sets the rotation by three angles in degrees, about X, Y and Z in this order of arguments; the order tells in
  /// which sequence they act. An order outside the enumeration gives the identity.
  void SetByEulerAngles(T axInDegrees, T ayInDegrees, T azInDegrees, qxRotationsOrder order) noexcept;
  /// The angles in degrees of GetMatrix() in the given order: CQXMatrix3::ExtractEulerAngles(), which also tells what
  /// happens in gimbal lock. An order outside the enumeration leaves the outputs untouched.
  void ExtractEulerAngles(qxRotationsOrder order, T& axInDegrees, T& ayInDegrees, T& azInDegrees) const noexcept {
    GetMatrix().ExtractEulerAngles(order, axInDegrees, ayInDegrees, azInDegrees);
  }

  /// The rotation matrix, which acts on column vectors. The quaternion is not normalised first; one that is not of unit
  /// length gives no rotation.
  [[nodiscard]] constexpr CQXMatrix3<T> GetMatrix() const noexcept {
    const T xx = 2 * x * x, yy = 2 * y * y, zz = 2 * z * z;
    const T xy = 2 * x * y, xz = 2 * x * z, yz = 2 * y * z;
    const T wx = 2 * w * x, wy = 2 * w * y, wz = 2 * w * z;
    return {1 - yy - zz, xy - wz,     xz + wy,  //
            xy + wz,     1 - xx - zz, yz - wx,  //
            xz - wy,     yz + wx,     1 - xx - yy};
  }

  /// The vector part of r after r *= (0, v) this, where r is the inverse of this and *= is the running product.
  ///
  /// This is not the rotation of GetMatrix(): the identity sends every vector to zero. To turn a vector use
  /// `GetMatrix() * v`.
  [[nodiscard]] constexpr CQXVector3<T> Rotate(const CQXVector3<T>& v) const noexcept {
    const CQXQuaternion a = CQXQuaternion(0, v) * *this;
    CQXQuaternion r = Invert();
    r *= a;
    return r.GetVector();
  }

 private:
  /// What lengths and their squares are compared with, for both element types.
  static constexpr T bound = T(1e-6);

  /// 0 for a sum of squares below the bound, otherwise the guarded root.
  [[nodiscard]] static T GuardedRoot(T squares) noexcept { return squares < bound ? T(0) : qxGuardedSqrt(squares); }
  [[nodiscard]] static constexpr std::int32_t AreWithin(const CQXQuaternion& q, T tolerance) noexcept {
    return q.w >= -tolerance && q.w <= tolerance && q.x >= -tolerance && q.x <= tolerance && q.y >= -tolerance &&
           q.y <= tolerance && q.z >= -tolerance && q.z <= tolerance;
  }
};

template <qxReal T>
inline void CQXQuaternion<T>::Set(const CQXMatrix3<T>& rotation) noexcept {
  const T m00 = rotation(0, 0), m11 = rotation(1, 1), m22 = rotation(2, 2);
  const T trace = m00 + m11 + m22;
  // Twice each component times twice the largest one, which is the root r below.
  const T wx = rotation(2, 1) - rotation(1, 2), yz = rotation(1, 2) + rotation(2, 1);
  const T wy = rotation(0, 2) - rotation(2, 0), xz = rotation(2, 0) + rotation(0, 2);
  const T wz = rotation(1, 0) - rotation(0, 1), xy = rotation(0, 1) + rotation(1, 0);
  if (trace >= 0) {
    const T r = qxGuardedSqrt(1 + trace);
    const T d = T(0.5) / r;
    *this = {r / 2, wx * d, wy * d, wz * d};
  } else if (m11 < m22 && !(m22 <= m00)) {
    const T r = qxGuardedSqrt(m22 + 1 - m11 - m00);
    const T d = T(0.5) / r;
    *this = {wz * d, xz * d, yz * d, r / 2};
  } else if (!(m11 < m22) && m00 < m11) {
    const T r = qxGuardedSqrt(m11 + 1 - m00 - m22);
    const T d = T(0.5) / r;
    *this = {wy * d, xy * d, r / 2, yz * d};
  } else {
    const T r = qxGuardedSqrt(m00 + 1 - m11 - m22);
    const T d = T(0.5) / r;
    *this = {wx * d, r / 2, xy * d, xz * d};
  }
}

/// The product of the rotations by three angles in radians, about X, Y and Z in this order of arguments; the order
/// tells in which sequence they act. The result is normalised.
///
/// The angles are in radians here and in degrees in CQXQuaternion::SetByEulerAngles().
/// @return the identity for an order outside the enumeration.
template <std::floating_point T>
[[nodiscard]] QX_API CQXQuaternion<T> qxEulerToQuaternion(T axInRadians, T ayInRadians, T azInRadians,
                                                          qxRotationsOrder order) noexcept;

/// The quaternion of a rotation matrix: CQXQuaternion::Set().
template <qxReal T>
[[nodiscard]] inline CQXQuaternion<T> qxMatrixToQuaternion(const CQXMatrix3<T>& rotation) noexcept {
  return CQXQuaternion<T>(rotation);
}
/// The rotation matrix of a quaternion: CQXQuaternion::GetMatrix().
template <qxReal T>
[[nodiscard]] constexpr CQXMatrix3<T> qxQuaternionToMatrix(const CQXQuaternion<T>& q) noexcept {
  return q.GetMatrix();
}

extern template class QX_API CQXQuaternion<float>;
extern template class QX_API CQXQuaternion<double>;
extern template QX_API CQXQuaternion<float> qxEulerToQuaternion(float, float, float, qxRotationsOrder) noexcept;
extern template QX_API CQXQuaternion<double> qxEulerToQuaternion(double, double, double, qxRotationsOrder) noexcept;

static_assert(std::is_trivially_copyable_v<CQXQuaternion<float>> && std::is_standard_layout_v<CQXQuaternion<float>>);
static_assert(sizeof(CQXQuaternion<float>) == 4 * sizeof(float) && sizeof(CQXQuaternion<double>) == 4 * sizeof(double));
