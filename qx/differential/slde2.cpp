#include <qx/differential/slde2.h>
#include <qx/foundation/complex.h>
#include <qx/vectors/base_vector.h>
#include <qx/vectors/vector_functions.h>

#include <cmath>

namespace {

template <qxReal T>
CQXMatrix2<T> FromColumns(const CQXVector2<T>& first, const CQXVector2<T>& second) {
  return {first.X(), second.X(), first.Y(), second.Y()};
}

}  // namespace

template <qxReal T>
void CQXSLDE2<T>::SetTransformation(const CQXMatrix2<T>& a, const CQXVector2<T>& f) noexcept {
  const CQXSLDE2 old = *this;
  *this = CQXSLDE2();
  m_a = a;
  m_f = f;
  m_x0 = old.m_x0;
  m_t0 = old.m_t0;
  m_precision = old.m_precision;
  m_isHomogeneous = f.IsAlmostZero(QX_PREDICATE_TOLERANCE<T>) != 0;
}

template <qxReal T>
void CQXSLDE2<T>::SetInitialCondition(T x, T y, T t0) noexcept {
  m_x0 = {x, y};
  m_t0 = t0;
}

template <qxReal T>
void CQXSLDE2<T>::CalculateGeneralSolution() {
  FindTypeOfGeneralSolution();
  SolveInhomogeneous();
}

// ---- Classification

template <qxReal T>
void CQXSLDE2<T>::FindTypeOfGeneralSolution() {
  // Until all is found there is no solution: memory may be refused on the way.
  m_generalType = QX_SLDE2_GENERAL_NONE;
  T l0, l1;
  std::int32_t count = m_a.FindEigenvalues(l0, l1, m_precision);
  if (count == 2 && IsWithinPrecision(l0 - l1)) {
    l1 = l0;
    count = 1;
  } else if (count == 2 && std::abs(l1) <= std::abs(l0)) {
    const T larger = l0;
    l0 = l1;
    l1 = larger;
  }
  m_eigenvalues = {l0, l1};
  m_inhomogenType = QX_SLDE2_INHOM_REGULAR;
  if (count == 0) {
    FindEigenvectorsOfPair();
  } else if (count == 1) {
    FindEigenvectorsOfDoubleRoot();
  } else {
    FindEigenvectorsOfTwoRoots();
  }
  if (m_isHomogeneous) m_inhomogenType = QX_SLDE2_HOMOGENEOUS;
}

template <qxReal T>
void CQXSLDE2<T>::FindEigenvectorsOfPair() {
  CQXBaseVector<CQXComplex<T>> v(2);
  m_generalType = QX_SLDE2_COMPLEX;
  m_eigenvectors[0] = m_eigenvectors[1] = CQXVector2<T>();
  if (v.Data() == nullptr) return;
  m_a.FindEigenvectorComplex(CQXComplex<T>(m_eigenvalues.X(), m_eigenvalues.Y()), v, m_precision);
  m_eigenvectors[0] = {v[0].Real(), v[1].Real()};
  m_eigenvectors[1] = {v[0].Imag(), v[1].Imag()};
}

template <qxReal T>
void CQXSLDE2<T>::FindEigenvectorsOfDoubleRoot() {
  const T l = m_eigenvalues.X();
  T vectors[4];
  const std::int32_t count = m_a.FindEigenvectorsReal(l, vectors, m_precision);
  CQXVector2<T>& first = m_eigenvectors[0];
  CQXVector2<T>& second = m_eigenvectors[1];
  first = {vectors[0], vectors[1]};
  bool areTwo = count == 2;
  if (areTwo) {
    second = {vectors[2], vectors[3]};
  } else {
    second = FindGeneralizedVector(l, first);
    if (second.X() == 0 && second.Y() == 0) {
      // Two close roots that count as one: the other unit vector completes the basis, so that the initial state holds.
      areTwo = true;
      second = std::abs(first.X()) < std::abs(first.Y()) ? CQXVector2<T>(1, 0) : CQXVector2<T>(0, 1);
    }
  }
  m_generalType = areTwo ? QX_SLDE2_1_EXP_2_EIGENVECTORS : QX_SLDE2_1_EXP_1_EIGENVECTOR;
  if (IsWithinPrecision(l)) {
    m_inhomogenType = areTwo ? QX_SLDE2_INHOM_ZERO_2_EIGENVECTORS : QX_SLDE2_INHOM_ZERO_1_EIGENVECTOR;
  }
}

template <qxReal T>
void CQXSLDE2<T>::FindEigenvectorsOfTwoRoots() {
  m_generalType = QX_SLDE2_2_EXPONENTS;
  for (std::int32_t i = 0; i < 2; ++i) {
    T vectors[4];
    m_a.FindEigenvectorsReal(m_eigenvalues[i], vectors, m_precision);
    m_eigenvectors[i] = {vectors[0], vectors[1]};
  }
  if (IsWithinPrecision(m_eigenvalues.X())) m_inhomogenType = QX_SLDE2_INHOM_ZERO_EXPONENT;
}

/// A vector g with (A - l I) g = v, from the row of the largest element of A - l I.
template <qxReal T>
CQXVector2<T> CQXSLDE2<T>::FindGeneralizedVector(T eigenvalue, const CQXVector2<T>& v) const noexcept {
  const CQXMatrix2<T> b = m_a.GetCharacteristicsMatrix(eigenvalue);
  const T b0 = std::abs(b[0]), b1 = std::abs(b[1]), b2 = std::abs(b[2]), b3 = std::abs(b[3]);
  std::int32_t largest;
  if (b0 < b1) {
    largest = b3 <= b2 ? (b1 < b2 ? 2 : 1) : (b1 < b3 ? 3 : 1);
  } else if (b2 < b3) {
    largest = b3 <= b0 ? 0 : 3;
  } else {
    largest = b2 <= b0 ? 0 : 2;
  }
  const T value = v[largest / 2] / b[largest];
  return largest % 2 != 0 ? CQXVector2<T>(0, value) : CQXVector2<T>(value, 0);
}

// ---- The particular solution of a forcing

template <qxReal T>
void CQXSLDE2<T>::DecomposeVectorByEigenvectors(const CQXVector2<T>& v, T& c1, T& c2) const noexcept {
  v.DecomposeInBasis(m_eigenvectors[0], m_eigenvectors[1], c1, c2, m_precision);
}

template <qxReal T>
void CQXSLDE2<T>::SolveInhomogeneous() noexcept {
  CQXVector2<T>& p0 = m_coefficients[0];
  CQXVector2<T>& p1 = m_coefficients[1];
  const CQXVector2<T>& v1 = m_eigenvectors[0];
  const CQXVector2<T>& v2 = m_eigenvectors[1];
  p0 = p1 = CQXVector2<T>();
  m_coefficientsNb = 0;
  m_shift = 0;
  if (m_inhomogenType == QX_SLDE2_HOMOGENEOUS) return;
  if (m_inhomogenType == QX_SLDE2_INHOM_REGULAR) {
    static_cast<void>(m_a.SolveSystem(m_f, p0, m_precision));  // a refusal leaves zero
    m_coefficientsNb = 1;
    return;
  }
  T c1 = 0, c2 = 0;
  DecomposeVectorByEigenvectors(m_f, c1, c2);
  if (m_inhomogenType == QX_SLDE2_INHOM_ZERO_EXPONENT) {
    p0 = v2 * (-c2 / m_eigenvalues.Y());
    p1 = v1 * c1;
    m_coefficientsNb = 2;
  } else if (m_inhomogenType == QX_SLDE2_INHOM_ZERO_1_EIGENVECTOR) {
    p0 = v1 * c1 + v2 * c2;
    p1 = v1 * (T(0.5) * c2);
    m_coefficientsNb = 2;
    m_shift = 1;
  } else {
    p0 = v1 * c1 + v2 * c2;
    m_coefficientsNb = 1;
    m_shift = 1;
  }
}

template <qxReal T>
void CQXSLDE2<T>::FindParticularSolutionAtTime(T t, CQXVector2<T>& out) const noexcept {
  out = CQXVector2<T>();
  T power = m_shift == 0 ? T(1) : t;
  for (std::int32_t k = 0; k < m_coefficientsNb; ++k) {
    out += m_coefficients[k] * power;
    power *= t;
  }
}

// ---- The constants of the initial condition

template <qxReal T>
void CQXSLDE2<T>::CalculateParticularSolution() noexcept {
  switch (m_generalType) {
    case QX_SLDE2_2_EXPONENTS:
      SetMatrix_2_Exponents();
      break;
    case QX_SLDE2_1_EXP_1_EIGENVECTOR:
      SetMatrix_1_Exp_1_Eigenvector();
      break;
    case QX_SLDE2_1_EXP_2_EIGENVECTORS:
      SetMatrix_1_Exp_2_Eigenvectors();
      break;
    case QX_SLDE2_COMPLEX:
      SetMatrixComplexCase();
      break;
    case QX_SLDE2_GENERAL_NONE:
      break;
  }
}

template <qxReal T>
CQXVector2<T> CQXSLDE2<T>::FindCoefficients(const CQXMatrix2<T>& w) const noexcept {
  CQXVector2<T> right = m_x0;
  if (!m_isHomogeneous) {
    CQXVector2<T> particular;
    FindParticularSolutionAtTime(m_t0, particular);
    right -= particular;
  }
  // The form without a condition number solves by the same steps, and needs no memory.
  CQXVector2<T> c;
  static_cast<void>(w.SolveSystem(right, c, m_precision));  // a refusal leaves zero
  return c;
}

template <qxReal T>
void CQXSLDE2<T>::SetMatrix_2_Exponents() noexcept {
  const CQXVector2<T>& v1 = m_eigenvectors[0];
  const CQXVector2<T>& v2 = m_eigenvectors[1];
  const CQXVector2<T> c =
      FindCoefficients(FromColumns(v1 * std::exp(m_eigenvalues.X() * m_t0), v2 * std::exp(m_eigenvalues.Y() * m_t0)));
  m_c = FromColumns(v1 * c.X(), v2 * c.Y());
}

template <qxReal T>
void CQXSLDE2<T>::SetMatrix_1_Exp_1_Eigenvector() noexcept {
  const CQXVector2<T>& v = m_eigenvectors[0];
  const CQXVector2<T>& g = m_eigenvectors[1];
  const T e = std::exp(m_eigenvalues.X() * m_t0);
  const CQXVector2<T> c = FindCoefficients(FromColumns(v * e, (v * m_t0 + g) * e));
  m_c = FromColumns(v * c.X() + g * c.Y(), v * c.Y());
}

template <qxReal T>
void CQXSLDE2<T>::SetMatrix_1_Exp_2_Eigenvectors() noexcept {
  const CQXVector2<T>& v1 = m_eigenvectors[0];
  const CQXVector2<T>& v2 = m_eigenvectors[1];
  const T e = std::exp(m_eigenvalues.X() * m_t0);
  const CQXVector2<T> c = FindCoefficients(FromColumns(v1 * e, v2 * e));
  m_c = FromColumns(v1 * c.X(), v2 * c.Y());
}

template <qxReal T>
void CQXSLDE2<T>::SetMatrixComplexCase() noexcept {
  const CQXVector2<T>& u = m_eigenvectors[0];
  const CQXVector2<T>& w = m_eigenvectors[1];
  const T e = std::exp(m_eigenvalues.X() * m_t0);
  const T cosine = std::cos(m_eigenvalues.Y() * m_t0);
  const T sine = std::sin(m_eigenvalues.Y() * m_t0);
  // Sums alone: g++ makes fused operations of alternating sums and differences where it may, options regardless.
  const CQXVector2<T> c = FindCoefficients(FromColumns((u * cosine + w * -sine) * e, (u * sine + w * cosine) * e));
  m_c = FromColumns(u * c.X() + w * c.Y(), u * c.Y() + w * -c.X());
}

// ---- The solution

template <qxReal T>
CQXVector2<T> CQXSLDE2<T>::Solution_2_Exponents(T t) const noexcept {
  return m_c * CQXVector2<T>(std::exp(m_eigenvalues.X() * t), std::exp(m_eigenvalues.Y() * t));
}

template <qxReal T>
CQXVector2<T> CQXSLDE2<T>::Solution_1_Exp_1_Eigenvector(T t) const noexcept {
  const T e = std::exp(m_eigenvalues.X() * t);
  return m_c * CQXVector2<T>(e, t * e);
}

template <qxReal T>
CQXVector2<T> CQXSLDE2<T>::Solution_1_Exp_2_Eigenvectors(T t) const noexcept {
  return (m_c.ColVector(0) + m_c.ColVector(1)) * std::exp(m_eigenvalues.X() * t);
}

template <qxReal T>
CQXVector2<T> CQXSLDE2<T>::SolutionComplexCase(T t) const noexcept {
  const T e = std::exp(m_eigenvalues.X() * t);
  return m_c * CQXVector2<T>(e * std::cos(m_eigenvalues.Y() * t), e * std::sin(m_eigenvalues.Y() * t));
}

template <qxReal T>
CQXVector2<T> CQXSLDE2<T>::GetSolutionAtTime(T t) const noexcept {
  CQXVector2<T> x;
  switch (m_generalType) {
    case QX_SLDE2_2_EXPONENTS:
      x = Solution_2_Exponents(t);
      break;
    case QX_SLDE2_1_EXP_1_EIGENVECTOR:
      x = Solution_1_Exp_1_Eigenvector(t);
      break;
    case QX_SLDE2_1_EXP_2_EIGENVECTORS:
      x = Solution_1_Exp_2_Eigenvectors(t);
      break;
    case QX_SLDE2_COMPLEX:
      x = SolutionComplexCase(t);
      break;
    case QX_SLDE2_GENERAL_NONE:
      return x;
  }
  if (!m_isHomogeneous) {
    CQXVector2<T> particular;
    FindParticularSolutionAtTime(t, particular);
    x += particular;
  }
  return x;
}

template <qxReal T>
void CQXSLDE2<T>::CalculateTrajectory(T x, T y, std::int32_t n, CQXVector2<T>* out, T dt,
                                      std::int32_t forward) noexcept {
  SetInitialCondition(x, y, 0);
  if (n < 2) return;
  out[0] = m_x0;
  CalculateParticularSolution();
  const T step = forward != 0 ? dt : -dt;
  for (std::int32_t i = 1; i < n; ++i) out[i] = GetSolutionAtTime(static_cast<T>(i) * step);
}

// ---- Tests

template <qxReal T>
std::int32_t CQXSLDE2<T>::TestHomogGeneralSolution() const noexcept {
  const T l1 = m_eigenvalues.X(), l2 = m_eigenvalues.Y();
  const CQXVector2<T>& v1 = m_eigenvectors[0];
  const CQXVector2<T>& v2 = m_eigenvectors[1];
  const auto areEqual = [&](const CQXVector2<T>& a, const CQXVector2<T>& b) {
    return qxAreAlmostEqual(a, b, m_precision) != 0;
  };
  switch (m_generalType) {
    case QX_SLDE2_2_EXPONENTS:
      return areEqual(m_a * v1, v1 * l1) && areEqual(m_a * v2, v2 * l2);
    case QX_SLDE2_1_EXP_1_EIGENVECTOR:
      return areEqual(m_a * v1, v1 * l1) && areEqual(m_a.GetCharacteristicsMatrix(l1) * v2, v1);
    case QX_SLDE2_1_EXP_2_EIGENVECTORS:
      return areEqual(m_a * v1, v1 * l1) && areEqual(m_a * v2, v2 * l1);
    case QX_SLDE2_COMPLEX:
      return areEqual(m_a * v1, v1 * l1 - v2 * l2) && areEqual(m_a * v2, v1 * l2 + v2 * l1);
    case QX_SLDE2_GENERAL_NONE:
      break;
  }
  return 0;
}

template class CQXSLDE2<float>;
template class CQXSLDE2<double>;
