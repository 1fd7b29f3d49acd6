#pragma once

#include <qx/foundation/block.h>
#include <qx/geometry/fill_rule.h>
#include <qx/vectors/vector2.h>

#include <cstdint>

/// @file
/// The areas that polygons cover in each pixel of a grid. Internal, not part of the interface.

namespace qxGrids {

/// Sums what each edge adds to the winding numbers on its right: to a part of the pixels that it goes through and to
/// all that follow in the row. Sums are whole numbers, so that closed polygons leave exactly nothing behind, in any
/// order of their edges.
class Coverage {
 public:
  using Point = CQXVector2<double>;

  Coverage(std::int32_t width, std::int32_t height);

  [[nodiscard]] bool HasMemory() const { return m_sums != nullptr; }

  /// Adds an edge of a closed polygon.
  void AddEdge(const Point& a, const Point& b);

  /// Writes the covered part of each pixel of a row.
  template <qxReal T>
  void WriteRow(std::int32_t y, qxFillRule rule, T* row) const;

 private:
  /// A piece of an edge between two heights of one row, from left to right.
  struct Piece {
    double left, right;
    std::int64_t heightLeft, heightRight;  ///< in fixed point, downwards from the upper side of the row
    std::int64_t sense;                    ///< 1 or -1: the winding of an edge that goes down to the right

    /// The height at @p x from left to right.
    [[nodiscard]] std::int64_t HeightAt(double x) const;
  };

  [[nodiscard]] std::uint64_t* Row(std::int32_t y) const {
    return m_sums.get() + static_cast<std::size_t>(y) * (static_cast<std::size_t>(m_width) + 1);
  }
  void AddPiece(const Piece& piece, std::uint64_t* row) const;

  std::int32_t m_width;
  std::int32_t m_height;
  /// One more than pixels in each row. Unsigned, so that a border of millions of turns wraps instead of trapping.
  qxBlock<std::uint64_t> m_sums;
};

}  // namespace qxGrids
