#include <qx/foundation/conversion.h>
#include <qx/foundation/internal/instantiate.h>
#include <qx/grids/internal/coverage.h>

#include <algorithm>
#include <cmath>

namespace qxGrids {

namespace {

/// A height of 1 in fixed point.
constexpr double whole = 1099511627776.0;  // 2^40

std::int64_t ToFixed(double x) { return qxToInt64(std::floor(x * whole + 0.5)); }

}  // namespace

Coverage::Coverage(std::int32_t width, std::int32_t height) : m_width(width), m_height(height) {
  const std::size_t count = (static_cast<std::size_t>(width) + 1) * static_cast<std::size_t>(height);
  m_sums = qxMakeBlock<std::uint64_t>(count);
  if (m_sums != nullptr) std::fill_n(m_sums.get(), count, std::uint64_t{0});
}

std::int64_t Coverage::Piece::HeightAt(double x) const {
  if (x >= right) return heightRight;
  const double part = (x - left) / (right - left);
  return heightLeft + qxToInt64(std::floor(static_cast<double>(heightRight - heightLeft) * part + 0.5));
}

void Coverage::AddEdge(const Point& a, const Point& b) {
  const bool isDownwards = a.Y() < b.Y();
  const Point& upper = isDownwards ? a : b;
  const Point& lower = isDownwards ? b : a;
  const double first = std::max(upper.Y(), 0.0);
  const double last = std::min(lower.Y(), static_cast<double>(m_height));
  if (!(first < last)) return;
  const double slope = (lower.X() - upper.X()) / (lower.Y() - upper.Y());
  const auto xAt = [&](double y) {
    if (y == upper.Y()) return upper.X();
    if (y == lower.Y()) return lower.X();
    return std::clamp(upper.X() + (y - upper.Y()) * slope, std::min(upper.X(), lower.X()),
                      std::max(upper.X(), lower.X()));
  };
  for (std::int32_t y = qxToInt32(first); y < last; ++y) {
    const double top = std::max(first, static_cast<double>(y));
    const double bottom = std::min(last, y + 1.0);
    Piece piece{xAt(top), xAt(bottom), ToFixed(top - y), ToFixed(bottom - y), isDownwards ? 1 : -1};
    if (piece.left > piece.right) {
      std::swap(piece.left, piece.right);
      std::swap(piece.heightLeft, piece.heightRight);
      piece.sense = -piece.sense;
    }
    AddPiece(piece, Row(y));
  }
}

void Coverage::AddPiece(const Piece& piece, std::uint64_t* row) const {
  const auto add = [&](std::int32_t x, std::int64_t cover) { row[x] += static_cast<std::uint64_t>(cover); };
  double x = piece.left;
  std::int64_t height = piece.heightLeft;
  if (x < 0) {  // all of the row is on the right of this part
    x = 0;
    const std::int64_t next = piece.right > 0 ? piece.HeightAt(0) : piece.heightRight;
    add(0, piece.sense * (next - height));
    height = next;
    if (!(piece.right > 0)) return;
  }
  do {
    if (x >= m_width) return;
    const std::int32_t cell = qxToInt32(x);
    const double end = std::min(piece.right, cell + 1.0);
    const std::int64_t next = piece.HeightAt(end);
    const std::int64_t cover = piece.sense * (next - height);
    // What of this cell is on the left of the edge is covered from the next cell on only.
    const double leftOfEdge = (x + end) / 2 - cell;
    const std::int64_t later = qxToInt64(std::floor(static_cast<double>(cover) * leftOfEdge + 0.5));
    add(cell, cover - later);
    add(cell + 1, later);
    x = end;
    height = next;
  } while (x < piece.right);
}

template <qxReal T>
void Coverage::WriteRow(std::int32_t y, qxFillRule rule, T* row) const {
  const std::uint64_t* const sums = Row(y);
  std::uint64_t sum = 0;
  T value = 0;
  for (std::int32_t x = 0; x < m_width; ++x) {
    if (sums[x] != 0) {  // most pixels are like the one before
      sum += sums[x];
      double covered = std::abs(static_cast<double>(static_cast<std::int64_t>(sum))) / whole;
      if (rule == QX_FILL_EVEN_ODD) {
        covered = std::fmod(covered, 2.0);
        covered = std::min(covered, 2 - covered);
      }
      value = static_cast<T>(std::min(covered, 1.0));
    }
    row[x] = value;
  }
}

#define QX_INSTANTIATE(T) template void Coverage::WriteRow(std::int32_t, qxFillRule, T*) const;
QX_FOR_FLOAT_AND_DOUBLE(QX_INSTANTIATE)
#undef QX_INSTANTIATE

}  // namespace qxGrids
