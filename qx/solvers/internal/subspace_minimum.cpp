#include <qx/foundation/internal/instantiate.h>
#include <qx/kernels/array_kernels.h>
#include <qx/kernels/rotation_kernels.h>
#include <qx/solvers/internal/subspace_minimum.h>

#include <algorithm>
#include <cstddef>
#include <utility>

namespace qxSolvers {

namespace {

/// In one pass over the pairs: the products of the newest pair, the reduced gradient of the model at the Cauchy point,
/// negated (zero for the bound variables), into the direction, and its product with W' into @p v.
template <qxReal T>
void ReduceGradient(BoundedState<T>& state, bool isAppended, T* v) {
  const T theta = state.memory.Theta();
  T* product = state.SmallVector(2);
  T* residual = state.direction.get();
  const std::int32_t* bounds = state.boundState.get();
  const T* x = state.x.Data();
  const T* gradient = state.gradient.Data();
  const T* target = state.target.get();
  const std::int32_t freeCount = state.freeVariables.freeCount;
  state.memory.MultiplyByMiddle(state.SmallVector(1), product);  // W'(Cauchy point - x)
  std::fill_n(v, 2 * state.memory.Count(), T(0));
  ForEachStrip(state.count, [&](std::size_t first, std::size_t size) {
    if (isAppended) state.subspace.AddStrip(state.memory, first, size, bounds, freeCount == state.n);
    if (freeCount == 0) return;
    for (std::size_t i = first; i < first + size; ++i) residual[i] = -theta * (target[i] - x[i]) - gradient[i];
    state.memory.AddProduct(first, size, product, residual + first);
    for (std::size_t i = first; i < first + size; ++i) residual[i] = bounds[i] > 0 ? T(0) : residual[i];
    state.memory.AddTransposedProduct(first, size, residual + first, v);
  });
}

/// The newest pair was summed over the present sets; the older ones follow the changes.
template <qxReal T>
void FollowChanges(BoundedState<T>& state, bool isAppended) {
  const FreeVariables& variables = state.freeVariables;
  const std::int32_t olderPairs = isAppended ? state.memory.Count() - 1 : state.memory.Count();
  for (std::int32_t i = 0; i < variables.enterCount; ++i) {
    state.subspace.MoveVariable(state.memory, olderPairs, variables.entering[i], 1);
  }
  for (std::int32_t i = state.n - variables.leaveCount; i < state.n; ++i) {
    state.subspace.MoveVariable(state.memory, olderPairs, variables.entering[i], -1);
  }
}

/// From the reduced gradient in the direction and its product @p v to the step to the minimum, in the direction.
template <qxReal T>
void SolveForStep(BoundedState<T>& state, T* v) {
  const T theta = state.memory.Theta();
  T* residual = state.direction.get();
  const std::int32_t* bounds = state.boundState.get();
  state.subspace.Solve(v);
  for (std::int32_t j = 0; j < 2 * state.memory.Count(); ++j) v[j] /= theta;
  ForEachStrip(state.count, [&](std::size_t first, std::size_t size) {
    state.memory.AddProduct(first, size, v, residual + first);
    for (std::size_t i = first; i < first + size; ++i) {
      const T scaled = residual[i] * (1 / theta);
      residual[i] = bounds[i] > 0 ? T(0) : scaled;
    }
  });
}

/// Moves the target along the direction as far as the bounds allow.
template <qxReal T>
void StepWithinBounds(BoundedState<T>& state) {
  T* direction = state.direction.get();
  std::size_t blocking = state.count;
  const T part = state.FeasiblePart(state.target.get(), 1, blocking);
  if (blocking < state.count) {
    state.target[blocking] = direction[blocking] > 0 ? state.upper[blocking] : state.lower[blocking];
    direction[blocking] = 0;
  }
  qxKernels::AddMultiple(state.count, part, direction, state.target.get());
}

}  // namespace

template <qxReal T>
bool MinimizeInSubspace(BoundedState<T>& state) {
  const bool hasChanged = state.freeVariables.Update(state.n, state.boundState.get(), state.iterations > 0);
  if (state.memory.Count() == 0) return true;
  const bool isAppended = std::exchange(state.isAppended, false);
  if (isAppended) state.subspace.AppendPair(state.memory);
  T* v = state.SmallVector(3);
  ReduceGradient(state, isAppended, v);
  FollowChanges(state, isAppended);
  state.isFactored = state.isFactored && !isAppended && !hasChanged;
  if (state.freeVariables.freeCount == 0) return true;
  if (!state.isFactored && !state.subspace.Factor(state.memory)) return false;
  state.isFactored = true;
  SolveForStep(state, v);
  StepWithinBounds(state);
  return true;
}

#define QX_INSTANTIATE(T) template bool MinimizeInSubspace(BoundedState<T>&);
QX_FOR_FLOAT_AND_DOUBLE(QX_INSTANTIATE)
#undef QX_INSTANTIATE

}  // namespace qxSolvers
