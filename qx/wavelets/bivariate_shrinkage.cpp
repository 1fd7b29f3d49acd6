#include <qx/foundation/block.h>
#include <qx/foundation/internal/instantiate.h>
#include <qx/wavelets/bivariate_shrinkage.h>
#include <qx/wavelets/channel.h>
#include <qx/wavelets/internal/noise_gains.h>

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <limits>
#include <numbers>

namespace {

constexpr std::int32_t reach = 2;
constexpr std::int32_t rowsNb = 2 * reach + 1;

/// Sums of squares over the neighbourhood, row by row: the horizontal sums of the rows about the current one are kept,
/// so that a row may be overwritten as soon as it is done.
template <qxReal T>
class LocalEnergy {
 public:
  LocalEnergy(const CQXChannel<T>& band, T* sums) noexcept
      : m_data(band.GetData()), m_columns(band.GetColsNb()), m_rows(band.GetRowsNb()), m_sums(sums) {
    for (std::int32_t y = 0; y < std::min(reach, m_rows); ++y) SumRow(y);
  }

  /// Writes the means about row @p y; rows are asked for in order, before they are overwritten.
  void Means(std::int32_t y, T* means) noexcept {
    if (y + reach < m_rows) SumRow(y + reach);
    const std::int32_t first = std::max(y - reach, 0), last = std::min(y + reach, m_rows - 1);
    std::fill_n(means, m_columns, T(0));
    for (std::int32_t row = first; row <= last; ++row) {
      const T* sums = Sums(row);
      for (std::int32_t x = 0; x < m_columns; ++x) means[x] += sums[x];
    }
    const std::int32_t height = last - first + 1;
    const T inner = T(1) / static_cast<T>(height * rowsNb);
    for (std::int32_t x = 0; x < m_columns; ++x) {
      const bool isInside = x >= reach && x + reach < m_columns;
      means[x] *= isInside ? inner : T(1) / static_cast<T>(height * Width(x));
    }
  }

 private:
  [[nodiscard]] T* Sums(std::int32_t y) const noexcept { return m_sums + (y % rowsNb) * std::ptrdiff_t{m_columns}; }
  [[nodiscard]] std::int32_t Width(std::int32_t x) const noexcept {
    return std::min(x + reach, m_columns - 1) - std::max(x - reach, 0) + 1;
  }

  void SumRow(std::int32_t y) noexcept {
    const T* row = m_data + y * std::ptrdiff_t{m_columns};
    T* sums = Sums(y);
    const auto clipped = [&](std::int32_t x) {
      T sum = 0;
      for (std::int32_t i = std::max(x - reach, 0); i <= std::min(x + reach, m_columns - 1); ++i)
        sum += row[i] * row[i];
      return sum;
    };
    const std::int32_t inner = std::max(m_columns - reach, reach);
    for (std::int32_t x = 0; x < std::min(reach, m_columns); ++x) sums[x] = clipped(x);
    for (std::int32_t x = reach; x < inner; ++x) {
      const T* at = row + x;
      sums[x] = at[-2] * at[-2] + at[-1] * at[-1] + at[0] * at[0] + at[1] * at[1] + at[2] * at[2];
    }
    for (std::int32_t x = inner; x < m_columns; ++x) sums[x] = clipped(x);
  }

  const T* m_data;
  std::int32_t m_columns, m_rows;
  T* m_sums;
};

/// Writes the squares of the parents of row @p y, scaled to the noise of the children; 0 without parents.
template <qxReal T>
void SquareParents(const CQXChannel<T>* parents, std::int32_t y, T scale, std::int32_t columns, T* squares) noexcept {
  if (parents == nullptr || parents->GetRowsNb() < 1 || parents->GetColsNb() < 1) {
    std::fill_n(squares, columns, T(0));
    return;
  }
  const std::int32_t last = parents->GetColsNb() - 1;
  const T* row = parents->GetData() + std::min(y / 2, parents->GetRowsNb() - 1) * std::ptrdiff_t{last + 1};
  for (std::int32_t x = 0; x < columns; ++x) {
    const T parent = row[std::min(x / 2, last)];
    squares[x] = parent * parent * scale;
  }
}

template <qxReal T>
void ShrinkRow(std::int32_t columns, const T* means, const T* squaredParents, T variance, T* row) noexcept {
  const T weight = std::numbers::sqrt3_v<T> * variance;
  for (std::int32_t x = 0; x < columns; ++x) {
    const T length = std::sqrt(row[x] * row[x] + squaredParents[x]);
    const T excess = means[x] - variance;
    const T rest = length - weight / std::sqrt(excess > 0 ? excess : T(1));
    row[x] = excess > 0 && rest > 0 ? row[x] * (rest / length) : T(0);
  }
}

/// @param work rows of the band's width: the means, the squared parents, and what LocalEnergy keeps
template <qxReal T>
void ShrinkBand(CQXChannel<T>& band, const CQXChannel<T>* parents, T scale, T variance, T* work) noexcept {
  const std::ptrdiff_t columns = band.GetColsNb();
  T *means = work, *squaredParents = means + columns;
  LocalEnergy<T> energy(band, squaredParents + columns);
  for (std::int32_t y = 0; y < band.GetRowsNb(); ++y) {
    energy.Means(y, means);
    SquareParents(parents, y, scale, band.GetColsNb(), squaredParents);
    ShrinkRow(band.GetColsNb(), means, squaredParents, variance, band.GetData() + y * columns);
  }
}

}  // namespace

double qxFindNoiseGain(qxWaveletType wavelet, std::int32_t level, std::int32_t band) {
  NoiseGains gains;
  const bool isHigh = band == QX_SUBCHANNEL_HH || band == QX_SUBCHANNEL_LH || band == QX_SUBCHANNEL_HL;
  if (level < 1 || level > NoiseGains::deepest || !isHigh || !gains.Find(wavelet)) {
    return std::numeric_limits<double>::quiet_NaN();
  }
  return std::sqrt(gains.Variance(level, band));
}

template <qxReal T>
std::int32_t qxShrinkBivariate(CQXChannel<T>& tree, T noise) {
  const std::int32_t depth = std::min(tree.GetDepth(), NoiseGains::deepest);
  if (!(noise > 0) || depth < 1) return 1;
  NoiseGains gains;
  // The widest band first: its rows serve all others.
  const auto widest = static_cast<std::size_t>(std::max(tree.GetColsNb(), 1));
  const qxBlock<T> rows = qxMakeBlock<T>(static_cast<std::size_t>(rowsNb + 2) * widest);
  if (rows == nullptr || !gains.Find(tree.GetFilterType())) return 0;

  for (std::int32_t level = 1; level <= depth; ++level) {
    for (const std::int32_t band : {QX_SUBCHANNEL_HH, QX_SUBCHANNEL_LH, QX_SUBCHANNEL_HL}) {
      CQXChannel<T>* const children = tree.SubChannel(level, band);
      if (children == nullptr || children->GetData() == nullptr) continue;
      const CQXChannel<T>* const parents = level < depth ? tree.SubChannel(level + 1, band) : nullptr;
      const double gain = gains.Variance(level, band);
      const T scale = level < depth ? static_cast<T>(gain / gains.Variance(level + 1, band)) : T(0);
      ShrinkBand(*children, parents, scale, static_cast<T>(gain) * noise * noise, rows.get());
    }
  }
  return 1;
}

#define QX_INSTANTIATE(T) template std::int32_t qxShrinkBivariate(CQXChannel<T>&, T);
QX_FOR_FLOAT_AND_DOUBLE(QX_INSTANTIATE)
#undef QX_INSTANTIATE
