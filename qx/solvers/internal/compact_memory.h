#pragma once

#include <qx/foundation/scalar.h>
#include <qx/matrices/matrix_mn.h>
#include <qx/solvers/internal/pair_ring.h>

#include <algorithm>
#include <cstddef>
#include <cstdint>

/// @file
/// The limited-memory matrix of the bounded method. Internal, not part of the interface.

namespace qxSolvers {

/// The loops over all pairs go through the variables in strips, so that a strip of a vector stays in the cache for all
/// of them. @p visit takes the first variable of a strip and the number of its variables.
inline constexpr std::int32_t stripSize = 2048;
template <typename Visit>
void ForEachStrip(std::size_t count, Visit visit) {
  for (std::size_t first = 0; first < count; first += stripSize) {
    visit(first, std::min(count - first, static_cast<std::size_t>(stripSize)));
  }
}

/// The last pairs of a step s and the difference y of the gradients over it, with the compact form
/// B = theta I - W M W' of the approximate Hessian, W = (Y, theta S).
///
/// R. H. Byrd, J. Nocedal and R. B. Schnabel, Representations of quasi-Newton matrices and their use in limited memory
/// methods, Math. Programming 63 (1994), theorem 2.3. Pairs are numbered from the oldest to the newest. A vector of
/// 2 Count() elements has the part of Y first, then that of S.
template <qxReal T>
class CompactMemory {
 public:
  CompactMemory(std::int32_t n, std::int32_t m);
  [[nodiscard]] bool HasMemory() const;

  [[nodiscard]] std::int32_t Count() const { return m_count; }
  [[nodiscard]] T Theta() const { return m_theta; }

  /// No pairs, theta = 1.
  void Reset();

  /// Takes in the pair s = factor direction, y = gradient - former gradient with the product @p sy; the oldest pair
  /// goes when there is no room. theta becomes y y / s y. Complete() must follow.
  void Append(const T* direction, T factor, const T* gradient, const T* formerGradient, T sy);

  /// product := W' v, and in the same pass the inner products of a pair that was appended.
  /// @return false when the middle matrix is not positive definite: the memory has to be reset.
  [[nodiscard]] bool Complete(const T* v, T* product);

  [[nodiscard]] const T* Step(std::int32_t pair) const { return m_pairs.Step(static_cast<std::size_t>(pair)); }
  [[nodiscard]] const T* Difference(std::int32_t pair) const {
    return m_pairs.Difference(static_cast<std::size_t>(pair));
  }
  /// s y of one pair.
  [[nodiscard]] T Curvature(std::int32_t pair) const { return m_sy(pair, pair); }

  /// product += W' v for the variables of a strip; v begins with the strip.
  void AddTransposedProduct(std::size_t first, std::size_t size, const T* v, T* product) const;
  /// target += W c for the variables of a strip; the target begins with the strip.
  void AddProduct(std::size_t first, std::size_t size, const T* c, T* target) const;
  /// Row @p i of W.
  void GetRow(std::int32_t i, T* row) const;
  /// product := M v, by the Cholesky factor of theta S'S + L D^-1 L'.
  void MultiplyByMiddle(const T* v, T* product) const;

 private:
  std::size_t m_n;
  std::int32_t m_m;
  std::int32_t m_count = 0;
  T m_theta = 1;
  bool m_isAppended = false;  // a pair whose inner products are still to be formed
  PairRing<T> m_pairs;
  CQXMatrixMN<T> m_sy;      // s_i y_j: the diagonal is D, below it is L
  CQXMatrixMN<T> m_ss;      // s_i s_j, lower triangle
  CQXMatrixMN<T> m_factor;  // upper triangle
};

}  // namespace qxSolvers
