#include <qx/foundation/status.h>
#include <qx/kernels/array_kernels.h>
#include <qx/kernels/matrix_kernels.h>
#include <qx/kernels/rotation_kernels.h>
#include <qx/matrices/internal/bidiagonal.h>
#include <qx/matrices/internal/closed_form.h>
#include <qx/matrices/internal/elimination.h>
#include <qx/matrices/internal/householder.h>
#include <qx/matrices/internal/measures.h>
#include <qx/matrices/internal/singular_values.h>
#include <qx/matrices/matrix_mn.h>

#include <algorithm>
#include <cmath>
#include <limits>
#include <utility>

namespace {

std::size_t Size(std::int32_t n) { return qxElementCount(n, 1); }

template <qxReal T>
constexpr T notANumber = std::numeric_limits<T>::quiet_NaN();

}  // namespace

template <qxReal T>
CQXMatrixMN<T>::CQXMatrixMN(const CQXMatrixMN& other) : Base(other), m_rank(other.m_rank) {
  CopySingularNumbers(other);
}

template <qxReal T>
CQXMatrixMN<T>::CQXMatrixMN(CQXMatrixMN&& other) noexcept
    : Base(std::move(other)),
      m_rank(std::exchange(other.m_rank, 0)),
      m_singularNumbers(std::move(other.m_singularNumbers)),
      m_singularFlag(std::exchange(other.m_singularFlag, 0)) {}

template <qxReal T>
CQXMatrixMN<T>::~CQXMatrixMN() = default;

template <qxReal T>
CQXMatrixMN<T>& CQXMatrixMN<T>::operator=(const Base& other) {
  if (this == &other) return *this;
  Base::operator=(other);
  ForgetResults();
  return *this;
}

template <qxReal T>
CQXMatrixMN<T>& CQXMatrixMN<T>::operator=(const CQXMatrixMN& other) {
  if (this == &other) return *this;
  Base::operator=(other);
  ForgetResults();
  if (this->RowsNb() == other.RowsNb() && this->ColsNb() == other.ColsNb()) {
    CopySingularNumbers(other);
    m_rank = other.m_rank;
  }
  return *this;
}

template <qxReal T>
CQXMatrixMN<T>& CQXMatrixMN<T>::operator=(Base&& other) noexcept {
  if (this == &other) return *this;
  Base::operator=(std::move(other));
  ForgetResults();
  return *this;
}

template <qxReal T>
CQXMatrixMN<T>& CQXMatrixMN<T>::operator=(CQXMatrixMN&& other) noexcept {
  if (this == &other) return *this;
  const bool hasSameShape = this->RowsNb() == other.RowsNb() && this->ColsNb() == other.ColsNb();
  const bool takesResults = this->IsMovedFrom() || hasSameShape;
  Base::operator=(static_cast<Base&&>(other));
  ForgetResults();
  if (takesResults) {
    m_rank = other.m_rank;
    m_singularNumbers = std::move(other.m_singularNumbers);
    m_singularFlag = std::exchange(other.m_singularFlag, 0);
  }
  return *this;
}

template <qxReal T>
void CQXMatrixMN<T>::GetSingularNumbers(T* target) const noexcept {
  if (m_singularFlag != 0) qxKernels::Copy(Size(SingularCount()), m_singularNumbers.get(), target);
}

template <qxReal T>
void CQXMatrixMN<T>::CopySingularNumbers(const CQXMatrixMN& other) {
  if (other.m_singularFlag == 0) return;
  m_singularNumbers = qxMakeBlock<T>(Size(SingularCount()));
  if (m_singularNumbers == nullptr) return;
  other.GetSingularNumbers(m_singularNumbers.get());
  m_singularFlag = 1;
}

template <qxReal T>
void CQXMatrixMN<T>::ForgetResults() const noexcept {
  m_rank = unknownRank;
  m_singularNumbers.reset();
  m_singularFlag = 0;
}

template <qxReal T>
void CQXMatrixMN<T>::TakeResult(std::int32_t rows, std::int32_t columns, const T* source) noexcept {
  ForgetResults();
  if (this->Count() == 0) return;
  const std::size_t width = Size(std::min(columns, this->ColsNb()));
  for (std::int32_t r = 0; r < std::min(rows, this->RowsNb()); ++r) {
    qxKernels::Copy(width, source + Size(r) * Size(columns), Data() + this->Position(r, 0));
  }
}

template <qxReal T>
void CQXMatrixMN<T>::TakeTransposedResult(std::int32_t rows, std::int32_t columns, const T* source) noexcept {
  ForgetResults();
  if (this->Count() == 0) return;
  for (std::int32_t r = 0; r < std::min(columns, this->RowsNb()); ++r) {
    for (std::int32_t c = 0; c < std::min(rows, this->ColsNb()); ++c) {
      (*this)(r, c) = source[Size(c) * Size(columns) + Size(r)];
    }
  }
}

template <qxReal T>
void CQXMatrixMN<T>::TakeResult(std::int32_t count, const T* source, CQXBaseVector<T>& target) noexcept {
  if (target.Data() != nullptr) target.FillPart(source, 0, count);
}

// ---- Parts, structure and measures

template <qxReal T>
void CQXMatrixMN<T>::InsertMatrix(const Base& source, std::int32_t row, std::int32_t column, std::int32_t rows,
                                  std::int32_t columns) noexcept {
  for (std::int32_t r = 0; r < rows; ++r) this->CopyPartRow(row + r, column, columns, r, 0, source);
}

template <qxReal T>
CQXMatrixMN<T> CQXMatrixMN<T>::ExtractMatrix(std::int32_t row, std::int32_t column, std::int32_t rows,
                                             std::int32_t columns) const {
  CQXMatrixMN result(rows, columns);
  result.m_rank = unknownRank;
  for (std::int32_t r = 0; r < rows; ++r) result.CopyPartRow(r, 0, columns, row + r, column, *this);
  return result;
}

template <qxReal T>
CQXMatrixMN<T> CQXMatrixMN<T>::ExtractLeftCornerMatrix(std::int32_t rows, std::int32_t columns) const {
  return ExtractMatrix(0, 0, rows, columns);
}

template <qxReal T>
void CQXMatrixMN<T>::SetElementTransposition(std::int32_t i, std::int32_t j) noexcept {
  if (this->Count() > 0) std::swap((*this)(i, j), (*this)(j, i));
}

template <qxReal T>
void CQXMatrixMN<T>::AnnulateSmallElements(T tolerance) noexcept {
  qxKernels::AnnulateSmall(this->Count(), tolerance, Data());
}

template <qxReal T>
void CQXMatrixMN<T>::AnnulateRelativelyDiagonal(std::int32_t power) noexcept {
  qxMatrices::AnnulateRelativelyDiagonal(Size(this->DiagonalCount()), Width(), Data(), power);
}

template <qxReal T>
std::int32_t CQXMatrixMN<T>::IsAlmostZero(T tolerance) const noexcept {
  return qxKernels::AreWithin(this->Count(), Data(), tolerance);
}

template <qxReal T>
std::int32_t CQXMatrixMN<T>::IsInBand(std::ptrdiff_t low, std::ptrdiff_t high, T tolerance) const noexcept {
  if (this->Count() == 0) return 1;
  return qxKernels::IsBand(Size(this->RowsNb()), Size(this->ColsNb()), Data(), low, high, tolerance);
}

template <qxReal T>
std::int32_t CQXMatrixMN<T>::IsDiagonal(T tolerance) const noexcept {
  return IsInBand(0, 0, tolerance);
}

template <qxReal T>
std::int32_t CQXMatrixMN<T>::IsBidiagonal(T tolerance) const noexcept {
  return IsInBand(0, 1, tolerance);
}

template <qxReal T>
std::int32_t CQXMatrixMN<T>::IsURTriangular(T tolerance) const noexcept {
  return IsInBand(0, std::numeric_limits<std::ptrdiff_t>::max(), tolerance);
}

template <qxReal T>
std::int32_t CQXMatrixMN<T>::IsLLTriangular(T tolerance) const noexcept {
  return IsInBand(std::numeric_limits<std::ptrdiff_t>::min(), 0, tolerance);
}

template <qxReal T>
T CQXMatrixMN<T>::Mean() const noexcept {
  return qxKernels::SumOfElements(this->Count(), Data()) / static_cast<T>(this->Count());
}

template <qxReal T>
T CQXMatrixMN<T>::InnerProduct(const Base& m) const noexcept {
  return AreHeldWith(m) ? qxKernels::Dot(this->Count(), Data(), m.Data()) : notANumber<T>;
}

template <qxReal T>
T CQXMatrixMN<T>::CorrelationCoefficient(const Base& m) const noexcept {
  return AreHeldWith(m) ? qxMatrices::Correlation(this->Count(), Data(), m.Data()) : notANumber<T>;
}

template <qxReal T>
T CQXMatrixMN<T>::Norm(qxMatrixNorm norm) const {
  return IsHeld() ? qxMatrices::Norm(Height(), Width(), Data(), norm) : notANumber<T>;
}

// ---- Decompositions

template <qxReal T>
std::int32_t CQXMatrixMN<T>::QR_Decomposition(CQXMatrixMN& Q, CQXMatrixMN& R, T) const {
  CQXMatrixMN r(*this);
  CQXMatrixMN q(this->RowsNb(), this->RowsNb());
  if (!IsHeld() || !r.IsHeld() || !q.IsHeld() || !qxMatrices::FactorQR(Height(), Width(), r.Data(), q.Data())) return 0;
  Q.TakeResult(q.RowsNb(), q.ColsNb(), q.Data());
  R.TakeResult(r.RowsNb(), r.ColsNb(), r.Data());
  return 1;
}

template <qxReal T>
std::int32_t CQXMatrixMN<T>::SV_Decomposition(CQXMatrixMN& U, CQXMatrixMN& V, CQXVectorN<T>& singular,
                                              T tolerance) const {
  const std::int32_t rows = this->RowsNb();
  const std::int32_t columns = this->ColsNb();
  const std::int32_t count = SingularCount();
  qxMatrices::SingularForm<T> form;
  qxBlock<T> remembered = qxMakeBlock<T>(Size(count));
  if (!IsHeld() || remembered == nullptr) return QX_STATUS_OUT_OF_MEMORY;
  const std::int32_t code =
      qxMatrices::FindSingularForm(Height(), Width(), Data(), {U.Width(), V.Width()}, tolerance, form);
  if (code != 0) return code;
  U.TakeTransposedResult(static_cast<std::int32_t>(form.leftCount), rows, form.left.Data());
  V.TakeTransposedResult(static_cast<std::int32_t>(form.rightCount), columns, form.right.Data());
  TakeResult(count, form.values.Data(), singular);
  if (this != &U && this != &V) {
    qxKernels::Copy(Size(count), form.values.Data(), remembered.get());
    m_singularNumbers = std::move(remembered);
    m_singularFlag = 1;
  }
  return 0;
}

template <qxReal T>
std::int32_t CQXMatrixMN<T>::ThinSVD(CQXMatrixMN& U, CQXMatrixMN& V, CQXVectorN<T>& singular) const {
  const std::int32_t rows = this->RowsNb();
  const std::int32_t columns = this->ColsNb();
  const std::int32_t count = SingularCount();
  qxMatrices::SingularForm<T> form;
  if (!IsHeld() ||
      qxMatrices::FindSingularForm(Height(), Width(), Data(), {Size(count), Size(count)}, T(0), form) != 0) {
    return 0;
  }
  U.TakeTransposedResult(count, rows, form.left.Data());
  V.TakeTransposedResult(count, columns, form.right.Data());
  TakeResult(count, form.values.Data(), singular);
  return 1;
}

template <qxReal T>
std::int32_t CQXMatrixMN<T>::ThinSVDUnitOffsetInPlace(CQXMatrixMN& a, CQXVectorN<T>& singular, CQXMatrixMN& v) const {
  const std::int32_t rows = this->RowsNb();
  const std::int32_t columns = this->ColsNb();
  if (rows < columns) return 0;
  const CQXMatrixMN matrix = a.ExtractMatrix(1, 1, rows, columns);
  CQXMatrixMN left(rows, columns);
  CQXMatrixMN right(columns);
  CQXVectorN<T> values(columns);
  const bool isHeld = left.IsHeld() && right.IsHeld() && (columns <= 0 || values.Data() != nullptr);
  if (!isHeld || matrix.ThinSVD(left, right, values) == 0) return 0;
  a.InsertMatrix(left, 1, 1, rows, columns);
  v.InsertMatrix(right, 1, 1, columns, columns);
  singular.ReplacePart(1, 0, columns, values);
  return 1;
}

template <qxReal T>
std::int32_t CQXMatrixMN<T>::CalculateRank(T tolerance) const {
  qxMatrices::SingularForm<T> form;
  m_rank = unknownRank;
  if (!IsHeld() || qxMatrices::FindSingularForm(Height(), Width(), Data(), {0, 0}, T(0), form) != 0) return m_rank;
  const T* const values = form.values.Data();
  m_rank = static_cast<std::int32_t>(
      std::count_if(values, values + SingularCount(), [=](T value) { return value > tolerance; }));
  return m_rank;
}

// ---- Inverses

template <qxReal T>
std::int32_t CQXMatrixMN<T>::Inverse(CQXMatrixMN& target, T tolerance) const {
  const std::int32_t size = this->RowsNb();
  if (this->IsSquare() == 0) return 0;
  CQXMatrixMN inverse(size);
  if (!IsHeld() || !inverse.IsHeld()) return 0;
  const bool isInverted = size == 4 ? qxInvertInClosedForm(size, Data(), inverse.Data(), tolerance) == 0
                                    : qxMatrices::InvertBySingularValues(Size(size), Data(), qxMatrices::fixedBound<T>,
                                                                         inverse.Data()) == qxMatrices::Inversion::done;
  if (isInverted) target.TakeResult(size, size, inverse.Data());
  return isInverted;
}

template <qxReal T>
std::int32_t CQXMatrixMN<T>::Inverse(CQXMatrixMN& target, qxMatrixNorm norm, T tolerance, T& conditionNumber) const {
  const std::int32_t size = this->RowsNb();
  conditionNumber = QX_OVERFLOW_VALUE<T>;
  if (this->IsSquare() == 0) return 0;
  CQXMatrixMN inverse(size);
  if (!IsHeld() || !inverse.IsHeld()) return 0;
  const bool isInverted = size >= 2 && size <= 4 ? qxInvertInClosedForm(size, Data(), inverse.Data(), tolerance) == 0
                                                 : Inverse(inverse, tolerance) == 1;
  if (!isInverted) return 0;
  conditionNumber = Norm(norm) * inverse.Norm(norm);
  target.TakeResult(size, size, inverse.Data());
  return 1;
}

template <qxReal T>
std::int32_t CQXMatrixMN<T>::PseudoInverse(CQXMatrixMN& target, qxMatrixNorm, T& conditionNumber) const {
  const std::size_t size = Size(SingularCount());
  conditionNumber = QX_OVERFLOW_VALUE<T>;
  CQXMatrixMN inverse(this->ColsNb(), this->RowsNb());
  qxMatrices::SingularForm<T> form;
  if (!IsHeld() || !inverse.IsHeld() ||
      qxMatrices::FindSingularForm(Height(), Width(), Data(), {size, size}, T(0), form) != 0) {
    return 0;
  }
  const T* const values = form.values.Data();
  std::size_t used = 0;
  while (used < size && values[used] > qxMatrices::fixedBound<T> * values[0]) ++used;
  qxMatrices::MultiplyInverted(Height(), Width(), form, used, inverse.Data());
  if (used > 0) conditionNumber = values[0] / values[used - 1];
  target.TakeResult(inverse.RowsNb(), inverse.ColsNb(), inverse.Data());
  return 1;
}

template <qxReal T>
std::int32_t CQXMatrixMN<T>::PseudoSolveSystem(const CQXBaseVector<T>& b, CQXBaseVector<T>& x, qxMatrixNorm norm,
                                               T& conditionNumber) const {
  CQXMatrixMN inverse(this->ColsNb(), this->RowsNb());
  return PseudoInverse(inverse, norm, conditionNumber) == 1 && MultiplyInto(inverse, b, x);
}

template <qxReal T>
bool CQXMatrixMN<T>::MultiplyInto(const CQXMatrixMN& matrix, const CQXBaseVector<T>& b, CQXBaseVector<T>& x) {
  const CQXVectorN<T> product = matrix * b;
  const bool isHeld = matrix.IsHeld() && (product.Data() != nullptr || matrix.RowsNb() <= 0);
  if (isHeld && x.Data() != nullptr) x.FillPart(product.Data(), 0, product.Dim());
  return isHeld;
}

// ---- Steps of the decompositions

template <qxReal T>
T CQXMatrixMN<T>::SignA(T a, T b) noexcept {
  return qxMatrices::WithSign(a, b);
}

template <qxReal T>
T CQXMatrixMN<T>::Pythagoras(T a, T b) noexcept {
  return qxMatrices::Pythagoras(a, b);
}

template <qxReal T>
std::int32_t CQXMatrixMN<T>::Householder1(std::int32_t pivot, std::int32_t first, std::int32_t last, std::int32_t count,
                                          T& up, T* vector, T* matrix, T tolerance) noexcept {
  return qxMatrices::Householder1(pivot, first, last, count, up, vector, matrix, tolerance);
}

template <qxReal T>
void CQXMatrixMN<T>::Householder2(std::int32_t pivot, std::int32_t first, std::int32_t last, T up, const T* vector,
                                  CQXMatrixMN& matrix, T tolerance) noexcept {
  qxMatrices::Householder2(pivot, first, last, up, vector, matrix.Data(), matrix.ColsNb(), tolerance);
}

template <qxReal T>
void CQXMatrixMN<T>::Givens1(T a, T b, T& c, T& s, T& r, T tolerance) noexcept {
  qxMatrices::Givens1(a, b, c, s, r, tolerance);
}

template <qxReal T>
void CQXMatrixMN<T>::Givens2(T c, T s, T& x, T& y) noexcept {
  qxKernels::Rotate(1, c, s, &x, &y);
}

template <qxReal T>
std::int32_t CQXMatrixMN<T>::QRT_2D(std::int32_t rows, std::int32_t columns, T* a, std::int32_t leftCount, T* d, T* e,
                                    T* left, T* right) {
  qxMatrices::Bidiagonal<T> b{Size(columns), d, e, left, Size(rows), right, Size(columns)};
  return qxMatrices::ReduceToBidiagonal(Size(rows), Size(columns), a, Size(leftCount), b);
}

template <qxReal T>
std::int32_t CQXMatrixMN<T>::SingDecomp2D(std::int32_t n, T* d, T* e, T* left, std::int32_t leftLength, T* right,
                                          std::int32_t rightLength, T tolerance) {
  qxMatrices::Bidiagonal<T> b{Size(n), d, e, left, Size(leftLength), right, Size(rightLength)};
  return qxMatrices::FindSingularNumbers(b, tolerance);
}

template <qxReal T>
std::int32_t CQXMatrixMN<T>::Apply_QRBD(std::int32_t n, T* d, T* e, T* left, std::int32_t leftLength, T* right,
                                        std::int32_t rightLength, T tolerance) {
  qxMatrices::Bidiagonal<T> b{Size(n), d, e, left, Size(leftLength), right, Size(rightLength)};
  return qxMatrices::IterateOnBlocks(b, tolerance);
}

template <qxReal T>
std::int32_t CQXMatrixMN<T>::QRBD(std::int32_t n, T* d, T* e, T* left, std::int32_t leftLength, T* right,
                                  std::int32_t rightLength, std::int32_t first, std::int32_t last, std::int32_t& index,
                                  T* rotations, T tolerance) noexcept {
  qxMatrices::Bidiagonal<T> b{Size(n), d, e, left, Size(leftLength), right, Size(rightLength)};
  std::size_t split = 0, sweeps = 0;
  const std::int32_t code = qxMatrices::IterateOnBlock(b, Size(first), Size(last), tolerance, split, sweeps, rotations);
  if (code == 0) index = static_cast<std::int32_t>(split);
  return code;
}

template <qxReal T>
void CQXMatrixMN<T>::ZeroRightTransform(T* d, T* e, T* left, std::int32_t leftLength, std::int32_t zero,
                                        std::int32_t last) noexcept {
  qxMatrices::Bidiagonal<T> b{Size(last) + 1, d, e, left, Size(leftLength), nullptr, 0};
  qxMatrices::ZeroRightTransform(b, Size(zero), Size(last));
}

template <qxReal T>
void CQXMatrixMN<T>::ZeroUpperTransform(T* d, T* e, T* right, std::int32_t rightLength, std::int32_t first,
                                        std::int32_t zero) noexcept {
  qxMatrices::Bidiagonal<T> b{Size(zero) + 1, d, e, nullptr, 0, right, Size(rightLength)};
  qxMatrices::ZeroUpperTransform(b, Size(first), Size(zero));
}

template <qxReal T>
std::int32_t CQXMatrixMN<T>::TestZeroRowsColumns(std::int32_t rows, std::int32_t columns, const T* a, T tolerance,
                                                 std::int32_t* rowOrder, std::int32_t* columnOrder) noexcept {
  return qxMatrices::TestZeroRowsColumns(Size(rows), Size(columns), a, tolerance, rowOrder, columnOrder);
}

template <qxReal T>
void CQXMatrixMN<T>::MoveZeroRows(std::int32_t rows, std::int32_t columns, const T* source, const std::int32_t* order,
                                  T* target) noexcept {
  qxMatrices::MoveZeroRows(Size(rows), Size(columns), source, order, target);
}

template <qxReal T>
void CQXMatrixMN<T>::MoveZeroColumns(std::int32_t rows, std::int32_t columns, T* a, const std::int32_t* order,
                                     T* work) noexcept {
  qxMatrices::MoveZeroColumns(Size(rows), Size(columns), a, order, work);
}

template <qxReal T>
std::int32_t qxAreAlmostEqual(const CQXMatrixMN<T>& a, const CQXMatrixMN<T>& b, qxNonDeduced<T> tolerance) noexcept {
  if (a.RowsNb() != b.RowsNb() || a.ColsNb() != b.ColsNb()) return 0;
  const std::size_t count = a.Data() != nullptr && b.Data() != nullptr ? qxElementCount(a.RowsNb(), a.ColsNb()) : 0;
  return qxKernels::AreWithin(count, a.Data(), b.Data(), tolerance);
}

template class CQXMatrixMN<float>;
template class CQXMatrixMN<double>;
template std::int32_t qxAreAlmostEqual(const CQXMatrixMN<float>&, const CQXMatrixMN<float>&, float) noexcept;
template std::int32_t qxAreAlmostEqual(const CQXMatrixMN<double>&, const CQXMatrixMN<double>&, double) noexcept;
