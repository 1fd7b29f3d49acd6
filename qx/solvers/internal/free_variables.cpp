#include <qx/solvers/internal/free_variables.h>

namespace qxSolvers {

bool FreeVariables::Update(std::int32_t n, const std::int32_t* boundState, bool isFollowing) noexcept {
  enterCount = 0;
  leaveCount = 0;
  for (std::int32_t i = 0; isFollowing && i < n; ++i) {
    const std::int32_t variable = index[i];
    const bool wasFree = i < freeCount;
    const bool isFree = boundState[variable] <= 0;
    if (wasFree && !isFree) entering[n - ++leaveCount] = variable;
    if (!wasFree && isFree) entering[enterCount++] = variable;
  }
  freeCount = 0;
  std::int32_t others = n;
  for (std::int32_t i = 0; i < n; ++i) index[boundState[i] <= 0 ? freeCount++ : --others] = i;
  return enterCount > 0 || leaveCount > 0;
}

}  // namespace qxSolvers
