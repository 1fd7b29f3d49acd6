#include <qx/foundation/block.h>
#include <qx/foundation/internal/instantiate.h>
#include <qx/kernels/array_kernels.h>
#include <qx/kernels/rotation_kernels.h>
#include <qx/matrices/matrix_mn.h>
#include <qx/solvers/internal/linear_programming.h>

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <limits>

namespace qxSolvers {

namespace {

/// The tableau in rows: the constraints, then the costs relative to the basis. The columns are the variables, one slack
/// and one artificial variable for each constraint, and the right side.
template <qxReal T>
class Tableau {
 public:
  Tableau(std::size_t rows, std::size_t variables, T tol, std::int32_t maxIterations)
      : m_rows(rows),
        m_variables(variables),
        m_columns(variables + 2 * rows + 1),
        m_tol(tol),
        m_left(maxIterations),
        m_elements(qxMakeBlock<T>((rows + 1) * m_columns)),
        m_basis(qxMakeBlock<std::size_t>(rows)) {}

  [[nodiscard]] bool HasMemory() const { return m_elements != nullptr && m_basis != nullptr; }

  void SetConstraint(std::size_t i, const T* coefficients, QX_LINEAR_RELATION relation, T right) {
    T* row = Row(i);
    qxKernels::SetToZero(m_columns, row);
    qxKernels::Copy(m_variables, coefficients, row);
    if (relation != QX_EQUAL) row[Slack(i)] = relation == QX_LESS_EQUAL ? T(1) : T(-1);
    row[Right()] = right;
    T scale = 0;  // the tolerance counts in units of the largest coefficient
    for (std::size_t j = 0; j < m_variables; ++j) scale = std::max(scale, std::abs(row[j]));
    if (scale > 0) qxKernels::Divide(m_columns, right < 0 ? -scale : scale, row);
    if (scale > 0 && row[Slack(i)] != 0) row[Slack(i)] = row[Slack(i)] > 0 ? T(1) : T(-1);
    if (scale == 0 && right < 0) qxKernels::Multiply(m_columns, T(-1), row);
    const bool isBasic = row[Slack(i)] > 0;
    if (!isBasic) row[Artificial(i)] = 1;
    m_basis[i] = isBasic ? Slack(i) : Artificial(i);
  }

  [[nodiscard]] QX_OPTIMIZATION_INFO Solve(const T* costs) {
    qxKernels::SetToZero(m_columns, Row(m_rows));
    std::fill_n(Row(m_rows) + Artificial(0), m_rows, T(1));
    T largest = 1;
    for (std::size_t i = 0; i < m_rows; ++i) largest = std::max(largest, Row(i)[Right()]);
    const QX_OPTIMIZATION_INFO first = Descend();
    if (first == QX_OPT_ITERATION_LIMIT) return first;
    if (!(-Row(m_rows)[Right()] <= m_tol * largest)) return QX_OPT_INFEASIBLE;
    RemoveArtificial();
    qxKernels::SetToZero(m_columns, Row(m_rows));
    T scale = 0;
    for (std::size_t j = 0; j < m_variables; ++j) scale = std::max(scale, std::abs(costs[j]));
    if (scale > 0) qxKernels::Quotient(m_variables, costs, scale, Row(m_rows));
    return Descend();
  }

  void GetSolution(T* x) {
    qxKernels::SetToZero(m_variables, x);
    for (std::size_t i = 0; i < m_rows; ++i) {
      if (m_basis[i] < m_variables) x[m_basis[i]] = std::max(T(0), Row(i)[Right()]);
    }
  }

 private:
  [[nodiscard]] T* Row(std::size_t i) { return m_elements.get() + i * m_columns; }
  [[nodiscard]] std::size_t Slack(std::size_t i) const { return m_variables + i; }
  [[nodiscard]] std::size_t Artificial(std::size_t i) const { return m_variables + m_rows + i; }
  [[nodiscard]] std::size_t Right() const { return m_columns - 1; }

  /// Makes the costs relative to the basis and exchanges variables until no cost is negative. Bland's rule, the lowest
  /// index of all that qualify, comes back to no basis: R. G. Bland, Math. Oper. Res. 2 (1977). Artificial variables do
  /// not come back either.
  [[nodiscard]] QX_OPTIMIZATION_INFO Descend() {
    for (std::size_t i = 0; i < m_rows; ++i) {
      const T cost = Row(m_rows)[m_basis[i]];
      if (cost != 0) qxKernels::AddMultiple(m_columns, -cost, Row(i), Row(m_rows));
    }
    for (;;) {
      const T* costs = Row(m_rows);
      std::size_t entering = 0;
      while (entering < Artificial(0) && !(costs[entering] < -m_tol)) ++entering;
      if (entering == Artificial(0)) return QX_OPT_FUNCTION_CONVERGED;
      if (m_left-- <= 0) return QX_OPT_ITERATION_LIMIT;
      const std::size_t leaving = FindLeaving(entering);
      if (leaving == m_rows) return QX_OPT_UNBOUNDED;
      Exchange(leaving, entering);
    }
  }

  [[nodiscard]] std::size_t FindLeaving(std::size_t entering) {
    std::size_t leaving = m_rows;
    T least = std::numeric_limits<T>::infinity();
    for (std::size_t i = 0; i < m_rows; ++i) {
      if (!(Row(i)[entering] > m_tol)) continue;
      const T ratio = Row(i)[Right()] / Row(i)[entering];
      if (ratio < least || (ratio == least && leaving < m_rows && m_basis[i] < m_basis[leaving])) {
        least = ratio;
        leaving = i;
      }
    }
    return leaving;
  }

  void Exchange(std::size_t leaving, std::size_t entering) {
    T* pivotRow = Row(leaving);
    qxKernels::Divide(m_columns, pivotRow[entering], pivotRow);
    pivotRow[entering] = 1;
    for (std::size_t i = 0; i <= m_rows; ++i) {
      const T factor = Row(i)[entering];
      if (i == leaving || factor == 0) continue;
      qxKernels::AddMultiple(m_columns, -factor, pivotRow, Row(i));
      Row(i)[entering] = 0;
    }
    m_basis[leaving] = entering;
  }

  /// What is left of the artificial variables is 0: others take their places, and where there is none the constraint
  /// says nothing new.
  void RemoveArtificial() {
    for (std::size_t i = 0; i < m_rows; ++i) {
      if (m_basis[i] < Artificial(0)) continue;
      const std::size_t entering = qxKernels::IndexOfMax(Artificial(0), Row(i), true);
      if (std::abs(Row(i)[entering]) > m_tol) {
        Exchange(i, entering);
      } else {
        qxKernels::SetToZero(m_columns, Row(i));
      }
    }
  }

  std::size_t m_rows;
  std::size_t m_variables;
  std::size_t m_columns;
  T m_tol;
  std::int32_t m_left;
  qxBlock<T> m_elements;
  qxBlock<std::size_t> m_basis;
};

}  // namespace

template <qxReal T>
T MinimizeLinearProgramme(const CQXMatrixMN<T>& A, const CQXVectorN<T>& b, const CQXVectorN<T>& c,
                          const QX_LINEAR_RELATION* relations, CQXVectorN<T>& x, T tol, std::int32_t maxIterations,
                          QX_OPTIMIZATION_INFO& info) {
  info = QX_OPT_INVALID;
  const std::int32_t rows = A.RowsNb(), variables = A.ColsNb();
  if (rows < 1 || variables < 1 || b.Dim() < rows || c.Dim() < variables || x.Dim() < variables ||
      A.Data() == nullptr || b.Data() == nullptr || c.Data() == nullptr || x.Data() == nullptr || !(tol > 0) ||
      maxIterations < 1) {
    return std::numeric_limits<T>::quiet_NaN();
  }
  const std::size_t count = static_cast<std::size_t>(variables);
  Tableau<T> tableau(static_cast<std::size_t>(rows), count, tol, maxIterations);
  if (!tableau.HasMemory()) return std::numeric_limits<T>::quiet_NaN();
  for (std::size_t i = 0; i < static_cast<std::size_t>(rows); ++i) {
    tableau.SetConstraint(i, A.Data() + i * count, relations[i], b.Data()[i]);
  }
  info = tableau.Solve(c.Data());
  if (info == QX_OPT_INFEASIBLE) return std::numeric_limits<T>::infinity();
  if (info == QX_OPT_UNBOUNDED) return -std::numeric_limits<T>::infinity();
  if (info == QX_OPT_ITERATION_LIMIT) return std::numeric_limits<T>::quiet_NaN();
  tableau.GetSolution(x.Data());
  return qxKernels::Dot(count, c.Data(), x.Data());
}

#define QX_INSTANTIATE(T)                                                                               \
  template T MinimizeLinearProgramme(const CQXMatrixMN<T>&, const CQXVectorN<T>&, const CQXVectorN<T>&, \
                                     const QX_LINEAR_RELATION*, CQXVectorN<T>&, T, std::int32_t,        \
                                     QX_OPTIMIZATION_INFO&);
QX_FOR_FLOAT_AND_DOUBLE(QX_INSTANTIATE)
#undef QX_INSTANTIATE

}  // namespace qxSolvers
