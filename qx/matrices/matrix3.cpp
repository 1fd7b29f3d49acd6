#include <qx/foundation/angle.h>
#include <qx/foundation/complex.h>
#include <qx/kernels/closed_form_kernels.h>
#include <qx/matrices/matrix3.h>
#include <qx/vectors/base_vector.h>
#include <qx/vectors/vector_functions.h>

#include <cmath>
#include <cstdint>
#include <limits>
#include <numbers>

namespace {

template <qxReal T>
constexpr T pi = std::numbers::pi_v<T>;

/// Below this the cosine of the middle Euler angle, or the sine of half an angle, counts as zero.
template <qxReal T>
constexpr T degenerateBound = T(1e-6);

template <qxReal T>
T WrappedDegrees(T angleInRadians) {
  const T wrapped = qxWrapAngle(angleInRadians * 180 / pi<T>, T(360), T(1e-9));
  // Just below 180 the number of turns may round up to 1.
  return wrapped < -180 ? wrapped + 360 : wrapped;
}

/// Into [-1, 1]; not a number stays.
template <qxReal T>
T Clamped(T x) {
  return x < -1 ? T(-1) : x > 1 ? T(1) : x;
}

/// Guarded root of a sum that is negative only by rounding.
template <qxReal T>
T RootOfNotNegative(T x) {
  return x < 0 ? T(0) : qxGuardedSqrt(x);
}

/// Makes every not-a-number the same one: its sign would depend on the compiler.
template <qxReal T>
void GiveOneSign(std::size_t count, T* numbers) {
  for (std::size_t i = 0; i < count; ++i) {
    if (std::isnan(numbers[i])) numbers[i] = std::numeric_limits<T>::quiet_NaN();
  }
}

/// The angle with the given sine and cosine, through the arc function that is well conditioned there.
template <qxReal T>
T AngleOf(T sine, T cosine) {
  const T s = Clamped(sine);
  const T c = Clamped(cosine);
  if (std::abs(c) <= T(0.707106781)) return s >= 0 ? std::acos(c) : -std::acos(c);
  const T angle = std::asin(s);
  if (c < 0) return angle > 0 ? pi<T> - angle : -pi<T> - angle;
  return angle;
}

/// The axes in their sequence of action, and the sign of that permutation: an odd one turns every sine.
struct RotationSequence {
  std::int32_t i, j, k;
  std::int32_t sign;
};

constexpr std::uint32_t sequencesNb = 6;
constexpr RotationSequence sequences[sequencesNb] = {{0, 1, 2, 1}, {0, 2, 1, -1}, {1, 0, 2, -1},
                                                     {1, 2, 0, 1}, {2, 1, 0, -1}, {2, 0, 1, 1}};

/// A complex number with plain arithmetic.
template <qxReal T>
struct Complex {
  T re, im;

  Complex operator-(const Complex& b) const { return {re - b.re, im - b.im}; }
  /// Sums alone: a sum beside a difference is what g++ fuses into one rounding where the processor can.
  Complex operator*(const Complex& b) const { return {re * b.re + -im * b.im, re * b.im + im * b.re}; }
  T SquareMagn() const { return re * re + im * im; }
};

template <qxReal T>
struct ComplexRow {
  Complex<T> c[3];

  ComplexRow Cross(const ComplexRow& b) const {
    return {{c[1] * b.c[2] - c[2] * b.c[1], c[2] * b.c[0] - c[0] * b.c[2], c[0] * b.c[1] - c[1] * b.c[0]}};
  }
  T SquareLength() const { return c[0].SquareMagn() + c[1].SquareMagn() + c[2].SquareMagn(); }
  T LargestPart() const {
    const CQXVector3<T> re(c[0].re, c[1].re, c[2].re);
    const CQXVector3<T> im(c[0].im, c[1].im, c[2].im);
    return CQXVector2<T>(re.NormInf(), im.NormInf()).NormInf();
  }
};

/// Row @p r of m - i im I.
template <qxReal T>
ComplexRow<T> RowLessImaginary(const CQXMatrix3<T>& m, std::int32_t r, T im) {
  ComplexRow<T> row{{{m(r, 0), 0}, {m(r, 1), 0}, {m(r, 2), 0}}};
  row.c[r].im = -im;
  return row;
}

/// The three pairs of rows, in the order in which they are tried.
constexpr std::int32_t rowPairs[3][2] = {{0, 1}, {0, 2}, {1, 2}};

}  // namespace

// ---- Eigenvectors

template <qxReal T>
void CQXMatrix3<T>::GetMainMinorColumns(std::int32_t r1, std::int32_t r2, std::int32_t& c1,
                                        std::int32_t& c2) const noexcept {
  const T m01 = std::abs(CalculateMinor(r1, r2, 0, 1));
  const T m02 = std::abs(CalculateMinor(r1, r2, 0, 2));
  const T m12 = std::abs(CalculateMinor(r1, r2, 1, 2));
  const bool use12 = m02 < m12 && !(m12 <= m01);
  const bool use02 = !(m02 < m12) && m01 < m02;
  c1 = use12 ? 1 : 0;
  c2 = use12 || use02 ? 2 : 1;
}

template <qxReal T>
void CQXMatrix3<T>::FindEigenvectorsFromRow(std::int32_t row, T* target) const noexcept {
  const CQXVector3<T> v = Base::RowVector(row);
  const std::int32_t k = v.GetIndexOfMaxComponent(1);
  std::int32_t i, j;
  GetPairOfIndices(k, i, j);
  CQXVector3<T> first, second;
  first[i] = 1;
  first[k] = -v[i] / v[k];
  second[j] = 1;
  second[k] = -v[j] / v[k];
  first.Dump(target);
  second.Dump(target + 3);
}

template <qxReal T>
std::int32_t CQXMatrix3<T>::TestRowsForDependence(std::int32_t r1, std::int32_t r2, T tolerance) const noexcept {
  return qxAreColinear(Base::RowVector(r1), Base::RowVector(r2), tolerance);
}

template <qxReal T>
std::int32_t CQXMatrix3<T>::TestComplexRowsForDependence(std::int32_t r1, std::int32_t r2, T im,
                                                         T tolerance) const noexcept {
  const ComplexRow<T> a = RowLessImaginary(*this, r1, im);
  const ComplexRow<T> b = RowLessImaginary(*this, r2, im);
  const T largest = CQXVector2<T>(a.LargestPart(), b.LargestPart()).NormInf();
  if (largest < tolerance) return 1;
  const ComplexRow<T> minors = a.Cross(b);
  const T bound = largest * tolerance;
  for (const Complex<T>& minor : minors.c) {
    if (std::sqrt(minor.SquareMagn()) >= bound) return 0;
  }
  return 1;
}

template <qxReal T>
std::int32_t CQXMatrix3<T>::FindZeroRows(std::int32_t* target, T tolerance) const noexcept {
  std::int32_t count = 0;
  for (std::int32_t r = 0; r < 3; ++r) {
    const CQXVector3<T> row = Base::RowVector(r);
    if (std::abs(row.X()) <= tolerance && std::abs(row.Y()) <= tolerance && std::abs(row.Z()) <= tolerance) {
      target[count++] = r;
    }
  }
  return count;
}

template <qxReal T>
std::int32_t CQXMatrix3<T>::FindZeroRows(T* target, T tolerance) const noexcept {
  std::int32_t rows[3];
  const std::int32_t count = FindZeroRows(rows, tolerance);
  for (std::int32_t i = 0; i < count; ++i) target[i] = static_cast<T>(rows[i]);
  return count;
}

template <qxReal T>
std::int32_t CQXMatrix3<T>::FindEigenvalues(T& a, T& b, T& c, T tolerance) const noexcept {
  const T minors = CalculateMinor(0, 1, 0, 1) + CalculateMinor(0, 2, 0, 2) + CalculateMinor(1, 2, 1, 2);
  const std::int32_t result = qxKernels::SolveReducedCubic(-Base::Trace(), minors, -Det(), a, b, c, tolerance);
  for (T* root : {&a, &b, &c}) {
    if (std::abs(*root) <= tolerance) *root = 0;
    GiveOneSign(1, root);
  }
  return result;
}

template <qxReal T>
std::int32_t CQXMatrix3<T>::FindEigenvectorsReal(T lambda, T* target, T tolerance) const noexcept {
  CQXMatrix3 m = Base::GetCharacteristicsMatrix(lambda);
  m.AnnulateSmallElements(tolerance);
  // A row of exact zeros is a zero row for a negative tolerance too: nothing can be divided by it.
  const T zeroBound = tolerance > 0 ? tolerance : T(0);
  std::int32_t zeroRows[3];
  const std::int32_t zeroRowsNb = m.FindZeroRows(zeroRows, zeroBound);
  if (zeroRowsNb == 3) {
    m.Unit();
    m.Dump(target);
    return 3;
  }
  if (zeroRowsNb < 2) {
    for (const auto& [r1, r2] : rowPairs) {
      if (m.TestRowsForDependence(r1, r2, tolerance) != 0) continue;
      std::int32_t c1, c2;
      m.GetMainMinorColumns(r1, r2, c1, c2);
      const CQXVector3<T> cross = m.RowVector(r1).Cross(m.RowVector(r2));
      const T main = cross[GetThirdIndex(c1, c2)];
      // With a tolerance of 0 rows pass for independent although no minor is left.
      if (main == 0) continue;
      (cross / main).Dump(target);
      GiveOneSign(3, target);
      return 1;
    }
  }
  std::int32_t row = 0;
  for (std::int32_t i = 0; i < zeroRowsNb && zeroRows[i] == row; ++i) ++row;
  m.FindEigenvectorsFromRow(row, target);
  GiveOneSign(6, target);
  return 2;
}

template <qxReal T>
std::int32_t CQXMatrix3<T>::FindEigenvectorComplex(const CQXComplex<T>& lambda, CQXBaseVector<CQXComplex<T>>& v,
                                                   T tolerance) const {
  const CQXMatrix3 m = Base::GetCharacteristicsMatrix(lambda.Real());
  ComplexRow<T> best{};
  T bestLength = 0;
  std::int32_t found = 0;
  for (const auto& [r1, r2] : rowPairs) {
    if (m.TestComplexRowsForDependence(r1, r2, lambda.Imag(), tolerance) != 0) continue;
    const ComplexRow<T> cross = RowLessImaginary(m, r1, lambda.Imag()).Cross(RowLessImaginary(m, r2, lambda.Imag()));
    const T length = cross.SquareLength();
    if (length > bestLength) {
      best = cross;
      bestLength = length;
      found = 1;
    }
  }
  if (found == 0) return 0;
  if (v.Dim() != 3) v.SetDimension(3);
  if (v.Data() == nullptr) return 0;
  for (std::int32_t i = 0; i < 3; ++i) v[i].Set(best.c[i].re, best.c[i].im);
  return 1;
}

template <qxReal T>
std::int32_t CQXMatrix3<T>::FindAnySolution(const CQXVector3<T>& b, CQXVector3<T>& x, T tolerance) const noexcept {
  CQXVector3<T> solution;
  std::int32_t condition;
  const std::int32_t result =
      qxKernels::Solve3x3System(m_c[0], m_c[1], m_c[2], m_c[3], m_c[4], m_c[5], m_c[6], m_c[7], m_c[8], b.X(), b.Y(),
                                b.Z(), solution.X(), solution.Y(), solution.Z(), condition, tolerance);
  x = solution;
  return result;
}

// ---- Rotations

template <qxReal T>
void CQXMatrix3<T>::SetRotationByEulerAngles(T axInDegrees, T ayInDegrees, T azInDegrees,
                                             qxRotationsOrder order) noexcept {
  if (static_cast<std::uint32_t>(order) >= sequencesNb) return;
  const auto [i, j, k, sign] = sequences[order];
  const CQXVector3<T> angles(qxWrappedRadians(axInDegrees), qxWrappedRadians(ayInDegrees),
                             qxWrappedRadians(azInDegrees));
  const T e = static_cast<T>(sign);
  const T si = e * std::sin(angles[i]), ci = std::cos(angles[i]);
  const T sj = e * std::sin(angles[j]), cj = std::cos(angles[j]);
  const T sk = e * std::sin(angles[k]), ck = std::cos(angles[k]);
  CQXMatrix3& m = *this;
  m(i, i) = ck * cj;
  m(i, j) = ck * sj * si - sk * ci;
  m(i, k) = ck * sj * ci + sk * si;
  m(j, i) = sk * cj;
  m(j, j) = sk * sj * si + ck * ci;
  m(j, k) = sk * sj * ci - ck * si;
  m(k, i) = -sj;
  m(k, j) = cj * si;
  m(k, k) = cj * ci;
}

template <qxReal T>
void CQXMatrix3<T>::ExtractEulerAngles(qxRotationsOrder order, T& axInDegrees, T& ayInDegrees,
                                       T& azInDegrees) const noexcept {
  if (static_cast<std::uint32_t>(order) >= sequencesNb) return;
  const auto [i, j, k, sign] = sequences[order];
  const CQXMatrix3& m = *this;
  const T e = static_cast<T>(sign);
  CQXVector3<T> angles;
  angles[j] = std::asin(Clamped(-e * m(k, i)));
  // The cosine of the middle angle, from the elements that hold it: well conditioned near the lock too.
  const T c = std::sqrt(m(k, j) * m(k, j) + m(k, k) * m(k, k));
  if (std::abs(c) <= degenerateBound<T>) {
    const T half = AngleOf(-e * m(j, k), m(j, j)) / 2;
    angles[i] = half;
    angles[k] = e * angles[j] <= 0 ? half : -half;
  } else {
    angles[i] = AngleOf(e * m(k, j) / c, m(k, k) / c);
    angles[k] = AngleOf(e * m(j, i) / c, m(i, i) / c);
  }
  axInDegrees = WrappedDegrees(angles[0]);
  ayInDegrees = WrappedDegrees(angles[1]);
  azInDegrees = WrappedDegrees(angles[2]);
}

template <qxReal T>
void CQXMatrix3<T>::SetRotationByAngleAxis(T angleInDegrees, const CQXVector3<T>& axis) noexcept {
  const T angle = qxWrappedRadians(angleInDegrees);
  CQXVector3<T> unit = axis;
  unit.Normalize();
  const T c = std::cos(angle);
  const T s = std::sin(angle);
  const T t = 1 - c;
  const T x = unit.X();
  const T y = unit.Y();
  const T z = unit.Z();
  *this = {x * x * t + c,     x * y * t - z * s, x * z * t + y * s,  //
           x * y * t + z * s, y * y * t + c,     y * z * t - x * s,  //
           x * z * t - y * s, y * z * t + x * s, z * z * t + c};
}

template <qxReal T>
void CQXMatrix3<T>::ExtractRotationAngleAxis(T& angleInDegrees, CQXVector3<T>& axis) const noexcept {
  const CQXMatrix3& m = *this;
  const T trace = Base::Trace();
  T halfAngle;
  CQXVector3<T> direction;
  if (trace >= 0) {
    const T e = RootOfNotNegative(trace + 1);
    const T f = RootOfNotNegative(3 - trace) / 2;
    if (std::abs(f) < degenerateBound<T>) {
      halfAngle = 0;
    } else {
      halfAngle = std::acos(Clamped(e / 2));
      direction = CQXVector3<T>(m(2, 1) - m(1, 2), m(0, 2) - m(2, 0), m(1, 0) - m(0, 1)) * (T(0.5) / (f * e));
    }
  } else {
    std::int32_t i = m(2, 2) < m(1, 1) ? 1 : 2;
    if (m(i, i) < m(0, 0)) i = 0;
    const std::int32_t j = (i + 1) % 3;
    const std::int32_t k = (i + 2) % 3;
    const T e = RootOfNotNegative(m(i, i) + 1 - m(j, j) - m(k, k));
    T f = RootOfNotNegative(m(j, j) + m(k, k) + 3 - m(i, i)) / 2;
    // A half turn about a coordinate axis leaves nothing to divide by: the other two components vanish.
    if (std::abs(f) < degenerateBound<T>) f = 1;
    const T g = T(0.5) / e / f;
    direction[i] = e / 2 / f;
    direction[j] = (m(i, j) + m(j, i)) * g;
    direction[k] = (m(i, k) + m(k, i)) * g;
    halfAngle = std::acos(Clamped((m(k, j) - m(j, k)) * (T(0.5) / e)));
  }
  direction.Normalize();
  angleInDegrees = WrappedDegrees(2 * halfAngle);
  axis = direction;
}

template <qxReal T>
std::int32_t CQXMatrix3<T>::ExtractScaleRotation(CQXMatrix3& out1, CQXMatrix3& out2, CQXMatrix3& out3,
                                                 std::int32_t side, T tolerance, std::int32_t& hasStretch,
                                                 std::int32_t& reflection) const {
  CQXMatrix3 rotation, stretch;
  if (Base::PolarDecomposition(rotation, stretch, side, tolerance) != 1) return 0;
  CQXMatrix3 factors = stretch;
  CQXMatrix3 axes;
  axes.Unit();
  const bool isDiagonal = stretch.IsDiagonal(tolerance) != 0;
  if (!isDiagonal) {
    if (stretch.SpectralDecomposition(axes, factors, 0, tolerance) != 1) return 0;
    if (axes.Det() < 0) axes.SetColVector(2, -axes.ColVector(2));
  }
  hasStretch = isDiagonal ? 0 : 1;
  reflection = rotation.Det() < 0 ? 1 : 0;
  out1 = side != 0 ? rotation : axes;
  out2 = factors;
  out3 = side != 0 ? axes : rotation;
  return 1;
}

template class CQXMatrix3<float>;
template class CQXMatrix3<double>;
