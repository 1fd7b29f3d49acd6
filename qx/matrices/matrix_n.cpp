#include <qx/kernels/array_kernels.h>
#include <qx/kernels/matrix_kernels.h>
#include <qx/kernels/rotation_kernels.h>
#include <qx/matrices/internal/closed_form.h>
#include <qx/matrices/internal/elimination.h>
#include <qx/matrices/internal/jacobi.h>
#include <qx/matrices/internal/measures.h>
#include <qx/matrices/internal/polar.h>
#include <qx/matrices/internal/singular_values.h>
#include <qx/matrices/internal/tridiagonal.h>
#include <qx/matrices/internal/workspace.h>
#include <qx/matrices/matrix_n.h>

#include <algorithm>
#include <cmath>
#include <limits>
#include <utility>

namespace {

/// The roads of Inverse(): closed form, Doolittle's factors, singular numbers.
template <qxReal T>
qxMatrices::Inversion Invert(std::int32_t size, const T* a, T tolerance, T* target) {
  using enum qxMatrices::Inversion;
  if (size >= 2 && size <= 4) return qxInvertInClosedForm(size, a, target, tolerance) == 0 ? done : singular;
  const std::size_t n = qxElementCount(size, 1);
  const qxMatrices::Inversion result = qxMatrices::InvertByLU(n, a, tolerance, target);
  return result != smallPivot ? result : qxMatrices::InvertBySingularValues(n, a, qxMatrices::fixedBound<T>, target);
}

}  // namespace

template <qxReal T>
CQXMatrixN<T>::CQXMatrixN(const CQXBaseMatrix<T>& other)
    : Base(other.IsSquare() != 0 ? Base(other) : Base(std::min(other.RowsNb(), other.ColsNb()))),
      m_size(this->RowsNb()) {
  if (other.IsSquare() == 0) this->InsertMatrix(other, 0, 0, m_size, m_size);
}

template <qxReal T>
CQXMatrixN<T>::CQXMatrixN(CQXBaseMatrix<T>&& other)
    : Base(other.IsSquare() != 0 ? Base(std::move(other)) : Base(std::min(other.RowsNb(), other.ColsNb()))),
      m_size(this->RowsNb()) {
  if (other.IsSquare() == 0) this->InsertMatrix(other, 0, 0, m_size, m_size);
}

template <qxReal T>
CQXMatrixN<T>::CQXMatrixN(CQXMatrixN&& other) noexcept
    : Base(std::move(other)), m_size(std::exchange(other.m_size, 0)) {}

template <qxReal T>
CQXMatrixN<T>::~CQXMatrixN() = default;

template <qxReal T>
CQXMatrixN<T>& CQXMatrixN<T>::TakeSize() noexcept {
  m_size = std::min(this->RowsNb(), this->ColsNb());
  if (this->IsSquare() != 0) return *this;
  const std::size_t size = this->Count() > 0 ? qxElementCount(m_size, 1) : 0;
  for (std::int32_t r = 0; r < m_size; ++r) {
    qxKernels::Copy(size, this->Data() + this->Position(r, 0), this->Data() + qxElementCount(r, m_size));
  }
  this->Shrink(m_size, m_size);
  this->ForgetResults();
  return *this;
}

template <qxReal T>
CQXMatrixN<T>& CQXMatrixN<T>::operator=(const CQXBaseMatrix<T>& other) {
  Base::operator=(other);
  return TakeSize();
}

template <qxReal T>
CQXMatrixN<T>& CQXMatrixN<T>::operator=(const CQXMatrixMN<T>& other) {
  Base::operator=(other);
  return TakeSize();
}

template <qxReal T>
CQXMatrixN<T>& CQXMatrixN<T>::operator=(const CQXMatrixN& other) {
  Base::operator=(static_cast<const CQXMatrixMN<T>&>(other));
  return TakeSize();
}

template <qxReal T>
CQXMatrixN<T>& CQXMatrixN<T>::operator=(CQXBaseMatrix<T>&& other) noexcept {
  Base::operator=(std::move(other));
  return TakeSize();
}

template <qxReal T>
CQXMatrixN<T>& CQXMatrixN<T>::operator=(CQXMatrixMN<T>&& other) noexcept {
  Base::operator=(std::move(other));
  return TakeSize();
}

template <qxReal T>
CQXMatrixN<T>& CQXMatrixN<T>::operator=(CQXMatrixN&& other) noexcept {
  Base::operator=(static_cast<CQXMatrixMN<T>&&>(other));
  return TakeSize();
}

template <qxReal T>
void CQXMatrixN<T>::PostMultiply(const CQXMatrixN& m) {
  const CQXMatrixN product = *this * m;
  this->TakeResult(product.RowsNb(), product.Count() > 0 ? product.ColsNb() : 0, product.Data());
}

template <qxReal T>
void CQXMatrixN<T>::PreMultiply(const CQXMatrixN& m) {
  const CQXMatrixN product = m * *this;
  this->TakeResult(product.RowsNb(), product.Count() > 0 ? product.ColsNb() : 0, product.Data());
}

template <qxReal T>
CQXMatrixN<T>& CQXMatrixN<T>::operator*=(const CQXMatrixN& m) {
  PostMultiply(m);
  return *this;
}

template <qxReal T>
CQXMatrixN<T> CQXMatrixN<T>::operator^(std::int32_t n) const {
  CQXMatrixN result(m_size), factor(*this), product(m_size);
  const CQXMatrixN refused(0);
  if (!this->IsHeld() || !result.IsHeld() || !factor.IsHeld() || !product.IsHeld()) return refused;
  if (n < 0) {
    const auto code = Invert(m_size, Data(), QX_PREDICATE_TOLERANCE<T>, factor.Data());
    if (code != qxMatrices::Inversion::done) return code == qxMatrices::Inversion::outOfMemory ? refused : result;
  }
  result.Unit();
  T* r = result.Data();
  T* f = factor.Data();
  T* p = product.Data();
  const auto multiply = [&, size = this->Height()](T*& target, const T* a, const T* b) {
    qxKernels::MultiplyMatrices(size, size, size, a, b, p);
    std::swap(target, p);
  };
  for (std::uint32_t rest = n < 0 ? 0u - static_cast<std::uint32_t>(n) : static_cast<std::uint32_t>(n); rest != 0;) {
    if (rest % 2 != 0) multiply(r, r, f);
    rest /= 2;
    if (rest != 0) multiply(f, f, f);
  }
  if (r != result.Data()) result.Fill(r);
  return result;
}

template <qxReal T>
CQXMatrixN<T>& CQXMatrixN<T>::operator^=(std::int32_t n) {
  return *this = *this ^ n;
}

template <qxReal T>
CQXMatrixN<T> CQXMatrixN<T>::GetCharacteristicsMatrix(T lambda) const {
  CQXMatrixN result(*this);
  for (std::int32_t i = 0; i < result.DiagonalCount(); ++i) result(i, i) -= lambda;
  return result;
}

template <qxReal T>
void CQXMatrixN<T>::GetDiagElements(T* target) const noexcept {
  for (std::int32_t i = 0; i < this->DiagonalCount(); ++i) target[i] = (*this)(i, i);
}

template <qxReal T>
T CQXMatrixN<T>::DetForTriangular() const noexcept {
  T product = 1;
  for (std::int32_t i = 0; i < this->DiagonalCount(); ++i) product *= (*this)(i, i);
  return product;
}

template <qxReal T>
std::int32_t CQXMatrixN<T>::IsUnit(T tolerance) const noexcept {
  for (std::int32_t i = 0; i < this->DiagonalCount(); ++i) {
    if (!(std::abs((*this)(i, i) - 1) <= tolerance)) return 0;
  }
  return this->IsDiagonal(tolerance);
}

template <qxReal T>
std::int32_t CQXMatrixN<T>::IsSymmetric(T tolerance) const noexcept {
  return qxMatrices::IsSymmetric(static_cast<std::size_t>(this->DiagonalCount()), Data(), tolerance);
}

template <qxReal T>
std::int32_t CQXMatrixN<T>::IsOrthogonal(T tolerance) const {
  const CQXMatrixN product = Transpose() * *this;
  return this->IsHeld() && product.IsHeld() && product.IsUnit(tolerance) != 0;
}

template <qxReal T>
std::int32_t CQXMatrixN<T>::IsPositive(T tolerance) const {
  return this->IsHeld() && qxMatrices::IsPositiveDefinite(this->Height(), Data(), tolerance);
}

template <qxReal T>
std::int32_t CQXMatrixN<T>::IsSingular(T tolerance) const {
  const T det = Det();
  const bool isFinite = std::all_of(Data(), Data() + this->Count(), [](T x) { return std::isfinite(x); });
  if (std::isnan(det) && isFinite) return -1;
  return std::abs(det) < tolerance;
}

// ---- Elimination

template <qxReal T>
std::int32_t CQXMatrixN<T>::LU_Decomposition(CQXMatrixN& L, CQXMatrixN& U, T tolerance) const {
  CQXMatrixN lowerT(m_size), upper(m_size);  // L or U may be this matrix
  qxMatrices::Workspace<T, 4> sums;
  const bool isHeld = this->IsHeld() && lowerT.IsHeld() && upper.IsHeld() && sums.Reserve(this->Height());
  const bool isFactored =
      isHeld && qxMatrices::FactorLU(this->Height(), Data(), lowerT.Data(), upper.Data(), sums.Data(), tolerance);
  L.SetToZero();
  U.SetToZero();
  if (!isHeld) return 0;
  L.TakeTransposedResult(m_size, m_size, lowerT.Data());
  U.TakeResult(m_size, m_size, upper.Data());
  return isFactored;
}

template <qxReal T>
T CQXMatrixN<T>::Det() const {
  return this->IsHeld() ? qxMatrices::Determinant(this->Height(), Data()) : std::numeric_limits<T>::quiet_NaN();
}

template <qxReal T>
std::int32_t CQXMatrixN<T>::Inverse(CQXMatrixN& target, T tolerance) const {
  CQXMatrixN inverse(m_size);
  if (!this->IsHeld() || !inverse.IsHeld()) return CodeOfFailure();
  switch (Invert(m_size, Data(), tolerance, inverse.Data())) {
    case qxMatrices::Inversion::done:
      target.TakeResult(m_size, m_size, inverse.Data());
      return HasClosedForm() ? 0 : 1;
    case qxMatrices::Inversion::smallDeterminant:
      return 3;
    default:
      return CodeOfFailure();
  }
}

template <qxReal T>
std::int32_t CQXMatrixN<T>::Inverse(CQXMatrixN& target, qxMatrixNorm norm, T tolerance, T& conditionNumber) const {
  CQXMatrixN inverse(m_size);
  conditionNumber = QX_OVERFLOW_VALUE<T>;
  if (!inverse.IsHeld()) return CodeOfFailure();
  const std::int32_t code = Inverse(inverse, tolerance);
  if (IsInverted(code)) {
    conditionNumber = this->Norm(norm) * inverse.Norm(norm);
    target.TakeResult(m_size, m_size, inverse.Data());
  }
  return code;
}

template <qxReal T>
std::int32_t CQXMatrixN<T>::DiagInverse(CQXMatrixN& target, T tolerance) const {
  const CQXMatrixN a(*this);
  target.SetToZero();
  target.ForgetResults();
  if (!a.IsHeld() || a.IsDiagonal(qxMatrices::fixedBound<T>) == 0) return 0;
  if (!qxMatrices::HasInvertibleDiagonal(this->Height(), a.Data(), tolerance)) return 0;
  for (std::int32_t i = 0; i < std::min(m_size, target.DiagonalCount()); ++i) target(i, i) = 1 / a(i, i);
  return 1;
}

template <qxReal T>
std::int32_t CQXMatrixN<T>::InverseOfTriangular(CQXMatrixN& target, T tolerance, bool isLower) const {
  const CQXMatrixN a(*this);
  CQXMatrixN inverse(m_size);
  target.SetToZero();
  target.ForgetResults();
  if (!a.IsHeld() || !inverse.IsHeld()) return 0;
  constexpr T bound = qxMatrices::fixedBound<T>;
  if ((isLower ? a.IsLLTriangular(bound) : a.IsURTriangular(bound)) == 0) return 0;
  if (!qxMatrices::HasInvertibleDiagonal(this->Height(), a.Data(), tolerance)) return 0;
  qxMatrices::InvertTriangular(this->Height(), a.Data(), isLower, inverse.Data());
  target.TakeResult(m_size, m_size, inverse.Data());
  return 1;
}

template <qxReal T>
std::int32_t CQXMatrixN<T>::LowLeftInverse(CQXMatrixN& target, T tolerance) const {
  return InverseOfTriangular(target, tolerance, true);
}

template <qxReal T>
std::int32_t CQXMatrixN<T>::UpperRightInverse(CQXMatrixN& target, T tolerance) const {
  return InverseOfTriangular(target, tolerance, false);
}

template <qxReal T>
std::int32_t CQXMatrixN<T>::InvPreconditioner(CQXMatrixN& target, T tolerance) const {
  CQXMatrixN kept(*this), inverse(m_size);
  if (!this->IsHeld() || !kept.IsHeld() || !inverse.IsHeld()) return 0;
  for (std::int32_t i = 0; i < m_size; ++i) {
    if (std::abs((*this)(i, i)) < QX_TOLERANCE<T>) return 0;
    inverse(i, i) = 1 / (*this)(i, i);
    for (std::int32_t j = 0; j < m_size; ++j) {
      const T bound = tolerance * std::sqrt(std::abs((*this)(i, i) * (*this)(j, j)));
      if (i != j && std::abs((*this)(i, j)) <= bound) kept(i, j) = 0;
    }
  }
  // What cannot be inverted leaves the diagonal.
  if (kept.IsDiagonal(T(0)) == 0) static_cast<void>(kept.Inverse(inverse, QX_TOLERANCE<T>));
  target.TakeResult(m_size, m_size, inverse.Data());
  return 1;
}

template <qxReal T>
std::int32_t CQXMatrixN<T>::SolveSystem(const CQXBaseVector<T>& b, CQXBaseVector<T>& x, T tolerance) const {
  CQXMatrixN inverse(m_size);
  return IsInverted(Inverse(inverse, tolerance)) && Base::MultiplyInto(inverse, b, x);
}

template <qxReal T>
std::int32_t CQXMatrixN<T>::SolveSystem(const CQXBaseVector<T>& b, CQXBaseVector<T>& x, qxMatrixNorm norm, T tolerance,
                                        T& conditionNumber) const {
  CQXMatrixN inverse(m_size);
  return IsInverted(Inverse(inverse, norm, tolerance, conditionNumber)) && Base::MultiplyInto(inverse, b, x);
}

template <qxReal T>
T CQXMatrixN<T>::ConditionNumber(qxMatrixNorm norm) const {
  if (norm == QX_MATRIX_NORM_SPECTRAL) {
    return this->IsHeld() ? qxMatrices::SpectralConditionNumber(this->Height(), Data()) : QX_OVERFLOW_VALUE<T>;
  }
  CQXMatrixN inverse(m_size);
  T conditionNumber;
  static_cast<void>(Inverse(inverse, norm, qxMatrices::fixedBound<T>, conditionNumber));
  return conditionNumber;
}

// ---- Symmetric matrices and polar form

template <qxReal T>
void CQXMatrixN<T>::JacobiRotate(CQXMatrixN& a, std::int32_t i, std::int32_t j, std::int32_t k, std::int32_t l, T s,
                                 T tau) const noexcept {
  qxKernels::JacobiRotate(1, s, tau, &a(i, j), &a(k, l));
}

template <qxReal T>
qxStatus CQXMatrixN<T>::DestructiveJacobiUnitOffset(CQXMatrixN& a, CQXVectorN<T>& values, CQXMatrixN& vectors,
                                                    std::int32_t& sweeps, T tolerance) const {
  const bool hasRoom = a.RowsNb() > m_size && a.ColsNb() > m_size && vectors.RowsNb() > m_size &&
                       vectors.ColsNb() > m_size && values.Dim() > m_size && values.Data() != nullptr;
  if (!hasRoom || !a.IsHeld() || !vectors.IsHeld()) return QX_STATUS_OUT_OF_MEMORY;
  CQXMatrixN matrix(m_size), rows(m_size);
  CQXVectorN<T> found(m_size);
  const bool isFound = m_size <= 0 || found.Data() != nullptr;
  if (!matrix.IsHeld() || !rows.IsHeld() || !isFound) return QX_STATUS_OUT_OF_MEMORY;
  for (std::int32_t r = 0; r < m_size; ++r) {
    for (std::int32_t c = r; c < m_size; ++c) matrix(c, r) = a(r + 1, c + 1);
  }
  const qxStatus status =
      qxMatrices::SweepByJacobi(this->Height(), matrix.Data(), found.Data(), rows.Data(), sweeps, tolerance);
  if (status != QX_STATUS_OK) return status;
  for (std::int32_t r = 0; r < m_size; ++r) {
    for (std::int32_t c = r + 1; c < m_size; ++c) a(r + 1, c + 1) = matrix(c, r);
    for (std::int32_t c = 0; c < m_size; ++c) vectors(c + 1, r + 1) = rows(r, c);
  }
  values.ReplacePart(1, 0, m_size, found);
  return status;
}

template <qxReal T>
qxStatus CQXMatrixN<T>::SymmetricEigensolve(CQXVectorN<T>& values, CQXMatrixN& vectors, T tolerance) const {
  CQXMatrixN rows(m_size);
  CQXVectorN<T> found(m_size);
  const bool isFound = m_size <= 0 || found.Data() != nullptr;
  if (!this->IsHeld() || !rows.IsHeld() || !isFound) return QX_STATUS_OUT_OF_MEMORY;
  std::int32_t rotations = 0;
  const qxStatus status =
      qxMatrices::FindSymmetricForm(this->Height(), Data(), tolerance, found.Data(), rows.Data(), rotations);
  if (status != QX_STATUS_OK) return status;
  if (rotations == 50) return QX_STATUS_TOO_MANY_ROTATIONS;
  vectors.TakeTransposedResult(m_size, m_size, rows.Data());
  Base::TakeResult(m_size, found.Data(), values);
  return QX_STATUS_OK;
}

template <qxReal T>
qxStatus CQXMatrixN<T>::SymmetricEigensolveQL(CQXVectorN<T>& values, CQXMatrixN& vectors, T tolerance) const {
  if (IsSymmetric(tolerance) == 0) return QX_STATUS_NOT_SYMMETRIC;
  CQXMatrixN rows(m_size);
  CQXVectorN<T> found(m_size);
  const bool isFound = m_size <= 0 || found.Data() != nullptr;
  if (!this->IsHeld() || !rows.IsHeld() || !isFound) return QX_STATUS_OUT_OF_MEMORY;
  const qxStatus status = qxMatrices::FindSymmetricFormByQL(this->Height(), Data(), found.Data(), rows.Data());
  if (status != QX_STATUS_OK) return status;
  vectors.TakeTransposedResult(m_size, m_size, rows.Data());
  Base::TakeResult(m_size, found.Data(), values);
  return QX_STATUS_OK;
}

template <qxReal T>
std::int32_t CQXMatrixN<T>::SpectralDecomposition(CQXMatrixN& P, CQXMatrixN& D, std::int32_t flag, T tolerance) const {
  CQXMatrixN rows(m_size);
  CQXVectorN<T> found(m_size);
  const bool isFound = m_size <= 0 || found.Data() != nullptr;
  if (!this->IsHeld() || !rows.IsHeld() || !isFound) return 0;
  std::int32_t rotations = 0;
  const qxStatus status =
      qxMatrices::FindSymmetricForm(this->Height(), Data(), tolerance, found.Data(), rows.Data(), rotations);
  if (status != QX_STATUS_OK) return 0;
  if (flag == 0) {
    P.TakeTransposedResult(m_size, m_size, rows.Data());
  } else {
    P.TakeResult(m_size, m_size, rows.Data());
  }
  D.SetToZero();
  D.ForgetResults();
  for (std::int32_t i = 0; i < std::min(m_size, D.DiagonalCount()); ++i) D(i, i) = found[i];
  return 1;
}

template <qxReal T>
std::int32_t CQXMatrixN<T>::PolarDecomposition(CQXMatrixN& R, CQXMatrixN& S, std::int32_t flag, T tolerance) const {
  CQXMatrixN r(m_size), s(m_size);
  const auto side = flag != 0 ? qxMatrices::OrthogonalFactor::left : qxMatrices::OrthogonalFactor::right;
  if (!this->IsHeld() || !r.IsHeld() || !s.IsHeld()) return 0;
  if (!qxMatrices::FindPolarForm(this->Height(), Data(), side, tolerance, r.Data(), s.Data())) return 0;
  R.TakeResult(m_size, m_size, r.Data());
  S.TakeResult(m_size, m_size, s.Data());
  return 1;
}

template class CQXMatrixN<float>;
template class CQXMatrixN<double>;
