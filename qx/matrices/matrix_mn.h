#pragma once

#include <qx/matrices/base_matrix.h>
#include <qx/vectors/vector_n.h>

/// Run-time-sized rectangular matrix of float or double.
///
/// Storage, assignment and element-wise arithmetic are those of CQXBaseMatrix. The matrix also remembers its rank and
/// its singular numbers once they were calculated. Changing elements does not clear what is remembered.
///
/// Operations that look like reads write these caches: a matrix must not be shared by threads during such a call.
/// Distinct matrices are independent.
template <typename T>
class QX_API CQXMatrixMN : public CQXBaseMatrix<T> {
 public:
  using Base = CQXBaseMatrix<T>;
  using Base::Data;

  /// Zero matrix with rank 0.
  CQXMatrixMN(std::int32_t rows, std::int32_t columns) : Base(rows, columns) {}
  /// Square zero matrix with rank 0.
  explicit CQXMatrixMN(std::int32_t size) : Base(size) {}
  /// Copies rows x columns elements of @p source, row-major; the rank is unknown.
  template <std::same_as<T> Element>
  CQXMatrixMN(std::int32_t rows, std::int32_t columns, const Element* source)
      : Base(rows, columns, source), m_rank(unknownRank) {}
  /// Copies size x size elements of @p source, row-major; the rank is unknown.
  template <std::same_as<T> Element>
  CQXMatrixMN(std::int32_t size, const Element* source) : Base(size, source), m_rank(unknownRank) {}
  /// Deep copy of the elements; the rank is unknown.
  CQXMatrixMN(const Base& other) : Base(other), m_rank(unknownRank) {}
  /// Takes the block over; the rank is unknown.
  CQXMatrixMN(Base&& other) noexcept : Base(static_cast<Base&&>(other)), m_rank(unknownRank) {}
  /// Deep copy of the elements, the rank and the singular numbers.
  CQXMatrixMN(const CQXMatrixMN& other);
  /// Takes everything over and leaves @p other with 0 rows and columns.
  CQXMatrixMN(CQXMatrixMN&& other) noexcept;

  ~CQXMatrixMN() override;

  /// Copies the elements; the sizes stay. The rank becomes unknown and the singular numbers are dropped.
  CQXMatrixMN& operator=(const Base& other) override;
  using Base::operator*=;
  /// Copies the elements; the sizes stay. Rank and singular numbers come along, unless the shapes differ: then the
  /// rank is unknown and the singular numbers are dropped.
  virtual CQXMatrixMN& operator=(const CQXMatrixMN& other);

  [[nodiscard]] CQXMatrixMN operator+(const Base& m) const { return Base::operator+(m); }
  [[nodiscard]] CQXMatrixMN operator-(const Base& m) const { return Base::operator-(m); }
  [[nodiscard]] CQXMatrixMN operator*(T factor) const { return Base::operator*(factor); }
  [[nodiscard]] CQXMatrixMN operator/(T divisor) const { return Base::operator/(divisor); }
  [[nodiscard]] CQXMatrixMN operator*(const Base& m) const { return Base::operator*(m); }
  [[nodiscard]] CQXVectorN<T> operator*(const CQXBaseVector<T>& v) const { return Base::operator*(v); }
  [[nodiscard]] CQXMatrixMN Negate() const { return Base::Negate(); }
  [[nodiscard]] CQXMatrixMN Transpose() const { return Base::Transpose(); }

  /// The remembered rank; -1 means unknown.
  [[nodiscard]] std::int32_t GetRank() const noexcept { return m_rank; }
  void SetRank(std::int32_t rank) noexcept { m_rank = rank; }
  /// 1 when the singular numbers are remembered.
  [[nodiscard]] std::int32_t IsSingCalculated() const noexcept { return m_singularFlag; }
  /// Copies the remembered singular numbers, as many as the smaller of rows and columns; does nothing without them.
  void GetSingularNumbers(T* target) const noexcept;

 protected:
  static constexpr std::int32_t unknownRank = -1;

  /// Length of the array of singular numbers.
  [[nodiscard]] std::size_t SingularCount() const noexcept {
    return qxElementCount(this->RowsNb() < this->ColsNb() ? this->RowsNb() : this->ColsNb(), 1);
  }

 private:
  void CopySingularNumbers(const CQXMatrixMN& other);
  void DropSingularNumbers() noexcept;

  std::int32_t m_rank = 0;
  qxBlock<T> m_singularNumbers;
  std::int32_t m_singularFlag = 0;
};

extern template class QX_API CQXMatrixMN<float>;
extern template class QX_API CQXMatrixMN<double>;
