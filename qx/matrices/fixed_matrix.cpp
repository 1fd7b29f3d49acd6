#include <qx/matrices/internal/elimination.h>
#include <qx/matrices/internal/householder.h>
#include <qx/matrices/internal/jacobi.h>
#include <qx/matrices/internal/measures.h>
#include <qx/matrices/internal/polar.h>
#include <qx/matrices/internal/singular_values.h>
#include <qx/matrices/matrix2.h>
#include <qx/matrices/matrix3.h>
#include <qx/matrices/matrix4.h>

#include <algorithm>
#include <cstdint>

template <typename Derived, typename Vector, typename T, std::size_t N>
void CQXFixedMatrix<Derived, Vector, T, N>::CopyPartRow(std::int32_t row, std::int32_t column, std::int32_t count,
                                                        std::int32_t sourceRow, std::int32_t sourceColumn,
                                                        const Derived& source) noexcept {
  for (std::int32_t i = 0; i < count; ++i) (*this)(row, column + i) = source(sourceRow, sourceColumn + i);
}

template <typename Derived, typename Vector, typename T, std::size_t N>
void CQXFixedMatrix<Derived, Vector, T, N>::CopyPartColumn(std::int32_t column, std::int32_t row, std::int32_t count,
                                                           std::int32_t sourceColumn, std::int32_t sourceRow,
                                                           const Derived& source) noexcept {
  for (std::int32_t i = 0; i < count; ++i) (*this)(row + i, column) = source(sourceRow + i, sourceColumn);
}

template <typename Derived, typename Vector, typename T, std::size_t N>
void CQXFixedMatrix<Derived, Vector, T, N>::SetPartRowVector(std::int32_t row, std::int32_t column, std::int32_t count,
                                                             std::int32_t vectorStart, const Vector& vector) noexcept {
  for (std::int32_t i = 0; i < count; ++i) (*this)(row, column + i) = vector[vectorStart + i];
}

template <typename Derived, typename Vector, typename T, std::size_t N>
void CQXFixedMatrix<Derived, Vector, T, N>::SetPartColVector(std::int32_t column, std::int32_t row, std::int32_t count,
                                                             std::int32_t vectorStart, const Vector& vector) noexcept {
  for (std::int32_t i = 0; i < count; ++i) (*this)(row + i, column) = vector[vectorStart + i];
}

template <typename Derived, typename Vector, typename T, std::size_t N>
bool CQXFixedMatrix<Derived, Vector, T, N>::IsInside(std::int32_t firstRow, std::int32_t firstColumn,
                                                     std::int32_t lastRow, std::int32_t lastColumn) noexcept {
  return firstRow >= 0 && firstRow <= lastRow && lastRow < RowsNb() && firstColumn >= 0 && firstColumn <= lastColumn &&
         lastColumn < ColsNb();
}

template <typename Derived, typename Vector, typename T, std::size_t N>
void CQXFixedMatrix<Derived, Vector, T, N>::FillPart(std::int32_t firstRow, std::int32_t firstColumn,
                                                     std::int32_t lastRow, std::int32_t lastColumn, const T* source,
                                                     std::int32_t byRows) noexcept {
  if (!IsInside(firstRow, firstColumn, lastRow, lastColumn)) return;
  if (byRows != 0) {
    for (std::int32_t r = firstRow; r <= lastRow; ++r) {
      for (std::int32_t c = firstColumn; c <= lastColumn; ++c) (*this)(r, c) = *source++;
    }
  } else {
    for (std::int32_t c = firstColumn; c <= lastColumn; ++c) {
      for (std::int32_t r = firstRow; r <= lastRow; ++r) (*this)(r, c) = *source++;
    }
  }
}

template <typename Derived, typename Vector, typename T, std::size_t N>
void CQXFixedMatrix<Derived, Vector, T, N>::DumpPart(std::int32_t firstRow, std::int32_t firstColumn,
                                                     std::int32_t lastRow, std::int32_t lastColumn, T* target,
                                                     std::int32_t byRows) const noexcept {
  if (!IsInside(firstRow, firstColumn, lastRow, lastColumn)) return;
  if (byRows != 0) {
    for (std::int32_t r = firstRow; r <= lastRow; ++r) {
      for (std::int32_t c = firstColumn; c <= lastColumn; ++c) *target++ = (*this)(r, c);
    }
  } else {
    for (std::int32_t c = firstColumn; c <= lastColumn; ++c) {
      for (std::int32_t r = firstRow; r <= lastRow; ++r) *target++ = (*this)(r, c);
    }
  }
}

template <typename Derived, typename Vector, typename T, std::size_t N>
void CQXFixedMatrix<Derived, Vector, T, N>::AnnulateRelativelyDiagonal(std::int32_t power) noexcept {
  qxMatrices::AnnulateRelativelyDiagonal(N, N, Self().Data(), power);
}

template <typename Derived, typename Vector, typename T, std::size_t N>
T CQXFixedMatrix<Derived, Vector, T, N>::CorrelationCoefficient(const Derived& m) const noexcept {
  return qxMatrices::Correlation(N * N, Self().Data(), m.Data());
}

template <typename Derived, typename Vector, typename T, std::size_t N>
T CQXFixedMatrix<Derived, Vector, T, N>::Norm(qxMatrixNorm norm) const noexcept {
  return qxMatrices::Norm(N, N, Self().Data(), norm);
}

// ---- Elimination

template <typename Derived, typename Vector, typename T, std::size_t N>
std::int32_t CQXFixedMatrix<Derived, Vector, T, N>::DiagInverse(Derived& target, T tolerance) const noexcept {
  const Derived a = Self();
  target.SetToZero();
  if (a.IsDiagonal(qxMatrices::fixedBound<T>) == 0) return 0;
  if (!qxMatrices::HasInvertibleDiagonal(N, a.Data(), tolerance)) return 0;
  qxUnroll<N>([&](std::size_t i) { target.Data()[i * N + i] = 1 / a.Data()[i * N + i]; });
  return 1;
}

template <typename Derived, typename Vector, typename T, std::size_t N>
std::int32_t CQXFixedMatrix<Derived, Vector, T, N>::LU_Decomposition(Derived& L, Derived& U,
                                                                     T tolerance) const noexcept {
  Derived lowerT, upper;
  T sums[N];
  const bool isFactored = qxMatrices::FactorLU(N, Self().Data(), lowerT.Data(), upper.Data(), sums, tolerance);
  L = lowerT.Transpose();
  U = upper;
  return isFactored;
}

template <typename Derived, typename Vector, typename T, std::size_t N>
std::int32_t CQXFixedMatrix<Derived, Vector, T, N>::SolveSystem(const Vector& b, Vector& x, qxMatrixNorm norm,
                                                                T tolerance, T& conditionNumber) const noexcept {
  Derived inverse;
  if (Inverse(inverse, norm, tolerance, conditionNumber) != 1) return 0;
  x = inverse * b;
  return 1;
}

template <typename Derived, typename Vector, typename T, std::size_t N>
std::int32_t CQXFixedMatrix<Derived, Vector, T, N>::Inverse(Derived& target, qxMatrixNorm norm, T tolerance,
                                                            T& conditionNumber) const noexcept {
  Derived inverse;
  conditionNumber = QX_OVERFLOW_VALUE<T>;
  if (Self().Inverse(inverse, tolerance) != 0) return 0;
  conditionNumber = Norm(norm) * inverse.Norm(norm);
  target = inverse;
  return 1;
}

// ---- Singular values

template <typename Derived, typename Vector, typename T, std::size_t N>
std::int32_t CQXFixedMatrix<Derived, Vector, T, N>::QR_Decomposition(Derived& Q, Derived& R, T) const noexcept {
  Derived q, r = Self();
  if (!qxMatrices::FactorQR(N, N, r.Data(), q.Data())) return 0;
  Q = q;
  R = r;
  return 1;
}

template <typename Derived, typename Vector, typename T, std::size_t N>
std::int32_t CQXFixedMatrix<Derived, Vector, T, N>::SV_Decomposition(Derived& U, Derived& V, Vector& singular,
                                                                     T tolerance) const noexcept {
  qxMatrices::SingularForm<T> form;
  const std::int32_t code = qxMatrices::FindSingularForm(N, N, Self().Data(), {N, N}, tolerance, form);
  if (code != 0) return code;
  U = Derived(form.left.Data()).Transpose();
  V = Derived(form.right.Data()).Transpose();
  singular.Fill(form.values.Data());
  return 0;
}

template <typename Derived, typename Vector, typename T, std::size_t N>
std::int32_t CQXFixedMatrix<Derived, Vector, T, N>::CalculateSingularNumbers(Vector& singular,
                                                                             T tolerance) const noexcept {
  qxMatrices::SingularForm<T> form;
  const std::int32_t code = qxMatrices::FindSingularForm(N, N, Self().Data(), {0, 0}, tolerance, form);
  if (code == 0) singular.Fill(form.values.Data());
  return code;
}

template <typename Derived, typename Vector, typename T, std::size_t N>
std::int32_t CQXFixedMatrix<Derived, Vector, T, N>::CalculateRank(T tolerance) const noexcept {
  Vector singular;
  if (CalculateSingularNumbers(singular, T(0)) != 0) return -1;
  return static_cast<std::int32_t>(
      std::count_if(singular.Data(), singular.Data() + N, [=](T value) { return value > tolerance; }));
}

template <typename Derived, typename Vector, typename T, std::size_t N>
T CQXFixedMatrix<Derived, Vector, T, N>::ConditionNumber(qxMatrixNorm norm) const noexcept {
  if (norm == QX_MATRIX_NORM_SPECTRAL) return qxMatrices::SpectralConditionNumber(N, Self().Data());
  Derived inverse;
  T conditionNumber;
  static_cast<void>(Inverse(inverse, norm, qxMatrices::fixedBound<T>, conditionNumber));
  return conditionNumber;
}

// ---- Symmetric matrices and polar form

template <typename Derived, typename Vector, typename T, std::size_t N>
qxStatus CQXFixedMatrix<Derived, Vector, T, N>::SymmetricEigensolve(Vector& values, Derived& vectors,
                                                                    T tolerance) const {
  Derived rows;
  Vector numbers;
  std::int32_t rotations = 0;
  const qxStatus status =
      qxMatrices::FindSymmetricForm(N, Self().Data(), tolerance, numbers.Data(), rows.Data(), rotations);
  if (status != QX_STATUS_OK) return status;
  if (rotations == 50) return QX_STATUS_TOO_MANY_ROTATIONS;
  values = numbers;
  vectors = rows.Transpose();
  return QX_STATUS_OK;
}

template <typename Derived, typename Vector, typename T, std::size_t N>
std::int32_t CQXFixedMatrix<Derived, Vector, T, N>::SpectralDecomposition(Derived& P, Derived& D, std::int32_t flag,
                                                                          T tolerance) const {
  Derived rows;
  Vector numbers;
  std::int32_t rotations = 0;
  const qxStatus status =
      qxMatrices::FindSymmetricForm(N, Self().Data(), tolerance, numbers.Data(), rows.Data(), rotations);
  if (status != QX_STATUS_OK) return 0;
  P = flag == 0 ? rows.Transpose() : rows;
  D.SetToZero();
  qxUnroll<N>([&](std::size_t i) { D.Data()[i * N + i] = numbers.Data()[i]; });
  return 1;
}

template <typename Derived, typename Vector, typename T, std::size_t N>
std::int32_t CQXFixedMatrix<Derived, Vector, T, N>::PolarDecomposition(Derived& Q, Derived& S, std::int32_t flag,
                                                                       T tolerance) const noexcept requires(N > 2) {
  Derived q, s;
  const auto side = flag != 0 ? qxMatrices::OrthogonalFactor::left : qxMatrices::OrthogonalFactor::right;
  if (!qxMatrices::FindPolarForm(N, Self().Data(), side, tolerance, q.Data(), s.Data())) return 0;
  Q = q;
  S = s;
  return 1;
}

template <typename Derived, typename Vector, typename T, std::size_t N>
std::int32_t CQXFixedMatrix<Derived, Vector, T, N>::ExtractOrthogonal(Derived& Q, T tolerance) const noexcept {
  Derived symmetric;
  return Self().PolarDecomposition(Q, symmetric, 1, tolerance);
}

template class CQXFixedMatrix<CQXMatrix2<float>, CQXVector2<float>, float, 2>;
template class CQXFixedMatrix<CQXMatrix2<double>, CQXVector2<double>, double, 2>;
template class CQXFixedMatrix<CQXMatrix3<float>, CQXVector3<float>, float, 3>;
template class CQXFixedMatrix<CQXMatrix3<double>, CQXVector3<double>, double, 3>;
template class CQXFixedMatrix<CQXMatrix4<float>, CQXVector4<float>, float, 4>;
template class CQXFixedMatrix<CQXMatrix4<double>, CQXVector4<double>, double, 4>;
