#pragma once

#include <qx/foundation/block.h>
#include <qx/foundation/scalar.h>
#include <qx/solvers/internal/compact_memory.h>
#include <qx/solvers/internal/objective.h>
#include <qx/solvers/optimization.h>

#include <cstdint>

/// @file
/// The bounded limited-memory method. Internal, not part of the interface.

namespace qxSolvers {

/// The bounds as they are given.
template <qxReal T>
struct Bounds {
  const QX_OPTIMIZATION_CONSTRAINTS* kinds;
  const T* lower;
  const T* upper;
};

/// States of a variable at the generalized Cauchy point; those above 0 are at a bound.
enum BoundState : std::int32_t {
  QX_STATE_FLAT = -3,      ///< free, with a gradient of 0
  QX_STATE_NO_BOUND = -1,  ///< free always
  QX_STATE_FREE = 0,
  QX_STATE_LOWER = 1,  ///< at its lower bound
  QX_STATE_UPPER = 2,  ///< at its upper bound
  QX_STATE_FIXED = 3   ///< its bounds are equal
};

/// The matrix of the subspace problem: the indefinite 2k x 2k matrix K of k pairs in the form L E L'.
///
/// The inner products over free and bound variables behind it are kept from one iteration to the next and changed by
/// what entered and left. R. H. Byrd et al. (1995), section 5.
template <qxReal T>
class SubspaceMatrix {
 public:
  SubspaceMatrix(std::int32_t n, std::int32_t m);
  [[nodiscard]] bool HasMemory() const;

  /// No inner products: the memory was reset.
  void Reset() { m_count = 0; }

  /// Makes room for the newest pair; AddStrip() must follow for all strips.
  void AppendPair(const CompactMemory<T>& memory);
  /// Adds the inner products of the newest pair for the variables of a strip.
  void AddStrip(const CompactMemory<T>& memory, std::size_t first, std::size_t size, const std::int32_t* boundState,
                bool areAllFree);
  /// Moves a variable that enters the free ones (sign 1) or leaves them (sign -1) from the sums over the bound
  /// variables to those over the free ones, or back, for the oldest pairs.
  void MoveVariable(const CompactMemory<T>& memory, std::int32_t pairs, std::int32_t variable, T sign);
  /// Forms and factors the matrix; false at a pivot that is not positive.
  [[nodiscard]] bool Factor(const CompactMemory<T>& memory);
  /// v := K^-1 v.
  void Solve(T* v) const;

 private:
  std::int32_t m_m;
  std::int32_t m_count = 0;
  CQXMatrixMN<T> m_products;  // lower triangle in m x m blocks: Y'ZZ'Y; -L and R parts of S'Y; S'AA'S
  CQXMatrixMN<T> m_matrix;    // upper triangle: the factors
  qxBlock<T> m_masked;        // the newest pair with zeros for part of its variables
};

/// One minimisation with bounds, with all that it works on.
template <qxReal T>
class BoundedMinimizer : private CQXOptimization {
 public:
  BoundedMinimizer(std::int32_t n, std::int32_t m, const Bounds<T>& bounds, const Objective<T>& objective,
                   CQXVectorN<T>& x);
  [[nodiscard]] bool HasMemory() const;

  T Minimize(T xTol, T fTol, T gTol, std::int32_t maxIterations, QX_OPTIMIZATION_INFO& info);

 private:
  void Initialize();
  void Evaluate();
  /// @p value moved onto the bounds of variable @p i.
  [[nodiscard]] T Keep(std::size_t i, T value) const {
    value = value < m_lower[i] ? m_lower[i] : value;
    return value > m_upper[i] ? m_upper[i] : value;
  }
  [[nodiscard]] T ProjectedGradientNorm() const;
  [[nodiscard]] bool FindCauchyPoint();
  void PassBreakpoints(T f1, T f2, T way);
  [[nodiscard]] T FeasiblePart(const T* origin, T part, std::size_t& blocking) const;
  [[nodiscard]] bool MinimizeInSubspace();
  [[nodiscard]] bool SearchTowardsTarget();
  void ForgetModel();
  void UpdateModel();

  /// Vector @p k of two elements for each pair.
  [[nodiscard]] T* SmallVector(std::size_t k) { return m_small.get() + k * 2 * static_cast<std::size_t>(m_m); }

  std::int32_t m_n;
  std::int32_t m_m;
  std::size_t m_count;  // m_n as the size of a block
  Bounds<T> m_bounds;
  const Objective<T>& m_objective;
  CQXVectorN<T>& m_x;
  CQXVectorN<T> m_gradient;
  CompactMemory<T> m_memory;
  SubspaceMatrix<T> m_subspace;

  qxBlock<T> m_lower;  // infinite where there is no bound
  qxBlock<T> m_upper;
  qxBlock<T> m_target;  // Cauchy point, then the minimum in the subspace
  qxBlock<T> m_direction;
  qxBlock<T> m_start;  // x and gradient before the line search
  qxBlock<T> m_gradientBefore;
  qxBlock<T> m_breakpoints;
  qxBlock<T> m_small;             // see SmallVector()
  qxBlock<std::int32_t> m_order;  // variables with a breakpoint, as a heap
  qxBlock<std::int32_t> m_freeIndex;
  qxBlock<std::int32_t> m_entering;
  qxBlock<std::int32_t> m_boundState;

  bool m_isBoxed = true;      // every variable has both bounds
  bool m_isFactored = false;  // the matrix of the subspace, for the present model and free variables
  std::int32_t m_iterations = 0;
  std::int32_t m_freeCount = 0;
  std::int32_t m_enterCount = 0;
  std::int32_t m_leaveCount = 0;
  std::int32_t m_isAppended = 0;  // a pair since the subspace was up to date
  T m_f = 0;
  T m_fBefore = 0;
  T m_step = 0;
  T m_slope = 0;
  T m_slopeBefore = 0;
};

}  // namespace qxSolvers
