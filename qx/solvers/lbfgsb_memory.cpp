#include <qx/kernels/array_kernels.h>
#include <qx/kernels/rotation_kernels.h>
#include <qx/solvers/internal/compact_memory.h>

#include <cmath>
#include <cstddef>

namespace qxSolvers {

template <qxReal T>
bool FactorByCholesky(std::int32_t first, std::int32_t size, CQXMatrixMN<T>& a) {
  for (std::int32_t j = first; j < first + size; ++j) {
    for (std::int32_t i = first; i <= j; ++i) {
      T sum = a(i, j);
      for (std::int32_t k = first; k < i; ++k) sum -= a(k, i) * a(k, j);
      if (i < j) {
        a(i, j) = sum / a(i, i);
      } else {
        if (!(sum > 0)) return false;
        a(j, j) = std::sqrt(sum);
      }
    }
  }
  return true;
}

template <qxReal T>
void SolveTransposed(std::int32_t size, const CQXMatrixMN<T>& r, T* v) {
  for (std::int32_t i = 0; i < size; ++i) {
    T sum = v[i];
    for (std::int32_t k = 0; k < i; ++k) sum -= r(k, i) * v[k];
    v[i] = sum / r(i, i);
  }
}

template <qxReal T>
void SolveUpper(std::int32_t size, const CQXMatrixMN<T>& r, T* v) {
  for (std::int32_t i = size; i-- > 0;) {
    T sum = v[i];
    for (std::int32_t k = i + 1; k < size; ++k) sum -= r(i, k) * v[k];
    v[i] = sum / r(i, i);
  }
}

template <qxReal T>
CompactMemory<T>::CompactMemory(std::int32_t n, std::int32_t m)
    : m_n(n), m_m(m), m_steps(m, n), m_differences(m, n), m_sy(m), m_ss(m), m_factor(m) {}

template <qxReal T>
bool CompactMemory<T>::HasMemory() const {
  return m_steps.Data() != nullptr && m_differences.Data() != nullptr && m_sy.Data() != nullptr &&
         m_ss.Data() != nullptr && m_factor.Data() != nullptr;
}

template <qxReal T>
void CompactMemory<T>::Reset() {
  m_first = 0;
  m_count = 0;
  m_theta = 1;
  m_isAppended = false;
}

template <qxReal T>
void CompactMemory<T>::Append(const T* direction, T factor, const T* gradient, const T* formerGradient, T sy) {
  const std::size_t count = static_cast<std::size_t>(m_n);
  if (m_count < m_m) {
    ++m_count;
  } else {
    m_first = m_first + 1 < m_m ? m_first + 1 : 0;
    for (std::int32_t j = 0; j + 1 < m_count; ++j) {
      const std::int32_t below = m_count - 1 - j;
      m_sy.CopyPartColumn(j, j, below, j + 1, j + 1, m_sy);
      m_ss.CopyPartColumn(j, j, below, j + 1, j + 1, m_ss);
    }
  }
  const std::int32_t last = m_count - 1;
  T* step = m_steps.Data() + Offset(last);
  T* difference = m_differences.Data() + Offset(last);
  qxKernels::Product(count, direction, factor, step);
  qxKernels::Difference(count, gradient, formerGradient, difference);
  m_theta = qxKernels::SumOfSquares(count, difference) / sy;
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
  ForEachStrip(static_cast<std::size_t>(m_n), [&](std::size_t first, std::size_t size) {
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

#define INSTANTIATE(T)                                                         \
  template bool FactorByCholesky(std::int32_t, std::int32_t, CQXMatrixMN<T>&); \
  template void SolveTransposed(std::int32_t, const CQXMatrixMN<T>&, T*);      \
  template void SolveUpper(std::int32_t, const CQXMatrixMN<T>&, T*);           \
  template class CompactMemory<T>
INSTANTIATE(float);
INSTANTIATE(double);
#undef INSTANTIATE

}  // namespace qxSolvers
