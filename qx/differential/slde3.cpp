#include <qx/differential/slde3.h>
#include <qx/foundation/tolerance.h>
#include <qx/vectors/internal/wide.h>

#include <algorithm>
#include <cmath>
#include <limits>
#include <utility>

namespace {

using qxVectors::Narrow;
using qxVectors::Wide;
using Vector = CQXVector3<double>;
using Matrix = CQXMatrix3<double>;

constexpr double eps = std::numeric_limits<double>::epsilon();

/// The largest root of w^3 + p w = q for q >= 0; it is not negative.
double LargestRoot(double p, double q) {
  const double discriminant = q * q / 4 + p * p * p / 27;
  double w;
  if (discriminant <= 0) {  // three real roots
    const double radius = std::sqrt(-p / 3);
    w = radius > 0 ? 2 * radius * std::cos(std::acos(std::clamp(q / 2 / (radius * radius * radius), -1.0, 1.0)) / 3)
                   : 0;
  } else {
    const double u = std::cbrt(q / 2 + std::sqrt(discriminant));
    w = u - p / (3 * u);
  }
  for (int step = 0; step < 2; ++step) {  // what cancelled
    const double slope = 3 * w * w + p;
    if (slope > 0) w -= ((w * w + p) * w - q) / slope;
  }
  return w;
}

/// cosh(sqrt(s) t), or the cosine of a negative s, and sinh(sqrt(s) t) / sqrt(s).
std::pair<double, double> HyperbolicPair(double s, double t) {
  const double root = std::sqrt(std::abs(s));
  if (root == 0) return {1, t};
  return s > 0 ? std::pair(std::cosh(root * t), std::sinh(root * t) / root)
               : std::pair(std::cos(root * t), std::sin(root * t) / root);
}

/// The third function of the class's formula, h(t): (e^(d t) - c - d u) / (d^2 - s) with c, u of HyperbolicPair().
double ThirdFunction(double d, double s, double t) {
  if (!(std::max(std::abs(d), std::sqrt(std::abs(s))) * std::abs(t) <= 1)) {
    const auto [c, u] = HyperbolicPair(s, t);
    return (std::exp(d * t) - c - d * u) / (d * d - s);
  }
  // t^2 / 2! + d t^3 / 3! + (d^2 + s) t^4 / 4! + ...: coefficient k is d times the one before, plus s^(k / 2) for even
  // k.
  double sum = 0, coefficient = 0, power = 1, factor = t / 1;
  for (int k = 0; k < 20; ++k) {
    factor *= t / (k + 2);
    coefficient = d * coefficient + (k % 2 == 0 ? power : 0);
    if (k % 2 == 0) power *= s;
    sum += coefficient * factor;
  }
  return sum;
}

double SumOfRows(const Matrix& a) { return a.Norm(QX_MATRIX_NORM_ROW_SUM); }

/// Largest of the magnitudes of all determinants of two rows and two columns.
double LargestMinor(const Matrix& m) {
  double largest = 0;
  for (std::int32_t r = 0; r < 3; ++r) {
    const Vector minors = m.RowVector(r).Cross(m.RowVector((r + 1) % 3));
    largest = std::max(largest, minors.NormInf());
  }
  return largest;
}

}  // namespace

template <qxReal T>
void CQXSLDE3<T>::SetTransformation(const CQXMatrix3<T>& a, const CQXVector3<T>& f) noexcept {
  const CQXSLDE3 old = *this;
  *this = CQXSLDE3();
  for (std::int32_t r = 0; r < 3; ++r) m_a.SetRowVector(r, Wide(a.RowVector(r)));
  m_f = Wide(f);
  m_x0 = old.m_x0;
  m_t0 = old.m_t0;
  m_precision = old.m_precision;
  m_isHomogeneous = f.IsAlmostZero(QX_PREDICATE_TOLERANCE<T>) != 0;
}

template <qxReal T>
void CQXSLDE3<T>::SetInitialCondition(T x, T y, T z, T t0) noexcept {
  m_x0 = Wide(CQXVector3<T>(x, y, z));
  m_t0 = static_cast<double>(t0);
}

template <qxReal T>
void CQXSLDE3<T>::CalculateGeneralSolution() noexcept {
  FindEigenvalues();
  FindTypeOfGeneralSolution();
  SolveInhomogeneous();
}

/// From the matrix less the mean of its eigenvalues: x^3 + p x + q = 0. The root of the largest magnitude stands apart
/// from the two others, which follow from it.
template <qxReal T>
void CQXSLDE3<T>::FindEigenvalues() noexcept {
  const double mean = m_a.Trace() / 3;
  const Matrix b = m_a.GetCharacteristicsMatrix(mean);
  const double p = b.CalculateMinor(0, 1, 0, 1) + b.CalculateMinor(0, 2, 0, 2) + b.CalculateMinor(1, 2, 1, 2);
  const double q = -b.Det();
  const double root = q > 0 ? -LargestRoot(p, q) : LargestRoot(p, -q);
  m_real = mean + root;
  m_mean = mean - root / 2;
  m_square = -0.75 * root * root - p;
}

// ---- Classification

/// The eigenvalues that count as equal; of those rounding of the elements leaves a difference whose square, and of
/// three whose cube, is of the size of the rounding.
template <qxReal T>
qxSLDE3GeneralType CQXSLDE3<T>::FindJordanForm() const noexcept {
  const double precision = static_cast<double>(m_precision);
  const double size = SumOfRows(m_a);
  const double triple = std::max(precision, std::cbrt(16 * eps) * size);
  if (std::abs(m_real - m_mean) <= triple && std::abs(m_square) <= triple * triple) {
    const Matrix b = m_a.GetCharacteristicsMatrix(m_a.Trace() / 3);
    if (b.IsAlmostZero(precision) != 0) return QX_SLDE3_1_EXP_3_EIGENVECTORS;
    return LargestMinor(b) <= precision ? QX_SLDE3_1_EXP_2_EIGENVECTORS : QX_SLDE3_1_EXP_1_EIGENVECTOR;
  }
  if (std::abs(m_square) <= precision * precision / 4 + 16 * eps * size * size) {
    const double gap = std::abs(m_real - m_mean);  // a coupling of the two takes part times this
    const bool isDiagonal = LargestMinor(m_a.GetCharacteristicsMatrix(m_mean)) <= precision * (1 + gap);
    return isDiagonal ? QX_SLDE3_2_EXP_3_EIGENVECTORS : QX_SLDE3_2_EXP_2_EIGENVECTORS;
  }
  return m_square < 0 ? QX_SLDE3_1_EXP_COMPLEX : QX_SLDE3_3_EXPONENTS;
}

template <qxReal T>
void CQXSLDE3<T>::FindTypeOfGeneralSolution() noexcept {
  m_generalType = FindJordanForm();
  const bool isPair = m_generalType == QX_SLDE3_1_EXP_COMPLEX;
  const bool isTriple = m_generalType >= QX_SLDE3_1_EXP_3_EIGENVECTORS && !isPair;
  const double root = m_generalType == QX_SLDE3_3_EXPONENTS || isPair ? std::sqrt(std::abs(m_square)) : 0;
  double values[3] = {m_real, m_mean - root, m_mean + root};
  if (isPair) values[1] = m_mean, values[2] = root;
  if (isTriple) std::fill_n(values, 3, m_a.Trace() / 3);
  for (double& value : values) {
    if (std::abs(value) <= static_cast<double>(m_precision)) value = 0;
  }
  // The parts of a pair are no eigenvalues.
  const std::ptrdiff_t zerosNb = std::count(values, values + (isPair ? 1 : 3), 0.0);
  m_inhomogenType = m_isHomogeneous ? QX_SLDE3_HOMOGENEOUS : static_cast<qxSLDE3InhomogenType>(1 + zerosNb);
  if (!isPair) std::sort(values, values + 3, [](double a, double b) { return std::abs(a) < std::abs(b); });
  m_eigenvalues = Narrow<T>(Vector(values[0], values[1], values[2]));
}

// ---- The particular solution of a forcing

/// The forcing falls into a part g in the space of the zero eigenvalue and a rest. The rest is met by a constant, g by
/// g t + A g t^2 / 2 + A^2 g t^3 / 6 as far as A does not take it to zero.
template <qxReal T>
void CQXSLDE3<T>::SolveInhomogeneous() noexcept {
  for (Vector& coefficient : m_coefficients) coefficient.SetToZero();
  const Vector af = m_a * m_f;
  const Vector aaf = m_a * af;
  switch (m_inhomogenType) {
    case QX_SLDE3_HOMOGENEOUS:
      break;
    case QX_SLDE3_INHOM_REGULAR: {
      Matrix inverse;
      if (m_a.Inverse(inverse, 0.0) == 0) m_coefficients[0] = inverse * -m_f;
      break;
    }
    case QX_SLDE3_INHOM_ZERO_SIMPLE: {
      // The two others have this sum and product; on their space A^2 = sum A - product I.
      const double sum = m_a.Trace();
      const double product =
          m_a.CalculateMinor(0, 1, 0, 1) + m_a.CalculateMinor(0, 2, 0, 2) + m_a.CalculateMinor(1, 2, 1, 2);
      m_coefficients[1] = (aaf - af * sum) / product + m_f;
      const Vector rest = m_f - m_coefficients[1];
      m_coefficients[0] = (m_a * rest - rest * sum) / product;
      break;
    }
    case QX_SLDE3_INHOM_ZERO_DOUBLE: {
      const double other = m_a.Trace();
      const Vector rest = aaf / (other * other);
      m_coefficients[0] = rest / -other;
      m_coefficients[1] = m_f - rest;
      m_coefficients[2] = (m_a * m_coefficients[1]) / 2.0;
      break;
    }
    case QX_SLDE3_INHOM_ZERO_TRIPLE:
      m_coefficients[1] = m_f;
      m_coefficients[2] = af / 2.0;
      m_coefficients[3] = aaf / 6.0;
      break;
  }
}

template <qxReal T>
CQXVector3<double> CQXSLDE3<T>::ParticularSolutionAt(double time) const noexcept {
  const Vector* const c = m_coefficients;
  return ((c[3] * time + c[2]) * time + c[1]) * time + c[0];
}

template <qxReal T>
CQXVector3<double> CQXSLDE3<T>::ParticularVelocityAt(double time) const noexcept {
  const Vector* const c = m_coefficients;
  return (c[3] * (3 * time) + c[2] * 2.0) * time + c[1];
}

// ---- The constants of the initial condition, and the solution

template <qxReal T>
void CQXSLDE3<T>::CalculateParticularSolution() noexcept {
  if (m_generalType == QX_SLDE3_GENERAL_NONE) return;
  const Matrix b = m_a.GetCharacteristicsMatrix(m_mean);
  m_c[0] = m_x0 - ParticularSolutionAt(0);
  m_c[1] = b * m_c[0];
  m_c[2] = b * m_c[1] - m_c[0] * m_square;
}

template <qxReal T>
CQXVector3<T> CQXSLDE3<T>::GetSolutionAtTime(T t) const noexcept {
  if (m_generalType == QX_SLDE3_GENERAL_NONE) return {};
  const double time = static_cast<double>(t) - m_t0;
  const auto [c, u] = HyperbolicPair(m_square, time);
  const Vector homogeneous = m_c[0] * c + m_c[1] * u + m_c[2] * ThirdFunction(m_real - m_mean, m_square, time);
  return Narrow<T>(homogeneous * std::exp(m_mean * time) + ParticularSolutionAt(time));
}

template <qxReal T>
void CQXSLDE3<T>::CalculateTrajectory(T x, T y, T z, std::int32_t n, CQXVector3<T>* out, T dt,
                                      std::int32_t forward) noexcept {
  SetInitialCondition(x, y, z, 0);
  if (n < 2) return;
  out[0] = {x, y, z};
  CalculateParticularSolution();
  const T step = forward != 0 ? dt : -dt;
  for (std::int32_t i = 1; i < n; ++i) out[i] = GetSolutionAtTime(static_cast<T>(i) * step);
}

// ---- Tests

template <qxReal T>
std::int32_t CQXSLDE3<T>::TestHomogGeneralSolution() const noexcept {
  if (m_generalType == QX_SLDE3_GENERAL_NONE) return 0;
  const Matrix b = m_a.GetCharacteristicsMatrix(m_mean);
  const double size = 1 + SumOfRows(m_a);
  const Matrix residual = (b * b).GetCharacteristicsMatrix(m_square) * m_a.GetCharacteristicsMatrix(m_real);
  return residual.IsAlmostZero(static_cast<double>(m_precision) * size * size * size);
}

template <qxReal T>
std::int32_t CQXSLDE3<T>::TestInhomSolution() const noexcept {
  if (m_generalType == QX_SLDE3_GENERAL_NONE) return 0;
  if (m_isHomogeneous) return 1;
  for (const double time : {0.0, 1.0}) {
    const Vector x = ParticularSolutionAt(time);
    const double size = 1 + m_f.NormInf() + SumOfRows(m_a) * x.NormInf();
    if (!((ParticularVelocityAt(time) - m_a * x - m_f).NormInf() <= static_cast<double>(m_precision) * size)) return 0;
  }
  return 1;
}

template class CQXSLDE3<float>;
template class CQXSLDE3<double>;
