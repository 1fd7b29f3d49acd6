#include <qx/matrices/matrix2.h>
#include <qx/matrices/matrix3.h>
#include <qx/matrices/matrix4.h>
#include <qx/matrices/matrix_mn.h>
#include <qx/matrices/matrix_n.h>
#include <qx/vectors/vector_n.h>

#include <cmath>
#include <cstdint>
#include <limits>

namespace {

/// False when memory was refused to an operand of a run-time size.
template <typename... Operands>
bool AreHeld(const Operands&... operands) {
  return ((operands.Data() != nullptr) && ...);
}

/// Largest of numbers that are not negative; not a number when one of them is not.
template <typename Vector>
typename Vector::Element Largest(const Vector& sums) {
  const typename Vector::Element total = sums.Norm1();
  return std::isnan(total) ? total : sums.NormInf();
}

}  // namespace

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
  const T factor = std::pow(T(10), static_cast<T>(power));
  const Vector diagonal = Diagonal();
  Self() = Make([&](std::size_t i) {
    if (IsOnDiagonal(i)) return At(i);
    const T ofRow = std::abs(diagonal.Data()[i / N]);
    const T ofColumn = std::abs(diagonal.Data()[i % N]);
    return std::abs(At(i)) * factor < (ofColumn < ofRow ? ofColumn : ofRow) ? T(0) : At(i);
  });
}

template <typename Derived, typename Vector, typename T, std::size_t N>
T CQXFixedMatrix<Derived, Vector, T, N>::CorrelationCoefficient(const Derived& m) const noexcept {
  const T mean = Mean();
  const T meanOther = m.Mean();
  const Derived deviation = Make([&](std::size_t i) { return At(i) - mean; });
  const Derived deviationOther = Make([&](std::size_t i) { return m.Data()[i] - meanOther; });
  const T scale = std::sqrt(deviation.InnerProduct(deviation)) * std::sqrt(deviationOther.InnerProduct(deviationOther));
  return scale == 0 ? T(0) : deviation.InnerProduct(deviationOther) / scale;
}

template <typename Derived, typename Vector, typename T, std::size_t N>
T CQXFixedMatrix<Derived, Vector, T, N>::Norm(qxMatrixNorm norm) const {
  switch (norm) {
    case QX_MATRIX_NORM_COLUMN_SUM:
      return Largest(MakeVector([&](std::size_t i) { return ColVector(static_cast<std::int32_t>(i)).Norm1(); }));
    case QX_MATRIX_NORM_ROW_SUM:
      return Largest(MakeVector([&](std::size_t i) { return RowVector(static_cast<std::int32_t>(i)).Norm1(); }));
    case QX_MATRIX_NORM_SPECTRAL: {
      Vector singular;
      return CalculateSingularNumbers(singular, 0) == 0 ? singular.NormInf() : std::numeric_limits<T>::quiet_NaN();
    }
    default:
      return qxGuardedSqrt(InnerProduct(Self()), QX_TOLERANCE_SQUARED<T>);
  }
}

template <typename Derived, typename Vector, typename T, std::size_t N>
std::int32_t CQXFixedMatrix<Derived, Vector, T, N>::DiagInverse(Derived& target, T tolerance) const noexcept {
  const bool isDiagonal = IsDiagonal(QX_PREDICATE_TOLERANCE<T>) != 0;
  const Vector diagonal = Diagonal();
  target.SetToZero();
  if (!isDiagonal || std::abs(diagonal.GetMinComponent(1)) < tolerance) return 0;
  qxUnroll<N>([&](std::size_t i) { target.Data()[i * N + i] = 1 / diagonal.Data()[i]; });
  return 1;
}

template <typename Derived, typename Vector, typename T, std::size_t N>
std::int32_t CQXFixedMatrix<Derived, Vector, T, N>::LU_Decomposition(Derived& L, Derived& U,
                                                                     T tolerance) const noexcept {
  const Derived a = Self();
  const std::int32_t n = RowsNb();
  L.SetToZero();
  U.SetToZero();
  if (std::abs(a(0, 0)) < tolerance) return 0;
  const auto product = [&](std::int32_t row, std::int32_t column, std::int32_t count) {
    T sum = 0;
    for (std::int32_t j = 0; j < count; ++j) sum += L(row, j) * U(j, column);
    return sum;
  };
  for (std::int32_t k = 0; k < n; ++k) {
    U(k, k) = a(k, k) - product(k, k, k);
    if (std::abs(U(k, k)) < tolerance) return 0;
    L(k, k) = 1;
    for (std::int32_t m = k + 1; m < n; ++m) {
      U(k, m) = a(k, m) - product(k, m, k);
      L(m, k) = (a(m, k) - product(m, k, k)) / U(k, k);
    }
  }
  return 1;
}

template <typename Derived, typename Vector, typename T, std::size_t N>
std::int32_t CQXFixedMatrix<Derived, Vector, T, N>::SolveSystem(const Vector& b, Vector& x, qxMatrixNorm norm,
                                                                T tolerance, T& conditionNumber) const {
  Derived inverse;
  if (Inverse(inverse, norm, tolerance, conditionNumber) != 1) return 0;
  x = inverse * b;
  return 1;
}

template <typename Derived, typename Vector, typename T, std::size_t N>
std::int32_t CQXFixedMatrix<Derived, Vector, T, N>::Inverse(Derived& target, qxMatrixNorm norm, T tolerance,
                                                            T& conditionNumber) const {
  const CQXMatrixMN<T> source(RowsNb(), Self().Data());
  CQXMatrixMN<T> inverse(RowsNb());
  if (!AreHeld(source, inverse)) {
    conditionNumber = QX_OVERFLOW_VALUE<T>;
    return 0;
  }
  if (source.Inverse(inverse, norm, tolerance, conditionNumber) != 1) return 0;
  inverse.Dump(target.Data());
  return 1;
}

template <typename Derived, typename Vector, typename T, std::size_t N>
std::int32_t CQXFixedMatrix<Derived, Vector, T, N>::QR_Decomposition(Derived& Q, Derived& R, T tolerance) const {
  const CQXMatrixMN<T> source(RowsNb(), Self().Data());
  CQXMatrixMN<T> q(RowsNb()), r(RowsNb());
  if (!AreHeld(source, q, r) || source.QR_Decomposition(q, r, tolerance) != 1) return 0;
  q.Dump(Q.Data());
  r.Dump(R.Data());
  return 1;
}

template <typename Derived, typename Vector, typename T, std::size_t N>
std::int32_t CQXFixedMatrix<Derived, Vector, T, N>::SV_Decomposition(Derived& U, Derived& V, Vector& singular,
                                                                     T tolerance) const {
  const CQXMatrixMN<T> source(RowsNb(), Self().Data());
  CQXMatrixMN<T> u(RowsNb()), v(RowsNb());
  CQXVectorN<T> values(RowsNb());
  if (!AreHeld(source, u, v, values)) return QX_STATUS_OUT_OF_MEMORY;
  const std::int32_t result = source.SV_Decomposition(u, v, values, tolerance);
  if (result != 0) return result;
  u.Dump(U.Data());
  v.Dump(V.Data());
  values.Dump(singular.Data());
  return 0;
}

template <typename Derived, typename Vector, typename T, std::size_t N>
std::int32_t CQXFixedMatrix<Derived, Vector, T, N>::CalculateSingularNumbers(Vector& singular, T tolerance) const {
  Derived u, v;
  return SV_Decomposition(u, v, singular, tolerance);
}

template <typename Derived, typename Vector, typename T, std::size_t N>
std::int32_t CQXFixedMatrix<Derived, Vector, T, N>::CalculateRank(T tolerance) const {
  const CQXMatrixMN<T> source(RowsNb(), Self().Data());
  return AreHeld(source) ? source.CalculateRank(tolerance) : -1;
}

template <typename Derived, typename Vector, typename T, std::size_t N>
T CQXFixedMatrix<Derived, Vector, T, N>::ConditionNumber(qxMatrixNorm norm) const {
  if (norm == QX_MATRIX_NORM_SPECTRAL) {
    Vector singular;
    if (CalculateSingularNumbers(singular, 0) != 0) return QX_OVERFLOW_VALUE<T>;
    const T smallest = singular.Data()[N - 1];
    return smallest <= QX_PREDICATE_TOLERANCE<T> ? QX_OVERFLOW_VALUE<T> : singular.Data()[0] / smallest;
  }
  Derived inverse;
  if (Self().Inverse(inverse, QX_PREDICATE_TOLERANCE<T>) != 0) return QX_OVERFLOW_VALUE<T>;
  return Norm(norm) * inverse.Norm(norm);
}

template <typename Derived, typename Vector, typename T, std::size_t N>
qxStatus CQXFixedMatrix<Derived, Vector, T, N>::SymmetricEigensolve(Vector& values, Derived& vectors,
                                                                    T tolerance) const {
  const CQXMatrixN<T> source(RowsNb(), Self().Data());
  CQXMatrixN<T> columns(RowsNb());
  CQXVectorN<T> numbers(RowsNb());
  if (!AreHeld(source, columns, numbers)) return QX_STATUS_OUT_OF_MEMORY;
  const qxStatus status = source.SymmetricEigensolve(numbers, columns, tolerance);
  if (status != QX_STATUS_OK) return status;
  numbers.Dump(values.Data());
  columns.Dump(vectors.Data());
  return QX_STATUS_OK;
}

template <typename Derived, typename Vector, typename T, std::size_t N>
std::int32_t CQXFixedMatrix<Derived, Vector, T, N>::SpectralDecomposition(Derived& P, Derived& D, std::int32_t flag,
                                                                          T tolerance) const {
  const CQXMatrixN<T> source(RowsNb(), Self().Data());
  CQXMatrixN<T> p(RowsNb()), d(RowsNb());
  if (!AreHeld(source, p, d) || source.SpectralDecomposition(p, d, flag, tolerance) != 1) return 0;
  p.Dump(P.Data());
  d.Dump(D.Data());
  return 1;
}

template <typename Derived, typename Vector, typename T, std::size_t N>
std::int32_t CQXFixedMatrix<Derived, Vector, T, N>::PolarDecomposition(Derived& Q, Derived& S, std::int32_t flag,
                                                                       T tolerance) const requires(N > 2) {
  const CQXMatrixN<T> source(RowsNb(), Self().Data());
  CQXMatrixN<T> q(RowsNb()), s(RowsNb());
  if (!AreHeld(source, q, s) || source.PolarDecomposition(q, s, flag, tolerance) != 1) return 0;
  q.Dump(Q.Data());
  s.Dump(S.Data());
  return 1;
}

template <typename Derived, typename Vector, typename T, std::size_t N>
std::int32_t CQXFixedMatrix<Derived, Vector, T, N>::ExtractOrthogonal(Derived& Q, T tolerance) const {
  Derived symmetric;
  return Self().PolarDecomposition(Q, symmetric, 1, tolerance);
}

template class CQXFixedMatrix<CQXMatrix2<float>, CQXVector2<float>, float, 2>;
template class CQXFixedMatrix<CQXMatrix2<double>, CQXVector2<double>, double, 2>;
template class CQXFixedMatrix<CQXMatrix3<float>, CQXVector3<float>, float, 3>;
template class CQXFixedMatrix<CQXMatrix3<double>, CQXVector3<double>, double, 3>;
template class CQXFixedMatrix<CQXMatrix4<float>, CQXVector4<float>, float, 4>;
template class CQXFixedMatrix<CQXMatrix4<double>, CQXVector4<double>, double, 4>;
