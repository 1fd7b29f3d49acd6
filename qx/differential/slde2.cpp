#include <qx/differential/slde2.h>
#include <qx/foundation/complex.h>
#include <qx/vectors/base_vector.h>
#include <qx/vectors/vector_functions.h>

#include <cmath>
#include <cstdint>
#include <utility>

namespace {

template <typename T>
CQXMatrix2<T> FromColumns(const CQXVector2<T>& first, const CQXVector2<T>& second) noexcept {
  return {first.X(), second.X(), first.Y(), second.Y()};
}

/// Position of the pivot of (A - l I) g = v for a double eigenvalue: the largest absolute element, by rows. Ties have
/// their own order, which decides the basis.
template <typename T>
std::int32_t IndexOfPivot(const CQXMatrix2<T>& b) noexcept {
  const T b0 = std::abs(b[0]), b1 = std::abs(b[1]), b2 = std::abs(b[2]), b3 = std::abs(b[3]);
  if (b0 < b1) {
    if (b3 <= b2) return b1 < b2 ? 2 : 1;
    return b1 < b3 ? 3 : 1;
  }
  if (b2 < b3) return b3 <= b0 ? 0 : 3;
  return b2 <= b0 ? 0 : 2;
}

}  // namespace

template <typename T>
void CQXSLDE2<T>::SetTransformation(const CQXMatrix2<T>& A, const CQXVector2<T>& f) noexcept {
  CQXSLDE2 system;
  system.m_A = A;
  system.m_f = f;
  system.m_homogeneous = f.IsAlmostZero(T(1e-6));
  system.SetInitialCondition(m_x0.X(), m_x0.Y(), m_t0);
  system.SetPrecision(m_precision);
  *this = system;
}

template <typename T>
void CQXSLDE2<T>::SetInitialCondition(T x, T y, T t0) noexcept {
  m_x0 = {x, y};
  m_t0 = t0;
}

// ---- General solution

template <typename T>
void CQXSLDE2<T>::CalculateGeneralSolution() {
  FindTypeOfGeneralSolution();
  SolveInhomogeneous();
}

template <typename T>
void CQXSLDE2<T>::FindTypeOfGeneralSolution() {
  T& l0 = m_eigenvalues.X();
  T& l1 = m_eigenvalues.Y();
  std::int32_t valuesNb = m_A.FindEigenvalues(l0, l1, m_precision);
  if (valuesNb == 2) {
    if (IsZero(l0 - l1)) {
      l1 = l0;
      valuesNb = 1;
    } else if (std::abs(l1) <= std::abs(l0)) {
      std::swap(l0, l1);
    }
  }
  m_inhomogenType = QX_SLDE2_INHOM_REGULAR;
  if (valuesNb == 0) {
    FindComplexBasis();
  } else if (valuesNb == 1) {
    FindBasisOfDoubleEigenvalue();
  } else {
    for (std::int32_t i = 0; i < 2; ++i) {
      T vectors[4];
      m_A.FindEigenvectorsReal(m_eigenvalues[i], vectors, m_precision);
      m_eigenvectors[i] = {vectors[0], vectors[1]};
    }
    m_generalType = QX_SLDE2_2_EXPONENTS;
    if (IsZero(l0)) m_inhomogenType = QX_SLDE2_INHOM_ZERO_EXPONENT;
  }
  if (m_homogeneous != 0) m_inhomogenType = QX_SLDE2_HOMOGENEOUS;
}

template <typename T>
void CQXSLDE2<T>::FindComplexBasis() {
  CQXBaseVector<CQXComplex<T>> v(2);
  m_generalType = QX_SLDE2_COMPLEX;
  m_eigenvectors[0] = m_eigenvectors[1] = CQXVector2<T>();
  if (v.Data() == nullptr) return;
  m_A.FindEigenvectorComplex({m_eigenvalues.X(), m_eigenvalues.Y()}, v, m_precision);
  m_eigenvectors[0] = {v[0].Real(), v[1].Real()};
  m_eigenvectors[1] = {v[0].Imag(), v[1].Imag()};
}

template <typename T>
void CQXSLDE2<T>::FindBasisOfDoubleEigenvalue() noexcept {
  const T l = m_eigenvalues.X();
  T vectors[4];
  const std::int32_t vectorsNb = m_A.FindEigenvectorsReal(l, vectors, m_precision);
  const CQXVector2<T> v(vectors[0], vectors[1]);
  CQXVector2<T> second;
  m_generalType = QX_SLDE2_1_EXP_2_EIGENVECTORS;
  if (vectorsNb == 2) {
    second = {vectors[2], vectors[3]};
  } else {
    // A generalised vector g with (A - l I) g = v: one component is enough.
    const CQXMatrix2<T> b = m_A.GetCharacteristicsMatrix(l);
    const std::int32_t index = IndexOfPivot(b);
    const T value = v[index / 2] / b[index];
    if (value == 0) {
      second = std::abs(v.X()) < std::abs(v.Y()) ? CQXVector2<T>(1, 0) : CQXVector2<T>(0, 1);
    } else {
      second[index % 2] = value;
      m_generalType = QX_SLDE2_1_EXP_1_EIGENVECTOR;
    }
  }
  m_eigenvectors[0] = v;
  m_eigenvectors[1] = second;
  if (IsZero(l)) {
    m_inhomogenType = m_generalType == QX_SLDE2_1_EXP_2_EIGENVECTORS ? QX_SLDE2_INHOM_ZERO_2_EIGENVECTORS
                                                                     : QX_SLDE2_INHOM_ZERO_1_EIGENVECTOR;
  }
}

template <typename T>
void CQXSLDE2<T>::SolveInhomogeneous() noexcept {
  m_polynomial[0] = m_polynomial[1] = CQXVector2<T>();
  m_coefficientsNb = 0;
  m_shift = 0;
  const CQXVector2<T>& v1 = m_eigenvectors[0];
  const CQXVector2<T>& v2 = m_eigenvectors[1];
  T c1 = 0, c2 = 0;
  switch (m_inhomogenType) {
    case QX_SLDE2_HOMOGENEOUS:
      break;
    case QX_SLDE2_INHOM_REGULAR:
      m_A.SolveSystem(m_f, m_polynomial[0], m_precision);
      m_coefficientsNb = 1;
      break;
    case QX_SLDE2_INHOM_ZERO_EXPONENT:
      DecomposeVectorByEigenvectors(m_f, c1, c2);
      m_polynomial[0] = v2 * (-c2 / m_eigenvalues.Y());
      m_polynomial[1] = v1 * c1;
      m_coefficientsNb = 2;
      break;
    case QX_SLDE2_INHOM_ZERO_1_EIGENVECTOR:
      DecomposeVectorByEigenvectors(m_f, c1, c2);
      m_polynomial[0] = v1 * c1 + v2 * c2;
      m_polynomial[1] = v1 * (T(0.5) * c2);
      m_coefficientsNb = 2;
      m_shift = 1;
      break;
    case QX_SLDE2_INHOM_ZERO_2_EIGENVECTORS:
      DecomposeVectorByEigenvectors(m_f, c1, c2);
      m_polynomial[0] = v1 * c1 + v2 * c2;
      m_coefficientsNb = 1;
      m_shift = 1;
      break;
  }
}

template <typename T>
void CQXSLDE2<T>::DecomposeVectorByEigenvectors(const CQXVector2<T>& v, T& c1, T& c2) const noexcept {
  v.DecomposeInBasis(m_eigenvectors[0], m_eigenvectors[1], c1, c2, m_precision);
}

template <typename T>
void CQXSLDE2<T>::FindParticularSolutionAtTime(T t, CQXVector2<T>& out) const noexcept {
  out = CQXVector2<T>();
  T power = m_shift == 0 ? T(1) : t;
  for (std::int32_t k = 0; k < m_coefficientsNb; ++k) {
    out += m_polynomial[k] * power;
    power *= t;
  }
}

// ---- Constants of the initial condition

template <typename T>
void CQXSLDE2<T>::CalculateParticularSolution() noexcept {
  switch (m_generalType) {
    case QX_SLDE2_GENERAL_NONE:
      break;
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
  }
}

template <typename T>
CQXVector2<T> CQXSLDE2<T>::FindCoefficients(const CQXMatrix2<T>& W) const noexcept {
  CQXVector2<T> right = m_x0;
  if (m_homogeneous == 0) {
    CQXVector2<T> particular;
    FindParticularSolutionAtTime(m_t0, particular);
    right -= particular;
  }
  CQXVector2<T> c;
  W.SolveSystem(right, c, m_precision);
  return c;
}

template <typename T>
void CQXSLDE2<T>::SetMatrix_2_Exponents() noexcept {
  const auto& [v1, v2] = m_eigenvectors;
  const CQXMatrix2<T> W = FromColumns(v1 * std::exp(m_eigenvalues.X() * m_t0), v2 * std::exp(m_eigenvalues.Y() * m_t0));
  const CQXVector2<T> c = FindCoefficients(W);
  m_C = FromColumns(v1 * c.X(), v2 * c.Y());
}

template <typename T>
void CQXSLDE2<T>::SetMatrix_1_Exp_1_Eigenvector() noexcept {
  const auto& [v, g] = m_eigenvectors;
  const T e = std::exp(m_eigenvalues.X() * m_t0);
  const CQXMatrix2<T> W = FromColumns(v * e, (v * m_t0 + g) * e);
  const CQXVector2<T> c = FindCoefficients(W);
  m_C = FromColumns(v * c.X() + g * c.Y(), v * c.Y());
}

template <typename T>
void CQXSLDE2<T>::SetMatrix_1_Exp_2_Eigenvectors() noexcept {
  const auto& [v1, v2] = m_eigenvectors;
  const T e = std::exp(m_eigenvalues.X() * m_t0);
  const CQXMatrix2<T> W = FromColumns(v1 * e, v2 * e);
  const CQXVector2<T> c = FindCoefficients(W);
  m_C = FromColumns(v1 * c.X(), v2 * c.Y());
}

template <typename T>
void CQXSLDE2<T>::SetMatrixComplexCase() noexcept {
  const auto& [u, w] = m_eigenvectors;
  const T e = std::exp(m_eigenvalues.X() * m_t0);
  const T cosine = std::cos(m_eigenvalues.Y() * m_t0);
  const T sine = std::sin(m_eigenvalues.Y() * m_t0);
  const CQXMatrix2<T> W = FromColumns((u * cosine - w * sine) * e, (u * sine + w * cosine) * e);
  const CQXVector2<T> c = FindCoefficients(W);
  m_C = FromColumns(u * c.X() + w * c.Y(), u * c.Y() - w * c.X());
}

// ---- Solution

template <typename T>
CQXVector2<T> CQXSLDE2<T>::Solution_2_Exponents(T t) const noexcept {
  return m_C * CQXVector2<T>(std::exp(m_eigenvalues.X() * t), std::exp(m_eigenvalues.Y() * t));
}

template <typename T>
CQXVector2<T> CQXSLDE2<T>::Solution_1_Exp_1_Eigenvector(T t) const noexcept {
  const T e = std::exp(m_eigenvalues.X() * t);
  return m_C.ColVector(0) * e + m_C.ColVector(1) * (t * e);
}

template <typename T>
CQXVector2<T> CQXSLDE2<T>::Solution_1_Exp_2_Eigenvectors(T t) const noexcept {
  return (m_C.ColVector(0) + m_C.ColVector(1)) * std::exp(m_eigenvalues.X() * t);
}

template <typename T>
CQXVector2<T> CQXSLDE2<T>::SolutionComplexCase(T t) const noexcept {
  const T e = std::exp(m_eigenvalues.X() * t);
  const T angle = m_eigenvalues.Y() * t;
  return m_C * CQXVector2<T>(e * std::cos(angle), e * std::sin(angle));
}

template <typename T>
CQXVector2<T> CQXSLDE2<T>::GetSolutionAtTime(T t) const noexcept {
  CQXVector2<T> x;
  switch (m_generalType) {
    case QX_SLDE2_GENERAL_NONE:
      break;
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
  }
  if (m_homogeneous == 0) {
    CQXVector2<T> particular;
    FindParticularSolutionAtTime(t, particular);
    x += particular;
  }
  return x;
}

template <typename T>
void CQXSLDE2<T>::CalculateTrajectory(T x, T y, std::int32_t n, CQXVector2<T>* out, T dt,
                                      std::int32_t forward) noexcept {
  SetInitialCondition(x, y, 0);
  if (n < 2) return;
  out[0] = {x, y};
  CalculateParticularSolution();
  const T step = forward != 0 ? dt : -dt;
  // The constants of a local copy stay in registers: no sample can be written over them.
  const CQXSLDE2 system = *this;
  for (std::int32_t i = 1; i < n; ++i) out[i] = system.GetSolutionAtTime(static_cast<T>(i) * step);
}

// ---- Tests

template <typename T>
std::int32_t CQXSLDE2<T>::TestHomogGeneralSolution() const noexcept {
  const auto& [v1, v2] = m_eigenvectors;
  const T l0 = m_eigenvalues.X(), l1 = m_eigenvalues.Y();
  const auto isEqual = [&](const CQXVector2<T>& a, const CQXVector2<T>& b) {
    return qxAreAlmostEqual(a, b, m_precision) != 0;
  };
  switch (m_generalType) {
    case QX_SLDE2_GENERAL_NONE:
      break;
    case QX_SLDE2_2_EXPONENTS:
      return isEqual(m_A * v1, v1 * l0) && isEqual(m_A * v2, v2 * l1);
    case QX_SLDE2_1_EXP_1_EIGENVECTOR:
      return isEqual(m_A * v1, v1 * l0) && isEqual(m_A.GetCharacteristicsMatrix(l0) * v2, v1);
    case QX_SLDE2_1_EXP_2_EIGENVECTORS:
      return isEqual(m_A * v1, v1 * l0) && isEqual(m_A * v2, v2 * l0);
    case QX_SLDE2_COMPLEX:
      return isEqual(m_A * v1, v1 * l0 - v2 * l1) && isEqual(m_A * v2, v1 * l1 + v2 * l0);
  }
  return 0;
}

template class CQXSLDE2<float>;
template class CQXSLDE2<double>;
