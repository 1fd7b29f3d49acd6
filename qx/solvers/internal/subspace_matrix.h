#pragma once

#include <qx/foundation/block.h>
#include <qx/foundation/scalar.h>
#include <qx/matrices/matrix_mn.h>
#include <qx/solvers/internal/compact_memory.h>

#include <cstddef>
#include <cstdint>

/// @file
/// The matrix of the subspace problem of the bounded method. Internal, not part of the interface.

namespace qxSolvers {

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

}  // namespace qxSolvers
