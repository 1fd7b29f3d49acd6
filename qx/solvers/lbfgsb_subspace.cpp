#include <qx/kernels/array_kernels.h>
#include <qx/kernels/optimization_kernels.h>
#include <qx/solvers/internal/bounded_minimizer.h>

#include <algorithm>
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

template <typename T>
SubspaceMatrix<T>::SubspaceMatrix(std::int32_t n, std::int32_t m)
    : m_m(m), m_products(Twice(m)), m_matrix(Twice(m)), m_masked(qxMakeBlock<T>(2 * static_cast<std::size_t>(n))) {}

template <typename T>
bool SubspaceMatrix<T>::HasMemory() const {
  return m_products.Data() != nullptr && m_matrix.Data() != nullptr && m_masked != nullptr;
}

template <typename T>
void SubspaceMatrix<T>::Update(const CompactMemory<T>& memory, bool isAppended, std::int32_t n,
                               const std::int32_t* boundState, std::int32_t freeCount, std::int32_t enterCount,
                               std::int32_t leaveCount, const std::int32_t* entering) {
  if (isAppended) AppendPair(memory, n, boundState, freeCount);
  // The newest pair was summed over the present sets; the older ones follow the changes.
  const std::int32_t pairs = isAppended ? m_count - 1 : m_count;
  for (std::int32_t i = 0; i < enterCount; ++i) MoveVariable(memory, pairs, entering[i], 1);
  for (std::int32_t i = n - leaveCount; i < n; ++i) MoveVariable(memory, pairs, entering[i], -1);
}

template <typename T>
void SubspaceMatrix<T>::AppendPair(const CompactMemory<T>& memory, std::int32_t n, const std::int32_t* boundState,
                                   std::int32_t freeCount) {
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
  const std::size_t count = static_cast<std::size_t>(n);
  const std::int32_t last = m_count - 1;
  // Zeros instead of a list of indices: the products run along memory.
  const T* step = memory.Step(last);
  const T* difference = memory.Difference(last);
  T* boundStep = m_masked.get();
  T* freeDifference = boundStep + count;
  for (std::size_t i = 0; i < count; ++i) {
    boundStep[i] = boundState[i] > 0 ? step[i] : T(0);
    freeDifference[i] = boundState[i] > 0 ? T(0) : difference[i];
  }
  const bool areAllFree = freeCount == n;
  for (std::int32_t j = 0; j < m_count; ++j) {
    m_products(last, j) = qxKernels::Dot(count, freeDifference, memory.Difference(j));
    m_products(m_m + last, m_m + j) = areAllFree ? T(0) : qxKernels::Dot(count, boundStep, memory.Step(j));
    m_products(m_m + last, j) = areAllFree ? T(0) : qxKernels::Dot(count, boundStep, memory.Difference(j));
  }
  for (std::int32_t i = 0; i < m_count; ++i) {
    m_products(m_m + i, last) = qxKernels::Dot(count, memory.Step(i), freeDifference);
  }
}

/// A variable that enters the free ones (sign 1) or leaves them (sign -1) goes from the sums over the bound variables
/// to those over the free ones, or back.
template <typename T>
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

template <typename T>
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

template <typename T>
void SubspaceMatrix<T>::Solve(T* v) const {
  SolveTransposed(2 * m_count, m_matrix, v);
  for (std::int32_t i = 0; i < m_count; ++i) v[i] = -v[i];
  SolveUpper(2 * m_count, m_matrix, v);
}

/// The minimum of the model over the variables that are free at the Cauchy point, by the direct primal method; the step
/// to it is cut back to the bounds. False when the matrix could not be factored.
template <typename T>
bool BoundedMinimizer<T>::MinimizeInSubspace() {
  std::int32_t isNew = m_isAppended;
  LBFGSB_Freev(m_n, m_freeCount, m_freeIndex.get(), m_enterCount, m_leaveCount, m_entering.get(), m_boundState.get(),
               m_memory.Count(), isNew, 1, m_iterations);
  if (m_memory.Count() == 0) return true;
  m_subspace.Update(m_memory, m_isAppended != 0, m_n, m_boundState.get(), m_freeCount, m_enterCount, m_leaveCount,
                    m_entering.get());
  m_isAppended = 0;
  m_isFactored = m_isFactored && isNew == 0;
  if (m_freeCount == 0) return true;
  if (!m_isFactored && !m_subspace.Factor(m_memory)) return false;
  m_isFactored = true;

  // Reduced gradient of the model at the Cauchy point, negated; zero for the bound variables throughout.
  const T theta = m_memory.Theta();
  const T* c = SmallVector(1);  // W'(Cauchy point - x)
  T* v = SmallVector(2);
  T* residual = m_direction.get();
  const auto dropBound = [&] {
    if (m_freeCount == m_n) return;
    const std::int32_t* states = m_boundState.get();
    for (std::size_t i = 0; i < m_count; ++i) residual[i] = states[i] > 0 ? T(0) : residual[i];
  };
  const T* x = m_x.Data();
  const T* gradient = m_gradient.Data();
  T* target = m_target.get();
  for (std::size_t i = 0; i < m_count; ++i) residual[i] = -theta * (target[i] - x[i]) - gradient[i];
  m_memory.MultiplyByMiddle(c, v);
  m_memory.AddProduct(v, residual);
  dropBound();

  m_memory.MultiplyByTransposed(residual, v);
  m_subspace.Solve(v);
  for (std::int32_t j = 0; j < 2 * m_memory.Count(); ++j) v[j] /= theta;
  m_memory.AddProduct(v, residual);
  qxKernels::Multiply(m_count, residual, 1 / theta);
  dropBound();

  std::size_t blocking = m_count;
  const T part = FeasiblePart(target, 1, blocking);
  if (blocking < m_count) {
    target[blocking] = residual[blocking] > 0 ? m_upper[blocking] : m_lower[blocking];
    residual[blocking] = 0;
  }
  qxKernels::AddMultiple(m_count, target, part, residual);
  return true;
}

template class SubspaceMatrix<float>;
template class SubspaceMatrix<double>;
template bool BoundedMinimizer<float>::MinimizeInSubspace();
template bool BoundedMinimizer<double>::MinimizeInSubspace();

}  // namespace qxSolvers
