#pragma once

#include <qx/foundation/scalar.h>

#include <cstdint>

/// @file
/// Closed forms of small systems and polynomials, under the fixed matrices and CQXAlgebra, which documents them.
/// Internal, not part of the interface.

namespace qxKernels {

/// CQXAlgebra::Solve2x2System().
template <qxReal T>
std::int32_t Solve2x2System(T a, T b, T c, T d, T r0, T r1, T& x, T& y, std::int32_t& conditionFlag, T tol) noexcept;

/// CQXAlgebra::Solve3x3System().
template <qxReal T>
std::int32_t Solve3x3System(T a, T b, T c, T d, T e, T f, T g, T h, T i, T r0, T r1, T r2, T& x, T& y, T& z,
                            std::int32_t& conditionFlag, T tol) noexcept;

/// Roots of a quadratic: middle -+ distance for two real ones (code 2), the middle for a double one (1), and
/// middle +- distance sqrt(-1) for a complex pair (0).
template <qxReal T>
struct QuadraticRoots {
  std::int32_t code;
  T middle;
  T distance;

  /// As reals: the smaller root first, of a complex pair the real and the positive imaginary part.
  void Write(T& x1, T& x2) const noexcept {
    x1 = code == 2 ? middle - distance : middle;
    x2 = code == 2 ? middle + distance : (code == 0 ? distance : middle);
  }
};

/// Roots of x^2 + p x + q; the discriminant p^2 / 4 - q counts as zero within @p band.
template <qxReal T>
[[nodiscard]] QuadraticRoots<T> SolveReducedQuadratic(T p, T q, T band) noexcept;

/// CQXAlgebra::SolveReducedCubic() with real outputs.
template <qxReal T>
std::int32_t SolveReducedCubic(T a, T b, T c, T& x1, T& x2, T& x3, T tol) noexcept;

}  // namespace qxKernels
