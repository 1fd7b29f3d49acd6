#pragma once

#include <qx/foundation/block.h>
#include <qx/foundation/scalar.h>
#include <qx/solvers/internal/compact_memory.h>
#include <qx/solvers/internal/free_variables.h>
#include <qx/solvers/internal/objective.h>
#include <qx/solvers/internal/subspace_matrix.h>
#include <qx/solvers/optimization.h>

#include <cstddef>
#include <cstdint>

/// @file
/// What the steps of the bounded limited-memory method share. Internal, not part of the interface.

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

/// One minimisation with bounds: the point, the model and all blocks that are worked on.
template <qxReal T>
struct BoundedState {
  BoundedState(std::int32_t variables, std::int32_t m, CQXVectorN<T>& start);
  [[nodiscard]] bool HasMemory() const;

  /// Moves x onto the bounds and sets what never changes.
  void Initialize(const Bounds<T>& bounds);
  /// @p value moved onto the bounds of variable @p i.
  [[nodiscard]] T Keep(std::size_t i, T value) const {
    value = value < lower[i] ? lower[i] : value;
    return value > upper[i] ? upper[i] : value;
  }
  /// The part of the direction from @p origin, a point within the bounds, that keeps them: at most @p part.
  /// @param[out] blocking the variable that meets its bound first; not changed when the whole part is feasible
  [[nodiscard]] T FeasiblePart(const T* origin, T part, std::size_t& blocking) const;
  /// Largest magnitude of the projected gradient: of a component that points out of a bound only the distance to the
  /// bound counts. Not a number when a component is.
  [[nodiscard]] T ProjectedGradientNorm() const;
  void ForgetModel();

  /// Vector @p k of two elements for each pair.
  [[nodiscard]] T* SmallVector(std::size_t k) { return small.get() + k * smallSize; }

  std::int32_t n;
  std::size_t count;  // n as the size of a block
  std::size_t smallSize;
  CQXVectorN<T>& x;
  CQXVectorN<T> gradient;
  CompactMemory<T> memory;
  SubspaceMatrix<T> subspace;

  qxBlock<T> lower;  // infinite where there is no bound
  qxBlock<T> upper;
  qxBlock<T> target;  // Cauchy point, then the minimum in the subspace
  qxBlock<T> direction;
  qxBlock<T> start;  // x and gradient before the line search
  qxBlock<T> gradientBefore;
  qxBlock<T> breakpoints;
  qxBlock<T> small;             // see SmallVector()
  qxBlock<std::int32_t> order;  // variables with a breakpoint, as a heap
  qxBlock<std::int32_t> freeIndex;
  qxBlock<std::int32_t> entering;
  qxBlock<std::int32_t> boundState;
  FreeVariables freeVariables;

  bool isBoxed = true;      // every variable has both bounds
  bool isFactored = false;  // the matrix of the subspace, for the present model and free variables
  bool isAppended = false;  // a pair since the subspace was up to date
  std::int32_t iterations = 0;
};

}  // namespace qxSolvers
