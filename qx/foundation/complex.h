#pragma once

#include <qx/foundation/api.h>
#include <qx/foundation/internal/rounded.h>
#include <qx/foundation/scalar.h>
#include <qx/foundation/tolerance.h>

#include <cmath>
#include <cstdint>
#include <iosfwd>
#include <type_traits>

/// Complex number that holds the algebraic form (real, imag) and, once calculated, the trigonometric form (magnitude,
/// angle in degrees from 0 to 360) beside it.
///
/// Two properties are part of the contract and want care:
/// - In-place arithmetic (`+=`, `-=`, `*=`, `/=`) changes the algebraic form only. A trigonometric form that was
///   calculated before goes stale and is still reported by Magn() and AngleInDegrees(). Call Set(z.Real(), z.Imag()).
/// - Assignment keeps the old value when the new one is closer than about 3.16e-5 (float: 3.16e-4), because the
///   distance is taken through the guarded root, and when the distance is not a number: with such a part in
///   either number, or the same infinity in both. Use Set() to store a value exactly.
///
/// Power() and Roots() fill the cache of a const object: one object must not be shared by threads during these calls.
template <qxReal T>
class QX_API CQXComplex {
 public:
  /// Zero, with the default precision QX_TOLERANCE and no trigonometric form.
  constexpr CQXComplex() noexcept = default;
  /// Real number.
  constexpr CQXComplex(T real) noexcept : m_real(real) {}
  /// Number in algebraic form.
  constexpr CQXComplex(T real, T imag) noexcept : m_real(real), m_imag(imag) {}
  /// Copies both forms and the precision.
  constexpr CQXComplex(const CQXComplex& other) noexcept = default;

  /// Takes over both forms of @p other when the guarded distance between the two is above this object's precision;
  /// otherwise, and when the distance is not a number, nothing changes. The precision of this object stays.
  CQXComplex& operator=(const CQXComplex& other) noexcept {
    if (GuardedDistance(other) > m_precision) {
      m_real = other.m_real;
      m_imag = other.m_imag;
      m_magnitude = other.m_magnitude;
      m_angle = other.m_angle;
      m_trigCalculated = other.m_trigCalculated;
    }
    return *this;
  }

  /// Takes the real value exactly and fills the trigonometric form: abs(@p value), and 180 or 0 degrees. Nothing
  /// changes when the real part is @p value already and the imaginary part is within QX_TOLERANCE of zero.
  CQXComplex& operator=(const T& value) noexcept {
    if (IsReal() != 0 && m_real == value) return *this;
    m_real = value;
    m_imag = 0;
    m_magnitude = std::abs(m_real);
    m_angle = m_real < 0 ? T(180) : T(0);
    m_trigCalculated = 1;
    return *this;
  }

  /// Sets both parts exactly and drops the trigonometric form; the precision stays.
  constexpr void Set(T real, T imag) noexcept {
    m_real = real;
    m_imag = imag;
    m_magnitude = 0;
    m_angle = 0;
    m_trigCalculated = 0;
  }

  /// Sets the number from its trigonometric form and fills the algebraic form.
  ///
  /// The angle is brought into 0 to 360; an exact negative multiple of 360 ends on 360. The magnitude is stored as
  /// given, a negative one too.
  void SetInTrigForm(T magnitude, T angleInDegrees) noexcept;

  /// The real part.
  [[nodiscard]] constexpr T Real() const noexcept { return m_real; }
  /// The imaginary part.
  [[nodiscard]] constexpr T Imag() const noexcept { return m_imag; }

  /// Magnitude: the stored one when the trigonometric form was calculated (stale after in-place arithmetic), otherwise
  /// the guarded root of real^2 + imag^2, 0 below the square of this object's precision.
  [[nodiscard]] T Magn() const noexcept {
    if (m_trigCalculated != 0) return m_magnitude;
    return qxGuardedSqrt(qxProduct(m_real, m_real) + qxProduct(m_imag, m_imag), m_precision * m_precision);
  }

  /// Square of the stored magnitude when the trigonometric form was calculated, otherwise real^2 + imag^2.
  [[nodiscard]] constexpr T SquareMagn() const noexcept {
    return m_trigCalculated != 0 ? m_magnitude * m_magnitude : qxProduct(m_real, m_real) + qxProduct(m_imag, m_imag);
  }

  /// Angle in degrees: the stored one when the trigonometric form was calculated, otherwise in [0, 360); 0 for a number
  /// whose guarded magnitude is zero. Nothing is stored.
  [[nodiscard]] T AngleInDegrees() const noexcept;

  /// Angle in radians: in [-pi, pi) when the trigonometric form was calculated, in [0, 2 pi) otherwise. The two differ
  /// by 2 pi below the real axis: call CalculateTrigonForm() first when that matters. Nothing is stored.
  [[nodiscard]] T AngleInRadians() const noexcept;

  /// 1 when the trigonometric form is stored.
  [[nodiscard]] constexpr std::int32_t IsTrigCalculated() const noexcept { return m_trigCalculated; }

  /// The tolerance of this object: what the distance in `=`, `==` and `!=` is compared with.
  [[nodiscard]] constexpr T GetPrecision() const noexcept { return m_precision; }
  /// Sets the tolerance of this object.
  constexpr void SetPrecision(T precision) noexcept { m_precision = precision; }

  /// 1 when the imaginary part is within QX_TOLERANCE of zero, bounds included; the object's precision plays no part.
  [[nodiscard]] constexpr std::int32_t IsReal() const noexcept { return IsWithinTolerance(m_imag); }
  /// 1 when the real part is within QX_TOLERANCE of zero, bounds included; the object's precision plays no part.
  [[nodiscard]] constexpr std::int32_t IsImag() const noexcept { return IsWithinTolerance(m_real); }

  /// Calculates and stores the trigonometric form from the algebraic one: magnitude and angle 0 when real^2 + imag^2 is
  /// within QX_TOLERANCE of zero.
  void CalculateTrigonForm() noexcept { FillTrigonForm(); }

  /// The number with the opposite imaginary part.
  [[nodiscard]] constexpr CQXComplex Conjugate() const noexcept { return {m_real, -m_imag}; }

  /// 1 / z; both parts are QX_OVERFLOW_VALUE when SquareMagn() is below QX_TOLERANCE.
  [[nodiscard]] constexpr CQXComplex Invert() const noexcept {
    const T square = SquareMagn();
    if (square >= QX_TOLERANCE<T>) return {m_real / square, -m_imag / square};
    return {QX_OVERFLOW_VALUE<T>, QX_OVERFLOW_VALUE<T>};
  }

  /// Largest whole number not above each part. A negative part within QX_TOLERANCE of its truncation takes the
  /// truncation. Whole numbers go through 32 bits: a part beyond that range, or not a number, gives -2^31.
  [[nodiscard]] CQXComplex Floor() const noexcept;
  /// Smallest whole number not below each part. A positive part within QX_TOLERANCE of its truncation takes the
  /// truncation. Whole numbers go through 32 bits as in Floor().
  [[nodiscard]] CQXComplex Ceil() const noexcept;
  /// Nearest whole number of each part, halves away from zero; through 32 bits as in Floor().
  [[nodiscard]] CQXComplex Round() const noexcept;

  /// z^n, with both forms filled. Zero for a magnitude below QX_TOLERANCE, for n = 0 too. A negative power whose
  /// positive counterpart has a magnitude below QX_TOLERANCE has the largest value of T as its magnitude.
  ///
  /// Fills the trigonometric form of this object when it was not calculated.
  [[nodiscard]] CQXComplex Power(std::int32_t n) const noexcept;

  /// The n roots of order n, with both forms filled, from the smallest angle on.
  ///
  /// Fills the trigonometric form of this object when it was not calculated.
  /// @param n order; for 0 and below no root is written
  /// @param target room for n numbers
  /// @return 1; 0 when the magnitude is below QX_TOLERANCE, and @p target is untouched.
  std::int32_t Roots(std::int32_t n, CQXComplex* target) const noexcept;

  /// The difference, or the number with the opposite sign.
  [[nodiscard]] constexpr CQXComplex operator-() const noexcept { return {-m_real, -m_imag}; }

  /// The sum.
  [[nodiscard]] constexpr CQXComplex operator+(const CQXComplex& b) const noexcept {
    return {m_real + b.m_real, m_imag + b.m_imag};
  }
  /// The difference, or the number with the opposite sign.
  [[nodiscard]] constexpr CQXComplex operator-(const CQXComplex& b) const noexcept {
    return {m_real - b.m_real, m_imag - b.m_imag};
  }
  /// The product.
  [[nodiscard]] constexpr CQXComplex operator*(const CQXComplex& b) const noexcept {
    return {qxProduct(m_real, b.m_real) - qxProduct(m_imag, b.m_imag),
            qxProduct(m_real, b.m_imag) + qxProduct(m_imag, b.m_real)};
  }
  /// Quotient; both parts are QX_OVERFLOW_VALUE when SquareMagn() of the divisor is below QX_TOLERANCE.
  [[nodiscard]] constexpr CQXComplex operator/(const CQXComplex& b) const noexcept {
    const T square = b.SquareMagn();
    if (square < QX_TOLERANCE<T>) return {QX_OVERFLOW_VALUE<T>, QX_OVERFLOW_VALUE<T>};
    return {(qxProduct(m_real, b.m_real) + qxProduct(m_imag, b.m_imag)) / square,
            (qxProduct(m_imag, b.m_real) - qxProduct(m_real, b.m_imag)) / square};
  }

  /// The sum.
  [[nodiscard]] constexpr CQXComplex operator+(T b) const noexcept { return {m_real + b, m_imag}; }
  /// The difference, or the number with the opposite sign.
  [[nodiscard]] constexpr CQXComplex operator-(T b) const noexcept { return {m_real - b, m_imag}; }
  /// The product.
  [[nodiscard]] constexpr CQXComplex operator*(T b) const noexcept { return {m_real * b, m_imag * b}; }
  /// Quotient; both parts are QX_OVERFLOW_VALUE when the divisor is within QX_TOLERANCE of zero, bounds included.
  [[nodiscard]] constexpr CQXComplex operator/(T b) const noexcept {
    if (IsWithinTolerance(b) != 0) return {QX_OVERFLOW_VALUE<T>, QX_OVERFLOW_VALUE<T>};
    return {m_real / b, m_imag / b};
  }

  // In-place arithmetic leaves the trigonometric form as it is: see the class.
  /// Adds in place; the trigonometric form stays as it is.
  constexpr CQXComplex& operator+=(const CQXComplex& b) noexcept { return SetParts(*this + b); }
  /// Subtracts in place; the trigonometric form stays as it is.
  constexpr CQXComplex& operator-=(const CQXComplex& b) noexcept { return SetParts(*this - b); }
  /// Multiplies in place; the trigonometric form stays as it is.
  constexpr CQXComplex& operator*=(const CQXComplex& b) noexcept { return SetParts(*this * b); }
  /// Divides in place; the trigonometric form stays as it is.
  constexpr CQXComplex& operator/=(const CQXComplex& b) noexcept { return SetParts(*this / b); }

  /// Adds in place; the trigonometric form stays as it is.
  constexpr CQXComplex& operator+=(T b) noexcept { return SetParts(*this + b); }
  /// Subtracts in place; the trigonometric form stays as it is.
  constexpr CQXComplex& operator-=(T b) noexcept { return SetParts(*this - b); }
  /// Multiplies in place; the trigonometric form stays as it is.
  constexpr CQXComplex& operator*=(T b) noexcept { return SetParts(*this * b); }
  /// Both parts become QX_OVERFLOW_VALUE when abs(b) is below QX_TOLERANCE.
  constexpr CQXComplex& operator/=(T b) noexcept {
    if (b < QX_TOLERANCE<T> && b > -QX_TOLERANCE<T>) return SetParts({QX_OVERFLOW_VALUE<T>, QX_OVERFLOW_VALUE<T>});
    return SetParts({m_real / b, m_imag / b});
  }

  /// 1 when the guarded distance is strictly below this object's precision.
  [[nodiscard]] std::int32_t operator==(const CQXComplex& b) const noexcept { return GuardedDistance(b) < m_precision; }
  /// 1 when the guarded distance is strictly above this object's precision. At the precision itself both are 0.
  [[nodiscard]] std::int32_t operator!=(const CQXComplex& b) const noexcept { return GuardedDistance(b) > m_precision; }

 private:
  [[nodiscard]] static constexpr std::int32_t IsWithinTolerance(T x) noexcept {
    return x >= -QX_TOLERANCE<T> && x <= QX_TOLERANCE<T>;
  }

  [[nodiscard]] T GuardedDistance(const CQXComplex& b) const noexcept {
    const T real = m_real - b.m_real;
    const T imag = m_imag - b.m_imag;
    return qxGuardedSqrt(qxProduct(real, real) + qxProduct(imag, imag), QX_TOLERANCE_SQUARED<T>);
  }

  constexpr CQXComplex& SetParts(const CQXComplex& b) noexcept {
    m_real = b.m_real;
    m_imag = b.m_imag;
    return *this;
  }

  void CalculateAlgebrForm() noexcept;
  void FillTrigonForm() const noexcept;

  T m_real = 0;
  T m_imag = 0;
  mutable T m_magnitude = 0;
  mutable T m_angle = 0;
  T m_precision = QX_TOLERANCE<T>;
  mutable std::int32_t m_trigCalculated = 0;
};

/// Magnitude from the parts alone: the guarded root of real^2 + imag^2. A calculated trigonometric form and the
/// precision of the object play no part; CQXComplex::Magn() uses both.
template <qxReal T>
[[nodiscard]] inline T qxAbs(const CQXComplex<T>& z) noexcept {
  return qxGuardedSqrt(qxProduct(z.Real(), z.Real()) + qxProduct(z.Imag(), z.Imag()), QX_TOLERANCE_SQUARED<T>);
}

/// 1 when the guarded distance of the parts is strictly below @p tolerance. Numbers closer than 3.16e-5
/// (float: 3.16e-4) have the distance 0, so they are almost equal for every positive tolerance; for a tolerance of 0
/// nothing is.
template <qxReal T>
[[nodiscard]] inline std::int32_t qxAreAlmostEqual(const CQXComplex<T>& a, const CQXComplex<T>& b,
                                                   qxNonDeduced<T> tolerance = QX_TOLERANCE<T>) noexcept {
  return qxAbs(a - b) < tolerance;
}

/// 1 when Magn() is strictly below @p tolerance.
template <qxReal T>
[[nodiscard]] inline std::int32_t qxIsAlmostZero(const CQXComplex<T>& z,
                                                 qxNonDeduced<T> tolerance = QX_TOLERANCE<T>) noexcept {
  return z.Magn() < tolerance;
}

/// The order of complex numbers: by Magn(), and by the real part where neither magnitude is larger.
template <qxReal T>
[[nodiscard]] inline bool qxIsGreater(const CQXComplex<T>& a, const CQXComplex<T>& b) noexcept {
  const T magnitudeA = a.Magn();
  const T magnitudeB = b.Magn();
  if (magnitudeA > magnitudeB) return true;
  if (magnitudeB > magnitudeA) return false;
  return a.Real() > b.Real();
}

/// Smallest Magn() of two numbers.
template <qxReal T>
[[nodiscard]] inline T qxAbsMin(CQXComplex<T> a, CQXComplex<T> b) noexcept {
  const T magnitudeA = a.Magn();
  const T magnitudeB = b.Magn();
  return magnitudeB < magnitudeA ? magnitudeB : magnitudeA;
}

/// Smallest Magn() of three numbers.
template <qxReal T>
[[nodiscard]] inline T qxAbsMin(CQXComplex<T> a, CQXComplex<T> b, CQXComplex<T> c) noexcept {
  const T magnitudeAB = qxAbsMin(a, b);
  const T magnitudeC = c.Magn();
  return magnitudeC < magnitudeAB ? magnitudeC : magnitudeAB;
}

/// Largest Magn() of two numbers.
template <qxReal T>
[[nodiscard]] inline T qxAbsMax(CQXComplex<T> a, CQXComplex<T> b) noexcept {
  const T magnitudeA = a.Magn();
  const T magnitudeB = b.Magn();
  return magnitudeB > magnitudeA ? magnitudeB : magnitudeA;
}

/// Largest Magn() of three numbers.
template <qxReal T>
[[nodiscard]] inline T qxAbsMax(CQXComplex<T> a, CQXComplex<T> b, CQXComplex<T> c) noexcept {
  const T magnitudeAB = qxAbsMax(a, b);
  const T magnitudeC = c.Magn();
  return magnitudeC > magnitudeAB ? magnitudeC : magnitudeAB;
}

/// Finds the smallest Magn() of an array and its index; of equal ones the first. Element 0 is read for every count.
template <qxReal T>
void qxAbsMinInArray(std::int32_t count, const CQXComplex<T>* array, qxNonDeduced<T>& minimum,
                     std::int32_t& index) noexcept {
  minimum = array[0].Magn();
  index = 0;
  for (std::int32_t i = 1; i < count; ++i) {
    const T magnitude = array[i].Magn();
    if (magnitude < minimum) {
      minimum = magnitude;
      index = i;
    }
  }
}

/// Finds the largest Magn() of an array and its index; of equal ones the first. Element 0 is read for every count.
template <qxReal T>
void qxAbsMaxInArray(std::int32_t count, const CQXComplex<T>* array, qxNonDeduced<T>& maximum,
                     std::int32_t& index) noexcept {
  maximum = array[0].Magn();
  index = 0;
  for (std::int32_t i = 1; i < count; ++i) {
    const T magnitude = array[i].Magn();
    if (magnitude > maximum) {
      maximum = magnitude;
      index = i;
    }
  }
}

/// Writes "1 - 2*i " for 1 - 2i: the real part, " + " or " - ", the size of the imaginary part, and "*i ".
template <qxReal T>
QX_API std::ostream& operator<<(std::ostream& stream, const CQXComplex<T>& z);

extern template class QX_API CQXComplex<float>;
extern template class QX_API CQXComplex<double>;
extern template QX_API std::ostream& operator<<(std::ostream&, const CQXComplex<float>&);
extern template QX_API std::ostream& operator<<(std::ostream&, const CQXComplex<double>&);
