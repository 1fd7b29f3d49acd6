#include <qx/foundation/block.h>
#include <qx/wavelets/bivariate_shrinkage.h>
#include <qx/wavelets/channel.h>
#include <qx/wavelets/image_noise_reduction.h>
#include <qx/wavelets/pixel_form.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>
#include <limits>
#include <type_traits>

namespace {

constexpr std::int32_t deepest = 12;
constexpr std::int32_t coloursNb = 3;
/// Median of the magnitudes of normal numbers of deviation 1, as in CQXChannel::EstimateNoise().
constexpr double medianOfNormal = 0.6745;

/// A picture as the planes that are cleaned. Rows of planes are made from the pixels when they are asked for.
template <typename Sample>
class Planes {
 public:
  Planes(std::int32_t width, std::int32_t height, std::int32_t channelsNb, Sample* pixels,
         const qxNoiseReductionOptions& options) noexcept
      : m_width(width), m_height(height), m_channelsNb(channelsNb), m_alpha(options.alphaChannel), m_pixels(pixels) {
    m_hasAlpha = m_alpha >= 0 && m_alpha < channelsNb;
    m_isOpponent = PlanesNb() == coloursNb && options.colour == QX_COLOUR_OPPONENT;
    m_lowest = options.lowest;
    m_highest = options.highest;
    if constexpr (std::is_integral_v<Sample>) {
      m_lowest = std::max<double>(m_lowest, std::numeric_limits<Sample>::min());
      m_highest = std::min<double>(m_highest, std::numeric_limits<Sample>::max());
    }
  }

  [[nodiscard]] std::int32_t PlanesNb() const noexcept { return m_channelsNb - (m_hasAlpha ? 1 : 0); }
  [[nodiscard]] std::int32_t Width() const noexcept { return m_width; }
  [[nodiscard]] std::int32_t Height() const noexcept { return m_height; }

  /// Writes row @p y of a plane.
  void Read(std::int32_t plane, std::int32_t y, float* row) const noexcept {
    if (m_isOpponent) {
      for (std::int32_t x = 0; x < m_width; ++x) {
        std::array<float, coloursNb> pixel;
        for (std::int32_t c = 0; c < coloursNb; ++c)
          pixel[static_cast<std::size_t>(c)] = static_cast<float>(At(x, y, c));
        qxToOpponentColours(1, coloursNb, pixel.data());
        row[x] = pixel[static_cast<std::size_t>(plane)];
      }
    } else {
      for (std::int32_t x = 0; x < m_width; ++x) row[x] = static_cast<float>(At(x, y, plane));
    }
  }

  /// Marks the pixels of row @p y of which a sample that goes into the plane is clipped.
  void MarkClipped(std::int32_t plane, std::int32_t y, bool* marks) const noexcept {
    const std::int32_t first = m_isOpponent ? 0 : plane, last = m_isOpponent ? coloursNb - 1 : plane;
    for (std::int32_t x = 0; x < m_width; ++x) {
      marks[x] = false;
      for (std::int32_t c = first; c <= last; ++c) {
        const auto sample = static_cast<double>(At(x, y, c));
        marks[x] = marks[x] || sample <= m_lowest || sample >= m_highest;
      }
    }
  }

  /// Writes row @p y; sample x of plane p stands at row[p stride + x]. Alpha stays.
  void Write(std::int32_t y, const float* row, std::size_t stride) const noexcept {
    for (std::int32_t x = 0; x < m_width; ++x, ++row) {
      if (m_isOpponent) {
        std::array<float, coloursNb> pixel = {row[0], row[stride], row[2 * stride]};
        qxFromOpponentColours(1, coloursNb, pixel.data());
        for (std::int32_t c = 0; c < coloursNb; ++c) Put(pixel[static_cast<std::size_t>(c)], At(x, y, c));
      } else {
        for (std::int32_t c = 0; c < PlanesNb(); ++c) Put(row[static_cast<std::size_t>(c) * stride], At(x, y, c));
      }
    }
  }

  /// Deviation of the noise of a plane when that of the channels is given.
  [[nodiscard]] double NoiseOf(std::int32_t plane, const double* channels) const noexcept {
    if (!m_isOpponent) return channels[plane];
    double variance = 0;
    for (std::int32_t c = 0; c < coloursNb; ++c) {
      std::array<double, coloursNb> unit = {};
      unit[static_cast<std::size_t>(c)] = channels[c];
      qxToOpponentColours(1, coloursNb, unit.data());
      variance += unit[static_cast<std::size_t>(plane)] * unit[static_cast<std::size_t>(plane)];
    }
    return std::sqrt(variance);
  }

 private:
  static void Put(float value, Sample& target) noexcept {
    if constexpr (std::is_integral_v<Sample>) {
      qxSaturate(1, &value, &target);
    } else {
      target = value;
    }
  }

  /// The sample of a channel, alpha not counted.
  [[nodiscard]] Sample& At(std::int32_t x, std::int32_t y, std::int32_t channel) const noexcept {
    const std::int32_t index = channel + (m_hasAlpha && channel >= m_alpha ? 1 : 0);
    return m_pixels[(static_cast<std::size_t>(y) * static_cast<std::size_t>(m_width) + static_cast<std::size_t>(x)) *
                        static_cast<std::size_t>(m_channelsNb) +
                    static_cast<std::size_t>(index)];
  }

  std::int32_t m_width, m_height, m_channelsNb, m_alpha;
  bool m_hasAlpha = false, m_isOpponent = false;
  double m_lowest = 0, m_highest = 0;
  Sample* m_pixels;
};

/// Noise of a plane, from second differences about every second pixel of every second row.
/// @return false when memory was refused with null
template <typename Sample>
bool EstimateNoise(const Planes<Sample>& planes, std::int32_t plane, double& noise) {
  const std::int32_t width = planes.Width(), height = planes.Height();
  noise = 0;
  if (width < 3 || height < 3) return true;
  const auto columns = static_cast<std::size_t>(width);
  const std::size_t most = (columns / 2) * static_cast<std::size_t>(height / 2);
  const qxBlock<float> rows = qxMakeBlock<float>(3 * columns), magnitudes = qxMakeBlock<float>(most);
  const qxBlock<bool> marks = qxMakeBlock<bool>(3 * columns);
  if (rows == nullptr || magnitudes == nullptr || marks == nullptr) return false;

  std::size_t count = 0;
  for (std::int32_t y = 1; y + 1 < height; y += 2) {
    for (std::int32_t k = 0; k < 3; ++k) {
      planes.Read(plane, y - 1 + k, rows.get() + static_cast<std::size_t>(k) * columns);
      planes.MarkClipped(plane, y - 1 + k, marks.get() + static_cast<std::size_t>(k) * columns);
    }
    const float *above = rows.get(), *at = above + columns, *below = at + columns;
    for (std::int32_t x = 1; x + 1 < width; x += 2) {
      bool isClipped = false;
      for (std::size_t k = 0; k < 3; ++k) {
        const bool* mark = marks.get() + k * columns + x;
        isClipped = isClipped || mark[-1] || mark[0] || mark[1];
      }
      if (isClipped) continue;
      const auto second = [x](const float* row) { return row[x - 1] - 2 * row[x] + row[x + 1]; };
      magnitudes[count++] = std::abs(second(above) - 2 * second(at) + second(below));
    }
  }
  if (count == 0) return true;
  float* const middle = magnitudes.get() + count / 2;
  std::nth_element(magnitudes.get(), middle, magnitudes.get() + count);
  // The squares of 1, -2, 1 add up to 6 along either direction.
  noise = static_cast<double>(*middle) / (6 * medianOfNormal);
  return true;
}

struct Shift {
  std::int32_t x, y;
};

/// Where pass @p pass looks from: (0, 0) first, then places that fill a square of 2^depth evenly. They follow the
/// additive recurrence by the plastic number p, with 1 / p and 1 / p^2 (M. Roberts, The unreasonable effectiveness of
/// quasirandom sequences, 2018).
Shift ShiftOf(std::int32_t pass, std::int32_t depth) noexcept {
  constexpr double plastic = 1.32471795724474602596;
  const double size = std::int32_t{1} << depth;
  const auto place = [=](double step) {
    const double turns = pass * step;
    return static_cast<std::int32_t>((turns - std::floor(turns)) * size);
  };
  return {place(1 / plastic), place(1 / (plastic * plastic))};
}

using Window = decltype(CQXChannel<float>().DestroyingIFWT());

/// One pass of one plane.
template <typename Sample>
class Pass {
 public:
  Pass(const Planes<Sample>& planes, const qxNoiseReductionOptions& options,
       const CQXWaveletFilter<float>& filter) noexcept
      : m_planes(planes),
        m_options(options),
        m_filter(filter),
        m_margin((std::int32_t{1} << options.depth) / 2),
        m_columns(qxExtendedSize(planes.Width(), m_margin, options.depth)),
        m_rows(qxExtendedSize(planes.Height(), m_margin, options.depth)) {}

  /// The cleaned window of a plane; null when memory was refused with null.
  [[nodiscard]] Window Run(std::int32_t plane, double noise, Shift shift) const {
    CQXChannel<float> tree(m_columns, m_rows, 0, 0);
    tree.SetTypeOfNormalization(QX_NORMALIZATION_2);
    tree.SetData(Cut(plane, shift));
    if (tree.GetData() == nullptr) return nullptr;
    tree.FWTInPlace(&m_filter, QX_CHANNEL_2D, m_options.depth);
    if (tree.IsDecomposed() == 0) return nullptr;
    if (m_options.rule == QX_NOISE_REDUCTION_BIVARIATE) {
      return qxShrinkBivariate(tree, static_cast<float>(noise)) != 0 ? tree.DestroyingIFWT() : nullptr;
    }
    const bool isGiven = m_options.method == QX_DENOISING_GIVEN;
    const double unit = m_options.thresholdIsAbsolute ? 1 : noise;
    float threshold = isGiven ? static_cast<float>(m_options.threshold * unit) : 0;
    float ratio = isGiven ? static_cast<float>(m_options.ratio) : 0;
    const Window cleaned = tree.CleanBelowThreshold(threshold, ratio, m_options.soft, m_options.method);
    tree.Destroy();
    return cleaned != nullptr ? cleaned->DestroyingIFWT() : nullptr;
  }

  /// Adds the picture's part of a window to @p sum.
  void Add(const CQXChannel<float>& window, Shift shift, float* sum) const noexcept {
    const std::ptrdiff_t width = m_planes.Width();
    for (std::int32_t y = 0; y < m_planes.Height(); ++y, sum += width) {
      const float* row = window.GetData() + (y + shift.y) * std::ptrdiff_t{m_columns} + shift.x;
      for (std::ptrdiff_t x = 0; x < width; ++x) sum[x] += row[x];
    }
  }

 private:
  [[nodiscard]] qxBlock<float> Cut(std::int32_t plane, Shift shift) const {
    qxBlock<float> window = qxMakeBlock<float>(qxElementCount(m_rows, m_columns));
    const qxBlock<float> row = qxMakeBlock<float>(static_cast<std::size_t>(m_planes.Width()));
    if (window == nullptr || row == nullptr) return {};
    for (std::int32_t y = 0; y < m_rows; ++y) {
      m_planes.Read(plane, qxMirroredIndex(y - shift.y, m_planes.Height()), row.get());
      qxCopyMirroredWindow(m_planes.Width(), 1, 1, row.get(), -shift.x, 0, m_columns, 1,
                           window.get() + y * std::ptrdiff_t{m_columns});
    }
    return window;
  }

  const Planes<Sample>& m_planes;
  const qxNoiseReductionOptions& m_options;
  const CQXWaveletFilter<float>& m_filter;
  std::int32_t m_margin, m_columns, m_rows;
};

template <typename Sample>
bool FindNoise(const Planes<Sample>& planes, const double* given, double* noise) {
  for (std::int32_t plane = 0; plane < planes.PlanesNb(); ++plane) {
    if (given != nullptr) {
      noise[plane] = planes.NoiseOf(plane, given);
    } else if (!EstimateNoise(planes, plane, noise[plane])) {
      return false;
    }
  }
  return true;
}

/// Runs all passes of all planes and adds them up in order, some at a time.
/// @return false when memory was refused with null or the work was cancelled
template <typename Sample>
bool SumPasses(const Planes<Sample>& planes, const Pass<Sample>& pass, const qxNoiseReductionOptions& options,
               const double* noise, float* sums, const qxProgress& progress) {
  constexpr std::int32_t mostAtOnce = 64;
  std::array<Window, mostAtOnce> windows;
  const std::int32_t planesNb = planes.PlanesNb(), total = planesNb * (options.shifts + 1);
  const std::size_t pixelsNb = qxElementCount(planes.Height(), planes.Width());
  const std::int32_t step = std::clamp(options.executor.concurrency, 1, mostAtOnce);
  for (std::int32_t first = 0; first < total; first += step) {
    const std::int32_t count = std::min(step, total - first);
    const auto shiftOf = [&](std::int32_t index) { return ShiftOf((first + index) / planesNb, options.depth); };
    options.executor.Run(count, [&](std::int32_t index) {
      const std::int32_t plane = (first + index) % planesNb;
      windows[static_cast<std::size_t>(index)] = pass.Run(plane, noise[plane], shiftOf(index));
    });
    for (std::int32_t index = 0; index < count; ++index) {
      Window& window = windows[static_cast<std::size_t>(index)];
      if (window == nullptr) return false;
      pass.Add(*window, shiftOf(index), sums + static_cast<std::size_t>((first + index) % planesNb) * pixelsNb);
      window.reset();
    }
    if (!progress.Report(first + count, total)) return false;
  }
  return true;
}

template <typename Sample>
bool ReduceNoise(const Planes<Sample>& planes, const qxNoiseReductionOptions& options, const qxProgress& progress) {
  const auto planesNb = static_cast<std::size_t>(planes.PlanesNb());
  const std::size_t pixelsNb = qxElementCount(planes.Height(), planes.Width());
  const qxBlock<double> noise = qxMakeBlock<double>(planesNb);
  if (noise == nullptr || !FindNoise(planes, options.noise, noise.get())) return false;
  const CQXWaveletFilter<float> filter(options.wavelet);
  const qxBlock<float> sums = qxMakeBlock<float>(planesNb * pixelsNb);
  if (sums == nullptr) return false;
  std::fill_n(sums.get(), planesNb * pixelsNb, 0.0f);
  if (!SumPasses(planes, Pass<Sample>(planes, options, filter), options, noise.get(), sums.get(), progress)) {
    return false;
  }

  const float share = 1.0f / static_cast<float>(options.shifts + 1);
  for (std::size_t i = 0; i < planesNb * pixelsNb; ++i) sums[i] *= share;
  const auto columns = static_cast<std::size_t>(planes.Width());
  for (std::int32_t y = 0; y < planes.Height(); ++y) {
    planes.Write(y, sums.get() + static_cast<std::size_t>(y) * columns, pixelsNb);
  }
  if (options.planeNoise != nullptr) std::copy_n(noise.get(), planesNb, options.planeNoise);
  return true;
}

}  // namespace

template <typename Sample>
std::int32_t qxReduceImageNoise(std::int32_t width, std::int32_t height, std::int32_t channelsNb, Sample* pixels,
                                const qxNoiseReductionOptions& options, const qxProgress& progress) {
  if (width < 1 || height < 1 || channelsNb < 1 || options.shifts < 0) return 0;
  if (options.depth < 1 || options.depth > deepest) return 0;
  return ReduceNoise(Planes<Sample>(width, height, channelsNb, pixels, options), options, progress) ? 1 : 0;
}

template <typename Sample>
std::int32_t qxEstimateImageNoise(std::int32_t width, std::int32_t height, std::int32_t channelsNb,
                                  const Sample* pixels, const qxNoiseReductionOptions& options, double* planeNoise) {
  if (width < 1 || height < 1 || channelsNb < 1) return 0;
  // Nothing is written through the pointer.
  const Planes<Sample> planes(width, height, channelsNb, const_cast<Sample*>(pixels), options);
  return FindNoise(planes, options.noise, planeNoise) ? 1 : 0;
}

#define QX_INSTANTIATE(Sample)                                                                        \
  template std::int32_t qxReduceImageNoise(std::int32_t, std::int32_t, std::int32_t, Sample*,         \
                                           const qxNoiseReductionOptions&, const qxProgress&);        \
  template std::int32_t qxEstimateImageNoise(std::int32_t, std::int32_t, std::int32_t, const Sample*, \
                                             const qxNoiseReductionOptions&, double*);
QX_INSTANTIATE(std::uint8_t)
QX_INSTANTIATE(std::uint16_t)
QX_INSTANTIATE(float)
#undef QX_INSTANTIATE
