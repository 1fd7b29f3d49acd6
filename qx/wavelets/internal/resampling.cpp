#include <qx/foundation/internal/instantiate.h>
#include <qx/wavelets/internal/channel_tree.h>
#include <qx/wavelets/internal/resampling.h>

#include <algorithm>
#include <cmath>
#include <cstddef>

namespace qxInternal {

namespace {

/// R. G. Keys, Cubic convolution interpolation for digital image processing, IEEE Transactions on Acoustics, Speech and
/// Signal Processing 29 (1981), with a = -1/2.
double CubicKernel(double x) {
  if (x < 1) return (1.5 * x - 2.5) * x * x + 1;
  return x < 2 ? ((-0.5 * x + 2.5) * x - 4) * x + 2 : 0;
}

/// sinc(x) sinc(x / 3) below 3 (C. Lanczos; C. E. Duchon, Journal of Applied Meteorology 18, 1979).
double LanczosKernel(double x) {
  constexpr double pi = 3.14159265358979323846;
  if (x < 1e-9) return 1;
  return x < 3 ? 3 * std::sin(pi * x) * std::sin(pi * x / 3) / (pi * pi * x * x) : 0;
}

/// Which samples make each new sample along one direction, with weights that add up to 1.
template <qxReal T>
class ResamplingWeights {
 public:
  [[nodiscard]] bool Obtain(std::int32_t sourceSize, std::int32_t size, double step, qxResampling method) {
    // A coarser grid widens the kernel, so that what it cannot hold is averaged out.
    const double width = std::max(step, 1.0);
    const double reach = width * (method == QX_RESAMPLING_AREA ? 0.5 : method == QX_RESAMPLING_CUBIC ? 2 : 3);
    const double largest = std::min(2 * reach + 3, static_cast<double>(sourceSize));
    m_stride = static_cast<std::size_t>(largest);
    m_weights = qxMakeBlock<T>(m_stride * static_cast<std::size_t>(size));
    m_taps = qxMakeBlock<Taps>(static_cast<std::size_t>(size));
    if (m_weights == nullptr || m_taps == nullptr) return false;
    for (std::int32_t i = 0; i < size; ++i) SetTaps(i, sourceSize, step, reach, width, method);
    return true;
  }

  [[nodiscard]] std::int32_t First(std::int32_t i) const { return m_taps[static_cast<std::size_t>(i)].first; }
  [[nodiscard]] std::int32_t Count(std::int32_t i) const { return m_taps[static_cast<std::size_t>(i)].count; }
  [[nodiscard]] const T* Of(std::int32_t i) const { return m_weights.get() + static_cast<std::size_t>(i) * m_stride; }

 private:
  struct Taps {
    std::int32_t first, count;
  };

  /// Samples outside have no weight: those inside share it, and a constant stays the same up to the edges.
  void SetTaps(std::int32_t i, std::int32_t sourceSize, double step, double reach, double width, qxResampling method) {
    const double last = sourceSize - 1;
    const double centre = (i + 0.5) * step - 0.5;
    const double margin = method == QX_RESAMPLING_AREA ? 0.5 : 0.0;  // a sample is an area of 1 around its centre
    const auto first = static_cast<std::int32_t>(std::clamp(std::ceil(centre - reach - margin), 0.0, last));
    const auto end = static_cast<std::int32_t>(std::clamp(std::floor(centre + reach + margin), 0.0, last)) + 1;
    T* const weights = m_weights.get() + static_cast<std::size_t>(i) * m_stride;
    const auto weight = [&](std::int32_t j) {
      const double distance = std::abs(j - centre);
      if (method == QX_RESAMPLING_AREA) return std::clamp(reach + 0.5 - distance, 0.0, 1.0);
      return method == QX_RESAMPLING_CUBIC ? CubicKernel(distance / width) : LanczosKernel(distance / width);
    };
    double sum = 0;
    for (std::int32_t j = first; j < end; ++j) sum += weight(j);
    // Beyond the last sample, where all weights are 0, the nearest one counts.
    const bool hasWeight = sum > 1e-9;
    for (std::int32_t j = first; j < end; ++j) {
      weights[j - first] = hasWeight ? static_cast<T>(weight(j) / sum) : T(j == first ? 1 : 0);
    }
    m_taps[static_cast<std::size_t>(i)] = {first, end - first};
  }

  std::size_t m_stride = 0;
  qxBlock<T> m_weights;
  qxBlock<Taps> m_taps;
};

/// Resamples rows x size new samples. A sample is the first one and the weighted differences from it, so that equal
/// ones give the very same number.
template <qxReal T>
void ResampleAlongRows(const ResamplingWeights<T>& weights, const T* source, std::int32_t sourceColumns,
                       std::int32_t rows, std::int32_t columns, T* target) {
  for (std::int32_t row = 0; row < rows; ++row, source += sourceColumns) {
    for (std::int32_t i = 0; i < columns; ++i, ++target) {
      const T* const samples = source + weights.First(i);
      const T* const own = weights.Of(i);
      T sum = 0;
      for (std::int32_t j = 1; j < weights.Count(i); ++j) sum += own[j] * (samples[j] - samples[0]);
      *target = samples[0] + sum;
    }
  }
}

template <qxReal T>
void ResampleAlongColumns(const ResamplingWeights<T>& weights, const T* source, std::int32_t columns, std::int32_t rows,
                          T* target) {
  for (std::int32_t i = 0; i < rows; ++i, target += columns) {
    const T* const samples = source + std::ptrdiff_t{weights.First(i)} * columns;
    const T* const own = weights.Of(i);
    std::fill_n(target, columns, T(0));
    for (std::int32_t j = 1; j < weights.Count(i); ++j) {
      const T* const row = samples + std::ptrdiff_t{j} * columns;
      for (std::int32_t c = 0; c < columns; ++c) target[c] += own[j] * (row[c] - samples[c]);
    }
    for (std::int32_t c = 0; c < columns; ++c) target[c] = samples[c] + target[c];
  }
}

}  // namespace

template <qxReal T>
qxOwner<CQXChannel<T>> Resampled(const CQXChannel<T>& source, std::int32_t columns, std::int32_t rows, double stepX,
                                 double stepY, qxResampling method) {
  if (source.GetData() == nullptr || CountOf(source) == 0 || columns < 1 || rows < 1) return nullptr;
  if (!(stepX > 0 && stepY > 0 && std::isfinite(stepX) && std::isfinite(stepY))) return nullptr;
  qxOwner<CQXChannel<T>> result = MakeRaw<T>({0, 0, columns, rows});
  const qxBlock<T> stretched = qxMakeBlock<T>(qxElementCount(source.GetRowsNb(), columns));
  ResamplingWeights<T> alongRows, alongColumns;
  if (result == nullptr || stretched == nullptr || !alongRows.Obtain(source.GetColsNb(), columns, stepX, method) ||
      !alongColumns.Obtain(source.GetRowsNb(), rows, stepY, method)) {
    return nullptr;
  }
  ResampleAlongRows(alongRows, source.GetData(), source.GetColsNb(), source.GetRowsNb(), columns, stretched.get());
  ResampleAlongColumns(alongColumns, stretched.get(), columns, rows, result->GetData());
  result->SetDecompositionTypes(source.GetFilter(), source.GetType(), source.GetTypeOfNormalization());
  return result;
}

#define QX_INSTANTIATE(T)                                                                                     \
  template qxOwner<CQXChannel<T>> Resampled(const CQXChannel<T>&, std::int32_t, std::int32_t, double, double, \
                                            qxResampling);
QX_FOR_FLOAT_AND_DOUBLE(QX_INSTANTIATE)
#undef QX_INSTANTIATE

}  // namespace qxInternal
