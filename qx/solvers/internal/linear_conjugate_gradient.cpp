#include <qx/foundation/block.h>
#include <qx/foundation/internal/instantiate.h>
#include <qx/foundation/tolerance.h>
#include <qx/kernels/array_kernels.h>
#include <qx/kernels/matrix_kernels.h>
#include <qx/kernels/rotation_kernels.h>
#include <qx/matrices/matrix_n.h>
#include <qx/solvers/internal/linear_conjugate_gradient.h>

#include <cstddef>
#include <cstdint>

namespace qxSolvers {

namespace {

/// The system that is worked on, with its preconditioner.
template <qxReal T>
struct WorkingSystem {
  CQXMatrixN<T> matrix;
  CQXVectorN<T> right;
  CQXMatrixN<T> preconditioner;

  WorkingSystem(const CQXMatrixN<T>& A, std::int32_t n) : matrix(A), right(n), preconditioner(n) {}

  /// (A, b), or the normal equations where A is not symmetric and positive definite; false without memory, and where
  /// the diagonal gives no preconditioner.
  [[nodiscard]] bool Prepare(const CQXMatrixN<T>& A, const CQXVectorN<T>& b, T tol, T diagonalShift) {
    const std::int32_t size = A.Size();
    const std::size_t n = qxElementCount(size, 1);
    if (n > 0 && (matrix.Data() == nullptr || preconditioner.Data() == nullptr || right.Data() == nullptr))
      return false;
    right.Fill(b.Data());
    if (!(A.IsSymmetric(tol) != 0 && A.IsPositive(tol) != 0)) {
      const qxBlock<T> transpose = qxMakeBlock<T>(n * n);
      if (transpose == nullptr) return false;
      qxKernels::Transpose(n, n, A.Data(), transpose.get());
      qxKernels::MultiplyMatrices(n, n, n, transpose.get(), A.Data(), matrix.Data());
      qxKernels::MultiplyMatrixByVector(n, n, transpose.get(), b.Data(), right.Data());
    }
    if (diagonalShift > QX_TOLERANCE<T>) {
      for (std::int32_t i = 0; i < size; ++i) matrix(i, i) += diagonalShift;
    }
    return matrix.InvPreconditioner(preconditioner, T(1)) != 0;
  }
};

/// The iteration over vectors in one block. The best solution so far is kept.
template <qxReal T>
class ConjugateGradient {
 public:
  ConjugateGradient(const WorkingSystem<T>& system, std::size_t n, T* work)
      : m_system(system),
        m_n(n),
        m_solution(work),
        m_best(work + n),
        m_residual(work + 2 * n),
        m_direction(work + 3 * n),
        m_image(work + 4 * n),
        m_preconditioned(work + 5 * n) {}

  /// Steps from @p start until the square of the residual is at most @p threshold, has grown a thousandfold, or the
  /// limit is met.
  void Iterate(const T* start, T threshold, std::int64_t limit) {
    qxKernels::Copy(m_n, start, m_solution);
    FindResidual();
    Precondition(m_direction);
    T rz = qxKernels::Dot(m_n, m_residual, m_direction);
    m_square = m_bestSquare = qxKernels::SumOfSquares(m_n, m_residual);
    qxKernels::Copy(m_n, m_solution, m_best);
    const T ceiling = 1000 * m_square;
    for (std::int64_t iteration = 0; m_square > threshold && iteration < limit; ++iteration) {
      qxKernels::MultiplyMatrixByVector(m_n, m_n, m_system.matrix.Data(), m_direction, m_image);
      const T alpha = rz / qxKernels::Dot(m_n, m_direction, m_image);
      qxKernels::AddMultiple(m_n, alpha, m_direction, m_solution);
      FindResidual();
      m_square = qxKernels::SumOfSquares(m_n, m_residual);
      if (m_square < m_bestSquare) {
        m_bestSquare = m_square;
        qxKernels::Copy(m_n, m_solution, m_best);
      }
      Precondition(m_preconditioned);
      const T rzNew = qxKernels::Dot(m_n, m_residual, m_preconditioned);
      qxKernels::Multiply(m_n, rzNew / rz, m_direction);
      qxKernels::Add(m_n, m_preconditioned, m_direction);
      rz = rzNew;
      if (m_square >= ceiling) break;
    }
  }

  /// Square of the last residual.
  [[nodiscard]] T Square() const { return m_square; }
  /// The last solution, or the best one where that is better; not a number counts as worse.
  [[nodiscard]] const T* Solution() const { return m_square <= m_bestSquare ? m_solution : m_best; }

 private:
  void FindResidual() {
    qxKernels::MultiplyMatrixByVector(m_n, m_n, m_system.matrix.Data(), m_solution, m_residual);
    qxKernels::Difference(m_n, m_system.right.Data(), m_residual, m_residual);
  }
  void Precondition(T* target) {
    qxKernels::MultiplyMatrixByVector(m_n, m_n, m_system.preconditioner.Data(), m_residual, target);
  }

  const WorkingSystem<T>& m_system;
  std::size_t m_n;
  T* m_solution;
  T* m_best;
  T* m_residual;
  T* m_direction;
  T* m_image;
  T* m_preconditioned;
  T m_square = 0;
  T m_bestSquare = 0;
};

}  // namespace

template <qxReal T>
bool SolveByConjugateGradient(const CQXMatrixN<T>& A, const CQXVectorN<T>& b, CQXVectorN<T>& x, T tol,
                              T diagonalShift) {
  const std::int32_t size = A.Size();
  const std::size_t n = qxElementCount(size, 1);
  const qxBlock<T> work = qxMakeBlock<T>(6 * n);
  if (work == nullptr || (n > 0 && (b.Data() == nullptr || x.Data() == nullptr))) return false;
  WorkingSystem<T> system(A, size);
  if (!system.Prepare(A, b, tol, diagonalShift)) return false;
  const T threshold = tol * tol * system.right.SquareLength();
  ConjugateGradient<T> method(system, n, work.get());
  method.Iterate(x.Data(), threshold, 100 * std::int64_t{size});
  x.FillPart(method.Solution(), 0, size);
  return method.Square() <= threshold;
}

#define QX_INSTANTIATE(T) \
  template bool SolveByConjugateGradient(const CQXMatrixN<T>&, const CQXVectorN<T>&, CQXVectorN<T>&, T, T);
QX_FOR_FLOAT_AND_DOUBLE(QX_INSTANTIATE)
#undef QX_INSTANTIATE

}  // namespace qxSolvers
