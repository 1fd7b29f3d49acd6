#include <qx/kernels/array_kernels.h>
#include <qx/kernels/matrix_kernels.h>
#include <qx/kernels/rotation_kernels.h>
#include <qx/matrices/matrix_n.h>
#include <qx/solvers/algebra.h>

#include <algorithm>

template <qxReal T>
std::int32_t CQXAlgebraFunctions<T>::SolveByCongugateGradient(const CQXMatrixN<T>& A, const CQXVectorN<T>& b,
                                                              CQXVectorN<T>& x, T tol, T diagonalShift) {
  const std::int32_t size = A.Size();
  const std::size_t n = qxElementCount(size, 1);
  CQXMatrixN<T> matrix(A), preconditioner(size);
  CQXVectorN<T> right(size);
  const qxBlock<T> work = qxMakeBlock<T>(6 * n);
  const bool isHeld = matrix.Data() != nullptr && preconditioner.Data() != nullptr && right.Data() != nullptr &&
                      b.Data() != nullptr && x.Data() != nullptr;
  if (work == nullptr || (n > 0 && !isHeld)) return 0;
  right.Fill(b.Data());
  if (!(A.IsSymmetric(tol) != 0 && A.IsPositive(tol) != 0)) {
    const qxBlock<T> transpose = qxMakeBlock<T>(n * n);
    if (transpose == nullptr) return 0;
    qxKernels::Transpose(n, n, A.Data(), transpose.get());
    qxKernels::MultiplyMatrices(n, n, n, transpose.get(), A.Data(), matrix.Data());
    qxKernels::MultiplyMatrixByVector(n, n, transpose.get(), b.Data(), right.Data());
  }
  const T threshold = tol * tol * right.SquareLength();
  if (diagonalShift > QX_TOLERANCE<T>) {
    for (std::int32_t i = 0; i < size; ++i) matrix(i, i) += diagonalShift;
  }
  if (matrix.InvPreconditioner(preconditioner, T(1)) == 0) return 0;

  T* const solution = work.get();
  T* const best = solution + n;
  T* const residual = best + n;
  T* const direction = residual + n;
  T* const image = direction + n;
  T* const preconditioned = image + n;
  const auto findResidual = [&] {
    qxKernels::MultiplyMatrixByVector(n, n, matrix.Data(), solution, residual);
    qxKernels::Difference(n, right.Data(), residual, residual);
  };
  const auto precondition = [&](T* target) {
    qxKernels::MultiplyMatrixByVector(n, n, preconditioner.Data(), residual, target);
  };
  qxKernels::Copy(n, x.Data(), solution);
  findResidual();
  precondition(direction);
  T rz = qxKernels::Dot(n, residual, direction);
  T rr = qxKernels::SumOfSquares(n, residual);
  T bestSquare = rr;
  qxKernels::Copy(n, solution, best);
  const T ceiling = 1000 * rr;
  const std::int64_t limit = 100 * std::int64_t{size};
  for (std::int64_t iteration = 0; rr > threshold && iteration < limit; ++iteration) {
    qxKernels::MultiplyMatrixByVector(n, n, matrix.Data(), direction, image);
    const T alpha = rz / qxKernels::Dot(n, direction, image);
    qxKernels::AddMultiple(n, alpha, direction, solution);
    findResidual();
    rr = qxKernels::SumOfSquares(n, residual);
    if (rr < bestSquare) {
      bestSquare = rr;
      qxKernels::Copy(n, solution, best);
    }
    precondition(preconditioned);
    const T rzNew = qxKernels::Dot(n, residual, preconditioned);
    qxKernels::Multiply(n, direction, rzNew / rz);
    qxKernels::Add(n, direction, preconditioned);
    rz = rzNew;
    if (rr >= ceiling) break;
  }
  // Not a number counts as worse than the best.
  x.FillPart(rr <= bestSquare ? solution : best, 0, size);
  return rr <= threshold;
}

template class CQXAlgebraFunctions<float>;
template class CQXAlgebraFunctions<double>;
