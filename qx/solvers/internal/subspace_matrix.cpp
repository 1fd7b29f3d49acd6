#include <qx/foundation/internal/instantiate.h>
#include <qx/kernels/array_kernels.h>
#include <qx/solvers/internal/cholesky.h>
#include <qx/solvers/internal/subspace_matrix.h>

#include <cstddef>
#include <limits>

namespace qxSolvers {

namespace {

/// 2m as far as sizes go: what is beyond has no memory anyway.
std::int32_t Twice(std::int32_t m) {
  constexpr std::int32_t largest = std::numeric_limits<std::int32_t>::max();
  return m <= largest / 2 ? 2 * m : largest;
}

}  // namespace

template <qxReal T>
SubspaceMatrix<T>::SubspaceMatrix(std::int32_t n, std::int32_t m)
    : m_m(m),
      m_products(Twice(m)),
      m_matrix(Twice(m)),
      m_masked(qxMakeBlock<T>(2 * static_cast<std::size_t>(n < stripSize ? n : stripSize))) {}

template <qxReal T>
bool SubspaceMatrix<T>::HasMemory() const {
  return m_products.Data() != nullptr && m_matrix.Data() != nullptr && m_masked != nullptr;
}

template <qxReal T>
void SubspaceMatrix<T>::AppendPair(const CompactMemory<T>& memory) {
  if (m_count < memory.Count()) {
    ++m_count;
  } else {
    for (std::int32_t j = 0; j + 1 < m_count; ++j) {
      const std::int32_t below = m_count - 1 - j;
      m_products.CopyPartColumn(j, j, below, j + 1, j + 1, m_products);
      m_products.CopyPartColumn(m_m + j, m_m + j, below, m_m + j + 1, m_m + j + 1, m_products);
      m_products.CopyPartColumn(j, m_m, m_count - 1, j + 1, m_m + 1, m_products);
    }
  }
  const std::int32_t last = m_count - 1;
  for (std::int32_t j = 0; j < m_count; ++j) {
    m_products(last, j) = 0;
    m_products(m_m + last, m_m + j) = 0;
    m_products(m_m + last, j) = 0;
    m_products(m_m + j, last) = 0;
  }
}

template <qxReal T>
void SubspaceMatrix<T>::AddStrip(const CompactMemory<T>& memory, std::size_t first, std::size_t size,
                                 const std::int32_t* boundState, bool areAllFree) {
  const std::int32_t last = m_count - 1;
  const T* freeDifference = memory.Difference(last) + first;
  if (!areAllFree) {
    // Zeros instead of a list of indices: the products run along memory.
    const T* step = memory.Step(last) + first;
    const T* difference = freeDifference;
    T* boundStep = m_masked.get();
    T* masked = boundStep + size;
    for (std::size_t i = 0; i < size; ++i) {
      boundStep[i] = boundState[first + i] > 0 ? step[i] : T(0);
      masked[i] = boundState[first + i] > 0 ? T(0) : difference[i];
    }
    freeDifference = masked;
    for (std::int32_t j = 0; j < m_count; ++j) {
      m_products(m_m + last, m_m + j) += qxKernels::Dot(size, boundStep, memory.Step(j) + first);
      if (j < last) m_products(m_m + last, j) += qxKernels::Dot(size, boundStep, memory.Difference(j) + first);
    }
  }
  for (std::int32_t j = 0; j < m_count; ++j) {
    m_products(last, j) += qxKernels::Dot(size, freeDifference, memory.Difference(j) + first);
    m_products(m_m + j, last) += qxKernels::Dot(size, freeDifference, memory.Step(j) + first);
  }
}

template <qxReal T>
void SubspaceMatrix<T>::MoveVariable(const CompactMemory<T>& memory, std::int32_t pairs, std::int32_t variable,
                                     T sign) {
  for (std::int32_t i = 0; i < pairs; ++i) {
    const T step = sign * memory.Step(i)[variable];
    const T difference = sign * memory.Difference(i)[variable];
    for (std::int32_t j = 0; j <= i; ++j) {
      m_products(i, j) += difference * memory.Difference(j)[variable];
      m_products(m_m + i, m_m + j) -= step * memory.Step(j)[variable];
    }
    for (std::int32_t j = 0; j < pairs; ++j) {
      const T product = step * memory.Difference(j)[variable];
      m_products(m_m + i, j) += i <= j ? product : -product;
    }
  }
}

template <qxReal T>
bool SubspaceMatrix<T>::Factor(const CompactMemory<T>& memory) {
  const T theta = memory.Theta();
  const std::int32_t k = m_count;
  for (std::int32_t i = 0; i < k; ++i) {
    for (std::int32_t j = 0; j <= i; ++j) {
      m_matrix(j, i) = m_products(i, j) / theta;
      m_matrix(k + j, k + i) = m_products(m_m + i, m_m + j) * theta;
    }
    m_matrix(i, i) += memory.Curvature(i);
    for (std::int32_t j = 0; j < k; ++j) {
      m_matrix(j, k + i) = j < i ? -m_products(m_m + i, j) : m_products(m_m + i, j);
    }
  }
  if (!FactorByCholesky(0, k, m_matrix)) return false;
  for (std::int32_t column = k; column < 2 * k; ++column) {
    for (std::int32_t i = 0; i < k; ++i) {
      T sum = m_matrix(i, column);
      for (std::int32_t l = 0; l < i; ++l) sum -= m_matrix(l, i) * m_matrix(l, column);
      m_matrix(i, column) = sum / m_matrix(i, i);
    }
  }
  for (std::int32_t i = k; i < 2 * k; ++i) {
    for (std::int32_t j = i; j < 2 * k; ++j) {
      for (std::int32_t l = 0; l < k; ++l) m_matrix(i, j) += m_matrix(l, i) * m_matrix(l, j);
    }
  }
  return FactorByCholesky(k, k, m_matrix);
}

template <qxReal T>
void SubspaceMatrix<T>::Solve(T* v) const {
  SolveTransposed(2 * m_count, m_matrix, v);
  for (std::int32_t i = 0; i < m_count; ++i) v[i] = -v[i];
  SolveUpper(2 * m_count, m_matrix, v);
}

#define QX_INSTANTIATE(T) template class SubspaceMatrix<T>;
QX_FOR_FLOAT_AND_DOUBLE(QX_INSTANTIATE)
#undef QX_INSTANTIATE

}  // namespace qxSolvers
