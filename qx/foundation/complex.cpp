#include <qx/foundation/angle.h>
#include <qx/foundation/complex.h>
#include <qx/foundation/conversion.h>

#include <cstdlib>
#include <limits>
#include <numbers>
#include <ostream>

namespace {

template <qxReal T>
constexpr T pi = std::numbers::pi_v<T>;

/// Angle of the upper half plane, turned down when the imaginary part is negative.
template <qxReal T>
T WithSideOf(T imag, T angle, T fullTurn) {
  return imag < 0 ? fullTurn - angle : angle;
}

template <qxReal T>
T InDegrees(T radians) {
  return radians * 180 / pi<T>;
}

template <qxReal T>
T Truncate(T x) {
  return static_cast<T>(qxToInt32(x));
}

template <qxReal T>
T FloorPart(T x) {
  if (x >= 0) return Truncate(x);
  const T truncated = Truncate(x);
  return std::abs(x - truncated) < QX_TOLERANCE<T> ? truncated : Truncate(x - 1);
}

template <qxReal T>
T CeilPart(T x) {
  if (x <= 0) return Truncate(x);
  const T truncated = Truncate(x);
  return std::abs(x - truncated) < QX_TOLERANCE<T> ? truncated : Truncate(x + 1);
}

template <qxReal T>
T RoundPart(T x) {
  return x >= 0 ? Truncate(x + T(0.5)) : Truncate(x - T(0.5));
}

}  // namespace

template <qxReal T>
void CQXComplex<T>::SetInTrigForm(T magnitude, T angleInDegrees) noexcept {
  m_magnitude = magnitude;
  if (angleInDegrees < 0) {
    angleInDegrees += (std::trunc(-angleInDegrees / 360) + 1) * 360;
  } else if (angleInDegrees >= 360) {
    angleInDegrees -= std::trunc(angleInDegrees / 360) * 360;
  }
  m_angle = angleInDegrees;
  m_trigCalculated = 1;
  CalculateAlgebrForm();
}

template <qxReal T>
void CQXComplex<T>::CalculateAlgebrForm() noexcept {
  const T radians = qxWrappedRadians(m_angle, QX_TOLERANCE<T>);
  m_real = m_magnitude * std::cos(radians);
  m_imag = m_magnitude * std::sin(radians);
}

template <qxReal T>
void CQXComplex<T>::FillTrigonForm() const noexcept {
  const T square = qxProduct(m_real, m_real) + qxProduct(m_imag, m_imag);
  if (IsWithinTolerance(square) != 0) {
    m_magnitude = 0;
    m_angle = 0;
  } else {
    m_magnitude = qxGuardedSqrt(square);
    m_angle = WithSideOf(m_imag, InDegrees(std::acos(m_real / m_magnitude)), T(360));
  }
  m_trigCalculated = 1;
}

template <qxReal T>
T CQXComplex<T>::AngleInDegrees() const noexcept {
  if (m_trigCalculated != 0) return m_angle;
  const T magnitude = qxGuardedSqrt(qxProduct(m_real, m_real) + qxProduct(m_imag, m_imag));
  if (IsWithinTolerance(magnitude) != 0) return 0;
  return WithSideOf(m_imag, InDegrees(std::acos(m_real / magnitude)), T(360));
}

template <qxReal T>
T CQXComplex<T>::AngleInRadians() const noexcept {
  if (m_trigCalculated != 0) return qxWrappedRadians(m_angle, QX_TOLERANCE<T>);
  const T magnitude = qxGuardedSqrt(qxProduct(m_real, m_real) + qxProduct(m_imag, m_imag));
  if (IsWithinTolerance(magnitude) != 0) return 0;
  return WithSideOf(m_imag, std::acos(m_real / magnitude), 2 * pi<T>);
}

template <qxReal T>
CQXComplex<T> CQXComplex<T>::Floor() const noexcept {
  return {FloorPart(m_real), FloorPart(m_imag)};
}

template <qxReal T>
CQXComplex<T> CQXComplex<T>::Ceil() const noexcept {
  return {CeilPart(m_real), CeilPart(m_imag)};
}

template <qxReal T>
CQXComplex<T> CQXComplex<T>::Round() const noexcept {
  return {RoundPart(m_real), RoundPart(m_imag)};
}

template <qxReal T>
CQXComplex<T> CQXComplex<T>::Power(std::int32_t n) const noexcept {
  CQXComplex result;
  if (m_trigCalculated == 0) FillTrigonForm();
  const T m = m_magnitude;
  if (m < QX_TOLERANCE<T>) return result;
  const std::int64_t exponent = std::abs(std::int64_t{n});
  T power = 1;
  if (exponent <= 4) {
    for (std::int64_t i = 0; i < exponent; ++i) power *= m;
  } else {
    power = std::pow(m, static_cast<T>(exponent));
  }
  if (n < 0) power = std::abs(power) < QX_TOLERANCE<T> ? std::numeric_limits<T>::max() : 1 / power;
  result.SetInTrigForm(power, m_angle * static_cast<T>(n));
  return result;
}

template <qxReal T>
std::int32_t CQXComplex<T>::Roots(std::int32_t n, CQXComplex* target) const noexcept {
  if (m_trigCalculated == 0) FillTrigonForm();
  if (m_magnitude < QX_TOLERANCE<T>) return 0;
  if (n <= 0) return 1;
  const T order = static_cast<T>(n);
  const T magnitude = std::pow(m_magnitude, 1 / order);
  const T first = m_angle / order;
  const T step = 360 / order;
  for (std::int32_t k = 0; k < n; ++k) target[k].SetInTrigForm(magnitude, first + static_cast<T>(k) * step);
  return 1;
}

template <qxReal T>
std::ostream& operator<<(std::ostream& stream, const CQXComplex<T>& z) {
  stream << z.Real();
  if (z.Imag() < 0) {
    stream << " - " << std::abs(z.Imag());
  } else {
    stream << " + " << z.Imag();
  }
  return stream << "*i ";
}

template class CQXComplex<float>;
template class CQXComplex<double>;
template std::ostream& operator<<(std::ostream&, const CQXComplex<float>&);
template std::ostream& operator<<(std::ostream&, const CQXComplex<double>&);
