#include <qx/foundation/internal/instantiate.h>
#include <qx/wavelets/internal/channel_tree.h>
#include <qx/wavelets/internal/denoising.h>
#include <qx/wavelets/internal/noise_level.h>

#include <algorithm>
#include <cmath>

namespace qxInternal {

namespace {

constexpr std::int32_t reach = 3;  // of the window of the local mean square

/// The mean square of the (2 reach + 1)^2 samples around each one; at the edges of those that there are.
template <qxReal T>
class LocalMeanSquares {
 public:
  [[nodiscard]] bool Obtain(std::int32_t columns) {
    m_columnSums = qxMakeBlock<double>(static_cast<std::size_t>(columns));
    return m_columnSums != nullptr;
  }

  void Find(const CQXChannel<T>& band, T* target) {
    const std::int32_t columns = band.GetColsNb();
    const std::int32_t rows = band.GetRowsNb();
    std::fill_n(m_columnSums.get(), columns, 0.0);
    for (std::int32_t row = -reach; row < rows; ++row) {
      if (row + reach < rows) AddRow(band, row + reach, 1);
      if (row - reach > 0) AddRow(band, row - reach - 1, -1);
      if (row < 0) continue;
      const std::int32_t height = std::min(row + reach, rows - 1) - std::max(row - reach, 0) + 1;
      MeansOfRow(columns, height, target + std::ptrdiff_t{row} * columns);
    }
  }

 private:
  void AddRow(const CQXChannel<T>& band, std::int32_t row, double sign) {
    const T* const samples = band.GetData() + std::ptrdiff_t{row} * band.GetColsNb();
    for (std::int32_t i = 0; i < band.GetColsNb(); ++i) {
      m_columnSums[static_cast<std::size_t>(i)] += sign * (static_cast<double>(samples[i]) * samples[i]);
    }
  }

  void MeansOfRow(std::int32_t columns, std::int32_t height, T* target) const {
    double sum = 0;
    const auto columnSum = [this](std::int32_t i) { return m_columnSums[static_cast<std::size_t>(i)]; };
    for (std::int32_t i = -reach; i < columns; ++i) {
      if (i + reach < columns) sum += columnSum(i + reach);
      if (i - reach > 0) sum -= columnSum(i - reach - 1);
      if (i < 0) continue;
      const std::int32_t width = std::min(i + reach, columns - 1) - std::max(i - reach, 0) + 1;
      target[i] = static_cast<T>(sum / (double(width) * height));
    }
  }

  qxBlock<double> m_columnSums;
};

/// Shrinks a band, given its local mean squares; without a parent that counts as 0.
template <qxReal T>
void Shrink(CQXChannel<T>& band, const CQXChannel<T>* parent, const T* meanSquares, T noise) {
  const T rootOfThree = T(1.7320508075688772);
  const Rect own = Extent(band);
  for (std::int32_t row = 0; row < band.GetRowsNb(); ++row) {
    const T* parentRow = nullptr;
    Rect coarse{};
    if (parent != nullptr) {
      coarse = Extent(*parent);
      const std::int64_t r = std::clamp((own.top + row) >> 1, coarse.top, coarse.bottom - 1) - coarse.top;
      parentRow = parent->GetData() + r * parent->GetColsNb();
    }
    for (std::int32_t column = 0; column < band.GetColsNb(); ++column, ++meanSquares) {
      T p = 0;
      if (parentRow != nullptr) {
        p = parentRow[std::clamp((own.left + column) >> 1, coarse.left, coarse.right - 1) - coarse.left];
      }
      T& y = band(row, column);
      const T deviation = std::sqrt(std::max(*meanSquares - noise * noise, T(0)));
      const T loss = rootOfThree * noise * noise;
      const T strength = deviation * std::sqrt(y * y + p * p);
      y = strength > loss ? y * (1 - loss / strength) : T(0);
    }
  }
}

}  // namespace

template <qxReal T>
bool BivariateCleaning<T>::Clean(CQXChannel<T>& tree) const {
  if (tree.IsDecomposed() == 0 || !(noise > 0) || tree.GetFilter() == nullptr) return true;
  // The bands of the first level are the largest ones.
  std::size_t largest = 0;
  ForEachHighBand(tree, [&](const CQXChannel<T>& band, std::int32_t) { largest = std::max(largest, CountOf(band)); });
  const qxBlock<T> meanSquares = qxMakeBlock<T>(largest);
  LocalMeanSquares<T> local;
  if (meanSquares == nullptr || !local.Obtain(std::max(tree.GetColsNb(), 0))) return false;

  ForEachLevel(tree, [&](CQXChannel<T>& level, std::int32_t l) {
    const BandNoise gains = BandNoiseOf(*tree.GetFilter(), tree.GetTypeOfNormalization(), l + 1);
    const CQXChannel<T>* coarser = level.SubChannel(0);
    ForEachHighBand(level, [&](CQXChannel<T>& band, std::int32_t b) {
      const qxChannelType type = level.GetType();
      if (CountOf(band) > largest) return;
      double gain = DividesColumns(type) ? (IsHighInColumns(type, b) ? gains.high : gains.low) : 1;
      gain *= DividesRows(type) ? (IsHighInRows(type, b) ? gains.high : gains.low) : 1;
      const CQXChannel<T>* parent = coarser != nullptr ? coarser->SubChannel(b) : nullptr;
      if (parent != nullptr && (parent->GetData() == nullptr || CountOf(*parent) == 0)) parent = nullptr;
      local.Find(band, meanSquares.get());
      Shrink(band, parent, meanSquares.get(), static_cast<T>(gain * static_cast<double>(noise)));
    });
  });
  return true;
}

#define QX_INSTANTIATE(T) template struct BivariateCleaning<T>;
QX_FOR_FLOAT_AND_DOUBLE(QX_INSTANTIATE)
#undef QX_INSTANTIATE

}  // namespace qxInternal
