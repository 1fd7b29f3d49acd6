#include <qx/foundation/internal/instantiate.h>
#include <qx/kernels/array_kernels.h>
#include <qx/kernels/rotation_kernels.h>
#include <qx/solvers/internal/cholesky.h>
#include <qx/solvers/internal/compact_memory.h>

#include <cstddef>

namespace qxSolvers {

template <qxReal T>
CompactMemory<T>::CompactMemory(std::int32_t n, std::int32_t m)
    : m_n(static_cast<std::size_t>(n)),
      m_m(m),
      m_pairs(m_n, static_cast<std::size_t>(m)),
      m_sy(m),
      m_ss(m),
      m_factor(m) {}

template <qxReal T>
bool CompactMemory<T>::HasMemory() const {
  return m_pairs.HasMemory() && m_sy.Data() != nullptr && m_ss.Data() != nullptr && m_factor.Data() != nullptr;
}

template <qxReal T>
void CompactMemory<T>::Reset() {
  m_pairs.Clear();
  m_count = 0;
  m_theta = 1;
  m_isAppended = false;
}

template <qxReal T>
void CompactMemory<T>::Append(const T* direction, T factor, const T* gradient, const T* formerGradient, T sy) {
  if (m_count < m_m) {
    ++m_count;
  } else {
    for (std::int32_t j = 0; j + 1 < m_count; ++j) {
      const std::int32_t below = m_count - 1 - j;
      m_sy.CopyPartColumn(j, j, below, j + 1, j + 1, m_sy);
      m_ss.CopyPartColumn(j, j, below, j + 1, j + 1, m_ss);
    }
  }
  qxKernels::Product(m_n, direction, factor, m_pairs.NextStep());
  T* const difference = m_pairs.NextDifference();
  qxKernels::Difference(m_n, gradient, formerGradient, difference);
  m_theta = qxKernels::SumOfSquares(m_n, difference) / sy;
  m_pairs.Advance();
  const std::int32_t last = m_count - 1;
  for (std::int32_t j = 0; j < m_count; ++j) {
    m_sy(last, j) = 0;
    m_ss(last, j) = 0;
  }
  m_sy(last, last) = sy;
  m_isAppended = true;
}

template <qxReal T>
bool CompactMemory<T>::Complete(const T* v, T* product) {
  for (std::int32_t j = 0; j < 2 * m_count; ++j) product[j] = 0;
  const std::int32_t last = m_count - 1;
  ForEachStrip(m_n, [&](std::size_t first, std::size_t size) {
    for (std::int32_t j = 0; m_isAppended && j < m_count; ++j) {
      const T* step = Step(last) + first;
      if (j < last) m_sy(last, j) += qxKernels::Dot(size, Difference(j) + first, step);
      m_ss(last, j) += qxKernels::Dot(size, Step(j) + first, step);
    }
    AddTransposedProduct(first, size, v + first, product);
  });
  if (!m_isAppended) return true;
  m_isAppended = false;
  for (std::int32_t i = 0; i < m_count; ++i) {
    for (std::int32_t j = i; j < m_count; ++j) {
      T sum = m_theta * m_ss(j, i);
      for (std::int32_t k = 0; k < i; ++k) sum += m_sy(i, k) * m_sy(j, k) / m_sy(k, k);
      m_factor(i, j) = sum;
    }
  }
  return FactorByCholesky(0, m_count, m_factor);
}

template <qxReal T>
void CompactMemory<T>::AddTransposedProduct(std::size_t first, std::size_t size, const T* v, T* product) const {
  for (std::int32_t j = 0; j < m_count; ++j) {
    product[j] += qxKernels::Dot(size, Difference(j) + first, v);
    product[m_count + j] += m_theta * qxKernels::Dot(size, Step(j) + first, v);
  }
}

template <qxReal T>
void CompactMemory<T>::AddProduct(std::size_t first, std::size_t size, const T* c, T* target) const {
  for (std::int32_t j = 0; j < m_count; ++j) {
    qxKernels::AddMultiple(size, c[j], Difference(j) + first, target);
    qxKernels::AddMultiple(size, m_theta * c[m_count + j], Step(j) + first, target);
  }
}

template <qxReal T>
void CompactMemory<T>::GetRow(std::int32_t i, T* row) const {
  for (std::int32_t j = 0; j < m_count; ++j) {
    row[j] = Difference(j)[i];
    row[m_count + j] = m_theta * Step(j)[i];
  }
}

template <qxReal T>
void CompactMemory<T>::MultiplyByMiddle(const T* v, T* product) const {
  const T* ofSteps = v + m_count;
  T* result = product + m_count;
  for (std::int32_t i = 0; i < m_count; ++i) {
    T sum = ofSteps[i];
    for (std::int32_t k = 0; k < i; ++k) sum += m_sy(i, k) * v[k] / m_sy(k, k);
    result[i] = sum;
  }
  SolveTransposed(m_count, m_factor, result);
  SolveUpper(m_count, m_factor, result);
  for (std::int32_t i = 0; i < m_count; ++i) {
    T sum = -v[i];
    for (std::int32_t k = i + 1; k < m_count; ++k) sum += m_sy(k, i) * result[k];
    product[i] = sum / m_sy(i, i);
  }
}

#define QX_INSTANTIATE(T) template class CompactMemory<T>;
QX_FOR_FLOAT_AND_DOUBLE(QX_INSTANTIATE)
#undef QX_INSTANTIATE

}  // namespace qxSolvers
